// The record behind a FIR state.
#ifndef QVR_FILTERS_FIR_STATE_RECORD_H
#define QVR_FILTERS_FIR_STATE_RECORD_H

#include <stdint.h>

struct qvrsFFTSpec_R_32f;
struct qvrsFFTSpec_R_64f;

enum : uint32_t {
    qvrTagFir_32f = 0x46493031,                // "FI01": one rate
    qvrTagFirMultiRate_32f = 0x46493033,       // "FI03": multi-rate
    qvrTagFir_64f = 0x46493133,                // "FI13"
    qvrTagFirMultiRate_64f = 0x46493135,       // "FI15"
    qvrTagFir64f_32f = 0x46493137,             // "FI17": taps 64f, data 32f
    qvrTagFirMultiRate64f_32f = 0x46493139,    // "FI19", whose history is 32f
    qvrTagFir64f_32s = 0x46493231,             // "FI21": one rate, the first delay line as 32s
    qvrTagFir64f_16s = 0x46493235,             // "FI25"
    qvrTagFirMultiRate64f_16s = 0x46493237,    // "FI27"
    qvrTagFirNoDelay_32f = 0x46493333,         // "FI33": one rate, the history stands before the source
    qvrTagFirMultiRateNoDelay_32f = 0x46493334 // "FI34": the same, multi-rate
};

template<class Tap, class Data, class Plan> struct FirStateRecord {
    uint32_t tag;
    Tap* tapsStore;  // reversed taps, and further copies by slot
    Tap* delayStore; // the delay line, oldest sample first, and room for new samples; floats in FI19
    int32_t tapsLen;
    int32_t upFactor;
    int32_t directLimit; // largest run that goes through the delay buffer; multi-rate: room behind the history
    int32_t downFactor;
    int32_t prologueOutputs; // outputs before a multi-rate run reads its windows from the source
    Plan* fftPlan;
    Tap* tapSpectrum;
    int32_t fftLen;     // -1 without a plan
    int32_t delayIndex; // of the oldest sample in delayStore
    int32_t* phaseTable;
    Tap* laneTaps; // one rate: each tap repeated; multi-rate: polyphase taps
    int32_t phaseTapsLen;
    int32_t multiRateMode; // 1 direct, 2 decimating, 3 indexed
    int32_t delayLen;
    Tap* fftBlocks;
    uint8_t* fftWork;
    int32_t fftWorkSize;
    Tap* scratch;
    int32_t* threadStatus;
    int32_t owned;
    Data* narrowScratch; // 64f taps only: the samples of an in-place chunk

    // Behind the public layout.
    Tap* widened;    // mixed forms: the source of a block in the taps' type
    int32_t threads; // the budget that the per-thread regions were made for
};

struct qvrsFIRState_32f : FirStateRecord<float, float, qvrsFFTSpec_R_32f> {};
struct qvrsFIRState_64f : FirStateRecord<double, double, qvrsFFTSpec_R_64f> {};
struct qvrsFIRState64f_32f : FirStateRecord<double, float, qvrsFFTSpec_R_64f> {};
struct qvrsFIRState64f_16s : FirStateRecord<double, int16_t, qvrsFFTSpec_R_64f> {};

#endif
