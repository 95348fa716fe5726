// Products of packed and tail-packed spectra, for convolution and correlation by transforms.
#ifndef QVR_FOURIER_SPECTRA_H
#define QVR_FOURIER_SPECTRA_H

#include "fourier/lanes.h"
#include "frame/status.h"

namespace {

// y := x y, or x conj(y), on whole pairs.
template<bool Conjugate, class V> QVR_INLINE Cx<V> spectrumProduct(Cx<V> x, Cx<V> y)
{
    if constexpr (Conjugate)
        y.im = -y.im;
    return {x.re * y.re - x.im * y.im, x.re * y.im + x.im * y.re};
}
template<bool Conjugate, class T> inline void multiplyPairs(const T* src, T* srcDst, Index pairs)
{
    using V = Full<T>;
    using S = Vec<T, 1>;
    constexpr int W = kLanes<T>;
    Index i = 0;
    for (; i + W <= pairs; i += W)
        storePairs(srcDst + 2 * i, spectrumProduct<Conjugate>(loadPairs<V>(src + 2 * i), loadPairs<V>(srcDst + 2 * i)));
    for (; i < pairs; i++) {
        const Cx<S> x = {load<S>(src + 2 * i), load<S>(src + 2 * i + 1)};
        const Cx<S> y = {load<S>(srcDst + 2 * i), load<S>(srcDst + 2 * i + 1)};
        const Cx<S> z = spectrumProduct<Conjugate>(x, y);
        store(srcDst + 2 * i, z.re);
        store(srcDst + 2 * i + 1, z.im);
    }
}

template<class T> QVR_INLINE void multiplyOne(const T* src, T* srcDst, Index i)
{
    put(srcDst, i, get(srcDst, i) * get(src, i));
}

template<class T> inline qvrStatus mulPacked(const T* pSrc, T* pSrcDst, int len)
{
    if (const qvrStatus status = checkPointersThenLength(len, pSrc, pSrcDst))
        return status;
    multiplyOne(pSrc, pSrcDst, 0);
    const int head = len % 2 == 0 ? 2 : 1;
    if (head == 2)
        multiplyOne(pSrc, pSrcDst, 1);
    multiplyPairs<false>(pSrc + head, pSrcDst + head, (len - head) / 2);
    return qvrOk;
}

template<class T> inline qvrStatus mulTailPackedConj(const T* pSrc, T* pSrcDst, int len)
{
    if (const qvrStatus status = checkPointersThenLength(len, pSrc, pSrcDst))
        return status;
    multiplyOne(pSrc, pSrcDst, 0);
    if (len % 2 == 0)
        multiplyOne(pSrc, pSrcDst, len - 1);
    multiplyPairs<true>(pSrc + 1, pSrcDst + 1, (len - 1) / 2);
    return qvrOk;
}

} // namespace

#endif
