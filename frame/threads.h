// The thread budget: one number for the process, set at load and never changed after.
#ifndef QVR_FRAME_THREADS_H
#define QVR_FRAME_THREADS_H

#include "frame/processor.h"

#ifdef __cplusplus
extern "C" {
#endif

extern QVR_HIDDEN int32_t qvrNumThreads;

// The smaller of the processors at hand and the OpenMP runtime's limit.
QVR_HIDDEN void qvrInitNumThreads(void);
QVR_HIDDEN qvrStatus qvrSetNumThreads(int32_t n);
QVR_HIDDEN qvrStatus qvrGetNumThreads(int32_t* pN);
QVR_HIDDEN int32_t qvrNumThreadsValue(void);

#ifdef __cplusplus
}
#endif

#endif
