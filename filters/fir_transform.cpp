// FIR by overlap-save: blocks of N samples, of which the first P = L - 1 overlap the block before, give B = N - P
// outputs each, block[P ..] of the circular convolution with the taps.
//
//   single    n <= B: one block, the delay line and the samples, zeros behind
//   serial    the first block from the delay line and B samples; the others from the source alone
//   parallel  n >= 1601 and two threads: the blocks dealt out in turn, thread t taking t, t + T, ...
//
// The delay line is complete after the first block, which no other thread reads it from.
#include "filters/fir_run.h"

#include "fourier/real/spec.h"
#include "frame/ahead.h"

namespace {

// One block through the spectrum of the taps. `from` is the block itself or N source samples.
QVR_INLINE qvrStatus filterBlock(const float* from, float* block, const qvrsFFTSpec_R_32f* plan, const float* spectrum,
                                 int N, uint8_t* work)
{
    if (const qvrStatus status = SLOT(ownqvrsFFTFwd_RToPacked_32f)(from, block, plan, work))
        return status;
    SLOT(ownqvrsMulPacked_32f_I)(spectrum, block, N);
    return SLOT(ownqvrsFFTInv_PackedToR_32f)(block, block, plan, work);
}
QVR_INLINE qvrStatus filterBlock(const double* from, double* block, const qvrsFFTSpec_R_64f* plan,
                                 const double* spectrum, int N, uint8_t* work)
{
    if (const qvrStatus status = SLOT(ownqvrsFFTFwd_RToPacked_64f)(from, block, plan, work))
        return status;
    SLOT(ownqvrsMulPacked_64f_I)(spectrum, block, N);
    return SLOT(ownqvrsFFTInv_PackedToR_64f)(block, block, plan, work);
}

// Outputs of a block to the caller.
QVR_INLINE void give(const float* y, float* dst, Index n, int)
{
    moveElements(y, dst, n);
}
QVR_INLINE void give(const double* y, double* dst, Index n, int)
{
    moveElements(y, dst, n);
}
template<class Data> QVR_INLINE void give(const double* y, Data* dst, Index n, int scale)
{
    deliver(y, dst, n, scale);
}

template<class Form> struct TransformRun {
    using Tap = typename Form::Tap;
    using Data = typename Form::Data;
    typename Form::State* state;
    const Data* src;
    Data* dst;
    Index n;
    int scale;
    Index N, P, B;

    Tap* block(int thread) const { return state->fftBlocks + thread * N; }
    uint8_t* work(int thread) const
    {
        return state->fftWork != nullptr ? state->fftWork + Index{thread} * state->fftWorkSize : nullptr;
    }
    qvrStatus filter(const Tap* from, int thread) const
    {
        return filterBlock(from, block(thread), state->fftPlan, state->tapSpectrum, static_cast<int>(N), work(thread));
    }

    // The first block, which holds the delay line's P samples already.
    qvrStatus first() const
    {
        widen(src, block(0) + P, B);
        if (const qvrStatus status = filter(block(0), 0))
            return status;
        give(block(0) + P, dst, B, scale);
        return qvrOk;
    }
    void keepNewest() const { widen(src + n - state->tapsLen, state->delayStore, state->tapsLen); }

    // The block whose outputs begin at B + i.
    qvrStatus later(Index i, int thread) const
    {
        const Data* from = src + B + i - P;
        const Index left = n - B - i;
        Tap* b = block(thread);
        if (left < N) {
            const Index count = left + P < N ? left + P : N;
            widen(from, b, count);
            zeroElements(b + count, N - count);
            if (const qvrStatus status = filter(b, thread))
                return status;
        } else if constexpr (Form::mixed) {
            widen(from, b, N);
            if (const qvrStatus status = filter(b, thread))
                return status;
        } else {
            if (const qvrStatus status = filter(from, thread))
                return status;
        }
        give(b + P, dst + B + i, left < B ? left : B, scale);
        return qvrOk;
    }

    qvrStatus single() const
    {
        Tap* b = block(0);
        widen(src, b + P, n);
        moveElements(b + n - 1, state->delayStore, state->tapsLen);
        zeroElements(b + P + n, N - P - n);
        if (const qvrStatus status = filter(b, 0))
            return status;
        give(b + P, dst, n, scale);
        return qvrOk;
    }

    qvrStatus serial() const
    {
        if (const qvrStatus status = first())
            return status;
        keepNewest();
        for (Index i = 0; i < n - B; i += B) {
            if (isFar<Data>(n)) {
                askFor(src + B + i, B * Index{sizeof(Data)}, B);
                askFor(dst + B + i, 0, B);
            }
            if (const qvrStatus status = later(i, 0))
                return status;
        }
        return qvrOk;
    }

    // A failed block does not stop its thread; the most negative status is the run's.
    qvrStatus parallel(int threads) const
    {
        int32_t* status = state->threadStatus;
        for (int t = 0; t < threads; t++)
            status[t] = qvrOk;
        const Index blocks = (n + B - 1) / B;
        parallelTeam(threads, [this, status, blocks](int t, int team) {
            for (Index b = t; b < blocks; b += team) {
                const qvrStatus s = b == 0 ? first() : later((b - 1) * B, t);
                if (b == 0)
                    keepNewest();
                if (s < status[t])
                    status[t] = s;
            }
        });
        qvrStatus worst = qvrOk;
        for (int t = 0; t < threads; t++)
            worst = status[t] < worst ? status[t] : worst;
        return worst;
    }

    qvrStatus run() const
    {
        // An overlap of no samples needs taps below the plan's threshold, so P >= 1.
        moveElements(state->delayStore + state->delayIndex + 1, block(0), P);
        state->delayIndex = 0;
        if (n <= B)
            return single();
        const int threads = firThreads(state);
        return n < kFirForkFrom || threads < 2 ? serial() : parallel(threads);
    }
};

template<class Form>
qvrStatus transformRun(typename Form::State* state, const typename Form::Data* src, typename Form::Data* dst, int n,
                       int scale)
{
    const Index N = state->fftLen, P = state->tapsLen - 1;
    const TransformRun<Form> run = {state, src, dst, n, scale, N, P, N - P};
    return run.run();
}

} // namespace

extern "C" {

qvrStatus SLOT(fftFIRSR_32f)(qvrsFIRState_32f* state, const float* src, float* dst, int n)
{
    return transformRun<Fir32f>(state, src, dst, n, 0);
}

qvrStatus SLOT(fftFIRSR_64f)(qvrsFIRState_64f* state, const double* src, double* dst, int n)
{
    return transformRun<Fir64f>(state, src, dst, n, 0);
}

qvrStatus SLOT(fftFIRSR64f_32f)(qvrsFIRState64f_32f* state, const float* src, float* dst, int n)
{
    return transformRun<Fir64f_32f>(state, src, dst, n, 0);
}

qvrStatus SLOT(fftFIRSR64f_16s_Sfs)(qvrsFIRState64f_16s* state, const int16_t* src, int16_t* dst, int n, int scale)
{
    return transformRun<Fir64f_16s>(state, src, dst, n, scale);
}

} // extern "C"
