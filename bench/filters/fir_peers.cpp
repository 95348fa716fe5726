#include "bench/filters/fir_peers.h"

#include <algorithm>
#include <cmath>

namespace {

// Eight vectors of outputs in registers, a tap at a time.
template<class T> void blocked(const T* x, T* y, int n, const T* t, int L)
{
    constexpr int W = 32 / static_cast<int>(sizeof(T));
    typedef T V __attribute__((vector_size(32), aligned(sizeof(T))));
    int i = 0;
    for (; i + 8 * W <= n; i += 8 * W) {
        V acc[8] = {};
        for (int k = 0; k < L; k++) {
            const V tap = t[k] - V{};
#pragma unroll
            for (int r = 0; r < 8; r++)
                acc[r] += tap * *reinterpret_cast<const V*>(x + i + k + r * W);
        }
        for (int r = 0; r < 8; r++)
            *reinterpret_cast<V*>(y + i + r * W) = acc[r];
    }
    for (; i < n; i++) {
        T sum = 0;
        for (int k = 0; k < L; k++)
            sum += t[k] * x[i + k];
        y[i] = sum;
    }
}

template<class Sum, class Data, class Tap, class Put>
void phases(const Data* x, int outputs, const Tap* taps, int K, int up, int down, const Put& put)
{
    long k = 0;
    int q = 0;
    for (int o = 0; o < outputs; o++) {
        const Tap* h = taps + static_cast<long>(q) * K;
        const int n = static_cast<int>(std::min<long>(K, k + 1));
        Sum sum = 0;
        for (int m = 0; m < n; m++)
            sum += h[m] * static_cast<Sum>(x[k - m]);
        put(o, sum);
        q += down;
        k += q / up;
        q %= up;
    }
}

} // namespace

namespace bench {

void blockedFir(const float* x, float* y, int n, const float* reversed, int L)
{
    blocked(x, y, n, reversed, L);
}
void blockedFir(const double* x, double* y, int n, const double* reversed, int L)
{
    blocked(x, y, n, reversed, L);
}
void polyphase(const float* x, float* y, int outputs, const double* taps, int K, int up, int down)
{
    phases<double>(x, outputs, taps, K, up, down, [=](int o, double v) { y[o] = static_cast<float>(v); });
}
void polyphase(const short* x, short* y, int outputs, const float* taps, int K, int up, int down, float scale)
{
    phases<float>(x, outputs, taps, K, up, down, [=](int o, float v) {
        y[o] = static_cast<short>(std::lround(std::clamp(v * scale, -32768.0f, 32767.0f)));
    });
}

} // namespace bench
