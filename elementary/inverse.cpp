// Arc sine, arc cosine, arc tangent of one and of two arguments.
//
// Arc sine: asin t = t P(t^2) for t below 1/2; from there on t = sqrt((1 - |x|) / 2), asin x = pi/2 - 2 asin t.
// Arc tangent: three comparisons find one of four intervals with breakpoint b; with t = (|x| - b) / (1 + b |x|)
// atan x = atan b + t P(t^2). The breakpoints tan(k pi/7), k = 0 .. 3, make |t| at most tan(pi/14) = 0.2282; the
// intervals meet at tan(pi/14), tan(3 pi/14), tan(5 pi/14). Of two arguments: x is |y| / |x| in all of this.
#include "elementary/arctangent.h"
#include "elementary/functions.h"
#include "elementary/kernel.h"

namespace {

// pi/2 and pi as a float and what it leaves out; a double needs no second part here.
template<class T> constexpr T kHalfPi = static_cast<T>(1.5707963267948966);
template<class T> constexpr T kHalfPiLow = sizeof(T) == 4 ? T(-4.371139e-08) : T(0);
template<class T> constexpr T kPi = 2 * kHalfPi<T>;
template<class T> constexpr T kPiLow = 2 * kHalfPiLow<T>;

// asin(sqrt z) / sqrt z on [0, 1/4]; of a21 only the part behind the one, over z.
template<Accuracy A, class V> QVR_INLINE V arcSineSeries(V z)
{
    if constexpr (A == Accuracy::a24)
        return polynomial(z, kArcSine24);
    else if constexpr (A == Accuracy::a21)
        return polynomial(z, kArcSine21);
    else
        return polynomial(z, kArcSine11);
}

// The smaller angle asin t, its part behind t in class a21, and whether it was folded.
template<class V> struct FoldedAngle {
    V angle, t, rest;
    Mask<V> folded;
};
template<Accuracy A, class V> QVR_INLINE FoldedAngle<V> foldedArcSine(V x)
{
    const V a = abs(x), half = splat<V>(0.5);
    const Mask<V> folded = a >= half;
    const V z = folded ? (splat<V>(1) - a) * half : a * a;
    const V t = folded ? sqrt(z) : a;
    if constexpr (A == Accuracy::a21) {
        const V rest = t * (z * arcSineSeries<A>(z));
        return {t + rest, t, rest, folded};
    } else {
        return {t * arcSineSeries<A>(z), t, {}, folded};
    }
}

template<Accuracy A, class V> QVR_INLINE V arcSine(V x)
{
    using T = Elem<V>;
    const FoldedAngle<V> p = foldedArcSine<A>(x);
    const V halfPi = splat<V>(kHalfPi<T>);
    V unfolded;
    if constexpr (A == Accuracy::a21) // the first difference is exact where the result is small
        unfolded = (halfPi - (p.t + p.t)) - (p.rest + p.rest - kHalfPiLow<T>);
    else
        unfolded = halfPi - (p.angle + p.angle - kHalfPiLow<T>);
    return withSign(p.folded ? unfolded : p.angle, signOf(x));
}

// folded: 2p, or pi - 2p for negative x; else pi/2 - p with the sign of x on p.
template<Accuracy A, class V> QVR_INLINE V arcCosine(V x)
{
    using T = Elem<V>;
    const FoldedAngle<V> p = foldedArcSine<A>(x);
    const Mask<V> negative = bitcast<Mask<V>>(x) < 0;
    const V base = negative ? splat<V>(kPi<T>) : V{}, low = negative ? splat<V>(kPiLow<T>) : V{};
    const V s = withSign(p.angle, signOf(x));
    const V wide = base + (s + s + low);
    const V middle = splat<V>(kHalfPi<T>) - (s - kHalfPiLow<T>);
    return p.folded ? wide : middle;
}

// The domain [-1, 1]: outside it the NaN and a report, for a NaN its quiet form.
template<class V> QVR_INLINE Mask<V> outsideUnit(V x)
{
    return ~(abs(x) <= splat<V>(1));
}
template<class K> QVR_INLINE float unitDomain(const K& k, const Error& error, float x)
{
    if (x != x)
        return x + x;
    if (__builtin_fabsf(x) > 1) {
        error(qvrWarnDomain);
        return __builtin_bit_cast(float, kQuietNan);
    }
    return k.eval(Vec<float, 1>{x})[0];
}

template<Accuracy A, bool> struct ArcSine {
    static constexpr const char* kName = QVR_CLASS_NAME(A, "Asin");
    static constexpr int kBlock = kBlockOf<A>, kRegister = kRegisterOf<A>;
    template<class V> QVR_INLINE Mask<V> care(V x) const { return outsideUnit(x); }
    template<class V> QVR_INLINE V eval(V x) const
    {
        if constexpr (A == Accuracy::a24)
            return convert<float>(arcSine<A>(convert<double>(x)));
        else
            return arcSine<A>(x);
    }
    float scalar(const Error& error, float x) const { return unitDomain(*this, error, x); }
};

template<Accuracy A, bool kNearest> struct ArcCosine {
    static constexpr const char* kName = QVR_CLASS_NAME(A, "Acos");
    static constexpr int kBlock = kBlockOf<A>, kRegister = kRegisterOf<A>;
    template<class V> QVR_INLINE Mask<V> care(V x) const { return outsideUnit(x); }
    template<class V> QVR_INLINE V eval(V x) const
    {
        if constexpr (A == Accuracy::a24)
            return zeroAt<kNearest>(1, x, convert<float>(arcCosine<A>(convert<double>(x))));
        else
            return zeroAt<kNearest>(1, x, arcCosine<A>(x));
    }
    float scalar(const Error& error, float x) const { return unitDomain(*this, error, x); }
};

// Every argument has a result, so no element is special.
template<Accuracy A, bool kNearest> struct ArcTangent {
    static constexpr const char* kName = QVR_CLASS_NAME(A, "Atan");
    static constexpr int kBlock = kBlockOf<A>, kRegister = kRegisterOf<A>;
    template<class V> QVR_INLINE Mask<V> care(V) const { return Mask<V>{}; }
    template<class V> QVR_INLINE V eval(V x) const
    {
        if constexpr (A == Accuracy::a24)
            return oddZero<kNearest>(x, convert<float>(arcTangent<A>(convert<double>(x))));
        else
            return oddZero<kNearest>(x, arcTangent<A>(x));
    }
    float scalar(const Error&, float x) const { return eval(Vec<float, 1>{x})[0]; }
};

// The block path takes magnitudes of 2^-60 .. 2^60, whose products and quotients are normal floats.
template<Accuracy A, bool> struct ArcTangent2 {
    static constexpr const char* kName = QVR_CLASS_NAME(A, "Atan2");
    static constexpr int kBlock = kBlockOf<A>, kRegister = kRegisterOf<A>;
    template<class V> QVR_INLINE Mask<V> care(V y, V x) const
    {
        const V ay = abs(y), ax = abs(x);
        return ~((min(ay, ax) >= splat<V>(0x1p-60f)) & (max(ay, ax) <= splat<V>(0x1p60f)));
    }
    template<class V> QVR_INLINE V eval(V y, V x) const
    {
        if constexpr (A == Accuracy::a24)
            return convert<float>(arcTangent2<A>(convert<double>(y), convert<double>(x)));
        else
            return arcTangent2<A>(y, x);
    }
    float scalar(const Error&, float y, float x) const { return static_cast<float>(wideArcTangent2(y, x)); }
};

} // namespace

QVR_KERNELS(asinKernels, Kernel1, kernel1, ArcSine)
QVR_KERNELS(acosKernels, Kernel1, kernel1, ArcCosine)
QVR_KERNELS(atanKernels, Kernel1, kernel1, ArcTangent)
QVR_KERNELS(atan2Kernels, Kernel2, kernel2, ArcTangent2)

extern "C" {

qvrStatus SLOT(qvrsAsin_32f_A11)(const qvr32f* pSrc, qvr32f* pDst, int len)
{
    return SLOT(asinKernels)[static_cast<int>(Accuracy::a11)](pSrc, pDst, len);
}

qvrStatus SLOT(qvrsAcos_32f_A11)(const qvr32f* pSrc, qvr32f* pDst, int len)
{
    return SLOT(acosKernels)[static_cast<int>(Accuracy::a11)](pSrc, pDst, len);
}

qvrStatus SLOT(qvrsAtan_32f_A11)(const qvr32f* pSrc, qvr32f* pDst, int len)
{
    return SLOT(atanKernels)[static_cast<int>(Accuracy::a11)](pSrc, pDst, len);
}

qvrStatus SLOT(qvrsAtan2_32f_A11)(const qvr32f* pSrcY, const qvr32f* pSrcX, qvr32f* pDst, int len)
{
    return SLOT(atan2Kernels)[static_cast<int>(Accuracy::a11)](pSrcY, pSrcX, pDst, len);
}

} // extern "C"
