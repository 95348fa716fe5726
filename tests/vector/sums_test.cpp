#include "model/vector.h"
#include "support/arrays.h"
#include "vector/slot_tables.h"

#include <xmmintrin.h>

namespace {

std::vector<int> scales()
{
    std::vector<int> v = {INT32_MIN, INT32_MIN + 1, -1026, -1025,         -1024,    -1023,
                          1022,      1023,          1024,  INT32_MAX - 1, INT32_MAX};
    for (int s = -66; s <= 66; s++)
        v.push_back(s);
    return v;
}

using model::Wide;
template<class T> Wide exactSum(const std::vector<T>& v)
{
    return model::exactSum(v.data(), static_cast<int>(v.size()));
}
template<class T> std::vector<T> full(size_t n, uint32_t seed)
{
    return seed % 2 ? randomValues<T>(n, seed) : mixedValues<T>(n, seed);
}

template<class T, class R, class F> void checkScaledOrder(F f)
{
    T x[4] = {};
    R result = 55;
    for (int s : {0, 3, -3, 60, -60})
        checkPointersThenLengthOrder(2, [&](int null, int len) {
            const qvrStatus status = f(null == 0 ? nullptr : x, len, null == 1 ? nullptr : &result, s);
            EXPECT_EQ(result, 55);
            return status;
        });
}

TEST(Sums, SumOfShorts)
{
    using T = int16_t;
    slots::each(qvrTable_qvrsSum_16s32s_Sfs, [&](auto f, int) {
        const auto check = [&](const T* p, const std::vector<T>& v, const std::vector<int>& some) {
            const Wide t = exactSum(v);
            for (int s : some) {
                int32_t result = 77;
                EXPECT_EQ(f(p, static_cast<int>(v.size()), &result, s), qvrOk);
                EXPECT_EQ(result, model::scaledSum(t, s)) << "scale " << s;
            }
        };
        sweepArrays<T>(full<T>, [&](const T* p, const std::vector<T>& v) { check(p, v, {0, 1, 5}); },
                       {65535, 65536, 65537, 131072, 200001});
        for (int n : {1, 2, 3, 5, 100})
            for (T x : {0, 1, -1, 2, 3, 5, 7, -3, 255, 256, 32767, -32768}) {
                std::vector<T> v(n, x);
                check(v.data(), v, scales());
            }
        for (T x : {32767, -32768}) {
            const std::vector<T> v((1 << 17) + 9, x);
            check(v.data(), v, scales());
        }
        const std::vector<T> v(1 << 17, 32767);
        int32_t sum = 0;
        EXPECT_EQ(f(v.data(), 1 << 17, &sum, 0), qvrOk);
        EXPECT_EQ(sum, 2147483647);
        checkScaledOrder<T, int32_t>(f);
    });
}

// Sums that reach the scales of 32 to 48, with ties.
TEST(Sums, LargeScalesRoundOnce)
{
    constexpr int n = 1 << 24;
    std::vector<int16_t> v(n);
    for (const auto [x, last] : {std::pair<int, int>{32767, 32767},
                                 {-32768, -32768},
                                 {256, 256},
                                 {256, 255},
                                 {256, 257},
                                 {-256, -256},
                                 {-256, -257},
                                 {768, 768},
                                 {-768, -768}}) {
        std::fill(v.begin(), v.end(), static_cast<int16_t>(x));
        v.back() = static_cast<int16_t>(last);
        const Wide t = exactSum(v);
        slots::each(qvrTable_qvrsSum_16s32s_Sfs, [&](auto f, int slot) {
            if (slot != slots::mx && slot < slots::e9)
                return;
            for (int s : {31, 32, 33, 34, 38, 39, 40, 41, 47, 48, 49}) {
                int32_t result = 77;
                EXPECT_EQ(f(v.data(), n, &result, s), qvrOk);
                EXPECT_EQ(result, model::scaledSum(t, s)) << x << " " << last << " scale " << s;
            }
        });
    }
}

TEST(Sums, MeanOfShorts)
{
    using T = int16_t;
    slots::each(qvrTable_qvrsMean_16s_Sfs, [&](auto f, int) {
        const auto check = [&](const T* p, const std::vector<T>& v, const std::vector<int>& some) {
            const Wide t = exactSum(v);
            for (int s : some) {
                T result = 77;
                EXPECT_EQ(f(p, static_cast<int>(v.size()), &result, s), qvrOk);
                EXPECT_EQ(result, model::scaledMean16(t, static_cast<int>(v.size()), s)) << "scale " << s;
            }
        };
        sweepArrays<T>(full<T>, [&](const T* p, const std::vector<T>& v) { check(p, v, {0, 1, -3}); },
                       {65535, 65536, 65537, 200001});
        for (const std::vector<T>& v : {std::vector<T>{1},
                                        {-1},
                                        {0},
                                        {1, -1},
                                        {1, 2},
                                        {0, 1},
                                        {-1, -2},
                                        {32767, 32766},
                                        {-32768, -32767},
                                        {1, 0, 0, 0, 0}})
            check(v.data(), v, scales());
        // The caller's rounding decides.
        const T tie[2] = {1, 2};
        const unsigned saved = _mm_getcsr();
        for (const auto [mode, want] : {std::pair<unsigned, int>{0, 2}, {0x2000, 1}, {0x4000, 2}, {0x6000, 1}}) {
            T result = 0;
            _mm_setcsr((saved & ~0x6000u) | mode);
            f(tie, 2, &result, 0);
            _mm_setcsr(saved);
            EXPECT_EQ(result, want);
        }
        checkScaledOrder<T, T>(f);
    });
}

TEST(Sums, MeanOfInts)
{
    using T = int32_t;
    slots::each(qvrTable_qvrsMean_32s_Sfs, [&](auto f, int) {
        const auto check = [&](const T* p, const std::vector<T>& v, const std::vector<int>& some) {
            const Wide t = exactSum(v);
            for (int s : some) {
                T result = 77;
                EXPECT_EQ(f(p, static_cast<int>(v.size()), &result, s), qvrOk);
                EXPECT_EQ(result, model::scaledMean32(t, static_cast<int>(v.size()), s)) << "scale " << s;
            }
        };
        sweepArrays<T>(full<T>, [&](const T* p, const std::vector<T>& v) { check(p, v, {0, 1, -3}); });
        for (const std::vector<T>& v : {std::vector<T>{1},
                                        {-1},
                                        {0},
                                        {1, 2},
                                        {0, 1},
                                        {-1, -2},
                                        {-1, 0},
                                        {INT32_MAX},
                                        {INT32_MIN},
                                        {INT32_MAX, INT32_MAX},
                                        {INT32_MIN, INT32_MIN},
                                        {INT32_MIN, INT32_MIN, 1},
                                        {1, 1, 0},
                                        {5, 5, 0, 0},
                                        {INT32_MAX, 1, 0, 0, 0, 0, 0},
                                        {1, 0, 0},
                                        {-1, 0, 0, 0},
                                        {3, 0, 0, 0, 0, 0}})
            check(v.data(), v, scales());
        T result = 0;
        const T a[2] = {1, 2}, b[2] = {0, 1};
        EXPECT_EQ(f(a, 2, &result, 0), qvrOk);
        EXPECT_EQ(result, 2);
        EXPECT_EQ(f(b, 2, &result, 0), qvrOk);
        EXPECT_EQ(result, 0);
        checkScaledOrder<T, T>(f);
    });
}

// Past the length at which a lane's sum of halves could wrap.
TEST(Sums, LongMeansOfExtremeInts)
{
    constexpr int n = 65536 * 8 * 4 + 77;
    for (const int32_t x : {INT32_MIN, INT32_MAX, -1, 0x7FFF0000, 0x0000FFFF, static_cast<int32_t>(0x8000FFFF)}) {
        std::vector<int32_t> v(n, x);
        v[5] = 12345;
        const Wide t = exactSum(v);
        slots::each(qvrTable_qvrsMean_32s_Sfs, [&](auto f, int) {
            for (int s : {0, 3, -2}) {
                int32_t result = 77;
                EXPECT_EQ(f(v.data(), n, &result, s), qvrOk);
                EXPECT_EQ(result, model::scaledMean32(t, n, s)) << x << " scale " << s;
            }
        });
    }
}

// The order of mx; other slots within the bound of any order in double.
template<class T> double groupedSum(const std::vector<T>& v, bool squares)
{
    double first = 0, second = 0;
    size_t i = 0;
    const auto term = [&](size_t k) { return squares ? double{v[k]} * double{v[k]} : double{v[k]}; };
    for (; i + 4 <= v.size(); i += 4) {
        first += term(i);
        first += term(i + 2);
        second += term(i + 1);
        second += term(i + 3);
    }
    double total = second + first;
    for (; i < v.size(); i++)
        total += term(i);
    return total;
}

template<class T, class Table> void checkMean(Table& table)
{
    slots::each(table, [&](auto f, int slot) {
        sweepArrays<T>([](size_t n, uint32_t seed) { return randomValues<T>(n, seed, -1000, 3000); },
                       [&](const T* p, const std::vector<T>& v) {
                           T result = 77;
                           EXPECT_EQ(f(p, static_cast<int>(v.size()), &result), qvrOk);
                           if (slot == slots::mx) {
                               EXPECT_EQ(result, static_cast<T>(groupedSum(v, false) / static_cast<double>(v.size())));
                           } else {
                               long double sum = 0, magnitude = 0;
                               for (T x : v) {
                                   sum += x;
                                   magnitude += std::fabs(x);
                               }
                               const long double n = static_cast<long double>(v.size());
                               const long double bound = magnitude / n * n * 0x1p-53L +
                                                         std::fabs(sum / n) * std::numeric_limits<T>::epsilon();
                               EXPECT_LE(std::fabs(result - sum / n), bound);
                           }
                       });
        // In single precision the ones would be lost beside the large value.
        std::vector<T> v(4001, 1);
        v[0] = static_cast<T>(1e9);
        T result = 0;
        EXPECT_EQ(f(v.data(), 4001, &result), qvrOk);
        EXPECT_EQ(result, static_cast<T>(1000004000.0 / 4001));
        for (size_t at : {0, 3, 100, 4000}) {
            std::vector<T> w(4001, 1);
            w[at] = std::numeric_limits<T>::quiet_NaN();
            EXPECT_EQ(f(w.data(), 4001, &result), qvrOk);
            EXPECT_TRUE(std::isnan(result));
            w[at] = -std::numeric_limits<T>::infinity();
            EXPECT_EQ(f(w.data(), 4001, &result), qvrOk);
            EXPECT_EQ(result, -std::numeric_limits<T>::infinity());
        }
        T x[4] = {};
        result = 55;
        checkPointersThenLengthOrder(2, [&](int null, int len) {
            const qvrStatus s = f(null == 0 ? nullptr : x, len, null == 1 ? nullptr : &result);
            EXPECT_EQ(result, 55);
            return s;
        });
    });
}

TEST(Sums, MeanOfFloats)
{
    checkMean<float>(qvrTable_qvrsMean_32f);
}
TEST(Sums, MeanOfDoubles)
{
    checkMean<double>(qvrTable_qvrsMean_64f);
}

TEST(Sums, StandardDeviation)
{
    using T = float;
    slots::each(qvrTable_qvrsStdDev_32f, [&](auto f, int slot) {
        sweepArrays<T>([](size_t n, uint32_t seed) { return randomValues<T>(n, seed, -1000, 3000); },
                       [&](const T* p, const std::vector<T>& v) {
                           T result = 77;
                           EXPECT_EQ(f(p, static_cast<int>(v.size()), &result), qvrOk);
                           const double n = static_cast<double>(v.size());
                           const double s1 = groupedSum(v, false), s2 = groupedSum(v, true);
                           const double variance = s2 * n - s1 * s1;
                           const double want = variance > 0 ? std::sqrt(variance / ((n - 1) * n)) : 0;
                           if (slot == slots::mx) {
                               EXPECT_EQ(result, static_cast<T>(want));
                           } else {
                               // s2 and s1 of any order differ by n 2^-53 of themselves; half of that relative error is
                               // the root's.
                               const double error = 2 * n * 0x1p-53 * (s2 * n + s1 * s1) / variance;
                               EXPECT_NEAR(result, want, want * (0x1p-23 + error));
                           }
                       },
                       {}, 2);
        for (int n : {2, 3, 8, 9, 100, 1001})
            for (T x : {0.5f, 3.0f, -7.0f, 0.0f, 1024.0f}) {
                const std::vector<T> v(n, x);
                T result = 77;
                EXPECT_EQ(f(v.data(), n, &result), qvrOk);
                EXPECT_EQ(result, 0) << n << " of " << x;
            }
        std::vector<T> v(50, 2);
        T result = 77;
        v[17] = std::numeric_limits<T>::quiet_NaN();
        EXPECT_EQ(f(v.data(), 50, &result), qvrOk);
        EXPECT_EQ(result, 0);
        v[17] = std::numeric_limits<T>::infinity();
        EXPECT_EQ(f(v.data(), 50, &result), qvrOk);
        EXPECT_EQ(result, 0); // infinity minus infinity
        const T two[2] = {1, 3};
        EXPECT_EQ(f(two, 2, &result), qvrOk);
        EXPECT_EQ(result, static_cast<T>(std::sqrt(2.0)));
        result = 55;
        checkPointersThenLengthOrder(2, [&](int null, int len) {
            const qvrStatus s = f(null == 0 ? nullptr : two, len, null == 1 ? nullptr : &result);
            EXPECT_EQ(result, 55);
            return s;
        });
        EXPECT_EQ(f(two, 1, &result), qvrErrBadSize);
        EXPECT_EQ(f(nullptr, 1, &result), qvrErrNullPointer);
        EXPECT_EQ(result, 55);
    });
}

// The last difference of the formula is of products rounded on their own: a fused one gives another result here. The
// elements are integers of 20 bits, so that both sums are exact in any order and their products are not.
TEST(Sums, StandardDeviationIsNotFused)
{
    constexpr int n = 1001;
    slots::each(qvrTable_qvrsStdDev_32f, [&](auto f, int) {
        int fusedDiffers = 0;
        for (uint32_t seed = 1; seed < 100; seed++) {
            std::mt19937 engine(seed);
            std::vector<float> v(n);
            double s1 = 0, s2 = 0;
            for (float& x : v) {
                x = static_cast<float>(1000003 + engine() % 3);
                s1 += x;
                s2 += double{x} * x;
            }
            const auto result = [](double x) {
                return static_cast<float>(x > 0 ? std::sqrt(x / (double{n - 1} * n)) : 0);
            };
            const float plain = result(s2 * n - s1 * s1);
            fusedDiffers += result(std::fma(s2, n, -(s1 * s1))) != plain && result(std::fma(-s1, s1, s2 * n)) != plain;
            float got = 77;
            EXPECT_EQ(f(v.data(), n, &got), qvrOk);
            ASSERT_EQ(got, plain) << seed;
        }
        EXPECT_GT(fusedDiffers, 10);
    });
}

} // namespace
