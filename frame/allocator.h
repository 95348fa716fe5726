// The seam under all memory of the library, and the internal forms of the allocator.
//
// Only the malloc and free slots are ever called. They hold libc's own for the life of the process; tests put others
// there to count, to fail and to poison.
#ifndef QVR_FRAME_ALLOCATOR_H
#define QVR_FRAME_ALLOCATOR_H

#include <stddef.h>
#include <stdint.h>

#include "frame/processor.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct {
    void* (*malloc)(size_t size);
    void* (*calloc)(size_t count, size_t size);
    void* (*realloc)(void* block, size_t size);
    void (*free)(void* block);
} qvrAllocatorSlots;

extern QVR_HIDDEN qvrAllocatorSlots qvrAllocator;

// The malloc slot's block, or null. A failure reaches the caller of the library as a status, not as an errno.
QVR_HIDDEN void* qvrRequestMemory(size_t size);

#ifdef __cplusplus
}

namespace {

// value rounded up to a multiple of a power of two.
template<class T> constexpr T qvrAlignUp(T value, T alignment)
{
    return value + ((-(value & (alignment - 1))) & (alignment - 1));
}

} // namespace
#endif

#endif
