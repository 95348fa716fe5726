// Median filter in place.
//
// Windows of three and five are networks of minima and maxima over whole vectors. Outputs overwrite inputs that later
// windows need, so each turn loads what the next one needs from before its own outputs.
//
// Longer windows are kept sorted from one output to the next: the leaving sample is found by its bits, and the samples
// between its place and that of the entering one move by one. As long as equal samples of the window have equal bits
// and none is a NaN, that is a formula for each place alone, with no search: with a the sample there and b its
// neighbour above (entering >= leaving) or below (entering < leaving)
//   a < leaving ? a : min(b, max(a, entering))          a > leaving ? a : max(b, min(a, entering))
#include "filters/functions.h"
#include "frame/element.h"
#include "frame/memory.h"
#include "frame/simd.h"
#include "frame/status.h"

namespace {

template<class V> QVR_INLINE V medianOfThree(V a, V b, V c)
{
    const V p = max(a, b), q = min(a, b);
    return p > c ? (q >= c ? q : c) : p;
}

template<class V> QVR_INLINE V medianOfFive(V a, V b, V c, V d, V e)
{
    const V low = max(min(a, b), min(c, d)), high = min(max(a, b), max(c, d));
    return medianOfThree(low, high, e);
}

void median3(float* x, Index n)
{
    using V = Full<float>;
    constexpr int N = kLanes<float>;
    Index i = 1;
    V before = n >= N ? load<V>(x) : V{};
    for (; i + 2 * N <= n; i += N) {
        const V next = load<V>(x + i + N - 1); // input of the following turn, ahead of the store
        store(x + i, medianOfThree(before, load<V>(x + i), load<V>(x + i + 1)));
        before = next;
    }
    using S = Vec<float, 1>;
    S previous = {i == 1 ? get(x, 0) : before[0]};
    for (; i < n - 1; i++) {
        const S here = load<S>(x + i);
        store(x + i, medianOfThree(previous, here, load<S>(x + i + 1)));
        previous = here;
    }
}

void median5(float* x, Index n)
{
    using V = Full<float>;
    using S = Vec<float, 1>;
    constexpr int N = kLanes<float>;
    const auto sample = [=](Index i) { return S{get(x, i < n ? i : n - 1)}; };
    // The window of output 1 reaches one place before the vector.
    S back2 = sample(0), back1 = sample(0);
    Index i = 1;
    const auto step = [&] {
        const S here = sample(i);
        store(x + i, medianOfFive(back2, back1, here, sample(i + 1), sample(i + 2)));
        back2 = back1;
        back1 = here;
        i++;
    };
    step();
    if (i + 2 * N + 2 <= n) {
        // before2 = x[i - 2 ..] and before1 = x[i - 1 ..] as they were before output 1 was written.
        V before1 = load<V>(x + i - 1), before2 = load<V>(x + i - 2);
        before1[0] = back1[0];
        before2[0] = back2[0];
        before2[1] = back1[0];
        for (; i + 2 * N + 2 <= n; i += N) {
            const V next2 = load<V>(x + i + N - 2), next1 = load<V>(x + i + N - 1);
            store(x + i, medianOfFive(before2, before1, load<V>(x + i), load<V>(x + i + 1), load<V>(x + i + 2)));
            before2 = next2;
            before1 = next1;
        }
        back2 = S{before2[0]};
        back1 = S{before1[0]};
    }
    while (i < n - 1)
        step();
}

using Block = Vec<float, 8>;

// The window sorted, between a block of -infinity and at least one of +infinity, which the neighbours of the first and
// last sample come from.
struct Window {
    float* sorted;
    Index size;
    int otherZeros;  // with any of these in the window equal samples may differ in their bits
    bool disordered; // a NaN has been met: the window need not be sorted from there on
};

// What equals zero without its bits: -0, and where the caller's environment takes denormals for zeros each of those.
bool isOtherZero(float x)
{
    return isZero(x) && __builtin_bit_cast(uint32_t, x) != 0;
}

// One block after the other from aligned loads, which meet the stores of the previous output without delay.
void replaceByFormula(const Window& w, float leaving, float entering)
{
    const Block in = splat<Block>(entering);
    if (entering >= leaving) {
        Block a = load<Block>(w.sorted);
        for (Index k = 0; k < w.size; k += 8) {
            const Block next = load<Block>(w.sorted + k + 8);
            const Block b = __builtin_shufflevector(a, next, 1, 2, 3, 4, 5, 6, 7, 8);
            store(w.sorted + k, a < leaving ? a : min(b, max(a, in)));
            a = next;
        }
    } else {
        Index k = (w.size - 1) / 8 * 8;
        Block a = load<Block>(w.sorted + k);
        for (; k >= 0; k -= 8) {
            const Block next = load<Block>(w.sorted + k - 8);
            const Block b = __builtin_shufflevector(next, a, 7, 8, 9, 10, 11, 12, 13, 14);
            store(w.sorted + k, a > leaving ? a : max(b, min(a, in)));
            a = next;
        }
    }
}

// The same by search and moves, for any bits. The last place ends the search, whatever stands there.
void replaceBySearch(const Window& w, float leaving, float entering)
{
    float* sorted = w.sorted;
    Index hole = 0;
    while (hole + 1 < w.size && __builtin_bit_cast(uint32_t, sorted[hole]) != __builtin_bit_cast(uint32_t, leaving))
        hole++;
    if (entering >= leaving)
        for (; hole + 1 < w.size && sorted[hole + 1] < entering; hole++)
            sorted[hole] = sorted[hole + 1];
    else
        for (; hole > 0 && sorted[hole - 1] > entering; hole--)
            sorted[hole] = sorted[hole - 1];
    sorted[hole] = entering;
}

// Equal samples keep their order in both sorts. With a NaN the order is that of neighbours exchanged, so it is made
// that way; without one a merge sort gives the same in far less time.
void exchangeSort(float* a, Index n)
{
    for (Index end = n - 1; end > 0; end--)
        for (Index i = 0; i < end; i++)
            if (a[i] > a[i + 1]) {
                const float t = a[i];
                a[i] = a[i + 1];
                a[i + 1] = t;
            }
}

void mergeSort(float* a, float* spare, Index n)
{
    float *from = a, *to = spare;
    for (Index run = 1; run < n; run *= 2) {
        for (Index start = 0; start < n; start += 2 * run) {
            const Index middle = start + run < n ? start + run : n, end = start + 2 * run < n ? start + 2 * run : n;
            Index i = start, j = middle;
            for (Index k = start; k < end; k++)
                to[k] = j >= end || (i < middle && from[i] <= from[j]) ? from[i++] : from[j++];
        }
        float* const swap = from;
        from = to;
        to = swap;
    }
    if (from != a)
        for (Index k = 0; k < n; k++)
            a[k] = from[k];
}

// The same for few elements: each goes to the place that the number of those before it tells, without a branch on
// values.
constexpr Index kRankUpTo = 32;

void rankSort(float* a, Index n)
{
    float from[kRankUpTo];
    for (Index k = 0; k < kRankUpTo; k++)
        from[k] = k < n ? a[k] : __builtin_inff();
    for (Index i = 0; i < n; i++) {
        const Block x = splat<Block>(from[i]);
        Mask<Block> before{};
        for (Index k = 0; k < n; k += 8) {
            const Block y = load<Block>(from + k);
            before += (y < x) | ((y == x) & (iota<Mask<Block>>() + static_cast<int>(k) < static_cast<int>(i)));
        }
        a[-sumLanes(before)] = from[i];
    }
}

// The first window sorted: `before` samples equal to the first one stand ahead of it, and behind the last one of the n
// samples `after` equal ones. Among equals the first sample is the first, the last one the last.
void sortFirstWindow(const float* x, Index n, Index before, Index after, float* sorted, float* spare)
{
    for (Index k = 0; k < n; k++)
        sorted[k] = get(x, k);
    const float first = sorted[0], last = sorted[n - 1];
    if (n <= kRankUpTo)
        rankSort(sorted, n);
    else
        mergeSort(sorted, spare, n);
    Index to = n + before + after;
    bool lastIsDue = after > 0;
    for (Index k = n - 1; k >= 0; k--) {
        const float value = sorted[k];
        Index copies = 1;
        if (lastIsDue && value == last) {
            copies += after;
            lastIsDue = false;
        }
        if (value == first && (k == 0 || sorted[k - 1] != first))
            copies += before;
        for (; copies > 0; copies--)
            sorted[--to] = value;
    }
}

// `ring` holds the input samples of the window in order of time; it has whole blocks.
void medianGeneral(float* x, Index n, Index m, float* sorted, float* ring)
{
    const Index h = m / 2, samples = n < h + 1 ? n : h + 1, after = h + 1 - samples;
    const float first = get(x, 0), lastInput = get(x, n - 1);
    Window w = {sorted, m, 0, false};
    w.otherZeros = static_cast<int>(h * isOtherZero(first) + after * isOtherZero(lastInput));
    for (Index k = 0; k < samples; k++) {
        const float sample = get(x, k);
        w.otherZeros += isOtherZero(sample);
        w.disordered |= sample != sample;
    }
    if (!w.disordered)
        sortFirstWindow(x, samples, h, after, sorted, ring);
    for (Index k = 0; k < h; k += 8)
        store(ring + k, splat<Block>(first));
    for (Index k = 0; k < samples; k++)
        ring[h + k] = get(x, k);
    for (Index k = h + samples; k < m; k++)
        ring[k] = lastInput;
    if (w.disordered) {
        for (Index k = 0; k < m; k++)
            sorted[k] = ring[k];
        exchangeSort(sorted, m);
    }
    for (Index k = 1; k <= 8; k++)
        sorted[-k] = -__builtin_inff();
    for (Index k = m; k < qvrAlignUp<Index>(m, 8) + 8; k++)
        sorted[k] = __builtin_inff();
    Index position = 0;
    for (Index out = 1; out < n - 1; out++) {
        const float entering = out + h < n ? get(x, out + h) : lastInput;
        const float leaving = ring[position];
        ring[position] = entering;
        position = position + 1 < m ? position + 1 : 0;
        w.otherZeros += isOtherZero(entering);
        w.disordered |= entering != entering;
        if (w.otherZeros == 0 && !w.disordered)
            replaceByFormula(w, leaving, entering);
        else
            replaceBySearch(w, leaving, entering);
        w.otherZeros -= isOtherZero(leaving);
        store(x + out, Vec<float, 1>{sorted[h]});
    }
}

} // namespace

extern "C" qvrStatus SLOT(qvrsFilterMedian_32f_I)(qvr32f* srcDst, int len, int maskSize)
{
    if (srcDst == nullptr)
        return qvrErrNullPointer;
    if (len < 1 || maskSize < 1)
        return qvrErrBadSize;
    const qvrStatus status = maskSize % 2 == 0 ? qvrWarnEvenMask : qvrOk;
    const int m = maskSize % 2 == 0 ? maskSize - 1 : maskSize;
    if (m == 1 || len < 3)
        return status;
    if (m == 3) {
        median3(srcDst, len);
    } else if (m == 5) {
        median5(srcDst, len);
    } else {
        const int64_t padded = qvrAlignUp<int64_t>(m, 8), floats = 2 * padded + 16;
        if (floats * 4 > INT32_MAX)
            return qvrErrNoMemory;
        float* arrays = allocate<float>(static_cast<int>(floats));
        if (arrays == nullptr)
            return qvrErrNoMemory;
        medianGeneral(srcDst, len, m, arrays + 8, arrays + 16 + padded);
        release(arrays);
    }
    return status;
}
