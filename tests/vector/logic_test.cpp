#include "model/vector.h"
#include "support/cache.h"
#include "support/elementwise.h"
#include "vector/slot_tables.h"

namespace {

using T = uint16_t;

const std::vector<int> kConstants = {0, 1, 2, 0x00FF, 0x5555, 0x8000, 0xFFFF};

TEST(Logic, AndConstant)
{
    slots::each(qvrTable_qvrsAndC_16u, [&](auto f, int) {
        for (int c : kConstants) {
            const T val = static_cast<T>(c);
            const Elementwise<T, T> e{[=](const T* s, T* d, int n) { return f(s, val, d, n); },
                                      [=](T x) { return static_cast<T>(x & val); }};
            if (c == 0 || c == 0x5555)
                checkElementwise(e);
            for (int n : {1, 20, 700})
                checkCall<T, T>(e, mixedValues<T>(n, 3), true, 0, 0, -1);
            Guarded dst(16);
            const T x[4] = {1, 2, 3, 4};
            checkPointersThenLengthOrder(2, [&](int null, int len) {
                T* d = dst.atEnd<T>(8);
                const qvrStatus s = f(null == 0 ? nullptr : x, val, null == 1 ? nullptr : d, len);
                EXPECT_TRUE(dst.untouched());
                return s;
            });
        }
    });
}

template<class Call> void checkOrderInPlace(Call call)
{
    Guarded dst(16);
    checkPointersThenLengthOrder(1, [&](int null, int len) {
        T* d = dst.atEnd<T>(8);
        const qvrStatus s = call(null == 0 ? nullptr : d, len);
        EXPECT_TRUE(dst.untouched());
        return s;
    });
}

TEST(Logic, AndConstantInPlace)
{
    slots::each(qvrTable_qvrsAndC_16u_I, [&](auto f, int) {
        for (int c : kConstants) {
            const T val = static_cast<T>(c);
            const Elementwise<T, T> e{[=](const T*, T* d, int n) { return f(val, d, n); },
                                      [=](T x) { return static_cast<T>(x & val); }};
            if (c == 0 || c == 0x5555)
                checkInPlace(e);
            for (int n : {1, 20, 700})
                checkCall<T, T>(e, mixedValues<T>(n, 3), true, 0, 0, 0);
            checkOrderInPlace([=](T* d, int n) { return f(val, d, n); });
        }
    });
}

TEST(Logic, OrInPlace)
{
    slots::each(qvrTable_qvrsOr_16u_I, [&](auto f, int) {
        checkInPlace<T, T, T>(
            {[=](const T* s, const T*, T* d, int n) { return f(s, d, n); }, element(model::qvrsOr_16u_I)});
        Guarded dst(16);
        const T x[4] = {1, 2, 3, 4};
        checkPointersThenLengthOrder(2, [&](int null, int len) {
            T* d = dst.atEnd<T>(8);
            const qvrStatus s = f(null == 0 ? nullptr : x, null == 1 ? nullptr : d, len);
            EXPECT_TRUE(dst.untouched());
            return s;
        });
    });
}

const std::vector<int> kCounts = {0, 1, 2, 7, 8, 14, 15, 16, 17, 31, 32, 33, 64, 65536, INT32_MAX};

T shifted(T x, int count, bool left)
{
    if (count >= 16)
        return 0;
    return static_cast<T>(left ? uint32_t{x} << count : uint32_t{x} >> count);
}

TEST(Logic, ShiftLeft)
{
    slots::each(qvrTable_qvrsLShiftC_16u, [&](auto f, int) {
        for (int count : kCounts) {
            SCOPED_TRACE(count);
            const Elementwise<T, T> e{[=](const T* s, T* d, int n) { return f(s, count, d, n); },
                                      [=](T x) { return shifted(x, count, true); }};
            if (count == 0 || count == 3 || count == 7 || count == 16)
                checkElementwise(e);
            for (int n : {1, 20, 700})
                checkCall<T, T>(e, mixedValues<T>(n, 3), true, 0, 0, -1);
        }
        Guarded dst(16);
        const T x[4] = {1, 2, 3, 4};
        for (int count : {0, 1, 15, 16, INT32_MAX, -1, INT32_MIN})
            checkPointersThenLengthOrder(2, [&](int null, int len) {
                T* d = dst.atEnd<T>(8);
                const qvrStatus s = f(null == 0 ? nullptr : x, count, null == 1 ? nullptr : d, len);
                EXPECT_TRUE(dst.untouched());
                return s;
            });
        for (int count : {-1, -16, INT32_MIN}) {
            T* d = dst.atEnd<T>(8);
            EXPECT_EQ(f(x, count, d, 4), qvrErrBadShift);
            EXPECT_TRUE(dst.untouched());
        }
    });
}

template<class Table> void checkShiftInPlace(Table& table, bool left)
{
    slots::each(table, [&](auto f, int) {
        for (int count : kCounts) {
            SCOPED_TRACE(count);
            const Elementwise<T, T> e{[=](const T*, T* d, int n) { return f(count, d, n); },
                                      [=](T x) { return shifted(x, count, left); }};
            if (count == 7 || count == 16)
                checkInPlace(e);
            for (int n : {1, 20, 700})
                checkCall<T, T>(e, mixedValues<T>(n, 3), true, 0, 0, 0);
        }
        for (int count : {0, 1, 15, 16, INT32_MAX, -1, INT32_MIN})
            checkOrderInPlace([=](T* d, int n) { return f(count, d, n); });
        Guarded dst(16);
        for (int count : {-1, -16, INT32_MIN}) {
            T* d = dst.atEnd<T>(8);
            EXPECT_EQ(f(count, d, 4), qvrErrBadShift);
            EXPECT_EQ(f(count, nullptr, 4), qvrErrNullPointer);
            EXPECT_TRUE(dst.untouched());
        }
    });
}

TEST(Logic, ShiftLeftInPlace)
{
    checkShiftInPlace(qvrTable_qvrsLShiftC_16u_I, true);
}
TEST(Logic, ShiftRightInPlace)
{
    checkShiftInPlace(qvrTable_qvrsRShiftC_16u_I, false);
}

// The fill and the copy behind the shortcuts, past their streaming limits and on odd addresses.
TEST(Logic, ShortcutsOnLongArrays)
{
    constexpr int n = 0x200000 / 2 + 51;
    for (int32_t cache : {4096, 1 << 30}) {
        BelievedCache believed(cache);
        const std::vector<T> in = randomValues<T>(n, 4);
        slots::each(qvrTable_qvrsLShiftC_16u, [&](auto f, int slot) {
            for (size_t offset : {0, 1, 2, 34}) {
                Guarded& src = pooledGuarded(0, n * 2 + 64);
                Guarded& dst = pooledGuarded(1, n * 2 + 64);
                T* s = src.atFront<T>(n * 2, offset / 2);
                T* d = dst.atFront<T>(n * 2, offset);
                memcpy(static_cast<void*>(s), in.data(), n * 2);
                EXPECT_EQ(f(s, 0, d, n), qvrOk);
                EXPECT_EQ(memcmp(d, in.data(), n * 2), 0);
                EXPECT_TRUE(dst.intact());
                EXPECT_EQ(qvrTable_qvrsRShiftC_16u_I[slot](16, d, n), qvrOk);
                const char* c = reinterpret_cast<const char*>(d);
                EXPECT_TRUE(c[0] == 0 && memcmp(c, c + 1, n * 2 - 1) == 0);
                EXPECT_EQ(qvrTable_qvrsAddC_16u_ISfs[slot](3, d, n, -16), qvrOk);
                EXPECT_TRUE(c[0] == -1 && memcmp(c, c + 1, n * 2 - 1) == 0);
                EXPECT_TRUE(dst.intact());
            }
        });
    }
}

TEST(Logic, Replace)
{
    slots::each(qvrTable_qvrsReplaceC_16u, [&](auto f, int) {
        const auto make = [f](T from, T to) {
            return Elementwise<T, T>{[=](const T* s, T* d, int n) { return f(s, d, n, from, to); },
                                     [=](T x) { return x == from ? to : x; }};
        };
        checkElementwise(make(0xFFFF, 7));
        for (int n : {1, 20, 700}) {
            checkCall<T, T>(make(0, 1), mixedValues<T>(n, 3), true, 0, 0, 0);
            checkCall<T, T>(make(2, 0x8000), mixedValues<T>(n, 3), true, 0, 0, -1);
            checkCall<T, T>(make(1, 1), mixedValues<T>(n, 3), true, 0, 0, -1);
        }
        Guarded dst(16);
        const T x[4] = {1, 2, 3, 4};
        T* d = dst.atEnd<T>(8);
        for (int len : {0, -1, INT32_MIN, 4}) {
            EXPECT_EQ(f(nullptr, d, len, 1, 2), qvrErrNullPointer);
            EXPECT_EQ(f(x, nullptr, len, 1, 2), qvrErrNullPointer);
        }
        EXPECT_EQ(f(x, d, -1, 1, 2), qvrErrBadCount);
        EXPECT_EQ(f(x, d, INT32_MIN, 1, 2), qvrErrBadCount);
        EXPECT_EQ(f(x, d, 0, 1, 2), qvrOk);
        EXPECT_TRUE(dst.untouched());
    });
}

} // namespace
