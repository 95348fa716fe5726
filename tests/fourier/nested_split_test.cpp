// Transforms so long that their rows are split again, once each: two impulses, whose spectrum is known at every bin.
#include <cmath>

#include "fourier/fft_slots.h"

namespace {

using namespace fft;

template<class T> void checkImpulses(int slot, int order, double bound)
{
    const int64_t n = int64_t{1} << order, places[2] = {n / 3, n - 12345};
    const Object<T> object(slot, order, qvrFftDivInvByN);
    std::vector<T> x(static_cast<size_t>(n) + 2);
    x[static_cast<size_t>(places[0])] = 1;
    x[static_cast<size_t>(places[1])] = 0.5;
    ASSERT_EQ(Functions<T>::forward[slot](x.data(), x.data(), object, nullptr), qvrOk);
    // exp(-2 pi i k p / n): neighbours, strides of all powers of two, and bins all over.
    const auto check = [&](int64_t k) {
        double re = 0, im = 0;
        for (int i = 0; i < 2; i++) {
            const double turn = static_cast<double>(k * places[i] % n) / static_cast<double>(n);
            re += std::cos(2 * M_PI * turn) / (i + 1);
            im -= std::sin(2 * M_PI * turn) / (i + 1);
        }
        ASSERT_NEAR(x[static_cast<size_t>(2 * k)], re, bound) << "order " << order << ", bin " << k;
        ASSERT_NEAR(x[static_cast<size_t>(2 * k + 1)], im, bound) << "order " << order << ", bin " << k;
    };
    for (int64_t k = 0; k < 4096; k++)
        check(k);
    for (int64_t k = 1; k <= n / 2; k *= 2)
        check(k);
    for (int64_t k = 0; k <= n / 2; k += n / 400001)
        check(k);
    ASSERT_EQ(Functions<T>::inverse[slot](x.data(), x.data(), object, nullptr), qvrOk);
    EXPECT_NEAR(x[static_cast<size_t>(places[0])], 1, bound);
    EXPECT_NEAR(x[static_cast<size_t>(places[1])], 0.5, bound);
    for (int64_t i = 0; i < n; i++)
        if (i != places[0] && i != places[1])
            ASSERT_LE(std::fabs(x[static_cast<size_t>(i)]), bound) << "order " << order << ", sample " << i;
}

TEST(NestedSplit, Impulses)
{
    if (slots::canRun(0))
        for (int order : {22, 23, 24})
            checkImpulses<float>(0, order, 2e-6);
    if (slots::canRun(3))
        checkImpulses<double>(3, 24, 2e-14);
    if (slots::canRun(6))
        checkImpulses<float>(6, 28, 2e-6);
}

} // namespace
