#include "filters/slot_tables.h"
#include "support/guarded.h"
#include "support/slots.h"
#include "support/status_order.h"
#include "support/values.h"

namespace {

template<class T, class F> void checkDown(F f, int n, int factor, int phase, size_t offset)
{
    std::vector<T> x = randomValues<T>(n, n);
    std::vector<T> want;
    for (int64_t i = phase; i < n; i += factor)
        want.push_back(x[i]);
    const size_t bytes = want.size() * sizeof(T);
    Guarded &in = pooledGuarded(1, n * sizeof(T) + 64), &out = pooledGuarded(2, bytes + 64);
    T* src = in.atEnd<T>(n * sizeof(T), offset);
    T* dst = offset ? out.atFront<T>(bytes, offset) : out.atEnd<T>(bytes);
    memcpy(static_cast<void*>(src), x.data(), n * sizeof(T));
    int count = -7, p = phase;
    ASSERT_EQ(f(src, n, dst, &count, factor, &p), qvrOk);
    ASSERT_EQ(count, static_cast<int>(want.size()));
    EXPECT_TRUE(bytes == 0 || memcmp(static_cast<void*>(dst), want.data(), bytes) == 0)
        << n << " factor " << factor << " phase " << phase << " +" << offset;
    EXPECT_TRUE(in.intact() && out.intact());
    // The next kept sample, counted from the end of this block.
    int64_t next = phase;
    while (next < n)
        next += factor;
    EXPECT_EQ(p, next - n);
}

template<class T, class Table> void checkDowns(const Table& table)
{
    slots::each(table, [&](auto f, int) {
        for (int factor : {1, 2, 3, 4, 5, 6, 7, 8, 9, 16, 31})
            for (int phase = 0; phase < factor; phase += factor > 9 ? 5 : 1)
                for (int n = 1; n <= 70; n++)
                    checkDown<T>(f, n, factor, phase, 0);
        for (int factor : {2, 3, 4, 5})
            for (size_t offset : {1, 2, 4, 8, 30})
                for (int n : {200, 201, 202, 203, 1000})
                    checkDown<T>(f, n, factor, factor - 1, offset);
        checkDown<T>(f, 5, INT32_MAX, 4, 0);
        checkDown<T>(f, 5, INT32_MAX, INT32_MAX - 1, 0);
        checkDown<T>(f, 3, 8, 5, 0);
    });
}

TEST(SampleDown, Floats)
{
    checkDowns<float>(qvrTable_qvrsSampleDown_32f);
}
TEST(SampleDown, Shorts)
{
    checkDowns<int16_t>(qvrTable_qvrsSampleDown_16s);
}

TEST(SampleDown, CallsContinueOneSignal)
{
    slots::each(qvrTable_qvrsSampleDown_32f, [&](auto f, int) {
        const std::vector<float> x = randomValues<float>(1000, 1);
        std::vector<float> got;
        int phase = 2;
        for (size_t at = 0; at < x.size();) {
            const int n = static_cast<int>(std::min<size_t>(1 + at % 37, x.size() - at));
            float out[64];
            int count;
            ASSERT_EQ(f(&x[at], n, out, &count, 7, &phase), qvrOk);
            got.insert(got.end(), out, out + count);
            at += n;
        }
        size_t k = 0;
        for (size_t i = 2; i < x.size(); i += 7)
            ASSERT_EQ(got[k++], x[i]);
        EXPECT_EQ(k, got.size());
    });
}

TEST(SampleUp, StuffsZeros)
{
    slots::each(qvrTable_qvrsSampleUp_32f, [&](auto f, int) {
        for (int factor : {1, 2, 3, 4, 5, 7, 8, 9, 15, 16, 17, 24, 25, 40, 100})
            for (int phase = 0; phase < factor; phase += factor > 9 ? 4 : 1)
                for (int n : {1, 2, 3, 4, 5, 7, 8, 9, 16, 17, 33, 70})
                    for (size_t offset : {0, 1, 4, 20}) {
                        std::vector<float> x = randomValues<float>(n, n), want(static_cast<size_t>(n) * factor, 0.0f);
                        x[0] = -0.0f;
                        for (int i = 0; i < n; i++)
                            want[static_cast<size_t>(i) * factor + phase] = x[i];
                        Guarded &in = pooledGuarded(1, n * 4 + 64), &out = pooledGuarded(2, want.size() * 4 + 64);
                        float* src = in.atEnd<float>(n * 4, offset);
                        float* dst =
                            offset ? out.atFront<float>(want.size() * 4, offset) : out.atEnd<float>(want.size() * 4);
                        memcpy(static_cast<void*>(src), x.data(), n * 4);
                        int count = 0, p = phase;
                        ASSERT_EQ(f(src, n, dst, &count, factor, &p), qvrOk);
                        EXPECT_EQ(count, n * factor);
                        EXPECT_EQ(p, phase);
                        ASSERT_EQ(memcmp(static_cast<void*>(dst), want.data(), want.size() * 4), 0)
                            << n << " factor " << factor << " phase " << phase << " +" << offset;
                        EXPECT_TRUE(in.intact() && out.intact());
                    }
        // More outputs than an int counts are refused with nothing written.
        float x[2] = {1, 2}, y[2] = {3, 4};
        int count = 5, phase = 0;
        EXPECT_EQ(f(x, 2, y, &count, 1 << 30, &phase), qvrErrBadSize);
        EXPECT_EQ(count, 5);
        EXPECT_EQ(y[0], 3);
    });
}

template<class T, class Table> void checkStatuses(const Table& table)
{
    slots::each(table, [&](auto f, int) {
        const T x[4] = {};
        Guarded dst(64);
        T* d = dst.atEnd<T>(64);
        int count = 77, phase = 0;
        struct Args {
            const T* src;
            int n;
            T* dst;
            int* count;
            int factor;
            int* phase;
            int phaseValue;
        };
        for (int bad : {0, -1, INT32_MIN})
            for (int badPhase : {3, 4, -1, INT32_MIN, INT32_MAX})
                expectStatusOrder<Args>(
                    {x, 4, d, &count, 3, &phase, 0},
                    {{"src", qvrErrNullPointer, [](Args& a) { a.src = nullptr; }},
                     {"dst", qvrErrNullPointer, [](Args& a) { a.dst = nullptr; }},
                     {"dstLen", qvrErrNullPointer, [](Args& a) { a.count = nullptr; }},
                     {"phase", qvrErrNullPointer, [](Args& a) { a.phase = nullptr; }},
                     {"srcLen", qvrErrBadSize, [=](Args& a) { a.n = bad; }},
                     {"factor", qvrErrBadSampleFactor, [=](Args& a) { a.factor = bad; }},
                     {"phase value", qvrErrBadSamplePhase, [=](Args& a) { a.phaseValue = badPhase; }}},
                    [&](const Args& a) {
                        phase = a.phaseValue;
                        const qvrStatus s = f(a.src, a.n, a.dst, a.count, a.factor, a.phase);
                        EXPECT_EQ(phase, a.phaseValue);
                        EXPECT_EQ(count, 77);
                        return s;
                    },
                    [&] { return dst.untouched(); });
    });
}

TEST(SampleRate, Statuses)
{
    checkStatuses<float>(qvrTable_qvrsSampleUp_32f);
    checkStatuses<float>(qvrTable_qvrsSampleDown_32f);
    checkStatuses<int16_t>(qvrTable_qvrsSampleDown_16s);
}

} // namespace
