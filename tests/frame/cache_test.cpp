#include <gtest/gtest.h>

#include <vector>

#include "support/machine.h"

namespace {

// Leaf 4 entry: type, ways, partitions, line size, sets.
Machine::Regs cacheEntry(uint32_t type, uint32_t ways, uint32_t partitions, uint32_t line, uint32_t sets)
{
    return {type, (ways - 1) << 22 | (partitions - 1) << 12 | (line - 1), sets - 1, 0};
}

void expectCache(qvrStatus status, int32_t size)
{
    int32_t got = -5;
    EXPECT_EQ(qvrGetMaxCacheSize(&got), status);
    EXPECT_EQ(got, size);
    // The answer is kept.
    got = -5;
    EXPECT_EQ(qvrGetMaxCacheSize(&got), status);
    EXPECT_EQ(got, size);
    EXPECT_EQ(qvrCacheStatus, status);
}

TEST(Cache, NullPointer)
{
    Machine m;
    EXPECT_EQ(qvrGetMaxCacheSize(nullptr), qvrErrNullPointer);
    EXPECT_EQ(qvrGetDescriptorCacheSize(nullptr), qvrErrNullPointer);
    EXPECT_EQ(qvrCacheStatus, 1);
}

TEST(Cache, LargestOfLeaf4WithoutInstructionCaches)
{
    Machine m;
    m.leaf(4, 0) = cacheEntry(1, 12, 1, 64, 64);    // data, 48 KiB
    m.leaf(4, 1) = cacheEntry(2, 16, 1, 64, 65536); // instruction, 64 MiB
    m.leaf(4, 2) = cacheEntry(3, 20, 2, 64, 1024);  // unified, 2.5 MiB
    m.leaf(4, 3) = cacheEntry(3, 4, 1, 64, 512);
    m.leaf(4, 5) = cacheEntry(3, 64, 1, 64, 65536); // behind the end of the list
    expectCache(qvrOk, 20 * 2 * 64 * 1024);
}

TEST(Cache, Leaf4StopsAfterThirtyTwo)
{
    Machine m;
    for (uint32_t i = 0; i < 40; i++)
        m.leaf(4, i) = cacheEntry(3, 1, 1, 64, i + 1);
    expectCache(qvrOk, 64 * 32);
}

TEST(Cache, Leaf4Empty)
{
    Machine m;
    m.leaf(2).eax = 0x01 | 0x4D << 8; // not asked
    expectCache(qvrWarnCacheUnknown, 0);
}

TEST(Cache, AnotherVendorOrNoLeaf)
{
    {
        Machine m;
        m.vendor("SomeoneElse!");
        m.leaf(4, 0) = cacheEntry(1, 12, 1, 64, 64);
        expectCache(qvrWarnNoProcessorId, 0);
    }
    {
        Machine m;
        m.leaf(0).eax = 1;
        expectCache(qvrWarnNoProcessorId, 0);
    }
}

struct Descriptor {
    uint8_t byte;
    int32_t size;
};
const std::vector<Descriptor> kTable = {
    {0xEC, 25165824}, {0xEB, 18874368}, {0x4D, 16777216}, {0xEA, 12582912}, {0x4C, 12582912}, {0xE4, 8388608},
    {0xDE, 8388608},  {0x4B, 8388608},  {0x47, 8388608},  {0x4E, 6291456},  {0x4A, 6291456},  {0xE3, 4194304},
    {0xDD, 4194304},  {0xD8, 4194304},  {0x49, 4194304},  {0x29, 4194304},  {0x46, 4194304},  {0x48, 3145728},
    {0xE2, 2097152},  {0xDC, 2097152},  {0xD7, 2097152},  {0xD2, 2097152},  {0x25, 2097152},  {0x7D, 2097152},
    {0x85, 2097152},  {0x45, 2097152},  {0xD6, 1048576},  {0xD1, 1048576},  {0x23, 1048576},  {0x87, 1048576},
    {0x7C, 1048576},  {0x78, 1048576},  {0x84, 1048576},  {0x44, 1048576},  {0xD0, 524288},   {0x22, 524288},
    {0x7B, 524288},   {0x80, 524288},   {0x86, 524288},   {0x3E, 524288},   {0x7F, 524288},   {0x83, 524288},
    {0x43, 524288},   {0x3D, 393216},   {0x21, 262144},   {0x7A, 262144},   {0x82, 262144},   {0x3C, 262144},
    {0x3F, 262144},   {0x42, 262144},   {0x3A, 196608},   {0x79, 131072},   {0x39, 131072},   {0x3B, 131072},
    {0x41, 131072}};

TEST(Cache, EveryDescriptorAtEveryPlace)
{
    for (const Descriptor& d : kTable) {
        for (int place = 1; place < 16; place++) {
            Machine m;
            m.leaf(0).eax = 3;
            uint8_t bytes[16] = {1};
            bytes[place] = d.byte;
            if (place % 4 == 3 && d.byte >= 0x80)
                continue; // bit 31 of the register would be set: the register does not count
            memcpy(&m.leaf(2).eax, bytes, 4);
            memcpy(&m.leaf(2).ebx, bytes + 4, 4);
            memcpy(&m.leaf(2).ecx, bytes + 8, 4);
            memcpy(&m.leaf(2).edx, bytes + 12, 4);
            expectCache(qvrOk, d.size);
            int32_t size = 0;
            EXPECT_EQ(qvrGetDescriptorCacheSize(&size), qvrOk);
            EXPECT_EQ(size, d.size);
        }
    }
    EXPECT_EQ(kTable.size(), 55u);
}

TEST(Cache, UnlistedBytesAreNoDescriptors)
{
    for (int byte = 0; byte < 256; byte++) {
        bool listed = false;
        for (const Descriptor& d : kTable)
            listed |= d.byte == byte;
        if (listed)
            continue;
        Machine m;
        m.leaf(0).eax = 2;
        m.leaf(2).eax = 1 | static_cast<uint32_t>(byte) << 8;
        expectCache(qvrWarnCacheUnknown, 0);
    }
}

TEST(Cache, LargestDescriptorWins)
{
    Machine m;
    m.leaf(0).eax = 3;
    m.leaf(2).eax = 0x01 | 0x41 << 8 | 0x45 << 16;
    m.leaf(2).ecx = 0x4D << 16;
    expectCache(qvrOk, 16777216);
}

TEST(Cache, RegistersWithBit31DoNotCount)
{
    Machine m;
    m.leaf(0).eax = 3;
    m.leaf(2).eax = 0x01;
    m.leaf(2).ebx = 0x80000000 | 0x4D;
    m.leaf(2).ecx = 0x45;
    expectCache(qvrOk, 2097152);
}

// The count byte of the first register taken is no descriptor, whichever register that is.
TEST(Cache, FirstByteIsTheCount)
{
    Machine m;
    m.leaf(0).eax = 3;
    m.leaf(2).eax = 0x80000001;
    m.leaf(2).ebx = 0x4D;
    m.leaf(2).ecx = 0x41;
    expectCache(qvrOk, 131072);
}

TEST(Cache, CountOtherThanOne)
{
    for (uint32_t count : {0u, 2u, 0x41u}) {
        Machine m;
        m.leaf(0).eax = 3;
        m.leaf(2).eax = count | 0x45 << 8;
        expectCache(qvrWarnCacheUnknown, 0);
    }
}

// The narrow slots' query goes by leaf 2 alone, even where leaf 4 would answer.
TEST(Cache, DescriptorQueryIgnoresLeaf4)
{
    Machine m;
    m.leaf(4, 0) = cacheEntry(3, 16, 1, 64, 65536);
    m.leaf(2).eax = 0x01 | 0x45 << 8;
    int32_t size = 0;
    EXPECT_EQ(qvrGetDescriptorCacheSize(&size), qvrOk);
    EXPECT_EQ(size, 2097152);
    expectCache(qvrOk, 16 * 64 * 65536);
}

} // namespace
