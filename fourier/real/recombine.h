// Recombination: the spectrum Z of z[n] = x[2n] + i x[2n+1] to the spectrum X of x, and back.
//
// With j = M - k, a and b the values at k and j, and e = exp(-2 pi i k / N): X[k] = (a + conj b)/2 - i e (a - conj
// b)/2, X[j] the same with roles exchanged. Z is halved before it is added, so no step leaves the size of the bins. The
// inverse makes 2 Z[k] = a + conj b + i conj(e) (a - conj b) of the bins. Bin 0 is its own partner forward, and its
// imaginary part comes to nothing; back, its partner is X[M], and neither has an imaginary part.
//
// Tables hold e = (cos t, -sin t), t = 2 pi k / N, for k below N/4. In two levels they hold 1024 fine entries and then
// the coarse ones of k = 0, 1024, ...; e is their product.
//
// Vectors hold pairs. With fused operations a - conj b and a + conj b are one operation each, and the signs of the rest
// alternate by lane. Without, one sign is turned in b, one in the product and one in the second result.
#ifndef QVR_FOURIER_RECOMBINE_H
#define QVR_FOURIER_RECOMBINE_H

#include "fourier/real/kernel_table.h"

namespace {

constexpr int kFineOrder = 10;
constexpr Index kFine = Index{1} << kFineOrder;

// ---- One bin
// ---------------------------------------------------------------------------------------------------------

template<bool Inverse, class C> QVR_INLINE void recombinePair(C& a, C& b, C w)
{
    const auto p = a.re - b.re, q = a.im + b.im, s = a.re + b.re, d = a.im - b.im;
    const auto t = fma(p, w.im, Inverse ? -(q * w.re) : q * w.re);
    const auto u = fma(q, w.im, Inverse ? p * w.re : -(p * w.re));
    a = {s + t, d + u};
    b = {s - t, u - d};
}

template<bool Inverse, class C> QVR_INLINE void scaleForward(C& a, C& b, Elem<decltype(C::re)> factor)
{
    if constexpr (!Inverse) {
        const auto f = splat<decltype(C::re)>(factor);
        a = {a.re * f, a.im * f};
        b = {b.re * f, b.im * f};
    }
}

template<bool TwoLevel, class S> QVR_INLINE Cx<S> recombinationTwiddle(const Elem<S>* table, Index k)
{
    const auto at = [](const Elem<S>* p) { return Cx<S>{load<S>(p), load<S>(p + 1)}; };
    if constexpr (TwoLevel)
        return at(table + 2 * (kFine + (k >> kFineOrder))) * at(table + 2 * (k & (kFine - 1)));
    else
        return at(table + 2 * k);
}

// The i-th bin of a call alone, not bin 0.
template<bool Inverse, bool TwoLevel, class T> QVR_INLINE void recombineOne(const RecombineCall<T>& call, Index i)
{
    using S = Vec<T, 1>;
    const Index back = 2 * (call.count - i - 1);
    Cx<S> a = {load<S>(call.aIn + 2 * i), load<S>(call.aIn + 2 * i + 1)};
    Cx<S> b = {load<S>(call.bIn + back), load<S>(call.bIn + back + 1)};
    scaleForward<Inverse>(a, b, call.factor);
    recombinePair<Inverse>(a, b, recombinationTwiddle<TwoLevel, S>(call.table, call.k + i));
    store(call.aOut + 2 * i, a.re);
    store(call.aOut + 2 * i + 1, a.im);
    store(call.bOut + back, b.re);
    store(call.bOut + back + 1, b.im);
}

// A vector of bins of which bin 0 is real and as told, the others at p + 2.
template<class V> QVR_INLINE V firstThen(Elem<V> re, const Elem<V>* p)
{
    constexpr int H = lanes<V> / 2;
    if constexpr (H == 1)
        return V{re, 0};
    else
        return concat(firstThen<Vec<Elem<V>, H>>(re, p), load<Vec<Elem<V>, H>>(p + H));
}
// One of which the last bin is as told, the others at p.
template<class V> QVR_INLINE V thenLast(const Elem<V>* p, Elem<V> re, Elem<V> im)
{
    constexpr int H = lanes<V> / 2;
    if constexpr (H == 1)
        return V{re, im};
    else
        return concat(load<Vec<Elem<V>, H>>(p), thenLast<Vec<Elem<V>, H>>(p + H, re, im));
}
template<class V> QVR_INLINE void storeAllButLast(Elem<V>* p, V v)
{
    if constexpr (lanes<V> > 2) {
        store(p, lo(v));
        storeAllButLast(p + lanes<V> / 2, hi(v));
    }
}

// ---- Pairs ----------------------------------------------------------------------------------------------------------

// Even lanes of a, odd lanes of b. Of two fused forms that differ in the sign of the summand the compiler makes one.
template<class V, int... I> QVR_INLINE V interleavedLanes(V a, V b, Indices<I...>)
{
    return __builtin_shufflevector(a, b, (I + (I & 1) * lanes<V>)...);
}
// Kept from being joined with the shuffles that follow, after which the two forms would be computed in all lanes.
template<class V> QVR_INLINE V asOne(V v)
{
    __asm__("" : "+x"(v));
    return v;
}
// a b - c in even lanes and a b + c in odd ones, and the reverse.
template<class V> QVR_INLINE V multiplySubAdd(V a, V b, V c)
{
    if constexpr (kFma)
        return asOne(interleavedLanes(fma(a, b, -c), fma(a, b, c), Iota<lanes<V>>{}));
    else
        return subAdd(a * b, c);
}
template<class V> QVR_INLINE V multiplyAddSub(V a, V b, V c)
{
    if constexpr (kFma)
        return asOne(interleavedLanes(fma(a, b, c), fma(a, b, -c), Iota<lanes<V>>{}));
    else
        return subAdd(a * b, -c);
}

template<class V> QVR_INLINE V evenDup(V v)
{
    if constexpr (sizeof(Elem<V>) == 4)
        return shuffleBlocks<0, 0, 2, 2>(v);
    else
        return shuffleBlocks<0, 0>(v);
}
template<class V> QVR_INLINE V oddDup(V v)
{
    if constexpr (sizeof(Elem<V>) == 4)
        return shuffleBlocks<1, 1, 3, 3>(v);
    else
        return shuffleBlocks<1, 1>(v);
}
// Pairs in falling order.
template<class V> QVR_INLINE V reversedPairs(V v)
{
    if constexpr (sizeof(Elem<V>) == 4)
        return bitcast<V>(reversedLanes(bitcast<Vec<double, lanes<V> / 2>>(v)));
    else
        return swapHalves(v);
}

template<class T> struct RecombineStep {
    using V = Full<T>;
    static constexpr Index points = kLanes<T> / 2;
    // Below AVX only loads from boundaries are part of other instructions. Inverse transforms begin at any bin.
    template<bool Inverse> static constexpr bool alignedTwiddles = !kAvx && !Inverse;
    V a, b;

    template<bool Inverse, bool TwoLevel> QVR_INLINE void work(const T* table, Index k, T factor)
    {
        V w;
        if constexpr (TwoLevel) {
            const T* const coarse = table + 2 * (kFine + (k >> kFineOrder));
            const V fine = load<V>(table + 2 * (k & (kFine - 1)));
            w = multiplySubAdd(fine, splat<V>(coarse[0]), exchanged(fine) * splat<V>(coarse[1]));
        } else {
            w = loadIf<alignedTwiddles<Inverse>, V>(table + 2 * k);
        }
        V again = w;
        // A load can repeat floats on its way; the compiler would rather shuffle what it has.
        if constexpr (!TwoLevel && sizeof(T) == 4) {
            const T* same = table + 2 * k;
            __asm__("" : "+r"(same));
            again = loadIf<alignedTwiddles<Inverse>, V>(same);
        }
        const V re = evenDup(w), im = oddDup(again);
        if constexpr (!kFma) {
            const V y = Inverse ? conjugated(reversedPairs(b)) : reversedPairs(b) * alternating<V>(factor, -factor);
            const V x = Inverse ? a : a * splat<V>(factor), s = x + y, v = x - y, e = exchanged(v) * re;
            const V t = Inverse ? subAdd(v * im, e) : v * im + conjugated(e);
            a = s + t;
            b = reversedPairs(conjugated(s - t));
            return;
        }
        V f = splat<V>(Inverse ? T(1) : factor), y = reversedPairs(b), v;
        if constexpr (Inverse) {
            v = subAdd(a, y);
        } else {
            y = y * f;
            v = multiplySubAdd(a, f, y);
        }
        // One fused operation in place of a sum, a difference and their blend; inverse transforms of doubles were
        // measured to lose by it.
        if constexpr (!Inverse || sizeof(T) == 4)
            f = asOne(f);
        const V s = multiplyAddSub(a, f, y), e = exchanged(v) * re;
        const V t = Inverse ? multiplySubAdd(v, im, e) : multiplyAddSub(v, im, e);
        a = s + t;
        b = reversedPairs(multiplyAddSub(t, alternating<V>(T(-1), T(1)), s));
    }
    QVR_INLINE void loadA(const T* p) { a = load<V>(p); }
    QVR_INLINE void loadB(const T* p) { b = load<V>(p); }
    QVR_INLINE void storeA(T* p) const { store(p, a); }
    QVR_INLINE void storeB(T* p) const { store(p, b); }
    QVR_INLINE void loadFirstA(const T* p, T re) { a = firstThen<V>(re, p); }
    QVR_INLINE void loadLastB(const T* p, T re, T im) { b = thenLast<V>(p, re, im); }
    QVR_INLINE void storeLastB(T* p) const { storeAllButLast(p, b); }
    QVR_INLINE T lastOfB() const { return b[lanes<V> - 2]; }
};

// ---- Ranges ---------------------------------------------------------------------------------------------------------

template<bool Inverse, bool TwoLevel, class T> void recombineRange(RecombineCall<T>& args)
{
    constexpr Index P = RecombineStep<T>::points;
    const RecombineCall<T> call = args;
    RecombineStep<T> step;
    Index i = 0;
    if (call.k == 0) {
        T* const back = call.bOut + 2 * (call.count - P);
        if constexpr (Inverse) {
            step.loadFirstA(call.aIn, get(call.aIn, 0));
            step.loadLastB(call.bIn + 2 * (call.count - P), call.last, T{});
        } else {
            step.loadA(call.aIn);
            step.loadLastB(call.bIn + 2 * (call.count - P), get(call.aIn, 0), get(call.aIn, 1));
        }
        step.template work<Inverse, TwoLevel>(call.table, 0, call.factor);
        step.storeA(call.aOut);
        step.storeLastB(back);
        args.last = step.lastOfB();
        i = P;
    }
    constexpr bool fromBoundary = RecombineStep<T>::template alignedTwiddles<Inverse>;
    for (; i < call.count && (fromBoundary ? call.k + i : call.count - i) % P != 0; i++)
        recombineOne<Inverse, TwoLevel>(call, i);
#pragma clang loop unroll_count(2)
    for (; i + P <= call.count; i += P) {
        const Index k = call.k + i, back = 2 * (call.count - i - P);
        // A vector across the end of the fine entries has two coarse ones.
        if (TwoLevel && (k & (kFine - 1)) > kFine - P) {
#pragma clang loop unroll(disable)
            for (Index lane = 0; lane < P; lane++)
                recombineOne<Inverse, TwoLevel>(call, i + lane);
            continue;
        }
        step.loadA(call.aIn + 2 * i);
        step.loadB(call.bIn + back);
        step.template work<Inverse, TwoLevel>(call.table, k, call.factor);
        step.storeA(call.aOut + 2 * i);
        step.storeB(call.bOut + back);
    }
    for (; i < call.count; i++)
        recombineOne<Inverse, TwoLevel>(call, i);
}

} // namespace

#endif
