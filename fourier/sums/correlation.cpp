// Cross-correlation and autocorrelation by plain sums, by one product of spectra, or block by block.
//
// Numbered from the first overlap, result m of a pair (A, B) is the sum of A[k] B[k + m - (lenA - 1)]. With A the
// shorter source, a block takes F values of B from m - (lenA - 1) on; the product of its spectrum with the conjugate of
// that of A gives P = F - lenA + 1 results from m on. Where A is the second source the results run backwards: result m
// of (A, B) is result lenA + lenB - 2 - m of (B, A).
#include "fourier/functions.h"
#include "fourier/real/spectra.h"
#include "fourier/sums/direct.h"
#include "fourier/sums/transforms.h"
#include "frame/status.h"

namespace {

// Plain sums while shorter * results / longer is below this.
constexpr float kDirectBelow = 384;
// Autocorrelation: plain sums while the number of results is below this.
constexpr Index kAutoDirect = PerSlot<Index>{600, 856, 856, 856, 856, 856, 1200}.here();

// Up to this many shifts the terms go into the lanes, if there are enough of them.
constexpr Index kFewShifts = kLanes<float>;

// The sums at `count` shifts from `lag` on, all inside the overlap.
void plainSums(const float* a, Index lenA, const float* b, Index lenB, Index lag, float* dst, Index count)
{
    if (count > kFewShifts || lenA < 4 * kLanes<float>)
        return shiftSums<1, kCorrelationChunk>(a, lenA, b, lenB, lag, dst, count);
    for (Index n = 0; n < count;) {
        const Index shift = lag + n, first = greatest(0, -shift), end = least(lenA, lenB - shift);
        if (count - n >= 4 && shift >= 0 && shift + 3 + lenA <= lenB) {
            dotProducts<4>(a, b + shift, lenA, dst + n);
            n += 4;
        } else {
            dotProducts<1>(a + first, b + shift + first, end - first, dst + n);
            n++;
        }
    }
}

// y := x conj(y) on packed spectra of F values, F even.
void multiplyConjugate(const float* x, float* y, Index F)
{
    multiplyOne(x, y, 0);
    multiplyOne(x, y, 1);
    multiplyPairs<true>(x + 2, y + 2, F / 2 - 1);
}

// dst[n] for the numbers first .. first + count - 1, by one transform of all.
qvrStatus correlateOnce(const float* a, Index lenA, const float* b, Index lenB, Index first, float* dst, Index count)
{
    Transform t;
    if (const qvrStatus status = makeTransform(orderFor(lenA + lenB - 1, 1), 2, t))
        return status;
    const Index F = t.points;
    float* memory = allocateFloats(2 * F + t.workFloats);
    if (memory == nullptr)
        return endTransform(t, nullptr, qvrErrNoMemory);
    float *x = memory, *y = memory + F;
    uint8_t* work = t.workFloats > 0 ? reinterpret_cast<uint8_t*>(memory + 2 * F) : nullptr;
    copyPadded(a, lenA, x, F);
    setZero(y, lenA - 1);
    copyPadded(b, lenB, y + lenA - 1, F - (lenA - 1));
    qvrStatus status = SLOT(ownqvrsFFTFwd_RToPacked_32f)(x, x, t.spec, work);
    if (status == qvrOk)
        status = SLOT(ownqvrsFFTFwd_RToPacked_32f)(y, y, t.spec, work);
    if (status == qvrOk)
        multiplyConjugate(y, x, F);
    if (status == qvrOk)
        status = SLOT(ownqvrsFFTInv_PackedToR_32f)(x, x, t.spec, work);
    if (status == qvrOk)
        copyValues(x + first, dst, count);
    return endTransform(t, memory, status);
}

// The same, block by block; a is the shorter source.
qvrStatus correlateBlocks(const float* a, Index lenA, const float* b, Index lenB, Index first, float* dst, Index count)
{
    Transform t;
    if (const qvrStatus status = makeTransform(orderFor(2 * lenA, 1) + 1, 3, t))
        return status;
    const Index F = t.points, step = F - lenA + 1;
    float* memory = allocateFloats(3 * F + t.workFloats);
    if (memory == nullptr)
        return endTransform(t, nullptr, qvrErrNoMemory);
    float *const spectrum = memory, *const x = memory + F, *const block = memory + 2 * F;
    uint8_t* work = t.workFloats > 0 ? reinterpret_cast<uint8_t*>(memory + 3 * F) : nullptr;
    copyPadded(a, lenA, spectrum, F);
    qvrStatus status = SLOT(ownqvrsFFTFwd_RToPacked_32f)(spectrum, spectrum, t.spec, work);
    for (Index n = 0; n < count && status == qvrOk; n += step) {
        // Element `from` of b may lie before or behind it.
        const Index from = first + n - (lenA - 1), head = greatest(0, -from);
        const Index there = greatest(0, least(lenB - from - head, F - head));
        setZero(block, head);
        copyPadded(b + (there > 0 ? from + head : 0), there, block + head, F - head);
        status = SLOT(ownqvrsFFTFwd_RToPacked_32f)(block, block, t.spec, work);
        copyValues(spectrum, x, F);
        if (status == qvrOk)
            multiplyConjugate(block, x, F);
        if (status == qvrOk)
            status = SLOT(ownqvrsFFTInv_PackedToR_32f)(x, x, t.spec, work);
        if (status == qvrOk)
            copyValues(x, dst + n, least(count - n, step));
    }
    return endTransform(t, memory, status);
}

void reverse(float* x, Index n)
{
    using F = Full<float>;
    constexpr int W = kLanes<float>;
    Index i = 0, j = n - W;
    for (; j - i >= W; i += W, j -= W) {
        const F low = load<F>(x + i), high = load<F>(x + j);
        store(x + i, reversedLanes(high));
        store(x + j, reversedLanes(low));
    }
    for (j += W - 1; i < j; i++, j--) {
        const float low = get(x, i);
        put(x, i, get(x, j));
        put(x, j, low);
    }
}

} // namespace

extern "C" qvrStatus SLOT(qvrsCrossCorr_32f)(const qvr32f* pSrc1, int len1, const qvr32f* pSrc2, int len2, qvr32f* pDst,
                                             int dstLen, int lowLag)
{
    if (const qvrStatus status = checkPointersThenLength(len1, pSrc1, pSrc2, pDst))
        return status;
    if (len2 < 1 || dstLen < 1)
        return qvrErrBadSize;
    // Of the wanted lags, `before` lie below the overlap and those from `end` on above it.
    const Index lag = greatest(lowLag, Index{1} - len1);
    const Index before = least(lag - lowLag, dstLen);
    const Index end = greatest(before, least(dstLen, Index{len2} - lowLag)), count = end - before;
    qvrStatus status = qvrOk;
    if (count > 0) {
        float* const dst = pDst + before;
        const bool swapped = len1 > len2;
        const Index a = swapped ? len2 : len1, b = swapped ? len1 : len2, all = Index{len1} + len2 - 1;
        const float estimate = static_cast<float>(a) * static_cast<float>(count) / static_cast<float>(b);
        // The number of the first result, for (shorter, longer).
        const Index m = lag + len1 - 1, first = swapped ? all - count - m : m;
        if (estimate < kDirectBelow) {
            plainSums(pSrc1, len1, pSrc2, len2, lag, dst, count);
        } else if (b >= 3 * a && first <= a) {
            status = swapped ? correlateBlocks(pSrc2, len2, pSrc1, len1, first, dst, count)
                             : correlateBlocks(pSrc1, len1, pSrc2, len2, first, dst, count);
            if (swapped && status == qvrOk)
                reverse(dst, count);
        } else {
            status = correlateOnce(pSrc1, len1, pSrc2, len2, m, dst, count);
        }
    }
    if (status == qvrOk) {
        setZero(pDst, before);
        setZero(pDst + end, dstLen - end);
    }
    return status;
}

extern "C" qvrStatus SLOT(qvrsAutoCorr_32f)(const qvr32f* pSrc, int srcLen, qvr32f* pDst, int dstLen)
{
    if (const qvrStatus status = checkPointersThenLength(srcLen, pSrc, pDst))
        return status;
    if (dstLen < 1)
        return qvrErrBadSize;
    const Index count = least(srcLen, dstLen);
    if (count < kAutoDirect) {
        plainSums(pSrc, srcLen, pSrc, srcLen, 0, pDst, count);
    } else {
        Transform t;
        if (const qvrStatus status = makeTransform(orderFor(Index{2} * srcLen, 1), 1, t))
            return status;
        const Index F = t.points;
        float* x = allocateFloats(F + t.workFloats);
        if (x == nullptr)
            return endTransform(t, nullptr, qvrErrNoMemory);
        uint8_t* work = t.workFloats > 0 ? reinterpret_cast<uint8_t*>(x + F) : nullptr;
        copyPadded(pSrc, srcLen, x, F);
        qvrStatus status = SLOT(ownqvrsFFTFwd_RToPacked_32f)(x, x, t.spec, work);
        if (status == qvrOk)
            multiplyConjugate(x, x, F);
        if (status == qvrOk)
            status = SLOT(ownqvrsFFTInv_PackedToR_32f)(x, x, t.spec, work);
        if (status == qvrOk)
            copyValues(x, pDst, count);
        endTransform(t, x, status);
        if (status != qvrOk)
            return status;
    }
    setZero(pDst + count, dstLen - count);
    return qvrOk;
}
