// Memory, floating-point arithmetic, fills, copies and conversions.
#include "example.h"

EXAMPLE(qvrsMalloc_8u)
{
    qvr32f* block = (qvr32f*)Morven_qvrsMalloc_8u(1000 * (int)sizeof(qvr32f));
    EXPECT_VALUE((size_t)block % 64, 0);
    Morven_qvrsFree(block);
}

EXAMPLE(qvrsFree)
{
    qvr8u* block = Morven_qvrsMalloc_8u(100);
    Morven_qvrsFree(block);
    Morven_qvrsFree(NULL); // nothing happens
}

EXAMPLE(qvrsAdd_32f)
{
    const qvr32f a[] = {1, 2, 3}, b[] = {10, 20, 30};
    qvr32f d[3];
    Morven_qvrsAdd_32f(a, b, d, 3);
    EXPECT(d, 11, 22, 33);
}

EXAMPLE(qvrsAdd_32f_I)
{
    const qvr32f a[] = {1, 2, 3};
    qvr32f d[] = {10, 20, 30};
    Morven_qvrsAdd_32f_I(a, d, 3);
    EXPECT(d, 11, 22, 33);
}

EXAMPLE(qvrsSub_32f)
{
    const qvr32f a[] = {1, 2, 3}, b[] = {10, 20, 30};
    qvr32f d[3];
    Morven_qvrsSub_32f(a, b, d, 3);
    EXPECT(d, 9, 18, 27);
}

EXAMPLE(qvrsSub_32f_I)
{
    const qvr32f a[] = {1, 2, 3};
    qvr32f d[] = {10, 20, 30};
    Morven_qvrsSub_32f_I(a, d, 3);
    EXPECT(d, 9, 18, 27);
}

EXAMPLE(qvrsMul_32f)
{
    const qvr32f a[] = {1, 2, 3}, b[] = {10, 20, 30};
    qvr32f d[3];
    Morven_qvrsMul_32f(a, b, d, 3);
    EXPECT(d, 10, 40, 90);
}

EXAMPLE(qvrsMul_32f_I)
{
    const qvr32f a[] = {1, 2, 3};
    qvr32f d[] = {10, 20, 30};
    Morven_qvrsMul_32f_I(a, d, 3);
    EXPECT(d, 10, 40, 90);
}

EXAMPLE(qvrsMul_64f_I)
{
    const qvr64f a[] = {1, 2, 3};
    qvr64f d[] = {10, 20, 30};
    Morven_qvrsMul_64f_I(a, d, 3);
    EXPECT(d, 10, 40, 90);
}

EXAMPLE(qvrsMul_64fc)
{
    const qvr64fc a[] = {{1, 2}}, b[] = {{3, 4}};
    qvr64fc d[1];
    Morven_qvrsMul_64fc(a, b, d, 1); // (1 + 2i)(3 + 4i)
    EXPECT_VALUE(d[0].re, -5);
    EXPECT_VALUE(d[0].im, 10);
}

EXAMPLE(qvrsDiv_32f)
{
    const qvr32f a[] = {1, 2, 4}, b[] = {10, 20, 30};
    qvr32f d[3];
    Morven_qvrsDiv_32f(a, b, d, 3);
    EXPECT(d, 10, 10, 7.5);
}

EXAMPLE(qvrsAddC_32f)
{
    const qvr32f a[] = {1, 2, 3};
    qvr32f d[3];
    Morven_qvrsAddC_32f(a, 0.5f, d, 3);
    EXPECT(d, 1.5, 2.5, 3.5);
}

EXAMPLE(qvrsAddC_32f_I)
{
    qvr32f d[] = {1, 2, 3};
    Morven_qvrsAddC_32f_I(0.5f, d, 3);
    EXPECT(d, 1.5, 2.5, 3.5);
}

EXAMPLE(qvrsAddC_64f_I)
{
    qvr64f d[] = {1, 2, 3};
    Morven_qvrsAddC_64f_I(0.5, d, 3);
    EXPECT(d, 1.5, 2.5, 3.5);
}

EXAMPLE(qvrsSubC_32f)
{
    const qvr32f a[] = {1, 2, 3};
    qvr32f d[3];
    Morven_qvrsSubC_32f(a, 0.5f, d, 3);
    EXPECT(d, 0.5, 1.5, 2.5);
}

EXAMPLE(qvrsSubC_32f_I)
{
    qvr32f d[] = {1, 2, 3};
    Morven_qvrsSubC_32f_I(0.5f, d, 3);
    EXPECT(d, 0.5, 1.5, 2.5);
}

EXAMPLE(qvrsSubCRev_32f)
{
    const qvr32f a[] = {1, 2, 3};
    qvr32f d[3];
    Morven_qvrsSubCRev_32f(a, 10, d, 3);
    EXPECT(d, 9, 8, 7);
}

EXAMPLE(qvrsMulC_32f)
{
    const qvr32f a[] = {1, 2, 3};
    qvr32f d[3];
    Morven_qvrsMulC_32f(a, 0.5f, d, 3);
    EXPECT(d, 0.5, 1, 1.5);
}

EXAMPLE(qvrsMulC_32f_I)
{
    qvr32f d[] = {1, 2, 3};
    Morven_qvrsMulC_32f_I(0.5f, d, 3);
    EXPECT(d, 0.5, 1, 1.5);
}

EXAMPLE(qvrsMulC_64f_I)
{
    qvr64f d[] = {1, 2, 3};
    Morven_qvrsMulC_64f_I(0.5, d, 3);
    EXPECT(d, 0.5, 1, 1.5);
}

EXAMPLE(qvrsDivC_32f)
{
    const qvr32f a[] = {1, 2, 3};
    qvr32f d[3];
    Morven_qvrsDivC_32f(a, 2, d, 3);
    EXPECT(d, 0.5, 1, 1.5);
}

EXAMPLE(qvrsDivC_32f_I)
{
    qvr32f d[] = {1, 2, 3};
    Morven_qvrsDivC_32f_I(2, d, 3);
    EXPECT(d, 0.5, 1, 1.5);
}

EXAMPLE(qvrsDivCRev_32f)
{
    const qvr32f a[] = {1, 2, 4};
    qvr32f d[3];
    Morven_qvrsDivCRev_32f(a, 10, d, 3);
    EXPECT(d, 10, 5, 2.5);
}

EXAMPLE(qvrsDivCRev_32f_I)
{
    qvr32f d[] = {1, 2, 4};
    Morven_qvrsDivCRev_32f_I(10, d, 3);
    EXPECT(d, 10, 5, 2.5);
}

EXAMPLE(qvrsAbs_32f)
{
    const qvr32f a[] = {-1, 2, -3};
    qvr32f d[3];
    Morven_qvrsAbs_32f(a, d, 3);
    EXPECT(d, 1, 2, 3);
}

EXAMPLE(qvrsAbs_32f_I)
{
    qvr32f d[] = {-1, 2, -3};
    Morven_qvrsAbs_32f_I(d, 3);
    EXPECT(d, 1, 2, 3);
}

EXAMPLE(qvrsSqr_32f_I)
{
    qvr32f d[] = {-1, 2, -3};
    Morven_qvrsSqr_32f_I(d, 3);
    EXPECT(d, 1, 4, 9);
}

EXAMPLE(qvrsSqrt_32f)
{
    const qvr32f a[] = {1, 4, 2};
    qvr32f d[3];
    Morven_qvrsSqrt_32f(a, d, 3);
    EXPECT(d, 1, 2, 1.41421);
}

EXAMPLE(qvrsCeil_32f)
{
    const qvr32f a[] = {-1.5f, 0.2f, 3};
    qvr32f d[3];
    Morven_qvrsCeil_32f(a, d, 3);
    EXPECT(d, -1, 1, 3);
}

EXAMPLE(qvrsFloor_32f)
{
    const qvr32f a[] = {-1.5f, 0.2f, 3};
    qvr32f d[3];
    Morven_qvrsFloor_32f(a, d, 3);
    EXPECT(d, -2, 0, 3);
}

EXAMPLE(qvrsMinEvery_32f_I)
{
    const qvr32f a[] = {1, 5, 3};
    qvr32f d[] = {2, 4, 6};
    Morven_qvrsMinEvery_32f_I(a, d, 3);
    EXPECT(d, 1, 4, 3);
}

EXAMPLE(qvrsMaxEvery_32f_I)
{
    const qvr32f a[] = {1, 5, 3};
    qvr32f d[] = {2, 4, 6};
    Morven_qvrsMaxEvery_32f_I(a, d, 3);
    EXPECT(d, 2, 5, 6);
}

EXAMPLE(qvrsSet_8u)
{
    qvr8u d[3];
    Morven_qvrsSet_8u(7, d, 3);
    EXPECT(d, 7, 7, 7);
}

EXAMPLE(qvrsSet_32s)
{
    qvr32s d[3];
    Morven_qvrsSet_32s(-7, d, 3);
    EXPECT(d, -7, -7, -7);
}

EXAMPLE(qvrsSet_32f)
{
    qvr32f d[3];
    Morven_qvrsSet_32f(0.5f, d, 3);
    EXPECT(d, 0.5, 0.5, 0.5);
}

EXAMPLE(qvrsZero_32f)
{
    qvr32f d[3];
    Morven_qvrsZero_32f(d, 3);
    EXPECT(d, 0, 0, 0);
}

EXAMPLE(qvrsCopy_32f)
{
    const qvr32f a[] = {1, 2, 3};
    qvr32f d[3];
    Morven_qvrsCopy_32f(a, d, 3);
    EXPECT(d, 1, 2, 3);
}

EXAMPLE(qvrsZero_64f)
{
    qvr64f d[3];
    Morven_qvrsZero_64f(d, 3);
    EXPECT(d, 0, 0, 0);
}

EXAMPLE(qvrsCopy_64f)
{
    const qvr64f a[] = {1, 2, 3};
    qvr64f d[3];
    Morven_qvrsCopy_64f(a, d, 3);
    EXPECT(d, 1, 2, 3);
}

EXAMPLE(qvrsConvert_16s32f)
{
    const qvr16s a[] = {-3, 0, 12};
    qvr32f d[3];
    Morven_qvrsConvert_16s32f(a, d, 3);
    EXPECT(d, -3, 0, 12);
}

EXAMPLE(qvrsConvert_32f64f)
{
    const qvr32f a[] = {-3, 0, 12};
    qvr64f d[3];
    Morven_qvrsConvert_32f64f(a, d, 3);
    EXPECT(d, -3, 0, 12);
}

EXAMPLE(qvrsConvert_64f32f)
{
    const qvr64f a[] = {-3, 0, 12};
    qvr32f d[3];
    Morven_qvrsConvert_64f32f(a, d, 3);
    EXPECT(d, -3, 0, 12);
}

EXAMPLE(qvrsConvert_32s16s)
{
    const qvr32s a[] = {-3, 0, 100000};
    qvr16s d[3];
    Morven_qvrsConvert_32s16s(a, d, 3);
    EXPECT(d, -3, 0, 32767);
}

EXAMPLE(qvrsConvert_16s64f_Sfs)
{
    const qvr16s a[] = {-3, 0, 12};
    qvr64f d[3];
    Morven_qvrsConvert_16s64f_Sfs(a, d, 3, 2);
    EXPECT(d, -0.75, 0, 3);
}

EXAMPLE(qvrsConvert_32f16s_Sfs)
{
    const qvr32f a[] = {2.5f, -2.5f, 1e6f};
    qvr16s d[3];
    Morven_qvrsConvert_32f16s_Sfs(a, d, 3, qvrRoundNearest, 0);
    EXPECT(d, 2, -2, 32767);
}

EXAMPLE(qvrsConvert_64f16s_Sfs)
{
    const qvr64f a[] = {2.5, -2.5, 1e6};
    qvr16s d[3];
    Morven_qvrsConvert_64f16s_Sfs(a, d, 3, qvrRoundHalfAway, 0);
    EXPECT(d, 3, -3, 32767);
}

EXAMPLE(qvrsNormalize_32f)
{
    const qvr32f a[] = {4, 6, 8};
    qvr32f d[3];
    Morven_qvrsNormalize_32f(a, d, 3, 6, 4);
    EXPECT(d, -0.5, 0, 0.5);
}

EXAMPLE(qvrsNormalize_64f)
{
    const qvr64f a[] = {4, 6, 8};
    qvr64f d[3];
    Morven_qvrsNormalize_64f(a, d, 3, 6, 4);
    EXPECT(d, -0.5, 0, 0.5);
}

EXAMPLE(qvrsSplitScaled_16s32f_D2L)
{
    const qvr16s interleaved[] = {32767, -32768, 32767, -32768}; // left, right, left, right
    qvr32f left[2], right[2];
    qvr32f* rows[] = {left, right};
    Morven_qvrsSplitScaled_16s32f_D2L(interleaved, rows, 2, 2);
    EXPECT(left, 1, 1);
    EXPECT(right, -1, -1);
}
