// Hilbert transform: half of the spectrum doubled, the other half removed (Marple, IEEE Trans. Signal Process. 47,
// 1999).
#include "fourier/functions.h"
#include "fourier/generic/dft.h"
#include "frame/memory.h"
#include "frame/status.h"

// The characters "EAMC".
enum : uint32_t { qvrTagHilbert = 0x434D4145 };

struct qvrsHilbertState_32f32fc {
    uint32_t tag;
    int32_t len;
    int32_t bufSize; // the larger need of the two transforms
    int32_t hint;
    qvrsDFTSpec_C_32fc* pDFTComplex;
    qvrsDFTSpec_R_32f* pDFTReal;
};

extern "C" qvrStatus SLOT(qvrsHilbertInitAlloc_32f32fc)(qvrsHilbertState_32f32fc** ppState, int len, int hint)
{
    if (ppState == nullptr)
        return qvrErrNullPointer;
    if (len < 1)
        return qvrErrBadSize;
    if (const qvrStatus status = SLOT(ownqvrsDFTJudge)(len, false))
        return status;
    if (const qvrStatus status = SLOT(ownqvrsDFTJudge)(len, true))
        return status;
    // By contract: this allocation is not judged, and a failure of a later one leaves the record to the caller's loss.
    qvrsHilbertState_32f32fc* state = reinterpret_cast<qvrsHilbertState_32f32fc*>(
        allocate<uint8_t>(static_cast<int>(sizeof(qvrsHilbertState_32f32fc))));
    *state = {qvrTagHilbert, len, 0, hint, nullptr, nullptr};
    if (const qvrStatus status = SLOT(ownqvrsDFTInitAlloc_C_32fc)(&state->pDFTComplex, len, qvrFftDivInvByN, hint))
        return status;
    if (const qvrStatus status = SLOT(ownqvrsDFTInitAlloc_R_32f)(&state->pDFTReal, len, qvrFftDivInvByN, hint)) {
        SLOT(ownqvrsDFTFree_C_32fc)(state->pDFTComplex);
        return status;
    }
    int32_t complexSize, realSize;
    SLOT(ownqvrsDFTGetBufSize_C_32fc)(state->pDFTComplex, &complexSize);
    SLOT(ownqvrsDFTGetBufSize_R_32f)(state->pDFTReal, &realSize);
    state->bufSize = complexSize > realSize ? complexSize : realSize;
    *ppState = state;
    return qvrOk;
}

extern "C" qvrStatus SLOT(qvrsHilbert_32f32fc)(const qvr32f* pSrc, qvr32fc* pDst, qvrsHilbertState_32f32fc* pState)
{
    if (anyNull(pSrc, pDst) || pState == nullptr)
        return qvrErrNullPointer;
    if (pState->tag != qvrTagHilbert)
        return qvrErrBadContext;
    float* dst = reinterpret_cast<float*>(pDst);
    const Index n = pState->len;
    if (n <= 2) {
        for (Index i = 0; i < n; i++) {
            put(dst, 2 * i, get(pSrc, i));
            put(dst, 2 * i + 1, 0.0f);
        }
        return qvrOk;
    }
    uint8_t* work = nullptr;
    if (pState->bufSize > 0 && (work = allocate<uint8_t>(pState->bufSize)) == nullptr)
        return qvrErrNoMemory;
    qvrStatus status = SLOT(ownqvrsDFTFwd_RToCCS_32f)(pSrc, dst, pState->pDFTReal, work);
    if (status == qvrOk) {
        // Bins 1 .. h have a negative counterpart; with the middle one of an even length they end at n/2.
        const Index half = n >> 1, h = half + (n & 1) - 1;
        using F = Full<float>;
        using Bin = Vec<float, 2>;
        Index i = 2;
        for (; i + kLanes<float> <= 2 * h + 2; i += kLanes<float>) {
            const F x = load<F>(dst + i);
            store(dst + i, x + x);
        }
        for (; i < 2 * h + 2; i += 2) {
            const Bin x = load<Bin>(dst + i);
            store(dst + i, x + x);
        }
        // The call costs more than it saves on a few lines.
        i = 2 * (half + 1);
        if (h >= 64) {
            __builtin_memset(static_cast<void*>(dst + i), 0, static_cast<size_t>(h) * 8);
        } else {
            for (; i + kLanes<float> <= 2 * n; i += kLanes<float>)
                store(dst + i, F{});
            for (; i < 2 * n; i += 2)
                store(dst + i, Bin{});
        }
        status = SLOT(ownqvrsDFTInv_CToC_32fc)(dst, dst, pState->pDFTComplex, work);
    }
    release(work);
    return status;
}

extern "C" qvrStatus SLOT(qvrsHilbertFree_32f32fc)(qvrsHilbertState_32f32fc* pState)
{
    if (const qvrStatus status = checkState(pState, qvrTagHilbert))
        return status;
    if (const qvrStatus status = SLOT(ownqvrsDFTFree_C_32fc)(pState->pDFTComplex))
        return status;
    if (const qvrStatus status = SLOT(ownqvrsDFTFree_R_32f)(pState->pDFTReal))
        return status;
    release(pState);
    return qvrOk;
}
