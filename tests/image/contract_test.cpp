// Statuses in order, the size rule, threads, the wrappers.
#include "frame/threads.h"
#include "image/resize_check.h"
#include "image/slot_tables.h"
#include "support/allocation.h"
#include "support/budget.h"
#include "support/regions.h"
#include "support/status_order.h"

namespace {

using namespace resize_check;

struct Args {
    const uint8_t* src;
    qvriSize size;
    qvriRect srcRoi;
    uint8_t* dst;
    qvriRect dstRoi;
    double xFactor, yFactor, xShift;
    int interpolation;
    uint8_t* buffer;
};

TEST(ResizeContract, StatusOrder)
{
    std::vector<uint8_t> src(100, 9), dst(1000, 77), buffer(1 << 16);
    const Args valid = {src.data(), {10, 10}, {0, 0, 10, 10},  dst.data(),   {0, 0, 20, 20}, 2,
                        2,          0,        qvriInterLinear, buffer.data()};
    slots::each(qvrTable_qvriResizeSqrPixel_8u_C1R, [&](auto f, int) {
        const auto call = [&](const Args& a) {
            return f(a.src, a.size, 10, a.srcRoi, a.dst, 20, a.dstRoi, a.xFactor, a.yFactor, a.xShift, 0,
                     a.interpolation, a.buffer);
        };
        const auto unchanged = [&] { return std::count(dst.begin(), dst.end(), 77) == 1000; };
        using F = Fault<Args>;
        const std::vector<F> pointers = {
            {"src", qvrErrNullPointer, [](Args& a) { a.src = nullptr; }},
            {"dst", qvrErrNullPointer, [](Args& a) { a.dst = nullptr; }},
            {"buffer", qvrErrNullPointer, [](Args& a) { a.buffer = nullptr; }},
        };
        const std::vector<F> sizes = {
            {"source width", qvrErrBadSize, [](Args& a) { a.size.width = 0; }},
            {"source height", qvrErrBadSize, [](Args& a) { a.size.height = -1; }},
            {"region x", qvrErrBadSize, [](Args& a) { a.srcRoi.x = -1; }},
            {"region y", qvrErrBadSize, [](Args& a) { a.srcRoi.y = INT32_MIN; }},
            {"region width", qvrErrBadSize, [](Args& a) { a.srcRoi.width = 0; }},
            {"region height", qvrErrBadSize, [](Args& a) { a.srcRoi.height = -5; }},
            {"target x", qvrErrBadSize, [](Args& a) { a.dstRoi.x = -1; }},
            {"target y", qvrErrBadSize, [](Args& a) { a.dstRoi.y = -1; }},
            {"target width", qvrErrBadSize, [](Args& a) { a.dstRoi.width = 0; }},
            {"target height", qvrErrBadSize, [](Args& a) { a.dstRoi.height = 0; }},
        };
        const std::vector<F> factors = {
            {"x factor", qvrErrBadFactor, [](Args& a) { a.xFactor = 0; }},
            {"y factor", qvrErrBadFactor, [](Args& a) { a.yFactor = -0.5; }},
        };
        const auto with = [](std::initializer_list<std::vector<F>> parts) {
            std::vector<F> all;
            for (const auto& p : parts)
                all.insert(all.end(), p.begin(), p.end());
            return all;
        };
        const F outside = {"outside", qvrWarnRoiOutside, [](Args& a) { a.srcRoi.x = 10; }};
        const F nothing = {"nothing", qvrWarnNothingToDo, [](Args& a) { a.xShift = 1000; }};
        for (int bad : {0, 3, 9, 15, 17, 32, 0x1FFFFFFF})
            expectStatusOrder<Args>(
                valid,
                with({pointers,
                      sizes,
                      factors,
                      {{"method", qvrErrBadInterpolation, [=](Args& a) { a.interpolation = bad; }}, outside, nothing}}),
                call, unchanged);
        for (int bad : {int(qvriEdgeBlend | qvriEdgeFade), int(qvriEdgeBlend | qvriAntialias),
                        int(qvriEdgeFade | qvriAntialias), int(qvriEdgeBlend | qvriEdgeFade | qvriAntialias)})
            expectStatusOrder<Args>(
                valid,
                with({pointers,
                      sizes,
                      factors,
                      {{"flags", qvrErrBadInterpolation, [=](Args& a) { a.interpolation = bad | qvriInterSuper; }},
                       outside,
                       nothing}}),
                call, unchanged);
        // Supersampling that enlarges, behind the flags and before the region.
        Args super = valid;
        super.interpolation = qvriInterSuper;
        super.dstRoi = {0, 0, 10, 10};
        super.xFactor = super.yFactor = 1;
        expectStatusOrder<Args>(
            super, {{"enlarges", qvrErrBadFactor, [](Args& a) { a.xFactor = 1.0000001; }}, outside, nothing}, call,
            unchanged);
        EXPECT_EQ(call(super), qvrOk);
        std::fill(dst.begin(), dst.end(), 77);
        Args nan = valid;
        nan.xFactor = NAN;
        EXPECT_EQ(call(nan), qvrWarnNothingToDo);
        nan = valid;
        nan.xShift = NAN;
        EXPECT_EQ(call(nan), qvrWarnNothingToDo);
        for (double extreme : {1e300, double(INFINITY), 1e-300}) {
            Args a = valid;
            a.xFactor = extreme;
            a.dstRoi.x = 3;
            EXPECT_GE(call(a), 0) << extreme;
        }
        std::fill(dst.begin(), dst.end(), 77);
        // Rectangles whose buffer no int can count.
        Args huge = valid;
        huge.dstRoi = {0, 0, INT32_MAX, INT32_MAX};
        huge.interpolation = qvriInterLanczos;
        EXPECT_EQ(call(huge), qvrErrBadSize);
        EXPECT_TRUE(unchanged());
    });
}

TEST(ResizeContract, BordersOnAHalf)
{
    // 2.5 at the start of a range is pixel 2, at its end 3.
    slots::each(qvrTable_qvriResizeSqrPixel_8u_C1R, [&](auto f, int) {
        const std::vector<uint8_t> src(16, 200);
        std::vector<uint8_t> buffer(1 << 14);
        const auto produced = [&](double shift, int interpolation) {
            std::vector<uint8_t> dst(10, 0);
            EXPECT_EQ(f(src.data(), {4, 4}, 4, {0, 0, 4, 1}, dst.data(), 10, {0, 0, 10, 1}, 1, 1, shift, 0,
                        interpolation, buffer.data()),
                      qvrOk);
            std::string s;
            for (uint8_t v : dst)
                s += v ? 'x' : '.';
            return s;
        };
        EXPECT_EQ(produced(2.5, qvriInterNearest), "..xxxxx...");
        EXPECT_EQ(produced(2.4999, qvriInterNearest), "..xxxx....");
        EXPECT_EQ(produced(2.5001, qvriInterNearest), "...xxxx...");
        EXPECT_EQ(produced(-1.5, qvriInterNearest), "xxx.......");
    });
}

TEST(ResizeContract, SizeRule)
{
    const Budget one(1);
    const auto size = [](qvriRect s, qvriRect d, int nc, int interpolation, bool wide) {
        int n = -1;
        const qvrStatus status =
            (wide ? Morven_qvriResizeGetBufSize_64f : Morven_qvriResizeGetBufSize)(s, d, nc, interpolation, &n);
        EXPECT_EQ(status, interpolation == int(qvriAntialias | qvriInterNearest) ||
                                  interpolation == int(qvriAntialias | qvriInterSuper)
                              ? qvrWarnNoAntialiasing
                              : qvrOk);
        return n;
    };
    const qvriRect s = {3, 4, 100, 50}, d = {1, 2, 203, 97};
    // 16 * (13 + 7) offsets of 4 bytes.
    const int index = 4 * 16 * 20;
    for (int nc : {1, 3, 4})
        for (bool wide : {false, true}) {
            const int e = wide ? 8 : 4;
            EXPECT_EQ(size(s, d, nc, qvriInterNearest, wide), index + 16);
            EXPECT_EQ(size(s, d, nc, qvriAntialias | qvriInterNearest, wide), 4 * (208 + 112) + 16);
            EXPECT_EQ(size(s, d, nc, qvriInterLinear, wide), index + e * (256 + 128 + nc * 512) + 16);
            for (int m : {4, 5, 6, 7})
                EXPECT_EQ(size(s, d, nc, m | qvriEdgeBlend, wide),
                          index + e * (928 + 224 + 128 + 512 + nc * 1024) + 16);
            EXPECT_EQ(size(s, d, nc, qvriInterLanczos, wide), index + e * (1408 + 224 + 128 + 768 + nc * 1408) + 16);
            EXPECT_EQ(size(s, d, nc, qvriInterSuper, wide), 2 * e * nc * 112 + 16);
            EXPECT_EQ(size(s, d, nc, qvriAntialias | qvriInterSuper, wide), 2 * e * nc * 112 + 16);
        }
    // The low pass: a reduction in x by 2.5, none in y.
    const qvriRect wideSource = {0, 0, 100, 10}, narrow = {0, 0, 40, 20};
    const auto up16 = [](int v) { return (v + 15) / 16 * 16; };
    for (auto [method, rx, ry] : {std::tuple{2, 3, 1}, {5, 5, 2}, {16, 8, 3}})
        for (int nc : {1, 4}) {
            const int a = up16(40 * 10 * nc), b = up16(40 * nc), c = up16((2 * rx + 2) * 40),
                      dd = up16(20 * (2 * ry + 2));
            EXPECT_EQ(size(wideSource, narrow, nc, method | qvriAntialias, false), 8 * a + 4 * b + 8 * c + 8 * dd + 16);
            EXPECT_EQ(size(wideSource, narrow, nc, method | qvriAntialias, true),
                      16 * a + 8 * b + 12 * c + 12 * dd + 16);
        }
    int bytes = 5;
    EXPECT_EQ(Morven_qvriResizeGetBufSize({0, 0, 1, 1}, {0, 0, 0x20000000, 1}, 1, qvriInterNearest, &bytes),
              qvrErrBadSize);
    EXPECT_EQ(bytes, 0);
    bytes = 5;
    EXPECT_EQ(Morven_qvriResizeGetBufSize_64f({0, 0, INT32_MAX, INT32_MAX}, {0, 0, INT32_MAX, INT32_MAX}, 4,
                                              qvriInterLanczos | qvriAntialias, &bytes),
              qvrErrBadSize);
    EXPECT_EQ(bytes, 0);
    // The last size that fits, and the first that does not.
    EXPECT_EQ(Morven_qvriResizeGetBufSize({0, 0, 1, 1}, {0, 0, 0x1FFFFFE0, 1}, 1, qvriInterNearest, &bytes), qvrOk);
    EXPECT_EQ(bytes, 4 * (0x1FFFFFE0 + 16) + 16);
}

TEST(ResizeContract, SizeForAllThreads)
{
    const qvriRect r = {0, 0, 640, 480};
    int one = 0, three = 0;
    {
        const Budget b(1);
        ASSERT_EQ(Morven_qvriResizeGetBufSize(r, r, 1, 4, &one), qvrOk);
    }
    const Budget b(3);
    ASSERT_EQ(Morven_qvriResizeGetBufSize(r, r, 1, 4, &three), qvrOk);
    EXPECT_EQ(three, 3 * one);
    // As many buffers as fit 2^31 - 1.
    const qvriRect big = {0, 0, 20000, 20000};
    ASSERT_EQ(Morven_qvriResizeGetBufSize(big, {0, 0, 10000, 10000}, 1, qvriAntialias | 2, &three), qvrOk);
    {
        const Budget single(1);
        ASSERT_EQ(Morven_qvriResizeGetBufSize(big, {0, 0, 10000, 10000}, 1, qvriAntialias | 2, &one), qvrOk);
    }
    EXPECT_EQ(three, INT32_MAX / one * one);
}

TEST(ResizeContract, SizeStatuses)
{
    struct Query {
        qvriRect s, d;
        int channels, interpolation;
        int* out;
    };
    int bytes = 5;
    const Query valid = {{0, 0, 5, 5}, {0, 0, 5, 5}, 1, qvriInterLinear, &bytes};
    using F = Fault<Query>;
    const auto check = [&](auto f) {
        for (int bad : {0, 2, 5, -1})
            expectStatusOrder<Query>(
                valid,
                {F{"out", qvrErrNullPointer, [](Query& q) { q.out = nullptr; }},
                 F{"x", qvrErrBadSize, [](Query& q) { q.s.x = -1; }},
                 F{"y", qvrErrBadSize, [](Query& q) { q.s.y = -1; }},
                 F{"w", qvrErrBadSize, [](Query& q) { q.s.width = 0; }},
                 F{"h", qvrErrBadSize, [](Query& q) { q.s.height = 0; }},
                 F{"dx", qvrErrBadSize, [](Query& q) { q.d.x = -1; }},
                 F{"dy", qvrErrBadSize, [](Query& q) { q.d.y = -1; }},
                 F{"dw", qvrErrBadSize, [](Query& q) { q.d.width = -1; }},
                 F{"dh", qvrErrBadSize, [](Query& q) { q.d.height = INT32_MIN; }},
                 F{"channels", qvrErrBadChannels, [=](Query& q) { q.channels = bad; }},
                 F{"method", qvrErrBadInterpolation, [](Query& q) { q.interpolation = 3; }},
                 F{"flags", qvrErrBadInterpolation,
                   [](Query& q) { q.interpolation = qvriInterLinear | qvriEdgeBlend | qvriAntialias; }}},
                [&](const Query& q) { return f(q.s, q.d, q.channels, q.interpolation, q.out); },
                [&] { return bytes == 5; });
    };
    slots::each(qvrTable_qvriResizeGetBufSize, [&](auto f, int) { check(f); });
    slots::each(qvrTable_qvriResizeGetBufSize_64f, [&](auto f, int) { check(f); });
}

TEST(ResizeContract, AntialiasIsIgnoredWithAWarning)
{
    for (int method : {qvriInterNearest, qvriInterSuper})
        checkAllForms(wholeImage(20, 20, 0.5, 0.5, method | qvriAntialias));
}

// Any number of bands gives the same bytes, in buffers of exactly the stated size.
TEST(ResizeContract, BandsDoNotShow)
{
    for (int method : kMethods)
        for (int flag : {0, int(qvriAntialias), int(qvriEdgeBlend)})
            for (double f : {0.43, 0.5, 1.21}) {
                if ((method == qvriInterSuper) == (f > 1) || (flag == qvriEdgeBlend && method != qvriInterLinear))
                    continue; // supersampling with and without whole blocks, the others enlarging
                const Job j = {{190, 180}, {3, 5, 180, 172}, {0, 0, 240, 220}, f, f, 1.3, 0.7, method | flag};
                const auto compare = [&]<class T, int NC>(Call<T, NC> call) {
                    slots::each(tableOf<T, NC>(), [&](auto resize, int slot) {
                        if (slot != slots::mx && slot != slots::l9)
                            return;
                        std::vector<T> first;
                        for (int budget : {1, 2, 5}) {
                            const Budget b(budget);
                            const int forks = regions::forks();
                            EXPECT_GE(call.run(resize), 0);
                            if (regions::counted()) {
                                EXPECT_EQ(regions::forks() - forks, budget > 1);
                                if (budget > 1)
                                    EXPECT_EQ(regions::lastRequested(), budget);
                            }
                            std::vector<T> got;
                            for (int y = 0; y < call.dst.height; y++)
                                for (int x = 0; x < call.dst.width; x++)
                                    for (int c = 0; c < NC; c++)
                                        got.push_back(call.dst.at(x, y, c));
                            if (first.empty())
                                first = got;
                            EXPECT_TRUE(memcmp(first.data(), got.data(), got.size() * sizeof(T)) == 0)
                                << describe(j) << " budget " << budget;
                        }
                    });
                };
                compare(Call<uint8_t, 1>(j, {}));
                compare(Call<float, 1>(j, {}));
                compare(Call<uint8_t, 4>(j, {}));
                compare(Call<double, 1>(j, {}));
            }
}

TEST(ResizeContract, SmallExtentsStayOnOneThread)
{
    const Budget b(2);
    if (!regions::counted())
        GTEST_SKIP();
    std::vector<uint8_t> src(100 * 100, 1), dst(200 * 200), buffer(1 << 20);
    for (auto [w, h, forks] : {std::tuple{64, 64, 1}, {63, 64, 0}, {64, 63, 0}, {200, 63, 0}, {64, 200, 1}}) {
        const int before = regions::forks();
        EXPECT_EQ(Morven_qvriResizeSqrPixel_8u_C1R(src.data(), {100, 100}, 100, {0, 0, 100, 100}, dst.data(), 200,
                                                   {0, 0, w, h}, 2, 2, 0, 0, qvriInterLinear, buffer.data()),
                  qvrOk);
        EXPECT_EQ(regions::forks() - before, forks) << w << "x" << h;
    }
}

template<class T, class Wrapper, class Full> void checkWrapper(int channels, Wrapper wrapper, Full full)
{
    const int w = 40, h = 30, row = w * channels * int(sizeof(T));
    const std::vector<T> src = sourceValues<T>(size_t(w) * h * channels, 3, false);
    const std::vector<T> old = sourceValues<T>(size_t(90) * 80 * channels, 4, false);
    const int dstRow = 90 * channels * int(sizeof(T));
    for (int interpolation : {1, 2, 4, 5, 6, 7, 8, 16, 2 | int(qvriAntialias), 16 | int(qvriEdgeBlend)}) {
        const double f = (interpolation & 0xFF) == 8 ? 0.7 : 1.4;
        for (qvriRect roi : {qvriRect{0, 0, 40, 30}, {10, 10, 20, 15}}) {
            std::vector<T> got = old, want = old;
            const qvriRect to = {roi.x, roi.y, 50, 40};
            int size = 0;
            ASSERT_EQ(Morven_qvriResizeGetBufSize(roi, to, channels, interpolation, &size), qvrOk);
            std::vector<uint8_t> buffer(static_cast<size_t>(size));
            EXPECT_EQ(
                full(src.data(), {w, h}, row, roi, want.data(), dstRow, to, f, f, 0, 0, interpolation, buffer.data()),
                qvrOk);
            CountingAllocator allocator;
            EXPECT_EQ(wrapper(src.data(), {w, h}, row, roi, got.data(), dstRow, {50, 40}, f, f, interpolation), qvrOk);
            EXPECT_EQ(allocator.allocations(), 1);
            EXPECT_EQ(allocator.live(), 0u);
            EXPECT_EQ(memcmp(got.data(), want.data(), got.size() * sizeof(T)), 0) << interpolation;
        }
    }
    std::vector<T> dst = old;
    const auto call = [&](const T* s, T* d, int interpolation) {
        return wrapper(s, {w, h}, row, {0, 0, w, h}, d, dstRow, {20, 20}, 0.5, 0.5, interpolation);
    };
    {
        CountingAllocator none(CountingAllocator::kAll);
        EXPECT_EQ(call(src.data(), dst.data(), qvriInterLinear), qvrOk);
        EXPECT_EQ(call(src.data(), dst.data(), qvriInterNearest | qvriAntialias), qvrWarnNoAntialiasing);
        EXPECT_EQ(none.allocations(), 1);
    }
    EXPECT_EQ(call(src.data(), dst.data(), qvriInterNearest | qvriAntialias), qvrWarnNoAntialiasing);
    EXPECT_EQ(call(src.data(), dst.data(), qvriInterSuper | qvriAntialias), qvrWarnNoAntialiasing);
    EXPECT_EQ(call(nullptr, dst.data(), 3), qvrErrBadInterpolation);
    EXPECT_EQ(call(nullptr, dst.data(), 2), qvrErrNullPointer);
    EXPECT_EQ(call(src.data(), nullptr, 2), qvrErrNullPointer);
    EXPECT_EQ(wrapper(nullptr, {w, h}, row, {0, 0, w, h}, dst.data(), dstRow, {0, 20}, 0.5, 0.5, 3), qvrErrBadSize);
    EXPECT_EQ(memcmp(dst.data(), old.data(), old.size() * sizeof(T)), 0);
}

TEST(ResizeContract, Wrappers)
{
    checkWrapper<uint8_t>(1, Morven_qvriResize_8u_C1R, Morven_qvriResizeSqrPixel_8u_C1R);
    checkWrapper<uint8_t>(4, Morven_qvriResize_8u_C4R, Morven_qvriResizeSqrPixel_8u_C4R);
    checkWrapper<float>(1, Morven_qvriResize_32f_C1R, Morven_qvriResizeSqrPixel_32f_C1R);
}

} // namespace
