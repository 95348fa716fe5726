// Transforms of up to 16 points: everything is loaded before anything is stored.
#include "fourier/generic/butterflies.h"
#include "fourier/generic/dft.h"

namespace {

using S = Vec<float, 1>;

template<int N> void straight(const float* src, float* dst, float factor, uint32_t sign)
{
    const float imFactor = sign != 0 ? -factor : factor, imSign = sign != 0 ? -1.0f : 1.0f;
    Cx<S> x[N];
#pragma clang loop unroll(full)
    for (int i = 0; i < N; i++)
        x[i] = {load<S>(src + 2 * i), load<S>(src + 2 * i + 1) * S{imSign}};
    smallDft<N>(x);
#pragma clang loop unroll(full)
    for (int i = 0; i < N; i++) {
        store(dst + 2 * i, x[i].re * S{factor});
        store(dst + 2 * i + 1, x[i].im * S{imFactor});
    }
}
template<int N> void straightReal(const float* src, float* dst, float factor)
{
    Cx<S> x[N];
#pragma clang loop unroll(full)
    for (int i = 0; i < N; i++)
        x[i] = {load<S>(src + i), S{}};
    smallDft<N>(x);
#pragma clang loop unroll(full)
    for (int i = 0; i <= N / 2; i++) {
        store(dst + 2 * i, x[i].re * S{factor});
        store(dst + 2 * i + 1, i == 0 || 2 * i == N ? S{} : x[i].im * S{factor});
    }
}

using Complex = void (*)(const float*, float*, float, uint32_t);
using Real = void (*)(const float*, float*, float);
constexpr Complex kComplex[kStraightMost] = {
    straight<1>, straight<2>,  straight<3>,  straight<4>,  straight<5>,  straight<6>,  straight<7>,  straight<8>,
    straight<9>, straight<10>, straight<11>, straight<12>, straight<13>, straight<14>, straight<15>, straight<16>};
constexpr Real kReal[kStraightMost] = {straightReal<1>,  straightReal<2>,  straightReal<3>,  straightReal<4>,
                                       straightReal<5>,  straightReal<6>,  straightReal<7>,  straightReal<8>,
                                       straightReal<9>,  straightReal<10>, straightReal<11>, straightReal<12>,
                                       straightReal<13>, straightReal<14>, straightReal<15>, straightReal<16>};

} // namespace

extern "C" void SLOT(ownqvrsDFTStraight_C)(const float* src, float* dst, int n, float factor, uint32_t sign)
{
    kComplex[n - 1](src, dst, factor, sign);
}
extern "C" void SLOT(ownqvrsDFTStraight_R)(const float* src, float* dst, int n, float factor)
{
    kReal[n - 1](src, dst, factor);
}
