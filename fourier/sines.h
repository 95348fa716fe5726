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

// The quarter wave of base 10: sin(2 pi k / 1024), k = 0 .. 256.
constexpr int kConstantBase = 10;
constexpr int kConstantQuarter = (1 << kConstantBase) / 4;

} // namespace

extern "C" {
extern const QVR_HIDDEN float qvrQuarterWave_32f[kConstantQuarter + 1];
extern const QVR_HIDDEN double qvrQuarterWave_64f[kConstantQuarter + 1];

// As good as libm's to a unit, for the slots.
QVR_HIDDEN double qvrSine(double x);
QVR_HIDDEN double qvrCosine(double x);
}

#endif
