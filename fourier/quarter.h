// The quarter wave of sines that every twiddle of a transform is read from.
//
// s[k] = sin(2 pi k / 2^base), k = 0 .. 2^base / 4. Up to order 10 it is a constant of base 10; above, initialisation
// makes one of base `order`, each half octant from the function that is accurate there: sin below 1/8 turn, cos above.
// A twiddle of a shorter transform reads it with a stride, so all twiddles of one angle agree to the bit.
#ifndef QVR_FOURIER_QUARTER_H
#define QVR_FOURIER_QUARTER_H

#include "fourier/sines.h"
#include "frame/simd.h"

namespace {

constexpr double kTwoPi = 6.283185307179586;

template<class T> inline const T* constantQuarter()
{
    if constexpr (sizeof(T) == 4)
        return qvrQuarterWave_32f;
    else
        return qvrQuarterWave_64f;
}

// Entries of a table made for an order above kConstantBase.
constexpr int64_t quarterEntries(int order)
{
    return (int64_t{1} << order) / 4 + 1;
}

template<class T> inline void fillQuarter(T* s, int order)
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
}

template<class T> struct Twiddle {
    T re, im; // cos t, -sin t: the forward sign
};

template<class T> struct Quarter {
    const T* s;
    int base;

    // exp(-2 pi i k / 2^order), order <= base, by quadrant.
    Twiddle<T> at(int64_t k, int order) const
    {
        const int64_t quarter = int64_t{1} << (base - 2);
        const int64_t p = (k << (base - order)) & (4 * quarter - 1), r = p & (quarter - 1);
        const T sine = s[r], cosine = s[quarter - r];
        switch (p / quarter) {
        case 0:
            return {cosine, -sine};
        case 1:
            return {-sine, -cosine};
        case 2:
            return {-cosine, sine};
        default:
            return {sine, cosine};
        }
    }
};

} // namespace

#endif
