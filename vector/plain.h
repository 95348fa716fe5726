// What functions that are compiled once have in common.
#ifndef QVR_VECTOR_PLAIN_H
#define QVR_VECTOR_PLAIN_H

#include "frame/element.h"

#define QVR_EXPORTED __attribute__((visibility("default")))

#endif
