// morvenqvr-check: calls every function of the library on this machine and compares with known answers. The same
// program with the models in the place of the library writes these down, when the tool is built.
#include <getopt.h>

#include <cstdio>
#include <cstring>
#include <set>
#include <string>

#include "trial.h"

namespace {

#ifdef QVR_REFERENCE

int run(int argc, char** argv)
{
    FILE* file = argc == 2 ? fopen(argv[1], "wb") : nullptr;
    if (file == nullptr)
        return 2;
    for (const check::Case& c : check::cases()) {
        check::Trial t(c.name, {}, nullptr);
        c.run(t);
        const uint64_t count = t.given.size();
        if (fwrite(&count, sizeof count, 1, file) != 1 || fwrite(t.given.data(), sizeof(double), count, file) != count)
            return 1;
    }
    return fclose(file) == 0 ? 0 : 1;
}

#else

} // namespace

#include "../library.h"
#include "../slots.h"

extern "C" const uint64_t qvrKnownAnswers[]; // count, values, count, values ..

namespace {

constexpr const char* kExports[] = {
#define QVR_SHARED(name) #name,
#define QVR_OWN(name) #name,
#define QVR_PLAIN(name) #name,
#include "frame/exports.def"
};

void usage(FILE* to)
{
    fputs("usage: morvenqvr-check [-v] [-l FILE]\n"
          "Calls every function of libmorvenqvr on this machine, compares with known answers and says what differs.\n"
          "  -v, --verbose       name each case\n"
          "  -l, --library FILE  check this shared object\n"
          "  -h, --help          print this\n"
          "      --version       print the version\n",
          to);
}

int run(int argc, char** argv)
{
    const option options[] = {{"verbose", no_argument, nullptr, 'v'},
                              {"library", required_argument, nullptr, 'l'},
                              {"help", no_argument, nullptr, 'h'},
                              {"version", no_argument, nullptr, 'V'},
                              {nullptr, 0, nullptr, 0}};
    bool verbose = false;
    const char* path = nullptr;
    for (int c; (c = getopt_long(argc, argv, "vl:h", options, nullptr)) != -1;) {
        if (c == 'v') {
            verbose = true;
        } else if (c == 'l') {
            path = optarg;
        } else if (c == 'h') {
            usage(stdout);
            return 0;
        } else if (c == 'V') {
            puts("morvenqvr-check " QVR_VERSION);
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
    tools::Library library(path);
    for (const char* name : kExports)
        if (library.error().empty())
            library.function(name);
    if (!library.error().empty()) {
        fprintf(stderr, "morvenqvr-check: %s\n", library.error().c_str());
        return 2;
    }
    std::set<std::string> called;
    const auto function = [&](const char* name) {
        called.insert(name);
        return library.function(name);
    };
    size_t differing = 0;
    const uint64_t* known = qvrKnownAnswers;
    for (const check::Case& c : check::cases()) {
        const uint64_t count = *known++;
        std::vector<double> answers(count);
        memcpy(answers.data(), known, count * sizeof(double));
        known += count;
        check::Trial t(c.name, function, &answers);
        c.run(t);
        if (t.given.size() < count)
            t.differences.push_back("fewer values than are known");
        differing += !t.differences.empty();
        if (verbose || !t.differences.empty())
            printf("%s: %zu values, %zu of them differ\n", c.name, t.given.size(), t.different);
        for (const std::string& line : t.differences)
            printf("    %s\n", line.c_str());
    }
    for (const char* name : kExports)
        if (called.count(name) == 0) {
            printf("%s: no case calls it\n", name);
            differing++;
        }
    const int slot = library.slot();
    printf("%s, slot %s: %zu functions in %zu cases, %zu differ\n", library.path().c_str(),
           slot < 0 ? "unknown" : tools::kSlots[slot].name, called.size(), check::cases().size(), differing);
    return differing != 0;
}

#endif

} // namespace

int main(int argc, char** argv)
{
    return run(argc, argv);
}
