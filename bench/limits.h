// What the machine itself can do, measured in the run that the shares refer to.
#ifndef QVR_BENCH_LIMITS_H
#define QVR_BENCH_LIMITS_H

#include "bench/bench.h"

namespace bench {

// Memory patterns; each is measured in several forms of loop and the fastest counts.
enum Pattern { patternRead, patternWrite, patternCopy, patternUpdate, patternTriad, patternUpdateTwo, patternCount };
extern const char* const kPatternNames[];

struct Limits {
    int vectorBytes;                                 // of the loops that measured
    double bandwidth[levelCount][patternCount];      // GB/s, bytes read and bytes written added
    double fma32, add32, divide32, root32, divide64; // 1e9 operations/s; a fused operation counts twice
    double pointerCall, exportedCall; // ns of a call through a pointer: of the slot's function, of the export
};

Limits measureLimits(bool memory, double seconds);
void keepBetter(Limits& limits, const Limits& other);

// Nanoseconds that the machine needs for so much work on so many elements, and what sets them. 0: not known.
double limitTime(const Limits& limits, Level level, const Work& work, double elements, std::string& by);

// The loops, compiled at two levels. Arrays are 64-byte aligned and their sizes multiples of 512 bytes; `s` and `t` are
// sources, `d` the destination, each of n bytes.
struct LimitLoops {
    int vectorBytes;
    void (*const (*patterns)[3])(const char* s, const char* t, char* d, int64_t n); // forms, null where fewer
    double (*operations)(Unit unit, bool fused, int64_t turns);                     // returns operations made
};
extern const LimitLoops limitLoops_mx, limitLoops_l9;

} // namespace bench

#endif
