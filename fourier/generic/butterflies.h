// Transforms of a few points in natural order, in registers: primes by pairs of conjugate roots, products of coprime
// factors by index maps that need no twiddles (Good, J. R. Stat. Soc. B 20, 1958; Thomas 1963).
#ifndef QVR_FOURIER_BUTTERFLIES_H
#define QVR_FOURIER_BUTTERFLIES_H

#include "fourier/generic/dft.h"
#include "fourier/real/passes.h"

namespace {

// With a = x[j] + x[R - j] and b = x[j] - x[R - j]: X[k] = x[0] + sum of a cos - i sum of b sin, and X[R - k] the same
// with + i.
template<int R, class C> QVR_INLINE void primeDft(C* x)
{
    using V = decltype(x->re);
    using T = Elem<V>;
    constexpr int H = (R - 1) / 2;
    C a[H], b[H];
    C sum = x[0];
#pragma clang loop unroll(full)
    for (int j = 0; j < H; j++) {
        a[j] = x[j + 1] + x[R - 1 - j];
        b[j] = x[j + 1] - x[R - 1 - j];
        sum = sum + a[j];
    }
    C y[R];
#pragma clang loop unroll(full)
    for (int k = 1; k <= H; k++) {
        C c = x[0], d = {};
#pragma clang loop unroll(full)
        for (int j = 0; j < H; j++) {
            const int at = (j + 1) * k % R;
            const V cosine = splat<V>(kCircle<T, R>.re[at]), sine = splat<V>(-kCircle<T, R>.im[at]);
            c = {fma(a[j].re, cosine, c.re), fma(a[j].im, cosine, c.im)};
            d = j == 0 ? C{b[j].re * sine, b[j].im * sine} : C{fma(b[j].re, sine, d.re), fma(b[j].im, sine, d.im)};
        }
        y[k] = minusI(c, d);
        y[R - k] = plusI(c, d);
    }
    x[0] = sum;
#pragma clang loop unroll(full)
    for (int k = 1; k < R; k++)
        x[k] = y[k];
}

template<int R, class C> QVR_INLINE void smallDft(C* x);

// x[B a + A b] as A by B: X[k] is at row k mod A and column k mod B.
template<int A, int B, class C> QVR_INLINE void coprimeDft(C* x)
{
    constexpr int R = A * B;
    C t[A][B];
#pragma clang loop unroll(full)
    for (int b = 0; b < B; b++) {
        C column[A];
#pragma clang loop unroll(full)
        for (int a = 0; a < A; a++)
            column[a] = x[(B * a + A * b) % R];
        smallDft<A>(column);
#pragma clang loop unroll(full)
        for (int a = 0; a < A; a++)
            t[a][b] = column[a];
    }
#pragma clang loop unroll(full)
    for (int a = 0; a < A; a++)
        smallDft<B>(t[a]);
#pragma clang loop unroll(full)
    for (int k = 0; k < R; k++)
        x[k] = t[k % A][k % B];
}

template<class C> QVR_INLINE void nineDft(C* x)
{
    using V = decltype(x->re);
    C t[3][3];
#pragma clang loop unroll(full)
    for (int j = 0; j < 3; j++) {
        C column[3] = {x[j], x[j + 3], x[j + 6]};
        smallDft<3>(column);
#pragma clang loop unroll(full)
        for (int k = 0; k < 3; k++)
            t[k][j] = j * k > 0 ? column[k] * constantTwiddle<9, V>(j * k) : column[k];
    }
#pragma clang loop unroll(full)
    for (int k = 0; k < 3; k++) {
        smallDft<3>(t[k]);
#pragma clang loop unroll(full)
        for (int d = 0; d < 3; d++)
            x[k + 3 * d] = t[k][d];
    }
}

template<int R, class C> QVR_INLINE void smallDft(C* x)
{
    if constexpr (R == 2 || R == 4 || R == 8 || R == 16)
        dft<R>(x);
    else if constexpr (R == 6 || R == 10 || R == 14)
        coprimeDft<2, R / 2>(x);
    else if constexpr (R == 12 || R == 20)
        coprimeDft<4, R / 4>(x);
    else if constexpr (R == 15 || R == 21)
        coprimeDft<3, R / 3>(x);
    else if constexpr (R == 9)
        nineDft(x);
    else if constexpr (R > 1)
        primeDft<R>(x);
}

// A prime without a kernel of its own; roots[2k], roots[2k + 1] is exp(-2 pi i k / radix).
template<class V> inline void oddDft(Cx<V>* x, int radix, const float* roots)
{
    const int half = (radix - 1) / 2;
    Cx<V> a[37], b[37];
    Cx<V> sum = x[0];
    const Cx<V> first = x[0];
    for (int j = 1; j <= half; j++) {
        a[j - 1] = x[j] + x[radix - j];
        b[j - 1] = x[j] - x[radix - j];
        sum = sum + a[j - 1];
    }
    for (int k = 1; k <= half; k++) {
        Cx<V> c = first, d = {};
        for (int j = 0, at = k; j < half; j++) {
            const V cosine = splat<V>(roots[2 * at]), sine = splat<V>(-roots[2 * at + 1]);
            c = {fma(a[j].re, cosine, c.re), fma(a[j].im, cosine, c.im)};
            d = {fma(b[j].re, sine, d.re), fma(b[j].im, sine, d.im)};
            at = at + k < radix ? at + k : at + k - radix;
        }
        x[k] = minusI(c, d);
        x[radix - k] = plusI(c, d);
    }
    x[0] = sum;
}

// R is 0 for a radix that is known at run time only.
template<int R, class Body> QVR_INLINE void eachOf(int from, int radix, const Body& body)
{
    if constexpr (R > 0) {
#pragma clang loop unroll(full)
        for (int j = from; j < R; j++)
            body(j);
    } else {
        for (int j = from; j < radix; j++)
            body(j);
    }
}
template<int R, class C> QVR_INLINE void transformOf(C* x, const DftStage& stage)
{
    if constexpr (R > 0)
        smallDft<R>(x);
    else
        oddDft(x, stage.radix, stage.roots);
}

} // namespace

#endif
