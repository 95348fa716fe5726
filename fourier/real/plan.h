// Making of plans, and the sizes that follow from them.
#ifndef QVR_FOURIER_PLAN_H
#define QVR_FOURIER_PLAN_H

#include "fourier/real/limits.h"
#include "fourier/real/passes.h"
#include "fourier/real/plan_record.h"

namespace {

// log2 of the radix of the stage that follows length 2^s in a row of 2^m points.
constexpr int rowRadixOrder(int m, int s)
{
    const int e = m - s;
    if constexpr (kAvx)
        // In 2^10 points of floats, three stages of radix 4 would round a tenth more than two of radix 8.
        return m == 10 || (s == kFirstOrder && e % 2 != 0 && e >= 3) ? 3 : 2;
    else
        return e % 3 == 0 ? 3 : 2;
}
// With `bits` stages to go in the sweep that joins rows.
constexpr int joinRadixOrder(int bits)
{
    return bits == 2 || bits == 4 || bits == 6 ? 2 : 3;
}

// Blocks of this many points (16 KB of floats) run to their end first.
constexpr int kRunOrder = 11;

// Stages of a row that share a sweep.
constexpr int kRowSweepStages = 2;

struct PlanWriter {
    FftPlan plan;
    int sweeps;

    constexpr void level(int order)
    {
        plan.level[plan.levels] = {static_cast<int8_t>(order), static_cast<int8_t>(sweeps), 0};
        plan.levels++;
    }
    constexpr FftSweep& sweep(int from, int form)
    {
        FftSweep& s = plan.sweep[sweeps++];
        s.from = static_cast<int8_t>(from);
        s.form = static_cast<int8_t>(form);
        plan.level[plan.levels - 1].sweeps++;
        return s;
    }
    static constexpr void stage(FftSweep& s, int radixOrder)
    {
        s.radixOrder[s.stages++] = static_cast<int8_t>(radixOrder);
    }
};

// Rows this long, with their work area, leave room in the second-level cache.
template<class T> constexpr int kRowOrderMost = sizeof(T) == 4 ? 15 : 14;

// log2 of the rows that a split transform joins: as many as the contract states, or more, for shorter ones.
template<class T> constexpr int joinOrder(int m)
{
    int f = splitOrder<T>(m);
    while (f > 0 && f < 8 && m - f > kRowOrderMost<T>)
        f++;
    return f;
}

// The row order of a transform that is split, its own order otherwise.
template<class T> constexpr int rowOrderOf(int m, FftClass c)
{
    if (c == FftClass::threaded)
        return m - 3;
    if (c == FftClass::split)
        for (m -= joinOrder<T>(m); rowSplits<T>(m);)
            m -= joinOrder<T>(m);
    return m;
}

// Of a flat or split transform; of the columns of the threaded band.
template<class T> constexpr FftPlan makePlan(int m, FftClass c)
{
    const int rows = rowOrderOf<T>(m, c);
    PlanWriter w{};
    w.plan.order = static_cast<int8_t>(c == FftClass::threaded ? rows : m);
    w.plan.firstOrder = kFirstOrder;
    w.level(rows < kRunOrder ? rows : kRunOrder);
    int s = kFirstOrder;
    while (s < rows) {
        const int radix = rowRadixOrder(rows, s);
        // The stage that ends a longer row reads what the others have left in all of it.
        if (s + radix > kRunOrder || (rows > kRunOrder && s + radix == rows))
            break;
        PlanWriter::stage(w.sweep(s, formProducts), radix);
        s += radix;
    }
    if (s < rows) {
        w.level(rows);
        while (s < rows) {
            FftSweep& sweep = w.sweep(s, formProducts);
            for (int i = 0; i < kRowSweepStages && s < rows; i++) {
                const int radix = rowRadixOrder(rows, s);
                PlanWriter::stage(sweep, radix);
                s += radix;
            }
        }
    }
    w.plan.row = static_cast<int8_t>(w.plan.levels - 1);
    // Inner splits first.
    int orders[kMaxFftLevels] = {}, count = 0;
    if (c == FftClass::split)
        for (int order = m; order > rows; order -= joinOrder<T>(order))
            orders[count++] = order;
    while (count > 0) {
        const int order = orders[--count];
        w.level(order);
        FftSweep& sweep = w.sweep(s, formSteps);
        for (; s < order; s += joinRadixOrder(order - s))
            PlanWriter::stage(sweep, joinRadixOrder(order - s));
    }
    return w.plan;
}

// The plans of all orders; none of those that have no levels.
template<class T> struct PlansOfOrders {
    FftPlan of[kFftLimits<T>.largest + 1];
};
template<class T> constexpr PlansOfOrders<T> plansOfOrders()
{
    PlansOfOrders<T> plans{};
    for (int order = kFftLimits<T>.complex + 1; !kFirstGeneration && order <= kFftLimits<T>.largest; order++)
        plans.of[order] = makePlan<T>(order - 1, classOf<T>(order));
    return plans;
}
template<class T> constexpr PlansOfOrders<T> kFftPlans = plansOfOrders<T>();

// ---- Twiddles of a sweep --------------------------------------------------------------------------------------------

// A strip's tile has 16 KB, with 256 bytes of each row or more; a sweep of one stage has no strips.
constexpr Index kTileBytes = 16384, kStripBytes = 256;
template<class T> constexpr Index stripColumns(const FftSweep& sweep)
{
    if (sweep.stages == 1)
        return Index{1} << sweep.from;
    const Index bytes = kTileBytes >> sweepOrder(sweep);
    return (bytes > kStripBytes ? bytes : kStripBytes) / static_cast<Index>(2 * sizeof(T));
}

template<class T> constexpr Index recordSize(int radixOrder, int form)
{
    const bool steps = inSteps(radixOrder, form);
    return radixOrder == 2 ? (steps ? kRecord<T, 4, true> : kRecord<T, 4, false>)
                           : (steps ? kRecord<T, 8, true> : kRecord<T, 8, false>);
}
// Elements of the records of one vector of columns: strip by strip, stage by stage, row by row.
template<class T> constexpr Index sweepRecord(const FftSweep& sweep)
{
    Index size = 0, rows = 1;
    for (int i = 0; i < sweep.stages; i++) {
        size += rows * recordSize<T>(sweep.radixOrder[i], sweep.form);
        rows <<= sweep.radixOrder[i];
    }
    return size;
}
template<class T> constexpr Index sweepTableSize(const FftSweep& sweep)
{
    return (Index{1} << sweep.from) / kLanes<T> * sweepRecord<T>(sweep);
}

} // namespace

#endif
