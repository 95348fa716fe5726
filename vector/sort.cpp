// Ascending sort in place: quicksort with the median of three, an explicit stack, and a selection sort at the bottom.
//
// The order of what compares as equal, zeros of both signs, and of NaN is that of the steps as they stand here, so a
// change of the steps is a change of results.
#include "vector/fold.h"

namespace {

constexpr Index kSelectionUpTo = 9;
constexpr int kStack = 32; // only the larger part is pushed, so the depth stays within log2(length) + 1

template<class T> QVR_INLINE T elementAt(const T* a, Index i)
{
    return load<Vec<T, 1>>(a + i)[0];
}
template<class T> QVR_INLINE void putElement(T* a, Index i, T x)
{
    store(a + i, Vec<T, 1>{x});
}
template<class T> QVR_INLINE void swapElements(T* a, Index i, Index j)
{
    const T x = elementAt(a, i), y = elementAt(a, j);
    putElement(a, i, y);
    putElement(a, j, x);
}
template<class T> QVR_INLINE void orderPair(T* a, Index i, Index j)
{
    const T x = elementAt(a, i), y = elementAt(a, j);
    putElement(a, i, x > y ? y : x);
    putElement(a, j, x > y ? x : y);
}

// The first of equal maxima goes to the end.
template<class T> QVR_INLINE void selectionSort(T* a, Index from, Index to)
{
    for (; to > from; to--) {
        Index at = from;
        T best = elementAt(a, from);
        for (Index i = from + 1; i <= to; i++) {
            const T x = elementAt(a, i);
            at = x > best ? i : at;
            best = x > best ? x : best;
        }
        putElement(a, at, elementAt(a, to));
        putElement(a, to, best);
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
    const T pivot = elementAt(a, mid);
    Index i = from + 1, j = to;
    for (;;) {
        while (i < j && pivot >= elementAt(a, i))
            i++;
        while (j > i && elementAt(a, j) > pivot)
            j--;
        if (i >= j)
            break;
        swapElements(a, i, j);
        i++;
        j--;
    }
    while (i > from && elementAt(a, i) >= pivot)
        i--;
    while (j < to && pivot >= elementAt(a, j))
        j++;
    // With a NaN the left part could be the whole range again, and the sort would not end.
    if (i == to)
        i--;
    return {i, j};
}

template<class T> QVR_INLINE qvrStatus sortAscend(T* a, int len)
{
    if (const qvrStatus status = checkPointersThenLength(len, a))
        return status;
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
