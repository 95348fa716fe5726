#include "bench/check.h"

#include <math.h>
#include <stdio.h>
#include <string.h>

#include <set>

#include "bench/peers.h"

namespace bench {

namespace {

constexpr const char* kExports[] = {
#define QVR_SHARED(name) #name,
#define QVR_OWN(name) #name,
#define QVR_PLAIN(name) #name,
#include "frame/exports.def"
};

double elementOf(const Array& array, const std::vector<char>& bytes, int64_t i)
{
    const char* p = bytes.data() + i * abs(array.elementKind);
    const auto as = [p](auto zero) {
        memcpy(&zero, p, sizeof zero);
        return static_cast<double>(zero);
    };
    switch (array.elementKind) {
    case -4:
        return as(0.0f);
    case -8:
        return as(0.0);
    case 2:
        return as(int16_t{0});
    case 4:
        return as(int32_t{0});
    default:
        return as(uint8_t{0});
    }
}

// The outputs after one run on fresh arrays.
std::vector<std::vector<char>> outputsOf(Case& c, const Competitor& competitor)
{
    for (const Array& array : c.arrays)
        Case::fill(array);
    competitor.time(1);
    std::vector<std::vector<char>> outputs;
    for (const Array& array : c.arrays)
        if (array.output) {
            const char* p = static_cast<const char*>(array.data);
            outputs.emplace_back(p, p + array.count * abs(array.elementKind));
        }
    return outputs;
}

// Element that differs by more than the tolerance, or -1. A peer may round the last integer the other way.
int64_t firstDifference(const Case& c, const Array& array, const std::vector<char>& ours,
                        const std::vector<char>& theirs)
{
    for (int64_t i = 0; i < array.count; i++) {
        const double a = elementOf(array, ours, i), b = elementOf(array, theirs, i);
        const double allowed = array.elementKind > 0 ? 1 : c.tolerance * fmax(1, fabs(a));
        if (!(fabs(a - b) <= allowed))
            return i;
    }
    return -1;
}

int compare(const Row& row, Case& c)
{
    int faults = 0;
    const auto ours = outputsOf(c, c.competitors[0]);
    for (size_t k = 1; k < c.competitors.size(); k++) {
        const auto theirs = outputsOf(c, c.competitors[k]);
        size_t output = 0;
        for (const Array& array : c.arrays) {
            if (!array.output)
                continue;
            const int64_t at = firstDifference(c, array, ours[output], theirs[output]);
            if (at >= 0) {
                printf("%s %s, %s: element %lld is %.9g, by %s %.9g\n", row.name.c_str(), row.variant.c_str(),
                       c.label.c_str(), static_cast<long long>(at), elementOf(array, ours[output], at),
                       c.competitors[k].name.c_str(), elementOf(array, theirs[output], at));
                faults++;
            }
            output++;
        }
    }
    return faults;
}

} // namespace

bool wanted(const Options& options, const Row& row)
{
    return (options.only.empty() || options.only == row.family) && row.name.find(options.name) != std::string::npos;
}

int checkCoverage()
{
    int faults = 0;
    std::set<std::string> exports(std::begin(kExports), std::end(kExports)), covered;
    for (const Row& row : rows()) {
        covered.insert(row.name);
        if (exports.count(row.name) == 0)
            faults++, printf("a row names %s, which is no export\n", row.name.c_str());
    }
    for (const std::string& name : exports)
        if (covered.count(name) == 0)
            faults++, printf("%s has no row\n", name.c_str());
    visitPeerFunctions([&](const char* peer, const char* name) {
        if (exports.count(std::string(name, strcspn(name, "/"))) == 0)
            faults++, printf("%s: a function for %s, which is no export\n", peer, name);
    });
    return faults;
}

int checkPeersAgree(const Options& options)
{
    int faults = 0;
    for (const Row& row : rows()) {
        if (!wanted(options, row))
            continue;
        row.build({[&](const std::string& label, const std::function<void(Case&)>& build) {
                       Case c;
                       c.label = label;
                       build(c);
                       faults += compare(row, c);
                       c.release();
                   },
                   false});
    }
    return faults;
}

} // namespace bench
