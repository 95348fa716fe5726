// A real transform for the length of one call: object and work memory.
#ifndef QVR_FOURIER_TRANSFORMS_H
#define QVR_FOURIER_TRANSFORMS_H

#include "fourier/real/spec.h"
#include "frame/memory.h"

namespace {

struct Transform {
    qvrsFFTSpec_R_32f* spec;
    int64_t points;
    int64_t workFloats; // the transforms' buffer
};

// The least order from `from` on whose length is at least n.
inline int orderFor(int64_t n, int from)
{
    int order = from;
    while (int64_t{1} << order < n)
        order++;
    return order;
}

// An object whose inverse transform divides by the length, for a call that keeps `arrays` arrays of that length.
// Refused before anything is built where these would pass 31 bits of bytes, which is the same length on every slot.
inline qvrStatus makeTransform(int order, int arrays, Transform& t)
{
    if (int64_t{4} * arrays << order > INT32_MAX)
        return qvrErrNoMemory;
    t = {nullptr, int64_t{1} << order, 0};
    if (const qvrStatus status = SLOT(qvrsFFTInitAlloc_R_32f)(&t.spec, order, qvrFftDivInvByN, qvrHintNone))
        return status;
    int32_t bytes = 0;
    SLOT(ownqvrsFFTGetBufSize_R_32f)(t.spec, &bytes);
    t.workFloats = (static_cast<int64_t>(bytes) + 3) / 4;
    return qvrOk;
}

// Releases object and memory, and hands the status on.
inline qvrStatus endTransform(const Transform& t, void* memory, qvrStatus status)
{
    SLOT(qvrsFFTFree_R_32f)(t.spec);
    release(memory);
    return status;
}

// Null also where the bytes would pass 31 bits.
inline float* allocateFloats(int64_t count)
{
    return count * 4 <= INT32_MAX ? allocate<float>(static_cast<int>(count)) : nullptr;
}

} // namespace

#endif
