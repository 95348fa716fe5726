// By contract: the budget has a setter and a getter, though it never changes after load; tests use them.
#include "frame/threads.h"

#include <omp.h>

extern "C" {

int32_t qvrNumThreads = 1;

void qvrInitNumThreads(void)
{
    const int processors = omp_get_num_procs(), limit = omp_get_max_threads();
    qvrNumThreads = processors < limit ? processors : limit;
}

qvrStatus qvrSetNumThreads(int32_t n)
{
    if (n < 1)
        return qvrErrBadSize;
    qvrNumThreads = n;
    return qvrOk;
}

qvrStatus qvrGetNumThreads(int32_t* pN)
{
    if (pN == nullptr)
        return qvrErrNullPointer;
    *pN = qvrNumThreads;
    return qvrOk;
}

int32_t qvrNumThreadsValue(void)
{
    return qvrNumThreads;
}

} // extern "C"
