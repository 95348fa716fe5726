// Random arguments for a call, made from fuzzer input by the types of the function.
//
// The usual shape needs nothing more: arrays of the first int behind the last pointer, in elements; every other int and
// every scalar is arbitrary. Arrays are exact allocations, so the address sanitizer sees the first byte beyond, and
// start at any byte offset. Now and then a pointer is null or the length is below 1; then the arrays are one element
// long, since nothing may be read. A function of another shape has a call of its own in shapes.h.
#pragma once

#include <fuzzer/FuzzedDataProvider.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "morvenqvr.h"

namespace fuzz {

class Input {
public:
    Input(const uint8_t* data, size_t size) : provider_(data, size) {}

    bool oneIn(int n) { return provider_.ConsumeIntegralInRange(1, n) == 1; }
    int range(int low, int high) { return provider_.ConsumeIntegralInRange(low, high); }

    // Any value of the type, extremes more often than chance would have them.
    template<class T> T any()
    {
        if constexpr (std::is_floating_point_v<T>) {
            const T special[] = {T(0),
                                 T(-0.0),
                                 T(1),
                                 T(-1),
                                 T(0.5),
                                 T(1e30),
                                 std::numeric_limits<T>::infinity(),
                                 std::numeric_limits<T>::quiet_NaN(),
                                 std::numeric_limits<T>::denorm_min()};
            if (oneIn(3))
                return special[range(0, 8)];
            if (oneIn(2))
                return static_cast<T>(range(-100, 100));
            return raw<T>();
        } else {
            if (oneIn(4))
                return std::numeric_limits<T>::min();
            if (oneIn(4))
                return std::numeric_limits<T>::max();
            if (oneIn(2))
                return static_cast<T>(range(-40, 40));
            return raw<T>();
        }
    }

    // A valid length: mostly short, sometimes past the thresholds of threads and loops.
    int length()
    {
        const int n = oneIn(16) ? range(1, 9000) : oneIn(4) ? range(1, 600) : range(1, 70);
        return n;
    }

    // An array of n elements at a byte offset, ending exactly at its allocation's end. Kept until the call is over.
    template<class T> T* array(int64_t n)
    {
        const size_t offset = static_cast<size_t>(oneIn(2) ? range(0, 63) : 0);
        const size_t bytes = static_cast<size_t>(n) * sizeof(T);
        blocks_.push_back(std::unique_ptr<char[]>(new char[offset + bytes]));
        char* p = blocks_.back().get() + offset;
        const size_t pattern = static_cast<size_t>(range(0, 64));
        const std::vector<uint8_t> seed = provider_.ConsumeBytes<uint8_t>(pattern);
        for (size_t i = 0; i < bytes; i++)
            p[i] = static_cast<char>(seed.empty() ? i * 131 : seed[i % seed.size()] + i / 97);
        return reinterpret_cast<T*>(p);
    }

private:
    template<class T> T raw()
    {
        const std::vector<uint8_t> bytes = provider_.ConsumeBytes<uint8_t>(sizeof(T));
        T x{};
        if (!bytes.empty())
            memcpy(&x, bytes.data(), bytes.size());
        return x;
    }

    FuzzedDataProvider provider_;
    std::vector<std::unique_ptr<char[]>> blocks_;
};

template<class T> struct IsArray : std::false_type {};
template<class T> struct IsArray<T*> : std::bool_constant<!std::is_pointer_v<T> && !std::is_void_v<T>> {};

template<class... A> constexpr int lengthPosition()
{
    constexpr bool pointer[] = {std::is_pointer_v<A>...}, integer[] = {std::is_same_v<A, int>...};
    int last = -1;
    for (int i = 0; i < static_cast<int>(sizeof...(A)); i++)
        if (pointer[i])
            last = i;
    for (int i = last + 1; i < static_cast<int>(sizeof...(A)); i++)
        if (integer[i])
            return i;
    return -1;
}

// The usual shape. Sources may be the destination, as the contracts allow for one element type.
template<class R, class... A, size_t... I> void callUsual(R (*f)(A...), Input& in, std::index_sequence<I...>)
{
    constexpr int at = lengthPosition<A...>();
    static_assert(at >= 0 && ((IsArray<A>::value || !std::is_pointer_v<A>) && ...),
                  "this shape needs a call of its own in shapes.h");
    const bool bad = in.oneIn(20);
    const int len = in.length();
    const int nullAt = bad && in.oneIn(2) ? in.range(0, static_cast<int>(sizeof...(A)) - 1) : -1;
    const int badLen = bad && (nullAt < 0 || in.oneIn(2)) ? (in.oneIn(2) ? 0 : in.any<int>() | INT32_MIN) : len;
    bool valid = badLen == len;
    void* shared = nullptr;
    const bool share = in.oneIn(4);
    const auto make = [&](auto tag, int position) {
        using T = typename decltype(tag)::type;
        if constexpr (std::is_pointer_v<T>) {
            using E = std::remove_const_t<std::remove_pointer_t<T>>;
            constexpr bool sameTypes =
                ((!std::is_pointer_v<A> || std::is_same_v<std::remove_const_t<std::remove_pointer_t<A>>, E>) && ...);
            if (position == nullAt) {
                valid = false;
                return T(nullptr);
            }
            if (sameTypes && share && shared)
                return T(static_cast<E*>(shared));
            E* p = in.array<E>(len);
            shared = p;
            return T(p);
        } else {
            return position == at ? T(badLen) : in.any<T>();
        }
    };
    std::tuple<A...> args{make(std::type_identity<A>{}, static_cast<int>(I))...};
    const auto status = std::apply(f, args);
    if (!valid && status >= 0)
        __builtin_trap();
}
template<class R, class... A> void callUsual(R (*f)(A...), Input& in)
{
    callUsual(f, in, std::index_sequence_for<A...>{});
}

} // namespace fuzz
