#include "filters/fir_model.h"
#include "filters/slot_tables.h"
#include "support/budget.h"
#include "support/status_order.h"

using namespace fir;

namespace {

template<class Form> class FirRun : public testing::Test {};
using Forms = testing::Types<Form32f, Form64f, Form64f_32f, Form64f_16s>;
TYPED_TEST_SUITE(FirRun, Forms);

template<class Form> std::vector<typename Form::Tap> exactTaps(int n, uint32_t seed = 7)
{
    return exactValues<typename Form::Tap>(n, seed, 9, 0.25);
}

// One run between guard pages, out of place or in place.
template<class Form>
std::vector<typename Form::Data> runGuarded(int slot, typename Form::State* s,
                                            const std::vector<typename Form::Data>& x, size_t offset, bool inPlace,
                                            int scale = 0)
{
    using Data = typename Form::Data;
    const size_t bytes = x.size() * sizeof(Data);
    Guarded &in = pooledGuarded(1, bytes + 64), &out = pooledGuarded(2, bytes + 64);
    Data* src = in.atEnd<Data>(bytes, offset);
    memcpy(static_cast<void*>(src), x.data(), bytes);
    Data* dst = inPlace ? src : out.atFront<Data>(bytes, offset);
    EXPECT_EQ(Form::run(slot, src, dst, static_cast<int>(x.size()), s, scale), qvrOk);
    std::vector<Data> y(x.size());
    memcpy(y.data(), static_cast<void*>(dst), bytes);
    EXPECT_TRUE(in.intact() && (inPlace || out.intact()));
    if (!inPlace)
        EXPECT_EQ(memcmp(static_cast<void*>(src), x.data(), bytes), 0);
    return y;
}

template<class Form>
void expectExact(const std::vector<typename Form::Data>& got, const std::vector<double>& want, int scale)
{
    ASSERT_EQ(got.size(), want.size());
    for (size_t i = 0; i < got.size(); i++)
        ASSERT_EQ(got[i], delivered<Form>(want[i], scale)) << "sample " << i << " of " << got.size();
}

template<class Form> void expectNear(const std::vector<typename Form::Data>& got, const std::vector<double>& want)
{
    double scale = std::is_integral_v<typename Form::Data> ? 1 : 1e-300;
    for (double y : want)
        scale = std::is_integral_v<typename Form::Data> ? 1 : std::max(scale, std::fabs(y));
    for (size_t i = 0; i < got.size(); i++)
        ASSERT_LE(std::fabs(static_cast<double>(got[i]) - static_cast<double>(delivered<Form>(want[i], 0))),
                  Form::tolerance * scale)
            << "sample " << i << " of " << got.size();
}

// Sums that no order rounds come out to the bit; round the capacity of the delay buffer, every kind of tail.
TYPED_TEST(FirRun, DirectRunsExactly)
{
    using Form = TypeParam;
    using Data = typename Form::Data;
    eachSlot<Form>([&](int slot) {
        for (int L : {1, 2, 3, 4, 5, 7, 8, 9, 12, 15, 16, 17, 24, 31, 32, 33, 40, 63}) {
            const auto taps = exactTaps<Form>(L);
            const auto delay = exactValues<Data>(L, 3);
            const int limit = create<Form>(slot, taps)->directLimit;
            std::vector<int> lengths = {1,         2,         3,         limit - 1, limit, limit + 1,
                                        limit + 2, limit + 3, limit + 9, 70,        203,   511};
            for (int n = 4; n < 40; n++)
                lengths.push_back(n);
            for (int n : lengths) {
                for (bool inPlace : {false, true}) {
                    auto state = create<Form>(slot, taps, delay.data());
                    Model<Form> model(taps, delay.data());
                    // The second run begins with what the first left.
                    for (int turn = 0; turn < 2; turn++) {
                        const auto x = exactValues<Data>(n - turn * (n > 1), 11 * n + turn);
                        SCOPED_TRACE(testing::Message() << L << " taps, " << n << " samples, turn " << turn
                                                        << (inPlace ? ", in place" : ""));
                        expectExact<Form>(runGuarded<Form>(slot, state.get(), x, (3 * n + L) % 17, inPlace),
                                          model.run(x.data(), x.size()), 0);
                        expectDelay<Form>(state.get(), model);
                        if (this->HasFatalFailure())
                            return;
                    }
                }
            }
        }
    });
}

// Runs of all lengths by one state, whose delay line moves through its buffer and back: the first outputs of long
// runs are beside those of short ones.
TYPED_TEST(FirRun, RunAfterRun)
{
    using Form = TypeParam;
    using Data = typename Form::Data;
    eachSlot<Form>([&](int slot) {
        for (int L : {1, 3, 17, 40, 300}) {
            const auto taps = exactTaps<Form>(L);
            auto state = create<Form>(slot, taps);
            Model<Form> model(taps);
            for (int i = 0; i < 511; i++) {
                const int n = 1 + i * 200 % 511; // each of 1 .. 511 once
                const auto x = exactValues<Data>(n, i);
                SCOPED_TRACE(testing::Message() << L << " taps, " << n << " samples, run " << i);
                expectExact<Form>(runGuarded<Form>(slot, state.get(), x, i % 17, i % 5 == 0),
                                  model.run(x.data(), x.size()), 0);
                expectDelay<Form>(state.get(), model);
                if (this->HasFatalFailure())
                    return;
            }
        }
    });
}

// Any alignment of long runs, on both paths.
TYPED_TEST(FirRun, AnyAddress)
{
    using Form = TypeParam;
    using Data = typename Form::Data;
    eachSlot<Form>([&](int slot) {
        for (int L : {21, 70}) {
            const auto taps = exactTaps<Form>(L);
            const auto x = exactValues<Data>(777, 5);
            const auto want = Model<Form>(taps).run(x.data(), x.size());
            for (size_t offset = 0; offset < 64; offset++) {
                auto state = create<Form>(slot, taps);
                const auto y = runGuarded<Form>(slot, state.get(), x, offset, offset % 3 == 0);
                SCOPED_TRACE(offset);
                if (L < Form::planFrom(slot))
                    expectExact<Form>(y, want, 0);
                else
                    expectNear<Form>(y, want);
            }
        }
    });
}

// Runs through blocks of the mixed forms, chunks in place, and the direct stretch of long runs.
TYPED_TEST(FirRun, LongDirectRuns)
{
    using Form = TypeParam;
    using Data = typename Form::Data;
    eachSlot<Form>([&](int slot) {
        const auto taps = exactTaps<Form>(23);
        for (int n : {1600, 1601, 2047, 2048, 2049, 2112, 2113, 4096, 4097, 4224, 4225, 9000}) {
            const auto x = exactValues<Data>(n, n);
            for (bool inPlace : {false, true}) {
                auto state = create<Form>(slot, taps);
                Model<Form> model(taps);
                expectExact<Form>(runGuarded<Form>(slot, state.get(), x, 0, inPlace), model.run(x.data(), n), 0);
                expectDelay<Form>(state.get(), model);
            }
        }
    });
}

// One block, one and a bit, many; the delay line is as exact as on the direct path. Two runs, the second in place.
TYPED_TEST(FirRun, TransformPath)
{
    using Form = TypeParam;
    using Data = typename Form::Data;
    for (int L : {64, 65, 127, 128, 300, 700}) {
        const auto taps = exactTaps<Form>(L);
        const auto delay = exactValues<Data>(L, 3);
        int N = 4;
        while (N <= 2 * L)
            N *= 2;
        const int B = N - L + 1;
        for (int n : {512, 513, B - 1, B, B + 1, B + L, 2 * B - 1, 2 * B, 2 * B + 1, N, N + B, 3 * B + 3}) {
            if (n < 512)
                continue;
            Model<Form> model(taps, delay.data());
            std::vector<Data> x[2];
            std::vector<double> want[2];
            for (int turn = 0; turn < 2; turn++) {
                x[turn] = exactValues<Data>(n, n + turn);
                want[turn] = model.run(x[turn].data(), n);
            }
            eachSlot<Form>([&](int slot) {
                auto state = create<Form>(slot, taps, delay.data());
                ASSERT_EQ(state->fftLen, N);
                for (int turn = 0; turn < 2; turn++) {
                    SCOPED_TRACE(testing::Message() << L << " taps, " << n << " samples, turn " << turn);
                    expectNear<Form>(runGuarded<Form>(slot, state.get(), x[turn], n % 5, turn == 1), want[turn]);
                }
                expectDelay<Form>(state.get(), model);
            });
            if (this->HasFatalFailure())
                return;
        }
    }
}

// Whether the run of n samples puts sample `at` through a transform: a NaN there reaches outputs before it.
template<class Form> bool transforms(int slot, int taps, int n, int at, bool inPlace)
{
    using Data = typename Form::Data;
    auto state = create<Form>(slot, exactTaps<Form>(taps));
    std::vector<Data> x(n, Data(1)), y(n);
    if constexpr (std::is_floating_point_v<Data>) {
        x[at] = std::numeric_limits<Data>::quiet_NaN();
        Data* dst = inPlace ? x.data() : y.data();
        EXPECT_EQ(Form::run(slot, x.data(), dst, n, state.get()), qvrOk);
        EXPECT_TRUE(std::isnan(dst[at]));
        return std::isnan(dst[at - 1]);
    } else {
        // A tap next to the range of doubles: a transform's round off drowns every other output.
        std::vector<double> t(taps, 0.0);
        t[0] = 1e300;
        t[taps - 1] = 1;
        state = create<Form>(slot, t);
        std::fill(x.begin(), x.end(), Data(0));
        x[at - taps] = 1;
        Data* dst = inPlace ? x.data() : y.data();
        EXPECT_EQ(Form::run(slot, x.data(), dst, n, state.get()), qvrOk);
        return dst[at - 1] != 1;
    }
}

TYPED_TEST(FirRun, PathByTapsAndSamples)
{
    using Form = TypeParam;
    eachSlot<Form>([&](int slot) {
        const int plan = Form::planFrom(slot), chunk = slot >= slots::e9 ? 4224 : 4096;
        EXPECT_FALSE(transforms<Form>(slot, plan - 1, 3000, 2000, false));
        EXPECT_TRUE(transforms<Form>(slot, plan, 3000, 2000, false));
        EXPECT_FALSE(transforms<Form>(slot, 100, 511, 300, false));
        EXPECT_TRUE(transforms<Form>(slot, 100, 512, 300, false));
        if constexpr (Form::mixed) {
            EXPECT_FALSE(transforms<Form>(slot, 100, 511, 300, true));
            EXPECT_TRUE(transforms<Form>(slot, 100, 512, 300, true));
            EXPECT_TRUE(transforms<Form>(slot, 100, 2 * chunk + 200, 2 * chunk + 150, true));
        } else {
            // In place the samples behind a chunk decide.
            EXPECT_FALSE(transforms<Form>(slot, 100, chunk + 511, 2000, true));
            EXPECT_TRUE(transforms<Form>(slot, 100, chunk + 512, 2000, true));
            EXPECT_FALSE(transforms<Form>(slot, 100, chunk + 512, chunk + 300, true));
        }
    });
}

// A stream cut into any pieces, on either path, in place or not.
TYPED_TEST(FirRun, StreamsInPieces)
{
    using Form = TypeParam;
    using Data = typename Form::Data;
    eachSlot<Form>([&](int slot) {
        for (int L : {5, 40, 100}) {
            const auto taps = exactTaps<Form>(L);
            const auto x = exactValues<Data>(14000, 5);
            const auto want = Model<Form>(taps).run(x.data(), x.size());
            for (const std::vector<int>& cuts :
                 {std::vector<int>{1, 7, 4096}, {600, 30, 2000, 511, 512}, {L, 1, L + 9, 5000}}) {
                auto state = create<Form>(slot, taps);
                std::vector<Data> y = x;
                size_t at = 0;
                for (size_t c = 0; at < x.size(); c++) {
                    const int n = static_cast<int>(std::min<size_t>(cuts[c % cuts.size()], x.size() - at));
                    const Data* src = c % 2 ? x.data() + at : y.data() + at;
                    ASSERT_EQ(Form::run(slot, src, y.data() + at, n, state.get()), qvrOk);
                    at += n;
                }
                if (L < Form::planFrom(slot))
                    expectExact<Form>(y, want, 0);
                else
                    expectNear<Form>(y, want);
            }
        }
    });
}

// From m7 up a direct output has the same bits wherever the stream is cut.
TYPED_TEST(FirRun, DirectSumsDoNotDependOnTheCut)
{
    using Form = TypeParam;
    using Data = typename Form::Data;
    eachSlot<Form>([&](int slot) {
        if (slot == slots::mx)
            return;
        for (int L : {3, 17, 31}) {
            const auto taps = randomValues<typename Form::Tap>(L, 3, -1, 1);
            const auto x = randomValues<Data>(3000, 4, -1, 1);
            std::vector<Data> whole(x.size()), parts(x.size());
            auto a = create<Form>(slot, taps), b = create<Form>(slot, taps);
            ASSERT_EQ(Form::run(slot, x.data(), whole.data(), 3000, a.get()), qvrOk);
            for (int at = 0, c = 1; at < 3000; at += c, c = c * 5 % 97 + 1)
                ASSERT_EQ(Form::run(slot, x.data() + at, parts.data() + at, std::min(c, 3000 - at), b.get()), qvrOk);
            EXPECT_EQ(memcmp(whole.data(), parts.data(), whole.size() * sizeof(Data)), 0) << L << " taps";
        }
    });
}

TYPED_TEST(FirRun, LongTaps)
{
    using Form = TypeParam;
    using Data = typename Form::Data;
    eachSlot<Form>([&](int slot) {
        // A few taps stand far apart, so that the model is quick.
        for (int L : {5000, 100000}) {
            std::vector<typename Form::Tap> taps(L);
            const std::vector<int> at = {0, 1, 77, L / 2, L - 2, L - 1};
            for (size_t i = 0; i < at.size(); i++)
                taps[at[i]] = static_cast<typename Form::Tap>(1 + i);
            auto state = create<Form>(slot, taps);
            ASSERT_GT(state->fftLen, 2 * L);
            std::vector<Data> stream(L), y;
            for (int n : {1, 20, 300, 512, 7000, 511, state->fftLen}) {
                const auto x = exactValues<Data>(n, n, 7);
                stream.insert(stream.end(), x.begin(), x.end());
                y.resize(n);
                ASSERT_EQ(Form::run(slot, x.data(), y.data(), n, state.get()), qvrOk);
                std::vector<double> want(n);
                for (int i = 0; i < n; i++)
                    for (int k : at)
                        want[i] +=
                            static_cast<double>(taps[k]) * static_cast<double>(stream[stream.size() - n + i - k]);
                SCOPED_TRACE(testing::Message() << L << " taps, " << n << " samples");
                if (n < 512)
                    expectExact<Form>(y, want, 0);
                else
                    expectNear<Form>(y, want);
            }
        }
    });
}

// Runs beyond the second cache, whose lines are asked for ahead: of one thread and of each of two.
TYPED_TEST(FirRun, LongRuns)
{
    using Form = TypeParam;
    using Data = typename Form::Data;
    const int n = static_cast<int>((3 << 19) / sizeof(Data)) + 53;
    for (int L : {3, 17, 300}) {
        const auto taps = exactValues<typename Form::Tap>(L, 5, 3);
        const auto x = exactValues<Data>(n, 6, 7);
        const auto want = Model<Form>(taps).run(x.data(), n);
        for (int threads : {1, 2}) {
            const Budget budget(threads);
            eachSlot<Form>([&](int slot) {
                SCOPED_TRACE(testing::Message() << L << " taps, " << threads << " threads");
                auto state = create<Form>(slot, taps);
                std::vector<Data> y(n + 9, 77);
                ASSERT_EQ(Form::run(slot, x.data(), y.data(), n, state.get()), qvrOk);
                EXPECT_EQ(std::vector<Data>(y.end() - 9, y.end()), std::vector<Data>(9, 77));
                y.resize(n);
                if (L < 300)
                    expectExact<Form>(y, want, 0);
                else
                    expectNear<Form>(y, want);
            });
        }
    }
}

// A NaN or an infinity enters the outputs that its sample belongs to, in one vector of outputs at most beyond them, and
// nothing stays behind when it has passed.
TYPED_TEST(FirRun, NanAndInfinityPass)
{
    using Form = TypeParam;
    using Data = typename Form::Data;
    if constexpr (std::is_floating_point_v<Data>) {
        eachSlot<Form>([&](int slot) {
            for (Data bad : {std::numeric_limits<Data>::quiet_NaN(), std::numeric_limits<Data>::infinity()}) {
                for (int L : {5, 20, 63}) {
                    const auto taps = std::vector<typename Form::Tap>(L, 1);
                    for (int n : {1, 3, 10, 66, 200}) {
                        auto state = create<Form>(slot, taps);
                        const auto clean = exactValues<Data>(600, 3);
                        auto x = clean;
                        const size_t at = 203;
                        x[at] = bad;
                        std::vector<Data> y(600);
                        for (size_t i = 0; i < 600; i += n)
                            ASSERT_EQ(Form::run(slot, &x[i], &y[i], static_cast<int>(std::min<size_t>(n, 600 - i)),
                                                state.get()),
                                      qvrOk);
                        const auto want = Model<Form>(taps).run(clean.data(), 600);
                        if (!Form::mixed || std::isnan(bad) || !std::is_same_v<Data, float>)
                            EXPECT_FALSE(std::isfinite(y[at]));
                        for (size_t i = 0; i < 600; i++) {
                            if (i >= at && i < at + L) {
                                if (std::isnan(bad))
                                    ASSERT_TRUE(std::isnan(y[i]));
                            } else {
                                ASSERT_EQ(y[i], static_cast<Data>(want[i])) << L << " taps by " << n << " at " << i;
                            }
                        }
                    }
                }
                // Through the transform path and out again.
                auto state = create<Form>(slot, std::vector<typename Form::Tap>(100, 1));
                std::vector<Data> x(2000, 1), y(2000);
                x[700] = bad;
                ASSERT_EQ(Form::run(slot, x.data(), y.data(), 2000, state.get()), qvrOk);
                EXPECT_FALSE(std::isfinite(y[700]) && std::isfinite(y[750]));
                x[700] = 1;
                for (int turn = 0; turn < 2; turn++)
                    ASSERT_EQ(Form::run(slot, x.data(), y.data(), 2000, state.get()), qvrOk);
                for (Data v : y)
                    ASSERT_NEAR(static_cast<double>(v), 100, 1e-3);
            }
        });
    }
}

// The last element of the delay line has no effect, not even as a NaN.
TYPED_TEST(FirRun, OldestDelayElementIsIdle)
{
    using Form = TypeParam;
    using Data = typename Form::Data;
    if constexpr (std::is_floating_point_v<Data>) {
        eachSlot<Form>([&](int slot) {
            for (int L : {1, 4, 20, 100}) {
                std::vector<Data> delay(L, 1), x(1200, 1), y(1200);
                delay[L - 1] = std::numeric_limits<Data>::quiet_NaN();
                for (int n : {1, 5, 300, 600, 1200}) {
                    auto state = create<Form>(slot, std::vector<typename Form::Tap>(L, 1), delay.data());
                    ASSERT_EQ(Form::run(slot, x.data(), y.data(), n, state.get()), qvrOk);
                    for (int i = 0; i < n; i++)
                        ASSERT_NEAR(static_cast<double>(y[i]), L, 1e-4 * L) << L << " taps, output " << i;
                }
            }
        });
    }
}

TYPED_TEST(FirRun, Statuses)
{
    using Form = TypeParam;
    using Data = typename Form::Data;
    eachSlot<Form>([&](int slot) {
        auto state = create<Form>(slot, exactTaps<Form>(100));
        alignas(64) unsigned char other[1024] = {};
        auto* wrong = reinterpret_cast<typename Form::State*>(other);
        for (uint32_t tag :
             {0u, Form::tag + 1, 0x46493133u, 0x46493031u, 0x46493137u, 0x46493235u, 0x46493333u, 0x46493334u}) {
            if (tag == Form::tag || (std::is_same_v<Form, Form32f> && (tag == 0x46493333u || tag == 0x46493334u)))
                continue;
            wrong->tag = tag;
            Guarded out(4096);
            const std::vector<Data> x(600);
            Data* dst = out.atEnd<Data>(600 * sizeof(Data));
            struct Args {
                const Data* src;
                Data* dst;
                int n;
                typename Form::State* state;
            };
            const auto before = std::vector<unsigned char>(other, other + sizeof other);
            for (int bad : {0, -1, INT32_MIN})
                expectStatusOrder<Args>(
                    {x.data(), dst, 600, state.get()},
                    {{"src", qvrErrNullPointer, [](Args& a) { a.src = nullptr; }},
                     {"dst", qvrErrNullPointer, [](Args& a) { a.dst = nullptr; }},
                     {"state", qvrErrNullPointer, [](Args& a) { a.state = nullptr; }},
                     {"length", qvrErrBadSize, [=](Args& a) { a.n = bad; }},
                     {"tag", qvrErrBadContext, [=](Args& a) { a.state = a.state ? wrong : nullptr; }}},
                    [&](const Args& a) { return Form::run(slot, a.src, a.dst, a.n, a.state); },
                    [&] { return out.untouched(); });
            EXPECT_EQ(Form::run(slot, dst, dst, 600, wrong), qvrErrBadContext);
            EXPECT_TRUE(out.untouched());
            EXPECT_EQ(memcmp(before.data(), other, sizeof other), 0);
        }
        // An unknown mode of a multi-rate state.
        wrong->tag = Form::multiRateTag;
        for (int mode : {0, 4, -1}) {
            wrong->multiRateMode = mode;
            std::vector<Data> x(8, Data(3)), y(8, Data(5));
            EXPECT_EQ(Form::run(slot, x.data(), y.data(), 2, wrong), qvrErrBadContext);
            EXPECT_EQ(Form::run(slot, x.data(), x.data(), 2, wrong), qvrErrBadContext);
            EXPECT_EQ(x, std::vector<Data>(8, Data(3)));
            EXPECT_EQ(y, std::vector<Data>(8, Data(5)));
        }
        // A damaged plan: the transform's status.
        int32_t* planTag = reinterpret_cast<int32_t*>(state->fftPlan);
        const int32_t saved = *planTag;
        *planTag = 77;
        std::vector<Data> x(2000), y(2000);
        EXPECT_EQ(Form::run(slot, x.data(), y.data(), 1500, state.get()), qvrErrBadContext);
        EXPECT_EQ(Form::run(slot, x.data(), y.data(), 512, state.get()), qvrErrBadContext);
        EXPECT_EQ(Form::run(slot, x.data(), y.data(), 511, state.get()), qvrOk);
        *planTag = saved;
    });
}

// ---- The 16-bit form ------------------------------------------------------------------------------------------------

TEST(Fir16s, RoundsHalfAwayAndSaturates)
{
    eachSlot<Form64f_16s>([&](int slot) {
        const auto one = [&](double tap, int16_t x, int scale) {
            auto state = create<Form64f_16s>(slot, {tap});
            int16_t y = 99;
            EXPECT_EQ(Form64f_16s::run(slot, &x, &y, 1, state.get(), scale), qvrOk);
            return y;
        };
        EXPECT_EQ(one(32767.4, 1, 0), 32767);
        EXPECT_EQ(one(32767.6, 1, 0), 32767);
        EXPECT_EQ(one(32766.5, 1, 0), 32767);
        EXPECT_EQ(one(-32768.4, 1, 0), -32768);
        EXPECT_EQ(one(-1e300, 1, 0), -32768);
        EXPECT_EQ(one(1e300, 1, 0), 32767);
        EXPECT_EQ(one(-0.5, 1, 0), -1);
        EXPECT_EQ(one(0.4, 1, 0), 0);
        EXPECT_EQ(one(-0.4, 1, 0), 0);
        EXPECT_EQ(one(NAN, 1, 0), 0);
        EXPECT_EQ(one(INFINITY, 1, 0), 32767);
        EXPECT_EQ(one(INFINITY, 0, 0), 0);
        EXPECT_EQ(one(1, 7, 1), 4);
        EXPECT_EQ(one(1, -7, 1), -4);
        EXPECT_EQ(one(1, 20000, -1), 32767);
        for (int scale : {0, 1, -1, 5, -5, 126, 127, 128, 129, -126, -127, -128, -129, 1000, -1000, INT32_MAX,
                          INT32_MIN, INT32_MIN + 1})
            for (double tap : {1.0, -3.5, 1e30, 1e-36})
                for (int x : {0, 1, 3, -5, 32767, -32768})
                    ASSERT_EQ(one(tap, static_cast<int16_t>(x), scale), roundedAway16(tap * x, scale))
                        << tap << " " << x << " " << scale;
    });
}

// Every vector tail of the output step, with scale, on both paths.
TEST(Fir16s, ScaledBlocks)
{
    eachSlot<Form64f_16s>([&](int slot) {
        for (int scale : {1, 3, -2})
            for (int L : {4, 100})
                for (int n : {1, 2, 3, 5, 7, 8, 9, 15, 17, 100, 600, 700, 3000}) {
                    const auto taps = exactTaps<Form64f_16s>(L);
                    const auto x = exactValues<int16_t>(n, n, 3000);
                    auto state = create<Form64f_16s>(slot, taps);
                    const auto want = Model<Form64f_16s>(taps).run(x.data(), n);
                    for (int i = 0; i < 2; i++) {
                        auto fresh = create<Form64f_16s>(slot, taps);
                        const auto y = runGuarded<Form64f_16s>(slot, fresh.get(), x, 1, i == 1, scale);
                        for (int k = 0; k < n; k++)
                            ASSERT_NEAR(y[k], roundedAway16(want[k], scale), n >= 512 && L >= 64 ? 1 : 0);
                    }
                }
    });
}

// ---- Narrowing ------------------------------------------------------------------------------------------------------

TEST(Fir64f_32f, LargeSumsBecomeTheLargestFloat)
{
    eachSlot<Form64f_32f>([&](int slot) {
        for (int n : {1, 5, 40, 600}) {
            auto state = create<Form64f_32f>(slot, {1e30});
            std::vector<float> x(n, 1e20f), y(n);
            x[n - 1] = -1e20f;
            ASSERT_EQ(Form64f_32f::run(slot, x.data(), y.data(), n, state.get()), qvrOk);
            for (int i = 0; i < n; i++)
                EXPECT_EQ(y[i], i == n - 1 ? -std::numeric_limits<float>::max() : std::numeric_limits<float>::max());
        }
    });
}

// ---- States without a delay line ------------------------------------------------------------------------------------

TEST(Fir32f, NoDelayLine)
{
    eachSlot<Form32f>([&](int slot) {
        for (int L : {1, 3, 9, 40})
            for (int n : {1, 2, 3, 4, 5, 7, 9, 30, 200}) {
                const auto taps = exactTaps<Form32f>(L);
                auto state = create<Form32f>(slot, taps);
                state->tag = 0x46493333;
                Guarded& in = pooledGuarded(1, (n + L - 1) * 4 + 64);
                const auto x = exactValues<float>(n + L - 1, 4);
                float* src = in.atEnd<float>(x.size() * 4);
                memcpy(src, x.data(), x.size() * 4);
                std::vector<float> y(n);
                ASSERT_EQ(Form32f::run(slot, src, y.data(), n, state.get()), qvrOk);
                for (int i = 0; i < n; i++) {
                    double want = 0;
                    for (int k = 0; k < L; k++)
                        want += taps[L - 1 - k] * x[i + k];
                    ASSERT_EQ(y[i], static_cast<float>(want));
                }
                EXPECT_EQ(Form32f::run(slot, y.data(), y.data(), n, state.get()), qvrErrBadContext);
            }
    });
}

// ---- The sums of mx -------------------------------------------------------------------------------------------------

// Four lanes (two in double), eight (four) taps a turn behind a head up to an aligned address, folded, then the rest.
template<class T> T laneSum(const T* t, const T* x, int L, int head, bool vectors)
{
    constexpr int lanes = 16 / sizeof(T);
    T lane[lanes] = {}, sum = 0;
    int k = 0;
    if (vectors && L - head >= 2 * lanes) {
        for (; k < head; k++)
            lane[0] += t[k] * x[k];
        while (k + 2 * lanes <= L)
            for (int half = 0; half < 2; half++, k += lanes)
                for (int l = 0; l < lanes; l++)
                    lane[l] += t[k + l] * x[k + l];
        if constexpr (lanes == 4)
            sum = (lane[0] + lane[2]) + (lane[1] + lane[3]);
        else
            sum = lane[0] + lane[1];
    }
    for (; k < L; k++)
        sum += t[k] * x[k];
    return sum;
}

template<class Form> void checkLaneSums()
{
    using T = typename Form::Tap;
    if (!slots::canRun(0))
        GTEST_SKIP();
    for (int L : {1, 3, 7, 8, 9, 15, 16, 17, 25, 31}) {
        const auto taps = randomValues<T>(L, 3, -1, 1);
        const std::vector<T> reversed(taps.rbegin(), taps.rend());
        for (int n : {1, 4, 11, 400}) {
            auto state = create<Form>(0, taps);
            std::vector<T> x = randomValues<T>(n + L, 5, -1, 1), y(n);
            std::fill(x.begin(), x.begin() + L, T(0));
            const T* src = x.data() + L;
            ASSERT_EQ(Form::run(0, src, y.data(), n, state.get()), qvrOk);
            const int limit = state->directLimit, group = sizeof(T) == 4 ? 8 : 4;
            for (int i = 0; i < n; i++) {
                // Where the window stood, and the group that began there.
                const bool buffered = n <= limit || i < limit - 1;
                const int from = buffered ? 0 : limit - 1, count = buffered ? (n <= limit ? n : limit - 1) : n - from;
                const int at = i - from, eights = count / group * group;
                const int start = at < eights                                                ? at / group * group
                                  : sizeof(T) == 4 && at - eights < 4 && count - eights >= 4 ? eights
                                                                                             : at;
                const T* base = buffered ? state->delayStore + 1 + start : src + from + 1 - L + start;
                int head = 0;
                if (sizeof(T) == 8)
                    head = static_cast<int>(-reinterpret_cast<uintptr_t>(base + 3) % 32 / 8);
                ASSERT_EQ(y[i], laneSum(reversed.data(), x.data() + i + 1, L, head, true))
                    << L << " taps, output " << i;
            }
        }
    }
}
TEST(FirMx, LaneSums32f)
{
    checkLaneSums<Form32f>();
}
TEST(FirMx, LaneSums64f)
{
    checkLaneSums<Form64f>();
}

// The path of a run: a spectrum of the taps that is no number shows wherever it was used.
template<class Form> class FirPath : public testing::Test {};
using PathForms = testing::Types<Form32f, Form64f, Form64f_32f>;
TYPED_TEST_SUITE(FirPath, PathForms);

TYPED_TEST(FirPath, Thresholds)
{
    using Form = TypeParam;
    using Data = typename Form::Data;
    eachSlot<Form>([&](int slot) {
        const int L = 100, chunk = slot >= 5 ? 4224 : 4096;
        // How many of n samples went through the transform.
        const auto transformed = [&](int n, bool inPlace) {
            auto state = create<Form>(slot, std::vector<typename Form::Tap>(L, 1));
            for (int k = 0; k < state->fftLen; k++)
                state->tapSpectrum[k] = NAN;
            std::vector<Data> x(n, 1), y(n);
            Data* to = inPlace ? x.data() : y.data();
            EXPECT_EQ(Form::run(slot, x.data(), to, n, state.get()), qvrOk);
            return std::count_if(to, to + n, [](Data v) { return !(v == v) || std::fabs(v) > 1e30; });
        };
        EXPECT_EQ(transformed(511, false), 0);
        EXPECT_EQ(transformed(512, false), 512);
        EXPECT_EQ(transformed(9000, false), 9000);
        const bool mixed = sizeof(Data) < sizeof(typename Form::Tap);
        EXPECT_EQ(transformed(511, true), 0);
        EXPECT_EQ(transformed(512, true), mixed ? 512 : 0);
        EXPECT_EQ(transformed(chunk + 511, true), mixed ? chunk + 511 : 0);
        EXPECT_EQ(transformed(chunk + 512, true), mixed ? chunk + 512 : chunk);
        EXPECT_EQ(transformed(2 * chunk + 512, true), mixed ? 2 * chunk + 512 : 2 * chunk);
    });
}

} // namespace
