// Calls of functions whose arguments are not arrays of one length, by family.
#pragma once

#include "calls/shape.h"
#include "calls/shapes_convolution.h"
#include "calls/shapes_filters.h"
#include "calls/shapes_fir.h"
#include "calls/shapes_fourier.h"
#include "calls/shapes_image.h"
#include "calls/shapes_vector.h"

namespace calls {

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

} // namespace calls
