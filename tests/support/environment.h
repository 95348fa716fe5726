// The floating-point environment of a scope: control bits and flags of MXCSR.
#pragma once

namespace environment {

inline constexpr unsigned kMasked = 0x1F80;
inline constexpr unsigned kFlush = 0x8000, kDenormalsAreZero = 0x40;
inline constexpr unsigned kNearest = 0, kDown = 0x2000, kUp = 0x4000, kZero = 0x6000;
inline constexpr unsigned kInvalid = 1, kDenormal = 2, kDivide = 4, kOverflow = 8, kUnderflow = 16, kInexact = 32;
inline constexpr unsigned kAllFlags = 0x3F;

} // namespace environment

// Loads `word` for its lifetime; flags() are those raised since.
class Environment {
public:
    explicit Environment(unsigned word) : saved_(get()) { set(word); }
    ~Environment() { set(saved_); }
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;

    unsigned flags() const { return get() & environment::kAllFlags; }
    unsigned word() const { return get(); }

private:
    // Arithmetic may not cross these.
    __attribute__((noinline)) static void set(unsigned word)
    {
        __asm__ volatile("ldmxcsr %0" : : "m"(word) : "memory");
    }
    __attribute__((noinline)) static unsigned get()
    {
        unsigned word;
        __asm__ volatile("stmxcsr %0" : "=m"(word) : : "memory");
        return word;
    }

    unsigned saved_;
};
