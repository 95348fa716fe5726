// Wavelet states: creation, release, delay arrays.
#include "fourier/functions.h"
#include "fourier/wavelets/wavelet.h"
#include "frame/arena.h"

namespace {

DelayLine* takeLine(Arena& arena, Index len)
{
    DelayLine* line = arena.take<DelayLine>(1);
    float* data = arena.take<float>(2 * len);
    if (line != nullptr) {
        setZero(data, 2 * len);
        *line = {data, static_cast<int32_t>(len), 0};
    }
    return line;
}

Taps* takeTaps(Arena& arena, const float* pTaps, int len)
{
    Taps* taps = arena.take<Taps>(1);
    float *copy = arena.take<float>(len), *reversed = arena.take<float>(len);
    if (taps != nullptr) {
        copyValues(pTaps, copy, len);
        for (Index k = 0; k < len; k++)
            reversed[len - 1 - k] = copy[k];
        *taps = {len, copy, reversed};
    }
    return taps;
}

void place(Arena& arena, ForwardChannel*& result, const float* pTaps, int len, int offset)
{
    ForwardChannel* channel = arena.take<ForwardChannel>(1);
    ForwardFir* fir = arena.take<ForwardFir>(1);
    Taps* taps = takeTaps(arena, pTaps, len);
    DelayLine* ring = takeLine(arena, len);
    DelayLine* line = offset > 0 ? takeLine(arena, offset) : nullptr;
    // A stretch of the stream, and its two halves.
    float* scratch = arena.take<float>(forwardScratch(len));
    if (!arena.fills())
        return;
    *fir = {taps, ring, len, taps->pReversed, offset == -1};
    *channel = {fir, line, len + (offset > 0 ? offset : 0) - 1, scratch};
    result = channel;
}

void place(Arena& arena, InverseChannel*& result, const float* pTaps, int len, int offset)
{
    InverseChannel* channel = arena.take<InverseChannel>(1);
    InverseFir* fir = arena.take<InverseFir>(1);
    Taps* taps = takeTaps(arena, pTaps, len);
    const int even = len - len / 2, odd = len / 2;
    DelayLine* ring = takeLine(arena, even);
    DelayLine* line = offset / 2 > 0 ? takeLine(arena, offset / 2) : nullptr;
    float* evenTaps = arena.take<float>(even);
    float* oddTaps = arena.take<float>(odd);
    float* scratch = arena.take<float>(inverseScratch(even));
    if (!arena.fills())
        return;
    for (int i = 0; i < even; i++)
        evenTaps[even - 1 - i] = taps->pTaps[2 * i];
    for (int i = 0; i < odd; i++)
        oddTaps[odd - 1 - i] = taps->pTaps[2 * i + 1];
    *fir = {taps, ring, len, static_cast<uint32_t>(offset & 1), evenTaps, even, oddTaps, odd};
    *channel = {fir, line, static_cast<int32_t>((Index{len} + offset - 1) >> 1), scratch};
    result = channel;
}

// One block for each channel.
template<class C> C* makeChannel(const float* pTaps, int len, int offset)
{
    C* channel = nullptr;
    return build([&](Arena& arena) { place(arena, channel, pTaps, len, offset); }) ? channel : nullptr;
}

template<class S>
qvrStatus initAlloc(S** ppState, const float* pTapsLow, int lenLow, int offsLow, const float* pTapsHigh, int lenHigh,
                    int offsHigh)
{
    using C = __remove_pointer(decltype(S::pLowChannel));
    if (anyNull(ppState, pTapsLow))
        return qvrErrNullPointer;
    if (lenLow < 1)
        return qvrErrBadSize;
    if (pTapsHigh == nullptr)
        return qvrErrNullPointer;
    if (lenHigh < 1)
        return qvrErrBadSize;
    if (offsLow < -1 || offsHigh < -1)
        return qvrErrBadOffset;
    S* state = reinterpret_cast<S*>(allocate<char>(static_cast<int>(sizeof(S))));
    C* low = state != nullptr ? makeChannel<C>(pTapsLow, lenLow, offsLow) : nullptr;
    C* high = low != nullptr ? makeChannel<C>(pTapsHigh, lenHigh, offsHigh) : nullptr;
    if (high == nullptr) {
        release(low);
        release(state);
        *ppState = nullptr;
        return qvrErrNoMemory;
    }
    *state = {{tagOf(state), low, high, nullptr, 0}};
    *ppState = state;
    return qvrOk;
}

template<class S> qvrStatus setLines(S* pState, const float* pDlyLow, const float* pDlyHigh)
{
    if (const qvrStatus status = checkWavelet(pState))
        return status;
    if (anyNull(pDlyLow, pDlyHigh))
        return qvrErrNullPointer;
    setDelays(*pState->pLowChannel, ringDelays(*pState->pLowChannel), pDlyLow);
    setDelays(*pState->pHighChannel, ringDelays(*pState->pHighChannel), pDlyHigh);
    return qvrOk;
}
template<class S> qvrStatus getLines(const S* pState, float* pDlyLow, float* pDlyHigh)
{
    if (const qvrStatus status = checkWavelet(pState))
        return status;
    if (anyNull(pDlyLow, pDlyHigh))
        return qvrErrNullPointer;
    getDelays(*pState->pLowChannel, ringDelays(*pState->pLowChannel), pDlyLow);
    getDelays(*pState->pHighChannel, ringDelays(*pState->pHighChannel), pDlyHigh);
    return qvrOk;
}

template<class S> qvrStatus freeState(S* pState)
{
    if (const qvrStatus status = checkWavelet(pState))
        return status;
    release(pState->pLowChannel);
    release(pState->pHighChannel);
    release(pState->pShared);
    release(pState);
    return qvrOk;
}

} // namespace

extern "C" {

qvrStatus SLOT(qvrsWTFwdInitAlloc_32f)(qvrsWTFwdState_32f** ppState, const qvr32f* pTapsLow, int lenLow, int offsLow,
                                       const qvr32f* pTapsHigh, int lenHigh, int offsHigh)
{
    return initAlloc(ppState, pTapsLow, lenLow, offsLow, pTapsHigh, lenHigh, offsHigh);
}
qvrStatus SLOT(qvrsWTFwdSetDlyLine_32f)(qvrsWTFwdState_32f* pState, const qvr32f* pDlyLow, const qvr32f* pDlyHigh)
{
    return setLines(pState, pDlyLow, pDlyHigh);
}
qvrStatus SLOT(qvrsWTFwdGetDlyLine_32f)(qvrsWTFwdState_32f* pState, qvr32f* pDlyLow, qvr32f* pDlyHigh)
{
    return getLines(pState, pDlyLow, pDlyHigh);
}
qvrStatus SLOT(qvrsWTFwdFree_32f)(qvrsWTFwdState_32f* pState)
{
    return freeState(pState);
}

qvrStatus SLOT(qvrsWTInvInitAlloc_32f)(qvrsWTInvState_32f** ppState, const qvr32f* pTapsLow, int lenLow, int offsLow,
                                       const qvr32f* pTapsHigh, int lenHigh, int offsHigh)
{
    return initAlloc(ppState, pTapsLow, lenLow, offsLow, pTapsHigh, lenHigh, offsHigh);
}
qvrStatus SLOT(qvrsWTInvSetDlyLine_32f)(qvrsWTInvState_32f* pState, const qvr32f* pDlyLow, const qvr32f* pDlyHigh)
{
    return setLines(pState, pDlyLow, pDlyHigh);
}
qvrStatus SLOT(qvrsWTInvGetDlyLine_32f)(qvrsWTInvState_32f* pState, qvr32f* pDlyLow, qvr32f* pDlyHigh)
{
    return getLines(pState, pDlyLow, pDlyHigh);
}
qvrStatus SLOT(qvrsWTInvFree_32f)(qvrsWTInvState_32f* pState)
{
    return freeState(pState);
}

} // extern "C"
