// Rows of the allocator: a block had and given back.
#include <stdlib.h>

#include "bench/bench.h"
#include "bench/peers.h"

using namespace bench;

namespace {

void pair(const Sink& sink)
{
    for (const int bytes : {100, 4096, 65536}) {
        sink.add(std::to_string(bytes) + " bytes", [=](Case& c) {
            c.elements = 1;
            c.ours([=] { Morven_qvrsFree(Morven_qvrsMalloc_8u(bytes)); });
            if (!ownSlot())
                return;
            c.peer("aligned_alloc", [=] {
                void* p = aligned_alloc(64, static_cast<size_t>(bytes + 63) / 64 * 64);
                __asm__ volatile("" : "+r"(p));
                free(p);
            });
        });
    }
}

const bool mallocRow = addRow({"qvrsMalloc_8u", "with qvrsFree", "frame", "memory", pair});
const bool freeRow = addRow({"qvrsFree", "with qvrsMalloc_8u", "frame", "memory", [](const Sink&) {}});

} // namespace
