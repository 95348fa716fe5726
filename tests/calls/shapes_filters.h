// Calls of the filter functions.
#pragma once

#include "calls/shape.h"

namespace calls {

// An honest state, a run or two, and its release; or a call with one wrong argument.
inline void recursiveFilter(decltype(&Morven_qvrsIIRInitAlloc_64f) create, decltype(&Morven_qvrsIIR_64f) run,
                            decltype(&Morven_qvrsIIRFree_64f) release, Input& in)
{
    qvrsIIRState_64f* state = nullptr;
    if (in.oneIn(20)) {
        const int order = in.any<int>() | INT32_MIN;
        if (create(&state, in.array<double>(2), order, nullptr) != qvrErrBadOrder || state)
            __builtin_trap();
        return;
    }
    const int order = in.ordinary() ? in.range(1, 12) : in.oneIn(8) ? in.range(1, 300) : in.range(1, 20);
    double* taps = in.array<double>(2 * (order + 1));
    if (in.ordinary()) // an unstable filter would overflow
        Morven_qvrsIIRGenLowpass_64f(order, taps, 0, 0.2, 0);
    const double* delay = in.oneIn(2) ? in.array<double>(order) : nullptr;
    double a0;
    memcpy(&a0, reinterpret_cast<const char*>(taps) + 8 * (order + 1), 8);
    const qvrStatus status = create(&state, taps, order, delay);
    if (status != (a0 == 0 ? qvrErrDivByZero : qvrOk))
        __builtin_trap();
    if (status != qvrOk)
        return;
    for (int turn = 0; turn < 2; turn++) {
        const int n = in.oneIn(4) ? in.range(1, 3000) : in.range(1, 300);
        double* src = in.array<double>(n);
        double* dst = in.oneIn(3) ? src : in.output<double>(n);
        if (run(src, dst, n, state) != qvrOk)
            __builtin_trap();
    }
    if (release(state) != qvrOk)
        __builtin_trap();
}

template<> struct Shape<qvrsIIRInitAlloc_64f> {
    template<class F> static void call(F f, Input& in)
    {
        recursiveFilter(f, Morven_qvrsIIR_64f, Morven_qvrsIIRFree_64f, in);
    }
};
template<> struct Shape<qvrsIIR_64f> {
    template<class F> static void call(F f, Input& in)
    {
        recursiveFilter(Morven_qvrsIIRInitAlloc_64f, f, Morven_qvrsIIRFree_64f, in);
    }
};
template<> struct Shape<qvrsIIRFree_64f> {
    template<class F> static void call(F f, Input& in)
    {
        recursiveFilter(Morven_qvrsIIRInitAlloc_64f, Morven_qvrsIIR_64f, f, in);
    }
};

template<class F> void designFilter(F f, Input& in)
{
    const int order = in.oneIn(4) ? in.any<int>() : in.range(1, 12);
    const bool good = order >= 1 && order <= 12;
    f(order, in.array<double>(good ? 2 * (order + 1) : 1), in.oneIn(4) ? in.any<int>() : in.range(0, 1),
      in.oneIn(2) ? in.any<double>() : in.range(1, 499) / 1000.0, in.oneIn(2) ? in.any<double>() : in.range(1, 29));
}
template<> struct Shape<qvrsIIRGenLowpass_64f> {
    template<class F> static void call(F f, Input& in) { designFilter(f, in); }
};
template<> struct Shape<qvrsIIRGenHighpass_64f> {
    template<class F> static void call(F f, Input& in) { designFilter(f, in); }
};

template<> struct Shape<qvrsFilterMedian_32f_I> {
    template<class F> static void call(F f, Input& in)
    {
        const int len = in.range(1, 400);
        f(in.array<float>(len), len, in.oneIn(10) ? in.any<int>() & 0x1FF : in.range(0, 130));
    }
};

template<class T, class F> void changeRate(F f, Input& in, bool up)
{
    const int n = in.range(1, 400);
    const int factor = in.oneIn(10) ? in.any<int>() : in.range(1, 40);
    const bool good = factor >= 1;
    int phase = in.oneIn(10) ? in.any<int>() : in.range(0, 39) % (good ? factor : 1);
    const int64_t outputs = !good || phase < 0 || phase >= factor ? 1
                            : up                                  ? int64_t{n} * factor
                                                                  : (n - phase + int64_t{factor} - 1) / factor;
    if (outputs > 100000)
        return;
    int count = -1;
    const T* src = in.array<T>(n);
    const qvrStatus status = f(src, n, in.output<T>(outputs > 0 ? outputs : 1), &count, factor, &phase);
    if ((status == qvrOk) != (count >= 0))
        __builtin_trap();
}
template<> struct Shape<qvrsSampleUp_32f> {
    template<class F> static void call(F f, Input& in) { changeRate<float>(f, in, true); }
};
template<> struct Shape<qvrsSampleDown_32f> {
    template<class F> static void call(F f, Input& in) { changeRate<float>(f, in, false); }
};
template<> struct Shape<qvrsSampleDown_16s> {
    template<class F> static void call(F f, Input& in) { changeRate<qvr16s>(f, in, false); }
};

} // namespace calls
