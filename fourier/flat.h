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
    else if constexpr (kSlot == qvrSlot_m7)
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

template<class T, int R> constexpr Index stageRecords(Index q)
{
    return q / kLanes<T> * kRecord<T, R, kFlatSteps>;
}

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
            at.tw += stageRecords<T, 4>(q);
        } else {
            stage<8, kFlatSteps>(area, points, q, at.tw, groups);
            at.tw += stageRecords<T, 8>(q);
        }
        at.s = order;
    }
    return at;
}

// Two stages in one pass over the array: strips of columns go through a dense tile, which also keeps rows a power of
// two apart from evicting each other.
constexpr Index kStripBytes = 256;

template<int R1, int R2, class T, class In, class Out>
inline void stagePair(const T* in, T* out, Index points, Index q, const T* tw, In from, Out to)
{
    constexpr Index columns = kStripBytes / static_cast<Index>(2 * sizeof(T));
    alignas(64) T tile[2 * R1 * R2 * columns];
    const T* second = tw + stageRecords<T, R1>(q);
    for (Index b = 0; b < points; b += R1 * R2 * q)
        for (Index k = 0; k < q; k += columns) {
            for (int g = 0; g < R2; g++)
                stageBlock<R1, kFlatSteps>(in + 2 * (b + g * R1 * q + k), 2 * q, tile + 2 * g * R1 * columns,
                                           2 * columns, columns, tw + stageRecords<T, R1>(k), from, AreaGroups{});
            for (int c = 0; c < R1; c++)
                stageBlock<R2, kFlatSteps>(tile + 2 * c * columns, 2 * R1 * columns, out + 2 * (b + c * q + k),
                                           2 * R1 * q, columns, second + stageRecords<T, R2>(c * q + k), AreaGroups{},
                                           to);
        }
}
template<class T, class In, class Out>
inline void stagePairOf(int r1, int r2, const T* in, T* out, Index points, Index q, const T* tw, In from, Out to)
{
    if (r1 == 4 && r2 == 4)
        stagePair<4, 4>(in, out, points, q, tw, from, to);
    else if (r1 == 4)
        stagePair<4, 8>(in, out, points, q, tw, from, to);
    else if (r2 == 4)
        stagePair<8, 4>(in, out, points, q, tw, from, to);
    else
        stagePair<8, 8>(in, out, points, q, tw, from, to);
}

// Everything after the first pass; the last stage writes dst through `to`, which may be the area itself.
template<class T, class G, class Out> inline void allStages(T* area, T* dst, int m, const T* tw, G groups, Out to)
{
    const Index points = Index{1} << m, run = Index{1} << (m < kRunOrder ? m : kRunOrder);
    const StageCursor<T> start = {kFirstOrder<T>, tw};
    StageCursor<T> at = start;
    for (Index b = 0; b < points; b += run)
        at = runStages(area + 2 * b, run, m, kRunOrder, start, groups);
    while (at.s < m) {
        const Index q = Index{1} << at.s;
        const int r1 = nextRadix(m, at.s), next = at.s + orderOf(r1);
        if (next == m) {
            if (r1 == 4)
                stageBlock<4, kFlatSteps>(area, 2 * q, dst, 2 * q, q, at.tw, groups, to);
            else
                stageBlock<8, kFlatSteps>(area, 2 * q, dst, 2 * q, q, at.tw, groups, to);
            return;
        }
        const int r2 = nextRadix(m, next);
        const Index records = (r1 == 4 ? stageRecords<T, 4>(q) : stageRecords<T, 8>(q)) +
                              (r2 == 4 ? stageRecords<T, 4>(q * r1) : stageRecords<T, 8>(q * r1));
        if (next + orderOf(r2) == m)
            return stagePairOf(r1, r2, area, dst, points, q, at.tw, groups, to);
        stagePairOf(r1, r2, area, area, points, q, at.tw, groups, groups);
        at = {next + orderOf(r2), at.tw + records};
    }
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
template<bool Swap, class T, class Reversed, class G, class Out>
inline void flatTransform(const T* src, T* dst, int m, const T* tw, const Reversed& reversed, T* work, G groups, Out to)
{
    T* area = src != dst && alignedToVector(dst) ? dst : work;
    if (!kAvx && alignedToVector(src))
        firstPass<Swap, true>(src, area, m, reversed);
    else
        firstPass<Swap, false>(src, area, m, reversed);
    allStages(area, dst, m, tw, groups, to);
}

// The reversal by the table of a 2^m transform: over log2(M/R) bits of i it is that over m - 2 bits of i R / 4.
template<class T> struct TableReversal {
    const int32_t* bitRev;
    QVR_INLINE Index operator()(Index i) const { return bitRev[i * (kFirstRadix<T> / 4)] / 2; }
};

} // namespace

#endif
