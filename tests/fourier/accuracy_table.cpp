// Writes docs/fft-accuracy.md to standard output: the relative error of each order beside FFTW's on the same data.
#include <cstdio>

#include <gtest/gtest.h>

#include "fourier/fft_slots.h"
#include "fourier/slot_tables.h"
#include "fourier/spectrum.h"

namespace {

using namespace fft;

std::vector<float> fftwSame(const std::vector<float>& x)
{
    const int n = static_cast<int>(x.size());
    std::vector<float> in(x.size()), out(x.size() + 2);
    fftwf_plan plan = fftwf_plan_dft_r2c_1d(n, in.data(), reinterpret_cast<fftwf_complex*>(out.data()), FFTW_ESTIMATE);
    in = x;
    fftwf_execute_dft_r2c(plan, in.data(), reinterpret_cast<fftwf_complex*>(out.data()));
    fftwf_destroy_plan(plan);
    return out;
}
std::vector<double> fftwSame(const std::vector<double>& x)
{
    const int n = static_cast<int>(x.size());
    std::vector<double> in(x.size()), out(x.size() + 2);
    fftw_plan plan = fftw_plan_dft_r2c_1d(n, in.data(), reinterpret_cast<fftw_complex*>(out.data()), FFTW_ESTIMATE);
    in = x;
    fftw_execute_dft_r2c(plan, in.data(), reinterpret_cast<fftw_complex*>(out.data()));
    fftw_destroy_plan(plan);
    return out;
}

template<class T> void table(const char* title, int largest, double unit, const char* unitName)
{
    using F = Functions<T>;
    std::printf("## %s\n\n| order | bound |", title);
    for (const char* slot : slots::kNames)
        std::printf(" %s |", slot);
    std::printf(" l9 inverse | FFTW |\n|--:|--:|");
    for (int slot = 0; slot < slots::kCount + 2; slot++)
        std::printf("--:|");
    std::printf("\n");
    for (int order = 1; order <= largest; order++) {
        const size_t n = size_t{1} << order;
        const std::vector<T> x = randomValues<T>(n, 7 + order, -1, 1);
        const std::vector<Bin> exact = order <= 10 ? sumOfTerms(x) : byFftw(x);
        std::printf("| %d | %.2f |", order, errorBound<T>(order) / unit);
        double inverse = 0;
        for (int slot = 0; slot < slots::kCount; slot++) {
            if (!slots::canRun(slot)) {
                std::printf(" |");
                continue;
            }
            typename F::Spec* spec = nullptr;
            std::vector<T> y(n + 2), back(n);
            if (F::init[slot](&spec, order, qvrFftNoDiv, 0) != qvrOk)
                std::abort();
            F::forward[slot](x.data(), y.data(), spec, nullptr);
            std::printf(" %.2f |", spectrumError(y.data(), exact, 1) / unit);
            // The inverse of a spectrum that is exact to twice the precision would need one that T cannot hold: its
            // rounding, about 0.4 units, is in this figure.
            const std::vector<T> rounded = roundedCcs<T>(exact);
            F::inverse[slot](rounded.data(), back.data(), spec, nullptr);
            inverse = signalError(back.data(), x, static_cast<Exact>(n)) / unit;
            F::free[slot](spec);
        }
        const std::vector<T> peer = fftwSame(x);
        std::printf(" %.2f | %.2f |\n", inverse, spectrumError(peer.data(), exact, 1) / unit);
    }
    std::printf("\nIn units of %s.\n\n", unitName);
}

} // namespace

int main()
{
    std::printf("# Accuracy of the real FFT\n\n"
                "Relative error of the half spectrum, root of the sum of squared differences over the root of the sum "
                "of squares,\nof N = 2^order random values between -1 and 1. The exact spectrum is the defining sum "
                "in long double up to order 10,\nand above it FFTW's in the next wider precision. Every build of the "
                "library is listed; FFTW's error is that of the same\nprecision on the same values. The bound is what "
                "the tests hold every build to: 1.0 sqrt(order + 1) units in single and\n1.4 sqrt(order + 1) units in "
                "double precision.\n\n"
                "Made by the program fourier_accuracy of the tests: "
                "`build/release/tests/fourier/fourier_accuracy > docs/fft-accuracy.md`.\n\n");
    table<float>("Single precision", 22, 0x1p-24, "2^-24");
    table<double>("Double precision", 21, 0x1p-53, "2^-53");
    return 0;
}
