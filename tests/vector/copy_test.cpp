#include "support/cache.h"
#include "support/elementwise.h"
#include "vector/slot_tables.h"

#include <sys/mman.h>
#include <unistd.h>

namespace {

// A copy of n elements between two places; every byte is looked at. Sources hold arbitrary bits, NaN among them.
template<class T, class F> void checkCopy(F copy, size_t n, bool atEnd, size_t srcOffset, size_t dstOffset)
{
    static const std::vector<uint32_t> noise = [] {
        std::vector<uint32_t> v((0x200000 + 4096) / 4);
        std::mt19937 engine(9);
        for (uint32_t& x : v)
            x = engine();
        return v;
    }();
    const size_t bytes = n * sizeof(T);
    Guarded &from = pooledGuarded(1, bytes + 128), &to = pooledGuarded(0, bytes + 128);
    T* src = atEnd ? from.atEnd<T>(bytes, srcOffset) : from.atFront<T>(bytes, srcOffset);
    T* dst = atEnd ? to.atEnd<T>(bytes, dstOffset) : to.atFront<T>(bytes, dstOffset);
    memcpy(static_cast<void*>(src), noise.data(), bytes);
    ASSERT_EQ(copy(src, dst, static_cast<int>(n)), qvrOk);
    EXPECT_TRUE(from.intact() && to.intact()) << n << " +" << srcOffset << " to +" << dstOffset;
    ASSERT_EQ(memcmp(static_cast<void*>(dst), noise.data(), bytes), 0)
        << n << " +" << srcOffset << " to +" << dstOffset;
    // The same array as source and destination stays as it is.
    ASSERT_EQ(copy(dst, dst, static_cast<int>(n)), qvrOk);
    ASSERT_EQ(memcmp(static_cast<void*>(dst), noise.data(), bytes), 0) << "onto itself, " << n;
}

template<class T, class F> void checkCopies(F copy)
{
    for (size_t n = 1; n <= 70; n++) {
        checkCopy<T>(copy, n, true, 0, 0);
        for (size_t offset = 0; offset < 64; offset++) {
            checkCopy<T>(copy, n, false, offset, 0);
            checkCopy<T>(copy, n, false, 0, offset);
        }
    }
    for (size_t edge : {96, 256, 1024, 32768})
        for (size_t bytes = edge - 16; bytes <= edge + 16; bytes += sizeof(T))
            for (size_t srcOffset : {0, 1, 2, 4, 8})
                for (size_t dstOffset : {0, 1, 4, 6})
                    checkCopy<T>(copy, bytes / sizeof(T), true, srcOffset, dstOffset);
    const struct {
        int32_t size;
        qvrStatus status;
    } caches[] = {{4096, qvrOk}, {1 << 30, qvrOk}, {0, qvrWarnCacheUnknown}};
    for (const auto& cache : caches) {
        BelievedCache believed(cache.size, cache.status);
        for (size_t limit : {0x20000, 0x80000, 0x100000, 0x200000})
            for (int delta : {-8, 8, 40})
                for (size_t offset : {0, 4, 3})
                    checkCopy<T>(copy, (limit + delta) / sizeof(T), true, offset, 60 - offset);
    }
}

template<class T, class Table> void checkAll(const Table& table)
{
    slots::each(table, [&](auto f, int) {
        checkCopies<T>(f);
        Guarded dst(64);
        const T x[8] = {};
        checkPointersThenLengthOrder(2, [&](int null, int len) {
            T* d = dst.atEnd<T>(64);
            const qvrStatus s = f(null == 0 ? nullptr : x, null == 1 ? nullptr : d, len);
            EXPECT_TRUE(dst.untouched());
            return s;
        });
        EXPECT_EQ(f(nullptr, nullptr, 0), qvrErrNullPointer);
    });
}

TEST(Copy, Floats)
{
    checkAll<float>(qvrTable_qvrsCopy_32f);
}
TEST(Copy, Doubles)
{
    checkAll<double>(qvrTable_qvrsCopy_64f);
}

// More bytes than 32 bits hold: 2 GiB and a little of virtual memory in which one window of real memory repeats, so
// that the copy's last blocks are seen in the window.
class Repeated {
public:
    static constexpr size_t kWindow = size_t{16} << 20;

    explicit Repeated(size_t bytes) : bytes_((bytes + kWindow - 1) / kWindow * kWindow)
    {
        const int fd = memfd_create("window", 0);
        if (fd < 0 || ftruncate(fd, kWindow) != 0)
            abort();
        base_ =
            static_cast<char*>(mmap(nullptr, bytes_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0));
        for (size_t at = 0; at < bytes_; at += kWindow)
            if (mmap(base_ + at, kWindow, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_FIXED, fd, 0) == MAP_FAILED)
                abort();
        close(fd);
    }
    ~Repeated() { munmap(base_, bytes_); }
    char* base() { return base_; }

private:
    size_t bytes_;
    char* base_;
};

TEST(Copy, BeyondTwoGigabytes)
{
    slots::each(qvrTable_qvrsCopy_32f, [&](auto f, int slot) {
        if (slot < slots::e9)
            return; // only the wide slots cut copies into blocks
        const int64_t len = 0x20000000 + 24;
        Repeated src(len * 4), dst(len * 4);
        for (size_t i = 0; i < Repeated::kWindow; i += 4) {
            const uint32_t x = static_cast<uint32_t>(i * 2654435761u);
            memcpy(src.base() + i, &x, 4);
        }
        ASSERT_EQ(f(reinterpret_cast<float*>(src.base()), reinterpret_cast<float*>(dst.base()), static_cast<int>(len)),
                  qvrOk);
        EXPECT_EQ(memcmp(src.base(), dst.base(), Repeated::kWindow), 0);
        // The tail alone, past the first cut: wipe the window's head and copy a length that ends just inside it.
        memset(dst.base(), 0, Repeated::kWindow);
        ASSERT_EQ(f(reinterpret_cast<float*>(src.base()), reinterpret_cast<float*>(dst.base()), static_cast<int>(len)),
                  qvrOk);
        EXPECT_EQ(memcmp(src.base(), dst.base(), Repeated::kWindow), 0);
    });
}

} // namespace
