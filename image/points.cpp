// Fill, copy under a mask, widening of bytes, rows of byte pairs.
#include "image/functions.h"
#include "image/rows.h"
#include "vector/fill.h"
#include "vector/halfwords.h"

namespace {

// More than this many bytes written ask for the cache's size.
constexpr int64_t kStreamAbove = 0x80000;

// ---- Copy under a mask ----------------------------------------------------------------------------------------------

// Blocks of 16 pixels: nothing, all, or a merge. A pixel under a zero is not written where the block has no other.
void copyMasked(const uint16_t* src, uint16_t* dst, const uint8_t* mask, Index n)
{
    constexpr int B = 16;
    using M = Vec<uint8_t, B>;
    using V = Vec<uint16_t, B>;
    Index i = 0;
    for (; i + B <= n; i += B) {
        const M m = load<M>(mask + i);
        const uint32_t out = byteBits(m == 0);
        if (out == 0xFFFF)
            continue;
        const V s = load<V>(src + i);
        if (out == 0) {
            store(dst + i, s);
        } else {
            const V keep = bitcast<V>(convert<int16_t>(bitcast<Vec<int8_t, B>>(m == 0)));
            store(dst + i, (load<V>(dst + i) & keep) | (s & ~keep));
        }
    }
    for (; i < n; i++)
        if (mask[i] != 0)
            store(dst + i, load<Vec<uint16_t, 1>>(src + i));
}

// ---- Widening -------------------------------------------------------------------------------------------------------

constexpr int kWide = kLanes<uint16_t>;
constexpr int kPlane = kAvx2 ? 16 : 8; // samples to a vector of one instruction

void widenRow(const uint8_t* src, uint16_t* dst, Index n)
{
    convertBlocks<2 * kWide>(src, dst, n, [](auto x) { return convert<uint16_t>(x); });
}

// Past the caches: whole vectors on their boundary, if the destination's pixels ever reach one.
void widenRowStreaming(const uint8_t* src, uint16_t* dst, Index n)
{
    const uintptr_t address = reinterpret_cast<uintptr_t>(dst);
    if (address % 2 != 0)
        return widenRow(src, dst, n);
    Index i = static_cast<Index>(-address % kVecBytes / 2);
    i = i < n ? i : n;
    widenRow(src, dst, i);
    for (; i + kWide <= n; i += kWide)
        stream(dst + i, convert<uint16_t>(load<Vec<uint8_t, kWide>>(src + i)));
    widenRow(src + i, dst + i, n - i);
}

qvrStatus widen(const uint8_t* src, int srcStep, uint16_t* dst, int dstStep, qvriSize size)
{
    if (const qvrStatus status = checkPointersThenSize(size, src, dst))
        return status;
    if (srcStep < 1 || dstStep < 1)
        return qvrErrBadStep;
    Index width = size.width, height = size.height;
    const int64_t bytes = 3 * width * height;
    if (srcStep == size.width && dstStep == 2 * int64_t{srcStep}) {
        width *= height;
        height = 1;
    }
    int32_t cache = 0;
    const bool past = bytes > kStreamAbove && qvrGetMaxCacheSize(&cache) == qvrOk && bytes >= cache;
    for (Index y = 0; y < height; y++)
        if (past)
            widenRowStreaming(src + y * srcStep, rowAt(dst, y, dstStep), width);
        else
            widenRow(src + y * srcStep, rowAt(dst, y, dstStep), width);
    if (past)
        streamFence();
    return qvrOk;
}

} // namespace

extern "C" {

qvrStatus SLOT(qvriSet_16u_C1R)(qvr16u value, qvr16u* dst, int step, qvriSize roiSize)
{
    if (const qvrStatus status = checkPointersThenSize(roiSize, dst))
        return status;
    const int64_t pixels = int64_t{roiSize.width} * roiSize.height;
    if (int64_t{roiSize.width} * 2 == step && pixels <= INT32_MAX)
        return SLOT(ownSet_16u)(value, dst, static_cast<int>(pixels));
    for (Index y = 0; y < roiSize.height; y++)
        SLOT(ownSet_16u)(value, rowAt(dst, y, step), roiSize.width);
    return qvrOk;
}

qvrStatus SLOT(qvriCopy_16u_C1MR)(const qvr16u* src, int srcStep, qvr16u* dst, int dstStep, qvriSize roiSize,
                                  const qvr8u* mask, int maskStep)
{
    if (const qvrStatus status = checkPointersThenSize(roiSize, src, dst, mask))
        return status;
    Index width = roiSize.width, height = roiSize.height;
    if (2 * width == srcStep && 2 * width == dstStep && width == maskStep) {
        width *= height;
        height = 1;
    }
    for (Index y = 0; y < height; y++)
        copyMasked(rowAt(src, y, srcStep), rowAt(dst, y, dstStep), mask + y * maskStep, width);
    return qvrOk;
}

qvrStatus SLOT(qvriConvert_8u16u_C1R)(const qvr8u* src, int srcStep, qvr16u* dst, int dstStep, qvriSize roiSize)
{
    return widen(src, srcStep, dst, dstStep, roiSize);
}

qvrStatus SLOT(qvriConvert_8u16s_C1R)(const qvr8u* src, int srcStep, qvr16s* dst, int dstStep, qvriSize roiSize)
{
    return widen(src, srcStep, reinterpret_cast<uint16_t*>(dst), dstStep, roiSize);
}

// Plane 0 holds the high bytes of little-endian samples.
qvrStatus SLOT(qvriSplitRow_TIFF_16u8u_C1)(const qvr8u* src, qvr8u** dstPlanes, int len)
{
    if (anyNull(src, dstPlanes))
        return qvrErrNullPointer;
    if (len < 1)
        return qvrErrBadStep;
    if (anyNull(dstPlanes[0], dstPlanes[1]))
        return qvrErrNullPointer;
    using V = Vec<uint16_t, kPlane>;
    qvr8u *const high = dstPlanes[0], *const low = dstPlanes[1];
    const Index n = len;
    Index i = 0;
    for (; i + 2 * kPlane <= n; i += 2 * kPlane) {
        const V a = load<V>(src + 2 * i), b = load<V>(src + 2 * (i + kPlane));
        store(high + i, packWords(bitcast<Vec<int16_t, kPlane>>(a >> 8), bitcast<Vec<int16_t, kPlane>>(b >> 8)));
        store(low + i, packWords(bitcast<Vec<int16_t, kPlane>>(a & 0xFF), bitcast<Vec<int16_t, kPlane>>(b & 0xFF)));
    }
    for (; i < n; i++) {
        high[i] = src[2 * i + 1];
        low[i] = src[2 * i];
    }
    return qvrOk;
}

qvrStatus SLOT(qvriJoinRow_TIFF_8u16u_C1)(qvr8u** srcPlanes, qvr8u* dst, int len)
{
    if (anyNull(srcPlanes, dst) || anyNull(srcPlanes[0], srcPlanes[1]))
        return qvrErrNullPointer;
    if (len < 1)
        return qvrErrBadStep;
    using V = Vec<uint8_t, 2 * kPlane>;
    const qvr8u *const high = srcPlanes[0], *const low = srcPlanes[1];
    const Index n = len;
    Index i = 0;
    for (; i + 2 * kPlane <= n; i += 2 * kPlane) {
        const V l = load<V>(low + i), h = load<V>(high + i);
        store(dst + 2 * i, zipLo(l, h));
        store(dst + 2 * (i + kPlane), zipHi(l, h));
    }
    for (; i < n; i++) {
        dst[2 * i] = low[i];
        dst[2 * i + 1] = high[i];
    }
    return qvrOk;
}

} // extern "C"
