// Reductions, thresholds, sorting, waveform measures and column movers.
#include "example.h"

EXAMPLE(qvrsSum_16s32s_Sfs)
{
    const qvr16s a[] = {1000, 2000, 3000};
    qvr32s result;
    Morven_qvrsSum_16s32s_Sfs(a, 3, &result, 2);
    EXPECT_VALUE(result, 1500);
}

EXAMPLE(qvrsMean_16s_Sfs)
{
    const qvr16s a[] = {10, 20, 30};
    qvr16s result;
    Morven_qvrsMean_16s_Sfs(a, 3, &result, 0);
    EXPECT_VALUE(result, 20);
}

EXAMPLE(qvrsMean_32s_Sfs)
{
    const qvr32s a[] = {10, 20, 30};
    qvr32s result;
    Morven_qvrsMean_32s_Sfs(a, 3, &result, 0);
    EXPECT_VALUE(result, 20);
}

EXAMPLE(qvrsMean_32f)
{
    const qvr32f a[] = {1, 2, 6};
    qvr32f result;
    Morven_qvrsMean_32f(a, 3, &result);
    EXPECT_VALUE(result, 3);
}

EXAMPLE(qvrsMean_64f)
{
    const qvr64f a[] = {1, 2, 6};
    qvr64f result;
    Morven_qvrsMean_64f(a, 3, &result);
    EXPECT_VALUE(result, 3);
}

EXAMPLE(qvrsStdDev_32f)
{
    const qvr32f a[] = {2, 4, 6};
    qvr32f result;
    Morven_qvrsStdDev_32f(a, 3, &result);
    EXPECT_VALUE(result, 2);
}

EXAMPLE(qvrsMin_16s)
{
    const qvr16s a[] = {3, -1, 4};
    qvr16s result;
    Morven_qvrsMin_16s(a, 3, &result);
    EXPECT_VALUE(result, -1);
}

EXAMPLE(qvrsMax_16s)
{
    const qvr16s a[] = {3, -1, 4};
    qvr16s result;
    Morven_qvrsMax_16s(a, 3, &result);
    EXPECT_VALUE(result, 4);
}

EXAMPLE(qvrsMin_32f)
{
    const qvr32f a[] = {3, -1, 4};
    qvr32f result;
    Morven_qvrsMin_32f(a, 3, &result);
    EXPECT_VALUE(result, -1);
}

EXAMPLE(qvrsMax_32f)
{
    const qvr32f a[] = {3, -1, 4};
    qvr32f result;
    Morven_qvrsMax_32f(a, 3, &result);
    EXPECT_VALUE(result, 4);
}

EXAMPLE(qvrsMax_64f)
{
    const qvr64f a[] = {3, -1, 4};
    qvr64f result;
    Morven_qvrsMax_64f(a, 3, &result);
    EXPECT_VALUE(result, 4);
}

EXAMPLE(qvrsMinMax_16s)
{
    const qvr16s a[] = {3, -1, 4};
    qvr16s least, most;
    Morven_qvrsMinMax_16s(a, 3, &least, &most);
    EXPECT_VALUE(least, -1);
    EXPECT_VALUE(most, 4);
}

EXAMPLE(qvrsMinMax_16u)
{
    const qvr16u a[] = {3, 1, 40000};
    qvr16u least, most;
    Morven_qvrsMinMax_16u(a, 3, &least, &most);
    EXPECT_VALUE(least, 1);
    EXPECT_VALUE(most, 40000);
}

EXAMPLE(qvrsMinMax_32f)
{
    const qvr32f a[] = {3, -1, 4};
    qvr32f least, most;
    Morven_qvrsMinMax_32f(a, 3, &least, &most);
    EXPECT_VALUE(least, -1);
    EXPECT_VALUE(most, 4);
}

EXAMPLE(qvrsMinIndx_32f)
{
    const qvr32f a[] = {3, -1, 4, 4};
    qvr32f value;
    qvr32s place;
    Morven_qvrsMinIndx_32f(a, 4, &value, &place);
    EXPECT_VALUE(value, -1);
    EXPECT_VALUE(place, 1);
}

EXAMPLE(qvrsMaxIndx_32f)
{
    const qvr32f a[] = {3, -1, 4, 4};
    qvr32f value;
    qvr32s place;
    Morven_qvrsMaxIndx_32f(a, 4, &value, &place);
    EXPECT_VALUE(value, 4);
    EXPECT_VALUE(place, 2);
}

EXAMPLE(qvrsSumWindow_16s32f)
{
    const qvr16s a[] = {1, 2, 3, 4, 5};
    qvr32f sums[3];
    Morven_qvrsSumWindow_16s32f(a, sums, 3, 3); // reads 3 + 3 - 1 elements
    EXPECT(sums, 6, 9, 12);
}

EXAMPLE(qvrsThreshold_32f_I)
{
    qvr32f d[] = {-2, 0, 3};
    Morven_qvrsThreshold_32f_I(d, 3, 1, qvrCmpGreater);
    EXPECT(d, -2, 0, 1);
}

EXAMPLE(qvrsThreshold_GTVal_32f)
{
    const qvr32f a[] = {-2, 0, 3};
    qvr32f d[3];
    Morven_qvrsThreshold_GTVal_32f(a, d, 3, 1, 9);
    EXPECT(d, -2, 0, 9);
}

EXAMPLE(qvrsThreshold_GTVal_32f_I)
{
    qvr32f d[] = {-2, 0, 3};
    Morven_qvrsThreshold_GTVal_32f_I(d, 3, 1, 9);
    EXPECT(d, -2, 0, 9);
}

EXAMPLE(qvrsThreshold_LTVal_32f)
{
    const qvr32f a[] = {-2, 0, 3};
    qvr32f d[3];
    Morven_qvrsThreshold_LTVal_32f(a, d, 3, -1, -9);
    EXPECT(d, -9, 0, 3);
}

EXAMPLE(qvrsThreshold_LTVal_32f_I)
{
    qvr32f d[] = {-2, 0, 3};
    Morven_qvrsThreshold_LTVal_32f_I(d, 3, -1, -9);
    EXPECT(d, -9, 0, 3);
}

EXAMPLE(qvrsSortAscend_32f_I)
{
    qvr32f d[] = {3, -1, 2};
    Morven_qvrsSortAscend_32f_I(d, 3);
    EXPECT(d, -1, 2, 3);
}

EXAMPLE(qvrsSortAscend_64f_I)
{
    qvr64f d[] = {3, -1, 2};
    Morven_qvrsSortAscend_64f_I(d, 3);
    EXPECT(d, -1, 2, 3);
}

EXAMPLE(qvrsSignChangeRate_Count0_32f)
{
    const qvr32f a[] = {1, -1, 0, 2};
    qvr32f result;
    Morven_qvrsSignChangeRate_Count0_32f(a, 4, &result);
    EXPECT_VALUE(result, 2);
}

EXAMPLE(qvrsZeroCrossing_32f)
{
    const qvr32f a[] = {1, -1, -2, 2};
    qvr32f result;
    Morven_qvrsZeroCrossing_32f(a, 4, &result, qvrZcProduct);
    EXPECT_VALUE(result, 2);
}

EXAMPLE(qvrsCompensateOffset_32f)
{
    const qvr32f a[] = {1, 1, 1, 1}; // a constant offset
    qvr32f d[3], last;
    Morven_qvrsCompensateOffset_32f(a, d, 3, &last, 1, 0.5f); // reads one element behind the last
    EXPECT(d, 0.5, 0.25, 0.125);
    EXPECT_VALUE(last, 1);
}

EXAMPLE(qvrsCompensateOffset_32f_I)
{
    qvr32f d[] = {1, 2}, last = 0;
    Morven_qvrsCompensateOffset_32f_I(d, 2, &last, 0, 0.5f);
    EXPECT(d, 1, 1.5);
    EXPECT_VALUE(last, 2);
}

EXAMPLE(qvrsFindPeaks_32f8u)
{
    const qvr32f a[8] = {0};
    qvr8u peaks[8];
    EXPECT_VALUE(Morven_qvrsFindPeaks_32f8u(a, peaks, 8, 3, 3), qvrOk); // judges the arguments alone
}

EXAMPLE(qvrsCopyColumn_Indirect_16s_D2)
{
    const qvr16s a[] = {1, 2, 3, 4, 5, 6}; // two rows of three
    const qvr32s columns[] = {2, 0};
    qvr16s d[4];
    Morven_qvrsCopyColumn_Indirect_16s_D2(a, 3, 3, d, columns, 2, 2, 2);
    EXPECT(d, 3, 1, 6, 4);
}

EXAMPLE(qvrsCopyColumn_Indirect_16s_D2L)
{
    const qvr16s first[] = {1, 2, 3}, second[] = {4, 5, 6};
    const qvr16s* from[] = {first, second};
    qvr16s d0[2], d1[2];
    qvr16s* to[] = {d0, d1};
    const qvr32s columns[] = {2, 0};
    Morven_qvrsCopyColumn_Indirect_16s_D2L(from, 3, to, columns, 2, 2);
    EXPECT(d0, 3, 1);
    EXPECT(d1, 6, 4);
}
