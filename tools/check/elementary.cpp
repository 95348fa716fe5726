// Elementary functions, magnitudes, phase. The tolerances are the classes' promises, and one rounding of the known
// value.
#include "trial.h"

using namespace check;

namespace {

constexpr Tolerance kA11 = {0x1p-11 + 6e-8, 1.6e-4}, kA21 = {0x1p-21 + 6e-8, 1e-7}, kA24 = {0x1p-23 + 6e-8, 1e-37};

}

#define QVR_UNARY(name, usual, formula)                                                                                \
    QVR_USUAL(name, usual, [](const float* a, float* d, int n) {                                                       \
        for (int i = 0; i < n; i++) {                                                                                  \
            const double x = static_cast<double>(a[i]);                                                                \
            d[i] = static_cast<float>(formula);                                                                        \
        }                                                                                                              \
        return +qvrOk;                                                                                                 \
    })
QVR_UNARY(qvrsSin_32f_A11, ({.low = -20, .high = 20, .tolerance = kA11}), std::sin(x))
QVR_UNARY(qvrsCos_32f_A11, ({.low = -20, .high = 20, .tolerance = kA11}), std::cos(x))
QVR_UNARY(qvrsTan_32f_A11, ({.low = -20, .high = 20, .tolerance = kA11}), std::tan(x))
QVR_UNARY(qvrsAsin_32f_A11, ({.low = -1, .high = 1, .tolerance = kA11}), std::asin(x))
QVR_UNARY(qvrsAcos_32f_A11, ({.low = -1, .high = 1, .tolerance = kA11}), std::acos(x))
QVR_UNARY(qvrsAtan_32f_A11, ({.low = -9, .high = 9, .tolerance = kA11}), std::atan(x))
QVR_UNARY(qvrsSinh_32f_A11, ({.low = -9, .high = 9, .tolerance = kA11}), std::sinh(x))
QVR_UNARY(qvrsCosh_32f_A11, ({.low = -9, .high = 9, .tolerance = kA11}), std::cosh(x))
QVR_UNARY(qvrsTanh_32f_A11, ({.low = -3, .high = 3, .tolerance = kA11}), std::tanh(x))
QVR_UNARY(qvrsExp_32f_A11, ({.low = -9, .high = 9, .tolerance = kA11}), std::exp(x))
QVR_UNARY(qvrsLn_32f_A11, ({.low = 0.01, .high = 900, .tolerance = kA11}), std::log(x))
QVR_UNARY(qvrsLog10_32f_A11, ({.low = 0.01, .high = 900, .tolerance = kA11}), std::log10(x))
QVR_UNARY(qvrsLog10_32f_A21, ({.low = 0.01, .high = 900, .tolerance = kA21}), std::log10(x))
QVR_UNARY(qvrsExp_32f, ({.low = -80, .high = 80, .tolerance = {1.9e-7, 1e-37}}), std::exp(x))
QVR_UNARY(qvrsLn_32f, ({.low = 0.01, .high = 900, .tolerance = {1.2e-7, 1e-12}}), std::log(x))
QVR_UNARY(qvrsArctan_32f, ({.low = -9, .high = 9, .tolerance = {3e-7, 1e-37}}), std::atan(x))

#define QVR_POWER(name, usual, y)                                                                                      \
    QVR_USUAL(name, usual, [](const float* a, auto b, float* d, int n) {                                               \
        for (int i = 0; i < n; i++)                                                                                    \
            d[i] = static_cast<float>(std::pow(static_cast<double>(a[i]), static_cast<double>(y)));                    \
        return +qvrOk;                                                                                                 \
    })
QVR_POWER(qvrsPow_32f_A11, ({.low = 0.1, .high = 9, .tolerance = kA11}), b[i])
QVR_POWER(qvrsPow_32f_A24, ({.low = 0.1, .high = 9, .tolerance = kA24}), b[i])
QVR_POWER(qvrsPowx_32f_A11, ({.low = 0.1, .high = 9, .tolerance = kA11, .scalars = {-2.3}}), b)
QVR_POWER(qvrsPowx_32f_A24, ({.low = 0.1, .high = 9, .tolerance = kA24, .scalars = {-2.3}}), b)
QVR_USUAL(qvrsAtan2_32f_A11, ({.low = -9, .high = 9, .tolerance = kA11}),
          [](const float* y, const float* x, float* d, int n) {
              for (int i = 0; i < n; i++)
                  d[i] = static_cast<float>(std::atan2(static_cast<double>(y[i]), static_cast<double>(x[i])));
              return +qvrOk;
          })

#define QVR_MAGNITUDE(name, usual, formula)                                                                            \
    QVR_USUAL(name, usual, [](auto* a, auto* d, int n, auto... rest) {                                                 \
        [[maybe_unused]] const int scale[] = {rest..., 0};                                                             \
        for (int i = 0; i < n; i++) {                                                                                  \
            const double re = static_cast<double>(a[i].re), im = static_cast<double>(a[i].im);                         \
            d[i] = static_cast<std::remove_reference_t<decltype(*d)>>(formula);                                        \
        }                                                                                                              \
        return +qvrOk;                                                                                                 \
    })
QVR_MAGNITUDE(qvrsMagnitude_32fc, ({.tolerance = {0x1p-22 + 2e-7, 0}}), std::sqrt(re* re + im * im))
QVR_MAGNITUDE(qvrsMagnitude_64fc, ({.tolerance = {1e-15, 0}}), std::sqrt(re* re + im * im))
QVR_MAGNITUDE(qvrsMagnitude_16sc_Sfs, ({.low = -32768, .high = 32767, .ints = {kLength, 1}}),
              std::fmin(std::nearbyint(std::ldexp(std::sqrt(re* re + im * im), -*scale)), 32767.0))
QVR_MAGNITUDE(qvrsPhase_32fc, ({.tolerance = {1.2e-7, 0}}), std::atan2(im, re))
