// The exported functions of this family that others call. The files that define them include this one too, so that the
// prototypes agree.
#ifndef QVR_FOURIER_SHARED_H
#define QVR_FOURIER_SHARED_H

#include "frame/slot.h"
#include "frame/types.h"

extern "C" {
QVR_HIDDEN qvrStatus SLOT(qvrsFFTInitAlloc_R_32f)(qvrsFFTSpec_R_32f** ppFFTSpec, int order, int flag, int hint);
QVR_HIDDEN qvrStatus SLOT(qvrsFFTInitAlloc_R_64f)(qvrsFFTSpec_R_64f** ppFFTSpec, int order, int flag, int hint);
QVR_HIDDEN qvrStatus SLOT(qvrsFFTFree_R_32f)(qvrsFFTSpec_R_32f* pFFTSpec);
QVR_HIDDEN qvrStatus SLOT(qvrsFFTFree_R_64f)(qvrsFFTSpec_R_64f* pFFTSpec);
}

#endif
