// Reading the processor's identification, through the interface that tests replace.
#ifndef QVR_FRAME_CPUID_H
#define QVR_FRAME_CPUID_H

#include "frame/processor.h"

namespace {

struct CpuidRegisters {
    uint32_t eax, ebx, ecx, edx;
};

inline CpuidRegisters cpuid(uint32_t leaf, uint32_t subleaf = 0)
{
    uint32_t r[4] = {};
    qvrProcessor.cpuid(leaf, subleaf, r);
    return {r[0], r[1], r[2], r[3]};
}

// `feature` where a bit of a register is set.
constexpr uint64_t featureOf(uint32_t reg, int position, uint64_t feature)
{
    return (reg >> position) & 1 ? feature : 0;
}

// The system saves the registers of AVX. `one` is leaf 1.
inline bool savesVectorState(const CpuidRegisters& one)
{
    return (one.ecx & 3u << 27) == 3u << 27 && (qvrProcessor.xgetbv0() & 6) == 6;
}

// AVX2, FMA and both BMI groups. `highest` is the highest leaf there is.
inline bool hasAvx2Group(const CpuidRegisters& one, uint32_t highest)
{
    constexpr uint32_t seven = 1u << 5 | 1u << 3 | 1u << 8;
    return highest >= 7 && (one.ecx & 1u << 12) && (cpuid(7).ebx & seven) == seven;
}

// The maker whose manuals define the leaves that the cache query reads.
inline bool vendorMatches()
{
    const CpuidRegisters zero = cpuid(0);
    const uint32_t words[3] = {zero.ebx, zero.edx, zero.ecx};
    return __builtin_memcmp(words, "GenuineIntel", sizeof words) == 0;
}

} // namespace

#endif
