"""Signal- and image-processing primitives on numpy arrays.

Functions work on the last axis of arrays of any number of axes, without copying them; `out` takes the result, and may be
an input where the element types agree. Arrays of a wrong element type or layout are refused; `copy=True` converts them.
Empty arrays give empty arrays. Objects own their memory: RealFFT, Hilbert, Wavelet, FIR, IIR, FIRMultirate, Resize.

A call that the library refuses raises an Error (ArgumentError, ArrayError, StateError, NoMemoryError) with the name of the
status, the function and the argument. A result that holds a substitute, as the quotient by a zero, comes with a
morvenqvr.Warning, once for a call: with the status that the library gives for the whole array and the index of the first
element that has it. numpy.errstate has no part in it, and functions of which the library reports nothing (exp, log10, tanh)
never warn.
"""
try:
    import numpy as _numpy  # noqa: F401
except ImportError as _error:
    raise ImportError(f"morvenqvr needs numpy, which this interpreter cannot import: {_error}") from None
try:
    from ._core import LIBRARY, INT16C as int16c, METHODS
except ModuleNotFoundError as _error:
    if _error.name != __name__ + "._core":
        raise
    raise ImportError("morvenqvr was built for another interpreter: build it with this one, or run the one it was built with") from None
from . import _core
from ._errors import ArgumentError, ArrayError, Error, NoMemoryError, StateError, Warning
from ._generated import EXPORTS as _EXPORTS, FUNCTIONS as _FUNCTIONS, GROUPS, STATUSES, VERSION
from .design import (Sections, daubechies, iir_highpass, iir_lowpass, second_order_sections, upfirdn, wavedec, waverec)

_OBJECTS = ("RealFFT", "Hilbert", "Wavelet", "FIR", "IIR", "FIRMultirate", "Resize")
_BY_HAND = ("empty", "split_scaled", "copy_columns", "check_find_peaks", "convolve_cyclic", "block_min_max", "split_row_tiff",
            "join_row_tiff", "window", "resize", "resize_region")
for _name in (*_FUNCTIONS, *_OBJECTS, *_BY_HAND):
    globals()[_name] = getattr(_core, _name)
del _name

__version__ = VERSION
__all__ = [*_FUNCTIONS, *_OBJECTS, *_BY_HAND, "Sections", "daubechies", "iir_highpass", "iir_lowpass", "second_order_sections",
           "upfirdn", "wavedec", "waverec", "ArgumentError", "ArrayError", "Error", "NoMemoryError", "StateError", "int16c", "METHODS"]
__doc__ += "\nBy group of the library's reference:\n\n" + "".join(
    f"    {title}:\n        {', '.join(names)}\n" for title, names in GROUPS.values() if names)
