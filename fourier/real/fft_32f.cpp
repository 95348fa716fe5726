// Real FFT in single precision.
//
// By contract: the tail-packed layout is whole in both precisions, also where no correlation or filter asks for it.
#include "fourier/functions.h"
#include "fourier/real/real.h"
#include "fourier/real/spectra.h"

#define QVR_TAG 32f
#define QVR_T float
#include "fourier/real/fft_entries.inc"

extern "C" qvrStatus SLOT(ownqvrsFFTComplex_32f)(const float* pSrc, float* pDst, const qvrsFFTSpec_R_32f* pSpec,
                                                 uint8_t* pBuffer, bool inverse, float factor)
{
    Work<float> work;
    if (const qvrStatus status = takeWork<float>(*pSpec, pBuffer, work))
        return status;
    complexTransform(makeRun<float>(*pSpec, inverse, factor, work.p), pSrc, pDst);
    giveWork(work);
    return qvrOk;
}
