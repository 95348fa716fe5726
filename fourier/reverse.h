// Bit reversal of whole arrays of complex points.
//
// An index of m bits is (a | middle | b) with a and b of k bits. Reversal takes the 2^k by 2^k tile of one `middle` to the tile
// of the reversed middle, transposed with both sides reversed. A tile's rows are whole cache lines on both sides.
#ifndef QVR_FOURIER_REVERSE_H
#define QVR_FOURIER_REVERSE_H

#include "fourier/passes.h"

namespace {

// A complex point moved as one piece.
template<class T> using Point = Vec<T, 2>;

constexpr int kTileBits = 6;                        // the 64 by 64 tiles of long transforms
constexpr Index kTilePoints = Index{1} << (2 * kTileBits);
constexpr int kTiledFrom = 20;                      // complex order from which reversal goes by those tiles

QVR_INLINE Index reverseIndex(Index i, int bits)
{
    return bits == 0 ? 0
                     : static_cast<Index>(__builtin_bitreverse64(static_cast<uint64_t>(i)) >> (64 - bits));
}

// The rows of a tile: 2^k rows of 2^k points, `step` points apart.
template<class T> inline void reverseTile(const T* src, Index srcStep, T* dst, Index dstStep, int k)
{
    const Index side = Index{1} << k;
    for (Index r = 0; r < side; r++) {
        const T* column = src + 2 * reverseIndex(r, k);
        for (Index c = 0; c < side; c++)
            store(dst + 2 * (r * dstStep + c), load<Point<T>>(column + 2 * reverseIndex(c, k) * srcStep));
    }
}

// Copies a tile row by row to or from a dense area.
template<class T> inline void copyTile(const T* src, Index srcStep, T* dst, Index dstStep, Index side)
{
    using V = Full<T>;
    for (Index r = 0; r < side; r++)
        for (Index c = 0; c < 2 * side; c += kLanes<T>)
            store(dst + 2 * r * dstStep + c, load<V>(src + 2 * r * srcStep + c));
}

// dst = src reversed; dst may be src. `work` holds two tiles of 2^(2k) points.
template<class T> inline void reverseByTiles(const T* src, T* dst, int m, int k, T* work)
{
    const int middleBits = m - 2 * k;
    const Index side = Index{1} << k, rowStep = Index{1} << (m - k), middles = Index{1} << middleBits;
    T *const first = work, *const second = work + 2 * side * side;
    for (Index i = 0; i < middles; i++) {
        const Index r = reverseIndex(i, middleBits);
        if (r < i)
            continue;
        copyTile(src + 2 * i * side, rowStep, first, side, side);
        if (r != i) {
            copyTile(src + 2 * r * side, rowStep, second, side, side);
            reverseTile(second, side, dst + 2 * i * side, rowStep, k);
        }
        reverseTile(first, side, dst + 2 * r * side, rowStep, k);
    }
}

template<class T> inline void reverseBits(const T* src, T* dst, int m, T* work)
{
    if (m >= kTiledFrom)
        reverseByTiles(src, dst, m, kTileBits, work);
    else {
        alignas(64) T tiles[2 * 2 * 64];
        reverseByTiles(src, dst, m, 3, tiles);
    }
}

} // namespace

#endif
