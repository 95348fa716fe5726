#include <set>

#include "filters/fir_model.h"
#include "filters/slot_tables.h"
#include "frame/threads.h"
#include "support/allocation.h"
#include "support/budget.h"
#include "support/status_order.h"

using namespace fir;

namespace {

template<class Form> class FirState : public testing::Test {};
using Forms = testing::Types<Form32f, Form64f, Form64f_32f, Form64f_16s>;
TYPED_TEST_SUITE(FirState, Forms);

// Every element that the layout of the slot names.
template<class Form> void expectLayout(int slot, int L)
{
    using Tap = typename Form::Tap;
    const auto taps = randomValues<Tap>(L, L, -1, 1);
    const auto delay = randomValues<typename Form::Data>(L, 5, -100, 100);
    auto state = create<Form>(slot, taps, delay.data());
    const auto reversed = [&](int k) { return k >= 0 && k < L ? taps[L - 1 - k] : Tap(0); };
    const bool narrow = slot <= slots::m7, wide = slot >= slots::e9;
    EXPECT_EQ(state->tag, Form::tag);
    EXPECT_EQ(state->tapsLen, L);
    EXPECT_EQ(state->delayLen, L);
    EXPECT_EQ(state->delayIndex, 0);
    EXPECT_EQ(state->owned, 1);
    EXPECT_EQ(state->phaseTable, nullptr);
    if (sizeof(Tap) == 4 && wide) {
        EXPECT_EQ(state->directLimit, (L + 7) / 8 * 8 + 1);
        const int S = (L + 16) / 8 * 8;
        for (int k = 0; k < S; k++)
            ASSERT_EQ(state->tapsStore[k], reversed(k));
        for (int m = 0; m < S; m++)
            for (int j = 0; j < 8; j++)
                ASSERT_EQ(state->tapsStore[S + 8 * m + j], reversed(m - j));
    } else {
        EXPECT_EQ(state->directLimit, (L + 3) / 4 * 4 + 1);
        const int S = narrow ? L : sizeof(Tap) == 4 ? (L + 6) / 4 * 4 : (L + 2) / 2 * 2;
        for (int row = 0; row < (narrow ? 1 : sizeof(Tap) == 4 ? 4 : 2); row++)
            for (int k = 0; k < S; k++)
                ASSERT_EQ(state->tapsStore[row * S + k], reversed(k - row));
    }
    const int repeats = narrow ? 0 : sizeof(Tap) == 4 && wide ? 8 : 4;
    EXPECT_EQ(state->laneTaps == nullptr, narrow);
    for (int k = 0; k < L * repeats; k++)
        ASSERT_EQ(state->laneTaps[k], taps[k / repeats]);
    for (int k = 0; k < L; k++)
        ASSERT_EQ(state->delayStore[L - 1 - k], static_cast<Tap>(delay[k]));
    if (L < Form::planFrom(slot)) {
        EXPECT_EQ(state->fftLen, -1);
        EXPECT_EQ(state->fftPlan, nullptr);
        EXPECT_EQ(state->tapSpectrum, nullptr);
    } else {
        int p = 2;
        while ((1 << p) <= L)
            p++;
        EXPECT_EQ(state->fftLen, 2 << p);
        ASSERT_NE(state->fftPlan, nullptr);
        // Packed: the sums of the taps with the signs of frequencies 0 and N/2 in front.
        double sum = 0, alternating = 0;
        for (int k = 0; k < L; k++) {
            sum += taps[k];
            alternating += k % 2 ? -taps[k] : taps[k];
        }
        EXPECT_NEAR(state->tapSpectrum[0], sum, 1e-5 * L);
        EXPECT_NEAR(state->tapSpectrum[1], alternating, 1e-5 * L);
        EXPECT_EQ(state->fftWork == nullptr, state->fftWorkSize == 0);
    }
    EXPECT_EQ(reinterpret_cast<uintptr_t>(state.get()) % 32, 0u);
}

TYPED_TEST(FirState, Layout)
{
    eachSlot<TypeParam>([](int slot) {
        for (int L : {1, 2, 3, 4, 5, 7, 8, 9, 16, 17, 31, 32, 63, 64, 127, 128, 1000, 1024})
            expectLayout<TypeParam>(slot, L);
    });
}

TYPED_TEST(FirState, CreationStatuses)
{
    using Form = TypeParam;
    using Tap = typename Form::Tap;
    eachSlot<Form>([&](int slot) {
        CountingAllocator allocator;
        const std::vector<Tap> taps(100, Tap(1));
        struct Args {
            bool state, taps;
            int len;
        };
        for (int bad : {0, -1, INT32_MIN}) {
            typename Form::State* state = nullptr;
            expectStatusOrder<Args>({true, true, 1},
                                    {{"state", qvrErrNullPointer, [](Args& a) { a.state = false; }},
                                     {"taps", qvrErrNullPointer, [](Args& a) { a.taps = false; }},
                                     {"length", qvrErrBadTapsLen, [bad](Args& a) { a.len = bad; }}},
                                    [&](const Args& a) {
                                        return Form::creators[slot](a.state ? &state : nullptr,
                                                                    a.taps ? taps.data() : nullptr, a.len, nullptr);
                                    });
            EXPECT_EQ(state, nullptr);
        }
        EXPECT_EQ(allocator.allocations(), 0);
        // One allocation, and that of the plan where it is a thing of its own.
        for (int L : {1, 31, 63, 64, 100}) {
            const int before = allocator.allocations();
            create<Form>(slot, std::vector<Tap>(L, Tap(1)));
            const bool ownPlan = sizeof(Tap) == 4 && L >= 64;
            EXPECT_EQ(allocator.allocations() - before, ownPlan ? 2 : 1);
            EXPECT_EQ(allocator.live(), 0u);
        }
        EXPECT_EQ(allocator.badFrees(), 0);
        // Sizes beyond 31 bits: nothing is asked for, the taps are not looked at.
        const int before = allocator.allocations();
        for (int L : {INT32_MAX, INT32_MAX / 2, 1 << 29, (1 << 28) - 1}) {
            typename Form::State* state = nullptr;
            const bool noPlan =
                sizeof(Tap) == 4 && L >= (slot == slots::mx ? 1 << 27 : 1 << 28); // no transform so long
            EXPECT_EQ(Form::creators[slot](&state, taps.data(), L, nullptr),
                      noPlan ? qvrErrNullPointer : qvrErrNoMemory);
            EXPECT_EQ(state, nullptr);
        }
        EXPECT_EQ(allocator.allocations(), before);
    });
}

// Regions for each thread of the budget, but for no more than 2^31 - 1 bytes hold.
TYPED_TEST(FirState, MemoryFitsTheBudget)
{
    using Form = TypeParam;
    using Tap = typename Form::Tap;
    const int L = sizeof(Tap) == 4 ? 1 << 21 : 1 << 20;
    const double block = static_cast<double>(sizeof(Tap)) * 4 * L;
    const std::vector<Tap> taps(L, Tap(1));
    eachSlot<Form>([&](int slot) {
        for (int budget : {2, 64, 1000}) {
            Budget set(budget);
            // Behind the plan and what makes it, where these have memory of their own.
            CountingAllocator allocator(sizeof(Tap) == 4 ? 2 : 0);
            typename Form::State* state = nullptr;
            EXPECT_EQ(Form::creators[slot](&state, taps.data(), L, nullptr), qvrErrNoMemory);
            EXPECT_EQ(allocator.allocations(), sizeof(Tap) == 4 ? 3 : 1);
            EXPECT_LT(allocator.lastSize(), size_t{1} << 31);
            EXPECT_GT(static_cast<double>(allocator.lastSize()), (budget == 2 ? 2 : 50) * block);
            EXPECT_EQ(allocator.live(), 0u);
        }
    });
}

TYPED_TEST(FirState, AllocationFailures)
{
    using Form = TypeParam;
    using Tap = typename Form::Tap;
    eachSlot<Form>([&](int slot) {
        for (int L : {10, 100, 700}) {
            const std::vector<Tap> taps(L, Tap(1));
            const bool ownPlan = sizeof(Tap) == 4 && L >= 64;
            const int planBlocks = L == 700 ? 2 : 1; // from order 11 on the plan takes memory by the way
            const int allocations = failEachAllocation(
                [&] {
                    typename Form::State* state = nullptr;
                    const qvrStatus status = Form::creators[slot](&state, taps.data(), L, nullptr);
                    if (status == qvrOk)
                        EXPECT_EQ(Form::destroyers[slot](state), qvrOk);
                    return status;
                },
                [&](int n, qvrStatus status, const CountingAllocator& a) {
                    // A plan that cannot be had is as good as null.
                    EXPECT_EQ(status, ownPlan && n < planBlocks ? qvrErrNullPointer : qvrErrNoMemory);
                    EXPECT_EQ(a.live(), 0u);
                    EXPECT_EQ(a.badFrees(), 0);
                });
            EXPECT_EQ(allocations, ownPlan ? planBlocks + 1 : 1);
        }
    });
}

TYPED_TEST(FirState, RunsAllocateNothing)
{
    using Form = TypeParam;
    using Data = typename Form::Data;
    eachSlot<Form>([&](int slot) {
        auto state = create<Form>(slot, std::vector<typename Form::Tap>(100, 1));
        CountingAllocator allocator;
        std::vector<Data> x(10000), y(10000);
        EXPECT_EQ(Form::run(slot, x.data(), y.data(), 10000, state.get()), qvrOk);
        EXPECT_EQ(Form::run(slot, x.data(), x.data(), 10000, state.get()), qvrOk);
        EXPECT_EQ(allocator.allocations(), 0);
    });
}

TYPED_TEST(FirState, Destruction)
{
    using Form = TypeParam;
    eachSlot<Form>([&](int slot) {
        EXPECT_EQ(Form::destroyers[slot](nullptr), qvrErrNullPointer);
        auto state = create<Form>(slot, {1, 2, 3});
        const uint32_t all[] = {0x46493031, 0x46493033, 0x46493133, 0x46493135, 0x46493137, 0x46493139, 0x46493231,
                                0x46493235, 0x46493237, 0x46493333, 0x46493334, 0,          0x31304946, 0x49493133};
        std::set<uint32_t> accepted = {Form::tag, Form::multiRateTag};
        if (std::is_same_v<Form, Form32f>)
            accepted.insert({0x46493333, 0x46493334});
        state->owned = 0;
        for (uint32_t tag : all) {
            state->tag = tag;
            EXPECT_EQ(Form::destroyers[slot](state.get()), accepted.count(tag) ? qvrOk : qvrErrBadContext) << tag;
        }
        state->tag = Form::tag;
        state->owned = 1;
    });
}

// ---- Accessors ------------------------------------------------------------------------------------------------------

template<class Form, class Get, class Set> void checkAccessors(const Get& getters, const Set& setters)
{
    using Data = typename Form::Data;
    slots::each(getters, [&](auto get, int slot) {
        const auto set = setters[slot];
        for (int L : {1, 2, 5, 16, 70}) {
            auto state = create<Form>(slot, std::vector<typename Form::Tap>(L, 1));
            Guarded &a = pooledGuarded(1, L * sizeof(Data) + 64), &b = pooledGuarded(2, L * sizeof(Data) + 64);
            for (size_t offset : {0, 1, 4, 30}) {
                Data *out = a.atFront<Data>(L * sizeof(Data), offset), *in = b.atEnd<Data>(L * sizeof(Data), offset);
                auto values = randomValues<Data>(L, 3, -1, 1);
                values[0] = std::numeric_limits<Data>::infinity();
                values[L - 1] = std::numeric_limits<Data>::quiet_NaN();
                memcpy(static_cast<void*>(in), values.data(), L * sizeof(Data));
                ASSERT_EQ(set(state.get(), in), qvrOk);
                ASSERT_EQ(get(state.get(), out), qvrOk);
                EXPECT_EQ(memcmp(static_cast<void*>(out), values.data(), L * sizeof(Data)), 0);
                EXPECT_TRUE(a.intact());
            }
            // Null means zeros, as at creation.
            ASSERT_EQ(set(state.get(), nullptr), qvrOk);
            std::vector<Data> got(L, 7), zeros(L, 0);
            ASSERT_EQ(get(state.get(), got.data()), qvrOk);
            EXPECT_EQ(got, zeros);
            auto fresh = create<Form>(slot, std::vector<typename Form::Tap>(L, 1));
            got.assign(L, 7);
            ASSERT_EQ(get(fresh.get(), got.data()), qvrOk);
            EXPECT_EQ(got, zeros);
            // After a run the newest sample stands first.
            std::vector<Data> x = randomValues<Data>(L + 3, 9, -1, 1), y(L + 3);
            ASSERT_EQ(Form::run(slot, x.data(), y.data(), L + 3, fresh.get()), qvrOk);
            ASSERT_EQ(get(fresh.get(), got.data()), qvrOk);
            for (int k = 0; k < L; k++)
                EXPECT_EQ(got[k], x[L + 2 - k]);
        }
        auto state = create<Form>(slot, {1, 2});
        Data two[2] = {5, 5};
        EXPECT_EQ(get(nullptr, two), qvrErrNullPointer);
        EXPECT_EQ(get(state.get(), nullptr), qvrErrNullPointer);
        EXPECT_EQ(set(nullptr, two), qvrErrNullPointer);
        EXPECT_EQ(set(nullptr, nullptr), qvrErrNullPointer);
        for (uint32_t tag : {0u, 0x46493231u, 0x46493235u, 0x46493333u}) {
            state->tag = tag;
            EXPECT_EQ(get(state.get(), two), qvrErrBadContext);
            EXPECT_EQ(get(state.get(), nullptr), qvrErrNullPointer);
            EXPECT_EQ(set(state.get(), two), qvrErrBadContext);
            EXPECT_EQ(two[0], 5);
        }
        state->tag = Form::tag;
    });
}

TEST(FirAccessors, DelayLines)
{
    checkAccessors<Form32f>(qvrTable_qvrsFIRGetDlyLine_32f, qvrTable_qvrsFIRSetDlyLine_32f);
    checkAccessors<Form64f>(qvrTable_qvrsFIRGetDlyLine_64f, qvrTable_qvrsFIRSetDlyLine_64f);
    checkAccessors<Form64f_32f>(qvrTable_qvrsFIRGetDlyLine64f_32f, qvrTable_qvrsFIRSetDlyLine64f_32f);
}

TEST(FirAccessors, Taps)
{
    slots::each(qvrTable_qvrsFIRGetTaps_32f, [](auto get, int slot) {
        for (int L : {1, 2, 9, 70}) {
            const auto taps = mixedValues<float>(L, 3);
            auto state = create<Form32f>(slot, taps);
            Guarded& out = pooledGuarded(1, L * 4 + 64);
            float* got = out.atFront<float>(L * 4, 3);
            ASSERT_EQ(get(state.get(), got), qvrOk);
            EXPECT_EQ(memcmp(static_cast<void*>(got), taps.data(), L * 4), 0);
            EXPECT_TRUE(out.intact());
            EXPECT_EQ(get(nullptr, got), qvrErrNullPointer);
            EXPECT_EQ(get(state.get(), nullptr), qvrErrNullPointer);
            state->tag = 0x46493333;
            EXPECT_EQ(get(state.get(), got), qvrErrBadContext);
            state->tag = Form32f::tag;
        }
    });
}

} // namespace
