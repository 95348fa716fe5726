#include "model/vector.h"
#include "support/arrays.h"
#include "support/status_order.h"
#include "vector/slot_tables.h"

namespace {

using T = float;

// ---- Crossings of zero ----------------------------------------------------------------------------------------------

T crossings(const std::vector<T>& v, int type)
{
    T count;
    model::qvrsZeroCrossing_32f(v.data(), static_cast<int>(v.size()), &count, type);
    return count;
}

std::vector<T> wave(size_t n, uint32_t seed)
{
    std::vector<T> v = seed % 2 ? randomValues<T>(n, seed) : mixedValues<T>(n, seed);
    std::mt19937 engine(seed);
    for (T& x : v)
        if (engine() % 4 == 0)
            x = std::array<T, 6>{0.0f, -0.0f, 1e-30f, -1e-30f, 1e-44f, -1e-44f}[engine() % 6];
    return v;
}

TEST(ZeroCrossing, EveryDefinition)
{
    slots::each(qvrTable_qvrsZeroCrossing_32f, [&](auto f, int) {
        for (int type : {0, 1, 2})
            sweepArrays<T>(wave,
                           [&](const T* p, const std::vector<T>& v) {
                               T result = 77;
                               EXPECT_EQ(f(p, static_cast<int>(v.size()), &result, type), qvrOk);
                               EXPECT_EQ(bitsOf(result), bitsOf(crossings(v, type))) << "type " << type;
                           },
                           {5000});
        const auto one = [f](std::vector<T> v, int type) {
            T result = 77;
            EXPECT_EQ(f(v.data(), static_cast<int>(v.size()), &result, type), qvrOk);
            return result;
        };
        EXPECT_EQ(one({0.0f, -0.0f}, 1), 1);
        EXPECT_EQ(one({0.0f, -0.0f}, 0), 0);
        EXPECT_EQ(one({0.0f, -0.0f}, 2), 0);
        EXPECT_EQ(one({1e-30f, -1e-30f}, 0), 0); // the product underflows
        EXPECT_EQ(one({1e-30f, -1e-30f}, 2), 1);
        EXPECT_EQ(one({1, 0, -1}, 2), 1);
        EXPECT_EQ(one({1, 0}, 2), 0.5f);
        EXPECT_EQ(one({floatOf(0xFFC00000), 1}, 1), 1);
        EXPECT_EQ(one({floatOf(0x7FC00000), -1}, 2), 0.5f);
    });
}

// 2^24 + 2 crossings: counted as integers, converted at the end.
TEST(ZeroCrossing, CountsBeyondSingles)
{
    std::vector<T> v((1 << 24) + 3);
    for (size_t i = 0; i < v.size(); i++)
        v[i] = i % 2 ? -1.0f : 1.0f;
    slots::each(qvrTable_qvrsZeroCrossing_32f, [&](auto f, int) {
        for (int type : {0, 1, 2}) {
            T result = 77;
            EXPECT_EQ(f(v.data(), static_cast<int>(v.size()), &result, type), qvrOk);
            EXPECT_EQ(result, 16777218.0f);
        }
    });
    // One body, a sum in single precision: it goes up by 2, to 2^25, and half of that is the result.
    T rate = 77, sum = 0;
    EXPECT_EQ(Morven_qvrsSignChangeRate_Count0_32f(v.data(), static_cast<int>(v.size()), &rate), qvrOk);
    for (size_t i = 1; i < v.size(); i++)
        sum += 2.0f;
    EXPECT_EQ(rate, sum * 0.5f);
}

TEST(ZeroCrossing, Statuses)
{
    slots::each(qvrTable_qvrsZeroCrossing_32f, [&](auto f, int) {
        struct Args {
            const T* src;
            int len;
            T* result;
            int type;
        };
        const T x[4] = {1, -1, 1, -1};
        T result = 55;
        expectStatusOrder<Args>(
            {x, 4, &result, 1},
            {{"source", qvrErrNullPointer, [](Args& a) { a.src = nullptr; }},
             {"result", qvrErrNullPointer, [](Args& a) { a.result = nullptr; }},
             {"length", qvrErrBadSize, [](Args& a) { a.len = 0; }},
             {"type", qvrErrBadSelector, [](Args& a) { a.type = 3; }}},
            [f](const Args& a) { return f(a.src, a.len, a.result, a.type); }, [&] { return result == 55; });
        for (int type : {3, -1, INT32_MIN, INT32_MAX})
            for (int len : {4, 1, -1, -5, INT32_MIN})
                EXPECT_EQ(f(x, len, &result, type), qvrErrBadSelector);
        EXPECT_EQ(result, 55);
        for (int len : {1, -1, -5, INT32_MIN})
            for (int type : {0, 1, 2}) {
                result = 55;
                EXPECT_EQ(f(x, len, &result, type), qvrOk);
                EXPECT_EQ(bitsOf(result), 0u);
            }
    });
}

// ---- Sign changes ---------------------------------------------------------------------------------------------------

TEST(SignChangeRate, StepsBetweenSigns)
{
    const auto f = Morven_qvrsSignChangeRate_Count0_32f;
    sweepArrays<T>(wave, [&](const T* p, const std::vector<T>& v) {
        T want = 0;
        model::qvrsSignChangeRate_Count0_32f(v.data(), static_cast<int>(v.size()), &want);
        T result = 77;
        EXPECT_EQ(f(p, static_cast<int>(v.size()), &result), qvrOk);
        EXPECT_EQ(result, want);
    });
    const auto one = [f](std::vector<T> v) {
        T result = 77;
        EXPECT_EQ(f(v.data(), static_cast<int>(v.size()), &result), qvrOk);
        return result;
    };
    EXPECT_EQ(one({1, 0, -1}), 1);
    EXPECT_EQ(one({1, -1}), 1);
    EXPECT_EQ(one({std::numeric_limits<T>::quiet_NaN(), -1}), 1);
    EXPECT_EQ(one({1, -0.0f}), 0.5f);
    EXPECT_EQ(one({-3}), 0);
    T result = 55;
    const T x[4] = {};
    checkPointersThenLengthOrder(2, [&](int null, int len) {
        const qvrStatus s = f(null == 0 ? nullptr : x, len, null == 1 ? nullptr : &result);
        EXPECT_EQ(result, 55);
        return s;
    });
}

// Steps of 1 no longer move a sum of 2^24; integers would count on.
TEST(SignChangeRate, SumSticksAtTheEndOfSingles)
{
    const size_t n = (1 << 24) + 1001;
    std::vector<T> v(n);
    for (size_t i = 0; i < n; i++)
        v[i] = i % 2 ? 0.0f : 1.0f;
    T result = 77;
    EXPECT_EQ(Morven_qvrsSignChangeRate_Count0_32f(v.data(), static_cast<int>(n), &result), qvrOk);
    EXPECT_EQ(result, 8388608.0f);
}

// ---- Offset compensation --------------------------------------------------------------------------------------------

TEST(CompensateOffset, OutOfPlace)
{
    const auto f = Morven_qvrsCompensateOffset_32f;
    for (bool same : {false, true})
        for (size_t n = 1; n <= 100; n++)
            for (float factor : {0.999f, -0.5f, 1.1f}) {
                const std::vector<T> x = randomValues<T>(n + 1, static_cast<uint32_t>(n));
                std::vector<T> want(n);
                T wantLast;
                model::qvrsCompensateOffset_32f(x.data(), want.data(), static_cast<int>(n), &wantLast, 2.7f, factor);
                Guarded& src = pooledGuarded(0, 4 * n + 200);
                Guarded& dst = pooledGuarded(1, 4 * n + 200);
                T* s = src.atEnd<T>(4 * n + 4, n % 5);
                memcpy(static_cast<void*>(s), x.data(), 4 * n + 4);
                T* d = same ? s : dst.atEnd<T>(4 * n, n % 7);
                T last = 77;
                EXPECT_EQ(f(s, d, static_cast<int>(n), &last, 2.7f, factor), qvrOk);
                EXPECT_EQ(memcmp(d, want.data(), 4 * n), 0) << n;
                EXPECT_EQ(last, x[n]);
                EXPECT_TRUE(src.intact());
                EXPECT_TRUE(same || dst.intact());
            }
    Guarded dst(16);
    const T x[5] = {};
    T last = 55;
    checkPointersThenLengthOrder(3, [&](int null, int len) {
        T* d = dst.atEnd<T>(16);
        const qvrStatus s = f(null == 0 ? nullptr : x, null == 1 ? nullptr : d, len, null == 2 ? nullptr : &last, 1, 1);
        EXPECT_TRUE(dst.untouched());
        EXPECT_EQ(last, 55);
        return s;
    });
}

TEST(CompensateOffset, InPlace)
{
    const auto f = Morven_qvrsCompensateOffset_32f_I;
    for (size_t n = 1; n <= 100; n++)
        for (float factor : {0.999f, -0.5f, 1.1f}) {
            const std::vector<T> x = randomValues<T>(n, static_cast<uint32_t>(n));
            const T before = 3.3f;
            std::vector<T> want = x;
            T wantLast = before;
            model::qvrsCompensateOffset_32f_I(want.data(), static_cast<int>(n), &wantLast, 2.7f, factor);
            Guarded& dst = pooledGuarded(1, 4 * n + 200);
            T* d = dst.atEnd<T>(4 * n, n % 7);
            memcpy(static_cast<void*>(d), x.data(), 4 * n);
            T last = before;
            EXPECT_EQ(f(d, static_cast<int>(n), &last, 2.7f, factor), qvrOk);
            EXPECT_EQ(memcmp(d, want.data(), 4 * n), 0) << n;
            EXPECT_EQ(last, x[n - 1]);
            EXPECT_TRUE(dst.intact());
        }
    Guarded dst(16);
    T last = 55;
    checkPointersThenLengthOrder(2, [&](int null, int len) {
        T* d = dst.atEnd<T>(16);
        const qvrStatus s = f(null == 0 ? nullptr : d, len, null == 1 ? nullptr : &last, 1, 1);
        EXPECT_TRUE(dst.untouched());
        EXPECT_EQ(last, 55);
        return s;
    });
}

TEST(CompensateOffset, TheTwoFormsDiffer)
{
    const T x[4] = {1, 2, 4, 8};
    T out[3], in[3] = {1, 2, 4}, last = 0;
    EXPECT_EQ(Morven_qvrsCompensateOffset_32f(x, out, 3, &last, 1, 0.5f), qvrOk);
    EXPECT_EQ(last, 8);
    last = 0;
    EXPECT_EQ(Morven_qvrsCompensateOffset_32f_I(in, 3, &last, 1, 0.5f), qvrOk);
    EXPECT_EQ(last, 4);
    EXPECT_EQ(out[0], 0.5f);
    EXPECT_EQ(out[1], 1.25f);
    EXPECT_EQ(out[2], 2.625f);
    EXPECT_EQ(in[0], 1.5f);
    EXPECT_EQ(in[1], 1.0f);
    EXPECT_EQ(in[2], 4.0f);
}

// ---- Peaks ----------------------------------------------------------------------------------------------------------

TEST(FindPeaks, JudgesArgumentsOnly)
{
    struct Args {
        const T* src;
        qvr8u* peaks;
        int len, search, average;
    };
    // Addresses that fault on any access.
    Guarded guard(16);
    const T* const src = guard.atEnd<T>(16) + 4;
    qvr8u* const peaks = guard.atEnd<qvr8u>(16) + 16;
    const Args valid{src, peaks, 65535, 127, 127};
    const auto call = [](const Args& a) {
        return Morven_qvrsFindPeaks_32f8u(a.src, a.peaks, a.len, a.search, a.average);
    };
    EXPECT_EQ(call(valid), qvrOk);
    EXPECT_EQ(call({src, peaks, 1, 1, 1}), qvrOk);
    for (int len : {0, -1, 65536, INT32_MIN, INT32_MAX})
        for (int size : {0, -1, 128, INT32_MIN, INT32_MAX})
            expectStatusOrder<Args>(valid,
                                    {{"source", qvrErrNullPointer, [](Args& a) { a.src = nullptr; }},
                                     {"peaks", qvrErrNullPointer, [](Args& a) { a.peaks = nullptr; }},
                                     {"length", qvrErrBadCount, [=](Args& a) { a.len = len; }},
                                     {"search", qvrErrBadSize, [=](Args& a) { a.search = size; }},
                                     {"average", qvrErrBadSize, [=](Args& a) { a.average = size; }}},
                                    call);
}

} // namespace
