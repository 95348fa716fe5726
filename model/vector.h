// Scalar models of the vector functions: what each computes, stated once. They have the exports' prototypes, take valid
// arguments for granted, and serve the tests as the truth, the known answers of morvenqvr-check, and the benchmark as
// the loop that a programmer writes instead.
//
// Arrays are promised not to overlap, which spares a compiler the test for it. Names are local to each translation
// unit, because the benchmark compiles them for every level.
#ifndef QVR_MODEL_VECTOR_H
#define QVR_MODEL_VECTOR_H

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

#include "model/element.h"

namespace model {
namespace {

#define QVR_EACH for (int i = 0; i < n; i++)
#define QVR_BINARY(name, T, formula)                                                                                   \
    inline qvrStatus name(const T* __restrict a, const T* __restrict b, T* __restrict d, int n)                        \
    {                                                                                                                  \
        QVR_EACH d[i] = formula;                                                                                       \
        return qvrOk;                                                                                                  \
    }
#define QVR_UNARY(name, S, T, formula)                                                                                 \
    inline qvrStatus name(const S* __restrict a, T* __restrict d, int n)                                               \
    {                                                                                                                  \
        QVR_EACH d[i] = static_cast<T>(formula);                                                                       \
        return qvrOk;                                                                                                  \
    }
#define QVR_IN_PLACE(name, T, formula)                                                                                 \
    inline qvrStatus name(T* d, int n)                                                                                 \
    {                                                                                                                  \
        QVR_EACH d[i] = formula;                                                                                       \
        return qvrOk;                                                                                                  \
    }
#define QVR_CONSTANT(name, T, V, formula)                                                                              \
    inline qvrStatus name(const T* __restrict a, V c, T* __restrict d, int n)                                          \
    {                                                                                                                  \
        QVR_EACH d[i] = static_cast<T>(formula);                                                                       \
        return qvrOk;                                                                                                  \
    }
#define QVR_CONSTANT_IN_PLACE(name, T, V, formula)                                                                     \
    inline qvrStatus name(V c, T* d, int n)                                                                            \
    {                                                                                                                  \
        QVR_EACH d[i] = static_cast<T>(formula);                                                                       \
        return qvrOk;                                                                                                  \
    }

// ---- Arithmetic -----------------------------------------------------------------------------------------------------

QVR_BINARY(qvrsAdd_32f, float, a[i] + b[i])
QVR_BINARY(qvrsSub_32f, float, b[i] - a[i])
QVR_BINARY(qvrsMul_32f, float, a[i] * b[i])
QVR_UNARY(qvrsAdd_32f_I, float, float, d[i] + a[i])
QVR_UNARY(qvrsSub_32f_I, float, float, d[i] - a[i])
QVR_UNARY(qvrsMul_32f_I, float, float, d[i] * a[i])
QVR_UNARY(qvrsMul_64f_I, double, double, d[i] * a[i])
QVR_UNARY(qvrsMinEvery_32f_I, float, float, a[i] < d[i] ? a[i] : d[i])
QVR_UNARY(qvrsMaxEvery_32f_I, float, float, a[i] > d[i] ? a[i] : d[i])
QVR_BINARY(qvrsMul_64fc, qvr64fc, (qvr64fc{a[i].re * b[i].re - a[i].im * b[i].im, a[i].re* b[i].im + a[i].im* b[i].re}))

// A constant that changes nothing leaves the bits alone: -0 and NaN too.
#define QVR_BOTH(name, T, formula, formulaInPlace)                                                                     \
    QVR_CONSTANT(name, T, T, formula)                                                                                  \
    QVR_CONSTANT_IN_PLACE(name##_I, T, T, formulaInPlace)
QVR_BOTH(qvrsAddC_32f, float, c == 0 ? a[i] : a[i] + c, c == 0 ? d[i] : d[i] + c)
QVR_BOTH(qvrsSubC_32f, float, c == 0 ? a[i] : a[i] - c, c == 0 ? d[i] : d[i] - c)
QVR_BOTH(qvrsMulC_32f, float, timesConstant(a[i], c), timesConstant(d[i], c))
QVR_BOTH(qvrsDivC_32f, float, timesConstant(a[i], 1.0f / c), timesConstant(d[i], 1.0f / c))
QVR_CONSTANT_IN_PLACE(qvrsAddC_64f_I, double, double, c == 0 ? d[i] : d[i] + c)
QVR_CONSTANT_IN_PLACE(qvrsMulC_64f_I, double, double, timesConstant(d[i], c))
QVR_CONSTANT(qvrsSubCRev_32f, float, float, c - a[i])

// The status is that of the whole array: loops for the compiler's vectoriser leave it out.
inline qvrStatus qvrsDiv_32f(const float* __restrict a, const float* __restrict b, float* __restrict d, int n)
{
    bool zero = false;
    QVR_EACH
    {
        d[i] = quotient(b[i], a[i]);
        zero |= a[i] == 0;
    }
    return zero ? qvrWarnDivByZero : qvrOk;
}
inline qvrStatus qvrsDivCRev_32f_I(float c, float* d, int n)
{
    bool zero = false;
    QVR_EACH
    {
        zero |= d[i] == 0;
        d[i] = quotient(c == 0 ? 0.0f : c, d[i]);
    }
    return zero ? qvrWarnDivByZero : qvrOk;
}
inline qvrStatus qvrsDivCRev_32f(const float* __restrict a, float c, float* __restrict d, int n)
{
    std::copy_n(a, n, d);
    return qvrsDivCRev_32f_I(c, d, n);
}
inline qvrStatus qvrsSqrt_32f(const float* __restrict a, float* __restrict d, int n)
{
    bool negative = false;
    QVR_EACH
    {
        negative |= !(a[i] >= 0);
        d[i] = a[i] >= 0 ? std::sqrt(a[i]) : -std::numeric_limits<float>::quiet_NaN();
    }
    return negative ? qvrWarnNegativeInput : qvrOk;
}

QVR_UNARY(qvrsAbs_32f, float, float, std::fabs(a[i]))
QVR_IN_PLACE(qvrsAbs_32f_I, float, std::fabs(d[i]))
QVR_IN_PLACE(qvrsSqr_32f_I, float, d[i] * d[i])
QVR_UNARY(qvrsCeil_32f, float, float, std::ceil(a[i]))
QVR_UNARY(qvrsFloor_32f, float, float, std::floor(a[i]))

// ---- Fills, copies, conversions -------------------------------------------------------------------------------------

QVR_CONSTANT_IN_PLACE(qvrsSet_8u, uint8_t, uint8_t, c)
QVR_CONSTANT_IN_PLACE(qvrsSet_32s, int32_t, int32_t, c)
QVR_CONSTANT_IN_PLACE(qvrsSet_32f, float, float, c)
QVR_IN_PLACE(qvrsZero_32f, float, 0)
QVR_IN_PLACE(qvrsZero_64f, double, 0)
QVR_UNARY(qvrsCopy_32f, float, float, a[i])
QVR_UNARY(qvrsCopy_64f, double, double, a[i])
QVR_UNARY(qvrsConvert_16s32f, int16_t, float, a[i])
QVR_UNARY(qvrsConvert_32f64f, float, double, a[i])
QVR_UNARY(qvrsConvert_64f32f, double, float, clamped(a[i], 3.4028234663852886e38))
QVR_UNARY(qvrsConvert_32s16s, int32_t, int16_t, a[i] < -32768 ? -32768 : a[i] > 32767 ? 32767 : a[i])

inline qvrStatus qvrsConvert_16s64f_Sfs(const int16_t* __restrict a, double* __restrict d, int n, int scale)
{
    const double factor = powerOfTwo64(scale);
    QVR_EACH d[i] = a[i] * factor;
    return qvrOk;
}
template<class T>
qvrStatus toSixteen(const T* __restrict a, int16_t* __restrict d, int n, int mode, int scale, T factor)
{
    if (scale == 0)
        factor = 1;
    if (mode == qvrRoundTowardZero)
        QVR_EACH d[i] = static_cast<int16_t>(clampedTo16(a[i] * factor));
    else if (mode == qvrRoundNearest)
        QVR_EACH d[i] = static_cast<int16_t>(__builtin_rint(clampedTo16(a[i] * factor)));
    else
        QVR_EACH d[i] = static_cast<int16_t>(__builtin_round(clampedTo16(a[i] * factor)));
    return qvrOk;
}
inline qvrStatus qvrsConvert_32f16s_Sfs(const float* a, int16_t* d, int n, int mode, int scale)
{
    return toSixteen(a, d, n, mode, scale, powerOfTwo32(scale));
}
inline qvrStatus qvrsConvert_64f16s_Sfs(const double* a, int16_t* d, int n, int mode, int scale)
{
    return toSixteen(a, d, n, mode, scale, powerOfTwo64(scale));
}

template<class T> qvrStatus normalize(const T* __restrict a, T* __restrict d, int n, T sub, T div)
{
    const T factor = 1 / div;
    QVR_EACH d[i] = (a[i] - sub) * factor;
    return qvrOk;
}
inline qvrStatus qvrsNormalize_32f(const float* a, float* d, int n, float sub, float div)
{
    return normalize(a, d, n, sub, div);
}
inline qvrStatus qvrsNormalize_64f(const double* a, double* d, int n, double sub, double div)
{
    return normalize(a, d, n, sub, div);
}

inline qvrStatus qvrsSplitScaled_16s32f_D2L(const int16_t* a, float** d, int channels, int n)
{
    for (int c = 0; c < channels; c++) {
        float* __restrict row = d[c];
        const int16_t* __restrict source = a + c;
        QVR_EACH
        {
            const float product = static_cast<float>(source[int64_t{i} * channels]) * 3.0518044e-5f;
            row[i] = product + 1.5259022e-5f;
        }
    }
    return qvrOk;
}

// ---- Fixed point ----------------------------------------------------------------------------------------------------

inline qvrStatus qvrsAdd_16s_Sfs(const int16_t* __restrict a, const int16_t* __restrict b, int16_t* __restrict d, int n,
                                 int scale)
{
    return eachScaled([=](int i) { return a[i] + b[i]; }, d, n, scale);
}
inline qvrStatus qvrsAdd_16u_ISfs(const uint16_t* __restrict a, uint16_t* __restrict d, int n, int scale)
{
    return eachScaled([=](int i) { return a[i] + d[i]; }, d, n, scale);
}
inline qvrStatus qvrsAddC_16u_ISfs(uint16_t c, uint16_t* d, int n, int scale)
{
    return eachScaled([=](int i) { return d[i] + c; }, d, n, scale);
}
inline qvrStatus qvrsSubC_16u_ISfs(uint16_t c, uint16_t* d, int n, int scale)
{
    return eachScaled([=](int i) { return d[i] > c ? d[i] - c : 0; }, d, n, scale);
}
inline qvrStatus qvrsAdd_16s_I(const int16_t* __restrict a, int16_t* __restrict d, int n)
{
    return eachScaled([=](int i) { return a[i] + d[i]; }, d, n, 0);
}
inline qvrStatus qvrsSubC_16s_I(int16_t c, int16_t* d, int n)
{
    return eachScaled([=](int i) { return d[i] - c; }, d, n, 0);
}
inline qvrStatus qvrsMulC_16s_I(int16_t c, int16_t* d, int n)
{
    return eachScaled([=](int i) { return d[i] * c; }, d, n, 0);
}
QVR_IN_PLACE(qvrsAbs_32s_I, int32_t, d[i] == INT32_MIN ? INT32_MAX : d[i] < 0 ? -d[i] : d[i])

// ---- Logic, thresholds, search, sorting -----------------------------------------------------------------------------

QVR_CONSTANT(qvrsAndC_16u, uint16_t, uint16_t, a[i] & c)
QVR_CONSTANT_IN_PLACE(qvrsAndC_16u_I, uint16_t, uint16_t, d[i] & c)
QVR_UNARY(qvrsOr_16u_I, uint16_t, uint16_t, d[i] | a[i])
QVR_CONSTANT(qvrsLShiftC_16u, uint16_t, int, c > 15 ? 0 : a[i] << c)
QVR_CONSTANT_IN_PLACE(qvrsLShiftC_16u_I, uint16_t, int, c > 15 ? 0 : d[i] << c)
QVR_CONSTANT_IN_PLACE(qvrsRShiftC_16u_I, uint16_t, int, c > 15 ? 0 : d[i] >> c)

inline qvrStatus qvrsReplaceC_16u(const uint16_t* __restrict a, uint16_t* __restrict d, int n, uint16_t from,
                                  uint16_t to)
{
    QVR_EACH d[i] = a[i] == from ? to : a[i];
    return qvrOk;
}
// A NaN among the elements or as level stays in place, and is replaced out of place.
inline qvrStatus qvrsThreshold_32f_I(float* d, int n, float level, int relation)
{
    if (relation == qvrCmpLess)
        QVR_EACH d[i] = level > d[i] ? level : d[i];
    else
        QVR_EACH d[i] = level < d[i] ? level : d[i];
    return qvrOk;
}
#define QVR_THRESHOLD(name, keeps, replaces)                                                                           \
    inline qvrStatus name(const float* __restrict a, float* __restrict d, int n, float level, float value)             \
    {                                                                                                                  \
        QVR_EACH d[i] = keeps ? a[i] : value;                                                                          \
        return qvrOk;                                                                                                  \
    }                                                                                                                  \
    inline qvrStatus name##_I(float* d, int n, float level, float value)                                               \
    {                                                                                                                  \
        QVR_EACH d[i] = replaces ? value : d[i];                                                                       \
        return qvrOk;                                                                                                  \
    }
QVR_THRESHOLD(qvrsThreshold_GTVal_32f, level >= a[i], d[i] > level)
QVR_THRESHOLD(qvrsThreshold_LTVal_32f, a[i] >= level, level > d[i])

template<class T> qvrStatus find(const T* __restrict a, int n, const T* __restrict what, int m, int32_t* at)
{
    *at = -1;
    for (int k = 0; m > 0 && k <= n - m; k++) {
        int i = 0;
        while (i < m && a[k + i] == what[i])
            i++;
        if (i == m) {
            *at = k;
            break;
        }
    }
    return qvrOk;
}
inline qvrStatus qvrsFind_8u(const uint8_t* a, int n, const uint8_t* what, int m, int32_t* at)
{
    return find(a, n, what, m, at);
}
inline qvrStatus qvrsFind_16u(const uint16_t* a, int n, const uint16_t* what, int m, int32_t* at)
{
    return find(a, n, what, m, at);
}
// Without NaN and zeros of both signs.
inline qvrStatus qvrsSortAscend_32f_I(float* d, int n)
{
    std::sort(d, d + n);
    return qvrOk;
}
inline qvrStatus qvrsSortAscend_64f_I(double* d, int n)
{
    std::sort(d, d + n);
    return qvrOk;
}

// ---- Reductions -----------------------------------------------------------------------------------------------------

// The loop from element 0 that replaces by what is strictly better.
template<class T, bool Largest> int placeOfBest(const T* a, int n)
{
    T best = a[0];
    int at = 0;
    for (int i = 1; i < n; i++)
        if (Largest ? a[i] > best : a[i] < best) {
            best = a[i];
            at = i;
        }
    return at;
}
// The same without the place, for the compiler's vectoriser.
template<class T, bool Largest> T best(const T* __restrict a, int n)
{
    T found = a[0];
    for (int i = 1; i < n; i++)
        found = (Largest ? a[i] > found : a[i] < found) ? a[i] : found;
    return found;
}
#define QVR_EXTREME(name, T, largest)                                                                                  \
    inline qvrStatus name(const T* a, int n, T* result)                                                                \
    {                                                                                                                  \
        *result = best<T, largest>(a, n);                                                                              \
        return qvrOk;                                                                                                  \
    }
#define QVR_EXTREMES(name, T)                                                                                          \
    inline qvrStatus name(const T* __restrict a, int n, T* least, T* most)                                             \
    {                                                                                                                  \
        T low = a[0], high = a[0];                                                                                     \
        for (int i = 1; i < n; i++) {                                                                                  \
            low = a[i] < low ? a[i] : low;                                                                             \
            high = a[i] > high ? a[i] : high;                                                                          \
        }                                                                                                              \
        *least = low;                                                                                                  \
        *most = high;                                                                                                  \
        return qvrOk;                                                                                                  \
    }
#define QVR_INDEXED(name, largest)                                                                                     \
    inline qvrStatus name(const float* a, int n, float* result, int32_t* index)                                        \
    {                                                                                                                  \
        *index = placeOfBest<float, largest>(a, n);                                                                    \
        *result = a[*index];                                                                                           \
        return qvrOk;                                                                                                  \
    }
QVR_EXTREME(qvrsMin_16s, int16_t, false)
QVR_EXTREME(qvrsMax_16s, int16_t, true)
QVR_EXTREME(qvrsMin_32f, float, false)
QVR_EXTREME(qvrsMax_32f, float, true)
QVR_EXTREME(qvrsMax_64f, double, true)
QVR_EXTREMES(qvrsMinMax_16s, int16_t)
QVR_EXTREMES(qvrsMinMax_16u, uint16_t)
QVR_EXTREMES(qvrsMinMax_32f, float)
QVR_INDEXED(qvrsMinIndx_32f, false)
QVR_INDEXED(qvrsMaxIndx_32f, true)

inline int32_t scaledSum(Wide total, int scale)
{
    if (scale >= 0)
        return scale >= 49 ? 0 : saturated32(divideHalfEven(total, Wide{1} << scale));
    return saturated32(total * (Wide{1} << (scale > -40 ? -scale : 40)));
}
inline int16_t scaledMean16(Wide total, int n, int scale)
{
    const double average = static_cast<double>(total) / n;
    const double factor = scale >= 1023    ? 0
                          : scale <= -1024 ? std::numeric_limits<double>::infinity()
                                           : std::ldexp(1.0, -scale);
    const double x = average == 0 ? 0 : average * factor;
    return static_cast<int16_t>(std::nearbyint(std::clamp(x, -32768.0, 32767.0)));
}
inline int32_t scaledMean32(Wide total, int n, int scale)
{
    const Wide rounded = divideHalfEven(total, n);
    if (scale >= 0)
        return scale > 31 ? 0 : saturated32(divideHalfEven(rounded, Wide{1} << scale));
    if (scale >= -31 && total == saturated32(total))
        return saturated32(divideHalfEven(total * (Wide{1} << -scale), n));
    return saturated32(rounded * (Wide{1} << (scale > -40 ? -scale : 40)));
}
inline qvrStatus qvrsSum_16s32s_Sfs(const int16_t* a, int n, int32_t* sum, int scale)
{
    *sum = scaledSum(exactSum(a, n), scale);
    return qvrOk;
}
inline qvrStatus qvrsMean_16s_Sfs(const int16_t* a, int n, int16_t* mean, int scale)
{
    *mean = scaledMean16(exactSum(a, n), n, scale);
    return qvrOk;
}
inline qvrStatus qvrsMean_32s_Sfs(const int32_t* a, int n, int32_t* mean, int scale)
{
    *mean = scaledMean32(exactSum(a, n), n, scale);
    return qvrOk;
}
template<class T> qvrStatus meanOf(const T* a, int n, T* mean)
{
    long double sum = 0;
    QVR_EACH sum += a[i];
    *mean = static_cast<T>(sum / n);
    return qvrOk;
}
inline qvrStatus qvrsMean_32f(const float* a, int n, float* mean)
{
    return meanOf(a, n, mean);
}
inline qvrStatus qvrsMean_64f(const double* a, int n, double* mean)
{
    return meanOf(a, n, mean);
}
inline qvrStatus qvrsStdDev_32f(const float* a, int n, float* deviation)
{
    long double sum = 0, squares = 0;
    QVR_EACH sum += a[i];
    QVR_EACH squares += (a[i] - sum / n) * (a[i] - sum / n);
    *deviation = static_cast<float>(std::sqrt(squares / (n - 1)));
    return qvrOk;
}
// While sums stay within 2^24, where every order gives the same.
inline qvrStatus qvrsSumWindow_16s32f(const int16_t* __restrict a, float* __restrict d, int n, int mask)
{
    float w = 0;
    for (int i = 0; i < mask; i++)
        w += a[i];
    d[0] = w;
    for (int i = 1; i < n; i++)
        d[i] = w += static_cast<float>(a[i - 1 + mask] - a[i - 1]);
    return qvrOk;
}

// ---- Waveforms and columns ------------------------------------------------------------------------------------------

inline qvrStatus qvrsZeroCrossing_32f(const float* __restrict a, int n, float* result, int type)
{
    uint32_t count = 0;
    if (type == qvrZcProduct)
        for (int i = 0; i < n - 1; i++)
            count += a[i + 1] * a[i] < 0;
    else if (type == qvrZcSignBit)
        for (int i = 0; i < n - 1; i++)
            count += std::signbit(a[i + 1]) != std::signbit(a[i]);
    else
        for (int i = 0; i < n - 1; i++)
            count += std::abs(((a[i + 1] > 0) - (a[i + 1] < 0)) - ((a[i] > 0) - (a[i] < 0)));
    *result = type == qvrZcSignStep ? static_cast<float>(count) * 0.5f : static_cast<float>(count);
    return qvrOk;
}
// A NaN is above zero.
inline qvrStatus qvrsSignChangeRate_Count0_32f(const float* a, int n, float* result)
{
    const auto sign = [](float x) { return x == 0 ? 0 : x < 0 ? -1 : 1; };
    float sum = 0;
    for (int i = 1; i < n; i++)
        sum += static_cast<float>(std::abs(sign(a[i]) - sign(a[i - 1])));
    *result = sum * 0.5f;
    return qvrOk;
}
inline qvrStatus qvrsCompensateOffset_32f(const float* a, float* d, int n, float* last, float y, float factor)
{
    QVR_EACH
    {
        y *= factor;
        if (i > 0) {
            const float step = a[i] - a[i - 1];
            y += step;
        }
        d[i] = y;
    }
    *last = a[n];
    return qvrOk;
}
inline qvrStatus qvrsCompensateOffset_32f_I(float* d, int n, float* last, float y, float factor)
{
    float before = *last;
    QVR_EACH
    {
        const float x = d[i], difference = x - (i == 0 ? before : y), decayed = (i == 0 ? y : before) * factor;
        d[i] = y = decayed + difference;
        before = x;
    }
    *last = before;
    return qvrOk;
}
inline qvrStatus qvrsFindPeaks_32f8u(const float*, uint8_t*, int, int, int)
{
    return qvrOk;
}
inline qvrStatus qvrsCopyColumn_Indirect_16s_D2(const int16_t* a, int, int stride, int16_t* d, const int32_t* index,
                                                int n, int to, int rows)
{
    for (int r = 0; r < rows; r++)
        QVR_EACH d[r * to + i] = a[r * stride + index[i]];
    return qvrOk;
}
inline qvrStatus qvrsCopyColumn_Indirect_16s_D2L(const int16_t** a, int, int16_t** d, const int32_t* index, int n,
                                                 int rows)
{
    for (int r = 0; r < rows; r++)
        QVR_EACH d[r][i] = a[r][index[i]];
    return qvrOk;
}

#undef QVR_EACH
#undef QVR_BINARY
#undef QVR_UNARY
#undef QVR_IN_PLACE
#undef QVR_CONSTANT
#undef QVR_CONSTANT_IN_PLACE
#undef QVR_BOTH
#undef QVR_THRESHOLD
#undef QVR_EXTREME
#undef QVR_EXTREMES
#undef QVR_INDEXED

} // namespace
} // namespace model

#endif
