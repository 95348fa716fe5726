#include "model/vector.h"
#include "support/elementwise.h"
#include "vector/slot_tables.h"

#include <xmmintrin.h>

namespace {

using F = float;

template<class Table> void checkBinary(const Table& table, qvrStatus (*model)(const F*, const F*, F*, int))
{
    slots::each(table, [&](auto f, int) {
        checkElementwise<F, F, F>({f, element(model)});
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

template<class T, class Table> void checkBinaryInPlace(const Table& table, qvrStatus (*model)(const T*, T*, int))
{
    slots::each(table, [&](auto f, int) {
        checkInPlace<T, T, T>({[&](const T* src, const T*, T* dst, int n) { return f(src, dst, n); }, element(model)});
        Guarded dst(32);
        const T x[4] = {1, 2, 3, 4};
        checkPointersThenLengthOrder(2, [&](int null, int len) {
            T* d = dst.atEnd<T>(4 * sizeof(T));
            const qvrStatus s = f(null == 0 ? nullptr : x, null == 1 ? nullptr : d, len);
            EXPECT_TRUE(dst.untouched());
            return s;
        });
        // Source and destination one array.
        for (int n : {1, 5, 8, 33, 200}) {
            std::vector<T> v = randomValues<T>(n, 7), want = v;
            for (T& w : want)
                w = element(model)(w, w);
            EXPECT_EQ(f(v.data(), v.data(), n), qvrOk);
            EXPECT_EQ(memcmp(v.data(), want.data(), n * sizeof(T)), 0) << n;
        }
    });
}

template<class Table> void checkUnaryInPlace(const Table& table, qvrStatus (*model)(F*, int), bool exactNan)
{
    slots::each(table, [&](auto f, int) {
        checkInPlace<F, F>({[&](const F*, F* dst, int n) { return f(dst, n); }, element(model),
                            [](const auto&) { return qvrOk; }, exactNan});
        Guarded dst(16);
        checkPointersThenLengthOrder(1, [&](int null, int len) {
            F* d = dst.atEnd<F>(16);
            const qvrStatus s = f(null == 0 ? nullptr : d, len);
            EXPECT_TRUE(dst.untouched());
            return s;
        });
    });
}

TEST(Arithmetic, Add)
{
    checkBinary(qvrTable_qvrsAdd_32f, model::qvrsAdd_32f);
}
TEST(Arithmetic, SubTakesFirstFromSecond)
{
    checkBinary(qvrTable_qvrsSub_32f, model::qvrsSub_32f);
}
TEST(Arithmetic, Mul)
{
    checkBinary(qvrTable_qvrsMul_32f, model::qvrsMul_32f);
}

TEST(Arithmetic, AddInPlace)
{
    checkBinaryInPlace<F>(qvrTable_qvrsAdd_32f_I, model::qvrsAdd_32f_I);
}
TEST(Arithmetic, SubInPlace)
{
    checkBinaryInPlace<F>(qvrTable_qvrsSub_32f_I, model::qvrsSub_32f_I);
}
TEST(Arithmetic, MulInPlace)
{
    checkBinaryInPlace<F>(qvrTable_qvrsMul_32f_I, model::qvrsMul_32f_I);
}
TEST(Arithmetic, MulDoubleInPlace)
{
    checkBinaryInPlace<double>(qvrTable_qvrsMul_64f_I, model::qvrsMul_64f_I);
}
TEST(Arithmetic, MinEveryKeepsDestinationForNanAndEqual)
{
    checkBinaryInPlace<F>(qvrTable_qvrsMinEvery_32f_I, model::qvrsMinEvery_32f_I);
}
TEST(Arithmetic, MaxEveryKeepsDestinationForNanAndEqual)
{
    checkBinaryInPlace<F>(qvrTable_qvrsMaxEvery_32f_I, model::qvrsMaxEvery_32f_I);
}

// The payload of a NaN and the sign of a zero show which operand was taken.
TEST(Arithmetic, MinMaxEveryTakeTheOperandItself)
{
    const F nanA = floatOf(0x7FC00001), nanB = floatOf(0xFFC00002);
    const auto check = [&](auto const& table) {
        slots::each(table, [&](auto f, int) {
            for (int n : {1, 2, 3, 4, 7, 9, 40}) {
                const F pairs[][2] = {{nanA, 1}, {1, nanB}, {nanA, nanB}, {0.0f, -0.0f}, {-0.0f, 0.0f}};
                for (const auto& p : pairs) {
                    std::vector<F> src(n, p[0]), dst(n, p[1]);
                    EXPECT_EQ(f(src.data(), dst.data(), n), qvrOk);
                    for (F x : dst)
                        EXPECT_EQ(bitsOf(x), bitsOf(p[1]));
                }
            }
        });
    };
    check(qvrTable_qvrsMinEvery_32f_I);
    check(qvrTable_qvrsMaxEvery_32f_I);
}

TEST(Arithmetic, Abs)
{
    slots::each(qvrTable_qvrsAbs_32f, [&](auto f, int) {
        checkElementwise<F, F>({f, element(model::qvrsAbs_32f), [](const auto&) { return qvrOk; }, true});
        Guarded dst(16);
        const F x[4] = {-1, -2, -3, -4};
        checkPointersThenLengthOrder(2, [&](int null, int len) {
            F* d = dst.atEnd<F>(16);
            const qvrStatus s = f(null == 0 ? nullptr : x, null == 1 ? nullptr : d, len);
            EXPECT_TRUE(dst.untouched());
            return s;
        });
    });
}
TEST(Arithmetic, AbsInPlace)
{
    checkUnaryInPlace(qvrTable_qvrsAbs_32f_I, model::qvrsAbs_32f_I, true);
}
TEST(Arithmetic, SqrInPlace)
{
    checkUnaryInPlace(qvrTable_qvrsSqr_32f_I, model::qvrsSqr_32f_I, false);
}

TEST(Arithmetic, FollowsTheCallersRounding)
{
    slots::each(qvrTable_qvrsAdd_32f, [&](auto f, int) {
        const unsigned saved = _mm_getcsr();
        for (unsigned mode : {0u, 0x2000u, 0x4000u, 0x6000u}) {
            for (int n : {1, 3, 6, 8, 21, 100}) {
                std::vector<F> a(n, 1.0f), b(n, 0x1p-30f), d(n), minus(n, -1.0f);
                _mm_setcsr((saved & ~0x6000u) | mode);
                f(a.data(), b.data(), d.data(), n);
                _mm_setcsr(saved);
                for (F x : d)
                    EXPECT_EQ(x, mode == 0x4000 ? 1.0f + 0x1p-23f : 1.0f) << mode;
                _mm_setcsr((saved & ~0x6000u) | mode);
                f(minus.data(), b.data(), d.data(), n);
                _mm_setcsr(saved);
                for (F x : d)
                    EXPECT_EQ(x, mode == 0x4000 || mode == 0x6000 ? -1.0f + 0x1p-24f : -1.0f) << mode;
            }
        }
    });
}

// Called through the exported symbol, the load hook's choice serves the call.
TEST(Arithmetic, ThroughTheDispatcher)
{
    const F a[5] = {1, 2, 3, 4, 5}, b[5] = {10, 20, 30, 40, 50};
    F d[5] = {};
    EXPECT_EQ(Morven_qvrsSub_32f(a, b, d, 5), qvrOk);
    EXPECT_EQ(d[4], 45);
    EXPECT_EQ(Morven_qvrsSub_32f(nullptr, b, d, 0), qvrErrNullPointer);
}

} // namespace
