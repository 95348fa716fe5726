// Straight-line transforms: complex kernels of 16, 32 and 64 points, and the real kernels of the shortest orders.
//
// A complex kernel is A by B: transforms of A points over columns in lanes, twiddles, transposition, transforms of B
// points. All loads come before all stores, so source and destination may be one array.
#ifndef QVR_FOURIER_KERNELS_H
#define QVR_FOURIER_KERNELS_H

#include "fourier/passes.h"

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

template<class V, int A, int B, bool Swap, class Out>
QVR_INLINE void complexKernel(const Elem<V>* src, Elem<V>* dst, Out to)
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
            to.template put<V>(dst + 2 * (g * W + A * d), z[g][d]);
    }
}

// 2^m points, 4 <= m <= 6.
template<class T, bool Swap, class Out> inline void complexKernelOf(int m, const T* src, T* dst, Out to)
{
    constexpr int W = kLanes<T>, narrow = W > 4 ? 4 : W;
    switch (m) {
    case 4:
        complexKernel<Vec<T, narrow>, 4, 4, Swap>(src, dst, to);
        break;
    case 5:
        complexKernel<Vec<T, narrow>, 8, 4, Swap>(src, dst, to);
        break;
    case 6:
        if constexpr (kAvx)
            complexKernel<Full<T>, 8, 8, Swap>(src, dst, to);
        break;
    }
}

// ---- Real kernels ---------------------------------------------------------------------------------------------------

template<class T> using Scalar = Vec<T, 1>;

// x[0 .. M - 1] complex from N = 2M reals, to the packed spectrum in y.
template<class T, int N> QVR_INLINE void realForward(const T* src, T* dst, T factor, bool scale)
{
    using S = Scalar<T>;
    const S f = {scale ? factor : T{1}};
    const auto put = [&](int i, S v) { store(dst + i, scale ? v * f : v); };
    if constexpr (N == 1) {
        put(0, load<S>(src));
    } else {
        constexpr int M = N / 2;
        Cx<S> z[M];
#pragma clang loop unroll(full)
        for (int i = 0; i < M; i++)
            z[i] = {load<S>(src + 2 * i), load<S>(src + 2 * i + 1)};
        if constexpr (M > 1)
            dft<M>(z);
        put(0, z[0].re + z[0].im);
        put(1, z[0].re - z[0].im);
        const S half = {T(0.5)};
#pragma clang loop unroll(full)
        for (int k = 1; k < M / 2; k++) {
            // X[k] = (a + conj b)/2 - i w (a - conj b)/2
            const Cx<S> a = z[k], b = z[M - k], w = constantTwiddle<N, S>(k);
            const Cx<S> even = {(a.re + b.re) * half, (a.im - b.im) * half};
            const Cx<S> odd = Cx<S>{(a.im + b.im) * half, (b.re - a.re) * half} * w;
            put(2 * k, even.re + odd.re);
            put(2 * k + 1, even.im + odd.im);
            put(2 * (M - k), even.re - odd.re);
            put(2 * (M - k) + 1, odd.im - even.im);
        }
        if constexpr (M > 1) {
            put(M, z[M / 2].re);
            put(M + 1, -z[M / 2].im);
        }
    }
}

// In place: the packed spectrum to N reals.
template<class T, int N> QVR_INLINE void realInverse(T* p, T factor, bool scale)
{
    using S = Scalar<T>;
    const S f = {scale ? factor : T{1}};
    const auto put = [&](int i, S v) { store(p + i, scale ? v * f : v); };
    if constexpr (N == 1) {
        put(0, load<S>(p));
    } else {
        constexpr int M = N / 2;
        Cx<S> z[M]; // swapped
        const S first = load<S>(p), last = load<S>(p + 1), two = {T(2)};
        z[0] = {first - last, first + last};
#pragma clang loop unroll(full)
        for (int k = 1; k < M / 2; k++) {
            // 2 Z[k] = a + conj b + i conj(w) (a - conj b)
            const Cx<S> a = {load<S>(p + 2 * k), load<S>(p + 2 * k + 1)};
            const Cx<S> b = {load<S>(p + 2 * (M - k)), load<S>(p + 2 * (M - k) + 1)};
            const Cx<S> t = constantTwiddle<N, S>(k), w = {t.re, -t.im};
            const Cx<S> even = {a.re + b.re, a.im - b.im}, d = Cx<S>{a.re - b.re, a.im + b.im} * w;
            z[k] = {even.im + d.re, even.re - d.im};
            z[M - k] = {d.re - even.im, even.re + d.im};
        }
        if constexpr (M > 1) {
            z[M / 2] = {load<S>(p + M + 1) * -two, load<S>(p + M) * two};
            dft<M>(z);
        }
#pragma clang loop unroll(full)
        for (int i = 0; i < M; i++) {
            put(2 * i, z[i].im);
            put(2 * i + 1, z[i].re);
        }
    }
}

template<class T> inline void realForwardOf(int order, const T* src, T* dst, T factor, bool scale)
{
    switch (order) {
    case 0:
        realForward<T, 1>(src, dst, factor, scale);
        break;
    case 1:
        realForward<T, 2>(src, dst, factor, scale);
        break;
    case 2:
        realForward<T, 4>(src, dst, factor, scale);
        break;
    case 3:
        realForward<T, 8>(src, dst, factor, scale);
        break;
    case 4:
        realForward<T, 16>(src, dst, factor, scale);
        break;
    case 5:
        if constexpr (kFftLimits<T>.real == 5)
            realForward<T, 32>(src, dst, factor, scale);
        break;
    }
}
template<class T> inline void realInverseOf(int order, T* p, T factor, bool scale)
{
    switch (order) {
    case 0:
        realInverse<T, 1>(p, factor, scale);
        break;
    case 1:
        realInverse<T, 2>(p, factor, scale);
        break;
    case 2:
        realInverse<T, 4>(p, factor, scale);
        break;
    case 3:
        realInverse<T, 8>(p, factor, scale);
        break;
    case 4:
        realInverse<T, 16>(p, factor, scale);
        break;
    case 5:
        if constexpr (kFftLimits<T>.real == 5)
            realInverse<T, 32>(p, factor, scale);
        break;
    }
}

} // namespace

#endif
