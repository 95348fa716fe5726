// The quarter of the circle that every twiddle of a transform is read from.
//
// Point k of base b is exp(-2 pi i k / 2^b), the pair (cos, -sin). A table has the points k = 0 .. 2^b/4 - 1, and
// behind them as many as a vector of strided points reaches that begins among them, so a run of angles changes its
// quadrant between vectors only. Up to kConstantBase it is a constant; above, initialisation makes one of the complex
// order, each half octant from the function that is accurate there: sin below 1/8 turn, cos above. A twiddle of a
// shorter transform reads it with a stride, so all twiddles of one angle agree to the bit.
#ifndef QVR_FOURIER_QUARTER_H
#define QVR_FOURIER_QUARTER_H

#include "fourier/lanes.h"
#include "fourier/sines.h"

namespace {

constexpr double kTwoPi = 6.283185307179586;

// The constant table of a base.
template<class T> inline const T* constantQuarter(int base)
{
    if constexpr (sizeof(T) == 4)
        return qvrQuarterPoints_32f.pairs + 2 * quarterStart(base);
    else
        return qvrQuarterPoints_64f.pairs + 2 * quarterStart(base);
}

// Points behind the quarter in a table that initialisation makes, and all of its points. Strides of up to seven points
// of base kConstantBase + 1 read it.
template<class T> constexpr Index pointsPast(int base)
{
    return Index{7 * (kLanes<T> - 1)} << (base - kConstantBase - 1);
}
template<class T> constexpr Index quarterEntries(int base)
{
    return (Index{1} << base) / 4 + pointsPast<T>(base);
}

template<class T, class V, int... I> QVR_INLINE void storePoints(T* out, Index step, V pairs, Indices<I...>)
{
    (store(out + I * step, slice<2 * I, 2>(pairs)), ...);
}
// Points offset, offset + stride, ... of the first eighth of the circle to their places in `out`, of a base above
// kConstantBase.
template<class T> __attribute__((noinline)) void computePoints(T* out, int base, Index offset, Index stride, Index end)
{
    using V = Full<double>;
    constexpr int W = lanes<V>;
    const double h = kTwoPi / static_cast<double>(Index{1} << base);
    const V lane = convert<double>(iota<Vec<int32_t, W>>()) * static_cast<double>(stride);
    for (Index k = offset; k < end; k += W * stride) {
        const V angle = (static_cast<double>(k) + lane) * h;
        const auto c = convert<T>(cosineWithinEighth(angle)), m = -convert<T>(sineWithinEighth(angle));
        storePoints(out + 2 * k, 2 * stride, concat(zipLo(c, m), zipHi(c, m)), Iota<W>{});
    }
}
// The second eighth: sine and cosine exchanged, in falling order.
template<class T> void mirrorPoints(T* out, int base)
{
    using V = Full<T>;
    constexpr Index P = kLanes<T> / 2;
    T* const end = out + (Index{2} << base) / 4;
    for (Index k = P; k < (Index{1} << base) / 8; k += P)
        store(end - 2 * (k + P - 1), -reversedLanes(load<V>(out + 2 * k)));
    for (Index k = 1; k < P; k++)
        store(end - 2 * k, -exchanged(load<Vec<T, 2>>(out + 2 * k)));
}
// What the constant tables hold too.
template<class T> void copyConstants(T* out, int base, Index end)
{
    const T* constant = constantQuarter<T>(kConstantBase);
    for (Index k = 0; k < end; k += Index{1} << (base - kConstantBase), constant += 2)
        store(out + 2 * k, load<Vec<T, 2>>(constant));
}
template<class T> void fillQuarter(T* out, int base)
{
    using V = Vec<T, 2>;
    const Index quarter = (Index{1} << base) / 4;
    computePoints(out, base, 0, 1, quarter / 2);
    mirrorPoints(out, base);
    copyConstants(out, base, quarter);
    for (Index k = 0; k < pointsPast<T>(base); k++)
        store(out + 2 * (quarter + k), exchanged(load<V>(out + 2 * k)) * V{1, -1});
}

// In quadrant q of the circle a point is c kCosSign[q] and m kSineSign[q], in this order where q is even, with (c, m)
// the point without the quadrants.
template<class T> constexpr T kCosSign[4] = {1, -1, -1, 1};
template<class T> constexpr T kSineSign[4] = {1, 1, -1, -1};

// Point k of one order stands at p[2 k stride].
template<class T> struct Points {
    const T* p;
    Index stride;
};

template<class T> struct Quarter {
    const T* made; // of order `base`; null while constants do
    int base;

    Points<T> points(int order) const
    {
        if (order <= kConstantBase)
            return {constantQuarter<T>(order), 1};
        return {made, Index{1} << (base - order)};
    }
};

} // namespace

#endif
