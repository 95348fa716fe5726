#include <gtest/gtest.h>
#include <immintrin.h>

#include "fourier/fft_slots.h"
#include "fourier/slot_tables.h"
#include "frame/threads.h"
#include "support/allocation.h"

namespace {

using namespace fft;

template<class T> class Spec : public testing::Test {};
using Precisions = testing::Types<float, double>;
TYPED_TEST_SUITE(Spec, Precisions);

// By slot: mx m7 u8 n8 y8 e9 l9.
template<class T> constexpr int kLargest[7] = {28, 29, 29, 29, 29, 29, 29};
template<> constexpr int kLargest<double>[7] = {27, 28, 28, 27, 28, 28, 28};
template<class T> constexpr int kReal[7] = {5, 4, 4, 4, 4, 4, 4};
template<> constexpr int kReal<double>[7] = {5, 5, 5, 5, 5, 4, 4};
constexpr int kComplex[7] = {6, 6, 6, 6, 6, 7, 7};
template<class T> constexpr int kFlat[7] = {11, 17, 18, 16, 18, 19, 19};
template<> constexpr int kFlat<double>[7] = {11, 15, 17, 13, 17, 18, 18};
template<class T> constexpr int kTwoLevel[7] = {19, 19, 19, 18, 21, 19, 19};
template<> constexpr int kTwoLevel<double>[7] = {18, 18, 17, 18, 19, 17, 17};

// The fields of an object, read by their places.
template<class T> struct Fields {
    const char* p;
    bool threaded;

    int32_t at32(size_t offset) const
    {
        int32_t v;
        memcpy(&v, p + offset, sizeof v);
        return v;
    }
    const char* pointer(int i) const
    {
        const size_t first = sizeof(T) == 8 || threaded ? 40 : 32;
        const char* q;
        memcpy(&q, p + first + 8 * i, sizeof q);
        return q;
    }
    int tag() const { return at32(0); }
    int order() const { return at32(4); }
    int forwardScales() const { return at32(8); }
    int inverseScales() const { return at32(12); }
    T factor() const
    {
        T v;
        memcpy(&v, p + 16, sizeof v);
        return v;
    }
    int hint() const { return at32(16 + sizeof(T)); }
    int workSize() const { return at32(20 + sizeof(T)); }
    int isAlloc() const { return at32(24 + sizeof(T)); }
    int threadLimit() const { return at32(28 + sizeof(T)); }
    const int32_t* bitRev() const { return reinterpret_cast<const int32_t*>(pointer(1)); }
    const T* table(int i) const { return reinterpret_cast<const T*>(pointer(i)); } // 2 .. 6, then the levels
};
template<class T> Fields<T> fieldsOf(int slot, const void* spec)
{
    return {static_cast<const char*>(spec), slot == slots::u8 || slot == slots::y8};
}

TYPED_TEST(Spec, CreationStatusesInOrder)
{
    using F = Functions<TypeParam>;
    using S = typename F::Spec;
    eachSlot([&](int slot) {
        const auto init = F::init[slot];
        S* const untouched = reinterpret_cast<S*>(0x10);
        S* spec = untouched;
        for (int order : {-1, 31, INT32_MIN, INT32_MAX})
            for (int flag : {0, 3, 8}) {
                EXPECT_EQ(init(nullptr, order, flag, 0), qvrErrNullPointer);
                EXPECT_EQ(init(&spec, order, flag, 0), qvrErrFFTOrder);
            }
        for (int flag : {0, 3, 5, 16, -1}) {
            EXPECT_EQ(init(&spec, 4, flag, 0), qvrErrFFTFlag);
            EXPECT_EQ(init(&spec, 30, flag, 0), qvrErrFFTFlag);
            EXPECT_EQ(init(&spec, 29, flag, 0), qvrErrFFTFlag);
        }
        for (int order = kLargest<TypeParam>[slot] + 1; order <= 30; order++)
            EXPECT_EQ(init(&spec, order, qvrFftNoDiv, 0), qvrErrFFTOrder) << order;
        EXPECT_EQ(spec, untouched);

        int32_t a = -1, b = -1, c = -1;
        const auto size = F::getSize[slot];
        EXPECT_EQ(size(31, 3, 0, nullptr, nullptr, nullptr), qvrErrFFTOrder);
        EXPECT_EQ(size(-1, 8, 0, nullptr, &b, &c), qvrErrFFTOrder);
        EXPECT_EQ(size(4, 3, 0, nullptr, &b, &c), qvrErrNullPointer);
        EXPECT_EQ(size(4, 3, 0, &a, nullptr, &c), qvrErrNullPointer);
        EXPECT_EQ(size(4, 3, 0, &a, &b, nullptr), qvrErrNullPointer);
        EXPECT_EQ(size(30, 3, 0, &a, &b, &c), qvrErrFFTFlag);
        EXPECT_EQ(size(30, 8, 0, &a, &b, &c), qvrErrFFTOrder);
        EXPECT_EQ(a, -1);
        EXPECT_EQ(b, -1);
        EXPECT_EQ(c, -1);
        // The largest order has a size that 31 bits hold.
        EXPECT_EQ(size(kLargest<TypeParam>[slot], 8, 0, &a, &b, &c), qvrOk);
        EXPECT_GT(a, 0);
        EXPECT_GT(b, 0);
        EXPECT_GT(c, 64);
    });
}

TYPED_TEST(Spec, NormalisationByFlag)
{
    using T = TypeParam;
    eachSlot([&](int slot) {
        for (int order = 0; order <= 15; order++) {
            const T n = static_cast<T>(1 << order);
            T root;
            if constexpr (sizeof(T) == 4) {
                const float r = _mm_cvtss_f32(_mm_rsqrt_ss(_mm_set_ss(n)));
                const float halved = r * -0.5f, nr = n * r;
                const float step = nr * r;
                root = halved * (step - 3.0f);
            } else {
                root = 1.0 / std::sqrt(n);
            }
            const struct {
                int flag, forward, inverse;
                T factor;
            } rows[] = {{8, 0, 0, 0}, {1, 1, 0, 1 / n}, {2, 0, 1, 1 / n}, {4, 1, 1, root}};
            for (const auto& row : rows) {
                Object<T> object(slot, order, row.flag, 77);
                const Fields<T> f = fieldsOf<T>(slot, object.get());
                EXPECT_EQ(f.tag(), sizeof(T) == 4 ? 6 : 9);
                EXPECT_EQ(f.order(), order);
                EXPECT_EQ(f.forwardScales(), row.forward);
                EXPECT_EQ(f.inverseScales(), row.inverse);
                EXPECT_EQ(bitsOf(f.factor()), bitsOf(row.factor)) << "order " << order << " flag " << row.flag;
                EXPECT_EQ(f.hint(), 77);
                EXPECT_EQ(f.isAlloc(), 1);
            }
        }
    });
}

// Bytes of work memory, without the 64 for alignment.
template<class T> int flatWork(int m)
{
    return static_cast<int>((2 * sizeof(T) << m) + 63) / 64 * 64;
}
template<class T> int wantedWork(int slot, int order)
{
    const int m = order - 1;
    const int kb = 1024, e = sizeof(T) / 4;
    if (order <= kReal<T>[slot] || order <= kComplex[slot])
        return 0;
    if (slot == slots::mx) {
        if (m <= 12)
            return 0;
        const int columns32[] = {5, 6, 7, 8, 8, 8, 10, 10}, columns64[] = {5, 6, 7, 7, 8, 9, 9, 9};
        return (32 * e) << (e == 1 ? columns32 : columns64)[m - 13];
    }
    if (order <= kFlat<T>[slot])
        return flatWork<T>(m);
    // Row order and tile order at the first orders above the flat limit.
    struct Row {
        int m, rows, tile;
    };
    const auto need = [&](std::initializer_list<Row> rows) {
        for (const Row& r : rows)
            if (r.m == m) {
                const int tile = r.tile ? (8 * e) << r.tile : 0, row = flatWork<T>(r.rows);
                const int most = std::max(tile, row);
                return m >= 20 ? std::max(most, 64 * kb * e) : most;
            }
        return -1;
    };
    if (e == 1)
        switch (slot) {
        case 1:
            return need({{17, 13, 9}, {18, 14, 10}, {19, 15, 10}, {20, 16, 10}});
        case 2:
        case 4:
            return need({{18, 14, 10}, {19, 15, 10}, {20, 12, 14}});
        case 3:
            return need({{16, 12, 10}, {17, 13, 10}, {18, 14, 10}, {19, 13, 14}, {20, 14, 14}});
        default:
            return need({{19, 15, 10}, {20, 16, 10}});
        }
    switch (slot) {
    case 1:
        return need({{15, 11, 8}, {16, 12, 10}, {17, 13, 10}, {18, 14, 10}, {19, 13, 13}, {20, 14, 13}});
    case 2:
        return need({{17, 11, 10}, {18, 12, 10}, {19, 13, 10}, {20, 13, 11}});
    case 3:
        return need({{13, 13, 0},
                     {14, 10, 10},
                     {15, 9, 10},
                     {16, 10, 10},
                     {17, 11, 10},
                     {18, 12, 10},
                     {19, 15, 10},
                     {20, 14, 10}});
    case 4:
        return need({{17, 11, 10}, {18, 12, 10}, {19, 11, 13}, {20, 12, 13}});
    default:
        return need({{18, 14, 9}, {19, 15, 9}, {20, 16, 9}});
    }
}

TYPED_TEST(Spec, SizesOfWorkAndInitialisation)
{
    using T = TypeParam;
    using F = Functions<T>;
    eachSlot([&](int slot) {
        for (int order = 0; order <= 21; order++) {
            int32_t spec = 0, init = 0, work = 0;
            ASSERT_EQ(F::getSize[slot](order, 8, 0, &spec, &init, &work), qvrOk);
            const int want = wantedWork<T>(slot, order);
            EXPECT_EQ(work, want > 0 ? want + 64 : 0) << "order " << order;
            EXPECT_EQ(init > 0, order > 10) << "order " << order;
            // The bound that the reference pages give.
            EXPECT_LE(work, std::max<int64_t>(131136, (int64_t{sizeof(T)} << order) + 64));
            if (order <= 19) {
                Object<T> object(slot, order, 8);
                EXPECT_EQ(object.bufferSize(), static_cast<size_t>(work));
                EXPECT_EQ(fieldsOf<T>(slot, object.get()).workSize(), want);
            }
        }
        for (int order = 22; order <= kLargest<T>[slot]; order++) {
            int32_t spec = 0, init = 0, work = 0;
            ASSERT_EQ(F::getSize[slot](order, 8, 0, &spec, &init, &work), qvrOk);
            EXPECT_LE(work, std::max<int64_t>(131136, (int64_t{sizeof(T)} << order) + 64));
            EXPECT_GT(spec, 0);
            EXPECT_GT(init, 0);
        }
    });
}

TYPED_TEST(Spec, InMemoryOfTheCaller)
{
    using T = TypeParam;
    using F = Functions<T>;
    eachSlot([&](int slot) {
        for (int order = 0; order <= 16; order++) {
            int32_t specSize, initSize, workSize;
            ASSERT_EQ(F::getSize[slot](order, 4, 1, &specSize, &initSize, &workSize), qvrOk);
            for (size_t shift : {0, 1, 24}) {
                Guarded memory(specSize + 64), temporary(initSize + 64);
                uint8_t* p = memory.atEnd<uint8_t>(specSize, shift);
                uint8_t* t = initSize > 0 ? temporary.atEnd<uint8_t>(initSize, shift) : nullptr;
                typename F::Spec* spec = nullptr;
                if (order > 10)
                    EXPECT_EQ(F::initIn[slot](&spec, order, 4, 1, p, nullptr), qvrErrNullPointer);
                ASSERT_EQ(F::initIn[slot](&spec, order, 4, 1, p, t), qvrOk);
                EXPECT_TRUE(memory.intact() && temporary.intact()) << "order " << order;
                EXPECT_EQ(reinterpret_cast<uintptr_t>(spec) % 64, 0u);
                const Fields<T> f = fieldsOf<T>(slot, spec);
                EXPECT_EQ(f.isAlloc(), 0);
                EXPECT_EQ(f.pointer(0), nullptr);
                const char* last = reinterpret_cast<const char*>(spec);
                for (int i : {1, 2, 3, 4, 7, 10, 8, 11, 9, 12, 5, 6}) {
                    const char* table = f.pointer(i);
                    if (table == nullptr)
                        continue;
                    EXPECT_EQ(reinterpret_cast<uintptr_t>(table) % 64, 0u) << "pointer " << i;
                    EXPECT_GT(table, last) << "order " << order << " pointer " << i;
                    last = table;
                }
                EXPECT_EQ(f.pointer(5) == nullptr, order <= kReal<T>[slot]);
                EXPECT_EQ(f.bitRev() == nullptr, order <= std::max(kReal<T>[slot], kComplex[slot]));
                EXPECT_EQ(f.pointer(4), nullptr);
                EXPECT_EQ(F::free[slot](spec), qvrOk);
                EXPECT_EQ(f.tag(), 0);
                EXPECT_EQ(F::free[slot](spec), qvrErrBadContext);
                // A bad flag clears the tag.
                EXPECT_EQ(F::initIn[slot](&spec, order, 3, 1, p, t), qvrErrFFTFlag);
                EXPECT_EQ(f.tag(), 0);
            }
        }
    });
}

TYPED_TEST(Spec, FreeAndBufferStatuses)
{
    using T = TypeParam;
    using F = Functions<T>;
    using Other = std::conditional_t<sizeof(T) == 4, double, float>;
    eachSlot([&](int slot) {
        Object<Other> other(slot, 3, 8);
        auto* wrong = reinterpret_cast<typename F::Spec*>(other.get());
        int32_t size = 5;
        EXPECT_EQ(F::free[slot](nullptr), qvrErrNullPointer);
        EXPECT_EQ(F::free[slot](wrong), qvrErrBadContext);
        EXPECT_EQ(F::bufSize[slot](nullptr, &size), qvrErrNullPointer);
        EXPECT_EQ(F::bufSize[slot](wrong, nullptr), qvrErrNullPointer);
        EXPECT_EQ(F::bufSize[slot](wrong, &size), qvrErrBadContext);
        EXPECT_EQ(size, 5);
    });
}

TYPED_TEST(Spec, EveryAllocationMayFail)
{
    using T = TypeParam;
    using F = Functions<T>;
    eachSlot([&](int slot) {
        for (int order : {0, 5, 10, 11, 16}) {
            typename F::Spec* spec = nullptr;
            const int needed = failEachAllocation(
                [&] {
                    spec = nullptr;
                    const qvrStatus status = F::init[slot](&spec, order, 8, 0);
                    if (status == qvrOk)
                        EXPECT_EQ(F::free[slot](spec), qvrOk);
                    return status;
                },
                [&](int, qvrStatus status, CountingAllocator& allocator) {
                    EXPECT_EQ(status, qvrErrNoMemory);
                    EXPECT_EQ(spec, nullptr);
                    EXPECT_EQ(allocator.live(), 0u);
                });
            EXPECT_EQ(needed, order > 10 ? 2 : 1);
        }
    });
}

int reversed(int value, int bits)
{
    int r = 0;
    for (int i = 0; i < bits; i++)
        r |= (value >> i & 1) << (bits - 1 - i);
    return r;
}

TYPED_TEST(Spec, BitReversalTables)
{
    using T = TypeParam;
    eachSlot([&](int slot) {
        for (int order = 8; order <= 21; order++) {
            Object<T> object(slot, order, 8);
            const Fields<T> f = fieldsOf<T>(slot, object.get());
            const int32_t* table = f.bitRev();
            const int lowest = sizeof(T) == 4 ? 14 : 13;
            const bool band = (slot == slots::u8 || slot == slots::y8) && order >= lowest && order <= lowest + 4;
            int m = band ? order - 4 : order - 1;
            SCOPED_TRACE(order);
            if (slot == slots::mx) {
                // Every pair and palindrome of the middle bits once, each list in its order.
                std::vector<int32_t> pairs, palindromes;
                for (int i = 0; i < 1 << (m - 2); i++) {
                    const int r = reversed(i, m - 2);
                    if (i < r) {
                        pairs.push_back(4 * i);
                        pairs.push_back(4 * r);
                    } else if (i == r && i > 0) {
                        palindromes.insert(palindromes.begin(), 4 * i);
                    }
                }
                std::vector<int32_t> want = pairs;
                want.push_back(0);
                want.insert(want.end(), palindromes.begin(), palindromes.end());
                want.push_back(0);
                ASSERT_EQ(want.size(), (size_t{1} << (m - 2)) + 1);
                EXPECT_EQ(std::vector<int32_t>(table, table + want.size()), want);
                continue;
            }
            if (m >= 20) {
                for (int i = 0; i < 1 << (m - 12); i++)
                    ASSERT_EQ(table[i], reversed(i, m - 12) * 64);
                table += 1 << (m - 12);
                m = 12;
            }
            for (int i = 0; i < 1 << (m - 2); i++)
                ASSERT_EQ(table[i], 2 * reversed(i, m - 2));
            EXPECT_EQ(table[1 << (m - 2)], 0);
        }
    });
}

TYPED_TEST(Spec, RecombinationTables)
{
    using T = TypeParam;
    const double unit = sizeof(T) == 4 ? 0x1p-24 : 0x1p-53;
    eachSlot([&](int slot) {
        for (int order = 6; order <= 21; order++) {
            Object<T> object(slot, order, 8);
            const Fields<T> f = fieldsOf<T>(slot, object.get());
            const T *fwd = f.table(5), *inv = f.table(6);
            const int n = 1 << order;
            const long double turn = 6.283185307179586476925286766559L;
            const auto near = [&](T got, long double want) {
                ASSERT_LE(std::abs(static_cast<double>(got - want)), unit * 1.5) << "order " << order;
            };
            const auto plain = [&](const T* table, int at, int k) {
                near(table[2 * at], cosl(turn * k / n));
                near(table[2 * at + 1], -sinl(turn * k / n));
            };
            if (order >= kTwoLevel<T>[slot]) {
                for (const T* table : {fwd, inv}) {
                    for (int k = 0; k < 1024; k++)
                        plain(table, k, k);
                    for (int k = 0; k <= n / 4; k += 1024)
                        plain(table, 1024 + k / 1024, k);
                }
                continue;
            }
            for (int k = 0; k < n / 4; k++) {
                near(fwd[2 * k], 0.5L * cosl(turn * k / n));
                near(fwd[2 * k + 1], 0.5L - 0.5L * sinl(turn * k / n));
                plain(inv, k, k);
            }
            // The folded entries are made from the plain ones in double and rounded once.
            for (int k = 0; k < n / 4; k++) {
                ASSERT_EQ(fwd[2 * k], static_cast<T>(0.5 * inv[2 * k]));
                ASSERT_EQ(fwd[2 * k + 1], static_cast<T>(0.5 + 0.5 * inv[2 * k + 1]));
            }
        }
    });
}

// Stages follow each other without gap up to the length, every block is a power of the one below, and a sweep's tile
// fits the stack or the work memory.
TYPED_TEST(Spec, PlansAreWhole)
{
    using T = TypeParam;
    eachSlot([&](int slot) {
        for (int order = 0; order <= 21; order++) {
            SCOPED_TRACE(order);
            Object<T> object(slot, order, 8);
            const FftPlan* plan = planOf(slot, object);
            ASSERT_EQ(plan == nullptr, slot == 0 || order <= kComplex[slot]);
            if (plan == nullptr)
                continue;
            const int lowest = sizeof(T) == 4 ? 14 : 13;
            const bool band = (slot == 2 || slot == 4) && order >= lowest && order <= lowest + 4;
            EXPECT_EQ(plan->order, band ? order - 4 : order - 1);
            EXPECT_EQ(plan->firstOrder, slot >= 5 ? 4 : 3);
            EXPECT_EQ(plan->levels > plan->row + 1, order > kFlat<T>[slot] && plan->order > 13);
            int reached = plan->firstOrder, sweeps = 0;
            for (int i = 0; i < plan->levels; i++) {
                const FftLevel& level = plan->level[i];
                EXPECT_EQ(level.sweep, sweeps);
                EXPECT_GT(level.sweeps, 0);
                if (i > 0)
                    EXPECT_GT(level.order, plan->level[i - 1].order);
                for (; sweeps < level.sweep + level.sweeps; sweeps++) {
                    const FftSweep& sweep = plan->sweep[sweeps];
                    EXPECT_EQ(sweep.from, reached);
                    for (int stage = 0; stage < sweep.stages; stage++)
                        EXPECT_TRUE(sweep.radixOrder[stage] == 2 || sweep.radixOrder[stage] == 3);
                    if (sweepOrder(sweep) > 6)
                        EXPECT_LE(256 << sweepOrder(sweep), fieldsOf<T>(slot, object.get()).workSize());
                    reached += sweepOrder(sweep);
                }
                EXPECT_LE(reached, level.order);
            }
            EXPECT_EQ(reached, plan->order);
        }
    });
}

TYPED_TEST(Spec, FirstGenerationTwiddles)
{
    using T = TypeParam;
    const double unit = sizeof(T) == 4 ? 0x1p-24 : 0x1p-53;
    const long double turn = 6.283185307179586476925286766559L;
    const auto near = [&](T got, long double want) {
        ASSERT_LE(std::abs(static_cast<double>(got - want)), unit * 1.5);
    };
    if (!slots::canRun(0))
        GTEST_SKIP() << "slot mx does not run here";
    for (int order : {7, 9, 11, 12, 13, 14, 16}) {
        SCOPED_TRACE(order);
        Object<T> object(0, order, 8);
        const Fields<T> f = fieldsOf<T>(0, object.get());
        const int m = order - 1, f0[] = {5, 6, 7}, split = m >= 13 ? f0[m - 13] : 0, rows = m - split;
        const auto kernel = [&](const T* table, int bits) {
            for (int k = 0; k <= (1 << bits) / 4; k++)
                for (int j = 1; j <= 3; j++) {
                    near(table[6 * k + 2 * j - 2], cosl(turn * j * k / (1 << bits)));
                    near(table[6 * k + 2 * j - 1], -sinl(turn * j * k / (1 << bits)));
                }
        };
        kernel(f.table(2), std::min(rows, 10));
        EXPECT_EQ(f.table(3) != nullptr, rows > 10);
        if (rows > 10)
            for (int k = 0; k < (1 << rows) / 4; k++) {
                near(f.table(3)[2 * k], cosl(turn * k / (1 << rows)));
                near(f.table(3)[2 * k + 1], -sinl(turn * k / (1 << rows)));
            }
        EXPECT_EQ(f.table(7) != nullptr, split > 0);
        if (split == 0)
            continue;
        kernel(f.table(7), split);
        const T* mid = f.table(10);
        for (int j = 0; j < 1 << rows; j += 4)
            for (int c = 0; c < 1 << split; c++)
                for (int i = 0; i < 4; i++, mid += 2) {
                    const long double t = turn * ((j + i) * reversed(c, split) % (1 << m)) / (1 << m);
                    near(mid[0], cosl(t));
                    near(mid[1], -sinl(t));
                }
    }
}

TYPED_TEST(Spec, ThreadedBandTable)
{
    using T = TypeParam;
    const double unit = sizeof(T) == 4 ? 0x1p-24 : 0x1p-53;
    const long double turn = 6.283185307179586476925286766559L;
    const int saved = qvrNumThreadsValue();
    for (int slot : kThreadedSlots)
        for (int budget : {1, 2, 5}) {
            if (!slots::canRun(slot))
                continue;
            qvrSetNumThreads(budget);
            Object<T> object(slot, 14, 8);
            const Fields<T> f = fieldsOf<T>(slot, object.get());
            EXPECT_EQ(f.threadLimit(), std::min(budget, 2));
            const T* table = f.table(3);
            const int points = 1 << 13;
            for (int j = 0; j < points / 8; j += 4)
                for (int c = 1; c < 8; c++, table += 8)
                    for (int i = 0; i < 4; i++) {
                        const long double t = turn * ((j + i) * c) / points;
                        ASSERT_LE(std::abs(static_cast<double>(table[i] - cosl(t))), unit * 1.5);
                        ASSERT_LE(std::abs(static_cast<double>(table[4 + i] + sinl(t))), unit * 1.5);
                    }
        }
    qvrSetNumThreads(saved);
}

} // namespace
