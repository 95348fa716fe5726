// Checks of the benchmark itself: every export has a row, every peer stands beside an export and does the same work.
#ifndef QVR_BENCH_CHECK_H
#define QVR_BENCH_CHECK_H

#include "bench/bench.h"

namespace bench {

// Both print what is wrong and return the number of faults.
int checkCoverage();
int checkPeersAgree(const Options& options);

bool wanted(const Options& options, const Row& row);

} // namespace bench

#endif
