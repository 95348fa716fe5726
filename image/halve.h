// Blocks of two by two bytes to their mean, halves rounded up.
#ifndef QVR_IMAGE_HALVE_H
#define QVR_IMAGE_HALVE_H

#include "image/kernels.h"

namespace {

constexpr int kHalveBytes = kAvx2 ? 32 : 16;
using HalveBytes = Vec<uint8_t, kHalveBytes>;
using HalveWords = Vec<uint16_t, kHalveBytes / 2>;

// Levels that join the channels of two neighbouring pixels by an instruction.
template<int NC> constexpr bool kCanHalve = NC == 1 || kSsse3;

// Bytes of a block of four pixels so ordered that each stands before that of its channel in the next pixel.
struct NeighbourOrder {
    alignas(32) uint8_t at[32];
};
constexpr NeighbourOrder makeNeighbourOrder()
{
    NeighbourOrder order{};
    for (int i = 0; i < 32; i++)
        order.at[i] = static_cast<uint8_t>((i & 8) | (i & 7) >> 1 | (i & 1) << 2);
    return order;
}
constexpr NeighbourOrder kNeighbourOrder = makeNeighbourOrder();

// Sums of neighbouring pixels, channel by channel.
template<int NC> QVR_INLINE HalveWords pixelSums(HalveBytes v)
{
    static_assert(NC == 1 || NC == 4);
    if constexpr (NC == 4)
        return bytePairSums(shuffleBytes(v, load<HalveBytes>(kNeighbourOrder.at)));
    else
        return bytePairSums(v);
}

// n bytes of an output row from the two rows above it. The last vector may overlap the one before.
template<int NC> inline void halveRow(const uint8_t* upper, const uint8_t* lower, uint8_t* dst, Index n)
{
    const auto means = [&](Index at) {
        return (pixelSums<NC>(load<HalveBytes>(upper + at)) + pixelSums<NC>(load<HalveBytes>(lower + at)) + 2) >> 2;
    };
    const auto block = [&](Index i) { store(dst + i, packWords(means(2 * i), means(2 * i + kHalveBytes))); };
    if (n >= kHalveBytes) {
        Index i = 0;
        for (; i + kHalveBytes <= n; i += kHalveBytes)
            block(i);
        if (i < n)
            block(n - kHalveBytes);
        return;
    }
    for (Index i = 0; i < n; i++) {
        const Index at = 2 * i - i % NC;
        dst[i] = static_cast<uint8_t>((upper[at] + upper[at + NC] + lower[at] + lower[at + NC] + 2) >> 2);
    }
}

// A band of blocks inside the image from a whole pixel on, of an axis' factor of a half; false if it is not.
template<int NC> inline bool halveBand(const qvrResizeBand* b)
{
    const auto inside = [](const qvrResizeAxis& a) {
        const double first = static_cast<double>(2 * a.first) + a.off;
        const bool whole = first >= 0 && first < a.length && first == static_cast<double>(static_cast<Index>(first));
        return whole && static_cast<Index>(first) + 2 * Index{a.count} <= a.length;
    };
    if (!kCanHalve<NC> || !inside(b->x) || !inside(b->y))
        return false;
    const Index left = 2 * b->x.first + static_cast<Index>(b->x.off),
                top = 2 * b->y.first + static_cast<Index>(b->y.off);
    if constexpr (kCanHalve<NC>)
        for (Index n = 0; n < b->y.count; n++) {
            const uint8_t* const upper = reinterpret_cast<const uint8_t*>(sourceRow(b, top + 2 * n)) + left * NC;
            halveRow<NC>(upper, upper + b->srcStep, reinterpret_cast<uint8_t*>(outputRow(b, n, NC)), b->x.count * NC);
        }
    return true;
}

} // namespace

#endif
