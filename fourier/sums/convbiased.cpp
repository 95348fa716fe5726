// Stretches of a convolution by plain sums: shapes of fixed size, and the general forms; 8 by 8 cyclic convolution.
//
// Where no term of a result is missing, or the first n + 1 of result n are there (the triangular form), the terms go in
// groups of eight: term k to partial sum k mod 8. The partial sums are joined in their order, and the terms behind the
// last whole group follow one by one. Eight results stand in the lanes.
#include "fourier/functions.h"
#include "fourier/sums/direct.h"
#include "frame/status.h"

namespace {

// A shape of fixed size. Partials: 1 adds all terms in the order of k, 2 adds those of even and of odd k apart, then
// joins them, then adds the last one. Triangular shapes have no elements before pSrc2[0].
struct Shape {
    int len2, len1, dstLen, bias, partials;
    bool triangular;
};
constexpr Shape kShapes[] = {{45, 4, 41, 4, 1, false},   {50, 11, 40, 10, 1, false},  {56, 16, 40, 16, 1, false},
                             {70, 31, 40, 30, 2, false}, {110, 31, 80, 30, 2, false}, {40, 40, 40, 0, 1, true},
                             {60, 60, 60, 0, 1, true}};
// The AVX2 build takes the last one by the general form.
constexpr int kShapeCount = kAvx2 ? 6 : 7;

// `count` results whose terms all exist, blocks of V vectors; the last block overlaps the one before it.
template<int V, int Partials> inline void denseRow(const float* taps, int len1, const float* x, float* out, int count)
{
    using F = Full<float>;
    constexpr int W = kLanes<float>, block = V * W;
    for (int n = 0;;) {
        F acc[Partials][V] = {};
        const int paired = Partials == 1 ? len1 : len1 - len1 % 2;
        for (int k = 0; k < paired; k += Partials)
#pragma clang loop unroll(full)
            for (int p = 0; p < Partials; p++)
                addTerms<V, -1>(acc[p], taps + k + p, 1, x + n - k - p);
        if constexpr (Partials == 2) {
            for (int v = 0; v < V; v++)
                acc[0][v] += acc[1][v];
            if (paired < len1)
                addTerms<V, -1>(acc[0], taps + paired, 1, x + n - paired);
        }
        for (int v = 0; v < V; v++)
            store(out + n + v * W, acc[0][v]);
        if (n + block == count)
            return;
        n = n + 2 * block <= count ? n + block : count - block;
    }
}

bool fixedShape(const float* src1, int len1, const float* src2, int len2, float* dst, int dstLen, int bias)
{
    constexpr int V = 40 / kLanes<float> > 5 ? 5 : 40 / kLanes<float>;
    for (int i = 0; i < kShapeCount; i++) {
        const Shape& s = kShapes[i];
        if (s.len2 != len2)
            continue;
        if (s.len1 != len1 || s.dstLen != dstLen || s.bias != bias)
            return false;
        if (s.triangular)
            shiftSums<-1, 0>(src1, len1, src2, len2, 0, dst, dstLen);
        else if (s.partials == 2)
            denseRow<V, 2>(src1, len1, src2, dst, dstLen);
        else
            denseRow<V, 1>(src1, len1, src2, dst, dstLen);
        return true;
    }
    return false;
}

using Oct = Vec<float, 8>;

// A result whose terms are a[k] x[-k], the partial sums in the lanes.
float groupedSum(const float* a, Index count, const float* x)
{
    Oct partial{};
    Index k = 0;
    for (; k + 8 <= count; k += 8)
        partial = fma(load<Oct>(a + k), reversedLanes(load<Oct>(x - k - 7)), partial);
    float sum = partial[0];
    for (int r = 1; r < 8; r++)
        sum += partial[r];
    using One = Vec<float, 1>;
    for (; k < count; k++)
        sum = fma(One{get(a, k)}, One{get(x, -k)}, One{sum})[0];
    return sum;
}

// Terms whose taps and samples stay in the first cache while one partial sum after the other goes over them.
constexpr Index kStretch = 2048;

// V times eight results from out on; x is the place of the first one's element for k = 0. All have the terms of the
// first `groups` groups. Otherwise they have `count` terms, or, triangular, each eight have a group more than the eight
// before, and lane j of the eight has j further terms, whose elements are firsts[j - 1], firsts[j - 2] .. firsts[0];
// eight readable values stand before these.
template<int V, bool Triangular>
inline void groupedBlock(const float* a, Index groups, Index count, const float* x, const float* firsts, float* out)
{
    Oct partial[8][V], sum[V];
    for (int v = 0; v < V; v++)
        sum[v] = Oct{};
    for (Index begin = 0; begin < 8 * groups; begin += kStretch) {
        const bool last = begin + kStretch >= 8 * groups;
        const Index end = last ? 8 * groups : begin + kStretch;
        for (Index r = 0; r < 8; r++) {
            Oct acc[V];
            for (int v = 0; v < V; v++)
                acc[v] = begin > 0 ? partial[r][v] : Oct{};
            for (Index k = begin + r; k < end; k += 8) {
                const Oct s = splat<Oct>(get(a, k));
#pragma clang loop unroll(full)
                for (int v = 0; v < V; v++)
                    acc[v] = fma(s, load<Oct>(x - k + 8 * v), acc[v]);
            }
            if (Triangular && last)
#pragma clang loop unroll(full)
                for (int v = 1; v < V; v++)
                    for (Index k = end + r; k < end + 8 * v; k += 8)
                        acc[v] = fma(splat<Oct>(get(a, k)), load<Oct>(x - k + 8 * v), acc[v]);
            for (int v = 0; v < V; v++)
                if (last)
                    sum[v] += acc[v];
                else
                    partial[r][v] = acc[v];
        }
    }
    for (int v = 0; v < V; v++) {
        Index k = 8 * groups;
        if constexpr (Triangular) {
            k += 8 * v;
            for (int i = 0; i < 7; i++) {
                const Oct with = fma(splat<Oct>(get(a, k + i)), load<Oct>(firsts - 1 - i), sum[v]);
                sum[v] = iota<Mask<Oct>>() > i ? with : sum[v];
            }
        } else {
            for (; k < count; k++)
                sum[v] = fma(splat<Oct>(get(a, k)), load<Oct>(x - k + 8 * v), sum[v]);
        }
        store(out + 8 * v, sum[v]);
    }
}

// As many accumulators as leave registers for the sums that they are joined to, and half as many for what is left.
constexpr int kGroupedBlock = kAvx ? 6 : 3, kHalfBlock = kGroupedBlock / 2;

// Every result has all `count` terms.
void denseSums(const float* a, Index count, const float* b, float* out, Index results)
{
    if (results < 8) {
        for (Index n = 0; n < results; n++)
            put(out, n, groupedSum(a, count, b + n));
        return;
    }
    Index n = 0;
    for (; n + 8 * kGroupedBlock <= results; n += 8 * kGroupedBlock)
        groupedBlock<kGroupedBlock, false>(a, count / 8, count, b + n, nullptr, out + n);
    for (; n + 8 * kHalfBlock <= results; n += 8 * kHalfBlock)
        groupedBlock<kHalfBlock, false>(a, count / 8, count, b + n, nullptr, out + n);
    while (n < results) {
        n = least(n, results - 8);
        groupedBlock<1, false>(a, count / 8, count, b + n, nullptr, out + n);
        n += 8;
    }
}

// Result n has the terms 0 .. n, so that the eight from 8 g - 1 on have g groups.
void triangularSums(const float* a, const float* b, float* out, Index results)
{
    Index n = 0;
    for (; n < 7 && n < results; n++)
        put(out, n, groupedSum(a, n + 1, b + n));
    if (n + 8 <= results) {
        float firsts[16] = {};
        copyValues(b, firsts + 8, 7);
        for (; n + 8 * kGroupedBlock <= results; n += 8 * kGroupedBlock)
            groupedBlock<kGroupedBlock, true>(a, (n + 1) / 8, 0, b + n, firsts + 8, out + n);
        for (; n + 8 * kHalfBlock <= results; n += 8 * kHalfBlock)
            groupedBlock<kHalfBlock, true>(a, (n + 1) / 8, 0, b + n, firsts + 8, out + n);
        for (; n + 8 <= results; n += 8)
            groupedBlock<1, true>(a, (n + 1) / 8, 0, b + n, firsts + 8, out + n);
    }
    for (; n < results; n++)
        put(out, n, groupedSum(a, n + 1, b + n));
}

} // namespace

extern "C" qvrStatus SLOT(qvrsConvBiased_32f)(const qvr32f* pSrc1, int len1, const qvr32f* pSrc2, int len2,
                                              qvr32f* pDst, int dstLen, int bias)
{
    if (anyNull(pSrc1, pSrc2, pDst))
        return qvrErrNullPointer;
    if (fixedShape(pSrc1, len1, pSrc2, len2, pDst, dstLen, bias))
        return qvrOk;
    if (len1 < 1 || len2 < 1 || dstLen < 1)
        return qvrErrBadSize;
    if (len1 == len2 && len2 == dstLen && bias == 0) {
        triangularSums(pSrc1, pSrc2, pDst, dstLen);
        return qvrOk;
    }
    if (bias >= len1 - 1 && len2 >= Index{dstLen} + bias) {
        denseSums(pSrc1, len1, pSrc2, pDst, dstLen);
        return qvrOk;
    }
    // Result n is sum of pSrc1[k] * buffer[n + bias - k]; outside of the linear convolution it is zero.
    const float* buffer = reinterpret_cast<const float*>(reinterpret_cast<const char*>(pSrc2) - Index{bias} * 4);
    const Index all = Index{len1} + len2 - 1;
    const Index first = least(dstLen, greatest(0, -Index{bias}));
    const Index end = greatest(first, least(dstLen, all - bias));
    setZero(pDst, first);
    if (end > first)
        shiftSums<-1, kConvolutionChunk>(pSrc1, len1, buffer, len2, first + bias, pDst + first, end - first);
    setZero(pDst + end, dstLen - end);
    return qvrOk;
}

// Lane n of the rotation by k holds pH[(n - k) mod 8].
template<int K> static QVR_INLINE void addRotated(Vec<float, 8>& sum, const float* x, Vec<float, 8> h)
{
    using V = Vec<float, 8>;
    sum = fma(splat<V>(get(x, K)), shiftedLanes<8 - K>(h, h), sum);
    if constexpr (K < 7)
        addRotated<K + 1>(sum, x, h);
}

extern "C" qvrStatus SLOT(qvrsConvCyclic8x8_32f)(const qvr32f* pX, const qvr32f* pH, qvr32f* pY)
{
    using V = Vec<float, 8>;
    const V h = load<V>(pH);
    V sum = splat<V>(get(pX, 0)) * h;
    addRotated<1>(sum, pX, h);
    store(pY, sum);
    return qvrOk;
}
