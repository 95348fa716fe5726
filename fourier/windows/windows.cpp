// Symmetric windows of a signal's own length L, in place. With t = 2 pi / (L - 1) and k counted from the near end:
//
//   Bartlett 2k/(L - 1)    Hann 0.5 - 0.5 cos kt    Hamming 0.54 - 0.46 cos kt
//   Blackman (1 + a)/2 - 0.5 cos kt - (a/2) cos 2kt, a = -0.16
//
// No table and no cosine per element. Slot mx turns (cos kt, sin kt) by t and multiplies in double. The others run a
// second-order recurrence in double, d[k + 2n] = 2 cos(nt) d[k + n] - d[k], round the weight to single and multiply
// there. The middle element of an odd length is never touched.
#include "fourier/functions.h"
#include "fourier/lanes.h"
#include "fourier/sines.h"
#include "frame/status.h"

namespace {

constexpr double kTwoPi = 6.283185307179586;
constexpr bool kRotation = kSlot == qvrSlot_mx;
constexpr float kBlackmanAlpha = -0.16f;

using F = Vec<float, 4>;
using D = Vec<double, 2>;

inline qvrStatus checkWindow(const void* p, int len)
{
    if (p == nullptr)
        return qvrErrNullPointer;
    return len < 3 ? qvrErrBadSize : qvrOk;
}

// Hann and Blackman at length 3.
inline void zeroEnds(float* p)
{
    put(p, 0, 0.0f);
    put(p, 2, 0.0f);
}

inline double baseAngle(int len)
{
    return kTwoPi / static_cast<double>(len - 1);
}

// ---- Rotation, slot mx ----------------------------------------------------------------------------------------------

// Multiplies the pairs from both ends by weight(cos kt).
template<class T, class Weight> inline void rotateWindow(T* p, int len, const Weight& weight)
{
    const double c = qvrCosine(baseAngle(len)), s = __builtin_sqrt(1 - c * c);
    double cosine = 1, sine = 0;
    const int half = (len - 1) >> 1, pairs = len % 2 == 0 ? half + 1 : half;
    for (int k = 0; k < pairs; k++) {
        const double w = weight(cosine);
        put(p, k, static_cast<T>(get(p, k) * w));
        put(p, len - 1 - k, static_cast<T>(get(p, len - 1 - k) * w));
        const double next = c * cosine - s * sine;
        sine = sine * c + cosine * s;
        cosine = next;
    }
}

// ---- Recurrence, the other slots ------------------------------------------------------------------------------------

// Multiplies four elements from each end, or the last `pairs` < 4 of them.
QVR_INLINE void applyFour(float* front, float* back, F w)
{
    const F a = load<F>(front) * w, b = load<F>(back - 3) * reversedLanes(w);
    store(front, a);
    store(back - 3, b);
}
inline void applyRest(float* front, float* back, F w, int pairs)
{
    for (int i = 0; i < pairs; i++) {
        put(front, i, get(front, i) * w[i]);
        put(back, -i, get(back, -i) * w[i]);
    }
}

// Two chains of two lanes, d[k + 4] = 2 cos(2t) d[k + 2] - d[k], from amplitude * cos kt; weight(d) is offset - d.
inline void cosineWindow(float* p, int len, double amplitude, double offset)
{
    const double t = baseAngle(len), c = qvrCosine(t), twice = 2 * c;
    const double d0 = amplitude, before = amplitude * c, d1 = twice * d0 - before, d2 = twice * d1 - d0;
    D a = {d0, d1}, b = {d2, twice * d2 - d1};
    const D factor = splat<D>(2 * qvrCosine(2 * t)), o = splat<D>(offset);
    float *front = p, *back = p + len - 1;
    int pairs = len >> 1;
    for (; pairs > 0; pairs -= 4, front += 4, back -= 4) {
        const F w = concat(convert<float>(o - a), convert<float>(o - b));
        if (pairs < 4)
            return applyRest(front, back, w, pairs);
        applyFour(front, back, w);
        a = factor * b - a;
        b = factor * a - b;
    }
}

// w = -4a r r + ((0.5 + a) - r) with r = 0.5 cos kt rounded: the window by cos 2x = 2 cos^2 x - 1.
inline void blackmanWindow(float* p, int len)
{
    const double c = qvrCosine(baseAngle(len)), twice = 2 * c;
    double d = 0.5, before = 0.5 * c;
    const F square = splat<F>(-4 * kBlackmanAlpha), offset = splat<F>(0.5f + kBlackmanAlpha);
    float *front = p, *back = p + len - 1;
    for (int pairs = len >> 1; pairs > 0; pairs -= 4, front += 4, back -= 4) {
        const double d1 = twice * d - before, d2 = twice * d1 - d, d3 = twice * d2 - d1;
        const F r = concat(convert<float>(D{d, d1}), convert<float>(D{d2, d3}));
        const F w = square * r * r + (offset - r);
        if (pairs < 4)
            return applyRest(front, back, w, pairs);
        applyFour(front, back, w);
        before = d3;
        d = twice * d3 - d2;
    }
}

// ---- Triangle -------------------------------------------------------------------------------------------------------

inline void bartlettDouble(float* p, int len)
{
    const double d = 2.0 / static_cast<double>(len - 1);
    const int half = (len - 1) >> 1, pairs = len % 2 == 0 ? half + 1 : half;
    double v = 0;
    for (int k = 1; k < pairs; k++) {
        v += d;
        put(p, k, static_cast<float>(get(p, k) * v));
        put(p, len - 1 - k, static_cast<float>(get(p, len - 1 - k) * v));
    }
}

// From this many steps on the weights run in vectors: multiples of the step, then increments of a whole vector.
constexpr int kTriangleVectors = 2 * kLanes<float> + 2;

inline void bartlettSingle(float* p, int len)
{
    const float d = 2.0f / static_cast<float>(len - 1);
    const int pairs = len >> 1;
    int k = 1;
    float v = d;
    if (len - 1 >= kTriangleVectors) {
        using V = Full<float>;
        constexpr int W = kLanes<float>;
        V w = (iota<V>() + splat<V>(1.0f)) * splat<V>(d);
        const V increment = splat<V>(W * d);
        for (; k + W <= pairs; k += W) {
            float* back = p + len - k - W;
            const V a = load<V>(p + k) * w, b = load<V>(back) * reversedLanes(w);
            store(p + k, a);
            store(back, b);
            w += increment;
        }
        for (int i = 0; k < pairs; k++, i++) {
            put(p, k, get(p, k) * w[i]);
            put(p, len - 1 - k, get(p, len - 1 - k) * w[i]);
        }
        return;
    }
    for (; k < pairs; k++, v += d) {
        put(p, k, get(p, k) * v);
        put(p, len - 1 - k, get(p, len - 1 - k) * v);
    }
}

// ---- 16-bit Hamming from the middle outward -------------------------------------------------------------------------

// Elements at the distances x, x + 1, .. from the middle have the weight 0.54 + 0.46 cos xt. Four lanes turn by 4t in
// single precision; every kReseed vectors they start anew from a rotation in double, so that long arrays do not drift.
constexpr int kReseed = 64;

struct Turn {
    double c, s;
};
inline Turn turn(Turn a, Turn b)
{
    return {a.c * b.c - a.s * b.s, a.s * b.c + a.c * b.s};
}

inline void hammingShort(qvr16s* p, int len)
{
    for (int end = 0; end < len; end += len - 1)
        put(p, end, static_cast<qvr16s>(static_cast<float>(get(p, end)) * (0.54f - 0.46f)));
    const Turn one = {qvrCosine(baseAngle(len)), qvrSine(baseAngle(len))};
    // Distances 1, 2, .. or, by the half-angle formulas, 1/2, 3/2, ..
    const Turn half = {__builtin_sqrt((1 + one.c) * 0.5), __builtin_sqrt((1 - one.c) * 0.5)};
    const Turn two = turn(one, one), four = turn(two, two);
    Turn seed = len % 2 != 0 ? one : half;
    Turn block = four;
    for (int i = 1; i < kReseed; i *= 2)
        block = turn(block, block);
    const F turnC = splat<F>(static_cast<float>(four.c)), turnS = splat<F>(static_cast<float>(four.s));
    qvr16s *left = p + (len >> 1) - 1, *right = p + ((len + 1) >> 1);
    for (int pairs = (len >> 1) - 1; pairs > 0;) {
        const Turn s1 = turn(seed, one), s2 = turn(s1, one), s3 = turn(s2, one);
        F c = concat(convert<float>(D{seed.c, s1.c}), convert<float>(D{s2.c, s3.c}));
        F s = concat(convert<float>(D{seed.s, s1.s}), convert<float>(D{s2.s, s3.s}));
        for (int i = 0; i < kReseed && pairs > 0; i++, pairs -= 4, left -= 4, right += 4) {
            const F w = splat<F>(0.54f) + splat<F>(0.46f) * c;
            if (pairs < 4) {
                for (int l = 0; l < pairs; l++) {
                    const Vec<int, 4> v = toInt(F{get(left, -l) * w[l], get(right, l) * w[l]});
                    put(left, -l, static_cast<qvr16s>(v[0]));
                    put(right, l, static_cast<qvr16s>(v[1]));
                }
                return;
            }
            using I = Vec<int16_t, 4>;
            const F a = convert<float>(load<I>(left - 3)) * reversedLanes(w), b = convert<float>(load<I>(right)) * w;
            store(left - 3, packSaturate(toInt(a)));
            store(right, packSaturate(toInt(b)));
            const F next = c * turnC - s * turnS;
            s = s * turnC + c * turnS;
            c = next;
        }
        seed = turn(seed, block);
    }
}

} // namespace

extern "C" {

qvrStatus SLOT(qvrsWinBartlett_32f_I)(qvr32f* pSrcDst, int len)
{
    if (const qvrStatus status = checkWindow(pSrcDst, len))
        return status;
    put(pSrcDst, 0, 0.0f);
    put(pSrcDst, len - 1, 0.0f);
    if constexpr (kRotation)
        bartlettDouble(pSrcDst, len);
    else
        bartlettSingle(pSrcDst, len);
    return qvrOk;
}

qvrStatus SLOT(qvrsWinHann_32f_I)(qvr32f* pSrcDst, int len)
{
    if (const qvrStatus status = checkWindow(pSrcDst, len))
        return status;
    if (len == 3)
        zeroEnds(pSrcDst);
    else if constexpr (kRotation)
        rotateWindow(pSrcDst, len, [](double c) { return 0.5 * (1 - c); });
    else
        cosineWindow(pSrcDst, len, 0.5, 0.5);
    return qvrOk;
}

qvrStatus SLOT(qvrsWinHamming_32f_I)(qvr32f* pSrcDst, int len)
{
    if (const qvrStatus status = checkWindow(pSrcDst, len))
        return status;
    if constexpr (kRotation)
        rotateWindow(pSrcDst, len, [](double c) { return 0.54 - 0.46 * c; });
    else
        cosineWindow(pSrcDst, len, 0.46, 0.54);
    return qvrOk;
}

qvrStatus SLOT(qvrsWinHamming_16s_I)(qvr16s* pSrcDst, int len)
{
    if (const qvrStatus status = checkWindow(pSrcDst, len))
        return status;
    if constexpr (kRotation)
        rotateWindow(pSrcDst, len, [](double c) { return 0.54 - 0.46 * c; });
    else
        hammingShort(pSrcDst, len);
    return qvrOk;
}

qvrStatus SLOT(qvrsWinBlackmanStd_32f_I)(qvr32f* pSrcDst, int len)
{
    if (const qvrStatus status = checkWindow(pSrcDst, len))
        return status;
    if (len == 3)
        zeroEnds(pSrcDst);
    else if constexpr (kRotation)
        rotateWindow(pSrcDst, len, [](double c) {
            const double a = kBlackmanAlpha;
            return (1 + a) / 2 - 0.5 * c - a / 2 * (2 * c * c - 1);
        });
    else
        blackmanWindow(pSrcDst, len);
    return qvrOk;
}

} // extern "C"
