// Fixed-point arithmetic, logic, shifts, replacement and search.
#include "example.h"

EXAMPLE(qvrsAdd_16s_Sfs)
{
    const qvr16s a[] = {30000, 1, 2}, b[] = {30000, 2, 3};
    qvr16s mean[3];
    Morven_qvrsAdd_16s_Sfs(a, b, mean, 3, 1); // halves: ties go to the even number
    EXPECT(mean, 30000, 2, 2);
}

EXAMPLE(qvrsAdd_16u_ISfs)
{
    const qvr16u a[] = {60000, 1};
    qvr16u d[] = {60000, 2};
    Morven_qvrsAdd_16u_ISfs(a, d, 2, 0);
    EXPECT(d, 65535, 3);
}

EXAMPLE(qvrsAddC_16u_ISfs)
{
    qvr16u d[] = {60000, 1};
    Morven_qvrsAddC_16u_ISfs(10000, d, 2, 0);
    EXPECT(d, 65535, 10001);
}

EXAMPLE(qvrsSubC_16u_ISfs)
{
    qvr16u d[] = {60000, 1};
    Morven_qvrsSubC_16u_ISfs(10000, d, 2, 0);
    EXPECT(d, 50000, 0);
}

EXAMPLE(qvrsAdd_16s_I)
{
    const qvr16s a[] = {30000, -1};
    qvr16s d[] = {30000, -2};
    Morven_qvrsAdd_16s_I(a, d, 2);
    EXPECT(d, 32767, -3);
}

EXAMPLE(qvrsSubC_16s_I)
{
    qvr16s d[] = {-30000, 1};
    Morven_qvrsSubC_16s_I(10000, d, 2);
    EXPECT(d, -32768, -9999);
}

EXAMPLE(qvrsMulC_16s_I)
{
    qvr16s d[] = {-30000, 7};
    Morven_qvrsMulC_16s_I(3, d, 2);
    EXPECT(d, -32768, 21);
}

EXAMPLE(qvrsAbs_32s_I)
{
    qvr32s d[] = {-5, 7};
    Morven_qvrsAbs_32s_I(d, 2);
    EXPECT(d, 5, 7);
}

EXAMPLE(qvrsAndC_16u_I)
{
    qvr16u d[] = {0x1234, 0xFFFF};
    Morven_qvrsAndC_16u_I(0xFF, d, 2);
    EXPECT(d, 0x34, 0xFF);
}

EXAMPLE(qvrsAndC_16u)
{
    const qvr16u a[] = {0x1234, 0xFFFF};
    qvr16u d[2];
    Morven_qvrsAndC_16u(a, 0xFF, d, 2);
    EXPECT(d, 0x34, 0xFF);
}

EXAMPLE(qvrsOr_16u_I)
{
    const qvr16u a[] = {0xFF, 0};
    qvr16u d[] = {0x1200, 5};
    Morven_qvrsOr_16u_I(a, d, 2);
    EXPECT(d, 0x12FF, 5);
}

EXAMPLE(qvrsLShiftC_16u)
{
    const qvr16u a[] = {1, 0x8001};
    qvr16u d[2];
    Morven_qvrsLShiftC_16u(a, 4, d, 2);
    EXPECT(d, 16, 16);
}

EXAMPLE(qvrsLShiftC_16u_I)
{
    qvr16u d[] = {1, 0x8001};
    Morven_qvrsLShiftC_16u_I(4, d, 2);
    EXPECT(d, 16, 16);
}

EXAMPLE(qvrsRShiftC_16u_I)
{
    qvr16u d[] = {16, 0x8001};
    Morven_qvrsRShiftC_16u_I(4, d, 2);
    EXPECT(d, 1, 0x800);
}

EXAMPLE(qvrsReplaceC_16u)
{
    const qvr16u a[] = {1, 0, 2, 0};
    qvr16u d[4];
    Morven_qvrsReplaceC_16u(a, d, 4, 0, 9);
    EXPECT(d, 1, 9, 2, 9);
}

EXAMPLE(qvrsFind_8u)
{
    const qvr8u a[] = {5, 1, 2, 1, 2, 3}, pattern[] = {1, 2, 3};
    qvr32s place;
    Morven_qvrsFind_8u(a, 6, pattern, 3, &place);
    EXPECT_VALUE(place, 3);
}

EXAMPLE(qvrsFind_16u)
{
    const qvr16u a[] = {5, 1, 2, 1, 2, 3}, pattern[] = {1, 2, 3};
    qvr32s place;
    Morven_qvrsFind_16u(a, 6, pattern, 3, &place);
    EXPECT_VALUE(place, 3);
}
