// Running a case on every slot through the tables of the dispatcher.
#pragma once

#include <gtest/gtest.h>

#include "support/slot_list.h"

namespace slots {

// body(function, slot) for every slot that this processor runs; one body shared by two slots runs once.
template<class F, class Body> void each(F const (&table)[kCount], Body&& body)
{
    for (int slot = 0; slot < kCount; slot++) {
        if (!canRun(slot) || (kShared[slot] != slot && table[slot] == table[kShared[slot]] && canRun(kShared[slot])))
            continue;
        SCOPED_TRACE(std::string("slot ") + kNames[slot]);
        body(table[slot], slot);
        if (testing::Test::HasFatalFailure())
            return;
    }
}

} // namespace slots
