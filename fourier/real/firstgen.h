// Complex transforms of the first generation, in place on pairs: bits reversed in the whole array, a radix-4 kernel of
// up to 1024 points, radix-2 sweeps or column transforms above.
//
// A vector holds kPoints = one or two complex numbers. Inverse transforms conjugate the twiddles and turn -i to i.
#ifndef QVR_FOURIER_FIRSTGEN_H
#define QVR_FOURIER_FIRSTGEN_H

#include "fourier/real/recombine.h"
#include "fourier/real/reverse.h"
#include "fourier/real/tables.h"

namespace {

constexpr int kSweepBlock = 14;    // points swept together
constexpr Index kSweepChunk = 128; // butterflies whose twiddles stay in cache while all blocks pass

template<class T> using PairVec = Vec<T, static_cast<int>(16 / sizeof(T))>;
template<class T> constexpr int kPoints = static_cast<int>(8 / sizeof(T));

// ---- Bit reversal ---------------------------------------------------------------------------------------------------

template<class T> QVR_INLINE void swapPoints(T* data, Index a, Index b)
{
    const Point<T> x = load<Point<T>>(data + 2 * a), y = load<Point<T>>(data + 2 * b);
    store(data + 2 * a, y);
    store(data + 2 * b, x);
}
// With H = M/2: of the pair (a, b), both even, the four swaps of the indices whose middle bits are those of a or b.
template<class T> inline void reverseInPlace(T* data, int m, const int32_t* table)
{
    if (m < 2)
        return;
    const Index half = (Index{1} << m) / 2;
    for (; *table != 0; table += 2) {
        const Index a = table[0] / 2, b = table[1] / 2;
        swapPoints(data, a, b);
        swapPoints(data, a + 1, half + b);
        swapPoints(data, half + a, b + 1);
        swapPoints(data, half + a + 1, half + b + 1);
    }
    do {
        const Index a = *table / 2;
        swapPoints(data, a + 1, half + a);
        table++;
    } while (*table != 0);
}
template<class T> inline void reverseInto(const T* src, T* dst, int m, const int32_t* table)
{
    const Index half = (Index{1} << m) / 2;
    const auto move = [&](Index from, Index to) { store(dst + 2 * to, load<Point<T>>(src + 2 * from)); };
    // The four indices of middle a go to those of middle b.
    const auto moveAll = [&](Index a, Index b) {
        move(a, b);
        move(a + 1, half + b);
        move(half + a, b + 1);
        move(half + a + 1, half + b + 1);
    };
    for (; *table != 0; table += 2) {
        moveAll(table[0] / 2, table[1] / 2);
        moveAll(table[1] / 2, table[0] / 2);
    }
    do {
        moveAll(*table / 2, *table / 2);
        table++;
    } while (*table != 0);
}

// ---- Arithmetic on pairs --------------------------------------------------------------------------------------------

// x w, or x conj(w).
template<bool Inverse, class V> QVR_INLINE V times(V x, V w)
{
    const V im = oddDup(w);
    return subAdd(x * evenDup(w), exchanged(x) * (Inverse ? -im : im));
}
// -i x, or i x.
template<bool Inverse, class V> QVR_INLINE V turned(V x)
{
    const V zero = {};
    const V s = exchanged(x);
    return Inverse ? subAdd(zero, s) : -subAdd(zero, s);
}

// Twiddle j of the points k, k + 1, .. of one entry each, `stride` entries apart.
template<class T> QVR_INLINE PairVec<T> entryTwiddles(const T* table, Index k, Index stride, int j)
{
    if constexpr (kPoints<T> == 1)
        return load<PairVec<T>>(table + 6 * k * stride + 2 * j);
    else
        return concat(load<Point<T>>(table + 6 * k * stride + 2 * j),
                      load<Point<T>>(table + 6 * (k + 1) * stride + 2 * j));
}

// ---- Radix-4 kernel -------------------------------------------------------------------------------------------------

template<bool Inverse, class V> QVR_INLINE void butterfly4(V& a, V& b, V& c, V& d)
{
    const V s0 = a + b, d0 = a - b, s1 = c + d, d1 = turned<Inverse>(c - d);
    a = s0 + s1;
    b = d0 + d1;
    c = s0 - s1;
    d = d0 - d1;
}

// All stages on 2^m points in bit-reversed order, 2 <= m <= kKernelOrder; the table is of order tableOrder >= m.
template<bool Inverse, class T> inline void radix4Kernel(T* data, int m, const T* table, int tableOrder)
{
    using V = PairVec<T>;
    constexpr int P = kPoints<T>;
    const Index points = Index{1} << m;
    for (Index i = 0; i < points; i += 4) {
        T* p = data + 2 * i;
        Point<T> a = load<Point<T>>(p), b = load<Point<T>>(p + 2), c = load<Point<T>>(p + 4), d = load<Point<T>>(p + 6);
        const Point<T> s0 = a + b, d0 = a - b, s1 = c + d, e = c - d;
        const Point<T> d1 = Inverse ? Point<T>{-e[1], e[0]} : Point<T>{e[1], -e[0]};
        store(p, s0 + s1);
        store(p + 2, d0 + d1);
        store(p + 4, s0 - s1);
        store(p + 6, d0 - d1);
    }
    int s = 2;
    if (m & 1) {
        const Index stride = (Index{1} << tableOrder) / 8;
        for (Index i = 0; i < points; i += 8)
            for (Index k = 0; k < 4; k += P) {
                T* p = data + 2 * (i + k);
                // Past the quarter circle, three eighths are the third multiple of one eighth.
                const V a = load<V>(p), b = load<V>(p + 8);
                V w;
                for (int l = 0; l < P; l++) {
                    const Index at = k + l;
                    const T* entry = at <= 2 ? table + 6 * at * stride : table + 6 * stride + 4;
                    w[2 * l] = entry[0];
                    w[2 * l + 1] = entry[1];
                }
                const V t = times<Inverse>(b, w);
                store(p, a + t);
                store(p + 8, a - t);
            }
        s = 3;
    }
    for (; s < m; s += 2) {
        const Index q = Index{1} << s, stride = Index{1} << (tableOrder - s - 2);
        for (Index i = 0; i < points; i += 4 * q)
            for (Index k = 0; k < q; k += P) {
                T* p = data + 2 * (i + k);
                V a = load<V>(p), b = load<V>(p + 2 * q), c = load<V>(p + 4 * q), d = load<V>(p + 6 * q);
                c = times<Inverse>(c, entryTwiddles(table, k, stride, 0));
                b = times<Inverse>(b, entryTwiddles(table, k, stride, 1));
                d = times<Inverse>(d, entryTwiddles(table, k, stride, 2));
                butterfly4<Inverse>(a, b, c, d);
                store(p, a);
                store(p + 2 * q, b);
                store(p + 4 * q, c);
                store(p + 6 * q, d);
            }
    }
}

// ---- Radix-2 sweep --------------------------------------------------------------------------------------------------

// Stages of doubling length from 2^from to 2^to; the table is of order tableOrder >= to. The second half of a block's
// twiddles is the first one turned by -i.
template<bool Inverse, class T> inline void sweep(T* data, int from, int to, const T* table, int tableOrder)
{
    using V = PairVec<T>;
    constexpr int P = kPoints<T>;
    for (int s = from; s < to; s++) {
        const Index length = Index{1} << s, total = Index{1} << to, stride = Index{1} << (tableOrder - s - 1);
        const Index chunk = length / 2 < kSweepChunk ? length / 2 : kSweepChunk;
        for (Index j0 = 0; j0 < length / 2; j0 += chunk)
            for (Index block = 0; block < total; block += 2 * length)
                for (Index half = 0; half < length; half += length / 2)
                    for (Index j = j0; j < j0 + chunk; j += P) {
                        T* p = data + 2 * (block + half + j);
                        V w;
                        if constexpr (P == 1)
                            w = load<V>(table + 2 * j * stride);
                        else
                            w = concat(load<Point<T>>(table + 2 * j * stride),
                                       load<Point<T>>(table + 2 * (j + 1) * stride));
                        const V a = load<V>(p), t = times<Inverse>(load<V>(p + 2 * length), w);
                        const V b = half ? turned<Inverse>(t) : t;
                        store(p, a + b);
                        store(p + 2 * length, a - b);
                    }
    }
}

// ---- Whole transforms -----------------------------------------------------------------------------------------------

template<bool Inverse, class T> inline void kernelScaled(T* data, int m, const T* table, int tableOrder, T factor)
{
    radix4Kernel<Inverse>(data, m, table, tableOrder);
    if (factor != T(1))
        scalePoints(data, Index{1} << m, factor);
}

template<bool Inverse, class T>
inline void firstGenStages(T* data, int m, FirstGenTables<T> tables, int level, T* work, T factor)
{
    using V = PairVec<T>;
    constexpr int P = kPoints<T>;
    const int f = splitOrder<T>(m), r = m - f;
    if (m <= kKernelOrder)
        return kernelScaled<Inverse>(data, m, tables.kernel, kernelTableOrder(m), factor);
    if (f == 0) {
        const Index points = Index{1} << m, kernel = Index{1} << kKernelOrder;
        static_assert(kShapeFirst - 1 <= kSweepBlock); // unsplit orders fit one block
        for (Index b = points - kernel; b >= 0; b -= kernel)
            kernelScaled<Inverse>(data + 2 * b, kKernelOrder, tables.kernel, kKernelOrder, factor);
        sweep<Inverse>(data, kKernelOrder, m, tables.sweep, m);
        return;
    }
    const Index rows = Index{1} << f, length = Index{1} << r;
    for (Index c = 0; c < rows; c++)
        firstGenStages<Inverse>(data + 2 * c * length, r, tables, level + 1, work, factor);
    const T* mid = tables.mid[level];
    for (Index j = 0; j < length; j += 4) {
        for (Index c = 0; c < rows; c++)
            for (int i = 0; i < 4; i += P, mid += 2 * P) {
                const V x = times<Inverse>(load<V>(data + 2 * (c * length + j + i)), load<V>(mid));
                if constexpr (P == 1) {
                    store(work + 2 * (i * rows + c), x);
                } else {
                    store(work + 2 * (i * rows + c), lo(x));
                    store(work + 2 * ((i + 1) * rows + c), hi(x));
                }
            }
        for (int i = 0; i < 4; i++)
            radix4Kernel<Inverse>(work + 2 * i * rows, f, tables.column[level], f);
        for (Index c = 0; c < rows; c++)
            for (int i = 0; i < 4; i++)
                store(data + 2 * (c * length + j + i), load<Point<T>>(work + 2 * (i * rows + c)));
    }
}

template<bool Inverse, class T> void firstGenTransform(const FirstGenCall<T>& call)
{
    if (call.src == call.dst)
        reverseInPlace(call.dst, call.m, call.swaps);
    else
        reverseInto(call.src, call.dst, call.m, call.swaps);
    firstGenStages<Inverse>(call.dst, call.m, call.tables, 0, call.work, call.factor);
}

} // namespace

#endif
