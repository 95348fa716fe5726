// Magnitudes of complex numbers.
#include "elementary/functions.h"
#include "frame/ahead.h"
#include "frame/region.h"
#include "frame/simd.h"
#include "frame/status.h"

namespace {

constexpr bool kHasRegion = kSlot >= qvrSlot_u8;
constexpr bool kHasRegion64 = kSlot >= qvrSlot_u8 && kSlot <= qvrSlot_y8;
constexpr int kRegionFrom = 2048, kRegionFrom64 = 256;

// ---- Float ----------------------------------------------------------------------------------------------------------

template<class V> QVR_INLINE V sumOfSquares(V a, V b)
{
    const V re = evens(a, b), im = odds(a, b);
    return re * re + im * im;
}

// The body: one Newton step from the estimate of 1 / sqrt(s), which is forced to 0 for s below the normals. A sum of
// squares is not negative, and a NaN stays.
template<class V> QVR_INLINE V estimatedRoot(V s)
{
    const V estimate = rootReciprocalEstimate(s);
    const V g = s < splat<V>(0x1p-126f) ? V{} : estimate;
    const V t = s * g;
    return t * (g * t - 3.0f) * -0.5f;
}

// n elements by exact roots: the head up to a 16-byte boundary of the destination, and the tail of fewer than 8.
QVR_INLINE void exactRoots(const float* src, float* dst, int n)
{
    using V = Vec<float, 8>;
    const V z0 = loadFirst<V>(src, 2 * n < 8 ? 2 * n : 8), z1 = loadFirst<V>(src + 8, 2 * n < 8 ? 0 : 2 * n - 8);
    storeFirst(dst, sqrt(sumOfSquares(z0, z1)), n);
}

__attribute__((noinline)) void magnitudes(const float* src, float* dst, Index n)
{
    using V = Vec<float, 8>;
    const uintptr_t address = reinterpret_cast<uintptr_t>(dst);
    Index i = 0;
    if (address % 16 != 0 && address % sizeof(float) == 0) {
        i = static_cast<Index>(-address % 16 / sizeof(float));
        i = i < n ? i : n;
        exactRoots(src, dst, static_cast<int>(i));
    }
    const auto block = [&](Index at) QVR_ALWAYS {
        V re, im;
        loadComplex(src + 2 * at, re, im);
        store(dst + at, estimatedRoot(re * re + im * im));
    };
    eachBlock<8>(i, n, block, dst, reinterpret_cast<const qvr32fc*>(src));
    if (i < n)
        exactRoots(src + 2 * i, dst + i, static_cast<int>(n - i));
}

void ownqvrsMagn_32fc32f_omp(const float* src, float* dst, int len)
{
    parallelElements(len, [=](Index start, Index n) {
        magnitudes(src + 2 * start, dst + start, n);
        return 0;
    });
}

// ---- Double ---------------------------------------------------------------------------------------------------------

__attribute__((noinline)) void magnitudes64(const double* src, double* dst, Index n)
{
    using V = Full<double>;
    constexpr int N = kLanes<double>;
    Index i = 0;
    const auto block = [&](Index at) QVR_ALWAYS {
        V re, im;
        loadComplex(src + 2 * at, re, im);
        store(dst + at, sqrt(re * re + im * im));
    };
    eachBlock<N>(i, n, block, dst, reinterpret_cast<const qvr64fc*>(src));
    for (; i < n; i++) {
        using One = Vec<double, 1>;
        const One re = load<One>(src + 2 * i), im = load<One>(src + 2 * i + 1);
        store(dst + i, sqrt(re * re + im * im));
    }
}

void ownqvrsMagn_64fc64f_omp(const double* src, double* dst, int len)
{
    parallelElements(len, [=](Index start, Index n) {
        magnitudes64(src + 2 * start, dst + start, n);
        return 0;
    });
}

// ---- 16 bits --------------------------------------------------------------------------------------------------------

// s = re^2 + im^2 is at most 2^31, as a signed word the only negative one. The float root truncated, r, is a start:
// what it rounds away or adds never changes the result, because the decision falls by exact integers.

using Words = Vec<uint32_t, 8>;
using Root = Vec<int32_t, 8>;

QVR_INLINE Vec<float, 8> floatRoot(Words s)
{
    return sqrt(abs(convert<float>(bitcast<Root>(s))));
}

// r is at most 32767, so its square is one product of 16-bit halves.
struct Unscaled {
    QVR_INLINE Root operator()(Words s) const
    {
        const Root r = toIntTruncate(min(floatRoot(s), splat<Vec<float, 8>>(32767)));
        const Root square = addProductPairs(bitcast<Vec<int16_t, 16>>(r), bitcast<Vec<int16_t, 16>>(r));
        return r - (bitcast<Root>(s) > square + r);
    }
};

// scaleFactor -14 .. -1: s times 4^-scaleFactor where that stays in range.
struct Enlarged {
    int shift;
    QVR_INLINE Root operator()(Words s) const
    {
        const Mask<Words> large = s > splat<Words>(0x3FFF0000u >> shift);
        const Root scaled = Unscaled{}(large ? Words{} : s << static_cast<uint32_t>(shift));
        return large ? splat<Root>(32767) : scaled;
    }
};

// scaleFactor 1 .. 15: the midpoint m between two results decides, a tie goes to the even one.
struct Reduced {
    int scaleFactor;
    QVR_INLINE Root operator()(Words s) const
    {
        const Words r = bitcast<Words>(toIntTruncate(floatRoot(s)));
        const uint32_t shift = static_cast<uint32_t>(scaleFactor);
        const Words q = r >> shift;
        const Words m = (q << shift) + (1u << (shift - 1));
        // Up if s > m^2, or s = m^2 and q is odd: if s + (q & 1) > m^2. The difference fits a signed word.
        return bitcast<Root>(q) - (bitcast<Root>(m * m - (s + (q & 1))) >> 31);
    }
};

struct Saturated {
    QVR_INLINE Root operator()(Words s) const { return s != Words{} ? splat<Root>(32767) : Root{}; }
};

// scaleFactor 16: at most 1, and from 17 on always 0.
struct Half {
    QVR_INLINE Root operator()(Words s) const { return -(s > splat<Words>(0x40000000)); }
};
struct Nothing {
    QVR_INLINE Root operator()(Words) const { return Root{}; }
};

template<class Op> __attribute__((noinline)) void magnitudes16(const qvr16sc* src, int16_t* dst, Index n, const Op& op)
{
    const auto block = [&](Words pairs) {
        const auto z = bitcast<Vec<int16_t, 16>>(pairs);
        return packSaturate(op(bitcast<Words>(addProductPairs(z, z))));
    };
    Index i = 0;
    const auto twoBlocks = [&](Index at) QVR_ALWAYS {
        const auto a = block(load<Words>(src + at)), b = block(load<Words>(src + at + 8));
        store(dst + at, a);
        store(dst + at + 8, b);
    };
    eachBlock<16>(i, n, twoBlocks, dst, src);
    for (; i < n; i += 8) {
        const int count = n - i < 8 ? static_cast<int>(n - i) : 8;
        storeFirst(dst + i, block(loadFirst<Words>(src + i, count)), count);
    }
}

void magnitudes16(const qvr16sc* src, int16_t* dst, Index n, int scaleFactor)
{
    if (scaleFactor == 0)
        magnitudes16(src, dst, n, Unscaled{});
    else if (scaleFactor < -14)
        magnitudes16(src, dst, n, Saturated{});
    else if (scaleFactor < 0)
        magnitudes16(src, dst, n, Enlarged{-2 * scaleFactor});
    else if (scaleFactor < 16)
        magnitudes16(src, dst, n, Reduced{scaleFactor});
    else if (scaleFactor == 16)
        magnitudes16(src, dst, n, Half{});
    else
        magnitudes16(src, dst, n, Nothing{});
}

void ownqvrsMagn_16sc16s_Sfs_omp(const qvr16sc* src, int16_t* dst, int len, int scaleFactor)
{
    parallelElements(len, [=](Index start, Index n) {
        magnitudes16(src + start, dst + start, n, scaleFactor);
        return 0;
    });
}

} // namespace

extern "C" {

qvrStatus SLOT_SHARED(qvrsMagnitude_32fc)(const qvr32fc* pSrc, qvr32f* pDst, int len)
{
    if (const qvrStatus status = checkPointersThenLength(len, pSrc, pDst))
        return status;
    const float* src = reinterpret_cast<const float*>(pSrc);
    if (kHasRegion && len >= kRegionFrom)
        ownqvrsMagn_32fc32f_omp(src, pDst, len);
    else
        magnitudes(src, pDst, len);
    return qvrOk;
}

qvrStatus SLOT_SHARED(qvrsMagnitude_64fc)(const qvr64fc* pSrc, qvr64f* pDst, int len)
{
    if (const qvrStatus status = checkPointersThenLength(len, pSrc, pDst))
        return status;
    const double* src = reinterpret_cast<const double*>(pSrc);
    if (kHasRegion64 && len >= kRegionFrom64)
        ownqvrsMagn_64fc64f_omp(src, pDst, len);
    else
        magnitudes64(src, pDst, len);
    return qvrOk;
}

qvrStatus SLOT_SHARED(qvrsMagnitude_16sc_Sfs)(const qvr16sc* pSrc, qvr16s* pDst, int len, int scaleFactor)
{
    if (const qvrStatus status = checkPointersThenLength(len, pSrc, pDst))
        return status;
    if (kHasRegion && len >= kRegionFrom)
        ownqvrsMagn_16sc16s_Sfs_omp(pSrc, pDst, len, scaleFactor);
    else
        magnitudes16(pSrc, pDst, len, scaleFactor);
    return qvrOk;
}

} // extern "C"
