// Flat complex transforms of 2^m points, second generation: stage plan, twiddle table, order of work.
#ifndef QVR_FOURIER_FLAT_H
#define QVR_FOURIER_FLAT_H

#include "fourier/limits.h"
#include "fourier/passes.h"

namespace {

// Radix 4 steps save operations only where they are fused.
constexpr bool kFlatSteps = kFma;

// Stages run inside blocks of this many points (16 KB of floats) before any stage crosses them.
constexpr int kRunOrder = 11;

// The radix of the stage that follows length 2^s in a transform of 2^m points.
constexpr int nextRadix(int m, int s)
{
    const int e = m - s;
    bool eight = false;
    if constexpr (kAvx)
        eight = e == 3 || (e >= 5 && s >= 3 && m < 12) || (s == 4 && (m & 1) != 0);
    else if constexpr (kSlot == slotM7)
        eight = e == 3 || (e >= 5 && s >= 3) || (s == 2 && (m == 7 || m == 10 || m == 11 || m == 13 || m == 14));
    else
        eight = e % 3 == 0;
    return eight && e >= 3 ? 8 : 4;
}
constexpr int orderOf(int radix)
{
    return radix == 8 ? 3 : 2;
}

// Elements of the stage table of a 2^m transform: one run of records for each stage after the first pass.
template<class T> constexpr Index stageTableSize(int m)
{
    Index size = 0;
    for (int s = kFirstOrder<T>; s < m;) {
        const int radix = nextRadix(m, s);
        const Index record = radix == 4 ? kRecord<T, 4, kFlatSteps> : kRecord<T, 8, kFlatSteps>;
        size += (Index{1} << s) / kLanes<T> * record;
        s += orderOf(radix);
    }
    return size;
}
template<class T> inline T* fillStageTable(T* out, const Quarter<T>& quarter, int m)
{
    for (int s = kFirstOrder<T>; s < m;) {
        const int radix = nextRadix(m, s), order = s + orderOf(radix);
        out = radix == 4 ? fillRecords<T, 4, kFlatSteps>(out, quarter, order, 0, Index{1} << s)
                         : fillRecords<T, 8, kFlatSteps>(out, quarter, order, 0, Index{1} << s);
        s = order;
    }
    return out;
}

template<class T> struct StageCursor {
    int s;       // log2 of the length reached
    const T* tw; // records of the next stage
};

// All stages up to length 2^limit, the last of the transform left out, on `points` points.
template<class T, class G>
inline StageCursor<T> runStages(T* area, Index points, int m, int limit, StageCursor<T> at, G groups)
{
    while (at.s < m) {
        const int radix = nextRadix(m, at.s), order = at.s + orderOf(radix);
        if (order > limit || order == m)
            break;
        const Index q = Index{1} << at.s;
        if (radix == 4) {
            stage<4, kFlatSteps>(area, points, q, at.tw, groups);
            at.tw += q / kLanes<T> * kRecord<T, 4, kFlatSteps>;
        } else {
            stage<8, kFlatSteps>(area, points, q, at.tw, groups);
            at.tw += q / kLanes<T> * kRecord<T, 8, kFlatSteps>;
        }
        at.s = order;
    }
    return at;
}

// Everything after the first pass; the last stage writes dst through `to`, which may be the area itself.
template<class T, class G, class Out>
inline void allStages(T* area, T* dst, int m, const T* tw, G groups, Out to)
{
    const Index points = Index{1} << m, run = Index{1} << (m < kRunOrder ? m : kRunOrder);
    const StageCursor<T> start = {kFirstOrder<T>, tw};
    StageCursor<T> at = start;
    for (Index b = 0; b < points; b += run)
        at = runStages(area + 2 * b, run, m, kRunOrder, start, groups);
    at = runStages(area, points, m, m, at, groups);
    const Index q = Index{1} << at.s;
    if (at.s + 2 == m)
        stageBlock<4, kFlatSteps>(area, 2 * q, dst, 2 * q, q, at.tw, groups, to);
    else
        stageBlock<8, kFlatSteps>(area, 2 * q, dst, 2 * q, q, at.tw, groups, to);
}

template<class T> inline bool alignedToVector(const T* p)
{
    return reinterpret_cast<uintptr_t>(p) % kVecBytes == 0;
}

// The bit-reversal table of a 2^m transform: 2^(m-2) + 1 entries, 2 rev(i), the last one 0.
constexpr Index bitRevEntries(int m)
{
    return (Index{1} << m) / 4 + 1;
}
inline void fillBitRev(int32_t* table, int m, int shift)
{
    const Index n = Index{1} << (m - 2);
    Index rev = 0;
    for (Index i = 0; i < n; i++) {
        table[i] = static_cast<int32_t>(rev << shift);
        // Counts up from the top bit.
        Index bit = n >> 1;
        for (; rev & bit; bit >>= 1)
            rev ^= bit;
        rev |= bit;
    }
    table[n] = 0;
}

// Bytes of work memory of a flat transform.
template<class T> constexpr Index flatWork(int m)
{
    return ((Index{2} * sizeof(T) << m) + 63) & ~Index{63};
}

// One whole flat transform. The passes run in an aligned destination that is not the source, else in the work memory.
template<bool Swap, class T, class Out>
inline void flatTransform(const T* src, T* dst, int m, const T* tw, const int32_t* bitRev, T* work, Out to)
{
    T* area = src != dst && alignedToVector(dst) ? dst : work;
    if (!kAvx && alignedToVector(src))
        firstPass<Swap, true>(src, area, m, bitRev);
    else
        firstPass<Swap, false>(src, area, m, bitRev);
    allStages(area, dst, m, tw, AreaGroups{}, to);
}

} // namespace

#endif
