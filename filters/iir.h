// What creation and run of the recursive filters share.
#ifndef QVR_FILTERS_IIR_H
#define QVR_FILTERS_IIR_H

#include "filters/iir_state_record.h"
#include "frame/slot.h"

namespace {

// Samples that a run takes at most at a time: the non-recursive stage of a chunk stays in the first cache.
constexpr int kIirChunk = 1024;

// From m7 up a run of more than 4 L samples takes the block path, but for a few samples the sample step is faster.
constexpr bool kHasIirBlocks = kSlot >= qvrSlot_m7;
constexpr int kIirBlockFrom = 24;

} // namespace

#endif
