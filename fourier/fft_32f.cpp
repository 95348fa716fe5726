// Real FFT in single precision.
#include "fourier/real.h"
#include "fourier/spectra.h"

#define QVR_TAG 32f
#define QVR_T float
#include "fourier/fft_entries.inc"
