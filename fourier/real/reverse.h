// Bit reversal of whole arrays of complex points.
//
// An index of m bits is (a | middle | b) with a and b of k bits. Reversal takes the 2^k by 2^k tile of one `middle` to
// the tile of the reversed middle, transposed with both sides reversed. A tile's rows are whole cache lines on both
// sides.
#ifndef QVR_FOURIER_REVERSE_H
#define QVR_FOURIER_REVERSE_H

#include "fourier/real/passes.h"

namespace {

// A complex point moved as one piece.
template<class T> using Point = Vec<T, 2>;

constexpr int kTileBits = 6; // the 64 by 64 tiles of long transforms
constexpr Index kTilePoints = Index{1} << (2 * kTileBits);
constexpr int kTiledFrom = 20; // complex order from which reversal goes by those tiles

QVR_INLINE Index reverseIndex(Index i, int bits)
{
    return bits == 0 ? 0 : static_cast<Index>(__builtin_bitreverse64(static_cast<uint64_t>(i)) >> (64 - bits));
}

constexpr int8_t kReversed6[64] = {0, 32, 16, 48, 8,  40, 24, 56, 4, 36, 20, 52, 12, 44, 28, 60,
                                   2, 34, 18, 50, 10, 42, 26, 58, 6, 38, 22, 54, 14, 46, 30, 62,
                                   1, 33, 17, 49, 9,  41, 25, 57, 5, 37, 21, 53, 13, 45, 29, 61,
                                   3, 35, 19, 51, 11, 43, 27, 59, 7, 39, 23, 55, 15, 47, 31, 63};

// dst[rev j][c] = src[rev c][j] over a dense tile of 2^K rows of 2^K points.
template<int K, class T> inline void reverseTile(const T* src, T* dst, Index dstStep)
{
    constexpr Index side = Index{1} << K;
    constexpr int P = kVecPoints<T>, drop = kTileBits - K;
    using V = Full<double>;
    for (Index j = 0; j < side; j += P)
        for (Index c = 0; c < side; c += P) {
            V r[P];
#pragma clang loop unroll(full)
            for (int i = 0; i < P; i++)
                r[i] = load<V>(src + 2 * ((kReversed6[c + i] >> drop) * side + j));
            transposePoints<T>(r);
#pragma clang loop unroll(full)
            for (int i = 0; i < P; i++)
                store(dst + 2 * ((kReversed6[j + i] >> drop) * dstStep + c), r[i]);
        }
}

// Copies the rows of a tile, `step` points apart, to a dense area.
template<int K, class T> inline void gatherTile(const T* src, Index step, T* tile)
{
    using V = Full<T>;
    constexpr Index side = Index{1} << K;
    for (Index r = 0; r < side; r++)
#pragma clang loop unroll_count(8)
        for (Index c = 0; c < 2 * side; c += kLanes<T>)
            store(tile + 2 * r * side + c, load<V>(src + 2 * r * step + c));
}

// dst = src reversed; dst may be src. `work` holds two tiles.
template<int K, class T> inline void reverseByTiles(const T* src, T* dst, int m, T* work)
{
    const int middleBits = m - 2 * K;
    constexpr Index side = Index{1} << K;
    const Index rowStep = Index{1} << (m - K), middles = Index{1} << middleBits;
    T *const first = work, *const second = work + 2 * side * side;
    for (Index i = 0; i < middles; i++) {
        const Index r = reverseIndex(i, middleBits);
        if (r < i)
            continue;
        gatherTile<K>(src + 2 * i * side, rowStep, first);
        if (r != i) {
            gatherTile<K>(src + 2 * r * side, rowStep, second);
            reverseTile<K>(second, dst + 2 * i * side, rowStep);
        }
        reverseTile<K>(first, dst + 2 * r * side, rowStep);
    }
}

template<class T> void reverseInPlaceByTiles(T* data, int m, T* work)
{
    if (m >= kTiledFrom) {
        reverseByTiles<kTileBits>(data, data, m, work);
    } else {
        alignas(64) T tiles[2 * 2 * 64];
        reverseByTiles<3>(data, data, m, tiles);
    }
}

// The points n = residue mod 2^f of 2^m to the row of the reversed residue, in order: what reversal does to rows, with
// the points of a row left in natural order. Each row gets a cache line at a time. This call brings points first ..
// first + count - 1 of each row; src holds only theirs.
template<class T> void dealRows(const T* src, T* dst, int m, int f, Index first, Index count)
{
    constexpr int P = kVecPoints<T>, L = static_cast<int>(64 / (2 * sizeof(T)));
    using V = Full<double>;
    const Index rows = Index{1} << f, length = Index{1} << (m - f);
    dst += 2 * first;
    for (Index n = 0; n < count; n += L)
        for (Index residue = 0; residue < rows; residue += P)
#pragma clang loop unroll(full)
            for (int j = 0; j < L; j += P) {
                V r[P];
#pragma clang loop unroll(full)
                for (int i = 0; i < P; i++)
                    r[i] = load<V>(src + 2 * ((n + j + i) * rows + residue));
                transposePoints<T>(r);
#pragma clang loop unroll(full)
                for (int i = 0; i < P; i++)
                    store(dst + 2 * (reverseIndex(residue + i, f) * length + n + j), r[i]);
            }
}

} // namespace

#endif
