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

template<class T> struct LowPass {
    using A = Line<T>;
    const qvrResizeBand* band;
    const int64_t* first; // of each column, unclamped; null: not kept
    const int32_t* count;
    const A* weights; // of column x from x * stride on
    Index stride;
};

// ---- Along a row ----------------------------------------------------------------------------------------------------

QVR_INLINE double valueOf(const uint8_t* s)
{
    return *s;
}
template<class T> QVR_INLINE double valueOf(const T* s)
{
    return static_cast<double>(load<Vec<T, 1>>(s)[0]);
}

// Elements as doubles, the first n; the other lanes are zero.
template<int N, class T> QVR_INLINE Vec<double, N> asDoubles(const T* s)
{
    if constexpr (sizeof(T) == 1)
        return convert<double>(convert<int32_t>(load<Vec<T, N>>(s)));
    else
        return convert<double>(load<Vec<T, N>>(s));
}

// Sum of taps all inside the image.
template<class T> QVR_INLINE double sumTaps(const T* s, const Line<T>* w, Index n)
{
    constexpr int N = kLanes<double>;
    using V = Vec<double, N>;
    V a = {}, b = {};
    Index j = 0;
    for (; j + 2 * N <= n; j += 2 * N) {
        a = fma(asDoubles<N>(s + j), asDoubles<N>(w + j), a);
        b = fma(asDoubles<N>(s + j + N), asDoubles<N>(w + j + N), b);
    }
    if (j + N <= n) {
        a = fma(asDoubles<N>(s + j), asDoubles<N>(w + j), a);
        j += N;
    }
    double sum = sumLanes(a + b);
    for (; j < n; j++)
        sum += valueOf(s + j) * static_cast<double>(w[j]);
    return sum;
}

template<class T, int NC> void filterRow(const LowPass<T>& f, const T* s, Line<T>* line)
{
    using A = Line<T>;
    const qvrResizeBand* const b = f.band;
    const Index length = b->x.length;
    for (Index x = 0; x < b->x.count; x++) {
        if (f.first) {
            const Index first = f.first[x], n = f.count[x];
            const A* const w = f.weights + x * f.stride;
            if (NC == 1 && first >= 0 && first + n <= length) {
                line[x] = static_cast<A>(sumTaps(s + first, w, n));
            } else {
                using P = Vec<double, NC>;
                P sum = {};
                for (Index j = 0; j < n; j++) {
                    const T* const p = s + clampIndex(first + j, length) * NC;
                    sum = fma(asDoubles<NC>(p), splat<P>(static_cast<double>(w[j])), sum);
                }
                store(line + x * NC, convert<A>(sum));
            }
        } else {
            qvrLowPassTaps taps;
            qvrLowPassRange(&b->x, b->method, b->x.first + x, &taps);
            qvrLowPassSum(&taps, b->method);
            for (int k = 0; k < NC; k++) {
                double sum = 0;
                for (Index j = taps.first; j <= taps.last; j++) {
                    const A w = static_cast<A>(qvrLowPassWeight(&taps, b->method, j) / taps.sum);
                    sum += valueOf(s + clampIndex(j, length) * NC + k) * static_cast<double>(w);
                }
                store(line + x * NC + k, Vec<A, 1>{static_cast<A>(sum)});
            }
        }
    }
}

// ---- Down the columns -----------------------------------------------------------------------------------------------

template<class A> void addLine(const A* line, double w, A* acc, Index n)
{
    mapElements(
        acc, n,
        [w](auto sum, auto x) {
            using D = Vec<double, lanes<decltype(x)>>;
            return sum + convert<A>(convert<double>(x) * splat<D>(w));
        },
        static_cast<const A*>(acc), line);
}

template<class T> void putRow(const Line<T>* acc, T* dst, Index n)
{
    if constexpr (sizeof(T) == 1)
        convertBlocks<4 * kLanes<float>>(acc, dst, n, [](auto x) { return packBytes(roundToByte(x)); });
    else
        mapElements(dst, n, [](auto x) { return x; }, acc);
}

// Column weights in the buffer, if they fit.
template<class T> void keepColumns(LowPass<T>& f, Carver& carver)
{
    using A = Line<T>;
    const qvrResizeBand* const b = f.band;
    const Index width = b->x.count, stride = qvrLowPassCount(&b->x, b->method);
    Carver trial = carver;
    int64_t* const first = trial.take<int64_t>(width, 16);
    int32_t* const count = trial.take<int32_t>(width, 16);
    A* const weights = trial.take<A>(width * stride, 16);
    if (!first || !count || !weights)
        return;
    for (Index x = 0; x < width; x++) {
        qvrLowPassTaps taps;
        qvrLowPassRange(&b->x, b->method, b->x.first + x, &taps);
        qvrLowPassSum(&taps, b->method);
        first[x] = taps.first;
        count[x] = static_cast<int32_t>(taps.last - taps.first + 1);
        for (Index j = 0; j < count[x]; j++)
            weights[x * stride + j] = static_cast<A>(qvrLowPassWeight(&taps, b->method, taps.first + j) / taps.sum);
    }
    f.first = first;
    f.count = count;
    f.weights = weights;
    f.stride = stride;
    carver = trial;
}

template<class T, int NC> void lowPass(const qvrResizeBand* b)
{
    using A = Line<T>;
    const Index elements = Index{b->x.count} * NC, height = b->y.length;
    Carver carver = bufferOf(b);
    A* const acc = carver.take<A>(elements, 16);
    A* const single = carver.take<A>(elements, 16);
    LowPass<T> f = {b, nullptr, nullptr, nullptr, 0};
    keepColumns(f, carver);
    // One line and the row numbers for each row that an output row can need; else every line is made when it is added.
    const Index taps = qvrLowPassCount(&b->y, b->method), kept = taps < height ? taps : height;
    Carver trial = carver;
    const Index pitch = qvrAlignUp(elements, Index{16});
    int64_t* held = trial.take<int64_t>(kept, 16);
    A* lines = held ? trial.take<A>(kept * pitch, 16) : nullptr;
    if (!lines)
        held = nullptr;
    else
        carver = trial;
    for (Index k = 0; held && k < kept; k++)
        held[k] = -1;
    for (Index n = 0; n < b->y.count; n++) {
        qvrLowPassTaps rows;
        qvrLowPassRange(&b->y, b->method, b->y.first + n, &rows);
        qvrLowPassSum(&rows, b->method);
        for (Index i = 0; i < elements; i++)
            acc[i] = A(0);
        for (Index j = rows.first; j <= rows.last; j++) {
            const double w = qvrLowPassWeight(&rows, b->method, j) / rows.sum;
            const Index y = clampIndex(j, height), slot = held ? y % kept : 0;
            A* const line = held ? lines + slot * pitch : single;
            if (!held || held[slot] != y)
                filterRow<T, NC>(f, reinterpret_cast<const T*>(sourceRow(b, y)), line);
            if (held)
                held[slot] = y;
            addLine(line, w, acc, elements);
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
