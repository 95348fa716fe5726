// Argument checks in their fixed order: pointers, state tag, lengths, arguments of meaning, impossible scalars.
#ifndef QVR_FRAME_STATUS_H
#define QVR_FRAME_STATUS_H

#include "frame/slot.h"

namespace {

// A fault stays a branch of its own: gathered into flags, the checks would double what a short call executes.
inline bool isFault(bool fault)
{
    if (__builtin_expect(fault, 0)) {
        __asm__ volatile("");
        return true;
    }
    return false;
}

template<class... P> inline bool anyNull(const P*... pointers)
{
    return (... || isFault(!pointers));
}

// Any null pointer outranks a bad length.
template<class... P> inline qvrStatus checkPointersThenLength(int len, const P*... pointers)
{
    if (anyNull(pointers...))
        return qvrErrNullPointer;
    return isFault(len < 1) ? qvrErrBadSize : qvrOk;
}

// The order of the elementary functions in the slots that look at the length first.
template<class... P> inline qvrStatus checkLengthThenPointers(int len, const P*... pointers)
{
    if (isFault(len < 1))
        return qvrErrBadSize;
    return anyNull(pointers...) ? qvrErrNullPointer : qvrOk;
}

// A state object: null, then a tag other than the expected one.
template<class S> inline qvrStatus checkState(const S* state, uint32_t tag)
{
    if (state == nullptr)
        return qvrErrNullPointer;
    return static_cast<uint32_t>(state->tag) == tag ? qvrOk : qvrErrBadContext;
}

} // namespace

#endif
