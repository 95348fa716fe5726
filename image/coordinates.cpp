// Where a destination position lies in the source, and what its taps weigh.
//
// pos = (d + 0.5) inv + (off - 0.5) puts pixel centres on integers; i = floor(pos) is the central tap and
// frac = pos - i the fraction. Nearest neighbour, supersampling and the low-pass weights have rules of their own.
#include <math.h>

#include "image/plan.h"

namespace {

// A region's border lies on a pixel's border up to rounding; where the centre of a pixel falls on it, the pixel before
// it is meant.
constexpr double kNearestBack = 1e-10;

constexpr double kLeastCover = 1e-7; // less of a pixel than this is left out
constexpr int kMostUnits = 512;      // parts of a pixel that covers are counted in
constexpr double kMostRatio = 1 << 20;

// Taps further than this outside the image are one tap, of the sum of their weights.
constexpr int64_t kFold = 4096;
// Up to so many they are added one by one. Beyond, neighbouring ones are less than 2^-14 of the kernel's radius apart,
// and the integral stands for the sum: Simpson's rule on panels within the pieces of the cubics, for which it is exact.
constexpr double kFoldByTap = 1 << 16;
constexpr int kPanels = 1024; // for a unit of the kernel

// Periods of positions that are looked for: inv = p / q to rounding.
constexpr int kMostPeriod = 256;
constexpr double kPeriodic = 0x1p-50;
constexpr double kNear = 0x1p40;   // of places; periods of covers are exact below
constexpr double kRepeat = 0x1p18; // of places; below, periods of the low pass are looked for
constexpr double kExact = 1024;    // places of multiples of its inverse are exact
// So much a weight moves with its place, itself and by the sum of all, and so much it is rounded.
constexpr double kSlope = 12, kRoundings = 0x1p-48;

constexpr double kMostInv = 1e300;

constexpr double kFar = 0x1p52;

double bounded(double v, double low, double high)
{
    const double above = v > low ? v : low;
    return above < high ? above : high;
}
int64_t floorOf(double v)
{
    const int64_t t = static_cast<int64_t>(v);
    return static_cast<double>(t) > v ? t - 1 : t;
}
int64_t ceilOf(double v)
{
    return -floorOf(-v);
}
double absOf(double v)
{
    return v < 0 ? -v : v;
}

double sourceOf(const qvrResizeAxis* a, int64_t d)
{
    return static_cast<double>(d) * a->inv + a->off;
}
double sourceOfCentre(const qvrResizeAxis* a, int64_t d)
{
    return (static_cast<double>(d) + 0.5) * a->inv + a->off;
}

// ---- Methods --------------------------------------------------------------------------------------------------------

double linear(double t)
{
    return t < 1 ? 1 - t : 0;
}

// Polynomials in t, highest power first, for 0 <= t < 1 and 1 <= t < 2. Sums of products in the order of evaluation.
double cubic(double t)
{
    return t < 1 ? ((0.5 * t * t - t - 0.5) * t) + 1 : t < 2 ? ((-1.0 / 6 * t * t + t - 11.0 / 6) * t) + 1 : 0;
}
double bSpline(double t)
{
    return t < 1 ? ((0.5 * t * t - t) * t) + 2.0 / 3 : t < 2 ? ((-1.0 / 6 * t * t + t) * t) + (4.0 / 3 - 2 * t) : 0;
}
double catmullRom(double t)
{
    return t < 1 ? (1.5 * t - 2.5) * t * t + 1 : t < 2 ? ((-0.5 * t + 2.5) * t - 4) * t + 2 : 0;
}
double cubicB05C03(double t)
{
    return t < 1 ? (0.95 * t - 1.7) * t * t + 5.0 / 6 : t < 2 ? ((-23.0 / 60 * t + 2) * t - 3.4) * t + 28.0 / 15 : 0;
}

constexpr int kLobes = 3, kStepsPerUnit = 100;

struct LanczosTable {
    float at[kLobes * kStepsPerUnit + 1];
};

// The series, for |x| < 10: its largest term is below 2^12, so 64 bits of it leave more than a double.
constexpr long double sine(long double x)
{
    long double term = x, sum = x;
    for (int n = 1; n < 30; n++) {
        term *= -x * x / ((2 * n) * (2 * n + 1));
        sum += term;
    }
    return sum;
}
constexpr LanczosTable makeLanczos()
{
    constexpr long double pi = 3.141592653589793238462643383279503L;
    LanczosTable table{};
    table.at[0] = 1;
    for (int k = 1; k < kLobes * kStepsPerUnit; k++) {
        const long double x = pi * k / kStepsPerUnit, y = x / kLobes;
        table.at[k] = k % kStepsPerUnit == 0 ? 0 : static_cast<float>(sine(x) / x * (sine(y) / y));
    }
    return table;
}
constexpr LanczosTable kLanczos = makeLanczos();

// T: the type of fractions and weights.
template<class T> double interpolated(T t)
{
    if (!(t < kLobes))
        return 0;
    const T u = t * kStepsPerUnit;
    // t just below 3 can round to the last entry.
    const int k = u < kLobes * kStepsPerUnit - 1 ? static_cast<int>(u) : kLobes * kStepsPerUnit - 1;
    const T low = kLanczos.at[k], high = kLanczos.at[k + 1];
    return static_cast<double>(low + (high - low) * (u - static_cast<T>(k)));
}
double lanczosSingle(double t)
{
    return interpolated(static_cast<float>(t));
}

// sinc(t) sinc(t / 3) by one sine, for sin 3x = sin x (3 - 4 sin^2 x).
double lanczos(double t)
{
    // Next to 0 the kernel is 1 - O(t^2), and t^2 may be nothing.
    if (t < 1e-9)
        return 1;
    const double x = M_PI / kLobes * t, s = sin(x);
    return t < kLobes ? s * s * (3 - 4 * s * s) / (kLobes * x * x) : 0;
}

constexpr qvrResizeMethod kMethods[] = {
    {qvriInterNearest, 0, 0, nullptr, nullptr, nullptr},
    {qvriInterSuper, 0, 0, nullptr, nullptr, nullptr},
    {qvriInterLinear, 1, 0, linear, linear, linear},
    {qvriInterCubic, 2, qvriInterLinear, cubic, cubic, cubic},
    {qvriInterCubicBSpline, 2, qvriInterLinear, bSpline, bSpline, bSpline},
    {qvriInterCubicCatmullRom, 2, qvriInterLinear, catmullRom, catmullRom, catmullRom},
    {qvriInterCubicB05C03, 2, qvriInterLinear, cubicB05C03, cubicB05C03, cubicB05C03},
    {qvriInterLanczos, 3, qvriInterCubic, lanczosSingle, interpolated<double>, lanczos},
};

// ---- Low pass -------------------------------------------------------------------------------------------------------

double integral(double (*kernel)(double), double from, double to)
{
    double sum = 0;
    for (double a = from; a < to;) {
        const double next = static_cast<double>(floorOf(a * kPanels) + 1) / kPanels, b = next < to ? next : to;
        sum += (b - a) / 6 * (kernel(a) + kernel(b) + 4 * kernel((a + b) / 2));
        a = b;
    }
    return sum;
}

double weightAt(const qvrFilter* f, double distance)
{
    return f->method->lowPass(absOf(distance) * f->scale) * f->scale;
}

// The weights of the taps from `nearest` on, away from the centre.
double foldedWeight(const qvrFilter* f, double centre, int64_t nearest, int64_t step)
{
    const double from = absOf(static_cast<double>(nearest) - centre);
    if (f->reach - from >= kFoldByTap)
        return integral(f->method->lowPass, (from - 0.5) * f->scale, f->reach * f->scale);
    double sum = 0;
    for (int64_t j = nearest; absOf(static_cast<double>(j) - centre) <= f->reach; j += step)
        sum += weightAt(f, static_cast<double>(j) - centre);
    return sum;
}

// ---- Supersampling --------------------------------------------------------------------------------------------------

int64_t wholePart(int64_t v, int64_t unit)
{
    return v / unit;
}
int64_t wholePart(double v, double)
{
    return floorOf(v);
}

// The interval from .. to, in parts of a pixel.
template<class N> void coverOf(N from, N to, N unit, int64_t length, N least, qvrCover* c)
{
    const N end = static_cast<N>(length) * unit;
    c->tail = 0;
    c->count = 1;
    c->head = static_cast<double>(to - from);
    c->first = to <= 0 ? 0 : length - 1;
    // One comparison: two would be one of vectors, whose other halves may be anything and raise invalid.
    const N low = from < 0 ? 0 : from, high = to < end ? to : end;
    if (high <= low)
        return;
    c->first = wholePart(low, unit);
    int64_t last = wholePart(high, unit);
    N head = static_cast<N>(c->first + 1) * unit - low, tail = high - static_cast<N>(last) * unit;
    if (tail <= least && last > c->first) {
        last--;
        tail = unit;
    }
    if (head <= least && last > c->first) {
        c->first++;
        head = unit;
    }
    c->count = last - c->first + 1;
    if (c->count == 1)
        return;
    c->head = static_cast<double>(head + (low - from));
    c->tail = static_cast<double>(tail + (to - high));
}

} // namespace

extern "C" {

void qvrNearestOf(const qvrResizeAxis* axis, int64_t d, int64_t count, int32_t* pixels)
{
    const double inv = axis->inv, off = axis->off - kNearestBack, last = axis->length - 1;
    const double centre = static_cast<double>(d) + 0.5;
    for (int32_t k = 0; k < count; k++)
        pixels[k] = static_cast<int32_t>(bounded((centre + k) * inv + off, 0, last));
}

int64_t qvrNearestPeriod(const qvrResizeAxis* axis, int64_t most, int64_t* pixels)
{
    // Below 2^16, what rounding adds up to is less than 1e-10, by which a position would reach the next pixel.
    const double off = axis->off - kNearestBack, end = axis->inv * static_cast<double>(axis->first + axis->count);
    const auto at = [=](int64_t d) { return (static_cast<double>(d) + 0.5) * axis->inv + off; };
    if (!(absOf(axis->off) < 0x1p16 && end < 0x1p16 && axis->off == static_cast<double>(floorOf(axis->off)) &&
          at(axis->first) >= 0 && at(axis->first + axis->count - 1) < axis->length))
        return 0;
    for (int64_t q = 1; q <= most; q++) {
        const double p = axis->inv * static_cast<double>(q), whole = static_cast<double>(floorOf(p + 0.5));
        if (absOf(p - whole) <= p * 0x1p-52) {
            *pixels = static_cast<int64_t>(whole);
            return q;
        }
    }
    return 0;
}

const qvrResizeMethod* qvrMethodOf(int32_t selector)
{
    for (const qvrResizeMethod& m : kMethods)
        if (m.selector == selector)
            return &m;
    return nullptr;
}

void qvrMakeFilter(const qvrResizeAxis* axis, const qvrResizeMethod* method, int lowPass, int single, qvrFilter* f)
{
    const double radius = method->radius;
    *f = {bounded(axis->inv, 0, kMostInv),
          axis->off,
          1,
          radius,
          axis->length,
          2 * method->radius,
          0,
          0,
          0,
          method,
          lowPass,
          single};
    if (!lowPass)
        return;
    if (f->inv >= 1.0) {
        f->scale = 1 / f->inv;
        f->reach = radius * f->inv;
    }
    const int64_t all = f->length + 2 * (kFold + 1);
    const double taps = 2 * f->reach + 1;
    f->most = taps < static_cast<double>(all) ? static_cast<int64_t>(taps) : all;
    if (!(f->inv < axis->length && axis->length < kRepeat && absOf(f->off) < kRepeat))
        return;
    // The products of the halves with a number of nine bits are exact.
    const double high = static_cast<double>(static_cast<float>(f->inv)), low = f->inv - high;
    for (int q = 1; q <= kMostPeriod && f->period == 0; q++) {
        const double p = f->inv * q;
        const int64_t whole = floorOf(p + 0.5);
        const double rest = (high * q - static_cast<double>(whole)) + low * q;
        if (absOf(rest) <= (single ? p * kPeriodic : 0) && whole > 0) {
            f->period = q;
            f->pixels = whole;
            const double places = static_cast<double>(f->length) + f->reach + 2 * absOf(f->off);
            const auto isShort = [](double v) { return v * kExact == static_cast<double>(floorOf(v * kExact)); };
            if (!isShort(f->inv) || !isShort(f->off))
                f->doubt = kSlope * places * (absOf(rest) / p + 0x1p-52) + kRoundings;
        }
    }
}

void qvrPlacesOf(const qvrFilter* f, int64_t d, int64_t count, int32_t* first, double* fraction)
{
    const double inv = f->inv, off = f->off - 0.5, last = static_cast<double>(f->length) - 0.5;
    const int32_t before = static_cast<int32_t>(f->most / 2) - 1;
    const double from = static_cast<double>(d) + 0.5;
    for (int32_t k = 0; k < static_cast<int32_t>(count); k++) {
        // The centre of a produced pixel lies within the image; what rounding makes of it, too.
        const double pos = bounded((from + k) * inv + off, -1, last);
        const int32_t i = static_cast<int32_t>(pos);
        const int32_t floor = i > pos ? i - 1 : i;
        fraction[k] = pos - floor;
        first[k] = floor - before;
    }
    for (int64_t k = 0; k < count && f->single; k++)
        fraction[k] = static_cast<double>(static_cast<float>(fraction[k]));
}

void qvrPlaceWeights(const qvrFilter* f, double fraction, double* weights)
{
    for (int64_t k = 0; k < f->most; k++) {
        const double t = absOf(static_cast<double>(k - f->most / 2 + 1) - fraction);
        weights[k] = (f->single ? f->method->single : f->method->wide)(t);
    }
}

void qvrTapsOf(const qvrFilter* f, int64_t d, qvrTaps* taps)
{
    taps->sum = 0;
    const int64_t periods = f->period > 0 ? d / f->period : 0, shift = periods * f->pixels;
    // Places are relative to the period, so that its lists are the same in all of them.
    const double low = static_cast<double>(-kFold - 1 - shift), high = static_cast<double>(f->length + kFold - shift);
    const double centre = (static_cast<double>(d - periods * f->period) + 0.5) * f->inv + f->off;
    taps->centre = bounded(centre, static_cast<double>(-1 - shift), static_cast<double>(f->length + 1 - shift));
    const double from = taps->centre - f->reach, to = taps->centre + f->reach;
    const int64_t first = from > low ? ceilOf(from) : static_cast<int64_t>(low);
    const int64_t end = to < high ? floorOf(to) : static_cast<int64_t>(high);
    const int64_t last = end - first < f->most ? end : first + f->most - 1;
    taps->foldsBefore = from <= low;
    taps->foldsBehind = to >= high;
    taps->first = first + shift;
    taps->shift = shift;
    taps->count = last - first + 1;
}

void qvrWeightsOf(const qvrFilter* f, qvrTaps* taps, int64_t from, int64_t count, double* weights)
{
    const auto weight = [=](int64_t k) {
        const int64_t at = taps->first - taps->shift + k;
        return k == 0 && taps->foldsBefore                 ? foldedWeight(f, taps->centre, at, -1)
               : k == taps->count - 1 && taps->foldsBehind ? foldedWeight(f, taps->centre, at, 1)
                                                           : weightAt(f, static_cast<double>(at) - taps->centre);
    };
    for (int64_t k = 0; k < count; k++)
        weights[k] = weight(from + k);
    if (taps->sum == 0)
        for (int64_t k = 0; k < taps->count; k++)
            taps->sum += k >= from && k < from + count ? weights[k - from] : weight(k);
    for (int64_t k = 0; k < count; k++)
        weights[k] /= taps->sum;
}

void qvrMakeSuper(const qvrResizeAxis* axis, qvrSuperAxis* s)
{
    s->inv = bounded(axis->inv, 0, 1e308);
    s->off = axis->off;
    s->length = axis->length;
    s->p = s->q = s->at = 0;
    for (int q = 1; q <= kMostUnits && s->inv < kMostRatio && absOf(s->off) < kNear; q++) {
        const double p = s->inv * q, at = s->off * q;
        const double whole = static_cast<double>(floorOf(p + 0.5)), start = static_cast<double>(floorOf(at + 0.5));
        if (absOf(p - whole) <= p * kPeriodic && absOf(at - start) <= kLeastCover) {
            s->p = static_cast<int64_t>(whole);
            s->q = q;
            s->at = static_cast<int64_t>(start);
            break;
        }
    }
}

void qvrCoverOf(const qvrSuperAxis* s, int whole, int64_t d, qvrCover* cover)
{
    // Whole pixels inside the image, as nearly always at whole ratios.
    const int64_t first = d * s->p + s->at;
    if (s->q == 1 && s->inv == static_cast<double>(s->p) && s->off == static_cast<double>(s->at) && first >= 0 &&
        first + s->p <= s->length) {
        *cover = {first, s->p, 1, s->p > 1 ? 1.0 : 0.0};
        return;
    }
    if (whole) {
        const int64_t from = d * s->p + s->at;
        coverOf<int64_t>(from, from + s->p, s->q, s->length, 0, cover);
        return;
    }
    const double from = static_cast<double>(d) * s->inv + s->off;
    const double start = bounded(from, -s->inv, static_cast<double>(s->length));
    coverOf<double>(start, start + s->inv, 1, s->length, kLeastCover, cover);
    // Wider than this, all but the edge pixels is nothing.
    if (s->inv > kFar) {
        cover->head *= kFar / s->inv;
        cover->tail *= kFar / s->inv;
    }
}

double qvrCoverSum(const qvrSuperAxis* s)
{
    return s->inv > kFar ? kFar : s->inv;
}

} // extern "C"
