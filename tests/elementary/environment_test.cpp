// What a call leaves behind: MXCSR, x87 state, errno; and that the caller's rounding does not move an argument to
// another period.
#include <cerrno>
#include <xmmintrin.h>

#include "elementary/each_call.h"
#include "elementary/slot_tables.h"
#include "support/elementwise.h"
#include "support/environment.h"

extern "C" void pendingDivision(uint16_t* control, void (*call)(void*), void* argument);

namespace {

const float kProvoking[12] = {
    floatOf(0x7FA00001), INFINITY, -INFINITY, 0.0f, -0.0f, 1e30f, -1e30f, 1e-40f, 89.0f, -89.0f, 2.0f, 100.0f};

TEST(ElementaryEnvironment, MaskedCallerLosesFiveFlagsOnly)
{
    const unsigned saved = _mm_getcsr();
    eachCall([&](const Invoke& run) {
        float y[12];
        _mm_setcsr(0x1F80 | 0x3F | 0x4000);
        run(kProvoking, y, 12);
        const unsigned dirty = _mm_getcsr();
        _mm_setcsr(0x1F80 | 0x8000 | 0x40);
        run(kProvoking, y, 12);
        const unsigned flushing = _mm_getcsr();
        _mm_setcsr(saved);
        EXPECT_EQ(dirty, 0x1F80u | 0x20 | 0x4000);
        EXPECT_EQ(flushing & ~0x20u, 0x1F80u | 0x8000 | 0x40);
    });
}

TEST(ElementaryEnvironment, UnmaskedCallerIsNotTrapped)
{
    const unsigned saved = _mm_getcsr();
    eachCall([&](const Invoke& run) {
        float y[12];
        _mm_setcsr(0x2000 | 0x21);
        const unsigned before = 0x2000 | 0x21;
        // With a flag set and its mask clear no instruction traps until it raises that flag again.
        run(kProvoking, y, 12);
        const unsigned after = _mm_getcsr();
        _mm_setcsr(saved);
        EXPECT_EQ(after, before);
    });
}

TEST(ElementaryEnvironment, X87AndErrno)
{
    eachCall([&](const Invoke& run) {
        float y[12];
        const volatile double zero = 0;
        long double pole;
        __asm__ volatile("fldl %1\n fld1\n fdivp" : "=t"(pole) : "m"(zero));
        uint16_t control = 0x27F, after, status;
        __asm__ volatile("fldcw %0" : : "m"(control));
        errno = 77;
        run(kProvoking, y, 12);
        __asm__ volatile("fnstsw %0" : "=a"(status));
        __asm__ volatile("fnstcw %0" : "=m"(after));
        const uint16_t usual = 0x37F;
        __asm__ volatile("fldcw %0" : : "m"(usual));
        EXPECT_EQ(status & 0xBF, 0);
        EXPECT_EQ(after, control);
        EXPECT_EQ(errno, 77);
    });
}

// Exceptions of the x87 unit unmasked: nothing may trap there either.
TEST(ElementaryEnvironment, UnmaskedX87)
{
    eachCall([&](const Invoke& run) {
        float y[12];
        const uint16_t open = 0x340, usual = 0x37F;
        __asm__ volatile("fnclex\n fldcw %0" : : "m"(open));
        run(kProvoking, y, 12);
        __asm__ volatile("fnclex\n fldcw %0" : : "m"(usual));
    });
}

// An exception of the caller that waits to be delivered is not delivered in the middle of a call.
TEST(ElementaryEnvironment, PendingX87)
{
    eachCall([&](const Invoke& run) {
        struct Job {
            const Invoke* run;
            float y[12];
        } job{&run, {}};
        uint16_t control;
        pendingDivision(
            &control,
            [](void* argument) {
                Job& j = *static_cast<Job*>(argument);
                (*j.run)(kProvoking, j.y, 12);
            },
            &job);
        EXPECT_EQ(control, 0x37B);
        float y[12];
        run(kProvoking, y, 12);
        EXPECT_EQ(memcmp(job.y, y, sizeof y), 0);
    });
}

TEST(ElementaryEnvironment, DirectedRoundingKeepsThePromise)
{
    const unsigned saved = _mm_getcsr();
    for (const Function1& f : kFunctions1) {
        std::vector<float> in;
        for (uint64_t b = 3; b < (uint64_t{1} << 32); b += 3000017) {
            const float x = floatOf(static_cast<uint32_t>(b));
            if (x >= f.low && x <= f.high)
                in.push_back(x);
        }
        std::vector<long double> want;
        for (float x : in)
            want.push_back(f.model(x));
        std::vector<float> out(in.size());
        for (int slot = 0; slot < slots::kCount; slot++)
            for (int c = 0; slots::canRun(slot) && c < kClasses; c++)
                for (unsigned mode : {0x2000u, 0x4000u, 0x6000u}) {
                    _mm_setcsr(0x1F80 | mode);
                    f.kernels[slot][c](in.data(), out.data(), static_cast<int>(in.size()));
                    _mm_setcsr(saved);
                    for (size_t i = 0; i < in.size(); i++) {
                        const Distance d = distance(out[i], want[i]);
                        const bool fine = slot == slots::mx || c == a24;
                        ASSERT_TRUE(d.ulp <= 2 || (!fine && d.relative <= (c == a21 ? 0x1p-20 : 0x1p-11)) ||
                                    (!fine && c == a11 && d.absolute <= f.absolute))
                            << f.name << " " << slots::kNames[slot] << " " << kClassNames[c] << " mode " << mode << " "
                            << in[i] << " gave " << out[i];
                    }
                }
    }
}

// What each slot exports, with one array or two, or a constant.
template<class F> qvrStatus call1(F f, float x, float* y)
{
    return f(&x, y, 1);
}

TEST(ElementaryEnvironment, DenormalsCountAsZeros)
{
    for (unsigned flush : {0u, environment::kFlush})
        for (int slot = 0; slot < slots::kCount; slot++) {
            if (!slots::canRun(slot))
                continue;
            SCOPED_TRACE(slots::kNames[slot]);
            const float small[] = {1e-40f, -1e-40f, 1e-45f}, minusOne[] = {-1, -1, -1}, two[] = {2, 2, 2};
            float y[3];
            const Environment environment(environment::kMasked | environment::kDenormalsAreZero | flush);
            for (auto* table : {qvrTable_qvrsPow_32f_A11, qvrTable_qvrsPow_32f_A24}) {
                EXPECT_EQ(table[slot](small, minusOne, y, 3), qvrWarnDomain);
                EXPECT_EQ(y[0], INFINITY);
                EXPECT_EQ(y[1], -INFINITY);
                EXPECT_EQ(y[2], INFINITY);
                EXPECT_EQ(table[slot](small, two, y, 3), qvrOk);
                EXPECT_EQ(bitsOf(y[0]) | bitsOf(y[1]) | bitsOf(y[2]), 0u);
                // A denormal power is a zero, too.
                EXPECT_EQ(table[slot](two, small, y, 3), qvrOk);
                EXPECT_EQ(y[0], 1);
            }
            for (auto* table : {qvrTable_qvrsPowx_32f_A11, qvrTable_qvrsPowx_32f_A24}) {
                EXPECT_EQ(table[slot](small, -1, y, 3), qvrWarnDomain);
                EXPECT_EQ(y[0], INFINITY);
                EXPECT_EQ(table[slot](small, 0.5f, y, 3), qvrOk);
                EXPECT_EQ(bitsOf(y[0]) | bitsOf(y[1]) | bitsOf(y[2]), 0u);
            }
            EXPECT_EQ(qvrTable_qvrsLn_32f_A11[slot](small, y, 3), qvrWarnSingularity);
            EXPECT_TRUE(y[0] == -INFINITY && y[1] == -INFINITY && y[2] == -INFINITY);
            for (auto* table : {qvrTable_qvrsLog10_32f_A11, qvrTable_qvrsLog10_32f_A21}) {
                EXPECT_EQ(table[slot](small, y, 3), qvrOk);
                EXPECT_TRUE(y[0] == -INFINITY && y[1] == -INFINITY && y[2] == -INFINITY);
            }
            // There the sign bit comes first.
            EXPECT_EQ(qvrTable_qvrsLn_32f[slot](small, y, 3), qvrWarnLnZeroArg);
            EXPECT_TRUE(y[0] == -INFINITY && std::isnan(y[1]) && y[2] == -INFINITY);
            EXPECT_EQ(qvrTable_qvrsLn_32f[slot](small + 1, y, 2), qvrWarnLnNegArg);
        }
}

TEST(ElementaryEnvironment, OverflowIsInfinite)
{
    for (unsigned mode : {environment::kNearest, environment::kDown, environment::kUp, environment::kZero})
        for (int slot = 0; slot < slots::kCount; slot++) {
            if (!slots::canRun(slot))
                continue;
            const float over[] = {88.8f, 89.5f, 1000}, ten[] = {10, 10, 10}, power[] = {38.6f, 39, 1e30f};
            float exps[3], fast[3], pows[4][3], hyperbolic[2];
            qvrStatus sinh;
            {
                const Environment environment(environment::kMasked | mode);
                qvrTable_qvrsExp_32f_A11[slot](over, exps, 3);
                qvrTable_qvrsExp_32f[slot](over, fast, 3);
                qvrTable_qvrsPow_32f_A11[slot](ten, power, pows[0], 3);
                qvrTable_qvrsPow_32f_A24[slot](ten, power, pows[1], 3);
                qvrTable_qvrsPowx_32f_A11[slot](ten, 38.6f, pows[2], 3);
                qvrTable_qvrsPowx_32f_A24[slot](ten, 38.6f, pows[3], 3);
                sinh = call1(qvrTable_qvrsSinh_32f_A11[slot], -89.5f, &hyperbolic[0]);
                call1(qvrTable_qvrsCosh_32f_A11[slot], 89.5f, &hyperbolic[1]);
            }
            SCOPED_TRACE(testing::Message() << slots::kNames[slot] << " mode " << mode);
            for (int i = 0; i < 3; i++) {
                EXPECT_EQ(exps[i], INFINITY);
                EXPECT_EQ(fast[i], INFINITY);
                for (const auto& p : pows)
                    EXPECT_EQ(p[i], INFINITY);
            }
            EXPECT_EQ(sinh, qvrWarnOverflow);
            EXPECT_EQ(hyperbolic[0], -INFINITY);
            EXPECT_EQ(hyperbolic[1], INFINITY);
        }
}

TEST(ElementaryEnvironment, ZerosKeepTheirSign)
{
    for (unsigned mode : {environment::kNearest, environment::kDown, environment::kUp, environment::kZero})
        for (int slot = 0; slot < slots::kCount; slot++) {
            if (!slots::canRun(slot))
                continue;
            SCOPED_TRACE(testing::Message() << slots::kNames[slot] << " mode " << mode);
            const float zeros[] = {0.0f, -0.0f, 0.25f, 0.5f}, ones[] = {1, 1, 1, 1};
            const qvr32fc right[] = {{1, 0.0f}, {1, -0.0f}, {2, 0.5f}};
            float y[4];
            const Environment environment(environment::kMasked | mode);
            const auto odd = [&](const char* name) {
                EXPECT_EQ(bitsOf(y[0]), 0u) << name;
                EXPECT_EQ(bitsOf(y[1]), 0x80000000u) << name;
            };
            for (const Function1& f : kFunctions1)
                if (f.model(0.0L) == 0)
                    for (int c = 0; c < kClasses; c++) {
                        f.kernels[slot][c](zeros, y, 4);
                        odd(f.name);
                    }
            for (int c = 0; c < kClasses; c++) {
                atan2Kernels[slot][c](zeros, ones, y, 4);
                odd("Atan2");
                for (auto* kernels : {acosKernels, lnKernels, log10Kernels}) {
                    kernels[slot][c](ones, y, 4);
                    EXPECT_EQ(bitsOf(y[0]) | bitsOf(y[3]), 0u);
                }
            }
            qvrTable_qvrsArctan_32f[slot](zeros, y, 4);
            odd("Arctan");
            qvrTable_qvrsPhase_32fc[slot](right, y, 3);
            odd("Phase");
            qvrTable_qvrsLn_32f[slot](ones, y, 4);
            EXPECT_EQ(bitsOf(y[0]) | bitsOf(y[3]), 0u);
        }
}

TEST(ElementaryEnvironment, SmallExponentialsKeepTheirBitsWhereDenormalsAreFlushed)
{
    for (unsigned denormals : {0u, environment::kFlush, environment::kDenormalsAreZero})
        for (int slot = 0; slot < slots::kCount; slot++)
            for (float x = -79; slots::canRun(slot) && x > -87.33f; x -= 0.0137f) {
                float y[2];
                const float in[] = {x, x};
                {
                    const Environment environment(environment::kMasked | denormals);
                    qvrTable_qvrsExp_32f_A11[slot](in, y, 2);
                }
                ASSERT_LE(distance(y[1], expl(x)).relative, 0x1p-11) << slots::kNames[slot] << " " << x;
            }
}

// Results between half the largest float and the float itself, and just beyond it.
TEST(ElementaryEnvironment, PowersNextToTheLargestFloat)
{
    for (int slot = 0; slot < slots::kCount; slot++)
        for (int i = 1; slots::canRun(slot) && i < 4000; i++) {
            const float x = 1.0f + static_cast<float>(i) * 0.37f;
            const double exponent = (128 + (i % 101 - 60) * 1e-6) / log2(static_cast<double>(x));
            const float y = static_cast<float>(exponent);
            const long double want = powl(x, y);
            float got[2], constant;
            const float xs[] = {x, x}, ys[] = {y, y};
            qvrTable_qvrsPow_32f_A11[slot](xs, ys, got, 2);
            qvrTable_qvrsPowx_32f_A11[slot](xs, y, &constant, 1);
            if (want >= 0x1.ffffffp127L)
                ASSERT_EQ(got[1], INFINITY) << slots::kNames[slot] << " " << x << " " << y;
            else
                ASSERT_LE(distance(got[1], want).relative, 0x1p-11) << slots::kNames[slot] << " " << x << " " << y;
            ASSERT_EQ(bitsOf(constant), bitsOf(got[1]));
        }
}

// Results of the form in extended precision go the way that the caller rounds, and it takes denormals as the caller
// does.
TEST(ElementaryEnvironment, ExtendedForms)
{
    for (int slot = 0; slot < slots::kCount; slot++) {
        if (!slots::canRun(slot))
            continue;
        const float x[] = {88.5f, 1.5f, -1.5f, 1e-40f};
        float y[4], z[4];
        for (unsigned mode : {environment::kDown, environment::kUp, environment::kZero}) {
            {
                const Environment environment(environment::kMasked | mode | environment::kDenormalsAreZero);
                qvrTable_qvrsSinh_32f_A11[slot](x, y, 4);
                qvrTable_qvrsCosh_32f_A11[slot](x, z, 4);
            }
            for (int i = 0; i < 3; i++) {
                const bool below = mode == environment::kDown || (mode == environment::kZero && x[i] > 0);
                EXPECT_EQ(y[i] < sinhl(x[i]), below) << slots::kNames[slot] << " mode " << mode << " " << x[i];
                EXPECT_EQ(z[i] < coshl(x[i]), mode != environment::kUp) << slots::kNames[slot] << " " << x[i];
            }
            EXPECT_EQ(bitsOf(y[3]), 0u);
            EXPECT_EQ(z[3], 1);
        }
    }
}

} // namespace
