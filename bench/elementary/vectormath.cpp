#include "bench/elementary/vectormath.h"

#include <immintrin.h>
#include <string.h>

#ifdef QVR_HAVE_SLEEF
#include <sleef.h>
#endif

namespace {

// Whole vectors, and the rest through a vector of ones.
template<auto F> void unaryLoop(const float* a, float* d, int n)
{
    int i = 0;
    for (; i + 8 <= n; i += 8)
        _mm256_storeu_ps(d + i, F(_mm256_loadu_ps(a + i)));
    if (i < n) {
        const size_t rest = sizeof(float) * static_cast<size_t>(n - i);
        __m256 v = _mm256_set1_ps(1);
        memcpy(&v, a + i, rest);
        v = F(v);
        memcpy(d + i, &v, rest);
    }
}
template<auto F> void binaryLoop(const float* a, const float* b, float* d, int n)
{
    int i = 0;
    for (; i + 8 <= n; i += 8)
        _mm256_storeu_ps(d + i, F(_mm256_loadu_ps(a + i), _mm256_loadu_ps(b + i)));
    if (i < n) {
        const size_t rest = sizeof(float) * static_cast<size_t>(n - i);
        __m256 v = _mm256_set1_ps(1), w = v;
        memcpy(&v, a + i, rest);
        memcpy(&w, b + i, rest);
        v = F(v, w);
        memcpy(d + i, &v, rest);
    }
}

} // namespace

#define GLIBC1(name) extern "C" __m256 _ZGVdN8v_##name(__m256);
#define GLIBC2(name) extern "C" __m256 _ZGVdN8vv_##name(__m256, __m256);
GLIBC1(sinf)
GLIBC1(cosf)
GLIBC1(tanf)
GLIBC1(asinf)
GLIBC1(acosf)
GLIBC1(atanf)
GLIBC1(sinhf)
GLIBC1(coshf)
GLIBC1(tanhf)
GLIBC1(expf)
GLIBC1(logf)
GLIBC1(log10f)
GLIBC2(powf)
GLIBC2(atan2f)

#ifdef QVR_HAVE_SLEEF
#define SLEEF1(function, name, accuracy) {#function, "SLEEF " accuracy, unaryLoop<Sleef_##name##avx2>, nullptr},
#define SLEEF2(function, name, accuracy) {#function, "SLEEF " accuracy, nullptr, binaryLoop<Sleef_##name##avx2>},
#else
#define SLEEF1(function, name, accuracy)
#define SLEEF2(function, name, accuracy)
#endif
#define UNARY(function, name)                                                                                          \
    {#function, "glibc vector", unaryLoop<_ZGVdN8v_##name##f>, nullptr}, SLEEF1(function, name##f8_u10, "u10")
#define UNARY35(function, name) UNARY(function, name) SLEEF1(function, name##f8_u35, "u35")

namespace bench {

const VectorMath kVectorMath[] = {
    UNARY35(Sin, sin) UNARY35(Cos, cos) UNARY35(Tan, tan) UNARY35(Asin, asin) UNARY35(Acos, acos) UNARY35(Atan, atan)
        UNARY35(Sinh, sinh) UNARY35(Cosh, cosh) UNARY35(Tanh, tanh) UNARY(Exp, exp) UNARY35(Ln, log)
            UNARY(Log10, log10){"Pow", "glibc vector", nullptr, binaryLoop<_ZGVdN8vv_powf>},
    SLEEF2(Pow, powf8_u10, "u10"){"Atan2", "glibc vector", nullptr, binaryLoop<_ZGVdN8vv_atan2f>},
    SLEEF2(Atan2, atan2f8_u10, "u10") SLEEF2(Atan2, atan2f8_u35, "u35"){nullptr, nullptr, nullptr, nullptr},
};

} // namespace bench
