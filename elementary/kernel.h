// The frame of the accuracy-tagged functions.
//
// A function has a table of three kernels, one for each accuracy class; an export picks its class from the table. A
// kernel is the whole call: checks, environment, loop, status. Slot mx has one kernel, of class a24, in all three
// places.
//
// The loop goes in blocks. A block without special elements runs straight through the formula; in any other block every
// element goes through the scalar path of the kernel. The tail is a block with some of its lanes switched off, so its
// elements get the bits that they would get anywhere else.
//
// A formula is a record K:
//   K::kName               name for the error hook
//   K::kBlock              floats in a block
//   K::kRegister           floats that eval takes at once, at most
//   k.care(x...)           mask of the lanes that need the scalar path
//   k.eval(x...)           the formula; lanes under the mask may give anything
//   k.scalar(error, x...)  one element by the scalar path; error(code) reports it and returns nothing
//   k.finite(x)            perhaps: the same of a vector of finite elements, none of them an error
#ifndef QVR_ELEMENTARY_KERNEL_H
#define QVR_ELEMENTARY_KERNEL_H

#include "elementary/coefficients.h"
#include "elementary/tables.h"
#include "frame/ahead.h"
#include "frame/mxcsr.h"
#include "frame/simd.h"
#include "frame/status.h"

namespace {

// The classes in the order of a kernel table.
enum class Accuracy {
    a21, // tag A21: float arithmetic with more steps than a11
    a24, // tag A24: double arithmetic inside
    a11, // tag A11: float arithmetic with the shortest polynomial and reduction
};

typedef qvrStatus Kernel1(const float* src, float* dst, int len);
typedef qvrStatus Kernel2(const float* src1, const float* src2, float* dst, int len);
typedef qvrStatus KernelC(const float* src, float value, float* dst, int len);

constexpr uint32_t kQuietNan = 0xFFC00000; // result outside a domain, except for the natural logarithm
constexpr uint32_t kSignBit = 0x80000000;
constexpr uint32_t kInfinityBits = 0x7F800000;
constexpr uint32_t kSmallestNormal = 0x00800000;

template<class V> constexpr bool kIsDouble = sizeof(Elem<V>) == 8;

// Floats in a block: enough independent vectors to hide latencies, few enough to stay in registers.
template<Accuracy A> constexpr int kBlockOf = A == Accuracy::a24 ? (kSlot == qvrSlot_mx ? 4 : 8) : kAvx ? 16 : 8;

// Floats whose arithmetic fills a register.
template<Accuracy A> constexpr int kRegisterOf = kVecBytes / (A == Accuracy::a24 ? 8 : 4);

// ---- Formula helpers ------------------------------------------------------------------------------------------------

// a * c + b and b - a * c with a constant c. The compiler must not see that a rounded product is subtracted: it would
// exchange b - a * c for b + a * -c in one place and not in another, and the two differ where the caller rounds up or
// down.
template<class V> QVR_INLINE V addProduct(V b, V a, Elem<V> c)
{
    if constexpr (kFma)
        return fma(a, splat<V>(c), b);
    else
        return b + (c < 0 ? opaque(a * splat<V>(c)) : a * splat<V>(c));
}
template<class V> QVR_INLINE V subtractProduct(V b, V a, Elem<V> c)
{
    return addProduct(b, a, -c);
}
// The same of a variable.
template<class V> QVR_INLINE V subtractProduct(V b, V a, V c)
{
    if constexpr (kFma)
        return fma(a, -c, b);
    else
        return b - opaque(a * c);
}

// Horner's rule, coefficients from the highest power down.
template<class V> QVR_INLINE V horner(V, V sum)
{
    return sum;
}
template<class V, class... C> QVR_INLINE V horner(V x, V sum, Elem<V> c, C... rest)
{
    return horner(x, fma(sum, x, splat<V>(c)), static_cast<Elem<V>>(rest)...);
}
template<class V, class... C> QVR_INLINE V polynomial(V x, double first, double second, C... rest)
{
    using T = Elem<V>;
    return horner(x, addProduct(splat<V>(static_cast<T>(second)), x, static_cast<T>(first)), static_cast<T>(rest)...);
}
template<class V, int N> QVR_INLINE V polynomial(V x, const double (&c)[N])
{
    using T = Elem<V>;
    V sum = addProduct(splat<V>(static_cast<T>(c[1])), x, static_cast<T>(c[0]));
#pragma clang loop unroll(full)
    for (int i = 2; i < N; i++)
        sum = fma(sum, x, splat<V>(static_cast<T>(c[i])));
    return sum;
}

template<class V> QVR_INLINE Bits<V> signOf(V v)
{
    return bits(v) & bits(splat<V>(Elem<V>(-0.0)));
}
template<class V> QVR_INLINE V withSign(V v, Bits<V> sign)
{
    return bitcast<V>(bits(v) ^ sign);
}

// A sum of terms that cancel is -0 where the caller rounds down: the result y is replaced where it is known to be a
// zero, that of x for an odd function, +0 for one with its zero at a place.
template<bool kNearest, class V> QVR_INLINE V oddZero(V x, V y)
{
    if constexpr (kNearest)
        return y;
    else
        return isZero(x) ? bitcast<V>(signOf(x)) : y;
}
template<bool kNearest, class V> QVR_INLINE V zeroAt(float place, V x, V y)
{
    if constexpr (kNearest)
        return y;
    else
        return x == splat<V>(place) ? V{} : y;
}

// Not finite, positive and normal.
template<class V> QVR_INLINE Mask<V> outsideNormal(V x)
{
    // The bits as a signed integer: below the smallest normal for zeros, denormals and negatives.
    const Mask<V> word = bitcast<Mask<V>>(x);
    return (word < static_cast<int32_t>(kSmallestNormal)) | (word >= static_cast<int32_t>(kInfinityBits));
}

// A power of two whose last mantissa bit counts ones: the sum of it and an integer shows that integer in its low bits.
template<class T> constexpr T kMagic = sizeof(T) == 4 ? T(12582912.0) : T(6755399441055744.0); // 1.5 * 2^23, 1.5 * 2^52

// n = the integer nearest to x * c; the result holds n in its low bits. With kNearest the caller's rounding is to
// nearest, and adding the magic number rounds; without it the rounding happens before.
template<bool kNearest, class V> QVR_INLINE Bits<V> nearestInteger(V x, Elem<V> c, V& n)
{
    V sum;
    if constexpr (kNearest) {
        sum = fma(x, splat<V>(c), splat<V>(kMagic<Elem<V>>));
        n = sum - kMagic<Elem<V>>;
    } else {
        n = roundNearest(x * c);
        sum = n + kMagic<Elem<V>>;
    }
    return bits(sum);
}

// 2^k with k in the low bits of a magic sum, -bias < k <= bias: the magic number itself leaves the word at the shift.
template<class V> QVR_INLINE V powerOfTwo(Bits<V> k, int add)
{
    constexpr int mantissa = kIsDouble<V> ? 52 : 23;
    using U = Elem<Bits<V>>;
    return bitcast<V>((k << mantissa) + (static_cast<U>(add) << mantissa));
}

// ---- The loop -------------------------------------------------------------------------------------------------------

struct Call {
    const float* src1;
    const float* src2;
    float* dst;
    const char* name;
    int status;
};

// Reports an element in error. The last report of a call is its status.
struct Error {
    Call& call;
    Index index;
    void operator()(qvrStatus code) const
    {
        call.status = code;
        qvrsMathErrorHook(code, index, call.src1, call.src2, call.dst, call.dst, call.name);
    }
};

template<class K, class... S> QVR_INLINE void eachScalar(const K& k, Call& call, Index from, Index to, const S*... src)
{
    for (Index i = from; i < to; i++)
        store(call.dst + i, k.scalar(Error{call, i}, load<Vec<float, 1>>(src + i)[0]...));
}
template<class K, class... S>
__attribute__((noinline)) void specialBlock(const K& k, Call& call, Index from, Index to, const S*... src)
{
    if constexpr (requires { k.finite(Vec<float, 1>{}); }) {
        using V = Full<float>;
        for (; from < to; from += lanes<V>) {
            const Index end = to - from < lanes<V> ? to : from + lanes<V>;
            const int n = static_cast<int>(end - from);
            const V x = loadFirst<V>(src + from..., n);
            if (__builtin_expect(anyTrue(isAbove(abs(x), 0x1.fffffep127f)), 0))
                eachScalar(k, call, from, end, src...);
            else
                storeFirst(call.dst + from, k.finite(x), n);
        }
    } else {
        eachScalar(k, call, from, to, src...);
    }
}

// Formulas run on one register at a time: masks of wider vectors make poor code. The parts are independent, so they
// overlap all the same.
template<class K, class V, class... W> QVR_INLINE V evalByRegisters(const K& k, V x, W... y)
{
    if constexpr (lanes<V> > K::kRegister)
        return concat(evalByRegisters(k, lo(x), lo(y)...), evalByRegisters(k, hi(x), hi(y)...));
    else
        return k.eval(x, y...);
}
template<class K, class V, class... W> QVR_INLINE auto careByRegisters(const K& k, V x, W... y)
{
    if constexpr (sizeof(V) > kVecBytes)
        return careByRegisters(k, lo(x), lo(y)...) | careByRegisters(k, hi(x), hi(y)...);
    else
        return k.care(x, y...);
}

// The first n lanes, and 1 in the others: an argument that is harmless in every formula.
template<class V> QVR_INLINE V loadOrOne(const float* src, int n)
{
    if constexpr (sizeof(V) > kVecBytes) {
        using H = decltype(lo(V{}));
        return concat(loadOrOne<H>(src, n < lanes<H> ? n : lanes<H>),
                      loadOrOne<H>(src + lanes<H>, n < lanes<H> ? 0 : n - lanes<H>));
    } else {
        return iota<Mask<V>>() < n ? loadFirst<V>(src, n) : splat<V>(1);
    }
}

// n <= B elements from place i on.
template<int B, class K> QVR_INLINE void partBlock(const K& k, Call& call, Index i, int n, const float* src)
{
    const auto x = loadOrOne<Vec<float, B>>(src + i, n);
    if (__builtin_expect(anyTrue(careByRegisters(k, x)), 0))
        specialBlock(k, call, i, i + n, src);
    else
        storeFirst(call.dst + i, evalByRegisters(k, x), n);
}
template<int B, class K>
QVR_INLINE void partBlock(const K& k, Call& call, Index i, int n, const float* src1, const float* src2)
{
    const auto x = loadOrOne<Vec<float, B>>(src1 + i, n), y = loadOrOne<Vec<float, B>>(src2 + i, n);
    if (__builtin_expect(anyTrue(careByRegisters(k, x, y)), 0))
        specialBlock(k, call, i, i + n, src1, src2);
    else
        storeFirst(call.dst + i, evalByRegisters(k, x, y), n);
}

// From this length on a first part block brings the destination to a vector boundary.
constexpr Index kAlignFrom = 256;

// The first n elements. Arithmetic must not move across the changes of MXCSR round it. The formula, which is long,
// stands once for each size of block.
template<class K, class... S> __attribute__((noinline)) void run(const K& k, Call& call, Index n, const S*... src)
{
    constexpr int B = K::kBlock;
    using V = Vec<float, B>;
    float* const dst = call.dst;
    Index i = 0;
    if constexpr (kAvx) {
        const uintptr_t address = reinterpret_cast<uintptr_t>(dst);
        if (n >= kAlignFrom && address % kVecBytes != 0 && address % sizeof(float) == 0) {
            i = static_cast<Index>(-address % kVecBytes / sizeof(float));
            run(k, call, i, src...);
        }
    }
    const bool far = isFar<float>(n);
    for (; i + B <= n; i += B) {
        if (__builtin_expect(far, 0)) {
            askFor(dst + i, kAheadBytes, B);
            (askFor(src + i, kAheadBytes, B), ...);
        }
        if (__builtin_expect(anyTrue(careByRegisters(k, load<V>(src + i)...)), 0))
            specialBlock(k, call, i, i + B, src...);
        else
            store(dst + i, evalByRegisters(k, load<V>(src + i)...));
    }
    const int rest = static_cast<int>(n - i);
    if (rest > B / 2)
        partBlock<B>(k, call, i, rest, src...);
    else if (rest > 0)
        partBlock<B / 2>(k, call, i, rest, src...);
}

// ---- Kernels --------------------------------------------------------------------------------------------------------

template<class... P> QVR_INLINE qvrStatus checkKernel(int len, const P*... pointers)
{
    if constexpr (kAvx)
        return checkLengthThenPointers(len, pointers...);
    else
        return checkPointersThenLength(len, pointers...);
}

// A kernel of one source. K<true> is for callers that round to nearest, K<false> for all others; where both are one
// type the choice folds away.
template<template<bool> class K> qvrStatus kernel1(const float* src, float* dst, int len)
{
    if (const qvrStatus status = checkKernel(len, src, dst))
        return status;
    Call call{src, src, dst, K<true>::kName, qvrOk};
    const uint32_t word = enterQuiet();
    if (word & kMxcsrRounding)
        run(K<false>{}, call, len, src);
    else
        run(K<true>{}, call, len, src);
    leaveQuiet(word);
    return call.status;
}
template<template<bool> class K> qvrStatus kernel2(const float* src1, const float* src2, float* dst, int len)
{
    if (const qvrStatus status = checkKernel(len, src1, src2, dst))
        return status;
    Call call{src1, src2, dst, K<true>::kName, qvrOk};
    const uint32_t word = enterQuiet();
    if (word & kMxcsrRounding)
        run(K<false>{}, call, len, src1, src2);
    else
        run(K<true>{}, call, len, src1, src2);
    leaveQuiet(word);
    return call.status;
}
// One source and a constant: K<...>{value}.
template<template<bool> class K> qvrStatus kernelC(const float* src, float value, float* dst, int len)
{
    if (const qvrStatus status = checkKernel(len, src, dst))
        return status;
    Call call{src, src, dst, K<true>::kName, qvrOk};
    const uint32_t word = enterQuiet();
    if (word & kMxcsrRounding)
        run(K<false>{value}, call, len, src);
    else
        run(K<true>{value}, call, len, src);
    leaveQuiet(word);
    return call.status;
}

} // namespace

// The table of a function's kernels: QVR_KERNELS(sinKernels, Kernel1, kernel1, Sine) for a formula
// Sine<Accuracy, bool>. Hidden, so that tests reach every class.
#define QVR_KERNELS(name, Type, maker, Formula)                                                                        \
    namespace {                                                                                                        \
    template<bool kNearest>                                                                                            \
    using Formula##A21 = Formula<kSlot == qvrSlot_mx ? Accuracy::a24 : Accuracy::a21, kNearest>;                       \
    template<bool kNearest> using Formula##A24 = Formula<Accuracy::a24, kNearest>;                                     \
    template<bool kNearest>                                                                                            \
    using Formula##A11 = Formula<kSlot == qvrSlot_mx ? Accuracy::a24 : Accuracy::a11, kNearest>;                       \
    }                                                                                                                  \
    extern "C" QVR_HIDDEN Type* const SLOT(name)[3];                                                                   \
    extern "C" Type* const SLOT(name)[3] = {maker<Formula##A21>, maker<Formula##A24>, maker<Formula##A11>};

#define QVR_CLASS_NAME(kAccuracy, name)                                                                                \
    (kAccuracy == Accuracy::a24 ? "s" name "_HA" : kAccuracy == Accuracy::a21 ? "s" name "_LA" : "s" name "_A11")

#endif
