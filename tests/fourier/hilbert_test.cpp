#include <fftw3.h>

#include <complex>

#include "fourier/slot_tables.h"
#include "support/allocation.h"
#include "support/guarded.h"
#include "support/slots.h"
#include "support/status_order.h"
#include "support/values.h"

// The transforms of any length, which no export shows.
struct qvrsDFTSpec;
#define QVR_DECLARE(slot)                                                                                              \
    extern "C" qvrStatus slot##_ownqvrsDFTInitAlloc_R_32f(qvrsDFTSpec**, int, int, int);                               \
    extern "C" qvrStatus slot##_ownqvrsDFTInitAlloc_C_32fc(qvrsDFTSpec**, int, int, int);                              \
    extern "C" qvrStatus slot##_ownqvrsDFTFree_R_32f(qvrsDFTSpec*);                                                    \
    extern "C" qvrStatus slot##_ownqvrsDFTFree_C_32fc(qvrsDFTSpec*);                                                   \
    extern "C" qvrStatus slot##_ownqvrsDFTGetBufSize_R_32f(const qvrsDFTSpec*, int32_t*);                              \
    extern "C" qvrStatus slot##_ownqvrsDFTGetBufSize_C_32fc(const qvrsDFTSpec*, int32_t*);                             \
    extern "C" qvrStatus slot##_ownqvrsDFTFwd_RToCCS_32f(const float*, float*, const qvrsDFTSpec*, uint8_t*);          \
    extern "C" qvrStatus slot##_ownqvrsDFTFwd_CToC_32fc(const float*, float*, const qvrsDFTSpec*, uint8_t*);           \
    extern "C" qvrStatus slot##_ownqvrsDFTInv_CToC_32fc(const float*, float*, const qvrsDFTSpec*, uint8_t*);
#define QVR_EACH(X) X(mx) X(m7) X(u8) X(y8) X(e9) X(l9)
QVR_EACH(QVR_DECLARE)

namespace {

using Signal = std::vector<float>;
using Exact = long double;
using Bin = std::complex<Exact>;

// Slot n8 repeats u8.
#define QVR_TABLE(name) {mx_##name, m7_##name, u8_##name, u8_##name, y8_##name, e9_##name, l9_##name}
using Transform = decltype(&mx_ownqvrsDFTFwd_CToC_32fc);
constexpr decltype(&mx_ownqvrsDFTInitAlloc_R_32f) kInitReal[] = QVR_TABLE(ownqvrsDFTInitAlloc_R_32f),
                                                  kInitComplex[] = QVR_TABLE(ownqvrsDFTInitAlloc_C_32fc);
constexpr decltype(&mx_ownqvrsDFTFree_R_32f) kFreeReal[] = QVR_TABLE(ownqvrsDFTFree_R_32f),
                                             kFreeComplex[] = QVR_TABLE(ownqvrsDFTFree_C_32fc);
constexpr decltype(&mx_ownqvrsDFTGetBufSize_R_32f) kSizeReal[] = QVR_TABLE(ownqvrsDFTGetBufSize_R_32f),
                                                   kSizeComplex[] = QVR_TABLE(ownqvrsDFTGetBufSize_C_32fc);
constexpr Transform kForwardReal[] = QVR_TABLE(ownqvrsDFTFwd_RToCCS_32f),
                    kForward[] = QVR_TABLE(ownqvrsDFTFwd_CToC_32fc), kInverse[] = QVR_TABLE(ownqvrsDFTInv_CToC_32fc);

template<class Body> void eachSlot(const Body& body)
{
    slots::each(qvrTable_qvrsHilbert_32f32fc, [&](auto, int slot) { body(slot); });
}

constexpr Exact kTurn = 6.283185307179586476925286766559L;

std::vector<Bin> exactDft(const std::vector<Bin>& x, int sign)
{
    const size_t n = x.size();
    std::vector<Bin> y(n);
    if (n <= 400) {
        std::vector<Bin> wave(n);
        for (size_t i = 0; i < n; i++)
            wave[i] = {cosl(kTurn * Exact(i) / Exact(n)), Exact(sign) * sinl(kTurn * Exact(i) / Exact(n))};
        for (size_t k = 0; k < n; k++)
            for (size_t i = 0; i < n; i++)
                y[k] += x[i] * wave[k * i % n];
        return y;
    }
    std::vector<std::complex<double>> in(n), out(n);
    fftw_plan plan = fftw_plan_dft_1d(static_cast<int>(n), reinterpret_cast<fftw_complex*>(in.data()),
                                      reinterpret_cast<fftw_complex*>(out.data()), sign, FFTW_ESTIMATE);
    for (size_t i = 0; i < n; i++)
        in[i] = std::complex<double>(x[i]);
    fftw_execute(plan);
    fftw_destroy_plan(plan);
    for (size_t i = 0; i < n; i++)
        y[i] = Bin(out[i]);
    return y;
}

// Root of the sum of squared differences over that of squares.
double relativeError(const float* got, const std::vector<Bin>& want, size_t count, Exact scale)
{
    Exact difference = 0, norm = 0;
    for (size_t k = 0; k < count; k++) {
        difference += std::norm(Bin(got[2 * k], got[2 * k + 1]) - want[k] * scale);
        norm += std::norm(want[k] * scale);
    }
    return static_cast<double>(sqrtl(difference / norm));
}

bool smallFactors(int n)
{
    for (int f = 2; f <= 75; f++)
        while (n % f == 0)
            n /= f;
    return n == 1;
}
// The promise: transforms by small factors are as good as others of their length; three more of about twice the length
// come together in the chirp form.
double errorBound(int n)
{
    return 0x1p-24 * (std::sqrt(std::log2(n)) + 1) * (smallFactors(n) ? 1.5 : 4);
}

// Longer ones go through once.
constexpr int kEveryFormMost = 1400;

std::vector<int> lengths()
{
    std::vector<int> v;
    for (int n = 1; n <= 160; n++)
        v.push_back(n);
    for (int n : {162, 175, 200, 210, 243, 256, 289, 320,  343,  375,  400,  474,  500, 512,
                  539, 576, 625, 768, 800, 998, 999, 1000, 1001, 1009, 1024, 1155, 1369})
        v.push_back(n);
    v.insert(v.end(), {2 * 73 * 71, 2018, 4095, 4096, 5041, 6000, 8191, 10000, 16384, 44100, 65537, 131072});
    return v;
}

TEST(AnyLength, Complex)
{
    for (int n : lengths()) {
        const size_t size = static_cast<size_t>(n), bytes = size * 8;
        const Signal x = randomValues<float>(2 * size, static_cast<uint32_t>(n), -1, 1);
        std::vector<Bin> in(size);
        for (size_t i = 0; i < size; i++)
            in[i] = {x[2 * i], x[2 * i + 1]};
        const std::vector<Bin> there = exactDft(in, -1), back = exactDft(in, 1);
        eachSlot([&](int slot) {
            for (int flag : {qvrFftDivInvByN, qvrFftNoDiv, qvrFftDivFwdByN}) {
                if (n > kEveryFormMost && flag != qvrFftDivInvByN)
                    continue;
                qvrsDFTSpec* spec = nullptr;
                ASSERT_EQ(kInitComplex[slot](&spec, n, flag, 0), qvrOk) << n;
                int32_t need = -1;
                ASSERT_EQ(kSizeComplex[slot](spec, &need), qvrOk);
                Guarded a(bytes + 64), b(bytes + 64), work(static_cast<size_t>(need) + 64);
                for (int form = 0; form < (n > kEveryFormMost ? 1 : 4); form++) {
                    const size_t offset = form == 0 ? 0 : 4;
                    float *src = a.atEnd<float>(bytes, offset), *dst = form == 2 ? src : b.atEnd<float>(bytes, offset);
                    uint8_t* buffer =
                        form == 1 && need > 0 ? work.atFront<uint8_t>(static_cast<size_t>(need)) : nullptr;
                    for (bool inverse : {false, true}) {
                        memcpy(static_cast<void*>(src), x.data(), bytes);
                        ASSERT_EQ((inverse ? kInverse : kForward)[slot](src, dst, spec, buffer), qvrOk) << n;
                        EXPECT_TRUE(a.intact() && b.intact() && work.intact()) << n;
                        Signal got(2 * size);
                        memcpy(got.data(), static_cast<void*>(dst), bytes);
                        const bool scales = flag == (inverse ? qvrFftDivInvByN : qvrFftDivFwdByN);
                        ASSERT_LE(relativeError(got.data(), inverse ? back : there, size, scales ? 1 / Exact(n) : 1),
                                  errorBound(n))
                            << n << " inverse " << inverse << " form " << form;
                    }
                }
                EXPECT_EQ(kFreeComplex[slot](spec), qvrOk);
            }
        });
        if (HasFatalFailure())
            return;
    }
}

TEST(AnyLength, Real)
{
    for (int n : lengths()) {
        const size_t size = static_cast<size_t>(n), bins = size / 2 + 1, in = size * 4, out = bins * 8;
        const Signal x = randomValues<float>(size, static_cast<uint32_t>(n), -1, 1);
        const std::vector<Bin> want = exactDft(std::vector<Bin>(x.begin(), x.end()), -1);
        eachSlot([&](int slot) {
            for (int flag : {qvrFftDivFwdByN, qvrFftNoDiv}) {
                if (n > kEveryFormMost && flag != qvrFftNoDiv)
                    continue;
                qvrsDFTSpec* spec = nullptr;
                ASSERT_EQ(kInitReal[slot](&spec, n, flag, 0), qvrOk) << n;
                int32_t need = -1;
                ASSERT_EQ(kSizeReal[slot](spec, &need), qvrOk);
                Guarded a(out + 64), b(out + 64), work(static_cast<size_t>(need) + 64);
                for (int form = 0; form < (n > kEveryFormMost ? 1 : 3); form++) {
                    const size_t offset = form == 0 ? 0 : 4;
                    float *src = a.atEnd<float>(form == 2 ? out : in, offset),
                          *dst = form == 2 ? src : b.atEnd<float>(out, offset);
                    uint8_t* buffer =
                        form == 1 && need > 0 ? work.atFront<uint8_t>(static_cast<size_t>(need)) : nullptr;
                    memcpy(static_cast<void*>(src), x.data(), in);
                    ASSERT_EQ(kForwardReal[slot](src, dst, spec, buffer), qvrOk) << n;
                    EXPECT_TRUE(a.intact() && b.intact() && work.intact()) << n;
                    Signal got(2 * bins);
                    memcpy(got.data(), static_cast<void*>(dst), out);
                    ASSERT_LE(relativeError(got.data(), want, bins, flag == qvrFftNoDiv ? 1 : 1 / Exact(n)),
                              errorBound(n))
                        << n << " form " << form;
                    EXPECT_EQ(got[1], 0);
                    if (n % 2 == 0)
                        EXPECT_EQ(got[2 * bins - 1], 0);
                }
                EXPECT_EQ(kFreeReal[slot](spec), qvrOk);
            }
        });
        if (HasFatalFailure())
            return;
    }
}

// The need of work memory tells the form: none, sums of all terms, or a chirp of a good length.
TEST(AnyLength, Forms)
{
    eachSlot([](int slot) {
        const auto need = [&](bool real, int n) {
            qvrsDFTSpec* spec = nullptr;
            EXPECT_EQ((real ? kInitReal : kInitComplex)[slot](&spec, n, qvrFftNoDiv, 0), qvrOk);
            int32_t size = -1;
            EXPECT_EQ((real ? kSizeReal : kSizeComplex)[slot](spec, &size), qvrOk);
            EXPECT_EQ((real ? kFreeReal : kFreeComplex)[slot](spec), qvrOk);
            return size;
        };
        for (int n : {1, 2, 7, 13, 16}) {
            EXPECT_EQ(need(true, n), 0);
            EXPECT_EQ(need(false, n), 0);
            if (n < 16)
                EXPECT_EQ(need(true, 2 * n), 0);
        }
        const auto direct = [](int n) { return 8 * n + 64; };
        EXPECT_EQ(need(true, 79), direct(79));
        EXPECT_EQ(need(true, 97), direct(97));
        EXPECT_EQ(need(false, 73), direct(73));
        EXPECT_EQ(need(true, 2 * 73), direct(73));
        const auto chirp = [&](int length) { return 8 * length + 64 + need(false, length); };
        EXPECT_EQ(need(false, 79), chirp(160));
        EXPECT_EQ(need(true, 2 * 79), chirp(160));
        EXPECT_EQ(need(true, 101), chirp(256));
        EXPECT_EQ(need(false, 101), chirp(256));
        EXPECT_EQ(need(false, 1009), chirp(2048));
        EXPECT_EQ(need(true, 2 * 1009), chirp(2048));
        EXPECT_EQ(need(false, 5003), chirp(16384));
    });
}

TEST(AnyLength, Statuses)
{
    eachSlot([](int slot) {
        for (const bool real : {false, true}) {
            const auto init = (real ? kInitReal : kInitComplex)[slot];
            const auto free = (real ? kFreeReal : kFreeComplex)[slot];
            const auto size = (real ? kSizeReal : kSizeComplex)[slot];
            qvrsDFTSpec* spec = nullptr;
            EXPECT_EQ(init(nullptr, 0, 0, 0), qvrErrNullPointer);
            for (int n : {0, -1, INT32_MIN})
                EXPECT_EQ(init(&spec, n, 0, 0), qvrErrBadSize);
            for (int flag : {0, 3, 16})
                for (int n : {5, 30, 64, 101})
                    EXPECT_EQ(init(&spec, n, flag, 0), qvrErrFFTFlag);
            EXPECT_EQ(init(&spec, 1 << 30, qvrFftNoDiv, 0), qvrErrFFTOrder);
            for (int n : {0x7ffffff + 2, 0x30000000, INT32_MAX})
                EXPECT_EQ(init(&spec, n, qvrFftNoDiv, 0), qvrErrBadSize) << n;
            EXPECT_EQ(spec, nullptr);
            for (int n : {12, 64, 77, 73, 1009, 90})
                failEachAllocation(
                    [&] {
                        const qvrStatus status = init(&spec, n, qvrFftDivInvByN, 0);
                        if (status == qvrOk)
                            free(spec);
                        return status;
                    },
                    [&](int at, qvrStatus status, CountingAllocator& allocator) {
                        EXPECT_EQ(status, qvrErrNoMemory) << n << " at " << at;
                        EXPECT_EQ(allocator.live(), 0u);
                    });
            ASSERT_EQ(init(&spec, 77, qvrFftNoDiv, 0), qvrOk);
            int32_t need;
            EXPECT_EQ(size(nullptr, &need), qvrErrNullPointer);
            EXPECT_EQ(size(spec, nullptr), qvrErrNullPointer);
            EXPECT_EQ((real ? kSizeComplex : kSizeReal)[slot](spec, &need), qvrErrBadContext);
            EXPECT_EQ((real ? kFreeComplex : kFreeReal)[slot](spec), qvrErrBadContext);
            float x[200] = {};
            const auto run = (real ? kForwardReal : kForward)[slot], other = (real ? kForward : kForwardReal)[slot];
            EXPECT_EQ(run(nullptr, x, nullptr, nullptr), qvrErrNullPointer);
            EXPECT_EQ(other(nullptr, x, spec, nullptr), qvrErrBadContext);
            EXPECT_EQ(run(nullptr, x, spec, nullptr), qvrErrNullPointer);
            EXPECT_EQ(run(x, nullptr, spec, nullptr), qvrErrNullPointer);
            failEachAllocation([&] { return run(x, x, spec, nullptr); },
                               [](int, qvrStatus status, CountingAllocator&) { EXPECT_EQ(status, qvrErrNoMemory); });
            EXPECT_EQ(free(spec), qvrOk);
            EXPECT_EQ(free(nullptr), qvrErrNullPointer);
        }
    });
}

// ---- The Hilbert transform ------------------------------------------------------------------------------------------

struct State {
    int slot;
    qvrsHilbertState_32f32fc* p = nullptr;
    State(int s, int n) : slot(s) { EXPECT_EQ(qvrTable_qvrsHilbertInitAlloc_32f32fc[slot](&p, n, 0), qvrOk) << n; }
    ~State() { EXPECT_EQ(qvrTable_qvrsHilbertFree_32f32fc[slot](p), qvrOk); }
    State(const State&) = delete;
};

// Positive frequencies doubled, negative ones removed, by the exact transform.
std::vector<Bin> analytic(const Signal& x)
{
    const size_t n = x.size();
    std::vector<Bin> bins = exactDft(std::vector<Bin>(x.begin(), x.end()), -1);
    for (size_t k = 1; k < n; k++)
        bins[k] *= 2 * k < n ? 2 : 2 * k == n ? 1 : 0;
    std::vector<Bin> z = exactDft(bins, 1);
    for (Bin& v : z)
        v /= Exact(n);
    return z;
}

TEST(Hilbert, AnalyticSignal)
{
    for (int n : lengths()) {
        const size_t size = static_cast<size_t>(n), bytes = size * 8;
        const Signal x = randomValues<float>(size, static_cast<uint32_t>(n), -1, 1);
        const std::vector<Bin> want = analytic(x);
        slots::each(qvrTable_qvrsHilbert_32f32fc, [&](auto f, int slot) {
            State state(slot, n);
            Guarded a(bytes), b(bytes + 64);
            for (size_t offset : {0, 4}) {
                float* src = a.atEnd<float>(size * 4, offset);
                float* dst = b.atEnd<float>(bytes, offset);
                memcpy(static_cast<void*>(src), x.data(), size * 4);
                ASSERT_EQ(f(src, reinterpret_cast<qvr32fc*>(dst), state.p), qvrOk);
                EXPECT_TRUE(a.intact() && b.intact());
                Signal got(2 * size);
                memcpy(got.data(), static_cast<void*>(dst), bytes);
                ASSERT_LE(relativeError(got.data(), want, size, 1), 2 * errorBound(n)) << n;
            }
        });
        if (HasFatalFailure())
            return;
    }
}

// A cosine's quadrature is the sine, whatever the length's factors.
TEST(Hilbert, CosineToSine)
{
    slots::each(qvrTable_qvrsHilbert_32f32fc, [&](auto f, int slot) {
        for (int n : {3, 4, 8, 15, 100, 101, 441, 1009}) {
            State state(slot, n);
            Signal x(static_cast<size_t>(n)), z(2 * static_cast<size_t>(n));
            for (int i = 0; i < n; i++)
                x[static_cast<size_t>(i)] =
                    std::cos(static_cast<float>(kTurn) * static_cast<float>(i) / static_cast<float>(n));
            ASSERT_EQ(f(x.data(), reinterpret_cast<qvr32fc*>(z.data()), state.p), qvrOk);
            for (int i = 0; i < n; i++)
                ASSERT_NEAR(z[2 * static_cast<size_t>(i) + 1],
                            std::sin(static_cast<float>(kTurn) * static_cast<float>(i) / static_cast<float>(n)), 2e-6)
                    << n << ", sample " << i;
        }
    });
}

TEST(Hilbert, OneAndTwoSamplesAreCopied)
{
    slots::each(qvrTable_qvrsHilbert_32f32fc, [&](auto f, int slot) {
        for (int n : {1, 2}) {
            State state(slot, n);
            const float x[2] = {-0.1f, 1e30f};
            qvr32fc z[3] = {{9, 9}, {9, 9}, {9, 9}};
            CountingAllocator allocator;
            ASSERT_EQ(f(x, z, state.p), qvrOk);
            EXPECT_EQ(allocator.allocations(), 0);
            for (int i = 0; i < n; i++) {
                EXPECT_EQ(z[i].re, x[i]);
                EXPECT_EQ(bitsOf(z[i].im), 0u);
            }
            EXPECT_EQ(z[n].re, 9);
        }
    });
}

// Refused on every slot alike, before anything is built: factored lengths whose work memory would pass 2^31 - 1 bytes
// on some slot, and lengths from 2^26 up that do not factor.
TEST(Hilbert, LengthsThatCannotFit)
{
    slots::each(qvrTable_qvrsHilbertInitAlloc_32f32fc, [&](auto init, int) {
        CountingAllocator allocator;
        qvrsHilbertState_32f32fc* state = nullptr;
        EXPECT_EQ(init(&state, 121060821, 0), qvrErrNoMemory); // 3 * 7^9
        EXPECT_EQ(init(&state, 97656250, 0), qvrErrNoMemory);  // 2 * 5^11
        EXPECT_EQ(init(&state, 129140163, 0), qvrErrNoMemory); // 3^17
        for (int n : {0x3ffffff + 8, 100000007, 0x7ffffff + 2})
            EXPECT_EQ(init(&state, n, 0), qvrErrBadSize) << n;
        EXPECT_EQ(allocator.allocations(), 0);
    });
}

TEST(Hilbert, Statuses)
{
    slots::each(qvrTable_qvrsHilbert_32f32fc, [&](auto f, int slot) {
        const auto init = qvrTable_qvrsHilbertInitAlloc_32f32fc[slot];
        const auto free = qvrTable_qvrsHilbertFree_32f32fc[slot];
        int other = 0;
        auto* const wrong = reinterpret_cast<qvrsHilbertState_32f32fc*>(&other);
        qvrsHilbertState_32f32fc* state = wrong;
        EXPECT_EQ(init(nullptr, 0, 0), qvrErrNullPointer);
        EXPECT_EQ(init(&state, 0, 0), qvrErrBadSize);
        EXPECT_EQ(init(&state, INT32_MIN, 0), qvrErrBadSize);
        {
            // After these the state's own block is not given back.
            CountingAllocator allocator;
            EXPECT_EQ(init(&state, 1 << 30, 0), qvrErrFFTOrder);
            EXPECT_EQ(init(&state, 0x8000001, 0), qvrErrBadSize);
            EXPECT_EQ(state, wrong);
        }
        State good(slot, 100);
        float x[100] = {};
        qvr32fc z[100];
        EXPECT_EQ(f(nullptr, z, good.p), qvrErrNullPointer);
        EXPECT_EQ(f(x, nullptr, good.p), qvrErrNullPointer);
        EXPECT_EQ(f(x, z, nullptr), qvrErrNullPointer);
        EXPECT_EQ(f(nullptr, z, wrong), qvrErrNullPointer);
        EXPECT_EQ(f(x, z, wrong), qvrErrBadContext);
        EXPECT_EQ(free(nullptr), qvrErrNullPointer);
        EXPECT_EQ(free(wrong), qvrErrBadContext);
        z[0].re = 9;
        failEachAllocation([&] { return f(x, z, good.p); },
                           [&](int, qvrStatus status, CountingAllocator&) {
                               EXPECT_EQ(status, qvrErrNoMemory);
                               EXPECT_EQ(z[0].re, 9);
                           });
        // Every later allocation of a creation, after the state's own.
        for (int n : {60, 1009, 64})
            for (int at = 1;; at++) {
                CountingAllocator allocator(at);
                state = wrong;
                const qvrStatus status = init(&state, n, 0);
                if (allocator.allocations() <= at) {
                    EXPECT_EQ(status, qvrOk);
                    EXPECT_EQ(free(state), qvrOk);
                    EXPECT_EQ(allocator.live(), 0u);
                    break;
                }
                EXPECT_EQ(status, qvrErrNoMemory);
                EXPECT_EQ(state, wrong);
                EXPECT_EQ(allocator.live(), 1u);
            }
    });
}

} // namespace
