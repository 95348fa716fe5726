// Multi-rate FIR: the calls without a state, and the engines behind multi-rate states.
#include <functional>

#include "filters/fir_model.h"
#include "filters/slot_tables.h"
#include "frame/threads.h"
#include "support/allocation.h"
#include "support/regions.h"
#include "support/status_order.h"

using namespace fir;

#define QVR_CREATORS(slot)                                                                                             \
    qvrStatus slot##_ownFIRMRInitAlloc_32f(qvrsFIRState_32f**, const float*, int, int, int, int, int, int,             \
                                           const float*);                                                              \
    qvrStatus slot##_ownFIRMRInitAlloc_64f(qvrsFIRState_64f**, const double*, int, int, int, int, int, int,            \
                                           const double*);                                                             \
    qvrStatus slot##_ownFIRMRInitAlloc64f_32f(qvrsFIRState64f_32f**, const double*, int, int, int, int, int, int,      \
                                              const float*);                                                           \
    qvrStatus slot##_ownFIRMRInitAlloc64f_16s(qvrsFIRState64f_16s**, const double*, int, int, int, int, int, int,      \
                                              const int16_t*);
extern "C" {
QVR_CREATORS(mx)
QVR_CREATORS(m7)
QVR_CREATORS(u8)
QVR_CREATORS(y8)
QVR_CREATORS(e9)
QVR_CREATORS(l9)
}
#define QVR_CREATOR_TABLE(name) {mx_##name, m7_##name, u8_##name, u8_##name, y8_##name, e9_##name, l9_##name}

namespace {

template<class Form> struct CreatorsOf;
template<> struct CreatorsOf<Form32f> {
    static constexpr decltype(&mx_ownFIRMRInitAlloc_32f) table[] = QVR_CREATOR_TABLE(ownFIRMRInitAlloc_32f);
};
template<> struct CreatorsOf<Form64f> {
    static constexpr decltype(&mx_ownFIRMRInitAlloc_64f) table[] = QVR_CREATOR_TABLE(ownFIRMRInitAlloc_64f);
};
template<> struct CreatorsOf<Form64f_32f> {
    static constexpr decltype(&mx_ownFIRMRInitAlloc64f_32f) table[] = QVR_CREATOR_TABLE(ownFIRMRInitAlloc64f_32f);
};
template<> struct CreatorsOf<Form64f_16s> {
    static constexpr decltype(&mx_ownFIRMRInitAlloc64f_16s) table[] = QVR_CREATOR_TABLE(ownFIRMRInitAlloc64f_16s);
};

struct Rate {
    int up, upPhase, down, downPhase;
};

// Step by step on the grid of up x down, moving the delay line at each sample. sum(n, term) adds up the terms 0 .. n
// - 1.
template<class Tap, class Data, class Sum>
auto walkGrid(const std::vector<Data>& src, int iterations, const std::vector<Tap>& taps, const Rate& r,
              std::vector<Data>& delay, const Sum& sum)
{
    const int L = static_cast<int>(taps.size()), a = L / r.up, b = L % r.up;
    int i = (r.up - r.upPhase) % r.up, j = (r.down - r.downPhase) % r.down;
    size_t in = 0;
    std::vector<decltype(sum(0, [](int) { return Tap(0); }))> out;
    for (int64_t step = 0; step < int64_t{iterations} * r.up * r.down; step++) {
        const int n = a + (i < b ? 1 : 0);
        if (i == 0) {
            for (size_t k = delay.size(); k-- > 1;)
                delay[k] = delay[k - 1];
            delay[0] = src[in++];
        }
        if (j == 0)
            out.push_back(sum(n, [&](int m) { return static_cast<Tap>(delay[m]) * taps[i + m * r.up]; }));
        i = i + 1 == r.up ? 0 : i + 1;
        j = j + 1 == r.down ? 0 : j + 1;
    }
    EXPECT_EQ(in, src.size());
    return out;
}

// The order of the 16-bit form.
float laneSum(int n, const std::function<float(int)>& term)
{
    float lane[8] = {}, r = 0;
    int m = 0;
    if (n >= 8) {
        for (; m + 8 <= n; m += 8)
            for (int l = 0; l < 8; l++)
                lane[l] += term(m + l);
        for (int l = 0; l < 4; l++)
            lane[l] += lane[l + 4];
        lane[0] += lane[2];
        lane[1] += lane[3];
        r = lane[0] + lane[1];
    }
    for (; m < n; m++)
        r += term(m);
    return r;
}
int16_t shortOf(float r, int scale)
{
    const int magnitude = static_cast<int>(std::llabs(int64_t{scale}) % 128);
    const uint32_t exponent = scale < 0 ? 127 + magnitude : 127 - magnitude;
    const float v = r * floatOf(exponent << 23);
    if (std::isnan(v))
        return 0;
    if (v < -32768.0f)
        return -32768;
    if (v > 32767.0f)
        return 32767;
    return static_cast<int16_t>(v < 0 ? double(v) - 0.5 : double(v) + 0.5);
}

int delayLength(int taps, int up)
{
    return taps / up + (taps % up != 0);
}

const std::vector<Rate> kRates = {{1, 0, 1, 0},   {1, 0, 2, 0},     {1, 0, 2, 1},    {1, 0, 3, 1}, {2, 0, 1, 0},
                                  {2, 1, 1, 0},   {3, 0, 2, 0},     {3, 1, 2, 0},    {3, 2, 2, 1}, {2, 1, 3, 2},
                                  {4, 1, 6, 5},   {5, 3, 1, 0},     {7, 2, 3, 1},    {3, 1, 7, 6}, {1, 0, 17, 9},
                                  {16, 15, 3, 2}, {160, 3, 147, 8}, {147, 0, 160, 0}};

struct Shape {
    int taps, iterations;
};
// Windows longer than runs, shorter, phases without a tap.
std::vector<Shape> shapesOf(const Rate& r)
{
    std::vector<Shape> shapes;
    const bool large = r.up * r.down > 1000;
    for (int taps : {1, 5, 8, 13, 40, 3 * r.up, 9 * r.up + 1, 20 * r.up})
        for (int iterations : {1, 2, 9, 40})
            if (!(large && iterations > 3 && iterations != 9))
                shapes.push_back({taps, iterations});
    return shapes;
}

TEST(FirMultiRate, OneShot16s)
{
    slots::each(qvrTable_qvrsFIRMR32f_Direct_16s_Sfs, [](auto f, int) {
        for (const Rate& r : kRates)
            for (const Shape& s : shapesOf(r))
                for (int scale : {s.taps % 2 ? 0 : s.iterations % 2 ? 12 : -3}) {
                    const auto taps = randomValues<float>(s.taps, s.taps, -1, 1);
                    const int K = delayLength(s.taps, r.up);
                    auto delay = exactValues<int16_t>(K, 2, 20000), model = delay;
                    // Two calls: the second continues the first.
                    for (int turn = 0; turn < 2; turn++) {
                        const auto x = exactValues<int16_t>(s.iterations * r.down, 3 + turn, 30000);
                        const auto want = walkGrid(x, s.iterations, taps, r, model, laneSum);
                        const size_t outBytes = want.size() * 2, inBytes = x.size() * 2;
                        Guarded &in = pooledGuarded(1, inBytes + 64), &out = pooledGuarded(2, outBytes + 64);
                        Guarded &line = pooledGuarded(3, K * 2 + 64), &t = pooledGuarded(4, taps.size() * 4 + 64);
                        const size_t offset = (s.taps + s.iterations) % 5;
                        auto* src = in.atEnd<int16_t>(inBytes, offset);
                        auto* dst = out.atFront<int16_t>(outBytes, offset);
                        auto* d = line.atEnd<int16_t>(K * 2, offset);
                        auto* h = t.atEnd<float>(taps.size() * 4, offset);
                        memcpy(static_cast<void*>(src), x.data(), inBytes);
                        memcpy(static_cast<void*>(d), delay.data(), K * 2);
                        memcpy(static_cast<void*>(h), taps.data(), taps.size() * 4);
                        ASSERT_EQ(f(src, dst, s.iterations, h, s.taps, r.up, r.upPhase, r.down, r.downPhase, d, scale),
                                  qvrOk);
                        std::vector<int16_t> got(want.size());
                        memcpy(got.data(), static_cast<void*>(dst), outBytes);
                        for (size_t o = 0; o < got.size(); o++)
                            ASSERT_EQ(got[o], shortOf(want[o], scale))
                                << r.up << "/" << r.down << " phases " << r.upPhase << " " << r.downPhase << ", "
                                << s.taps << " taps, output " << o << " of " << got.size();
                        memcpy(delay.data(), static_cast<void*>(d), K * 2);
                        ASSERT_EQ(delay, model);
                        EXPECT_TRUE(in.intact() && out.intact() && line.intact());
                    }
                }
    });
}

TEST(FirMultiRate, OneShot16sScales)
{
    slots::each(qvrTable_qvrsFIRMR32f_Direct_16s_Sfs, [](auto f, int) {
        for (float tap : {1.0f, -1.0f, 0.5f, 32766.5f, 32767.4f, -32768.4f, 1e30f, 1e-38f, float(NAN), float(INFINITY)})
            for (int scale :
                 {0, 1, -1, 126, 127, 128, 129, -126, -127, -128, -129, INT32_MAX, INT32_MIN, INT32_MIN + 1})
                for (int16_t x : {0, 1, 7, -7, 32767, -32768}) {
                    int16_t y = 99, delay = 0;
                    ASSERT_EQ(f(&x, &y, 1, &tap, 1, 1, 0, 1, 0, &delay, scale), qvrOk);
                    ASSERT_EQ(y, shortOf(static_cast<float>(x) * tap, scale))
                        << tap << " * " << x << " scale " << scale;
                }
    });
}

double plainSum(int n, const std::function<double(int)>& term)
{
    double s = 0;
    for (int m = 0; m < n; m++)
        s += term(m);
    return s;
}

TEST(FirMultiRate, OneShot32f)
{
    slots::each(qvrTable_qvrsFIRMR64f_Direct_32f, [](auto f, int slot) {
        const auto inPlace = qvrTable_qvrsFIRMR64f_Direct_32f_I[slot];
        for (const Rate& r : kRates)
            for (const Shape& s : shapesOf(r)) {
                const auto taps = exactValues<double>(s.taps, s.taps, 9, 0.25);
                const int K = delayLength(s.taps, r.up);
                auto delay = exactValues<float>(K, 2), model = delay;
                for (int turn = 0; turn < 2; turn++) {
                    const auto x = exactValues<float>(s.iterations * r.down, 3 + turn);
                    const auto want = walkGrid(x, s.iterations, taps, r, model, plainSum);
                    const size_t outBytes = want.size() * 4, inBytes = x.size() * 4, both = std::max(outBytes, inBytes);
                    Guarded &in = pooledGuarded(1, inBytes + 64), &out = pooledGuarded(2, both + 64);
                    Guarded& line = pooledGuarded(3, K * 4 + 64);
                    const size_t offset = (s.taps + s.iterations) % 5;
                    auto* src = in.atEnd<float>(inBytes, offset);
                    auto* dst = out.atFront<float>(outBytes, offset);
                    auto* d = line.atEnd<float>(K * 4, offset);
                    memcpy(static_cast<void*>(src), x.data(), inBytes);
                    memcpy(static_cast<void*>(d), delay.data(), K * 4);
                    ASSERT_EQ(f(src, dst, s.iterations, taps.data(), s.taps, r.up, r.upPhase, r.down, r.downPhase, d),
                              qvrOk);
                    EXPECT_TRUE(in.intact() && out.intact() && line.intact());
                    std::vector<float> got(want.size());
                    memcpy(got.data(), static_cast<void*>(dst), outBytes);
                    for (size_t o = 0; o < got.size(); o++)
                        ASSERT_EQ(got[o], static_cast<float>(want[o]))
                            << r.up << "/" << r.down << " phases " << r.upPhase << " " << r.downPhase << ", " << s.taps
                            << " taps, output " << o << " of " << got.size();
                    std::vector<float> after(K);
                    memcpy(after.data(), static_cast<void*>(d), K * 4);
                    ASSERT_EQ(after, model);
                    // In place, from the same delay line.
                    auto* both_ = out.atFront<float>(both, offset);
                    memcpy(static_cast<void*>(both_), x.data(), inBytes);
                    auto line2 = delay;
                    ASSERT_EQ(inPlace(both_, s.iterations, taps.data(), s.taps, r.up, r.upPhase, r.down, r.downPhase,
                                      line2.data()),
                              qvrOk);
                    EXPECT_EQ(memcmp(static_cast<void*>(both_), got.data(), outBytes), 0);
                    EXPECT_EQ(line2, model);
                    EXPECT_TRUE(out.intact());
                    delay = after;
                }
            }
    });
}

// Runs of many blocks, and phases or strides too long for blocks.
TEST(FirMultiRate, OneShotLong)
{
    slots::each(qvrTable_qvrsFIRMR64f_Direct_32f, [](auto f, int slot) {
        const auto shorts = qvrTable_qvrsFIRMR32f_Direct_16s_Sfs[slot];
        struct Long {
            Rate rate;
            int taps, iterations;
        };
        std::vector<Long> cases = {{{1, 0, 2, 1}, 33, 3000},    {{3, 1, 2, 0}, 50, 3000},
                                   {{1, 0, 1, 0}, 2048, 300},   {{1, 0, 1, 0}, 2049, 100},
                                   {{1, 0, 2048, 7}, 30, 20},   {{1, 0, 2049, 7}, 30, 20},
                                   {{1, 0, 6000, 5999}, 30, 3}, {{6000, 5, 1, 0}, 30, 3},
                                   {{2, 1, 3, 0}, 5000, 100},   {{147, 3, 160, 9}, 147 * 20, 40}};
        for (const Long& c : cases) {
            const Rate& r = c.rate;
            const int K = delayLength(c.taps, r.up);
            SCOPED_TRACE(testing::Message() << r.up << "/" << r.down << ", " << c.taps << " taps");
            {
                const auto taps = exactValues<double>(c.taps, 5, 3);
                const auto x = exactValues<float>(c.iterations * r.down, 6, 3);
                auto delay = exactValues<float>(K, 2, 3), model = delay;
                std::vector<float> y(static_cast<size_t>(c.iterations) * r.up);
                ASSERT_EQ(f(x.data(), y.data(), c.iterations, taps.data(), c.taps, r.up, r.upPhase, r.down, r.downPhase,
                            delay.data()),
                          qvrOk);
                const auto want = walkGrid(x, c.iterations, taps, r, model, plainSum);
                for (size_t o = 0; o < y.size(); o++)
                    ASSERT_EQ(y[o], static_cast<float>(want[o])) << o;
                EXPECT_EQ(delay, model);
            }
            {
                const auto taps = randomValues<float>(c.taps, 5, -0.1, 0.1);
                const auto x = exactValues<int16_t>(c.iterations * r.down, 6, 10000);
                auto delay = exactValues<int16_t>(K, 2, 10000), model = delay;
                std::vector<int16_t> y(static_cast<size_t>(c.iterations) * r.up);
                ASSERT_EQ(shorts(x.data(), y.data(), c.iterations, taps.data(), c.taps, r.up, r.upPhase, r.down,
                                 r.downPhase, delay.data(), 1),
                          qvrOk);
                const auto want = walkGrid(x, c.iterations, taps, r, model, laneSum);
                for (size_t o = 0; o < y.size(); o++)
                    ASSERT_EQ(y[o], shortOf(want[o], 1)) << o;
                EXPECT_EQ(delay, model);
            }
        }
    });
}

// A NaN enters the outputs whose windows hold it, and no other.
TEST(FirMultiRate, NanStaysInItsWindows)
{
    slots::each(qvrTable_qvrsFIRMR64f_Direct_32f, [](auto f, int) {
        for (const Rate& r : {Rate{3, 1, 2, 0}, Rate{1, 0, 2, 1}, Rate{1, 0, 1, 0}})
            for (int L : {1, 7, 25})
                for (int at = 90; at < 94; at++) {
                    const std::vector<double> taps(L, 1.0);
                    std::vector<float> x(100 * r.down, 1.0f), delay(delayLength(L, r.up)), y(100 * r.up);
                    x[at] = NAN;
                    auto model = delay;
                    ASSERT_EQ(
                        f(x.data(), y.data(), 100, taps.data(), L, r.up, r.upPhase, r.down, r.downPhase, delay.data()),
                        qvrOk);
                    const auto want = walkGrid(x, 100, taps, r, model, plainSum);
                    for (size_t o = 0; o < y.size(); o++)
                        ASSERT_TRUE(sameValue(y[o], static_cast<float>(want[o]))) << o;
                }
    });
}

TEST(FirMultiRate, OneShotStatuses)
{
    slots::each(qvrTable_qvrsFIRMR64f_Direct_32f, [](auto f, int slot) {
        const auto shorts = qvrTable_qvrsFIRMR32f_Direct_16s_Sfs[slot];
        const auto inPlace = qvrTable_qvrsFIRMR64f_Direct_32f_I[slot];
        struct Args {
            bool src, dst, taps, delay;
            int n, L, up, upPhase, down, downPhase;
        };
        const Args valid = {true, true, true, true, 4, 9, 3, 1, 2, 1};
        const std::vector<double> taps(9, 1.0);
        const std::vector<float> shortTaps(9, 1.0f);
        const std::vector<float> x(8, 1.0f);
        const std::vector<int16_t> xs(8, 1);
        Guarded out(4096), line(64);
        float *dst = out.atEnd<float>(48), *delay = line.atEnd<float>(12);
        for (int bad : {0, -1, INT32_MIN})
            for (int badUp : {3, -1, INT32_MAX, INT32_MIN})
                for (int badDown : {2, -1, INT32_MAX, INT32_MIN})
                    for (int form = 0; form < 3; form++) {
                        std::vector<Fault<Args>> faults = {
                            {"src", qvrErrNullPointer, [](Args& a) { a.src = false; }},
                            {"dst", qvrErrNullPointer, [](Args& a) { a.dst = false; }},
                            {"iterations", qvrErrBadSize, [=](Args& a) { a.n = bad; }},
                            {"taps", qvrErrNullPointer, [](Args& a) { a.taps = false; }},
                            {"tapsLen", qvrErrBadTapsLen, [=](Args& a) { a.L = bad; }},
                            {"up", qvrErrBadMultiRateFactor, [=](Args& a) { a.up = bad; }},
                            {"down", qvrErrBadMultiRateFactor, [=](Args& a) { a.down = bad; }},
                            {"up phase", qvrErrBadMultiRatePhase, [=](Args& a) { a.upPhase = badUp; }},
                            {"down phase", qvrErrBadMultiRatePhase, [=](Args& a) { a.downPhase = badDown; }},
                            {"delay", qvrErrNullPointer, [](Args& a) { a.delay = false; }}};
                        if (form == 2)
                            faults.erase(faults.begin() + 1);
                        expectStatusOrder<Args>(
                            valid, faults,
                            [&](const Args& a) {
                                const double* t = a.taps ? taps.data() : nullptr;
                                const float* ts = a.taps ? shortTaps.data() : nullptr;
                                float* d = a.delay ? delay : nullptr;
                                if (form == 0)
                                    return f(a.src ? x.data() : nullptr, a.dst ? dst : nullptr, a.n, t, a.L, a.up,
                                             a.upPhase, a.down, a.downPhase, d);
                                if (form == 1)
                                    return shorts(a.src ? xs.data() : nullptr,
                                                  reinterpret_cast<int16_t*>(a.dst ? dst : nullptr), a.n, ts, a.L, a.up,
                                                  a.upPhase, a.down, a.downPhase, reinterpret_cast<int16_t*>(d), 0);
                                return inPlace(a.src ? dst : nullptr, a.n, t, a.L, a.up, a.upPhase, a.down, a.downPhase,
                                               d);
                            },
                            [&] { return out.untouched() && line.untouched(); });
                    }
        // The copy of the in-place form.
        std::vector<float> y(12, 1.0f), d(3, 5.0f);
        const int allocations =
            failEachAllocation([&] { return inPlace(y.data(), 4, taps.data(), 9, 3, 1, 2, 1, d.data()); },
                               [&](int, qvrStatus status, const CountingAllocator& a) {
                                   EXPECT_EQ(status, qvrErrNoMemory);
                                   EXPECT_EQ(a.live(), 0u);
                                   EXPECT_EQ(y, std::vector<float>(12, 1.0f));
                                   EXPECT_EQ(d, std::vector<float>(3, 5.0f));
                               });
        EXPECT_EQ(allocations, 1);
        CountingAllocator allocator;
        EXPECT_EQ(inPlace(y.data(), 4, taps.data(), 9, 3, 1, 2, 1, d.data()), qvrOk);
        EXPECT_EQ(allocator.live(), 0u);
        // A copy that no allocation holds.
        EXPECT_EQ(inPlace(y.data(), INT32_MAX, taps.data(), 9, 3, 1, INT32_MAX, 1, d.data()), qvrErrNoMemory);
        EXPECT_EQ(inPlace(y.data(), 1 << 29, taps.data(), 9, 3, 1, 8, 1, d.data()), qvrErrNoMemory);
        EXPECT_EQ(allocator.allocations(), 1);
    });
}

// ---- Engines --------------------------------------------------------------------------------------------------------

template<class Form> class FirEngine : public testing::Test {};
using Forms = testing::Types<Form32f, Form64f, Form64f_32f, Form64f_16s>;
TYPED_TEST_SUITE(FirEngine, Forms);

template<class Form>
State<Form> makeMultiRate(int slot, const std::vector<typename Form::Tap>& taps, const Rate& r, int mode,
                          const typename Form::Data* delay)
{
    typename Form::State* s = nullptr;
    EXPECT_EQ(CreatorsOf<Form>::table[slot](&s, taps.data(), static_cast<int>(taps.size()), r.up, r.upPhase, r.down,
                                            r.downPhase, mode, delay),
              qvrOk);
    return State<Form>(s, Release<Form>{slot});
}

// A state as another creator makes it: the stated fields alone, and a delay buffer of the history and the stated room,
// both before an unreadable page.
template<class Form> struct HandMade {
    using History = std::conditional_t<sizeof(typename Form::Data) == 4, float, double>;
    typename Form::State* p;
    Guarded* delay;

    explicit HandMade(const typename Form::State& made)
    {
        const size_t fields = reinterpret_cast<const char*>(&made.widened) - reinterpret_cast<const char*>(&made);
        const size_t elements = made.delayLen + made.directLimit;
        p = pooledGuarded(3, fields + 64).template atEnd<typename Form::State>(fields);
        memcpy(static_cast<void*>(p), &made, fields);
        delay = &pooledGuarded(4, elements * sizeof(History) + 64);
        History* d = delay->template atEnd<History>(elements * sizeof(History));
        memcpy(d, made.delayStore, made.delayLen * sizeof(History));
        p->delayStore = reinterpret_cast<typename Form::Tap*>(d);
        p->owned = 0;
    }
};

// A stream in several runs, out of place or in place, against the grid.
template<class Form>
void checkEngine(int slot, const Rate& r, int mode, int L, const std::vector<int>& runs, bool inPlace, int scale,
                 bool handMade = false)
{
    using Data = typename Form::Data;
    const auto taps = exactValues<typename Form::Tap>(L, L, 9, 0.25);
    const auto first = exactValues<Data>(delayLength(L, r.up), 2);
    const auto made = makeMultiRate<Form>(slot, taps, r, mode, first.data());
    typename Form::State* state = made.get();
    const HandMade<Form> own(*made);
    if (handMade)
        state = own.p;
    auto model = first;
    const std::vector<double> doubles(taps.begin(), taps.end());
    for (int n : runs) {
        const auto x = exactValues<Data>(n * r.down, n);
        const auto want = walkGrid(x, n, doubles, r, model, plainSum);
        const size_t inBytes = x.size() * sizeof(Data), outBytes = want.size() * sizeof(Data);
        Guarded& in = pooledGuarded(1, std::max(inBytes, outBytes) + 64);
        Guarded& out = pooledGuarded(2, outBytes + 64);
        Data* src = in.atEnd<Data>(inPlace ? std::max(inBytes, outBytes) : inBytes, n % 3);
        Data* dst = inPlace ? src : out.atFront<Data>(outBytes, n % 5);
        memcpy(static_cast<void*>(src), x.data(), inBytes);
        ASSERT_EQ(Form::run(slot, src, dst, n, state, scale), qvrOk);
        std::vector<Data> got(want.size());
        memcpy(got.data(), static_cast<void*>(dst), outBytes);
        for (size_t o = 0; o < got.size(); o++)
            ASSERT_EQ(got[o], delivered<Form>(want[o], scale))
                << r.up << "/" << r.down << " phases " << r.upPhase << " " << r.downPhase << " mode " << mode << ", "
                << L << " taps, " << n << " iterations, output " << o;
        EXPECT_TRUE(in.intact());
        EXPECT_TRUE(inPlace || out.intact());
        EXPECT_TRUE(own.delay->intact());
        ASSERT_EQ(state->delayIndex, 0);
    }
}

TYPED_TEST(FirEngine, AgreeWithTheGrid)
{
    using Form = TypeParam;
    eachSlot<Form>([&](int slot) {
        for (const Rate& r : kRates)
            for (int mode : {1, 2, 3}) {
                if (mode == 2 && r.up != 1)
                    continue;
                const bool large = r.up * r.down > 1000;
                for (int L : {1, 7, 30, 2 * r.up + 1})
                    for (bool inPlace : {false, true}) {
                        const std::vector<int> runs =
                            large ? std::vector<int>{1, 5} : std::vector<int>{1, 3, 7, 1, 40, 4};
                        checkEngine<Form>(slot, r, mode, L, runs, inPlace,
                                          std::is_integral_v<typename Form::Data> ? L % 3 : 0);
                        if (this->HasFatalFailure())
                            return;
                    }
            }
    });
}

// Nothing is read behind the stated fields, nothing read or written behind the stated delay buffer.
TYPED_TEST(FirEngine, StatesMadeByHand)
{
    using Form = TypeParam;
    eachSlot<Form>([&](int slot) {
        for (const Rate& r : kRates)
            for (int mode : {1, 2, 3}) {
                if ((mode == 2 && r.up != 1) || r.up * r.down > 1000)
                    continue;
                for (int L : {1, 7, 30, 2 * r.up + 1}) {
                    checkEngine<Form>(slot, r, mode, L, {1, 3, 7, 1, 40, 4, 1700}, L % 2, 0, true);
                    if (this->HasFatalFailure())
                        return;
                }
            }
    });
}

// From 1601 iterations on runs fork; chunks in place.
TYPED_TEST(FirEngine, LongRuns)
{
    using Form = TypeParam;
    const int saved = qvrNumThreadsValue();
    eachSlot<Form>([&](int slot) {
        for (int budget : {1, 3}) {
            qvrSetNumThreads(budget);
            for (const Rate& r : {Rate{3, 1, 2, 0}, Rate{1, 0, 2, 1}})
                for (int mode : {1, 2, 3}) {
                    if (mode == 2 && r.up != 1)
                        continue;
                    const int before = regions::forks();
                    checkEngine<Form>(slot, r, mode, 21, {1600, 30}, false, 0);
                    EXPECT_EQ(regions::forks(), before);
                    checkEngine<Form>(slot, r, mode, 21, {1601, 1750}, false, 0);
                    if (regions::counted())
                        EXPECT_EQ(regions::forks() - before, budget < 2 ? 0 : 2);
                    checkEngine<Form>(slot, r, mode, 21, {4500}, true, 0);
                    if (this->HasFatalFailure())
                        break;
                }
        }
        qvrSetNumThreads(saved);
    });
    qvrSetNumThreads(saved);
}

// With both factors 1 the engines are the single-rate filter.
TYPED_TEST(FirEngine, UnitRateIsTheSingleRate)
{
    using Form = TypeParam;
    using Data = typename Form::Data;
    eachSlot<Form>([&](int slot) {
        for (int mode : {1, 2, 3}) {
            const auto taps = exactValues<typename Form::Tap>(25, 3);
            const auto delay = exactValues<Data>(25, 4), x = exactValues<Data>(300, 5);
            auto one = create<Form>(slot, taps, delay.data());
            auto many = makeMultiRate<Form>(slot, taps, {1, 0, 1, 0}, mode, delay.data());
            std::vector<Data> a(300), b(300);
            ASSERT_EQ(Form::run(slot, x.data(), a.data(), 300, one.get()), qvrOk);
            ASSERT_EQ(Form::run(slot, x.data(), b.data(), 300, many.get()), qvrOk);
            EXPECT_EQ(a, b);
            for (int k = 0; k < 25; k++) {
                const double history = std::is_same_v<Form, Form64f_32f>
                                           ? reinterpret_cast<const float*>(many->delayStore)[k]
                                           : static_cast<double>(many->delayStore[k]);
                EXPECT_EQ(history, static_cast<double>(one->delayStore[k]));
            }
        }
    });
}

TYPED_TEST(FirEngine, CreationAndMemory)
{
    using Form = TypeParam;
    using Data = typename Form::Data;
    using Tap = typename Form::Tap;
    eachSlot<Form>([&](int slot) {
        const auto creator = CreatorsOf<Form>::table[slot];
        typename Form::State* s = nullptr;
        const std::vector<Tap> taps(9, Tap(1));
        {
            CountingAllocator allocator;
            EXPECT_EQ(creator(nullptr, taps.data(), 9, 3, 0, 2, 0, 1, nullptr), qvrErrNullPointer);
            EXPECT_EQ(creator(&s, nullptr, 9, 3, 0, 2, 0, 1, nullptr), qvrErrNullPointer);
            EXPECT_EQ(creator(&s, taps.data(), 0, 3, 0, 2, 0, 1, nullptr), qvrErrBadTapsLen);
            EXPECT_EQ(creator(&s, taps.data(), 9, 0, 0, 2, 0, 1, nullptr), qvrErrBadMultiRateFactor);
            EXPECT_EQ(creator(&s, taps.data(), 9, 3, 0, 0, 0, 1, nullptr), qvrErrBadMultiRateFactor);
            EXPECT_EQ(creator(&s, taps.data(), 9, 3, 3, 2, 0, 1, nullptr), qvrErrBadMultiRatePhase);
            EXPECT_EQ(creator(&s, taps.data(), 9, 3, 0, 2, -1, 1, nullptr), qvrErrBadMultiRatePhase);
            for (int mode : {0, 2, 4})
                EXPECT_EQ(creator(&s, taps.data(), 9, 3, 0, 2, 0, mode, nullptr), qvrErrBadArgument);
            EXPECT_EQ(creator(&s, taps.data(), 9, INT32_MAX, 0, INT32_MAX, 0, 1, nullptr), qvrErrNoMemory);
            EXPECT_EQ(creator(&s, taps.data(), INT32_MAX, 1, 0, 1, 0, 1, nullptr), qvrErrNoMemory);
            EXPECT_EQ(creator(&s, taps.data(), 9, INT32_MAX, 0, 1, 0, 3, nullptr), qvrErrNoMemory);
            EXPECT_EQ(creator(&s, taps.data(), 9, 1, 0, INT32_MAX, 0, 3, nullptr), qvrErrNoMemory);
            EXPECT_EQ(s, nullptr);
            EXPECT_EQ(allocator.allocations(), 0);
        }
        EXPECT_EQ(failEachAllocation(
                      [&] {
                          typename Form::State* t = nullptr;
                          const qvrStatus status = creator(&t, taps.data(), 9, 3, 0, 2, 0, 1, nullptr);
                          if (t)
                              Form::destroyers[slot](t);
                          return status;
                      },
                      [](int, qvrStatus status, const CountingAllocator& a) {
                          EXPECT_EQ(status, qvrErrNoMemory);
                          EXPECT_EQ(a.live(), 0u);
                      }),
                  1);
        // In place with more outputs than samples one copy is taken and given back.
        for (const Rate& r : {Rate{3, 0, 2, 0}, Rate{2, 0, 3, 0}}) {
            auto state = makeMultiRate<Form>(slot, taps, r, 1, nullptr);
            std::vector<Data> x(60, Data(1));
            EXPECT_EQ(failEachAllocation([&] { return Form::run(slot, x.data(), x.data(), 20, state.get()); },
                                         [&](int, qvrStatus status, const CountingAllocator& a) {
                                             EXPECT_EQ(status, qvrErrNoMemory);
                                             EXPECT_EQ(a.live(), 0u);
                                             EXPECT_EQ(x, std::vector<Data>(60, Data(1)));
                                         }),
                      r.up > r.down ? 1 : 0);
        }
    });
}

// A delay line goes in and out of multi-rate states through the accessors.
TEST(FirEngineAccessors, DelayLines)
{
    const auto check = [](auto form, auto getters, auto setters) {
        using Form = decltype(form);
        using Data = typename Form::Data;
        eachSlot<Form>([&](int slot) {
            const std::vector<typename Form::Tap> taps = exactValues<typename Form::Tap>(20, 3);
            const auto values = exactValues<Data>(7, 4);
            auto state = makeMultiRate<Form>(slot, taps, {3, 0, 2, 0}, 1, nullptr);
            std::vector<Data> got(7, 9);
            EXPECT_EQ(getters[slot](state.get(), got.data()), qvrOk);
            EXPECT_EQ(got, std::vector<Data>(7));
            EXPECT_EQ(setters[slot](state.get(), values.data()), qvrOk);
            EXPECT_EQ(getters[slot](state.get(), got.data()), qvrOk);
            EXPECT_EQ(got, values);
            auto same = makeMultiRate<Form>(slot, taps, {3, 0, 2, 0}, 1, values.data());
            const auto x = exactValues<Data>(40, 6);
            std::vector<Data> a(60), b(60);
            EXPECT_EQ(Form::run(slot, x.data(), a.data(), 20, state.get()), qvrOk);
            EXPECT_EQ(Form::run(slot, x.data(), b.data(), 20, same.get()), qvrOk);
            EXPECT_EQ(a, b);
            EXPECT_EQ(getters[slot](state.get(), got.data()), qvrOk);
            for (int k = 0; k < 7; k++)
                EXPECT_EQ(got[k], x[39 - k]);
        });
    };
    check(Form32f{}, qvrTable_qvrsFIRGetDlyLine_32f, qvrTable_qvrsFIRSetDlyLine_32f);
    check(Form64f{}, qvrTable_qvrsFIRGetDlyLine_64f, qvrTable_qvrsFIRSetDlyLine_64f);
    check(Form64f_32f{}, qvrTable_qvrsFIRGetDlyLine64f_32f, qvrTable_qvrsFIRSetDlyLine64f_32f);
    slots::each(qvrTable_qvrsFIRGetTaps_32f, [](auto get, int slot) {
        const auto taps = exactValues<float>(20, 3);
        auto state = makeMultiRate<Form32f>(slot, taps, {3, 0, 2, 0}, 1, nullptr);
        std::vector<float> got(20);
        EXPECT_EQ(get(state.get(), got.data()), qvrOk);
        EXPECT_EQ(got, taps);
    });
}

// Without a delay line the source begins with the history.
TEST(FirEngine32f, NoDelayLine)
{
    eachSlot<Form32f>([&](int slot) {
        for (int mode : {1, 2, 3})
            for (const Rate& r : {Rate{1, 0, 2, 1}, Rate{3, 2, 2, 0}, Rate{1, 0, 1, 0}})
                for (int n : {1, 3, 20, 100}) {
                    if (mode == 2 && r.up != 1)
                        continue;
                    const auto taps = exactValues<float>(14, 3);
                    const int K = delayLength(14, r.up);
                    auto state = makeMultiRate<Form32f>(slot, taps, r, mode, nullptr);
                    state->tag = 0x46493334;
                    const auto x = exactValues<float>(n * r.down, 5);
                    auto history = exactValues<float>(K, 6);
                    std::vector<float> all(history.rbegin(), history.rend()), y(n * r.up);
                    all.insert(all.end(), x.begin(), x.end());
                    Guarded& in = pooledGuarded(1, all.size() * 4 + 64);
                    float* src = in.atEnd<float>(all.size() * 4);
                    memcpy(src, all.data(), all.size() * 4);
                    ASSERT_EQ(Form32f::run(slot, src, y.data(), n, state.get()), qvrOk);
                    const auto want =
                        walkGrid(x, n, std::vector<double>(taps.begin(), taps.end()), r, history, plainSum);
                    for (size_t o = 0; o < y.size(); o++)
                        ASSERT_EQ(y[o], static_cast<float>(want[o]))
                            << r.up << "/" << r.down << " mode " << mode << " " << o;
                    EXPECT_EQ(Form32f::run(slot, y.data(), y.data(), n, state.get()), qvrErrBadContext);
                    state->multiRateMode = 9;
                    EXPECT_EQ(Form32f::run(slot, src, y.data(), n, state.get()), qvrErrBadContext);
                }
    });
}

} // namespace
