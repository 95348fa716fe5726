#include <cmath>
#include <memory>

#include "filters/iir_state_record.h"
#include "filters/slot_tables.h"
#include "support/allocation.h"
#include "support/guarded.h"
#include "support/slots.h"
#include "support/status_order.h"
#include "support/values.h"

namespace {

struct Release {
    int slot;
    void operator()(qvrsIIRState_64f* s) const { qvrTable_qvrsIIRFree_64f[slot](s); }
};
using State = std::unique_ptr<qvrsIIRState_64f, Release>;

State create(int slot, const std::vector<double>& taps, const double* delay = nullptr)
{
    qvrsIIRState_64f* state = nullptr;
    const int order = static_cast<int>(taps.size()) / 2 - 1;
    EXPECT_EQ(qvrTable_qvrsIIRInitAlloc_64f[slot](&state, taps.data(), order, delay), qvrOk);
    return State(state, Release{slot});
}

// A stable filter with real and complex poles of magnitude up to 0.9.
std::vector<double> stableTaps(int order, double a0 = 1)
{
    std::mt19937 engine(order);
    std::uniform_real_distribution<double> u(0, 1);
    std::vector<double> a = {1};
    const auto multiply = [&](std::vector<double> by) {
        std::vector<double> r(a.size() + by.size() - 1);
        for (size_t i = 0; i < a.size(); i++)
            for (size_t j = 0; j < by.size(); j++)
                r[i + j] += a[i] * by[j];
        a = r;
    };
    int left = order;
    for (; left >= 2; left -= 2) {
        const double r = 0.3 + 0.5 * u(engine), t = 3 * u(engine);
        multiply({1, -2 * r * std::cos(t), r * r});
    }
    if (left)
        multiply({1, -0.7});
    std::vector<double> taps;
    for (int k = 0; k <= order; k++)
        taps.push_back(a0 * (u(engine) - 0.5));
    for (double x : a)
        taps.push_back(a0 * x);
    return taps;
}

// The difference equation in the transposed form, in long double.
struct Model {
    std::vector<long double> b, a, d;
    explicit Model(const std::vector<double>& taps, const double* delay = nullptr)
    {
        const size_t n = taps.size() / 2;
        for (size_t k = 0; k < n; k++) {
            b.push_back(static_cast<long double>(taps[k]) / taps[n]);
            a.push_back(static_cast<long double>(taps[n + k]) / taps[n]);
        }
        d.assign(n, 0);
        for (size_t k = 0; delay && k + 1 < n; k++)
            d[k] = delay[k];
    }
    long double step(long double x)
    {
        const long double y = b[0] * x + d[0];
        for (size_t k = 0; k + 1 < d.size(); k++)
            d[k] = b[k + 1] * x - a[k + 1] * y + d[k + 1];
        return y;
    }
};

// For the well-conditioned filters of this file; designs with poles near the circle have a test of their own.
void expectNear(const std::vector<double>& got, const std::vector<long double>& want, int order, const char* what)
{
    const long double bound = order <= 16 ? 1e-11L : 1e-9L;
    long double scale = 1e-300L;
    for (long double x : want)
        scale = std::max(scale, std::fabs(x));
    for (size_t i = 0; i < got.size(); i++)
        ASSERT_LT(std::fabs(got[i] - want[i]), bound * scale) << what << " sample " << i << " of " << got.size();
}

TEST(Iir, AgreesWithTheDifferenceEquation)
{
    slots::each(qvrTable_qvrsIIR_64f, [&](auto run, int slot) {
        for (int order : {1, 2, 3, 4, 5, 6, 7, 8, 9, 12, 16, 25}) {
            for (double a0 : {1.0, 2.0, -0.37}) {
                const std::vector<double> taps = stableTaps(order, a0), delay = randomValues<double>(order, 3, -1, 1);
                // Round 4 L, where the block form begins, and round the chunk of 1024.
                for (int n : {1, 2, 3, order, 4 * order - 1, 4 * order, 4 * order + 1, 4 * order + 2, 4 * order + 3,
                              4 * order + 4, 200, 1023, 1024, 1025, 1024 + 4 * order, 1024 + 4 * order + 1, 2500}) {
                    State state = create(slot, taps, delay.data());
                    Model model(taps, delay.data());
                    const std::vector<double> x = randomValues<double>(n, n, -1, 1);
                    std::vector<long double> want;
                    for (double s : x)
                        want.push_back(model.step(s));
                    Guarded &in = pooledGuarded(1, n * 8 + 64), &out = pooledGuarded(2, n * 8 + 64);
                    for (size_t offset : {0, 1, 8}) {
                        State fresh = create(slot, taps, delay.data());
                        double *src = in.atEnd<double>(n * 8, offset), *dst = out.atFront<double>(n * 8, offset);
                        memcpy(static_cast<void*>(src), x.data(), n * 8);
                        ASSERT_EQ(run(src, dst, n, fresh.get()), qvrOk);
                        std::vector<double> got(n);
                        memcpy(got.data(), static_cast<void*>(dst), n * 8);
                        expectNear(got, want, order, "out of place");
                        EXPECT_TRUE(in.intact() && out.intact());
                        // In place gives the very same samples.
                        ASSERT_EQ(run(src, src, n, state.get()), qvrOk);
                        EXPECT_EQ(memcmp(static_cast<void*>(src), got.data(), n * 8), 0)
                            << "in place, order " << order << " n " << n;
                        state = create(slot, taps, delay.data());
                    }
                }
            }
        }
    });
}

// A stream cut anywhere continues.
TEST(Iir, StreamsInPieces)
{
    slots::each(qvrTable_qvrsIIR_64f, [&](auto run, int slot) {
        for (int order : {1, 2, 4, 7, 12}) {
            const std::vector<double> taps = stableTaps(order), x = randomValues<double>(6000, 5, -1, 1);
            Model model(taps);
            std::vector<long double> want;
            for (double s : x)
                want.push_back(model.step(s));
            for (std::vector<int> cuts :
                 {std::vector<int>{1000, 1500, 3500}, {1, 2, 3, 4 * order, 4 * order + 1, 5000}, {2500, 1024, 1025}}) {
                State state = create(slot, taps);
                std::vector<double> got(x.size());
                size_t at = 0;
                for (size_t c = 0; at < x.size(); c = (c + 1) % cuts.size()) {
                    const int n = static_cast<int>(std::min<size_t>(cuts[c], x.size() - at));
                    ASSERT_EQ(run(x.data() + at, got.data() + at, n, state.get()), qvrOk);
                    at += n;
                }
                expectNear(got, want, order, "in pieces");
            }
        }
    });
}

// The sample step to the bit, where only it can run: short calls, and all of slot mx but its pairs.
TEST(Iir, SampleStepExactly)
{
    slots::each(qvrTable_qvrsIIR_64f, [&](auto run, int slot) {
        for (int order : {1, 2, 3, 8}) {
            const std::vector<double> taps = stableTaps(order, 1.7);
            State state = create(slot, taps);
            const double r = 1.0 / taps[order + 1];
            std::vector<double> d(order + 1);
            const std::vector<double> x = randomValues<double>(500, 9, -1, 1);
            for (double s : x) {
                double got;
                ASSERT_EQ(run(&s, &got, 1, state.get()), qvrOk);
                const double y = taps[0] * r * s + d[0];
                for (int k = 0; k < order; k++)
                    d[k] = taps[k + 1] * r * s - taps[order + 2 + k] * r * y + d[k + 1];
                ASSERT_EQ(got, y);
            }
        }
    });
}

// Slot mx takes two samples a turn, with its own order of additions.
TEST(Iir, PairsExactly)
{
    if (!slots::canRun(0))
        GTEST_SKIP();
    for (int order : {2, 3, 5, 8}) {
        const std::vector<double> taps = stableTaps(order);
        State state = create(0, taps);
        const std::vector<double> x = randomValues<double>(101, 9, -1, 1);
        std::vector<double> got(x.size()), d(order + 2);
        ASSERT_EQ(qvrTable_qvrsIIR_64f[0](x.data(), got.data(), 101, state.get()), qvrOk);
        const double* b = taps.data();
        const double* a = taps.data() + order + 1;
        for (size_t i = 0; i + 1 < x.size(); i += 2) {
            const double x0 = x[i], x1 = x[i + 1];
            const double y0 = b[0] * x0 + d[0];
            const double y1 = b[1] * x0 + d[1] + b[0] * x1 - a[1] * y0;
            for (int k = 0; k <= order - 2; k++)
                d[k] = b[k + 1] * x1 - a[k + 1] * y1 + b[k + 2] * x0 - a[k + 2] * y0 + d[k + 2];
            d[order - 1] = b[order] * x1 - a[order] * y1;
            ASSERT_EQ(got[i], y0);
            ASSERT_EQ(got[i + 1], y1);
        }
        ASSERT_EQ(got[100], b[0] * x[100] + d[0]);
    }
}

// An infinite or NaN sample leaves the outputs before it alone.
TEST(Iir, BadSamplesDoNotReachBack)
{
    slots::each(qvrTable_qvrsIIR_64f, [&](auto run, int slot) {
        for (int order : {1, 2, 3, 4, 8}) {
            const std::vector<double> taps = stableTaps(order);
            std::vector<double> x = randomValues<double>(300, 4, -1, 1), clean(300), got(300);
            State a = create(slot, taps), b = create(slot, taps);
            run(x.data(), clean.data(), 300, a.get());
            for (double bad : {double(INFINITY), double(NAN)}) {
                for (int at = 100; at < 109; at++) {
                    std::vector<double> y = x;
                    y[at] = bad;
                    State c = create(slot, taps);
                    run(y.data(), got.data(), 300, c.get());
                    for (int i = 0; i < at; i++)
                        ASSERT_EQ(got[i], clean[i]) << "order " << order << " bad at " << at << " output " << i;
                    EXPECT_FALSE(std::isfinite(got[at]));
                }
            }
        }
    });
}

TEST(Iir, CascadeByHand)
{
    slots::each(qvrTable_qvrsIIR_64f, [&](auto run, int slot) {
        for (int sections : {1, 2, 3, 4, 7}) {
            std::vector<double> taps, delay(2 * sections);
            for (int s = 0; s < sections; s++)
                for (double t : {0.5 + 0.1 * s, -0.3, 0.2, -0.4 + 0.05 * s, 0.25})
                    taps.push_back(t);
            for (size_t k = 0; k < delay.size(); k++)
                delay[k] = 0.01 * static_cast<double>(k);
            std::vector<double> d = delay, block(1024);
            qvrsIIRState_64f state = {
                qvrTagIirCascade, taps.data(), delay.data(), 2 * sections, nullptr, nullptr, block.data(), nullptr, 0};
            const std::vector<double> x = randomValues<double>(2500, 3, -1, 1);
            std::vector<double> got = x, out(x.size());
            ASSERT_EQ(run(x.data(), out.data(), 700, &state), qvrOk);
            ASSERT_EQ(run(got.data() + 700, got.data() + 700, 1800, &state), qvrOk);
            std::copy(out.begin(), out.begin() + 700, got.begin());
            for (size_t i = 0; i < x.size(); i++) {
                double v = x[i];
                for (int s = 0; s < sections; s++) {
                    const double* t = &taps[5 * s];
                    const double y = t[0] * v + d[2 * s];
                    d[2 * s] = t[1] * v + d[2 * s + 1] - t[3] * y;
                    d[2 * s + 1] = t[2] * v - t[4] * y;
                    v = y;
                }
                ASSERT_EQ(got[i], v) << sections << " sections, sample " << i;
            }
            EXPECT_EQ(qvrTable_qvrsIIRFree_64f[slot](&state), qvrOk); // not owned: nothing is freed
        }
    });
}

TEST(Iir, CreationStatuses)
{
    slots::each(qvrTable_qvrsIIRInitAlloc_64f, [&](auto create, int slot) {
        CountingAllocator allocator;
        const double taps[4] = {1, 2, 3, 4}, zeroA0[4] = {1, 2, -0.0, 4};
        struct Args {
            bool state, taps;
            int order;
            bool zero;
        };
        for (int order : {0, -1, INT32_MIN}) {
            qvrsIIRState_64f* state = nullptr;
            expectStatusOrder<Args>({true, true, 1, false},
                                    {{"state", qvrErrNullPointer, [](Args& a) { a.state = false; }},
                                     {"taps", qvrErrNullPointer, [](Args& a) { a.taps = false; }},
                                     {"order", qvrErrBadOrder, [order](Args& a) { a.order = order; }},
                                     {"a0", qvrErrDivByZero, [](Args& a) { a.zero = true; }}},
                                    [&](const Args& a) {
                                        return create(a.state ? &state : nullptr,
                                                      !a.taps  ? nullptr
                                                      : a.zero ? zeroA0
                                                               : taps,
                                                      a.order, nullptr);
                                    });
        }
        EXPECT_EQ(allocator.live(), 0u);
        // Beyond 2^31 - 1 bytes nothing is asked for; the taps are not looked at.
        const int before = allocator.allocations();
        qvrsIIRState_64f* state = nullptr;
        for (int order : {INT32_MAX, INT32_MAX / 2, 1 << 28})
            EXPECT_EQ(create(&state, taps, order, nullptr), qvrErrNoMemory);
        EXPECT_EQ(allocator.allocations(), before);
        EXPECT_EQ(state, nullptr);
        ASSERT_EQ(create(&state, taps, 1, nullptr), qvrOk);
        EXPECT_EQ(reinterpret_cast<uintptr_t>(state) % 32, 0u);
        EXPECT_EQ(allocator.live(), 1u);
        EXPECT_EQ(qvrTable_qvrsIIRFree_64f[slot](state), qvrOk);
        EXPECT_EQ(allocator.live(), 0u);
        EXPECT_EQ(failEachAllocation(
                      [&] {
                          qvrsIIRState_64f* s = nullptr;
                          const qvrStatus status = create(&s, taps, 1, nullptr);
                          if (s)
                              qvrTable_qvrsIIRFree_64f[slot](s);
                          return status;
                      },
                      [&](int, qvrStatus status, const CountingAllocator& a) {
                          EXPECT_EQ(status, qvrErrNoMemory);
                          EXPECT_EQ(a.live(), 0u);
                      }),
                  1);
    });
}

TEST(Iir, StoredForm)
{
    slots::each(qvrTable_qvrsIIRInitAlloc_64f, [&](auto, int slot) {
        const std::vector<double> taps = {1, 2, 3, 4, 2, 5, 6, 7}, delay = {0.5, 0.25, 0.125};
        State s = create(slot, taps, delay.data());
        EXPECT_EQ(s->tag, 0x49493133u);
        EXPECT_EQ(s->order, 3);
        EXPECT_EQ(s->owned, 1);
        const double want[7] = {0.5, 1, 1.5, 2, 2.5, 3, 3.5};
        for (int k = 0; k < 7; k++)
            EXPECT_EQ(s->tapsStore[k], want[k]);
        for (int k = 0; k < 3; k++)
            EXPECT_EQ(s->delayStore[k], delay[k]);
        EXPECT_EQ(s->delayStore[3], 0);
        if (slot == slots::mx)
            return;
        for (int k = 0; k < 4; k++)
            EXPECT_TRUE(s->pairTaps[2 * k] == want[k] && s->pairTaps[2 * k + 1] == want[k]);
        const double c[6] = {-2.5, -3, -3.5, 0, 0, 0};
        for (int k = 0; k < 3; k++) {
            const double* row = s->lookAheadRows + 4 * k;
            const double r0 = c[k], r1 = c[0] * r0 + c[k + 1], r2 = c[0] * r1 + c[1] * r0 + c[k + 2];
            EXPECT_EQ(row[0], r0);
            EXPECT_EQ(row[1], r1);
            EXPECT_EQ(row[2], r2);
            EXPECT_EQ(row[3], c[0] * r2 + c[1] * r1 + c[2] * r0 + c[k + 3]);
        }
    });
}

TEST(Iir, RunAndFreeStatuses)
{
    slots::each(qvrTable_qvrsIIR_64f, [&](auto run, int slot) {
        State state = create(slot, {1, 2, 1, 0.5});
        qvrsIIRState_64f foreign = *state;
        foreign.tag = 0x46493031;
        const double x[2] = {1, 2};
        Guarded dst(16);
        double* d = dst.atEnd<double>(16);
        struct Args {
            const double* src;
            double* dst;
            int n;
            qvrsIIRState_64f* state;
        };
        for (int n : {0, -1, INT32_MIN})
            expectStatusOrder<Args>(
                {x, d, 2, state.get()},
                {{"src", qvrErrNullPointer, [](Args& a) { a.src = nullptr; }},
                 {"dst", qvrErrNullPointer, [](Args& a) { a.dst = nullptr; }},
                 {"state", qvrErrNullPointer, [](Args& a) { a.state = nullptr; }},
                 {"numIters", qvrErrBadSize, [n](Args& a) { a.n = n; }}},
                [&](const Args& a) { return run(a.src, a.dst, a.n, a.state); }, [&] { return dst.untouched(); });
        EXPECT_EQ(run(x, d, 0, &foreign), qvrErrBadSize);
        EXPECT_EQ(run(x, d, 1, &foreign), qvrErrBadContext);
        EXPECT_TRUE(dst.untouched());
        EXPECT_EQ(qvrTable_qvrsIIRFree_64f[slot](nullptr), qvrErrNullPointer);
        EXPECT_EQ(qvrTable_qvrsIIRFree_64f[slot](&foreign), qvrErrBadContext);
    });
}

} // namespace
