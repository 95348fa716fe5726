// Real FFT in double precision.
#include "fourier/functions.h"
#include "fourier/real.h"
#include "fourier/spectra.h"

#define QVR_TAG 64f
#define QVR_T double
#include "fourier/fft_entries.inc"
