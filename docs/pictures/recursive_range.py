#!/usr/bin/env python3
"""Draws recursive-range.svg: the largest pole of the taps that the library designs, by order and cut-off.

    recursive_range.py LIBRARY     needs python3-mpmath and python3-matplotlib

The poles are those of the taps as they stand in double precision, found with 50 digits.
"""
import ctypes
import sys
from pathlib import Path

import matplotlib

matplotlib.use("svg")
import matplotlib.pyplot as plt
import mpmath

design = ctypes.CDLL(sys.argv[1]).Morven_qvrsIIRGenLowpass_64f
design.argtypes = [ctypes.c_int, ctypes.c_void_p, ctypes.c_int, ctypes.c_double, ctypes.c_double]
mpmath.mp.dps = 50


def largestPole(order, frequency):
    taps = (ctypes.c_double * (2 * order + 2))()
    assert design(order, taps, 0, frequency, 0) == 0
    roots = mpmath.polyroots([mpmath.mpf(x) for x in taps[order + 1 :]], maxsteps=500, extraprec=400)
    return max(abs(r) for r in roots)


frequencies = [10 ** (-4 + 3 * i / 40) for i in range(41)]
matplotlib.rcParams["svg.hashsalt"] = "recursive-range"
figure, axes = plt.subplots(figsize=(8, 4.2))
for order in (4, 6, 8, 10, 12):
    distance = [1 - largestPole(order, f) for f in frequencies]
    axes.loglog(frequencies, [float(d) if d > 0 else float("nan") for d in distance], label=f"order {order}")
    outside = [f for f, d in zip(frequencies, distance) if d <= 0]
    print(order, "leaves the circle up to", max(outside, default=None))
axes.set_xlabel("cut-off, as a fraction of the sampling rate")
axes.set_ylabel("1 - |largest pole|")
axes.set_title("Butterworth low-pass, all taps in one polynomial: a curve ends where a pole leaves the circle", fontsize=9)
axes.grid(True, which="major", alpha=0.3)
axes.legend()
figure.tight_layout()
figure.savefig(Path(__file__).with_name("recursive-range.svg"), metadata={"Date": None})
