// The slot that a source file is being compiled for: its prefix, its number, its instruction level.
//
// Everything that a slot's object defines is either an extern "C" function named by SLOT(...) or in an unnamed
// namespace. Inline functions and templates with external linkage are forbidden in slot code, those of the standard
// library too: the linker keeps one copy of such a function, and an AVX2 copy could end in the SSE2 slot.
#ifndef QVR_FRAME_SLOT_H
#define QVR_FRAME_SLOT_H

#include <stdint.h>

#include "frame/processor.h"
#include "frame/slots.h"

#ifndef QVR_SLOT_PREFIX
#error "slot code is compiled once per slot, with QVR_SLOT_PREFIX and QVR_SLOT_SHARED_PREFIX"
#endif

#define QVR_PASTE2(prefix, name) prefix##_##name
#define QVR_PASTE(prefix, name) QVR_PASTE2(prefix, name)

// The name of a function of this slot.
#define SLOT(name) QVR_PASTE(QVR_SLOT_PREFIX, name)

// The name under which this slot reaches a function that it may share with another.
#define SLOT_SHARED(name) QVR_PASTE(QVR_SLOT_SHARED_PREFIX, name)

namespace {

// Places and counts: never 32 bits, so that sums and products of lengths cannot wrap.
using Index = int64_t;

constexpr int kSlot = QVR_PASTE(qvrSlot, QVR_SLOT_PREFIX);

// The level as constants for `if constexpr`. Preprocessor tests on the level belong in simd.h alone.
constexpr bool kSse3 = kSlot >= qvrSlot_m7;
constexpr bool kSsse3 = kSlot >= qvrSlot_u8;
constexpr bool kSse41 = kSlot >= qvrSlot_y8;
constexpr bool kAvx = kSlot >= qvrSlot_e9;
constexpr bool kAvx2 = kSlot >= qvrSlot_l9;
constexpr bool kFma = kSlot >= qvrSlot_l9;

// Bytes in the slot's vector.
constexpr int kVecBytes = kAvx ? 32 : 16;

// A constant that a contract states per slot, as one readable row: PerSlot<int>{mx, m7, u8, n8, y8, e9, l9}.here().
// Each slot has a field, so that a row with a value too few is an error (-Wmissing-field-initializers).
template<class T> struct PerSlot {
#define QVR_SLOT(prefix, ...) T prefix;
#include "frame/slots.def"
    constexpr T here() const { return QVR_SLOT_PREFIX; }
};

} // namespace

#endif
