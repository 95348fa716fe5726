// Powers, with an exponent for each element and with one for all.
//
// Class a24: x^y = e^(y ln x), both in double by tables. The float classes: 2^(y log2 x) with log2 of the mantissa in
// [sqrt(1/2), sqrt 2) as a polynomial and 2^f on [0, 1) as another. The product may be as large as 128, so the
// logarithm has 9 bits more than the class promises.
#include "elementary/exponential.h"
#include "elementary/functions.h"

namespace {

// What an exponent does to the sign of a negative base.
enum class Parity { fraction, odd, even };

Parity parityOf(float y)
{
    const uint32_t a = __builtin_bit_cast(uint32_t, y) & ~kSignBit;
    if (a < 0x3F800000 || a >= kInfinityBits)
        return Parity::fraction;
    if (a >= 0x4B800000) // 2^24
        return Parity::even;
    const int binary = static_cast<int>(a >> 23) - 127; // bits before the point, less one
    const uint32_t m = (a & 0x7FFFFF) | 0x800000;
    if (binary < 23 && (m << (binary + 9)) != 0)
        return Parity::fraction;
    return binary == 24 || (m >> (23 - binary) & 1) == 0 ? Parity::even : Parity::odd;
}

constexpr double kClamp = 110; // e^110 is beyond the floats on both sides

template<bool kNearest, class V> QVR_INLINE V finePower(V x, Doubles<lanes<V>> y, double shift = 0)
{
    using D = Doubles<lanes<V>>;
    const D t = y * naturalLogarithm(x, shift);
    return narrow<kNearest>(exponential<kNearest>(max(min(t, splat<D>(kClamp)), splat<D>(-kClamp))));
}

// x is positive and finite.
template<bool kNearest> float positivePower(float x, float y)
{
    using V = Vec<float, 1>;
    const Doubles<1> exponent = {static_cast<double>(y)};
    if (x < 0x1p-126f)
        return finePower<kNearest>(V{x * kDenormalScale}, exponent, -23)[0];
    return finePower<kNearest>(V{x}, exponent)[0];
}

// One pair by the rules, in this order.
template<bool kNearest> float scalarPower(const Error& error, float x, float y, Parity parity)
{
    const float infinity = __builtin_inff();
    const uint32_t xBits = __builtin_bit_cast(uint32_t, x), yBits = __builtin_bit_cast(uint32_t, y);
    // A comparison takes a denormal for the zero that it is to the caller's arithmetic.
    const uint32_t ax = isZero(x) ? 0 : xBits & ~kSignBit, ay = isZero(y) ? 0 : yBits & ~kSignBit;
    const bool xNegative = xBits & kSignBit, yNegative = yBits & kSignBit;
    constexpr uint32_t one = 0x3F800000;
    if (ay == 0 || xBits == one || (ax == one && ay == kInfinityBits))
        return 1;
    if (ax > kInfinityBits)
        return x;
    if (ay > kInfinityBits)
        return y;
    if (ay == kInfinityBits) {
        if (ax == 0 && yNegative)
            error(qvrWarnDomain);
        return (ax > one) == yNegative ? 0 : infinity;
    }
    const float sign = xNegative && parity == Parity::odd ? -1.0f : 1.0f;
    if (ax == kInfinityBits)
        return sign * (yNegative ? 0 : infinity);
    if (ax == 0) {
        if (!yNegative)
            return sign * 0;
        error(qvrWarnDomain);
        return sign * infinity;
    }
    if (xNegative && parity == Parity::fraction) {
        error(qvrWarnDomain);
        return __builtin_bit_cast(float, kQuietNan);
    }
    return sign * positivePower<kNearest>(__builtin_bit_cast(float, ax), y);
}

// From here on the float power of two may be infinite for a finite result: t = y log2 x has an error of 2^-15 there.
constexpr float kNearOverflow = 127.9995f;

template<bool kNearest, class V> __attribute__((noinline)) V nearOverflow(V x, V y, V power, Mask<V> near)
{
    using One = Vec<float, 1>;
    for (int i = 0; i < lanes<V>; i++)
        if (near[i])
            power[i] = finePower<kNearest>(One{x[i]}, Doubles<1>{static_cast<double>(y[i])})[0];
    return power;
}

// 2^(y log2 x) in floats, to 11 bits (a11) or 2^-21 and its share of y log2 x (a21); results below the normals are
// zero.
template<Accuracy A, bool kNearest, class V> QVR_INLINE V shortPower(V x, V y)
{
    // x = 2^e m, m in [sqrt(1/2), sqrt 2)
    constexpr uint32_t rootOfHalf = 0x3F3504F3;
    const Bits<V> shifted = bits(x) - rootOfHalf;
    const V e = convert<float>(bitcast<Mask<V>>(shifted) >> 23);
    const V u = bitcast<V>((shifted & 0x7FFFFF) + rootOfHalf) - splat<V>(1);
    const V log = fma(u, polynomial(u, kBinaryLogarithm11), e);
    // Below -126 the scale is zero.
    const V t = max(min(y * log, splat<V>(128)), splat<V>(-127));
    const auto down = toIntTruncate(t + splat<V>(128)) - 128;
    const V f = t - convert<float>(down);
    const V p = polynomial(f, kBinaryPower11);
    const V power = p * bitcast<V>((down + 127) << 23);
    const Mask<V> near = t > splat<V>(kNearOverflow);
    return __builtin_expect(anyTrue(near), 0) ? nearOverflow<kNearest>(x, y, power, near) : power;
}

template<Accuracy A, bool kNearest, class V> QVR_INLINE V power(V x, V y)
{
    if constexpr (A == Accuracy::a11)
        return shortPower<A, kNearest>(x, y);
    else
        return finePower<kNearest>(x, convert<double>(y));
}

template<class V> QVR_INLINE Mask<V> abnormal(V y)
{
    return outsideNormal(abs(y));
}

template<Accuracy A, bool kNearest> struct Power {
    static constexpr const char* kName = QVR_CLASS_NAME(A, "Pow");
    static constexpr int kBlock = kBlockOf<A>, kRegister = kRegisterOf<A>;
    template<class V> QVR_INLINE Mask<V> care(V x, V y) const { return outsideNormal(x) | abnormal(y); }
    template<class V> QVR_INLINE V eval(V x, V y) const { return power<A, kNearest>(x, y); }
    float scalar(const Error& error, float x, float y) const { return scalarPower<kNearest>(error, x, y, parityOf(y)); }
};

// One exponent for all: with a zero, a denormal, an infinity or a NaN for it every element is special.
template<Accuracy A, bool kNearest> struct ConstantPower {
    static constexpr const char* kName = QVR_CLASS_NAME(A, "Powx");
    static constexpr int kBlock = kBlockOf<A>, kRegister = kRegisterOf<A>;
    float y;
    Parity parity = parityOf(y);
    uint32_t special = abnormal(Vec<float, 1>{y})[0] ? kSignBit : 0;
    template<class V> QVR_INLINE Mask<V> care(V x) const
    {
        return outsideNormal(bitcast<V>(bits(x) | splat<Bits<V>>(special)));
    }
    template<class V> QVR_INLINE V eval(V x) const { return power<A, kNearest>(x, splat<V>(y)); }
    float scalar(const Error& error, float x) const { return scalarPower<kNearest>(error, x, y, parity); }
};

} // namespace

QVR_KERNELS(powKernels, Kernel2, kernel2, Power)
QVR_KERNELS(powxKernels, KernelC, kernelC, ConstantPower)

extern "C" {

qvrStatus SLOT(qvrsPow_32f_A11)(const qvr32f* pSrcX, const qvr32f* pSrcY, qvr32f* pDst, int len)
{
    return SLOT(powKernels)[static_cast<int>(Accuracy::a11)](pSrcX, pSrcY, pDst, len);
}

qvrStatus SLOT(qvrsPow_32f_A24)(const qvr32f* pSrcX, const qvr32f* pSrcY, qvr32f* pDst, int len)
{
    return SLOT(powKernels)[static_cast<int>(Accuracy::a24)](pSrcX, pSrcY, pDst, len);
}

qvrStatus SLOT(qvrsPowx_32f_A11)(const qvr32f* pSrcX, qvr32f y, qvr32f* pDst, int len)
{
    return SLOT(powxKernels)[static_cast<int>(Accuracy::a11)](pSrcX, y, pDst, len);
}

qvrStatus SLOT(qvrsPowx_32f_A24)(const qvr32f* pSrcX, qvr32f y, qvr32f* pDst, int len)
{
    return SLOT(powxKernels)[static_cast<int>(Accuracy::a24)](pSrcX, y, pDst, len);
}

} // extern "C"
