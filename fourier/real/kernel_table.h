// The kernels of a complex transform of 2^m points and of its recombination: what a plan's passes call.
//
// Outside, points are (re, im) pairs; between the first and the last pass they stand in groups (lanes.h). The inverse
// transform is the forward one with re and im exchanged by the first and by the last kernel.
#ifndef QVR_FOURIER_KERNEL_TABLE_H
#define QVR_FOURIER_KERNEL_TABLE_H

#include "fourier/lanes.h"
#include "fourier/quarter.h"
#include "fourier/real/limits.h"
#include "fourier/real/plan_record.h"

namespace {

// One stage on a strip of columns. Offsets count elements; columns, rows and blocks count butterflies.
template<class T> struct StageCall {
    const T* in;
    T* out;
    Index inLeg, outLeg;             // between the legs of a butterfly
    Index columns;                   // neighbouring butterflies, whole vectors
    Index rows, inRow, outRow;       // rows of columns, each with twiddles of its own
    Index blocks, inBlock, outBlock; // repetitions of all of it with the same twiddles
    const T* twiddles;
    T factor; // of a scaled last stage
};

// `count` indices from `from` on of the first pass: legs `leg` points apart, the first at src; 2^m points in all.
template<class T> struct FirstCall {
    const T* src;
    Index leg;
    T* area;
    int m;
    Index from, count;
};

// Bins k .. k + count - 1 at a, their partners M - k - count + 1 .. M - k at b. With k = 0, count is whole vectors, and
// the partner of bin 0 is not in memory: `last`, Re X[N/2], comes in or goes out. Forward, all of Z is multiplied by
// `factor`, a half times what scales.
template<class T> struct RecombineCall {
    const T *aIn, *bIn;
    T *aOut, *bOut;
    Index k, count;
    const T* table;
    T last, factor;
};

// Four columns of eight: points c + 8 n of src, to the groups of column c at area.
template<class T> struct ColumnsCall {
    const T* src;
    T* area;
    int order; // of a column
};

// Radix 8 over eight columns of groups, to pairs; `count` butterflies from `first` on.
template<class T> struct TopCall {
    const T* area;
    T* dst;
    Index columns, first, count;
    const T* table;
    T factor;
};

template<class T> struct FirstGenTables {
    const T *kernel, *sweep;
    const T *const *column, *const *mid;
};
template<class T> struct FirstGenCall {
    const T* src;
    T* dst;
    int m;
    const int32_t* swaps;
    FirstGenTables<T> tables;
    T* work;
    T factor;
};

// Straight-line transforms of up to 2^this many complex points recombine in registers; of longer ones the vectors are
// too many, or those of the recombination by itself are wider.
struct InRegisters {
    int forward, inverse;
};
template<class T> constexpr InRegisters kInRegisters = {!kFma && kLanes<T> <= 4 ? 5 : 4, 5};

// Forms of a stage: products first, or a chain of radix-2 steps.
enum : int { formProducts, formSteps };

// What a last stage leaves: groups to the next one, pairs, those of the inverse, which are swapped, and those times a
// factor.
enum class Finish { groups, pairs, swapped, scaled };
constexpr int kFinishes = 4;

template<class T> struct FftKernels {
    void (*first[2])(const FirstCall<T>&);                      // by swap
    void (*firstReversed[2])(T* data, Index points);            // by swap
    void (*stage[kFinishes][2][2])(const StageCall<T>&);        // by finish, form, radix 4 and 8
    void (*recombine[2][2])(RecombineCall<T>&);                 // forward and inverse, table of one and of two levels
    void (*straight[2])(int m, const T* src, T* dst, T factor); // by swap, which scales: 16, 32, 64 points
    void (*straightForward)(int m, const T* src, T* dst, T factor);         // to the packed spectrum
    void (*straightInverse)(int m, const T* src, T last, T* dst, T factor); // from bins and Re X[N/2]
    void (*deal)(const T* src, T* dst, int m, int f, Index from, Index count);
    void (*reverse)(T* data, int m, T* work);
    void (*columns[2])(const ColumnsCall<T>&);          // by swap; the threaded band
    void (*top[kFinishes])(const TopCall<T>&);          // by finish; none to groups
    void (*firstGeneration[2])(const FirstGenCall<T>&); // forward, inverse
    // The tables that they read (fill.h).
    void (*fillQuarter)(T* out, int base);
    void (*fillRecombination)(T* fwd, T* inv, const Quarter<T>& quarter, int order, bool twoLevel);
    void (*fillSweep)(T* out, const Quarter<T>& quarter, const FftSweep& sweep);
    void (*fillTopTable)(T* out, const Quarter<T>& quarter, int m);
};

} // namespace

extern "C" {
extern const QVR_HIDDEN FftKernels<float> SLOT(ownqvrsFFTKernels_32f), m7_ownqvrsFFTKernels_32f;
extern const QVR_HIDDEN FftKernels<double> SLOT(ownqvrsFFTKernels_64f), m7_ownqvrsFFTKernels_64f;
}

namespace {

// Slots u8, n8 and y8 hold nothing that m7's kernels could gain from.
template<class T> constexpr const FftKernels<T>& fftKernels()
{
    constexpr bool shared = kSlot >= qvrSlot_m7 && kSlot <= qvrSlot_y8;
    if constexpr (sizeof(T) == 4)
        return shared ? m7_ownqvrsFFTKernels_32f : SLOT(ownqvrsFFTKernels_32f);
    else
        return shared ? m7_ownqvrsFFTKernels_64f : SLOT(ownqvrsFFTKernels_64f);
}

} // namespace

#endif
