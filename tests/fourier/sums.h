// Sums of products at every shift, term by term in long double, or by FFTW in double precision where that would be
// long.
#pragma once

#include <fftw3.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdint>
#include <vector>

#include "fourier/slot_tables.h"
#include "support/slot_list.h"

namespace sums {

using Exact = long double;
using Signal = std::vector<float>;

// All len1 + len2 - 1 results of the linear convolution.
inline std::vector<Exact> convolution(const Signal& a, const Signal& b)
{
    const size_t results = a.size() + b.size() - 1;
    std::vector<Exact> y(results);
    // An emulator takes its time over long double.
    const size_t plainMost = 4000000;
    if (a.size() * b.size() <= plainMost) {
        for (size_t i = 0; i < a.size(); i++)
            for (size_t j = 0; j < b.size(); j++)
                y[i + j] += Exact(a[i]) * b[j];
        return y;
    }
    const size_t bins = results / 2 + 1;
    std::vector<double> x(results);
    std::vector<std::complex<double>> p(bins), q(bins);
    const auto spectrum = [&](const Signal& s, std::vector<std::complex<double>>& out) {
        fftw_plan plan = fftw_plan_dft_r2c_1d(static_cast<int>(results), x.data(),
                                              reinterpret_cast<fftw_complex*>(out.data()), FFTW_ESTIMATE);
        std::fill(x.begin(), x.end(), 0.0);
        std::copy(s.begin(), s.end(), x.begin());
        fftw_execute(plan);
        fftw_destroy_plan(plan);
    };
    spectrum(a, p);
    spectrum(b, q);
    for (size_t k = 0; k < bins; k++)
        p[k] *= q[k];
    fftw_plan plan = fftw_plan_dft_c2r_1d(static_cast<int>(results), reinterpret_cast<fftw_complex*>(p.data()),
                                          x.data(), FFTW_ESTIMATE);
    fftw_execute(plan);
    fftw_destroy_plan(plan);
    for (size_t i = 0; i < results; i++)
        y[i] = Exact(x[i]) / Exact(results);
    return y;
}

// Sum of a[k] b[k + lag] for lag = low .. low + count - 1, zero outside of the overlap.
inline std::vector<Exact> correlation(const Signal& a, const Signal& b, int64_t low, size_t count)
{
    const std::vector<Exact> all = convolution(Signal(a.rbegin(), a.rend()), b);
    std::vector<Exact> y(count);
    for (size_t n = 0; n < count; n++) {
        const int64_t m = low + static_cast<int64_t>(n + a.size()) - 1;
        y[n] = m >= 0 && m < static_cast<int64_t>(all.size()) ? all[static_cast<size_t>(m)] : 0;
    }
    return y;
}

inline double norm(const Signal& a)
{
    double sum = 0;
    for (float x : a)
        sum += double(x) * x;
    return std::sqrt(sum);
}

// Terms of a plain sum come to at most norm(a) norm(b) in magnitude (Cauchy-Schwarz), each rounded and each sum too.
inline double plainBound(const Signal& a, const Signal& b)
{
    return (static_cast<double>(std::min(a.size(), b.size())) + 2) * 0x1p-24 * norm(a) * norm(b) + 1e-37;
}
// By spectra: three transforms of some 2^order points, each off by about 2^-24 sqrt(order) of its norm.
inline double spectrumBound(const Signal& a, const Signal& b)
{
    return 4 * 0x1p-24 * std::sqrt(std::log2(static_cast<double>(a.size() + b.size())) + 1) * norm(a) * norm(b);
}

} // namespace sums
