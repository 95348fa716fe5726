// One level of the wavelet transform, both directions, block by block.
//
// Forward. Result n needs s[2n + phase - k] for every tap k. A stretch of the stream that ends with s[2n + phase] of
// the block's last result is dealt into its values of even and of odd place; even taps run over those that end with
// s[2n + phase], odd taps over the others, both backwards and without gaps.
// Inverse. With the newest value x[m]: even taps over x[m], x[m - 1], .. give the first result of the pair, odd taps
// the second; with phase 1 the odd taps' result of the pair before comes first.
#include "fourier/wavelets/wavelet.h"
#include "fourier/functions.h"

namespace {

// Pairs at p to the two arrays.
void deal(const float* p, Index pairs, float* first, float* second)
{
    using F = Full<float>;
    constexpr int W = kLanes<float>;
    Index j = 0;
    for (; j + W <= pairs; j += W) {
        F a, b;
        loadComplex(p + 2 * j, a, b);
        store(first + j, a);
        store(second + j, b);
    }
    for (; j < pairs; j++) {
        first[j] = get(p, 2 * j);
        second[j] = get(p, 2 * j + 1);
    }
}

void forwardChannel(const ForwardChannel& channel, const float* src, float* dst, Index count)
{
    using F = Full<float>;
    constexpr int W = kLanes<float>;
    const ForwardFir& fir = *channel.pFir;
    const Stream<ForwardFir> stream = {channel, src};
    const Index taps = fir.tapsLen, evenTaps = taps - taps / 2, oddTaps = taps / 2;
    const Index past = stream.ring() + stream.line();
    float *const raw = channel.pScratch, *const odds = raw + 2 * (kBlock + evenTaps),
                 *const evens = odds + kBlock + evenTaps + kSlack;
    for (Index n = 0; n < count; n += kBlock) {
        const Index results = least(kBlock, count - n), pairs = results + evenTaps - 1;
        // The stretch's first value, counted from the oldest in the ring.
        const Index first = stream.ring() + 2 * (n - evenTaps) + 1 + fir.phase;
        if (first >= past) {
            deal(src + (first - past), pairs, odds, evens);
        } else {
            stream.copy(first, 2 * pairs, raw);
            deal(raw, pairs, odds, evens);
        }
        setZero(odds + pairs, kSlack);
        setZero(evens + pairs, kSlack);
        for (Index i = 0; i < results; i += kSums * W) {
            DoubleSums sums = {};
            const Index at = i + evenTaps - 1;
            sums.add(fir.pReversedTaps + (taps & 1 ? 0 : 1), evenTaps, 2, evens + at);
            sums.add(fir.pReversedTaps + (taps & 1 ? 1 : 0), oddTaps, 2, odds + at);
            const Index left = results - i;
            for (int v = 0; v < kSums; v++)
                if (const F y = sums.rounded(v); left >= (v + 1) * W)
                    store(dst + n + i + v * W, y);
                else if (left > v * W)
                    storeFirst(dst + n + i + v * W, y, static_cast<int>(left - v * W));
        }
    }
    stream.advance(2 * count);
}

template<bool Add> void inverseChannel(const InverseChannel& channel, const float* src, float* dst, Index count)
{
    using F = Full<float>;
    constexpr int W = kLanes<float>;
    const InverseFir& fir = *channel.pFir;
    const Stream<InverseFir> stream = {channel, src};
    const Index ring = stream.ring(), past = ring + stream.line();
    for (Index m = 0; m < count; m += kBlock) {
        const Index pairs = least(kBlock, count - m);
        // x[0] is the first new value; the ring's length of older ones stands before it.
        const float* x;
        if (m >= past && m + ring + pairs + kSlack <= past + count) {
            x = src + (m - past) + ring;
        } else {
            stream.copy(m, ring + pairs, channel.pScratch);
            setZero(channel.pScratch + ring + pairs, kSlack);
            x = channel.pScratch + ring;
        }
        for (Index i = 0; i < pairs; i += kSums * W) {
            DoubleSums even = {}, odd = {};
            even.add(fir.pEvenTaps, fir.evenLen, 1, x + i);
            odd.add(fir.pOddTaps, fir.oddLen, 1, x + i - fir.phase);
            for (int v = 0; v < kSums; v++) {
                const Index left = 2 * (pairs - i - v * W);
                if (left <= 0)
                    break;
                const F e = even.rounded(v), o = odd.rounded(v);
                const F first = fir.phase != 0 ? o : e, second = fir.phase != 0 ? e : o;
                float* out = dst + 2 * (m + i + v * W);
                F y[2] = {zipLo(first, second), zipHi(first, second)};
                for (int half = 0; half < 2; half++) {
                    const int lanesLeft = static_cast<int>(least(W, left - half * W));
                    if (lanesLeft <= 0)
                        break;
                    float* p = out + half * W;
                    if (lanesLeft == W) {
                        store(p, Add ? load<F>(p) + y[half] : y[half]);
                    } else {
                        storeFirst(p, Add ? loadFirst<F>(p, lanesLeft) + y[half] : y[half], lanesLeft);
                    }
                }
            }
        }
    }
    stream.advance(count);
}

} // namespace

extern "C" qvrStatus SLOT(qvrsWTFwd_32f)(const qvr32f* pSrc, qvr32f* pDstLow, qvr32f* pDstHigh, int dstLen,
                                         qvrsWTFwdState_32f* pState)
{
    if (const qvrStatus status = checkWavelet(pState))
        return status;
    if (const qvrStatus status = checkPointersThenLength(dstLen, pSrc, pDstLow, pDstHigh))
        return status;
    forwardChannel(*pState->pLowChannel, pSrc, pDstLow, dstLen);
    forwardChannel(*pState->pHighChannel, pSrc, pDstHigh, dstLen);
    return qvrOk;
}

extern "C" qvrStatus SLOT(qvrsWTInv_32f)(const qvr32f* pSrcLow, const qvr32f* pSrcHigh, int srcLen, qvr32f* pDst,
                                         qvrsWTInvState_32f* pState)
{
    if (const qvrStatus status = checkWavelet(pState))
        return status;
    if (const qvrStatus status = checkPointersThenLength(srcLen, pSrcLow, pSrcHigh, pDst))
        return status;
    inverseChannel<false>(*pState->pLowChannel, pSrcLow, pDst, srcLen);
    inverseChannel<true>(*pState->pHighChannel, pSrcHigh, pDst, srcLen);
    return qvrOk;
}
