// Eigen's array expressions behind the exports' prototypes. Compiled for the widest level only: see bench/peers.h.
#include "bench/vector/eigen.h"

#include <complex>

namespace {

#define EXPRESSION(name, parameters, target, value)                                                                    \
    qvrStatus name parameters                                                                                          \
    {                                                                                                                  \
        target = value;                                                                                                \
        return 0;                                                                                                      \
    }

EXPRESSION(qvrsAdd_32f, (const float* a, const float* b, float* d, int n), out(d, n), in(a, n) + in(b, n))
EXPRESSION(qvrsSub_32f, (const float* a, const float* b, float* d, int n), out(d, n), in(b, n) - in(a, n))
EXPRESSION(qvrsMul_32f, (const float* a, const float* b, float* d, int n), out(d, n), in(a, n) * in(b, n))
EXPRESSION(qvrsDiv_32f, (const float* a, const float* b, float* d, int n), out(d, n), in(b, n) / in(a, n))
EXPRESSION(qvrsAdd_32f_I, (const float* a, float* d, int n), out(d, n), out(d, n) + in(a, n))
EXPRESSION(qvrsSub_32f_I, (const float* a, float* d, int n), out(d, n), out(d, n) - in(a, n))
EXPRESSION(qvrsMul_32f_I, (const float* a, float* d, int n), out(d, n), out(d, n) * in(a, n))
EXPRESSION(qvrsMul_64f_I, (const double* a, double* d, int n), out(d, n), out(d, n) * in(a, n))
EXPRESSION(qvrsMinEvery_32f_I, (const float* a, float* d, int n), out(d, n), out(d, n).min(in(a, n)))
EXPRESSION(qvrsMaxEvery_32f_I, (const float* a, float* d, int n), out(d, n), out(d, n).max(in(a, n)))
EXPRESSION(qvrsAddC_32f, (const float* a, float v, float* d, int n), out(d, n), in(a, n) + v)
EXPRESSION(qvrsSubC_32f, (const float* a, float v, float* d, int n), out(d, n), in(a, n) - v)
EXPRESSION(qvrsSubCRev_32f, (const float* a, float v, float* d, int n), out(d, n), v - in(a, n))
EXPRESSION(qvrsMulC_32f, (const float* a, float v, float* d, int n), out(d, n), in(a, n) * v)
EXPRESSION(qvrsDivC_32f, (const float* a, float v, float* d, int n), out(d, n), in(a, n) * (1 / v))
EXPRESSION(qvrsDivCRev_32f, (const float* a, float v, float* d, int n), out(d, n), v / in(a, n))
EXPRESSION(qvrsAddC_32f_I, (float v, float* d, int n), out(d, n), out(d, n) + v)
EXPRESSION(qvrsAddC_64f_I, (double v, double* d, int n), out(d, n), out(d, n) + v)
EXPRESSION(qvrsSubC_32f_I, (float v, float* d, int n), out(d, n), out(d, n) - v)
EXPRESSION(qvrsMulC_32f_I, (float v, float* d, int n), out(d, n), out(d, n) * v)
EXPRESSION(qvrsMulC_64f_I, (double v, double* d, int n), out(d, n), out(d, n) * v)
EXPRESSION(qvrsDivC_32f_I, (float v, float* d, int n), out(d, n), out(d, n) * (1 / v))
EXPRESSION(qvrsDivCRev_32f_I, (float v, float* d, int n), out(d, n), v / out(d, n))
EXPRESSION(qvrsAbs_32f, (const float* a, float* d, int n), out(d, n), in(a, n).abs())
EXPRESSION(qvrsAbs_32f_I, (float* d, int n), out(d, n), out(d, n).abs())
EXPRESSION(qvrsSqr_32f_I, (float* d, int n), out(d, n), out(d, n).square())
EXPRESSION(qvrsSqrt_32f, (const float* a, float* d, int n), out(d, n), in(a, n).sqrt())
EXPRESSION(qvrsCeil_32f, (const float* a, float* d, int n), out(d, n), in(a, n).ceil())
EXPRESSION(qvrsFloor_32f, (const float* a, float* d, int n), out(d, n), in(a, n).floor())
EXPRESSION(qvrsSet_32s, (int32_t v, int32_t* d, int n), out(d, n), v)
EXPRESSION(qvrsSet_32f, (float v, float* d, int n), out(d, n), v)
EXPRESSION(qvrsZero_32f, (float* d, int n), out(d, n), 0.0f)
EXPRESSION(qvrsZero_64f, (double* d, int n), out(d, n), 0.0)
EXPRESSION(qvrsCopy_32f, (const float* a, float* d, int n), out(d, n), in(a, n))
EXPRESSION(qvrsCopy_64f, (const double* a, double* d, int n), out(d, n), in(a, n))
EXPRESSION(qvrsConvert_16s32f, (const int16_t* a, float* d, int n), out(d, n), in(a, n).cast<float>())
EXPRESSION(qvrsConvert_32f64f, (const float* a, double* d, int n), out(d, n), in(a, n).cast<double>())
EXPRESSION(qvrsConvert_64f32f, (const double* a, float* d, int n), out(d, n),
           in(a, n).max(-3.4028234663852886e38).min(3.4028234663852886e38).cast<float>())
EXPRESSION(qvrsConvert_32s16s, (const int32_t* a, int16_t* d, int n), out(d, n),
           in(a, n).max(-32768).min(32767).cast<int16_t>())
EXPRESSION(qvrsNormalize_32f, (const float* a, float* d, int n, float s, float v), out(d, n), (in(a, n) - s) * (1 / v))
EXPRESSION(qvrsNormalize_64f, (const double* a, double* d, int n, double s, double v), out(d, n),
           (in(a, n) - s) * (1 / v))

qvrStatus qvrsMul_64fc(const qvr64fc* a, const qvr64fc* b, qvr64fc* d, int n)
{
    using C = std::complex<double>;
    out(reinterpret_cast<C*>(d), n) = in(reinterpret_cast<const C*>(a), n) * in(reinterpret_cast<const C*>(b), n);
    return 0;
}

template<class T> qvrStatus to16(const T* a, int16_t* d, int n, int rndMode, int scaleFactor)
{
    const auto limited = (in(a, n) * static_cast<T>(std::ldexp(1, -scaleFactor))).max(T(-32768)).min(T(32767));
    if (rndMode == qvrRoundTowardZero)
        out(d, n) = limited.template cast<int16_t>();
    else if (rndMode == qvrRoundNearest)
        out(d, n) = limited.rint().template cast<int16_t>();
    else
        out(d, n) = limited.round().template cast<int16_t>();
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

} // namespace

namespace bench {

extern const PeerFunction eigen_vector[] = {
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
    QVR_PEER(qvrsConvert_32f16s_Sfs),
    QVR_PEER(qvrsConvert_64f16s_Sfs),
    QVR_PEER(qvrsNormalize_32f),
    QVR_PEER(qvrsNormalize_64f),
    {nullptr, nullptr},
};

} // namespace bench
