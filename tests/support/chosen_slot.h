// The whole library as it is on one processor after the other: the exported functions, called as a user calls them.
#pragma once

#include <gtest/gtest.h>

#include "support/slots.h"

namespace slots {

// body() with each slot that this processor runs in force.
template<class Body> void eachChosen(Body&& body)
{
    const int32_t chosen = qvrCpuIndex;
    for (int slot = 0; slot < kCount && !testing::Test::HasFatalFailure(); slot++)
        if (canRun(slot)) {
            SCOPED_TRACE(std::string("slot ") + kNames[slot]);
            qvrCpuIndex = slot;
            body();
        }
    qvrCpuIndex = chosen;
}

} // namespace slots
