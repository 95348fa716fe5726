#include "elementary/kernels.h"
#include "elementary/slot_tables.h"
#include "support/elementwise.h"

namespace {

Class reached(int slot, int c)
{
    return slot == slots::mx ? a24 : static_cast<Class>(c);
}

bool goodPower(float got, float x, float y, Class c)
{
    const long double want = powl(x, y);
    const float nearest = static_cast<float>(want);
    if (std::isinf(nearest) || std::isinf(got))
        return got == nearest || (std::isinf(got) && fabsl(want) > 3.40e38L) || fabsf(got) > 3.4e38f;
    const Distance d = distance(got, want);
    if (d.ulp <= 1)
        return true;
    if (c == a11 && fabsl(want) < 0x1p-125L)
        return std::fabs(got) < 0x1p-124f;
    return c != a24 && d.relative <= (c == a21 ? 0x1p-21 : 0x1p-11);
}

void eachPowerKernel(const std::function<void(Kernel2*, KernelC*, int slot, Class)>& body)
{
    for (int slot = 0; slot < slots::kCount; slot++) {
        if (!slots::canRun(slot))
            continue;
        for (int c = 0; c < kClasses; c++) {
            SCOPED_TRACE(std::string("slot ") + slots::kNames[slot] + " class " + kClassNames[c]);
            body(powKernels[slot][c], powxKernels[slot][c], slot, reached(slot, c));
        }
    }
}

TEST(Power, Accuracy)
{
    std::mt19937 engine(5);
    std::vector<float> x, y;
    std::uniform_real_distribution<double> d(0, 1);
    for (int i = 0; i < 6000; i++) {
        const double base = std::exp2(260 * d(engine) - 130);
        x.push_back(static_cast<float>(i % 3 == 0 ? 1 + (d(engine) - 0.5) * std::exp2(-20 * d(engine)) : base));
        const double largest = 150 / std::fabs(std::log2(static_cast<double>(x.back())) + 1e-9);
        y.push_back(static_cast<float>((2 * d(engine) - 1) * largest));
        if (i % 7 == 0) {
            y.back() = static_cast<float>(static_cast<int>(engine() % 41) - 20);
            x.back() = -x.back();
        }
    }
    const int n = static_cast<int>(x.size());
    std::vector<float> out(x.size());
    eachPowerKernel([&](Kernel2* pow, KernelC* powx, int, Class c) {
        for (int i = 0; i < n; i++)
            pow(&x[i], &y[i], &out[i], 1);
        for (int i = 0; i < n; i++)
            ASSERT_TRUE(goodPower(out[i], x[i], y[i], c)) << x[i] << " ^ " << y[i] << " gave " << out[i];
        EXPECT_EQ(pow(x.data(), y.data(), out.data(), n), qvrOk);
        for (int i = 0; i < n; i++)
            ASSERT_TRUE(goodPower(out[i], x[i], y[i], c)) << x[i] << " ^ " << y[i] << " gave " << out[i];
        for (float e : {0.5f, -1.7f, 2.0f, 3.0f, 13.25f, 1e-40f, 0.0078125f}) {
            std::vector<float> positive;
            for (float v : x)
                positive.push_back(std::fabs(v));
            EXPECT_EQ(powx(positive.data(), e, out.data(), n), qvrOk);
            for (int i = 0; i < n; i++)
                ASSERT_TRUE(goodPower(out[i], positive[i], e, c)) << positive[i] << " ^ " << e << " gave " << out[i];
        }
    });
}

// Denormal results: class a24 has them, a11 zero or the denormal.
TEST(Power, BelowTheNormals)
{
    eachPowerKernel([&](Kernel2* pow, KernelC*, int, Class c) {
        for (int k = 1; k <= 160; k++) {
            const float x[9] = {2, 2, 2, 2, 2, 2, 2, 2, 2}, e = static_cast<float>(-k);
            const float y[9] = {e, e, e, e, e, e, e, e, e};
            float out[9];
            EXPECT_EQ(pow(x, y, out, 9), qvrOk);
            for (float v : out) {
                if (k <= 126)
                    EXPECT_EQ(v, std::ldexp(1.0f, -k));
                else
                    // 2^-150 is half way between zero and the smallest denormal.
                    EXPECT_TRUE(v == std::ldexp(1.0f, -k) || (c == a11 && v == 0) || (k == 150 && v == floatOf(1)))
                        << k << " " << v;
            }
        }
    });
}

// The rules of one pair, in their order.
struct Ruled {
    uint32_t bits;
    qvrStatus status;
};
const uint32_t kComputed = 2; // no rule: the power itself

Ruled rule(float x, float y)
{
    const uint32_t one = 0x3F800000, inf = 0x7F800000, minusInf = 0xFF800000;
    const bool integer = std::isfinite(y) && y == std::floor(y);
    const bool odd = integer && std::fabs(y) < 0x1p24f && std::fmod(y, 2.0f) != 0;
    if (y == 0)
        return {one, 0};
    if (x == 1 || (x == -1 && std::isinf(y)))
        return {one, 0};
    if (std::isnan(x))
        return {bitsOf(x), 0};
    if (std::isnan(y))
        return {bitsOf(y), 0};
    if (x == 0 && y == -INFINITY)
        return {inf, 19};
    if (std::isinf(y))
        return {(std::fabs(x) > 1) == (y > 0) ? inf : 0, 0};
    if (x == INFINITY)
        return {y > 0 ? inf : 0, 0};
    if (x == -INFINITY)
        return {odd ? (y > 0 ? minusInf : 0x80000000) : (y > 0 ? inf : 0), 0};
    if (x < 0 && !integer)
        return {0xFFC00000, 19};
    if (x == 0 && y < 0)
        return {odd && std::signbit(x) ? minusInf : inf, 19};
    if (x == 0)
        return {odd && std::signbit(x) ? 0x80000000 : 0, 0};
    return {kComputed, 0};
}

TEST(Power, SpecialPairs)
{
    const std::vector<float> values = {0.0f,
                                       1.0f,
                                       0.5f,
                                       2.0f,
                                       3.0f,
                                       2.5f,
                                       1.0f / 3,
                                       8388607.0f,
                                       8388608.0f,
                                       8388609.0f,
                                       16777215.0f,
                                       16777216.0f,
                                       1e30f,
                                       1e-30f,
                                       floatOf(1),
                                       floatOf(0x7FFFFF),
                                       1e-39f,
                                       3.4028235e38f,
                                       INFINITY,
                                       floatOf(0x7FC12345),
                                       floatOf(0x7FA00001)};
    std::vector<float> all = values;
    for (float v : values)
        all.push_back(-v);
    eachPowerKernel([&](Kernel2* pow, KernelC* powx, int, Class c) {
        for (float x : all)
            for (float y : all) {
                const Ruled want = rule(x, y);
                const auto check = [&](float got, qvrStatus status) {
                    ASSERT_EQ(status, want.status) << x << " ^ " << y;
                    if (want.bits == kComputed)
                        ASSERT_TRUE(goodPower(got, x, y, c)) << x << " ^ " << y << " gave " << got;
                    else
                        ASSERT_EQ(bitsOf(got), want.bits) << x << " ^ " << y << " gave " << got;
                };
                float out[11];
                const qvrStatus alone = pow(&x, &y, out, 1);
                check(out[0], alone);
                const qvrStatus constant = powx(&x, y, out, 1);
                check(out[0], constant);
                // In the middle of an array of plain pairs.
                float xs[11], ys[11];
                for (int i = 0; i < 11; i++) {
                    xs[i] = i == 6 ? x : 1.5f;
                    ys[i] = i == 6 ? y : 2.0f;
                }
                const qvrStatus s = pow(xs, ys, out, 11);
                check(out[6], s);
                for (int i = 0; i < 11; i++)
                    if (i != 6)
                        ASSERT_TRUE(goodPower(out[i], 1.5f, 2.0f, c));
            }
    });
}

TEST(Power, Examples)
{
    eachPowerKernel([&](Kernel2*, KernelC* powx, int, Class c) {
        const float x = -3;
        float out;
        EXPECT_EQ(powx(&x, 2.0f, &out, 1), qvrOk);
        EXPECT_TRUE(c == a24 ? out == 9 : std::fabs(out - 9) < 9 * 0x1p-11);
    });
}

TEST(Power, EveryPlaceInAnArrayIsAlike)
{
    eachPowerKernel([&](Kernel2* pow, KernelC* powx, int, Class) {
        const Elementwise<float, float, float> e{pow, [&](float x, float y) {
                                                     float z;
                                                     pow(&x, &y, &z, 1);
                                                     return z;
                                                 }};
        const Elementwise<float, float> ec{[&](const float* x, float* d, int n) { return powx(x, 1.3f, d, n); },
                                           [&](float x) {
                                               float z;
                                               powx(&x, 1.3f, &z, 1);
                                               return z;
                                           }};
        for (int n = 1; n < 70; n += n > 20 ? 3 : 1)
            for (int offset : {0, 4, 1}) {
                const auto a = randomValues<float>(n, 3, 0.01, 5), b = randomValues<float>(n, 4, -5, 5);
                checkCall<float, float, float>(e, a, b, n & 1, offset, 60 - offset, offset ? -1 : n & 1);
                checkCall<float, float>(ec, a, n & 1, offset, 60 - offset, offset ? -1 : 0);
            }
        for (int offset = 0; offset < 32; offset += 4) {
            const auto a = randomValues<float>(300, 3, 0.01, 5), b = randomValues<float>(300, 4, -5, 5);
            checkCall<float, float, float>(e, a, b, false, 0, offset, -1);
        }
    });
}

// Two arguments with a direction: the arc tangent of a quotient.
TEST(Arctangent2, AccuracyAndSigns)
{
    std::vector<float> values = {0.0f,  1.0f,   0.3f,       2.1f,       1e-30f, 1e30f,    1e-38f, 1e-40f, floatOf(1),
                                 3e38f, 1e-19f, 0.2282435f, 0.7974734f, 7.7f,   INFINITY, 1e18f,  1e-18f, 2e18f};
    for (size_t i = 0, n = values.size(); i < n; i++)
        values.push_back(-values[i]);
    std::vector<float> y, x;
    for (float a : values)
        for (float b : values) {
            y.push_back(a);
            x.push_back(b);
        }
    const auto more = randomValues<float>(3000, 5, -10, 10), other = randomValues<float>(3000, 6, -10, 10);
    y.insert(y.end(), more.begin(), more.end());
    x.insert(x.end(), other.begin(), other.end());
    const int n = static_cast<int>(x.size());
    std::vector<float> out(x.size());
    for (int slot = 0; slot < slots::kCount; slot++) {
        if (!slots::canRun(slot))
            continue;
        for (int c = 0; c < kClasses; c++) {
            SCOPED_TRACE(std::string("slot ") + slots::kNames[slot] + " class " + kClassNames[c]);
            const auto check = [&] {
                for (int i = 0; i < n; i++) {
                    const long double want = atan2l(y[i], x[i]);
                    const Distance d = distance(out[i], want);
                    const double bound = reached(slot, c) == a21 ? 0x1p-21 : 0x1p-11;
                    ASSERT_TRUE(d.ulp <= 1 || (reached(slot, c) != a24 && d.relative <= bound))
                        << y[i] << ", " << x[i] << " gave " << out[i];
                    if (want == 0)
                        ASSERT_EQ(std::signbit(out[i]), std::signbit(y[i]));
                }
            };
            EXPECT_EQ(atan2Kernels[slot][c](y.data(), x.data(), out.data(), n), qvrOk);
            check();
            for (int i = 0; i < n; i++)
                atan2Kernels[slot][c](&y[i], &x[i], &out[i], 1);
            check();
            const float nan = NAN, one = 1;
            EXPECT_EQ(atan2Kernels[slot][c](&nan, &one, out.data(), 1), qvrOk);
            EXPECT_TRUE(std::isnan(out[0]));
            EXPECT_EQ(atan2Kernels[slot][c](&one, &nan, out.data(), 1), qvrOk);
            EXPECT_TRUE(std::isnan(out[0]));
            const Elementwise<float, float, float> e{atan2Kernels[slot][c], [&](float a, float b) {
                                                         float z;
                                                         atan2Kernels[slot][c](&a, &b, &z, 1);
                                                         return z;
                                                     }};
            for (int k = 1; k < 70; k += 3)
                checkCall<float, float, float>(e, randomValues<float>(k, 8), randomValues<float>(k, 9), k & 1, 0,
                                               4 * k % 64, k % 3 - 1);
        }
    }
}

TEST(Power, StatusOrder)
{
    for (int slot = 0; slot < slots::kCount; slot++) {
        if (!slots::canRun(slot))
            continue;
        SCOPED_TRACE(slots::kNames[slot]);
        Guarded dst(16);
        const float x[4] = {1, 2, 3, 4};
        for (int c = 0; c < kClasses; c++) {
            for (Kernel2* kernel : {powKernels[slot][c], atan2Kernels[slot][c]})
                checkPointersThenLengthOrder(
                    3,
                    [&](int null, int len) {
                        float* d = dst.atEnd<float>(16);
                        const qvrStatus s =
                            kernel(null == 0 ? nullptr : x, null == 1 ? nullptr : x, null == 2 ? nullptr : d, len);
                        EXPECT_TRUE(dst.untouched());
                        return s;
                    },
                    slot >= slots::e9);
            checkPointersThenLengthOrder(
                2,
                [&](int null, int len) {
                    float* d = dst.atEnd<float>(16);
                    const qvrStatus s = powxKernels[slot][c](null == 0 ? nullptr : x, 2, null == 1 ? nullptr : d, len);
                    EXPECT_TRUE(dst.untouched());
                    return s;
                },
                slot >= slots::e9);
        }
        float a[9], b[9], v[9] = {1, 2, 3, 4, 5, 6, 7, 8, 9}, w[9] = {.5f, 1, 2, 3, 1, 2, 3, 1, 2};
        qvrTable_qvrsPow_32f_A11[slot](v, w, a, 9), powKernels[slot][a11](v, w, b, 9);
        EXPECT_EQ(memcmp(a, b, sizeof a), 0);
        qvrTable_qvrsPow_32f_A24[slot](v, w, a, 9), powKernels[slot][a24](v, w, b, 9);
        EXPECT_EQ(memcmp(a, b, sizeof a), 0);
        qvrTable_qvrsPowx_32f_A11[slot](v, 1.7f, a, 9), powxKernels[slot][a11](v, 1.7f, b, 9);
        EXPECT_EQ(memcmp(a, b, sizeof a), 0);
        qvrTable_qvrsPowx_32f_A24[slot](v, 1.7f, a, 9), powxKernels[slot][a24](v, 1.7f, b, 9);
        EXPECT_EQ(memcmp(a, b, sizeof a), 0);
        qvrTable_qvrsAtan2_32f_A11[slot](v, w, a, 9), atan2Kernels[slot][a11](v, w, b, 9);
        EXPECT_EQ(memcmp(a, b, sizeof a), 0);
    }
}

} // namespace
