// The kernels of one slot, each for one band, and what they share: the carving of the band's buffer and its rows.
#ifndef QVR_IMAGE_KERNELS_H
#define QVR_IMAGE_KERNELS_H

#include "frame/allocator.h"
#include "frame/simd.h"
#include "image/plan.h"

// A body of its own, where several calls would each have one.
#define QVR_APART __attribute__((noinline))

extern "C" {

QVR_HIDDEN void SLOT(ownResizeNearest)(const qvrResizeBand* band, int pixel);
QVR_HIDDEN void SLOT(ownResizeLinear_8u)(const qvrResizeBand* band, int pixel);
QVR_HIDDEN void SLOT(ownResizeTaps)(const qvrResizeBand* band, int pixel); // all other separable methods
QVR_HIDDEN void SLOT(ownResizeSuper)(const qvrResizeBand* band, int pixel);

} // extern "C"

namespace {

using Index = int64_t;

// f<T, NC>() for the element type and the channels of a form.
template<class F> QVR_INLINE void byPixel(int pixel, const F& f)
{
    if (pixel == qvrPixel_8u_C1)
        f.template operator()<uint8_t, 1>();
    else if (pixel == qvrPixel_8u_C4)
        f.template operator()<uint8_t, 4>();
    else if (pixel == qvrPixel_32f_C1)
        f.template operator()<float, 1>();
    else
        f.template operator()<double, 1>();
}

// Arrays cut one behind the other from a band's buffer.
struct Carver {
    char *at, *end;
    // Null if `count` elements on a boundary of `alignment` bytes do not fit.
    template<class T> QVR_INLINE T* take(Index count, uintptr_t alignment)
    {
        const uintptr_t from = qvrAlignUp(reinterpret_cast<uintptr_t>(at), alignment);
        if (count > (reinterpret_cast<uintptr_t>(end) > from
                         ? static_cast<Index>((reinterpret_cast<uintptr_t>(end) - from) / sizeof(T))
                         : -1))
            return nullptr;
        char* const p = at + (from - reinterpret_cast<uintptr_t>(at));
        at = p + count * static_cast<Index>(sizeof(T));
        return reinterpret_cast<T*>(p);
    }
};
QVR_INLINE Carver bufferOf(const qvrResizeBand* band)
{
    return {band->buffer, band->buffer + band->bufferBytes};
}

QVR_INLINE Index clampIndex(Index i, Index length)
{
    return i < 0 ? 0 : i < length ? i : length - 1;
}

// Row y of the source and of the destination, the latter from the band's first column on.
QVR_INLINE const char* sourceRow(const qvrResizeBand* b, Index y)
{
    return b->src + y * b->srcStep;
}
QVR_INLINE char* outputRow(const qvrResizeBand* b, Index n, Index pixelBytes)
{
    return b->dst + (b->y.first + n) * b->dstStep + b->x.first * pixelBytes;
}

// trunc(sum + 0.5000001) in double, as an int32 for packBytes. Among the singles only the three just below 0.5 are
// within 1e-7 of a half without being one; for those 2^-24 more is added, whose sum rounds to 1 exactly for them.
template<class V> QVR_INLINE auto roundToByte(V sum)
{
    const V half = splat<V>(0.5f);
    return toIntTruncate(sum + bitcast<V>(bits(half) | (bits(sum < half) & splat<Bits<V>>(1))));
}

} // namespace

#endif
