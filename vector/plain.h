// Access to the caller's arrays in functions that are compiled once: any address is allowed, so elements move by bytes.
#ifndef QVR_VECTOR_PLAIN_H
#define QVR_VECTOR_PLAIN_H

#include <stdint.h>
#include <string.h>

#include "morvenqvr.h"

#define QVR_EXPORTED __attribute__((visibility("default")))

namespace {

template<class T> inline T elementAt(const T* p, int64_t i)
{
    T x;
    memcpy(&x, reinterpret_cast<const char*>(p) + i * static_cast<int64_t>(sizeof(T)), sizeof x);
    return x;
}
template<class T> inline void putElement(T* p, int64_t i, T x)
{
    memcpy(reinterpret_cast<char*>(p) + i * static_cast<int64_t>(sizeof(T)), &x, sizeof x);
}

} // namespace

#endif
