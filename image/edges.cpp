// The pixels round the produced block that the source covers in part: blended with what is there, or faded.
//
// The row above, the row below, the columns to the left and right take the nearest produced pixel as `inner`, and the
// covered fraction a of their side, corners the product of both: blend old + a (inner - old), fade a inner.
#include "frame/element.h"
#include "image/plan.h"

namespace {

constexpr double kLeast = 1e-10; // a border this close to that of a pixel counts as on it

double fractionOf(double v)
{
    return v - static_cast<double>(static_cast<int64_t>(v));
}
double coverOf(double edge, bool behind)
{
    const double f = fractionOf(edge);
    return !(f > kLeast && 1.0 > f + kLeast) ? 0 : behind ? f : 1 - f;
}
double coverBefore(double edge)
{
    return coverOf(edge, false);
}
double coverBehind(double edge)
{
    return coverOf(edge, true);
}

template<class A> uint8_t stored(A v, uint8_t)
{
    const double rounded = static_cast<double>(v) + 0.5000001;
    const int t = static_cast<int>(rounded);
    return static_cast<uint8_t>(t < 0 ? 0 : t > 255 ? 255 : t);
}
template<class A, class T> T stored(A v, T)
{
    return v;
}

int64_t clampIndex(int64_t i, int64_t length)
{
    return i < 0 ? 0 : i < length ? i : length - 1;
}

template<class T> struct Edges {
    char* at; // the first produced pixel
    int64_t step, width, height;
    int channels;
    bool blend;

    T* pixel(int64_t x, int64_t y) const
    {
        return reinterpret_cast<T*>(at + y * step + x * channels * static_cast<int64_t>(sizeof(T)));
    }
    // The pixel at (x, y) from the produced one nearest to it.
    void treat(int64_t x, int64_t y, double cover) const
    {
        using A = decltype(T{} + float{});
        const A a = static_cast<A>(cover);
        const T* const inner = pixel(clampIndex(x, width), clampIndex(y, height));
        T* const outer = pixel(x, y);
        for (int k = 0; k < channels; k++) {
            const A in = static_cast<A>(get(inner, k)), old = static_cast<A>(get(outer, k));
            put(outer, k, stored(blend ? old + a * (in - old) : a * in, T{}));
        }
    }
    void row(int64_t y, double cover, double left, double right) const
    {
        if (cover == 0)
            return;
        for (int64_t x = 0; x < width; x++)
            treat(x, y, cover);
        if (left != 0)
            treat(-1, y, left * cover);
        if (right != 0)
            treat(width, y, right * cover);
    }
    void column(int64_t x, double cover) const
    {
        if (cover != 0)
            for (int64_t y = 0; y < height; y++)
                treat(x, y, cover);
    }
};

template<class T> void treatEdges(const qvrResizePlan* plan, int channels)
{
    const int64_t pixelBytes = channels * static_cast<int64_t>(sizeof(T));
    const qvrResizeBand& b = plan->band;
    const Edges<T> e = {b.dst + b.y.first * b.dstStep + b.x.first * pixelBytes,
                        b.dstStep,
                        b.x.count,
                        b.y.count,
                        channels,
                        (plan->flags & qvriEdgeBlend) != 0};
    const double left = coverBefore(plan->xMinF), right = coverBehind(plan->xMaxF);
    e.row(-1, coverBefore(plan->yMinF), left, right);
    e.row(e.height, coverBehind(plan->yMaxF), left, right);
    e.column(-1, left);
    e.column(e.width, right);
}

} // namespace

extern "C" void qvrResizeEdges(const qvrResizePlan* plan, int pixel)
{
    if (pixel <= qvrPixel_8u_C4)
        treatEdges<uint8_t>(plan, pixel == qvrPixel_8u_C1 ? 1 : 4);
    else if (pixel == qvrPixel_32f_C1)
        treatEdges<float>(plan, 1);
    else
        treatEdges<double>(plan, 1);
}
