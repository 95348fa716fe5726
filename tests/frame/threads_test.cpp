#include <gtest/gtest.h>
#include <omp.h>
#include <xmmintrin.h>

#include <algorithm>
#include <vector>

#include "frame/region.h"
#include "frame/threads.h"
#include "support/regions.h"

namespace {

class Budget {
public:
    explicit Budget(int n) : saved_(qvrNumThreads) { qvrNumThreads = n; }
    ~Budget() { qvrNumThreads = saved_; }

private:
    int saved_;
};

TEST(Threads, BudgetSetterAndGetter)
{
    Budget keep(3);
    int32_t n = 0;
    EXPECT_EQ(qvrGetNumThreads(&n), qvrOk);
    EXPECT_EQ(n, 3);
    EXPECT_EQ(qvrGetNumThreads(nullptr), qvrErrNullPointer);
    for (int bad : {0, -1, INT32_MIN}) {
        EXPECT_EQ(qvrSetNumThreads(bad), qvrErrBadSize);
        EXPECT_EQ(qvrNumThreadsValue(), 3);
    }
    EXPECT_EQ(qvrSetNumThreads(1), qvrOk);
    EXPECT_EQ(qvrNumThreadsValue(), 1);
    EXPECT_EQ(qvrSetNumThreads(INT32_MAX), qvrOk);
    EXPECT_EQ(qvrNumThreadsValue(), INT32_MAX);
}

// Every element once, whatever the length and the team.
TEST(Threads, ElementsAreCoveredOnce)
{
    for (int budget : {1, 2, 3, 16}) {
        Budget b(budget);
        for (int len = 1; len < 200; len++) {
            std::vector<int> seen(len);
            EXPECT_EQ(parallelElements(len,
                                       [&](int64_t start, int64_t n) {
                                           for (int64_t i = start; i < start + n; i++)
                                               seen[i]++;
                                           return 0;
                                       }),
                      0);
            EXPECT_EQ(std::count(seen.begin(), seen.end(), 1), len) << "budget " << budget;
        }
    }
}

TEST(Threads, ForksTwoThreadsFromABudgetOfTwo)
{
    const auto forksOf = [](int budget, int len) {
        Budget b(budget);
        const int before = regions::forks();
        parallelElements(len, [](int64_t, int64_t) { return 0; });
        return regions::forks() - before;
    };
    if (!regions::counted())
        GTEST_SKIP() << "another OpenMP tool has the seat";
    EXPECT_EQ(forksOf(1, 100), 0);
    EXPECT_EQ(forksOf(2, 100), 1);
    EXPECT_EQ(regions::lastRequested(), 2);
    EXPECT_EQ(forksOf(16, 100), 1);
    EXPECT_EQ(regions::lastRequested(), 2);
    EXPECT_EQ(forksOf(16, 15), 0);
    EXPECT_EQ(forksOf(16, 16), 1);
}

TEST(Threads, AnyFlaggedChunkCounts)
{
    Budget b(2);
    for (int at : {0, 49, 50, 99})
        EXPECT_NE(
            parallelElements(100, [&](int64_t start, int64_t n) { return at >= start && at < start + n ? 1 : 0; }), 0)
            << at;
    EXPECT_EQ(parallelElements(100, [](int64_t, int64_t) { return 0; }), 0);
}

// Inside somebody else's region the runtime gives one thread, which does all.
TEST(Threads, InsideAnotherRegion)
{
    Budget b(2);
    int wrong = 0;
#pragma omp parallel num_threads(2) reduction(+ : wrong)
    {
        std::vector<int> seen(101);
        parallelElements(101, [&](int64_t start, int64_t n) {
            for (int64_t i = start; i < start + n; i++)
                seen[i]++;
            return 0;
        });
        wrong += std::count(seen.begin(), seen.end(), 1) != 101;
    }
    EXPECT_EQ(wrong, 0);
}

TEST(Threads, WorkersTakeTheCallersWordAndKeepTheirOwn)
{
    Budget b(2);
    const unsigned saved = _mm_getcsr();
    unsigned words[2] = {}, plain[2] = {};
    _mm_setcsr(0x1F80 | 0x4000);
    parallelTeam(2, [&](int t, int) { words[t] = _mm_getcsr(); });
    _mm_setcsr(saved);
    EXPECT_EQ(words[0] & 0x6000, 0x4000u);
    EXPECT_EQ(words[1] & 0x6000, 0x4000u);
    parallelTeam(2, [&](int t, int) { plain[t] = _mm_getcsr(); });
    EXPECT_EQ(plain[1] & 0x6000, saved & 0x6000);
}

TEST(Threads, FlagsOfAllThreadsReachTheCaller)
{
    Budget b(2);
    const unsigned saved = _mm_getcsr();
    for (int raising : {0, 1}) {
        int team = 0;
        // A flag that the caller had before stays; a worker does not report it as its own.
        _mm_setcsr(0x1F80 | 0x20);
        parallelTeam(2, [&](int t, int threads) {
            if (t == 0)
                team = threads;
            if (t == raising) {
                volatile float zero = 0, one = 1;
                zero = one / zero;
            }
        });
        const unsigned after = _mm_getcsr();
        _mm_setcsr(saved);
        if (team == 2)
            EXPECT_EQ(after, 0x1F80u | 0x20 | 0x04) << raising;
    }
    _mm_setcsr(0x1F80);
    parallelTeam(2, [](int, int) {});
    EXPECT_EQ(_mm_getcsr(), 0x1F80u);
    _mm_setcsr(saved);
}

} // namespace
