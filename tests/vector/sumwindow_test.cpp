#include "support/arrays.h"
#include "support/environment.h"
#include "vector/slot_tables.h"

#include <xmmintrin.h>

namespace {

using T = int16_t;

// Lanes of the slot's vector of singles.
int lanesOf(int slot)
{
    return slot >= slots::e9 ? 8 : 4;
}

// The first window: eight accumulators of a vector each over groups of eight vectors, folded pairwise, lanes by halves.
float firstWindow(const std::vector<T>& v, size_t mask, size_t lanes)
{
    std::vector<float> of(8 * lanes);
    size_t i = 0;
    for (; i + 8 * lanes <= mask; i += 8 * lanes)
        for (size_t k = 0; k < 8 * lanes; k++)
            of[k] += v[i + k];
    for (size_t step = 1; step < 8; step *= 2)
        for (size_t k = 0; k < 8; k += 2 * step)
            for (size_t l = 0; l < lanes; l++)
                of[k * lanes + l] += of[(k + step) * lanes + l];
    for (size_t half = lanes / 2; half > 0; half /= 2)
        for (size_t l = 0; l < half; l++)
            of[l] += of[l + half];
    float w = of[0];
    for (; i < mask; i++)
        w += v[i];
    return w;
}

std::vector<float> model(const std::vector<T>& v, size_t len, size_t mask, size_t lanes)
{
    std::vector<float> d(len);
    float w = firstWindow(v, mask, lanes);
    for (size_t i = 0; i < len; i++) {
        d[i] = w;
        if (i + 1 < len)
            w += static_cast<float>(v[i + mask] - v[i]);
    }
    return d;
}

// The source ends at an unreadable page: nothing beyond len + mask - 1 elements is read.
template<class F> void check(F f, int slot, const std::vector<T>& v, size_t len, size_t mask, size_t offset)
{
    ASSERT_EQ(v.size(), len + mask - 1);
    Guarded& src = pooledGuarded(0, v.size() * 2 + 128);
    Guarded& dst = pooledGuarded(1, len * 4 + 128);
    T* s = src.atEnd<T>(v.size() * 2, offset);
    float* d = dst.atEnd<float>(len * 4, offset / 2 * 3);
    memcpy(static_cast<void*>(s), v.data(), v.size() * 2);
    const std::vector<float> want = model(v, len, mask, static_cast<size_t>(lanesOf(slot)));
    EXPECT_EQ(f(s, d, static_cast<int>(len), static_cast<int>(mask)), qvrOk);
    EXPECT_TRUE(dst.intact());
    EXPECT_EQ(memcmp(d, want.data(), len * 4), 0) << "len " << len << " mask " << mask << " +" << offset;
}

std::vector<T> biased(size_t n, int center, uint32_t seed)
{
    std::vector<T> v = randomValues<T>(n, seed);
    for (T& x : v)
        x = static_cast<T>(std::clamp(center + x / 8, -32768, 32767));
    return v;
}

TEST(SumWindow, LengthsMasksAndPlaces)
{
    slots::each(qvrTable_qvrsSumWindow_16s32f, [&](auto f, int slot) {
        uint32_t seed = 1;
        for (size_t len : {1, 2, 3, 7, 8, 31, 32, 33, 34, 63, 64, 65, 66, 97, 300, 1000})
            for (size_t mask : {1, 2, 3, 5, 8, 30, 31, 32, 33, 63, 64, 65, 100, 511, 512, 513}) {
                check(f, slot, mixedValues<T>(len + mask - 1, seed), len, mask, 0);
                check(f, slot, mixedValues<T>(len + mask - 1, seed), len, mask, seed % 64);
                seed++;
            }
    });
}

// Sums beyond 2^24, near it from both sides, crossing it to and fro: every rounding stays in the sum.
TEST(SumWindow, SumsBeyondExactness)
{
    slots::each(qvrTable_qvrsSumWindow_16s32f, [&](auto f, int slot) {
        for (size_t mask : {400, 512, 600, 700, 1024, 5000})
            for (int center : {32767, -32768, 30000, 25000, -20000, 3300}) {
                const std::vector<T> v = biased(4000 + mask - 1, center, 3);
                check(f, slot, v, 4000, mask, 0);
                std::vector<T> waves = v;
                for (size_t i = 0; i < waves.size(); i++)
                    waves[i] = static_cast<T>(waves[i] / (1 + i / 1000 % 3));
                check(f, slot, waves, 4000, mask, 2);
            }
        // The running sum differs from windows summed anew.
        const std::vector<T> v = biased(6000, 30000, 9);
        const std::vector<float> running = model(v, 2000, 1001, static_cast<size_t>(lanesOf(slot)));
        int differ = 0;
        for (size_t i = 0; i < 2000; i++) {
            int64_t exact = 0;
            for (size_t k = 0; k < 1001; k++)
                exact += v[i + k];
            differ += running[i] != static_cast<float>(exact);
        }
        EXPECT_GT(differ, 0);
    });
}

TEST(SumWindow, FollowsTheCallersRounding)
{
    slots::each(qvrTable_qvrsSumWindow_16s32f, [&](auto f, int slot) {
        const unsigned saved = _mm_getcsr();
        for (unsigned mode : {0x2000u, 0x4000u, 0x6000u})
            for (size_t mask : {2, 3, 700}) {
                std::vector<T> v = biased(500 + mask - 1, mask > 3 ? 31000 : 0, 5);
                if (mask == 2) // zero sums
                    for (size_t i = 0; i < v.size(); i++)
                        v[i] = static_cast<T>(i % 7 == 0 ? 9 : i % 2 ? 5 : -5);
                _mm_setcsr((saved & ~0x6000u) | mode);
                const std::vector<float> want = model(v, 500, mask, static_cast<size_t>(lanesOf(slot)));
                std::vector<float> d(500);
                const qvrStatus status = f(v.data(), d.data(), 500, static_cast<int>(mask));
                _mm_setcsr(saved);
                EXPECT_EQ(status, qvrOk);
                EXPECT_EQ(memcmp(d.data(), want.data(), 2000), 0) << "mode " << mode << " mask " << mask;
            }
    });
}

TEST(SumWindow, Statuses)
{
    slots::each(qvrTable_qvrsSumWindow_16s32f, [&](auto f, int) {
        const T x[8] = {};
        float d[4] = {55, 55, 55, 55};
        for (int mask : {1, 0, -1, INT32_MIN})
            checkPointersThenLengthOrder(2, [&](int null, int len) {
                const qvrStatus s = f(null == 0 ? nullptr : x, null == 1 ? nullptr : d, len, mask);
                EXPECT_EQ(d[0], 55);
                return s;
            });
        for (int mask : {0, -1, INT32_MIN})
            EXPECT_EQ(f(x, d, 4, mask), qvrErrBadWindowLength);
        EXPECT_EQ(d[0], 55);
    });
}

TEST(SumWindow, SilenceIsPositiveZero)
{
    slots::each(qvrTable_qvrsSumWindow_16s32f, [&](auto f, int) {
        for (unsigned mode : {environment::kNearest, environment::kDown, environment::kUp, environment::kZero})
            for (int n : {1, 5, 40, 100}) {
                const std::vector<qvr16s> x(n + 15);
                std::vector<float> y(n, 7);
                const Environment environment(environment::kMasked | mode);
                f(x.data(), y.data(), n, 16);
                for (float v : y)
                    EXPECT_EQ(bitsOf(v), 0u) << "mode " << mode;
            }
    });
}

} // namespace
