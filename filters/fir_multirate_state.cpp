// Creation of multi-rate FIR states.
//
// By contract: these creators are there, though nothing exported leads to them. Their states run through the exported
// run functions.
//
// Time runs on a grid on which an input sample enters every U steps, the first at upPhase, and an output falls every D
// steps, the first at downPhase. Output o at step t = downPhase + o D has as its newest sample number
// k = floor((t - upPhase) / U), which is -1 for the newest of the history, and phase q = t - upPhase - k U: it is the
// sum over m of taps[q + m U] x[k - m]. Windows run forward, so a phase's taps are stored in reverse.
//
// The history has K = ceil(tapsLen / U) samples, the longest phase, and stands before the input in the delay buffer:
// a window's place is k + 1. Outputs repeat their pattern after 4 U outputs and 4 D samples.
#include "filters/fir.h"
#include "frame/arena.h"

namespace {

constexpr Index kGroup = 4;

struct Pattern {
    Index taps, U, upPhase, D, downPhase, K;

    Index numerator(Index o) const { return downPhase + o * D - upPhase; }
    Index newest(Index o) const
    {
        const Index n = numerator(o);
        return n < 0 ? -1 : n / U;
    }
    Index phase(Index o) const { return numerator(o) - newest(o) * U; }

    // Tap of phase q for the window's sample i of K, oldest first.
    template<class Tap> Tap windowTap(const Tap* all, Index q, Index i) const
    {
        const Index k = q + (K - 1 - i) * U;
        return i >= 0 && i < K && k < taps ? get(all, k) : Tap{0};
    }
};

template<class Form>
qvrStatus createMultiRate(typename Form::State** statePtr, const typename Form::Tap* taps, int tapsLen, int upFactor,
                          int upPhase, int downFactor, int downPhase, int mode, const typename Form::Data* dlyLine)
{
    using Tap = typename Form::Tap;
    using History = typename Form::History;
    using State = typename Form::State;
    if (anyNull(statePtr, taps))
        return qvrErrNullPointer;
    if (tapsLen < 1)
        return qvrErrBadTapsLen;
    if (upFactor < 1 || downFactor < 1)
        return qvrErrBadMultiRateFactor;
    if (upPhase < 0 || upPhase >= upFactor || downPhase < 0 || downPhase >= downFactor)
        return qvrErrBadMultiRatePhase;
    if (mode < 1 || mode > 3 || (mode == 2 && upFactor != 1))
        return qvrErrBadArgument;
    const Index L = tapsLen, U = upFactor, D = downFactor, K = (L + U - 1) / U;
    const Pattern pattern = {L, U, upPhase, D, downPhase, K};
    // Entries of the table are 32-bit, and so is the place a period on.
    if (kGroup * (D + 1) + K > INT32_MAX)
        return qvrErrNoMemory;

    Index spread = 0;
    for (Index g = 0; mode == 1 && g < U; g++) {
        const Index s = pattern.newest(kGroup * g + kGroup - 1) - pattern.newest(kGroup * g);
        spread = s > spread ? s : spread;
    }
    const Index M = K + spread, first = pattern.newest(0) + 1;
    // Periods until a window begins at the source's first sample or behind it.
    const Index periods = first >= K ? 0 : (K - first + kGroup * D - 1) / (kGroup * D);
    const Index room = periods * kGroup * D + first + M;
    const Index blocks = mode == 2 ? 1 : U, entries = mode == 1 ? U : kGroup * U;
    const Index scratch = U > kFirScratch ? U : kFirScratch;

    State* state;
    State regions = {};
    if (!build([&](Arena& arena) {
            state = arena.take<State>(1);
            regions.tapsStore = arena.take<Tap>(L);
            regions.laneTaps = arena.take<Tap>(M > INT32_MAX / blocks ? Index{INT32_MAX} : blocks * M * kGroup);
            regions.phaseTable = arena.take<int32_t>(entries + 1);
            regions.delayStore = reinterpret_cast<Tap*>(arena.take<History>(K + room));
            regions.scratch = arena.take<Tap>(scratch);
        }))
        return qvrErrNoMemory;
    *state = regions;
    *statePtr = state;
    state->tag = Form::multiRateTag;
    state->tapsLen = tapsLen;
    state->upFactor = upFactor;
    state->directLimit = static_cast<int32_t>(room);
    state->downFactor = downFactor;
    state->prologueOutputs = static_cast<int32_t>(periods * kGroup * U);
    state->fftLen = -1;
    state->phaseTapsLen = static_cast<int32_t>(M);
    state->multiRateMode = mode;
    state->delayLen = static_cast<int32_t>(K);
    state->owned = 1;

    for (Index k = 0; k < L; k++)
        state->tapsStore[k] = get(taps, L - 1 - k);
    for (Index g = 0; g < blocks; g++)
        for (Index j = 0; j < kGroup; j++) {
            const Index o = kGroup * g + j, shift = mode == 1 ? pattern.newest(o) - pattern.newest(kGroup * g) : 0;
            for (Index m = 0; m < M; m++)
                state->laneTaps[(g * M + m) * kGroup + j] = pattern.windowTap(taps, pattern.phase(o), m - shift);
        }
    // Mode 1: advances from group to group, and what is left to 4 D. Otherwise places, and 4 D.
    const auto place = [&](Index o) { return pattern.newest(o) + 1; };
    Index sum = 0;
    for (Index e = 0; e < entries; e++) {
        const Index at = place(mode == 1 ? kGroup * e : e);
        state->phaseTable[e] = static_cast<int32_t>(mode == 1 ? at - sum : at);
        sum = at;
    }
    state->phaseTable[entries] = static_cast<int32_t>(kGroup * D - (mode == 1 ? sum : 0));
    History* d = reinterpret_cast<History*>(state->delayStore);
    for (Index k = 0; k < K; k++)
        d[K - 1 - k] = dlyLine != nullptr ? static_cast<History>(get(dlyLine, k)) : History{0};
    return qvrOk;
}

} // namespace

extern "C" {

qvrStatus SLOT(ownFIRMRInitAlloc_32f)(qvrsFIRState_32f** statePtr, const float* taps, int tapsLen, int upFactor,
                                      int upPhase, int downFactor, int downPhase, int mode, const float* dlyLine)
{
    return createMultiRate<Fir32f>(statePtr, taps, tapsLen, upFactor, upPhase, downFactor, downPhase, mode, dlyLine);
}

qvrStatus SLOT(ownFIRMRInitAlloc_64f)(qvrsFIRState_64f** statePtr, const double* taps, int tapsLen, int upFactor,
                                      int upPhase, int downFactor, int downPhase, int mode, const double* dlyLine)
{
    return createMultiRate<Fir64f>(statePtr, taps, tapsLen, upFactor, upPhase, downFactor, downPhase, mode, dlyLine);
}

qvrStatus SLOT(ownFIRMRInitAlloc64f_32f)(qvrsFIRState64f_32f** statePtr, const double* taps, int tapsLen, int upFactor,
                                         int upPhase, int downFactor, int downPhase, int mode, const float* dlyLine)
{
    return createMultiRate<Fir64f_32f>(statePtr, taps, tapsLen, upFactor, upPhase, downFactor, downPhase, mode,
                                       dlyLine);
}

qvrStatus SLOT(ownFIRMRInitAlloc64f_16s)(qvrsFIRState64f_16s** statePtr, const double* taps, int tapsLen, int upFactor,
                                         int upPhase, int downFactor, int downPhase, int mode, const int16_t* dlyLine)
{
    return createMultiRate<Fir64f_16s>(statePtr, taps, tapsLen, upFactor, upPhase, downFactor, downPhase, mode,
                                       dlyLine);
}

} // extern "C"
