// The plan of a complex transform of 2^m points: which stages run in which order of work.
//
//     first pass   kFirstRadix points without twiddles, bits reversed by the way
//     levels       nested blocks of 2^order points. Inside a block, the blocks of the level below run to their end,
//                  then come the level's own sweeps
//     sweep        one pass over the block, of one stage or of several, which then go strip by strip through a tile
//
// The innermost level is a run that stays in the first cache, the next one a row, and then each level joins the rows of
// the one below by its last stages. Rows are dealt out of the source in natural order, or lie in a reversed array.
#ifndef QVR_FOURIER_PLAN_RECORD_H
#define QVR_FOURIER_PLAN_RECORD_H

#include <stdint.h>

constexpr int kMaxFftLevels = 5, kMaxFftSweeps = 12, kMaxFftStages = 4;

struct FftSweep {
    int8_t from;                      // log2 of the length at its begin
    int8_t stages;                    // in one pass
    int8_t radixOrder[kMaxFftStages]; // log2
    int8_t form;                      // products first, or in steps
};
struct FftLevel {
    int8_t order; // log2 of its block
    int8_t sweep, sweeps;
};
struct FftPlan {
    int8_t order;      // m; of a column in the threaded band
    int8_t firstOrder; // log2 of the first pass' radix
    int8_t row;        // the level whose blocks begin with a first pass
    int8_t levels;
    FftLevel level[kMaxFftLevels];
    FftSweep sweep[kMaxFftSweeps];
};

static constexpr int sweepOrder(const FftSweep& sweep)
{
    int order = 0;
    for (int i = 0; i < sweep.stages; i++)
        order += sweep.radixOrder[i];
    return order;
}

#endif
