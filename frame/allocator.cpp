#include "frame/allocator.h"

#include <errno.h>
#include <stdlib.h>

extern "C" qvrAllocatorSlots qvrAllocator = {malloc, calloc, realloc, free};

extern "C" void* qvrRequestMemory(size_t size)
{
    const int saved = errno;
    void* const block = qvrAllocator.malloc(size);
    errno = saved;
    return block;
}
