// The benchmark machinery: rows of cases, each case ours and its peers doing the same work on the same arrays.
//
// A row belongs to one export and has a builder that adds cases; a case is built just before it is timed and its arrays
// are released after it. A builder for another kind of work (a plan, a filter with a state, an image) adds cases with
// labels of its own, keeps what it set up in the closures, and hands what must be released to Case::atEnd.
#ifndef QVR_BENCH_BENCH_H
#define QVR_BENCH_BENCH_H

#include <stdint.h>
#include <time.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "frame/processor.h"
#include "frame/slots.h"
#include "morvenqvr.h"

namespace bench {

// The slots in table order.
constexpr const char* kSlots[] = {
#define QVR_SLOT(prefix, ...) #prefix,
#include "frame/slots.def"
};

inline double now()
{
    timespec t;
    clock_gettime(CLOCK_MONOTONIC, &t);
    return static_cast<double>(t.tv_sec) + 1e-9 * static_cast<double>(t.tv_nsec);
}

// Arithmetic that can bound a function besides its memory traffic.
enum class Unit { none, add32, divide32, root32, divide64 };

// Work per element: bytes read and written, and operations of the unit.
struct Work {
    double read = 0, written = 0;
    bool inPlace = false;
    Unit unit = Unit::none;
    double operations = 0;
};

// What an array is filled with. In-place rows pick data that repeated application leaves where it is, away from
// denormals and infinities.
enum class Data {
    mixed,    // +-[1, 2)
    positive, // [1, 2)
    tiny,     // 2^-70: added to `mixed` it changes nothing, in either precision
    signs,    // +-1
    samples,  // +-30000 with a fraction; integers over their whole range
    fraction, // (-1, 1)
    angles,   // +-10
};

struct Competitor {
    std::string name;
    std::function<double(int64_t)> time; // seconds that so many runs take
};

struct Array {
    void* data;
    int64_t count;
    int elementKind; // sizeof, negative for floating point
    Data filling;
    bool output;
};

struct Case {
    std::string label;
    double elements = 0; // units of work in one run
    double points = 0;   // complex points that they belong to, of a transform: the report then gives cycles a point
    Work work;
    double tolerance = 1e-5;             // to which ours and the peers agree, absolute below 1 and relative above
    std::vector<Competitor> competitors; // the first one is ours
    std::vector<Array> arrays;
    std::vector<std::function<void()>> ends;

    // Every competitor is called through a pointer in its closure, as through the linkage table of a shared object.
    template<class F> void add(const char* name, F run)
    {
        competitors.push_back({name, [run](int64_t runs) {
                                   const double start = now();
                                   for (int64_t i = 0; i < runs; i++) {
                                       run();
                                       __asm__ volatile("" : : : "memory");
                                   }
                                   return now() - start;
                               }});
    }
    template<class F> void ours(F run) { add("ours", run); }
    template<class F> void peer(const char* name, F run) { add(name, run); }
    void atEnd(std::function<void()> end) { ends.push_back(std::move(end)); }

    // An array on a 64-byte boundary plus `offset` bytes; released with the case. An output is compared by the check.
    template<class T> T* array(int64_t count, Data filling, bool output = false, int offset = 0)
    {
        constexpr bool isFloat = T(0.5) != T(0);
        void* p = allocate(count * static_cast<int64_t>(sizeof(T)), offset);
        arrays.push_back(
            {p, count, isFloat ? -static_cast<int>(sizeof(T)) : static_cast<int>(sizeof(T)), filling, output});
        fill(arrays.back());
        return static_cast<T*>(p);
    }
    int64_t footprint() const; // bytes of all arrays

    void* allocate(int64_t bytes, int offset);
    static void fill(const Array& array);
    void release();
};

// Adds a case by building it: sink(label, build). The sink times it at once or skips it.
struct Sink {
    std::function<void(const std::string& label, const std::function<void(Case&)>& build)> add;
    bool memory; // whether cases that exceed the caches are wanted
};

struct Row {
    std::string name;    // the export
    std::string variant; // empty, or what tells this row from others of the export
    std::string family;  // the folder of the function
    std::string group;   // its group in the header
    std::function<void(const Sink&)> build;
};

// All rows, in the order of registration.
std::vector<Row>& rows();
bool addRow(Row row);

// ---- Running --------------------------------------------------------------------------------------------------------

struct Options {
    std::string only; // family, empty for all
    std::string name; // part of an export's name, empty for all
    std::string json; // output file, empty for none
    int slot = -1;    // -1: as the machine chose
    int core = -1;    // -1: the last ones allowed
    int cores = 1;
    bool quick = false; // fewer rounds
    bool memory = true; // cases beyond the caches
    bool check = false, list = false;
};

enum Level { levelL1, levelL2, levelMemory, levelCount };
extern const char* const kLevelNames[];

// The smallest level that holds so many bytes.
Level levelOf(int64_t bytes);

struct Timing {
    std::string name;
    double min, median; // ns per run
};

struct Result {
    std::string name, variant, family, group, label;
    Level level;
    double elements, points;
    Work work;
    std::vector<Timing> timings; // ours first
    int best = 0;                // the best peer's place in timings, 0 without peers
    double ratio = 0;            // minimum of ours / minimum of the best peer
    double ratioMedian = 0;      // median over the rounds of ours / best peer
    double share = 0;            // limit's time / ours, 0 where no limit is known
    std::string limitedBy;       // "memory" or a unit
};

// Times the competitors in turn, round by round. Sets timings, best and the ratios.
void measure(Case& c, double seconds, Result& result);

} // namespace bench

#endif
