// Nearest neighbour: a table of columns, then copies. An output row that shows the same source row as the one above is
// a copy of it.
//
// Enlarging bytes: the source of 16 neighbouring outputs lies within 16 bytes, so each group of outputs is one load and
// one shuffle, for which the table holds the place of the load and the shuffle.
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

using Block = Vec<uint8_t, 16>;
struct Group {
    int32_t base;
    uint8_t from[16];
};
static_assert(sizeof(Group) <= 16 * sizeof(int32_t));

// Turns the column numbers into groups, from the front on, for a group is no larger than what it replaces. False, with
// nothing changed: some outputs lie too far apart.
bool makeGroups(int32_t* column, Index n, Index length)
{
    if (n < 16 || length < 16)
        return false;
    for (Index x = 0; x + 16 <= n; x += 16)
        if (column[x + 15] - column[x] > 15)
            return false;
    if (column[n - 1] - column[n - 16] > 15)
        return false;
    char* const at = reinterpret_cast<char*>(column);
    const auto groupAt = [=](Index x) {
        Group group;
        const Index first = column[x];
        group.base = static_cast<int32_t>(first < length - 16 ? first : length - 16);
        for (int k = 0; k < 16; k++)
            group.from[k] = static_cast<uint8_t>(column[x + k] - group.base);
        return group;
    };
    // Group g ends where column 5 g + 5 begins, so only the overlapping last one would read what others have replaced.
    const Index count = (n + 15) / 16;
    const Group last = groupAt(n - 16);
    for (Index g = 0; g < count; g++) {
        const Group group = g + 1 < count ? groupAt(16 * g) : last;
        store(at + g * static_cast<Index>(sizeof(Group)), Vec<int32_t, 1>{group.base});
        store(at + g * static_cast<Index>(sizeof(Group)) + 4, load<Block>(group.from));
    }
    return true;
}

void copyGroups(const uint8_t* src, const char* groups, uint8_t* dst, Index n)
{
    if constexpr (kSsse3) {
        const Index count = (n + 15) / 16;
        for (Index g = 0; g < count; g++, groups += sizeof(Group)) {
            const Index x = g + 1 < count ? 16 * g : n - 16;
            const Index base = load<Vec<int32_t, 1>>(groups)[0];
            store(dst + x, shuffleBytes(load<Block>(src + base), load<Block>(groups + 4)));
        }
    }
}

template<class T> void nearest(const qvrResizeBand* b)
{
    const Index width = b->x.count, bytes = width * static_cast<Index>(sizeof(T));
    Carver carver = bufferOf(b);
    int32_t* const column = carver.take<int32_t>(width, 16);
    for (Index x = 0; x < width; x++)
        column[x] = qvrNearestIndex(&b->x, b->x.first + x);
    bool groups = false;
    if constexpr (kSsse3 && sizeof(T) == 1)
        groups = makeGroups(column, width, b->x.length);
    Index shown = -1;
    for (Index n = 0; n < b->y.count; n++) {
        const Index y = qvrNearestIndex(&b->y, b->y.first + n);
        char* const to = outputRow(b, n, sizeof(T));
        const char* const row = sourceRow(b, y);
        if (y == shown)
            memmove(to, to - b->dstStep, static_cast<size_t>(bytes)); // rows may overlap
        else if (groups)
            copyGroups(reinterpret_cast<const uint8_t*>(row), reinterpret_cast<const char*>(column),
                       reinterpret_cast<uint8_t*>(to), width);
        else
            copyPixels(reinterpret_cast<const T*>(row), column, reinterpret_cast<T*>(to), width);
        shown = y;
    }
}

} // namespace

extern "C" void SLOT(ownResizeNearest)(const qvrResizeBand* band, int pixel)
{
    if (pixel == qvrPixel_8u_C1)
        nearest<uint8_t>(band);
    else if (pixel == qvrPixel_64f_C1)
        nearest<uint64_t>(band);
    else
        nearest<uint32_t>(band);
}
