#include <cmath>

#include "filters/slot_tables.h"
#include "support/allocation.h"
#include "support/guarded.h"
#include "support/slots.h"
#include "support/status_order.h"
#include "support/values.h"

namespace {

constexpr long double kPi = 3.14159265358979323846264338327950288L;

enum Band { lowpass, highpass, bandpass, bandstop };

qvrStatus call(Band band, int slot, double* taps, int n, int window, int normalize, double low, double high)
{
    switch (band) {
    case lowpass:
        return qvrTable_qvrsFIRGenLowpass_64f[slot](taps, n, window, normalize, low);
    case highpass:
        return qvrTable_qvrsFIRGenHighpass_64f[slot](taps, n, window, normalize, low);
    case bandpass:
        return qvrTable_qvrsFIRGenBandpass_64f[slot](taps, n, window, normalize, low, high);
    default:
        return qvrTable_qvrsFIRGenBandstop_64f[slot](taps, n, window, normalize, low, high);
    }
}

template<class Body> void eachDesign(Body&& body)
{
    slots::each(qvrTable_qvrsFIRGenLowpass_64f, [&](auto, int slot) {
        for (Band band : {lowpass, highpass, bandpass, bandstop}) {
            SCOPED_TRACE(testing::Message() << "band " << band);
            body(band, slot);
        }
    });
}

// The ideal response's impulse response round its middle, at distance m > 0, by integration of the band.
long double ideal(Band band, bool odd, long double m, long double low, long double high)
{
    const auto s = [m](long double f) { return std::sin(2 * kPi * f * m) / (kPi * m); };
    switch (band) {
    case lowpass:
        return s(low);
    case highpass: // odd: all frequencies less the low ones; even: phase-shifted by a quarter
        return odd ? -s(low) : std::cos(2 * kPi * low * m) / (kPi * m);
    case bandpass:
        return s(high) - s(low);
    default:
        return (odd ? 0 : s(0.5L)) + s(low) - s(high);
    }
}

long double windowWeight(int window, int i, int n)
{
    const long double w = 2 * kPi * i / (n - 1);
    const long double root = 0.5L / std::cos(kPi / (n - 1)), alpha = -root * root;
    switch (window) {
    case 0:
        return 2.0L * i / (n - 1);
    case 1:
        return (alpha + 1) / 2 - 0.5L * std::cos(w) - alpha / 2 * std::cos(2 * w);
    case 2:
        return 0.54L - 0.46L * std::cos(w);
    case 3:
        return 0.5L - 0.5L * std::cos(w);
    default:
        return 1;
    }
}

std::vector<long double> designed(Band band, int n, int window, bool normalize, long double low, long double high)
{
    std::vector<long double> taps(n);
    const bool odd = n % 2;
    for (int i = 0; i < n; i++) {
        const long double distance = i - (n - 1) / 2.0L;
        if (distance == 0) {
            taps[i] = band == lowpass    ? 2 * low
                      : band == highpass ? 1 - 2 * low
                      : band == bandpass ? 2 * (high - low)
                                         : 1 - 2 * (high - low);
        } else {
            const int near = std::min(i, n - 1 - i);
            taps[i] = ideal(band, odd, std::fabs(distance), low, high) * windowWeight(window, near, n);
            if (band == highpass && !odd && distance > 0)
                taps[i] = -taps[i];
        }
    }
    if (normalize) {
        // The magnitude of the response at the reference.
        const long double f = band == highpass ? 0.5L : band == bandpass ? (low + high) / 2 : 0;
        long double re = 0, im = 0;
        for (int i = 0; i < n; i++) {
            re += taps[i] * std::cos(2 * kPi * f * i);
            im += taps[i] * std::sin(2 * kPi * f * i);
        }
        const long double gain = std::hypot(re, im);
        for (long double& t : taps)
            t /= gain;
    }
    return taps;
}

TEST(FirDesign, AgreesWithTheFormulas)
{
    eachDesign([](Band band, int slot) {
        for (int n : {5, 6, 7, 8, 31, 32, 101, 300}) {
            for (int window : {0, 1, 2, 3, 4, -1}) {
                for (int normalize : {0, -5}) {
                    for (auto [low, high] : {std::pair{0.1, 0.3}, {0.01, 0.49}, {0.25, 0.26}}) {
                        Guarded& out = pooledGuarded(1, n * 8 + 64);
                        double* taps = out.atFront<double>(n * 8, n % 9);
                        ASSERT_EQ(call(band, slot, taps, n, window, normalize, low, high), qvrOk);
                        EXPECT_TRUE(out.intact());
                        std::vector<double> got(n);
                        memcpy(got.data(), static_cast<void*>(taps), n * 8);
                        const auto want = designed(band, n, window, normalize != 0, low, high);
                        long double scale = 0;
                        for (long double w : want)
                            scale = std::max(scale, std::fabs(w));
                        for (int i = 0; i < n; i++) {
                            ASSERT_LE(std::fabs(got[i] - want[i]), 1e-11L * scale)
                                << "tap " << i << " of " << n << " window " << window << " edges " << low << " "
                                << high;
                            const double mirrored = band == highpass && n % 2 == 0 ? -got[n - 1 - i] : got[n - 1 - i];
                            ASSERT_EQ(got[i], mirrored);
                        }
                        if (window == 0 || window == 3) {
                            ASSERT_EQ(got[0], 0);
                            ASSERT_EQ(got[n - 1], 0);
                        }
                    }
                }
            }
        }
    });
}

TEST(FirDesign, GainsAtTheReference)
{
    slots::each(qvrTable_qvrsFIRGenLowpass_64f, [](auto low, int slot) {
        double five[5], sum = 0;
        ASSERT_EQ(low(five, 5, 2, 1, 0.2), qvrOk);
        for (double t : five)
            sum += t;
        EXPECT_NEAR(sum, 1, 1e-15);
        double even[10];
        ASSERT_EQ(call(highpass, slot, even, 10, 2, 1, 0.2, 0), qvrOk);
        for (int i = 0; i < 5; i++)
            EXPECT_EQ(even[i] + even[9 - i], 0);
    });
}

TEST(FirDesign, Statuses)
{
    eachDesign([](Band band, int slot) {
        struct Args {
            double* taps;
            int n;
            double low, high;
        };
        Guarded out(4096);
        double* taps = out.atEnd<double>(64 * 8);
        const bool two = band == bandpass || band == bandstop;
        for (double bad : {0.0, -0.0, -0.1, 0.5, 0.7, double(INFINITY), double(-INFINITY)})
            for (int n : {4, 0, -1, INT32_MIN}) {
                std::vector<Fault<Args>> faults = {{"taps", qvrErrNullPointer, [](Args& a) { a.taps = nullptr; }},
                                                   {"length", qvrErrBadSize, [=](Args& a) { a.n = n; }},
                                                   {"frequency", qvrErrBadSize, [=](Args& a) { a.low = bad; }}};
                if (two) {
                    faults.push_back({"high", qvrErrBadSize, [=](Args& a) { a.high = bad; }});
                    faults.push_back({"equal", qvrErrBadSize, [=](Args& a) { a.high = a.low; }});
                    faults.push_back({"falling", qvrErrBadSize, [=](Args& a) { a.high = a.low / 2; }});
                }
                expectStatusOrder<Args>(
                    {taps, 64, 0.1, 0.3}, faults,
                    [&](const Args& a) { return call(band, slot, a.taps, a.n, 2, 1, a.low, a.high); },
                    [&] { return out.untouched(); });
            }
        // A NaN passes the comparisons.
        EXPECT_EQ(call(band, slot, taps, 64, 2, 1, NAN, 0.3), qvrOk);
        // Work memory that cannot be had, and an impossible size of it, look like a null pointer.
        const int allocations = failEachAllocation([&] { return call(band, slot, taps, 64, 2, 1, 0.1, 0.3); },
                                                   [](int, qvrStatus status, const CountingAllocator& a) {
                                                       EXPECT_EQ(status, qvrErrNullPointer);
                                                       EXPECT_EQ(a.live(), 0u);
                                                   });
        EXPECT_EQ(allocations, two ? 2 : 1);
        EXPECT_EQ(call(band, slot, taps, INT32_MAX, 2, 1, 0.1, 0.3), qvrErrNullPointer);
        CountingAllocator allocator;
        EXPECT_EQ(call(band, slot, taps, 64, 2, 1, 0.1, 0.3), qvrOk);
        EXPECT_EQ(allocator.live(), 0u);
    });
}

} // namespace
