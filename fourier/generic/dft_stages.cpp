// Later stages of a mixed-radix transform, by decimation in frequency. A stage of radix R on `left` rows: rows p and
// p + j left/R give row R p + k, times exp(-2 pi i p k / left). Rows that have been made into one stand side by side,
// so that after the last stage the values stand in order.
#include "fourier/generic/butterflies.h"

namespace {

using F = Full<float>;
using C = Cx<F>;
constexpr int W = kLanes<float>;

struct Planes {
    const float *re, *im;
};

template<int R> void middle(const DftStage& stage, Index left, Index row, Planes in, float* outRe, float* outIm)
{
    const int radix = R > 0 ? R : stage.radix;
    const Index legs = left / radix;
    const float* tw = stage.twiddle;
    for (Index p = 0; p < legs; p++, tw += 2 * (radix - 1))
        for (Index q = 0; q < row; q += W) {
            C x[R > 0 ? R : kFactorMost];
            eachOf<R>(0, radix, [&](int j) {
                const Index at = q + row * (p + j * legs);
                x[j] = {load<F>(in.re + at), load<F>(in.im + at)};
            });
            transformOf<R>(x, stage);
            const Index to = q + row * radix * p;
            store(outRe + to, x[0].re);
            store(outIm + to, x[0].im);
            eachOf<R>(1, radix, [&](int k) {
                const C z = x[k] * C{splat<F>(tw[2 * k - 2]), splat<F>(tw[2 * k - 1])};
                store(outRe + to + row * k, z.re);
                store(outIm + to + row * k, z.im);
            });
        }
}

// Pairs in order, the first n of them.
__attribute__((noinline)) void storeFirstPairs(float* p, C z, Index n)
{
    const F low = zipLo(z.re, z.im), high = zipHi(z.re, z.im);
    storeFirst(p, low, static_cast<int>(2 * n < W ? 2 * n : W));
    if (2 * n > W)
        storeFirst(p + W, high, static_cast<int>(2 * n - W));
}

// One stage on rows of `pitch` values of which `columns` count: result k of row r goes to place
// columns (r + rows k).
template<int R> void last(const DftStage& stage, Index row, int columns, int pitch, Planes in, float* dst, C factor)
{
    const int radix = R > 0 ? R : stage.radix;
    const Index rows = row / pitch;
    for (Index r = 0; r < rows; r++)
        for (int g = 0; g < columns; g += W) {
            const Index q = r * pitch + g, valid = columns - g;
            C x[R > 0 ? R : kFactorMost];
            eachOf<R>(0, radix, [&](int j) { x[j] = {load<F>(in.re + q + j * row), load<F>(in.im + q + j * row)}; });
            transformOf<R>(x, stage);
            float* out = dst + 2 * (columns * r + g);
            eachOf<R>(0, radix, [&](int k) {
                const C z = {x[k].re * factor.re, x[k].im * factor.im};
                float* to = out + 2 * columns * rows * k;
                // What a vector writes too much belongs to the next row, which comes later.
                if (valid >= W || r + 1 < rows) {
                    store(to, zipLo(z.re, z.im));
                    store(to + W, zipHi(z.re, z.im));
                } else {
                    storeFirstPairs(to, z, valid);
                }
            });
        }
}

} // namespace

#define QVR_CASES                                                                                                      \
    QVR_CASE(2)                                                                                                        \
    QVR_CASE(3)                                                                                                        \
    QVR_CASE(4)                                                                                                        \
    QVR_CASE(5)                                                                                                        \
    QVR_CASE(6)                                                                                                        \
    QVR_CASE(7)                                                                                                        \
    QVR_CASE(8)                                                                                                        \
    QVR_CASE(9)                                                                                                        \
    QVR_CASE(11)                                                                                                       \
    QVR_CASE(13)                                                                                                       \
    QVR_CASE(16)

extern "C" void SLOT(ownqvrsDFTStage)(const DftStage* stage, int64_t left, int64_t row, const float* re,
                                      const float* im, float* outRe, float* outIm)
{
    switch (stage->radix) {
#define QVR_CASE(R)                                                                                                    \
    case R:                                                                                                            \
        return middle<R>(*stage, left, row, {re, im}, outRe, outIm);
        QVR_CASES
#undef QVR_CASE
    }
    middle<0>(*stage, left, row, {re, im}, outRe, outIm);
}

extern "C" void SLOT(ownqvrsDFTLast)(const qvrsDFTSpec* spec, const DftStage* stage, int64_t row, const float* re,
                                     const float* im, float* dst, float factor, uint32_t sign)
{
    const C scale = {splat<F>(factor), splat<F>(sign != 0 ? -factor : factor)};
    switch (stage->radix) {
#define QVR_CASE(R)                                                                                                    \
    case R:                                                                                                            \
        return last<R>(*stage, row, spec->columns, spec->pitch, {re, im}, dst, scale);
        QVR_CASES
#undef QVR_CASE
    }
    last<0>(*stage, row, spec->columns, spec->pitch, {re, im}, dst, scale);
}

extern "C" const DftKernels SLOT(ownqvrsDFTKernels) = {SLOT(ownqvrsDFTStraight_C), SLOT(ownqvrsDFTStraight_R),
                                                       SLOT(ownqvrsDFTFirst_C),    SLOT(ownqvrsDFTFirst_R),
                                                       SLOT(ownqvrsDFTStage),      SLOT(ownqvrsDFTLast)};
