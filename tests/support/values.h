// Test data and comparison by bits.
#pragma once

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <type_traits>
#include <vector>

inline float floatOf(uint32_t bits)
{
    float x;
    memcpy(&x, &bits, sizeof x);
    return x;
}
inline uint32_t bitsOf(float x)
{
    uint32_t b;
    memcpy(&b, &x, sizeof b);
    return b;
}
inline uint64_t bitsOf(double x)
{
    uint64_t b;
    memcpy(&b, &x, sizeof b);
    return b;
}

// Zeros, ones, extremes, denormals, infinities and NaNs of both signs and kinds.
template<class T> std::vector<T> specials()
{
    if constexpr (std::is_floating_point_v<T>) {
        using L = std::numeric_limits<T>;
        std::vector<T> v = {T(0),           T(1),         T(0.5),        T(1.5),          T(2.5),       T(3),
                            L::max(),       L::min(),     L::min() / 2,  L::denorm_min(), L::epsilon(), L::infinity(),
                            L::quiet_NaN(), T(8388607.5), T(8388608),    T(2147483648.0), T(32767),     T(32767.5),
                            T(32768),       T(65536),     T(0.49999997), T(1e30)};
        const size_t n = v.size();
        for (size_t i = 0; i < n; i++)
            v.push_back(-v[i]);
        return v;
    } else {
        using L = std::numeric_limits<T>;
        return {
            T(0),           T(1), T(2), T(-1), L::max(), L::min(), T(L::max() - 1), T(L::min() + 1), T(L::max() / 2),
            T(L::min() / 2)};
    }
}

// Random values of a moderate range, with no special among them.
template<class T> std::vector<T> randomValues(size_t n, uint32_t seed, double low = -1000, double high = 1000)
{
    std::mt19937 engine(seed);
    std::vector<T> v(n);
    if constexpr (std::is_floating_point_v<T>) {
        std::uniform_real_distribution<double> d(low, high);
        for (T& x : v)
            x = static_cast<T>(d(engine));
    } else {
        std::uniform_int_distribution<int64_t> d(std::numeric_limits<T>::min(), std::numeric_limits<T>::max());
        for (T& x : v)
            x = static_cast<T>(d(engine));
    }
    return v;
}

// Random values with a special at about every fifth place.
template<class T> std::vector<T> mixedValues(size_t n, uint32_t seed)
{
    std::vector<T> v = randomValues<T>(n, seed);
    const std::vector<T> s = specials<T>();
    std::mt19937 engine(seed + 1);
    for (T& x : v)
        if (engine() % 5 == 0)
            x = s[engine() % s.size()];
    return v;
}

// Same bits, except that one NaN is as good as another.
template<class T> bool sameValue(T a, T b)
{
    if constexpr (std::is_floating_point_v<T>)
        if (std::isnan(a) && std::isnan(b))
            return true;
    return memcmp(&a, &b, sizeof a) == 0;
}
