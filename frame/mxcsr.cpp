// By contract: the rounding helper is there, though kernels round by instructions and regions restore the whole word.
#include "frame/mxcsr.h"

#include "frame/processor.h"

// Given a whole old word, the replaced field brings the old rounding back and the other bits are ORed in: masks come
// back, and flags raised meanwhile stay.
extern "C" uint32_t qvrSetRoundMode(uint64_t bits)
{
    const uint32_t old = readMxcsr();
    if ((old & kMxcsrRounding) != bits)
        writeMxcsr((old & ~kMxcsrRounding) | static_cast<uint32_t>(bits));
    return old;
}
