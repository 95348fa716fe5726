// Area averaging of bytes at ratios of small numbers, down to a half, in 16 bits.
//
// Along an axis of ratio p / q an output covers p parts of 1 / q of a pixel. Sums of px py <= 256 parts are below 2^16.
// A row is summed along first, once: a window of 16 bytes holds the pixels of eight neighbouring sums, which a stored
// shuffle brings to their place for each of up to three pixels. Then the rows of an output are added, and
// (sum + parts / 2) / parts is a multiplication by m = ceil(2^(16 + s) / parts), whose error m parts - 2^(16 + s) is
// small enough if the largest sum times it is below 2^(16 + s).
#ifndef QVR_IMAGE_RATIOS_H
#define QVR_IMAGE_RATIOS_H

#include "image/kernels.h"

namespace {

constexpr Index kRatioParts = 256;
constexpr int kRatioPixels = 3;    // that a sum takes at most, from a half up
constexpr Index kRatioRows = 8;    // lines: those of an output row
constexpr Index kRatioSums = 1280; // of a strip

constexpr int kWindows = kAvx2 ? 2 : 1, kGroup = 8 * kWindows;
using Sums = Vec<uint16_t, kGroup>;
using Window = Vec<uint8_t, 16>;

struct RatioGroup {
    alignas(32) uint8_t from[kRatioPixels][2 * kGroup];
    uint16_t cover[kRatioPixels][kGroup];
    Index at[kWindows]; // first bytes of the windows
};
struct RatioStrip {
    Index from, to;       // columns
    Index groups, direct; // the windows of so many lie inside the row
    int pixels;
    RatioGroup group[kRatioSums / kGroup];
    alignas(32) uint16_t line[kRatioRows][kRatioSums + 32];
};

// Columns from .. on, as many as there is room for. False: some sums are too far apart.
template<int NC> bool makeRatioStrip(const qvrResizeBand* b, const qvrSuperAxis* axis, Index from, RatioStrip& strip)
{
    strip.from = from;
    strip.to = from + kRatioSums / NC < b->x.count ? from + kRatioSums / NC : b->x.count;
    strip.groups = ((strip.to - from) * NC + kGroup - 1) / kGroup;
    strip.direct = 0;
    strip.pixels = 1;
    qvrCover before[kRatioParts];
    for (Index g = 0; g < strip.groups; g++) {
        RatioGroup& group = strip.group[g];
        qvrCover c = {};
        for (Index i = 0; i < kGroup; i++) {
            const Index sum = kGroup * g + i, x = from + sum / NC, channel = sum % NC;
            if (channel == 0 && x < strip.to) {
                // As q columns before, p pixels further on, if both are inside.
                qvrCover& kept = before[x % axis->q];
                const bool same = x - from >= axis->q && (b->x.first + x - axis->q) * axis->p + axis->at >= 0 &&
                                  kept.first + axis->p + kRatioPixels < b->x.length;
                if (same)
                    kept.first += axis->p;
                else
                    qvrCoverOf(axis, 1, b->x.first + x, &kept);
                c = kept;
            }
            if (i % 8 == 0)
                group.at[i / 8] = c.first * NC;
            const Index first = c.first * NC + channel - group.at[i / 8];
            if (c.count > kRatioPixels || first + (c.count - 1) * NC > 15)
                return false;
            for (Index t = 0; t < kRatioPixels; t++) {
                const double cover = t == 0 ? c.head : t < c.count - 1 ? static_cast<double>(axis->q) : c.tail;
                group.from[t][2 * i] = static_cast<uint8_t>(t < c.count ? first + t * NC : 128);
                group.from[t][2 * i + 1] = 128;
                group.cover[t][i] = static_cast<uint16_t>(t < c.count ? cover : 0);
            }
            strip.pixels = c.count > strip.pixels ? static_cast<int>(c.count) : strip.pixels;
        }
        strip.direct += group.at[kWindows - 1] + 16 <= Index{b->x.length} * NC;
    }
    return true;
}

// The sums of a source row of `bytes`.
template<int NC> QVR_APART void sumRatioRow(const RatioStrip& strip, const uint8_t* row, Index bytes, uint16_t* line)
{
    if constexpr (kSsse3 && NC > 0) {
        const bool three = strip.pixels == 3;
        const auto sums = [&](Index g, const uint8_t* first, const uint8_t* second) {
            using B = Vec<uint8_t, 2 * kGroup>;
            const RatioGroup& group = strip.group[g];
            const auto pixels = [&] {
                if constexpr (kWindows == 2 && NC > 0)
                    return concat(load<Window>(first), load<Window>(second));
                else
                    return load<Window>(first);
            }();
            const auto product = [&](int t) {
                return bitcast<Sums>(shuffleBytes(pixels, load<B>(group.from[t]))) * load<Sums>(group.cover[t]);
            };
            Sums sum = product(0) + product(1);
            if (three)
                sum += product(2);
            store(line + kGroup * g, sum);
        };
        for (Index g = 0; g < strip.direct; g++)
            sums(g, row + strip.group[g].at[0], row + strip.group[g].at[kWindows - 1]);
        for (Index g = strip.direct; g < strip.groups; g++) {
            alignas(16) uint8_t rest[2][16] = {};
            for (int w = 0; w < kWindows; w++)
                for (Index i = 0; i < 16 && strip.group[g].at[w] + i < bytes; i++)
                    rest[w][i] = row[strip.group[g].at[w] + i];
            sums(g, rest[0], rest[1]);
        }
    }
}

// n outputs from `rows` lines.
QVR_APART void averageRows(const uint16_t* const* line, const uint16_t* cover, Index rows, Index parts, uint16_t m,
                           int s, uint8_t* dst, Index n)
{
    const uint16_t *const first = line[0], *const second = line[rows > 1];
    const Sums c0 = splat<Sums>(cover[0]), c1 = splat<Sums>(rows > 1 ? cover[1] : uint16_t{0});
    const Sums rounding = splat<Sums>(static_cast<uint16_t>(parts / 2));
    const auto half = [&](Index i) {
        Sums sum = rounding + load<Sums>(first + i) * c0 + load<Sums>(second + i) * c1;
        for (Index k = 2; k < rows; k++)
            sum += load<Sums>(line[k] + i) * splat<Sums>(cover[k]);
        if (m > 0) {
            // The form in which compilers see the upper half of a product.
            using Wide = Vec<uint32_t, kGroup>;
            const auto product = __builtin_convertvector(sum, Wide) * __builtin_convertvector(splat<Sums>(m), Wide);
            sum = __builtin_convertvector(product >> 16, Sums);
        }
        return sum >> splat<Sums>(static_cast<uint16_t>(s));
    };
    const auto block = [&](Index i) { return packWords(half(i), half(i + kGroup)); };
    Index i = 0;
    for (; i + 2 * kGroup <= n; i += 2 * kGroup)
        store(dst + i, block(i));
    if (i < n)
        storePartial(dst + i, block(i), static_cast<int>(n - i));
}

// The whole band; false if its ratios are others, and what may have been written is to be written anew.
template<int NC> bool averageRatios(const qvrResizeBand* b, const qvrSuperAxis* x, const qvrSuperAxis* y)
{
    if (!kSsse3 || x->q == 0 || y->q == 0 || x->p > 2 * x->q || x->p * y->p > kRatioParts ||
        y->p > (kRatioRows - 2) * y->q)
        return false;
    const Index parts = x->p * y->p, largest = 255 * parts + parts / 2;
    int s = 0;
    while ((Index{2} << s) <= parts)
        s++;
    Index m = 0; // a power of two takes the shift alone
    if (parts != Index{1} << s) {
        m = ((Index{1} << (16 + s)) + parts - 1) / parts;
        if (m > 65535 || largest * (m * parts - (Index{1} << (16 + s))) >= Index{1} << (16 + s))
            return false;
    }
    if constexpr (kSsse3 && NC > 0) {
        RatioStrip strip;
        for (Index from = 0; from < b->x.count; from = strip.to) {
            if (!makeRatioStrip<NC>(b, x, from, strip))
                return false;
            const Index n = (strip.to - from) * NC;
            Index done = -1; // rows up to this one are summed
            for (Index row = 0; row < b->y.count; row++) {
                qvrCover c;
                qvrCoverOf(y, 1, b->y.first + row, &c);
                for (Index k = done < c.first ? c.first : done + 1; k < c.first + c.count; k++)
                    sumRatioRow<NC>(strip, reinterpret_cast<const uint8_t*>(sourceRow(b, k)), Index{b->x.length} * NC,
                                    strip.line[k % kRatioRows]);
                done = c.first + c.count - 1;
                const uint16_t* line[kRatioRows];
                uint16_t cover[kRatioRows];
                for (Index k = 0; k < c.count; k++) {
                    line[k] = strip.line[(c.first + k) % kRatioRows];
                    cover[k] = static_cast<uint16_t>(k == 0             ? c.head
                                                     : k == c.count - 1 ? c.tail
                                                                        : static_cast<double>(y->q));
                }
                averageRows(line, cover, c.count, parts, static_cast<uint16_t>(m), s,
                            reinterpret_cast<uint8_t*>(outputRow(b, row, NC)) + from * NC, n);
            }
        }
        return true;
    }
    return false;
}

} // namespace

#endif
