// The form of an element-wise row: up to two sources and a destination, or in place, over the usual lengths.
//
// ROW(export, group, arrays, (arguments), peers...)
//   arrays     what the arguments a, b, d are and hold: see binary, unary, inPlace below
//   arguments  of the export, in terms of a, b, d and the length n
//   peers      VOLK(call), LIBC(name, call) in the same terms. A plain loop and an Eigen wrapper join by themselves
//              when their tables have the export's name.
#ifndef QVR_BENCH_VECTOR_ROWS_H
#define QVR_BENCH_VECTOR_ROWS_H

#include <string.h>

#include "bench/bench.h"
#include "bench/peers.h"

#ifdef QVR_HAVE_VOLK
#include <volk/volk.h>
#define VOLK(call)                                                                                                     \
    if (bench::ownSlot())                                                                                              \
        c.peer("VOLK", [=] { call; });
#else
#define VOLK(call)
#endif
#define LIBC(name, call)                                                                                               \
    if (bench::ownSlot())                                                                                              \
        c.peer(name, [=] { call; });

namespace bench {

// Element types; void for an array that is not there. In place, the destination is a source too.
template<class A, class B, class D> struct Arrays {
    Data first, second, destination;
    Work work;
};

template<class T> constexpr double bytesOf = sizeof(T);
template<> inline constexpr double bytesOf<void> = 0;

// d[i] from a[i] and b[i]
template<class T> constexpr Arrays<T, T, T> binary()
{
    return {Data::mixed, Data::mixed, Data::mixed, {2 * bytesOf<T>, bytesOf<T>}};
}
// d[i] from a[i]
template<class A, class D = A> constexpr Arrays<A, void, D> unary(Data source = Data::mixed)
{
    return {source, {}, Data::mixed, {bytesOf<A>, bytesOf<D>}};
}
// d[i] alone
template<class D> constexpr Arrays<void, void, D> output()
{
    return {{}, {}, Data::mixed, {0, bytesOf<D>}};
}
// d[i] from d[i]
template<class D> constexpr Arrays<void, void, D> inPlace(Data start = Data::mixed)
{
    return {{}, {}, start, {bytesOf<D>, bytesOf<D>, true}};
}
// d[i] from d[i] and a[i]
template<class D> constexpr Arrays<D, void, D> inPlaceFrom(Data source, Data start = Data::mixed)
{
    return {source, {}, start, {2 * bytesOf<D>, bytesOf<D>, true}};
}
// The same arrays for a function whose arithmetic can be the limit.
template<class S> constexpr S limitedBy(Unit unit, double operations, S arrays)
{
    arrays.work.unit = unit;
    arrays.work.operations = operations;
    return arrays;
}

// Lengths for float arrays; for wider elements the ones beyond L1 shrink with the size, for narrower they grow.
struct Length {
    int64_t elements;
    bool scaled;
    int offset; // bytes off the 64-byte boundary, an element's multiple
};
constexpr Length kLengths[] = {
    {15, false, 0}, {256, false, 0}, {1021, false, 1}, {4096, false, 0}, {65536, true, 0}, {16 << 20, true, 0},
};

template<class T> T* arrayOf(Case& c, int64_t n, Data data, bool isOutput, int offset)
{
    if constexpr (sizeof(T) == 16) {
        using E = decltype(T{}.re);
        return reinterpret_cast<T*>(c.array<E>(2 * n, data, isOutput, offset * 16));
    } else {
        return c.array<T>(n, data, isOutput, offset * static_cast<int>(sizeof(T)));
    }
}

// Fills a case with its arrays and competitors; `competitors` is the ROW's closure.
template<class A, class B, class D, class F>
void elementwiseRow(const Sink& sink, const Arrays<A, B, D>& arrays, F competitors)
{
    constexpr double widest =
        bytesOf<A> > bytesOf<D> ? bytesOf<A> : bytesOf<D>; // the second source has the first one's type
    for (const Length& length : kLengths) {
        const int64_t n =
            length.scaled ? static_cast<int64_t>(static_cast<double>(length.elements) * 4 / widest) : length.elements;
        if (n >= 1 << 20 && !sink.memory)
            continue;
        const std::string label = std::to_string(n) + (length.offset ? " unaligned" : "");
        sink.add(label, [&](Case& c) {
            c.elements = static_cast<double>(n);
            c.work = arrays.work;
            // The destination is the least displaced: a load that follows a store in the low 12 bits of its address
            // would wait for it, which is a matter of these arrays and not of the loops.
            A* a = nullptr;
            B* b = nullptr;
            if constexpr (!__is_same(A, void))
                a = arrayOf<A>(c, n, arrays.first, false, 2 * length.offset);
            if constexpr (!__is_same(B, void))
                b = arrayOf<B>(c, n, arrays.second, false, 3 * length.offset);
            D* d = arrayOf<D>(c, n, arrays.destination, true, length.offset);
            competitors(c, a, b, d, static_cast<int>(n));
        });
    }
}

// ours, the plain loop and Eigen: functions of one prototype, called by `call`.
template<class F, class Call> void sameCall(Case& c, const char* name, F* exported, Call call)
{
    F* volatile hidden = exported; // or the call through the pointer becomes a direct one
    c.ours([call, f = static_cast<F*>(hidden)] { call(f); });
    if (auto* const plain = reinterpret_cast<F*>(findPlain(name)))
        c.peer("plain loop", [=] { call(plain); });
    if (auto* const eigen = reinterpret_cast<F*>(findEigen(name)))
        c.peer("Eigen", [=] { call(eigen); });
}

} // namespace bench

#define QVR_ROW_NAME2(line) rowOfLine##line
#define QVR_ROW_NAME(line) QVR_ROW_NAME2(line)

#define VARIANT_ROW(exported, variant, group, arrays, arguments, ...)                                                  \
    const bool QVR_ROW_NAME(__LINE__) =                                                                                \
        bench::addRow({#exported, variant, "vector", group, [](const bench::Sink& sink) {                              \
                           bench::elementwiseRow(sink, arrays, [](bench::Case& c, auto* a, auto* b, auto* d, int n) {  \
                               (void)a, (void)b, (void)d;                                                              \
                               bench::sameCall(c, #exported, Morven_##exported, [=](auto* f) { f arguments; });        \
                               __VA_ARGS__                                                                             \
                           });                                                                                         \
                       }});
#define ROW(exported, group, arrays, arguments, ...) VARIANT_ROW(exported, "", group, (arrays), arguments, __VA_ARGS__)

#endif
