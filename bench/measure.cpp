// Arrays of a case, and the timing loop.
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>

#include "bench/bench.h"

namespace bench {

namespace {

constexpr double kSample = 4e-4; // seconds of one competitor in one round
constexpr int kMinRounds = 7;
constexpr int64_t kHugePage = 2 << 20;

int64_t cacheSize(int name, int64_t otherwise)
{
    const int64_t size = sysconf(name);
    return size > 0 ? size : otherwise;
}

double median(std::vector<double> v)
{
    std::sort(v.begin(), v.end());
    return v.size() % 2 ? v[v.size() / 2] : (v[v.size() / 2 - 1] + v[v.size() / 2]) / 2;
}

// Runs that fill one sample.
int64_t calibrate(const Competitor& competitor)
{
    competitor.time(1);
    for (int64_t runs = 1;; runs *= 2) {
        const double t = competitor.time(runs);
        if (t >= kSample / 4)
            return std::max<int64_t>(1, static_cast<int64_t>(static_cast<double>(runs) * kSample / t));
    }
}

double value(Data filling, uint32_t random)
{
    const double unit = random / 4294967296.0; // [0, 1)
    const double sign = (random & 1) ? 1 : -1;
    switch (filling) {
    case Data::mixed:
        return sign * (1 + unit);
    case Data::positive:
        return 1 + unit;
    case Data::tiny:
        return 0x1p-70;
    case Data::signs:
        return sign;
    case Data::samples:
        return 60000 * unit - 30000;
    case Data::fraction:
        return 1.9999 * unit - 0.9999;
    case Data::angles:
        return 20 * unit - 10;
    }
    return 0;
}

template<class T> void fillFloats(T* p, int64_t count, Data filling)
{
    uint32_t state = 1;
    for (int64_t i = 0; i < count; i++) {
        state = state * 1664525 + 1013904223; // a full-period generator; its low bits are weak, so the middle is taken
        p[i] = static_cast<T>(value(filling, state ^ state >> 15));
    }
}

} // namespace

const char* const kLevelNames[] = {"L1", "L2", "memory"};

Level levelOf(int64_t bytes)
{
    if (bytes <= cacheSize(_SC_LEVEL1_DCACHE_SIZE, 32 << 10))
        return levelL1;
    return bytes <= cacheSize(_SC_LEVEL2_CACHE_SIZE, 256 << 10) ? levelL2 : levelMemory;
}

std::vector<Row>& rows()
{
    static std::vector<Row> all;
    return all;
}

bool addRow(Row row)
{
    rows().push_back(std::move(row));
    return true;
}

// Large arrays sit on huge pages where the system gives them, so that address translation costs every competitor the
// same from run to run.
void* Case::allocate(int64_t bytes, int offset)
{
    const int64_t boundary = bytes >= kHugePage ? kHugePage : 4096;
    const int64_t size = (bytes + offset + boundary - 1) / boundary * boundary;
    void* block = aligned_alloc(static_cast<size_t>(boundary), static_cast<size_t>(size));
    if (block == nullptr)
        abort();
    if (boundary == kHugePage)
        madvise(block, static_cast<size_t>(size), MADV_HUGEPAGE);
    ends.push_back([block] { free(block); });
    return static_cast<char*>(block) + offset;
}

void Case::fill(const Array& array)
{
    if (array.elementKind == -4) {
        fillFloats(static_cast<float*>(array.data), array.count, array.filling);
    } else if (array.elementKind == -8) {
        fillFloats(static_cast<double*>(array.data), array.count, array.filling);
    } else {
        char* p = static_cast<char*>(array.data);
        uint32_t state = 1;
        for (int64_t i = 0; i < array.count * array.elementKind; i++) {
            state = state * 1664525 + 1013904223;
            p[i] = static_cast<char>(state >> 24);
        }
    }
}

int64_t Case::footprint() const
{
    int64_t bytes = 0;
    for (const Array& array : arrays)
        bytes += array.count * abs(array.elementKind);
    return bytes;
}

void Case::release()
{
    for (auto end = ends.rbegin(); end != ends.rend(); ++end)
        (*end)();
    ends.clear();
}

void measure(Case& c, double seconds, Result& result)
{
    const size_t n = c.competitors.size();
    std::vector<int64_t> runs(n);
    std::vector<std::vector<double>> times(n);
    for (size_t k = 0; k < n; k++)
        runs[k] = calibrate(c.competitors[k]);
    const double start = now();
    for (size_t round = 0; round < kMinRounds || now() - start < seconds; round++) {
        for (size_t j = 0; j < n; j++) {
            const size_t k = (j + round) % n; // nobody always comes behind the same other
            times[k].push_back(c.competitors[k].time(runs[k]) / static_cast<double>(runs[k]) * 1e9);
        }
    }
    result.timings.clear();
    for (size_t k = 0; k < n; k++)
        result.timings.push_back(
            {c.competitors[k].name, *std::min_element(times[k].begin(), times[k].end()), median(times[k])});
    result.best = 0;
    for (size_t k = 1; k < n; k++)
        if (result.best == 0 || result.timings[k].min < result.timings[static_cast<size_t>(result.best)].min)
            result.best = static_cast<int>(k);
    if (result.best == 0)
        return;
    const size_t best = static_cast<size_t>(result.best);
    result.ratio = result.timings[0].min / result.timings[best].min;
    std::vector<double> ratios;
    for (size_t round = 0; round < times[0].size(); round++)
        ratios.push_back(times[0][round] / times[best][round]);
    result.ratioMedian = median(ratios);
}

} // namespace bench
