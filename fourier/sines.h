// Sines and cosines: as constants of the compiler, and at run time.
#ifndef QVR_FOURIER_SINES_H
#define QVR_FOURIER_SINES_H

#include <stdint.h>

#include "frame/processor.h"

namespace {

// sin(2 pi k / n) and cos, for constants: Taylor series in extended precision on |angle| <= pi/4, where the terms up to
// x^25 leave less than 2^-80.
constexpr long double kTwoPiExtended = 6.283185307179586476925286766559L;

constexpr long double sineSeries(long double x)
{
    long double sum = 0, term = x;
    for (int i = 1; i < 27; i += 2) {
        sum += term;
        term *= -x * x / ((i + 1) * (i + 2));
    }
    return sum;
}
constexpr long double cosineSeries(long double x)
{
    long double sum = 0, term = 1;
    for (int i = 0; i < 27; i += 2) {
        sum += term;
        term *= -x * x / ((i + 1) * (i + 2));
    }
    return sum;
}

// sin(2 pi k / n) for 0 <= k <= n/4.
constexpr long double quarterSine(int k, int n)
{
    return 8 * k <= n ? sineSeries(kTwoPiExtended * k / n) : cosineSeries(kTwoPiExtended * (n / 4.0L - k) / n);
}

// cos and sin of 2 pi k / n for any k >= 0.
constexpr long double constantSine(int k, int n)
{
    k %= n;
    if (2 * k > n)
        return -constantSine(n - k, n);
    if (4 * k <= n)
        return quarterSine(k, n);
    return n % 2 == 0 ? quarterSine(n / 2 - k, n) : quarterSine(n - 2 * k, 2 * n);
}
constexpr long double constantCosine(int k, int n)
{
    return constantSine(4 * k + n, 4 * n);
}

// The constant quarters of the circle (quarter.h), for each base from kSmallestBase to kConstantBase, one behind
// another from a boundary of 64 bytes each, so that a table of any of these orders is read without gaps.
constexpr int kSmallestBase = 3, kConstantBase = 12;
constexpr int kPointsPast = 49; // behind the quarter: seven vectors of eight lanes apart, with the quarter's end
struct QuarterStarts {
    int of[kConstantBase + 2];
};
constexpr QuarterStarts makeQuarterStarts()
{
    QuarterStarts starts{};
    for (int base = kSmallestBase; base <= kConstantBase; base++)
        starts.of[base + 1] = starts.of[base] + ((1 << base) / 4 + kPointsPast + 7) / 8 * 8;
    return starts;
}
constexpr QuarterStarts kQuarterStarts = makeQuarterStarts();
constexpr int quarterStart(int base)
{
    return kQuarterStarts.of[base];
}
template<class T> struct QuarterPoints {
    alignas(64) T pairs[2 * quarterStart(kConstantBase + 1)];
};

// Up to pi/4 the Taylor series to x^17 and x^18 leave less than 2^-61; their tails are summed apart from the first
// term, whose rounding then is nearly all of the error. Of doubles, or of vectors of them.
constexpr double kSineTail[] = {-1.0 / 6,
                                1.0 / 120,
                                -1.0 / 5040,
                                1.0 / 362880,
                                -1.0 / 39916800.0,
                                1.0 / 6227020800.0,
                                -1.0 / 1307674368000.0,
                                1.0 / 355687428096000.0};
constexpr double kCosineTail[] = {1.0 / 24,
                                  -1.0 / 720,
                                  1.0 / 40320,
                                  -1.0 / 3628800,
                                  1.0 / 479001600.0,
                                  -1.0 / 87178291200.0,
                                  1.0 / 20922789888000.0,
                                  -1.0 / 6402373705728000.0};

// Two halves of the sum side by side.
template<class V> inline V waveTail(const double* c, V y)
{
    const V z = y * y;
    return ((c[6] * z + c[4]) * z + c[2]) * z + c[0] + y * (((c[7] * z + c[5]) * z + c[3]) * z + c[1]);
}
template<class V> inline V sineWithinEighth(V x)
{
    const V y = x * x;
    return x + x * y * waveTail(kSineTail, y);
}
template<class V> inline V cosineWithinEighth(V x)
{
    // 1 - y/2, and what its rounding leaves.
    const V y = x * x, half = 0.5 * y, first = 1 - half, rest = (1 - first) - half;
    return first + (rest + y * y * waveTail(kCosineTail, y));
}

} // namespace

extern "C" {
extern const QVR_HIDDEN QuarterPoints<float> qvrQuarterPoints_32f;
extern const QVR_HIDDEN QuarterPoints<double> qvrQuarterPoints_64f;

// As good as libm's to a unit, for the slots.
QVR_HIDDEN double qvrSine(double x);
QVR_HIDDEN double qvrCosine(double x);
}

#endif
