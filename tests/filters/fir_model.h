// FIR filters from their definition, and the four forms of states under one interface.
#pragma once

#include <algorithm>
#include <cmath>
#include <memory>

#include "filters/fir_state_record.h"
#include "filters/slot_tables.h"
#include "model/filters.h"
#include "support/guarded.h"
#include "support/slots.h"
#include "support/values.h"

namespace fir {

using model::roundedAway16;

struct Form32f {
    using Tap = float;
    using Data = float;
    using State = qvrsFIRState_32f;
    static constexpr uint32_t tag = 0x46493031, multiRateTag = 0x46493033;
    static constexpr bool mixed = false;
    static constexpr const char* name = "32f";
    static constexpr double tolerance = 2e-6; // of a transform, against the largest output
    static constexpr auto& creators = qvrTable_qvrsFIRInitAlloc_32f;
    static constexpr auto& destroyers = qvrTable_qvrsFIRFree_32f;
    static qvrStatus run(int slot, const Data* src, Data* dst, int n, State* s, int = 0)
    {
        return qvrTable_qvrsFIR_32f[slot](src, dst, n, s);
    }
    static constexpr int planFrom(int) { return 64; }
};
struct Form64f {
    using Tap = double;
    using Data = double;
    using State = qvrsFIRState_64f;
    static constexpr uint32_t tag = 0x46493133, multiRateTag = 0x46493135;
    static constexpr bool mixed = false;
    static constexpr const char* name = "64f";
    static constexpr double tolerance = 1e-14;
    static constexpr auto& creators = qvrTable_qvrsFIRInitAlloc_64f;
    static constexpr auto& destroyers = qvrTable_qvrsFIRFree_64f;
    static qvrStatus run(int slot, const Data* src, Data* dst, int n, State* s, int = 0)
    {
        return qvrTable_qvrsFIR_64f[slot](src, dst, n, s);
    }
    static constexpr int planFrom(int slot) { return slot <= slots::m7 ? 32 : 64; }
};
struct Form64f_32f {
    using Tap = double;
    using Data = float;
    using State = qvrsFIRState64f_32f;
    static constexpr uint32_t tag = 0x46493137, multiRateTag = 0x46493139;
    static constexpr bool mixed = true;
    static constexpr const char* name = "64f_32f";
    static constexpr double tolerance = 2e-7;
    static constexpr auto& creators = qvrTable_qvrsFIRInitAlloc64f_32f;
    static constexpr auto& destroyers = qvrTable_qvrsFIRFree64f_32f;
    static qvrStatus run(int slot, const Data* src, Data* dst, int n, State* s, int = 0)
    {
        return qvrTable_qvrsFIR64f_32f[slot](src, dst, n, s);
    }
    static constexpr int planFrom(int slot) { return slot <= slots::m7 ? 32 : 64; }
};
struct Form64f_16s {
    using Tap = double;
    using Data = int16_t;
    using State = qvrsFIRState64f_16s;
    static constexpr uint32_t tag = 0x46493235, multiRateTag = 0x46493237;
    static constexpr bool mixed = true;
    static constexpr const char* name = "64f_16s";
    static constexpr double tolerance = 1; // a sum next to a half may round to either side
    static constexpr auto& creators = qvrTable_qvrsFIRInitAlloc64f_16s;
    static constexpr auto& destroyers = qvrTable_qvrsFIRFree64f_16s;
    static qvrStatus run(int slot, const Data* src, Data* dst, int n, State* s, int scale = 0)
    {
        return qvrTable_qvrsFIR64f_16s_Sfs[slot](src, dst, n, s, scale);
    }
    static constexpr int planFrom(int slot) { return slot <= slots::m7 ? 32 : 64; }
};

template<class Form> struct Release {
    int slot;
    void operator()(typename Form::State* s) const { EXPECT_EQ(Form::destroyers[slot](s), qvrOk); }
};
template<class Form> using State = std::unique_ptr<typename Form::State, Release<Form>>;

template<class Form>
State<Form> create(int slot, const std::vector<typename Form::Tap>& taps, const typename Form::Data* delay = nullptr)
{
    typename Form::State* state = nullptr;
    EXPECT_EQ(Form::creators[slot](&state, taps.data(), static_cast<int>(taps.size()), delay), qvrOk);
    return State<Form>(state, Release<Form>{slot});
}

// Every slot that has the function, with its number.
template<class Form, class Body> void eachSlot(Body&& body)
{
    slots::each(Form::creators, [&](auto, int slot) {
        SCOPED_TRACE(Form::name);
        body(slot);
    });
}

// Small multiples of a power of two, whose products and sums no precision rounds.
template<class T> std::vector<T> exactValues(size_t n, uint32_t seed, int range = 15, double unit = 1)
{
    std::mt19937 engine(seed);
    std::vector<T> v(n);
    for (T& x : v)
        x = static_cast<T>(unit * (static_cast<int>(engine() % (2 * range + 1)) - range));
    return v;
}

// y[n] = sum of taps[k] x[n - k]; `past` is the newest sample first.
template<class Form> struct Model {
    using Tap = typename Form::Tap;
    using Data = typename Form::Data;
    std::vector<Tap> taps;
    std::vector<Data> stream; // oldest first, with the delay line in front

    explicit Model(const std::vector<Tap>& t, const Data* delay = nullptr) : taps(t), stream(t.size())
    {
        for (size_t k = 0; delay && k < t.size(); k++)
            stream[t.size() - 1 - k] = delay[k];
    }
    std::vector<double> run(const Data* x, size_t n)
    {
        std::vector<double> y;
        stream.insert(stream.end(), x, x + n);
        for (size_t i = stream.size() - n; i < stream.size(); i++) {
            double s = 0; // exact data, or compared by a tolerance
            for (size_t k = 0; k < taps.size(); k++)
                s += static_cast<double>(taps[k]) * static_cast<double>(stream[i - k]);
            y.push_back(s);
        }
        return y;
    }
    // The delay line as the accessors give it.
    std::vector<Data> delay() const { return std::vector<Data>(stream.rbegin(), stream.rbegin() + taps.size()); }
};

template<class Form> typename Form::Data delivered(double y, int scale)
{
    if constexpr (std::is_same_v<typename Form::Data, int16_t>)
        return roundedAway16(y, scale);
    else
        return static_cast<typename Form::Data>(y);
}

// The delay line in the state itself, which the 16s form has no accessor for.
template<class Form> void expectDelay(const typename Form::State* s, const Model<Form>& model)
{
    const auto want = model.delay();
    for (size_t k = 0; k < want.size(); k++)
        ASSERT_EQ(static_cast<double>(s->delayStore[s->delayIndex + s->tapsLen - 1 - k]), static_cast<double>(want[k]))
            << "delay " << k;
}

} // namespace fir
