// Loops that do nothing but move memory or keep one arithmetic unit busy. Compiled for SSE2 and for AVX2 with FMA.
#include <immintrin.h>

#include "bench/limits.h"

#define PASTE2(a, b) a##b
#define PASTE(a, b) PASTE2(a, b)

namespace {

#ifdef __AVX2__
constexpr int W = 32;
#else
constexpr int W = 16;
#endif
typedef float V __attribute__((vector_size(W)));
typedef double D __attribute__((vector_size(W)));
constexpr int kUnroll = 8;

inline V at(const char* p)
{
    return *reinterpret_cast<const V*>(p);
}
inline void put(char* p, V v)
{
    *reinterpret_cast<V*>(p) = v;
}
inline void putPast(char* p, V v)
{
    __builtin_nontemporal_store(v, reinterpret_cast<V*>(p));
}

void read(const char* s, const char*, char*, int64_t n)
{
    V sum[kUnroll] = {};
    for (int64_t i = 0; i < n; i += kUnroll * W)
#pragma clang loop unroll(full)
        for (int k = 0; k < kUnroll; k++)
            sum[k] += at(s + i + k * W);
    for (V& v : sum)
        __asm__ volatile("" : : "x"(v));
}

// One pass of the pattern given by `step`, a vector at a time.
template<class Step> inline void pass(int64_t n, Step step)
{
    for (int64_t i = 0; i < n; i += kUnroll / 2 * W)
#pragma clang loop unroll(full)
        for (int k = 0; k < kUnroll / 2; k++)
            step(i + k * W);
}

void write(const char*, const char*, char* d, int64_t n)
{
    V v = {};
    __asm__ volatile("" : "+x"(v)); // or the loop becomes a call of memset
    pass(n, [=](int64_t i) { put(d + i, v); });
}
void writePast(const char*, const char*, char* d, int64_t n)
{
    pass(n, [=](int64_t i) { putPast(d + i, V{}); });
    _mm_sfence();
}
void writeString(const char*, const char*, char* d, int64_t n)
{
    __asm__ volatile("rep stosb" : "+D"(d), "+c"(n) : "a"(0) : "memory");
}

void copy(const char* s, const char*, char* d, int64_t n)
{
    for (int64_t i = 0; i < n; i += 4 * W) {
        V a = at(s + i), b = at(s + i + W), c = at(s + i + 2 * W), e = at(s + i + 3 * W);
        __asm__ volatile("" : "+x"(a)); // or the loop becomes a call of memmove
        put(d + i, a);
        put(d + i + W, b);
        put(d + i + 2 * W, c);
        put(d + i + 3 * W, e);
    }
}
void copyPast(const char* s, const char*, char* d, int64_t n)
{
    pass(n, [=](int64_t i) { putPast(d + i, at(s + i)); });
    _mm_sfence();
}
void copyString(const char* s, const char*, char* d, int64_t n)
{
    __asm__ volatile("rep movsb" : "+S"(s), "+D"(d), "+c"(n) : : "memory");
}

void update(const char*, const char*, char* d, int64_t n)
{
    pass(n, [=](int64_t i) { put(d + i, -at(d + i)); });
}

void triad(const char* s, const char* t, char* d, int64_t n)
{
    for (int64_t i = 0; i < n; i += 4 * W) {
        const V a = at(s + i) + at(t + i), b = at(s + i + W) + at(t + i + W);
        const V c = at(s + i + 2 * W) + at(t + i + 2 * W), e = at(s + i + 3 * W) + at(t + i + 3 * W);
        put(d + i, a);
        put(d + i + W, b);
        put(d + i + 2 * W, c);
        put(d + i + 3 * W, e);
    }
}
void triadPast(const char* s, const char* t, char* d, int64_t n)
{
    pass(n, [=](int64_t i) { putPast(d + i, at(s + i) + at(t + i)); });
    _mm_sfence();
}

void updateTwo(const char* s, const char*, char* d, int64_t n)
{
    pass(n, [=](int64_t i) { put(d + i, at(d + i) * at(s + i)); });
}

void (*const kPatterns[bench::patternCount][3])(const char*, const char*, char*, int64_t) = {
    {read, nullptr, nullptr},   {write, writePast, writeString}, {copy, copyPast, copyString},
    {update, nullptr, nullptr}, {triad, triadPast, nullptr},     {updateTwo, nullptr, nullptr},
};

// Sixteen registers hide the latency of any unit; two hold the operands.
template<class T, class Step> inline double spin(int64_t turns, Step step)
{
    constexpr int kChains = 12;
    T one = T{} + 1;
    __asm__ volatile("" : "+x"(one));
    T v[kChains];
    for (T& x : v)
        x = one;
    for (int64_t i = 0; i < turns; i++)
#pragma clang loop unroll(full)
        for (T& x : v) {
            step(x, one);
            __asm__ volatile("" : "+x"(x));
        }
    return static_cast<double>(turns) * kChains * (W / sizeof(v[0][0]));
}

double operations(bench::Unit unit, bool fused, int64_t turns)
{
    using bench::Unit;
    if (fused) {
#ifdef __FMA__
        return 2 * spin<V>(turns, [](V& x, V one) { x = __builtin_elementwise_fma(x, one, one); });
#else
        return spin<V>(turns, [](V& x, V one) { x = x + one; });
#endif
    }
    switch (unit) {
    case Unit::divide32:
        return spin<V>(turns, [](V& x, V one) { x = x / one; });
    case Unit::root32:
        return spin<V>(turns, [](V& x, V) { x = __builtin_elementwise_sqrt(x); });
    case Unit::divide64:
        return spin<D>(turns, [](D& x, D one) { x = x / one; });
    default:
        return spin<V>(turns, [](V& x, V one) { x = x * one; });
    }
}

} // namespace

namespace bench {
extern const LimitLoops PASTE(limitLoops_, QVR_BENCH_LEVEL) = {W, kPatterns, operations};
}
