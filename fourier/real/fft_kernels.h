// The table of kernels of one precision at the level of this build.
#ifndef QVR_FOURIER_FFT_KERNELS_H
#define QVR_FOURIER_FFT_KERNELS_H

#include "fourier/real/band.h"
#include "fourier/real/fill.h"
#include "fourier/real/firstgen.h"
#include "fourier/real/limits.h"
#include "fourier/real/recombine.h"
#include "fourier/real/reverse.h"
#include "fourier/real/straight.h"

namespace {

template<class T> constexpr FftKernels<T> makeKernels()
{
    FftKernels<T> k{};
    k.recombine[0][0] = recombineRange<false, false, T>;
    k.recombine[0][1] = recombineRange<false, true, T>;
    k.recombine[1][0] = recombineRange<true, false, T>;
    k.recombine[1][1] = recombineRange<true, true, T>;
    constexpr int most = kFftLimits<T>.complex - 1;
    k.straight[0] = straight<StraightPlain, most, T>;
    k.straight[1] = straight<StraightSwapped, most, T>;
    k.straightForward = straight<StraightForward, kInRegisters<T>.forward, T>;
    k.straightInverse = straight<StraightInverse, kInRegisters<T>.inverse, T>;
    k.fillQuarter = fillQuarter<T>;
    k.fillRecombination = fillRecombination<T>;
    if constexpr (kFirstGeneration) {
        k.firstGeneration[0] = firstGenTransform<false, T>;
        k.firstGeneration[1] = firstGenTransform<true, T>;
        return k;
    }
    k.first[0] = runFirst<false, T>;
    k.first[1] = runFirst<true, T>;
    k.firstReversed[0] = runFirstReversed<false, T>;
    k.firstReversed[1] = runFirstReversed<true, T>;
    k.deal = dealRows<T>;
    k.reverse = reverseInPlaceByTiles<T>;
    constexpr bool four = inSteps(2, formProducts), eight = inSteps(3, formProducts);
    const auto stages = [&]<Finish F>() {
        auto& of = k.stage[static_cast<int>(F)];
        of[formProducts][0] = runStage<4, four, F, T>;
        of[formProducts][1] = runStage<8, eight, F, T>;
        of[formSteps][0] = runStage<4, true, F, T>;
        of[formSteps][1] = runStage<8, true, F, T>;
    };
    stages.template operator()<Finish::groups>();
    stages.template operator()<Finish::pairs>();
    stages.template operator()<Finish::swapped>();
    stages.template operator()<Finish::scaled>();
    k.fillSweep = fillSweep<T>;
    if constexpr (kLanes<T> <= 4 && !kAvx) {
        k.fillTopTable = fillTopTable<T>;
        k.columns[0] = runColumns<false, T>;
        k.columns[1] = runColumns<true, T>;
        k.top[static_cast<int>(Finish::pairs)] = runTop<Finish::pairs, T>;
        k.top[static_cast<int>(Finish::swapped)] = runTop<Finish::swapped, T>;
        k.top[static_cast<int>(Finish::scaled)] = runTop<Finish::scaled, T>;
    }
    return k;
}

} // namespace

#endif
