// Transforms, windows, Hilbert transform, convolution and correlation, wavelets.
#include "trial.h"

#ifdef QVR_REFERENCE
#include "model/fourier.h"
#endif

using namespace check;

namespace {

template<class T, class Init, class Free, class Forward, class Inverse>
void realTransform(Trial& t, Init init, Free release, Forward forward, Inverse inverse, double epsilon)
{
    for (const int order : {0, 1, 3, 6, 9}) {
        const size_t n = size_t{1} << order;
        const double factor = order % 2 ? 1 : 1 / static_cast<double>(n); // of the forward transform
        const auto x = t.values<T>(n, -1, 1), X = t.values<T>(n + 2, -1, 1);
        std::vector<T> spectrum(n + 2), signal(n);
#ifdef QVR_REFERENCE
        t.status(qvrOk);
        model::realForward(x, spectrum, factor);
        model::realInverse(X, signal);
        (void)init, (void)release, (void)forward, (void)inverse;
        t.status(qvrOk), t.status(qvrOk), t.status(qvrOk);
#else
        std::remove_pointer_t<std::remove_pointer_t<decltype(Trial::argument(init))>>* spec = nullptr;
        t.status(init(&spec, order, order % 2 ? qvrFftNoDiv : qvrFftDivFwdByN, qvrHintNone));
        t.status(forward(x.data(), spectrum.data(), spec, nullptr));
        t.status(inverse(X.data(), signal.data(), spec, nullptr));
        t.status(release(spec));
#endif
        const double root = std::sqrt(static_cast<double>(n));
        t.array("the spectrum", spectrum, {0, epsilon * root * factor});
        t.array("the signal", signal, {0, epsilon * root});
    }
}

} // namespace

QVR_CASE(qvrsFFT_R_32f)
{
    realTransform<float>(t, QVR_GET(qvrsFFTInitAlloc_R_32f), QVR_GET(qvrsFFTFree_R_32f), QVR_GET(qvrsFFTFwd_RToCCS_32f),
                         QVR_GET(qvrsFFTInv_CCSToR_32f), 1e-6);
}
QVR_CASE(qvrsFFT_R_64f)
{
    realTransform<double>(t, QVR_GET(qvrsFFTInitAlloc_R_64f), QVR_GET(qvrsFFTFree_R_64f),
                          QVR_GET(qvrsFFTFwd_RToCCS_64f), QVR_GET(qvrsFFTInv_CCSToR_64f), 1e-14);
}
QVR_CASE(qvrsFFT_R_16s)
{
    for (const int order : {0, 2, 5, 8}) {
        const size_t n = size_t{1} << order;
        const auto x = t.values<int16_t>(n, -20000, 20000);
        std::vector<int16_t> spectrum(n + 2);
#ifdef QVR_REFERENCE
        const auto f = model::dft({x.begin(), x.end()}, -1);
        for (size_t k = 0; k <= n / 2; k++) {
            const auto rounded = [n](double v) {
                return static_cast<int16_t>(
                    std::fmin(std::fmax(std::nearbyint(v / static_cast<double>(n)), -32768), 32767));
            };
            spectrum[2 * k] = rounded(f[k].real());
            spectrum[2 * k + 1] = rounded(f[k].imag());
        }
        t.status(qvrOk), t.status(qvrOk), t.status(qvrOk);
#else
        qvrsFFTSpec_R_16s* spec = nullptr;
        t.status(QVR_GET(qvrsFFTInitAlloc_R_16s)(&spec, order, qvrFftDivFwdByN, qvrHintAccurate));
        t.status(QVR_GET(qvrsFFTFwd_RToCCS_16s_Sfs)(x.data(), spectrum.data(), spec, 0, nullptr));
        t.status(QVR_GET(qvrsFFTFree_R_16s)(spec));
#endif
        // A value next to a half may round either way.
        t.array("the spectrum", spectrum, {0, 1});
    }
}

QVR_USUAL(qvrsWinBartlett_32f_I, ({.tolerance = {1e-6, 1e-3}}))
QVR_USUAL(qvrsWinHann_32f_I, ({.tolerance = {1e-6, 1e-5}}))
QVR_USUAL(qvrsWinHamming_32f_I, ({.tolerance = {1e-6, 1e-5}}))
QVR_USUAL(qvrsWinBlackmanStd_32f_I, ({.tolerance = {1e-6, 1e-5}}))
// The ends and the lowest slot truncate, the others round.
QVR_USUAL(qvrsWinHamming_16s_I, ({.low = -30000, .high = 30000, .tolerance = {0, 1}}))

QVR_CASE(qvrsHilbert_32f32fc)
{
    for (const int n : {1, 2, 15, 64, 77, 79}) {
        const auto x = t.values<float>(static_cast<size_t>(n), -1, 1);
        std::vector<qvr32fc> y(x.size());
#ifdef QVR_REFERENCE
        model::analytic(x, y);
        t.status(qvrOk), t.status(qvrOk), t.status(qvrOk);
#else
        qvrsHilbertState_32f32fc* state = nullptr;
        t.status(QVR_GET(qvrsHilbertInitAlloc_32f32fc)(&state, n, qvrHintNone));
        t.status(QVR_GET(qvrsHilbert_32f32fc)(x.data(), y.data(), state));
        t.status(QVR_GET(qvrsHilbertFree_32f32fc)(state));
#endif
        t.array("the analytic signal", y, {0, 3e-6});
    }
}

QVR_CASE(qvrsConv_32f)
{
    const auto f = QVR_FUNCTION(qvrsConv_32f);
    // Plain sums, and products of spectra.
    for (const int m : {5, 300}) {
        const auto a = t.values<float>(static_cast<size_t>(m), -1, 1), b = t.values<float>(400, -1, 1);
        std::vector<float> d(a.size() + b.size() - 1);
        t.status(f(a.data(), m, b.data(), 400, d.data()));
        t.array("the result", d, {2e-6, 4e-5});
    }
}
QVR_CASE(qvrsConvBiased_32f)
{
    const auto f = QVR_FUNCTION(qvrsConvBiased_32f);
    const auto a = t.values<float>(20, -1, 1), b = t.values<float>(90, -1, 1);
    std::vector<float> d(70);
    t.status(f(a.data(), 20, b.data() + 7, 90, d.data(), 70, 7));
    t.array("the result", d, kSum32f);
}
QVR_CASE(qvrsConvCyclic8x8_32f)
{
    const auto f = QVR_FUNCTION(qvrsConvCyclic8x8_32f);
    const auto x = t.values<float>(8, -1, 1), h = t.values<float>(8, -1, 1);
    std::vector<float> y(8);
    t.status(f(x.data(), h.data(), y.data()));
    t.array("the result", y, kSum32f);
}
QVR_CASE(qvrsCrossCorr_32f)
{
    const auto f = QVR_FUNCTION(qvrsCrossCorr_32f);
    for (const int m : {5, 600}) {
        const auto a = t.values<float>(static_cast<size_t>(m), -1, 1), b = t.values<float>(700, -1, 1);
        std::vector<float> d(500);
        t.status(f(a.data(), m, b.data(), 700, d.data(), 500, -100));
        t.array("the result", d, {2e-6, 8e-5});
    }
}
QVR_CASE(qvrsAutoCorr_32f)
{
    const auto f = QVR_FUNCTION(qvrsAutoCorr_32f);
    for (const int n : {50, 1300}) {
        const auto a = t.values<float>(static_cast<size_t>(n), -1, 1);
        std::vector<float> d(a.size());
        t.status(f(a.data(), n, d.data(), n));
        t.array("the result", d, {2e-6, 1e-4});
    }
}

namespace {

#ifdef QVR_REFERENCE
using model::Channel;
#else
struct Channel {
    std::vector<float> taps;
    int offset;
};
#endif

} // namespace

// Two blocks of one stream; the history is read out between them and written back after others.
QVR_CASE(qvrsWTFwd_32f)
{
    const Channel low = {t.values<float>(6, -1, 1), 2}, high = {t.values<float>(5, -1, 1), -1};
    const auto x = t.values<float>(120, -1, 1);
    std::vector<float> l(60), h(60), historyLow(7), historyHigh(4);
#ifdef QVR_REFERENCE
    l = model::halved(low, x);
    h = model::halved(high, x);
    // With an offset of -1 the last value is not used.
    for (size_t i = 0; i < 7; i++)
        historyLow[i] = x[40 - 7 + i];
    for (size_t i = 0; i < 3; i++)
        historyHigh[i] = x[40 - 3 + i];
    for (int i = 0; i < 7; i++)
        t.status(qvrOk);
#else
    qvrsWTFwdState_32f* s = nullptr;
    const auto run = QVR_GET(qvrsWTFwd_32f);
    t.status(QVR_GET(qvrsWTFwdInitAlloc_32f)(&s, low.taps.data(), 6, low.offset, high.taps.data(), 5, high.offset));
    t.status(run(x.data(), l.data(), h.data(), 20, s));
    t.status(QVR_GET(qvrsWTFwdGetDlyLine_32f)(s, historyLow.data(), historyHigh.data()));
    std::vector<float> other(40);
    t.status(run(x.data() + 7, other.data(), other.data() + 20, 20, s));
    t.status(QVR_GET(qvrsWTFwdSetDlyLine_32f)(s, historyLow.data(), historyHigh.data()));
    t.status(run(x.data() + 40, l.data() + 20, h.data() + 20, 40, s));
    t.status(QVR_GET(qvrsWTFwdFree_32f)(s));
#endif
    t.array("the low channel", l, {1.2e-7, 1e-7});
    t.array("the high channel", h, {1.2e-7, 1e-7});
    t.array("the history of the low channel", historyLow, kExact);
    t.array("the history of the high channel", historyHigh.data(), 3, kExact);
}
QVR_CASE(qvrsWTInv_32f)
{
    const Channel low = {t.values<float>(6, -1, 1), 2}, high = {t.values<float>(5, -1, 1), 1};
    const auto l = t.values<float>(60, -1, 1), h = t.values<float>(60, -1, 1);
    std::vector<float> x(120), historyLow(3), historyHigh(2);
#ifdef QVR_REFERENCE
    x = model::doubled(low, l);
    const auto other = model::doubled(high, h);
    for (size_t i = 0; i < x.size(); i++)
        x[i] += other[i];
    historyLow.assign(l.begin() + 17, l.begin() + 20);
    historyHigh.assign(h.begin() + 18, h.begin() + 20);
    for (int i = 0; i < 7; i++)
        t.status(qvrOk);
#else
    qvrsWTInvState_32f* s = nullptr;
    const auto run = QVR_GET(qvrsWTInv_32f);
    t.status(QVR_GET(qvrsWTInvInitAlloc_32f)(&s, low.taps.data(), 6, low.offset, high.taps.data(), 5, high.offset));
    t.status(run(l.data(), h.data(), 20, x.data(), s));
    t.status(QVR_GET(qvrsWTInvGetDlyLine_32f)(s, historyLow.data(), historyHigh.data()));
    std::vector<float> other(40);
    t.status(run(l.data() + 7, h.data() + 7, 20, other.data(), s));
    t.status(QVR_GET(qvrsWTInvSetDlyLine_32f)(s, historyLow.data(), historyHigh.data()));
    t.status(run(l.data() + 20, h.data() + 20, 40, x.data() + 40, s));
    t.status(QVR_GET(qvrsWTInvFree_32f)(s));
#endif
    t.array("the signal", x, {2.4e-7, 3e-7});
    t.array("the history of the low channel", historyLow, kExact);
    t.array("the history of the high channel", historyHigh, kExact);
}
