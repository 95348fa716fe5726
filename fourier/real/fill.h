// Filling of the tables of a specification object, in the layouts that the kernels of this build read.
//
// Angles go up in steps, so re and im of one quadrant's twiddles are two walks along the quarter wave, one up and one
// down.
#ifndef QVR_FOURIER_FILL_H
#define QVR_FOURIER_FILL_H

#include "fourier/quarter.h"
#include "fourier/real/reverse.h"
#include "fourier/real/tables.h"

namespace {

// ---- Walks along the quarter wave -----------------------------------------------------------------------------------

// Lanes in the order of groups, or rising.
template<bool Rising, class V> constexpr int lanePlace(int lane)
{
    return Rising ? lane : laneIndex<V>(lane);
}
template<bool Rising, bool Down, class V, int... I> QVR_INLINE V permutedLanes(V v, Indices<I...>)
{
    return __builtin_shufflevector(v, v, (Down ? lanes<V> - 1 - lanePlace<Rising, V>(I) : lanePlace<Rising, V>(I))...);
}
// p[0], p[step], p[2 step], ...; or down from p.
template<bool Unit, bool Rising, bool Down, class V> QVR_INLINE V loadWalk(const Elem<V>* p, Index step)
{
    constexpr int W = lanes<V>;
    if constexpr (Unit) {
        return permutedLanes<Rising, Down>(load<V>(Down ? p - (W - 1) : p), Iota<W>{});
    } else {
        V v{};
#pragma clang loop unroll(full)
        for (int l = 0; l < W; l++)
            v[l] = p[(Down ? -lanePlace<Rising, V>(l) : lanePlace<Rising, V>(l)) * step];
        return v;
    }
}

// The angles (first + k) * multiple + phase, k = 0 .. count - 1, in parts of 2^order.
struct Angles {
    int order;
    Index multiple, phase, first, count;
};

template<bool Unit, bool Rising, class V>
QVR_INLINE void fillWalk(Elem<V>* out, Index step, const Quarter<Elem<V>>& quarter, Wave<Elem<V>> wave, const Angles& a)
{
    using T = Elem<V>;
    constexpr int W = lanes<V>;
    const Index Q = Index{1} << (a.order - 2), width = a.multiple * W;
    for (Index k = 0; k < a.count;) {
        const Index p = ((a.first + k) * a.multiple + a.phase) & (4 * Q - 1), r = p & (Q - 1);
        const int quadrant = static_cast<int>(p >> (a.order - 2));
        // Whole vectors in this quadrant.
        const Index room = Q - r + a.multiple - 1;
        Index n = Unit ? room / W : room < width ? 0 : room / width;
        const Index left = (a.count - k) / W;
        n = n < left ? n : left;
        if (n == 0) {
            for (int l = 0; l < W; l++) {
                const Twiddle<T> w = quarter.at(p + lanePlace<Rising, V>(l) * a.multiple, a.order);
                out[l] = w.re;
                out[W + l] = w.im;
            }
            out += step;
            k += W;
            continue;
        }
        const V upFactor = splat<V>(kUpSign<T>[quadrant]), downFactor = splat<V>(kDownSign<T>[quadrant]);
        const Index reach = a.multiple * wave.stride;
        const T *up = wave.s + r * wave.stride, *down = wave.s + (Q - r) * wave.stride;
        T *upTo = quadrant & 1 ? out : out + W, *downTo = quadrant & 1 ? out + W : out;
        k += n * W;
        out += n * step;
#pragma clang loop unroll(disable)
        for (; n > 0; n--, up += W * reach, down -= W * reach, upTo += step, downTo += step) {
            store(upTo, loadWalk<Unit, Rising, false, V>(up, reach) * upFactor);
            store(downTo, loadWalk<Unit, Rising, true, V>(down, reach) * downFactor);
        }
    }
}

// Vectors of cosines, each with one of negated sines behind it, `step` elements apart.
template<class V, bool Rising = false>
void fillAngles(Elem<V>* out, Index step, const Quarter<Elem<V>>& quarter, const Angles& given)
{
    Angles a = {given.order, given.multiple, given.phase, given.first, given.count};
    while (((a.multiple | a.phase) & 1) == 0 && a.order > kSmallestBase) {
        a.multiple /= 2;
        a.phase /= 2;
        a.order--;
    }
    const Wave<Elem<V>> wave = quarter.wave(a.order);
    if (a.multiple * wave.stride == 1)
        fillWalk<true, Rising, V>(out, step, quarter, wave, a);
    else
        fillWalk<false, Rising, V>(out, step, quarter, wave, a);
}

// ---- Stages ---------------------------------------------------------------------------------------------------------

// The records of the stage behind the first pass: few butterflies, whose multiples lie all over the circle.
template<class T, int R> struct FirstRecords {
    static constexpr bool steps = inSteps(R == 4 ? 2 : 3, formProducts);
    static constexpr int columns = kFirstRadix, twiddles = kRecordTwiddles<R, steps>;
    T of[columns / kLanes<T> * kRecord<T, R, steps>];
};
template<class T, int R> constexpr FirstRecords<T, R> makeFirstRecords()
{
    constexpr int W = kLanes<T>, q = FirstRecords<T, R>::columns;
    FirstRecords<T, R> records{};
    T* out = records.of;
    for (int k = 0; k < q; k += W)
        for (int i = 0; i < records.twiddles; i++, out += 2 * W)
            for (int l = 0; l < W; l++) {
                const int angle = (k + laneIndex<Full<T>>(l)) * recordMultiple(R, records.steps, i);
                out[l] = static_cast<T>(constantCosine(angle, R * q));
                out[W + l] = static_cast<T>(-constantSine(angle, R * q));
            }
    return records;
}
template<class T, int R> constexpr FirstRecords<T, R> kFirstRecords = makeFirstRecords<T, R>();
template<class T, int R> inline void copyFirstRecords(T* out)
{
    __builtin_memcpy(out, kFirstRecords<T, R>.of, sizeof kFirstRecords<T, R>.of);
}

// Twiddles of a stage of length R q = 2^order for the butterflies first .. first + count - 1.
template<class T, int R, bool Steps>
inline T* fillRecords(T* out, const Quarter<T>& quarter, int order, Index first, Index count)
{
    constexpr int W = kLanes<T>;
    constexpr Index record = kRecord<T, R, Steps>;
    for (int i = 0; i < kRecordTwiddles<R, Steps>; i++) {
        const Index phase = Steps && R == 8 && i == 3 ? (Index{1} << order) / 8 : 0;
        fillAngles<Full<T>>(out + 2 * W * i, record, quarter,
                            Angles{order, recordMultiple(R, Steps, i), phase, first, count});
    }
    return out + count / W * record;
}

// The records of a sweep in the order in which its strips read them.
template<class T> void fillSweep(T* out, const Quarter<T>& quarter, const FftSweep& sweep)
{
    const Index length = Index{1} << sweep.from, columns = stripColumns<T>(sweep);
    if (sweep.from == kFirstOrder && sweep.stages == 1 && sweep.form == formProducts)
        return sweep.radixOrder[0] == 2 ? copyFirstRecords<T, 4>(out) : copyFirstRecords<T, 8>(out);
    for (Index k = 0; k < length; k += columns)
        for (int i = 0, order = sweep.from; i < sweep.stages; i++) {
            const Index rows = Index{1} << (order - sweep.from);
            const int radix = sweep.radixOrder[i];
            const bool steps = inSteps(radix, sweep.form);
            order += radix;
            for (Index row = 0; row < rows; row++) {
                const Index first = row * length + k;
                if (radix == 2)
                    out = steps ? fillRecords<T, 4, true>(out, quarter, order, first, columns)
                                : fillRecords<T, 4, false>(out, quarter, order, first, columns);
                else
                    out = steps ? fillRecords<T, 8, true>(out, quarter, order, first, columns)
                                : fillRecords<T, 8, false>(out, quarter, order, first, columns);
            }
        }
}

// The twiddles of the top pass: for each four columns j, each c = 1 .. 7: four cosines, then four negated sines, of
// 2 pi c (j .. j + 3) / M.
template<class T> void fillTopTable(T* out, const Quarter<T>& quarter, int m)
{
    for (Index c = 1; c < 8; c++)
        fillAngles<Vec<T, 4>, true>(out + 8 * (c - 1), 56, quarter, Angles{m, c, 0, 0, (Index{1} << m) / 8});
}

// ---- Recombination --------------------------------------------------------------------------------------------------

template<class T> void fillRecombination(T* fwd, T* inv, const Quarter<T>& quarter, int order, bool twoLevel)
{
    using V = Full<T>;
    using One = Vec<T, 1>;
    constexpr int W = kLanes<T>;
    const Index quarterTurn = (Index{1} << order) / 4;
    if (twoLevel) {
        fillAngles<One>(fwd, 2, quarter, Angles{order, 1, 0, 0, kFine});
        fillAngles<One>(fwd + 2 * kFine, 2, quarter, Angles{order, kFine, 0, 0, quarterTurn / kFine + 1});
        __builtin_memcpy(inv, fwd, static_cast<size_t>(2 * (kFine + quarterTurn / kFine + 1)) * sizeof(T));
        return;
    }
    const T *up = quarter.wave(order).s, *down = up + quarterTurn - (W - 1);
    const V half = splat<V>(T(0.5)), fold = alternating<V>(T(0), T(0.5));
    for (Index k = 0; k < quarterTurn; k += W) {
        const V cosines = reversedLanes(load<V>(down - k)), sines = -load<V>(up + k);
        const V pairs[2] = {zipLo(cosines, sines), zipHi(cosines, sines)};
        for (int i = 0; i < 2; i++) {
            store(inv + 2 * k + i * W, pairs[i]);
            store(fwd + 2 * k + i * W, pairs[i] * half + fold);
        }
    }
}

// ---- First generation -----------------------------------------------------------------------------------------------

template<class T> void fillKernelTable(T* out, const Quarter<T>& quarter, int m)
{
    for (Index j = 1; j <= 3; j++)
        fillAngles<Vec<T, 1>>(out + 2 * (j - 1), 6, quarter, Angles{m, j, 0, 0, (Index{1} << m) / 4 + 1});
}

template<class T> void fillSweepTable(T* out, const Quarter<T>& quarter, int m)
{
    fillAngles<Vec<T, 1>>(out, 2, quarter, Angles{m, 1, 0, 0, (Index{1} << m) / 4});
}

// For each four columns j and each row c: the twiddles of 2 pi (j .. j + 3) rev(c) / 2^m.
template<class T> void fillMidTable(T* out, const Quarter<T>& quarter, int m, int f)
{
    for (Index j = 0; j < Index{1} << (m - f); j += 4)
        for (Index c = 0; c < Index{1} << f; c++)
            for (int i = 0; i < 4; i++) {
                const Twiddle<T> w = quarter.at((j + i) * reverseIndex(c, f), m);
                *out++ = w.re;
                *out++ = w.im;
            }
}

} // namespace

#endif
