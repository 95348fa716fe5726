// Scalar models of the image point operations.
#ifndef QVR_MODEL_POINTS_H
#define QVR_MODEL_POINTS_H

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "model/element.h"

namespace model {
namespace {

// Row y of an image whose rows lie `step` bytes apart.
template<class T> T* rowAt(T* p, int y, int step)
{
    return reinterpret_cast<T*>(reinterpret_cast<uintptr_t>(p) + static_cast<uintptr_t>(int64_t{y} * step));
}

// (pixel + value) / 2^scale, half to even, saturated to the pixel's type.
template<class T> T scaledPixel(T pixel, T value, int scale)
{
    const int sum = pixel + value, most = sizeof(T) == 1 ? 255 : 65535;
    if (scale > 18)
        return 0;
    if (scale > 0)
        return static_cast<T>((sum + (1 << (scale - 1)) - 1 + ((sum >> scale) & 1)) >> scale);
    return static_cast<T>(std::min(int64_t{sum} << (scale > -17 ? -scale : 17), int64_t{most}));
}
template<class T> qvrStatus addConstant(T value, T* d, int step, qvriSize size, int scale)
{
    for (int y = 0; y < size.height; y++) {
        T* const row = rowAt(d, y, step);
        for (int x = 0; x < size.width; x++)
            row[x] = scaledPixel(row[x], value, scale);
    }
    return qvrOk;
}
inline qvrStatus qvriAddC_8u_C1IRSfs(uint8_t value, uint8_t* d, int step, qvriSize size, int scale)
{
    return addConstant(value, d, step, size, scale);
}
inline qvrStatus qvriAddC_16u_C1IRSfs(uint16_t value, uint16_t* d, int step, qvriSize size, int scale)
{
    return addConstant(value, d, step, size, scale);
}

inline qvrStatus qvriSet_16u_C1R(uint16_t value, uint16_t* d, int step, qvriSize size)
{
    for (int y = 0; y < size.height; y++)
        std::fill_n(rowAt(d, y, step), size.width, value);
    return qvrOk;
}
inline qvrStatus qvriCopy_16u_C1MR(const uint16_t* a, int from, uint16_t* d, int step, qvriSize size,
                                   const uint8_t* mask, int maskStep)
{
    for (int y = 0; y < size.height; y++) {
        const uint16_t* __restrict s = rowAt(a, y, from);
        uint16_t* __restrict r = rowAt(d, y, step);
        const uint8_t* __restrict m = rowAt(mask, y, maskStep);
        for (int x = 0; x < size.width; x++)
            r[x] = m[x] ? s[x] : r[x];
    }
    return qvrOk;
}

template<class S, class T, class F> qvrStatus mapped(const S* a, int from, T* d, int step, qvriSize size, const F& f)
{
    for (int y = 0; y < size.height; y++) {
        const S* __restrict s = rowAt(a, y, from);
        T* __restrict r = rowAt(d, y, step);
        for (int x = 0; x < size.width; x++)
            r[x] = f(s[x]);
    }
    return qvrOk;
}
inline qvrStatus qvriConvert_8u16u_C1R(const uint8_t* a, int from, uint16_t* d, int step, qvriSize size)
{
    return mapped(a, from, d, step, size, [](uint8_t p) { return uint16_t{p}; });
}
inline qvrStatus qvriConvert_8u16s_C1R(const uint8_t* a, int from, int16_t* d, int step, qvriSize size)
{
    return mapped(a, from, d, step, size, [](uint8_t p) { return int16_t{p}; });
}
#define QVR_PALETTE(name, S, T)                                                                                        \
    inline qvrStatus name(const S* a, int from, T* d, int step, qvriSize size, const T* table, int bits)               \
    {                                                                                                                  \
        const unsigned mask = (1u << bits) - 1;                                                                        \
        return mapped(a, from, d, step, size, [=](S p) { return table[p & mask]; });                                   \
    }
QVR_PALETTE(qvriLUTPalette_8u_C1R, uint8_t, uint8_t)
QVR_PALETTE(qvriLUTPalette_8u32u_C1R, uint8_t, uint32_t)
QVR_PALETTE(qvriLUTPalette_16u8u_C1R, uint16_t, uint8_t)
QVR_PALETTE(qvriLUTPalette_16u32u_C1R, uint16_t, uint32_t)
#undef QVR_PALETTE

// Blocks from the top left; those at the right and at the bottom hold what is there.
inline qvrStatus qvriBlockMinMax_16s_C1R(const int16_t* a, int step, qvriSize size, int16_t* low, int lowStep,
                                         int16_t* high, int highStep, qvriSize block, int16_t* least, int16_t* most)
{
    *least = INT16_MAX;
    *most = INT16_MIN;
    for (int top = 0, by = 0; top < size.height; top += block.height, by++)
        for (int left = 0, bx = 0; left < size.width; left += block.width, bx++) {
            int16_t l = INT16_MAX, h = INT16_MIN;
            const int bottom = std::min(top + block.height, size.height);
            const int right = std::min(left + block.width, size.width);
            for (int y = top; y < bottom; y++)
                for (int x = left; x < right; x++) {
                    l = std::min(l, rowAt(a, y, step)[x]);
                    h = std::max(h, rowAt(a, y, step)[x]);
                }
            rowAt(low, by, lowStep)[bx] = l;
            rowAt(high, by, highStep)[bx] = h;
            *least = std::min(*least, l);
            *most = std::max(*most, h);
        }
    return qvrOk;
}

inline qvrStatus qvriSplitRow_TIFF_16u8u_C1(const uint8_t* a, uint8_t** d, int n)
{
    uint8_t* __restrict high = d[0], * __restrict low = d[1];
    for (int i = 0; i < n; i++) {
        high[i] = a[2 * i + 1];
        low[i] = a[2 * i];
    }
    return qvrOk;
}
inline qvrStatus qvriJoinRow_TIFF_8u16u_C1(uint8_t** a, uint8_t* __restrict d, int n)
{
    const uint8_t* __restrict high = a[0], * __restrict low = a[1];
    for (int i = 0; i < n; i++) {
        d[2 * i + 1] = high[i];
        d[2 * i] = low[i];
    }
    return qvrOk;
}

} // namespace
} // namespace model

#endif
