// Exponential function.
//
// k = round(x * 128 / ln 2), r = x - k ln 2 / 128, e^x = 2^(k >> 7) 2^(j / 128) e^r, j = k mod 128, with 2^(j / 128)
// from a table as hi + lo: (r^2 / 2 + (r + lo)) hi + hi.
#include "elementary/exponential.h"
#include "elementary/functions.h"

namespace {

// Below this |x| the result is a normal float and so is its scale: 126 ln 2, the bits 0x42AEAC50.
constexpr float kLimit = 87.33655f;
static_assert(__builtin_bit_cast(uint32_t, kLimit) == 0x42AEAC50);

// y 2^(k >> 7) where that is a normal float.
template<class V> QVR_INLINE V timesPower(V y, Bits<V> k)
{
    return bitcast<V>(bits(y) + ((k & ~uint32_t{127}) << 16));
}

// Beyond these the result is infinite, or zero.
constexpr float kOverflow = 89, kUnderflow = -104.5f;

// The result without its power of two, or with it where the table's value has it; k in the low bits.
template<Accuracy A, bool kNearest, bool kScaled, class V> QVR_INLINE V significand(V x, Bits<V>& k)
{
    V n, hi, lo;
    k = nearestInteger<kNearest>(x, 184.66496f, n);
    const V r = subtractProduct(subtractProduct(x, n, 0.00541687012f), n, -1.65776908e-06f);
    lookUpPairs<2>(&qvrPowerTable[0].hi, k & 127, hi, lo);
    if constexpr (kScaled)
        hi = timesPower(hi, k);
    V square = r * r * 0.5f;
    if constexpr (A == Accuracy::a21)
        square = r * r * polynomial(r, 0.16666667, 0.5);
    return fma(square + (r + lo), hi, hi);
}

template<Accuracy A, bool kNearest> struct Exponential {
    static constexpr const char* kName = QVR_CLASS_NAME(A, "Exp");
    static constexpr int kBlock = kBlockOf<A>, kRegister = kRegisterOf<A>;
    template<class V> QVR_INLINE Mask<V> care(V x) const { return ~(abs(x) < splat<V>(kLimit)); }
    template<class V> QVR_INLINE V eval(V x) const
    {
        if constexpr (A == Accuracy::a24) {
            return narrow<kNearest>(exponential<kNearest>(convert<double>(x)));
        } else {
            // A fused step rounds the result alone, so the power of two may come first. A product of its own must not
            // become a denormal: the power comes last. The significand of the smallest power is not below 1.
            Bits<V> k;
            const V p = significand<A, kNearest, kFma>(x, k);
            return kFma ? p : timesPower(p, k);
        }
    }
    // Saturates. At the top the last factor 2 comes apart, and what it would make too large is infinite whatever the
    // rounding; below the normals the result is scaled down twice, so that it is rounded once.
    float scalar(const Error&, float x) const
    {
        using V = Vec<float, 1>;
        if (x != x)
            return x + x;
        if (x > kOverflow)
            return __builtin_inff();
        if (x < kUnderflow)
            return 0;
        if constexpr (A == Accuracy::a24) {
            return eval(V{x})[0];
        } else {
            Bits<V> k;
            const float p = significand<A, kNearest, false>(V{x}, k)[0];
            const int power = static_cast<int>(k[0] << 10) >> 17;
            if (power >= 128)
                return power > 128 || p >= 1 ? __builtin_inff() : p * 1.7014118e38f * 2.0f;
            if (power >= -126)
                return p * __builtin_bit_cast(float, (power + 127) << 23);
            return p * 0x1p-126f * __builtin_bit_cast(float, (power + 126 + 127) << 23);
        }
    }
};

} // namespace

QVR_KERNELS(expKernels, Kernel1, kernel1, Exponential)

extern "C" qvrStatus SLOT(qvrsExp_32f_A11)(const qvr32f* pSrc, qvr32f* pDst, int len)
{
    return SLOT(expKernels)[static_cast<int>(Accuracy::a11)](pSrc, pDst, len);
}
