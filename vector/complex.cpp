// Complex products.
#include "vector/functions.h"
#include "vector/loops.h"

namespace {

// (a + ib)(c + id) = ac - bd + i(ad + bc), lanes in pairs: a a * c d -+ b b * d c.
template<class V> QVR_INLINE V complexProduct(V x, V y)
{
    const V re = shuffleBlocks<0, 0>(x), im = shuffleBlocks<1, 1>(x), swapped = shuffleBlocks<1, 0>(y);
    return subAdd(re * y, im * swapped);
}

using V = Full<double>;
constexpr int N = kLanes<double>; // doubles to a vector: 1 or 2 complex numbers

} // namespace

extern "C" qvrStatus SLOT(qvrsMul_64fc)(const qvr64fc* pSrc1, const qvr64fc* pSrc2, qvr64fc* pDst, int len)
{
    if (const qvrStatus status = checkPointersThenLength(len, pSrc1, pSrc2, pDst))
        return status;
    const double* a = reinterpret_cast<const double*>(pSrc1);
    const double* b = reinterpret_cast<const double*>(pSrc2);
    double* dst = reinterpret_cast<double*>(pDst);
    const Index n = Index{2} * len;
    Index i = 0;
    for (; i + 4 * N <= n; i += 4 * N) {
        const V p = complexProduct(load<V>(a + i), load<V>(b + i));
        const V q = complexProduct(load<V>(a + i + N), load<V>(b + i + N));
        const V r = complexProduct(load<V>(a + i + 2 * N), load<V>(b + i + 2 * N));
        const V s = complexProduct(load<V>(a + i + 3 * N), load<V>(b + i + 3 * N));
        store(dst + i, p);
        store(dst + i + N, q);
        store(dst + i + 2 * N, r);
        store(dst + i + 3 * N, s);
    }
    for (; i < n; i += 2)
        store(dst + i, complexProduct(load<Vec<double, 2>>(a + i), load<Vec<double, 2>>(b + i)));
    return qvrOk;
}
