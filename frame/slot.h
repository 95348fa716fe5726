// The slot that a source file is being compiled for: its prefix, its number, its instruction level.
//
// Everything that a slot's object defines is either an extern "C" function named by SLOT(...) or in an unnamed
// namespace. Inline functions and templates with external linkage are forbidden in slot code, those of the standard
// library too: the linker keeps one copy of such a function, and an AVX2 copy could end in the SSE2 slot.
#ifndef QVR_FRAME_SLOT_H
#define QVR_FRAME_SLOT_H

#include <stdint.h>

#include "frame/processor.h"
#include "morvenqvr.h"

#ifndef QVR_SLOT_PREFIX
#error "slot code is compiled once per slot, with QVR_SLOT_PREFIX and QVR_SLOT_INDEX"
#endif

#define QVR_PASTE2(prefix, name) prefix##_##name
#define QVR_PASTE(prefix, name) QVR_PASTE2(prefix, name)

// The name of a function of this slot.
#define SLOT(name) QVR_PASTE(QVR_SLOT_PREFIX, name)

// The name under which this slot reaches a function whose n8 entry repeats the u8 one.
#if QVR_SLOT_INDEX == 3
#define SLOT_SHARED(name) QVR_PASTE(u8, name)
#else
#define SLOT_SHARED(name) SLOT(name)
#endif

// Every dispatched function gets the exported prototype, so that a body with other arguments does not compile.
#define QVR_SHARED(name) extern "C" QVR_HIDDEN decltype(Morven_##name) SLOT_SHARED(name);
#define QVR_OWN(name) extern "C" QVR_HIDDEN decltype(Morven_##name) SLOT(name);
#include "frame/exports.def"

namespace {

enum : int { slotMx, slotM7, slotU8, slotN8, slotY8, slotE9, slotL9 };

constexpr int kSlot = QVR_SLOT_INDEX;

// The level as constants for `if constexpr`. Preprocessor tests on the level belong in simd.h alone.
constexpr bool kSse3 = kSlot >= slotM7;
constexpr bool kSsse3 = kSlot >= slotU8;
constexpr bool kSse41 = kSlot >= slotY8;
constexpr bool kAvx = kSlot >= slotE9;
constexpr bool kAvx2 = kSlot >= slotL9;
constexpr bool kFma = kSlot >= slotL9;

// Bytes in the slot's vector.
constexpr int kVecBytes = kAvx ? 32 : 16;

// A constant that a contract states per slot, as one readable row: PerSlot<int>{mx, m7, u8, n8, y8, e9, l9}.here().
template<class T> struct PerSlot {
    T of[7];
    constexpr T here() const { return of[kSlot]; }
};

} // namespace

#endif
