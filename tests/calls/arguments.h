// Random arguments for a call, made from a string of bytes by the types of the function.
//
// The usual shape needs nothing more: arrays of the first int behind the last pointer, in elements; every other int and
// every scalar is arbitrary. Arrays are exact allocations, so the address sanitizer sees the first byte beyond, and
// start at any byte offset. Now and then a pointer is null or the length is below 1; then the arrays are one element
// long, since nothing may be read. A function of another shape has a call of its own in shapes.h.
#pragma once

#include <fuzzer/FuzzedDataProvider.h>

#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "morvenqvr.h"

namespace calls {

// What arrays and scalars of floating-point types hold.
enum class Data {
    anything, // any bits
    ordinary, // numbers with magnitudes from 2^-10 to 1
    hostile,  // the same, and denormals, zeros of both signs, infinities and NaN among them
};

template<class T> struct PartOf {
    using type = T;
};
template<> struct PartOf<qvr32fc> {
    using type = float;
};
template<> struct PartOf<qvr64fc> {
    using type = double;
};

// Signalling NaN as floats and as doubles.
inline constexpr uint64_t kSignalling = 0x7FF400007FA00001;

class Input {
public:
    // Memory for arrays: `bytes` bytes at a byte offset from a boundary of 64. Null: each has a heap block of its own.
    using Place = std::function<char*(size_t bytes, size_t offset)>;

    Input(const uint8_t* data, size_t size, Data kind = Data::anything, Place place = {})
        : provider_(data, size), kind_(kind), place_(std::move(place))
    {
    }

    bool oneIn(int n) { return provider_.ConsumeIntegralInRange(1, n) == 1; }
    int range(int low, int high) { return provider_.ConsumeIntegralInRange(low, high); }
    bool anything() const { return kind_ == Data::anything; }
    bool ordinary() const { return kind_ == Data::ordinary; }

    // Any value of the type, extremes more often than chance would have them.
    template<class T> T any()
    {
        if (ordinary()) {
            if constexpr (std::is_floating_point_v<T>)
                return number<T>(static_cast<uint32_t>(range(0, INT32_MAX)));
            else
                return static_cast<T>(range(-12, 12));
        }
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
        return reinterpret_cast<T*>(bytes<T>(n * static_cast<int64_t>(sizeof(T))));
    }

    // The same by its size, which need not be a multiple of T's.
    template<class T> char* bytes(int64_t size)
    {
        char* const p = block(static_cast<size_t>(size));
        using Part = typename PartOf<T>::type;
        if constexpr (std::is_floating_point_v<Part>) {
            if (kind_ != Data::anything) {
                uint32_t seed = static_cast<uint32_t>(range(0, INT32_MAX));
                for (int64_t i = 0; i + static_cast<int64_t>(sizeof(Part)) <= size; i += sizeof(Part)) {
                    seed = seed * 1664525 + 1013904223;
                    const Part x =
                        kind_ == Data::hostile && seed >> 29 == 0 ? special<Part>(seed >> 25) : number<Part>(seed >> 4);
                    memcpy(p + i, &x, sizeof x);
                }
                return p;
            }
        }
        const size_t pattern = static_cast<size_t>(range(0, 64));
        const std::vector<uint8_t> seed = provider_.ConsumeBytes<uint8_t>(pattern);
        // The seed again and again, one more at every 97th byte.
        const size_t length = seed.empty() ? 1 : seed.size(), slope = seed.empty() ? 131 : 0;
        size_t place = 0, added = 0;
        for (size_t from = 0; from < static_cast<size_t>(size); from += 97, added++)
            for (size_t i = from; i < static_cast<size_t>(size) && i < from + 97; i++) {
                p[i] = static_cast<char>(slope != 0 ? i * slope : seed[place] + added);
                place = place + 1 == length ? 0 : place + 1;
            }
        return p;
    }

    // What a call only writes, and work buffers: full of signalling NaN, unless anything goes.
    template<class T> T* output(int64_t n)
    {
        if (kind_ == Data::anything)
            return array<T>(n);
        const size_t size = static_cast<size_t>(n) * sizeof(T);
        char* const p = block(size);
        for (size_t i = 0; i < size; i++)
            p[i] = static_cast<char>(kSignalling >> i % 8 * 8);
        return reinterpret_cast<T*>(p);
    }

    // Whether a function's name says that its last array is read and written.
    bool inPlace = true;

private:
    template<class T> T raw()
    {
        const std::vector<uint8_t> bytes = provider_.ConsumeBytes<uint8_t>(sizeof(T));
        T x{};
        if (!bytes.empty())
            memcpy(&x, bytes.data(), bytes.size());
        return x;
    }

    char* block(size_t size)
    {
        const size_t offset = static_cast<size_t>(oneIn(2) ? range(0, 63) : 0);
        if (place_)
            return place_(size, offset);
        blocks_.push_back(std::unique_ptr<char[]>(new char[offset + size]));
        return blocks_.back().get() + offset;
    }

    // Sums of a few bits, so no rounding mode touches them.
    template<class T> static T number(uint32_t bits)
    {
        const T magnitude = static_cast<T>((bits & 1023) + 1) * T(1.0 / 1024);
        return bits & 1024 ? -magnitude : magnitude;
    }
    template<class T> static T special(uint32_t which)
    {
        using Limits = std::numeric_limits<T>;
        const T specials[] = {T(0),
                              T(-0.0),
                              Limits::denorm_min(),
                              -Limits::denorm_min(),
                              Limits::min() * T(0.75),
                              Limits::infinity(),
                              -Limits::infinity(),
                              Limits::quiet_NaN()};
        return specials[which & 7];
    }

    FuzzedDataProvider provider_;
    Data kind_;
    Place place_;
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
            E* p = std::is_const_v<std::remove_pointer_t<T>> || in.inPlace ? in.array<E>(len) : in.output<E>(len);
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

} // namespace calls
