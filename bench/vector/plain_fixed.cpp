// Plain loops beside the fixed-point, reduction, logic, sorting and waveform functions, left to the compiler's
// vectoriser. Compiled once for each slot's level.
#include <math.h>

#include <algorithm>

#include "bench/peers.h"

#define RESTRICT __restrict

namespace {

template<class T> T saturate(int64_t x)
{
    constexpr int64_t low = T(-1) < 0 ? -(int64_t{1} << (8 * sizeof(T) - 1)) : 0;
    constexpr int64_t high = low + (int64_t{1} << 8 * sizeof(T)) - 1;
    return static_cast<T>(x < low ? low : x > high ? high : x);
}
template<class T> T saturate(int x)
{
    constexpr int low = T(-1) < 0 ? -32768 : 0, high = low + 65535;
    return static_cast<T>(x < low ? low : x > high ? high : x);
}

// t / 2^s, half to even; t * 2^-s for a negative s.
template<class T, class Sum> void scaledLoop(Sum sum, T* RESTRICT d, int n, int s)
{
    if (s == 0)
        for (int i = 0; i < n; i++)
            d[i] = saturate<T>(sum(i));
    else if (s > 0)
        for (int i = 0; i < n; i++) {
            const int t = sum(i);
            d[i] = static_cast<T>((t + (1 << (s - 1)) - 1 + ((t >> s) & 1)) >> s);
        }
    else if (s >= -15)
        for (int i = 0; i < n; i++)
            d[i] = saturate<T>(static_cast<int64_t>(sum(i)) * (1 << -s));
    else
        for (int i = 0; i < n; i++)
            d[i] = sum(i) == 0 ? T(0) : saturate<T>(sum(i) > 0 ? 65535 : -65535);
}

qvrStatus qvrsAdd_16s_Sfs(const int16_t* RESTRICT a, const int16_t* RESTRICT b, int16_t* RESTRICT d, int n, int s)
{
    scaledLoop([=](int i) { return a[i] + b[i]; }, d, n, s);
    return 0;
}
qvrStatus qvrsAdd_16u_ISfs(const uint16_t* RESTRICT a, uint16_t* RESTRICT d, int n, int s)
{
    scaledLoop([=](int i) { return a[i] + d[i]; }, d, n, s);
    return 0;
}
qvrStatus qvrsAddC_16u_ISfs(uint16_t val, uint16_t* RESTRICT d, int n, int s)
{
    scaledLoop([=](int i) { return d[i] + val; }, d, n, s);
    return 0;
}
qvrStatus qvrsSubC_16u_ISfs(uint16_t val, uint16_t* RESTRICT d, int n, int s)
{
    scaledLoop([=](int i) { return d[i] > val ? d[i] - val : 0; }, d, n, s);
    return 0;
}
qvrStatus qvrsAdd_16s_I(const int16_t* RESTRICT a, int16_t* RESTRICT d, int n)
{
    scaledLoop([=](int i) { return a[i] + d[i]; }, d, n, 0);
    return 0;
}
qvrStatus qvrsSubC_16s_I(int16_t val, int16_t* RESTRICT d, int n)
{
    scaledLoop([=](int i) { return d[i] - val; }, d, n, 0);
    return 0;
}
qvrStatus qvrsMulC_16s_I(int16_t val, int16_t* RESTRICT d, int n)
{
    scaledLoop([=](int i) { return d[i] * val; }, d, n, 0);
    return 0;
}
qvrStatus qvrsAbs_32s_I(int32_t* RESTRICT d, int n)
{
    for (int i = 0; i < n; i++)
        d[i] = d[i] == INT32_MIN ? INT32_MAX : d[i] < 0 ? -d[i] : d[i];
    return 0;
}

qvrStatus qvrsSum_16s32s_Sfs(const int16_t* RESTRICT a, int n, int32_t* sum, int s)
{
    int64_t t = 0;
    for (int i = 0; i < n; i++)
        t += a[i];
    *sum = saturate<int32_t>(s > 0 ? (t + (int64_t{1} << (s - 1)) - 1 + ((t >> s) & 1)) >> s : t);
    return 0;
}
qvrStatus qvrsMean_16s_Sfs(const int16_t* RESTRICT a, int n, int16_t* mean, int s)
{
    int64_t t = 0;
    for (int i = 0; i < n; i++)
        t += a[i];
    *mean = saturate<int16_t>(lrint(ldexp(static_cast<double>(t) / n, -s)));
    return 0;
}
qvrStatus qvrsMean_32s_Sfs(const int32_t* RESTRICT a, int n, int32_t* mean, int s)
{
    int64_t t = 0;
    for (int i = 0; i < n; i++)
        t += a[i];
    *mean = saturate<int32_t>(lrint(ldexp(static_cast<double>(t) / n, -s)));
    return 0;
}
// Four sums: the compiler may not reorder one.
template<class T> qvrStatus mean(const T* RESTRICT a, int n, T* result)
{
    double of[16] = {};
    int i = 0;
    for (; i + 16 <= n; i += 16)
        for (int k = 0; k < 16; k++)
            of[k] += a[i + k];
    for (; i < n; i++)
        of[0] += a[i];
    double sum = 0;
    for (double x : of)
        sum += x;
    *result = static_cast<T>(sum / n);
    return 0;
}
qvrStatus qvrsMean_32f(const float* a, int n, float* result)
{
    return mean(a, n, result);
}
qvrStatus qvrsMean_64f(const double* a, int n, double* result)
{
    return mean(a, n, result);
}
qvrStatus qvrsStdDev_32f(const float* RESTRICT a, int n, float* result)
{
    double s1[8] = {}, s2[8] = {};
    int i = 0;
    for (; i + 8 <= n; i += 8)
        for (int k = 0; k < 8; k++) {
            const double x = a[i + k];
            s1[k] += x;
            s2[k] += x * x;
        }
    for (; i < n; i++) {
        s1[0] += a[i];
        s2[0] += static_cast<double>(a[i]) * a[i];
    }
    double sum = 0, squares = 0;
    for (int k = 0; k < 8; k++) {
        sum += s1[k];
        squares += s2[k];
    }
    const double v = squares * n - sum * sum, m = n;
    *result = static_cast<float>(v > 0 ? sqrt(v / ((m - 1) * m)) : 0);
    return 0;
}

#define EXTREME(name, T, op)                                                                                           \
    qvrStatus name(const T* RESTRICT a, int n, T* result)                                                              \
    {                                                                                                                  \
        T best = a[0];                                                                                                 \
        for (int i = 1; i < n; i++)                                                                                    \
            best = a[i] op best ? a[i] : best;                                                                         \
        *result = best;                                                                                                \
        return 0;                                                                                                      \
    }
#define BOTH(name, T)                                                                                                  \
    qvrStatus name(const T* RESTRICT a, int n, T* least, T* most)                                                      \
    {                                                                                                                  \
        T low = a[0], high = a[0];                                                                                     \
        for (int i = 1; i < n; i++) {                                                                                  \
            low = a[i] < low ? a[i] : low;                                                                             \
            high = a[i] > high ? a[i] : high;                                                                          \
        }                                                                                                              \
        *least = low;                                                                                                  \
        *most = high;                                                                                                  \
        return 0;                                                                                                      \
    }
#define INDEXED(name, op)                                                                                              \
    qvrStatus name(const float* RESTRICT a, int n, float* result, int32_t* index)                                      \
    {                                                                                                                  \
        float best = a[0];                                                                                             \
        int at = 0;                                                                                                    \
        for (int i = 1; i < n; i++)                                                                                    \
            if (a[i] op best) {                                                                                        \
                best = a[i];                                                                                           \
                at = i;                                                                                                \
            }                                                                                                          \
        *result = best;                                                                                                \
        *index = at;                                                                                                   \
        return 0;                                                                                                      \
    }
EXTREME(qvrsMin_16s, int16_t, <)
EXTREME(qvrsMax_16s, int16_t, >)
EXTREME(qvrsMin_32f, float, <)
EXTREME(qvrsMax_32f, float, >)
EXTREME(qvrsMax_64f, double, >)
BOTH(qvrsMinMax_16s, int16_t)
BOTH(qvrsMinMax_16u, uint16_t)
BOTH(qvrsMinMax_32f, float)
INDEXED(qvrsMinIndx_32f, <)
INDEXED(qvrsMaxIndx_32f, >)

qvrStatus qvrsSumWindow_16s32f(const int16_t* RESTRICT a, float* RESTRICT d, int n, int mask)
{
    float w = 0;
    for (int i = 0; i < mask; i++)
        w += a[i];
    d[0] = w;
    for (int i = 1; i < n; i++)
        d[i] = w += static_cast<float>(a[i - 1 + mask] - a[i - 1]);
    return 0;
}

#define WORDS_IN_PLACE(name, V, formula)                                                                               \
    qvrStatus name(V val, uint16_t* RESTRICT d, int n)                                                                 \
    {                                                                                                                  \
        for (int i = 0; i < n; i++)                                                                                    \
            d[i] = static_cast<uint16_t>(formula);                                                                     \
        return 0;                                                                                                      \
    }
#define WORDS(name, V, formula)                                                                                        \
    qvrStatus name(const uint16_t* RESTRICT a, V val, uint16_t* RESTRICT d, int n)                                     \
    {                                                                                                                  \
        for (int i = 0; i < n; i++)                                                                                    \
            d[i] = static_cast<uint16_t>(formula);                                                                     \
        return 0;                                                                                                      \
    }
WORDS(qvrsAndC_16u, uint16_t, a[i] & val)
WORDS(qvrsLShiftC_16u, int, a[i] << val)
WORDS_IN_PLACE(qvrsAndC_16u_I, uint16_t, d[i] & val)
WORDS_IN_PLACE(qvrsLShiftC_16u_I, int, d[i] << val)
WORDS_IN_PLACE(qvrsRShiftC_16u_I, int, d[i] >> val)

qvrStatus qvrsOr_16u_I(const uint16_t* RESTRICT a, uint16_t* RESTRICT d, int n)
{
    for (int i = 0; i < n; i++)
        d[i] |= a[i];
    return 0;
}
qvrStatus qvrsReplaceC_16u(const uint16_t* RESTRICT a, uint16_t* RESTRICT d, int n, uint16_t from, uint16_t to)
{
    for (int i = 0; i < n; i++)
        d[i] = a[i] == from ? to : a[i];
    return 0;
}
qvrStatus qvrsThreshold_32f_I(float* RESTRICT d, int n, float level, int relOp)
{
    if (relOp == qvrCmpLess)
        for (int i = 0; i < n; i++)
            d[i] = level > d[i] ? level : d[i];
    else
        for (int i = 0; i < n; i++)
            d[i] = level < d[i] ? level : d[i];
    return 0;
}
#define THRESHOLD(name, condition)                                                                                     \
    qvrStatus name(const float* RESTRICT a, float* RESTRICT d, int n, float level, float value)                        \
    {                                                                                                                  \
        for (int i = 0; i < n; i++)                                                                                    \
            d[i] = condition ? value : a[i];                                                                           \
        return 0;                                                                                                      \
    }
#define THRESHOLD_IN_PLACE(name, condition)                                                                            \
    qvrStatus name(float* RESTRICT d, int n, float level, float value)                                                 \
    {                                                                                                                  \
        for (int i = 0; i < n; i++)                                                                                    \
            d[i] = condition ? value : d[i];                                                                           \
        return 0;                                                                                                      \
    }
THRESHOLD(qvrsThreshold_GTVal_32f, !(level >= a[i]))
THRESHOLD(qvrsThreshold_LTVal_32f, !(a[i] >= level))
THRESHOLD_IN_PLACE(qvrsThreshold_GTVal_32f_I, d[i] > level)
THRESHOLD_IN_PLACE(qvrsThreshold_LTVal_32f_I, level > d[i])

template<class T> qvrStatus find(const T* RESTRICT a, int n, const T* RESTRICT sequence, int m, int32_t* index)
{
    for (int k = 0; k <= n - m; k++) {
        int i = 0;
        while (i < m && a[k + i] == sequence[i])
            i++;
        if (i == m) {
            *index = k;
            return 0;
        }
    }
    *index = -1;
    return 0;
}
qvrStatus qvrsFind_8u(const uint8_t* a, int n, const uint8_t* sequence, int m, int32_t* index)
{
    return find(a, n, sequence, m, index);
}
qvrStatus qvrsFind_16u(const uint16_t* a, int n, const uint16_t* sequence, int m, int32_t* index)
{
    return find(a, n, sequence, m, index);
}

qvrStatus qvrsSortAscend_32f_I(float* d, int n)
{
    std::sort(d, d + n);
    return 0;
}
qvrStatus qvrsSortAscend_64f_I(double* d, int n)
{
    std::sort(d, d + n);
    return 0;
}

int sign(float x)
{
    return (x > 0) - (x < 0);
}
qvrStatus qvrsZeroCrossing_32f(const float* RESTRICT a, int n, float* result, int type)
{
    int count = 0;
    if (type == qvrZcProduct)
        for (int i = 0; i < n - 1; i++)
            count += a[i + 1] * a[i] < 0;
    else if (type == qvrZcSignBit)
        for (int i = 0; i < n - 1; i++)
            count += signbit(a[i + 1]) != signbit(a[i]);
    else
        for (int i = 0; i < n - 1; i++)
            count += abs(sign(a[i + 1]) - sign(a[i]));
    *result = type == qvrZcSignStep ? static_cast<float>(count) * 0.5f : static_cast<float>(count);
    return 0;
}

} // namespace

namespace bench {

extern const PeerFunction QVR_PEER_PASTE(plain_vector_fixed_, QVR_BENCH_LEVEL)[] = {
    QVR_PEER(qvrsAdd_16s_Sfs),
    QVR_PEER(qvrsAdd_16u_ISfs),
    QVR_PEER(qvrsAddC_16u_ISfs),
    QVR_PEER(qvrsSubC_16u_ISfs),
    QVR_PEER(qvrsAdd_16s_I),
    QVR_PEER(qvrsSubC_16s_I),
    QVR_PEER(qvrsMulC_16s_I),
    QVR_PEER(qvrsAbs_32s_I),
    QVR_PEER(qvrsSum_16s32s_Sfs),
    QVR_PEER(qvrsMean_16s_Sfs),
    QVR_PEER(qvrsMean_32s_Sfs),
    QVR_PEER(qvrsMean_32f),
    QVR_PEER(qvrsMean_64f),
    QVR_PEER(qvrsStdDev_32f),
    QVR_PEER(qvrsMin_16s),
    QVR_PEER(qvrsMax_16s),
    QVR_PEER(qvrsMin_32f),
    QVR_PEER(qvrsMax_32f),
    QVR_PEER(qvrsMax_64f),
    QVR_PEER(qvrsMinMax_16s),
    QVR_PEER(qvrsMinMax_16u),
    QVR_PEER(qvrsMinMax_32f),
    QVR_PEER(qvrsMinIndx_32f),
    QVR_PEER(qvrsMaxIndx_32f),
    QVR_PEER(qvrsSumWindow_16s32f),
    QVR_PEER(qvrsAndC_16u),
    QVR_PEER(qvrsAndC_16u_I),
    QVR_PEER(qvrsOr_16u_I),
    QVR_PEER(qvrsLShiftC_16u),
    QVR_PEER(qvrsLShiftC_16u_I),
    QVR_PEER(qvrsRShiftC_16u_I),
    QVR_PEER(qvrsReplaceC_16u),
    QVR_PEER(qvrsThreshold_32f_I),
    QVR_PEER(qvrsThreshold_GTVal_32f),
    QVR_PEER(qvrsThreshold_GTVal_32f_I),
    QVR_PEER(qvrsThreshold_LTVal_32f),
    QVR_PEER(qvrsThreshold_LTVal_32f_I),
    QVR_PEER(qvrsFind_8u),
    QVR_PEER(qvrsFind_16u),
    QVR_PEER(qvrsSortAscend_32f_I),
    QVR_PEER(qvrsSortAscend_64f_I),
    QVR_PEER(qvrsZeroCrossing_32f),
    {nullptr, nullptr},
};

} // namespace bench
