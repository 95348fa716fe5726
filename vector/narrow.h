// Numbers to narrower types, clamped to what those hold.
#ifndef QVR_VECTOR_NARROW_H
#define QVR_VECTOR_NARROW_H

#include "frame/element.h"
#include "frame/simd.h"

namespace {

// To single precision: the largest finite value instead of infinity. The element stands second in both: a NaN passes.
template<class V> QVR_INLINE Vec<float, lanes<V>> narrowed(V x)
{
    const V largest = splat<V>(3.4028234663852886e38);
    return convert<float>(min(largest, max(-largest, x)));
}

// v / 2^shift of a value whose floor is given, half to even; the sticky bit is bit 0 of `sticky`. There must be one bit
// of the value below the floor at least, so that 2^(shift-1) - 1 fits beside the largest floor.
template<class V> QVR_INLINE V halfEven(V floor, V sticky, int shift)
{
    const Elem<V> half = static_cast<Elem<V>>(Elem<V>{1} << (shift - 1));
    const V odd = (shiftRight(floor, shift) | sticky) & 1;
    return shiftRight(floor + odd + static_cast<Elem<V>>(half - 1), shift);
}

// 2 to the power of -scale in single precision: denormal from 127 on, 0 above 149, infinite below -127.
inline float scaleFactor32(int scale)
{
    if (scale > 149)
        return 0;
    if (scale < -127)
        return __builtin_inff();
    return scale >= 127 ? __builtin_bit_cast(float, 1u << (149 - scale)) : powerOfTwo32(-scale);
}

// What does not fit would convert to the right end, too, but not without raising the invalid flag.
template<int mode, class V> QVR_INLINE Vec<int16_t, lanes<V>> roundTo16(V x)
{
    const V clamped = max(min(x, splat<V>(32767)), splat<V>(-32768));
    if constexpr (mode == qvrRoundTowardZero) {
        return packSaturate(toIntTruncate(clamped));
    } else if constexpr (mode == qvrRoundNearest) {
        return packSaturate(toInt(clamped));
    } else {
        // With t = trunc(2 x): (t + 1) >> 1 from zero on and t >> 1 below, for truncation has taken the fraction of a
        // negative t toward zero already. Adding 0.5 to x instead would round 0.49999997 up.
        // Doubles by halves: their integers are half as wide.
        const auto halfAway = [](auto v) {
            const auto twice = toIntTruncate(v + v);
            return (twice - (twice >= 0)) >> 1;
        };
        if constexpr (sizeof(Elem<V>) == 8 && lanes<V> >= 8)
            return packSaturate(byHalves(halfAway, clamped));
        else
            return packSaturate(halfAway(clamped));
    }
}

} // namespace

#endif
