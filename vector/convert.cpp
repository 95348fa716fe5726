// Conversions between element types.
#include "frame/element.h"
#include "vector/functions.h"
#include "vector/loops.h"
#include "vector/narrow.h"
#include "vector/shared.h"

namespace {

// Lanes to a block: two registers of the wider type, or what fills one register of a 16-bit destination.
constexpr int kBlock32 = 2 * kLanes<float>;
constexpr int kBlock64 = 2 * kLanes<double>;
constexpr int kBlock16 = kLanes<int16_t>;

// The same from 16 bits: with AVX a quarter register is widened as it is read, where the upper quarter of a loaded half
// would have to be moved down first.
constexpr int kFrom16To64 = kAvx ? kLanes<double> : kBlock64;

// 2 to the power of -scale, for a scale whose power is a normal double.
double scaleFactor64(int scale)
{
    const int clamped = scale < -1008 ? -1008 : scale > 1022 ? 1022 : scale;
    return powerOfTwo64(-clamped);
}

template<int mode, class T>
__attribute__((noinline)) void scaledTo16(const T* src, int16_t* dst, Index n, T factor, bool scale)
{
    if (scale)
        convertBlocks<kBlock16>(src, dst, n, [=](auto x) { return roundTo16<mode>(x * factor); });
    else
        convertBlocks<kBlock16>(src, dst, n, [](auto x) { return roundTo16<mode>(x); });
}

template<class T> QVR_INLINE qvrStatus to16(const T* pSrc, qvr16s* pDst, int len, int rndMode, T factor, bool scale)
{
    if (const qvrStatus status = checkPointersThenLength(len, pSrc, pDst))
        return status;
    if (rndMode == qvrRoundTowardZero)
        scaledTo16<qvrRoundTowardZero>(pSrc, pDst, len, factor, scale);
    else if (rndMode == qvrRoundNearest)
        scaledTo16<qvrRoundNearest>(pSrc, pDst, len, factor, scale);
    else
        scaledTo16<qvrRoundHalfAway>(pSrc, pDst, len, factor, scale);
    return qvrOk;
}

} // namespace

extern "C" {

qvrStatus SLOT(qvrsConvert_16s32f)(const qvr16s* pSrc, qvr32f* pDst, int len)
{
    return conversion<kBlock32>(pSrc, pDst, len, [](auto x) { return convert<float>(x); });
}

qvrStatus SLOT(qvrsConvert_32f64f)(const qvr32f* pSrc, qvr64f* pDst, int len)
{
    return conversion<kBlock64>(pSrc, pDst, len, [](auto x) { return convert<double>(x); });
}

qvrStatus SLOT(qvrsConvert_64f32f)(const qvr64f* pSrc, qvr32f* pDst, int len)
{
    return conversion<kBlock64>(pSrc, pDst, len, [](auto x) { return narrowed(x); });
}

qvrStatus SLOT(qvrsConvert_32s16s)(const qvr32s* pSrc, qvr16s* pDst, int len)
{
    return conversion<kBlock32>(pSrc, pDst, len, [](auto x) { return packSaturate(x); });
}

qvrStatus SLOT(qvrsConvert_16s64f_Sfs)(const qvr16s* pSrc, qvr64f* pDst, int len, int scaleFactor)
{
    const double factor = scaleFactor64(scaleFactor);
    return conversion<kFrom16To64>(pSrc, pDst, len,
                                   [factor](auto x) { return convert<double>(convert<int32_t>(x)) * factor; });
}

qvrStatus SLOT(qvrsConvert_32f16s_Sfs)(const qvr32f* pSrc, qvr16s* pDst, int len, int rndMode, int scaleFactor)
{
    return to16(pSrc, pDst, len, rndMode, scaleFactor32(scaleFactor), scaleFactor != 0);
}

qvrStatus SLOT(qvrsConvert_64f16s_Sfs)(const qvr64f* pSrc, qvr16s* pDst, int len, int rndMode, int scaleFactor)
{
    return to16(pSrc, pDst, len, rndMode, scaleFactor64(scaleFactor), scaleFactor != 0);
}

} // extern "C"
