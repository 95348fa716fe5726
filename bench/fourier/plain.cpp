// What a programmer writes instead of the convolutions, correlations and wavelets: plain loops with the exports'
// prototypes, for each slot's level.
#include <string.h>

#include <algorithm>

#include "bench/fourier/wavelet_taps.h"
#include "bench/peers.h"
#include "model/fourier.h"

#define RESTRICT __restrict

namespace {

qvrStatus qvrsConv_32f(const float* a, int n1, const float* b, int n2, float* RESTRICT y)
{
    if (n1 > n2) {
        std::swap(a, b);
        std::swap(n1, n2);
    }
    memset(y, 0, sizeof(float) * static_cast<size_t>(n1 + n2 - 1));
    for (int j = 0; j < n1; j++) {
        const float s = a[j];
        float* RESTRICT out = y + j;
        for (int i = 0; i < n2; i++)
            out[i] += s * b[i];
    }
    return 0;
}

qvrStatus qvrsConvBiased_32f(const float* RESTRICT a, int n1, const float* RESTRICT b, int n2, float* RESTRICT y, int n,
                             int bias)
{
    for (int i = 0; i < n; i++) {
        const int first = std::max(0, i + bias - n2 + 1), end = std::min(n1, i + bias + 1);
        float sum = 0;
        for (int k = first; k < end; k++)
            sum += a[k] * b[i - k];
        y[i] = sum;
    }
    return 0;
}

// Eight partial sums, as one writes who knows that the compiler may not reorder a sum.
float dot(const float* RESTRICT a, const float* RESTRICT b, int n)
{
    float part[8] = {};
    int k = 0;
    for (; k + 8 <= n; k += 8)
        for (int l = 0; l < 8; l++)
            part[l] += a[k + l] * b[k + l];
    float sum = 0;
    for (float p : part)
        sum += p;
    for (; k < n; k++)
        sum += a[k] * b[k];
    return sum;
}

qvrStatus qvrsCrossCorr_32f(const float* a, int n1, const float* b, int n2, float* y, int n, int low)
{
    for (int i = 0; i < n; i++) {
        const int lag = low + i, first = std::max(0, -lag), end = std::min(n1, n2 - lag);
        y[i] = end > first ? dot(a + first, b + first + lag, end - first) : 0;
    }
    return 0;
}
qvrStatus qvrsAutoCorr_32f(const float* a, int n1, float* y, int n)
{
    return qvrsCrossCorr_32f(a, n1, a, n1, y, n, 0);
}

// The source has the filters' history in front of it.
qvrStatus qvrsWTFwd_32f(const float* x, float* low, float* high, int n, qvrsWTFwdState_32f*)
{
    const int taps = bench::waveletLength;
    for (int i = 0; i < n; i++) {
        double l = 0, h = 0;
        for (int k = 0; k < taps; k++) {
            l += bench::waveletTaps[0][k] * x[2 * i - k];
            h += bench::waveletTaps[1][k] * x[2 * i - k];
        }
        low[i] = static_cast<float>(l);
        high[i] = static_cast<float>(h);
    }
    return 0;
}
qvrStatus qvrsWTInv_32f(const float* low, const float* high, int n, float* x, qvrsWTInvState_32f*)
{
    const int taps = bench::waveletLength;
    for (int i = 0; i < n; i++)
        for (int phase = 0; phase < 2; phase++) {
            double l = 0, h = 0;
            for (int k = phase; k < taps; k += 2) {
                l += bench::waveletTaps[0][k] * low[i - k / 2];
                h += bench::waveletTaps[1][k] * high[i - k / 2];
            }
            x[2 * i + phase] = static_cast<float>(l) + static_cast<float>(h);
        }
    return 0;
}

} // namespace

namespace bench {

extern const PeerFunction QVR_PEER_PASTE(plain_fourier_, QVR_BENCH_LEVEL)[];
const PeerFunction QVR_PEER_PASTE(plain_fourier_, QVR_BENCH_LEVEL)[] = {
    QVR_PEER(qvrsConv_32f),      QVR_PEER(qvrsConvBiased_32f), QVR_MODEL(qvrsConvCyclic8x8_32f),
    QVR_PEER(qvrsCrossCorr_32f), QVR_PEER(qvrsAutoCorr_32f),   QVR_PEER(qvrsWTFwd_32f),
    QVR_PEER(qvrsWTInv_32f),     {nullptr, nullptr},
};

} // namespace bench
