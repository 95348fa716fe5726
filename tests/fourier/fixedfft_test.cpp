#include "fourier/fft_slots.h"
#include "fourier/slot_tables.h"
#include "fourier/spectrum.h"
#include "support/allocation.h"
#include "support/status_order.h"

namespace {

using namespace fft;
using Spec = qvrsFFTSpec_R_16s;
using Values = std::vector<int16_t>;

constexpr auto& kInit = qvrTable_qvrsFFTInitAlloc_R_16s;
constexpr auto& kForward = qvrTable_qvrsFFTFwd_RToCCS_16s_Sfs;
constexpr auto& kFree = qvrTable_qvrsFFTFree_R_16s;

struct FixedObject {
    int slot;
    Spec* spec = nullptr;
    FixedObject(int s, int order, int flag, int hint = 0) : slot(s)
    {
        EXPECT_EQ(kInit[slot](&spec, order, flag, hint), qvrOk) << "order " << order;
    }
    ~FixedObject()
    {
        if (spec)
            EXPECT_EQ(kFree[slot](spec), qvrOk);
    }
    FixedObject(const FixedObject&) = delete;
};

// Orders below this run in integers.
int floatFrom(int slot)
{
    return slot == slots::mx ? 9 : 4;
}

size_t spectrumSize(int order)
{
    return order == 0 ? 2 : (size_t{1} << order) + 2;
}

// x 2^-shift, half up, saturated: the store of the integer path, in wide arithmetic.
int16_t storedModel(__int128 x, int64_t shift)
{
    if (shift >= 64)
        return 0;
    if (shift > 0)
        x = (x + (__int128(1) << (shift - 1))) >> shift;
    else
        x = x * (__int128(1) << std::min<int64_t>(-shift, 64));
    return static_cast<int16_t>(x > 32767 ? 32767 : x < -32768 ? -32768 : x);
}

Values transformed(int slot, const Spec* spec, int order, const Values& x, int scale, size_t offset = 0,
                   bool inPlace = false, bool buffer = false)
{
    const size_t in = x.size() * 2, out = spectrumSize(order) * 2;
    Guarded a(out + 128), b(out + 128), work(buffer ? (size_t{8} << order) + 256 + 131328 : 64);
    int16_t* src = a.atEnd<int16_t>(inPlace ? out : in, offset);
    int16_t* dst = inPlace ? src : b.atEnd<int16_t>(out, offset);
    memcpy(static_cast<void*>(src), x.data(), in);
    // What the header promises to be enough.
    const size_t promised = std::max((size_t{8} << order) + 256, (size_t{4} << order) + 131328);
    uint8_t* pBuffer = buffer ? work.atEnd<uint8_t>(promised, 3) : nullptr;
    EXPECT_EQ(kForward[slot](src, dst, spec, scale, pBuffer), qvrOk);
    EXPECT_TRUE(a.intact() && b.intact() && work.intact());
    Values y(spectrumSize(order));
    memcpy(y.data(), static_cast<void*>(dst), out);
    return y;
}

TEST(FixedFft, OneSampleIsShiftedAndRounded)
{
    eachSlot([](int slot) {
        FixedObject object(slot, 0, qvrFftDivBySqrtN);
        for (int x : {0, 1, 2, 3, -1, -2, -3, 5, 32767, -32768})
            for (int scale :
                 {0, 1, 2, 3, 14, 15, 16, 17, 31, 32, 40, INT32_MAX, -1, -2, -14, -15, -16, -20, INT32_MIN}) {
                const Values y = transformed(slot, object.spec, 0, {static_cast<int16_t>(x)}, scale);
                EXPECT_EQ(y, (Values{storedModel(x, scale), 0})) << x << " by " << scale;
            }
    });
}

double factorOf(int flag, int order)
{
    const double n = std::ldexp(1.0, order);
    return flag == qvrFftDivFwdByN ? 1 / n : flag == qvrFftDivBySqrtN ? 1 / std::sqrt(n) : 1;
}

// The exact spectrum, scaled, rounded and saturated, up to `slack` units.
void expectSpectrum(const Values& y, const std::vector<Bin>& exact, double factor, double slack)
{
    const auto near = [&](size_t i, Exact value) {
        const Exact scaled = value * factor;
        const Exact want = scaled > 32767 ? 32767 : scaled < -32768 ? -32768 : scaled;
        ASSERT_LE(fabsl(y[i] - want), 0.5L + slack) << "value " << i << " of " << y.size();
    };
    for (size_t k = 0; k < exact.size(); k++) {
        near(2 * k, exact[k].real());
        near(2 * k + 1, exact[k].imag());
    }
}

TEST(FixedFft, Spectra)
{
    for (int order = 1; order <= 12; order++) {
        const size_t n = size_t{1} << order;
        Values noise = randomValues<int16_t>(n, 7), small(n), constant(n, 32767), extremes(n), alternating(n);
        for (size_t i = 0; i < n; i++) {
            small[i] = static_cast<int16_t>(noise[i] / 1000);
            extremes[i] = noise[i] < 0 ? -32768 : 32767;
            alternating[i] = i % 2 ? -32768 : 32767;
        }
        for (const Values& x : {noise, small, constant, extremes, alternating}) {
            const std::vector<Bin> exact = sumOfTerms(x);
            eachSlot([&](int slot) {
                const bool integers = order < floatFrom(slot);
                for (int flag : {qvrFftDivFwdByN, qvrFftDivInvByN, qvrFftDivBySqrtN, qvrFftNoDiv}) {
                    FixedObject object(slot, order, flag);
                    for (int scale : {0, 2, order, -1, -3}) {
                        const double factor = std::ldexp(factorOf(flag, order), -scale);
                        // 14-bit twiddles, in each of order stages; or single precision.
                        const double peak = 32768.0 * static_cast<double>(n) * factor;
                        const double slack = peak * (integers ? order * 0x1p-15 : 0x1p-22) / std::sqrt(n) * 4 + 0.01;
                        expectSpectrum(transformed(slot, object.spec, order, x, scale), exact, factor, slack);
                    }
                }
            });
            if (HasFatalFailure())
                return;
        }
    }
}

// Where all twiddles are 1 and -i the integers are exact.
TEST(FixedFft, ShortOnesInIntegersAreExact)
{
    eachSlot([](int slot) {
        for (int order : {1, 2})
            for (int flag : {qvrFftDivFwdByN, qvrFftNoDiv}) {
                FixedObject object(slot, order, flag, qvrHintFast);
                const size_t n = size_t{1} << order;
                for (uint32_t seed = 0; seed < 50; seed++) {
                    const Values x = randomValues<int16_t>(n, seed);
                    for (int scale : {0, 1, 3, -2, 20, -20, INT32_MAX, INT32_MIN}) {
                        Values want(n + 2);
                        for (size_t k = 0; k <= n / 2; k++) {
                            int64_t re = 0, im = 0;
                            for (size_t i = 0; i < n; i++) {
                                const size_t quarter = 4 * i * k / n % 4;
                                re += quarter == 0 ? x[i] : quarter == 2 ? -x[i] : 0;
                                im += quarter == 3 ? x[i] : quarter == 1 ? -x[i] : 0;
                            }
                            const int64_t shift = int64_t{scale} + (flag == qvrFftDivFwdByN ? order : 0);
                            want[2 * k] = storedModel(re, shift);
                            want[2 * k + 1] = storedModel(im, shift);
                        }
                        EXPECT_EQ(transformed(slot, object.spec, order, x, scale), want) << order << " " << scale;
                    }
                }
            }
    });
}

// Eight points have one twiddle, cos(pi/4) = sin(pi/4) = 11585 / 16384, in the recombination. Samples of -1, 0 and 1
// stand 13 bits up in the integers, and a scale of -13 shows all of these bits, the rounding of the split products too.
TEST(FixedFft, TwiddleProductOfEightPointsToTheLastBit)
{
    const auto rotated = [](int64_t x, int64_t v, int64_t y, int64_t w) {
        const int64_t low = ((x & 0xFFFF) >> 1) * v + ((y & 0xFFFF) >> 1) * w;
        return ((low + 4096) >> 13) + 4 * ((x >> 16) * v + (y >> 16) * w);
    };
    eachSlot([&](int slot) {
        FixedObject object(slot, 3, qvrFftNoDiv, qvrHintFast);
        for (uint32_t seed = 0; seed < 200; seed++) {
            Values x(8);
            for (uint32_t i = 0; i < 3; i++)
                x[(seed * 7 + i * (1 + seed % 5)) % 8] = static_cast<int16_t>((seed >> i & 1) ? 1 : -1);
            int64_t re[4] = {}, im[4] = {};
            for (int k = 0; k < 4; k++)
                for (int i = 0; i < 4; i++) {
                    const int64_t a = int64_t{x[2 * i]} * 8192, b = int64_t{x[2 * i + 1]} * 8192;
                    const int quarter = i * k % 4;
                    re[k] += quarter == 0 ? a : quarter == 1 ? b : quarter == 2 ? -a : -b;
                    im[k] += quarter == 0 ? b : quarter == 1 ? -a : quarter == 2 ? -b : a;
                }
            const int64_t p = (re[1] - re[3]) >> 1, q = (im[1] + im[3]) >> 1;
            const int64_t s = (re[1] + re[3]) >> 1, d = (im[1] - im[3]) >> 1, c = 11585;
            const int64_t t = rotated(q, c, p, -c), u = rotated(q, -c, p, -c);
            Values want;
            for (int64_t v :
                 {re[0] + im[0], int64_t{0}, s + t, u + d, re[2], -im[2], s - t, u - d, re[0] - im[0], int64_t{0}})
                want.push_back(storedModel(v, 0));
            ASSERT_EQ(transformed(slot, object.spec, 3, x, -13), want) << "seed " << seed;
        }
    });
}

TEST(FixedFft, FullScaleConstant)
{
    eachSlot([](int slot) {
        const Values x(8, 32767);
        for (int flag : {qvrFftDivFwdByN, qvrFftNoDiv}) {
            FixedObject object(slot, 3, flag);
            Values want(10);
            want[0] = 32767;
            EXPECT_EQ(transformed(slot, object.spec, 3, x, 0), want);
        }
    });
}

// The other path is the widened samples' transform in single precision, rounded to nearest.
TEST(FixedFft, LongOnesGoThroughSinglePrecision)
{
    eachSlot([](int slot) {
        for (int order : {1, 2, 3, 4, 7, 8, 9, 10, 13})
            for (int hint : {0, 1, 2, 3, -1}) {
                if (order < floatFrom(slot) && (hint == 0 || hint == 1))
                    continue;
                for (int flag : {qvrFftDivBySqrtN, qvrFftDivFwdByN}) {
                    FixedObject object(slot, order, flag, hint);
                    Object<float> single(slot, order, flag);
                    const size_t n = size_t{1} << order;
                    const Values x = randomValues<int16_t>(n, 3);
                    std::vector<float> y(n + 2);
                    for (size_t i = 0; i < n; i++)
                        y[i] = x[i];
                    ASSERT_EQ(Functions<float>::forward[slot](y.data(), y.data(), single, nullptr), qvrOk);
                    for (int scale : {0, 1, -2}) {
                        Values want(n + 2);
                        for (size_t i = 0; i < n + 2; i++)
                            want[i] = static_cast<int16_t>(
                                std::clamp(std::nearbyint(std::ldexp(y[i], -scale)), -32768.0f, 32767.0f));
                        EXPECT_EQ(transformed(slot, object.spec, order, x, scale), want);
                    }
                }
            }
    });
}

TEST(FixedFft, PlacesAndBuffers)
{
    eachSlot([](int slot) {
        for (int order : {0, 1, 2, 3, 4, 6, 8, 9, 11}) {
            FixedObject object(slot, order, qvrFftDivBySqrtN);
            const Values x = randomValues<int16_t>(size_t{1} << order, 5);
            const Values want = transformed(slot, object.spec, order, x, 0);
            for (size_t offset : {0, 1, 2, 6, 16})
                for (int form = 0; form < 4; form++)
                    EXPECT_EQ(transformed(slot, object.spec, order, x, 0, offset, form % 2 != 0, form / 2 != 0), want)
                        << "order " << order << " offset " << offset << " form " << form;
        }
        // The split transforms' need of work memory.
        for (int order : {18, 20}) {
            FixedObject object(slot, order, qvrFftDivFwdByN);
            const Values x = randomValues<int16_t>(size_t{1} << order, 5);
            EXPECT_EQ(transformed(slot, object.spec, order, x, 0, 0, false, true),
                      transformed(slot, object.spec, order, x, 0));
        }
    });
}

TEST(FixedFft, Creation)
{
    eachSlot([](int slot) {
        Spec* const untouched = reinterpret_cast<Spec*>(&slot);
        Spec* spec = untouched;
        const auto expect = [&](int order, int flag, int hint, qvrStatus want) {
            EXPECT_EQ(kInit[slot](&spec, order, flag, hint), want) << order << " " << flag << " " << hint;
            EXPECT_EQ(spec, untouched);
        };
        EXPECT_EQ(kInit[slot](nullptr, -1, 0, 0), qvrErrNullPointer);
        for (int order : {-1, 31, INT32_MIN, INT32_MAX})
            expect(order, 0, 0, qvrErrFFTOrder);
        for (int order : {0, 3, 5, 12, 29, 30})
            for (int flag : {0, 3, 5, 16, -1})
                expect(order, flag, 0, qvrErrFFTFlag);
        expect(30, qvrFftNoDiv, 0, qvrErrFFTOrder);
        expect(29, qvrFftNoDiv, 0, slot == slots::mx ? qvrErrFFTOrder : qvrErrNoMemory);
        for (int order : {0, 3, 8, 12})
            for (int hint : {0, 2}) {
                failEachAllocation(
                    [&] {
                        Spec* made = untouched;
                        const qvrStatus status = kInit[slot](&made, order, qvrFftNoDiv, hint);
                        if (status == qvrOk)
                            EXPECT_EQ(kFree[slot](made), qvrOk);
                        else
                            EXPECT_EQ(made, untouched);
                        return status;
                    },
                    [&](int n, qvrStatus status, CountingAllocator& allocator) {
                        EXPECT_EQ(status, qvrErrNoMemory) << n;
                        EXPECT_EQ(allocator.live(), 0u);
                    });
                CountingAllocator allocator;
                EXPECT_EQ(kInit[slot](&spec, order, 3, hint), qvrErrFFTFlag);
                EXPECT_EQ(allocator.live(), 0u);
            }
    });
}

TEST(FixedFft, Statuses)
{
    struct Args {
        const int16_t* src;
        int16_t* dst;
        const Spec *spec, *other;
    };
    eachSlot([](int slot) {
        FixedObject object(slot, 5, qvrFftNoDiv);
        Object<float> single(slot, 5, qvrFftNoDiv);
        const auto* other = reinterpret_cast<const Spec*>(single.get());
        Values x(32, 100), y(34, 9);
        expectStatusOrder<Args>(
            {x.data(), y.data(), object.spec, other},
            {{"pSpec", qvrErrNullPointer, [](Args& a) { a.spec = nullptr; }},
             {"tag", qvrErrBadContext, [](Args& a) { a.spec = a.spec ? a.other : nullptr; }},
             {"pSrc", qvrErrNullPointer, [](Args& a) { a.src = nullptr; }},
             {"pDst", qvrErrNullPointer, [](Args& a) { a.dst = nullptr; }}},
            [&](const Args& a) { return kForward[slot](a.src, a.dst, a.spec, 0, nullptr); },
            [&] { return y == Values(34, 9); });
        failEachAllocation([&] { return kForward[slot](x.data(), y.data(), object.spec, 0, nullptr); },
                           [&](int, qvrStatus status, CountingAllocator& allocator) {
                               EXPECT_EQ(status, qvrErrNoMemory);
                               EXPECT_EQ(allocator.live(), 0u);
                               EXPECT_EQ(y, Values(34, 9));
                           });
        EXPECT_EQ(kFree[slot](nullptr), qvrErrNullPointer);
        EXPECT_EQ(kFree[slot](const_cast<Spec*>(other)), qvrErrBadContext);
    });
}

} // namespace
