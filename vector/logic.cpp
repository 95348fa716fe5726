// Bit operations, shifts and replacement on 16-bit arrays.
//
// A constant that makes the result trivial is looked at first; what it leads to, a fill or a copy, makes the checks. A
// negative shift is judged last.
#include "vector/functions.h"
#include "vector/halfwords.h"
#include "vector/loops.h"

namespace {

constexpr int kWidth = 16;

// In place: a count of 16 or more leaves nothing, 0 everything.
template<class Op> QVR_INLINE qvrStatus shiftInPlace(int val, qvr16u* pSrcDst, int len, Op&& op)
{
    if (val >= kWidth)
        return SLOT(ownZero_16u)(pSrcDst, len);
    if (const qvrStatus status = checkPointersThenLength(len, pSrcDst); status != qvrOk || val == 0)
        return status;
    if (val < 0)
        return qvrErrBadShift;
    mapElements(pSrcDst, len, op, pSrcDst);
    return qvrOk;
}

} // namespace

extern "C" {

qvrStatus SLOT(qvrsAndC_16u)(const qvr16u* pSrc, qvr16u val, qvr16u* pDst, int len)
{
    if (val == 0)
        return pSrc == nullptr ? qvrErrNullPointer : SLOT(ownZero_16u)(pDst, len);
    return unary(pSrc, pDst, len, [=](auto x) { return x & val; });
}

qvrStatus SLOT(qvrsAndC_16u_I)(qvr16u val, qvr16u* pSrcDst, int len)
{
    if (val == 0)
        return SLOT(ownZero_16u)(pSrcDst, len);
    return unary(pSrcDst, pSrcDst, len, [=](auto x) { return x & val; });
}

qvrStatus SLOT(qvrsOr_16u_I)(const qvr16u* pSrc, qvr16u* pSrcDst, int len)
{
    return binary(pSrc, pSrcDst, pSrcDst, len, [](auto a, auto b) { return b | a; });
}

qvrStatus SLOT(qvrsLShiftC_16u)(const qvr16u* pSrc, int val, qvr16u* pDst, int len)
{
    if (val == 0)
        return SLOT(ownCopy_16u)(pSrc, pDst, len);
    if (val >= kWidth)
        return pSrc == nullptr ? qvrErrNullPointer : SLOT(ownZero_16u)(pDst, len);
    if (const qvrStatus status = checkPointersThenLength(len, pSrc, pDst))
        return status;
    if (val < 0)
        return qvrErrBadShift;
    mapElements(pDst, len, [=](auto x) { return shiftLeft(x, val); }, pSrc);
    return qvrOk;
}

qvrStatus SLOT(qvrsLShiftC_16u_I)(int val, qvr16u* pSrcDst, int len)
{
    return shiftInPlace(val, pSrcDst, len, [=](auto x) { return shiftLeft(x, val); });
}

qvrStatus SLOT(qvrsRShiftC_16u_I)(int val, qvr16u* pSrcDst, int len)
{
    return shiftInPlace(val, pSrcDst, len, [=](auto x) { return shiftRight(x, val); });
}

qvrStatus SLOT(qvrsReplaceC_16u)(const qvr16u* pSrc, qvr16u* pDst, int len, qvr16u oldVal, qvr16u newVal)
{
    if (anyNull(pSrc, pDst))
        return qvrErrNullPointer;
    if (len < 0)
        return qvrErrBadCount;
    mapElements(
        pDst, len,
        [=](auto x) {
            using V = decltype(x);
            return x == splat<V>(oldVal) ? splat<V>(newVal) : x;
        },
        pSrc);
    return qvrOk;
}

} // extern "C"
