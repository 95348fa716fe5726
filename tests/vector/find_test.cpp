#include "model/vector.h"
#include "support/arrays.h"
#include "vector/slot_tables.h"

namespace {

template<class T> int32_t placeOf(const std::vector<T>& v, const std::vector<T>& find)
{
    int32_t at;
    model::find(v.data(), static_cast<int>(v.size()), find.data(), static_cast<int>(find.size()), &at);
    return at;
}

template<class T, class F>
void check(F f, const std::vector<T>& v, const std::vector<T>& find, size_t offset, bool atEnd)
{
    Guarded& src = pooledGuarded(0, v.size() * sizeof(T) + 128);
    Guarded& sub = pooledGuarded(1, find.size() * sizeof(T) + 128);
    const auto place = [&](Guarded& g, const std::vector<T>& from, size_t at) {
        T* p = atEnd ? g.atEnd<T>(from.size() * sizeof(T), at) : g.atFront<T>(from.size() * sizeof(T), at);
        if (!from.empty())
            memcpy(static_cast<void*>(p), from.data(), from.size() * sizeof(T));
        return p;
    };
    const T* s = place(src, v, offset);
    const T* p = place(sub, find, offset * 7 % 32);
    int32_t index = -77;
    EXPECT_EQ(f(s, static_cast<int>(v.size()), p, static_cast<int>(find.size()), &index), qvrOk);
    EXPECT_EQ(index, placeOf(v, find)) << "len " << v.size() << " find " << find.size() << " +" << offset;
}

// Few values, so that partial matches are many.
template<class T> std::vector<T> fewValued(size_t n, uint32_t seed, uint32_t kinds)
{
    std::mt19937 engine(seed);
    std::vector<T> v(n);
    for (T& x : v)
        x = static_cast<T>(engine() % kinds * 0x0101);
    return v;
}

template<class T, class Table> void checkAll(Table& table)
{
    slots::each(table, [&](auto f, int) {
        uint32_t seed = 1;
        for (size_t n = 0; n <= 140; n++)
            for (size_t m : {0, 1, 2, 3, 4, 5, 8, 15, 16, 17, 31, 33, 64, 100})
                for (uint32_t kinds : {1, 2, 7}) {
                    seed++;
                    check<T>(f, fewValued<T>(n, seed, kinds), fewValued<T>(m, seed + 1, kinds), seed % 64, seed % 2);
                }
        // The sequence cut out of the array, at every place.
        for (size_t n : {1, 7, 16, 40, 66, 133, 300})
            for (size_t m : {1, 2, 3, 6, 9, 17, 34, 70, 129})
                for (size_t at = 0; at + m <= n; at++) {
                    const std::vector<T> v = randomValues<T>(n, static_cast<uint32_t>(at + 1));
                    check<T>(f, v, std::vector<T>(v.begin() + at, v.begin() + at + m), at % 64, true);
                }
        // Runs of one value in array and sequence, with an odd one at every place of the sequence.
        for (size_t m : {2, 3, 8, 20, 40, 70})
            for (size_t odd = 0; odd < m; odd++)
                for (size_t at : {size_t{0}, size_t{5}, size_t{77}, 300 - m}) {
                    std::vector<T> v(300, 4), find(m, 4);
                    find[odd] = 5;
                    check<T>(f, v, find, 0, true);
                    v[at + odd] = 5;
                    check<T>(f, v, find, 3, false);
                }
        for (size_t run : {10, 32, 63}) {
            std::vector<T> v(700, 4);
            for (size_t i = run; i < v.size(); i += run + 1)
                v[i] = 9;
            for (size_t m = run - 2; m <= run + 2; m++)
                check<T>(f, v, std::vector<T>(m, 4), 0, true);
        }
        // Elements that differ in one byte only.
        std::vector<T> v(200, static_cast<T>(0x0100));
        v[150] = static_cast<T>(0x0101);
        check<T>(f, v, {static_cast<T>(0x0001), static_cast<T>(0x0101)}, 0, true);
        check<T>(f, v, {static_cast<T>(0x0101)}, 0, true);
    });
}

template<class T, class Table> void checkStatuses(Table& table)
{
    slots::each(table, [&](auto f, int) {
        const T x[4] = {1, 2, 3, 4};
        for (int len : {4, 0, -1})
            for (int lenFind : {2, 0, -1}) {
                int32_t index = 55;
                EXPECT_EQ(f(nullptr, len, x, lenFind, &index), qvrErrNullPointer);
                EXPECT_EQ(f(x, len, nullptr, lenFind, &index), qvrErrNullPointer);
                EXPECT_EQ(f(x, len, x, lenFind, nullptr), qvrErrNullPointer);
                const bool bad = len < 0 || lenFind < 0;
                EXPECT_EQ(f(x, len, x, lenFind, &index), bad ? qvrErrBadCount : qvrOk);
                EXPECT_EQ(index, bad ? 55 : len > 0 && lenFind > 0 ? 0 : -1);
            }
        int32_t index = 55;
        EXPECT_EQ(f(x, INT32_MIN, x, 1, &index), qvrErrBadCount);
        EXPECT_EQ(f(x, 1, x, INT32_MIN, &index), qvrErrBadCount);
        EXPECT_EQ(index, 55);
        EXPECT_EQ(f(x, 1, x, INT32_MAX, &index), qvrOk);
        EXPECT_EQ(index, -1);
    });
}

TEST(Find, Bytes)
{
    checkAll<uint8_t>(qvrTable_qvrsFind_8u);
    checkStatuses<uint8_t>(qvrTable_qvrsFind_8u);
}
TEST(Find, Words)
{
    checkAll<uint16_t>(qvrTable_qvrsFind_16u);
    checkStatuses<uint16_t>(qvrTable_qvrsFind_16u);
}

} // namespace
