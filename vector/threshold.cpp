// Limits on floats. Out of place, an element stays only if it is proved to lie on the right side, so a NaN, or a level
// that is one, brings the replacement; in place, an element goes only if it is proved to lie beyond.
#include "vector/functions.h"
#include "vector/loops.h"

extern "C" {

qvrStatus SLOT(qvrsThreshold_32f_I)(qvr32f* pSrcDst, int len, qvr32f level, int relOp)
{
    if (const qvrStatus status = checkPointersThenLength(len, pSrcDst))
        return status;
    if (relOp == qvrCmpLess)
        mapElements(pSrcDst, len, [=](auto x) { return max(splat<decltype(x)>(level), x); }, pSrcDst);
    else if (relOp == qvrCmpGreater)
        mapElements(pSrcDst, len, [=](auto x) { return min(splat<decltype(x)>(level), x); }, pSrcDst);
    else
        return qvrErrBadArgument;
    return qvrOk;
}

qvrStatus SLOT(qvrsThreshold_GTVal_32f)(const qvr32f* pSrc, qvr32f* pDst, int len, qvr32f level, qvr32f value)
{
    return unary(pSrc, pDst, len, [=](auto x) {
        using V = decltype(x);
        return splat<V>(level) >= x ? x : splat<V>(value);
    });
}

qvrStatus SLOT(qvrsThreshold_GTVal_32f_I)(qvr32f* pSrcDst, int len, qvr32f level, qvr32f value)
{
    return unary(pSrcDst, pSrcDst, len, [=](auto x) {
        using V = decltype(x);
        return x > splat<V>(level) ? splat<V>(value) : x;
    });
}

qvrStatus SLOT(qvrsThreshold_LTVal_32f)(const qvr32f* pSrc, qvr32f* pDst, int len, qvr32f level, qvr32f value)
{
    return unary(pSrc, pDst, len, [=](auto x) {
        using V = decltype(x);
        return x >= splat<V>(level) ? x : splat<V>(value);
    });
}

qvrStatus SLOT(qvrsThreshold_LTVal_32f_I)(qvr32f* pSrcDst, int len, qvr32f level, qvr32f value)
{
    return unary(pSrcDst, pSrcDst, len, [=](auto x) {
        using V = decltype(x);
        return splat<V>(level) > x ? splat<V>(value) : x;
    });
}

} // extern "C"
