#include <xmmintrin.h>

#include "elementary/kernels.h"
#include "elementary/slot_tables.h"
#include "elementary/tables.h"
#include "support/elementwise.h"

namespace {

const float kNan = floatOf(0xFFC00000), kLnNan = floatOf(0x7FFC0000);

// Slot mx has the kernel of class a24 in all three places.
Class reached(int slot, int c)
{
    return slot == slots::mx ? a24 : static_cast<Class>(c);
}

// What the tag promises.
bool good(float got, long double want, Class c, double absolute)
{
    const Distance d = distance(got, want);
    if (c == a24)
        return d.ulp <= 1;
    return d.relative <= (c == a21 ? 0x1p-21 : 0x1p-11) || (c == a11 && d.absolute <= absolute) || d.ulp <= 1;
}

void eachKernel(const Function1& f, const std::function<void(Kernel1*, int slot, Class)>& body)
{
    for (int slot = 0; slot < slots::kCount; slot++) {
        if (!slots::canRun(slot))
            continue;
        for (int c = 0; c < kClasses; c++) {
            SCOPED_TRACE(std::string(f.name) + " slot " + slots::kNames[slot] + " class " + kClassNames[c]);
            body(f.kernels[slot][c], slot, reached(slot, c));
        }
    }
}

// Arguments across the domain: a stride through all bit patterns.
std::vector<float> domainSample(const Function1& f, uint64_t stride)
{
    std::vector<float> v;
    for (uint64_t b = 7; b < (uint64_t{1} << 32); b += stride) {
        const float x = floatOf(static_cast<uint32_t>(b));
        if (x >= f.low && x <= f.high)
            v.push_back(x);
    }
    return v;
}

TEST(Tagged, AccuracyOfEveryClass)
{
    for (const Function1& f : kFunctions1) {
        const std::vector<float> in = domainSample(f, uint64_t{200003});
        std::vector<long double> want;
        for (float x : in)
            want.push_back(f.model(x));
        std::vector<float> out(in.size());
        eachKernel(f, [&](Kernel1* kernel, int, Class c) {
            EXPECT_EQ(kernel(in.data(), out.data(), static_cast<int>(in.size())), qvrOk);
            for (size_t i = 0; i < in.size(); i++)
                ASSERT_TRUE(good(out[i], want[i], c, f.absolute))
                    << in[i] << " gave " << out[i] << ", want " << static_cast<double>(want[i]);
        });
    }
}

// Where series and reductions are at their worst: near multiples of pi/2, near 1, round the limits of the block paths.
TEST(Tagged, AccuracyAtHardPlaces)
{
    std::vector<float> hard;
    const auto around = [&](double x) {
        float at = static_cast<float>(x);
        for (int k = 0; k < 3; k++)
            at = nextafterf(at, -INFINITY);
        for (int k = 0; k < 7; k++) {
            hard.push_back(at);
            hard.push_back(-at);
            at = nextafterf(at, INFINITY);
        }
    };
    for (int k = 1; k < 7000; k += k < 50 ? 1 : 37)
        around(k * 1.5707963267948966);
    for (double x : {0.5,        1.0,       1.0 / 128,  0.99609375, 1.00390625, 0.998046875, 2.0,       0.22824347,
                     0.79747339, 2.0765214, 0.34657359, 86.9,       87.0,       87.33655,    88.5,      88.7228,
                     89.4158,    9.0109,    10.0,       4000.0,     10000.0,    131072.0,    1e10,      1e38,
                     1e-20,      1.2e-38,   1e-44,      16367173.0, 0.50024897, 0.50025785,  3.1301932, 0.35082582})
        around(x);
    for (const Function1& f : kFunctions1) {
        std::vector<float> in;
        for (float x : hard)
            if (x >= f.low && x <= f.high)
                in.push_back(x);
        std::vector<float> out(in.size());
        eachKernel(f, [&](Kernel1* kernel, int, Class c) {
            // Alone, so that no neighbour sends it to the scalar path; and all together.
            for (size_t i = 0; i < in.size(); i++)
                kernel(&in[i], &out[i], 1);
            for (size_t i = 0; i < in.size(); i++)
                ASSERT_TRUE(good(out[i], f.model(in[i]), c, f.absolute)) << in[i] << " gave " << out[i];
            kernel(in.data(), out.data(), static_cast<int>(in.size()));
            for (size_t i = 0; i < in.size(); i++)
                ASSERT_TRUE(good(out[i], f.model(in[i]), c, f.absolute)) << in[i] << " gave " << out[i];
        });
    }
}

// Lengths, alignments, guard pages, in place: every element gets the bits that it gets alone.
TEST(Tagged, EveryPlaceInAnArrayIsAlike)
{
    for (const Function1& f : kFunctions1)
        eachKernel(f, [&](Kernel1* kernel, int, Class c) {
            // One full sweep for each function, short ones for its other classes.
            const auto model = [&](float x) {
                float y;
                kernel(&x, &y, 1);
                return y;
            };
            const float low = f.low < 0 ? -3 : 0.01f, high = f.high == 1 ? 1 : 3;
            const Elementwise<float, float> e{kernel, model};
            for (int n = 1; n < 70; n += c == a11 ? 1 : 7)
                for (int offset : {0, 4, 20, 1})
                    checkCall<float, float>(e, randomValues<float>(n, 3, low < -1 && f.high == 1 ? -1 : low, high),
                                            n & 1, offset, 64 - offset, offset == 20 ? 0 : -1);
            for (int n : {255, 256, 257, 300, 1001})
                for (int offset = 0; offset < 32; offset += 4)
                    checkCall<float, float>(e, randomValues<float>(n, 4, low < -1 && f.high == 1 ? -1 : low, high),
                                            n & 1, offset, 28 - offset, -1);
        });
}

struct Special {
    float x;
    uint32_t want;
    qvrStatus status;
};

const uint32_t kQuiet = 1; // any quiet NaN

struct SpecialsOf {
    const char* name;
    std::vector<Special> rows;
    float harmless;
};

const float kSignalling = floatOf(0x7FA00001), kPayload = floatOf(0xFFC12345);

const std::vector<SpecialsOf>& specialTable()
{
    const uint32_t inf = 0x7F800000, minusInf = 0xFF800000, nan = 0xFFC00000, one = 0x3F800000;
    static const std::vector<SpecialsOf> table = {
        {"Sin",
         {{INFINITY, nan, 19}, {-INFINITY, nan, 19}, {NAN, kQuiet, 0}, {kSignalling, kQuiet, 0}, {0.0f, 0, 0}},
         1.0f},
        {"Cos", {{INFINITY, nan, 19}, {-INFINITY, nan, 19}, {NAN, kQuiet, 0}, {kSignalling, kQuiet, 0}}, 1.0f},
        {"Tan",
         {{INFINITY, nan, 19}, {-INFINITY, nan, 19}, {NAN, kQuiet, 0}, {kSignalling, kQuiet, 0}, {0.0f, 0, 0}},
         1.0f},
        {"Asin",
         {{INFINITY, nan, 19},
          {-1.0000001f, nan, 19},
          {2.0f, nan, 19},
          {NAN, kQuiet, 0},
          {-0.0f, 0x80000000, 0},
          {0.0f, 0, 0}},
         0.7f},
        {"Acos", {{INFINITY, nan, 19}, {-1.0000001f, nan, 19}, {2.0f, nan, 19}, {NAN, kQuiet, 0}, {1.0f, 0, 0}}, 0.7f},
        {"Atan", {{NAN, kQuiet, 0}, {-0.0f, 0x80000000, 0}, {0.0f, 0, 0}}, 1.0f},
        {"Sinh",
         {{INFINITY, inf, 0},
          {-INFINITY, minusInf, 0},
          {89.42f, inf, 12},
          {-1e30f, minusInf, 12},
          {NAN, kQuiet, 0},
          {-0.0f, 0x80000000, 0},
          {0.0f, 0, 0}},
         1.0f},
        {"Cosh",
         {{INFINITY, inf, 0}, {-INFINITY, inf, 0}, {89.42f, inf, 12}, {-1e30f, inf, 12}, {NAN, kQuiet, 0}},
         1.0f},
        {"Tanh",
         {{INFINITY, one, 0},
          {-INFINITY, 0xBF800000, 0},
          {9.02f, one, 0},
          {-50.0f, 0xBF800000, 0},
          {NAN, kQuiet, 0},
          {-0.0f, 0x80000000, 0},
          {0.0f, 0, 0}},
         1.0f},
        {"Exp",
         {{INFINITY, inf, 0},
          {-INFINITY, 0, 0},
          {88.8f, inf, 0},
          {-110.0f, 0, 0},
          {NAN, kQuiet, 0},
          {kSignalling, kQuiet, 0},
          {0.0f, one, 0},
          {-0.0f, one, 0}},
         1.0f},
        {"Ln",
         {{0.0f, minusInf, 18},
          {-0.0f, minusInf, 18},
          {-1.0f, bitsOf(kLnNan), 19},
          {-INFINITY, bitsOf(kLnNan), 19},
          {-floatOf(1), bitsOf(kLnNan), 19},
          {INFINITY, inf, 0},
          {kSignalling, bitsOf(kSignalling), 0},
          {kPayload, bitsOf(kPayload), 0},
          {1.0f, 0, 0}},
         2.0f},
        {"Log10",
         {{0.0f, minusInf, 0},
          {-0.0f, minusInf, 0},
          {-1.0f, nan, 0},
          {-INFINITY, nan, 0},
          {-floatOf(1), nan, 0},
          {INFINITY, inf, 0},
          {kSignalling, bitsOf(kSignalling), 0},
          {kPayload, bitsOf(kPayload), 0},
          {1.0f, 0, 0}},
         2.0f},
    };
    return table;
}

const Function1& functionNamed(const std::string& name)
{
    for (const Function1& f : kFunctions1)
        if (name == f.name)
            return f;
    abort();
}

// At every place of arrays of several lengths, between harmless neighbours that keep their promised accuracy.
TEST(Tagged, SpecialElements)
{
    for (const SpecialsOf& s : specialTable()) {
        const Function1& f = functionNamed(s.name);
        eachKernel(f, [&](Kernel1* kernel, int, Class c) {
            for (const Special& row : s.rows)
                for (int n : {1, 3, 8, 13, 40})
                    for (int at = 0; at < n; at += n > 13 ? 5 : 1) {
                        std::vector<float> x(n, s.harmless), y(n);
                        x[at] = row.x;
                        EXPECT_EQ(kernel(x.data(), y.data(), n), row.status) << row.x;
                        for (int i = 0; i < n; i++) {
                            if (i != at)
                                ASSERT_TRUE(good(y[i], f.model(s.harmless), c, f.absolute)) << row.x;
                            else if (row.want == kQuiet)
                                ASSERT_TRUE((bitsOf(y[i]) & 0x7FC00000) == 0x7FC00000) << std::hex << bitsOf(y[i]);
                            else
                                ASSERT_EQ(bitsOf(y[i]), row.want) << row.x;
                        }
                    }
        });
    }
}

TEST(Tagged, SignedZeroAndSmallArguments)
{
    for (const char* name : {"Sin", "Tan", "Asin", "Atan", "Sinh", "Tanh"}) {
        const Function1& f = functionNamed(name);
        eachKernel(f, [&](Kernel1* kernel, int, Class c) {
            if (c == a24 && (f.name[0] == 'S' && f.name[1] == 'i' && f.name[3] == 0))
                return; // the double kernel of the sine does not put a sign back
            float y;
            const float zero = -0.0f;
            kernel(&zero, &y, 1);
            if (c != a24)
                EXPECT_EQ(bitsOf(y), 0x80000000u);
            for (float x : {1e-30f, -1e-30f, 1.2e-38f, -1e-40f, floatOf(1)}) {
                kernel(&x, &y, 1);
                EXPECT_TRUE(good(y, x, c, 0)) << x << " " << y;
            }
        });
    }
}

// The last warning of an array stands, and the hook hears of every element in error once, in order.
struct Report {
    int code;
    int64_t index;
    std::string name;
    bool operator==(const Report&) const = default;
};
std::vector<Report> reports;

TEST(Tagged, LastWarningStandsAndHookHearsAll)
{
    qvrErrorHook* const saved = qvrsMathErrorHook;
    for (int slot = 0; slot < slots::kCount; slot++) {
        if (!slots::canRun(slot))
            continue;
        static const float* expectedSource;
        static const float* expectedDestination;
        qvrsMathErrorHook = [](int code, int64_t i, const float* a, const float* b, float* c, float* d, const char* n) {
            EXPECT_TRUE(a == expectedSource && b == expectedSource);
            EXPECT_TRUE(c == expectedDestination && d == expectedDestination);
            reports.push_back({code, i, n});
        };
        std::vector<float> x(37, 2.0f), y(37);
        expectedSource = x.data();
        expectedDestination = y.data();
        x[3] = -1;
        x[4] = 0;
        x[35] = -5;
        const std::string tag = slot == slots::mx ? "sLn_HA" : "sLn_A11";
        reports.clear();
        EXPECT_EQ(lnKernels[slot][a11](x.data(), y.data(), 37), 19);
        EXPECT_EQ(reports, (std::vector<Report>{{19, 3, tag}, {18, 4, tag}, {19, 35, tag}}));
        x[36] = 0;
        reports.clear();
        EXPECT_EQ(lnKernels[slot][a11](x.data(), y.data(), 37), 18);
        EXPECT_EQ(reports.size(), 4u);
        reports.clear();
        EXPECT_EQ(log10Kernels[slot][a11](x.data(), y.data(), 37), 0);
        EXPECT_TRUE(reports.empty());
        x.assign(37, 100.0f);
        reports.clear();
        EXPECT_EQ(coshKernels[slot][a11](x.data(), y.data(), 37), 12);
        EXPECT_EQ(reports.size(), 37u);
        EXPECT_EQ(reports.back(), (Report{12, 36, "vsCosh"}));
    }
    qvrsMathErrorHook = saved;
}

// One argument beyond the limit sends its block through the scalar path, with its accuracy.
TEST(Tagged, BlockOfAWideArgumentIsAccurate)
{
    for (int slot = 1; slot < slots::kCount; slot++) {
        if (!slots::canRun(slot))
            continue;
        alignas(64) float x[8], y[8];
        for (int i = 0; i < 8; i++)
            x[i] = 0.1f + 0.37f * static_cast<float>(i);
        x[5] = 4000.5f;
        EXPECT_EQ(sinKernels[slot][a11](x, y, 8), qvrOk);
        for (int i = 0; i < 8; i++)
            EXPECT_TRUE(good(y[i], sinl(x[i]), a24, 0)) << i;
    }
}

// Beyond the largest limit every slot and class gives the same bits, in arrays as alone, whatever the caller's
// environment: what is special for the reduction (from 2^17 on), and what is no finite number, stands anywhere.
TEST(Tagged, WideArgumentsAreOneRoutine)
{
    std::vector<float> x;
    for (uint32_t k = 0; k < 1500; k++) {
        const uint32_t sign = (k * 2654435761u) & 0x80000000;
        const float wide = 10000.5f + static_cast<float>((k * 40503u) % 500009) * 0.5f;
        x.push_back(floatOf(bitsOf(k % 3 ? wide : wide * 1e4f) | sign));
        if (k % 31 == 0)
            x.push_back(floatOf(0x46200000 + k * 0x00ED3C1B % 0x39600000));
        if (k % 97 == 0)
            x.push_back(k % 2 ? INFINITY : NAN);
    }
    const unsigned saved = _mm_getcsr();
    for (const char* name : {"Sin", "Cos", "Tan"}) {
        const Function1& f = functionNamed(name);
        for (unsigned environment : {0x1F80u, 0x3F80u, 0x5F80u, 0x7F80u, 0x9FC0u}) {
            std::vector<float> alone(x.size()), y(x.size());
            _mm_setcsr(environment);
            for (size_t i = 0; i < x.size(); i++)
                f.kernels[slots::mx][a24](&x[i], &alone[i], 1);
            _mm_setcsr(saved);
            if (environment == 0x1F80)
                for (size_t i = 0; i < x.size(); i++)
                    if (std::isfinite(x[i]))
                        ASSERT_TRUE(good(alone[i], f.model(x[i]), a24, 0)) << x[i] << " gave " << alone[i];
            eachKernel(f, [&](Kernel1* kernel, int, Class) {
                for (int n : {1, 2, 3, 5, 8, 15, 100, 1500}) {
                    _mm_setcsr(environment);
                    const qvrStatus status = kernel(x.data() + n % 7, y.data() + n % 5, n);
                    _mm_setcsr(saved);
                    bool infinite = false;
                    for (int i = 0; i < n; i++) {
                        infinite |= std::isinf(x[i + n % 7]);
                        ASSERT_EQ(bitsOf(y[i + n % 5]), bitsOf(alone[i + n % 7])) << x[i + n % 7] << " of " << n;
                    }
                    ASSERT_EQ(status, infinite ? qvrWarnDomain : qvrOk);
                }
            });
        }
        // A denormal neighbour, which the caller takes for a zero, is one here too, with its sign.
        const float mixed[] = {20000.5f, -1e-40f, 1e-40f, 3e5f, -1e-45f};
        eachKernel(f, [&](Kernel1* kernel, int, Class) {
            float y[5];
            _mm_setcsr(0x9FC0);
            kernel(mixed, y, 5);
            _mm_setcsr(saved);
            for (int i : {1, 2, 4})
                ASSERT_EQ(bitsOf(y[i]) | 0x80000000, f.name[0] == 'C' ? 0xBF800000 : 0x80000000) << i;
        });
    }
}

TEST(Tagged, StatusOrder)
{
    for (const Function1& f : kFunctions1)
        eachKernel(f, [&](Kernel1* kernel, int slot, Class) {
            Guarded dst(16);
            const float x[4] = {0.1f, 0.2f, 0.3f, 0.4f};
            checkPointersThenLengthOrder(
                2,
                [&](int null, int len) {
                    float* d = dst.atEnd<float>(16);
                    const qvrStatus s = kernel(null == 0 ? nullptr : x, null == 1 ? nullptr : d, len);
                    EXPECT_TRUE(dst.untouched());
                    return s;
                },
                slot >= slots::e9);
        });
}

// The exports take the class of their tag.
#define EXPECT_CLASS(name, kernels, c)                                                                                 \
    for (int slot = 0; slot < slots::kCount; slot++)                                                                   \
        if (slots::canRun(slot)) {                                                                                     \
            float byKernel[21], byExport[21];                                                                          \
            EXPECT_EQ(kernels[slot][c](x, byKernel, 21), qvrTable_##name[slot](x, byExport, 21)) << #name;             \
            EXPECT_EQ(memcmp(byKernel, byExport, sizeof byKernel), 0) << #name << " " << slots::kNames[slot];          \
        }

TEST(Tagged, ExportsTakeTheClassOfTheirTag)
{
    float x[21];
    for (int i = 0; i < 21; i++)
        x[i] = 0.03f + 0.041f * static_cast<float>(i);
    EXPECT_CLASS(qvrsSin_32f_A11, sinKernels, a11)
    EXPECT_CLASS(qvrsCos_32f_A11, cosKernels, a11)
    EXPECT_CLASS(qvrsTan_32f_A11, tanKernels, a11)
    EXPECT_CLASS(qvrsAsin_32f_A11, asinKernels, a11)
    EXPECT_CLASS(qvrsAcos_32f_A11, acosKernels, a11)
    EXPECT_CLASS(qvrsAtan_32f_A11, atanKernels, a11)
    EXPECT_CLASS(qvrsSinh_32f_A11, sinhKernels, a11)
    EXPECT_CLASS(qvrsCosh_32f_A11, coshKernels, a11)
    EXPECT_CLASS(qvrsTanh_32f_A11, tanhKernels, a11)
    EXPECT_CLASS(qvrsExp_32f_A11, expKernels, a11)
    EXPECT_CLASS(qvrsLn_32f_A11, lnKernels, a11)
    EXPECT_CLASS(qvrsLog10_32f_A11, log10Kernels, a11)
    EXPECT_CLASS(qvrsLog10_32f_A21, log10Kernels, a21)
}

TEST(Tagged, TablesFollowTheirRules)
{
    EXPECT_EQ(qvrPowerTable[0].hi, 1.0f);
    EXPECT_EQ(qvrPowerTable[0].lo, 0.0f);
    EXPECT_EQ(qvrPowerTable[1].hi, 1.00542986f);
    EXPECT_EQ(qvrPowerTable[1].lo, 3.6982247e-08f);
    EXPECT_EQ(qvrLog10Table[0].a, 0.43359375f);
    EXPECT_EQ(qvrLog10Table[0].hi, 0.0f);
    EXPECT_EQ(qvrLog10Table[1].a, 0.4296875f);
    EXPECT_EQ(qvrLog10Table[1].hi, 0.0039215088f);
    EXPECT_EQ(qvrLog10Table[1].lo, 8.7848393e-06f);
    for (int i = 0; i < 128; i++) {
        const long double p = exp2l(i / 128.0L);
        EXPECT_EQ(qvrPowerTable64[i], static_cast<double>(p));
        EXPECT_EQ(qvrPowerTable[i].hi, static_cast<float>(p));
        EXPECT_EQ(qvrPowerTable[i].lo, static_cast<float>((p - qvrPowerTable[i].hi) / qvrPowerTable[i].hi));
        const qvrLogRow& row = qvrLogTable[i];
        EXPECT_NEAR(row.inverse, 128.0 / (128 + i), 0x1p-13);
        EXPECT_NEAR(row.hi + static_cast<double>(row.lo), -log(static_cast<double>(row.inverse)), 1e-12);
        EXPECT_EQ(row.log, static_cast<float>(-logl(row.inverse)));
        EXPECT_EQ(qvrLogTable64[i].log, static_cast<double>(-logl(qvrLogTable64[i].inverse)));
        const qvrLog10Row& ten = qvrLog10Table[i];
        EXPECT_EQ(ten.a * 256, nearbyint(111.17938736723874 * 128 / (128 + i)));
        EXPECT_NEAR(ten.hi + static_cast<double>(ten.lo), log10(111 / 256.0 / static_cast<double>(ten.a)), 1e-12);
    }
}

} // namespace
