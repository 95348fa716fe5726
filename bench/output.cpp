#include "bench/output.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

namespace bench {

namespace {

// The value behind `key : ` in the processor description, or what the first line of a file says.
std::string readField(const char* path, const char* key)
{
    FILE* file = fopen(path, "r");
    if (file == nullptr)
        return {};
    std::string value;
    char line[512];
    while (value.empty() && fgets(line, sizeof line, file) != nullptr) {
        line[strcspn(line, "\n")] = 0;
        const char* colon = key != nullptr ? strchr(line, ':') : line - 2;
        if (key == nullptr || (strncmp(line, key, strlen(key)) == 0 && colon != nullptr))
            value = colon + 2;
    }
    fclose(file);
    return value;
}

double perElement(const Result& r, const Timing& t)
{
    return t.min / r.elements;
}

double gigabytes(const Result& r)
{
    return (r.work.read + r.work.written) * r.elements / r.timings[0].min;
}

} // namespace

void printLimits(const Limits& limits)
{
    printf("Limits of this machine with %d-byte vectors, GB/s read and written\n", limits.vectorBytes);
    printf("%-20s", "");
    for (int pattern = 0; pattern < patternCount; pattern++)
        printf("%20s", kPatternNames[pattern]);
    printf("\n");
    for (int level = 0; level < levelCount; level++) {
        printf("%-20s", kLevelNames[level]);
        for (int pattern = 0; pattern < patternCount; pattern++)
            printf("%20.1f", limits.bandwidth[level][pattern]);
        printf("\n");
    }
    printf("1e9 operations/s: fused %.1f, float product %.1f, float division %.2f, float root %.2f, double division "
           "%.2f\n",
           limits.fma32, limits.add32, limits.divide32, limits.root32, limits.divide64);
    printf("a call through a pointer %.2f ns, of an export %.2f ns, difference %.2f ns\n\n", limits.pointerCall,
           limits.exportedCall, limits.exportedCall - limits.pointerCall);
}

void printHeading()
{
    printf("%-28s %-13s %-22s %-7s %11s %9s %-22s %11s %6s %6s %6s\n", "function", "variant", "case", "level",
           "ns/element", "GB/s", "best peer", "ns/element", "ratio", "median", "share");
}

void printResult(const Result& r)
{
    const Timing& best = r.timings[static_cast<size_t>(r.best)];
    printf("%-28s %-13s %-22s %-7s %11.4f %9.2f %-22s %11.4f %6.3f %6.3f ", r.name.c_str(), r.variant.c_str(),
           r.label.c_str(), kLevelNames[r.level], perElement(r, r.timings[0]), gigabytes(r),
           r.best ? best.name.c_str() : "none", r.best ? perElement(r, best) : 0.0, r.ratio, r.ratioMedian);
    if (r.share > 0)
        printf("%5.0f%%", 100 * r.share);
    printf("\n");
    fflush(stdout);
}

bool writeJson(const char* path, const Options& options, const Limits& limits, const std::vector<Result>& results)
{
    FILE* f = fopen(path, "w");
    if (f == nullptr)
        return false;
    const char* processors = getenv("QVR_BENCH_PINNED"); // how many there were before this process kept one
    fprintf(
        f, "{\n\"machine\": {\"processor\": \"%s\", \"processors\": %s, \"governor\": \"%s\", \"compiler\": \"%s\"},\n",
        readField("/proc/cpuinfo", "model name").c_str(), processors != nullptr ? processors : "1",
        readField("/sys/devices/system/cpu/cpu0/cpufreq/scaling_governor", nullptr).c_str(), __VERSION__);
    fprintf(f, "\"slot\": \"%s\", \"quick\": %s,\n", kSlots[qvrCpuIndex], options.quick ? "true" : "false");
    fprintf(f, "\"limits\": {\"vectorBytes\": %d, \"bandwidth\": {", limits.vectorBytes);
    for (int level = 0; level < levelCount; level++) {
        fprintf(f, "%s\n  \"%s\": {", level ? "," : "", kLevelNames[level]);
        for (int pattern = 0; pattern < patternCount; pattern++)
            fprintf(f, "%s\"%s\": %.2f", pattern ? ", " : "", kPatternNames[pattern], limits.bandwidth[level][pattern]);
        fprintf(f, "}");
    }
    fprintf(f,
            "},\n  \"fused\": %.2f, \"product\": %.2f, \"division\": %.3f, \"root\": %.3f, \"doubleDivision\": %.3f,\n"
            "  \"pointerCall\": %.3f, \"exportedCall\": %.3f},\n\"results\": [",
            limits.fma32, limits.add32, limits.divide32, limits.root32, limits.divide64, limits.pointerCall,
            limits.exportedCall);
    bool first = true;
    for (const Result& r : results) {
        fprintf(
            f,
            "%s\n  {\"name\": \"%s\", \"variant\": \"%s\", \"family\": \"%s\", \"group\": \"%s\", \"case\": \"%s\", "
            "\"level\": \"%s\", \"elements\": %.0f, \"points\": %.0f, \"read\": %g, \"written\": %g, \"best\": %d, "
            "\"ratio\": %.4f, "
            "\"ratioMedian\": %.4f, \"share\": %.4f, \"limitedBy\": \"%s\", \"timings\": [",
            first ? "" : ",", r.name.c_str(), r.variant.c_str(), r.family.c_str(), r.group.c_str(), r.label.c_str(),
            kLevelNames[r.level], r.elements, r.points, r.work.read, r.work.written, r.best, r.ratio, r.ratioMedian,
            r.share, r.limitedBy.c_str());
        for (size_t k = 0; k < r.timings.size(); k++)
            fprintf(f, "%s{\"name\": \"%s\", \"min\": %.3f, \"median\": %.3f}", k ? ", " : "",
                    r.timings[k].name.c_str(), r.timings[k].min, r.timings[k].median);
        fprintf(f, "]}");
        first = false;
    }
    fprintf(f, "\n]\n}\n");
    return fclose(f) == 0;
}

} // namespace bench
