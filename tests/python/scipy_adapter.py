"""A pytest plug-in that puts this package behind SciPy's and NumPy's interfaces: calls whose arguments the library takes go
to it, all others to the original. QVR_ADAPTED names a file that receives the count of each."""
import atexit
import collections
import functools
import json
import os

import numpy as np
import numpy.fft
import scipy.fft
import scipy.signal
import scipy.signal._fir_filter_design
import scipy.signal._filter_design
import scipy.signal._signaltools
import scipy.signal._upfirdn

import morvenqvr as qvr

taken = collections.Counter()
Unfit = object()


def power_of_two(n):
    return n > 0 and n & (n - 1) == 0


@functools.lru_cache(None)
def transform(n, norm, dtype):
    return qvr.RealFFT(n, norm=norm or "backward", dtype=dtype)


def rfft(x, n=None, axis=-1, norm=None, *unused, **also):
    x = np.asarray(x)
    if x.dtype != np.float64 or also or unused or x.ndim == 0 or axis not in (-1, x.ndim - 1) or norm == "ortho" or norm not in (
            None, "backward", "forward"):
        return Unfit
    n = x.shape[-1] if n is None else n
    if not isinstance(n, (int, np.integer)) or not power_of_two(n) or x.shape[-1] == 0:
        return Unfit
    padded = np.zeros(x.shape[:-1] + (int(n),))
    padded[..., :min(n, x.shape[-1])] = x[..., :n]
    return transform(int(n), norm, "f8").forward(padded)


def irfft(x, n=None, axis=-1, norm=None, *unused, **also):
    x = np.asarray(x)
    if x.dtype != np.complex128 or also or unused or x.ndim == 0 or axis not in (-1, x.ndim - 1) or norm == "ortho" or norm not in (
            None, "backward", "forward"):
        return Unfit
    n = 2 * (x.shape[-1] - 1) if n is None else n
    if not isinstance(n, (int, np.integer)) or not power_of_two(n) or n < 2 or x.shape[-1] == 0:
        return Unfit
    bins = np.zeros(x.shape[:-1] + (int(n) // 2 + 1,), complex)
    bins[..., :min(n // 2 + 1, x.shape[-1])] = x[..., :n // 2 + 1]
    return transform(int(n), norm, "f8").inverse(bins)


def lfilter(b, a, x, axis=-1, zi=None):
    if zi is not None:
        return Unfit
    b, a, x = (np.asarray(v) for v in (b, a, x))
    if any(v.dtype != np.float64 for v in (b, a, x)) or b.ndim != 1 or a.ndim != 1 or x.ndim == 0 or not -x.ndim <= axis < x.ndim:
        return Unfit
    if not b.size or not a.size or a[0] == 0 or x.size == 0:
        return Unfit
    rows = np.ascontiguousarray(np.moveaxis(x, axis, -1))
    out = np.empty_like(rows)
    for place in np.ndindex(rows.shape[:-1]):
        stream = qvr.FIR(b / a[0]) if a.size == 1 else qvr.IIR(b, a)
        stream(rows[place], out[place])
    return np.moveaxis(out, -1, axis)


def upfirdn(h, x, up=1, down=1, axis=-1, mode="constant", cval=0):
    h, x = np.asarray(h), np.asarray(x)
    if x.dtype != np.float32 or h.dtype != np.float32 or h.ndim != 1 or mode != "constant" or cval or not h.size or x.ndim == 0:
        return Unfit
    if not (isinstance(up, (int, np.integer)) and isinstance(down, (int, np.integer)) and up > 0 and down > 0) or x.shape[axis] == 0:
        return Unfit
    return np.moveaxis(qvr.upfirdn(h, np.ascontiguousarray(np.moveaxis(x, axis, -1)), up, down), -1, axis)


def two_singles(a, b, mode):
    return isinstance(a, np.ndarray) and isinstance(b, np.ndarray) and a.dtype == b.dtype == np.float32 and a.ndim == b.ndim == 1 \
        and a.size and b.size and mode in ("full", "same", "valid")


def part(full, a, b, mode):
    if mode == "full":
        return full
    size = len(a) if mode == "same" else abs(len(a) - len(b)) + 1
    start = (len(full) - size) // 2
    return full[start:start + size]


def convolve(a, b, mode="full", *unused, **also):
    return part(qvr.convolve(a, b, copy=True), a, b, mode) if two_singles(a, b, mode) else Unfit


def correlate(a, b, mode="full", *unused, **also):
    return part(qvr.correlate(b, a, copy=True), a, b, mode) if two_singles(a, b, mode) else Unfit


def medfilt(volume, kernel_size=None):
    x = np.asarray(volume)
    if x.dtype != np.float32 or x.ndim != 1 or not isinstance(kernel_size, int) or kernel_size % 2 == 0 or kernel_size > x.size:
        return Unfit
    # SciPy takes zeros for what is outside: as many in front and behind as the window reaches, cut off again.
    reach = kernel_size // 2 + 1
    return qvr.median_filter(np.pad(x, reach), kernel_size)[reach:-reach]


def hilbert(x, N=None, axis=-1):  # noqa: N803
    x = np.asarray(x)
    if x.dtype != np.float32 or N is not None or x.ndim == 0 or axis not in (-1, x.ndim - 1) or x.shape[-1] < 3:
        return Unfit
    return qvr.Hilbert(x.shape[-1])(x, copy=True)


def firwin(numtaps, cutoff, width=None, window="hamming", pass_zero=True, scale=True, nyq=None, fs=None):
    cutoff = np.atleast_1d(cutoff)
    if width is not None or not isinstance(pass_zero, (bool, str)) or window not in ("hamming", "hann") or nyq is not None or fs not in (None, 2) or not scale or numtaps < 5:
        return Unfit
    if cutoff.ndim != 1 or not (0 < cutoff).all() or not (cutoff < 1).all() or not (np.diff(cutoff) > 0).all() or numtaps % 2 == 0:
        return Unfit
    kind = {True: ("lowpass", "bandstop"), False: ("highpass", "bandpass")}.get(pass_zero, (pass_zero,) * 2)
    if len(cutoff) == 1 and kind[0] in ("lowpass", "highpass"):
        return getattr(qvr, "fir_" + kind[0])(numtaps, cutoff[0] / 2, window=window)
    if len(cutoff) == 2 and kind[1] in ("bandpass", "bandstop"):
        return getattr(qvr, "fir_" + kind[1])(numtaps, *(cutoff / 2), window=window)
    return Unfit


def design(kind):
    def made(N, *arguments, btype="low", analog=False, output="ba", fs=None):  # noqa: N803
        *ripple, cutoff = arguments[:1 + (kind == "chebyshev")]
        btype = arguments[2:3] and arguments[2] if kind == "chebyshev" else arguments[1:2] and arguments[1] or btype
        btype = btype or "low"
        if output != "ba" or analog or np.ndim(cutoff) or btype not in ("low", "high", "lowpass", "highpass") or len(arguments) > 3:
            return Unfit
        cutoff = cutoff / (fs or 2)
        if not isinstance(N, (int, np.integer)) or not 1 <= N <= 12 or not 0 < cutoff < 0.5 or (ripple and not 0 < ripple[0] <= 29):
            return Unfit
        if kind == "butterworth" and len(arguments) > 2:
            return Unfit
        return getattr(qvr, "iir_" + btype[:4].rstrip("p") + "pass" if btype.startswith("high") else "iir_lowpass")(
            int(N), float(cutoff), kind=kind, ripple=float(ripple[0]) if ripple else 0.0)
    return made


def adapt(modules, name, ours):
    original = getattr(modules[0], name)

    @functools.wraps(original)
    def call(*arguments, **keywords):
        try:
            result = ours(*arguments, **keywords)
        except TypeError as error:
            if isinstance(error, qvr.Error):
                raise
            result = Unfit  # arguments of another form
        if result is Unfit:
            return original(*arguments, **keywords)
        taken[f"{modules[0].__name__}.{name}"] += 1
        return result

    for module in modules:
        setattr(module, name, call)


adapt([numpy.fft, numpy.fft._pocketfft], "rfft", rfft)
adapt([numpy.fft, numpy.fft._pocketfft], "irfft", irfft)
adapt([scipy.fft], "rfft", rfft)
adapt([scipy.fft], "irfft", irfft)
tools = scipy.signal._signaltools
for name, ours in (("lfilter", lfilter), ("convolve", convolve), ("fftconvolve", convolve), ("oaconvolve", convolve), ("correlate", correlate),
                   ("medfilt", medfilt), ("hilbert", hilbert)):
    adapt([scipy.signal, tools], name, ours)
adapt([scipy.signal, scipy.signal._upfirdn, tools], "upfirdn", upfirdn)
adapt([scipy.signal, scipy.signal._fir_filter_design], "firwin", firwin)
adapt([scipy.signal, scipy.signal._filter_design], "butter", design("butterworth"))
adapt([scipy.signal, scipy.signal._filter_design], "cheby1", design("chebyshev"))


@atexit.register
def write():
    if "QVR_ADAPTED" in os.environ:
        with open(os.environ["QVR_ADAPTED"], "w") as file:
            json.dump(taken, file)
