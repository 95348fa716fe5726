// Execution of the transforms of any length. An inverse transform is the forward one of conjugated values, conjugated.
#include "fourier/functions.h"
#include "fourier/generic/dft.h"
#include "fourier/real/kernel_table.h"
#include "frame/arena.h"
#include "frame/status.h"

namespace {

using F = Full<float>;
constexpr int W = kLanes<float>;
using S = Vec<float, 1>;

// How the values of one call are multiplied, and the sign of imaginary parts turned, on the way out.
struct Out {
    float factor;
    uint32_t sign;

    template<class V> QVR_INLINE Cx<V> operator()(Cx<V> z) const
    {
        return {z.re * splat<V>(factor), z.im * splat<V>(sign != 0 ? -factor : factor)};
    }
};
template<class V> QVR_INLINE Cx<V> flipped(Cx<V> z, uint32_t sign)
{
    return {z.re, bitcast<V>(bits(z.im) ^ splat<Bits<V>>(sign))};
}

QVR_INLINE Cx<S> loadPoint(const float* p, Index i)
{
    return {load<S>(p + 2 * i), load<S>(p + 2 * i + 1)};
}
QVR_INLINE void storePoint(float* p, Index i, Cx<S> z)
{
    store(p + 2 * i, z.re);
    store(p + 2 * i + 1, z.im);
}

// op on n points, in vectors and then one by one: op(load(p), ...) to dst.
template<class Op> QVR_INLINE void eachPoint(Index n, float* dst, const Op& op, const float* a, const float* b)
{
    Index i = 0;
    for (; i + W <= n; i += W)
        storePairs(dst + 2 * i, op(loadPairs<F>(a + 2 * i), loadPairs<F>(b + 2 * i)));
    for (; i < n; i++)
        storePoint(dst, i, op(loadPoint(a, i), loadPoint(b, i)));
}

// ---- Mixed radix ----------------------------------------------------------------------------------------------------

// The four arrays that stages run between.
struct Planes {
    float *re, *im, *otherRe, *otherIm;

    Planes(const qvrsDFTSpec& spec, float* work)
    {
        const Index size = Index{spec.points / spec.stages[0].radix} * spec.pitch;
        re = work;
        im = re + size;
        otherRe = im + size;
        otherIm = otherRe + size;
    }
    void swap()
    {
        float *r = re, *i = im;
        re = otherRe;
        im = otherIm;
        otherRe = r;
        otherIm = i;
    }
};

// Stages from the second on, the last `leave` of them left out; returns the values in a row.
Index middleStages(const qvrsDFTSpec& spec, Planes& planes, int leave)
{
    Index left = spec.points / spec.stages[0].radix, row = spec.pitch;
    for (int i = 1; i < spec.stageCount - leave; i++) {
        const DftStage& stage = spec.stages[i];
        dftKernels().stage(&stage, left, row, planes.re, planes.im, planes.otherRe, planes.otherIm);
        planes.swap();
        left /= stage.radix;
        row *= stage.radix;
    }
    return row;
}

void mixedRadix(const qvrsDFTSpec& spec, const float* src, float* dst, float* work, Out out)
{
    Planes planes(spec, work);
    dftKernels().first(&spec, src, out.sign, planes.re, planes.im);
    const Index row = middleStages(spec, planes, 1);
    dftKernels().last(&spec, &spec.stages[spec.stageCount - 1], row, planes.re, planes.im, dst, out.factor, out.sign);
}

// Bins first .. first + count - 1 from the values at (re, im).
QVR_INLINE void storeBins(float* dst, Index first, Index count, const float* re, const float* im, Out out)
{
    Index i = 0;
    for (; i + W <= count; i += W) {
        const Cx<F> z = out(Cx<F>{load<F>(re + i), load<F>(im + i)});
        store(dst + 2 * (first + i), zipLo(z.re, z.im));
        store(dst + 2 * (first + i) + W, zipHi(z.re, z.im));
    }
    for (; i < count; i++)
        storePoint(dst, first + i, out(Cx<S>{load<S>(re + i), load<S>(im + i)}));
}
// Bins last, last - 1, ..., conjugated.
QVR_INLINE void storeMirrored(float* dst, Index last, Index count, const float* re, const float* im, Out out)
{
    Index i = 0;
    for (; i + W <= count; i += W) {
        const Cx<F> z = out(Cx<F>{reversedLanes(load<F>(re + i)), -reversedLanes(load<F>(im + i))});
        float* p = dst + 2 * (last - i - W + 1);
        store(p, zipLo(z.re, z.im));
        store(p + W, zipHi(z.re, z.im));
    }
    for (; i < count; i++)
        storePoint(dst, last - i, out(Cx<S>{load<S>(re + i), -load<S>(im + i)}));
}

// Column c of row t is bin c + R t; bins above the middle are conjugates of n minus theirs.
void mixedRadixReal(const qvrsDFTSpec& spec, const float* src, float* dst, float* work, Out out)
{
    Planes planes(spec, work);
    dftKernels().firstReal(&spec, src, planes.re, planes.im);
    middleStages(spec, planes, 0);
    const Index n = spec.points, R = spec.stages[0].radix, columns = spec.columns, middle = (n - 1) / 2;
    for (Index t = 0; t < n / R; t++) {
        const Index first = R * t;
        const float *re = planes.re + t * spec.pitch, *im = planes.im + t * spec.pitch;
        const Index below = first > middle ? 0 : middle - first + 1 < columns ? middle - first + 1 : columns;
        storeBins(dst, first, below, re, im, out);
        storeMirrored(dst, n - first - below, columns - below, re + below, im + below, out);
    }
    put(dst, 1, 0.0f);
}

// ---- Sums of all terms ----------------------------------------------------------------------------------------------

// With a[j] = x[j] + x[n - j], b[j] = x[j] - x[n - j]: c[k] = sum of a cos, d[k] = sum of b sin,
// X[k] = x[0] + c - i d, X[n - k] = x[0] + c + i d.
void directSums(const qvrsDFTSpec& spec, const float* src, float* dst, float* work, Out out)
{
    const int n = spec.points, h = (n - 1) / 2, pitch = qvrAlignUp(h, W);
    Cx<S> a[kDirectMostOddReal / 2], b[kDirectMostOddReal / 2];
    const Cx<S> x0 = flipped(loadPoint(src, 0), out.sign);
    Cx<S> sum = x0;
    for (int j = 0; j < h; j++) {
        const Cx<S> x = flipped(loadPoint(src, j + 1), out.sign), y = flipped(loadPoint(src, n - 1 - j), out.sign);
        a[j] = x + y;
        b[j] = x - y;
        sum = sum + a[j];
    }
    storePoint(work, 0, out(sum));
    for (int k = 0; k < h; k += W) {
        Cx<F> c = {splat<F>(x0.re[0]), splat<F>(x0.im[0])}, d = {};
        const float* table = spec.pDirectTable + k;
        for (int j = 0; j < h; j++, table += 2 * pitch) {
            const F cosine = load<F>(table), sine = load<F>(table + pitch);
            c = {fma(splat<F>(a[j].re[0]), cosine, c.re), fma(splat<F>(a[j].im[0]), cosine, c.im)};
            d = {fma(splat<F>(b[j].re[0]), sine, d.re), fma(splat<F>(b[j].im[0]), sine, d.im)};
        }
        const Cx<F> low = out(minusI(c, d)), high = out(plusI(c, d));
        for (int l = 0; l < W && k + l < h; l++) {
            storePoint(work, k + l + 1, {S{low.re[l]}, S{low.im[l]}});
            storePoint(work, n - 1 - k - l, {S{high.re[l]}, S{high.im[l]}});
        }
    }
    __builtin_memcpy(static_cast<void*>(dst), work, static_cast<size_t>(n) * 8);
}

void directSumsReal(const qvrsDFTSpec& spec, const float* src, float* dst, Out out)
{
    const int n = spec.points, h = (n - 1) / 2, pitch = qvrAlignUp(h, W);
    float a[kDirectMostOddReal / 2], b[kDirectMostOddReal / 2];
    const float x0 = get(src, 0);
    float sum = x0;
    for (int j = 0; j < h; j++) {
        const float x = get(src, j + 1), y = get(src, n - 1 - j);
        a[j] = x + y;
        b[j] = x - y;
        sum += a[j];
    }
    storePoint(dst, 0, {S{sum * out.factor}, S{}});
    for (int k = 0; k < h; k += W) {
        F c = splat<F>(x0), d = {};
        const float* table = spec.pDirectTable + k;
        for (int j = 0; j < h; j++, table += 2 * pitch) {
            c = fma(splat<F>(a[j]), load<F>(table), c);
            d = fma(splat<F>(b[j]), load<F>(table + pitch), d);
        }
        const Cx<F> z = out(Cx<F>{c, -d});
        for (int l = 0; l < W && k + l < h; l++)
            storePoint(dst, k + l + 1, {S{z.re[l]}, S{z.im[l]}});
    }
}

// ---- Chirp ----------------------------------------------------------------------------------------------------------

// With w = exp(-pi i / n): X[k] = w^kk * sum over j of (x[j] w^jj) w^-(k-j)(k-j). The spectrum of w^-jj is in the
// object, with the inner transforms' divisor.
qvrStatus chirpConvolution(const qvrsDFTSpec& spec, float* z, uint8_t* buffer)
{
    const Index length = spec.pInnerDFT->len;
    __builtin_memset(z + 2 * Index{spec.points}, 0, static_cast<size_t>(length - spec.points) * 8);
    if (const qvrStatus status = SLOT(ownqvrsDFTFwd_CToC_32fc)(z, z, spec.pInnerDFT, buffer))
        return status;
    eachPoint(length, z, [](auto x, auto y) { return x * y; }, z, spec.pChirpSpectrum);
    return SLOT(ownqvrsDFTInv_CToC_32fc)(z, z, spec.pInnerDFT, buffer);
}

qvrStatus chirpForm(const qvrsDFTSpec& spec, const float* src, float* dst, float* work, Out out)
{
    eachPoint(spec.points, work, [&](auto x, auto w) { return flipped(x, out.sign) * w; }, src, spec.pChirp);
    if (const qvrStatus status =
            chirpConvolution(spec, work, reinterpret_cast<uint8_t*>(work + 2 * Index{spec.pInnerDFT->len})))
        return status;
    eachPoint(spec.points, dst, [&](auto x, auto w) { return out(x * w); }, work, spec.pChirp);
    return qvrOk;
}

qvrStatus chirpFormReal(const qvrsDFTSpec& spec, const float* src, float* dst, float* work, Out out)
{
    Index i = 0;
    for (; i + W <= spec.points; i += W) {
        const F x = load<F>(src + i), low = zipLo(x, x), high = zipHi(x, x);
        store(work + 2 * i, low * load<F>(spec.pChirp + 2 * i));
        store(work + 2 * i + W, high * load<F>(spec.pChirp + 2 * i + W));
    }
    for (; i < spec.points; i++) {
        const S x = load<S>(src + i);
        const Cx<S> w = loadPoint(spec.pChirp, i);
        storePoint(work, i, {x * w.re, x * w.im});
    }
    if (const qvrStatus status =
            chirpConvolution(spec, work, reinterpret_cast<uint8_t*>(work + 2 * Index{spec.pInnerDFT->len})))
        return status;
    eachPoint((spec.points + 1) / 2, dst, [&](auto x, auto w) { return out(x * w); }, work, spec.pChirp);
    put(dst, 1, 0.0f);
    return qvrOk;
}

// ---- Whole transforms -----------------------------------------------------------------------------------------------

qvrStatus complexForm(const qvrsDFTSpec& spec, const float* src, float* dst, float* work, Out out)
{
    if (spec.points <= kStraightMost)
        dftKernels().straight(src, dst, spec.points, out.factor, out.sign);
    else if (spec.isFactored != 0)
        mixedRadix(spec, src, dst, work, out);
    else if (spec.pDirectTable != nullptr)
        directSums(spec, src, dst, work, out);
    else
        return chirpForm(spec, src, dst, work, out);
    return qvrOk;
}

// The spectrum of half the length in dst to that of the real values times a factor, in place.
void recombineAny(float* dst, Index half, const float* table, float factor)
{
    const Cx<S> first = loadPoint(dst, 0);
    const Index count = (half - 1) / 2;
    float *const a = dst + 2, *const b = dst + 2 * (half - count);
    RecombineCall<float> call = {a, b, a, b, 1, count, table, 0, 0.5f * factor};
    fftKernels<float>().recombine[0][0](call);
    if (half % 2 == 0) {
        put(dst, half, get(dst, half) * factor);
        put(dst, half + 1, -get(dst, half + 1) * factor);
    }
    storePoint(dst, 0, {(first.re + first.im) * factor, S{}});
    storePoint(dst, half, {(first.re - first.im) * factor, S{}});
}

// Work memory of one call, the caller's or our own.
template<class Body> qvrStatus withWork(const qvrsDFTSpec& spec, uint8_t* pBuffer, const Body& body)
{
    uint8_t* own = nullptr;
    if (pBuffer == nullptr && spec.workSize > 0) {
        own = pBuffer = allocate<uint8_t>(spec.workSize);
        if (own == nullptr)
            return qvrErrNoMemory;
    }
    const qvrStatus status = body(alignLine<float>(pBuffer));
    release(own);
    return status;
}

qvrStatus check(const qvrsDFTSpec* pSpec, int tag, const float* pSrc, const float* pDst)
{
    if (const qvrStatus status = checkState(pSpec, static_cast<uint32_t>(tag)))
        return status;
    return anyNull(pSrc, pDst) ? qvrErrNullPointer : qvrOk;
}

qvrStatus complexTransform(const float* pSrc, float* pDst, const qvrsDFTSpec* pSpec, uint8_t* pBuffer, bool inverse)
{
    if (const qvrStatus status = check(pSpec, kTagDftComplex, pSrc, pDst))
        return status;
    const bool scale = inverse ? pSpec->doInvScale != 0 : pSpec->doFwdScale != 0;
    const Out out = {scale ? pSpec->normFactor : 1.0f, inverse ? 0x80000000u : 0u};
    return withWork(*pSpec, pBuffer, [&](float* work) {
        if (pSpec->isPow2 != 0)
            return SLOT(ownqvrsFFTComplex_32f)(pSrc, pDst, pSpec->pPow2Spec, reinterpret_cast<uint8_t*>(work), inverse,
                                               out.factor);
        return complexForm(*pSpec, pSrc, pDst, work, out);
    });
}

} // namespace

extern "C" {

qvrStatus SLOT(ownqvrsDFTFwd_CToC_32fc)(const float* pSrc, float* pDst, const qvrsDFTSpec_C_32fc* pSpec,
                                        uint8_t* pBuffer)
{
    return complexTransform(pSrc, pDst, pSpec, pBuffer, false);
}
qvrStatus SLOT(ownqvrsDFTInv_CToC_32fc)(const float* pSrc, float* pDst, const qvrsDFTSpec_C_32fc* pSpec,
                                        uint8_t* pBuffer)
{
    return complexTransform(pSrc, pDst, pSpec, pBuffer, true);
}

qvrStatus SLOT(ownqvrsDFTFwd_RToCCS_32f)(const float* pSrc, float* pDst, const qvrsDFTSpec_R_32f* pSpec,
                                         uint8_t* pBuffer)
{
    if (const qvrStatus status = check(pSpec, kTagDftReal, pSrc, pDst))
        return status;
    const qvrsDFTSpec& spec = *pSpec;
    const Out out = {spec.doFwdScale != 0 ? spec.normFactor : 1.0f, 0};
    return withWork(spec, pBuffer, [&](float* work) -> qvrStatus {
        if (spec.isPow2 != 0)
            return SLOT(qvrsFFTFwd_RToCCS_32f)(pSrc, pDst, spec.pPow2Spec, reinterpret_cast<uint8_t*>(work));
        if (spec.len <= kStraightMost) {
            dftKernels().straightReal(pSrc, pDst, spec.len, out.factor);
        } else if (spec.odd == 0) {
            if (const qvrStatus status = complexForm(spec, pSrc, pDst, work, {1.0f, out.sign}))
                return status;
            recombineAny(pDst, spec.points, spec.pRecombInv, out.factor);
        } else if (spec.isFactored != 0) {
            mixedRadixReal(spec, pSrc, pDst, work, out);
        } else if (spec.pDirectTable != nullptr) {
            directSumsReal(spec, pSrc, pDst, out);
        } else {
            return chirpFormReal(spec, pSrc, pDst, work, out);
        }
        return qvrOk;
    });
}

} // extern "C"
