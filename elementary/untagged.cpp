// The functions without an accuracy tag: exponential, natural logarithm, arc tangent, phase.
//
// Logarithm and phase are the double kernels, vectorised, with their results rounded to float; exponential and
// arc tangent are float kernels within one unit in the last place. The tail of an array is a vector with lanes switched
// off, so it gets the bits of the body.
#include "elementary/arctangent.h"
#include "elementary/exponential.h"
#include "elementary/functions.h"
#include "frame/ahead.h"
#include "scalarmath/scalar.h"

namespace {

// dst = op(src), a register at a time.
template<class Op> QVR_INLINE void mapBlocks(const float* src, float* dst, Index n, Op&& op)
{
    using V = Full<float>;
    constexpr int N = kLanes<float>;
    Index i = 0;
    const auto block = [&](Index at) QVR_ALWAYS {
        const V a = op(load<V>(src + at)), b = op(load<V>(src + at + N));
        store(dst + at, a);
        store(dst + at + N, b);
    };
    eachBlock<2 * N>(i, n, block, dst, src);
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

// ln of the largest float: beyond it the result is infinite, where the scalar routine would round as the caller asks.
constexpr float kOverflow = 0x1.62e42ep6f;

float specialExponential(float x)
{
    if (x != x)
        return x + x;
    const float y = qvrmExpf(x);
    return x > kOverflow ? __builtin_inff() : y;
}

// 2^k e^r with k = round(x / ln 2): e^r to 2^-28 for |r| <= ln 2 / 2.
template<bool kNearest, class V> QVR_INLINE V plainExponential(V x)
{
    V n;
    const Bits<V> k = nearestInteger<kNearest>(x, 1.442695f, n);
    const V r = subtractProduct(subtractProduct(x, n, 0x1.62p-1f), n, 0x1.c85fep-10f);
    const V q = polynomial(r, kExponential);
    const V p = fma(r * r, q, r) + splat<V>(1);
    return bitcast<V>(bits(p) + (k << 23));
}

template<bool kNearest> __attribute__((noinline)) void exponentials(const float* src, float* dst, Index n)
{
    mapBlocks(src, dst, n, [](auto x) {
        if (__builtin_expect(anyTrue(isAbove(abs(x), kFastLimit)), 0))
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
    const V p = polynomial(z, kUnitArcTangent);
    return fma(t * z, p, t);
}

// The smaller of a and 1 over the larger one; bits of numbers that are not negative are ordered as the numbers, and a
// NaN is the largest.
template<class V> QVR_INLINE V unitQuotient(V a)
{
    const Mask<V> x = bitcast<Mask<V>>(a), one = bitcast<Mask<V>>(splat<V>(1));
    if constexpr (kAvx2 || (kSse41 && !kAvx)) {
        return bitcast<V>(min(x, one)) / bitcast<V>(max(x, one));
    } else if constexpr (kAvx) {
        const Mask<V> wide = isAbove(a, 1);
        return (wide ? splat<V>(1) : a) / (wide ? a : splat<V>(1));
    } else {
        const Mask<V> exchange = (x ^ one) & isAbove(a, 1);
        return bitcast<V>(x ^ exchange) / bitcast<V>(one ^ exchange);
    }
}

template<bool kNearest, class V> QVR_INLINE V plainArcTangent(V x)
{
    const V a = abs(x);
    const V p = unitArcTangent(unitQuotient(a));
    // pi/2 as a float and the rest of it
    const V folded = splat<V>(1.5707964f) - (p + splat<V>(4.371139e-08f));
    return oddZero<kNearest>(x, withSign(isAbove(a, 1) ? folded : p, signOf(x)));
}

template<bool kNearest> QVR_INLINE void arcTangents(const float* src, float* dst, Index n)
{
    mapBlocks(src, dst, n, [](auto x) { return plainArcTangent<kNearest>(x); });
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
    if (isZero(x)) { // a denormal, too, where the caller takes it for a zero
        note = note ? note : zeroNote;
        return -__builtin_inff();
    }
    if (word > kInfinityBits)
        return x + x;
    return qvrmLogf(x);
}

template<bool kNearest, class V> QVR_INLINE V plainLogarithm(V x)
{
    return zeroAt<kNearest>(1, x, convert<float>(naturalLogarithm(x)));
}

// The number of the first special lane counts, so they go in order.
template<bool kNearest, int B> QVR_INLINE void logarithmBlock(const float* src, float* dst, int n, int& note)
{
    using V = Vec<float, B>;
    const V x = loadFirst<V>(src, n);
    const Mask<V> special = outsideNormal(x) & (iota<Mask<V>>() < n);
    if (__builtin_expect(anyTrue(special), 0)) {
        for (int i = 0; i < n; i++) {
            const Vec<float, 1> one = load<Vec<float, 1>>(src + i);
            store(dst + i, outsideNormal(one)[0] ? Vec<float, 1>{specialLogarithm(one[0], note)}
                                                 : plainLogarithm<kNearest>(one));
        }
    } else {
        storeFirst(dst, plainLogarithm<kNearest>(x), n);
    }
}

// The note of the first element that has one.
template<bool kNearest> __attribute__((noinline)) int logarithms(const float* src, float* dst, Index n)
{
    int note = noNote;
    constexpr int B = kLanes<float>;
    Index i = 0;
    const auto block = [&](Index at) QVR_ALWAYS { logarithmBlock<kNearest, B>(src + at, dst + at, B, note); };
    eachBlock<B>(i, n, block, dst, src);
    if (i < n)
        logarithmBlock<kNearest, B>(src + i, dst + i, static_cast<int>(n - i), note);
    return note;
}

// ---- Phase ----------------------------------------------------------------------------------------------------------

// Four or eight angles; a block with an infinity, a NaN or a zero pair goes one by one.
template<bool kNearest, int B> QVR_INLINE void phaseBlock(const float* src, float* dst, int n)
{
    using P = Vec<float, 2 * B>;
    const P pairs = loadFirst<P>(src, 2 * n);
    using V = Vec<float, B>;
    const Mask<V> used = iota<Mask<V>>() < n;
    // The angle of 1 + i y in lanes behind the end.
    const V re = used ? V(evens(lo(pairs), hi(pairs))) : splat<V>(1), im = odds(lo(pairs), hi(pairs));
    constexpr float largest = 0x1.fffffep127f;
    const Mask<V> special = isAbove(abs(re), largest) | isAbove(abs(im), largest) | (isZero(re) & isZero(im));
    if (__builtin_expect(anyTrue(special), 0)) {
        for (int i = 0; i < n; i++) {
            const Vec<float, 2> z = load<Vec<float, 2>>(src + 2 * i);
            const float angle = isZero(z[0]) && isZero(z[1]) ? 0.0f : static_cast<float>(wideArcTangent2(z[1], z[0]));
            store(dst + i, angle);
        }
    } else {
        const auto angle = arcTangent2<Accuracy::a24, true, kNearest>(convert<double>(im), convert<double>(re));
        storeFirst(dst, convert<float>(angle), n);
    }
}

template<bool kNearest> __attribute__((noinline)) void phases(const float* src, float* dst, Index n)
{
    constexpr int B = kLanes<float>;
    Index i = 0;
    const auto block = [&](Index at) QVR_ALWAYS { phaseBlock<kNearest, B>(src + 2 * at, dst + at, B); };
    eachBlock<B>(i, n, block, dst, reinterpret_cast<const qvr32fc*>(src));
    if (i < n)
        phaseBlock<kNearest, B>(src + 2 * i, dst + i, static_cast<int>(n - i));
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
    const int note =
        readMxcsr() & kMxcsrRounding ? logarithms<false>(pSrc, pDst, len) : logarithms<true>(pSrc, pDst, len);
    return note == noNote ? qvrOk : note == zeroNote ? qvrWarnLnZeroArg : qvrWarnLnNegArg;
}

qvrStatus SLOT_SHARED(qvrsArctan_32f)(const qvr32f* pSrc, qvr32f* pDst, int len)
{
    if (const qvrStatus status = checkPointersThenLength(len, pSrc, pDst))
        return status;
    if (readMxcsr() & kMxcsrRounding)
        arcTangents<false>(pSrc, pDst, len);
    else
        arcTangents<true>(pSrc, pDst, len);
    return qvrOk;
}

qvrStatus SLOT_SHARED(qvrsPhase_32fc)(const qvr32fc* pSrc, qvr32f* pDst, int len)
{
    if (const qvrStatus status = checkPointersThenLength(len, pSrc, pDst))
        return status;
    const float* src = reinterpret_cast<const float*>(pSrc);
    if (readMxcsr() & kMxcsrRounding)
        phases<false>(src, pDst, len);
    else
        phases<true>(src, pDst, len);
    return qvrOk;
}

} // extern "C"
