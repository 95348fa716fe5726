// Hyperbolic sine, cosine and tangent.
//
// n = round(|x| / ln 2), r = |x| - n ln 2, and with P = 2^(n-1) + 2^(-n-1), M = 2^(n-1) - 2^(-n-1)
//   sinh |x| = M cosh r + P sinh r,  cosh x = P cosh r + M sinh r,  tanh |x| = sinh |x| / cosh |x|.
// For n = 0 the first is sinh r alone, which keeps the relative precision of small x.
#include "elementary/functions.h"
#include "elementary/kernel.h"

namespace {

constexpr double kInverseLn2 = 1.4426950408889634;

// ln 2: a short part, exact times 8 bits, and the rest.
template<class T> struct Ln2;
template<> struct Ln2<float> {
    [[maybe_unused]] static constexpr float hi = 0x1.62p-1f, lo = 0x1.c85fep-10f;
};
template<> struct Ln2<double> {
    static constexpr double hi = 0x1.62e42fefap-1, lo = 0x1.cf79abc9e3b3ap-40;
};

template<class V> struct Hyperbolic {
    V sum, difference; // P, M
    V sine, cosine;    // of r
};

// Parts of e^a = 2^n e^r, |r| <= ln 2 / 2.
template<Accuracy A, bool kNearest, class V> QVR_INLINE Hyperbolic<V> split(V a)
{
    using T = Elem<V>;
    constexpr int bias = kIsDouble<V> ? 1023 : 127, mantissa = kIsDouble<V> ? 52 : 23;
    V n;
    const Bits<V> k = nearestInteger<kNearest>(a, static_cast<T>(kInverseLn2), n);
    const V r = subtractProduct(subtractProduct(a, n, Ln2<T>::hi), n, Ln2<T>::lo);
    const V up = powerOfTwo<V>(k, bias - 1);
    const V down = bitcast<V>(bits(splat<V>(T(0.5))) - (k << mantissa));
    const V z = r * r;
    V s, c;
    if constexpr (A == Accuracy::a24) {
        s = r * polynomial(z, kHyperbolicSine24);
        c = polynomial(z, kHyperbolicCosine24);
    } else if constexpr (A == Accuracy::a21) {
        s = r * polynomial(z, kHyperbolicSine21);
        c = polynomial(z, kHyperbolicCosine21);
    } else {
        s = r * polynomial(z, kHyperbolicSine11);
        c = polynomial(z, kHyperbolicCosine11);
    }
    return {up + down, up - down, s, c};
}

// The largest |x| of the block path of sine and cosine: n is at most 126, where 2^(-n-1) becomes 0.
constexpr float kLimit = 87;

template<Accuracy A, bool kNearest, class V> QVR_INLINE V sine(V x)
{
    const Hyperbolic<V> h = split<A, kNearest>(abs(x));
    return withSign(fma(h.sum, h.sine, h.difference * h.cosine), signOf(x));
}

template<Accuracy A, bool kNearest, class V> QVR_INLINE V cosine(V x)
{
    const Hyperbolic<V> h = split<A, kNearest>(abs(x));
    return fma(h.sum, h.cosine, h.difference * h.sine);
}

// x (z^3 + 378 z^2 + 17325 z + 135135) / (28 z^3 + 3150 z^2 + 62370 z + 135135), z = x^2: Lambert's continued fraction
// x / (1 + z / (3 + z / (5 + ...))) cut off. From 4.97 on both it and 1 are within 2^-13.3 of the result.
template<class V> QVR_INLINE void shortTangentParts(V x, V& num, V& den)
{
    const V z = x * x;
    num = x * polynomial(z, 1.0, 378.0, 17325.0, 135135.0);
    den = polynomial(z, 28.0, 3150.0, 62370.0, 135135.0);
}

// Here, evaluated with fused operations, numerator and denominator are one float, however they are rounded.
constexpr float kShortTangentOne = 0x1.3e34a8p+2f;

template<class V> QVR_INLINE V shortTangent(V x)
{
    V num, den;
    if constexpr (kFma) {
        // Processors of this level divide while they work on the next vector. The sign goes round by bit operations,
        // which any unit does; a NaN gets through the minimum.
        shortTangentParts(min(splat<V>(kShortTangentOne), abs(x)), num, den);
        return withSign(num / den, signOf(x));
    } else {
        shortTangentParts(x, num, den);
        const V estimate = reciprocalEstimate(den);
        const V t = num * (estimate * (splat<V>(2) - den * estimate));
        return abs(x) > splat<V>(4.97f) ? withSign(splat<V>(1), signOf(x)) : t;
    }
}

// From 9.0109 on the nearest float is 1. A NaN gets through the minimum.
template<Accuracy A, bool kNearest, class V> QVR_INLINE V tangent(V x)
{
    using T = Elem<V>;
    if constexpr (A == Accuracy::a11) {
        return shortTangent(x);
    } else {
        const V a = min(splat<V>(T(10)), abs(x));
        const Hyperbolic<V> h = split<A, kNearest>(a);
        const V t = fma(h.sum, h.sine, h.difference * h.cosine) / fma(h.sum, h.cosine, h.difference * h.sine);
        return withSign(a > splat<V>(T(9.0109)) ? splat<V>(1) : t, signOf(x));
    }
}

// The scalar path: extended precision, rounded as the caller asks; a finite argument with an infinite result is an
// overflow. Denormals, which the x87 unit neither takes for zeros nor flushes, keep to the formula.
template<float (*wide)(float, uint32_t), class K>
QVR_INLINE float wideValue(const K& k, const Error& error, float x, float infinity)
{
    if (x != x)
        return x + x;
    if (__builtin_isinf(x))
        return infinity;
    if (outsideNormal(Vec<float, 1>{__builtin_fabsf(x)})[0])
        return k.eval(Vec<float, 1>{x})[0];
    const float y = wide(x, readMxcsr() & kMxcsrRounding);
    if (__builtin_isinf(y))
        error(qvrWarnOverflow);
    return y;
}

template<Accuracy A, bool kNearest> struct HyperbolicSine {
    static constexpr const char* kName = "vsSinh";
    static constexpr int kBlock = kBlockOf<A>, kRegister = kRegisterOf<A>;
    template<class V> QVR_INLINE Mask<V> care(V x) const { return ~(abs(x) <= splat<V>(kLimit)); }
    template<class V> QVR_INLINE V eval(V x) const
    {
        if constexpr (A == Accuracy::a24)
            return oddZero<kNearest>(x, convert<float>(sine<A, kNearest>(convert<double>(x))));
        else
            return oddZero<kNearest>(x, sine<A, kNearest>(x));
    }
    float scalar(const Error& error, float x) const { return wideValue<qvrWideSinh>(*this, error, x, x); }
};

template<Accuracy A, bool kNearest> struct HyperbolicCosine {
    static constexpr const char* kName = "vsCosh";
    static constexpr int kBlock = kBlockOf<A>, kRegister = kRegisterOf<A>;
    template<class V> QVR_INLINE Mask<V> care(V x) const { return ~(abs(x) <= splat<V>(kLimit)); }
    template<class V> QVR_INLINE V eval(V x) const
    {
        if constexpr (A == Accuracy::a24)
            return convert<float>(cosine<A, kNearest>(convert<double>(x)));
        else
            return cosine<A, kNearest>(x);
    }
    float scalar(const Error& error, float x) const
    {
        return wideValue<qvrWideCosh>(*this, error, x, __builtin_inff());
    }
};

// Every argument has a result, so no element is special.
template<Accuracy A, bool kNearest> struct HyperbolicTangent {
    static constexpr const char* kName = QVR_CLASS_NAME(A, "Tanh");
    static constexpr int kBlock = kBlockOf<A>, kRegister = kRegisterOf<A>;
    template<class V> QVR_INLINE Mask<V> care(V) const { return Mask<V>{}; }
    template<class V> QVR_INLINE V eval(V x) const
    {
        if constexpr (A == Accuracy::a24)
            return oddZero<kNearest>(x, convert<float>(tangent<A, kNearest>(convert<double>(x))));
        else
            return oddZero<kNearest>(x, tangent<A, kNearest>(x));
    }
    float scalar(const Error&, float x) const { return eval(Vec<float, 1>{x})[0]; }
};

} // namespace

QVR_KERNELS(sinhKernels, Kernel1, kernel1, HyperbolicSine)
QVR_KERNELS(coshKernels, Kernel1, kernel1, HyperbolicCosine)
QVR_KERNELS(tanhKernels, Kernel1, kernel1, HyperbolicTangent)

extern "C" {

qvrStatus SLOT(qvrsSinh_32f_A11)(const qvr32f* pSrc, qvr32f* pDst, int len)
{
    return SLOT(sinhKernels)[static_cast<int>(Accuracy::a11)](pSrc, pDst, len);
}

qvrStatus SLOT(qvrsCosh_32f_A11)(const qvr32f* pSrc, qvr32f* pDst, int len)
{
    return SLOT(coshKernels)[static_cast<int>(Accuracy::a11)](pSrc, pDst, len);
}

qvrStatus SLOT(qvrsTanh_32f_A11)(const qvr32f* pSrc, qvr32f* pDst, int len)
{
    return SLOT(tanhKernels)[static_cast<int>(Accuracy::a11)](pSrc, pDst, len);
}

} // extern "C"
