// Natural and decimal logarithm.
//
// x = 2^e m, with m within 1/256 of the breakpoint c = 1 + i/128 of a table row. Natural: r = m (1/c) - 1,
// ln x = e ln 2 + ln c + ln(1 + r). Decimal: the row holds a, log10(e) / c to a multiple of 1/256, w = a m - 111/256
// exactly, and log10 x = e log10 2 + log10((111/256) / a) + w + w q(w).
#include "elementary/exponential.h"
#include "elementary/functions.h"

namespace {

// m * inverse - 1 with one rounding at the most: inverse has 12 bits, so its products with the halves of m are exact.
template<class V> QVR_INLINE V productLess(V m, V inverse, float less)
{
    if constexpr (kFma) {
        return fma(m, inverse, splat<V>(-less));
    } else {
        const V high = bitcast<V>(bits(m) & 0xFFFFF000);
        return (high * inverse - less) + (m - high) * inverse;
    }
}

// ln x + shift ln 2 for positive normal x.
template<Accuracy A, class V> QVR_INLINE V natural(V x, float shift = 0)
{
    const Parted<V> p = part(x);
    const V e = p.e + shift;
    if constexpr (A == Accuracy::a21) {
        // e times the short part of ln 2 plus hi is exact.
        V inverse, hi, lo;
        lookUpTriples(&qvrLogTable[0].log, p.index, inverse, hi, lo);
        const V r = productLess(p.m, inverse, 1);
        const V high = fma(e, splat<V>(0x1.62p-1f), hi), low = fma(e, splat<V>(0x1.c85fep-10f), lo);
        return high + (r + fma(r * r, polynomial(r, kLogarithm21), low));
    } else {
        V log, inverse;
        lookUpPairs<4>(&qvrLogTable[0].log, p.index, log, inverse);
        const V r = productLess(p.m, inverse, 1);
        return fma(e, splat<V>(0.6931472f), log) + r * polynomial(r, -0.5, 1.0);
    }
}

template<Accuracy A, bool kNearest> struct NaturalLogarithm {
    static constexpr const char* kName = QVR_CLASS_NAME(A, "Ln");
    static constexpr int kBlock = kBlockOf<A>, kRegister = kRegisterOf<A>;
    template<class V> QVR_INLINE Mask<V> care(V x) const { return outsideNormal(x); }
    template<class V> QVR_INLINE V shifted(V x, float shift) const
    {
        if constexpr (A == Accuracy::a24)
            return convert<float>(naturalLogarithm(x, static_cast<double>(shift)));
        else
            return natural<A>(x, shift);
    }
    template<class V> QVR_INLINE V eval(V x) const { return zeroAt<kNearest>(1, x, shifted(x, 0)); }
    float scalar(const Error& error, float x) const
    {
        using V = Vec<float, 1>;
        if (x != x)
            return x;
        if (isZero(x)) {
            error(qvrWarnSingularity);
            return -__builtin_inff();
        }
        if (x < 0) {
            error(qvrWarnDomain);
            return __builtin_bit_cast(float, 0x7FFC0000);
        }
        if (__builtin_isinf(x))
            return x;
        return x < 0x1p-126f ? shifted(V{x * kDenormalScale}, -23)[0] : eval(V{x})[0];
    }
};

constexpr float kScale = 0.43359375f; // 111/256
constexpr float kExponentHigh = 0.3125f;
constexpr float kExponentLow = -0.011470004f; // log10(2) - 5/16
// The same in two parts, the first a multiple of 2^-23 whose sum with the high parts is exact next to 1.
constexpr float kExponentMiddle = -0x1.77d9p-7f,
                kExponentRest = static_cast<float>(-0.011470004336018804 + 0x1.77d9p-7);
constexpr float kDenormalCorrection = 6.92368984f; // 23 log10(2)

template<Accuracy A, class V> QVR_INLINE V decimal(V x)
{
    const Parted<V> p = part(x);
    V a, hi, lo;
    lookUpTriples(&qvrLog10Table[0].a, p.index, a, hi, lo);
    const V w = productLess(p.m, a, kScale);
    V high = fma(p.e, splat<V>(kExponentHigh), hi);
    if constexpr (A == Accuracy::a21) {
        high = addProduct(high, p.e, kExponentMiddle);
        const V low = addProduct(lo, p.e, kExponentRest);
        const V q = polynomial(w, 5.667, -3.0718327, 1.7758979, -1.1550168, 0.0016161024);
        return high + (w + fma(w, q, low));
    } else {
        const V q = polynomial(w, -3.0718327, 1.7758979, -1.1550168, 0.0016161024);
        return high + (w + fma(w, q, addProduct(lo, p.e, kExponentLow)));
    }
}

template<Accuracy A, bool kNearest> struct DecimalLogarithm {
    static constexpr const char* kName = QVR_CLASS_NAME(A, "Log10");
    static constexpr int kBlock = kBlockOf<A>, kRegister = kRegisterOf<A>;
    template<class V> QVR_INLINE Mask<V> care(V x) const { return outsideNormal(x); }
    template<class V> QVR_INLINE V eval(V x) const
    {
        if constexpr (A == Accuracy::a24)
            return zeroAt<kNearest>(1, x, convert<float>(naturalLogarithm(x) * 0.4342944819032518));
        else
            return zeroAt<kNearest>(1, x, decimal<A>(x));
    }
    float scalar(const Error&, float x) const
    {
        using V = Vec<float, 1>;
        if (isZero(x))
            return -__builtin_inff();
        if (x != x)
            return x;
        if (x < 0)
            return __builtin_bit_cast(float, kQuietNan);
        if (__builtin_isinf(x))
            return x;
        if (x >= 0x1p-126f)
            return eval(V{x})[0];
        const V scaled = {x * kDenormalScale};
        if constexpr (A == Accuracy::a24)
            return convert<float>(naturalLogarithm(scaled, -23) * 0.4342944819032518)[0];
        else
            return decimal<A>(scaled)[0] - kDenormalCorrection;
    }
};

} // namespace

QVR_KERNELS(lnKernels, Kernel1, kernel1, NaturalLogarithm)
QVR_KERNELS(log10Kernels, Kernel1, kernel1, DecimalLogarithm)

extern "C" {

qvrStatus SLOT(qvrsLn_32f_A11)(const qvr32f* pSrc, qvr32f* pDst, int len)
{
    return SLOT(lnKernels)[static_cast<int>(Accuracy::a11)](pSrc, pDst, len);
}

qvrStatus SLOT(qvrsLog10_32f_A11)(const qvr32f* pSrc, qvr32f* pDst, int len)
{
    return SLOT(log10Kernels)[static_cast<int>(Accuracy::a11)](pSrc, pDst, len);
}

qvrStatus SLOT(qvrsLog10_32f_A21)(const qvr32f* pSrc, qvr32f* pDst, int len)
{
    return SLOT(log10Kernels)[static_cast<int>(Accuracy::a21)](pSrc, pDst, len);
}

} // extern "C"
