// The functions without an accuracy tag: exponential, natural logarithm, arc tangent, phase.
//
// Logarithm and phase are the double kernels, vectorised, with their results rounded to float; exponential and
// arc tangent are float kernels within one unit in the last place. The tail of an array is a vector with lanes switched
// off, so it gets the bits of the body.
#include "elementary/arctangent.h"
#include "elementary/exponential.h"
#include "scalarmath/scalar.h"

namespace {

// dst = op(src), a register at a time.
template<class Op> QVR_INLINE void eachBlock(const float* src, float* dst, Index n, Op&& op)
{
    using V = Full<float>;
    constexpr int N = kLanes<float>;
    Index i = 0;
    for (; i + 2 * N <= n; i += 2 * N) {
        const V a = op(load<V>(src + i)), b = op(load<V>(src + i + N));
        store(dst + i, a);
        store(dst + i + N, b);
    }
    for (; i < n; i += N) {
        const int count = n - i < N ? static_cast<int>(n - i) : N;
        storeFirst(dst + i, op(loadFirst<V>(src + i, count)), count);
    }
}

// Every lane by a scalar function, where a block has something special.
template<class V, class F> V byLanes(V x, F f)
{
    for (int i = 0; i < lanes<V>; i++)
        x[i] = f(x[i]);
    return x;
}

// The vector path: |x| up to here, so that results are normal floats with a margin. Beyond it the scalar routine takes
// over.
constexpr float kFastLimit = 87.25f;

float specialExponential(float x)
{
    return x != x ? x + x : qvrmExpf(x);
}

// 2^k e^r with k = round(x / ln 2): e^r to 2^-28 for |r| <= ln 2 / 2.
template<bool kNearest, class V> QVR_INLINE V plainExponential(V x)
{
    V n;
    const Bits<V> k = nearestInteger<kNearest>(x, 1.442695f, n);
    const V r = subtractProduct(subtractProduct(x, n, 0x1.62p-1f), n, 0x1.c85fep-10f);
    const V q = polynomial(r, 1.3744514e-3, 8.3689652e-3, 4.1669659e-2, 0.16666518, 0.49999988);
    const V p = fma(r * r, q, r) + splat<V>(1);
    return bitcast<V>(bits(p) + (k << 23));
}

template<bool kNearest> __attribute__((noinline)) void exponentials(const float* src, float* dst, Index n)
{
    eachBlock(src, dst, n, [](auto x) {
        const auto plain = abs(x) <= splat<decltype(x)>(kFastLimit);
        if (__builtin_expect(anyTrue(~plain), 0))
            return byLanes(x, [](float e) {
                return __builtin_fabsf(e) <= kFastLimit ? plainExponential<kNearest>(Vec<float, 1>{e})[0]
                                                        : specialExponential(e);
            });
        return plainExponential<kNearest>(x);
    });
}

// atan(t) for |t| <= 1: t + t z P(z), to 2^-28.
template<class V> QVR_INLINE V unitArcTangent(V t)
{
    const V z = t * t;
    const V p = polynomial(z, -1.7871303e-3, 1.0885778e-2, -3.1124584e-2, 5.7904653e-2, -8.4003955e-2, 0.10951158,
                           -0.1426405, 0.19998531, -0.33333299);
    return fma(t * z, p, t);
}

template<class V> QVR_INLINE V plainArcTangent(V x)
{
    const V a = abs(x);
    const Mask<V> wide = a >= splat<V>(1);
    const V t = wide ? splat<V>(1) / a : a;
    const V p = unitArcTangent(t);
    // pi/2 as a float and the rest of it
    const V folded = splat<V>(1.5707964f) - (p + splat<V>(4.371139e-08f));
    return withSign(wide ? folded : p, signOf(x));
}

// ---- Logarithm ------------------------------------------------------------------------------------------------------

enum { noNote = 0, zeroNote = 2, negativeNote = 4 };

float specialLogarithm(float x, int& note)
{
    const uint32_t word = __builtin_bit_cast(uint32_t, x);
    if (word & kSignBit) {
        note = note ? note : negativeNote;
        return __builtin_bit_cast(float, kQuietNan);
    }
    if (word == 0) {
        note = note ? note : zeroNote;
        return -__builtin_inff();
    }
    if (word > kInfinityBits)
        return x + x;
    return qvrmLogf(x);
}

// The number of the first special lane counts, so they go in order.
template<int B> QVR_INLINE void logarithmBlock(const float* src, float* dst, int n, int& note)
{
    using V = Vec<float, B>;
    const V x = loadFirst<V>(src, n);
    const Mask<V> special = outsideNormal(x) & (iota<Mask<V>>() < n);
    if (__builtin_expect(anyTrue(special), 0)) {
        for (int i = 0; i < n; i++) {
            const Vec<float, 1> one = load<Vec<float, 1>>(src + i);
            store(dst + i, outsideNormal(one)[0] ? Vec<float, 1>{specialLogarithm(one[0], note)}
                                                 : convert<float>(naturalLogarithm(one)));
        }
    } else {
        storeFirst(dst, convert<float>(naturalLogarithm(x)), n);
    }
}

// ---- Phase ----------------------------------------------------------------------------------------------------------

// Four or eight angles; a block with an infinity, a NaN or a zero pair goes one by one.
template<int B> QVR_INLINE void phaseBlock(const float* src, float* dst, int n)
{
    using P = Vec<float, 2 * B>;
    const P pairs = loadFirst<P>(src, 2 * n);
    const auto re = evens(lo(pairs), hi(pairs)), im = odds(lo(pairs), hi(pairs));
    using V = Vec<float, B>;
    const V a = abs(V(re)), b = abs(V(im)), most = max(a, b);
    const V infinity = splat<V>(__builtin_inff());
    const Mask<V> plain = (a < infinity) & (b < infinity) & (most > V{});
    if (__builtin_expect(anyTrue(~plain & (iota<Mask<V>>() < n)), 0)) {
        for (int i = 0; i < n; i++) {
            const Vec<float, 2> z = load<Vec<float, 2>>(src + 2 * i);
            const float angle = z[0] == 0 && z[1] == 0 ? 0.0f : static_cast<float>(wideArcTangent2(z[1], z[0]));
            store(dst + i, angle);
        }
    } else {
        const auto angle = arcTangent2<Accuracy::ha, true>(convert<double>(V(im)), convert<double>(V(re)));
        storeFirst(dst, convert<float>(angle), n);
    }
}

} // namespace

extern "C" {

qvrStatus SLOT_SHARED(qvrsExp_32f)(const qvr32f* pSrc, qvr32f* pDst, int len)
{
    if (const qvrStatus status = checkPointersThenLength(len, pSrc, pDst))
        return status;
    if (readMxcsr() & kMxcsrRounding)
        exponentials<false>(pSrc, pDst, len);
    else
        exponentials<true>(pSrc, pDst, len);
    return qvrOk;
}

qvrStatus SLOT_SHARED(qvrsLn_32f)(const qvr32f* pSrc, qvr32f* pDst, int len)
{
    if (const qvrStatus status = checkPointersThenLength(len, pSrc, pDst))
        return status;
    int note = noNote;
    constexpr int B = kLanes<float>;
    Index i = 0;
    for (; i + B <= len; i += B)
        logarithmBlock<B>(pSrc + i, pDst + i, B, note);
    if (i < len)
        logarithmBlock<B>(pSrc + i, pDst + i, static_cast<int>(len - i), note);
    return note == noNote ? qvrOk : note == zeroNote ? qvrWarnLnZeroArg : qvrWarnLnNegArg;
}

qvrStatus SLOT_SHARED(qvrsArctan_32f)(const qvr32f* pSrc, qvr32f* pDst, int len)
{
    if (const qvrStatus status = checkPointersThenLength(len, pSrc, pDst))
        return status;
    eachBlock(pSrc, pDst, len, [](auto x) { return plainArcTangent(x); });
    return qvrOk;
}

qvrStatus SLOT_SHARED(qvrsPhase_32fc)(const qvr32fc* pSrc, qvr32f* pDst, int len)
{
    if (const qvrStatus status = checkPointersThenLength(len, pSrc, pDst))
        return status;
    const float* src = reinterpret_cast<const float*>(pSrc);
    constexpr int B = kLanes<float>;
    Index i = 0;
    for (; i + B <= len; i += B)
        phaseBlock<B>(src + 2 * i, pDst + i, B);
    if (i < len)
        phaseBlock<B>(src + 2 * i, pDst + i, static_cast<int>(len - i));
    return qvrOk;
}

} // extern "C"
