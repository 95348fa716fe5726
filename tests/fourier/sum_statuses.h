// The statuses in order of a sum of two sources into `n` results from a place of the caller's.
#pragma once

#include "fourier/slot_tables.h"
#include "support/slots.h"
#include "support/status_order.h"

template<class Table> void checkSumStatuses(const Table& table)
{
    struct Args {
        const float *a, *b;
        int n1, n2;
        float* y;
        int n;
    };
    slots::each(table, [&](auto f, int) {
        float a[4] = {1, 2, 3, 4}, b[2] = {5, 6}, y[5] = {9, 9, 9, 9, 9};
        expectStatusOrder<Args>(
            {a, b, 4, 2, y, 5},
            {{"pSrc1", qvrErrNullPointer, [](Args& x) { x.a = nullptr; }},
             {"pSrc2", qvrErrNullPointer, [](Args& x) { x.b = nullptr; }},
             {"pDst", qvrErrNullPointer, [](Args& x) { x.y = nullptr; }},
             {"len1", qvrErrBadSize, [](Args& x) { x.n1 = 0; }},
             {"len2", qvrErrBadSize, [](Args& x) { x.n2 = -5; }},
             {"dstLen", qvrErrBadSize, [](Args& x) { x.n = 0; }}},
            [&](const Args& x) { return f(x.a, x.n1, x.b, x.n2, x.y, x.n, 1); },
            [&] { return y[0] == 9 && y[4] == 9; });
    });
}
