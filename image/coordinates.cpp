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

constexpr double kCoverStart = 1e-10; // a start this close below a pixel border counts as on it
constexpr double kLeastCover = 1e-7;  // less of a pixel than this is left out

// A reach past this many taps would be pure waiting: the weights have long been flat.
constexpr double kMostReach = 1 << 24;

constexpr double kFar = 0x1p52;

double bounded(double v, double low, double high)
{
    return !(v > low) ? low : v < high ? v : high;
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

// ---- Cubic ----------------------------------------------------------------------------------------------------------

// Polynomials in t, highest power first, for 0 <= t < 1 and 1 <= t < 2. Sums of products in the order of evaluation.
double cubicWeight(int32_t method, double t)
{
    const bool near = t < 1;
    if (t >= 2)
        return 0;
    switch (method) {
    case qvriInterCubic:
        return near ? ((0.5 * t * t - t - 0.5) * t) + 1 : ((-1.0 / 6 * t * t + t - 11.0 / 6) * t) + 1;
    case qvriInterCubicBSpline:
        return near ? ((0.5 * t * t - t) * t) + 2.0 / 3 : ((-1.0 / 6 * t * t + t) * t) + (4.0 / 3 - 2 * t);
    case qvriInterCubicCatmullRom:
        return near ? (1.5 * t - 2.5) * t * t + 1 : ((-0.5 * t + 2.5) * t - 4) * t + 2;
    default:
        return near ? (0.95 * t - 1.7) * t * t + 5.0 / 6 : ((-23.0 / 60 * t + 2) * t - 3.4) * t + 28.0 / 15;
    }
}

// ---- Lanczos --------------------------------------------------------------------------------------------------------

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
template<class T> T lanczosWeight(T t)
{
    if (!(-kLobes < t && t < kLobes))
        return 0;
    const T u = (t < 0 ? -t : t) * kStepsPerUnit;
    // t just below 3 can round to the last entry.
    const int k = u < kLobes * kStepsPerUnit - 1 ? static_cast<int>(u) : kLobes * kStepsPerUnit - 1;
    const T low = kLanczos.at[k], high = kLanczos.at[k + 1];
    return low + (high - low) * (u - static_cast<T>(k));
}

// ---- Taps -----------------------------------------------------------------------------------------------------------

template<class T>
void fillTaps(const qvrResizeAxis* axis, int32_t method, int32_t* start, T* weights, int64_t perPosition,
              int64_t perTap)
{
    const int lead = qvrTapCount(method) / 2 - 1;
    const double last = axis->length - 1;
    for (int32_t n = 0; n < axis->count; n++, weights += perPosition) {
        const double d = static_cast<double>(axis->first + n);
        // The centre of a produced pixel lies within the image; what rounding makes of it, too.
        const double pos = bounded((d + 0.5) * axis->inv + (axis->off - 0.5), -1, last + 0.5);
        const int64_t i = floorOf(pos);
        const T frac = static_cast<T>(pos - static_cast<double>(i));
        start[n] = static_cast<int32_t>(i) - lead;
        if (method == qvriInterLinear) {
            weights[0] = frac;
        } else if (method == qvriInterLanczos) {
            for (int k = 0; k < 6; k++)
                weights[k * perTap] = lanczosWeight<T>(static_cast<T>(k - 2) - frac);
        } else {
            const double f = frac;
            const double t[4] = {absOf(f + 1), absOf(f), absOf(1 - f), absOf(2 - f)};
            for (int k = 0; k < 4; k++)
                weights[k * perTap] = static_cast<T>(cubicWeight(method, t[k]));
        }
    }
}

// ---- Low pass -------------------------------------------------------------------------------------------------------

// sinc(t) sinc(t / 3) by one sine, for sin 3x = sin x (3 - 4 sin^2 x).
double lanczosKernel(double t)
{
    const double x = M_PI / kLobes * t, s = sin(x);
    return s * s * (3 - 4 * s * s) / (kLobes * x * x);
}
double lowPassKernel(int32_t method, double t)
{
    if (method == qvriInterLinear)
        return t < 1 ? 1 - t : 0;
    if (method != qvriInterLanczos)
        return cubicWeight(method, t);
    return t == 0 ? 1 : t < kLobes ? lanczosKernel(t) : 0;
}

double lowPassReach(const qvrResizeAxis* axis, int32_t method)
{
    const double radius = qvrTapCount(method) / 2;
    const double reach = axis->inv >= 1.0 ? radius * axis->inv : radius;
    return reach < kMostReach ? reach : kMostReach;
}

} // namespace

extern "C" {

int32_t qvrNearestIndex(const qvrResizeAxis* axis, int64_t d)
{
    const double at = (static_cast<double>(d) + 0.5) * axis->inv + (axis->off - kNearestBack);
    return static_cast<int32_t>(bounded(at, 0, axis->length - 1));
}

int32_t qvrTapCount(int32_t method)
{
    return method == qvriInterLinear ? 2 : method == qvriInterLanczos ? 6 : 4;
}

void qvrFillTaps32(const qvrResizeAxis* axis, int32_t method, int32_t* start, float* weights, int64_t perPosition,
                   int64_t perTap)
{
    fillTaps(axis, method, start, weights, perPosition, perTap);
}

void qvrFillTaps64(const qvrResizeAxis* axis, int32_t method, int32_t* start, double* weights, int64_t perPosition,
                   int64_t perTap)
{
    fillTaps(axis, method, start, weights, perPosition, perTap);
}

int64_t qvrLowPassCount(const qvrResizeAxis* axis, int32_t method)
{
    return 2 * ceilOf(lowPassReach(axis, method)) + 1;
}

void qvrLowPassRange(const qvrResizeAxis* axis, int32_t method, int64_t d, qvrLowPassTaps* taps)
{
    const double reach = lowPassReach(axis, method);
    taps->centre = bounded(sourceOfCentre(axis, d), -kFar, kFar);
    taps->scale = axis->inv >= 1.0 ? 1 / axis->inv : 1;
    taps->first = ceilOf(taps->centre - reach);
    taps->last = static_cast<int64_t>(taps->centre + reach);
}

double qvrLowPassWeight(const qvrLowPassTaps* taps, int32_t method, int64_t j)
{
    return lowPassKernel(method, absOf(taps->centre - static_cast<double>(j)) * taps->scale) * taps->scale;
}

void qvrLowPassSum(qvrLowPassTaps* taps, int32_t method)
{
    taps->sum = 0;
    for (int64_t j = taps->first; j <= taps->last; j++)
        taps->sum += qvrLowPassWeight(taps, method, j);
}

void qvrLowPassFill(qvrLowPassTaps* taps, int32_t method, double* weights)
{
    taps->sum = 0;
    for (int64_t j = taps->first; j <= taps->last; j++) {
        weights[j - taps->first] = qvrLowPassWeight(taps, method, j);
        taps->sum += weights[j - taps->first];
    }
    for (int64_t j = taps->first; j <= taps->last; j++)
        weights[j - taps->first] /= taps->sum;
}

int qvrIsBlockAxis(const qvrResizeAxis* axis)
{
    const double inv = bounded(axis->inv, 0, kFar), start = bounded(sourceOf(axis, axis->first), -kFar, kFar);
    const double off = start - static_cast<double>(floorOf(start + 0.5));
    return inv - static_cast<double>(floorOf(inv)) <= kLeastCover && absOf(off) <= kLeastCover;
}

void qvrCoverOf(const qvrResizeAxis* axis, int blocks, int64_t d, qvrCover* cover)
{
    const double inv = bounded(axis->inv, 0, kFar);
    cover->lead = cover->tail = 0;
    if (blocks) {
        const int64_t start = floorOf(bounded(sourceOf(axis, axis->first), -kFar, kFar) + 0.5);
        cover->whole = floorOf(inv);
        cover->start = start + (d - axis->first) * cover->whole;
        return;
    }
    const double s = bounded(sourceOf(axis, d), -kFar, kFar);
    cover->start = floorOf(s >= 0 ? s + kCoverStart : s - kCoverStart);
    cover->lead = 1 - s + static_cast<double>(cover->start);
    const double rest = inv - cover->lead;
    cover->whole = rest > 0 ? floorOf(rest) : 0;
    cover->tail = rest - static_cast<double>(cover->whole);
    if (cover->lead < kLeastCover)
        cover->lead = 0;
    if (cover->tail < kLeastCover)
        cover->tail = 0;
}

} // extern "C"
