// The record behind a recursive-filter state.
#ifndef QVR_FILTERS_IIR_STATE_RECORD_H
#define QVR_FILTERS_IIR_STATE_RECORD_H

#include <stdint.h>

enum : uint32_t {
    qvrTagIir = 0x49493133,        // "II13": any order
    qvrTagIirCascade = 0x49493134, // "II14": a cascade of second-order sections
};

struct qvrsIIRState_64f {
    uint32_t tag;
    double* tapsStore;     // b[0..L] / a0, then a[1..L] / a0; in a cascade b0 b1 b2 a1 a2 for each section
    double* delayStore;    // d[0..L-1] of the transposed form and a zero behind; in a cascade two for each section
    int32_t order;         // L; in a cascade twice the number of sections
    double* pairTaps;      // each b[k] / a0 twice in a row
    double* lookAheadRows; // L rows of 4
    double* blockBuffer;   // kIirChunk doubles
    double* sectionBuffer; // cascades only
    int32_t owned;         // the destroyer frees the allocation
};

#endif
