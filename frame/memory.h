// Aligned memory inside a slot: 64-byte aligned blocks by element size. A count below 1 gives null; the byte count is
// formed in 32 bits, so a caller whose size can pass 2^31 - 1 refuses it first.
#ifndef QVR_FRAME_MEMORY_H
#define QVR_FRAME_MEMORY_H

#include "frame/allocator.h"
#include "frame/functions.h"
#include "frame/slot.h"

extern "C" {
QVR_HIDDEN void* SLOT_SHARED(qvrsMalloc_16)(int count);  // 2-byte elements
QVR_HIDDEN void* SLOT_SHARED(qvrsMalloc_32)(int count);  // 4-byte elements
QVR_HIDDEN void* SLOT_SHARED(qvrsMalloc_64)(int count);  // 8-byte elements
QVR_HIDDEN void* SLOT_SHARED(qvrsMalloc_128)(int count); // 16-byte elements
}

namespace {

// The form for an element type.
template<class T> inline T* allocate(int count)
{
    if constexpr (sizeof(T) == 1)
        return static_cast<T*>(static_cast<void*>(SLOT_SHARED(qvrsMalloc_8u)(count)));
    else if constexpr (sizeof(T) == 2)
        return static_cast<T*>(SLOT_SHARED(qvrsMalloc_16)(count));
    else if constexpr (sizeof(T) == 4)
        return static_cast<T*>(SLOT_SHARED(qvrsMalloc_32)(count));
    else if constexpr (sizeof(T) == 8)
        return static_cast<T*>(SLOT_SHARED(qvrsMalloc_64)(count));
    else
        return static_cast<T*>(SLOT_SHARED(qvrsMalloc_128)(count));
}

inline void release(void* block)
{
    SLOT_SHARED(qvrsFree)(block);
}

} // namespace

#endif
