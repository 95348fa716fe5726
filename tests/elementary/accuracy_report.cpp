// Writes docs/accuracy.md: the worst error of every elementary function, class and slot, and of SLEEF and glibc's
// vector math on the same arguments.
//
//   accuracy_report [stride [function]]
//
// takes every stride-th float of the domain (1: all of them) against the C library in double; the worst argument found
// is then measured again against MPFR. Functions of two arguments take random pairs against extended precision.
#include <mpfr.h>

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "elementary/kernels.h"
#include "support/values.h"

#ifdef QVR_HAVE_PEERS
#include <immintrin.h>
#include <sleef.h>
#define MVEC1(name) extern "C" __m256 _ZGVdN8v_##name(__m256);
#define MVEC2(name) extern "C" __m256 _ZGVdN8vv_##name(__m256, __m256);
MVEC1(sinf)
MVEC1(cosf)
MVEC1(tanf)
MVEC1(asinf)
MVEC1(acosf)
MVEC1(atanf)
MVEC1(sinhf)
MVEC1(coshf)
MVEC1(tanhf)
MVEC1(expf)
MVEC1(logf)
MVEC1(log10f)
MVEC2(powf)
MVEC2(atan2f)
#endif

namespace {

using Run = std::function<void(const float*, float*, int)>;
using Run2 = std::function<void(const float*, const float*, float*, int)>;

struct Worst {
    double relative = 0, ulp = 0, absolute = 0;
    float at = 0, at2 = 0; // where relative is worst
    float ulpAt = 0, ulpAt2 = 0;
    void take(const Worst& o)
    {
        if (o.relative > relative)
            relative = o.relative, at = o.at, at2 = o.at2;
        if (o.ulp > ulp)
            ulp = o.ulp, ulpAt = o.ulpAt, ulpAt2 = o.ulpAt2;
        absolute = std::max(absolute, o.absolute);
    }
};

// Size of the last place of the float nearest to a nonzero double, denormals included.
double unitOf(double x)
{
    const int exponent = std::max(static_cast<int>(bitsOf(x) >> 52 & 0x7FF) - 1023, -126);
    const uint64_t word = static_cast<uint64_t>(exponent - 23 + 1023) << 52;
    double unit;
    memcpy(&unit, &word, sizeof unit);
    return unit;
}

void measure(Worst& w, float got, double want, float x, float y = 0)
{
    if (std::isnan(want) || std::isinf(static_cast<float>(want)) || want == 0)
        return;
    const double error = std::fabs(got - want);
    const double ulp = error / unitOf(want), relative = std::fabs(want) < 0x1p-126 ? 0 : error / std::fabs(want);
    if (ulp > w.ulp)
        w.ulp = ulp, w.ulpAt = x, w.ulpAt2 = y;
    if (relative > w.relative)
        w.relative = relative, w.at = x, w.at2 = y;
    w.absolute = std::max(w.absolute, error);
}

struct Contender {
    std::string name;
    Run run;
    Worst worst{};
};
struct Contender2 {
    std::string name;
    Run2 run;
    Worst worst{};
};

#ifdef QVR_HAVE_PEERS
#define VECTOR8(f)                                                                                                     \
    [](const float* x, float* y, int n) {                                                                              \
        for (int i = 0; i < n; i += 8)                                                                                 \
            _mm256_storeu_ps(y + i, f(_mm256_loadu_ps(x + i)));                                                        \
    }
#define PAIRS8(f)                                                                                                      \
    [](const float* a, const float* b, float* y, int n) {                                                              \
        for (int i = 0; i < n; i += 8)                                                                                 \
            _mm256_storeu_ps(y + i, f(_mm256_loadu_ps(a + i), _mm256_loadu_ps(b + i)));                                \
    }
#define PEERS(NAME, mvec, sleef)                                                                                       \
    if (name == NAME) {                                                                                                \
        v.push_back({"glibc vector", VECTOR8(_ZGVdN8v_##mvec)});                                                       \
        v.push_back({"SLEEF", VECTOR8(Sleef_##sleef)});                                                                \
    }
#endif

void addPeers([[maybe_unused]] const std::string& name, [[maybe_unused]] std::vector<Contender>& v)
{
#ifdef QVR_HAVE_PEERS
    PEERS("Sin", sinf, sinf8_u35avx2)
    PEERS("Cos", cosf, cosf8_u35avx2)
    PEERS("Tan", tanf, tanf8_u35avx2)
    PEERS("Asin", asinf, asinf8_u35avx2)
    PEERS("Acos", acosf, acosf8_u35avx2)
    PEERS("Atan", atanf, atanf8_u35avx2)
    PEERS("Sinh", sinhf, sinhf8_u35avx2)
    PEERS("Cosh", coshf, coshf8_u35avx2)
    PEERS("Tanh", tanhf, tanhf8_u35avx2)
    PEERS("Exp", expf, expf8_u10avx2)
    PEERS("Ln", logf, logf8_u35avx2)
    PEERS("Log10", log10f, log10f8_u10avx2)
#endif
}

using Mpfr1 = int (*)(mpfr_ptr, mpfr_srcptr, mpfr_rnd_t);
struct Reference {
    const char* name;
    double (*libm)(double);
    Mpfr1 mpfr;
};
const Reference kReferences[] = {
    {"Sin", sin, mpfr_sin},    {"Cos", cos, mpfr_cos},    {"Tan", tan, mpfr_tan},    {"Asin", asin, mpfr_asin},
    {"Acos", acos, mpfr_acos}, {"Atan", atan, mpfr_atan}, {"Sinh", sinh, mpfr_sinh}, {"Cosh", cosh, mpfr_cosh},
    {"Tanh", tanh, mpfr_tanh}, {"Exp", exp, mpfr_exp},    {"Ln", log, mpfr_log},     {"Log10", log10, mpfr_log10},
};
const Reference& referenceOf(const std::string& name)
{
    for (const Reference& r : kReferences)
        if (name == r.name)
            return r;
    abort();
}

double exact(Mpfr1 f, float x)
{
    mpfr_t a;
    mpfr_init2(a, 300);
    mpfr_set_flt(a, x, MPFR_RNDN);
    f(a, a, MPFR_RNDN);
    const double y = mpfr_get_d(a, MPFR_RNDN);
    mpfr_clear(a);
    return y;
}

// Slots with the same arithmetic give the same bits, so they share a row: what a name stands for is decided by results.
void print(const char* function, const std::string& kind, const Worst& w, bool two)
{
    char at[64], ulpAt[64];
    snprintf(at, sizeof at, two ? "%.9g, %.9g" : "%.9g", w.at, w.at2);
    snprintf(ulpAt, sizeof ulpAt, two ? "%.9g, %.9g" : "%.9g", w.ulpAt, w.ulpAt2);
    printf("| %s | %s | %.3f | %s | %.1f | %s | %.1f |\n", function, kind.c_str(), w.ulp, ulpAt, -log2(w.relative), at,
           -log2(w.absolute));
}

void oneArgument(const Function1& f, uint64_t stride)
{
    const Reference& reference = referenceOf(f.name);
    std::vector<Contender> contenders;
    for (int slot = 0; slot < slots::kCount; slot++)
        for (int c : {a11, la, ha})
            if (slots::canRun(slot) && (slot > 0 || c == ha))
                contenders.push_back(
                    {std::string(slots::kNames[slot]) + " " + (slot ? kClassNames[c] : "all"),
                     [kernel = f.kernels[slot][c]](const float* x, float* y, int n) { kernel(x, y, n); }});
    addPeers(f.name, contenders);

    constexpr int kChunk = 4096;
    std::vector<float> x(kChunk), y(kChunk);
    std::vector<double> want(kChunk);
    for (uint64_t start = 0; start < (uint64_t{1} << 32); start += stride * kChunk) {
        int n = 0;
        for (uint64_t b = start; b < (uint64_t{1} << 32) && b < start + stride * kChunk; b += stride) {
            const float v = floatOf(static_cast<uint32_t>(b));
            if (v >= f.low && v <= f.high)
                x[n++] = v;
        }
        if (n == 0)
            continue;
        while (n % 8) // peers take whole vectors
            x[n] = x[n - 1], n++;
        for (int i = 0; i < n; i++)
            want[i] = reference.libm(x[i]);
        for (Contender& c : contenders) {
            c.run(x.data(), y.data(), n);
            for (int i = 0; i < n; i++)
                measure(c.worst, y[i], want[i], x[i]);
        }
    }
    for (Contender& c : contenders) {
        // The worst arguments again, alone and against MPFR.
        Worst confirmed;
        for (float at : {c.worst.at, c.worst.ulpAt}) {
            std::vector<float> eight(8, at), out(8);
            c.run(eight.data(), out.data(), 8);
            measure(confirmed, out[0], exact(reference.mpfr, at), at);
        }
        confirmed.absolute = c.worst.absolute;
        print(f.name, c.name, confirmed, false);
    }
    fflush(stdout);
}

void twoArguments(const char* function, Kernel2* const* const (&kernels)[slots::kCount],
                  long double (*model)(long double, long double), bool power, int pairs)
{
    std::vector<Contender2> contenders;
    for (int slot = 0; slot < slots::kCount; slot++)
        for (int c : {a11, la, ha})
            if (slots::canRun(slot) && (slot > 0 || c == ha))
                contenders.push_back({std::string(slots::kNames[slot]) + " " + (slot ? kClassNames[c] : "all"),
                                      [kernel = kernels[slot][c]](const float* a, const float* b, float* y, int n) {
                                          kernel(a, b, y, n);
                                      }});
#ifdef QVR_HAVE_PEERS
    if (power) {
        contenders.push_back({"glibc vector", PAIRS8(_ZGVdN8vv_powf)});
        contenders.push_back({"SLEEF", PAIRS8(Sleef_powf8_u10avx2)});
    } else {
        contenders.push_back({"glibc vector", PAIRS8(_ZGVdN8vv_atan2f)});
        contenders.push_back({"SLEEF", PAIRS8(Sleef_atan2f8_u35avx2)});
    }
#endif
    constexpr int kChunk = 4096;
    std::vector<float> a(kChunk), b(kChunk), y(kChunk);
    std::mt19937_64 engine(1);
    std::uniform_real_distribution<double> d(0, 1);
    for (int done = 0; done < pairs; done += kChunk) {
        for (int i = 0; i < kChunk; i++) {
            if (power) {
                a[i] = static_cast<float>(i % 3 ? exp2(252 * d(engine) - 126)
                                                : 1 + (d(engine) - 0.5) * exp2(-20 * d(engine)));
                const double most = std::min(126 / std::fabs(log2(a[i]) + 1e-12), 1e30);
                b[i] = static_cast<float>((2 * d(engine) - 1) * most);
                if (b[i] == 0)
                    b[i] = 1;
            } else {
                a[i] = static_cast<float>((2 * d(engine) - 1) * exp2(40 * d(engine) - 20));
                b[i] = static_cast<float>((2 * d(engine) - 1) * exp2(40 * d(engine) - 20));
            }
        }
        std::vector<double> want(kChunk);
        for (int i = 0; i < kChunk; i++) {
            want[i] = static_cast<double>(model(a[i], b[i]));
            // Results below the normals are no part of the float classes' promise.
            if (power && want[i] < 0x1p-125)
                want[i] = NAN;
        }
        for (Contender2& c : contenders) {
            c.run(a.data(), b.data(), y.data(), kChunk);
            for (int i = 0; i < kChunk; i++)
                measure(c.worst, y[i], want[i], a[i], b[i]);
        }
    }
    for (Contender2& c : contenders)
        print(function, c.name, c.worst, true);
    fflush(stdout);
}

} // namespace

int main(int argc, char** argv)
{
    const uint64_t stride = argc > 1 ? strtoull(argv[1], nullptr, 10) : 257;
    const std::string only = argc > 2 ? argv[2] : "";
    if (only.empty()) {
        printf(
            "# Accuracy of the elementary functions\n\n"
            "The worst error on every %s float of the domain (random pairs for two arguments): in units in the last\n"
            "place (ulp), as correct bits (relative error), and as bits behind the binary point (absolute error), "
            "with\n"
            "the worst arguments. Slot `mx` has one kernel for all classes. Peers ran on the same arguments.\n\n"
            "Sine and cosine of class A11 promise an absolute error next to their zeros, so the last column is "
            "theirs.\n"
            "Made by `accuracy_report %llu`.\n\n",
            stride == 1 ? "single" : (std::to_string(stride) + "th").c_str(), static_cast<unsigned long long>(stride));
        printf("| function | kernel | worst ulp | at | correct bits | at | absolute bits "
               "|\n|---|---|---|---|---|---|---|\n");
    }
    for (const Function1& f : kFunctions1)
        if (only.empty() || only == f.name)
            oneArgument(f, stride);
    const int pairs = stride > 1000 ? 100000 : 2000000;
    if (only.empty() || only == "Pow")
        twoArguments("Pow", powKernels, powl, true, pairs);
    if (only.empty() || only == "Atan2")
        twoArguments("Atan2", atan2Kernels, atan2l, false, pairs);
    return 0;
}
