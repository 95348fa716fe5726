// The sort of Highway, held to AVX2.
#include <hwy/contrib/sort/vqsort.h>
#include <hwy/targets.h>

#include "bench/peers.h"

namespace bench {

namespace {

const bool held = [] {
    hwy::DisableTargets(HWY_AVX2 - 1);
    return true;
}();

} // namespace

void sortByHighway(float* p, int n)
{
    static hwy::Sorter sorter;
    sorter(p, static_cast<size_t>(n), hwy::SortAscending());
}
void sortByHighway(double* p, int n)
{
    static hwy::Sorter sorter;
    sorter(p, static_cast<size_t>(n), hwy::SortAscending());
}

} // namespace bench
