// The passes of a complex transform of 2^m points by decimation in time (second generation).
//
// First pass: a transform of kFirstRadix points without twiddles over legs M/kFirstRadix apart, one lane to each of W
// neighbouring indices i, transposed so that the results of i stand together at the place of the reversed i.
// Stages: radix 4 or 8, length q to R q, on groups in split-complex form. The legs of a butterfly come in bit-reversed
// order. Twiddles stand as one record for each W butterflies, in the order in which a block of the stage reads them.
//
// A stage in steps is a chain of radix-2 butterflies (a, b) := (a + w b, a - w b), whose twiddles are w^2, w (radix 4)
// or w^4, w^2, w, w e^(-i pi/4) (radix 8), the factors -i being turns. With fused operations a step costs six of them:
// the sum four, the difference as 2a minus the sum two. Without, the products come first and the transform of 4 or 8
// points has no multiplications by twiddles: fewer operations, but 3 and 7 twiddles.
#ifndef QVR_FOURIER_PASSES_H
#define QVR_FOURIER_PASSES_H

#include "fourier/quarter.h"
#include "fourier/real/kernel_table.h"

namespace {

constexpr long double kHalfRoot = constantSine(1, 8); // sin(pi/4)

// ---- Butterflies ----------------------------------------------------------------------------------------------------

// Transform of four points in natural order.
template<class C> QVR_INLINE void dft4(C& a, C& b, C& c, C& d)
{
    const C s0 = a + c, d0 = a - c, s1 = b + d, d1 = b - d;
    a = s0 + s1;
    b = minusI(d0, d1);
    c = s0 - s1;
    d = plusI(d0, d1);
}

// z e^(-i pi/4)
template<class V> QVR_INLINE Cx<V> eighthTurn(Cx<V> z)
{
    const V h = splat<V>(static_cast<Elem<V>>(kHalfRoot));
    return {(z.re + z.im) * h, (z.im - z.re) * h};
}
// z (-i) e^(-i pi/4)
template<class V> QVR_INLINE Cx<V> threeEighthsTurn(Cx<V> z)
{
    const V h = splat<V>(static_cast<Elem<V>>(kHalfRoot));
    return {(z.im - z.re) * h, (z.re + z.im) * -h};
}

// Transform of eight points in natural order.
template<class C> QVR_INLINE void dft8(C* x)
{
    dft4(x[0], x[2], x[4], x[6]);
    dft4(x[1], x[3], x[5], x[7]);
    const C o1 = eighthTurn(x[3]), o3 = threeEighthsTurn(x[7]), e0 = x[0], e1 = x[2], e2 = x[4], e3 = x[6];
    const C o0 = x[1], o2 = x[5];
    x[0] = e0 + o0;
    x[4] = e0 - o0;
    x[1] = e1 + o1;
    x[5] = e1 - o1;
    x[2] = minusI(e2, o2);
    x[6] = plusI(e2, o2);
    x[3] = e3 + o3;
    x[7] = e3 - o3;
}

// exp(-2 pi i k / n) as a table of the compiler.
template<class T, int N> struct Circle {
    T re[N], im[N];
};
template<class T, int N> constexpr Circle<T, N> makeCircle()
{
    Circle<T, N> c{};
    for (int k = 0; k < N; k++) {
        c.re[k] = static_cast<T>(constantCosine(k, N));
        c.im[k] = static_cast<T>(-constantSine(k, N));
    }
    return c;
}
template<class T, int N> constexpr Circle<T, N> kCircle = makeCircle<T, N>();

template<int N, class V> QVR_INLINE Cx<V> constantTwiddle(int k)
{
    return {splat<V>(kCircle<Elem<V>, N>.re[k]), splat<V>(kCircle<Elem<V>, N>.im[k])};
}

// Transform of sixteen points in natural order, as 4 by 4: columns, twiddles, rows.
template<class C> QVR_INLINE void dft16(C* x)
{
    using V = decltype(x->re);
#pragma clang loop unroll(full)
    for (int j = 0; j < 4; j++)
        dft4(x[j], x[j + 4], x[j + 8], x[j + 12]);
    const C w1 = constantTwiddle<16, V>(1), w3 = constantTwiddle<16, V>(3), w9 = constantTwiddle<16, V>(9);
    C r[4][4];
    r[0][0] = x[0], r[0][1] = x[1], r[0][2] = x[2], r[0][3] = x[3];
    r[1][0] = x[4], r[1][1] = x[5] * w1, r[1][2] = eighthTurn(x[6]), r[1][3] = x[7] * w3;
    r[2][0] = x[8], r[2][1] = eighthTurn(x[9]), r[2][2] = {x[10].im, -x[10].re}, r[2][3] = threeEighthsTurn(x[11]);
    r[3][0] = x[12], r[3][1] = x[13] * w3, r[3][2] = threeEighthsTurn(x[14]), r[3][3] = x[15] * w9;
#pragma clang loop unroll(full)
    for (int c = 0; c < 4; c++) {
        dft4(r[c][0], r[c][1], r[c][2], r[c][3]);
        x[c] = r[c][0], x[c + 4] = r[c][1], x[c + 8] = r[c][2], x[c + 12] = r[c][3];
    }
}

// ---- Butterflies on pairs -------------------------------------------------------------------------------------------

// a - i b, or a + i b for the inverse.
template<bool Inverse, class V> QVR_INLINE V pairsTurned(V a, V b)
{
    using T = Elem<V>;
    if constexpr (kFma)
        return fma(exchanged(b), Inverse ? alternating<V>(T(-1), T(1)) : alternating<V>(T(1), T(-1)), a);
    else
        return subAdd(a, Inverse ? exchanged(b) : -exchanged(b));
}
template<bool Inverse, class V> QVR_INLINE void pairsDft4(V& a, V& b, V& c, V& d)
{
    const V s0 = a + c, d0 = a - c, s1 = b + d, d1 = b - d;
    a = s0 + s1;
    b = pairsTurned<Inverse>(d0, d1);
    c = s0 - s1;
    d = pairsTurned<!Inverse>(d0, d1);
}
// x exp(-2 pi i K / 16), or with + i.
template<bool Inverse, int K, class V> QVR_INLINE V pairsRotated(V x)
{
    using T = Elem<V>;
    constexpr T re = kCircle<T, 16>.re[K], im = Inverse ? -kCircle<T, 16>.im[K] : kCircle<T, 16>.im[K];
    return fma(x, splat<V>(re), exchanged(x) * alternating<V>(-im, im));
}
// Of eight or sixteen points.
template<int R, bool Inverse, class V> QVR_INLINE void pairsDft(V* x)
{
    if constexpr (R == 8) {
        pairsDft4<Inverse>(x[0], x[2], x[4], x[6]);
        pairsDft4<Inverse>(x[1], x[3], x[5], x[7]);
        const V o1 = pairsRotated<Inverse, 2>(x[3]), o3 = pairsRotated<Inverse, 6>(x[7]);
        const V e0 = x[0], e1 = x[2], e2 = x[4], e3 = x[6], o0 = x[1], o2 = x[5];
        x[0] = e0 + o0;
        x[4] = e0 - o0;
        x[1] = e1 + o1;
        x[5] = e1 - o1;
        x[2] = pairsTurned<Inverse>(e2, o2);
        x[6] = pairsTurned<!Inverse>(e2, o2);
        x[3] = e3 + o3;
        x[7] = e3 - o3;
        return;
    } else {
#pragma clang loop unroll(full)
        for (int j = 0; j < 4; j++)
            pairsDft4<Inverse>(x[j], x[j + 4], x[j + 8], x[j + 12]);
        x[5] = pairsRotated<Inverse, 1>(x[5]);
        x[6] = pairsRotated<Inverse, 2>(x[6]);
        x[7] = pairsRotated<Inverse, 3>(x[7]);
        x[9] = pairsRotated<Inverse, 2>(x[9]);
        x[11] = pairsRotated<Inverse, 6>(x[11]);
        x[13] = pairsRotated<Inverse, 3>(x[13]);
        x[14] = pairsRotated<Inverse, 6>(x[14]);
        x[15] = pairsRotated<Inverse, 9>(x[15]);
        pairsDft4<Inverse>(x[0], x[1], x[2], x[3]);
        pairsDft4<Inverse>(x[4], x[5], x[6], x[7]);
        // The third leg of this one still lacks its factor -i.
        const V s0 = pairsTurned<Inverse>(x[8], x[10]), d0 = pairsTurned<!Inverse>(x[8], x[10]);
        const V s1 = x[9] + x[11], d1 = x[9] - x[11];
        x[8] = s0 + s1;
        x[9] = pairsTurned<Inverse>(d0, d1);
        x[10] = s0 - s1;
        x[11] = pairsTurned<!Inverse>(d0, d1);
        pairsDft4<Inverse>(x[12], x[13], x[14], x[15]);
        // Results stand as 4 by 4, to be read by columns.
#pragma clang loop unroll(full)
        for (int q = 0; q < 4; q++)
#pragma clang loop unroll(full)
            for (int d = q + 1; d < 4; d++) {
                const V t = x[4 * q + d];
                x[4 * q + d] = x[4 * d + q];
                x[4 * d + q] = t;
            }
    }
}

template<int R, class C> QVR_INLINE void dft(C* x)
{
    if constexpr (R == 2) {
        const C a = x[0], b = x[1];
        x[0] = a + b;
        x[1] = a - b;
    } else if constexpr (R == 4) {
        dft4(x[0], x[1], x[2], x[3]);
    } else if constexpr (R == 8) {
        dft8(x);
    } else {
        static_assert(R == 16);
        dft16(x);
    }
}

// (a, b) := (a + w b, a - w b)
template<class C> QVR_INLINE void step(C& a, C& b, C w)
{
    using V = decltype(a.re);
    if constexpr (kFma) {
        const C x = {fma(-w.im, b.im, fma(w.re, b.re, a.re)), fma(w.im, b.re, fma(w.re, b.im, a.im))};
        const V two = splat<V>(2);
        b = {fma(two, a.re, -x.re), fma(two, a.im, -x.im)};
        a = x;
    } else {
        const C t = b * w, x = a;
        a = x + t;
        b = x - t;
    }
}
// (a, b) := (a - i w b, a + i w b)
template<class C> QVR_INLINE void turnedStep(C& a, C& b, C w)
{
    using V = decltype(a.re);
    if constexpr (kFma) {
        const C x = {fma(w.im, b.re, fma(w.re, b.im, a.re)), fma(-w.re, b.re, fma(w.im, b.im, a.im))};
        const V two = splat<V>(2);
        b = {fma(two, a.re, -x.re), fma(two, a.im, -x.im)};
        a = x;
    } else {
        const C t = b * w, x = a;
        a = minusI(x, t);
        b = plusI(x, t);
    }
}

// ---- Twiddle records ------------------------------------------------------------------------------------------------

// Whether a stage is done in steps. Where operations are fused, radix 4 loses nothing by it, and its table is smaller;
// radix 8 has more operations than that saves, and they are all multiplications.
constexpr bool inSteps(int radixOrder, int form)
{
    return form == formSteps || (kFma && radixOrder == 2);
}

// The multiples j of a record's angle, in the order of the record; the last of a radix-8 record in steps carries the
// extra eighth turn.
template<int R, bool Steps> constexpr int kRecordTwiddles = Steps ? (R == 4 ? 2 : 4) : R - 1;

constexpr int recordMultiple(int R, bool steps, int i)
{
    constexpr int steps4[] = {2, 1}, steps8[] = {4, 2, 1, 1}, all4[] = {2, 1, 3}, all8[] = {4, 2, 6, 1, 5, 3, 7};
    return steps ? (R == 4 ? steps4[i] : steps8[i]) : (R == 4 ? all4[i] : all8[i]);
}

// Elements of the record of one vector of butterflies.
template<class T, int R, bool Steps> constexpr Index kRecord = 2 * kLanes<T> * kRecordTwiddles<R, Steps>;

// ---- Stages ---------------------------------------------------------------------------------------------------------

template<int R, bool Steps, class V> QVR_INLINE void butterfly(Cx<V>* x, const Elem<V>* tw)
{
    constexpr int W = lanes<V>;
    const auto w = [&](int i) { return loadGroup<V>(tw + 2 * W * i); };
    if constexpr (R == 4 && Steps) {
        const Cx<V> w2 = w(0), w1 = w(1);
        step(x[0], x[1], w2);
        step(x[2], x[3], w2);
        step(x[0], x[2], w1);
        turnedStep(x[1], x[3], w1);
    } else if constexpr (R == 4) {
        const Cx<V> a = x[1] * w(0), b = x[2] * w(1), c = x[3] * w(2);
        const Cx<V> s0 = x[0] + a, d0 = x[0] - a, s1 = b + c, d1 = b - c;
        x[0] = s0 + s1;
        x[1] = minusI(d0, d1);
        x[2] = s0 - s1;
        x[3] = plusI(d0, d1);
    } else if constexpr (Steps) {
        const Cx<V> w4 = w(0);
        step(x[0], x[1], w4);
        step(x[2], x[3], w4);
        step(x[4], x[5], w4);
        step(x[6], x[7], w4);
        const Cx<V> w2 = w(1);
        step(x[0], x[2], w2);
        turnedStep(x[1], x[3], w2);
        step(x[4], x[6], w2);
        turnedStep(x[5], x[7], w2);
        const Cx<V> w1 = w(2), w1e = w(3);
        step(x[0], x[4], w1);
        step(x[1], x[5], w1e);
        turnedStep(x[2], x[6], w1);
        turnedStep(x[3], x[7], w1e);
    } else {
        // Legs in bit-reversed order: leg i of the natural order is x[reversed i].
        Cx<V> y[8] = {x[0], x[4] * w(3), x[2] * w(1), x[6] * w(5), x[1] * w(0), x[5] * w(4), x[3] * w(2), x[7] * w(6)};
        dft8(y);
        for (int i = 0; i < 8; i++)
            x[i] = y[i];
    }
}

template<Finish F, class V> QVR_INLINE void finish(Elem<V>* p, Cx<V> z, V factor)
{
    if constexpr (F == Finish::groups)
        storeGroup<false>(p, z);
    else if constexpr (F == Finish::scaled)
        storePairs(p, Cx<V>{z.im * factor, z.re * factor});
    else
        storePairs(p, swapIf < F == Finish::swapped > (z));
}

template<int R, bool Steps, Finish F, class T> void runStage(const StageCall<T>& args)
{
    using V = Full<T>;
    constexpr int W = kLanes<T>;
    const StageCall<T> call = args;
    const V factor = splat<V>(call.factor);
    const T* twiddles = call.twiddles;
    const Index records = call.columns / W * kRecord<T, R, Steps>;
    for (Index row = 0; row < call.rows; row++, twiddles += records)
        for (Index block = 0; block < call.blocks; block++) {
            const T *in = call.in + row * call.inRow + block * call.inBlock, *tw = twiddles;
            T* out = call.out + row * call.outRow + block * call.outBlock;
            for (Index k = 0; k < call.columns; k += W, in += 2 * W, out += 2 * W, tw += kRecord<T, R, Steps>) {
                Cx<V> x[R];
#pragma clang loop unroll(full)
                for (int c = 0; c < R; c++)
                    x[c] = loadGroup<V, false>(in + c * call.inLeg);
                butterfly<R, Steps>(x, tw);
#pragma clang loop unroll(full)
                for (int c = 0; c < R; c++)
                    finish<F>(out + c * call.outLeg, x[c], factor);
            }
        }
}

// ---- First pass -----------------------------------------------------------------------------------------------------

// Results of one index fill whole groups.
constexpr int kFirstRadix = kAvx ? 16 : 8, kFirstOrder = kAvx ? 4 : 3;

constexpr int reversedBits(int value, int bits)
{
    int r = 0;
    for (int i = 0; i < bits; i++)
        r |= (value >> i & 1) << (bits - 1 - i);
    return r;
}

// The places of the results jump through the whole array, which no hardware prefetcher follows: from this order on they
// are fetched this many vectors of indices ahead.
constexpr int kPrefetchFrom = 15;
constexpr Index kPrefetchAhead = 2;

// i over `bits` bits backwards, for i = 0, 1, ...
struct ReversedCounter {
    uint64_t top, value;

    ReversedCounter(int bits, Index from)
        : top(uint64_t{1} << bits >> 1),
          value(from == 0 ? 0 : __builtin_bitreverse64(static_cast<uint64_t>(from)) >> (64 - bits))
    {
    }
    // A carry that runs down from the top: the highest bit that is clear gets set, those above it are cleared.
    QVR_INLINE void step()
    {
        const uint64_t clear = ~value & (2 * top - 1), bit = uint64_t{1} << (63 - __builtin_clzll(clear | 1));
        value = (value & (bit - 1)) | bit;
    }
};

// The lines of the R results of each of 2^laneBits indices, the places of which stand laneStep elements apart.
template<int LaneBits, class T> QVR_INLINE void fetchPlaces(const T* base, Index laneStep)
{
#pragma clang loop unroll(full)
    for (int l = 0; l < 1 << LaneBits; l++)
#pragma clang loop unroll(full)
        for (int line = 0; line < static_cast<int>(2 * kFirstRadix * sizeof(T)); line += 64)
            __builtin_prefetch(reinterpret_cast<const char*>(base + l * laneStep) + line, 1);
}

// src in natural order. Neighbouring indices have their places 2^bits radices apart. body(src, leg, base, laneStep)
// does those of one vector.
// Aside: legs share a cache set and are more than it has ways, so the other half of each line is set aside.
template<int LaneBits, bool Aside, class T, class Body>
QVR_INLINE void eachFirst(const FirstCall<T>& args, const Body& body)
{
    const FirstCall<T> call = args;
    constexpr Index R = kFirstRadix, step = Index{1} << LaneBits;
    const int bits = call.m - kFirstOrder - LaneBits;
    const Index laneStep = 2 * R << bits; // elements
    ReversedCounter place(bits, call.from / step), later = place;
    const bool fetches = call.m >= kPrefetchFrom;
    for (Index i = 0; fetches && i < kPrefetchAhead * kLanes<T>; i += step)
        later.step();
    const auto vector = [&](const T* src, Index leg) __attribute__((always_inline)) {
        if (fetches) {
            fetchPlaces<LaneBits>(call.area + 2 * R * later.value, laneStep);
            later.step();
        }
        body(src, leg, call.area + 2 * R * place.value, laneStep);
        place.step();
    };
    const T *src = call.src, *const end = src + 2 * call.count;
    if constexpr (Aside) {
        constexpr int W = kLanes<T>;
        alignas(64) T rest[R * W];
        for (; src < end; src += 4 * step) {
#pragma clang loop unroll(full)
            for (int c = 0; c < R; c++)
                store(rest + c * W, load<Full<T>>(src + 2 * c * call.leg + W));
#pragma clang loop unroll(disable)
            for (int half = 0; half < 2; half++)
                vector(half == 0 ? src : rest, half == 0 ? 2 * call.leg : W);
        }
    } else {
        for (; src < end; src += 2 * step)
            vector(src, 2 * call.leg);
    }
}

// Stores x[0 .. R - 1] of each of W / 2 indices, pairs of index l in place l, as groups; swapped for the inverse. With
// Halves, halves of vectors are stored where they belong, which takes the place of shuffles.
template<bool Swap, bool Halves, class T, class Place>
QVR_INLINE void scatterPairs(const Full<T>* x, const Place& place)
{
    using V = Full<T>;
    constexpr int W = kLanes<T>, block = Halves ? static_cast<int>(16 / sizeof(T)) : W;
#pragma clang loop unroll(full)
    for (int g = 0; g < kFirstRadix; g += W) {
        V r[W];
#pragma clang loop unroll(full)
        for (int j = 0; j < W; j++)
            r[j] = x[g + laneIndex<V>(j)];
        if constexpr (W == block)
            transpose(r);
        else
            for (int j = 0; j < W; j += block)
                transposeBlocks(r + j);
#pragma clang loop unroll(full)
        for (int l = 0; l < block / 2; l++) {
            const Cx<V> first = swapIf<Swap>(Cx<V>{r[2 * l], r[2 * l + 1]});
            if constexpr (W == block) {
                storeGroup<false>(place(l) + 2 * g, first);
            } else {
                const Cx<V> second = swapIf<Swap>(Cx<V>{r[block + 2 * l], r[block + 2 * l + 1]});
                T *const low = place(l) + 2 * g, *const high = place(l + block / 2) + 2 * g;
                store(low, lo(first.re));
                store(low + W, lo(first.im));
                store(high, hi(first.re));
                store(high + W, hi(first.im));
                __asm__ volatile("" : : : "memory"); // else the compiler joins halves by shuffles after all
                store(low + block, lo(second.re));
                store(low + W + block, lo(second.im));
                store(high + block, hi(second.re));
                store(high + W + block, hi(second.im));
            }
        }
    }
}

// Up to this order results lie in the first cache, where more stores cost less than shuffles.
template<class T> constexpr int kHalvesUpTo = !kAvx ? 0 : sizeof(T) == 4 ? 11 : 10;

// On pairs: sixteen legs fit the sixteen registers, and the transposition parts re from im. The inverse has its turns
// the other way, and re and im exchanged in the groups.
template<bool Swap, bool Halves, bool Aside, class T> __attribute__((noinline)) void firstPass(const FirstCall<T>& call)
{
    using V = Full<T>;
    constexpr int W = kLanes<T>, R = kFirstRadix, laneBits = W == 8 ? 2 : W == 4 ? 1 : 0;
    eachFirst<laneBits, Aside>(
        call, [&](const T* src, Index leg, T* base, Index laneStep) __attribute__((always_inline)) {
            V x[R];
#pragma clang loop unroll(full)
            for (int c = 0; c < R; c++)
                x[c] = load<V>(src + c * leg);
            pairsDft<R, Swap>(x);
            scatterPairs<Swap, Halves, T>(x, [&](int l) { return base + reversedBits(l, laneBits) * laneStep; });
        });
}
template<bool Swap, class T> void runFirst(const FirstCall<T>& call)
{
    if (kFirstRadix > 8 && call.leg * static_cast<Index>(2 * sizeof(T)) % 4096 == 0)
        firstPass<Swap, false, (kFirstRadix > 8), T>(call);
    else if (call.m <= kHalvesUpTo<T>)
        firstPass<Swap, kAvx, false, T>(call);
    else
        firstPass<Swap, false, false, T>(call);
}

// The same on points already reversed, in place.
template<bool Swap, class T> void runFirstReversed(T* data, Index points)
{
    using V = Full<T>;
    constexpr int P = kVecPoints<T>, R = kFirstRadix;
    for (T* p = data; p < data + 2 * points; p += 2 * P * R) {
        V x[R];
#pragma clang loop unroll(full)
        for (int g = 0; g < R; g += P) {
            Full<double> r[P];
#pragma clang loop unroll(full)
            for (int l = 0; l < P; l++)
                r[l] = load<Full<double>>(p + 2 * (l * R + g));
            transposePoints<T>(r);
#pragma clang loop unroll(full)
            for (int j = 0; j < P; j++)
                x[reversedBits(g + j, kFirstOrder)] = bitcast<V>(r[j]);
        }
        pairsDft<R, Swap>(x);
        scatterPairs<Swap, false, T>(x, [&](int l) { return p + 2 * l * R; });
    }
}

} // namespace

#endif
