// Sample-rate change by integer factors: zero stuffing and dropping of samples.
#include "filters/functions.h"
#include "vector/loops.h"
#include "vector/shared.h"

namespace {

// dst[k] = src[k * f] for k below count; nothing behind the last sample kept is read.
template<class T> void keepEvery(const T* src, T* dst, Index count, Index f)
{
    using V = Full<T>;
    constexpr int N = kLanes<T>;
    Index k = 0;
    if (f == 2) {
        for (; k + N + 1 <= count; k += N)
            store(dst + k, evens(load<V>(src + 2 * k), load<V>(src + 2 * k + N)));
    } else if (f == 4) {
        for (; k + N + 1 <= count; k += N) {
            const T* p = src + 4 * k;
            const V a = evens(load<V>(p), load<V>(p + N)), b = evens(load<V>(p + 2 * N), load<V>(p + 3 * N));
            store(dst + k, evens(a, b));
        }
    } else {
        // Gathered in registers: one store for each 16 bytes.
        constexpr int M = 16 / static_cast<int>(sizeof(T));
        using Q = Vec<T, M>;
        for (; k + M <= count; k += M) {
            Q q{};
            for (int i = 0; i < M; i++)
                q[i] = load<Vec<T, 1>>(src + (k + i) * f)[0];
            store(dst + k, q);
        }
    }
    for (; k < count; k++)
        store(dst + k, load<Vec<T, 1>>(src + k * f));
}

template<class T>
qvrStatus checkSampling(const T* src, int srcLen, const T* dst, const int* dstLen, int factor, const int* phase)
{
    if (anyNull(src, dst, dstLen, phase))
        return qvrErrNullPointer;
    if (srcLen < 1)
        return qvrErrBadSize;
    if (factor < 1)
        return qvrErrBadSampleFactor;
    return *phase < 0 || *phase >= factor ? qvrErrBadSamplePhase : qvrOk;
}

template<class T> qvrStatus sampleDown(const T* src, int srcLen, T* dst, int* dstLen, int factor, int* phase)
{
    if (const qvrStatus status = checkSampling(src, srcLen, dst, dstLen, factor, phase))
        return status;
    const Index f = factor, p = *phase, n = srcLen;
    if (p >= n) {
        *dstLen = 0;
        *phase = static_cast<int>(p - n);
        return qvrOk;
    }
    const Index count = (n + f - p - 1) / f;
    if (f == 1)
        mapElements(dst, n, [](auto x) { return x; }, src);
    else
        keepEvery(src + p, dst, count, f);
    *dstLen = static_cast<int>(count);
    *phase = static_cast<int>(p + count * f - n);
    return qvrOk;
}

// Samples 2 or 4 apart with zeros between, by interleaving with zero vectors.
void stuffTwo(const float* src, float* dst, Index n, Index p)
{
    using V = Full<float>;
    constexpr int N = kLanes<float>;
    const V zero{};
    Index i = 0;
    for (; i + N <= n; i += N) {
        const V x = load<V>(src + i);
        store(dst + 2 * i, p == 0 ? zipLo(x, zero) : zipLo(zero, x));
        store(dst + 2 * i + N, p == 0 ? zipHi(x, zero) : zipHi(zero, x));
    }
    for (; i < n; i++) {
        store(dst + 2 * i + p, load<Vec<float, 1>>(src + i));
        store(dst + 2 * i + 1 - p, Vec<float, 1>{});
    }
}

// A group of f outputs: the sample among zeros. Runs of zeros are vectors whose overhang the next group rewrites, so
// the last groups, which have none behind them, go element by element.
void stuffMany(const float* src, float* dst, Index n, Index f, Index p)
{
    using V = Full<float>;
    constexpr int N = kLanes<float>;
    Index i = 0;
    if (f < N) {
        // One vector holds the group and reaches into the groups behind it.
        for (; (n - i - 1) * f >= N; i++) {
            store(dst + i * f, V{});
            store(dst + i * f + p, load<Vec<float, 1>>(src + i));
        }
    } else {
        for (; i < n; i++) {
            float* group = dst + i * f;
            for (Index k = 0; k + N <= f; k += N)
                store(group + k, V{});
            store(group + f - N, V{});
            store(group + p, load<Vec<float, 1>>(src + i));
        }
    }
    for (; i < n; i++)
        for (Index k = 0; k < f; k++)
            store(dst + i * f + k, k == p ? load<Vec<float, 1>>(src + i) : Vec<float, 1>{});
}

} // namespace

extern "C" {

qvrStatus SLOT(qvrsSampleUp_32f)(const qvr32f* src, int srcLen, qvr32f* dst, int* dstLen, int factor, int* phase)
{
    if (const qvrStatus status = checkSampling(src, srcLen, dst, dstLen, factor, phase))
        return status;
    const Index p = *phase, total = Index{srcLen} * factor;
    if (total > INT32_MAX)
        return qvrErrBadSize;
    *dstLen = static_cast<int>(total);
    if (factor == 1)
        return SLOT(qvrsCopy_32f)(src, dst, srcLen);
    if (factor == 2)
        stuffTwo(src, dst, srcLen, p);
    else
        stuffMany(src, dst, srcLen, factor, p);
    return qvrOk;
}

qvrStatus SLOT(qvrsSampleDown_32f)(const qvr32f* src, int srcLen, qvr32f* dst, int* dstLen, int factor, int* phase)
{
    return sampleDown(src, srcLen, dst, dstLen, factor, phase);
}

qvrStatus SLOT(qvrsSampleDown_16s)(const qvr16s* src, int srcLen, qvr16s* dst, int* dstLen, int factor, int* phase)
{
    return sampleDown(src, srcLen, dst, dstLen, factor, phase);
}

} // extern "C"
