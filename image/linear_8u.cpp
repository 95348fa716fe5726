// Bilinear interpolation of bytes, in fixed point.
//
// A weight is w = trunc(frac 2^14 + 1e-7). Inside, a row is filtered to 16 bits once, h = ((2^14 - w) a + w b + 128) >>
// 8, and two rows make out = ((2^14 - w) h[near] + w h[far] + 2^19) >> 20. Where only one row or one column of the
// image is involved there is one rounding: ((2^14 - w) a + w b + 2^13) >> 14.
//
// Weights add up to 2^14, and to round down twice is to round down once, so 16 bits are enough:
//     h = 64 a + ((64 (b - a) 2 w + 2^14) >> 15)
//     out = (near + ((far - near) 4 w >> 16) + 32) >> 6, where near is the row of the larger weight
//     and for one row a + (((b - a) 2 w + 2^14) >> 15).
// A fraction that is 1 in single has the weight 2^14, for which 2 w - 1 gives the same.
#include "image/halve.h"

namespace {

constexpr int kOne = 1 << 14;
constexpr Index kRows = 64; // whose places are computed together

using Eight = Vec<int16_t, 8>;
using Block = Vec<uint8_t, 16>;

// The columns of a band, in groups of eight elements; the last group ends with the last column and may overlap the one
// before. With the lines of two rows they take 4 + 8.5 channels bytes a column, of 8 + 8 channels granted.
struct Columns {
    Index width, length, from, to; // from .. to - 1 lie inside
    Index groups;
    int32_t* first;   // left taps
    int16_t* weight;  // 2 w of each element
    int32_t* base;    // the first pixel of the 16 bytes that hold a group's taps; null: they are too far apart
    uint8_t* shuffle; // brings both taps of an element side by side
    bool plain;       // no weight but 0
};

int weightOf(double fraction)
{
    return static_cast<int>(fraction * kOne + 1e-7);
}
// The first element of a group.
template<int NC> QVR_INLINE Index placeOf(const Columns& c, Index group)
{
    const Index last = c.width * NC - 8;
    return 8 * group < last || last < 0 ? 8 * group : last;
}

template<int NC> void makeColumns(const qvrResizeBand* b, Carver& carver, Columns& c)
{
    constexpr Index pixels = 8 / NC, window = 16 / NC;
    c.width = b->x.count;
    c.length = b->x.length;
    c.groups = (c.width + pixels - 1) / pixels;
    const Index padded = c.width > pixels ? c.width : pixels;
    c.first = carver.take<int32_t>(padded, 16);
    c.weight = carver.take<int16_t>(8 * c.groups, 16);
    c.base = carver.take<int32_t>(c.groups, 16);
    c.shuffle = carver.take<uint8_t>(16 * c.groups, 16);
    qvrFilter filter;
    qvrMakeFilter(&b->x, b->method, 0, 1, &filter);
    int any = 0;
    for (Index x = 0; x < c.width; x += kRows) {
        double fraction[kRows];
        const Index count = c.width - x < kRows ? c.width - x : kRows;
        qvrPlacesOf(&filter, b->x.first + x, count, c.first + x, fraction);
        for (Index k = 0; k < count; k++) {
            const int w = weightOf(fraction[k]);
            any |= w;
            store(c.weight + (x + k) * NC, splat<Vec<int16_t, NC>>(static_cast<int16_t>(w < kOne ? 2 * w : 2 * w - 1)));
        }
    }
    c.plain = any == 0;
    for (c.from = 0; c.from < c.width && c.first[c.from] < 0;)
        c.from++;
    for (c.to = c.width; c.to > c.from && c.first[c.to - 1] >= c.length - 1;)
        c.to--;
    // From here on taps are those of the nearest column inside, and weights go by groups.
    for (Index x = 0; x < padded; x++)
        c.first[x] = static_cast<int32_t>(clampIndex(c.first[x < c.width ? x : c.width - 1], c.length - 1));
    if (const Index place = placeOf<NC>(c, c.groups - 1); place >= 0)
        store(c.weight + 8 * (c.groups - 1), load<Eight>(c.weight + place));
    bool near = kSsse3 && c.length >= window;
    for (Index g = 0; near && g < c.groups; g++) {
        const int32_t* const first = c.first + placeOf<NC>(c, g) / NC;
        const Index base = *first < c.length - window ? *first : c.length - window;
        near = first[pixels - 1] + 1 - base < window;
        c.base[g] = static_cast<int32_t>(base);
        for (Index i = 0; i < 8; i++) {
            const Index at = (first[i / NC] - base) * NC + i % NC;
            c.shuffle[16 * g + 2 * i] = static_cast<uint8_t>(at);
            c.shuffle[16 * g + 2 * i + 1] = static_cast<uint8_t>(at + NC);
        }
    }
    if (!near)
        c.base = nullptr;
}

// The taps of a group without windows.
template<int NC> QVR_INLINE Block pairsOf(const uint8_t* s, const int32_t* first)
{
    if constexpr (NC == 4) {
        using Two = Vec<uint8_t, 8>;
        const auto both = concat(load<Two>(s + Index{first[0]} * 4), load<Two>(s + Index{first[1]} * 4));
        // In two steps, for both of which SSE2 has an instruction.
        const Block taps = bitcast<Block>(opaque(shuffleBlocks<0, 2, 1, 3>(bitcast<Vec<uint32_t, 4>>(both))));
        return zipLo(taps, bitcast<Block>(reversedLanes(bitcast<Vec<uint64_t, 2>>(taps))));
    } else {
        Vec<uint16_t, 8> pairs = {};
        for (int k = 0; k < 8; k++)
            pairs[k] = load<Vec<uint16_t, 1>>(s + first[k])[0];
        return bitcast<Block>(pairs);
    }
}

// scale * a + mulRounded(scale (b - a), 2 w)
template<class V> QVR_INLINE auto filtered(V pairs, Vec<int16_t, lanes<V> / 2> weight, int scale)
{
    using Words = Vec<int16_t, lanes<V> / 2>;
    if constexpr (kSsse3) {
        using Signed = Vec<int8_t, lanes<V>>;
        const Signed left = bitcast<Signed>(splat<Words>(static_cast<int16_t>(scale)));
        const Signed apart = bitcast<Signed>(splat<Words>(static_cast<int16_t>(scale << 8 | (-scale & 255))));
        return addBytePairs(pairs, left) + mulRounded(addBytePairs(pairs, apart), weight);
    } else {
        const Words factor = splat<Words>(static_cast<int16_t>(scale));
        const Words left = bitcast<Words>(pairs) & 255, right = bitcast<Words>(bitcast<Bits<Words>>(pairs) >> 8);
        return left * factor + mulRounded((right - left) * factor, weight);
    }
}

template<int NC> QVR_APART void filterRow(const uint8_t* s, const Columns& c, int scale, int16_t* h)
{
    Index g = 0;
    if constexpr (kSsse3) {
        const auto window = [&](Index group) { return load<Block>(s + Index{c.base[group]} * NC); };
        if constexpr (kAvx2)
            for (; c.base != nullptr && g + 2 < c.groups; g += 2) {
                const auto from = load<Vec<uint8_t, 32>>(c.shuffle + 16 * g);
                const auto pairs = shuffleBytes(concat(window(g), window(g + 1)), from);
                store(h + 8 * g, filtered(pairs, load<Vec<int16_t, 16>>(c.weight + 8 * g), scale));
            }
        for (; c.base != nullptr && g < c.groups; g++) {
            const auto pairs = shuffleBytes(window(g), load<Block>(c.shuffle + 16 * g));
            store(h + placeOf<NC>(c, g), filtered(pairs, load<Eight>(c.weight + 8 * g), scale));
        }
    }
    for (; g < c.groups; g++) {
        const Index at = placeOf<NC>(c, g);
        store(h + at, filtered(pairsOf<NC>(s, c.first + at / NC), load<Eight>(c.weight + 8 * g), scale));
    }
}

// n elements of two filtered rows. The lines are longer by a block.
QVR_APART void blendRows(const int16_t* near, const int16_t* far, int w, Index n, uint8_t* dst, Index ahead)
{
    using Words = Vec<int16_t, kWords>;
    // 4 w may be 2^15, so both are negated.
    const Words weight = splat<Words>(static_cast<int16_t>(-4 * w));
    putRow(
        n, dst,
        [&](Index i) {
            const Words a = load<Words>(near + i);
            return shiftedRound<6>(a + mulHigh(a - load<Words>(far + i), weight));
        },
        ahead);
}

// Columns from .. to - 1, all of one pixel of the image.
template<int NC> void fillColumns(const uint8_t* upper, const uint8_t* lower, int w, Index from, Index to, uint8_t* dst)
{
    using Pixel = Vec<uint8_t, NC>;
    if (from == to)
        return;
    const auto a = convert<int32_t>(load<Pixel>(upper)), b = convert<int32_t>(load<Pixel>(lower));
    const Pixel pixel = convert<uint8_t>((a * (kOne - w) + b * w + kOne / 2) >> 14);
    for (Index x = from; x < to; x++)
        store(dst + x * NC, pixel);
}

template<int NC> void linear(const qvrResizeBand* b, int pixel)
{
    Carver carver = bufferOf(b);
    Columns c;
    makeColumns<NC>(b, carver, c);
    int16_t* line[2];
    for (int16_t*& each : line)
        each = carver.take<int16_t>(c.width * NC + 2 * kWords, 32);
    Index held[2] = {-1, -1};
    qvrFilter filter;
    qvrMakeFilter(&b->y, b->method, 0, 1, &filter);
    int32_t first[kRows];
    double fraction[kRows];
    const auto place = [&](Index n) {
        if (n % kRows == 0)
            qvrPlacesOf(&filter, b->y.first + n, b->y.count - n < kRows ? b->y.count - n : kRows, first, fraction);
        return n % kRows;
    };
    Index plain = 0;
    while (c.plain && plain < b->y.count && weightOf(fraction[place(plain)]) == 0)
        plain++;
    if (plain == b->y.count)
        return SLOT(ownResizeNearest)(b, pixel);
    const Index ahead = qvrAheadOf(b, NC);
    for (Index n = 0; n < b->y.count; n++) {
        const Index k = place(n), upper = clampIndex(first[k], b->y.length);
        const bool edge = first[k] < 0 || upper == b->y.length - 1;
        const Index lower = edge ? upper : upper + 1;
        const int w = weightOf(fraction[k]);
        const auto rowAt = [&](Index y) { return reinterpret_cast<const uint8_t*>(sourceRow(b, y)); };
        uint8_t* const dst = reinterpret_cast<uint8_t*>(outputRow(b, n, NC));
        const Index inside = (c.to - c.from) * NC, at = c.from * NC;
        if (inside > 0 && edge) {
            // The line of no row any more.
            held[0] = -1;
            filterRow<NC>(rowAt(upper), c, 1, line[0]);
            putRow(inside, dst + at, [&](Index i) { return load<Vec<int16_t, kWords>>(line[0] + at + i); });
        } else if (inside > 0) {
            for (Index y = upper; y <= lower; y++)
                if (held[y & 1] != y) {
                    held[y & 1] = y;
                    filterRow<NC>(rowAt(y), c, 64, line[y & 1]);
                }
            const int16_t *const a = line[upper & 1] + at, *const z = line[lower & 1] + at;
            2 * w <= kOne ? blendRows(a, z, w, inside, dst + at, ahead)
                          : blendRows(z, a, kOne - w, inside, dst + at, ahead);
        }
        const Index right = (c.length - 1) * NC;
        fillColumns<NC>(rowAt(upper), rowAt(lower), w, 0, c.from, dst);
        fillColumns<NC>(rowAt(upper) + right, rowAt(lower) + right, w, c.to, c.width, dst);
    }
}

} // namespace

extern "C" void SLOT(ownResizeLinear_8u)(const qvrResizeBand* band, int pixel)
{
    // The mean of two by two pixels: h is 32 (a + b) and out (a + b + c + d + 2) >> 2.
    if (pixel == qvrPixel_8u_C1) {
        if (!halveBand<1>(band))
            linear<1>(band, pixel);
    } else if (!halveBand<4>(band)) {
        linear<4>(band, pixel);
    }
}
