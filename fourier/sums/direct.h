// Plain sums of products at many shifts, the shifts in the lanes:
//
//     out[i] = sum over k of a[k] * b[shift + i + Dir * k],  Dir = -1 convolution, +1 correlation
//
// A block of V vectors of shifts meets three stretches of k: one in which every lane's element of b exists, and on
// either side one of at most two blocks' length in which only some do. There b is read from a copy with zeros round it.
// A term that does not exist then adds a zero; where a[k] is not finite, the lane keeps its sum instead.
//
// Each lane adds its terms to 0 in the order of k. With a Chunk, a sum that came to so many terms is set aside and a
// new one begun, so that the error of a long sum grows with its chunks and with the terms of one, not with all terms.
// Correlations are free in their order: their terms k and k + W go in together, which share all loads of b but one.
#ifndef QVR_FOURIER_DIRECT_H
#define QVR_FOURIER_DIRECT_H

#include "fourier/lanes.h"

namespace {

// Short enough to be as close as eight partial sums would be from 1024 terms on, and long enough to cost nothing.
constexpr Index kCorrelationChunk = 128;
constexpr Index kChunksToSum = 64;
// Shorter sums are in the plain order of k.
constexpr Index kConvolutionChunk = 1024;

constexpr Index least(Index a, Index b)
{
    return a < b ? a : b;
}
constexpr Index greatest(Index a, Index b)
{
    return a > b ? a : b;
}

inline void copyValues(const float* src, float* dst, Index n)
{
    __builtin_memcpy(static_cast<void*>(dst), static_cast<const void*>(src), static_cast<size_t>(n) * sizeof(float));
}
inline void setZero(float* dst, Index n)
{
    __builtin_memset(static_cast<void*>(dst), 0, static_cast<size_t>(n) * sizeof(float));
}
// n values, and zeros up to `size`.
inline void copyPadded(const float* src, Index n, float* dst, Index size)
{
    copyValues(src, dst, n);
    setZero(dst + n, size - n);
}

// Terms first .. end - 1 of a, all of them there; x is the place of lane 0's element of b for k = first.
template<int V, int Dir> QVR_INLINE void addTerms(Full<float>* acc, const float* a, Index count, const float* x)
{
    using F = Full<float>;
    constexpr int W = kLanes<float>;
    for (Index k = 0; k < count; k++, x += Dir) {
        const F s = splat<F>(get(a, k));
#pragma clang loop unroll(full)
        for (int v = 0; v < V; v++)
            acc[v] = fma(s, load<F>(x + v * W), acc[v]);
    }
}

// The same for correlations, two terms a vector apart at a time.
template<int V> QVR_INLINE void addTermPairs(Full<float>* acc, const float* a, Index count, const float* x)
{
    using F = Full<float>;
    constexpr int W = kLanes<float>;
    Index k = 0;
    for (; k + 2 * W <= count; k += 2 * W)
        for (int r = 0; r < W; r++) {
            const F s = splat<F>(get(a, k + r)), t = splat<F>(get(a, k + r + W));
            const float* p = x + k + r;
            F here = load<F>(p);
#pragma clang loop unroll(full)
            for (int v = 0; v < V; v++) {
                const F next = load<F>(p + (v + 1) * W);
                acc[v] = fma(s, here, acc[v]);
                acc[v] = fma(t, next, acc[v]);
                here = next;
            }
        }
    addTerms<V, 1>(acc, a + k, count - k, x + k);
}

template<int V, int Dir, Index Chunk>
QVR_INLINE void addFullTerms(Full<float>* acc, const float* a, Index count, const float* x)
{
    if constexpr (Dir > 0 && Chunk > 0)
        addTermPairs<V>(acc, a, count, x);
    else
        addTerms<V, Dir>(acc, a, count, x);
}

// Terms some of whose elements are missing, `first` .. `end` - 1, at most two blocks of them.
template<int V, int Dir>
inline void addFringe(Full<float>* acc, const float* a, Index first, Index end, const float* b, Index lenB, Index shift)
{
    using F = Full<float>;
    constexpr int W = kLanes<float>;
    constexpr Index block = V * W;
    if (first >= end)
        return;
    // The elements from `from` on that any lane looks at.
    alignas(64) float padded[3 * block];
    const Index from = shift + (Dir < 0 ? -(end - 1) : first), size = end - first + block - 1;
    const Index low = greatest(0, -from), high = greatest(low, least(size, lenB - from));
    setZero(padded, low);
    if (high > low)
        copyValues(b + from + low, padded + low, high - low);
    setZero(padded + high, size - high);
    for (Index k = first; k < end; k++) {
        const float* x = padded + (shift + Dir * k - from);
        const float factor = get(a, k);
        if (factor - factor == 0) {
            addTerms<V, Dir>(acc, a + k, 1, x);
            continue;
        }
        const F s = splat<F>(factor);
        for (int v = 0; v < V; v++) {
            const auto lane = iota<Mask<F>>() + static_cast<int32_t>(x - padded) + v * W;
            const auto there = (lane >= static_cast<int32_t>(low)) & (lane < static_cast<int32_t>(high));
            acc[v] = there ? fma(s, load<F>(x + v * W), acc[v]) : acc[v];
        }
    }
}

template<int V, int Dir, Index Chunk>
inline void shiftBlock(const float* a, Index lenA, const float* b, Index lenB, Index shift, float* out, Index valid)
{
    using F = Full<float>;
    constexpr int W = kLanes<float>;
    constexpr Index block = V * W;
    // k for which some lane has an element, and those for which all have.
    Index first, end, fullFirst, fullEnd;
    if constexpr (Dir < 0) {
        first = greatest(0, shift - lenB + 1), end = least(lenA, shift + block);
        fullFirst = greatest(0, shift + block - lenB), fullEnd = least(lenA, shift + 1);
    } else {
        first = greatest(0, -shift - block + 1), end = least(lenA, lenB - shift);
        fullFirst = greatest(0, -shift), fullEnd = least(lenA, lenB - shift - block + 1);
    }
    F acc[V];
    for (int v = 0; v < V; v++)
        acc[v] = F{};
    if (fullFirst >= fullEnd) {
        addFringe<V, Dir>(acc, a, first, end, b, lenB, shift);
    } else {
        addFringe<V, Dir>(acc, a, first, fullFirst, b, lenB, shift);
        if (Chunk > 0 && fullEnd - fullFirst > Chunk) {
            // Sums of chunks are set aside too.
            F sum[V], sums[V];
            Index chunks = 0;
            for (Index k = fullFirst;; k += Chunk) {
                addFullTerms<V, Dir, Chunk>(acc, a + k, least(Chunk, fullEnd - k), b + shift + Dir * k);
                if (fullEnd - k <= Chunk)
                    break;
                for (int v = 0; v < V; v++) {
                    sum[v] = chunks % kChunksToSum == 0 ? acc[v] : sum[v] + acc[v];
                    acc[v] = F{};
                }
                if (++chunks % kChunksToSum == 0)
                    for (int v = 0; v < V; v++)
                        sums[v] = chunks == kChunksToSum ? sum[v] : sums[v] + sum[v];
            }
            addFringe<V, Dir>(acc, a, fullEnd, end, b, lenB, shift);
            if (chunks % kChunksToSum != 0)
                for (int v = 0; v < V; v++)
                    acc[v] += sum[v];
            if (chunks >= kChunksToSum)
                for (int v = 0; v < V; v++)
                    acc[v] += sums[v];
        } else {
            addFullTerms<V, Dir, Chunk>(acc, a + fullFirst, fullEnd - fullFirst, b + shift + Dir * fullFirst);
            addFringe<V, Dir>(acc, a, fullEnd, end, b, lenB, shift);
        }
    }
    for (int v = 0; v < V; v++)
        if (valid >= (v + 1) * W)
            store(out + v * W, acc[v]);
        else if (valid > v * W)
            storeFirst(out + v * W, acc[v], static_cast<int>(valid - v * W));
}

// As many accumulators as leave registers for a factor and a product.
constexpr int kWideBlock = 12;

template<int Dir, Index Chunk>
inline void shiftSums(const float* a, Index lenA, const float* b, Index lenB, Index shift, float* out, Index count)
{
    constexpr int W = kLanes<float>;
    Index i = 0;
    for (; count - i > 8 * W; i += kWideBlock * W)
        shiftBlock<kWideBlock, Dir, Chunk>(a, lenA, b, lenB, shift + i, out + i, count - i);
    for (; i < count; i += 4 * W)
        shiftBlock<4, Dir, Chunk>(a, lenA, b, lenB, shift + i, out + i, count - i);
}

// A block of a few shifts would waste its lanes: the sums of `Lags` neighbouring shifts with the terms in the lanes, so
// many to a lane before its sum is set aside. Every term exists.
constexpr Index kLaneChunk = 1024;
template<int Lags> inline void dotProducts(const float* a, const float* b, Index count, float* sums)
{
    using F = Full<float>;
    constexpr int W = kLanes<float>, U = Lags == 1 ? 4 : 2;
    float total[Lags] = {};
    for (Index start = 0; start < count; start += kLaneChunk * W) {
        const Index end = least(count, start + kLaneChunk * W);
        F acc[Lags * U] = {};
        Index k = start;
        for (; k + U * W <= end; k += U * W)
#pragma clang loop unroll(full)
            for (int u = 0; u < U; u++) {
                const F x = load<F>(a + k + u * W);
#pragma clang loop unroll(full)
                for (int l = 0; l < Lags; l++)
                    acc[l * U + u] = fma(x, load<F>(b + k + u * W + l), acc[l * U + u]);
            }
        for (int l = 0; l < Lags; l++) {
            F sum = acc[l * U];
            for (int u = 1; u < U; u++)
                sum += acc[l * U + u];
            float s = sumLanes(sum);
            for (Index i = k; i < end; i++)
                s += get(a, i) * get(b, i + l);
            total[l] += s;
        }
    }
    for (int l = 0; l < Lags; l++)
        put(sums, l, total[l]);
}

} // namespace

#endif
