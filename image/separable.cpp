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
constexpr Index kMostLists = 256; // of rows
constexpr Index kTogether = 16;   // no kernel filters more rows at a time
constexpr int kParts = 2 * 16;    // of all rows together

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
    qvrFilter x, y, ownX, ownY; // the latter without periods
    Index held;                 // lines
    bool pairs;                 // of output rows are formed together
    bool exact; // bytes: sums of singles with the columns' weights are exact, if those of rows are short, too
};

// Places without low pass come by many, and those of equal fractions have equal weights.
struct Places {
    static constexpr int kCount = 64;
    const qvrFilter* f;
    int32_t first[kCount];
    double fraction[kCount];
    double known[kCount]; // fractions whose weights are at hand; negative: none
    double weights[kCount][8];
};
void startPlaces(const qvrFilter* f, Places& p)
{
    p.f = f;
    for (Index k = 0; k < p.kCount && f->most > 2; k++)
        p.known[k] = -1;
}
// Number n of `count` places from d on; ascending n.
Index placeOf(Places& p, Index d, Index n, Index count)
{
    const Index k = n & (p.kCount - 1);
    if (k == 0)
        qvrPlacesOf(p.f, d + n, least(count - n, Index{p.kCount}), p.first, p.fraction);
    return k;
}
const double* weightsOf(Places& p, Index k)
{
    const double fraction = p.fraction[k];
    const int slot = static_cast<int>(fraction * 65521) & (p.kCount - 1);
    if (p.f->most == 2) {
        p.weights[0][0] = 1 - fraction;
        p.weights[0][1] = fraction;
        return p.weights[0];
    }
    if (p.known[slot] != fraction)
        qvrPlaceWeights(p.f, fraction, p.weights[slot]);
    p.known[slot] = fraction;
    return p.weights[slot];
}

// The taps of one output row after the other. With low pass, those of a period are kept.
struct RowLists {
    Places places;
    Index lists;
    int32_t first[kMostLists], count[kMostLists];
    double list[kRun];
};
void startRows(const qvrFilter* f, RowLists& r)
{
    startPlaces(f, r.places);
    r.lists = f->lowPass && f->period > 0 && f->period <= kRun / f->most ? f->period : 0;
    for (Index i = 0; i < r.lists; i++)
        r.count[i] = 0;
}
// Row n of `rows` from row `from` on: its weights, in `other` if they are not kept.
const double* nextRow(RowLists& r, Index from, Index n, Index rows, Index& first, Index& count, double* other)
{
    const qvrFilter* const f = r.places.f;
    if (!f->lowPass) {
        const Index k = placeOf(r.places, from, n, rows);
        first = r.places.first[k];
        count = f->most;
        return weightsOf(r.places, k);
    }
    const Index d = from + n, list = r.lists > 0 ? d % r.lists : 0, shift = r.lists > 0 ? d / r.lists * f->pixels : 0;
    double* const w = r.lists > 0 ? r.list + list * f->most : other;
    if (r.lists == 0 || r.count[list] == 0) {
        qvrTaps taps;
        qvrTapsOf(f, d, &taps);
        qvrWeightsOf(f, &taps, 0, taps.count, w);
        first = taps.first;
        count = taps.count;
        if (r.lists > 0) {
            r.first[list] = static_cast<int32_t>(first - shift);
            r.count[list] = static_cast<int32_t>(count);
        }
        return w;
    }
    first = r.first[list] + shift;
    count = r.count[list];
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

// The low pass of bytes, where zeros are left out and sums are guarded.
bool ofBytes(const qvrRowKernels* k)
{
    return k->prescribed != nullptr;
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
    c.inv = j.x.inv;
    const bool periodic = j.x.period > 0 && j.x.period < width;
    c.lists = periodic ? j.x.period : width;
    c.pixels = periodic ? j.x.pixels : 0;
    Index bytes = k->weights == qvrWeights_double || k->lineBytes == 8 ? 8 : 4;
    if (k->weights == qvrWeights_plain && c.most == 2)
        c.stride = 1;
    else
        c.stride = c.most + 2 * ofBytes(k); // a zero and an error behind the list
    c.first = space.take<int32_t>(width);
    if (k->weights == qvrWeights_double)
        c.count = space.take<int32_t>(c.lists);
    c.weights = space.take<char>(c.lists * c.stride * bytes);
    if (ofBytes(k) && j.x.doubt > 0) {
        c.ownFirst = space.take<int32_t>(width);
        c.ownCount = space.take<int32_t>(width);
        c.own = space.take<double>(width * c.stride);
    }
    c.extra = space.take<char>(k->extraBytes != nullptr ? k->extraBytes(&c) : 0);
    r.lineBytes = qvrAlignUp(width * k->channels * k->lineBytes, Index{64});
    c.marks = r.lineBytes;
    if (ofBytes(k))
        r.lineBytes += qvrAlignUp(width * k->channels, Index{512}) / 8;
    r.lines = space.take<char>(j.held * r.lineBytes);
    if (j.y.most > kRun) {
        r.rows.line = space.take<const char*>(j.y.most);
        r.rows.weight = space.take<double>(j.y.most);
        r.rows.single = space.take<float>(j.y.most);
    }
}

void makePlaces(const Job& j, Index from, qvrColumns& c)
{
    float* const singles = static_cast<float*>(c.weights);
    double* const doubles = static_cast<double*>(c.weights);
    const Index perTap = c.channels == 1 ? c.width : 1, perColumn = c.channels == 1 ? 1 : c.most;
    Places places;
    startPlaces(&j.x, places);
    for (Index x = 0; x < c.width; x++) {
        const Index k = placeOf(places, from, x, c.width);
        const double fraction = places.fraction[k];
        c.first[x] = places.first[k];
        if (c.most == 2 && j.k->lineBytes == 8) {
            doubles[x] = fraction;
        } else if (c.most == 2) {
            singles[x] = static_cast<float>(fraction);
        } else {
            const double* const w = weightsOf(places, k);
            for (Index t = 0; t < c.most; t++)
                if (j.k->lineBytes == 8)
                    doubles[x * perColumn + t * perTap] = w[t];
                else
                    singles[x * perColumn + t * perTap] = static_cast<float>(w[t]);
        }
    }
}

// The low pass at position d. Bytes times nothing are nothing: zeros at the ends are left out, and the list is filled
// with them. At the front just one where the support ends: another may have a weight in the next column, and first taps
// ascend. The error is how far sums of bytes may be from those with the weights of the place itself: these are other
// singles or taps beyond the ends.
qvrTaps makeList(const qvrFilter* f, Index d, bool wide, bool bytes, double* list, double& error)
{
    qvrTaps taps;
    qvrTapsOf(f, d, &taps);
    for (Index t = 0; t < taps.count; t += kRun)
        qvrWeightsOf(f, &taps, t, least(taps.count - t, kRun), list + t);
    const auto single = [](double v) { return static_cast<double>(static_cast<float>(v)); };
    const auto isWhole = [&](double v) { return magnitudeOf(v - __builtin_rint(v)) <= f->doubt; };
    const bool mayGrow = isWhole(taps.centre - f->reach) || isWhole(taps.centre + f->reach);
    error = mayGrow ? 255 * 3 * f->doubt : 0;
    for (Index t = 0; t < taps.count && !wide; t++) {
        error += 255 * (single(list[t] + f->doubt) - single(list[t] - f->doubt));
        list[t] = single(list[t]);
    }
    if (!bytes)
        return taps;
    if (taps.count > 1 && list[0] == 0 && taps.centre - static_cast<double>(taps.first - taps.shift) > f->reach - 0.5) {
        taps.first++;
        taps.count--;
        for (Index t = 0; t < taps.count; t++)
            list[t] = list[t + 1];
    }
    while (taps.count > 1 && list[taps.count - 1] == 0)
        taps.count--;
    for (Index t = taps.count; t <= f->most; t++)
        list[t] = 0;
    return taps;
}
void makeColumns(Job& j, Index from, qvrColumns& c)
{
    c.magnitude = c.error = 0;
    if (!j.x.lowPass)
        return makePlaces(j, from, c);
    j.exact = true;
    Index most = 0; // taps that are left
    for (Index x = 0; x < c.lists; x++) {
        double* const list = static_cast<double*>(c.weights) + x * c.stride;
        double error;
        const qvrTaps taps = makeList(&j.x, from + x, j.k->wide, ofBytes(j.k), list, error);
        if (ofBytes(j.k))
            list[c.stride - 1] = error;
        c.error = error > c.error ? error : c.error;
        double magnitude = 0;
        for (Index t = 0; t < taps.count; t++)
            magnitude += magnitudeOf(list[t]);
        j.exact &= areShort(list, taps.count);
        c.first[x] = static_cast<int32_t>(taps.first);
        c.count[x] = static_cast<int32_t>(taps.count);
        c.magnitude = magnitude > c.magnitude ? magnitude : c.magnitude;
        most = taps.count > most ? taps.count : most;
    }
    for (Index x = c.lists, list = 0, shift = c.pixels; x < c.width; x++) {
        c.first[x] = c.first[list] + static_cast<int32_t>(shift);
        const bool next = ++list == c.lists;
        list = next ? 0 : list;
        shift += next ? c.pixels : 0;
    }
    c.most = most;
    c.filter = &j.ownX;
    c.at = from;
    for (Index x = 0; c.own != nullptr && x < c.width; x++)
        c.ownCount[x] = 0;
}

char* outputAt(const Job& j, Index n, Index x)
{
    const qvrResizeBand* const b = j.band;
    return b->dst + (b->y.first + n) * b->dstStep + (b->x.first + x) * j.k->channels * j.k->elementBytes;
}

// Bytes times nothing are nothing; and how far sums of singles may be from the prescribed ones. Lines are within
// 255 (1 + magnitude) / 2 of 0, so a rounding is 2^-24 of that times the magnitude of the weights that it concerns: of
// lines one, and one of this side, five where those of lanes are added, and 2^-6 a tap for what words lack; of weights
// and products one; of the sums up to each tap two. Then other weights of the columns, and the 1e-7 of the step to a
// byte.
void guardRow(const Job& j, const qvrColumns& c, Index& first, Index& count, const double*& w, qvrRowTaps& rows)
{
    for (; count > 1 && *w == 0; w++, first++)
        count--;
    while (count > 1 && w[count - 1] == 0)
        count--;
    double magnitude = 0, sums = 0;
    for (Index t = 0; t < count; t++) {
        magnitude += magnitudeOf(w[t]);
        sums += magnitude;
    }
    const double roundings = 2 * sums + (8 + static_cast<double>(c.most) / 64) * magnitude;
    const double most = roundings * 0x1.1p-24 * 255 * (1 + c.magnitude) / 2 + magnitude * c.error + 2e-7;
    rows.guard = j.exact && areShort(w, count) ? 0 : static_cast<float>(most);
}

// The row behind the last one that the band needs.
Index endOfRows(const Job& j)
{
    const Index d = j.band->y.first + j.band->y.count - 1;
    int32_t first;
    double fraction;
    qvrTaps taps;
    if (j.y.lowPass) {
        qvrTapsOf(&j.y, d, &taps);
    } else {
        qvrPlacesOf(&j.y, d, 1, &first, &fraction);
        taps.first = first;
        taps.count = j.y.most;
    }
    return clampIndex(taps.first + taps.count - 1, j.y.length) + 1;
}

// All rows of a range of columns.
void resizeColumns(Job& j, Index from, Index width)
{
    const qvrResizeBand* const b = j.band;
    const qvrRowKernels* const k = j.k;
    Space space = {startOf(b), 0};
    const char *lines[kRun], *source[kRun];
    double weights[kRun];
    float singles[kRun];
    Range r = {};
    r.rows.line = lines;
    r.rows.source = source;
    r.rows.weight = weights;
    r.rows.nextWeight = weights + kRun / 2;
    r.rows.single = singles;
    qvrOwnRow own;
    own.filter = &j.ownY;
    own.differs = j.y.doubt > 0;
    r.rows.own = &own;
    layOut(j, width, space, r);
    makeColumns(j, b->x.first + from, r.c);
    if (k->prepare != nullptr)
        k->prepare(&r.c);
    const Index end = endOfRows(j);
    RowLists lists;
    startRows(&j.y, lists);
    const Index rows = b->y.count;
    const bool one = ofBytes(k) && lists.lists == 1;
    Index skipped = 0, taken = 0;
    const auto nextWeights = [&](Index n, Index& first, Index& count, double* to) {
        const double* w = nextRow(lists, b->y.first, n, rows, first, count, to);
        const Index begin = first;
        // A single list of bytes is taken once.
        if (!one || n == 0) {
            if (ofBytes(k)) {
                guardRow(j, r.c, first, count, w, r.rows);
                skipped = first - begin;
                taken = count;
            }
            for (Index t = 0; t < count; t++)
                to[t] = w[t];
            for (Index t = 0; t < count && k->elementBytes == 1; t++)
                r.rows.single[t] = static_cast<float>(to[t]);
        } else {
            first += skipped;
            count = taken;
        }
        if (ofBytes(k)) {
            own.at = b->y.first + n;
            own.first = first;
            own.count = count;
            own.made = 0;
            for (Index t = 0; t < count; t++)
                source[t] = b->src + clampIndex(first + t, j.y.length) * b->srcStep;
        }
        return begin;
    };
    int32_t finite = 0;
    r.c.finite = &finite;
    r.rows.ahead = qvrAheadOf(b, k->channels * k->elementBytes);
    Index tame = 0;           // lines of rows from here on are finite
    Index done = 0, slot = 0; // rows below are filtered, as far as they are needed; line of row `done`
    for (Index n = 0; n < rows; n++) {
        Index first, count;
        // The row where the list begins, which may lack a zero there that the next list has a weight for.
        const Index low = clampIndex(nextWeights(n, first, count, r.rows.weight), j.y.length);
        Index high = clampIndex(first + count - 1, j.y.length), all = count;
        r.rows.count = count;
        r.rows.apart = high - clampIndex(first, j.y.length) == count - 1;
        char* const dst = outputAt(j, n, from);
        r.rows.next = nullptr;
        if (j.pairs && n + 1 < rows) {
            Index second;
            nextWeights(n + 1, second, r.rows.nextCount, r.rows.nextWeight);
            r.rows.lag = second - first;
            const Index both = r.rows.lag + r.rows.nextCount, last = clampIndex(first + both - 1, j.y.length);
            if (r.rows.lag <= count && both >= count && last - low < j.held) {
                r.rows.next = outputAt(j, ++n, from);
                all = both;
                high = last;
            }
        }
        // Line `slot` is that of row `done`.
        const auto lineAt = [&](Index y) {
            const Index at = slot + y - done;
            return r.lines + (at < 0 ? at + j.held : at < j.held ? at : at - j.held) * r.lineBytes;
        };
        for (done = done > low ? done : low; done <= high;) {
            const char* rowsOf[kTogether];
            char* to[kTogether];
            // All rows are needed, unless output rows are further apart than their taps reach.
            const Index ahead = j.y.lowPass || j.y.inv <= static_cast<double>(j.y.most - 1)
                                    ? k->together
                                    : least(k->together, high + 1 - done);
            const Index many = least(least(end - done, j.held - (done - low)), ahead);
            for (Index i = 0; i < many; i++) {
                rowsOf[i] = b->src + (done + i) * b->srcStep;
                to[i] = lineAt(done + i);
            }
            finite = 0;
            k->filter(&r.c, rowsOf, to, many);
            done += many;
            tame = finite ? tame : done;
            slot = slot + many < j.held ? slot + many : slot + many - j.held;
        }
        char* line = lineAt(clampIndex(first, j.y.length));
        for (Index t = 0; t < all; t++) {
            r.rows.line[t] = line;
            if (first + t >= 0 && first + t < j.y.length - 1)
                line = line + r.lineBytes < r.lines + j.held * r.lineBytes ? line + r.lineBytes : r.lines;
        }
        r.rows.finite = low >= tame;
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
    if (k->elementBytes == 1) {
        const int rounded = static_cast<int>(static_cast<double>(single) + 0.5000001);
        *reinterpret_cast<uint8_t*>(to) = static_cast<uint8_t>(rounded < 0 ? 0 : rounded > 255 ? 255 : rounded);
    } else if (k->elementBytes == 4)
        __builtin_memcpy(to, &single, 4);
    else
        __builtin_memcpy(to, &sum, 8);
}

// Rows low .. high of one column to lines.
void filterFewRows(const Job& j, const qvrColumns& c, Index d, Index low, Index high, double* lines)
{
    const qvrRowKernels* const k = j.k;
    const Index lanes = k->together * k->channels;
    double parts[kRows][kParts] = {}, w[kRun];
    qvrTaps taps;
    qvrTapsOf(&j.x, d, &taps);
    for (Index t = 0; t < taps.count; t += kRun) {
        const Index n = least(taps.count - t, kRun);
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
    for (Index i = 0; i < (high + 1 - low) * k->channels; i++) {
        const double* const part = parts[i / lanes] + i % lanes;
        double sum = part[0];
        for (Index p = 1; p < k->parts; p++)
            sum += part[p * lanes];
        lines[i] = k->lineBytes == 8 ? sum : static_cast<double>(static_cast<float>(sum));
    }
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
                    filterFewRows(j, c, b->x.first + x, from, done - 1, lines);
                }
                for (Index i = 0; i < k->channels; i++)
                    acc[i] = added(k, acc[i], lines[(y - from) * k->channels + i], w[t % kRun]);
            }
            for (Index i = 0; i < k->channels; i++)
                storeSum(k, acc[i], outputAt(j, n, x) + i * k->elementBytes);
        }
}

} // namespace

extern "C" {

void qvrMakeOwnList(const qvrColumns* c, int64_t x)
{
    double error;
    const qvrTaps taps = makeList(c->filter, c->at + x, false, true, c->own + x * c->stride, error);
    c->ownFirst[x] = static_cast<int32_t>(taps.first);
    c->ownCount[x] = static_cast<int32_t>(taps.count);
}

void qvrMakeOwnRow(qvrOwnRow* row)
{
    qvrTaps taps;
    double w[kRun];
    qvrTapsOf(row->filter, row->at, &taps);
    qvrWeightsOf(row->filter, &taps, 0, taps.count, w);
    for (Index k = 0; k < row->count; k++) {
        const Index t = row->first + k - taps.first;
        row->weight[k] = t >= 0 && t < taps.count ? w[t] : 0;
    }
    row->made = 1;
}

void qvrResizeSeparable(const qvrResizeBand* b, const qvrRowKernels* kernels)
{
    Job j;
    j.band = b;
    j.k = kernels;
    qvrMakeFilter(&b->x, b->method, b->lowPass, !kernels->wide, &j.x);
    qvrMakeFilter(&b->y, b->method, b->lowPass, !kernels->wide, &j.y);
    if (kernels->prescribed != nullptr && j.x.most + j.y.most > kRun)
        j.k = kernels->prescribed;
    const auto withoutPeriods = [](qvrFilter f) {
        if (f.doubt > 0)
            f.period = 0;
        f.doubt = 0;
        return f;
    };
    j.ownX = withoutPeriods(j.x);
    j.ownY = withoutPeriods(j.y);
    if (kernels->elementBytes == 1 && !ofBytes(j.k)) {
        j.x = j.ownX;
        j.y = j.ownY;
    }
    const Index width = b->x.count;
    const Index room = b->buffer + b->bufferBytes - startOf(b);
    const auto fits = [&](Index columns) {
        Space space = {nullptr, 0};
        Range r;
        layOut(j, columns, space, r);
        return space.used <= room;
    };
    const auto hold = [&](bool pairs) {
        j.pairs = pairs;
        j.held = least(j.y.most + (pairs ? static_cast<Index>(j.y.inv) + 1 : 0) + j.k->together - 1, j.y.length);
    };
    // Linear rows are nothing but loads and stores.
    hold(kernels->elementBytes > 1 && j.y.most > 2 && j.y.most <= kRun / 4 && j.y.inv <= static_cast<double>(j.y.most));
    if (j.pairs && !fits(width))
        hold(false);
    Index most = fits(width) ? width : 0;
    for (Index low = 0, high = most == 0 ? width - 1 : 0; low < high; most = low) {
        const Index middle = low + (high - low + 1) / 2;
        if (fits(middle))
            low = middle;
        else
            high = middle - 1;
    }
    if (most == 0) {
        if (ofBytes(j.k)) {
            j.k = j.k->prescribed;
            j.x = j.ownX;
            j.y = j.ownY;
        }
        return resizeWithoutLists(j);
    }
    for (Index x = 0; x < width; x += most)
        resizeColumns(j, x, least(width - x, most));
}

} // extern "C"
