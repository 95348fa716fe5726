// Runs of recursive filters.
//
// The sample step, with the delay line d of the transposed form:
//   y = b0 x + d[0];  d[k] = b[k + 1] x - a[k + 1] y + d[k + 1]
// The block path (m7 and up) does a chunk of n samples in stages, the outputs y[t] and inputs x[t] being those of the
// chunk:
//   w[t] = sum of b[k] x[t - k], plus d[t] for t < L      a plain vector filter into blockBuffer
//   y[t] = w[t] - sum of a[k] y[t - k]                    four samples a step
//   d[k] = sum of b[k + j] x[n - j] - a[k + j] y[n - j]   for j from 1 to the smaller of L - k and n, plus d[k + n]
//
// Four samples, with c[k] = -a[k + 1]: what older outputs give to all four is summed with the coefficients as they
// are, then each of the four takes in the ones before it: y1 += c0 y0; y2 += c0 y1 + c1 y0; y3 the like. The rows of
// lookAheadRows would need no such chain, but expanded coefficients are rounded once more, which moves the poles: with
// poles near the circle it makes a stable filter unstable.
#include "filters/functions.h"
#include "filters/iir.h"

#include "frame/element.h"
#include "frame/simd.h"
#include "frame/status.h"

namespace {

void sampleSteps(const double* src, double* dst, Index n, const qvrsIIRState_64f* state)
{
    const Index L = state->order;
    const double* b = state->tapsStore;
    const double* a = b + L; // a[1..L]
    double* d = state->delayStore;
    for (Index i = 0; i < n; i++) {
        const double x = get(src, i);
        const double y = b[0] * x + d[0];
        Index k = 0;
        using V = Full<double>;
        for (; k + kLanes<double> <= L; k += kLanes<double>)
            store(d + k, load<V>(b + k + 1) * x - load<V>(a + k + 1) * y + load<V>(d + k + 1));
        for (; k < L; k++)
            d[k] = b[k + 1] * x - a[k + 1] * y + d[k + 1];
        put(dst, i, y);
    }
}

// First order, its three coefficients in registers.
void firstOrder(const double* src, double* dst, Index n, const qvrsIIRState_64f* state)
{
    const double b0 = state->tapsStore[0], b1 = state->tapsStore[1], a1 = state->tapsStore[2];
    double d = state->delayStore[0];
    for (Index i = 0; i < n; i++) {
        const double x = get(src, i);
        const double y = b0 * x + d;
        d = b1 * x - a1 * y;
        put(dst, i, y);
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
        const double x0 = get(src, i), x1 = get(src, i + 1);
        const double y0 = b[0] * x0 + d[0];
        const double y1 = b[0 + 1] * x0 + d[1] + b[0] * x1 - a[1] * y0;
        Index k = 0;
        for (; k + kLanes<double> <= L - 1; k += kLanes<double>)
            store(d + k, load<V>(b + k + 1) * x1 - load<V>(a + k + 1) * y1 + load<V>(b + k + 2) * x0 -
                             load<V>(a + k + 2) * y0 + load<V>(d + k + 2));
        for (; k <= L - 2; k++)
            d[k] = b[k + 1] * x1 - a[k + 1] * y1 + b[k + 2] * x0 - a[k + 2] * y0 + d[k + 2];
        d[L - 1] = b[L] * x1 - a[L] * y1;
        put(dst, i, y0);
        put(dst, i + 1, y1);
    }
    sampleSteps(src + i, dst + i, n - i, state);
}

// w[t] = sum for k from 0 to min(t, L) of b[k] src[t - k], and d[t] for t < L. Lanes x 4 outputs at a time: two
// operations start each cycle and take four, so eight accumulators in flight would be ideal and four with loads between
// come close.
void nonRecursive(const double* src, Index n, const qvrsIIRState_64f* state)
{
    using V = Full<double>;
    constexpr int N = kLanes<double>, block = 4 * N;
    const Index L = state->order;
    const double *b = state->pairTaps, *d = state->delayStore;
    double* w = state->blockBuffer;
    const auto single = [=](Index t, Index from) {
        double s = 0;
        for (Index k = from; k <= (t < L ? t : L); k++)
            s += b[2 * k] * get(src, t - k);
        return s;
    };
    Index t = 0;
    // An order below a block leaves so few terms to the first block that singles are faster.
    for (; t < n && t < L && L < block; t++)
        w[t] = single(t, 0);
    for (; t + block <= n; t += block) {
        // Terms that all outputs of the block have.
        const Index last = t < L ? t : L;
        V s0{}, s1{}, s2{}, s3{};
        for (Index k = 0; k <= last; k++) {
            const double* x = src + t - k;
            const V tap = splat<V>(b[2 * k]);
            s0 = fma(tap, load<V>(x), s0);
            s1 = fma(tap, load<V>(x + N), s1);
            s2 = fma(tap, load<V>(x + 2 * N), s2);
            s3 = fma(tap, load<V>(x + 3 * N), s3);
        }
        store(w + t, s0);
        store(w + t + N, s1);
        store(w + t + 2 * N, s2);
        store(w + t + 3 * N, s3);
        for (Index i = t + 1; i < t + block && t < L; i++)
            w[i] += single(i, t + 1);
    }
    for (; t < n; t++)
        w[t] = single(t, 0);
    for (Index i = 0; i < L && i < n; i++)
        w[i] += d[i];
}

// sums[k] = sum for j from min(L - k, n) down to 1 of taps[k + j] x[n - j], for k < L, each given to put(k, sum).
template<class Put> QVR_INLINE void owedSums(const double* taps, const double* x, Index n, Index L, const Put& put)
{
    using V = Full<double>;
    constexpr int N = kLanes<double>, block = 4 * N;
    const auto partial = [=](Index k, Index least) {
        double s = 0;
        for (Index j = L - k < n ? L - k : n; j > least; j--)
            s += taps[k + j] * get(x, n - j);
        return s;
    };
    Index k = 0;
    for (; k + block <= L; k += block) {
        const Index common = L - k - block + 1 < n ? L - k - block + 1 : n;
        double sums[block];
        for (int i = 0; i < block; i++)
            sums[i] = partial(k + i, common);
        V s0 = load<V>(sums), s1 = load<V>(sums + N), s2 = load<V>(sums + 2 * N), s3 = load<V>(sums + 3 * N);
        for (Index j = common; j >= 1; j--) {
            const double* p = taps + k + j;
            const V sample = splat<V>(get(x, n - j));
            s0 = fma(load<V>(p), sample, s0);
            s1 = fma(load<V>(p + N), sample, s1);
            s2 = fma(load<V>(p + 2 * N), sample, s2);
            s3 = fma(load<V>(p + 3 * N), sample, s3);
        }
        store(sums, s0);
        store(sums + N, s1);
        store(sums + 2 * N, s2);
        store(sums + 3 * N, s3);
        for (int i = 0; i < block; i++)
            put(k + i, sums[i]);
    }
    for (; k < L; k++)
        put(k, partial(k, 0));
}

using Quad = Vec<double, 4>;

QVR_INLINE double addTerm(double c, double y, double sum)
{
    using One = Vec<double, 1>;
    return fma(One{c}, One{y}, One{sum})[0];
}

// y[t] one by one, from t = first on.
void singleOutputs(const double* w, double* dst, Index first, Index n, const double* c, Index order)
{
    for (Index t = first; t < n; t++) {
        double y = w[t];
        for (Index k = (order < t ? order : t) - 1; k >= 0; k--)
            y = addTerm(c[k], get(dst, t - 1 - k), y);
        put(dst, t, y);
    }
}

// Zeros behind the coefficients: four outputs at a time reach up to three further ones, and at least seven.
constexpr Index kCoefficientZeros = 3, kOwnCoefficients = 7;

// y[t] for t from `first`, a multiple of 4, to n - 1, from w[t], four at a time. Order 0 stands for any order.
template<int Order>
QVR_INLINE void recursive(const double* w, double* dst, Index first, Index n, const double* c, Index order)
{
    constexpr bool anyOrder = Order == 0;
    // Four outputs before t, then the four from t on.
    double y[8] = {};
    for (int j = 0; j < 4 && first > 0; j++)
        y[j] = get(dst, first - 4 + j);
    Index t = first;
    for (; t + 4 <= n; t += 4) {
        Quad s = load<Quad>(w + t);
        if constexpr (anyOrder) {
            // Outputs from t - 5 back, the oldest first.
            Quad other{};
            Index k = (order < t ? order : t) - 1;
            for (; k >= 5; k -= 2) {
                s = fma(load<Quad>(c + k), splat<Quad>(get(dst, t - 1 - k)), s);
                other = fma(load<Quad>(c + k - 1), splat<Quad>(get(dst, t - k)), other);
            }
            if (k == 4)
                s = fma(load<Quad>(c + 4), splat<Quad>(get(dst, t - 5)), s);
            s += other;
        }
#pragma clang loop unroll(full)
        for (int j = 0; j < 4; j++) {
            double sum = s[j];
#pragma clang loop unroll(full)
            for (int k = j + 3; k >= 0; k--)
                if (anyOrder || k < Order)
                    sum = addTerm(c[k], y[3 + j - k], sum);
            y[4 + j] = sum;
        }
        store(dst + t, Quad{y[4], y[5], y[6], y[7]});
        for (int j = 0; j < 4; j++)
            y[j] = y[4 + j];
    }
    singleOutputs(w, dst, t, n, c, order);
}

// Any order. Products of the zeros behind the coefficients with outputs that are not finite are no zeros. All outputs
// behind such a one are not finite either; those of later fours are made again without the zeros.
void recursiveAnyOrder(const double* w, double* dst, Index first, Index n, const double* c, Index order)
{
    recursive<0>(w, dst, first, n, c, order);
    const auto finite = [=](Index t) {
        const double y = get(dst, t);
        return y - y == 0;
    };
    if (finite(n - 1))
        return;
    Index t = first;
    while (finite(t))
        t++;
    singleOutputs(w, dst, (t | 3) + 1, n, c, order);
}

// High orders: what coefficients from kNear on give to kNear + 1 outputs comes from outputs before all of these, so it
// is a plain vector filter, whose sums go into w.
constexpr Index kNear = 15;
void recursiveHighOrder(double* w, double* dst, Index n, const double* c, Index order)
{
    using V = Vec<double, kNear + 1>;
    double near[kNear + kCoefficientZeros] = {};
    for (Index k = 0; k < kNear; k++)
        near[k] = c[k];
    for (Index t = 0; t < n; t += kNear + 1) {
        const Index end = t + kNear + 1 < n ? t + kNear + 1 : n;
        // Near the chunk's begin some coefficients meet outputs from its first on only.
        for (Index i = t + 1; i < end && t < order; i++)
            for (Index k = (order < i ? order : i) - 1; k >= t && k >= kNear; k--)
                w[i] = addTerm(c[k], get(dst, i - 1 - k), w[i]);
        V s = load<V>(w + t);
        for (Index k = (order < t ? order : t) - 1; k >= kNear; k--)
            s = fma(splat<V>(c[k]), load<V>(dst + t - 1 - k), s);
        store(w + t, s);
        recursiveAnyOrder(w, dst, t, end, near, kNear);
    }
}

// From here on the plain filter gains.
constexpr Index kHighOrder = 32;

void blockChunk(const double* src, double* dst, Index n, const qvrsIIRState_64f* state)
{
    const Index L = state->order;
    const double* b = state->tapsStore;
    const double* a = b + L;
    double* d = state->delayStore;
    double* w = state->blockBuffer;
    nonRecursive(src, n, state);
    // The numerator part of the new delay line comes before the recursion, which in place overwrites these samples.
    owedSums(b, src, n, L, [=](Index k, double sum) { d[k] = k + n < L ? d[k + n] + sum : sum; });
    double c[kIirChunk + kCoefficientZeros];
    const Index used = L < n ? L : n;
    for (Index k = 0; k < used; k++)
        c[k] = -a[k + 1];
    for (Index k = used; k < used + kCoefficientZeros || k < kOwnCoefficients; k++)
        c[k] = 0;
    switch (L) {
    case 1:
        recursive<1>(w, dst, 0, n, c, L);
        break;
    case 2:
        recursive<2>(w, dst, 0, n, c, L);
        break;
    case 3:
        recursive<3>(w, dst, 0, n, c, L);
        break;
    case 4:
        recursive<4>(w, dst, 0, n, c, L);
        break;
    default:
        if (L < kHighOrder)
            recursiveAnyOrder(w, dst, 0, n, c, L);
        else
            recursiveHighOrder(w, dst, n, c, L);
    }
    owedSums(a, dst, n, L, [=](Index k, double sum) { d[k] -= sum; });
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
        if (n > 4 * L && n >= kIirBlockFrom) {
            // Chunks of nearly equal size: a short last one would spend its time on the delay line.
            const Index chunks = (n + kIirChunk - 1) / kIirChunk;
            for (Index i = 0, begin = 0; i < chunks; i++) {
                const Index end = n * (i + 1) / chunks;
                blockChunk(src + begin, dst + begin, end - begin, state);
                begin = end;
            }
        } else if (L == 1) {
            firstOrder(src, dst, n, state);
        } else {
            sampleSteps(src, dst, n, state);
        }
    }
}

void oneSection(const double* src, double* dst, Index n, const double taps[5], double delay[2])
{
    const double b0 = taps[0], b1 = taps[1], b2 = taps[2], a1 = taps[3], a2 = taps[4];
    double d0 = delay[0], d1 = delay[1];
    for (Index i = 0; i < n; i++) {
        const double x = get(src, i);
        const double y = b0 * x + d0;
        d0 = b1 * x + d1 - a1 * y;
        d1 = b2 * x - a2 * y;
        put(dst, i, y);
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
    double x = get(src, 0);
    double y = b0 * x + d0;
    d0 = b1 * x + d1 - a1 * y;
    d1 = b2 * x - a2 * y;
    for (Index i = 1; i <= n; i++) {
        const double mid = y;
        if (i < n) {
            x = get(src, i);
            y = b0 * x + d0;
            d0 = b1 * x + d1 - a1 * y;
            d1 = b2 * x - a2 * y;
        }
        const double z = e0 * mid + g0;
        g0 = e1 * mid + g1 - f1 * z;
        g1 = e2 * mid - f2 * z;
        put(dst, i - 1, z);
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
                put(to, k, get(from, k));
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
