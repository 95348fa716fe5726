// Fills and the copy of 16-bit arrays, for the functions that end in one: they check pointers, then the length, as the
// exported fills and copies do. Elements are moved as bits, so 16-bit integers of either kind use them.
#ifndef QVR_VECTOR_HALFWORDS_H
#define QVR_VECTOR_HALFWORDS_H

#include "frame/slot.h"

extern "C" {

QVR_HIDDEN qvrStatus SLOT_SHARED(ownSet_16u)(qvr16u val, qvr16u* pDst, int len);
QVR_HIDDEN qvrStatus SLOT_SHARED(ownZero_16u)(qvr16u* pDst, int len);
QVR_HIDDEN qvrStatus SLOT_SHARED(ownCopy_16u)(const qvr16u* pSrc, qvr16u* pDst, int len);

} // extern "C"

#endif
