// First stage of a mixed-radix transform: transforms over points that are `rows` apart, a row in each lane, twiddles,
// and a transposition that makes rows of the results.
#include "fourier/generic/butterflies.h"
#include "fourier/generic/dft.h"

namespace {

using F = Full<float>;
using C = Cx<F>;
constexpr int W = kLanes<float>;

// W of the values from p on, of which only n exist.
QVR_INLINE C loadPoints(const float* p, Index n)
{
    C z;
    if (n >= W) {
        loadComplex(p, z.re, z.im);
        return z;
    }
    alignas(64) float pairs[2 * W] = {};
    __builtin_memcpy(pairs, static_cast<const void*>(p), static_cast<size_t>(n) * 8);
    loadComplex(pairs, z.re, z.im);
    return z;
}
QVR_INLINE F loadReals(const float* p, Index n)
{
    return n >= W ? load<F>(p) : loadFirst<F>(p, static_cast<int>(n));
}

// Results `columns` of W rows, times their twiddles, to rows from `at` on.
QVR_INLINE void storeRows(const C* x, int columns, int pitch, const float* tw, Index at, Index rows, float* re,
                          float* im)
{
    for (int g = 0; g < pitch; g += W) {
        F r[W], i[W];
        for (int j = 0; j < W; j++) {
            const int k = g + j;
            C z = {};
            if (k == 0)
                z = x[0];
            else if (k < columns)
                z = x[k] * C{load<F>(tw + 2 * W * (k - 1)), load<F>(tw + 2 * W * (k - 1) + W)};
            r[j] = z.re;
            i[j] = z.im;
        }
        transpose(r);
        transpose(i);
        for (int l = 0; l < W && l < rows; l++) {
            store(re + (at + l) * pitch + g, r[l]);
            store(im + (at + l) * pitch + g, i[l]);
        }
    }
}
// The same, unrolled.
template<int Columns, int Pitch>
QVR_INLINE void storeRowsOf(const C* x, const float* tw, Index at, Index rows, float* re, float* im)
{
#pragma clang loop unroll(full)
    for (int g = 0; g < Pitch; g += W) {
        F r[W], i[W];
#pragma clang loop unroll(full)
        for (int j = 0; j < W; j++) {
            const int k = g + j;
            C z = {};
            if (k == 0)
                z = x[0];
            else if (k < Columns)
                z = x[k] * C{load<F>(tw + 2 * W * (k - 1)), load<F>(tw + 2 * W * (k - 1) + W)};
            r[j] = z.re;
            i[j] = z.im;
        }
        transpose(r);
        transpose(i);
        if (rows >= W) {
#pragma clang loop unroll(full)
            for (int l = 0; l < W; l++) {
                store(re + (at + l) * Pitch + g, r[l]);
                store(im + (at + l) * Pitch + g, i[l]);
            }
        } else {
#pragma clang loop unroll(full)
            for (int l = 0; l < W; l++)
                if (l < rows) {
                    store(re + (at + l) * Pitch + g, r[l]);
                    store(im + (at + l) * Pitch + g, i[l]);
                }
        }
    }
}

constexpr int pitchOf(int columns)
{
    return (columns + W - 1) / W * W;
}

// The real results Z of two sets of rows: with a and b those of bins k and R - k, the even part of Z belongs to the
// first set and the odd part, turned, to the second. The factor 1/2 is in the twiddles.
QVR_INLINE C firstSet(C a, C b)
{
    return {a.re + b.re, a.im - b.im};
}
QVR_INLINE C secondSet(C a, C b)
{
    return {a.im + b.im, b.re - a.re};
}

template<int R> void first(const qvrsDFTSpec* spec, const float* src, uint32_t sign, float* re, float* im)
{
    const Index rows = spec->points / R;
    const float* tw = spec->stages[0].twiddle;
    const F flip = bitcast<F>(splat<Bits<F>>(sign));
    for (Index g = 0; g < groupsOf(rows); g++, tw += 2 * W * (R - 1)) {
        const Index at = groupStart(g, rows);
        C x[R];
#pragma clang loop unroll(full)
        for (int j = 0; j < R; j++) {
            x[j] = loadPoints(src + 2 * (at + j * rows), rows);
            x[j].im = bitcast<F>(bits(x[j].im) ^ bits(flip));
        }
        smallDft<R>(x);
        storeRowsOf<R, pitchOf(R)>(x, tw, at, rows, re, im);
    }
}

template<int R> void firstReal(const qvrsDFTSpec* spec, const float* src, float* re, float* im)
{
    constexpr int K = (R + 1) / 2;
    const Index rows = spec->points / R, groups = groupsOf(rows);
    const float* tw = spec->stages[0].twiddle;
    for (Index g = 0; g < groups; g += 2) {
        const Index second = g + 1 < groups ? g + 1 : g, atA = groupStart(g, rows), atB = groupStart(second, rows);
        C x[R], a[K], b[K];
#pragma clang loop unroll(full)
        for (int j = 0; j < R; j++)
            x[j] = {loadReals(src + atA + j * rows, rows), loadReals(src + atB + j * rows, rows)};
        smallDft<R>(x);
        a[0] = {x[0].re, F{}};
        b[0] = {x[0].im, F{}};
#pragma clang loop unroll(full)
        for (int k = 1; k < K; k++) {
            a[k] = firstSet(x[k], x[R - k]);
            b[k] = secondSet(x[k], x[R - k]);
        }
        storeRowsOf<K, pitchOf(K)>(a, tw + g * 2 * W * (K - 1), atA, rows, re, im);
        storeRowsOf<K, pitchOf(K)>(b, tw + second * 2 * W * (K - 1), atB, rows, re, im);
    }
}

void firstOdd(const qvrsDFTSpec* spec, const float* src, uint32_t sign, float* re, float* im)
{
    const int R = spec->stages[0].radix;
    const Index rows = spec->points / R;
    const float* tw = spec->stages[0].twiddle;
    for (Index g = 0; g < groupsOf(rows); g++, tw += 2 * W * (R - 1)) {
        const Index at = groupStart(g, rows);
        C x[kFactorMost];
        for (int j = 0; j < R; j++) {
            x[j] = loadPoints(src + 2 * (at + j * rows), rows);
            x[j].im = bitcast<F>(bits(x[j].im) ^ splat<Bits<F>>(sign));
        }
        oddDft(x, R, spec->stages[0].roots);
        storeRows(x, R, spec->pitch, tw, at, rows, re, im);
    }
}

void firstOddReal(const qvrsDFTSpec* spec, const float* src, float* re, float* im)
{
    const int R = spec->stages[0].radix, K = (R + 1) / 2;
    const Index rows = spec->points / R, groups = groupsOf(rows);
    const float* tw = spec->stages[0].twiddle;
    for (Index g = 0; g < groups; g += 2) {
        const Index second = g + 1 < groups ? g + 1 : g, atA = groupStart(g, rows), atB = groupStart(second, rows);
        C x[kFactorMost], b[(kFactorMost + 1) / 2];
        for (int j = 0; j < R; j++)
            x[j] = {loadReals(src + atA + j * rows, rows), loadReals(src + atB + j * rows, rows)};
        oddDft(x, R, spec->stages[0].roots);
        b[0] = {x[0].im, F{}};
        x[0].im = F{};
        for (int k = 1; k < K; k++) {
            const C z = x[k];
            x[k] = firstSet(z, x[R - k]);
            b[k] = secondSet(z, x[R - k]);
        }
        storeRows(x, K, spec->pitch, tw + g * 2 * W * (K - 1), atA, rows, re, im);
        storeRows(b, K, spec->pitch, tw + second * 2 * W * (K - 1), atB, rows, re, im);
    }
}

} // namespace

extern "C" void SLOT(ownqvrsDFTFirst_C)(const qvrsDFTSpec* spec, const float* src, uint32_t sign, float* re, float* im)
{
    switch (spec->stages[0].radix) {
#define QVR_CASE(R)                                                                                                    \
    case R:                                                                                                            \
        return first<R>(spec, src, sign, re, im);
        QVR_CASE(5)
        QVR_CASE(7)
        QVR_CASE(8)
        QVR_CASE(9)
        QVR_CASE(10)
        QVR_CASE(11)
        QVR_CASE(12)
        QVR_CASE(13)
        QVR_CASE(14)
        QVR_CASE(15)
        QVR_CASE(16)
        QVR_CASE(20)
        QVR_CASE(21)
#undef QVR_CASE
    }
    firstOdd(spec, src, sign, re, im);
}

extern "C" void SLOT(ownqvrsDFTFirst_R)(const qvrsDFTSpec* spec, const float* src, float* re, float* im)
{
    switch (spec->stages[0].radix) {
#define QVR_CASE(R)                                                                                                    \
    case R:                                                                                                            \
        return firstReal<R>(spec, src, re, im);
        QVR_CASE(5)
        QVR_CASE(7)
        QVR_CASE(9)
        QVR_CASE(11)
        QVR_CASE(13)
        QVR_CASE(15)
        QVR_CASE(21)
#undef QVR_CASE
    }
    firstOddReal(spec, src, re, im);
}
