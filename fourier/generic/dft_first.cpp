// First stage of a mixed-radix transform: transforms over points that are `rows` apart, a row in each lane, twiddles,
// and a transposition that makes rows of the results.
#include "fourier/generic/butterflies.h"

namespace {

using F = Full<float>;
using C = Cx<F>;
constexpr int W = kLanes<float>;

// W rows or more.
struct Rows {
    const float* src;
    Index leg, count; // points from one to the next of a row
    float *re, *im;
};

constexpr int pitchOf(int columns)
{
    return (columns + W - 1) / W * W;
}

// Results of W rows from `at` on, times their twiddles. Columns is 0 for a number that is known at run time only.
template<int Columns> QVR_INLINE void storeRows(const C* x, int columns, const float* tw, Index at, const Rows& rows)
{
    const int pitch = pitchOf(columns);
    eachOf<pitchOf(Columns) / W>(0, pitch / W, [&](int group) __attribute__((always_inline)) {
        F r[W], i[W];
#pragma clang loop unroll(full)
        for (int j = 0; j < W; j++) {
            const int k = group * W + j;
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
#pragma clang loop unroll(full)
        for (int l = 0; l < W; l++) {
            store(rows.re + (at + l) * pitch + group * W, r[l]);
            store(rows.im + (at + l) * pitch + group * W, i[l]);
        }
    });
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

template<int R> void first(const DftStage& stage, const Rows& args, uint32_t sign)
{
    const Rows rows = args;
    const int radix = R > 0 ? R : stage.radix;
    const float* tw = stage.twiddle;
    const F flip = bitcast<F>(splat<Bits<F>>(sign));
    for (Index g = 0; g < groupsOf(rows.count); g++, tw += 2 * W * (radix - 1)) {
        const Index at = groupStart(g, rows.count);
        C x[R > 0 ? R : kFactorMost];
        eachOf<R>(0, radix, [&](int j) __attribute__((always_inline)) {
            loadComplex(rows.src + 2 * (at + j * rows.leg), x[j].re, x[j].im);
            x[j].im = bitcast<F>(bits(x[j].im) ^ bits(flip));
        });
        transformOf<R>(x, stage);
        storeRows<R>(x, radix, tw, at, rows);
    }
}

template<int R> void firstReal(const DftStage& stage, const Rows& args)
{
    const Rows rows = args;
    const float* const tw = stage.twiddle;
    const int radix = R > 0 ? R : stage.radix, columns = (radix + 1) / 2;
    constexpr int most = R > 0 ? R : kFactorMost;
    const Index groups = groupsOf(rows.count), record = 2 * W * (columns - 1);
    for (Index g = 0; g < groups; g += 2) {
        const Index second = g + 1 < groups ? g + 1 : g;
        const Index atA = groupStart(g, rows.count), atB = groupStart(second, rows.count);
        C x[most], a[(most + 1) / 2], b[(most + 1) / 2];
        eachOf<R>(0, radix, [&](int j) __attribute__((always_inline)) {
            const float* leg = rows.src + j * rows.leg;
            x[j] = {load<F>(leg + atA), load<F>(leg + atB)};
        });
        transformOf<R>(x, stage);
        a[0] = {x[0].re, F{}};
        b[0] = {x[0].im, F{}};
        eachOf<(R + 1) / 2>(1, columns, [&](int k) __attribute__((always_inline)) {
            a[k] = firstSet(x[k], x[radix - k]);
            b[k] = secondSet(x[k], x[radix - k]);
        });
        storeRows<(R + 1) / 2>(a, columns, tw + g * record, atA, rows);
        storeRows<(R + 1) / 2>(b, columns, tw + second * record, atB, rows);
    }
}

// Runs body on the rows, each of whose values is Lanes floats; fewer rows than lanes pass through whole vectors.
template<int Lanes, class Body>
QVR_INLINE void onRows(const qvrsDFTSpec& spec, const float* src, float* re, float* im, const Body& body)
{
    const int radix = spec.stages[0].radix;
    const Index count = spec.points / radix;
    if (count >= W)
        return body(Rows{src, count, count, re, im});
    alignas(64) float in[Lanes * W * kFactorMost], outRe[W * pitchOf(kFactorMost)], outIm[W * pitchOf(kFactorMost)];
    for (int j = 0; j < radix; j++, src += Lanes * count)
        for (Index i = 0; i < Lanes * W; i += W) {
            const Index left = Lanes * count - i, n = left < 0 ? 0 : left < W ? left : W;
            store(in + Lanes * W * j + i, loadFirst<F>(src + i, static_cast<int>(n)));
        }
    body(Rows{in, W, W, outRe, outIm});
    const size_t bytes = static_cast<size_t>(count * spec.pitch) * sizeof(float);
    __builtin_memcpy(re, outRe, bytes);
    __builtin_memcpy(im, outIm, bytes);
}

} // namespace

extern "C" void SLOT(ownqvrsDFTFirst_C)(const qvrsDFTSpec* spec, const float* src, uint32_t sign, float* re, float* im)
{
    onRows<2>(*spec, src, re, im, [&](const Rows& rows) {
        const DftStage& stage = spec->stages[0];
        switch (stage.radix) {
#define QVR_CASE(R)                                                                                                    \
    case R:                                                                                                            \
        return first<R>(stage, rows, sign);
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
        first<0>(stage, rows, sign);
    });
}

extern "C" void SLOT(ownqvrsDFTFirst_R)(const qvrsDFTSpec* spec, const float* src, float* re, float* im)
{
    onRows<1>(*spec, src, re, im, [&](const Rows& rows) {
        const DftStage& stage = spec->stages[0];
        switch (stage.radix) {
#define QVR_CASE(R)                                                                                                    \
    case R:                                                                                                            \
        return firstReal<R>(stage, rows);
            QVR_CASE(5)
            QVR_CASE(7)
            QVR_CASE(9)
            QVR_CASE(11)
            QVR_CASE(13)
            QVR_CASE(15)
            QVR_CASE(21)
#undef QVR_CASE
        }
        firstReal<0>(stage, rows);
    });
}
