// Division and square root: the functions with a warning, and with a parallel region in the slots from u8 up.
//
// Elements that must not reach the instruction (zero divisors, roots of negatives) are replaced by harmless ones
// before it, so no exception flag is raised on their account, and by their substitute after it.
#include "frame/region.h"
#include "vector/functions.h"
#include "vector/loops.h"

namespace {

constexpr bool kHasRegion = kSlot >= qvrSlot_u8;
constexpr int kRegionFrom = 4096;

constexpr uint32_t kNan = 0xFFC00000;
constexpr uint32_t kInfinity = 0x7F800000;
constexpr uint32_t kSign = 0x80000000;

// What a zero divisor makes of the dividend n: an infinity of its sign, or the NaN for zero and NaN.
template<class V> QVR_INLINE V overZero(V n)
{
    using U = Bits<V>;
    const U infinity = (bits(n) & kSign) | kInfinity;
    return bitcast<V>(bitcast<U>(n != V{} & n == n) ? infinity : splat<U>(kNan));
}

// A vector with a zero among its divisors: 1 is divided by in its place, although the quotient is discarded.
template<class V> __attribute__((noinline)) V quotientWithZeros(V n, V d)
{
    const Mask<V> zero = isZero(d);
    return zero ? overZero(n) : n / opaque(zero ? splat<V>(1) : d);
}

template<class V> QVR_INLINE V quotient(V n, V d, int& flagged)
{
    if (__builtin_expect(anyTrue(isZero(d)) != 0, 0)) {
        flagged = 1;
        return quotientWithZeros(n, d);
    }
    return n / d;
}

__attribute__((noinline)) int divide(const float* divisors, const float* dividends, float* dst, Index n)
{
    int flagged = 0;
    mapElements(dst, n, [&](auto d, auto x) { return quotient(x, d, flagged); }, divisors, dividends);
    return flagged;
}

__attribute__((noinline)) int divideConstant(const float* src, float val, float* dst, Index n)
{
    int flagged = 0;
    // A zero constant counts as +0 whatever its sign.
    const float dividend = val == 0 ? 0.0f : val;
    mapElements(dst, n, [&](auto s) { return quotient(splat<decltype(s)>(dividend), s, flagged); }, src);
    return flagged;
}

// sqrt(x), with 0 in place of what has no root.
template<class V> __attribute__((noinline)) V rootWithNegatives(V x)
{
    const Mask<V> ok = x >= V{};
    return ok ? sqrt(opaque(ok ? x : V{})) : bitcast<V>(splat<Bits<V>>(kNan));
}

template<class V> QVR_INLINE V root(V x, int& flagged)
{
    if (__builtin_expect(anyTrue(~(x >= V{})) != 0, 0)) {
        flagged = 1;
        return rootWithNegatives(x);
    }
    return sqrt(x);
}

__attribute__((noinline)) int squareRoot(const float* src, float* dst, Index n)
{
    int flagged = 0;
    mapElements(dst, n, [&](auto x) { return root(x, flagged); }, src);
    return flagged;
}

int ownqvrsDiv_32f_omp(const float* divisors, const float* dividends, float* dst, int len)
{
    return parallelElements(
        len, [=](Index start, Index n) { return divide(divisors + start, dividends + start, dst + start, n); });
}

int ownqvrsDivCRev_32f_omp(const float* src, float val, float* dst, int len)
{
    return parallelElements(len,
                            [=](Index start, Index n) { return divideConstant(src + start, val, dst + start, n); });
}

int ownqvrsSqrt_32f_omp(const float* src, float* dst, int len)
{
    return parallelElements(len, [=](Index start, Index n) { return squareRoot(src + start, dst + start, n); });
}

} // namespace

extern "C" {

qvrStatus SLOT(qvrsDiv_32f)(const qvr32f* pSrc1, const qvr32f* pSrc2, qvr32f* pDst, int len)
{
    if (const qvrStatus status = checkPointersThenLength(len, pSrc1, pSrc2, pDst))
        return status;
    const int flagged = kHasRegion && len >= kRegionFrom ? ownqvrsDiv_32f_omp(pSrc1, pSrc2, pDst, len)
                                                         : divide(pSrc1, pSrc2, pDst, len);
    return flagged ? qvrWarnDivByZero : qvrOk;
}

qvrStatus SLOT(qvrsDivCRev_32f)(const qvr32f* pSrc, qvr32f val, qvr32f* pDst, int len)
{
    if (const qvrStatus status = checkPointersThenLength(len, pSrc, pDst))
        return status;
    const int flagged = kHasRegion && len >= kRegionFrom ? ownqvrsDivCRev_32f_omp(pSrc, val, pDst, len)
                                                         : divideConstant(pSrc, val, pDst, len);
    return flagged ? qvrWarnDivByZero : qvrOk;
}

qvrStatus SLOT(qvrsDivCRev_32f_I)(qvr32f val, qvr32f* pSrcDst, int len)
{
    if (const qvrStatus status = checkPointersThenLength(len, pSrcDst))
        return status;
    return SLOT(qvrsDivCRev_32f)(pSrcDst, val, pSrcDst, len);
}

qvrStatus SLOT(qvrsSqrt_32f)(const qvr32f* pSrc, qvr32f* pDst, int len)
{
    if (const qvrStatus status = checkPointersThenLength(len, pSrc, pDst))
        return status;
    const int flagged =
        kHasRegion && len >= kRegionFrom ? ownqvrsSqrt_32f_omp(pSrc, pDst, len) : squareRoot(pSrc, pDst, len);
    return flagged ? qvrWarnNegativeInput : qvrOk;
}

} // extern "C"
