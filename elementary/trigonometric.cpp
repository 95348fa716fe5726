// Sine, cosine, tangent.
//
// Sine:    N = round(x / pi), r = x - N pi, sin x = (-1)^N sin r
// Cosine:  N = round((x + pi/2) / pi), r = x - (N - 1/2) pi, cos x = (-1)^N sin r
// Tangent: N = round(x * 2/pi), r = x - N pi/2, tan x = tan r, or -1 / tan r for odd N
//
// pi is subtracted in parts whose products with N are exact, so r keeps its relative precision; class a11 of sine and
// cosine takes two parts only, so near the zeros of the function its error is absolute, at most 2^-12.68. The method is
// Cody and Waite's (Software Manual for the Elementary Functions, 1980).
#include "elementary/functions.h"
#include "elementary/kernel.h"
#include "elementary/wide.h"

namespace {

constexpr float kInversePi = 0.31830987f;
constexpr float kTwoOverPi = 0.63661975f;
constexpr float kHalfPi = 1.5707964f;

// The largest |x| of the block path; its N has at most 12 bits (13 for the tangent).
template<Accuracy A> constexpr float kSineLimit = A == Accuracy::a11 ? 4000.0f : 10000.0f;
constexpr float kTangentLimit = 10000.0f;

template<class V> QVR_INLINE Mask<V> outside(V x, float limit)
{
    return ~(abs(x) <= splat<V>(limit));
}

// x - n * pi in the parts of a class.
template<Accuracy A, class V> QVR_INLINE V lessMultipleOfPi(V x, V n)
{
    if constexpr (A == Accuracy::a24) {
        // 35 bits of pi, then the next 53.
        return subtractProduct(subtractProduct(x, n, 3.1415926535846666), n, 5.126688303189038e-12);
    } else if constexpr (A == Accuracy::a21) {
        const V r = subtractProduct(subtractProduct(x, n, 3.140625f), n, 0.00096750259f);
        return subtractProduct(subtractProduct(r, n, 1.5099067e-07f), n, 5.1266881e-12f);
    } else {
        return subtractProduct(subtractProduct(x, n, 3.140625f), n, 0.00096765358f);
    }
}

// sin r for |r| <= pi/2.
template<Accuracy A, class V> QVR_INLINE V sineOfRest(V r)
{
    const V r2 = r * r;
    if constexpr (A == Accuracy::a24)
        return r * polynomial(r2, 2.608e-06, -0.000198107, 0.008333075, -0.166666589, 1.000000002);
    else if constexpr (A == Accuracy::a21)
        return r * polynomial(r2, 2.608e-06, -0.00019810699, 0.008333075, -0.16666658, 1.0);
    else
        return r * polynomial(r2, -0.00019809602, 0.0083330665, -0.1666666, 1.0);
}

template<Accuracy A, bool kNearest, bool kCosine, class V> QVR_INLINE V sineOrCosine(V x)
{
    V n;
    Bits<V> k;
    if constexpr (kCosine) {
        k = nearestInteger<kNearest>(x + splat<V>(kHalfPi), kInversePi, n);
        n = n - splat<V>(0.5f);
    } else {
        k = nearestInteger<kNearest>(x, kInversePi, n);
    }
    return withSign(sineOfRest<A>(lessMultipleOfPi<A>(x, n)), k << (8 * sizeof(Elem<V>) - 1));
}

// The scalar path of all three: infinities are outside the domain, a NaN becomes quiet. Registers of finite elements go
// through it whole.
template<Wide F> struct Exact {
    template<class V> QVR_INLINE V finite(V x) const
    {
        return convert<float>(wideValue<F>(opaque(convert<double>(x))));
    }
    QVR_INLINE float scalar(const Error& error, float x) const
    {
        if (__builtin_isinf(x)) {
            error(qvrWarnDomain);
            return __builtin_bit_cast(float, kQuietNan);
        }
        return x != x ? x * x : finite(Vec<float, 1>{x})[0];
    }
};

template<Accuracy A, bool kNearest> struct Sine : Exact<Wide::sine> {
    static constexpr const char* kName = QVR_CLASS_NAME(A, "Sin");
    static constexpr int kBlock = kBlockOf<A>, kRegister = kRegisterOf<A>;
    template<class V> QVR_INLINE Mask<V> care(V x) const { return outside(x, kSineLimit<A>); }
    template<class V> QVR_INLINE V eval(V x) const
    {
        if constexpr (A == Accuracy::a24)
            return oddZero<kNearest>(x, convert<float>(sineOrCosine<A, kNearest, false>(convert<double>(x))));
        else
            return oddZero<kNearest>(x, sineOrCosine<A, kNearest, false>(x));
    }
};

template<Accuracy A, bool kNearest> struct Cosine : Exact<Wide::cosine> {
    static constexpr const char* kName = QVR_CLASS_NAME(A, "Cos");
    static constexpr int kBlock = kBlockOf<A>, kRegister = kRegisterOf<A>;
    template<class V> QVR_INLINE Mask<V> care(V x) const { return outside(x, kSineLimit<A>); }
    template<class V> QVR_INLINE V eval(V x) const
    {
        if constexpr (A == Accuracy::a24)
            return convert<float>(sineOrCosine<A, kNearest, true>(convert<double>(x)));
        else
            return sineOrCosine<A, kNearest, true>(x);
    }
};

// tan r = num / den for |r| <= pi/4; an odd quadrant turns it to -den / num.
template<Accuracy A, bool kNearest, class V> QVR_INLINE V tangent(V x)
{
    V n;
    const Bits<V> k = nearestInteger<kNearest>(x, kTwoOverPi, n);
    V r;
    if constexpr (A == Accuracy::a24) {
        r = subtractProduct(subtractProduct(x, n, 1.5707963267923333), n, 2.56334415159e-12);
    } else {
        // Halves of the parts of pi: at most 11 bits each but the last, exact times 13 bits of n.
        r = subtractProduct(subtractProduct(x, n, 1.5703125f), n, 0.00048375129f);
        r = subtractProduct(subtractProduct(r, n, 7.5495336e-08f), n, 2.5633441e-12f);
    }
    const V z = r * r;
    const V num = r * polynomial(z, -0.0958017723, 1.0);
    const V den = polynomial(z, 0.00971685835, -0.429135777, 1.0);
    const Mask<V> odd = bitcast<Mask<V>>(k << (8 * sizeof(Elem<V>) - 1)) < 0;
    const V above = odd ? -den : num, below = odd ? num : den;
    if constexpr (A == Accuracy::a11) {
        const V estimate = reciprocalEstimate(below);
        return above * (estimate * (splat<V>(2) - below * estimate));
    } else {
        return above / below;
    }
}

template<Accuracy A, bool kNearest> struct Tangent : Exact<Wide::tangent> {
    static constexpr const char* kName = QVR_CLASS_NAME(A, "Tan");
    static constexpr int kBlock = kBlockOf<A>, kRegister = kRegisterOf<A>;
    template<class V> QVR_INLINE Mask<V> care(V x) const { return outside(x, kTangentLimit); }
    template<class V> QVR_INLINE V eval(V x) const
    {
        if constexpr (A == Accuracy::a24)
            return oddZero<kNearest>(x, convert<float>(tangent<A, kNearest>(convert<double>(x))));
        else
            return oddZero<kNearest>(x, tangent<A, kNearest>(x));
    }
};

} // namespace

QVR_KERNELS(sinKernels, Kernel1, kernel1, Sine)
QVR_KERNELS(cosKernels, Kernel1, kernel1, Cosine)
QVR_KERNELS(tanKernels, Kernel1, kernel1, Tangent)

extern "C" {

qvrStatus SLOT(qvrsSin_32f_A11)(const qvr32f* pSrc, qvr32f* pDst, int len)
{
    return SLOT(sinKernels)[static_cast<int>(Accuracy::a11)](pSrc, pDst, len);
}

qvrStatus SLOT(qvrsCos_32f_A11)(const qvr32f* pSrc, qvr32f* pDst, int len)
{
    return SLOT(cosKernels)[static_cast<int>(Accuracy::a11)](pSrc, pDst, len);
}

qvrStatus SLOT(qvrsTan_32f_A11)(const qvr32f* pSrc, qvr32f* pDst, int len)
{
    return SLOT(tanKernels)[static_cast<int>(Accuracy::a11)](pSrc, pDst, len);
}

} // extern "C"
