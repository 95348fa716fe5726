// Real FFT in double precision.
//
// By contract: the tail-packed layout is whole in both precisions, also where no correlation or filter asks for it.
#include "fourier/functions.h"
#include "fourier/real/real.h"
#include "fourier/real/spectra.h"

#define QVR_TAG 64f
#define QVR_T double
#include "fourier/real/fft_entries.inc"
