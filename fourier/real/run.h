// Execution of a plan.
//
// The passes run in the area: the destination where it is aligned and not the source, else the work memory. Paths
// differ in buffers and in the order of work, never in butterflies or twiddles, so all give the same bits.
#ifndef QVR_FOURIER_RUN_H
#define QVR_FOURIER_RUN_H

#include "fourier/real/spec.h"
#include "frame/region.h"

namespace {

template<class T> inline bool alignedToVector(const T* p)
{
    return reinterpret_cast<uintptr_t>(p) % kVecBytes == 0;
}

// One complex transform.
template<class T> struct FftRun {
    const FftKernels<T>& kernels;
    const FftSpec<T>& spec;
    const FftPlan& plan;
    bool swap;     // the inverse
    Finish finish; // of the last kernel
    T factor;      // multiplies the results
    T* work;

    // X or 2 Z of bins k .. k + count - 1 and of their partners. Re X[N/2] goes in and out with bin 0.
    T recombine(Index k, const T* aIn, const T* bIn, T* aOut, T* bOut, Index count, T last) const
    {
        // By contract: pFwdRecomb holds the folded twiddles, with which values would be subtracted before they are
        // halved.
        RecombineCall<T> call = {aIn, bIn, aOut, bOut, k, count, spec.pInvRecomb, last, T(0.5) * factor};
        kernels.recombine[swap][spec.order >= kFftLimits<T>.twoLevel](call);
        return call.last;
    }
    T recombine(const T* src, T* dst, Index k, Index count, T last) const
    {
        const Index back = 2 * ((Index{1} << (spec.order - 1)) - k - count + 1);
        return recombine(k, src + 2 * k, src + back, dst + 2 * k, dst + back, count, last);
    }
};

template<class T> inline FftRun<T> makeRun(const FftSpec<T>& spec, bool inverse, T factor, T* work)
{
    const Finish finish = !inverse ? Finish::pairs : factor == 1 ? Finish::swapped : Finish::scaled;
    return {fftKernels<T>(), spec, kFftPlans<T>.of[spec.order], inverse, finish, factor, work};
}

template<class T>
inline void runStage(const FftRun<T>& run, const FftSweep& sweep, int stage, Finish finish, const StageCall<T>& call)
{
    run.kernels.stage[static_cast<int>(finish)][sweep.form][sweep.radixOrder[stage] - 2](call);
}

constexpr Index kFirstBlockBytes = 8192;
template<class T> constexpr Index kStripPadding = static_cast<Index>(64 / (2 * sizeof(T)));

// Strips of up to 64 rows have their tile on the stack; that of a longer one is work memory, which rows leave free.
constexpr int kStackTileOrder = 6;
static_assert(kStripBytes << kStackTileOrder == kTileBytes);

// Order from which an inverse recombines on its way into the first pass.
template<class T> constexpr int kFirstJoinedFrom = sizeof(T) == 4 ? 13 : 12; // orders of 64 KB

// The columns k .. k + columns - 1 of one strip, rows 2^from points apart.
template<class T>
void runStrip(const FftRun<T>& run, int index, const T* in, T* out, Index k, Index columns, Finish output, T* tile)
{
    const FftSweep& sweep = run.plan.sweep[index];
    const Index length = Index{1} << sweep.from;
    const Index rows = Index{1} << sweepOrder(sweep);
    const T* twiddles = run.spec.pSweepTables[index] + k / kLanes<T> * sweepRecord<T>(sweep);
    Index done = 1;
    for (int i = 0; i < sweep.stages; i++) {
        const bool first = i == 0, last = i + 1 == sweep.stages;
        const Index radix = Index{1} << sweep.radixOrder[i];
        const Index inRow = 2 * (first ? length : columns), outRow = 2 * (last ? length : columns);
        runStage(run, sweep, i, last ? output : Finish::groups,
                 StageCall<T>{first ? in + 2 * k : tile, last ? out + 2 * k : tile, done * inRow, done * outRow,
                              columns, done, inRow, outRow, rows / (radix * done), radix * done * inRow,
                              radix * done * outRow, twiddles, run.factor});
        twiddles += done * columns / kLanes<T> * recordSize<T>(sweep.radixOrder[i], sweep.form);
        done *= radix;
    }
}

// A sweep of several stages over 2^order points.
template<class T>
__attribute__((noinline)) void runStrips(const FftRun<T>& run, int index, const T* in, T* out, int order, Finish output)
{
    const FftSweep& sweep = run.plan.sweep[index];
    alignas(64) T stackTile[kTileBytes / sizeof(T)];
    T* const tile = sweepOrder(sweep) <= kStackTileOrder ? stackTile : run.work;
    const Index length = Index{1} << sweep.from, points = Index{1} << order;
    const Index block = length << sweepOrder(sweep), columns = stripColumns<T>(sweep);
    for (Index b = 0; b < points; b += block)
        for (Index k = 0; k < length; k += columns)
            runStrip(run, index, in + 2 * b, out + 2 * b, k, columns, output, tile);
}

// One sweep over 2^order points.
template<class T> inline void runSweep(const FftRun<T>& run, int index, const T* in, T* out, int order, Finish output)
{
    const FftSweep& sweep = run.plan.sweep[index];
    if (sweep.stages > 1)
        return runStrips(run, index, in, out, order, output);
    const Index length = Index{1} << sweep.from;
    const int block = sweep.from + sweep.radixOrder[0];
    runStage(run, sweep, 0, output,
             StageCall<T>{in, out, 2 * length, 2 * length, length, 1, 0, 0, Index{1} << (order - block),
                          Index{2} << block, Index{2} << block, run.spec.pSweepTables[index], run.factor});
}

// The recombination of an inverse transform and its first pass, by the same pairing of the pass' legs. Columns of both
// ends are recombined out of src into buffers and go on from there, those of the upper end when the column has come
// that begins them.
template<class T> void runFirstBlocks(const FftRun<T>& run, const T* src, T last, Vec<T, 2> middle, T* area)
{
    constexpr Index R = kFirstRadix, B = kFirstBlockBytes / (2 * sizeof(T) * R), stride = B + kStripPadding<T>;
    alignas(64) T lower[2 * R * stride], upper[2][2 * R * stride];
    const int m = run.plan.order;
    const Index M = Index{1} << m, q = M / R;
    const auto copy = [](T* to, const T* from) { store(to, load<Vec<T, 2>>(from)); };
    const auto pass = [&](const T* block, Index from) {
        run.kernels.first[true](FirstCall<T>{block, stride, area, m, from, B});
    };
    T *now = upper[0], *before = upper[1];
    for (Index j = 0; j < q / 2; j += B) {
        for (Index leg = 0; leg < R / 2; leg++) {
            const Index mirror = R - 1 - leg, low = leg * q + j;
            run.recombine(low, src + 2 * low, src + 2 * (M - low - B + 1), lower + 2 * leg * stride,
                          now + 2 * (mirror * stride + 1), B, last);
            const Index count = B - (j == 0), high = (leg + 1) * q - j - B + 1;
            run.recombine(high, src + 2 * high, src + 2 * (M - high - count + 1), now + 2 * (leg * stride + 1),
                          lower + 2 * (mirror * stride + B - count), count, last);
        }
        if (j == 0) {
            for (Index leg = 1; leg < R / 2; leg++)
                copy(lower + 2 * (R - leg) * stride, now + 2 * ((R - 1 - leg) * stride + B));
            store(lower + R * stride, middle);
        } else {
            for (Index leg = 0; leg < R; leg++)
                copy(before + 2 * leg * stride, now + 2 * (leg * stride + B));
            pass(before, q - j);
        }
        pass(lower, j);
        T* const done = now;
        now = before;
        before = done;
    }
    for (Index leg = 0; leg < R / 2; leg++) {
        const Index k = leg * q + q / 2;
        run.recombine(k, src + 2 * k, src + 2 * (M - k), before + 2 * leg * stride, before + 2 * (R - 1 - leg) * stride,
                      1, last);
    }
    pass(before, q / 2);
}

// The sweeps of a level over one of its blocks.
template<class T> inline void runLevelSweeps(const FftRun<T>& run, int index, T* area, T* out, Finish output)
{
    const FftLevel& level = run.plan.level[index];
    const int end = level.sweep + level.sweeps;
    for (int i = level.sweep; i < end; i++) {
        const bool last = i + 1 == end;
        runSweep(run, i, area, last ? out : area, level.order, last ? output : Finish::groups);
    }
}

// Everything of a row after its first pass.
template<class T> inline void runRow(const FftRun<T>& run, T* area, T* out, Finish output)
{
    const int row = run.plan.row;
    if (row > 0) {
        const Index points = Index{1} << run.plan.level[row].order, inner = Index{1} << run.plan.level[0].order;
        for (Index b = 0; b < points; b += inner)
            runLevelSweeps(run, 0, area + 2 * b, area + 2 * b, Finish::groups);
    }
    runLevelSweeps(run, row, area, out, output);
}

// A split transform's level, in place: rows that were dealt pass through the work memory.
template<class T> void runSplit(const FftRun<T>& run, int index, T* data, bool dealt)
{
    const FftPlan& plan = run.plan;
    const Index points = Index{1} << plan.level[index].order;
    if (index == plan.row) {
        const Index legs = points >> kFirstOrder;
        if (dealt)
            run.kernels.first[run.swap](FirstCall<T>{data, legs, run.work, plan.level[index].order, 0, legs});
        else
            run.kernels.firstReversed[run.swap](data, points);
        return runRow(run, dealt ? run.work : data, data, index + 1 == plan.levels ? run.finish : Finish::groups);
    }
    const Index inner = Index{1} << plan.level[index - 1].order;
    for (Index b = 0; b < points; b += inner)
        runSplit(run, index - 1, data + 2 * b, dealt);
    runLevelSweeps(run, index, data, data, index + 1 == plan.levels ? run.finish : Finish::groups);
}

// ---- Threaded band --------------------------------------------------------------------------------------------------

// Threads write disjoint columns, so the result does not depend on their number.
template<class T> struct BandCall {
    const FftRun<T>& run;
    const T* src;
    T *area, *dst;
    int threadLimit;

    Index columns() const { return Index{1} << run.plan.order; }
    void groups(int first, int count) const
    {
        for (int g = first; g < first + count; g++) {
            T* const four = area + 8 * g * columns();
            run.kernels.columns[run.swap](ColumnsCall<T>{src + 8 * g, four, run.plan.order});
            for (int c = 0; c < 4; c++)
                runRow(run, four + 2 * c * columns(), four + 2 * c * columns(), Finish::groups);
        }
    }
    void top(Index first, Index count) const
    {
        run.kernels.top[static_cast<int>(run.finish)](
            TopCall<T>{area, dst, columns(), first, count, run.spec.pSweepTwiddle, run.factor});
    }
    void columnsShare(int t, int threads) const
    {
        const int parts = threads < threadLimit ? threads : threadLimit;
        const int share = 2 / parts, rest = 2 % parts;
        if (t < parts)
            groups(t * share, t == parts - 1 ? share + rest : share);
    }
    void topShare(int t, int threads) const
    {
        const int parts = threads < threadLimit ? threads : threadLimit;
        const Index share = columns() / parts / 4 * 4, rest = columns() - share * parts;
        if (t < parts)
            top(t * share, t == parts - 1 ? share + rest : share);
    }
};

template<class T> inline void runBand(const FftRun<T>& run, const T* src, T* area, T* dst, int threadLimit)
{
    const BandCall<T> call = {run, src, area, dst, threadLimit};
    if (threadLimit < 2) {
        call.groups(0, 2);
        call.top(0, call.columns());
        return;
    }
    const int budget = qvrNumThreadsValue(), threads = budget < threadLimit ? budget : threadLimit;
    parallelTeam(threads, [&call](int t, int team) { call.columnsShare(t, team); });
    parallelTeam(threads, [&call](int t, int team) { call.topShare(t, team); });
}

// ---- Whole transforms -----------------------------------------------------------------------------------------------

// Points in natural order to pairs, forward without the factor.
template<class T> inline void runComplex(const FftRun<T>& run, const T* src, T* dst, T* area)
{
    const FftSpec<T>& spec = run.spec;
    const int m = spec.order - 1;
    const FftClass c = classOf<T>(spec.order);
    if (c == FftClass::complex) {
        run.kernels.straight[run.swap](m, src, dst, run.factor);
    } else if constexpr (kFirstGeneration) {
        const FirstGenTables<T> tables = {spec.pTwiddle, spec.pSweepTwiddle, spec.pLevelColumnTwiddle,
                                          spec.pLevelMidTwiddle};
        run.kernels.firstGeneration[run.swap](
            FirstGenCall<T>{src, dst, m, spec.pBitRev, tables, run.work, run.swap ? run.factor : T(1)});
    } else if (c == FftClass::split) {
        const FftLevel& row = run.plan.level[run.plan.row];
        const bool dealt = src != dst;
        if (dealt)
            run.kernels.deal(src, dst, m, m - row.order, 0, Index{1} << row.order);
        else
            run.kernels.reverse(dst, m, run.work);
        runSplit(run, run.plan.levels - 1, dst, dealt);
    } else {
        if constexpr (kThreadedBand)
            if (c == FftClass::threaded)
                return runBand(run, src, area, dst, spec.threadLimit.value);
        const Index legs = (Index{1} << m) >> kFirstOrder;
        run.kernels.first[run.swap](FirstCall<T>{src, legs, area, m, 0, legs});
        runRow(run, area, dst, run.finish);
    }
}

// Where the passes run: the destination if it is aligned and not the source, else the work memory.
template<class T> inline T* areaOf(const FftRun<T>& run, const T* src, T* dst)
{
    return src != dst && alignedToVector(dst) ? dst : run.work;
}

template<class T> inline void complexTransform(const FftRun<T>& run, const T* src, T* dst)
{
    runComplex(run, src, dst, areaOf(run, src, dst));
    if (!run.swap && run.factor != 1)
        scalePoints(dst, Index{1} << (run.spec.order - 1), run.factor);
}

// To the packed spectrum.
template<class T> inline void forwardTransform(const FftRun<T>& run, const T* src, T* dst)
{
    if (run.spec.order - 1 <= kInRegisters<T>.forward)
        return run.kernels.straightForward(run.spec.order - 1, src, dst, T(0.5) * run.factor);
    const Index M = Index{1} << (run.spec.order - 1);
    runComplex(run, src, dst, areaOf(run, src, dst));
    put(dst, 1, run.recombine(dst, dst, 0, M / 2, T{}));
    put(dst, M, run.factor * get(dst, M));
    put(dst, M + 1, -run.factor * get(dst, M + 1));
}

// From bins 1 .. N/2 - 1 at src[2k], Re X[0] at src[0] and Re X[N/2].
template<class T> inline void inverseTransform(const FftRun<T>& run, const T* src, T* dst, T last)
{
    const FftClass c = classOf<T>(run.spec.order);
    if (run.spec.order - 1 <= kInRegisters<T>.inverse)
        return run.kernels.straightInverse(run.spec.order - 1, src, last, dst, run.factor);
    const Index M = Index{1} << (run.spec.order - 1);
    const Vec<T, 2> middle = {2 * get(src, M), -2 * get(src, M + 1)};
    T* const area = areaOf(run, src, dst);
    if constexpr (!kFirstGeneration)
        if (c == FftClass::flat && run.plan.order >= kFirstJoinedFrom<T>) {
            runFirstBlocks(run, src, last, middle, area);
            runRow(run, area, dst, run.finish);
            return;
        }
    // Through whichever of work memory and destination the passes leave free.
    const bool throughWork = c == FftClass::flat && !kFirstGeneration && area == dst;
    T* const bins = throughWork ? run.work : dst;
    run.recombine(src, bins, 0, M / 2, last);
    store(bins + M, middle);
    runComplex(run, bins, dst, throughWork ? dst : run.work);
}

} // namespace

#endif
