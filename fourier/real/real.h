// Real transforms: the complex transform of N/2 points and the recombination, from and to the three spectrum layouts.
#ifndef QVR_FOURIER_REAL_H
#define QVR_FOURIER_REAL_H

#include "fourier/real/init.h"
#include "fourier/real/real_kernels.h"
#include "fourier/real/run.h"

namespace {

// Null object, tag, then the arrays.
template<class T> inline qvrStatus checkTransform(const SpecType<T>* pSpec, const T* pSrc, const T* pDst)
{
    if (const qvrStatus status = checkState(pSpec, kFftTag<T>))
        return status;
    return anyNull(pSrc, pDst) ? qvrErrNullPointer : qvrOk;
}

// Work memory of one call: the caller's buffer from its next 64-byte boundary, or our own.
template<class T> struct Work {
    T* p;
    bool own;
};
template<class T> inline qvrStatus takeWork(const SpecType<T>& spec, uint8_t* pBuffer, Work<T>& work)
{
    work = {nullptr, false};
    if (spec.workSize <= 0)
        return qvrOk;
    if (pBuffer != nullptr) {
        work.p = alignLine<T>(pBuffer);
        return qvrOk;
    }
    work = {reinterpret_cast<T*>(allocate<uint8_t>(spec.workSize)), true};
    return work.p != nullptr ? qvrOk : qvrErrNoMemory;
}
template<class T> inline void giveWork(Work<T> work)
{
    if (work.own)
        release(work.p);
}

// Values moved by whole elements; source and destination may overlap.
template<class T> inline void moveValues(const T* src, T* dst, Index n)
{
    __builtin_memmove(dst, src, static_cast<size_t>(n) * sizeof(T));
}

template<class T> inline qvrStatus forwardPacked(const T* pSrc, T* pDst, const SpecType<T>* pSpec, uint8_t* pBuffer)
{
    if (const qvrStatus status = checkTransform<T>(pSpec, pSrc, pDst))
        return status;
    const SpecType<T>& spec = *pSpec;
    if (classOf<T>(spec.order) == FftClass::real) {
        realForwardOf<T>(spec.order, pSrc, pDst, spec.normFactor, spec.doFwdScale != 0);
        return qvrOk;
    }
    const T factor = spec.doFwdScale != 0 ? spec.normFactor : T(1);
    Work<T> work;
    if (const qvrStatus status = takeWork<T>(spec, pBuffer, work))
        return status;
    forwardTransform(makeRun<T>(spec, false, factor, work.p), pSrc, pDst);
    giveWork(work);
    return qvrOk;
}

template<class T> inline qvrStatus forwardCcs(const T* pSrc, T* pDst, const SpecType<T>* pSpec, uint8_t* pBuffer)
{
    if (const qvrStatus status = forwardPacked<T>(pSrc, pDst, pSpec, pBuffer))
        return status;
    const Index n = Index{1} << pSpec->order;
    if (n > 1) {
        put(pDst, n, get(pDst, 1));
        put(pDst, n + 1, T{0});
    }
    put(pDst, 1, T{0});
    return qvrOk;
}

template<class T> inline qvrStatus forwardTailPacked(const T* pSrc, T* pDst, const SpecType<T>* pSpec, uint8_t* pBuffer)
{
    if (const qvrStatus status = forwardPacked<T>(pSrc, pDst, pSpec, pBuffer))
        return status;
    const Index n = Index{1} << pSpec->order;
    if (n >= 4) {
        const T last = get(pDst, 1);
        moveValues(pDst + 2, pDst + 1, n - 2);
        put(pDst, n - 1, last);
    }
    return qvrOk;
}

// The spectrum's bins 1 .. N/2 - 1 at pSrc[2k], Re X[N/2] at pSrc[lastAt].
template<class T>
inline qvrStatus inverseFrom(const T* pSrc, T* pDst, Index lastAt, const SpecType<T>& spec, uint8_t* pBuffer)
{
    if (classOf<T>(spec.order) == FftClass::real) {
        realInverseOf<T>(spec.order, pSrc, lastAt, pDst, spec.normFactor, spec.doInvScale != 0);
        return qvrOk;
    }
    const T factor = spec.doInvScale != 0 ? spec.normFactor : T(1);
    Work<T> work;
    if (const qvrStatus status = takeWork<T>(spec, pBuffer, work))
        return status;
    inverseTransform(makeRun<T>(spec, true, factor, work.p), pSrc, pDst, get(pSrc, lastAt));
    giveWork(work);
    return qvrOk;
}

template<class T> inline qvrStatus inverseCcs(const T* pSrc, T* pDst, const SpecType<T>* pSpec, uint8_t* pBuffer)
{
    if (const qvrStatus status = checkTransform<T>(pSpec, pSrc, pDst))
        return status;
    return inverseFrom<T>(pSrc, pDst, Index{1} << pSpec->order, *pSpec, pBuffer);
}

template<class T> inline qvrStatus inversePacked(const T* pSrc, T* pDst, const SpecType<T>* pSpec, uint8_t* pBuffer)
{
    if (const qvrStatus status = checkTransform<T>(pSpec, pSrc, pDst))
        return status;
    return inverseFrom<T>(pSrc, pDst, 1, *pSpec, pBuffer);
}

template<class T> inline qvrStatus inverseTailPacked(const T* pSrc, T* pDst, const SpecType<T>* pSpec, uint8_t* pBuffer)
{
    if (const qvrStatus status = checkTransform<T>(pSpec, pSrc, pDst))
        return status;
    // Work memory first: a failure leaves pDst alone.
    const SpecType<T>& spec = *pSpec;
    Work<T> work;
    if (const qvrStatus status = takeWork<T>(spec, pBuffer, work))
        return status;
    const Index n = Index{1} << spec.order;
    const T first = get(pSrc, 0), last = get(pSrc, n - 1);
    if (n > 2)
        moveValues(pSrc + 1, pDst + 2, n - 2);
    put(pDst, 0, first);
    if (n > 1)
        put(pDst, 1, last);
    const qvrStatus status = inverseFrom<T>(pDst, pDst, 1, spec, reinterpret_cast<uint8_t*>(work.p));
    giveWork(work);
    return status;
}

} // namespace

#endif
