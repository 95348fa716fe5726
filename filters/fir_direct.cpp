// The direct sums y[i] = sum over k of t[k] x[i + k].
//
// From m7 up a step computes R vectors of neighbouring outputs. Taps are taken in sets that stand one vector apart,
// k, k + W, k + 2W, k + 3W: the sample vector that output vector r needs for tap k + jW is the one that vector r + 1
// needs for tap k + (j - 1) W, so R + 3 loads serve 4 R products. With R = 8 that leaves 11 loads and 4 broadcasts for
// 32 products, and the multipliers are the limit even where half of the loads straddle two cache lines.
//
// Every output adds its products in the same order, whatever R and the position in the run.
//
// mx has one sum of four lanes for each output, eight outputs at a time.
#include "filters/fir.h"
#include "frame/ahead.h"

namespace {

// acc[r] += products of the taps k + jW for k from `from` to `to` - 1, j below J.
template<int W, int J, int R, class V>
QVR_INLINE void addSets(V* acc, const Elem<V>* x, const Elem<V>* t, Index from, Index to)
{
    for (Index k = from; k < to; k++) {
        V tap[J];
#pragma unroll
        for (int j = 0; j < J; j++)
            tap[j] = splat<V>(t[k + j * W]);
#pragma unroll
        for (int s = 0; s < R + J - 1; s++) {
            const V v = load<V>(x + k + s * W);
#pragma unroll
            for (int j = 0; j < J; j++)
                if (s - j >= 0 && s - j < R)
                    acc[s - j] = fma(tap[j], v, acc[s - j]);
        }
    }
}

template<int W, int R, class V> QVR_INLINE void sumTaps(V* acc, const Elem<V>* x, const Elem<V>* t, Index taps)
{
    for (; taps >= 4 * W; taps -= 4 * W, x += 4 * W, t += 4 * W)
        addSets<W, 4, R>(acc, x, t, 0, W);
    const Index rest = taps % W;
    switch (taps / W) {
    case 0:
        addSets<W, 1, R>(acc, x, t, 0, rest);
        break;
    case 1:
        addSets<W, 2, R>(acc, x, t, 0, rest);
        addSets<W, 1, R>(acc, x, t, rest, W);
        break;
    case 2:
        addSets<W, 3, R>(acc, x, t, 0, rest);
        addSets<W, 2, R>(acc, x, t, rest, W);
        break;
    default:
        addSets<W, 4, R>(acc, x, t, 0, rest);
        addSets<W, 3, R>(acc, x, t, rest, W);
    }
}

template<int R, class T> QVR_INLINE void step(const T* x, T* y, const T* t, Index taps)
{
    using V = Full<T>;
    constexpr int W = kLanes<T>;
    V acc[R] = {};
    sumTaps<W, R>(acc, x, t, taps);
#pragma unroll
    for (int r = 0; r < R; r++)
        store(y + r * W, acc[r]);
}

// No more outputs than a vector has lanes, by falling powers of two.
template<int N, class T> inline void fewOutputs(const T* x, T* y, Index n, const T* t, Index taps)
{
    if constexpr (N >= 1) {
        if (n >= N) {
            Vec<T, N> acc{};
            sumTaps<kLanes<T>, 1>(&acc, x, t, taps);
            store(y, acc);
            x += N;
            y += N;
            n -= N;
        }
        fewOutputs<N / 2>(x, y, n, t, taps);
    }
}

// n outputs, no more than R vectors hold; those beyond are formed and left.
template<int R, class T> __attribute__((noinline)) void rest(const T* x, T* y, Index n, const T* t, Index taps)
{
    using V = Full<T>;
    constexpr int W = kLanes<T>;
    V acc[R] = {};
    sumTaps<W, R>(acc, x, t, taps);
    for (int r = 0; r < R; r++)
        if (n >= (r + 1) * W)
            store(y + r * W, acc[r]);
        else if (n > r * W)
            storePartial(y + r * W, acc[r], static_cast<int>(n - r * W));
}

// Outputs that R vectors hold, and more than half of them do. A chain of sums takes as long in one vector as in eight,
// so what is too few for a step takes one step with outputs beyond them, or two that overlap.
template<int R, class T> inline void lastOutputs(const T* x, T* y, Index n, const T* t, Index taps, bool slack)
{
    constexpr Index H = R / 2 * kLanes<T>;
    if (R > 1 && n <= H) {
        lastOutputs<(R > 1 ? R / 2 : 1)>(x, y, n, t, taps, slack);
    } else if (slack) {
        rest<R>(x, y, n, t, taps);
    } else if constexpr (R > 1) {
        rest<R / 2>(x, y, H, t, taps);
        rest<R / 2>(x + n - H, y + n - H, H, t, taps);
    } else {
        fewOutputs<kLanes<T>>(x, y, n, t, taps);
    }
}

// The last n of `all` outputs, as many as R vectors hold at most, and some before them again with the same result.
template<int R, class T> inline void againOutputs(const T* x, T* y, Index all, Index n, const T* t, Index taps)
{
    constexpr Index B = R * kLanes<T>;
    if (R > 1 && n <= B / 2)
        againOutputs<(R > 1 ? R / 2 : 1)>(x, y, all, n, t, taps);
    else
        rest<R>(x + all - B, y + all - B, B, t, taps);
}

template<class T> inline void outputs(const T* x, T* y, Index n, const T* t, Index taps, bool slack)
{
    constexpr Index B = kFirStep * kLanes<T>;
    const bool far = isFar<T>(n);
    Index i = 0;
    for (; i + B <= n; i += B) {
        if (far) {
            askFor(y + i, kAheadBytes, B);
            askFor(x + i, kAheadBytes, B);
        }
        step<kFirStep>(x + i, y + i, t, taps);
    }
    if (i == 0)
        lastOutputs<kFirStep>(x, y, n, t, taps, slack);
    else if (i < n)
        againOutputs<kFirStep>(x, y, n, n - i, t, taps);
}

// ---- mx -------------------------------------------------------------------------------------------------------------

// G outputs: products one by one up to a boundary, then Turn taps a turn in one vector for each output, which starts
// from the head's sum in lane 0, then the rest one by one. Fewer taps than a turn go one by one.
template<int G, class T> QVR_INLINE void laneSums(const T* x, T* y, const T* t, Index taps, Index head, bool vectors)
{
    using V = Full<T>;
    constexpr int W = kLanes<T>, Turn = 2 * W;
    T sum[G] = {};
    Index k = 0;
    if (vectors && taps - head >= Turn) {
        for (; k < head; k++)
            for (int g = 0; g < G; g++)
                sum[g] += t[k] * get(x, g + k);
        V acc[G];
        for (int g = 0; g < G; g++) {
            acc[g] = V{};
            acc[g][0] = sum[g];
        }
        for (; k + Turn <= taps; k += Turn) {
            for (int half = 0; half < 2; half++) {
                const V tap = load<V>(t + k + half * W);
#pragma unroll
                for (int g = 0; g < G; g++)
                    acc[g] += tap * load<V>(x + g + k + half * W);
            }
        }
        for (int g = 0; g < G; g++)
            sum[g] = sumLanes(acc[g]);
    }
    for (; k < taps; k++)
        for (int g = 0; g < G; g++)
            sum[g] += t[k] * get(x, g + k);
    for (int g = 0; g < G; g++)
        put(y, g, sum[g]);
}

// In single precision the boundary is 16 bytes of the taps, in double 32 bytes of the window's fourth element.
template<int G, class T> QVR_INLINE void laneGroup(const T* x, T* y, const T* t, Index taps)
{
    constexpr uintptr_t boundary = sizeof(T) == 4 ? 16 : 32;
    const uintptr_t at = sizeof(T) == 4 ? reinterpret_cast<uintptr_t>(t) : reinterpret_cast<uintptr_t>(x + 3);
    laneSums<G>(x, y, t, taps, static_cast<Index>(-at % boundary / sizeof(T)), at % sizeof(T) == 0);
}

template<class T> inline void outputsByLanes(const T* x, T* y, Index n, const T* t, Index taps)
{
    Index i = 0;
    if constexpr (sizeof(T) == 4)
        for (; i + 8 <= n; i += 8)
            laneGroup<8>(x + i, y + i, t, taps);
    for (; i + 4 <= n; i += 4)
        laneGroup<4>(x + i, y + i, t, taps);
    for (; i < n; i++)
        laneGroup<1>(x + i, y + i, t, taps);
}

template<class T> QVR_INLINE void outputsOf(const T* x, T* y, Index n, const T* t, Index taps, bool slack)
{
    if constexpr (kSlot == qvrSlot_mx)
        outputsByLanes(x, y, n, t, taps);
    else
        outputs(x, y, n, t, taps, slack);
}

} // namespace

extern "C" {

void SLOT(ownFirOutputs_32f)(const float* x, float* y, int64_t n, const float* t, int64_t taps, bool slack)
{
    outputsOf(x, y, n, t, taps, slack);
}

void SLOT(ownFirOutputs_64f)(const double* x, double* y, int64_t n, const double* t, int64_t taps, bool slack)
{
    outputsOf(x, y, n, t, taps, slack);
}

void SLOT(ownFirTo16s)(const double* y, int16_t* dst, int64_t n, int scale)
{
    using V = Vec<double, 8>;
    const double factor = firScale64(scale);
    Index i = 0;
    for (; i + 8 <= n; i += 8)
        store(dst + i, roundedTo16(load<V>(y + i) * factor));
    if (i < n)
        storePartial(dst + i, roundedTo16(loadPartial<V>(y + i, static_cast<int>(n - i)) * factor),
                     static_cast<int>(n - i));
}

} // extern "C"
