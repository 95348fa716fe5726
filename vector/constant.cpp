// Element-wise arithmetic with a constant, and the shortcuts that change what NaN and infinity give.
#include "vector/functions.h"
#include "vector/loops.h"

extern "C" {

qvrStatus SLOT(qvrsAddC_32f)(const qvr32f* pSrc, qvr32f val, qvr32f* pDst, int len)
{
    if (const qvrStatus status = checkPointersThenLength(len, pSrc, pDst))
        return status;
    if (val == 0)
        return SLOT(qvrsCopy_32f)(pSrc, pDst, len);
    mapElements(pDst, len, [val](auto x) { return x + val; }, pSrc);
    return qvrOk;
}

qvrStatus SLOT(qvrsAddC_32f_I)(qvr32f val, qvr32f* pSrcDst, int len)
{
    if (const qvrStatus status = checkPointersThenLength(len, pSrcDst); status != qvrOk || val == 0)
        return status;
    mapElements(pSrcDst, len, [val](auto x) { return x + val; }, pSrcDst);
    return qvrOk;
}

qvrStatus SLOT(qvrsAddC_64f_I)(qvr64f val, qvr64f* pSrcDst, int len)
{
    if (const qvrStatus status = checkPointersThenLength(len, pSrcDst); status != qvrOk || val == 0)
        return status;
    mapElements(pSrcDst, len, [val](auto x) { return x + val; }, pSrcDst);
    return qvrOk;
}

qvrStatus SLOT(qvrsSubC_32f)(const qvr32f* pSrc, qvr32f val, qvr32f* pDst, int len)
{
    if (const qvrStatus status = checkPointersThenLength(len, pSrc, pDst))
        return status;
    if (val == 0)
        return SLOT(qvrsCopy_32f)(pSrc, pDst, len);
    mapElements(pDst, len, [val](auto x) { return x - val; }, pSrc);
    return qvrOk;
}

qvrStatus SLOT(qvrsSubC_32f_I)(qvr32f val, qvr32f* pSrcDst, int len)
{
    if (const qvrStatus status = checkPointersThenLength(len, pSrcDst); status != qvrOk || val == 0)
        return status;
    mapElements(pSrcDst, len, [val](auto x) { return x - val; }, pSrcDst);
    return qvrOk;
}

qvrStatus SLOT(qvrsSubCRev_32f)(const qvr32f* pSrc, qvr32f val, qvr32f* pDst, int len)
{
    return unary(pSrc, pDst, len, [val](auto x) { return val - x; });
}

qvrStatus SLOT(qvrsMulC_32f)(const qvr32f* pSrc, qvr32f val, qvr32f* pDst, int len)
{
    if (const qvrStatus status = checkPointersThenLength(len, pSrc, pDst))
        return status;
    if (val == 1)
        return SLOT(qvrsCopy_32f)(pSrc, pDst, len);
    if (val == 0)
        return SLOT(qvrsZero_32f)(pDst, len);
    mapElements(pDst, len, [val](auto x) { return x * val; }, pSrc);
    return qvrOk;
}

qvrStatus SLOT(qvrsMulC_32f_I)(qvr32f val, qvr32f* pSrcDst, int len)
{
    if (const qvrStatus status = checkPointersThenLength(len, pSrcDst); status != qvrOk || val == 1)
        return status;
    if (val == 0)
        return SLOT(qvrsZero_32f)(pSrcDst, len);
    mapElements(pSrcDst, len, [val](auto x) { return x * val; }, pSrcDst);
    return qvrOk;
}

qvrStatus SLOT(qvrsMulC_64f_I)(qvr64f val, qvr64f* pSrcDst, int len)
{
    if (const qvrStatus status = checkPointersThenLength(len, pSrcDst); status != qvrOk || val == 1)
        return status;
    if (val == 0)
        return SLOT(qvrsZero_64f)(pSrcDst, len);
    mapElements(pSrcDst, len, [val](auto x) { return x * val; }, pSrcDst);
    return qvrOk;
}

// A product with the reciprocal, which then meets the shortcuts of the product.
qvrStatus SLOT(qvrsDivC_32f)(const qvr32f* pSrc, qvr32f val, qvr32f* pDst, int len)
{
    if (const qvrStatus status = checkPointersThenLength(len, pSrc, pDst))
        return status;
    if (val == 0)
        return qvrErrDivByZero;
    return SLOT(qvrsMulC_32f)(pSrc, 1.0f / val, pDst, len);
}

qvrStatus SLOT(qvrsDivC_32f_I)(qvr32f val, qvr32f* pSrcDst, int len)
{
    if (const qvrStatus status = checkPointersThenLength(len, pSrcDst))
        return status;
    if (val == 0)
        return qvrErrDivByZero;
    return SLOT(qvrsMulC_32f_I)(1.0f / val, pSrcDst, len);
}

} // extern "C"
