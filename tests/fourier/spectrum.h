// Reference spectra: the defining sum in long double, and FFTW one precision above the tested one.
#pragma once

#include <fftw3.h>

#include "fourier/slot_tables.h"

#include <cmath>
#include <complex>
#include <vector>

namespace fft {

using Exact = long double;
using Bin = std::complex<Exact>;

inline constexpr Exact kTurn = 6.283185307179586476925286766559L;

// X[k] = sum of x[n] exp(-2 pi i k n / N), k = 0 .. N/2, term by term.
template<class T> std::vector<Bin> sumOfTerms(const std::vector<T>& x)
{
    const size_t n = x.size();
    std::vector<Bin> wave(n);
    for (size_t i = 0; i < n; i++)
        wave[i] = {cosl(kTurn * Exact(i) / Exact(n)), -sinl(kTurn * Exact(i) / Exact(n))};
    std::vector<Bin> spectrum(n / 2 + 1);
    for (size_t k = 0; k <= n / 2; k++)
        for (size_t i = 0; i < n; i++)
            spectrum[k] += Exact(x[i]) * wave[k * i % n];
    return spectrum;
}

inline std::vector<Bin> byFftw(const std::vector<float>& x)
{
    const int n = static_cast<int>(x.size());
    std::vector<double> in(x.size());
    std::vector<std::complex<double>> out(x.size() / 2 + 1);
    fftw_plan plan = fftw_plan_dft_r2c_1d(n, in.data(), reinterpret_cast<fftw_complex*>(out.data()), FFTW_ESTIMATE);
    std::copy(x.begin(), x.end(), in.begin());
    fftw_execute(plan);
    fftw_destroy_plan(plan);
    return {out.begin(), out.end()};
}

inline std::vector<Bin> byFftw(const std::vector<double>& x)
{
    const int n = static_cast<int>(x.size());
    std::vector<Exact> in(x.size());
    std::vector<Bin> out(x.size() / 2 + 1);
    fftwl_plan plan = fftwl_plan_dft_r2c_1d(n, in.data(), reinterpret_cast<fftwl_complex*>(out.data()), FFTW_ESTIMATE);
    std::copy(x.begin(), x.end(), in.begin());
    fftwl_execute(plan);
    fftwl_destroy_plan(plan);
    return out;
}

// Root of the sum of squared differences over that of squares.
template<class T> double spectrumError(const T* ccs, const std::vector<Bin>& exact, Exact scale)
{
    Exact difference = 0, norm = 0;
    for (size_t k = 0; k < exact.size(); k++) {
        const Bin want = exact[k] * scale;
        difference += std::norm(Bin(ccs[2 * k], ccs[2 * k + 1]) - want);
        norm += std::norm(want);
    }
    return static_cast<double>(sqrtl(norm > 0 ? difference / norm : difference));
}
template<class T> double signalError(const T* got, const std::vector<T>& exact, Exact scale)
{
    Exact difference = 0, norm = 0;
    for (size_t i = 0; i < exact.size(); i++) {
        const Exact want = Exact(exact[i]) * scale, d = Exact(got[i]) - want;
        difference += d * d;
        norm += want * want;
    }
    return static_cast<double>(sqrtl(norm > 0 ? difference / norm : difference));
}

// The promised bound of one transform's relative error.
template<class T> double errorBound(int order)
{
    return (sizeof(T) == 4 ? 1.0 * 0x1p-24 : 1.4 * 0x1p-53) * std::sqrt(order + 1.0);
}

// A spectrum that no signal but one of these values has: random in all bins, rounded.
template<class T> std::vector<T> roundedCcs(const std::vector<Bin>& exact)
{
    std::vector<T> ccs;
    for (const Bin& bin : exact) {
        ccs.push_back(static_cast<T>(bin.real()));
        ccs.push_back(static_cast<T>(bin.imag()));
    }
    return ccs;
}

} // namespace fft
