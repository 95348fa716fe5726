// The first occurrence of a sequence.
//
// Two elements of the sequence are compared with a vector of starts at once, and only where both match is the whole
// compared, a vector at a time. The two are neighbours that differ, if there are such: a sequence that repeats one
// value up to an odd one is then not mistaken at every start inside a run of that value, which is what makes the plain
// search slow. A constant sequence is probed at its ends.
#include "vector/fold.h"
#include "vector/functions.h"

namespace {

template<int N, class T> QVR_INLINE bool equalShort(const T* a, const T* b, Index n)
{
    if constexpr (N > 1) {
        constexpr int H = N / 2;
        using V = Vec<T, H>;
        if (n >= H) {
            const auto first = load<V>(a) != load<V>(b), last = load<V>(a + n - H) != load<V>(b + n - H);
            return !anyTrue(first | last);
        }
        return equalShort<H>(a, b, n);
    }
    return true;
}

template<class T> QVR_INLINE bool equalArrays(const T* a, const T* b, Index n)
{
    using V = Full<T>;
    constexpr int N = kLanes<T>;
    if (n < N)
        return equalShort<N>(a, b, n);
    for (Index i = 0; i + N <= n; i += N)
        if (anyTrue(load<V>(a + i) != load<V>(b + i)))
            return false;
    return !anyTrue(load<V>(a + n - N) != load<V>(b + n - N));
}

struct Probes {
    Index first, second;
};

template<class T> QVR_INLINE Probes chooseProbes(const T* find, Index n)
{
    for (Index i = 1; i < n; i++)
        if (get(find, i) != get(find, i - 1))
            return {i - 1, i};
    return {0, n - 1};
}

// The first start among those of a vector's two matches, or -1.
template<class T, class V> QVR_INLINE Index tryStarts(V match, const T* src, const T* find, Index n)
{
    for (uint32_t todo = byteBits(match); todo != 0;) {
        const int lane = __builtin_ctz(todo) / static_cast<int>(sizeof(T));
        if (equalArrays(src + lane, find, n))
            return lane;
        todo &= ~((sizeof(T) == 1 ? 1u : 3u) << (lane * sizeof(T)));
    }
    return -1;
}

// -1 if there is none. The sequence is not longer than the array.
template<class T> QVR_INLINE Index search(const T* src, Index len, const T* find, Index n)
{
    using V = Full<T>;
    constexpr int N = kLanes<T>;
    const Index starts = len - n + 1;
    if (starts < N) {
        for (Index k = 0; k < starts; k++)
            if (equalArrays(src + k, find, n))
                return k;
        return -1;
    }
    const Probes at = chooseProbes(find, n);
    const V first = splat<V>(get(find, at.first)), second = splat<V>(get(find, at.second));
    const auto match = [&](Index k) {
        return (load<V>(src + k + at.first) == first) & (load<V>(src + k + at.second) == second);
    };
    Index k = 0;
    while (k < starts) {
        for (; k + 4 * N <= starts; k += 4 * N)
            if (anyTrue((match(k) | match(k + N)) | (match(k + 2 * N) | match(k + 3 * N))))
                break;
        // The last vector of starts steps back over some that did not match before.
        for (int turn = 0; turn < 4 && k < starts; turn++, k += N) {
            const Index from = k + N <= starts ? k : starts - N;
            if (const Index lane = tryStarts(match(from), src + from, find, n); lane >= 0)
                return from + lane;
        }
    }
    return -1;
}

template<class T> QVR_INLINE qvrStatus findFirst(const T* pSrc, int len, const T* pFind, int lenFind, qvr32s* pIndex)
{
    if (anyNull(pSrc, pFind, pIndex))
        return qvrErrNullPointer;
    if (len < 0 || lenFind < 0)
        return qvrErrBadCount;
    const Index at = len == 0 || lenFind == 0 || lenFind > len ? -1 : search(pSrc, len, pFind, lenFind);
    put(pIndex, 0, static_cast<qvr32s>(at));
    return qvrOk;
}

} // namespace

extern "C" qvrStatus SLOT(qvrsFind_8u)(const qvr8u* pSrc, int len, const qvr8u* pFind, int lenFind, qvr32s* pIndex)
{
    return findFirst(pSrc, len, pFind, lenFind, pIndex);
}

extern "C" qvrStatus SLOT(qvrsFind_16u)(const qvr16u* pSrc, int len, const qvr16u* pFind, int lenFind, qvr32s* pIndex)
{
    return findFirst(pSrc, len, pFind, lenFind, pIndex);
}
