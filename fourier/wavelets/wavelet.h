// The records behind the wavelet states, and what both directions share. A level is a pair of filters and a change of
// rate by two (Mallat, IEEE Trans. Pattern Anal. 11, 1989).
#ifndef QVR_FOURIER_WAVELET_H
#define QVR_FOURIER_WAVELET_H

#include "fourier/sums/direct.h"
#include "frame/memory.h"
#include "frame/status.h"

namespace {

constexpr int32_t kForwardTag = 41, kInverseTag = 50;

// Results of one pass through a channel's scratch memory, and the vectors of results that are summed at once.
constexpr Index kBlock = 256;
constexpr int kSums = 4;
// Values behind a stretch that the last vectors look at.
constexpr Index kSlack = kSums * kLanes<float>;

// Values of scratch memory: a stretch of the stream and its two halves; a stretch. Refilling a line takes a block.
constexpr Index forwardScratch(Index taps)
{
    const Index half = kBlock + (taps - taps / 2);
    return 4 * half + 2 * kSlack;
}
constexpr Index inverseScratch(Index evenTaps)
{
    return kBlock + evenTaps + kSlack;
}

// The last `len` values, each twice, so that they stand in a row behind pos.
struct DelayLine {
    float* pData;
    int32_t len;
    int32_t pos;

    const float* oldest() const { return pData + pos; }
    void push(float x)
    {
        pData[pos] = pData[pos + len] = x;
        pos = pos + 1 < len ? pos + 1 : 0;
    }
    // All of it, oldest first.
    void set(const float* values)
    {
        copyValues(values, pData, len);
        copyValues(values, pData + len, len);
        pos = 0;
    }
};

struct Taps {
    int32_t tapsLen;
    float* pTaps;
    float* pReversed;
};

struct ForwardFir {
    Taps* pTaps;
    DelayLine* pRing;
    int32_t tapsLen;
    float* pReversedTaps;
    uint32_t phase;
};

struct InverseFir {
    Taps* pTaps;
    DelayLine* pRing;
    int32_t tapsLen;
    uint32_t phase;
    float* pEvenTaps; // taps 0, 2, 4, .. last one first
    int32_t evenLen;
    float* pOddTaps; // taps 1, 3, 5, .. likewise; null if there is none
    int32_t oddLen;
};

template<class Fir> struct Channel {
    Fir* pFir;
    DelayLine* pOffsetLine;
    int32_t dlyLen;
    float* pScratch;
};
using ForwardChannel = Channel<ForwardFir>;
using InverseChannel = Channel<InverseFir>;

template<class Fir> struct State {
    int32_t tag;
    Channel<Fir>* pLowChannel;
    Channel<Fir>* pHighChannel;
    void* pShared;
    int32_t sharedLen;
};

} // namespace

struct qvrsWTFwdState_32f : State<ForwardFir> {};
struct qvrsWTInvState_32f : State<InverseFir> {};

namespace {

constexpr int32_t tagOf(const qvrsWTFwdState_32f*)
{
    return kForwardTag;
}
constexpr int32_t tagOf(const qvrsWTInvState_32f*)
{
    return kInverseTag;
}

inline bool validLine(const DelayLine* line)
{
    return line->pData != nullptr && line->len >= 1 && line->pos >= 0 && line->pos < line->len;
}
inline bool hasTaps(const ForwardFir& fir)
{
    return fir.pReversedTaps != nullptr;
}
inline bool hasTaps(const InverseFir& fir)
{
    return fir.pEvenTaps != nullptr;
}

template<class Fir> inline bool validChannel(const Channel<Fir>* channel)
{
    if (channel == nullptr || channel->pFir == nullptr)
        return false;
    const Fir& fir = *channel->pFir;
    return fir.pRing != nullptr && validLine(fir.pRing) && hasTaps(fir) && fir.tapsLen >= 1 && fir.phase <= 1 &&
           (channel->pOffsetLine == nullptr || validLine(channel->pOffsetLine));
}

// Null, then whatever shows that this is no state of the direction.
template<class S> inline qvrStatus checkWavelet(const S* state)
{
    if (const qvrStatus status = checkState(state, static_cast<uint32_t>(tagOf(state))))
        return status;
    const bool shared = (state->sharedLen != 0) == (state->pShared != nullptr) && state->sharedLen >= 0;
    return validChannel(state->pLowChannel) && validChannel(state->pHighChannel) && shared ? qvrOk : qvrErrBadContext;
}

// The stream that a channel's filter sees: what the ring holds, what waits in the offset line, the new values.
template<class Fir> struct Stream {
    const Channel<Fir>& channel;
    const float* input;

    Index ring() const { return channel.pFir->pRing->len; }
    Index line() const { return channel.pOffsetLine != nullptr ? channel.pOffsetLine->len : 0; }

    // Values first .. first + n - 1, counted from the oldest in the ring, to dst.
    void copy(Index first, Index n, float* dst) const
    {
        const auto piece = [&](const float* values, Index begin, Index size) {
            const Index from = greatest(first, begin), to = least(first + n, begin + size);
            if (from < to)
                copyValues(values + (from - begin), dst + (from - first), to - from);
        };
        piece(channel.pFir->pRing->oldest(), 0, ring());
        if (line() > 0)
            piece(channel.pOffsetLine->oldest(), ring(), line());
        if (first + n > ring() + line())
            piece(input, ring() + line(), first + n - ring() - line());
    }

    // Moves the lines on by n values.
    void advance(Index n) const;
};

// New content of a delay line: it takes n values of the stream that begins with its own `len`.
template<class Read> inline void refill(DelayLine& line, Index n, float* scratch, const Read& read)
{
    if (n >= line.len) {
        // Nothing stays, and nothing is read of the line itself.
        for (Index i = 0; i < line.len; i += kBlock) {
            const Index part = least(kBlock, line.len - i);
            read(n + i, part, scratch);
            copyValues(scratch, line.pData + i, part);
            copyValues(scratch, line.pData + line.len + i, part);
        }
        line.pos = 0;
        return;
    }
    for (Index i = 0; i < n; i += kBlock) {
        const Index part = least(kBlock, n - i);
        read(line.len + i, part, scratch);
        for (Index j = 0; j < part; j++)
            line.push(scratch[j]);
    }
}

// The ring first, while the line still holds what comes into it.
template<class Fir> inline void Stream<Fir>::advance(Index n) const
{
    refill(*channel.pFir->pRing, n, channel.pScratch,
           [&](Index first, Index count, float* dst) { copy(first, count, dst); });
    if (line() > 0)
        refill(*channel.pOffsetLine, n, channel.pScratch,
               [&](Index first, Index count, float* dst) { copy(ring() + first, count, dst); });
}

// ---- Sums -----------------------------------------------------------------------------------------------------------

// Sums in double precision of products rounded to single, a result in each lane.
struct DoubleSums {
    Vec<double, kLanes<float> / 2> low[kSums], high[kSums];

    // Adds taps[i] * x[n - i] for lanes n; the taps stand last one first, `step` apart.
    QVR_INLINE void add(const float* reversed, Index count, Index step, const float* x)
    {
        using F = Full<float>;
        constexpr int W = kLanes<float>;
        if (count == 0)
            return;
        const float* tap = reversed + (count - 1) * step;
        for (Index i = 0; i < count; i++, tap -= step, x--) {
            const F s = splat<F>(*tap);
#pragma clang loop unroll(full)
            for (int v = 0; v < kSums; v++) {
                const F p = s * load<F>(x + v * W);
                low[v] += convert<double>(lo(p));
                high[v] += convert<double>(hi(p));
            }
        }
    }
    QVR_INLINE Full<float> rounded(int v) const { return concat(convert<float>(low[v]), convert<float>(high[v])); }
};

// ---- Delay arrays ---------------------------------------------------------------------------------------------------

// Of a delay array the first `count` values are the newest of the ring, then the offset line follows.
template<class Fir> inline void setDelays(Channel<Fir>& channel, Index count, const float* values)
{
    DelayLine& ring = *channel.pFir->pRing;
    if (count < ring.len)
        for (Index i = 0; i < count; i++)
            ring.push(get(values, i));
    else
        ring.set(values);
    if (channel.pOffsetLine != nullptr)
        channel.pOffsetLine->set(values + greatest(count, 0));
}
template<class Fir> inline void getDelays(const Channel<Fir>& channel, Index count, float* values)
{
    const DelayLine& ring = *channel.pFir->pRing;
    if (count > 0)
        copyValues(ring.oldest() + ring.len - count, values, count);
    if (channel.pOffsetLine != nullptr)
        copyValues(channel.pOffsetLine->oldest(), values + greatest(count, 0), channel.pOffsetLine->len);
}
inline Index ringDelays(const ForwardChannel& channel)
{
    return Index{channel.pFir->tapsLen} - channel.pFir->phase - 1;
}
inline Index ringDelays(const InverseChannel& channel)
{
    const Index count = channel.dlyLen - (channel.pOffsetLine != nullptr ? channel.pOffsetLine->len : 0);
    return least(greatest(count, 0), channel.pFir->pRing->len);
}

} // namespace

#endif
