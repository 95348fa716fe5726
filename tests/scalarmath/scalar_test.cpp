#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "scalarmath/messages.h"
#include "support/machine.h"
#include "support/slot_list.h"
#include "support/values.h"

extern "C" {
double mx_qvrmFloor(double), m7_qvrmFloor(double), y8_qvrmFloor(double);
double mx_qvrmCeil(double), m7_qvrmCeil(double), y8_qvrmCeil(double);
}

namespace {

std::vector<double> doubles()
{
    std::vector<double> v = specials<double>();
    for (double x : {0x1p52, 0x1p52 + 1, 0x1p52 - 0.5, 0x1p51 + 0.5, 0x1p53, 1e300, 0.99999999999999989, 1e-300})
        for (double s : {1.0, -1.0})
            v.push_back(s * x);
    const auto more = randomValues<double>(2000, 3, -100, 100);
    v.insert(v.end(), more.begin(), more.end());
    return v;
}

TEST(Scalar, FloorAndCeilOfEveryForm)
{
    for (double x : doubles()) {
        for (auto f : {mx_qvrmFloor, slots::canRun(1) ? m7_qvrmFloor : mx_qvrmFloor,
                       slots::canRun(4) ? y8_qvrmFloor : mx_qvrmFloor, qvrmFloor})
            EXPECT_TRUE(sameValue(f(x), std::floor(x))) << x;
        for (auto f : {mx_qvrmCeil, slots::canRun(1) ? m7_qvrmCeil : mx_qvrmCeil,
                       slots::canRun(4) ? y8_qvrmCeil : mx_qvrmCeil, qvrmCeil})
            EXPECT_TRUE(sameValue(f(x), std::ceil(x))) << x;
    }
}

TEST(Scalar, RoutinesFollowLibcAndKeepErrno)
{
    errno = 41;
    for (double x : doubles()) {
        EXPECT_TRUE(sameValue(qvrmSin(x), std::sin(x)));
        EXPECT_TRUE(sameValue(qvrmCos(x), std::cos(x)));
        EXPECT_TRUE(sameValue(qvrmAtan2(x, 0.7), std::atan2(x, 0.7)));
        const float f = static_cast<float>(x);
        EXPECT_TRUE(sameValue(qvrmExpf(f), expf(f)));
        EXPECT_TRUE(sameValue(qvrmLogf(f), logf(f)));
        EXPECT_TRUE(sameValue(qvrmAtanf(f), atanf(f)));
    }
    errno = 41;
    qvrmExpf(1000), qvrmLogf(-1), qvrmLogf(0), qvrmSin(INFINITY), qvrmCos(INFINITY);
    EXPECT_EQ(errno, 41);
    char a[9] = "abcdefgh", b[9] = {};
    EXPECT_EQ(qvrmCopy(b, a, 9), b);
    EXPECT_STREQ(b, "abcdefgh");
    EXPECT_EQ(qvrmFill(b, 'x', 3), b);
    EXPECT_STREQ(b, "xxxdefgh");
}

// Masks, form and class as before any use, put back afterwards.
struct FreshChoice {
    uint64_t mask = qvrmFeatureMask, any = qvrmFeatureMaskAny;
    int32_t index = qvrmClassIndex;
    FreshChoice() { qvrmFeatureMask = qvrmFeatureMaskAny = 0, qvrmClassIndex = 0; }
    ~FreshChoice() { qvrmFeatureMask = mask, qvrmFeatureMaskAny = any, qvrmClassIndex = index; }
};

constexpr uint32_t kBaseEdx = 1u | 1u << 15 | 1u << 23 | 1u << 24 | 1u << 25 | 1u << 26;

TEST(Scalar, FormByCapabilities)
{
    const struct {
        uint32_t ecx, ebx7;
        int form, cls;
    } rows[] = {
        {0, 0, 0, 3},
        {1, 0, 1, 4},
        {1 | 1 << 9, 0, 1, 5},
        {1 | 1 << 9 | 1 << 19, 0, 2, 6},
        {1 | 1 << 9 | 1 << 19 | 1 << 20, 0, 2, 7},
        {1 | 1 << 9 | 1 << 19 | 1 << 20 | 1 << 28, 0, 2, 7}, // the system does not save the registers
        {1 | 1 << 9 | 1 << 19 | 1 << 20 | 1 << 27 | 1 << 28, 0, 2, 8},
        {1 | 1 << 9 | 1 << 12 | 1 << 19 | 1 << 20 | 1 << 27 | 1 << 28, 1 << 3 | 1 << 5 | 1 << 8, 2, 9},
    };
    for (const auto& row : rows) {
        for (bool foreign : {false, true}) {
            Machine machine;
            FreshChoice fresh;
            machine.leaf(1).edx = kBaseEdx;
            machine.leaf(1).ecx = row.ecx;
            machine.leaf(7).ebx = row.ebx7;
            machine.xgetbv0 = 6;
            if (foreign)
                machine.vendor("SomeOtherOne");
            EXPECT_EQ(qvrmForm(), foreign ? 0 : row.form) << std::hex << row.ecx;
            EXPECT_EQ(qvrmFeatureMask & qvrmDetected, uint64_t{qvrmDetected});
            if (foreign)
                EXPECT_EQ(qvrmFeatureMask, uint64_t{qvrmDetected});
            EXPECT_EQ(qvrmClass(), row.cls) << std::hex << row.ecx;
            EXPECT_EQ(qvrmClassIndex, row.cls);
        }
    }
    FreshChoice fresh;
    qvrmFeatureMaskAny = qvrmDetected | qvrmSse;
    EXPECT_EQ(qvrmClass(), 2);
    qvrmClassIndex = 0;
    qvrmFeatureMaskAny = qvrmDetected;
    EXPECT_EQ(qvrmClass(), 1);
}

// ---- Errors ---------------------------------------------------------------------------------------------------------

std::string standardErrorOf(const std::function<void()>& body)
{
    testing::internal::CaptureStderr();
    body();
    return testing::internal::GetCapturedStderr();
}

struct ErrorState {
    ErrorState()
    {
        qvrmErrorMode = 0;
        qvrmCatalogueEnabled = 0;
    }
    ~ErrorState()
    {
        qvrmErrorRows = nullptr;
        qvrmErrorRowCount = 0;
        qvrmErrorMode = 0;
        qvrmUserHook = nullptr;
        qvrmCatalogueEnabled = 1;
        qvrmCatalogue = nullptr;
    }
};

uint32_t actions(std::initializer_list<int> list)
{
    uint32_t word = 0;
    int place = 0;
    for (int a : list)
        word |= static_cast<uint32_t>(a) << 4 * place++;
    return word;
}
ptrdiff_t placeOf(const char* name)
{
    return std::find_if(qvrmNames, qvrmNames + qvrmNameCount, [=](const char* n) { return strcmp(n, name) == 0; }) -
           qvrmNames;
}
qvrmErrorRow row(const char* name, int type, int kind, int errnoIndex, int result, int message, uint32_t program)
{
    return {static_cast<uint8_t>(placeOf(name)), static_cast<uint8_t>(type),
            static_cast<uint8_t>(kind),          static_cast<uint8_t>(errnoIndex),
            static_cast<uint8_t>(result),        static_cast<uint8_t>(message),
            {program, program, program},         {}};
}

void report(const qvrmErrorRow& r, void* result, const void* a = nullptr, const void* b = nullptr)
{
    qvrmErrorRows = &r;
    qvrmErrorRowCount = 1;
    qvrmMathError(result, a, b, 0);
}

TEST(ScalarErrors, NamesAreSorted)
{
    EXPECT_STREQ(qvrmNames[0], "acos");
    EXPECT_STREQ(qvrmNames[qvrmNameCount - 1], "ynq");
    EXPECT_TRUE(std::is_sorted(qvrmNames, qvrmNames + qvrmNameCount,
                               [](const char* a, const char* b) { return strcmp(a, b) < 0; }));
}

TEST(ScalarErrors, ErrnoConstantAndMessage)
{
    ErrorState state;
    const qvrmErrorRow r = row("pow", qvrmTypeDouble, qvrmSing, qvrmErrnoDomain, qvrmResultInfinity, 3,
                               actions({qvrmActErrno, qvrmActConstant, qvrmActPrint}));
    double result = 5, zero = 0, minus = -1;
    errno = 0;
    const std::string text = standardErrorOf([&] { report(r, &result, &zero, &minus); });
    EXPECT_EQ(text, "\rpow(0,negative): SING error\n");
    EXPECT_EQ(errno, 33);
    EXPECT_EQ(result, INFINITY);
    const qvrmErrorRow range =
        row("expq", qvrmTypeQuad, qvrmOverflow, qvrmErrnoRange, 0, 1, actions({qvrmActErrno, qvrmActPrint}));
    EXPECT_EQ(standardErrorOf([&] { report(range, &result); }), "\rexpqq: OVERFLOW error\n");
    EXPECT_EQ(errno, 34);
}

TEST(ScalarErrors, NoActionInModeMinusOneOrWithoutARow)
{
    ErrorState state;
    const qvrmErrorRow r = row("log", qvrmTypeDouble, qvrmSing, qvrmErrnoRange, qvrmResultNan, 1,
                               actions({qvrmActErrno, qvrmActConstant, qvrmActPrint}));
    double result = 5, zero = 0;
    errno = 12;
    qvrmErrorMode = -1;
    EXPECT_EQ(standardErrorOf([&] { report(r, &result, &zero); }), "");
    qvrmErrorMode = 0;
    EXPECT_EQ(standardErrorOf([&] {
                  qvrmMathError(&result, &zero, &zero, 1);
                  qvrmMathError(&result, &zero, &zero, -1);
              }),
              "");
    EXPECT_EQ(errno, 12);
    EXPECT_EQ(result, 5);
}

TEST(ScalarErrors, ModePicksTheProgram)
{
    ErrorState state;
    qvrmErrorRow r = row("log", qvrmTypeDouble, qvrmSing, qvrmErrnoRange, qvrmResultInfinity, 1, 0);
    r.program[0] = actions({qvrmActErrno});
    r.program[1] = actions({qvrmActConstant});
    r.program[2] = actions({qvrmActArgument});
    double result = 5;
    const double argument = 7;
    errno = 0;
    report(r, &result, &argument);
    EXPECT_EQ(errno, 34);
    EXPECT_EQ(result, 5);
    qvrmErrorMode = 1;
    report(r, &result, &argument);
    EXPECT_EQ(result, INFINITY);
    qvrmErrorMode = 2;
    report(r, &result, &argument);
    EXPECT_EQ(result, 7);
}

TEST(ScalarErrors, SignSkipAndExtensions)
{
    ErrorState state;
    double result = 5, minus = -2.5, plus = 2.5, two = 2, zero = 0;
    const qvrmErrorRow sign = row("sinh", qvrmTypeDouble, qvrmOverflow, 0, qvrmResultInfinity, 1,
                                  actions({qvrmActSignOfArgument, qvrmActSign, qvrmActConstant}));
    report(sign, &result, &minus);
    EXPECT_EQ(result, -INFINITY);
    report(sign, &result, &plus);
    EXPECT_EQ(result, INFINITY);
    result = -1;
    const qvrmErrorRow byResult = row("sinh", qvrmTypeDouble, qvrmOverflow, 0, qvrmResultInfinity, 1,
                                      actions({qvrmActSignOfResult, qvrmActSign, qvrmActConstant}));
    report(byResult, &result, &plus);
    EXPECT_EQ(result, -INFINITY);

    const qvrmErrorRow skip =
        row("sinh", qvrmTypeDouble, qvrmOverflow, 0, qvrmResultZero, 1, actions({qvrmActSkipIfZero, qvrmActConstant}));
    result = 5;
    report(skip, &result, &two); // a power of two has a zero significand
    EXPECT_EQ(result, 5);
    report(skip, &result, &plus);
    EXPECT_EQ(result, 0);

    qvrmErrorRow longer =
        row("sinh", qvrmTypeDouble, qvrmOverflow, 0, qvrmResultNan, 1, actions({qvrmActErrno, qvrmActExtendIfZero}));
    longer.extension[0] = static_cast<uint16_t>(actions({qvrmActExtend}));
    longer.extension[1] = static_cast<uint16_t>(actions({qvrmActConstant}));
    result = 5;
    report(longer, &result, &plus);
    EXPECT_EQ(result, 5);
    report(longer, &result, &zero);
    EXPECT_TRUE(std::isnan(result));
    // A program that only extends ends with its extensions.
    qvrmErrorRow endless = row("sinh", qvrmTypeDouble, qvrmOverflow, 0, qvrmResultNan, 1, actions({qvrmActExtend}));
    for (uint16_t& e : endless.extension)
        e = static_cast<uint16_t>(actions({qvrmActExtendLast}));
    report(endless, &result, &zero);
}

TEST(ScalarErrors, EveryWidth)
{
    ErrorState state;
    long double wide = 1;
    const long double argument = -3;
    report(row("fmod", qvrmTypeExtended, qvrmDomain, 1, qvrmResultNan, 1, actions({qvrmActConstant})), &wide,
           &argument);
    EXPECT_TRUE(std::isnan(wide));
    report(row("fmod", qvrmTypeExtended, qvrmDomain, 1, qvrmResultMinusInfinity, 1, actions({qvrmActConstant})), &wide,
           &argument);
    EXPECT_EQ(wide, -INFINITY);
    report(row("fmod", qvrmTypeExtended, qvrmDomain, 1, 0, 1, actions({qvrmActArgument})), &wide, &argument);
    EXPECT_EQ(wide, -3);
    uint64_t quad[2] = {1, 2};
    report(row("fmodq", qvrmTypeQuad, qvrmDomain, 1, qvrmResultInfinity, 1, actions({qvrmActConstant})), quad, quad);
    EXPECT_EQ(quad[0], 0u);
    EXPECT_EQ(quad[1], 0x7FFF000000000000u);
}

TEST(ScalarErrors, HookGetsARecord)
{
    ErrorState state;
    static qvrmException seen;
    qvrmUserHook = [](qvrmException* e) {
        seen = *e;
        *static_cast<double*>(e->result) = 42;
        return 1;
    };
    double result = 5, a = 1, b = 2;
    report(row("nexttoward", qvrmTypeExtended, qvrmUnderflow, 0, 0, 1, actions({qvrmActHook})), &result, &a, &b);
    EXPECT_STREQ(seen.name, "nexttowardl");
    EXPECT_EQ(seen.kind, qvrmUnderflow);
    EXPECT_EQ(seen.argument1, &a);
    EXPECT_EQ(seen.argument2, &b);
    EXPECT_EQ(result, 42);
}

TEST(ScalarErrors, Texts)
{
    ErrorState state;
    const auto text = [](int number) { return standardErrorOf([&] { qvrmPrintError(number, "f", "l", "DOMAIN"); }); };
    EXPECT_EQ(text(0), "\rUn-used message\n");
    EXPECT_EQ(text(1), "\rfl: DOMAIN error\n");
    EXPECT_EQ(text(2), "\rfl(0,0): DOMAIN error\n");
    EXPECT_EQ(text(3), "\rfl(0,negative): DOMAIN error\n");
    EXPECT_EQ(text(4), "\rfl(negative,non-integer): DOMAIN error\n");
}

// Without a catalogue the language loses what follows its first dot, one line says so, and nobody tries again.
TEST(ScalarErrors, MissingCatalogue)
{
    ErrorState state;
    const char* before = getenv("LANG");
    const std::string saved = before ? before : "";
    qvrmCatalogueEnabled = 1;
    qvrmCatalogue = nullptr;
    setenv("LANG", "en_XX.UTF-8", 1);
    const auto print = [] { return standardErrorOf([] { qvrmPrintError(1, "log", "", "SING"); }); };
    EXPECT_EQ(print(), "Cannot open message catalog libm.cat\n\rlog: SING error\n");
    EXPECT_STREQ(getenv("LANG"), "en_XX");
    EXPECT_EQ(qvrmCatalogueEnabled, 0);
    EXPECT_EQ(qvrmCatalogue, nullptr);
    setenv("LANG", "en_XX.UTF-8", 1);
    EXPECT_EQ(print(), "\rlog: SING error\n");
    EXPECT_STREQ(getenv("LANG"), "en_XX.UTF-8");
    // A very long language, and none at all.
    qvrmCatalogueEnabled = 1;
    setenv("LANG", std::string(5000, 'a').c_str(), 1);
    EXPECT_EQ(print(), "Cannot open message catalog libm.cat\n\rlog: SING error\n");
    qvrmCatalogueEnabled = 1;
    unsetenv("LANG");
    EXPECT_EQ(print(), "Cannot open message catalog libm.cat\n\rlog: SING error\n");
    if (before)
        setenv("LANG", saved.c_str(), 1);
}

} // namespace
