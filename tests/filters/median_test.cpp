#include <algorithm>

#include "filters/slot_tables.h"
#include "model/filters.h"
#include "support/allocation.h"
#include "support/environment.h"
#include "support/guarded.h"
#include "support/slots.h"
#include "support/values.h"

namespace {

template<class F> void check(F f, const std::vector<float>& x, int mask, size_t offset, bool exact = false)
{
    const int n = static_cast<int>(x.size()), m = mask % 2 ? mask : mask - 1;
    Guarded& buffer = pooledGuarded(1, x.size() * 4 + 64);
    float* p = offset ? buffer.atFront<float>(x.size() * 4, offset) : buffer.atEnd<float>(x.size() * 4);
    memcpy(static_cast<void*>(p), x.data(), x.size() * 4);
    ASSERT_EQ(f(p, n, mask), mask % 2 ? qvrOk : qvrWarnEvenMask);
    EXPECT_TRUE(buffer.intact());
    std::vector<float> got(x.size());
    memcpy(got.data(), static_cast<void*>(p), x.size() * 4);
    std::vector<float> want = x;
    model::qvrsFilterMedian_32f_I(want.data(), n, m);
    for (int i = 0; i < n; i++)
        ASSERT_TRUE(exact ? bitsOf(got[i]) == bitsOf(want[i]) : got[i] == want[i])
            << "mask " << mask << " n " << n << " +" << offset << " element " << i << ": " << got[i] << " want "
            << want[i];
}

std::vector<float> coarse(int n, int seed)
{
    std::vector<float> v = randomValues<float>(n, seed, -3, 3);
    for (float& x : v)
        x = std::round(x); // many equal samples, zeros of both signs
    return v;
}

TEST(Median, EveryMaskAndLength)
{
    slots::each(qvrTable_qvrsFilterMedian_32f_I, [&](auto f, int) {
        for (int mask : {1, 2, 3, 4, 5, 6, 7, 8, 9, 11, 15, 16, 17, 23, 25, 31, 33, 63, 101}) {
            for (int n = 1; n <= 70; n++) {
                check(f, randomValues<float>(n, n), mask, 0, true);
                check(f, coarse(n, n), mask, 0);
            }
            for (size_t offset : {1, 4, 12, 16, 31})
                for (int n : {100, 333}) {
                    check(f, randomValues<float>(n, n), mask, offset, true);
                    check(f, coarse(n, n), mask, offset);
                }
        }
        check(f, randomValues<float>(50, 1), 1001, 0, true);
    });
}

// Infinite samples and signs of zero: the window in order of time decides which of two equal samples is which.
TEST(Median, SpecialSamples)
{
    slots::each(qvrTable_qvrsFilterMedian_32f_I, [&](auto f, int) {
        for (int mask : {3, 5, 7, 9, 31}) {
            std::vector<float> x = coarse(200, 8);
            for (int i = 0; i < 200; i += 7)
                x[i] = i % 2 ? INFINITY : -INFINITY;
            for (int i = 3; i < 200; i += 11)
                x[i] = -0.0f;
            check(f, x, mask, 0);
        }
    });
}

// The sorted window of the contract, move by move, for masks from 7 up: to the bit, zeros and NaN included.
std::vector<float> windowModel(const std::vector<float>& x, int m)
{
    std::vector<float> y = x, ring, sorted;
    const int n = static_cast<int>(x.size()), h = m / 2;
    for (int k = 0; k < m; k++)
        ring.push_back(x[std::clamp(k - h, 0, n - 1)]);
    sorted = ring;
    for (int end = m - 1; end > 0; end--)
        for (int i = 0; i < end; i++)
            if (sorted[i] > sorted[i + 1])
                std::swap(sorted[i], sorted[i + 1]);
    int position = 0;
    for (int i = 1; i < n - 1; i++) {
        const float entering = x[std::min(i + h, n - 1)], leaving = ring[position];
        int at = 0;
        while (bitsOf(sorted[at]) != bitsOf(leaving))
            at++;
        ring[position] = entering;
        position = (position + 1) % m;
        if (entering >= leaving)
            for (; at + 1 < m && sorted[at + 1] < entering; at++)
                sorted[at] = sorted[at + 1];
        else
            for (; at > 0 && sorted[at - 1] > entering; at--)
                sorted[at] = sorted[at - 1];
        sorted[at] = entering;
        y[i] = sorted[h];
    }
    return y;
}

TEST(Median, SortedWindowToTheBit)
{
    slots::each(qvrTable_qvrsFilterMedian_32f_I, [&](auto f, int) {
        for (int mask : {7, 9, 15, 17, 40, 101}) {
            for (int seed = 0; seed < 20; seed++) {
                std::vector<float> x = coarse(300, seed);
                std::mt19937 engine(seed);
                for (float& v : x) {
                    if (engine() % 9 == 0)
                        v = engine() % 2 ? 0.0f : -0.0f;
                    if (seed % 2 && engine() % 40 == 0)
                        v = engine() % 2 ? NAN : -NAN;
                    if (engine() % 40 == 0)
                        v = engine() % 2 ? INFINITY : -INFINITY;
                }
                const std::vector<float> want = windowModel(x, mask % 2 ? mask : mask - 1);
                std::vector<float> got = x;
                f(got.data(), 300, mask);
                ASSERT_EQ(memcmp(got.data(), want.data(), 1200), 0) << "mask " << mask << " seed " << seed;
            }
        }
    });
}

// Where denormals count as zeros, samples of different bits are equal: the window stays the contract's all the same.
TEST(Median, SortedWindowWithDenormalsAsZeros)
{
    slots::each(qvrTable_qvrsFilterMedian_32f_I, [&](auto f, int) {
        for (unsigned mode : {0u, environment::kDenormalsAreZero, environment::kDenormalsAreZero | environment::kFlush})
            for (int mask : {7, 9, 15, 31, 101})
                for (int seed = 0; seed < 20; seed++) {
                    std::vector<float> x(400);
                    std::mt19937 engine(seed);
                    const float values[] = {1e-40f, -1e-40f, 3e-39f, -2e-42f, 1e-45f, 1e-38f, -1.0f, 2.0f};
                    for (float& v : x)
                        v = values[engine() % 8];
                    // One sample that the search has to take up, late in the array.
                    if (seed % 4)
                        x[300] = seed % 4 == 1 ? -0.0f : seed % 4 == 2 ? 0.0f : NAN;
                    Guarded& buffer = pooledGuarded(1, 1600);
                    float* const got = buffer.atEnd<float>(1600);
                    memcpy(got, x.data(), 1600);
                    std::vector<float> want;
                    {
                        const Environment environment(environment::kMasked | mode);
                        want = windowModel(x, mask);
                        f(got, 400, mask);
                    }
                    EXPECT_TRUE(buffer.intact());
                    ASSERT_EQ(memcmp(got, want.data(), 1600), 0) << "mode " << mode << " mask " << mask << " " << seed;
                }
    });
}

TEST(Median, Statuses)
{
    slots::each(qvrTable_qvrsFilterMedian_32f_I, [&](auto f, int) {
        CountingAllocator allocator;
        float x[9] = {5, 1, 4, 2, 3, 9, 8, 7, 6};
        const std::vector<float> before(x, x + 9);
        for (int bad : {0, -1, INT32_MIN}) {
            EXPECT_EQ(f(nullptr, bad, bad), qvrErrNullPointer);
            EXPECT_EQ(f(x, bad, 3), qvrErrBadSize);
            EXPECT_EQ(f(x, 9, bad), qvrErrBadSize);
        }
        EXPECT_EQ(f(x, 2, 8), qvrWarnEvenMask);
        EXPECT_EQ(f(x, 2, 7), qvrOk);
        EXPECT_EQ(f(x, 9, 1), qvrOk);
        EXPECT_EQ(f(x, 9, 2), qvrWarnEvenMask);
        EXPECT_EQ(std::vector<float>(x, x + 9), before);
        EXPECT_EQ(allocator.allocations(), 0);
        // Arrays beyond 2^31 - 1 bytes are refused without asking.
        EXPECT_EQ(f(x, 9, INT32_MAX), qvrErrNoMemory);
        EXPECT_EQ(f(x, 9, INT32_MAX - 1), qvrErrNoMemory);
        EXPECT_EQ(f(x, 9, 1 << 28), qvrErrNoMemory);
        EXPECT_EQ(allocator.allocations(), 0);
        EXPECT_EQ(f(x, 9, 3), qvrOk);
        EXPECT_EQ(f(x, 9, 5), qvrOk);
        EXPECT_EQ(allocator.allocations(), 0);
    });
    slots::each(qvrTable_qvrsFilterMedian_32f_I, [&](auto f, int) {
        for (int mask : {7, 8}) {
            float x[9] = {5, 1, 4, 2, 3, 9, 8, 7, 6};
            const std::vector<float> before(x, x + 9);
            EXPECT_EQ(failEachAllocation([&] { return f(x, 9, mask); },
                                         [&](int, qvrStatus status, const CountingAllocator& a) {
                                             EXPECT_EQ(status, qvrErrNoMemory);
                                             EXPECT_EQ(a.live(), 0u);
                                             EXPECT_EQ(std::vector<float>(x, x + 9), before);
                                         }),
                      1);
        }
    });
}

} // namespace
