// Complex transforms above the flat limit, second generation: bits reversed in the whole array, then 2^f rows of R
// contiguous points each by its stages, then the last f stages on tiles of W adjacent columns of all rows.
//
// A tile's stages are those of the flat transform: lane c W + j of the tile stands for butterfly c R + column. The
// first one reads the rows, the last one writes them back as pairs. Its twiddles are stored tile by tile in the order
// of use.
#ifndef QVR_FOURIER_SPLIT_H
#define QVR_FOURIER_SPLIT_H

#include "fourier/flat.h"
#include "fourier/reverse.h"

namespace {

// Rows of this order and below never split again.
constexpr int kFlatRowOrder = 16;

template<class T> constexpr bool rowSplits(int rowOrder)
{
    return rowOrder > kFlatRowOrder && splitOrder<T>(rowOrder) != 0;
}

// With `bits` stages to go in a tile.
constexpr int tileRadix(int bits)
{
    return bits == 2 || bits == 4 || bits == 6 ? 4 : 8;
}

// Elements of a level's tile twiddles.
template<class T> constexpr Index tileTableSize(int m)
{
    const int f = splitOrder<T>(m), t = tileOrder<T>(m);
    Index perTile = 0;
    for (int bits = f, s = t - f; bits > 0;) {
        const int radix = tileRadix(bits);
        perTile += (Index{1} << s) / kLanes<T> * (radix == 4 ? kRecord<T, 4, true> : kRecord<T, 8, true>);
        s += orderOf(radix);
        bits -= orderOf(radix);
    }
    return perTile << (m - t);
}
template<class T> inline T* fillTileTable(T* out, const Quarter<T>& quarter, int m)
{
    const int f = splitOrder<T>(m), t = tileOrder<T>(m), r = m - f;
    const Index columns = Index{1} << (t - f), rowLength = Index{1} << r;
    for (Index j = 0; j < rowLength; j += columns)
        for (int bits = f; bits > 0;) {
            const int radix = tileRadix(bits), order = m - bits + orderOf(radix);
            for (Index c = 0; c < Index{1} << (f - bits); c++)
                out = radix == 4 ? fillRecords<T, 4, true>(out, quarter, order, c * rowLength + j, columns)
                                 : fillRecords<T, 8, true>(out, quarter, order, c * rowLength + j, columns);
            bits -= orderOf(radix);
        }
    return out;
}

// One stage of a tile: `bits` to go of f. Rows of a group stand inStep elements apart in `in`, outStep in `out`.
template<int R, class T, class In, class Out>
inline const T* tileStage(const T* in, Index inStep, T* out, Index outStep, int f, int bits, Index columns, const T* tw,
                          In from, Out to)
{
    const Index done = Index{1} << (f - bits), rows = Index{1} << f;
    const Index records = columns / kLanes<T> * kRecord<T, R, true>;
    for (Index g = 0; g < rows; g += R * done)
        for (Index c = 0; c < done; c++)
            stageBlock<R, true>(in + (g + c) * inStep, done * inStep, out + (g + c) * outStep, done * outStep, columns,
                                tw + c * records, from, to);
    return tw + done * records;
}

template<class T, class In, class Out> inline void splitTiles(T* data, int m, const T* tw, T* work, In from, Out to)
{
    const int f = splitOrder<T>(m), t = tileOrder<T>(m), r = m - f;
    const Index columns = Index{1} << (t - f), rowLength = Index{1} << r, tileStep = 2 * columns;
    for (Index j = 0; j < rowLength; j += columns) {
        T* tile = data + 2 * j;
        for (int bits = f; bits > 0;) {
            const int radix = tileRadix(bits), next = bits - orderOf(radix);
            const bool first = bits == f, last = next == 0;
            const auto run = [&](auto in, auto fromHere, auto inStep, auto out, auto toHere, auto outStep) {
                tw = radix == 4 ? tileStage<4>(in, inStep, out, outStep, f, bits, columns, tw, fromHere, toHere)
                                : tileStage<8>(in, inStep, out, outStep, f, bits, columns, tw, fromHere, toHere);
            };
            if (first && last)
                run(tile, from, 2 * rowLength, tile, to, 2 * rowLength);
            else if (first)
                run(tile, from, 2 * rowLength, work, AreaGroups{}, tileStep);
            else if (last)
                run(work, AreaGroups{}, tileStep, tile, to, 2 * rowLength);
            else
                run(work, AreaGroups{}, tileStep, work, AreaGroups{}, tileStep);
            bits = next;
        }
    }
}

// Bytes of work memory of a split transform.
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

// Tables of the rows and of each level.
template<class T> struct SplitTables {
    const T* rows;
    const T* const* tiles;
};

// Bits reversed, or only the points dealt to their rows in natural order.
enum class RowInput { reversed, natural };

// Rows and tiles; `factor` scales the row results where Scale is set.
template<bool Swap, class T, class G, class Out>
inline void splitRow(T* row, int r, const T* tw, RowInput input, T* work, G groups, Out to)
{
    if (input == RowInput::natural) {
        const auto reversed = [&](Index i) { return reverseIndex(i, r - kFirstOrder<T>); };
        return flatTransform<Swap>(row, row, r, tw, reversed, work, groups, to);
    }
    firstPassReversed<Swap>(row, Index{1} << r, groups);
    allStages(row, row, r, tw, groups, to);
}

template<bool Swap, bool Scale, class T, class G>
inline void splitStages(T* data, int m, SplitTables<T> tables, int level, RowInput input, T* work, T factor, G groups)
{
    const int f = splitOrder<T>(m), r = m - f;
    const Index rowLength = Index{1} << r;
    const bool nested = rowSplits<T>(r);
    for (Index row = 0; row < Index{1} << f; row++) {
        T* p = data + 2 * row * rowLength;
        if (nested) {
            splitStages<Swap, Scale>(p, r, tables, level + 1, input, work, factor, groups);
            continue;
        }
        if (f == 0 && Scale)
            splitRow<Swap>(p, r, tables.rows, input, work, groups, ScaledPairsOut<Swap, T>{factor});
        else if (f == 0)
            splitRow<Swap>(p, r, tables.rows, input, work, groups, PairsOut<Swap>{});
        else if (Scale)
            splitRow<Swap>(p, r, tables.rows, input, work, groups, ScaledGroups<G::aligned, T>{factor});
        else
            splitRow<Swap>(p, r, tables.rows, input, work, groups, groups);
    }
    if (f == 0)
        return;
    // Inner levels have left pairs, in the outer sense of direction.
    if (nested)
        splitTiles(data, m, tables.tiles[level], work, PairsIn<Swap>{}, PairsOut<Swap>{});
    else
        splitTiles(data, m, tables.tiles[level], work, groups, PairsOut<Swap>{});
}

// Rows up to this size are dealt in natural order; of longer ones, row and work area together would fall out of the
// second-level cache.
constexpr Index kNaturalRowBytes = 256 * 1024;

template<bool Swap, class T>
inline void splitTransform(const T* src, T* dst, int m, SplitTables<T> tables, T* work, bool scale, T factor)
{
    const int f = splitOrder<T>(m);
    const bool deals = src != dst && f > 0 && !rowSplits<T>(m - f) && flatWork<T>(m - f) <= kNaturalRowBytes;
    const RowInput input = deals ? RowInput::natural : RowInput::reversed;
    if (input == RowInput::natural)
        dealRows(src, dst, m, f);
    else
        reverseBits(src, dst, m, work);
    const auto run = [&](auto groups) {
        if (scale)
            splitStages<Swap, true>(dst, m, tables, 0, input, work, factor, groups);
        else
            splitStages<Swap, false>(dst, m, tables, 0, input, work, factor, groups);
    };
    if (kAvx || !alignedToVector(dst))
        run(AnyGroups{});
    else
        run(AreaGroups{});
}

} // namespace

#endif
