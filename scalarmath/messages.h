// Words and texts that the error actions put together.
#ifndef QVR_SCALARMATH_MESSAGES_H
#define QVR_SCALARMATH_MESSAGES_H

#include "scalarmath/scalar.h"

extern "C" {
extern QVR_HIDDEN const char* const qvrmKindWords[qvrmKindCount];
extern QVR_HIDDEN const char* const qvrmSuffixes[qvrmTypeCount]; // double, extended, quadruple
extern QVR_HIDDEN const char* const qvrmMessages[qvrmMessageCount];
}

#endif
