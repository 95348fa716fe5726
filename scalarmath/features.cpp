// Capabilities of the processor, and the form and the class that follow from them.
#include "scalarmath/scalar.h"

namespace {

struct Leaf {
    uint32_t eax, ebx, ecx, edx;
};

Leaf cpuid(uint32_t leaf)
{
    uint32_t regs[4] = {};
    qvrProcessor.cpuid(leaf, 0, regs);
    return {regs[0], regs[1], regs[2], regs[3]};
}

constexpr uint64_t bit(uint32_t word, int place, uint64_t feature)
{
    return word >> place & 1 ? feature : 0;
}

// AVX counts where the system saves the registers; the AVX2 level is AVX2 with FMA and both BMI groups.
uint64_t capabilities()
{
    if (!qvrProcessor.available())
        return 0;
    const Leaf top = cpuid(0), one = cpuid(1);
    uint64_t mask = bit(one.edx, 0, qvrmX87) | bit(one.edx, 15, qvrmCmov) | bit(one.edx, 23, qvrmMmx) |
                    bit(one.edx, 24, qvrmFxsr) | bit(one.edx, 25, qvrmSse) | bit(one.edx, 26, qvrmSse2) |
                    bit(one.ecx, 0, qvrmSse3) | bit(one.ecx, 9, qvrmSsse3) | bit(one.ecx, 19, qvrmSse41) |
                    bit(one.ecx, 20, qvrmSse42);
    const bool saved = (one.ecx >> 27 & 1) && (qvrProcessor.xgetbv0() & 6) == 6;
    if (!saved || !(one.ecx >> 28 & 1))
        return mask;
    mask |= qvrmAvx;
    if (top.eax >= 7) {
        const uint32_t seven = cpuid(7).ebx;
        if ((one.ecx >> 12 & 1) && (seven >> 5 & 1) && (seven >> 3 & 1) && (seven >> 8 & 1))
            mask |= qvrmAvx2Level;
    }
    return mask;
}

bool homeVendor()
{
    if (!qvrProcessor.available())
        return false;
    const Leaf zero = cpuid(0);
    const uint32_t words[3] = {zero.ebx, zero.edx, zero.ecx};
    return __builtin_memcmp(words, "GenuineIntel", sizeof words) == 0;
}

} // namespace

extern "C" {

uint64_t qvrmFeatureMask, qvrmFeatureMaskAny;
int32_t qvrmClassIndex;

void qvrmDetectFeatures(int mode)
{
    const uint64_t any = capabilities() | qvrmDetected;
    __atomic_store_n(&qvrmFeatureMaskAny, any, __ATOMIC_RELAXED);
    if (mode != 0 || qvrmFeatureMask == 0)
        __atomic_store_n(&qvrmFeatureMask, homeVendor() ? any : qvrmDetected, __ATOMIC_RELAXED);
}

int qvrmForm(void)
{
    for (;;) {
        const uint64_t mask = __atomic_load_n(&qvrmFeatureMask, __ATOMIC_RELAXED);
        if ((mask & 0x3FF) == 0x3FF)
            return 2;
        if ((mask & 0xFF) == 0xFF)
            return 1;
        if (mask & qvrmDetected)
            return 0;
        qvrmDetectFeatures(1);
    }
}

int32_t qvrmClass(void)
{
    if (const int32_t known = __atomic_load_n(&qvrmClassIndex, __ATOMIC_RELAXED))
        return known;
    uint64_t any = __atomic_load_n(&qvrmFeatureMaskAny, __ATOMIC_RELAXED);
    if (any == 0) {
        qvrmDetectFeatures(0);
        any = __atomic_load_n(&qvrmFeatureMaskAny, __ATOMIC_RELAXED);
    }
    int32_t index;
    if ((any & qvrmAvx2Level) == qvrmAvx2Level)
        index = 9;
    else if (any & qvrmAvx)
        index = 8;
    else if (any & qvrmSse42)
        index = 7;
    else if (any & qvrmSse41)
        index = 6;
    else if (any & qvrmSsse3)
        index = 5;
    else if (any & qvrmSse3)
        index = 4;
    else if (any & qvrmSse2)
        index = 3;
    else if (any & qvrmSse)
        index = 2;
    else
        index = 1;
    __atomic_store_n(&qvrmClassIndex, index, __ATOMIC_RELAXED);
    return index;
}

} // extern "C"
