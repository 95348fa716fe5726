// Writes docs/accuracy.md: the worst error of every elementary function, class and slot, and of SLEEF and glibc's
// vector math on the same arguments.
//
//   accuracy_report [stride [function]]
//
// takes every stride-th float of the domain (1: all of them), and 128 times as many, up to all of them, where most of
// the errors are made, against the C library in double; the worst arguments found are then measured again against MPFR.
// Functions of two arguments take random pairs against extended precision.
#include <gnu/libc-version.h>
#include <mpfr.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <random>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "elementary/kernels.h"
#include "elementary/slot_tables.h"
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

struct Worst {
    double relative = 0, ulp = 0, absolute = 0;
    float at = 0, at2 = 0; // where relative is worst
    float ulpAt = 0, ulpAt2 = 0;
    float absoluteAt = 0, absoluteAt2 = 0;
    void take(const Worst& o)
    {
        if (o.relative > relative)
            relative = o.relative, at = o.at, at2 = o.at2;
        if (o.ulp > ulp)
            ulp = o.ulp, ulpAt = o.ulpAt, ulpAt2 = o.ulpAt2;
        if (o.absolute > absolute)
            absolute = o.absolute, absoluteAt = o.absoluteAt, absoluteAt2 = o.absoluteAt2;
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

// Left out are true values that are no number or beyond the floats. A NaN for a number is an infinite error.
void measure(Worst& w, float got, double want, float x, float y = 0)
{
    if (std::isnan(want) || std::isinf(static_cast<float>(want)))
        return;
    const double error = std::isnan(got) ? INFINITY : std::fabs(got - want);
    if (want == 0 && error == 0)
        return;
    const double unit = unitOf(want), size = std::fabs(want);
    if (error > w.absolute)
        w.absolute = error, w.absoluteAt = x, w.absoluteAt2 = y;
    if (error > w.ulp * unit)
        w.ulp = error / unit, w.ulpAt = x, w.ulpAt2 = y;
    if (error > w.relative * size && (size >= 0x1p-126 || std::isinf(error)))
        w.relative = error / size, w.at = x, w.at2 = y;
}

using Run = std::function<void(const float* a, const float* b, float* y, int n)>;

// One kernel. As long as its results are those of an earlier one, bit for bit, it follows that one and has its errors.
struct Contender {
    int slot; // -1 for a peer
    std::string kind;
    Run run;
    int leader;              // an earlier contender, or itself
    Worst worst{}, before{}; // now, and before the chunk at hand
    std::vector<float> results{};
};
using Contenders = std::vector<Contender>;

void addContender(Contenders& all, int slot, const std::string& kind, Run run)
{
    const int self = static_cast<int>(all.size());
    all.push_back({slot, kind, std::move(run), self});
    for (int i = 0; i < self; i++)
        if (slot >= 0 && all[i].slot >= 0 && all[i].leader == i && all[i].kind == kind) {
            all[self].leader = i;
            break;
        }
}

void measureOne(Contender& c, Worst& worst, const float* a, const float* b, const double* want, int n)
{
    for (int i = 0; i < n; i++)
        measure(worst, c.results[i], want[i], a[i], b ? b[i] : 0);
}

void runOne(Contender& c, const float* a, const float* b, int n)
{
    c.results.resize(n);
    c.run(a, b, c.results.data(), n);
}

void measureAll(Contenders& all, const float* a, const float* b, const double* want, int n)
{
    for (size_t k = 0; k < all.size(); k++) {
        Contender& c = all[k];
        c.before = c.worst;
        runOne(c, a, b, n);
        if (c.leader != static_cast<int>(k)) {
            const Contender& leader = all[c.leader];
            if (memcmp(c.results.data(), leader.results.data(), sizeof(float) * n) == 0)
                continue;
            c.worst = leader.before;
            c.leader = static_cast<int>(k);
        }
        measureOne(c, c.worst, a, b, want, n);
    }
}

// Of our kernels, only the first runs: its errors are those of all.
void measureFirst(Contenders& all, const float* x, const double* want, int n)
{
    Worst common;
    for (size_t k = 0; k < all.size(); k++) {
        const bool ours = all[k].slot >= 0;
        if (!ours || k == 0) {
            runOne(all[k], x, nullptr, n);
            measureOne(all[k], ours ? common : all[k].worst, x, nullptr, want, n);
        }
        if (ours)
            all[k].worst.take(common);
    }
}

void addKernels(Contenders& all, const std::function<Run(int slot, int c)>& kernel)
{
    for (int c : {a11, a21, a24})
        for (int slot = 0; slot < slots::kCount; slot++)
            if (slots::canRun(slot) && (slot > slots::mx || c == a24))
                addContender(all, slot, slot ? kClassNames[c] : "all", kernel(slot, c));
}

#ifdef QVR_HAVE_PEERS
#define VECTOR8(f)                                                                                                     \
    [](const float* x, const float*, float* y, int n) {                                                                \
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
        addContender(all, -1, "glibc vector", VECTOR8(_ZGVdN8v_##mvec));                                               \
        addContender(all, -1, "SLEEF", VECTOR8(Sleef_##sleef));                                                        \
    }
#endif

void addPeers([[maybe_unused]] const std::string& name, [[maybe_unused]] Contenders& all)
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

// The functions without a class stand beside the tagged ones of the same name.
struct Untagged {
    const char* beside;
    Kernel1* const* table;
};
const Untagged kUntagged[] = {
    {"Exp", qvrTable_qvrsExp_32f}, {"Ln", qvrTable_qvrsLn_32f}, {"Atan", qvrTable_qvrsArctan_32f}};

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

// The rows of what exports offer, and of the classes that exist beside them, as this thread's job makes them.
thread_local std::string offered, others;

bool isOffered(const std::string& function, const std::string& kind)
{
    if (kind == "A21")
        return function == "Log10";
    if (kind == "A24")
        return function == "Pow" || function == "Powx";
    return true;
}

// A row for each leader; `confirm` measures its worst arguments once more.
void print(const char* function, const Contenders& all, bool two, const std::function<Worst(const Contender&)>& confirm)
{
    for (int k = 0; k < static_cast<int>(all.size()); k++) {
        if (all[k].leader != k)
            continue;
        std::string kernel;
        for (int i = k; i < static_cast<int>(all.size()); i++)
            if (all[i].leader == k && all[i].slot >= 0)
                kernel += std::string(slots::kNames[all[i].slot]) + " ";
        const Worst w = confirm(all[k]);
        const auto at = [&](float x, float y) {
            char text[64];
            snprintf(text, sizeof text, two ? "%.9g, %.9g" : "%.9g", x, y);
            return std::string(text);
        };
        // Bits are rounded down, errors up.
        char row[512];
        snprintf(row, sizeof row, "| %s | %s%s | %.3f | %s | %.2f | %s | %.2f | %s |\n", function, kernel.c_str(),
                 all[k].kind.c_str(), std::ceil(w.ulp * 1000) / 1000, at(w.ulpAt, w.ulpAt2).c_str(),
                 std::floor(-log2(w.relative) * 100) / 100, at(w.at, w.at2).c_str(),
                 std::floor(-log2(w.absolute) * 100) / 100, at(w.absoluteAt, w.absoluteAt2).c_str());
        (isOffered(function, all[k].kind) ? offered : others) += row;
        fprintf(stderr, "%s", row);
    }
}

constexpr int kChunk = 4096;

// Beyond this |x| the kernels of sine, cosine and tangent all call one routine, the same in every slot. There every
// kernel runs on one chunk in 16 and the first kernel on all.
constexpr float kOneRoutine = 10000.0f;
bool inOneRoutine(const std::string& name, const std::vector<float>& x)
{
    return (name == "Sin" || name == "Cos" || name == "Tan") &&
           std::all_of(x.begin(), x.end(), [](float v) { return std::fabs(v) > kOneRoutine; });
}

// Magnitudes from 2^-12 to 2^14 are stepped through more closely.
struct Segment {
    uint64_t from, to, step;
};
std::vector<Segment> segments(uint64_t stride)
{
    const uint64_t close = std::max<uint64_t>(1, stride / 128);
    const uint64_t low = bitsOf(0x1p-12f), high = bitsOf(0x1p14f), half = uint64_t{1} << 31;
    std::vector<Segment> all;
    for (uint64_t sign : {uint64_t{0}, half})
        for (const Segment& s : {Segment{0, low, stride}, {low, high, close}, {high, half, stride}})
            all.push_back({sign + s.from, sign + s.to, s.step});
    return all;
}

// The floats of the domain, a chunk at a time.
void eachChunk(const Function1& f, uint64_t stride, const std::function<void(std::vector<float>& x)>& body)
{
    for (const Segment& s : segments(stride))
        for (uint64_t start = s.from; start < s.to; start += s.step * kChunk) {
            std::vector<float> x;
            for (uint64_t b = start; b < std::min(s.to, start + s.step * kChunk); b += s.step) {
                const float v = floatOf(static_cast<uint32_t>(b));
                if (v >= f.low && v <= f.high)
                    x.push_back(v);
            }
            if (!x.empty())
                body(x);
        }
}

void oneArgument(const Function1& f, uint64_t stride)
{
    const Reference& reference = referenceOf(f.name);
    Contenders contenders;
    const auto alone = [](Kernel1* kernel) {
        return [kernel](const float* x, const float*, float* y, int n) { kernel(x, y, n); };
    };
    addKernels(contenders, [&](int slot, int c) { return alone(f.kernels[slot][c]); });
    for (const Untagged& u : kUntagged)
        if (strcmp(u.beside, f.name) == 0)
            for (int slot = 0; slot < slots::kCount; slot++)
                if (slots::canRun(slot))
                    addContender(contenders, slot, "untagged", alone(u.table[slot]));
    addPeers(f.name, contenders);

    std::vector<double> want(kChunk);
    int chunk = 0;
    eachChunk(f, stride, [&](std::vector<float>& x) {
        while (x.size() % 8) // peers take whole vectors
            x.push_back(x.back());
        const int n = static_cast<int>(x.size());
        for (int i = 0; i < n; i++)
            want[i] = reference.libm(x[i]);
        if (chunk++ % 16 && inOneRoutine(f.name, x))
            measureFirst(contenders, x.data(), want.data(), n);
        else
            measureAll(contenders, x.data(), nullptr, want.data(), n);
    });
    // The worst arguments again, alone and against MPFR.
    print(f.name, contenders, false, [&](const Contender& c) {
        Worst confirmed;
        for (float at : {c.worst.at, c.worst.ulpAt, c.worst.absoluteAt}) {
            std::vector<float> eight(8, at), out(8);
            c.run(eight.data(), nullptr, out.data(), 8);
            measure(confirmed, out[0], exact(reference.mpfr, at), at);
        }
        return confirmed;
    });
}

// Chunks of pairs from draw(a, b), against a model in extended precision.
void twoArguments(const char* function, Contenders& contenders, long double (*model)(long double, long double),
                  int pairs, double least, const std::function<void(float* a, float* b)>& draw)
{
    std::vector<float> a(kChunk), b(kChunk);
    std::vector<double> want(kChunk);
    for (int done = 0; done < pairs; done += kChunk) {
        draw(a.data(), b.data());
        for (int i = 0; i < kChunk; i++) {
            want[i] = static_cast<double>(model(a[i], b[i]));
            if (want[i] < least)
                want[i] = NAN;
        }
        measureAll(contenders, a.data(), b.data(), want.data(), kChunk);
    }
    print(function, contenders, true, [](const Contender& c) { return c.worst; });
}

// Powers by an exponent of each element's own, or by one for the chunk. Results below the normals are no part of the
// float classes' promise.
void powers(bool constant, int pairs)
{
    Contenders contenders;
    addKernels(contenders, [&](int slot, int c) -> Run {
        if (constant)
            return [kernel = powxKernels[slot][c]](const float* a, const float* b, float* y, int n) {
                kernel(a, b[0], y, n);
            };
        return [kernel = powKernels[slot][c]](const float* a, const float* b, float* y, int n) { kernel(a, b, y, n); };
    });
#ifdef QVR_HAVE_PEERS
    addContender(contenders, -1, "glibc vector", PAIRS8(_ZGVdN8vv_powf));
    addContender(contenders, -1, "SLEEF", PAIRS8(Sleef_powf8_u10avx2));
#endif
    std::mt19937_64 engine(1);
    std::uniform_real_distribution<double> d(0, 1);
    twoArguments(constant ? "Powx" : "Pow", contenders, powl, pairs, 0x1p-125, [&](float* a, float* b) {
        const float y = static_cast<float>((2 * d(engine) - 1) * exp2(20 * d(engine) - 10));
        for (int i = 0; i < kChunk; i++) {
            if (constant) {
                a[i] = static_cast<float>(exp2(std::min(125 / std::fabs(y), 125.0f) * (2 * d(engine) - 1)));
                b[i] = y;
                continue;
            }
            a[i] =
                static_cast<float>(i % 3 ? exp2(252 * d(engine) - 126) : 1 + (d(engine) - 0.5) * exp2(-20 * d(engine)));
            const double most = std::min(126 / std::fabs(log2(a[i]) + 1e-12), 1e30);
            b[i] = static_cast<float>((2 * d(engine) - 1) * most);
            if (b[i] == 0)
                b[i] = 1;
        }
    });
}

void angles(int pairs)
{
    Contenders contenders;
    addKernels(contenders, [&](int slot, int c) -> Run {
        return
            [kernel = atan2Kernels[slot][c]](const float* a, const float* b, float* y, int n) { kernel(a, b, y, n); };
    });
#ifdef QVR_HAVE_PEERS
    addContender(contenders, -1, "glibc vector", PAIRS8(_ZGVdN8vv_atan2f));
    addContender(contenders, -1, "SLEEF", PAIRS8(Sleef_atan2f8_u35avx2));
#endif
    std::mt19937_64 engine(1);
    std::uniform_real_distribution<double> d(0, 1);
    twoArguments("Atan2", contenders, atan2l, pairs, -4, [&](float* a, float* b) {
        for (int i = 0; i < kChunk; i++) {
            a[i] = static_cast<float>((2 * d(engine) - 1) * exp2(40 * d(engine) - 20));
            b[i] = static_cast<float>((2 * d(engine) - 1) * exp2(40 * d(engine) - 20));
        }
    });
}

// Angles and magnitudes of complex numbers, which come as pairs.
void complexNumbers(const char* function, decltype(qvrTable_qvrsPhase_32fc) const& table,
                    long double (*model)(long double, long double), int pairs, double least, double span)
{
    Contenders contenders;
    for (int slot = 0; slot < slots::kCount; slot++)
        if (slots::canRun(slot))
            addContender(contenders, slot, "untagged",
                         [f = table[slot]](const float* im, const float* re, float* y, int n) {
                             std::vector<qvr32fc> z(n);
                             for (int i = 0; i < n; i++)
                                 z[i] = {re[i], im[i]};
                             f(z.data(), y, n);
                         });
    std::mt19937_64 engine(1);
    std::uniform_real_distribution<double> d(0, 1);
    twoArguments(function, contenders, model, pairs, least, [&](float* im, float* re) {
        for (int i = 0; i < kChunk; i++) {
            im[i] = static_cast<float>((2 * d(engine) - 1) * exp2(span * (2 * d(engine) - 1)));
            re[i] = static_cast<float>((2 * d(engine) - 1) * exp2(span * (2 * d(engine) - 1)));
        }
    });
}

// Rows by what stands behind the slots' names, and by the results.
class SlotRows {
public:
    template<class T> void takeResults(const std::vector<T>& y)
    {
        hash_ =
            hash_ * 31 + std::hash<std::string_view>()({reinterpret_cast<const char*>(y.data()), y.size() * sizeof(T)});
    }
    void add(int slot, const char* rest)
    {
        const std::pair<size_t, std::string> key(std::exchange(hash_, 0), rest);
        auto row = std::find_if(rows_.begin(), rows_.end(), [&](const auto& r) { return r.first == key; });
        if (row == rows_.end())
            row = rows_.insert(rows_.end(), {key, ""});
        row->second += std::string(slots::kNames[slot]) + " ";
    }
    void print(const char* function) const
    {
        for (const auto& [key, names] : rows_)
            offered += std::string("| ") + function + " | " + names + "untagged | " + key.second + " |\n";
    }

private:
    size_t hash_ = 0;
    std::vector<std::pair<std::pair<size_t, std::string>, std::string>> rows_;
};

// Results in double: units in the last place against extended precision.
void magnitudes64(int pairs)
{
    SlotRows rows;
    std::uniform_real_distribution<double> d(0, 1);
    std::vector<qvr64fc> z(kChunk);
    std::vector<double> y(kChunk);
    for (int slot = 0; slot < slots::kCount; slot++) {
        if (!slots::canRun(slot))
            continue;
        std::mt19937_64 engine(1);
        double worst = 0, relative = 0;
        qvr64fc at{}, relativeAt{};
        for (int done = 0; done < pairs; done += kChunk) {
            for (qvr64fc& v : z)
                v = {(2 * d(engine) - 1) * exp2(400 * (2 * d(engine) - 1)),
                     (2 * d(engine) - 1) * exp2(400 * (2 * d(engine) - 1))};
            qvrTable_qvrsMagnitude_64fc[slot](z.data(), y.data(), kChunk);
            rows.takeResults(y);
            for (int i = 0; i < kChunk; i++) {
                const long double want = hypotl(z[i].re, z[i].im);
                int exponent;
                frexpl(want, &exponent);
                const double error = std::isnan(y[i]) ? INFINITY : static_cast<double>(fabsl(y[i] - want) / want);
                const double ulp =
                    std::isnan(y[i]) ? INFINITY : static_cast<double>(ldexpl(fabsl(y[i] - want), 53 - exponent));
                if (ulp > worst)
                    worst = ulp, at = z[i];
                if (error > relative)
                    relative = error, relativeAt = z[i];
            }
        }
        char row[512];
        snprintf(row, sizeof row, "%.3f | %.9g, %.9g | %.2f | %.9g, %.9g | |", std::ceil(worst * 1000) / 1000, at.im,
                 at.re, std::floor(-log2(relative) * 100) / 100, relativeAt.im, relativeAt.re);
        rows.add(slot, row);
    }
    rows.print("Magnitude_64fc");
}

// Results in integers: units against the exact root, by every scale factor that leaves a choice.
void magnitudes16(int pairs)
{
    SlotRows rows;
    std::vector<qvr16sc> z(kChunk);
    std::vector<qvr16s> y(kChunk);
    for (int slot = 0; slot < slots::kCount; slot++) {
        if (!slots::canRun(slot))
            continue;
        std::mt19937 engine(1);
        double worst = 0;
        qvr16sc at{};
        for (int done = 0; done < pairs; done += kChunk) {
            const int scale = done / kChunk % 31 - 14;
            for (qvr16sc& v : z)
                v = {static_cast<qvr16s>(engine()), static_cast<qvr16s>(engine())};
            if (scale < 0)
                for (qvr16sc& v : z)
                    v = {static_cast<qvr16s>(v.re >> -scale), static_cast<qvr16s>(v.im >> -scale)};
            qvrTable_qvrsMagnitude_16sc_Sfs[slot](z.data(), y.data(), kChunk, scale);
            rows.takeResults(y);
            for (int i = 0; i < kChunk; i++) {
                const long double want = std::min(32767.0L, ldexpl(hypotl(z[i].re, z[i].im), -scale));
                const double error = static_cast<double>(fabsl(y[i] - want));
                if (error > worst)
                    worst = error, at = z[i];
            }
        }
        char row[512];
        snprintf(row, sizeof row, "%.6f | %d, %d | | | |", std::ceil(worst * 1e6) / 1e6, at.im, at.re);
        rows.add(slot, row);
    }
    rows.print("Magnitude_16sc_Sfs");
}

std::string processorName()
{
    FILE* const f = fopen("/proc/cpuinfo", "r");
    char line[256];
    std::string name = "not told";
    while (f && fgets(line, sizeof line, f))
        if (const char* const colon = strncmp(line, "model name", 10) ? nullptr : strchr(line, ':')) {
            name = std::string(colon + 2, strcspn(colon + 2, "\n"));
            break;
        }
    if (f)
        fclose(f);
    return name;
}

} // namespace

int main(int argc, char** argv)
{
    const uint64_t stride = argc > 1 ? strtoull(argv[1], nullptr, 10) : 257;
    const std::string only = argc > 2 ? argv[2] : "";
    const int pairs = stride > 1000 ? 100000 : stride > 1 ? 2000000 : 50000000;
    std::vector<std::function<void()>> jobs;
    const auto add = [&](const char* name, std::function<void()> job) {
        if (only.empty() || only == name)
            jobs.push_back(std::move(job));
    };
    for (const Function1& f : kFunctions1)
        add(f.name, [&f, stride] { oneArgument(f, stride); });
    add("Pow", [&] { powers(false, pairs); });
    add("Powx", [&] { powers(true, pairs); });
    add("Atan2", [&] { angles(pairs); });
    add("Phase", [&] { complexNumbers("Phase", qvrTable_qvrsPhase_32fc, atan2l, pairs, -4, 60); });
    add("Magnitude", [&] {
        complexNumbers("Magnitude_32fc", qvrTable_qvrsMagnitude_32fc, hypotl, pairs, 0x1p-62, 60);
        magnitudes64(pairs / 4);
        magnitudes16(pairs / 4);
    });

    std::vector<std::string> offeredBy(jobs.size()), othersBy(jobs.size());
    std::vector<std::thread> threads;
    std::atomic<size_t> next{0};
    for (unsigned i = 0; i < std::max(1u, std::thread::hardware_concurrency()); i++)
        threads.emplace_back([&] {
            for (size_t k; (k = next++) < jobs.size();) {
                jobs[k]();
                offeredBy[k] = std::exchange(offered, {});
                othersBy[k] = std::exchange(others, {});
            }
        });
    for (std::thread& t : threads)
        t.join();
    for (size_t k = 0; k < jobs.size(); k++)
        offered += offeredBy[k], others += othersBy[k];

    const char* const head = "| function | kernel | worst ulp | at | correct bits | at | absolute bits | at |\n"
                             "|---|---|---|---|---|---|---|---|\n";
    if (!only.empty()) {
        printf("%s%s\n%s%s", head, offered.c_str(), head, others.c_str());
        return 0;
    }
    const auto one = [](uint64_t step) {
        return step == 1 ? std::string("every float") : "one float in " + std::to_string(step);
    };
    const std::string every = one(std::max<uint64_t>(1, stride / 128)) + " from 2^-12 to 2^14 in magnitude and on " +
                              one(stride) + " elsewhere";
    printf(
        "# Accuracy of the elementary functions\n\n"
        "The worst error on %s,\n"
        "within the domain (%d random pairs for two arguments and for complex numbers, the imaginary part first;\n"
        "a quarter of that for the 64-bit and 16-bit magnitudes): in units in the last place (ulp), as correct bits\n"
        "(relative error), and as bits behind the binary point (absolute error), each with its argument. Errors are\n"
        "rounded up, bits down. Slots whose results are the same, bit for bit, share a row; slot `mx` has one kernel\n"
        "for all classes. Peers ran on the same arguments.\n\n"
        "%s; glibc %s; round to nearest, denormals kept, exceptions masked. Made by\n"
        "`accuracy_report %llu`.\n\n"
        "Untagged are `Exp_32f`, `Ln_32f` and, in the rows of `Atan`, `Arctan_32f`. Sine and cosine of class A11\n"
        "promise an absolute error next to their zeros. Beyond 10000 sine, cosine and tangent are one routine in all\n"
        "slots and classes: there one kernel took every argument, the others one in 16. The 16-bit magnitude counts "
        "in\n"
        "units of its result, which is exact to half of one.\n\n"
        "Left out are arguments outside the domain, results beyond the floats and, of relative errors, denormal\n"
        "results; further exponentials below -87.33655, powers below 2^-125, floating-point magnitudes outside\n"
        "2^-62 .. 2^61 (32fc, whose contract gives 0 for small ones) and 2^-400 .. 2^401 (64fc), and angles of parts\n"
        "outside 2^-60 .. 2^60 (`Phase`) or 2^-20 .. 2^20 (`Atan2`). A NaN in place of a number would be an infinite\n"
        "error.\n\n%s%s",
        every.c_str(), pairs, processorName().c_str(), gnu_get_libc_version(), static_cast<unsigned long long>(stride),
        head, offered.c_str());
    return 0;
}
