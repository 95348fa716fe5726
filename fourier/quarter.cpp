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

// Up to pi/4, where tables are made, the Taylor series to x^17 and x^18 leave less than 2^-61; their tails are summed
// apart from the first term, whose rounding then is nearly all of the error.
constexpr double kEighth = 0.7853981633974484;

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
double tail(const double* c, double y)
{
    const double z = y * y;
    return ((c[6] * z + c[4]) * z + c[2]) * z + c[0] + y * (((c[7] * z + c[5]) * z + c[3]) * z + c[1]);
}

} // namespace

extern "C" double qvrSine(double x)
{
    if (!(fabs(x) <= kEighth))
        return sin(x);
    const double y = x * x;
    return x + x * y * tail(kSineTail, y);
}

extern "C" double qvrCosine(double x)
{
    if (!(fabs(x) <= kEighth))
        return cos(x);
    // 1 - y/2, and what its rounding leaves.
    const double y = x * x, half = 0.5 * y, first = 1 - half, rest = (1 - first) - half;
    return first + (rest + y * y * tail(kCosineTail, y));
}
