// Exponential and natural logarithm in double by tables of 128 rows, after Tang (ACM TOMS 15, 1989, and 16, 1990): the
// a24 kernels of the family, and powers.
#ifndef QVR_ELEMENTARY_EXPONENTIAL_H
#define QVR_ELEMENTARY_EXPONENTIAL_H

#include "elementary/kernel.h"
#include "frame/lookup.h"

namespace {

constexpr float kDenormalScale = 8388608.0f; // 2^23 makes every denormal normal

// A float x = 2^e m with m within 1/256 of the breakpoint 1 + index / 128; just below 2 that is the breakpoint 1 of the
// next power.
template<class V> struct Parted {
    V m, e;
    Bits<V> index;
};
template<class V> QVR_INLINE Parted<V> part(V x)
{
    // The exponent's field less its bias, e as the high bits of a signed number.
    const Bits<V> word = bits(x), rounded = word + (0x8000 - 0x3F800000);
    Parted<V> p;
    p.index = (rounded >> 16) & 127;
    p.m = bitcast<V>(word - (rounded & 0xFF800000));
    p.e = convert<float>(bitcast<Mask<V>>(rounded) >> 23);
    return p;
}

template<int N> using Doubles = Vec<double, N>;

// ln x for positive normal floats, as if shifted by 2^shift: e ln 2 - ln(inverse) + ln(1 + r), r = m inverse - 1
// exactly. The relative error is below 2^-36 everywhere, since next to 1 the first two are zero.
template<class V> QVR_INLINE Doubles<lanes<V>> naturalLogarithm(V x, double shift = 0)
{
    using D = Doubles<lanes<V>>;
    const Parted<V> p = part(x);
    D inverse, log;
    lookUpPairs<2>(&qvrLogTable64[0].inverse, p.index, inverse, log);
    const D r = fma(convert<double>(p.m), inverse, splat<D>(-1));
    const D q = r * polynomial(r, kLogarithmFine);
    return fma(convert<double>(p.e) + shift, splat<D>(0.6931471805599453), log) + q;
}

// e^t for |t| below 700: 2^(j/128) (1 + r + ...), times 2^(k >> 7), with k = round(t * 128 / ln 2) and j = k mod 128.
template<bool kNearest, class D> QVR_INLINE D exponential(D t)
{
    D n;
    const Bits<D> k = nearestInteger<kNearest>(t, 184.66496659301566, n);
    // ln 2 / 128: 41 bits, and the rest.
    const D r = subtractProduct(subtractProduct(t, n, 0x1.62e42fefap-8), n, 0x1.cf79abc9e3b3ap-47);
    const D row = lookUp<1, D>(qvrPowerTable64, k & 127);
    const D scaled = bitcast<D>(bits(row) + ((k & ~uint64_t{127}) << 45));
    return fma(scaled, r * polynomial(r, 0.1666666666, 0.5, 1.0), scaled);
}

// Rounded to float. What is beyond the floats is infinite, also where the caller rounds down or toward zero.
template<bool kNearest, class D> QVR_INLINE auto narrow(D d)
{
    if constexpr (kNearest)
        return convert<float>(d);
    else
        return convert<float>(d >= splat<D>(0x1.ffffffp127) ? splat<D>(__builtin_inf()) : d);
}

} // namespace

#endif
