// Calls of the transforms.
#pragma once

#include "calls/shapes_vector.h"

namespace calls {

// An honest object, a transform each way, and its release; a bad order or flag must come back as its status.
template<class Spec, class T, class Create, class Release, class Run>
void roundTrip(Create create, Release release, Run forward, Run inverse, Input& in)
{
    const int order = in.oneIn(10) ? in.any<int>() : in.range(0, 13);
    const int flag = in.oneIn(10) ? in.any<int>() : 1 << in.range(0, 3);
    const bool knownFlag = flag == 1 || flag == 2 || flag == 4 || flag == 8;
    // Large orders are real requests; here they would only cost memory.
    if (order > 13 && order <= 30 && knownFlag)
        return;
    Spec* spec = nullptr;
    const qvrStatus status = create(&spec, order, flag, in.any<int>());
    const qvrStatus want = order < 0 || order > 30 ? qvrErrFFTOrder : knownFlag ? qvrOk : qvrErrFFTFlag;
    if (status != want)
        __builtin_trap();
    if (status != qvrOk)
        return;
    const int64_t n = int64_t{1} << order;
    T *x = in.array<T>(n), *spectrum = in.array<T>(n == 1 ? 2 : n + 2);
    if (forward(x, spectrum, spec, nullptr) != qvrOk)
        __builtin_trap();
    if (!in.anything()) { // nothing reads the imaginary parts of the first and the last bin
        const T signalling = std::numeric_limits<T>::signaling_NaN();
        copyElements(spectrum + 1, &signalling, 1);
        copyElements(spectrum + (n == 1 ? 1 : n + 1), &signalling, 1);
    }
    if (inverse(spectrum, x, spec, nullptr) != qvrOk)
        __builtin_trap();
    if (release(spec) != qvrOk)
        __builtin_trap();
}

#define QVR_ROUND_TRIP(name, tag, T)                                                                                   \
    template<> struct Shape<name##tag> {                                                                               \
        template<class F> static void call(F, Input& in)                                                               \
        {                                                                                                              \
            roundTrip<qvrsFFTSpec_R_##tag, T>(Morven_qvrsFFTInitAlloc_R_##tag, Morven_qvrsFFTFree_R_##tag,             \
                                              Morven_qvrsFFTFwd_RToCCS_##tag, Morven_qvrsFFTInv_CCSToR_##tag, in);     \
        }                                                                                                              \
    };
QVR_ROUND_TRIP(qvrsFFTInitAlloc_R_, 32f, qvr32f)
QVR_ROUND_TRIP(qvrsFFTFree_R_, 32f, qvr32f)
QVR_ROUND_TRIP(qvrsFFTFwd_RToCCS_, 32f, qvr32f)
QVR_ROUND_TRIP(qvrsFFTInv_CCSToR_, 32f, qvr32f)
QVR_ROUND_TRIP(qvrsFFTInitAlloc_R_, 64f, qvr64f)
QVR_ROUND_TRIP(qvrsFFTFree_R_, 64f, qvr64f)
QVR_ROUND_TRIP(qvrsFFTFwd_RToCCS_, 64f, qvr64f)
QVR_ROUND_TRIP(qvrsFFTInv_CCSToR_, 64f, qvr64f)
#undef QVR_ROUND_TRIP

} // namespace calls
