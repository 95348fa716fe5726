// Building of specification objects: one walk over the block serves the sizes, which the compiler makes, and the
// initialisation.
#ifndef QVR_FOURIER_INIT_H
#define QVR_FOURIER_INIT_H

#include "fourier/real/fill.h"
#include "fourier/real/spec.h"
#include "fourier/real/tables.h"
#include "frame/arena.h"
#include "frame/status.h"
#include "frame/threads.h"

namespace {

// The threaded band runs on at most this many threads.
constexpr int kBandThreads = 2;

constexpr int kFftOrderEnd = 31; // no slot and no precision takes this order or more

// Bytes of work memory of a flat transform.
template<class T> constexpr Index flatWork(int m)
{
    return ((Index{2} * sizeof(T) << m) + 63) & ~Index{63};
}
template<class T> constexpr Index splitWork(int m)
{
    constexpr Index point = 2 * sizeof(T);
    const int r = m - splitOrder<T>(m);
    Index need = rowSplits<T>(r) ? splitWork<T>(r) : flatWork<T>(r);
    const Index tile = splitOrder<T>(m) > 0 ? point << tileOrder<T>(m) : 0;
    need = need > tile ? need : tile;
    const Index reversal = m >= kTiledFrom ? 2 * kTilePoints * point : 0;
    return need > reversal ? need : reversal;
}
template<class T> constexpr Index workBytes(int order)
{
    const int m = order - 1;
    switch (classOf<T>(order)) {
    case FftClass::real:
    case FftClass::complex:
        return 0;
    case FftClass::flat:
        return kFirstGeneration ? 0 : flatWork<T>(m);
    case FftClass::threaded:
        return flatWork<T>(m);
    case FftClass::split:
        break;
    }
    if constexpr (!kFirstGeneration)
        return splitWork<T>(m);
    Index need = 0;
    for (int r = m; splitOrder<T>(r) != 0; r -= splitOrder<T>(r)) {
        const Index columns = Index{4} * 2 * sizeof(T) << splitOrder<T>(r);
        need = need > columns ? need : columns;
    }
    return need;
}

// The walk that only counts.
struct BlockSize {
    Index used;

    template<class T> constexpr T* take(Index count)
    {
        used += qvrAlignUp(count * static_cast<Index>(sizeof(T)), kLine);
        return nullptr;
    }
    static constexpr bool fills() { return false; }
};

// A table's place, filled at once where the walk has memory.
template<class T, class Walk, class Fill> constexpr T* placeTable(Walk& walk, Index size, const Fill& fill)
{
    T* table = walk.template take<T>(size);
    if (walk.fills())
        fill(table);
    return table;
}

template<class T, class Walk>
constexpr void firstGenTables(FftSpec<T>& spec, Walk& walk, const Quarter<T>& quarter, int m)
{
    int rows = m;
    while (rows > kKernelOrder && splitOrder<T>(rows) != 0)
        rows -= splitOrder<T>(rows);
    const int kernel = kernelTableOrder(rows);
    spec.pTwiddle = placeTable<T>(walk, kernelTableSize(kernel), [&](T* p) { fillKernelTable(p, quarter, kernel); });
    if (rows > kKernelOrder)
        spec.pSweepTwiddle = placeTable<T>(walk, sweepTableSize(rows), [&](T* p) { fillSweepTable(p, quarter, rows); });
    for (int level = 0, r = m; r > kKernelOrder && splitOrder<T>(r) != 0; level++) {
        const int f = splitOrder<T>(r);
        spec.pLevelColumnTwiddle[level] =
            placeTable<T>(walk, kernelTableSize(f), [&](T* p) { fillKernelTable(p, quarter, f); });
        spec.pLevelMidTwiddle[level] =
            placeTable<T>(walk, Index{2} << r, [&](T* p) { fillMidTable(p, quarter, r, f); });
        r -= f;
    }
}

template<class T, class Walk>
constexpr void secondGenTables(FftSpec<T>& spec, Walk& walk, const Quarter<T>& quarter, int order)
{
    const int m = order - 1;
    const FftPlan& plan = kFftPlans<T>.of[order];
    spec.plan = &plan;
    // The tables of sweeps first .. end - 1, whole lines each, as one item.
    const auto place = [&](int first, int end) {
        T* table = nullptr;
        for (int i = first; i < end; i++) {
            T* const out = walk.template take<T>(sweepTableSize<T>(plan.sweep[i]));
            static_assert(kFirstRadix * 2 * sizeof(T) % kLine == 0);
            if (walk.fills())
                fftKernels<T>().fillSweep(out, quarter, plan.sweep[i]);
            spec.pSweepTables[i] = out;
            table = i == first ? out : table;
        }
        return table;
    };
    const FftLevel& row = plan.level[plan.row];
    spec.pTwiddle = place(0, row.sweep + row.sweeps);
    if (classOf<T>(order) == FftClass::threaded)
        spec.pSweepTwiddle =
            placeTable<T>(walk, topTableSize(m), [&](T* p) { fftKernels<T>().fillTopTable(p, quarter, m); });
    for (int i = plan.levels - 1; i > plan.row; i--)
        spec.pLevelMidTwiddle[plan.levels - 1 - i] =
            place(plan.level[i].sweep, plan.level[i].sweep + plan.level[i].sweeps);
}

template<class Walk> constexpr int32_t* placeBitRev(Walk& walk, int m)
{
    if (kFirstGeneration || m < kTiledFrom)
        return placeTable<int32_t>(walk, bitRevEntries(m), [&](int32_t* table) {
            if constexpr (kFirstGeneration)
                fillSwapTable(table, m);
            else
                fillBitRev(table, m);
        });
    // Two levels: the tiles' order, then the points of a tile.
    const int outer = m - 2 * kTileBits;
    const Index tiles = Index{1} << outer;
    return placeTable<int32_t>(walk, tiles + bitRevEntries(2 * kTileBits), [&](int32_t* table) {
        for (Index i = 0; i < tiles; i++)
            table[i] = static_cast<int32_t>(reverseIndex(i, outer) << kTileBits);
        fillBitRev(table + tiles, 2 * kTileBits);
    });
}

// The whole block after the object itself.
template<class T, class Walk>
constexpr void placeTables(FftSpec<T>& spec, Walk& walk, const Quarter<T>& quarter, int order)
{
    const FftClass c = classOf<T>(order);
    if (c == FftClass::real)
        return;
    if (c != FftClass::complex) {
        spec.pBitRev = placeBitRev(walk, c == FftClass::threaded ? order - 4 : order - 1);
        if constexpr (kFirstGeneration)
            firstGenTables(spec, walk, quarter, order - 1);
        else
            secondGenTables(spec, walk, quarter, order);
    }
    const bool twoLevel = order >= kFftLimits<T>.twoLevel;
    const Index size = recombinationSize(order, twoLevel);
    spec.pFwdRecomb = walk.template take<T>(size);
    spec.pInvRecomb = walk.template take<T>(size);
    if (walk.fills())
        fftKernels<T>().fillRecombination(spec.pFwdRecomb, spec.pInvRecomb, quarter, order, twoLevel);
}

// By contract: temporary memory from this order on, also where the points are constants.
constexpr int kInitFrom = 11;

struct FftSizes {
    int32_t spec, init, work; // the arguments of fftGetSize
};
template<class T> constexpr FftSizes fftSizes(int order)
{
    FftSpec<T> spec{};
    BlockSize walk{};
    walk.take<SpecType<T>>(1);
    placeTables<T>(spec, walk, {}, order);
    const Index points =
        order - 1 > kConstantBase ? quarterEntries<T>(order - 1) * static_cast<Index>(2 * sizeof(T)) : 0;
    const Index work = workBytes<T>(order);
    return {static_cast<int32_t>(walk.used + kLine), static_cast<int32_t>(order >= kInitFrom ? points + kLine : 0),
            static_cast<int32_t>(work > 0 ? work + kLine : 0)};
}
template<class T> struct SizesOfOrders {
    FftSizes of[kFftLimits<T>.largest + 1];
};
template<class T> constexpr SizesOfOrders<T> sizesOfOrders()
{
    SizesOfOrders<T> sizes{};
    for (int order = 0; order <= kFftLimits<T>.largest; order++)
        sizes.of[order] = fftSizes<T>(order);
    return sizes;
}
template<class T> constexpr SizesOfOrders<T> kFftSizes = sizesOfOrders<T>();

constexpr bool knownFlag(int flag)
{
    return flag == qvrFftNoDiv || flag == qvrFftDivBySqrtN || flag == qvrFftDivFwdByN || flag == qvrFftDivInvByN;
}

template<class T>
inline qvrStatus fftGetSize(int order, int flag, int32_t* pSpecSize, int32_t* pInitSize, int32_t* pWorkSize)
{
    if (static_cast<unsigned>(order) >= kFftOrderEnd)
        return qvrErrFFTOrder;
    if (anyNull(pSpecSize, pInitSize, pWorkSize))
        return qvrErrNullPointer;
    if (!knownFlag(flag))
        return qvrErrFFTFlag;
    if (order > kFftLimits<T>.largest)
        return qvrErrFFTOrder;
    const FftSizes& sizes = kFftSizes<T>.of[order];
    *pSpecSize = sizes.spec;
    *pInitSize = sizes.init;
    *pWorkSize = sizes.work;
    return qvrOk;
}

// 1/N, or 1/sqrt(N). In single precision the root is the processor's estimate and one Newton step.
template<class T> inline T normalisation(int order, int flag)
{
    const T n = static_cast<T>(Index{1} << order);
    if (flag == qvrFftNoDiv)
        return 0;
    if (flag != qvrFftDivBySqrtN)
        return static_cast<T>(1) / n;
    if constexpr (sizeof(T) == 8) {
        return 1.0 / __builtin_sqrt(n);
    } else {
        const float r = reciprocalRootEstimate(n);
        return (r * -0.5f) * ((n * r) * r - 3.0f);
    }
}

template<class T>
inline qvrStatus fftInit(SpecType<T>** ppSpec, int order, int flag, int hint, uint8_t* pMemSpec, uint8_t* pMemInit)
{
    if (anyNull(ppSpec, pMemSpec) || (order >= kInitFrom && pMemInit == nullptr))
        return qvrErrNullPointer;
    Arena walk = {alignLine<void>(pMemSpec), 0};
    SpecType<T>* spec = walk.take<SpecType<T>>(1);
    *spec = {};
    if (!knownFlag(flag))
        return qvrErrFFTFlag;
    if (static_cast<unsigned>(order) > static_cast<unsigned>(kFftLimits<T>.largest))
        return qvrErrFFTOrder;
    spec->order = order;
    spec->doFwdScale = flag == qvrFftDivFwdByN || flag == qvrFftDivBySqrtN;
    spec->doInvScale = flag == qvrFftDivInvByN || flag == qvrFftDivBySqrtN;
    spec->normFactor = normalisation<T>(order, flag);
    spec->hint = hint;
    const int32_t work = kFftSizes<T>.of[order].work;
    spec->workSize = work > 0 ? work - static_cast<int32_t>(kLine) : 0;
    if constexpr (kThreadedBand) {
        const int budget = qvrNumThreadsValue();
        spec->threadLimit.value = budget < kBandThreads ? budget : kBandThreads;
    }
    Quarter<T> quarter{};
    if (order - 1 > kConstantBase) {
        quarter = {alignLine<T>(pMemInit), order - 1};
        fftKernels<T>().fillQuarter(alignLine<T>(pMemInit), order - 1);
    }
    placeTables<T>(*spec, walk, quarter, order);
    spec->tag = kFftTag<T>;
    *ppSpec = spec;
    return qvrOk;
}

template<class T> inline qvrStatus fftInitAlloc(SpecType<T>** ppSpec, int order, int flag, int hint)
{
    if (ppSpec == nullptr)
        return qvrErrNullPointer;
    int32_t specSize, initSize, workSize;
    if (const qvrStatus status = fftGetSize<T>(order, flag, &specSize, &initSize, &workSize))
        return status;
    uint8_t* block = allocate<uint8_t>(specSize);
    if (block == nullptr)
        return qvrErrNoMemory;
    uint8_t* init = nullptr;
    if (initSize > 0) {
        init = allocate<uint8_t>(initSize);
        if (init == nullptr) {
            release(block);
            return qvrErrNoMemory;
        }
    }
    SpecType<T>* spec;
    const qvrStatus status = fftInit<T>(&spec, order, flag, hint, block, init);
    release(init);
    if (status != qvrOk) {
        release(block);
        return status;
    }
    spec->isAlloc = 1;
    spec->pBlock = block;
    *ppSpec = spec;
    return qvrOk;
}

template<class T> inline qvrStatus fftFree(SpecType<T>* pSpec)
{
    if (const qvrStatus status = checkState(pSpec, kFftTag<T>))
        return status;
    pSpec->tag = 0;
    if (pSpec->isAlloc == 1)
        release(pSpec->pBlock);
    return qvrOk;
}

template<class T> inline qvrStatus fftGetBufSize(const SpecType<T>* pSpec, int32_t* pSize)
{
    if (anyNull(pSpec, pSize))
        return qvrErrNullPointer;
    if (pSpec->tag != kFftTag<T>)
        return qvrErrBadContext;
    *pSize = pSpec->workSize >= 1 ? pSpec->workSize + static_cast<int32_t>(kLine) : 0;
    return qvrOk;
}

} // namespace

#endif
