#include <memory>

#include "fourier/slot_tables.h"
#include "model/fourier.h"
#include "support/allocation.h"
#include "support/guarded.h"
#include "support/slots.h"
#include "support/status_order.h"
#include "support/values.h"

namespace {

using Signal = std::vector<float>;
using Exact = long double;

using Filter = model::Channel;

// ---- States ---------------------------------------------------------------------------------------------------------

struct Forward {
    using State = qvrsWTFwdState_32f;
    static constexpr auto& init = qvrTable_qvrsWTFwdInitAlloc_32f;
    static constexpr auto& set = qvrTable_qvrsWTFwdSetDlyLine_32f;
    static constexpr auto& get = qvrTable_qvrsWTFwdGetDlyLine_32f;
    static constexpr auto& free = qvrTable_qvrsWTFwdFree_32f;
    static int delays(const Filter& f) { return f.length() - 1 + std::max(f.offset, 0); }
};
struct Inverse {
    using State = qvrsWTInvState_32f;
    static constexpr auto& init = qvrTable_qvrsWTInvInitAlloc_32f;
    static constexpr auto& set = qvrTable_qvrsWTInvSetDlyLine_32f;
    static constexpr auto& get = qvrTable_qvrsWTInvGetDlyLine_32f;
    static constexpr auto& free = qvrTable_qvrsWTInvFree_32f;
    static int delays(const Filter& f) { return std::max((f.length() + f.offset - 1) >> 1, 0); }
};

template<class D> struct Object {
    int slot;
    typename D::State* state = nullptr;
    Object(int s, const Filter& low, const Filter& high) : slot(s)
    {
        // The taps are copied: their array is gone after creation.
        const Signal l = low.taps, h = high.taps;
        EXPECT_EQ(D::init[slot](&state, l.data(), low.length(), low.offset, h.data(), high.length(), high.offset),
                  qvrOk);
    }
    ~Object() { EXPECT_EQ(D::free[slot](state), qvrOk); }
    Object(const Object&) = delete;
};

// Runs a stream through in blocks whose sizes repeat, on guarded arrays.
struct Bands {
    Signal low, high;
};
Bands analyse(int slot, qvrsWTFwdState_32f* state, const Signal& x, const std::vector<size_t>& blocks, size_t offset)
{
    Bands bands;
    for (size_t at = 0, i = 0; at < x.size() / 2; i++) {
        const size_t n = std::min(blocks[i % blocks.size()], x.size() / 2 - at);
        Guarded &in = pooledGuarded(1, n * 8 + 128), &low = pooledGuarded(2, n * 4 + 128),
                &high = pooledGuarded(3, n * 4 + 128);
        float *p = in.atEnd<float>(n * 8, offset), *l = low.atEnd<float>(n * 4, offset);
        float* h = high.atEnd<float>(n * 4, offset);
        memcpy(static_cast<void*>(p), x.data() + 2 * at, n * 8);
        EXPECT_EQ(qvrTable_qvrsWTFwd_32f[slot](p, l, h, static_cast<int>(n), state), qvrOk);
        EXPECT_TRUE(in.intact() && low.intact() && high.intact());
        bands.low.resize(at + n);
        bands.high.resize(at + n);
        memcpy(bands.low.data() + at, static_cast<void*>(l), n * 4);
        memcpy(bands.high.data() + at, static_cast<void*>(h), n * 4);
        at += n;
    }
    return bands;
}
Signal synthesise(int slot, qvrsWTInvState_32f* state, const Bands& y, const std::vector<size_t>& blocks, size_t offset)
{
    Signal x;
    for (size_t at = 0, i = 0; at < y.low.size(); i++) {
        const size_t n = std::min(blocks[i % blocks.size()], y.low.size() - at);
        Guarded &out = pooledGuarded(1, n * 8 + 128), &low = pooledGuarded(2, n * 4 + 128),
                &high = pooledGuarded(3, n * 4 + 128);
        float *p = out.atEnd<float>(n * 8, offset), *l = low.atEnd<float>(n * 4, offset);
        float* h = high.atEnd<float>(n * 4, offset);
        memcpy(static_cast<void*>(l), y.low.data() + at, n * 4);
        memcpy(static_cast<void*>(h), y.high.data() + at, n * 4);
        EXPECT_EQ(qvrTable_qvrsWTInv_32f[slot](l, h, static_cast<int>(n), p, state), qvrOk);
        EXPECT_TRUE(out.intact() && low.intact() && high.intact());
        x.resize(2 * (at + n));
        memcpy(x.data() + 2 * at, static_cast<void*>(p), n * 8);
        at += n;
    }
    return x;
}

template<class Body> void eachSlot(const Body& body)
{
    slots::each(qvrTable_qvrsWTFwd_32f, [&](auto, int slot) { body(slot); });
}

// The sum in double is right to far below half a unit of single, so one result in many millions may differ by a unit.
void expectRounded(const Signal& got, const Signal& want, const std::string& what)
{
    ASSERT_EQ(got.size(), want.size()) << what;
    for (size_t i = 0; i < got.size(); i++)
        ASSERT_LE(std::fabs(got[i] - want[i]), std::fabs(want[i]) * 0x1p-23 + 1e-30) << what << ", result " << i;
}

Filter someFilter(int length, int offset, uint32_t seed)
{
    return {randomValues<float>(static_cast<size_t>(length), seed, -1, 1), offset};
}

std::string name(const Filter& f, size_t block)
{
    return std::to_string(f.length()) + " taps, offset " + std::to_string(f.offset) + ", blocks from " +
           std::to_string(block);
}

const std::vector<std::vector<size_t>> kBlocks = {{2000}, {1}, {1, 2, 3, 5, 8, 13}, {7, 64}, {300, 1, 256}};

TEST(WaveletForward, FiltersAndHalves)
{
    const Signal x = randomValues<float>(1400, 5, -1, 1);
    eachSlot([&](int slot) {
        for (int length : {1, 2, 3, 4, 5, 8, 9, 16, 31, 70})
            for (int offset : {-1, 0, 1, 2, 7, 50}) {
                const Filter low = someFilter(length, offset, 1), high = someFilter(length / 2 + 3, 3 - length % 5, 2);
                const Signal wantLow = model::halved(low, x), wantHigh = model::halved(high, x);
                for (size_t b = 0; b < kBlocks.size(); b++) {
                    Object<Forward> object(slot, low, high);
                    const Bands got = analyse(slot, object.state, x, kBlocks[b], (b * 4) % 12);
                    expectRounded(got.low, wantLow, name(low, kBlocks[b][0]));
                    expectRounded(got.high, wantHigh, name(high, kBlocks[b][0]));
                }
            }
    });
}

TEST(WaveletInverse, DoublesAndFilters)
{
    const Bands y = {randomValues<float>(700, 5, -1, 1), randomValues<float>(700, 6, -1, 1)};
    eachSlot([&](int slot) {
        for (int length : {1, 2, 3, 4, 5, 8, 9, 16, 31, 70})
            for (int offset : {-1, 0, 1, 2, 3, 7, 50}) {
                const Filter low = someFilter(length, offset, 1), high = someFilter(length / 2 + 3, 3 - length % 5, 2);
                const Signal one = model::doubled(low, y.low), two = model::doubled(high, y.high);
                for (size_t b = 0; b < kBlocks.size(); b++) {
                    Object<Inverse> object(slot, low, high);
                    const Signal got = synthesise(slot, object.state, y, kBlocks[b], (b * 4) % 12);
                    ASSERT_EQ(got.size(), one.size());
                    for (size_t i = 0; i < got.size(); i++)
                        ASSERT_LE(std::fabs(got[i] - (one[i] + two[i])),
                                  0x1p-23 * (std::fabs(one[i]) + std::fabs(two[i])) + 1e-30)
                            << name(low, kBlocks[b][0]) << ", sample " << i;
                }
            }
    });
}

// Whole numbers leave nothing to rounding; the low channel's result is there, bit for bit, when the high one adds
// zeros.
TEST(WaveletForward, WholeNumbersAreExact)
{
    Signal x(600);
    for (size_t i = 0; i < x.size(); i++)
        x[i] = static_cast<float>(static_cast<int>(i * 7919 % 201) - 100);
    const Filter low = {{1, -2, 3, -4, 5, 6, 7}, 2}, high = {{-3, 1}, -1};
    eachSlot([&](int slot) {
        Object<Forward> object(slot, low, high);
        const Bands got = analyse(slot, object.state, x, {37}, 0);
        EXPECT_EQ(got.low, model::halved(low, x));
        EXPECT_EQ(got.high, model::halved(high, x));
        Object<Inverse> back(slot, low, high);
        const Signal both = synthesise(slot, back.state, {got.low, Signal(300, 0.0f)}, {37}, 0);
        EXPECT_EQ(both, model::doubled(low, got.low));
    });
}

// Products are rounded to single before they are summed.
TEST(WaveletForward, ProductsAreSingle)
{
    const float a = 1 + 0x1p-12f;
    const Filter low = {{a, -1.0f}, 0};
    eachSlot([&](int slot) {
        Object<Forward> object(slot, low, low);
        // a * a = 1 + 2^-11 + 2^-24, whose last bit goes.
        const Signal x = {0, 1 + 0x1p-11f, a, 0};
        const Bands got = analyse(slot, object.state, x, {2}, 0);
        EXPECT_EQ(got.low[1], a * a - x[1]);
        EXPECT_EQ(got.low[1], 0);
    });
}

// ---- Real banks -----------------------------------------------------------------------------------------------------

struct Bank {
    std::string name;
    Signal low, high, backLow, backHigh;
    size_t delay;
};

// The high-pass filter of an orthogonal bank, and the reversed filters of the way back.
Bank orthogonal(const std::string& name, const std::vector<double>& h)
{
    const size_t n = h.size();
    Bank bank = {name, {}, {}, {}, {}, n - 1};
    for (size_t k = 0; k < n; k++) {
        bank.low.push_back(static_cast<float>(h[k]));
        bank.high.push_back(static_cast<float>(k % 2 ? -h[n - 1 - k] : h[n - 1 - k]));
    }
    bank.backLow.assign(bank.low.rbegin(), bank.low.rend());
    bank.backHigh.assign(bank.high.rbegin(), bank.high.rend());
    return bank;
}

std::vector<Bank> banks()
{
    const double r = std::sqrt(0.5), s = std::sqrt(3.0), q = 4 * std::sqrt(2.0);
    const double r10 = std::sqrt(10.0), r5 = std::sqrt(5 + 2 * r10), d = 16 * std::sqrt(2.0);
    return {orthogonal("two taps", {r, r}),
            orthogonal("four taps", {(1 + s) / q, (3 + s) / q, (3 - s) / q, (1 - s) / q}),
            orthogonal("six taps", {(1 + r10 + r5) / d, (5 + r10 + 3 * r5) / d, (10 - 2 * r10 + 2 * r5) / d,
                                    (10 - 2 * r10 - 2 * r5) / d, (5 + r10 - 3 * r5) / d, (1 + r10 - r5) / d}),
            {"5/3",
             {-0.125f, 0.25f, 0.75f, 0.25f, -0.125f},
             {-0.5f, 1, -0.5f},
             {0.5f, 1, 0.5f},
             {-0.125f, -0.25f, 0.75f, -0.25f, -0.125f},
             3}};
}

TEST(Wavelet, BanksReconstructTheSignal)
{
    const Signal x = randomValues<float>(1000, 9, -1, 1);
    eachSlot([&](int slot) {
        for (const Bank& bank : banks())
            for (const auto& [there, back, delay] : {std::tuple<int, int, int>{0, 0, 0},
                                                     {-1, 0, -1},
                                                     {0, 1, 1},
                                                     {-1, 1, 0},
                                                     {3, 0, 3},
                                                     {2, 4, 6},
                                                     {0, -1, 1}}) {
                Object<Forward> forward(slot, {bank.low, there}, {bank.high, there});
                Object<Inverse> inverse(slot, {bank.backLow, back}, {bank.backHigh, back});
                const Bands bands = analyse(slot, forward.state, x, {50, 3}, 0);
                const Signal y = synthesise(slot, inverse.state, bands, {41}, 0);
                const size_t d = static_cast<size_t>(static_cast<int>(bank.delay) + delay);
                for (size_t t = 0; t < y.size(); t++)
                    ASSERT_NEAR(y[t], t < d ? 0 : x[t - d], 1e-6)
                        << bank.name << ", offsets " << there << " and " << back << ", sample " << t;
            }
    });
}

// ---- Delay arrays ---------------------------------------------------------------------------------------------------

// The last values of a stream, oldest first.
Signal newest(const Signal& x, int count, int before = 0)
{
    Signal v;
    for (int i = count; i > 0; i--) {
        const int64_t at = static_cast<int64_t>(x.size()) - before - i;
        v.push_back(at >= 0 ? x[static_cast<size_t>(at)] : 0);
    }
    return v;
}
// What a channel holds after x has gone through: the filter's part has seen all but the offset.
Signal expectedDelays(const Filter& f, const Signal& x, int filterPart, int offsetPart, int size, float unused)
{
    Signal v = newest(x, std::max(filterPart, 0), offsetPart);
    const Signal line = newest(x, offsetPart);
    v.insert(v.end(), line.begin(), line.end());
    v.resize(static_cast<size_t>(size), unused);
    (void)f;
    return v;
}

template<class D> struct Delays {
    Signal low, high;
};
template<class D> Delays<D> readDelays(int slot, const typename D::State* state, const Filter& low, const Filter& high)
{
    Delays<D> d = {Signal(static_cast<size_t>(D::delays(low)) + 1, 77.0f),
                   Signal(static_cast<size_t>(D::delays(high)) + 1, 77.0f)};
    EXPECT_EQ(D::get[slot](const_cast<typename D::State*>(state), d.low.data(), d.high.data()), qvrOk);
    // Nothing behind the array.
    EXPECT_EQ(d.low.back(), 77);
    EXPECT_EQ(d.high.back(), 77);
    d.low.pop_back();
    d.high.pop_back();
    return d;
}

constexpr std::pair<int, int> kShapes[] = {{1, 0}, {1, -1}, {2, -1}, {2, 0}, {2, 1},
                                           {5, 4}, {4, 3},  {8, -1}, {7, 1}, {3, 20}};

TEST(WaveletForward, DelayArrays)
{
    const Signal x = randomValues<float>(60, 4, -1, 1);
    eachSlot([&](int slot) {
        for (const auto& [length, offset] : kShapes) {
            const Filter low = someFilter(length, offset, 1), high = someFilter(4, 0, 2);
            Object<Forward> object(slot, low, high);
            const auto zeros = readDelays<Forward>(slot, object.state, low, high);
            const int filterPart = length - 1 - (offset == -1), line = std::max(offset, 0);
            EXPECT_EQ(zeros.low, expectedDelays(low, {}, filterPart, line, Forward::delays(low), 77)) << length;
            analyse(slot, object.state, x, {3, 7}, 0);
            const auto held = readDelays<Forward>(slot, object.state, low, high);
            EXPECT_EQ(held.low, expectedDelays(low, x, filterPart, line, Forward::delays(low), 77)) << length;
            EXPECT_EQ(held.high, newest(x, 3));

            // A stream moved to a new object goes on; what was set comes back.
            const Signal more = randomValues<float>(30, 8, -1, 1);
            Object<Forward> other(slot, low, high);
            analyse(slot, other.state, more, {4}, 0);
            EXPECT_EQ(Forward::set[slot](other.state, held.low.data(), held.high.data()), qvrOk);
            EXPECT_EQ(readDelays<Forward>(slot, other.state, low, high).low, held.low);
            const Bands a = analyse(slot, object.state, more, {5}, 0), b = analyse(slot, other.state, more, {5}, 0);
            EXPECT_EQ(a.low, b.low) << length << " " << offset;
            EXPECT_EQ(a.high, b.high);
        }
    });
}

TEST(WaveletInverse, DelayArrays)
{
    const Bands y = {randomValues<float>(60, 4, -1, 1), randomValues<float>(60, 5, -1, 1)};
    eachSlot([&](int slot) {
        for (const auto& [length, offset] : kShapes) {
            const Filter low = someFilter(length, offset, 1), high = someFilter(4, 0, 2);
            Object<Inverse> object(slot, low, high);
            const int line = offset / 2, size = Inverse::delays(low);
            const auto zeros = readDelays<Inverse>(slot, object.state, low, high);
            EXPECT_EQ(zeros.low, Signal(static_cast<size_t>(size), 0.0f)) << length;
            synthesise(slot, object.state, y, {3, 7}, 0);
            const auto held = readDelays<Inverse>(slot, object.state, low, high);
            EXPECT_EQ(held.low, expectedDelays(low, y.low, size - line, line, size, 77)) << length << " " << offset;
            EXPECT_EQ(held.high, newest(y.high, 1));

            const Bands more = {randomValues<float>(30, 8, -1, 1), randomValues<float>(30, 9, -1, 1)};
            Object<Inverse> other(slot, low, high);
            synthesise(slot, other.state, more, {4}, 0);
            EXPECT_EQ(Inverse::set[slot](other.state, held.low.data(), held.high.data()), qvrOk);
            EXPECT_EQ(readDelays<Inverse>(slot, other.state, low, high).low, held.low);
            const Signal a = synthesise(slot, object.state, more, {5}, 0),
                         b = synthesise(slot, other.state, more, {5}, 0);
            // The array of an offset of -1 is a value short of what the filter looks at.
            if (offset != -1)
                EXPECT_EQ(a, b) << length << " " << offset;
        }
    });
}

// ---- Statuses -------------------------------------------------------------------------------------------------------

template<class D> void checkCreation(int slot)
{
    struct Args {
        typename D::State** state;
        const float *low, *high;
        int lenLow, offsLow, lenHigh, offsHigh;
    };
    static float taps[4] = {1, 2, 3, 4};
    static typename D::State* state;
    const auto call = [&](const Args& a) {
        return D::init[slot](a.state, a.low, a.lenLow, a.offsLow, a.high, a.lenHigh, a.offsHigh);
    };
    const Args valid = {&state, taps, taps, 4, 0, 3, 0};
    expectStatusOrder<Args>(valid,
                            {{"ppState", qvrErrNullPointer, [](Args& x) { x.state = nullptr; }},
                             {"pTapsLow", qvrErrNullPointer, [](Args& x) { x.low = nullptr; }},
                             {"lenLow", qvrErrBadSize, [](Args& x) { x.lenLow = 0; }},
                             {"pTapsHigh", qvrErrNullPointer, [](Args& x) { x.high = nullptr; }},
                             {"lenHigh", qvrErrBadSize, [](Args& x) { x.lenHigh = INT32_MIN; }},
                             {"offsLow", qvrErrBadOffset, [](Args& x) { x.offsLow = -2; }},
                             {"offsHigh", qvrErrBadOffset, [](Args& x) { x.offsHigh = INT32_MIN; }}},
                            call);
    const int allocations = failEachAllocation([&] { return call(valid); },
                                               [&](int n, qvrStatus status, CountingAllocator& allocator) {
                                                   EXPECT_EQ(status, qvrErrNoMemory) << n;
                                                   EXPECT_EQ(state, nullptr);
                                                   EXPECT_EQ(allocator.live(), 0u);
                                               });
    EXPECT_GE(allocations, 3);
    Args large = valid;
    large.offsHigh = INT32_MAX;
    EXPECT_EQ(call(large), qvrErrNoMemory);

    // A run allocates nothing, and release gives everything back.
    CountingAllocator allocator;
    ASSERT_EQ(call(valid), qvrOk);
    const int before = allocator.allocations();
    float in[8] = {}, out[8];
    if constexpr (std::is_same_v<D, Forward>)
        EXPECT_EQ(qvrTable_qvrsWTFwd_32f[slot](in, out, out + 4, 4, state), qvrOk);
    else
        EXPECT_EQ(qvrTable_qvrsWTInv_32f[slot](in, in + 4, 4, out, state), qvrOk);
    EXPECT_EQ(allocator.allocations(), before);
    EXPECT_EQ(D::free[slot](state), qvrOk);
    EXPECT_EQ(allocator.live(), 0u);
    EXPECT_EQ(allocator.badFrees(), 0);
}

TEST(Wavelet, Creation)
{
    eachSlot([](int slot) {
        checkCreation<Forward>(slot);
        checkCreation<Inverse>(slot);
    });
}

// The records' first fields, as far as the checks look at them.
struct Record {
    int32_t tag;
    void *low, *high, *shared;
    int32_t sharedLen;
};

TEST(Wavelet, Statuses)
{
    eachSlot([](int slot) {
        const Filter f = {{1, 2}, 3};
        Object<Forward> forward(slot, f, f);
        Object<Inverse> inverse(slot, f, f);
        auto* asInverse = reinterpret_cast<qvrsWTInvState_32f*>(forward.state);
        auto* asForward = reinterpret_cast<qvrsWTFwdState_32f*>(inverse.state);
        struct Args {
            qvrsWTFwdState_32f *forward, *otherForward;
            qvrsWTInvState_32f *inverse, *otherInverse;
            float *a, *b, *c;
            int n;
            bool back;
        };
        float x[8] = {}, y[8], z[8];
        const std::vector<Fault<Args>> faults = {{"state", qvrErrNullPointer,
                                                  [](Args& v) {
                                                      v.forward = nullptr;
                                                      v.inverse = nullptr;
                                                  }},
                                                 {"tag", qvrErrBadContext,
                                                  [](Args& v) {
                                                      v.forward = v.forward ? v.otherForward : nullptr;
                                                      v.inverse = v.inverse ? v.otherInverse : nullptr;
                                                  }},
                                                 {"first", qvrErrNullPointer, [](Args& v) { v.a = nullptr; }},
                                                 {"second", qvrErrNullPointer, [](Args& v) { v.b = nullptr; }},
                                                 {"third", qvrErrNullPointer, [](Args& v) { v.c = nullptr; }},
                                                 {"length", qvrErrBadSize, [](Args& v) { v.n = 0; }}};
        for (bool back : {false, true})
            expectStatusOrder<Args>({forward.state, asForward, inverse.state, asInverse, x, y, z, 2, back}, faults,
                                    [&](const Args& v) {
                                        return v.back ? qvrTable_qvrsWTInv_32f[slot](v.a, v.b, v.n, v.c, v.inverse)
                                                      : qvrTable_qvrsWTFwd_32f[slot](v.a, v.b, v.c, v.n, v.forward);
                                    });
        const auto others = [&](qvrsWTFwdState_32f* f1, qvrsWTInvState_32f* i1, float* p, float* q, qvrStatus want) {
            EXPECT_EQ(Forward::set[slot](f1, p, q), want);
            EXPECT_EQ(Forward::get[slot](f1, p, q), want);
            EXPECT_EQ(Inverse::set[slot](i1, p, q), want);
            EXPECT_EQ(Inverse::get[slot](i1, p, q), want);
        };
        others(nullptr, nullptr, nullptr, nullptr, qvrErrNullPointer);
        others(asForward, asInverse, nullptr, nullptr, qvrErrBadContext);
        others(forward.state, inverse.state, nullptr, x, qvrErrNullPointer);
        others(forward.state, inverse.state, x, nullptr, qvrErrNullPointer);
        EXPECT_EQ(Forward::free[slot](nullptr), qvrErrNullPointer);
        EXPECT_EQ(Inverse::free[slot](nullptr), qvrErrNullPointer);
        EXPECT_EQ(Forward::free[slot](asForward), qvrErrBadContext);
        EXPECT_EQ(Inverse::free[slot](asInverse), qvrErrBadContext);

        // A record whose parts do not fit together.
        auto* record = reinterpret_cast<Record*>(forward.state);
        const Record saved = *record;
        const auto broken = [&](const char* what) {
            EXPECT_EQ(qvrTable_qvrsWTFwd_32f[slot](nullptr, nullptr, nullptr, 0, forward.state), qvrErrBadContext)
                << what;
            EXPECT_EQ(Forward::free[slot](forward.state), qvrErrBadContext) << what;
            *record = saved;
        };
        record->low = nullptr;
        broken("low");
        record->high = nullptr;
        broken("high");
        record->sharedLen = -1;
        broken("length below 0");
        record->sharedLen = 4;
        broken("length without memory");
        record->shared = x;
        broken("memory without length");
    });
}

} // namespace
