#include "support/regions.h"

#include <atomic>

#if defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define QVR_NO_OMP_TOOL
#endif
#endif

namespace {

std::atomic<int> forkCount{0}, requested{0};
std::atomic<bool> active{false};

} // namespace

namespace regions {

bool counted()
{
    return active;
}
int forks()
{
    return forkCount;
}
int lastRequested()
{
    return requested;
}

} // namespace regions

#ifndef QVR_NO_OMP_TOOL
#include <omp-tools.h>

namespace {

void onParallelBegin(ompt_data_t*, const ompt_frame_t*, ompt_data_t*, unsigned threads, int, const void*)
{
    requested = static_cast<int>(threads);
    forkCount++;
}

int initialize(ompt_function_lookup_t lookup, int, ompt_data_t*)
{
    const auto set = reinterpret_cast<ompt_set_callback_t>(lookup("ompt_set_callback"));
    active = set(ompt_callback_parallel_begin, reinterpret_cast<ompt_callback_t>(onParallelBegin)) == ompt_set_always;
    return 1;
}

void finalize(ompt_data_t*) {}

} // namespace

extern "C" ompt_start_tool_result_t* ompt_start_tool(unsigned, const char*)
{
    static ompt_start_tool_result_t result = {initialize, finalize, {0}};
    return &result;
}
#endif
