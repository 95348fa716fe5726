#include "vector/fill.h"
#include "vector/functions.h"
#include "vector/halfwords.h"
#include "vector/shared.h"

namespace {

// Every vector offset from p must be a whole number of elements: the alignment step inside fillPlain is one only when
// p is aligned to the element.
template<FillKind kind, class T> QVR_INLINE void setElements(T value, void* dst, int len)
{
    constexpr int size = sizeof(T);
    const int64_t bytes = int64_t{len} * size;
    if (reinterpret_cast<uintptr_t>(dst) % size == 0) {
        fillBytes<kind>(dst, bytes, size, bitcast<FillLine>(splat<Vec<T, 64 / size>>(value)));
    } else {
        char* p = static_cast<char*>(dst);
        for (int64_t i = 0; i < bytes; i += size)
            store(p + i, Vec<T, 1>{value});
    }
}

} // namespace

extern "C" {

qvrStatus SLOT(qvrsSet_8u)(qvr8u val, qvr8u* pDst, int len)
{
    if (const qvrStatus status = checkPointersThenLength(len, pDst))
        return status;
    fillBytes<FillKind::bytes>(pDst, len, 1, splat<FillLine>(val));
    return qvrOk;
}

qvrStatus SLOT(qvrsSet_32s)(qvr32s val, qvr32s* pDst, int len)
{
    if (const qvrStatus status = checkPointersThenLength(len, pDst))
        return status;
    setElements<FillKind::set32>(val, pDst, len);
    return qvrOk;
}

qvrStatus SLOT(qvrsSet_32f)(qvr32f val, qvr32f* pDst, int len)
{
    if (const qvrStatus status = checkPointersThenLength(len, pDst))
        return status;
    setElements<FillKind::set32>(__builtin_bit_cast(uint32_t, val), pDst, len);
    return qvrOk;
}

qvrStatus SLOT(qvrsZero_64f)(qvr64f* pDst, int len)
{
    if (const qvrStatus status = checkPointersThenLength(len, pDst))
        return status;
    fillBytes<FillKind::bytes>(pDst, int64_t{len} * 8, 8, FillLine{});
    return qvrOk;
}

qvrStatus SLOT(ownSet_16u)(qvr16u val, qvr16u* pDst, int len)
{
    if (const qvrStatus status = checkPointersThenLength(len, pDst))
        return status;
    setElements<FillKind::words>(val, pDst, len);
    return qvrOk;
}

qvrStatus SLOT(ownZero_16u)(qvr16u* pDst, int len)
{
    if (const qvrStatus status = checkPointersThenLength(len, pDst))
        return status;
    fillBytes<FillKind::bytes>(pDst, int64_t{len} * 2, 2, FillLine{});
    return qvrOk;
}

} // extern "C"
