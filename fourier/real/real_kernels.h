// Straight-line real transforms of the shortest orders.
#ifndef QVR_FOURIER_REAL_KERNELS_H
#define QVR_FOURIER_REAL_KERNELS_H

#include "fourier/real/limits.h"
#include "fourier/real/passes.h"
#include "fourier/real/sixteen.h"

namespace {

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
            // Halved before they are added up, so that they stay in range whenever the bins do.
            const Cx<S> x = {a.re * half, a.im * half}, y = {b.re * half, b.im * half};
            const Cx<S> even = {x.re + y.re, x.im - y.im}, odd = Cx<S>{x.im + y.im, y.re - x.re} * w;
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

// The bins k at p[2k] and X[N/2] at p[lastAt] to N reals. Everything is loaded before anything is stored.
template<class T, int N> QVR_INLINE void realInverse(const T* p, Index lastAt, T* dst, T factor, bool scale)
{
    using S = Scalar<T>;
    const S f = {scale ? factor : T{1}};
    const auto put = [&](int i, S v) { store(dst + i, scale ? v * f : v); };
    if constexpr (N == 1) {
        put(0, load<S>(p));
    } else {
        constexpr int M = N / 2;
        Cx<S> z[M]; // swapped
        const S first = load<S>(p), last = load<S>(p + lastAt), two = {T(2)};
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
        sixteenForward(src, dst, factor, scale);
        break;
    case 5:
        if constexpr (kFftLimits<T>.real == 5)
            realForward<T, 32>(src, dst, factor, scale);
        break;
    }
}
template<class T> inline void realInverseOf(int order, const T* p, Index lastAt, T* dst, T factor, bool scale)
{
    switch (order) {
    case 0:
        realInverse<T, 1>(p, lastAt, dst, factor, scale);
        break;
    case 1:
        realInverse<T, 2>(p, lastAt, dst, factor, scale);
        break;
    case 2:
        realInverse<T, 4>(p, lastAt, dst, factor, scale);
        break;
    case 3:
        realInverse<T, 8>(p, lastAt, dst, factor, scale);
        break;
    case 4:
        sixteenInverse(p, lastAt, dst, factor, scale);
        break;
    case 5:
        if constexpr (kFftLimits<T>.real == 5)
            realInverse<T, 32>(p, lastAt, dst, factor, scale);
        break;
    }
}

} // namespace

#endif
