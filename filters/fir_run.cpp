// Runs of the FIR states whose data have the type of the taps.
#include "filters/fir_run.h"
#include "filters/functions.h"

extern "C" {

qvrStatus SLOT(qvrsFIR_32f)(const qvr32f* src, qvr32f* dst, int numIters, qvrsFIRState_32f* state)
{
    if (!anyNull(state, src, dst) && numIters >= 1 && src != dst) {
        if (state->tag == qvrTagFirNoDelay_32f) {
            firOutputs(src, dst, numIters, state->tapsStore, state->tapsLen);
            return qvrOk;
        }
        if (state->tag == qvrTagFirMultiRateNoDelay_32f)
            return SLOT(ownFIRMR_32f)(state, src, dst, numIters);
    }
    return firRun<Fir32f>(
        src, dst, numIters, state, 0, [](auto s, auto x, auto y, int n, int) { return SLOT(fftFIRSR_32f)(s, x, y, n); },
        [](auto s, auto x, auto y, int n, int) { return SLOT(ownFIRMR_32f)(s, x, y, n); });
}

qvrStatus SLOT(qvrsFIR_64f)(const qvr64f* src, qvr64f* dst, int numIters, qvrsFIRState_64f* state)
{
    return firRun<Fir64f>(
        src, dst, numIters, state, 0, [](auto s, auto x, auto y, int n, int) { return SLOT(fftFIRSR_64f)(s, x, y, n); },
        [](auto s, auto x, auto y, int n, int) { return SLOT(ownFIRMR_64f)(s, x, y, n); });
}

} // extern "C"
