// Rows of the elementary functions, magnitudes and phase.
#include <string.h>

#include "bench/bench.h"
#include "bench/elementary/vectormath.h"
#include "bench/peers.h"

#ifdef QVR_HAVE_VOLK
#include <volk/volk.h>
#endif

using namespace bench;

namespace {

constexpr const char* kFamily = "elementary";
constexpr int kLengths[] = {15, 256, 4096, 65536, 8 << 20};

// What a function's accuracy class admits beside a peer: 2^-11, with room at zeros of the function.
constexpr double kTolerance = 1e-3;

#ifdef QVR_HAVE_VOLK
struct Volk {
    const char* function;
    void (*unary)(float*, const float*, unsigned);
};
// VOLK chooses its kernel at the first call through its pointer, so each is called by a function here. Its power is
// left out: three parts in a thousand off where 11 bits are asked, as is its fast exponential.
constexpr Volk kVolk[] = {
    {"Sin", [](float* d, const float* a, unsigned n) { volk_32f_sin_32f(d, a, n); }},
    {"Cos", [](float* d, const float* a, unsigned n) { volk_32f_cos_32f(d, a, n); }},
    {"Tan", [](float* d, const float* a, unsigned n) { volk_32f_tan_32f(d, a, n); }},
    {"Asin", [](float* d, const float* a, unsigned n) { volk_32f_asin_32f(d, a, n); }},
    {"Acos", [](float* d, const float* a, unsigned n) { volk_32f_acos_32f(d, a, n); }},
    {"Atan", [](float* d, const float* a, unsigned n) { volk_32f_atan_32f(d, a, n); }},
    {"Tanh", [](float* d, const float* a, unsigned n) { volk_32f_tanh_32f(d, a, n); }},
    {"Exp", [](float* d, const float* a, unsigned n) { volk_32f_exp_32f(d, a, n); }},
};
#endif

template<class Build> void overLengths(const Sink& sink, Build build)
{
    for (const int n : kLengths)
        if (n < 1 << 20 || sink.memory)
            sink.add(std::to_string(n), [&](Case& c) {
                c.elements = n;
                c.tolerance = kTolerance;
                build(c, n);
            });
}

// The plain loop of the export's name, called as ours is.
template<class F, class Call> void oursAndPlain(Case& c, const char* name, F* exported, Call call)
{
    F* volatile hidden = exported;
    c.ours([call, f = static_cast<F*>(hidden)] { call(f); });
    if (auto* const plain = reinterpret_cast<F*>(findPlain(name)))
        c.peer("libm loop", [=] { call(plain); });
}

// The vector libraries' loops for `function`; those of a lower accuracy class are left out where `exact` says so.
void vectorLibraries(Case& c, const char* function, bool exact, const float* a, const float* b, float* d, int n)
{
    if (!ownSlot() || qvrCpuIndex != 6)
        return;
    for (const VectorMath* v = kVectorMath; v->function != nullptr; v++) {
        if (strcmp(v->function, function) != 0 || (exact && strstr(v->library, "u10") == nullptr))
            continue;
        if (v->unary != nullptr)
            c.peer(v->library, [=, f = v->unary] { f(a, d, n); });
        else
            c.peer(v->library, [=, f = v->binary] { f(a, b, d, n); });
    }
#ifdef QVR_HAVE_VOLK
    for (const Volk& v : kVolk)
        if (!exact && strcmp(v.function, function) == 0)
            c.peer("VOLK", [=, f = v.unary] { f(d, a, static_cast<unsigned>(n)); });
#endif
}

using Unary = qvrStatus(const float*, float*, int);
template<Unary Export>
void unary(const Sink& sink, const char* name, const char* function, Data data, bool exact = false)
{
    overLengths(sink, [&](Case& c, int n) {
        c.work = {.read = 4, .written = 4};
        const float* a = c.array<float>(n, data);
        float* d = c.array<float>(n, Data::positive, true);
        oursAndPlain(c, name, Export, [=](Unary* f) { f(a, d, n); });
        vectorLibraries(c, function, exact, a, nullptr, d, n);
    });
}
using Binary = qvrStatus(const float*, const float*, float*, int);
template<Binary Export>
void binary(const Sink& sink, const char* name, const char* function, Data first, Data second, bool exact = false)
{
    overLengths(sink, [&](Case& c, int n) {
        c.work = {.read = 8, .written = 4};
        const float* a = c.array<float>(n, first);
        const float* b = c.array<float>(n, second);
        float* d = c.array<float>(n, Data::positive, true);
        oursAndPlain(c, name, Export, [=](Binary* f) { f(a, b, d, n); });
        vectorLibraries(c, function, exact, a, b, d, n);
    });
}
using WithConstant = qvrStatus(const float*, float, float*, int);
template<WithConstant Export> void constantPower(const Sink& sink, const char* name, bool exact)
{
    overLengths(sink, [&](Case& c, int n) {
        c.work = {.read = 4, .written = 4};
        const float* a = c.array<float>(n, Data::positive);
        float* y = static_cast<float*>(c.allocate(n * 4, 0)); // the constant, for peers of two arrays
        for (int i = 0; i < n; i++)
            y[i] = 2.4f;
        float* d = c.array<float>(n, Data::positive, true);
        oursAndPlain(c, name, Export, [=](WithConstant* f) { f(a, 2.4f, d, n); });
        vectorLibraries(c, "Pow", exact, a, y, d, n);
    });
}

// From `re, im` pairs of E.
template<class D, class C, class E, class F, class Call, class Peers>
void pairs(const Sink& sink, const char* name, F* exported, Call call, Peers peers)
{
    overLengths(sink, [&](Case& c, int n) {
        c.work = {.read = sizeof(C), .written = sizeof(D)};
        const C* a = reinterpret_cast<const C*>(c.array<E>(2 * int64_t{n}, Data::mixed));
        D* d = c.array<D>(n, Data::positive, true);
        oursAndPlain(c, name, exported, [=](F* f) { call(f, a, d, n); });
        if (ownSlot())
            peers(c, a, d, n);
    });
}

#define UNARY(name, ...)                                                                                               \
    addRow({#name, "", kFamily, "elementary", [](const Sink& sink) { unary<Morven_##name>(sink, #name, __VA_ARGS__); }})
#define UNARY_VARIANT(name, variant, ...)                                                                              \
    addRow({#name, variant, kFamily, "elementary",                                                                     \
            [](const Sink& sink) { unary<Morven_##name>(sink, #name, __VA_ARGS__); }})
#define BINARY(name, ...)                                                                                              \
    addRow(                                                                                                            \
        {#name, "", kFamily, "elementary", [](const Sink& sink) { binary<Morven_##name>(sink, #name, __VA_ARGS__); }})
#define FAST(name, ...)                                                                                                \
    addRow({#name, "", kFamily, "fast", [](const Sink& sink) { unary<Morven_##name>(sink, #name, __VA_ARGS__); }})
const auto kNoPeers = [](Case&, auto...) {};
const auto kPlainCall = [](auto* f, const auto* a, auto* d, int n) { f(a, d, n); };

const bool registered[] = {
    UNARY(qvrsSin_32f_A11, "Sin", Data::angles),
    UNARY(qvrsCos_32f_A11, "Cos", Data::angles),
    UNARY(qvrsTan_32f_A11, "Tan", Data::fraction),
    // Beyond what the block path takes.
    UNARY_VARIANT(qvrsSin_32f_A11, "to 30000", "Sin", Data::samples),
    UNARY_VARIANT(qvrsCos_32f_A11, "to 30000", "Cos", Data::samples),
    UNARY_VARIANT(qvrsTan_32f_A11, "to 30000", "Tan", Data::samples),
    UNARY(qvrsAsin_32f_A11, "Asin", Data::fraction),
    UNARY(qvrsAcos_32f_A11, "Acos", Data::fraction),
    UNARY(qvrsAtan_32f_A11, "Atan", Data::angles),
    BINARY(qvrsAtan2_32f_A11, "Atan2", Data::mixed, Data::angles),
    UNARY(qvrsSinh_32f_A11, "Sinh", Data::mixed),
    UNARY(qvrsCosh_32f_A11, "Cosh", Data::mixed),
    UNARY(qvrsTanh_32f_A11, "Tanh", Data::mixed),
    UNARY(qvrsExp_32f_A11, "Exp", Data::angles),
    UNARY(qvrsLn_32f_A11, "Ln", Data::positive),
    UNARY(qvrsLog10_32f_A11, "Log10", Data::positive),
    UNARY(qvrsLog10_32f_A21, "Log10", Data::positive),
    BINARY(qvrsPow_32f_A11, "Pow", Data::positive, Data::angles),
    BINARY(qvrsPow_32f_A24, "Pow", Data::positive, Data::angles, true),
    addRow({"qvrsPowx_32f_A11", "", kFamily, "elementary",
            [](const Sink& s) { constantPower<Morven_qvrsPowx_32f_A11>(s, "qvrsPowx_32f_A11", false); }}),
    addRow({"qvrsPowx_32f_A24", "", kFamily, "elementary",
            [](const Sink& s) { constantPower<Morven_qvrsPowx_32f_A24>(s, "qvrsPowx_32f_A24", true); }}),
    FAST(qvrsExp_32f, "Exp", Data::angles, true),
    FAST(qvrsLn_32f, "Ln", Data::positive, true),
    FAST(qvrsArctan_32f, "Atan", Data::angles),
    addRow({"qvrsPhase_32fc", "", kFamily, "fast",
            [](const Sink& s) {
                pairs<float, qvr32fc, float>(s, "qvrsPhase_32fc", Morven_qvrsPhase_32fc, kPlainCall, kNoPeers);
            }}),
    addRow({"qvrsMagnitude_32fc", "", kFamily, "fast",
            [](const Sink& s) {
                pairs<float, qvr32fc, float>(s, "qvrsMagnitude_32fc", Morven_qvrsMagnitude_32fc, kPlainCall,
                                             [](Case& c, const qvr32fc* a, float* d, int n) {
                                                 (void)c, (void)a, (void)d, (void)n;
#ifdef QVR_HAVE_VOLK
                                                 c.peer("VOLK", [=] {
                                                     volk_32fc_magnitude_32f(d, reinterpret_cast<const lv_32fc_t*>(a),
                                                                             static_cast<unsigned>(n));
                                                 });
#endif
                                             });
            }}),
    addRow({"qvrsMagnitude_64fc", "", kFamily, "fast",
            [](const Sink& s) {
                pairs<double, qvr64fc, double>(s, "qvrsMagnitude_64fc", Morven_qvrsMagnitude_64fc, kPlainCall,
                                               kNoPeers);
            }}),
    addRow({"qvrsMagnitude_16sc_Sfs", "", kFamily, "fast",
            [](const Sink& s) {
                pairs<int16_t, qvr16sc, int16_t>(
                    s, "qvrsMagnitude_16sc_Sfs", Morven_qvrsMagnitude_16sc_Sfs,
                    [](auto* f, const qvr16sc* a, int16_t* d, int n) { f(a, d, n, 1); }, kNoPeers);
            }}),
};

} // namespace
