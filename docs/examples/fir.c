// FIR filters.
#include "example.h"

EXAMPLE(qvrsFIRInitAlloc_32f)
{
    const qvr32f taps[] = {0.5, 0.25, 0.25};
    const qvr32f past[] = {4, 8, 0}; // the newest first; the last one has no effect
    qvrsFIRState_32f* state;
    Morven_qvrsFIRInitAlloc_32f(&state, taps, 3, past);
    const qvr32f x[] = {0};
    qvr32f y[1];
    Morven_qvrsFIR_32f(x, y, 1, state);
    EXPECT(y, 3); // 0.5 * 0 + 0.25 * 4 + 0.25 * 8
    Morven_qvrsFIRFree_32f(state);
}

EXAMPLE(qvrsFIRFree_32f)
{
    const qvr32f taps[] = {0.5, 0.25, 0.25};
    qvrsFIRState_32f* state;
    Morven_qvrsFIRInitAlloc_32f(&state, taps, 3, NULL);
    EXPECT_VALUE(Morven_qvrsFIRFree_32f(state), qvrOk);
}

EXAMPLE(qvrsFIR_32f)
{
    const qvr32f taps[] = {0.5, 0.25, 0.25};
    qvrsFIRState_32f* state;
    Morven_qvrsFIRInitAlloc_32f(&state, taps, 3, NULL);
    const qvr32f x[] = {8, 0, 0, 4};
    qvr32f y[4];
    Morven_qvrsFIR_32f(x, y, 2, state);
    Morven_qvrsFIR_32f(x + 2, y + 2, 2, state); // goes on where the first call ended
    EXPECT(y, 4, 2, 2, 2);
    Morven_qvrsFIRFree_32f(state);
}

EXAMPLE(qvrsFIRGetDlyLine_32f)
{
    const qvr32f taps[] = {0.5, 0.25, 0.25};
    qvrsFIRState_32f* state;
    Morven_qvrsFIRInitAlloc_32f(&state, taps, 3, NULL);
    const qvr32f x[] = {1, 2, 3, 4};
    qvr32f y[4], past[3];
    Morven_qvrsFIR_32f(x, y, 4, state);
    Morven_qvrsFIRGetDlyLine_32f(state, past);
    EXPECT(past, 4, 3, 2);
    Morven_qvrsFIRFree_32f(state);
}

EXAMPLE(qvrsFIRSetDlyLine_32f)
{
    const qvr32f taps[] = {0.5, 0.25, 0.25};
    qvrsFIRState_32f* state;
    Morven_qvrsFIRInitAlloc_32f(&state, taps, 3, NULL);
    const qvr32f x[] = {8, 0}, past[] = {4, 4, 0};
    qvr32f y[2];
    Morven_qvrsFIRSetDlyLine_32f(state, past);
    Morven_qvrsFIR_32f(x, y, 2, state);
    EXPECT(y, 6, 3);
    Morven_qvrsFIRSetDlyLine_32f(state, NULL); // zeros: a fresh start
    Morven_qvrsFIR_32f(x, y, 2, state);
    EXPECT(y, 4, 2);
    Morven_qvrsFIRFree_32f(state);
}

EXAMPLE(qvrsFIRGetTaps_32f)
{
    const qvr32f taps[] = {0.5, 0.25, 0.25};
    qvrsFIRState_32f* state;
    Morven_qvrsFIRInitAlloc_32f(&state, taps, 3, NULL);
    qvr32f stored[3];
    Morven_qvrsFIRGetTaps_32f(state, stored);
    EXPECT(stored, 0.5, 0.25, 0.25);
    Morven_qvrsFIRFree_32f(state);
}

EXAMPLE(qvrsFIRInitAlloc_64f)
{
    const qvr64f taps[] = {0.5, 0.25, 0.25};
    const qvr64f past[] = {4, 8, 0}; // the newest first; the last one has no effect
    qvrsFIRState_64f* state;
    Morven_qvrsFIRInitAlloc_64f(&state, taps, 3, past);
    const qvr64f x[] = {0};
    qvr64f y[1];
    Morven_qvrsFIR_64f(x, y, 1, state);
    EXPECT(y, 3); // 0.5 * 0 + 0.25 * 4 + 0.25 * 8
    Morven_qvrsFIRFree_64f(state);
}

EXAMPLE(qvrsFIRFree_64f)
{
    const qvr64f taps[] = {0.5, 0.25, 0.25};
    qvrsFIRState_64f* state;
    Morven_qvrsFIRInitAlloc_64f(&state, taps, 3, NULL);
    EXPECT_VALUE(Morven_qvrsFIRFree_64f(state), qvrOk);
}

EXAMPLE(qvrsFIR_64f)
{
    const qvr64f taps[] = {0.5, 0.25, 0.25};
    qvrsFIRState_64f* state;
    Morven_qvrsFIRInitAlloc_64f(&state, taps, 3, NULL);
    const qvr64f x[] = {8, 0, 0, 4};
    qvr64f y[4];
    Morven_qvrsFIR_64f(x, y, 2, state);
    Morven_qvrsFIR_64f(x + 2, y + 2, 2, state); // goes on where the first call ended
    EXPECT(y, 4, 2, 2, 2);
    Morven_qvrsFIRFree_64f(state);
}

EXAMPLE(qvrsFIRGetDlyLine_64f)
{
    const qvr64f taps[] = {0.5, 0.25, 0.25};
    qvrsFIRState_64f* state;
    Morven_qvrsFIRInitAlloc_64f(&state, taps, 3, NULL);
    const qvr64f x[] = {1, 2, 3, 4};
    qvr64f y[4], past[3];
    Morven_qvrsFIR_64f(x, y, 4, state);
    Morven_qvrsFIRGetDlyLine_64f(state, past);
    EXPECT(past, 4, 3, 2);
    Morven_qvrsFIRFree_64f(state);
}

EXAMPLE(qvrsFIRSetDlyLine_64f)
{
    const qvr64f taps[] = {0.5, 0.25, 0.25};
    qvrsFIRState_64f* state;
    Morven_qvrsFIRInitAlloc_64f(&state, taps, 3, NULL);
    const qvr64f x[] = {8, 0}, past[] = {4, 4, 0};
    qvr64f y[2];
    Morven_qvrsFIRSetDlyLine_64f(state, past);
    Morven_qvrsFIR_64f(x, y, 2, state);
    EXPECT(y, 6, 3);
    Morven_qvrsFIRSetDlyLine_64f(state, NULL); // zeros: a fresh start
    Morven_qvrsFIR_64f(x, y, 2, state);
    EXPECT(y, 4, 2);
    Morven_qvrsFIRFree_64f(state);
}

EXAMPLE(qvrsFIRInitAlloc64f_32f)
{
    const qvr64f taps[] = {0.5, 0.25, 0.25};
    const qvr32f past[] = {4, 8, 0}; // the newest first; the last one has no effect
    qvrsFIRState64f_32f* state;
    Morven_qvrsFIRInitAlloc64f_32f(&state, taps, 3, past);
    const qvr32f x[] = {0};
    qvr32f y[1];
    Morven_qvrsFIR64f_32f(x, y, 1, state);
    EXPECT(y, 3); // 0.5 * 0 + 0.25 * 4 + 0.25 * 8
    Morven_qvrsFIRFree64f_32f(state);
}

EXAMPLE(qvrsFIRFree64f_32f)
{
    const qvr64f taps[] = {0.5, 0.25, 0.25};
    qvrsFIRState64f_32f* state;
    Morven_qvrsFIRInitAlloc64f_32f(&state, taps, 3, NULL);
    EXPECT_VALUE(Morven_qvrsFIRFree64f_32f(state), qvrOk);
}

EXAMPLE(qvrsFIR64f_32f)
{
    const qvr64f taps[] = {0.5, 0.25, 0.25};
    qvrsFIRState64f_32f* state;
    Morven_qvrsFIRInitAlloc64f_32f(&state, taps, 3, NULL);
    const qvr32f x[] = {8, 0, 0, 4};
    qvr32f y[4];
    Morven_qvrsFIR64f_32f(x, y, 2, state);
    Morven_qvrsFIR64f_32f(x + 2, y + 2, 2, state); // goes on where the first call ended
    EXPECT(y, 4, 2, 2, 2);
    Morven_qvrsFIRFree64f_32f(state);
}

EXAMPLE(qvrsFIRGetDlyLine64f_32f)
{
    const qvr64f taps[] = {0.5, 0.25, 0.25};
    qvrsFIRState64f_32f* state;
    Morven_qvrsFIRInitAlloc64f_32f(&state, taps, 3, NULL);
    const qvr32f x[] = {1, 2, 3, 4};
    qvr32f y[4], past[3];
    Morven_qvrsFIR64f_32f(x, y, 4, state);
    Morven_qvrsFIRGetDlyLine64f_32f(state, past);
    EXPECT(past, 4, 3, 2);
    Morven_qvrsFIRFree64f_32f(state);
}

EXAMPLE(qvrsFIRSetDlyLine64f_32f)
{
    const qvr64f taps[] = {0.5, 0.25, 0.25};
    qvrsFIRState64f_32f* state;
    Morven_qvrsFIRInitAlloc64f_32f(&state, taps, 3, NULL);
    const qvr32f x[] = {8, 0}, past[] = {4, 4, 0};
    qvr32f y[2];
    Morven_qvrsFIRSetDlyLine64f_32f(state, past);
    Morven_qvrsFIR64f_32f(x, y, 2, state);
    EXPECT(y, 6, 3);
    Morven_qvrsFIRSetDlyLine64f_32f(state, NULL); // zeros: a fresh start
    Morven_qvrsFIR64f_32f(x, y, 2, state);
    EXPECT(y, 4, 2);
    Morven_qvrsFIRFree64f_32f(state);
}

EXAMPLE(qvrsFIRInitAlloc64f_16s)
{
    const qvr64f taps[] = {0.5, 0.25, 0.25};
    const qvr16s past[] = {4, 8, 0}; // the newest first; the last one has no effect
    qvrsFIRState64f_16s* state;
    Morven_qvrsFIRInitAlloc64f_16s(&state, taps, 3, past);
    const qvr16s x[] = {0};
    qvr16s y[1];
    Morven_qvrsFIR64f_16s_Sfs(x, y, 1, state, 0);
    EXPECT(y, 3); // 0.5 * 0 + 0.25 * 4 + 0.25 * 8
    Morven_qvrsFIRFree64f_16s(state);
}

EXAMPLE(qvrsFIRFree64f_16s)
{
    const qvr64f taps[] = {0.5, 0.25, 0.25};
    qvrsFIRState64f_16s* state;
    Morven_qvrsFIRInitAlloc64f_16s(&state, taps, 3, NULL);
    EXPECT_VALUE(Morven_qvrsFIRFree64f_16s(state), qvrOk);
}

EXAMPLE(qvrsFIR64f_16s_Sfs)
{
    const qvr64f taps[] = {0.5, 0.25, 0.25};
    qvrsFIRState64f_16s* state;
    Morven_qvrsFIRInitAlloc64f_16s(&state, taps, 3, NULL);
    const qvr16s x[] = {8, 0, 0, 5};
    qvr16s y[4];
    Morven_qvrsFIR64f_16s_Sfs(x, y, 2, state, 1);
    Morven_qvrsFIR64f_16s_Sfs(x + 2, y + 2, 2, state, 1); // goes on where the first call ended; halves, away from zero
    EXPECT(y, 2, 1, 1, 1);
    Morven_qvrsFIRFree64f_16s(state);
}

EXAMPLE(qvrsFIRMR64f_Direct_32f)
{
    const qvr64f taps[] = {0.5, 1, 0.5}; // linear interpolation to the double rate
    const qvr32f x[] = {2, 4, 6};
    qvr32f y[6], past[2] = {0, 0};
    Morven_qvrsFIRMR64f_Direct_32f(x, y, 3, taps, 3, 2, 0, 1, 0, past);
    EXPECT(y, 1, 2, 3, 4, 5, 6);
}

EXAMPLE(qvrsFIRMR64f_Direct_32f_I)
{
    const qvr64f taps[] = {0.5, 0.5}; // the mean of two samples at half the rate
    qvr32f x[] = {2, 4, 6, 8}, past[2] = {0, 0};
    Morven_qvrsFIRMR64f_Direct_32f_I(x, 2, taps, 2, 1, 0, 2, 1, past);
    EXPECT(x, 3, 7, 6, 8);
}

EXAMPLE(qvrsFIRMR32f_Direct_16s_Sfs)
{
    const qvr32f taps[] = {1, 1};
    const qvr16s x[] = {2, 4, 6, 9};
    qvr16s y[2], past[2] = {0, 0};
    Morven_qvrsFIRMR32f_Direct_16s_Sfs(x, y, 2, taps, 2, 1, 0, 2, 1, past, 1); // halved: the mean, at half the rate
    EXPECT(y, 3, 8);
}

EXAMPLE(qvrsFIRGenLowpass_64f)
{
    qvr64f taps[5];
    Morven_qvrsFIRGenLowpass_64f(taps, 5, qvrFirHamming, 1, 0.2); // a fifth of the sampling rate; gain 1 at frequency 0
    EXPECT_VALUE(taps[0] + taps[1] + taps[2] + taps[3] + taps[4], 1);
}

EXAMPLE(qvrsFIRGenHighpass_64f)
{
    qvr64f taps[5];
    Morven_qvrsFIRGenHighpass_64f(taps, 5, qvrFirHamming, 1, 0.2);
    EXPECT_VALUE(taps[0] - taps[1] + taps[2] - taps[3] + taps[4], 1); // half the sampling rate passes
}

EXAMPLE(qvrsFIRGenBandpass_64f)
{
    qvr64f taps[31];
    Morven_qvrsFIRGenBandpass_64f(taps, 31, qvrFirHann, 1, 0.1, 0.4); // the middle is a quarter of the sampling rate
    double gain = taps[15];
    for (int i = 1; i <= 15; i++)
        gain += 2 * taps[15 + i] * (i % 2 ? 0 : i % 4 ? -1 : 1);
    EXPECT_VALUE(gain, 1);
}

EXAMPLE(qvrsFIRGenBandstop_64f)
{
    qvr64f taps[31];
    Morven_qvrsFIRGenBandstop_64f(taps, 31, qvrFirBlackman, 1, 0.2, 0.3);
    double sum = 0;
    for (int i = 0; i < 31; i++)
        sum += taps[i];
    EXPECT_VALUE(sum, 1); // a constant passes
}
