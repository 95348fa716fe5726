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

#include "frame/memory.h"
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

// Regions behind the header, each on a boundary of 64 bytes.
int64_t regionBytes(int64_t doubles)
{
    return qvrAlignUp<int64_t>(doubles * 8, 64);
}

double loadDouble(const double* p, int64_t i)
{
    double x;
    __builtin_memcpy(&x, reinterpret_cast<const char*>(p) + 8 * i, 8);
    return x;
}

} // namespace

extern "C" qvrStatus SLOT(qvrsIIRInitAlloc_64f)(qvrsIIRState_64f** statePtr, const qvr64f* taps, int order,
                                                const qvr64f* dlyLine)
{
    if (anyNull(statePtr, taps))
        return qvrErrNullPointer;
    if (order < 1)
        return qvrErrBadOrder;
    const int64_t L = order, header = qvrAlignUp<int64_t>(sizeof(qvrsIIRState_64f), 64);
    const int64_t tapsBytes = regionBytes(2 * L + 1), delayBytes = regionBytes(L + 1);
    const int64_t pairBytes = kHasIirBlocks ? regionBytes(2 * (L + 1)) : 0;
    const int64_t rowBytes = kHasIirBlocks ? regionBytes(4 * L) : 0;
    const int64_t blockBytes = kHasIirBlocks ? regionBytes(kIirChunk) : 0;
    const int64_t total = header + tapsBytes + delayBytes + pairBytes + rowBytes + blockBytes;
    if (total > INT32_MAX)
        return qvrErrNoMemory;
    char* block = allocate<char>(static_cast<int>(total));
    if (block == nullptr)
        return qvrErrNoMemory;
    auto* state = reinterpret_cast<qvrsIIRState_64f*>(block);
    const auto take = [&block](int64_t bytes) {
        double* region = reinterpret_cast<double*>(block);
        block += bytes;
        return bytes != 0 ? region : nullptr;
    };
    block += header;
    *state = {qvrTagIir,      take(tapsBytes),  take(delayBytes), order, take(pairBytes),
              take(rowBytes), take(blockBytes), nullptr,          1};
    *statePtr = state;

    for (int64_t k = 0; k < L; k++)
        state->delayStore[k] = dlyLine != nullptr ? loadDouble(dlyLine, k) : 0;
    state->delayStore[L] = 0;
    const double a0 = loadDouble(taps, L + 1);
    if (a0 == 0) {
        release(state);
        return qvrErrDivByZero;
    }
    const double r = 1.0 / a0;
    for (int64_t k = 0; k <= L; k++)
        state->tapsStore[k] = loadDouble(taps, k) * r;
    for (int64_t k = 1; k <= L; k++)
        state->tapsStore[L + k] = loadDouble(taps, L + 1 + k) * r;
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
