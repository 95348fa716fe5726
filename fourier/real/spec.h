// The specification object of a real FFT: everything prepared for one order, in one block.
//
// Block, each item from the next 64-byte boundary: object, bit reversal, twiddles of the complex kernel, tables of the
// split levels, forward and inverse recombination.
#ifndef QVR_FOURIER_SPEC_H
#define QVR_FOURIER_SPEC_H

#include "fourier/real/limits.h"
#include "fourier/real/plan.h"
#include "fourier/shared.h"

namespace {

// Levels of nested splits.
constexpr int kSplitLevels = 3;

template<bool> struct ThreadLimitField {
    int32_t value; // min(thread budget at initialisation, 2)
};
template<> struct ThreadLimitField<false> {};

template<class T> struct FftSpec {
    int32_t tag;
    int32_t order;       // log2 of the real length N
    uint32_t doFwdScale; // the forward transform multiplies by normFactor
    uint32_t doInvScale; // the inverse transform multiplies by normFactor
    T normFactor;        // 1/N or 1/sqrt(N); 0 where nothing scales
    int32_t hint;
    int32_t workSize; // bytes of work memory, 0: none
    int32_t isAlloc;  // pBlock is ours to release
    [[no_unique_address]] ThreadLimitField<kThreadedBand> threadLimit;
    void* pBlock;
    int32_t* pBitRev;
    T* pTwiddle;
    T* pSweepTwiddle; // first generation: radix-2 sweeps; threaded band: the radix-8 top pass
    T* pSweepTwiddle2;
    T* pFwdRecomb;
    T* pInvRecomb;
    T* pLevelColumnTwiddle[kSplitLevels]; // first generation
    T* pLevelMidTwiddle[kSplitLevels];
    const FftPlan* plan; // where there is one: not for straight-line kernels, nor in the first generation
    const T* pSweepTables[kMaxFftSweeps]; // of the plan's sweeps, inside of pTwiddle and pLevelMidTwiddle
};

template<class T> constexpr int32_t kFftTag = sizeof(T) == 4 ? 6 : 9;

} // namespace

struct qvrsFFTSpec_R_32f : FftSpec<float> {};
struct qvrsFFTSpec_R_64f : FftSpec<double> {};

namespace {

template<class T> struct SpecTypeOf;
template<> struct SpecTypeOf<float> {
    using type = qvrsFFTSpec_R_32f;
};
template<> struct SpecTypeOf<double> {
    using type = qvrsFFTSpec_R_64f;
};
template<class T> using SpecType = typename SpecTypeOf<T>::type;

// For a caller that forks by itself: the object's transforms stay on the calling thread.
template<class T> inline void forkNothing([[maybe_unused]] FftSpec<T>* spec)
{
    if constexpr (kThreadedBand)
        spec->threadLimit.value = 1;
}

} // namespace

// The internal forms, for the families that transform by the way: same checks and statuses as the exported ones.
//
// Packed spectrum, N values: Re X[0], Re X[N/2], then Re, Im of X[1] .. X[N/2 - 1].
// Tail-packed, N values: Re X[0], Re, Im of X[1] .. X[N/2 - 1], Re X[N/2].
#define QVR_FFT_INTERNALS(tag, T)                                                                                      \
    /* Bytes of the object's block, of the memory that initialisation needs (0: none) and of a caller's work buffer.   \
     */                                                                                                                \
    QVR_HIDDEN qvrStatus SLOT(ownqvrsFFTGetSize_R_##tag)(int order, int flag, int hint, int32_t* pSpecSize,            \
                                                         int32_t* pInitSize, int32_t* pWorkSize);                      \
    QVR_HIDDEN qvrStatus SLOT(ownqvrsFFTInit_R_##tag)(qvrsFFTSpec_R_##tag * *ppSpec, int order, int flag, int hint,    \
                                                      uint8_t* pMemSpec, uint8_t* pMemInit);                           \
    QVR_HIDDEN qvrStatus SLOT(ownqvrsFFTGetBufSize_R_##tag)(const qvrsFFTSpec_R_##tag* pSpec, int32_t* pSize);         \
    QVR_HIDDEN qvrStatus SLOT(ownqvrsFFTFwd_RToPacked_##tag)(const T* pSrc, T* pDst, const qvrsFFTSpec_R_##tag* pSpec, \
                                                             uint8_t* pBuffer);                                        \
    QVR_HIDDEN qvrStatus SLOT(ownqvrsFFTInv_PackedToR_##tag)(const T* pSrc, T* pDst, const qvrsFFTSpec_R_##tag* pSpec, \
                                                             uint8_t* pBuffer);                                        \
    QVR_HIDDEN qvrStatus SLOT(ownqvrsFFTFwd_RToTailPacked_##tag)(const T* pSrc, T* pDst,                               \
                                                                 const qvrsFFTSpec_R_##tag* pSpec, uint8_t* pBuffer);  \
    QVR_HIDDEN qvrStatus SLOT(ownqvrsFFTInv_TailPackedToR_##tag)(const T* pSrc, T* pDst,                               \
                                                                 const qvrsFFTSpec_R_##tag* pSpec, uint8_t* pBuffer);  \
    /* pSrcDst[k] *= pSrc[k] on packed spectra of len values. */                                                       \
    QVR_HIDDEN qvrStatus SLOT(ownqvrsMulPacked_##tag##_I)(const T* pSrc, T* pSrcDst, int len);                         \
    /* pSrcDst[k] = pSrc[k] * conj(pSrcDst[k]) on tail-packed spectra of len values. */                                \
    QVR_HIDDEN qvrStatus SLOT(ownqvrsMulTailPackedConj_##tag##_I)(const T* pSrc, T* pSrcDst, int len);

extern "C" {
QVR_FFT_INTERNALS(32f, float)
QVR_FFT_INTERNALS(64f, double)

// The complex transform inside of a real one: half the object's length, of pairs, times `factor`.
QVR_HIDDEN qvrStatus SLOT(ownqvrsFFTComplex_32f)(const float* pSrc, float* pDst, const qvrsFFTSpec_R_32f* pSpec,
                                                 uint8_t* pBuffer, bool inverse, float factor);
}

#undef QVR_FFT_INTERNALS

#endif
