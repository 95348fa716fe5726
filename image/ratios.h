// Area averaging of bytes at ratios of small numbers, down to a half, in 16 bits.
//
// Along an axis of ratio p / q an output covers p parts of 1 / q of a pixel. Sums of px py <= 256 parts are below 2^16.
// A row is summed along first, once: a window of 16 bytes holds the pixels of eight neighbouring sums. A stored shuffle
// brings the first two of each side by side, to be multiplied by their covers and added; another does so with the
// third, if there is one. Then the rows of an output are added, and (sum + parts / 2) / parts is a multiplication by
// m = ceil(2^(16 + s) / parts), whose error m parts - 2^(16 + s) is small enough if the largest sum times it is below
// 2^(16 + s).
#ifndef QVR_IMAGE_RATIOS_H
#define QVR_IMAGE_RATIOS_H

#include "image/halve.h"

namespace {

constexpr Index kRatioParts = 256;
constexpr Index kMostCover = 127;    // a signed byte, and so is the sum of two
constexpr Index kTogether = 4;       // rows that are summed at a time
constexpr Index kRatioRows = 8;      // lines: those of an output row and what is summed ahead
constexpr Index kRatioWindows = 160; // of a strip
constexpr Index kPassBytes = 16 << 10;

using Sums = Vec<uint16_t, kWords>;

struct RatioStrip {
    Index from, to;                                                               // windows
    bool three;                                                                   // some sums take three pixels
    int32_t at[kRatioWindows];                                                    // first pixels
    alignas(32) uint16_t bytes[2][kRatioWindows][8], covers[2][kRatioWindows][8]; // of pixels 0 and 1, of 2 and none
    alignas(32) uint16_t line[kRatioRows][8 * kRatioWindows + 32];
};

// Units of 1 / q of a pixel from position d on.
struct RatioPlace {
    Index pixel, rest; // rest: parts of the pixel that come before
};
RatioPlace ratioPlace(const qvrSuperAxis* a, Index d)
{
    const Index units = d * a->p + a->at, pixel = (units < 0 ? units - a->q + 1 : units) / a->q;
    return {pixel, units - pixel * a->q};
}
void nextPlace(const qvrSuperAxis* a, RatioPlace& place)
{
    for (place.rest += a->p; place.rest >= a->q; place.rest -= a->q)
        place.pixel++;
}

// Eight sums; pixels outside the image are those of its edge. False: they are too far apart.
template<int NC> bool makeRatioWindow(const qvrSuperAxis* a, RatioPlace place, Index w, RatioStrip& strip)
{
    using Bytes = Vec<uint16_t, NC>;
    const Index base = clampIndex(place.pixel, a->length + 1 - 16 / NC);
    bool near = true;
    strip.at[w] = static_cast<int32_t>(base);
    for (int i = 0; i < 8; i += NC, nextPlace(a, place)) {
        const Index first = a->q - place.rest, rest = a->p - first, second = rest < a->q ? rest : a->q;
        // Bytes of pixels t and t + 1 in this window, and their covers.
        const auto put = [&](Index t, Index cover, Index next) {
            const Index one = clampIndex(place.pixel + t, a->length) - base;
            const Index two = clampIndex(place.pixel + t + 1, a->length) - base;
            near &= (cover == 0 || one < 16 / NC) && (next == 0 || two < 16 / NC);
            const Bytes channels = iota<Bytes>() * 257;
            store(strip.bytes[t / 2][w] + i, channels + static_cast<uint16_t>(NC * (one | two << 8)));
            store(strip.covers[t / 2][w] + i, splat<Bytes>(static_cast<uint16_t>(cover | next << 8)));
        };
        put(0, first, second);
        if (strip.three)
            put(2, rest - second, 0);
    }
    return near;
}

// Windows from .. on of a band, as many as there is room for. False: some sums are too far apart.
template<int NC> bool makeRatioStrip(const qvrResizeBand* b, const qvrSuperAxis* a, Index from, RatioStrip& strip)
{
    constexpr Index outputs = 8 / NC;
    const Index windows = (b->x.count + outputs - 1) / outputs;
    const Index lowest = a->q & -a->q; // bit: what q and the outputs of a window have in common, at most
    const Index period = a->q / (lowest < outputs ? lowest : outputs), pixels = period * outputs / a->q * a->p;
    strip.from = from;
    strip.to = from + kRatioWindows < windows ? from + kRatioWindows : windows;
    strip.three = a->p > a->q + 1;
    Index alike = 0; // windows so far whose place is not that of an edge
    for (Index w = 0; w < strip.to - from; w++) {
        if (alike >= period && strip.at[w - period] + pixels + 16 / NC <= a->length) {
            alike++;
            strip.at[w] = strip.at[w - period] + static_cast<int32_t>(pixels);
            for (int t = 0; t <= strip.three; t++) {
                __builtin_memcpy(strip.bytes[t][w], strip.bytes[t][w - period], 16);
                __builtin_memcpy(strip.covers[t][w], strip.covers[t][w - period], 16);
            }
            continue;
        }
        const RatioPlace place = ratioPlace(a, b->x.first + (from + w) * outputs);
        if (!makeRatioWindow<NC>(a, place, w, strip))
            return false;
        alike = strip.at[w] == place.pixel ? alike + 1 : 0;
    }
    return true;
}

// The sums of R source rows, to the lines of their numbers.
template<int NC, bool Three, int R> QVR_APART void sumRatioRows(const qvrResizeBand* b, Index first, RatioStrip& strip)
{
    if constexpr (kSsse3) {
        const uint8_t* row[R];
        uint16_t* line[R];
        for (int r = 0; r < R; r++) {
            row[r] = reinterpret_cast<const uint8_t*>(sourceRow(b, first + r));
            line[r] = strip.line[(first + r) & (kRatioRows - 1)];
        }
        const auto sums = [&]<int N>(Index w) {
            using B = Vec<uint8_t, 16 * N>;
            using Covers = Vec<int8_t, 16 * N>;
            const Index at = Index{strip.at[w]} * NC, next = Index{strip.at[w + N - 1]} * NC;
            for (int r = 0; r < R; r++) {
                const auto window = [&](Index from) { return load<Vec<uint8_t, 16>>(row[r] + from); };
                B bytes;
                if constexpr (N == 2)
                    bytes = concat(window(at), window(next));
                else
                    bytes = window(at);
                const auto products = [&](int t) {
                    return addBytePairs(shuffleBytes(bytes, load<B>(strip.bytes[t][w])),
                                        load<Covers>(strip.covers[t][w]));
                };
                auto sum = products(0);
                if constexpr (Three)
                    sum += products(1);
                store(line[r] + 8 * w, sum);
            }
        };
        const Index windows = strip.to - strip.from;
        Index w = 0;
        for (; kAvx2 && w + 2 <= windows; w += 2)
            sums.template operator()<2>(w);
        for (; w < windows; w++)
            sums.template operator()<1>(w);
    }
}
template<int NC> void sumRatioRows(const qvrResizeBand* b, Index first, bool many, RatioStrip& strip)
{
    if (many)
        (strip.three ? sumRatioRows<NC, true, kTogether> : sumRatioRows<NC, false, kTogether>)(b, first, strip);
    else
        (strip.three ? sumRatioRows<NC, true, 1> : sumRatioRows<NC, false, 1>)(b, first, strip);
}

// How a sum becomes a mean: ((sum + parts / 2) m >> 16) >> shift.
struct RatioMean {
    Index parts, m;
    int shift;
};
// The largest shift for which m is below 2^16; none for a power of two, for which m is one, too. False: it is not
// exact, which it is up to 128 parts.
QVR_INLINE bool makeMean(Index parts, RatioMean& mean)
{
    mean = {parts, 0, 0};
    while ((parts & (parts - 1)) != 0 && (Index{2} << mean.shift) <= parts)
        mean.shift++;
    const Index power = Index{1} << (16 + mean.shift), largest = 255 * parts + parts / 2;
    mean.m = (power + parts - 1) / parts;
    return mean.m <= 65535 && largest * (mean.m * parts - power) < power;
}
// n outputs of the row at `place`, from R lines.
template<int R, bool Shift>
QVR_APART void averageRows(const RatioStrip& strip, const qvrSuperAxis* y, const RatioPlace& place,
                           const RatioMean& mean, uint8_t* dst, Index n)
{
    const Sums rounding = splat<Sums>(static_cast<uint16_t>(mean.parts / 2));
    const Sums m = splat<Sums>(static_cast<uint16_t>(mean.m)), shift = splat<Sums>(static_cast<uint16_t>(mean.shift));
    const uint16_t* from[R];
    Sums covers[R];
    Index left = y->p, most = y->q - place.rest;
    for (int k = 0; k < R; k++, most = y->q) {
        const Index cover = left < most ? left : most;
        left -= cover;
        from[k] = strip.line[clampIndex(place.pixel + k, y->length) & (kRatioRows - 1)];
        covers[k] = splat<Sums>(static_cast<uint16_t>(cover));
    }
    putRow(n, dst, [&](Index i) {
        Sums sum = rounding;
        for (int k = 0; k < R; k++)
            sum += load<Sums>(from[k] + i) * covers[k];
        const Sums high = mulHigh(sum, m);
        return Shift ? high >> shift : high;
    });
}

// The whole band; false if its ratios are others, and what may have been written is to be written anew.
template<int NC> bool averageRatios(const qvrResizeBand* b, const qvrSuperAxis* x, const qvrSuperAxis* y)
{
    if (!kSsse3 || x->q == 0 || y->q == 0 || x->p > 2 * x->q || x->p > kMostCover || x->p * y->p > kRatioParts ||
        y->p > (kRatioRows - kTogether) * y->q || x->length < 16 / NC)
        return false;
    RatioMean mean;
    if (!makeMean(x->p * y->p, mean))
        return false;
    const RatioPlace behind = ratioPlace(y, b->y.first + b->y.count);
    const Index last = behind.pixel < y->length ? behind.pixel : y->length; // rows before are needed
    RatioStrip strip;
    for (Index from = 0; from * 8 < b->x.count * NC; from = strip.to) {
        if (!makeRatioStrip<NC>(b, x, from, strip))
            return false;
        const Index n = (strip.to * 8 < b->x.count * NC ? strip.to * 8 : b->x.count * NC) - from * 8;
        RatioPlace place = ratioPlace(y, b->y.first);
        Index next = clampIndex(place.pixel, y->length); // row to be summed
        for (Index row = 0; row < b->y.count; row++, nextPlace(y, place)) {
            const auto average = [&]<int R>() {
                while (next <= clampIndex(place.pixel + R - 1, y->length)) {
                    const bool many = next + kTogether <= last;
                    sumRatioRows<NC>(b, next, many, strip);
                    next += many ? kTogether : 1;
                }
                uint8_t* const dst = reinterpret_cast<uint8_t*>(outputRow(b, row, NC)) + from * 8;
                (mean.shift > 0 ? averageRows<R, true> : averageRows<R, false>)(strip, y, place, mean, dst, n);
            };
            const Index end = place.rest + y->p;
            end <= 2 * y->q   ? average.template operator()<2>()
            : end <= 3 * y->q ? average.template operator()<3>()
                              : average.template operator()<kRatioRows - kTogether + 1>();
        }
    }
    return true;
}

// Even windows begin with the first pixel they need and odd ones end with the last: two of them read no pixel outside.
struct Quarters {
    struct Phase {
        int32_t at[4]; // first pixels of the windows, from that of output 0 on
        alignas(32) uint8_t bytes[64];
        alignas(32) int8_t covers[64], thrice[64];
    } phase[3];
};
template<int NC> constexpr Quarters makeQuarters()
{
    constexpr int outputs = 8 / NC, pixels = 16 / NC;
    Quarters q{};
    for (int p = 0; p < 3; p++)
        for (int w = 0; w < 4; w++) {
            const int x = p + outputs * w;
            const int base = w % 2 == 0 ? 4 * x / 3 : (4 * (x + outputs) - 1) / 3 + 1 - pixels;
            q.phase[p].at[w] = base;
            for (int i = 0; i < 16; i++) {
                const int unit = 4 * (x + i / (2 * NC)), byte = (unit / 3 - base + i % 2) * NC + i / 2 % NC;
                const int cover = i % 2 == 0 ? 3 - unit % 3 : 1 + unit % 3;
                q.phase[p].bytes[16 * w + i] = static_cast<uint8_t>(byte);
                q.phase[p].covers[16 * w + i] = static_cast<int8_t>(cover);
                q.phase[p].thrice[16 * w + i] = static_cast<int8_t>(3 * cover);
            }
        }
    return q;
}
template<int NC> constexpr Quarters kQuarters = makeQuarters<NC>();

// A block, of two vectors of sums or of one, down `groups` groups of rows.
template<int NC, int Vectors>
QVR_INLINE void quarterBlock(const Quarters::Phase& phase, const uint8_t* src, Index step, uint8_t* dst, Index down,
                             Index groups)
{
    if constexpr (kSsse3) {
        using Covers = Vec<int8_t, kHalveBytes>;
        HalveBytes bytes[Vectors];
        Covers covers[Vectors], thrice[Vectors];
        for (int k = 0; k < Vectors; k++) {
            bytes[k] = load<HalveBytes>(phase.bytes + k * kHalveBytes);
            covers[k] = load<Covers>(phase.covers + k * kHalveBytes);
            thrice[k] = load<Covers>(phase.thrice + k * kHalveBytes);
        }
        for (; groups > 0; groups--, src += 4 * step, dst += 3 * down) {
            HalveWords out[3][Vectors];
            for (int k = 0; k < Vectors; k++) {
                const auto sums = [&](Index row, Covers by) {
                    const auto window = [&](int w) {
                        return load<Vec<uint8_t, 16>>(src + row * step + Index{phase.at[w]} * NC);
                    };
                    HalveBytes both;
                    if constexpr (kAvx2)
                        both = concat(window(2 * k), window(2 * k + 1));
                    else
                        both = window(k);
                    return addBytePairs(shuffleBytes(both, bytes[k]), by);
                };
                const HalveWords one = sums(1, covers[k]), two = sums(2, covers[k]);
                out[0][k] = shiftedRound<4>(sums(0, thrice[k]) + one);
                out[1][k] = shiftedRound<3>(one + two);
                out[2][k] = shiftedRound<4>(two + sums(3, thrice[k]));
            }
            if constexpr (Vectors == 2) {
                for (int r = 0; r < 3; r++)
                    store(dst + r * down, packWords(out[r][0], out[r][1]));
            } else {
                const HalveBytes upper = packWords(out[0][0], out[1][0]);
                store(dst, lo(upper));
                store(dst + down, hi(upper));
                store(dst + 2 * down, lo(packWords(out[2][0], out[2][0])));
            }
        }
    }
}

// Groups of rows of a band from source row `top` on; unit 4 d + at is the first of output d of a row.
template<int NC> void averageGroups(const qvrResizeBand* b, Index at, Index top)
{
    // Outputs are counted from one on that begins with a pixel.
    const Index unit = 4 * b->x.first + at, from = unit % 3, left = (unit - 4 * from) / 3, n = b->x.count * NC;
    const Index groups = b->y.count / 3, pass = 1 + kPassBytes / (4 * n);
    for (Index g = 0; g < groups; g += pass) {
        const uint8_t* const src = reinterpret_cast<const uint8_t*>(sourceRow(b, top + 4 * g)) + left * NC;
        uint8_t* const dst = reinterpret_cast<uint8_t*>(outputRow(b, 3 * g, NC));
        const auto block = [&]<int Vectors>(Index i) {
            const auto x = static_cast<uint64_t>(from + i / NC);
            quarterBlock<NC, Vectors>(kQuarters<NC>.phase[x % 3], src + static_cast<Index>(x / 3) * 4 * NC, b->srcStep,
                                      dst + i, b->dstStep, groups - g < pass ? groups - g : pass);
            return i + Vectors * kWords;
        };
        for (Index i = 0; i < n;)
            i = kAvx2 && (n - i <= kWords || n < 2 * kWords)
                    ? block.template operator()<1>(i + kWords <= n ? i : n - kWords)
                    : block.template operator()<2>(i + 2 * kWords <= n ? i : n - 2 * kWords);
    }
}

// A band at 3 : 4 along both axes whose columns are inside the image; false if it is none. Rows that do not belong to
// a whole group are averaged by themselves.
template<int NC> bool averageQuarters(const qvrResizeBand* b, const qvrSuperAxis* x, const qvrSuperAxis* y)
{
    const Index from = 4 * b->x.first + x->at, to = from + 4 * b->x.count;
    if (!kSsse3 || x->q != 3 || x->p != 4 || y->q != 3 || y->p != 4 || b->x.count * NC < 16 || from < 0 ||
        to > 3 * x->length)
        return false;
    qvrResizeBand rows = *b;
    for (Index left = b->y.count; left > 0; left -= rows.y.count, rows.y.first += rows.y.count) {
        const Index unit = 4 * rows.y.first + y->at, inside = (3 * y->length - unit) / 12;
        const Index groups = unit < 0 || unit % 3 != 0 ? 0 : left / 3 < inside ? left / 3 : inside;
        rows.y.count = groups > 0 ? static_cast<int32_t>(3 * groups) : 1;
        if (groups > 0)
            averageGroups<NC>(&rows, x->at, unit / 3);
        else
            averageRatios<NC>(&rows, x, y);
    }
    return true;
}

} // namespace

#endif
