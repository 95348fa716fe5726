// Sample-rate change by integer factors: zero stuffing and dropping of samples.
#include "filters/functions.h"
#include "frame/element.h"
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
                q[i] = get(src, (k + i) * f);
            store(dst + k, q);
        }
    }
    for (; k < count; k++)
        put(dst, k, get(src, k * f));
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

// Fewer samples go one by one, which takes no longer than the division that tells how many are kept.
constexpr Index kDivideFrom = 32;

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
    if (n < kDivideFrom && f != 1) {
        Index i = p, k = 0;
        for (; i < n; i += f)
            store(dst + k++, load<Vec<T, 1>>(src + i));
        *dstLen = static_cast<int>(k);
        *phase = static_cast<int>(i - n);
        return qvrOk;
    }
    const Index count = static_cast<uint32_t>(n + f - p - 1) / static_cast<uint32_t>(f);
    if (f == 1)
        mapElements(dst, n, [](auto x) { return x; }, src);
    else
        keepEvery(src + p, dst, count, f);
    *dstLen = static_cast<int>(count);
    *phase = static_cast<int>(p + count * f - n);
    return qvrOk;
}

// Samples 2 apart with zeros between, by interleaving with zero vectors.
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
        put(dst, 2 * i + p, get(src, i));
        put(dst, 2 * i + 1 - p, 0.0f);
    }
}

// A group of f outputs, the sample among zeros, by vectors of H <= f lanes.
template<int H> QVR_INLINE void stuffGroup(float* dst, float sample, Index f, Index p)
{
    for (Index k = 0; k + H <= f; k += H)
        store(dst + k, Vec<float, H>{});
    if (f % H != 0)
        store(dst + f - H, Vec<float, H>{});
    put(dst, p, sample);
}

// Groups with L / 2 < f <= L by a vector each. It reaches into the next group, which the last one lacks.
template<int L> void stuffVectors(const float* src, float* dst, Index n, Index f, Index p)
{
    using V = Vec<float, L>;
    const Mask<V> at = iota<Mask<V>>() == static_cast<int>(p);
    const Index whole = f < L ? n - 1 : n;
    for (Index i = 0; i < whole; i++)
        store(dst + i * f, at ? splat<V>(get(src, i)) : V{});
    if (whole < n)
        stuffGroup<L / 2>(dst + whole * f, get(src, whole), f, p);
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
    else if (factor <= 4)
        stuffVectors<4>(src, dst, srcLen, factor, p);
    else if (factor <= 8)
        stuffVectors<8>(src, dst, srcLen, factor, p);
    else if (factor <= 16)
        stuffVectors<16>(src, dst, srcLen, factor, p);
    else
        for (Index i = 0; i < srcLen; i++)
            stuffGroup<8>(dst + i * factor, get(src, i), factor, p);
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
