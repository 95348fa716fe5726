// Stretches of a convolution by plain sums: shapes of fixed size, and the general form; 8 by 8 cyclic convolution.
#include "fourier/direct.h"
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
// The AVX2 build takes the last one by the general form, whose sums are the same.
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
            shiftSums<-1, false>(src1, len1, src2, len2, 0, dst, dstLen);
        else if (s.partials == 2)
            denseRow<V, 2>(src1, len1, src2, dst, dstLen);
        else
            denseRow<V, 1>(src1, len1, src2, dst, dstLen);
        return true;
    }
    return false;
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
    // Result n is sum of pSrc1[k] * buffer[n + bias - k]; outside of the linear convolution it is zero.
    const float* buffer = reinterpret_cast<const float*>(reinterpret_cast<const char*>(pSrc2) - Index{bias} * 4);
    const Index all = Index{len1} + len2 - 1;
    const Index first = least(dstLen, greatest(0, -Index{bias}));
    const Index end = greatest(first, least(dstLen, all - bias));
    setZero(pDst, first);
    if (end > first)
        shiftSums<-1, false>(pSrc1, len1, buffer, len2, first + bias, pDst + first, end - first);
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
