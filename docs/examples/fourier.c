// Transforms and windows.
#include "example.h"

EXAMPLE(qvrsFFTInitAlloc_R_32f)
{
    qvrsFFTSpec_R_32f* spec;
    Morven_qvrsFFTInitAlloc_R_32f(&spec, 2, qvrFftDivInvByN, qvrHintNone); // 4 points
    Morven_qvrsFFTFree_R_32f(spec);
}

EXAMPLE(qvrsFFTFree_R_32f)
{
    qvrsFFTSpec_R_32f* spec;
    Morven_qvrsFFTInitAlloc_R_32f(&spec, 2, qvrFftDivInvByN, qvrHintNone); // 4 points
    EXPECT_VALUE(Morven_qvrsFFTFree_R_32f(spec), qvrOk);
}

EXAMPLE(qvrsFFTFwd_RToCCS_32f)
{
    qvrsFFTSpec_R_32f* spec;
    Morven_qvrsFFTInitAlloc_R_32f(&spec, 2, qvrFftDivInvByN, qvrHintNone); // 4 points
    const qvr32f x[4] = {1, 2, 3, 4};
    qvr32f spectrum[6]; // (re, im) of bins 0, 1, 2
    Morven_qvrsFFTFwd_RToCCS_32f(x, spectrum, spec, NULL);
    EXPECT(spectrum, 10, 0, -2, 2, -2, 0);
    Morven_qvrsFFTFree_R_32f(spec);
}

EXAMPLE(qvrsFFTInv_CCSToR_32f)
{
    qvrsFFTSpec_R_32f* spec;
    Morven_qvrsFFTInitAlloc_R_32f(&spec, 2, qvrFftDivInvByN, qvrHintNone); // 4 points
    const qvr32f spectrum[6] = {10, 0, -2, 2, -2, 0};
    qvr32f x[4];
    Morven_qvrsFFTInv_CCSToR_32f(spectrum, x, spec, NULL); // divided by N, as the flag says
    EXPECT(x, 1, 2, 3, 4);
    Morven_qvrsFFTFree_R_32f(spec);
}

EXAMPLE(qvrsFFTInitAlloc_R_64f)
{
    qvrsFFTSpec_R_64f* spec;
    Morven_qvrsFFTInitAlloc_R_64f(&spec, 2, qvrFftDivInvByN, qvrHintNone); // 4 points
    Morven_qvrsFFTFree_R_64f(spec);
}

EXAMPLE(qvrsFFTFree_R_64f)
{
    qvrsFFTSpec_R_64f* spec;
    Morven_qvrsFFTInitAlloc_R_64f(&spec, 2, qvrFftDivInvByN, qvrHintNone); // 4 points
    EXPECT_VALUE(Morven_qvrsFFTFree_R_64f(spec), qvrOk);
}

EXAMPLE(qvrsFFTFwd_RToCCS_64f)
{
    qvrsFFTSpec_R_64f* spec;
    Morven_qvrsFFTInitAlloc_R_64f(&spec, 2, qvrFftDivInvByN, qvrHintNone); // 4 points
    const qvr64f x[4] = {1, 2, 3, 4};
    qvr64f spectrum[6]; // (re, im) of bins 0, 1, 2
    Morven_qvrsFFTFwd_RToCCS_64f(x, spectrum, spec, NULL);
    EXPECT(spectrum, 10, 0, -2, 2, -2, 0);
    Morven_qvrsFFTFree_R_64f(spec);
}

EXAMPLE(qvrsFFTInv_CCSToR_64f)
{
    qvrsFFTSpec_R_64f* spec;
    Morven_qvrsFFTInitAlloc_R_64f(&spec, 2, qvrFftDivInvByN, qvrHintNone); // 4 points
    const qvr64f spectrum[6] = {10, 0, -2, 2, -2, 0};
    qvr64f x[4];
    Morven_qvrsFFTInv_CCSToR_64f(spectrum, x, spec, NULL); // divided by N, as the flag says
    EXPECT(x, 1, 2, 3, 4);
    Morven_qvrsFFTFree_R_64f(spec);
}

EXAMPLE(qvrsWinBartlett_32f_I)
{
    qvr32f frame[] = {1, 1, 1, 1, 1};
    Morven_qvrsWinBartlett_32f_I(frame, 5);
    EXPECT(frame, 0, 0.5, 1, 0.5, 0);
}

EXAMPLE(qvrsWinHann_32f_I)
{
    qvr32f frame[] = {1, 1, 1, 1, 1};
    Morven_qvrsWinHann_32f_I(frame, 5);
    EXPECT(frame, 0, 0.5, 1, 0.5, 0);
}

EXAMPLE(qvrsWinHamming_32f_I)
{
    qvr32f frame[] = {1, 1, 1, 1, 1};
    Morven_qvrsWinHamming_32f_I(frame, 5);
    EXPECT(frame, 0.08, 0.54, 1, 0.54, 0.08);
}

EXAMPLE(qvrsWinBlackmanStd_32f_I)
{
    qvr32f frame[] = {1, 1, 1, 1, 1};
    Morven_qvrsWinBlackmanStd_32f_I(frame, 5);
    EXPECT(frame, 0, 0.34, 1, 0.34, 0);
}

EXAMPLE(qvrsWinHamming_16s_I)
{
    qvr16s frame[] = {1000, 1000, 1000, 1000, 1000};
    Morven_qvrsWinHamming_16s_I(frame, 5);
    EXPECT(frame, 80, 540, 1000, 540, 80);
}
