// Statuses in order: each fault alone, and each fault beside every later one.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "frame/types.h"

// `break_it` spoils one argument of a valid call; `status` is what the call must then return.
template<class Args> struct Fault {
    std::string name;
    qvrStatus status;
    std::function<void(Args&)> break_it;
};

// Faults stand in the order in which the function judges its arguments. Faults of the same rank (two null pointers)
// have the same status and may stand in any order among themselves. `unchanged`, if given, tells after each call
// whether the outputs are still as they were.
template<class Args, class Call>
void expectStatusOrder(const Args& valid, const std::vector<Fault<Args>>& faults, Call&& call,
                       const std::function<bool()>& unchanged = {})
{
    for (size_t first = 0; first < faults.size(); first++) {
        for (size_t later = first; later < faults.size(); later++) {
            Args args = valid;
            faults[later].break_it(args);
            faults[first].break_it(args);
            EXPECT_EQ(call(args), faults[first].status) << faults[first].name << " beside " << faults[later].name;
            if (unchanged)
                EXPECT_TRUE(unchanged()) << "written after " << faults[first].name;
        }
    }
    if (faults.size() > 2) {
        Args args = valid;
        for (const auto& fault : faults)
            fault.break_it(args);
        EXPECT_EQ(call(args), faults[0].status) << "all faults together";
    }
}
