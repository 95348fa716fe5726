// The constant quarter wave in both precisions, made by the compiler, and the sines of run time.
#include "fourier/sines.h"

#include <math.h>

#define QVR_1(k) quarterSine(k, 1 << kConstantBase)
#define QVR_4(T, k)                                                                                                    \
    static_cast<T>(QVR_1(k)), static_cast<T>(QVR_1(k + 1)), static_cast<T>(QVR_1(k + 2)), static_cast<T>(QVR_1(k + 3))
#define QVR_16(T, k) QVR_4(T, k), QVR_4(T, k + 4), QVR_4(T, k + 8), QVR_4(T, k + 12)
#define QVR_64(T, k) QVR_16(T, k), QVR_16(T, k + 16), QVR_16(T, k + 32), QVR_16(T, k + 48)
#define QVR_256(T) QVR_64(T, 0), QVR_64(T, 64), QVR_64(T, 128), QVR_64(T, 192)

constexpr float qvrQuarterWave_32f[kConstantQuarter + 1] = {QVR_256(float), 1.0f};
constexpr double qvrQuarterWave_64f[kConstantQuarter + 1] = {QVR_256(double), 1.0};

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
