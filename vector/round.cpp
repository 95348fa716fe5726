// Rounding to integers kept as floats.
#include "frame/mxcsr.h"
#include "vector/functions.h"
#include "vector/loops.h"

namespace {

enum class Toward { plus, minus };

// Below SSE4.1: truncation for magnitudes under 2^23, where it fits an int32, then a step where it went the wrong way.
// Larger magnitudes are integers already and NaN stays; adding zero makes a signalling NaN quiet, as the instruction
// does. The sign of the element goes back on a zero result.
template<Toward to, class V> QVR_INLINE V roundByTruncation(V x)
{
    constexpr uint32_t sign = 0x80000000;
    const Mask<V> small = abs(x) < splat<V>(0x1p23f);
    const V t = convert<float>(toIntTruncate(small ? x : V{}));
    const V one = splat<V>(1);
    V stepped;
    if constexpr (to == Toward::plus)
        stepped = t < x ? t + one : t;
    else
        stepped = t > x ? t - one : t;
    const V signedResult = bitcast<V>(bits(stepped) | (bits(x) & sign));
    return small ? signedResult : x + V{};
}

template<Toward to> __attribute__((noinline)) void roundArray(const float* src, float* dst, Index n)
{
    mapElements(
        dst, n,
        [](auto x) {
            if constexpr (!kSse41)
                return roundByTruncation<to>(x);
            else if constexpr (to == Toward::plus)
                return __builtin_elementwise_ceil(x);
            else
                return __builtin_elementwise_floor(x);
        },
        src);
}

template<Toward to> QVR_INLINE qvrStatus rounded(const qvr32f* pSrc, qvr32f* pDst, int len)
{
    if (const qvrStatus status = checkLengthThenPointers(len, pSrc, pDst))
        return status;
    const uint32_t word = enterQuiet();
    roundArray<to>(pSrc, pDst, len);
    leaveQuiet(word);
    return qvrOk;
}

} // namespace

extern "C" qvrStatus SLOT(qvrsCeil_32f)(const qvr32f* pSrc, qvr32f* pDst, int len)
{
    return rounded<Toward::plus>(pSrc, pDst, len);
}

extern "C" qvrStatus SLOT(qvrsFloor_32f)(const qvr32f* pSrc, qvr32f* pDst, int len)
{
    return rounded<Toward::minus>(pSrc, pDst, len);
}
