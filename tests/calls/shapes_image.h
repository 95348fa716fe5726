// Calls of the image functions.
#pragma once

#include "calls/shape.h"

namespace calls {

inline void demand(bool holds)
{
    if (!holds)
        __builtin_trap();
}

// ---- Resize ---------------------------------------------------------------------------------------------------------

// Rectangles and factors that stay small, with a selector that is mostly valid.
struct ResizeCase {
    qvriSize size;
    qvriRect from, to;
    double xFactor, yFactor, xShift, yShift;
    int interpolation;

    explicit ResizeCase(Input& in)
    {
        constexpr int methods[] = {1, 2, 4, 5, 6, 7, 8, 16}, flags[] = {0, qvriEdgeBlend, qvriEdgeFade, qvriAntialias};
        const int most = in.oneIn(6) ? 90 : 24;
        size = {in.range(1, most), in.range(1, most)};
        from = rect(in, most);
        to = rect(in, most);
        interpolation = in.oneIn(30) ? in.any<int>() : methods[in.range(0, 7)] | flags[in.range(0, 3)];
        xFactor = factor(in);
        yFactor = factor(in);
        xShift = shift(in);
        yShift = shift(in);
    }

private:
    static qvriRect rect(Input& in, int most)
    {
        if (in.oneIn(3))
            return {0, 0, most, most};
        return {in.range(in.oneIn(30) ? -1 : 0, most / 2), in.range(0, most / 2),
                in.range(in.oneIn(30) ? 0 : 1, most + 9), in.range(1, most + 9)};
    }
    static double factor(Input& in)
    {
        if (in.oneIn(4))
            return 1.0 / in.range(1, 9);
        if (in.oneIn(30))
            return in.any<int>() % 5;
        return in.oneIn(2) ? in.range(1, 400) / 100.0 : in.range(20, 1000) / 1000.0;
    }
    static double shift(Input& in)
    {
        return in.oneIn(2) ? 0 : in.oneIn(20) ? in.any<double>() : in.range(-900, 900) / 37.0;
    }
};

template<class T> T* imageRows(Input& in, int64_t width, int64_t height, int gap, int& step)
{
    const int64_t row = width * static_cast<int64_t>(sizeof(T));
    if (!in.anything()) // numbers stay numbers in every row
        gap = gap / static_cast<int>(sizeof(T)) * static_cast<int>(sizeof(T));
    step = static_cast<int>(row) + gap;
    char* p = in.bytes<T>(int64_t{step} * (height - 1) + row);
    if (in.oneIn(4)) {
        p += (height - 1) * step;
        step = -step;
    }
    return reinterpret_cast<T*>(p);
}

template<class T, class F, class Query> void callResize(F f, Query query, Input& in, int channels)
{
    const ResizeCase c(in);
    int bytes = 0, srcStep, dstStep;
    const qvrStatus sized = query(c.from, c.to, channels, c.interpolation, &bytes);
    // One pixel of room for the edges.
    T* src = imageRows<T>(in, int64_t{c.size.width} * channels, c.size.height, in.range(0, 9), srcStep);
    T* dst = imageRows<T>(in, int64_t{c.to.x + c.to.width + 2} * channels, c.to.y + c.to.height + 2, in.range(0, 9),
                          dstStep);
    qvr8u* buffer = in.output<qvr8u>(sized < 0 ? 16 : bytes);
    const qvrStatus status = f(src, c.size, srcStep, c.from, dst, dstStep, c.to, c.xFactor, c.yFactor, c.xShift,
                               c.yShift, c.interpolation, buffer);
    if (sized < 0)
        demand(status < 0);
    demand(status == qvrOk || status == qvrErrBadSize || status == qvrErrBadFactor ||
           status == qvrErrBadInterpolation || status == qvrWarnNothingToDo || status == qvrWarnRoiOutside ||
           status == qvrWarnNoAntialiasing);
}
#define QVR_RESIZE_SHAPE(name, T, query, channels)                                                                     \
    template<> struct Shape<name> {                                                                                    \
        template<class F> static void call(F f, Input& in)                                                             \
        {                                                                                                              \
            callResize<T>(f, query, in, channels);                                                                     \
        }                                                                                                              \
    };
QVR_RESIZE_SHAPE(qvriResizeSqrPixel_8u_C1R, qvr8u, Morven_qvriResizeGetBufSize, 1)
QVR_RESIZE_SHAPE(qvriResizeSqrPixel_8u_C4R, qvr8u, Morven_qvriResizeGetBufSize, 4)
QVR_RESIZE_SHAPE(qvriResizeSqrPixel_32f_C1R, qvr32f, Morven_qvriResizeGetBufSize, 1)
QVR_RESIZE_SHAPE(qvriResizeSqrPixel_64f_C1R, qvr64f, Morven_qvriResizeGetBufSize_64f, 1)
#undef QVR_RESIZE_SHAPE

template<class T, class F> void callWrapper(F f, Input& in, int channels)
{
    const ResizeCase c(in);
    int srcStep, dstStep;
    T* src = imageRows<T>(in, int64_t{c.size.width} * channels, c.size.height, in.range(0, 9), srcStep);
    T* dst = imageRows<T>(in, int64_t{c.from.x + c.to.width + 2} * channels, c.from.y + c.to.height + 2, in.range(0, 9),
                          dstStep);
    f(src, c.size, srcStep, c.from, dst, dstStep, {c.to.width, c.to.height}, c.xFactor, c.yFactor, c.interpolation);
}
template<> struct Shape<qvriResize_8u_C1R> {
    template<class F> static void call(F f, Input& in) { callWrapper<qvr8u>(f, in, 1); }
};
template<> struct Shape<qvriResize_8u_C4R> {
    template<class F> static void call(F f, Input& in) { callWrapper<qvr8u>(f, in, 4); }
};
template<> struct Shape<qvriResize_32f_C1R> {
    template<class F> static void call(F f, Input& in) { callWrapper<qvr32f>(f, in, 1); }
};

template<class F> void callSize(F f, Input& in)
{
    const auto rect = [&] { return qvriRect{in.any<int>(), in.any<int>(), in.any<int>(), in.any<int>()}; };
    const qvriRect from = rect(), to = rect();
    const int channels = in.any<int>(), interpolation = in.any<int>();
    int bytes = -1;
    const qvrStatus status = f(from, to, channels, interpolation, &bytes);
    demand(status < 0 ? bytes <= 0 : bytes >= 16);
}
template<> struct Shape<qvriResizeGetBufSize> {
    template<class F> static void call(F f, Input& in) { callSize(f, in); }
};
template<> struct Shape<qvriResizeGetBufSize_64f> {
    template<class F> static void call(F f, Input& in) { callSize(f, in); }
};

// ---- Point operations -----------------------------------------------------------------------------------------------

struct PointCase {
    int width, height;
    explicit PointCase(Input& in) : width(in.oneIn(8) ? in.range(1, 600) : in.range(1, 70)), height(in.range(1, 9)) {}
    qvriSize size() const { return {width, height}; }
};

template<class T, class F> void callAddC(F f, Input& in)
{
    const PointCase c(in);
    int step;
    T* image = imageRows<T>(in, c.width, c.height, in.range(0, 9), step);
    demand(f(in.any<T>(), image, step, c.size(), in.oneIn(3) ? in.any<int>() : in.range(-20, 20)) == qvrOk);
}
template<> struct Shape<qvriAddC_8u_C1IRSfs> {
    template<class F> static void call(F f, Input& in) { callAddC<qvr8u>(f, in); }
};
template<> struct Shape<qvriAddC_16u_C1IRSfs> {
    template<class F> static void call(F f, Input& in) { callAddC<qvr16u>(f, in); }
};

template<> struct Shape<qvriSet_16u_C1R> {
    template<class F> static void call(F f, Input& in)
    {
        const PointCase c(in);
        int step;
        qvr16u* image = imageRows<qvr16u>(in, c.width, c.height, in.range(0, 9), step);
        demand(f(in.any<qvr16u>(), image, step, c.size()) == qvrOk);
    }
};

template<> struct Shape<qvriCopy_16u_C1MR> {
    template<class F> static void call(F f, Input& in)
    {
        const PointCase c(in);
        int srcStep, dstStep, maskStep;
        const qvr16u* src = imageRows<qvr16u>(in, c.width, c.height, in.range(0, 2), srcStep);
        qvr16u* dst = imageRows<qvr16u>(in, c.width, c.height, in.range(0, 2), dstStep);
        qvr8u* mask = imageRows<qvr8u>(in, c.width, c.height, in.range(0, 2), maskStep);
        if (in.oneIn(4))
            for (int y = 0; y < c.height; y++)
                memset(mask + int64_t{y} * maskStep, 0, static_cast<size_t>(c.width));
        demand(f(src, srcStep, dst, dstStep, c.size(), mask, maskStep) == qvrOk);
    }
};

template<class T, class F> void callWiden(F f, Input& in)
{
    const PointCase c(in);
    int srcStep, dstStep;
    const qvr8u* src = imageRows<qvr8u>(in, c.width, c.height, in.range(0, 2), srcStep);
    T* dst = imageRows<T>(in, c.width, c.height, in.range(0, 4), dstStep);
    demand(f(src, srcStep, dst, dstStep, c.size()) == (srcStep < 1 || dstStep < 1 ? qvrErrBadStep : qvrOk));
}
template<> struct Shape<qvriConvert_8u16u_C1R> {
    template<class F> static void call(F f, Input& in) { callWiden<qvr16u>(f, in); }
};
template<> struct Shape<qvriConvert_8u16s_C1R> {
    template<class F> static void call(F f, Input& in) { callWiden<qvr16s>(f, in); }
};

template<class S, class T, class F> void callPalette(F f, Input& in)
{
    const PointCase c(in);
    const int most = static_cast<int>(8 * sizeof(S)), bits = in.oneIn(20) ? in.any<int>() : in.range(1, most);
    const bool good = bits >= 1 && bits <= most;
    int srcStep, dstStep;
    const S* src = imageRows<S>(in, c.width, c.height, in.range(0, 4), srcStep);
    T* dst = imageRows<T>(in, c.width, c.height, in.range(0, 4), dstStep);
    const T* table = in.array<T>(good ? int64_t{1} << bits : 1);
    demand(f(src, srcStep, dst, dstStep, c.size(), table, bits) == (!good                        ? qvrErrBadBitSize
                                                                    : srcStep < 0 || dstStep < 0 ? qvrErrBadStep
                                                                                                 : qvrOk));
}
template<> struct Shape<qvriLUTPalette_8u_C1R> {
    template<class F> static void call(F f, Input& in) { callPalette<qvr8u, qvr8u>(f, in); }
};
template<> struct Shape<qvriLUTPalette_8u32u_C1R> {
    template<class F> static void call(F f, Input& in) { callPalette<qvr8u, qvr32u>(f, in); }
};
template<> struct Shape<qvriLUTPalette_16u8u_C1R> {
    template<class F> static void call(F f, Input& in) { callPalette<qvr16u, qvr8u>(f, in); }
};
template<> struct Shape<qvriLUTPalette_16u32u_C1R> {
    template<class F> static void call(F f, Input& in) { callPalette<qvr16u, qvr32u>(f, in); }
};

template<> struct Shape<qvriBlockMinMax_16s_C1R> {
    template<class F> static void call(F f, Input& in)
    {
        const PointCase c(in);
        const auto extent = [&] { return in.oneIn(4) ? 16 : in.oneIn(10) ? in.any<int>() | 1 : in.range(1, 40); };
        const qvriSize block = {extent(), extent()};
        int step, lowStep, highStep;
        const qvr16s* src = imageRows<qvr16s>(in, c.width, c.height, in.range(0, 4), step);
        const int64_t across = block.width < 1 ? 1 : (c.width - 1) / block.width + 1;
        const int64_t down = block.height < 1 ? 1 : (c.height - 1) / block.height + 1;
        qvr16s* low = imageRows<qvr16s>(in, across, down, in.range(0, 4), lowStep);
        qvr16s* high = imageRows<qvr16s>(in, across, down, in.range(0, 4), highStep);
        const bool bad = block.width < 1 || block.height < 1;
        demand(f(src, step, c.size(), low, lowStep, high, highStep, block, in.array<qvr16s>(1), in.array<qvr16s>(1)) ==
               (bad                                       ? qvrErrBadSize
                : step < 0 || lowStep < 0 || highStep < 0 ? qvrErrBadStep
                                                          : qvrOk));
    }
};

template<> struct Shape<qvriSplitRow_TIFF_16u8u_C1> {
    template<class F> static void call(F f, Input& in)
    {
        const int len = in.length();
        const qvr8u* src = in.array<qvr8u>(2 * int64_t{len});
        qvr8u* planes[2] = {in.array<qvr8u>(len), in.array<qvr8u>(len)};
        const int n = in.oneIn(20) ? in.any<int>() | INT32_MIN : len;
        demand(f(src, planes, n) == (n < 1 ? qvrErrBadStep : qvrOk));
    }
};
template<> struct Shape<qvriJoinRow_TIFF_8u16u_C1> {
    template<class F> static void call(F f, Input& in)
    {
        const int len = in.length();
        qvr8u* planes[2] = {in.array<qvr8u>(len), in.array<qvr8u>(len)};
        qvr8u* dst = in.array<qvr8u>(2 * int64_t{len});
        const int n = in.oneIn(20) ? in.any<int>() | INT32_MIN : len;
        demand(f(planes, dst, n) == (n < 1 ? qvrErrBadStep : qvrOk));
    }
};

} // namespace calls
