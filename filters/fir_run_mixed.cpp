// Runs of the FIR states with 64f taps on 32f and 16s data.
#include "filters/fir_run.h"
#include "filters/functions.h"

extern "C" {

qvrStatus SLOT(qvrsFIR64f_32f)(const qvr32f* src, qvr32f* dst, int numIters, qvrsFIRState64f_32f* state)
{
    return firRun<Fir64f_32f>(
        src, dst, numIters, state, 0,
        [](auto s, auto x, auto y, int n, int) { return SLOT(fftFIRSR64f_32f)(s, x, y, n); },
        [](auto s, auto x, auto y, int n, int) { return SLOT(ownFIRMR64f_32f)(s, x, y, n); });
}

qvrStatus SLOT(qvrsFIR64f_16s_Sfs)(const qvr16s* src, qvr16s* dst, int numIters, qvrsFIRState64f_16s* state,
                                   int scaleFactor)
{
    return firRun<Fir64f_16s>(
        src, dst, numIters, state, scaleFactor,
        [](auto s, auto x, auto y, int n, int scale) { return SLOT(fftFIRSR64f_16s_Sfs)(s, x, y, n, scale); },
        [](auto s, auto x, auto y, int n, int scale) { return SLOT(ownFIRMR64f_16s_Sfs)(s, x, y, n, scale); });
}

} // extern "C"
