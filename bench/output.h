// What a run prints and stores.
#ifndef QVR_BENCH_OUTPUT_H
#define QVR_BENCH_OUTPUT_H

#include "bench/bench.h"
#include "bench/limits.h"

namespace bench {

void printLimits(const Limits& limits);
void printHeading();
void printResult(const Result& result);

// All of a run for the report: the machine, its limits, every case.
bool writeJson(const char* path, const Options& options, const Limits& limits, const std::vector<Result>& results);

} // namespace bench

#endif
