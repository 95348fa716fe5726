// What CPUID has to answer for the library to take a slot.
#pragma once

#include <cstdint>

#include "slots.h"

namespace tools {

// Where a feature stands: leaf 1 or 7, EBX (1), ECX (2) or EDX (3), and the bits.
struct FeatureBits {
    uint64_t feature;
    uint32_t leaf;
    int reg;
    uint32_t bits;
};
inline constexpr FeatureBits kFeatureBits[] = {
    {qvrFeatureSse3, 1, 2, 1u << 0},       {qvrFeatureSsse3, 1, 2, 1u << 9},
    {qvrFeatureMovbe, 1, 2, 1u << 22},     {qvrFeatureSse41, 1, 2, 1u << 19},
    {qvrFeatureSse42, 1, 2, 1u << 20},     {qvrFeatureAvx, 1, 2, 1u << 28},
    {qvrFeatureF16c, 1, 2, 1u << 29},      {qvrFeatureRdrand, 1, 2, 1u << 30},
    {qvrFeatureAvx2Group, 1, 2, 1u << 12}, {qvrFeatureAvx2Group, 7, 1, 1u << 5 | 1u << 3 | 1u << 8},
    {qvrFeatureAdx, 7, 1, 1u << 19},       {qvrFeatureRdseed, 7, 1, 1u << 18},
};

// Takes out of an answer the features that the slot's mask would not keep.
inline void answerFor(int slot, uint32_t leaf, uint32_t subleaf, uint32_t regs[4])
{
    for (const FeatureBits& row : kFeatureBits)
        if (leaf == row.leaf && (leaf != 7 || subleaf == 0) && !(kSlots[slot].kept & row.feature))
            regs[row.reg] &= ~row.bits;
}

} // namespace tools
