#include "support/cache.h"
#include "support/elementwise.h"
#include "vector/slot_tables.h"

namespace {

// Fills n elements at the given place and looks at every byte.
template<class T, class Fill> void checkFill(Fill fill, T val, size_t n, bool atEnd, size_t offset)
{
    const size_t bytes = n * sizeof(T);
    Guarded& buffer = pooledGuarded(0, bytes + 128);
    T* p = atEnd ? buffer.atEnd<T>(bytes, offset) : buffer.atFront<T>(bytes, offset);
    ASSERT_EQ(fill(val, p, static_cast<int>(n)), qvrOk);
    EXPECT_TRUE(buffer.intact()) << n << " +" << offset;
    const char* c = reinterpret_cast<const char*>(p);
    ASSERT_EQ(memcmp(c, &val, sizeof val), 0) << n << " +" << offset;
    // Periodic in the element: the array equals itself moved by one.
    ASSERT_EQ(memcmp(c, c + sizeof val, bytes - sizeof val), 0) << n << " +" << offset;
}

template<class T, class Fill> void checkFills(Fill fill, std::vector<T> values)
{
    for (T val : values) {
        for (size_t n = 1; n <= 70; n++) {
            for (size_t offset = 0; offset < 64; offset++)
                checkFill<T>(fill, val, n, false, offset);
            checkFill<T>(fill, val, n, true, 0);
        }
        // Around the turns of the loops, in bytes.
        for (size_t edge : {128, 256, 512, 1024, 32768})
            for (size_t bytes = edge - 40; bytes <= edge + 40; bytes += sizeof(T))
                for (size_t offset :
                     edge < 4096 ? std::vector<size_t>{0, 1, 4, 8, 16, 24, 32, 40, 63} : std::vector<size_t>{0, 12, 17})
                    checkFill<T>(fill, val, bytes / sizeof(T), false, offset);
        if (testing::Test::HasFailure())
            return;
    }
    // Past every streaming limit, with a cache that the fill exceeds, one that it does not, and none that is known.
    const struct {
        int32_t size;
        qvrStatus status;
    } caches[] = {{4096, qvrOk}, {1 << 30, qvrOk}, {0, qvrWarnCacheUnknown}};
    for (const auto& cache : caches) {
        BelievedCache believed(cache.size, cache.status);
        for (size_t limit : {0x80000, cache.size == 4096 ? 0x100000 : 0x80000, 0x200000})
            for (int delta : {-8, 8, 104})
                for (size_t offset : {0, 4, 56, 3})
                    checkFill<T>(fill, values[0], (limit + delta) / sizeof(T), offset % 8 == 0, offset);
    }
}

template<class T, class Call> void checkFillStatuses(Call call)
{
    Guarded buffer(64);
    checkPointersThenLengthOrder(1, [&](int null, int len) {
        T* p = buffer.atEnd<T>(64);
        const qvrStatus s = call(null == 0 ? nullptr : p, len);
        EXPECT_TRUE(buffer.untouched());
        return s;
    });
}

TEST(Fill, SetBytes)
{
    slots::each(qvrTable_qvrsSet_8u, [&](auto f, int) {
        checkFills<uint8_t>(f, {0x5C, 0x00});
        checkFillStatuses<uint8_t>([&](uint8_t* p, int n) { return f(1, p, n); });
    });
}
TEST(Fill, SetIntegers)
{
    slots::each(qvrTable_qvrsSet_32s, [&](auto f, int) {
        checkFills<int32_t>(f, {0x12345678, INT32_MIN});
        checkFillStatuses<int32_t>([&](int32_t* p, int n) { return f(1, p, n); });
    });
}
TEST(Fill, SetFloats)
{
    slots::each(qvrTable_qvrsSet_32f, [&](auto f, int) {
        checkFills<float>(f, {-1.2345f, floatOf(0x7FC12345)});
        checkFillStatuses<float>([&](float* p, int n) { return f(1, p, n); });
    });
}
TEST(Fill, ZeroFloats)
{
    slots::each(qvrTable_qvrsZero_32f, [&](auto f, int) {
        checkFills<float>([f](float, float* p, int n) { return f(p, n); }, {0.0f});
        checkFillStatuses<float>([&](float* p, int n) { return f(p, n); });
    });
}
TEST(Fill, ZeroDoubles)
{
    slots::each(qvrTable_qvrsZero_64f, [&](auto f, int) {
        checkFills<double>([f](double, double* p, int n) { return f(p, n); }, {0.0});
        checkFillStatuses<double>([&](double* p, int n) { return f(p, n); });
    });
}

} // namespace
