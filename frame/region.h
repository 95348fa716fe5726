// The parallel region that every forking function goes through.
//
// parallelTeam(threads, body) runs body(t, T) on a team of up to `threads` threads, t = 0 .. T - 1, under the caller's
// MXCSR; the flags that any of them raises are the caller's afterwards. The runtime may give fewer threads than asked
// for; T is the number it gave.
//
// parallelElements(len, kernel) is the element-wise form: kernel(start, count) on contiguous chunks of len / T
// elements, the last one with the remainder, on at most two threads. A kernel that met a bad element returns nonzero;
// the result is nonzero if any chunk's was.
#ifndef QVR_FRAME_REGION_H
#define QVR_FRAME_REGION_H

#include <omp.h>

#include "frame/mxcsr.h"
#include "frame/threads.h"

namespace {

template<class Body> __attribute__((noinline)) void callBody(const Body& body, int t, int threads)
{
    body(t, threads);
}

// A worker keeps its own word between regions. Returns the flags that the body raised.
template<class Body> uint32_t callUnderMxcsr(uint32_t word, const Body& body, int t, int threads)
{
    const uint32_t own = readMxcsr();
    writeMxcsr(word & ~kMxcsrAllFlags);
    callBody(body, t, threads);
    const uint32_t raised = readMxcsr() & kMxcsrAllFlags;
    writeMxcsr(own);
    return raised;
}

template<class Body> void parallelTeam(int threads, const Body& body)
{
    const uint32_t word = readMxcsr();
    uint32_t raised = 0;
    int team = 1;
#pragma omp parallel num_threads(threads) default(none) shared(word, raised, team, body)
    {
#pragma omp master
        team = omp_get_num_threads();
#pragma omp barrier
        const int t = omp_get_thread_num();
        if (t == 0)
            callBody(body, t, team);
        else
            __atomic_fetch_or(&raised, callUnderMxcsr(word, body, t, team), __ATOMIC_RELAXED);
    }
    if (raised)
        writeMxcsr(readMxcsr() | raised);
}

template<class Kernel> int parallelElements(int len, const Kernel& kernel)
{
    const int budget = qvrNumThreadsValue();
    if (budget < 2 || len < budget)
        return kernel(0, len);
    int flagged = 0;
    parallelTeam(2, [&](int t, int threads) {
        const int chunk = len / threads, rest = len % threads;
        const int count = t == threads - 1 ? chunk + rest : chunk;
        // Only zero or nonzero counts, so an increment lost to the other thread does no harm.
        if (kernel(t * chunk, count) != 0)
            __atomic_store_n(&flagged, __atomic_load_n(&flagged, __ATOMIC_RELAXED) + 1, __ATOMIC_RELAXED);
    });
    return flagged;
}

} // namespace

#endif
