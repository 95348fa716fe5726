// Kernels of the threaded band: M = 8 R points as eight column transforms of R points and one radix-8 pass over them.
#ifndef QVR_FOURIER_BAND_H
#define QVR_FOURIER_BAND_H

#include "fourier/real/passes.h"

namespace {

// The first pass with columns in its lanes, to the groups of a column each.
template<bool Swap, class T> void runColumns(const ColumnsCall<T>& call)
{
    using V = Full<T>;
    constexpr int P = kVecPoints<T>, R = kFirstRadix;
    const Index points = Index{1} << call.order, legs = points / R;
    ReversedCounter place(call.order - kFirstOrder, 0);
    for (Index i = 0; i < legs; i++, place.step())
        for (int c = 0; c < 4; c += P) {
            V x[R];
#pragma clang loop unroll(full)
            for (int leg = 0; leg < R; leg++)
                x[leg] = load<V>(call.src + 2 * (8 * (i + leg * legs) + c));
            pairsDft<R, Swap>(x);
            T* base = call.area + 2 * c * points + 2 * R * place.value;
            scatterPairs<Swap, false, T>(x, [&](int l) { return base + 2 * l * points; });
        }
}

template<Finish F, class T> void runTop(const TopCall<T>& call)
{
    using V = Full<T>;
    constexpr int W = kLanes<T>;
    const V factor = splat<V>(call.factor);
    for (Index j = call.first; j < call.first + call.count; j += W) {
        const T* tw = call.table + j / 4 * 56 + j % 4;
        Cx<V> x[8];
        x[0] = loadGroup<V>(call.area + 2 * j);
#pragma clang loop unroll(full)
        for (int c = 1; c < 8; c++)
            x[c] = loadGroup<V>(call.area + 2 * (c * call.columns + j)) *
                   Cx<V>{loadAligned<V>(tw + 8 * (c - 1)), loadAligned<V>(tw + 8 * (c - 1) + 4)};
        dft8(x);
#pragma clang loop unroll(full)
        for (int c = 0; c < 8; c++)
            finish<F>(call.dst + 2 * (c * call.columns + j), x[c], factor);
    }
}

} // namespace

#endif
