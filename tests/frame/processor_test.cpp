#include <gtest/gtest.h>
#include <omp.h>
#include <xmmintrin.h>

#include <algorithm>
#include <functional>
#include <vector>

#include "support/machine.h"

namespace {

constexpr uint32_t bit(int n)
{
    return 1u << n;
}

// Leaf 1 of a processor with every feature, and the rest of it.
void giveEverything(Machine& m)
{
    m.leaf(1).edx = bit(23) | bit(25) | bit(26);
    m.leaf(1).ecx = bit(0) | bit(1) | bit(9) | bit(12) | bit(19) | bit(20) | bit(22) | bit(25) | bit(27) | bit(28) |
                    bit(29) | bit(30);
    m.leaf(7).ebx = bit(3) | bit(5) | bit(8) | bit(18) | bit(19);
    m.leaf(0x80000001).ecx = bit(8);
}

uint64_t features()
{
    uint64_t f = 0;
    EXPECT_EQ(qvrGetFeatures(&f, nullptr), qvrOk);
    return f;
}

TEST(Features, EachBitFromItsSource)
{
    struct Row {
        uint64_t mask;
        std::function<void(Machine&)> give;
    };
    const std::vector<Row> rows = {
        {0x1, [](Machine& m) { m.leaf(1).edx = bit(23); }},
        {0x2, [](Machine& m) { m.leaf(1).edx = bit(25); }},
        {0x4, [](Machine& m) { m.leaf(1).edx = bit(26); }},
        {0x8, [](Machine& m) { m.leaf(1).ecx = bit(0); }},
        {0x10, [](Machine& m) { m.leaf(1).ecx = bit(9); }},
        {0x20, [](Machine& m) { m.leaf(1).ecx = bit(22); }},
        {0x40, [](Machine& m) { m.leaf(1).ecx = bit(19); }},
        {0x80, [](Machine& m) { m.leaf(1).ecx = bit(20); }},
        {0x100, [](Machine& m) { m.leaf(1).ecx = bit(28); }},
        {0x300, [](Machine& m) { m.leaf(1).ecx = bit(27) | bit(28); }},
        {0x400, [](Machine& m) { m.leaf(1).ecx = bit(25); }},
        {0x800, [](Machine& m) { m.leaf(1).ecx = bit(1); }},
        {0x1000,
         [](Machine& m) {
             m.leaf(1).eax = 0xB00;
             m.leaf(0x20000001).edx = bit(1);
         }},
        {0x2000, [](Machine& m) { m.leaf(1).ecx = bit(30); }},
        {0x4000, [](Machine& m) { m.leaf(1).ecx = bit(29); }},
        {0x8000,
         [](Machine& m) {
             m.leaf(1).ecx = bit(12);
             m.leaf(7).ebx = bit(5) | bit(3) | bit(8);
         }},
        {0x10000, [](Machine& m) { m.leaf(7).ebx = bit(19); }},
        {0x20000, [](Machine& m) { m.leaf(7).ebx = bit(18); }},
        {0x40000, [](Machine& m) { m.leaf(0x80000001).ecx = bit(8); }},
        {0x80000000, [](Machine& m) { m.leaf(1).eax = 0xB10; }},
        // Incomplete groups give nothing.
        {0, [](Machine& m) { m.leaf(1).ecx = bit(27); }},
        {0,
         [](Machine& m) {
             m.leaf(1).eax = 0xA00;
             m.leaf(0x20000001).edx = bit(1);
         }},
        {0,
         [](Machine& m) {
             m.leaf(1).eax = 0xB00;
             m.leaf(0x20000001).edx = ~bit(1);
         }},
        {0, [](Machine& m) { m.leaf(7).ebx = bit(5) | bit(3) | bit(8); }},
        {0,
         [](Machine& m) {
             m.leaf(1).ecx = bit(12);
             m.leaf(7).ebx = bit(5) | bit(3);
         }},
        {0,
         [](Machine& m) {
             m.leaf(1).ecx = bit(12);
             m.leaf(7).ebx = bit(5) | bit(8);
         }},
        {0,
         [](Machine& m) {
             m.leaf(1).ecx = bit(12);
             m.leaf(7).ebx = bit(3) | bit(8);
         }},
        {0x80000000,
         [](Machine& m) {
             m.leaf(1).eax = 0xB10 | 0xFF000 | 0xF;
             m.leaf(0x20000001).edx = 0;
         }},
        {0, [](Machine& m) { m.leaf(1).eax = 0xB20; }},
    };
    for (size_t i = 0; i < rows.size(); i++) {
        Machine m;
        rows[i].give(m);
        EXPECT_EQ(features(), rows[i].mask) << "row " << i;
    }
    Machine m;
    giveEverything(m);
    EXPECT_EQ(features(), 0x7EFFFu);
}

TEST(Features, VectorStateNeedsBothBitsOfXgetbv)
{
    for (uint64_t xcr : {0, 1, 2, 3, 4, 5, 6, 7}) {
        Machine m;
        m.leaf(1).ecx = bit(27) | bit(28);
        m.xgetbv0 = xcr;
        EXPECT_EQ(features(), (xcr & 6) == 6 ? 0x300u : 0x100u) << xcr;
    }
}

// XGETBV is an illegal instruction unless the operating system has enabled it.
TEST(Features, XgetbvIsNotReadWithoutItsBit)
{
    Machine m;
    static bool read;
    read = false;
    qvrProcessor.xgetbv0 = [] {
        read = true;
        return uint64_t{7};
    };
    m.leaf(1).ecx = bit(28);
    features();
    EXPECT_FALSE(read);
    m.forget();
    m.leaf(1).ecx = bit(27) | bit(28);
    features();
    EXPECT_TRUE(read);
}

TEST(Features, LeavesThatAreNotReportedAreNotRead)
{
    Machine m;
    giveEverything(m);
    m.leaf(0).eax = 6;
    m.leaf(0x80000000).eax = 0x80000000;
    EXPECT_EQ(features(), 0x7EFFFu & ~0x78000u);
    EXPECT_EQ(m.reads[7], 0);
    EXPECT_EQ(m.reads[0x80000001], 0);
    EXPECT_EQ(m.reads[0x20000001], 0);
}

TEST(Features, MemoAndNullPointer)
{
    Machine m;
    giveEverything(m);
    EXPECT_EQ(qvrDetectedValid, 0);
    EXPECT_EQ(qvrGetFeatures(nullptr, nullptr), qvrErrNullPointer);
    EXPECT_EQ(qvrDetectedValid, 1);
    EXPECT_EQ(qvrDetectedFeatures, 0x7EFFFu);
    // Later changes of the machine are not seen.
    m.leaf(1).ecx = 0;
    EXPECT_EQ(features(), 0x7EFFFu);
}

TEST(Features, RawReads)
{
    Machine m;
    giveEverything(m);
    m.leaf(1).eax = 0x123;
    m.leaf(4, 2) = {11, 22, 33, 44};
    uint64_t mask = 0;
    uint32_t info[4] = {4, 0, 2, 0};
    EXPECT_EQ(qvrGetFeatures(&mask, info), qvrOk);
    EXPECT_EQ(mask, 0x7EFFFu);
    EXPECT_EQ(info[0], 0x123u); // without the request word: leaf 1
    EXPECT_EQ(info[2], m.leaf(1).ecx);

    memcpy(&mask, "getinfoa", 8);
    uint32_t request[4] = {4, 99, 2, 99};
    EXPECT_EQ(qvrGetFeatures(&mask, request), qvrOk);
    EXPECT_EQ(mask, 0x7EFFFu);
    EXPECT_EQ(request[0], 11u);
    EXPECT_EQ(request[1], 22u);
    EXPECT_EQ(request[2], 33u);
    EXPECT_EQ(request[3], 44u);
}

TEST(Features, WithoutIdentification)
{
    Machine m;
    m.available = false;
    giveEverything(m);
    uint64_t mask = 5;
    EXPECT_EQ(qvrGetFeatures(&mask, nullptr), qvrWarnNoProcessorId);
    EXPECT_EQ(mask, 5u);
    qvrCpuIndex = 4;
    EXPECT_EQ(qvrInitAuto(), qvrWarnNoProcessorId);
    EXPECT_EQ(qvrCpuIndex, 0);
    EXPECT_EQ(qvrFeatureMask, 0x7u);
}

TEST(InitAuto, EveryRow)
{
    // Features as a mask over leaf 1 ECX and leaf 7; SSE2 is always there.
    constexpr uint32_t sse3 = bit(0), ssse3 = bit(9), movbe = bit(22), sse41 = bit(19), sse42 = bit(20),
                       avx = bit(27) | bit(28);
    constexpr uint32_t aes = bit(25), clmul = bit(1), rdrand = bit(30), f16c = bit(29), fma = bit(12);
    constexpr uint32_t avx2 = bit(5), bmi = bit(3) | bit(8), adx = bit(19), rdseed = bit(18);
    struct Row {
        uint32_t ecx, leaf7;
        int index;
        uint64_t mask;
        uint64_t xcr = 7;
    };
    const uint32_t narrow = sse3 | ssse3 | movbe | sse41 | sse42,
                   all = narrow | avx | aes | clmul | rdrand | f16c | fma;
    const std::vector<Row> rows = {
        {0, 0, 0, 0x7},
        {sse3, 0, 1, 0xF},
        {sse3 | movbe, 0, 1, 0xF}, // MOVBE by itself selects nothing
        {movbe, 0, 0, 0x7},
        {sse3 | ssse3, 0, 2, 0x1F},
        {sse3 | ssse3 | movbe, 0, 3, 0x3F},
        {narrow & ~sse42, 0, 4, 0x5F}, // MOVBE is dropped
        {narrow, 0, 4, 0xDF},
        {narrow | aes | clmul, 0, 4, 0xCDF},
        {narrow | avx, 0, 5, 0x3DF},
        {all & ~fma, 0, 5, 0x6FDF},
        {all, 0, 5, 0x6FDF},
        {all, avx2, 5, 0x6FDF},              // no BMI
        {all, avx2 | bit(3), 5, 0x6FDF},     // no BMI2
        {all, avx2 | bit(8), 5, 0x6FDF},     // no BMI1
        {all & ~fma, avx2 | bmi, 5, 0x6FDF}, // no FMA
        {all, bmi, 5, 0x6FDF},               // no AVX2
        {all, avx2 | bmi, 6, 0xEFFF},
        {all, avx2 | bmi | adx | rdseed, 6, 0x3EFFF},
        {all, avx2 | bmi, 4, 0xCDF, 1}, // the system saves no vector state
        {all, avx2 | bmi, 4, 0xCDF, 3},
        {all, avx2 | bmi, 4, 0xCDF, 5},
        {avx | ssse3, 0, 5, 0x310 | 0x7},
    };
    for (size_t i = 0; i < rows.size(); i++) {
        Machine m;
        m.leaf(1).edx = bit(23) | bit(25) | bit(26);
        m.leaf(1).ecx = rows[i].ecx;
        m.leaf(7).ebx = rows[i].leaf7;
        m.xgetbv0 = rows[i].xcr;
        EXPECT_EQ(qvrInitAuto(), qvrOk) << "row " << i;
        EXPECT_EQ(qvrCpuIndex, rows[i].index) << "row " << i;
        EXPECT_EQ(qvrFeatureMask, rows[i].mask) << "row " << i;
    }
}

// Another vendor changes the status and nothing else.
TEST(InitAuto, AnotherVendor)
{
    Machine m;
    giveEverything(m);
    m.vendor("SomeoneElse!");
    EXPECT_EQ(qvrInitAuto(), qvrWarnForeignProcessor);
    EXPECT_EQ(qvrCpuIndex, 6);
    EXPECT_EQ(qvrFeatureMask, 0x7EFFFu);
    for (int letter = 0; letter < 12; letter++) {
        char name[13] = "GenuineIntel";
        name[letter] ^= 1;
        m.vendor(name);
        EXPECT_EQ(qvrInitAuto(), qvrWarnForeignProcessor) << letter;
    }
}

TEST(InitAuto, SetsTheThreadBudget)
{
    Machine m;
    for (int limit : {1, 2, 64}) {
        omp_set_num_threads(limit);
        qvrNumThreads = 77;
        qvrInitAuto();
        EXPECT_EQ(qvrNumThreads, std::min(omp_get_num_procs(), limit));
    }
    omp_set_num_threads(omp_get_num_procs());
}

TEST(InitCpu, EveryRow)
{
    struct Row {
        int type, index;
        uint64_t mask;
    };
    const std::vector<Row> rows = {{0, 0, 0x7},     {96, 0, 0x7},    {32, 1, 0xF},    {66, 1, 0xF},   {33, 2, 0x1F},
                                   {34, 2, 0x1F},   {67, 2, 0x1F},   {36, 3, 0x3F},   {35, 4, 0x5F},  {68, 4, 0x5F},
                                   {37, 4, 0xDF},   {69, 4, 0xDF},   {38, 4, 0xCDF},  {71, 4, 0xCDF}, {70, 5, 0xFDF},
                                   {73, 5, 0x6FDF}, {74, 6, 0xEFFF}, {75, 6, 0x7EFFF}};
    const std::vector<int> unserved = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 64, 65};
    const auto isKnown = [&](int type) {
        for (const Row& r : rows)
            if (r.type == type)
                return true;
        return type == -1 || std::find(unserved.begin(), unserved.end(), type) != unserved.end();
    };
    for (const Row& r : rows) {
        Machine m;
        qvrNumThreads = 77;
        EXPECT_EQ(qvrForceCpu(r.type), qvrOk) << r.type;
        EXPECT_EQ(qvrCpuIndex, r.index) << r.type;
        EXPECT_EQ(qvrFeatureMask, r.mask) << r.type;
        EXPECT_EQ(qvrDetectedFeatures, r.mask) << r.type;
        EXPECT_EQ(qvrDetectedValid, 1);
        EXPECT_EQ(qvrNumThreads, std::min(omp_get_num_procs(), omp_get_max_threads()));
    }
    for (int type : unserved) {
        Machine m;
        qvrCpuIndex = 3;
        qvrFeatureMask = 0x3F;
        qvrNumThreads = 77;
        EXPECT_EQ(qvrInitCpu(type), qvrWarnNoProcessorId) << type;
        EXPECT_EQ(qvrCpuIndex, 3);
        EXPECT_EQ(qvrFeatureMask, 0x3Fu);
        EXPECT_EQ(qvrDetectedFeatures, 0x3Fu); // the memo takes the mask in force
        EXPECT_EQ(qvrDetectedValid, 1);
        EXPECT_NE(qvrNumThreads, 77);
    }
    for (int type = -300; type < 300; type++) {
        if (isKnown(type))
            continue;
        Machine m;
        qvrNumThreads = 77;
        EXPECT_EQ(qvrInitCpu(type), qvrWarnUnknownProcessorType) << type;
        EXPECT_EQ(qvrCpuIndex, 0);
        EXPECT_EQ(qvrFeatureMask, 0x7u);
        EXPECT_EQ(qvrDetectedValid, 0);
        EXPECT_NE(qvrNumThreads, 77);
    }
    for (int type : {INT32_MIN, INT32_MAX, 0x10000, 65536 + 75})
        EXPECT_EQ(qvrInitCpu(type), qvrWarnUnknownProcessorType);
}

TEST(InitCpu, AutomaticAndForcedMemo)
{
    Machine m;
    giveEverything(m);
    EXPECT_EQ(qvrInitCpu(-1), qvrOk);
    EXPECT_EQ(qvrCpuIndex, 6);
    // After a forced type the memo no longer tells the truth, and the automatic choice goes by it.
    EXPECT_EQ(qvrInitCpu(33), qvrOk);
    EXPECT_EQ(qvrInitCpu(-1), qvrOk);
    EXPECT_EQ(qvrCpuIndex, 2);
    EXPECT_EQ(qvrFeatureMask, 0x1Fu);
}

TEST(FeatureMask, SetTestGet)
{
    Machine m;
    EXPECT_EQ(qvrSetFeatureMask(0x8000000000000005), qvrOk);
    EXPECT_EQ(qvrFeatureMaskGet(), 0x8000000000000005u);
    EXPECT_EQ(qvrFeatureTest(0x5), 1);
    EXPECT_EQ(qvrFeatureTest(0x8000000000000000), 1);
    EXPECT_EQ(qvrFeatureTest(0x7), 0);
    EXPECT_EQ(qvrFeatureTest(0), 1);
}

TEST(LoadHook, HasRunOnceAndDoesNotRunAgain)
{
    EXPECT_EQ(qvrLoadDone, 1);
    uint64_t have = 0;
    ASSERT_EQ(qvrGetFeatures(&have, nullptr), qvrOk);
    EXPECT_EQ(qvrFeatureMask & ~have, 0u);
    Machine m;
    giveEverything(m);
    qvrLoadHook();
    EXPECT_EQ(qvrCpuIndex, 0) << "the hook chose a second time";
    qvrLoadDone = 0;
    qvrLoadHook();
    EXPECT_EQ(qvrCpuIndex, 6);
    EXPECT_EQ(qvrLoadDone, 1);
}

TEST(RoundMode, ReplacesTheFieldAndRestores)
{
    const unsigned saved = _mm_getcsr();
    for (unsigned before : {0u, 0x2000u, 0x4000u, 0x6000u}) {
        for (unsigned wanted : {0u, 0x2000u, 0x4000u, 0x6000u}) {
            const unsigned word = 0x1F80 | 0x8000 | before;
            _mm_setcsr(word);
            const unsigned old = qvrSetRoundMode(wanted);
            const unsigned during = _mm_getcsr();
            // A flag raised meanwhile, then the whole old word handed back.
            _mm_setcsr(during | 0x20);
            if ((old & 0x6000) != wanted)
                qvrSetRoundMode(old);
            const unsigned after = _mm_getcsr();
            _mm_setcsr(saved);
            EXPECT_EQ(old, word);
            EXPECT_EQ(during, (word & ~0x6000u) | wanted);
            EXPECT_EQ(after, word | 0x20);
        }
    }
}

} // namespace
