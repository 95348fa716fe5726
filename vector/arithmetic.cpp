// Element-wise arithmetic on one or two arrays.
#include "vector/functions.h"
#include "vector/loops.h"

extern "C" {

qvrStatus SLOT(qvrsAdd_32f)(const qvr32f* pSrc1, const qvr32f* pSrc2, qvr32f* pDst, int len)
{
    return binary(pSrc1, pSrc2, pDst, len, [](auto a, auto b) { return a + b; });
}

qvrStatus SLOT(qvrsAdd_32f_I)(const qvr32f* pSrc, qvr32f* pSrcDst, int len)
{
    return binary(pSrc, pSrcDst, pSrcDst, len, [](auto a, auto b) { return b + a; });
}

qvrStatus SLOT(qvrsSub_32f)(const qvr32f* pSrc1, const qvr32f* pSrc2, qvr32f* pDst, int len)
{
    return binary(pSrc1, pSrc2, pDst, len, [](auto a, auto b) { return b - a; });
}

qvrStatus SLOT(qvrsSub_32f_I)(const qvr32f* pSrc, qvr32f* pSrcDst, int len)
{
    return binary(pSrc, pSrcDst, pSrcDst, len, [](auto a, auto b) { return b - a; });
}

qvrStatus SLOT(qvrsMul_32f)(const qvr32f* pSrc1, const qvr32f* pSrc2, qvr32f* pDst, int len)
{
    return binary(pSrc1, pSrc2, pDst, len, [](auto a, auto b) { return a * b; });
}

qvrStatus SLOT(qvrsMul_32f_I)(const qvr32f* pSrc, qvr32f* pSrcDst, int len)
{
    return binary(pSrc, pSrcDst, pSrcDst, len, [](auto a, auto b) { return b * a; });
}

qvrStatus SLOT(qvrsMul_64f_I)(const qvr64f* pSrc, qvr64f* pSrcDst, int len)
{
    return binary(pSrc, pSrcDst, pSrcDst, len, [](auto a, auto b) { return b * a; });
}

qvrStatus SLOT(qvrsAbs_32f)(const qvr32f* pSrc, qvr32f* pDst, int len)
{
    return unary(pSrc, pDst, len, [](auto x) { return abs(x); });
}

qvrStatus SLOT(qvrsAbs_32f_I)(qvr32f* pSrcDst, int len)
{
    return unary(pSrcDst, pSrcDst, len, [](auto x) { return abs(x); });
}

qvrStatus SLOT(qvrsSqr_32f_I)(qvr32f* pSrcDst, int len)
{
    return unary(pSrcDst, pSrcDst, len, [](auto x) { return x * x; });
}

qvrStatus SLOT(qvrsMinEvery_32f_I)(const qvr32f* pSrc, qvr32f* pSrcDst, int len)
{
    return binary(pSrc, pSrcDst, pSrcDst, len, [](auto a, auto b) { return min(a, b); });
}

qvrStatus SLOT(qvrsMaxEvery_32f_I)(const qvr32f* pSrc, qvr32f* pSrcDst, int len)
{
    return binary(pSrc, pSrcDst, pSrcDst, len, [](auto a, auto b) { return max(a, b); });
}

} // extern "C"
