// The regions of a FIR state's one allocation, in the order in which they are taken.
#ifndef QVR_FILTERS_FIR_LAYOUT_H
#define QVR_FILTERS_FIR_LAYOUT_H

#include "frame/memory.h"
#include "frame/threads.h"

namespace {

// Offsets in bytes, each region from a boundary of 64 bytes. Sizes that no allocation holds are told by `used` at the
// end; counts are below 2^40, so it cannot overflow.
struct FirLayout {
    int64_t used;
    template<class T> int64_t take(int64_t count)
    {
        const int64_t at = qvrAlignUp<int64_t>(used, 64);
        used = at + count * static_cast<int64_t>(sizeof(T));
        return at;
    }
};

} // namespace

#endif
