// morvenqvr-info: what the library finds on this machine, and what it makes of it.
#include <cpuid.h>
#include <dlfcn.h>
#include <getopt.h>
#include <gnu/libc-version.h>
#include <limits.h>
#include <omp.h>
#include <stdlib.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "frame/threads.h"
#include "library.h"
#include "slots.h"

namespace {

struct Cache {
    unsigned level;
    const char* kind;
    uint64_t bytes, ways, line;
};

struct Facts {
    std::string vendor, model;
    unsigned family = 0, number = 0, stepping = 0;
    uint64_t features = 0;
    int bySource = 0; // the slot that the features give
    std::vector<Cache> caches;
    int32_t largest = 0, byDescriptors = 0;
    int processors = 0, limit = 0, budget = 0;
    std::string openmp;
};

void identify(Facts& f)
{
    unsigned a, b, c, d;
    __cpuid(0, a, b, c, d);
    char vendor[13] = {};
    memcpy(vendor, &b, 4);
    memcpy(vendor + 4, &d, 4);
    memcpy(vendor + 8, &c, 4);
    f.vendor = vendor;
    const unsigned highest = a;
    __cpuid(1, a, b, c, d);
    f.stepping = a & 15;
    const unsigned family = a >> 8 & 15;
    f.family = family == 15 ? family + (a >> 20 & 255) : family;
    f.number = (a >> 4 & 15) | (family == 6 || family == 15 ? a >> 12 & 0xF0 : 0);
    __cpuid(0x80000000, a, b, c, d);
    if (a >= 0x80000004) {
        unsigned name[13] = {};
        for (unsigned i = 0; i < 3; i++)
            __cpuid(0x80000002 + i, name[4 * i], name[4 * i + 1], name[4 * i + 2], name[4 * i + 3]);
        const char* text = reinterpret_cast<const char*>(name);
        f.model = text + strspn(text, " ");
        f.model.erase(f.model.find_last_not_of(' ') + 1);
    }
    for (unsigned i = 0; highest >= 4 && i < 32; i++) {
        __cpuid_count(4, i, a, b, c, d);
        static constexpr const char* kKinds[] = {"data", "instruction", "unified"};
        if ((a & 31) == 0 || (a & 31) > 3)
            break;
        const uint64_t ways = (b >> 22) + 1, partitions = (b >> 12 & 0x3FF) + 1, line = (b & 0xFFF) + 1;
        f.caches.push_back(
            {a >> 5 & 7, kKinds[(a & 31) - 1], ways * partitions * line * (uint64_t{c} + 1), ways, line});
    }
}

// The answers of the library's own code.
void ask(Facts& f)
{
    qvrGetFeatures(&f.features, nullptr);
    f.bySource = qvrCpuIndex;
    qvrGetMaxCacheSize(&f.largest);
    qvrGetDescriptorCacheSize(&f.byDescriptors);
    f.processors = omp_get_num_procs();
    f.limit = omp_get_max_threads();
    f.budget = qvrNumThreadsValue();
    Dl_info where;
    char resolved[PATH_MAX];
    if (dladdr(reinterpret_cast<void*>(&omp_get_num_procs), &where) != 0)
        f.openmp = realpath(where.dli_fname, resolved) != nullptr ? resolved : where.dli_fname;
}

std::string names(uint64_t mask)
{
    std::string list;
    for (const tools::Feature& feature : tools::kFeatures)
        if (mask & feature.mask)
            list += (list.empty() ? "" : ", ") + std::string(feature.name);
    return list;
}

// Why the features give this slot: what the next ones lack.
std::string reason(const Facts& f)
{
    if (f.bySource == qvrSlotCount - 1)
        return "the highest slot, and the processor has all that it needs";
    std::string why = "the highest slot of which the processor has all features";
    for (int i = f.bySource + 1; i < qvrSlotCount; i++)
        why += std::string("; ") + tools::kSlots[i].name + " needs " + names(tools::kSlots[i].chosen & ~f.features);
    return why;
}

std::string sized(uint64_t bytes)
{
    const bool whole = bytes % (1 << 20) == 0;
    return bytes == 0 ? "unknown" : std::to_string(whole ? bytes >> 20 : bytes >> 10) + (whole ? " MiB" : " KiB");
}

const char* slotName(int slot)
{
    return slot < 0 ? "unknown" : tools::kSlots[slot].name;
}

void printText(const Facts& f, const tools::Library& library, const std::string& note)
{
    printf("Processor  %s\n           %s, family %u, model %u, stepping %u\n", f.model.c_str(), f.vendor.c_str(),
           f.family, f.number, f.stepping);
    printf("Features   %s\n", names(f.features).c_str());
    if (library.error().empty()) {
        printf("Library    %s\n           version %s, build %s\n", library.path().c_str(), library.version().c_str(),
               library.buildId().c_str());
        printf("Slot       %s%s\n", slotName(library.slot()), note.empty() ? "" : (" (" + note + ")").c_str());
    } else {
        printf("Library    %s\nSlot       %s would be chosen\n", library.error().c_str(), slotName(f.bySource));
    }
    printf("Why        %s\n", reason(f).c_str());
    for (size_t i = 0; i < f.caches.size(); i++) {
        const Cache& c = f.caches[i];
        printf("%-10s level %u, %s: %s, %llu ways, lines of %llu bytes\n", i == 0 ? "Caches" : "", c.level, c.kind,
               sized(c.bytes).c_str(), static_cast<unsigned long long>(c.ways),
               static_cast<unsigned long long>(c.line));
    }
    printf("           the library goes by %s; its fills and copies below AVX by %s\n",
           sized(static_cast<uint64_t>(f.largest)).c_str(), sized(static_cast<uint64_t>(f.byDescriptors)).c_str());
    printf("Threads    %d at most: %d processors for this process, OpenMP's limit %d\n", f.budget, f.processors,
           f.limit);
    printf("Versions   morvenqvr-info %s, glibc %s, OpenMP runtime %s\n", QVR_VERSION, gnu_get_libc_version(),
           f.openmp.c_str());
}

std::string quoted(const std::string& text)
{
    std::string q = "\"";
    for (const char c : text) {
        char escape[8];
        if (c == '"' || c == '\\') {
            q += '\\';
            q += c;
        } else if (static_cast<unsigned char>(c) < 0x20) {
            snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned>(c));
            q += escape;
        } else {
            q += c;
        }
    }
    return q + "\"";
}

void printJson(const Facts& f, const tools::Library& library, const std::string& note)
{
    printf("{\n  \"processor\": {\"vendor\": %s, \"model\": %s, \"family\": %u, \"number\": %u, \"stepping\": %u},\n",
           quoted(f.vendor).c_str(), quoted(f.model).c_str(), f.family, f.number, f.stepping);
    printf("  \"features\": {");
    const char* comma = "";
    for (const tools::Feature& feature : tools::kFeatures) {
        printf("%s%s: %s", comma, quoted(feature.name).c_str(), f.features & feature.mask ? "true" : "false");
        comma = ", ";
    }
    printf("},\n  \"slots\": {");
    for (int i = 0; i < qvrSlotCount; i++)
        printf("%s\"%s\": %s", i ? ", " : "", tools::kSlots[i].name, tools::runs(f.features, i) ? "true" : "false");
    printf("},\n");
    const bool loaded = library.error().empty();
    const auto orNull = [loaded](const std::string& text) { return loaded && !text.empty() ? quoted(text) : "null"; };
    printf("  \"library\": {\"path\": %s, \"version\": %s, \"build\": %s, \"error\": %s},\n",
           orNull(library.path()).c_str(), orNull(library.version()).c_str(), orNull(library.buildId()).c_str(),
           loaded ? "null" : quoted(library.error()).c_str());
    const int slot = library.slot();
    printf("  \"slot\": %s, \"slot_by_features\": \"%s\", \"why\": %s, \"note\": %s,\n",
           slot < 0 ? "null" : quoted(slotName(slot)).c_str(), slotName(f.bySource), quoted(reason(f)).c_str(),
           note.empty() ? "null" : quoted(note).c_str());
    printf("  \"caches\": [");
    comma = "";
    for (const Cache& c : f.caches) {
        printf("%s{\"level\": %u, \"kind\": \"%s\", \"bytes\": %llu, \"ways\": %llu, \"line\": %llu}", comma, c.level,
               c.kind, static_cast<unsigned long long>(c.bytes), static_cast<unsigned long long>(c.ways),
               static_cast<unsigned long long>(c.line));
        comma = ", ";
    }
    printf("],\n  \"largest_cache\": %d, \"largest_cache_by_descriptors\": %d,\n", f.largest, f.byDescriptors);
    printf("  \"threads\": {\"budget\": %d, \"processors\": %d, \"openmp_limit\": %d},\n", f.budget, f.processors,
           f.limit);
    printf("  \"versions\": {\"tool\": \"%s\", \"glibc\": %s, \"openmp\": %s}\n}\n", QVR_VERSION,
           quoted(gnu_get_libc_version()).c_str(), quoted(f.openmp).c_str());
}

void usage(FILE* to)
{
    fputs(
        "usage: morvenqvr-info [--json]\n"
        "Prints the processor, its features and caches, the slot that libmorvenqvr takes on it and why, the number of\n"
        "threads that it may use, and versions.\n"
        "  -j, --json     print one JSON object\n  -h, --help     print this\n      --version  print the version\n",
        to);
}

} // namespace

int main(int argc, char** argv)
{
    const option options[] = {{"json", no_argument, nullptr, 'j'},
                              {"help", no_argument, nullptr, 'h'},
                              {"version", no_argument, nullptr, 'V'},
                              {nullptr, 0, nullptr, 0}};
    bool json = false;
    for (int c; (c = getopt_long(argc, argv, "jh", options, nullptr)) != -1;) {
        if (c == 'j') {
            json = true;
        } else if (c == 'h') {
            usage(stdout);
            return 0;
        } else if (c == 'V') {
            puts("morvenqvr-info " QVR_VERSION);
            return 0;
        } else {
            usage(stderr);
            return 2;
        }
    }
    if (optind != argc) {
        usage(stderr);
        return 2;
    }
    Facts facts;
    identify(facts);
    ask(facts);
    const tools::Library library;
    std::string note;
    if (library.error().empty() && library.slot() < 0)
        note = "its dispatchers have a form that this program does not know";
    else if (library.error().empty() && library.slot() != facts.bySource)
        note = std::string("not ") + slotName(facts.bySource) +
               ", which the features give: something answers for the processor, as morvenqvr-slot does";
    (json ? printJson : printText)(facts, library, note);
    return library.error().empty() ? 0 : 1;
}
