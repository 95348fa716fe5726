#include "support/elementwise.h"
#include "support/status_order.h"
#include "vector/slot_tables.h"

namespace {

template<class T, class Table> void checkNormalize(const Table& table, T smallestNormal)
{
    slots::each(table, [&](auto f, int) {
        const auto make = [&](T sub, T div) {
            const T factor = T(1) / div;
            return Elementwise<T, T>{[=](const T* s, T* d, int n) { return f(s, d, n, sub, div); },
                                     [=](T x) { return (x - sub) * factor; }};
        };
        checkElementwise(make(T(1.25), T(3)));
        const T inf = std::numeric_limits<T>::infinity(), nan = std::numeric_limits<T>::quiet_NaN();
        for (T div : {smallestNormal, -smallestNormal, T(1), T(-7), inf, -inf, nan})
            for (T sub : {T(0), T(0.1), inf, nan})
                for (int n : {1, 3, 8, 65}) {
                    SCOPED_TRACE(div);
                    checkCall<T, T>(make(sub, div), mixedValues<T>(n, 3), true, 0, 0, -1);
                    checkCall<T, T>(make(sub, div), mixedValues<T>(n, 3), false, 1, 5, 0);
                }
        struct Args {
            const T* src;
            T* dst;
            int len;
            T div;
        };
        Guarded dst(4 * sizeof(T));
        const T x[4] = {1, 2, 3, 4};
        T* d = dst.atEnd<T>(4 * sizeof(T));
        const auto call = [&](const Args& a) { return f(a.src, a.dst, a.len, T(0), a.div); };
        for (T bad : {T(0), T(-0.0), smallestNormal / 2, -smallestNormal / 2, std::numeric_limits<T>::denorm_min()})
            for (int len : {0, -1, INT32_MIN}) {
                expectStatusOrder<Args>({x, d, 4, T(1)},
                                        {{"src", qvrErrNullPointer, [](Args& a) { a.src = nullptr; }},
                                         {"dst", qvrErrNullPointer, [](Args& a) { a.dst = nullptr; }},
                                         {"len", qvrErrBadSize, [len](Args& a) { a.len = len; }},
                                         {"vDiv", qvrErrDivByZero, [bad](Args& a) { a.div = bad; }}},
                                        call, [&] { return dst.untouched(); });
            }
    });
}

TEST(Normalize, Single)
{
    checkNormalize<float>(qvrTable_qvrsNormalize_32f, 1.1754944e-38f);
}
TEST(Normalize, Double)
{
    checkNormalize<double>(qvrTable_qvrsNormalize_64f, 2.2250738585072014e-308);
}

TEST(Normalize, DivisorAtTheEdge)
{
    slots::each(qvrTable_qvrsNormalize_32f, [&](auto f, int) {
        const float x = 1;
        float d = 5;
        EXPECT_EQ(f(&x, &d, 1, 0, 1e-39f), qvrErrDivByZero);
        EXPECT_EQ(d, 5);
        EXPECT_EQ(f(&x, &d, 1, 0, 1.2e-38f), qvrOk);
        EXPECT_EQ(d, 1.0f / 1.2e-38f);
    });
}

} // namespace
