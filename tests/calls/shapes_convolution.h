// Calls of convolution, correlation, Hilbert transform, wavelets and fixed-point transform.
#pragma once

#include "calls/shape.h"

namespace calls {

// A length that reaches both plain sums and spectra.
inline int sumLength(Input& in)
{
    return in.oneIn(6) ? in.range(1, 6000) : in.oneIn(3) ? in.range(1, 700) : in.range(1, 90);
}

// Spoils one argument in twenty calls: a null pointer or a length below 1, which must come back as an error.
struct Spoil {
    int which;
    Spoil(Input& in, int choices) : which(in.oneIn(20) ? in.range(0, choices - 1) : -1) {}
    template<class T> T* pointer(int me, T* p) const { return which == me ? nullptr : p; }
    int length(int me, int n) const { return which == me ? -n : n; }
    void check(qvrStatus status) const
    {
        if ((which >= 0) != (status < 0))
            __builtin_trap();
    }
};

template<> struct Shape<qvrsConv_32f> {
    template<class F> static void call(F f, Input& in)
    {
        const int n1 = sumLength(in), n2 = sumLength(in);
        const Spoil spoil(in, 5);
        const float *a = in.array<float>(n1), *b = in.oneIn(8) && n1 == n2 ? a : in.array<float>(n2);
        float* y = in.output<float>(int64_t{n1} + n2 - 1);
        spoil.check(
            f(spoil.pointer(0, a), spoil.length(1, n1), spoil.pointer(2, b), spoil.length(3, n2), spoil.pointer(4, y)));
    }
};

template<> struct Shape<qvrsConvBiased_32f> {
    template<class F> static void call(F f, Input& in)
    {
        static const int shapes[7][4] = {{45, 4, 41, 4},    {50, 11, 40, 10}, {56, 16, 40, 16}, {70, 31, 40, 30},
                                         {110, 31, 80, 30}, {40, 40, 40, 0},  {60, 60, 60, 0}};
        int n2 = in.range(1, 200), n1 = in.range(1, 100), n = in.range(1, 300);
        int bias = in.oneIn(4) ? in.any<int>() : in.range(-50, 200);
        if (in.oneIn(3)) {
            const int* s = shapes[in.range(0, 6)];
            n2 = s[0];
            n1 = s[1];
            n = s[2];
            bias = s[3];
        }
        const Spoil spoil(in, 3);
        const float *a = in.array<float>(n1), *b = in.array<float>(n2);
        const float* biased =
            reinterpret_cast<const float*>(reinterpret_cast<uintptr_t>(b) + static_cast<uintptr_t>(int64_t{bias} * 4));
        spoil.check(
            f(spoil.pointer(0, a), n1, spoil.pointer(1, biased), n2, spoil.pointer(2, in.output<float>(n)), n, bias));
    }
};

template<> struct Shape<qvrsConvCyclic8x8_32f> {
    template<class F> static void call(F f, Input& in)
    {
        const float *x = in.array<float>(8), *h = in.array<float>(8);
        if (f(x, h, in.output<float>(8)) != qvrOk)
            __builtin_trap();
    }
};

template<> struct Shape<qvrsCrossCorr_32f> {
    template<class F> static void call(F f, Input& in)
    {
        const int n1 = sumLength(in), n2 = sumLength(in), n = sumLength(in);
        const int low = in.oneIn(6) ? in.any<int>() : in.range(-7000, 7000);
        const Spoil spoil(in, 6);
        const float *a = in.array<float>(n1), *b = in.array<float>(n2);
        spoil.check(f(spoil.pointer(0, a), spoil.length(1, n1), spoil.pointer(2, b), spoil.length(3, n2),
                      spoil.pointer(4, in.output<float>(n)), spoil.length(5, n), low));
    }
};

template<> struct Shape<qvrsAutoCorr_32f> {
    template<class F> static void call(F f, Input& in)
    {
        const int n1 = sumLength(in), n = sumLength(in);
        const Spoil spoil(in, 4);
        const float* a = in.array<float>(n1);
        spoil.check(
            f(spoil.pointer(0, a), spoil.length(1, n1), spoil.pointer(2, in.output<float>(n)), spoil.length(3, n)));
    }
};

// A state of an honest length, a transform, and its release.
template<class Init, class Run, class Free> void hilbert(Init init, Run run, Free release, Input& in)
{
    qvrsHilbertState_32f32fc* state = nullptr;
    const int len = in.oneIn(20) ? in.any<int>() | INT32_MIN : in.range(1, in.oneIn(4) ? 5000 : 300);
    const qvrStatus status = init(&state, len, in.any<int>());
    if (status != (len < 1 ? qvrErrBadSize : qvrOk))
        __builtin_trap();
    if (status != qvrOk)
        return;
    const float* x = in.array<float>(len);
    if (run(x, in.output<qvr32fc>(len), state) != qvrOk || release(state) != qvrOk)
        __builtin_trap();
}
template<> struct Shape<qvrsHilbertInitAlloc_32f32fc> {
    template<class F> static void call(F f, Input& in)
    {
        hilbert(f, Morven_qvrsHilbert_32f32fc, Morven_qvrsHilbertFree_32f32fc, in);
    }
};
template<> struct Shape<qvrsHilbert_32f32fc> {
    template<class F> static void call(F f, Input& in)
    {
        hilbert(Morven_qvrsHilbertInitAlloc_32f32fc, f, Morven_qvrsHilbertFree_32f32fc, in);
    }
};
template<> struct Shape<qvrsHilbertFree_32f32fc> {
    template<class F> static void call(F f, Input& in)
    {
        hilbert(Morven_qvrsHilbertInitAlloc_32f32fc, Morven_qvrsHilbert_32f32fc, f, in);
    }
};

// Runs, delay arrays set and read, and the release of one direction.
template<class S, bool Back, class Init, class Run, class Set, class Get, class Free>
void wavelet(Init init, Run run, Set set, Get get, Free release, Input& in)
{
    S* state = nullptr;
    const int lengths[2] = {in.range(1, 40), in.range(1, 40)};
    const int offsets[2] = {in.oneIn(20) ? in.any<int>() : in.range(-1, 30), in.range(-1, 30)};
    if (offsets[0] > 100000)
        return;
    const float *low = in.array<float>(lengths[0]), *high = in.array<float>(lengths[1]);
    const qvrStatus status = init(&state, low, lengths[0], offsets[0], high, lengths[1], offsets[1]);
    if (status != (offsets[0] < -1 ? qvrErrBadOffset : qvrOk))
        __builtin_trap();
    if (status != qvrOk)
        return;
    float* delays[2];
    for (int c = 0; c < 2; c++) {
        const int n = Back ? (lengths[c] + offsets[c] - 1) >> 1 : lengths[c] - 1 + (offsets[c] > 0 ? offsets[c] : 0);
        delays[c] = in.array<float>(n > 0 ? n : 0);
    }
    for (int turn = 0; turn < 3; turn++) {
        const int n = in.oneIn(4) ? in.range(1, 900) : in.range(1, 40);
        float *x = in.array<float>(2 * n), *l = in.array<float>(n), *h = in.array<float>(n);
        if constexpr (Back) {
            if (run(l, h, n, x, state) != qvrOk)
                __builtin_trap();
        } else {
            if (run(x, l, h, n, state) != qvrOk)
                __builtin_trap();
        }
        if (in.oneIn(3) && get(state, delays[0], delays[1]) != qvrOk)
            __builtin_trap();
        if (in.oneIn(3) && set(state, delays[0], delays[1]) != qvrOk)
            __builtin_trap();
    }
    if (release(state) != qvrOk)
        __builtin_trap();
}
#define QVR_WAVELET(name)                                                                                              \
    template<> struct Shape<name> {                                                                                    \
        template<class F> static void call(F, Input& in)                                                               \
        {                                                                                                              \
            wavelet<qvrsWTFwdState_32f, false>(Morven_qvrsWTFwdInitAlloc_32f, Morven_qvrsWTFwd_32f,                    \
                                               Morven_qvrsWTFwdSetDlyLine_32f, Morven_qvrsWTFwdGetDlyLine_32f,         \
                                               Morven_qvrsWTFwdFree_32f, in);                                          \
            wavelet<qvrsWTInvState_32f, true>(Morven_qvrsWTInvInitAlloc_32f, Morven_qvrsWTInv_32f,                     \
                                              Morven_qvrsWTInvSetDlyLine_32f, Morven_qvrsWTInvGetDlyLine_32f,          \
                                              Morven_qvrsWTInvFree_32f, in);                                           \
        }                                                                                                              \
    };
QVR_WAVELET(qvrsWTFwdInitAlloc_32f)
QVR_WAVELET(qvrsWTFwd_32f)
QVR_WAVELET(qvrsWTFwdSetDlyLine_32f)
QVR_WAVELET(qvrsWTFwdGetDlyLine_32f)
QVR_WAVELET(qvrsWTFwdFree_32f)
QVR_WAVELET(qvrsWTInvInitAlloc_32f)
QVR_WAVELET(qvrsWTInv_32f)
QVR_WAVELET(qvrsWTInvSetDlyLine_32f)
QVR_WAVELET(qvrsWTInvGetDlyLine_32f)
QVR_WAVELET(qvrsWTInvFree_32f)
#undef QVR_WAVELET

inline void fixedTransform(Input& in)
{
    const int order = in.oneIn(10) ? in.any<int>() : in.range(0, 12);
    const int flag = in.oneIn(10) ? in.any<int>() : 1 << in.range(0, 3);
    const bool knownFlag = flag == 1 || flag == 2 || flag == 4 || flag == 8;
    if (order > 12 && order <= 30 && knownFlag)
        return;
    qvrsFFTSpec_R_16s* spec = nullptr;
    const qvrStatus status = Morven_qvrsFFTInitAlloc_R_16s(&spec, order, flag, in.range(-1, 3));
    if (status != (order < 0 || order > 30 ? qvrErrFFTOrder : knownFlag ? qvrOk : qvrErrFFTFlag))
        __builtin_trap();
    if (status != qvrOk)
        return;
    const int64_t n = int64_t{1} << order;
    qvr16s* y = in.array<qvr16s>(n == 1 ? 2 : n + 2);
    const qvr16s* x = in.oneIn(4) ? y : in.array<qvr16s>(n);
    if (Morven_qvrsFFTFwd_RToCCS_16s_Sfs(x, y, spec, in.any<int>(), nullptr) != qvrOk ||
        Morven_qvrsFFTFree_R_16s(spec) != qvrOk)
        __builtin_trap();
}
template<> struct Shape<qvrsFFTInitAlloc_R_16s> {
    template<class F> static void call(F, Input& in) { fixedTransform(in); }
};
template<> struct Shape<qvrsFFTFwd_RToCCS_16s_Sfs> {
    template<class F> static void call(F, Input& in) { fixedTransform(in); }
};
template<> struct Shape<qvrsFFTFree_R_16s> {
    template<class F> static void call(F, Input& in) { fixedTransform(in); }
};

} // namespace calls
