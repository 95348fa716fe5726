// Rows of the Hilbert transform and the transforms of any length beside FFTW, of the wavelet transform beside plain
// loops, and of the fixed-point transform beside the one in single precision.
#include <fftw3.h>
#include <math.h>

#include <algorithm>

#include "bench/bench.h"
#include "bench/fourier/wavelet_taps.h"
#include "bench/peers.h"

struct qvrsDFTSpec;
#define QVR_DECLARE(slot)                                                                                              \
    extern "C" qvrStatus slot##_ownqvrsDFTInitAlloc_R_32f(qvrsDFTSpec**, int, int, int);                               \
    extern "C" qvrStatus slot##_ownqvrsDFTInitAlloc_C_32fc(qvrsDFTSpec**, int, int, int);                              \
    extern "C" qvrStatus slot##_ownqvrsDFTFree_R_32f(qvrsDFTSpec*);                                                    \
    extern "C" qvrStatus slot##_ownqvrsDFTFree_C_32fc(qvrsDFTSpec*);                                                   \
    extern "C" qvrStatus slot##_ownqvrsDFTFwd_RToCCS_32f(const float*, float*, const qvrsDFTSpec*, uint8_t*);          \
    extern "C" qvrStatus slot##_ownqvrsDFTInv_CToC_32fc(const float*, float*, const qvrsDFTSpec*, uint8_t*);
QVR_DECLARE(mx)
QVR_DECLARE(m7)
QVR_DECLARE(u8)
QVR_DECLARE(y8)
QVR_DECLARE(e9)
QVR_DECLARE(l9)
// Slot n8 repeats u8.
#define QVR_OF_SLOT(name)                                                                                              \
    [] {                                                                                                               \
        decltype(&mx_##name)                                                                                           \
            const table[] = {mx_##name, m7_##name, u8_##name, u8_##name, y8_##name, e9_##name, l9_##name};             \
        return table[qvrCpuIndex];                                                                                     \
    }()

namespace bench {

float waveletTaps[2][kWaveletMost];
int waveletLength;

} // namespace bench

using namespace bench;

namespace {

constexpr const char* kFamily = "fourier";

constexpr int kLengths[] = {12,   60,   100,  101,  256,   480,   1000,  1009,  1024,
                            1155, 4095, 4096, 5000, 10000, 16384, 44100, 48000, 65536};

std::string lengthLabel(int n)
{
    return std::to_string(n);
}

double operations(int n)
{
    return 2.5 * n * log2(n);
}

void hilbert(const Sink& sink)
{
    for (const int n : kLengths)
        sink.add(lengthLabel(n), [=](Case& c) {
            c.elements = n;
            c.tolerance = 1e-5;
            const float* x = c.array<float>(n, Data::mixed);
            float* z = c.array<float>(2 * n, Data::mixed, true);
            qvrsHilbertState_32f32fc* state = nullptr;
            Morven_qvrsHilbertInitAlloc_32f32fc(&state, n, qvrHintNone);
            c.atEnd([=] { Morven_qvrsHilbertFree_32f32fc(state); });
            c.ours([=] { Morven_qvrsHilbert_32f32fc(x, reinterpret_cast<qvr32fc*>(z), state); });
            if (!ownSlot())
                return;
            fftwf_complex* out = reinterpret_cast<fftwf_complex*>(z);
            const auto there = fftwf_plan_dft_r2c_1d(n, const_cast<float*>(x), out, FFTW_MEASURE | FFTW_PRESERVE_INPUT);
            const auto back = fftwf_plan_dft_1d(n, out, out, FFTW_BACKWARD, FFTW_MEASURE);
            c.atEnd([=] {
                fftwf_destroy_plan(there);
                fftwf_destroy_plan(back);
            });
            for (const Array& array : c.arrays)
                Case::fill(array);
            c.peer("FFTW", [=] {
                fftwf_execute(there);
                const float scale = 1.0f / static_cast<float>(n);
                for (int k = 0; k <= n / 2; k++) {
                    const float f = k == 0 || 2 * k == n ? scale : 2 * scale;
                    z[2 * k] *= f;
                    z[2 * k + 1] *= f;
                }
                std::fill(z + 2 * (n / 2 + 1), z + 2 * n, 0.0f);
                fftwf_execute(back);
            });
        });
}

void realTransform(const Sink& sink)
{
    for (const int n : kLengths)
        sink.add(lengthLabel(n), [=](Case& c) {
            c.elements = operations(n);
            c.work.unit = Unit::add32;
            c.work.operations = 0.5;
            c.tolerance = 3e-6 * sqrt(n); // errors scale with the norm of the spectrum
            float* x = c.array<float>(n, Data::mixed);
            float* y = c.array<float>(n + 2, Data::mixed, true);
            qvrsDFTSpec* spec = nullptr;
            QVR_OF_SLOT(ownqvrsDFTInitAlloc_R_32f)(&spec, n, qvrFftNoDiv, qvrHintNone);
            const auto release = QVR_OF_SLOT(ownqvrsDFTFree_R_32f);
            const auto run = QVR_OF_SLOT(ownqvrsDFTFwd_RToCCS_32f);
            uint8_t* buffer = static_cast<uint8_t*>(c.allocate(int64_t{n} * 64 + 131136, 0));
            c.atEnd([=] { release(spec); });
            c.ours([=] { run(x, y, spec, buffer); });
            if (!ownSlot())
                return;
            const auto plan =
                fftwf_plan_dft_r2c_1d(n, x, reinterpret_cast<fftwf_complex*>(y), FFTW_MEASURE | FFTW_PRESERVE_INPUT);
            c.atEnd([=] { fftwf_destroy_plan(plan); });
            for (const Array& array : c.arrays)
                Case::fill(array);
            c.peer("FFTW", [=] { fftwf_execute(plan); });
        });
}

void complexTransform(const Sink& sink)
{
    for (const int n : kLengths)
        sink.add(lengthLabel(n), [=](Case& c) {
            c.elements = 2 * operations(n);
            c.work.unit = Unit::add32;
            c.work.operations = 0.5;
            c.tolerance = 3e-6 * sqrt(n); // errors scale with the norm of the spectrum
            float* x = c.array<float>(2 * n, Data::mixed);
            float* y = c.array<float>(2 * n, Data::mixed, true);
            qvrsDFTSpec* spec = nullptr;
            QVR_OF_SLOT(ownqvrsDFTInitAlloc_C_32fc)(&spec, n, qvrFftNoDiv, qvrHintNone);
            const auto release = QVR_OF_SLOT(ownqvrsDFTFree_C_32fc);
            const auto run = QVR_OF_SLOT(ownqvrsDFTInv_CToC_32fc);
            uint8_t* buffer = static_cast<uint8_t*>(c.allocate(int64_t{n} * 96 + 131136, 0));
            c.atEnd([=] { release(spec); });
            c.ours([=] { run(x, y, spec, buffer); });
            if (!ownSlot())
                return;
            const auto plan =
                fftwf_plan_dft_1d(n, reinterpret_cast<fftwf_complex*>(x), reinterpret_cast<fftwf_complex*>(y),
                                  FFTW_BACKWARD, FFTW_MEASURE | FFTW_PRESERVE_INPUT);
            c.atEnd([=] { fftwf_destroy_plan(plan); });
            for (const Array& array : c.arrays)
                Case::fill(array);
            c.peer("FFTW", [=] { fftwf_execute(plan); });
        });
}

void setTaps(int taps)
{
    waveletLength = taps;
    for (int k = 0; k < taps; k++) {
        waveletTaps[0][k] = 0.5f / static_cast<float>(k + 1);
        waveletTaps[1][k] = k % 2 != 0 ? -0.25f : 0.25f;
    }
}

constexpr int kTaps[] = {2, 4, 8, 16, 32}, kSizes[] = {15, 1024, 40000};

// The limit is the double sums: an addition for each product of each channel, in vectors of half the single's lanes.
void waveletCase(Case& c, int taps, double perElement)
{
    c.work.unit = Unit::add32;
    c.work.operations = 2 * perElement;
    c.tolerance = 1e-6;
    setTaps(taps);
}

void waveletForward(const Sink& sink)
{
    for (const int taps : kTaps)
        for (const int n : kSizes)
            sink.add(std::to_string(taps) + " taps, " + std::to_string(n), [=](Case& c) {
                c.elements = n;
                waveletCase(c, taps, 2 * taps);
                qvrsWTFwdState_32f* state = nullptr;
                Morven_qvrsWTFwdInitAlloc_32f(&state, waveletTaps[0], taps, 0, waveletTaps[1], taps, 0);
                c.atEnd([=] { Morven_qvrsWTFwdFree_32f(state); });
                const float* x = c.array<float>(2 * n + kWaveletMost, Data::mixed) + kWaveletMost;
                float *l = c.array<float>(n, Data::mixed, true), *h = c.array<float>(n, Data::mixed, true);
                // Each run starts from the history in front of the source.
                c.ours([=] {
                    const float* delay = x - (taps - 1);
                    Morven_qvrsWTFwdSetDlyLine_32f(state, delay, delay);
                    Morven_qvrsWTFwd_32f(x, l, h, n, state);
                });
                if (auto* plain = reinterpret_cast<decltype(Morven_qvrsWTFwd_32f)*>(findPlain("qvrsWTFwd_32f")))
                    c.peer("plain", [=] { plain(x, l, h, n, nullptr); });
            });
}

void waveletInverse(const Sink& sink)
{
    for (const int taps : kTaps)
        for (const int n : kSizes)
            sink.add(std::to_string(taps) + " taps, " + std::to_string(n), [=](Case& c) {
                c.elements = n;
                waveletCase(c, taps, 2 * taps);
                qvrsWTInvState_32f* state = nullptr;
                Morven_qvrsWTInvInitAlloc_32f(&state, waveletTaps[0], taps, 0, waveletTaps[1], taps, 0);
                c.atEnd([=] { Morven_qvrsWTInvFree_32f(state); });
                const float *l = c.array<float>(n + kWaveletMost, Data::mixed) + kWaveletMost,
                            *h = c.array<float>(n + kWaveletMost, Data::mixed) + kWaveletMost;
                float* x = c.array<float>(2 * n, Data::mixed, true);
                c.ours([=] {
                    const int history = (taps - 1) / 2;
                    Morven_qvrsWTInvSetDlyLine_32f(state, l - history, h - history);
                    Morven_qvrsWTInv_32f(l, h, n, x, state);
                });
                if (auto* plain = reinterpret_cast<decltype(Morven_qvrsWTInv_32f)*>(findPlain("qvrsWTInv_32f")))
                    c.peer("plain", [=] { plain(l, h, n, x, nullptr); });
            });
}

// One level each way with delay arrays set, as the rows above time it; creation and release.
template<class S, auto Init, auto Free> void waveletCreation(const Sink& sink)
{
    sink.add("8 taps", [](Case& c) {
        c.elements = 1;
        setTaps(8);
        c.ours([] {
            S* state = nullptr;
            Init(&state, waveletTaps[0], 8, 0, waveletTaps[1], 8, 0);
            Free(state);
        });
    });
}
template<class S, auto Init, auto Move, auto Free> void waveletDelays(const Sink& sink)
{
    sink.add("32 taps", [](Case& c) {
        c.elements = 62;
        setTaps(32);
        S* state = nullptr;
        Init(&state, waveletTaps[0], 32, 0, waveletTaps[1], 32, 0);
        c.atEnd([=] { Free(state); });
        float* delay = c.array<float>(64, Data::mixed);
        c.ours([=] { Move(state, delay, delay + 32); });
    });
}

void fixedTransform(const Sink& sink)
{
    for (const int order : {2, 3, 4, 6, 8, 10, 12, 14, 16, 18})
        sink.add("order " + std::to_string(order), [=](Case& c) {
            const int n = 1 << order;
            c.elements = operations(n);
            c.work.unit = Unit::add32;
            c.work.operations = 0.5;
            const int16_t* x = c.array<int16_t>(n, Data::samples);
            int16_t* y = c.array<int16_t>(n + 2, Data::samples);
            float *fx = c.array<float>(n, Data::mixed), *fy = c.array<float>(n + 2, Data::mixed);
            qvrsFFTSpec_R_16s* spec = nullptr;
            qvrsFFTSpec_R_32f* single = nullptr;
            Morven_qvrsFFTInitAlloc_R_16s(&spec, order, qvrFftDivFwdByN, qvrHintNone);
            Morven_qvrsFFTInitAlloc_R_32f(&single, order, qvrFftDivFwdByN, qvrHintNone);
            c.atEnd([=] {
                Morven_qvrsFFTFree_R_16s(spec);
                Morven_qvrsFFTFree_R_32f(single);
            });
            qvr8u* buffer = static_cast<qvr8u*>(c.allocate(int64_t{n} * 8 + 200000, 0));
            c.ours([=] { Morven_qvrsFFTFwd_RToCCS_16s_Sfs(x, y, spec, 0, buffer); });
            c.peer("our own 32f", [=] { Morven_qvrsFFTFwd_RToCCS_32f(fx, fy, single, buffer); });
        });
}

void fixedCreation(const Sink& sink)
{
    for (const int order : {3, 8, 12, 16})
        sink.add("order " + std::to_string(order), [=](Case& c) {
            c.elements = 1;
            c.ours([=] {
                qvrsFFTSpec_R_16s* spec = nullptr;
                Morven_qvrsFFTInitAlloc_R_16s(&spec, order, qvrFftNoDiv, qvrHintNone);
                Morven_qvrsFFTFree_R_16s(spec);
            });
        });
}

void hilbertCreation(const Sink& sink)
{
    for (const int n : {1000, 1009, 1024})
        sink.add(lengthLabel(n), [=](Case& c) {
            c.elements = 1;
            c.ours([=] {
                qvrsHilbertState_32f32fc* state = nullptr;
                Morven_qvrsHilbertInitAlloc_32f32fc(&state, n, qvrHintNone);
                Morven_qvrsHilbertFree_32f32fc(state);
            });
        });
}

void nothing(const Sink&) {}

using Fwd = qvrsWTFwdState_32f;
using Inv = qvrsWTInvState_32f;
constexpr const char *kHilbert = "hilbert", *kWavelet = "wavelet", *kFixed = "fixedfft";

const bool registered[] = {
    addRow({"qvrsHilbert_32f32fc", "", kFamily, kHilbert, hilbert}),
    addRow({"qvrsHilbert_32f32fc", "its transform of real values", kFamily, kHilbert, realTransform}),
    addRow({"qvrsHilbert_32f32fc", "its complex inverse transform", kFamily, kHilbert, complexTransform}),
    addRow({"qvrsHilbertInitAlloc_32f32fc", "with qvrsHilbertFree_32f32fc", kFamily, kHilbert, hilbertCreation}),
    addRow({"qvrsHilbertFree_32f32fc", "with qvrsHilbertInitAlloc_32f32fc", kFamily, kHilbert, nothing}),
    addRow({"qvrsWTFwd_32f", "with qvrsWTFwdSetDlyLine_32f", kFamily, kWavelet, waveletForward}),
    addRow({"qvrsWTInv_32f", "with qvrsWTInvSetDlyLine_32f", kFamily, kWavelet, waveletInverse}),
    addRow({"qvrsWTFwdInitAlloc_32f", "with qvrsWTFwdFree_32f", kFamily, kWavelet,
            waveletCreation<Fwd, Morven_qvrsWTFwdInitAlloc_32f, Morven_qvrsWTFwdFree_32f>}),
    addRow({"qvrsWTInvInitAlloc_32f", "with qvrsWTInvFree_32f", kFamily, kWavelet,
            waveletCreation<Inv, Morven_qvrsWTInvInitAlloc_32f, Morven_qvrsWTInvFree_32f>}),
    addRow({"qvrsWTFwdFree_32f", "with qvrsWTFwdInitAlloc_32f", kFamily, kWavelet, nothing}),
    addRow({"qvrsWTInvFree_32f", "with qvrsWTInvInitAlloc_32f", kFamily, kWavelet, nothing}),
    addRow(
        {"qvrsWTFwdSetDlyLine_32f", "", kFamily, kWavelet,
         waveletDelays<Fwd, Morven_qvrsWTFwdInitAlloc_32f, Morven_qvrsWTFwdSetDlyLine_32f, Morven_qvrsWTFwdFree_32f>}),
    addRow(
        {"qvrsWTFwdGetDlyLine_32f", "", kFamily, kWavelet,
         waveletDelays<Fwd, Morven_qvrsWTFwdInitAlloc_32f, Morven_qvrsWTFwdGetDlyLine_32f, Morven_qvrsWTFwdFree_32f>}),
    addRow(
        {"qvrsWTInvSetDlyLine_32f", "", kFamily, kWavelet,
         waveletDelays<Inv, Morven_qvrsWTInvInitAlloc_32f, Morven_qvrsWTInvSetDlyLine_32f, Morven_qvrsWTInvFree_32f>}),
    addRow(
        {"qvrsWTInvGetDlyLine_32f", "", kFamily, kWavelet,
         waveletDelays<Inv, Morven_qvrsWTInvInitAlloc_32f, Morven_qvrsWTInvGetDlyLine_32f, Morven_qvrsWTInvFree_32f>}),
    addRow({"qvrsFFTFwd_RToCCS_16s_Sfs", "", kFamily, kFixed, fixedTransform}),
    addRow({"qvrsFFTInitAlloc_R_16s", "with qvrsFFTFree_R_16s", kFamily, kFixed, fixedCreation}),
    addRow({"qvrsFFTFree_R_16s", "with qvrsFFTInitAlloc_R_16s", kFamily, kFixed, nothing}),
};

} // namespace
