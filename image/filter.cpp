// The row kernels of the separable methods, but for linear interpolation of bytes.
//
// Without antialiasing sums are in the type of the line, products added from the left: w0 s[i] + w1 s[i+1] + ...;
// linear interpolation is s0 + (s1 - s0) f. With antialiasing a column has two partial sums in double (64f eight), by
// the tap's number in its list, added in order; rows add up acc += float(double(line) * weight), taps ascending.
//
// Pixels outside the image are those of its edge: they are laid round the part of a row that is at hand.
#include "frame/lookup.h"
#include "image/kernels.h"
#include "image/words.h"

namespace {

constexpr Index kTurned = 3072; // doubles of source rows side by side
constexpr Index kColumns = 24;  // of them at a time
constexpr Index kLongColumns = 8;

// ---- Low pass: along a row ------------------------------------------------------------------------------------------

// One column of N channels, or of N rows side by side.
template<int N, class A, int P> QVR_INLINE void dot(const A* s, const A* w, Index n, Vec<A, N> (&part)[P])
{
    using V = Vec<A, N>;
    const auto add = [&](int p) { part[p] = fma(load<V>(s + N * p), splat<V>(w[p]), part[p]); };
    for (; n >= P; n -= P, s += P * N, w += P)
        for (int p = 0; p < P; p++)
            add(p);
    for (int p = 0; p < P - 1; p++)
        if (p < n)
            add(p);
}

// put(x, sum) for the columns from .. to - 1, of whose pixels N values each stand at s from pixel `base` on.
template<int N, int P, class A, class Put>
QVR_INLINE void eachColumn(const qvrColumns* c, Index from, Index to, const A* s, Index base, const Put& put)
{
    Index list = from % c->lists;
    for (Index x = from; x < to; x++) {
        Vec<A, N> part[P] = {};
        dot<N>(s + (c->first[x] - base) * N, static_cast<const A*>(c->weights) + list * c->stride, c->count[list],
               part);
        Vec<A, N> sum = part[0];
        for (int p = 1; p < P; p++)
            sum += part[p];
        put(x, sum);
        list = list + 1 < c->lists ? list + 1 : 0;
    }
}

// Several rows are filtered together: those of a pixel side by side are the lanes, so no sum depends on its place.
template<class T> constexpr int kParts = sizeof(T) == 8 ? 8 : 2;
template<class T, int NC> constexpr int kTogether = sizeof(T) == 8 ? 4 : 16 / NC;

// Elements of W rows sorted: lane r of v[k] is row(r)[k].
template<class V, class Row> QVR_INLINE void turn(const Row& row, V* v)
{
    if constexpr (sizeof(Elem<V>) == 4)
        fourColumns(row, v);
    else
        pairColumns(row, v[0], v[1]);
}
// Pixels from .. from + n - 1 of R rows side by side; for lack of rows the last is taken again. Up to kBlock - 1 more
// are written.
constexpr Index kBlock = 4;
template<class T, int NC, int R>
QVR_APART void turnRows(const qvrColumns* c, const char* const* rows, Index count, Index from, Index n, double* to)
{
    constexpr Index L = R * NC;
    const T* row[R];
    for (int r = 0; r < R; r++)
        row[r] = reinterpret_cast<const T*>(rows[r < count ? r : count - 1]);
    const auto one = [&](Index i) {
        const Index at = clampIndex(from + i, c->length) * NC;
        for (int r = 0; r < R; r++)
            store(to + i * L + r * NC, convert<double>(load<Vec<T, NC>>(row[r] + at)));
    };
    const Index left = from >= 0 ? 0 : -from < n ? -from : n;
    Index i = left;
    if constexpr (NC == 1 && sizeof(T) > 1) {
        constexpr int W = kLanes<double> < 4 && sizeof(T) == 8 ? 2 : 4, B = 16 / sizeof(T);
        const Index wanted = qvrAlignUp(n - i, kBlock), inside = c->length - from - i;
        const Index pixels = wanted <= inside ? wanted : inside > 0 ? inside / kBlock * kBlock : 0;
#pragma nounroll
        for (int r = 0; r < R; r += W) {
            const T* at[W];
            for (int j = 0; j < W; j++)
                at[j] = row[r + j] + from + i;
            double* out = to + i * L + r;
            for (Index k = 0; k < pixels; k += B, out += B * L) {
                Vec<T, W> v[B];
                turn([&](int j) { return at[j] + k; }, v);
                for (int j = 0; j < B; j++)
                    store(out + j * L, convert<double>(v[j]));
            }
        }
        i += pixels;
    }
    for (; i < n && (from + i < c->length || i == left); i++)
        one(i);
    // Outside the image its edges are repeated.
    const auto repeat = [=](Index at, Index edge) { store(to + at * L, load<Vec<double, L>>(to + edge * L)); };
    for (Index k = 0; k < left; k++)
        if (left < n)
            repeat(k, left);
        else
            one(k);
    for (; i < n; i++)
        repeat(i, i - 1);
}
// n sums of R rows to their lines from column `at` on.
template<int NC, int R, class L> void turnBack(const L* sums, Index n, char* const* lines, Index count, Index at)
{
    for (Index i = 0; i < n && NC > 1; i++)
        for (Index r = 0; r < count; r++)
            store(reinterpret_cast<L*>(lines[r]) + (at + i) * NC, load<Vec<L, NC>>(sums + (R * i + r) * NC));
    using V = Full<L>;
    constexpr int W = lanes<V>, B = 16 / sizeof(L);
    for (int r = 0; r < count && NC == 1; r += B)
        for (Index i = 0; i < n; i += W) {
            V v[B];
            turn([&](int k) { return sums + R * (i + k) + r; }, v);
            for (int k = 0; k < B && r + k < count; k++) {
                L* const to = reinterpret_cast<L*>(lines[r + k]) + at + i;
                if (n - i >= W)
                    store(to, v[k]);
                else
                    storePartial(to, v[k], static_cast<int>(n - i));
            }
        }
}

// Adds n taps, the first of which is number `at` modulo P, to the parts of a column.
template<int L, int P> QVR_APART void addRun(const double* s, const double* w, Index n, Index at, double* parts)
{
    using V = Vec<double, L>;
    Index k = 0;
    for (; at % P != 0 && k < n; k++, at++) {
        double* const part = parts + at % P * L;
        store(part, fma(load<V>(s + k * L), splat<V>(w[k]), load<V>(part)));
    }
    V part[P];
    for (int p = 0; p < P; p++)
        part[p] = load<V>(parts + p * L);
    dot<L>(s + k * L, w + k, n - k, part);
    for (int p = 0; p < P; p++)
        store(parts + p * L, part[p]);
}

template<class T, int NC, int R>
void filterGroup(const qvrColumns* c, const char* const* rows, char* const* lines, Index count)
{
    using O = Line<T>;
    constexpr int P = kParts<T>;
    constexpr Index L = R * NC, room = kTurned / L;
    using V = Vec<double, L>;
    alignas(64) double s[kTurned + 2 * kBlock * L];
    alignas(64) O sums[(kColumns + kLanes<O>)*L];
    const bool fits = c->most <= room;
    for (Index x = 0, end, base = 0, have = 0; x < c->width; x = end) {
        const Index first = c->first[x];
        end = x + (fits ? kColumns : kLongColumns);
        end = end < c->width ? end : c->width;
        while (fits && c->first[end - 1] + c->most - first > room)
            end--;
        const Index need = c->first[end - 1] + c->most;
        if (fits) {
            // Pixels that are at hand move to the front now and then.
            if (x == 0 || need - base > room / 2) {
                if (x > 0 && have > first)
                    __builtin_memmove(s, s + (first - base) * L, static_cast<size_t>((have - first) * L) * sizeof *s);
                else
                    have = first;
                base = first;
            }
            const Index n = need > have ? qvrAlignUp(need - have, kBlock) : 0;
            turnRows<T, NC, R>(c, rows, count, have, n, s + (have - base) * L);
            have += n;
            eachColumn<L, P>(c, x, end, s, base, [&](Index i, V sum) { store(sums + L * (i - x), convert<O>(sum)); });
        } else {
            // Runs of pixels, of which every column takes its part.
            double parts[kLongColumns][P * L] = {};
            for (Index at = first; at < need; at += room) {
                const Index n = need - at < room ? need - at : room;
                turnRows<T, NC, R>(c, rows, count, at, n, s);
                for (Index i = x; i < end; i++) {
                    const Index list = i % c->lists, from = c->first[i], skip = at > from ? at - from : 0;
                    const Index rest = at + n - from < c->count[list] ? at + n - from : c->count[list];
                    if (skip < rest)
                        addRun<L, P>(s + (from + skip - at) * L,
                                     static_cast<const double*>(c->weights) + list * c->stride + skip, rest - skip,
                                     skip, parts[i - x]);
                }
            }
            for (Index i = 0; i < end - x; i++) {
                V sum = load<V>(parts[i]);
                for (int p = 1; p < P; p++)
                    sum += load<V>(parts[i] + p * L);
                store(sums + L * i, convert<O>(sum));
            }
        }
        turnBack<NC, R>(sums, end - x, lines, count, x);
    }
}
// ---- Low pass: along a row, at a half -------------------------------------------------------------------------------

// All columns have one list of up to 13 taps. Pixels of even and odd number from the first tap on are dealt to a stream
// each, so part h of column i is the sum of element i + m of stream h times weight 2 m + h, and columns are the lanes.
constexpr Index kStream = 1024, kHalfLanes = 4 * kLanes<double>;
struct HalfList {
    const double* weight;
    Index from[2], end[2]; // m
};

// Columns from element 0 of the streams on; whether all are finite.
QVR_APART bool addHalf(const HalfList& l, const double* streams, Index n, float* line)
{
    using V = Vec<double, kHalfLanes>;
    using F = Vec<float, kHalfLanes>;
    const double *const even = streams + l.from[0], *const odd = streams + kStream + l.from[1];
    const double *const u = l.weight + 2 * l.from[0], *const v = l.weight + 2 * l.from[1] + 1;
    Mask<F> most = {}; // of magnitudes, which are ordered as their bits
    const auto sums = [=, &most](Index evens, Index odds) __attribute__((always_inline)) {
        for (Index x = 0; x < n; x += kHalfLanes) {
            const Index i = x < n - kHalfLanes ? x : n - kHalfLanes;
            V part[2] = {};
            for (Index m = 0; m < evens; m++)
                part[0] = fma(load<V>(even + i + m), splat<V>(u[2 * m]), part[0]);
            for (Index m = 0; m < odds; m++)
                part[1] = fma(load<V>(odd + i + m), splat<V>(v[2 * m]), part[1]);
            const F sum = convert<float>(part[0] + part[1]);
            most = max(most, bitcast<Mask<F>>(abs(sum)));
            store(line + i, sum);
        }
    };
    const Index evens = l.end[0] - l.from[0], odds = l.end[1] - l.from[1];
    if (evens == 1 && odds == 2) // linear
        sums(1, 2);
    else if (evens == 1 && odds == 4) // cubic
        sums(1, 4);
    else if (evens == 5 && odds == 6) // Lanczos
        sums(5, 6);
    else
        sums(evens, odds);
    return !anyTrue(most >= bitcast<Mask<F>>(splat<F>(__builtin_inff())));
}

void filterHalf(const qvrColumns* c, const char* const* rows, char* const* lines, Index count)
{
    using V = Vec<float, 4>;
    alignas(64) double streams[2 * kStream];
    int32_t edge[64], pixel[64];
    const double* const w = static_cast<const double*>(c->weights);
    const Index taps = c->count[0], reach = taps / 2, most = kStream - reach - kHalfLanes;
    const HalfList all = {w, {0, 0}, {taps - reach, reach}};
    // Zeros at the ends are left out, if no pixel but some at the ends of the row gets lost.
    HalfList list = all;
    for (Index h = 0; h < 2; h++) {
        while (list.from[h] < list.end[h] && w[2 * list.from[h] + h] == 0)
            list.from[h]++;
        while (list.from[h] < list.end[h] && w[2 * list.end[h] - 2 + h] == 0)
            list.end[h]--;
    }
    if (list.from[0] == list.end[0] || list.from[1] == list.end[1])
        list = all;
    *c->finite = 1;
    for (Index done = 0, x, n; done < c->width; done = x + n) {
        x = done < c->width - kHalfLanes ? done : c->width - kHalfLanes;
        n = c->width - x < most ? c->width - x : most;
        // Blocks of elements are inside the image; the others come one by one.
        const Index from = c->first[x], begin = from < 0 ? (1 - from) / 2 : 0, inside = (c->length - from) / 2;
        const Index end = begin + ((inside < n + reach ? inside : n + reach) - begin) / 4 * 4;
        Index edges = 0;
        for (Index i = begin > 0 ? 0 : end; i < n + reach; i = i + 1 == begin ? end : i + 1)
            for (Index h = 0; h < 2; h++, edges++) {
                edge[edges] = static_cast<int32_t>(h * kStream + i);
                pixel[edges] = static_cast<int32_t>(clampIndex(from + 2 * i + h, c->length));
            }
        double* const s = streams + (-begin & 7);
        for (Index r = 0; r < count; r++) {
            const float *const row = reinterpret_cast<const float*>(rows[r]), *const at = row + from;
#pragma clang loop unroll_count(4)
            for (Index i = begin; i < end; i += 4) {
                const V a = load<V>(at + 2 * i), b = load<V>(at + 2 * i + 4);
                store(s + i, convert<double>(shuffleBlocks<0, 2, 4, 6>(a, b)));
                store(s + kStream + i, convert<double>(shuffleBlocks<1, 3, 5, 7>(a, b)));
            }
            for (Index e = 0; e < edges; e++)
                s[edge[e]] = load<Vec<float, 1>>(row + pixel[e])[0];
            double none = 0; // of the pixels that have no weight in any column
            for (Index h = 0; h < 2; h++) {
                for (Index i = 0; i < list.from[h]; i++)
                    none += s[h * kStream + i] * 0;
                for (Index i = n - 1 + list.end[h]; i < n - 1 + all.end[h]; i++)
                    none += s[h * kStream + i] * 0;
            }
            float* const line = reinterpret_cast<float*>(lines[r]) + x;
            if (!addHalf(list, s, n, line) || !(none == 0)) {
                addHalf(all, s, n, line);
                *c->finite = 0;
            }
        }
    }
}

template<class T, int NC>
void filterLowPass(const qvrColumns* c, const char* const* rows, char* const* lines, Index count)
{
    if constexpr (sizeof(T) == 4)
        if (c->lists == 1 && c->pixels == 2 && c->width >= 4 * kHalfLanes)
            return filterHalf(c, rows, lines, count);
    constexpr Index kMany = kTogether<T, NC>, kFew = NC == 1 ? 4 : 1;
    if (count > kFew)
        filterGroup<T, NC, kMany>(c, rows, lines, count);
    else
        filterGroup<T, NC, kFew>(c, rows, lines, count);
}

template<class T, int NC>
void addTaps(const qvrColumns* c, const char* const* rows, Index count, Index from, Index n, const double* w,
             double* parts)
{
    constexpr Index R = kTogether<T, NC>, L = R * NC, room = kTurned / L;
    alignas(64) double s[kTurned + kBlock * L];
    for (Index k = 0; k < n; k += room) {
        const Index rest = n - k < room ? n - k : room;
        turnRows<T, NC, R>(c, rows, count, from + k, rest, s);
        addRun<L, kParts<T>>(s, w + k, rest, 0, parts);
    }
}

// ---- Output rows ----------------------------------------------------------------------------------------------------

// The sums of a row's lines. Singles have one rounding less for each tap where products are fused.
template<class T> void blendLowPass(const qvrColumns* c, const qvrRowTaps* rows, char* to)
{
    using L = Line<T>;
    constexpr bool fused = kFma && sizeof(T) == 4;
    using A = decltype(L{} + typename FloatOf < fused || sizeof(T) == 8 ? 8 : 4 > ::type{});
    addRows<A, fused || sizeof(T) == 8 ? Sum::fromZero : Sum::rounded, T>(c, rows, to);
}

// ---- Without antialiasing -------------------------------------------------------------------------------------------

// Two rows at a time, where there are: places and weights, too many for the first cache, are loaded once for both. AVX
// takes bytes to floats by halves of registers, of which it has too few for that.
template<class T> constexpr int kPair = sizeof(T) == 1 && kAvx && !kAvx2 ? 1 : 2;

// The taps of the columns at[0], at[1], ... of R rows, sorted by tap; nothing is read behind s[r][length - 1].
template<int NT, int R, class V>
QVR_INLINE void tapsAt(const Elem<V>* const* s, const int32_t* at, Index length, V (*t)[NT])
{
    constexpr bool fours = sizeof(Elem<V>) == 4 && NT > 2;
    if constexpr (kAvx2 && lanes<V> == 8)
        // Enlarging: all of one tap come out of one load.
        if (at[7] - at[0] < 8 && at[0] + NT + 7 <= length) {
            const auto from = load<Vec<int32_t, 8>>(at) - at[0];
            for (int r = 0; r < R; r++)
                for (int k = 0; k < NT; k++)
                    t[r][k] = choose8(load<V>(s[r] + at[0] + k), from);
            return;
        }
    for (int r = 0; r < R; r++) {
        if constexpr (fours)
            fourColumns([=](int i) { return s[r] + at[i]; }, t[r]);
        for (int k = fours ? 4 : 0; k < NT; k += 2)
            pairColumns([=](int i) { return s[r] + at[i] + k; }, t[r][k], t[r][k + 1]);
    }
}
// Bytes: from one load where the columns are near, else from four bytes at each place.
template<int NT, int R, class V>
QVR_INLINE void tapsAt(const uint8_t* const* s, const int32_t* at, Index length, V (*t)[NT])
{
    constexpr int N = lanes<V>;
    using I = Vec<int32_t, N>;
    if constexpr (kSsse3) {
        if (at[N - 1] - at[0] < 16 && at[0] + NT + 15 <= length) {
            // Each 32-bit lane picks its byte and three zeros.
            const auto from = bitcast<Vec<uint8_t, 4 * N>>((load<I>(at) - at[0]) | static_cast<int32_t>(0x80808000));
            for (int r = 0; r < R; r++)
                for (int k = 0; k < NT; k++) {
                    const auto bytes = load<Vec<uint8_t, 16>>(s[r] + at[0] + k);
                    if constexpr (N == 8)
                        t[r][k] = convert<float>(bitcast<I>(shuffleBytes(concat(bytes, bytes), from)));
                    else
                        t[r][k] = convert<float>(bitcast<I>(shuffleBytes(bytes, from)));
                }
            return;
        }
    }
    for (int r = 0; r < R; r++)
        for (int k = 0; k < NT; k += k + 4 < NT ? NT - 4 : 4) {
            Vec<uint32_t, N> v;
            for (int i = 0; i < N; i++)
                v[i] = load<Vec<uint32_t, 1>>(s[r] + at[i] + k)[0];
            for (int i = 0; i < 4; i++)
                t[r][k + i] = convert<float>(bitcast<I>((v >> (8u * i)) & 255u));
        }
}

// One channel: neighbouring columns are the lanes.
template<int NT, int R, class T>
QVR_APART void filterColumns(const qvrColumns* c, const T* const (&rows)[R], Line<T>* const (&lines)[R])
{
    using A = Line<T>;
    using V = Full<A>;
    const A* const w = static_cast<const A*>(c->weights);
    const int32_t* const first = c->first;
    const Index from = c->from, to = c->to, length = c->length, width = c->width;
    const T* const s[2] = {rows[0], rows[R - 1]};
    A* const line[2] = {lines[0], lines[R - 1]};
    const auto block = [=](Index x) {
        V t[R][NT], sum[R];
        tapsAt<NT, R>(s, first + x, length, t);
        for (int r = 0; r < R; r++)
            if constexpr (NT == 2) {
                sum[r] = fma(t[r][1] - t[r][0], load<V>(w + x), t[r][0]);
            } else {
                sum[r] = load<V>(w + x) * t[r][0];
                for (int k = 1; k < NT; k++)
                    sum[r] = fma(load<V>(w + k * width + x), t[r][k], sum[r]);
            }
        for (int r = 0; r < R; r++)
            store(line[r] + x, sum[r]);
    };
    // On whole registers of the tables, but for the first and the last.
    constexpr Index L = lanes<V>;
    block(from);
    Index x = qvrAlignUp(from + 1, L);
    for (; x + L <= to; x += L)
        block(x);
    if (x < to)
        block(to - L);
}

// Byte k of 32-bit lanes is a channel: pixel K of each 16 bytes as floats.
template<int K, int N> QVR_INLINE Vec<float, N> pixelOf(Vec<uint8_t, 4 * N> v)
{
    const Vec<uint8_t, 4 * N> zero = {};
    constexpr int b = 4 * K, z = 4 * N;
    if constexpr (N == 8)
        return convert<float>(bitcast<Vec<int32_t, 8>>(
            __builtin_shufflevector(v, zero, b, z, z, z, b + 1, z, z, z, b + 2, z, z, z, b + 3, z, z, z, b + 16, z, z,
                                    z, b + 17, z, z, z, b + 18, z, z, z, b + 19, z, z, z)));
    else
        return convert<float>(bitcast<Vec<int32_t, 4>>(
            __builtin_shufflevector(v, zero, b, z, z, z, b + 1, z, z, z, b + 2, z, z, z, b + 3, z, z, z)));
}

// Four channels: one pixel in four lanes, two in eight.
template<int NT, int R>
QVR_APART void filterPixels(const qvrColumns* c, const uint8_t* const (&rows)[R], float* const (&lines)[R])
{
    const float* const w = static_cast<const float*>(c->weights);
    const int32_t* const first = c->first;
    const uint8_t* const s[2] = {rows[0], rows[R - 1]};
    float* const line[2] = {lines[0], lines[R - 1]};
    constexpr int P = kLanes<float> / 4;
    const auto block = [=](Index x) {
        const auto both = [&]<class X>(X, const auto* a, const auto* b) {
            if constexpr (P == 2)
                return concat(load<X>(a), load<X>(b));
            else
                return load<X>(a);
        };
        using V = Vec<float, 4 * P>;
        const Index a = 4 * Index{first[x]}, b = 4 * Index{first[x + P - 1]};
        const float *const u = w + x * NT, *const v = w + (x + P - 1) * NT;
        V sum[R], four = both(Vec<float, 4>{}, u, v);
        for (int r = 0; r < R; r++) {
            const auto pixels = both(Vec<uint8_t, 16>{}, s[r] + a, s[r] + b);
            sum[r] = shuffleBlocks<0, 0, 0, 0>(four) * pixelOf<0, 4 * P>(pixels);
            sum[r] = fma(shuffleBlocks<1, 1, 1, 1>(four), pixelOf<1, 4 * P>(pixels), sum[r]);
            sum[r] = fma(shuffleBlocks<2, 2, 2, 2>(four), pixelOf<2, 4 * P>(pixels), sum[r]);
            sum[r] = fma(shuffleBlocks<3, 3, 3, 3>(four), pixelOf<3, 4 * P>(pixels), sum[r]);
        }
        if constexpr (NT == 6) {
            // The last two taps are the last of the four from the third on.
            four = both(Vec<float, 4>{}, u + 2, v + 2);
            for (int r = 0; r < R; r++) {
                const auto more = both(Vec<uint8_t, 16>{}, s[r] + a + 8, s[r] + b + 8);
                sum[r] = fma(shuffleBlocks<2, 2, 2, 2>(four), pixelOf<2, 4 * P>(more), sum[r]);
                sum[r] = fma(shuffleBlocks<3, 3, 3, 3>(four), pixelOf<3, 4 * P>(more), sum[r]);
            }
        }
        for (int r = 0; r < R; r++)
            store(line[r] + 4 * x, sum[r]);
    };
    const Index to = c->to - P;
    for (Index x = c->from; x < to; x += P)
        block(x);
    block(to);
}

// Columns all of whose taps are in the image; a few are taken as those outside.
void findTaps(qvrColumns* c)
{
    for (c->from = 0; c->from < c->width && c->first[c->from] < 0;)
        c->from++;
    for (c->to = c->width; c->to > c->from && c->first[c->to - 1] + c->most > c->length;)
        c->to--;
    if (c->to - c->from < kLanes<float>)
        c->from = c->to = c->width;
}
template<class T, int NC, int NT> void filterOutside(const qvrColumns* c, const T* s, Index x, Line<T>* line)
{
    using A = Line<T>;
    using V = Vec<A, NC>;
    const A* const w = static_cast<const A*>(c->weights) + (NC == 1 ? x : x * NT);
    const Index perTap = NC == 1 ? c->width : 1;
    const auto tap = [=](Index k) {
        return widened<A>(load<Vec<T, NC>>(s + clampIndex(c->first[x] + k, c->length) * NC));
    };
    V sum = tap(0);
    // A single column of two taps: no difference is formed.
    if (NT == 2 && c->first[x] >= 0 && c->first[x] < c->length - 1)
        sum = fma(tap(1) - sum, splat<V>(*w), sum);
    if (NT > 2)
        sum = sum * splat<V>(*w);
    for (Index k = 1; k < NT && NT > 2; k++)
        sum = fma(splat<V>(w[k * perTap]), tap(k), sum);
    store(line + x * NC, sum);
}

template<class T, int NC, int NT, int R>
void filterRows(const qvrColumns* c, const T* const (&rows)[R], Line<T>* const (&lines)[R])
{
    for (int r = 0; r < R; r++)
        for (Index x = c->from > 0 ? 0 : c->to; x < c->width; x = x + 1 == c->from ? c->to : x + 1)
            filterOutside<T, NC, NT>(c, rows[r], x, lines[r]);
    if (c->from == c->to)
        return;
    if constexpr (NC == 4)
        filterPixels<NT, R>(c, rows, lines);
    else
        filterColumns<NT, R>(c, rows, lines);
}
template<class T, int NC, int NT>
void filterTapsOf(const qvrColumns* c, const char* const* rows, char* const* lines, Index count)
{
    const auto row = [=](Index r) { return reinterpret_cast<const T*>(rows[r]); };
    const auto line = [=](Index r) { return reinterpret_cast<Line<T>*>(lines[r]); };
    if constexpr (kPair<T> == 2)
        if (count == 2)
            return filterRows<T, NC, NT, 2>(c, {row(0), row(1)}, {line(0), line(1)});
    filterRows<T, NC, NT, 1>(c, {row(0)}, {line(0)});
}
template<class T, int NC> void filterTaps(const qvrColumns* c, const char* const* rows, char* const* lines, Index count)
{
    if (c->most == 6)
        filterTapsOf<T, NC, 6>(c, rows, lines, count);
    else if (c->most == 4)
        filterTapsOf<T, NC, 4>(c, rows, lines, count);
    else if constexpr (sizeof(T) > 1)
        filterTapsOf<T, NC, 2>(c, rows, lines, count);
}

template<class T> void blendTaps(const qvrColumns* c, const qvrRowTaps* rows, char* to)
{
    using A = Line<T>;
    const Index n = c->width * c->channels;
    const A* const* const line = reinterpret_cast<const A* const*>(rows->line);
    T* const dst = reinterpret_cast<T*>(to);
    if constexpr (sizeof(T) == 1) {
        addStreams<float, Sum::plain>(line, 0, rows->single, rows->count, dst, n, rows->ahead);
    } else if (rows->count == 2) {
        const auto f = static_cast<A>(rows->weight[1]);
        eachBlock<A>(n, [&]<int N>(Index i) {
            using V = Vec<A, N>;
            if (rows->ahead != 0)
                askFor(dst + i, rows->ahead, N);
            const V upper = load<V>(line[0] + i), lower = load<V>(line[1] + i);
            store(dst + i, rows->apart ? fma(lower - upper, splat<V>(f), upper) : upper);
        });
    } else {
        addRows<A, Sum::plain, T>(c, rows, to);
    }
}

template<class T, int NC>
constexpr qvrRowKernels kTapsOf = {
    sizeof(T), NC,      sizeof(Line<T>), qvrWeights_plain,  sizeof(T) == 8, kFma,    1,
    kPair<T>,  nullptr, findTaps,        filterTaps<T, NC>, blendTaps<T>,   nullptr, nullptr};
constexpr qvrRowKernels kTaps[] = {kTapsOf<uint8_t, 1>, kTapsOf<uint8_t, 4>, kTapsOf<float, 1>, kTapsOf<double, 1>};
template<class T, int NC>
constexpr qvrRowKernels kLowPassOf = {
    sizeof(T),        NC, sizeof(Line<T>), qvrWeights_double,    sizeof(T) == 8,  kFma,           kParts<T>,
    kTogether<T, NC>, 0,  nullptr,         filterLowPass<T, NC>, blendLowPass<T>, addTaps<T, NC>, nullptr};
constexpr qvrRowKernels kLowPass[] = {kLowPassOf<uint8_t, 1>, kLowPassOf<uint8_t, 4>, kLowPassOf<float, 1>,
                                      kLowPassOf<double, 1>};
constexpr qvrRowKernels kWords[] = {
    {1, 1, 4, qvrWeights_double, 0, kFma, 1, kRowsOfWords, wordsBytes, makeWords<1>, filterWords<1>, blendWords<1>,
     nullptr, &kLowPass[qvrPixel_8u_C1]},
    {1, 4, 4, qvrWeights_double, 0, kFma, 1, kRowsOfWords, wordsBytes, makeWords<4>, filterWords<4>, blendWords<4>,
     nullptr, &kLowPass[qvrPixel_8u_C4]},
};

} // namespace

extern "C" void SLOT(ownResizeTaps)(const qvrResizeBand* band, int pixel)
{
    qvrResizeSeparable(band, !band->lowPass            ? &kTaps[pixel]
                             : pixel <= qvrPixel_8u_C4 ? &kWords[pixel]
                                                       : &kLowPass[pixel]);
}
