#include <functional>

#include "fourier/slot_tables.h"
#include "support/guarded.h"
#include "support/slots.h"
#include "support/values.h"

namespace {

constexpr double kTurn = 6.283185307179586;

// The weights of the pairs from the ends to the middle, as the contract's recurrences give them.
using Weights = std::vector<double>;

struct Cosine {
    double amplitude, offset;
};
constexpr Cosine kHann = {0.5, 0.5}, kHamming = {0.46, 0.54};

// Slot mx: rotation by one step, everything in double.
Weights rotated(int len, const std::function<double(double)>& weight)
{
    const double c = std::cos(kTurn / (len - 1)), s = std::sqrt(1 - c * c);
    double cosine = 1, sine = 0;
    Weights w;
    for (int k = 0; k < len / 2; k++) {
        w.push_back(weight(cosine));
        const double next = c * cosine - s * sine;
        sine = sine * c + cosine * s;
        cosine = next;
    }
    return w;
}

// The others: d[k] = 2 cos(2t) d[k - 2] - d[k - 4], rounded weights.
Weights recurred(int len, Cosine window)
{
    const double t = kTurn / (len - 1), c = std::cos(t), factor = 2 * std::cos(2 * t);
    std::vector<double> d = {window.amplitude};
    d.push_back(2 * c * d[0] - window.amplitude * c);
    d.push_back(2 * c * d[1] - d[0]);
    d.push_back(2 * c * d[2] - d[1]);
    while (d.size() < static_cast<size_t>(len))
        d.push_back(factor * d[d.size() - 2] - d[d.size() - 4]);
    Weights w;
    for (int k = 0; k < len / 2; k++)
        w.push_back(static_cast<float>(window.offset - d[k]));
    return w;
}

Weights blackman(int len)
{
    const double c = std::cos(kTurn / (len - 1));
    double before = 0.5 * c, d = 0.5;
    Weights w;
    for (int k = 0; k < len / 2; k++) {
        const float r = static_cast<float>(d), a = -0.16f;
        const float square = -4 * a * r * r, rest = 0.5f + a - r;
        w.push_back(square + rest);
        const double next = 2 * c * d - before;
        before = d;
        d = next;
    }
    return w;
}

std::vector<int> lengths()
{
    std::vector<int> n;
    for (int i = 3; i <= 70; i++)
        n.push_back(i);
    n.insert(n.end(), {127, 128, 255, 1000, 1001, 4096, 4097});
    return n;
}

float timesDouble(float x, double w)
{
    return static_cast<float>(x * w);
}
float timesSingle(float x, double w)
{
    return x * static_cast<float>(w);
}

using Window = qvrStatus (*)(float*, int);

// Runs the window on arrays at both page ends and hands over what came out.
void onArrays(Window f, const std::vector<float>& x, const std::function<void(const std::vector<float>&)>& look)
{
    const size_t bytes = x.size() * sizeof(float);
    for (size_t shift : {0, 4, 16, 1})
        for (bool end : {true, false}) {
            Guarded& memory = pooledGuarded(1, bytes + 32);
            float* p = end ? memory.atEnd<float>(bytes, shift) : memory.atFront<float>(bytes, shift);
            memcpy(static_cast<void*>(p), x.data(), bytes);
            ASSERT_EQ(f(p, static_cast<int>(x.size())), qvrOk);
            EXPECT_TRUE(memory.intact());
            std::vector<float> y(x.size());
            memcpy(y.data(), static_cast<void*>(p), bytes);
            look(y);
        }
}

// Bit for bit against the weights; the middle of an odd length is a signalling NaN that must stay.
void expectWeights(Window f, int len, const Weights& w, float (*times)(float, double), bool zeroEnds)
{
    std::vector<float> x = randomValues<float>(len, len, -100, 100), want = x;
    const float signalling = floatOf(0x7FA12345);
    if (len % 2)
        x[len / 2] = want[len / 2] = signalling;
    for (int k = 0; k < len / 2; k++) {
        want[k] = times(x[k], w[k]);
        want[len - 1 - k] = times(x[len - 1 - k], w[k]);
    }
    if (zeroEnds) {
        x[0] = x[len - 1] = NAN;
        want[0] = want[len - 1] = 0;
    }
    onArrays(f, x, [&](const std::vector<float>& y) {
        for (int i = 0; i < len; i++)
            ASSERT_EQ(bitsOf(y[i]), bitsOf(want[i])) << "length " << len << " index " << i;
    });
}

TEST(Windows, Hann)
{
    slots::each(qvrTable_qvrsWinHann_32f_I, [&](auto f, int slot) {
        for (int len : lengths())
            if (slot == slots::mx)
                expectWeights(f, len, rotated(len, [](double c) { return 0.5 * (1 - c); }), timesDouble, len == 3);
            else
                expectWeights(f, len, recurred(len, kHann), timesSingle, len == 3);
    });
}

TEST(Windows, Hamming)
{
    slots::each(qvrTable_qvrsWinHamming_32f_I, [&](auto f, int slot) {
        for (int len : lengths())
            if (slot == slots::mx)
                expectWeights(f, len, rotated(len, [](double c) { return 0.54 - 0.46 * c; }), timesDouble, false);
            else
                expectWeights(f, len, recurred(len, kHamming), timesSingle, false);
        float x[3] = {1, 1, 1};
        f(x, 3);
        EXPECT_NEAR(x[0], 0.08, 1e-7);
        EXPECT_EQ(x[1], 1);
        EXPECT_NEAR(x[2], 0.08, 1e-7);
    });
}

TEST(Windows, Blackman)
{
    slots::each(qvrTable_qvrsWinBlackmanStd_32f_I, [&](auto f, int slot) {
        for (int len : lengths())
            if (slot == slots::mx)
                expectWeights(f, len,
                              rotated(len,
                                      [](double c) {
                                          const double a = -0.16f;
                                          return (1 + a) / 2 - 0.5 * c - a / 2 * (2 * c * c - 1);
                                      }),
                              timesDouble, len == 3);
            else
                expectWeights(f, len, blackman(len), timesSingle, len == 3);
    });
}

TEST(Windows, BartlettByRepeatedAddition)
{
    slots::each(qvrTable_qvrsWinBartlett_32f_I, [&](auto f, int slot) {
        for (int len : lengths()) {
            Weights w = {0};
            const double step = 2.0 / (len - 1);
            const float step32 = 2.0f / static_cast<float>(len - 1);
            double v = 0;
            float v32 = 0;
            for (int k = 1; k < len / 2; k++) {
                v += step;
                v32 += step32;
                w.push_back(slot == slots::mx ? v : v32);
            }
            if (slot == slots::mx)
                expectWeights(f, len, w, timesDouble, true);
            else if (len - 1 < (slot >= slots::e9 ? 18 : 10))
                expectWeights(f, len, w, timesSingle, true);
        }
    });
}

// On ones every window gives its weights: against the formulas, also where recurrences run long.
TEST(Windows, WeightsByFormula)
{
    const struct {
        const char* name;
        Window const* table;
        std::function<long double(long double, long double)> weight;
        double bound;
        double drift; // half a unit of 2^-24 for each addition of the running weight, at most one for each 8 elements
    } windows[] = {
        {"Bartlett", qvrTable_qvrsWinBartlett_32f_I, [](long double, long double x) { return 2 * x; }, 6e-8,
         0x1p-25 / 8},
        {"Hann", qvrTable_qvrsWinHann_32f_I, [](long double t, long double) { return 0.5L - 0.5L * cosl(t); }, 1.5e-7,
         0},
        {"Hamming", qvrTable_qvrsWinHamming_32f_I, [](long double t, long double) { return 0.54L - 0.46L * cosl(t); },
         1.5e-7, 0},
        {"Blackman", qvrTable_qvrsWinBlackmanStd_32f_I,
         [](long double t, long double) { return 0.42L - 0.5L * cosl(t) + 0.08L * cosl(2 * t); }, 3e-7, 0},
    };
    for (const auto& window : windows)
        for (int slot = 0; slot < slots::kCount; slot++) {
            if (!slots::canRun(slot))
                continue;
            for (int len : {4, 5, 18, 19, 20, 64, 333, 4096, 20001}) {
                std::vector<float> y(len, 1.0f);
                ASSERT_EQ(window.table[slot](y.data(), len), qvrOk);
                for (int i = 0; i < len; i++) {
                    const int k = std::min(i, len - 1 - i);
                    const long double x = static_cast<long double>(k) / (len - 1);
                    const long double want = i * 2 == len - 1 ? 1 : window.weight(2 * M_PIl * x, x);
                    ASSERT_NEAR(y[i], static_cast<double>(want), window.bound + window.drift * len)
                        << window.name << " slot " << slots::kNames[slot] << " length " << len << " index " << i;
                }
            }
        }
}

TEST(Windows, BartlettShortLengths)
{
    slots::each(qvrTable_qvrsWinBartlett_32f_I, [&](auto f, int) {
        float four[4] = {1, 1, 1, 1}, five[5] = {1, 1, 7, 1, 1}, three[3] = {NAN, 2, -INFINITY};
        f(four, 4);
        EXPECT_EQ(four[0], 0);
        EXPECT_FLOAT_EQ(four[1], 2.0f / 3);
        EXPECT_FLOAT_EQ(four[2], 2.0f / 3);
        EXPECT_EQ(four[3], 0);
        f(five, 5);
        EXPECT_EQ(five[1], 0.5f);
        EXPECT_EQ(five[2], 7);
        EXPECT_EQ(five[3], 0.5f);
        f(three, 3);
        EXPECT_EQ(bitsOf(three[0]), 0u);
        EXPECT_EQ(three[1], 2);
        EXPECT_EQ(bitsOf(three[2]), 0u);
    });
}

TEST(Windows, HammingOfShorts)
{
    slots::each(qvrTable_qvrsWinHamming_16s_I, [&](auto f, int slot) {
        for (int len : lengths()) {
            std::vector<qvr16s> x = randomValues<qvr16s>(len, len);
            x[1] = -32768;
            x[0] = 32767;
            const Weights w = rotated(len, [](double c) { return 0.54 - 0.46 * c; });
            for (size_t shift : {0, 2, 6, 1}) {
                const size_t bytes = len * sizeof(qvr16s);
                Guarded& memory = pooledGuarded(2, bytes + 32);
                qvr16s* p = memory.atEnd<qvr16s>(bytes, shift);
                memcpy(static_cast<void*>(p), x.data(), bytes);
                ASSERT_EQ(f(p, len), qvrOk);
                EXPECT_TRUE(memory.intact());
                std::vector<qvr16s> y(len);
                memcpy(y.data(), static_cast<void*>(p), bytes);
                for (int i = 0; i < len; i++) {
                    const int k = std::min(i, len - 1 - i);
                    if (2 * i == len - 1)
                        ASSERT_EQ(y[i], x[i]);
                    else if (slot == slots::mx)
                        ASSERT_EQ(y[i], static_cast<qvr16s>(x[i] * w[k])) << len << " index " << i;
                    else if (k == 0)
                        ASSERT_EQ(y[i], static_cast<qvr16s>(static_cast<float>(x[i]) * (0.54f - 0.46f)));
                    else
                        // To nearest, off by the single-precision weight: at most 0.1 of a unit at 32768.
                        ASSERT_LE(std::abs(y[i] - x[i] * w[k]), 0.6) << len << " index " << i;
                }
            }
        }
        qvr16s small[3] = {-3, 5, 3};
        f(small, 3);
        EXPECT_EQ(small[0], 0);
        EXPECT_EQ(small[1], 5);
        EXPECT_EQ(small[2], 0);
    });
}

// Long arrays: the single-precision lanes do not drift.
TEST(Windows, HammingOfLongShorts)
{
    slots::each(qvrTable_qvrsWinHamming_16s_I, [&](auto f, int) {
        const int len = 1000003;
        std::vector<qvr16s> y(len, 32767);
        f(y.data(), len);
        for (int i = 1; i < len - 1; i += 17)
            ASSERT_NEAR(y[i], 32767 * (0.54 - 0.46 * std::cos(kTurn * i / (len - 1))), 1.5) << i;
    });
}

template<class F, class T> void expectStatuses(F f, T fill)
{
    T x[4] = {fill, fill, fill, fill};
    for (int len : {INT32_MIN, -1, 0, 1, 2}) {
        EXPECT_EQ(f(nullptr, len), qvrErrNullPointer);
        EXPECT_EQ(f(x, len), qvrErrBadSize);
    }
    for (T v : x)
        EXPECT_EQ(v, fill);
    EXPECT_EQ(f(nullptr, 3), qvrErrNullPointer);
    EXPECT_EQ(f(x, 3), qvrOk);
}

TEST(Windows, Statuses)
{
    for (auto* table : {&qvrTable_qvrsWinBartlett_32f_I, &qvrTable_qvrsWinHann_32f_I, &qvrTable_qvrsWinHamming_32f_I,
                        &qvrTable_qvrsWinBlackmanStd_32f_I})
        slots::each(*table, [](auto f, int) { expectStatuses(f, 9.0f); });
    slots::each(qvrTable_qvrsWinHamming_16s_I, [](auto f, int) { expectStatuses(f, qvr16s{9}); });
}

} // namespace
