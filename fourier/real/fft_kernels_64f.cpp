// Kernels of the real FFT in double precision.
#include "fourier/real/fft_kernels.h"

extern "C" constexpr FftKernels<double> SLOT(ownqvrsFFTKernels_64f) = makeKernels<double>();
