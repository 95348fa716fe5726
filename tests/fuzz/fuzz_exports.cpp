// Calls a random export in a random slot with random arguments: nothing may be read or written outside the arrays,
// nothing undefined may happen, and a call with a null pointer or a length below 1 must return an error.
#include "fuzz/shapes.h"
#include "support/slot_list.h"

namespace {

using Call = void (*)(fuzz::Input&);

struct Export {
    const char* name;
    Call call;
};

const Export kExports[] = {
#define QVR_SHARED(name) {#name, [](fuzz::Input& in) { fuzz::Shape<fuzz::name>::call(&Morven_##name, in); }},
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

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    fuzz::Input in(data, size);
    const auto& exports = chosenExports();
    const int which = in.range(0, static_cast<int>(exports.size()) - 1);
    int slot = in.range(0, 6);
    while (!slots::canRun(slot))
        slot--;
    // One slot for all that a case calls: states do not travel between slots.
    qvrCpuIndex = slot;
    exports[static_cast<size_t>(which)]->call(in);
    return 0;
}
