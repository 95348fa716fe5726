#include "vector/fill.h"
#include "vector/functions.h"

extern "C" qvrStatus SLOT(qvrsZero_32f)(qvr32f* pDst, int len)
{
    if (const qvrStatus status = checkPointersThenLength(len, pDst))
        return status;
    fillBytes<FillKind::bytes>(pDst, int64_t{len} * 4, 4, FillLine{});
    return qvrOk;
}
