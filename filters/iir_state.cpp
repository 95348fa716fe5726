// Creation and release of recursive-filter states.
//
// Look-ahead. With c[k] = -a[k + 1] / a0, sample t of the recursion is y[t] = w[t] + sum c[k] y[t - 1 - k]. Expanding
// the samples t .. t + 2 inside those after them, row k of the table says what y[t - 1 - k] gives to y[t] .. y[t + 3]:
//   R0[k] = c[k]
//   R1[k] = g0 R0[k] + R0[k + 1]
//   R2[k] = g0 R1[k] + g1 R0[k] + R0[k + 2]
//   R3[k] = g0 R2[k] + g1 R1[k] + g2 R0[k] + R0[k + 3]        with g = c[0], c[1], c[2]
// The table belongs to the state's layout. Runs do not sum by it: see iir_run.cpp.
#include "filters/functions.h"
#include "filters/iir.h"

#include "frame/arena.h"
#include "frame/element.h"
#include "frame/status.h"

namespace {

void fillLookAhead(const double* a, int64_t order, double* rows)
{
    const auto c = [=](int64_t k) { return k < order ? -a[k] : 0.0; };
    const double g0 = c(0), g1 = c(1), g2 = c(2);
    for (int64_t k = 0; k < order; k++) {
        double* row = rows + 4 * k;
        row[0] = c(k);
        row[1] = g0 * row[0] + c(k + 1);
        row[2] = g0 * row[1] + g1 * row[0] + c(k + 2);
        row[3] = g0 * row[2] + g1 * row[1] + g2 * row[0] + c(k + 3);
    }
}

} // namespace

extern "C" qvrStatus SLOT(qvrsIIRInitAlloc_64f)(qvrsIIRState_64f** statePtr, const qvr64f* taps, int order,
                                                const qvr64f* dlyLine)
{
    if (anyNull(statePtr, taps))
        return qvrErrNullPointer;
    if (order < 1)
        return qvrErrBadOrder;
    const int64_t L = order;
    qvrsIIRState_64f* state;
    qvrsIIRState_64f regions = {};
    if (!build([&](Arena& arena) {
            state = arena.take<qvrsIIRState_64f>(1);
            regions.tapsStore = arena.take<double>(2 * L + 1);
            regions.delayStore = arena.take<double>(L + 1);
            regions.pairTaps = arena.take<double>(kHasIirBlocks ? 2 * (L + 1) : 0);
            regions.lookAheadRows = arena.take<double>(kHasIirBlocks ? 4 * L : 0);
            regions.blockBuffer = arena.take<double>(kHasIirBlocks ? kIirChunk : 0);
        }))
        return qvrErrNoMemory;
    *state = regions;
    state->tag = qvrTagIir;
    state->order = order;
    state->owned = 1;
    *statePtr = state;

    for (int64_t k = 0; k < L; k++)
        state->delayStore[k] = dlyLine != nullptr ? get(dlyLine, k) : 0;
    state->delayStore[L] = 0;
    const double a0 = get(taps, L + 1);
    if (a0 == 0) {
        release(state);
        return qvrErrDivByZero;
    }
    const double r = 1.0 / a0;
    for (int64_t k = 0; k <= L; k++)
        state->tapsStore[k] = get(taps, k) * r;
    for (int64_t k = 1; k <= L; k++)
        state->tapsStore[L + k] = get(taps, L + 1 + k) * r;
    if constexpr (kHasIirBlocks) {
        for (int64_t k = 0; k <= L; k++)
            state->pairTaps[2 * k] = state->pairTaps[2 * k + 1] = state->tapsStore[k];
        fillLookAhead(state->tapsStore + L + 1, L, state->lookAheadRows);
    }
    return qvrOk;
}

extern "C" qvrStatus SLOT(qvrsIIRFree_64f)(qvrsIIRState_64f* state)
{
    if (state == nullptr)
        return qvrErrNullPointer;
    if (state->tag != qvrTagIir && state->tag != qvrTagIirCascade)
        return qvrErrBadContext;
    if (state->owned != 0)
        release(state);
    return qvrOk;
}
