// Measures of waveforms that have one body for all processors.
#include "vector/plain.h"
#include "vector/public.h"

namespace {

// A NaN is above zero here.
int signOf(float x)
{
    return 0 > x ? -1 : !(0 >= x);
}

// Steps of at most 2 add up to at most 2^24 here, up to where a single holds every integer.
constexpr int64_t kExactPairs = int64_t{1} << 23;

constexpr int kMaxPeakSource = 65535;
constexpr int kMaxPeakWindow = 127;

} // namespace

extern "C" {

// The sum is a single: behind the pairs that integers can count, it grows with a single's roundings.
QVR_EXPORTED qvrStatus Morven_qvrsSignChangeRate_Count0_32f(const qvr32f* pSrc, int len, qvr32f* pResult)
{
    if (pSrc == nullptr || pResult == nullptr)
        return qvrErrNullPointer;
    if (len < 1)
        return qvrErrBadSize;
    const int64_t exactEnd = len - 1 < kExactPairs ? len : kExactPairs + 1;
    int32_t steps = 0;
    int64_t i = 1;
    for (; i < exactEnd; i++) {
        const int step = signOf(get(pSrc, i)) - signOf(get(pSrc, i - 1));
        steps += step < 0 ? -step : step;
    }
    float sum = static_cast<float>(steps);
    for (; i < len; i++) {
        const int step = signOf(get(pSrc, i)) - signOf(get(pSrc, i - 1));
        sum += static_cast<float>(step < 0 ? -step : step);
    }
    put(pResult, 0, sum * 0.5f);
    return qvrOk;
}

QVR_EXPORTED qvrStatus Morven_qvrsCompensateOffset_32f(const qvr32f* pSrc, qvr32f* pDst, int len, qvr32f* pLast,
                                                       qvr32f prevValue, qvr32f factor)
{
    if (pSrc == nullptr || pDst == nullptr || pLast == nullptr)
        return qvrErrNullPointer;
    if (len < 1)
        return qvrErrBadSize;
    float before = get(pSrc, 0);
    float y = prevValue * factor;
    put(pDst, 0, y);
    for (int64_t i = 1; i < len; i++) {
        const float x = get(pSrc, i);
        y = y * factor + (x - before);
        before = x;
        put(pDst, i, y);
    }
    put(pLast, 0, get(pSrc, len));
    return qvrOk;
}

QVR_EXPORTED qvrStatus Morven_qvrsCompensateOffset_32f_I(qvr32f* pSrcDst, int len, qvr32f* pLast, qvr32f prevValue,
                                                         qvr32f factor)
{
    if (pSrcDst == nullptr || pLast == nullptr)
        return qvrErrNullPointer;
    if (len < 1)
        return qvrErrBadSize;
    float before = get(pSrcDst, 0);
    float y = prevValue * factor + (before - get(pLast, 0));
    put(pSrcDst, 0, y);
    for (int64_t i = 1; i < len; i++) {
        const float x = get(pSrcDst, i);
        y = (x - y) + before * factor;
        before = x;
        put(pSrcDst, i, y);
    }
    put(pLast, 0, before);
    return qvrOk;
}

// The arguments are judged; there is nothing else to it.
QVR_EXPORTED qvrStatus Morven_qvrsFindPeaks_32f8u(const qvr32f* pSrc, qvr8u* pDstPeaks, int len, int searchSize,
                                                  int movingAvgSize)
{
    if (pSrc == nullptr || pDstPeaks == nullptr)
        return qvrErrNullPointer;
    if (len < 1 || len > kMaxPeakSource)
        return qvrErrBadCount;
    if (searchSize < 1 || searchSize > kMaxPeakWindow || movingAvgSize < 1 || movingAvgSize > kMaxPeakWindow)
        return qvrErrBadSize;
    return qvrOk;
}

} // extern "C"
