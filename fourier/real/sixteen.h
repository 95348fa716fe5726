// The real transform of sixteen values, each way, as products of small matrices: every value on the input side is
// broadcast and multiplies a row of constants, so there are neither turns nor transpositions.
//
// With n = 4a + b and k = q + 4d, q = 0 .. 3. Forward: transforms of four over a, whose results for q = 0 and 2 are
// real and for q = 1 a pair, then X[k] = sum over b of Y_q[b] exp(-2 pi i k b / 16). The bins of q = 3 are those of
// q = 1 conjugated. Inverse: the same backwards; x is real, so each bin counts as twice its real part.
#ifndef QVR_FOURIER_SIXTEEN_H
#define QVR_FOURIER_SIXTEEN_H

#include "fourier/lanes.h"
#include "fourier/sines.h"

namespace {

template<class T> struct SixteenTables {
    // Forward, by b: rows of four for q = 0 and 2, rows of eight for the two parts of q = 1.
    alignas(64) T real0[4][4], real2[4][4], even1[4][8], odd1[4][8];
    // Inverse: rows over b for X[0], X[8], the parts of X[4], of X[2] and X[6], and of X[1], X[5], X[3], X[7].
    alignas(64) T zero[4][4], two[4][4], one[8][8];
};

template<class T> constexpr SixteenTables<T> makeSixteenTables()
{
    SixteenTables<T> t{};
    const auto c = [](int k) { return static_cast<T>(constantCosine(k, 16)); };
    const auto s = [](int k) { return static_cast<T>(constantSine(k, 16)); };
    for (int b = 0; b < 4; b++) {
        t.real0[b][0] = 1;
        t.real0[b][1] = b % 2 != 0 ? T(-1) : T(1);
        t.real0[b][2] = c(4 * b);
        t.real0[b][3] = -s(4 * b);
        constexpr int bins2[] = {2, 6};
        for (int i = 0; i < 2; i++) {
            t.real2[b][2 * i] = c(bins2[i] * b);
            t.real2[b][2 * i + 1] = -s(bins2[i] * b);
        }
        // Y_1 = even - i odd. X[3] and X[7] are bins 13 and 9 conjugated.
        constexpr int bins1[] = {1, 5, 13, 9};
        for (int i = 0; i < 4; i++) {
            const int k = bins1[i] * b;
            const T sign = i < 2 ? T(1) : T(-1);
            t.even1[b][2 * i] = c(k);
            t.even1[b][2 * i + 1] = -sign * s(k);
            t.odd1[b][2 * i] = -s(k);
            t.odd1[b][2 * i + 1] = -sign * c(k);
            // The real part for a = 0, minus the imaginary part for a = 1.
            t.one[2 * i][b] = 2 * c(k);
            t.one[2 * i][4 + b] = -2 * s(k);
            t.one[2 * i + 1][b] = -2 * sign * s(k);
            t.one[2 * i + 1][4 + b] = -2 * sign * c(k);
        }
        t.zero[0][b] = 1;
        t.zero[1][b] = b % 2 != 0 ? T(-1) : T(1);
        t.zero[2][b] = 2 * c(4 * b);
        t.zero[3][b] = -2 * s(4 * b);
        for (int i = 0; i < 2; i++) {
            t.two[2 * i][b] = 2 * c(bins2[i] * b);
            t.two[2 * i + 1][b] = -2 * s(bins2[i] * b);
        }
    }
    return t;
}
template<class T> constexpr SixteenTables<T> kSixteen = makeSixteenTables<T>();

// Sum of x[0] row[0] .. x[3] row[3].
template<class V> QVR_INLINE V rowSum(const Elem<V>* x, const Elem<V> (*row)[lanes<V>])
{
    const auto term = [&](int i) { return splat<V>(get(x, i)); };
    const V a = fma(term(1), load<V>(row[1]), term(0) * load<V>(row[0]));
    const V b = fma(term(3), load<V>(row[3]), term(2) * load<V>(row[2]));
    return a + b;
}

// To the packed spectrum.
template<class T> QVR_INLINE void sixteenForward(const T* src, T* dst, T factor, bool scale)
{
    using V = Vec<T, 4>;
    using W = Vec<T, 8>;
    constexpr const SixteenTables<T>& t = kSixteen<T>;
    const V v0 = load<V>(src), v1 = load<V>(src + 4), v2 = load<V>(src + 8), v3 = load<V>(src + 12);
    const V s0 = v0 + v2, s1 = v1 + v3;
    alignas(32) T y[16];
    store(y, s0 + s1);
    store(y + 4, s0 - s1);
    store(y + 8, v0 - v2);
    store(y + 12, v1 - v3);
    V z0 = rowSum<V>(y, t.real0), z2 = rowSum<V>(y + 4, t.real2);
    W z1 = rowSum<W>(y + 8, t.even1) + rowSum<W>(y + 12, t.odd1);
    if (scale) {
        z0 *= splat<V>(factor);
        z2 *= splat<V>(factor);
        z1 *= splat<W>(factor);
    }
    store(dst, concat(lo(z0), lo(lo(z1))));
    store(dst + 4, concat(lo(z2), lo(hi(z1))));
    store(dst + 8, concat(hi(z0), hi(lo(z1))));
    store(dst + 12, concat(hi(z2), hi(hi(z1))));
}

// The bins k at p[2k] and X[8] at p[lastAt] to the values. Everything is loaded before anything is stored.
template<class T> QVR_INLINE void sixteenInverse(const T* p, Index lastAt, T* dst, T factor, bool scale)
{
    using V = Vec<T, 4>;
    using W = Vec<T, 8>;
    constexpr const SixteenTables<T>& t = kSixteen<T>;
    const auto term = [&](Index i, const V row) { return splat<V>(get(p, i)) * row; };
    const auto add = [&](V sum, Index i, const V row) { return fma(splat<V>(get(p, i)), row, sum); };
    const auto addWide = [&](W sum, Index i, const W row) { return fma(splat<W>(get(p, i)), row, sum); };
    const V g0 = add(add(term(0, load<V>(t.zero[0])), lastAt, load<V>(t.zero[1])), 8, load<V>(t.zero[2]));
    const V zero = add(g0, 9, load<V>(t.zero[3]));
    const V g2 = add(add(term(4, load<V>(t.two[0])), 5, load<V>(t.two[1])), 12, load<V>(t.two[2]));
    const V two = add(g2, 13, load<V>(t.two[3]));
    const W a =
        addWide(addWide(addWide(splat<W>(get(p, 2)) * load<W>(t.one[0]), 3, load<W>(t.one[1])), 10, load<W>(t.one[2])),
                11, load<W>(t.one[3]));
    const W b =
        addWide(addWide(addWide(splat<W>(get(p, 6)) * load<W>(t.one[4]), 7, load<W>(t.one[5])), 14, load<W>(t.one[6])),
                15, load<W>(t.one[7]));
    W even = concat(zero + two, zero - two), odd = a + b;
    if (scale) {
        even *= splat<W>(factor);
        odd *= splat<W>(factor);
    }
    store(dst, even + odd);
    store(dst + 8, even - odd);
}

} // namespace

#endif
