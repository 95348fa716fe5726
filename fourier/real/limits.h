// The order classes of the real FFT and the shapes of its split transforms, by slot.
//
// N = 2^order real points run as M = N/2 complex points, m = order - 1. By rising order a transform is
//   real kernel       straight-line on the real input, no tables
//   complex kernel    straight-line on M complex points, then the recombination table
//   flat              one table-driven transform of M points
//   threaded band     eight column transforms and one radix-8 pass (u8 and y8)
//   split             2^splitOrder rows of flat transforms, then column tiles of 2^tileOrder points
#ifndef QVR_FOURIER_LIMITS_H
#define QVR_FOURIER_LIMITS_H

#include "frame/slot.h"

namespace {

struct FftLimits {
    int largest;       // order
    int real;          // real kernels up to this order
    int complex;       // complex kernels up to this order
    int flat;          // flat transforms up to this order
    int threadedFirst; // first order of the threaded band
    int twoLevel;      // recombination tables in two levels from this order
};

constexpr int kNever = 99;

template<class T> constexpr FftLimits kFftLimits = {};
template<>
constexpr FftLimits kFftLimits<float> =
    PerSlot<FftLimits>{
        {28, 5, 6, 11, kNever, 19}, // mx
        {29, 4, 6, 17, kNever, 19}, // m7
        {29, 4, 6, 18, 14, 19},     // u8
        {29, 4, 6, 16, kNever, 18}, // n8
        {29, 4, 6, 18, 14, 21},     // y8
        {29, 4, 7, 19, kNever, 19}, // e9
        {29, 4, 7, 19, kNever, 19}, // l9
    }
        .here();
template<>
constexpr FftLimits kFftLimits<double> =
    PerSlot<FftLimits>{
        {27, 5, 6, 11, kNever, 18}, // mx
        {28, 5, 6, 15, kNever, 18}, // m7
        {28, 5, 6, 17, 13, 17},     // u8
        {27, 5, 6, 13, kNever, 18}, // n8
        {28, 5, 6, 17, 13, 19},     // y8
        {28, 4, 7, 18, kNever, 17}, // e9
        {28, 4, 7, 18, kNever, 17}, // l9
    }
        .here();

// The slot of the first generation: bits reversed in the whole array first, radix-4 kernel, radix-2 sweeps.
constexpr bool kFirstGeneration = kSlot == qvrSlot_mx;
constexpr bool kThreadedBand = kSlot == qvrSlot_u8 || kSlot == qvrSlot_y8;

// log2 of rows (split) and of points to a tile, for complex orders kShapeFirst and up; the last entry holds for all
// larger orders. A split order of 0 means one row.
constexpr int kShapeFirst = 13;
struct ShapeRow {
    int8_t of[13];
};

template<class T> constexpr ShapeRow kSplitOrder = {};
template<>
constexpr ShapeRow kSplitOrder<float> =
    PerSlot<ShapeRow>{
        // 13 14 15 16 17 18  19  20  21  22 23 24 25
        {{5, 6, 7, 8, 8, 8, 10, 10, 10, 10, 8, 8, 10}}, // mx
        {{0, 0, 0, 0, 4, 4, 4, 4, 6, 8, 8, 8, 8}},      // m7
        {{0, 0, 0, 0, 0, 4, 4, 8, 8, 8, 8, 8, 8}},      // u8
        {{0, 0, 0, 4, 4, 4, 6, 6, 8, 8, 8, 8, 8}},      // n8
        {{0, 0, 0, 0, 0, 4, 4, 8, 8, 8, 8, 8, 8}},      // y8
        {{0, 0, 0, 0, 0, 0, 4, 4, 4, 4, 8, 8, 8}},      // e9
        {{0, 0, 0, 0, 0, 0, 4, 4, 4, 4, 8, 8, 8}},      // l9
    }
        .here();
template<>
constexpr ShapeRow kSplitOrder<double> =
    PerSlot<ShapeRow>{
        // 13 14 15 16 17 18 19 20 21 22 23 24 25
        {{5, 6, 7, 7, 8, 9, 9, 9, 8, 8, 9, 9, 9}}, // mx
        {{0, 0, 4, 4, 4, 4, 6, 6, 8, 8, 8, 8, 8}}, // m7
        {{0, 0, 0, 0, 6, 6, 6, 7, 8, 8, 8, 8, 8}}, // u8
        {{0, 4, 6, 6, 6, 6, 4, 6, 6, 6, 6, 6, 6}}, // n8
        {{0, 0, 0, 0, 6, 6, 8, 8, 8, 8, 8, 8, 8}}, // y8
        {{0, 0, 0, 0, 0, 4, 4, 4, 4, 8, 8, 8, 8}}, // e9
        {{0, 0, 0, 0, 0, 4, 4, 4, 4, 8, 8, 8, 8}}, // l9
    }
        .here();

template<class T> constexpr ShapeRow kTileOrder = {};
template<>
constexpr ShapeRow kTileOrder<float> =
    PerSlot<ShapeRow>{
        // 13 14 15 16 17  18  19  20  21  22  23  24  25
        {{}},                                                // mx has no tiles
        {{0, 0, 0, 0, 9, 10, 10, 10, 13, 15, 15, 15, 15}},   // m7
        {{0, 0, 0, 0, 0, 10, 10, 14, 14, 14, 14, 14, 14}},   // u8
        {{0, 0, 0, 10, 10, 10, 14, 14, 14, 14, 14, 14, 14}}, // n8
        {{0, 0, 0, 0, 0, 10, 10, 14, 14, 14, 14, 14, 14}},   // y8
        {{0, 0, 0, 0, 0, 0, 10, 10, 10, 10, 14, 14, 14}},    // e9
        {{0, 0, 0, 0, 0, 0, 10, 10, 10, 10, 14, 14, 14}},    // l9
    }
        .here();
template<>
constexpr ShapeRow kTileOrder<double> =
    PerSlot<ShapeRow>{
        // 13 14 15  16  17  18  19  20  21  22  23  24  25
        {{}},                                                  // mx has no tiles
        {{0, 0, 8, 10, 10, 10, 13, 13, 14, 14, 14, 14, 14}},   // m7
        {{0, 0, 0, 0, 10, 10, 10, 11, 13, 13, 13, 13, 13}},    // u8
        {{0, 10, 10, 10, 10, 10, 10, 10, 10, 12, 12, 12, 12}}, // n8
        {{0, 0, 0, 0, 10, 10, 13, 13, 13, 13, 13, 13, 13}},    // y8
        {{0, 0, 0, 0, 0, 9, 9, 9, 9, 13, 13, 13, 13}},         // e9
        {{0, 0, 0, 0, 0, 9, 9, 9, 9, 13, 13, 13, 13}},         // l9
    }
        .here();

constexpr int shapeOf(const ShapeRow& row, int m)
{
    if (m < kShapeFirst)
        return 0;
    const int last = static_cast<int>(sizeof row.of) - 1;
    return row.of[m - kShapeFirst < last ? m - kShapeFirst : last];
}
template<class T> constexpr int splitOrder(int m)
{
    return shapeOf(kSplitOrder<T>, m);
}
template<class T> constexpr int tileOrder(int m)
{
    return shapeOf(kTileOrder<T>, m);
}

// Rows of this order and below never split again.
constexpr int kFlatRowOrder = 16;

template<class T> constexpr bool rowSplits(int rowOrder)
{
    return rowOrder > kFlatRowOrder && splitOrder<T>(rowOrder) != 0;
}

// How the complex transform of a real order runs.
enum class FftClass { real, complex, flat, threaded, split };

template<class T> constexpr FftClass classOf(int order)
{
    constexpr FftLimits limit = kFftLimits<T>;
    if (order <= limit.real)
        return FftClass::real;
    if (order <= limit.complex)
        return FftClass::complex;
    if (order >= limit.threadedFirst && order <= limit.flat)
        return FftClass::threaded;
    return order <= limit.flat ? FftClass::flat : FftClass::split;
}

} // namespace

#endif
