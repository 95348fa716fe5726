// Copies: the choice of path per slot. All paths write the same bytes.
#include <string.h>

#include "vector/fill.h"
#include "vector/functions.h"
#include "vector/halfwords.h"
#include "vector/loops.h"
#include "vector/shared.h"

namespace {

// mx: vectors up to here, the general block copy above.
constexpr int64_t kBlockCopyAbove = 96;

// The narrow slots stream from here on, when leaf 2 tells a cache that the copy exceeds.
constexpr int64_t kStreamFrom = PerSlot<int64_t>{0, 0x80000, 0x20000, 0x20000, 0x100000, 0, 0}.here();

// The wide slots move strings from here on, and cut what does not fit 32 bits into blocks.
constexpr int64_t kStringFrom = 32768;
constexpr int64_t kCutFromElements = 0x20000000;
constexpr int64_t kCutBytes = 0x7FFFFFE0;

template<class T> QVR_INLINE void copyVectors(const T* src, T* dst, int64_t len)
{
    mapElements(dst, len, [](auto x) { return x; }, src);
}

QVR_INLINE void copyStreaming(const char* src, char* dst, int64_t bytes)
{
    using Line = Vec<uint8_t, 64>;
    const int head = static_cast<int>(-reinterpret_cast<uintptr_t>(dst) & 63);
    storePartial(dst, loadPartial<Line>(src, head), head);
    int64_t i = head;
    for (; i + 64 <= bytes; i += 64) {
        const Line line = load<Line>(src + i);
        stream(dst + i, slice<0, 16>(line));
        stream(dst + i + 16, slice<16, 16>(line));
        stream(dst + i + 32, slice<32, 16>(line));
        stream(dst + i + 48, slice<48, 16>(line));
    }
    const int tail = static_cast<int>(bytes - i);
    storePartial(dst + i, loadPartial<Line>(src + i, tail), tail);
    streamFence();
}

// String moves in the largest unit, up to 8 bytes, to which both addresses can be aligned together.
inline void copyString(const char* src, char* dst, int64_t bytes)
{
    const uintptr_t offset = reinterpret_cast<uintptr_t>(src) ^ reinterpret_cast<uintptr_t>(dst);
    const int64_t unit = (offset & 7) == 0 ? 8 : (offset & 3) == 0 ? 4 : (offset & 1) == 0 ? 2 : 1;
    int64_t head = -reinterpret_cast<uintptr_t>(dst) & (unit - 1);
    int64_t units = (bytes - head) / unit, tail = (bytes - head) % unit;
    __asm__ volatile("rep movsb" : "+S"(src), "+D"(dst), "+c"(head) : : "memory");
    if (unit == 8)
        __asm__ volatile("rep movsq" : "+S"(src), "+D"(dst), "+c"(units) : : "memory");
    else if (unit == 4)
        __asm__ volatile("rep movsl" : "+S"(src), "+D"(dst), "+c"(units) : : "memory");
    else if (unit == 2)
        __asm__ volatile("rep movsw" : "+S"(src), "+D"(dst), "+c"(units) : : "memory");
    else
        __asm__ volatile("rep movsb" : "+S"(src), "+D"(dst), "+c"(units) : : "memory");
    __asm__ volatile("rep movsb" : "+S"(src), "+D"(dst), "+c"(tail) : : "memory");
}

template<class T> QVR_INLINE void copyWide(const T* src, T* dst, int64_t len)
{
    const int64_t bytes = len * static_cast<int64_t>(sizeof(T));
    if (bytes < kStringFrom)
        return copyVectors(src, dst, len);
    const char* from = reinterpret_cast<const char*>(src);
    char* to = reinterpret_cast<char*>(dst);
    const int64_t block = len >= kCutFromElements ? kCutBytes : bytes;
    for (int64_t i = 0; i < bytes; i += block)
        copyString(from + i, to + i, bytes - i < block ? bytes - i : block);
}

template<class T> QVR_INLINE qvrStatus copy(const T* pSrc, T* pDst, int len)
{
    if (const qvrStatus status = checkPointersThenLength(len, pSrc, pDst))
        return status;
    const int64_t bytes = int64_t{len} * sizeof(T);
    const char* from = reinterpret_cast<const char*>(pSrc);
    char* to = reinterpret_cast<char*>(pDst);
    if constexpr (kAvx) {
        copyWide(pSrc, pDst, len);
    } else if constexpr (kSlot == qvrSlot_mx) {
        if (bytes > kBlockCopyAbove)
            memmove(to, from, static_cast<size_t>(bytes));
        else
            copyVectors(pSrc, pDst, len);
    } else {
        if (bytes >= kStreamFrom && exceedsCache(bytes))
            copyStreaming(from, to, bytes);
        else
            copyVectors(pSrc, pDst, len);
    }
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
