// Arrays taken one behind another from one block, each on a boundary of 64 bytes. Without a base the arena only counts,
// so that one walk states an object's layout for its size and for its set-up.
#ifndef QVR_FRAME_ARENA_H
#define QVR_FRAME_ARENA_H

#include "frame/memory.h"

namespace {

constexpr int64_t kLine = 64;

// The first boundary at or behind p.
template<class P> inline P* alignLine(void* p)
{
    return reinterpret_cast<P*>(qvrAlignUp(reinterpret_cast<uintptr_t>(p), static_cast<uintptr_t>(kLine)));
}

// Counts below 2^40 cannot overflow it: a size that no allocation holds is told by `used`.
struct Arena {
    void* base;
    int64_t used;

    // Null where it only counts, and for no elements.
    template<class T> T* take(int64_t count)
    {
        T* const p = base != nullptr && count > 0 ? reinterpret_cast<T*>(static_cast<char*>(base) + used) : nullptr;
        used += qvrAlignUp(count * static_cast<int64_t>(sizeof(T)), kLine);
        return p;
    }
    bool fills() const { return base != nullptr; }
};

// Bytes of what layOut(arena) takes.
template<class LayOut> inline int64_t bytesOf(const LayOut& layOut)
{
    Arena arena = {nullptr, 0};
    layOut(arena);
    return arena.used;
}

// Gives layOut(arena) a new block of its size. False if memory does not hold it.
template<class LayOut> inline bool build(const LayOut& layOut)
{
    const int64_t bytes = bytesOf(layOut);
    Arena arena = {bytes > INT32_MAX ? nullptr : allocate<char>(static_cast<int>(bytes)), 0};
    if (arena.fills())
        layOut(arena);
    return arena.fills();
}

} // namespace

#endif
