// Supersampling: every output is the mean of the source under it, weighted by area.
//
// For an output row the source rows are added first, in one line as wide as the source: the covered part of the first
// row, whole rows, the part of the last. The line is then added up in the same way for every output. A part of a pixel
// below 1e-7 is left out. Each row and column starts from its own position, so nothing is carried from one output to
// the next. Pixels outside the image are more of its edge.
//
// Bytes at a ratio of small whole numbers are counted in parts of a pixel: sums are whole, in singles below 2^24, and
// the mean is exact, halves rounded up. Floats are added in double, in groups of eight and those in pairs.
//
// The outputs of a row go in strips whose columns are worked out once for all rows. The line is as long as the buffer
// allows; an output that needs more is added up in pieces.
#include "frame/lookup.h"
#include "image/halve.h"
#include "image/ratios.h"

namespace {

// Rows of bytes that 16-bit sums hold, and as many as are best added at a time where their order does not matter.
constexpr Index kRowsIn16 = 257, kRowsAtOnce = 16;

// Outputs of a strip, long enough to read whole pages of a row: their columns take 45 KiB of the stack.
template<class A> constexpr Index kStrip = sizeof(A) == 8 ? 512 : 640;
// Outputs of no more pixels are added up side by side; loads may reach as many pixels past the line.
constexpr Index kTaps = 8, kPast = 12;
// Pixels of floats that are added one after another: the ends and a group of eight.
constexpr Index kFew = 10;

// Columns of a strip, relative to the line's first pixel.
template<class A> struct Strip {
    Index from, to;   // outputs
    Index base, span; // pixels of the line
    Index most, taps; // of the longest output; in fours, 0: more than kTaps
    bool few;         // all outputs are of 2 to kFew pixels
    int32_t start[kStrip<A>], count[kStrip<A>];
    A head[kStrip<A>], tail[kStrip<A>];
    A weight[kTaps][kStrip<A>];
};

// A: the type of the line and of sums.
template<class A> struct Super {
    const qvrResizeBand* band;
    qvrSuperAxis x, y;
    A* line;
    Index room; // pixels in a line
    int whole;  // covers are counted in parts of a pixel
    A unitX, unitY;
    A mean, half;  // the output is sum * mean, for bytes + half, cut off; if whole, sum + half over `parts`
    A parts;       // of an output
    qvrCover rows; // of the output row at hand
};

// Sums of singles are whole and fuse at will; those of doubles are the same on every level.
template<class V> QVR_INLINE V addProduct(V a, V b, V sum)
{
    if constexpr (sizeof(Elem<V>) == 4)
        return fma(a, b, sum);
    else
        return sum + a * b;
}

// Sums of groups of eight, joined in pairs: a sum of n roundings has some log2(n).
template<class V> struct Pairwise {
    V level[32], group;
    uint32_t groups;
    int top, members;
    QVR_INLINE void start()
    {
        group = V{};
        groups = 0;
        top = members = 0;
    }
    QVR_INLINE void add(V v)
    {
        group += v;
        if (++members == 8)
            join();
    }
    QVR_INLINE void join()
    {
        for (uint32_t n = groups++; n & 1; n >>= 1)
            group = level[--top] + group;
        level[top++] = group;
        group = V{};
        members = 0;
    }
    // Eight of at(0) .. at(n - 1) from at(k) on, or the last ones.
    template<class At> QVR_INLINE void addGroup(Index k, Index n, const At& at)
    {
        V v = {}; // a member would stay in memory
        for (Index i = k; i < n && i < k + 8; i++)
            v += at(i);
        group = v;
        if (n - k >= 8)
            join();
    }
    QVR_INLINE V total()
    {
        while (top > 0)
            group = level[--top] + group;
        return group;
    }
};

// ---- Down the columns -----------------------------------------------------------------------------------------------

// Bytes: rows `from` to `to` - 1 of the output's, whole rows in 16 bits. Of many (not All at once) those of the next
// turn are asked for.
template<bool All, class A, class V>
QVR_INLINE void sumBytes(const Super<A>& s, const uint8_t* p, Index i, V, Index from, Index to)
{
    constexpr int W = lanes<V>;
    const Index step = s.band->srcStep, last = s.rows.count - 1;
    const auto part = [&](Index k, double cover, V sum) {
        const auto bytes = convert<int32_t>(load<Vec<uint8_t, W>>(p + k * step + i));
        return addProduct(convert<A>(bytes), splat<V>(static_cast<A>(cover)), sum);
    };
    V sum = All || from == 0 ? part(0, s.rows.head, V{}) : load<V>(s.line + i);
    const Index first = All || from == 0 ? 1 : from, end = All || to > last ? last : to;
    if (first < end) {
        Vec<uint16_t, W> words = {};
        for (Index k = first; k < end; k++) {
            if (!All)
                __builtin_prefetch(p + (k + kRowsAtOnce) * step + i);
            words += convert<uint16_t>(load<Vec<uint8_t, W>>(p + k * step + i));
        }
        sum = addProduct(convert<A>(convert<int32_t>(words)), splat<V>(s.unitY), sum);
    }
    if (last > 0 && (All || to > last))
        sum = part(last, s.rows.tail, sum);
    store(s.line + i, sum);
}
// M vectors: of many rows eight at a time for all of them. Each row is in pages of its own, which nothing else fetches.
template<class T, class V, int M> QVR_INLINE void sumFloats(const Super<double>& s, const T* p, Index i, double* line)
{
    const auto at = [&](Index k, Index m) {
        return reinterpret_cast<const char*>(p + i + m * lanes<V>) + k * s.band->srcStep;
    };
    const auto row = [&](Index k, Index m) { return convert<double>(load<Vec<T, lanes<V>>>(at(k, m))); };
    const Index count = s.rows.count;
    Pairwise<V> between[M];
    for (Index m = 0; m < M && count > kFew; m++)
        between[m].start();
    for (Index k = 0; k < count - 2 && count > kFew; k += 8)
        for (Index m = 0; m < M; m++)
            between[m].addGroup(k, count - 2, [&](Index r) {
                __builtin_prefetch(at(r + 9 < count ? r + 9 : count - 1, m));
                return row(r + 1, m);
            });
    for (Index m = 0; m < M; m++) {
        V sum = row(0, m) * s.rows.head;
        if (count > 2 && count <= kFew) {
            V few = row(1, m);
            for (Index k = 2; k < count - 1; k++)
                few += row(k, m);
            sum += few;
        } else if (count > kFew) {
            sum += between[m].total();
        }
        if (count > 1)
            sum += row(count - 1, m) * s.rows.tail;
        store(line + i + m * lanes<V>, sum);
    }
}

// The line for `n` elements of the source row's element `from` on.
template<class T, class A> QVR_APART void makeLine(const Super<A>& s, Index from, Index n)
{
    constexpr int N = sizeof(T) == 1 ? 64 : 4 * kLanes<A>, M = sizeof(T) == 1 ? 1 : 8;
    const T* const p = reinterpret_cast<const T*>(sourceRow(s.band, s.rows.first)) + from;
    const Index count = s.rows.count, rows = s.whole ? kRowsAtOnce : kRowsIn16;
    for (Index k = 0, to; k < count; k = to) {
        to = sizeof(T) != 1 || k + rows + 2 >= count ? count : k + rows + (k == 0);
        const auto block = [&]<class V, int Many = 1>(Index at, V v) {
            if constexpr (sizeof(T) == 1)
                k == 0 && to == count ? sumBytes<true>(s, p, at, v, k, to) : sumBytes<false>(s, p, at, v, k, to);
            else
                sumFloats<T, V, Many>(s, p, at, s.line);
        };
        Index i = 0;
        for (; i + M * N <= n; i += M * N)
            block.template operator()<Vec<A, N>, M>(i, {});
        for (; i + N <= n; i += N)
            block(i, Vec<A, N>{});
        for (; i + kLanes<A> <= n; i += kLanes<A>)
            block(i, Full<A>{});
        for (; i < n; i++)
            block(i, Vec<A, 1>{});
    }
}

// ---- Along the line -------------------------------------------------------------------------------------------------

template<class T, class A, class V> QVR_INLINE void putOutput(const Super<A>& s, T* dst, V sum)
{
    if constexpr (sizeof(T) != 1) {
        store(dst, convert<T>(sum * s.mean));
    } else if constexpr (sizeof(A) == 4) {
        // Whole numbers below 2^24. The mean is high by less than 2^-21 of it: the quotient is right where the distance
        // to the next one is 2^-12, else right or one more.
        const V raised = sum + s.half;
        const auto quotient = toIntTruncate(raised * s.mean);
        if (s.parts <= 4096)
            store(dst, packBytes(quotient));
        else
            store(dst, packBytes(quotient + (fma(convert<A>(quotient), splat<V>(-s.parts), raised) < 0)));
    } else {
        store(dst, packBytes(toIntTruncate(sum * s.mean + s.half)));
    }
}

// An output longer than the line, or one of many pixels, which are then at `line`.
template<class T, int NC, class A>
QVR_APART void longOutput(const Super<A>& s, const qvrCover& c, Index room, const A* line, T* dst)
{
    using P = Vec<A, NC>;
    Pairwise<P> between;
    between.start();
    P sum = {};
    for (Index from = 0; from < c.count; from += room) {
        const Index to = c.count - from < room ? c.count : from + room;
        if (line == nullptr)
            makeLine<T>(s, (c.first + from) * NC, (to - from) * NC);
        const A* p = line == nullptr ? s.line : line;
        for (Index j = from; j < to; j++, p += NC) {
            const P pixel = load<P>(p);
            if (j == 0)
                sum = pixel * static_cast<A>(c.head);
            else if (j == c.count - 1)
                sum = addProduct(pixel, splat<P>(static_cast<A>(c.tail)), sum + between.total() * s.unitX);
            else
                between.add(pixel);
        }
    }
    putOutput(s, dst, sum);
}

// Neighbouring outputs of floats, of 2 to kFew pixels, each as if it were alone.
template<int N> QVR_INLINE Vec<double, N> sumFew(const Super<double>& s, const Strip<double>& strip, Index x)
{
    using V = Vec<double, N>;
    const V last = convert<double>(load<Vec<int32_t, N>>(strip.count + x) - 1);
    const auto pixels = [&](Index k, V& first, V& second) {
        pairColumns([&](int i) { return s.line + strip.start[x + i] + k; }, first, second);
    };
    const auto kept = [](auto mask, V v) { return bitcast<V>(bits(v) & bitcast<Bits<V>>(mask)); };
    V first, second, between = {};
    pixels(0, first, second);
    V sum = first * load<V>(strip.head + x), end = kept(last == 1, second);
    for (Index k = 1; k < strip.most - 1; k += 2) {
        between += kept(last > static_cast<double>(k), second);
        pixels(k + 1, first, second);
        between += kept(last > static_cast<double>(k + 1), first);
        end = bitcast<V>(bits(end) | bits(kept(last == static_cast<double>(k + 1), first)) |
                         bits(kept(last == static_cast<double>(k + 2), second)));
    }
    return addProduct(end, load<V>(strip.tail + x), sum + between * s.unitX);
}

// Where the order of a sum does not matter, or there are as many outputs as lanes, they have constant numbers of taps.
template<class T, int NC, class A> constexpr bool kSideBySide = sizeof(T) == 1 && (NC == 1 || sizeof(A) == 4);

// Neighbouring outputs of one channel.
template<int N, int Taps, class A> QVR_INLINE Vec<A, N> sumTaps(const Super<A>& s, const Strip<A>& strip, Index x)
{
    using V = Vec<A, N>;
    V sum = {};
    for (Index k = 0; k < Taps; k += 4) {
        V t[4];
        if constexpr (sizeof(A) == 4) {
            fourColumns([&](int i) { return s.line + strip.start[x + i] + k; }, t);
        } else {
            pairColumns([&](int i) { return s.line + strip.start[x + i] + k; }, t[0], t[1]);
            pairColumns([&](int i) { return s.line + strip.start[x + i] + k + 2; }, t[2], t[3]);
        }
        for (int i = 0; i < 4; i++)
            sum = addProduct(t[i], load<V>(strip.weight[k + i] + x), sum);
    }
    return sum;
}

template<class T, int NC, class A> QVR_APART void stripOutputs(const Super<A>& s, const Strip<A>& strip, T* dst)
{
    const Index outputs = strip.to - strip.from;
    Index x = 0;
    if constexpr (kSideBySide<T, NC, A>) {
        const auto sums = [&]<int Taps>() {
            constexpr int N = kLanes<A>;
            const auto some = [&](Index at) { return sumTaps<N, Taps>(s, strip, x + at * N); };
            for (; NC == 1 && x < outputs && outputs >= 4 * N; x += 4 * N) {
                x = x + 4 * N <= outputs ? x : outputs - 4 * N;
                putOutput(s, dst + x, concat(concat(some(0), some(1)), concat(some(2), some(3))));
            }
            for (; x < outputs; x++) {
                Vec<A, NC> sum = {};
                for (Index k = 0; k < Taps; k++) {
                    const auto pixel = load<Vec<A, NC>>(s.line + (strip.start[x] + k) * NC);
                    sum = addProduct(pixel, splat<Vec<A, NC>>(strip.weight[k][x]), sum);
                }
                putOutput(s, dst + x * NC, sum);
            }
        };
        if (strip.taps == 4)
            sums.template operator()<4>();
        else if (strip.taps == kTaps)
            sums.template operator()<kTaps>();
    }
    if constexpr (sizeof(T) != 1) {
        constexpr int N = kLanes<double>;
        for (; strip.few && x + N <= outputs; x += N)
            putOutput(s, dst + x, sumFew<N>(s, strip, x));
    }
    for (; x < outputs; x++) {
        using P = Vec<A, NC>;
        const A* const p = s.line + Index{strip.start[x]} * NC;
        const Index last = strip.count[x] - 1;
        if (sizeof(T) != 1 && strip.count[x] > kFew) {
            const qvrCover c = {0, strip.count[x], strip.head[x], strip.tail[x]};
            longOutput<T, NC>(s, c, c.count, p, dst + x * NC);
            continue;
        }
        P sum = load<P>(p) * strip.head[x], between = {};
        for (Index j = 1; j < last; j++)
            between += load<P>(p + j * NC);
        if (last > 0)
            sum = addProduct(load<P>(p + last * NC), splat<P>(strip.tail[x]), sum + between * s.unitX);
        putOutput(s, dst + x * NC, sum);
    }
}

// ---- Small blocks of bytes ------------------------------------------------------------------------------------------

constexpr Index kBlockPixels = 0x7FFF / 255;

// words[i] = sum of `rows` bytes from p[i] down. The lines of the rows below are asked for: each row is in pages of its
// own, which nothing else fetches.
QVR_INLINE void addDown(const char* p, Index step, Index rows, uint16_t* words, Index n)
{
    const auto block = [&]<class V>(V sum, Index i) {
        for (Index k = 0; k < rows; k++) {
            const char* const at = p + k * step + i;
            __builtin_prefetch(at + rows * step);
            sum += convert<uint16_t>(load<Vec<uint8_t, lanes<V>>>(at));
        }
        store(words + i, sum);
    };
    constexpr int N = 64;
    for (Index i = 0; i < n && n >= N; i += N)
        block(Vec<uint16_t, N>{}, i + N <= n ? i : n - N);
    for (Index i = 0; i < n && n < N; i++)
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

// The outputs of a row of whole blocks; false if they are not small.
template<int NC> QVR_APART bool smallBlocks(const Super<float>& s, const Strip<float>& strip, uint8_t* dst)
{
    Index width = s.x.p;
    const Index rows = s.y.p, outputs = strip.to - strip.from, n = outputs * NC, pixels = width * rows;
    if (s.whole == 0 || s.x.q != 1 || s.y.q != 1 || pixels > kBlockPixels || s.rows.count != rows ||
        strip.span != outputs * width || s.rows.head != 1 || strip.head[0] != 1 || strip.tail[outputs - 1] > 1)
        return false;
    uint16_t* const words = reinterpret_cast<uint16_t*>(s.line);
    addDown(sourceRow(s.band, s.rows.first) + strip.base * NC, s.band->srcStep, rows, words, strip.span * NC);
    for (; width % 2 == 0; width /= 2)
        addPairs<NC>(words, outputs * width / 2);
    if (width > 1)
        addAlong<NC>(words, width, outputs);
    RatioMean mean;
    makeMean(pixels, mean);
    putRow(n, dst, [&](Index i) {
        const Sums raised = load<Sums>(words + i) + static_cast<uint16_t>(pixels / 2);
        return mulHigh(raised, splat<Sums>(static_cast<uint16_t>(mean.m))) >> static_cast<uint16_t>(mean.shift);
    });
    return true;
}

// The strip from output `from` on, as far as columns and line reach; empty if not even one output fits.
template<class A> QVR_APART void makeStrip(const Super<A>& s, Index from, bool neighbours, Strip<A>& strip)
{
    const qvrResizeBand* const b = s.band;
    strip.from = strip.to = from;
    Index least = 2;
    strip.most = 0;
    for (; strip.to < b->x.count && strip.to - from < kStrip<A>; strip.to++) {
        qvrCover c;
        qvrCoverOf(&s.x, s.whole, b->x.first + strip.to, &c);
        if (strip.to == from)
            strip.base = c.first;
        const Index span = c.first + c.count - strip.base, x = strip.to - from;
        if (span > s.room)
            break;
        strip.span = span;
        strip.start[x] = static_cast<int32_t>(c.first - strip.base);
        strip.count[x] = static_cast<int32_t>(c.count);
        strip.head[x] = static_cast<A>(c.head);
        strip.tail[x] = static_cast<A>(c.tail);
        strip.most = c.count > strip.most ? c.count : strip.most;
        least = c.count < least ? c.count : least;
    }
    strip.few = least == 2 && strip.most <= kFew;
    strip.taps = neighbours && s.x.inv <= kTaps - 1 ? qvrAlignUp(strip.most, Index{4}) : 0;
    for (Index x = 0; x < strip.to - from; x++)
        for (Index k = 0; k < strip.taps; k++) {
            const Index last = strip.count[x] - 1;
            strip.weight[k][x] = k == 0 ? strip.head[x] : k < last ? s.unitX : k == last ? strip.tail[x] : 0;
        }
}

template<class T, int NC, class A> void superBand(Super<A>& s)
{
    const qvrResizeBand* const b = s.band;
    Carver carver = bufferOf(b);
    s.line = carver.take<A>(0, 16);
    s.room = ((carver.end - carver.at) / static_cast<Index>(sizeof(A))) / NC - kPast;
    const Index width = b->x.count;
    const auto output = [&](Index n, Index x) {
        qvrCoverOf(&s.y, s.whole, b->y.first + n, &s.rows);
        return reinterpret_cast<T*>(outputRow(b, n, NC * static_cast<Index>(sizeof(T)))) + x * NC;
    };
    Strip<A> strip;
    for (Index x = 0; x < width; x = strip.to) {
        makeStrip(s, x, kSideBySide<T, NC, A>, strip);
        if (strip.to == x) {
            qvrCover c;
            qvrCoverOf(&s.x, s.whole, b->x.first + x, &c);
            for (Index n = 0; n < b->y.count; n++)
                longOutput<T, NC>(s, c, s.room, static_cast<const A*>(nullptr), output(n, x));
            strip.to++;
        } else {
            for (Index n = 0; n < b->y.count; n++) {
                T* const dst = output(n, x);
                if constexpr (sizeof(A) == 4)
                    if (smallBlocks<NC>(s, strip, dst))
                        continue;
                makeLine<T>(s, strip.base * NC, strip.span * NC);
                for (Index k = 0; k < kPast * NC; k++)
                    s.line[strip.span * NC + k] = 0;
                stripOutputs<T, NC>(s, strip, dst);
            }
        }
    }
}

template<class T, int NC> void super(const qvrResizeBand* b)
{
    if constexpr (sizeof(T) == 1)
        if (halveBand<NC>(b))
            return;
    Super<double> s = {};
    s.band = b;
    qvrMakeSuper(&b->x, &s.x);
    qvrMakeSuper(&b->y, &s.y);
    s.unitX = s.unitY = 1;
    s.half = 0.5;
    s.mean = 1 / (qvrCoverSum(&s.x) * qvrCoverSum(&s.y));
    if constexpr (sizeof(T) == 1) {
        if (s.x.p * s.y.p == 1)
            return SLOT(ownResizeNearest)(b, NC == 1 ? qvrPixel_8u_C1 : qvrPixel_8u_C4);
        if (averageQuarters<NC>(b, &s.x, &s.y) || averageRatios<NC>(b, &s.x, &s.y))
            return;
        // Sums are at most 255 times the parts of an output. sum / parts + 1/2 is a multiple of 1 / (2 parts): with
        // half of that more, no rounding takes it to the other side of a whole number.
        const double parts = static_cast<double>(s.x.p) * static_cast<double>(s.y.p);
        if (parts > 0 && parts <= 0x1p16) {
            const auto unit = [](const qvrSuperAxis& a) { return static_cast<float>(a.q); };
            const float whole = static_cast<float>(parts), half = static_cast<float>(s.x.p * s.y.p / 2);
            Super<float> f = {b,    s.x,   s.y, nullptr, 0, 1, unit(s.x), unit(s.y), (1 + 0x1p-22f) / whole,
                              half, whole, {}};
            return superBand<T, NC>(f);
        }
        if (parts > 0 && parts < 0x1p44) {
            s.whole = 1;
            s.unitX = static_cast<double>(s.x.q);
            s.unitY = static_cast<double>(s.y.q);
            s.mean = 1 / parts;
            s.half = 0.5 + 0.25 / parts;
        }
    }
    superBand<T, NC>(s);
}

} // namespace

extern "C" void SLOT(ownResizeSuper)(const qvrResizeBand* band, int pixel)
{
    byPixel(pixel, [&]<class T, int NC>() { super<T, NC>(band); });
}
