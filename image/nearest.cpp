// Nearest neighbour: a table of columns, then copies. An output row that shows the same source row as the one above is
// a copy of it.
//
// Bytes: the source of 16 neighbouring outputs lies within 16 bytes when enlarging, and within 32 down to a half. So
// each group of outputs is one load and one shuffle or two of each, for which the table holds place and shuffles.
#include <string.h>

#include "image/halve.h"

namespace {

template<class T> void copyPixels(const T* src, const int32_t* column, T* dst, Index n, Index ahead)
{
    Index x = 0;
    for (; x + 4 <= n; x += 4) {
        if (ahead != 0 && x % (kLineBytes / static_cast<Index>(sizeof(T))) == 0)
            askFor(dst + x, ahead, 1);
        const Vec<T, 1> a = load<Vec<T, 1>>(src + column[x]), b = load<Vec<T, 1>>(src + column[x + 1]);
        const Vec<T, 1> c = load<Vec<T, 1>>(src + column[x + 2]), d = load<Vec<T, 1>>(src + column[x + 3]);
        store(dst + x, concat(concat(a, b), concat(c, d)));
    }
    for (; x < n; x++)
        store(dst + x, load<Vec<T, 1>>(src + column[x]));
}

// Columns of a small period: those of a block are a shuffle of 16 bytes, or every second pixel of a vector.
using Block = Vec<uint8_t, 16>;
struct Period {
    Index first;           // pixel
    Index pixels, outputs; // that a block goes on by; 0 outputs: none
    Index done;            // outputs of whole blocks
    bool evens;
    uint8_t from[16];
};
constexpr Index kExactPlaces = 1 << 16;
template<class T> constexpr int kEvens = (kAvx2 ? 32 : 16) / sizeof(T); // outputs of a block

template<class T> Period periodOf(const qvrResizeAxis& axis)
{
    constexpr Index N = 16 / sizeof(T);
    Period period = {};
    Index pixels = 0;
    const Index outputs = qvrNearestPeriod(&axis, N, &pixels);
    int32_t column[N];
    qvrNearestOf(&axis, axis.first, axis.count < N ? axis.count : N, column);
    period.first = column[0];
    period.evens = outputs == 1 && pixels == 2;
    Index read = N, written = N; // by a block
    if (period.evens) {
        period.outputs = written = kEvens<T>;
        period.pixels = read = 2 * written;
    } else if (kSsse3 && outputs > 0 && axis.count >= N && pixels > 0) {
        Index count = N / (outputs > pixels ? outputs : pixels);
        while (count > 0 && column[count * outputs - 1] - column[0] >= N)
            count--;
        if (2 * count * outputs <= N)
            return period;
        period.outputs = count * outputs;
        period.pixels = count * pixels;
        for (Index i = 0; i < 16; i++) {
            const Index x = i / static_cast<Index>(sizeof(T));
            const Index at = x < period.outputs ? column[x] - column[0] : 0;
            period.from[i] = static_cast<uint8_t>(at * static_cast<Index>(sizeof(T)) + i % sizeof(T));
        }
    } else {
        return period;
    }
    const Index inRow = axis.length - period.first - read, inOutput = axis.count - written;
    if (inRow >= 0 && inOutput >= 0) {
        const Index a = inRow / period.pixels, b = inOutput / period.outputs;
        period.done = ((a < b ? a : b) + 1) * period.outputs;
    }
    return period;
}

// A block of every second pixel.
template<class T> QVR_INLINE void copyEvens(const void* src, void* dst)
{
    using V = Vec<T, kEvens<T>>;
    const char* const p = static_cast<const char*>(src);
    if constexpr (sizeof(T) == 1) {
        const auto words = [](const char* at) { return load<Vec<uint16_t, kEvens<T> / 2>>(at) & 255; };
        store(dst, packWords(words(p), words(p + sizeof(V))));
    } else {
        store(dst, evens(load<V>(p), load<V>(p + sizeof(V))));
    }
}

// The first pixel of each block of two by two. False: the band is not of these, or rounding begins to matter.
template<class T> bool copyHalves(const qvrResizeBand* b)
{
    const auto [left, top] = halvesOf(b);
    if (top < 0 || b->x.count < kEvens<T> || left + 2 * b->x.count > kExactPlaces ||
        top + 2 * b->y.count > kExactPlaces)
        return false;
    eachBlock<2, 1>(b, top, b->y.count, sizeof(T), kEvens<T> * sizeof(T),
                    [=](const uint8_t* src, uint8_t* dst, Index i) {
                        copyEvens<T>(src + left * static_cast<Index>(sizeof(T)) + 2 * i, dst + i);
                    });
    return true;
}

template<class T> void copyBlocks(const T* src, const Period& period, T* dst, Index ahead)
{
    src += period.first;
    if (period.evens) {
        for (Index x = 0; x < period.done; x += kEvens<T>)
            copyEvens<T>(src + 2 * x, dst + x);
    } else if constexpr (kSsse3) {
        const Block from = load<Block>(period.from);
        const Index pixels = period.pixels, outputs = period.outputs;
        const auto block = [&](Index k) {
            store(dst + k * outputs, shuffleBytes(load<Block>(src + k * pixels), from));
        };
        Index x = 0;
        for (; x + 4 * outputs < period.done; x += 4 * outputs, src += 4 * pixels, dst += 4 * outputs) {
            if (ahead != 0)
                askFor(dst, ahead, 1);
            for (Index k = 0; k < 4; k++)
                block(k);
        }
        for (; x < period.done; x += outputs, src += pixels, dst += outputs)
            block(0);
    }
}

// 16 outputs from two neighbouring windows of 16 bytes. An index from 128 on gives zero.
struct Group {
    int32_t base;
    uint8_t low[16], high[16];
};
static_assert(sizeof(Group) <= 16 * sizeof(int32_t));
constexpr int32_t kReach = 32;

// Groups of n columns from d on, the last of which may overlap the one before. False: some outputs lie too far apart.
// `near`: all of them are in the first windows.
bool makeGroups(const qvrResizeAxis& axis, Index d, Index n, Group* group, bool& near)
{
    near = true;
    if (!kSsse3 || n < 16 || axis.length < kReach)
        return false;
    for (Index x = 0; x < n; x += 16, group++) {
        int32_t column[16];
        qvrNearestOf(&axis, d + (x + 16 <= n ? x : n - 16), 16, column);
        group->base = column[0] < axis.length - kReach ? column[0] : axis.length - kReach;
        near &= column[15] - group->base < 16;
        if (column[15] - group->base >= kReach)
            return false;
        for (int k = 0; k < 16; k++) {
            const int32_t from = column[k] - group->base;
            group->low[k] = static_cast<uint8_t>(from < 16 ? from : 128);
            group->high[k] = static_cast<uint8_t>(from < 16 ? 128 : from - 16);
        }
    }
    return true;
}

template<bool Near> void copyGroups(const uint8_t* src, const Group* group, uint8_t* dst, Index n, Index ahead)
{
    if constexpr (kSsse3)
        for (Index x = 0; x < n; x += 16, group++) {
            if (ahead != 0 && x % kLineBytes == 0)
                askFor(dst + x, ahead, 1);
            const uint8_t* const p = src + group->base;
            Block block = shuffleBytes(load<Block>(p), load<Block>(group->low));
            if constexpr (!Near)
                block |= shuffleBytes(load<Block>(p + 16), load<Block>(group->high));
            store(dst + (x + 16 <= n ? x : n - 16), block);
        }
}

template<int Bytes> struct PixelBits {
    using type = uint32_t;
};
template<> struct PixelBits<1> {
    using type = uint8_t;
};
template<> struct PixelBits<8> {
    using type = uint64_t;
};
template<int Bytes> using PixelOf = typename PixelBits<Bytes>::type;

constexpr Index kRows = 64; // of the source that are looked up together

template<class T> void nearest(const qvrResizeBand* b)
{
    if (copyHalves<T>(b))
        return;
    const Index width = b->x.count, bytes = width * static_cast<Index>(sizeof(T));
    Carver carver = bufferOf(b);
    int32_t* const column = carver.take<int32_t>(width, 16);
    Group* const group = reinterpret_cast<Group*>(column);
    const Period period = periodOf<T>(b->x);
    // Columns from here on go by groups, or else by the table.
    Index from = period.done;
    if (sizeof(T) == 1 && from < width && width - from < 16)
        from = width > 16 ? width - 16 : 0;
    const Index rest = width - from;
    bool near = false;
    const bool groups = sizeof(T) == 1 && makeGroups(b->x, b->x.first + from, rest, group, near);
    if (!groups)
        qvrNearestOf(&b->x, b->x.first + from, rest, column);
    const Index ahead = qvrAheadOf(b, sizeof(T));
    Index shown = -1;
    int32_t rows[kRows];
    for (Index n = 0; n < b->y.count; n++) {
        if (n % kRows == 0)
            qvrNearestOf(&b->y, b->y.first + n, n + kRows < b->y.count ? kRows : b->y.count - n, rows);
        const Index y = rows[n % kRows];
        char* const at = outputRow(b, n, sizeof(T));
        T* const to = reinterpret_cast<T*>(at);
        const T* const row = reinterpret_cast<const T*>(sourceRow(b, y));
        if (y == shown) {
            memmove(at, at - b->dstStep, static_cast<size_t>(bytes)); // rows may overlap
            continue;
        }
        shown = y;
        copyBlocks(row, period, to, ahead);
        if (groups)
            (near ? copyGroups<true> : copyGroups<false>)(reinterpret_cast<const uint8_t*>(row), group,
                                                          reinterpret_cast<uint8_t*>(to + from), rest, ahead);
        else
            copyPixels(row, column, to + from, rest, ahead);
    }
}

} // namespace

extern "C" void SLOT(ownResizeNearest)(const qvrResizeBand* band, int pixel)
{
    byPixel(pixel, [&]<class T, int NC>() { nearest<PixelOf<sizeof(T) * NC>>(band); });
}
