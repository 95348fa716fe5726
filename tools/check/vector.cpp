// Element-wise arithmetic, fills, conversions, reductions, logic, search, sorting, waveforms, columns.
#include <algorithm>
#include <cstring>
#include <limits>

#include "trial.h"

using namespace check;

namespace {

template<class T> using In = const T*;

#ifdef QVR_REFERENCE
const double kHalf = 0.5;

// Divided by 2^scale, a tie to even, saturated.
template<class T> T scaled(double v, int scale)
{
    const double r = std::nearbyint(std::ldexp(v, -scale));
    return static_cast<T>(std::clamp<double>(r, std::numeric_limits<T>::min(), std::numeric_limits<T>::max()));
}
int16_t rounded16(double v, int mode)
{
    v = std::clamp(v, -32768.0, 32767.0);
    return static_cast<int16_t>(mode == qvrRoundTowardZero ? std::trunc(v)
                                : mode == qvrRoundNearest  ? std::nearbyint(v)
                                                           : std::trunc(v + std::copysign(kHalf, v)));
}
// Sign with that of zero 0.
double sign(double v)
{
    return v > 0 ? 1 : v < 0 ? -1 : 0;
}
float divided(float a, float b, bool& zero)
{
    zero = zero || b == 0;
    return b == 0 ? (a > 0 ? INFINITY : a < 0 ? -INFINITY : NAN) : a / b;
}
#define EACH for (int i = 0; i < n; i++)
#endif

} // namespace

#define QVR_BINARY(name, T, usual, formula)                                                                            \
    QVR_USUAL(name, usual, [](In<T> a, In<T> b, T* d, int n) {                                                         \
        EACH d[i] = formula;                                                                                           \
        return +qvrOk;                                                                                                 \
    })
#define QVR_INPLACE(name, T, usual, formula)                                                                           \
    QVR_USUAL(name, usual, [](In<T> a, T* d, int n) {                                                                  \
        EACH d[i] = formula;                                                                                           \
        return +qvrOk;                                                                                                 \
    })
#define QVR_CONSTANT(name, T, usual, formula)                                                                          \
    QVR_USUAL(name, usual, [](In<T> a, T c, T* d, int n) {                                                             \
        EACH d[i] = formula;                                                                                           \
        return +qvrOk;                                                                                                 \
    })
#define QVR_CONSTANT_I(name, T, usual, formula)                                                                        \
    QVR_USUAL(name, usual, [](T c, T* d, int n) {                                                                      \
        EACH d[i] = formula;                                                                                           \
        return +qvrOk;                                                                                                 \
    })
#define QVR_SINGLE(name, usual, formula)                                                                               \
    QVR_USUAL(name, usual, [](auto* d, int n) {                                                                        \
        EACH d[i] = formula;                                                                                           \
        return +qvrOk;                                                                                                 \
    })

QVR_BINARY(qvrsAdd_32f, float, {}, a[i] + b[i])
QVR_INPLACE(qvrsAdd_32f_I, float, {}, d[i] + a[i])
QVR_BINARY(qvrsSub_32f, float, {}, b[i] - a[i])
QVR_INPLACE(qvrsSub_32f_I, float, {}, d[i] - a[i])
QVR_BINARY(qvrsMul_32f, float, {}, a[i] * b[i])
QVR_INPLACE(qvrsMul_32f_I, float, {}, d[i] * a[i])
QVR_INPLACE(qvrsMul_64f_I, double, {}, d[i] * a[i])
QVR_BINARY(qvrsMul_64fc, qvr64fc, {},
           (qvr64fc{a[i].re * b[i].re - a[i].im * b[i].im, a[i].re* b[i].im + a[i].im* b[i].re}))
QVR_USUAL(qvrsDiv_32f, ({.low = -3, .high = 40}), [](In<float> a, In<float> b, float* d, int n) {
    bool zero = false;
    EACH d[i] = divided(b[i], a[i], zero);
    return zero ? +qvrWarnDivByZero : +qvrOk;
})
QVR_CONSTANT(qvrsAddC_32f, float, ({.scalars = {1.25}}), a[i] + c)
QVR_CONSTANT_I(qvrsAddC_32f_I, float, ({.scalars = {1.25}}), d[i] + c)
QVR_CONSTANT_I(qvrsAddC_64f_I, double, ({.scalars = {1.1}}), d[i] + c)
QVR_CONSTANT(qvrsSubC_32f, float, ({.scalars = {1.3}}), a[i] - c)
QVR_CONSTANT_I(qvrsSubC_32f_I, float, ({.scalars = {1.3}}), d[i] - c)
QVR_CONSTANT(qvrsSubCRev_32f, float, ({.scalars = {1.3}}), c - a[i])
QVR_CONSTANT(qvrsMulC_32f, float, ({.scalars = {1.3}}), a[i] * c)
QVR_CONSTANT_I(qvrsMulC_32f_I, float, ({.scalars = {1.3}}), d[i] * c)
QVR_CONSTANT_I(qvrsMulC_64f_I, double, ({.scalars = {1.3}}), d[i] * c)
QVR_CONSTANT(qvrsDivC_32f, float, ({.scalars = {3}}), a[i] * (1.0f / c))
QVR_CONSTANT_I(qvrsDivC_32f_I, float, ({.scalars = {3}}), d[i] * (1.0f / c))
QVR_CONSTANT(qvrsDivCRev_32f, float, ({.scalars = {3}}), c / a[i])
QVR_CONSTANT_I(qvrsDivCRev_32f_I, float, ({.scalars = {3}}), c / d[i])
QVR_INPLACE(qvrsAbs_32f, float, {}, std::fabs(a[i]))
QVR_SINGLE(qvrsAbs_32f_I, {}, std::fabs(d[i]))
QVR_SINGLE(qvrsSqr_32f_I, {}, d[i] * d[i])
QVR_USUAL(qvrsSqrt_32f, ({.low = -1, .high = 50}), [](In<float> a, float* d, int n) {
    bool negative = false;
    EACH
    {
        negative = negative || a[i] < 0;
        d[i] = std::sqrt(a[i]);
    }
    return negative ? +qvrWarnNegativeInput : +qvrOk;
})
QVR_INPLACE(qvrsCeil_32f, float, {}, std::ceil(a[i]))
QVR_INPLACE(qvrsFloor_32f, float, {}, std::floor(a[i]))
QVR_INPLACE(qvrsMinEvery_32f_I, float, {}, std::min(a[i], d[i]))
QVR_INPLACE(qvrsMaxEvery_32f_I, float, {}, std::max(a[i], d[i]))

QVR_CONSTANT_I(qvrsSet_8u, uint8_t, ({.low = 0, .scalars = {77}}), c)
QVR_CONSTANT_I(qvrsSet_32s, int32_t, ({.ints = {-7777777, kLength}}), c)
QVR_CONSTANT_I(qvrsSet_32f, float, ({.scalars = {7.5}}), c)
QVR_SINGLE(qvrsZero_32f, {}, 0)
QVR_SINGLE(qvrsZero_64f, {}, 0)
QVR_INPLACE(qvrsCopy_32f, float, {}, a[i])
QVR_INPLACE(qvrsCopy_64f, double, {}, a[i])

#define QVR_CONVERT(name, usual, formula)                                                                              \
    QVR_USUAL(name, usual, [](auto* a, auto* d, int n, auto... rest) {                                                 \
        [[maybe_unused]] const int p[] = {rest..., 0, 0};                                                              \
        EACH d[i] = formula;                                                                                           \
        return +qvrOk;                                                                                                 \
    })
QVR_CONVERT(qvrsConvert_16s32f, ({.low = -32768, .high = 32767}), a[i])
QVR_CONVERT(qvrsConvert_32f64f, {}, static_cast<double>(a[i]))
QVR_CONVERT(qvrsConvert_64f32f, {}, static_cast<float>(a[i]))
QVR_CONVERT(qvrsConvert_32s16s, ({.low = -100000, .high = 100000}), scaled<int16_t>(a[i], 0))
QVR_CONVERT(qvrsConvert_16s64f_Sfs, ({.low = -32768, .high = 32767, .ints = {kLength, 3}}), std::ldexp(a[i], -p[0]))
QVR_CONVERT(qvrsConvert_32f16s_Sfs, ({.low = -70000, .high = 70000, .ints = {kLength, qvrRoundHalfAway, 1}}),
            rounded16(std::ldexp(static_cast<double>(a[i]), -p[1]), p[0]))
QVR_CONVERT(qvrsConvert_64f16s_Sfs, ({.low = -20, .high = 20, .ints = {kLength, qvrRoundNearest, -2}}),
            rounded16(std::ldexp(a[i], -p[1]), p[0]))
QVR_USUAL(qvrsNormalize_32f, ({.scalars = {1.5, 3}}), [](In<float> a, float* d, int n, float s, float v) {
    EACH d[i] = (a[i] - s) * (1.0f / v);
    return +qvrOk;
})
QVR_USUAL(qvrsNormalize_64f, ({.scalars = {1.5, 3}}), [](In<double> a, double* d, int n, double s, double v) {
    EACH d[i] = (a[i] - s) * (1.0 / v);
    return +qvrOk;
})
QVR_CASE(qvrsSplitScaled_16s32f_D2L)
{
    const auto f = QVR_FUNCTION(qvrsSplitScaled_16s32f_D2L, [](const int16_t* a, float** d, int channels, int n) {
        for (int c = 0; c < channels; c++)
            EACH d[c][i] = static_cast<float>(a[c + i * channels]) * static_cast<float>(2.0 / 65535) +
                           static_cast<float>(1.0 / 65535);
        return +qvrOk;
    });
    const auto samples = t.values<int16_t>(3 * 50, -32768, 32767);
    std::vector<float> rows[3] = {std::vector<float>(50), std::vector<float>(50), std::vector<float>(50)};
    float* pointers[3] = {rows[0].data(), rows[1].data(), rows[2].data()};
    t.status(f(samples.data(), pointers, 3, 50));
    for (const auto& row : rows)
        t.array("a row", row, kExact);
}

constexpr double k16s = 32767, k16u = 65535;
QVR_SINGLE(qvrsAbs_32s_I, ({.low = -2147483648.0, .high = 2147483647.0}),
           d[i] == INT32_MIN ? INT32_MAX : std::abs(d[i]))
QVR_USUAL(qvrsAdd_16s_Sfs, ({.low = -k16s, .high = k16s, .ints = {kLength, 1}}),
          [](In<int16_t> a, In<int16_t> b, int16_t* d, int n, int s) {
              EACH d[i] = scaled<int16_t>(a[i] + b[i], s);
              return +qvrOk;
          })
QVR_INPLACE(qvrsAdd_16s_I, int16_t, ({.low = -k16s, .high = k16s}), scaled<int16_t>(a[i] + d[i], 0))
QVR_USUAL(qvrsAdd_16u_ISfs, ({.low = 0, .high = k16u, .ints = {kLength, 1}}),
          [](In<uint16_t> a, uint16_t* d, int n, int s) {
              EACH d[i] = scaled<uint16_t>(a[i] + d[i], s);
              return +qvrOk;
          })
QVR_USUAL(qvrsAddC_16u_ISfs, ({.low = 0, .high = k16u, .ints = {kLength, 2}, .scalars = {999}}),
          [](uint16_t c, uint16_t* d, int n, int s) {
              EACH d[i] = scaled<uint16_t>(d[i] + c, s);
              return +qvrOk;
          })
QVR_USUAL(qvrsSubC_16u_ISfs, ({.low = 0, .high = k16u, .ints = {kLength, 2}, .scalars = {9999}}),
          [](uint16_t c, uint16_t* d, int n, int s) {
              EACH d[i] = scaled<uint16_t>(std::max(d[i] - c, 0), s);
              return +qvrOk;
          })
QVR_CONSTANT_I(qvrsMulC_16s_I, int16_t, ({.low = -k16s, .high = k16s, .scalars = {-3}}), scaled<int16_t>(d[i] * c, 0))
QVR_CONSTANT_I(qvrsSubC_16s_I, int16_t, ({.low = -k16s, .high = k16s, .scalars = {9999}}), scaled<int16_t>(d[i] - c, 0))

#define QVR_EXTREMES(name, usual, ...)                                                                                 \
    QVR_USUAL(name, usual, [](auto* a, int n, auto* r, [[maybe_unused]] auto*... more) {                               \
        [[maybe_unused]] const auto low = std::min_element(a, a + n), high = std::max_element(a, a + n);               \
        __VA_ARGS__;                                                                                                   \
        return +qvrOk;                                                                                                 \
    })
QVR_EXTREMES(qvrsMin_16s, ({.outputs = 1}), *r = *low)
QVR_EXTREMES(qvrsMax_16s, ({.outputs = 1}), *r = *high)
QVR_EXTREMES(qvrsMin_32f, ({.outputs = 1}), *r = *low)
QVR_EXTREMES(qvrsMax_32f, ({.outputs = 1}), *r = *high)
QVR_EXTREMES(qvrsMax_64f, ({.outputs = 1}), *r = *high)
QVR_EXTREMES(qvrsMinMax_16s, ({.outputs = 1}), *r = *low; ((*more = *high), ...))
QVR_EXTREMES(qvrsMinMax_16u, ({.low = 0, .outputs = 1}), *r = *low; ((*more = *high), ...))
QVR_EXTREMES(qvrsMinMax_32f, ({.outputs = 1}), *r = *low; ((*more = *high), ...))
QVR_EXTREMES(qvrsMinIndx_32f, ({.outputs = 1}), *r = *low; ((*more = static_cast<int>(low - a)), ...))
QVR_EXTREMES(qvrsMaxIndx_32f, ({.outputs = 1}), *r = *high; ((*more = static_cast<int>(high - a)), ...))

#define QVR_SUM(name, usual, ...)                                                                                      \
    QVR_USUAL(name, usual, [](auto* a, int n, auto* r, auto... rest) {                                                 \
        [[maybe_unused]] const int p[] = {rest..., 0};                                                                 \
        double s = 0;                                                                                                  \
        EACH s += static_cast<double>(a[i]);                                                                           \
        __VA_ARGS__;                                                                                                   \
        return +qvrOk;                                                                                                 \
    })
QVR_SUM(qvrsMean_32f, ({.tolerance = {1.2e-7, 1e-12}, .outputs = 1}), *r = static_cast<float>(s / n))
QVR_SUM(qvrsMean_64f, ({.tolerance = kSum64f, .outputs = 1}), *r = s / n)
QVR_SUM(qvrsMean_16s_Sfs, ({.low = -k16s, .high = k16s, .ints = {kLength, 1}, .outputs = 1}),
        *r = scaled<int16_t>(s / n, p[0]))
QVR_SUM(qvrsMean_32s_Sfs, ({.low = -2e9, .high = 2e9, .ints = {kLength, 2}, .outputs = 1}),
        *r = scaled<int32_t>(std::nearbyint(s / n), p[0]))
QVR_SUM(qvrsSum_16s32s_Sfs, ({.low = -k16s, .high = k16s, .ints = {kLength, 2}, .outputs = 1}),
        *r = scaled<int32_t>(s, p[0]))
QVR_SUM(qvrsStdDev_32f, ({.tolerance = {2e-7, 1e-9}, .outputs = 1}), double q = 0;
        EACH q += (a[i] - s / n) * (a[i] - s / n); *r = static_cast<float>(std::sqrt(q / (n - 1))))
QVR_USUAL(qvrsSumWindow_16s32f, ({.ints = {kLength, 5}}), [](In<int16_t> a, float* d, int n, int mask) {
    EACH
    {
        d[i] = 0;
        for (int k = 0; k < mask; k++)
            d[i] += a[i + k];
    }
    return +qvrOk;
})

QVR_CONSTANT(qvrsAndC_16u, uint16_t, ({.low = 0, .high = k16u, .scalars = {0xF0F}}), a[i] & c)
QVR_CONSTANT_I(qvrsAndC_16u_I, uint16_t, ({.low = 0, .high = k16u, .scalars = {0xF0F}}), d[i] & c)
QVR_INPLACE(qvrsOr_16u_I, uint16_t, ({.low = 0, .high = k16u}), d[i] | a[i])
QVR_USUAL(qvrsLShiftC_16u, ({.low = 0, .high = k16u, .ints = {3, kLength}}),
          [](In<uint16_t> a, int s, uint16_t* d, int n) {
              EACH d[i] = static_cast<uint16_t>(a[i] << s);
              return +qvrOk;
          })
QVR_USUAL(qvrsLShiftC_16u_I, ({.low = 0, .high = k16u, .ints = {5, kLength}}), [](int s, uint16_t* d, int n) {
    EACH d[i] = static_cast<uint16_t>(d[i] << s);
    return +qvrOk;
})
QVR_USUAL(qvrsRShiftC_16u_I, ({.low = 0, .high = k16u, .ints = {5, kLength}}), [](int s, uint16_t* d, int n) {
    EACH d[i] = static_cast<uint16_t>(d[i] >> s);
    return +qvrOk;
})
QVR_USUAL(qvrsThreshold_32f_I, ({.ints = {kLength, qvrCmpGreater}, .scalars = {20}}),
          [](float* d, int n, float level, int) {
              EACH d[i] = std::min(d[i], level);
              return +qvrOk;
          })
#define QVR_THRESHOLD(name, relation)                                                                                  \
    QVR_USUAL(name, ({.scalars = {20, 3}}), [](In<float> a, float* d, int n, float level, float v) {                   \
        EACH d[i] = a[i] relation level ? v : a[i];                                                                    \
        return +qvrOk;                                                                                                 \
    })                                                                                                                 \
    QVR_USUAL(name##_I, ({.scalars = {20, 3}}), [](float* d, int n, float level, float v) {                            \
        EACH d[i] = d[i] relation level ? v : d[i];                                                                    \
        return +qvrOk;                                                                                                 \
    })
QVR_THRESHOLD(qvrsThreshold_GTVal_32f, >)
QVR_THRESHOLD(qvrsThreshold_LTVal_32f, <)
QVR_USUAL(qvrsReplaceC_16u, ({.low = 0, .high = 5, .scalars = {3, 9}}),
          [](In<uint16_t> a, uint16_t* d, int n, uint16_t from, uint16_t to) {
              EACH d[i] = a[i] == from ? to : a[i];
              return +qvrOk;
          })
#define QVR_FIND(name, T)                                                                                              \
    QVR_USUAL(name, ({.low = 0, .high = 1, .ints = {kLength, 3}, .outputs = 1}),                                       \
              [](In<T> a, int n, In<T> what, int m, int32_t* at) {                                                     \
                  const T* p = std::search(a, a + n, what, what + m);                                                  \
                  *at = p == a + n ? -1 : static_cast<int32_t>(p - a);                                                 \
                  return +qvrOk;                                                                                       \
              })
QVR_FIND(qvrsFind_8u, uint8_t)
QVR_FIND(qvrsFind_16u, uint16_t)
#define QVR_SORT(name)                                                                                                 \
    QVR_USUAL(name, {}, [](auto* d, int n) {                                                                           \
        std::sort(d, d + n);                                                                                           \
        return +qvrOk;                                                                                                 \
    })
QVR_SORT(qvrsSortAscend_32f_I)
QVR_SORT(qvrsSortAscend_64f_I)

QVR_USUAL(qvrsSignChangeRate_Count0_32f, ({.low = -3, .high = 3, .outputs = 1}), [](In<float> a, int n, float* r) {
    double s = 0;
    for (int i = 1; i < n; i++)
        s += std::fabs(sign(a[i]) - sign(a[i - 1])) / 2;
    *r = static_cast<float>(s);
    return +qvrOk;
})
QVR_USUAL(qvrsZeroCrossing_32f, ({.low = -3, .high = 3, .ints = {kLength, qvrZcProduct}, .outputs = 1}),
          [](In<float> a, int n, float* r, int) {
              *r = 0;
              for (int i = 1; i < n; i++)
                  *r += a[i] * a[i - 1] < 0;
              return +qvrOk;
          })
QVR_CASE(qvrsCompensateOffset_32f)
{
    const auto f =
        QVR_FUNCTION(qvrsCompensateOffset_32f, [](In<float> a, float* d, int n, float* last, float y, float k) {
            EACH d[i] = y = i == 0 ? y * k : y * k + (a[i] - a[i - 1]);
            *last = a[n];
            return +qvrOk;
        });
    const auto in = t.values<float>(41, -10, 10);
    std::vector<float> out(40);
    float last = 0;
    t.status(f(in.data(), out.data(), 40, &last, 0.5f, 0.97f));
    t.array("the result", out, kExact);
    t.array("the last value", &last, 1, kExact);
}
QVR_CASE(qvrsCompensateOffset_32f_I)
{
    const auto f = QVR_FUNCTION(qvrsCompensateOffset_32f_I, [](float* d, int n, float* last, float y, float k) {
        float before = *last;
        EACH
        {
            const float x = d[i];
            d[i] = y = i == 0 ? y * k + (x - before) : (x - y) + before * k;
            before = x;
        }
        *last = before;
        return +qvrOk;
    });
    auto data = t.values<float>(40, -10, 10);
    float last = 0.25f;
    t.status(f(data.data(), 40, &last, 0.5f, 0.97f));
    t.array("the result", data, {1e-4, 1e-4});
    t.array("the last value", &last, 1, kExact);
}
QVR_USUAL(qvrsFindPeaks_32f8u, ({.low = 0, .ints = {kLength, 3, 5}}),
          [](In<float>, uint8_t*, int, int, int) { return +qvrOk; })
QVR_CASE(qvrsCopyColumn_Indirect_16s_D2)
{
    const auto f = QVR_FUNCTION(qvrsCopyColumn_Indirect_16s_D2, [](In<int16_t> a, int, int stride, int16_t* d,
                                                                   In<int32_t> index, int n, int to, int rows) {
        for (int r = 0; r < rows; r++)
            EACH d[r * to + i] = a[r * stride + index[i]];
        return +qvrOk;
    });
    const auto in = t.values<int16_t>(9 * 20, -k16s, k16s);
    auto out = t.values<int16_t>(9 * 30, -k16s, k16s);
    const auto index = t.values<int32_t>(25, 0, 16);
    t.status(f(in.data(), 17, 20, out.data(), index.data(), 25, 30, 9));
    t.array("the result", out, kExact);
}
QVR_CASE(qvrsCopyColumn_Indirect_16s_D2L)
{
    const auto f = QVR_FUNCTION(qvrsCopyColumn_Indirect_16s_D2L,
                                [](const int16_t** a, int, int16_t** d, In<int32_t> index, int n, int rows) {
                                    for (int r = 0; r < rows; r++)
                                        EACH d[r][i] = a[r][index[i]];
                                    return +qvrOk;
                                });
    const auto in = t.values<int16_t>(4 * 20, -k16s, k16s);
    std::vector<int16_t> out(4 * 30);
    const auto index = t.values<int32_t>(25, 0, 19);
    const int16_t* from[4];
    int16_t* to[4];
    for (int r = 0; r < 4; r++) {
        from[r] = in.data() + 20 * r;
        to[r] = out.data() + 30 * r;
    }
    t.status(f(from, 20, to, index.data(), 25, 4));
    t.array("the result", out, kExact);
}
