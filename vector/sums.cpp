// Sums, means and the standard deviation.
//
// Floats are accumulated in double. Integers are summed exactly: 16-bit ones in 32-bit lanes over blocks that cannot
// overflow, 32-bit ones as a sum modulo 2^32 beside the sum of their high halves, which together hold the exact sum.
#include "vector/fold.h"
#include "vector/functions.h"
#include "vector/narrow.h"

namespace {

// ---- Doubles --------------------------------------------------------------------------------------------------------

template<class V> struct Moments {
    V sum, squares;
};
template<class V> QVR_INLINE Moments<V> join(Moments<V> a, Moments<V> b)
{
    return {a.sum + b.sum, a.squares + b.squares};
}

// The product of two singles is exact in double, so a fused step has the bits of the unfused one.
template<bool Squares, class V> QVR_INLINE Moments<V> step(Moments<V> acc, V x)
{
    if constexpr (Squares)
        return {acc.sum + x, fma(x, x, acc.squares)};
    else
        return {acc.sum + x, acc.squares};
}

// mx keeps one order of summation on every processor: two accumulators over groups of four elements, x[4k] and x[4k+2]
// in the first, x[4k+1] and x[4k+3] in the second; the second plus the first; then what remains, one by one.
template<bool Squares, class T> QVR_INLINE Moments<double> groupedMoments(const T* src, Index n)
{
    using V = Vec<double, 2>;
    Moments<V> acc{};
    Index i = 0;
    for (; i + 4 <= n; i += 4) {
        acc = step<Squares>(acc, convert<double>(load<Vec<T, 2>>(src + i)));
        acc = step<Squares>(acc, convert<double>(load<Vec<T, 2>>(src + i + 2)));
    }
    Moments<double> total{acc.sum[1] + acc.sum[0], acc.squares[1] + acc.squares[0]};
    for (; i < n; i++) {
        const double x = get(src, i);
        total.sum += x;
        total.squares += Squares ? x * x : 0;
    }
    return total;
}

template<bool Squares, class T> QVR_INLINE Moments<double> moments(const T* src, Index n)
{
    if constexpr (kSlot == qvrSlot_mx) {
        return groupedMoments<Squares>(src, n);
    } else {
        // Two registers to a step: with four accumulators of each, eight additions are under way.
        constexpr int B = Squares ? kLanes<double> : 2 * kLanes<double>;
        using V = Vec<double, B>;
        const auto total = sumBlocks<B, Moments<V>>(
            n, [](Moments<V> acc, auto x) { return step<Squares>(acc, convert<double>(x)); }, join<V>, src);
        return {sumLanes(total.sum), sumLanes(total.squares)};
    }
}

template<class T> QVR_INLINE qvrStatus mean(const T* pSrc, int len, T* pMean)
{
    if (const qvrStatus status = checkPointersThenLength(len, pSrc, pMean))
        return status;
    put(pMean, 0, static_cast<T>(moments<false>(pSrc, len).sum / len));
    return qvrOk;
}

// ---- Exact sums of integers -----------------------------------------------------------------------------------------

// 65536 elements of 16 bits, however they are spread over lanes and folded, stay within 32 bits.
constexpr Index kSumBlock = 65536;

QVR_INLINE int64_t sum16(const int16_t* src, Index n)
{
    constexpr int B = kFoldLanes<int16_t>;
    using Acc = Vec<int32_t, B / 2>;
    int64_t total = 0;
    for (Index i = 0; i < n; i += kSumBlock) {
        const Index block = n - i < kSumBlock ? n - i : kSumBlock;
        total +=
            sumLanes(sumVectors<B, Acc>(block, [](Acc acc, Vec<int16_t, B> x) { return acc + pairSums(x); }, src + i));
    }
    return total;
}

template<class V> struct WideSum {
    Bits<V> modulo; // of the elements, modulo 2^32
    V high;         // of the elements' high halves
};

// A lane may take 65536 elements: the sum of the high halves stays within 32 bits, and so does the sum of the unsigned
// low halves, which is what the sum modulo 2^32 leaves once the high halves are taken off.
QVR_INLINE int64_t sum32(const int32_t* src, Index n)
{
    constexpr int N = kFoldLanes<int32_t>;
    using V = Vec<int32_t, N>;
    constexpr Index blockLength = Index{65536} * N;
    int64_t total = 0;
    for (Index i = 0; i < n; i += blockLength) {
        const Index block = n - i < blockLength ? n - i : blockLength;
        const auto acc = sumBlocks<N, WideSum<V>>(
            block, [](WideSum<V> a, V x) { return WideSum<V>{a.modulo + bits(x), a.high + (x >> 16)}; },
            [](WideSum<V> a, WideSum<V> b) { return WideSum<V>{a.modulo + b.modulo, a.high + b.high}; }, src + i);
        const Bits<V> low = acc.modulo - (bits(acc.high) << 16);
        for (int k = 0; k < N; k++)
            total += int64_t{acc.high[k]} * 65536 + low[k];
    }
    return total;
}

// ---- Scaling --------------------------------------------------------------------------------------------------------

QVR_INLINE int32_t saturate32(int64_t x)
{
    return static_cast<int32_t>(x > INT32_MAX ? INT32_MAX : x < INT32_MIN ? INT32_MIN : x);
}

// x / 2^s, half to even; s from 1 to 48 and x below 2^62 in magnitude.
QVR_INLINE int64_t shiftHalfEven(int64_t x, int s)
{
    return halfEven(Vec<int64_t, 1>{x}, Vec<int64_t, 1>{}, s)[0];
}

// x * 2^k saturated, for k at least 1.
QVR_INLINE int32_t shiftUpSaturate(int64_t x, int64_t k)
{
    const int64_t narrow = saturate32(x);
    if (k <= 31)
        return saturate32(narrow * (int64_t{1} << k));
    return narrow > 0 ? INT32_MAX : narrow < 0 ? INT32_MIN : 0;
}

// t / n, half to even; the magnitude of t is at most 2^62.
QVR_INLINE int64_t divideHalfEven(int64_t t, int64_t n)
{
    const int64_t magnitude = t < 0 ? -t : t;
    const int64_t q = magnitude / n, twice = magnitude % n * 2;
    const int64_t rounded = q + (twice > n ? 1 : twice == n ? q & 1 : 0);
    return t < 0 ? -rounded : rounded;
}

} // namespace

extern "C" {

qvrStatus SLOT(qvrsMean_32f)(const qvr32f* pSrc, int len, qvr32f* pMean)
{
    return mean(pSrc, len, pMean);
}

qvrStatus SLOT(qvrsMean_64f)(const qvr64f* pSrc, int len, qvr64f* pMean)
{
    return mean(pSrc, len, pMean);
}

qvrStatus SLOT(qvrsStdDev_32f)(const qvr32f* pSrc, int len, qvr32f* pStdDev)
{
    if (anyNull(pSrc, pStdDev))
        return qvrErrNullPointer;
    if (len < 2)
        return qvrErrBadSize;
    const Moments<double> m = moments<true>(pSrc, len);
    const double n = len, v = m.squares * n - m.sum * m.sum;
    const double deviation = v > 0 ? __builtin_sqrt(v / ((n - 1) * n)) : 0;
    put(pStdDev, 0, static_cast<float>(deviation));
    return qvrOk;
}

qvrStatus SLOT(qvrsSum_16s32s_Sfs)(const qvr16s* pSrc, int len, qvr32s* pSum, int scaleFactor)
{
    if (const qvrStatus status = checkPointersThenLength(len, pSrc, pSum))
        return status;
    constexpr int largestScale = 48; // above it a sum of 2^31 elements is less than half of the divisor
    const int64_t t = sum16(pSrc, len), s = scaleFactor;
    int32_t result = 0;
    if (s == 0)
        result = saturate32(t);
    else if (s < 0)
        result = shiftUpSaturate(t, -s);
    else if (s <= largestScale)
        result = saturate32(shiftHalfEven(t, scaleFactor));
    put(pSum, 0, result);
    return qvrOk;
}

qvrStatus SLOT(qvrsMean_16s_Sfs)(const qvr16s* pSrc, int len, qvr16s* pMean, int scaleFactor)
{
    if (const qvrStatus status = checkPointersThenLength(len, pSrc, pMean))
        return status;
    const double average = static_cast<double>(sum16(pSrc, len)) / len;
    const int64_t s = scaleFactor, exponent = s > 1023 ? -1023 : s < -1024 ? 1024 : -s;
    // A mean of zero stays zero where the factor is infinite.
    const double scaled = average == 0 ? 0 : average * powerOfTwo64(static_cast<int>(exponent));
    const double clamped = scaled < -32768 ? -32768 : scaled > 32767 ? 32767 : scaled;
    put(pMean, 0, static_cast<int16_t>(toInt(Vec<double, 1>{clamped})[0]));
    return qvrOk;
}

qvrStatus SLOT(qvrsMean_32s_Sfs)(const qvr32s* pSrc, int len, qvr32s* pMean, int scaleFactor)
{
    if (const qvrStatus status = checkPointersThenLength(len, pSrc, pMean))
        return status;
    const int64_t t = sum32(pSrc, len), s = scaleFactor;
    int32_t result = 0;
    if (s == 0)
        result = saturate32(divideHalfEven(t, len));
    else if (s > 0)
        result = s > 31 ? 0 : saturate32(shiftHalfEven(divideHalfEven(t, len), scaleFactor));
    else if (s >= -31 && t == saturate32(t))
        result = saturate32(divideHalfEven(t * (int64_t{1} << -s), len));
    else
        result = shiftUpSaturate(divideHalfEven(t, len), -s);
    put(pMean, 0, result);
    return qvrOk;
}

} // extern "C"
