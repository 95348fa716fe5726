#include "support/elementwise.h"
#include "support/guarded.h"
#include "vector/slot_tables.h"

#include <algorithm>

namespace {

// The steps of the contract, one by one: quicksort with an explicit stack, whose greatest depth it returns.
template<class T> int steps(std::vector<T>& a)
{
    const auto swap = [&](long i, long j) { std::swap(a[static_cast<size_t>(i)], a[static_cast<size_t>(j)]); };
    const auto at = [&](long i) { return a[static_cast<size_t>(i)]; };
    if (a.size() < 2)
        return 1;
    std::vector<std::pair<long, long>> stack(1);
    long lo = 0, hi = static_cast<long>(a.size()) - 1;
    int deepest = 1;
    for (;;) {
        const long n = hi - lo + 1;
        if (n <= 9) {
            for (; hi > lo; hi--) {
                long best = lo;
                for (long k = lo + 1; k <= hi; k++)
                    if (at(k) > at(best))
                        best = k;
                swap(best, hi);
            }
            if (stack.size() == 1)
                return deepest;
            std::tie(lo, hi) = stack.back();
            stack.pop_back();
            continue;
        }
        if (at(lo) > at(hi))
            swap(lo, hi);
        const long mid = lo + (n >> 1);
        if (at(mid) > at(hi))
            swap(mid, hi);
        if (at(lo) > at(mid))
            swap(lo, mid);
        const T p = at(mid);
        long i = lo + 1, j = hi;
        for (;;) {
            while (i < j && p >= at(i))
                i++;
            while (j > i && at(j) > p)
                j--;
            if (i >= j)
                break;
            swap(i, j);
            i++;
            j--;
        }
        while (i > lo && at(i) >= p)
            i--;
        while (j < hi && p >= at(j))
            j++;
        if (i == hi)
            i--;
        if (i - lo >= hi - j) {
            if (j != hi) {
                stack.push_back({lo, i});
                lo = j;
            } else {
                hi = i;
            }
        } else if (i != lo) {
            stack.push_back({j, hi});
            hi = i;
        } else {
            lo = j;
        }
        deepest = std::max(deepest, static_cast<int>(stack.size()));
    }
}

template<class T, class F> void check(F f, const std::vector<T>& v, size_t offset = 0)
{
    std::vector<T> want = v;
    steps(want);
    const size_t bytes = v.size() * sizeof(T);
    Guarded& buffer = pooledGuarded(0, bytes + 128);
    T* p = offset % 2 ? buffer.atFront<T>(bytes, offset) : buffer.atEnd<T>(bytes, offset);
    memcpy(static_cast<void*>(p), v.data(), bytes);
    EXPECT_EQ(f(p, static_cast<int>(v.size())), qvrOk);
    EXPECT_TRUE(buffer.intact());
    EXPECT_EQ(memcmp(p, want.data(), bytes), 0) << "n " << v.size() << " +" << offset;
}

template<class T> std::vector<std::vector<T>> orders(size_t n, uint32_t seed)
{
    std::vector<std::vector<T>> all;
    all.push_back(randomValues<T>(n, seed));
    all.push_back(all[0]);
    std::sort(all[1].begin(), all[1].end());
    all.push_back(all[1]);
    std::reverse(all[2].begin(), all[2].end());
    std::mt19937 engine(seed);
    const T infinity = std::numeric_limits<T>::infinity(), ends[] = {-infinity, 5, infinity};
    std::vector<T> few(n), zeros(n), pipe(n), denormals(n), infinite(n), endless(n);
    for (size_t i = 0; i < n; i++) {
        few[i] = static_cast<T>(engine() % 4) - 1;
        zeros[i] = engine() % 3 == 0 ? static_cast<T>(engine() % 3) - 1 : engine() % 2 ? T(0.0) : T(-0.0);
        pipe[i] = static_cast<T>(i < n / 2 ? i : n - i);
        denormals[i] = std::numeric_limits<T>::denorm_min() * static_cast<T>(static_cast<int>(engine() % 9) - 4);
        infinite[i] = engine() % 5 == 0 ? infinity : static_cast<T>(engine() % 100);
        if (engine() % 7 == 0)
            infinite[i] = -infinite[i];
        endless[i] = ends[engine() % 3];
    }
    all.insert(all.end(),
               {few, zeros, pipe, denormals, infinite, endless, std::vector<T>(n, T(3)), std::vector<T>(n, T(-0.0))});
    return all;
}

template<class T, class Table> void checkOrders(Table& table)
{
    slots::each(table, [&](auto f, int) {
        for (size_t n = 1; n <= 140; n++)
            for (uint32_t seed = 1; seed <= 3; seed++)
                for (const auto& v : orders<T>(n, seed * 100 + static_cast<uint32_t>(n)))
                    check<T>(f, v, (n + seed * 5) % 64);
        for (size_t n : {200, 255, 256, 257, 1000, 4099, 20000})
            for (const auto& v : orders<T>(n, static_cast<uint32_t>(n)))
                check<T>(f, v, n % 8);
    });
}

TEST(Sort, Floats)
{
    checkOrders<float>(qvrTable_qvrsSortAscend_32f_I);
}
TEST(Sort, Doubles)
{
    checkOrders<double>(qvrTable_qvrsSortAscend_64f_I);
}

TEST(Sort, AscendsWithoutNan)
{
    slots::each(qvrTable_qvrsSortAscend_32f_I, [&](auto f, int) {
        std::vector<float> v = randomValues<float>(100000, 3), want = v;
        EXPECT_EQ(f(v.data(), 100000), qvrOk);
        std::sort(want.begin(), want.end());
        EXPECT_EQ(v, want);
    });
}

// Splits that take one to three elements off, as often as the sort bears with them and a few times more. Below 128
// elements the pivot is the median of the places 1, middle and 2 middle - 1 and the elements behind it keep their
// order, so which places are looked at next is known: of these, one that has no value yet gets the next lowest.
template<class T> std::vector<T> badSplits(size_t n, std::mt19937& engine)
{
    constexpr int splits = 20;
    const T unset = 0;
    std::vector<T> v(n, unset);
    std::vector<size_t> rest(n);
    for (size_t i = 0; i < n; i++)
        rest[i] = i;
    T next = 1;
    for (int k = 0; k < splits; k++) {
        const size_t middle = rest.size() / 2, looked[] = {rest[1], rest[middle], rest[2 * middle - 1]};
        int set = 0;
        for (const size_t place : looked)
            set += v[place] != unset;
        T pivot = next;
        for (const size_t place : looked)
            if (v[place] == unset && set < 2) {
                v[place] = pivot = next++;
                set++;
            }
        std::erase_if(rest, [&](size_t place) { return v[place] != unset && v[place] < pivot; });
    }
    for (T& x : v)
        if (x == unset)
            x = next + static_cast<T>(engine() % 1000);
    return v;
}

template<class T, class Table> void checkBadSplits(Table& table)
{
    slots::each(table, [&](auto f, int) {
        std::mt19937 engine(11);
        for (size_t n = 100; n < 128; n++) {
            std::vector<T> v = badSplits<T>(n, engine), want = v;
            EXPECT_EQ(f(v.data(), static_cast<int>(n)), qvrOk);
            std::sort(want.begin(), want.end());
            EXPECT_EQ(v, want) << n;
        }
    });
}

TEST(Sort, BadSplitsOneAfterTheOther)
{
    checkBadSplits<float>(qvrTable_qvrsSortAscend_32f_I);
    checkBadSplits<double>(qvrTable_qvrsSortAscend_64f_I);
}

// With NaN the order is what the steps give. Every array comes to an end and keeps its elements, payloads included.
template<class T, class Table> void checkNan(Table& table)
{
    slots::each(table, [&](auto f, int) {
        std::mt19937 engine(5);
        using B = decltype(bitsOf(T{}));
        const auto sortedBits = [](const std::vector<T>& v) {
            std::vector<B> b;
            for (T x : v)
                b.push_back(bitsOf(x));
            std::sort(b.begin(), b.end());
            return b;
        };
        for (int k = 0; k < 10000; k++) {
            const size_t n = 2 + engine() % 60;
            std::vector<T> v(n);
            const uint32_t kinds = 1 + engine() % 20, nans = 1 + engine() % 10;
            for (T& x : v)
                x = static_cast<T>(engine() % kinds);
            for (uint32_t m = 0; m < nans; m++) {
                const B bits = bitsOf(std::numeric_limits<T>::quiet_NaN()) | (engine() & 0xFFFF);
                memcpy(&v[engine() % n], &bits, sizeof bits);
            }
            std::vector<T> got = v;
            ASSERT_EQ(f(got.data(), static_cast<int>(n)), qvrOk);
            ASSERT_EQ(sortedBits(got), sortedBits(v));
            if (k % 4 == 0)
                check<T>(f, v);
        }
        // The array that would be its own left part for ever.
        std::vector<T> v(10, 0);
        v[9] = std::numeric_limits<T>::quiet_NaN();
        check<T>(f, v);
    });
}

TEST(Sort, NanEndsAndLosesNothing)
{
    checkNan<float>(qvrTable_qvrsSortAscend_32f_I);
    checkNan<double>(qvrTable_qvrsSortAscend_64f_I);
}

TEST(Sort, StackStaysShallow)
{
    constexpr int n = 1 << 20;
    std::vector<float> v(n);
    for (int i = 0; i < n; i++)
        v[static_cast<size_t>(i)] = static_cast<float>(n - i);
    std::vector<float> want = v;
    EXPECT_LE(steps(want), 21);
    EXPECT_TRUE(std::is_sorted(want.begin(), want.end()));
    slots::each(qvrTable_qvrsSortAscend_32f_I, [&](auto f, int) {
        std::vector<float> w = v;
        EXPECT_EQ(f(w.data(), n), qvrOk);
        EXPECT_EQ(w, want);
    });
}

TEST(Sort, Statuses)
{
    slots::each(qvrTable_qvrsSortAscend_32f_I, [&](auto f, int slot) {
        Guarded dst(32);
        checkPointersThenLengthOrder(1, [&](int null, int len) {
            float* d = dst.atEnd<float>(16);
            const qvrStatus s = f(null == 0 ? nullptr : d, len);
            EXPECT_TRUE(dst.untouched());
            return s;
        });
        checkPointersThenLengthOrder(1, [&](int null, int len) {
            double* d = dst.atEnd<double>(32);
            const qvrStatus s = qvrTable_qvrsSortAscend_64f_I[slot](null == 0 ? nullptr : d, len);
            EXPECT_TRUE(dst.untouched());
            return s;
        });
    });
}

} // namespace
