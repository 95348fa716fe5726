// Elementary functions, magnitudes, phase. The tolerances are the classes' promises, and one rounding of the known
// value.
#include "trial.h"

#ifdef QVR_REFERENCE
#include "model/elementary.h"
#endif

using namespace check;

namespace {

constexpr Tolerance kA11 = {0x1p-11 + 6e-8, 1.6e-4}, kA21 = {0x1p-21 + 6e-8, 1e-7}, kA24 = {0x1p-23 + 6e-8, 1e-37};

}

QVR_USUAL(qvrsSin_32f_A11, ({.low = -20, .high = 20, .tolerance = kA11}))
QVR_USUAL(qvrsCos_32f_A11, ({.low = -20, .high = 20, .tolerance = kA11}))
QVR_USUAL(qvrsTan_32f_A11, ({.low = -20, .high = 20, .tolerance = kA11}))
QVR_USUAL(qvrsAsin_32f_A11, ({.low = -1, .high = 1, .tolerance = kA11}))
QVR_USUAL(qvrsAcos_32f_A11, ({.low = -1, .high = 1, .tolerance = kA11}))
QVR_USUAL(qvrsAtan_32f_A11, ({.low = -9, .high = 9, .tolerance = kA11}))
QVR_USUAL(qvrsSinh_32f_A11, ({.low = -9, .high = 9, .tolerance = kA11}))
QVR_USUAL(qvrsCosh_32f_A11, ({.low = -9, .high = 9, .tolerance = kA11}))
QVR_USUAL(qvrsTanh_32f_A11, ({.low = -3, .high = 3, .tolerance = kA11}))
QVR_USUAL(qvrsExp_32f_A11, ({.low = -9, .high = 9, .tolerance = kA11}))
QVR_USUAL(qvrsLn_32f_A11, ({.low = 0.01, .high = 900, .tolerance = kA11}))
QVR_USUAL(qvrsLog10_32f_A11, ({.low = 0.01, .high = 900, .tolerance = kA11}))
QVR_USUAL(qvrsLog10_32f_A21, ({.low = 0.01, .high = 900, .tolerance = kA21}))
QVR_USUAL(qvrsExp_32f, ({.low = -80, .high = 80, .tolerance = {1.9e-7, 1e-37}}))
QVR_USUAL(qvrsLn_32f, ({.low = 0.01, .high = 900, .tolerance = {1.2e-7, 1e-12}}))
QVR_USUAL(qvrsArctan_32f, ({.low = -9, .high = 9, .tolerance = {3e-7, 1e-37}}))

QVR_USUAL(qvrsPow_32f_A11, ({.low = 0.1, .high = 9, .tolerance = kA11}))
QVR_USUAL(qvrsPow_32f_A24, ({.low = 0.1, .high = 9, .tolerance = kA24}))
QVR_USUAL(qvrsPowx_32f_A11, ({.low = 0.1, .high = 9, .tolerance = kA11, .scalars = {-2.3}}))
QVR_USUAL(qvrsPowx_32f_A24, ({.low = 0.1, .high = 9, .tolerance = kA24, .scalars = {-2.3}}))
QVR_USUAL(qvrsAtan2_32f_A11, ({.low = -9, .high = 9, .tolerance = kA11}))

QVR_USUAL(qvrsMagnitude_32fc, ({.tolerance = {0x1p-22 + 2e-7, 0}}))
QVR_USUAL(qvrsMagnitude_64fc, ({.tolerance = {1e-15, 0}}))
QVR_USUAL(qvrsMagnitude_16sc_Sfs, ({.low = -32768, .high = 32767, .ints = {kLength, 1}}))
QVR_USUAL(qvrsPhase_32fc, ({.tolerance = {1.2e-7, 0}}))
