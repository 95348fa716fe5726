// Runs of single-rate FIR states: the front door of all modes, and the direct run.
//
// A direct run of more samples than the delay buffer takes computes its first outputs there, then moves the newest
// samples to the delay line, and then reads the source itself, so that threads share no data that they write.
#ifndef QVR_FILTERS_FIR_RUN_H
#define QVR_FILTERS_FIR_RUN_H

#include "filters/fir.h"
#include "frame/memory.h"
#include "frame/region.h"
#include "vector/shared.h"

namespace {

QVR_INLINE void firOutputs(const float* x, float* y, Index n, const float* t, Index taps, bool slack = false)
{
    SLOT(ownFirOutputs_32f)(x, y, n, t, taps, slack);
}
QVR_INLINE void firOutputs(const double* x, double* y, Index n, const double* t, Index taps, bool slack = false)
{
    SLOT(ownFirOutputs_64f)(x, y, n, t, taps, slack);
}

// Results to the caller's type; those of the unmixed forms stand where they belong.
template<class T> QVR_INLINE void deliver(const T*, const T*, Index, int) {}
QVR_INLINE void deliver(const double* y, float* dst, Index n, int)
{
    SLOT(qvrsConvert_64f32f)(y, dst, static_cast<int>(n));
}
QVR_INLINE void deliver(const double* y, int16_t* dst, Index n, int scale)
{
    SLOT(ownFirTo16s)(y, dst, n, scale);
}

// Threads of a run: the budget, but no more than the state has regions for.
template<class State> QVR_INLINE int firThreads(const State* state)
{
    const int budget = qvrNumThreadsValue();
    return budget < state->threads ? budget : state->threads;
}

template<class Form>
inline void directRun(typename Form::State* state, const typename Form::Data* src, typename Form::Data* dst, Index c,
                      int scale = 0)
{
    using Tap = typename Form::Tap;
    const Index L = state->tapsLen, limit = state->directLimit;
    const Tap* t = state->tapsStore;
    Tap* d = state->delayStore + state->delayIndex;
    state->delayIndex = 0;
    Tap* results;
    if constexpr (Form::mixed)
        results = state->scratch;
    else
        results = dst;
    if (c <= firBuffered(limit)) {
        widen(src, d + L, c);
        zeroElements(d + L + c, kFirSlack<Tap> - c);
        firOutputs(d + 1, results, c, t, L, true);
        const Index next = d + c - state->delayStore;
        if (next <= kFirSlide)
            state->delayIndex = static_cast<int32_t>(next);
        else
            moveElements(d + c, state->delayStore, L);
        deliver(results, dst, c, scale);
        return;
    }
    const Index first = limit - 1, rest = c - first;
    widen(src, d + L, limit);
    firOutputs(d + 1, results, first, t, L);
    widen(src + c - L, state->delayStore, L);
    deliver(results, dst, first, scale);

    const Tap* x;
    if constexpr (Form::mixed) {
        // Fewer than a block, for the first outputs are as many as the taps or more.
        widen(src + first + 1 - L, state->widened, rest + L - 1);
        x = state->widened;
    } else {
        x = src + first + 1 - L;
        results = dst + first;
    }
    // In the mixed forms each thread has a slice of scratch.
    const int threads = Form::mixed ? firThreads(state) : qvrNumThreadsValue();
    if (!Form::forks || c < kFirForkFrom || threads < 2) {
        firOutputs(x, results, rest, t, L);
        deliver(results, dst + first, rest, scale);
        return;
    }
    parallelTeam(threads, [=](int i, int team) {
        const Index share = rest / team, at = i * share, count = i == team - 1 ? rest - at : share;
        // In the mixed forms a slice of results starts at an even element.
        Tap* mine = results + (Form::mixed ? i * ((share + 1) / 2 * 2) : at);
        if (count > 0) {
            firOutputs(x + at, mine, count, t, L);
            deliver(mine, dst + first + at, count, scale);
        }
    });
}

// The mixed forms run in blocks whose results fit scratch.
template<class Form>
inline void directBlocks(typename Form::State* state, const typename Form::Data* src, typename Form::Data* dst, Index n,
                         int scale)
{
    if constexpr (!Form::mixed) {
        directRun<Form>(state, src, dst, n);
    } else {
        for (Index i = 0; i < n; i += kFirMixedBlock)
            directRun<Form>(state, src + i, dst + i, n - i < kFirMixedBlock ? n - i : kFirMixedBlock, scale);
    }
}

// transform: the entry of the form, (state, src, dst, count, scale).
template<class Form, class Transform>
inline qvrStatus outOfPlace(typename Form::State* state, const typename Form::Data* src, typename Form::Data* dst,
                            int n, int scale, const Transform& transform)
{
    if (n >= kFirTransformFrom && state->fftLen >= 1)
        return transform(state, src, dst, n, scale);
    directBlocks<Form>(state, src, dst, n, scale);
    return qvrOk;
}

template<class Form, class Transform>
inline qvrStatus inPlace(typename Form::State* state, typename Form::Data* p, int n, int scale,
                         const Transform& transform)
{
    using Data = typename Form::Data;
    Data* scratch = reinterpret_cast<Data*>(state->scratch);
    if constexpr (!Form::mixed) {
        // The samples behind a chunk decide its path, so the last one is always direct.
        for (Index i = 0; i < n;) {
            const int c = n - i < kFirChunk ? static_cast<int>(n - i) : kFirChunk;
            if (n - i - c >= kFirTransformFrom && state->fftLen >= 1) {
                if (const qvrStatus status = transform(state, p + i, scratch, c, scale))
                    return status;
            } else {
                directRun<Form>(state, p + i, scratch, c);
            }
            moveElements(scratch, p + i, c);
            i += c;
        }
        return qvrOk;
    } else if (n >= kFirTransformFrom && state->fftLen >= 1) {
        for (Index i = 0; i < n; i += 2 * kFirChunk) {
            const int c = n - i < 2 * kFirChunk ? static_cast<int>(n - i) : 2 * kFirChunk;
            if (const qvrStatus status = transform(state, p + i, scratch, c, scale))
                return status;
            moveElements(scratch, p + i, c);
        }
        return qvrOk;
    } else {
        for (Index i = 0; i < n; i += kFirChunk) {
            const Index c = n - i < kFirChunk ? n - i : kFirChunk;
            moveElements(p + i, state->narrowScratch, c);
            directBlocks<Form>(state, state->narrowScratch, p + i, c, scale);
        }
        return qvrOk;
    }
}

template<class Form, class Transform, class Engine>
inline qvrStatus firRun(const typename Form::Data* src, typename Form::Data* dst, int n, typename Form::State* state,
                        int scale, const Transform& transform, const Engine& engine)
{
    if (anyNull(state, src, dst))
        return qvrErrNullPointer;
    if (n < 1)
        return qvrErrBadSize;
    if (state->tag == Form::multiRateTag)
        return engine(state, src, dst, n, scale);
    if (state->tag != Form::tag)
        return qvrErrBadContext;
    return src == dst ? inPlace<Form>(state, dst, n, scale, transform)
                      : outOfPlace<Form>(state, src, dst, n, scale, transform);
}

} // namespace

#endif
