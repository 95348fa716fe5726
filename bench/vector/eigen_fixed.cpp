// Eigen's reductions and selections behind the exports' prototypes, compiled for the widest level only.
#include "bench/vector/eigen.h"

namespace {

template<class T> qvrStatus least(const T* a, int n, T* result)
{
    *result = in(a, n).minCoeff();
    return 0;
}
template<class T> qvrStatus most(const T* a, int n, T* result)
{
    *result = in(a, n).maxCoeff();
    return 0;
}
template<class T> qvrStatus both(const T* a, int n, T* low, T* high)
{
    *low = in(a, n).minCoeff();
    *high = in(a, n).maxCoeff();
    return 0;
}
template<class T> qvrStatus mean(const T* a, int n, T* result)
{
    *result = static_cast<T>(in(a, n).template cast<double>().sum() / n);
    return 0;
}

qvrStatus qvrsMin_16s(const int16_t* a, int n, int16_t* result)
{
    return least(a, n, result);
}
qvrStatus qvrsMax_16s(const int16_t* a, int n, int16_t* result)
{
    return most(a, n, result);
}
qvrStatus qvrsMin_32f(const float* a, int n, float* result)
{
    return least(a, n, result);
}
qvrStatus qvrsMax_32f(const float* a, int n, float* result)
{
    return most(a, n, result);
}
qvrStatus qvrsMax_64f(const double* a, int n, double* result)
{
    return most(a, n, result);
}
qvrStatus qvrsMinMax_16s(const int16_t* a, int n, int16_t* low, int16_t* high)
{
    return both(a, n, low, high);
}
qvrStatus qvrsMinMax_16u(const uint16_t* a, int n, uint16_t* low, uint16_t* high)
{
    return both(a, n, low, high);
}
qvrStatus qvrsMinMax_32f(const float* a, int n, float* low, float* high)
{
    return both(a, n, low, high);
}
qvrStatus qvrsMinIndx_32f(const float* a, int n, float* result, int32_t* index)
{
    *result = in(a, n).minCoeff(index);
    return 0;
}
qvrStatus qvrsMaxIndx_32f(const float* a, int n, float* result, int32_t* index)
{
    *result = in(a, n).maxCoeff(index);
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
qvrStatus qvrsStdDev_32f(const float* a, int n, float* result)
{
    const auto x = in(a, n).cast<double>();
    const double average = x.sum() / n;
    *result = static_cast<float>(std::sqrt((x - average).square().sum() / (n - 1)));
    return 0;
}
qvrStatus qvrsReplaceC_16u(const uint16_t* a, uint16_t* d, int n, uint16_t from, uint16_t to)
{
    out(d, n) = (in(a, n) == from).select(to, in(a, n));
    return 0;
}
qvrStatus qvrsThreshold_32f_I(float* d, int n, float level, int relOp)
{
    if (relOp == qvrCmpLess)
        out(d, n) = out(d, n).max(level);
    else
        out(d, n) = out(d, n).min(level);
    return 0;
}
qvrStatus qvrsThreshold_GTVal_32f(const float* a, float* d, int n, float level, float value)
{
    out(d, n) = (in(a, n) > level).select(value, in(a, n));
    return 0;
}
qvrStatus qvrsThreshold_LTVal_32f(const float* a, float* d, int n, float level, float value)
{
    out(d, n) = (in(a, n) < level).select(value, in(a, n));
    return 0;
}
qvrStatus qvrsThreshold_GTVal_32f_I(float* d, int n, float level, float value)
{
    return qvrsThreshold_GTVal_32f(d, d, n, level, value);
}
qvrStatus qvrsThreshold_LTVal_32f_I(float* d, int n, float level, float value)
{
    return qvrsThreshold_LTVal_32f(d, d, n, level, value);
}
qvrStatus qvrsZeroCrossing_32f(const float* a, int n, float* result, int type)
{
    const auto x = in(a, n - 1), next = in(a + 1, n - 1);
    if (type == qvrZcProduct)
        *result = static_cast<float>((next * x < 0).count());
    else if (type == qvrZcSignBit)
        *result = static_cast<float>(((x < 0) != (next < 0)).count()); // as long as there is no negative zero
    else
        *result = (next.sign() - x.sign()).abs().sum() * 0.5f;
    return 0;
}

} // namespace

namespace bench {

extern const PeerFunction eigen_vector_fixed[] = {
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
    QVR_PEER(qvrsMean_32f),
    QVR_PEER(qvrsMean_64f),
    QVR_PEER(qvrsStdDev_32f),
    QVR_PEER(qvrsReplaceC_16u),
    QVR_PEER(qvrsThreshold_32f_I),
    QVR_PEER(qvrsThreshold_GTVal_32f),
    QVR_PEER(qvrsThreshold_LTVal_32f),
    QVR_PEER(qvrsThreshold_GTVal_32f_I),
    QVR_PEER(qvrsThreshold_LTVal_32f_I),
    QVR_PEER(qvrsZeroCrossing_32f),
    {nullptr, nullptr},
};

} // namespace bench
