// Recursive filters as they are designed in practice, poles close together and close to the circle, judged by their
// error against the same recursion in long double: at most eight times what the sample step itself errs.
#include <cmath>
#include <memory>

#include "filters/iir_state_record.h"
#include "filters/slot_tables.h"
#include "support/slots.h"
#include "support/values.h"

namespace {

// The same recursion in any precision. A sample step has two natural orders of addition and may be fused or not; the
// error of one alone can be small by luck.
enum class Order { taps, delay };
template<class T>
std::vector<T> recursion(const std::vector<double>& taps, const std::vector<double>& x, Order order, bool fused)
{
    const size_t L = taps.size() / 2 - 1;
    std::vector<T> b(taps.begin(), taps.begin() + L + 1), a(taps.begin() + L + 1, taps.end()), d(L + 1), y(x.size());
    const auto product = [fused](T p, T q, T s) { return fused ? std::fma(p, q, s) : p * q + s; };
    for (size_t i = 0; i < x.size(); i++) {
        const T v = x[i], out = product(b[0], v, d[0]);
        for (size_t k = 0; k < L; k++)
            d[k] = order == Order::taps ? product(-a[k + 1], out, b[k + 1] * v) + d[k + 1]
                                        : product(-a[k + 1], out, product(b[k + 1], v, d[k + 1]));
        y[i] = out;
    }
    return y;
}

template<class T> double largestError(const std::vector<T>& got, const std::vector<long double>& want)
{
    long double worst = 0;
    for (size_t i = 0; i < want.size(); i++)
        if (!(std::fabs(got[i] - want[i]) <= worst)) // a NaN too
            worst = std::fabs(got[i] - want[i]);
    return static_cast<double>(worst);
}

// The larger error of the sample step in its forms.
double stepError(const std::vector<double>& taps, const std::vector<double>& x, const std::vector<long double>& want)
{
    double most = 0;
    for (Order order : {Order::taps, Order::delay})
        for (bool fused : {false, true})
            most = std::max(most, largestError(recursion<double>(taps, x, order, fused), want));
    return most;
}

struct Signal {
    const char* name;
    bool steady;
    std::vector<double> x;
};
// A step of 1 would leave out the rounding of all products.
std::vector<Signal> signals(size_t n)
{
    std::vector<Signal> all = {{"noise", false, randomValues<double>(n, 1, -1, 1)},
                               {"step", true, std::vector<double>(n, 0.7)},
                               {"impulse", false, std::vector<double>(n)},
                               {"tone", false, std::vector<double>(n)}};
    all[2].x[5] = 1;
    for (size_t i = 0; i < n; i++)
        all[3].x[i] = std::sin(0.02 * static_cast<double>(i)) + 0.1 * std::sin(1.3 * static_cast<double>(i));
    return all;
}

// Taps whose rounding alone has moved a pole out of the circle give no filter that could be judged.
bool isStable(const std::vector<double>& taps, size_t n)
{
    std::vector<double> x(2 * n);
    x[0] = 1;
    const std::vector<long double> h = recursion<long double>(taps, x, Order::taps, false);
    const auto peak = [&](size_t from, size_t to) {
        long double most = 0;
        for (size_t i = from; i < to; i++)
            most = std::max(most, std::fabs(h[i]));
        return most;
    };
    return peak(n, 2 * n) < peak(0, n);
}

size_t samples()
{
    return 10000;
}

// The number of filters judged.
int checkFilter(const std::vector<double>& taps, const std::string& what)
{
    const size_t n = samples();
    const int L = static_cast<int>(taps.size()) / 2 - 1;
    if (!isStable(taps, n))
        return 0;
    for (const Signal& signal : signals(n)) {
        const std::vector<double>& x = signal.x;
        const std::vector<long double> want = recursion<long double>(taps, x, Order::taps, false);
        double own = stepError(taps, x, want);
        // All roundings of a steady signal are alike, and can cancel: other levels show what is usual.
        for (double level : {0.3, 0.4, 0.6, 0.9})
            if (signal.steady) {
                std::vector<double> other(n);
                for (size_t i = 0; i < n; i++)
                    other[i] = level * x[i];
                own = std::max(own, stepError(taps, other, recursion<long double>(taps, other, Order::taps, false)));
            }
        slots::each(qvrTable_qvrsIIR_64f, [&](auto run, int slot) {
            for (int block : {1, 4 * L, 64, 441, 1024, 4096, static_cast<int>(n)}) {
                qvrsIIRState_64f* state = nullptr;
                ASSERT_EQ(qvrTable_qvrsIIRInitAlloc_64f[slot](&state, taps.data(), L, nullptr), qvrOk);
                std::vector<double> y(n);
                for (size_t i = 0; i < n; i += block)
                    ASSERT_EQ(run(&x[i], &y[i], static_cast<int>(std::min<size_t>(block, n - i)), state), qvrOk);
                qvrTable_qvrsIIRFree_64f[slot](state);
                ASSERT_LE(largestError(y, want), 8 * own) << what << ", " << signal.name << ", blocks of " << block;
            }
        });
        if (testing::Test::HasFatalFailure())
            return 0;
    }
    return 1;
}

std::vector<double> design(bool highpass, int order, int type, double f)
{
    std::vector<double> taps(2 * (order + 1));
    const auto& table = highpass ? qvrTable_qvrsIIRGenHighpass_64f : qvrTable_qvrsIIRGenLowpass_64f;
    EXPECT_EQ(table[0](order, taps.data(), type, f, 1), qvrOk);
    return taps;
}

std::string named(bool highpass, int order, int type, double f)
{
    return std::string(type == 1 ? "Chebyshev " : "Butterworth ") + (highpass ? "high" : "low") + "-pass, order " +
           std::to_string(order) + ", cut-off " + std::to_string(f);
}

TEST(IirAccuracy, DesignsOfEveryOrder)
{
    int judged = 0;
    for (int order = 1; order <= 12; order++)
        for (bool highpass : {false, true})
            for (int type : {0, 1})
                for (double f : {1e-4, 1e-3, 0.003, 0.01, 0.02, 0.1, 0.25, 0.4, 0.49}) {
                    judged += checkFilter(design(highpass, order, type, f), named(highpass, order, type, f));
                    if (HasFatalFailure())
                        return;
                }
    EXPECT_GE(judged, 300);
}

TEST(IirAccuracy, RumbleFilters)
{
    int judged = 0;
    for (double rate : {44100.0, 48000.0, 96000.0, 192000.0})
        for (double cutoff : {20.0, 80.0})
            for (int order : {1, 2, 3, 4, 6}) {
                judged += checkFilter(design(true, order, 0, cutoff / rate), named(true, order, 0, cutoff / rate));
                if (HasFatalFailure())
                    return;
            }
    EXPECT_GE(judged, 30);
}

// Zeros on the circle.
TEST(IirAccuracy, EllipticFilters)
{
    struct Filter {
        const char* name;
        std::vector<double> taps;
    };
    const Filter filters[] = {
        {"low-pass, order 4, 1 dB, 40 dB, 0.05",
         {0.011738158079019735, -0.032928575139708503, 0.045104604907653306, -0.032928575139708503,
          0.011738158079019735, 1, -3.6047852679644543, 4.9787614158051632, -3.1155902387441099, 0.74467021199089101}},
        {"high-pass, order 5, 0.1 dB, 50 dB, 0.2",
         {0.1407817687980612, -0.58302516763324941, 1.0677104012270595, -1.0677104012270595, 0.58302516763324941,
          -0.1407817687980612, 1, -0.82067170913405074, 1.2294832960407021, -0.31023413329090166, 0.24487955423185587,
          0.022234017380769765}},
        {"low-pass, order 6, 0.5 dB, 60 dB, 0.02",
         {0.001024169429995984, -0.0057386320860233538, 0.013765774301466806, -0.018102083044579029,
          0.013765774301466806, -0.0057386320860233538, 0.001024169429995984, 1, -5.8302275321784407,
          14.189984824335761, -18.453784683059435, 13.524087812991205, -5.2956048148889003, 0.86554496505771594}},
        {"low-pass, order 8, 0.5 dB, 70 dB, 0.1",
         {0.0011064871477843665, -0.0032783837933923845, 0.0061900524809698747, -0.0076687247185589285,
          0.0084191450457076749, -0.0076687247185589268, 0.0061900524809698773, -0.0032783837933923845,
          0.001106487147784367, 1, -6.4400229812115048, 18.924356655361962, -32.987938566468358, 37.210289130395083,
          -27.76965837222339, 13.379915015295033, -3.8051060742180667, 0.48934944644463096}},
    };
    for (const Filter& f : filters)
        EXPECT_EQ(checkFilter(f.taps, f.name), 1) << f.name;
}

// Orders above a chunk of a run, and those whose chunks are all shorter than four times the order.
TEST(IirAccuracy, LongOrders)
{
    for (int L : {20, 64, 255, 256, 300, 1023, 1024, 1500}) {
        std::vector<double> taps(2 * (L + 1));
        const std::vector<double> noise = randomValues<double>(2 * L, L, -1, 1);
        double sum = 0;
        for (int k = 1; k <= L; k++)
            sum += std::fabs(noise[k - 1]);
        for (int k = 1; k <= L; k++) {
            taps[k] = noise[L + k - 1];
            taps[L + 1 + k] = 0.99 * noise[k - 1] / sum;
        }
        taps[0] = taps[L + 1] = 1;
        EXPECT_EQ(checkFilter(taps, "order " + std::to_string(L)), 1);
    }
}

} // namespace
