// Images as rows: the check of pointers and size, and the start of a row.
#ifndef QVR_IMAGE_ROWS_H
#define QVR_IMAGE_ROWS_H

#include "vector/loops.h"

namespace {

template<class... P> inline qvrStatus checkPointersThenSize(qvriSize size, const P*... pointers)
{
    if (anyNull(pointers...))
        return qvrErrNullPointer;
    return size.width < 1 || size.height < 1 ? qvrErrBadSize : qvrOk;
}

template<class T> QVR_INLINE const T* rowAt(const T* p, Index y, Index step)
{
    return reinterpret_cast<const T*>(reinterpret_cast<const char*>(p) + y * step);
}
template<class T> QVR_INLINE T* rowAt(T* p, Index y, Index step)
{
    return reinterpret_cast<T*>(reinterpret_cast<char*>(p) + y * step);
}

} // namespace

#endif
