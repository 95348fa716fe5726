// Straight-line complex transforms of 16, 32 and 64 points.
//
// A complex kernel is A by B: transforms of A points over columns in lanes, twiddles, transposition, transforms of B
// points. All loads come before all stores, so source and destination may be one array.
#ifndef QVR_FOURIER_STRAIGHT_H
#define QVR_FOURIER_STRAIGHT_H

#include "fourier/real/passes.h"

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

template<class V, int A, int B, bool Swap>
QVR_INLINE void complexKernel(const Elem<V>* src, Elem<V>* dst, Elem<V> factor)
{
    constexpr int W = lanes<V>;
    using C = Cx<V>;
    C z[A / W][B];
#pragma clang loop unroll(full)
    for (int b = 0; b < B; b += W) {
        C x[A];
#pragma clang loop unroll(full)
        for (int a = 0; a < A; a++)
            x[a] = swapIf<Swap>(loadPairs<V>(src + 2 * (a * B + b)));
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
    for (int g = 0; g < A / W; g++) {
        dft<B>(z[g]);
#pragma clang loop unroll(full)
        for (int d = 0; d < B; d++)
            finish<Swap ? Finish::swappedPairs : Finish::pairs>(dst + 2 * (g * W + A * d), z[g][d], splat<V>(factor));
    }
}

// 2^m points, 4 <= m <= 6.
template<bool Swap, class T> void straight(int m, const T* src, T* dst, T factor)
{
    constexpr int W = kLanes<T>, narrow = W > 4 ? 4 : W;
    switch (m) {
    case 4:
        complexKernel<Vec<T, narrow>, 4, 4, Swap>(src, dst, factor);
        break;
    case 5:
        complexKernel<Vec<T, narrow>, 8, 4, Swap>(src, dst, factor);
        break;
    case 6:
        if constexpr (kAvx)
            complexKernel<Full<T>, 8, 8, Swap>(src, dst, factor);
        break;
    }
}

} // namespace

#endif
