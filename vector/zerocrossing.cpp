// Crossings of zero, by three definitions, as counts over neighbouring pairs. A pair behind the end is two zeros, which
// no definition counts.
#include "vector/fold.h"
#include "vector/functions.h"

namespace {

template<class Step> QVR_INLINE int64_t countPairs(const float* src, Index pairs, const Step& step)
{
    // A lane counts at most 2 in each of its pairs, of which there are fewer than 2^29.
    constexpr int B = kLanes<float>;
    using Acc = Vec<int32_t, B>;
    return sumLanes(convert<int64_t>(sumVectors<B, Acc>(pairs, step, src, src + 1)));
}

// Products are in single precision: one that underflows to zero is no crossing.
int64_t countProducts(const float* src, Index pairs)
{
    return countPairs(src, pairs, [](auto acc, auto x, auto next) { return acc - (next * x < decltype(x){}); });
}

int64_t countSignBits(const float* src, Index pairs)
{
    return countPairs(src, pairs, [](auto acc, auto x, auto next) {
        return acc + bitcast<decltype(acc)>((bits(x) ^ bits(next)) >> 31);
    });
}

// With the signs -1, 0, +1, the step between two is the number of the two conditions "above 0" and "below 0" that
// change.
int64_t countSignSteps(const float* src, Index pairs)
{
    return countPairs(src, pairs, [](auto acc, auto x, auto next) {
        const decltype(x) zero{};
        return acc - ((x > zero) ^ (next > zero)) - ((x < zero) ^ (next < zero));
    });
}

} // namespace

extern "C" qvrStatus SLOT(qvrsZeroCrossing_32f)(const qvr32f* pSrc, int len, qvr32f* pResult, int zcType)
{
    if (anyNull(pSrc, pResult))
        return qvrErrNullPointer;
    if (len == 0)
        return qvrErrBadSize;
    if (zcType != qvrZcProduct && zcType != qvrZcSignBit && zcType != qvrZcSignStep)
        return qvrErrBadSelector;
    const Index pairs = len < 2 ? 0 : len - 1;
    float result;
    if (zcType == qvrZcProduct)
        result = static_cast<float>(countProducts(pSrc, pairs));
    else if (zcType == qvrZcSignBit)
        result = static_cast<float>(countSignBits(pSrc, pairs));
    else
        result = static_cast<float>(countSignSteps(pSrc, pairs)) * 0.5f;
    put(pResult, 0, result);
    return qvrOk;
}
