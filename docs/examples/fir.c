// FIR filters, multi-rate calls and design.
#include <math.h>

#include "example.h"

EXAMPLE(qvrsFIRInitAlloc_32f)
{
    const qvr32f taps[] = {0.5f, 0.25f}; // y[n] = x[n] / 2 + x[n - 1] / 4
    qvrsFIRState_32f* state;
    Morven_qvrsFIRInitAlloc_32f(&state, taps, 2, NULL);
    Morven_qvrsFIRFree_32f(state);
}

EXAMPLE(qvrsFIRFree_32f)
{
    const qvr32f taps[] = {0.5f, 0.25f}; // y[n] = x[n] / 2 + x[n - 1] / 4
    qvrsFIRState_32f* state;
    Morven_qvrsFIRInitAlloc_32f(&state, taps, 2, NULL);
    EXPECT_VALUE(Morven_qvrsFIRFree_32f(state), qvrOk);
}

EXAMPLE(qvrsFIR_32f)
{
    const qvr32f taps[] = {0.5f, 0.25f}; // y[n] = x[n] / 2 + x[n - 1] / 4
    qvrsFIRState_32f* state;
    Morven_qvrsFIRInitAlloc_32f(&state, taps, 2, NULL);
    const qvr32f x[] = {4, 8, 16, 0};
    qvr32f y[4];
    Morven_qvrsFIR_32f(x, y, 3, state);
    Morven_qvrsFIR_32f(x + 3, y + 3, 1, state); // goes on where the first call ended
    EXPECT(y, 2, 5, 10, 4);
    Morven_qvrsFIRFree_32f(state);
}

EXAMPLE(qvrsFIRGetDlyLine_32f)
{
    const qvr32f taps[] = {0.5f, 0.25f}; // y[n] = x[n] / 2 + x[n - 1] / 4
    qvrsFIRState_32f* state;
    Morven_qvrsFIRInitAlloc_32f(&state, taps, 2, NULL);
    const qvr32f x[] = {4, 8, 16};
    qvr32f y[3], past[2];
    Morven_qvrsFIR_32f(x, y, 3, state);
    Morven_qvrsFIRGetDlyLine_32f(state, past); // the newest sample first
    EXPECT(past, 16, 8);
    Morven_qvrsFIRFree_32f(state);
}

EXAMPLE(qvrsFIRSetDlyLine_32f)
{
    const qvr32f taps[] = {0.5f, 0.25f}; // y[n] = x[n] / 2 + x[n - 1] / 4
    qvrsFIRState_32f* state;
    Morven_qvrsFIRInitAlloc_32f(&state, taps, 2, NULL);
    const qvr32f past[] = {16, 8}, x[] = {0};
    qvr32f y[1];
    Morven_qvrsFIRSetDlyLine_32f(state, past);
    Morven_qvrsFIR_32f(x, y, 1, state);
    EXPECT(y, 4);
    Morven_qvrsFIRSetDlyLine_32f(state, NULL); // silence
    Morven_qvrsFIRFree_32f(state);
}

EXAMPLE(qvrsFIRGetTaps_32f)
{
    const qvr32f taps[] = {0.5f, 0.25f}; // y[n] = x[n] / 2 + x[n - 1] / 4
    qvrsFIRState_32f* state;
    Morven_qvrsFIRInitAlloc_32f(&state, taps, 2, NULL);
    qvr32f copy[2];
    Morven_qvrsFIRGetTaps_32f(state, copy);
    EXPECT(copy, 0.5, 0.25);
    Morven_qvrsFIRFree_32f(state);
}

EXAMPLE(qvrsFIRInitAlloc_64f)
{
    const qvr64f taps[] = {0.5, 0.25}; // y[n] = x[n] / 2 + x[n - 1] / 4
    qvrsFIRState_64f* state;
    Morven_qvrsFIRInitAlloc_64f(&state, taps, 2, NULL);
    Morven_qvrsFIRFree_64f(state);
}

EXAMPLE(qvrsFIRFree_64f)
{
    const qvr64f taps[] = {0.5, 0.25}; // y[n] = x[n] / 2 + x[n - 1] / 4
    qvrsFIRState_64f* state;
    Morven_qvrsFIRInitAlloc_64f(&state, taps, 2, NULL);
    EXPECT_VALUE(Morven_qvrsFIRFree_64f(state), qvrOk);
}

EXAMPLE(qvrsFIR_64f)
{
    const qvr64f taps[] = {0.5, 0.25}; // y[n] = x[n] / 2 + x[n - 1] / 4
    qvrsFIRState_64f* state;
    Morven_qvrsFIRInitAlloc_64f(&state, taps, 2, NULL);
    const qvr64f x[] = {4, 8, 16, 0};
    qvr64f y[4];
    Morven_qvrsFIR_64f(x, y, 3, state);
    Morven_qvrsFIR_64f(x + 3, y + 3, 1, state); // goes on where the first call ended
    EXPECT(y, 2, 5, 10, 4);
    Morven_qvrsFIRFree_64f(state);
}

EXAMPLE(qvrsFIRGetDlyLine_64f)
{
    const qvr64f taps[] = {0.5, 0.25}; // y[n] = x[n] / 2 + x[n - 1] / 4
    qvrsFIRState_64f* state;
    Morven_qvrsFIRInitAlloc_64f(&state, taps, 2, NULL);
    const qvr64f x[] = {4, 8, 16};
    qvr64f y[3], past[2];
    Morven_qvrsFIR_64f(x, y, 3, state);
    Morven_qvrsFIRGetDlyLine_64f(state, past); // the newest sample first
    EXPECT(past, 16, 8);
    Morven_qvrsFIRFree_64f(state);
}

EXAMPLE(qvrsFIRSetDlyLine_64f)
{
    const qvr64f taps[] = {0.5, 0.25}; // y[n] = x[n] / 2 + x[n - 1] / 4
    qvrsFIRState_64f* state;
    Morven_qvrsFIRInitAlloc_64f(&state, taps, 2, NULL);
    const qvr64f past[] = {16, 8}, x[] = {0};
    qvr64f y[1];
    Morven_qvrsFIRSetDlyLine_64f(state, past);
    Morven_qvrsFIR_64f(x, y, 1, state);
    EXPECT(y, 4);
    Morven_qvrsFIRSetDlyLine_64f(state, NULL); // silence
    Morven_qvrsFIRFree_64f(state);
}

EXAMPLE(qvrsFIRInitAlloc64f_32f)
{
    const qvr64f taps[] = {0.5, 0.25}; // y[n] = x[n] / 2 + x[n - 1] / 4
    qvrsFIRState64f_32f* state;
    Morven_qvrsFIRInitAlloc64f_32f(&state, taps, 2, NULL);
    Morven_qvrsFIRFree64f_32f(state);
}

EXAMPLE(qvrsFIRFree64f_32f)
{
    const qvr64f taps[] = {0.5, 0.25}; // y[n] = x[n] / 2 + x[n - 1] / 4
    qvrsFIRState64f_32f* state;
    Morven_qvrsFIRInitAlloc64f_32f(&state, taps, 2, NULL);
    EXPECT_VALUE(Morven_qvrsFIRFree64f_32f(state), qvrOk);
}

EXAMPLE(qvrsFIR64f_32f)
{
    const qvr64f taps[] = {0.5, 0.25}; // y[n] = x[n] / 2 + x[n - 1] / 4
    qvrsFIRState64f_32f* state;
    Morven_qvrsFIRInitAlloc64f_32f(&state, taps, 2, NULL);
    const qvr32f x[] = {4, 8, 16, 0};
    qvr32f y[4];
    Morven_qvrsFIR64f_32f(x, y, 3, state);
    Morven_qvrsFIR64f_32f(x + 3, y + 3, 1, state); // goes on where the first call ended
    EXPECT(y, 2, 5, 10, 4);
    Morven_qvrsFIRFree64f_32f(state);
}

EXAMPLE(qvrsFIRGetDlyLine64f_32f)
{
    const qvr64f taps[] = {0.5, 0.25}; // y[n] = x[n] / 2 + x[n - 1] / 4
    qvrsFIRState64f_32f* state;
    Morven_qvrsFIRInitAlloc64f_32f(&state, taps, 2, NULL);
    const qvr32f x[] = {4, 8, 16};
    qvr32f y[3], past[2];
    Morven_qvrsFIR64f_32f(x, y, 3, state);
    Morven_qvrsFIRGetDlyLine64f_32f(state, past); // the newest sample first
    EXPECT(past, 16, 8);
    Morven_qvrsFIRFree64f_32f(state);
}

EXAMPLE(qvrsFIRSetDlyLine64f_32f)
{
    const qvr64f taps[] = {0.5, 0.25}; // y[n] = x[n] / 2 + x[n - 1] / 4
    qvrsFIRState64f_32f* state;
    Morven_qvrsFIRInitAlloc64f_32f(&state, taps, 2, NULL);
    const qvr32f past[] = {16, 8}, x[] = {0};
    qvr32f y[1];
    Morven_qvrsFIRSetDlyLine64f_32f(state, past);
    Morven_qvrsFIR64f_32f(x, y, 1, state);
    EXPECT(y, 4);
    Morven_qvrsFIRSetDlyLine64f_32f(state, NULL); // silence
    Morven_qvrsFIRFree64f_32f(state);
}

EXAMPLE(qvrsFIRInitAlloc64f_16s)
{
    const qvr64f taps[] = {0.5, 0.25}; // y[n] = x[n] / 2 + x[n - 1] / 4
    qvrsFIRState64f_16s* state;
    Morven_qvrsFIRInitAlloc64f_16s(&state, taps, 2, NULL);
    Morven_qvrsFIRFree64f_16s(state);
}

EXAMPLE(qvrsFIRFree64f_16s)
{
    const qvr64f taps[] = {0.5, 0.25}; // y[n] = x[n] / 2 + x[n - 1] / 4
    qvrsFIRState64f_16s* state;
    Morven_qvrsFIRInitAlloc64f_16s(&state, taps, 2, NULL);
    EXPECT_VALUE(Morven_qvrsFIRFree64f_16s(state), qvrOk);
}

EXAMPLE(qvrsFIR64f_16s_Sfs)
{
    const qvr64f taps[] = {0.5, 0.25}; // y[n] = x[n] / 2 + x[n - 1] / 4
    qvrsFIRState64f_16s* state;
    Morven_qvrsFIRInitAlloc64f_16s(&state, taps, 2, NULL);
    const qvr16s x[] = {4, 8, 16, 0};
    qvr16s y[4];
    Morven_qvrsFIR64f_16s_Sfs(x, y, 3, state, 0);
    Morven_qvrsFIR64f_16s_Sfs(x + 3, y + 3, 1, state, 0); // goes on where the first call ended
    EXPECT(y, 2, 5, 10, 4);
    Morven_qvrsFIRFree64f_16s(state);
}

EXAMPLE(qvrsFIRMR32f_Direct_16s_Sfs)
{
    // Twice the rate by linear interpolation; the taps are for the high rate.
    const qvr32f taps[] = {0.5f, 1, 0.5f};
    const qvr16s x[] = {10, 20, 30};
    qvr16s y[6], past[2] = {0, 0};
    Morven_qvrsFIRMR32f_Direct_16s_Sfs(x, y, 3, taps, 3, 2, 0, 1, 0, past, 0);
    EXPECT(y, 5, 10, 15, 20, 25, 30);
    EXPECT(past, 30, 20);
}

EXAMPLE(qvrsFIRMR64f_Direct_32f)
{
    // Half the rate: means of neighbours.
    const qvr64f taps[] = {0.5, 0.5};
    const qvr32f x[] = {1, 3, 5, 7};
    qvr32f y[2], past[2] = {0, 0};
    Morven_qvrsFIRMR64f_Direct_32f(x, y, 2, taps, 2, 1, 0, 2, 1, past);
    EXPECT(y, 2, 6);
}

EXAMPLE(qvrsFIRMR64f_Direct_32f_I)
{
    const qvr64f taps[] = {0.5, 0.5};
    qvr32f x[] = {1, 3, 5, 7}, past[2] = {0, 0};
    Morven_qvrsFIRMR64f_Direct_32f_I(x, 2, taps, 2, 1, 0, 2, 1, past);
    EXPECT(x, 2, 6);
}

EXAMPLE(qvrsFIRGenLowpass_64f)
{
    qvr64f taps[5];
    Morven_qvrsFIRGenLowpass_64f(taps, 5, qvrFirHamming, 1, 0.2);
    EXPECT_VALUE(taps[0] + taps[1] + taps[2] + taps[3] + taps[4], 1); // gain at frequency 0
    EXPECT_VALUE(taps[0] - taps[4], 0);                               // symmetric
}

EXAMPLE(qvrsFIRGenHighpass_64f)
{
    qvr64f taps[5];
    Morven_qvrsFIRGenHighpass_64f(taps, 5, qvrFirHamming, 1, 0.2);
    EXPECT_VALUE(taps[0] - taps[1] + taps[2] - taps[3] + taps[4], 1); // gain at half the sampling rate
    EXPECT_VALUE(taps[0] - taps[4], 0);                               // symmetric
}

EXAMPLE(qvrsFIRGenBandstop_64f)
{
    qvr64f taps[5];
    Morven_qvrsFIRGenBandstop_64f(taps, 5, qvrFirHamming, 1, 0.2, 0.3);
    EXPECT_VALUE(taps[0] + taps[1] + taps[2] + taps[3] + taps[4], 1); // gain at frequency 0
    EXPECT_VALUE(taps[0] - taps[4], 0);                               // symmetric
}

EXAMPLE(qvrsFIRGenBandpass_64f)
{
    qvr64f taps[5];
    Morven_qvrsFIRGenBandpass_64f(taps, 5, qvrFirHamming, 1, 0.2, 0.3);
    EXPECT_VALUE(fabs(taps[0] - taps[2] + taps[4]), 1); // gain at a quarter of the sampling rate
    EXPECT_VALUE(taps[0] - taps[4], 0);                 // symmetric
}
