// A constant added in place, with a scale factor.
//
// With t = p + c and s the factor: rounded to nearest, ties to even, (t + 2^(s-1) - 1 + ((t >> s) & 1)) >> s above
// zero, min(t << -s, largest) below. From where on no sum reaches a half, the image is cleared; from where on every sum
// of 1 passes the largest, all but zeros become the largest.
//
// 16-bit lanes hold everything: sums of bytes as they are, and of 16-bit pixels by saturation (a left shift saturates
// whatever the sum has) or in halves of 32 bits.
#include "frame/region.h"
#include "image/functions.h"
#include "image/rows.h"
#include "vector/halfwords.h"
#include "vector/shared.h"

namespace {

// From this factor on the result is 0; below this one it is the largest value or zero.
template<class T> constexpr int kZeroFrom = sizeof(T) == 1 ? 10 : 18;
template<class T> constexpr int kFullBelow = sizeof(T) == 1 ? -7 : -15;

// From this width + height on scaled-down images use threads.
constexpr int64_t kThreadsFrom = 256;

enum class Case { plain, half, down, up, full };

template<class V> QVR_INLINE V roundShift(V t, int s)
{
    const V one = splat<V>(1);
    return shiftRight(t + splat<V>(static_cast<Elem<V>>((Elem<V>(1) << (s - 1)) - 1)) + (shiftRight(t, s) & one), s);
}

// Half the sum without its top bit: the mean rounded up, and one less where it should have gone down to an even number.
template<class V> QVR_INLINE V halfSum(V a, V b)
{
    const V differ = a ^ b, up = (a | b) - shiftRight(differ, 1);
    return up - (up & differ & splat<V>(1));
}

// The sum times 2^n of 16-bit lanes, at most `largest`.
template<class V> QVR_INLINE V shiftUp(V sum, int n, Elem<V> largest)
{
    const V limit = splat<V>(static_cast<Elem<V>>(largest >> n));
    const V over = bitcast<V>(sum > limit);
    return (over & splat<V>(largest)) | (~over & shiftLeft(sum, n));
}

// One row of bytes.
template<Case which> void addRow([[maybe_unused]] uint8_t c, uint8_t* p, Index n, [[maybe_unused]] int s)
{
    if constexpr (which == Case::half) {
        mapElements(p, n, [=](auto x) { return halfSum(x, splat<decltype(x)>(c)); }, static_cast<const uint8_t*>(p));
    } else if constexpr (which == Case::plain) {
        mapElements(
            p, n, [c](auto x) { return addSaturate(x, splat<decltype(x)>(c)); }, static_cast<const uint8_t*>(p));
    } else if constexpr (which == Case::full) {
        mapElements(p, n, [](auto x) { return bitcast<decltype(x)>(x != 0); }, static_cast<const uint8_t*>(p));
    } else {
        mapElements(
            p, n,
            [=](auto x) {
                using W = Vec<uint16_t, lanes<decltype(x)>>;
                const W t = convert<uint16_t>(x) + splat<W>(c);
                return convert<uint8_t>(which == Case::down ? roundShift(t, s) : shiftUp(t, -s, 255));
            },
            static_cast<const uint8_t*>(p));
    }
}

template<Case which> void addRow([[maybe_unused]] uint16_t c, uint16_t* p, Index n, [[maybe_unused]] int s)
{
    const uint16_t* const from = p;
    if constexpr (which == Case::half) {
        mapElements(p, n, [=](auto x) { return halfSum(x, splat<decltype(x)>(c)); }, from);
    } else if constexpr (which == Case::plain) {
        mapElements(p, n, [c](auto x) { return addSaturate(x, splat<decltype(x)>(c)); }, from);
    } else if constexpr (which == Case::full) {
        mapElements(p, n, [](auto x) { return bitcast<decltype(x)>(x != 0); }, from);
    } else if constexpr (which == Case::up) {
        mapElements(p, n, [=](auto x) { return shiftUp(addSaturate(x, splat<decltype(x)>(c)), -s, 65535); }, from);
    } else {
        mapElements(
            p, n,
            [=](auto x) {
                using W = Vec<uint32_t, lanes<decltype(x)>>;
                return convert<uint16_t>(roundShift(convert<uint32_t>(x) + splat<W>(c), s));
            },
            from);
    }
}

template<Case which, class T> void addRows(T c, T* p, Index step, qvriSize size, Index from, Index to, int s)
{
    for (Index y = from; y < to; y++)
        addRow<which>(c, rowAt(p, y, step), size.width, s);
}

// Contiguous rows to each thread, the first ones one more where they do not come out even.
template<Case which> void addRowsThreaded(uint8_t c, uint8_t* p, Index step, qvriSize size, int s)
{
    const bool small = (which == Case::half || which == Case::down) && int64_t{size.width} + size.height < kThreadsFrom;
    const int budget = qvrNumThreadsValue();
    if (kSlot == qvrSlot_mx || small || budget < 2)
        return addRows<which>(c, p, step, size, 0, size.height, s);
    parallelTeam(budget, [&](int t, int team) {
        const Index rows = size.height / team, more = size.height % team;
        const Index from = t * rows + (t < more ? t : more);
        addRows<which>(c, p, step, size, from, from + rows + (t < more), s);
    });
}

} // namespace

extern "C" {

qvrStatus SLOT(qvriAddC_8u_C1IRSfs)(qvr8u value, qvr8u* srcDst, int step, qvriSize roiSize, int scaleFactor)
{
    if (const qvrStatus status = checkPointersThenSize(roiSize, srcDst))
        return status;
    const int s = scaleFactor;
    if (s == 0 && value == 0)
        return qvrOk;
    if (s >= kZeroFrom<qvr8u> || (s < kFullBelow<qvr8u> && value != 0)) {
        for (Index y = 0; y < roiSize.height; y++)
            SLOT(qvrsSet_8u)(s > 0 ? 0 : 255, rowAt(srcDst, y, step), roiSize.width);
        return qvrOk;
    }
    if (s == 0)
        addRowsThreaded<Case::plain>(value, srcDst, step, roiSize, s);
    else if (s == 1)
        addRowsThreaded<Case::half>(value, srcDst, step, roiSize, s);
    else if (s > 1)
        addRowsThreaded<Case::down>(value, srcDst, step, roiSize, s);
    else if (s >= kFullBelow<qvr8u>)
        addRowsThreaded<Case::up>(value, srcDst, step, roiSize, s);
    else
        addRowsThreaded<Case::full>(value, srcDst, step, roiSize, s);
    return qvrOk;
}

qvrStatus SLOT(qvriAddC_16u_C1IRSfs)(qvr16u value, qvr16u* srcDst, int step, qvriSize roiSize, int scaleFactor)
{
    const int s = scaleFactor;
    if (s >= kZeroFrom<qvr16u> || (s < kFullBelow<qvr16u> && value != 0))
        return SLOT(qvriSet_16u_C1R)(s > 0 ? 0 : 65535, srcDst, step, roiSize);
    if (const qvrStatus status = checkPointersThenSize(roiSize, srcDst))
        return status;
    if (s == 0 && value == 0)
        return qvrOk;
    if (s == 0)
        addRows<Case::plain>(value, srcDst, step, roiSize, 0, roiSize.height, s);
    else if (s == 1)
        addRows<Case::half>(value, srcDst, step, roiSize, 0, roiSize.height, s);
    else if (s > 0)
        addRows<Case::down>(value, srcDst, step, roiSize, 0, roiSize.height, s);
    else if (s >= kFullBelow<qvr16u>)
        addRows<Case::up>(value, srcDst, step, roiSize, 0, roiSize.height, s);
    else
        addRows<Case::full>(value, srcDst, step, roiSize, 0, roiSize.height, s);
    return qvrOk;
}

} // extern "C"
