"""What the header does not say about a function's Python form. An export that none of these tables names appears under
its own operation's name, by the shape of its prototype."""

# Operation -> name, where it is not the operation's words in lower case. Those of images have "image_" before.
NAMES = {
    "And": "bitwise_and", "Or": "bitwise_or", "LShift": "left_shift", "RShift": "right_shift",
    "StdDev": "std", "MinIndx": "min_index", "MaxIndx": "max_index", "MinMax": "min_max", "Set": "fill",
    "Threshold_GTVal": "threshold_gt", "Threshold_LTVal": "threshold_lt", "SignChangeRate_Count0": "sign_change_rate",
    "Conv": "convolve", "ConvBiased": "convolve_biased", "CrossCorr": "correlate", "AutoCorr": "autocorrelate",
    "FilterMedian": "median_filter", "Arctan": "atan", "Powx": "pow",
    "FIRGenLowpass": "fir_lowpass", "FIRGenHighpass": "fir_highpass", "FIRGenBandpass": "fir_bandpass",
    "FIRGenBandstop": "fir_bandstop", "IIRGenLowpass": "_iir_lowpass", "IIRGenHighpass": "_iir_highpass",
    "CompensateOffset_32f_I": "compensate_offset_in_place", "SortAscend": "sort",
}
IMAGE_NAMES = {"LUTPalette": "lut", "Set": "image_fill"}

# C name of an argument -> Python name.
ARGUMENTS = {
    "scaleFactor": "scale", "rndMode": "rounding", "maskSize": "size", "vSub": "subtract", "vDiv": "divide",
    "relOp": "relation", "zcType": "kind", "prevValue": "previous", "lowLag": "low_lag", "oldVal": "old", "newVal": "new",
    "nBitSize": "bits", "rFreq": "cutoff", "rLowFreq": "low", "rHighFreq": "high", "windowType": "window",
    "tapsLen": "length", "filterType": "kind", "rippleDb": "ripple", "pLast": "last",
    "pFind": "pattern", "val": "value",
}

# Python name of an argument -> its default.
DEFAULTS = {"scale": "0", "rounding": "None", "phase": "0", "normalize": "True", "ripple": "0.0", "low_lag": "None"}
# ... in one function.
DEFAULTS_OF = {("correlate", "length"): "None", ("autocorrelate", "length"): "None", ("fir", "window"): "'hamming'",
               ("_iir_lowpass", "kind"): "'butterworth'", ("_iir_highpass", "kind"): "'butterworth'",
               ("compensate_offset", "last"): "0.0"}

# C name of an argument that selects -> prefix of its enumerators.
SELECTED = {"rounding": "qvrRoundNearest"}  # what None means
SELECTORS = {"rndMode": "qvrRound", "relOp": "qvrCmp", "zcType": "qvrZc", "windowType": "qvrFir", "filterType": "qvrIir"}

# Operations that take the second array first: a - b, a / b.
REVERSED = {"Sub", "Div"}
COMMUTATIVE = {"Add", "Mul", "AndC", "Or"}  # a number may stand first too

# Groups of functions whose elements do not know of each other.
ELEMENTWISE = {"arithmetic", "fills", "conversion", "fixedpoint", "logic", "elementary", "fast"}

# Work for an element beside that of an addition; groups not named count 1.
WEIGHTS = {"elementary": 8, "fast": 8, "sorting": 32, "median": 256, "reductions": 2, "windows": 8, "firgen": 200, "iir": 1000,
           "waveform": 8}
QUADRATIC = {"convolve", "convolve_biased", "correlate", "autocorrelate"}

# Length of the output of a row, from the lengths n0, n1 of the inputs and the arguments.
LENGTHS = {
    "sum_window": "n0 - size + 1", "convolve": "n0 && n1 ? n0 + n1 - 1 : 0", "convolve_biased": "length",
    "correlate": "length", "autocorrelate": "length", "compensate_offset": "n0 - 1", "sample_up": "n0 * factor",
    "sample_down": "factor > 0 ? (n0 + factor - 1 - phase) / factor : 0", "fir_lowpass": "length", "fir_highpass": "length",
    "fir_bandpass": "length", "fir_bandstop": "length", "_iir_lowpass": "2 * (order + 1)", "_iir_highpass": "2 * (order + 1)",
}
# Arguments whose None means a value that follows from the lengths.
LENGTH_DEFAULTS = {("correlate", "length"): "n0 + n1 - 1", ("correlate", "low_lag"): "1 - n0", ("autocorrelate", "length"): "n0"}

# Results beside the arrays, for one row at a time: C name of an argument that is written back.
WRITTEN_BACK = {"pLast", "phase"}

# An argument as C takes it, where it is not simply passed on.
PASSED_AS = {("ConvBiased", "pSrc2"): "pSrc2 + bias"}

# Correct bits of the untagged forms among the functions with a choice of accuracy.
ACCURACY = {"Exp_32f": 24, "Ln_32f": 24, "Arctan_32f": 22}

# First line of a docstring, where the formula with arguments renamed would not read well.
SUMMARIES = {
    "sub": "a - b, element by element; either may be a number.",
    "div": "a / b, element by element; either may be a number. Division by a number multiplies by its rounded reciprocal.",
    "min_every": "b where b < a, else a. Not numpy.minimum and not numpy.fmin: a NaN in a stays, and a NaN in b gives a.",
    "max_every": "b where b > a, else a. Not numpy.maximum and not numpy.fmax: a NaN in a stays, and a NaN in b gives a.",
    "fill": "Sets every element of out to a number.",
    "convert": "Converts elements to the type of dtype or of out.",
    "pow": "x to the power y, element by element; y may be a number.",
    "find": "Index of the first place where pattern stands in x, or -1.",
}

# Which argument a status is about, where the reference text does not say it; the first one that the function has.
STATUS_ARGUMENTS = {
    "qvrErrBadCutoff": ["cutoff"], "qvrErrBadFilterOrder": ["order"], "qvrErrBadRipple": ["ripple"],
    "qvrErrBadWindowLength": ["size"], "qvrErrBadSampleFactor": ["factor"], "qvrErrBadSamplePhase": ["phase"],
    "qvrErrBadBitSize": ["bits"], "qvrErrBadSelector": ["kind"], "qvrErrBadArgument": ["relation"], "qvrErrBadSize": ["length"],
}

# Objects and functions written by hand: their exports, as patterns. The kinds of an object follow from the names.
BY_HAND = {
    "RealFFT": r"qvrsFFT(InitAlloc|Free|Fwd|Inv)\w*",
    "Hilbert": r"qvrsHilbert\w*",
    "Wavelet": r"qvrsWT(Fwd|Inv)(InitAlloc|Free|SetDlyLine|GetDlyLine)?_32f",
    "IIR": r"qvrsIIR(InitAlloc|Free)?_64f",
    "FIR": r"qvrsFIR(InitAlloc|Free|GetTaps|GetDlyLine|SetDlyLine)?(64f)?_\w+",
    "FIRMultirate": r"qvrsFIRMR\w*",
    "Resize": r"qvriResize(GetBufSize|SqrPixel)_?\w*",
    "resize_region": r"qvriResize_\w*",
    "empty": r"qvrs(Malloc_8u|Free)",
    "split_scaled": r"qvrsSplitScaled_16s32f_D2L",
    "copy_columns": r"qvrsCopyColumn_Indirect_16s_D2L?",
    "check_find_peaks": r"qvrsFindPeaks_32f8u",
    "convolve_cyclic": r"qvrsConvCyclic8x8_32f",
    "block_min_max": r"qvriBlockMinMax_16s_C1R",
    "split_row_tiff": r"qvriSplitRow_TIFF_16u8u_C1",
    "join_row_tiff": r"qvriJoinRow_TIFF_8u16u_C1",
}

# Operations whose second operand is a number, though the name does not end with C.
NUMBERS = {"Powx": "y"}
# Arguments that C writes and does not read.
HIDDEN = {("compensate_offset", "last")}
