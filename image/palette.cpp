// Palettes: dst = table[src & (2^bits - 1)].
#include "image/rows.h"

namespace {

template<class S, class T> QVR_INLINE Vec<T, 1> entryOf(const T* table, S pixel, unsigned mask)
{
    return load<Vec<T, 1>>(table + (pixel & mask));
}

// Eight pixels of bytes, four of 16 bits, come in as one word.
template<class S, class T> void lookUpRow(const S* src, T* dst, const T* table, unsigned mask, Index n)
{
    constexpr int N = 8 / sizeof(S), width = 8 * sizeof(S);
    Index x = 0;
    for (; x + N <= n; x += N) {
        const uint64_t pixels = load<Vec<uint64_t, 1>>(src + x)[0];
        Vec<T, N> out;
        for (int k = 0; k < N; k++)
            out[k] = entryOf(table, static_cast<S>(pixels >> (k * width)), mask)[0];
        store(dst + x, out);
    }
    for (; x < n; x++)
        store(dst + x, entryOf(table, load<Vec<S, 1>>(src + x)[0], mask));
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
    for (Index y = 0; y < size.height; y++)
        lookUpRow(rowAt(src, y, srcStep), rowAt(dst, y, dstStep), table, mask, width);
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
