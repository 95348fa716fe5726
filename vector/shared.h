// The exported functions of this family that others call. The files that define them include this one too, so that the
// prototypes agree.
#ifndef QVR_VECTOR_SHARED_H
#define QVR_VECTOR_SHARED_H

#include "frame/slot.h"
#include "frame/types.h"

extern "C" {
QVR_HIDDEN qvrStatus SLOT_SHARED(qvrsConvert_16s32f)(const qvr16s* pSrc, qvr32f* pDst, int len);
QVR_HIDDEN qvrStatus SLOT_SHARED(qvrsConvert_16s64f_Sfs)(const qvr16s* pSrc, qvr64f* pDst, int len, int scaleFactor);
QVR_HIDDEN qvrStatus SLOT_SHARED(qvrsConvert_32f16s_Sfs)(const qvr32f* pSrc, qvr16s* pDst, int len, int roundMode,
                                                         int scaleFactor);
QVR_HIDDEN qvrStatus SLOT_SHARED(qvrsConvert_32f64f)(const qvr32f* pSrc, qvr64f* pDst, int len);
QVR_HIDDEN qvrStatus SLOT_SHARED(qvrsConvert_64f32f)(const qvr64f* pSrc, qvr32f* pDst, int len);
QVR_HIDDEN qvrStatus SLOT_SHARED(qvrsCopy_32f)(const qvr32f* pSrc, qvr32f* pDst, int len);
QVR_HIDDEN qvrStatus SLOT_SHARED(qvrsCopy_64f)(const qvr64f* pSrc, qvr64f* pDst, int len);
QVR_HIDDEN qvrStatus SLOT_SHARED(qvrsSet_8u)(qvr8u val, qvr8u* pDst, int len);
}

#endif
