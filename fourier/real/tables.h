// The tables of a specification object: their sizes, and those that no kernel reads in a layout of its own.
#ifndef QVR_FOURIER_TABLES_H
#define QVR_FOURIER_TABLES_H

#include "fourier/real/plan.h"
#include "fourier/real/recombine.h"
#include "fourier/real/reverse.h"

namespace {

// The bit-reversal table of a 2^m transform: 2^(m-2) + 1 entries, 2 rev(i), the last one 0.
constexpr Index bitRevEntries(int m)
{
    return (Index{1} << m) / 4 + 1;
}
inline void fillBitRev(int32_t* table, int m)
{
    using V = Vec<int32_t, 8>;
    const int32_t n = 1 << (m - 2);
    store(table, V{0, 4, 2, 6, 1, 5, 3, 7} * splat<V>(n / 4));
    for (int32_t half = 8; half < n; half *= 2)
        for (int32_t i = 0; i < half; i += 8)
            store(table + half + i, load<V>(table + i) + splat<V>(n / half));
    table[n] = 0;
}

// Of the top pass: for each four columns j, each c = 1 .. 7, four cosines and four negated sines.
constexpr Index topTableSize(int m)
{
    return (Index{1} << m) / 8 / 4 * 56;
}

// Elements of one recombination table of real order n.
constexpr Index recombinationSize(int order, bool twoLevel)
{
    const Index n = Index{1} << order;
    return twoLevel ? 2 * (kFine + n / 4096 + 1) : 2 * (n / 4);
}

// ---- First generation -----------------------------------------------------------------------------------------------

constexpr int kKernelOrder = 10; // the radix-4 kernel's longest transform

// The order of the kernel table that a row of order r (or an unsplit transform) has.
constexpr int kernelTableOrder(int r)
{
    return r < kKernelOrder ? r : kKernelOrder;
}

// Swaps (4i, 4 rev i) for i < rev i over m - 2 bits, ended by 0; behind it, filled from the end, 4i of the palindromes
// i > 0 with the last entry 0.
inline void fillSwapTable(int32_t* table, int m)
{
    const Index quarter = (Index{1} << m) / 4;
    Index front = 0, back = quarter - 1;
    ReversedCounter reversed(m - 2, 0);
    for (Index i = 0; i < quarter; i++, reversed.step()) {
        const Index r = static_cast<Index>(reversed.value);
        if (i < r) {
            table[front++] = static_cast<int32_t>(4 * i);
            table[front++] = static_cast<int32_t>(4 * r);
        } else if (i == r && i > 0) {
            table[back--] = static_cast<int32_t>(4 * i);
        }
    }
    table[front] = 0;
    table[quarter] = 0;
}

// Entries k = 0 .. 2^m / 4 of cos t, -sin t, cos 2t, -sin 2t, cos 3t, -sin 3t, t = 2 pi k / 2^m.
constexpr Index kernelTableSize(int m)
{
    return 6 * ((Index{1} << m) / 4 + 1);
}

// cos t, -sin t of the quarter circle.
constexpr Index sweepTableSize(int m)
{
    return 2 * ((Index{1} << m) / 4);
}

} // namespace

#endif
