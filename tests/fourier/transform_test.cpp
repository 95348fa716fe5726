#include <cfenv>
#include <thread>

#include "fourier/fft_slots.h"
#include "fourier/slot_tables.h"
#include "fourier/spectrum.h"
#include "support/allocation.h"
#include "support/budget.h"
#include "support/regions.h"
#include "support/status_order.h"

#include "frame/threads.h"

namespace {

using namespace fft;

template<class T> class Transform : public testing::Test {};
using Precisions = testing::Types<float, double>;
TYPED_TEST_SUITE(Transform, Precisions);

constexpr int kFlags[] = {qvrFftDivFwdByN, qvrFftDivInvByN, qvrFftDivBySqrtN, qvrFftNoDiv};

// The single-precision root factor may be off by some units of 2^-24: about 2^-22.
template<class T> constexpr double kRootSlack = sizeof(T) == 4 ? 0x1p-21 : 0x1p-51;

Exact forwardScale(int flag, int order)
{
    return flag == qvrFftDivFwdByN ? ldexpl(1, -order) : flag == qvrFftDivBySqrtN ? sqrtl(ldexpl(1, -order)) : 1;
}
Exact inverseScale(int flag, int order)
{
    return flag == qvrFftDivInvByN ? ldexpl(1, -order) : flag == qvrFftDivBySqrtN ? sqrtl(ldexpl(1, -order)) : 1;
}

// Whole contract of one object on arrays that end at an unreadable page: forward, inverse, place and buffer as told.
template<class T> struct Case {
    int order, flag;
    bool inPlace, buffer;
    size_t offset; // bytes from the end of the mapping
};

template<class T>
void check(int slot, const Case<T>& c, const std::vector<T>& x, const std::vector<Bin>& exact, Object<T>& object)
{
    using F = Functions<T>;
    SCOPED_TRACE(testing::Message() << "order " << c.order << " flag " << c.flag << " in place " << c.inPlace
                                    << " buffer " << c.buffer << " offset " << c.offset);
    const size_t n = x.size(), signal = n * sizeof(T), spectrum = (n == 1 ? 2 : n + 2) * sizeof(T);
    const bool root = c.flag == qvrFftDivBySqrtN;
    const double bound = errorBound<T>(c.order) + (root ? kRootSlack<T> : 0);
    const size_t needed = object.bufferSize();
    Guarded buffer(needed + 8);
    uint8_t* pBuffer = c.buffer ? buffer.atEnd<uint8_t>(needed, 3) : nullptr;

    Guarded a(spectrum + 64), b(spectrum + 64);
    T* src = a.atEnd<T>(c.inPlace ? spectrum : signal, c.offset);
    T* dst = c.inPlace ? src : b.atEnd<T>(spectrum, c.offset);
    memcpy(static_cast<void*>(src), x.data(), signal);
    ASSERT_EQ(F::forward[slot](src, dst, object, pBuffer), qvrOk);
    EXPECT_TRUE(a.intact() && b.intact() && buffer.intact());
    std::vector<T> got(spectrum / sizeof(T));
    memcpy(got.data(), static_cast<void*>(dst), spectrum);
    EXPECT_EQ(bitsOf(got[1]), 0u);
    EXPECT_EQ(bitsOf(got[got.size() - 1]), 0u);
    ASSERT_LE(spectrumError(got.data(), exact, forwardScale(c.flag, c.order)), bound);

    // Back from the rounded exact spectrum; what is not read holds NaN.
    std::vector<T> ccs = roundedCcs<T>(exact);
    ccs[1] = std::numeric_limits<T>::quiet_NaN();
    ccs[ccs.size() - 1] = std::numeric_limits<T>::quiet_NaN();
    T* in = a.atEnd<T>(spectrum, c.offset);
    memcpy(static_cast<void*>(in), ccs.data(), spectrum);
    T* out = c.inPlace ? in : b.atEnd<T>(signal, c.offset);
    ASSERT_EQ(F::inverse[slot](in, out, object, pBuffer), qvrOk);
    EXPECT_TRUE(a.intact() && b.intact() && buffer.intact());
    std::vector<T> back(n);
    memcpy(back.data(), static_cast<void*>(out), signal);
    // The rounding of the spectrum adds half a unit to each value.
    ASSERT_LE(signalError(back.data(), x, inverseScale(c.flag, c.order) * n), bound + errorBound<T>(0));
}

template<class T> std::vector<Bin> reference(const std::vector<T>& x)
{
    return x.size() <= 1024 ? sumOfTerms(x) : byFftw(x);
}

TYPED_TEST(Transform, EveryOrderToTheLargestFlat)
{
    using T = TypeParam;
    for (int order = 0; order <= 13; order++) {
        const std::vector<T> x = randomValues<T>(size_t{1} << order, 100 + order, -1, 1);
        const std::vector<Bin> exact = reference(x);
        eachSlot([&](int slot) {
            for (int flag : kFlags) {
                Object<T> object(slot, order, flag);
                for (size_t offset : {size_t{0}, sizeof(T), size_t{16}, size_t{1}})
                    for (int form = 0; form < 4; form++)
                        check<T>(slot, {order, flag, form % 2 != 0, form / 2 != 0, offset}, x, exact, object);
            }
        });
    }
}

TYPED_TEST(Transform, LongOrders)
{
    using T = TypeParam;
    for (int order = 14; order <= 21; order++) {
        const std::vector<T> x = randomValues<T>(size_t{1} << order, 100 + order, -1, 1);
        const std::vector<Bin> exact = reference(x);
        eachSlot([&](int slot) {
            for (int flag : {qvrFftDivBySqrtN, qvrFftNoDiv}) {
                Object<T> object(slot, order, flag);
                check<T>(slot, {order, flag, true, true, 0}, x, exact, object);
                check<T>(slot, {order, flag, false, false, sizeof(T)}, x, exact, object);
                check<T>(slot, {order, flag, false, true, 0}, x, exact, object);
            }
        });
    }
}

// The defining sum at lengths where it is long, for one bin in a hundred and some.
TYPED_TEST(Transform, SingleBinsByTheSum)
{
    using T = TypeParam;
    for (int order : {12, 15, 18}) {
        const size_t n = size_t{1} << order;
        const std::vector<T> x = randomValues<T>(n, order, -1, 1);
        eachSlot([&](int slot) {
            Object<T> object(slot, order, qvrFftNoDiv);
            std::vector<T> ccs(n + 2);
            Functions<T>::forward[slot](x.data(), ccs.data(), object, nullptr);
            for (size_t k : {size_t{1}, size_t{2}, n / 8 + 1, n / 4, n / 2 - 1, n / 2, n / 3}) {
                Bin sum = 0;
                for (size_t i = 0; i < n; i++) {
                    const Exact t = kTurn * Exact(k * i % n) / Exact(n);
                    sum += Exact(x[i]) * Bin(cosl(t), -sinl(t));
                }
                // A bin of N random values of variance 1/3 is sqrt(N/3) in size.
                const double scale = std::sqrt(n / 3.0);
                EXPECT_LE(std::abs(Bin(ccs[2 * k], ccs[2 * k + 1]) - sum), 6 * scale * errorBound<T>(order))
                    << "bin " << k;
            }
        });
    }
}

TYPED_TEST(Transform, OrderZeroAndOne)
{
    using T = TypeParam;
    using F = Functions<T>;
    eachSlot([&](int slot) {
        Object<T> one(slot, 0, qvrFftNoDiv), two(slot, 1, qvrFftDivFwdByN);
        T x[2] = {3, 5}, y[5] = {9, 9, 9, 9, 9};
        F::forward[slot](x, y, one, nullptr);
        EXPECT_EQ(y[0], 3);
        EXPECT_EQ(y[1], 0);
        EXPECT_EQ(y[2], 9);
        F::forward[slot](x, y, two, nullptr);
        EXPECT_EQ(y[0], 4);
        EXPECT_EQ(y[1], 0);
        EXPECT_EQ(y[2], -1);
        EXPECT_EQ(y[3], 0);
        EXPECT_EQ(y[4], 9);
    });
}

TYPED_TEST(Transform, InPlaceAndAlignmentGiveTheSameBits)
{
    using T = TypeParam;
    using F = Functions<T>;
    for (int order : {3, 5, 6, 7, 8, 9, 10, 12, 13, 14, 15, 17, 19, 20}) {
        const size_t n = size_t{1} << order;
        const std::vector<T> x = randomValues<T>(n, order);
        eachSlot([&](int slot) {
            Object<T> object(slot, order, qvrFftDivBySqrtN);
            alignas(64) static T storage[(1 << 20) + 32];
            std::vector<T> first;
            const size_t needed = object.bufferSize();
            std::vector<uint8_t> buffer(needed + 8);
            for (size_t shift : {0, 1, 2, 5})
                for (bool inPlace : {false, true}) {
                    uint8_t* const work = shift < 2 ? nullptr : buffer.data() + shift;
                    std::vector<T> other(n + 16);
                    T *dst = storage + shift, *src = inPlace ? dst : other.data() + shift;
                    memcpy(src, x.data(), n * sizeof(T));
                    ASSERT_EQ(F::forward[slot](src, dst, object, work), qvrOk);
                    std::vector<T> got(dst, dst + n + 2);
                    std::vector<T> back(n + 16);
                    ASSERT_EQ(F::inverse[slot](dst, back.data() + shift, object, work), qvrOk);
                    ASSERT_EQ(F::inverse[slot](dst, dst, object, work), qvrOk);
                    EXPECT_EQ(memcmp(dst, back.data() + shift, n * sizeof(T)), 0) << "order " << order;
                    got.insert(got.end(), dst, dst + n);
                    if (first.empty())
                        first = got;
                    EXPECT_EQ(memcmp(first.data(), got.data(), got.size() * sizeof(T)), 0)
                        << "order " << order << " shift " << shift << " in place " << inPlace;
                }
        });
    }
}

// Flags that a run of f raises.
template<class F> int flagsOf(const F& f)
{
    feclearexcept(FE_ALL_EXCEPT);
    f();
    const int flags = fetestexcept(FE_INVALID | FE_DIVBYZERO | FE_OVERFLOW);
    feclearexcept(FE_ALL_EXCEPT);
    return flags;
}

// A signalling NaN raises the invalid flag as soon as anything is done with it.
TYPED_TEST(Transform, InverseLeavesWhatHoldsNothingAlone)
{
    using T = TypeParam;
    using F = Functions<T>;
    const T nan = std::numeric_limits<T>::signaling_NaN();
    for (int order = 1; order <= 20; order++) {
        const size_t n = size_t{1} << order;
        const std::vector<T> ccs = randomValues<T>(n + 2, order, -1, 1);
        eachSlot([&](int slot) {
            SCOPED_TRACE(order);
            Object<T> object(slot, order, qvrFftDivInvByN);
            std::vector<T> in = ccs, out(n + 2), want(n);
            in[1] = in[n + 1] = 0;
            F::inverse[slot](in.data(), want.data(), object, nullptr);
            memcpy(&in[1], &nan, sizeof nan);
            memcpy(&in[n + 1], &nan, sizeof nan);
            EXPECT_EQ(flagsOf([&] { F::inverse[slot](in.data(), out.data(), object, nullptr); }), 0);
            EXPECT_EQ(memcmp(out.data(), want.data(), n * sizeof(T)), 0);
            EXPECT_EQ(flagsOf([&] { F::inverse[slot](in.data(), in.data(), object, nullptr); }), 0);
            EXPECT_EQ(memcmp(in.data(), want.data(), n * sizeof(T)), 0);
        });
    }
}

// One value has a spectrum of its own size in every bin. Nothing on the way may pass the range that the bins keep to.
TYPED_TEST(Transform, LargeValuesStayInRange)
{
    using T = TypeParam;
    using F = Functions<T>;
    const T large = std::numeric_limits<T>::max() * T(0.58);
    for (int order = 1; order <= 20; order++) {
        const size_t n = size_t{1} << order;
        for (size_t at : {size_t{0}, size_t{1}, n / 2, n - 1})
            eachSlot([&](int slot) {
                Object<T> object(slot, order, qvrFftNoDiv);
                std::vector<T> x(n + 2), ccs(n + 2);
                x[at] = large;
                EXPECT_EQ(flagsOf([&] { F::forward[slot](x.data(), ccs.data(), object, nullptr); }), 0)
                    << "order " << order << " at " << at;
                for (size_t k = 0; k <= n / 2; k++)
                    ASSERT_NEAR(std::hypot(ccs[2 * k] / large, ccs[2 * k + 1] / large), 1, 1e-5)
                        << "order " << order << " at " << at << " bin " << k;
            });
    }
}

TYPED_TEST(Transform, PackedForms)
{
    using T = TypeParam;
    using F = Functions<T>;
    for (int order = 0; order <= 15; order++) {
        const size_t n = size_t{1} << order;
        const std::vector<T> x = randomValues<T>(n, order);
        eachSlot([&](int slot) {
            SCOPED_TRACE(order);
            Object<T> object(slot, order, qvrFftDivInvByN);
            std::vector<T> ccs(n + 2);
            F::forward[slot](x.data(), ccs.data(), object, nullptr);
            std::vector<T> packed = {ccs[0]}, tail = {ccs[0]}, signal(n);
            if (n > 1)
                packed.push_back(ccs[n]);
            packed.insert(packed.end(), ccs.begin() + 2, ccs.begin() + std::max<size_t>(n, 2));
            tail.insert(tail.end(), ccs.begin() + 2, ccs.begin() + std::max<size_t>(n, 2));
            if (n > 1)
                tail.push_back(ccs[n]);
            F::inverse[slot](ccs.data(), signal.data(), object, nullptr);
            for (bool inPlace : {false, true}) {
                Guarded a(n * sizeof(T)), b(n * sizeof(T));
                T *src = a.atEnd<T>(n * sizeof(T)), *dst = inPlace ? src : b.atEnd<T>(n * sizeof(T));
                const auto run = [&](auto f, const std::vector<T>& in, const std::vector<T>& want) {
                    memcpy(src, in.data(), n * sizeof(T));
                    ASSERT_EQ(f(src, dst, object, nullptr), qvrOk);
                    EXPECT_EQ(memcmp(dst, want.data(), n * sizeof(T)), 0) << "in place " << inPlace;
                    EXPECT_TRUE(a.intact() && b.intact());
                };
                run(F::toPacked[slot], x, packed);
                run(F::toTailPacked[slot], x, tail);
                run(F::fromPacked[slot], packed, signal);
                run(F::fromTailPacked[slot], tail, signal);
            }
        });
    }
}

TYPED_TEST(Transform, SpectrumProducts)
{
    using T = TypeParam;
    using F = Functions<T>;
    for (int n = 1; n <= 70; n++) {
        const std::vector<T> x = randomValues<T>(n, n), y = randomValues<T>(n, n + 1);
        std::vector<T> packed = y, tail = y;
        const int head = n % 2 == 0 ? 2 : 1;
        for (int i = 0; i < head; i++)
            packed[i] = x[i] * y[i];
        for (int i = head; i < n; i += 2) {
            packed[i] = x[i] * y[i] - x[i + 1] * y[i + 1];
            packed[i + 1] = x[i] * y[i + 1] + x[i + 1] * y[i];
        }
        tail[0] = x[0] * y[0];
        if (n % 2 == 0)
            tail[n - 1] = x[n - 1] * y[n - 1];
        for (int i = 1; i + 1 < n; i += 2) {
            tail[i] = x[i] * y[i] + x[i + 1] * y[i + 1];
            tail[i + 1] = x[i + 1] * y[i] - x[i] * y[i + 1];
        }
        eachSlot([&](int slot) {
            Guarded a(n * sizeof(T)), b(n * sizeof(T));
            T *src = a.atEnd<T>(n * sizeof(T)), *dst = b.atEnd<T>(n * sizeof(T));
            memcpy(src, x.data(), n * sizeof(T));
            memcpy(dst, y.data(), n * sizeof(T));
            ASSERT_EQ(F::mulPacked[slot](src, dst, n), qvrOk);
            for (int i = 0; i < n; i++)
                ASSERT_EQ(dst[i], packed[i]) << n << " index " << i;
            memcpy(dst, y.data(), n * sizeof(T));
            ASSERT_EQ(F::mulTailPackedConj[slot](src, dst, n), qvrOk);
            for (int i = 0; i < n; i++)
                ASSERT_EQ(dst[i], tail[i]) << n << " index " << i;
            EXPECT_TRUE(a.intact() && b.intact());
            for (auto f : {F::mulPacked[slot], F::mulTailPackedConj[slot]}) {
                EXPECT_EQ(f(nullptr, dst, 0), qvrErrNullPointer);
                EXPECT_EQ(f(src, nullptr, n), qvrErrNullPointer);
                EXPECT_EQ(f(src, dst, 0), qvrErrBadSize);
            }
        });
    }
}

TYPED_TEST(Transform, StatusesInOrder)
{
    using T = TypeParam;
    using F = Functions<T>;
    eachSlot([&](int slot) {
        Object<T> object(slot, 4, qvrFftNoDiv);
        std::conditional_t<sizeof(T) == 4, Object<double>, Object<float>> other(slot, 4, qvrFftNoDiv);
        struct Args {
            const T* src;
            T* dst;
            const typename F::Spec* spec;
        };
        T src[18] = {};
        Guarded dst(18 * sizeof(T));
        T* d = dst.atEnd<T>(18 * sizeof(T));
        const auto wrong = reinterpret_cast<const typename F::Spec*>(other.get());
        const std::vector<Fault<Args>> faults = {
            {"null object", qvrErrNullPointer, [](Args& a) { a.spec = nullptr; }},
            {"object of the other precision", qvrErrBadContext, [&](Args& a) { a.spec = a.spec ? wrong : nullptr; }},
            {"null source", qvrErrNullPointer, [](Args& a) { a.src = nullptr; }},
            {"null destination", qvrErrNullPointer, [](Args& a) { a.dst = nullptr; }}};
        for (auto f : {F::forward[slot], F::inverse[slot], F::toPacked[slot], F::fromPacked[slot],
                       F::toTailPacked[slot], F::fromTailPacked[slot]})
            expectStatusOrder<Args>(
                {src, d, object}, faults, [&](const Args& a) { return f(a.src, a.dst, a.spec, nullptr); },
                [&] { return dst.untouched(); });
    });
}

TYPED_TEST(Transform, WorkMemoryFailsCleanly)
{
    using T = TypeParam;
    using F = Functions<T>;
    eachSlot([&](int slot) {
        for (int order : {4, 6, 9, 13, 19}) {
            Object<T> object(slot, order, qvrFftNoDiv);
            const size_t n = size_t{1} << order;
            std::vector<T> x(n + 2, T(1)), y(n + 2, T(7));
            for (auto f : {F::forward[slot], F::inverse[slot], F::fromTailPacked[slot]}) {
                CountingAllocator allocator(CountingAllocator::kAll);
                const qvrStatus status = f(x.data(), y.data(), object, nullptr);
                if (object.bufferSize() == 0) {
                    EXPECT_EQ(status, qvrOk);
                    EXPECT_EQ(allocator.allocations(), 0);
                    std::fill(y.begin(), y.end(), T(7));
                } else {
                    EXPECT_EQ(status, qvrErrNoMemory);
                    EXPECT_EQ(allocator.allocations(), 1);
                    EXPECT_EQ(y, std::vector<T>(n + 2, T(7)));
                }
            }
            CountingAllocator allocator;
            EXPECT_EQ(F::forward[slot](x.data(), y.data(), object, nullptr), qvrOk);
            EXPECT_EQ(allocator.live(), 0u);
        }
    });
}

TYPED_TEST(Transform, OneObjectInSeveralThreads)
{
    using T = TypeParam;
    using F = Functions<T>;
    eachSlot([&](int slot) {
        for (int order : {7, 10, 15}) {
            Object<T> object(slot, order, qvrFftDivInvByN);
            const size_t n = size_t{1} << order;
            std::vector<std::vector<T>> spectra(4);
            const std::vector<T> x = randomValues<T>(n, order);
            std::vector<std::thread> threads;
            for (auto& spectrum : spectra)
                threads.emplace_back([&] {
                    for (int i = 0; i < 20; i++) {
                        spectrum.assign(n + 2, T(0));
                        F::forward[slot](x.data(), spectrum.data(), object, nullptr);
                    }
                });
            for (std::thread& t : threads)
                t.join();
            for (const auto& spectrum : spectra)
                EXPECT_EQ(spectrum, spectra[0]);
            EXPECT_NE(spectra[0], std::vector<T>(n + 2, T(0)));
        }
    });
}

// Thread budgets at creation and at the call; put back at the end.
TYPED_TEST(Transform, ThreadedBandGivesTheSequentialBits)
{
    using T = TypeParam;
    using F = Functions<T>;
    const int lowest = sizeof(T) == 4 ? 14 : 13;
    for (int slot : kThreadedSlots) {
        if (!slots::canRun(slot))
            continue;
        for (int order = lowest; order <= lowest + 4; order++) {
            const size_t n = size_t{1} << order;
            const std::vector<T> x = randomValues<T>(n, order);
            std::vector<std::vector<T>> results;
            for (int atCreation : {1, 2, 4})
                for (int atCall : {1, 2, 4}) {
                    Budget budget(atCreation);
                    Object<T> object(slot, order, qvrFftDivBySqrtN);
                    qvrSetNumThreads(atCall);
                    std::vector<T> result(2 * n + 2);
                    const int before = regions::forks();
                    F::forward[slot](x.data(), result.data(), object, nullptr);
                    F::inverse[slot](result.data(), result.data() + n + 2, object, nullptr);
                    if (regions::counted()) {
                        EXPECT_EQ(regions::forks() - before, atCreation < 2 ? 0 : 4);
                        if (atCreation >= 2)
                            EXPECT_EQ(regions::lastRequested(), std::min(atCall, 2));
                    }
                    results.push_back(result);
                }
            for (const auto& result : results)
                EXPECT_EQ(result, results[0]) << "slot " << slot << " order " << order;
        }
    }
}

TYPED_TEST(Transform, NoRegionOutsideTheBand)
{
    using T = TypeParam;
    using F = Functions<T>;
    if (!regions::counted())
        GTEST_SKIP() << "another OpenMP tool has the seat";
    Budget budget(4);
    const int lowest = sizeof(T) == 4 ? 14 : 13;
    eachSlot([&](int slot) {
        for (int order : {lowest - 1, lowest, lowest + 4, lowest + 5}) {
            const bool band = (slot == slots::u8 || slot == slots::y8) && order >= lowest && order <= lowest + 4;
            Object<T> object(slot, order, qvrFftNoDiv);
            std::vector<T> x((size_t{1} << order) + 2, T(1));
            const int before = regions::forks();
            F::forward[slot](x.data(), x.data(), object, nullptr);
            EXPECT_EQ(regions::forks() - before, band ? 2 : 0) << "order " << order;
        }
    });
}

} // namespace
