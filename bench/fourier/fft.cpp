// Rows of the real FFT beside FFTW: orders 1 to 24 in single and 1 to 23 in double precision, each direction, both in a
// row, batches of 64 short ones, and creation. The unit of work is a floating-point operation, 2.5 N log2 N of them by
// convention, so a thousandth of the inverse of ns per element is GFLOP/s; the limit is fused multiply-adds, two
// operations each.
#include <fftw3.h>

#include <algorithm>
#include <cmath>

#include "bench/bench.h"
#include "bench/peers.h"

using namespace bench;

namespace {

constexpr int kMeasuredOrders = 18; // FFTW plans by measuring up to here, by estimate above
constexpr int kCachedOrders = 18;   // longer ones are rows of memory

template<class T> struct Library;
template<> struct Library<float> {
    using Spec = qvrsFFTSpec_R_32f;
    using Plan = fftwf_plan;
    static constexpr int largest = 24;
    static constexpr auto init = Morven_qvrsFFTInitAlloc_R_32f;
    static constexpr auto free = Morven_qvrsFFTFree_R_32f;
    static constexpr auto forward = Morven_qvrsFFTFwd_RToCCS_32f;
    static constexpr auto inverse = Morven_qvrsFFTInv_CCSToR_32f;
    static Plan planForward(int n, float* x, float* y, unsigned flags)
    {
        return fftwf_plan_dft_r2c_1d(n, x, reinterpret_cast<fftwf_complex*>(y), flags);
    }
    static Plan planInverse(int n, float* x, float* y, unsigned flags)
    {
        return fftwf_plan_dft_c2r_1d(n, reinterpret_cast<fftwf_complex*>(x), y, flags);
    }
    static Plan planMany(int n, int count, float* x, float* y, unsigned flags)
    {
        return fftwf_plan_many_dft_r2c(1, &n, count, x, nullptr, 1, n, reinterpret_cast<fftwf_complex*>(y), nullptr, 1,
                                       n / 2 + 1, flags);
    }
    static constexpr auto execute = fftwf_execute;
    static constexpr auto destroy = fftwf_destroy_plan;
};
template<> struct Library<double> {
    using Spec = qvrsFFTSpec_R_64f;
    using Plan = fftw_plan;
    static constexpr int largest = 23;
    static constexpr auto init = Morven_qvrsFFTInitAlloc_R_64f;
    static constexpr auto free = Morven_qvrsFFTFree_R_64f;
    static constexpr auto forward = Morven_qvrsFFTFwd_RToCCS_64f;
    static constexpr auto inverse = Morven_qvrsFFTInv_CCSToR_64f;
    static Plan planForward(int n, double* x, double* y, unsigned flags)
    {
        return fftw_plan_dft_r2c_1d(n, x, reinterpret_cast<fftw_complex*>(y), flags);
    }
    static Plan planInverse(int n, double* x, double* y, unsigned flags)
    {
        return fftw_plan_dft_c2r_1d(n, reinterpret_cast<fftw_complex*>(x), y, flags);
    }
    static Plan planMany(int n, int count, double* x, double* y, unsigned flags)
    {
        return fftw_plan_many_dft_r2c(1, &n, count, x, nullptr, 1, n, reinterpret_cast<fftw_complex*>(y), nullptr, 1,
                                      n / 2 + 1, flags);
    }
    static constexpr auto execute = fftw_execute;
    static constexpr auto destroy = fftw_destroy_plan;
};

template<class T, bool Inverse> void transformCase(Case& c, int order)
{
    using L = Library<T>;
    const int64_t n = int64_t{1} << order;
    c.elements = 2.5 * static_cast<double>(n) * order;
    c.points = static_cast<double>(n) / 2;
    c.work.unit = sizeof(T) == 4 ? Unit::add32 : Unit::none;
    c.work.operations = 0.5;
    // Errors scale with the spectrum's norm, about sqrt(N), not with the single bin.
    c.tolerance = (sizeof(T) == 4 ? 3e-6 : 1e-14) * std::sqrt(static_cast<double>(n)) * (Inverse ? 10 : 1);
    T* src = c.array<T>(Inverse ? n + 2 : n, Data::mixed);
    T* dst = c.array<T>(Inverse ? n : n + 2, Data::mixed, true);
    typename L::Spec* spec = nullptr;
    L::init(&spec, order, qvrFftNoDiv, qvrHintNone);
    qvr8u* buffer =
        static_cast<qvr8u*>(c.allocate(std::max<int64_t>(131136, n * static_cast<int64_t>(sizeof(T)) + 64), 0));
    c.atEnd([=] { L::free(spec); });
    constexpr auto ours = Inverse ? L::inverse : L::forward;
    c.ours([=] { ours(src, dst, spec, buffer); });
    if (!ownSlot())
        return;
    const unsigned flags = order <= kMeasuredOrders ? FFTW_MEASURE : FFTW_ESTIMATE;
    const auto plan = Inverse ? L::planInverse(static_cast<int>(n), src, dst, flags | FFTW_PRESERVE_INPUT)
                              : L::planForward(static_cast<int>(n), src, dst, flags);
    c.atEnd([=] { L::destroy(plan); });
    for (const Array& array : c.arrays) // measuring writes on them
        Case::fill(array);
    c.peer("FFTW", [=] { L::execute(plan); });
}

template<class T, bool Inverse> void transforms(const Sink& sink)
{
    for (int order = 1; order <= (sink.memory ? Library<T>::largest : kCachedOrders); order++)
        sink.add("order " + std::to_string(order), [=](Case& c) { transformCase<T, Inverse>(c, order); });
}

// Forward and back again, divided by N on the way back.
template<class T> void roundTrips(const Sink& sink)
{
    using L = Library<T>;
    for (int order = 2; order <= kCachedOrders; order += 2)
        sink.add("order " + std::to_string(order), [=](Case& c) {
            const int64_t n = int64_t{1} << order;
            c.elements = 5 * static_cast<double>(n) * order;
            c.points = static_cast<double>(n) / 2;
            c.work.unit = sizeof(T) == 4 ? Unit::add32 : Unit::none;
            c.work.operations = 0.5;
            c.tolerance = sizeof(T) == 4 ? 1e-5 : 1e-13;
            T* signal = c.array<T>(n, Data::mixed);
            T* spectrum = c.array<T>(n + 2, Data::mixed);
            T* back = c.array<T>(n, Data::mixed, true);
            typename L::Spec* spec = nullptr;
            L::init(&spec, order, qvrFftDivInvByN, qvrHintNone);
            qvr8u* buffer =
                static_cast<qvr8u*>(c.allocate(std::max<int64_t>(131136, n * static_cast<int64_t>(sizeof(T)) + 64), 0));
            c.atEnd([=] { L::free(spec); });
            c.ours([=] {
                L::forward(signal, spectrum, spec, buffer);
                L::inverse(spectrum, back, spec, buffer);
            });
            if (!ownSlot())
                return;
            const auto there = L::planForward(static_cast<int>(n), signal, spectrum, FFTW_MEASURE);
            const auto andBack =
                L::planInverse(static_cast<int>(n), spectrum, back, FFTW_MEASURE | FFTW_PRESERVE_INPUT);
            c.atEnd([=] { L::destroy(there), L::destroy(andBack); });
            for (const Array& array : c.arrays) // measuring writes on them
                Case::fill(array);
            const T scale = T(1) / static_cast<T>(n);
            c.peer("FFTW", [=] {
                L::execute(there);
                L::execute(andBack);
                for (int64_t i = 0; i < n; i++)
                    back[i] *= scale;
            });
        });
}

// 64 transforms of neighbouring arrays.
template<class T> void batches(const Sink& sink)
{
    using L = Library<T>;
    constexpr int64_t count = 64;
    for (int order = 3; order <= 9; order++)
        sink.add("64 of order " + std::to_string(order), [=](Case& c) {
            const int64_t n = int64_t{1} << order;
            c.elements = 2.5 * static_cast<double>(count * n) * order;
            c.points = static_cast<double>(count * n) / 2;
            c.work.unit = sizeof(T) == 4 ? Unit::add32 : Unit::none;
            c.work.operations = 0.5;
            c.tolerance = (sizeof(T) == 4 ? 3e-6 : 1e-14) * std::sqrt(static_cast<double>(n));
            T* signals = c.array<T>(count * n, Data::mixed);
            T* spectra = c.array<T>(count * (n + 2), Data::mixed, true);
            typename L::Spec* spec = nullptr;
            L::init(&spec, order, qvrFftNoDiv, qvrHintNone);
            qvr8u* buffer = static_cast<qvr8u*>(c.allocate(131136, 0));
            c.atEnd([=] { L::free(spec); });
            c.ours([=] {
                for (int64_t i = 0; i < count; i++)
                    L::forward(signals + i * n, spectra + i * (n + 2), spec, buffer);
            });
            if (!ownSlot())
                return;
            const auto plan = L::planMany(static_cast<int>(n), static_cast<int>(count), signals, spectra, FFTW_MEASURE);
            c.atEnd([=] { L::destroy(plan); });
            for (const Array& array : c.arrays) // measuring writes on them
                Case::fill(array);
            c.peer("FFTW", [=] { L::execute(plan); });
        });
}

// An object made and released, beside a plan by estimate.
template<class T> void creation(const Sink& sink)
{
    using L = Library<T>;
    for (const int order : {4, 8, 10, 12, 14, 16, 18, 20})
        sink.add("order " + std::to_string(order), [=](Case& c) {
            c.elements = 1;
            c.ours([=] {
                typename L::Spec* spec = nullptr;
                L::init(&spec, order, qvrFftNoDiv, qvrHintNone);
                L::free(spec);
            });
            if (!ownSlot())
                return;
            const int n = 1 << order;
            T* src = c.array<T>(n, Data::mixed);
            T* dst = c.array<T>(n + 2, Data::mixed);
            c.peer("FFTW estimate", [=] { L::destroy(L::planForward(n, src, dst, FFTW_ESTIMATE)); });
        });
}

constexpr const char *kFamily = "fourier", *kGroup = "fft";

const bool forward32 = addRow({"qvrsFFTFwd_RToCCS_32f", "", kFamily, kGroup, transforms<float, false>});
const bool inverse32 = addRow({"qvrsFFTInv_CCSToR_32f", "", kFamily, kGroup, transforms<float, true>});
const bool forward64 = addRow({"qvrsFFTFwd_RToCCS_64f", "", kFamily, kGroup, transforms<double, false>});
const bool inverse64 = addRow({"qvrsFFTInv_CCSToR_64f", "", kFamily, kGroup, transforms<double, true>});
const bool trip32 = addRow({"qvrsFFTInv_CCSToR_32f", "round trip", kFamily, kGroup, roundTrips<float>});
const bool trip64 = addRow({"qvrsFFTInv_CCSToR_64f", "round trip", kFamily, kGroup, roundTrips<double>});
const bool batch32 = addRow({"qvrsFFTFwd_RToCCS_32f", "batch", kFamily, kGroup, batches<float>});
const bool batch64 = addRow({"qvrsFFTFwd_RToCCS_64f", "batch", kFamily, kGroup, batches<double>});
const bool init32 = addRow({"qvrsFFTInitAlloc_R_32f", "with qvrsFFTFree_R_32f", kFamily, kGroup, creation<float>});
const bool init64 = addRow({"qvrsFFTInitAlloc_R_64f", "with qvrsFFTFree_R_64f", kFamily, kGroup, creation<double>});
const bool free32 = addRow({"qvrsFFTFree_R_32f", "with qvrsFFTInitAlloc_R_32f", kFamily, kGroup, [](const Sink&) {}});
const bool free64 = addRow({"qvrsFFTFree_R_64f", "with qvrsFFTInitAlloc_R_64f", kFamily, kGroup, [](const Sink&) {}});

} // namespace
