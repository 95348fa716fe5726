// The low pass of bytes: along a row by products of 16-bit words, down the columns by singles.
//
// A weight is hi 2^-14 + lo 2^-29, so a column has two whole sums, which are joined to a single. From 1/64 on weights
// are multiples of 2^-29, smaller ones are off by 2^-30 at most. Where a sum down the columns is too near to a step
// between two bytes, it and its neighbours are formed anew as prescribed, so the bytes are the prescribed ones on every
// level.
//
// The prescribed sum along a row is the exact one, rounded once, as long as products are multiples of 2^-44 and sums
// below 2^9: then they have 53 bits, in whatever order. Third words of weights, tiny 2^-44, give that sum; what else
// weights hold bounds its error, and sums that the error may round otherwise are formed tap by tap. Where third words
// are nothing and the sums of lo are singles, the two whole sums give the prescribed one at once.
//
// Tables are groups of columns in steps of 16 products each. Two windows of 16 bytes hold the pixels of half of a group
// each, maybe for two steps, or one all of them; a stored shuffle brings those of a step to their place, two taps of a
// column and channel into 32 bits, and windows move on by the taps of steps. One channel has eight columns in a group,
// below a quarter four with twice the taps in a step, below a tenth two; sums of a column in several lanes are added at
// the end. Four channels have two.
//
// Where all columns have one list, as at a half, it mostly is its own mirror image: then the two pixels of a weight are
// added first. Folded steps begin at both ends; what is left in the middle follows as others do.
#ifndef QVR_IMAGE_WORDS_H
#define QVR_IMAGE_WORDS_H

#include "image/streams.h"

namespace {

constexpr Index kSums = 1024;   // of an output row at a time
constexpr int kRowsOfWords = 4; // that are filtered together

using Words = Vec<int16_t, 16>;
using WordSums = Vec<int32_t, 8>;
template<int NC> constexpr uint32_t kChannels = (1u << NC) - 1;
struct WordStep {
    alignas(32) int16_t word[3][16]; // hi, lo, tiny
};
// Of a group, in place of a step.
struct alignas(32) WordGroup {
    uint8_t shuffle[32];
    float error[8];   // of the columns' sums
    uint32_t certain; // one bit for each whose sum of two words is the prescribed one
};
static_assert(sizeof(WordGroup) == sizeof(WordStep));
// Paired: two that serve two steps. Ordered: one, whose pixels need no shuffle.
enum class Windows { two, paired, one, ordered };
struct alignas(64) WordTable {
    Index columns, taps; // of a group; of a column in a step
    Index groups, steps; // steps of a group, behind what is its own
    Windows windows = Windows::two;
    bool low = false;  // some lo is not zero
    bool exact = true; // sums of two words are the prescribed ones within the errors
    // Steps of the first two words that are folded, 0: none, and of the taps between them; taps first .. last have
    // weights.
    Index folded = 0, middle = 0, first = 0, last = 0;
};
QVR_INLINE const WordGroup* groupOf(const WordTable& table, Index group)
{
    return reinterpret_cast<const WordGroup*>(&table + 1) + group * (1 + table.steps);
}
// What is folded, a shuffle for the mirrored pixels before it.
QVR_INLINE const WordGroup* foldOf(const WordTable& table)
{
    return groupOf(table, table.groups);
}
// A single list; its columns leave room enough for a second form of it.
bool mayFold(const qvrColumns* c)
{
    return kSsse3 && c->lists == 1 && c->width * c->channels >= 64;
}
WordTable tableOf(const qvrColumns* c)
{
    const Index columns = c->channels == 4 ? 2 : c->inv <= 4 ? 8 : c->inv <= 10 ? 4 : 2;
    const Index all = (c->width + columns - 1) / columns, taps = 16 / (columns * c->channels);
    Index groups = c->lists; // until the lists are those of the first group again
    for (Index n = columns; n > 1 && groups % 2 == 0; n /= 2)
        groups /= 2;
    groups = groups < all && c->lists < c->width ? groups : all;
    return {columns, taps, groups, (c->most + taps - 1) / taps};
}
Index wordsBytes(const qvrColumns* c)
{
    const WordTable t = tableOf(c);
    return static_cast<Index>(sizeof t) +
           (t.groups + mayFold(c)) * (1 + t.steps) * static_cast<Index>(sizeof(WordStep));
}

// Column x is number i of its group. The words of its list:
template<int NC> QVR_INLINE void splitList(const qvrColumns* c, WordTable& table, WordGroup* group, Index i, Index x)
{
    using V = Vec<float, 8>;
    using D = Vec<double, 8>;
    const Index taps = table.taps, base = i * taps * NC, count = c->count[x];
    const double* const list = static_cast<const double*>(c->weights) + x * c->stride;
    V sums[4] = {}; // of magnitudes of words, and of the rest
    WordStep* to = reinterpret_cast<WordStep*>(group + 1);
    for (Index t = 0, lane = base; t < count; t += 8) {
        const int some = count - t < 8 ? static_cast<int>(count - t) : 8;
        const D w = some < 8 ? loadPartial<D>(list + t, some) : load<D>(list + t);
        V left = convert<float>(w) * splat<V>(0x1p14f);
        WordSums words[3];
        for (int n = 0; n < 3; n++) {
            const V nearest = roundNearest(left);
            words[n] = toIntTruncate(nearest);
            sums[n] += abs(nearest);
            left = (left - nearest) * splat<V>(0x1p15f);
        }
        sums[3] += abs(left);
        for (int k = 0; k < some; k++) {
            for (Index j = 0; j < NC; j++)
                for (int n = 0; n < 3; n++)
                    to->word[n][lane + j * taps] = static_cast<int16_t>(words[n][k]);
            if (++lane == base + taps) {
                lane = base;
                to++;
            }
        }
    }
    float of[4] = {};
    for (int k = 0; k < 32; k++)
        of[k / 8] += sums[k / 8][k % 8];
    float most = static_cast<float>(list[c->stride - 1]) + of[3] * 0x1p-51f;
    if (most > 0)
        most += static_cast<float>(count) * 0x1p-40f;
    if (of[0] >= 0x1p15f)
        most = 512;
    for (Index k = 0; k < NC; k++)
        group->error[i * NC + k] = most;
    table.low |= of[1] > 0;
    const bool exact = of[2] == 0 && of[1] * 255 <= 0x1p24f && table.columns * NC == 8;
    table.exact &= exact;
    if (exact && most == 0)
        group->certain |= kChannels<NC> << i * NC;
}
// The same from where the list came first.
template<int NC>
QVR_INLINE void repeatList(const qvrColumns* c, const WordTable& table, WordGroup* group, Index i, Index x)
{
    using Pair = Vec<int16_t, 2>;
    const Index lanes = table.taps * NC, room = 48 * table.steps;
    const uint32_t index = static_cast<uint32_t>(x) % static_cast<uint32_t>(c->lists);
    const Index column = index & (table.columns - 1);
    const WordGroup* const other = groupOf(table, static_cast<Index>(index) >> __builtin_ctzll(table.columns));
    const int16_t* const from = reinterpret_cast<const int16_t*>(other + 1) + column * lanes;
    int16_t* const to = reinterpret_cast<int16_t*>(group + 1) + i * lanes;
    for (Index k = 0; k < lanes; k += 2)
        for (Index n = k; n < room; n += 16)
            store(to + n, load<Pair>(from + n));
    for (Index k = 0; k < NC; k++)
        group->error[i * NC + k] = other->error[column * NC + k];
    group->certain |= (other->certain >> column * NC & kChannels<NC>) << i * NC;
}

// The folded form of the only list, if it is its own mirror image.
template<int NC> void foldList(WordTable& table)
{
    const Index taps = table.taps, all = table.steps * taps;
    const WordStep* const step = reinterpret_cast<const WordStep*>(groupOf(table, 0) + 1);
    const auto word = [=](int n, Index t) { return step[t / taps].word[n][t % taps]; };
    const auto nothing = [=](Index t) { return word(0, t) == 0 && word(1, t) == 0; };
    Index first = 0, last = all - 1;
    while (first < last && nothing(first))
        first++;
    while (first < last && nothing(last))
        last--;
    for (Index i = first, j = last; i < j; i++, j--)
        if (word(0, i) != word(0, j) || word(1, i) != word(1, j))
            return;
    const Index folded = (last - first + 1) / (2 * taps), left = last - first + 1 - 2 * folded * taps;
    if (folded < 2)
        return;
    table.folded = folded;
    table.middle = (left + taps - 1) / taps;
    table.first = first;
    table.last = last;
    WordGroup* const fold = const_cast<WordGroup*>(foldOf(table));
    WordStep* const to = reinterpret_cast<WordStep*>(fold + 1);
#pragma nounroll
    for (Index k = 0; k < 32; k += 2) {
        // A step ends where it began, in descending order.
        const uint8_t tap = groupOf(table, 0)->shuffle[k];
        const Index t = k / 2 & (taps - 1);
        fold->shuffle[k] = static_cast<uint8_t>(tap + (taps - 1 - 2 * t) * NC);
        fold->shuffle[k + 1] = 128;
    }
    for (Index k = 0; k < folded + table.middle; k++)
        for (int n = 0; n < 2; n++)
#pragma nounroll
            for (Index i = 0; i < 16; i++) {
                const Index t = first + k * taps + (i & (taps - 1));
                to[k].word[n][i] = t <= last - folded * taps || k < folded ? word(n, t) : int16_t{0};
            }
}

template<int NC> void makeWords(qvrColumns* c)
{
    WordTable& table = *static_cast<WordTable*>(c->extra);
    table = tableOf(c);
    const Index columns = table.columns, taps = table.taps, lanes = taps * NC;
    // Whole groups, whose last columns nobody takes.
    for (Index x = c->width; x < qvrAlignUp(c->width, Index{8}); x++)
        c->first[x] = c->first[x - 1];
    Index widest = 0, half = 0;
    for (Index g = 0; g < table.groups; g++) {
        const int32_t *const first = c->first + g * columns, *const second = first + columns / 2;
        const Index left = second[-1] - first[0], right = second[columns / 2 - 1] - second[0];
        widest = right + second[0] - first[0] > widest ? right + second[0] - first[0] : widest;
        half = left > half ? left : half;
        half = right > half ? right : half;
    }
    if ((widest + taps) * NC <= 16)
        table.windows = columns == 8 && c->lists == 1 && c->pixels == 2 ? Windows::ordered : Windows::one;
    else if ((half + 2 * taps) * NC <= 16)
        table.windows = Windows::paired;
    for (Index g = 0; g < table.groups; g++) {
        const int32_t* const first = c->first + g * columns;
        WordGroup* const group = const_cast<WordGroup*>(groupOf(table, g));
        __builtin_memset(group, 0, static_cast<size_t>(1 + table.steps) * sizeof *group);
        uint8_t* shuffle = group->shuffle;
        for (Index i = 0; i < columns; i++) {
            const Index pixel =
                first[i] - first[table.windows <= Windows::paired && i >= columns / 2 ? columns / 2 : 0];
            for (Index k = 0; k < lanes; k++, shuffle += 2) {
                shuffle[0] = static_cast<uint8_t>((pixel + (k & (taps - 1))) * NC + (NC == 1 ? 0 : k / 2));
                shuffle[1] = 128;
            }
            const Index x = g * columns + i;
            if (x < c->lists)
                splitList<NC>(c, table, group, i, x);
            else if (c->lists < c->width)
                repeatList<NC>(c, table, group, i, x);
        }
    }
    if (mayFold(c) && table.low)
        foldList<NC>(table);
    findInside(c, (table.steps - 1) * table.taps + 16 / NC);
}

// The pixels of a step without a shuffle: from a column's own place.
template<class U> QVR_INLINE Words pixelsAt(const uint8_t* p, const int32_t* first)
{
    constexpr int N = 16 / sizeof(U);
    Vec<U, N> v = {};
    for (int i = 0; i < N; i++)
        v[i] = load<Vec<U, 1>>(p + first[i])[0];
    return convert<int16_t>(bitcast<Vec<uint8_t, 16>>(v));
}
template<int NC> QVR_INLINE Words pixelsAt(const uint8_t* p, const int32_t* first, Index columns)
{
    if constexpr (NC == 4) {
        const auto v =
            concat(load<Vec<uint8_t, 8>>(p + Index{first[0]} * 4), load<Vec<uint8_t, 8>>(p + Index{first[1]} * 4));
        return convert<int16_t>(__builtin_shufflevector(v, v, 0, 4, 1, 5, 2, 6, 3, 7, 8, 12, 9, 13, 10, 14, 11, 15));
    }
    return columns == 8   ? pixelsAt<uint16_t>(p, first)
           : columns == 4 ? pixelsAt<uint32_t>(p, first)
                          : pixelsAt<uint64_t>(p, first);
}

// The whole sums of the first N words of a group's weights, whose columns have their taps at `first`, for R rows.
template<int NC, int R, int N, Windows W, bool Folded = false>
QVR_INLINE void addSteps(const WordTable& table, const WordGroup* group, const int32_t* first,
                         const uint8_t* const* row, WordSums (&sum)[N][R], const WordGroup* fold = nullptr)
{
    using Window = Vec<uint8_t, 16>;
    using Shuffle = Vec<uint8_t, 32>;
    const Index columns = table.columns, move = table.taps * NC, all = Folded ? table.folded : table.steps;
    const Index begin = Folded ? table.first * NC : 0, end = (table.last + 1) * NC;
    const Index left = Index{first[0]} * NC, right = Index{first[columns / 2]} * NC;
    Index low = left + begin, high = W <= Windows::paired ? right + begin : low;
    Index mirrorLow = left + end, mirrorHigh = W <= Windows::paired ? right + end : mirrorLow;
    const auto shifted = [=](Shuffle s) { return s + static_cast<uint8_t>(move); };
    const Shuffle shuffle = load<Shuffle>(group->shuffle), second = shifted(shuffle);
    const Shuffle mirror = load<Shuffle>((Folded ? fold : group)->shuffle), before = shifted(mirror);
    const WordStep* const step = reinterpret_cast<const WordStep*>((Folded ? fold : group) + 1);
    const auto take = [&]<bool First, int K, bool Fold>(Index k) __attribute__((always_inline)) {
        if constexpr (Fold) {
            mirrorLow -= K * move;
            mirrorHigh -= K * move;
            __asm__("" : "+r"(mirrorLow), "+r"(mirrorHigh));
        }
        for (int r = 0; r < R; r++) {
            const uint8_t* const p = row[r];
            const auto windowsAt = [=](Index a, Index b) {
                const auto window = load<Window>(p + a);
                return concat(window, W > Windows::paired ? window : load<Window>(p + b));
            };
            Vec<uint8_t, 32> windows, mirrored;
            if constexpr (kSsse3 && (Folded || W != Windows::ordered))
                windows = windowsAt(low, high);
            if constexpr (Fold)
                mirrored = windowsAt(mirrorLow, mirrorHigh);
            for (int i = 0; i < K; i++) {
                Words pixels;
                if constexpr (W == Windows::ordered && !Folded)
                    pixels = convert<int16_t>(load<Window>(p + low));
                else if constexpr (kSsse3)
                    pixels = bitcast<Words>(shuffleBytes(windows, i == 0 ? shuffle : second));
                else
                    pixels = pixelsAt<NC>(p + move * (k + i), first, columns);
                if constexpr (Fold)
                    pixels += bitcast<Words>(shuffleBytes(mirrored, i == K - 1 ? mirror : before));
                for (int n = 0; n < N; n++) {
                    const WordSums products = addProductPairs(pixels, load<Words>(step[k + i].word[n]));
                    sum[n][r] = First && i == 0 ? products : sum[n][r] + products;
                }
            }
        }
        low += K * move;
        high += K * move;
        __asm__("" : "+r"(low), "+r"(high)); // offsets of all rows, not a pointer for each
    };
    constexpr int K = W == Windows::paired ? 2 : 1;
    if constexpr (K == 2 && !Folded)
        if (all < K)
            return take.template operator()<true, 1, false>(0);
    take.template operator()<true, K, Folded>(0);
    Index k = K;
#pragma nounroll
    for (; k + K <= all; k += K)
        take.template operator()<false, K, Folded>(k);
    if constexpr (K == 2)
        if (k < all)
            take.template operator()<false, 1, Folded>(k++);
    if constexpr (Folded)
#pragma nounroll
        for (; k < all + table.middle; k++)
            take.template operator()<false, 1, false>(k);
}

// Columns from .. to - 1 of R rows; lines have room for whole groups.
template<int NC, int R, int N, Windows W, bool Folded>
QVR_APART void filterGroups(const qvrColumns* c, const uint8_t* const* row, Index from, Index to, float* const* line)
{
    using V = Vec<float, 8>;
    // Copies: what is stored is none of them.
    const WordTable table = *static_cast<const WordTable*>(c->extra);
    const WordGroup* const groups = groupOf(*static_cast<const WordTable*>(c->extra), 0);
    const Index columns = table.columns, size = 1 + table.steps;
    const int32_t* const first = c->first;
    const uint8_t* rows[R];
    float* lines[R];
    for (int r = 0; r < R; r++) {
        rows[r] = row[r];
        lines[r] = line[r];
    }
    Index group = from == 0 ? 0 : from / columns % table.groups;
    for (Index x = from; x < to; x += columns) {
        WordSums whole[N][R];
        addSteps<NC, R, N, W, Folded>(table, groups + group * size, first + x, rows, whole,
                                      groups + table.groups * size);
        group = group + 1 < table.groups ? group + 1 : 0;
        for (int r = 0; r < R; r++) {
            V sum = convert<float>(whole[0][r]) * splat<V>(0x1p-14f);
            if constexpr (N > 1)
                sum = fma(convert<float>(whole[1][r]), splat<V>(0x1p-29f), sum);
            float* const out = lines[r] + x * NC;
            if (NC == 4 || columns == 8) {
                store(out, sum);
                continue;
            }
            const auto four = evens(::lo(sum), ::hi(sum)) + odds(::lo(sum), ::hi(sum));
            if (columns == 4)
                store(out, four);
            else
                store(out, ::lo(evens(four, four) + odds(four, four)));
        }
    }
}

template<int NC, int R, int N, Windows W, bool Folded = false>
void filterRows(const qvrColumns* c, const uint8_t* const* row, float* const* line)
{
    // One bit for each sum: it is the prescribed one.
    for (int r = 0; r < R; r++)
        __builtin_memset(reinterpret_cast<char*>(line[r]) + c->marks, 0, static_cast<size_t>(c->width * NC + 7) / 8);
    const auto part = [&](const uint8_t* const* s, Index from, Index to) {
        filterGroups<NC, R, N, W, Folded>(c, s, from, to, line);
    };
    eachOutside<R>(c, row, 0, c->from, part);
    part(row, c->from, c->to);
    eachOutside<R>(c, row, c->to, c->width, part);
}
template<int NC> void filterWords(const qvrColumns* c, const char* const* rows, char* const* lines, Index count)
{
    float* line[kRowsOfWords];
    const uint8_t* row[kRowsOfWords];
    for (Index r = 0; r < count; r++) {
        row[r] = reinterpret_cast<const uint8_t*>(rows[r]);
        line[r] = reinterpret_cast<float*>(lines[r]);
    }
    const WordTable& table = *static_cast<const WordTable*>(c->extra);
    const auto all = [&]<int N, Windows W>() {
        if constexpr (kSsse3 && N == 2) {
            constexpr Windows shuffled = W == Windows::ordered ? Windows::one : W;
            if (count == kRowsOfWords && table.folded > 0)
                return filterRows<NC, kRowsOfWords, N, shuffled, true>(c, row, line);
        }
        if (count == kRowsOfWords)
            return filterRows<NC, kRowsOfWords, N, W>(c, row, line);
        for (Index r = 0; r < count; r++)
            filterRows<NC, 1, N, W>(c, row + r, line + r);
    };
    const auto byWords = [&]<Windows W>() {
        if (table.low)
            all.template operator()<2, W>();
        else
            all.template operator()<1, W>();
    };
    if (table.windows == Windows::paired)
        return byWords.template operator()<Windows::paired>();
    if constexpr (NC == 1) { // four channels have two columns, whose windows serve two steps
        if (table.windows == Windows::ordered)
            return byWords.template operator()<Windows::ordered>();
        if (table.windows == Windows::two)
            return byWords.template operator()<Windows::two>();
    }
    byWords.template operator()<Windows::one>();
}

// ---- As prescribed --------------------------------------------------------------------------------------------------

// Element i of a row's line, tap by tap, with the weights of its own place.
template<int NC> QVR_INLINE float sumOfTaps(const qvrColumns* c, const uint8_t* row, uint32_t i)
{
    using P = Vec<double, 2>;
    const uint32_t x = i / NC;
    const bool own = c->own != nullptr;
    if (own && c->ownCount[x] == 0)
        qvrMakeOwnList(c, x);
    const uint32_t list = own ? x : x % static_cast<uint32_t>(c->lists);
    const Index n = c->stride - 2, first = own ? c->ownFirst[x] : c->first[x];
    const double* const w = (own ? c->own : static_cast<const double*>(c->weights)) + list * c->stride;
    const uint8_t* const s = row + first * NC + i % NC;
    P part = {};
    if (first >= 0 && first + n < c->length)
        for (Index t = 0; t < n; t += 2) // zeros follow
            part += P{static_cast<double>(s[t * NC]), static_cast<double>(s[(t + 1) * NC])} * load<P>(w + t);
    else
        for (Index t = 0; t < n; t++)
            part[t % 2] += static_cast<double>(s[(clampIndex(first + t, c->length) - first) * NC]) * w[t];
    return static_cast<float>(part[0] + part[1]);
}

// Elements of some eights of a row as prescribed: those that are wanted, and the others of which there is no doubt, get
// a mark. Exact: sums of two words are the prescribed ones, up to errors.
struct Eight {
    uint32_t index, wanted; // one bit for each element
};
template<int NC, bool Exact>
QVR_APART void sumEights(const qvrColumns* c, const uint8_t* row, const Eight* eights, Index count, char* to)
{
    using V = Vec<float, 8>;
    using D = Vec<double, 8>;
    constexpr int N = Exact ? 2 : 3;
    float* const line = reinterpret_cast<float*>(to);
    uint8_t* const marks = reinterpret_cast<uint8_t*>(to) + c->marks;
    const WordTable& table = *static_cast<const WordTable*>(c->extra);
    const uint32_t columns = Exact ? 8 / NC : static_cast<uint32_t>(table.columns);
    const uint32_t groups = static_cast<uint32_t>(table.groups), all = 8 / (columns * NC); // of an eight
    for (Index k = 0; k < count; k++) {
        const uint32_t eight = eights[k].index, x = eight * (8 / NC);
        const uint8_t* s = row;
        uint8_t pixels[4096 + kPastEnd];
        if (x < c->from || x >= c->to) {
            const Index base = c->first[x], last = x + 8 / NC < c->width ? x + 8 / NC - 1 : c->width - 1;
            fetch(c, row, base, c->first[last] + c->most - base, pixels);
            s = reinterpret_cast<const uint8_t*>(reinterpret_cast<uintptr_t>(pixels) -
                                                 static_cast<uintptr_t>(base * NC));
        }
        WordSums whole[N][4];
        alignas(32) float errors[16];
        uint32_t group = eight * all % groups;
        for (uint32_t g = 0; g < all; g++) {
            const WordGroup* const of = groupOf(table, group);
            WordSums sums[N][1];
            if (table.windows <= Windows::paired)
                addSteps<NC, 1, N, Windows::two>(table, of, c->first + x + g * columns, &s, sums);
            else
                addSteps<NC, 1, N, Windows::one>(table, of, c->first + x + g * columns, &s, sums);
            for (int n = 0; n < N; n++)
                whole[n][g] = sums[n][0];
            store(errors + g * columns * NC, load<V>(of->error));
            group = group + 1 < groups ? group + 1 : 0;
        }
        for (uint32_t left = all / 2; left > 0; left /= 2)
            for (auto& of : whole)
                for (uint32_t g = 0; g < left; g++)
                    of[g] = evens(of[2 * g], of[2 * g + 1]) + odds(of[2 * g], of[2 * g + 1]);
        const V error = load<V>(errors);
        V low, high; // what is prescribed is between them
        if constexpr (Exact) {
            const V most = convert<float>(whole[0][0]) * splat<V>(0x1p-14f), rest = convert<float>(whole[1][0]);
            const V sum = fma(rest, splat<V>(0x1p-29f), most), left = fma(rest, splat<V>(0x1p-29f), most - sum);
            low = sum + (left - error);
            high = sum + (left + error);
        } else {
            const D sum = (convert<double>(whole[0][0]) * splat<D>(0x1p30) +
                           convert<double>(whole[1][0]) * splat<D>(0x1p15) + convert<double>(whole[2][0])) *
                          splat<D>(0x1p-44);
            low = convert<float>(sum - convert<double>(error));
            high = convert<float>(sum + convert<double>(error));
        }
        const uint32_t doubts = static_cast<uint32_t>(laneBits(low != high));
        float* const out = line + Index{eight} * 8;
        store(out, low);
        for (uint32_t left = doubts & eights[k].wanted; left != 0; left &= left - 1) {
            const uint32_t lane = static_cast<uint32_t>(__builtin_ctz(left));
            out[lane] = sumOfTaps<NC>(c, row, x * NC + lane);
        }
        marks[eight] = static_cast<uint8_t>(eights[k].wanted | ~doubts);
    }
}

// Eights of an output row as prescribed, where their elements are near a step. Others beside them are near enough to
// what is prescribed for elements that are not near a step.
template<int NC>
QVR_APART void formAnew(const qvrColumns* c, const qvrRowTaps* rows, const Eight* eights, Index count, uint8_t* dst)
{
    using V = Vec<float, 8>;
    qvrOwnRow* const own = rows->own;
    if (own->differs && !own->made)
        qvrMakeOwnRow(own);
    const double* const weight = own->differs ? own->weight : rows->weight;
    const WordTable& table = *static_cast<const WordTable*>(c->extra);
    Eight uncertain[kSums / 8], left[kSums / 8];
    Index some = 0;
    for (Index k = 0; k < count; k++) {
        const uint32_t group = eights[k].index % static_cast<uint32_t>(table.groups);
        uncertain[some] = {eights[k].index, eights[k].wanted & ~groupOf(table, group)->certain};
        some += uncertain[some].wanted != 0;
    }
    for (Index t = 0; t < rows->count && some > 0; t++) {
        char* const line = const_cast<char*>(rows->line[t]);
        Index many = 0;
        for (Index k = 0; k < some; k++) {
            left[many] = uncertain[k];
            many += (left[many].wanted & ~static_cast<uint8_t>(line[c->marks + left[many].index])) != 0;
        }
        const uint8_t* const row = reinterpret_cast<const uint8_t*>(rows->source[t]);
        if (table.exact)
            sumEights<NC, true>(c, row, left, many, line);
        else
            sumEights<NC, false>(c, row, left, many, line);
    }
    for (Index k = 0; k < count; k++) {
        const Index i = Index{eights[k].index} * 8, rest = c->width * NC - i;
        V sum = {};
        for (Index t = 0; t < rows->count; t++) {
            const auto line = convert<double>(load<V>(reinterpret_cast<const float*>(rows->line[t]) + i));
            sum += convert<float>(line * splat<Vec<double, 8>>(weight[t]));
        }
        storeFirst(dst + i, packBytes(roundToByte(sum)), rest < 8 ? static_cast<int>(rest) : 8);
    }
}

// An output row. Eights with a sum too near to a step between two bytes are looked for first, so that the processor
// works on several at a time.
template<int NC> void blendWords(const qvrColumns* c, const qvrRowTaps* rows, char* to)
{
    uint8_t* const dst = reinterpret_cast<uint8_t*>(to);
    const float* const* const line = reinterpret_cast<const float* const*>(rows->line);
    const Index n = c->width * NC, taps = rows->count;
    if (rows->guard == 0)
        return addStreams<float, Sum::plain>(line, 0, rows->single, taps, dst, n, rows->ahead);
    const float limit = 0.5f - rows->guard, *const weight = rows->single;
    Eight found[kSums / 8 + 1];
    Index count = 0;
    const auto block = [&]<int E>(Index i, Index size) {
        using V = Vec<float, 8 * E>;
        V sum = {};
        for (Index t = 0; t < taps; t++) {
            const float* const s = line[t] + i;
            sum = fma(size == 8 * E ? load<V>(s) : loadPartial<V>(s, static_cast<int>(size)), splat<V>(weight[t]), sum);
        }
        sum = max(sum, V{});
        const auto bytes = toIntTruncate(sum + splat<V>(0.5f));
        const auto near = abs(sum - convert<float>(bytes)) > splat<V>(limit);
        const auto find = [&](Index eight, int nearOnes) __attribute__((always_inline)) {
            found[count] = {static_cast<uint32_t>(eight), static_cast<uint32_t>(nearOnes)};
            count += nearOnes != 0;
        };
        [&]<int... K>(Indices<K...>)
            __attribute__((always_inline)) { (find(i / 8 + K, laneBits(slice<8 * K, 8>(near))), ...); }(Iota<E>{});
        if (rows->ahead != 0)
            askFor(dst + i, rows->ahead, 8 * E);
        storeFirst(dst + i, packBytes(bytes), static_cast<int>(size));
    };
    for (Index i = 0, end; i < n; i = end) {
        for (end = i + kSums < n ? i + kSums : n; i + 32 <= end; i += 32)
            block.template operator()<4>(i, 32);
        for (; i < end; i += 8)
            block.template operator()<1>(i, end - i < 8 ? end - i : 8);
        if (count > 0)
            formAnew<NC>(c, rows, found, count, dst);
        count = 0;
    }
}

} // namespace

#endif
