// The loop skeletons of the reductions: an array, or neighbouring places of one, folded into one value.
//
// sumBlocks   four independent accumulators; lanes behind the end are zero, which every step here counts as nothing
// extreme     the element that no other one beats, with the first element as the start of every lane: the steps of the
//             plain loop `if (x beats best) best = x` keep it, a NaN in the first place included, and never take a NaN
// firstEqual  the lowest place of a value
#ifndef QVR_VECTOR_FOLD_H
#define QVR_VECTOR_FOLD_H

#include "frame/element.h"
#include "frame/simd.h"
#include "frame/status.h"

namespace {

// Lanes of the widest register that the level computes on: with AVX alone integers have half of one.
template<class T> constexpr int kFoldLanes = kIsFloat<T> || !kAvx || kAvx2 ? kLanes<T> : kLanes<T> / 2;

// step(accumulator, B lanes of each source) gives the new accumulator; join adds two of them.
template<int B, class Acc, class Step, class Join, class... S>
QVR_INLINE Acc sumBlocks(Index n, const Step& step, const Join& join, const S*... src)
{
    Acc a{}, b{}, c{}, d{};
    Index i = 0;
    for (; i + 4 * B <= n; i += 4 * B) {
        a = step(a, load<Vec<S, B>>(src + i)...);
        b = step(b, load<Vec<S, B>>(src + i + B)...);
        c = step(c, load<Vec<S, B>>(src + i + 2 * B)...);
        d = step(d, load<Vec<S, B>>(src + i + 3 * B)...);
    }
    for (; i + B <= n; i += B)
        a = step(a, load<Vec<S, B>>(src + i)...);
    if (i < n)
        b = step(b, loadPartial<Vec<S, B>>(src + i, static_cast<int>(n - i))...);
    return join(join(a, c), join(b, d));
}
// The same where the accumulators are vectors.
template<int B, class Acc, class Step, class... S> QVR_INLINE Acc sumVectors(Index n, const Step& step, const S*... src)
{
    return sumBlocks<B, Acc>(n, step, [](Acc x, Acc y) { return x + y; }, src...);
}

struct Largest {
    template<class V> QVR_INLINE V operator()(V x, V best) const { return max(x, best); }
};
struct Smallest {
    template<class V> QVR_INLINE V operator()(V x, V best) const { return min(x, best); }
};

template<class V, class Pick> QVR_INLINE Elem<V> pickLane(V v, Pick pick)
{
    return foldLanes(v, [pick](auto low, auto high) { return pick(high, low); });
}

// Fewer elements than N lanes, by two overlapping vectors of half the lanes, or of half of those.
template<int N, class T, class... Pick> QVR_INLINE void extremeShort(const T* src, Index n, T* best, Pick... pick)
{
    if constexpr (N > 1) {
        constexpr int H = N / 2;
        using V = Vec<T, H>;
        if (n >= H) {
            const auto first = wholeRegister(load<V>(src)), last = wholeRegister(load<V>(src + n - H));
            using W = __remove_cvref(decltype(first));
            ((*best = pickLane(pick(last, pick(first, splat<W>(*best))), pick), best++), ...);
        } else {
            extremeShort<H>(src, n, best, pick...);
        }
    }
}

// At least one vector, with K accumulators for each pick.
template<int K, class T, class... Pick> QVR_INLINE void extremeLong(const T* src, Index n, T* best, Pick... pick)
{
    constexpr int N = kFoldLanes<T>;
    using V = Vec<T, N>;
    V of[sizeof...(Pick)][K];
    for (int p = 0; p < static_cast<int>(sizeof...(Pick)); p++)
        for (int k = 0; k < K; k++)
            of[p][k] = splat<V>(best[p]);
    const auto take = [&](int k, V x) {
        int p = 0;
        ((of[p][k] = pick(x, of[p][k]), p++), ...);
    };
    Index i = 0;
    for (; i + K * N <= n; i += K * N)
#pragma unroll
        for (int k = 0; k < K; k++)
            take(k, load<V>(src + i + k * N));
    for (; i + N <= n; i += N)
        take(0, load<V>(src + i));
    take(1, load<V>(src + n - N));
    int p = 0;
    const auto finish = [&](auto one) {
#pragma unroll
        for (int step = K / 2; step > 0; step /= 2)
#pragma unroll
            for (int k = 0; k < step; k++)
                of[p][k] = one(of[p][k + step], of[p][k]);
        best[p] = pickLane(of[p][0], one);
        p++;
    };
    (finish(pick), ...);
}

// Each of best[0], best[1], ... becomes what its own pick leaves of it and the array, in one pass. The maximum of
// floats has a latency of four cycles and two may start in each, so one pick has eight accumulators; two picks have
// four each. What is shorter than these has two, whose join is shorter.
template<class T, class... Pick> QVR_INLINE void extremes(const T* src, Index n, T* best, Pick... pick)
{
    constexpr int N = kFoldLanes<T>, K = 8 / static_cast<int>(sizeof...(Pick));
    if (n < 2 * N)
        extremeShort<2 * N>(src, n, best, pick...);
    else if (n < K * N)
        extremeLong<2>(src, n, best, pick...);
    else
        extremeLong<K>(src, n, best, pick...);
}

// There must be such an element.
template<class T> QVR_INLINE Index firstEqual(const T* src, Index n, T value)
{
    constexpr int N = kFoldLanes<T>;
    using V = Vec<T, N>;
    Index i = 0;
    for (; i + N <= n; i += N) {
        const auto equal = load<V>(src + i) == splat<V>(value);
        if (anyTrue(equal))
            return i + firstTrue(equal);
    }
    if (n > N)
        return n - N + firstTrue(load<V>(src + n - N) == splat<V>(value));
    for (; i < n - 1; i++)
        if (get(src, i) == value)
            break;
    return i;
}

} // namespace

#endif
