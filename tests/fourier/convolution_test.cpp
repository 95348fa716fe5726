#include "fourier/address_space.h"
#include "fourier/slot_tables.h"
#include "fourier/sum_statuses.h"
#include "fourier/sums.h"
#include "support/allocation.h"
#include "support/budget.h"
#include "support/guarded.h"
#include "support/regions.h"
#include "support/slots.h"
#include "support/status_order.h"
#include "support/values.h"

#include "frame/threads.h"

namespace {

using sums::Signal;

constexpr int kMx = 0, kL9 = 6;

// One term added as the slot adds it.
float addTerm(int slot, float a, float b, float sum)
{
    return slot == kL9 ? std::fma(a, b, sum) : sum + a * b;
}

// The order of the contract: each result adds the shorter source's terms to zero, the first source being the longer one
// of two equal ones.
Signal plainModel(int slot, const Signal& a, const Signal& b)
{
    const bool swap = a.size() < b.size();
    const Signal &longer = swap ? b : a, &shorter = swap ? a : b;
    Signal y(a.size() + b.size() - 1);
    for (size_t j = 0; j < shorter.size(); j++)
        for (size_t i = 0; i < longer.size(); i++)
            y[i + j] = addTerm(slot, shorter[j], longer[i], y[i + j]);
    return y;
}

struct Placed {
    Guarded& memory;
    float* p;
    Placed(size_t use, const Signal& values, size_t offset) : memory(pooledGuarded(use, values.size() * 4 + 128))
    {
        p = memory.atEnd<float>(values.size() * 4, offset);
        memcpy(static_cast<void*>(p), values.data(), values.size() * 4);
    }
    Placed(size_t use, size_t count, size_t offset) : memory(pooledGuarded(use, count * 4 + 128))
    {
        p = memory.atEnd<float>(count * 4, offset);
    }
    Signal read(size_t count) const
    {
        Signal v(count);
        memcpy(v.data(), static_cast<void*>(p), count * 4);
        return v;
    }
};

Signal convolve(decltype(Morven_qvrsConv_32f)* f, const Signal& a, const Signal& b, size_t offset = 0)
{
    Placed x(1, a, offset), y(2, b, offset / 2), z(3, a.size() + b.size() - 1, offset);
    EXPECT_EQ(f(x.p, static_cast<int>(a.size()), y.p, static_cast<int>(b.size()), z.p), qvrOk);
    EXPECT_TRUE(x.memory.intact() && y.memory.intact() && z.memory.intact());
    return z.read(a.size() + b.size() - 1);
}

void expectSameBits(const Signal& got, const Signal& want, const std::string& what)
{
    ASSERT_EQ(got.size(), want.size());
    for (size_t i = 0; i < got.size(); i++)
        ASSERT_TRUE(sameValue(got[i], want[i]))
            << what << ", result " << i << ": got " << got[i] << ", want " << want[i];
}
void expectNear(const Signal& got, const std::vector<sums::Exact>& want, double bound, const std::string& what)
{
    ASSERT_EQ(got.size(), want.size());
    for (size_t i = 0; i < got.size(); i++)
        ASSERT_LE(std::fabs(got[i] - static_cast<double>(want[i])), bound) << what << ", result " << i;
}
std::string sizes(size_t a, size_t b)
{
    return std::to_string(a) + " by " + std::to_string(b);
}

TEST(Conv, PlainSumsInTheirOrder)
{
    slots::each(qvrTable_qvrsConv_32f, [&](auto f, int slot) {
        const auto run = [&](size_t n1, size_t n2, size_t offset) {
            const Signal a = randomValues<float>(n1, static_cast<uint32_t>(n1), -1, 1);
            const Signal b = randomValues<float>(n2, static_cast<uint32_t>(n2 + 7), -1, 1);
            expectSameBits(convolve(f, a, b, offset), plainModel(slot, a, b), sizes(n1, n2));
        };
        for (size_t n1 = 1; n1 <= 40; n1++)
            for (size_t n2 = 1; n2 <= 40; n2++)
                run(n1, n2, 0);
        const size_t shorterMost = slot == kMx ? 31 : 63, resultsMost = slot == kMx ? 149 : 511;
        for (size_t n2 : {size_t{1}, size_t{5}, size_t{17}, shorterMost})
            for (size_t n1 : {95, 96, 97, 127, 200, 600, 4095, 4096, 4097, 9000})
                run(n1, n2, 4);
        for (size_t n2 : {size_t{64}, (resultsMost + 1) / 2})
            run(resultsMost + 1 - n2, n2, 0);
        run(shorterMost, 700, 0);
        for (size_t offset = 0; offset < 64; offset++)
            run(130, 19, offset);
    });
}

TEST(Conv, WhatIsNotFiniteStaysWithItsResults)
{
    slots::each(qvrTable_qvrsConv_32f, [&](auto f, int slot) {
        for (size_t n1 : {1, 9, 60, 100, 300})
            for (size_t n2 : {1, 3, 20, 31})
                for (uint32_t seed = 0; seed < 4; seed++) {
                    const Signal a = mixedValues<float>(n1, seed), b = mixedValues<float>(n2, seed + 9);
                    Signal quiet = randomValues<float>(n1, seed);
                    expectSameBits(convolve(f, a, b), plainModel(slot, a, b), sizes(n1, n2));
                    expectSameBits(convolve(f, quiet, b), plainModel(slot, quiet, b), sizes(n1, n2));
                    quiet[n1 / 2] = INFINITY;
                    expectSameBits(convolve(f, quiet, b), plainModel(slot, quiet, b), sizes(n1, n2));
                }
    });
}

TEST(Conv, ProductsOfSpectra)
{
    slots::each(qvrTable_qvrsConv_32f, [&](auto f, int slot) {
        std::vector<std::pair<size_t, size_t>> shapes = {{449, 64},  {64, 449},  {300, 213},  {256, 257},  {512, 512},
                                                         {1000, 64}, {64, 1000}, {4096, 64},  {4097, 64},  {70, 5000},
                                                         {191, 64},  {192, 64},  {1000, 999}, {3000, 1000}};
        if (slot == kMx)
            shapes.insert(shapes.end(), {{120, 31}, {119, 32}, {75, 75}, {75, 76}, {10000, 40}, {96, 32}, {95, 55}});
        shapes.insert(shapes.end(), {{20000, 300}, {300, 20000}, {9000, 9000}, {40000, 2049}, {100000, 64}});
        for (const auto& [n1, n2] : shapes) {
            const Signal a = randomValues<float>(n1, 1, -1, 1), b = randomValues<float>(n2, 2, -1, 1);
            expectNear(convolve(f, a, b), sums::convolution(a, b), sums::spectrumBound(a, b), sizes(n1, n2));
        }
    });
}

// Equal terms are the worst case of a plain sum; products of spectra add long sums pair by pair.
TEST(Conv, LongSumsKeepTheirDigits)
{
    slots::each(qvrTable_qvrsConv_32f, [&](auto f, int) {
        for (const auto& [n1, n2] :
             {std::pair<size_t, size_t>{63, 5000}, {5000, 5000}, {100000, 1000}, {2000, 100000}}) {
            const Signal a(n1, 0.1f), b(n2, 0.1f), y = convolve(f, a, b);
            const double largest = double(a[0]) * b[0] * static_cast<double>(std::min(n1, n2));
            for (size_t n = 0; n < y.size(); n++) {
                const size_t terms = std::min({n + 1, n1, n2, y.size() - n});
                ASSERT_NEAR(y[n], double(a[0]) * b[0] * static_cast<double>(terms), 2e-6 * largest)
                    << sizes(n1, n2) << ", result " << n;
            }
        }
    });
}

// An impulse comes back as the other source, so a wrong seam of blocks shows at its place.
TEST(Conv, SeamsOfBlocks)
{
    slots::each(qvrTable_qvrsConv_32f, [&](auto f, int) {
        const size_t n1 = 3000, n2 = 64;
        Signal a(n1), b(n2);
        for (size_t j = 0; j < n2; j++)
            b[j] = static_cast<float>(j + 1);
        for (size_t at = 0; at < n1; at += 61)
            a[at] = static_cast<float>(at % 5) + 1;
        expectNear(convolve(f, a, b), sums::convolution(a, b), 64 * 0x1p-24 * sums::norm(a) * sums::norm(b), "seams");
    });
}

TEST(Conv, ThreadsDoNotChangeTheResult)
{
    slots::each(qvrTable_qvrsConv_32f, [&](auto f, int) {
        const Signal a = randomValues<float>(9001, 1, -1, 1), b = randomValues<float>(100, 2, -1, 1);
        const Signal short_ = Signal(a.begin(), a.begin() + 4096);
        Signal one, shortOne;
        for (int budget : {1, 2, 3}) {
            Budget set(budget);
            const int before = regions::forks();
            const Signal got = convolve(f, a, b);
            if (regions::counted()) {
                EXPECT_EQ(regions::forks() - before, 1);
                EXPECT_EQ(regions::lastRequested(), budget);
            }
            const int between = regions::forks();
            const Signal shortGot = convolve(f, short_, b);
            EXPECT_EQ(regions::forks() - between, 0);
            if (budget == 1) {
                one = got;
                shortOne = shortGot;
            }
            EXPECT_EQ(got, one) << budget;
            EXPECT_EQ(shortGot, shortOne) << budget;
        }
    });
}

TEST(Conv, FailingMemory)
{
    slots::each(qvrTable_qvrsConv_32f, [&](auto f, int) {
        for (size_t n1 : {300, 1000, 5000}) {
            const Signal a(n1, 1.0f), b(250, 1.0f), untouched(n1 + 249, 7.0f);
            Signal y = untouched;
            const int allocations =
                failEachAllocation([&] { return f(a.data(), static_cast<int>(n1), b.data(), 250, y.data()); },
                                   [&](int n, qvrStatus status, CountingAllocator& allocator) {
                                       EXPECT_EQ(status, qvrErrNoMemory) << n;
                                       EXPECT_EQ(allocator.live(), 0u);
                                       EXPECT_EQ(y, untouched);
                                   });
            EXPECT_GE(allocations, 2);
            EXPECT_NE(y, untouched);
        }
    });
}

// Plain sums need no memory; a product of spectra two arrays, and blocks a spectrum and a buffer that follow the
// shorter source.
TEST(Conv, Paths)
{
    slots::each(qvrTable_qvrsConv_32f, [&](auto f, int slot) {
        Budget set(1);
        const size_t results = slot == kMx ? 150 : 512, shorter = slot == kMx ? 32 : 64;
        const auto memory = [&](size_t n1, size_t n2) -> size_t {
            const Signal a(n1, 1.0f), b(n2, 1.0f);
            Signal y(n1 + n2 - 1);
            CountingAllocator allocator;
            EXPECT_EQ(f(a.data(), static_cast<int>(n1), b.data(), static_cast<int>(n2), y.data()), qvrOk);
            return allocator.allocations() == 0 ? 0 : allocator.lastSize() / 4;
        };
        for (const bool swap : {false, true}) {
            const auto path = [&](size_t n1, size_t n2) { return swap ? memory(n2, n1) : memory(n1, n2); };
            EXPECT_EQ(path(results - shorter, shorter), 0u);
            EXPECT_GT(path(results + 1 - shorter, shorter), 0u);
            EXPECT_EQ(path(5000, shorter - 1), 0u);
            EXPECT_GT(path(5000, shorter), 0u);
            EXPECT_EQ(path(9000, shorter - 1), 0u);
            EXPECT_GE(path(20000, 7000), 2 * 32768u); // one product
            EXPECT_LT(path(60000, 64), 4096u);        // blocks of 256 points for any length
        }
        // Blocks from three times the shorter source on: these fork.
        if (regions::counted())
            for (size_t n1 : {5999, 6000}) {
                const int before = regions::forks();
                memory(n1, 2000);
                EXPECT_EQ(regions::forks() - before, n1 == 6000 ? 1 : 0);
            }
    });
}

// Arrays that would pass 2^31 - 1 bytes are refused on every slot alike, before anything is built.
TEST(Conv, RefusesWhatCannotFit)
{
    const AddressSpace space(INT32_MAX);
    float* p = space.floats();
    slots::each(qvrTable_qvrsConv_32f, [&](auto f, int) {
        CountingAllocator allocator;
        const int quarter = 1 << 26;
        EXPECT_EQ(f(p, quarter + 1, p, quarter + 1, p), qvrErrNoMemory);
        EXPECT_EQ(f(p, quarter, p, INT32_MAX / 8, p), qvrErrNoMemory);
        EXPECT_EQ(f(p, INT32_MAX, p, INT32_MAX, p), qvrErrNoMemory);
        EXPECT_EQ(f(p, INT32_MAX, p, (1 << 25) + 1, p), qvrErrNoMemory);
        EXPECT_EQ(allocator.allocations(), 0);
    });
}

// A buffer for each thread of the budget, but for no more than there are blocks, and than 2^31 - 1 bytes hold.
TEST(Conv, MemoryFitsTheBudget)
{
    const AddressSpace space(700000000);
    float* p = space.floats();
    const int shorter = 1 << 21;
    const double block = 4.0 * (1 << 23); // bytes
    Budget set(64);
    slots::each(qvrTable_qvrsConv_32f, [&](auto f, int) {
        // The third allocation is that of the buffers, after the object and what makes it.
        {
            CountingAllocator allocator(2);
            EXPECT_EQ(f(p, 700000000, p, shorter, p), qvrErrNoMemory);
            EXPECT_EQ(allocator.allocations(), 3);
            EXPECT_GT(static_cast<double>(allocator.lastSize()), 61 * block);
            EXPECT_LT(allocator.lastSize(), size_t{1} << 31);
            EXPECT_EQ(allocator.live(), 0u);
        }
        CountingAllocator allocator(2);
        EXPECT_EQ(f(p, 3 * shorter, p, shorter, p), qvrErrNoMemory);
        EXPECT_EQ(allocator.allocations(), 3);
        EXPECT_LT(static_cast<double>(allocator.lastSize()), 3.5 * block);
    });
}

TEST(Conv, Statuses)
{
    struct Args {
        const float *a, *b;
        int n1, n2;
        float* y;
    };
    slots::each(qvrTable_qvrsConv_32f, [&](auto f, int) {
        float a[4] = {1, 2, 3, 4}, b[2] = {5, 6}, y[5] = {9, 9, 9, 9, 9};
        expectStatusOrder<Args>(
            {a, b, 4, 2, y},
            {{"pSrc1", qvrErrNullPointer, [](Args& x) { x.a = nullptr; }},
             {"pSrc2", qvrErrNullPointer, [](Args& x) { x.b = nullptr; }},
             {"pDst", qvrErrNullPointer, [](Args& x) { x.y = nullptr; }},
             {"len1", qvrErrBadSize, [](Args& x) { x.n1 = 0; }},
             {"len2", qvrErrBadSize, [](Args& x) { x.n2 = INT32_MIN; }}},
            [&](const Args& x) { return f(x.a, x.n1, x.b, x.n2, x.y); }, [&] { return y[0] == 9 && y[4] == 9; });
        // One array as both sources.
        EXPECT_EQ(f(a, 3, a, 3, y), qvrOk);
        EXPECT_EQ(std::vector<float>(y, y + 5), (std::vector<float>{1, 4, 10, 12, 9}));
    });
}

// ---- A stretch with bias --------------------------------------------------------------------------------------------

struct Stretch {
    int len1, len2, dstLen, bias;
};

// How the contract adds up a result: in the order of k; even and odd terms apart, joined before the last one; or, in
// the forms of any size without missing terms, eight partial sums over groups of eight, joined in their order before
// the rest.
enum class Terms { inOrder, halves, groups };

bool hasGroups(const Stretch& s)
{
    return (s.len1 == s.len2 && s.len2 == s.dstLen && s.bias == 0) ||
           (s.bias >= s.len1 - 1 && s.len2 >= int64_t{s.dstLen} + s.bias);
}

Signal biasedModel(int slot, const Signal& a, const Signal& b, const Stretch& s, Terms terms)
{
    Signal y(static_cast<size_t>(s.dstLen));
    for (int64_t n = 0; n < s.dstLen; n++) {
        // The terms that exist; the triangular form has those up to n.
        std::vector<std::pair<float, float>> t;
        for (int64_t k = 0; k < s.len1; k++) {
            const int64_t at = n + s.bias - k;
            if (at >= 0 && at < s.len2)
                t.emplace_back(a[static_cast<size_t>(k)], b[static_cast<size_t>(at)]);
        }
        const size_t partials = terms == Terms::halves ? 2 : terms == Terms::groups ? 8 : 1;
        const size_t grouped = t.size() - t.size() % partials;
        float partial[8] = {};
        for (size_t k = 0; k < grouped; k++)
            partial[k % partials] = addTerm(slot, t[k].first, t[k].second, partial[k % partials]);
        float sum = partial[0];
        for (size_t r = 1; r < partials; r++)
            sum += partial[r];
        for (size_t k = grouped; k < t.size(); k++)
            sum = addTerm(slot, t[k].first, t[k].second, sum);
        y[static_cast<size_t>(n)] = sum;
    }
    return y;
}

void checkStretch(decltype(Morven_qvrsConvBiased_32f)* f, int slot, const Stretch& s, size_t offset, Terms terms)
{
    const Signal a = randomValues<float>(static_cast<size_t>(s.len1), 3, -1, 1);
    const Signal b = randomValues<float>(static_cast<size_t>(s.len2), 4, -1, 1);
    Placed x(1, a, offset), y(2, b, offset), z(3, static_cast<size_t>(s.dstLen), offset);
    // The source pointer may lie far outside of its buffer.
    const float* biased =
        reinterpret_cast<const float*>(reinterpret_cast<uintptr_t>(y.p) + static_cast<uintptr_t>(int64_t{s.bias} * 4));
    ASSERT_EQ(f(x.p, s.len1, biased, s.len2, z.p, s.dstLen, s.bias), qvrOk);
    EXPECT_TRUE(x.memory.intact() && y.memory.intact() && z.memory.intact());
    expectSameBits(z.read(static_cast<size_t>(s.dstLen)), biasedModel(slot, a, b, s, terms),
                   sizes(a.size(), b.size()) + " to " + std::to_string(s.dstLen) + " bias " + std::to_string(s.bias));
}

TEST(ConvBiased, ShapesOfFixedSize)
{
    slots::each(qvrTable_qvrsConvBiased_32f, [&](auto f, int slot) {
        for (size_t offset : {0, 4, 1, 28}) {
            checkStretch(f, slot, {4, 45, 41, 4}, offset, Terms::inOrder);
            checkStretch(f, slot, {11, 50, 40, 10}, offset, Terms::inOrder);
            checkStretch(f, slot, {16, 56, 40, 16}, offset, Terms::inOrder);
            checkStretch(f, slot, {31, 70, 40, 30}, offset, Terms::halves);
            checkStretch(f, slot, {31, 110, 80, 30}, offset, Terms::halves);
            checkStretch(f, slot, {40, 40, 40, 0}, offset, Terms::inOrder);
            checkStretch(f, slot, {60, 60, 60, 0}, offset, slot == kL9 ? Terms::groups : Terms::inOrder);
            // One member off.
            checkStretch(f, slot, {4, 45, 40, 4}, offset, Terms::groups);
            checkStretch(f, slot, {30, 70, 40, 30}, offset, Terms::groups);
            checkStretch(f, slot, {40, 40, 40, 1}, offset, Terms::inOrder);
        }
    });
}

TEST(ConvBiased, AnyStretch)
{
    slots::each(qvrTable_qvrsConvBiased_32f, [&](auto f, int slot) {
        for (int len1 : {1, 2, 7, 16, 33, 100})
            for (int len2 : {1, 3, 8, 40, 130})
                for (int dstLen : {1, 5, 8, 41, 97, 200})
                    for (int bias : {0, 1, -1, 7, 15, -20, 90, 129, -98, 300, -300, INT32_MIN, INT32_MAX}) {
                        const Stretch s = {len1, len2, dstLen, bias};
                        checkStretch(f, slot, s, 4, hasGroups(s) ? Terms::groups : Terms::inOrder);
                    }
    });
}

// Without a missing term, and the triangular form: lengths round the groups of eight, the blocks of results, and the
// stretch of terms that stays in the cache.
TEST(ConvBiased, GroupsOfEight)
{
    slots::each(qvrTable_qvrsConvBiased_32f, [&](auto f, int slot) {
        for (int n = 1; n <= 130; n++)
            if (n != 40 && n != 60)
                checkStretch(f, slot, {n, n, n, 0}, n % 16 * 4, Terms::groups);
        for (int len1 : {1, 7, 8, 9, 24, 31, 64, 100})
            for (int dstLen : {1, 2, 7, 8, 9, 23, 24, 25, 47, 48, 49, 100})
                for (int more : {0, 3})
                    checkStretch(f, slot, {len1, len1 - 1 + more + dstLen + more, dstLen, len1 - 1 + more}, 4,
                                 Terms::groups);
        for (int dstLen : {3, 60})
            for (int len1 : {2047, 2048, 2056, 5000})
                checkStretch(f, slot, {len1, len1 - 1 + dstLen, dstLen, len1 - 1}, 4, Terms::groups);
        checkStretch(f, slot, {2200, 2200, 2200, 0}, 4, Terms::groups);
    });
}

// Equal terms are the worst case of a sum: all of its roundings can lean to one side.
TEST(ConvBiased, LongSumsKeepTheirDigits)
{
    slots::each(qvrTable_qvrsConvBiased_32f, [&](auto f, int) {
        const int taps = 1000000, results = 20;
        const Signal a(static_cast<size_t>(taps), 0.1f), b(static_cast<size_t>(taps + results), 0.1f);
        const double want = double(a[0]) * b[0] * taps;
        for (int bias : {taps - 1, taps + 1}) { // all terms, and the form that leaves some out
            Signal y(static_cast<size_t>(results));
            ASSERT_EQ(f(a.data(), taps, b.data() + bias, taps + results, y.data(), results, bias), qvrOk);
            for (int n = 0; n < results; n++) {
                const int terms = bias + n < taps + results ? taps : taps - (bias + n - (taps + results - 1));
                EXPECT_NEAR(y[static_cast<size_t>(n)], want * terms / taps, 2e-3 * want) << bias << " result " << n;
            }
        }
    });
}

TEST(ConvBiased, TermsOutsideAreLeftOut)
{
    slots::each(qvrTable_qvrsConvBiased_32f, [&](auto f, int) {
        Signal a(20, 1.0f), y(40);
        const Signal b(20, 1.0f);
        a[0] = NAN;
        a[19] = INFINITY;
        ASSERT_EQ(f(a.data(), 20, b.data(), 20, y.data(), 40, 0), qvrOk);
        for (size_t n = 0; n < 40; n++) {
            EXPECT_EQ(std::isnan(y[n]), n < 20) << n;
            EXPECT_EQ(std::isinf(y[n]), n >= 20 && n < 39) << n;
        }
        EXPECT_EQ(y[39], 0);
    });
}

TEST(ConvBiased, Statuses)
{
    checkSumStatuses(qvrTable_qvrsConvBiased_32f);
}

TEST(ConvCyclic8x8, OneTermAfterTheOther)
{
    slots::each(qvrTable_qvrsConvCyclic8x8_32f, [&](auto f, int slot) {
        for (uint32_t seed = 0; seed < 20; seed++)
            for (size_t offset : {0, 4, 7}) {
                const Signal x = randomValues<float>(8, seed, -1, 1), h = randomValues<float>(8, seed + 50, -1, 1);
                Placed px(1, x, offset), ph(2, h, offset), py(3, 8, offset);
                ASSERT_EQ(f(px.p, ph.p, py.p), qvrOk);
                EXPECT_TRUE(px.memory.intact() && ph.memory.intact() && py.memory.intact());
                Signal want(8);
                for (size_t n = 0; n < 8; n++) {
                    want[n] = x[0] * h[n];
                    for (size_t k = 1; k < 8; k++)
                        want[n] = addTerm(slot, x[k], h[(n + 8 - k) % 8], want[n]);
                }
                expectSameBits(py.read(8), want, "cyclic");
            }
    });
}

} // namespace
