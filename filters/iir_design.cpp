// Design of Butterworth and Chebyshev (type I) low- and high-pass filters.
//
// The prototype's poles p, of unit cut-off, go to the digital plane by the bilinear transform (Tustin 1947) s = 4 (z -
// 1) / (z + 1) after the frequency transformation, with W = 4 tan(pi f):
//   low-pass   z = (1 + p W / 4) / (1 - p W / 4)
//   high-pass  the same with W / p in place of p W
// All n zeros lie at z = -1 (low-pass) or z = 1 (high-pass). The gain is set at the opposite point of the circle.
#include <math.h>

#include "filters/functions.h"
#include "frame/slot.h"

namespace {

constexpr int kMaxOrder = 12;
constexpr double kPi = 3.14159265358979323846;
constexpr double kLn10 = 2.30258509299404568402;

enum : int { typeButterworth = 0, typeChebyshev = 1 };

struct Complex {
    double re, im;
};

Complex product(Complex a, Complex b)
{
    return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re};
}

Complex quotient(Complex a, Complex b)
{
    const double norm = b.re * b.re + b.im * b.im;
    return {(a.re * b.re + a.im * b.im) / norm, (a.im * b.re - a.re * b.im) / norm};
}

// Poles of one half plane pair and, for odd n, the real one last; each is listed once, conjugates left out.
int prototypePoles(int n, int type, double rippleDb, Complex poles[])
{
    double sinhV = 1, coshV = 1;
    if (type == typeChebyshev) {
        // A ripple of little more than nothing keeps its digits: e^2 = 10^(ripple / 10) - 1.
        const double e = sqrt(expm1(0.1 * kLn10 * rippleDb));
        const double v = log((1 + sqrt(1 + e * e)) / e) / n;
        sinhV = sinh(v);
        coshV = cosh(v);
    }
    int count = 0;
    for (int k = 0; k < n / 2; k++) {
        const double t = kPi * (2 * k + 1) / (2 * n) + kPi / 2;
        poles[count++] = {sinhV * cos(t), coshV * sin(t)};
    }
    if (n % 2 != 0)
        poles[count++] = {-sinhV, 0};
    return count;
}

Complex toDigital(Complex p, double w, bool highpass)
{
    const Complex s = highpass ? quotient({w / 4, 0}, p) : Complex{p.re * w / 4, p.im * w / 4};
    return quotient({1 + s.re, s.im}, {1 - s.re, -s.im});
}

// polynomial *= 1 - r / z, the degree before it being `degree`.
void multiplyRoot(Complex polynomial[], int degree, Complex r)
{
    polynomial[degree + 1] = {0, 0};
    for (int k = degree + 1; k >= 1; k--) {
        const Complex t = product(r, polynomial[k - 1]);
        polynomial[k] = {polynomial[k].re - t.re, polynomial[k].im - t.im};
    }
}

void design(int n, double* taps, int type, double rFreq, double rippleDb, bool highpass)
{
    Complex poles[kMaxOrder];
    const int count = prototypePoles(n, type, rippleDb, poles);
    const double w = 4 * tan(kPi * rFreq);

    Complex denominator[kMaxOrder + 1] = {{1, 0}};
    double numerator[kMaxOrder + 1] = {1};
    int degree = 0;
    for (int k = 0; k < count; k++) {
        const Complex z = toDigital(poles[k], w, highpass);
        multiplyRoot(denominator, degree++, z);
        if (2 * k + 1 < n)
            multiplyRoot(denominator, degree++, {z.re, -z.im});
    }
    const double zero = highpass ? 1 : -1;
    for (int k = 0; k < n; k++)
        for (int i = k + 1; i >= 1; i--)
            numerator[i] -= zero * numerator[i - 1];

    double sumA = 0, sumC = 0, sign = 1;
    for (int k = 0; k <= n; k++, sign = highpass ? -sign : sign) {
        sumA += sign * denominator[k].re;
        sumC += sign * numerator[k];
    }
    const bool rippledReference = type == typeChebyshev && n % 2 == 0;
    const double gain = rippledReference ? pow(10.0, -rippleDb / 20) : 1.0;
    double out[2 * (kMaxOrder + 1)];
    for (int k = 0; k <= n; k++) {
        out[k] = numerator[k] * sumA * gain / sumC;
        out[n + 1 + k] = k == 0 ? 1.0 : denominator[k].re;
    }
    __builtin_memcpy(static_cast<void*>(taps), out, sizeof(double) * static_cast<size_t>(2 * (n + 1)));
}

// The comparisons stand as they are, so that a NaN passes them.
qvrStatus checkedDesign(int order, double* taps, int type, double rFreq, double rippleDb, bool highpass)
{
    if (taps == nullptr)
        return qvrErrNullPointer;
    if (rFreq <= 0 || rFreq >= 0.5)
        return qvrErrBadCutoff;
    if (order < 1 || order > kMaxOrder)
        return qvrErrBadFilterOrder;
    if (type != typeButterworth && type != typeChebyshev)
        return qvrOk;
    if (type == typeChebyshev && (rippleDb > 29.0 || rippleDb <= 0.0))
        return qvrErrBadRipple;
    design(order, taps, type, rFreq, rippleDb, highpass);
    return qvrOk;
}

} // namespace

extern "C" qvrStatus SLOT(qvrsIIRGenLowpass_64f)(int order, qvr64f* taps, int filterType, qvr64f rFreq, qvr64f rippleDb)
{
    return checkedDesign(order, taps, filterType, rFreq, rippleDb, false);
}

extern "C" qvrStatus SLOT(qvrsIIRGenHighpass_64f)(int order, qvr64f* taps, int filterType, qvr64f rFreq,
                                                  qvr64f rippleDb)
{
    return checkedDesign(order, taps, filterType, rFreq, rippleDb, true);
}
