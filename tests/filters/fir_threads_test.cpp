// Runs that fork: when they do, and that they give what one thread gives.
#include "filters/fir_model.h"
#include "filters/slot_tables.h"
#include "frame/threads.h"
#include "support/budget.h"
#include "support/regions.h"

using namespace fir;

namespace {

template<class Form> class FirThreads : public testing::Test {};
using Forms = testing::Types<Form32f, Form64f, Form64f_32f, Form64f_16s>;
TYPED_TEST_SUITE(FirThreads, Forms);

// Regions that a run of n samples forks under a budget.
template<class Form> int forksOf(int slot, int budget, int taps, int n, bool inPlace)
{
    using Data = typename Form::Data;
    const Budget b(budget);
    auto state = create<Form>(slot, exactValues<typename Form::Tap>(taps, 3));
    auto x = exactValues<Data>(n, 4);
    std::vector<Data> y(n);
    const int before = regions::forks();
    EXPECT_EQ(Form::run(slot, x.data(), inPlace ? x.data() : y.data(), n, state.get()), qvrOk);
    if (regions::forks() != before && regions::counted())
        EXPECT_EQ(regions::lastRequested(), budget);
    return regions::forks() - before;
}

TYPED_TEST(FirThreads, ForksFromTheThresholdOn)
{
    using Form = TypeParam;
    if (!regions::counted())
        GTEST_SKIP() << "regions are not counted";
    eachSlot<Form>([&](int slot) {
        // The single-precision direct run stays on one thread on the wide slots.
        const int one = std::is_same_v<Form, Form32f> && slot >= slots::e9 ? 0 : 1;
        EXPECT_EQ(forksOf<Form>(slot, 2, 20, 1600, false), 0);
        EXPECT_EQ(forksOf<Form>(slot, 2, 20, 1601, false), one);
        EXPECT_EQ(forksOf<Form>(slot, 3, 20, 1601, false), one);
        EXPECT_EQ(forksOf<Form>(slot, 1, 20, 5000, false), 0);
        EXPECT_EQ(forksOf<Form>(slot, 2, 20, 1601, true), one);
        // A block of the mixed forms, and a chunk in place, is a run of its own.
        const int block = slot >= slots::e9 ? 2112 : 2048;
        EXPECT_EQ(forksOf<Form>(slot, 2, 20, 2 * block + 1601, false), Form::mixed ? 3 : one);
        EXPECT_EQ(forksOf<Form>(slot, 2, 20, 2 * block + 1600, true), Form::mixed ? 2 : one);
        // The transform path: a second block and 1601 samples.
        EXPECT_EQ(forksOf<Form>(slot, 2, 100, 1600, false), 0);
        EXPECT_EQ(forksOf<Form>(slot, 2, 100, 1601, false), 1);
        EXPECT_EQ(forksOf<Form>(slot, 2, 1500, 2000, false), 0); // one block
        EXPECT_EQ(forksOf<Form>(slot, 1, 100, 5000, false), 0);
    });
}

TYPED_TEST(FirThreads, SameSamplesAsOneThread)
{
    using Form = TypeParam;
    using Data = typename Form::Data;
    for (int L : {7, 40, 90, 700}) {
        const auto taps = exactValues<typename Form::Tap>(L, 5, 9, 0.25);
        for (int n : {1601, 1603, 6001}) {
            Model<Form> model(taps);
            const auto x = exactValues<Data>(n, n);
            const auto want = model.run(x.data(), n);
            double largest = 1;
            for (double v : want)
                largest = std::max(largest, std::fabs(v));
            eachSlot<Form>([&](int slot) {
                for (int budget : {2, 3})
                    for (bool inPlace : {false, true}) {
                        const Budget b(budget);
                        auto state = create<Form>(slot, taps);
                        std::vector<Data> y = x;
                        ASSERT_EQ(Form::run(slot, inPlace ? y.data() : x.data(), y.data(), n, state.get()), qvrOk);
                        const double bound = L < Form::planFrom(slot)   ? 0
                                             : std::is_integral_v<Data> ? 1
                                                                        : Form::tolerance * largest;
                        for (int i = 0; i < n; i++)
                            ASSERT_LE(
                                std::fabs(static_cast<double>(y[i]) - static_cast<double>(delivered<Form>(want[i], 0))),
                                bound)
                                << L << " taps, budget " << budget << ", sample " << i << " of " << n;
                        expectDelay<Form>(state.get(), model);
                    }
            });
        }
    }
}

// A budget raised after creation has no regions of its own in the state.
TYPED_TEST(FirThreads, RaisedBudget)
{
    using Form = TypeParam;
    using Data = typename Form::Data;
    eachSlot<Form>([&](int slot) {
        const Budget outer(1);
        const auto taps = exactValues<typename Form::Tap>(90, 5, 9, 0.25);
        auto state = create<Form>(slot, taps);
        const Budget raised(4);
        const int before = regions::forks();
        std::vector<Data> x(9000), y(9000);
        EXPECT_EQ(Form::run(slot, x.data(), y.data(), 9000, state.get()), qvrOk);
        EXPECT_EQ(regions::forks(), before);
    });
}

// Every thread meets the damaged plan; the status comes back and the run ends.
TYPED_TEST(FirThreads, FailingTransform)
{
    using Form = TypeParam;
    using Data = typename Form::Data;
    eachSlot<Form>([&](int slot) {
        for (int budget : {1, 2}) {
            const Budget b(budget);
            auto state = create<Form>(slot, exactValues<typename Form::Tap>(90, 5));
            int32_t* planTag = reinterpret_cast<int32_t*>(state->fftPlan);
            const int32_t saved = *planTag;
            *planTag = 77;
            std::vector<Data> x(9000), y(9000);
            EXPECT_EQ(Form::run(slot, x.data(), y.data(), 9000, state.get()), qvrErrBadContext);
            EXPECT_EQ(Form::run(slot, x.data(), x.data(), 9000, state.get()), qvrErrBadContext);
            *planTag = saved;
            EXPECT_EQ(Form::run(slot, x.data(), y.data(), 9000, state.get()), qvrOk);
        }
    });
}

} // namespace
