// The loop skeletons of the vector family: one per shape, a function is its formula over them.
//
// mapElements   dst[i] = op(src[i], ...) for one element type; any source may be dst itself
// convertBlocks dst[i] = op(src[i]) between two element types, a block of B lanes at a time
//
// Tails. The last vector of an array is computed first and stored last, overlapping the one before it: its elements get
// the same values twice, and in place the sources are read before the loop changes them. So no tail runs lane by lane,
// and nothing is read past an end. An array below four vectors is cut into powers of two without overlap: a vector that
// straddles two stores of the call before could only be loaded when both have left for the cache.
#ifndef QVR_VECTOR_LOOPS_H
#define QVR_VECTOR_LOOPS_H

#include "frame/simd.h"
#include "frame/status.h"

namespace {

// From here on a head of less than one vector aligns the destination. A store across a cache line costs two, which
// from about 16 vectors on is more than the head.
template<class T> constexpr Index kAlignFrom = 16 * kLanes<T>;

// Each array has a pointer of its own, whose relation to the others is hidden from the compiler: with one index for all
// of them, an operand in memory takes a second slot of the front end, which is what limits a loop in the first cache.
template<class T> QVR_INLINE void advance(T*& p, Index by)
{
    p += by;
    __asm__("" : "+r"(p));
}

template<class T, bool Aligned, class Op, class... S>
QVR_INLINE void mapVectors(T* dst, Index n, Op& op, const S*... src)
{
    using V = Full<T>;
    constexpr int N = kLanes<T>;
    Index left = n;
    for (; left >= 4 * N; left -= 4 * N) {
        const V a = op(loadIf<Aligned, V>(src)...);
        const V b = op(loadIf<Aligned, V>(src + N)...);
        const V c = op(loadIf<Aligned, V>(src + 2 * N)...);
        const V d = op(loadIf<Aligned, V>(src + 3 * N)...);
        store(dst, a);
        store(dst + N, b);
        store(dst + 2 * N, c);
        store(dst + 3 * N, d);
        (advance(src, 4 * N), ...);
        advance(dst, 4 * N);
    }
    for (; left >= N; left -= N) {
        store(dst, op(loadIf<Aligned, V>(src)...));
        (advance(src, N), ...);
        advance(dst, N);
    }
}

template<class T, class Op, class... S> QVR_INLINE void mapLong(T* dst, Index n, Op& op, const S*... src)
{
    using V = Full<T>;
    constexpr int N = kLanes<T>;
    const V last = op(load<V>(src + n - N)...);
    Index i = 0;
    const uintptr_t address = reinterpret_cast<uintptr_t>(dst);
    if (n >= kAlignFrom<T> && address % kVecBytes != 0 && address % sizeof(T) == 0) {
        i = static_cast<Index>(-address % kVecBytes / sizeof(T));
        const V head = op(load<V>(src)...), first = op(load<V>(src + i)...);
        store(dst, head);
        store(dst + i, first);
        i += N;
    }
    // Below AVX an operand in memory must be aligned, so an aligned source saves its load instructions.
    if constexpr (!kAvx) {
        if (((reinterpret_cast<uintptr_t>(src + i) | ...) % kVecBytes) == 0)
            mapVectors<T, true>(dst + i, n - i, op, (src + i)...);
        else
            mapVectors<T, false>(dst + i, n - i, op, (src + i)...);
    } else {
        mapVectors<T, false>(dst + i, n - i, op, (src + i)...);
    }
    store(dst + n - N, last);
}

// op of vectors that may be half a register.
template<class Op, class V, class... More> QVR_INLINE auto onLanes(Op& op, V v, More... more)
{
    using W = decltype(wholeRegister(v));
    if constexpr (lanes<W> == lanes<V>)
        return op(v, more...);
    else
        return slice<0, lanes<V>>(opaque(op(wholeRegister(v), wholeRegister(more)...)));
}

// The last elements by falling powers of two, each once.
template<int N, class T, class Op, class... S> QVR_INLINE void mapPowers(T* dst, Index n, Op& op, const S*... src)
{
    if (n & N) {
        store(dst, onLanes(op, load<Vec<T, N>>(src)...));
        dst += N;
        ((src += N), ...);
    }
    if constexpr (N > 1)
        mapPowers<N / 2>(dst, n, op, src...);
}

template<class T, class Op, class... S> QVR_INLINE void mapElements(T* dst, Index n, Op&& op, const S*... src)
{
    constexpr int N = kLanes<T>;
    if (n >= 4 * N)
        return mapLong(dst, n, op, src...);
    mapPowers<2 * N>(dst, n, op, src...);
}

// Source and destination are different arrays here, so the overlapping last block needs no care.
template<int B, class TS, class TD, class Op> QVR_INLINE void convertShort(const TS* src, TD* dst, Index n, Op& op)
{
    if constexpr (B > 1) {
        constexpr int H = B / 2;
        if (n >= H) {
            store(dst, onLanes(op, load<Vec<TS, H>>(src)));
            store(dst + n - H, onLanes(op, load<Vec<TS, H>>(src + n - H)));
        } else {
            convertShort<H>(src, dst, n, op);
        }
    }
}

template<int B, class TS, class TD, class Op> QVR_INLINE void convertBlocks(const TS* src, TD* dst, Index n, Op&& op)
{
    using V = Vec<TS, B>;
    if (n < B)
        return convertShort<B>(src, dst, n, op);
    Index i = 0;
    const uintptr_t address = reinterpret_cast<uintptr_t>(dst);
    // The head is one block, so the boundary to reach is no further than what a block stores.
    constexpr uintptr_t boundary = B * sizeof(TD) < kVecBytes ? B * sizeof(TD) : kVecBytes;
    if (n >= 8 * B && address % sizeof(TD) == 0 && address % boundary != 0) {
        store(dst, op(load<V>(src)));
        i = static_cast<Index>(-address % boundary / sizeof(TD));
    }
    const V last = load<V>(src + n - B);
    TD* const lastAt = dst + n - B;
    src += i;
    dst += i;
    Index left = n - i;
    for (; left >= 2 * B; left -= 2 * B) {
        const auto a = op(load<V>(src)), b = op(load<V>(src + B));
        store(dst, a);
        store(dst + B, b);
        advance(src, 2 * B);
        advance(dst, 2 * B);
    }
    if (left >= B)
        store(dst, op(load<V>(src)));
    store(lastAt, op(last));
}

// ---- Checks, then the loop: the whole of a plain element-wise function ----------------------------------------------

template<class T, class Op> QVR_INLINE qvrStatus unary(const T* pSrc, T* pDst, int len, Op&& op)
{
    if (const qvrStatus status = checkPointersThenLength(len, pSrc, pDst))
        return status;
    mapElements(pDst, len, op, pSrc);
    return qvrOk;
}

template<class T, class Op> QVR_INLINE qvrStatus binary(const T* pSrc1, const T* pSrc2, T* pDst, int len, Op&& op)
{
    if (const qvrStatus status = checkPointersThenLength(len, pSrc1, pSrc2, pDst))
        return status;
    mapElements(pDst, len, op, pSrc1, pSrc2);
    return qvrOk;
}

template<int B, class TS, class TD, class Op>
QVR_INLINE qvrStatus conversion(const TS* pSrc, TD* pDst, int len, Op&& op)
{
    if (const qvrStatus status = checkPointersThenLength(len, pSrc, pDst))
        return status;
    convertBlocks<B>(pSrc, pDst, len, op);
    return qvrOk;
}

} // namespace

#endif
