// Numbers to narrower types, clamped to what those hold.
#ifndef QVR_VECTOR_NARROW_H
#define QVR_VECTOR_NARROW_H

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

} // namespace

#endif
