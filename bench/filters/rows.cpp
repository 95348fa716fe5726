// Rows of the recursive filters, the median filter and the sample-rate change.
#include <math.h>

#include "bench/bench.h"
#include "bench/peers.h"

using namespace bench;

namespace {

constexpr const char* kFamily = "filters";

template<class F> F* plainOf(const char* name)
{
    return reinterpret_cast<F*>(findPlain(name));
}

// Lengths in samples: a short call, and arrays that the first, the second and no cache holds.
struct Length {
    const char* label;
    int samples;
};
constexpr Length kLengths[] = {{"15", 15}, {"1024", 1024}, {"L2", 40000}, {"memory", 4 << 20}};

void recursive(const Sink& sink)
{
    for (const int order : {1, 2, 4, 6, 8, 12})
        for (const Length& length : kLengths) {
            if (length.samples > 100000 && !sink.memory)
                continue;
            sink.add("order " + std::to_string(order) + ", " + length.label, [=](Case& c) {
                const int n = length.samples;
                c.elements = n;
                c.work = {.read = 8, .written = 8};
                c.tolerance = 1e-9;
                std::vector<double> taps(static_cast<size_t>(2 * (order + 1)));
                Morven_qvrsIIRGenLowpass_64f(order, taps.data(), qvrIirButterworth, 0.2, 0);
                const double* src = c.array<double>(n, Data::mixed);
                double* dst = c.array<double>(n, Data::mixed, true);
                // One state each, started anew for each call, so that runs compare.
                const auto make = [&] {
                    qvrsIIRState_64f* state = nullptr;
                    Morven_qvrsIIRInitAlloc_64f(&state, taps.data(), order, nullptr);
                    c.atEnd([=] { Morven_qvrsIIRFree_64f(state); });
                    return state;
                };
                qvrsIIRState_64f* mine = make();
                c.ours([=] { Morven_qvrsIIR_64f(src, dst, n, mine); });
                if (auto* plain = plainOf<decltype(Morven_qvrsIIR_64f)>("qvrsIIR_64f")) {
                    qvrsIIRState_64f* theirs = make();
                    c.peer("plain", [=] { plain(src, dst, n, theirs); });
                }
            });
        }
}

void stateMaking(const Sink& sink)
{
    sink.add("order 8", [](Case& c) {
        c.elements = 1;
        std::vector<double> taps(18);
        Morven_qvrsIIRGenLowpass_64f(8, taps.data(), qvrIirButterworth, 0.2, 0);
        c.ours([=] {
            qvrsIIRState_64f* state = nullptr;
            Morven_qvrsIIRInitAlloc_64f(&state, taps.data(), 8, nullptr);
            Morven_qvrsIIRFree_64f(state);
        });
    });
}

template<auto Design> void designing(const Sink& sink)
{
    for (const int order : {2, 12})
        sink.add("order " + std::to_string(order), [=](Case& c) {
            c.elements = 1;
            double* taps = c.array<double>(26, Data::mixed);
            c.ours([=] { Design(order, taps, qvrIirChebyshev, 0.2, 1.0); });
        });
}

void median(const Sink& sink)
{
    for (const int mask : {3, 5, 7, 15, 31, 63, 101})
        for (const int n : {15, 4096, 65536})
            sink.add("mask " + std::to_string(mask) + ", " + std::to_string(n), [=](Case& c) {
                c.elements = n;
                c.work = {.read = 4, .written = 4, .inPlace = true};
                const float* src = c.array<float>(n, Data::mixed);
                float* dst = c.array<float>(n, Data::mixed, true);
                // Filtered again and again a signal would become smooth, so each run starts from the source.
                c.ours([=] {
                    Morven_qvrsCopy_32f(src, dst, n);
                    Morven_qvrsFilterMedian_32f_I(dst, n, mask);
                });
                if (auto* plain = plainOf<decltype(Morven_qvrsFilterMedian_32f_I)>("qvrsFilterMedian_32f_I"))
                    c.peer("plain", [=] {
                        Morven_qvrsCopy_32f(src, dst, n);
                        plain(dst, n, mask);
                    });
            });
}

template<class T, auto Export, bool Up> void rate(const Sink& sink, const char* name)
{
    for (const int factor : {2, 3, 4, 5, 8, 16})
        for (const int n : {15, 4096, 65536})
            sink.add("factor " + std::to_string(factor) + ", " + std::to_string(n), [=](Case& c) {
                const int outputs = Up ? n * factor : n / factor + 1;
                c.elements = Up ? outputs : n;
                c.work = {.read = sizeof(T) / (Up ? double(factor) : 1.0),
                          .written = sizeof(T) / (Up ? 1.0 : double(factor))};
                const T* src = c.array<T>(n, Data::mixed);
                T* dst = c.array<T>(outputs, Data::mixed, true);
                c.ours([=] {
                    int count, phase = 0;
                    Export(src, n, dst, &count, factor, &phase);
                });
                if (auto* plain = plainOf<std::remove_pointer_t<decltype(Export)>>(name))
                    c.peer("plain", [=] {
                        int count, phase = 0;
                        plain(src, n, dst, &count, factor, &phase);
                    });
            });
}

const bool registered[] = {
    addRow({"qvrsIIR_64f", "", kFamily, "iir", recursive}),
    addRow({"qvrsIIRInitAlloc_64f", "with qvrsIIRFree_64f", kFamily, "iir", stateMaking}),
    addRow({"qvrsIIRFree_64f", "with qvrsIIRInitAlloc_64f", kFamily, "iir", [](const Sink&) {}}),
    addRow({"qvrsIIRGenLowpass_64f", "", kFamily, "iir", designing<Morven_qvrsIIRGenLowpass_64f>}),
    addRow({"qvrsIIRGenHighpass_64f", "", kFamily, "iir", designing<Morven_qvrsIIRGenHighpass_64f>}),
    addRow({"qvrsFilterMedian_32f_I", "", kFamily, "median", median}),
    addRow({"qvrsSampleUp_32f", "", kFamily, "samplerate",
            [](const Sink& sink) { rate<float, Morven_qvrsSampleUp_32f, true>(sink, "qvrsSampleUp_32f"); }}),
    addRow({"qvrsSampleDown_32f", "", kFamily, "samplerate",
            [](const Sink& sink) { rate<float, Morven_qvrsSampleDown_32f, false>(sink, "qvrsSampleDown_32f"); }}),
    addRow({"qvrsSampleDown_16s", "", kFamily, "samplerate",
            [](const Sink& sink) { rate<int16_t, Morven_qvrsSampleDown_16s, false>(sink, "qvrsSampleDown_16s"); }}),
};

} // namespace
