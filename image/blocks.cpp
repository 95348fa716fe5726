// Minimum and maximum of every block of an image and of all of it.
//
// A row of blocks goes in strips of columns: the extremes of each column first, then those of each block from the
// strip. Blocks of 16 by 16 keep their columns in registers.
#include "image/functions.h"
#include "image/rows.h"

namespace {

constexpr int kStrip = 512; // columns; both lines stay in the first cache

struct Extremes {
    int16_t min, max;
    QVR_INLINE void take(Extremes e)
    {
        min = e.min < min ? e.min : min;
        max = e.max > max ? e.max : max;
    }
};
constexpr Extremes kNone = {INT16_MAX, INT16_MIN};

template<class V> QVR_INLINE int16_t least(V v)
{
    if constexpr (lanes<V> == 1)
        return v[0];
    else
        return least(min(lo(v), hi(v)));
}
template<class V> QVR_INLINE int16_t most(V v)
{
    if constexpr (lanes<V> == 1)
        return v[0];
    else
        return most(max(lo(v), hi(v)));
}

template<class V> QVR_INLINE void columnExtremes(const int16_t* src, Index step, Index rows, V& low, V& high)
{
    low = high = load<V>(src);
    for (Index y = 1; y < rows; y++) {
        const V v = load<V>(rowAt(src, y, step));
        low = min(low, v);
        high = max(high, v);
    }
}

// The extremes of n columns.
void stripExtremes(const int16_t* src, Index step, Index rows, int16_t* low, int16_t* high, Index n)
{
    constexpr int N = 2 * kLanes<int16_t>;
    const auto block = [&]<class V>(V, Index x) {
        V a, b;
        columnExtremes(src + x, step, rows, a, b);
        store(low + x, a);
        store(high + x, b);
    };
    Index x = 0;
    for (; x + N <= n; x += N)
        block(Vec<int16_t, N>{}, x);
    for (; x + 8 <= n; x += 8)
        block(Vec<int16_t, 8>{}, x);
    for (; x < n; x++)
        block(Vec<int16_t, 1>{}, x);
}

// Of n neighbouring columns of a strip.
Extremes rangeExtremes(const int16_t* low, const int16_t* high, Index n)
{
    using V = Vec<int16_t, 8>;
    Extremes e = kNone;
    Index x = 0;
    if (n >= 8) {
        V a = load<V>(low), b = load<V>(high);
        for (x = 8; x + 8 <= n; x += 8) {
            a = min(a, load<V>(low + x));
            b = max(b, load<V>(high + x));
        }
        e = {least(a), most(b)};
    }
    for (; x < n; x++)
        e.take({low[x], high[x]});
    return e;
}

QVR_INLINE Extremes squareExtremes(const int16_t* src, Index step)
{
    Vec<int16_t, 16> low, high;
    columnExtremes(src, step, 16, low, high);
    return {least(low), most(high)};
}

struct Outputs {
    int16_t *min, *max;
    QVR_INLINE void put(Index block, Extremes e) const
    {
        store(min + block, Vec<int16_t, 1>{e.min});
        store(max + block, Vec<int16_t, 1>{e.max});
    }
};

// One row of blocks: `rows` rows of `width` pixels.
Extremes blockRow(const int16_t* src, Index step, Index width, Index rows, qvriSize blockSize, Outputs out)
{
    Extremes all = kNone;
    Index x = 0, block = 0;
    if (blockSize.width == 16 && rows == 16)
        for (; x + 16 <= width; x += 16, block++) {
            const Extremes e = squareExtremes(src + x, step);
            out.put(block, e);
            all.take(e);
        }
    int16_t low[kStrip], high[kStrip];
    Extremes current = kNone;
    Index left = blockSize.width; // columns that the current block still wants
    while (x < width) {
        const Index n = width - x < kStrip ? width - x : kStrip;
        stripExtremes(src + x, step, rows, low, high, n);
        for (Index at = 0; at < n;) {
            const Index count = left < n - at ? left : n - at;
            current.take(rangeExtremes(low + at, high + at, count));
            at += count;
            left -= count;
            if (left == 0 || x + at == width) {
                out.put(block++, current);
                all.take(current);
                current = kNone;
                left = blockSize.width;
            }
        }
        x += n;
    }
    return all;
}

} // namespace

extern "C" qvrStatus SLOT(qvriBlockMinMax_16s_C1R)(const qvr16s* src, int srcStep, qvriSize srcSize, qvr16s* blockMin,
                                                   int blockMinStep, qvr16s* blockMax, int blockMaxStep,
                                                   qvriSize blockSize, qvr16s* globalMin, qvr16s* globalMax)
{
    if (anyNull(src, blockMin, blockMax, globalMin, globalMax))
        return qvrErrNullPointer;
    if (srcSize.width < 1 || srcSize.height < 1 || blockSize.width < 1 || blockSize.height < 1)
        return qvrErrBadSize;
    const Index width = srcSize.width, height = srcSize.height,
                across = (width + blockSize.width - 1) / blockSize.width;
    if (srcStep < 2 * width || blockMinStep < 2 * across || blockMaxStep < 2 * across)
        return qvrErrBadStep;
    Extremes all = kNone;
    for (Index y = 0, row = 0; y < height; y += blockSize.height, row++) {
        const Index rows = height - y < blockSize.height ? height - y : blockSize.height;
        all.take(blockRow(rowAt(src, y, srcStep), srcStep, width, rows, blockSize,
                          {rowAt(blockMin, row, blockMinStep), rowAt(blockMax, row, blockMaxStep)}));
    }
    store(globalMin, Vec<qvr16s, 1>{all.min});
    store(globalMax, Vec<qvr16s, 1>{all.max});
    return qvrOk;
}
