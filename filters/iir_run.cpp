// Runs of recursive filters.
//
// The sample step, with the delay line d of the transposed form:
//   y = b0 x + d[0];  d[k] = b[k + 1] x - a[k + 1] y + d[k + 1]
// The block path (m7 and up) does a chunk of n samples in two stages: the non-recursive part of all of them, a plain
// vector filter into blockBuffer, then the recursion, four samples a step by the look-ahead rows. The chain from one
// step to the next is a broadcast and four dependent operations for four samples, where the sample step has two for
// one.
#include "filters/iir.h"

#include "frame/simd.h"
#include "frame/status.h"

namespace {

using Index = int64_t;

double loadSample(const double* p, Index i)
{
    return load<Vec<double, 1>>(p + i)[0];
}
void storeSample(double* p, Index i, double x)
{
    store(p + i, Vec<double, 1>{x});
}

void sampleSteps(const double* src, double* dst, Index n, const qvrsIIRState_64f* state)
{
    const Index L = state->order;
    const double* b = state->tapsStore;
    const double* a = b + L; // a[1..L]
    double* d = state->delayStore;
    for (Index i = 0; i < n; i++) {
        const double x = loadSample(src, i);
        const double y = b[0] * x + d[0];
        Index k = 0;
        using V = Full<double>;
        for (; k + kLanes<double> <= L; k += kLanes<double>)
            store(d + k, load<V>(b + k + 1) * x - load<V>(a + k + 1) * y + load<V>(d + k + 1));
        for (; k < L; k++)
            d[k] = b[k + 1] * x - a[k + 1] * y + d[k + 1];
        storeSample(dst, i, y);
    }
}

// First order, its three coefficients in registers.
void firstOrder(const double* src, double* dst, Index n, const qvrsIIRState_64f* state)
{
    const double b0 = state->tapsStore[0], b1 = state->tapsStore[1], a1 = state->tapsStore[2];
    double d = state->delayStore[0];
    for (Index i = 0; i < n; i++) {
        const double x = loadSample(src, i);
        const double y = b0 * x + d;
        d = b1 * x - a1 * y;
        storeSample(dst, i, y);
    }
    state->delayStore[0] = d;
}

// mx, order 2 and up: two samples a turn, the additions from left to right.
void samplePairs(const double* src, double* dst, Index n, const qvrsIIRState_64f* state)
{
    const Index L = state->order;
    const double* b = state->tapsStore;
    const double* a = b + L;
    double* d = state->delayStore;
    using V = Full<double>;
    Index i = 0;
    for (; i + 2 <= n; i += 2) {
        const double x0 = loadSample(src, i), x1 = loadSample(src, i + 1);
        const double y0 = b[0] * x0 + d[0];
        const double y1 = b[0 + 1] * x0 + d[1] + b[0] * x1 - a[1] * y0;
        Index k = 0;
        for (; k + kLanes<double> <= L - 1; k += kLanes<double>)
            store(d + k, load<V>(b + k + 1) * x1 - load<V>(a + k + 1) * y1 + load<V>(b + k + 2) * x0 -
                             load<V>(a + k + 2) * y0 + load<V>(d + k + 2));
        for (; k <= L - 2; k++)
            d[k] = b[k + 1] * x1 - a[k + 1] * y1 + b[k + 2] * x0 - a[k + 2] * y0 + d[k + 2];
        d[L - 1] = b[L] * x1 - a[L] * y1;
        storeSample(dst, i, y0);
        storeSample(dst, i + 1, y1);
    }
    sampleSteps(src + i, dst + i, n - i, state);
}

// w[i] = sum over k of b[k] src[i + L - k], for i from 0 to count - 1. Lanes x 4 outputs at a time: two operations
// start each cycle and take four, so eight accumulators in flight would be ideal and four with loads between come
// close.
void nonRecursive(const double* src, Index count, const double* b, Index L, double* w)
{
    using V = Full<double>;
    constexpr int N = kLanes<double>;
    Index i = 0;
    for (; i + 4 * N <= count; i += 4 * N) {
        V s0{}, s1{}, s2{}, s3{};
        for (Index k = 0; k <= L; k++) {
            const double* x = src + i + L - k;
            const V tap = splat<V>(b[k]);
            s0 = fma(tap, load<V>(x), s0);
            s1 = fma(tap, load<V>(x + N), s1);
            s2 = fma(tap, load<V>(x + 2 * N), s2);
            s3 = fma(tap, load<V>(x + 3 * N), s3);
        }
        store(w + i, s0);
        store(w + i + N, s1);
        store(w + i + 2 * N, s2);
        store(w + i + 3 * N, s3);
    }
    for (; i < count; i++) {
        double s = 0;
        for (Index k = 0; k <= L; k++)
            s += b[k] * loadSample(src, i + L - k);
        w[i] = s;
    }
}

using Quad = Vec<double, 4>;

// y[t] for t from L to n - 1, from w[t] = blockBuffer[t - L] and the outputs before. `history` outputs stand in dst.
template<int Order> QVR_INLINE void recursive(double* dst, Index n, const qvrsIIRState_64f* state, Index order)
{
    const Index L = Order != 0 ? Order : order;
    const double* w = state->blockBuffer;
    const double* a = state->tapsStore + L + 1; // a[1] ..
    const double* rows = state->lookAheadRows;
    const double c0 = -a[0], c1 = L > 1 ? -a[1] : 0, c2 = L > 2 ? -a[2] : 0;
    // What w[t] .. w[t + 3] give to the four outputs goes by the impulse response 1, h1, h2, h3 of the recursion. Zeros
    // are shifted in rather than multiplied in: an infinite sample must not reach the outputs before it.
    const double h1 = c0, h2 = c0 * h1 + c1, h3 = c0 * h2 + c1 * h1 + c2;
    const Quad r0 = load<Quad>(rows), r1 = L > 1 ? load<Quad>(rows + 4) : Quad{};
    const Quad r2 = L > 2 ? load<Quad>(rows + 8) : Quad{}, r3 = L > 3 ? load<Quad>(rows + 12) : Quad{};
    Index t = L;
    // The last four outputs, the newest in lane 3; lanes that the order does not reach meet zero rows.
    Quad y{};
    for (int k = 0; k < 4 && k < L; k++)
        y[3 - k] = loadSample(dst, t - 1 - k);
    for (; t + 4 <= n; t += 4) {
        const Quad v = load<Quad>(w + t - L), none{};
        Quad s = fma(splat<Quad>(h1), __builtin_shufflevector(v, none, 4, 0, 1, 2), v);
        s = fma(splat<Quad>(h2), __builtin_shufflevector(v, none, 4, 4, 0, 1), s);
        s = fma(splat<Quad>(h3), __builtin_shufflevector(v, none, 4, 4, 4, 0), s);
        // Older outputs, the newest of them last, because it was made last.
        if constexpr (Order == 0 || Order > 4) {
            Quad other{};
            Index k = L - 1;
            for (; k >= 5; k -= 2) {
                s = fma(load<Quad>(rows + 4 * k), splat<Quad>(loadSample(dst, t - 1 - k)), s);
                other = fma(load<Quad>(rows + 4 * k - 4), splat<Quad>(loadSample(dst, t - k)), other);
            }
            if (k == 4)
                s = fma(load<Quad>(rows + 16), splat<Quad>(loadSample(dst, t - 5)), s);
            s += other;
        }
        const Quad y3 = splat<Quad>(y[3]), y2 = splat<Quad>(y[2]), y1 = splat<Quad>(y[1]), y0 = splat<Quad>(y[0]);
        Quad p = fma(r0, y3, s);
        if constexpr (Order == 1) {
            y = p;
        } else if constexpr (Order == 2) {
            y = fma(r1, y2, p);
        } else {
            Quad q = r1 * y2;
            p = fma(r2, y1, p);
            q = fma(r3, y0, q);
            y = p + q;
        }
        store(dst + t, y);
    }
    for (; t < n; t++) {
        double s = w[t - L];
        for (Index k = 0; k < L; k++)
            s -= a[k] * loadSample(dst, t - 1 - k);
        storeSample(dst, t, s);
    }
}

void blockChunk(const double* src, double* dst, Index n, const qvrsIIRState_64f* state)
{
    const Index L = state->order;
    const double* b = state->tapsStore;
    const double* a = b + L;
    double* d = state->delayStore;
    nonRecursive(src, n - L, b, L, state->blockBuffer);
    sampleSteps(src, dst, L, state);
    // The numerator part of the new delay line comes before the recursion, which in place overwrites these samples.
    for (Index k = 0; k < L; k++) {
        double s = 0;
        for (Index j = L - k; j >= 1; j--)
            s += b[k + j] * loadSample(src, n - j);
        d[k] = s;
    }
    switch (L) {
    case 1:
        recursive<1>(dst, n, state, L);
        break;
    case 2:
        recursive<2>(dst, n, state, L);
        break;
    case 3:
        recursive<3>(dst, n, state, L);
        break;
    case 4:
        recursive<4>(dst, n, state, L);
        break;
    case 6:
        recursive<6>(dst, n, state, L);
        break;
    case 8:
        recursive<8>(dst, n, state, L);
        break;
    default:
        recursive<0>(dst, n, state, L);
    }
    for (Index k = 0; k < L; k++) {
        double s = 0;
        for (Index j = L - k; j >= 1; j--)
            s += a[k + j] * loadSample(dst, n - j);
        d[k] -= s;
    }
}

void runAnyOrder(const double* src, double* dst, Index n, const qvrsIIRState_64f* state)
{
    const Index L = state->order;
    if constexpr (!kHasIirBlocks) {
        if (L == 1)
            firstOrder(src, dst, n, state);
        else
            samplePairs(src, dst, n, state);
    } else {
        for (Index i = 0; i < n; i += kIirChunk) {
            const Index chunk = n - i < kIirChunk ? n - i : kIirChunk;
            if (chunk > 4 * L)
                blockChunk(src + i, dst + i, chunk, state);
            else if (L == 1)
                firstOrder(src + i, dst + i, chunk, state);
            else
                sampleSteps(src + i, dst + i, chunk, state);
        }
    }
}

void oneSection(const double* src, double* dst, Index n, const double taps[5], double delay[2])
{
    const double b0 = taps[0], b1 = taps[1], b2 = taps[2], a1 = taps[3], a2 = taps[4];
    double d0 = delay[0], d1 = delay[1];
    for (Index i = 0; i < n; i++) {
        const double x = loadSample(src, i);
        const double y = b0 * x + d0;
        d0 = b1 * x + d1 - a1 * y;
        d1 = b2 * x - a2 * y;
        storeSample(dst, i, y);
    }
    delay[0] = d0;
    delay[1] = d1;
}

// Two sections one sample apart, so that their chains run beside each other.
void twoSections(const double* src, double* dst, Index n, const double taps[10], double delay[4])
{
    const double b0 = taps[0], b1 = taps[1], b2 = taps[2], a1 = taps[3], a2 = taps[4];
    const double e0 = taps[5], e1 = taps[6], e2 = taps[7], f1 = taps[8], f2 = taps[9];
    double d0 = delay[0], d1 = delay[1], g0 = delay[2], g1 = delay[3];
    double x = loadSample(src, 0);
    double y = b0 * x + d0;
    d0 = b1 * x + d1 - a1 * y;
    d1 = b2 * x - a2 * y;
    for (Index i = 1; i <= n; i++) {
        const double mid = y;
        if (i < n) {
            x = loadSample(src, i);
            y = b0 * x + d0;
            d0 = b1 * x + d1 - a1 * y;
            d1 = b2 * x - a2 * y;
        }
        const double z = e0 * mid + g0;
        g0 = e1 * mid + g1 - f1 * z;
        g1 = e2 * mid - f2 * z;
        storeSample(dst, i - 1, z);
    }
    delay[0] = d0;
    delay[1] = d1;
    delay[2] = g0;
    delay[3] = g1;
}

// Each section over the whole stretch before the next gives the same operations in the same order per section.
void runCascade(const double* src, double* dst, Index n, const qvrsIIRState_64f* state)
{
    const int sections = state->order / 2;
    for (Index i = 0; i < n; i += kIirChunk) {
        const Index chunk = n - i < kIirChunk ? n - i : kIirChunk;
        const double* from = src + i;
        double* to = dst + i;
        int s = 0;
        for (; s + 2 <= sections; s += 2, from = to)
            twoSections(from, to, chunk, state->tapsStore + 5 * s, state->delayStore + 2 * s);
        if (s < sections)
            oneSection(from, to, chunk, state->tapsStore + 5 * s, state->delayStore + 2 * s);
        if (sections == 0 && from != to)
            for (Index k = 0; k < chunk; k++)
                storeSample(to, k, loadSample(from, k));
    }
}

} // namespace

extern "C" qvrStatus SLOT(qvrsIIR_64f)(const qvr64f* src, qvr64f* dst, int numIters, qvrsIIRState_64f* state)
{
    if (anyNull(src, dst, state))
        return qvrErrNullPointer;
    if (numIters < 1)
        return qvrErrBadSize;
    if (state->tag == qvrTagIir)
        runAnyOrder(src, dst, numIters, state);
    else if (state->tag == qvrTagIirCascade)
        runCascade(src, dst, numIters, state);
    else
        return qvrErrBadContext;
    return qvrOk;
}
