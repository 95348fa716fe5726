// Minimum and maximum, also with the place.
//
// The contract is that of the loop `if (x beats best) best = x` from element 0 on. Equal floats have equal bits except
// zeros: when the extreme is a zero, the first zero is fetched for its sign.
#include "vector/fold.h"
#include "vector/functions.h"

namespace {

// Elements to a block of the indexed search: long enough that the block's own fold is nothing, short enough that the
// search within one is nothing beside the pass over an array worth searching.
constexpr Index kBlock = 1024;

template<class T> QVR_INLINE T firstZeroIfZero(const T* src, Index n, T extreme)
{
    return isZero(Vec<T, 1>{extreme})[0] ? get(src, firstEqual(src, n, extreme)) : extreme;
}

template<class T, class Pick> QVR_INLINE qvrStatus extreme(const T* pSrc, int len, T* pResult, Pick pick)
{
    if (const qvrStatus status = checkPointersThenLength(len, pSrc, pResult))
        return status;
    T best = get(pSrc, 0);
    extremes(pSrc, len, &best, pick);
    if constexpr (kIsFloat<T>)
        best = firstZeroIfZero(pSrc, len, best);
    put(pResult, 0, best);
    return qvrOk;
}

template<class T> QVR_INLINE qvrStatus bothExtremes(const T* pSrc, int len, T* pMin, T* pMax)
{
    if (const qvrStatus status = checkPointersThenLength(len, pSrc, pMin, pMax))
        return status;
    const T first = get(pSrc, 0);
    T best[2] = {first, first};
    extremes(pSrc, len, best, Smallest{}, Largest{});
    if constexpr (kIsFloat<T>) {
        best[0] = firstZeroIfZero(pSrc, len, best[0]);
        best[1] = firstZeroIfZero(pSrc, len, best[1]);
    }
    put(pMin, 0, best[0]);
    put(pMax, 0, best[1]);
    return qvrOk;
}

// Block by block; only the block in which the extreme first appeared is searched for it. An element 0 that nothing
// beats, NaN among them, is the extreme itself.
template<class Pick> QVR_INLINE Index extremePlace(const float* src, Index n, Pick pick)
{
    float best = get(src, 0);
    Index from = -1;
    for (Index i = 0; i < n; i += kBlock) {
        float blockBest = best;
        extremes(src + i, n - i < kBlock ? n - i : kBlock, &blockBest, pick);
        if (blockBest != best && best == best) {
            best = blockBest;
            from = i;
        }
    }
    return from < 0 ? 0 : from + firstEqual(src + from, n - from, best);
}

template<class Pick>
QVR_INLINE qvrStatus indexedExtreme(const qvr32f* pSrc, int len, qvr32f* pResult, qvr32s* pIndx, Pick pick)
{
    if (const qvrStatus status = checkPointersThenLength(len, pSrc, pResult))
        return status;
    const Index place = extremePlace(pSrc, len, pick);
    put(pResult, 0, get(pSrc, place));
    put(pIndx, 0, static_cast<qvr32s>(place));
    return qvrOk;
}

} // namespace

extern "C" {

qvrStatus SLOT(qvrsMin_16s)(const qvr16s* pSrc, int len, qvr16s* pResult)
{
    return extreme(pSrc, len, pResult, Smallest{});
}

qvrStatus SLOT(qvrsMax_16s)(const qvr16s* pSrc, int len, qvr16s* pResult)
{
    return extreme(pSrc, len, pResult, Largest{});
}

qvrStatus SLOT(qvrsMin_32f)(const qvr32f* pSrc, int len, qvr32f* pResult)
{
    return extreme(pSrc, len, pResult, Smallest{});
}

qvrStatus SLOT(qvrsMax_32f)(const qvr32f* pSrc, int len, qvr32f* pResult)
{
    return extreme(pSrc, len, pResult, Largest{});
}

qvrStatus SLOT(qvrsMax_64f)(const qvr64f* pSrc, int len, qvr64f* pResult)
{
    return extreme(pSrc, len, pResult, Largest{});
}

qvrStatus SLOT(qvrsMinMax_16s)(const qvr16s* pSrc, int len, qvr16s* pMin, qvr16s* pMax)
{
    return bothExtremes(pSrc, len, pMin, pMax);
}

qvrStatus SLOT(qvrsMinMax_16u)(const qvr16u* pSrc, int len, qvr16u* pMin, qvr16u* pMax)
{
    return bothExtremes(pSrc, len, pMin, pMax);
}

qvrStatus SLOT(qvrsMinMax_32f)(const qvr32f* pSrc, int len, qvr32f* pMin, qvr32f* pMax)
{
    return bothExtremes(pSrc, len, pMin, pMax);
}

qvrStatus SLOT(qvrsMinIndx_32f)(const qvr32f* pSrc, int len, qvr32f* pResult, qvr32s* pIndx)
{
    if (pIndx == nullptr)
        return SLOT(qvrsMin_32f)(pSrc, len, pResult);
    return indexedExtreme(pSrc, len, pResult, pIndx, Smallest{});
}

qvrStatus SLOT(qvrsMaxIndx_32f)(const qvr32f* pSrc, int len, qvr32f* pResult, qvr32s* pIndx)
{
    if (pIndx == nullptr)
        return SLOT(qvrsMax_32f)(pSrc, len, pResult);
    return indexedExtreme(pSrc, len, pResult, pIndx, Largest{});
}

} // extern "C"
