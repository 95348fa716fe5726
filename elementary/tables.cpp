// Tables of powers, logarithms, sines and cosines, made at compile time from their rules, and the error hook.
#include "elementary/tables.h"

namespace {

using Real = long double; // 64-bit mantissa: a float pair and a double come out of it correctly rounded

constexpr Real kLn2 = 0.693147180559945309417232121458176568L;
constexpr Real kLog10E = 0.434294481903251827651128918916605082L;

// e^x for |x| < 1, by its series.
constexpr Real exponential(Real x)
{
    Real sum = 0, term = 1;
    for (int n = 1; n < 30; n++) {
        sum += term;
        term *= x / n;
    }
    return sum;
}

// ln x for x in [1/2, 2]: 2 atanh((x - 1) / (x + 1)), a series in squares of at most 1/9.
constexpr Real logarithm(Real x)
{
    const Real t = (x - 1) / (x + 1);
    Real sum = 0, power = t;
    for (int n = 1; n < 50; n += 2) {
        sum += power / n;
        power *= t * t;
    }
    return 2 * sum;
}

// x > 0 rounded to a multiple of unit.
constexpr Real toMultiple(Real x, Real unit)
{
    return static_cast<Real>(static_cast<int64_t>(x / unit + 0.5L)) * unit;
}

constexpr qvrPowerRow powerRow(int j)
{
    const Real x = exponential(kLn2 * j / 128);
    const float hi = static_cast<float>(x);
    return {hi, static_cast<float>((x - hi) / hi)};
}
constexpr double powerRow64(int j)
{
    return static_cast<double>(exponential(kLn2 * j / 128));
}

// The high part is a multiple of 2^-16: it adds to e times the short ln 2 without rounding.
constexpr qvrLogRow logRow(int i)
{
    const Real inverse = toMultiple(128.0L / (128 + i), 0x1p-12L);
    const Real log = -logarithm(inverse);
    const float hi = static_cast<float>(toMultiple(log, 0x1p-16L));
    return {static_cast<float>(log), static_cast<float>(inverse), hi, static_cast<float>(log - hi)};
}
constexpr qvrLogRow64 logRow64(int i)
{
    const Real inverse = toMultiple(128.0L / (128 + i), 0x1p-16L);
    return {static_cast<double>(inverse), static_cast<double>(-logarithm(inverse))};
}

// The high part is cut, not rounded.
constexpr qvrLog10Row log10Row(int i)
{
    const Real a = toMultiple(kLog10E * 128 / (128 + i), 0x1p-8L);
    const Real t = -logarithm(a * 256 / 111) * kLog10E;
    const float hi = static_cast<float>(static_cast<Real>(static_cast<int64_t>(t * 0x1p16L)) * 0x1p-16L);
    return {static_cast<float>(a), static_cast<float>(a), hi, static_cast<float>(t - hi)};
}

} // namespace

#define QVR_TABLE(Row, name, rule) alignas(64) constexpr Row name[128] = {QVR_ROW64(rule, 0), QVR_ROW64(rule, 64)};

extern "C" {

QVR_TABLE(qvrPowerRow, qvrPowerTable, powerRow)
QVR_TABLE(double, qvrPowerTable64, powerRow64)
QVR_TABLE(qvrLogRow, qvrLogTable, logRow)
QVR_TABLE(qvrLogRow64, qvrLogTable64, logRow64)
QVR_TABLE(qvrLog10Row, qvrLog10Table, log10Row)

static void ignoreError(int, int64_t, const float*, const float*, float*, float*, const char*) {}

qvrErrorHook* qvrsMathErrorHook = ignoreError;

} // extern "C"
