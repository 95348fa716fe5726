// Scalar models of transforms, windows, convolution, correlation and wavelets, by their definitions.
#ifndef QVR_MODEL_FOURIER_H
#define QVR_MODEL_FOURIER_H

#include <cmath>
#include <complex>
#include <cstdint>
#include <vector>

#include "frame/types.h"

namespace model {
namespace {

constexpr double kPi = 3.14159265358979323846;
using Complex = std::complex<double>;

// X[k] = sum of x[n] exp(sign 2 pi i k n / N)
inline std::vector<Complex> dft(const std::vector<Complex>& x, int sign)
{
    const size_t n = x.size();
    std::vector<Complex> y(n);
    for (size_t k = 0; k < n; k++)
        for (size_t i = 0; i < n; i++)
            y[k] += x[i] * std::polar(1.0, sign * 2 * kPi * static_cast<double>(k * i % n) / static_cast<double>(n));
    return y;
}
// The half spectrum as CCS, times a factor.
template<class T> void realForward(const std::vector<T>& x, std::vector<T>& spectrum, double factor)
{
    const size_t n = x.size();
    const auto f = dft({x.begin(), x.end()}, -1);
    for (size_t k = 0; k <= n / 2; k++) {
        spectrum[2 * k] = static_cast<T>(f[k].real() * factor);
        spectrum[2 * k + 1] = static_cast<T>(k == 0 || k == n / 2 ? 0 : f[k].imag() * factor);
    }
}
template<class T> void realInverse(const std::vector<T>& spectrum, std::vector<T>& x)
{
    const size_t n = x.size();
    std::vector<Complex> whole(n);
    for (size_t k = 0; k <= n / 2; k++) {
        const bool real = k == 0 || k == n / 2;
        whole[k] = {static_cast<double>(spectrum[2 * k]), real ? 0 : static_cast<double>(spectrum[2 * k + 1])};
        if (!real)
            whole[n - k] = std::conj(whole[k]);
    }
    const auto b = dft(whole, 1);
    for (size_t i = 0; i < n; i++)
        x[i] = static_cast<T>(b[i].real());
}
// The negative frequencies removed, the positive ones doubled.
inline void analytic(const std::vector<float>& x, std::vector<qvr32fc>& y)
{
    const size_t n = x.size();
    auto f = dft({x.begin(), x.end()}, -1);
    for (size_t k = 0; k < n; k++)
        f[k] *= k == 0 || 2 * k == n ? 1 : 2 * k < n ? 2 : 0;
    const auto b = dft(f, 1);
    const double points = static_cast<double>(n);
    for (size_t i = 0; i < n; i++)
        y[i] = {static_cast<float>(b[i].real() / points), static_cast<float>(b[i].imag() / points)};
}

// ---- Windows --------------------------------------------------------------------------------------------------------

// weight(s), s from 0 at either end to 1 in the middle, whose sample stays.
template<class T, class Weight> qvrStatus weighted(T* d, int n, const Weight& weight)
{
    for (int i = 0; i < n; i++)
        if (2 * i != n - 1)
            d[i] = static_cast<T>(static_cast<double>(d[i]) * weight(2.0 * (i < n - 1 - i ? i : n - 1 - i) / (n - 1)));
    return qvrOk;
}
inline double hamming(double s)
{
    return 0.54 - 0.46 * std::cos(kPi * s);
}
inline qvrStatus qvrsWinBartlett_32f_I(float* d, int n)
{
    return weighted(d, n, [](double s) { return s; });
}
inline qvrStatus qvrsWinHann_32f_I(float* d, int n)
{
    return weighted(d, n, [](double s) { return 0.5 - 0.5 * std::cos(kPi * s); });
}
inline qvrStatus qvrsWinHamming_32f_I(float* d, int n)
{
    return weighted(d, n, hamming);
}
inline qvrStatus qvrsWinHamming_16s_I(int16_t* d, int n)
{
    return weighted(d, n, hamming);
}
inline qvrStatus qvrsWinBlackmanStd_32f_I(float* d, int n)
{
    return weighted(d, n, [](double s) { return 0.42 - 0.5 * std::cos(kPi * s) + 0.08 * std::cos(2 * kPi * s); });
}

// ---- Convolution and correlation ------------------------------------------------------------------------------------

// Sum of a[k] b[n + sign k], of what lies in both.
inline float product(const float* a, int lenA, const float* b, int lenB, int64_t n, int sign)
{
    double sum = 0;
    for (int k = 0; k < lenA; k++)
        if (n + sign * k >= 0 && n + sign * k < lenB)
            sum += static_cast<double>(a[k]) * static_cast<double>(b[n + sign * k]);
    return static_cast<float>(sum);
}
inline qvrStatus qvrsConv_32f(const float* a, int m, const float* b, int n, float* d)
{
    for (int i = 0; i < m + n - 1; i++)
        d[i] = product(a, m, b, n, i, -1);
    return qvrOk;
}
inline qvrStatus qvrsConvBiased_32f(const float* a, int m, const float* b, int n, float* d, int len, int bias)
{
    for (int i = 0; i < len; i++)
        d[i] = product(a, m, b - bias, n, i + bias, -1);
    return qvrOk;
}
inline qvrStatus qvrsConvCyclic8x8_32f(const float* __restrict x, const float* __restrict h, float* __restrict y)
{
    for (int n = 0; n < 8; n++) {
        float sum = 0;
        for (int k = 0; k < 8; k++)
            sum += x[k] * h[(n - k) & 7];
        y[n] = sum;
    }
    return qvrOk;
}
inline qvrStatus qvrsCrossCorr_32f(const float* a, int m, const float* b, int n, float* d, int len, int low)
{
    for (int i = 0; i < len; i++)
        d[i] = product(a, m, b, n, int64_t{i} + low, 1);
    return qvrOk;
}
inline qvrStatus qvrsAutoCorr_32f(const float* a, int n, float* d, int len)
{
    return qvrsCrossCorr_32f(a, n, a, n, d, len, 0);
}

// ---- Wavelets -------------------------------------------------------------------------------------------------------

struct Channel {
    std::vector<float> taps;
    int offset = 0;
    int length() const { return static_cast<int>(taps.size()); }
};
// One channel of a stream that begins with zeros: values of the samples x, and samples of the values y. Products are
// single; their sums are exact enough to be rounded once.
inline std::vector<float> halved(const Channel& c, const std::vector<float>& x)
{
    std::vector<float> y(x.size() / 2);
    for (size_t n = 0; n < y.size(); n++) {
        long double sum = 0;
        for (size_t k = 0; k < c.taps.size(); k++) {
            const int64_t at = static_cast<int64_t>(2 * n) - c.offset - static_cast<int64_t>(k);
            sum += at >= 0 ? c.taps[k] * x[static_cast<size_t>(at)] : 0;
        }
        y[n] = static_cast<float>(sum);
    }
    return y;
}
inline std::vector<float> doubled(const Channel& c, const std::vector<float>& y)
{
    std::vector<float> x(2 * y.size());
    for (size_t t = 0; t < x.size(); t++) {
        long double sum = 0;
        for (size_t k = 0; k < c.taps.size(); k++) {
            const int64_t at = static_cast<int64_t>(t) - std::abs(c.offset) - static_cast<int64_t>(k);
            sum += at >= 0 && at % 2 == 0 ? c.taps[k] * y[static_cast<size_t>(at / 2)] : 0;
        }
        x[t] = static_cast<float>(sum);
    }
    return x;
}

} // namespace
} // namespace model

#endif
