// What a programmer writes instead of the point operations: plain loops with the exports' prototypes, for each level.
#include <string.h>

#include <algorithm>

#include "bench/peers.h"

namespace {

template<class T> const T* rowOf(const T* p, int y, int step)
{
    return reinterpret_cast<const T*>(reinterpret_cast<const char*>(p) + int64_t{y} * step);
}
template<class T> T* rowOf(T* p, int y, int step)
{
    return reinterpret_cast<T*>(reinterpret_cast<char*>(p) + int64_t{y} * step);
}

template<class T> qvrStatus addC(T value, T* p, int step, qvriSize size, int s)
{
    constexpr int most = sizeof(T) == 1 ? 255 : 65535;
    for (int y = 0; y < size.height; y++) {
        T* const row = rowOf(p, y, step);
        if (s <= 0)
            for (int x = 0; x < size.width; x++)
                row[x] = static_cast<T>(std::min((row[x] + value) << -s, most));
        else
            for (int x = 0; x < size.width; x++) {
                const int t = row[x] + value;
                row[x] = static_cast<T>((t + (1 << (s - 1)) - 1 + ((t >> s) & 1)) >> s);
            }
    }
    return 0;
}
qvrStatus qvriAddC_8u_C1IRSfs(qvr8u value, qvr8u* p, int step, qvriSize size, int s)
{
    return addC(value, p, step, size, s);
}
qvrStatus qvriAddC_16u_C1IRSfs(qvr16u value, qvr16u* p, int step, qvriSize size, int s)
{
    return addC(value, p, step, size, s);
}

qvrStatus qvriSet_16u_C1R(qvr16u value, qvr16u* dst, int step, qvriSize size)
{
    for (int y = 0; y < size.height; y++)
        std::fill_n(rowOf(dst, y, step), size.width, value);
    return 0;
}

qvrStatus qvriCopy_16u_C1MR(const qvr16u* src, int srcStep, qvr16u* dst, int dstStep, qvriSize size, const qvr8u* mask,
                            int maskStep)
{
    for (int y = 0; y < size.height; y++) {
        const qvr16u* __restrict s = rowOf(src, y, srcStep);
        qvr16u* __restrict d = rowOf(dst, y, dstStep);
        const qvr8u* __restrict m = rowOf(mask, y, maskStep);
        for (int x = 0; x < size.width; x++)
            d[x] = m[x] ? s[x] : d[x];
    }
    return 0;
}

template<class S, class T> qvrStatus convert(const S* src, int srcStep, T* dst, int dstStep, qvriSize size)
{
    for (int y = 0; y < size.height; y++) {
        const S* __restrict s = rowOf(src, y, srcStep);
        T* __restrict d = rowOf(dst, y, dstStep);
        for (int x = 0; x < size.width; x++)
            d[x] = static_cast<T>(s[x]);
    }
    return 0;
}
qvrStatus qvriConvert_8u16u_C1R(const qvr8u* src, int srcStep, qvr16u* dst, int dstStep, qvriSize size)
{
    return convert(src, srcStep, dst, dstStep, size);
}
qvrStatus qvriConvert_8u16s_C1R(const qvr8u* src, int srcStep, qvr16s* dst, int dstStep, qvriSize size)
{
    return convert(src, srcStep, dst, dstStep, size);
}

template<class S, class T>
qvrStatus palette(const S* src, int srcStep, T* dst, int dstStep, qvriSize size, const T* table, int bits)
{
    const unsigned mask = (1u << bits) - 1;
    for (int y = 0; y < size.height; y++) {
        const S* __restrict s = rowOf(src, y, srcStep);
        T* __restrict d = rowOf(dst, y, dstStep);
        for (int x = 0; x < size.width; x++)
            d[x] = table[s[x] & mask];
    }
    return 0;
}
#define PALETTE(name, S, T)                                                                                            \
    qvrStatus name(const S* src, int srcStep, T* dst, int dstStep, qvriSize size, const T* table, int bits)            \
    {                                                                                                                  \
        return palette(src, srcStep, dst, dstStep, size, table, bits);                                                 \
    }
PALETTE(qvriLUTPalette_8u_C1R, qvr8u, qvr8u)
PALETTE(qvriLUTPalette_8u32u_C1R, qvr8u, qvr32u)
PALETTE(qvriLUTPalette_16u8u_C1R, qvr16u, qvr8u)
PALETTE(qvriLUTPalette_16u32u_C1R, qvr16u, qvr32u)

qvrStatus qvriBlockMinMax_16s_C1R(const qvr16s* src, int srcStep, qvriSize size, qvr16s* low, int lowStep, qvr16s* high,
                                  int highStep, qvriSize block, qvr16s* least, qvr16s* most)
{
    *least = INT16_MAX;
    *most = INT16_MIN;
    for (int y = 0, by = 0; y < size.height; y += block.height, by++)
        for (int x = 0, bx = 0; x < size.width; x += block.width, bx++) {
            qvr16s a = INT16_MAX, b = INT16_MIN;
            const int bottom = std::min(y + block.height, size.height), right = std::min(x + block.width, size.width);
            for (int v = y; v < bottom; v++) {
                const qvr16s* const s = rowOf(src, v, srcStep);
                for (int u = x; u < right; u++) {
                    a = std::min(a, s[u]);
                    b = std::max(b, s[u]);
                }
            }
            rowOf(low, by, lowStep)[bx] = a;
            rowOf(high, by, highStep)[bx] = b;
            *least = std::min(*least, a);
            *most = std::max(*most, b);
        }
    return 0;
}

qvrStatus qvriSplitRow_TIFF_16u8u_C1(const qvr8u* src, qvr8u** planes, int len)
{
    qvr8u* __restrict high = planes[0], * __restrict low = planes[1];
    for (int i = 0; i < len; i++) {
        high[i] = src[2 * i + 1];
        low[i] = src[2 * i];
    }
    return 0;
}
qvrStatus qvriJoinRow_TIFF_8u16u_C1(qvr8u** planes, qvr8u* __restrict dst, int len)
{
    const qvr8u* __restrict high = planes[0], * __restrict low = planes[1];
    for (int i = 0; i < len; i++) {
        dst[2 * i] = low[i];
        dst[2 * i + 1] = high[i];
    }
    return 0;
}

} // namespace

namespace bench {

extern const PeerFunction QVR_PEER_PASTE(plain_image_, QVR_BENCH_LEVEL)[];
const PeerFunction QVR_PEER_PASTE(plain_image_, QVR_BENCH_LEVEL)[] = {
    QVR_PEER(qvriAddC_8u_C1IRSfs),       QVR_PEER(qvriAddC_16u_C1IRSfs),
    QVR_PEER(qvriSet_16u_C1R),           QVR_PEER(qvriCopy_16u_C1MR),
    QVR_PEER(qvriConvert_8u16u_C1R),     QVR_PEER(qvriConvert_8u16s_C1R),
    QVR_PEER(qvriLUTPalette_8u_C1R),     QVR_PEER(qvriLUTPalette_8u32u_C1R),
    QVR_PEER(qvriLUTPalette_16u8u_C1R),  QVR_PEER(qvriLUTPalette_16u32u_C1R),
    QVR_PEER(qvriBlockMinMax_16s_C1R),   QVR_PEER(qvriSplitRow_TIFF_16u8u_C1),
    QVR_PEER(qvriJoinRow_TIFF_8u16u_C1), {nullptr, nullptr},
};

} // namespace bench
