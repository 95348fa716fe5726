// Capabilities of the processor, and the form and the class that follow from them.
#include "frame/cpuid.h"
#include "scalarmath/scalar.h"

namespace {

// AVX counts where the system saves the registers; the AVX2 level is AVX2 with FMA and both BMI groups.
uint64_t capabilities()
{
    if (!qvrProcessor.available())
        return 0;
    const CpuidRegisters one = cpuid(1);
    uint64_t mask = featureOf(one.edx, 0, qvrmX87) | featureOf(one.edx, 15, qvrmCmov) |
                    featureOf(one.edx, 23, qvrmMmx) | featureOf(one.edx, 24, qvrmFxsr) |
                    featureOf(one.edx, 25, qvrmSse) | featureOf(one.edx, 26, qvrmSse2) |
                    featureOf(one.ecx, 0, qvrmSse3) | featureOf(one.ecx, 9, qvrmSsse3) |
                    featureOf(one.ecx, 19, qvrmSse41) | featureOf(one.ecx, 20, qvrmSse42);
    if (!savesVectorState(one) || !(one.ecx >> 28 & 1))
        return mask;
    mask |= qvrmAvx;
    if (hasAvx2Group(one, cpuid(0).eax))
        mask |= qvrmAvx2Level;
    return mask;
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
        __atomic_store_n(&qvrmFeatureMask, qvrProcessor.available() && vendorMatches() ? any : qvrmDetected,
                         __ATOMIC_RELAXED);
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
