// Blocks of two by two bytes to their mean, halves rounded up.
#ifndef QVR_IMAGE_HALVE_H
#define QVR_IMAGE_HALVE_H

#include "frame/ahead.h"
#include "image/kernels.h"

namespace {

constexpr int kHalveBytes = kAvx2 ? 32 : 16;
using HalveBytes = Vec<uint8_t, kHalveBytes>;
using HalveWords = Vec<int16_t, kHalveBytes / 2>;

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

// (a + b + c + d + 2) / 4. Means of two are rounded up; that of the means is one too large where it was rounded and one
// of them was, too.
template<class V> QVR_INLINE V meanOfFour(V a, V b, V c, V d)
{
    const auto mean = [](V x, V y) {
        using Wide = Vec<uint16_t, lanes<V>>;
        return convert<uint8_t>((convert<uint16_t>(x) + convert<uint16_t>(y) + splat<Wide>(1)) >> 1);
    };
    const V upper = mean(a, b), lower = mean(c, d);
    return mean(upper, lower) - (((a ^ b) | (c ^ d)) & (upper ^ lower) & 1);
}

// n bytes from words(i), which are a vector of them. Where n is less than two vectors, it may read behind. Lines are
// asked for `ahead` bytes ahead.
constexpr int kWords = kHalveBytes / 2;
template<class F> QVR_INLINE void putRow(Index n, uint8_t* dst, const F& words, Index ahead = 0)
{
    constexpr int N = 2 * kWords;
    const auto block = [&](Index i) { return packWords(words(i), words(i + kWords)); };
    Index i = 0;
    for (; i + N <= n; i += N) {
        if (ahead != 0)
            askFor(dst + i, ahead, N);
        store(dst + i, block(i));
    }
    if (i < n && n >= N)
        store(dst + n - N, block(n - N));
    else if (i < n)
        storePartial(dst + i, block(i), static_cast<int>(n - i));
}

// The source pixel that a band's axis of inv = p / q and off = at / q begins with; -1 if it begins within one or
// reaches out of the image.
QVR_INLINE Index wholeStart(const qvrResizeAxis& a, Index p, Index q, Index at)
{
    const Index from = a.first * p + at;
    return from >= 0 && from % q == 0 && from + p * a.count <= q * a.length ? from / q : -1;
}

constexpr Index kNarrow = 128;

// block(source, destination, i) for `bytes` bytes of each output row from byte i on, so that all are made, some twice.
// Each P source rows from `top` on make Q; a row is no shorter than a block. Narrow columns are walked down: that
// leaves one loop.
template<int P, int Q, class F>
QVR_INLINE void eachBlock(const qvrResizeBand* b, Index top, Index groups, Index pixelBytes, Index bytes,
                          const F& block)
{
    const uint8_t* src = reinterpret_cast<const uint8_t*>(sourceRow(b, top));
    uint8_t* dst = reinterpret_cast<uint8_t*>(outputRow(b, 0, pixelBytes));
    const Index n = b->x.count * pixelBytes, srcStep = b->srcStep, dstStep = b->dstStep;
    for (Index i = 0; n <= kNarrow && i < n; i += bytes)
        for (Index k = 0; k < groups; k++)
            block(src + k * P * srcStep, dst + k * Q * dstStep, i + bytes <= n ? i : n - bytes);
    for (; n > kNarrow && groups > 0; groups--, src += P * srcStep, dst += Q * dstStep) {
        Index i = 0;
        for (; i + bytes <= n; i += bytes)
            block(src, dst, i);
        if (i < n)
            block(src, dst, n - bytes);
    }
}

// Where blocks of two by two pixels begin, if a band is of these; else `left` or `top` is -1.
struct Halves {
    Index left, top;
};
QVR_INLINE Halves halvesOf(const qvrResizeBand* b)
{
    const auto start = [](const qvrResizeAxis& a) {
        const Index at = a.inv == 2 ? static_cast<Index>(a.off) : 0; // others may be beyond an Index
        return a.inv == 2 && a.off == static_cast<double>(at) ? wholeStart(a, 2, 1, at) : -1;
    };
    const Index left = start(b->x);
    return {left, left < 0 ? -1 : start(b->y)};
}

// The means of these blocks; false if there are none.
template<int NC> inline bool halveBand(const qvrResizeBand* b)
{
    const auto [left, top] = halvesOf(b);
    if (top < 0)
        return false;
    const Index step = b->srcStep, n = b->x.count * NC;
    if (n < kHalveBytes) {
        eachBlock<2, 1>(b, top, b->y.count, NC, 1, [=](const uint8_t* src, uint8_t* dst, Index i) {
            const uint8_t *const upper = src + left * NC + 2 * i - i % NC, *const lower = upper + step;
            dst[i] = static_cast<uint8_t>((upper[0] + upper[NC] + lower[0] + lower[NC] + 2) >> 2);
        });
    } else {
        eachBlock<2, 1>(b, top, b->y.count, NC, kHalveBytes, [=](const uint8_t* src, uint8_t* dst, Index i) {
            const uint8_t* const p = src + left * NC + 2 * i;
            if constexpr (NC == 4 && !kSsse3) {
                using Pixels = Vec<uint32_t, 4>;
                const auto pixels = [=](const uint8_t* at, bool second) {
                    const Pixels v = load<Pixels>(at), w = load<Pixels>(at + 16);
                    return bitcast<HalveBytes>(second ? odds(v, w) : evens(v, w));
                };
                store(dst + i,
                      meanOfFour(pixels(p, false), pixels(p, true), pixels(p + step, false), pixels(p + step, true)));
            } else {
                const auto words = [=](const uint8_t* at) {
                    return shiftedRound<2>(pixelSums<NC>(load<HalveBytes>(at)) +
                                           pixelSums<NC>(load<HalveBytes>(at + step)));
                };
                store(dst + i, packWords(words(p), words(p + kHalveBytes)));
            }
        });
    }
    return true;
}

} // namespace

#endif
