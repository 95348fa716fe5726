// With the answers that morvenqvr-slot gives, identification takes the slot that was asked for, on any processor that
// has it.
#include "tools/mask.h"

#include <gtest/gtest.h>

#include <random>

#include "support/machine.h"

namespace {

Machine* machine;
int asked;

// The machine's own answers, altered as the tool does.
void altered(uint32_t leaf, uint32_t subleaf, uint32_t regs[4])
{
    const Machine::Regs& r = machine->leaf(leaf, subleaf);
    regs[0] = r.eax;
    regs[1] = r.ebx;
    regs[2] = r.ecx;
    regs[3] = r.edx;
    tools::answerFor(asked, leaf, subleaf, regs);
}

void expectSlots(Machine& m)
{
    machine = &m;
    m.forget();
    uint64_t own = 0;
    ASSERT_EQ(qvrGetFeatures(&own, nullptr), qvrOk);
    const auto access = qvrProcessor;
    qvrProcessor.cpuid = altered;
    for (asked = 0; asked < qvrSlotCount; asked++) {
        if (!tools::runs(own, asked))
            continue;
        SCOPED_TRACE(tools::kSlots[asked].name);
        m.forget();
        qvrInitAuto();
        EXPECT_EQ(qvrCpuIndex, asked);
        EXPECT_EQ(qvrFeatureMask & ~own, 0u);
    }
    qvrProcessor = access;
}

TEST(SlotTool, EveryFeature)
{
    Machine m;
    m.leaf(1).edx = ~0u;
    m.leaf(1).ecx = ~0u;
    m.leaf(7).ebx = ~0u;
    m.leaf(0x80000001).ecx = ~0u;
    expectSlots(m);
}

// What a slot needs and what the next one has are there together, whatever else is.
TEST(SlotTool, AnyFeaturesOverThoseOfASlot)
{
    std::mt19937 random(1);
    for (int i = 0; i < 2000; i++) {
        Machine m;
        m.leaf(1).edx = random() | 0x6800000;
        m.leaf(1).ecx = random() | random();
        m.leaf(7).ebx = random() | random();
        m.leaf(0x80000001).ecx = static_cast<uint32_t>(random());
        expectSlots(m);
    }
}

// Everything but the bits of features: families, caches, the other half of leaf 7.
TEST(SlotTool, LeavesOtherAnswersAlone)
{
    for (asked = 0; asked < qvrSlotCount; asked++)
        for (const uint32_t leaf : {0u, 1u, 2u, 4u, 7u, 0x80000001u})
            for (const uint32_t subleaf : {0u, 1u}) {
                uint32_t regs[4] = {~0u, ~0u, ~0u, ~0u};
                tools::answerFor(asked, leaf, subleaf, regs);
                EXPECT_EQ(regs[0], ~0u);
                EXPECT_EQ(regs[3], ~0u);
                if (leaf != 1)
                    EXPECT_EQ(regs[2], ~0u);
                if (leaf != 7 || subleaf != 0)
                    EXPECT_EQ(regs[1], ~0u);
            }
}

} // namespace
