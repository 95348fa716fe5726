#include "elementary/slot_tables.h"
#include "support/budget.h"
#include "support/elementwise.h"
#include "support/regions.h"

#include "frame/threads.h"

namespace {

// The table of the contract, literally.
int16_t magnitude16(qvr16sc z, int scaleFactor)
{
    uint32_t s = static_cast<uint32_t>(int64_t{z.re} * z.re + int64_t{z.im} * z.im);
    if (scaleFactor < -14)
        return s ? 32767 : 0;
    if (scaleFactor >= 17)
        return 0;
    if (scaleFactor == 16)
        return s > 0x40000000;
    if (scaleFactor < 0) {
        const int n = -2 * scaleFactor;
        if (s > 0x3FFF0000u >> n)
            return 32767;
        s <<= n;
    }
    const uint64_t r = static_cast<uint64_t>(std::sqrt(static_cast<float>(s)));
    if (scaleFactor <= 0) {
        const uint64_t rounded = r + (s >= r * r + r + 1);
        return static_cast<int16_t>(rounded > 32767 ? 32767 : rounded);
    }
    const uint64_t q = r >> scaleFactor, m = (q << scaleFactor) + (uint64_t{1} << (scaleFactor - 1));
    const uint64_t rounded = q + (s > m * m || (s == m * m && (q & 1)));
    return static_cast<int16_t>(rounded > 32767 ? 32767 : rounded);
}

TEST(Magnitude, Words)
{
    std::vector<qvr16sc> in;
    for (int a : {-32768, 32767, 0, 1, 3, 23170, -23171, 16384})
        for (int b : {-32768, 32767, 0, 1, 4, 23170, 181, 16384})
            in.push_back({static_cast<int16_t>(a), static_cast<int16_t>(b)});
    const auto re = randomValues<int16_t>(6000, 1), im = randomValues<int16_t>(6000, 2);
    for (size_t i = 0; i < re.size(); i++) {
        const int shift = static_cast<int>(i % 16);
        in.push_back({static_cast<int16_t>(re[i] >> shift), static_cast<int16_t>(im[i] >> shift)});
    }
    slots::each(qvrTable_qvrsMagnitude_16sc_Sfs, [&](auto f, int) {
        for (int sf :
             {INT32_MIN, -1000, -15, -14, -13, -7, -2, -1, 0, 1, 2, 3, 7, 14, 15, 16, 17, 18, 100, INT32_MAX}) {
            std::vector<int16_t> out(in.size());
            EXPECT_EQ(f(in.data(), out.data(), static_cast<int>(in.size()), sf), qvrOk);
            for (size_t i = 0; i < in.size(); i++)
                ASSERT_EQ(out[i], magnitude16(in[i], sf)) << in[i].re << " " << in[i].im << " scale " << sf;
        }
        for (int n = 1; n <= 70; n++)
            for (size_t offset : {0u, 2u, 1u, 18u}) {
                Guarded& src = pooledGuarded(1, 4 * n + 64);
                Guarded& dst = pooledGuarded(0, 2 * n + 64);
                qvr16sc* a = src.atEnd<qvr16sc>(4 * n, offset);
                int16_t* d = dst.atEnd<int16_t>(2 * n, offset);
                memcpy(static_cast<void*>(a), &in[n], 4 * n);
                EXPECT_EQ(f(a, d, n, n % 3), qvrOk);
                EXPECT_TRUE(dst.intact());
                for (int i = 0; i < n; i++) {
                    int16_t got;
                    memcpy(&got, reinterpret_cast<char*>(d) + 2 * i, 2);
                    EXPECT_EQ(got, magnitude16(in[n + i], n % 3));
                }
            }
        const qvr16sc z = {3, 4};
        int16_t y;
        f(&z, &y, 1, 0);
        EXPECT_EQ(y, 5);
        f(&z, &y, 1, 1);
        EXPECT_EQ(y, 2);
        checkPointersThenLengthOrder(
            2, [&](int null, int len) { return f(null == 0 ? nullptr : &z, null == 1 ? nullptr : &y, len, 0); });
    });
}

// Every root near a decision: squares, midpoints and their neighbours, at every scale factor.
TEST(Magnitude, WordsAtEveryDecision)
{
    std::vector<qvr16sc> in;
    for (int r = 0; r <= 32767; r += 1 + r / 64)
        for (int d = -1; d <= 1; d++)
            for (int im : {0, 1, 2, 181, 255})
                if (r + d >= 0 && r + d <= 32767)
                    in.push_back({static_cast<int16_t>(r + d), static_cast<int16_t>(im)});
    slots::each(qvrTable_qvrsMagnitude_16sc_Sfs, [&](auto f, int) {
        std::vector<int16_t> out(in.size());
        for (int sf = -15; sf <= 17; sf++) {
            f(in.data(), out.data(), static_cast<int>(in.size()), sf);
            for (size_t i = 0; i < in.size(); i++)
                ASSERT_EQ(out[i], magnitude16(in[i], sf)) << in[i].re << " " << in[i].im << " scale " << sf;
        }
    });
}

TEST(Magnitude, Float)
{
    std::vector<qvr32fc> in;
    const std::vector<float> s = specials<float>();
    for (float a : s)
        for (float b : s)
            in.push_back({a, b});
    const auto re = randomValues<float>(3000, 1), im = randomValues<float>(3000, 2);
    for (size_t i = 0; i < re.size(); i++)
        in.push_back({re[i], im[i]});
    slots::each(qvrTable_qvrsMagnitude_32fc, [&](auto f, int) {
        for (size_t offset : {0u, 4u, 8u, 12u, 1u})
            for (int n : {1, 2, 3, 4, 5, 7, 8, 9, 11, 12, 13, 16, 19, 20, 33, 64, 70, 2000}) {
                for (size_t from : {size_t{0}, size_t{300}, in.size() - 2000}) {
                    Guarded& src = pooledGuarded(1, 8 * n + 64);
                    Guarded& dst = pooledGuarded(0, 4 * n + 64);
                    qvr32fc* a = src.atEnd<qvr32fc>(8 * n, offset);
                    float* d = dst.atFront<float>(4 * n, offset);
                    memcpy(static_cast<void*>(a), &in[from], 8 * n);
                    EXPECT_EQ(f(a, d, n), qvrOk);
                    EXPECT_TRUE(dst.intact());
                    int head = offset % 4 ? 0 : static_cast<int>((16 - offset) % 16 / 4);
                    head = head < n ? head : n;
                    const int body = (n - head) / 8 * 8;
                    for (int i = 0; i < n; i++) {
                        float got;
                        memcpy(&got, reinterpret_cast<char*>(d) + 4 * i, 4);
                        const qvr32fc z = in[from + i];
                        const volatile float rr = z.re * z.re, ii = z.im * z.im;
                        const float sum = rr + ii;
                        if (i < head || i >= head + body) {
                            EXPECT_TRUE(sameValue(got, std::sqrt(sum))) << n << " element " << i;
                        } else if (sum < 0x1p-126f) {
                            EXPECT_EQ(bitsOf(got) & 0x7FFFFFFF, 0u) << n << " element " << i;
                        } else if (!(sum < INFINITY)) {
                            EXPECT_TRUE(std::isnan(got));
                        } else {
                            EXPECT_NEAR(got, std::sqrt(sum), std::sqrt(sum) * 0x1p-21) << n << " element " << i;
                        }
                    }
                }
            }
        const qvr32fc z = {3, 4};
        float y;
        f(&z, &y, 1);
        EXPECT_EQ(y, 5);
        checkPointersThenLengthOrder(
            2, [&](int null, int len) { return f(null == 0 ? nullptr : &z, null == 1 ? nullptr : &y, len); });
    });
}

TEST(Magnitude, Double)
{
    std::vector<qvr64fc> in;
    const std::vector<double> s = specials<double>();
    for (double a : s)
        for (double b : s)
            in.push_back({a, b});
    slots::each(qvrTable_qvrsMagnitude_64fc, [&](auto f, int) {
        for (size_t offset : {0u, 8u, 1u, 24u})
            for (int n : {1, 2, 3, 4, 5, 6, 7, 8, 9, 15, 17, 33, 255, 256, 257, 700}) {
                Guarded& src = pooledGuarded(1, 16 * n + 64);
                Guarded& dst = pooledGuarded(0, 8 * n + 64);
                qvr64fc* a = src.atEnd<qvr64fc>(16 * n, offset);
                double* d = dst.atEnd<double>(8 * n, offset);
                memcpy(static_cast<void*>(a), &in[n], 16 * n);
                EXPECT_EQ(f(a, d, n), qvrOk);
                EXPECT_TRUE(dst.intact());
                for (int i = 0; i < n; i++) {
                    double got;
                    memcpy(&got, reinterpret_cast<char*>(d) + 8 * i, 8);
                    const qvr64fc z = in[n + i];
                    const volatile double rr = z.re * z.re, ii = z.im * z.im;
                    EXPECT_TRUE(sameValue(got, std::sqrt(rr + ii))) << n << " element " << i;
                }
            }
        const qvr64fc z = {3, 4};
        double y;
        checkPointersThenLengthOrder(
            2, [&](int null, int len) { return f(null == 0 ? nullptr : &z, null == 1 ? nullptr : &y, len); });
    });
}

// Regions: which slots fork, from which length on, and that a half is worked on as an array of its own.
TEST(Magnitude, Regions)
{
    if (!regions::counted())
        GTEST_SKIP() << "another tool counts here";
    const int n = 5001;
    std::vector<qvr32fc> z(n, {3, 4});
    std::vector<qvr64fc> z64(n, {3, 4});
    std::vector<qvr16sc> z16(n, {3, 4});
    std::vector<float> y(n);
    std::vector<double> y64(n);
    std::vector<int16_t> y16(n);
    const auto forks = [&](auto&& call) {
        const int before = regions::forks();
        call();
        return regions::forks() - before;
    };
    for (int slot = 0; slot < slots::kCount; slot++) {
        if (!slots::canRun(slot))
            continue;
        SCOPED_TRACE(slots::kNames[slot]);
        for (int budget : {1, 2, 5}) {
            const Budget b(budget);
            const int shared = budget > 1 && slot >= slots::u8,
                      shared64 = budget > 1 && slot >= slots::u8 && slot <= slots::y8;
            const auto f = qvrTable_qvrsMagnitude_32fc[slot];
            const auto f64 = qvrTable_qvrsMagnitude_64fc[slot];
            const auto f16 = qvrTable_qvrsMagnitude_16sc_Sfs[slot];
            EXPECT_EQ(forks([&] { f(z.data(), y.data(), 2047); }), 0);
            EXPECT_EQ(forks([&] { f(z.data(), y.data(), 2048); }), shared);
            EXPECT_EQ(forks([&] { f64(z64.data(), y64.data(), 255); }), 0);
            EXPECT_EQ(forks([&] { f64(z64.data(), y64.data(), 256); }), shared64);
            EXPECT_EQ(forks([&] { f16(z16.data(), y16.data(), 2047, 0); }), 0);
            EXPECT_EQ(forks([&] { f16(z16.data(), y16.data(), 2048, 0); }), shared);
            if (shared)
                EXPECT_EQ(regions::lastRequested(), 2);
            f(z.data(), y.data(), n);
            f64(z64.data(), y64.data(), n);
            f16(z16.data(), y16.data(), n, 0);
            for (int i = 0; i < n; i++) {
                ASSERT_NEAR(y[i], 5, 1e-6);
                ASSERT_EQ(y64[i], 5);
                ASSERT_EQ(y16[i], 5);
            }
        }
    }
}

} // namespace
