// The scalar routines: the rounding ones in the processor's form, the others from the C library, with errno kept.
#include <errno.h>
#include <math.h>
#include <string.h>

#include "scalarmath/scalar.h"

extern "C" {
QVR_HIDDEN double mx_qvrmFloor(double x);
QVR_HIDDEN double m7_qvrmFloor(double x);
QVR_HIDDEN double y8_qvrmFloor(double x);
QVR_HIDDEN double mx_qvrmCeil(double x);
QVR_HIDDEN double m7_qvrmCeil(double x);
QVR_HIDDEN double y8_qvrmCeil(double x);
}

namespace {

using Rounding = double (*)(double);

// The compiler knows libm's functions and takes them for free of side effects, so it must not see which one this is.
template<class F, class... X> auto keepingErrno(F f, X... x)
{
    const int saved = errno;
    __asm__("" : "+r"(f));
    const auto y = f(x...);
    errno = saved;
    return y;
}

// A routine with forms of several classes goes through a pointer. It starts at a resolver, which stores the form of
// this processor's class and calls it; two threads that race store the same value. Classes 1 and 2 have no form.
double resolveSin(double x);
double resolveCos(double x);

double keptSin(double x)
{
    return keepingErrno(static_cast<double (*)(double)>(sin), x);
}
double keptCos(double x)
{
    return keepingErrno(static_cast<double (*)(double)>(cos), x);
}

// The C library chooses for the processor itself, so one form serves the levels of SSE2, SSE3, SSE4 and AVX.
constexpr Rounding kSinForms[10] = {nullptr, nullptr, nullptr, keptSin, keptSin,
                                    keptSin, keptSin, keptSin, keptSin, keptSin};
constexpr Rounding kCosForms[10] = {nullptr, nullptr, nullptr, keptCos, keptCos,
                                    keptCos, keptCos, keptCos, keptCos, keptCos};

Rounding chosenSin = resolveSin, chosenCos = resolveCos;

double resolveSin(double x)
{
    const Rounding form = kSinForms[qvrmClass()];
    __atomic_store_n(&chosenSin, form, __ATOMIC_RELAXED);
    return form(x);
}
double resolveCos(double x)
{
    const Rounding form = kCosForms[qvrmClass()];
    __atomic_store_n(&chosenCos, form, __ATOMIC_RELAXED);
    return form(x);
}

} // namespace

extern "C" {

double qvrmFloor(double x)
{
    static constexpr Rounding forms[3] = {mx_qvrmFloor, m7_qvrmFloor, y8_qvrmFloor};
    return forms[qvrmForm()](x);
}

double qvrmCeil(double x)
{
    static constexpr Rounding forms[3] = {mx_qvrmCeil, m7_qvrmCeil, y8_qvrmCeil};
    return forms[qvrmForm()](x);
}

double qvrmSin(double x)
{
    return __atomic_load_n(&chosenSin, __ATOMIC_RELAXED)(x);
}

double qvrmCos(double x)
{
    return __atomic_load_n(&chosenCos, __ATOMIC_RELAXED)(x);
}

double qvrmAtan2(double y, double x)
{
    return keepingErrno(static_cast<double (*)(double, double)>(atan2), y, x);
}

float qvrmExpf(float x)
{
    return keepingErrno(expf, x);
}

float qvrmLogf(float x)
{
    return keepingErrno(logf, x);
}

float qvrmAtanf(float x)
{
    return keepingErrno(atanf, x);
}

void* qvrmFill(void* to, int value, size_t bytes)
{
    return memset(to, value, bytes);
}

void* qvrmCopy(void* to, const void* from, size_t bytes)
{
    return memcpy(to, from, bytes);
}

} // extern "C"
