// Every method against the model: geometries, borders, regions, placement of images and work buffers.
#include "image/resize_check.h"
#include "image/slot_tables.h"
#include "support/environment.h"

namespace {

using namespace resize_check;

struct Scale {
    double x, y;
};

bool applies(int method, double x, double y)
{
    return method != qvriInterSuper || (x <= 1 && y <= 1);
}

TEST(Resize, EveryMethodEnlargesAndReduces)
{
    for (int method : kMethods)
        for (int flag : {0, int(qvriAntialias)})
            for (Scale s : {Scale{1, 1}, {3, 2.25}, {1.7, 2.31}, {0.37, 0.61}, {0.5, 0.25}, {0.2, 1.0}, {2.6, 0.31}}) {
                if (!applies(method, s.x, s.y))
                    continue;
                checkAllForms(wholeImage(47, 23, s.x, s.y, method | flag));
                if (HasFailure())
                    return;
            }
}

// Rows of many vectors, so that every unrolled part of the loops runs.
TEST(Resize, WideRows)
{
    for (int method : kMethods)
        for (int flag : {0, int(qvriAntialias)})
            for (double x : {2.6, 1.0, 0.73, 0.2}) {
                if (!applies(method, x, 1))
                    continue;
                checkAllForms(wholeImage(301, 7, x, 1, method | flag));
                if (HasFailure())
                    return;
            }
}

// At a half, long rows of singles take a way of their own. Lists of rows that begin or end with zeros lie side by side
// in many ways.
TEST(Resize, WideRowsOfHalves)
{
    for (int method : kMethods) {
        for (int width : {130, 131, 531, 2310})
            checkAllForms(wholeImage(width, 7, 0.5, 0.5, method | int(qvriAntialias)));
        for (double y : {0.25, 0.75, 1.0, 1.25, 1.5, 2.0, 2.5, 3.0})
            for (double shift : {0.0, 0.25, 0.5}) {
                if (!applies(method, 0.5, y))
                    continue;
                checkAllForms({{133, 12},
                               {0, 0, 133, 12},
                               {0, 0, 66, int(12 * y)},
                               0.5,
                               y,
                               0,
                               shift,
                               method | int(qvriAntialias)});
            }
        if (HasFailure())
            return;
    }
}

// Ratios whose columns repeat after a few, at whole and broken shifts and from any column on.
TEST(Resize, SmallRatios)
{
    const double factors[] = {0.5, 0.75, 2.0 / 3, 0.8, 0.6, 0.4, 1.0 / 3, 1, 4.0 / 3, 1.5, 2, 3, 4, 0.875};
    for (int method : {qvriInterNearest, qvriInterLinear, qvriInterSuper})
        for (double f : factors)
            for (double shift : {0.0, 3.0, -7.0, 0.25}) {
                if (!applies(method, f, f))
                    continue;
                const int dw = int(139 * f) + 4;
                const Job whole = {{139, 11}, {0, 0, 139, 11}, {0, 0, dw, 30}, f, f, shift, shift / 2, method};
                const Job part = {{139, 11}, {3, 1, 300, 9}, {5, 1, dw - 9, 30}, f, f, shift, 0, method};
                checkAllForms(whole);
                checkAllForms(part);
                if (HasFailure())
                    return;
            }
}

// Ratios whose rows are made in groups: all widths round the vectors, every phase of the first and of the last row and
// column, images that end and that begin at an unreadable page.
TEST(Resize, GroupsOfRows)
{
    const auto check = [](int n, int rows, int x, int y, double f, int method) {
        const int w = int(std::lround((n + x) / f)), h = int(std::lround((rows + y) / f));
        const Job j = {{w, h}, {0, 0, w, h}, {x, y, n, rows}, f, f, 0, 0, method};
        const Placing p = {.srcGap = n % 4, .dstGap = n % 3, .upsideDown = n % 5 == 0, .inFront = n % 2 == 0};
        checkForm<uint8_t, 1>(j, p);
        checkForm<uint8_t, 4>(j, p);
    };
    for (double f : {0.5, 0.75})
        for (int method : {qvriInterNearest, qvriInterLinear, qvriInterSuper})
            for (int n = 1; n <= 100 && !HasFailure(); n++) {
                check(n, 3 + n % 5, n % 7, n % 6, f, method);
                check(n, 6, 0, 0, f, method);
            }
    // More rows than are made in one pass.
    check(1000, 31, 1, 2, 0.75, qvriInterSuper);
}

// From source pixel 2^20 on rounding takes the centres on a pixel's border to the next pixel.
TEST(Resize, NearestFarToTheRight)
{
    const int w = (1 << 20) + 4000;
    for (double f : {0.5, 0.75}) {
        const int at = int((1 << 20) * f) - 500;
        checkForm<uint8_t, 1>({{w, 1}, {0, 0, w, 1}, {at, 0, 1000, 1}, f, 1, 0, 0, qvriInterNearest});
    }
}

// All widths of source and destination round the vectors.
TEST(Resize, SmallAndNarrow)
{
    for (int method : kMethods)
        for (int w = 1; w <= 21; w++)
            for (int h : {1, 2, 3, 4, 5, 6, 7}) {
                if (w > 8 && h != 1 && h != 6)
                    continue;
                const double up = method == qvriInterSuper ? 1 : 2.3;
                checkAllForms(wholeImage(w, h, up, up, method));
                checkAllForms(wholeImage(w, h, 0.6, 0.7, method | (h == 6 ? qvriAntialias : 0)));
                if (HasFailure())
                    return;
            }
}

TEST(Resize, RegionsAndShifts)
{
    for (int method : kMethods)
        for (int flag : {0, int(qvriAntialias), int(qvriEdgeBlend), int(qvriEdgeFade)})
            for (Scale s : {Scale{1.9, 1.37}, {0.83, 0.41}})
                for (double shift : {0.5, -2.81}) {
                    if (!applies(method, s.x, s.y))
                        continue;
                    // A region that reaches past the image, into a rectangle that cuts the result.
                    const Job inner = {{40, 33}, {5, 7, 21, 13}, {0, 0, 90, 70}, s.x,
                                       s.y,      shift,          shift / 2,      method | flag};
                    const Job outer = {{40, 33}, {11, 3, 300, 200}, {13, 6, 17, 19}, s.x, s.y, shift,
                                       -shift,   method | flag};
                    checkAllForms(inner);
                    checkAllForms(outer);
                    if (HasFailure())
                        return;
                }
}

// Factors that are no reduction of the rectangles: the tables of the low-pass and the line of supersampling are longer
// than the buffer foresees.
TEST(Resize, TinyRegionsOfStrongReductions)
{
    for (int method : kMethods)
        for (int flag : {0, int(qvriAntialias)})
            for (double f : {0.1, 0.031})
                for (int size : {1, 3}) {
                    if (flag && (size == 1) == (f == 0.1))
                        continue;
                    // Shifted so that one pixel's centre falls into the region's image.
                    checkAllForms({{130, 120},
                                   {60, 40, size, size},
                                   {0, 0, 3, 2},
                                   f,
                                   f,
                                   1.5 - 60.5 * f,
                                   0.5 - 40.5 * f,
                                   method | flag});
                    checkAllForms(
                        {{130, 120}, {60, 40, size, 70}, {0, 0, 30, 2}, f, 0.5, 1.5 - 60.5 * f, -20, method | flag});
                    checkAllForms(
                        {{130, 120}, {60, 40, 50, size}, {0, 0, 80, 2}, 1, f, -60, 0.5 - 40.5 * f, method | flag});
                    if (HasFailure())
                        return;
                }
}

// Steps of either sign, any gap, images and buffers off their alignment.
TEST(Resize, Placement)
{
    for (int method : kMethods)
        for (int flag : {0, int(qvriAntialias)})
            for (size_t back = 0; back < 64; back += 3) {
                Placing p;
                p.upsideDown = back % 2;
                p.srcGap = int(back % 5);
                p.dstGap = int(back % 7);
                p.bufferBack = back;
                p.offset = back % 4;
                const double f = method == qvriInterSuper ? 0.7 : back % 3 ? 1.3 : 0.55;
                checkAllForms(wholeImage(37, 12, f, f, method | flag), p);
                if (HasFailure())
                    return;
            }
}

// Whole sources and dyadic weights leave no rounding: bit for bit.
TEST(Resize, ExactWhereSumsAreExact)
{
    Placing exact;
    exact.exact = true;
    for (int w : {16, 40, 64, 101})
        for (int h : {8, 13}) {
            for (int method : {qvriInterNearest, qvriInterLinear, qvriInterCubicCatmullRom})
                for (double f : {1.0, 2.0, 4.0, 0.5, 0.25}) {
                    if (f == 4.0 && method == qvriInterCubicCatmullRom)
                        continue; // products of 29 bits
                    checkForm<float, 1>(wholeImage(w, h, f, f, method), exact);
                    checkForm<double, 1>(wholeImage(w, h, f, f, method), exact);
                    checkForm<uint8_t, 1>(wholeImage(w, h, f, f, method), exact);
                    checkForm<uint8_t, 4>(wholeImage(w, h, f, f, method), exact);
                }
            for (double x : {1.0, 0.5, 0.25, 0.125})
                for (double y : {1.0, 0.5, 0.25, 0.125})
                    checkAllForms(wholeImage(w, h, x, y, qvriInterSuper), exact);
        }
}

// Blocks of any whole size: the exact mean, halves rounded up.
template<int Channels, class Resize> void checkBlocks(Resize* resize, int bx, int by, int dw)
{
    const int dh = 2, w = bx * dw, h = by * dh, step = w * Channels, row = dw * Channels;
    const std::vector<uint8_t> src = randomValues<uint8_t>(size_t(step) * h, uint32_t(w));
    std::vector<uint8_t> dst(size_t(row) * dh), buffer;
    const qvriRect from = {0, 0, w, h}, to = {0, 0, dw, dh};
    int size;
    ASSERT_EQ(Morven_qvriResizeGetBufSize(from, to, Channels, qvriInterSuper, &size), qvrOk);
    buffer.resize(size_t(size));
    const double fx = 1.0 / bx, fy = 1.0 / by;
    ASSERT_EQ(resize(src.data(), {w, h}, step, from, dst.data(), row, to, fx, fy, 0, 0, qvriInterSuper, buffer.data()),
              qvrOk);
    for (int y = 0; y < dh; y++)
        for (int x = 0; x < row; x++) {
            int64_t sum = 0;
            for (int v = 0; v < by; v++)
                for (int u = 0; u < bx; u++)
                    sum += src[size_t(y * by + v) * step + size_t((x / Channels * bx + u) * Channels + x % Channels)];
            ASSERT_EQ(dst[size_t(y * row + x)], (2 * sum + bx * by) / (2 * bx * by))
                << bx << "x" << by << " into " << dw << ", " << Channels << " channels, element " << x;
        }
}

TEST(Resize, IntegerSuperOfBytesIsExact)
{
    for (int bx : {1, 2, 3, 4, 5, 6, 7, 8, 9, 12, 16, 25})
        for (int by : {1, 2, 3, 4, 5, 7, 8, 300})
            for (int dw : {1, 11, 75}) {
                if (by == 300 && dw > 11)
                    continue;
                slots::each(qvrTable_qvriResizeSqrPixel_8u_C1R,
                            [&](auto resize, int) { checkBlocks<1>(resize, bx, by, dw); });
                slots::each(qvrTable_qvriResizeSqrPixel_8u_C4R,
                            [&](auto resize, int) { checkBlocks<4>(resize, bx, by, dw); });
            }
}

TEST(Resize, IdentityCopies)
{
    for (int method : {qvriInterNearest, qvriInterLinear, qvriInterCubic, qvriInterCubicCatmullRom, qvriInterSuper}) {
        slots::each(qvrTable_qvriResizeSqrPixel_8u_C1R, [&](auto resize, int) {
            const std::vector<uint8_t> src = randomValues<uint8_t>(40 * 30, 5);
            std::vector<uint8_t> dst(40 * 30), buffer(1 << 20);
            const qvriRect all = {0, 0, 40, 30};
            ASSERT_EQ(resize(src.data(), {40, 30}, 40, all, dst.data(), 40, all, 1, 1, 0, 0, method, buffer.data()),
                      qvrOk);
            EXPECT_EQ(src, dst) << method;
        });
    }
}

// Sums of the plain cubics begin with their first product, so -0 stays what it is. Those of antialiasing begin at 0.
TEST(Resize, SumsOfNegativeZeros)
{
    const auto run = [&]<class T>(auto resize, T) {
        for (int selector : {int(qvriInterCubicBSpline), qvriInterCubicBSpline | qvriAntialias}) {
            const bool reduces = (selector & qvriAntialias) != 0;
            const qvriRect from = {0, 0, 40, 30}, to = reduces ? qvriRect{0, 0, 20, 15} : qvriRect{0, 0, 80, 60};
            const double factor = reduces ? 0.5 : 2;
            const std::vector<T> src(40 * 30, T(-0.0));
            std::vector<T> dst(size_t(to.width * to.height), T(1));
            std::vector<uint8_t> buffer(1 << 20);
            ASSERT_EQ(resize(src.data(), {40, 30}, 40 * int(sizeof(T)), from, dst.data(), to.width * int(sizeof(T)), to,
                             factor, factor, 0, 0, selector, buffer.data()),
                      qvrOk);
            for (size_t i = 0; i < dst.size(); i++) {
                ASSERT_EQ(dst[i], 0) << i;
                ASSERT_EQ(std::signbit(dst[i]), !reduces) << i;
            }
        }
    };
    slots::each(qvrTable_qvriResizeSqrPixel_32f_C1R, [&](auto resize, int) { run(resize, float{}); });
    slots::each(qvrTable_qvriResizeSqrPixel_64f_C1R, [&](auto resize, int) { run(resize, double{}); });
}

// A NaN goes to every output that has it among its taps, also under weight zero, and to no other.
TEST(Resize, NotANumberPasses)
{
    for (int method : {qvriInterLinear, qvriInterCubic, qvriInterLanczos})
        slots::each(qvrTable_qvriResizeSqrPixel_32f_C1R, [&](auto resize, int) {
            std::vector<float> src(40 * 30, 1.0f), dst(40 * 30);
            std::vector<uint8_t> buffer(1 << 20);
            src[15 * 40 + 20] = NAN;
            const qvriRect all = {0, 0, 40, 30};
            ASSERT_EQ(resize(src.data(), {40, 30}, 160, all, dst.data(), 160, all, 1, 1, 0, 0, method, buffer.data()),
                      qvrOk);
            const int before = method == qvriInterLinear ? 1 : method == qvriInterLanczos ? 3 : 2, after = before - 1;
            for (int y = 0; y < 30; y++)
                for (int x = 0; x < 40; x++)
                    EXPECT_EQ(std::isnan(dst[size_t(y * 40 + x)]),
                              x >= 20 - before && x <= 20 + after && y >= 15 - before && y <= 15 + after)
                        << method << " at " << x << "," << y;
        });
}

// With antialiasing a pixel counts from one end of its reach to the other, even where its weight is zero.
TEST(Resize, WhatIsNoNumberReachesAllItsOutputs)
{
    struct Place {
        int x, y;
    };
    constexpr int kHeight = 40;
    const auto reaches = [](int pixel, int length, int output, int radius) {
        const int low = 2 * output + 1 - 2 * radius, high = 2 * output + 1 + 2 * radius;
        return std::clamp(low, 0, length - 1) <= pixel && pixel <= std::clamp(high, 0, length - 1);
    };
    const auto run = [&]<class T>(auto resize, T, int width) {
        const qvriRect from = {0, 0, width, kHeight}, to = {0, 0, width / 2, kHeight / 2};
        for (int radius = 1; radius <= 3; radius++)
            for (T wild : {T(NAN), T(INFINITY)})
                for (Place p : {Place{0, 0}, {width - 1, kHeight - 1}, {1, 2}, {34, 20}, {35, 21}, {width - 2, 5}}) {
                    const int method = radius == 1 ? qvriInterLinear : radius == 2 ? qvriInterCubic : qvriInterLanczos;
                    std::vector<T> src(size_t(width * kHeight), T(1)), dst(src.size() / 4);
                    src[size_t(p.y * width + p.x)] = wild;
                    int bytes = 0;
                    resize_check::bufferSize<T>(from, to, 1, method | qvriAntialias, &bytes);
                    std::vector<uint8_t> buffer(static_cast<size_t>(bytes));
                    ASSERT_EQ(resize(src.data(), {width, kHeight}, width * int(sizeof(T)), from, dst.data(),
                                     to.width * int(sizeof(T)), to, 0.5, 0.5, 0, 0, method | qvriAntialias,
                                     buffer.data()),
                              qvrOk);
                    for (int y = 0; y < to.height; y++)
                        for (int x = 0; x < to.width; x++)
                            ASSERT_EQ(!std::isfinite(dst[size_t(y * to.width + x)]),
                                      reaches(p.x, width, x, radius) && reaches(p.y, kHeight, y, radius))
                                << wild << " at " << p.x << "," << p.y << ", radius " << radius << ": " << x << ","
                                << y;
                }
    };
    for (int width : {70, 530}) {
        slots::each(qvrTable_qvriResizeSqrPixel_32f_C1R, [&](auto resize, int) { run(resize, float{}, width); });
        slots::each(qvrTable_qvriResizeSqrPixel_64f_C1R, [&](auto resize, int) { run(resize, double{}, width); });
    }
}

// Nothing is computed from what the work buffer held before.
TEST(Resize, WorkBufferOfSignallingNumbers)
{
    constexpr unsigned kTrapping = environment::kInvalid | environment::kDivide | environment::kOverflow;
    const std::vector<uint8_t> src = randomValues<uint8_t>(40 * 40 * 4, 5);
    const auto run = [&](auto f, int channels) {
        for (int method : {qvriInterLinear, qvriInterCubic, qvriInterCubicCatmullRom, qvriInterLanczos})
            for (int width = 1; width <= 70; width++) {
                const qvriRect from = {0, 0, 40, 40}, to = {0, 0, width, 9};
                int bytes = 0;
                ASSERT_EQ(Morven_qvriResizeGetBufSize(from, to, channels, method, &bytes), qvrOk);
                std::vector<uint32_t> buffer(static_cast<size_t>(bytes) / 4 + 1, 0x7FA00001);
                std::vector<uint8_t> dst(static_cast<size_t>(width) * channels * 9);
                const Environment environment(environment::kMasked);
                f(src.data(), {40, 40}, 40 * channels, from, dst.data(), width * channels, to, width / 40.0, 9 / 40.0,
                  0, 0, method, reinterpret_cast<uint8_t*>(buffer.data()));
                ASSERT_EQ(environment.flags() & kTrapping, 0u) << "method " << method << " width " << width;
            }
    };
    slots::each(qvrTable_qvriResizeSqrPixel_8u_C1R, [&](auto f, int) { run(f, 1); });
    slots::each(qvrTable_qvriResizeSqrPixel_8u_C4R, [&](auto f, int) { run(f, 4); });
}

} // namespace
