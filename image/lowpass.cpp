// Resizing with low-pass weights: tap lists as long as the reduction asks for.
//
// Pass one filters source rows to columns, sums in double, into lines; pass two adds the lines of an output row, each
// times its weight: acc += float(double(line) * weight), taps ascending. Weights are divided by their sum; those of
// columns are stored as single, those of rows stay double. Indices outside the image stand for its edge pixels.
//
// An output of pass one has two partial sums (64f eight), by the tap's number in its list, added in order. Rows are the
// lanes: several source rows are turned into columns of doubles, and every output takes its taps from them one after
// the other. So a sum is the same wherever it stands.
//
// The buffer holds lists and lines: a list for each column, or for one period of them, and the lines of the rows that
// an output row needs, by row number modulo their count. What does not fit at once is done for a range of columns and
// all rows, then for the next range. If not even one column fits, its weights are made anew for every few rows.
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
// Of pass two; floats have one rounding less for each tap where products are fused.
template<class T, bool Fused = kFma> struct SumOf {
    using type = Line<T>;
};
template<> struct SumOf<float, true> {
    using type = double;
};
template<class T> using Sum = typename SumOf<T>::type;

template<class T> constexpr int kParts = sizeof(T) == 8 ? 8 : 2;

constexpr Index kTurned = 3072; // doubles of source rows that are turned at a time
constexpr Index kOutputs = 64;  // columns of pass one between two stores
constexpr Index kRun = 512;     // weights at a time where there is no list
constexpr Index kChunk = 256;   // elements of pass two at a time

// The lists of the columns from .. from + width - 1.
template<class W> struct Columns {
    Index from, width, period, stride;
    int32_t *first, *count; // of a column; of a list
    W* weights;             // null: there are no lists
    QVR_INLINE Index listOf(Index x) const { return period > 0 ? x % period : x; }
};

// ---- Along rows -----------------------------------------------------------------------------------------------------

// N lanes from the same places of four rows, turned.
template<class T> QVR_INLINE void turnFour(const T* const* rows, Index at, double* to, Index pitch)
{
    constexpr int B = sizeof(T) == 1 ? 16 : 4;
    using V = Vec<T, B>;
    const V a = load<V>(rows[0] + at), b = load<V>(rows[1] + at), c = load<V>(rows[2] + at), d = load<V>(rows[3] + at);
    const V acl = zipLo(a, c), ach = zipHi(a, c), bdl = zipLo(b, d), bdh = zipHi(b, d);
    const V turned[4] = {zipLo(acl, bdl), zipHi(acl, bdl), zipLo(ach, bdh), zipHi(ach, bdh)};
    alignas(32) T pixels[4 * B];
    for (int k = 0; k < 4; k++)
        store(pixels + k * B, turned[k]);
    for (int k = 0; k < B; k++)
        store(to + k * pitch, convert<double>(load<Vec<T, 4>>(pixels + 4 * k)));
}

// Pixels base .. base + n - 1 of R rows, side by side; those outside the image by its edges.
template<class T, int NC, int R> void turnRows(const T* const* rows, Index base, Index n, Index length, double* to)
{
    constexpr Index L = R * NC, B = sizeof(T) == 1 ? 16 / NC : 4;
    const auto one = [&](Index i) {
        const Index at = clampIndex(base + i, length) * NC;
        for (int r = 0; r < R; r++)
            store(to + i * L + r * NC, convert<double>(load<Vec<T, NC>>(rows[r] + at)));
    };
    Index i = 0;
    for (; i < n && base + i < 0; i++)
        one(i);
    for (; i + B <= n && base + i + B <= length; i += B)
        if constexpr (NC == 1) {
            for (int r = 0; r < R; r += 4)
                turnFour(rows + r, base + i, to + i * L + r, L);
        } else {
            for (int r = 0; r < R; r++)
                for (int k = 0; k < B; k++)
                    store(to + (i + k) * L + r * NC, convert<double>(load<Vec<T, NC>>(rows[r] + (base + i + k) * NC)));
        }
    for (; i < n; i++)
        one(i);
}

// Taps from .. from + count - 1 of one output, `from` a multiple of P.
template<int P, class V, class W> QVR_INLINE void addTaps(const double* s, const W* w, Index count, V (&part)[P])
{
    const auto tap = [&](Index j, int p) {
        part[p] = fma(load<V>(s + j * lanes<V>), splat<V>(static_cast<double>(w[j])), part[p]);
    };
    Index j = 0;
    for (; j + P <= count; j += P)
        for (int p = 0; p < P; p++)
            tap(j + p, p);
    for (int p = 0; p < P - 1; p++)
        if (j + p < count)
            tap(j + p, p);
}
template<int P, class V> QVR_INLINE V sumOf(const V (&part)[P])
{
    V sum = part[0];
    for (int p = 1; p < P; p++)
        sum += part[p];
    return sum;
}

double sumOfWeights(const qvrLowPass* l, const qvrLowPassTaps& taps)
{
    double weights[kRun], sum = 0;
    for (Index from = 0; from < taps.count; from += kRun) {
        const Index n = taps.count - from < kRun ? taps.count - from : kRun;
        qvrLowPassWeights(l, &taps, from, n, weights);
        for (Index k = 0; k < n; k++)
            sum += weights[k];
    }
    return sum;
}

// One column without lists, or with a list longer than what is turned at a time.
template<class T, int NC, int R, class W>
void filterLong(const qvrLowPass* l, const T* const* rows, const Columns<W>& c, Index x, Vec<double, R * NC>& sum)
{
    constexpr int P = kParts<T>, L = R * NC;
    constexpr Index kMost = kTurned / L < kRun ? kTurned / L : kRun;
    static_assert(kMost % P == 0);
    alignas(64) double turned[kMost * L];
    double weights[kMost];
    qvrLowPassTaps taps;
    qvrLowPassRange(l, c.from + x, &taps);
    const double whole = c.weights == nullptr ? sumOfWeights(l, taps) : 0;
    Vec<double, L> part[P] = {};
    for (Index from = 0; from < taps.count; from += kMost) {
        const Index n = taps.count - from < kMost ? taps.count - from : kMost;
        turnRows<T, NC, R>(rows, taps.first + from, n, l->length, turned);
        if (c.weights != nullptr) {
            addTaps(turned, c.weights + c.listOf(x) * c.stride + from, n, part);
            continue;
        }
        qvrLowPassWeights(l, &taps, from, n, weights);
        for (Index k = 0; k < n; k++)
            weights[k] = static_cast<double>(static_cast<Line<T>>(weights[k] / whole));
        addTaps(turned, weights, n, part);
    }
    sum = sumOf(part);
}

// R rows to lines.
template<class T, int NC, int R, class W>
void filterRows(const qvrLowPass* l, const T* const* rows, const Columns<W>& c, Line<T>* const* lines, Index count)
{
    using A = Line<T>;
    constexpr int P = kParts<T>, L = R * NC;
    using V = Vec<double, L>;
    alignas(64) double turned[kTurned];
    alignas(64) A out[(kOutputs + 4) * L];
    for (Index x = 0; x < c.width;) {
        const Index start = x;
        if (c.weights == nullptr || c.stride > kTurned / L) {
            V sum;
            filterLong<T, NC, R>(l, rows, c, x++, sum);
            store(out, convert<A>(sum));
        } else {
            const Index base = c.first[x];
            Index end = base;
            for (; x < c.width && x - start < kOutputs; x++) {
                const Index behind = c.first[x] + c.count[c.listOf(x)];
                if (behind - base > kTurned / L)
                    break;
                end = behind > end ? behind : end;
            }
            turnRows<T, NC, R>(rows, base, end - base, l->length, turned);
            for (Index k = start; k < x; k++) {
                const Index list = c.listOf(k);
                V part[P] = {};
                addTaps(turned + (c.first[k] - base) * L, c.weights + list * c.stride, c.count[list], part);
                store(out + (k - start) * L, convert<A>(sumOf(part)));
            }
        }
        const Index done = x - start;
        if constexpr (NC == 1) {
            using F = Vec<A, 4>;
            for (Index k = done; k % 4 != 0; k++)
                store(out + k * L, Vec<A, L>{});
            for (Index k = 0; k < done; k += 4)
                for (int r = 0; r < count; r += 4) {
                    const auto at = [&](int i) { return load<F>(out + (k + i) * L + r); };
                    const F a = at(0), b = at(1), d = at(2), e = at(3);
                    const F adl = zipLo(a, d), adh = zipHi(a, d), bel = zipLo(b, e), beh = zipHi(b, e);
                    const F row[4] = {zipLo(adl, bel), zipHi(adl, bel), zipLo(adh, beh), zipHi(adh, beh)};
                    for (int i = 0; i < 4 && r + i < count; i++)
                        if (A* const to = lines[r + i] + start + k; done - k >= 4)
                            store(to, row[i]);
                        else
                            storePartial(to, row[i], static_cast<int>(done - k));
                }
        } else {
            for (int r = 0; r < count; r++)
                for (Index k = 0; k < done; k++)
                    store(lines[r] + (start + k) * NC, load<Vec<A, NC>>(out + k * L + r * NC));
        }
    }
}

// Rows of an image that are filtered together.
constexpr int kRows = 16;
template<class T, int NC, class W>
void filterGroup(const qvrResizeBand* b, const qvrLowPass* l, const Columns<W>& c, Index y, int count,
                 Line<T>* const* lines)
{
    constexpr int kFew = NC == 1 ? 4 : 1;
    const T* rows[kRows];
    for (int r = 0; r < kRows; r++)
        rows[r] = reinterpret_cast<const T*>(sourceRow(b, y + (r < count ? r : count - 1)));
    if constexpr (sizeof(T) != 8)
        if (count > kFew) {
            constexpr int kMany = kRows / NC;
            for (int r = 0; r < count; r += kMany)
                filterRows<T, NC, kMany>(l, rows + r, c, lines + r, count - r < kMany ? count - r : kMany);
            return;
        }
    for (int r = 0; r < count; r += kFew)
        filterRows<T, NC, kFew>(l, rows + r, c, lines + r, count - r < kFew ? count - r : kFew);
}

// ---- Down columns ---------------------------------------------------------------------------------------------------

// The taps of an output row, or a run of them.
template<class A> struct RowTaps {
    const A* line[kRun];
    double weight[kRun];
    float single[kRun];
    Index count;
    float guard; // bytes: how far a sum of singles may be from the prescribed one; negative: not to be used
};

template<class T, int N> QVR_INLINE Vec<Sum<T>, N> addLines(const RowTaps<Line<T>>& rows, Index i, Vec<Sum<T>, N> sum)
{
    for (Index k = 0; k < rows.count; k++) {
        const auto line = convert<double>(load<Vec<Line<T>, N>>(rows.line[k] + i));
        if constexpr (sizeof(T) != 1 && kFma)
            sum = fma(line, splat<decltype(line)>(rows.weight[k]), sum);
        else
            sum += convert<Line<T>>(line * rows.weight[k]);
    }
    return sum;
}

// Bytes by sums of singles. Where such a sum is too near to a step between two bytes, the prescribed one is formed.
template<class V> QVR_INLINE V addSingles(const RowTaps<float>& rows, Index i)
{
    V sum = {};
    for (Index k = 0; k < rows.count; k++)
        sum = fma(load<V>(rows.line[k] + i), splat<V>(rows.single[k]), sum);
    const auto near = [&](auto v) { return abs(v - roundNearest(v)) > 0.5f - rows.guard; };
    if (anyTrue(near(sum))) {
        constexpr int N = lanes<V> < 8 ? lanes<V> : 8;
        alignas(V) float sums[lanes<V>];
        store(sums, sum);
        for (int k = 0; k < lanes<V>; k += N)
            if (anyTrue(near(load<Vec<float, N>>(sums + k))))
                store(sums + k, addLines<uint8_t, N>(rows, i + k, Vec<float, N>{}));
        sum = load<V>(sums);
    }
    return sum;
}

template<class V> QVR_INLINE void put(V sum, uint8_t* dst)
{
    store(dst, packBytes(roundToByte(sum)));
}
template<class V> QVR_INLINE void put(V sum, Elem<V>* dst)
{
    store(dst, sum);
}

// Blocks of N, then of the fourth part, then single elements.
template<int N, class F> QVR_INLINE void eachBlock(Index from, Index to, const F& block)
{
    Index i = from;
    for (; i + N <= to; i += N)
        block.template operator()<N>(i);
    if constexpr (N > 1)
        eachBlock<N / 4>(i, to, block);
}

// The weights of an output row; those of a whole period are kept.
struct RowWeights {
    const qvrLowPass* l;
    qvrLowPassTaps taps;
    double sum;
    double kept[kRun];
    bool made[kRun];
    Index lists;
};
void startRows(RowWeights& r, const qvrLowPass* l)
{
    r.l = l;
    r.lists = l->period > 0 && l->period <= kRun / l->most ? l->period : 0;
    for (Index k = 0; k < r.lists; k++)
        r.made[k] = false;
}
// Up to kRun weights of the row at hand from number `from` on.
const double* rowWeights(RowWeights& r, Index d, Index from, Index count)
{
    const Index list = r.lists > 0 ? d % r.lists : 0;
    double* const w = r.lists > 0 ? r.kept + list * r.l->most : r.kept;
    if (r.lists > 0 && r.made[list])
        return w;
    if (from == 0)
        r.sum = sumOfWeights(r.l, r.taps);
    qvrLowPassWeights(r.l, &r.taps, from, count, w);
    for (Index k = 0; k < count; k++)
        w[k] /= r.sum;
    if (r.lists > 0)
        r.made[list] = true;
    return w;
}

// True if sums with the weights are exact in single, as those of bytes with eighths of 32.
template<class W> bool areShort(const W* w, Index count)
{
    bool all = true;
    for (Index k = 0; k < count; k++)
        all &= static_cast<double>(w[k]) * 256 == static_cast<double>(static_cast<int32_t>(w[k] * 256));
    return all;
}

// ---- A band ---------------------------------------------------------------------------------------------------------

template<class T, int NC> struct LowPass {
    using A = Line<T>;
    const qvrResizeBand* band;
    qvrLowPass x, y;
    Index held;  // lines
    double most; // bytes: the largest value in a line
    bool exact;  // column weights are short
};

constexpr Index kSlack = 5 * 64;
template<class T, int NC, class W> Index bytesOf(const LowPass<T, NC>& p, Index width)
{
    const Index lists = p.x.period > 0 && p.x.period < width ? p.x.period : width;
    const Index each = 4 + static_cast<Index>(sizeof(W)) * p.x.most;
    return kSlack + 4 * width + lists * each + p.held * width * NC * static_cast<Index>(sizeof(Line<T>));
}

template<class T, int NC, class W> void makeColumns(LowPass<T, NC>& p, Columns<W>& c, Carver& carver)
{
    const Index lists = p.x.period > 0 && p.x.period < c.width ? p.x.period : c.width;
    c.period = lists < c.width ? lists : 0;
    c.stride = p.x.most;
    c.first = carver.take<int32_t>(c.width, 16);
    c.count = carver.take<int32_t>(lists, 16);
    c.weights = carver.take<W>(lists * c.stride, 64);
    p.most = 0;
    p.exact = true;
    for (Index x = 0; x < c.width; x++) {
        qvrLowPassTaps taps;
        if (x >= lists) {
            c.first[x] = c.first[x - lists] + static_cast<int32_t>(p.x.pixels);
            continue;
        }
        qvrLowPassRange(&p.x, c.from + x, &taps);
        c.first[x] = static_cast<int32_t>(taps.first);
        c.count[x] = static_cast<int32_t>(taps.count);
        W* const w = c.weights + x * c.stride;
        double run[kRun], magnitude = 0;
        const double sum = sumOfWeights(&p.x, taps);
        for (Index from = 0; from < taps.count; from += kRun) {
            const Index n = taps.count - from < kRun ? taps.count - from : kRun;
            qvrLowPassWeights(&p.x, &taps, from, n, run);
            for (Index k = 0; k < n; k++) {
                w[from + k] = static_cast<W>(static_cast<Line<T>>(run[k] / sum));
                magnitude += __builtin_fabs(run[k] / sum);
            }
        }
        p.most = magnitude * 255 > p.most ? magnitude * 255 : p.most;
        p.exact &= areShort(w, taps.count);
    }
}

// Taps from .. of output row d, with their lines by line(y).
template<class T, int NC, class LineAt>
void takeTaps(const LowPass<T, NC>& p, RowWeights& r, Index d, Index from, RowTaps<Line<T>>& taps, const LineAt& line)
{
    const Index rest = r.taps.count - from;
    taps.count = rest < kRun ? rest : kRun;
    const double* const w = rowWeights(r, d, from, taps.count);
    double magnitude = 0;
    for (Index k = 0; k < taps.count; k++) {
        taps.line[k] = line(clampIndex(r.taps.first + from + k, p.y.length));
        taps.weight[k] = w[k];
        taps.single[k] = static_cast<float>(w[k]);
        magnitude += __builtin_fabs(w[k]);
    }
    // Roundings of weights, products and sums on both ways, and 1e-7 of the prescribed step.
    const double bound = static_cast<double>(2 * taps.count + 4) * 0x1.1p-24 * magnitude * p.most + 2e-7;
    taps.guard = r.taps.count > kRun || bound > 0.01 ? -1 : static_cast<float>(bound);
    if (p.exact && areShort(w, taps.count))
        taps.guard = 0;
}

// All rows of a range of columns.
template<class T, int NC, class W> void filterColumns(LowPass<T, NC>& p, Index from, Index width)
{
    using A = Line<T>;
    const qvrResizeBand* const b = p.band;
    Carver carver = bufferOf(b);
    Columns<W> c = {b->x.first + from, width, 0, 0, nullptr, nullptr, nullptr};
    makeColumns(p, c, carver);
    const Index elements = width * NC;
    A* const lines = carver.take<A>(p.held * elements, 64);
    const auto lineOf = [&](Index y) { return lines + y % p.held * elements; };
    qvrLowPassTaps last;
    qvrLowPassRange(&p.y, b->y.first + b->y.count - 1, &last);
    const Index end = clampIndex(last.first + last.count - 1, p.y.length) + 1;
    Index done = 0; // rows below are filtered, as far as they are needed
    RowWeights rows;
    startRows(rows, &p.y);
    RowTaps<A> taps;
    for (Index n = 0; n < b->y.count; n++) {
        const Index d = b->y.first + n;
        qvrLowPassRange(&p.y, d, &rows.taps);
        const Index low = clampIndex(rows.taps.first, p.y.length);
        const Index high = clampIndex(rows.taps.first + rows.taps.count - 1, p.y.length);
        done = done > low ? done : low;
        while (done <= high) {
            A* to[kRows];
            const Index rest = end - done < p.held - (high - low) ? end - done : p.held - (high - low);
            const int count = static_cast<int>(rest < kRows ? rest : kRows);
            for (int r = 0; r < count; r++)
                to[r] = lineOf(done + r);
            filterGroup<T, NC>(b, &p.x, c, done, count, to);
            done += count;
        }
        T* const dst = reinterpret_cast<T*>(outputRow(b, n, NC * static_cast<Index>(sizeof(T)))) + from * NC;
        constexpr int N = sizeof(A) == 4 ? (sizeof(T) == 1 ? 64 : 16) : 4;
        takeTaps(p, rows, d, 0, taps, lineOf);
        if (rows.taps.count <= kRun) {
            eachBlock<N>(0, elements, [&]<int M>(Index i) {
                if constexpr (sizeof(T) == 1)
                    if (taps.guard >= 0)
                        return put(addSingles<Vec<A, M>>(taps, i), dst + i);
                put(convert<A>(addLines<T, M>(taps, i, Vec<Sum<T>, M>{})), dst + i);
            });
            continue;
        }
        for (Index at = 0; at < elements; at += kChunk) {
            const Index to = at + kChunk < elements ? at + kChunk : elements;
            Sum<T> acc[kChunk] = {};
            for (Index k = 0; k < rows.taps.count; k += kRun) {
                takeTaps(p, rows, d, k, taps, lineOf);
                eachBlock<N>(at, to, [&]<int M>(Index i) {
                    store(acc + (i - at), addLines<T, M>(taps, i, load<Vec<Sum<T>, M>>(acc + (i - at))));
                });
            }
            eachBlock<N>(at, to,
                         [&]<int M>(Index i) { put(convert<A>(load<Vec<Sum<T>, M>>(acc + (i - at))), dst + i); });
        }
    }
}

// Without lists, column by column; only some rows of it are held at a time.
template<class T, int NC> void filterWithout(LowPass<T, NC>& p)
{
    using A = Line<T>;
    const qvrResizeBand* const b = p.band;
    p.most = 0;
    p.exact = false;
    RowWeights rows;
    startRows(rows, &p.y);
    RowTaps<A> taps;
    for (Index n = 0; n < b->y.count; n++) {
        T* const dst = reinterpret_cast<T*>(outputRow(b, n, NC * static_cast<Index>(sizeof(T))));
        const Index d = b->y.first + n;
        qvrLowPassRange(&p.y, d, &rows.taps);
        const Index high = clampIndex(rows.taps.first + rows.taps.count - 1, p.y.length);
        for (Index x = 0; x < b->x.count; x++) {
            const Columns<A> c = {b->x.first + x, 1, 0, 0, nullptr, nullptr, nullptr};
            A lines[kRows * NC];
            A* to[kRows];
            for (int r = 0; r < kRows; r++)
                to[r] = lines + r * NC;
            Index from = 0, done = 0;
            Vec<Sum<T>, NC> acc = {};
            for (Index k = 0; k < rows.taps.count; k += kRun) {
                takeTaps(p, rows, d, k, taps, [&](Index) { return lines; });
                for (Index j = 0; j < taps.count; j++) {
                    const Index y = clampIndex(rows.taps.first + k + j, p.y.length);
                    if (y >= done) {
                        from = y;
                        done = high + 1 - y < kRows ? high + 1 : y + kRows;
                        filterGroup<T, NC>(b, &p.x, c, from, static_cast<int>(done - from), to);
                    }
                    RowTaps<A> one;
                    one.line[0] = to[y - from];
                    one.weight[0] = taps.weight[j];
                    one.count = 1;
                    acc = addLines<T, NC>(one, 0, acc);
                }
            }
            put(convert<A>(acc), dst + x * NC);
        }
    }
}

template<class T, int NC> void lowPass(const qvrResizeBand* b)
{
    using A = Line<T>;
    LowPass<T, NC> p;
    p.band = b;
    qvrMakeLowPass(&b->x, b->method, sizeof(T) == 8, &p.x);
    qvrMakeLowPass(&b->y, b->method, sizeof(T) == 8, &p.y);
    const Index all = p.y.length, needed = p.y.most + kRows - 1;
    p.held = needed < all ? needed : all;
    const Index width = b->x.count;
    if (sizeof(A) == 4 && bytesOf<T, NC, double>(p, width) <= b->bufferBytes)
        return filterColumns<T, NC, double>(p, 0, width);
    // Lists of singles, for as many columns at a time as there is room for.
    Index most = 0;
    for (Index low = 0, high = width; low < high; most = low) {
        const Index middle = low + (high - low + 1) / 2;
        if (bytesOf<T, NC, A>(p, middle) <= b->bufferBytes)
            low = middle;
        else
            high = middle - 1;
    }
    if (most == 0)
        return filterWithout<T, NC>(p);
    for (Index x = 0; x < width; x += most)
        filterColumns<T, NC, A>(p, x, width - x < most ? width - x : most);
}

} // namespace

extern "C" void SLOT(ownResizeLowPass)(const qvrResizeBand* band, int pixel)
{
    byPixel(pixel, [&]<class T, int NC>() { lowPass<T, NC>(band); });
}
