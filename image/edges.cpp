// The pixels round the produced block that the source covers in part: blended with what is there, or faded.
//
// The row above, the row below, the columns to the left and right take the nearest produced pixel as `inner`, and the
// covered fraction a of their side, corners the product of both: blend old + a (inner - old), fade a inner.
#include "image/kernels.h"

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

template<class T, int NC> struct Edges {
    char* at; // the first produced pixel
    Index step, width, height;
    bool blend;

    QVR_INLINE char* pixel(Index x, Index y) const { return at + y * step + x * (NC * static_cast<Index>(sizeof(T))); }
    // The pixel at (x, y) from the produced one nearest to it.
    void treat(Index x, Index y, double cover) const
    {
        using A = decltype(T{} + float{});
        const A a = static_cast<A>(cover);
        const char* const inner = pixel(clampIndex(x, width), clampIndex(y, height));
        char* const outer = pixel(x, y);
        for (int k = 0; k < NC; k++) {
            const A in = static_cast<A>(load<Vec<T, 1>>(inner + k * sizeof(T))[0]);
            const A old = static_cast<A>(load<Vec<T, 1>>(outer + k * sizeof(T))[0]);
            store(outer + k * sizeof(T), Vec<T, 1>{stored(blend ? old + a * (in - old) : a * in, T{})});
        }
    }
    void row(Index y, double cover, double left, double right) const
    {
        if (cover == 0)
            return;
        for (Index x = 0; x < width; x++)
            treat(x, y, cover);
        if (left != 0)
            treat(-1, y, left * cover);
        if (right != 0)
            treat(width, y, right * cover);
    }
    void column(Index x, double cover) const
    {
        if (cover != 0)
            for (Index y = 0; y < height; y++)
                treat(x, y, cover);
    }
};

template<class T, int NC> void treatEdges(const qvrResizePlan* plan, char* dst, Index dstStep)
{
    constexpr Index pixelBytes = NC * static_cast<Index>(sizeof(T));
    const Edges<T, NC> e = {dst + plan->y.first * dstStep + plan->x.first * pixelBytes, dstStep, plan->x.count,
                            plan->y.count, (plan->flags & qvriEdgeBlend) != 0};
    const double left = coverBefore(plan->xMinF), right = coverBehind(plan->xMaxF);
    e.row(-1, coverBefore(plan->yMinF), left, right);
    e.row(e.height, coverBehind(plan->yMaxF), left, right);
    e.column(-1, left);
    e.column(e.width, right);
}

} // namespace

extern "C" void SLOT(ownResizeEdges)(const qvrResizePlan* plan, char* dst, int64_t dstStep, int pixel)
{
    byPixel(pixel, [&]<class T, int NC>() { treatEdges<T, NC>(plan, dst, dstStep); });
}
