// The arc tangent of a quotient, by intervals: see inverse.cpp.
#ifndef QVR_ELEMENTARY_ARCTANGENT_H
#define QVR_ELEMENTARY_ARCTANGENT_H

#include "elementary/kernel.h"
#include "frame/lookup.h"

namespace {

// Where the intervals meet, tan((2k + 1) pi/14); the exact place does not matter.
constexpr double kMeet[3] = {0.22824347, 0.79747339, 2.0765214};

// Breakpoints and their arc tangents. A float breakpoint is tan(k pi/7) rounded, with the arc tangent of the rounded
// value.
template<class T> struct Breakpoints;
template<> struct Breakpoints<float> {
    static constexpr float b[4] = {0, 0x1.ed21e6p-2f, 0x1.41038cp+0f, 0x1.1866fep+2f};
    static constexpr float atan[4] = {0, 0x1.cb91f4p-2f, 0x1.cb91f4p-1f, 0x1.58ad76p+0f};
    static constexpr float low[4] = {0, 0x1.df2232p-31f, 0x1.58da6p-28f, 0x1.6527dcp-25f};
};
template<> struct Breakpoints<double> {
    static constexpr double b[4] = {0, 0x1.ed21e59972b0bp-2, 0x1.41038b70be0fep+0, 0x1.1866fe845e765p+2};
    static constexpr double atan[4] = {0, 0x1.cb91f3bbba140p-2, 0x1.cb91f3bbba140p-1, 0x1.58ad76cccb8f0p+0};
};

// atan(sqrt z) / sqrt z for sqrt z <= tan(pi/14).
template<Accuracy A, class V> QVR_INLINE V arcTangentSeries(V z)
{
    if constexpr (A == Accuracy::a24)
        return polynomial(z, kArcTangent24);
    else if constexpr (A == Accuracy::a21)
        return polynomial(z, kArcTangent21);
    else
        return polynomial(z, kArcTangent11);
}
// The same for arguments in double.
template<class V> QVR_INLINE V fineArcTangentSeries(V z)
{
    return polynomial(z, kArcTangentFine);
}

// The row's entry of an interval: m1, m2, m3 tell the lanes beyond each meeting place.
template<class V> QVR_INLINE V chooseByMasks(const Elem<V> (&row)[4], Mask<V> m1, Mask<V> m2, Mask<V> m3)
{
    const V low = m1 ? splat<V>(row[1]) : splat<V>(row[0]);
    const V middle = m2 ? splat<V>(row[2]) : low;
    return m3 ? splat<V>(row[3]) : middle;
}

// atan(y / x) for y, x >= 0, not both zero, finite; in class A11 the quotient is the reciprocal estimate and one Newton
// step. kFine: the series of full double precision.
template<Accuracy A, bool kFine = false, class V> QVR_INLINE V arcTangentOfQuotient(V y, V x)
{
    using T = Elem<V>;
    using B = Breakpoints<T>;
    const Mask<V> m1 = y > x * static_cast<T>(kMeet[0]), m2 = y > x * static_cast<T>(kMeet[1]),
                  m3 = y > x * static_cast<T>(kMeet[2]);
    V b, offset;
    if constexpr (kAvx2 && sizeof(T) == 4) {
        const Mask<V> index = -(m1 + m2 + m3);
        b = choose8(Vec<float, 8>{B::b[0], B::b[1], B::b[2], B::b[3]}, index);
        offset = choose8(Vec<float, 8>{B::atan[0], B::atan[1], B::atan[2], B::atan[3]}, index);
    } else {
        b = chooseByMasks<V>(B::b, m1, m2, m3);
        offset = chooseByMasks<V>(B::atan, m1, m2, m3);
    }
    const V num = subtractProduct(y, b, x), den = fma(b, y, x);
    V t;
    if constexpr (A == Accuracy::a11) {
        const V estimate = reciprocalEstimate(den);
        t = num * (estimate * (splat<V>(2) - den * estimate));
    } else {
        t = num / den;
    }
    if constexpr (kFine)
        return offset + t * fineArcTangentSeries(t * t);
    else
        return offset + t * arcTangentSeries<A>(t * t);
}

// atan x. Beyond 2^30 (2^60 in double) the result no longer depends on x, which keeps products finite. A NaN gets
// through.
template<Accuracy A, class V> QVR_INLINE V arcTangent(V x)
{
    const V limit = splat<V>(kIsDouble<V> ? Elem<V>(0x1p60) : Elem<V>(0x1p30));
    return withSign(arcTangentOfQuotient<A>(min(limit, abs(x)), splat<V>(1)), signOf(x));
}

// The angle of (x, y) with finite coordinates that are not both zero. With kNearest the caller's rounding is to
// nearest, or y is not zero: otherwise the magnitude of a zero angle might be -0.
template<Accuracy A, bool kFine = false, bool kNearest = true, class V> QVR_INLINE V arcTangent2(V y, V x)
{
    V a = arcTangentOfQuotient<A, kFine>(abs(y), abs(x));
    if constexpr (!kNearest)
        a = abs(a);
    const V pi = splat<V>(static_cast<Elem<V>>(3.1415926535897932));
    return withSign(bitcast<Mask<V>>(x) < 0 ? pi - a : a, signOf(y));
}

// The same for all pairs of floats, by the rules of IEEE 754: zeros and infinities by their signs. Within 2^-50.
QVR_INLINE double wideArcTangent2(float yf, float xf)
{
    if (yf != yf || xf != xf)
        return static_cast<double>(yf + xf);
    double y = static_cast<double>(yf), x = static_cast<double>(xf);
    const bool yInfinite = __builtin_isinf(yf), xInfinite = __builtin_isinf(xf);
    if (yInfinite || xInfinite) {
        y = __builtin_copysign(yInfinite ? 1.0 : 0.0, y);
        x = __builtin_copysign(xInfinite ? 1.0 : 0.0, x);
    } else if (y == 0 && x == 0) {
        x = __builtin_copysign(1.0, x);
    }
    using V = Vec<double, 1>;
    return arcTangent2<Accuracy::a24, true, false>(V{y}, V{x})[0];
}

} // namespace

#endif
