#include "model/vector.h"
#include "support/elementwise.h"
#include "vector/slot_tables.h"

namespace {

using F = float;

template<class T>
const std::vector<T> kConstants = {T(2.5),
                                   T(-3),
                                   T(0),
                                   T(-0.0),
                                   T(1),
                                   T(-1),
                                   std::numeric_limits<T>::infinity(),
                                   -std::numeric_limits<T>::infinity(),
                                   std::numeric_limits<T>::quiet_NaN(),
                                   std::numeric_limits<T>::denorm_min(),
                                   T(0.1)};

// The sweep with an ordinary constant, then every special constant at a few lengths.
template<class T, class Call, class Model> void checkConstant(Call call, Model model, bool inPlace)
{
    const auto make = [&](T val) {
        return Elementwise<T, T>{[=](const T* s, T* d, int n) { return call(s, val, d, n); },
                                 [=](T x) { return model(x, val); }};
    };
    inPlace ? checkInPlace(make(T(2.5))) : checkElementwise(make(T(2.5)));
    for (T val : kConstants<T>) {
        SCOPED_TRACE(val);
        for (int n : {1, 4, 9, 70, 600}) {
            const std::vector<T> in = mixedValues<T>(n, 11);
            Elementwise<T, T> f = make(val);
            if (std::isnan(val))
                f.exactNan = false;
            checkCall<T, T>(f, in, true, 0, 0, inPlace ? 0 : -1);
            checkCall<T, T>(f, in, false, 1, 3, inPlace ? 0 : -1);
            if (!inPlace)
                checkCall<T, T>(f, in, true, 0, 0, 0);
        }
    }
}

template<class T, class Call> void checkStatuses(Call call, int pointers, bool zeroIsError)
{
    Guarded dst(64);
    const T x[4] = {1, 2, 3, 4};
    for (T val : {T(2), T(0), T(1)}) {
        checkPointersThenLengthOrder(pointers, [&](int null, int len) {
            T* d = dst.atEnd<T>(4 * sizeof(T));
            const qvrStatus s =
                call(null == 0 && pointers == 2 ? nullptr : x, val, null == pointers - 1 ? nullptr : d, len);
            EXPECT_TRUE(dst.untouched());
            return s;
        });
    }
    if (zeroIsError) {
        for (T zero : {T(0), T(-0.0)}) {
            T* d = dst.atEnd<T>(4 * sizeof(T));
            EXPECT_EQ(call(x, zero, d, 4), qvrErrDivByZero);
            EXPECT_TRUE(dst.untouched());
        }
    }
}

template<class Table, class Model> void checkOutOfPlace(const Table& table, Model model)
{
    slots::each(table, [&](auto f, int) {
        const auto call = [f](const F* s, F val, F* d, int n) { return f(s, val, d, n); };
        checkConstant<F>(call, model, false);
        checkStatuses<F>(call, 2, false);
    });
}

template<class T, class Table, class Model> void checkInto(const Table& table, Model model)
{
    slots::each(table, [&](auto f, int) {
        const auto call = [f](const T*, T val, T* d, int n) { return f(val, d, n); };
        checkConstant<T>(call, model, true);
        checkStatuses<T>(call, 1, false);
    });
}

// An element with a constant.
template<class T> auto withConstant(qvrStatus (*model)(const T*, T, T*, int))
{
    return [model](T x, T val) {
        T d;
        model(&x, val, &d, 1);
        return d;
    };
}
template<class T> auto withConstant(qvrStatus (*model)(T, T*, int))
{
    return [model](T x, T val) {
        model(val, &x, 1);
        return x;
    };
}

TEST(Constant, AddC)
{
    checkOutOfPlace(qvrTable_qvrsAddC_32f, withConstant(model::qvrsAddC_32f));
}
TEST(Constant, AddCInPlace)
{
    checkInto<F>(qvrTable_qvrsAddC_32f_I, withConstant(model::qvrsAddC_32f_I));
}
TEST(Constant, AddCDoubleInPlace)
{
    checkInto<double>(qvrTable_qvrsAddC_64f_I, withConstant(model::qvrsAddC_64f_I));
}
TEST(Constant, SubC)
{
    checkOutOfPlace(qvrTable_qvrsSubC_32f, withConstant(model::qvrsSubC_32f));
}
TEST(Constant, SubCInPlace)
{
    checkInto<F>(qvrTable_qvrsSubC_32f_I, withConstant(model::qvrsSubC_32f_I));
}
TEST(Constant, SubCRev)
{
    checkOutOfPlace(qvrTable_qvrsSubCRev_32f, withConstant(model::qvrsSubCRev_32f));
}
TEST(Constant, MulC)
{
    checkOutOfPlace(qvrTable_qvrsMulC_32f, withConstant(model::qvrsMulC_32f));
}
TEST(Constant, MulCInPlace)
{
    checkInto<F>(qvrTable_qvrsMulC_32f_I, withConstant(model::qvrsMulC_32f_I));
}
TEST(Constant, MulCDoubleInPlace)
{
    checkInto<double>(qvrTable_qvrsMulC_64f_I, withConstant(model::qvrsMulC_64f_I));
}

TEST(Constant, DivC)
{
    slots::each(qvrTable_qvrsDivC_32f, [&](auto f, int) {
        const auto call = [f](const F* s, F val, F* d, int n) { return val == 0 ? (f(s, 1, d, n)) : f(s, val, d, n); };
        checkConstant<F>(
            call, [](F x, F val) { return val == 0 ? x : withConstant(model::qvrsDivC_32f)(x, val); }, false);
    });
    slots::each(qvrTable_qvrsDivC_32f, [&](auto f, int) {
        Guarded dst(64);
        const F x[4] = {1, 2, 3, 4};
        for (F val : {3.0f, 0.0f}) {
            checkPointersThenLengthOrder(2, [&](int null, int len) {
                F* d = dst.atEnd<F>(16);
                const qvrStatus s = f(null == 0 ? nullptr : x, val, null == 1 ? nullptr : d, len);
                EXPECT_TRUE(dst.untouched());
                return s;
            });
        }
        for (F zero : {0.0f, -0.0f}) {
            F* d = dst.atEnd<F>(16);
            EXPECT_EQ(f(x, zero, d, 4), qvrErrDivByZero);
            EXPECT_TRUE(dst.untouched());
        }
    });
}

TEST(Constant, DivCInPlace)
{
    slots::each(qvrTable_qvrsDivC_32f_I, [&](auto f, int) {
        const auto call = [f](const F*, F val, F* d, int n) { return f(val == 0 ? 1 : val, d, n); };
        checkConstant<F>(
            call, [](F x, F val) { return val == 0 ? x : withConstant(model::qvrsDivC_32f)(x, val); }, true);
        checkStatuses<F>([f](const F*, F val, F* d, int n) { return f(val, d, n); }, 1, true);
    });
}

TEST(Constant, DivCMultipliesByTheRoundedReciprocal)
{
    slots::each(qvrTable_qvrsDivC_32f, [&](auto f, int) {
        std::vector<F> x = randomValues<F>(1000, 3), d(1000);
        ASSERT_EQ(f(x.data(), 3.0f, d.data(), 1000), qvrOk);
        int differ = 0;
        for (int i = 0; i < 1000; i++) {
            EXPECT_EQ(d[i], x[i] * 0.33333334f);
            differ += d[i] != x[i] / 3.0f;
        }
        EXPECT_GT(differ, 0);
        // The reciprocal of an infinity is zero, and a zero factor clears.
        x[3] = NAN;
        ASSERT_EQ(f(x.data(), INFINITY, d.data(), 1000), qvrOk);
        for (F y : d)
            EXPECT_EQ(bitsOf(y), 0u);
    });
}

TEST(Constant, MulCByZeroClearsNanWhereMulKeepsIt)
{
    slots::each(qvrTable_qvrsMulC_32f, [&](auto f, int slot) {
        const std::vector<F> x = {NAN, INFINITY, -1, -0.0f, 5, 6, 7, 8, 9}, zeros(9, 0.0f);
        std::vector<F> d(9, 1.0f);
        for (F zero : {0.0f, -0.0f}) {
            ASSERT_EQ(f(x.data(), zero, d.data(), 9), qvrOk);
            for (F y : d)
                EXPECT_EQ(bitsOf(y), 0u);
        }
        ASSERT_EQ(qvrTable_qvrsMul_32f[slot](x.data(), zeros.data(), d.data(), 9), qvrOk);
        EXPECT_TRUE(std::isnan(d[0]));
        EXPECT_TRUE(std::isnan(d[1]));
    });
}

} // namespace
