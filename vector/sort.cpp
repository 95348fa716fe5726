// Ascending sort in place: quicksort (Hoare, Computer J. 5, 1962) with the median of three, an explicit stack, and a
// selection sort at the bottom.
//
// The order of what compares as equal, zeros of both signs, and of NaN is that of the steps as they stand here, so a
// change of the steps is a change of results. An array without negative zeros, NaN and denormals (which count as zeros
// for a caller who asked for that) has one ascending order, however it is come by: it takes the way without branches on
// values below, and none at all if it is ascending or descending already.
#include "vector/fold.h"
#include "vector/functions.h"

namespace {

constexpr Index kSelectionUpTo = 9;
constexpr int kStack = 32; // only the larger part is pushed, so the depth stays within log2(length) + 1

template<class T> QVR_INLINE void swapElements(T* a, Index i, Index j)
{
    const T x = get(a, i), y = get(a, j);
    put(a, i, y);
    put(a, j, x);
}
template<class T> QVR_INLINE void orderPair(T* a, Index i, Index j)
{
    const T x = get(a, i), y = get(a, j);
    put(a, i, x > y ? y : x);
    put(a, j, x > y ? x : y);
}

// The first of equal maxima goes to the end.
template<class T> QVR_INLINE void selectionSort(T* a, Index from, Index to)
{
    for (; to > from; to--) {
        Index at = from;
        T best = get(a, from);
        for (Index i = from + 1; i <= to; i++) {
            const T x = get(a, i);
            at = x > best ? i : at;
            best = x > best ? x : best;
        }
        put(a, at, get(a, to));
        put(a, to, best);
    }
}

struct Parts {
    Index left, right; // left to sort: from the beginning to `left`, and from `right` to the end
};

template<class T> QVR_INLINE Parts partition(T* a, Index from, Index to)
{
    const Index mid = from + ((to - from + 1) >> 1);
    orderPair(a, from, to);
    orderPair(a, mid, to);
    orderPair(a, from, mid);
    const T pivot = get(a, mid);
    Index i = from + 1, j = to;
    for (;;) {
        while (i < j && pivot >= get(a, i))
            i++;
        while (j > i && get(a, j) > pivot)
            j--;
        if (i >= j)
            break;
        swapElements(a, i, j);
        i++;
        j--;
    }
    while (i > from && get(a, i) >= pivot)
        i--;
    while (j < to && pivot >= get(a, j))
        j++;
    // With a NaN the left part could be the whole range again, and the sort would not end.
    if (i == to)
        i--;
    return {i, j};
}

template<class T> void sortBySteps(T* a, Index len)
{
    struct {
        Index from, to;
    } stack[kStack];
    int depth = 1;
    Index from = 0, to = len - 1;
    while (depth != 0) {
        if (to - from + 1 <= kSelectionUpTo) {
            selectionSort(a, from, to);
            if (--depth > 0) {
                from = stack[depth].from;
                to = stack[depth].to;
            }
            continue;
        }
        const Parts parts = partition(a, from, to);
        if (parts.left - from >= to - parts.right) {
            if (parts.right != to) {
                stack[depth++] = {from, parts.left};
                from = parts.right;
            } else {
                to = parts.left;
            }
        } else if (parts.left != from) {
            stack[depth++] = {parts.right, to};
            to = parts.left;
        } else {
            from = parts.right;
        }
    }
}

// ---- Arrays with one ascending order --------------------------------------------------------------------------------

struct Kind {
    bool plain, ascending, descending;
};

// A magnitude is plain from the smallest normal number to infinity, and at +0: reinterpreted as an integer and lowered
// by the smallest normal, zeros and denormals become the largest unsigned values, behind all NaN.
template<class T> QVR_INLINE Kind judge(const T* a, Index n)
{
    using V = Full<T>;
    using U = Bits<V>;
    using E = Elem<U>;
    constexpr int N = kLanes<T>;
    constexpr E infinity = sizeof(T) == 4 ? E{0x7F800000} : static_cast<E>(0x7FF0000000000000);
    constexpr E smallest = sizeof(T) == 4 ? E{0x00800000} : static_cast<E>(0x0010000000000000);
    constexpr E signBit = E{1} << (8 * sizeof(T) - 1);
    const auto odd = [](auto x) {
        using W = decltype(bits(x));
        const W word = bits(x), magnitude = word & ~splat<W>(signBit);
        return (magnitude - smallest > splat<W>(infinity - smallest)) & (word != W{});
    };
    if (n <= N) {
        // One pair at a time: there are few.
        Kind kind{!anyTrue(odd(load<Vec<T, 1>>(a))), true, true};
        for (Index i = 1; i < n; i++) {
            const T x = get(a, i - 1), y = get(a, i);
            kind.plain &= !anyTrue(odd(Vec<T, 1>{y}));
            kind.ascending &= x <= y;
            kind.descending &= x >= y;
        }
        return kind;
    }
    Mask<V> oddOnes = odd(load<V>(a + n - N)), rises{}, falls{};
    const auto look = [&](Index i) {
        const V x = load<V>(a + i), next = load<V>(a + i + 1);
        oddOnes |= odd(x);
        rises |= x < next;
        falls |= x > next;
    };
    for (Index i = 0; i + N < n; i += N)
        look(i);
    look(n - N - 1);
    return {!anyTrue(oddOnes), !anyTrue(falls), !anyTrue(rises)};
}

template<class T> QVR_INLINE void reverse(T* a, Index n)
{
    for (Index i = 0, j = n - 1; i < j; i++, j--)
        swapElements(a, i, j);
}

template<bool OrEqual, class T> QVR_INLINE bool goesToFront(T x, T pivot)
{
    return OrEqual ? x <= pivot : x < pivot;
}

// What is below the pivot (or not above it) goes to the front, whose length is returned. Up to a buffer's length, every
// element is stored in the front and in the buffer, and the comparison moves on in one of them: no store is waited for.
constexpr Index kBuffer = 256;

template<bool OrEqual, class T> QVR_INLINE Index gatherShort(T* a, Index n, T pivot)
{
    T buffer[kBuffer];
    Index front = 0;
    for (Index i = 0; i < n; i++) {
        const T x = get(a, i);
        put(a, front, x);
        put(buffer, i - front, x);
        front += goesToFront<OrEqual>(x, pivot);
    }
    const Index back = n - front;
    __builtin_memcpy(reinterpret_cast<char*>(a + front), buffer, static_cast<size_t>(back) * sizeof(T));
    return front;
}

// Longer arrays in blocks from both ends: the places of the elements that lie on the wrong side are listed, again with
// a store that the comparison keeps or not, and then swapped in pairs. What the blocks leave goes the short way.
template<bool OrEqual, class T> QVR_INLINE Index gather(T* a, Index n, T pivot)
{
    constexpr int B = 64;
    static_assert(4 * B <= kBuffer);
    uint8_t left[B], right[B];
    int lefts = 0, rights = 0, leftAt = 0, rightAt = 0;
    Index from = 0, to = n;
    while (to - from > 2 * B) {
        if (lefts == 0) {
            leftAt = 0;
            for (int k = 0; k < B; k++) {
                left[lefts] = static_cast<uint8_t>(k);
                lefts += !goesToFront<OrEqual>(get(a, from + k), pivot);
            }
        }
        if (rights == 0) {
            rightAt = 0;
            for (int k = 0; k < B; k++) {
                right[rights] = static_cast<uint8_t>(k);
                rights += goesToFront<OrEqual>(get(a, to - 1 - k), pivot);
            }
        }
        const int pairs = lefts < rights ? lefts : rights;
        for (int k = 0; k < pairs; k++)
            swapElements(a, from + left[leftAt + k], to - 1 - right[rightAt + k]);
        lefts -= pairs;
        rights -= pairs;
        leftAt += pairs;
        rightAt += pairs;
        from += lefts == 0 ? B : 0;
        to -= rights == 0 ? B : 0;
    }
    return from + gatherShort<OrEqual>(a + from, to - from, pivot);
}

template<class T> QVR_INLINE T medianOf(T x, T y, T z)
{
    const T low = x < y ? x : y, high = x < y ? y : x;
    const T least = high < z ? high : z;
    return low > least ? low : least;
}

// Eight elements by a network of 19 comparisons.
template<class T> QVR_INLINE void sortEight(T* a)
{
    constexpr int8_t network[19][2] = {{0, 2}, {1, 3}, {4, 6}, {5, 7}, {0, 4}, {1, 5}, {2, 6}, {3, 7}, {0, 1}, {2, 3},
                                       {4, 5}, {6, 7}, {2, 4}, {3, 5}, {1, 4}, {3, 6}, {1, 2}, {3, 4}, {5, 6}};
    T x[8];
#pragma unroll
    for (int i = 0; i < 8; i++)
        x[i] = get(a, i);
#pragma unroll
    for (int i = 0; i < 19; i++) {
        const T low = x[network[i][0]], high = x[network[i][1]];
        x[network[i][0]] = low < high ? low : high;
        x[network[i][1]] = low > high ? low : high;
    }
#pragma unroll
    for (int i = 0; i < 8; i++)
        put(a, i, x[i]);
}

// Few elements by counting: the place of each is the number of those below it and of equal ones before it. A vector of
// elements counts against one other at a time.
constexpr Index kCountUpTo = 32;

template<class T> QVR_INLINE void sortByCounting(T* a, Index n)
{
    using V = Full<T>;
    using M = Mask<V>;
    constexpr int N = kLanes<T>;
    T x[kCountUpTo];
    Elem<M> place[kCountUpTo];
    for (Index i = 0; i < n; i++)
        x[i] = get(a, i);
    for (Index i = n; i % N != 0; i++)
        x[i] = x[0];
    for (Index at = 0; at < n; at += N) {
        const V v = load<V>(x + at);
        M below{}, ones{};
        Index j = 0;
        for (; j < at; j++)
            below += splat<V>(x[j]) <= v;
        M later = iota<M>();
        for (; j < at + N && j < n; j++) {
            const V other = splat<V>(x[j]);
            ones += other < v;
            ones += (other == v) & (later > M{});
            later -= 1;
        }
        for (; j < n; j++)
            below += splat<V>(x[j]) < v;
        store(place + at, -(below + ones));
    }
    for (Index i = 0; i < n; i++)
        put(a, static_cast<Index>(place[i]), x[i]);
}

constexpr Index kSmallUpTo = 8;
constexpr Index kNinthsFrom = 128; // elements from which the pivot is a median of three medians

template<class T> void sortPlain(T* a, Index len)
{
    struct {
        T* from;
        Index n;
        int patience; // bad splits left before the steps take over
    } stack[kStack];
    T* const end = a + len;
    int depth = 0, patience = 2 * (64 - __builtin_clzll(static_cast<unsigned long long>(len)));
    for (Index n = len;;) {
        if (n <= kCountUpTo || patience == 0) {
            // What lies behind a part is not below it, and parts behind it are in order, so sorting eight from its
            // beginning does no harm there, and needs no look at the length.
            if (n <= kSmallUpTo && end - a >= 8)
                sortEight(a);
            else if (n <= kCountUpTo)
                sortByCounting(a, n);
            else
                sortBySteps(a, n);
            if (depth == 0)
                return;
            depth--;
            a = stack[depth].from;
            n = stack[depth].n;
            patience = stack[depth].patience;
            continue;
        }
        const auto three = [&](Index at, Index apart) {
            return medianOf(get(a, at - apart), get(a, at), get(a, at + apart));
        };
        const Index middle = n / 2, apart = n / 8;
        const T pivot = n < kNinthsFrom
                            ? three(middle, middle - 1)
                            : medianOf(three(apart + 1, apart), three(middle, apart), three(n - apart - 2, apart));
        Index front = gather<false>(a, n, pivot);
        if (front == 0) {
            // The pivot is the least: what equals it is in place.
            front = gather<true>(a, n, pivot);
            a += front;
            n -= front;
            continue;
        }
        const Index back = n - front;
        patience -= front < n / 8 || back < n / 8;
        if (front > back) {
            stack[depth++] = {a, front, patience};
            a += front;
            n = back;
        } else {
            stack[depth++] = {a + front, back, patience};
            n = front;
        }
    }
}

template<class T> QVR_INLINE qvrStatus sortAscend(T* a, int len)
{
    if (const qvrStatus status = checkPointersThenLength(len, a))
        return status;
    const Kind kind = judge(a, len);
    if (!kind.plain)
        sortBySteps(a, len);
    else if (kind.ascending)
        return qvrOk;
    else if (kind.descending)
        reverse(a, len);
    else
        sortPlain(a, len);
    return qvrOk;
}

} // namespace

extern "C" qvrStatus SLOT(qvrsSortAscend_32f_I)(qvr32f* pSrcDst, int len)
{
    return sortAscend(pSrcDst, len);
}

extern "C" qvrStatus SLOT(qvrsSortAscend_64f_I)(qvr64f* pSrcDst, int len)
{
    return sortAscend(pSrcDst, len);
}
