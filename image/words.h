// The low pass of bytes: along a row by products of 16-bit words, down the columns by singles.
//
// A weight is hi 2^-14 + lo 2^-29, so a column has two whole sums, which are joined to a single. From 1/64 on weights
// are multiples of 2^-29, smaller ones are off by 2^-30 at most. A sum too near to a step between two bytes is formed
// anew as prescribed, so the bytes are the prescribed ones on every level.
//
// Tables are groups of columns in steps of 16 products each. Two windows of 16 bytes hold the pixels of half of a group
// each; a stored shuffle brings those of a step to their place, two taps of a column and channel into 32 bits, and both
// windows move on by the taps of a step. One channel has eight columns in a group, below a quarter four with twice the
// taps in a step, below a tenth two; sums of a column in several lanes are added at the end. Four channels have two.
#ifndef QVR_IMAGE_WORDS_H
#define QVR_IMAGE_WORDS_H

#include "image/streams.h"

namespace {

constexpr Index kSums = 512; // of an output row at a time
constexpr Index kMostTaps = 512;
constexpr int kRowsOfWords = 4; // that are filtered together

using Words = Vec<int16_t, 16>;
using WordSums = Vec<int32_t, 8>;
struct WordStep {
    alignas(32) int16_t hi[16], lo[16];
};
struct alignas(64) WordTable {
    Index columns, taps; // of a group; of a column in a step
    Index groups, steps; // steps of a group, behind one that holds its shuffle
    bool low, halves;    // some lo is not zero; pixels of a step are all in order
};
WordTable tableOf(const qvrColumns* c)
{
    const Index columns = c->channels == 4 ? 2 : c->inv <= 4 ? 8 : c->inv <= 10 ? 4 : 2;
    const Index all = (c->width + columns - 1) / columns, taps = 16 / (columns * c->channels);
    Index groups = c->lists; // until the lists are those of the first group again
    for (Index n = columns; n > 1 && groups % 2 == 0; n /= 2)
        groups /= 2;
    return {columns,
            taps,
            groups < all && c->lists < c->width ? groups : all,
            (c->most + taps - 1) / taps,
            false,
            columns == 8 && c->lists == 1 && c->pixels == 2};
}
Index wordsBytes(const qvrColumns* c)
{
    const WordTable t = tableOf(c);
    return static_cast<Index>(sizeof t) + t.groups * (1 + t.steps) * static_cast<Index>(sizeof(WordStep));
}

template<int NC> void makeWords(qvrColumns* c)
{
    WordTable& table = *static_cast<WordTable*>(c->extra);
    table = tableOf(c);
    // Whole groups, whose last columns nobody takes.
    for (Index x = c->width; x < qvrAlignUp(c->width, Index{8}); x++)
        c->first[x] = c->first[x - 1];
    WordStep* step = reinterpret_cast<WordStep*>(&table + 1);
    for (Index g = 0; g < table.groups; g++) {
        const Index columns = table.columns, lanes = 16 / columns;
        const int32_t* const first = c->first + g * columns;
        uint8_t* const shuffle = reinterpret_cast<uint8_t*>(step++);
        for (Index i = 0; i < 16; i++) {
            const Index column = i / lanes, tap = i % table.taps, channel = i % lanes / table.taps;
            const Index pixel = first[column] - first[i / 8 * (columns / 2)] + tap;
            shuffle[2 * i] = static_cast<uint8_t>(pixel * NC + channel);
            shuffle[2 * i + 1] = 128;
        }
        __builtin_memset(step, 0, static_cast<size_t>(table.steps) * sizeof(WordStep));
        for (Index i = 0; i < columns; i++) {
            const Index x = g * columns + i, list = c->lists < c->width ? x % c->lists : x;
            for (Index t = 0; list < c->lists && t < c->count[list]; t++) {
                const float w =
                    static_cast<float>(static_cast<const double*>(c->weights)[list * c->stride + t]) * 0x1p14f;
                const auto nearest = [](float v) { return static_cast<int16_t>(v + (v < 0 ? -0.5f : 0.5f)); };
                const int16_t hi = nearest(w);
                const int16_t lo = nearest((w - static_cast<float>(hi)) * 0x1p15f);
                table.low |= lo != 0;
                for (Index k = 0; k < NC; k++) {
                    const Index at = i * lanes + k * table.taps + t % table.taps;
                    step[t / table.taps].hi[at] = hi;
                    step[t / table.taps].lo[at] = lo;
                }
            }
        }
        step += table.steps;
    }
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

// Columns from .. to - 1 of R rows; lines have room for whole groups.
template<int NC, int R, bool Low, bool Halves>
QVR_APART void filterGroups(const qvrColumns* c, const uint8_t* const* row, Index from, Index to, float* const* line)
{
    using Window = Vec<uint8_t, 16>;
    using V = Vec<float, 8>;
    const WordTable& table = *static_cast<const WordTable*>(c->extra);
    const WordStep* const all = reinterpret_cast<const WordStep*>(&table + 1);
    const Index columns = table.columns, steps = table.steps, move = table.taps * NC;
    Index group = from == 0 ? 0 : from / columns % table.groups;
    for (Index x = from; x < to; x += columns) {
        const WordStep* step = all + group * (1 + steps);
        group = group + 1 < table.groups ? group + 1 : 0;
        const auto shuffle = load<Vec<uint8_t, 32>>(step++);
        const Index low = Index{c->first[x]} * NC, high = Index{c->first[x + columns / 2]} * NC;
        WordSums hi[R] = {}, lo[R] = {};
        for (Index k = 0; k < steps; k++, step++) {
            const Words h = load<Words>(step->hi), l = load<Words>(step->lo);
            for (int r = 0; r < R; r++) {
                const uint8_t* const p = row[r] + move * k;
                Words pixels;
                if constexpr (Halves)
                    pixels = convert<int16_t>(load<Window>(p + low));
                else if constexpr (kSsse3)
                    pixels =
                        bitcast<Words>(shuffleBytes(concat(load<Window>(p + low), load<Window>(p + high)), shuffle));
                else
                    pixels = pixelsAt<NC>(p, c->first + x, columns);
                hi[r] += addProductPairs(pixels, h);
                if constexpr (Low)
                    lo[r] += addProductPairs(pixels, l);
            }
        }
        for (int r = 0; r < R; r++) {
            V sum = convert<float>(hi[r]) * splat<V>(0x1p-14f);
            if constexpr (Low)
                sum = fma(convert<float>(lo[r]), splat<V>(0x1p-29f), sum);
            float* const out = line[r] + x * NC;
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

template<int NC, int R, bool Low, bool Halves>
void filterRows(const qvrColumns* c, const uint8_t* const* row, float* const* line)
{
    const auto part = [&](const uint8_t* const* s, Index from, Index to) {
        filterGroups<NC, R, Low, Halves>(c, s, from, to, line);
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
    const auto all = [&]<bool Low, bool Halves>() {
        if (count == kRowsOfWords)
            return filterRows<NC, kRowsOfWords, Low, Halves>(c, row, line);
        for (Index r = 0; r < count; r++)
            filterRows<NC, 1, Low, Halves>(c, row + r, line + r);
    };
    const WordTable& table = *static_cast<const WordTable*>(c->extra);
    if constexpr (NC == 1)
        if (table.halves)
            return table.low ? all.template operator()<true, true>() : all.template operator()<false, true>();
    if (table.low)
        all.template operator()<true, false>();
    else
        all.template operator()<false, false>();
}

// The prescribed sum of element i of an output row, with weights of its own place or with those that repeat.
float sumAsPrescribed(const qvrColumns* c, const qvrRowTaps* rows, uint32_t i, bool ownPlace)
{
    using P = Vec<double, 2>;
    const uint32_t nc = static_cast<uint32_t>(c->channels), x = i / nc;
    const bool own = c->own != nullptr && (ownPlace || !c->steady);
    if (own && c->ownCount[x] == 0)
        qvrMakeOwnList(c, x);
    const uint32_t list = own ? x : x % static_cast<uint32_t>(c->lists);
    const Index n = (own ? c->ownCount : c->count)[list], first = own ? c->ownFirst[x] : c->first[x];
    const bool inside = first >= 0 && first + n < c->length;
    const double* const w = (own ? c->own : static_cast<const double*>(c->weights)) + list * c->stride;
    const double* const weight = ownPlace ? rows->own->weight : rows->weight;
    float acc = 0;
    for (Index k = 0; k < rows->count; k++) {
        const uint8_t* s = reinterpret_cast<const uint8_t*>(rows->source[k]) + first * nc + i % nc;
        uint8_t pixels[kMostTaps + 8];
        for (Index t = 0; t <= n && !inside; t++)
            pixels[t] = s[(clampIndex(first + t, c->length) - first) * nc];
        s = inside ? s : pixels;
        P part = {};
        for (Index t = 0, at = 0, next = inside ? nc : 1; t < n; t += 2, at += 2 * next) // a zero follows
            part += P{static_cast<double>(s[at]), static_cast<double>(s[at + next])} * load<P>(w + t);
        acc += static_cast<float>(static_cast<double>(static_cast<float>(part[0] + part[1])) * weight[k]);
    }
    return acc;
}
QVR_APART float prescribedSum(const qvrColumns* c, const qvrRowTaps* rows, uint32_t i)
{
    qvrOwnRow* const own = rows->own;
    if (!own->differs || !own->made || (c->own != nullptr && c->ownCount[i / c->channels] == 0)) {
        // Lists that repeat give a sum that differs by roundings of lines, products and sums in the last place.
        const float sum = sumAsPrescribed(c, rows, i, false);
        const float step = sum - static_cast<float>(static_cast<int32_t>(sum)) - 0.5f;
        if (!own->differs || __builtin_fabsf(step) > static_cast<float>(2 * rows->count + 2) * 0x1p-16f)
            return sum;
        if (!own->made)
            qvrMakeOwnRow(own);
    }
    return sumAsPrescribed(c, rows, i, true);
}

// Of n sums of a row from element `from` on, those too near to a step between two bytes are formed anew.
QVR_APART void guardSums(const qvrColumns* c, const qvrRowTaps* rows, float* sum, Index from, Index n)
{
    using V = Full<float>;
    constexpr int N = lanes<V>;
    const V limit = splat<V>(0.5f - rows->guard);
    const auto near = [&](Index i) {
        const V v = load<V>(sum + i);
        return abs(v - roundNearest(v)) > limit;
    };
    for (Index k = n; k % N != 0; k++)
        sum[k] = 0;
    // They are looked for first, so that the processor works on several at a time.
    Index found[kSums / N + 1], count = 0;
    for (Index i = 0; i < n; i += N) {
        found[count] = i;
        count += anyTrue(near(i)) != 0;
    }
    for (Index k = 0; k < count; k++)
        for (uint32_t lanes = byteBits(near(found[k])); lanes != 0;) {
            const int lane = __builtin_ctz(lanes) / 4;
            lanes &= ~(15u << 4 * lane);
            sum[found[k] + lane] = prescribedSum(c, rows, static_cast<uint32_t>(from + found[k] + lane));
        }
}

QVR_APART void roundBytes(const float* sum, Index n, uint8_t* dst)
{
    constexpr int N = 4 * kLanes<float>;
    using V = Vec<float, N>;
    Index i = 0;
    for (; i + N <= n; i += N)
        store(dst + i, packBytes(roundToByte(load<V>(sum + i))));
    if (i < n)
        storePartial(dst + i, packBytes(roundToByte(loadPartial<V>(sum + i, static_cast<int>(n - i)))),
                     static_cast<int>(n - i));
}

void blendWords(const qvrColumns* c, const qvrRowTaps* rows, char* to)
{
    uint8_t* const dst = reinterpret_cast<uint8_t*>(to);
    const float* const* const line = reinterpret_cast<const float* const*>(rows->line);
    const Index n = c->width * c->channels;
    if (rows->guard == 0)
        return addStreams<float, false>(line, 0, rows->single, rows->count, dst, n);
    alignas(64) float sum[kSums + 64];
    for (Index i = 0; i < n; i += kSums) {
        const Index count = n - i < kSums ? n - i : kSums;
        addStreams<float, false>(line, i, rows->single, rows->count, sum, count);
        guardSums(c, rows, sum, i, count);
        roundBytes(sum, count, dst + i);
    }
}

} // namespace

#endif
