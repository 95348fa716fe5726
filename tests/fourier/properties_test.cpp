// What transforms, convolutions and correlations are, whichever way they are computed: linear, shifted by a phase,
// keeping energy. No reference implementation is asked.
#include <complex>
#include <numeric>

#include "fourier/slot_tables.h"
#include "support/chosen_slot.h"
#include "support/values.h"

namespace {

using Exact = long double;
constexpr Exact kTurn = 6.283185307179586476925286766559L;

// An object for as long as this lives.
template<class T, auto create, auto release> class Owned {
public:
    template<class... A> explicit Owned(A... arguments) { EXPECT_EQ(create(&object_, arguments...), qvrOk); }
    ~Owned() { EXPECT_EQ(release(object_), qvrOk); }
    Owned(const Owned&) = delete;
    Owned& operator=(const Owned&) = delete;
    operator T*() const { return object_; }

private:
    T* object_ = nullptr;
};
using Spec16 = Owned<qvrsFFTSpec_R_16s, Morven_qvrsFFTInitAlloc_R_16s, Morven_qvrsFFTFree_R_16s>;
using Hilbert = Owned<qvrsHilbertState_32f32fc, Morven_qvrsHilbertInitAlloc_32f32fc, Morven_qvrsHilbertFree_32f32fc>;
template<class T>
using Spec = std::conditional_t<sizeof(T) == 4,
                                Owned<qvrsFFTSpec_R_32f, Morven_qvrsFFTInitAlloc_R_32f, Morven_qvrsFFTFree_R_32f>,
                                Owned<qvrsFFTSpec_R_64f, Morven_qvrsFFTInitAlloc_R_64f, Morven_qvrsFFTFree_R_64f>>;
template<class T> constexpr Exact kUnit = sizeof(T) == 4 ? 0x1p-24L : 0x1p-53L;

template<class T> std::vector<T> random(size_t n, uint32_t seed)
{
    return randomValues<T>(n, seed, -1, 1);
}
template<class T> std::vector<T> spectrum(const Spec<T>& spec, const std::vector<T>& x)
{
    std::vector<T> y(x.size() + 2);
    if constexpr (sizeof(T) == 4)
        EXPECT_EQ(Morven_qvrsFFTFwd_RToCCS_32f(x.data(), y.data(), spec, nullptr), qvrOk);
    else
        EXPECT_EQ(Morven_qvrsFFTFwd_RToCCS_64f(x.data(), y.data(), spec, nullptr), qvrOk);
    return y;
}

// The relative distance of a from what f says of its places, in root mean squares.
template<class T, class F> Exact distance(const std::vector<T>& a, F&& wanted)
{
    Exact difference = 0, norm = 0;
    for (size_t i = 0; i < a.size(); i++) {
        const Exact w = wanted(i);
        difference += (a[i] - w) * (a[i] - w);
        norm += w * w;
    }
    return sqrtl(norm > 0 ? difference / norm : difference);
}
template<class T> Exact energy(const std::vector<T>& x)
{
    Exact sum = 0;
    for (const T v : x)
        sum += Exact(v) * v;
    return sum;
}

template<class T> class TransformProperties : public testing::Test {};
using Precisions = testing::Types<float, double>;
TYPED_TEST_SUITE(TransformProperties, Precisions);

// Orders of the straight-line kernels, of the plan in one cache and of the split, in every slot.
template<class T, class Body> void eachOrder(Body&& body)
{
    slots::eachChosen([&] {
        for (int order = 1; order <= 18; order++) {
            SCOPED_TRACE(testing::Message() << "order " << order);
            body(order, size_t{1} << order, Spec<T>(order, qvrFftNoDiv, qvrHintNone), 8 * kUnit<T> * sqrtl(order + 1));
            if (testing::Test::HasFatalFailure())
                return;
        }
    });
}

TYPED_TEST(TransformProperties, Linear)
{
    using T = TypeParam;
    eachOrder<T>([](int order, size_t n, const Spec<T>& spec, Exact bound) {
        const auto x = random<T>(n, 1 + static_cast<uint32_t>(order)), y = random<T>(n, 90);
        std::vector<T> sum(n), twice(n), negative(n);
        for (size_t i = 0; i < n; i++) {
            sum[i] = T(0.75) * x[i] - T(0.5) * y[i];
            twice[i] = 1024 * x[i];
            negative[i] = -x[i];
        }
        const auto fx = spectrum<T>(spec, x), fy = spectrum<T>(spec, y);
        EXPECT_LE(distance(spectrum<T>(spec, sum), [&](size_t k) { return 0.75L * fx[k] - 0.5L * fy[k]; }), bound);
        // A power of two and a sign round nothing.
        EXPECT_EQ(distance(spectrum<T>(spec, twice), [&](size_t k) { return 1024 * Exact(fx[k]); }), 0);
        EXPECT_EQ(distance(spectrum<T>(spec, negative), [&](size_t k) { return -Exact(fx[k]); }), 0);
    });
}

TYPED_TEST(TransformProperties, KeepsEnergy)
{
    using T = TypeParam;
    eachOrder<T>([](int order, size_t n, const Spec<T>& spec, Exact bound) {
        const auto x = random<T>(n, 7 + static_cast<uint32_t>(order));
        const auto f = spectrum<T>(spec, x);
        const Exact ends = Exact(f[0]) * f[0] + Exact(f[n]) * f[n]; // bins that stand for themselves alone
        EXPECT_LE(fabsl((2 * energy(f) - ends) / (Exact(n) * energy(x)) - 1), bound);
    });
}

TYPED_TEST(TransformProperties, ShiftIsAPhase)
{
    using T = TypeParam;
    eachOrder<T>([](int order, size_t n, const Spec<T>& spec, Exact bound) {
        const auto x = random<T>(n, 17 + static_cast<uint32_t>(order));
        const auto f = spectrum<T>(spec, x);
        for (size_t by : {size_t{1}, n / 2, n - 1, n * 5 / 13}) {
            std::vector<T> moved(n);
            for (size_t i = 0; i < n; i++)
                moved[(i + by) % n] = x[i];
            EXPECT_LE(distance(spectrum<T>(spec, moved),
                               [&](size_t at) {
                                   const size_t k = at / 2;
                                   const Exact angle = -kTurn * Exact(k * by % n) / Exact(n);
                                   const std::complex<Exact> bin(f[2 * k], f[2 * k + 1]);
                                   const auto turned = bin * std::polar(Exact(1), angle);
                                   return at % 2 ? turned.imag() : turned.real();
                               }),
                      bound);
        }
    });
}

// An impulse has a flat spectrum, a backward signal the conjugate one, and the sum of all bins is the first sample.
TYPED_TEST(TransformProperties, ImpulseAndReversal)
{
    using T = TypeParam;
    eachOrder<T>([](int order, size_t n, const Spec<T>& spec, Exact bound) {
        for (size_t at : {size_t{0}, n / 3, n - 1}) {
            std::vector<T> impulse(n);
            impulse[at] = 1;
            const auto f = spectrum<T>(spec, impulse);
            for (size_t k = 0; k <= n / 2; k++)
                ASSERT_LE(fabsl(std::abs(std::complex<Exact>(f[2 * k], f[2 * k + 1])) - 1), bound) << "bin " << k;
        }
        const auto x = random<T>(n, 27 + static_cast<uint32_t>(order));
        std::vector<T> backward(n);
        for (size_t i = 0; i < n; i++)
            backward[(n - i) % n] = x[i];
        const auto f = spectrum<T>(spec, x);
        EXPECT_LE(distance(spectrum<T>(spec, backward), [&](size_t k) { return k % 2 ? -Exact(f[k]) : Exact(f[k]); }),
                  bound);
        Exact sum = -Exact(f[0]) - f[n];
        for (size_t k = 0; k <= n / 2; k++)
            sum += 2 * Exact(f[2 * k]);
        EXPECT_LE(fabsl(sum / Exact(n) - x[0]), bound);
    });
}

// The spectrum of shorts in floats: energy to what rounding each part to half a unit may change.
TEST(FixedProperties, KeepsEnergy)
{
    slots::eachChosen([] {
        for (int order = 1; order <= 14; order++) {
            const size_t n = size_t{1} << order;
            std::vector<qvr16s> x = randomValues<qvr16s>(n, 5);
            for (qvr16s& v : x)
                v = static_cast<qvr16s>(v / 16); // so that no bin saturates
            const Spec16 spec(order, qvrFftDivBySqrtN, qvrHintNone);
            std::vector<qvr16s> f(n + 2);
            ASSERT_EQ(Morven_qvrsFFTFwd_RToCCS_16s_Sfs(x.data(), f.data(), spec, 0, nullptr), qvrOk);
            Exact sum = 2 * energy(f) - Exact(f[0]) * f[0] - Exact(f[n]) * f[n];
            EXPECT_LE(fabsl(sqrtl(sum) - sqrtl(energy(x))), 2 * sqrtl(Exact(n))) << "order " << order;
        }
    });
}

using Signal = std::vector<float>;

Signal conv(const Signal& a, const Signal& b)
{
    Signal y(a.size() + b.size() - 1);
    EXPECT_EQ(Morven_qvrsConv_32f(a.data(), static_cast<int>(a.size()), b.data(), static_cast<int>(b.size()), y.data()),
              qvrOk);
    return y;
}
Signal crossCorr(const Signal& a, const Signal& b, size_t count, int lowLag)
{
    Signal y(count);
    EXPECT_EQ(Morven_qvrsCrossCorr_32f(a.data(), static_cast<int>(a.size()), b.data(), static_cast<int>(b.size()),
                                       y.data(), static_cast<int>(count), lowLag),
              qvrOk);
    return y;
}
Exact total(const Signal& x)
{
    return std::accumulate(x.begin(), x.end(), Exact(0));
}

// Lengths of the direct sums, of one transform and of blocks.
TEST(ConvolutionProperties, Algebra)
{
    slots::eachChosen([] {
        for (const auto& [n, m] : {std::pair<size_t, size_t>{5, 3}, {70, 33}, {200, 150}, {700, 600}, {9000, 500}}) {
            SCOPED_TRACE(testing::Message() << n << " with " << m);
            const Signal a = random<float>(n, 3), b = random<float>(m, 4), c = random<float>(m, 5);
            const Signal ab = conv(a, b), ac = conv(a, c);
            const Exact bound = 0x1p-19L;
            EXPECT_LE(distance(conv(b, a), [&](size_t i) { return ab[i]; }), bound);
            Signal both(m), eight(m);
            for (size_t i = 0; i < m; i++)
                both[i] = b[i] + c[i], eight[i] = 8 * b[i];
            EXPECT_LE(distance(conv(a, both), [&](size_t i) { return Exact(ab[i]) + ac[i]; }), bound);
            EXPECT_EQ(distance(conv(a, eight), [&](size_t i) { return 8 * Exact(ab[i]); }), 0);
            EXPECT_NEAR(static_cast<double>(total(ab)), static_cast<double>(total(a) * total(b)), 1e-2);
            for (size_t at : {size_t{0}, m / 2, m - 1}) {
                Signal impulse(m);
                impulse[at] = 1;
                EXPECT_LE(
                    distance(conv(a, impulse), [&](size_t i) { return i >= at && i - at < n ? Exact(a[i - at]) : 0; }),
                    bound);
            }
        }
    });
}

// r[lag] = sum of a[i] b[i + lag]: convolution with a backward source, mirrored when the sources change places, and
// greatest, and the energy, where a signal meets itself.
TEST(CorrelationProperties, MirrorsAndConvolves)
{
    slots::eachChosen([] {
        for (const auto& [n, m] : {std::pair<size_t, size_t>{5, 3}, {70, 90}, {300, 200}, {1500, 1300}, {9000, 500}}) {
            SCOPED_TRACE(testing::Message() << n << " with " << m);
            const Signal a = random<float>(n, 13), b = random<float>(m, 14);
            const Signal ab = crossCorr(a, b, n + m - 1, 1 - static_cast<int>(n));
            const Signal ba = crossCorr(b, a, n + m - 1, 1 - static_cast<int>(m));
            EXPECT_LE(distance(ab, [&](size_t i) { return ba[n + m - 2 - i]; }), 0x1p-19L);
            const Signal folded = conv(Signal(a.rbegin(), a.rend()), b);
            EXPECT_LE(distance(ab, [&](size_t i) { return folded[i]; }), 0x1p-19L);
            const Signal same = crossCorr(a, a, n, 0);
            Signal own(n);
            ASSERT_EQ(Morven_qvrsAutoCorr_32f(a.data(), static_cast<int>(n), own.data(), static_cast<int>(n)), qvrOk);
            EXPECT_LE(distance(own, [&](size_t i) { return same[i]; }), 0x1p-19L);
            EXPECT_LE(fabsl(own[0] / energy(a) - 1), 0x1p-19L);
            for (size_t i = 1; i < n; i++)
                ASSERT_LT(std::fabs(own[i]), own[0]) << "lag " << i;
        }
    });
}

// The analytic signal carries the source, turns by a quarter each time it is taken of the quadrature, and moves along
// with a circular shift.
TEST(HilbertProperties, TwiceIsTheNegative)
{
    slots::eachChosen([] {
        for (int n : {5, 8, 12, 100, 101, 256, 441, 1024, 4096}) {
            SCOPED_TRACE(testing::Message() << "length " << n);
            const size_t size = static_cast<size_t>(n);
            const Hilbert state(n, qvrHintNone);
            Signal x = random<float>(size, 23);
            // Without what the transform takes to zero: the mean, and the alternating part of even lengths.
            Exact mean = 0, alternating = 0;
            for (size_t i = 0; i < size; i++)
                mean += x[i], alternating += i % 2 ? -x[i] : x[i];
            for (size_t i = 0; i < size; i++)
                x[i] -= static_cast<float>((mean + (n % 2 ? 0 : i % 2 ? -alternating : alternating)) / n);
            const auto quadrature = [&](const Signal& from) {
                std::vector<qvr32fc> z(size);
                EXPECT_EQ(Morven_qvrsHilbert_32f32fc(from.data(), z.data(), state), qvrOk);
                Signal re(size), im(size);
                for (size_t i = 0; i < size; i++)
                    re[i] = z[i].re, im[i] = z[i].im;
                EXPECT_LE(distance(re, [&](size_t i) { return from[i]; }), 0x1p-20L);
                return im;
            };
            const Signal h = quadrature(x);
            EXPECT_LE(fabsl(energy(h) / energy(x) - 1), 0x1p-19L);
            EXPECT_LE(distance(quadrature(h), [&](size_t i) { return -x[i]; }), 0x1p-19L);
            Signal moved(size);
            for (size_t i = 0; i < size; i++)
                moved[(i + 3) % size] = x[i];
            EXPECT_LE(distance(quadrature(moved), [&](size_t i) { return h[(i + size - 3) % size]; }), 0x1p-19L);
        }
    });
}

} // namespace
