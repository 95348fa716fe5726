// What a programmer writes instead: plain loops with the exports' prototypes, left to the compiler's vectoriser.
// Compiled once for each slot's level.
#include <math.h>

#include "bench/peers.h"

// Separate arrays are promised to the compiler, which spares it the test for overlap.
#define RESTRICT __restrict

namespace {

#define BINARY(name, T, formula)                                                                                       \
    qvrStatus name(const T* RESTRICT a, const T* RESTRICT b, T* RESTRICT d, int n)                                     \
    {                                                                                                                  \
        for (int i = 0; i < n; i++)                                                                                    \
            d[i] = formula;                                                                                            \
        return 0;                                                                                                      \
    }
#define IN_PLACE_FROM(name, T, formula)                                                                                \
    qvrStatus name(const T* RESTRICT a, T* RESTRICT d, int n)                                                          \
    {                                                                                                                  \
        for (int i = 0; i < n; i++)                                                                                    \
            d[i] = formula;                                                                                            \
        return 0;                                                                                                      \
    }
#define UNARY(name, A, D, formula)                                                                                     \
    qvrStatus name(const A* RESTRICT a, D* RESTRICT d, int n)                                                          \
    {                                                                                                                  \
        for (int i = 0; i < n; i++)                                                                                    \
            d[i] = formula;                                                                                            \
        return 0;                                                                                                      \
    }
#define IN_PLACE(name, T, formula)                                                                                     \
    qvrStatus name(T* RESTRICT d, int n)                                                                               \
    {                                                                                                                  \
        for (int i = 0; i < n; i++)                                                                                    \
            d[i] = formula;                                                                                            \
        return 0;                                                                                                      \
    }
#define CONSTANT(name, T, formula)                                                                                     \
    qvrStatus name(const T* RESTRICT a, T val, T* RESTRICT d, int n)                                                   \
    {                                                                                                                  \
        for (int i = 0; i < n; i++)                                                                                    \
            d[i] = formula;                                                                                            \
        return 0;                                                                                                      \
    }
#define CONSTANT_IN_PLACE(name, T, formula)                                                                            \
    qvrStatus name(T val, T* RESTRICT d, int n)                                                                        \
    {                                                                                                                  \
        for (int i = 0; i < n; i++)                                                                                    \
            d[i] = formula;                                                                                            \
        return 0;                                                                                                      \
    }

BINARY(qvrsAdd_32f, float, a[i] + b[i])
BINARY(qvrsSub_32f, float, b[i] - a[i])
BINARY(qvrsMul_32f, float, a[i] * b[i])
BINARY(qvrsDiv_32f, float, b[i] / a[i])
IN_PLACE_FROM(qvrsAdd_32f_I, float, d[i] + a[i])
IN_PLACE_FROM(qvrsSub_32f_I, float, d[i] - a[i])
IN_PLACE_FROM(qvrsMul_32f_I, float, d[i] * a[i])
IN_PLACE_FROM(qvrsMul_64f_I, double, d[i] * a[i])
IN_PLACE_FROM(qvrsMinEvery_32f_I, float, a[i] < d[i] ? a[i] : d[i])
IN_PLACE_FROM(qvrsMaxEvery_32f_I, float, a[i] > d[i] ? a[i] : d[i])

CONSTANT(qvrsAddC_32f, float, a[i] + val)
CONSTANT(qvrsSubC_32f, float, a[i] - val)
CONSTANT(qvrsSubCRev_32f, float, val - a[i])
CONSTANT(qvrsMulC_32f, float, a[i] * val)
CONSTANT(qvrsDivCRev_32f, float, val / a[i])
CONSTANT_IN_PLACE(qvrsAddC_32f_I, float, d[i] + val)
CONSTANT_IN_PLACE(qvrsAddC_64f_I, double, d[i] + val)
CONSTANT_IN_PLACE(qvrsSubC_32f_I, float, d[i] - val)
CONSTANT_IN_PLACE(qvrsMulC_32f_I, float, d[i] * val)
CONSTANT_IN_PLACE(qvrsMulC_64f_I, double, d[i] * val)
CONSTANT_IN_PLACE(qvrsDivCRev_32f_I, float, val / d[i])

qvrStatus qvrsDivC_32f(const float* a, float val, float* d, int n)
{
    return qvrsMulC_32f(a, 1 / val, d, n);
}
qvrStatus qvrsDivC_32f_I(float val, float* d, int n)
{
    return qvrsMulC_32f_I(1 / val, d, n);
}

UNARY(qvrsAbs_32f, float, float, fabsf(a[i]))
UNARY(qvrsSqrt_32f, float, float, sqrtf(a[i]))
UNARY(qvrsCeil_32f, float, float, ceilf(a[i]))
UNARY(qvrsFloor_32f, float, float, floorf(a[i]))
IN_PLACE(qvrsAbs_32f_I, float, fabsf(d[i]))
IN_PLACE(qvrsSqr_32f_I, float, d[i] * d[i])

qvrStatus qvrsMul_64fc(const qvr64fc* RESTRICT a, const qvr64fc* RESTRICT b, qvr64fc* RESTRICT d, int n)
{
    for (int i = 0; i < n; i++) {
        d[i].re = a[i].re * b[i].re - a[i].im * b[i].im;
        d[i].im = a[i].re * b[i].im + a[i].im * b[i].re;
    }
    return 0;
}

// The compiler makes the library's memory functions of these.
qvrStatus qvrsSet_8u(uint8_t val, uint8_t* d, int n)
{
    for (int i = 0; i < n; i++)
        d[i] = val;
    return 0;
}
qvrStatus qvrsSet_32s(int32_t val, int32_t* d, int n)
{
    for (int i = 0; i < n; i++)
        d[i] = val;
    return 0;
}
qvrStatus qvrsSet_32f(float val, float* d, int n)
{
    for (int i = 0; i < n; i++)
        d[i] = val;
    return 0;
}
IN_PLACE(qvrsZero_32f, float, 0)
IN_PLACE(qvrsZero_64f, double, 0)
UNARY(qvrsCopy_32f, float, float, a[i])
UNARY(qvrsCopy_64f, double, double, a[i])

inline double clampTo(double x, double low, double high)
{
    return x < low ? low : x > high ? high : x;
}
inline float clampTo(float x, float low, float high)
{
    return x < low ? low : x > high ? high : x;
}

UNARY(qvrsConvert_16s32f, int16_t, float, static_cast<float>(a[i]))
UNARY(qvrsConvert_32f64f, float, double, static_cast<double>(a[i]))
UNARY(qvrsConvert_64f32f, double, float,
      static_cast<float>(clampTo(a[i], -3.4028234663852886e38, 3.4028234663852886e38)))
UNARY(qvrsConvert_32s16s, int32_t, int16_t, static_cast<int16_t>(a[i] < -32768 ? -32768 : a[i] > 32767 ? 32767 : a[i]))

qvrStatus qvrsConvert_16s64f_Sfs(const int16_t* RESTRICT a, double* RESTRICT d, int n, int scaleFactor)
{
    const double factor = ldexp(1, -scaleFactor);
    for (int i = 0; i < n; i++)
        d[i] = a[i] * factor;
    return 0;
}

template<class T> qvrStatus to16(const T* RESTRICT a, int16_t* RESTRICT d, int n, int rndMode, int scaleFactor)
{
    const T factor = static_cast<T>(ldexp(1, -scaleFactor));
    if (rndMode == qvrRoundTowardZero)
        for (int i = 0; i < n; i++)
            d[i] = static_cast<int16_t>(clampTo(a[i] * factor, -32768, 32767));
    else if (rndMode == qvrRoundNearest)
        for (int i = 0; i < n; i++)
            d[i] = static_cast<int16_t>(__builtin_rint(clampTo(a[i] * factor, -32768, 32767)));
    else
        for (int i = 0; i < n; i++)
            d[i] = static_cast<int16_t>(__builtin_round(clampTo(a[i] * factor, -32768, 32767)));
    return 0;
}
qvrStatus qvrsConvert_32f16s_Sfs(const float* a, int16_t* d, int n, int rndMode, int scaleFactor)
{
    return to16(a, d, n, rndMode, scaleFactor);
}
qvrStatus qvrsConvert_64f16s_Sfs(const double* a, int16_t* d, int n, int rndMode, int scaleFactor)
{
    return to16(a, d, n, rndMode, scaleFactor);
}

template<class T> qvrStatus normalize(const T* RESTRICT a, T* RESTRICT d, int n, T sub, T div)
{
    const T factor = 1 / div;
    for (int i = 0; i < n; i++)
        d[i] = (a[i] - sub) * factor;
    return 0;
}
qvrStatus qvrsNormalize_32f(const float* a, float* d, int n, float sub, float div)
{
    return normalize(a, d, n, sub, div);
}
qvrStatus qvrsNormalize_64f(const double* a, double* d, int n, double sub, double div)
{
    return normalize(a, d, n, sub, div);
}

constexpr float kScale = 2.0f / 65535, kShift = 1.0f / 65535;

qvrStatus qvrsSplitScaled_16s32f_D2L(const int16_t* a, float** d, int channels, int n)
{
    for (int c = 0; c < channels; c++) {
        float* RESTRICT row = d[c];
        const int16_t* RESTRICT source = a + c;
        for (int i = 0; i < n; i++)
            row[i] = static_cast<float>(source[int64_t{i} * channels]) * kScale + kShift;
    }
    return 0;
}
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
    QVR_PEER(qvrsAdd_32f),
    QVR_PEER(qvrsSub_32f),
    QVR_PEER(qvrsMul_32f),
    QVR_PEER(qvrsDiv_32f),
    QVR_PEER(qvrsAdd_32f_I),
    QVR_PEER(qvrsSub_32f_I),
    QVR_PEER(qvrsMul_32f_I),
    QVR_PEER(qvrsMul_64f_I),
    QVR_PEER(qvrsMul_64fc),
    QVR_PEER(qvrsMinEvery_32f_I),
    QVR_PEER(qvrsMaxEvery_32f_I),
    QVR_PEER(qvrsAddC_32f),
    QVR_PEER(qvrsSubC_32f),
    QVR_PEER(qvrsSubCRev_32f),
    QVR_PEER(qvrsMulC_32f),
    QVR_PEER(qvrsDivC_32f),
    QVR_PEER(qvrsDivCRev_32f),
    QVR_PEER(qvrsAddC_32f_I),
    QVR_PEER(qvrsAddC_64f_I),
    QVR_PEER(qvrsSubC_32f_I),
    QVR_PEER(qvrsMulC_32f_I),
    QVR_PEER(qvrsMulC_64f_I),
    QVR_PEER(qvrsDivC_32f_I),
    QVR_PEER(qvrsDivCRev_32f_I),
    QVR_PEER(qvrsAbs_32f),
    QVR_PEER(qvrsAbs_32f_I),
    QVR_PEER(qvrsSqr_32f_I),
    QVR_PEER(qvrsSqrt_32f),
    QVR_PEER(qvrsCeil_32f),
    QVR_PEER(qvrsFloor_32f),
    QVR_PEER(qvrsSet_8u),
    QVR_PEER(qvrsSet_32s),
    QVR_PEER(qvrsSet_32f),
    QVR_PEER(qvrsZero_32f),
    QVR_PEER(qvrsZero_64f),
    QVR_PEER(qvrsCopy_32f),
    QVR_PEER(qvrsCopy_64f),
    QVR_PEER(qvrsConvert_16s32f),
    QVR_PEER(qvrsConvert_32f64f),
    QVR_PEER(qvrsConvert_64f32f),
    QVR_PEER(qvrsConvert_32s16s),
    QVR_PEER(qvrsConvert_16s64f_Sfs),
    QVR_PEER(qvrsConvert_32f16s_Sfs),
    QVR_PEER(qvrsConvert_64f16s_Sfs),
    QVR_PEER(qvrsNormalize_32f),
    QVR_PEER(qvrsNormalize_64f),
    QVR_PEER(qvrsSplitScaled_16s32f_D2L),
    {"qvrsSplitScaled_16s32f_D2L/by frames", reinterpret_cast<void (*)()>(splitByFrames)},
    {nullptr, nullptr},
};

} // namespace bench
