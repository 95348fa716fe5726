// Scalar models of filters, their design, the median and sample-rate change.
#ifndef QVR_MODEL_FILTERS_H
#define QVR_MODEL_FILTERS_H

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdint>
#include <type_traits>
#include <vector>

#include "model/fourier.h"

namespace model {
namespace {

// ---- FIR ------------------------------------------------------------------------------------------------------------

// Scaled by 2^-scale, whose magnitude counts modulo 128; saturated, then rounded half away from zero. A NaN gives 0.
inline int16_t roundedAway16(double v, int scale)
{
    const int magnitude = static_cast<int>((scale < 0 ? -int64_t{scale} : int64_t{scale}) % 128);
    v = std::ldexp(v, scale < 0 ? magnitude : -magnitude);
    if (std::isnan(v))
        return 0;
    v = std::clamp(v, -32768.0, 32767.0);
    return static_cast<int16_t>(std::trunc(v + std::copysign(0.5, v)));
}
template<class Sample> Sample stored(double sum, int scale)
{
    if constexpr (std::is_integral_v<Sample>)
        return roundedAway16(sum, scale);
    else
        return static_cast<Sample>(sum);
}

// y[n] = sum of taps[k] x[n - k]; `past` holds what was before, the newest first.
template<class Tap, class Sample>
std::vector<Sample> fir(const std::vector<Tap>& taps, const std::vector<Sample>& past, const std::vector<Sample>& x,
                        int scale)
{
    std::vector<Sample> y(x.size());
    for (size_t i = 0; i < y.size(); i++) {
        double sum = 0;
        for (size_t k = 0; k < taps.size(); k++)
            sum += static_cast<double>(taps[k]) * static_cast<double>(k <= i ? x[i - k] : past[k - i - 1]);
        y[i] = stored<Sample>(sum, scale);
    }
    return y;
}

// Zeros between the samples, the filter, every down-th value.
struct Rate {
    int up, upPhase, down, downPhase;
};
template<class Tap, class Sample>
std::vector<Sample> multiRate(const std::vector<Tap>& taps, const std::vector<Sample>& past,
                              const std::vector<Sample>& x, const Rate& rate, int scale)
{
    std::vector<Sample> y(x.size() / static_cast<size_t>(rate.down) * static_cast<size_t>(rate.up));
    for (size_t o = 0; o < y.size(); o++) {
        const int64_t step = rate.downPhase + static_cast<int64_t>(o) * rate.down;
        double sum = 0;
        for (size_t k = 0; k < taps.size(); k++) {
            const int64_t at = step - static_cast<int64_t>(k) - rate.upPhase, sample = at / rate.up;
            if (at % rate.up == 0)
                sum += static_cast<double>(taps[k]) * static_cast<double>(sample >= 0
                                                                              ? x[static_cast<size_t>(sample)]
                                                                              : past[static_cast<size_t>(-1 - sample)]);
        }
        y[o] = stored<Sample>(sum, scale);
    }
    return y;
}

// ---- FIR design, odd lengths ----------------------------------------------------------------------------------------

inline double windowOf(int window, double near, int n)
{
    const double w = 2 * kPi * near / (n - 1), root = 0.5 / std::cos(kPi / (n - 1)), a = -root * root;
    return window == qvrFirBartlett   ? 2 * near / (n - 1)
           : window == qvrFirBlackman ? (a + 1) / 2 - 0.5 * std::cos(w) - a / 2 * std::cos(2 * w)
           : window == qvrFirHamming  ? 0.54 - 0.46 * std::cos(w)
                                      : 0.5 - 0.5 * std::cos(w);
}
// Pass band from low to high, or all but that; odd lengths.
inline qvrStatus designed(double* taps, int n, int window, double low, double high, bool stop, double reference)
{
    double gain = 0;
    for (int i = 0; i < n; i++) {
        const double m = i - (n - 1) / 2.0;
        const double band =
            m == 0 ? 2 * (high - low) : (std::sin(2 * kPi * high * m) - std::sin(2 * kPi * low * m)) / (kPi * m);
        taps[i] = stop ? (m == 0) - band : band;
        if (m != 0) // the middle has the weight 1
            taps[i] *= windowOf(window, std::fmin(i, n - 1 - i), n);
        gain += taps[i] * std::cos(2 * kPi * reference * m);
    }
    for (int i = 0; i < n; i++)
        taps[i] /= std::fabs(gain);
    return qvrOk;
}
inline qvrStatus qvrsFIRGenLowpass_64f(double* d, int n, int window, int, double f)
{
    return designed(d, n, window, 0, f, false, 0);
}
inline qvrStatus qvrsFIRGenHighpass_64f(double* d, int n, int window, int, double f)
{
    return designed(d, n, window, 0, f, true, 0.5);
}
inline qvrStatus qvrsFIRGenBandpass_64f(double* d, int n, int window, int, double f, double g)
{
    return designed(d, n, window, f, g, false, (f + g) / 2);
}
inline qvrStatus qvrsFIRGenBandstop_64f(double* d, int n, int window, int, double f, double g)
{
    return designed(d, n, window, f, g, true, 0);
}

// ---- Recursive filters ----------------------------------------------------------------------------------------------

// Poles of the analogue prototype at the warped edge, through s = (z - 1) / (z + 1); gain 1, or the ripple's, at the
// pass band's end of the frequency axis.
inline void recursive(int n, double* taps, int type, double f, double ripple, bool high)
{
    using Exact = std::complex<long double>;
    const long double pi = 3.14159265358979323846L, w = std::tan(pi * static_cast<long double>(f));
    long double sinhV = 1, coshV = 1, gain = 1;
    if (type == qvrIirChebyshev) {
        const long double v =
            std::asinh(1 / std::sqrt(std::pow(10.0L, 0.1L * static_cast<long double>(ripple)) - 1)) / n;
        sinhV = std::sinh(v);
        coshV = std::cosh(v);
        gain = n % 2 == 0 ? std::pow(10.0L, static_cast<long double>(-ripple) / 20) : 1;
    }
    std::vector<Exact> a = {1}, b = {1};
    const auto times = [](std::vector<Exact>& p, Exact root) {
        p.push_back(0);
        for (size_t k = p.size() - 1; k >= 1; k--)
            p[k] -= root * p[k - 1];
    };
    for (int k = 0; k < n; k++) {
        const long double angle = pi * (2 * k + 1 + n) / (2 * n);
        const Exact p(sinhV * std::cos(angle), coshV * std::sin(angle)), s = high ? w / p : w * p;
        times(a, (1.0L + s) / (1.0L - s));
        times(b, high ? 1 : -1);
    }
    Exact atA = 0, atB = 0;
    for (int k = 0; k <= n; k++) {
        atA += high && k % 2 ? -a[static_cast<size_t>(k)] : a[static_cast<size_t>(k)];
        atB += high && k % 2 ? -b[static_cast<size_t>(k)] : b[static_cast<size_t>(k)];
    }
    for (int k = 0; k <= n; k++) {
        taps[k] = static_cast<double>((b[static_cast<size_t>(k)] * atA / atB).real() * gain);
        taps[n + 1 + k] = static_cast<double>(a[static_cast<size_t>(k)].real());
    }
}

// The transposed direct form, sample by sample in long double; taps b[0 .. L], a[0 .. L] with a[0] = 1.
inline std::vector<double> recursiveRun(const double* taps, int order, std::vector<long double> line,
                                        const std::vector<double>& x)
{
    std::vector<double> y(x.size());
    line.resize(static_cast<size_t>(order) + 1);
    for (size_t i = 0; i < x.size(); i++) {
        const long double in = x[i], out = taps[0] * in + line[0];
        y[i] = static_cast<double>(out);
        for (int k = 0; k < order; k++)
            line[static_cast<size_t>(k)] =
                line[static_cast<size_t>(k) + 1] + taps[k + 1] * in - taps[order + 2 + k] * out;
    }
    return y;
}

// ---- Median, sample rates -------------------------------------------------------------------------------------------

// What a window lacks beyond an end is the end's sample. An odd mask; the first and the last sample stay.
inline qvrStatus qvrsFilterMedian_32f_I(float* d, int n, int mask)
{
    const std::vector<float> x(d, d + n);
    std::vector<float> window(static_cast<size_t>(mask));
    for (int i = 1; i < n - 1; i++) {
        for (int k = 0; k < mask; k++)
            window[static_cast<size_t>(k)] = x[static_cast<size_t>(std::clamp(i + k - mask / 2, 0, n - 1))];
        std::nth_element(window.begin(), window.begin() + mask / 2, window.end());
        d[i] = window[static_cast<size_t>(mask / 2)];
    }
    return qvrOk;
}

inline qvrStatus qvrsSampleUp_32f(const float* __restrict x, int n, float* __restrict y, int* len, int factor,
                                  int* phase)
{
    for (int i = 0; i < n; i++)
        for (int k = 0; k < factor; k++)
            y[i * factor + k] = k == *phase ? x[i] : 0;
    *len = n * factor;
    return qvrOk;
}
template<class T> qvrStatus sampleDown(const T* __restrict x, int n, T* __restrict y, int* len, int factor, int* phase)
{
    int count = 0, i = *phase;
    for (; i < n; i += factor)
        y[count++] = x[i];
    *len = count;
    *phase = i - n;
    return qvrOk;
}
inline qvrStatus qvrsSampleDown_32f(const float* x, int n, float* y, int* len, int factor, int* phase)
{
    return sampleDown(x, n, y, len, factor, phase);
}
inline qvrStatus qvrsSampleDown_16s(const int16_t* x, int n, int16_t* y, int* len, int factor, int* phase)
{
    return sampleDown(x, n, y, len, factor, phase);
}

} // namespace
} // namespace model

#endif
