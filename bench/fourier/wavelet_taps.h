// The filters of the wavelet row being timed, for its plain loops, which have no state to keep them in.
#ifndef QVR_BENCH_FOURIER_WAVELET_TAPS_H
#define QVR_BENCH_FOURIER_WAVELET_TAPS_H

namespace bench {

constexpr int kWaveletMost = 64;
extern float waveletTaps[2][kWaveletMost];
extern int waveletLength;

} // namespace bench

#endif
