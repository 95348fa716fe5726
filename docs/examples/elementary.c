// Elementary functions, magnitudes and phase.
#include "example.h"

EXAMPLE(qvrsSin_32f_A11)
{
    const qvr32f a[] = {0, 1, -2};
    qvr32f d[3];
    Morven_qvrsSin_32f_A11(a, d, 3);
    EXPECT(d, 0, 0.84147, -0.9093);
}

EXAMPLE(qvrsCos_32f_A11)
{
    const qvr32f a[] = {0, 1, -2};
    qvr32f d[3];
    Morven_qvrsCos_32f_A11(a, d, 3);
    EXPECT(d, 1, 0.5403, -0.41615);
}

EXAMPLE(qvrsTan_32f_A11)
{
    const qvr32f a[] = {0, 1, -2};
    qvr32f d[3];
    Morven_qvrsTan_32f_A11(a, d, 3);
    EXPECT(d, 0, 1.5574, 2.185);
}

EXAMPLE(qvrsAsin_32f_A11)
{
    const qvr32f a[] = {0, 0.5f, -1};
    qvr32f d[3];
    Morven_qvrsAsin_32f_A11(a, d, 3);
    EXPECT(d, 0, 0.5236, -1.5708);
}

EXAMPLE(qvrsAcos_32f_A11)
{
    const qvr32f a[] = {0, 0.5f, -1};
    qvr32f d[3];
    Morven_qvrsAcos_32f_A11(a, d, 3);
    EXPECT(d, 1.5708, 1.0472, 3.1416);
}

EXAMPLE(qvrsAtan_32f_A11)
{
    const qvr32f a[] = {0, 1, -1e9f};
    qvr32f d[3];
    Morven_qvrsAtan_32f_A11(a, d, 3);
    EXPECT(d, 0, 0.7854, -1.5708);
}

EXAMPLE(qvrsAtan2_32f_A11)
{
    const qvr32f y[] = {1, 1, -1}, x[] = {1, -1, -1};
    qvr32f angle[3];
    Morven_qvrsAtan2_32f_A11(y, x, angle, 3);
    EXPECT(angle, 0.7854, 2.3562, -2.3562);
}

EXAMPLE(qvrsSinh_32f_A11)
{
    const qvr32f a[] = {0, 1, -2};
    qvr32f d[3];
    Morven_qvrsSinh_32f_A11(a, d, 3);
    EXPECT(d, 0, 1.1752, -3.6269);
}

EXAMPLE(qvrsCosh_32f_A11)
{
    const qvr32f a[] = {0, 1, -2};
    qvr32f d[3];
    Morven_qvrsCosh_32f_A11(a, d, 3);
    EXPECT(d, 1, 1.5431, 3.7622);
}

EXAMPLE(qvrsTanh_32f_A11)
{
    const qvr32f a[] = {0, 1, -2};
    qvr32f d[3];
    Morven_qvrsTanh_32f_A11(a, d, 3);
    EXPECT(d, 0, 0.76159, -0.96403);
}

EXAMPLE(qvrsExp_32f_A11)
{
    const qvr32f a[] = {0, 1, -2};
    qvr32f d[3];
    Morven_qvrsExp_32f_A11(a, d, 3);
    EXPECT(d, 1, 2.7183, 0.13534);
}

EXAMPLE(qvrsLn_32f_A11)
{
    const qvr32f a[] = {1, 2, 0.5f};
    qvr32f d[3];
    Morven_qvrsLn_32f_A11(a, d, 3);
    EXPECT(d, 0, 0.69315, -0.69315);
}

EXAMPLE(qvrsLog10_32f_A11)
{
    const qvr32f a[] = {1, 100, 0.5f};
    qvr32f d[3];
    Morven_qvrsLog10_32f_A11(a, d, 3);
    EXPECT(d, 0, 2, -0.30103);
}

EXAMPLE(qvrsLog10_32f_A21)
{
    const qvr32f a[] = {1, 100, 0.5f};
    qvr32f d[3];
    Morven_qvrsLog10_32f_A21(a, d, 3);
    EXPECT(d, 0, 2, -0.30103);
}

EXAMPLE(qvrsPow_32f_A11)
{
    const qvr32f a[] = {2, 9, 10}, b[] = {3, 0.5f, -2};
    qvr32f d[3];
    Morven_qvrsPow_32f_A11(a, b, d, 3);
    EXPECT(d, 8, 3, 0.01);
}

EXAMPLE(qvrsPow_32f_A24)
{
    const qvr32f a[] = {2, 9, 10}, b[] = {3, 0.5f, -2};
    qvr32f d[3];
    Morven_qvrsPow_32f_A24(a, b, d, 3);
    EXPECT(d, 8, 3, 0.01);
}

EXAMPLE(qvrsPowx_32f_A11)
{
    const qvr32f a[] = {1, 4, 9};
    qvr32f d[3];
    Morven_qvrsPowx_32f_A11(a, 0.5f, d, 3);
    EXPECT(d, 1, 2, 3);
}

EXAMPLE(qvrsPowx_32f_A24)
{
    const qvr32f a[] = {1, 4, 9};
    qvr32f d[3];
    Morven_qvrsPowx_32f_A24(a, 1.5f, d, 3);
    EXPECT(d, 1, 8, 27);
}

EXAMPLE(qvrsExp_32f)
{
    const qvr32f a[] = {0, 1, -2};
    qvr32f d[3];
    Morven_qvrsExp_32f(a, d, 3);
    EXPECT(d, 1, 2.7183, 0.13534);
}

EXAMPLE(qvrsLn_32f)
{
    const qvr32f a[] = {1, 2, 0.5f};
    qvr32f d[3];
    Morven_qvrsLn_32f(a, d, 3);
    EXPECT(d, 0, 0.69315, -0.69315);
}

EXAMPLE(qvrsArctan_32f)
{
    const qvr32f a[] = {0, 1, -1};
    qvr32f d[3];
    Morven_qvrsArctan_32f(a, d, 3);
    EXPECT(d, 0, 0.7854, -0.7854);
}

EXAMPLE(qvrsPhase_32fc)
{
    const qvr32fc a[] = {{1, 1}, {-1, 0}};
    qvr32f d[2];
    Morven_qvrsPhase_32fc(a, d, 2);
    EXPECT(d, 0.7854, 3.1416);
}

EXAMPLE(qvrsMagnitude_32fc)
{
    const qvr32fc a[] = {{3, 4}, {0, -2}};
    qvr32f d[2];
    Morven_qvrsMagnitude_32fc(a, d, 2);
    EXPECT(d, 5, 2);
}

EXAMPLE(qvrsMagnitude_64fc)
{
    const qvr64fc a[] = {{3, 4}, {0, -2}};
    qvr64f d[2];
    Morven_qvrsMagnitude_64fc(a, d, 2);
    EXPECT(d, 5, 2);
}

EXAMPLE(qvrsMagnitude_16sc_Sfs)
{
    const qvr16sc a[] = {{3, 4}, {0, -2}};
    qvr16s d[2];
    Morven_qvrsMagnitude_16sc_Sfs(a, d, 2, 0);
    EXPECT(d, 5, 2);
}
