// Methods with a fixed number of taps on each axis: linear of floats, the cubics, Lanczos.
//
// A source row is filtered to the band's columns once, into the buffer numbered by the row modulo the taps; an output
// row is the weighted sum of the buffers of its taps. Rows outside the image are the edge rows again.
#include "image/taps.h"
#include "vector/loops.h"

namespace {

// out[i] = w0 rows[0][i] + w1 rows[1][i] + ..., rounded; each row's part is what part(row) gives.
template<int NT, class Part> QVR_INLINE auto blendedBytes(const float* const* rows, const float* w, const Part& part)
{
    auto sum = part(rows[0]);
    for (int k = 0; k < NT; k++)
        sum = addTap(k, splat<decltype(sum)>(w[k]), part(rows[k]), sum);
    return packBytes(roundToByte(sum));
}

// The last block overlaps the one before it: behind the outputs the buffers have no numbers.
template<int NT> void blendRows(const float* const* rows, const float* w, uint8_t* dst, Index n)
{
    constexpr int B = 4 * kLanes<float>;
    using V = Vec<float, B>;
    const auto block = [&](Index i) {
        store(dst + i, blendedBytes<NT>(rows, w, [=](const float* row) { return load<V>(row + i); }));
    };
    if (n < B) {
        const int count = static_cast<int>(n);
        const auto first = [=](const float* row) { return loadPartial<V>(row, count); };
        return storePartial(dst, blendedBytes<NT>(rows, w, first), count);
    }
    Index i = 0;
    for (; i + B <= n; i += B)
        block(i);
    if (i < n)
        block(n - B);
}
template<int NT, class A> void blendRows(const A* const* rows, const A* w, A* dst, Index n)
{
    const auto sum = [w](auto... row) {
        using V = decltype((row + ...));
        const V r[] = {row...};
        V s = {};
        for (int k = 0; k < NT; k++)
            s = addTap(k, splat<V>(w[k]), r[k], s);
        return s;
    };
    if constexpr (NT == 4)
        mapElements(dst, n, sum, rows[0], rows[1], rows[2], rows[3]);
    else
        mapElements(dst, n, sum, rows[0], rows[1], rows[2], rows[3], rows[4], rows[5]);
}

// Linear of floats: (lower - upper) f + upper; a single row as it is.
template<class A> void blendTwo(const A* upper, const A* lower, A f, bool single, A* dst, Index n)
{
    if (single)
        mapElements(dst, n, [](auto x) { return x; }, upper);
    else
        mapElements(dst, n, [f](auto u, auto l) { return fma(l - u, splat<decltype(u)>(f), u); }, upper, lower);
}

void fillTaps(const qvrResizeAxis* axis, int32_t method, int32_t* start, float* w, Index perPosition, Index perTap)
{
    qvrFillTaps32(axis, method, start, w, perPosition, perTap);
}
void fillTaps(const qvrResizeAxis* axis, int32_t method, int32_t* start, double* w, Index perPosition, Index perTap)
{
    qvrFillTaps64(axis, method, start, w, perPosition, perTap);
}

template<class T, int NC, int NT> void resize(const qvrResizeBand* b)
{
    using A = Sum<T>;
    const Index width = b->x.count, elements = width * NC, height = b->y.length;
    Carver carver = bufferOf(b);
    int32_t* const start = carver.take<int32_t>(width, 16);
    A* const w = carver.take<A>(width * (NT == 2 ? 1 : NT), 16);
    TapColumns<A> c = {start, w, NC == 1 ? 1 : NT, NC == 1 ? width : 1, width, 0, width, b->x.length};
    fillTaps(&b->x, b->method, start, w, c.perPosition, c.perTap);
    while (c.from < width && start[c.from] < 0)
        c.from++;
    while (c.to > c.from && start[c.to - 1] + Index{NT} > b->x.length)
        c.to--;
    A* rows[NT];
    Index filtered[NT];
    for (int k = 0; k < NT; k++) {
        rows[k] = carver.take<A>(elements, 64);
        filtered[k] = -1;
    }
    qvrResizeAxis row = b->y;
    row.count = 1;
    for (Index n = 0; n < b->y.count; n++) {
        row.first = b->y.first + n;
        int32_t first;
        A wy[NT];
        fillTaps(&row, b->method, &first, wy, 1, 1);
        const A* taps[NT];
        for (int k = 0; k < NT; k++) {
            const Index y = clampIndex(Index{first} + k, height), slot = y % NT;
            if (filtered[slot] != y)
                filterRow<T, NC, NT>(reinterpret_cast<const T*>(sourceRow(b, y)), c, rows[slot]);
            filtered[slot] = y;
            taps[k] = rows[slot];
        }
        T* const dst = reinterpret_cast<T*>(outputRow(b, n, NC * static_cast<Index>(sizeof(T))));
        if constexpr (NT == 2)
            blendTwo(taps[0], taps[1], wy[0], first < 0 || first >= height - 1, dst, elements);
        else
            blendRows<NT>(taps, wy, dst, elements);
    }
}

template<class T, int NC> void resizeFloat(const qvrResizeBand* b)
{
    if (qvrTapCount(b->method) == 2)
        resize<T, NC, 2>(b);
    else if (qvrTapCount(b->method) == 4)
        resize<T, NC, 4>(b);
    else
        resize<T, NC, 6>(b);
}
template<int NC> void resizeBytes(const qvrResizeBand* b)
{
    if (qvrTapCount(b->method) == 4)
        resize<uint8_t, NC, 4>(b);
    else
        resize<uint8_t, NC, 6>(b);
}

} // namespace

extern "C" void SLOT(ownResizeTaps)(const qvrResizeBand* band, int pixel)
{
    if (pixel == qvrPixel_8u_C1)
        resizeBytes<1>(band);
    else if (pixel == qvrPixel_8u_C4)
        resizeBytes<4>(band);
    else if (pixel == qvrPixel_32f_C1)
        resizeFloat<float, 1>(band);
    else
        resizeFloat<double, 1>(band);
}
