// Filling of the tables of a specification object, in the layouts that the kernels of this build read.
#ifndef QVR_FOURIER_FILL_H
#define QVR_FOURIER_FILL_H

#include "fourier/quarter.h"
#include "fourier/real/reverse.h"
#include "fourier/real/tables.h"

namespace {

// ---- Vectors of points ----------------------------------------------------------------------------------------------

// The angles k * 2^halvings * odd + eighths of the circle, in parts of 2^order, for growing k: a walk through the table
// of order - halvings that reaches so many quadrants.
struct Multiple {
    int halvings, odd, eighths, quadrants;
};
constexpr Multiple makeMultiple(int multiple, int eighths, int quadrants)
{
    Multiple m = {0, multiple, eighths, quadrants};
    for (; m.odd % 2 == 0; m.odd /= 2)
        m.halvings++;
    return m;
}
// Twiddle i of the records of a stage.
constexpr Multiple recordWalk(int radix, bool steps, int i)
{
    const int multiple = recordMultiple(radix, steps, i), eighths = steps && radix == 8 && i == 3;
    return makeMultiple(multiple, eighths, (8 * multiple + radix * eighths + 2 * radix - 1) / (2 * radix));
}

// Points `step` elements apart as a vector of pairs.
template<class V> QVR_INLINE V gatherPairs(const Elem<V>* p, Index step)
{
    if constexpr (lanes<V> == 2)
        return load<V>(p);
    else {
        using H = Vec<Elem<V>, lanes<V> / 2>;
        return concat(gatherPairs<H>(p, step), gatherPairs<H>(p + lanes<H> / 2 * step, step));
    }
}

// Multiple m of k, in parts of 2^order: at p, turned by so many quadrants, with neighbours `step` elements apart.
// Dense: of a table without a stride.
template<class T> struct Walk {
    const T* p;
    Index step;
    int quadrant;
};
template<bool Dense, class T> QVR_INLINE Walk<T> walkTo(const Quarter<T>& quarter, Index k, int order, Multiple m)
{
    const int base = order - m.halvings;
    const Points<T> points = Dense ? Points<T>{constantQuarter<T>(base), 1} : quarter.points(base);
    const Index turn = Index{1} << (base - 2), at = k * m.odd + m.eighths * (turn / 2);
    return {points.p + 2 * (m.quadrants == 1 ? at : at & (turn - 1)) * points.stride, 2 * m.odd * points.stride,
            m.quadrants == 1 ? 0 : static_cast<int>(at >> (base - 2)) & 3};
}

// One vector of cosines at out and one of negated sines `apart` elements behind it, of the multiples of k, k + 1, ...
template<class V, bool Dense>
QVR_INLINE void putPoints(Elem<V>* out, Index apart, const Quarter<Elem<V>>& quarter, Index k, int order, Multiple m)
{
    using T = Elem<V>;
    const Walk<T> w = walkTo<Dense>(quarter, k, order, m);
    Cx<V> z = (Dense ? m.odd == 1 : w.step == 2)
                  ? loadPairs<V>(w.p)
                  : split(gatherPairs<V>(w.p, w.step), gatherPairs<V>(w.p + lanes<V> / 2 * w.step, w.step));
    if (m.quadrants > 1)
        z.re *= splat<V>(kCosSign<T>[w.quadrant]);
    if (m.quadrants > 2)
        z.im *= splat<V>(kSineSign<T>[w.quadrant]);
    const Index swap = (w.quadrant & 1) * apart;
    store(out + swap, z.re);
    store(out + (apart - swap), z.im);
}
// One pair.
template<bool Dense, class T> QVR_INLINE Vec<T, 2> pointAt(const Quarter<T>& quarter, Index k, int order, Multiple m)
{
    const Walk<T> w = walkTo<Dense>(quarter, k, order, m);
    const Vec<T, 2> z = load<Vec<T, 2>>(w.p);
    if (m.quadrants == 1)
        return z;
    const Vec<T, 2> turned = z * Vec<T, 2>{kCosSign<T>[w.quadrant], kSineSign<T>[w.quadrant]};
    return (w.quadrant & 1) != 0 ? exchanged(turned) : turned;
}
constexpr Multiple kFirstQuadrant = {0, 1, 0, 1}, kAnyQuadrant = {0, 1, 0, 4};

// ---- Stages ---------------------------------------------------------------------------------------------------------

// The records of stages of so many columns whose multiples lie all over the circle.
template<class T, int R, int Columns> struct ConstantRecords {
    static constexpr bool steps = inSteps(R == 4 ? 2 : 3, formProducts);
    T of[Columns / kLanes<T> * kRecord<T, R, steps>];
};
template<class T, int R, int Columns> constexpr ConstantRecords<T, R, Columns> makeRecords()
{
    constexpr int W = kLanes<T>;
    ConstantRecords<T, R, Columns> records{};
    T* out = records.of;
    for (int k = 0; k < Columns; k += W)
        for (int i = 0; i < kRecordTwiddles<R, records.steps>; i++, out += 2 * W)
            for (int l = 0; l < W; l++) {
                const int angle = (k + laneIndex<Full<T>>(l)) * recordMultiple(R, records.steps, i);
                out[l] = static_cast<T>(constantCosine(angle, R * Columns));
                out[W + l] = static_cast<T>(-constantSine(angle, R * Columns));
            }
    return records;
}
template<class T, int R, int Columns> constexpr ConstantRecords<T, R, Columns> kRecords = makeRecords<T, R, Columns>();
template<class T, int R, int Columns> inline void copyRecords(T* out)
{
    constexpr int size = static_cast<int>(sizeof kRecords<T, R, Columns>.of / sizeof(T));
    for (int i = 0; i < size; i += kLanes<T>)
        store(out + i, load<Full<T>>(kRecords<T, R, Columns>.of + i));
}

// Twiddles of a stage of length R q = 2^order for the butterflies first .. first + count - 1.
template<class T, int R, bool Steps, bool Dense>
void fillRecords(T* out, const Quarter<T>& quarter, int order, Index first, Index count)
{
    constexpr int W = kLanes<T>;
    for (Index k = first; k < first + count; k += W)
#pragma clang loop unroll(full)
        for (int i = 0; i < kRecordTwiddles<R, Steps>; i++, out += 2 * W)
            putPoints<Full<T>, Dense>(out, W, quarter, k, order, recordWalk(R, Steps, i));
}

// The records of a sweep in the order in which its strips read them.
template<class T> void fillSweep(T* out, const Quarter<T>& quarter, const FftSweep& sweep)
{
    const Index length = Index{1} << sweep.from, columns = stripColumns<T>(sweep);
    if (sweep.stages == 1 && sweep.form == formProducts) {
        if (sweep.from == kFirstOrder)
            return sweep.radixOrder[0] == 2 ? copyRecords<T, 4, kFirstRadix>(out) : copyRecords<T, 8, kFirstRadix>(out);
        // Of doubles, gathering them takes no more time than reading them here.
        if constexpr (kAvx && sizeof(T) == 4)
            if (sweep.from == 7 && sweep.radixOrder[0] == 3)
                return copyRecords<T, 8, 128>(out);
    }
    for (Index k = 0; k < length; k += columns)
        for (int i = 0, order = sweep.from; i < sweep.stages; i++) {
            const Index rows = Index{1} << (order - sweep.from);
            const int radix = sweep.radixOrder[i];
            const bool steps = inSteps(radix, sweep.form);
            order += radix;
            const auto fill = [&](auto* dense, auto* strided) {
                for (Index row = 0; row < rows; row++, out += columns / kLanes<T> * recordSize<T>(radix, sweep.form))
                    (order <= kConstantBase ? dense : strided)(out, quarter, order, row * length + k, columns);
            };
            if (radix == 2)
                steps ? fill(fillRecords<T, 4, true, true>, fillRecords<T, 4, true, false>)
                      : fill(fillRecords<T, 4, false, true>, fillRecords<T, 4, false, false>);
            else
                steps ? fill(fillRecords<T, 8, true, true>, fillRecords<T, 8, true, false>)
                      : fill(fillRecords<T, 8, false, true>, fillRecords<T, 8, false, false>);
        }
}

// The twiddles of the top pass: for each four columns j, each c = 1 .. 7: four cosines, then four negated sines, of
// 2 pi c (j .. j + 3) / M.
template<class T> void fillTopTable(T* out, const Quarter<T>& quarter, int m)
{
    using V = Full<T>;
    for (Index j = 0; j < (Index{1} << m) / 8; j += 4)
        for (int c = 1; c < 8; c++, out += 8)
            for (int i = 0; i < 4; i += lanes<V>)
                putPoints<V, false>(out + i, 4, quarter, j + i, m, makeMultiple(c, 0, 4));
}

// ---- Recombination --------------------------------------------------------------------------------------------------

template<class T> void fillRecombination(T* fwd, T* inv, const Quarter<T>& quarter, int order, bool twoLevel)
{
    using V = Full<T>;
    const Index quarterTurn = (Index{1} << order) / 4;
    if (twoLevel) {
        computePoints(fwd, order, 0, 1, kFine);
        copyConstants(fwd, order, kFine);
        for (Index k = 0; k <= quarterTurn / kFine; k++)
            store(fwd + 2 * (kFine + k), pointAt<false>(quarter, k, order - kFineOrder, kFirstQuadrant));
        __builtin_memcpy(inv, fwd, static_cast<size_t>(2 * (kFine + quarterTurn / kFine + 1)) * sizeof(T));
        return;
    }
    const T* points = inv;
    if (order <= kConstantBase) {
        points = constantQuarter<T>(order);
    } else {
        // Every second point is one of the complex order.
        for (Index k = 0; k <= quarterTurn / 2; k += 2)
            store(inv + 2 * k, load<Vec<T, 2>>(quarter.points(order - 1).p + k));
        computePoints(inv, order, 1, 2, quarterTurn / 2);
        mirrorPoints(inv, order);
    }
    const V half = splat<V>(T(0.5)), fold = alternating<V>(T(0), T(0.5));
    // Two neighbouring vectors at once, which leave for the cache together.
    constexpr int W = lanes<V>;
    for (Index i = 0; i < 2 * quarterTurn; i += 2 * W) {
        const V a = load<V>(points + i), b = load<V>(points + i + W);
        store(inv + i, a);
        store(inv + i + W, b);
        store(fwd + i, fma(a, half, fold));
        store(fwd + i + W, fma(b, half, fold));
    }
}

// ---- First generation -----------------------------------------------------------------------------------------------

template<class T> void fillKernelTable(T* out, const Quarter<T>& quarter, int m)
{
    for (Index k = 0; k <= (Index{1} << m) / 4; k++)
#pragma clang loop unroll(full)
        for (int j = 1; j <= 3; j++, out += 2)
            store(out, pointAt<true>(quarter, k, m, makeMultiple(j, 0, j)));
}

template<class T> void fillSweepTable(T* out, const Quarter<T>& quarter, int m)
{
    for (Index k = 0; k < (Index{1} << m) / 4; k++, out += 2)
        store(out, pointAt<false>(quarter, k, m, kFirstQuadrant));
}

// For each four columns j and each row c: the twiddles of 2 pi (j .. j + 3) rev(c) / 2^m.
template<class T> void fillMidTable(T* out, const Quarter<T>& quarter, int m, int f)
{
    for (Index j = 0; j < Index{1} << (m - f); j += 4)
        for (Index c = 0; c < Index{1} << f; c++)
            for (int i = 0; i < 4; i++, out += 2)
                store(out, pointAt<false>(quarter, (j + i) * reverseIndex(c, f), m, kAnyQuadrant));
}

} // namespace

#endif
