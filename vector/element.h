// Single elements of the caller's arrays. Any address is allowed, so they move by bytes.
#ifndef QVR_VECTOR_ELEMENT_H
#define QVR_VECTOR_ELEMENT_H

#include <stdint.h>

namespace {

template<class T> __attribute__((always_inline)) inline T elementAt(const T* p, int64_t i)
{
    T x;
    __builtin_memcpy(&x, reinterpret_cast<const char*>(p) + i * static_cast<int64_t>(sizeof(T)), sizeof x);
    return x;
}
template<class T> __attribute__((always_inline)) inline void putElement(T* p, int64_t i, T x)
{
    __builtin_memcpy(reinterpret_cast<char*>(p) + i * static_cast<int64_t>(sizeof(T)), &x, sizeof x);
}

} // namespace

#endif
