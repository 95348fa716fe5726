// Calls random exports in random slots with random arguments: nothing may be read or written outside the arrays,
// nothing undefined may happen, and a call with a null pointer or a length below 1 must return an error.
//
// A unit of the fuzzer is cut into equal slices, one a call: what the fuzzer spends on a unit exceeds most calls.
#include <random>

#include "calls/random_bytes.h"
#include "calls/shapes.h"
#include "support/slot_list.h"

namespace {

using Call = void (*)(calls::Input&);

struct Export {
    const char* name;
    Call call;
};

const Export kExports[] = {
#define QVR_SHARED(name) {#name, [](calls::Input& in) { calls::Shape<calls::name>::call(&Morven_##name, in); }},
#define QVR_OWN(name) QVR_SHARED(name)
#define QVR_PLAIN(name) QVR_SHARED(name)
#include "frame/exports.def"
};

// QVR_FUZZ_ONLY=substring restricts a run to the exports whose name holds it.
const std::vector<const Export*>& chosenExports()
{
    static const std::vector<const Export*> chosen = [] {
        std::vector<const Export*> v;
        const char* only = getenv("QVR_FUZZ_ONLY");
        for (const Export& e : kExports)
            if (!only || strstr(e.name, only))
                v.push_back(&e);
        return v;
    }();
    return chosen;
}

constexpr size_t kCalls = 10; // of a unit

void callOne(const uint8_t* data, size_t size)
{
    calls::Input in(data, size);
    const auto& exports = chosenExports();
    const int which = in.range(0, static_cast<int>(exports.size()) - 1);
    int slot = in.range(0, 6);
    while (!slots::canRun(slot))
        slot--;
    // One slot for all that a case calls: states do not travel between slots.
    qvrCpuIndex = slot;
    exports[static_cast<size_t>(which)]->call(in);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    for (size_t i = 0; i < kCalls; i++) {
        const size_t from = size * i / kCalls, to = size * (i + 1) / kCalls;
        callOne(data + from, to - from);
    }
    return 0;
}

extern "C" size_t LLVMFuzzerMutate(uint8_t* data, size_t size, size_t maxSize);

// Short units leave most arguments at their least value: they, and one unit in four, are drawn afresh at full size.
extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t maxSize, unsigned seed)
{
    std::mt19937 engine(seed);
    if (2 * size >= maxSize && engine() % 4)
        return LLVMFuzzerMutate(data, size, maxSize);
    uint64_t random = seed;
    calls::fillRandom(data, maxSize, random);
    return maxSize;
}
