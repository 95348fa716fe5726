// Fixed-point transform, Hilbert transform, convolution and correlation, wavelets.
#include "example.h"

EXAMPLE(qvrsFFTInitAlloc_R_16s)
{
    qvrsFFTSpec_R_16s* spec;
    Morven_qvrsFFTInitAlloc_R_16s(&spec, 2, qvrFftDivFwdByN, qvrHintNone); // 4 points
    Morven_qvrsFFTFree_R_16s(spec);
}

EXAMPLE(qvrsFFTFree_R_16s)
{
    qvrsFFTSpec_R_16s* spec;
    Morven_qvrsFFTInitAlloc_R_16s(&spec, 2, qvrFftDivFwdByN, qvrHintNone); // 4 points
    EXPECT_VALUE(Morven_qvrsFFTFree_R_16s(spec), qvrOk);
}

EXAMPLE(qvrsFFTFwd_RToCCS_16s_Sfs)
{
    qvrsFFTSpec_R_16s* spec;
    Morven_qvrsFFTInitAlloc_R_16s(&spec, 2, qvrFftNoDiv, qvrHintNone); // 4 points
    const qvr16s x[4] = {100, 200, 300, 400};
    qvr16s spectrum[6];                                           // (re, im) of bins 0, 1, 2
    Morven_qvrsFFTFwd_RToCCS_16s_Sfs(x, spectrum, spec, 1, NULL); // the results halved
    EXPECT(spectrum, 500, 0, -100, 100, -100, 0);
    Morven_qvrsFFTFree_R_16s(spec);
}

EXAMPLE(qvrsHilbertInitAlloc_32f32fc)
{
    qvrsHilbertState_32f32fc* state;
    Morven_qvrsHilbertInitAlloc_32f32fc(&state, 1000, qvrHintNone); // blocks of 1000 samples
    Morven_qvrsHilbertFree_32f32fc(state);
}

EXAMPLE(qvrsHilbertFree_32f32fc)
{
    qvrsHilbertState_32f32fc* state;
    Morven_qvrsHilbertInitAlloc_32f32fc(&state, 1000, qvrHintNone);
    EXPECT_VALUE(Morven_qvrsHilbertFree_32f32fc(state), qvrOk);
}

EXAMPLE(qvrsHilbert_32f32fc)
{
    qvrsHilbertState_32f32fc* state;
    Morven_qvrsHilbertInitAlloc_32f32fc(&state, 4, qvrHintNone);
    const qvr32f x[4] = {1, 0, -1, 0}; // a cosine
    qvr32fc z[4];
    Morven_qvrsHilbert_32f32fc(x, z, state); // and a sine beside it
    EXPECT((qvr32f*)z, 1, 0, 0, 1, -1, 0, 0, -1);
    Morven_qvrsHilbertFree_32f32fc(state);
}

EXAMPLE(qvrsConv_32f)
{
    const qvr32f x[4] = {1, 2, 3, 4}, taps[2] = {1, -1};
    qvr32f y[5];
    Morven_qvrsConv_32f(x, 4, taps, 2, y);
    EXPECT(y, 1, 1, 1, 1, -4);
}

EXAMPLE(qvrsConvBiased_32f)
{
    const qvr32f taps[3] = {1, 1, 1}, x[6] = {1, 2, 3, 4, 5, 6};
    qvr32f y[4];
    // Result 0 looks back from x[2], so every result has all three terms.
    Morven_qvrsConvBiased_32f(taps, 3, x + 2, 6, y, 4, 2);
    EXPECT(y, 6, 9, 12, 15);
}

EXAMPLE(qvrsConvCyclic8x8_32f)
{
    const qvr32f x[8] = {0, 1}, h[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    qvr32f y[8];
    Morven_qvrsConvCyclic8x8_32f(x, h, y); // turned by one place
    EXPECT(y, 8, 1, 2, 3, 4, 5, 6, 7);
}

EXAMPLE(qvrsCrossCorr_32f)
{
    const qvr32f sound[2] = {1, 2}, recording[5] = {0, 0, 1, 2, 0};
    qvr32f y[4];
    Morven_qvrsCrossCorr_32f(sound, 2, recording, 5, y, 4, 0); // lags 0 to 3
    EXPECT(y, 0, 2, 5, 2);                                     // it is found 2 samples in
}

EXAMPLE(qvrsAutoCorr_32f)
{
    const qvr32f x[4] = {1, -1, 1, -1};
    qvr32f y[5];
    Morven_qvrsAutoCorr_32f(x, 4, y, 5);
    EXPECT(y, 4, -3, 2, -1, 0);
}

EXAMPLE(qvrsWTFwdInitAlloc_32f)
{
    const qvr32f low[2] = {0.5f, 0.5f}, high[2] = {0.5f, -0.5f}; // mean and half the difference
    qvrsWTFwdState_32f* state;
    Morven_qvrsWTFwdInitAlloc_32f(&state, low, 2, 0, high, 2, 0);
    Morven_qvrsWTFwdFree_32f(state);
}

EXAMPLE(qvrsWTFwdFree_32f)
{
    const qvr32f low[2] = {0.5f, 0.5f}, high[2] = {0.5f, -0.5f};
    qvrsWTFwdState_32f* state;
    Morven_qvrsWTFwdInitAlloc_32f(&state, low, 2, 0, high, 2, 0);
    EXPECT_VALUE(Morven_qvrsWTFwdFree_32f(state), qvrOk);
}

EXAMPLE(qvrsWTFwd_32f)
{
    const qvr32f low[2] = {0.5f, 0.5f}, high[2] = {0.5f, -0.5f}, x[6] = {1, 3, 5, 5, 2, 0};
    qvrsWTFwdState_32f* state;
    Morven_qvrsWTFwdInitAlloc_32f(&state, low, 2, -1, high, 2, -1); // an offset of -1: pairs (x[2n], x[2n + 1])
    qvr32f means[3], differences[3];
    Morven_qvrsWTFwd_32f(x, means, differences, 3, state);
    EXPECT(means, 2, 5, 1);
    EXPECT(differences, 1, 0, -1);
    Morven_qvrsWTFwdFree_32f(state);
}

EXAMPLE(qvrsWTFwdGetDlyLine_32f)
{
    const qvr32f low[3] = {1, 2, 3}, high[2] = {1, -1}, x[4] = {5, 6, 7, 8};
    qvrsWTFwdState_32f* state;
    Morven_qvrsWTFwdInitAlloc_32f(&state, low, 3, 0, high, 2, 1);
    qvr32f l[2], h[2], historyLow[2], historyHigh[2];
    Morven_qvrsWTFwd_32f(x, l, h, 2, state);
    Morven_qvrsWTFwdGetDlyLine_32f(state, historyLow, historyHigh);
    EXPECT(historyLow, 7, 8);
    EXPECT(historyHigh, 7, 8); // the filter's one value, then the one that the offset holds back
    Morven_qvrsWTFwdFree_32f(state);
}

EXAMPLE(qvrsWTFwdSetDlyLine_32f)
{
    const qvr32f low[2] = {1, 1}, high[2] = {1, -1}, x[2] = {5, 6};
    qvrsWTFwdState_32f* state;
    Morven_qvrsWTFwdInitAlloc_32f(&state, low, 2, 0, high, 2, 0);
    const qvr32f before[1] = {4}; // the sample in front of x
    Morven_qvrsWTFwdSetDlyLine_32f(state, before, before);
    qvr32f sum, difference;
    Morven_qvrsWTFwd_32f(x, &sum, &difference, 1, state);
    EXPECT_VALUE(sum, 9);
    EXPECT_VALUE(difference, 1);
    Morven_qvrsWTFwdFree_32f(state);
}

EXAMPLE(qvrsWTInvInitAlloc_32f)
{
    const qvr32f low[2] = {1, 1}, high[2] = {1, -1};
    qvrsWTInvState_32f* state;
    Morven_qvrsWTInvInitAlloc_32f(&state, low, 2, 0, high, 2, 0);
    Morven_qvrsWTInvFree_32f(state);
}

EXAMPLE(qvrsWTInvFree_32f)
{
    const qvr32f low[2] = {1, 1}, high[2] = {1, -1};
    qvrsWTInvState_32f* state;
    Morven_qvrsWTInvInitAlloc_32f(&state, low, 2, 0, high, 2, 0);
    EXPECT_VALUE(Morven_qvrsWTInvFree_32f(state), qvrOk);
}

EXAMPLE(qvrsWTInv_32f)
{
    const qvr32f low[2] = {1, 1}, high[2] = {-1, 1};
    qvrsWTInvState_32f* state;
    Morven_qvrsWTInvInitAlloc_32f(&state, low, 2, 0, high, 2, 0);
    const qvr32f means[3] = {2, 5, 1}, differences[3] = {1, 0, -1}; // of the pairs (1, 3), (5, 5), (2, 0)
    qvr32f x[6];
    Morven_qvrsWTInv_32f(means, differences, 3, x, state);
    EXPECT(x, 1, 3, 5, 5, 2, 0);
    Morven_qvrsWTInvFree_32f(state);
}

EXAMPLE(qvrsWTInvGetDlyLine_32f)
{
    const qvr32f low[4] = {1, 1, 1, 1}, high[2] = {1, -1}, y[3] = {5, 6, 7};
    qvrsWTInvState_32f* state;
    Morven_qvrsWTInvInitAlloc_32f(&state, low, 4, 0, high, 2, 2);
    qvr32f x[6], historyLow[1], historyHigh[1];
    Morven_qvrsWTInv_32f(y, y, 3, x, state);
    Morven_qvrsWTInvGetDlyLine_32f(state, historyLow, historyHigh);
    EXPECT(historyLow, 7);
    EXPECT(historyHigh, 7);
    Morven_qvrsWTInvFree_32f(state);
}

EXAMPLE(qvrsWTInvSetDlyLine_32f)
{
    const qvr32f taps[4] = {1, 1, 1, 1}, y[1] = {5}, nothing[1] = {0};
    qvrsWTInvState_32f* state;
    Morven_qvrsWTInvInitAlloc_32f(&state, taps, 4, 0, taps, 4, 0);
    const qvr32f before[1] = {2};
    Morven_qvrsWTInvSetDlyLine_32f(state, before, nothing);
    qvr32f x[2];
    Morven_qvrsWTInv_32f(y, nothing, 1, x, state);
    EXPECT(x, 7, 7);
    Morven_qvrsWTInvFree_32f(state);
}
