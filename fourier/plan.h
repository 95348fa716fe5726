// The plan of a complex transform of 2^m points: which stages run in which order of work.
//
//     first pass      kFirstRadix points without twiddles, bits reversed by the way
//     levels          nested blocks of 2^order points. Inside a block, the blocks of the level below run to their end,
//     then
//                     come the level's own sweeps
//     sweep           one pass over the block, of one stage or of several: strips of columns then go through a dense
//     tile
//
// The innermost level is a run that stays in the first cache, the next one a row, and then each level joins the rows of
// the one below by its last stages. Rows are dealt out of the source in natural order, or lie in a reversed array.
#ifndef QVR_FOURIER_PLAN_H
#define QVR_FOURIER_PLAN_H

#include "fourier/limits.h"
#include "fourier/passes.h"

namespace {

constexpr int kMaxLevels = 5, kMaxSweeps = 12, kMaxStages = 4;

struct FftSweep {
    int8_t from;                   // log2 of the length at its begin
    int8_t stages;                 // in one pass
    int8_t radixOrder[kMaxStages]; // log2
    int8_t form;                   // formProducts or formSteps
};
struct FftLevel {
    int8_t order; // log2 of its block
    int8_t sweep, sweeps;
};
struct FftPlan {
    int8_t order; // m
    int8_t row;   // the level whose blocks begin with a first pass
    int8_t levels;
    FftLevel level[kMaxLevels];
    FftSweep sweep[kMaxSweeps];
};

constexpr int sweepOrder(const FftSweep& sweep)
{
    int order = 0;
    for (int i = 0; i < sweep.stages; i++)
        order += sweep.radixOrder[i];
    return order;
}

// log2 of the radix of the stage that follows length 2^s in a row of 2^m points.
constexpr int rowRadixOrder(int m, int s)
{
    const int e = m - s;
    bool eight = false;
    if constexpr (kAvx)
        eight = e == 3 || (e >= 5 && s >= 3 && m < 12) || (s == 4 && (m & 1) != 0);
    else
        eight = e % 3 == 0;
    return eight && e >= 3 ? 3 : 2;
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

// The row order of a transform that is split, its own order otherwise.
template<class T> constexpr int rowOrderOf(int m, FftClass c)
{
    if (c == FftClass::threaded)
        return m - 3;
    if (c == FftClass::split)
        for (m -= splitOrder<T>(m); rowSplits<T>(m);)
            m -= splitOrder<T>(m);
    return m;
}

// Of a flat or split transform; of the columns of the threaded band.
template<class T> constexpr FftPlan makePlan(int m, FftClass c)
{
    const int rows = rowOrderOf<T>(m, c);
    PlanWriter w{};
    w.plan.order = static_cast<int8_t>(c == FftClass::threaded ? rows : m);
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
    int orders[kMaxLevels] = {}, count = 0;
    if (c == FftClass::split)
        for (int order = m; order > rows; order -= splitOrder<T>(order))
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
