// Aligned blocks: from the raw pointer r of the malloc slot, the first 64-byte boundary p that leaves eight bytes
// below it. Those hold r. A request for n bytes takes n + 72, so p + n never passes the raw block's end.
//
// By contract: there is an allocator for each element size, also for those that nothing asks for.
#include "frame/memory.h"
#include "frame/functions.h"

namespace {

void* allocateBytes(int len)
{
    if (len < 1)
        return nullptr;
    const int64_t size = int64_t{len} + 72;
    void* raw = qvrRequestMemory(static_cast<size_t>(size));
    if (raw == nullptr)
        return nullptr;
    char* aligned = static_cast<char*>(raw) + 71;
    aligned -= reinterpret_cast<uintptr_t>(aligned) & 63;
    __builtin_memcpy(aligned - sizeof(void*), &raw, sizeof raw);
    return aligned;
}

void* allocateElements(int count, unsigned size)
{
    return count < 1 ? nullptr : allocateBytes(static_cast<int>(static_cast<unsigned>(count) * size));
}

} // namespace

extern "C" qvr8u* SLOT(qvrsMalloc_8u)(int len)
{
    return static_cast<qvr8u*>(allocateBytes(len));
}

extern "C" void SLOT(qvrsFree)(void* ptr)
{
    if (ptr == nullptr)
        return;
    void* raw;
    __builtin_memcpy(&raw, static_cast<char*>(ptr) - sizeof(void*), sizeof raw);
    qvrAllocator.free(raw);
}

extern "C" void* SLOT(qvrsMalloc_16)(int count)
{
    return allocateElements(count, 2);
}

extern "C" void* SLOT(qvrsMalloc_32)(int count)
{
    return allocateElements(count, 4);
}

extern "C" void* SLOT(qvrsMalloc_64)(int count)
{
    return allocateElements(count, 8);
}

extern "C" void* SLOT(qvrsMalloc_128)(int count)
{
    return allocateElements(count, 16);
}
