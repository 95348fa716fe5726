// The kernels of the tagged functions by slot and class, with what they compute.
#pragma once

#include <cmath>
#include <cstdint>

#include "elementary/slot_tables.h"
#include "frame/types.h"
#include "support/slot_list.h"

enum Class { a21, a24, a11, kClasses };
inline const char* const kClassNames[] = {"A21", "A24", "A11"};

using Kernel1 = qvrStatus(const float*, float*, int);
using Kernel2 = qvrStatus(const float*, const float*, float*, int);
using KernelC = qvrStatus(const float*, float, float*, int);

#define DECLARE_SLOT(Type, slot, name) extern "C" Type* const slot##_##name[3];
#define DECLARE(Type, name)                                                                                            \
    DECLARE_SLOT(Type, mx, name)                                                                                       \
    DECLARE_SLOT(Type, m7, name)                                                                                       \
    DECLARE_SLOT(Type, u8, name)                                                                                       \
    DECLARE_SLOT(Type, n8, name)                                                                                       \
    DECLARE_SLOT(Type, y8, name)                                                                                       \
    DECLARE_SLOT(Type, e9, name)                                                                                       \
    DECLARE_SLOT(Type, l9, name)                                                                                       \
    inline Type* const* const name[slots::kCount] = {mx_##name, m7_##name, u8_##name, n8_##name,                       \
                                                     y8_##name, e9_##name, l9_##name};

DECLARE(Kernel1, sinKernels)
DECLARE(Kernel1, cosKernels)
DECLARE(Kernel1, tanKernels)
DECLARE(Kernel1, asinKernels)
DECLARE(Kernel1, acosKernels)
DECLARE(Kernel1, atanKernels)
DECLARE(Kernel2, atan2Kernels)
DECLARE(Kernel1, sinhKernels)
DECLARE(Kernel1, coshKernels)
DECLARE(Kernel1, tanhKernels)
DECLARE(Kernel1, expKernels)
DECLARE(Kernel1, lnKernels)
DECLARE(Kernel1, log10Kernels)
DECLARE(Kernel2, powKernels)
DECLARE(KernelC, powxKernels)

// A function of one argument. The models are those of libm in extended precision, right to far more bits than any class
// promises. `absolute`: the error that class a11 may make where the result is small, 0 if its promise is relative.
struct Function1 {
    const char* name;
    Kernel1* const* const (&kernels)[slots::kCount];
    long double (*model)(long double);
    float low, high; // the domain; results outside it are special
    double absolute;
};

inline const float kMost = 3.4028235e38f, kLeast = 1.1754944e-38f;

inline const Function1 kFunctions1[] = {
    {"Sin", sinKernels, sinl, -kMost, kMost, 0x1p-12},
    {"Cos", cosKernels, cosl, -kMost, kMost, 0x1p-12},
    {"Tan", tanKernels, tanl, -kMost, kMost, 0},
    {"Asin", asinKernels, asinl, -1, 1, 0},
    {"Acos", acosKernels, acosl, -1, 1, 0},
    {"Atan", atanKernels, atanl, -kMost, kMost, 0},
    {"Sinh", sinhKernels, sinhl, -89.4159f, 89.4159f, 0},
    {"Cosh", coshKernels, coshl, -89.4159f, 89.4159f, 0},
    {"Tanh", tanhKernels, tanhl, -kMost, kMost, 0},
    {"Exp", expKernels, expl, -87.33655f, 88.72283f, 0},
    {"Ln", lnKernels, logl, 0x1p-149f, kMost, 0},
    {"Log10", log10Kernels, log10l, 0x1p-149f, kMost, 0},
};

// The distance of a result from the true value: relative, and in units in the last place of the true value's float.
struct Distance {
    double relative, ulp, absolute;
};
inline Distance distance(float got, long double want)
{
    if (std::isnan(got) || std::isnan(want))
        return std::isnan(got) == std::isnan(want) ? Distance{0, 0, 0} : Distance{1, 1e30, 1};
    const long double error = fabsl(static_cast<long double>(got) - want);
    if (error == 0)
        return {0, 0, 0};
    int exponent;
    frexpl(want, &exponent);
    const long double unit = ldexpl(1, exponent < -125 ? -149 : exponent - 24);
    return {static_cast<double>(error / fabsl(want)), static_cast<double>(error / unit), static_cast<double>(error)};
}
