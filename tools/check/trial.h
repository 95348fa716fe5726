// Known-answer cases. A case makes its inputs from its name, calls functions and hands over what they gave. The same
// source is compiled twice: as the reference, where the model in each case stands for the library and what it gives is
// written down, and as the tool, which has no models and compares with what was written down.
#pragma once

#include <cmath>
#include <complex>
#include <cstdint>
#include <functional>
#include <limits>
#include <string>
#include <tuple>
#include <type_traits>
#include <vector>

#include "morvenqvr.h"

namespace check {

// How far a value may be from the known one: relative to it, and absolutely.
struct Tolerance {
    double relative = 0, absolute = 0;
};
inline constexpr Tolerance kExact = {};
// A sum of floats, whose order is left open.
inline constexpr Tolerance kSum32f = {2e-6, 2e-5}, kSum64f = {1e-13, 1e-12};

class Trial {
public:
    // `name` seeds the inputs. `functions` gives a function of the library by its name without Morven_.
    Trial(const std::string& name, std::function<void*(const char*)> functions, const std::vector<double>* known);

    template<class F> F function(const char* name) { return reinterpret_cast<F>(functions_(name)); }

    // The type of a creating function's first argument.
    template<class S, class... A> static S** argument(qvrStatus (*)(S**, A...));

    // `n` values from low to high; for integers whole ones, within the type.
    template<class T> std::vector<T> values(size_t n, double low, double high)
    {
        std::vector<T> v(n);
        for (T& x : v)
            x = value<T>(low, high);
        return v;
    }
    template<class T> T value(double low, double high)
    {
        if constexpr (std::is_integral_v<T>) {
            low = std::fmax(low, static_cast<double>(std::numeric_limits<T>::min()));
            high = std::fmin(high, static_cast<double>(std::numeric_limits<T>::max()));
            return static_cast<T>(low + std::floor(unit() * (high - low + 1)));
        }
        if constexpr (std::is_floating_point_v<T>)
            return static_cast<T>(low + unit() * (high - low));
        if constexpr (!std::is_arithmetic_v<T>)
            return {value<decltype(T::re)>(low, high), value<decltype(T::im)>(low, high)};
    }

    // What a function gave.
    void status(qvrStatus s) { give("the status", -1, s, kExact); }
    template<class T> void array(const char* what, const T* p, size_t n, Tolerance t)
    {
        for (size_t i = 0; i < n; i++) {
            if constexpr (std::is_arithmetic_v<T>) {
                give(what, static_cast<long>(i), static_cast<double>(p[i]), t);
            } else {
                give(what, static_cast<long>(i), static_cast<double>(p[i].re), t);
                give(what, static_cast<long>(i), static_cast<double>(p[i].im), t);
            }
        }
    }
    template<class T> void array(const char* what, const std::vector<T>& v, Tolerance t)
    {
        array(what, v.data(), v.size(), t);
    }

    std::vector<double> given;            // everything, in order
    std::vector<std::string> differences; // one line for each array, the first of its differences
    size_t different = 0;                 // values

private:
    double unit();
    void give(const char* what, long index, double v, Tolerance t);

    std::function<void*(const char*)> functions_;
    const std::vector<double>* known_;
    uint64_t seed_;
    std::string last_;
};

struct Case {
    const char* name;
    void (*run)(Trial&);
    Case(const char* n, void (*f)(Trial&));
};
// By name.
std::vector<Case> cases();

#define QVR_CASE(name)                                                                                                 \
    static void run_##name(check::Trial& t);                                                                           \
    static const check::Case case_##name(#name, run_##name);                                                           \
    static void run_##name(check::Trial& t)

// The function under test, or its model.
#ifdef QVR_REFERENCE
#define QVR_FUNCTION(name) static_cast<decltype(&Morven_##name)>(model::name)
#else
#define QVR_FUNCTION(name) t.function<decltype(&Morven_##name)>(#name)
#endif

// A function for a case that has a model of its own way.
#ifdef QVR_REFERENCE
#define QVR_GET(name) static_cast<decltype(&Morven_##name)>(nullptr)
#else
#define QVR_GET(name) t.function<decltype(&Morven_##name)>(#name)
#endif

// ---- Functions of the usual shape: arrays of one length, scalars ----

inline constexpr int kLength = INT32_MIN; // in `ints`: the place of the length

struct Usual {
    double low = -100, high = 100; // of inputs, and of what stands in outputs before
    Tolerance tolerance = kExact;
    std::vector<int> ints = {kLength};
    std::vector<double> scalars = {}; // of types other than int
    size_t outputs = 0;               // elements of an output that count; 0: all
};

namespace detail {

template<class T> struct Argument;
template<class T> struct Argument<const T*> {
    static std::vector<T> make(Trial& t, const Usual& u, size_t n, size_t&, size_t&)
    {
        return t.values<T>(n + 8, u.low, u.high);
    }
    static const T* give(std::vector<T>& v) { return v.data(); }
    static void compare(Trial&, const Usual&, size_t, std::vector<T>&) {}
};
template<class T> struct Argument<T*> {
    static std::vector<T> make(Trial& t, const Usual& u, size_t n, size_t&, size_t&)
    {
        return t.values<T>((n > u.outputs ? n : u.outputs) + 8, u.low, u.high);
    }
    static T* give(std::vector<T>& v) { return v.data(); }
    // What lies behind the array stays.
    static void compare(Trial& t, const Usual& u, size_t n, std::vector<T>& v)
    {
        const size_t count = u.outputs != 0 ? u.outputs : n;
        t.array("the result", v.data(), count, u.tolerance);
        t.array("what lies behind the result", v.data() + count, v.size() - count, kExact);
    }
};
template<> struct Argument<int> {
    static int make(Trial&, const Usual& u, size_t n, size_t& ints, size_t&)
    {
        const int v = u.ints[ints++];
        return v == kLength ? static_cast<int>(n) : v;
    }
    static int give(int v) { return v; }
    static void compare(Trial&, const Usual&, size_t, int) {}
};
template<class T> struct Argument {
    static T make(Trial&, const Usual& u, size_t, size_t&, size_t& scalars)
    {
        return static_cast<T>(u.scalars[scalars++]);
    }
    static T give(T v) { return v; }
    static void compare(Trial&, const Usual&, size_t, T) {}
};

} // namespace detail

template<class... A> void callUsual(Trial& t, qvrStatus (*f)(A...), const Usual& u, size_t n)
{
    size_t ints = 0, scalars = 0;
    std::tuple arguments{detail::Argument<A>::make(t, u, n, ints, scalars)...};
    std::apply(
        [&](auto&... a) {
            t.status(f(detail::Argument<A>::give(a)...));
            (detail::Argument<A>::compare(t, u, n, a), ...);
        },
        arguments);
}

#define QVR_USUAL(name, usual)                                                                                         \
    QVR_CASE(name)                                                                                                     \
    {                                                                                                                  \
        const auto f = QVR_FUNCTION(name);                                                                             \
        const check::Usual u = check::Usual usual;                                                                     \
        for (const size_t n : {3, 19, 130})                                                                            \
            check::callUsual(t, f, u, n);                                                                              \
    }

} // namespace check
