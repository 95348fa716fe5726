// The sweep that every reduction goes through: lengths, alignments, arrays between unreadable pages.
#pragma once

#include "support/elementwise.h"

// check(array, values) for arrays of many lengths and places, which hold `values`.
template<class T, class Make, class Check>
void sweepArrays(Make&& make, Check&& check, const std::vector<int>& moreLengths = {}, int least = 1)
{
    uint32_t seed = 1;
    const auto run = [&](int n, bool atEnd, size_t offset) {
        const std::vector<T> values = make(static_cast<size_t>(n), seed++);
        const size_t bytes = values.size() * sizeof(T);
        Guarded& buffer = pooledGuarded(0, bytes + 128);
        T* p = atEnd ? buffer.atEnd<T>(bytes, offset) : buffer.atFront<T>(bytes, offset);
        memcpy(static_cast<void*>(p), values.data(), bytes);
        SCOPED_TRACE(testing::Message() << "n " << n << (atEnd ? " at end" : " at front") << " +" << offset);
        check(static_cast<const T*>(p), values);
        EXPECT_TRUE(buffer.intact());
        EXPECT_TRUE(memcmp(p, values.data(), bytes) == 0);
    };
    for (int n : elementwise_detail::sweepLengths(moreLengths)) {
        if (n < least)
            continue;
        run(n, true, 0);
        run(n, false, 0);
        if (testing::Test::HasFailure())
            return;
    }
    for (int n : {3, 7, 8, 15, 17, 33, 64, 131, 300})
        for (size_t offset = 0; offset < 64; offset++)
            run(n, offset % 2 == 0, offset);
}
