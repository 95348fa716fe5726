// Single elements of the caller's arrays, and what happens to single numbers. Any address is allowed, so elements move
// by bytes.
#ifndef QVR_FRAME_ELEMENT_H
#define QVR_FRAME_ELEMENT_H

#include <stdint.h>

namespace {

template<class T> __attribute__((always_inline)) inline T get(const T* p, int64_t i)
{
    T x;
    __builtin_memcpy(&x, reinterpret_cast<const char*>(p) + i * static_cast<int64_t>(sizeof(T)), sizeof x);
    return x;
}
template<class T> __attribute__((always_inline)) inline void put(T* p, int64_t i, T x)
{
    __builtin_memcpy(reinterpret_cast<char*>(p) + i * static_cast<int64_t>(sizeof(T)), &x, sizeof x);
}

// 2^exponent, by its exponent field: normal numbers, and at the field's ends 0 and infinity.
inline float powerOfTwo32(int exponent)
{
    return __builtin_bit_cast(float, static_cast<uint32_t>(127 + exponent) << 23);
}
inline double powerOfTwo64(int exponent)
{
    return __builtin_bit_cast(double, static_cast<uint64_t>(1023 + exponent) << 52);
}

} // namespace

#endif
