// The tables of a specification object: their sizes, and their contents from the quarter wave.
#ifndef QVR_FOURIER_TABLES_H
#define QVR_FOURIER_TABLES_H

#include "fourier/quarter.h"
#include "fourier/real/plan.h"
#include "fourier/real/recombine.h"
#include "fourier/real/reverse.h"

namespace {

// ---- Bit reversal ---------------------------------------------------------------------------------------------------

// The bit-reversal table of a 2^m transform: 2^(m-2) + 1 entries, 2 rev(i), the last one 0.
constexpr Index bitRevEntries(int m)
{
    return (Index{1} << m) / 4 + 1;
}
inline void fillBitRev(int32_t* table, int m, int shift)
{
    const Index n = Index{1} << (m - 2);
    Index rev = 0;
    for (Index i = 0; i < n; i++) {
        table[i] = static_cast<int32_t>(rev << shift);
        // Counts up from the top bit.
        Index bit = n >> 1;
        for (; rev & bit; bit >>= 1)
            rev ^= bit;
        rev |= bit;
    }
    table[n] = 0;
}

// ---- Stages ---------------------------------------------------------------------------------------------------------

// Twiddles of a stage of length R q = 2^order for the butterflies first .. first + count - 1.
template<class T, int R, bool Steps>
inline T* fillRecords(T* out, const Quarter<T>& quarter, int order, Index first, Index count)
{
    constexpr int W = kLanes<T>;
    for (Index k = first; k < first + count; k += W)
        for (int i = 0; i < kRecordTwiddles<R, Steps>; i++, out += 2 * W)
            for (int l = 0; l < W; l++) {
                Index angle = (k + laneIndex<Full<T>>(l)) * recordMultiple(R, Steps, i);
                if (Steps && R == 8 && i == 3)
                    angle += (Index{1} << order) / 8;
                const Twiddle<T> w = quarter.at(angle, order);
                out[l] = w.re;
                out[W + l] = w.im;
            }
    return out;
}

// The records of a sweep in the order in which its strips read them.
template<class T> inline void fillSweep(T* out, const Quarter<T>& quarter, const FftSweep& sweep)
{
    const Index length = Index{1} << sweep.from, columns = stripColumns<T>(sweep);
    for (Index k = 0; k < length; k += columns)
        for (int i = 0, order = sweep.from; i < sweep.stages; i++) {
            const Index rows = Index{1} << (order - sweep.from);
            const int radix = sweep.radixOrder[i];
            const bool steps = inSteps(radix, sweep.form);
            order += radix;
            for (Index row = 0; row < rows; row++) {
                const Index first = row * length + k;
                if (radix == 2)
                    out = steps ? fillRecords<T, 4, true>(out, quarter, order, first, columns)
                                : fillRecords<T, 4, false>(out, quarter, order, first, columns);
                else
                    out = steps ? fillRecords<T, 8, true>(out, quarter, order, first, columns)
                                : fillRecords<T, 8, false>(out, quarter, order, first, columns);
            }
        }
}

// The twiddles of the top pass: for each four columns j, each c = 1 .. 7: four cosines, then four negated sines, of
// 2 pi c (j .. j + 3) / M.
constexpr Index topTableSize(int m)
{
    return (Index{1} << m) / 8 / 4 * 56;
}
template<class T> inline void fillTopTable(T* out, const Quarter<T>& quarter, int m)
{
    const Index columns = (Index{1} << m) / 8;
    for (Index j = 0; j < columns; j += 4)
        for (int c = 1; c < 8; c++, out += 8)
            for (int i = 0; i < 4; i++) {
                const Twiddle<T> w = quarter.at((j + i) * c, m);
                out[i] = w.re;
                out[4 + i] = w.im;
            }
}

// ---- Recombination --------------------------------------------------------------------------------------------------

// Elements of one table of real order n.
constexpr Index recombinationSize(int order, bool twoLevel)
{
    const Index n = Index{1} << order;
    return twoLevel ? 2 * (kFine + n / 4096 + 1) : 2 * (n / 4);
}
template<class T> inline void fillRecombination(T* fwd, T* inv, const Quarter<T>& quarter, int order, bool twoLevel)
{
    const Index n = Index{1} << order;
    const auto put = [&](T* table, Index at, Index k) {
        const Twiddle<T> w = quarter.at(k, order);
        table[2 * at] = w.re;
        table[2 * at + 1] = w.im;
    };
    if (twoLevel) {
        for (Index k = 0; k < kFine; k++)
            put(fwd, k, k);
        for (Index k = 0; k <= n / 4; k += kFine)
            put(fwd, kFine + k / kFine, k);
        __builtin_memcpy(inv, fwd, static_cast<size_t>(2 * (kFine + n / 4 / kFine + 1)) * sizeof(T));
        return;
    }
    // All in the first quadrant.
    const Index step = Index{1} << (quarter.base - order);
    for (Index k = 0; k < n / 4; k++) {
        const T sine = quarter.s[k * step], cosine = quarter.s[(n / 4 - k) * step];
        fwd[2 * k] = T(0.5) * cosine;
        fwd[2 * k + 1] = T(0.5) - T(0.5) * sine;
        inv[2 * k] = cosine;
        inv[2 * k + 1] = -sine;
    }
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
    for (Index i = 0; i < quarter; i++) {
        const Index r = reverseIndex(i, m - 2);
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
template<class T> inline void fillKernelTable(T* out, const Quarter<T>& quarter, int m)
{
    for (Index k = 0; k <= (Index{1} << m) / 4; k++)
        for (int j = 1; j <= 3; j++) {
            const Twiddle<T> w = quarter.at(j * k, m);
            *out++ = w.re;
            *out++ = w.im;
        }
}

// cos t, -sin t of the quarter circle.
constexpr Index sweepTableSize(int m)
{
    return 2 * ((Index{1} << m) / 4);
}
template<class T> inline void fillSweepTable(T* out, const Quarter<T>& quarter, int m)
{
    for (Index k = 0; k < (Index{1} << m) / 4; k++) {
        const Twiddle<T> w = quarter.at(k, m);
        *out++ = w.re;
        *out++ = w.im;
    }
}

// For each four columns j and each row c: the twiddles of 2 pi (j .. j + 3) rev(c) / 2^m.
template<class T> inline void fillMidTable(T* out, const Quarter<T>& quarter, int m, int f)
{
    for (Index j = 0; j < Index{1} << (m - f); j += 4)
        for (Index c = 0; c < Index{1} << f; c++)
            for (int i = 0; i < 4; i++) {
                const Twiddle<T> w = quarter.at((j + i) * reverseIndex(c, f), m);
                *out++ = w.re;
                *out++ = w.im;
            }
}

} // namespace

#endif
