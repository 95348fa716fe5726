// Sine, cosine and tangent of any finite float, in double with a correction: to about 2^-60 of the result for the first
// two. The operations are the same on every level, none of them fused, so results are the same bits everywhere.
//
// n = round(x * 32/pi), r = x - n pi/32 as a high and a low part, and with S, C the sine and cosine of n pi/32
//   sin x = S + (S (p(r^2) - 1) + C r q(r^2)),  p(z) = cos sqrt z,  q(z) = sin(sqrt z) / sqrt z.
#ifndef QVR_ELEMENTARY_WIDE_H
#define QVR_ELEMENTARY_WIDE_H

#include "elementary/kernel.h"
#include "frame/lookup.h"

namespace {

// r, and sine and cosine of n pi/32, all as high and low parts.
template<class D> struct Turned {
    D hi, lo, sine, sineLow, cosine, cosineLow;
};

template<class D, class N> QVR_INLINE void lookUpTurn(N n, Turned<D>& t)
{
    if constexpr (sizeof(D) > kVecBytes) {
        Turned<decltype(lo(D{}))> a, b;
        lookUpTurn(lo(n), a);
        lookUpTurn(hi(n), b);
        t.sine = concat(a.sine, b.sine);
        t.sineLow = concat(a.sineLow, b.sineLow);
        t.cosine = concat(a.cosine, b.cosine);
        t.cosineLow = concat(a.cosineLow, b.cosineLow);
    } else {
        const Rows<double, 4, N> row(&qvrTurnTable[0].sine, n & 63);
        pairColumns(row, t.sine, t.sineLow);
        pairColumns([&](int lane) { return row(lane) + 2; }, t.cosine, t.cosineLow);
    }
}

template<class D> QVR_INLINE Turned<D> turn(D x)
{
    using N = Vec<int32_t, lanes<D>>;
    N n{};
    D low{};
    if (__builtin_expect(anyTrue(abs(x) >= splat<D>(0x1p17)), 0)) {
        double rest[lanes<D>], lowOf[lanes<D>] = {};
        int32_t turns[lanes<D>] = {};
        store(rest, x);
        qvrReduceLarge(rest, lowOf, turns, lanes<D>);
        x = load<D>(rest);
        low = load<D>(lowOf);
        n = load<N>(turns);
    }
    const D half = bitcast<D>(bits(splat<D>(0.5)) | signOf(x));
    const N k = toIntTruncate(x * 10.185916357881302 + half);
    const D m = convert<double>(k);
    // pi/32: its first 31 bits, exact times 21 bits, and the rest.
    const D a = x - m * 0x1.921fb544p-4, b = m * 3.798187816439979e-12;
    Turned<D> t;
    t.hi = a - b;
    t.lo = ((a - t.hi) - b) + low;
    lookUpTurn(n + k, t);
    return t;
}

template<class D> QVR_INLINE D wideSine(const Turned<D>& t)
{
    const D z = t.hi * t.hi;
    const D p = z * (-0.5 + z * (1.0 / 24 + z * (-1.0 / 720 + z * (1.0 / 40320))));
    const D q = z * (-1.0 / 6 + z * (1.0 / 120 + z * (-1.0 / 5040 + z * (1.0 / 362880))));
    return t.sine +
           (t.cosine * t.hi + (t.sine * p + t.cosine * t.hi * q + (t.sineLow + t.cosine * t.lo + t.cosineLow * t.hi)));
}
// The sine a quarter of a turn on.
template<class D> QVR_INLINE D wideCosine(const Turned<D>& t)
{
    return wideSine(Turned<D>{t.hi, t.lo, t.cosine, t.cosineLow, -t.sine, -t.sineLow});
}

// y, but x itself where that is a zero, whose sign stays.
template<class D> QVR_INLINE D orZero(D x, D y)
{
    return abs(x) < splat<D>(0x1p-252) ? x : y;
}

enum class Wide { sine, cosine, tangent };
template<Wide F, class D> QVR_INLINE D wideValue(D x)
{
    const Turned<D> t = turn(x);
    if constexpr (F == Wide::sine)
        return orZero(x, wideSine(t));
    else if constexpr (F == Wide::cosine)
        return wideCosine(t);
    else
        return orZero(x, wideSine(t) / wideCosine(t));
}

} // namespace

#endif
