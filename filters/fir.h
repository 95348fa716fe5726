// What the parts of the FIR filters share: the four type forms, the sizes per slot, the internal entries.
#ifndef QVR_FILTERS_FIR_H
#define QVR_FILTERS_FIR_H

#include "filters/fir_state_record.h"
#include "frame/element.h"
#include "frame/simd.h"
#include "frame/status.h"
#include "vector/narrow.h"
#include "vector/shared.h"

namespace {

constexpr int kFirTransformFrom = 512; // samples: fewer never go through the transform path
constexpr int kFirForkFrom = 1601;     // samples, or iterations of a multi-rate run: fewer are never forked

// Samples that an in-place run takes through scratch at a time, and the mixed forms' block of results.
constexpr int kFirChunk = kAvx ? 4224 : 4096;
constexpr int kFirMixedBlock = kFirChunk / 2;
// Elements of scratch, beside a few for each thread: the largest chunk of any slot. As doubles they hold the 8448
// narrower samples of a mixed chunk on the transform path.
constexpr int kFirScratch = 4224;
// Outputs that an in-place multi-rate run makes at a time.
constexpr int kFirMultiRateChunk = 4096;

// Outputs that one step of the direct kernels gives, by which a run is cut between delay buffer and source.
template<class Tap> constexpr int kFirGroup = kAvx && sizeof(Tap) == 4 ? 8 : 4;
template<class Tap> constexpr Index firDirectLimit(Index taps)
{
    return (taps + kFirGroup<Tap> - 1) / kFirGroup<Tap> * kFirGroup<Tap> + 1;
}

// Runs up to this length go through the delay buffer too, where the limit is less: copying a few samples costs less
// than the short stretches of outputs on both sides of a cut. On mx, where a sum depends on its window's address, none.
constexpr Index kFirShortRun = kSlot == qvrSlot_mx ? 0 : 256;

// Output vectors to a step: with four taps and a sample vector they fill the sixteen registers.
constexpr int kFirStep = 8;
// Elements in a delay buffer up to which zeros follow fewer new samples: a step may be computed for fewer outputs.
template<class Tap> constexpr int kFirSlack = kFirStep * kLanes<Tap>;
constexpr Index firBuffered(Index limit)
{
    return limit > kFirShortRun ? limit : kFirShortRun;
}
// How far the delay line moves on in its buffer before it is moved back. On mx its place is the sums' order.
constexpr Index kFirSlide = kSlot == qvrSlot_mx ? 0 : 512;

// The type forms. mixed: the samples are not of the taps' type.
struct Fir32f {
    using Tap = float;
    using Data = float;
    using History = float; // of a multi-rate state
    using State = qvrsFIRState_32f;
    static constexpr uint32_t tag = qvrTagFir_32f, multiRateTag = qvrTagFirMultiRate_32f;
    static constexpr bool mixed = false;
    static constexpr bool forks = !kAvx; // the direct run
};
struct Fir64f {
    using Tap = double;
    using Data = double;
    using History = double;
    using State = qvrsFIRState_64f;
    static constexpr uint32_t tag = qvrTagFir_64f, multiRateTag = qvrTagFirMultiRate_64f;
    static constexpr bool mixed = false, forks = true;
};
struct Fir64f_32f {
    using Tap = double;
    using Data = float;
    using History = float;
    using State = qvrsFIRState64f_32f;
    static constexpr uint32_t tag = qvrTagFir64f_32f, multiRateTag = qvrTagFirMultiRate64f_32f;
    static constexpr bool mixed = true, forks = true;
};
struct Fir64f_16s {
    using Tap = double;
    using Data = int16_t;
    using History = double;
    using State = qvrsFIRState64f_16s;
    static constexpr uint32_t tag = qvrTagFir64f_16s, multiRateTag = qvrTagFirMultiRate64f_16s;
    static constexpr bool mixed = true, forks = true;
};

// Whole elements, source and destination overlapping or not.
template<class T> QVR_INLINE void moveElements(const T* src, T* dst, Index n)
{
    __builtin_memmove(static_cast<void*>(dst), static_cast<const void*>(src), static_cast<size_t>(n) * sizeof(T));
}
template<class T> QVR_INLINE void zeroElements(T* p, Index n)
{
    using V = Full<T>;
    Index i = 0;
    for (; i + lanes<V> <= n; i += lanes<V>)
        store(p + i, V{});
    for (; i < n; i++)
        put(p, i, T{0});
}

// Samples in the taps' type.
QVR_INLINE void widen(const float* src, float* dst, Index n)
{
    SLOT(qvrsCopy_32f)(src, dst, static_cast<int>(n));
}
QVR_INLINE void widen(const double* src, double* dst, Index n)
{
    SLOT(qvrsCopy_64f)(src, dst, static_cast<int>(n));
}
QVR_INLINE void widen(const float* src, double* dst, Index n)
{
    SLOT(qvrsConvert_32f64f)(src, dst, static_cast<int>(n));
}
QVR_INLINE void widen(const int16_t* src, double* dst, Index n)
{
    SLOT(qvrsConvert_16s64f_Sfs)(src, dst, static_cast<int>(n), 0);
}

// 2 to the power of -scale, of which the low seven bits of the magnitude count; by exponent arithmetic on 1.0, so that
// in single precision a magnitude of 127 gives zero for a positive scale.
QVR_INLINE int scaleExponent(int scale)
{
    const uint32_t magnitude = scale < 0 ? -static_cast<uint32_t>(scale) : static_cast<uint32_t>(scale);
    const int low = static_cast<int>(magnitude & 127);
    return scale < 0 ? low : -low;
}
QVR_INLINE double firScale64(int scale)
{
    return powerOfTwo64(scaleExponent(scale));
}
QVR_INLINE float firScale32(int scale)
{
    return powerOfTwo32(scaleExponent(scale));
}

// To 16 bits: saturated, then rounded half away from zero by adding a half and truncating; a NaN gives 0.
template<class V> QVR_INLINE Vec<int16_t, lanes<V>> roundedTo16(V v)
{
    using T = Elem<V>;
    v = v == v ? v : V{};
    v = max(min(v, splat<V>(T(32767))), splat<V>(T(-32768)));
    const Bits<V> sign = bits(v) & bits(splat<V>(T(-0.0)));
    return packSaturate(toIntTruncate(v + bitcast<V>(sign | bits(splat<V>(T(0.5))))));
}

} // namespace

extern "C" {

// y[i] = sum over k of t[k] x[i + k], for i below n. The order of each sum is the same wherever a run is cut, but on
// mx. With slack x is readable, without a NaN of old, as for kFirSlack outputs.
QVR_HIDDEN void SLOT(ownFirOutputs_32f)(const float* x, float* y, int64_t n, const float* t, int64_t taps, bool slack);
QVR_HIDDEN void SLOT(ownFirOutputs_64f)(const double* x, double* y, int64_t n, const double* t, int64_t taps,
                                        bool slack);
// dst[i] = y[i] * 2^-scale to 16 bits, as roundedTo16.
QVR_HIDDEN void SLOT(ownFirTo16s)(const double* y, int16_t* dst, int64_t n, int scale);

// The transform path: at least one sample, a state with a plan.
QVR_HIDDEN qvrStatus SLOT(fftFIRSR_32f)(qvrsFIRState_32f* state, const float* src, float* dst, int n);
QVR_HIDDEN qvrStatus SLOT(fftFIRSR_64f)(qvrsFIRState_64f* state, const double* src, double* dst, int n);
QVR_HIDDEN qvrStatus SLOT(fftFIRSR64f_32f)(qvrsFIRState64f_32f* state, const float* src, float* dst, int n);
QVR_HIDDEN qvrStatus SLOT(fftFIRSR64f_16s_Sfs)(qvrsFIRState64f_16s* state, const int16_t* src, int16_t* dst, int n,
                                               int scale);

// Multi-rate runs, out of place and in place, by the state's mode; an unknown mode gives qvrErrBadContext. The first
// also takes FI34.
QVR_HIDDEN qvrStatus SLOT(ownFIRMR_32f)(qvrsFIRState_32f* state, const float* src, float* dst, int iterations);
QVR_HIDDEN qvrStatus SLOT(ownFIRMR_64f)(qvrsFIRState_64f* state, const double* src, double* dst, int iterations);
QVR_HIDDEN qvrStatus SLOT(ownFIRMR64f_32f)(qvrsFIRState64f_32f* state, const float* src, float* dst, int iterations);
QVR_HIDDEN qvrStatus SLOT(ownFIRMR64f_16s_Sfs)(qvrsFIRState64f_16s* state, const int16_t* src, int16_t* dst,
                                               int iterations, int scale);

// Creators of multi-rate states, whose runs agree with the one-shot functions of the same factors and phases. Mode 2
// needs an up factor of 1. The delay line, newest sample first, holds ceil(tapsLen / upFactor) elements, or is null.
#define QVR_FIR_MULTI_RATE_CREATOR(name, State, Tap, Data)                                                             \
    QVR_HIDDEN qvrStatus SLOT(name)(State * *statePtr, const Tap* taps, int tapsLen, int upFactor, int upPhase,        \
                                    int downFactor, int downPhase, int mode, const Data* dlyLine);
QVR_FIR_MULTI_RATE_CREATOR(ownFIRMRInitAlloc_32f, qvrsFIRState_32f, float, float)
QVR_FIR_MULTI_RATE_CREATOR(ownFIRMRInitAlloc_64f, qvrsFIRState_64f, double, double)
QVR_FIR_MULTI_RATE_CREATOR(ownFIRMRInitAlloc64f_32f, qvrsFIRState64f_32f, double, float)
QVR_FIR_MULTI_RATE_CREATOR(ownFIRMRInitAlloc64f_16s, qvrsFIRState64f_16s, double, int16_t)
#undef QVR_FIR_MULTI_RATE_CREATOR

} // extern "C"

#endif
