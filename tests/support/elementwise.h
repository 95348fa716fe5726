// The sweep that every element-wise function goes through, on every slot:
// lengths 1..70 and around thresholds, every alignment of sources and destination, arrays between unreadable pages,
// sources that are the destination, special values, and poison round the output.
#pragma once

#include <functional>
#include <tuple>

#include "support/guarded.h"
#include "support/slots.h"
#include "support/values.h"

// A function under test with sources of types S... and one destination of type D.
template<class D, class... S> struct Elementwise {
    std::function<qvrStatus(const S*..., D*, int)> call;
    std::function<D(S...)> model;
    std::function<qvrStatus(const std::vector<S>&...)> status = [](const std::vector<S>&...) { return qvrOk; };
    // Exact bits also for NaN results.
    bool exactNan = false;
    std::vector<int> lengths = {};
};

// A model of whole arrays on single elements: what it writes, from its sources and, of an in-place form, from what was
// there before.
template<class S1, class S2, class D> auto element(qvrStatus (*model)(const S1*, const S2*, D*, int))
{
    return [model](S1 x, S2 y) {
        D d{};
        model(&x, &y, &d, 1);
        return d;
    };
}
template<class S, class D> struct ElementModel {
    qvrStatus (*model)(const S*, D*, int);
    D operator()(S x, D before = D{}) const
    {
        model(&x, &before, 1);
        return before;
    }
};
template<class S, class D> ElementModel<S, D> element(qvrStatus (*model)(const S*, D*, int))
{
    return {model};
}
template<class T> auto element(qvrStatus (*model)(T*, int))
{
    return [model](T x) {
        model(&x, 1);
        return x;
    };
}

namespace elementwise_detail {

inline std::vector<int> sweepLengths(const std::vector<int>& more)
{
    std::vector<int> v;
    for (int n = 1; n <= 70; n++)
        v.push_back(n);
    for (int n : {95, 96, 97, 127, 128, 129, 130, 255, 256, 257, 260, 511, 512, 513, 1000, 1023, 1025})
        v.push_back(n);
    v.insert(v.end(), more.begin(), more.end());
    return v;
}

template<class D> bool matches(D got, D want, bool exactNan)
{
    return exactNan ? memcmp(&got, &want, sizeof got) == 0 : sameValue(got, want);
}

} // namespace elementwise_detail

// One call with the given placement. `alias` is the source (by index) that is also the destination, or -1.
// Offsets are bytes: from the unreadable page behind when `atEnd`, else from the one in front.
template<class D, class... S>
void checkCall(const Elementwise<D, S...>& f, const std::vector<S>&... in, bool atEnd, size_t srcOffset,
               size_t dstOffset, int alias)
{
    const size_t n = std::get<0>(std::tie(in...)).size();
    Guarded& dstBuffer = pooledGuarded(0, n * sizeof(D) + 128);
    std::vector<Guarded*> srcBuffers;
    D* dst = atEnd ? dstBuffer.atEnd<D>(n * sizeof(D), dstOffset) : dstBuffer.atFront<D>(n * sizeof(D), dstOffset);
    int index = 0;
    const auto place = [&](const auto& values) {
        using T = std::decay_t<decltype(values[0])>;
        const int me = index++;
        const size_t bytes = n * sizeof(T);
        if constexpr (std::is_same_v<T, D>) {
            if (me == alias) {
                memcpy(static_cast<void*>(dst), values.data(), bytes);
                return static_cast<const T*>(dst);
            }
        }
        srcBuffers.push_back(&pooledGuarded(static_cast<size_t>(me) + 1, bytes + 128));
        T* p = atEnd ? srcBuffers.back()->atEnd<T>(bytes, srcOffset) : srcBuffers.back()->atFront<T>(bytes, srcOffset);
        memcpy(static_cast<void*>(p), values.data(), bytes);
        return static_cast<const T*>(p);
    };
    std::tuple<const S*...> sources{place(in)...};
    const qvrStatus status = std::apply([&](auto... p) { return f.call(p..., dst, static_cast<int>(n)); }, sources);
    const auto where = [&] {
        return ::testing::Message() << "n " << n << (atEnd ? " at end" : " at front") << " src +" << srcOffset
                                    << " dst +" << dstOffset << " alias " << alias;
    };
    EXPECT_EQ(status, f.status(in...)) << where();
    EXPECT_TRUE(dstBuffer.intact()) << where();
    for (size_t i = 0; i < n; i++) {
        D got;
        memcpy(static_cast<void*>(&got), reinterpret_cast<const char*>(dst) + i * sizeof(D), sizeof(D));
        const D want = f.model(in[i]...);
        if (!elementwise_detail::matches(got, want, f.exactNan)) {
            ADD_FAILURE() << where() << ", element " << i << ": got " << +got << ", want " << +want;
            return;
        }
    }
    for (size_t k = 0; k < srcBuffers.size(); k++)
        EXPECT_TRUE(srcBuffers[k]->intact()) << where() << " source " << k;
}

template<class D, class... S> void checkElementwise(const Elementwise<D, S...>& f, bool specialValues = true)
{
    using namespace elementwise_detail;
    const auto data = [&](auto tag, size_t n, uint32_t seed) {
        using T = decltype(tag);
        return specialValues ? mixedValues<T>(n, seed) : randomValues<T>(n, seed);
    };
    uint32_t seed = 1;
    const auto run = [&](int n, bool atEnd, size_t srcOffset, size_t dstOffset, int alias) {
        // Each source gets its own seed; the order of evaluation inside braces is left to right.
        std::tuple<std::vector<S>...> in{data(S{}, static_cast<size_t>(n), seed++)...};
        std::apply([&](const auto&... v) { checkCall<D, S...>(f, v..., atEnd, srcOffset, dstOffset, alias); }, in);
    };
    constexpr bool sameType[] = {std::is_same_v<S, D>...};
    for (int n : sweepLengths(f.lengths)) {
        run(n, true, 0, 0, -1);
        run(n, false, 0, 0, -1);
        for (size_t k = 0; k < sizeof...(S); k++)
            if (sameType[k])
                run(n, true, 0, 0, static_cast<int>(k));
        if (::testing::Test::HasFailure())
            return;
    }
    for (int n : {1, 3, 7, 8, 15, 17, 33, 64, 131, 300}) {
        for (size_t offset = 0; offset < 64; offset++) {
            run(n, false, offset, 0, -1);
            run(n, false, 0, offset, -1);
            run(n, false, offset, offset, -1);
            run(n, false, offset, 63 - offset, -1);
            for (size_t k = 0; k < sizeof...(S); k++)
                if (sameType[k])
                    run(n, false, offset / 2, offset, static_cast<int>(k));
        }
        if (::testing::Test::HasFailure())
            return;
    }
}

// In-place functions: the last array is source and destination.
template<class D, class... S> void checkInPlace(const Elementwise<D, S...>& f, bool specialValues = true)
{
    using namespace elementwise_detail;
    constexpr int last = sizeof...(S) - 1;
    uint32_t seed = 1;
    const auto run = [&](int n, bool atEnd, size_t srcOffset, size_t dstOffset) {
        const auto data = [&](auto tag) {
            using T = decltype(tag);
            return specialValues ? mixedValues<T>(static_cast<size_t>(n), seed++)
                                 : randomValues<T>(static_cast<size_t>(n), seed++);
        };
        std::tuple<std::vector<S>...> in{data(S{})...};
        std::apply([&](const auto&... v) { checkCall<D, S...>(f, v..., atEnd, srcOffset, dstOffset, last); }, in);
    };
    for (int n : sweepLengths(f.lengths)) {
        run(n, true, 0, 0);
        run(n, false, 0, 0);
        if (::testing::Test::HasFailure())
            return;
    }
    for (int n : {1, 3, 7, 8, 15, 17, 33, 64, 131, 300}) {
        for (size_t offset = 0; offset < 64; offset++) {
            run(n, false, offset, 0);
            run(n, false, 0, offset);
            run(n, false, offset, 63 - offset);
        }
        if (::testing::Test::HasFailure())
            return;
    }
}

// Pointers outrank the length, each pointer counts, and an error writes nothing. `call(null, len)`: which of the
// pointers is null (-1: none), with arrays of `len` elements otherwise valid.
template<class Call> void checkPointersThenLengthOrder(int pointers, Call&& call, bool lengthFirst = false)
{
    for (int null = 0; null < pointers; null++) {
        EXPECT_EQ(call(null, 1), qvrErrNullPointer) << "pointer " << null;
        for (int len : {0, -1, INT32_MIN})
            EXPECT_EQ(call(null, len), lengthFirst ? qvrErrBadSize : qvrErrNullPointer)
                << "pointer " << null << " len " << len;
    }
    for (int len : {0, -1, INT32_MIN})
        EXPECT_EQ(call(-1, len), qvrErrBadSize) << "len " << len;
}
