// Writes docs/fft-plans.md to standard output: the passes of each order on each slot, as the objects hold them.
#include <cstdio>
#include <string>

#include <gtest/gtest.h>

#include "fourier/fft_slots.h"

namespace {

using namespace fft;

// The first pass' radix; then the stages of each sweep, joined by a point; a bar between levels.
std::string text(const FftPlan& plan)
{
    std::string s = std::to_string(1 << plan.firstOrder);
    for (int i = 0; i < plan.levels; i++) {
        if (i > 0)
            s += i > plan.row ? " \\|\\|" : " \\|";
        for (int j = plan.level[i].sweep; j < plan.level[i].sweep + plan.level[i].sweeps; j++)
            for (int stage = 0; stage < plan.sweep[j].stages; stage++)
                s += (stage == 0 ? " " : "·") + std::to_string(1 << plan.sweep[j].radixOrder[stage]);
    }
    return s;
}

template<class T> void table(const char* title, int largest)
{
    std::printf("## %s\n\n| order |", title);
    for (int slot = 1; slot < slots::kCount; slot++)
        std::printf(" %s |", slots::kNames[slot]);
    std::printf("\n|--:|");
    for (int slot = 1; slot < slots::kCount; slot++)
        std::printf("---|");
    for (int order = 7; order <= largest; order++) {
        std::printf("\n| %d |", order);
        for (int slot = 1; slot < slots::kCount; slot++) {
            Object<T> object(slot, order, qvrFftNoDiv);
            const FftPlan* plan = planOf(slot, object);
            if (plan == nullptr)
                std::printf(" straight |");
            else
                std::printf(" %s%s |", plan->order < order - 1 ? "8 columns: " : "", text(*plan).c_str());
        }
    }
    std::printf("\n\n");
}

} // namespace

int main()
{
    std::printf(
        "# Plans of the real FFT\n\n"
        "The complex transform of N/2 = 2^(order - 1) points. First stands the radix of the first pass, then those of "
        "the\n"
        "stages; stages joined by a point share a sweep over memory. Left of a bar everything happens in runs of 2048 "
        "points\n"
        "at most, between bars in rows, behind a double bar across rows: from there on the transform is split. Orders\n"
        "below are straight-line code, and slot mx has the first generation ([fft.md](fft.md)).\n\n"
        "Made by the program fourier_plans of the tests: `build/release/tests/fourier/fourier_plans > "
        "docs/fft-plans.md`.\n"
        "A test compares.\n\n");
    table<float>("Single precision", 22);
    table<double>("Double precision", 21);
    return 0;
}
