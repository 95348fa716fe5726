// The constant quarter waves in both precisions, made by the compiler, and the sines of run time.
#include "fourier/sines.h"

#include <math.h>

namespace {

template<class T> constexpr QuarterWaves<T> makeWaves()
{
    constexpr int quarter = (1 << kConstantBase) / 4, longest = waveStart(kConstantBase);
    QuarterWaves<T> waves{};
    for (int k = 0; k <= quarter; k++)
        waves.s[longest + k] = static_cast<T>(quarterSine(k, 4 * quarter));
    for (int base = kSmallestBase; base < kConstantBase; base++)
        for (int k = 0; k <= (1 << base) / 4; k++)
            waves.s[waveStart(base) + k] = waves.s[longest + (k << (kConstantBase - base))];
    return waves;
}

} // namespace

constexpr QuarterWaves<float> qvrQuarterWaves_32f = makeWaves<float>();
constexpr QuarterWaves<double> qvrQuarterWaves_64f = makeWaves<double>();

namespace {

constexpr double kEighth = 0.7853981633974484;

} // namespace

extern "C" double qvrSine(double x)
{
    return fabs(x) <= kEighth ? sineWithinEighth(x) : sin(x);
}

extern "C" double qvrCosine(double x)
{
    return fabs(x) <= kEighth ? cosineWithinEighth(x) : cos(x);
}
