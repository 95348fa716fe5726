#include "model/vector.h"
#include "support/arrays.h"
#include "vector/slot_tables.h"

namespace {

template<class T> size_t place(const std::vector<T>& v, bool largest)
{
    const int n = static_cast<int>(v.size());
    return static_cast<size_t>(largest ? model::placeOfBest<T, true>(v.data(), n)
                                       : model::placeOfBest<T, false>(v.data(), n));
}

// Random values; special ones; runs of few values, zeros of both signs among them, so that ties abound.
template<class T> std::vector<T> data(size_t n, uint32_t seed)
{
    if (seed % 3 == 0)
        return randomValues<T>(n, seed);
    if (seed % 3 == 1)
        return mixedValues<T>(n, seed);
    std::vector<T> v(n);
    std::mt19937 engine(seed);
    const int side = static_cast<int>(engine() % 3) - 1; // zero is the least, inside, or the largest
    for (T& x : v) {
        const T few[] = {T(0), T(-0.0), T(1), T(1), T(0), T(2)};
        x = few[engine() % 6];
        x = side < 0 ? static_cast<T>(-x) : side == 0 ? x : static_cast<T>(x - T(1));
    }
    return v;
}

template<class T> void expectBits(T got, T want)
{
    EXPECT_EQ(memcmp(&got, &want, sizeof got), 0) << +got << ", want " << +want;
}

const std::vector<int> kMoreLengths = {2047, 2048, 2049, 3000, 5000};

template<class T, class Table> void checkOne(Table& table, bool largest)
{
    slots::each(table, [&](auto f, int) {
        sweepArrays<T>(
            data<T>,
            [&](const T* p, const std::vector<T>& v) {
                T result = 55;
                EXPECT_EQ(f(p, static_cast<int>(v.size()), &result), qvrOk);
                expectBits(result, v[place(v, largest)]);
            },
            kMoreLengths);
        T x[4] = {}, result = 55;
        checkPointersThenLengthOrder(2, [&](int null, int len) {
            const qvrStatus s = f(null == 0 ? nullptr : x, len, null == 1 ? nullptr : &result);
            EXPECT_EQ(result, 55);
            return s;
        });
    });
}

template<class T, class Table> void checkBoth(Table& table)
{
    slots::each(table, [&](auto f, int) {
        sweepArrays<T>(
            data<T>,
            [&](const T* p, const std::vector<T>& v) {
                T least = 55, most = 55;
                EXPECT_EQ(f(p, static_cast<int>(v.size()), &least, &most), qvrOk);
                expectBits(least, v[place(v, false)]);
                expectBits(most, v[place(v, true)]);
            },
            kMoreLengths);
        T x[4] = {}, least = 55, most = 55;
        checkPointersThenLengthOrder(3, [&](int null, int len) {
            const qvrStatus s =
                f(null == 0 ? nullptr : x, len, null == 1 ? nullptr : &least, null == 2 ? nullptr : &most);
            EXPECT_EQ(least, 55);
            EXPECT_EQ(most, 55);
            return s;
        });
    });
}

template<class Table> void checkIndexed(Table& table, bool largest)
{
    using T = float;
    slots::each(table, [&](auto f, int) {
        sweepArrays<T>(
            data<T>,
            [&](const T* p, const std::vector<T>& v) {
                T result = 55, alone = 55;
                int32_t index = -7;
                EXPECT_EQ(f(p, static_cast<int>(v.size()), &result, &index), qvrOk);
                EXPECT_EQ(index, static_cast<int32_t>(place(v, largest)));
                expectBits(result, v[place(v, largest)]);
                EXPECT_EQ(f(p, static_cast<int>(v.size()), &alone, nullptr), qvrOk);
                expectBits(alone, result);
            },
            kMoreLengths);
        T x[4] = {}, result = 55;
        int32_t index = -7;
        for (bool withIndex : {true, false})
            checkPointersThenLengthOrder(2, [&](int null, int len) {
                const qvrStatus s =
                    f(null == 0 ? nullptr : x, len, null == 1 ? nullptr : &result, withIndex ? &index : nullptr);
                EXPECT_EQ(result, 55);
                EXPECT_EQ(index, -7);
                return s;
            });
    });
}

TEST(Extremes, Shorts)
{
    checkOne<int16_t>(qvrTable_qvrsMin_16s, false);
    checkOne<int16_t>(qvrTable_qvrsMax_16s, true);
    checkBoth<int16_t>(qvrTable_qvrsMinMax_16s);
    checkBoth<uint16_t>(qvrTable_qvrsMinMax_16u);
}
TEST(Extremes, Floats)
{
    checkOne<float>(qvrTable_qvrsMin_32f, false);
    checkOne<float>(qvrTable_qvrsMax_32f, true);
    checkBoth<float>(qvrTable_qvrsMinMax_32f);
}
TEST(Extremes, Doubles)
{
    checkOne<double>(qvrTable_qvrsMax_64f, true);
}
TEST(Extremes, Indexed)
{
    checkIndexed(qvrTable_qvrsMinIndx_32f, false);
    checkIndexed(qvrTable_qvrsMaxIndx_32f, true);
}

// A NaN at every place of an otherwise rising or falling array; at place 0 alone it is the result.
TEST(Extremes, NanAtEveryPlace)
{
    const float nan = floatOf(0xFFC01234);
    slots::each(qvrTable_qvrsMaxIndx_32f, [&](auto f, int slot) {
        for (size_t n : {1, 2, 3, 4, 7, 8, 9, 16, 33, 64, 130})
            for (size_t at = 0; at < n; at++)
                for (float slope : {1.0f, -1.0f, 0.0f}) {
                    std::vector<float> v(n);
                    for (size_t i = 0; i < n; i++)
                        v[i] = 3 + slope * static_cast<float>(i);
                    v[at] = nan;
                    float most = 0, least = 0;
                    int32_t indexMost = -7, indexLeast = -7;
                    EXPECT_EQ(f(v.data(), static_cast<int>(n), &most, &indexMost), qvrOk);
                    EXPECT_EQ(qvrTable_qvrsMinIndx_32f[slot](v.data(), static_cast<int>(n), &least, &indexLeast),
                              qvrOk);
                    expectBits(most, v[place(v, true)]);
                    expectBits(least, v[place(v, false)]);
                    EXPECT_EQ(indexMost, static_cast<int32_t>(place(v, true)));
                    EXPECT_EQ(indexLeast, static_cast<int32_t>(place(v, false)));
                    if (at == 0)
                        expectBits(most, nan);
                }
    });
}

// The extreme at every place, alone and repeated behind it, in arrays of several blocks.
TEST(Extremes, FirstOfSeveralPlaces)
{
    slots::each(qvrTable_qvrsMaxIndx_32f, [&](auto f, int slot) {
        for (size_t n : {3, 40, 1025, 4500})
            for (size_t at = 0; at < n; at += n > 100 ? 61 : 1)
                for (size_t again : {at, std::min(n - 1, at + 1), n - 1}) {
                    std::vector<float> v = randomValues<float>(n, 5);
                    v[at] = v[again] = 5000;
                    float x = 0;
                    int32_t index = -7;
                    EXPECT_EQ(f(v.data(), static_cast<int>(n), &x, &index), qvrOk);
                    EXPECT_EQ(index, static_cast<int32_t>(at));
                    v[at] = v[again] = -5000;
                    EXPECT_EQ(qvrTable_qvrsMinIndx_32f[slot](v.data(), static_cast<int>(n), &x, &index), qvrOk);
                    EXPECT_EQ(index, static_cast<int32_t>(at));
                    EXPECT_EQ(x, -5000);
                }
        const float x[3] = {1, 3, 3};
        float result;
        int32_t index;
        EXPECT_EQ(f(x, 3, &result, &index), qvrOk);
        EXPECT_EQ(index, 1);
    });
}

} // namespace
