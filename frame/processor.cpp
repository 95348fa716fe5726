// Processor identification and the choice of the variant slot.
//
// By contract: the choice by type code, the feature mask's test and its two accessors are there for nobody in the
// library.
#include "frame/processor.h"

#include <cpuid.h>

#include "frame/cpuid.h"
#include "frame/slots.h"
#include "frame/threads.h"

namespace {

void readCpuid(uint32_t leaf, uint32_t subleaf, uint32_t regs[4])
{
    __cpuid_count(leaf, subleaf, regs[0], regs[1], regs[2], regs[3]);
}

uint64_t readXgetbv0()
{
    uint32_t low, high;
    __asm__ volatile("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
    return (uint64_t{high} << 32) | low;
}

int alwaysAvailable()
{
    return 1;
}

constexpr uint64_t kGetInfo = 0x616F666E69746567; // "getinfoa", little endian

uint64_t detect()
{
    const uint32_t highest = cpuid(0).eax;
    const uint32_t highestExtended = cpuid(0x80000000).eax;
    const CpuidRegisters one = cpuid(1);

    uint64_t f = featureOf(one.edx, 23, qvrFeatureMmx) | featureOf(one.edx, 25, qvrFeatureSse) |
                 featureOf(one.edx, 26, qvrFeatureSse2);
    f |= featureOf(one.ecx, 0, qvrFeatureSse3) | featureOf(one.ecx, 9, qvrFeatureSsse3) |
         featureOf(one.ecx, 22, qvrFeatureMovbe);
    f |= featureOf(one.ecx, 19, qvrFeatureSse41) | featureOf(one.ecx, 20, qvrFeatureSse42) |
         featureOf(one.ecx, 28, qvrFeatureAvx);
    f |= featureOf(one.ecx, 25, qvrFeatureAes) | featureOf(one.ecx, 1, qvrFeaturePclmulqdq);
    f |= featureOf(one.ecx, 30, qvrFeatureRdrand) | featureOf(one.ecx, 29, qvrFeatureF16c);
    if (savesVectorState(one))
        f |= qvrFeatureOsVectorState;
    if ((one.eax & 0xF00) == 0xB00)
        f |= featureOf(cpuid(0x20000001).edx, 1, qvrFeatureFamilyB);
    if ((one.eax & 0xFF0) == 0xB10)
        f |= qvrFeatureModelB1;
    if (hasAvx2Group(one, highest))
        f |= qvrFeatureAvx2Group;
    if (highest >= 7) {
        const CpuidRegisters seven = cpuid(7);
        f |= featureOf(seven.ebx, 19, qvrFeatureAdx) | featureOf(seven.ebx, 18, qvrFeatureRdseed);
    }
    if (highestExtended >= 0x80000001)
        f |= featureOf(cpuid(0x80000001).ecx, 8, qvrFeaturePrefetchw);
    return f;
}

// Several threads may fill the memo at once; all of them write the same value, so relaxed order is enough.
void remember(uint64_t features)
{
    __atomic_store_n(&qvrDetectedFeatures, features, __ATOMIC_RELAXED);
    __atomic_store_n(&qvrDetectedValid, 1, __ATOMIC_RELEASE);
}

qvrStatus readMemo(uint64_t& features)
{
    if (!__atomic_load_n(&qvrDetectedValid, __ATOMIC_ACQUIRE)) {
        if (!qvrProcessor.available())
            return qvrWarnNoProcessorId;
        remember(detect());
    }
    features = __atomic_load_n(&qvrDetectedFeatures, __ATOMIC_RELAXED);
    return qvrOk;
}

void choose(int32_t index, uint64_t mask)
{
    qvrCpuIndex = index;
    qvrSetFeatureMask(mask);
}

// By contract: the AVX slots ask for the operating system by processor type code. Every system that saves the vector
// state passes.
bool systemServes(int32_t)
{
    return true;
}

struct SlotChoice {
    uint64_t chosen, kept;
};
constexpr SlotChoice kChoices[] = {
#define QVR_SLOT(prefix, shared, chosen, kept, ...) {chosen, kept},
#include "frame/slots.def"
};

// The highest slot whose features are all there.
void chooseByFeatures(uint64_t f)
{
    for (int32_t i = qvrSlotCount - 1; i >= 0; i--) {
        const uint64_t chosen = kChoices[i].chosen;
        if ((f & chosen) == chosen && (!(chosen & qvrFeatureAvx) || systemServes(70))) {
            choose(i, f & kChoices[i].kept);
            return;
        }
    }
}

// Descriptor bytes of leaf 2 and the sizes they stand for, by falling size, so that the first match is the largest.
struct Descriptor {
    uint8_t byte;
    int32_t size;
};
constexpr Descriptor kDescriptors[] = {
    {0xEC, 25165824}, {0xEB, 18874368}, {0x4D, 16777216}, {0xEA, 12582912}, {0x4C, 12582912}, {0xE4, 8388608},
    {0xDE, 8388608},  {0x4B, 8388608},  {0x47, 8388608},  {0x4E, 6291456},  {0x4A, 6291456},  {0xE3, 4194304},
    {0xDD, 4194304},  {0xD8, 4194304},  {0x49, 4194304},  {0x29, 4194304},  {0x46, 4194304},  {0x48, 3145728},
    {0xE2, 2097152},  {0xDC, 2097152},  {0xD7, 2097152},  {0xD2, 2097152},  {0x25, 2097152},  {0x7D, 2097152},
    {0x85, 2097152},  {0x45, 2097152},  {0xD6, 1048576},  {0xD1, 1048576},  {0x23, 1048576},  {0x87, 1048576},
    {0x7C, 1048576},  {0x78, 1048576},  {0x84, 1048576},  {0x44, 1048576},  {0xD0, 524288},   {0x22, 524288},
    {0x7B, 524288},   {0x80, 524288},   {0x86, 524288},   {0x3E, 524288},   {0x7F, 524288},   {0x83, 524288},
    {0x43, 524288},   {0x3D, 393216},   {0x21, 262144},   {0x7A, 262144},   {0x82, 262144},   {0x3C, 262144},
    {0x3F, 262144},   {0x42, 262144},   {0x3A, 196608},   {0x79, 131072},   {0x39, 131072},   {0x3B, 131072},
    {0x41, 131072},   {0, 0},
};

// Largest cache by leaf 2, or 0.
int32_t sizeByDescriptors()
{
    const CpuidRegisters two = cpuid(2);
    if ((two.eax & 0xFF) != 1)
        return 0;
    uint8_t bytes[16];
    int count = 0;
    const uint32_t regs[] = {two.eax, two.ebx, two.ecx, two.edx};
    for (const uint32_t reg : regs) {
        if (reg >> 31)
            continue;
        // The lowest byte of the first register is the count of reads, not a descriptor.
        for (int shift = count == 0 ? 8 : 0; shift < 32; shift += 8)
            bytes[count++] = static_cast<uint8_t>(reg >> shift);
    }
    for (const Descriptor* row = kDescriptors; row->byte != 0; row++)
        for (int i = 0; i < count; i++)
            if (bytes[i] == row->byte)
                return row->size;
    return 0;
}

// Largest data or unified cache by leaf 4, or 0. Sizes past the 32-bit answer count as its maximum.
int32_t sizeByLeaf4()
{
    uint64_t largest = 0;
    for (uint32_t subleaf = 0; subleaf < 32; subleaf++) {
        const CpuidRegisters r = cpuid(4, subleaf);
        const uint32_t type = r.eax & 31;
        if (type == 0)
            break;
        if (type == 2)
            continue;
        const uint64_t ways = (r.ebx >> 22) + 1, partitions = (r.ebx >> 12 & 0x3FF) + 1, line = (r.ebx & 0xFFF) + 1;
        const uint64_t size = ways * partitions * line * (uint64_t{r.ecx} + 1);
        if (size > largest)
            largest = size;
    }
    return largest > INT32_MAX ? INT32_MAX : static_cast<int32_t>(largest);
}

// One lazily filled answer: racing threads compute the same value, and the status is published behind the size.
qvrStatus cacheAnswer(int32_t* pSize, int32_t& status, int32_t& size, bool useLeaf4)
{
    if (pSize == nullptr)
        return qvrErrNullPointer;
    qvrStatus s = __atomic_load_n(&status, __ATOMIC_ACQUIRE);
    if (s == 1) {
        const uint32_t highest = cpuid(0).eax;
        int32_t found = 0;
        if (highest < 2 || !vendorMatches()) {
            s = qvrWarnNoProcessorId;
        } else {
            found = useLeaf4 && highest >= 4 ? sizeByLeaf4() : sizeByDescriptors();
            s = found != 0 ? qvrOk : qvrWarnCacheUnknown;
        }
        __atomic_store_n(&size, found, __ATOMIC_RELAXED);
        __atomic_store_n(&status, s, __ATOMIC_RELEASE);
    }
    *pSize = __atomic_load_n(&size, __ATOMIC_RELAXED);
    return s;
}

struct CpuType {
    int16_t code;
    int8_t index; // -1: index and mask stay
    uint32_t mask;
};
constexpr CpuType kCpuTypes[] = {
    {0, 0, 0x7},    {96, 0, 0x7},    {32, 1, 0xF},    {66, 1, 0xF},     {33, 2, 0x1F}, {34, 2, 0x1F},  {67, 2, 0x1F},
    {36, 3, 0x3F},  {35, 4, 0x5F},   {68, 4, 0x5F},   {37, 4, 0xDF},    {69, 4, 0xDF}, {38, 4, 0xCDF}, {71, 4, 0xCDF},
    {70, 5, 0xFDF}, {73, 5, 0x6FDF}, {74, 6, 0xEFFF}, {75, 6, 0x7EFFF}, {1, -1, 0},    {2, -1, 0},     {3, -1, 0},
    {4, -1, 0},     {5, -1, 0},      {6, -1, 0},      {7, -1, 0},       {8, -1, 0},    {9, -1, 0},     {10, -1, 0},
    {11, -1, 0},    {64, -1, 0},     {65, -1, 0},
};

} // namespace

extern "C" {

qvrProcessorAccess qvrProcessor = {alwaysAvailable, readCpuid, readXgetbv0};
int32_t qvrCpuIndex = 0;
uint64_t qvrFeatureMask = 7;
uint64_t qvrDetectedFeatures = 0;
int32_t qvrDetectedValid = 0;
int32_t qvrCacheStatus = 1;
int32_t qvrCacheSize = 0;
int32_t qvrDescriptorCacheStatus = 1;
int32_t qvrDescriptorCacheSize = 0;
int32_t qvrLoadDone = 0;

__attribute__((constructor)) void qvrLoadHook(void)
{
    if (qvrLoadDone)
        return;
    qvrInitAuto();
    qvrLoadDone = 1;
}

qvrStatus qvrInitAuto(void)
{
    qvrInitNumThreads();
    uint64_t features = 0;
    const qvrStatus status = qvrGetFeatures(&features, nullptr);
    if (status != qvrOk)
        choose(0, 0x7);
    else
        chooseByFeatures(features);
    return vendorMatches() ? status : qvrWarnForeignProcessor;
}

qvrStatus qvrInitCpu(int32_t type)
{
    if (type == -1)
        return qvrInitAuto();
    qvrInitNumThreads();
    for (const CpuType& row : kCpuTypes) {
        if (row.code != type)
            continue;
        if (row.index >= 0)
            choose(row.index, row.mask);
        remember(qvrFeatureMask);
        return row.index >= 0 ? qvrOk : qvrWarnNoProcessorId;
    }
    return qvrWarnUnknownProcessorType;
}

qvrStatus qvrForceCpu(int32_t type)
{
    return qvrInitCpu(type);
}

qvrStatus qvrGetFeatures(uint64_t* pMask, uint32_t* pInfo)
{
    uint64_t features;
    const qvrStatus status = readMemo(features);
    if (status != qvrOk)
        return status;
    if (pMask == nullptr)
        return qvrErrNullPointer;
    const uint64_t request = *pMask;
    *pMask = features;
    if (pInfo == nullptr)
        return qvrOk;
    if (request == kGetInfo)
        qvrProcessor.cpuid(pInfo[0], pInfo[2], pInfo);
    else
        qvrProcessor.cpuid(1, 0, pInfo);
    return qvrOk;
}

qvrStatus qvrSetFeatureMask(uint64_t mask)
{
    qvrFeatureMask = mask;
    return qvrOk;
}

int qvrFeatureTest(uint64_t mask)
{
    return (qvrFeatureMask & mask) == mask;
}

uint64_t qvrFeatureMaskGet(void)
{
    return qvrFeatureMask;
}

qvrStatus qvrGetMaxCacheSize(int32_t* pSize)
{
    return cacheAnswer(pSize, qvrCacheStatus, qvrCacheSize, true);
}

qvrStatus qvrGetDescriptorCacheSize(int32_t* pSize)
{
    return cacheAnswer(pSize, qvrDescriptorCacheStatus, qvrDescriptorCacheSize, false);
}

} // extern "C"
