// The slots and which of them this processor runs.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "frame/processor.h"
#include "frame/slots.h"

namespace slots {

// Slots by name, as in `slot == mx` and `slot >= e9`.
enum {
#define QVR_SLOT(prefix, ...) prefix = qvrSlot_##prefix,
#include "frame/slots.def"
};
inline constexpr int kCount = qvrSlotCount;
inline constexpr const char* kNames[kCount] = {
#define QVR_SLOT(prefix, ...) #prefix,
#include "frame/slots.def"
};

// The features that choose a slot, so that it runs.
inline constexpr uint64_t kNeeds[kCount] = {
#define QVR_SLOT(prefix, shared, chosen, ...) chosen,
#include "frame/slots.def"
};

// The slot whose function stands in for a shared one.
inline constexpr int kShared[kCount] = {
#define QVR_SLOT(prefix, shared, ...) shared,
#include "frame/slots.def"
};

// The slot that a simulated processor is there for, or null on a real one.
inline const char* simulatedSlot()
{
    static const char* slot = getenv("QVR_EXPECTED_SLOT");
    return slot;
}

// On a simulated processor the expected slot alone runs, and a sanitizer's build may leave slots out.
inline bool canRun(int slot)
{
    if (QVR_LEFT_OUT >> slot & 1)
        return false;
    if (simulatedSlot() && strcmp(simulatedSlot(), kNames[slot]) != 0)
        return false;
    uint64_t have = 0;
    qvrGetFeatures(&have, nullptr);
    return (have & kNeeds[slot]) == kNeeds[slot];
}

} // namespace slots
