// Filtering a row to the band's columns: out[x] = w0 s[i] + w1 s[i+1] + ..., the products added from the left.
//
// Weights of one channel stand by tap (all w0, then all w1, ...), those of four channels by pixel. Columns whose taps
// reach past the image take the edge pixel for what is outside.
#ifndef QVR_IMAGE_TAPS_H
#define QVR_IMAGE_TAPS_H

#include "frame/lookup.h"
#include "image/kernels.h"

namespace {

// The type of row buffers, weights and sums for a source type.
template<class T> struct SumOf {
    using type = float;
};
template<> struct SumOf<double> {
    using type = double;
};
template<class T> using Sum = typename SumOf<T>::type;

// start[x]: first tap. Inside the image for x in [from, to).
template<class A> struct TapColumns {
    const int32_t* start;
    const A* w;
    Index perPosition, perTap;
    Index width, from, to, length;
};

template<class A> QVR_INLINE Vec<A, 1> get(const A* s)
{
    return load<Vec<A, 1>>(s);
}
QVR_INLINE Vec<float, 1> get(const uint8_t* s)
{
    return Vec<float, 1>{static_cast<float>(*s)};
}

// One weighted sum in the order of the taps: the first product, then fused or plain steps.
template<class V> QVR_INLINE V addTap(int k, V w, V s, V sum)
{
    return k == 0 ? w * s : fma(w, s, sum);
}

// One output with clamped taps. Method 2 has the fraction for its only weight: s0 + (s1 - s0) f.
template<class T, int NC, int NT> QVR_INLINE void filterOne(const T* s, const TapColumns<Sum<T>>& c, Index x, Sum<T>* h)
{
    using A = Sum<T>;
    using V = Vec<A, 1>;
    for (int k = 0; k < NC; k++) {
        const auto pixel = [&](Index n) { return get(s + clampIndex(c.start[x] + n, c.length) * NC + k); };
        const auto weight = [&](Index n) { return load<V>(c.w + x * c.perPosition + n * c.perTap); };
        V sum = {};
        if constexpr (NT == 2) {
            const V first = pixel(0);
            // A single column outside: no difference is formed.
            sum = c.start[x] < 0 || c.start[x] >= c.length - 1 ? pixel(0) : fma(pixel(1) - first, weight(0), first);
        } else {
            for (int n = 0; n < NT; n++)
                sum = addTap(n, weight(n), pixel(n), sum);
        }
        store(h + x * NC + k, sum);
    }
}

// ---- Taps of neighbouring outputs, sorted by tap --------------------------------------------------------------------

// Two or four neighbouring elements at each of the places at[0], at[1], ...
template<class V, class T> QVR_INLINE void pairsAt(const T* s, const int32_t* at, V& first, V& second)
{
    pairColumns([=](int i) { return s + at[i]; }, first, second);
}
template<class V> QVR_INLINE void foursAt(const float* s, const int32_t* at, V* t)
{
    fourColumns([=](int i) { return s + at[i]; }, t);
}
template<class V> QVR_INLINE void foursAt(const double* s, const int32_t* at, V* t)
{
    pairsAt(s, at, t[0], t[1]);
    pairsAt(s + 2, at, t[2], t[3]);
}

// All taps of the outputs at x .. x + N - 1.
template<int NT, class V, class T> QVR_INLINE void tapsAt(const T* s, const TapColumns<T>& c, Index x, V* t)
{
    const int32_t* const at = c.start + x;
    if constexpr (kAvx2 && sizeof(T) == 4) {
        // Enlarging: all of one tap come out of one load.
        const Index base = at[0];
        if (at[7] - base < 8 && base + NT + 7 <= c.length) {
            const auto from = load<Vec<int32_t, 8>>(at) - static_cast<int32_t>(base);
            for (int k = 0; k < NT; k++)
                t[k] = choose8(load<Vec<float, 8>>(s + base + k), from);
            return;
        }
    }
    if constexpr (NT == 2) {
        pairsAt(s, at, t[0], t[1]);
    } else {
        foursAt(s, at, t);
        if constexpr (NT == 6)
            pairsAt(s + 4, at, t[4], t[5]);
    }
}

// Bytes as floats: from one load where the outputs are near, else from four bytes at each place.
template<int NT, class V> QVR_INLINE void tapsAt(const uint8_t* s, const TapColumns<float>& c, Index x, V* t)
{
    constexpr int N = lanes<V>;
    using I = Vec<int32_t, N>;
    const int32_t* const at = c.start + x;
    if constexpr (kSsse3) {
        const Index base = at[0];
        if (at[N - 1] - base < 16 && base + NT + 15 <= c.length) {
            // Each 32-bit lane picks its byte and three zeros.
            const I from = (load<I>(at) - static_cast<int32_t>(base)) | static_cast<int32_t>(0x80808000);
            for (int k = 0; k < NT; k++) {
                const auto bytes = load<Vec<uint8_t, 16>>(s + base + k);
                if constexpr (N == 8)
                    t[k] =
                        convert<float>(bitcast<I>(shuffleBytes(concat(bytes, bytes), bitcast<Vec<uint8_t, 32>>(from))));
                else
                    t[k] = convert<float>(bitcast<I>(shuffleBytes(bytes, bitcast<Vec<uint8_t, 16>>(from))));
            }
            return;
        }
    }
    const auto fours = [&](Index offset) {
        Vec<uint32_t, N> v;
        for (int i = 0; i < N; i++)
            v[i] = load<Vec<uint32_t, 1>>(s + at[i] + offset)[0];
        return v;
    };
    const auto byteOf = [](Vec<uint32_t, N> v, int k) { return convert<float>(bitcast<I>((v >> (8u * k)) & 255u)); };
    const auto first = fours(0);
    for (int k = 0; k < 4; k++)
        t[k] = byteOf(first, k);
    if constexpr (NT == 6) {
        const auto second = fours(2);
        t[4] = byteOf(second, 2);
        t[5] = byteOf(second, 3);
    }
}

// ---- Rows -----------------------------------------------------------------------------------------------------------

template<class T, int NT> QVR_INLINE void filterInside(const T* s, const TapColumns<Sum<T>>& c, Sum<T>* h)
{
    using V = Full<Sum<T>>;
    constexpr int N = lanes<V>;
    const auto block = [&](Index x) {
        V t[NT], sum = {};
        tapsAt<NT>(s, c, x, t);
        if constexpr (NT == 2) {
            sum = fma(t[1] - t[0], load<V>(c.w + x), t[0]);
        } else {
            for (int k = 0; k < NT; k++)
                sum = addTap(k, load<V>(c.w + k * c.perTap + x), t[k], sum);
        }
        store(h + x, sum);
    };
    if (c.to - c.from < N) {
        for (Index x = c.from; x < c.to; x++)
            filterOne<T, 1, NT>(s, c, x, h);
        return;
    }
    for (Index x = c.from; x + N <= c.to; x += N)
        block(x);
    block(c.to - N);
}

// Byte k of 32-bit lanes is a channel: pixel K of each 16 bytes as floats.
template<int K, int N> QVR_INLINE Vec<float, N> pixelOf(Vec<uint8_t, 4 * N> v)
{
    const Vec<uint8_t, 4 * N> zero = {};
    if constexpr (N == 8) {
        constexpr int b = 4 * K, z = 32;
        return convert<float>(bitcast<Vec<int32_t, 8>>(
            __builtin_shufflevector(v, zero, b, z, z, z, b + 1, z, z, z, b + 2, z, z, z, b + 3, z, z, z, b + 16, z, z,
                                    z, b + 17, z, z, z, b + 18, z, z, z, b + 19, z, z, z)));
    } else {
        constexpr int b = 4 * K, z = 16;
        return convert<float>(bitcast<Vec<int32_t, 4>>(
            __builtin_shufflevector(v, zero, b, z, z, z, b + 1, z, z, z, b + 2, z, z, z, b + 3, z, z, z)));
    }
}

// Four channels: one pixel in four lanes, two in eight.
template<int NT> QVR_INLINE void filterInsidePixels(const uint8_t* s, const TapColumns<float>& c, float* h)
{
    constexpr int P = kLanes<float> / 4;
    using V = Full<float>;
    using B = Vec<uint8_t, 16 * P>;
    const auto both = [&]<class X>(X, const auto* first, const auto* second) {
        if constexpr (P == 2)
            return concat(load<X>(first), load<X>(second));
        else
            return load<X>(first);
    };
    const auto block = [&](Index x) {
        const uint8_t *const p = s + 4 * Index{c.start[x]}, *const q = s + 4 * Index{c.start[x + P - 1]};
        const float *const u = c.w + x * NT, *const v = c.w + (x + P - 1) * NT;
        const B pixels = both(Vec<uint8_t, 16>{}, p, q);
        const V w = both(Vec<float, 4>{}, u, v);
        V sum = shuffleBlocks<0, 0, 0, 0>(w) * pixelOf<0, 4 * P>(pixels);
        sum = fma(shuffleBlocks<1, 1, 1, 1>(w), pixelOf<1, 4 * P>(pixels), sum);
        sum = fma(shuffleBlocks<2, 2, 2, 2>(w), pixelOf<2, 4 * P>(pixels), sum);
        sum = fma(shuffleBlocks<3, 3, 3, 3>(w), pixelOf<3, 4 * P>(pixels), sum);
        if constexpr (NT == 6) {
            // The last two taps are the last of the four from the third on.
            const B more = both(Vec<uint8_t, 16>{}, p + 8, q + 8);
            const V last = both(Vec<float, 4>{}, u + 2, v + 2);
            sum = fma(shuffleBlocks<2, 2, 2, 2>(last), pixelOf<2, 4 * P>(more), sum);
            sum = fma(shuffleBlocks<3, 3, 3, 3>(last), pixelOf<3, 4 * P>(more), sum);
        }
        store(h + 4 * x, sum);
    };
    Index x = c.from;
    for (; x + P <= c.to; x += P)
        block(x);
    for (; x < c.to; x++)
        filterOne<uint8_t, 4, NT>(s, c, x, h);
}

template<class T, int NC, int NT> void filterRow(const T* s, const TapColumns<Sum<T>>& c, Sum<T>* h)
{
    for (Index x = 0; x < c.from; x++)
        filterOne<T, NC, NT>(s, c, x, h);
    if constexpr (NC == 1)
        filterInside<T, NT>(s, c, h);
    else
        filterInsidePixels<NT>(s, c, h);
    for (Index x = c.to; x < c.width; x++)
        filterOne<T, NC, NT>(s, c, x, h);
}

} // namespace

#endif
