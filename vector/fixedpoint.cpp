// Saturating integer arithmetic, with division by a power of two where there is a scale factor.
//
// A 16-bit sum has 17 bits. Divided by 2^s it never needs them all at once: the sum is taken as its floor after one or
// two halvings, which fits the lane with room to spare, and a sticky bit that tells whether the bits below were zero.
// Rounding half to even is then, with h = 2^(s-1) and L the bit of the floor that becomes the result's lowest,
//     (floor + h - 1 + (L | sticky)) >> s.
// Signed lanes from SSSE3 on take the sum halved to odd (the floor of its half, with the bit below or-ed into the
// lowest one), which still tells ties from all else, and the product that rounds. Multiplied by 2^k, the sum may
// saturate first: what does not fit 16 bits before does not after.
#include "vector/functions.h"
#include "vector/halfwords.h"
#include "vector/loops.h"
#include "vector/narrow.h"

namespace {

// The greatest integer not above (a + b) / 2.
template<class V> QVR_INLINE V floorHalf(V a, V b)
{
    return (a & b) + shiftRight(a ^ b, 1);
}

// x * 2^k for k from 1 to 15, saturated.
template<class V> QVR_INLINE V scaleUp(V x, int k)
{
    using T = Elem<V>;
    constexpr T largest = static_cast<T>(-1) < 0 ? 0x7FFF : static_cast<T>(0xFFFF);
    const V limit = splat<V>(static_cast<T>(largest >> k));
    if constexpr (static_cast<T>(-1) < 0) {
        const V least = splat<V>(static_cast<T>(-(0x8000 >> k)));
        return x > limit ? splat<V>(largest) : shiftLeft(max(x, least), k);
    } else {
        return shiftLeft(x, k) | bitcast<V>(x > limit);
    }
}

// x * 2^16 and more, saturated.
template<class V> QVR_INLINE V scaleToLimit(V x)
{
    if constexpr (static_cast<Elem<V>>(-1) < 0)
        return ((x > 0) & 0x7FFF) | ((x < 0) & -0x8000);
    else
        return bitcast<V>(x != 0);
}

// x / 2^shift, half to even, for shift from 1 to 15 and signed lanes. The product rounds half up; it takes x lowered by
// one where the bit that becomes the result's lowest is 0, which brings a tie below the half and moves nothing else to
// another result. -2^15 has no tie, so it may stay as it is.
template<class V> QVR_INLINE V halfEvenByProduct(V x, int shift)
{
    const V lowest = splat<V>(static_cast<int16_t>(1 << shift)),
            factor = splat<V>(static_cast<int16_t>(1 << (15 - shift)));
    return mulRounded(addSaturate(x, (x & lowest) == V{}), factor);
}

constexpr int kLargestUpShift = 15;

// Runs a + b scaled by 2^-s over arrays: run(op) maps op(a, b). There is a result other than zero.
template<class Run> QVR_INLINE void scaledSum(int s, const Run& run)
{
    if (s == 0) {
        run([](auto a, auto b) { return addSaturate(a, b); });
    } else if (s == 1) {
        run([](auto a, auto b) {
            const auto half = floorHalf(a, b);
            return half + ((a ^ b) & half & 1);
        });
    } else if (s == 2) {
        run([](auto a, auto b) {
            const auto half = floorHalf(a, b), quarter = shiftRight(half, 1);
            return quarter + (half & ((a ^ b) | quarter) & 1);
        });
    } else if (s > 0) {
        run([s](auto a, auto b) {
            const auto half = floorHalf(a, b);
            // With the bit that was halved away kept in the lowest one, ties stay ties and nothing else becomes one.
            if constexpr (kSsse3 && static_cast<Elem<decltype(a)>>(-1) < 0)
                return halfEvenByProduct(half | ((a ^ b) & 1), s - 1);
            return halfEven(shiftRight(half, 1), half | (a ^ b), s - 2);
        });
    } else if (s >= -kLargestUpShift) {
        run([k = -s](auto a, auto b) { return scaleUp(addSaturate(a, b), k); });
    } else {
        run([](auto a, auto b) { return scaleToLimit(addSaturate(a, b)); });
    }
}

// The same for x - val, zero where that is negative.
QVR_INLINE void scaledDifference(int s, qvr16u* p, int len, qvr16u val)
{
    const auto run = [=](auto op) {
        mapElements(p, len, [=](auto x) { return op(subSaturate(x, splat<decltype(x)>(val))); }, p);
    };
    if (s == 0) {
        run([](auto x) { return x; });
    } else if (s == 1) {
        run([](auto x) {
            const auto half = shiftRight(x, 1);
            return half + (x & half & 1);
        });
    } else if (s > 0) {
        run([s](auto x) { return halfEven(shiftRight(x, 1), x, s - 1); });
    } else if (s >= -kLargestUpShift) {
        run([k = -s](auto x) { return scaleUp(x, k); });
    } else {
        run([](auto x) { return scaleToLimit(x); });
    }
}

// Above these scale factors no bit is left: the largest magnitude is less than half of 2^s, or exactly half.
constexpr int kLargestScaleSigned = 16;
constexpr int kLargestScaleUnsigned = 17;
constexpr int kLargestScaleDifference = 16;

} // namespace

extern "C" {

qvrStatus SLOT(qvrsAdd_16s_Sfs)(const qvr16s* pSrc1, const qvr16s* pSrc2, qvr16s* pDst, int len, int scaleFactor)
{
    if (const qvrStatus status = checkPointersThenLength(len, pSrc1, pSrc2, pDst))
        return status;
    if (scaleFactor > kLargestScaleSigned)
        return SLOT(ownZero_16u)(reinterpret_cast<qvr16u*>(pDst), len);
    scaledSum(scaleFactor, [=](auto op) { mapElements(pDst, len, op, pSrc1, pSrc2); });
    return qvrOk;
}

qvrStatus SLOT(qvrsAdd_16u_ISfs)(const qvr16u* pSrc, qvr16u* pSrcDst, int len, int scaleFactor)
{
    if (const qvrStatus status = checkPointersThenLength(len, pSrc, pSrcDst))
        return status;
    if (scaleFactor > kLargestScaleUnsigned)
        return SLOT(ownZero_16u)(pSrcDst, len);
    scaledSum(scaleFactor, [=](auto op) { mapElements(pSrcDst, len, op, pSrc, pSrcDst); });
    return qvrOk;
}

qvrStatus SLOT(qvrsAddC_16u_ISfs)(qvr16u val, qvr16u* pSrcDst, int len, int scaleFactor)
{
    if (const qvrStatus status = checkPointersThenLength(len, pSrcDst))
        return status;
    if (scaleFactor > kLargestScaleUnsigned)
        return SLOT(ownZero_16u)(pSrcDst, len);
    if (scaleFactor < -kLargestUpShift && val != 0)
        return SLOT(ownSet_16u)(0xFFFF, pSrcDst, len);
    if (scaleFactor == 0 && val == 0)
        return qvrOk;
    scaledSum(scaleFactor, [=](auto op) {
        mapElements(pSrcDst, len, [=](auto x) { return op(x, splat<decltype(x)>(val)); }, pSrcDst);
    });
    return qvrOk;
}

qvrStatus SLOT(qvrsSubC_16u_ISfs)(qvr16u val, qvr16u* pSrcDst, int len, int scaleFactor)
{
    if (const qvrStatus status = checkPointersThenLength(len, pSrcDst))
        return status;
    if (scaleFactor > kLargestScaleDifference)
        return SLOT(ownZero_16u)(pSrcDst, len);
    if (scaleFactor == 0 && val == 0)
        return qvrOk;
    scaledDifference(scaleFactor, pSrcDst, len, val);
    return qvrOk;
}

qvrStatus SLOT(qvrsAdd_16s_I)(const qvr16s* pSrc, qvr16s* pSrcDst, int len)
{
    return binary(pSrc, pSrcDst, pSrcDst, len, [](auto a, auto b) { return addSaturate(a, b); });
}

qvrStatus SLOT(qvrsSubC_16s_I)(qvr16s val, qvr16s* pSrcDst, int len)
{
    if (const qvrStatus status = checkPointersThenLength(len, pSrcDst); status != qvrOk || val == 0)
        return status;
    mapElements(pSrcDst, len, [=](auto x) { return subSaturate(x, splat<decltype(x)>(val)); }, pSrcDst);
    return qvrOk;
}

qvrStatus SLOT(qvrsMulC_16s_I)(qvr16s val, qvr16s* pSrcDst, int len)
{
    if (const qvrStatus status = checkPointersThenLength(len, pSrcDst); status != qvrOk || val == 1)
        return status;
    if (val == 0)
        return SLOT(ownZero_16u)(reinterpret_cast<qvr16u*>(pSrcDst), len);
    mapElements(pSrcDst, len, [=](auto x) { return mulSaturate(x, splat<decltype(x)>(val)); }, pSrcDst);
    return qvrOk;
}

// The magnitude of -2^31 wraps to 2^31, the only one with bit 31; one less is the limit.
qvrStatus SLOT(qvrsAbs_32s_I)(qvr32s* pSrcDst, int len)
{
    return unary(pSrcDst, pSrcDst, len, [](auto x) {
        using V = decltype(x);
        const Bits<V> sign = bits(x >> 31), magnitude = (bits(x) ^ sign) - sign;
        return bitcast<V>(magnitude - (magnitude >> 31));
    });
}

} // extern "C"
