// Supersampling: every output is the area-weighted sum of the source under it, times superArea.
//
// For an output row the source rows are added first, in one line as wide as the source: the leading part of a row,
// whole rows, the trailing part. The line is then added up in the same way for every output. A part of a pixel below
// 1e-7 is left out. Each row and column starts from its own position, so nothing is carried from one output to the
// next.
//
// Indices outside the image stand for its edge pixel. The line is as long as the buffer allows; outputs that together
// need more are done in groups, and an output that needs more alone is added up in pieces.
#include "image/kernels.h"

namespace {

// Rows of bytes that 16-bit sums hold.
constexpr Index kRowsIn16 = 257;

template<class T> struct LineOf {
    using type = float;
};
template<> struct LineOf<double> {
    using type = double;
};

template<class T> struct Super {
    using A = typename LineOf<T>::type;
    const qvrResizeBand* band;
    A* line;
    Index room; // pixels in a line
    int blocks;
    qvrCover rows; // of the output row at hand
};

// ---- Down the columns -----------------------------------------------------------------------------------------------

// line[i] += src[i] * cover in double, rounded once to the line's type.
template<class A, class T> QVR_INLINE void addPart(const T* src, A* line, Index n, double cover)
{
    constexpr int N = kLanes<float>;
    Index i = 0;
    const auto step = [&]<class V>(V, Index at) {
        const auto s = convert<double>(load<Vec<T, lanes<V>>>(src + at));
        const auto sum = convert<double>(load<V>(line + at)) + s * cover;
        store(line + at, convert<A>(sum));
    };
    for (; i + N <= n; i += N)
        step(Vec<A, N>{}, i);
    for (; i < n; i++)
        step(Vec<A, 1>{}, i);
}
// Bytes in single: the products are off by less than 2^-16.
QVR_INLINE void addPart(const uint8_t* src, float* line, Index n, double cover)
{
    constexpr int N = 2 * kLanes<float>;
    const float part = static_cast<float>(cover);
    const auto step = [&]<class V>(V, Index at) {
        const auto s = convert<float>(convert<int32_t>(load<Vec<uint8_t, lanes<V>>>(src + at)));
        store(line + at, fma(s, splat<V>(part), load<V>(line + at)));
    };
    Index i = 0;
    for (; i + N <= n; i += N)
        step(Vec<float, N>{}, i);
    for (; i < n; i++)
        step(Vec<float, 1>{}, i);
}

template<class A> QVR_INLINE void addRow(const A* src, A* line, Index n)
{
    constexpr int N = 2 * kLanes<A>;
    Index i = 0;
    for (; i + N <= n; i += N)
        store(line + i, load<Vec<A, N>>(line + i) + load<Vec<A, N>>(src + i));
    for (; i < n; i++)
        store(line + i, load<Vec<A, 1>>(line + i) + load<Vec<A, 1>>(src + i));
}

// Whole rows of bytes y .. y + count - 1 inside the image, by 16-bit sums of up to 257 of them.
void addWholeRows(const Super<uint8_t>& s, Index offset, Index y, Index count, float* line, Index n)
{
    constexpr int N = kAvx2 ? 32 : 16;
    while (count > 0) {
        const Index rows = count < kRowsIn16 ? count : kRowsIn16;
        const uint8_t* const first = reinterpret_cast<const uint8_t*>(sourceRow(s.band, y)) + offset;
        const Index step = s.band->srcStep;
        const auto block = [&]<class V>(V, Index i) {
            constexpr int W = lanes<V>;
            Vec<uint16_t, W> sum = {};
            const uint8_t* p = first + i;
            for (Index r = 0; r < rows; r++, p += step)
                sum += convert<uint16_t>(load<V>(p));
            using F = Vec<float, W>;
            store(line + i, load<F>(line + i) + convert<float>(convert<int32_t>(sum)));
        };
        Index i = 0;
        for (; i + N <= n; i += N)
            block(Vec<uint8_t, N>{}, i);
        for (; i < n; i++)
            block(Vec<uint8_t, 1>{}, i);
        y += rows;
        count -= rows;
    }
}
template<class T>
void addWholeRows(const Super<T>& s, Index offset, Index y, Index count, typename Super<T>::A* line, Index n)
{
    for (Index r = 0; r < count; r++)
        addRow(reinterpret_cast<const T*>(sourceRow(s.band, y + r)) + offset, line, n);
}

// The vertical sums of the elements `offset` .. `offset + n - 1` of a row.
template<class T> void sumColumns(const Super<T>& s, Index offset, typename Super<T>::A* line, Index n)
{
    using A = typename Super<T>::A;
    const Index height = s.band->y.length;
    const qvrCover& c = s.rows;
    const auto row = [&](Index y) {
        return reinterpret_cast<const T*>(sourceRow(s.band, clampIndex(y, height))) + offset;
    };
    for (Index i = 0; i < n; i++)
        line[i] = A(0);
    if (c.lead > 0)
        addPart(row(c.start), line, n, c.lead);
    // Whole rows: how many of them lie before the image, inside and behind.
    Index y = c.start + (s.blocks ? 0 : 1), left = c.whole;
    const Index before = y < 0 ? (-y < left ? -y : left) : 0;
    if (before > 0)
        addPart(row(-1), line, n, static_cast<double>(before));
    y += before;
    left -= before;
    const Index inside = y < height ? (height - y < left ? height - y : left) : 0;
    addWholeRows(s, offset, y, inside, line, n);
    y += inside;
    left -= inside;
    if (left > 0)
        addPart(row(height), line, n, static_cast<double>(left));
    if (c.tail > 0)
        addPart(row(y + left), line, n, c.tail);
}

// The line for the source pixels from .. from + n - 1, of which those outside the image repeat its edge.
template<class T, int NC> void makeLine(const Super<T>& s, Index from, Index n)
{
    const Index length = s.band->x.length;
    const Index low = clampIndex(from, length), end = from + n < length ? from + n : length;
    const Index high = end > low ? end : low + 1;
    Index at = low - from;
    if (at < 0 || at >= n)
        at = at < 0 ? 0 : n - 1;
    sumColumns(s, low * NC, s.line + at * NC, (high - low) * NC);
    for (Index i = 0; i < at * NC; i++)
        s.line[i] = s.line[at * NC + i % NC];
    const Index done = at + high - low;
    for (Index i = done * NC; i < n * NC; i++)
        s.line[i] = s.line[(done - 1) * NC + i % NC];
}

// ---- Along the line -------------------------------------------------------------------------------------------------

template<class A, int NC> QVR_INLINE Vec<A, NC> addWeighted(Vec<A, NC> sum, Vec<A, NC> pixel, double cover)
{
    return convert<A>(convert<double>(sum) + convert<double>(pixel) * cover);
}

// Pixels from .. to of an output that are in the line, whose first is pixel `base`.
template<class A, int NC>
QVR_INLINE Vec<A, NC> addPixels(Vec<A, NC> sum, const A* line, Index base, const qvrCover& c, Index wholeAt, Index from,
                                Index to)
{
    using P = Vec<A, NC>;
    const auto at = [&](Index j) { return load<P>(line + (j - base) * NC); };
    if (c.lead > 0 && c.start >= from && c.start < to)
        sum = addWeighted<A, NC>(sum, at(c.start), c.lead);
    const Index tailAt = wholeAt + c.whole;
    const Index first = wholeAt > from ? wholeAt : from, end = tailAt < to ? tailAt : to;
    for (Index j = first; j < end; j++)
        sum += at(j);
    if (c.tail > 0 && tailAt >= from && tailAt < to)
        sum = addWeighted<A, NC>(sum, at(tailAt), c.tail);
    return sum;
}

template<class T, class A, int NC> QVR_INLINE void putOutput(T* dst, Vec<A, NC> sum, double area)
{
    const auto product = convert<double>(sum) * area;
    if constexpr (sizeof(T) == 1)
        store(dst, packBytes(toIntTruncate(product + 0.5)));
    else
        store(dst, convert<A>(product));
}

template<class T, int NC> void superRow(Super<T>& s, T* dst)
{
    using A = typename Super<T>::A;
    const qvrResizeBand* const b = s.band;
    const auto coverAt = [&](Index x) {
        qvrCover c;
        qvrCoverOf(&b->x, s.blocks, b->x.first + x, &c);
        return c;
    };
    const auto wholeAt = [&](const qvrCover& c) { return c.start + (s.blocks ? 0 : 1); };
    const auto endOf = [&](const qvrCover& c) { return wholeAt(c) + c.whole + (c.tail > 0 ? 1 : 0); };
    Index x = 0;
    while (x < b->x.count) {
        const qvrCover first = coverAt(x);
        if (endOf(first) - first.start > s.room) {
            Vec<A, NC> sum = {};
            for (Index from = first.start; from < endOf(first); from += s.room) {
                const Index to = endOf(first) < from + s.room ? endOf(first) : from + s.room;
                makeLine<T, NC>(s, from, to - from);
                sum = addPixels<A, NC>(sum, s.line, from, first, wholeAt(first), from, to);
            }
            putOutput<T, A, NC>(dst + x * NC, sum, b->superArea);
            x++;
            continue;
        }
        Index end = x + 1;
        Index reach = endOf(first);
        while (end < b->x.count) {
            const Index next = endOf(coverAt(end));
            if (next - first.start > s.room)
                break;
            reach = next;
            end++;
        }
        makeLine<T, NC>(s, first.start, reach - first.start);
        for (; x < end; x++) {
            const qvrCover c = coverAt(x);
            const Vec<A, NC> sum =
                addPixels<A, NC>(Vec<A, NC>{}, s.line, first.start, c, wholeAt(c), first.start, reach);
            putOutput<T, A, NC>(dst + x * NC, sum, b->superArea);
        }
    }
}

template<class T, int NC> void superBand(const qvrResizeBand* b)
{
    using A = typename Super<T>::A;
    Carver carver = bufferOf(b);
    Super<T> s = {};
    s.band = b;
    s.line = carver.take<A>(0, 16);
    s.room = (carver.end - carver.at) / static_cast<Index>(sizeof(A)) / NC;
    s.blocks = qvrIsBlockAxis(&b->x) && qvrIsBlockAxis(&b->wholeY);
    for (Index n = 0; n < b->y.count; n++) {
        qvrCoverOf(&b->wholeY, s.blocks, b->y.first + n, &s.rows);
        superRow<T, NC>(s, reinterpret_cast<T*>(outputRow(b, n, NC * static_cast<Index>(sizeof(T)))));
    }
}

} // namespace

extern "C" void SLOT(ownResizeSuper)(const qvrResizeBand* band, int pixel)
{
    if (pixel == qvrPixel_8u_C1)
        superBand<uint8_t, 1>(band);
    else if (pixel == qvrPixel_8u_C4)
        superBand<uint8_t, 4>(band);
    else if (pixel == qvrPixel_32f_C1)
        superBand<float, 1>(band);
    else
        superBand<double, 1>(band);
}
