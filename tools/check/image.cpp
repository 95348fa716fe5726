// Resizing, point operations, and the library's memory.
#include <algorithm>

#include "trial.h"

#ifdef QVR_REFERENCE
#include "model/points.h"
#include "model/resize.h"
#endif

using namespace check;

namespace {

constexpr qvriSize kFrom = {24, 17}, kTo = {15, 22};
constexpr int kSelectors[] = {qvriInterNearest,
                              qvriInterLinear,
                              qvriInterCubic,
                              qvriInterCubicBSpline,
                              qvriInterCubicCatmullRom,
                              qvriInterCubicB05C03,
                              qvriInterLanczos,
                              qvriInterSuper,
                              qvriInterLinear | qvriAntialias,
                              qvriInterLanczos | qvriAntialias};

// Every method, then the size of its buffer, which has to serve and is the library's own choice.
template<class T, int channels, bool withBuffer, class Resize, class Query>
void resize(Trial& t, Resize run, Query query, double high, double tolerance)
{
    for (const int selector : kSelectors) {
        const bool super = selector == qvriInterSuper;
        const double xFactor = super ? 0.625 : 15 / 24.0, yFactor = super ? 0.75 : 22 / 17.0;
        const auto x = t.values<T>(kFrom.width * kFrom.height * channels, 0, high);
        std::vector<T> y(kTo.width * kTo.height * channels);
        const qvriRect from = {0, 0, kFrom.width, kFrom.height}, to = {0, 0, kTo.width, kTo.height};
#ifdef QVR_REFERENCE
        const resize_model::Job job = {kFrom, from, to, xFactor, yFactor, 0, 0, selector};
        const auto get = [&](int px, int py, int c) {
            return x[static_cast<size_t>((py * kFrom.width + px) * channels + c)];
        };
        const auto put = [&](int64_t px, int64_t py, int c, resize_model::Value v, int byte) {
            T& pixel = y[static_cast<size_t>((py * kTo.width + px) * channels + c)];
            if constexpr (std::is_same_v<T, uint8_t>)
                pixel = byte >= 0 ? static_cast<uint8_t>(byte)
                                  : static_cast<uint8_t>(std::clamp(std::floor(v.value + 0.5), 0.0, 255.0));
            else
                pixel = static_cast<T>(v.value);
        };
        t.status(resize_model::produce<T>(job, channels, get, put));
        (void)run, (void)query;
#else
        const int srcStep = kFrom.width * channels * static_cast<int>(sizeof(T));
        const int dstStep = kTo.width * channels * static_cast<int>(sizeof(T));
        if constexpr (withBuffer) {
            int bytes = 0;
            query(from, to, channels, selector, &bytes);
            std::vector<uint8_t> buffer(static_cast<size_t>(bytes));
            t.status(run(x.data(), kFrom, srcStep, from, y.data(), dstStep, to, xFactor, yFactor, 0, 0, selector,
                         buffer.data()));
        } else {
            (void)query;
            t.status(run(x.data(), kFrom, srcStep, from, y.data(), dstStep, kTo, xFactor, yFactor, selector));
        }
#endif
        const bool exact = selector == qvriInterNearest || (selector == qvriInterLinear && std::is_integral_v<T>);
        t.array("the image", y, exact ? kExact : Tolerance{0, tolerance});
    }
}

} // namespace

// A byte next to a half may round either way.
QVR_CASE(qvriResize_8u_C1R)
{
    resize<uint8_t, 1, false>(t, QVR_GET(qvriResize_8u_C1R), nullptr, 255, 1);
}
QVR_CASE(qvriResize_8u_C4R)
{
    resize<uint8_t, 4, false>(t, QVR_GET(qvriResize_8u_C4R), nullptr, 255, 1);
}
QVR_CASE(qvriResize_32f_C1R)
{
    resize<float, 1, false>(t, QVR_GET(qvriResize_32f_C1R), nullptr, 1, 3e-6);
}
QVR_CASE(qvriResizeSqrPixel_8u_C1R)
{
    resize<uint8_t, 1, true>(t, QVR_GET(qvriResizeSqrPixel_8u_C1R), QVR_GET(qvriResizeGetBufSize), 255, 1);
}
QVR_CASE(qvriResizeSqrPixel_8u_C4R)
{
    resize<uint8_t, 4, true>(t, QVR_GET(qvriResizeSqrPixel_8u_C4R), QVR_GET(qvriResizeGetBufSize), 255, 1);
}
QVR_CASE(qvriResizeSqrPixel_32f_C1R)
{
    resize<float, 1, true>(t, QVR_GET(qvriResizeSqrPixel_32f_C1R), QVR_GET(qvriResizeGetBufSize), 1, 3e-6);
}
QVR_CASE(qvriResizeSqrPixel_64f_C1R)
{
    resize<double, 1, true>(t, QVR_GET(qvriResizeSqrPixel_64f_C1R), QVR_GET(qvriResizeGetBufSize_64f), 1, 1e-13);
}

namespace {

constexpr qvriSize kSize = {21, 9};
constexpr int kGap = 8; // bytes behind a row, which stay

// An image with gaps, rows in order.
template<class T> struct Rows {
    int step = kSize.width * static_cast<int>(sizeof(T)) + kGap;
    std::vector<T> pixels;
    Rows(Trial& t, double low, double high)
        : pixels(t.values<T>(static_cast<size_t>(step) / sizeof(T) * kSize.height, low, high))
    {
    }
    T* data() { return pixels.data(); }
};

} // namespace

template<class T> static void imageAdd(Trial& t, qvrStatus (*f)(T, T*, int, qvriSize, int), double limit)
{
    for (const int scale : {0, 1}) {
        Rows<T> d(t, 0, limit);
        t.status(f(77, d.data(), d.step, kSize, scale));
        t.array("the image", d.pixels, kExact);
    }
}
QVR_CASE(qvriAddC_8u_C1IRSfs)
{
    imageAdd<uint8_t>(t, QVR_FUNCTION(qvriAddC_8u_C1IRSfs), 255);
}
QVR_CASE(qvriAddC_16u_C1IRSfs)
{
    imageAdd<uint16_t>(t, QVR_FUNCTION(qvriAddC_16u_C1IRSfs), 65535);
}

QVR_CASE(qvriSet_16u_C1R)
{
    Rows<uint16_t> d(t, 0, 65535);
    t.status(QVR_FUNCTION(qvriSet_16u_C1R)(4711, d.data(), d.step, kSize));
    t.array("the image", d.pixels, kExact);
}
QVR_CASE(qvriCopy_16u_C1MR)
{
    const auto f = QVR_FUNCTION(qvriCopy_16u_C1MR);
    Rows<uint16_t> a(t, 0, 65535), d(t, 0, 65535);
    Rows<uint8_t> mask(t, 0, 1);
    t.status(f(a.data(), a.step, d.data(), d.step, kSize, mask.data(), mask.step));
    t.array("the image", d.pixels, kExact);
}
template<class T> static void widen(Trial& t, qvrStatus (*f)(const uint8_t*, int, T*, int, qvriSize))
{
    Rows<uint8_t> a(t, 0, 255);
    Rows<T> d(t, 0, 1000);
    t.status(f(a.data(), a.step, d.data(), d.step, kSize));
    t.array("the image", d.pixels, kExact);
}
QVR_CASE(qvriConvert_8u16u_C1R)
{
    widen<uint16_t>(t, QVR_FUNCTION(qvriConvert_8u16u_C1R));
}
QVR_CASE(qvriConvert_8u16s_C1R)
{
    widen<int16_t>(t, QVR_FUNCTION(qvriConvert_8u16s_C1R));
}
#define QVR_PALETTE(name, From, To, bits)                                                                              \
    QVR_CASE(name)                                                                                                     \
    {                                                                                                                  \
        Rows<From> a(t, 0, sizeof(From) == 1 ? 255 : 65535);                                                           \
        Rows<To> d(t, 0, 255);                                                                                         \
        const auto table = t.values<To>(1 << bits, 0, sizeof(To) == 1 ? 255 : 4e9);                                    \
        t.status(QVR_FUNCTION(name)(a.data(), a.step, d.data(), d.step, kSize, table.data(), bits));                   \
        t.array("the image", d.pixels, kExact);                                                                        \
    }
QVR_PALETTE(qvriLUTPalette_8u_C1R, uint8_t, uint8_t, 8)
QVR_PALETTE(qvriLUTPalette_8u32u_C1R, uint8_t, uint32_t, 7)
QVR_PALETTE(qvriLUTPalette_16u8u_C1R, uint16_t, uint8_t, 10)
QVR_PALETTE(qvriLUTPalette_16u32u_C1R, uint16_t, uint32_t, 11)

QVR_CASE(qvriBlockMinMax_16s_C1R)
{
    const auto f = QVR_FUNCTION(qvriBlockMinMax_16s_C1R);
    Rows<int16_t> a(t, -30000, 30000);
    std::vector<int16_t> low(5 * 3), high(5 * 3), ends(2);
    t.status(f(a.data(), a.step, kSize, low.data(), 10, high.data(), 10, {5, 4}, &ends[0], &ends[1]));
    t.array("the minima", low, kExact);
    t.array("the maxima", high, kExact);
    t.array("the extremes", ends, kExact);
}
QVR_CASE(qvriSplitRow_TIFF_16u8u_C1)
{
    const auto f = QVR_FUNCTION(qvriSplitRow_TIFF_16u8u_C1);
    const auto a = t.values<uint8_t>(140, 0, 255);
    std::vector<uint8_t> high(70), low(70);
    uint8_t* planes[] = {high.data(), low.data()};
    t.status(f(a.data(), planes, 70));
    t.array("the high bytes", high, kExact);
    t.array("the low bytes", low, kExact);
}
QVR_CASE(qvriJoinRow_TIFF_8u16u_C1)
{
    const auto f = QVR_FUNCTION(qvriJoinRow_TIFF_8u16u_C1);
    auto high = t.values<uint8_t>(70, 0, 255), low = t.values<uint8_t>(70, 0, 255);
    std::vector<uint8_t> d(140);
    uint8_t* planes[] = {high.data(), low.data()};
    t.status(f(planes, d.data(), 70));
    t.array("the row", d, kExact);
}

// Blocks on a boundary of 64 bytes that hold what is written; null for a length that is none.
QVR_CASE(qvrsMalloc_8u)
{
    for ([[maybe_unused]] const int length : {1, 1000, 5000000, 0, -1}) {
        int good = 1;
#ifndef QVR_REFERENCE
        uint8_t* p = QVR_GET(qvrsMalloc_8u)(length);
        good = length < 1 ? p == nullptr : p != nullptr && reinterpret_cast<uintptr_t>(p) % 64 == 0;
        if (p != nullptr) {
            std::fill_n(p, length, uint8_t{0x77});
            good = good && p[length - 1] == 0x77;
        }
        QVR_GET(qvrsFree)(p);
#endif
        t.array("a block", &good, 1, kExact);
    }
}
