// Transforms of any length n: objects and internal interfaces.
//
// Forms, by the length:
//   n <= 16          straight line
//   n = 2^m          the complex kernels of the real FFT
//   small factors    mixed radix
//   n <= 75          sums of all terms (<= 100 for an odd length of the real object)
//   anything else    as a convolution with a chirp, by transforms of a good length L >= 2n - 1
// The real object runs an even length as a complex transform of half the length and a recombination.
//
// Small factors: n is 4^i, at most one 2, and odd primes up to 75, with at least two of these. Stages take one or more
// factors each.
#ifndef QVR_FOURIER_DFT_H
#define QVR_FOURIER_DFT_H

#include "fourier/lanes.h"
#include "fourier/real/spec.h"

namespace {

constexpr int kTagDftReal = 15, kTagDftComplex = 13;

constexpr int kStraightMost = 16;
constexpr int kFactorMost = 75;
constexpr int kDirectMost = 75, kDirectMostOddReal = 100;
constexpr int32_t kLengthMost = 0x7ffffff, kChirpMost = 0x3ffffff;

// 4^13 is above the largest length, and so is 3^17.
constexpr int kFactorsMost = 24;

struct DftFactor {
    int32_t factor;
    float* pTwiddle; // of the stage that the factor is in, null but for its first one
    float* pRoots;   // exp(-2 pi i k / factor) for the factors that have no kernel of their own
};

// A stage takes `radix` of the length that is left. The first stage's results stand in rows of `pitch` columns.
struct DftStage {
    int32_t radix;
    const float *twiddle, *roots;
};

} // namespace

struct qvrsDFTSpec {
    int32_t tag, len;
    uint32_t doFwdScale, doInvScale;
    float normFactor;
    int32_t hint, workSize;
    int32_t isPow2;
    float *pDirectTable, *pRecombFwd, *pRecombInv, *pChirp, *pChirpSpectrum;
    qvrsFFTSpec_R_32f* pPow2Spec;
    qvrsDFTSpec* pInnerDFT;
    int32_t isFactored, lastFactorIndex;
    DftFactor factors[kFactorsMost];

    int32_t points;  // of the complex or odd real transform: len, or half of it
    int32_t odd;     // real input of odd length
    int32_t columns; // results of the first stage that are kept
    int32_t pitch;
    int32_t stageCount;
    DftStage stages[kFactorsMost];
};

extern "C" {

using qvrsDFTSpec_R_32f = qvrsDFTSpec;
using qvrsDFTSpec_C_32fc = qvrsDFTSpec;

// What a length from 1 up that is no power of two fails by on every slot, before anything is made.
QVR_HIDDEN qvrStatus SLOT(ownqvrsDFTJudge)(int len, bool real);
// Like those of the real FFT. A flag's divisor is `len` or its root.
QVR_HIDDEN qvrStatus SLOT(ownqvrsDFTInitAlloc_R_32f)(qvrsDFTSpec_R_32f** ppSpec, int len, int flag, int hint);
QVR_HIDDEN qvrStatus SLOT(ownqvrsDFTInitAlloc_C_32fc)(qvrsDFTSpec_C_32fc** ppSpec, int len, int flag, int hint);
QVR_HIDDEN qvrStatus SLOT(ownqvrsDFTFree_R_32f)(qvrsDFTSpec_R_32f* pSpec);
QVR_HIDDEN qvrStatus SLOT(ownqvrsDFTFree_C_32fc)(qvrsDFTSpec_C_32fc* pSpec);
QVR_HIDDEN qvrStatus SLOT(ownqvrsDFTGetBufSize_R_32f)(const qvrsDFTSpec_R_32f* pSpec, int32_t* pSize);
QVR_HIDDEN qvrStatus SLOT(ownqvrsDFTGetBufSize_C_32fc)(const qvrsDFTSpec_C_32fc* pSpec, int32_t* pSize);

// len values to bins 0 .. len/2, real and imaginary part in turn. pDst may be pSrc.
QVR_HIDDEN qvrStatus SLOT(ownqvrsDFTFwd_RToCCS_32f)(const float* pSrc, float* pDst, const qvrsDFTSpec_R_32f* pSpec,
                                                    uint8_t* pBuffer);
QVR_HIDDEN qvrStatus SLOT(ownqvrsDFTFwd_CToC_32fc)(const float* pSrc, float* pDst, const qvrsDFTSpec_C_32fc* pSpec,
                                                   uint8_t* pBuffer);
QVR_HIDDEN qvrStatus SLOT(ownqvrsDFTInv_CToC_32fc)(const float* pSrc, float* pDst, const qvrsDFTSpec_C_32fc* pSpec,
                                                   uint8_t* pBuffer);

// n <= 16 points in registers: pairs to pairs, and real values to bins 0 .. n/2. `sign` as below, both ways.
QVR_HIDDEN void SLOT(ownqvrsDFTStraight_C)(const float* src, float* dst, int n, float factor, uint32_t sign);
QVR_HIDDEN void SLOT(ownqvrsDFTStraight_R)(const float* src, float* dst, int n, float factor);

// The stages of a factored plan; real and imaginary parts stand in arrays of their own, `pitch` columns to a row.
//
// First stage: `legs` = points / radix rows. sign is 0 or the sign bit, which conjugates the input.
QVR_HIDDEN void SLOT(ownqvrsDFTFirst_C)(const qvrsDFTSpec* spec, const float* src, uint32_t sign, float* re, float* im);
QVR_HIDDEN void SLOT(ownqvrsDFTFirst_R)(const qvrsDFTSpec* spec, const float* src, float* re, float* im);
// A stage on `left` rows of `row` values each, from one pair of arrays to the other.
QVR_HIDDEN void SLOT(ownqvrsDFTStage)(const DftStage* stage, int64_t left, int64_t row, const float* re,
                                      const float* im, float* outRe, float* outIm);
// The last stage, which leaves pairs in natural order, times factor and with the sign applied.
QVR_HIDDEN void SLOT(ownqvrsDFTLast)(const qvrsDFTSpec* spec, const DftStage* stage, int64_t row, const float* re,
                                     const float* im, float* dst, float factor, uint32_t sign);
}

// All of them, for the slots that run them.
struct DftKernels {
    decltype(&SLOT(ownqvrsDFTStraight_C)) straight;
    decltype(&SLOT(ownqvrsDFTStraight_R)) straightReal;
    decltype(&SLOT(ownqvrsDFTFirst_C)) first;
    decltype(&SLOT(ownqvrsDFTFirst_R)) firstReal;
    decltype(&SLOT(ownqvrsDFTStage)) stage;
    decltype(&SLOT(ownqvrsDFTLast)) last;
};
extern "C" {
extern const QVR_HIDDEN DftKernels SLOT(ownqvrsDFTKernels), mx_ownqvrsDFTKernels;
}

namespace {

// Slots up to y8 hold nothing that mx's kernels could gain from.
constexpr const DftKernels& dftKernels()
{
    return kSlot <= qvrSlot_y8 ? mx_ownqvrsDFTKernels : SLOT(ownqvrsDFTKernels);
}

// Whether a stage of this radix has a kernel of its own, in the first place and later.
constexpr bool firstKernel(int radix)
{
    return radix == 5 || (radix >= 7 && radix <= 16) || radix == 20 || radix == 21;
}
constexpr bool laterKernel(int radix)
{
    return (radix >= 2 && radix <= 9) || radix == 11 || radix == 13 || radix == 16;
}

// Rows of the first stage go through in groups of one vector; the last group overlaps the one before it.
constexpr int64_t groupsOf(int64_t rows)
{
    return (rows + kLanes<float> - 1) / kLanes<float>;
}
constexpr int64_t groupStart(int64_t group, int64_t rows)
{
    const int64_t start = group * kLanes<float>;
    return start + kLanes<float> <= rows || rows < kLanes<float> ? start : rows - kLanes<float>;
}

} // namespace

#endif
