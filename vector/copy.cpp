// Copies. Short ones go through registers, everything loaded before anything is stored; the C library's own function
// knows the processor best and does the others.
#include <string.h>

#include "frame/simd.h"
#include "frame/status.h"
#include "vector/functions.h"
#include "vector/halfwords.h"
#include "vector/shared.h"

namespace {

constexpr int64_t kRegistersUpTo = 4 * kVecBytes;

// The first and the last B bytes.
template<int B> QVR_INLINE void copyEnds(const char* src, char* dst, int64_t bytes)
{
    using V = Vec<uint8_t, B>;
    const V first = load<V>(src), last = load<V>(src + bytes - B);
    store(dst, first);
    store(dst + bytes - B, last);
}

QVR_INLINE void copyShort(const char* src, char* dst, int64_t bytes)
{
    if (bytes >= 2 * kVecBytes)
        copyEnds<2 * kVecBytes>(src, dst, bytes);
    else if (bytes >= kVecBytes)
        copyEnds<kVecBytes>(src, dst, bytes);
    else if (bytes >= 16)
        copyEnds<16>(src, dst, bytes);
    else if (bytes >= 8)
        copyEnds<8>(src, dst, bytes);
    else if (bytes >= 4)
        copyEnds<4>(src, dst, bytes);
    else
        copyEnds<2>(src, dst, bytes);
}

template<class T> QVR_INLINE qvrStatus copy(const T* pSrc, T* pDst, int len)
{
    if (const qvrStatus status = checkPointersThenLength(len, pSrc, pDst))
        return status;
    const int64_t bytes = int64_t{len} * sizeof(T);
    if (bytes <= kRegistersUpTo)
        copyShort(reinterpret_cast<const char*>(pSrc), reinterpret_cast<char*>(pDst), bytes);
    else
        memmove(static_cast<void*>(pDst), static_cast<const void*>(pSrc), static_cast<size_t>(bytes));
    return qvrOk;
}

} // namespace

extern "C" qvrStatus SLOT(qvrsCopy_32f)(const qvr32f* pSrc, qvr32f* pDst, int len)
{
    return copy(pSrc, pDst, len);
}

extern "C" qvrStatus SLOT(qvrsCopy_64f)(const qvr64f* pSrc, qvr64f* pDst, int len)
{
    return copy(pSrc, pDst, len);
}

extern "C" qvrStatus SLOT(ownCopy_16u)(const qvr16u* pSrc, qvr16u* pDst, int len)
{
    return copy(pSrc, pDst, len);
}
