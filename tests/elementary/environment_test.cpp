// What a call leaves behind: MXCSR, x87 state, errno; and that the caller's rounding does not move an argument to
// another period.
#include <cerrno>
#include <xmmintrin.h>

#include "elementary/kernels.h"
#include "elementary/slot_tables.h"
#include "support/elementwise.h"

namespace {

using Invoke = std::function<void(const float*, float*, int)>;

void eachCall(const std::function<void(const Invoke&)>& body)
{
    for (int slot = 0; slot < slots::kCount; slot++) {
        if (!slots::canRun(slot))
            continue;
        for (int c = 0; c < kClasses; c++) {
            SCOPED_TRACE(std::string("slot ") + slots::kNames[slot] + " class " + kClassNames[c]);
            for (const Function1& f : kFunctions1) {
                SCOPED_TRACE(f.name);
                body([&](const float* x, float* y, int n) { f.kernels[slot][c](x, y, n); });
            }
            body([&](const float* x, float* y, int n) { powKernels[slot][c](x, x, y, n); });
            body([&](const float* x, float* y, int n) { atan2Kernels[slot][c](x, x, y, n); });
            body([&](const float* x, float* y, int n) { powxKernels[slot][c](x, -1.5f, y, n); });
        }
    }
}

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
                        const bool fine = slot == slots::mx || c == ha;
                        ASSERT_TRUE(d.ulp <= 2 || (!fine && d.relative <= (c == la ? 0x1p-20 : 0x1p-11)) ||
                                    (!fine && c == a11 && d.absolute <= f.absolute))
                            << f.name << " " << slots::kNames[slot] << " " << kClassNames[c] << " mode " << mode << " "
                            << in[i] << " gave " << out[i];
                    }
                }
    }
}

} // namespace
