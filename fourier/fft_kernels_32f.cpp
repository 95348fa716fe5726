// Kernels of the real FFT in single precision.
#include "fourier/fft_kernels.h"

extern "C" constexpr FftKernels<float> SLOT(ownqvrsFFTKernels_32f) = makeKernels<float>();
