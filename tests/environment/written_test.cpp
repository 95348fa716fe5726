// The page on statuses lists every case of a status of 0 or above with nothing written. Here each export is called with
// random arguments, in every slot: a call that succeeds and leaves all its arrays as they were must be on the list, and
// each entry of the list must come up. Functions that work in place are left out, since there a result can be what was
// there before.
#include <algorithm>
#include <deque>
#include <map>
#include <set>
#include <string>

#include "calls/random_bytes.h"
#include "calls/shapes.h"
#include "support/slots.h"

namespace {

struct Block {
    std::vector<char> bytes;
    bool source = false, output = false;
    bool holds(const void* p) const { return p >= bytes.data() && p < bytes.data() + bytes.size(); }
};
std::deque<Block> blocks;

std::map<std::string, std::set<qvrStatus>> unwritten;
const char* current;

// Marks the block that an argument points into.
template<class T> void mark(T) {}
template<class T> void mark(T* p)
{
    for (Block& b : blocks)
        if (b.holds(p))
            (std::is_const_v<T> ? b.source : b.output) = true;
}

// The function, with the arrays that it only writes full of each of two patterns. A result may look like one of them.
template<auto F> struct Watched;
template<class... A, qvrStatus (*F)(A...)> struct Watched<F> {
    static qvrStatus call(A... arguments)
    {
        for (Block& b : blocks)
            b.source = b.output = false;
        (mark(arguments), ...);
        bool outputs = false, written = false;
        qvrStatus status = qvrOk;
        for (const char pattern : {0x5A, 0x25}) {
            for (Block& b : blocks)
                if (b.output && !b.source) {
                    outputs = true;
                    std::fill(b.bytes.begin(), b.bytes.end(), pattern);
                }
            status = F(arguments...);
            for (const Block& b : blocks)
                written |= b.output && !b.source &&
                           std::any_of(b.bytes.begin(), b.bytes.end(), [=](char c) { return c != pattern; });
            if (!outputs || written || status < 0)
                return status;
        }
        unwritten[current].insert(status);
        return status;
    }
};

struct Export {
    const char* name;
    void (*call)(calls::Input&);
};
template<class Name, auto F> void callWatched(calls::Input& in)
{
    if constexpr (requires { &Watched<F>::call; })
        calls::Shape<Name>::call(&Watched<F>::call, in);
}
const Export kExports[] = {
#define QVR_SHARED(name) {#name, &callWatched<calls::name, &Morven_##name>},
#define QVR_OWN(name) QVR_SHARED(name)
#define QVR_PLAIN(name) QVR_SHARED(name)
#include "frame/exports.def"
};

TEST(Statuses, ListOfNothingWrittenIsComplete)
{
    // Resizing without memory is the one entry that random calls do not meet: nothing_written_test.cpp provokes it.
    const std::set<qvrStatus> clipped = {qvrWarnNothingToDo, qvrWarnRoiOutside};
    const std::set<qvrStatus> refused = {qvrWarnNothingToDo, qvrWarnRoiOutside, qvrWarnNoAntialiasing};
    const std::map<std::string, std::set<qvrStatus>> listed = {
        {"qvrsReplaceC_16u", {qvrOk}},           {"qvrsFindPeaks_32f8u", {qvrOk}},
        {"qvrsIIRGenLowpass_64f", {qvrOk}},      {"qvrsIIRGenHighpass_64f", {qvrOk}},
        {"qvrsSampleDown_16s", {qvrOk}},         {"qvrsSampleDown_32f", {qvrOk}},
        {"qvriCopy_16u_C1MR", {qvrOk}},          {"qvriResizeSqrPixel_8u_C1R", clipped},
        {"qvriResizeSqrPixel_8u_C4R", clipped},  {"qvriResizeSqrPixel_32f_C1R", clipped},
        {"qvriResizeSqrPixel_64f_C1R", clipped}, {"qvriResize_8u_C1R", refused},
        {"qvriResize_8u_C4R", refused},          {"qvriResize_32f_C1R", refused},
    };
    const int32_t chosen = qvrCpuIndex;
    uint64_t random = 1;
    std::vector<uint8_t> bytes(3000);
    for (int slot = 0; slot < slots::kCount; slot++) {
        if (!slots::canRun(slot))
            continue;
        qvrCpuIndex = slot;
        for (const Export& e : kExports) {
            const std::string name = e.name;
            if (name.ends_with("_I") || name.ends_with("ISfs") || name.ends_with("IRSfs"))
                continue;
            current = e.name;
            for (int k = 0; k < 200; k++) {
                calls::fillRandom(bytes.data(), bytes.size(), random);
                blocks.clear();
                calls::Input in(bytes.data(), bytes.size(), k % 3 ? calls::Data::anything : calls::Data::hostile,
                                [](size_t n, size_t offset) {
                                    blocks.push_back({std::vector<char>(n + offset + 1)});
                                    return blocks.back().bytes.data() + offset;
                                });
                in.inPlace = false;
                e.call(in);
            }
        }
    }
    qvrCpuIndex = chosen;
    EXPECT_EQ(unwritten, listed);
}

} // namespace
