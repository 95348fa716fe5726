// Real FFT of 16-bit samples: short transforms in integers, all others through the transform in single precision.
//
// Integers. The samples are shifted up by 16 - order bits, so that N of them fill 32 bits. z[n] = x[2n] + i x[2n + 1]
// goes through a complex transform of M = N/2 points and the recombination, in which sums and differences are halved.
// Whatever the samples are, no step passes 32 bits. A twiddle is 14 bits behind the point, w = trunc(sin * 16384 +
// 0.5).
//
// Product by a twiddle, without a wide multiplication: with h = x >> 16 and l = (x & 0xFFFF) >> 1,
// x w / 16384 = ((l w + 4096) >> 13) + 4 h w. Where two products are added, 4096 comes in once.
//
// Complex transform, decimation in frequency. A radix-4 stage of length L takes a, b, c, d from L/4 apart and leaves
// the results of even index first, then those of odd index: a + b + c + d, (a - b + c - d) w^2k, then k + 1 and k + 3.
// So each half of a block holds what a radix-2 stage would have left there, and plain bit reversal sorts the end.
#include "fourier/functions.h"
#include "fourier/lanes.h"
#include "fourier/quarter.h"
#include "fourier/real/sixteen.h"
#include "fourier/real/spec.h"
#include "frame/arena.h"
#include "frame/status.h"
#include "vector/loops.h"
#include "vector/narrow.h"

namespace {

constexpr int32_t kTag = 3;
constexpr int kOrderEnd = 31;

// Integers below this order.
constexpr int kFloatFrom = PerSlot<int>{9, 4, 4, 4, 4, 4, 4}.here();

} // namespace

struct qvrsFFTSpec_R_16s {
    int32_t tag;
    int32_t order;
    int32_t fwdShift;  // right shift of the forward transform
    int32_t invShift;  // of an inverse one
    int32_t halfShift; // the normalisation holds an odd power of sqrt(2)
    int32_t hint;
    int32_t workSize;
    int32_t useFloat;
    int32_t isAlloc;
    int32_t* pBitRev;   // integers: bit reversal of M points
    int16_t* pTwiddleC; // integers: rotations of M points
    int16_t* pTwiddleR; // integers: rotations of N points
    qvrsFFTSpec_R_32f* pFloatSpec;
};

namespace {

// ---- Arithmetic -----------------------------------------------------------------------------------------------------

struct Point32 {
    int32_t re, im;
};

// Overflow is impossible for what a transform forms of samples, and wraps for anything else.
QVR_INLINE int32_t add(int32_t a, int32_t b)
{
    return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}
QVR_INLINE int32_t sub(int32_t a, int32_t b)
{
    return static_cast<int32_t>(static_cast<uint32_t>(a) - static_cast<uint32_t>(b));
}

// x v + y w by twiddles.
QVR_INLINE int32_t rotated(int32_t x, int32_t v, int32_t y, int32_t w)
{
    const int32_t xl = (x & 0xFFFF) >> 1, yl = (y & 0xFFFF) >> 1;
    const int32_t high = add((x >> 16) * v, (y >> 16) * w);
    return add((xl * v + yl * w + 4096) >> 13, static_cast<int32_t>(static_cast<uint32_t>(high) * 4));
}

// z w with one entry (c, s, -s, c) of a table, w = c - i s.
QVR_INLINE Point32 turn(Point32 z, const int16_t* entry)
{
    return {rotated(z.re, entry[0], z.im, entry[1]), rotated(z.re, entry[2], z.im, entry[3])};
}

QVR_INLINE Point32 operator+(Point32 a, Point32 b)
{
    return {add(a.re, b.re), add(a.im, b.im)};
}
QVR_INLINE Point32 operator-(Point32 a, Point32 b)
{
    return {sub(a.re, b.re), sub(a.im, b.im)};
}

// ---- Tables ---------------------------------------------------------------------------------------------------------

constexpr int kEntry = 4;

int16_t sine14(int64_t k, int order)
{
    return static_cast<int16_t>(
        constantQuarter<double>(kConstantBase)[2 * (k << (kConstantBase - order)) + 1] * -16384.0 + 0.5);
}
// Entry k (c, s, -s, c) of the angle 2 pi k / 2^order.
void fillRotations(int16_t* out, int order, Index count)
{
    const Index quarter = (Index{1} << order) / 4, whole = 4 * quarter;
    for (Index k = 0; k < count; k++, out += kEntry) {
        const auto sine = [&](Index angle) {
            const Index a = angle & (whole - 1), r = a & (quarter - 1);
            const int16_t v = sine14(a & quarter ? quarter - r : r, order);
            return static_cast<int16_t>(a >= 2 * quarter ? -v : v);
        };
        const int16_t s = sine(k), c = sine(k + quarter);
        out[0] = out[3] = c;
        out[1] = s;
        out[2] = static_cast<int16_t>(-s);
    }
}

// The angles of radix-4 stages reach 3/4 of the circle, those of the recombination a quarter.
constexpr Index complexEntries(int m)
{
    return m >= 2 ? 3 * (Index{1} << m) / 4 : 0;
}
constexpr Index realEntries(int order)
{
    return order >= 2 ? (Index{1} << order) / 4 : 0;
}
constexpr Index swapEntries(int m)
{
    return Index{1} << m;
}

// ---- The integer transform ------------------------------------------------------------------------------------------

QVR_INLINE void complexStages(Point32* z, int m, const int16_t* rotations)
{
    const Index M = Index{1} << m;
    int s = m;
    for (; s >= 2; s -= 2) {
        const Index q = Index{1} << (s - 2), stride = Index{1} << (m - s);
        for (Index block = 0; block < M; block += 4 * q)
            for (Index k = 0; k < q; k++) {
                Point32* p = z + block + k;
                const Point32 s0 = p[0] + p[2 * q], d0 = p[0] - p[2 * q], s1 = p[q] + p[3 * q], d1 = p[q] - p[3 * q];
                const Point32 o1 = {add(d0.re, d1.im), sub(d0.im, d1.re)}, o3 = {sub(d0.re, d1.im), add(d0.im, d1.re)};
                const int16_t* w = rotations + kEntry * k * stride;
                p[0] = s0 + s1;
                p[q] = s0 - s1;
                p[2 * q] = o1;
                p[3 * q] = o3;
                if (k > 0) {
                    p[q] = turn(p[q], w + kEntry * k * stride);
                    p[2 * q] = turn(o1, w);
                    p[3 * q] = turn(o3, w + 2 * kEntry * k * stride);
                }
            }
    }
    if (s == 1)
        for (Index i = 0; i < M; i += 2) {
            const Point32 a = z[i], b = z[i + 1];
            z[i] = a + b;
            z[i + 1] = a - b;
        }
}

QVR_INLINE void recombine(Point32* z, int m, const int16_t* rotations)
{
    const Index M = Index{1} << m;
    for (Index k = 1; k < M / 2; k++) {
        const Point32 a = z[k], b = z[M - k];
        // Half of a sum of two 32-bit values, without the sum.
        const auto halfSum = [](int32_t x, int32_t y) { return static_cast<int32_t>((int64_t{x} + y) >> 1); };
        const auto halfDifference = [](int32_t x, int32_t y) { return static_cast<int32_t>((int64_t{x} - y) >> 1); };
        const int32_t p = halfDifference(a.re, b.re), q = halfSum(a.im, b.im);
        const int32_t s = halfSum(a.re, b.re), d = halfDifference(a.im, b.im);
        const int32_t c = rotations[kEntry * k], sine = rotations[kEntry * k + 1];
        // t = c q - sine p, u = -sine q - c p
        const int32_t t = rotated(q, c, p, -sine), u = rotated(q, -sine, p, -c);
        z[k] = {add(s, t), add(u, d)};
        z[M - k] = {sub(s, t), sub(u, d)};
    }
    if (M > 1)
        z[M / 2].im = sub(0, z[M / 2].im);
}

// x / sqrt(2), the two halves by constants of their own.
template<class V> QVR_INLINE V rootHalf(V x)
{
    const Bits<V> low = (bits(x) & 0xFFFF) * 23170 >> 15, high = bits(x >> 16) * 46340;
    return bitcast<V>(low + high);
}

// x 2^-shift, half up, saturated.
template<class V> QVR_INLINE Vec<int16_t, lanes<V>> stored(V x, int64_t shift)
{
    if (shift >= 32)
        return Vec<int16_t, lanes<V>>{};
    if (shift > 0) {
        const V twice = x >> static_cast<int32_t>(shift - 1);
        return packSaturate((twice >> 1) + (twice & 1));
    }
    // What 16 bits do not hold now they do not hold at the end.
    const int32_t up = shift > -16 ? -static_cast<int32_t>(shift) : 15;
    return packSaturate(convert<int32_t>(packSaturate(x)) << up);
}

constexpr int headroom(int order)
{
    return order < 15 ? 15 - order : 0;
}
QVR_INLINE int64_t lastShift(const qvrsFFTSpec_R_16s& spec, int scaleFactor, int order)
{
    return int64_t{spec.fwdShift} + scaleFactor + headroom(order) + 1;
}

// Packed values, 2^order of them, to CCS.
QVR_INLINE void unpack(int16_t* dst, int order)
{
    put(dst, Index{1} << order, get(dst, 1));
    put<int16_t>(dst, (Index{1} << order) + 1, 0);
    put<int16_t>(dst, 1, 0);
}

void integerTransform(const int16_t* src, int16_t* dst, const qvrsFFTSpec_R_16s& spec, int scaleFactor, uint8_t* work)
{
    using V = Vec<int32_t, 8>;
    const int order = spec.order, m = order - 1;
    const Index n = Index{1} << order;
    int32_t* const x = reinterpret_cast<int32_t*>(work);
    for (Index i = 0; i < n; i += lanes<V>)
        store(x + i, convert<int32_t>(load<Vec<int16_t, lanes<V>>>(src + i)) << (headroom(order) + 1));
    Point32* z = reinterpret_cast<Point32*>(x);
    complexStages(z, m, spec.pTwiddleC);
    for (Index i = 0; i < n / 2; i++)
        if (const Index r = spec.pBitRev[i]; r > i) {
            const Point32 a = z[i];
            z[i] = z[r];
            z[r] = a;
        }
    recombine(z, m, spec.pTwiddleR);
    const Point32 first = z[0];
    x[0] = add(first.re, first.im);
    x[1] = sub(first.re, first.im);
    const int64_t shift = lastShift(spec, scaleFactor, order);
    for (Index i = 0; i < n; i += lanes<V>) {
        const V v = load<V>(x + i);
        store(dst + i, stored(spec.halfShift == 1 ? rootHalf(v) : v, shift));
    }
    unpack(dst, order);
}

// ---- Two, four and eight samples in a vector ------------------------------------------------------------------------

// Lanes where `sign` is -1 negated, where it is 0 left.
template<class V> QVR_INLINE V negatedBy(V v, V sign)
{
    return (v ^ sign) - sign;
}

// The packed spectrum of 2^Order values.
template<int Order> QVR_INLINE Vec<int32_t, 1 << Order> shortSpectrum(Vec<int32_t, 1 << Order> x)
{
    using V = Vec<int32_t, 4>;
    if constexpr (Order == 1) {
        return {add(x[0], x[1]), sub(x[0], x[1])};
    } else if constexpr (Order == 2) {
        // z0 + z1, z0 - z1; of the first re + im and re - im, the other conjugated.
        const V z = shuffleBlocks<0, 1, 0, 1>(x) + negatedBy(shuffleBlocks<2, 3, 2, 3>(x), V{0, 0, -1, -1});
        const V first = shuffleBlocks<1, 1, 1, 1>(z) & V{-1, -1, 0, 0};
        return negatedBy(shuffleBlocks<0, 0, 2, 3>(z), V{0, 0, 0, -1}) + negatedBy(first, V{0, -1, 0, 0});
    } else {
        const V s = lo(x) + hi(x), d = lo(x) - hi(x);
        const V even = shortSpectrum<2>(s);
        // With p = Im d1, q = Im d0: t = c q - s p and u = -s q - c p by both halves of p and q, where c = s.
        constexpr int16_t c = 11585;
        const V parts = shuffleBlocks<1, 3, 1, 3>(d);
        const auto halves = concat(packSaturate(parts >> 16), packSaturate((parts & 0xFFFF) >> 1));
        const V products = addProductPairs(halves, Vec<int16_t, 8>{c, -c, -c, -c, c, -c, -c, -c});
        const V turned =
            ((shuffleBlocks<2, 3, 2, 3>(products) + 4096) >> 13) + (shuffleBlocks<0, 1, 0, 1>(products) << 2);
        // Re d0 + t, -Re d1 + u, and both with the other sign of what is turned or conjugated.
        const V odd = negatedBy(shuffleBlocks<0, 2, 0, 2>(d), V{0, -1, 0, 0}) + negatedBy(turned, V{0, 0, -1, 0});
        return concat(shuffleBlocks<0, 1, 4, 5>(even, odd), shuffleBlocks<2, 3, 6, 7>(even, odd));
    }
}
template<int Order>
void shortTransform(const int16_t* src, int16_t* dst, const qvrsFFTSpec_R_16s& spec, int scaleFactor, uint8_t*)
{
    constexpr int N = 1 << Order;
    auto x = shortSpectrum<Order>(convert<int32_t>(load<Vec<int16_t, N>>(src)) << (headroom(Order) + 1));
    if (spec.halfShift == 1)
        x = rootHalf(x);
    const auto y = stored(x, lastShift(spec, scaleFactor, Order));
    const Vec<int16_t, 2> last = {y[1], 0};
    auto head = y;
    head[1] = 0;
    store(dst, head);
    store(dst + N, last);
}

// ---- Through single precision ---------------------------------------------------------------------------------------

// body(op), op(y) the integers that are nearest to y 2^-scaleFactor, saturated. No bin passes 2^(order + 15), and what
// an int32 holds needs no clamping before it is one.
template<class Body> QVR_INLINE void withRounding(int order, int scaleFactor, const Body& body)
{
    const float factor = scaleFactor32(scaleFactor);
    if (scaleFactor >= 0 && order <= 15)
        body([=](auto y) { return packSaturate(toInt(y * splat<decltype(y)>(factor))); });
    else
        body([=](auto y) { return roundTo16<qvrRoundNearest>(y * splat<decltype(y)>(factor)); });
}

template<int Order>
void shortFloatTransform(const int16_t* src, int16_t* dst, const qvrsFFTSpec_R_16s& spec, int scaleFactor, uint8_t*)
{
    constexpr int N = 1 << Order, B = kLanes<int16_t>;
    alignas(64) float x[N], y[N];
#pragma clang loop unroll(full)
    for (int i = 0; i < N; i += B)
        store(x + i, convert<float>(load<Vec<int16_t, B>>(src + i)));
    if constexpr (Order == 4)
        sixteenForward(x, y, spec.pFloatSpec->normFactor, spec.pFloatSpec->doFwdScale != 0);
    else
        SLOT(ownqvrsFFTFwd_RToPacked_32f)(x, y, spec.pFloatSpec, nullptr);
    withRounding(Order, scaleFactor, [&](const auto& op) __attribute__((always_inline)) {
#pragma clang loop unroll(full)
        for (int i = 0; i < N; i += B)
            store(dst + i, op(load<Vec<float, B>>(y + i)));
    });
    unpack(dst, Order);
}

qvrStatus floatTransform(const int16_t* src, int16_t* dst, const qvrsFFTSpec_R_16s& spec, int scaleFactor,
                         uint8_t* work)
{
    const int n = 1 << spec.order;
    float* const y = reinterpret_cast<float*>(work);
    uint8_t* const rest = work + (Index{n} + 2) * 4;
    // A flat transform to an aligned place leaves its work memory alone, so that can be the source; others run in
    // place.
    constexpr FftLimits limits = kFftLimits<float>;
    const bool flat = !kFirstGeneration && spec.order > limits.complex && spec.order <= limits.flat;
    float* const x = flat ? alignLine<float>(rest) : y;
    constexpr int B = kLanes<int16_t>;
    convertBlocks<B>(src, x, n, [](auto v) { return convert<float>(v); });
    // Packed, which is whole vectors to convert; what goes to other places is moved behind.
    if (const qvrStatus status = SLOT(ownqvrsFFTFwd_RToPacked_32f)(x, y, spec.pFloatSpec, rest))
        return status;
    withRounding(spec.order, scaleFactor, [&](const auto& op) { convertBlocks<B>(y, dst, n, op); });
    unpack(dst, spec.order);
    return qvrOk;
}

// Straight-line ones by order and method.
constexpr int kShortOrders = 8, kShortIntegers = 3;
using ShortTransform = void (*)(const int16_t*, int16_t*, const qvrsFFTSpec_R_16s&, int scaleFactor, uint8_t*);
template<int Order> constexpr ShortTransform shortFloat()
{
    if constexpr (Order >= 4 && Order <= kFftLimits<float>.complex)
        return shortFloatTransform<Order>;
    return nullptr;
}
constexpr ShortTransform kShort[2][kShortOrders] = {
    {nullptr, shortTransform<1>, shortTransform<2>, shortTransform<3>, nullptr, nullptr, nullptr, nullptr},
    {nullptr, nullptr, nullptr, nullptr, shortFloat<4>(), shortFloat<5>(), shortFloat<6>(), shortFloat<7>()},
};

} // namespace

extern "C" {

qvrStatus SLOT(qvrsFFTInitAlloc_R_16s)(qvrsFFTSpec_R_16s** ppSpec, int order, int flag, int hint)
{
    using Spec = qvrsFFTSpec_R_16s;
    if (ppSpec == nullptr)
        return qvrErrNullPointer;
    if (static_cast<unsigned>(order) >= kOrderEnd)
        return qvrErrFFTOrder;
    const bool integers = (hint == qvrHintNone || hint == qvrHintFast) && order < kFloatFrom;
    const bool useFloat = order > 0 && !integers;
    const int m = order - 1;
    Index work = (Index{4} << order) + 8;
    int32_t specSize = 0, initSize = 0;
    if (useFloat) {
        int32_t workSize;
        if (const qvrStatus status = SLOT(ownqvrsFFTGetSize_R_32f)(order, flag, hint, &specSize, &initSize, &workSize))
            return status;
        work += workSize;
    }
    Spec* spec;
    Spec tables = {};
    uint8_t* floatSpec;
    const auto layOut = [&](Arena& arena) {
        spec = arena.take<Spec>(1);
        floatSpec = arena.take<uint8_t>(specSize);
        if (order > 0 && !useFloat) {
            tables.pBitRev = arena.take<int32_t>(swapEntries(m));
            tables.pTwiddleC = arena.take<int16_t>(kEntry * complexEntries(m));
            tables.pTwiddleR = arena.take<int16_t>(kEntry * realEntries(order));
        }
    };
    if (work > INT32_MAX || !build(layOut))
        return qvrErrNoMemory;
    *spec = tables;
    spec->tag = kTag;
    spec->order = order;
    spec->hint = hint;
    spec->isAlloc = 1;
    spec->useFloat = useFloat;
    spec->workSize = order > 0 ? static_cast<int32_t>(work) : 0;
    switch (flag) {
    case qvrFftNoDiv:
        break;
    case qvrFftDivFwdByN:
        spec->fwdShift = order;
        break;
    case qvrFftDivInvByN:
        spec->invShift = order;
        break;
    case qvrFftDivBySqrtN:
        spec->fwdShift = spec->invShift = order >> 1;
        spec->halfShift = order & 1;
        break;
    default:
        spec->tag = 0;
        release(spec);
        return qvrErrFFTFlag;
    }
    qvrStatus status = qvrOk;
    if (useFloat) {
        uint8_t* scratch = nullptr;
        if (initSize > 0 && (scratch = allocate<uint8_t>(initSize)) == nullptr)
            status = qvrErrNoMemory;
        else
            status = SLOT(ownqvrsFFTInit_R_32f)(&spec->pFloatSpec, order, flag, hint, floatSpec, scratch);
        release(scratch);
    } else if (order > 0) {
        for (Index i = 0; i < swapEntries(m); i++)
            spec->pBitRev[i] =
                m == 0 ? 0 : static_cast<int32_t>(__builtin_bitreverse32(static_cast<uint32_t>(i)) >> (32 - m));
        fillRotations(spec->pTwiddleC, m, complexEntries(m));
        fillRotations(spec->pTwiddleR, order, realEntries(order));
    }
    if (status != qvrOk) {
        spec->tag = 0;
        release(spec);
        return status;
    }
    *ppSpec = spec;
    return qvrOk;
}

qvrStatus SLOT(qvrsFFTFwd_RToCCS_16s_Sfs)(const qvr16s* pSrc, qvr16s* pDst, const qvrsFFTSpec_R_16s* pSpec,
                                          int scaleFactor, qvr8u* pBuffer)
{
    if (const qvrStatus status = checkState(pSpec, kTag))
        return status;
    if (anyNull(pSrc, pDst))
        return qvrErrNullPointer;
    if (pSpec->order == 0) {
        put(pDst, 0, stored(Vec<int32_t, 4>{get(pSrc, 0)}, scaleFactor)[0]);
        put<int16_t>(pDst, 1, 0);
        return qvrOk;
    }
    uint8_t* own = nullptr;
    uint8_t* work;
    if (pBuffer != nullptr)
        work = alignLine<uint8_t>(pBuffer);
    else if ((work = own = allocate<uint8_t>(pSpec->workSize)) == nullptr)
        return qvrErrNoMemory;
    qvrStatus status = qvrOk;
    const ShortTransform transform = pSpec->order < kShortOrders ? kShort[pSpec->useFloat][pSpec->order] : nullptr;
    if (transform != nullptr)
        transform(pSrc, pDst, *pSpec, scaleFactor, work);
    else if (pSpec->useFloat != 0)
        status = floatTransform(pSrc, pDst, *pSpec, scaleFactor, work);
    else if constexpr (kFloatFrom > kShortIntegers + 1)
        integerTransform(pSrc, pDst, *pSpec, scaleFactor, work);
    release(own);
    return status;
}

qvrStatus SLOT(qvrsFFTFree_R_16s)(qvrsFFTSpec_R_16s* pSpec)
{
    if (const qvrStatus status = checkState(pSpec, kTag))
        return status;
    pSpec->tag = 0;
    if (pSpec->isAlloc == 1)
        release(pSpec);
    return qvrOk;
}

} // extern "C"
