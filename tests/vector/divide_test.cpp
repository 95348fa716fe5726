#include "support/budget.h"
#include "support/elementwise.h"
#include "support/environment.h"
#include "support/regions.h"
#include "vector/slot_tables.h"

#include <thread>
#include <xmmintrin.h>

#include "frame/threads.h"

namespace {

using F = float;

const F kNan = floatOf(0xFFC00000);

F overZero(F n)
{
    return n > 0 ? INFINITY : n < 0 ? -INFINITY : kNan;
}
F quotient(F d, F n)
{
    return d == 0 ? overZero(n) : n / d;
}
F reverse(F s, F val)
{
    if (val == 0)
        return s == 0 ? kNan : 0.0f / s;
    return s == 0 ? overZero(val) : val / s;
}
F root(F x)
{
    return x >= 0 ? std::sqrt(x) : kNan;
}
qvrStatus zeroAmong(const std::vector<F>& v)
{
    for (F x : v)
        if (x == 0)
            return qvrWarnDivByZero;
    return qvrOk;
}
qvrStatus badRootAmong(const std::vector<F>& v)
{
    for (F x : v)
        if (!(x >= 0))
            return qvrWarnNegativeInput;
    return qvrOk;
}

const std::vector<int> kRegionLengths = {4095, 4096, 4097, 8191};

TEST(Divide, Div)
{
    slots::each(qvrTable_qvrsDiv_32f, [&](auto f, int) {
        checkElementwise<F, F, F>(
            {f, quotient, [](const auto& d, const auto&) { return zeroAmong(d); }, false, kRegionLengths});
        Guarded dst(16);
        const F x[4] = {1, 2, 3, 4};
        checkPointersThenLengthOrder(3, [&](int null, int len) {
            F* d = dst.atEnd<F>(16);
            const qvrStatus s = f(null == 0 ? nullptr : x, null == 1 ? nullptr : x, null == 2 ? nullptr : d, len);
            EXPECT_TRUE(dst.untouched());
            return s;
        });
    });
}

TEST(Divide, DivCRev)
{
    slots::each(qvrTable_qvrsDivCRev_32f, [&](auto f, int) {
        for (F val : {2.5f, 0.0f, -0.0f, -3.0f, INFINITY, NAN}) {
            SCOPED_TRACE(val);
            const Elementwise<F, F> e{[=](const F* s, F* d, int n) { return f(s, val, d, n); },
                                      [=](F s) { return reverse(s, val); }, zeroAmong, false, kRegionLengths};
            if (val == 2.5f)
                checkElementwise(e);
            for (int n : {1, 5, 8, 50, 5000})
                checkCall<F, F>(e, mixedValues<F>(n, 5), true, 0, 0, -1);
        }
        Guarded dst(16);
        const F x[4] = {1, 2, 3, 4};
        checkPointersThenLengthOrder(2, [&](int null, int len) {
            F* d = dst.atEnd<F>(16);
            const qvrStatus s = f(null == 0 ? nullptr : x, 1.0f, null == 1 ? nullptr : d, len);
            EXPECT_TRUE(dst.untouched());
            return s;
        });
    });
}

TEST(Divide, DivCRevInPlace)
{
    slots::each(qvrTable_qvrsDivCRev_32f_I, [&](auto f, int) {
        for (F val : {2.5f, 0.0f})
            checkInPlace<F, F>({[=](const F*, F* d, int n) { return f(val, d, n); },
                                [=](F s) { return reverse(s, val); }, zeroAmong, false, kRegionLengths});
        EXPECT_EQ(f(1.0f, nullptr, 0), qvrErrNullPointer);
        F x = 1;
        EXPECT_EQ(f(1.0f, &x, 0), qvrErrBadSize);
    });
}

TEST(Divide, Sqrt)
{
    slots::each(qvrTable_qvrsSqrt_32f, [&](auto f, int) {
        checkElementwise<F, F>({f, root, badRootAmong, false, kRegionLengths});
        Guarded dst(16);
        const F x[4] = {1, 2, 3, 4};
        checkPointersThenLengthOrder(2, [&](int null, int len) {
            F* d = dst.atEnd<F>(16);
            const qvrStatus s = f(null == 0 ? nullptr : x, null == 1 ? nullptr : d, len);
            EXPECT_TRUE(dst.untouched());
            return s;
        });
    });
}

// Substitutes by exact bits, wherever the element stands in the array.
TEST(Divide, SubstitutesAreExact)
{
    slots::each(qvrTable_qvrsDiv_32f, [&](auto f, int slot) {
        const F nanPayload = floatOf(0x7FC12345);
        for (int n : {1, 2, 5, 8, 13, 40, 4096, 4099}) {
            for (int at : {0, n / 2, n - 1}) {
                const struct {
                    F d, n;
                    uint32_t want;
                } cases[] = {{0.0f, 0.0f, 0xFFC00000},       {-0.0f, 0.0f, 0xFFC00000},
                             {0.0f, nanPayload, 0xFFC00000}, {0.0f, 3.0f, 0x7F800000},
                             {-0.0f, 3.0f, 0x7F800000},      {0.0f, -3.0f, 0xFF800000},
                             {-0.0f, INFINITY, 0x7F800000},  {0.0f, -floatOf(1), 0xFF800000}};
                for (const auto& c : cases) {
                    std::vector<F> d(n, 2.0f), x(n, 6.0f), out(n);
                    d[at] = c.d;
                    x[at] = c.n;
                    EXPECT_EQ(f(d.data(), x.data(), out.data(), n), qvrWarnDivByZero);
                    for (int i = 0; i < n; i++)
                        EXPECT_EQ(bitsOf(out[i]), i == at ? c.want : bitsOf(3.0f)) << n << " " << i;
                }
                for (F bad : {-1.0f, nanPayload, -nanPayload, -INFINITY, -floatOf(1)}) {
                    std::vector<F> x(n, 9.0f), out(n);
                    x[at] = bad;
                    EXPECT_EQ(qvrTable_qvrsSqrt_32f[slot](x.data(), out.data(), n), qvrWarnNegativeInput);
                    for (int i = 0; i < n; i++)
                        EXPECT_EQ(bitsOf(out[i]), i == at ? 0xFFC00000u : bitsOf(3.0f));
                }
                std::vector<F> x(n, 9.0f), out(n);
                x[at] = -0.0f;
                EXPECT_EQ(qvrTable_qvrsSqrt_32f[slot](x.data(), out.data(), n), qvrOk);
                EXPECT_EQ(bitsOf(out[at]), 0x80000000u);
            }
        }
    });
}

// No element that the contract replaces raises a flag on its own account.
TEST(Divide, ReplacedElementsRaiseNoFlag)
{
    slots::each(qvrTable_qvrsDiv_32f, [&](auto f, int) {
        for (int n : {1, 5, 8, 30}) {
            std::vector<F> d(n, 0.0f), x(n, 4.0f), out(n);
            const unsigned saved = _mm_getcsr();
            _mm_setcsr(saved & ~0x3Fu);
            f(d.data(), x.data(), out.data(), n);
            const unsigned flags = _mm_getcsr() & 0x3F;
            _mm_setcsr(saved);
            EXPECT_EQ(flags & 0x4, 0u) << "divide by zero raised";
        }
    });
}

// Whether a call forks, and with how many threads.
template<class Call> void expectFork(bool fork, Call&& call)
{
    const int before = regions::forks();
    call();
    if (!regions::counted())
        return;
    EXPECT_EQ(regions::forks() - before, fork ? 1 : 0);
    if (fork)
        EXPECT_EQ(regions::lastRequested(), 2);
}

TEST(Divide, RegionFromTheThresholdOn)
{
    const std::vector<F> a(8192, 2.0f);
    std::vector<F> d(8192);
    const auto check = [&](const auto& table, auto&& call) {
        slots::each(table, [&](auto f, int slot) {
            const bool hasRegion = slot >= slots::u8;
            for (int budget : {1, 2, 7}) {
                Budget b(budget);
                expectFork(false, [&] { call(f, 4095); });
                expectFork(hasRegion && budget >= 2, [&] { call(f, 4096); });
                expectFork(hasRegion && budget >= 2, [&] { call(f, 8191); });
            }
            // A budget above the length never forks.
            Budget b(100000);
            expectFork(false, [&] { call(f, 4096); });
        });
    };
    check(qvrTable_qvrsSqrt_32f, [&](auto f, int n) { EXPECT_EQ(f(a.data(), d.data(), n), qvrOk); });
    check(qvrTable_qvrsDiv_32f, [&](auto f, int n) { EXPECT_EQ(f(a.data(), a.data(), d.data(), n), qvrOk); });
    check(qvrTable_qvrsDivCRev_32f, [&](auto f, int n) { EXPECT_EQ(f(a.data(), 2.0f, d.data(), n), qvrOk); });
    check(qvrTable_qvrsDivCRev_32f_I, [&](auto f, int n) {
        std::vector<F> x = a;
        EXPECT_EQ(f(2.0f, x.data(), n), qvrOk);
    });
}

TEST(Divide, RegionsGiveTheSerialResult)
{
    slots::each(qvrTable_qvrsDiv_32f, [&](auto f, int slot) {
        for (int n : {4096, 4097, 4099, 10001}) {
            const std::vector<F> d = mixedValues<F>(n, 21), x = mixedValues<F>(n, 22);
            std::vector<F> one(n), two(n);
            qvrStatus s1, s2;
            const auto same = [&] {
                EXPECT_EQ(s1, s2);
                EXPECT_EQ(memcmp(one.data(), two.data(), n * sizeof(F)), 0) << n;
            };
            const auto run = [&](auto&& call) {
                {
                    Budget b(1);
                    s1 = call(one.data());
                }
                Budget b(2);
                s2 = call(two.data());
                same();
            };
            run([&](F* out) { return f(d.data(), x.data(), out, n); });
            run([&](F* out) { return qvrTable_qvrsDivCRev_32f[slot](d.data(), 3.0f, out, n); });
            run([&](F* out) { return qvrTable_qvrsSqrt_32f[slot](d.data(), out, n); });
        }
    });
}

// A bad element in either thread's part alone gives the warning.
TEST(Divide, WarningFromAnyChunk)
{
    Budget b(2);
    slots::each(qvrTable_qvrsDiv_32f, [&](auto f, int slot) {
        const int n = 4097;
        const std::vector<F> x(n, 1.0f);
        std::vector<F> out(n);
        for (int at : {-1, 0, 2047, 2048, 4095, 4096}) {
            std::vector<F> d(n, 1.0f);
            if (at >= 0)
                d[at] = 0;
            EXPECT_EQ(f(d.data(), x.data(), out.data(), n), at >= 0 ? qvrWarnDivByZero : qvrOk);
            EXPECT_EQ(qvrTable_qvrsDivCRev_32f[slot](d.data(), 1.0f, out.data(), n),
                      at >= 0 ? qvrWarnDivByZero : qvrOk);
            if (at >= 0)
                d[at] = -1;
            EXPECT_EQ(qvrTable_qvrsSqrt_32f[slot](d.data(), out.data(), n), at >= 0 ? qvrWarnNegativeInput : qvrOk);
        }
    });
}

// The forked thread works under the caller's rounding too, and keeps its own word.
TEST(Divide, ForkedThreadsFollowTheCallersRounding)
{
    Budget b(2);
    slots::each(qvrTable_qvrsDiv_32f, [&](auto f, int) {
        const int n = 6000;
        const std::vector<F> d(n, 3.0f), x(n, 1.0f);
        std::vector<F> out(n);
        const unsigned saved = _mm_getcsr();
        for (unsigned mode : {0x2000u, 0x4000u, 0x6000u, 0u}) {
            _mm_setcsr((saved & ~0x6000u) | mode);
            f(d.data(), x.data(), out.data(), n);
            _mm_setcsr(saved);
            const F want = mode == 0x2000 || mode == 0x6000 ? floatOf(0x3EAAAAAA) : floatOf(0x3EAAAAAB);
            for (int i = 0; i < n; i++)
                ASSERT_EQ(out[i], want) << "mode " << mode << " element " << i;
        }
    });
}

// Several callers at once, each on its own data.
TEST(Divide, ManyCallersAtOnce)
{
    Budget b(2);
    const int n = 5000;
    const auto work = [&](uint32_t seed) {
        const std::vector<F> d = mixedValues<F>(n, seed), x = mixedValues<F>(n, seed + 100);
        std::vector<F> out(n);
        for (int turn = 0; turn < 20; turn++) {
            EXPECT_EQ(Morven_qvrsDiv_32f(d.data(), x.data(), out.data(), n), zeroAmong(d));
            for (int i = 0; i < n; i++)
                if (!sameValue(out[i], quotient(d[i], x[i])))
                    return ADD_FAILURE() << i;
        }
    };
    std::thread a(work, 1), c(work, 2), e(work, 3);
    a.join();
    c.join();
    e.join();
}

// Where denormals count as zeros, they do so as divisors at every place.
TEST(Divide, DenormalDivisorsAsZeros)
{
    const auto check = [](auto divide) {
        for (int n = 1; n <= 40; n++)
            for (int at = 0; at < n; at++) {
                std::vector<float> divisors(n, 2), y(n);
                divisors[at] = at % 2 ? -1e-40f : 1e-40f;
                const Environment environment(environment::kMasked | environment::kDenormalsAreZero);
                ASSERT_EQ(divide(divisors.data(), y.data(), n), qvrWarnDivByZero) << at << " of " << n;
                ASSERT_EQ(y[at], INFINITY) << at << " of " << n;
            }
    };
    const std::vector<float> dividends(40, 3);
    slots::each(qvrTable_qvrsDiv_32f, [&](auto f, int) {
        check([&](const float* d, float* y, int n) { return f(d, dividends.data(), y, n); });
    });
    slots::each(qvrTable_qvrsDivCRev_32f,
                [&](auto f, int) { check([&](const float* d, float* y, int n) { return f(d, 3, y, n); }); });
    slots::each(qvrTable_qvrsDivCRev_32f_I, [&](auto f, int) {
        check([&](const float* d, float* y, int n) {
            memcpy(y, d, sizeof(float) * n);
            return f(3, y, n);
        });
    });
}

} // namespace
