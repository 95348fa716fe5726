// Calls of functions whose arguments are not arrays of one length.
//
// A function here is a specialisation of Shape for its name; every other export gets the usual call of arguments.h.
#pragma once

#include "fuzz/arguments.h"
#include "support/slot_list.h"

namespace fuzz {

// One type per export, to specialise on.
#define QVR_SHARED(name) struct name;
#define QVR_OWN(name) QVR_SHARED(name)
#define QVR_PLAIN(name) QVR_SHARED(name)
#include "frame/exports.def"

template<class Name> struct Shape {
    template<class F> static void call(F f, Input& in) { callUsual(f, in); }
};

// Allocated in one slot, written to its end and released in another.
template<class Allocate, class Release> void allocateAndRelease(Allocate allocate, Release release, Input& in)
{
    const int len = in.oneIn(4) ? in.any<int>() & INT32_MIN : in.range(0, 100000);
    qvr8u* p = allocate(len);
    if ((len >= 1) != (p != nullptr))
        __builtin_trap();
    if (p)
        memset(p, 0x77, static_cast<size_t>(len));
    release(p);
}

template<> struct Shape<qvrsMalloc_8u> {
    template<class F> static void call(F f, Input& in) { allocateAndRelease(f, Morven_qvrsFree, in); }
};

template<> struct Shape<qvrsFree> {
    template<class F> static void call(F f, Input& in) { allocateAndRelease(Morven_qvrsMalloc_8u, f, in); }
};

template<> struct Shape<qvrsSplitScaled_16s32f_D2L> {
    template<class F> static void call(F f, Input& in)
    {
        const int channels = in.range(1, 12), len = in.range(1, 300);
        const qvr16s* src = in.array<qvr16s>(int64_t{channels} * len);
        std::vector<qvr32f*> rows(static_cast<size_t>(channels));
        for (qvr32f*& row : rows)
            row = in.array<qvr32f>(len);
        if (in.oneIn(20)) {
            rows[static_cast<size_t>(in.range(0, channels - 1))] = nullptr;
            if (f(src, rows.data(), channels, len) != qvrErrNullPointer)
                __builtin_trap();
        } else if (f(src, rows.data(), channels, len) != qvrOk) {
            __builtin_trap();
        }
    }
};

// Objects are made, used and released whole; a bad order or flag must come back as its status.
template<class Spec, class T, class Init, class Free, class Forward, class Inverse>
void roundTrip(Init init, Free release, Forward forward, Inverse inverse, Input& in)
{
    const int order = in.oneIn(10) ? in.any<int>() : in.range(0, 13);
    const int flag = in.oneIn(10) ? in.any<int>() : 1 << in.range(0, 3);
    Spec* spec = nullptr;
    const bool good = order >= 0 && order <= 13 && (flag == 1 || flag == 2 || flag == 4 || flag == 8);
    // Large orders are real requests; here they would only cost memory.
    if (!good && order > 13 && order <= 30)
        return;
    const qvrStatus status = init(&spec, order, flag, in.any<int>());
    if ((status == qvrOk) != good)
        __builtin_trap();
    if (!good)
        return;
    const int64_t n = int64_t{1} << order, spectrum = n == 1 ? 2 : n + 2;
    T *x = in.array<T>(n), *y = in.array<T>(spectrum);
    if (forward(x, y, spec, nullptr) != qvrOk || inverse(y, x, spec, nullptr) != qvrOk)
        __builtin_trap();
    if (release(spec) != qvrOk)
        __builtin_trap();
}

// An object belongs to the slot that made it: the slot is that of the function at hand.
template<class F> int slotOf(F const (&table)[7], F f)
{
    int slot = 0;
    while (table[slot] != f)
        slot++;
    return slot;
}

#define QVR_FUZZ_ROUND(name, tag, T)                                                                                   \
    template<> struct Shape<name##tag> {                                                                               \
        template<class F> static void call(F f, Input& in)                                                             \
        {                                                                                                              \
            const int slot = slotOf(qvrTable_##name##tag, f);                                                          \
            roundTrip<qvrsFFTSpec_R_##tag, T>(                                                                         \
                qvrTable_qvrsFFTInitAlloc_R_##tag[slot], qvrTable_qvrsFFTFree_R_##tag[slot],                           \
                qvrTable_qvrsFFTFwd_RToCCS_##tag[slot], qvrTable_qvrsFFTInv_CCSToR_##tag[slot], in);                   \
        }                                                                                                              \
    };
#define QVR_FUZZ_FFT(tag, T)                                                                                           \
    QVR_FUZZ_ROUND(qvrsFFTInitAlloc_R_, tag, T)                                                                        \
    QVR_FUZZ_ROUND(qvrsFFTFree_R_, tag, T)                                                                             \
    QVR_FUZZ_ROUND(qvrsFFTFwd_RToCCS_, tag, T)                                                                         \
    QVR_FUZZ_ROUND(qvrsFFTInv_CCSToR_, tag, T)
QVR_FUZZ_FFT(32f, qvr32f)
QVR_FUZZ_FFT(64f, qvr64f)
#undef QVR_FUZZ_FFT
#undef QVR_FUZZ_ROUND

} // namespace fuzz
