// The seven slots, their tables, and which of them this processor runs.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "frame/processor.h"
#include "morvenqvr.h"

#define QVR_SHARED(name) extern "C" decltype(&Morven_##name) const qvrTable_##name[7];
#define QVR_OWN(name) QVR_SHARED(name)
#include "frame/exports.def"

namespace slots {

inline constexpr int kCount = 7;
inline constexpr const char* kNames[kCount] = {"mx", "m7", "u8", "n8", "y8", "e9", "l9"};

// What the code of a slot may assume of the processor.
inline constexpr uint64_t kNeeds[kCount] = {0x7, 0xF, 0x1F, 0x3F, 0x5F, 0x35F, 0x835F};

// The slot that a simulated processor is there for, or null on a real one.
inline const char* simulatedSlot()
{
    static const char* slot = getenv("QVR_EXPECTED_SLOT");
    return slot;
}

// On a simulated processor the expected slot alone runs.
inline bool canRun(int slot)
{
    if (simulatedSlot() && strcmp(simulatedSlot(), kNames[slot]) != 0)
        return false;
    uint64_t have = 0;
    qvrGetFeatures(&have, nullptr);
    return (have & kNeeds[slot]) == kNeeds[slot];
}

// Sweeps over offsets take every one; on a simulated processor, which is slow, every n-th.
inline size_t sweepStep(size_t simulated)
{
    return simulatedSlot() ? simulated : 1;
}

} // namespace slots
