#include "frame/allocator.h"

#include <stdlib.h>

extern "C" qvrAllocatorSlots qvrAllocator = {malloc, calloc, realloc, free};
