// FIR and recursive filters and their design, multi-rate filters, median, sample-rate change.
#include <algorithm>

#include "trial.h"

using namespace check;

namespace {

#ifdef QVR_REFERENCE
const double kPi = 3.14159265358979323846;

// Scaled, saturated, rounded half away from zero.
int16_t to16(double v, int scale)
{
    v = std::clamp(std::ldexp(v, -scale), -32768.0, 32767.0);
    return static_cast<int16_t>(std::trunc(v + std::copysign(0.5, v)));
}
#endif

// A stream in two runs, the second long enough for transforms where there are some; then the history.
template<class Sample, class Tap, class Init, class Run, class Free>
void fir(Trial& t, Init init, Run run, Free release, double low, double high, [[maybe_unused]] int scale,
         Tolerance tolerance, const char* getTaps, const char* getLine, const char* setLine)
{
    for (const size_t n : {7, 80}) {
        const auto taps = t.values<Tap>(n, -1, 1);
        const auto before = t.values<Sample>(n, low, high), x = t.values<Sample>(900, low, high);
        std::vector<Sample> y(x.size()), line(n), again(n);
        std::vector<Tap> own(n);
#ifdef QVR_REFERENCE
        for (size_t i = 0; i < y.size(); i++) {
            double sum = 0;
            for (size_t k = 0; k < n; k++)
                sum += static_cast<double>(taps[k]) * static_cast<double>(k <= i ? x[i - k] : before[k - i - 1]);
            if constexpr (std::is_integral_v<Sample>)
                y[i] = to16(sum, scale);
            else
                y[i] = static_cast<Sample>(sum);
        }
        own = taps;
        for (size_t k = 0; k < n; k++)
            line[k] = x[899 - k];
        again = before;
        (void)init, (void)run, (void)release;
        for (int i = 0; i < 4; i++)
            t.status(qvrOk);
        for (const char* name : {getTaps, getLine, setLine, setLine})
            if (name != nullptr)
                t.status(qvrOk);
#else
        std::remove_pointer_t<std::remove_pointer_t<decltype(Trial::argument(init))>>* s = nullptr;
        using State = decltype(s);
        t.status(init(&s, taps.data(), static_cast<int>(n), before.data()));
        t.status(run(x.data(), y.data(), 100, s));
        t.status(run(x.data() + 100, y.data() + 100, 800, s));
        if (getTaps != nullptr)
            t.status(t.function<qvrStatus (*)(State, Tap*)>(getTaps)(s, own.data()));
        if (getLine != nullptr) {
            const auto get = t.function<qvrStatus (*)(State, Sample*)>(getLine);
            t.status(get(s, line.data()));
            t.status(t.function<qvrStatus (*)(State, const Sample*)>(setLine)(s, before.data()));
            t.status(get(s, again.data()));
        }
        t.status(release(s));
#endif
        t.array("the result", y, tolerance);
        if (getTaps != nullptr)
            t.array("the taps", own, kExact);
        if (getLine != nullptr) {
            t.array("the delay line", line, kExact);
            t.array("the delay line that was set", again, kExact);
        }
    }
}

} // namespace

QVR_CASE(qvrsFIR_32f)
{
    fir<float, float>(t, QVR_GET(qvrsFIRInitAlloc_32f), QVR_GET(qvrsFIR_32f), QVR_GET(qvrsFIRFree_32f), -1, 1, 0,
                      {0, 2e-5}, "qvrsFIRGetTaps_32f", "qvrsFIRGetDlyLine_32f", "qvrsFIRSetDlyLine_32f");
}
QVR_CASE(qvrsFIR_64f)
{
    fir<double, double>(t, QVR_GET(qvrsFIRInitAlloc_64f), QVR_GET(qvrsFIR_64f), QVR_GET(qvrsFIRFree_64f), -1, 1, 0,
                        {0, 1e-13}, nullptr, "qvrsFIRGetDlyLine_64f", "qvrsFIRSetDlyLine_64f");
}
QVR_CASE(qvrsFIR64f_32f)
{
    fir<float, double>(t, QVR_GET(qvrsFIRInitAlloc64f_32f), QVR_GET(qvrsFIR64f_32f), QVR_GET(qvrsFIRFree64f_32f), -1, 1,
                       0, {1.2e-7, 1e-7}, nullptr, "qvrsFIRGetDlyLine64f_32f", "qvrsFIRSetDlyLine64f_32f");
}
QVR_CASE(qvrsFIR64f_16s)
{
    // A sum next to a half may round either way.
    const auto scaled = QVR_GET(qvrsFIR64f_16s_Sfs);
    const auto run = [scaled](const int16_t* src, int16_t* dst, int n, qvrsFIRState64f_16s* s) {
        return scaled(src, dst, n, s, 2);
    };
    fir<int16_t, double>(t, QVR_GET(qvrsFIRInitAlloc64f_16s), run, QVR_GET(qvrsFIRFree64f_16s), -20000, 20000, 2,
                         {0, 1}, nullptr, nullptr, nullptr);
}

namespace {

// Zeros between the samples, the filter, every third value. The grid begins with the newest of the samples before.
template<class Sample, class Tap, class Call>
void multiRate(Trial& t, double low, double high, [[maybe_unused]] int scale, Tolerance tolerance, bool inPlace,
               Call call)
{
    constexpr int up = 2, upPhase = 1, down = 3, downPhase = 2, iterations = 12, length = 9;
    const auto taps = t.values<Tap>(length, -1, 1);
    auto x = t.values<Sample>(iterations * down, low, high), line = t.values<Sample>((length + up - 1) / up, low, high);
    std::vector<Sample> y(iterations * up);
#ifdef QVR_REFERENCE
    for (int o = 0; o < iterations * up; o++) {
        const int step = downPhase + o * down;
        double sum = 0;
        for (int k = 0; k < length; k++) {
            const int at = step - k - upPhase;
            if (at % up != 0)
                continue;
            const int sample = at / up;
            sum += static_cast<double>(taps[static_cast<size_t>(k)]) *
                   static_cast<double>(sample >= 0 ? x[static_cast<size_t>(sample)]
                                                   : line[static_cast<size_t>(-1 - sample)]);
        }
        if constexpr (std::is_integral_v<Sample>)
            y[static_cast<size_t>(o)] = to16(sum, scale);
        else
            y[static_cast<size_t>(o)] = static_cast<Sample>(sum);
    }
    for (size_t m = 0; m < line.size(); m++)
        line[m] = x[x.size() - 1 - m];
    (void)call, (void)inPlace;
    t.status(qvrOk);
#else
    t.status(call(x.data(), y.data(), iterations, taps.data(), length, up, upPhase, down, downPhase, line.data()));
    if (inPlace)
        y.assign(x.begin(), x.begin() + iterations * up);
#endif
    t.array("the result", y, tolerance);
    t.array("the delay line", line, kExact);
}

} // namespace

QVR_CASE(qvrsFIRMR64f_Direct_32f)
{
    multiRate<float, double>(t, -1, 1, 0, {1.2e-7, 1e-7}, false, QVR_GET(qvrsFIRMR64f_Direct_32f));
}
QVR_CASE(qvrsFIRMR64f_Direct_32f_I)
{
    const auto f = QVR_GET(qvrsFIRMR64f_Direct_32f_I);
    multiRate<float, double>(t, -1, 1, 0, {1.2e-7, 1e-7}, true,
                             [f](float* x, float*, auto... rest) { return f(x, rest...); });
}
QVR_CASE(qvrsFIRMR32f_Direct_16s_Sfs)
{
    const auto f = QVR_GET(qvrsFIRMR32f_Direct_16s_Sfs);
    multiRate<int16_t, float>(t, -20000, 20000, 1, {0, 1}, false, [f](auto... rest) { return f(rest..., 1); });
}

namespace {

#ifdef QVR_REFERENCE
double windowOf(int window, double near, int n)
{
    const double w = 2 * kPi * near / (n - 1), root = 0.5 / std::cos(kPi / (n - 1)), a = -root * root;
    return window == qvrFirBartlett   ? 2 * near / (n - 1)
           : window == qvrFirBlackman ? (a + 1) / 2 - 0.5 * std::cos(w) - a / 2 * std::cos(2 * w)
           : window == qvrFirHamming  ? 0.54 - 0.46 * std::cos(w)
                                      : 0.5 - 0.5 * std::cos(w);
}
// Pass band from low to high, or all but that; odd lengths.
qvrStatus designed(double* taps, int n, int window, double low, double high, bool stop, double reference)
{
    double gain = 0;
    for (int i = 0; i < n; i++) {
        const double m = i - (n - 1) / 2.0;
        const double band =
            m == 0 ? 2 * (high - low) : (std::sin(2 * kPi * high * m) - std::sin(2 * kPi * low * m)) / (kPi * m);
        taps[i] = stop ? (m == 0) - band : band;
        if (m != 0) // the middle has the weight 1
            taps[i] *= windowOf(window, std::fmin(i, n - 1 - i), n);
        gain += taps[i] * std::cos(2 * kPi * reference * m);
    }
    for (int i = 0; i < n; i++)
        taps[i] /= std::fabs(gain);
    return qvrOk;
}
#endif

constexpr Tolerance kDesign = {1e-12, 1e-14};

} // namespace

QVR_USUAL(qvrsFIRGenLowpass_64f,
          ({.tolerance = kDesign, .ints = {33, qvrFirHamming, 1}, .scalars = {0.1}, .outputs = 33}),
          [](double* d, int n, int w, int, double f) { return designed(d, n, w, 0, f, false, 0); })
QVR_USUAL(qvrsFIRGenHighpass_64f,
          ({.tolerance = kDesign, .ints = {33, qvrFirBlackman, 1}, .scalars = {0.3}, .outputs = 33}),
          [](double* d, int n, int w, int, double f) { return designed(d, n, w, 0, f, true, 0.5); })
QVR_USUAL(qvrsFIRGenBandpass_64f,
          ({.tolerance = kDesign, .ints = {33, qvrFirHann, 1}, .scalars = {0.1, 0.3}, .outputs = 33}),
          [](double* d, int n, int w, int, double f, double g) { return designed(d, n, w, f, g, false, (f + g) / 2); })
QVR_USUAL(qvrsFIRGenBandstop_64f,
          ({.tolerance = kDesign, .ints = {33, qvrFirBartlett, 1}, .scalars = {0.1, 0.3}, .outputs = 33}),
          [](double* d, int n, int w, int, double f, double g) { return designed(d, n, w, f, g, true, 0); })

namespace {

#ifdef QVR_REFERENCE
// Poles of the analogue prototype at the warped edge, through s = (z - 1) / (z + 1); gain 1, or the ripple's, at the
// pass band's end of the frequency axis.
void recursive(int n, double* taps, int type, double f, double ripple, bool high)
{
    using Complex = std::complex<long double>;
    const long double pi = 3.14159265358979323846L, w = std::tan(pi * static_cast<long double>(f));
    long double sinhV = 1, coshV = 1, gain = 1;
    if (type == qvrIirChebyshev) {
        const long double v =
            std::asinh(1 / std::sqrt(std::pow(10.0L, 0.1L * static_cast<long double>(ripple)) - 1)) / n;
        sinhV = std::sinh(v);
        coshV = std::cosh(v);
        gain = n % 2 == 0 ? std::pow(10.0L, static_cast<long double>(-ripple) / 20) : 1;
    }
    std::vector<Complex> a = {1}, b = {1};
    const auto times = [](std::vector<Complex>& p, Complex root) {
        p.push_back(0);
        for (size_t k = p.size() - 1; k >= 1; k--)
            p[k] -= root * p[k - 1];
    };
    for (int k = 0; k < n; k++) {
        const long double angle = pi * (2 * k + 1 + n) / (2 * n);
        const Complex p(sinhV * std::cos(angle), coshV * std::sin(angle)), s = high ? w / p : w * p;
        times(a, (1.0L + s) / (1.0L - s));
        times(b, high ? 1 : -1);
    }
    Complex atA = 0, atB = 0;
    for (int k = 0; k <= n; k++) {
        atA += high && k % 2 ? -a[static_cast<size_t>(k)] : a[static_cast<size_t>(k)];
        atB += high && k % 2 ? -b[static_cast<size_t>(k)] : b[static_cast<size_t>(k)];
    }
    for (int k = 0; k <= n; k++) {
        taps[k] = static_cast<double>((b[static_cast<size_t>(k)] * atA / atB).real() * gain);
        taps[n + 1 + k] = static_cast<double>(a[static_cast<size_t>(k)].real());
    }
}
#endif

// The filter's taps, and a stream through it in two runs.
template<class Design, class Init, class Run, class Free>
void iir(Trial& t, Design design, Init init, Run run, Free release, bool high)
{
    for (const int type : {+qvrIirButterworth, +qvrIirChebyshev}) {
        constexpr int order = 5;
        double taps[2 * (order + 1)];
        const auto before = t.values<double>(order, -1, 1), x = t.values<double>(300, -1, 1);
        std::vector<double> y(x.size());
#ifdef QVR_REFERENCE
        recursive(order, taps, type, 0.2, 0.5, high);
        std::vector<long double> line(before.begin(), before.end());
        line.push_back(0);
        for (size_t i = 0; i < x.size(); i++) {
            const long double in = x[i], out = taps[0] * in + line[0];
            y[i] = static_cast<double>(out);
            for (int k = 0; k < order; k++)
                line[static_cast<size_t>(k)] =
                    line[static_cast<size_t>(k) + 1] + taps[k + 1] * in - taps[order + 2 + k] * out;
        }
        (void)design, (void)init, (void)run, (void)release;
        for (int i = 0; i < 5; i++)
            t.status(qvrOk);
#else
        (void)high;
        qvrsIIRState_64f* s = nullptr;
        t.status(design(order, taps, type, 0.2, 0.5));
        t.status(init(&s, taps, order, before.data()));
        t.status(run(x.data(), y.data(), 10, s));
        t.status(run(x.data() + 10, y.data() + 10, 290, s));
        t.status(release(s));
#endif
        t.array("the taps", taps, 2 * (order + 1), {1e-10, 1e-12});
        t.array("the result", y, {1e-9, 1e-10});
    }
}

} // namespace

QVR_CASE(qvrsIIRLowpass_64f)
{
    iir(t, QVR_GET(qvrsIIRGenLowpass_64f), QVR_GET(qvrsIIRInitAlloc_64f), QVR_GET(qvrsIIR_64f),
        QVR_GET(qvrsIIRFree_64f), false);
}
QVR_CASE(qvrsIIRHighpass_64f)
{
    iir(t, QVR_GET(qvrsIIRGenHighpass_64f), QVR_GET(qvrsIIRInitAlloc_64f), QVR_GET(qvrsIIR_64f),
        QVR_GET(qvrsIIRFree_64f), true);
}

#define QVR_MEDIAN(mask)                                                                                               \
    [](float* d, int n, int) {                                                                                         \
        const std::vector<float> x(d, d + n);                                                                          \
        for (int i = 1; i < n - 1; i++) {                                                                              \
            std::vector<float> w;                                                                                      \
            for (int k = -mask / 2; k <= mask / 2; k++)                                                                \
                w.push_back(x[static_cast<size_t>(std::clamp(i + k, 0, n - 1))]);                                      \
            std::sort(w.begin(), w.end());                                                                             \
            d[i] = w[mask / 2];                                                                                        \
        }                                                                                                              \
        return +qvrOk;                                                                                                 \
    }
QVR_USUAL(qvrsFilterMedian_32f_I, ({.ints = {kLength, 7}}), QVR_MEDIAN(7))

#define QVR_RATE(name, T, outputs, phaseAfter, ...)                                                                    \
    QVR_CASE(name)                                                                                                     \
    {                                                                                                                  \
        const auto f = QVR_FUNCTION(name, ([](const T* x, int n, T* y, int* len, int factor, int* phase) {             \
                                        __VA_ARGS__;                                                                   \
                                        *len = outputs;                                                                \
                                        *phase = phaseAfter;                                                           \
                                        return +qvrOk;                                                                 \
                                    }));                                                                               \
        const auto x = t.values<T>(50, -1000, 1000);                                                                   \
        std::vector<T> y(150);                                                                                         \
        int len = 0, phase = 2;                                                                                        \
        t.status(f(x.data(), 50, y.data(), &len, 3, &phase));                                                          \
        t.array("the result", y, kExact);                                                                              \
        t.array("the length", &len, 1, kExact);                                                                        \
        t.array("the phase", &phase, 1, kExact);                                                                       \
    }
QVR_RATE(qvrsSampleUp_32f, float, n* factor, *phase,
         for (int i = 0; i < n * factor; i++) y[i] = i % factor == *phase ? x[i / factor] : 0)
QVR_RATE(qvrsSampleDown_32f, float, (n + factor - 1 - *phase) / factor, (*phase + factor * *len) - n,
         for (int i = *phase; i < n; i += factor) y[i / factor] = x[i])
QVR_RATE(qvrsSampleDown_16s, int16_t, (n + factor - 1 - *phase) / factor, (*phase + factor * *len) - n,
         for (int i = *phase; i < n; i += factor) y[i / factor] = x[i])
