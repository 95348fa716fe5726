// Resizing as its contract states it, one destination element at a time: the taps of both axes, and the sum over all
// pairs of them in double. Kernels are written from their definitions, in long double.
#ifndef QVR_MODEL_RESIZE_H
#define QVR_MODEL_RESIZE_H

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <type_traits>
#include <vector>

#include "frame/types.h"

namespace resize_model {

inline constexpr int kMethods[] = {qvriInterNearest,      qvriInterLinear,          qvriInterCubic,
                                   qvriInterCubicBSpline, qvriInterCubicCatmullRom, qvriInterCubicB05C03,
                                   qvriInterSuper,        qvriInterLanczos};

struct Job {
    qvriSize srcSize;
    qvriRect srcRoi, dstRoi;
    double xFactor, yFactor, xShift, yShift;
    int interpolation;
    int method() const { return interpolation & 0x1FFFFFFF; }
    bool edges() const { return interpolation & (qvriEdgeBlend | qvriEdgeFade); }
    bool antialias() const { return interpolation & qvriAntialias; }
};

// ---- Geometry -------------------------------------------------------------------------------------------------------

// Destination pixels min .. max - 1 of an axis show the part minF .. maxF of the image's picture. The source coordinate
// of a destination coordinate t is t inv + off.
struct Axis {
    double inv, off, minF, maxF;
    int64_t min, max;
    int length;
    double sourceOf(double t) const { return t * inv + off; }
    int inside(int64_t i) const { return int(std::clamp<int64_t>(i, 0, length - 1)); }
};

struct Span {
    int at, count;
};
// Null extent: nothing of the picture lies in the destination.
inline Axis axisOf(int length, Span source, Span destination, double factor, double shift, bool wholePixels)
{
    const Span used = {source.at, std::min(source.count, length - source.at)};
    const auto pictureOf = [&](int pixel) { return pixel * factor + shift; };
    Axis axis = {1.0 / factor, 0 - shift / factor, pictureOf(used.at), pictureOf(used.at + used.count), 0, 0, length};
    if (std::isnan(axis.minF + axis.maxF))
        return axis;
    axis.minF = std::max(axis.minF, double(destination.at));
    axis.maxF = std::min(axis.maxF, double(destination.at) + destination.count);
    const double first = wholePixels ? std::ceil(axis.minF - 1e-10) : std::trunc(axis.minF + 0.4999999999);
    const double end = wholePixels ? std::floor(axis.maxF + 1e-10) : std::trunc(axis.maxF + 0.5000000001);
    if (first < end) {
        axis.min = int64_t(first);
        axis.max = int64_t(end);
    }
    return axis;
}
struct Axes {
    Axis x, y;
    bool empty() const { return x.min >= x.max || y.min >= y.max; }
};
inline Axes axesOf(const Job& j, bool wholePixels)
{
    return {axisOf(j.srcSize.width, {j.srcRoi.x, j.srcRoi.width}, {j.dstRoi.x, j.dstRoi.width}, j.xFactor, j.xShift,
                   wholePixels),
            axisOf(j.srcSize.height, {j.srcRoi.y, j.srcRoi.height}, {j.dstRoi.y, j.dstRoi.height}, j.yFactor, j.yShift,
                   wholePixels)};
}

// ---- Kernels --------------------------------------------------------------------------------------------------------

// The method that stands in where a side of the image is shorter than the number of taps.
inline int effectiveMethod(const Job& j)
{
    const int side = std::min(j.srcSize.width, j.srcSize.height), method = j.method();
    const bool cubic = method >= qvriInterCubic && method <= qvriInterCubicB05C03;
    if (side < 4 && (cubic || method == qvriInterLanczos))
        return qvriInterLinear;
    return side < 6 && method == qvriInterLanczos ? int(qvriInterCubic) : method;
}
inline int radiusOf(int method)
{
    return method == qvriInterLinear ? 1 : method == qvriInterLanczos ? 3 : 2;
}

inline long double sinc(long double x)
{
    const long double angle = std::acos(-1.0L) * x;
    return x == 0 ? 1 : std::sin(angle) / angle;
}
// The cubics of two parameters: B blurs, C sharpens.
inline long double cubicOf(long double b, long double c, long double t)
{
    const long double t2 = t * t, t3 = t2 * t;
    if (t < 1)
        return ((12 - 9 * b - 6 * c) * t3 + (12 * b + 6 * c - 18) * t2 + (6 - 2 * b)) / 6;
    return ((-b - 6 * c) * t3 + (6 * b + 30 * c) * t2 - (12 * b + 48 * c) * t + (8 * b + 24 * c)) / 6;
}
// The Lagrange polynomial through four neighbours that is 1 at the one at distance t.
inline long double lagrangeOf(long double t)
{
    return t < 1 ? (1 - t) * (1 + t) * (2 - t) / 2 : (1 - t) * (2 - t) * (3 - t) / 6;
}
// The weight at distance t.
inline long double kernelOf(int method, long double t)
{
    if (t >= radiusOf(method))
        return 0;
    switch (method) {
    case qvriInterLinear:
        return 1 - t;
    case qvriInterCubic:
        return lagrangeOf(t);
    case qvriInterCubicBSpline:
        return cubicOf(1, 0, t);
    case qvriInterCubicCatmullRom:
        return cubicOf(0, 0.5L, t);
    case qvriInterCubicB05C03:
        return cubicOf(0.5L, 0.3L, t);
    default:
        return sinc(t) * sinc(t / 3);
    }
}
// Without antialiasing Lanczos is a table of singles at hundredths, joined by lines, in the type of the work.
template<class Work> double lanczosTable(Work distance)
{
    const Work place = std::abs(distance) * 100;
    if (!(std::abs(distance) < 3) || place >= 300)
        return 0;
    const auto entry = [](int n) {
        return Work(float(n % 100 == 0 ? n == 0 : kernelOf(qvriInterLanczos, n / 100.0L)));
    };
    const int below = int(place);
    return double(entry(below) + (entry(below + 1) - entry(below)) * (place - Work(below)));
}

// ---- Taps -----------------------------------------------------------------------------------------------------------

struct Tap {
    int index;
    double weight;
};
struct Taps {
    std::vector<Tap> list;
    bool single = false; // a position beside the image, which has one pixel
    double fraction = 0;
};

// Four neighbours and the like: the fraction behind the pixel, rounded to the type of the work, gives the distances.
template<class Work> Taps plainTaps(const Axis& axis, int method, int64_t d)
{
    const double place = (double(d) + 0.5) * axis.inv + (axis.off - 0.5), pixel = std::floor(place);
    const Work fraction = Work(place - pixel);
    Taps taps;
    taps.fraction = double(fraction);
    taps.single = pixel < 0 || pixel >= axis.length - 1;
    const int radius = radiusOf(method);
    for (int k = 1 - radius; k <= radius; k++) {
        double weight = double(Work(kernelOf(method, std::abs(k - (long double)(fraction)))));
        if (method == qvriInterLanczos)
            weight = lanczosTable(Work(Work(k) - fraction));
        if (method == qvriInterLinear)
            weight = taps.single ? double(k == 0) : k == 0 ? 1 - taps.fraction : taps.fraction;
        taps.list.push_back({axis.inside(int64_t(pixel) + k), weight});
    }
    return taps;
}

// With antialiasing: all pixels within the stretched radius of the centre, weights divided by their sum.
template<class Work> Taps lowPassTaps(const Axis& axis, int method, int64_t d, bool roundWeights)
{
    const double stretch = std::max(axis.inv, 1.0), reach = radiusOf(method) * stretch;
    const double centre = axis.sourceOf(double(d) + 0.5);
    Taps taps;
    long double sum = 0;
    for (int64_t pixel = int64_t(std::ceil(centre - reach)); pixel <= int64_t(centre + reach); pixel++) {
        const double weight = double(kernelOf(method, std::abs(centre - double(pixel)) / stretch));
        taps.list.push_back({axis.inside(pixel), weight});
        sum += weight;
    }
    for (Tap& tap : taps.list) {
        tap.weight = double(tap.weight / sum);
        if (roundWeights)
            tap.weight = double(Work(tap.weight));
    }
    return taps;
}

// Supersampling: what the output's interval has of each pixel; less than 1e-7 counts as nothing.
inline Taps coverTaps(const Axis& axis, int64_t d)
{
    const double from = axis.sourceOf(double(d)), to = from + axis.inv;
    Taps taps;
    for (int64_t pixel = int64_t(std::floor(from)) - 1; pixel <= int64_t(std::floor(to)) + 1; pixel++) {
        const double common = std::min(to, double(pixel + 1)) - std::max(from, double(pixel));
        if (common > 1e-7)
            taps.list.push_back({axis.inside(pixel), common});
    }
    return taps;
}

inline Taps nearestTap(const Axis& axis, int64_t d)
{
    Taps taps;
    taps.list.push_back({int((double(d) + 0.5) * axis.inv + (axis.off - 1e-10)), 1});
    return taps;
}

// ---- Outputs --------------------------------------------------------------------------------------------------------

// The exact value, and the sum of magnitudes that bounds rounding errors. A weight is a sum of parts of about 1, so its
// error does not shrink with it.
struct Value {
    double value, magnitude;
};

template<class Get> Value weigh(const Taps& x, const Taps& y, double scale, Get&& get)
{
    const auto sizeOf = [](const Tap& tap) { return std::max(std::abs(tap.weight), 1.0 / 64); };
    Value v = {0, 0};
    for (const Tap& row : y.list)
        for (const Tap& column : x.list) {
            const double term = row.weight * column.weight * double(get(column.index, row.index));
            v.value += term;
            v.magnitude += sizeOf(row) * sizeOf(column) * std::abs(double(get(column.index, row.index)));
        }
    return {v.value * scale, v.magnitude * scale};
}

// Linear interpolation of bytes: weights of 14 bits; two roundings, or one where one row or one column is involved.
template<class Get> int linearByte(const Taps& x, const Taps& y, Get&& get)
{
    constexpr int kOne = 1 << 14;
    const auto word = [](const Taps& t) { return int(t.fraction * kOne + 1e-7); };
    const auto mixed = [](int a, int b, int w) { return a * (kOne - w) + b * w; };
    const int left = x.list[0].index, right = x.list[1].index, upper = y.list[0].index, lower = y.list[1].index;
    if (y.single)
        return (mixed(get(left, upper), get(right, upper), word(x)) + kOne / 2) >> 14;
    if (x.single)
        return (mixed(get(left, upper), get(left, lower), word(y)) + kOne / 2) >> 14;
    const auto along = [&](int row) { return (mixed(get(left, row), get(right, row), word(x)) + 128) >> 8; };
    return std::clamp((mixed(along(upper), along(lower), word(y)) + 0x80000) >> 20, 0, 255);
}

// Resizes `src` (pixel (x, y), channel c by get) into values; `check(x, y, c, Value, exactByte)` for each produced
// element, exactByte being -1 where the value is to be rounded.
template<class T, class Get, class Check> qvrStatus produce(const Job& j, int channels, Get&& get, Check&& check)
{
    using Work = std::conditional_t<std::is_same_v<T, double>, double, float>;
    if (j.srcRoi.x >= j.srcSize.width || j.srcRoi.y >= j.srcSize.height)
        return qvrWarnRoiOutside;
    const Axes axes = axesOf(j, j.edges());
    if (axes.empty())
        return qvrWarnNothingToDo;
    const int method = effectiveMethod(j);
    const bool nearest = method == qvriInterNearest, super = method == qvriInterSuper;
    const bool lowPass = j.antialias() && !nearest && !super, byte = std::is_same_v<T, uint8_t>;
    const auto allTaps = [&](const Axis& axis, bool columns) {
        std::vector<Taps> taps;
        for (int64_t d = axis.min; d < axis.max; d++)
            taps.push_back(nearest   ? nearestTap(axis, d)
                           : super   ? coverTaps(axis, d)
                           : lowPass ? lowPassTaps<Work>(axis, method, d, columns)
                                     : plainTaps<Work>(axis, method, d));
        return taps;
    };
    const std::vector<Taps> columns = allTaps(axes.x, true), rows = allTaps(axes.y, false);
    for (size_t y = 0; y < rows.size(); y++)
        for (size_t x = 0; x < columns.size(); x++)
            for (int c = 0; c < channels; c++) {
                const auto at = [&](int sx, int sy) { return get(sx, sy, c); };
                int exact = -1;
                if constexpr (std::is_same_v<T, uint8_t>)
                    if (method == qvriInterLinear && !lowPass)
                        exact = linearByte(columns[x], rows[y], at);
                const Value v = weigh(columns[x], rows[y], super ? j.xFactor * j.yFactor : 1, at);
                check(axes.x.min + int64_t(x), axes.y.min + int64_t(y), c, v, byte && nearest ? int(v.value) : exact);
            }
    return j.antialias() && (nearest || super) ? qvrWarnNoAntialiasing : qvrOk;
}

// The pixels round the produced block: treat(outer x, y, inner x, y, coverage).
template<class Treat> void treatEdges(const Job& j, Treat&& treat)
{
    const Axes axes = axesOf(j, true);
    if (axes.empty())
        return;
    // What the picture covers of the pixel next to the block on each side. Less than 1e-10 of a pixel, covered or
    // uncovered, is none.
    const auto coverOf = [](const Axis& a, int64_t d) {
        if (d >= a.min && d < a.max)
            return 1.0;
        const double border = d < a.min ? a.minF : a.maxF, part = border - std::trunc(border);
        return part <= 1e-10 || part + 1e-10 >= 1 ? 0.0 : d < a.min ? 1 - part : part;
    };
    for (int64_t y = axes.y.min - 1; y <= axes.y.max; y++)
        for (int64_t x = axes.x.min - 1; x <= axes.x.max; x++) {
            const int64_t ix = std::clamp(x, axes.x.min, axes.x.max - 1),
                          iy = std::clamp(y, axes.y.min, axes.y.max - 1);
            const double cover = coverOf(axes.x, x) * coverOf(axes.y, y);
            if ((ix != x || iy != y) && cover != 0)
                treat(x, y, ix, iy, cover);
        }
}

} // namespace resize_model

#endif
