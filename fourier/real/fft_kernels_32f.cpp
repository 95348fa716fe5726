// Kernels of the real FFT in single precision.
#include "fourier/real/fft_kernels.h"

extern "C" constexpr FftKernels<float> SLOT(ownqvrsFFTKernels_32f) = makeKernels<float>();
