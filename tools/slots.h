// Slots by name, and what identification makes of this processor: the library's own source, compiled into the tools.
#pragma once

#include <cstdint>
#include <cstring>

#include "frame/processor.h"
#include "frame/slots.h"

namespace tools {

struct Slot {
    const char *name, *flags;
    uint64_t chosen, kept; // features that choose the slot, and those that it leaves in the mask
};
inline constexpr Slot kSlots[qvrSlotCount] = {
#define QVR_SLOT(prefix, shared, chosen, kept, flags, emulator) {#prefix, flags, chosen, kept},
#include "frame/slots.def"
};

struct Feature {
    const char* name;
    uint64_t mask;
};
// By the bits of frame/processor.h that the choice of a slot looks at, and those that it leaves to be seen.
inline constexpr Feature kFeatures[] = {
    {"mmx", qvrFeatureMmx},
    {"sse", qvrFeatureSse},
    {"sse2", qvrFeatureSse2},
    {"sse3", qvrFeatureSse3},
    {"ssse3", qvrFeatureSsse3},
    {"movbe", qvrFeatureMovbe},
    {"sse4.1", qvrFeatureSse41},
    {"sse4.2", qvrFeatureSse42},
    {"avx", qvrFeatureAvx},
    {"system saves vector registers", qvrFeatureOsVectorState},
    {"aes", qvrFeatureAes},
    {"pclmulqdq", qvrFeaturePclmulqdq},
    {"rdrand", qvrFeatureRdrand},
    {"f16c", qvrFeatureF16c},
    {"avx2, fma, bmi1 and bmi2", qvrFeatureAvx2Group},
    {"adx", qvrFeatureAdx},
    {"rdseed", qvrFeatureRdseed},
    {"prefetchw", qvrFeaturePrefetchw},
};

// The number of a slot, or -1.
inline int slotNumber(const char* name)
{
    for (int i = 0; i < qvrSlotCount; i++)
        if (strcmp(kSlots[i].name, name) == 0)
            return i;
    return -1;
}

// Whether a processor with these features runs a slot.
inline bool runs(uint64_t features, int slot)
{
    return (features & kSlots[slot].chosen) == kSlots[slot].chosen;
}

} // namespace tools
