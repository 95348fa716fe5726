// What a programmer writes instead of the filters: plain loops with the exports' prototypes, for each slot's level.
#include <string.h>

#include <algorithm>

#include "bench/peers.h"
#include "filters/iir_state_record.h"

#define RESTRICT __restrict

namespace {

// The transposed direct form, its orders of two unrolled by hand as one would.
qvrStatus qvrsIIR_64f(const double* src, double* dst, int n, qvrsIIRState_64f* state)
{
    const int L = state->order;
    const double* RESTRICT b = state->tapsStore;
    const double* RESTRICT a = b + L;
    double* RESTRICT d = state->delayStore;
    if (L == 2) {
        double d0 = d[0], d1 = d[1];
        for (int i = 0; i < n; i++) {
            const double x = src[i], y = b[0] * x + d0;
            d0 = b[1] * x - a[1] * y + d1;
            d1 = b[2] * x - a[2] * y;
            dst[i] = y;
        }
        d[0] = d0;
        d[1] = d1;
        return 0;
    }
    for (int i = 0; i < n; i++) {
        const double x = src[i], y = b[0] * x + d[0];
        for (int k = 0; k < L; k++)
            d[k] = b[k + 1] * x - a[k + 1] * y + d[k + 1];
        dst[i] = y;
    }
    return 0;
}

// Each window copied and its middle selected.
qvrStatus medianBySelection(float* x, int n, int mask)
{
    const int h = mask / 2;
    float* in = new float[n];
    float* window = new float[mask];
    memcpy(in, x, sizeof(float) * static_cast<size_t>(n));
    for (int i = 1; i < n - 1; i++) {
        for (int k = 0; k < mask; k++)
            window[k] = in[std::clamp(i - h + k, 0, n - 1)];
        std::nth_element(window, window + h, window + mask);
        x[i] = window[h];
    }
    delete[] in;
    delete[] window;
    return 0;
}

// A sorted window with a binary search for the sample that leaves and the place of the one that enters.
qvrStatus qvrsFilterMedian_32f_I(float* x, int n, int mask)
{
    if (mask <= 5)
        return medianBySelection(x, n, mask);
    const int h = mask / 2;
    float* in = new float[n];
    float* sorted = new float[mask];
    memcpy(in, x, sizeof(float) * static_cast<size_t>(n));
    for (int k = 0; k < mask; k++)
        sorted[k] = in[std::clamp(k - h, 0, n - 1)];
    std::sort(sorted, sorted + mask);
    for (int i = 1; i < n - 1; i++) {
        const float leaving = in[std::clamp(i - 1 - h, 0, n - 1)], entering = in[std::clamp(i + h, 0, n - 1)];
        float* hole = std::lower_bound(sorted, sorted + mask, leaving);
        float* place = std::lower_bound(sorted, sorted + mask, entering);
        if (place > hole) {
            std::move(hole + 1, place, hole);
            place[-1] = entering;
        } else {
            std::move_backward(place, hole, hole + 1);
            *place = entering;
        }
        x[i] = sorted[h];
    }
    delete[] in;
    delete[] sorted;
    return 0;
}

template<class T> qvrStatus down(const T* RESTRICT src, int n, T* RESTRICT dst, int* count, int factor, int* phase)
{
    int k = 0, i = *phase;
    for (; i < n; i += factor)
        dst[k++] = src[i];
    *count = k;
    *phase = i - n;
    return 0;
}
qvrStatus qvrsSampleDown_32f(const float* src, int n, float* dst, int* count, int factor, int* phase)
{
    return down(src, n, dst, count, factor, phase);
}
qvrStatus qvrsSampleDown_16s(const int16_t* src, int n, int16_t* dst, int* count, int factor, int* phase)
{
    return down(src, n, dst, count, factor, phase);
}
qvrStatus qvrsSampleUp_32f(const float* src, int n, float* dst, int* count, int factor, int* phase)
{
    for (int i = 0; i < n; i++)
        for (int k = 0; k < factor; k++)
            dst[i * factor + k] = k == *phase ? src[i] : 0;
    *count = n * factor;
    return 0;
}

} // namespace

namespace bench {

extern const PeerFunction QVR_PEER_PASTE(plain_filters_, QVR_BENCH_LEVEL)[];
const PeerFunction QVR_PEER_PASTE(plain_filters_, QVR_BENCH_LEVEL)[] = {
    QVR_PEER(qvrsIIR_64f),        QVR_PEER(qvrsFilterMedian_32f_I), QVR_PEER(qvrsSampleDown_32f),
    QVR_PEER(qvrsSampleDown_16s), QVR_PEER(qvrsSampleUp_32f),       {nullptr, nullptr},
};

} // namespace bench
