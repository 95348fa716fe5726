// Resizing with low-pass weights: tap lists as long as the reduction asks for.
//
// Pass one filters a source row to the band's columns, sums in double, into a line; pass two adds the lines of an
// output row, each times its weight: acc += float(double(line) * weight), taps ascending. Weights are divided by their
// sum; those of columns are stored as single, those of rows stay double. Indices outside the image stand for its edge
// pixels.
//
// The lines of the rows that one output row needs are kept by row number modulo their count. What does not fit the
// buffer is made again when it is needed: column weights, row weights, the lines.
#include "image/kernels.h"
#include "vector/loops.h"

namespace {

template<class T> struct LineOf {
    using type = float;
};
template<> struct LineOf<double> {
    using type = double;
};
template<class T> using Line = typename LineOf<T>::type;

// The columns of a band: taps first[x] - base .. + count[x] - 1 of a source row that has been widened to doubles, with
// the edge pixels repeated on both sides. Weights are zero behind the last tap, up to `stride`, a whole number of
// vectors.
struct Columns {
    int32_t *first, *count;
    double *weights, *row;
    Index base, length, stride;
};

constexpr int kStep = kLanes<double>;

template<class T, int N> QVR_INLINE Vec<double, N> asDoubles(const T* s)
{
    if constexpr (sizeof(T) == 1)
        return convert<double>(convert<int32_t>(load<Vec<uint8_t, N>>(s)));
    else
        return convert<double>(load<Vec<T, N>>(s));
}

// ---- Along a row ----------------------------------------------------------------------------------------------------

// Pixels base .. base + length - 1 of a row, those outside the image by its edges.
template<class T, int NC> void widenRow(const T* s, const Columns& c, Index pixels)
{
    using P = Vec<double, NC>;
    const Index inside = clampIndex(c.base, pixels), end = clampIndex(c.base + c.length - 1, pixels) + 1;
    const Index at = inside - c.base;
    const P left = asDoubles<T, NC>(s + inside * NC), right = asDoubles<T, NC>(s + (end - 1) * NC);
    Index i = 0;
    const Index n = (end - inside) * NC;
    double* const to = c.row + at * NC;
    const T* const from = s + inside * NC;
    for (; i + 8 <= n; i += 8)
        store(to + i, asDoubles<T, 8>(from + i));
    for (; i < n; i++)
        store(to + i, asDoubles<T, 1>(from + i));
    for (Index k = 0; k < at; k++)
        store(c.row + k * NC, left);
    for (Index k = at + end - inside; k < c.length; k++)
        store(c.row + k * NC, right);
}

// Lanes of four vectors added up: one sum each.
template<class V> QVR_INLINE Vec<double, 4> sumsOf(const V (&v)[4])
{
    if constexpr (lanes<V> == 4) {
        const auto ab = shuffleBlocks<0, 2>(v[0], v[1]) + shuffleBlocks<1, 3>(v[0], v[1]);
        const auto cd = shuffleBlocks<0, 2>(v[2], v[3]) + shuffleBlocks<1, 3>(v[2], v[3]);
        return concat(lo(ab), lo(cd)) + concat(hi(ab), hi(cd));
    } else {
        return Vec<double, 4>{sumLanes(v[0]), sumLanes(v[1]), sumLanes(v[2]), sumLanes(v[3])};
    }
}

// The sums of M neighbouring outputs, side by side for the sake of latency. A weight of zero does not make up for a NaN
// behind the taps, so the last vector keeps its own lanes alone.
template<class T, int M> QVR_INLINE void sumTaps(const Columns& c, Index x, Vec<double, kStep>* sum)
{
    using V = Vec<double, kStep>;
    const Index last = c.stride - kStep;
    const double *s[M], *w = c.weights + x * c.stride;
    for (int k = 0; k < M; k++) {
        s[k] = c.row + (c.first[x + k] - c.base);
        sum[k] = V{};
    }
    for (Index j = 0; j < last; j += kStep)
        for (int k = 0; k < M; k++)
            sum[k] = fma(load<V>(s[k] + j), load<V>(w + k * c.stride + j), sum[k]);
    for (int k = 0; k < M; k++) {
        V end = load<V>(s[k] + last);
        if constexpr (sizeof(T) != 1)
            end = bitcast<V>(bits(end) & bitcast<Bits<V>>(iota<Mask<V>>() < splat<Mask<V>>(c.count[x + k] - last)));
        sum[k] = fma(end, load<V>(w + k * c.stride + last), sum[k]);
    }
}

template<class T, int NC> void filterRow(const Columns& c, const T* s, Index pixels, Line<T>* line, Index width)
{
    using A = Line<T>;
    widenRow<T, NC>(s, c, pixels);
    if constexpr (NC == 1) {
        Index x = 0;
        Vec<double, kStep> v[4];
        for (; x + 4 <= width; x += 4) {
            sumTaps<T, 4>(c, x, v);
            store(line + x, convert<A>(sumsOf(v)));
        }
        for (; x < width; x++) {
            sumTaps<T, 1>(c, x, v);
            line[x] = static_cast<A>(sumLanes(v[0]));
        }
    } else {
        for (Index x = 0; x < width; x++) {
            using P = Vec<double, NC>;
            const double *const p = c.row + (c.first[x] - c.base) * NC, *const w = c.weights + x * c.stride;
            P even = {}, odd = {};
            Index j = 0;
            for (; j + 2 <= c.count[x]; j += 2) {
                even = fma(load<P>(p + j * NC), splat<P>(w[j]), even);
                odd = fma(load<P>(p + (j + 1) * NC), splat<P>(w[j + 1]), odd);
            }
            if (j < c.count[x])
                even = fma(load<P>(p + j * NC), splat<P>(w[j]), even);
            store(line + x * NC, convert<A>(even + odd));
        }
    }
}

// Without tables: each weight when it is wanted.
template<class T, int NC> void filterRowSlowly(const qvrResizeBand* b, const T* s, Line<T>* line)
{
    using A = Line<T>;
    using P = Vec<double, NC>;
    for (Index x = 0; x < b->x.count; x++) {
        qvrLowPassTaps taps;
        qvrLowPassRange(&b->x, b->method, b->x.first + x, &taps);
        qvrLowPassSum(&taps, b->method);
        P sum = {};
        for (Index j = taps.first; j <= taps.last; j++) {
            const A w = static_cast<A>(qvrLowPassWeight(&taps, b->method, j) / taps.sum);
            sum += asDoubles<T, NC>(s + clampIndex(j, b->x.length) * NC) * static_cast<double>(w);
        }
        store(line + x * NC, convert<A>(sum));
    }
}

// ---- Down the columns -----------------------------------------------------------------------------------------------

// Lines of neighbouring taps, added together to save passes over the accumulators.
template<class A> struct Batch {
    static constexpr int kMost = 16;
    const A* line[kMost];
    double weight[kMost];
    float high[kMost], low[kMost]; // the weight as two singles
    int count;
    QVR_INLINE void add(const A* l, double w)
    {
        line[count] = l;
        weight[count] = w;
        high[count] = static_cast<float>(w);
        low[count] = static_cast<float>(w - static_cast<double>(high[count]));
        count++;
    }
};

// acc[i] += float(double(line[i]) * weight). With fused operations the product of a finite single comes from two
// singles whose sum is the weight to 2^-48: line * high + line * low, rounded once but for the tiny second product.
template<class T> void addLines(const Batch<Line<T>>& batch, Line<T>* acc, Index n)
{
    using A = Line<T>;
    constexpr int N = 2 * kLanes<A>;
    const auto block = [&]<class V>(V, Index i) {
        V sum = load<V>(acc + i);
        for (int k = 0; k < batch.count; k++) {
            const V x = load<V>(batch.line[k] + i);
            if constexpr (sizeof(T) == 1 && kFma)
                sum += fma(x, splat<V>(batch.high[k]), x * splat<V>(batch.low[k]));
            else
                sum += convert<A>(convert<double>(x) * batch.weight[k]);
        }
        store(acc + i, sum);
    };
    Index i = 0;
    for (; i + N <= n; i += N)
        block(Vec<A, N>{}, i);
    for (; i < n; i++)
        block(Vec<A, 1>{}, i);
}

template<class T> void putRow(const Line<T>* acc, T* dst, Index n)
{
    if constexpr (sizeof(T) == 1)
        convertBlocks<4 * kLanes<float>>(acc, dst, n, [](auto x) { return packBytes(roundToByte(x)); });
    else
        mapElements(dst, n, [](auto x) { return x; }, acc);
}

// The tables of the columns, if they fit the buffer.
template<class T, int NC> bool makeColumns(const qvrResizeBand* b, Columns& c, Carver& carver)
{
    const Index width = b->x.count;
    Index most = 0, last = 0;
    for (Index x = 0; x < width; x++) {
        qvrLowPassTaps taps;
        qvrLowPassRange(&b->x, b->method, b->x.first + x, &taps);
        const Index count = taps.last - taps.first + 1;
        most = count > most ? count : most;
        if (x == 0)
            c.base = taps.first;
        last = taps.last;
    }
    c.stride = qvrAlignUp(most, Index{kStep});
    c.length = last - c.base + 1 + kStep; // loads of whole vectors end behind the last tap
    Carver trial = carver;
    c.first = trial.take<int32_t>(width, 16);
    c.count = trial.take<int32_t>(width, 16);
    c.weights = trial.take<double>(width * c.stride, 16);
    c.row = trial.take<double>(c.length * NC, 16);
    if (!c.first || !c.count || !c.weights || !c.row || c.base < INT32_MIN || last > INT32_MAX)
        return false;
    for (Index x = 0; x < width; x++) {
        qvrLowPassTaps taps;
        qvrLowPassRange(&b->x, b->method, b->x.first + x, &taps);
        double* const w = c.weights + x * c.stride;
        qvrLowPassFill(&taps, b->method, w);
        c.first[x] = static_cast<int32_t>(taps.first);
        c.count[x] = static_cast<int32_t>(taps.last - taps.first + 1);
        for (Index j = 0; j < c.stride; j++)
            w[j] = j < c.count[x] ? static_cast<double>(static_cast<Line<T>>(w[j])) : 0;
    }
    carver = trial;
    return true;
}

template<class T, int NC> void lowPass(const qvrResizeBand* b)
{
    using A = Line<T>;
    const Index elements = Index{b->x.count} * NC, height = b->y.length;
    Carver carver = bufferOf(b);
    A* const acc = carver.take<A>(elements, 16);
    A* const single = carver.take<A>(elements, 16);
    const Index taps = qvrLowPassCount(&b->y, b->method), kept = taps < height ? taps : height;
    double* const weights = carver.take<double>(taps, 16);
    Columns columns;
    const bool tables = makeColumns<T, NC>(b, columns, carver);
    // One line and the row numbers for each row that an output row can need; else every line is made when it is added.
    Carver trial = carver;
    const Index pitch = qvrAlignUp(elements, Index{16});
    int64_t* held = trial.take<int64_t>(kept, 16);
    A* const lines = held ? trial.take<A>(kept * pitch, 16) : nullptr;
    if (!lines)
        held = nullptr;
    for (Index k = 0; held && k < kept; k++)
        held[k] = -1;
    for (Index n = 0; n < b->y.count; n++) {
        qvrLowPassTaps rows;
        qvrLowPassRange(&b->y, b->method, b->y.first + n, &rows);
        if (weights)
            qvrLowPassFill(&rows, b->method, weights);
        else
            qvrLowPassSum(&rows, b->method);
        for (Index i = 0; i < elements; i++)
            acc[i] = A(0);
        Batch<A> batch;
        batch.count = 0;
        for (Index j = rows.first; j <= rows.last; j++) {
            const double w = weights ? weights[j - rows.first] : qvrLowPassWeight(&rows, b->method, j) / rows.sum;
            const Index y = clampIndex(j, height), slot = held ? y % kept : 0;
            A* const line = held ? lines + slot * pitch : single;
            if (!held || held[slot] != y) {
                const T* const s = reinterpret_cast<const T*>(sourceRow(b, y));
                if (tables)
                    filterRow<T, NC>(columns, s, b->x.length, line, b->x.count);
                else
                    filterRowSlowly<T, NC>(b, s, line);
            }
            if (held)
                held[slot] = y;
            batch.add(line, w);
            if (!held || batch.count == Batch<A>::kMost || j == rows.last) {
                addLines<T>(batch, acc, elements);
                batch.count = 0;
            }
        }
        putRow(acc, reinterpret_cast<T*>(outputRow(b, n, NC * static_cast<Index>(sizeof(T)))), elements);
    }
}

} // namespace

extern "C" void SLOT(ownResizeLowPass)(const qvrResizeBand* band, int pixel)
{
    if (pixel == qvrPixel_8u_C1)
        lowPass<uint8_t, 1>(band);
    else if (pixel == qvrPixel_8u_C4)
        lowPass<uint8_t, 4>(band);
    else if (pixel == qvrPixel_32f_C1)
        lowPass<float, 1>(band);
    else
        lowPass<double, 1>(band);
}
