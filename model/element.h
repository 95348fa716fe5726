// What several models need of single numbers: clamping, scaling, rounding, exact sums.
#ifndef QVR_MODEL_ELEMENT_H
#define QVR_MODEL_ELEMENT_H

#include <cmath>
#include <cstdint>
#include <limits>

#include "frame/types.h"

namespace model {
namespace {

using Wide = __int128;

// A NaN stays.
template<class T> T clamped(T x, double most)
{
    return x > T(most) ? T(most) : x < T(-most) ? T(-most) : x;
}
template<class T> T clampedTo16(T x)
{
    return x > T(32767) ? T(32767) : x < T(-32768) ? T(-32768) : x;
}

// 0 clears, 1 leaves the bits alone.
template<class T> T timesConstant(T x, T c)
{
    return c == 1 ? x : c == 0 ? T(0) : x * c;
}
// By a zero of either sign: an infinity of the dividend's sign, or 0xFFC00000.
inline float quotient(float x, float divisor)
{
    if (divisor != 0)
        return x / divisor;
    const float infinity = std::numeric_limits<float>::infinity();
    return x > 0 ? infinity : x < 0 ? -infinity : -std::numeric_limits<float>::quiet_NaN();
}

// 2 to the power of -scale.
inline double powerOfTwo64(int scale)
{
    return std::ldexp(1.0, -(scale < -1008 ? -1008 : scale > 1022 ? 1022 : scale));
}
inline float powerOfTwo32(int scale)
{
    return scale > 149 ? 0 : scale < -127 ? std::numeric_limits<float>::infinity() : std::ldexp(1.0f, -scale);
}

// p / q, half to even.
inline Wide divideHalfEven(Wide p, Wide q)
{
    const Wide floor = p / q - (p % q < 0 ? 1 : 0), twice = 2 * (p - floor * q);
    return floor + (twice > q || (twice == q && (floor & 1)) ? 1 : 0);
}
inline int32_t saturated32(Wide x)
{
    return static_cast<int32_t>(x > INT32_MAX ? INT32_MAX : x < INT32_MIN ? INT32_MIN : x);
}
template<class T> Wide exactSum(const T* a, int n)
{
    Wide sum = 0;
    for (int i = 0; i < n; i++)
        sum += a[i];
    return sum;
}

// 16-bit results: the integers sum(i) over 2^scale, half to even, saturated. Signed types and unsigned ones.
template<class T, class Sum> qvrStatus eachScaled(Sum sum, T* __restrict d, int n, int scale)
{
    constexpr int low = T(-1) < 0 ? -32768 : 0, high = low + 65535;
    const auto saturated = [](auto x) { return static_cast<T>(x < low ? low : x > high ? high : x); };
    if (scale == 0)
        for (int i = 0; i < n; i++)
            d[i] = saturated(sum(i));
    else if (scale > 30)
        for (int i = 0; i < n; i++)
            d[i] = 0;
    else if (scale > 0) // half a sum of two elements fits
        for (int i = 0; i < n; i++) {
            const int x = sum(i);
            d[i] = static_cast<T>((x + (1 << (scale - 1)) - 1 + ((x >> scale) & 1)) >> scale);
        }
    else if (scale >= -15)
        for (int i = 0; i < n; i++)
            d[i] = saturated(int64_t{sum(i)} * (1 << -scale));
    else
        for (int i = 0; i < n; i++)
            d[i] = sum(i) == 0 ? T(0) : static_cast<T>(sum(i) > 0 ? high : low);
    return qvrOk;
}

} // namespace
} // namespace model

#endif
