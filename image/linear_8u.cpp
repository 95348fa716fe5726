// Bilinear interpolation of bytes, in fixed point.
//
// A weight is trunc(frac 2^14 + 1e-7). Inside, a row is filtered to 16 bits once, h = (w1 s[i+1] + w0 s[i] + 128) >> 8,
// and two rows make out = (h[upper] (2^14 - wy) + h[lower] wy + 2^19) >> 20. Where only one row or one column of the
// image is involved there is one rounding: (w0 a + w1 b + 2^13) >> 14.
#include "image/halve.h"
#include "image/separable.h"

namespace {

constexpr int kOne = 1 << 14;

struct Weights {
    int16_t w0, w1;
};

// The columns of a band: start[x] is the left tap and w[x] the weights; inside for x in [from, to).
struct Columns {
    const int32_t* start;
    const Weights* w;
    Index width, from, to, length;
};
Columns columnsOf(const qvrColumns* c)
{
    Columns v = {c->first, static_cast<const Weights*>(c->weights), c->width, 0, c->width, c->length};
    while (v.from < v.width && v.start[v.from] < 0)
        v.from++;
    while (v.to > v.from && v.start[v.to - 1] >= v.length - 1)
        v.to--;
    return v;
}
QVR_INLINE int rowWeight(const qvrRowTaps* rows)
{
    return static_cast<int>(rows->weight[1] * kOne + 1e-7);
}

QVR_INLINE uint8_t blend(int a, int b, int w0, int w1)
{
    return static_cast<uint8_t>((a * w0 + b * w1 + (kOne / 2)) >> 14);
}

// The output of rows that show one source row.
template<int NC> void singleRow(const uint8_t* s, const Columns& c, uint8_t* dst)
{
    for (Index x = 0; x < c.width; x++) {
        const Index a = clampIndex(c.start[x], c.length), b = clampIndex(Index{c.start[x]} + 1, c.length);
        for (int k = 0; k < NC; k++)
            dst[x * NC + k] = blend(s[a * NC + k], s[b * NC + k], c.w[x].w0, c.w[x].w1);
    }
}

// The output of columns that show one source column, which is the first or the last.
template<int NC>
void singleColumn(const uint8_t* upper, const uint8_t* lower, const Columns& c, Index from, Index to, int wy,
                  uint8_t* dst)
{
    for (Index x = from; x < to; x++) {
        const Index at = clampIndex(c.start[x], c.length) * NC;
        for (int k = 0; k < NC; k++)
            dst[x * NC + k] = blend(upper[at + k], lower[at + k], kOne - wy, wy);
    }
}

// Outputs of one vector of 16-bit values, eight of one channel or two pixels of four, or twice as many with AVX2.
constexpr int kStep = kAvx2 ? 16 : 8;

// Neighbouring taps side by side, as 16-bit values: a0 b0 a1 b1 ...
QVR_INLINE auto widen(Vec<uint8_t, 16> pairs)
{
    return convert<int16_t>(pairs);
}

// Eight columns of one channel: the shuffle that makes their pairs of taps, widened, of the 16 bytes from the first tap
// on. Behind the groups of a row: which columns have one, from .. to - 1.
union Group {
    uint8_t from[32];
    Index run[2];
};
bool hasGroup(const Columns& c, Index x)
{
    return x + 8 <= c.width && c.start[x] >= 0 && c.start[x] + 16 <= c.length && c.start[x + 7] - c.start[x] < 15;
}
void makeGroups(qvrColumns* columns)
{
    const Columns c = columnsOf(columns);
    Group* const groups = static_cast<Group*>(columns->extra);
    Index x = 0, from = 0;
    while (x < c.width && !hasGroup(c, x))
        x += 8;
    for (from = x; kSsse3 && hasGroup(c, x); x += 8)
        for (Index i = 0; i < 32; i++)
            groups[x / 8].from[i] =
                static_cast<uint8_t>(i % 2 == 1 ? 128 : c.start[x + i / 4] - c.start[x] + i % 4 / 2);
    groups[(c.width + 7) / 8].run[0] = from;
    groups[(c.width + 7) / 8].run[1] = x;
}
// Pairs of eight columns; those outside take what is next to them, they are made anew.
QVR_INLINE Vec<int16_t, 16> pairsAt(const uint8_t* s, const Columns& c, Index x)
{
    Vec<uint16_t, 8> pairs = {};
    const auto take = [&](const auto& at) {
        for (int k = 0; k < 8; k++)
            pairs[k] = load<Vec<uint16_t, 1>>(s + at(x + k))[0];
    };
    if (x >= c.from && x + 8 <= c.to)
        take([&](Index i) { return c.start[i]; });
    else
        take([&](Index i) { return clampIndex(c.start[i], c.length - 1); });
    return convert<int16_t>(bitcast<Vec<uint8_t, 16>>(pairs));
}
template<int NC> QVR_INLINE Vec<int16_t, 16> pairsOf(const uint8_t* s, const Group& group)
{
    if constexpr (kSsse3 && NC == 1) {
        const auto window = load<Vec<uint8_t, 16>>(s);
        return bitcast<Vec<int16_t, 16>>(shuffleBytes(concat(window, window), load<Vec<uint8_t, 32>>(group.from)));
    }
    return {};
}

// Two pixels of four channels: a b of each channel side by side.
QVR_INLINE Vec<uint8_t, 16> pixelPairs(const uint8_t* s, const int32_t* at)
{
    using Eight = Vec<uint8_t, 8>;
    const auto both = concat(load<Eight>(s + Index{at[0]} * 4), load<Eight>(s + Index{at[1]} * 4));
    return __builtin_shufflevector(both, both, 0, 4, 1, 5, 2, 6, 3, 7, 8, 12, 9, 13, 10, 14, 11, 15);
}

template<int NC> void filterRow(const uint8_t* s, const Columns& c, const Group* groups, int16_t* h)
{
    using Pairs = Vec<int16_t, 16>;
    const auto rounded = [](Pairs p, Pairs w) { return shiftRight(addProductPairs(p, w) + 128, 8); };
    Index x = c.from;
    if constexpr (NC == 1) {
        const auto eight = [&](Index at) {
            store(h + at, packSaturate(rounded(pairsAt(s, c, at), load<Pairs>(c.w + at))));
        };
        const auto half = [&](Index at) {
            return rounded(pairsOf<1>(s + c.start[at], groups[at / 8]), load<Pairs>(c.w + at));
        };
        if (c.width >= 8 && c.length >= 2) {
            const Index from = groups[(c.width + 7) / 8].run[0], to = groups[(c.width + 7) / 8].run[1];
            for (x = 0; x + 8 <= c.width; x += 8) {
                for (; x >= from && x + 16 <= to; x += 16)
                    store(h + x, packSaturate(concat(half(x), half(x + 8))));
                if (x + 8 <= c.width)
                    eight(x);
            }
            return eight(c.width - 8);
        }
    } else {
        const auto two = [&](Index at) {
            const auto w = load<Vec<int32_t, 2>>(c.w + at);
            return rounded(widen(pixelPairs(s, c.start + at)),
                           bitcast<Pairs>(__builtin_shufflevector(w, w, 0, 0, 0, 0, 1, 1, 1, 1)));
        };
        for (; x + 4 <= c.to; x += 4)
            store(h + x * NC, packSaturate(concat(two(x), two(x + 2))));
    }
    for (; x < c.to; x++)
        for (int k = 0; k < NC; k++) {
            const uint8_t* const p = s + Index{c.start[x]} * NC + k;
            h[x * NC + k] = static_cast<int16_t>((p[0] * c.w[x].w0 + p[NC] * c.w[x].w1 + 128) >> 8);
        }
}

// Elements from .. to of two filtered rows. Pairs of upper and lower elements are made of 32-bit lanes, the even
// elements and the odd ones on their own, so that the results fall back into their order.
void blendRows(const int16_t* upper, const int16_t* lower, Index from, Index to, int wy, uint8_t* dst)
{
    constexpr int B = 2 * kStep;
    using D = Vec<uint32_t, kStep / 2>;
    using P = Vec<int16_t, kStep>;
    const P weights = bitcast<P>(splat<D>(static_cast<uint32_t>((kOne - wy) | (wy << 16))));
    const auto sums = [&](D pairs) { return bits(addProductPairs(bitcast<P>(pairs), weights)) + (1u << 19); };
    const auto words = [&](Index i) {
        const D a = load<D>(upper + i), b = load<D>(lower + i);
        const D even = sums((a & 0xFFFFu) | (b << 16u)), odd = sums((a >> 16u) | (b & 0xFFFF0000u));
        return bitcast<Vec<uint16_t, kStep>>((even >> 20u) | ((odd >> 4u) & 0xFFFF0000u));
    };
    const auto block = [&](Index i) { return convert<uint8_t>(concat(words(i), words(i + kStep))); };
    Index i = from;
    for (; i + B <= to; i += B)
        store(dst + i, block(i));
    if (i < to) // the rows are longer than the outputs
        storePartial(dst + i, block(i), static_cast<int>(to - i));
}

template<int NC> void filter(const qvrColumns* c, const char* const* rows, char* const* lines, Index count)
{
    for (Index r = 0; r < count; r++)
        filterRow<NC>(reinterpret_cast<const uint8_t*>(rows[r]), columnsOf(c), static_cast<const Group*>(c->extra),
                      reinterpret_cast<int16_t*>(lines[r]));
}

template<int NC> void blend(const qvrColumns* columns, const qvrRowTaps* rows, char* to)
{
    const Columns c = columnsOf(columns);
    const int wy = rowWeight(rows);
    uint8_t* const dst = reinterpret_cast<uint8_t*>(to);
    const auto* const upper = reinterpret_cast<const uint8_t*>(rows->source[0]);
    const auto* const lower = reinterpret_cast<const uint8_t*>(rows->source[1]);
    singleColumn<NC>(upper, lower, c, 0, c.from, wy, dst);
    blendRows(reinterpret_cast<const int16_t*>(rows->line[0]), reinterpret_cast<const int16_t*>(rows->line[1]),
              c.from * NC, c.to * NC, wy, dst);
    singleColumn<NC>(upper, lower, c, c.to, c.width, wy, dst);
}

// Rows that show one source row.
template<int NC> int direct(const qvrColumns* c, const qvrRowTaps* rows, char* to)
{
    if (!rows->apart)
        singleRow<NC>(reinterpret_cast<const uint8_t*>(rows->source[0]), columnsOf(c), reinterpret_cast<uint8_t*>(to));
    return !rows->apart;
}

int64_t groupBytes(const qvrColumns* c)
{
    return (c->width + 15) / 8 * static_cast<int64_t>(sizeof(Group));
}

constexpr qvrRowKernels kLinear[] = {
    {1, 1, 2, qvrWeights_words, 0, 0, 1, 1, groupBytes, makeGroups, filter<1>, blend<1>, direct<1>, nullptr, nullptr},
    {1, 4, 2, qvrWeights_words, 0, 0, 1, 1, nullptr, nullptr, filter<4>, blend<4>, direct<4>, nullptr, nullptr},
};

} // namespace

extern "C" void SLOT(ownResizeLinear_8u)(const qvrResizeBand* band, int pixel)
{
    // The mean of two by two pixels: h is 32 (a + b) and out (a + b + c + d + 2) >> 2.
    const bool halves = band->x.inv == 2 && band->y.inv == 2;
    const bool done = halves && (pixel == qvrPixel_8u_C1 ? halveBand<1>(band) : halveBand<4>(band));
    if (!done)
        qvrResizeSeparable(band, &kLinear[pixel]);
}
