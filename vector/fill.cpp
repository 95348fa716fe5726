#include "vector/fill.h"

namespace {

// Every vector offset from p must be a whole number of elements: the alignment step inside fillPlain is one only when
// p is aligned to the element.
QVR_INLINE void set32(uint32_t value, void* dst, int len)
{
    const FillLine line = bitcast<FillLine>(splat<Vec<uint32_t, 16>>(value));
    const int64_t bytes = int64_t{len} * 4;
    if (reinterpret_cast<uintptr_t>(dst) % 4 == 0) {
        fillBytes<FillKind::set32>(dst, bytes, 4, line);
    } else {
        char* p = static_cast<char*>(dst);
        for (int64_t i = 0; i < bytes; i += 4)
            store(p + i, Vec<uint32_t, 1>{value});
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
    set32(static_cast<uint32_t>(val), pDst, len);
    return qvrOk;
}

qvrStatus SLOT(qvrsSet_32f)(qvr32f val, qvr32f* pDst, int len)
{
    if (const qvrStatus status = checkPointersThenLength(len, pDst))
        return status;
    set32(__builtin_bit_cast(uint32_t, val), pDst, len);
    return qvrOk;
}

qvrStatus SLOT(qvrsZero_64f)(qvr64f* pDst, int len)
{
    if (const qvrStatus status = checkPointersThenLength(len, pDst))
        return status;
    fillBytes<FillKind::bytes>(pDst, int64_t{len} * 8, 8, FillLine{});
    return qvrOk;
}

} // extern "C"
