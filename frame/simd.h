// The SIMD layer: kernels are written over compiler vectors of any lane count, and over the operations below.
//
// Arithmetic, comparison and bit operations are the operators of the vector types; `mask ? a : b` selects by lane.
// The functions here are what has no operator. Each is defined for every lane count that is a power of two: a vector
// wider than the level's registers is split in halves, so a kernel unrolls by using wider vectors. One lane is a
// scalar in a vector register. Intrinsics stand in this file only.
#ifndef QVR_FRAME_SIMD_H
#define QVR_FRAME_SIMD_H

#include <immintrin.h>

#include "frame/slot.h"

#define QVR_INLINE __attribute__((always_inline)) inline

namespace {

// ---- Vector types ---------------------------------------------------------------------------------------------------

template<class T, int N> struct VecOf {
    typedef T type __attribute__((vector_size(sizeof(T) * N)));
};
template<class T, int N> using Vec = typename VecOf<T, N>::type;

// The full register of the slot.
template<class T> constexpr int kLanes = kVecBytes / static_cast<int>(sizeof(T));
template<class T> using Full = Vec<T, kLanes<T>>;

template<class V> using Elem = __remove_cvref(decltype(V{}[0]));
template<class T> constexpr bool kIsFloat = static_cast<T>(0.5) != 0;
template<class V> constexpr int lanes = static_cast<int>(sizeof(V) / sizeof(Elem<V>));

template<int Bytes> struct IntOf;
template<> struct IntOf<1> {
    using s = int8_t;
    using u = uint8_t;
};
template<> struct IntOf<2> {
    using s = int16_t;
    using u = uint16_t;
};
template<> struct IntOf<4> {
    using s = int32_t;
    using u = uint32_t;
};
template<> struct IntOf<8> {
    using s = int64_t;
    using u = uint64_t;
};

// Integer vectors of the same shape. A comparison yields the signed one, all ones for true.
template<class V> using Mask = Vec<typename IntOf<sizeof(Elem<V>)>::s, lanes<V>>;
template<class V> using Bits = Vec<typename IntOf<sizeof(Elem<V>)>::u, lanes<V>>;

template<int... I> struct Indices {};
template<class, int... I> struct IndicesOf {
    using type = Indices<I...>;
};
template<int N> using Iota = typename __make_integer_seq<IndicesOf, int, N>::type;

template<class To, class From> QVR_INLINE To bitcast(From v)
{
    static_assert(sizeof(To) == sizeof(From));
    return __builtin_bit_cast(To, v);
}

template<class V> QVR_INLINE Bits<V> bits(V v)
{
    return bitcast<Bits<V>>(v);
}

// ---- Broadcast, halves, shuffles ------------------------------------------------------------------------------------

template<class V, int... I> QVR_INLINE V splatLanes(Elem<V> x, Indices<I...>)
{
    const Vec<Elem<V>, 1> one = {x};
    return __builtin_shufflevector(one, one, (I & 0)...);
}
template<class V> QVR_INLINE V splat(Elem<V> x)
{
    return splatLanes<V>(x, Iota<lanes<V>>{});
}

template<class V, int... I> QVR_INLINE V iotaLanes(Indices<I...>)
{
    return V{static_cast<Elem<V>>(I)...};
}
// 0, 1, 2, ...
template<class V> QVR_INLINE V iota()
{
    return iotaLanes<V>(Iota<lanes<V>>{});
}

template<int From, class V, int... I> QVR_INLINE Vec<Elem<V>, sizeof...(I)> sliceLanes(V v, Indices<I...>)
{
    return __builtin_shufflevector(v, v, (From + I)...);
}
// Lanes From .. From + N - 1.
template<int From, int N, class V> QVR_INLINE auto slice(V v)
{
    return sliceLanes<From>(v, Iota<N>{});
}
template<class V> QVR_INLINE auto lo(V v)
{
    return slice<0, lanes<V> / 2>(v);
}
template<class V> QVR_INLINE auto hi(V v)
{
    return slice<lanes<V> / 2, lanes<V> / 2>(v);
}

template<class V, int... I> QVR_INLINE Vec<Elem<V>, sizeof...(I)> concatLanes(V a, V b, Indices<I...>)
{
    return __builtin_shufflevector(a, b, I...);
}
template<class V> QVR_INLINE auto concat(V a, V b)
{
    return concatLanes(a, b, Iota<2 * lanes<V>>{});
}

// Lanes picked from a (0 .. N - 1) and b (N .. 2N - 1) by the same pattern in each 16-byte block, as the instructions
// of the wide levels do: shuffleBlocks<0, 4, 1, 5>(a, b) interleaves the low pairs of each block of 32-bit lanes.
template<int Block, int... P> constexpr int blockLane(int lane, int total)
{
    constexpr int pattern[] = {P...};
    const int block = lane / Block * Block, p = pattern[lane % Block];
    return p < Block ? block + p : total + block + p - Block;
}
template<class V, int... P, int... I> QVR_INLINE V shuffleBlocksLanes(V a, V b, Indices<P...>, Indices<I...>)
{
    return __builtin_shufflevector(a, b, blockLane<sizeof...(P), P...>(I, lanes<V>)...);
}
template<int... P, class V> QVR_INLINE V shuffleBlocks(V a, V b)
{
    static_assert(sizeof...(P) * sizeof(Elem<V>) == 16);
    return shuffleBlocksLanes(a, b, Indices<P...>{}, Iota<lanes<V>>{});
}
template<int... P, class V> QVR_INLINE V shuffleBlocks(V v)
{
    return shuffleBlocks<P...>(v, v);
}

// a0 b0 a1 b1 ... of the low halves (or the high halves) of whole vectors.
template<int From, class V, int... I> QVR_INLINE V zipLanes(V a, V b, Indices<I...>)
{
    return __builtin_shufflevector(a, b, (I / 2 + From + (I & 1) * lanes<V>)...);
}
template<class V> QVR_INLINE V zipLo(V a, V b)
{
    return zipLanes<0>(a, b, Iota<lanes<V>>{});
}
template<class V> QVR_INLINE V zipHi(V a, V b)
{
    return zipLanes<lanes<V> / 2>(a, b, Iota<lanes<V>>{});
}

template<class V, int... I> QVR_INLINE V reversedLanesOf(V v, Indices<I...>)
{
    return __builtin_shufflevector(v, v, (lanes<V> - 1 - I)...);
}
template<class V> QVR_INLINE V reversedLanes(V v)
{
    return reversedLanesOf(v, Iota<lanes<V>>{});
}

// Lanes From .. From + N - 1 of a and b in a row.
template<int From, class V, int... I> QVR_INLINE V shiftedLanesOf(V a, V b, Indices<I...>)
{
    return __builtin_shufflevector(a, b, (From + I)...);
}
template<int From, class V> QVR_INLINE V shiftedLanes(V a, V b)
{
    return shiftedLanesOf<From>(a, b, Iota<lanes<V>>{});
}

// Even and odd lanes of two vectors taken one behind the other.
template<int From, class V, int... I> QVR_INLINE V unzipLanes(V a, V b, Indices<I...>)
{
    return __builtin_shufflevector(a, b, (2 * I + From)...);
}
template<class V> QVR_INLINE V evens(V a, V b)
{
    return unzipLanes<0>(a, b, Iota<lanes<V>>{});
}
template<class V> QVR_INLINE V odds(V a, V b)
{
    return unzipLanes<1>(a, b, Iota<lanes<V>>{});
}

// Applies f to the halves and joins the results.
template<class F, class... V> QVR_INLINE auto byHalves(const F& f, V... v)
{
    return concat(f(lo(v)...), f(hi(v)...));
}

// A vector padded to 16 bytes, its upper lanes unspecified repeats.
template<class V, int... I> QVR_INLINE auto padLanes(V v, Indices<I...>)
{
    return __builtin_shufflevector(v, v, (I % lanes<V>)...);
}
template<class V> QVR_INLINE auto padTo16(V v)
{
    return padLanes(v, Iota<16 / static_cast<int>(sizeof(Elem<V>))>{});
}

template<int Bytes> struct FloatOf {
    using type = float;
};
template<> struct FloatOf<8> {
    using type = double;
};

// Keeps the compiler from seeing which lanes of a result are used: it would drop what was put into the others.
template<class V> QVR_INLINE V opaque(V v)
{
    if constexpr (sizeof(V) == 4 || sizeof(V) == 8) {
        auto x = bitcast<typename FloatOf<sizeof(V)>::type>(v);
        __asm__("" : "+x"(x));
        return bitcast<V>(x);
    } else if constexpr (sizeof(V) > kVecBytes) {
        return concat(opaque(lo(v)), opaque(hi(v)));
    } else {
        __asm__("" : "+x"(v));
        return v;
    }
}

// v == 0 by the caller's arithmetic, where a denormal may count as zero. Of what it has seen as an integer the compiler
// would test the bits.
template<class V> QVR_INLINE Mask<V> isZero(V v)
{
    if constexpr (lanes<V> == 1) {
        Elem<V> x = v[0];
        __asm__("" : "+x"(x));
        return Mask<V>{x == 0 ? -1 : 0};
    } else if constexpr (sizeof(V) < 16) {
        return slice<0, lanes<V>>(isZero(padTo16(v)));
    } else {
        return opaque(v) == V{};
    }
}
QVR_INLINE bool isZero(float x)
{
    return isZero(Vec<float, 1>{x})[0] != 0;
}

// Of floats that are not negative: whether a lane is above the limit, or a NaN. The usual comparison of floats would
// raise the invalid flag for a NaN; the bits are ordered as the numbers.
template<class V> QVR_INLINE Mask<V> isAbove(V v, float limit)
{
    if constexpr (kAvx && !kAvx2 && sizeof(V) == 32)
        return bitcast<Mask<V>>(_mm256_cmp_ps(bitcast<__m256>(v), _mm256_set1_ps(limit), _CMP_NLE_UQ));
    else if constexpr (kAvx && !kAvx2 && sizeof(V) > 32)
        return concat(isAbove(lo(v), limit), isAbove(hi(v), limit));
    else
        return bitcast<Mask<V>>(v) > __builtin_bit_cast(int32_t, limit);
}

// Two floats twice, any other vector as it is. Instructions work on whole registers: what is in unused lanes could
// raise exceptions that no element raises. What is computed of it is made opaque before its lanes are taken.
template<class V> QVR_INLINE auto wholeRegister(V v)
{
    if constexpr (kIsFloat<Elem<V>> && lanes<V> > 1 && sizeof(V) < 16)
        return padTo16(v);
    else
        return v;
}

// ---- Memory ---------------------------------------------------------------------------------------------------------

template<class V> QVR_INLINE V load(const void* p)
{
    V v;
    __builtin_memcpy(&v, p, sizeof v);
    return v;
}
template<class V> QVR_INLINE V loadAligned(const void* p)
{
    return load<V>(__builtin_assume_aligned(p, sizeof(V) < kVecBytes ? sizeof(V) : kVecBytes));
}
template<bool Aligned, class V> QVR_INLINE V loadIf(const void* p)
{
    if constexpr (Aligned)
        return loadAligned<V>(p);
    else
        return load<V>(p);
}
template<class V> QVR_INLINE void store(void* p, V v)
{
    __builtin_memcpy(p, &v, sizeof v);
}
template<class V> QVR_INLINE void storeAligned(void* p, V v)
{
    store(__builtin_assume_aligned(p, sizeof(V) < kVecBytes ? sizeof(V) : kVecBytes), v);
}

template<bool Aligned, class V> QVR_INLINE void storeIf(void* p, V v)
{
    if constexpr (Aligned)
        storeAligned(p, v);
    else
        store(p, v);
}

// Pairs re, im, re, im, ... from memory, sorted: 2 N elements into N real and N imaginary parts. Loads by 16 bytes into
// both halves leave one shuffle within the blocks for each result.
template<class V> QVR_INLINE void loadComplex(const Elem<V>* p, V& re, V& im)
{
    constexpr int N = lanes<V>;
    if constexpr (sizeof(V) > kVecBytes) {
        decltype(lo(V{})) r0, r1, i0, i1;
        loadComplex(p, r0, i0);
        loadComplex(p + N, r1, i1);
        re = concat(r0, r1);
        im = concat(i0, i1);
    } else {
        V a, b;
        if constexpr (sizeof(V) == 32) {
            using H = decltype(lo(V{}));
            constexpr int h = N / 2;
            a = concat(load<H>(p), load<H>(p + 2 * h));
            b = concat(load<H>(p + h), load<H>(p + 3 * h));
        } else {
            a = load<V>(p);
            b = load<V>(p + N);
        }
        if constexpr (sizeof(Elem<V>) == 4) {
            re = shuffleBlocks<0, 2, 4, 6>(a, b);
            im = shuffleBlocks<1, 3, 5, 7>(a, b);
        } else {
            re = shuffleBlocks<0, 2>(a, b);
            im = shuffleBlocks<1, 3>(a, b);
        }
    }
}

// Past the caches, to an aligned address; streamFence orders it before later stores.
template<class V> QVR_INLINE void stream(void* p, V v)
{
    __builtin_nontemporal_store(v, static_cast<V*>(p));
}
QVR_INLINE void streamFence()
{
    _mm_sfence();
}

// The first n < N lanes; nothing behind them is touched, and the other lanes of a load are zero.
template<class V> QVR_INLINE V loadPartial(const void* p, int n)
{
    if constexpr (lanes<V> == 1) {
        return V{};
    } else {
        using H = decltype(lo(V{}));
        const char* c = static_cast<const char*>(p);
        if (n >= lanes<H>)
            return concat(load<H>(c), loadPartial<H>(c + sizeof(H), n - lanes<H>));
        return concat(loadPartial<H>(c, n), H{});
    }
}
template<class V> QVR_INLINE void storePartial(void* p, V v, int n)
{
    if constexpr (lanes<V> > 1) {
        char* c = static_cast<char*>(p);
        auto part = lo(v);
        if (n >= lanes<decltype(part)>) {
            store(c, part);
            c += sizeof part;
            n -= lanes<decltype(part)>;
            part = hi(v);
        }
        storePartial(c, part, n);
    }
}

// ---- Arithmetic -----------------------------------------------------------------------------------------------------

// The rule of the instructions: b whenever a < b (a > b) does not hold, so for a NaN on either side and equal zeros.
template<class V> QVR_INLINE V min(V a, V b)
{
    return a < b ? a : b;
}
template<class V> QVR_INLINE V max(V a, V b)
{
    return a > b ? a : b;
}

template<class V> QVR_INLINE V abs(V v)
{
    return bitcast<V>(bits(v) & ~splat<Bits<V>>(Elem<Bits<V>>{1} << (8 * sizeof(Elem<V>) - 1)));
}

template<class V> QVR_INLINE V sqrt(V v)
{
    return __builtin_elementwise_sqrt(v);
}

// The processor's estimate of 1 / sqrt(x), about twelve bits.
QVR_INLINE float reciprocalRootEstimate(float x)
{
    return _mm_cvtss_f32(_mm_rsqrt_ss(_mm_set_ss(x)));
}

// a * b + c, in one rounding where the level has fused operations and in two elsewhere.
template<class V> QVR_INLINE V fma(V a, V b, V c)
{
    if constexpr (kFma)
        return __builtin_elementwise_fma(a, b, c);
    else
        return a * b + c;
}

// Integer sums and differences that stop at the ends of the lane's range.
template<class V> QVR_INLINE V addSaturate(V a, V b)
{
    return __builtin_elementwise_add_sat(a, b);
}
template<class V> QVR_INLINE V subSaturate(V a, V b)
{
    return __builtin_elementwise_sub_sat(a, b);
}

// Shifts of every lane by one count, which is below the lane's width; to the right the sign fills signed lanes.
template<class V> QVR_INLINE V shiftLeft(V v, int count)
{
    return bitcast<V>(bits(v) << splat<Bits<V>>(static_cast<Elem<Bits<V>>>(count)));
}
template<class V> QVR_INLINE V shiftRight(V v, int count)
{
    return v >> splat<V>(static_cast<Elem<V>>(count));
}

// All lanes joined by f(half, other half), halves first. Half a register is never computed on by itself: its other half
// would hold anything, and raise exceptions.
template<class V, class F> QVR_INLINE Elem<V> foldLanes(V v, const F& f)
{
    if constexpr (lanes<V> == 1) {
        return v[0];
    } else if constexpr (sizeof(V) == 16 && sizeof(Elem<V>) == 4 && kIsFloat<Elem<V>>) {
        using One = Vec<Elem<V>, 1>;
        const V pairs = opaque(f(v, shuffleBlocks<2, 3, 0, 1>(v)));
        return f(One{pairs[0]}, One{pairs[1]})[0];
    } else {
        return foldLanes(f(lo(v), hi(v)), f);
    }
}

// The sum of all lanes, halves first.
template<class V> QVR_INLINE Elem<V> sumLanes(V v)
{
    return foldLanes(v, [](auto a, auto b) { return a + b; });
}

// Lane k: the sum of the lanes 0 to k.
template<int K, class V, int... I> QVR_INLINE V moveLanesUp(V v, Indices<I...>)
{
    return __builtin_shufflevector(V{}, v, (lanes<V> - K + I)...);
}
template<int K = 1, class V> QVR_INLINE V prefixSums(V v)
{
    if constexpr (K >= lanes<V>)
        return v;
    else
        return prefixSums<2 * K>(v + moveLanesUp<K>(v, Iota<lanes<V>>{}));
}

// Even lanes a - b, odd lanes a + b.
template<class V> QVR_INLINE V subAdd(V a, V b)
{
    if constexpr (!kSse3) {
        const Bits<V> lane = iota<Bits<V>>();
        const Bits<V> sign = (~lane & 1) << (8 * sizeof(Elem<V>) - 1);
        return a + bitcast<V>(bits(b) ^ sign);
    } else if constexpr (sizeof(V) > kVecBytes) {
        return byHalves([](auto... x) { return subAdd(x...); }, a, b);
    } else if constexpr (sizeof(V) == 32) {
        if constexpr (sizeof(Elem<V>) == 4)
            return bitcast<V>(_mm256_addsub_ps(bitcast<__m256>(a), bitcast<__m256>(b)));
        else
            return bitcast<V>(_mm256_addsub_pd(bitcast<__m256d>(a), bitcast<__m256d>(b)));
    } else {
        if constexpr (sizeof(Elem<V>) == 4)
            return bitcast<V>(_mm_addsub_ps(bitcast<__m128>(a), bitcast<__m128>(b)));
        else
            return bitcast<V>(_mm_addsub_pd(bitcast<__m128d>(a), bitcast<__m128d>(b)));
    }
}

// ---- Rounding and conversion ----------------------------------------------------------------------------------------

// Exact or current-rounding conversion between element types of equal lane count; a float out of an integer's range
// must not come here.
template<class To, class From> QVR_INLINE Vec<To, lanes<From>> convert(From v)
{
    // Below SSE4.1 nothing extends a sign: 16 bits come in as the upper half of 32 and are shifted down. Seeing that,
    // the compiler would take whatever a register holds for the lower half, and wait for it.
    if constexpr (!kSse41 && sizeof(Elem<From>) == 2 && Elem<From>(-1) < 0 && sizeof(To) >= 4 && lanes<From> == 8) {
        using Wide = Vec<int32_t, 4>;
        Wide low = bitcast<Wide>(zipLo(v, v)), high = bitcast<Wide>(zipHi(v, v));
        __asm__("" : "+x"(low), "+x"(high));
        return concat(convert<To>(low >> 16), convert<To>(high >> 16));
    }
    return __builtin_convertvector(v, Vec<To, lanes<From>>);
}

// To int32 by the current rounding mode, or toward zero. NaN and what does not fit give 0x80000000.
template<bool Truncate, class V> QVR_INLINE Vec<int32_t, lanes<V>> toInt32(V v)
{
    using R = Vec<int32_t, lanes<V>>;
    constexpr bool isFloat = sizeof(Elem<V>) == 4;
    if constexpr (sizeof(V) > kVecBytes) {
        return concat(toInt32<Truncate>(lo(v)), toInt32<Truncate>(hi(v)));
    } else if constexpr (sizeof(V) == 32) {
        if constexpr (isFloat)
            return bitcast<R>(Truncate ? _mm256_cvttps_epi32(bitcast<__m256>(v))
                                       : _mm256_cvtps_epi32(bitcast<__m256>(v)));
        else
            return bitcast<R>(Truncate ? _mm256_cvttpd_epi32(bitcast<__m256d>(v))
                                       : _mm256_cvtpd_epi32(bitcast<__m256d>(v)));
    } else if constexpr (lanes<V> == 1) {
        if constexpr (isFloat)
            return R{Truncate ? _mm_cvttss_si32(__m128{v[0]}) : _mm_cvtss_si32(__m128{v[0]})};
        else
            return R{Truncate ? _mm_cvttsd_si32(__m128d{v[0]}) : _mm_cvtsd_si32(__m128d{v[0]})};
    } else if constexpr (isFloat) {
        const __m128 x = bitcast<__m128>(padTo16(v));
        return slice<0, lanes<V>>(bitcast<Vec<int32_t, 4>>(Truncate ? _mm_cvttps_epi32(x) : _mm_cvtps_epi32(x)));
    } else {
        const __m128d x = bitcast<__m128d>(v);
        return lo(bitcast<Vec<int32_t, 4>>(Truncate ? _mm_cvttpd_epi32(x) : _mm_cvtpd_epi32(x)));
    }
}
template<class V> QVR_INLINE auto toInt(V v)
{
    return toInt32<false>(v);
}
template<class V> QVR_INLINE auto toIntTruncate(V v)
{
    return toInt32<true>(v);
}

// int32 to int16 with saturation.
template<class V> QVR_INLINE Vec<int16_t, lanes<V>> packSaturate(V v)
{
    static_assert(sizeof(Elem<V>) == 4);
    if constexpr (lanes<V> == 16 && kAvx2) {
        const __m256i a = bitcast<__m256i>(lo(v)), b = bitcast<__m256i>(hi(v));
        return bitcast<Vec<int16_t, 16>>(_mm256_permute4x64_epi64(_mm256_packs_epi32(a, b), 0xD8));
    } else if constexpr (lanes<V> > 8) {
        return concat(packSaturate(lo(v)), packSaturate(hi(v)));
    } else if constexpr (lanes<V> == 8) {
        return bitcast<Vec<int16_t, 8>>(_mm_packs_epi32(bitcast<__m128i>(lo(v)), bitcast<__m128i>(hi(v))));
    } else {
        const __m128i x = bitcast<__m128i>(padTo16(v));
        return slice<0, lanes<V>>(bitcast<Vec<int16_t, 8>>(_mm_packs_epi32(x, x)));
    }
}

// Sums of neighbouring 16-bit lanes, in 32 bits.
template<class V> QVR_INLINE Vec<int32_t, lanes<V> / 2> pairSums(V v)
{
    using R = Vec<int32_t, lanes<V> / 2>;
    if constexpr (sizeof(V) > (kAvx2 ? 32 : 16))
        return concat(pairSums(lo(v)), pairSums(hi(v)));
    else if constexpr (sizeof(V) == 32)
        return bitcast<R>(_mm256_madd_epi16(bitcast<__m256i>(v), _mm256_set1_epi16(1)));
    else
        return bitcast<R>(_mm_madd_epi16(bitcast<__m128i>(v), _mm_set1_epi16(1)));
}

// 16-bit products with saturation: low and high halves are joined to 32 bits and packed again.
template<class V> QVR_INLINE V mulSaturate(V a, V b)
{
    static_assert(sizeof(Elem<V>) == 2);
    if constexpr (sizeof(V) > (kAvx2 ? 32 : 16)) {
        return byHalves([](auto... x) { return mulSaturate(x...); }, a, b);
    } else if constexpr (sizeof(V) < 16) {
        return slice<0, lanes<V>>(mulSaturate(padTo16(a), padTo16(b)));
    } else if constexpr (sizeof(V) == 32) {
        const __m256i low = _mm256_mullo_epi16(bitcast<__m256i>(a), bitcast<__m256i>(b));
        const __m256i high = _mm256_mulhi_epi16(bitcast<__m256i>(a), bitcast<__m256i>(b));
        return bitcast<V>(_mm256_packs_epi32(_mm256_unpacklo_epi16(low, high), _mm256_unpackhi_epi16(low, high)));
    } else {
        const __m128i low = _mm_mullo_epi16(bitcast<__m128i>(a), bitcast<__m128i>(b));
        const __m128i high = _mm_mulhi_epi16(bitcast<__m128i>(a), bitcast<__m128i>(b));
        return bitcast<V>(_mm_packs_epi32(_mm_unpacklo_epi16(low, high), _mm_unpackhi_epi16(low, high)));
    }
}

// Products of 16-bit lanes, neighbours added to 32 bits: a0 b0 + a1 b1, ... Only (-32768)^2 + (-32768)^2 wraps.
template<class V> QVR_INLINE Vec<int32_t, lanes<V> / 2> addProductPairs(V a, V b)
{
    static_assert(sizeof(Elem<V>) == 2);
    if constexpr (kAvx2 && sizeof(V) == 32)
        return bitcast<Vec<int32_t, 8>>(_mm256_madd_epi16(bitcast<__m256i>(a), bitcast<__m256i>(b)));
    else if constexpr (sizeof(V) > 16)
        return byHalves([](auto... x) { return addProductPairs(x...); }, a, b);
    else
        return bitcast<Vec<int32_t, 4>>(_mm_madd_epi16(bitcast<__m128i>(a), bitcast<__m128i>(b)));
}

// ---- Nearest integer, estimates -------------------------------------------------------------------------------------

// The integer nearest to v, whatever rounding MXCSR asks for, as a value of the same type. Ties go to either side.
// Below SSE4.1 v must fit an int32.
template<class V> QVR_INLINE V roundNearest(V v)
{
    if constexpr (kSse41) {
        return __builtin_elementwise_roundeven(v);
    } else {
        const Elem<V> half = Elem<V>(0.5);
        const Bits<V> sign = bits(v) & bits(splat<V>(Elem<V>(-0.0)));
        return convert<Elem<V>>(toIntTruncate(v + bitcast<V>(bits(splat<V>(half)) | sign)));
    }
}

// 1 / v to within 1.5 * 2^-12 of its value. Zero and denormals give an infinity, magnitudes beyond 2^126 zero.
template<class V> QVR_INLINE V reciprocalEstimate(V v)
{
    static_assert(sizeof(Elem<V>) == 4);
    if constexpr (sizeof(V) > kVecBytes)
        return byHalves([](auto x) { return reciprocalEstimate(x); }, v);
    else if constexpr (sizeof(V) == 32)
        return bitcast<V>(_mm256_rcp_ps(bitcast<__m256>(v)));
    else
        return slice<0, lanes<V>>(bitcast<Vec<float, 4>>(_mm_rcp_ps(bitcast<__m128>(padTo16(v)))));
}

// 1 / sqrt(v) to within 1.5 * 2^-12 of its value.
template<class V> QVR_INLINE V rootReciprocalEstimate(V v)
{
    static_assert(sizeof(Elem<V>) == 4);
    if constexpr (sizeof(V) > kVecBytes)
        return byHalves([](auto x) { return rootReciprocalEstimate(x); }, v);
    else if constexpr (sizeof(V) == 32)
        return bitcast<V>(_mm256_rsqrt_ps(bitcast<__m256>(v)));
    else
        return slice<0, lanes<V>>(bitcast<Vec<float, 4>>(_mm_rsqrt_ps(bitcast<__m128>(padTo16(v)))));
}

// ---- Masked access --------------------------------------------------------------------------------------------------

// The first n <= N lanes; nothing behind them is touched, and the other lanes of a load are zero. One instruction for
// each register where the level has it.
template<class V> QVR_INLINE V loadFirst(const void* p, int n)
{
    if constexpr (kAvx && sizeof(V) > 32) {
        using H = decltype(lo(V{}));
        return concat(loadFirst<H>(p, n), loadFirst<H>(static_cast<const char*>(p) + sizeof(H), n - lanes<H>));
    } else if constexpr (kAvx && sizeof(V) == 32 && sizeof(Elem<V>) == 4) {
        const Mask<V> wanted = iota<Mask<V>>() < n;
        return bitcast<V>(_mm256_maskload_ps(static_cast<const float*>(p), bitcast<__m256i>(wanted)));
    } else {
        return n == lanes<V> ? load<V>(p) : loadPartial<V>(p, n);
    }
}
template<class V> QVR_INLINE void storeFirst(void* p, V v, int n)
{
    if constexpr (kAvx && sizeof(V) > 32) {
        using H = decltype(lo(V{}));
        storeFirst(p, lo(v), n);
        storeFirst(static_cast<char*>(p) + sizeof(H), hi(v), n - lanes<H>);
    } else if constexpr (kAvx && sizeof(V) == 32 && sizeof(Elem<V>) == 4) {
        const Mask<V> wanted = iota<Mask<V>>() < n;
        _mm256_maskstore_ps(static_cast<float*>(p), bitcast<__m256i>(wanted), bitcast<__m256>(v));
    } else if (n == lanes<V>) {
        store(p, v);
    } else {
        storePartial(p, v, n);
    }
}

// The upper halves of 16-bit products.
template<class V> QVR_INLINE V mulHigh(V a, V b)
{
    constexpr bool isSigned = Elem<V>(-1) < 0;
    if constexpr (sizeof(V) > (kAvx2 ? 32 : 16)) {
        return byHalves([](auto... x) { return mulHigh(x...); }, a, b);
    } else if constexpr (sizeof(V) == 32) {
        const __m256i x = bitcast<__m256i>(a), y = bitcast<__m256i>(b);
        return bitcast<V>(isSigned ? _mm256_mulhi_epi16(x, y) : _mm256_mulhi_epu16(x, y));
    } else {
        const __m128i x = bitcast<__m128i>(padTo16(a)), y = bitcast<__m128i>(padTo16(b));
        return slice<0, lanes<V>>(bitcast<Vec<Elem<V>, 8>>(isSigned ? _mm_mulhi_epi16(x, y) : _mm_mulhi_epu16(x, y)));
    }
}

// (a * b + 2^14) / 2^15 rounded down, of signed 16-bit lanes; not both -2^15.
template<class V> QVR_INLINE V mulRounded(V a, V b)
{
    static_assert(sizeof(Elem<V>) == 2);
    if constexpr (!kSsse3) // left to itself, the compiler goes by way of bytes and 32 bits
        return opaque(mulHigh(a, b)) * 2 + bitcast<V>((opaque(bits(a) * bits(b) >> 14) + 1) >> 1);
    else if constexpr (sizeof(V) > (kAvx2 ? 32 : 16))
        return byHalves([](auto... x) { return mulRounded(x...); }, a, b);
    else if constexpr (sizeof(V) < 16)
        return slice<0, lanes<V>>(mulRounded(padTo16(a), padTo16(b)));
    else if constexpr (sizeof(V) == 32)
        return bitcast<V>(_mm256_mulhrs_epi16(bitcast<__m256i>(a), bitcast<__m256i>(b)));
    else
        return bitcast<V>(_mm_mulhrs_epi16(bitcast<__m128i>(a), bitcast<__m128i>(b)));
}

// ---- Bytes ----------------------------------------------------------------------------------------------------------

// Each lane of `from` picks a byte of its 16-byte block, or zero if its top bit is set. From SSSE3 on.
template<class V> QVR_INLINE V shuffleBytes(V bytes, V from)
{
    static_assert(kSsse3 && sizeof(Elem<V>) == 1);
    if constexpr (sizeof(V) > (kAvx2 ? 32 : 16))
        return byHalves([](auto... x) { return shuffleBytes(x...); }, bytes, from);
    else if constexpr (sizeof(V) == 32)
        return bitcast<V>(_mm256_shuffle_epi8(bitcast<__m256i>(bytes), bitcast<__m256i>(from)));
    else
        return bitcast<V>(_mm_shuffle_epi8(bitcast<__m128i>(bytes), bitcast<__m128i>(from)));
}

// Products of bytes and signed bytes, neighbours added with saturation: a0 b0 + a1 b1, ... From SSSE3 on.
template<class V> QVR_INLINE Vec<int16_t, lanes<V> / 2> addBytePairs(V a, Vec<int8_t, lanes<V>> b)
{
    static_assert(kSsse3 && sizeof(Elem<V>) == 1);
    using R = Vec<int16_t, lanes<V> / 2>;
    if constexpr (sizeof(V) > (kAvx2 ? 32 : 16))
        return byHalves([](auto... x) { return addBytePairs(x...); }, a, b);
    else if constexpr (sizeof(V) == 32)
        return bitcast<R>(_mm256_maddubs_epi16(bitcast<__m256i>(a), bitcast<__m256i>(b)));
    else
        return bitcast<R>(_mm_maddubs_epi16(bitcast<__m128i>(a), bitcast<__m128i>(b)));
}

// int16 to bytes, clamped to 0..255: a's, then b's.
template<class V> QVR_INLINE Vec<uint8_t, 2 * lanes<V>> packWords(V a, V b)
{
    static_assert(sizeof(Elem<V>) == 2 && (sizeof(V) == 16 || (sizeof(V) == 32 && kAvx2)));
    using R = Vec<uint8_t, 2 * lanes<V>>;
    if constexpr (sizeof(V) == 32)
        return bitcast<R>(
            _mm256_permute4x64_epi64(_mm256_packus_epi16(bitcast<__m256i>(a), bitcast<__m256i>(b)), 0xD8));
    else
        return bitcast<R>(_mm_packus_epi16(bitcast<__m128i>(a), bitcast<__m128i>(b)));
}

// int32 to bytes, clamped to 0..255 by way of int16.
template<class V> QVR_INLINE Vec<uint8_t, lanes<V>> packBytes(V v)
{
    static_assert(sizeof(Elem<V>) == 4);
    using R = Vec<uint8_t, lanes<V>>;
    if constexpr (lanes<V> == 32 && kAvx2) {
        const auto pack16 = [](auto x) { return _mm256_packs_epi32(bitcast<__m256i>(lo(x)), bitcast<__m256i>(hi(x))); };
        const __m256i blocks = _mm256_packus_epi16(pack16(lo(v)), pack16(hi(v)));
        // Fours of bytes now stand in the order 0 2 4 6 | 1 3 5 7.
        return bitcast<R>(_mm256_permutevar8x32_epi32(blocks, _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7)));
    } else if constexpr (lanes<V> > 16) {
        return concat(packBytes(lo(v)), packBytes(hi(v)));
    } else {
        const auto words = packSaturate(v);
        if constexpr (lanes<V> == 16)
            return bitcast<R>(_mm_packus_epi16(bitcast<__m128i>(lo(words)), bitcast<__m128i>(hi(words))));
        else
            return slice<0, lanes<V>>(bitcast<Vec<uint8_t, 16>>(
                _mm_packus_epi16(bitcast<__m128i>(padTo16(words)), bitcast<__m128i>(padTo16(words)))));
    }
}

// ---- Masks ----------------------------------------------------------------------------------------------------------

// Nonzero if any lane of a comparison's result is true.
template<class V> QVR_INLINE int anyTrue(V mask)
{
    if constexpr (sizeof(V) > kVecBytes)
        return anyTrue(lo(mask) | hi(mask));
    else if constexpr (sizeof(V) == 32 && sizeof(Elem<V>) >= 4)
        return _mm256_movemask_ps(bitcast<__m256>(mask));
    else if constexpr (sizeof(V) == 32)
        return !_mm256_testz_si256(bitcast<__m256i>(mask), bitcast<__m256i>(mask));
    else if constexpr (sizeof(V) == 16)
        return _mm_movemask_epi8(bitcast<__m128i>(mask));
    else if constexpr (lanes<V> == 1)
        return mask[0] != 0;
    else
        return anyTrue(padTo16(mask));
}

// One bit for each byte of a comparison's result of at most 32 bytes.
template<class V> QVR_INLINE uint32_t byteBits(V mask)
{
    if constexpr (sizeof(V) == 32 && kAvx2)
        return static_cast<uint32_t>(_mm256_movemask_epi8(bitcast<__m256i>(mask)));
    else if constexpr (sizeof(V) == 32)
        return byteBits(lo(mask)) | byteBits(hi(mask)) << 16;
    else
        return static_cast<uint32_t>(_mm_movemask_epi8(bitcast<__m128i>(mask)));
}
// One bit for each lane of at least four bytes.
template<class V> QVR_INLINE int laneBits(V mask)
{
    if constexpr (sizeof(V) > kVecBytes)
        return laneBits(lo(mask)) | laneBits(hi(mask)) << lanes<V> / 2;
    else if constexpr (sizeof(V) == 32 && sizeof(Elem<V>) == 8)
        return _mm256_movemask_pd(bitcast<__m256d>(mask));
    else if constexpr (sizeof(V) == 32)
        return _mm256_movemask_ps(bitcast<__m256>(mask));
    else if constexpr (sizeof(Elem<V>) == 8)
        return _mm_movemask_pd(bitcast<__m128d>(mask));
    else
        return _mm_movemask_ps(bitcast<__m128>(mask));
}
// The number of the first true lane; there must be one.
template<class V> QVR_INLINE int firstTrue(V mask)
{
    return __builtin_ctz(byteBits(mask)) / static_cast<int>(sizeof(Elem<V>));
}

} // namespace

#endif
