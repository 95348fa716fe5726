// Loops over the vector forms of SLEEF and of glibc's vector math, for the widest slot.
#ifndef QVR_BENCH_ELEMENTARY_VECTORMATH_H
#define QVR_BENCH_ELEMENTARY_VECTORMATH_H

namespace bench {

using UnaryLoop = void(const float* a, float* d, int n);
using BinaryLoop = void(const float* a, const float* b, float* d, int n);

// Accuracy in units of the last place: SLEEF 1.0 and 3.5 by name, glibc's 4.
struct VectorMath {
    const char* function; // null ends the table
    const char* library;
    UnaryLoop* unary;
    BinaryLoop* binary;
};
extern const VectorMath kVectorMath[];

} // namespace bench

#endif
