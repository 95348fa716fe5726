// Tables: rows by an index in each lane, and their columns as vectors.
#ifndef QVR_FRAME_LOOKUP_H
#define QVR_FRAME_LOOKUP_H

#include "frame/simd.h"

namespace {

// One of eight values by an index 0 .. 7.
template<class I> QVR_INLINE Vec<float, lanes<I>> choose8(Vec<float, 8> values, I index)
{
    if constexpr (sizeof(I) > 32) {
        return concat(choose8(values, lo(index)), choose8(values, hi(index)));
    } else if constexpr (sizeof(I) == 32) {
        return bitcast<Vec<float, 8>>(_mm256_permutevar8x32_ps(bitcast<__m256>(values), bitcast<__m256i>(index)));
    } else {
        return slice<0, lanes<I>>(choose8(values, concat(padTo16(index), padTo16(index))));
    }
}

// Table rows by an index in each lane. The indices go through memory, because taking lanes out of a register one by
// one, or a gather instruction, costs more than loads that overlap with other work; volatile keeps the compiler from
// turning the loads back into that.
template<class T, int Stride, class I> struct Rows {
    const char* row[lanes<I>];
    QVR_INLINE Rows(const T* table, I index)
    {
        constexpr int N = lanes<I>;
        const char* base = reinterpret_cast<const char*>(table);
        const I offset = index * static_cast<Elem<I>>(Stride * sizeof(T));
        // Two 32-bit indices to a load: loads are what a table kernel has most of.
        if constexpr (sizeof(Elem<I>) == 4 && N % 2 == 0) {
            volatile uint64_t at[N / 2];
            store(reinterpret_cast<Elem<I>*>(const_cast<uint64_t*>(at)), offset);
            for (int i = 0; i < N; i += 2) {
                const uint64_t two = at[i / 2];
                row[i] = base + static_cast<uint32_t>(two);
                row[i + 1] = base + (two >> 32);
            }
        } else {
            volatile Elem<I> at[N];
            store(const_cast<Elem<I>*>(at), offset);
            for (int i = 0; i < N; i++)
                row[i] = base + at[i];
        }
    }
    QVR_INLINE const T* operator()(int lane) const { return reinterpret_cast<const T*>(row[lane]); }
};

// Columns 0 and 1 of the rows row(0), row(1), ...: any function that gives pointers.
template<class V, class Row> QVR_INLINE void pairColumns(const Row& row, V& first, V& second)
{
    constexpr int N = lanes<V>;
    using T = Elem<V>;
    if constexpr (N == 1) {
        first = V{row(0)[0]};
        second = V{row(0)[1]};
    } else if constexpr (sizeof(T) == 4) {
        // Rows as doubles, so ordered that one shuffle within 16-byte blocks sorts the columns out.
        const auto two = [&](int i, int j) { return Vec<double, 2>{load<double>(row(i)), load<double>(row(j))}; };
        V a, b;
        if constexpr (N == 8) {
            a = bitcast<V>(concat(two(0, 1), two(4, 5)));
            b = bitcast<V>(concat(two(2, 3), two(6, 7)));
        } else {
            a = bitcast<V>(two(0, 1));
            b = bitcast<V>(two(2, 3));
        }
        first = shuffleBlocks<0, 2, 4, 6>(a, b);
        second = shuffleBlocks<1, 3, 5, 7>(a, b);
    } else {
        using P = Vec<T, 2>;
        V a, b;
        if constexpr (N == 4) {
            a = concat(load<P>(row(0)), load<P>(row(2)));
            b = concat(load<P>(row(1)), load<P>(row(3)));
        } else {
            a = load<P>(row(0));
            b = load<P>(row(1));
        }
        first = shuffleBlocks<0, 2>(a, b);
        second = shuffleBlocks<1, 3>(a, b);
    }
}

// Columns 0 to 3 of four or eight rows of floats.
template<class V, class Row> QVR_INLINE void fourColumns(const Row& row, V* column)
{
    using Q = Vec<float, 4>;
    const auto rows = [&](int i) {
        if constexpr (lanes<V> == 8)
            return concat(load<Q>(row(i)), load<Q>(row(i + 4)));
        else
            return load<Q>(row(i));
    };
    // Even and odd columns apart: this shuffle has two ports where those that zip have one.
    const V a = rows(0), b = rows(1), c = rows(2), d = rows(3);
    const V ab = shuffleBlocks<0, 2, 4, 6>(a, b), cd = shuffleBlocks<0, 2, 4, 6>(c, d);
    const V ab2 = shuffleBlocks<1, 3, 5, 7>(a, b), cd2 = shuffleBlocks<1, 3, 5, 7>(c, d);
    column[0] = shuffleBlocks<0, 2, 4, 6>(ab, cd);
    column[1] = shuffleBlocks<0, 2, 4, 6>(ab2, cd2);
    column[2] = shuffleBlocks<1, 3, 5, 7>(ab, cd);
    column[3] = shuffleBlocks<1, 3, 5, 7>(ab2, cd2);
}

// The elements base[index[lane]] of rows that are Stride elements apart: one column, or two neighbouring ones.
template<int Stride, class V, class I> QVR_INLINE V lookUp(const Elem<V>* base, I index)
{
    if constexpr (sizeof(V) > kVecBytes) {
        using H = decltype(lo(V{}));
        return concat(lookUp<Stride, H>(base, lo(index)), lookUp<Stride, H>(base, hi(index)));
    } else {
        const Rows<Elem<V>, Stride, I> row(base, index);
        V v;
        for (int i = 0; i < lanes<V>; i++)
            v[i] = *row(i);
        return v;
    }
}
template<int Stride, class V, class I> QVR_INLINE void lookUpPairs(const Elem<V>* base, I index, V& first, V& second)
{
    if constexpr (sizeof(V) > kVecBytes) {
        decltype(lo(V{})) f0, f1, s0, s1;
        lookUpPairs<Stride>(base, lo(index), f0, s0);
        lookUpPairs<Stride>(base, hi(index), f1, s1);
        first = concat(f0, f1);
        second = concat(s0, s1);
    } else {
        pairColumns(Rows<Elem<V>, Stride, I>(base, index), first, second);
    }
}

// Columns 1, 2 and 3 of rows of four floats.
template<class V, class I> QVR_INLINE void lookUpTriples(const float* base, I index, V& one, V& two, V& three)
{
    if constexpr (sizeof(V) > kVecBytes) {
        decltype(lo(V{})) a1, a2, a3, b1, b2, b3;
        lookUpTriples(base, lo(index), a1, a2, a3);
        lookUpTriples(base, hi(index), b1, b2, b3);
        one = concat(a1, b1);
        two = concat(a2, b2);
        three = concat(a3, b3);
    } else {
        const Rows<float, 4, I> row(base, index);
        if constexpr (lanes<V> == 1) {
            one = V{row(0)[1]};
            two = V{row(0)[2]};
            three = V{row(0)[3]};
        } else {
            V column[4];
            fourColumns(row, column);
            one = column[1];
            two = column[2];
            three = column[3];
        }
    }
}

} // namespace

#endif
