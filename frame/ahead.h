// Arrays beyond the second cache. The processor keeps as many loads and stores under way as its order window holds, and
// that is a few turns of a long formula, so the lines that a loop comes to are asked for a page ahead.
#ifndef QVR_FRAME_AHEAD_H
#define QVR_FRAME_AHEAD_H

#include "frame/simd.h"

namespace {

constexpr Index kFarBytes = 1 << 19; // of an array, from here on
constexpr Index kAheadBytes = 4096, kLineBytes = 64;

template<class T> QVR_INLINE bool isFar(Index n)
{
    return n >= kFarBytes / static_cast<Index>(sizeof(T));
}

// The lines of n elements, `bytes` behind p. What lies there may be anything: a request does not fault.
template<class T> QVR_INLINE void askFor(const T* p, Index bytes, Index n)
{
    for (Index k = 0; k < n * static_cast<Index>(sizeof(T)); k += kLineBytes)
        __builtin_prefetch(reinterpret_cast<const void*>(reinterpret_cast<uintptr_t>(p) + bytes + k));
}

// For lambdas that eachBlock() gets.
#define QVR_ALWAYS __attribute__((always_inline))

// step(i) for whole blocks of B elements from i on, of n. Two loops: in the first cache each instruction counts.
template<int B, class Step, class T, class... More>
QVR_INLINE void eachBlock(Index& i, Index n, Step&& step, const T* array, const More*... more)
{
    if (isFar<T>(n))
        for (; i + B <= n; i += B) {
            askFor(array + i, kAheadBytes, B);
            (askFor(more + i, kAheadBytes, B), ...);
            step(i);
        }
    for (; i + B <= n; i += B)
        step(i);
}

} // namespace

#endif
