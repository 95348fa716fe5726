// Real FFT in single precision.
#include "fourier/functions.h"
#include "fourier/real.h"
#include "fourier/spectra.h"

#define QVR_TAG 32f
#define QVR_T float
#include "fourier/fft_entries.inc"

extern "C" qvrStatus SLOT(ownqvrsFFTComplex_32f)(const float* pSrc, float* pDst, const qvrsFFTSpec_R_32f* pSpec,
                                                 uint8_t* pBuffer, bool inverse, bool scale)
{
    Work<float> work;
    if (const qvrStatus status = takeWork<float>(*pSpec, pBuffer, work))
        return status;
    if (inverse)
        complexTransform<true>(*pSpec, pSrc, pDst, work.p, scale);
    else
        complexTransform<false>(*pSpec, pSrc, pDst, work.p, scale);
    giveWork(work);
    return qvrOk;
}
