// Sorting of an array that has one ascending order: quicksort that compares and moves whole vectors.
//
// Small parts are sorted in registers by Batcher's bitonic merging (AFIPS Spring Joint Computer Conference 1968): the
// lanes of each vector, then runs of 1, 2 and 4 vectors in pairs, the second one backward. Larger ones are parted by a
// pivot in place, a vector at a time (Gueron and Krasnov, Computer J. 59, 2016; Bramas, IJACSA 8, 2017): its lanes
// below the pivot move to its front, and it is stored twice, at the end of the front part and at the beginning of the
// back part, where what does not belong is stored over next.
#ifndef QVR_VECTOR_SORT_PLAIN_H
#define QVR_VECTOR_SORT_PLAIN_H

#include "frame/compress.h"
#include "frame/element.h"

namespace {

// ---- In registers ---------------------------------------------------------------------------------------------------

// Lanes i and i ^ Other in order: those with the bit Upper set get the larger one.
template<int Other, int Upper, class V, int... I> QVR_INLINE V orderLanes(V v, Indices<I...>)
{
    const V other = __builtin_shufflevector(v, v, (I ^ Other)...);
    return __builtin_shufflevector(min(v, other), max(v, other), (I & Upper ? lanes<V> + I : I)...);
}

// A bitonic sequence in the blocks of 2 Distance lanes.
template<int Distance, class V> QVR_INLINE V mergeLanes(V v)
{
    if constexpr (Distance > 0)
        return mergeLanes<Distance / 2>(orderLanes<Distance, Distance>(v, Iota<lanes<V>>{}));
    else
        return v;
}
template<int Block = 2, class V> QVR_INLINE V sortLanes(V v)
{
    if constexpr (Block <= lanes<V>)
        return sortLanes<2 * Block>(mergeLanes<Block / 4>(orderLanes<Block - 1, Block / 2>(v, Iota<lanes<V>>{})));
    else
        return v;
}

template<class V> QVR_INLINE void orderVectors(V& a, V& b)
{
    const V low = min(a, b);
    b = max(a, b);
    a = low;
}

// Two sorted runs of L vectors to one.
template<int L, class V> QVR_INLINE void mergeRuns(V* x)
{
    V second[L];
#pragma unroll
    for (int i = 0; i < L; i++)
        second[i] = reversedLanes(x[2 * L - 1 - i]);
#pragma unroll
    for (int i = 0; i < L; i++) {
        x[L + i] = second[i];
        orderVectors(x[i], x[L + i]);
    }
#pragma unroll
    for (int distance = L / 2; distance > 0; distance /= 2)
#pragma unroll
        for (int i = 0; i < 2 * L; i++)
            if ((i & distance) == 0)
                orderVectors(x[i], x[i + distance]);
#pragma unroll
    for (int i = 0; i < 2 * L; i++)
        x[i] = mergeLanes<lanes<V> / 2>(x[i]);
}

// The n elements from a on, which are more than R / 2 vectors and at most R; what is missing counts as infinite.
template<int R, class T> void sortVectors(T* a, Index n)
{
    using V = Full<T>;
    constexpr int N = lanes<V>;
    V x[R];
#pragma unroll
    for (int i = 0; i < R; i++) {
        const Index left = n - i * N;
        if (left >= N)
            x[i] = load<V>(a + i * N);
        else if (left > 0)
            x[i] = iota<Mask<V>>() < static_cast<Elem<Mask<V>>>(left)
                       ? loadPartial<V>(a + i * N, static_cast<int>(left))
                       : splat<V>(static_cast<T>(__builtin_inf()));
        else
            x[i] = splat<V>(static_cast<T>(__builtin_inf()));
        x[i] = sortLanes(x[i]);
    }
    if constexpr (R >= 2)
#pragma unroll
        for (int i = 0; i < R; i += 2)
            mergeRuns<1>(x + i);
    if constexpr (R >= 4)
#pragma unroll
        for (int i = 0; i < R; i += 4)
            mergeRuns<2>(x + i);
    if constexpr (R >= 8)
        mergeRuns<4>(x);
#pragma unroll
    for (int i = 0; i < R; i++) {
        const Index left = n - i * N;
        if (left >= N)
            store(a + i * N, x[i]);
        else if (left > 0)
            storePartial(a + i * N, x[i], static_cast<int>(left));
    }
}

constexpr int kMostVectors = 8;

template<class T> void sortSmall(T* a, Index n)
{
    constexpr int N = kLanes<T>;
    if (n <= N)
        sortVectors<1>(a, n);
    else if (n <= 2 * N)
        sortVectors<2>(a, n);
    else if (n <= 4 * N)
        sortVectors<4>(a, n);
    else
        sortVectors<8>(a, n);
}

// ---- Parting --------------------------------------------------------------------------------------------------------

template<class T> QVR_INLINE void swapElements(T* a, Index i, Index j)
{
    const T x = get(a, i), y = get(a, j);
    put(a, i, y);
    put(a, j, x);
}

template<bool OrEqual, class V> QVR_INLINE auto goesToFront(V x, V pivot)
{
    if constexpr (OrEqual)
        return x <= pivot;
    else
        return x < pivot;
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
template<bool OrEqual, class T> QVR_INLINE Index gatherElements(T* a, Index n, T pivot)
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

// Blocks of four vectors are read from the end that has less room to write; the first block of either end waits in
// registers, so that there is always room for four vectors on both sides.
template<bool OrEqual, int K, class T> __attribute__((noinline)) Index gatherVectors(T* a, Index n, T pivotValue)
{
    using V = Compressible<T>;
    constexpr int N = lanes<V>;
    const V pivot = splat<V>(pivotValue);
    Index front = 0, back = n;
    const auto place = [&](V v) {
        const int mask = laneBits(goesToFront<OrEqual>(v, pivot)), count = laneCount(mask);
        const V parted = compress(v, mask);
        store(a + front, parted);
        store(a + back - N, parted);
        front += count;
        back -= N - count;
    };
    V first[K], last[K];
    for (int k = 0; k < K; k++) {
        first[k] = load<V>(a + k * N);
        last[k] = load<V>(a + n - (K - k) * N);
    }
    Index from = K * N, to = n - K * N;
    while (to - from >= K * N) {
        const bool left = from - front <= back - to;
        const T* const block = a + (left ? from : to - K * N);
        from += left ? K * N : 0;
        to -= left ? 0 : K * N;
        V v[K];
        for (int k = 0; k < K; k++)
            v[k] = load<V>(block + k * N);
        for (int k = 0; k < K; k++)
            place(v[k]);
    }
    T rest[K * N];
    const Index left = to - from;
    __builtin_memcpy(rest, reinterpret_cast<const char*>(a + from), static_cast<size_t>(left) * sizeof(T));
    Index i = 0;
    for (; i + N <= left; i += N)
        place(load<V>(rest + i));
    for (; i < left; i++) {
        const bool low = goesToFront<OrEqual>(rest[i], pivotValue);
        back -= !low;
        put(a, low ? front : back, rest[i]);
        front += low;
    }
    for (int k = 0; k < K; k++)
        place(first[k]);
    for (int k = 0; k < K; k++)
        place(last[k]);
    return front;
}

// What is below the pivot (or not above it) goes to the front, whose length is returned.
template<bool OrEqual, class T> QVR_INLINE Index gather(T* a, Index n, T pivot)
{
    if constexpr (kHasCompress)
        return n < 512 ? gatherVectors<OrEqual, 4>(a, n, pivot) : gatherVectors<OrEqual, 8>(a, n, pivot);
    else
        return gatherElements<OrEqual>(a, n, pivot);
}

// ---- Quicksort ------------------------------------------------------------------------------------------------------

template<class T> QVR_INLINE T medianOf(T x, T y, T z)
{
    const T low = x < y ? x : y, high = x < y ? y : x;
    const T least = high < z ? high : z;
    return low > least ? low : least;
}

constexpr Index kNinthsFrom = 128; // elements from which the pivot is a median of three medians

// Many vectors; the first one decides for most arrays.
template<class T> QVR_INLINE bool allEqual(const T* a, Index n, T value)
{
    using V = Full<T>;
    const V other = splat<V>(value);
    for (Index i = 0; i + lanes<V> <= n; i += lanes<V>)
        if (anyTrue(load<V>(a + i) != other))
            return false;
    return !anyTrue(load<V>(a + n - lanes<V>) != other);
}

// steps(a, n) sorts what no pivot parts well. A pivot equal to a bound from below parts off its equals at once, so few
// distinct values take little more than a pass for each.
template<class T, class Steps> void sortPlain(T* a, Index len, const Steps& steps)
{
    struct {
        T* from;
        Index n;
        int patience; // bad splits left before the steps take over
        T least;      // nothing is below this
    } stack[32];      // only the smaller part goes on at once, so the depth stays within log2(length) + 1
    int depth = 0, patience = 2 * (64 - __builtin_clzll(static_cast<unsigned long long>(len)));
    T least = static_cast<T>(-__builtin_inf());
    for (Index n = len;;) {
        const auto three = [&](Index at, Index apart) {
            return medianOf(get(a, at - apart), get(a, at), get(a, at + apart));
        };
        T pivot{};
        bool sorted = true;
        if (n <= kMostVectors * kLanes<T>) {
            sortSmall(a, n);
        } else if (patience == 0) {
            steps(a, n);
        } else {
            const Index middle = n / 2, apart = n / 8;
            pivot = n < kNinthsFrom
                        ? three(middle, middle - 1)
                        : medianOf(three(apart + 1, apart), three(middle, apart), three(n - apart - 2, apart));
            sorted = allEqual(a, n, pivot);
        }
        if (sorted) {
            if (depth == 0)
                return;
            depth--;
            a = stack[depth].from;
            n = stack[depth].n;
            patience = stack[depth].patience;
            least = stack[depth].least;
            continue;
        }
        Index front = pivot == least ? 0 : gather<false>(a, n, pivot);
        if (front == 0) {
            // The pivot is the least: what equals it is in place.
            front = gather<true>(a, n, pivot);
            a += front;
            n -= front;
            least = pivot;
            continue;
        }
        const Index back = n - front;
        patience -= front < n / 8 || back < n / 8;
        if (front > back) {
            stack[depth++] = {a, front, patience, least};
            a += front;
            n = back;
            least = pivot;
        } else {
            stack[depth++] = {a + front, back, patience, pivot};
            n = front;
        }
    }
}

} // namespace

#endif
