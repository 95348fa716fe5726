// What a programmer writes instead: loops over the C library's functions.
#include <math.h>

#include "bench/peers.h"

namespace {

#define UNARY(name, formula)                                                                                           \
    qvrStatus name(const float* a, float* d, int n)                                                                    \
    {                                                                                                                  \
        for (int i = 0; i < n; i++)                                                                                    \
            d[i] = formula;                                                                                            \
        return 0;                                                                                                      \
    }
#define BINARY(name, formula)                                                                                          \
    qvrStatus name(const float* a, const float* b, float* d, int n)                                                    \
    {                                                                                                                  \
        for (int i = 0; i < n; i++)                                                                                    \
            d[i] = formula;                                                                                            \
        return 0;                                                                                                      \
    }
#define WITH_CONSTANT(name, formula)                                                                                   \
    qvrStatus name(const float* a, float y, float* d, int n)                                                           \
    {                                                                                                                  \
        for (int i = 0; i < n; i++)                                                                                    \
            d[i] = formula;                                                                                            \
        return 0;                                                                                                      \
    }

UNARY(qvrsSin_32f_A11, sinf(a[i]))
UNARY(qvrsCos_32f_A11, cosf(a[i]))
UNARY(qvrsTan_32f_A11, tanf(a[i]))
UNARY(qvrsAsin_32f_A11, asinf(a[i]))
UNARY(qvrsAcos_32f_A11, acosf(a[i]))
UNARY(qvrsAtan_32f_A11, atanf(a[i]))
UNARY(qvrsSinh_32f_A11, sinhf(a[i]))
UNARY(qvrsCosh_32f_A11, coshf(a[i]))
UNARY(qvrsTanh_32f_A11, tanhf(a[i]))
UNARY(qvrsExp_32f_A11, expf(a[i]))
UNARY(qvrsLn_32f_A11, logf(a[i]))
UNARY(qvrsLog10_32f_A11, log10f(a[i]))
UNARY(qvrsLog10_32f_A21, log10f(a[i]))
BINARY(qvrsPow_32f_A11, powf(a[i], b[i]))
BINARY(qvrsPow_32f_A24, powf(a[i], b[i]))
BINARY(qvrsAtan2_32f_A11, atan2f(a[i], b[i]))
WITH_CONSTANT(qvrsPowx_32f_A11, powf(a[i], y))
WITH_CONSTANT(qvrsPowx_32f_A24, powf(a[i], y))
UNARY(qvrsExp_32f, expf(a[i]))
UNARY(qvrsLn_32f, logf(a[i]))
UNARY(qvrsArctan_32f, atanf(a[i]))

qvrStatus qvrsPhase_32fc(const qvr32fc* a, float* d, int n)
{
    for (int i = 0; i < n; i++)
        d[i] = atan2f(a[i].im, a[i].re);
    return 0;
}
qvrStatus qvrsMagnitude_32fc(const qvr32fc* a, float* d, int n)
{
    for (int i = 0; i < n; i++)
        d[i] = sqrtf(a[i].re * a[i].re + a[i].im * a[i].im);
    return 0;
}
qvrStatus qvrsMagnitude_64fc(const qvr64fc* a, double* d, int n)
{
    for (int i = 0; i < n; i++)
        d[i] = sqrt(a[i].re * a[i].re + a[i].im * a[i].im);
    return 0;
}
qvrStatus qvrsMagnitude_16sc_Sfs(const qvr16sc* a, int16_t* d, int n, int scaleFactor)
{
    const float factor = ldexpf(1, -scaleFactor);
    for (int i = 0; i < n; i++) {
        const float re = a[i].re, im = a[i].im, m = sqrtf(re * re + im * im) * factor;
        d[i] = static_cast<int16_t>(m < 32767.0f ? lrintf(m) : 32767);
    }
    return 0;
}

} // namespace

namespace bench {

extern const PeerFunction QVR_PEER_PASTE(plain_elementary_, QVR_BENCH_LEVEL)[] = {
    QVR_PEER(qvrsSin_32f_A11),
    QVR_PEER(qvrsCos_32f_A11),
    QVR_PEER(qvrsTan_32f_A11),
    QVR_PEER(qvrsAsin_32f_A11),
    QVR_PEER(qvrsAcos_32f_A11),
    QVR_PEER(qvrsAtan_32f_A11),
    QVR_PEER(qvrsSinh_32f_A11),
    QVR_PEER(qvrsCosh_32f_A11),
    QVR_PEER(qvrsTanh_32f_A11),
    QVR_PEER(qvrsExp_32f_A11),
    QVR_PEER(qvrsLn_32f_A11),
    QVR_PEER(qvrsLog10_32f_A11),
    QVR_PEER(qvrsLog10_32f_A21),
    QVR_PEER(qvrsPow_32f_A11),
    QVR_PEER(qvrsPow_32f_A24),
    QVR_PEER(qvrsAtan2_32f_A11),
    QVR_PEER(qvrsPowx_32f_A11),
    QVR_PEER(qvrsPowx_32f_A24),
    QVR_PEER(qvrsExp_32f),
    QVR_PEER(qvrsLn_32f),
    QVR_PEER(qvrsArctan_32f),
    QVR_PEER(qvrsPhase_32fc),
    QVR_PEER(qvrsMagnitude_32fc),
    QVR_PEER(qvrsMagnitude_64fc),
    QVR_PEER(qvrsMagnitude_16sc_Sfs),
    {nullptr, nullptr},
};

} // namespace bench
