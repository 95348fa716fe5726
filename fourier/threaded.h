// The threaded band: M = 8 R points as eight column transforms of R points and one radix-8 pass over them, on one or
// two threads. Threads write disjoint columns, so the result does not depend on their number.
#ifndef QVR_FOURIER_THREADED_H
#define QVR_FOURIER_THREADED_H

#include "fourier/flat.h"
#include "frame/region.h"

namespace {

constexpr int kBandThreads = 2;

// The twiddles of the top pass: for each four columns j, each c = 1 .. 7: four cosines, then four negated sines, of
// 2 pi c (j .. j + 3) / M.
constexpr Index topTableSize(int m)
{
    return (Index{1} << m) / 8 / 4 * 56;
}
template<class T> inline void fillTopTable(T* out, const Quarter<T>& quarter, int m)
{
    const Index columns = (Index{1} << m) / 8;
    for (Index j = 0; j < columns; j += 4)
        for (int c = 1; c < 8; c++, out += 8)
            for (int i = 0; i < 4; i++) {
                const Twiddle<T> w = quarter.at((j + i) * c, m);
                out[i] = w.re;
                out[4 + i] = w.im;
            }
}

// Four column transforms: column c of src[c + 8 n] to the groups (not pairs) of dst[c R + k]. The first pass has the
// columns in its lanes.
template<bool Swap, class T>
inline void columns4(const T* src, T* dst, int r, const T* tw, const int32_t* bitRev, bool scale, T factor)
{
    using V = Full<T>;
    constexpr int W = kLanes<T>, R = kFirstRadix<T>;
    const Index points = Index{1} << r, legs = points / R;
    for (Index i = 0; i < legs; i++)
        for (int c = 0; c < 4; c += W) {
            Cx<V> x[R];
#pragma clang loop unroll(full)
            for (int leg = 0; leg < R; leg++)
                x[leg] = swapIf<Swap>(loadPairs<V>(src + 2 * (8 * (i + leg * legs) + c)));
            dft<R>(x);
            T* base = dst + 2 * c * points + Index{bitRev[i * (R / 4)]} * R;
            scatterTransposed<T>(x, [&](int l) { return base + 2 * l * points; });
        }
    for (int c = 0; c < 4; c++) {
        T* column = dst + 2 * c * points;
        if (scale)
            allStages(column, column, r, tw, AreaGroups{}, ScaledGroups<!kAvx, T>{factor});
        else
            allStages(column, column, r, tw, AreaGroups{}, AreaGroups{});
    }
}

// `count` columns of the final pass from `first` on.
template<bool Swap, class T>
inline void radix8Top(const T* src, T* dst, Index columns, Index first, Index count, const T* table)
{
    using V = Full<T>;
    constexpr int W = kLanes<T>;
    for (Index j = first; j < first + count; j += W) {
        const T* tw = table + j / 4 * 56 + j % 4;
        Cx<V> x[8];
        x[0] = loadGroup<V>(src + 2 * j);
#pragma clang loop unroll(full)
        for (int c = 1; c < 8; c++)
            x[c] = loadGroup<V>(src + 2 * (c * columns + j)) *
                   Cx<V>{loadAligned<V>(tw + 8 * (c - 1)), loadAligned<V>(tw + 8 * (c - 1) + 4)};
        dft8(x);
#pragma clang loop unroll(full)
        for (int c = 0; c < 8; c++)
            storePairs(dst + 2 * (c * columns + j), swapIf<Swap>(x[c]));
    }
}

template<bool Swap, class T> struct BandCall {
    const T* src;
    T *area, *dst;
    int m;
    const T *tw, *top;
    const int32_t* bitRev;
    bool scale;
    T factor;
    int threadLimit;

    Index columns() const { return (Index{1} << m) / 8; }
    void groups(int first, int count) const
    {
        for (int g = first; g < first + count; g++)
            columns4<Swap>(src + 8 * g, area + 8 * g * columns(), m - 3, tw, bitRev, scale, factor);
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
            radix8Top<Swap>(area, dst, columns(), t * share, t == parts - 1 ? share + rest : share, top);
    }
};

template<bool Swap, class T>
inline void bandTransform(const T* src, T* dst, int m, const T* tw, const T* top, const int32_t* bitRev, T* work,
                          bool scale, T factor, int threadLimit)
{
    T* area = src != dst && alignedToVector(dst) ? dst : work;
    const BandCall<Swap, T> call = {src, area, dst, m, tw, top, bitRev, scale, factor, threadLimit};
    if (threadLimit < 2) {
        call.groups(0, 2);
        radix8Top<Swap>(area, dst, call.columns(), 0, call.columns(), top);
        return;
    }
    const int budget = qvrNumThreadsValue(), threads = budget < kBandThreads ? budget : kBandThreads;
    parallelTeam(threads, [&call](int t, int team) { call.columnsShare(t, team); });
    parallelTeam(threads, [&call](int t, int team) { call.topShare(t, team); });
}

} // namespace

#endif
