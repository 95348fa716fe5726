// Floor and ceiling of a double, in the form of the level that this file is compiled for.
#include "frame/simd.h"
#include "scalarmath/scalar.h"

namespace {

using V = Vec<double, 1>;

// Magnitudes from 2^52 on, infinities and NaN are what they are.
constexpr double kIntegers = 0x1p52;

// x without its fraction, by 52 fraction bits less the exponent; a magnitude below 1 leaves its sign.
QVR_INLINE double truncated(double x)
{
    const uint64_t word = __builtin_bit_cast(uint64_t, x);
    const int exponent = static_cast<int>(word >> 52 & 0x7FF) - 1023;
    const uint64_t keep = exponent < 0 ? uint64_t{1} << 63 : ~((uint64_t{1} << (52 - exponent)) - 1);
    return __builtin_bit_cast(double, word& keep);
}

} // namespace

extern "C" {

QVR_HIDDEN double SLOT(qvrmFloor)(double x)
{
    if constexpr (kSse41) {
        return __builtin_elementwise_floor(V{x})[0];
    } else {
        if (!(__builtin_fabs(x) < kIntegers))
            return x;
        const double t = truncated(x);
        return t > x ? t - 1 : t;
    }
}

QVR_HIDDEN double SLOT(qvrmCeil)(double x)
{
    if constexpr (kSse41) {
        return __builtin_elementwise_ceil(V{x})[0];
    } else {
        if (!(__builtin_fabs(x) < kIntegers))
            return x;
        const double t = truncated(x);
        return t < x ? __builtin_copysign(t + 1, x) : t;
    }
}

} // extern "C"
