// Rows of the FIR filters: runs of 64 to a million samples beside a hand-blocked direct loop, FFTW overlap-save with
// a kept plan, liquid-dsp and VOLK; rate changes beside a polyphase loop; creation and design.
//
// The unit of work of a run is one product, so that the limit is the multipliers' and overlap-save goes beyond it.
#include <fftw3.h>

#include <algorithm>
#include <cmath>
#include <cstring>

#include "bench/bench.h"
#include "bench/filters/fir_peers.h"
#include "bench/peers.h"

#ifdef QVR_HAVE_VOLK
#include <volk/volk.h>
#endif
#ifdef QVR_HAVE_LIQUID
#include <complex>
#include <liquid/liquid.h>
#endif

using namespace bench;

namespace {

constexpr const char* kFamily = "filters";

template<class T> std::vector<T> someTaps(int n)
{
    std::vector<T> taps(static_cast<size_t>(n));
    for (int k = 0; k < n; k++)
        taps[static_cast<size_t>(k)] = static_cast<T>(std::cos(0.7 * k) / n);
    return taps;
}

// A stream by the blocked loop: short calls, and the first L - 1 outputs of others, through a buffer.
template<class T> struct BlockedStream {
    std::vector<T> reversed, buffer;
    explicit BlockedStream(const std::vector<T>& taps)
        : reversed(taps.rbegin(), taps.rend()), buffer(2 * taps.size() + kShort)
    {
    }
    void run(const T* x, T* y, int n)
    {
        const int L = static_cast<int>(reversed.size()), P = L - 1, head = n <= kShort ? n : std::min(n, P);
        memcpy(buffer.data() + P, x, sizeof(T) * static_cast<size_t>(head));
        blockedFir(buffer.data(), y, head, reversed.data(), L);
        if (n > head)
            blockedFir(x + head - P, y + head, n - head, reversed.data(), L);
        if (n > kShort && n >= P)
            memcpy(buffer.data(), x + n - P, sizeof(T) * static_cast<size_t>(P));
        else
            memmove(buffer.data(), buffer.data() + n, sizeof(T) * static_cast<size_t>(P));
    }
    static constexpr int kShort = 256;
};

template<class T> struct Fftw;
template<> struct Fftw<float> {
    using Plan = fftwf_plan;
    using Complex = fftwf_complex;
    static Plan forward(int n, float* x, Complex* y) { return fftwf_plan_dft_r2c_1d(n, x, y, FFTW_MEASURE); }
    static Plan inverse(int n, Complex* x, float* y) { return fftwf_plan_dft_c2r_1d(n, x, y, FFTW_MEASURE); }
    static constexpr auto execute = fftwf_execute;
    static constexpr auto destroy = fftwf_destroy_plan;
};
template<> struct Fftw<double> {
    using Plan = fftw_plan;
    using Complex = fftw_complex;
    static Plan forward(int n, double* x, Complex* y) { return fftw_plan_dft_r2c_1d(n, x, y, FFTW_MEASURE); }
    static Plan inverse(int n, Complex* x, double* y) { return fftw_plan_dft_c2r_1d(n, x, y, FFTW_MEASURE); }
    static constexpr auto execute = fftw_execute;
    static constexpr auto destroy = fftw_destroy_plan;
};

// Overlap-save with blocks of eight times the taps, at least 1024.
template<class T> struct OverlapSave {
    using F = Fftw<T>;
    using Complex = typename F::Complex;
    int L, N, B;
    T *block, *out, *past;
    Complex *spectrum, *taps;
    typename F::Plan forward, inverse;
    OverlapSave(Case& c, const std::vector<T>& h)
    {
        L = static_cast<int>(h.size());
        for (N = 1024; N < 8 * L;)
            N *= 2;
        B = N - L + 1;
        block = static_cast<T*>(c.allocate(N * static_cast<int64_t>(sizeof(T)), 0));
        out = static_cast<T*>(c.allocate(N * static_cast<int64_t>(sizeof(T)), 0));
        past = static_cast<T*>(c.allocate(L * static_cast<int64_t>(sizeof(T)), 0));
        spectrum = static_cast<Complex*>(c.allocate((N / 2 + 1) * static_cast<int64_t>(sizeof(Complex)), 0));
        taps = static_cast<Complex*>(c.allocate((N / 2 + 1) * static_cast<int64_t>(sizeof(Complex)), 0));
        forward = F::forward(N, block, spectrum);
        inverse = F::inverse(N, spectrum, out);
        std::fill(block, block + N, T(0));
        for (int k = 0; k < L; k++)
            block[k] = h[static_cast<size_t>(k)] / static_cast<T>(N);
        F::execute(forward);
        memcpy(taps, spectrum, static_cast<size_t>(N / 2 + 1) * sizeof(Complex));
        std::fill(past, past + L, T(0));
        auto* const f = forward;
        auto* const i = inverse;
        c.atEnd([=] {
            F::destroy(f);
            F::destroy(i);
        });
    }
    void run(const T* x, T* y, int n)
    {
        const size_t P = static_cast<size_t>(L - 1);
        for (int at = 0; at < n; at += B) {
            const int count = std::min(B, n - at);
            memcpy(block, past, P * sizeof(T));
            memcpy(block + P, x + at, static_cast<size_t>(count) * sizeof(T));
            std::fill(block + P + static_cast<size_t>(count), block + N, T(0));
            memcpy(past, block + count, P * sizeof(T));
            F::execute(forward);
            for (int k = 0; k <= N / 2; k++) {
                const T re = spectrum[k][0] * taps[k][0] - spectrum[k][1] * taps[k][1];
                spectrum[k][1] = spectrum[k][0] * taps[k][1] + spectrum[k][1] * taps[k][0];
                spectrum[k][0] = re;
            }
            F::execute(inverse);
            memcpy(y + at, out + P, static_cast<size_t>(count) * sizeof(T));
        }
    }
};

#ifdef QVR_HAVE_VOLK
struct VolkStream {
    std::vector<float> reversed, buffer;
    explicit VolkStream(const std::vector<float>& taps) : reversed(taps.rbegin(), taps.rend()) {}
    void run(const float* x, float* y, int n)
    {
        const size_t L = reversed.size(), P = L - 1;
        buffer.resize(P + static_cast<size_t>(n));
        memcpy(buffer.data() + P, x, sizeof(float) * static_cast<size_t>(n));
        for (int i = 0; i < n; i++)
            volk_32f_x2_dot_prod_32f(y + i, buffer.data() + i, reversed.data(), static_cast<unsigned>(L));
        memmove(buffer.data(), buffer.data() + n, sizeof(float) * P);
    }
};
#endif

constexpr int kTaps[] = {16, 31, 63, 64, 256, 1024, 4096};
constexpr int kLengths[] = {64, 4096, 65536, 1 << 20}; // the last beyond the second cache, with few taps

// Form: the state's functions. Tap and Data as in the form.
template<class Tap, class Data, class Create, class Run, class Free>
void runs(const Sink& sink, Create create, Run run, Free release)
{
    for (const int L : kTaps)
        for (const int n : kLengths) {
            if (n > 65536 && (L > 256 || !sink.memory))
                continue;
            sink.add(std::to_string(L) + " taps, " + std::to_string(n), [=](Case& c) {
                c.elements = static_cast<double>(n) * L;
                c.work.unit = sizeof(Tap) == 4 ? Unit::add32 : Unit::none;
                c.work.operations = 1;
                c.tolerance = std::is_integral_v<Data> ? 1 : sizeof(Tap) == 4 ? 3e-5 : 1e-6;
                const auto taps = someTaps<Tap>(L);
                const Data* src = c.array<Data>(n, Data(0.5) != Data(0) ? bench::Data::mixed : bench::Data::samples);
                Data* dst = c.array<Data>(n, Data(0.5) != Data(0) ? bench::Data::mixed : bench::Data::samples, true);
                auto* state = create(taps.data(), L);
                c.atEnd([=] { release(state); });
                c.ours([=] { run(src, dst, n, state); });
                if (!ownSlot() || qvrCpuIndex != 6)
                    return;
                if constexpr (std::is_same_v<Tap, Data>) {
                    auto blockedStream = std::make_shared<BlockedStream<Tap>>(taps);
                    c.peer("blocked loop", [=] { blockedStream->run(src, dst, n); });
                    auto fftw = std::make_shared<OverlapSave<Tap>>(c, taps);
                    c.peer("FFTW overlap-save", [=] { fftw->run(src, dst, n); });
                    for (const Array& array : c.arrays)
                        Case::fill(array);
                } else {
                    // The samples widened as a whole, and the results narrowed.
                    auto blockedStream = std::make_shared<BlockedStream<Tap>>(taps);
                    auto x = std::make_shared<std::vector<double>>(n), y = std::make_shared<std::vector<double>>(n);
                    c.peer("blocked loop", [=] {
                        std::copy(src, src + n, x->data());
                        blockedStream->run(x->data(), y->data(), n);
                        for (int i = 0; i < n; i++)
                            if constexpr (std::is_integral_v<Data>)
                                dst[i] = static_cast<Data>(std::lrint(std::clamp((*y)[i], -32768.0, 32767.0)));
                            else
                                dst[i] = static_cast<Data>((*y)[i]);
                    });
                }
                if constexpr (std::is_same_v<Tap, float>) {
#ifdef QVR_HAVE_VOLK
                    auto volk = std::make_shared<VolkStream>(taps);
                    if (L <= 1024)
                        c.peer("VOLK", [=] { volk->run(src, dst, n); });
#endif
#ifdef QVR_HAVE_LIQUID
                    if (L <= 1024) {
                        auto copy = taps;
                        firfilt_rrrf q = firfilt_rrrf_create(copy.data(), static_cast<unsigned>(L));
                        c.atEnd([=] { firfilt_rrrf_destroy(q); });
                        c.peer("liquid-dsp", [=] {
                            firfilt_rrrf_execute_block(q, const_cast<float*>(src), static_cast<unsigned>(n), dst);
                        });
                    }
#endif
                }
            });
        }
}

void runs32(const Sink& sink)
{
    runs<float, float>(
        sink,
        [](const float* t, int L) {
            qvrsFIRState_32f* s = nullptr;
            Morven_qvrsFIRInitAlloc_32f(&s, t, L, nullptr);
            return s;
        },
        Morven_qvrsFIR_32f, Morven_qvrsFIRFree_32f);
}
void runs64(const Sink& sink)
{
    runs<double, double>(
        sink,
        [](const double* t, int L) {
            qvrsFIRState_64f* s = nullptr;
            Morven_qvrsFIRInitAlloc_64f(&s, t, L, nullptr);
            return s;
        },
        Morven_qvrsFIR_64f, Morven_qvrsFIRFree_64f);
}
void runsMixed32(const Sink& sink)
{
    runs<double, float>(
        sink,
        [](const double* t, int L) {
            qvrsFIRState64f_32f* s = nullptr;
            Morven_qvrsFIRInitAlloc64f_32f(&s, t, L, nullptr);
            return s;
        },
        Morven_qvrsFIR64f_32f, Morven_qvrsFIRFree64f_32f);
}
void runsMixed16(const Sink& sink)
{
    runs<double, int16_t>(
        sink,
        [](const double* t, int L) {
            qvrsFIRState64f_16s* s = nullptr;
            Morven_qvrsFIRInitAlloc64f_16s(&s, t, L, nullptr);
            return s;
        },
        [](const int16_t* x, int16_t* y, int n, qvrsFIRState64f_16s* s) { Morven_qvrsFIR64f_16s_Sfs(x, y, n, s, 0); },
        Morven_qvrsFIRFree64f_16s);
}

// Rate changes from a fresh delay line each time. run(src, dst, iterations, taps, L, up, down, past).
template<class Tap, class Data, class Run> void rateChanges(const Sink& sink, Run run)
{
    for (const auto& [up, down] : {std::pair{1, 2}, {2, 1}, {3, 2}, {147, 160}})
        for (const int n : {500, 40000})
            sink.add(std::to_string(up) + "/" + std::to_string(down) + ", " + std::to_string(n), [=](Case& c) {
                const int iterations = std::max(1, n / down), outputs = iterations * up, L = 16 * std::max(up, down);
                const int K = (L + up - 1) / up;
                c.elements = static_cast<double>(outputs) * K;
                c.tolerance = std::is_integral_v<Data> ? 1 : 1e-6;
                const auto filling = std::is_integral_v<Data> ? bench::Data::samples : bench::Data::mixed;
                const Data* src = c.array<Data>(int64_t{iterations} * down, filling);
                Data* dst = c.array<Data>(outputs, filling, true);
                auto taps = std::make_shared<std::vector<Tap>>(someTaps<Tap>(L));
                auto past = std::make_shared<std::vector<Data>>(K);
                c.ours([=] {
                    std::fill(past->begin(), past->end(), Data(0));
                    run(src, dst, iterations, taps->data(), L, up, down, past->data());
                });
                if (!ownSlot() || qvrCpuIndex != 6)
                    return;
                auto phases = std::make_shared<std::vector<Tap>>(K * up);
                c.peer("polyphase loop", [=] {
                    for (int q = 0; q < up; q++)
                        for (int m = 0; m < K; m++)
                            (*phases)[static_cast<size_t>(q * K + m)] =
                                q + m * up < L ? (*taps)[static_cast<size_t>(q + m * up)] : Tap(0);
                    if constexpr (std::is_integral_v<Data>)
                        polyphase(src, dst, outputs, phases->data(), K, up, down, 1.0f);
                    else
                        polyphase(src, dst, outputs, phases->data(), K, up, down);
                });
            });
}
void rate32(const Sink& sink)
{
    rateChanges<double, float>(sink,
                               [](const float* x, float* y, int n, const double* t, int L, int up, int down, float* d) {
                                   Morven_qvrsFIRMR64f_Direct_32f(x, y, n, t, L, up, 0, down, 0, d);
                               });
}
void rate16(const Sink& sink)
{
    rateChanges<float, int16_t>(
        sink, [](const int16_t* x, int16_t* y, int n, const float* t, int L, int up, int down, int16_t* d) {
            Morven_qvrsFIRMR32f_Direct_16s_Sfs(x, y, n, t, L, up, 0, down, 0, d, 0);
        });
}

// A call on a state, or on nothing else.
template<class Call> void alone(const Sink& sink, Call call)
{
    for (const int L : {16, 63, 64, 1024})
        sink.add(std::to_string(L) + " taps", [=](Case& c) {
            c.elements = 1;
            call(c, L);
        });
}
template<class Tap, class State, auto Init, auto Free> void creation(const Sink& sink)
{
    alone(sink, [](Case& c, int L) {
        auto taps = std::make_shared<std::vector<Tap>>(someTaps<Tap>(L));
        c.ours([=] {
            State* s = nullptr;
            Init(&s, taps->data(), L, nullptr);
            Free(s);
        });
    });
}
template<class Tap, class Data, class State, auto Init, auto Free, auto Access> void access(const Sink& sink)
{
    alone(sink, [](Case& c, int L) {
        const auto taps = someTaps<Tap>(L);
        State* s = nullptr;
        Init(&s, taps.data(), L, nullptr);
        c.atEnd([=] { Free(s); });
        Data* line = c.array<Data>(L, bench::Data::mixed);
        c.ours([=] { Access(s, line); });
    });
}
template<auto Design> void design(const Sink& sink)
{
    alone(sink, [](Case& c, int L) {
        double* taps = c.array<double>(L, bench::Data::mixed);
        c.ours([=] {
            if constexpr (std::is_invocable_v<decltype(Design), double*, int, int, int, double>)
                Design(taps, L, qvrFirBlackman, 1, 0.2);
            else
                Design(taps, L, qvrFirBlackman, 1, 0.1, 0.3);
        });
    });
}
void nothing(const Sink&) {}

#define QVR_FIR_FORM(tag, Tap, Data, State, run, runner)                                                               \
    addRow({#run, "", kFamily, "fir", runner}),                                                                        \
        addRow({"qvrsFIRInitAlloc" #tag, "with qvrsFIRFree" #tag, kFamily, "fir",                                      \
                creation<Tap, State, Morven_qvrsFIRInitAlloc##tag, Morven_qvrsFIRFree##tag>}),                         \
        addRow({"qvrsFIRFree" #tag, "with qvrsFIRInitAlloc" #tag, kFamily, "fir", nothing})
#define QVR_FIR_ACCESS(name, tag, Tap, Data, State)                                                                    \
    addRow({#name, "", kFamily, "fir",                                                                                 \
            access<Tap, Data, State, Morven_qvrsFIRInitAlloc##tag, Morven_qvrsFIRFree##tag, Morven_##name>})
const bool registered[] = {
    QVR_FIR_FORM(_32f, float, float, qvrsFIRState_32f, qvrsFIR_32f, runs32),
    QVR_FIR_FORM(_64f, double, double, qvrsFIRState_64f, qvrsFIR_64f, runs64),
    QVR_FIR_FORM(64f_32f, double, float, qvrsFIRState64f_32f, qvrsFIR64f_32f, runsMixed32),
    QVR_FIR_FORM(64f_16s, double, int16_t, qvrsFIRState64f_16s, qvrsFIR64f_16s_Sfs, runsMixed16),
    QVR_FIR_ACCESS(qvrsFIRGetTaps_32f, _32f, float, float, qvrsFIRState_32f),
    QVR_FIR_ACCESS(qvrsFIRGetDlyLine_32f, _32f, float, float, qvrsFIRState_32f),
    QVR_FIR_ACCESS(qvrsFIRSetDlyLine_32f, _32f, float, float, qvrsFIRState_32f),
    QVR_FIR_ACCESS(qvrsFIRGetDlyLine_64f, _64f, double, double, qvrsFIRState_64f),
    QVR_FIR_ACCESS(qvrsFIRSetDlyLine_64f, _64f, double, double, qvrsFIRState_64f),
    QVR_FIR_ACCESS(qvrsFIRGetDlyLine64f_32f, 64f_32f, double, float, qvrsFIRState64f_32f),
    QVR_FIR_ACCESS(qvrsFIRSetDlyLine64f_32f, 64f_32f, double, float, qvrsFIRState64f_32f),
    addRow({"qvrsFIRMR64f_Direct_32f", "", kFamily, "firmr", rate32}),
    addRow({"qvrsFIRMR64f_Direct_32f_I", "with a copy of qvrsFIRMR64f_Direct_32f", kFamily, "firmr", nothing}),
    addRow({"qvrsFIRMR32f_Direct_16s_Sfs", "", kFamily, "firmr", rate16}),
    addRow({"qvrsFIRGenLowpass_64f", "", kFamily, "firgen", design<Morven_qvrsFIRGenLowpass_64f>}),
    addRow({"qvrsFIRGenHighpass_64f", "", kFamily, "firgen", design<Morven_qvrsFIRGenHighpass_64f>}),
    addRow({"qvrsFIRGenBandpass_64f", "", kFamily, "firgen", design<Morven_qvrsFIRGenBandpass_64f>}),
    addRow({"qvrsFIRGenBandstop_64f", "", kFamily, "firgen", design<Morven_qvrsFIRGenBandstop_64f>}),
};

} // namespace
