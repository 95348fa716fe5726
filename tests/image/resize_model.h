// Resizing as its contract states it: one destination pixel at a time, sums in double.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <type_traits>
#include <vector>

#include "frame/types.h"
#include "image/slot_tables.h"

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

struct Axis {
    double inv, off, minF, maxF;
    int64_t min, max;
    int length;
};

inline bool makeAxis(int length, int at, int count, int dstAt, int dstCount, double factor, double shift, bool edges,
                     Axis& a)
{
    const int used = std::min(length - at, count);
    a.length = length;
    a.inv = 1.0 / factor;
    a.off = 0 - shift / factor;
    const double from = at * factor + shift, to = (at + used) * factor + shift;
    if (std::isnan(from) || std::isnan(to))
        return false;
    a.minF = std::max<double>(from, dstAt);
    a.maxF = std::min<double>(to, double(dstAt) + dstCount);
    const double min = edges ? std::ceil(a.minF - 1e-10) : std::trunc(a.minF + 0.4999999999);
    const double max = edges ? std::floor(a.maxF + 1e-10) : std::trunc(a.maxF + 0.5000000001);
    if (!(min < max))
        return false;
    a.min = int64_t(min);
    a.max = int64_t(max);
    return true;
}

inline int effectiveMethod(const Job& j)
{
    int m = j.method();
    const int least = std::min(j.srcSize.width, j.srcSize.height);
    if (m == qvriInterLanczos && least < 6)
        m = qvriInterCubic;
    if (m >= 4 && m <= 7 && least < 4)
        m = qvriInterLinear;
    return m;
}

inline double cubic(int m, double t)
{
    if (t >= 2)
        return 0;
    const bool near = t < 1;
    switch (m) {
    case 4:
        return near ? ((0.5 * t * t - t - 0.5) * t) + 1 : ((-1.0 / 6 * t * t + t - 11.0 / 6) * t) + 1;
    case 5:
        return near ? ((0.5 * t * t - t) * t) + 2.0 / 3 : ((-1.0 / 6 * t * t + t) * t) + (4.0 / 3 - 2 * t);
    case 6:
        return near ? (1.5 * t - 2.5) * t * t + 1 : ((-0.5 * t + 2.5) * t - 4) * t + 2;
    default:
        return near ? (0.95 * t - 1.7) * t * t + 5.0 / 6 : ((-23.0 / 60 * t + 2) * t - 3.4) * t + 28.0 / 15;
    }
}

inline double sinc(double x)
{
    return x == 0 ? 1 : std::sin(M_PI * x) / (M_PI * x);
}

// Work: the type of fractions and weights.
template<class Work> Work lanczosTable(Work t)
{
    if (!(-3 < t && t < 3))
        return 0;
    const Work u = std::abs(t) * 100;
    const int k = int(u);
    if (k >= 300)
        return 0;
    const auto entry = [](int n) { return n % 100 == 0 ? float(n == 0) : float(sinc(n / 100.0) * sinc(n / 300.0)); };
    return entry(k) + (Work(entry(k + 1)) - Work(entry(k))) * (u - Work(k));
}

// A list of source indices, clamped, with weights.
struct Taps {
    std::vector<int> index;
    std::vector<double> weight;
    int centre = 0;  // floor(pos)
    double frac = 0; // rounded to the working type
    void add(int64_t i, int length, double w)
    {
        index.push_back(int(std::clamp<int64_t>(i, 0, length - 1)));
        weight.push_back(w);
    }
};

inline double lowPassKernel(int m, double t)
{
    if (m == qvriInterLinear)
        return t < 1 ? 1 - t : 0;
    if (m == qvriInterLanczos)
        return t < 3 ? sinc(t) * sinc(t / 3) : 0;
    return cubic(m, t);
}

// roundWeights: weights of columns are singles unless the image is of doubles.
template<class Work> Taps lowPass(const Axis& a, int m, int64_t d, bool roundWeights)
{
    const double r = m == qvriInterLinear ? 1 : m == qvriInterLanczos ? 3 : 2;
    const double reach = a.inv >= 1 ? r * a.inv : r, scale = a.inv >= 1 ? 1 / a.inv : 1;
    const double c = (double(d) + 0.5) * a.inv + a.off;
    Taps t;
    double sum = 0;
    for (int64_t j = int64_t(std::ceil(c - reach)); j <= int64_t(c + reach); j++) {
        const double w = lowPassKernel(m, std::abs(c - double(j)) * scale) * (a.inv > 1 ? scale : 1);
        t.add(j, a.length, w);
        sum += w;
    }
    for (double& w : t.weight)
        w = roundWeights ? double(Work(w / sum)) : w / sum;
    return t;
}

template<class Work> Taps plainTaps(const Axis& a, int m, int64_t d)
{
    const double pos = (double(d) + 0.5) * a.inv + (a.off - 0.5);
    Taps t;
    t.centre = int(std::floor(pos));
    const Work frac = Work(pos - std::floor(pos));
    t.frac = frac;
    if (m == qvriInterLinear) {
        // A column beside the image has one pixel.
        const bool single = t.centre < 0 || t.centre >= a.length - 1;
        t.add(t.centre, a.length, single ? 1 : 1 - double(frac));
        t.add(t.centre + 1, a.length, single ? 0 : double(frac));
    } else if (m == qvriInterLanczos) {
        for (int k = -2; k <= 3; k++)
            t.add(t.centre + k, a.length, double(lanczosTable<Work>(Work(k) - frac)));
    } else {
        const double f = double(frac);
        const double distance[4] = {f + 1, f, 1 - f, 2 - f};
        for (int k = 0; k < 4; k++)
            t.add(t.centre + k - 1, a.length, double(Work(cubic(m, std::abs(distance[k])))));
    }
    return t;
}

// The overlap of the output's interval with each pixel; less than 1e-7 counts as nothing.
inline Taps cover(const Axis& a, int64_t d)
{
    const double s = double(d) * a.inv + a.off, e = s + a.inv;
    Taps t;
    for (int64_t j = int64_t(std::floor(s - 1e-6)); j <= int64_t(std::floor(e + 1e-6)); j++) {
        const double w = std::min<double>(e, double(j) + 1) - std::max<double>(s, double(j));
        if (w > 1e-7)
            t.add(j, a.length, w);
    }
    return t;
}

// The result for one pixel: the exact value in `value`, and the sum of magnitudes that bounds rounding errors.
struct Value {
    double value, magnitude;
};

template<class Get> Value weigh(const Taps& x, const Taps& y, Get&& get)
{
    Value v = {0, 0};
    for (size_t j = 0; j < y.index.size(); j++)
        for (size_t i = 0; i < x.index.size(); i++) {
            const double term = y.weight[j] * x.weight[i] * double(get(x.index[i], y.index[j]));
            v.value += term;
            v.magnitude += std::abs(term);
        }
    return v;
}

// Bytes by fixed point.
template<class Get> int linearByte(const Axis& ax, const Axis& ay, const Taps& x, const Taps& y, Get&& get)
{
    const int wx = int(x.frac * 16384 + 1e-7), wy = int(y.frac * 16384 + 1e-7);
    const bool singleRow = y.centre < 0 || y.centre >= ay.length - 1;
    const bool singleColumn = x.centre < 0 || x.centre >= ax.length - 1;
    const int x0 = x.index[0], x1 = x.index[1], y0 = y.index[0], y1 = y.index[1];
    if (singleRow)
        return (get(x0, y0) * (16384 - wx) + get(x1, y0) * wx + 8192) >> 14;
    if (singleColumn)
        return (get(x0, y0) * (16384 - wy) + get(x0, y1) * wy + 8192) >> 14;
    const auto h = [&](int row) { return (wx * get(x1, row) + (16384 - wx) * get(x0, row) + 128) >> 8; };
    return std::clamp((h(y0) * (16384 - wy) + h(y1) * wy + 0x80000) >> 20, 0, 255);
}

inline bool exactMethod(int m, bool antialias)
{
    return m == qvriInterNearest || (m == qvriInterLinear && !antialias);
}

// Resizes `src` (pixel (x, y), channel c by get) into values; `check(x, y, c, Value, exactByte)` for each produced
// element, exactByte being -1 where the value is to be rounded.
template<class T, class Get, class Check> qvrStatus produce(const Job& j, int channels, Get&& get, Check&& check)
{
    using Work = std::conditional_t<std::is_same_v<T, double>, double, float>;
    if (j.srcRoi.x >= j.srcSize.width || j.srcRoi.y >= j.srcSize.height)
        return qvrWarnRoiOutside;
    Axis ax, ay;
    if (!makeAxis(j.srcSize.width, j.srcRoi.x, j.srcRoi.width, j.dstRoi.x, j.dstRoi.width, j.xFactor, j.xShift,
                  j.edges(), ax) ||
        !makeAxis(j.srcSize.height, j.srcRoi.y, j.srcRoi.height, j.dstRoi.y, j.dstRoi.height, j.yFactor, j.yShift,
                  j.edges(), ay))
        return qvrWarnNothingToDo;
    const int m = effectiveMethod(j);
    const bool ignored = m == qvriInterNearest || m == qvriInterSuper, filtered = j.antialias() && !ignored;
    const auto taps = [&](const Axis& a, int64_t d, bool column) {
        if (m == qvriInterSuper)
            return cover(a, d);
        if (filtered)
            return lowPass<Work>(a, m, d, column);
        return plainTaps<Work>(a, m, d);
    };
    std::vector<Taps> columns;
    for (int64_t x = ax.min; x < ax.max && m != qvriInterNearest; x++)
        columns.push_back(taps(ax, x, true));
    for (int64_t y = ay.min; y < ay.max; y++) {
        const Taps row = m == qvriInterNearest ? Taps{} : taps(ay, y, false);
        for (int64_t x = ax.min; x < ax.max; x++)
            for (int c = 0; c < channels; c++) {
                const auto at = [&](int sx, int sy) { return get(sx, sy, c); };
                if (m == qvriInterNearest) {
                    const auto nearest = [](const Axis& a, int64_t d) {
                        return int((double(d) + 0.5) * a.inv + (a.off - 1e-10));
                    };
                    const double v = double(at(nearest(ax, x), nearest(ay, y)));
                    check(x, y, c, Value{v, std::abs(v)}, std::is_same_v<T, uint8_t> ? int(v) : -1);
                    continue;
                }
                const Taps& column = columns[size_t(x - ax.min)];
                int exactByte = -1;
                if constexpr (std::is_same_v<T, uint8_t>)
                    if (m == qvriInterLinear && !filtered)
                        exactByte = linearByte(ax, ay, column, row, at);
                Value v = weigh(column, row, at);
                if (m == qvriInterSuper) {
                    v.value *= j.xFactor * j.yFactor;
                    v.magnitude *= j.xFactor * j.yFactor;
                }
                check(x, y, c, v, exactByte);
            }
    }
    return j.antialias() && (j.method() == qvriInterNearest || j.method() == qvriInterSuper) ? qvrWarnNoAntialiasing
                                                                                             : qvrOk;
}

// The pixels round the produced block: treat(outer x, y, inner x, y, coverage).
template<class Treat> void treatEdges(const Job& j, Treat&& treat)
{
    Axis ax, ay;
    if (!makeAxis(j.srcSize.width, j.srcRoi.x, j.srcRoi.width, j.dstRoi.x, j.dstRoi.width, j.xFactor, j.xShift, true,
                  ax) ||
        !makeAxis(j.srcSize.height, j.srcRoi.y, j.srcRoi.height, j.dstRoi.y, j.dstRoi.height, j.yFactor, j.yShift, true,
                  ay))
        return;
    const auto frac = [](double v) { return v - std::trunc(v); };
    // Less than 1e-10 of a pixel, covered or uncovered, is none.
    const auto cut = [](double f) { return f > 1e-10 && 1.0 > f + 1e-10; };
    const auto first = [&](const Axis& a) { return cut(frac(a.minF)) ? 1 - frac(a.minF) : 0.0; };
    const auto last = [&](const Axis& a) { return cut(frac(a.maxF)) ? frac(a.maxF) : 0.0; };
    for (int64_t y = ay.min - 1; y <= ay.max; y++)
        for (int64_t x = ax.min - 1; x <= ax.max; x++) {
            const double cx = x < ax.min ? first(ax) : x >= ax.max ? last(ax) : -1;
            const double cy = y < ay.min ? first(ay) : y >= ay.max ? last(ay) : -1;
            if ((cx < 0 && cy < 0) || cx == 0 || cy == 0)
                continue;
            treat(x, y, std::clamp(x, ax.min, ax.max - 1), std::clamp(y, ay.min, ay.max - 1),
                  (cx < 0 ? 1 : cx) * (cy < 0 ? 1 : cy));
        }
}

} // namespace resize_model
