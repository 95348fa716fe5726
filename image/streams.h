// Rows as streams: their weighted sums, and the columns of a row that its ends concern.
#ifndef QVR_IMAGE_STREAMS_H
#define QVR_IMAGE_STREAMS_H

#include "frame/ahead.h"
#include "frame/element.h"
#include "image/kernels.h"
#include "image/separable.h"

namespace {

template<class T> struct LineOf {
    using type = float;
};
template<> struct LineOf<double> {
    using type = double;
};
template<class T> using Line = typename LineOf<T>::type;

template<class To, class From> QVR_INLINE Vec<To, lanes<From>> widened(From v)
{
    if constexpr (sizeof(Elem<From>) == 1)
        return convert<To>(convert<int32_t>(v));
    else
        return convert<To>(v);
}

// block<N>(i) for all of 0 .. count - 1, some of them twice: by R registers of A, by one, or by single elements.
template<class A, int R = 8, class F> QVR_INLINE void eachBlock(Index count, const F& block)
{
    constexpr int L = kLanes<A>;
    const auto by = [&]<int N>(Indices<N>) {
        for (Index i = 0; i < count; i += N)
            block.template operator()<N>(i < count - N ? i : count - N);
    };
    if (count >= R * L)
        by(Indices<R * L>{});
    else if (count >= L)
        by(Indices<L>{});
    else
        by(Indices<1>{});
}

// ---- Sums of streams ------------------------------------------------------------------------------------------------

// What is added up from 0: products that are rounded to singles, as the contract adds up rows of the low pass, or what
// stands for them in wider or fused steps; plain: from the first product on.
enum class Sum { rounded, fromZero, plain };

// One output row or two that share lines: out[r][i] = sum of s[k][i] weight[r][k - from[r]], k = from[r] .. end[r] - 1;
// both ascend.
template<class A, Sum Kind, int R, class S, class W, class O>
QVR_APART void addStreams(const S* const* s, Index offset, const Index (&from)[R], const Index (&end)[R],
                          const W* const (&weight)[R], O* const (&out)[R], Index count, Index ahead)
{
    // Copies: what is stored is none of them.
    const Index first = from[0], second = from[R - 1], firstEnd = end[0], secondEnd = end[R - 1];
    const W *const w0 = weight[0] - first, *const w1 = weight[R - 1] - second;
    O *const out0 = out[0], *const out1 = out[R - 1];
    eachBlock<A, 8 / R>(count, [=]<int N>(Index i) {
        using V = Vec<A, N>;
        const auto added = [](const auto& x, W w, V sum) {
            if constexpr (Kind == Sum::rounded)
                return sum + convert<A>(convert<double>(x) * splat<Vec<double, N>>(w));
            else
                return fma(widened<A>(x), splat<V>(static_cast<A>(w)), sum);
        };
        const auto begun = [&](const auto& x, W w) {
            if constexpr (Kind == Sum::plain)
                return widened<A>(x) * splat<V>(static_cast<A>(w));
            else
                return added(x, w, V{});
        };
        const auto at = [=](Index k) { return load<Vec<S, N>>(s[k] + offset + i); };
        const auto put = [=](O* to, V sum) {
            if (ahead != 0)
                askFor(to + i, ahead, N);
            if constexpr (sizeof(O) == 1)
                store(to + i, packBytes(roundToByte(sum)));
            else
                store(to + i, convert<O>(sum));
        };
        Index k = first;
        V sum0 = begun(at(k), w0[k]), sum1 = {};
        if (R == 2 && second == first)
            sum1 = begun(at(k), w1[k]);
        for (k++; k < firstEnd && (R == 1 || k < second); k++)
            sum0 = added(at(k), w0[k], sum0);
        if (R == 2 && second > first) {
            k = second;
            sum1 = begun(at(k), w1[k]);
            if (k < firstEnd)
                sum0 = added(at(k), w0[k], sum0);
            k++;
        }
        for (; R == 2 && k < firstEnd; k++) {
            const auto x = at(k);
            sum0 = added(x, w0[k], sum0);
            sum1 = added(x, w1[k], sum1);
        }
        for (; R == 2 && k < secondEnd; k++)
            sum1 = added(at(k), w1[k], sum1);
        put(out0, sum0);
        if (R == 2)
            put(out1, sum1);
    });
}
template<class A, Sum Kind, class S, class W, class O>
QVR_INLINE void addStreams(const S* const* s, Index at, const W* weight, Index n, O* out, Index count, Index ahead)
{
    addStreams<A, Kind, 1>(s, at, {0}, {n}, {weight}, {out}, count, ahead);
}
constexpr Index kMostTaps = 6; // without low pass
// An output row, and the next one if it is formed with it.
template<class A, Sum Kind, class O> void addRows(const qvrColumns* c, const qvrRowTaps* rows, char* to)
{
    const Line<O>* const* const line = reinterpret_cast<const Line<O>* const*>(rows->line);
    O* const out = reinterpret_cast<O*>(to);
    const Index n = c->width * c->channels;
    Index from[2] = {0, rows->lag}, end[2] = {rows->count, rows->lag + rows->nextCount};
    const double* weight[2] = {rows->weight, rows->nextWeight};
    for (int r = 0; r < 2 && rows->finite; r++) {
        for (; end[r] - from[r] > 1 && *weight[r] == 0; weight[r]++)
            from[r]++;
        while (end[r] - from[r] > 1 && weight[r][end[r] - from[r] - 1] == 0)
            end[r]--;
    }
    // The second row begins no earlier, so some zeros stay.
    for (; rows->next != nullptr && from[0] > from[1]; weight[0]--)
        from[0]--;
    const auto add = [&](const auto* w, const auto* next) {
        if (rows->next == nullptr)
            addStreams<A, Kind, 1>(line, 0, {from[0]}, {end[0]}, {w}, {out}, n, rows->ahead);
        else
            addStreams<A, Kind, 2>(line, 0, from, end, {w, next}, {out, reinterpret_cast<O*>(rows->next)}, n,
                                   rows->ahead);
    };
    if constexpr (Kind == Sum::plain && sizeof(A) == 4) {
        float single[2][kMostTaps];
        for (int r = 0; r < 2; r++)
            for (Index k = 0; k < end[r] - from[r]; k++)
                single[r][k] = static_cast<float>(weight[r][k]);
        add(single[0], single[1]);
    } else {
        add(weight[0], weight[1]);
    }
}

// ---- Pixels ---------------------------------------------------------------------------------------------------------

constexpr int kPastEnd = 64; // elements behind pixels that are laid out anew

// `count` times a pixel; all of a vector may be written.
template<class T> QVR_INLINE void repeatPixel(const T* pixel, Index nc, Index count, T* to)
{
    constexpr int W = kPastEnd / 4;
    using V = Vec<T, W>;
    V v;
    if (nc == 1)
        v = splat<V>(get(pixel, 0));
    else
        for (int i = 0; i < W; i++)
            v[i] = get(pixel, i % 4);
    for (Index i = 0; i < count * nc; i += W)
        store(to + i, v);
}
// The row's pixels from .. from + n - 1, those outside by the edges; up to kPastEnd elements behind are written.
template<class T> QVR_APART void fetch(const qvrColumns* c, const T* row, Index from, Index n, T* to)
{
    const Index nc = c->channels, low = clampIndex(from, c->length), high = clampIndex(from + n - 1, c->length) + 1;
    const Index left = low > from ? (low - from < n ? low - from : n - 1) : 0;
    const Index right = from + n - high > 0 ? (from + n - high < n ? from + n - high : n - 1) : 0;
    repeatPixel(row + low * nc, nc, left, to);
    __builtin_memcpy(to + left * nc, row + low * nc, static_cast<size_t>((n - left - right) * nc) * sizeof(T));
    repeatPixel(row + (high - 1) * nc, nc, right, to + (n - right) * nc);
}

// Columns whose loads, `reach` pixels from the first tap of one on, stay in the image.
constexpr Index kEnd = 8; // they come in so many
void findInside(qvrColumns* c, Index reach)
{
    const auto inside = [=](Index x) { return c->first[x] >= 0 && c->first[x + kEnd - 1] + reach <= c->length; };
    c->from = 0;
    while (c->from + kEnd <= c->width && !inside(c->from))
        c->from += kEnd;
    c->to = c->from;
    while (c->to + kEnd <= c->width && inside(c->to))
        c->to += kEnd;
    if (c->from == c->to)
        c->from = c->to = 0;
}
// part(s, first, end) for the columns from .. to - 1 in pieces: s[r] is where pixel 0 would be of a copy of row r, with
// the edges laid on.
template<int R, class T, class Part>
QVR_INLINE void eachOutside(const qvrColumns* c, const T* const* row, Index from, Index to, const Part& part)
{
    constexpr Index room = 8192 / sizeof(T);
    alignas(64) T pixels[R][room + kPastEnd];
    for (Index x = from, end; x < to; x = end) {
        const Index base = c->first[x];
        const auto fits = [=](Index last) { return (c->first[last] + c->most - base) * c->channels <= room; };
        end = to;
        if (!fits(to - 1)) {
            for (end = x + 1; end < to && fits(end);)
                end++;
            end -= end - x >= kEnd ? (end - x) % kEnd : 0;
        }
        const T* s[R];
        for (int r = 0; r < R; r++) {
            fetch(c, row[r], base, c->first[end - 1] + c->most - base, pixels[r]);
            s[r] = reinterpret_cast<const T*>(reinterpret_cast<uintptr_t>(pixels[r]) -
                                              static_cast<uintptr_t>(base * c->channels) * sizeof(T));
        }
        part(s, x, end);
    }
}

} // namespace

#endif
