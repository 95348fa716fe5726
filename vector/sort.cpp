// Ascending sort in place: quicksort (Hoare, Computer J. 5, 1962) with the median of three, an explicit stack, and a
// selection sort at the bottom.
//
// The order of what compares as equal, zeros of both signs, and of NaN is that of the steps as they stand here, so a
// change of the steps is a change of results. An array without negative zeros, NaN and denormals (which count as zeros
// for a caller who asked for that) has one ascending order, however it is come by: it takes the way without branches on
// values below, and none at all if it is ascending or descending already.
#include "vector/fold.h"
#include "vector/functions.h"
#include "vector/sort_plain.h"

namespace {

constexpr Index kSelectionUpTo = 9;
constexpr int kStack = 32; // only the larger part is pushed, so the depth stays within log2(length) + 1

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
        sortPlain(a, len, [](T* part, Index n) { sortBySteps(part, n); });
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
