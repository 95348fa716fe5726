// Straight-line transforms of 16, 32 and 64 complex points, and the real ones of twice as many values.
//
// A complex kernel is A by B: transforms of A points over columns in lanes, twiddles, transposition, transforms of B
// points. All loads come before all stores, so source and destination may be one array.
//
// A short real one recombines in registers, since a load of mirrored points out of vectors that were just stored waits
// for the cache. Every vector is computed from its own points and their partners, so none is shuffled back.
#ifndef QVR_FOURIER_STRAIGHT_H
#define QVR_FOURIER_STRAIGHT_H

#include "fourier/real/passes.h"
#include "fourier/real/recombine.h"

namespace {

// exp(-2 pi i q b / (A B)), for each q of A and vector of columns b: W real parts, W imaginary parts.
template<class V, int A, int B> struct KernelTwiddles {
    alignas(64) Elem<V> w[2 * A * B];
};
template<class V, int A, int B> constexpr KernelTwiddles<V, A, B> makeKernelTwiddles()
{
    constexpr int W = lanes<V>;
    KernelTwiddles<V, A, B> t{};
    for (int q = 0; q < A; q++)
        for (int b = 0; b < B; b += W)
            for (int l = 0; l < W; l++) {
                const int k = q * (b + laneIndex<V>(l));
                t.w[2 * (q * B + b) + l] = static_cast<Elem<V>>(constantCosine(k, A * B));
                t.w[2 * (q * B + b) + W + l] = static_cast<Elem<V>>(-constantSine(k, A * B));
            }
    return t;
}
template<class V, int A, int B> constexpr KernelTwiddles<V, A, B> kKernelTwiddles = makeKernelTwiddles<V, A, B>();

// load(k) gives the points k .. k + W - 1; results(z) takes the bins g W + A d .. + W - 1 in z[g][d].
template<class V, int A, int B, class Load, class Results>
QVR_INLINE void complexKernel(const Load& load, const Results& results)
{
    constexpr int W = lanes<V>;
    using C = Cx<V>;
    C z[A / W][B];
#pragma clang loop unroll(full)
    for (int b = 0; b < B; b += W) {
        C x[A];
#pragma clang loop unroll(full)
        for (int a = 0; a < A; a++)
            x[a] = load(a * B + b);
        dft<A>(x);
#pragma clang loop unroll(full)
        for (int q = 1; q < A; q++)
            x[q] = x[q] * loadGroup<V>(kKernelTwiddles<V, A, B>.w + 2 * (q * B + b));
#pragma clang loop unroll(full)
        for (int g = 0; g < A / W; g++) {
            V re[W], im[W];
#pragma clang loop unroll(full)
            for (int j = 0; j < W; j++) {
                re[j] = x[g * W + laneIndex<V>(j)].re;
                im[j] = x[g * W + laneIndex<V>(j)].im;
            }
            transpose(re);
            transpose(im);
#pragma clang loop unroll(full)
            for (int l = 0; l < W; l++)
                z[g][b + laneIndex<V>(l)] = {re[l], im[l]};
        }
    }
#pragma clang loop unroll(full)
    for (int g = 0; g < A / W; g++)
        dft<B>(z[g]);
    results(z);
}

template<class V, int A, int B, bool Swap> struct StraightComplex {
    static QVR_INLINE void run(const Elem<V>* src, Elem<V>* dst, Elem<V> factor)
    {
        constexpr int W = lanes<V>;
        complexKernel<V, A, B>([&](int k) { return swapIf<Swap>(loadPairs<V>(src + 2 * k)); },
                               [&](const Cx<V>(&z)[A / W][B]) __attribute__((always_inline)) {
#pragma clang loop unroll(full)
                                   for (int g = 0; g < A / W; g++)
#pragma clang loop unroll(full)
                                       for (int d = 0; d < B; d++)
                                           finish<Swap ? Finish::scaled : Finish::pairs>(dst + 2 * (g * W + A * d),
                                                                                         z[g][d], splat<V>(factor));
                               });
    }
};

// exp(-2 pi i k / 2M) for the points of each vector: W real parts, W imaginary parts.
template<class V, int M> struct BinTwiddles {
    alignas(64) Elem<V> w[2 * M];
};
template<class V, int M> constexpr BinTwiddles<V, M> makeBinTwiddles()
{
    constexpr int W = lanes<V>;
    BinTwiddles<V, M> t{};
    for (int k = 0; k < M; k += W)
        for (int l = 0; l < W; l++) {
            t.w[2 * k + l] = static_cast<Elem<V>>(constantCosine(k + laneIndex<V>(l), 2 * M));
            t.w[2 * k + W + l] = static_cast<Elem<V>>(-constantSine(k + laneIndex<V>(l), 2 * M));
        }
    return t;
}
template<class V, int M> constexpr BinTwiddles<V, M> kBinTwiddles = makeBinTwiddles<V, M>();

// Point 0 of `first`, then the points W - 1 .. 1 of `rest`.
template<class V> constexpr int mirroredLane(int lane)
{
    constexpr int W = lanes<V>;
    const int point = laneIndex<V>(lane);
    int from = 0;
    while (point > 0 && laneIndex<V>(from) != W - point)
        from++;
    return point > 0 ? W + from : 0;
}
template<class V, int... I> QVR_INLINE V mirrored(V first, V rest, Indices<I...>)
{
    return __builtin_shufflevector(first, rest, mirroredLane<V>(I)...);
}

// To the packed spectrum.
template<class V, int A, int B> struct StraightForward {
    static QVR_INLINE void run(const Elem<V>* src, Elem<V>* dst, Elem<V> factor)
    {
        constexpr int W = lanes<V>, M = A * B, vectors = M / W, groups = A / W;
        const V f = splat<V>(factor);
        complexKernel<V, A, B>([&](int k) { return loadPairs<V>(src + 2 * k); },
                               [&](const Cx<V>(&z)[groups][B]) __attribute__((always_inline)) {
                                   Cx<V> y[vectors];
#pragma clang loop unroll(full)
                                   for (int j = 0; j < vectors; j++)
                                       y[j] = {z[j % groups][j / groups].re * f, z[j % groups][j / groups].im * f};
                                   Elem<V> last{};
#pragma clang loop unroll(full)
                                   for (int j = 0; j < vectors; j++) {
                                       const Cx<V> first = y[(vectors - j) % vectors], rest = y[vectors - 1 - j];
                                       Cx<V> a = y[j], b = {mirrored(first.re, rest.re, Iota<W>{}),
                                                            mirrored(first.im, rest.im, Iota<W>{})};
                                       recombinePair<false>(a, b, loadGroup<V>(kBinTwiddles<V, M>.w + 2 * j * W));
                                       storePairs(dst + 2 * j * W, a);
                                       if (j == 0)
                                           last = b.re[0];
                                   }
                                   put(dst, 1, last);
                               });
    }
};

// From bins 1 .. M - 1 at src[2k], Re X[0] at src[0] and Re X[M].
template<class V, int A, int B> struct StraightInverse {
    static QVR_INLINE void run(const Elem<V>* src, Elem<V> last, Elem<V>* dst, Elem<V> factor)
    {
        using T = Elem<V>;
        constexpr int W = lanes<V>, M = A * B;
        complexKernel<V, A, B>(
            [&](int k) __attribute__((always_inline)) {
                const T *const p = src + 2 * k, *const back = src + 2 * (M - k - W + 1);
                Pairs<V> a = {k == 0 ? firstThen<V>(get(src, 0), p) : load<V>(p), load<V>(p + W)};
                Pairs<V> b = {load<V>(back), k == 0 ? thenLast<V>(back + W, last, T{}) : load<V>(back + W)};
                Cx<V> x = split(a.v0, a.v1), y = splitReversed(b);
                recombinePair<true>(x, y, loadGroup<V>(kBinTwiddles<V, M>.w + 2 * k));
                return swapIf<true>(x);
            },
            [&](const Cx<V>(&z)[A / W][B]) __attribute__((always_inline)) {
#pragma clang loop unroll(full)
                for (int g = 0; g < A / W; g++)
#pragma clang loop unroll(full)
                    for (int d = 0; d < B; d++)
                        finish<Finish::scaled>(dst + 2 * (g * W + A * d), z[g][d], splat<V>(factor));
            });
    }
};

// The kernel of 2^m points, 4 <= m <= Most.
template<template<class, int, int> class Kernel, int Most, class T, class... Args> void straight(int m, Args... args)
{
    constexpr int W = kLanes<T>, narrow = W > 4 ? 4 : W;
    switch (m) {
    case 4:
        Kernel<Vec<T, narrow>, 4, 4>::run(args...);
        break;
    case 5:
        if constexpr (Most >= 5)
            Kernel<Vec<T, narrow>, 8, 4>::run(args...);
        break;
    case 6:
        if constexpr (Most >= 6)
            Kernel<Full<T>, 8, 8>::run(args...);
        break;
    }
}
template<class V, int A, int B> using StraightPlain = StraightComplex<V, A, B, false>;
template<class V, int A, int B> using StraightSwapped = StraightComplex<V, A, B, true>;

} // namespace

#endif
