#include <cerrno>

#include "elementary/slot_tables.h"
#include "support/elementwise.h"

namespace {

const float kNan = floatOf(0xFFC00000);

double ulps(float got, long double want)
{
    if (std::isnan(got) || std::isnan(want))
        return std::isnan(got) == std::isnan(want) ? 0 : 1e30;
    const float nearest = static_cast<float>(want);
    if (got == nearest)
        return 0;
    if (std::isinf(got) || std::isinf(nearest))
        return 1e30;
    int exponent;
    frexpl(want, &exponent);
    return static_cast<double>(fabsl(got - want) / ldexpl(1, exponent < -125 ? -149 : exponent - 24));
}

// Alone at length 1, so that tail, body and alignment can be held against it.
template<class F> auto alone(F f)
{
    return [f](float x) {
        float y;
        f(&x, &y, 1);
        return y;
    };
}

std::vector<float> sample(uint64_t stride)
{
    std::vector<float> v;
    for (uint64_t b = 5; b < (uint64_t{1} << 32); b += stride)
        v.push_back(floatOf(static_cast<uint32_t>(b)));
    return v;
}

template<class Table> void checkFast(const Table& table, long double (*model)(long double), double bound)
{
    const std::vector<float> in = sample(uint64_t{100003});
    std::vector<long double> want;
    for (float x : in)
        want.push_back(model(x));
    slots::each(table, [&](auto f, int) {
        std::vector<float> out(in.size());
        EXPECT_EQ(f(in.data(), out.data(), static_cast<int>(in.size())), qvrOk);
        for (size_t i = 0; i < in.size(); i++)
            ASSERT_LE(ulps(out[i], want[i]), bound) << in[i] << " gave " << out[i];
        checkElementwise<float, float>({f, alone(f)});
        Guarded dst(16);
        const float x[4] = {1, 2, 3, 4};
        checkPointersThenLengthOrder(2, [&](int null, int len) {
            float* d = dst.atEnd<float>(16);
            const qvrStatus s = f(null == 0 ? nullptr : x, null == 1 ? nullptr : d, len);
            EXPECT_TRUE(dst.untouched());
            return s;
        });
    });
}

TEST(Fast, Exp)
{
    checkFast(qvrTable_qvrsExp_32f, expl, 1.5);
    slots::each(qvrTable_qvrsExp_32f, [&](auto f, int) {
        const float x[5] = {89, -110, NAN, INFINITY, -INFINITY};
        float y[5];
        errno = 5;
        EXPECT_EQ(f(x, y, 5), qvrOk);
        EXPECT_EQ(errno, 5);
        EXPECT_EQ(y[0], INFINITY);
        EXPECT_EQ(y[1], 0);
        EXPECT_TRUE(std::isnan(y[2]));
        EXPECT_EQ(y[3], INFINITY);
        EXPECT_EQ(bitsOf(y[4]), 0u);
    });
}

TEST(Fast, Arctan)
{
    checkFast(qvrTable_qvrsArctan_32f, atanl, 1.5);
}

float lnModel(float x)
{
    if (std::signbit(x))
        return kNan;
    return static_cast<float>(logl(x));
}
qvrStatus lnStatus(const std::vector<float>& v)
{
    for (float x : v) {
        if (std::signbit(x))
            return qvrWarnLnNegArg;
        if (x == 0)
            return qvrWarnLnZeroArg;
    }
    return qvrOk;
}

TEST(Fast, Ln)
{
    const std::vector<float> in = sample(uint64_t{100003});
    slots::each(qvrTable_qvrsLn_32f, [&](auto f, int) {
        std::vector<float> out(in.size());
        EXPECT_EQ(f(in.data(), out.data(), static_cast<int>(in.size())), lnStatus(in));
        for (size_t i = 0; i < in.size(); i++)
            ASSERT_LE(ulps(out[i], std::signbit(in[i]) ? NAN : logl(in[i])), 0.502) << in[i] << " gave " << out[i];
        // The sweep's special values among random ones, negatives included; finite results are those of one element.
        const auto one = alone(f);
        checkElementwise<float, float>({f, [&](float x) { return x > 0 ? one(x) : lnModel(x); }, lnStatus});
        const float bad[] = {-1.0f, -0.0f, -floatOf(1), -INFINITY, floatOf(0xFFC00001), floatOf(0xFFA00001)};
        for (float x : bad) {
            float y;
            EXPECT_EQ(f(&x, &y, 1), qvrWarnLnNegArg);
            EXPECT_EQ(bitsOf(y), 0xFFC00000u);
        }
        float y[2];
        const float first[2] = {0, -1}, second[2] = {-1, 0}, fine[2] = {NAN, INFINITY};
        EXPECT_EQ(f(first, y, 2), qvrWarnLnZeroArg);
        EXPECT_EQ(y[0], -INFINITY);
        EXPECT_EQ(f(second, y, 2), qvrWarnLnNegArg);
        EXPECT_EQ(f(fine, y, 2), qvrOk);
        EXPECT_TRUE(std::isnan(y[0]));
        EXPECT_EQ(y[1], INFINITY);
        Guarded dst(16);
        checkPointersThenLengthOrder(2, [&](int null, int len) {
            float* d = dst.atEnd<float>(16);
            const qvrStatus s = f(null == 0 ? nullptr : in.data(), null == 1 ? nullptr : d, len);
            EXPECT_TRUE(dst.untouched());
            return s;
        });
    });
}

TEST(Fast, Phase)
{
    struct Z {
        float re, im;
    };
    std::vector<qvr32fc> in;
    const std::vector<float> s = specials<float>();
    for (float a : s)
        for (float b : s)
            in.push_back({a, b});
    const auto re = randomValues<float>(20000, 1), im = randomValues<float>(20000, 2);
    for (size_t i = 0; i < re.size(); i++)
        in.push_back({re[i], im[i]});
    slots::each(qvrTable_qvrsPhase_32fc, [&](auto f, int) {
        const auto check = [&](const qvr32fc& z, float got) {
            const long double want = z.re == 0 && z.im == 0 ? 0 : atan2l(z.im, z.re);
            ASSERT_LE(ulps(got, want), 0.502) << z.re << " " << z.im << " gave " << got;
            if (z.re == 0 && z.im == 0)
                ASSERT_EQ(bitsOf(got), 0u);
        };
        std::vector<float> out(in.size());
        EXPECT_EQ(f(in.data(), out.data(), static_cast<int>(in.size())), qvrOk);
        for (size_t i = 0; i < in.size(); i++)
            check(in[i], out[i]);
        for (int n = 1; n <= 70; n++)
            for (size_t offset : {0u, 4u, 1u, 20u}) {
                Guarded& src = pooledGuarded(1, 8 * n + 64);
                Guarded& dst = pooledGuarded(0, 4 * n + 64);
                qvr32fc* a = src.atEnd<qvr32fc>(8 * n, offset);
                float* d = dst.atEnd<float>(4 * n, offset);
                memcpy(static_cast<void*>(a), &in[2000 + n], 8 * n);
                EXPECT_EQ(f(a, d, n), qvrOk);
                EXPECT_TRUE(dst.intact());
                for (int i = 0; i < n; i++) {
                    float got;
                    memcpy(&got, reinterpret_cast<char*>(d) + 4 * i, 4);
                    EXPECT_EQ(got, out[2000 + n + i]);
                }
            }
        const qvr32fc z = {1, 1};
        float y;
        checkPointersThenLengthOrder(
            2, [&](int null, int len) { return f(null == 0 ? nullptr : &z, null == 1 ? nullptr : &y, len); });
    });
}

} // namespace
