// Runs of multi-rate FIR states: U outputs for each D input samples.
//
// Outputs come in groups of four. In mode 1 the four read one window with four interleaved tap sets, in mode 2 windows
// at a fixed stride with one set, in mode 3 windows by a table. The pattern repeats after 4 U outputs and 4 D samples.
//
// A run that the delay buffer does not hold computes its prologue there, keeps the newest history, and goes on in the
// source. The last period and what is left over go one output at a time, stopping at the newest sample, and so does a
// group whose windows pass it: nothing stands behind the newest sample in a delay buffer, as in a source.
#include "filters/fir_run.h"

namespace {

constexpr Index kGroup = 4;

QVR_INLINE void storeGroup(Vec<float, 4> y, float* dst, double)
{
    store(dst, y);
}
QVR_INLINE void storeGroup(Vec<double, 4> y, double* dst, double)
{
    store(dst, y);
}
QVR_INLINE void storeGroup(Vec<double, 4> y, float* dst, double)
{
    store(dst, narrowed(y));
}
QVR_INLINE void storeGroup(Vec<double, 4> y, int16_t* dst, double factor)
{
    store(dst, roundedTo16(y * factor));
}
template<class Tap, class Data> QVR_INLINE void storeOne(Tap y, Data* dst, double factor)
{
    const Vec<Tap, 4> four = {y, y, y, y};
    Data out[4];
    storeGroup(four, out, factor);
    put(dst, 0, out[0]);
}

// The tables of a state, and outputs from windows w by them. Positions count from the start of the first window.
template<class Form> struct MultiRate {
    using Tap = typename Form::Tap;
    using Data = typename Form::Data;
    using V = Vec<Tap, 4>;
    const Tap* taps;
    const int32_t* table;
    Index U, D, M; // M: taps of a phase, or of a group's common window in mode 1
    int mode;
    double factor;

    Index period() const { return kGroup * U; }

    // The windows' places of the four outputs of group g in the period that starts at `base`. In mode 1 they are one:
    // a walk by the table from place p of the group before.
    struct Places {
        Index at[kGroup];
    };
    Places places(Index base, Index g, Index p) const
    {
        Places r;
        for (Index j = 0; j < kGroup; j++)
            r.at[j] = mode == 1 ? p : mode == 2 ? base + j * (table[1] - table[0]) : base + table[kGroup * g + j];
        return r;
    }

    template<class T> QVR_INLINE V group(const T* w, const Places& r, Index g) const
    {
        V acc{};
        if (mode == 1) {
            const Tap* t = taps + g * M * kGroup;
            const T* x = w + r.at[0];
            for (Index m = 0; m < M; m++)
                acc += load<V>(t + kGroup * m) * splat<V>(static_cast<Tap>(get(x, m)));
        } else {
            const Tap* t = mode == 2 ? taps : taps + g * M * kGroup;
            for (Index m = 0; m < M; m++) {
                const V x = {static_cast<Tap>(get(w, r.at[0] + m)), static_cast<Tap>(get(w, r.at[1] + m)),
                             static_cast<Tap>(get(w, r.at[2] + m)), static_cast<Tap>(get(w, r.at[3] + m))};
                acc += x * (mode == 2 ? splat<V>(t[kGroup * m]) : load<V>(t + kGroup * m));
            }
        }
        return acc;
    }

    // Output j of group g, from samples before `end` alone.
    template<class T> Tap single(const T* w, Index place, Index g, Index j, Index end) const
    {
        const Tap* t = mode == 2 ? taps : taps + g * M * kGroup + j;
        const Index count = end - place < M ? end - place : M;
        Tap sum = 0;
        for (Index m = 0; m < count; m++)
            sum += t[kGroup * m] * static_cast<Tap>(get(w, place + m));
        return sum;
    }

    // Samples that a period passes by the table itself.
    Index periodAdvance() const
    {
        if (mode != 1)
            return mode == 2 ? kGroup * (table[1] - table[0]) : table[period()];
        Index sum = 0;
        for (Index g = 0; g <= U; g++)
            sum += table[g];
        return sum;
    }

    // `whole` outputs, a multiple of the period, by groups; then `rest` one by one. The first period starts at `base`.
    template<class T> void outputs(const T* w, Index base, Index whole, Index rest, Index end, Data* dst) const
    {
        // Mode 2 starts at entry 0 like the others: its places count from there.
        if (mode == 2)
            base += table[0];
        const Index total = whole + rest, advance = periodAdvance();
        Index o = 0;
        while (o < total) {
            Index p = base;
            for (Index g = 0; g < U && o < total; g++, o += kGroup) {
                if (mode == 1)
                    p += table[g];
                const Places r = places(base, g, p);
                if (o < whole && r.at[kGroup - 1] + M <= end) {
                    storeGroup(group(w, r, g), dst + o, factor);
                } else {
                    for (Index j = 0; j < kGroup && o + j < total; j++)
                        storeOne(single(w, r.at[j], g, j, end), dst + o + j, factor);
                }
            }
            base += advance;
        }
    }
};

template<class Form>
void multiRateRun(typename Form::State* state, const typename Form::Data* src, typename Form::Data* dst,
                  Index iterations, int scale)
{
    using History = typename Form::History;
    const Index U = state->upFactor, D = state->downFactor, V = state->delayLen, C = state->directLimit;
    const Index inputs = D * iterations, outputs = U * iterations;
    const MultiRate<Form> rate = {state->laneTaps,      state->phaseTable, U, D, state->phaseTapsLen,
                                  state->multiRateMode, firScale64(scale)};
    const Index period = rate.period();
    History* store = reinterpret_cast<History*>(state->delayStore);
    History* w = store + state->delayIndex;
    state->delayIndex = 0;
    const bool small = state->multiRateMode == 2 ? inputs < C : inputs <= C;
    const Index taken = small ? inputs : C;
    for (Index i = 0; i < taken; i++)
        w[V + i] = static_cast<History>(get(src, i));
    if (small) {
        const Index whole = outputs / period * period;
        rate.outputs(w, 0, whole, outputs - whole, V + inputs, dst);
        moveElements(w + inputs, store, V);
        return;
    }
    const Index prologue = state->prologueOutputs;
    rate.outputs(w, 0, prologue, 0, V + C, dst);
    // The newest V samples, of which the first may be history still.
    if (inputs < V)
        moveElements(w + inputs, store, V);
    for (Index i = inputs < V ? V - inputs : 0; i < V; i++)
        store[i] = static_cast<History>(get(src, inputs - V + i));

    Index whole = (outputs - prologue) / period * period;
    whole -= whole >= 1 ? period : 0;
    const Index advance = rate.periodAdvance(), base = prologue / period * advance - V;
    dst += prologue;
    const int threads = qvrNumThreadsValue();
    if (iterations >= kFirForkFrom && threads >= 2 && whole > 0) {
        Index done = 0;
        parallelTeam(threads, [&, whole](int t, int team) {
            const Index periods = whole / (period * team);
            rate.outputs(src, base + t * periods * advance, periods * period, 0, inputs, dst + t * periods * period);
            if (t == 0)
                done = team * periods * period;
        });
        rate.outputs(src, base + done / period * advance, 0, outputs - prologue - done, inputs, dst + done);
    } else {
        rate.outputs(src, base, whole, outputs - prologue - whole, inputs, dst);
    }
}

template<class State> bool knownMode(const State* state)
{
    return state->multiRateMode >= 1 && state->multiRateMode <= 3;
}

template<class Form>
qvrStatus multiRate(typename Form::State* state, const typename Form::Data* src, typename Form::Data* dst,
                    int iterations, int scale)
{
    using Data = typename Form::Data;
    if (!knownMode(state))
        return qvrErrBadContext;
    const Index U = state->upFactor, D = state->downFactor, n = iterations;
    if (src != dst) {
        multiRateRun<Form>(state, src, dst, n, scale);
    } else if (U <= D) {
        // Outputs never pass the samples that are still to be read.
        const Index chunk = kFirMultiRateChunk / U > 1 ? kFirMultiRateChunk / U : 1;
        Data* scratch = reinterpret_cast<Data*>(state->scratch);
        for (Index i = 0; i < n; i += chunk) {
            const Index count = n - i < chunk ? n - i : chunk;
            multiRateRun<Form>(state, src + D * i, scratch, count, scale);
            moveElements(scratch, dst + U * i, U * count);
        }
    } else {
        const Index bytes = static_cast<Index>(sizeof(Data)), fits = D * n <= INT32_MAX / bytes ? D * n * bytes : 0;
        Data* copy = reinterpret_cast<Data*>(allocate<uint8_t>(static_cast<int>(fits)));
        if (copy == nullptr)
            return qvrErrNoMemory;
        moveElements(src, copy, D * n);
        multiRateRun<Form>(state, copy, dst, n, scale);
        release(copy);
    }
    return qvrOk;
}

} // namespace

extern "C" {

qvrStatus SLOT(ownFIRMR_32f)(qvrsFIRState_32f* state, const float* src, float* dst, int iterations)
{
    if (state->tag != qvrTagFirMultiRateNoDelay_32f)
        return multiRate<Fir32f>(state, src, dst, iterations, 0);
    // No delay line: the source stands where the delay buffer would, from the state's own position on.
    if (!knownMode(state))
        return qvrErrBadContext;
    const MultiRate<Fir32f> rate = {state->laneTaps,
                                    state->phaseTable,
                                    state->upFactor,
                                    state->downFactor,
                                    state->phaseTapsLen,
                                    state->multiRateMode,
                                    1};
    const Index outputs = Index{state->upFactor} * iterations, period = rate.period();
    const Index whole = outputs > period ? (outputs / period - 1) * period : 0;
    const Index end = Index{state->downFactor} * iterations + state->delayLen;
    rate.outputs(src + state->delayIndex, 0, whole, outputs - whole, end, dst);
    return qvrOk;
}

qvrStatus SLOT(ownFIRMR_64f)(qvrsFIRState_64f* state, const double* src, double* dst, int iterations)
{
    return multiRate<Fir64f>(state, src, dst, iterations, 0);
}

qvrStatus SLOT(ownFIRMR64f_32f)(qvrsFIRState64f_32f* state, const float* src, float* dst, int iterations)
{
    return multiRate<Fir64f_32f>(state, src, dst, iterations, 0);
}

qvrStatus SLOT(ownFIRMR64f_16s_Sfs)(qvrsFIRState64f_16s* state, const int16_t* src, int16_t* dst, int iterations,
                                    int scale)
{
    return multiRate<Fir64f_16s>(state, src, dst, iterations, scale);
}

} // extern "C"
