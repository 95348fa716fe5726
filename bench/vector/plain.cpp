// What a programmer writes instead: plain loops with the exports' prototypes, left to the compiler's vectoriser.
// Compiled once for each slot's level. The models are such loops, but where one tells a status element by element or
// sums exactly.
#include <math.h>

#include "bench/peers.h"
#include "model/vector.h"

#define RESTRICT __restrict

namespace {

qvrStatus qvrsDiv_32f(const float* RESTRICT a, const float* RESTRICT b, float* RESTRICT d, int n)
{
    for (int i = 0; i < n; i++)
        d[i] = b[i] / a[i];
    return 0;
}
qvrStatus qvrsDivCRev_32f(const float* RESTRICT a, float val, float* RESTRICT d, int n)
{
    for (int i = 0; i < n; i++)
        d[i] = val / a[i];
    return 0;
}
qvrStatus qvrsDivCRev_32f_I(float val, float* RESTRICT d, int n)
{
    for (int i = 0; i < n; i++)
        d[i] = val / d[i];
    return 0;
}
qvrStatus qvrsSqrt_32f(const float* RESTRICT a, float* RESTRICT d, int n)
{
    for (int i = 0; i < n; i++)
        d[i] = sqrtf(a[i]);
    return 0;
}

template<class T> T clampTo(int64_t x)
{
    using L = std::numeric_limits<T>;
    return static_cast<T>(x < L::min() ? L::min() : x > L::max() ? L::max() : x);
}
qvrStatus qvrsSum_16s32s_Sfs(const int16_t* RESTRICT a, int n, int32_t* sum, int s)
{
    int64_t t = 0;
    for (int i = 0; i < n; i++)
        t += a[i];
    *sum = clampTo<int32_t>(s > 0 ? (t + (int64_t{1} << (s - 1)) - 1 + ((t >> s) & 1)) >> s : t);
    return 0;
}
qvrStatus qvrsMean_16s_Sfs(const int16_t* RESTRICT a, int n, int16_t* mean, int s)
{
    int64_t t = 0;
    for (int i = 0; i < n; i++)
        t += a[i];
    *mean = clampTo<int16_t>(lrint(ldexp(static_cast<double>(t) / n, -s)));
    return 0;
}
qvrStatus qvrsMean_32s_Sfs(const int32_t* RESTRICT a, int n, int32_t* mean, int s)
{
    int64_t t = 0;
    for (int i = 0; i < n; i++)
        t += a[i];
    *mean = clampTo<int32_t>(lrint(ldexp(static_cast<double>(t) / n, -s)));
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

constexpr float kScale = 2.0f / 65535, kShift = 1.0f / 65535;

qvrStatus splitByFrames(const int16_t* a, float** d, int channels, int n)
{
    for (int i = 0; i < n; i++)
        for (int c = 0; c < channels; c++)
            d[c][i] = static_cast<float>(*a++) * kScale + kShift;
    return 0;
}

} // namespace

namespace bench {

extern const PeerFunction QVR_PEER_PASTE(plain_vector_, QVR_BENCH_LEVEL)[] = {
    QVR_MODEL(qvrsAdd_32f),
    QVR_MODEL(qvrsSub_32f),
    QVR_MODEL(qvrsMul_32f),
    QVR_PEER(qvrsDiv_32f),
    QVR_MODEL(qvrsAdd_32f_I),
    QVR_MODEL(qvrsSub_32f_I),
    QVR_MODEL(qvrsMul_32f_I),
    QVR_MODEL(qvrsMul_64f_I),
    QVR_MODEL(qvrsMul_64fc),
    QVR_MODEL(qvrsMinEvery_32f_I),
    QVR_MODEL(qvrsMaxEvery_32f_I),
    QVR_MODEL(qvrsAddC_32f),
    QVR_MODEL(qvrsSubC_32f),
    QVR_MODEL(qvrsSubCRev_32f),
    QVR_MODEL(qvrsMulC_32f),
    QVR_MODEL(qvrsDivC_32f),
    QVR_PEER(qvrsDivCRev_32f),
    QVR_MODEL(qvrsAddC_32f_I),
    QVR_MODEL(qvrsAddC_64f_I),
    QVR_MODEL(qvrsSubC_32f_I),
    QVR_MODEL(qvrsMulC_32f_I),
    QVR_MODEL(qvrsMulC_64f_I),
    QVR_MODEL(qvrsDivC_32f_I),
    QVR_PEER(qvrsDivCRev_32f_I),
    QVR_MODEL(qvrsAbs_32f),
    QVR_MODEL(qvrsAbs_32f_I),
    QVR_MODEL(qvrsSqr_32f_I),
    QVR_PEER(qvrsSqrt_32f),
    QVR_MODEL(qvrsCeil_32f),
    QVR_MODEL(qvrsFloor_32f),
    QVR_MODEL(qvrsSet_8u),
    QVR_MODEL(qvrsSet_32s),
    QVR_MODEL(qvrsSet_32f),
    QVR_MODEL(qvrsZero_32f),
    QVR_MODEL(qvrsZero_64f),
    QVR_MODEL(qvrsCopy_32f),
    QVR_MODEL(qvrsCopy_64f),
    QVR_MODEL(qvrsConvert_16s32f),
    QVR_MODEL(qvrsConvert_32f64f),
    QVR_MODEL(qvrsConvert_64f32f),
    QVR_MODEL(qvrsConvert_32s16s),
    QVR_MODEL(qvrsConvert_16s64f_Sfs),
    QVR_MODEL(qvrsConvert_32f16s_Sfs),
    QVR_MODEL(qvrsConvert_64f16s_Sfs),
    QVR_MODEL(qvrsNormalize_32f),
    QVR_MODEL(qvrsNormalize_64f),
    QVR_MODEL(qvrsSplitScaled_16s32f_D2L),
    QVR_MODEL(qvrsAdd_16s_Sfs),
    QVR_MODEL(qvrsAdd_16u_ISfs),
    QVR_MODEL(qvrsAddC_16u_ISfs),
    QVR_MODEL(qvrsSubC_16u_ISfs),
    QVR_MODEL(qvrsAdd_16s_I),
    QVR_MODEL(qvrsSubC_16s_I),
    QVR_MODEL(qvrsMulC_16s_I),
    QVR_MODEL(qvrsAbs_32s_I),
    QVR_PEER(qvrsSum_16s32s_Sfs),
    QVR_PEER(qvrsMean_16s_Sfs),
    QVR_PEER(qvrsMean_32s_Sfs),
    QVR_PEER(qvrsMean_32f),
    QVR_PEER(qvrsMean_64f),
    QVR_PEER(qvrsStdDev_32f),
    QVR_MODEL(qvrsMin_16s),
    QVR_MODEL(qvrsMax_16s),
    QVR_MODEL(qvrsMin_32f),
    QVR_MODEL(qvrsMax_32f),
    QVR_MODEL(qvrsMax_64f),
    QVR_MODEL(qvrsMinMax_16s),
    QVR_MODEL(qvrsMinMax_16u),
    QVR_MODEL(qvrsMinMax_32f),
    QVR_MODEL(qvrsMinIndx_32f),
    QVR_MODEL(qvrsMaxIndx_32f),
    QVR_MODEL(qvrsSumWindow_16s32f),
    QVR_MODEL(qvrsAndC_16u),
    QVR_MODEL(qvrsAndC_16u_I),
    QVR_MODEL(qvrsOr_16u_I),
    QVR_MODEL(qvrsLShiftC_16u),
    QVR_MODEL(qvrsLShiftC_16u_I),
    QVR_MODEL(qvrsRShiftC_16u_I),
    QVR_MODEL(qvrsReplaceC_16u),
    QVR_MODEL(qvrsThreshold_32f_I),
    QVR_MODEL(qvrsThreshold_GTVal_32f),
    QVR_MODEL(qvrsThreshold_GTVal_32f_I),
    QVR_MODEL(qvrsThreshold_LTVal_32f),
    QVR_MODEL(qvrsThreshold_LTVal_32f_I),
    QVR_MODEL(qvrsFind_8u),
    QVR_MODEL(qvrsFind_16u),
    QVR_MODEL(qvrsSortAscend_32f_I),
    QVR_MODEL(qvrsSortAscend_64f_I),
    QVR_MODEL(qvrsZeroCrossing_32f),
    {"qvrsSplitScaled_16s32f_D2L/by frames", reinterpret_cast<void (*)()>(splitByFrames)},
    {nullptr, nullptr},
};

} // namespace bench
