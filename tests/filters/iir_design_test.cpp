#include <cmath>
#include <complex>

#include "filters/slot_tables.h"
#include "support/guarded.h"
#include "support/slots.h"
#include "support/values.h"

namespace {

using Complex = std::complex<long double>;

// The response of taps b, a at a frequency given as a fraction of the sampling rate.
Complex response(const std::vector<double>& taps, double f)
{
    const size_t n = taps.size() / 2;
    const Complex z = std::polar(1.0L, -2 * 3.14159265358979323846L * f);
    Complex b = 0, a = 0;
    for (size_t k = n; k-- > 0;) {
        b = b * z + static_cast<long double>(taps[k]);
        a = a * z + static_cast<long double>(taps[n + k]);
    }
    return b / a;
}

// The squared magnitude that the analogue prototype has after both frequency transformations.
long double idealPower(bool highpass, int order, int type, double cutoff, double ripple, double f)
{
    const long double pi = 3.14159265358979323846L;
    long double w = std::tan(pi * static_cast<long double>(f)) / std::tan(pi * static_cast<long double>(cutoff));
    if (highpass)
        w = 1 / w;
    if (type == 0)
        return 1 / (1 + std::pow(w, 2.0L * order));
    const long double e2 = std::pow(10.0L, 0.1L * ripple) - 1;
    const long double t =
        std::fabs(w) <= 1 ? std::cos(order * std::acos(w)) : std::cosh(order * std::acosh(std::fabs(w)));
    return 1 / (1 + e2 * t * t);
}

std::vector<double> design(int slot, bool highpass, int order, int type, double f, double ripple)
{
    std::vector<double> taps(2 * (order + 1), 7.0);
    const auto& table = highpass ? qvrTable_qvrsIIRGenHighpass_64f : qvrTable_qvrsIIRGenLowpass_64f;
    EXPECT_EQ(table[slot](order, taps.data(), type, f, ripple), qvrOk);
    return taps;
}

TEST(IirDesign, PowerResponseOfEveryOrder)
{
    slots::each(qvrTable_qvrsIIRGenLowpass_64f, [&](auto, int slot) {
        for (bool highpass : {false, true})
            for (int type : {0, 1})
                for (int order = 1; order <= 12; order++)
                    for (double cutoff : {0.05, 0.1, 0.25, 0.4})
                        for (double ripple : {0.1, 1.0, 29.0}) {
                            // Beyond these the polynomial form itself loses the response; the taps are checked below.
                            if ((type == 0 && ripple != 1.0) || (order > 8 && cutoff < 0.1))
                                continue;
                            const std::vector<double> taps = design(slot, highpass, order, type, cutoff, ripple);
                            EXPECT_EQ(taps[order + 1], 1.0);
                            for (double f :
                                 {cutoff * 0.1, cutoff * 0.5, cutoff * 0.9, cutoff, cutoff * 1.1, 0.45, 0.49}) {
                                // High orders near the band edges lose digits in the polynomial form itself.
                                const long double want = idealPower(highpass, order, type, cutoff, ripple, f);
                                const long double got = std::norm(response(taps, f));
                                ASSERT_NEAR(std::sqrt(got), std::sqrt(want),
                                            2e-6 * (1 + order * order * order / 50.0) * std::sqrt(want) + 2e-5)
                                    << (highpass ? "high" : "low") << "pass, order " << order << " type " << type
                                    << " cutoff " << cutoff << " ripple " << ripple << " at " << f;
                            }
                        }
    });
}

// The taps themselves, from the poles and zeros in long double.
std::vector<long double> modelTaps(bool highpass, int n, int type, double f, double ripple)
{
    const long double pi = 3.14159265358979323846264338L, w = 4 * std::tan(pi * static_cast<long double>(f));
    long double sinhV = 1, coshV = 1;
    if (type == 1) {
        const long double e = std::sqrt(std::expm1(0.1L * std::log(10.0L) * ripple)), v = std::asinh(1 / e) / n;
        sinhV = std::sinh(v);
        coshV = std::cosh(v);
    }
    std::vector<Complex> a = {1}, c = {1};
    const auto multiply = [](std::vector<Complex>& p, Complex root) {
        p.push_back(0);
        for (size_t k = p.size() - 1; k >= 1; k--)
            p[k] -= root * p[k - 1];
    };
    for (int k = 0; k < n; k++) {
        const long double t = pi * (2 * k + 1) / (2 * n) + pi / 2;
        const Complex p(sinhV * std::cos(t), coshV * std::sin(t));
        const Complex s = highpass ? w / p : p * w;
        multiply(a, (1.0L + s / 4.0L) / (1.0L - s / 4.0L));
        multiply(c, highpass ? 1 : -1);
    }
    long double sumA = 0, sumC = 0;
    for (int k = 0; k <= n; k++) {
        const long double sign = highpass && k % 2 ? -1 : 1;
        sumA += sign * a[k].real();
        sumC += sign * c[k].real();
    }
    const long double g = type == 1 && n % 2 == 0 ? std::pow(10.0L, -ripple / 20.0L) : 1;
    std::vector<long double> taps;
    for (int k = 0; k <= n; k++)
        taps.push_back(c[k].real() * sumA * g / sumC);
    for (int k = 0; k <= n; k++)
        taps.push_back(a[k].real());
    return taps;
}

TEST(IirDesign, TapsOfEveryOrder)
{
    slots::each(qvrTable_qvrsIIRGenLowpass_64f, [&](auto, int slot) {
        for (bool highpass : {false, true})
            for (int type : {0, 1})
                for (int n = 1; n <= 12; n++)
                    for (double f : {0.01, 0.05, 0.2, 0.25, 0.45})
                        for (double ripple : {1e-300, 1e-16, 1e-9, 0.01, 1.0, 29.0}) {
                            const std::vector<double> got = design(slot, highpass, n, type, f, ripple);
                            const std::vector<long double> want = modelTaps(highpass, n, type, f, ripple);
                            long double largestA = 0, sumA = 0;
                            for (int k = 0; k <= n; k++) {
                                largestA = std::max(largestA, std::fabs(want[n + 1 + k]));
                                sumA += (highpass && k % 2 ? -1 : 1) * want[n + 1 + k];
                            }
                            for (int k = 0; k <= n; k++)
                                ASSERT_NEAR(got[n + 1 + k], want[n + 1 + k], 1e-13L * largestA)
                                    << "a" << k << " of order " << n;
                            // The b carry the error of the sum of the a, which cancels.
                            for (int k = 0; k <= n; k++)
                                ASSERT_NEAR(got[k], want[k],
                                            std::fabs(want[k]) * (1e-13L + 1e-13L * largestA / std::fabs(sumA)))
                                    << "b" << k << " of order " << n;
                        }
    });
}

TEST(IirDesign, GainAtTheReference)
{
    slots::each(qvrTable_qvrsIIRGenLowpass_64f, [&](auto, int slot) {
        for (int order = 1; order <= 12; order++) {
            for (int type : {0, 1}) {
                const double want = type == 1 && order % 2 == 0 ? std::pow(10.0, -3.0 / 20) : 1;
                EXPECT_NEAR(static_cast<double>(std::abs(response(design(slot, false, order, type, 0.2, 3), 0))), want,
                            1e-9);
                EXPECT_NEAR(static_cast<double>(std::abs(response(design(slot, true, order, type, 0.2, 3), 0.5))), want,
                            1e-9);
            }
        }
        const std::vector<double> first = design(slot, false, 1, 0, 0.25, 0);
        EXPECT_NEAR(first[0], 0.5, 1e-15);
        EXPECT_NEAR(first[1], 0.5, 1e-15);
        EXPECT_NEAR(first[3], 0, 1e-15);
    });
}

TEST(IirDesign, PolesLieInsideTheCircle)
{
    slots::each(qvrTable_qvrsIIRGenLowpass_64f, [&](auto, int slot) {
        for (int order : {2, 5, 8}) {
            const std::vector<double> taps = design(slot, false, order, 1, 0.1, 1);
            // The impulse response of a stable filter dies away.
            std::vector<double> d(order + 1);
            double y = 0;
            for (int i = 0; i < 5000; i++) {
                const double x = i == 0;
                y = taps[0] * x + d[0];
                for (int k = 0; k < order; k++)
                    d[k] = taps[k + 1] * x - taps[order + 2 + k] * y + d[k + 1];
            }
            EXPECT_LT(std::fabs(y), 1e-12);
        }
    });
}

TEST(IirDesign, StatusesInOrder)
{
    const auto check = [](const auto& table) {
        slots::each(table, [&](auto f, int) {
            Guarded buffer(26 * 8);
            double* t = buffer.atEnd<double>(26 * 8);
            for (double bad : {0.0, -0.0, -1.0, 0.5, 1.0, double(INFINITY), -double(INFINITY)}) {
                EXPECT_EQ(f(0, nullptr, 9, bad, 30), qvrErrNullPointer);
                EXPECT_EQ(f(0, t, 9, bad, 30), qvrErrBadCutoff);
                EXPECT_EQ(f(3, t, 1, bad, 30), qvrErrBadCutoff);
            }
            for (int order : {0, -1, 13, INT32_MIN, INT32_MAX}) {
                EXPECT_EQ(f(order, nullptr, 0, 0.1, 1), qvrErrNullPointer);
                EXPECT_EQ(f(order, t, 9, 0.1, 30), qvrErrBadFilterOrder);
                EXPECT_EQ(f(order, t, 1, 0.1, 30), qvrErrBadFilterOrder);
            }
            for (int type : {-1, 2, INT32_MIN, INT32_MAX})
                EXPECT_EQ(f(12, t, type, 0.1, 99), qvrOk);
            for (double ripple : {29.5, 0.0, -1.0, 29.000001})
                EXPECT_EQ(f(12, t, 1, 0.1, ripple), qvrErrBadRipple);
            EXPECT_TRUE(buffer.untouched());
            EXPECT_EQ(f(12, t, 0, 0.1, 99), qvrOk);
            EXPECT_EQ(f(12, t, 1, 0.1, 29), qvrOk);
            EXPECT_TRUE(buffer.intact());
            // NaN passes the comparisons.
            EXPECT_EQ(f(2, t, 1, NAN, NAN), qvrOk);
        });
    };
    check(qvrTable_qvrsIIRGenLowpass_64f);
    check(qvrTable_qvrsIIRGenHighpass_64f);
}

} // namespace
