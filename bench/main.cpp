// qvr_bench: times every export beside its peers, in one process on one core.
#include <sched.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include "bench/check.h"
#include "bench/output.h"
#include "bench/peers.h"

using namespace bench;

namespace {

constexpr double kSecondsPerCase = 0.12, kSecondsQuick = 0.02;

constexpr const char* kUsage =
    "usage: qvr_bench [options]\n"
    "  --only=FAMILY   rows of one family\n"
    "  --name=TEXT     rows of exports whose name contains TEXT\n"
    "  --slot=SLOT     mx m7 u8 n8 y8 e9 or l9 instead of the machine's own; its peers are loops for that level\n"
    "  --core=N        run on core N instead of the last one\n"
    "  --cores=N       run on the last N cores, with as many threads\n"
    "  --no-memory     leave out what exceeds the caches\n"
    "  --quick         fewer rounds, and no memory\n"
    "  --json=FILE     also write the results to FILE\n"
    "  --list          name the rows\n"
    "  --check         check that every export has a row and every peer gives the same result; time nothing\n";

int slotNumber(const char* name)
{
    for (int i = 0; i < qvrSlotCount; i++)
        if (strcmp(kSlots[i], name) == 0)
            return i;
    return -1;
}

bool parse(int argc, char** argv, Options& options)
{
    for (int i = 1; i < argc; i++) {
        const std::string argument = argv[i];
        const size_t equals = argument.find('=');
        const std::string key = argument.substr(0, equals);
        const std::string value = equals == std::string::npos ? "" : argument.substr(equals + 1);
        if (key == "--only")
            options.only = value;
        else if (key == "--name")
            options.name = value;
        else if (key == "--json")
            options.json = value;
        else if (key == "--slot" && slotNumber(value.c_str()) >= 0)
            options.slot = slotNumber(value.c_str());
        else if (key == "--core")
            options.core = atoi(value.c_str());
        else if (key == "--cores" && atoi(value.c_str()) > 0)
            options.cores = atoi(value.c_str());
        else if (key == "--no-memory")
            options.memory = false;
        else if (key == "--quick")
            options.quick = true, options.memory = false;
        else if (key == "--list")
            options.list = true;
        else if (key == "--check")
            options.check = true;
        else
            return false;
    }
    return true;
}

// Runs this program again on some cores alone, so that the OpenMP runtime and the library find these when they load.
void pinOnce(const Options& options, char** argv)
{
    constexpr const char* kMark = "QVR_BENCH_PINNED";
    if (getenv(kMark) != nullptr)
        return;
    cpu_set_t have, set;
    if (sched_getaffinity(0, sizeof have, &have) != 0)
        return;
    char count[16];
    snprintf(count, sizeof count, "%d", CPU_COUNT(&have));
    CPU_ZERO(&set);
    if (options.core >= 0)
        CPU_SET(options.core, &set);
    for (int i = CPU_SETSIZE - 1; i >= 0 && CPU_COUNT(&set) < options.cores; i--)
        if (CPU_ISSET(i, &have))
            CPU_SET(i, &set);
    if (CPU_COUNT(&set) != options.cores || sched_setaffinity(0, sizeof set, &set) != 0) {
        fprintf(stderr, "qvr_bench: cannot run on these cores alone\n");
        exit(3);
    }
    setenv(kMark, count, 1);
    execv("/proc/self/exe", argv);
    perror("qvr_bench");
    exit(1);
}

Result timeCase(const Row& row, Case& c, const Limits& limits, double seconds)
{
    Result result;
    result.name = row.name, result.variant = row.variant, result.family = row.family, result.group = row.group;
    result.label = c.label, result.elements = c.elements, result.points = c.points, result.work = c.work;
    result.level = levelOf(c.footprint());
    measure(c, seconds, result);
    result.share = limitTime(limits, result.level, c.work, c.elements, result.limitedBy) / result.timings[0].min;
    return result;
}

std::vector<Result> run(const Options& options, const Limits& limits, double seconds)
{
    std::vector<Result> results;
    for (const Row& row : rows()) {
        if (!wanted(options, row))
            continue;
        row.build({[&](const std::string& label, const std::function<void(Case&)>& build) {
                       Case c;
                       c.label = label;
                       build(c);
                       results.push_back(timeCase(row, c, limits, seconds));
                       c.release();
                       printResult(results.back());
                   },
                   options.memory});
    }
    return results;
}

} // namespace

int main(int argc, char** argv)
{
    Options options;
    if (!parse(argc, argv, options)) {
        fputs(kUsage, stderr);
        return 2;
    }
    pinOnce(options, argv);
    chosenSlot = qvrCpuIndex;
    if (options.slot > chosenSlot) {
        fprintf(stderr, "qvr_bench: this machine cannot run slot %s\n", kSlots[options.slot]);
        return 3;
    }
    if (options.slot >= 0)
        qvrCpuIndex = options.slot;
    if (options.list) {
        for (const Row& row : rows())
            printf("%s %s %s %s\n", row.family.c_str(), row.group.c_str(), row.name.c_str(), row.variant.c_str());
        return 0;
    }
    if (options.check) {
        const int faults = checkCoverage() + checkPeersAgree(options);
        printf("%s\n", faults ? "benchmark rows: FAULTS" : "benchmark rows: every export has one, all peers agree");
        return faults != 0;
    }
    const double seconds = options.quick ? kSecondsQuick : kSecondsPerCase;
    Limits limits = measureLimits(options.memory, seconds);
    printf("slot %s\n", kSlots[qvrCpuIndex]);
    printLimits(limits);
    printHeading();
    std::vector<Result> results = run(options, limits, seconds);
    // Another process can have slowed the limits down, so they are measured again at the end; the better value counts.
    keepBetter(limits, measureLimits(options.memory, seconds));
    for (Result& r : results)
        r.share = limitTime(limits, r.level, r.work, r.elements, r.limitedBy) / r.timings[0].min;
    if (!options.json.empty() && !writeJson(options.json.c_str(), options, limits, results)) {
        perror(options.json.c_str());
        return 1;
    }
    return 0;
}
