// Scalar models of the elementary functions, magnitudes and phase: in double, rounded once. For ordinary arguments.
#ifndef QVR_MODEL_ELEMENTARY_H
#define QVR_MODEL_ELEMENTARY_H

#include <cmath>

#include "frame/types.h"

namespace model {
namespace {

#define QVR_FUNCTION_OF_X(name, formula)                                                                               \
    inline qvrStatus name(const float* a, float* d, int n)                                                             \
    {                                                                                                                  \
        for (int i = 0; i < n; i++) {                                                                                  \
            const double x = static_cast<double>(a[i]);                                                                \
            d[i] = static_cast<float>(formula);                                                                        \
        }                                                                                                              \
        return qvrOk;                                                                                                  \
    }
QVR_FUNCTION_OF_X(qvrsSin_32f_A11, std::sin(x))
QVR_FUNCTION_OF_X(qvrsCos_32f_A11, std::cos(x))
QVR_FUNCTION_OF_X(qvrsTan_32f_A11, std::tan(x))
QVR_FUNCTION_OF_X(qvrsAsin_32f_A11, std::asin(x))
QVR_FUNCTION_OF_X(qvrsAcos_32f_A11, std::acos(x))
QVR_FUNCTION_OF_X(qvrsAtan_32f_A11, std::atan(x))
QVR_FUNCTION_OF_X(qvrsSinh_32f_A11, std::sinh(x))
QVR_FUNCTION_OF_X(qvrsCosh_32f_A11, std::cosh(x))
QVR_FUNCTION_OF_X(qvrsTanh_32f_A11, std::tanh(x))
QVR_FUNCTION_OF_X(qvrsExp_32f_A11, std::exp(x))
QVR_FUNCTION_OF_X(qvrsLn_32f_A11, std::log(x))
QVR_FUNCTION_OF_X(qvrsLog10_32f_A11, std::log10(x))
QVR_FUNCTION_OF_X(qvrsLog10_32f_A21, std::log10(x))
QVR_FUNCTION_OF_X(qvrsExp_32f, std::exp(x))
QVR_FUNCTION_OF_X(qvrsLn_32f, std::log(x))
QVR_FUNCTION_OF_X(qvrsArctan_32f, std::atan(x))
#undef QVR_FUNCTION_OF_X

#define QVR_POWER(name, nameByOne)                                                                                     \
    inline qvrStatus name(const float* a, const float* b, float* d, int n)                                             \
    {                                                                                                                  \
        for (int i = 0; i < n; i++)                                                                                    \
            d[i] = static_cast<float>(std::pow(static_cast<double>(a[i]), static_cast<double>(b[i])));                 \
        return qvrOk;                                                                                                  \
    }                                                                                                                  \
    inline qvrStatus nameByOne(const float* a, float y, float* d, int n)                                               \
    {                                                                                                                  \
        for (int i = 0; i < n; i++)                                                                                    \
            d[i] = static_cast<float>(std::pow(static_cast<double>(a[i]), static_cast<double>(y)));                    \
        return qvrOk;                                                                                                  \
    }
QVR_POWER(qvrsPow_32f_A11, qvrsPowx_32f_A11)
QVR_POWER(qvrsPow_32f_A24, qvrsPowx_32f_A24)
#undef QVR_POWER

inline qvrStatus qvrsAtan2_32f_A11(const float* y, const float* x, float* d, int n)
{
    for (int i = 0; i < n; i++)
        d[i] = static_cast<float>(std::atan2(static_cast<double>(y[i]), static_cast<double>(x[i])));
    return qvrOk;
}

#define QVR_FUNCTION_OF_COMPLEX(name, C, T, formula)                                                                   \
    inline qvrStatus name(const C* a, T* d, int n)                                                                     \
    {                                                                                                                  \
        for (int i = 0; i < n; i++) {                                                                                  \
            const double re = static_cast<double>(a[i].re), im = static_cast<double>(a[i].im);                         \
            d[i] = static_cast<T>(formula);                                                                            \
        }                                                                                                              \
        return qvrOk;                                                                                                  \
    }
QVR_FUNCTION_OF_COMPLEX(qvrsMagnitude_32fc, qvr32fc, float, std::sqrt(re* re + im * im))
QVR_FUNCTION_OF_COMPLEX(qvrsMagnitude_64fc, qvr64fc, double, std::sqrt(re* re + im * im))
QVR_FUNCTION_OF_COMPLEX(qvrsPhase_32fc, qvr32fc, float, std::atan2(im, re))
#undef QVR_FUNCTION_OF_COMPLEX

inline qvrStatus qvrsMagnitude_16sc_Sfs(const qvr16sc* a, int16_t* d, int n, int scale)
{
    for (int i = 0; i < n; i++) {
        const double re = a[i].re, im = a[i].im, m = std::ldexp(std::sqrt(re * re + im * im), -scale);
        d[i] = static_cast<int16_t>(std::fmin(std::nearbyint(m), 32767.0));
    }
    return qvrOk;
}

} // namespace
} // namespace model

#endif
