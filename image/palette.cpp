// Palettes: dst = table[src & (2^bits - 1)].
#include "frame/element.h"
#include "image/rows.h"

namespace {

// A load for the pixel and one for the entry: gathers cost more.
template<class S, class T> void lookUpRow(const S* src, T* dst, const T* table, unsigned mask, Index n)
{
#pragma clang loop unroll_count(8)
    for (Index x = 0; x < n; x++)
        put(dst, x, get(table, get(src, x) & mask));
}

// Bytes to bytes by shuffles: the table in blocks of 16, of which each pixel belongs to one. Less than 16 off its
// block's start a pixel's sum with 0x70 keeps the top bit clear; any other sets it, and picks zero.
constexpr int kShuffleBits = kAvx2 ? 6 : 5;
template<int N> void lookUpBytes(const uint8_t* src, uint8_t* dst, const uint8_t* table, int bits, Index n)
{
    using V = Vec<uint8_t, N>;
    using B = Vec<uint8_t, 16>;
    const int blocks = bits > 4 ? 1 << (bits - 4) : 1;
    V part[16];
    for (int k = 0; k < blocks; k++) {
        const B block = bits < 4 ? loadPartial<B>(table, 1 << bits) : load<B>(table + 16 * k);
        if constexpr (N == 32)
            part[k] = concat(block, block);
        else
            part[k] = block;
    }
    const V mask = splat<V>(static_cast<uint8_t>((1 << bits) - 1));
    mapElements(
        dst, n,
        [&](auto pixels) {
            if constexpr (sizeof(pixels) == N) {
                const V x = pixels & mask;
                V sum = shuffleBytes(part[0], addSaturate(x, splat<V>(0x70)));
                for (int k = 1; k < blocks; k++)
                    sum |=
                        shuffleBytes(part[k], addSaturate(x - splat<V>(static_cast<uint8_t>(16 * k)), splat<V>(0x70)));
                return sum;
            } else {
                auto out = pixels;
                for (int i = 0; i < lanes<decltype(pixels)>; i++)
                    out[i] = table[pixels[i] & mask[0]];
                return out;
            }
        },
        src);
}

template<class S, class T>
qvrStatus palette(const S* src, int srcStep, T* dst, int dstStep, qvriSize size, const T* table, int bits)
{
    if (const qvrStatus status = checkPointersThenSize(size, src, dst, table))
        return status;
    if (bits < 1 || bits > static_cast<int>(8 * sizeof(S)))
        return qvrErrBadBitSize;
    const Index width = size.width;
    if (srcStep < width * static_cast<Index>(sizeof(S)) || dstStep < width * static_cast<Index>(sizeof(T)))
        return qvrErrBadStep;
    const unsigned mask = (1u << bits) - 1;
    for (Index y = 0; y < size.height; y++) {
        const S* const from = rowAt(src, y, srcStep);
        T* const to = rowAt(dst, y, dstStep);
        if constexpr (kSsse3 && sizeof(S) == 1 && sizeof(T) == 1)
            if (bits <= kShuffleBits && width >= 4 * kVecBytes) {
                lookUpBytes<kVecBytes>(from, to, table, bits, width);
                continue;
            }
        lookUpRow(from, to, table, mask, width);
    }
    return qvrOk;
}

} // namespace

#define QVR_PALETTE(name, S, T)                                                                                        \
    extern "C" qvrStatus SLOT(name)(const S* src, int srcStep, T* dst, int dstStep, qvriSize roiSize, const T* table,  \
                                    int nBitSize)                                                                      \
    {                                                                                                                  \
        return palette(src, srcStep, dst, dstStep, roiSize, table, nBitSize);                                          \
    }
QVR_PALETTE(qvriLUTPalette_8u_C1R, qvr8u, qvr8u)
QVR_PALETTE(qvriLUTPalette_8u32u_C1R, qvr8u, qvr32u)
QVR_PALETTE(qvriLUTPalette_16u8u_C1R, qvr16u, qvr8u)
QVR_PALETTE(qvriLUTPalette_16u32u_C1R, qvr16u, qvr32u)
#undef QVR_PALETTE
