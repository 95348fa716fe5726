// Supersampling: every output is the area-weighted sum of the source under it, times superArea.
//
// For an output row the source rows are added first, in one line as wide as the source: the leading part of a row,
// whole rows, the trailing part. The line is then added up in the same way for every output. A part of a pixel below
// 1e-7 is left out. Each row and column starts from its own position, so nothing is carried from one output to the
// next.
//
// The outputs of a row go in strips whose columns are worked out once for all rows. Indices outside the image stand for
// its edge pixel. The line is as long as the buffer allows; an output that needs more is added up in pieces.
//
// Blocks of two by two bytes go straight to their means. Other blocks of bytes whose sums fit 15 bits are added up in
// words, down and then along; sums that small are exact in single too, so both ways give the same bytes.
#include "image/halve.h"

namespace {

// Rows of bytes that 16-bit sums hold.
constexpr Index kRowsIn16 = 257;

// Outputs of a strip: their columns take 8 KiB of the stack.
constexpr Index kStrip = 320;

template<class T> struct LineOf {
    using type = float;
};
template<> struct LineOf<double> {
    using type = double;
};

// Columns of a strip, relative to the line's first pixel.
struct Strip {
    Index from, to;   // outputs
    Index base, span; // pixels of the line
    double lead[kStrip], tail[kStrip];
    int32_t start[kStrip], whole[kStrip];
};

template<class T> struct Super {
    using A = typename LineOf<T>::type;
    const qvrResizeBand* band;
    A* line;
    Index room; // pixels in a line
    int blocks;
    qvrCover rows; // of the output row at hand
};

QVR_INLINE Index wholeAt(const qvrCover& c, int blocks)
{
    return c.start + (blocks ? 0 : 1);
}
QVR_INLINE Index endOf(const qvrCover& c, int blocks)
{
    return wholeAt(c, blocks) + c.whole + (c.tail > 0 ? 1 : 0);
}

// ---- Down the columns -----------------------------------------------------------------------------------------------

// The rows of an output row: parts in their order, then whole rows between them.
struct RowSet {
    const char *lead, *tail; // null: left out
    const char* whole;
    Index step, count;
    double leadCover, tailCover;
};

// Bytes: whole rows in 16 bits, parts in single, whose products are off by less than 2^-16.
template<class V> QVR_INLINE void sumByteBlock(const RowSet& r, Index i, float* line, V)
{
    constexpr int W = lanes<V>;
    using F = Vec<float, W>;
    const auto pixels = [&](const char* row) {
        return convert<float>(convert<int32_t>(load<Vec<uint8_t, W>>(row + i)));
    };
    F sum = {};
    if (r.lead)
        sum = pixels(r.lead) * static_cast<float>(r.leadCover);
    const char* p = r.whole + i;
    for (Index left = r.count; left > 0;) {
        const Index rows = left < kRowsIn16 ? left : kRowsIn16;
        Vec<uint16_t, W> words = {};
        for (Index k = 0; k < rows; k++, p += r.step)
            words += convert<uint16_t>(load<Vec<uint8_t, W>>(p));
        sum += convert<float>(convert<int32_t>(words));
        left -= rows;
    }
    if (r.tail)
        sum = fma(pixels(r.tail), splat<F>(static_cast<float>(r.tailCover)), sum);
    store(line + i, sum);
}
// Singles and doubles: parts by products in double, rounded to the line's type.
template<class A, class V> QVR_INLINE void sumBlock(const RowSet& r, Index i, A* line, V)
{
    const auto part = [&](const char* row, double cover) {
        return convert<double>(load<V>(reinterpret_cast<const A*>(row) + i)) * cover;
    };
    V sum = {};
    if (r.lead)
        sum = convert<A>(part(r.lead, r.leadCover));
    const A* p = reinterpret_cast<const A*>(r.whole) + i;
    for (Index k = 0; k < r.count; k++, p = reinterpret_cast<const A*>(reinterpret_cast<const char*>(p) + r.step))
        sum += load<V>(p);
    if (r.tail)
        sum = convert<A>(convert<double>(sum) + part(r.tail, r.tailCover));
    store(line + i, sum);
}
template<class T, class A> QVR_INLINE void sumRows(const RowSet& r, A* line, Index n)
{
    constexpr int N = sizeof(A) == 4 ? (kAvx2 ? 32 : 16) : 2 * kLanes<A>;
    const auto block = [&]<class V>(V lanesOf, Index i) {
        if constexpr (sizeof(T) == 1)
            sumByteBlock(r, i, line, lanesOf);
        else
            sumBlock(r, i, line, lanesOf);
    };
    Index i = 0;
    for (; i + N <= n; i += N)
        block(Vec<A, N>{}, i);
    for (; i + 8 <= n; i += 8)
        block(Vec<A, 8>{}, i);
    for (; i < n; i++)
        block(Vec<A, 1>{}, i);
}

// line[i] += src[i] * times: rows outside the image, which are its edge rows so many times.
template<class T, class A> void addOutside(const T* src, Index times, A* line, Index n)
{
    for (Index i = 0; i < n; i++) {
        const auto pixel = convert<double>(load<Vec<T, 1>>(src + i)) * static_cast<double>(times);
        store(line + i, convert<A>(convert<double>(load<Vec<A, 1>>(line + i)) + pixel));
    }
}

// The vertical sums of the elements offset .. offset + n - 1 of a row.
template<class T> void sumColumns(const Super<T>& s, Index offset, typename Super<T>::A* line, Index n)
{
    const Index height = s.band->y.length;
    const qvrCover& c = s.rows;
    const auto row = [&](Index y) {
        return sourceRow(s.band, clampIndex(y, height)) + offset * static_cast<Index>(sizeof(T));
    };
    const Index first = wholeAt(c, s.blocks), end = first + c.whole;
    const Index from = first < 0 ? (end < 0 ? end : 0) : first, to = end < height ? end : height;
    const RowSet r = {c.lead > 0 ? row(c.start) : nullptr,
                      c.tail > 0 ? row(end) : nullptr,
                      row(from),
                      s.band->srcStep,
                      to > from ? to - from : 0,
                      c.lead,
                      c.tail};
    sumRows<T>(r, line, n);
    const Index before = from - first, behind = c.whole - before - r.count;
    if (before > 0)
        addOutside(reinterpret_cast<const T*>(row(0)), before, line, n);
    if (behind > 0)
        addOutside(reinterpret_cast<const T*>(row(height)), behind, line, n);
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

// sum + pixel * cover; of singles by double products, but for bytes, where singles are near enough.
template<class T, class V> QVR_INLINE V addPart(V sum, V pixel, double cover)
{
    if constexpr (sizeof(T) == 1)
        return fma(pixel, splat<V>(static_cast<float>(cover)), sum);
    else
        return convert<Elem<V>>(convert<double>(sum) + convert<double>(pixel) * cover);
}

template<class T, class P> QVR_INLINE void putOutput(T* dst, P sum, double area)
{
    const auto product = convert<double>(sum) * area;
    if constexpr (sizeof(T) == 1)
        store(dst, packBytes(toIntTruncate(product + 0.5)));
    else
        store(dst, convert<Elem<P>>(product));
}

// An output longer than the line.
template<class T, int NC> void longOutput(const Super<T>& s, const qvrCover& c, T* dst)
{
    using P = Vec<typename Super<T>::A, NC>;
    const Index first = wholeAt(c, s.blocks), tailAt = first + c.whole, end = endOf(c, s.blocks);
    P sum = {};
    for (Index from = c.start; from < end; from += s.room) {
        const Index to = end - from < s.room ? end : from + s.room;
        makeLine<T, NC>(s, from, to - from);
        for (Index j = from; j < to; j++) {
            const P pixel = load<P>(s.line + (j - from) * NC);
            if (j >= first && j < tailAt)
                sum += pixel;
            else
                sum = addPart<T>(sum, pixel, j < first ? c.lead : c.tail);
        }
    }
    putOutput(dst, sum, s.band->superArea);
}

// Sums first, then the product with the area for whole vectors of them.
template<class T, int NC> void stripOutputs(const Super<T>& s, const Strip& strip, T* dst)
{
    using A = typename Super<T>::A;
    using P = Vec<A, NC>;
    constexpr int N = 16;
    A sums[kStrip * NC];
    const Index outputs = strip.to - strip.from, n = outputs * NC;
    for (Index x = 0; x < outputs; x++) {
        const A* p = s.line + Index{strip.start[x]} * NC;
        P sum = {};
        if (!s.blocks) {
            if (strip.lead[x] > 0)
                sum = addPart<T>(sum, load<P>(p), strip.lead[x]);
            p += NC;
        }
        for (int j = strip.whole[x]; j > 0; j--, p += NC)
            sum += load<P>(p);
        if (strip.tail[x] > 0)
            sum = addPart<T>(sum, load<P>(p), strip.tail[x]);
        store(sums + x * NC, sum);
    }
    const double area = s.band->superArea;
    Index i = 0;
    for (; i + N <= n; i += N)
        putOutput(dst + i, load<Vec<A, N>>(sums + i), area);
    for (; i < n; i++)
        putOutput(dst + i, load<Vec<A, 1>>(sums + i), area);
}

// ---- Small blocks of bytes ------------------------------------------------------------------------------------------

constexpr Index kBlockPixels = 0x7FFF / 255;

// words[i] = sum of `rows` bytes from p[i] down.
QVR_INLINE void addDown(const char* p, Index step, Index rows, uint16_t* words, Index n)
{
    const auto block = [&]<class V>(V, Index i) {
        constexpr int W = lanes<V>;
        const auto pixels = [&](Index k) { return convert<uint16_t>(load<Vec<uint8_t, W>>(p + k * step + i)); };
        V sum = pixels(0);
        for (Index k = 1; k < rows; k++)
            sum += pixels(k);
        store(words + i, sum);
    };
    constexpr int N = kAvx2 ? 32 : 16;
    Index i = 0;
    for (; i + N <= n; i += N)
        block(Vec<uint16_t, N>{}, i);
    for (; i < n; i++)
        block(Vec<uint16_t, 1>{}, i);
}

// Pairs of neighbouring pixels into `outputs` pixels, in place.
template<int NC> QVR_INLINE void addPairs(uint16_t* words, Index outputs)
{
    using Pixel = Vec<uint16_t, NC>;
    constexpr int N = 16 / NC; // outputs at a time
    Index i = 0;
    for (; i + N <= outputs; i += N) {
        using V = Vec<int16_t, 16>;
        const V a = load<V>(words + 2 * NC * i), b = load<V>(words + 2 * NC * i + 16);
        if constexpr (NC == 1) {
            const V ones = splat<V>(1);
            store(words + i, packSaturate(concat(addProductPairs(a, ones), addProductPairs(b, ones))));
        } else {
            using Pixels = Vec<uint64_t, 4>;
            const Pixels x = bitcast<Pixels>(a), y = bitcast<Pixels>(b);
            store(words + NC * i, bitcast<V>(evens(x, y)) + bitcast<V>(odds(x, y)));
        }
    }
    for (; i < outputs; i++)
        store(words + NC * i, load<Pixel>(words + 2 * NC * i) + load<Pixel>(words + 2 * NC * i + NC));
}

// Each `width` neighbouring pixels into one of `outputs`, in place; an odd width. Single channels are summed at every
// place by vectors, of which every width-th sum is kept.
template<int NC> QVR_INLINE void addAlong(uint16_t* words, Index width, Index outputs)
{
    using Pixel = Vec<uint16_t, NC>;
    Index summed = 0;
    if constexpr (NC == 1) {
        using V = Vec<uint16_t, 16>;
        for (; summed + 16 + width - 1 <= outputs * width; summed += 16) {
            V sum = load<V>(words + summed);
            for (Index j = 1; j < width; j++)
                sum += load<V>(words + summed + j);
            store(words + summed, sum);
        }
    }
    for (Index x = 0; x < outputs; x++) {
        const uint16_t* p = words + x * width * NC;
        Pixel sum = load<Pixel>(p);
        if (x * width >= summed)
            for (Index j = 1; j < width; j++)
                sum += load<Pixel>(p + j * NC);
        store(words + x * NC, sum);
    }
}

// The outputs of a row of whole blocks; 0 if they are not small or reach over the image.
template<int NC> QVR_INLINE int smallBlocks(const Super<uint8_t>& s, const Strip& strip, uint8_t* dst)
{
    Index width = strip.whole[0];
    const Index rows = s.rows.whole, outputs = strip.to - strip.from, n = outputs * NC, pixels = width * rows;
    if (!s.blocks || width < 1 || rows < 1 || pixels > kBlockPixels || s.rows.start < 0 ||
        s.rows.start + rows > s.band->y.length || strip.base < 0 || strip.base + strip.span > s.band->x.length)
        return 0;
    uint16_t* const words = reinterpret_cast<uint16_t*>(s.line);
    addDown(sourceRow(s.band, s.rows.start) + strip.base * NC, s.band->srcStep, rows, words, strip.span * NC);
    for (; width % 2 == 0; width /= 2)
        addPairs<NC>(words, outputs * width / 2);
    if (width > 1)
        addAlong<NC>(words, width, outputs);

    const double area = s.band->superArea;
    constexpr int N = 32;
    Index i = 0;
    if ((pixels & (pixels - 1)) == 0 && area * static_cast<double>(pixels) == 1) {
        const auto half = static_cast<uint16_t>(pixels / 2);
        const auto shift = static_cast<uint16_t>(__builtin_ctzll(static_cast<unsigned long long>(pixels)));
        for (; i + N <= n; i += N)
            store(dst + i, convert<uint8_t>((load<Vec<uint16_t, N>>(words + i) + half) >> shift));
        for (; i < n; i++)
            dst[i] = static_cast<uint8_t>((words[i] + half) >> shift);
        return 1;
    }
    for (; i + N <= n; i += N)
        putOutput(dst + i, convert<float>(convert<int32_t>(load<Vec<uint16_t, N>>(words + i))), area);
    for (; i < n; i++)
        putOutput(dst + i, convert<float>(convert<int32_t>(load<Vec<uint16_t, 1>>(words + i))), area);
    return 1;
}

// The strip from output `from` on, as far as columns and line reach; empty if not even one output fits.
template<class T> void makeStrip(const Super<T>& s, Index from, Strip& strip)
{
    const qvrResizeBand* const b = s.band;
    strip.from = strip.to = from;
    for (; strip.to < b->x.count && strip.to - from < kStrip; strip.to++) {
        qvrCover c;
        qvrCoverOf(&b->x, s.blocks, b->x.first + strip.to, &c);
        if (strip.to == from)
            strip.base = c.start;
        const Index span = endOf(c, s.blocks) - strip.base, x = strip.to - from;
        if (span > s.room)
            break;
        strip.span = span;
        strip.start[x] = static_cast<int32_t>(c.start - strip.base);
        strip.whole[x] = static_cast<int32_t>(c.whole);
        strip.lead[x] = c.lead;
        strip.tail[x] = c.tail;
    }
}

// The whole band, where it is made of blocks of two by two inside the image; 0 if not.
template<int NC> int halveBand(const Super<uint8_t>& s)
{
    const qvrResizeBand* const b = s.band;
    if (!s.blocks || b->superArea != 0.25)
        return 0;
    qvrCover column, row;
    qvrCoverOf(&b->x, 1, b->x.first, &column);
    qvrCoverOf(&b->wholeY, 1, b->y.first, &row);
    if (column.whole != 2 || row.whole != 2 || column.start < 0 || row.start < 0 ||
        column.start + 2 * b->x.count > b->x.length || row.start + 2 * b->y.count > b->y.length)
        return 0;
    for (Index n = 0; n < b->y.count; n++) {
        const uint8_t* const upper =
            reinterpret_cast<const uint8_t*>(sourceRow(b, row.start + 2 * n)) + column.start * NC;
        halveRow<NC>(upper, upper + b->srcStep, reinterpret_cast<uint8_t*>(outputRow(b, n, NC)), b->x.count * NC);
    }
    return 1;
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
    if constexpr (sizeof(T) == 1 && kCanHalve<NC>)
        if (halveBand<NC>(s))
            return;
    const Index width = b->x.count;
    const auto output = [&](Index n, Index x) {
        qvrCoverOf(&b->wholeY, s.blocks, b->y.first + n, &s.rows);
        return reinterpret_cast<T*>(outputRow(b, n, NC * static_cast<Index>(sizeof(T)))) + x * NC;
    };
    Strip strip;
    for (Index x = 0; x < width; x = strip.to) {
        makeStrip(s, x, strip);
        if (strip.to == x) {
            qvrCover c;
            qvrCoverOf(&b->x, s.blocks, b->x.first + x, &c);
            for (Index n = 0; n < b->y.count; n++)
                longOutput<T, NC>(s, c, output(n, x));
            strip.to++;
        } else {
            for (Index n = 0; n < b->y.count; n++) {
                T* const dst = output(n, x);
                if constexpr (sizeof(T) == 1)
                    if (smallBlocks<NC>(s, strip, dst))
                        continue;
                makeLine<T, NC>(s, strip.base, strip.span);
                stripOutputs<T, NC>(s, strip, dst);
            }
        }
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
