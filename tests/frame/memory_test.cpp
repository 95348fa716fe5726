#include <cerrno>
#include <cstring>

#include "frame/allocator.h"
#include "frame/slot_tables.h"
#include "support/allocation.h"
#include "support/slots.h"

#define DECLARE_FORMS(slot)                                                                                            \
    extern "C" void* slot##_qvrsMalloc_16(int);                                                                        \
    extern "C" void* slot##_qvrsMalloc_32(int);                                                                        \
    extern "C" void* slot##_qvrsMalloc_64(int);                                                                        \
    extern "C" void* slot##_qvrsMalloc_128(int);
DECLARE_FORMS(mx)
DECLARE_FORMS(m7)
DECLARE_FORMS(u8)
DECLARE_FORMS(y8)
DECLARE_FORMS(e9) DECLARE_FORMS(l9)

    namespace
{

    TEST(Memory, RefusesCountsBelowOneWithoutAllocating)
    {
        CountingAllocator allocator;
        slots::each(qvrTable_qvrsMalloc_8u, [&](auto f, int) {
            for (int len : {0, -1, INT32_MIN})
                EXPECT_EQ(f(len), nullptr);
        });
        EXPECT_EQ(allocator.allocations(), 0);
    }

    TEST(Memory, FailureLeavesErrno)
    {
        const qvrAllocatorSlots saved = qvrAllocator;
        qvrAllocator.malloc = [](size_t) -> void* {
            errno = ENOMEM;
            return nullptr;
        };
        slots::each(qvrTable_qvrsMalloc_8u, [&](auto f, int) {
            errno = 77;
            EXPECT_EQ(f(100), nullptr);
            EXPECT_EQ(errno, 77);
        });
        qvrAllocator = saved;
    }

    TEST(Memory, BlockLayout)
    {
        slots::each(qvrTable_qvrsMalloc_8u, [&](auto f, int slot) {
            CountingAllocator allocator;
            for (int len : {1, 7, 63, 64, 65, 1000, 1 << 20}) {
                qvr8u* p = f(len);
                ASSERT_NE(p, nullptr);
                EXPECT_EQ(allocator.lastSize(), static_cast<size_t>(len) + 72);
                const uintptr_t raw = reinterpret_cast<uintptr_t>(allocator.lastBlock());
                EXPECT_EQ(reinterpret_cast<uintptr_t>(p), (raw + 71) & ~uintptr_t{63});
                void* stored;
                memcpy(&stored, p - 8, 8);
                EXPECT_EQ(stored, allocator.lastBlock());
                memset(p, 0xEE, len); // the whole block is the caller's
                qvrTable_qvrsFree[slot](p);
            }
            EXPECT_EQ(allocator.live(), 0u);
            EXPECT_EQ(allocator.badFrees(), 0);
        });
    }

    // Wherever the raw block begins, eight bytes below the aligned one belong to it and the end is not passed.
    TEST(Memory, EveryRawAlignment)
    {
        static unsigned char arena[4096];
        static size_t at;
        static void* freed;
        const qvrAllocatorSlots saved = qvrAllocator;
        qvrAllocator.malloc = [](size_t) -> void* { return arena + at; };
        qvrAllocator.free = [](void* p) { freed = p; };
        slots::each(qvrTable_qvrsMalloc_8u, [&](auto f, int slot) {
            for (at = 0; at < 128; at++) {
                qvr8u* p = f(100);
                EXPECT_EQ(reinterpret_cast<uintptr_t>(p) % 64, 0u);
                EXPECT_GE(p, arena + at + 8);
                EXPECT_LE(p, arena + at + 72);
                EXPECT_LE(p + 100, arena + at + 172);
                if (reinterpret_cast<uintptr_t>(arena + at) % 64 == 0)
                    EXPECT_EQ(p, arena + at + 64);
                qvrTable_qvrsFree[slot](p);
                EXPECT_EQ(freed, arena + at);
            }
        });
        qvrAllocator = saved;
    }

    TEST(Memory, LargestRequestIsWidenedBeforeTheSum)
    {
        slots::each(qvrTable_qvrsMalloc_8u, [&](auto f, int) {
            CountingAllocator allocator(CountingAllocator::kAll);
            EXPECT_EQ(f(INT32_MAX), nullptr);
            EXPECT_EQ(allocator.lastSize(), size_t{INT32_MAX} + 72);
            EXPECT_EQ(f(1), nullptr);
        });
    }

    TEST(Memory, FreeOfNull)
    {
        CountingAllocator allocator;
        slots::each(qvrTable_qvrsFree, [&](auto f, int) { f(nullptr); });
        EXPECT_EQ(allocator.badFrees(), 0);
    }

    TEST(Memory, FormsByElementSize)
    {
        using Form = void* (*)(int);
        const Form forms[7][4] = {{mx_qvrsMalloc_16, mx_qvrsMalloc_32, mx_qvrsMalloc_64, mx_qvrsMalloc_128},
                                  {m7_qvrsMalloc_16, m7_qvrsMalloc_32, m7_qvrsMalloc_64, m7_qvrsMalloc_128},
                                  {u8_qvrsMalloc_16, u8_qvrsMalloc_32, u8_qvrsMalloc_64, u8_qvrsMalloc_128},
                                  {u8_qvrsMalloc_16, u8_qvrsMalloc_32, u8_qvrsMalloc_64, u8_qvrsMalloc_128},
                                  {y8_qvrsMalloc_16, y8_qvrsMalloc_32, y8_qvrsMalloc_64, y8_qvrsMalloc_128},
                                  {e9_qvrsMalloc_16, e9_qvrsMalloc_32, e9_qvrsMalloc_64, e9_qvrsMalloc_128},
                                  {l9_qvrsMalloc_16, l9_qvrsMalloc_32, l9_qvrsMalloc_64, l9_qvrsMalloc_128}};
        slots::each(qvrTable_qvrsFree, [&](auto release, int slot) {
            CountingAllocator allocator;
            for (int form = 0; form < 4; form++) {
                for (int count : {0, -1, INT32_MIN})
                    EXPECT_EQ(forms[slot][form](count), nullptr);
                void* p = forms[slot][form](100);
                EXPECT_EQ(allocator.lastSize(), (size_t{200} << form) + 72);
                EXPECT_EQ(reinterpret_cast<uintptr_t>(p) % 64, 0u);
                release(p);
            }
            EXPECT_EQ(allocator.allocations(), 4);
            EXPECT_EQ(allocator.live(), 0u);
        });
    }

    TEST(Memory, ThroughTheExports)
    {
        qvr8u* p = Morven_qvrsMalloc_8u(1);
        ASSERT_NE(p, nullptr);
        EXPECT_EQ(reinterpret_cast<uintptr_t>(p) % 64, 0u);
        Morven_qvrsFree(p);
        EXPECT_EQ(Morven_qvrsMalloc_8u(0), nullptr);
    }

    TEST(Memory, AlignUp)
    {
        for (int64_t alignment : {1, 2, 16, 64, 4096})
            for (int64_t value : {0, 1, 15, 16, 17, 63, 64, 65, 100000}) {
                const int64_t up = qvrAlignUp(value, alignment);
                EXPECT_EQ(up % alignment, 0);
                EXPECT_GE(up, value);
                EXPECT_LT(up - value, alignment);
            }
        EXPECT_EQ(qvrAlignUp(13, 8), 16);
        EXPECT_EQ(qvrAlignUp(uint64_t{1} << 40, uint64_t{64}), uint64_t{1} << 40);
    }

    // The injection itself: it fails the n-th allocation and sees what is left behind.
    TEST(Memory, FailureInjection)
    {
        const auto attempt = [] {
            qvr8u* a = Morven_qvrsMalloc_8u(10);
            qvr8u* b = a ? Morven_qvrsMalloc_8u(10) : nullptr;
            const bool ok = a && b;
            Morven_qvrsFree(a);
            Morven_qvrsFree(b);
            return ok;
        };
        std::vector<int> failures;
        EXPECT_EQ(failEachAllocation(attempt,
                                     [&](int n, bool ok, const CountingAllocator& allocator) {
                                         failures.push_back(n);
                                         EXPECT_FALSE(ok);
                                         EXPECT_EQ(allocator.live(), 0u);
                                     }),
                  2);
        EXPECT_EQ(failures, (std::vector<int>{0, 1}));
    }

} // namespace
