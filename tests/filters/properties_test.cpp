// What filters are, whichever way they are computed: linear, the same at every sample, a constant at their gain.
#include <algorithm>
#include <numeric>

#include "filters/slot_tables.h"
#include "support/chosen_slot.h"
#include "support/values.h"

namespace {

// One precision of taps and samples with the functions that run it.
template<class State, class Tap, class Sample, auto init, auto filter, auto release> struct Form {
    using Coefficient = Tap;
    using Value = Sample;
    // Always at the same addresses: on slot mx the order of a sum depends on them.
    static std::vector<Sample> run(const std::vector<Tap>& taps, const std::vector<Sample>& x)
    {
        alignas(64) static Sample in[4096], out[4096];
        State* state = nullptr;
        std::copy(x.begin(), x.end(), in);
        EXPECT_EQ(init(&state, taps.data(), static_cast<int>(taps.size()), nullptr), qvrOk);
        EXPECT_EQ(filter(in, out, static_cast<int>(x.size()), state), qvrOk);
        EXPECT_EQ(release(state), qvrOk);
        return {out, out + x.size()};
    }
};
using Form32f =
    Form<qvrsFIRState_32f, float, float, Morven_qvrsFIRInitAlloc_32f, Morven_qvrsFIR_32f, Morven_qvrsFIRFree_32f>;
using Form64f =
    Form<qvrsFIRState_64f, double, double, Morven_qvrsFIRInitAlloc_64f, Morven_qvrsFIR_64f, Morven_qvrsFIRFree_64f>;
using Form64f_32f = Form<qvrsFIRState64f_32f, double, float, Morven_qvrsFIRInitAlloc64f_32f, Morven_qvrsFIR64f_32f,
                         Morven_qvrsFIRFree64f_32f>;
template<class Form> class FirProperties : public testing::Test {};
using Forms = testing::Types<Form32f, Form64f, Form64f_32f>;
TYPED_TEST_SUITE(FirProperties, Forms);

constexpr size_t kSamples = 3000;

// A filter as it is designed: symmetric, of unit gain.
template<class T> std::vector<T> lowpass(size_t taps)
{
    std::vector<double> design(taps);
    EXPECT_EQ(Morven_qvrsFIRGenLowpass_64f(design.data(), static_cast<int>(taps), qvrFirHamming, 1, 0.1), qvrOk);
    return {design.begin(), design.end()};
}

template<class T> double worst(const std::vector<T>& a, const std::vector<T>& b)
{
    double most = 0;
    for (size_t i = 0; i < a.size(); i++)
        most = std::max(most, std::fabs(double(a[i]) - double(b[i])));
    return most;
}

TYPED_TEST(FirProperties, LinearAndTheSameAtEverySample)
{
    using F = TypeParam;
    using T = typename F::Value;
    const double bound = sizeof(T) == 4 ? 0x1p-20 : 0x1p-49;
    slots::eachChosen([&] {
        for (size_t count : {5u, 31u, 64u, 65u, 200u, 513u}) {
            SCOPED_TRACE(testing::Message() << count << " taps");
            const auto taps = lowpass<typename F::Coefficient>(count);
            const auto x = randomValues<T>(kSamples, 3, -1, 1), y = randomValues<T>(kSamples, 4, -1, 1);
            std::vector<T> sum(kSamples), scaled(kSamples), late(kSamples + 37), back(kSamples);
            for (size_t i = 0; i < kSamples; i++)
                sum[i] = x[i] + y[i], scaled[i] = -16 * x[i], late[i + 37] = x[i];
            const auto fx = F::run(taps, x), fy = F::run(taps, y);
            std::vector<T> want(kSamples);
            std::transform(fx.begin(), fx.end(), fy.begin(), want.begin(), std::plus<>());
            EXPECT_LE(worst(F::run(taps, sum), want), bound);
            std::transform(fx.begin(), fx.end(), want.begin(), [](T v) { return -16 * v; });
            EXPECT_EQ(F::run(taps, scaled), want); // nothing is rounded by a power of two
            const auto moved = F::run(taps, late);
            std::copy(moved.begin() + 37, moved.end(), back.begin());
            EXPECT_LE(worst(back, fx), bound);
            EXPECT_TRUE(std::all_of(moved.begin(), moved.begin() + 37, [bound](T v) { return std::fabs(v) <= bound; }));
        }
    });
}

TYPED_TEST(FirProperties, AnImpulseGivesTheTapsAndAConstantItsGain)
{
    using F = TypeParam;
    using T = typename F::Value;
    const double bound = sizeof(T) == 4 ? 0x1p-20 : 0x1p-49;
    slots::eachChosen([&] {
        for (size_t count : {5u, 31u, 64u, 200u, 513u}) {
            SCOPED_TRACE(testing::Message() << count << " taps");
            const auto taps = lowpass<typename F::Coefficient>(count);
            std::vector<T> impulse(kSamples), want(kSamples);
            impulse[0] = 1;
            std::copy(taps.begin(), taps.end(), want.begin());
            EXPECT_LE(worst(F::run(taps, impulse), want), bound);
            const auto step = F::run(taps, std::vector<T>(kSamples, T(1)));
            for (size_t i = count; i < kSamples; i++)
                ASSERT_NEAR(step[i], 1, bound) << "sample " << i;
        }
    });
}

// Recursive designs: a constant stays one through a lowpass and vanishes through a highpass, powers of two pass
// through, a late signal gives the same later, and all energy that leaves was brought in.
TEST(IirProperties, DesignsAreLinearAndKeepConstants)
{
    slots::eachChosen([] {
        for (int order : {1, 2, 3, 6, 8})
            for (double frequency : {0.03, 0.2, 0.4}) {
                if (order == 8 && frequency == 0.03)
                    continue;
                SCOPED_TRACE(testing::Message() << "order " << order << " at " << frequency);
                const size_t taps = 2 * static_cast<size_t>(order + 1);
                std::vector<double> low(taps), high(taps);
                ASSERT_EQ(Morven_qvrsIIRGenLowpass_64f(order, low.data(), qvrIirButterworth, frequency, 0), qvrOk);
                ASSERT_EQ(Morven_qvrsIIRGenHighpass_64f(order, high.data(), qvrIirButterworth, frequency, 0), qvrOk);
                const auto run = [order](const std::vector<double>& taps, const std::vector<double>& x) {
                    qvrsIIRState_64f* state = nullptr;
                    std::vector<double> y(x.size());
                    EXPECT_EQ(Morven_qvrsIIRInitAlloc_64f(&state, taps.data(), order, nullptr), qvrOk);
                    EXPECT_EQ(Morven_qvrsIIR_64f(x.data(), y.data(), static_cast<int>(x.size()), state), qvrOk);
                    EXPECT_EQ(Morven_qvrsIIRFree_64f(state), qvrOk);
                    return y;
                };
                const std::vector<double> constant(kSamples, 3.0);
                EXPECT_NEAR(run(low, constant).back(), 3, 1e-6);
                EXPECT_NEAR(run(high, constant).back(), 0, 1e-6);
                const auto x = randomValues<double>(kSamples, 9, -1, 1);
                std::vector<double> scaled(kSamples), late(kSamples + 23), want(kSamples);
                for (size_t i = 0; i < kSamples; i++)
                    scaled[i] = -0.25 * x[i], late[i + 23] = x[i];
                const auto y = run(low, x);
                std::transform(y.begin(), y.end(), want.begin(), [](double v) { return -0.25 * v; });
                EXPECT_EQ(run(low, scaled), want);
                auto moved = run(low, late);
                moved.erase(moved.begin(), moved.begin() + 23);
                EXPECT_LE(worst(moved, y), 1e-9);
                const auto power = [](const std::vector<double>& v) {
                    return std::inner_product(v.begin(), v.end(), v.begin(), 0.0);
                };
                EXPECT_LE(power(y), power(x)); // a gain of at most one at every frequency
            }
    });
}

// A median commutes with what keeps the order of values, and leaves a ramp as it is but for its ends.
TEST(MedianProperties, KeepsOrder)
{
    slots::eachChosen([] {
        for (int mask : {3, 5, 7, 15}) {
            const size_t n = 500;
            auto x = randomValues<float>(n, 31, -8, 8);
            std::vector<float> curved(n);
            std::transform(x.begin(), x.end(), curved.begin(), [](float v) { return v * v * v; });
            const auto median = [mask](std::vector<float>& v) {
                EXPECT_EQ(Morven_qvrsFilterMedian_32f_I(v.data(), static_cast<int>(v.size()), mask), qvrOk);
            };
            median(x);
            median(curved);
            for (size_t i = 0; i < n; i++)
                ASSERT_EQ(curved[i], x[i] * x[i] * x[i]) << "mask " << mask << ", sample " << i;
            std::vector<float> ramp(n);
            std::iota(ramp.begin(), ramp.end(), -20.0f);
            const auto want = ramp;
            median(ramp);
            for (size_t i = static_cast<size_t>(mask); i + static_cast<size_t>(mask) < n; i++)
                ASSERT_EQ(ramp[i], want[i]) << "mask " << mask << ", sample " << i;
        }
    });
}

} // namespace
