#include "model/vector.h"
#include "support/elementwise.h"
#include "support/environment.h"
#include "support/status_order.h"
#include "vector/slot_tables.h"

#include <xmmintrin.h>

namespace {

template<class D, class S, class Table>
void checkConversion(const Table& table, qvrStatus (*model)(const S*, D*, int), std::vector<S> more = {})
{
    slots::each(table, [&](auto f, int) {
        checkElementwise<D, S>({f, element(model)});
        if (!more.empty())
            for (size_t n = 1; n <= more.size(); n++)
                checkCall<D, S>({f, element(model)}, std::vector<S>(more.end() - n, more.end()), true, 0, 0, -1);
        Guarded dst(64);
        const S x[4] = {};
        checkPointersThenLengthOrder(2, [&](int null, int len) {
            D* d = dst.atEnd<D>(64);
            const qvrStatus s = f(null == 0 ? nullptr : x, null == 1 ? nullptr : d, len);
            EXPECT_TRUE(dst.untouched());
            return s;
        });
    });
}

TEST(Convert, From16sTo32f)
{
    checkConversion<float, int16_t>(qvrTable_qvrsConvert_16s32f, model::qvrsConvert_16s32f);
}
TEST(Convert, From32fTo64f)
{
    checkConversion<double, float>(qvrTable_qvrsConvert_32f64f, model::qvrsConvert_32f64f);
}
TEST(Convert, From64fTo32fClamps)
{
    checkConversion<float, double>(qvrTable_qvrsConvert_64f32f, model::qvrsConvert_64f32f,
                                   {1e300, -1e300, 3.4028234663852886e38, 3.4028235677973362e38, 3.4028235677973366e38,
                                    INFINITY, -INFINITY, NAN, 1e-45, 7e-46, 1.0 + 0x1p-24, 1.0 + 0x1p-24 + 0x1p-40});
    slots::each(qvrTable_qvrsConvert_64f32f, [&](auto f, int) {
        for (int n : {1, 2, 5, 9, 20}) {
            const std::vector<double> x(n, 1e300), nan(n, NAN);
            std::vector<float> d(n);
            f(x.data(), d.data(), n);
            for (float y : d)
                EXPECT_EQ(y, 3.4028234663852886e38f);
            f(nan.data(), d.data(), n);
            for (float y : d)
                EXPECT_TRUE(std::isnan(y));
        }
    });
}
TEST(Convert, From32sTo16sSaturates)
{
    checkConversion<int16_t, int32_t>(qvrTable_qvrsConvert_32s16s, model::qvrsConvert_32s16s,
                                      {32767, 32768, -32768, -32769, 65536, -65536, INT32_MAX, INT32_MIN, 0, 1, -1});
}

TEST(Convert, From16sTo64fScaled)
{
    slots::each(qvrTable_qvrsConvert_16s64f_Sfs, [&](auto f, int) {
        for (int scale : {0, 1, -1, 7, 15, -20, 1022, 1023, 5000, INT32_MAX, -1008, -1009, -4000, INT32_MIN}) {
            const int clamped = scale < -1008 ? -1008 : scale > 1022 ? 1022 : scale;
            const Elementwise<double, int16_t> e{
                [=](const int16_t* s, double* d, int n) { return f(s, d, n, scale); },
                [=](int16_t x) { return std::ldexp(static_cast<double>(x), -clamped); }};
            if (scale == 7)
                checkElementwise(e);
            for (int n : {1, 2, 3, 4, 5, 8, 11, 70})
                checkCall<double, int16_t>(e, mixedValues<int16_t>(n, 4), true, 0, 0, -1);
        }
        Guarded dst(64);
        const int16_t x[4] = {};
        checkPointersThenLengthOrder(2, [&](int null, int len) {
            double* d = dst.atEnd<double>(64);
            const qvrStatus s = f(null == 0 ? nullptr : x, null == 1 ? nullptr : d, len, 0);
            EXPECT_TRUE(dst.untouched());
            return s;
        });
    });
}

// The contract in long double, where every step is exact: factor, clamps, rounding.
int16_t roundModel(long double x, int mode)
{
    x = x > 32767 ? 32767 : x < -32768 ? -32768 : x;
    if (mode == 0)
        return static_cast<int16_t>(x);
    if (mode == 1)
        return static_cast<int16_t>(std::rint(static_cast<double>(x))); // the doubles of the tests hold x exactly
    const int64_t m = static_cast<int64_t>(2 * std::fabs(x));
    const int64_t r = (m + 1) >> 1;
    const int64_t s = x < 0 ? -r : r;
    return static_cast<int16_t>(s > 32767 ? 32767 : s < -32768 ? -32768 : s);
}

template<class T> std::vector<T> roundingInputs()
{
    std::vector<T> v;
    for (double base : {0.0, 1.0, 2.0, 3.0, 100.0, 32766.0, 32767.0, 32768.0})
        for (double frac : {0.0, 0.25, 0.49999997, 0.5, 0.50000006, 0.75, 0.99999994})
            for (double sign : {1.0, -1.0})
                v.push_back(static_cast<T>(sign * (base + frac)));
    for (T x :
         {T(40000), T(-40000), T(1e9), T(-1e9), T(3e9), T(-3e9), T(1e30), T(-1e30), T(INFINITY), T(-INFINITY), T(-0.0),
          std::numeric_limits<T>::denorm_min(), std::numeric_limits<T>::max(), std::numeric_limits<T>::lowest()})
        v.push_back(x);
    return v;
}

template<class T, class Table> void checkTo16(const Table& table, T (*factorOf)(int))
{
    slots::each(table, [&](auto f, int) {
        const std::vector<int> scales = {0,    1,    -1,   3,     -4,    14,        -14,       126,          127,
                                         128,  148,  149,  150,   151,   -126,      -127,      -128,         -129,
                                         1000, 1022, 1023, -1008, -1009, INT32_MAX, INT32_MIN, INT32_MIN + 1};
        for (int mode : {0, 1, 2, 7, -1, INT32_MIN, INT32_MAX}) {
            for (int scale : scales) {
                SCOPED_TRACE(testing::Message() << "mode " << mode << " scale " << scale);
                const T factor = factorOf(scale);
                const int kind = mode == 0 || mode == 1 ? mode : 2;
                const Elementwise<int16_t, T> e{
                    [=](const T* s, int16_t* d, int n) { return f(s, d, n, mode, scale); },
                    [=](T x) { return roundModel(scale == 0 ? x : static_cast<T>(x * factor), kind); }};
                std::vector<T> in = roundingInputs<T>(), random = randomValues<T>(300, 8, -40000, 40000);
                in.insert(in.end(), random.begin(), random.end());
                if (scale != 0)
                    std::erase_if(in, [=](T x) { return std::isnan(x * factor); }); // 0 * infinity is nobody's promise
                checkCall<int16_t, T>(e, in, true, 0, 0, -1);
                if (mode <= 2 && mode >= 0 && (scale == 0 || scale == 3)) {
                    for (int n = 1; n <= 70; n++) {
                        const std::vector<T> part(in.begin() + 3, in.begin() + 3 + n);
                        checkCall<int16_t, T>(e, part, true, 0, 0, -1);
                        checkCall<int16_t, T>(e, part, false, n % 64, 0, -1);
                        checkCall<int16_t, T>(e, part, false, 0, n % 64, -1);
                    }
                    for (size_t offset = 0; offset < 64; offset++)
                        checkCall<int16_t, T>(e, random, false, offset, 63 - offset, -1);
                }
                if (testing::Test::HasFailure())
                    return;
            }
        }
        Guarded dst(64);
        const T x[4] = {};
        checkPointersThenLengthOrder(2, [&](int null, int len) {
            int16_t* d = dst.atEnd<int16_t>(8);
            const qvrStatus s = f(null == 0 ? nullptr : x, null == 1 ? nullptr : d, len, 9, INT32_MIN);
            EXPECT_TRUE(dst.untouched());
            return s;
        });
    });
}

TEST(Convert, From32fTo16sScaled)
{
    checkTo16<float>(qvrTable_qvrsConvert_32f16s_Sfs, model::powerOfTwo32);
}
TEST(Convert, From64fTo16sScaled)
{
    checkTo16<double>(qvrTable_qvrsConvert_64f16s_Sfs, model::powerOfTwo64);
}

// Mode 1 rounds by MXCSR, the others do not look at it; the caller's word comes back as it was.
template<class T, class Table> void checkModes(const Table& table)
{
    slots::each(table, [&](auto f, int) {
        const unsigned saved = _mm_getcsr();
        const std::vector<T> in = {0.5, 1.5,  2.5, -0.5, -1.5,          -2.5,
                                   2.7, -2.7, 0.2, -0.2, T(0.49999997), T(-0.49999997)};
        const int16_t truncated[] = {0, 1, 2, 0, -1, -2, 2, -2, 0, 0, 0, 0};
        const int16_t away[] = {1, 2, 3, -1, -2, -3, 3, -3, 0, 0, 0, 0};
        const int16_t nearest[4][12] = {{0, 2, 2, 0, -2, -2, 3, -3, 0, 0, 0, 0},
                                        {0, 1, 2, -1, -2, -3, 2, -3, 0, -1, 0, -1},
                                        {1, 2, 3, 0, -1, -2, 3, -2, 1, 0, 1, 0},
                                        {0, 1, 2, 0, -1, -2, 2, -2, 0, 0, 0, 0}};
        for (unsigned mode = 0; mode < 4; mode++) {
            for (int n = 1; n <= 12; n++) {
                for (int rndMode : {0, 1, 2, 7, -1}) {
                    int16_t out[12];
                    _mm_setcsr((saved & ~0x6000u) | mode << 13);
                    f(in.data(), out, n, rndMode, 0);
                    const unsigned after = _mm_getcsr();
                    _mm_setcsr(saved);
                    EXPECT_EQ(after & 0x6000, mode << 13);
                    const int16_t* want = rndMode == 0 ? truncated : rndMode == 1 ? nearest[mode] : away;
                    for (int i = 0; i < n; i++)
                        EXPECT_EQ(out[i], want[i]) << in[i] << " rndMode " << rndMode << " MXCSR " << mode;
                }
            }
        }
    });
}

TEST(Convert, RoundingModes32f)
{
    checkModes<float>(qvrTable_qvrsConvert_32f16s_Sfs);
}
TEST(Convert, RoundingModes64f)
{
    checkModes<double>(qvrTable_qvrsConvert_64f16s_Sfs);
}

// The clamps come before the conversion on both sides.
TEST(Convert, ToSixteenBitsRaisesNothing)
{
    const auto check = [](auto f, auto tag) {
        using T = decltype(tag);
        for (T far : {T(-3e9), T(3e9), T(-1e30), -std::numeric_limits<T>::infinity()})
            for (int mode : {qvrRoundTowardZero, qvrRoundNearest, qvrRoundHalfAway})
                for (int scale : {0, 1, -1})
                    for (int n : {1, 2, 3, 4, 7, 16, 33}) {
                        const std::vector<T> x(n, far);
                        std::vector<qvr16s> y(n);
                        const Environment environment(environment::kMasked);
                        f(x.data(), y.data(), n, mode, scale);
                        EXPECT_EQ(environment.flags() & environment::kInvalid, 0u) << far << " mode " << mode;
                        EXPECT_EQ(y[n - 1], far < 0 ? -32768 : 32767);
                    }
    };
    slots::each(qvrTable_qvrsConvert_32f16s_Sfs, [&](auto f, int) { check(f, 0.0f); });
    slots::each(qvrTable_qvrsConvert_64f16s_Sfs, [&](auto f, int) { check(f, 0.0); });
}

} // namespace
