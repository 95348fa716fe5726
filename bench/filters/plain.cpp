// What a programmer writes instead of the filters: plain loops with the exports' prototypes, for each slot's level.
#include <string.h>

#include <algorithm>

#include "bench/peers.h"
#include "filters/iir_state_record.h"
#include "model/filters.h"

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

// Masks of 3 and 5 by minima and maxima, which the compiler turns to vectors; the ends apart.
qvrStatus medianByNetwork(float* RESTRICT x, int n, int mask)
{
    const int h = mask / 2;
    float* RESTRICT in = new float[n + 2 * h];
    std::fill_n(in, h, x[0]);
    memcpy(in + h, x, sizeof(float) * static_cast<size_t>(n));
    std::fill_n(in + h + n, h, x[n - 1]);
    const float* RESTRICT a = in;
    const auto least = [](float p, float q) { return p < q ? p : q; };
    const auto most = [](float p, float q) { return p < q ? q : p; };
    if (mask == 3)
        for (int i = 1; i < n - 1; i++)
            x[i] = most(least(a[i], a[i + 1]), least(most(a[i], a[i + 1]), a[i + 2]));
    else
        for (int i = 1; i < n - 1; i++) {
            // The least and the most of four leave; the median of the other two and the fifth stays.
            const float p = least(a[i], a[i + 1]), q = most(a[i], a[i + 1]);
            const float r = least(a[i + 2], a[i + 3]), s = most(a[i + 2], a[i + 3]);
            const float low = most(p, r), high = least(q, s), c = a[i + 4];
            x[i] = most(least(low, high), least(most(low, high), c));
        }
    delete[] in;
    return 0;
}

// A sorted window with a binary search for the sample that leaves and the place of the one that enters.
qvrStatus qvrsFilterMedian_32f_I(float* x, int n, int mask)
{
    if (mask <= 5)
        return medianByNetwork(x, n, mask);
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

qvrStatus qvrsSampleUp_32f(const float* RESTRICT src, int n, float* RESTRICT dst, int* count, int factor, int* phase)
{
    memset(dst, 0, sizeof(float) * static_cast<size_t>(n) * static_cast<size_t>(factor));
    for (int i = 0; i < n; i++)
        dst[static_cast<int64_t>(i) * factor + *phase] = src[i];
    *count = n * factor;
    return 0;
}

} // namespace

namespace bench {

extern const PeerFunction QVR_PEER_PASTE(plain_filters_, QVR_BENCH_LEVEL)[];
const PeerFunction QVR_PEER_PASTE(plain_filters_, QVR_BENCH_LEVEL)[] = {
    QVR_PEER(qvrsIIR_64f),         QVR_PEER(qvrsFilterMedian_32f_I), QVR_MODEL(qvrsSampleDown_32f),
    QVR_MODEL(qvrsSampleDown_16s), QVR_PEER(qvrsSampleUp_32f),       {nullptr, nullptr},
};

} // namespace bench
