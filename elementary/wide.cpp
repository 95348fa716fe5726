// What sine, cosine and tangent over the whole range of floats need beside vectors, the table of a turn and the
// reduction of large arguments by a product with enough bits of 2/pi (Payne and Hanek, SIGNUM Newsletter 18, 1983);
// hyperbolic functions in extended precision. Sums and products of pairs are Knuth's and Dekker's (Numer. Math. 18,
// 1971).
#include "elementary/tables.h"

namespace {

// ---- Table of sines and cosines, in double-double by the Taylor series ----------------------------------------------

struct Pair {
    double hi, lo;
};

constexpr Pair twoSum(double a, double b)
{
    const double s = a + b, t = s - a;
    return {s, (a - (s - t)) + (b - t)};
}
constexpr Pair twoProduct(double a, double b)
{
    const double ca = 134217729.0 * a, cb = 134217729.0 * b; // 2^27 + 1 splits the mantissa
    const double ah = ca - (ca - a), al = a - ah, bh = cb - (cb - b), bl = b - bh;
    const double p = a * b;
    return {p, ((ah * bh - p) + ah * bl + al * bh) + al * bl};
}
constexpr Pair add(Pair a, Pair b)
{
    const Pair s = twoSum(a.hi, b.hi);
    return twoSum(s.hi, s.lo + a.lo + b.lo);
}
constexpr Pair multiply(Pair a, Pair b)
{
    const Pair p = twoProduct(a.hi, b.hi);
    return twoSum(p.hi, p.lo + a.hi * b.lo + a.lo * b.hi);
}
constexpr Pair divide(Pair a, double d)
{
    const double q = a.hi / d;
    const Pair p = twoProduct(q, d);
    return twoSum(q, ((a.hi - p.hi) - p.lo + a.lo) / d);
}

constexpr Pair kPi = {3.141592653589793, 1.2246467991473532e-16};

// sin x (first = 1) or cos x (first = 0) for 0 <= x <= pi/2.
constexpr Pair series(Pair x, int first)
{
    Pair term = first ? x : Pair{1, 0}, sum{0, 0};
    const Pair square = multiply(x, x);
    for (int n = first; n < 34; n += 2) {
        sum = add(sum, term);
        term = divide(multiply(term, square), -(n + 1.0) * (n + 2.0));
    }
    return sum;
}

struct Turn {
    Pair sine[64];
};
constexpr Turn makeTurn()
{
    Turn t{};
    for (int k = 0; k <= 16; k++) {
        const Pair x = divide(multiply(kPi, {static_cast<double>(k), 0}), 32);
        const Pair s = k == 0   ? Pair{0, 0}
                       : k <= 8 ? series(x, 1)
                                : series(divide(multiply(kPi, {16.0 - k, 0}), 32), 0);
        t.sine[k] = s;
        t.sine[(32 - k) & 63] = s;
        t.sine[(32 + k) & 63] = {-s.hi, -s.lo};
        t.sine[(64 - k) & 63] = {-s.hi, -s.lo};
    }
    t.sine[0] = t.sine[32] = {0, 0};
    return t;
}
constexpr Turn kTurn = makeTurn(); // sine[k] = sin(k pi/32); the cosine of a row is the sine 16 rows on

constexpr qvrTurnRow turnRow(int k)
{
    const Pair s = kTurn.sine[k], c = kTurn.sine[(k + 16) & 63];
    return {s.hi, s.lo, c.hi, c.lo};
}

// ---- Reduction ------------------------------------------------------------------------------------------------------

// The bits of 2/pi from 64 places before the binary point on.
constexpr uint64_t kTwoOverPi[] = {0, 0xA2F9836E4E441529, 0xFC2757D1F534DDC0, 0xDB6295993C439041, 0xFE5163ABDEBBC561};

// With |x| = m 2^e, the bits of 2/pi that stand for multiples of 4 drop out of the product; the 128 after them leave an
// error below 2^-100 of a quadrant.
void reduceLarge(double& x, double& low, int32_t& turns)
{
    const uint64_t word = __builtin_bit_cast(uint64_t, x);
    const int exponent = static_cast<int>(word >> 52 & 0x7FF) - 1023;
    const uint64_t m = (word >> 29 & 0x7FFFFF) | 0x800000; // the 24 bits of a float; e = exponent - 23
    const int skip = exponent - 23 - 2 + 64;               // bits before the window
    const int at = skip / 64, shift = skip % 64;
    using U = unsigned __int128;
    const U window = (((static_cast<U>(kTwoOverPi[at]) << 64) | kTwoOverPi[at + 1]) << shift) |
                     (kTwoOverPi[at + 2] >> 1 >> (63 - shift));
    const U product = window * m; // in units of 2^-126 quadrants, modulo 4
    const int quadrant = static_cast<int>((product >> 126) + ((product >> 125) & 1)) & 3; // to nearest
    // The signed distance in units of 2^-128 quadrants: 53 bits that a double holds exactly, and the rest.
    const __int128 rest = static_cast<__int128>(product << 2);
    const int64_t top = static_cast<int64_t>(rest >> 64) & ~int64_t{0x7FF};
    const double hi = static_cast<double>(top) * 0x1p-64;
    const __int128 below = rest - static_cast<__int128>(static_cast<U>(static_cast<__int128>(top)) << 64);
    const double lo = static_cast<double>(static_cast<int64_t>(below >> 12)) * 0x1p-116;
    const double sign = __builtin_copysign(1.0, x);
    // times pi/2
    const Pair p = twoProduct(hi, 1.5707963267948966);
    low = sign * (p.lo + hi * 6.123233995736766e-17 + lo * 1.5707963267948966);
    turns = 16 * (x < 0 ? -quadrant : quadrant);
    x = sign * p.hi;
}

// ---- Extended precision ---------------------------------------------------------------------------------------------

using Extended = long double;

constexpr uint32_t kDown = 0x2000, kUp = 0x4000; // MXCSR's rounding field
constexpr uint16_t kX87Default = 0x37F;          // all exceptions masked, 64-bit mantissa, to nearest

// A pending exception of the caller would be delivered by the next instruction that waits, the load of the word too.
uint16_t enterX87()
{
    uint16_t own;
    __asm__ volatile("fnstcw %0\n\tfnclex" : "=m"(own) : : "memory");
    __asm__ volatile("fldcw %0" : : "m"(kX87Default) : "memory");
    return own;
}
// To a float as MXCSR's rounding field says, and to infinity from half a unit beyond the largest float on.
float narrow(Extended value, uint32_t rounding)
{
    if (value >= 0x1.ffffffp127L)
        return __builtin_inff();
    const uint16_t word = static_cast<uint16_t>(kX87Default | rounding >> 3); // the field's place is three lower
    float result;
    __asm__ volatile("fldcw %1\n\tfsts %0" : "=m"(result) : "m"(word), "t"(value) : "memory");
    return result;
}
// Exceptions raised inside must not be pending when the caller's masks come back.
void leaveX87(uint16_t own)
{
    __asm__ volatile("fnclex\n\tfldcw %0" : : "m"(own) : "memory");
}

// e^x - 1 for 0 <= x < 2^14: 2^n 2^f - 1 with f in [-1/2, 1/2].
Extended exponentialLessOne(Extended x)
{
    constexpr Extended kLog2E = 1.442695040888963407359924681001892137L;
    const Extended t = x * kLog2E;
    Extended n, f, scale;
    __asm__("frndint" : "=t"(n) : "0"(t));
    __asm__("f2xm1" : "=t"(f) : "0"(t - n));
    __asm__("fscale" : "=t"(scale) : "0"(1.0L), "u"(n));
    return scale * f + (scale - 1);
}

// The rounding is in force for the last step alone: the reduction needs the nearest integer.
__attribute__((noinline)) float hyperbolic(float x, bool sine, uint32_t rounding)
{
    const float a = __builtin_fabsf(x);
    const Extended m = exponentialLessOne(static_cast<Extended>(a < 200 ? a : 200.0f)); // overflows floats from 90 on
    const Extended value = sine ? (m + m / (m + 1)) / 2 : 1 + m * m / (2 * (m + 1));
    if (sine && x < 0) {
        // The magnitude goes the other way.
        const bool directed = rounding == kDown || rounding == kUp;
        return -narrow(value, directed ? rounding ^ (kDown ^ kUp) : rounding);
    }
    return narrow(value, rounding);
}

float guardedHyperbolic(float x, bool sine, uint32_t rounding)
{
    const uint16_t own = enterX87();
    const float y = hyperbolic(x, sine, rounding);
    leaveX87(own);
    return y;
}

} // namespace

extern "C" {

alignas(64) constexpr qvrTurnRow qvrTurnTable[64] = {QVR_ROW64(turnRow, 0)};

void qvrReduceLarge(double* x, double* low, int32_t* turns, int n)
{
    for (int i = 0; i < n; i++)
        if (__builtin_fabs(x[i]) >= 0x1p17)
            reduceLarge(x[i], low[i], turns[i]);
}

float qvrWideSinh(float x, uint32_t rounding)
{
    return guardedHyperbolic(x, true, rounding);
}

float qvrWideCosh(float x, uint32_t rounding)
{
    return guardedHyperbolic(x, false, rounding);
}

} // extern "C"
