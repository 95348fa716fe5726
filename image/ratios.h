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
constexpr Index kRatioRows = 8;      // lines: those of an output row
constexpr Index kRatioWindows = 160; // of a strip

using Sums = Vec<uint16_t, kWords>;
constexpr Index kSumBytes = 2 * kWords;

// Windows of a strip. Those of an odd number are followed by one more.
struct RatioStrip {
    Index from, to;            // windows
    bool three;                // some sum takes three pixels
    int32_t at[kRatioWindows]; // first bytes
    alignas(32) uint8_t pair[kRatioWindows][16], third[kRatioWindows][16];
    alignas(32) int8_t pairCover[kRatioWindows][16], thirdCover[kRatioWindows][16];
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
    const Index base = clampIndex(place.pixel, a->length + 1 - 16 / NC);
    bool near = true;
    strip.at[w] = static_cast<int32_t>(base);
    for (int i = 0; i < 8; nextPlace(a, place)) {
        const Index first = a->q - place.rest, rest = a->p - first, second = rest < a->q ? rest : a->q;
        const Index cover[4] = {first, second, rest - second, 0};
        strip.three |= cover[2] > 0;
        for (int k = 0; k < NC; k++, i++)
            for (int t = 0; t < 4; t++) {
                const Index from = (clampIndex(place.pixel + t, a->length) - base) * NC + k;
                near &= cover[t] == 0 || from < 16;
                (t < 2 ? strip.pair : strip.third)[w][2 * i + t % 2] = static_cast<uint8_t>(from);
                (t < 2 ? strip.pairCover : strip.thirdCover)[w][2 * i + t % 2] = static_cast<int8_t>(cover[t]);
            }
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
    strip.three = false;
    Index alike = 0; // windows so far whose place is not that of an edge
    for (Index w = 0; w < strip.to - from; w++) {
        if (alike >= period && strip.at[w - period] + pixels + 16 / NC <= a->length) {
            alike++;
            strip.at[w] = strip.at[w - period] + static_cast<int32_t>(pixels);
            __builtin_memcpy(strip.pair[w], strip.pair[w - period], 16);
            __builtin_memcpy(strip.third[w], strip.third[w - period], 16);
            __builtin_memcpy(strip.pairCover[w], strip.pairCover[w - period], 16);
            __builtin_memcpy(strip.thirdCover[w], strip.thirdCover[w - period], 16);
            continue;
        }
        const RatioPlace place = ratioPlace(a, b->x.first + (from + w) * outputs);
        if (!makeRatioWindow<NC>(a, place, w, strip))
            return false;
        alike = strip.at[w] == place.pixel ? alike + 1 : 0;
    }
    return true;
}

// The sums of a source row.
template<int NC, bool Three> QVR_APART void sumRatioRow(const RatioStrip& strip, const uint8_t* row, uint16_t* line)
{
    if constexpr (kSsse3) {
        const auto sums = [&]<int N>(Index w) {
            using B = Vec<uint8_t, 16 * N>;
            using Covers = Vec<int8_t, 16 * N>;
            const auto window = [&](Index k) { return load<Vec<uint8_t, 16>>(row + Index{strip.at[k]} * NC); };
            B bytes;
            if constexpr (N == 2)
                bytes = concat(window(w), window(w + 1));
            else
                bytes = window(w);
            auto sum = addBytePairs(shuffleBytes(bytes, load<B>(strip.pair[w])), load<Covers>(strip.pairCover[w]));
            if constexpr (Three)
                sum += addBytePairs(shuffleBytes(bytes, load<B>(strip.third[w])), load<Covers>(strip.thirdCover[w]));
            store(line + 8 * w, sum);
        };
        const Index windows = strip.to - strip.from;
        Index w = 0;
        for (; kAvx2 && w + 2 <= windows; w += 2)
            sums.template operator()<2>(w);
        for (; w < windows; w++)
            sums.template operator()<1>(w);
    }
}

// n outputs from `rows` lines; m = 0: parts are a power of two, which takes the shift alone.
struct RatioMean {
    Index parts, m;
    int s;
};
template<bool Power>
QVR_APART void averageRows(const uint16_t* const* line, const uint16_t* cover, Index rows, const RatioMean& mean,
                           uint8_t* dst, Index n)
{
    const Sums rounding = splat<Sums>(static_cast<uint16_t>(mean.parts / 2));
    const Sums m = splat<Sums>(static_cast<uint16_t>(mean.m)), s = splat<Sums>(static_cast<uint16_t>(mean.s));
    const Sums first = splat<Sums>(cover[0]), second = splat<Sums>(cover[1]);
    putRow(n, dst, [&](Index i) {
        Sums sum = rounding + load<Sums>(line[0] + i) * first + load<Sums>(line[1] + i) * second;
        for (Index k = 2; k < rows; k++)
            sum += load<Sums>(line[k] + i) * splat<Sums>(cover[k]);
        return (Power ? sum : mulHigh<uint32_t>(sum, m)) >> s;
    });
}

// The whole band; false if its ratios are others, and what may have been written is to be written anew.
template<int NC> bool averageRatios(const qvrResizeBand* b, const qvrSuperAxis* x, const qvrSuperAxis* y)
{
    if (!kSsse3 || x->q == 0 || y->q == 0 || x->p > 2 * x->q || x->p > kMostCover || x->p * y->p > kRatioParts ||
        y->p > (kRatioRows - 2) * y->q || x->length < 16 / NC)
        return false;
    RatioMean mean = {x->p * y->p, 0, 0};
    const Index largest = 255 * mean.parts + mean.parts / 2;
    while ((Index{2} << mean.s) <= mean.parts)
        mean.s++;
    const Index power = Index{1} << (16 + mean.s);
    if (mean.parts << 16 != power) {
        mean.m = (power + mean.parts - 1) / mean.parts;
        if (mean.m > 65535 || largest * (mean.m * mean.parts - power) >= power)
            return false;
    }
    RatioStrip strip;
    for (Index from = 0; from * 8 < b->x.count * NC; from = strip.to) {
        if (!makeRatioStrip<NC>(b, x, from, strip))
            return false;
        const Index end = strip.to * 8 < b->x.count * NC ? strip.to * 8 : b->x.count * NC;
        Index done = -1; // rows up to this one are summed
        RatioPlace place = ratioPlace(y, b->y.first);
        for (Index n = 0; n < b->y.count; n++, nextPlace(y, place)) {
            const uint16_t* line[kRatioRows];
            uint16_t cover[kRatioRows];
            Index rows = 0;
            for (Index before = place.rest, left = y->p; left > 0; before = 0, rows++) {
                const Index part = y->q - before < left ? y->q - before : left;
                const Index row = clampIndex(place.pixel + rows, y->length);
                uint16_t* const to = strip.line[row % kRatioRows];
                if (row > done)
                    (strip.three
                         ? sumRatioRow<NC, true>
                         : sumRatioRow<NC, false>)(strip, reinterpret_cast<const uint8_t*>(sourceRow(b, row)), to);
                done = row > done ? row : done;
                line[rows] = to;
                cover[rows] = static_cast<uint16_t>(part);
                left -= part;
            }
            line[rows] = line[0]; // two at least
            cover[rows] = 0;
            (mean.m > 0 ? averageRows<false>
                        : averageRows<true>)(line, cover, rows, mean,
                                             reinterpret_cast<uint8_t*>(outputRow(b, n, NC)) + from * 8,
                                             end - from * 8);
        }
    }
    return true;
}

} // namespace

#endif
