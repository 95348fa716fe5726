// Processor identification, choice of the variant, cache query and the MXCSR rounding helper.
#ifndef QVR_FRAME_PROCESSOR_H
#define QVR_FRAME_PROCESSOR_H

#include <stdint.h>

#include "frame/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#define QVR_HIDDEN __attribute__((visibility("hidden")))

enum {
    qvrFeatureMmx = 0x1,
    qvrFeatureSse = 0x2,
    qvrFeatureSse2 = 0x4,
    qvrFeatureSse3 = 0x8,
    qvrFeatureSsse3 = 0x10,
    qvrFeatureMovbe = 0x20,
    qvrFeatureSse41 = 0x40,
    qvrFeatureSse42 = 0x80,
    qvrFeatureAvx = 0x100,
    qvrFeatureOsVectorState = 0x200,
    qvrFeatureAes = 0x400,
    qvrFeaturePclmulqdq = 0x800,
    qvrFeatureFamilyB = 0x1000,
    qvrFeatureRdrand = 0x2000,
    qvrFeatureF16c = 0x4000,
    qvrFeatureAvx2Group = 0x8000,
    qvrFeatureAdx = 0x10000,
    qvrFeatureRdseed = 0x20000,
    qvrFeaturePrefetchw = 0x40000,
};
#define qvrFeatureModelB1 UINT64_C(0x80000000)

// What identification reads from the machine. The library points it at the instructions; a test may point it at
// a table of answers and so be any processor.
typedef struct {
    int (*available)(void);
    void (*cpuid)(uint32_t leaf, uint32_t subleaf, uint32_t regs[4]); // EAX, EBX, ECX, EDX
    uint64_t (*xgetbv0)(void);
} qvrProcessorAccess;

extern QVR_HIDDEN qvrProcessorAccess qvrProcessor;
extern QVR_HIDDEN int32_t qvrCpuIndex;          // the variant slot, 0..6; the only value that an exported call reads
extern QVR_HIDDEN uint64_t qvrFeatureMask;      // the features that the chosen variant may use
extern QVR_HIDDEN uint64_t qvrDetectedFeatures; // memo of what the processor reports
extern QVR_HIDDEN int32_t qvrDetectedValid;
extern QVR_HIDDEN int32_t qvrCacheStatus;           // outcome of the cache query; 1: nobody has asked yet
extern QVR_HIDDEN int32_t qvrCacheSize;             // largest cache in bytes
extern QVR_HIDDEN int32_t qvrDescriptorCacheStatus; // the same for the query through leaf 2 alone
extern QVR_HIDDEN int32_t qvrDescriptorCacheSize;
extern QVR_HIDDEN int32_t qvrLoadDone; // the load hook has run

QVR_HIDDEN void qvrLoadHook(void);

// Chooses the variant from the features of this processor. Runs once, at load.
QVR_HIDDEN qvrStatus qvrInitAuto(void);

// Forces the variant and the mask for a processor type code, without a test that the processor can run it.
// Nothing in the library calls it; qvrForceCpu forwards to it.
QVR_HIDDEN qvrStatus qvrInitCpu(int32_t type);
QVR_HIDDEN qvrStatus qvrForceCpu(int32_t type);

// Stores the detected features in *pMask. With pInfo also one identification read: of leaf pInfo[0], subleaf pInfo[2]
// when *pMask held the letters "getinfoa" at entry, of leaf 1 otherwise.
QVR_HIDDEN qvrStatus qvrGetFeatures(uint64_t* pMask, uint32_t* pInfo);

QVR_HIDDEN qvrStatus qvrSetFeatureMask(uint64_t mask);
QVR_HIDDEN int qvrFeatureTest(uint64_t mask);
QVR_HIDDEN uint64_t qvrFeatureMaskGet(void);

// The largest data or unified cache in bytes.
QVR_HIDDEN qvrStatus qvrGetMaxCacheSize(int32_t* pSize);

// The same, from the descriptor bytes of leaf 2 alone: what the fills and copies of the narrow slots go by.
QVR_HIDDEN qvrStatus qvrGetDescriptorCacheSize(int32_t* pSize);

// Sets the rounding field of MXCSR to bits (0, 0x2000, 0x4000, 0x6000) and returns the old MXCSR. Handing the whole
// old word back restores the rounding and the masks; flags raised in between stay.
QVR_HIDDEN uint32_t qvrSetRoundMode(uint64_t bits);

#ifdef __cplusplus
}
#endif

#endif
