// Calls of functions whose arguments are not arrays of one length.
//
// A function here is a specialisation of Shape for its name; every other export gets the usual call of arguments.h.
#pragma once

#include "fuzz/arguments.h"

namespace fuzz {

// One type per export, to specialise on.
#define QVR_SHARED(name) struct name;
#define QVR_OWN(name) QVR_SHARED(name)
#define QVR_PLAIN(name) QVR_SHARED(name)
#include "frame/exports.def"

template<class Name> struct Shape {
    template<class F> static void call(F f, Input& in) { callUsual(f, in); }
};

// Blocks live across calls and are written to their ends.
inline std::vector<std::pair<qvr8u*, int>>& liveBlocks()
{
    static std::vector<std::pair<qvr8u*, int>> blocks;
    return blocks;
}

template<> struct Shape<qvrsMalloc_8u> {
    template<class F> static void call(F f, Input& in)
    {
        const int len = in.oneIn(4) ? in.any<int>() & INT32_MIN : in.range(0, 100000);
        qvr8u* p = f(len);
        if ((len >= 1) != (p != nullptr))
            __builtin_trap();
        if (p) {
            memset(p, 0x77, static_cast<size_t>(len));
            liveBlocks().emplace_back(p, len);
        }
    }
};

template<> struct Shape<qvrsFree> {
    template<class F> static void call(F f, Input&)
    {
        if (liveBlocks().empty())
            return f(nullptr);
        for (int i = 0; i < liveBlocks().back().second; i++)
            if (liveBlocks().back().first[i] != 0x77)
                __builtin_trap();
        f(liveBlocks().back().first);
        liveBlocks().pop_back();
    }
};

template<> struct Shape<qvrsSplitScaled_16s32f_D2L> {
    template<class F> static void call(F f, Input& in)
    {
        const int channels = in.range(1, 12), len = in.range(1, 300);
        const qvr16s* src = in.array<qvr16s>(int64_t{channels} * len);
        std::vector<qvr32f*> rows(static_cast<size_t>(channels));
        for (qvr32f*& row : rows)
            row = in.array<qvr32f>(len);
        if (in.oneIn(20)) {
            rows[static_cast<size_t>(in.range(0, channels - 1))] = nullptr;
            if (f(src, rows.data(), channels, len) != qvrErrNullPointer)
                __builtin_trap();
        } else if (f(src, rows.data(), channels, len) != qvrOk) {
            __builtin_trap();
        }
    }
};

} // namespace fuzz
