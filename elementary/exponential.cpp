// Exponential function.
//
// k = round(x * 128 / ln 2), r = x - k ln 2 / 128, e^x = 2^(k >> 7) 2^(j / 128) e^r, j = k mod 128, with 2^(j / 128)
// from a table as hi + lo: (r^2 / 2 + (r + lo)) hi + hi.
#include "elementary/exponential.h"

namespace {

// Below this |x| the result is a normal float and so is its scale: 126 ln 2, the bits 0x42AEAC50.
constexpr float kLimit = 87.33655f;
static_assert(__builtin_bit_cast(uint32_t, kLimit) == 0x42AEAC50);

// Beyond these the result is infinite, or zero.
constexpr float kOverflow = 89, kUnderflow = -104.5f;

// The result times what scale(hi, k) makes of the table's value, and k in the low bits.
template<Accuracy A, bool kNearest, class V, class Scale> QVR_INLINE V significand(V x, Bits<V>& k, Scale scale)
{
    V n, hi, lo;
    k = nearestInteger<kNearest>(x, 184.66496f, n);
    const V r = subtractProduct(subtractProduct(x, n, 0.00541687012f), n, -1.65776908e-06f);
    lookUpPairs<2>(&qvrPowerTable[0].hi, k & 127, hi, lo);
    hi = scale(hi, k);
    V square = r * r * 0.5f;
    if constexpr (A == Accuracy::la)
        square = r * r * polynomial(r, 0.16666667, 0.5);
    return fma(square + (r + lo), hi, hi);
}

template<Accuracy A, bool kNearest> struct Exponential {
    static constexpr const char* kName = QVR_CLASS_NAME(A, "Exp");
    static constexpr int kBlock = kBlockOf<A>, kRegister = kRegisterOf<A>;
    template<class V> QVR_INLINE Mask<V> care(V x) const { return ~(abs(x) < splat<V>(kLimit)); }
    template<class V> QVR_INLINE V eval(V x) const
    {
        if constexpr (A == Accuracy::ha) {
            return convert<float>(exponential<kNearest>(convert<double>(x)));
        } else {
            Bits<V> k;
            // Multiplying by the power of two is exact here, and may come first.
            return significand<A, kNearest>(
                x, k, [](V hi, Bits<V> at) { return bitcast<V>(bits(hi) + ((at & ~uint32_t{127}) << 16)); });
        }
    }
    // Saturates; at the top the last factor 2 comes apart, and below the normals the result is scaled down twice, so
    // that it is rounded once.
    float scalar(const Error&, float x) const
    {
        using V = Vec<float, 1>;
        if (x != x)
            return x + x;
        if (x > kOverflow)
            return __builtin_inff();
        if (x < kUnderflow)
            return 0;
        if constexpr (A == Accuracy::ha) {
            return eval(V{x})[0];
        } else {
            Bits<V> k;
            const float p = significand<A, kNearest>(V{x}, k, [](V hi, Bits<V>) { return hi; })[0];
            const int power = static_cast<int>(k[0] << 10) >> 17;
            if (power >= 128)
                return power > 128 ? __builtin_inff() : p * 1.7014118e38f * 2.0f;
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
