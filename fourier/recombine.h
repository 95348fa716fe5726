// Recombination: the spectrum Z of z[n] = x[2n] + i x[2n+1] to the packed spectrum X of x, and back, in place.
//
// With k and j = M - k, a and b the values there, and e = exp(-2 pi i k / N): X[k] = (a + conj b)/2 - i e (a - conj
// b)/2, X[j] the same with roles exchanged. One sweep from both ends to the middle, a group of each at a time.
//
// Tables. Forward: (0.5 cos t, 0.5 - 0.5 sin t) for k below N/4; inverse: (cos t, -sin t). In two levels both hold 1024
// fine pairs (cos t, -sin t) and then the coarse ones of k = 0, 1024, ...; the twiddle is their product.
#ifndef QVR_FOURIER_RECOMBINE_H
#define QVR_FOURIER_RECOMBINE_H

#include "fourier/lanes.h"
#include "fourier/quarter.h"

namespace {

constexpr int kFineOrder = 10;
constexpr Index kFine = Index{1} << kFineOrder;

// Elements of one table of real order n.
constexpr Index recombinationSize(int order, bool twoLevel)
{
    const Index n = Index{1} << order;
    return twoLevel ? 2 * (kFine + n / 4096 + 1) : 2 * (n / 4);
}
template<class T> inline void fillRecombination(T* fwd, T* inv, const Quarter<T>& quarter, int order, bool twoLevel)
{
    const Index n = Index{1} << order;
    const auto put = [&](T* table, Index at, Index k) {
        const Twiddle<T> w = quarter.at(k, order);
        table[2 * at] = w.re;
        table[2 * at + 1] = w.im;
    };
    if (twoLevel) {
        for (Index k = 0; k < kFine; k++)
            put(fwd, k, k);
        for (Index k = 0; k <= n / 4; k += kFine)
            put(fwd, kFine + k / kFine, k);
        __builtin_memcpy(inv, fwd, static_cast<size_t>(2 * (kFine + n / 4 / kFine + 1)) * sizeof(T));
        return;
    }
    // All in the first quadrant.
    const Index step = Index{1} << (quarter.base - order);
    for (Index k = 0; k < n / 4; k++) {
        const T sine = quarter.s[k * step], cosine = quarter.s[(n / 4 - k) * step];
        fwd[2 * k] = T(0.5) * cosine;
        fwd[2 * k + 1] = T(0.5) - T(0.5) * sine;
        inv[2 * k] = cosine;
        inv[2 * k + 1] = -sine;
    }
}

// (a, b) := (X[k], X[j]) with the folded table entry (c, s).
template<class C> QVR_INLINE void forwardFolded(C& a, C& b, C w)
{
    const auto p = a.re - b.re, q = a.im + b.im;
    const auto t = fma(w.re, q, w.im * p), u = fma(q, w.im, -(p * w.re));
    const C x = {b.re + t, u - b.im};
    b = {a.re - t, u - a.im};
    a = x;
}
// The same with the plain twiddle.
template<class C> QVR_INLINE void forwardPlain(C& a, C& b, C w)
{
    const auto half = splat<decltype(a.re)>(Elem<decltype(a.re)>(0.5));
    const auto p = (a.re - b.re) * half, q = (a.im + b.im) * half, s = (a.re + b.re) * half, d = (a.im - b.im) * half;
    const auto t = fma(w.im, p, w.re * q), u = fma(w.im, q, -(p * w.re));
    a = {t + s, u + d};
    b = {s - t, u - d};
}
// (a, b) := (2 Z[k], 2 Z[j])
template<class C> QVR_INLINE void inversePlain(C& a, C& b, C w)
{
    const auto p = a.re - b.re, q = a.im + b.im;
    const auto v = fma(w.im, p, -(w.re * q)), u = fma(p, w.re, q * w.im);
    const auto s = a.re + b.re, d = a.im - b.im;
    a = {s + v, d + u};
    b = {s - v, u - d};
}

template<bool Inverse, bool TwoLevel, class C> QVR_INLINE void recombinePair(C& a, C& b, C w)
{
    if constexpr (Inverse)
        inversePlain(a, b, w);
    else if constexpr (TwoLevel)
        forwardPlain(a, b, w);
    else
        forwardFolded(a, b, w);
}

template<bool TwoLevel, class V> QVR_INLINE Cx<V> recombinationTwiddle(const Elem<V>* table, Index k)
{
    if constexpr (TwoLevel) {
        const Cx<V> fine = loadPairs<V>(table + 2 * (k & (kFine - 1)));
        const Elem<V>* coarse = table + 2 * (kFine + (k >> kFineOrder));
        return fine * Cx<V>{splat<V>(coarse[0]), splat<V>(coarse[1])};
    } else {
        return loadPairs<V>(table + 2 * k);
    }
}

// M >= 2 W. dst[0] and dst[1] are left as they were.
template<bool Inverse, bool TwoLevel, class T> inline void recombine(const T* src, T* dst, int m, const T* table)
{
    using V = Full<T>;
    constexpr int W = kLanes<T>;
    const Index M = Index{1} << m;
    // The first group has k = 0 in its first lane, whose partner is itself; it comes out of place and is not kept.
    const T first[2] = {get(dst, 0), get(dst, 1)};
    {
        const Index j = M - W + 1;
        const V last = shiftInPoint(load<V>(src + 2 * M - W), load<V>(src));
        Cx<V> a = loadPairs<V>(src), b = splitReversed(Pairs<V>{load<V>(src + 2 * j), last});
        recombinePair<Inverse, TwoLevel>(a, b, loadPairs<V>(table));
        storePairs(dst, a);
        const Pairs<V> back = joinReversed(b);
        store(dst + 2 * j, back.v0);
        store(dst + 2 * M - W, shiftOutPoint(back.v0, back.v1));
    }
    put(dst, 0, first[0]);
    put(dst, 1, first[1]);
    for (Index k = W; k < M / 2; k += W) {
        const Index j = M - k - W + 1;
        Cx<V> a = loadPairs<V>(src + 2 * k);
        Cx<V> b = splitReversed(Pairs<V>{load<V>(src + 2 * j), load<V>(src + 2 * j + W)});
        recombinePair<Inverse, TwoLevel>(a, b, recombinationTwiddle<TwoLevel, V>(table, k));
        storePairs(dst + 2 * k, a);
        const Pairs<V> back = joinReversed(b);
        store(dst + 2 * j, back.v0);
        store(dst + 2 * j + W, back.v1);
    }
    put(dst, M, Inverse ? 2 * get(src, M) : get(src, M));
    put(dst, M + 1, Inverse ? -2 * get(src, M + 1) : -get(src, M + 1));
}

template<bool Inverse, class T> inline void recombineBy(bool twoLevel, const T* src, T* dst, int m, const T* table)
{
    if (twoLevel)
        recombine<Inverse, true>(src, dst, m, table);
    else
        recombine<Inverse, false>(src, dst, m, table);
}

} // namespace

#endif
