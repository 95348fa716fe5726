// Blocks of two by two bytes to their mean, halves rounded up.
#ifndef QVR_IMAGE_HALVE_H
#define QVR_IMAGE_HALVE_H

#include "image/kernels.h"

namespace {

constexpr int kHalveBytes = kAvx2 ? 32 : 16;
using HalveBytes = Vec<uint8_t, kHalveBytes>;
using HalveWords = Vec<int16_t, kHalveBytes / 2>;

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

// v / 2^Count to the nearest whole number, halves up; below 2^15 - 2^Count, not negative.
template<int Count, class V> QVR_INLINE V shiftedRound(V v)
{
    if constexpr (kSsse3)
        return mulRounded(v, splat<V>(1 << (15 - Count)));
    else
        return (v + (1 << (Count - 1))) >> Count;
}

// Sums of neighbouring pixels, channel by channel.
template<int NC> QVR_INLINE HalveWords pixelSums(HalveBytes v)
{
    static_assert(NC == 1 || NC == 4);
    if constexpr (NC == 4)
        return pixelSums<1>(shuffleBytes(v, load<HalveBytes>(kNeighbourOrder.at)));
    else if constexpr (kSsse3)
        return addBytePairs(v, splat<Vec<int8_t, kHalveBytes>>(1));
    else
        return (bitcast<HalveWords>(v) & 255) + bitcast<HalveWords>(bitcast<Bits<HalveWords>>(v) >> 8);
}

// n bytes from words(i), which are a vector of them. Where n is less than two vectors, it may read behind.
constexpr int kWords = kHalveBytes / 2;
template<class F> QVR_INLINE void putRow(Index n, uint8_t* dst, const F& words)
{
    constexpr int N = 2 * kWords;
    const auto block = [&](Index i) { return packWords(words(i), words(i + kWords)); };
    Index i = 0;
    for (; i + N <= n; i += N)
        store(dst + i, block(i));
    if (i < n && n >= N)
        store(dst + n - N, block(n - N));
    else if (i < n)
        storePartial(dst + i, block(i), static_cast<int>(n - i));
}

// n bytes of an output row from the two rows above it.
template<int NC> inline void halveRow(const uint8_t* upper, const uint8_t* lower, uint8_t* dst, Index n)
{
    const auto sums = [](const uint8_t* p) { return pixelSums<NC>(load<HalveBytes>(p)); };
    if (n >= kHalveBytes)
        return putRow(n, dst, [&](Index i) { return shiftedRound<2>(sums(upper + 2 * i) + sums(lower + 2 * i)); });
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
