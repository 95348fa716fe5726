#include "model/vector.h"
#include "support/elementwise.h"
#include "vector/slot_tables.h"

namespace {

using T = float;

const std::vector<T> kLevels = {10,
                                -10,
                                0.0f,
                                -0.0f,
                                1,
                                std::numeric_limits<T>::infinity(),
                                -std::numeric_limits<T>::infinity(),
                                std::numeric_limits<T>::quiet_NaN()};

void checkLevels(const std::function<Elementwise<T, T>(T)>& make, bool inPlace)
{
    inPlace ? checkInPlace(make(10)) : checkElementwise(make(10));
    for (T level : kLevels) {
        SCOPED_TRACE(level);
        for (int n : {1, 5, 21, 400}) {
            const std::vector<T> in = mixedValues<T>(n, 5);
            checkCall<T, T>(make(level), in, true, 0, 0, 0);
            if (!inPlace)
                checkCall<T, T>(make(level), in, true, 1, 2, -1);
        }
    }
}

constexpr auto kOk = [](const auto&...) { return qvrOk; };

TEST(Threshold, FromOneSide)
{
    slots::each(qvrTable_qvrsThreshold_32f_I, [&](auto f, int) {
        checkLevels(
            [f](T level) {
                return Elementwise<T, T>{[=](const T*, T* d, int n) { return f(d, n, level, qvrCmpLess); },
                                         [=](T x) {
                                             model::qvrsThreshold_32f_I(&x, 1, level, qvrCmpLess);
                                             return x;
                                         },
                                         kOk, true};
            },
            true);
        checkLevels(
            [f](T level) {
                return Elementwise<T, T>{[=](const T*, T* d, int n) { return f(d, n, level, qvrCmpGreater); },
                                         [=](T x) {
                                             model::qvrsThreshold_32f_I(&x, 1, level, qvrCmpGreater);
                                             return x;
                                         },
                                         kOk, true};
            },
            true);
        Guarded dst(16);
        for (int relOp : {0, 4, 1, -1})
            checkPointersThenLengthOrder(1, [&](int null, int len) {
                T* d = dst.atEnd<T>(16);
                const qvrStatus s = f(null == 0 ? nullptr : d, len, 1, relOp);
                EXPECT_TRUE(dst.untouched());
                return s;
            });
        T* d = dst.atEnd<T>(16);
        for (int relOp : {1, 2, 3, 5, -1, -4, 256, INT32_MIN, INT32_MAX})
            EXPECT_EQ(f(d, 4, 1, relOp), qvrErrBadArgument);
        EXPECT_TRUE(dst.untouched());
    });
}

template<class... A> auto oneBeyond(qvrStatus (*model)(A...))
{
    return [model](T x, T level, T value) {
        T d = x;
        if constexpr (sizeof...(A) == 5)
            model(&x, &d, 1, level, value);
        else
            model(&d, 1, level, value);
        return d;
    };
}

template<class Table, class Model> void checkOutOfPlace(Table& table, Model model)
{
    slots::each(table, [&](auto f, int) {
        for (T value : {7.5f, floatOf(0x7FC00123), -0.0f})
            checkLevels(
                [=](T level) {
                    return Elementwise<T, T>{[=](const T* s, T* d, int n) { return f(s, d, n, level, value); },
                                             [=](T x) { return model(x, level, value); }, kOk, true};
                },
                false);
        Guarded dst(16);
        const T x[4] = {};
        checkPointersThenLengthOrder(2, [&](int null, int len) {
            T* d = dst.atEnd<T>(16);
            const qvrStatus s = f(null == 0 ? nullptr : x, null == 1 ? nullptr : d, len, 1, 2);
            EXPECT_TRUE(dst.untouched());
            return s;
        });
        T nan[1] = {std::numeric_limits<T>::quiet_NaN()}, d = 0;
        EXPECT_EQ(f(nan, &d, 1, 1, 2), qvrOk);
        EXPECT_EQ(d, 2);
    });
}

template<class Table, class Model> void checkInPlaceForm(Table& table, Model model)
{
    slots::each(table, [&](auto f, int) {
        for (T value : {7.5f, floatOf(0x7FC00123), -0.0f})
            checkLevels(
                [=](T level) {
                    return Elementwise<T, T>{[=](const T*, T* d, int n) { return f(d, n, level, value); },
                                             [=](T x) { return model(x, level, value); }, kOk, true};
                },
                true);
        Guarded dst(16);
        checkPointersThenLengthOrder(1, [&](int null, int len) {
            T* d = dst.atEnd<T>(16);
            const qvrStatus s = f(null == 0 ? nullptr : d, len, 1, 2);
            EXPECT_TRUE(dst.untouched());
            return s;
        });
        T nan[1] = {std::numeric_limits<T>::quiet_NaN()};
        EXPECT_EQ(f(nan, 1, 1, 2), qvrOk);
        EXPECT_TRUE(std::isnan(nan[0]));
    });
}

TEST(Threshold, GreaterOutOfPlace)
{
    checkOutOfPlace(qvrTable_qvrsThreshold_GTVal_32f, oneBeyond(model::qvrsThreshold_GTVal_32f));
}
TEST(Threshold, GreaterInPlace)
{
    checkInPlaceForm(qvrTable_qvrsThreshold_GTVal_32f_I, oneBeyond(model::qvrsThreshold_GTVal_32f_I));
}
TEST(Threshold, LessOutOfPlace)
{
    checkOutOfPlace(qvrTable_qvrsThreshold_LTVal_32f, oneBeyond(model::qvrsThreshold_LTVal_32f));
}
TEST(Threshold, LessInPlace)
{
    checkInPlaceForm(qvrTable_qvrsThreshold_LTVal_32f_I, oneBeyond(model::qvrsThreshold_LTVal_32f_I));
}

} // namespace
