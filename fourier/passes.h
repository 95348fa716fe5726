// The passes of a complex transform of 2^m points by decimation in time (second generation).
//
// First pass: a transform of kFirstRadix points without twiddles over legs M/kFirstRadix apart, one lane to each of W
// neighbouring indices i, transposed so that the results of i stand together at the place of the reversed i.
// Stages: radix 4 or 8, length q to R q, on groups in the running format. The legs of a butterfly come in bit-reversed
// order. Twiddles stand as one record for each W butterflies, in the order in which a block of the stage reads them.
//
// A stage in steps is a chain of radix-2 butterflies (a, b) := (a + w b, a - w b), whose twiddles are w^2, w (radix 4)
// or w^4, w^2, w, w e^(-i pi/4) (radix 8), the factors -i being turns. With fused operations a step costs six of them:
// the sum four, the difference as 2a minus the sum two. Without, the products come first and the transform of 4 or 8
// points has no multiplications by twiddles: fewer operations, but 3 and 7 twiddles.
#ifndef QVR_FOURIER_PASSES_H
#define QVR_FOURIER_PASSES_H

#include "fourier/lanes.h"
#include "fourier/quarter.h"

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

// Twiddles of a stage of length R q = 2^order for the butterflies first .. first + count - 1.
template<class T, int R, bool Steps>
inline T* fillRecords(T* out, const Quarter<T>& quarter, int order, Index first, Index count)
{
    constexpr int W = kLanes<T>;
    for (Index k = first; k < first + count; k += W)
        for (int i = 0; i < kRecordTwiddles<R, Steps>; i++, out += 2 * W)
            for (int l = 0; l < W; l++) {
                Index angle = (k + laneIndex<Full<T>>(l)) * recordMultiple(R, Steps, i);
                if (Steps && R == 8 && i == 3)
                    angle += (Index{1} << order) / 8;
                const Twiddle<T> w = quarter.at(angle, order);
                out[l] = w.re;
                out[W + l] = w.im;
            }
    return out;
}

// ---- Stages ---------------------------------------------------------------------------------------------------------

// Where a stage reads and writes: groups, or pairs of the caller's array (swapped for the inverse, and scaled).
template<bool Aligned> struct Groups {
    static constexpr bool aligned = Aligned;
    template<class V> QVR_INLINE Cx<V> get(const Elem<V>* p) const { return loadGroup<V, Aligned>(p); }
    template<class V> QVR_INLINE void put(Elem<V>* p, Cx<V> z) const { storeGroup<Aligned>(p, z); }
};
using AreaGroups = Groups<!kAvx>; // in memory aligned to the vector
using AnyGroups = Groups<false>;
template<bool Swap> struct PairsIn {
    template<class V> QVR_INLINE Cx<V> get(const Elem<V>* p) const { return swapIf<Swap>(loadPairs<V>(p)); }
};
template<bool Aligned, class T> struct ScaledGroups {
    T factor;
    template<class V> QVR_INLINE void put(Elem<V>* p, Cx<V> z) const
    {
        const V f = splat<V>(factor);
        storeGroup<Aligned>(p, Cx<V>{z.re * f, z.im * f});
    }
};
template<bool Swap> struct PairsOut {
    template<class V> QVR_INLINE void put(Elem<V>* p, Cx<V> z) const { storePairs(p, swapIf<Swap>(z)); }
};
template<bool Swap, class T> struct ScaledPairsOut {
    T factor;
    template<class V> QVR_INLINE void put(Elem<V>* p, Cx<V> z) const
    {
        const V f = splat<V>(factor);
        storePairs(p, swapIf<Swap>(Cx<V>{z.re * f, z.im * f}));
    }
};

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

// One block of a stage: `count` butterflies, legs inLeg and outLeg elements apart.
template<int R, bool Steps, class T, class In, class Out>
QVR_INLINE void stageBlock(const T* in, Index inLeg, T* out, Index outLeg, Index count, const T* tw, In from, Out to)
{
    using V = Full<T>;
    constexpr int W = kLanes<T>;
    for (Index k = 0; k < count; k += W) {
        Cx<V> x[R];
#pragma clang loop unroll(full)
        for (int c = 0; c < R; c++)
            x[c] = from.template get<V>(in + 2 * k + c * inLeg);
        butterfly<R, Steps>(x, tw);
        tw += kRecord<T, R, Steps>;
#pragma clang loop unroll(full)
        for (int c = 0; c < R; c++)
            to.template put<V>(out + 2 * k + c * outLeg, x[c]);
    }
}

// All blocks of a stage in place, on `points` points.
template<int R, bool Steps, class T, class G>
QVR_INLINE void stage(T* area, Index points, Index q, const T* tw, G groups)
{
    for (Index b = 0; b < points; b += R * q)
        stageBlock<R, Steps>(area + 2 * b, 2 * q, area + 2 * b, 2 * q, q, tw, groups, groups);
}

// ---- First pass -----------------------------------------------------------------------------------------------------

// Results of one index fill whole groups.
template<class T> constexpr int kFirstRadix = kLanes<T> > 4 ? 16 : 4;
template<class T> constexpr int kFirstOrder = kLanes<T> > 4 ? 4 : 2;

constexpr int reversedBits(int value, int bits)
{
    int r = 0;
    for (int i = 0; i < bits; i++)
        r |= (value >> i & 1) << (bits - 1 - i);
    return r;
}

// Stores x[0 .. R - 1] of each of W indices as consecutive points; index laneIndex(l) goes to place(laneIndex(l)).
template<class T, class Place> QVR_INLINE void scatterTransposed(const Cx<Full<T>>* x, const Place& place)
{
    using V = Full<T>;
    constexpr int W = kLanes<T>, R = kFirstRadix<T>;
#pragma clang loop unroll(full)
    for (int g = 0; g < R; g += W) {
        V re[W], im[W];
#pragma clang loop unroll(full)
        for (int j = 0; j < W; j++) {
            re[j] = x[g + laneIndex<V>(j)].re;
            im[j] = x[g + laneIndex<V>(j)].im;
        }
        transpose(re);
        transpose(im);
#pragma clang loop unroll(full)
        for (int l = 0; l < W; l++)
            storeGroup(place(laneIndex<V>(l)) + 2 * g, Cx<V>{re[l], im[l]});
    }
}

// The places of the results jump through the whole array, which no hardware prefetcher follows: from this order on they
// are fetched this many vectors of indices ahead.
constexpr int kPrefetchFrom = 15;
constexpr Index kPrefetchAhead = 2;

// src in natural order, legs M/R apart; reversed(i) is the reversal of a leg index over its log2(M/R) bits.
template<bool Swap, bool Aligned, class T, class Reversed>
inline void firstPass(const T* src, T* area, int m, const Reversed& reversed)
{
    using V = Full<T>;
    constexpr int W = kLanes<T>, R = kFirstRadix<T>;
    constexpr int laneBits = W == 8 ? 3 : W == 4 ? 2 : 1;
    const Index legs = (Index{1} << m) / R;    // indices
    const Index laneStep = 2 * R * (legs / W); // elements between the places of neighbouring reversed lanes
    const Index ahead = m >= kPrefetchFrom ? kPrefetchAhead * W : 0;
    for (Index i = 0; i < legs; i += W) {
        Cx<V> x[R];
#pragma clang loop unroll(full)
        for (int c = 0; c < R; c++)
            x[c] = swapIf<Swap>(loadPairs<V, Aligned>(src + 2 * (i + c * legs)));
        if (ahead != 0) {
            const T* later = area + 2 * R * reversed((i + ahead) & (legs - 1));
#pragma clang loop unroll(full)
            for (int l = 0; l < W; l++)
#pragma clang loop unroll(full)
                for (int line = 0; line < static_cast<int>(2 * R * sizeof(T)); line += 64)
                    __builtin_prefetch(reinterpret_cast<const char*>(later + l * laneStep) + line, 1);
        }
        dft<R>(x);
        T* base = area + 2 * R * reversed(i);
        scatterTransposed<T>(x, [&](int l) { return base + reversedBits(l, laneBits) * laneStep; });
    }
}

// The same on input already reversed, in place.
template<bool Swap, class T, class G> QVR_INLINE void firstPassReversed(T* data, Index points, G groups)
{
    using V = Full<T>;
    constexpr int W = kLanes<T>, R = kFirstRadix<T>, orderR = kFirstOrder<T>;
    for (Index b = 0; b < points; b += W * R) {
        T* p = data + 2 * b;
        Cx<V> x[R];
#pragma clang loop unroll(full)
        for (int g = 0; g < R; g += W) {
            V re[W], im[W];
#pragma clang loop unroll(full)
            for (int l = 0; l < W; l++) {
                const Cx<V> z = swapIf<Swap>(loadPairs<V>(p + 2 * (l * R + g)));
                re[l] = z.re;
                im[l] = z.im;
            }
            transpose(re);
            transpose(im);
#pragma clang loop unroll(full)
            for (int j = 0; j < W; j++)
                x[reversedBits(g + laneIndex<V>(j), orderR)] = {re[j], im[j]};
        }
        dft<R>(x);
        // Block l of W stands in lane l here, so lane and place agree.
#pragma clang loop unroll(full)
        for (int g = 0; g < R; g += W) {
            V re[W], im[W];
#pragma clang loop unroll(full)
            for (int j = 0; j < W; j++) {
                re[j] = x[g + laneIndex<V>(j)].re;
                im[j] = x[g + laneIndex<V>(j)].im;
            }
            transpose(re);
            transpose(im);
#pragma clang loop unroll(full)
            for (int l = 0; l < W; l++)
                groups.put(p + 2 * (l * R + g), Cx<V>{re[l], im[l]});
        }
    }
}

} // namespace

#endif
