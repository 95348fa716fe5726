// Complex numbers in vectors.
//
// Outside, points are (re, im) pairs. Inside a transform they stand in split-complex form: groups of one vector of real
// parts and one of imaginary parts. Both directions of the change use shuffles within 16-byte blocks only, so on the
// wide levels the lanes of a group are not in rising order: lane l holds point laneIndex(l). Element-wise work does not
// see it, and twiddles are stored in the same order.
#ifndef QVR_FOURIER_LANES_H
#define QVR_FOURIER_LANES_H

#include "frame/element.h"
#include "frame/simd.h"

namespace {

// A group of points.
template<class V> struct Cx {
    V re, im;
};

// The full register's group.
template<class T> using Group = Cx<Full<T>>;

template<class V> QVR_INLINE Cx<V> operator+(Cx<V> a, Cx<V> b)
{
    return {a.re + b.re, a.im + b.im};
}
template<class V> QVR_INLINE Cx<V> operator-(Cx<V> a, Cx<V> b)
{
    return {a.re - b.re, a.im - b.im};
}
// a - i b and a + i b.
template<class V> QVR_INLINE Cx<V> minusI(Cx<V> a, Cx<V> b)
{
    return {a.re + b.im, a.im - b.re};
}
template<class V> QVR_INLINE Cx<V> plusI(Cx<V> a, Cx<V> b)
{
    return {a.re - b.im, a.im + b.re};
}
template<class V> QVR_INLINE Cx<V> operator*(Cx<V> a, Cx<V> b)
{
    return {fma(a.re, b.re, -(a.im * b.im)), fma(a.re, b.im, a.im * b.re)};
}

// The inverse transform is the forward one with real and imaginary parts exchanged on the way in and on the way out.
template<bool Swap, class V> QVR_INLINE Cx<V> swapIf(Cx<V> z)
{
    if constexpr (Swap)
        return {z.im, z.re};
    else
        return z;
}

template<class V> constexpr int laneIndex(int lane)
{
    constexpr int W = lanes<V>;
    constexpr int block = W * sizeof(Elem<V>) >= 16 ? static_cast<int>(16 / sizeof(Elem<V>)) : W;
    constexpr int half = block / 2 > 0 ? block / 2 : 1;
    const int b = lane / block, j = lane % block;
    return j / half * (W / 2) + b * half + j % half;
}

// Two vectors of pairs to a group, and back.
template<class V> QVR_INLINE Cx<V> split(V v0, V v1)
{
    if constexpr (sizeof(Elem<V>) == 4)
        return {shuffleBlocks<0, 2, 4, 6>(v0, v1), shuffleBlocks<1, 3, 5, 7>(v0, v1)};
    else
        return {shuffleBlocks<0, 2>(v0, v1), shuffleBlocks<1, 3>(v0, v1)};
}
template<class V> struct Pairs {
    V v0, v1;
};
template<class V> QVR_INLINE Pairs<V> join(Cx<V> z)
{
    if constexpr (sizeof(Elem<V>) == 4)
        return {shuffleBlocks<0, 4, 1, 5>(z.re, z.im), shuffleBlocks<2, 6, 3, 7>(z.re, z.im)};
    else
        return {shuffleBlocks<0, 2>(z.re, z.im), shuffleBlocks<1, 3>(z.re, z.im)};
}

template<class V, bool Aligned = false> QVR_INLINE Cx<V> loadPairs(const Elem<V>* p)
{
    return split(loadIf<Aligned, V>(p), loadIf<Aligned, V>(p + lanes<V>));
}
template<class V> QVR_INLINE void storePairs(Elem<V>* p, Cx<V> z)
{
    const Pairs<V> v = join(z);
    store(p, v.v0);
    store(p + lanes<V>, v.v1);
}

// Groups of tables and work memory. The wide levels lose nothing by the form for any address.
template<class V, bool Aligned = !kAvx> QVR_INLINE Cx<V> loadGroup(const Elem<V>* p)
{
    return {loadIf<Aligned, V>(p), loadIf<Aligned, V>(p + lanes<V>)};
}
template<bool Aligned = !kAvx, class V> QVR_INLINE void storeGroup(Elem<V>* p, Cx<V> z)
{
    storeIf<Aligned>(p, z.re);
    storeIf<Aligned>(p + lanes<V>, z.im);
}

// Halves exchanged, the load of a vector that is read backwards.
template<class V> QVR_INLINE V swapHalves(V v)
{
    if constexpr (sizeof(V) > 16)
        return concat(hi(v), lo(v));
    else
        return v;
}

// Pairs in rising order to the group that has the last point first.
template<class V> QVR_INLINE Cx<V> splitReversed(Pairs<V> v)
{
    if constexpr (sizeof(Elem<V>) == 4) {
        using P = Vec<double, static_cast<int>(sizeof(V) / 8)>;
        return split(bitcast<V>(reversedLanes(bitcast<P>(v.v1))), bitcast<V>(reversedLanes(bitcast<P>(v.v0))));
    } else {
        return split(swapHalves(v.v1), swapHalves(v.v0));
    }
}

// Re and im of each pair exchanged.
template<class V> QVR_INLINE V exchanged(V v)
{
    if constexpr (sizeof(Elem<V>) == 4)
        return shuffleBlocks<1, 0, 3, 2>(v);
    else
        return shuffleBlocks<1, 0>(v);
}
// Im of each pair negated.
template<class V> QVR_INLINE V conjugated(V v)
{
    const Bits<V> sign = iota<Bits<V>>() << (8 * sizeof(Elem<V>) - 1);
    return bitcast<V>(bits(v) ^ sign);
}
template<class V, int... I> QVR_INLINE V alternatingLanes(Elem<V> even, Elem<V> odd, Indices<I...>)
{
    return V{((I & 1) != 0 ? odd : even)...};
}
template<class V> QVR_INLINE V alternating(Elem<V> even, Elem<V> odd)
{
    return alternatingLanes<V>(even, odd, Iota<lanes<V>>{});
}

// Square transposition: rows to columns, r[i] lane j to r[j] lane i.
template<class V> QVR_INLINE void transposeBlocks(V* r)
{
    if constexpr (sizeof(Elem<V>) == 4) {
        const V a = shuffleBlocks<0, 4, 1, 5>(r[0], r[1]), b = shuffleBlocks<2, 6, 3, 7>(r[0], r[1]);
        const V c = shuffleBlocks<0, 4, 1, 5>(r[2], r[3]), d = shuffleBlocks<2, 6, 3, 7>(r[2], r[3]);
        r[0] = shuffleBlocks<0, 1, 4, 5>(a, c);
        r[1] = shuffleBlocks<2, 3, 6, 7>(a, c);
        r[2] = shuffleBlocks<0, 1, 4, 5>(b, d);
        r[3] = shuffleBlocks<2, 3, 6, 7>(b, d);
    } else {
        const V a = shuffleBlocks<0, 2>(r[0], r[1]), b = shuffleBlocks<1, 3>(r[0], r[1]);
        r[0] = a;
        r[1] = b;
    }
}
template<class V> QVR_INLINE void transpose(V* r)
{
    constexpr int block = static_cast<int>(16 / sizeof(Elem<V>));
    for (int i = 0; i < lanes<V>; i += block)
        transposeBlocks(r + i);
    if constexpr (lanes<V> > block)
        for (int i = 0; i < block; i++) {
            const V a = r[i], b = r[i + block];
            r[i] = concat(lo(a), lo(b));
            r[i + block] = concat(hi(a), hi(b));
        }
}

// Points to a vector, and vectors of points as whole pieces: rows to columns.
template<class T> constexpr int kVecPoints = kLanes<T> / 2;
template<class T> QVR_INLINE void transposePoints(Full<double>* r)
{
    if constexpr (sizeof(T) == 4) {
        transpose(r);
    } else if constexpr (kVecPoints<T> == 2) {
        const Full<double> a = r[0], b = r[1];
        r[0] = concat(lo(a), lo(b));
        r[1] = concat(hi(a), hi(b));
    }
}

template<class T> inline void scalePoints(T* data, Index points, T factor)
{
    using V = Full<T>;
    const V f = splat<V>(factor);
    for (Index i = 0; i < 2 * points; i += kLanes<T>)
        store(data + i, load<V>(data + i) * f);
}

} // namespace

#endif
