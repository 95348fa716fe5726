// Filters.
#include "example.h"

EXAMPLE(qvrsIIRInitAlloc_64f)
{
    const qvr64f taps[] = {0.5, 0, 1, -0.5}; // b[0], b[1], a[0], a[1]: y = 0.5 x + 0.5 y of before
    qvrsIIRState_64f* state;
    Morven_qvrsIIRInitAlloc_64f(&state, taps, 1, NULL);
    Morven_qvrsIIRFree_64f(state);
}

EXAMPLE(qvrsIIR_64f)
{
    const qvr64f taps[] = {0.5, 0, 1, -0.5}; // b[0], b[1], a[0], a[1]: y = 0.5 x + 0.5 y of before
    qvrsIIRState_64f* state;
    Morven_qvrsIIRInitAlloc_64f(&state, taps, 1, NULL);
    const qvr64f step[] = {1, 1, 1, 1};
    qvr64f y[4];
    Morven_qvrsIIR_64f(step, y, 2, state);
    Morven_qvrsIIR_64f(step + 2, y + 2, 2, state); // goes on where the first call ended
    EXPECT(y, 0.5, 0.75, 0.875, 0.9375);
    Morven_qvrsIIRFree_64f(state);
}

EXAMPLE(qvrsIIRFree_64f)
{
    const qvr64f taps[] = {0.5, 0, 1, -0.5}; // b[0], b[1], a[0], a[1]: y = 0.5 x + 0.5 y of before
    qvrsIIRState_64f* state;
    Morven_qvrsIIRInitAlloc_64f(&state, taps, 1, NULL);
    EXPECT_VALUE(Morven_qvrsIIRFree_64f(state), qvrOk);
}

EXAMPLE(qvrsIIRGenLowpass_64f)
{
    qvr64f taps[6];
    Morven_qvrsIIRGenLowpass_64f(2, taps, qvrIirButterworth, 0.25, 0); // a quarter of the sampling rate
    EXPECT(taps, 0.29289, 0.58579, 0.29289, 1, 0, 0.17157);
}

EXAMPLE(qvrsIIRGenHighpass_64f)
{
    qvr64f taps[6];
    Morven_qvrsIIRGenHighpass_64f(2, taps, qvrIirButterworth, 0.25, 0);
    EXPECT(taps, 0.29289, -0.58579, 0.29289, 1, 0, 0.17157);
}

EXAMPLE(qvrsFilterMedian_32f_I)
{
    qvr32f d[] = {1, 2, 50, 3, 4}; // a click
    Morven_qvrsFilterMedian_32f_I(d, 5, 3);
    EXPECT(d, 1, 2, 3, 4, 4);
}

EXAMPLE(qvrsSampleUp_32f)
{
    const qvr32f a[] = {1, 2};
    qvr32f d[6];
    int count, phase = 1;
    Morven_qvrsSampleUp_32f(a, 2, d, &count, 3, &phase);
    EXPECT(d, 0, 1, 0, 0, 2, 0);
}

EXAMPLE(qvrsSampleDown_32f)
{
    const qvr32f a[] = {0, 1, 2, 3, 4};
    qvr32f d[3];
    int count, phase = 0;
    Morven_qvrsSampleDown_32f(a, 5, d, &count, 2, &phase);
    EXPECT(d, 0, 2, 4);
    EXPECT_VALUE(phase, 1); // of the next sample to keep, in what follows
}

EXAMPLE(qvrsSampleDown_16s)
{
    const qvr16s a[] = {0, 1, 2, 3, 4};
    qvr16s d[3];
    int count, phase = 0;
    Morven_qvrsSampleDown_16s(a, 5, d, &count, 2, &phase);
    EXPECT(d, 0, 2, 4);
    EXPECT_VALUE(phase, 1); // of the next sample to keep, in what follows
}
