// Linear convolution by plain sums, by one product of spectra, or block by block of the longer source.
//
// Blocks (overlap-save; Stockham, AFIPS Spring Joint Computer Conference 1966): a transform of F points takes P = F - S
// + 1 new values of the longer source behind the S - 1 last ones of the block before; the cyclic product's results from
// index S - 1 on are those of the linear one.
#include "fourier/functions.h"
#include "fourier/real/spec.h"
#include "fourier/sums/direct.h"
#include "fourier/sums/transforms.h"
#include "frame/region.h"
#include "frame/status.h"

namespace {

// Plain sums below either of these.
constexpr Index kDirectResults = PerSlot<Index>{150, 512, 512, 512, 512, 512, 512}.here();
constexpr Index kDirectShorter = PerSlot<Index>{32, 64, 64, 64, 64, 64, 64}.here();

// A longer source of at most this many values stays with the calling thread.
constexpr Index kSerialLonger = 4096;

// Between an ordered pair of sources.
struct Sources {
    const float *longer, *shorter;
    Index L, S;
    Index results() const { return L + S - 1; }
};

qvrStatus multiplyOnce(const Sources& s, float* dst)
{
    const Index results = s.results();
    Transform t;
    if (const qvrStatus status = makeTransform(orderFor(results, 2), 2, t))
        return status;
    const Index F = t.points;
    float* memory = allocateFloats(2 * F + t.workFloats);
    if (memory == nullptr)
        return endTransform(t, nullptr, qvrErrNoMemory);
    float *x = memory, *y = memory + F;
    uint8_t* work = t.workFloats > 0 ? reinterpret_cast<uint8_t*>(memory + 2 * F) : nullptr;
    copyPadded(s.longer, s.L, x, F);
    copyPadded(s.shorter, s.S, y, F);
    qvrStatus status = SLOT(ownqvrsFFTFwd_RToPacked_32f)(x, x, t.spec, work);
    if (status == qvrOk)
        status = SLOT(ownqvrsFFTFwd_RToPacked_32f)(y, y, t.spec, work);
    if (status == qvrOk)
        status = SLOT(ownqvrsMulPacked_32f_I)(y, x, static_cast<int>(F));
    if (status == qvrOk)
        status = SLOT(ownqvrsFFTInv_PackedToR_32f)(x, x, t.spec, work);
    if (status == qvrOk)
        copyValues(x, dst, results);
    return endTransform(t, memory, status);
}

// What all blocks share.
struct Blocks {
    Sources s;
    float* dst;
    const float* spectrum;
    const Transform& t;
    Index step;

    // Block b through one thread's buffer and work memory.
    qvrStatus run(Index b, float* x, uint8_t* work) const
    {
        const Index F = t.points, start = b * step, head = b == 0 ? 0 : s.S - 1;
        const Index n = least(least(s.L - start + head, s.L), step + head);
        copyPadded(s.longer + start - head, n > 0 ? n : 0, x, F);
        if (const qvrStatus status = SLOT(ownqvrsFFTFwd_RToPacked_32f)(x, x, t.spec, work))
            return status;
        if (const qvrStatus status = SLOT(ownqvrsMulPacked_32f_I)(spectrum, x, static_cast<int>(F)))
            return status;
        if (const qvrStatus status = SLOT(ownqvrsFFTInv_PackedToR_32f)(x, x, t.spec, work))
            return status;
        copyValues(x + head, dst + start, least(s.results() - start, step));
        return qvrOk;
    }
};

qvrStatus multiplyBlocks(const Sources& s, float* dst)
{
    Transform t;
    if (const qvrStatus status = makeTransform(orderFor(2 * s.S, 1) + 1, 2, t))
        return status;
    const Index F = t.points, step = F - s.S + 1;
    // The spectrum, then for each thread a block, its work memory, and at the end a status word: no more threads than
    // have a block to do, nor than memory holds.
    const Index perThread = t.workFloats + F + 1, fitting = (INT32_MAX / 4 - F) / perThread;
    const Index blockCount = (s.results() + step - 1) / step;
    const Index budget = s.L > kSerialLonger ? qvrNumThreadsValue() : 1;
    const int threads = static_cast<int>(greatest(1, least(budget, least(blockCount, fitting))));
    float* memory = allocateFloats(F + perThread * threads);
    if (memory == nullptr)
        return endTransform(t, nullptr, qvrErrNoMemory);
    float *const buffers = memory + F, *const works = buffers + F * threads;
    int32_t* const statuses = reinterpret_cast<int32_t*>(works + t.workFloats * threads);
    const auto workOf = [&](int thread) {
        return t.workFloats > 0 ? reinterpret_cast<uint8_t*>(works + thread * t.workFloats) : nullptr;
    };
    copyPadded(s.shorter, s.S, memory, F);
    qvrStatus status = SLOT(ownqvrsFFTFwd_RToPacked_32f)(memory, memory, t.spec, workOf(0));
    const Blocks blocks = {s, dst, memory, t, step};
    if (status == qvrOk && s.L <= kSerialLonger) {
        for (Index b = 0; b < blockCount && status == qvrOk; b++)
            status = blocks.run(b, buffers, workOf(0));
    } else if (status == qvrOk) {
        for (int i = 0; i < threads; i++)
            statuses[i] = qvrOk;
        parallelTeam(threads, [&](int thread, int team) {
            int32_t worst = qvrOk;
            for (Index b = thread; b < blockCount; b += team) {
                const qvrStatus own = blocks.run(b, buffers + thread * F, workOf(thread));
                worst = own < worst ? own : worst;
            }
            statuses[thread] = worst;
        });
        for (int i = 0; i < threads; i++)
            status = statuses[i] < status ? statuses[i] : status;
    }
    return endTransform(t, memory, status);
}

} // namespace

extern "C" qvrStatus SLOT(qvrsConv_32f)(const qvr32f* pSrc1, int len1, const qvr32f* pSrc2, int len2, qvr32f* pDst)
{
    if (const qvrStatus status = checkPointersThenLength(len1, pSrc1, pSrc2, pDst))
        return status;
    if (len2 < 1)
        return qvrErrBadSize;
    const Sources s = len1 >= len2 ? Sources{pSrc1, pSrc2, len1, len2} : Sources{pSrc2, pSrc1, len2, len1};
    if (s.results() < kDirectResults || s.S < kDirectShorter) {
        shiftSums<-1, 0>(s.shorter, s.S, s.longer, s.L, 0, pDst, s.results());
        return qvrOk;
    }
    return s.L < 3 * s.S ? multiplyOnce(s, pDst) : multiplyBlocks(s, pDst);
}
