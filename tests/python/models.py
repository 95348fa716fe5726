"""Models of the element-wise and row functions in numpy and scipy, written from the contract, with bounds of the difference."""
import numpy as np
import scipy.ndimage
import scipy.signal as ss

LIMITS = {"u1": (0, 255), "u2": (0, 65535), "i2": (-32768, 32767), "i4": (-2**31, 2**31 - 1)}


def saturated(value, dtype, scale=0):
    """value / 2^scale, half to even, saturated; floating point stays."""
    kind = np.dtype(dtype).str[1:]
    if kind not in LIMITS:
        return np.asarray(value)
    return np.clip(np.rint(np.asarray(value, "f8") / 2.0 ** scale), *LIMITS[kind])


def wide(x):
    """Exact in double, or as it is."""
    return x.astype("f8") if isinstance(x, np.ndarray) and x.dtype.kind in "iuf" else x


def half_away(x):
    return np.trunc(x + np.copysign(0.5, x))


ROUND = {"toward_zero": np.trunc, "nearest": np.rint, "half_away": half_away, None: np.rint}


def convert(x, dtype, scale=0, rounding=None):
    value = x.astype("f8") * 2.0 ** -scale
    if np.dtype(dtype).kind == "f":
        return np.clip(value, -np.finfo(dtype).max, np.finfo(dtype).max)
    return ROUND[rounding](np.clip(value, *LIMITS[np.dtype(dtype).str[1:]]))


def crossings(x, kind):
    a, b = x[:-1], x[1:]
    if kind == "product":
        return np.count_nonzero(a * b < 0)
    if kind == "sign_bit":
        return np.count_nonzero(np.signbit(a) != np.signbit(b))
    return 0.5 * abs(np.sign(b) - np.sign(a)).sum()


def compensate(x, previous, factor):
    y, out = previous * factor, []
    for i in range(len(x) - 1):
        y = y if i == 0 else y * factor + (x[i] - x[i - 1])
        out.append(y)
    return np.array(out), x[-1]


def compensate_in_place(x, last, previous, factor):
    out = [previous * factor + (x[0] - last)]
    for i in range(1, len(x)):
        out.append((x[i] - out[-1]) + x[i - 1] * factor)
    return np.array(out), x[-1]


def biased(a, b, length, bias):
    get = lambda i: b[i + bias] if 0 <= i + bias < len(b) else 0  # noqa: E731
    return np.array([sum(a[k] * get(n - k) for k in range(len(a))) for n in range(length)])


def correlate(a, b, length=None, low_lag=None):
    full = np.correlate(b, a, "full")  # lags 1 - len(a) .. len(b) - 1
    low_lag = 1 - len(a) if low_lag is None else low_lag
    length = len(a) + len(b) - 1 if length is None else length
    at = np.arange(low_lag, low_lag + length) + len(a) - 1
    return np.where((at >= 0) & (at < len(full)), full[np.clip(at, 0, len(full) - 1)], 0)


def sinc_taps(length, edges, window, normalize, band):
    """Windowed sinc between two edges; the gain at the reference frequency is 1."""
    k = np.arange(length) - (length - 1) / 2
    ideal = sum(sign * 2 * f * np.sinc(2 * f * k) for f, sign in edges)
    if window == "blackman":
        t = 2 * np.pi * np.arange(length) / (length - 1)
        a = -(0.5 / np.cos(np.pi / (length - 1))) ** 2
        weights = (a + 1) / 2 - 0.5 * np.cos(t) - a / 2 * np.cos(2 * t)
    else:
        weights = ss.get_window({"hann": "hann"}.get(window, window), length, fftbins=False)
    taps = ideal * weights
    gain = abs(np.sum(taps * np.exp(-2j * np.pi * band * np.arange(length))))
    return taps / gain


def high(length):
    """Sinc of half the sampling rate: one at the centre of odd lengths, the antisymmetric form is not modelled."""
    assert length % 2
    return 0.5, 1


def iir(order, cutoff, kind, ripple, band):
    made = ss.butter(order, 2 * cutoff, band) if kind == "butterworth" else ss.cheby1(order, ripple, 2 * cutoff, band)
    return np.concatenate(made)


def median(x, size):
    size -= size % 2 == 0
    y = scipy.ndimage.median_filter(x, size, mode="nearest")
    y[[0, -1]] = x[[0, -1]]
    return y


# Name -> model(inputs and arguments by name, dtype of the result).
MODELS = {
    "add": lambda a, b, out, scale=0: saturated(wide(a) + b, out, scale),
    "sub": lambda a, b, out, scale=0: saturated(np.maximum(wide(a) - b, 0) if out == np.uint16 else wide(a) - wide(b), out, scale),
    "mul": lambda a, b, out: saturated(a * b if np.iscomplexobj(a) else wide(a) * b, out),
    "div": lambda a, b, out: wide(a) / b if isinstance(b, np.ndarray) or not isinstance(a, np.ndarray) else a * np.float32(np.float32(1) / np.float32(b)),
    "abs": lambda x, out: saturated(abs(wide(x)), out),
    "sqr": lambda x, out: wide(x) ** 2,
    "sqrt": lambda x, out: np.sqrt(wide(x)),
    "ceil": lambda x, out: np.ceil(x),
    "floor": lambda x, out: np.floor(x),
    "min_every": lambda a, b, out: np.minimum(a, b),
    "max_every": lambda a, b, out: np.maximum(a, b),
    "fill": lambda value, out, shape: np.full(shape, value),
    "image_fill": lambda value, out, shape: np.full(shape, value),
    "zero": lambda out, shape: np.zeros(shape),
    "copy": lambda x, out: x,
    "convert": lambda x, out, scale=0, rounding=None: convert(x, out, scale, rounding),
    "normalize": lambda x, out, subtract, divide: (wide(x) - subtract) / divide,
    "sum": lambda x, out, scale=0: saturated(wide(x).sum(-1), "i4", scale),
    "mean": lambda x, out, scale=0: saturated(np.rint(wide(x).mean(-1)) if x.dtype == np.int32 else wide(x).mean(-1), x.dtype, scale),
    "std": lambda x, out: wide(x).std(-1, ddof=1),
    "min": lambda x, out: x.min(-1), "max": lambda x, out: x.max(-1), "min_max": lambda x, out: (x.min(-1), x.max(-1)),
    "min_index": lambda x, out: (x.min(-1), x.argmin(-1)), "max_index": lambda x, out: (x.max(-1), x.argmax(-1)),
    "sum_window": lambda x, out, size: np.lib.stride_tricks.sliding_window_view(wide(x), size).sum(-1),
    "bitwise_and": lambda a, b, out: a & np.uint16(b), "bitwise_or": lambda a, b, out: a | b,
    "left_shift": lambda a, b, out: (a.astype("i8") << b) & 65535, "right_shift": lambda a, b, out: a >> np.uint16(b),
    "threshold": lambda x, out, level, relation: np.maximum(x, level) if relation == "less" else np.minimum(x, level),
    "threshold_gt": lambda x, out, level, value: np.where(x > level, value, x),
    "threshold_lt": lambda x, out, level, value: np.where(x < level, value, x),
    "replace": lambda x, out, old, new: np.where(x == old, new, x),
    "find": lambda x, pattern, out: next((k for k in range(len(x) - len(pattern) + 1) if (x[k:k + len(pattern)] == pattern).all()), -1),
    "sort": lambda x, out: np.sort(x),
    "sign_change_rate": lambda x, out: 0.5 * abs(np.diff(np.sign(x))).sum(),
    "zero_crossing": lambda x, out, kind: crossings(x, kind),
    "compensate_offset": lambda x, out, previous, factor: compensate(x, previous, factor),
    "compensate_offset_in_place": lambda x, out, last, previous, factor: compensate_in_place(x, last, previous, factor),
    "convolve": lambda a, b, out: np.convolve(wide(a), wide(b)),
    "convolve_biased": lambda a, b, out, length, bias: biased(wide(a), wide(b), length, bias),
    "correlate": lambda a, b, out, length=None, low_lag=None: correlate(wide(a), wide(b), length, low_lag),
    "autocorrelate": lambda x, out, length=None: correlate(wide(x), wide(x), len(x) if length is None else length, 0),
    "win_bartlett": lambda x, out: x * ss.get_window("bartlett", x.shape[-1], False),
    "win_hann": lambda x, out: x * ss.get_window("hann", x.shape[-1], False),
    "win_hamming": lambda x, out: x * ss.get_window("hamming", x.shape[-1], False),
    "win_blackman_std": lambda x, out: x * ss.get_window("blackman", x.shape[-1], False),
    "_iir_lowpass": lambda out, order, cutoff, kind="butterworth", ripple=0: iir(order, cutoff, kind, ripple, "lowpass"),
    "_iir_highpass": lambda out, order, cutoff, kind="butterworth", ripple=0: iir(order, cutoff, kind, ripple, "highpass"),
    "fir_lowpass": lambda out, length, cutoff, window="hamming": sinc_taps(length, [(cutoff, 1)], window, True, 0),
    "fir_highpass": lambda out, length, cutoff, window="hamming": sinc_taps(length, [high(length), (cutoff, -1)], window, True, 0.5),
    "fir_bandpass": lambda out, length, low, high, window="hamming": sinc_taps(length, [(high, 1), (low, -1)], window, True, (low + high) / 2),
    "fir_bandstop": lambda out, length, low, high, window="hamming": sinc_taps(length, [(0.5, 1), (high, -1), (low, 1)], window, True, 0),
    "median_filter": lambda x, out, size: median(x, size),
    "sample_up": lambda x, out, factor, phase=0: (np.insert(np.zeros((factor - 1, len(x))), phase, x, 0).T.ravel(), phase),
    "sample_down": lambda x, out, factor, phase=0: (x[phase::factor], (phase - len(x)) % factor),
    "image_add": lambda a, b, out, scale=0: saturated(a.astype("f8") + b, out, scale),
    "image_copy": lambda x, mask, out, old: np.where(mask != 0, x, old),
    "image_convert": lambda x, out: x,
    "lut": lambda x, table, out, bits: table[x & (2 ** bits - 1)],
    "pow": lambda x, y, out: np.power(wide(x), wide(y)),
    "atan2": lambda y, x, out: np.arctan2(wide(y), wide(x)),
    "atan": lambda x, out: np.arctan(wide(x)), "asin": lambda x, out: np.arcsin(wide(x)), "acos": lambda x, out: np.arccos(wide(x)),
    "ln": lambda x, out: np.log(wide(x)), "log10": lambda x, out: np.log10(wide(x)), "exp": lambda x, out: np.exp(wide(x)),
    "phase": lambda x, out: np.angle(x),
    "magnitude": lambda x, out, scale=0: saturated(np.hypot(x["re"].astype("f8"), x["im"]), "i2", scale) if x.dtype.names else abs(x),
    **{name: (lambda f: lambda x, out: f(wide(x)))(getattr(np, name)) for name in ("sin", "cos", "tan", "sinh", "cosh", "tanh")},
}

# Arguments with which each is run; by default none.
ARGUMENTS = {
    "add": [{}, {"scale": 1}, {"scale": -2}], "sub": [{}, {"scale": 1}], "image_add": [{}, {"scale": 1}],
    "convert": [{}, {"scale": 2}, {"rounding": "toward_zero"}, {"rounding": "half_away", "scale": -1}],
    "normalize": [{"subtract": 1.5, "divide": 4.0}], "sum": [{}, {"scale": 2}], "mean": [{}, {"scale": 1}],
    "sum_window": [{"size": 1}, {"size": 7}], "threshold": [{"level": 0.25, "relation": "less"}, {"level": 0.25, "relation": "greater"}],
    "threshold_gt": [{"level": 0.25, "value": 9.0}], "threshold_lt": [{"level": 0.25, "value": -9.0}], "replace": [{"old": 3, "new": 7}],
    "zero_crossing": [{"kind": kind} for kind in ("product", "sign_bit", "sign_step")],
    "compensate_offset": [{"previous": 0.5, "factor": 0.9}],
    "compensate_offset_in_place": [{"last": 0.25, "previous": 0.5, "factor": 0.9}],
    "convolve_biased": [{"length": 9, "bias": 0}, {"length": 30, "bias": 4}, {"length": 5, "bias": -3}],
    "correlate": [{}, {"length": 11, "low_lag": -2}, {"low_lag": 0}], "autocorrelate": [{}, {"length": 9}, {"length": 100}],
    "_iir_lowpass": [{"order": 4, "cutoff": 0.1}, {"order": 3, "cutoff": 0.3, "kind": "chebyshev", "ripple": 1.0}],
    "_iir_highpass": [{"order": 4, "cutoff": 0.1}, {"order": 3, "cutoff": 0.3, "kind": "chebyshev", "ripple": 1.0}],
    "fir_lowpass": [{"length": n, "cutoff": 0.2, "window": w} for n in (9, 32) for w in ("bartlett", "blackman", "hamming", "hann")],
    "fir_highpass": [{"length": 33, "cutoff": 0.2}], "fir_bandpass": [{"length": 33, "low": 0.1, "high": 0.3}],
    "fir_bandstop": [{"length": 33, "low": 0.1, "high": 0.3}],
    "median_filter": [{"size": 1}, {"size": 3}, {"size": 5}, {"size": 11}],
    "sample_up": [{"factor": 3}, {"factor": 4, "phase": 2}], "sample_down": [{"factor": 3}, {"factor": 4, "phase": 2}, {"factor": 1}],
    "lut": [{"bits": 4}, {"bits": 8}], "fill": [{"value": 7}], "image_fill": [{"value": 7}],
    "magnitude": [{}, {"scale": 2}],
}

# Bounds: relative, absolute. By default a rounding of the result's type; integers are exact.
BOUNDS = {
    "phase": (1e-6, 1e-6),
    "std": (1e-5, 0), "normalize": (3e-7, 1e-6), "win_hann": (2e-6, 2e-6), "win_hamming": (2e-6, 1), "win_blackman_std": (2e-6, 2e-6),
    "win_bartlett": (2e-6, 2e-6), "mul": (5e-7, 1e-6),
    "_iir_lowpass": (1e-9, 1e-11), "_iir_highpass": (1e-9, 1e-11), "fir_lowpass": (1e-9, 1e-12), "fir_highpass": (1e-9, 1e-12),
    "fir_bandpass": (1e-9, 1e-12), "fir_bandstop": (1e-9, 1e-12), "magnitude": (1e-6, 0), "sub": (2e-7, 1e-7), "add": (2e-7, 1e-7),
    "mean": (2e-7, 1e-7),
}
# Sums of single precision: relative to the largest result.
SUMS = {"convolve", "convolve_biased", "correlate", "autocorrelate", "compensate_offset", "compensate_offset_in_place"}
# Where small results come from cancelling, as sin near pi: absolute bounds of the 11-bit class.
ABSOLUTE = {"sin": 2e-4, "cos": 2e-4}


def bound(name, accuracy, dtype):
    if accuracy:
        return 2.0 ** (1 - accuracy) + 1e-7 if accuracy < 22 else 2.0 ** (2 - accuracy), ABSOLUTE.get(name, 1e-38)
    if np.dtype(dtype).kind not in "fc":
        return BOUNDS[name] if name == "win_hamming" else (0, 0)
    return BOUNDS.get(name, (2e-7 if np.dtype(dtype).itemsize == 4 else 1e-15, 0))
