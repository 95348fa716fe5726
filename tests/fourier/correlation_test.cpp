#include "fourier/address_space.h"
#include "fourier/slot_tables.h"
#include "fourier/sum_statuses.h"
#include "fourier/sums.h"
#include "support/allocation.h"
#include "support/guarded.h"
#include "support/slots.h"
#include "support/status_order.h"
#include "support/values.h"

namespace {

using sums::Signal;

struct Case {
    size_t len1, len2;
    int low;
    size_t count;
};

std::string name(const Case& c)
{
    return std::to_string(c.len1) + " with " + std::to_string(c.len2) + ", " + std::to_string(c.count) + " lags from " +
           std::to_string(c.low);
}

void checkCross(decltype(Morven_qvrsCrossCorr_32f)* f, const Case& c, size_t offset = 0)
{
    const Signal a = randomValues<float>(c.len1, 1, -1, 1), b = randomValues<float>(c.len2, 2, -1, 1);
    Guarded &x = pooledGuarded(1, c.len1 * 4 + 128), &y = pooledGuarded(2, c.len2 * 4 + 128),
            &z = pooledGuarded(3, c.count * 4 + 128);
    float *p = x.atEnd<float>(c.len1 * 4, offset), *q = y.atEnd<float>(c.len2 * 4, offset);
    float* r = z.atEnd<float>(c.count * 4, offset);
    memcpy(static_cast<void*>(p), a.data(), c.len1 * 4);
    memcpy(static_cast<void*>(q), b.data(), c.len2 * 4);
    ASSERT_EQ(f(p, static_cast<int>(c.len1), q, static_cast<int>(c.len2), r, static_cast<int>(c.count), c.low), qvrOk);
    EXPECT_TRUE(x.intact() && y.intact() && z.intact()) << name(c);
    Signal got(c.count);
    memcpy(got.data(), static_cast<void*>(r), c.count * 4);
    const std::vector<sums::Exact> want = sums::correlation(a, b, c.low, c.count);
    const double bound = std::max(sums::plainBound(a, b), sums::spectrumBound(a, b));
    const int64_t first = 1 - static_cast<int64_t>(c.len1), last = static_cast<int64_t>(c.len2) - 1;
    for (size_t n = 0; n < c.count; n++) {
        const int64_t lag = c.low + static_cast<int64_t>(n);
        if (lag < first || lag > last)
            ASSERT_EQ(bitsOf(got[n]), 0u) << name(c) << ", result " << n;
        else
            ASSERT_LE(std::fabs(got[n] - static_cast<double>(want[n])), bound) << name(c) << ", result " << n;
    }
}

TEST(CrossCorr, EveryLagOfShortSources)
{
    slots::each(qvrTable_qvrsCrossCorr_32f, [&](auto f, int) {
        for (size_t len1 : {1, 2, 5, 9, 16, 33, 40, 70})
            for (size_t len2 : {1, 3, 8, 17, 35, 64, 100}) {
                const int low = 1 - static_cast<int>(len1);
                checkCross(f, {len1, len2, low, len1 + len2 - 1});
                checkCross(f, {len1, len2, low - 9, len1 + len2 + 20}, 4);
                for (int from : {low - 3, low, low + 1, -1, 0, 1, 7, static_cast<int>(len2) - 2})
                    for (size_t count : {1, 2, 4, 5, 7, 8, 9, 20})
                        checkCross(f, {len1, len2, from, count});
            }
        for (size_t offset = 0; offset < 64; offset++)
            checkCross(f, {50, 90, -20, 77}, offset);
    });
}

TEST(CrossCorr, LagsOutsideOfTheOverlapAreZero)
{
    slots::each(qvrTable_qvrsCrossCorr_32f, [&](auto f, int) {
        for (int low : {-1000, -30, 20, 500, INT32_MIN, INT32_MAX, INT32_MAX - 10})
            checkCross(f, {10, 20, low, 20});
        // The range just touches the overlap.
        checkCross(f, {10, 20, -28, 20});
        checkCross(f, {10, 20, 19, 20});
    });
}

// Round the threshold of the forms, in all of them and both orders of length.
TEST(CrossCorr, Forms)
{
    slots::each(qvrTable_qvrsCrossCorr_32f, [&](auto f, int) {
        std::vector<Case> cases = {
            {383, 383, 0, 383},       {384, 384, 0, 383},       {384, 384, 0, 384},       {384, 384, -383, 767},
            {500, 700, -499, 1199},   {700, 500, -699, 1199},   {500, 700, 100, 600},     {100, 2000, -99, 2099},
            {2000, 100, -1999, 2099}, {400, 1200, -399, 1599},  {1200, 400, -1199, 1599}, {100, 300, -99, 399},
            {400, 2000, 0, 1990},     {2000, 400, -1990, 1990}, {400, 2000, 1, 1999},     {400, 2000, 2, 1990},
            {400, 3000, 500, 2500},   {3000, 400, -2999, 2500}, {3000, 400, -3100, 3700}, {999, 5000, -998, 5998},
            {5000, 999, -500, 1500},  {1, 1000, 0, 1000},       {1000, 1, -999, 1000},    {5, 3000, -4, 3004}};
        cases.insert(cases.end(), {{300, 30000, -299, 30299}, {30000, 300, -29999, 30299}, {9000, 9000, -50, 100}});
        for (const Case& c : cases)
            checkCross(f, c, 4);
    });
}

TEST(CrossCorr, FirstLagIsTheLastTimesTheFirst)
{
    slots::each(qvrTable_qvrsCrossCorr_32f, [&](auto f, int) {
        const float a[3] = {2, 3, 5}, b[4] = {7, 11, 13, 17};
        float y[7] = {};
        ASSERT_EQ(f(a, 3, b, 4, y, 6, -2), qvrOk);
        EXPECT_EQ(std::vector<float>(y, y + 7), (std::vector<float>{35, 76, 112, 146, 77, 34, 0}));
    });
}

// Equal terms are the worst case of a sum: all of its roundings can lean to one side. Plain sums of any length and
// number of lags are at least as close as eight partial sums over the terms would be.
void checkLongSums(const std::string& what, const Signal& y, size_t n, float value)
{
    for (size_t lag = 0; lag < y.size(); lag++) {
        float partial[8] = {}, eight = 0;
        for (size_t k = 0; k < n - lag; k++)
            partial[k % 8] += value * value;
        for (float p : partial)
            eight += p;
        const double want = double(value) * value * static_cast<double>(n - lag);
        ASSERT_LE(std::fabs(y[lag] - want), std::fabs(eight - want) + 16 * 0x1p-24 * want)
            << what << ", " << n << " terms, lag " << lag << " of " << y.size();
    }
}

TEST(CrossCorr, LongSumsKeepTheirDigits)
{
    slots::each(qvrTable_qvrsCrossCorr_32f, [&](auto f, int) {
        for (size_t n : {1000, 4000, 50000, 300000}) {
            const Signal values(n, 0.1f);
            for (size_t count : {1, 4, 9, 12, 70, 100}) {
                Signal y(count);
                ASSERT_EQ(f(values.data(), static_cast<int>(n), values.data(), static_cast<int>(n), y.data(),
                            static_cast<int>(count), 0),
                          qvrOk);
                checkLongSums("cross", y, n, values[0]);
            }
        }
    });
}

TEST(AutoCorr, LongSumsKeepTheirDigits)
{
    slots::each(qvrTable_qvrsAutoCorr_32f, [&](auto f, int) {
        for (size_t n : {1000, 4000, 50000, 300000}) {
            const Signal values(n, 0.1f);
            for (size_t count : {8, 9, 30, 100}) {
                Signal y(count);
                ASSERT_EQ(f(values.data(), static_cast<int>(n), y.data(), static_cast<int>(count)), qvrOk);
                checkLongSums("auto", y, n, values[0]);
            }
        }
    });
}

TEST(CrossCorr, FailingMemory)
{
    slots::each(qvrTable_qvrsCrossCorr_32f, [&](auto f, int) {
        for (size_t len2 : {500, 3000}) {
            const Signal a(500, 1.0f), b(len2, 1.0f), untouched(len2 + 600, 7.0f);
            Signal y = untouched;
            const int allocations = failEachAllocation(
                [&] {
                    return f(a.data(), 500, b.data(), static_cast<int>(len2), y.data(), static_cast<int>(y.size()),
                             -550);
                },
                [&](int n, qvrStatus status, CountingAllocator& allocator) {
                    EXPECT_EQ(status, qvrErrNoMemory) << n;
                    EXPECT_EQ(allocator.live(), 0u);
                    EXPECT_EQ(y, untouched);
                });
            EXPECT_GE(allocations, 2);
        }
    });
}

// Plain sums need no memory.
template<class Call> bool takesMemory(const Call& call)
{
    CountingAllocator allocator;
    EXPECT_EQ(call(), qvrOk);
    return allocator.allocations() > 0;
}

TEST(CrossCorr, Paths)
{
    slots::each(qvrTable_qvrsCrossCorr_32f, [&](auto f, int) {
        const auto transforms = [&](size_t len1, size_t len2, int low, size_t count) {
            const Signal a(len1, 1.0f), b(len2, 1.0f);
            Signal y(count);
            return takesMemory([&] {
                return f(a.data(), static_cast<int>(len1), b.data(), static_cast<int>(len2), y.data(),
                         static_cast<int>(count), low);
            });
        };
        EXPECT_FALSE(transforms(1000, 1000, 0, 383));
        EXPECT_TRUE(transforms(1000, 1000, 0, 384));
        EXPECT_FALSE(transforms(500, 1000, -499, 767));
        EXPECT_TRUE(transforms(500, 1000, -499, 768));
        EXPECT_FALSE(transforms(1000, 500, -999, 767));
        EXPECT_TRUE(transforms(1000, 500, -999, 768));
        // Lags outside of the overlap do not count.
        EXPECT_FALSE(transforms(400, 400, 20, 5000));
        EXPECT_TRUE(transforms(400, 400, -5000, 6000));
    });
}

TEST(AutoCorr, Paths)
{
    slots::each(qvrTable_qvrsAutoCorr_32f, [&](auto f, int slot) {
        const size_t from = slot == 0 ? 600 : slot == 6 ? 1200 : 856;
        const auto transforms = [&](size_t len, size_t count) {
            const Signal a(len, 1.0f);
            Signal y(count);
            return takesMemory([&] { return f(a.data(), static_cast<int>(len), y.data(), static_cast<int>(count)); });
        };
        EXPECT_FALSE(transforms(5000, from - 1));
        EXPECT_TRUE(transforms(5000, from));
        EXPECT_FALSE(transforms(from - 1, 5000));
        EXPECT_TRUE(transforms(from, 5000));
    });
}

// Arrays that would pass 2^31 - 1 bytes are refused on every slot alike, before anything is built.
TEST(CrossCorr, RefusesWhatCannotFit)
{
    const AddressSpace space(INT32_MAX);
    float* p = space.floats();
    slots::each(qvrTable_qvrsCrossCorr_32f, [&](auto f, int) {
        CountingAllocator allocator;
        const int quarter = 1 << 26;
        EXPECT_EQ(f(p, quarter + 1, p, quarter + 1, p, 1000, 0), qvrErrNoMemory);
        EXPECT_EQ(f(p, INT32_MAX, p, INT32_MAX, p, INT32_MAX, INT32_MIN), qvrErrNoMemory);
        EXPECT_EQ(f(p, (1 << 25) + 1, p, INT32_MAX, p, INT32_MAX, -(1 << 25)), qvrErrNoMemory);
        EXPECT_EQ(allocator.allocations(), 0);
    });
}

TEST(CrossCorr, Statuses)
{
    checkSumStatuses(qvrTable_qvrsCrossCorr_32f);
}

void checkAuto(decltype(Morven_qvrsAutoCorr_32f)* f, size_t len, size_t count, size_t offset)
{
    const Signal a = randomValues<float>(len, 1, -1, 1);
    Guarded &x = pooledGuarded(1, len * 4 + 128), &z = pooledGuarded(2, count * 4 + 128);
    float *p = x.atEnd<float>(len * 4, offset), *r = z.atEnd<float>(count * 4, offset);
    memcpy(static_cast<void*>(p), a.data(), len * 4);
    ASSERT_EQ(f(p, static_cast<int>(len), r, static_cast<int>(count)), qvrOk);
    EXPECT_TRUE(x.intact() && z.intact());
    Signal got(count);
    memcpy(got.data(), static_cast<void*>(r), count * 4);
    const std::vector<sums::Exact> want = sums::correlation(a, a, 0, count);
    const double bound = std::max(sums::plainBound(a, a), sums::spectrumBound(a, a));
    for (size_t n = 0; n < count; n++)
        if (n >= len)
            ASSERT_EQ(bitsOf(got[n]), 0u) << len << " to " << count << ", result " << n;
        else
            ASSERT_LE(std::fabs(got[n] - static_cast<double>(want[n])), bound)
                << len << " to " << count << ", result " << n;
}

TEST(AutoCorr, Sums)
{
    slots::each(qvrTable_qvrsAutoCorr_32f, [&](auto f, int) {
        for (size_t len = 1; len <= 70; len++)
            for (size_t count : {size_t{1}, size_t{3}, size_t{8}, len, len + 1, 2 * len + 30})
                checkAuto(f, len, count, 0);
        for (size_t n : {599, 600, 855, 856, 857, 1199, 1200, 1300})
            for (size_t more : {0, 100}) {
                checkAuto(f, n, n + more, 4);
                checkAuto(f, n + more, n, 4);
            }
        checkAuto(f, 5000, 20, 0);
        checkAuto(f, 5000, 1500, 0);
        for (size_t offset = 0; offset < 64; offset++)
            checkAuto(f, 90, 77, offset);
    });
}

TEST(AutoCorr, Memory)
{
    slots::each(qvrTable_qvrsAutoCorr_32f, [&](auto f, int) {
        const Signal a(2000, 1.0f), untouched(2100, 7.0f);
        Signal y = untouched;
        failEachAllocation([&] { return f(a.data(), 2000, y.data(), 2100); },
                           [&](int n, qvrStatus status, CountingAllocator& allocator) {
                               EXPECT_EQ(status, qvrErrNoMemory) << n;
                               EXPECT_EQ(allocator.live(), 0u);
                               EXPECT_EQ(y, untouched);
                           });
        // Plain sums need none.
        CountingAllocator allocator;
        EXPECT_EQ(f(a.data(), 2000, y.data(), 500), qvrOk);
        EXPECT_EQ(allocator.allocations(), 0);
    });
}

TEST(AutoCorr, RefusesWhatCannotFit)
{
    const AddressSpace space(INT32_MAX);
    float* p = space.floats();
    slots::each(qvrTable_qvrsAutoCorr_32f, [&](auto f, int) {
        CountingAllocator allocator;
        for (int n : {(1 << 27) + 1, 1 << 28, INT32_MAX})
            EXPECT_EQ(f(p, n, p, 2000), qvrErrNoMemory) << n;
        EXPECT_EQ(allocator.allocations(), 0);
    });
}

TEST(AutoCorr, Statuses)
{
    struct Args {
        const float* a;
        int n1;
        float* y;
        int n;
    };
    slots::each(qvrTable_qvrsAutoCorr_32f, [&](auto f, int) {
        float a[4] = {1, 2, 3, 4}, y[5] = {9, 9, 9, 9, 9};
        expectStatusOrder<Args>(
            {a, 4, y, 5},
            {{"pSrc", qvrErrNullPointer, [](Args& x) { x.a = nullptr; }},
             {"pDst", qvrErrNullPointer, [](Args& x) { x.y = nullptr; }},
             {"srcLen", qvrErrBadSize, [](Args& x) { x.n1 = 0; }},
             {"dstLen", qvrErrBadSize, [](Args& x) { x.n = -1; }}},
            [&](const Args& x) { return f(x.a, x.n1, x.y, x.n); }, [&] { return y[0] == 9 && y[4] == 9; });
    });
}

} // namespace
