// Fills: the choice of path per slot, and the paths. All of them write the same bytes.
//
// A fill far larger than the cache bypasses it with streaming stores, if the processor tells its cache size: from a
// size limit on, the narrow slots ask leaf 2, the wide ones the full query. mx never streams.
#ifndef QVR_VECTOR_FILL_H
#define QVR_VECTOR_FILL_H

#include <string.h>

#include "frame/simd.h"
#include "frame/status.h"

namespace {

// Nothing above this many bytes is asked of the cache, so small fills never pay for the query.
// bytes: one byte repeated; words: any other element of Set_8u's limits; set32: the limits of 32-bit elements.
enum class FillKind { set32, words, bytes };
template<FillKind kind> constexpr int64_t streamLimit()
{
    constexpr int64_t narrow = kind == FillKind::set32 ? 0x40000 * 4 : 0x80000;
    return PerSlot<int64_t>{INT64_MAX, narrow, narrow, narrow, narrow, 0x200000, 0x200000}.here();
}

// Whether `bytes` bytes exceed the largest cache that this slot can learn of.
QVR_INLINE bool exceedsCache(int64_t bytes)
{
    int32_t cache = 0;
    const qvrStatus status = kAvx ? qvrGetMaxCacheSize(&cache) : qvrGetDescriptorCacheSize(&cache);
    return status == qvrOk && cache > 0 && cache < bytes;
}

using FillLine = Vec<uint8_t, 64>;

// To the next line boundary, whole lines past the cache, then the rest by halves from 32 bytes down to 1.
inline void fillStreaming(char* p, int64_t bytes, FillLine line)
{
    const int64_t head = -reinterpret_cast<uintptr_t>(p) & 63;
    storePartial(p, line, static_cast<int>(head));
    p += head;
    bytes -= head;
    for (; bytes >= 64; p += 64, bytes -= 64) {
        stream(p, slice<0, kVecBytes>(line));
        stream(p + kVecBytes, slice<0, kVecBytes>(line));
        if constexpr (kVecBytes == 16) {
            stream(p + 32, slice<0, 16>(line));
            stream(p + 48, slice<0, 16>(line));
        }
    }
    storePartial(p, line, static_cast<int>(bytes));
    streamFence();
}

// K vectors from either end.
template<int K, class V> QVR_INLINE void storeEnds(char* p, int64_t bytes, V v)
{
    for (int k = 0; k < K; k++) {
        store(p + k * static_cast<int>(sizeof(V)), v);
        store(p + bytes - (k + 1) * static_cast<int>(sizeof(V)), v);
    }
}

// Whole vectors, the last one overlapping. Above eight vectors the C library's own function, which knows the processor
// best, repeats a byte; others go eight vectors a turn, in the wide slots from 32768 bytes on two a turn from the end
// downward.
template<FillKind kind> QVR_INLINE void fillPlain(char* p, int64_t bytes, FillLine line)
{
    using V = Vec<uint8_t, kVecBytes>;
    constexpr int64_t W = kVecBytes;
    const V v = slice<0, kVecBytes>(line);
    if (bytes < W)
        return storePartial(p, v, static_cast<int>(bytes));
    if (bytes <= 2 * W)
        return storeEnds<1>(p, bytes, v);
    if (bytes <= 4 * W)
        return storeEnds<2>(p, bytes, v);
    if (bytes <= 8 * W)
        return storeEnds<4>(p, bytes, v);
    if constexpr (kind == FillKind::bytes) {
        memset(p, line[0], static_cast<size_t>(bytes));
        return;
    }
    store(p, v);
    store(p + bytes - W, v);
    int64_t i = -reinterpret_cast<uintptr_t>(p) & (W - 1);
    if (kAvx && bytes >= 32768) {
        int64_t end = i + (bytes - i) / (2 * W) * (2 * W);
        store(p + bytes - 2 * W, v);
        for (; end > i; end -= 2 * W) {
            storeAligned(p + end - W, v);
            storeAligned(p + end - 2 * W, v);
        }
        return;
    }
    for (; i + 8 * W <= bytes; i += 8 * W)
        for (int k = 0; k < 8; k++)
            storeAligned(p + i + k * W, v);
    for (; i + W <= bytes; i += W)
        store(p + i, v);
}

// `line` repeats the element, whose size divides every offset at which a vector is stored. A destination off the
// element's alignment has no element at the line boundaries, so it does not stream.
template<FillKind kind> QVR_INLINE void fillBytes(void* dst, int64_t bytes, int elementSize, FillLine line)
{
    char* p = static_cast<char*>(dst);
    if (kSlot != qvrSlot_mx && bytes > streamLimit<kind>() && reinterpret_cast<uintptr_t>(p) % elementSize == 0 &&
        exceedsCache(bytes))
        fillStreaming(p, bytes, line);
    else
        fillPlain<kind>(p, bytes, line);
}

} // namespace

#endif
