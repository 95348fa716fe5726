// FIR and recursive filters and their design, multi-rate filters, median, sample-rate change.
#include "trial.h"

#ifdef QVR_REFERENCE
#include "model/filters.h"
#endif

using namespace check;

namespace {

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
        y = model::fir(taps, before, x, scale);
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
    y = model::multiRate(taps, line, x, {up, upPhase, down, downPhase}, scale);
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

constexpr Tolerance kDesign = {1e-12, 1e-14};

} // namespace

QVR_USUAL(qvrsFIRGenLowpass_64f,
          ({.tolerance = kDesign, .ints = {33, qvrFirHamming, 1}, .scalars = {0.1}, .outputs = 33}))
QVR_USUAL(qvrsFIRGenHighpass_64f,
          ({.tolerance = kDesign, .ints = {33, qvrFirBlackman, 1}, .scalars = {0.3}, .outputs = 33}))
QVR_USUAL(qvrsFIRGenBandpass_64f,
          ({.tolerance = kDesign, .ints = {33, qvrFirHann, 1}, .scalars = {0.1, 0.3}, .outputs = 33}))
QVR_USUAL(qvrsFIRGenBandstop_64f,
          ({.tolerance = kDesign, .ints = {33, qvrFirBartlett, 1}, .scalars = {0.1, 0.3}, .outputs = 33}))

namespace {

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
        model::recursive(order, taps, type, 0.2, 0.5, high);
        y = model::recursiveRun(taps, order, {before.begin(), before.end()}, x);
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

QVR_USUAL(qvrsFilterMedian_32f_I, ({.ints = {kLength, 7}}))

namespace {

template<class T, class F> void changeRate(Trial& t, F f)
{
    const auto x = t.values<T>(50, -1000, 1000);
    std::vector<T> y(150);
    int len = 0, phase = 2;
    t.status(f(x.data(), 50, y.data(), &len, 3, &phase));
    t.array("the result", y, kExact);
    t.array("the length", &len, 1, kExact);
    t.array("the phase", &phase, 1, kExact);
}

} // namespace

QVR_CASE(qvrsSampleUp_32f)
{
    changeRate<float>(t, QVR_FUNCTION(qvrsSampleUp_32f));
}
QVR_CASE(qvrsSampleDown_32f)
{
    changeRate<float>(t, QVR_FUNCTION(qvrsSampleDown_32f));
}
QVR_CASE(qvrsSampleDown_16s)
{
    changeRate<int16_t>(t, QVR_FUNCTION(qvrsSampleDown_16s));
}
