// Creation, accessors and release of single-rate FIR states.
//
// One allocation holds everything but the plan of the 32f form: header, taps and their copies, delay buffer, a status
// word, a work area and a transform block for each thread of the budget (for fewer, if 2^31 - 1 bytes do not hold
// them), spectrum of the taps, scratch areas, and in the 64f forms the plan.
//
// From the tap thresholds below a state has a transform plan: order p + 1 with p >= 2 the least that makes 2^p exceed
// the number of taps.
#include "filters/fir.h"
#include "filters/functions.h"

#include "fourier/real/spec.h"
#include "frame/arena.h"
#include "frame/threads.h"

namespace {

template<class Tap> constexpr int kPlanFrom = sizeof(Tap) == 4 ? 64 : PerSlot<int>{32, 32, 64, 64, 64, 64, 64}.here();

// Copies of the reversed taps that a slot keeps: `rows` rows of `stride` elements, in row r from its element r on; on
// the wide slots in single precision one row and a table whose element 8 m + j is reversed tap m - j. Elements without
// a tap are zero. And each tap in natural order `repeats` times in a row.
struct TapCopies {
    Index stride;
    int rows, tableLanes, repeats;
};
template<class Tap> TapCopies tapCopies(Index taps)
{
    if constexpr (kSlot == qvrSlot_mx || kSlot == qvrSlot_m7)
        return {taps, 1, 0, 0};
    else if constexpr (sizeof(Tap) == 8)
        return {(taps + 2) / 2 * 2, 2, 0, 4};
    else if constexpr (kAvx)
        return {(taps + 16) / 8 * 8, 1, 8, 8};
    else
        return {(taps + 6) / 4 * 4, 4, 0, 4};
}

template<class Tap> void storeTaps(const Tap* taps, Index n, const TapCopies& copies, Tap* tapsStore, Tap* laneTaps)
{
    const auto reversed = [=](Index k) { return k >= 0 && k < n ? get(taps, n - 1 - k) : Tap{0}; };
    for (int row = 0; row < copies.rows; row++)
        for (Index k = 0; k < copies.stride; k++)
            *tapsStore++ = reversed(k - row);
    for (Index m = 0; m < copies.stride && copies.tableLanes != 0; m++)
        for (int j = 0; j < copies.tableLanes; j++)
            *tapsStore++ = reversed(m - j);
    for (Index k = 0; k < n; k++)
        for (int r = 0; r < copies.repeats; r++)
            *laneTaps++ = get(taps, k);
}

// Element k of a first delay line, by the tag's own type.
template<class Tap> Tap delayElement(const void* dlyLine, Index k, uint32_t tag)
{
    switch (tag) {
    case qvrTagFir_64f:
        return static_cast<Tap>(get(static_cast<const double*>(dlyLine), k));
    case qvrTagFir_32f:
    case qvrTagFir64f_32f:
        return get(static_cast<const float*>(dlyLine), k);
    case qvrTagFir64f_32s:
        return static_cast<Tap>(get(static_cast<const int32_t*>(dlyLine), k));
    default:
        return get(static_cast<const int16_t*>(dlyLine), k);
    }
}

// The transform's entries for a precision.
struct Transform32f {
    static constexpr auto getSize = SLOT(ownqvrsFFTGetSize_R_32f);
    static constexpr auto forward = SLOT(ownqvrsFFTFwd_RToPacked_32f);
    static constexpr auto free = SLOT(qvrsFFTFree_R_32f);
};
struct Transform64f {
    static constexpr auto getSize = SLOT(ownqvrsFFTGetSize_R_64f);
    static constexpr auto forward = SLOT(ownqvrsFFTFwd_RToPacked_64f);
    static constexpr auto free = SLOT(qvrsFFTFree_R_64f);
};
template<class Tap> struct TransformOf {
    using type = Transform64f;
};
template<> struct TransformOf<float> {
    using type = Transform32f;
};
template<class Form> using Transform = typename TransformOf<typename Form::Tap>::type;

template<class Form> qvrStatus freeState(typename Form::State* state)
{
    if (state->owned == 0)
        return qvrOk;
    if (state->fftPlan != nullptr)
        Transform<Form>::free(state->fftPlan);
    release(state);
    return qvrOk;
}

template<class Form>
qvrStatus create(typename Form::State** statePtr, const typename Form::Tap* taps, int tapsLen, const void* dlyLine,
                 uint32_t tag)
{
    using Tap = typename Form::Tap;
    using Data = typename Form::Data;
    using State = typename Form::State;
    if (anyNull(statePtr, taps))
        return qvrErrNullPointer;
    if (tapsLen < 1)
        return qvrErrBadTapsLen;
    const Index L = tapsLen;

    bool planned = L >= kPlanFrom<Tap>;
    int order = 3;
    while ((Index{1} << (order - 1)) <= L)
        order++;
    int32_t planSize = 0, initSize = 0, workSize = 0;
    if (planned &&
        Transform<Form>::getSize(order, qvrFftDivInvByN, qvrHintNone, &planSize, &initSize, &workSize) != qvrOk) {
        // In single precision a plan that cannot be had is as good as null; in double the state does without.
        if (sizeof(Tap) == 4)
            return qvrErrNullPointer;
        planned = false;
        workSize = 0;
    }
    const Index N = planned ? Index{1} << order : 0;
    const TapCopies copies = tapCopies<Tap>(L);
    const Index limit = firDirectLimit<Tap>(L);
    const Index used = kFirSlide + L + firBuffered(limit) + kFirSlack<Tap>, delay = 3 * L > used ? 3 * L : used;
    constexpr Index scratchPerThread = sizeof(Tap) == 8 ? 2 : 4;

    State* state;
    State regions = {};
    uint8_t* planBlock;
    Index threads = 1;
    const auto layOut = [&](Arena& arena) {
        state = arena.take<State>(1);
        regions.tapsStore = arena.take<Tap>((copies.rows + copies.tableLanes) * copies.stride);
        regions.laneTaps = arena.take<Tap>(copies.repeats * L);
        regions.delayStore = arena.take<Tap>(delay);
        regions.threadStatus = arena.take<int32_t>(threads);
        regions.tapSpectrum = arena.take<Tap>(N);
        regions.fftWork = arena.take<uint8_t>(threads * workSize);
        regions.fftBlocks = arena.take<Tap>(threads * N);
        regions.scratch = arena.take<Tap>(kFirScratch + scratchPerThread * threads);
        regions.narrowScratch = arena.take<Data>(sizeof(Tap) == 8 ? kFirScratch : 0);
        regions.widened = arena.take<Tap>(Form::mixed ? kFirMixedBlock : 0);
        planBlock = arena.take<uint8_t>(sizeof(Tap) == 8 && planned ? planSize : 0);
    };
    // As many threads as the budget has and memory holds: runs need no more than one.
    const Index least = bytesOf(layOut);
    if (least > INT32_MAX)
        return qvrErrNoMemory;
    const Index perThread = qvrAlignUp<Index>(N * sizeof(Tap) + workSize + 64, 64);
    const Index fitting = 1 + (INT32_MAX - least) / perThread, budget = qvrNumThreadsValue();
    threads = budget < fitting ? budget : fitting;
    if (bytesOf(layOut) > INT32_MAX)
        return qvrErrNoMemory;

    decltype(State::fftPlan) plan = nullptr;
    if constexpr (sizeof(Tap) == 4)
        if (planned && SLOT(qvrsFFTInitAlloc_R_32f)(&plan, order, qvrFftDivInvByN, qvrHintNone) != qvrOk)
            return qvrErrNullPointer;
    if (!build(layOut)) {
        if (plan != nullptr)
            Transform<Form>::free(plan);
        return qvrErrNoMemory;
    }
    *state = regions;
    *statePtr = state;
    state->tag = tag;
    state->tapsLen = state->delayLen = tapsLen;
    state->directLimit = static_cast<int32_t>(limit);
    state->fftLen = planned ? static_cast<int32_t>(N) : -1;
    state->fftWorkSize = workSize;
    state->owned = 1;
    state->threads = static_cast<int32_t>(threads);

    storeTaps(taps, L, copies, state->tapsStore, state->laneTaps);
    for (Index k = 0; k < L; k++)
        state->delayStore[L - 1 - k] = dlyLine != nullptr ? delayElement<Tap>(dlyLine, k, tag) : 0;
    if (!planned)
        return qvrOk;

    if constexpr (sizeof(Tap) == 8) {
        // What initialisation needs by the way, a quarter wave, fits the first transform block.
        static_assert(alignof(FftSpec<double>) <= 64);
        SLOT(ownqvrsFFTInit_R_64f)(&plan, order, qvrFftDivInvByN, qvrHintNone, planBlock,
                                   reinterpret_cast<uint8_t*>(state->fftBlocks));
    }
    state->fftPlan = plan;
    // Runs have threads of their own, one for each block.
    forkNothing(plan);
    moveElements(taps, state->tapSpectrum, L);
    zeroElements(state->tapSpectrum + L, N - L);
    const qvrStatus status = Transform<Form>::forward(state->tapSpectrum, state->tapSpectrum, plan, state->fftWork);
    if (status != qvrOk)
        freeState<Form>(state);
    return status;
}

template<class Form> qvrStatus checkTag(const typename Form::State* state)
{
    return state->tag == Form::tag || state->tag == Form::multiRateTag ? qvrOk : qvrErrBadContext;
}

template<class Form> qvrStatus destroy(typename Form::State* state)
{
    if (state == nullptr)
        return qvrErrNullPointer;
    if constexpr (sizeof(typename Form::Tap) == 4)
        if (state->tag == qvrTagFirNoDelay_32f || state->tag == qvrTagFirMultiRateNoDelay_32f)
            return freeState<Form>(state);
    if (const qvrStatus status = checkTag<Form>(state))
        return status;
    return freeState<Form>(state);
}

template<class T, class Data> void readDelay(const T* d, Index n, Data* dlyLine)
{
    for (Index k = 0; k < n; k++)
        put(dlyLine, k, static_cast<Data>(d[n - 1 - k]));
}
template<class T, class Data> void writeDelay(T* d, Index n, const Data* dlyLine)
{
    for (Index k = 0; k < n; k++)
        d[n - 1 - k] = dlyLine != nullptr ? static_cast<T>(get(dlyLine, k)) : T{0};
}

// A multi-rate state may keep its history in a type of its own.
template<class Form> typename Form::History* historyOf(const typename Form::State* state)
{
    return reinterpret_cast<typename Form::History*>(state->delayStore);
}

template<class Form> qvrStatus getDelay(const typename Form::State* state, typename Form::Data* dlyLine)
{
    if (anyNull(state, dlyLine))
        return qvrErrNullPointer;
    if (const qvrStatus status = checkTag<Form>(state))
        return status;
    if (state->tag == Form::multiRateTag)
        readDelay(historyOf<Form>(state) + state->delayIndex, state->delayLen, dlyLine);
    else
        readDelay(state->delayStore + state->delayIndex, state->delayLen, dlyLine);
    return qvrOk;
}

template<class Form> qvrStatus setDelay(typename Form::State* state, const typename Form::Data* dlyLine)
{
    if (state == nullptr)
        return qvrErrNullPointer;
    if (const qvrStatus status = checkTag<Form>(state))
        return status;
    state->delayIndex = 0;
    if (state->tag == Form::multiRateTag)
        writeDelay(historyOf<Form>(state), state->delayLen, dlyLine);
    else
        writeDelay(state->delayStore, state->delayLen, dlyLine);
    return qvrOk;
}

} // namespace

extern "C" {

qvrStatus SLOT(qvrsFIRInitAlloc_32f)(qvrsFIRState_32f** statePtr, const qvr32f* taps, int tapsLen,
                                     const qvr32f* dlyLine)
{
    return create<Fir32f>(statePtr, taps, tapsLen, dlyLine, qvrTagFir_32f);
}

qvrStatus SLOT(qvrsFIRInitAlloc_64f)(qvrsFIRState_64f** statePtr, const qvr64f* taps, int tapsLen,
                                     const qvr64f* dlyLine)
{
    return create<Fir64f>(statePtr, taps, tapsLen, dlyLine, qvrTagFir_64f);
}

qvrStatus SLOT(qvrsFIRInitAlloc64f_32f)(qvrsFIRState64f_32f** statePtr, const qvr64f* taps, int tapsLen,
                                        const qvr32f* dlyLine)
{
    return create<Fir64f_32f>(statePtr, taps, tapsLen, dlyLine, qvrTagFir64f_32f);
}

qvrStatus SLOT(qvrsFIRInitAlloc64f_16s)(qvrsFIRState64f_16s** statePtr, const qvr64f* taps, int tapsLen,
                                        const qvr16s* dlyLine)
{
    return create<Fir64f_16s>(statePtr, taps, tapsLen, dlyLine, qvrTagFir64f_16s);
}

qvrStatus SLOT(qvrsFIRFree_32f)(qvrsFIRState_32f* state)
{
    return destroy<Fir32f>(state);
}

qvrStatus SLOT(qvrsFIRFree_64f)(qvrsFIRState_64f* state)
{
    return destroy<Fir64f>(state);
}

qvrStatus SLOT(qvrsFIRFree64f_32f)(qvrsFIRState64f_32f* state)
{
    return destroy<Fir64f_32f>(state);
}

qvrStatus SLOT(qvrsFIRFree64f_16s)(qvrsFIRState64f_16s* state)
{
    return destroy<Fir64f_16s>(state);
}

qvrStatus SLOT(qvrsFIRGetTaps_32f)(const qvrsFIRState_32f* state, qvr32f* taps)
{
    if (anyNull(state, taps))
        return qvrErrNullPointer;
    if (const qvrStatus status = checkTag<Fir32f>(state))
        return status;
    for (Index k = 0; k < state->tapsLen; k++)
        put(taps, k, state->tapsStore[state->tapsLen - 1 - k]);
    return qvrOk;
}

qvrStatus SLOT(qvrsFIRGetDlyLine_32f)(const qvrsFIRState_32f* state, qvr32f* dlyLine)
{
    return getDelay<Fir32f>(state, dlyLine);
}

qvrStatus SLOT(qvrsFIRGetDlyLine_64f)(const qvrsFIRState_64f* state, qvr64f* dlyLine)
{
    return getDelay<Fir64f>(state, dlyLine);
}

qvrStatus SLOT(qvrsFIRGetDlyLine64f_32f)(const qvrsFIRState64f_32f* state, qvr32f* dlyLine)
{
    return getDelay<Fir64f_32f>(state, dlyLine);
}

qvrStatus SLOT(qvrsFIRSetDlyLine_32f)(qvrsFIRState_32f* state, const qvr32f* dlyLine)
{
    return setDelay<Fir32f>(state, dlyLine);
}

qvrStatus SLOT(qvrsFIRSetDlyLine_64f)(qvrsFIRState_64f* state, const qvr64f* dlyLine)
{
    return setDelay<Fir64f>(state, dlyLine);
}

qvrStatus SLOT(qvrsFIRSetDlyLine64f_32f)(qvrsFIRState64f_32f* state, const qvr32f* dlyLine)
{
    return setDelay<Fir64f_32f>(state, dlyLine);
}

} // extern "C"
