#include "model/vector.h"
#include "support/elementwise.h"
#include "vector/slot_tables.h"

namespace {

using C = qvr64fc;

bool same(C a, C b)
{
    return sameValue(a.re, b.re) && sameValue(a.im, b.im);
}

std::vector<C> complexes(const std::vector<double>& flat)
{
    std::vector<C> v(flat.size() / 2);
    memcpy(v.data(), flat.data(), v.size() * sizeof(C));
    return v;
}

const auto product = element(model::qvrsMul_64fc);

TEST(Complex, Mul)
{
    slots::each(qvrTable_qvrsMul_64fc, [&](auto f, int) {
        for (int n = 1; n <= 140; n++) {
            for (size_t offset : {0, 1, 8, 16, 24, 40}) {
                const std::vector<C> x = complexes(mixedValues<double>(2 * n, n)),
                                     y = complexes(mixedValues<double>(2 * n, n + 500));
                // Separate arrays, then the destination is the first factor, then the second, then both factors are
                // one.
                for (int alias = -1; alias < 2; alias++) {
                    const size_t bytes = n * sizeof(C);
                    Guarded &bx = pooledGuarded(1, bytes + 64), &by = pooledGuarded(2, bytes + 64),
                            &bd = pooledGuarded(3, bytes + 64);
                    C *px = bx.atEnd<C>(bytes, offset), *py = by.atEnd<C>(bytes, 48 - offset),
                      *pd = bd.atFront<C>(bytes, offset);
                    memcpy(static_cast<void*>(px), x.data(), bytes);
                    memcpy(static_cast<void*>(py), y.data(), bytes);
                    C* out = alias == 0 ? px : alias == 1 ? py : pd;
                    ASSERT_EQ(f(px, py, out, n), qvrOk);
                    EXPECT_TRUE(bx.intact() && by.intact() && bd.intact());
                    for (int i = 0; i < n; i++) {
                        C got;
                        memcpy(&got, reinterpret_cast<char*>(out) + i * sizeof(C), sizeof got);
                        ASSERT_TRUE(same(got, product(x[i], y[i]))) << n << " element " << i << " alias " << alias;
                    }
                }
            }
        }
    });
}

TEST(Complex, MulStatuses)
{
    slots::each(qvrTable_qvrsMul_64fc, [&](auto f, int) {
        const C x[2] = {{1, 2}, {3, 4}};
        Guarded dst(32);
        checkPointersThenLengthOrder(3, [&](int null, int len) {
            C* d = dst.atEnd<C>(32);
            const qvrStatus s = f(null == 0 ? nullptr : x, null == 1 ? nullptr : x, null == 2 ? nullptr : d, len);
            EXPECT_TRUE(dst.untouched());
            return s;
        });
    });
}

// The formula as it stands: an infinite factor gives NaN where inf - inf arises, and nothing puts it right.
TEST(Complex, MulDoesNotRepairInfinities)
{
    slots::each(qvrTable_qvrsMul_64fc, [&](auto f, int) {
        for (int n : {1, 2, 3, 8}) {
            const std::vector<C> x(n, {INFINITY, INFINITY}), y(n, {1, 1});
            std::vector<C> d(n);
            f(x.data(), y.data(), d.data(), n);
            for (const C& z : d) {
                EXPECT_TRUE(std::isnan(z.re));
                EXPECT_EQ(z.im, INFINITY);
            }
        }
    });
}

// Two rounded products and their difference: a fused form would leave the rounding error of one product.
TEST(Complex, MulRoundsEachProduct)
{
    slots::each(qvrTable_qvrsMul_64fc, [&](auto f, int) {
        const double a = 1 + 0x1p-30;
        for (int n : {1, 2, 3, 9}) {
            const std::vector<C> x(n, {a, a}), y(n, {a, a});
            std::vector<C> d(n);
            f(x.data(), y.data(), d.data(), n);
            for (const C& z : d)
                EXPECT_EQ(z.re, 0.0);
        }
    });
}

} // namespace
