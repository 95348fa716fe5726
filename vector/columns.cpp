// Columns gathered from one two-dimensional array into another, row after row.
#include "vector/plain.h"
#include "vector/public.h"

extern "C" {

// The first row meets every index, so it alone needs to judge them.
QVR_EXPORTED qvrStatus Morven_qvrsCopyColumn_Indirect_16s_D2(const qvr16s* pSrc, int srcCols, int srcStride,
                                                             qvr16s* pDst, const qvr32s* pIndex, int dstCols,
                                                             int dstStride, int rows)
{
    if (pSrc == nullptr || pDst == nullptr || pIndex == nullptr)
        return qvrErrNullPointer;
    if (srcCols < 1 || dstCols < 1 || rows < 1)
        return qvrErrBadSize;
    if (srcCols > srcStride || dstCols > dstStride)
        return qvrErrBadColumns;
    for (int64_t c = 0; c < dstCols; c++) {
        const int32_t k = get(pIndex, c);
        if (k < 0 || k >= srcCols)
            return qvrErrBadSize;
        put(pDst, c, get(pSrc, k));
    }
    for (int64_t r = 1; r < rows; r++)
        for (int64_t c = 0; c < dstCols; c++)
            put(pDst, r * dstStride + c, get(pSrc, r * srcStride + get(pIndex, c)));
    return qvrOk;
}

QVR_EXPORTED qvrStatus Morven_qvrsCopyColumn_Indirect_16s_D2L(const qvr16s** ppSrc, int srcCols, qvr16s** ppDst,
                                                              const qvr32s* pIndex, int dstCols, int rows)
{
    if (ppSrc == nullptr || ppDst == nullptr || pIndex == nullptr)
        return qvrErrNullPointer;
    if (srcCols < 1 || dstCols < 1 || rows < 1)
        return qvrErrBadSize;
    for (int64_t r = 0; r < rows; r++) {
        qvr16s* const dst = get(ppDst, r);
        const qvr16s* const src = get(ppSrc, r);
        if (dst == nullptr || src == nullptr)
            return qvrErrNullPointer;
        for (int64_t c = 0; c < dstCols; c++)
            put(dst, c, get(src, get(pIndex, c)));
    }
    return qvrOk;
}

} // extern "C"
