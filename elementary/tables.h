// Tables and routines that are compiled once for all slots.
#ifndef QVR_ELEMENTARY_TABLES_H
#define QVR_ELEMENTARY_TABLES_H

#include <stdint.h>

#include "frame/processor.h"

extern "C" {

// 2^(j / 128) = hi (1 + lo).
typedef struct {
    float hi, lo;
} qvrPowerRow;
extern QVR_HIDDEN const qvrPowerRow qvrPowerTable[128];

// 2^(j / 128).
extern QVR_HIDDEN const double qvrPowerTable64[128];

// inverse: 1 / (1 + i / 128), rounded to 12 bits in float rows and 16 bits in double ones, so that its product with a
// mantissa is exact in halves, or in double. log: -ln of that inverse, and the same as hi + lo with hi a multiple of
// 2^-16.
typedef struct {
    float log, inverse, hi, lo;
} qvrLogRow;
extern QVR_HIDDEN const qvrLogRow qvrLogTable[128];
typedef struct {
    double inverse, log;
} qvrLogRow64;
extern QVR_HIDDEN const qvrLogRow64 qvrLogTable64[128];

// a: log10(e) / (1 + i / 128) to the nearest multiple of 1/256, twice. hi + lo: log10((111 / 256) / a), hi a multiple
// of 2^-16.
typedef struct {
    float a, again, hi, lo;
} qvrLog10Row;
extern QVR_HIDDEN const qvrLog10Row qvrLog10Table[128];

// Sine and cosine of k pi/32 as high and low parts.
typedef struct {
    double sine, sineLow, cosine, cosineLow;
} qvrTurnRow;
extern QVR_HIDDEN const qvrTurnRow qvrTurnTable[64];

// Of n doubles of finite floats, each |x| >= 2^17 is turns pi/32 + the new x + low; the others stay as they are. Raises
// no exception that leaveQuiet would not clear.
QVR_HIDDEN void qvrReduceLarge(double* x, double* low, int32_t* turns, int n);

// Hyperbolic sine and cosine in extended precision, rounded as the rounding field of an MXCSR says; what is beyond the
// floats is infinite. They clear pending x87 exceptions, use the x87 registers under a control word of their own and
// put the caller's back.
QVR_HIDDEN float qvrWideSinh(float x, uint32_t rounding);
QVR_HIDDEN float qvrWideCosh(float x, uint32_t rounding);

// Called for each element in error: the status, the element's index, the sources (the same twice where there is one),
// the destination twice, and the kernel's name. Points at a routine that does nothing; the one place where reporting
// can be attached.
typedef void qvrErrorHook(int code, int64_t index, const float* src1, const float* src2, float* dst1, float* dst2,
                          const char* name);
extern QVR_HIDDEN qvrErrorHook* qvrsMathErrorHook;

} // extern "C"

// A table as an array of the declared name: the initialiser of an array cannot be a call.
#define QVR_ROW4(rule, i) rule(i), rule(i + 1), rule(i + 2), rule(i + 3)
#define QVR_ROW16(rule, i) QVR_ROW4(rule, i), QVR_ROW4(rule, i + 4), QVR_ROW4(rule, i + 8), QVR_ROW4(rule, i + 12)
#define QVR_ROW64(rule, i) QVR_ROW16(rule, i), QVR_ROW16(rule, i + 16), QVR_ROW16(rule, i + 32), QVR_ROW16(rule, i + 48)

#endif
