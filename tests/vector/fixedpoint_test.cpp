#include "model/element.h"
#include "support/elementwise.h"
#include "vector/slot_tables.h"

namespace {

// The exact value over 2^s, half to even, saturated.
template<class T> T scaled(int64_t t, int64_t s)
{
    using L = std::numeric_limits<T>;
    const model::Wide most = L::max(), least = L::min();
    const int64_t shift = std::clamp<int64_t>(s, -40, 60);
    const model::Wide x =
        shift > 0 ? model::divideHalfEven(t, model::Wide{1} << shift) : model::Wide{t} * (model::Wide{1} << -shift);
    return static_cast<T>(x > most ? most : x < least ? least : x);
}
template<class T> T saturated(int64_t t)
{
    return scaled<T>(t, 0);
}

std::vector<int> allScales()
{
    std::vector<int> v = {INT32_MIN, INT32_MIN + 1, -1024, -65, -64, -63, 63, 64, 65, 1024, INT32_MAX};
    for (int s = -34; s <= 34; s++)
        v.push_back(s);
    return v;
}

// Values whose scaled sums are ties and next to them, beside the ends of the range.
template<class T> std::vector<T> edgeValues(size_t n, uint32_t seed)
{
    std::vector<T> v = mixedValues<T>(n, seed);
    std::mt19937 engine(seed);
    for (T& x : v)
        if (engine() % 2 == 0)
            x = static_cast<T>((engine() % 8 << (engine() % 16)) + engine() % 3 - 1);
    return v;
}

// call(src, dst, n, scale) reads both or, with `constant`, dst alone.
template<class T, class Call, class Model>
void checkScales(Call call, Model model, bool constant, bool everyPlace = true)
{
    for (int s : allScales()) {
        SCOPED_TRACE(testing::Message() << "scale " << s);
        for (int n : {1, 2, 7, 8, 15, 31, 200}) {
            const std::vector<T> a = edgeValues<T>(n, n), b = edgeValues<T>(n, n + 1);
            Elementwise<T, T, T> f{[=](const T* src, const T*, T* dst, int len) { return call(src, dst, len, s); },
                                   [=](T x, T y) { return scaled<T>(model(x, y), s); }};
            checkCall<T, T, T>(f, a, b, true, 0, 0, 1);
            checkCall<T, T, T>(f, a, b, false, 6, 3, 1);
        }
        if (testing::Test::HasFailure())
            return;
    }
    if (!everyPlace)
        return;
    for (int s : {0, 1, 2, 7, -4, -20, 18}) {
        SCOPED_TRACE(testing::Message() << "scale " << s);
        if (constant)
            checkInPlace<T, T>({[=](const T*, T* dst, int n) { return call(nullptr, dst, n, s); },
                                [=](T y) { return scaled<T>(model(0, y), s); }});
        else
            checkInPlace<T, T, T>({[=](const T* src, const T*, T* dst, int n) { return call(src, dst, n, s); },
                                   [=](T x, T y) { return scaled<T>(model(x, y), s); }});
    }
}

template<class T, class Call> void checkOrder(int pointers, Call call)
{
    Guarded dst(64);
    const T x[8] = {1, 2, 3};
    checkPointersThenLengthOrder(pointers, [&](int null, int len) {
        T* d = dst.atEnd<T>(sizeof x);
        const qvrStatus s = call(null == 0 && pointers > 1 ? nullptr : x, null == 1 && pointers > 2 ? nullptr : x,
                                 null == pointers - 1 ? nullptr : d, len);
        EXPECT_TRUE(dst.untouched());
        return s;
    });
}

TEST(FixedPoint, AddSigned)
{
    using T = int16_t;
    slots::each(qvrTable_qvrsAdd_16s_Sfs, [&](auto f, int) {
        checkScales<T>([=](const T* a, T* d, int n, int s) { return f(a, d, d, n, s); },
                       [](int64_t x, int64_t y) { return x + y; }, false);
        for (int s : {0, 1, 3, -2, 17})
            checkElementwise<T, T, T>({[=](const T* a, const T* b, T* d, int n) { return f(a, b, d, n, s); },
                                       [=](T x, T y) { return scaled<T>(x + y, s); }});
        for (int s : {0, 1, 17, -1, -16, INT32_MIN, INT32_MAX})
            checkOrder<T>(3, [=](const T* a, const T* b, T* d, int n) { return f(a, b, d, n, s); });
        const auto one = [f](T a, T b, int s) {
            T d = 77;
            EXPECT_EQ(f(&a, &b, &d, 1, s), qvrOk);
            return d;
        };
        EXPECT_EQ(one(32767, 32767, 0), 32767);
        EXPECT_EQ(one(32767, 32767, 1), 32767);
        EXPECT_EQ(one(32767, 32767, 16), 1);
        EXPECT_EQ(one(32767, 32767, 17), 0);
        EXPECT_EQ(one(-32768, -32768, 17), 0);
        EXPECT_EQ(one(-1, 0, 1), 0);
        EXPECT_EQ(one(2, 1, 1), 2);
        EXPECT_EQ(one(3, 2, 1), 2);
        EXPECT_EQ(one(4, 3, 1), 4);
        EXPECT_EQ(one(1, 0, -16), 32767);
        EXPECT_EQ(one(-1, 0, -16), -32768);
        EXPECT_EQ(one(0, 0, -16), 0);
        EXPECT_EQ(one(1, -1, -16), 0);
        EXPECT_EQ(one(-1, 0, -15), -32768);
    });
}

// Every pair of a dense grid of sums, on every scale that rounds.
TEST(FixedPoint, EverySumOfTheLowAndHighEnds)
{
    using T = int16_t;
    std::vector<T> a, b;
    for (int x = -70; x <= 70; x++)
        for (int y : {-32768, -32767, -16384, -1, 0, 1, 2, 3, 16383, 16384, 32766, 32767}) {
            a.push_back(static_cast<T>(x));
            b.push_back(static_cast<T>(y));
            a.push_back(static_cast<T>(std::clamp(y + x, -32768, 32767)));
            b.push_back(static_cast<T>(y));
        }
    const std::vector<uint16_t> ua(a.begin(), a.end()), ub(b.begin(), b.end());
    const int n = static_cast<int>(a.size());
    slots::each(qvrTable_qvrsAdd_16s_Sfs, [&](auto f, int) {
        for (int s = -16; s <= 17; s++) {
            std::vector<T> d(a.size());
            EXPECT_EQ(f(a.data(), b.data(), d.data(), n, s), qvrOk);
            for (int i = 0; i < n; i++)
                ASSERT_EQ(d[i], scaled<T>(a[i] + b[i], s)) << a[i] << " + " << b[i] << " scale " << s;
        }
    });
    slots::each(qvrTable_qvrsAdd_16u_ISfs, [&](auto f, int) {
        for (int s = -16; s <= 18; s++) {
            std::vector<uint16_t> d = ub;
            EXPECT_EQ(f(ua.data(), d.data(), n, s), qvrOk);
            for (int i = 0; i < n; i++)
                ASSERT_EQ(d[i], scaled<uint16_t>(ua[i] + ub[i], s)) << ua[i] << " + " << ub[i] << " scale " << s;
        }
    });
}

TEST(FixedPoint, AddUnsigned)
{
    using T = uint16_t;
    slots::each(qvrTable_qvrsAdd_16u_ISfs, [&](auto f, int) {
        checkScales<T>(f, [](int64_t x, int64_t y) { return x + y; }, false);
        for (int s : {0, 1, 18, -1, -16, INT32_MIN, INT32_MAX})
            checkOrder<T>(2, [=](const T* a, const T*, T* d, int n) { return f(a, d, n, s); });
        const auto one = [f](T a, T b, int s) {
            EXPECT_EQ(f(&a, &b, 1, s), qvrOk);
            return b;
        };
        EXPECT_EQ(one(65535, 65535, 17), 1);
        EXPECT_EQ(one(65535, 65535, 18), 0);
        EXPECT_EQ(one(65535, 65535, -15), 65535);
        EXPECT_EQ(one(0, 0, -15), 0);
        EXPECT_EQ(one(0, 0, -16), 0);
    });
}

TEST(FixedPoint, AddConstantUnsigned)
{
    using T = uint16_t;
    slots::each(qvrTable_qvrsAddC_16u_ISfs, [&](auto f, int) {
        for (T val : {0, 1, 2, 3, 32767, 32768, 65535})
            checkScales<T>([=](const T*, T* d, int n, int s) { return f(val, d, n, s); },
                           [=](int64_t, int64_t y) { return y + val; }, true, val == 3);
        for (T val : {0, 5})
            for (int s : {0, 1, 18, -1, -16, INT32_MIN, INT32_MAX})
                checkOrder<T>(1, [=](const T*, const T*, T* d, int n) { return f(val, d, n, s); });
        T x[2] = {0, 9};
        EXPECT_EQ(f(0, x, 2, -16), qvrOk);
        EXPECT_EQ(x[0], 0);
        EXPECT_EQ(x[1], 65535);
    });
}

TEST(FixedPoint, SubtractConstantUnsigned)
{
    using T = uint16_t;
    slots::each(qvrTable_qvrsSubC_16u_ISfs, [&](auto f, int) {
        for (T val : {0, 1, 2, 3, 32767, 32768, 65535})
            checkScales<T>([=](const T*, T* d, int n, int s) { return f(val, d, n, s); },
                           [=](int64_t, int64_t y) { return y > val ? y - val : 0; }, true, val == 3);
        for (T val : {0, 5})
            for (int s : {0, 1, 17, -1, -16, INT32_MIN, INT32_MAX})
                checkOrder<T>(1, [=](const T*, const T*, T* d, int n) { return f(val, d, n, s); });
    });
}

TEST(FixedPoint, AddSignedInPlace)
{
    using T = int16_t;
    slots::each(qvrTable_qvrsAdd_16s_I, [&](auto f, int) {
        checkInPlace<T, T, T>({[=](const T* a, const T*, T* d, int n) { return f(a, d, n); },
                               [](T x, T y) { return saturated<T>(x + y); }});
        checkOrder<T>(2, [=](const T* a, const T*, T* d, int n) { return f(a, d, n); });
    });
}

template<class Table, class Model> void checkConstant(Table& table, Model model)
{
    using T = int16_t;
    slots::each(table, [&](auto f, int) {
        for (int val : {0, 1, -1, 2, -2, 3, 181, -182, 255, 256, 1000, 32767, -32767, -32768}) {
            const T c = static_cast<T>(val);
            const Elementwise<T, T> e{[=](const T*, T* d, int n) { return f(c, d, n); },
                                      [=](T x) { return saturated<T>(model(x, c)); }};
            if (val == 181 || val == 0)
                checkInPlace(e);
            std::vector<T> all;
            for (int x = -32768; x <= 32767; x += val % 2 ? 1 : 7)
                all.push_back(static_cast<T>(x));
            checkCall<T, T>(e, all, true, 0, 0, 0);
            checkOrder<T>(1, [=](const T*, const T*, T* d, int n) { return f(c, d, n); });
        }
    });
}

TEST(FixedPoint, SubtractConstantSigned)
{
    checkConstant(qvrTable_qvrsSubC_16s_I, [](int64_t x, int64_t c) { return x - c; });
}
TEST(FixedPoint, MultiplyByConstantSigned)
{
    checkConstant(qvrTable_qvrsMulC_16s_I, [](int64_t x, int64_t c) { return x * c; });
    slots::each(qvrTable_qvrsMulC_16s_I, [&](auto f, int) {
        int16_t x = -32768;
        EXPECT_EQ(f(-1, &x, 1), qvrOk);
        EXPECT_EQ(x, 32767);
    });
}

TEST(FixedPoint, Magnitude)
{
    using T = int32_t;
    slots::each(qvrTable_qvrsAbs_32s_I, [&](auto f, int) {
        checkInPlace<T, T>(
            {[=](const T*, T* d, int n) { return f(d, n); }, [](T x) { return saturated<T>(std::abs(int64_t{x})); }});
        checkOrder<T>(1, [=](const T*, const T*, T* d, int n) { return f(d, n); });
        T x[5] = {INT32_MIN, INT32_MAX, -1, 0, INT32_MIN};
        EXPECT_EQ(f(x, 5), qvrOk);
        EXPECT_EQ(x[0], INT32_MAX);
        EXPECT_EQ(x[4], INT32_MAX);
    });
}

} // namespace
