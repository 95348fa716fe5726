// (x - vSub) * (1 / vDiv), with the reciprocal rounded once.
#include "vector/functions.h"
#include "vector/loops.h"

namespace {

// A NaN divisor runs: the comparison does not hold for it.
template<class T> QVR_INLINE qvrStatus normalize(const T* pSrc, T* pDst, int len, T vSub, T vDiv, T smallestNormal)
{
    if (const qvrStatus status = checkPointersThenLength(len, pSrc, pDst))
        return status;
    if ((vDiv < 0 ? -vDiv : vDiv) < smallestNormal)
        return qvrErrDivByZero;
    const T factor = T{1} / vDiv;
    mapElements(pDst, len, [=](auto x) { return (x - vSub) * factor; }, pSrc);
    return qvrOk;
}

} // namespace

extern "C" qvrStatus SLOT(qvrsNormalize_32f)(const qvr32f* pSrc, qvr32f* pDst, int len, qvr32f vSub, qvr32f vDiv)
{
    return normalize(pSrc, pDst, len, vSub, vDiv, 1.1754944e-38f);
}

extern "C" qvrStatus SLOT(qvrsNormalize_64f)(const qvr64f* pSrc, qvr64f* pDst, int len, qvr64f vSub, qvr64f vDiv)
{
    return normalize(pSrc, pDst, len, vSub, vDiv, 2.2250738585072014e-308);
}
