#include "trial.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace check {
namespace {

std::vector<Case>& registry()
{
    static std::vector<Case> all;
    return all;
}

bool close(double got, double want, Tolerance t)
{
    if (std::isnan(want) || std::isinf(want))
        return std::isnan(want) ? std::isnan(got) : got == want;
    return std::fabs(got - want) <= t.absolute + t.relative * std::fabs(want);
}

} // namespace

Case::Case(const char* n, void (*f)(Trial&)) : name(n), run(f)
{
    registry().push_back(*this);
}

std::vector<Case> cases()
{
    std::vector<Case> all = registry();
    std::sort(all.begin(), all.end(), [](const Case& a, const Case& b) { return strcmp(a.name, b.name) < 0; });
    return all;
}

// FNV-1a of the name.
Trial::Trial(const std::string& name, std::function<void*(const char*)> functions, const std::vector<double>* known)
    : functions_(std::move(functions)), known_(known), seed_(0xCBF29CE484222325)
{
    for (const char c : name)
        seed_ = (seed_ ^ static_cast<unsigned char>(c)) * 0x100000001B3;
}

// SplitMix64, the upper 32 bits: exact in every type.
double Trial::unit()
{
    uint64_t z = seed_ += 0x9E3779B97F4A7C15;
    z = (z ^ z >> 30) * 0xBF58476D1CE4E5B9;
    z = (z ^ z >> 27) * 0x94D049BB133111EB;
    return static_cast<double>((z ^ z >> 31) >> 32) * 0x1p-32;
}

void Trial::give(const char* what, long index, double v, Tolerance t)
{
    const size_t at = given.size();
    given.push_back(v);
    if (known_ == nullptr)
        return;
    const bool there = at < known_->size();
    if (there && close(v, (*known_)[at], t))
        return;
    different++;
    // One line for an array that runs on.
    if (last_ == what && index > 0)
        return;
    last_ = what;
    char line[200];
    char place[32] = "";
    if (index >= 0)
        snprintf(place, sizeof place, "[%ld]", index);
    if (there)
        snprintf(line, sizeof line, "%s%s is %.17g instead of %.17g (allowed: %g)", what, place, v, (*known_)[at],
                 t.absolute + t.relative * std::fabs((*known_)[at]));
    else
        snprintf(line, sizeof line, "%s%s is %.17g where nothing is known", what, place, v);
    differences.push_back(line);
}

} // namespace check
