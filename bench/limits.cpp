#include "bench/limits.h"

#include <stdlib.h>
#include <unistd.h>

#include <algorithm>

extern "C" {
extern QVR_HIDDEN decltype(&Morven_qvrsAdd_32f) const qvrTable_qvrsAdd_32f[qvrSlotCount];
}

namespace bench {

const char* const kPatternNames[] = {"read", "write", "copy", "update in place", "two sources", "source and in place"};

namespace {

// Sources and destinations that a pattern touches.
constexpr int kArrays[] = {1, 1, 2, 1, 3, 2};
constexpr int kBytesMoved[] = {1, 1, 2, 2, 3, 3}; // per byte of one array

// A third of the first cache, half of the second, and well beyond any last one.
int64_t workingSet(Level level)
{
    if (level == levelL1)
        return std::max<int64_t>(sysconf(_SC_LEVEL1_DCACHE_SIZE), 32 << 10) / 3;
    if (level == levelL2)
        return std::max<int64_t>(sysconf(_SC_LEVEL2_CACHE_SIZE), 256 << 10) / 2;
    return std::max<int64_t>(4 * int64_t{sysconf(_SC_LEVEL3_CACHE_SIZE)}, 192 << 20);
}

double bandwidth(const LimitLoops& loops, Level level, int pattern, double seconds)
{
    Case c;
    const int64_t n = workingSet(level) / kArrays[pattern] / 4096 * 4096;
    const char* s = reinterpret_cast<const char*>(c.array<float>(n / 4, Data::signs));
    const char* t = pattern == patternTriad ? reinterpret_cast<const char*>(c.array<float>(n / 4, Data::signs)) : s;
    char* d = reinterpret_cast<char*>(c.array<float>(n / 4, Data::signs));
    for (auto* const form : loops.patterns[pattern])
        if (form != nullptr)
            c.add("loop", [=] { form(s, t, d, n); });
    Result result;
    measure(c, seconds, result);
    c.release();
    double best = result.timings[0].min;
    for (const Timing& timing : result.timings)
        best = std::min(best, timing.min);
    return static_cast<double>(n * kBytesMoved[pattern]) / best;
}

double operationRate(const LimitLoops& loops, Unit unit, bool fused)
{
    double best = 0;
    for (int round = 0; round < 40; round++) {
        const double start = now();
        const double made = loops.operations(unit, fused, 10000);
        best = std::max(best, made / (now() - start) * 1e-9);
    }
    return best;
}

// A call that fails its first check costs the call and little else.
void callCosts(Limits& limits, double seconds)
{
    auto* volatile slotFunction = qvrTable_qvrsAdd_32f[qvrCpuIndex];
    auto* volatile exported = &Morven_qvrsAdd_32f;
    Case c;
    c.add("pointer", [f = slotFunction] { f(nullptr, nullptr, nullptr, 0); });
    c.add("export", [f = exported] { f(nullptr, nullptr, nullptr, 0); });
    Result result;
    measure(c, seconds, result);
    limits.pointerCall = result.timings[0].min;
    limits.exportedCall = result.timings[1].min;
}

} // namespace

Limits measureLimits(bool memory, double seconds)
{
    const LimitLoops& loops =
        __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma") ? limitLoops_l9 : limitLoops_mx;
    Limits limits = {};
    limits.vectorBytes = loops.vectorBytes;
    for (int level = 0; level < (memory ? levelCount : levelMemory); level++)
        for (int pattern = 0; pattern < patternCount; pattern++)
            limits.bandwidth[level][pattern] = bandwidth(loops, static_cast<Level>(level), pattern, seconds);
    limits.fma32 = operationRate(loops, Unit::none, true);
    limits.add32 = operationRate(loops, Unit::add32, false);
    limits.divide32 = operationRate(loops, Unit::divide32, false);
    limits.root32 = operationRate(loops, Unit::root32, false);
    limits.divide64 = operationRate(loops, Unit::divide64, false);
    callCosts(limits, seconds);
    return limits;
}

void keepBetter(Limits& limits, const Limits& other)
{
    for (int level = 0; level < levelCount; level++)
        for (int pattern = 0; pattern < patternCount; pattern++)
            limits.bandwidth[level][pattern] =
                std::max(limits.bandwidth[level][pattern], other.bandwidth[level][pattern]);
    for (double Limits::* const rate :
         {&Limits::fma32, &Limits::add32, &Limits::divide32, &Limits::root32, &Limits::divide64})
        limits.*rate = std::max(limits.*rate, other.*rate);
    for (double Limits::* const cost : {&Limits::pointerCall, &Limits::exportedCall})
        limits.*cost = std::min(limits.*cost, other.*cost);
}

namespace {

// Where reads and writes are not in a measured proportion, the common part runs as a copy and the rest on its own.
double trafficTime(const double* bandwidths, const Work& work)
{
    const double r = work.read, w = work.written;
    const auto time = [&](Pattern pattern, double bytes) { return bytes / bandwidths[pattern]; };
    if (w == 0)
        return time(patternRead, r);
    if (r == 0)
        return time(patternWrite, w);
    if (r == 2 * w)
        return time(work.inPlace ? patternUpdateTwo : patternTriad, r + w);
    const double common = std::min(r, w);
    const double shared = time(work.inPlace ? patternUpdate : patternCopy, 2 * common);
    return shared + (r > w ? time(patternRead, r - w) : time(patternWrite, w - r));
}

} // namespace

double limitTime(const Limits& limits, Level level, const Work& work, double elements, std::string& by)
{
    double best = 0;
    if ((work.read > 0 || work.written > 0) && limits.bandwidth[level][patternRead] > 0) {
        best = trafficTime(limits.bandwidth[level], work) * elements;
        by = "memory";
    }
    const auto unit = [&](Unit which, double rate, const char* name) {
        if (work.unit == which && work.operations * elements / rate > best) {
            best = work.operations * elements / rate;
            by = name;
        }
    };
    unit(Unit::add32, limits.add32, "arithmetic");
    unit(Unit::divide32, limits.divide32, "divider");
    unit(Unit::root32, limits.root32, "divider");
    unit(Unit::divide64, limits.divide64, "divider");
    return best;
}

} // namespace bench
