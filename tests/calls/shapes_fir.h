// Calls of the FIR functions.
#pragma once

#include "calls/shape.h"

namespace calls {

// An honest state, its accessors, a few runs, and its release; or a call with one wrong argument.
template<class State, class Tap, class Data, class Create, class Run, class Release, class Access>
void filterStream(Create create, Run run, Release release, Access access, Input& in)
{
    State* state = nullptr;
    if (in.oneIn(20)) {
        const int taps = in.oneIn(2) ? 0 : in.any<int>() | INT32_MIN;
        if (create(&state, in.array<Tap>(1), taps, nullptr) != qvrErrBadTapsLen || state)
            __builtin_trap();
        return;
    }
    const int taps = in.oneIn(8) ? in.range(1, 700) : in.range(1, 130);
    const Tap* t = in.array<Tap>(taps);
    const Data* delay = in.oneIn(2) ? in.array<Data>(taps) : nullptr;
    if (create(&state, t, taps, delay) != qvrOk)
        __builtin_trap();
    for (int turn = 0; turn < 3; turn++) {
        const int n = in.oneIn(4) ? in.range(1, 5000) : in.oneIn(2) ? in.range(taps, taps + 12) : in.range(1, 600);
        Data* src = in.array<Data>(n);
        Data* dst = in.oneIn(3) ? src : in.output<Data>(n);
        if (run(src, dst, n, state) != qvrOk)
            __builtin_trap();
        access(state, taps);
    }
    if (run(nullptr, in.array<Data>(1), 1, state) != qvrErrNullPointer ||
        run(in.array<Data>(1), in.array<Data>(1), in.any<int>() | INT32_MIN, state) != qvrErrBadSize)
        __builtin_trap();
    if (release(state) != qvrOk)
        __builtin_trap();
}

struct Fir32f {
    decltype(&Morven_qvrsFIRInitAlloc_32f) create = Morven_qvrsFIRInitAlloc_32f;
    decltype(&Morven_qvrsFIR_32f) run = Morven_qvrsFIR_32f;
    decltype(&Morven_qvrsFIRFree_32f) release = Morven_qvrsFIRFree_32f;
    decltype(&Morven_qvrsFIRGetTaps_32f) getTaps = Morven_qvrsFIRGetTaps_32f;
    decltype(&Morven_qvrsFIRGetDlyLine_32f) getDelay = Morven_qvrsFIRGetDlyLine_32f;
    decltype(&Morven_qvrsFIRSetDlyLine_32f) setDelay = Morven_qvrsFIRSetDlyLine_32f;
    void call(Input& in) const
    {
        filterStream<qvrsFIRState_32f, float, float>(
            create, run, release,
            [&](qvrsFIRState_32f* s, int taps) {
                if (getTaps(s, in.array<float>(taps)) != qvrOk || getDelay(s, in.array<float>(taps)) != qvrOk ||
                    (in.oneIn(3) && setDelay(s, in.oneIn(2) ? nullptr : in.array<float>(taps)) != qvrOk))
                    __builtin_trap();
            },
            in);
    }
};
struct Fir64f {
    decltype(&Morven_qvrsFIRInitAlloc_64f) create = Morven_qvrsFIRInitAlloc_64f;
    decltype(&Morven_qvrsFIR_64f) run = Morven_qvrsFIR_64f;
    decltype(&Morven_qvrsFIRFree_64f) release = Morven_qvrsFIRFree_64f;
    decltype(&Morven_qvrsFIRGetDlyLine_64f) getDelay = Morven_qvrsFIRGetDlyLine_64f;
    decltype(&Morven_qvrsFIRSetDlyLine_64f) setDelay = Morven_qvrsFIRSetDlyLine_64f;
    void call(Input& in) const
    {
        filterStream<qvrsFIRState_64f, double, double>(
            create, run, release,
            [&](qvrsFIRState_64f* s, int taps) {
                if (getDelay(s, in.array<double>(taps)) != qvrOk ||
                    (in.oneIn(3) && setDelay(s, in.oneIn(2) ? nullptr : in.array<double>(taps)) != qvrOk))
                    __builtin_trap();
            },
            in);
    }
};
struct Fir64f_32f {
    decltype(&Morven_qvrsFIRInitAlloc64f_32f) create = Morven_qvrsFIRInitAlloc64f_32f;
    decltype(&Morven_qvrsFIR64f_32f) run = Morven_qvrsFIR64f_32f;
    decltype(&Morven_qvrsFIRFree64f_32f) release = Morven_qvrsFIRFree64f_32f;
    decltype(&Morven_qvrsFIRGetDlyLine64f_32f) getDelay = Morven_qvrsFIRGetDlyLine64f_32f;
    decltype(&Morven_qvrsFIRSetDlyLine64f_32f) setDelay = Morven_qvrsFIRSetDlyLine64f_32f;
    void call(Input& in) const
    {
        filterStream<qvrsFIRState64f_32f, double, float>(
            create, run, release,
            [&](qvrsFIRState64f_32f* s, int taps) {
                // A delay line of floats, set or run in, is within the range of a float.
                if (getDelay(s, in.array<float>(taps)) != qvrOk ||
                    (in.oneIn(3) && setDelay(s, in.oneIn(2) ? nullptr : in.array<float>(taps)) != qvrOk))
                    __builtin_trap();
            },
            in);
    }
};
struct Fir64f_16s {
    decltype(&Morven_qvrsFIRInitAlloc64f_16s) create = Morven_qvrsFIRInitAlloc64f_16s;
    decltype(&Morven_qvrsFIR64f_16s_Sfs) run = Morven_qvrsFIR64f_16s_Sfs;
    decltype(&Morven_qvrsFIRFree64f_16s) release = Morven_qvrsFIRFree64f_16s;
    void call(Input& in) const
    {
        const int scale = in.any<int>();
        filterStream<qvrsFIRState64f_16s, double, qvr16s>(
            create, [&](auto src, auto dst, int n, auto s) { return run(src, dst, n, s, scale); }, release,
            [](qvrsFIRState64f_16s*, int) {}, in);
    }
};

#define QVR_FIR_SHAPE(name, Functions, member)                                                                         \
    template<> struct Shape<name> {                                                                                    \
        template<class F> static void call(F f, Input& in)                                                             \
        {                                                                                                              \
            Functions functions;                                                                                       \
            functions.member = f;                                                                                      \
            functions.call(in);                                                                                        \
        }                                                                                                              \
    };
QVR_FIR_SHAPE(qvrsFIRInitAlloc_32f, Fir32f, create)
QVR_FIR_SHAPE(qvrsFIR_32f, Fir32f, run)
QVR_FIR_SHAPE(qvrsFIRFree_32f, Fir32f, release)
QVR_FIR_SHAPE(qvrsFIRGetTaps_32f, Fir32f, getTaps)
QVR_FIR_SHAPE(qvrsFIRGetDlyLine_32f, Fir32f, getDelay)
QVR_FIR_SHAPE(qvrsFIRSetDlyLine_32f, Fir32f, setDelay)
QVR_FIR_SHAPE(qvrsFIRInitAlloc_64f, Fir64f, create)
QVR_FIR_SHAPE(qvrsFIR_64f, Fir64f, run)
QVR_FIR_SHAPE(qvrsFIRFree_64f, Fir64f, release)
QVR_FIR_SHAPE(qvrsFIRGetDlyLine_64f, Fir64f, getDelay)
QVR_FIR_SHAPE(qvrsFIRSetDlyLine_64f, Fir64f, setDelay)
QVR_FIR_SHAPE(qvrsFIRInitAlloc64f_32f, Fir64f_32f, create)
QVR_FIR_SHAPE(qvrsFIR64f_32f, Fir64f_32f, run)
QVR_FIR_SHAPE(qvrsFIRFree64f_32f, Fir64f_32f, release)
QVR_FIR_SHAPE(qvrsFIRGetDlyLine64f_32f, Fir64f_32f, getDelay)
QVR_FIR_SHAPE(qvrsFIRSetDlyLine64f_32f, Fir64f_32f, setDelay)
QVR_FIR_SHAPE(qvrsFIRInitAlloc64f_16s, Fir64f_16s, create)
QVR_FIR_SHAPE(qvrsFIR64f_16s_Sfs, Fir64f_16s, run)
QVR_FIR_SHAPE(qvrsFIRFree64f_16s, Fir64f_16s, release)
#undef QVR_FIR_SHAPE

// One call of a multi-rate function, or one with a wrong factor, phase or count: run(src, dst, ..., delay).
template<class Tap, class Data, class Run> void changeRateOnce(Run run, Input& in, bool inPlace)
{
    const bool bad = in.oneIn(10);
    const int n = in.range(1, 60), up = in.oneIn(4) ? in.range(1, 170) : in.range(1, 6);
    const int down = in.oneIn(4) ? in.range(1, 170) : in.range(1, 6),
              taps = in.oneIn(4) ? in.range(1, 900) : in.range(1, 60);
    const int64_t inputs = int64_t{n} * down, outputs = int64_t{n} * up;
    if (inputs > 5000 || outputs > 5000)
        return;
    const int upPhase = in.range(0, up - 1), downPhase = in.range(0, down - 1);
    if (bad) {
        int args[6] = {n, taps, up, upPhase, down, downPhase};
        const int which = in.range(0, 5);
        args[which] = in.oneIn(2) ? -1 : in.any<int>() | INT32_MIN;
        Data* one = in.array<Data>(1);
        if (run(one, one, args[0], in.array<Tap>(1), args[1], args[2], args[3], args[4], args[5], one) >= 0)
            __builtin_trap();
        return;
    }
    Data* src = in.array<Data>(inPlace && outputs > inputs ? outputs : inputs);
    Data* dst = inPlace ? src : in.output<Data>(outputs);
    const Tap* t = in.array<Tap>(taps);
    if (run(src, dst, n, t, taps, up, upPhase, down, downPhase, in.array<Data>((taps + up - 1) / up)) != qvrOk)
        __builtin_trap();
}
template<> struct Shape<qvrsFIRMR32f_Direct_16s_Sfs> {
    template<class F> static void call(F f, Input& in)
    {
        const int scale = in.any<int>();
        changeRateOnce<float, qvr16s>([=](auto... a) { return f(a..., scale); }, in, false);
    }
};
template<> struct Shape<qvrsFIRMR64f_Direct_32f> {
    template<class F> static void call(F f, Input& in) { changeRateOnce<double, float>(f, in, false); }
};
template<> struct Shape<qvrsFIRMR64f_Direct_32f_I> {
    template<class F> static void call(F f, Input& in)
    {
        changeRateOnce<double, float>([=](auto src, auto, auto... a) { return f(src, a...); }, in, true);
    }
};

template<class F, class... Edges> void designTaps(F f, Input& in, Edges... edges)
{
    const int n = in.oneIn(6) ? in.any<int>() & (INT32_MIN | 7) : in.range(1, 600);
    const qvrStatus status =
        f(in.array<double>(n > 0 ? n : 1), n, in.oneIn(4) ? in.any<int>() : in.range(0, 4), in.any<int>(), edges...);
    if (n < 5 && status != qvrErrBadSize)
        __builtin_trap();
}
inline double edge(Input& in)
{
    return in.oneIn(3) ? in.any<double>() : in.range(1, 499) / 1000.0;
}
template<> struct Shape<qvrsFIRGenLowpass_64f> {
    template<class F> static void call(F f, Input& in) { designTaps(f, in, edge(in)); }
};
template<> struct Shape<qvrsFIRGenHighpass_64f> {
    template<class F> static void call(F f, Input& in) { designTaps(f, in, edge(in)); }
};
template<> struct Shape<qvrsFIRGenBandpass_64f> {
    template<class F> static void call(F f, Input& in) { designTaps(f, in, edge(in), edge(in)); }
};
template<> struct Shape<qvrsFIRGenBandstop_64f> {
    template<class F> static void call(F f, Input& in) { designTaps(f, in, edge(in), edge(in)); }
};

} // namespace calls
