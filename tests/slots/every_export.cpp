// Calls every export with random arguments, ordinary and arbitrary, through the dispatchers: on a processor that has
// one slot's level and nothing more, an instruction above it ends the program. What the calls return is judged
// elsewhere, on all slots at the processor's own speed.
#include <cstdio>

#include "calls/random_bytes.h"
#include "calls/shapes.h"
#include "support/slot_list.h"

namespace {

constexpr int kCalls = 30; // of each export

template<class Name, class F> void callAll(F f)
{
    uint64_t random = 1;
    std::vector<uint8_t> data(2000);
    for (int i = 0; i < kCalls; i++) {
        calls::fillRandom(data.data(), data.size(), random);
        calls::Input in(data.data(), data.size(), i % 3 ? calls::Data::ordinary : calls::Data::anything);
        calls::Shape<Name>::call(f, in);
    }
}

} // namespace

int main()
{
    if (slots::simulatedSlot() == nullptr || !slots::canRun(qvrCpuIndex)) {
        std::printf("QVR_EXPECTED_SLOT names another slot than %s\n", slots::kNames[qvrCpuIndex]);
        return 2;
    }
#define QVR_SHARED(name) callAll<calls::name>(&Morven_##name);
#define QVR_OWN(name) QVR_SHARED(name)
#define QVR_PLAIN(name) QVR_SHARED(name)
#include "frame/exports.def"
    return 0;
}
