// The driver of the separable methods: tables of columns, lists of rows, and a ring of filtered rows.
//
// The work buffer holds the columns' lists and the lines of the rows that an output row needs, by row number modulo
// their count: a source row is filtered once. What does not fit at once is done for a range of columns and all rows,
// then for the next range. If not even one column fits, its weights are made anew for every few rows.
#include "image/separable.h"

#include "frame/allocator.h"

namespace {

using Index = int64_t;

constexpr Index kRun = 512;       // weights on the stack at a time
constexpr Index kRows = 64;       // rows of one column at a time, where there are no lists
constexpr Index kMostPhases = 8;  // more of them are not worth sorting
constexpr Index kMostPlanes = 4;  // of doubles
constexpr Index kPhaseWidth = 64; // columns from which on they are
constexpr Index kTogether = 8;    // no kernel filters more rows at a time
constexpr int kParts = 8 * 4;
constexpr Index kMostLines = 1 << 19; // bytes of source rows as singles, which are to stay in a cache

Index clampIndex(Index i, Index length)
{
    return i < 0 ? 0 : i < length ? i : length - 1;
}
Index least(Index a, Index b)
{
    return a < b ? a : b;
}
double magnitudeOf(double v)
{
    return v < 0 ? -v : v;
}

// Arrays one behind another from the work buffer, on boundaries of 64 bytes. Without a base they are only counted.
struct Space {
    char* base;
    Index used;
    template<class T> T* take(Index count)
    {
        char* const p = base == nullptr ? nullptr : base + used;
        used += qvrAlignUp(count * static_cast<Index>(sizeof(T)), Index{64});
        return reinterpret_cast<T*>(p);
    }
};
char* startOf(const qvrResizeBand* b)
{
    return b->buffer + (-reinterpret_cast<uintptr_t>(b->buffer) & 63);
}

struct Job {
    const qvrResizeBand* band;
    const qvrRowKernels* k;
    qvrFilter x, y;
    Index held; // lines
    bool exact; // bytes: sums of singles with the columns' weights are exact, if those of rows are short, too
};

// Weights that are made already: of a low pass the lists of a period, else those of some fractions.
struct KnownWeights {
    double list[kRun];
    double fraction[kRun / 8]; // of list k, from 8 k on; negative: none
    bool made[kRun];
    Index lists;
};
void startKnown(const qvrFilter* f, KnownWeights& known)
{
    known.lists = f->period > 0 && f->period <= kRun / f->most ? f->period : 0;
    for (Index i = 0; i < known.lists; i++)
        known.made[i] = false;
    for (double& fraction : known.fraction)
        fraction = -1;
}

// All weights of position d, in `other` if they are not known.
const double* weightsOf(const qvrFilter* f, KnownWeights& known, Index d, qvrTaps& taps, double* other)
{
    double* w = other;
    bool made = false;
    if (!f->lowPass && f->most == 2) {
        w[0] = 1 - taps.fraction;
        w[1] = taps.fraction;
        made = true;
    } else if (!f->lowPass) {
        const Index slot = static_cast<Index>(taps.fraction * 65521) % (kRun / 8);
        w = known.list + 8 * slot;
        made = known.fraction[slot] == taps.fraction;
        known.fraction[slot] = taps.fraction;
    } else if (known.lists > 0) {
        w = known.list + d % known.lists * f->most;
        made = known.made[d % known.lists];
        known.made[d % known.lists] = true;
    }
    if (!made)
        qvrWeightsOf(f, &taps, 0, taps.count, w);
    return w;
}

// True if sums of bytes with the weights are exact in single, as those with eighths of 32.
bool areShort(const double* w, Index count)
{
    bool all = true;
    for (Index k = 0; k < count; k++)
        all &= w[k] * 256 == static_cast<double>(static_cast<int32_t>(w[k] * 256));
    return all;
}

// Columns, or rows, that one vector of sums along a row holds.
Index lanesOf(const qvrRowKernels* k)
{
    return k->channels > 1 ? k->channels : k->together;
}

// The low pass of bytes, whose lines are source rows.
bool sumsFirst(const qvrRowKernels* k)
{
    return k->weights == qvrWeights_single;
}

// Where the arrays of a range of columns lie.
struct Range {
    qvrColumns c;
    qvrRowTaps rows;
    char* lines;
    Index lineBytes;
};
void layOut(const Job& j, Index width, Space& space, Range& r)
{
    const qvrRowKernels* const k = j.k;
    qvrColumns& c = r.c;
    c.width = width;
    c.length = j.x.length;
    c.channels = k->channels;
    c.most = j.x.most;
    const bool periodic = j.x.period > 0 && j.x.period < width;
    c.lists = periodic ? j.x.period : width;
    c.pixels = periodic ? j.x.pixels : 0;
    // Columns whose pixels, taps and all, fit into the room.
    const auto chunkOf = [&](Index more) {
        const Index lanes = k->parts > 1 && more == 0 ? lanesOf(k) : k->channels;
        const Index room = QVR_RESIZE_ROOM / lanes, rest = room - c.most - more - 2;
        const double columns = static_cast<double>(rest) / (j.x.inv * (1 + 0x1p-20) + 0x1p-20);
        const Index most = least(width, room / 2);
        return rest < 0                              ? 0
               : columns < 1                         ? 1
               : columns < static_cast<double>(most) ? static_cast<Index>(columns)
                                                     : most;
    };
    c.phases = periodic && c.lists <= kMostPhases && c.most <= kRun && k->parts <= 2 ? c.lists : 1;
    c.chunk = periodic ? chunkOf(2 * c.pixels + 1) / c.phases * c.phases : 0;
    c.planes =
        k->parts <= 2 && (k->parts == 1 || c.pixels <= kMostPlanes) && c.phases == c.lists && c.chunk >= kPhaseWidth;
    if (!c.planes) {
        c.phases = 1;
        c.chunk = chunkOf(0);
    }
    Index bytes = k->weights == qvrWeights_double || k->lineBytes == 8 ? 8 : 4;
    if (k->weights == qvrWeights_words || (k->weights == qvrWeights_plain && c.most == 2))
        c.stride = 1;
    else
        c.stride = k->weights == qvrWeights_plain    ? c.most
                   : k->weights == qvrWeights_single ? qvrAlignUp(c.most, Index{8})
                                                     : c.most;
    c.first = space.take<int32_t>(width);
    if (k->weights >= qvrWeights_double)
        c.count = space.take<int32_t>(c.lists);
    c.weights = space.take<char>(c.lists * c.stride * bytes);
    c.extra = space.take<char>((width + 15) / 8 * k->extraBytes);
    const double span = static_cast<double>(width) * j.x.inv + static_cast<double>(c.most + 2);
    c.linePixels = span < static_cast<double>(c.length) ? static_cast<Index>(span) : c.length;
    const Index columns = sumsFirst(k) ? c.linePixels : (width + c.phases - 1) / c.phases * c.phases;
    r.lineBytes = qvrAlignUp(columns * k->channels * k->lineBytes, Index{64});
    r.lines = space.take<char>(j.held * r.lineBytes);
    if (j.y.most > kRun) {
        r.rows.line = space.take<const char*>(j.y.most);
        r.rows.weight = space.take<double>(j.y.most);
        r.rows.single = space.take<float>(j.y.most);
    }
}

void storeWeights(const Job& j, qvrColumns& c, Index x, const qvrTaps& taps, const double* w, Index from, Index count)
{
    const Index at = x * c.stride + from;
    float* const singles = static_cast<float*>(c.weights);
    double* const doubles = static_cast<double*>(c.weights);
    switch (j.k->weights) {
    case qvrWeights_words: {
        const int w1 = static_cast<int>(taps.fraction * (1 << 14) + 1e-7);
        static_cast<uint32_t*>(c.weights)[x] = static_cast<uint32_t>(((1 << 14) - w1) | w1 << 16);
        return;
    }
    case qvrWeights_plain:
        for (Index t = c.most == 2 ? 1 : 0; t < c.most; t++) {
            const Index i = c.most == 2 ? x : c.channels == 1 ? t * c.width + x : x * c.most + t;
            if (j.k->lineBytes == 8)
                doubles[i] = w[t];
            else
                singles[i] = static_cast<float>(w[t]);
        }
        return;
    case qvrWeights_double:
        for (Index t = 0; t < count; t++)
            doubles[at + t] = j.k->wide ? w[t] : static_cast<double>(static_cast<float>(w[t]));
        return;
    default:
        for (Index t = 0; t < count; t++)
            singles[at + t] = static_cast<float>(w[t]);
    }
}

void makeColumns(Job& j, Index from, qvrColumns& c)
{
    c.magnitude = 0;
    c.least = c.most;
    KnownWeights known;
    startKnown(&j.x, known);
    j.exact = true;
    for (Index x = 0; x < c.width; x++) {
        if (x >= c.lists) {
            c.first[x] = c.first[x - c.lists] + static_cast<int32_t>(c.pixels);
            continue;
        }
        qvrTaps taps;
        qvrTapsOf(&j.x, from + x, &taps);
        double other[kRun], magnitude = 0;
        if (!j.x.lowPass) {
            storeWeights(j, c, x, taps, weightsOf(&j.x, known, from + x, taps, other), 0, taps.count);
            c.first[x] = static_cast<int32_t>(taps.first);
            continue;
        }
        for (Index t = 0; t < taps.count; t += kRun) {
            const Index n = least(taps.count - t, kRun);
            const double* const w = other;
            qvrWeightsOf(&j.x, &taps, t, n, other);
            storeWeights(j, c, x, taps, w, t, n);
            for (Index i = 0; i < n; i++)
                magnitude += magnitudeOf(w[i]);
            j.exact &= areShort(w, n);
        }
        if (j.k->weights == qvrWeights_single) {
            // Bytes times nothing are nothing.
            float* const list = static_cast<float*>(c.weights) + x * c.stride;
            for (; taps.count > 1 && list[0] == 0; taps.first++, taps.count--)
                for (Index t = 1; t < taps.count; t++)
                    list[t - 1] = list[t];
            while (taps.count > 1 && list[taps.count - 1] == 0)
                taps.count--;
            for (Index t = taps.count; t < c.stride; t++)
                list[t] = 0;
        }
        c.least = least(c.least, taps.count);
        c.first[x] = static_cast<int32_t>(taps.first);
        if (j.k->weights >= qvrWeights_double)
            c.count[x] = static_cast<int32_t>(taps.count);
        c.magnitude = magnitude > c.magnitude ? magnitude : c.magnitude;
    }
    c.lineFirst = clampIndex(c.first[0], c.length - c.linePixels + 1);
}

// A list longer than the room, one run of pixels after the other.
void sumParts(const qvrRowKernels* k, const double* parts, Index row, char* to)
{
    for (Index c = 0; c < k->channels; c++) {
        double sum = parts[row + c];
        for (Index p = 1; p < k->parts; p++)
            sum += parts[p * lanesOf(k) + row + c];
        const float single = static_cast<float>(sum);
        if (k->lineBytes == 8)
            __builtin_memcpy(to + c * 8, &sum, 8);
        else
            __builtin_memcpy(to + c * 4, &single, 4);
    }
}
void filterLong(const qvrRowKernels* k, const qvrColumns& c, const char* const* rows, char* const* lines, Index count)
{
    const Index run = QVR_RESIZE_ROOM / lanesOf(k);
    for (Index x = 0; x < c.width; x++) {
        double parts[kParts] = {};
        const Index list = x % c.lists;
        for (Index t = 0; t < c.count[list]; t += run)
            k->addTaps(&c, rows, count, c.first[x] + t, least(c.count[list] - t, run),
                       static_cast<const double*>(c.weights) + list * c.stride + t, parts);
        for (Index r = 0; r < count; r++)
            sumParts(k, parts, r, lines[r] + x * k->channels * k->lineBytes);
    }
}

char* outputAt(const Job& j, Index n, Index x)
{
    const qvrResizeBand* const b = j.band;
    return b->dst + (b->y.first + n) * b->dstStep + (b->x.first + x) * j.k->channels * j.k->elementBytes;
}

// Bytes times nothing are nothing; and how far sums of singles may be from the prescribed ones: by the roundings of
// weights, products and sums on both ways, and the 1e-7 of the step to a byte.
void guardRow(const Job& j, const qvrColumns& c, qvrTaps& taps, const double*& w, qvrRowTaps& rows)
{
    for (; taps.count > 1 && *w == 0; w++, taps.first++)
        taps.count--;
    while (taps.count > 1 && w[taps.count - 1] == 0)
        taps.count--;
    double magnitude = 0;
    for (Index t = 0; t < taps.count; t++)
        magnitude += magnitudeOf(w[t]);
    const double roundings = static_cast<double>(2 * taps.count + c.most + 8) * 0x1.1p-24;
    rows.guard =
        j.exact && areShort(w, taps.count) ? 0 : static_cast<float>(roundings * magnitude * c.magnitude * 255 + 2e-7);
}

// All rows of a range of columns.
void resizeColumns(Job& j, Index from, Index width)
{
    const qvrResizeBand* const b = j.band;
    const qvrRowKernels* const k = j.k;
    Space space = {startOf(b), 0};
    const char* lines[kRun];
    double weights[kRun];
    float singles[kRun];
    Range r = {};
    r.rows.line = lines;
    r.rows.weight = weights;
    r.rows.single = singles;
    layOut(j, width, space, r);
    makeColumns(j, b->x.first + from, r.c);
    if (k->prepare != nullptr)
        k->prepare(&r.c);
    KnownWeights known;
    startKnown(&j.y, known);
    qvrTaps last;
    qvrTapsOf(&j.y, b->y.first + b->y.count - 1, &last);
    const Index end = clampIndex(last.first + last.count - 1, j.y.length) + 1;
    Index done = 0; // rows below are filtered, as far as they are needed
    for (Index n = 0; n < b->y.count; n++) {
        qvrTaps taps;
        qvrTapsOf(&j.y, b->y.first + n, &taps);
        const double* w = weightsOf(&j.y, known, b->y.first + n, taps, r.rows.weight);
        if (sumsFirst(k))
            guardRow(j, r.c, taps, w, r.rows);
        const Index low = clampIndex(taps.first, j.y.length);
        const Index high = clampIndex(taps.first + taps.count - 1, j.y.length);
        r.rows.count = taps.count;
        r.rows.apart = high - low == taps.count - 1;
        r.rows.source[0] = b->src + low * b->srcStep;
        r.rows.source[1] = b->src + clampIndex(taps.first + 1, j.y.length) * b->srcStep;
        for (Index t = 0; t < taps.count; t++) {
            r.rows.line[t] = r.lines + clampIndex(taps.first + t, j.y.length) % j.held * r.lineBytes;
            r.rows.weight[t] = w[t];
            r.rows.single[t] = static_cast<float>(w[t]);
        }
        char* const dst = outputAt(j, n, from);
        if (k->direct != nullptr && k->direct(&r.c, &r.rows, dst))
            continue;
        for (done = done > low ? done : low; done <= high;) {
            const char* rows[kTogether];
            char* to[kTogether];
            const Index rest = least(end - done, j.held - (high - low)), many = least(rest, k->together);
            for (Index i = 0; i < many; i++) {
                rows[i] = b->src + (done + i) * b->srcStep;
                to[i] = r.lines + (done + i) % j.held * r.lineBytes;
            }
            if (r.c.chunk > 0)
                k->filter(&r.c, rows, to, many);
            else
                filterLong(k, r.c, rows, to, many);
            done += many;
        }
        k->blend(&r.c, &r.rows, dst);
    }
}

// ---- Without lists --------------------------------------------------------------------------------------------------

double added(const qvrRowKernels* k, double sum, double line, double weight)
{
    if (k->fused && k->elementBytes > 1)
        return __builtin_fma(line, weight, sum);
    const double product = line * weight;
    return k->lineBytes == 8 ? sum + product
                             : static_cast<double>(static_cast<float>(sum) + static_cast<float>(product));
}
void storeSum(const qvrRowKernels* k, double sum, char* to)
{
    const float single = static_cast<float>(sum);
    const int rounded = static_cast<int>(static_cast<double>(single) + 0.5000001);
    if (k->elementBytes == 1)
        *reinterpret_cast<uint8_t*>(to) = static_cast<uint8_t>(rounded < 0 ? 0 : rounded > 255 ? 255 : rounded);
    else if (k->elementBytes == 4)
        __builtin_memcpy(to, &single, 4);
    else
        __builtin_memcpy(to, &sum, 8);
}

// Rows low .. high of one column to lines.
void filterFewRows(const Job& j, const qvrColumns& c, Index d, Index low, Index high, char* lines)
{
    const qvrRowKernels* const k = j.k;
    const Index run = least(kRun, QVR_RESIZE_ROOM / lanesOf(k));
    double parts[kRows][kParts] = {}, w[kRun];
    qvrTaps taps;
    qvrTapsOf(&j.x, d, &taps);
    for (Index t = 0; t < taps.count; t += run) {
        const Index n = least(taps.count - t, run);
        qvrWeightsOf(&j.x, &taps, t, n, w);
        for (Index i = 0; i < n && !k->wide; i++)
            w[i] = static_cast<double>(static_cast<float>(w[i]));
        for (Index y = low; y <= high; y += k->together) {
            const char* rows[kTogether];
            const Index count = least(high + 1 - y, k->together);
            for (Index r = 0; r < count; r++)
                rows[r] = j.band->src + (y + r) * j.band->srcStep;
            k->addTaps(&c, rows, count, taps.first + t, n, w, parts[(y - low) / k->together]);
        }
    }
    for (Index y = 0; y <= high - low; y++)
        sumParts(k, parts[y / k->together], y % k->together, lines + y * k->channels * k->lineBytes);
}

void resizeWithoutLists(const Job& j)
{
    const qvrResizeBand* const b = j.band;
    const qvrRowKernels* const k = j.k;
    qvrColumns c = {};
    c.length = j.x.length;
    c.channels = k->channels;
    for (Index n = 0; n < b->y.count; n++)
        for (Index x = 0; x < b->x.count; x++) {
            double lines[kRows * 4], acc[4] = {}, w[kRun];
            qvrTaps taps;
            qvrTapsOf(&j.y, b->y.first + n, &taps);
            const Index high = clampIndex(taps.first + taps.count - 1, j.y.length);
            Index from = 0, done = 0;
            for (Index t = 0; t < taps.count; t++) {
                if (t % kRun == 0)
                    qvrWeightsOf(&j.y, &taps, t, least(taps.count - t, kRun), w);
                const Index y = clampIndex(taps.first + t, j.y.length);
                if (y >= done) {
                    from = y;
                    done = least(high + 1, y + kRows);
                    filterFewRows(j, c, b->x.first + x, from, done - 1, reinterpret_cast<char*>(lines));
                }
                for (Index i = 0; i < k->channels; i++) {
                    const Index at = (y - from) * k->channels + i;
                    float single;
                    __builtin_memcpy(&single, reinterpret_cast<const char*>(lines) + at * 4, 4);
                    acc[i] = added(k, acc[i], k->lineBytes == 8 ? lines[at] : static_cast<double>(single), w[t % kRun]);
                }
            }
            for (Index i = 0; i < k->channels; i++)
                storeSum(k, acc[i], outputAt(j, n, x) + i * k->elementBytes);
        }
}

} // namespace

extern "C" {

void qvrResizeSeparable(const qvrResizeBand* b, const qvrRowKernels* kernels)
{
    Job j;
    j.band = b;
    j.k = kernels;
    qvrMakeFilter(&b->x, b->method, b->lowPass, !kernels->wide, &j.x);
    qvrMakeFilter(&b->y, b->method, b->lowPass, !kernels->wide, &j.y);
    if (kernels->prescribed != nullptr &&
        (j.x.most * kernels->channels > QVR_RESIZE_ROOM / 4 || j.x.most + j.y.most > kRun))
        j.k = kernels->prescribed;
    j.held = least(j.y.most + j.k->together - 1, j.y.length);
    const Index width = b->x.count;
    const Index room = b->buffer + b->bufferBytes - startOf(b);
    const auto fits = [&](Index columns) {
        Space space = {nullptr, 0};
        Range r;
        layOut(j, columns, space, r);
        return space.used <= room && (columns == 1 || !sumsFirst(j.k) || j.held * r.lineBytes <= kMostLines);
    };
    Index most = fits(width) ? width : 0;
    for (Index low = 0, high = most == 0 ? width - 1 : 0; low < high; most = low) {
        const Index middle = low + (high - low + 1) / 2;
        if (fits(middle))
            low = middle;
        else
            high = middle - 1;
    }
    if (most == 0) {
        if (j.k->prescribed != nullptr)
            j.k = j.k->prescribed;
        return resizeWithoutLists(j);
    }
    for (Index x = 0; x < width; x += most)
        resizeColumns(j, x, least(width - x, most));
}

} // extern "C"
