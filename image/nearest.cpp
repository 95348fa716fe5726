// Nearest neighbour: a table of columns, then copies. An output row that shows the same source row as the one above is
// a copy of it.
//
// Bytes: the source of 16 neighbouring outputs lies within 16 bytes when enlarging, and within 32 down to a half. So
// each group of outputs is one load and one shuffle or two of each, for which the table holds place and shuffles.
#include <string.h>

#include "image/kernels.h"

namespace {

template<class T> void copyPixels(const T* src, const int32_t* column, T* dst, Index n)
{
    Index x = 0;
    for (; x + 4 <= n; x += 4) {
        const Vec<T, 1> a = load<Vec<T, 1>>(src + column[x]), b = load<Vec<T, 1>>(src + column[x + 1]);
        const Vec<T, 1> c = load<Vec<T, 1>>(src + column[x + 2]), d = load<Vec<T, 1>>(src + column[x + 3]);
        store(dst + x, concat(concat(a, b), concat(c, d)));
    }
    for (; x < n; x++)
        store(dst + x, load<Vec<T, 1>>(src + column[x]));
}

// Where every second pixel is shown: the even bytes, as far as whole vectors lie in the row. Returns how many.
Index copyEvens(const uint8_t* src, Index pixels, uint8_t* dst, Index n)
{
    constexpr int N = kAvx2 ? 32 : 16;
    using Words = Vec<uint16_t, N / 2>;
    const auto evenBytes = [](const uint8_t* p) { return load<Words>(p) & 255; };
    Index x = 0;
    for (; x + N <= n && 2 * (x + N) <= pixels; x += N)
        store(dst + x, packWords(evenBytes(src + 2 * x), evenBytes(src + 2 * x + N)));
    return x;
}

using Block = Vec<uint8_t, 16>;
// 16 outputs from two neighbouring windows of 16 bytes. An index from 128 on gives zero.
struct Group {
    int32_t base;
    uint8_t low[16], high[16];
};
static_assert(sizeof(Group) <= 16 * sizeof(int32_t));
constexpr Index kGroupBytes = sizeof(Group), kReach = 32;

// Turns the column numbers into groups, from the front on, for a group is no larger than what it replaces. False, with
// nothing changed: some outputs lie too far apart. `near`: all of them are in the first windows.
bool makeGroups(int32_t* column, Index n, Index length, bool& near)
{
    if (n < 16 || length < kReach)
        return false;
    near = true;
    const auto fits = [&](Index x) {
        const Index first = column[x] < length - kReach ? column[x] : length - kReach, most = column[x + 15] - first;
        near &= most < 16;
        return most < kReach;
    };
    for (Index x = 0; x + 16 <= n; x += 16)
        if (!fits(x))
            return false;
    if (!fits(n - 16))
        return false;
    char* const at = reinterpret_cast<char*>(column);
    const auto groupAt = [=](Index x) {
        Group group;
        const Index first = column[x] < length - kReach ? column[x] : length - kReach;
        group.base = static_cast<int32_t>(first);
        for (int k = 0; k < 16; k++) {
            const Index from = column[x + k] - first;
            group.low[k] = static_cast<uint8_t>(from < 16 ? from : 128);
            group.high[k] = static_cast<uint8_t>(from < 16 ? 128 : from - 16);
        }
        return group;
    };
    // Group g ends before column 9 g + 9 begins, so only the overlapping last one would read what others have replaced.
    const Index count = (n + 15) / 16;
    const Group last = groupAt(n - 16);
    for (Index g = 0; g < count; g++) {
        const Group group = g + 1 < count ? groupAt(16 * g) : last;
        store(at + g * kGroupBytes, Vec<int32_t, 1>{group.base});
        store(at + g * kGroupBytes + 4, load<Block>(group.low));
        store(at + g * kGroupBytes + 20, load<Block>(group.high));
    }
    return true;
}

template<bool Near> void copyGroups(const uint8_t* src, const char* groups, uint8_t* dst, Index n)
{
    if constexpr (kSsse3) {
        const Index count = (n + 15) / 16;
        for (Index g = 0; g < count; g++, groups += kGroupBytes) {
            const Index x = g + 1 < count ? 16 * g : n - 16;
            const uint8_t* const p = src + load<Vec<int32_t, 1>>(groups)[0];
            Block block = shuffleBytes(load<Block>(p), load<Block>(groups + 4));
            if constexpr (!Near)
                block |= shuffleBytes(load<Block>(p + 16), load<Block>(groups + 20));
            store(dst + x, block);
        }
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
    const Index width = b->x.count, bytes = width * static_cast<Index>(sizeof(T));
    Carver carver = bufferOf(b);
    int32_t* const column = carver.take<int32_t>(width, 16);
    qvrNearestOf(&b->x, b->x.first, width, column);
    bool groups = false, near = false, evens = sizeof(T) == 1;
    const Index first = column[0];
    for (Index x = 0; evens && x < width; x++)
        evens = column[x] == first + 2 * x;
    if constexpr (kSsse3 && sizeof(T) == 1)
        groups = !evens && makeGroups(column, width, b->x.length, near);
    Index shown = -1;
    int32_t rows[kRows];
    for (Index n = 0; n < b->y.count; n++) {
        if (n % kRows == 0)
            qvrNearestOf(&b->y, b->y.first + n, n + kRows < b->y.count ? kRows : b->y.count - n, rows);
        const Index y = rows[n % kRows];
        char* const to = outputRow(b, n, sizeof(T));
        const char* const row = sourceRow(b, y);
        if (y == shown)
            memmove(to, to - b->dstStep, static_cast<size_t>(bytes)); // rows may overlap
        else if (groups)
            (near ? copyGroups<true> : copyGroups<false>)(reinterpret_cast<const uint8_t*>(row),
                                                          reinterpret_cast<const char*>(column),
                                                          reinterpret_cast<uint8_t*>(to), width);
        else if (evens) {
            const auto* const from = reinterpret_cast<const uint8_t*>(row);
            auto* const bytesTo = reinterpret_cast<uint8_t*>(to);
            const Index done = copyEvens(from + first, b->x.length - first, bytesTo, width);
            copyPixels(from, column + done, bytesTo + done, width - done);
        } else
            copyPixels(reinterpret_cast<const T*>(row), column, reinterpret_cast<T*>(to), width);
        shown = y;
    }
}

} // namespace

extern "C" void SLOT(ownResizeNearest)(const qvrResizeBand* band, int pixel)
{
    byPixel(pixel, [&]<class T, int NC>() { nearest<PixelOf<sizeof(T) * NC>>(band); });
}
