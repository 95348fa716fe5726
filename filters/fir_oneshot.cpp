// Multi-rate FIR in one call, without a state.
//
// Time runs on a grid on which an input sample enters every U steps, the first at upPhase, and an output falls every D
// steps, the first at downPhase. Output o at step t = downPhase + o D has the newest sample k = floor((t - upPhase) /
// U) and the phase q = t - upPhase - k U, and is the sum over m of taps[q + m U] x[k - m]; x[-1 - i] is dlyLine[i].
// After P = U / gcd(U, D) outputs q returns, and k has moved on by D / gcd.
//
// The run goes in blocks of the input. A block's samples, in the type of the sums, are laid out oldest first; then each
// phase in turn has its taps laid out likewise, and gives its outputs of the block, four at a time. Phases or strides
// too long for that take samples and taps from where they are.
//
// Sums of the 16s form are in single precision, and their order is part of its contract: terms 8 i to 8 i + 3 into the
// lanes of one accumulator, 8 i + 4 to 8 i + 7 into another; both are added, then lanes 2 and 3 to 0 and 1, then 1 to
// 0, then the remaining terms one by one.
#include "filters/fir.h"
#include "filters/functions.h"
#include "frame/memory.h"
#include "vector/shared.h"

namespace {

constexpr Index kBlockSamples = 4096; // of a block, with the history before it
constexpr Index kPhaseTaps = 2048;    // longest phase that is laid out

struct Rate {
    Index taps, U, upPhase, D, downPhase;
    Index a, b, K; // phase q has a + (q < b) taps, the longest K
    Index period, periodAdvance;
    Index wholeStep, phaseStep; // D = wholeStep U + phaseStep

    Index tapsOf(Index q) const { return a + (q < b ? 1 : 0); }
};

Index gcd(Index x, Index y)
{
    while (y != 0) {
        const Index r = x % y;
        x = y;
        y = r;
    }
    return x;
}

// An output's place.
struct Place {
    Index k, q;
};
Place placeOf(const Rate& rate, Index o)
{
    // o / U iterations, so that no product passes 64 bits.
    const Index iterations = o / rate.U, t = rate.downPhase + o % rate.U * rate.D - rate.upPhase;
    const Index k = t < 0 ? -1 : t / rate.U;
    return {iterations * rate.D + k, t - k * rate.U};
}

// The place of the next output, without a division.
QVR_INLINE void stepPlace(const Rate& rate, Place& place)
{
    place.q += rate.phaseStep;
    place.k += rate.wholeStep;
    if (place.q >= rate.U) {
        place.q -= rate.U;
        place.k++;
    }
}

// Terms newest first: term(m) for m below n.
template<class Tap, class Term> QVR_INLINE Tap orderedSum(Index n, const Term& term)
{
    Tap lane[8] = {}, r = 0;
    Index m = 0;
    if (n >= 8) {
        for (; m + 8 <= n; m += 8)
            for (int l = 0; l < 8; l++)
                lane[l] += term(m + l);
        for (int l = 0; l < 4; l++)
            lane[l] += lane[l + 4];
        r = (lane[0] + lane[2]) + (lane[1] + lane[3]);
    }
    for (; m < n; m++)
        r += term(m);
    return r;
}

// Four sums over windows and taps laid out oldest first, so that a vector's lanes hold falling terms and the last
// elements come first. The folding adds the same pairs in either order of lanes.
template<int G> QVR_INLINE void foldedSums(const float* w, Index stride, const float* h, Index n, float* r)
{
    using V = Vec<float, 8>;
    V acc[G] = {};
    Index left = n;
    for (; left >= 8; left -= 8) {
        const V tap = load<V>(h + left - 8);
#pragma unroll
        for (int i = 0; i < G; i++)
            acc[i] += tap * load<V>(w + i * stride + left - 8);
    }
#pragma unroll
    for (int i = 0; i < G; i++)
        r[i] = sumLanes(hi(acc[i]) + lo(acc[i]));
    for (; left > 0; left--)
#pragma unroll
        for (int i = 0; i < G; i++)
            r[i] += h[left - 1] * w[i * stride + left - 1];
}
template<int G> QVR_INLINE void foldedSums(const double* w, Index stride, const double* h, Index n, double* r)
{
    using V = Vec<double, 4>;
    V acc[G] = {};
    Index m = 0;
    for (; m + 4 <= n; m += 4) {
        const V tap = load<V>(h + m);
#pragma unroll
        for (int i = 0; i < G; i++)
            acc[i] = fma(tap, load<V>(w + i * stride + m), acc[i]);
    }
#pragma unroll
    for (int i = 0; i < G; i++)
        r[i] = sumLanes(acc[i]);
    for (; m < n; m++)
#pragma unroll
        for (int i = 0; i < G; i++)
            r[i] += h[m] * w[i * stride + m];
}

// Sums to outputs of the caller's type.
struct Narrow {
    template<class V> QVR_INLINE Vec<float, lanes<V>> operator()(V y) const { return narrowed(y); }
};
struct ScaledTo16 {
    float factor;
    // Scaled in single precision, rounded by a half in double.
    template<class V> QVR_INLINE Vec<int16_t, lanes<V>> operator()(V y) const
    {
        return roundedTo16(convert<double>(y * factor));
    }
};

// A few sums to outputs that stand `stride` apart.
template<class V, class Data, class Finish> QVR_INLINE void putGroup(V y, Data* dst, Index stride, const Finish& finish)
{
    const auto out = finish(y);
    if (stride == 1) {
        store(dst, out);
        return;
    }
#pragma unroll
    for (int i = 0; i < lanes<V>; i++)
        put(dst, i * stride, out[i]);
}
template<class Tap, class Data, class Finish> QVR_INLINE void putOne(Tap y, Data* dst, const Finish& finish)
{
    put(dst, 0, finish(Vec<Tap, 2>{y, y})[0]);
}

QVR_INLINE void widenBlock(const float* src, double* dst, Index n)
{
    SLOT(qvrsConvert_32f64f)(src, dst, static_cast<int>(n));
}
QVR_INLINE void widenBlock(const int16_t* src, float* dst, Index n)
{
    SLOT(qvrsConvert_16s32f)(src, dst, static_cast<int>(n));
}

// Samples from .. from + n - 1 of the history and the input behind it.
template<class Tap, class Data> void layOutSamples(const Data* src, const Data* dlyLine, Index from, Index n, Tap* w)
{
    Index i = 0;
    for (; i < n && from + i < 0; i++)
        w[i] = static_cast<Tap>(get(dlyLine, -1 - (from + i)));
    if (i < n)
        widenBlock(src + from + i, w + i, n - i);
}

template<class Tap, class Data, class Finish>
void runBlocks(const Data* src, Data* dst, Index outputs, const Tap* taps, const Rate& rate, const Data* dlyLine,
               const Finish& finish)
{
    Tap w[kBlockSamples], h[kPhaseTaps];
    const Index periods = (kBlockSamples - rate.K) / rate.periodAdvance, most = periods * rate.period;
    for (Index o = 0; o < outputs; o += most) {
        const Index count = outputs - o < most ? outputs - o : most;
        Place place = placeOf(rate, o);
        const Index from = place.k - rate.K + 1;
        layOutSamples(src, dlyLine, from, placeOf(rate, o + count - 1).k + 1 - from, w);
        for (Index r = 0; r < rate.period && r < count; r++, stepPlace(rate, place)) {
            const Index n = rate.tapsOf(place.q);
            for (Index m = 0; m < n; m++)
                h[n - 1 - m] = get(taps, place.q + m * rate.U);
            const Tap* x = w + (place.k - n + 1 - from);
            Index i = r;
            for (; i + 3 * rate.period < count; i += 4 * rate.period) {
                Tap y[4];
                foldedSums<4>(x, rate.periodAdvance, h, n, y);
                putGroup(load<Vec<Tap, 4>>(y), dst + o + i, rate.period, finish);
                x += 4 * rate.periodAdvance;
            }
            for (; i < count; i += rate.period) {
                Tap y;
                foldedSums<1>(x, 0, h, n, &y);
                putOne(y, dst + o + i, finish);
                x += rate.periodAdvance;
            }
        }
    }
}

template<class Tap, class Data, class Finish>
void runInPieces(const Data* src, Data* dst, Index outputs, const Tap* taps, const Rate& rate, const Data* dlyLine,
                 const Finish& finish)
{
    Place place = placeOf(rate, 0);
    for (Index o = 0; o < outputs; o++, stepPlace(rate, place)) {
        const Tap y = orderedSum<Tap>(rate.tapsOf(place.q), [&](Index m) {
            const Index k = place.k - m;
            const Data x = k < 0 ? get(dlyLine, -1 - k) : get(src, k);
            return static_cast<Tap>(x) * get(taps, place.q + m * rate.U);
        });
        putOne(y, dst + o, finish);
    }
}

// The newest samples in front, those that the input did not displace behind them.
template<class Data> void advanceDelay(const Data* src, Index inputs, Data* dlyLine, Index K)
{
    if (inputs < K)
        moveElements(dlyLine, dlyLine + inputs, K - inputs);
    for (Index k = 0; k < inputs && k < K; k++)
        put(dlyLine, k, get(src, inputs - 1 - k));
}

// Every check in its order.
template<class Data>
qvrStatus checkCall(const Data* src, const Data* dst, int numIters, const void* taps, int tapsLen, int upFactor,
                    int upPhase, int downFactor, int downPhase, const Data* dlyLine)
{
    if (anyNull(src, dst))
        return qvrErrNullPointer;
    if (numIters < 1)
        return qvrErrBadSize;
    if (taps == nullptr)
        return qvrErrNullPointer;
    if (tapsLen < 1)
        return qvrErrBadTapsLen;
    if (upFactor < 1 || downFactor < 1)
        return qvrErrBadMultiRateFactor;
    if (upPhase < 0 || upPhase >= upFactor || downPhase < 0 || downPhase >= downFactor)
        return qvrErrBadMultiRatePhase;
    return dlyLine == nullptr ? qvrErrNullPointer : qvrOk;
}

template<class Tap, class Data, class Finish>
qvrStatus oneShot(const Data* src, Data* dst, int numIters, const Tap* taps, int tapsLen, int upFactor, int upPhase,
                  int downFactor, int downPhase, Data* dlyLine, const Finish& finish)
{
    if (const qvrStatus status = checkCall(src, dst, numIters, taps, tapsLen, upFactor, upPhase, downFactor, downPhase,
                                           static_cast<const Data*>(dlyLine)))
        return status;
    const Index U = upFactor, D = downFactor, a = tapsLen / U, b = tapsLen % U, common = gcd(U, D);
    const Rate rate = {tapsLen,    U,          upPhase, D,    downPhase, a, b, a + (b != 0 ? 1 : 0),
                       U / common, D / common, D / U,   D % U};
    const Index outputs = numIters * U;
    if (rate.K <= kPhaseTaps && rate.periodAdvance <= kBlockSamples - kPhaseTaps)
        runBlocks(src, dst, outputs, taps, rate, dlyLine, finish);
    else
        runInPieces(src, dst, outputs, taps, rate, dlyLine, finish);
    advanceDelay(src, numIters * D, dlyLine, rate.K);
    return qvrOk;
}

} // namespace

extern "C" {

qvrStatus SLOT(qvrsFIRMR32f_Direct_16s_Sfs)(const qvr16s* src, qvr16s* dst, int numIters, const qvr32f* taps,
                                            int tapsLen, int upFactor, int upPhase, int downFactor, int downPhase,
                                            qvr16s* dlyLine, int scaleFactor)
{
    return oneShot(src, dst, numIters, taps, tapsLen, upFactor, upPhase, downFactor, downPhase, dlyLine,
                   ScaledTo16{firScale32(scaleFactor)});
}

qvrStatus SLOT(qvrsFIRMR64f_Direct_32f)(const qvr32f* src, qvr32f* dst, int numIters, const qvr64f* taps, int tapsLen,
                                        int upFactor, int upPhase, int downFactor, int downPhase, qvr32f* dlyLine)
{
    return oneShot(src, dst, numIters, taps, tapsLen, upFactor, upPhase, downFactor, downPhase, dlyLine, Narrow{});
}

qvrStatus SLOT(qvrsFIRMR64f_Direct_32f_I)(qvr32f* srcDst, int numIters, const qvr64f* taps, int tapsLen, int upFactor,
                                          int upPhase, int downFactor, int downPhase, qvr32f* dlyLine)
{
    if (const qvrStatus status = checkCall<float>(srcDst, srcDst, numIters, taps, tapsLen, upFactor, upPhase,
                                                  downFactor, downPhase, dlyLine))
        return status;
    const Index inputs = Index{numIters} * downFactor;
    float* copy = inputs <= INT32_MAX / 4 ? allocate<float>(static_cast<int>(inputs)) : nullptr;
    if (copy == nullptr)
        return qvrErrNoMemory;
    moveElements(srcDst, copy, inputs);
    const qvrStatus status = SLOT(qvrsFIRMR64f_Direct_32f)(copy, srcDst, numIters, taps, tapsLen, upFactor, upPhase,
                                                           downFactor, downPhase, dlyLine);
    release(copy);
    return status;
}

} // extern "C"
