// The floating-point control and status word, for code that changes it or carries it to another thread.
//
// The compiler may move arithmetic across a write of MXCSR. Whoever writes it does so in a caller of a noinline kernel
// and restores it on every path.
#ifndef QVR_FRAME_MXCSR_H
#define QVR_FRAME_MXCSR_H

#include <stdint.h>

namespace {

inline constexpr uint32_t kMxcsrRounding = 0x6000; // nearest 0, down 0x2000, up 0x4000, toward zero 0x6000
inline constexpr uint32_t kMxcsrMasks = 0x1F80;    // all exceptions masked
inline constexpr uint32_t kMxcsrFlags = 0x1F;      // the five flags other than precision
inline constexpr uint32_t kMxcsrAllFlags = 0x3F;

inline uint32_t readMxcsr()
{
    uint32_t word;
    __asm__ volatile("stmxcsr %0" : "=m"(word) : : "memory");
    return word;
}

inline void writeMxcsr(uint32_t word)
{
    __asm__ volatile("ldmxcsr %0" : : "m"(word) : "memory");
}

// Clears pending x87 exceptions. The test comes first because fnclex costs far more than fnstsw.
inline void clearX87()
{
    uint16_t status;
    __asm__ volatile("fnstsw %0" : "=a"(status));
    if (status & 0xFF)
        __asm__ volatile("fnclex");
}

// The environment of an elementary function: all exceptions masked for its span, the caller's rounding in force.
// enterQuiet returns the caller's word; leaveQuiet gets it back.
inline uint32_t enterQuiet()
{
    const uint32_t word = readMxcsr();
    if ((word & kMxcsrMasks) != kMxcsrMasks)
        writeMxcsr(word | kMxcsrMasks);
    return word;
}

// A caller with unmasked exceptions gets its whole word back. For any other the five flags are cleared, also those
// raised before the call; the precision flag stays.
inline void leaveQuiet(uint32_t word)
{
    if ((word & kMxcsrMasks) != kMxcsrMasks) {
        writeMxcsr(word);
    } else {
        const uint32_t now = readMxcsr();
        if (now & kMxcsrFlags)
            writeMxcsr(now & ~kMxcsrFlags);
    }
    clearX87();
}

} // namespace

#endif
