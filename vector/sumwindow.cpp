// Sums over a window that slides along 16-bit samples, kept as a running float sum.
//
// The update is w + (entering - leaving), with a difference of integers. It is exact as long as everything stays within
// 2^24, and then a block of updates is its integer prefix sums. A step changes the sum by at most 65535, so a sum far
// enough below 2^24 vouches for a whole block; nearer to the limit, the updates are made one by one, each with its
// rounding. Rounding down gives an exact zero the sign that integers do not have, so in that mode every update is made
// one by one too.
#include "frame/mxcsr.h"
#include "vector/fold.h"
#include "vector/functions.h"

namespace {

constexpr int kBlock = 32;
constexpr float kExactBelow = 16777216.0f - kBlock * 65536.0f;
constexpr uint32_t kRoundDown = 0x2000;

template<class V> QVR_INLINE auto widen(const int16_t* src)
{
    return convert<int32_t>(load<Vec<int16_t, lanes<V>>>(src));
}

// Eight accumulators of one vector each, folded pairwise, then lane by lane halves first; what does not fill them is
// added one by one. Windows below 8 vectors, which are 32 elements with SSE and 64 with AVX, have that one sum alone.
QVR_INLINE float firstWindow(const int16_t* src, Index mask)
{
    using V = Full<float>;
    constexpr int N = kLanes<float>;
    float w = 0;
    Index i = 0;
    if (mask >= 8 * N) {
        V of[8] = {};
        for (; i + 8 * N <= mask; i += 8 * N)
#pragma unroll
            for (int k = 0; k < 8; k++)
                of[k] += convert<float>(widen<V>(src + i + k * N));
#pragma unroll
        for (int step = 1; step < 8; step *= 2)
#pragma unroll
            for (int k = 0; k < 8; k += 2 * step)
                of[k] += of[k + step];
        w = sumLanes(of[0]);
    }
    for (; i < mask; i++)
        w += get(src, i);
    return w;
}

// Outputs i to i + kBlock - 1 from the exact sum w; returns the sum behind them.
QVR_INLINE int32_t exactBlock(const int16_t* leaving, const int16_t* entering, float* dst, int32_t w)
{
    using V = Full<int32_t>;
    constexpr int N = kLanes<int32_t>;
#pragma unroll
    for (int k = 0; k < kBlock; k += N) {
        const V change = widen<V>(entering + k) - widen<V>(leaving + k);
        const V sums = prefixSums(change);
        store(dst + k, convert<float>(sums - change + w));
        w += sums[N - 1];
    }
    return w;
}

} // namespace

extern "C" qvrStatus SLOT(qvrsSumWindow_16s32f)(const qvr16s* pSrc, qvr32f* pDst, int len, int maskSize)
{
    if (const qvrStatus status = checkPointersThenLength(len, pSrc, pDst))
        return status;
    if (maskSize < 1)
        return qvrErrBadWindowLength;
    const Index n = len, mask = maskSize;
    const bool integers = (readMxcsr() & kMxcsrRounding) != kRoundDown;
    float w = firstWindow(pSrc, mask);
    Index i = 0;
    while (i < n - 1) {
        if (integers) {
            while (i + kBlock < n && __builtin_fabsf(w) <= kExactBelow) {
                w = static_cast<float>(exactBlock(pSrc + i, pSrc + i + mask, pDst + i, static_cast<int32_t>(w)));
                i += kBlock;
            }
        }
        const Index end = n - 1 - i < kBlock ? n - 1 : i + kBlock;
        for (; i < end; i++) {
            store(pDst + i, Vec<float, 1>{w});
            w += static_cast<float>(get(pSrc, i + mask) - get(pSrc, i));
        }
    }
    store(pDst + n - 1, Vec<float, 1>{w});
    return qvrOk;
}
