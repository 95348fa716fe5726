#include "model/vector.h"
#include "support/elementwise.h"
#include "vector/slot_tables.h"

#include <xmmintrin.h>

namespace {

using F = float;

// They keep the sign of zero, infinities and NaN, whatever the rounding mode.
const auto up = element(model::qvrsCeil_32f), down = element(model::qvrsFloor_32f);

const std::vector<F> kHard = {0.0f,          -0.0f,         0.3f,
                              -0.3f,         0.5f,          -0.5f,
                              0.99999994f,   -0.99999994f,  1.0f,
                              -1.0f,         1.5f,          -1.5f,
                              8388607.5f,    -8388607.5f,   8388608.0f,
                              -8388608.0f,   8388609.0f,    4194303.75f,
                              -4194303.75f,  2147483648.0f, -2147483648.0f,
                              2147483520.0f, 4e9f,          -4e9f,
                              1e30f,         -1e30f,        3.4e38f,
                              INFINITY,      -INFINITY,     NAN,
                              floatOf(1),    -floatOf(1),   floatOf(0x7FA00001)};

template<class Table, class Model> void checkRounding(const Table& table, const Model& model)
{
    slots::each(table, [&](auto f, int) {
        checkElementwise<F, F>({f, model});
        Guarded dst(16);
        const F x[4] = {1, 2, 3, 4};
        checkPointersThenLengthOrder(
            2,
            [&](int null, int len) {
                F* d = dst.atEnd<F>(16);
                const qvrStatus s = f(null == 0 ? nullptr : x, null == 1 ? nullptr : d, len);
                EXPECT_TRUE(dst.untouched());
                return s;
            },
            true);
        EXPECT_EQ(f(nullptr, nullptr, 0), qvrErrBadSize);

        // Every hard value at every place of short and long arrays, in every rounding mode.
        const unsigned saved = _mm_getcsr();
        for (unsigned mode : {0u, 0x2000u, 0x4000u, 0x6000u}) {
            for (int n : {1, 3, 7, 9, 33}) {
                std::vector<F> in(n), out(n);
                for (size_t k = 0; k < kHard.size(); k++) {
                    for (int i = 0; i < n; i++)
                        in[i] = kHard[(k + i) % kHard.size()];
                    _mm_setcsr((saved & ~0x6000u) | mode);
                    f(in.data(), out.data(), n);
                    _mm_setcsr(saved);
                    for (int i = 0; i < n; i++)
                        ASSERT_TRUE(sameValue(out[i], model(in[i]))) << in[i] << " gave " << out[i] << " mode " << mode;
                }
            }
        }
    });
}

TEST(Round, Ceil)
{
    checkRounding(qvrTable_qvrsCeil_32f, up);
}
TEST(Round, Floor)
{
    checkRounding(qvrTable_qvrsFloor_32f, down);
}

// A stride through all floats: the whole range of exponents with many mantissas.
TEST(Round, AcrossAllExponents)
{
    slots::each(qvrTable_qvrsCeil_32f, [&](auto f, int slot) {
        std::vector<F> in(4096), ceil(4096), floor(4096);
        for (uint64_t start = 0; start < (uint64_t{1} << 32); start += uint64_t{4096} * 997) {
            for (size_t i = 0; i < in.size(); i++)
                in[i] = floatOf(static_cast<uint32_t>(start + i * 997));
            f(in.data(), ceil.data(), 4096);
            qvrTable_qvrsFloor_32f[slot](in.data(), floor.data(), 4096);
            for (size_t i = 0; i < in.size(); i++) {
                ASSERT_TRUE(sameValue(ceil[i], up(in[i]))) << bitsOf(in[i]);
                ASSERT_TRUE(sameValue(floor[i], down(in[i]))) << bitsOf(in[i]);
            }
        }
    });
}

// Exceptions are masked inside. A caller with all masked gets the five flags cleared and precision kept, any other its
// whole word back; x87 exceptions are clear.
TEST(Round, Environment)
{
    slots::each(qvrTable_qvrsCeil_32f, [&](auto f, int slot) {
        const F signalling[2] = {floatOf(0x7FA00001), 0.5f};
        F out[2];
        const unsigned saved = _mm_getcsr();
        for (auto call : {f, qvrTable_qvrsFloor_32f[slot]}) {
            _mm_setcsr(0x1F80 | 0x3F | 0x4000);
            call(signalling, out, 2);
            const unsigned masked = _mm_getcsr();
            _mm_setcsr(0x1F80);
            call(signalling, out, 2);
            const unsigned clean = _mm_getcsr();
            // Invalid and divide by zero unmasked: the signalling NaN must not trap.
            _mm_setcsr(0x1F80 & ~0x280u);
            call(signalling, out, 2);
            const unsigned unmasked = _mm_getcsr();
            _mm_setcsr(saved);
            EXPECT_EQ(masked, 0x1F80u | 0x20 | 0x4000);
            EXPECT_EQ(clean & ~0x20u, 0x1F80u);
            EXPECT_EQ(unmasked, 0x1F80u & ~0x280u);

            uint16_t status;
            const volatile double zero = 0;
            long double pole;
            __asm__ volatile("fldl %1\n fld1\n fdivp"
                             : "=t"(pole)
                             : "m"(zero)); // 1 / 0 raises the x87 zero-divide flag
            __asm__ volatile("fnstsw %0" : "=a"(status));
            EXPECT_NE(status & 0x3F, 0);
            call(signalling, out, 2);
            __asm__ volatile("fnstsw %0" : "=a"(status));
            EXPECT_EQ(status & 0xBF, 0);
        }
    });
}

} // namespace
