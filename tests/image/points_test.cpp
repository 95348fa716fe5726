// Point operations against their contracts.
#include "frame/threads.h"
#include "image/slot_tables.h"
#include "model/points.h"
#include "support/budget.h"
#include "support/cache.h"
#include "support/guarded.h"
#include "support/regions.h"
#include "support/slots.h"
#include "support/status_order.h"
#include "support/values.h"

namespace {

// An image of T whose rows end at an unreadable page or begin at one, with a gap that must stay.
template<class T> struct Image {
    Guarded& memory;
    char* first;
    int step, width, height;
    Image(size_t use, int w, int h, int gap, bool atEnd, size_t offset, bool upsideDown = false)
        : memory(pooledGuarded(use, (size_t(w) * sizeof(T) + size_t(gap)) * size_t(h) + 128)), width(w), height(h)
    {
        const int row = w * int(sizeof(T));
        step = row + gap;
        const size_t bytes = size_t(step) * size_t(h - 1) + size_t(row);
        first = atEnd ? memory.atEnd<char>(bytes, offset) : memory.atFront<char>(bytes, offset);
        if (upsideDown) {
            first += int64_t{h - 1} * step;
            step = -step;
        }
    }
    T* data() const { return reinterpret_cast<T*>(first); }
    T get(int x, int y) const
    {
        T v;
        memcpy(static_cast<void*>(&v), first + int64_t{y} * step + x * int(sizeof(T)), sizeof v);
        return v;
    }
    void put(int x, int y, T v) const
    {
        memcpy(first + int64_t{y} * step + x * int(sizeof(T)), static_cast<const void*>(&v), sizeof v);
    }
    void fill(const std::vector<T>& v) const
    {
        for (int y = 0; y < height; y++)
            for (int x = 0; x < width; x++)
                put(x, y, v[size_t(y) * width + x]);
    }
    std::vector<T> read() const
    {
        std::vector<T> v;
        for (int y = 0; y < height; y++)
            for (int x = 0; x < width; x++)
                v.push_back(get(x, y));
        return v;
    }
    bool gapsIntact() const
    {
        const int row = width * int(sizeof(T)), gap = std::abs(step) - row;
        const char* low = step > 0 ? first : first + int64_t{height - 1} * step;
        for (int y = 0; y + 1 < height; y++)
            for (int i = 0; i < gap; i++)
                if (static_cast<unsigned char>(low[int64_t{y} * std::abs(step) + row + i]) != Guarded::kPoison)
                    return false;
        return memory.intact();
    }
};

// body(width, height, gap, atEnd, offset)
template<class Body> void sweepImages(Body&& body)
{
    for (int w = 1; w <= 70; w++)
        body(w, 3, w % 3, true, size_t(0));
    for (int w : {100, 127, 128, 129, 200, 257, 513})
        body(w, 2, w % 2 ? 0 : 6, true, size_t(0));
    for (size_t offset = 0; offset < 33; offset++) {
        body(67, 2, int(offset % 4), offset % 2 == 0, offset);
        body(160, 2, 0, false, offset);
    }
}

// ---- AddC -----------------------------------------------------------------------------------------------------------

template<class T, class Table> void checkAddC(const Table& table, std::vector<int> factors)
{
    slots::each(table, [&](auto f, int) {
        uint32_t seed = 1;
        const auto run = [&](int w, int h, int gap, bool atEnd, size_t offset, T c, int s, bool down = false) {
            const std::vector<T> old = mixedValues<T>(size_t(w) * h, seed++);
            const Image<T> image(0, w, h, gap, atEnd, offset, down);
            image.fill(old);
            ASSERT_EQ(f(c, image.data(), image.step, {w, h}, s), qvrOk);
            const std::vector<T> got = image.read();
            for (size_t i = 0; i < got.size(); i++)
                ASSERT_EQ(got[i], model::scaledPixel(old[i], c, s))
                    << +old[i] << " + " << +c << " factor " << s << " width " << w;
            ASSERT_TRUE(image.gapsIntact()) << "width " << w << " factor " << s;
        };
        const T constants[] = {0, 1, 2, 7, T(std::numeric_limits<T>::max() / 2), std::numeric_limits<T>::max()};
        for (int s : factors)
            for (T c : constants)
                run(129, 2, 3, true, 0, c, s);
        int k = 0;
        sweepImages([&](int w, int h, int gap, bool atEnd, size_t offset) {
            for (int s : {0, 1, 3, -2, -20}) {
                run(w, h, gap, atEnd, offset, constants[k % 6], s, k % 4 == 0);
                k++;
            }
        });
    });
}

TEST(AddC, Bytes)
{
    const Budget one(1);
    checkAddC<uint8_t>(qvrTable_qvriAddC_8u_C1IRSfs,
                       {0, 1, 2, 3, 5, 8, 9, 10, 11, 31, INT32_MAX, -1, -2, -6, -7, -8, -9, -31, INT32_MIN});
}
TEST(AddC, Words)
{
    checkAddC<uint16_t>(qvrTable_qvriAddC_16u_C1IRSfs, {0,         1,  2,  3,  9,  10,  16,  17,  18,  19,  31,
                                                        INT32_MAX, -1, -2, -7, -8, -14, -15, -16, -17, -31, INT32_MIN});
}

// All sums of bytes under all factors.
TEST(AddC, EveryByte)
{
    const Budget one(1);
    slots::each(qvrTable_qvriAddC_8u_C1IRSfs, [](auto f, int) {
        for (int s = -9; s <= 11; s++)
            for (int c = 0; c < 256; c++) {
                uint8_t p[256];
                for (int i = 0; i < 256; i++)
                    p[i] = uint8_t(i);
                ASSERT_EQ(f(uint8_t(c), p, 16, {16, 16}, s), qvrOk);
                for (int i = 0; i < 256; i++)
                    ASSERT_EQ(p[i], model::scaledPixel(uint8_t(i), uint8_t(c), s))
                        << i << " + " << c << " factor " << s;
            }
    });
}

TEST(AddC, NothingIsWrittenForNothing)
{
    // The page of the image may as well be read-only.
    slots::each(qvrTable_qvriAddC_8u_C1IRSfs, [](auto f, int) {
        static const uint8_t image[64] = {1, 2, 3};
        EXPECT_EQ(f(0, const_cast<uint8_t*>(image), 8, {8, 8}, 0), qvrOk);
    });
    slots::each(qvrTable_qvriAddC_16u_C1IRSfs, [](auto f, int) {
        static const uint16_t image[64] = {1, 2, 3};
        EXPECT_EQ(f(0, const_cast<uint16_t*>(image), 16, {8, 8}, 0), qvrOk);
    });
}

template<class T, class Table> void checkAddStatuses(const Table& table)
{
    slots::each(table, [](auto f, int) {
        std::vector<T> image(64, 7);
        for (int s : {0, 1, 5, 40, -3, -40}) {
            for (qvriSize bad : {qvriSize{0, 8}, {8, 0}, {-1, 8}, {8, INT32_MIN}}) {
                EXPECT_EQ(f(1, image.data(), 8, bad, s), qvrErrBadSize);
                EXPECT_EQ(f(1, nullptr, 8, bad, s), qvrErrNullPointer);
                EXPECT_EQ(f(0, image.data(), 8, bad, s), qvrErrBadSize);
            }
            EXPECT_EQ(f(1, nullptr, 8, {8, 8}, s), qvrErrNullPointer);
            EXPECT_EQ(f(0, nullptr, 8, {8, 8}, s), qvrErrNullPointer);
        }
        EXPECT_EQ(std::count(image.begin(), image.end(), 7), 64);
    });
}
TEST(AddC, Statuses)
{
    checkAddStatuses<uint8_t>(qvrTable_qvriAddC_8u_C1IRSfs);
    checkAddStatuses<uint16_t>(qvrTable_qvriAddC_16u_C1IRSfs);
}

TEST(AddC, RegionsOfBytes)
{
    slots::each(qvrTable_qvriAddC_8u_C1IRSfs, [](auto f, int slot) {
        for (int budget : {1, 2, 3})
            for (int s : {0, 1, 4, -3, -9})
                for (auto [w, h] : {std::pair{20, 11}, {200, 55}, {200, 56}, {1, 1}, {5, 400}}) {
                    const Budget b(budget);
                    std::vector<uint8_t> image = randomValues<uint8_t>(size_t(w) * h, 3), old = image;
                    const int forks = regions::forks();
                    const uint8_t c = s < -7 ? 0 : 9;
                    ASSERT_EQ(f(c, image.data(), w, {w, h}, s), qvrOk);
                    for (size_t i = 0; i < image.size(); i++)
                        ASSERT_EQ(image[i], model::scaledPixel(old[i], c, s));
                    const bool region = slot != slots::mx && budget > 1 && (s < 1 || w + h >= 256);
                    if (regions::counted()) {
                        EXPECT_EQ(regions::forks() - forks, region) << s << " " << w << "x" << h;
                        if (region)
                            EXPECT_EQ(regions::lastRequested(), budget);
                    }
                }
    });
}

// ---- Set, masked copy, widening -------------------------------------------------------------------------------------

TEST(Set16, Fills)
{
    slots::each(qvrTable_qvriSet_16u_C1R, [](auto f, int) {
        sweepImages([&](int w, int h, int gap, bool atEnd, size_t offset) {
            const Image<uint16_t> image(0, w, h, gap, atEnd, offset, w % 5 == 0);
            ASSERT_EQ(f(0xA1B2, image.data(), image.step, {w, h}), qvrOk);
            for (uint16_t v : image.read())
                ASSERT_EQ(v, 0xA1B2);
            ASSERT_TRUE(image.gapsIntact());
        });
        uint16_t x = 5;
        EXPECT_EQ(f(1, nullptr, 2, {0, 1}), qvrErrNullPointer);
        EXPECT_EQ(f(1, &x, 2, {0, 1}), qvrErrBadSize);
        EXPECT_EQ(f(1, &x, 2, {1, -1}), qvrErrBadSize);
        EXPECT_EQ(x, 5);
    });
}

TEST(Set16, PastTheCaches)
{
    const BelievedCache small(1 << 16);
    slots::each(qvrTable_qvriSet_16u_C1R, [](auto f, int) {
        for (int gap : {0, 2})
            for (size_t offset : {0, 1, 2, 30}) {
                const Image<uint16_t> image(0, 1000, 1100, gap, true, offset);
                ASSERT_EQ(f(0x1234, image.data(), image.step, {1000, 1100}), qvrOk);
                for (uint16_t v : image.read())
                    ASSERT_EQ(v, 0x1234);
                ASSERT_TRUE(image.gapsIntact());
            }
    });
}

TEST(CopyMasked, CopiesWhereTheMaskIsSet)
{
    slots::each(qvrTable_qvriCopy_16u_C1MR, [](auto f, int) {
        uint32_t seed = 1;
        sweepImages([&](int w, int h, int gap, bool atEnd, size_t offset) {
            for (int kind : {0, 1, 2, 3}) {
                const Image<uint16_t> src(0, w, h, gap, atEnd, offset, kind == 1);
                const Image<uint16_t> dst(1, w, h, kind == 2 ? 0 : gap, atEnd, offset / 2, kind == 3);
                const Image<uint8_t> mask(2, w, h, kind == 2 ? 0 : gap, atEnd, offset / 3);
                const auto s = randomValues<uint16_t>(size_t(w) * h, seed++),
                           d = randomValues<uint16_t>(size_t(w) * h, seed++);
                std::vector<uint8_t> m(size_t(w) * h);
                for (size_t i = 0; i < m.size(); i++) // runs of zeros and of ones, and mixtures
                    m[i] = kind == 0           ? 0
                           : (i / 37) % 3 == 0 ? 0
                           : (i / 37) % 3 == 1 ? uint8_t(1 + i) | 1
                                               : uint8_t((i * 7) % 3);
                src.fill(s);
                dst.fill(d);
                mask.fill(m);
                ASSERT_EQ(f(src.data(), src.step, dst.data(), dst.step, {w, h}, mask.data(), mask.step), qvrOk);
                const auto got = dst.read();
                for (size_t i = 0; i < got.size(); i++)
                    ASSERT_EQ(got[i], m[i] ? s[i] : d[i]) << "width " << w << " at " << i;
                ASSERT_TRUE(dst.gapsIntact() && src.memory.intact() && mask.memory.intact());
            }
        });
        uint16_t x = 5, y = 6;
        uint8_t m = 1;
        for (qvriSize size : {qvriSize{1, 1}, {0, 1}}) {
            EXPECT_EQ(f(nullptr, 2, &y, 2, size, &m, 1), qvrErrNullPointer);
            EXPECT_EQ(f(&x, 2, nullptr, 2, size, &m, 1), qvrErrNullPointer);
            EXPECT_EQ(f(&x, 2, &y, 2, size, nullptr, 1), qvrErrNullPointer);
        }
        EXPECT_EQ(f(&x, 2, &y, 2, {0, 1}, &m, 1), qvrErrBadSize);
        EXPECT_EQ(f(&x, 2, &y, 2, {1, 0}, &m, 1), qvrErrBadSize);
        EXPECT_EQ(y, 6);
    });
}

template<class T, class Table> void checkWiden(const Table& table)
{
    slots::each(table, [](auto f, int) {
        uint32_t seed = 1;
        const auto run = [&](int w, int h, int gap, int dstGap, bool atEnd, size_t offset) {
            const Image<uint8_t> src(0, w, h, gap, atEnd, offset);
            const Image<T> dst(1, w, h, dstGap, atEnd, offset / 2);
            const auto s = randomValues<uint8_t>(size_t(w) * h, seed++);
            src.fill(s);
            ASSERT_EQ(f(src.data(), src.step, dst.data(), dst.step, {w, h}), qvrOk);
            const auto got = dst.read();
            for (size_t i = 0; i < got.size(); i++)
                ASSERT_EQ(got[i], s[i]) << "width " << w << " at " << i;
            ASSERT_TRUE(dst.gapsIntact() && src.memory.intact());
        };
        sweepImages([&](int w, int h, int gap, bool atEnd, size_t offset) {
            run(w, h, gap, 2 * gap, atEnd, offset);
            run(w, h, 0, 0, atEnd, offset);
        });
        for (int cache : {1 << 16, 1 << 30}) {
            const BelievedCache believed(cache);
            for (size_t offset : {0, 1, 4, 62})
                run(701, 400, offset == 4 ? 3 : 0, offset == 4 ? 1 : 0, true, offset);
        }
        uint8_t x[2] = {1, 2};
        T y[2] = {3, 4};
        struct Args {
            const uint8_t* src;
            int srcStep;
            T* dst;
            int dstStep;
            qvriSize size;
        };
        for (int bad : {0, -1, INT32_MIN})
            expectStatusOrder<Args>(
                {x, 1, y, 2, {1, 1}},
                {{"src", qvrErrNullPointer, [](Args& a) { a.src = nullptr; }},
                 {"dst", qvrErrNullPointer, [](Args& a) { a.dst = nullptr; }},
                 {"width", qvrErrBadSize, [=](Args& a) { a.size.width = bad; }},
                 {"height", qvrErrBadSize, [=](Args& a) { a.size.height = bad; }},
                 {"source step", qvrErrBadStep, [=](Args& a) { a.srcStep = bad; }},
                 {"step", qvrErrBadStep, [=](Args& a) { a.dstStep = bad; }}},
                [&](const Args& a) { return f(a.src, a.srcStep, a.dst, a.dstStep, a.size); },
                [&] { return y[0] == 3; });
    });
}
TEST(Widen, Unsigned)
{
    checkWiden<uint16_t>(qvrTable_qvriConvert_8u16u_C1R);
}
TEST(Widen, Signed)
{
    checkWiden<int16_t>(qvrTable_qvriConvert_8u16s_C1R);
}

// ---- Palettes -------------------------------------------------------------------------------------------------------

template<class S, class T, class Table> void checkPalette(const Table& table)
{
    slots::each(table, [](auto f, int) {
        uint32_t seed = 1;
        for (int bits = 1; bits <= int(8 * sizeof(S)); bits++) {
            // The palette ends at an unreadable page: no entry beyond 2^bits.
            const size_t entries = size_t{1} << bits;
            const auto palette = randomValues<T>(entries, uint32_t(bits));
            Guarded& memory = pooledGuarded(2, entries * sizeof(T) + 64);
            T* const table_ = memory.atEnd<T>(entries * sizeof(T), size_t(bits) % 3);
            memcpy(static_cast<void*>(table_), palette.data(), entries * sizeof(T));
            const auto run = [&](int w, int h, int gap, bool atEnd, size_t offset) {
                const Image<S> src(0, w, h, gap, atEnd, offset);
                const Image<T> dst(1, w, h, gap, atEnd, offset / 2);
                const auto s = randomValues<S>(size_t(w) * h, seed++);
                src.fill(s);
                ASSERT_EQ(f(src.data(), src.step, dst.data(), dst.step, {w, h}, table_, bits), qvrOk);
                const auto got = dst.read();
                for (size_t i = 0; i < got.size(); i++)
                    ASSERT_EQ(got[i], palette[s[i] & (entries - 1)]) << "bits " << bits << " width " << w;
                ASSERT_TRUE(dst.gapsIntact() && src.memory.intact());
            };
            run(300, 2, 1, true, 0);
            if (bits == 3 || bits == int(8 * sizeof(S)))
                sweepImages(run);
        }
        S x[2] = {1, 0};
        T y[2] = {3, 3}, t[2] = {8, 9};
        struct Args {
            const S* src;
            int srcStep;
            T* dst;
            int dstStep;
            qvriSize size;
            const T* table;
            int bits;
        };
        for (int bad : {0, -1, int(8 * sizeof(S)) + 1, INT32_MAX, INT32_MIN})
            expectStatusOrder<Args>(
                {x, 2 * sizeof(S), y, 2 * sizeof(T), {2, 1}, t, 1},
                {{"src", qvrErrNullPointer, [](Args& a) { a.src = nullptr; }},
                 {"dst", qvrErrNullPointer, [](Args& a) { a.dst = nullptr; }},
                 {"table", qvrErrNullPointer, [](Args& a) { a.table = nullptr; }},
                 {"width", qvrErrBadSize, [=](Args& a) { a.size.width = 0; }},
                 {"height", qvrErrBadSize, [=](Args& a) { a.size.height = -3; }},
                 {"bits", qvrErrBadBitSize, [=](Args& a) { a.bits = bad; }},
                 {"source step", qvrErrBadStep, [=](Args& a) { a.srcStep = 2 * sizeof(S) - 1; }},
                 {"step", qvrErrBadStep, [=](Args& a) { a.dstStep = 2 * sizeof(T) - 1; }}},
                [&](const Args& a) { return f(a.src, a.srcStep, a.dst, a.dstStep, a.size, a.table, a.bits); },
                [&] { return y[0] == 3 && y[1] == 3; });
    });
}
TEST(Palette, BytesToBytes)
{
    checkPalette<uint8_t, uint8_t>(qvrTable_qvriLUTPalette_8u_C1R);
}
TEST(Palette, BytesToWords)
{
    checkPalette<uint8_t, uint32_t>(qvrTable_qvriLUTPalette_8u32u_C1R);
}
TEST(Palette, HalvesToBytes)
{
    checkPalette<uint16_t, uint8_t>(qvrTable_qvriLUTPalette_16u8u_C1R);
}
TEST(Palette, HalvesToWords)
{
    checkPalette<uint16_t, uint32_t>(qvrTable_qvriLUTPalette_16u32u_C1R);
}

// ---- Block extremes -------------------------------------------------------------------------------------------------

TEST(BlockMinMax, AgainstTheDefinition)
{
    slots::each(qvrTable_qvriBlockMinMax_16s_C1R, [](auto f, int) {
        uint32_t seed = 1;
        const auto run = [&](int w, int h, int bw, int bh) {
            const Image<int16_t> src(0, w, h, int(seed % 3) * 2, true, seed % 2);
            const auto s = mixedValues<int16_t>(size_t(w) * h, seed++);
            src.fill(s);
            const int nx = (w - 1) / bw + 1, ny = (h - 1) / bh + 1;
            const Image<int16_t> low(1, nx, ny, 4, true, 1), high(2, nx, ny, 0, true, 0);
            int16_t all[2];
            ASSERT_EQ(f(src.data(), src.step, {w, h}, low.data(), low.step, high.data(), high.step, {bw, bh}, &all[0],
                        &all[1]),
                      qvrOk);
            for (int by = 0; by < ny; by++)
                for (int bx = 0; bx < nx; bx++) {
                    int16_t a = INT16_MAX, b = INT16_MIN;
                    for (int y = by * bh; y < std::min<int64_t>(h, int64_t{by + 1} * bh); y++)
                        for (int x = bx * bw; x < std::min<int64_t>(w, int64_t{bx + 1} * bw); x++) {
                            a = std::min(a, s[size_t(y) * w + x]);
                            b = std::max(b, s[size_t(y) * w + x]);
                        }
                    ASSERT_EQ(low.get(bx, by), a) << w << "x" << h << " blocks " << bw << "x" << bh;
                    ASSERT_EQ(high.get(bx, by), b) << w << "x" << h << " blocks " << bw << "x" << bh;
                }
            EXPECT_EQ(all[0], *std::min_element(s.begin(), s.end()));
            EXPECT_EQ(all[1], *std::max_element(s.begin(), s.end()));
            ASSERT_TRUE(low.gapsIntact() && high.gapsIntact() && src.memory.intact());
        };
        for (int w = 1; w <= 70; w++)
            for (auto [bw, bh] : {std::pair{16, 16}, {1, 1}, {3, 2}, {7, 5}, {8, 8}, {64, 3}, {INT32_MAX, INT32_MAX}})
                run(w, 17, bw, bh);
        for (auto [bw, bh] : {std::pair{16, 16}, {500, 16}, {17, 4}, {511, 1}, {512, 2}, {513, 3}, {600, 40}, {16, 15}})
            run(1100, 33, bw, bh);
        run(3, 40, 16, 16);
        run(160, 16, 16, 16);
    });
}

TEST(BlockMinMax, Statuses)
{
    slots::each(qvrTable_qvriBlockMinMax_16s_C1R, [](auto f, int) {
        int16_t src[40] = {}, low[4] = {9, 9, 9, 9}, high[4] = {9, 9, 9, 9}, all[2] = {9, 9};
        struct Args {
            const int16_t* src;
            int step;
            qvriSize size;
            int16_t* low;
            int lowStep;
            int16_t* high;
            int highStep;
            qvriSize block;
            int16_t *least, *most;
        };
        using F = Fault<Args>;
        expectStatusOrder<Args>(
            {src, 40, {20, 1}, low, 4, high, 4, {16, 16}, &all[0], &all[1]},
            {F{"src", qvrErrNullPointer, [](Args& a) { a.src = nullptr; }},
             F{"low", qvrErrNullPointer, [](Args& a) { a.low = nullptr; }},
             F{"high", qvrErrNullPointer, [](Args& a) { a.high = nullptr; }},
             F{"least", qvrErrNullPointer, [](Args& a) { a.least = nullptr; }},
             F{"most", qvrErrNullPointer, [](Args& a) { a.most = nullptr; }},
             F{"width", qvrErrBadSize, [](Args& a) { a.size.width = 0; }},
             F{"height", qvrErrBadSize, [](Args& a) { a.size.height = -1; }},
             F{"block width", qvrErrBadSize, [](Args& a) { a.block.width = 0; }},
             F{"block height", qvrErrBadSize, [](Args& a) { a.block.height = INT32_MIN; }},
             F{"step", qvrErrBadStep, [](Args& a) { a.step = 39; }},
             F{"low step", qvrErrBadStep, [](Args& a) { a.lowStep = 3; }},
             F{"high step", qvrErrBadStep, [](Args& a) { a.highStep = -4; }}},
            [&](const Args& a) {
                return f(a.src, a.step, a.size, a.low, a.lowStep, a.high, a.highStep, a.block, a.least, a.most);
            },
            [&] { return low[0] == 9 && high[0] == 9 && all[0] == 9 && all[1] == 9; });
        EXPECT_EQ(f(src, INT32_MAX, {INT32_MAX, 1}, low, 4, high, 4, {16, 16}, &all[0], &all[1]), qvrErrBadStep);
    });
}

// ---- Rows of byte pairs ---------------------------------------------------------------------------------------------

TEST(TiffRows, SplitAndJoin)
{
    slots::each(qvrTable_qvriSplitRow_TIFF_16u8u_C1, [](auto split, int slot) {
        const auto join = qvrTable_qvriJoinRow_TIFF_8u16u_C1[slot];
        for (int n = 1; n <= 140; n++)
            for (size_t offset : {0, 1, 7}) {
                const auto bytes = randomValues<uint8_t>(size_t(n) * 2, uint32_t(n));
                Guarded &a = pooledGuarded(0, 512), &b = pooledGuarded(1, 512), &c = pooledGuarded(2, 512),
                        &d = pooledGuarded(3, 512);
                uint8_t* src = a.atEnd<uint8_t>(size_t(n) * 2, offset);
                uint8_t* planes[2] = {b.atEnd<uint8_t>(size_t(n), offset), c.atEnd<uint8_t>(size_t(n))};
                memcpy(src, bytes.data(), bytes.size());
                ASSERT_EQ(split(src, planes, n), qvrOk);
                for (int i = 0; i < n; i++) {
                    ASSERT_EQ(planes[0][i], bytes[size_t(2 * i + 1)]);
                    ASSERT_EQ(planes[1][i], bytes[size_t(2 * i)]);
                }
                uint8_t* dst = d.atEnd<uint8_t>(size_t(n) * 2, offset);
                ASSERT_EQ(join(planes, dst, n), qvrOk);
                ASSERT_EQ(memcmp(dst, src, bytes.size()), 0);
                ASSERT_TRUE(a.intact() && b.intact() && c.intact() && d.intact());
            }
    });
}

TEST(TiffRows, Statuses)
{
    slots::each(qvrTable_qvriSplitRow_TIFF_16u8u_C1, [](auto split, int slot) {
        const auto join = qvrTable_qvriJoinRow_TIFF_8u16u_C1[slot];
        uint8_t src[4] = {}, p[2] = {};
        uint8_t* planes[2] = {p, p + 1};
        uint8_t* hole[2] = {p, nullptr};
        uint8_t* hole2[2] = {nullptr, p};
        EXPECT_EQ(split(nullptr, planes, 0), qvrErrNullPointer);
        EXPECT_EQ(split(src, nullptr, 0), qvrErrNullPointer);
        EXPECT_EQ(split(src, planes, 0), qvrErrBadStep);
        EXPECT_EQ(split(src, planes, -1), qvrErrBadStep);
        EXPECT_EQ(join(nullptr, src, 0), qvrErrNullPointer);
        EXPECT_EQ(join(planes, nullptr, 0), qvrErrNullPointer);
        EXPECT_EQ(join(planes, src, 0), qvrErrBadStep);
        for (auto* bad : {hole, hole2}) {
            EXPECT_EQ(split(src, bad, 0), qvrErrBadStep); // the length before the planes
            EXPECT_EQ(split(src, bad, 1), qvrErrNullPointer);
            EXPECT_EQ(join(bad, src, 0), qvrErrNullPointer); // the planes before the length
            EXPECT_EQ(join(bad, src, 1), qvrErrNullPointer);
        }
    });
}

} // namespace
