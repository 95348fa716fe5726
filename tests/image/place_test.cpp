// What an output is must not depend on where it is computed: tiles, strips, work buffers, levels. And extreme factors.
#include <random>

#include "image/resize_check.h"
#include "support/budget.h"

namespace {

using namespace resize_check;

template<class T> std::vector<T> picture(int w, int h, int channels, uint32_t seed)
{
    return sourceValues<T>(size_t(w) * h * channels, seed, false);
}

// A call on whole images of the source's type, with a work buffer of the stated size for these rectangles.
template<class T, int NC> struct Source {
    int w, h;
    std::vector<T> values = picture<T>(w, h, NC, 7);
    int64_t elementAt(int x, int y) const { return (int64_t{y} * w + x) * NC; }
};
template<class T, int NC, class Resize>
void resizeInto(Resize resize, const Source<T, NC>& s, qvriRect from, std::vector<T>& dst, int dstWidth, qvriRect to,
                double fx, double fy, double xShift, double yShift, int interpolation)
{
    int bytes = 0;
    ASSERT_GE((bufferSize<T>(from, to, NC, interpolation, &bytes)), 0);
    Guarded& work = pooledGuarded(2, size_t(bytes) + 64);
    auto* const buffer = work.template atEnd<qvr8u>(size_t(bytes));
    memset(buffer, 0xFF, size_t(bytes)); // no numbers
    const qvrStatus status = resize(s.values.data(), {s.w, s.h}, s.w * NC * int(sizeof(T)), from, dst.data(),
                                    dstWidth * NC * int(sizeof(T)), to, fx, fy, xShift, yShift, interpolation, buffer);
    ASSERT_GE(status, 0);
    ASSERT_TRUE(work.intact());
}

struct Pieces {
    int method;
    double fx, fy;
};
const Pieces kPieces[] = {{qvriInterLinear | int(qvriAntialias), 0.37, 0.61},
                          {qvriInterLinear | int(qvriAntialias), 0.5, 0.5},
                          {qvriInterCubic | int(qvriAntialias), 0.75, 0.23},
                          {qvriInterLanczos | int(qvriAntialias), 0.11, 0.31},
                          {qvriInterLanczos | int(qvriAntialias), 0.5, 1.7},
                          {qvriInterCubicB05C03 | int(qvriAntialias), 0.05, 0.05},
                          {qvriInterSuper, 0.5, 0.5},
                          {qvriInterSuper, 0.75, 0.75},
                          {qvriInterSuper, 0.37, 0.61},
                          {qvriInterSuper, 1.0 / 3, 0.2},
                          {qvriInterSuper, 0.03, 0.011}};

template<class T, int NC> void checkTiles()
{
    const Source<T, NC> s = {203, 151};
    for (const Pieces& p : kPieces) {
        const int dw = int(s.w * p.fx), dh = int(s.h * p.fy);
        const qvriRect all = {0, 0, s.w, s.h};
        slots::each(tableOf<T, NC>(), [&](auto resize, int) {
            std::vector<T> whole(size_t(dw) * dh * NC), tiles(whole.size()), regions(whole.size());
            resizeInto(resize, s, all, whole, dw, {0, 0, dw, dh}, p.fx, p.fy, 0, 0, p.method);
            for (int y = 0; y < dh; y += 5)
                for (int x = 0; x < dw; x += 13) {
                    const qvriRect tile = {x, y, std::min(13, dw - x), std::min(5, dh - y)};
                    resizeInto(resize, s, all, tiles, dw, tile, p.fx, p.fy, 0, 0, p.method);
                    // Just the source under the centres of the tile's pixels: the smallest work buffer.
                    const int x0 = int((x + 0.5) / p.fx), x1 = int((x + tile.width - 0.5) / p.fx);
                    const int y0 = int((y + 0.5) / p.fy), y1 = int((y + tile.height - 0.5) / p.fy);
                    for (int ty = 0; ty < tile.height; ty++)
                        for (int tx = 0; tx < tile.width; tx++)
                            resizeInto(resize, s, {x0, y0, x1 - x0 + 1, y1 - y0 + 1}, regions, dw,
                                       {x + tx, y + ty, 1, 1}, p.fx, p.fy, 0, 0, p.method);
                }
            EXPECT_EQ(memcmp(whole.data(), tiles.data(), whole.size() * sizeof(T)), 0)
                << "method " << std::hex << p.method << " factors " << p.fx << " " << p.fy;
            int wrong = 0;
            for (size_t i = 0; i < whole.size(); i++)
                wrong += !(whole[i] == regions[i]) && regions[i] != T(0);
            EXPECT_EQ(wrong, 0) << "method " << std::hex << p.method << " factors " << p.fx << " " << p.fy;
        });
    }
}

TEST(ResizePlace, TilesAreTheWhole)
{
    checkTiles<uint8_t, 1>();
    checkTiles<uint8_t, 4>();
    checkTiles<float, 1>();
    checkTiles<double, 1>();
}

// Any region, shift and factor, and tiles of any size, which begin where rows and columns have taps of weight 0.
template<class T, int NC> void checkAnyTiles(uint32_t seed)
{
    std::mt19937 random(seed);
    const auto upTo = [&](int n) { return static_cast<int>(random() % uint32_t(n)); };
    const double factors[] = {0.1, 0.2, 0.5, 0.625, 0.75, 1, 1.25, 4.0 / 3, 1.5, 2, 2.5, 3, 0.37, 1.7};
    const int methods[] = {qvriInterNearest,
                           qvriInterLinear,
                           qvriInterCubic,
                           qvriInterSuper,
                           qvriInterLanczos,
                           qvriInterLinear | int(qvriAntialias),
                           qvriInterCubicCatmullRom | int(qvriAntialias),
                           qvriInterLanczos | int(qvriAntialias)};
    for (int turn = 0; turn < 250; turn++) {
        const int method = methods[upTo(8)];
        double fx = factors[upTo(14)], fy = factors[upTo(14)];
        if (method == qvriInterSuper) {
            fx = std::min(fx, 1 / fx);
            fy = std::min(fy, 1 / fy);
        }
        const Source<T, NC> s = {1 + upTo(120), 1 + upTo(40)};
        const double xShift = upTo(2) * (upTo(40) - 20) * 0.25, yShift = upTo(2) * (upTo(40) - 20) * 0.25;
        const qvriRect from = {upTo(s.w), upTo(s.h), s.w, s.h};
        const int dw = int(s.w * fx + std::abs(xShift)) + 2, dh = int(s.h * fy + std::abs(yShift)) + 2;
        std::vector<int> xs = {0}, ys = {0};
        while (xs.back() < dw)
            xs.push_back(std::min(dw, xs.back() + 1 + upTo(70)));
        while (ys.back() < dh)
            ys.push_back(std::min(dh, ys.back() + 1 + upTo(15)));
        slots::each(tableOf<T, NC>(), [&](auto resize, int) {
            std::vector<T> whole(size_t(dw) * dh * NC, T(99)), tiles = whole;
            resizeInto(resize, s, from, whole, dw, {0, 0, dw, dh}, fx, fy, xShift, yShift, method);
            for (size_t i = 1; i < ys.size(); i++)
                for (size_t k = 1; k < xs.size(); k++)
                    resizeInto(resize, s, from, tiles, dw, {xs[k - 1], ys[i - 1], xs[k] - xs[k - 1], ys[i] - ys[i - 1]},
                               fx, fy, xShift, yShift, method);
            EXPECT_EQ(memcmp(whole.data(), tiles.data(), whole.size() * sizeof(T)), 0)
                << "method " << std::hex << method << std::dec << " factors " << fx << " " << fy << " shifts " << xShift
                << " " << yShift << " from " << s.w << "x" << s.h << " at " << from.x << " " << from.y;
        });
        if (testing::Test::HasFailure())
            return;
    }
}

TEST(ResizePlace, AnyTilesAreTheWhole)
{
    checkAnyTiles<uint8_t, 1>(1);
    checkAnyTiles<uint8_t, 4>(2);
    checkAnyTiles<float, 1>(3);
    checkAnyTiles<double, 1>(4);
}

// Long rows at a half take a way of their own, narrow pieces do not. Zeros at the ends of lists are left out there,
// unless pixels times nothing are no numbers, or lines are that overflow.
TEST(ResizePlace, LongRowsOfHalvesAreTheirPieces)
{
    for (int width : {154, 155, 515, 2034})
        for (bool wild : {false, true}) {
            Source<float, 1> s = {width, 80};
            const float values[] = {INFINITY, -INFINITY, NAN, 3.3e38f, -3.3e38f};
            const int rows[] = {0, 15, 31, 46, 79}; // the last of those that are filtered together, too
            for (int i = 0; i < 5 && wild; i++)
                for (int x : {i, 7 + i % 3, width / (i + 2), width - 13 + i % 3, width - 1 - i})
                    s.values[size_t(s.elementAt(x, rows[i]))] = values[i];
            for (int method : {qvriInterLinear, qvriInterCubicCatmullRom, qvriInterCubicBSpline, qvriInterLanczos})
                for (double shift : {0.0, 0.25, -3.0})
                    for (double fy : {0.5, 0.37}) {
                        const qvriRect all = {0, 0, s.w, s.h};
                        const int dw = s.w / 2, dh = int(s.h * fy), selector = method | int(qvriAntialias);
                        slots::each(tableOf<float, 1>(), [&](auto resize, int) {
                            std::vector<float> whole(size_t(dw) * dh), pieces(whole.size());
                            resizeInto(resize, s, all, whole, dw, {0, 0, dw, dh}, 0.5, fy, shift, 0, selector);
                            for (int x = 0; x < dw; x += 13)
                                resizeInto(resize, s, all, pieces, dw, {x, 0, std::min(13, dw - x), dh}, 0.5, fy, shift,
                                           0, selector);
                            std::vector<float> inner = pieces;
                            resizeInto(resize, s, all, inner, dw, {5, 0, dw - 12, dh}, 0.5, fy, shift, 0, selector);
                            const auto same = [](float a, float b) {
                                return std::isnan(a) ? std::isnan(b) : memcmp(&a, &b, sizeof a) == 0;
                            };
                            int wrong = 0;
                            for (size_t i = 0; i < whole.size(); i++)
                                wrong += !same(whole[i], pieces[i]) || !same(inner[i], pieces[i]);
                            EXPECT_EQ(wrong, 0) << width << " pixels, method " << std::hex << method << " shift "
                                                << shift << " down " << fy << " wild " << wild;
                        });
                    }
        }
}

// At whole ratios all columns have one list. Without a shift it is its own mirror image, which rows of some length make
// use of; lists of any number of taps, whole steps of them and rests.
TEST(ResizePlace, WholeRatiosOfBytes)
{
    const auto check = [](int ratio, int columns, double shift, int method, auto form) {
        const int w = ratio * columns + 1;
        const qvriRect to = {0, 0, columns, 3};
        form(Job{{w, 9}, {0, 0, w, 9}, to, 1.0 / ratio, 1.0 / 3, shift, 0, method | int(qvriAntialias)});
    };
    for (int ratio : {2, 3, 4, 5, 7, 8, 9, 10, 11, 16})
        for (int method : {qvriInterLinear, qvriInterCubic, qvriInterLanczos})
            for (double shift : {0.0, 0.5, 0.3}) {
                for (int columns : {63, 64, 65, 70})
                    check(ratio, columns, shift, method, [](const Job& j) { checkForm<uint8_t, 1>(j); });
                for (int columns : {15, 16, 17, 21})
                    check(ratio, columns, shift, method, [](const Job& j) { checkForm<uint8_t, 4>(j); });
                if (HasFailure())
                    return;
            }
}

// From a megabyte on lines are asked for ahead of the stores; strips are smaller.
template<class T, int NC> void checkLargeDestination()
{
    const Source<T, NC> s = {61, 47};
    const int dw = 1203 / int(sizeof(T)), dh = (1 << 20) / (dw * NC * int(sizeof(T))) + 3;
    const double fx = double(dw) / s.w, fy = double(dh) / s.h;
    const qvriRect all = {0, 0, s.w, s.h};
    for (int method : {int(qvriInterNearest), int(qvriInterLinear), int(qvriInterCubic), int(qvriInterLanczos),
                       qvriInterLanczos | int(qvriAntialias)})
        slots::each(tableOf<T, NC>(), [&](auto resize, int) {
            std::vector<T> whole(size_t(dw) * dh * NC, T(99)), strips = whole;
            resizeInto(resize, s, all, whole, dw, {0, 0, dw, dh}, fx, fy, 0, 0, method);
            for (int y = 0; y < dh; y += 300)
                resizeInto(resize, s, all, strips, dw, {0, y, dw, std::min(300, dh - y)}, fx, fy, 0, 0, method);
            EXPECT_EQ(memcmp(whole.data(), strips.data(), whole.size() * sizeof(T)), 0) << "method " << method;
        });
}
TEST(ResizePlace, LargeDestinationsAreTheirStrips)
{
    const Budget one(1);
    checkLargeDestination<uint8_t, 1>();
    checkLargeDestination<uint8_t, 4>();
    checkLargeDestination<float, 1>();
    checkLargeDestination<double, 1>();
}

// A region of one source pixel, of which just one output has its centre inside: no list fits the work buffer.
TEST(ResizePlace, LeastWorkBuffers)
{
    const auto check = [&]<class T, int NC>(Source<T, NC> s) {
        for (int method : {qvriInterLinear, qvriInterCubic, qvriInterLanczos}) {
            const double f = 0.01;
            const int selector = method | int(qvriAntialias);
            slots::each(tableOf<T, NC>(), [&](auto resize, int) {
                std::vector<T> whole(3 * 2 * NC), one(3 * 2 * NC);
                resizeInto(resize, s, {0, 0, s.w, s.h}, whole, 3, {0, 0, 3, 2}, f, f, 0, 0, selector);
                // Shifted by a thousandth of an output pixel, so that its centre lies in the source pixel.
                for (int y = 0; y < 2; y++)
                    for (int x = 0; x < 3; x++)
                        resizeInto(resize, s, {50 + 100 * x - 1, 50 + 100 * y - 1, 2, 2}, one, 3, {0, 0, 3, 2}, f, f, 0,
                                   0, selector);
                for (size_t i = 0; i < whole.size(); i++)
                    EXPECT_EQ(whole[i], one[i]) << "method " << method << " element " << i;
            });
        }
    };
    check(Source<uint8_t, 1>{300, 200});
    check(Source<uint8_t, 4>{300, 200});
    check(Source<float, 1>{300, 200});
    check(Source<double, 1>{300, 200});
}

// Sums over a ramp are often halves.
Source<uint8_t, 1> ramp()
{
    Source<uint8_t, 1> s = {421, 317};
    for (size_t i = 0; i < s.values.size(); i++)
        s.values[i] = uint8_t(i % 421 * 255 / 421 + i / 421 % 3);
    return s;
}

// Bytes of these methods are the same on every slot.
TEST(ResizePlace, SlotsAgreeOnBytes)
{
    const auto check = [&]<int NC>(Source<uint8_t, NC> s) {
        const qvriRect all = {0, 0, s.w, s.h};
        const auto compare = [&](int method, double fx, double fy) {
            const int dw = int(s.w * fx), dh = int(s.h * fy);
            std::vector<uint8_t> first;
            slots::each(tableOf<uint8_t, NC>(), [&](auto resize, int) {
                std::vector<uint8_t> got(size_t(dw) * dh * NC);
                resizeInto(resize, s, all, got, dw, {0, 0, dw, dh}, fx, fy, 0, 0, method);
                if (first.empty())
                    first = got;
                EXPECT_EQ(first, got) << "method " << std::hex << method << " factors " << fx << " " << fy;
            });
        };
        for (const Pieces& p : kPieces)
            compare(p.method, p.fx, p.fy);
        for (int method : {qvriInterNearest, qvriInterLinear})
            for (double f : {0.3, 0.75, 1.6})
                compare(method, f, f);
    };
    check(Source<uint8_t, 1>{421, 317});
    check(Source<uint8_t, 4>{190, 123});
    check(ramp());
}

// The weights of a low pass as prescribed, operation by operation in double: the last bit decides where sums are
// halves.
Taps prescribedTaps(const Axis& axis, int method, int64_t d)
{
    const auto at = [&](double t) {
        const auto sinc = [](double v) { return std::sin(M_PI * v) / (M_PI * v); };
        if (method == qvriInterLinear)
            return t < 1 ? 1 - t : 0;
        if (method == qvriInterLanczos)
            return t == 0 ? 1 : t < 3 ? sinc(t) * sinc(t / 3) : 0;
        // Catmull-Rom
        return t < 1 ? (1.5 * t - 2.5) * t * t + 1 : t < 2 ? ((-0.5 * t + 2.5) * t - 4) * t + 2 : 0;
    };
    const double centre = (double(d) + 0.5) * axis.inv + axis.off, scale = axis.inv > 1 ? 1 / axis.inv : 1;
    const double reach = radiusOf(method) * std::max(axis.inv, 1.0);
    Taps taps;
    double sum = 0;
    for (auto pixel = int64_t(std::ceil(centre - reach)); pixel <= int64_t(centre + reach); pixel++) {
        const double weight = at(std::abs(centre - double(pixel)) * scale) * scale;
        taps.list.push_back({axis.inside(pixel), weight});
        sum += weight;
    }
    for (Tap& tap : taps.list)
        tap.weight /= sum;
    return taps;
}

// The bytes of a low pass as prescribed, operation by operation: along a row products in double to two sums by the
// number of the tap, rounded to a single; down the columns products rounded to singles, added in order.
template<int NC> std::vector<uint8_t> prescribedBytes(const Source<uint8_t, NC>& s, const Job& j)
{
    const Axes axes = axesOf(j, false);
    const size_t dw = size_t(j.dstRoi.width) * NC;
    std::vector<float> lines(dw * size_t(s.h));
    for (int x = 0; x < j.dstRoi.width; x++) {
        const Taps taps = prescribedTaps(axes.x, j.method(), x);
        for (int y = 0; y < s.h; y++)
            for (int c = 0; c < NC; c++) {
                double sum[2] = {};
                for (size_t t = 0; t < taps.list.size(); t++)
                    sum[t % 2] +=
                        s.values[size_t(s.elementAt(taps.list[t].index, y) + c)] * double(float(taps.list[t].weight));
                lines[size_t(y) * dw + size_t(x * NC + c)] = float(sum[0] + sum[1]);
            }
    }
    std::vector<uint8_t> bytes(dw * size_t(j.dstRoi.height));
    for (int y = 0; y < j.dstRoi.height; y++) {
        std::vector<float> sum(dw);
        for (const Tap& tap : prescribedTaps(axes.y, j.method(), y).list)
            for (size_t i = 0; i < dw; i++)
                sum[i] += float(double(lines[size_t(tap.index) * dw + i]) * tap.weight);
        for (size_t i = 0; i < dw; i++)
            bytes[size_t(y) * dw + i] = uint8_t(std::clamp(int(std::trunc(double(sum[i]) + 0.5000001)), 0, 255));
    }
    return bytes;
}

// Blocks of two bytes: sums next to their edges are halves, or singles between which a sum is just in the middle.
template<int NC> Source<uint8_t, NC> blocks(int w, int h, int side, uint8_t low, uint8_t high)
{
    Source<uint8_t, NC> s = {w, h};
    for (int y = 0; y < h; y++)
        for (int x = 0; x < w; x++)
            for (int c = 0; c < NC; c++)
                s.values[size_t(s.elementAt(x, y) + c)] =
                    (x / side + y / side + (x / side * y / side + c) / 3) % 2 ? high : low;
    return s;
}

TEST(ResizePlace, LowPassBytesAreThePrescribed)
{
    const auto check = [&]<int NC>(const Source<uint8_t, NC>& s, std::initializer_list<double> factors, double shift) {
        for (int method : {qvriInterLinear, qvriInterCubicCatmullRom, qvriInterLanczos})
            for (double f : factors) {
                Job j = wholeImage(s.w, s.h, f, f, method | int(qvriAntialias));
                j.xShift = j.yShift = shift;
                const std::vector<uint8_t> want = prescribedBytes(s, j);
                slots::each(tableOf<uint8_t, NC>(), [&](auto resize, int) {
                    std::vector<uint8_t> got(want.size());
                    resizeInto(resize, s, j.srcRoi, got, j.dstRoi.width, j.dstRoi, f, f, shift, shift, j.interpolation);
                    int wrong = 0;
                    for (size_t i = 0; i < want.size(); i++)
                        wrong += got[i] != want[i];
                    EXPECT_EQ(wrong, 0) << NC << " channels, method " << method << " factor " << f << " shift "
                                        << shift;
                });
            }
    };
    const auto usual = {0.5, 0.75, 0.625, 0.37, 0.2, 1.3};
    check(Source<uint8_t, 1>{421, 317}, usual, 0);
    check(Source<uint8_t, 4>{190, 123}, usual, 0);
    check(ramp(), usual, 0);
    const auto more = {0.5, 0.75, 0.625, 0.8, 0.37, 0.45, 1.0 / 3, 0.2, 0.13, 0.08};
    for (int side : {1, 2, 5, 11}) {
        check(blocks<1>(203, 97, side, 0, 255), more, 0);
        check(blocks<1>(203, 97, side, 17, 210), more, 0);
        check(blocks<4>(101, 67, side, 0, 255), more, 0);
    }
    check(Source<uint8_t, 1>{203, 97, std::vector<uint8_t>(203 * 97, 255)}, more, 0);
    check(Source<uint8_t, 1>{203, 97}, more, 0);
    // Sums along rows in the middle of two singles, and columns with weights next to nothing.
    Source<uint8_t, 1> slope = {1493, 23}, stripes = {875, 48}, steep = {875, 48};
    for (int y = 0; y < 48; y++)
        for (int x = 0; x < 1493; x++) {
            if (y < slope.h)
                slope.values[size_t(slope.elementAt(x, y))] = uint8_t(x + y * 3 / 2);
            if (x < stripes.w) {
                stripes.values[size_t(stripes.elementAt(x, y))] = (x / 2 + y) % 2 ? 176 : 103;
                steep.values[size_t(steep.elementAt(x, y))] = uint8_t(x * 180 / 16 + y * 72 / 16);
            }
        }
    check(slope, {0.75, 0.625, 0.45, 1.0 / 3}, 0);
    check(stripes, {0.75, 0.625, 1.0 / 3}, 0);
    check(steep, {0.45}, 0); // a sum that one output row takes and its neighbour another one takes
    for (double shift : {0.25, 0.375, 0.1})
        check(blocks<1>(203, 97, 2, 0, 255), more, shift);
}

// ---- Means against whole numbers -----------------------------------------------------------------------------------

// What position d of an axis of ratio p / q covers of every pixel, in parts of 1 / q; the edge pixels go on outside.
std::vector<int64_t> covers(int length, int64_t p, int64_t q, int64_t at, int d)
{
    std::vector<int64_t> w(static_cast<size_t>(length));
    for (int64_t part = d * p + at; part < (d + 1) * p + at; part++)
        w[size_t(std::clamp<int64_t>(part >= 0 ? part / q : -1, 0, length - 1))]++;
    return w;
}
template<int NC> void checkMeans(const Source<uint8_t, NC>& s, int px, int qx, int py, int qy, int at)
{
    const int dw = int(int64_t{s.w} * qx / px), dh = int(int64_t{s.h} * qy / py);
    if (dw == 0 || dh == 0)
        return;
    const double fx = double(qx) / px, fy = double(qy) / py, xShift = -double(at) / qx * fx;
    slots::each(tableOf<uint8_t, NC>(), [&](auto resize, int) {
        std::vector<uint8_t> got(size_t(dw) * dh * NC);
        resizeInto(resize, s, {0, 0, s.w, s.h}, got, dw, {0, 0, dw, dh}, fx, fy, xShift, 0, qvriInterSuper);
        const int last = int(std::trunc((s.w * fx + xShift) + 0.5000000001));
        int wrong = 0;
        for (int y = 0; y < dh; y++)
            for (int x = 0; x < std::min(dw, last); x++)
                for (int c = 0; c < NC; c++) {
                    const auto wx = covers(s.w, px, qx, at, x), wy = covers(s.h, py, qy, 0, y);
                    int64_t sum = 0;
                    for (int v = 0; v < s.h; v++)
                        for (int u = 0; wy[size_t(v)] > 0 && u < s.w; u++)
                            sum += wx[size_t(u)] * wy[size_t(v)] * s.values[size_t(s.elementAt(u, v)) + c];
                    const int64_t parts = int64_t{px} * py;
                    wrong += got[(size_t(y) * dw + x) * NC + c] != (2 * sum + parts) / (2 * parts);
                }
        EXPECT_EQ(wrong, 0) << px << "/" << qx << " by " << py << "/" << qy << " from " << at;
    });
}

TEST(ResizePlace, MeansOfBytesAreExact)
{
    const int ratios[][4] = {{4, 3, 4, 3}, {3, 2, 5, 4},   {64, 25, 720, 281},   {125, 47, 8, 5}, {37, 4, 3, 1},
                             {1, 1, 7, 1}, {61, 1, 59, 1}, {499, 257, 383, 211}, {9, 8, 17, 16}};
    for (const auto& r : ratios)
        for (int at : {0, 1, 3}) {
            checkMeans(Source<uint8_t, 1>{128, 73}, r[0], r[1], r[2], r[3], at);
            checkMeans(Source<uint8_t, 4>{70, 41}, r[0], r[1], r[2], r[3], at);
        }
    // Many halves.
    Source<uint8_t, 1> steps = {128, 73};
    for (size_t i = 0; i < steps.values.size(); i++)
        steps.values[i] = uint8_t(i % 128 / 2 * 2 + i / 128 % 2);
    for (const auto& r : ratios)
        checkMeans(steps, r[0], r[1], r[2], r[3], 0);
}

// A constant stays that constant at every size, a large one of floats to 4 units in the last place.
TEST(ResizePlace, MeansOfConstants)
{
    for (double f : {0.75, 0.3, 0.123456789, 0.9999, 1.0 / 7, 0.0101, 1.0})
        for (int value : {1, 100, 127, 255}) {
            const Source<uint8_t, 1> s = {210, 130, std::vector<uint8_t>(210 * 130, uint8_t(value))};
            const int dw = int(210 * f + 0.5), dh = int(130 * f + 0.5);
            slots::each(tableOf<uint8_t, 1>(), [&](auto resize, int) {
                std::vector<uint8_t> got(size_t(dw) * dh);
                resizeInto(resize, s, {0, 0, 210, 130}, got, dw, {0, 0, dw, dh}, f, f, 0.17, 0.29, qvriInterSuper);
                EXPECT_EQ(std::count(got.begin(), got.end(), value), dw * dh) << value << " " << f;
            });
        }
    const auto large = [&]<class T>(T value, int size) {
        const Source<T, 1> s = {size, size, std::vector<T>(size_t(size) * size, value)};
        slots::each(tableOf<T, 1>(), [&](auto resize, int slot) {
            if (slot != slots::mx && slot != slots::l9)
                return;
            std::vector<T> got(1);
            resizeInto(resize, s, {0, 0, size, size}, got, 1, {0, 0, 1, 1}, 1.0 / size, 1.0 / size, 0, 0,
                       qvriInterSuper);
            const double unit = std::nextafter(value, T(1e9)) - value;
            EXPECT_LE(std::abs(double(got[0]) - double(value)), 4 * unit) << value << " " << size;
        });
    };
    for (float value : {100.0f, 0.1f, 12345.678f}) {
        large(value, 1000);
        large(value, 3000);
        large(double(value) / 3, 3000);
    }
}

// The same at any phase of small ratios, where the last outputs have fewer pixels than the others.
TEST(ResizePlace, MeansOfConstantsAtTheEdge)
{
    const auto check = [&]<int NC>() {
        const Source<uint8_t, NC> s = {37, 21, std::vector<uint8_t>(37 * 21 * NC, 200)};
        for (double reduction : {1.25, 4.0 / 3, 2.0, 2.5, 3.0, 4.0, 5.0, 6.0, 6.5, 7.0, 9.0})
            for (int phase = 0; phase < 50; phase++) {
                const double f = 1 / reduction, shift = phase / 25.0;
                const int dw = int(37 * f) + 4, dh = int(21 * f) + 4;
                slots::each(tableOf<uint8_t, NC>(), [&](auto resize, int) {
                    std::vector<uint8_t> got(size_t(dw) * dh * NC, 201);
                    resizeInto(resize, s, {0, 0, 37, 21}, got, dw, {0, 0, dw, dh}, f, f, shift, 0, qvriInterSuper);
                    const auto kept = std::count(got.begin(), got.end(), 201);
                    EXPECT_LT(kept, std::ssize(got));
                    EXPECT_EQ(std::count(got.begin(), got.end(), 200) + kept, std::ssize(got))
                        << NC << " channels, reduced " << reduction << " times, shift " << shift;
                });
            }
    };
    check.template operator()<1>();
    check.template operator()<4>();
}

// Most of the covered source is outside: what is left of the centre is the left edge, and so on.
TEST(ResizePlace, MeansOfExtremeFactors)
{
    const auto check = [&]<class T, int NC>(Source<T, NC> s) {
        const double left = double(s.values[size_t(s.elementAt(0, 0))]);
        for (double f : {1e-9, 1e-12, 1e-17, 1e-100, 1e-300, 1e-308})
            slots::each(tableOf<T, NC>(), [&](auto resize, int) {
                std::vector<T> got(NC);
                resizeInto(resize, s, {0, 0, s.w, s.h}, got, 1, {0, 0, 1, 1}, f, f, 0.5, 0.5, qvriInterSuper);
                const double corners = (left + double(s.values[size_t(s.elementAt(s.w - 1, 0))]) +
                                        double(s.values[size_t(s.elementAt(0, s.h - 1))]) +
                                        double(s.values[size_t(s.elementAt(s.w - 1, s.h - 1))])) /
                                       4;
                EXPECT_NEAR(double(got[0]), corners, sizeof(T) == 1 ? 0.51 : 1e-4) << "factor " << f;
            });
    };
    check(Source<uint8_t, 1>{64, 48});
    check(Source<uint8_t, 4>{64, 48});
    check(Source<float, 1>{64, 48});
    check(Source<double, 1>{64, 48});
}

// ---- What low-pass weights preserve ---------------------------------------------------------------------------------

constexpr int kLowPass[] = {qvriInterLinear,          qvriInterCubic,       qvriInterCubicBSpline,
                            qvriInterCubicCatmullRom, qvriInterCubicB05C03, qvriInterLanczos};

// The sum of all weights is one, so a constant stays that constant.
TEST(ResizePlace, LowPassOfConstants)
{
    const auto check = [&]<class T>(T value, double units) {
        const Source<T, 1> s = {97, 61, std::vector<T>(97 * 61, value)};
        for (int method : kLowPass)
            for (double f : {0.5, 0.75, 1.0 / 3, 0.3, 0.123456789, 1.0, 1.7, 0.02})
                slots::each(tableOf<T, 1>(), [&](auto resize, int) {
                    const int dw = int(97 * f + 0.5), dh = std::max(1, int(61 * f + 0.5));
                    std::vector<T> got(size_t(dw) * dh, value);
                    resizeInto(resize, s, {0, 0, 97, 61}, got, dw, {0, 0, dw, dh}, f, f, 0.17, 0.29,
                               method | int(qvriAntialias));
                    for (T v : got)
                        ASSERT_NEAR(double(v), double(value), units) << "method " << method << " factor " << f;
                });
    };
    for (uint8_t value : {0, 1, 77, 128, 255})
        check(value, 0);
    check(100.0f, 4 * 0x1p-17);
    check(100.0, 16 * 0x1p-46);
}

// A ramp stays a ramp: pixel j holds j, so an output holds its centre. Exactly where the weights balance round it, as
// those of a triangle of whole width do; the others are off by less than a tenth of the step between outputs.
TEST(ResizePlace, LowPassOfRamps)
{
    const int width = 240, height = 12;
    Source<double, 1> ramp = {width, height};
    for (int i = 0; i < width * height; i++)
        ramp.values[size_t(i)] = i % width;
    const Source<float, 1> single = {width, height, std::vector<float>(ramp.values.begin(), ramp.values.end())};
    const Source<uint8_t, 1> byte = {width, height, std::vector<uint8_t>(ramp.values.begin(), ramp.values.end())};
    const auto check = [&]<class T>(const Source<T, 1>& s, int method, double inv) {
        const int dw = int(width / inv), margin = int(std::ceil(4 * std::max(1.0, 1 / inv)));
        const bool exact = method == qvriInterLinear && inv == std::floor(inv);
        const double unit = sizeof(T) == 1 ? 0.5001 : sizeof(T) == 4 ? 1e-4 : 1e-11;
        slots::each(tableOf<T, 1>(), [&](auto resize, int) {
            std::vector<T> got(size_t(dw) * height);
            resizeInto(resize, s, {0, 0, width, height}, got, dw, {0, 0, dw, height}, 1 / inv, 1, 0, 0,
                       method | int(qvriAntialias));
            for (int x = margin; x < dw - margin; x++)
                ASSERT_NEAR(double(got[size_t(x)]), (x + 0.5) * inv, unit + (exact ? 0 : 0.1 * inv))
                    << "method " << method << " step " << inv << " x " << x;
        });
    };
    for (int method : kLowPass)
        for (double inv : {1.0, 2.0, 3.0, 5.0, 4.0 / 3, 2.56, 0.5, 0.37}) {
            check(ramp, method, inv);
            check(single, method, inv);
            check(byte, method, inv);
        }
}

// ---- Low-pass sums against long doubles -----------------------------------------------------------------------------

long double lowPassKernelExactly(int method, long double t)
{
    const long double pi = acosl(-1.0L);
    if (method == qvriInterLinear)
        return t < 1 ? 1 - t : 0;
    if (method == qvriInterLanczos)
        return t == 0 ? 1 : t < 3 ? sinl(pi * t) * sinl(pi * t / 3) * 3 / (pi * pi * t * t) : 0;
    // Catmull-Rom
    return t < 1 ? (1.5L * t - 2.5L) * t * t + 1 : t < 2 ? ((-0.5L * t + 2.5L) * t - 4) * t + 2 : 0;
}
// The weight of every pixel for the output at 0 whose centre falls on `centre`.
std::vector<long double> exactWeights(int method, int length, long double centre, long double inv)
{
    const long double radius = method == qvriInterLinear ? 1 : method == qvriInterLanczos ? 3 : 2;
    std::vector<long double> w(static_cast<size_t>(length));
    long double sum = 0;
    for (auto j = int64_t(ceill(centre - radius * inv)); j <= int64_t(floorl(centre + radius * inv)); j++) {
        const long double k = lowPassKernelExactly(method, fabsl(centre - j) / inv);
        w[size_t(std::clamp<int64_t>(j, 0, length - 1))] += k;
        sum += k;
    }
    for (auto& x : w)
        x /= sum;
    return w;
}

// From a few taps to millions of clamped ones.
TEST(ResizePlace, LowPassOfStrongReductions)
{
    const Source<double, 1> s = {64, 48};
    const Source<float, 1> single = {64, 48, std::vector<float>(s.values.begin(), s.values.end())};
    for (int method : {qvriInterLinear, qvriInterCubicCatmullRom, qvriInterLanczos})
        for (double f : {0.1, 1e-2, 1e-3, 1e-4, 1e-5, 1e-6}) {
            const double xShift = 0.5 - 20.25 * f, yShift = 0.5 - 30.5 * f;
            const auto wx = exactWeights(method, s.w, (0.5L - xShift) / f, 1.0L / f);
            const auto wy = exactWeights(method, s.h, (0.5L - yShift) / f, 1.0L / f);
            long double want = 0, magnitude = 0;
            for (int y = 0; y < s.h; y++)
                for (int x = 0; x < s.w; x++) {
                    const long double term = wx[size_t(x)] * wy[size_t(y)] * s.values[size_t(s.elementAt(x, y))];
                    want += term;
                    magnitude += fabsl(term);
                }
            // What is known of the centre: shift / f has a relative error of 2^-53.
            const double place = 1e-15 / f / s.w * 300;
            slots::each(tableOf<double, 1>(), [&](auto resize, int) {
                std::vector<double> got(1);
                resizeInto(resize, s, {0, 0, s.w, s.h}, got, 1, {0, 0, 1, 1}, f, f, xShift, yShift,
                           method | int(qvriAntialias));
                EXPECT_NEAR(got[0], double(want), 1e-8 * double(magnitude) + place) << method << " " << f;
            });
            slots::each(tableOf<float, 1>(), [&](auto resize, int) {
                std::vector<float> got(1);
                resizeInto(resize, single, {0, 0, s.w, s.h}, got, 1, {0, 0, 1, 1}, f, f, xShift, yShift,
                           method | int(qvriAntialias));
                EXPECT_NEAR(got[0], double(want), 5e-4 * double(magnitude)) << method << " " << f;
            });
        }
}

// Factors at the end of what a double holds: the corners' mean, since all other taps are copies of them.
TEST(ResizePlace, LowPassOfExtremeFactors)
{
    const auto check = [&]<class T, int NC>(Source<T, NC> s) {
        double corners = 0;
        for (int y : {0, s.h - 1})
            for (int x : {0, s.w - 1})
                corners += double(s.values[size_t(s.elementAt(x, y))]) / 4;
        for (int method : {qvriInterLinear, qvriInterCubic, qvriInterCubicBSpline, qvriInterLanczos})
            for (double f : {1e-9, 1e-15, 1e-100, 1e-300, 1e-308, 4e-320})
                slots::each(tableOf<T, NC>(), [&](auto resize, int) {
                    std::vector<T> got(NC);
                    resizeInto(resize, s, {0, 0, s.w, s.h}, got, 1, {0, 0, 1, 1}, f, f, 0.5, 0.5,
                               method | int(qvriAntialias));
                    EXPECT_NEAR(double(got[0]), corners,
                                sizeof(T) == 1   ? 0.51
                                : sizeof(T) == 4 ? 0.02
                                                 : 1e-5)
                        << "method " << method << " factor " << f;
                });
    };
    check(Source<uint8_t, 1>{64, 48});
    check(Source<uint8_t, 4>{64, 48});
    check(Source<float, 1>{64, 48});
    check(Source<double, 1>{64, 48});
}

// So large that all centres fall on one place.
TEST(ResizePlace, ExtremeEnlargement)
{
    const Source<float, 1> s = {64, 48};
    for (int method : {qvriInterNearest, qvriInterLinear, qvriInterCubic, qvriInterCubicCatmullRom, qvriInterLanczos})
        for (double f : {1e100, 1e200, 1e300})
            slots::each(tableOf<float, 1>(), [&](auto resize, int) {
                std::vector<float> got(6);
                resizeInto(resize, s, {0, 0, s.w, s.h}, got, 3, {0, 0, 3, 2}, f, f, 0, 0, method | int(qvriAntialias));
                for (float v : got)
                    EXPECT_EQ(v, s.values[0]) << "method " << method << " factor " << f;
            });
}

// Less than 1e-10 of a border pixel is none.
TEST(ResizePlace, EdgesOfNearlyWholePixels)
{
    for (double shift : {1.0, 1 - 1e-12, 1 + 1e-12, 1 - 0x1p-52})
        for (int flag : {int(qvriEdgeBlend), int(qvriEdgeFade)})
            slots::each(tableOf<uint8_t, 1>(), [&](auto resize, int) {
                const Source<uint8_t, 1> s = {8, 8, std::vector<uint8_t>(64, 200)};
                std::vector<uint8_t> got(100, 77);
                resizeInto(resize, s, {0, 0, 8, 8}, got, 10, {0, 0, 10, 10}, 1, 1, shift, shift,
                           qvriInterLinear | flag);
                for (int i = 0; i < 100; i++) {
                    const bool inside = i % 10 >= 1 && i % 10 <= 8 && i / 10 >= 1 && i / 10 <= 8;
                    EXPECT_EQ(got[size_t(i)], inside ? 200 : 77) << "shift " << shift << " place " << i;
                }
            });
}

} // namespace
