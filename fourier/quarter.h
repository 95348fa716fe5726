// The quarter wave of sines that every twiddle of a transform is read from.
//
// s[k] = sin(2 pi k / 2^base), k = 0 .. 2^base / 4. Up to kConstantBase it is a constant; above, initialisation makes
// one of base `order`, each half octant from the function that is accurate there: sin below 1/8 turn, cos above. A
// twiddle of a shorter transform reads it with a stride, so all twiddles of one angle agree to the bit.
#ifndef QVR_FOURIER_QUARTER_H
#define QVR_FOURIER_QUARTER_H

#include "fourier/sines.h"
#include "frame/simd.h"

namespace {

constexpr double kTwoPi = 6.283185307179586;

// The constant table of a base.
template<class T> inline const T* constantQuarter(int base)
{
    if constexpr (sizeof(T) == 4)
        return qvrQuarterWaves_32f.s + waveStart(base);
    else
        return qvrQuarterWaves_64f.s + waveStart(base);
}

// Entries of a table that initialisation makes.
constexpr int64_t quarterEntries(int order)
{
    return (int64_t{1} << order) / 4 + 1;
}

// For an order above kConstantBase.
template<class T> void fillQuarter(T* s, int order)
{
    using V = Full<double>;
    using One = Vec<double, 1>;
    const int64_t n = int64_t{1} << order, eighth = n / 8 + 1, quarter = n / 4 + 1;
    const double h = kTwoPi / static_cast<double>(n);
    const auto sines = [&]<class D>(D lane, int64_t k) {
        store(s + k, convert<T>(sineWithinEighth((static_cast<double>(k) + lane) * h)));
    };
    const auto cosines = [&]<class D>(D lane, int64_t k) {
        store(s + k, convert<T>(cosineWithinEighth((static_cast<double>(n / 4 - k) - lane) * h)));
    };
    const V lane = convert<double>(iota<Vec<int32_t, lanes<V>>>());
    int64_t k = 0;
    for (; k + lanes<V> <= eighth; k += lanes<V>)
        sines(lane, k);
    for (; k < eighth; k++)
        sines(One{}, k);
    for (; k + lanes<V> <= quarter; k += lanes<V>)
        cosines(lane, k);
    for (; k < quarter; k++)
        cosines(One{}, k);
    // What the constant tables hold too.
    const T* constant = constantQuarter<T>(kConstantBase);
    for (k = 0; k < quarter; k += int64_t{1} << (order - kConstantBase))
        s[k] = *constant++;
}

// In quadrant q of the circle, cos t and -sin t are s[r] kUpSign[q] and s[N/4 - r] kDownSign[q], in this order where q
// is odd; r is k without the quadrants.
template<class T> constexpr T kUpSign[4] = {-1, -1, 1, 1};
template<class T> constexpr T kDownSign[4] = {1, -1, -1, 1};

template<class T> struct Twiddle {
    T re, im; // cos t, -sin t: the forward sign
};

// Entry k of the table of one order stands at s[k * stride].
template<class T> struct Wave {
    const T* s;
    int64_t stride;
};

template<class T> struct Quarter {
    const T* s; // made for order `base`; null while constants do
    int base;

    Wave<T> wave(int order) const
    {
        if (order <= kConstantBase)
            return {constantQuarter<T>(order), 1};
        return {s, int64_t{1} << (base - order)};
    }
    // exp(-2 pi i k / 2^order).
    Twiddle<T> at(int64_t k, int order) const
    {
        const Wave<T> w = wave(order);
        const int64_t turn = int64_t{1} << (order - 2), p = k & (4 * turn - 1), r = p & (turn - 1);
        const int quadrant = static_cast<int>(p >> (order - 2));
        const T up = w.s[r * w.stride] * kUpSign<T>[quadrant],
                down = w.s[(turn - r) * w.stride] * kDownSign<T>[quadrant];
        return (quadrant & 1) != 0 ? Twiddle<T>{up, down} : Twiddle<T>{down, up};
    }
};

} // namespace

#endif
