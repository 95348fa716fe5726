// The constant quarters of the circle in both precisions, made by the compiler, and the sines of run time.
#include "fourier/sines.h"

#include <math.h>

namespace {

template<class T> constexpr QuarterPoints<T> makePoints()
{
    constexpr int quarter = (1 << kConstantBase) / 4;
    T s[quarter + 1] = {};
    for (int k = 0; k <= quarter; k++)
        s[k] = static_cast<T>(quarterSine(k, 4 * quarter));
    QuarterPoints<T> points{};
    for (int base = kSmallestBase; base <= kConstantBase; base++) {
        const int turn = (1 << base) / 4, stride = quarter / turn;
        for (int k = 0; k < turn + kPointsPast; k++) {
            // In quadrant q the point is (-i)^q times that of r.
            const int q = k / turn % 4, r = k % turn;
            const T c = s[(turn - r) * stride], m = -s[r * stride];
            T* pair = points.pairs + 2 * (quarterStart(base) + k);
            pair[0] = q == 0 ? c : q == 1 ? m : q == 2 ? -c : -m;
            pair[1] = q == 0 ? m : q == 1 ? -c : q == 2 ? -m : c;
        }
    }
    return points;
}

} // namespace

constexpr QuarterPoints<float> qvrQuarterPoints_32f = makePoints<float>();
constexpr QuarterPoints<double> qvrQuarterPoints_64f = makePoints<double>();

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
