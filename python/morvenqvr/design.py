"""What stands on the library's functions: filter design with a look at the poles, cascades of sections, whole signals
through the streaming objects."""
import decimal
import threading
import warnings

import numpy

from . import _core
from ._errors import ArgumentError, ArrayError, Warning


def _poles(a):
    """Roots of z^n + a[1] z^(n - 1) + ..: poles of a low cut-off lie so close together that double precision misses them by a
    hundredth, so they are found in 60 digits, all at once, by the method of Weierstrass."""
    with decimal.localcontext(decimal.Context(prec=60)):
        D = decimal.Decimal
        coefficients = [D(float(c)) for c in a]
        roots = [(D(z.real), D(z.imag)) for z in numpy.roots(a) * (1 + 1e-6 * numpy.arange(len(a) - 1))]
        for _ in range(500):
            moved = D(0)
            for k, (x, y) in enumerate(roots):
                p, q = coefficients[0], D(0)
                for c in coefficients[1:]:
                    p, q = p * x - q * y + c, p * y + q * x
                r, s = coefficients[0], D(0)
                for j, (u, v) in enumerate(roots):
                    if j != k:
                        r, s = r * (x - u) - s * (y - v), r * (y - v) + s * (x - u)
                size = r * r + s * s
                if size == 0:
                    continue
                dx, dy = (p * r + q * s) / size, (q * r - p * s) / size
                roots[k] = x - dx, y - dy
                moved = max(moved, abs(dx), abs(dy))
            if moved < D("1e-25"):
                break
        return numpy.array([complex(x, y) for x, y in roots])


def _poles_warned(function, a):
    if not numpy.isfinite(a).all():
        raise ArgumentError(function, None, "cutoff", "wanted finite numbers; the coefficients are not")
    poles = numpy.roots(a)
    if poles.size and not abs(poles).max() < 0.9:
        poles = _poles(a)
    if poles.size:
        largest = poles[numpy.argmax(abs(poles))]
        if not abs(largest) < 1:
            warnings.warn(Warning(function, None, None, f"the pole {largest:.6g} of magnitude {abs(largest):.6g} is not inside the unit "
                                  "circle, so the filter is unstable; IIR.sections designs a stable cascade"), stacklevel=3)


def iir_lowpass(order, cutoff, *, kind="butterworth", ripple=0.0):
    """Coefficients (b, a) of a recursive low-pass filter.

        order: 1 to 12
        cutoff: as a fraction of the sampling rate, between 0 and 0.5: 3 dB down for "butterworth", the end of the ripple
                for "chebyshev"
        kind: "butterworth" or "chebyshev" (type I)
        ripple: pass-band ripple in decibels, above 0 up to 29; Chebyshev only

    Warns, with the pole, where rounding has moved one out of the unit circle.
    """
    b, a = _core._iir_lowpass(order, cutoff, kind=kind, ripple=ripple).reshape(2, -1)
    _poles_warned("iir_lowpass", a)
    return b, a


def iir_highpass(order, cutoff, *, kind="butterworth", ripple=0.0):
    """Coefficients (b, a) of a recursive high-pass filter; arguments as in iir_lowpass."""
    b, a = _core._iir_highpass(order, cutoff, kind=kind, ripple=ripple).reshape(2, -1)
    _poles_warned("iir_highpass", a)
    return b, a


def second_order_sections(order, cutoff, band="lowpass", *, kind="butterworth", ripple=0.0):
    """Sections of a recursive filter, rows of b0, b1, b2, 1, a1, a2: poles of the analogue prototype, moved one by one by the
    bilinear transform, so that low cut-offs and high orders lose nothing.

        order: 1 to 64
        cutoff: as a fraction of the sampling rate, between 0 and 0.5
        band: "lowpass" or "highpass"
        kind, ripple: as in iir_lowpass
    """
    name = "second_order_sections"
    if not (isinstance(order, (int, numpy.integer)) and 1 <= order <= 64):
        raise ArgumentError(name, "qvrErrBadFilterOrder", "order", f"wanted an integer from 1 to 64; got {order!r}")
    if not 0 < cutoff < 0.5:
        raise ArgumentError(name, "qvrErrBadCutoff", "cutoff", f"wanted a fraction between 0 and 0.5; got {cutoff!r}")
    if band not in ("lowpass", "highpass"):
        raise ArgumentError(name, "qvrErrBadSelector", "band", f"wanted 'lowpass' or 'highpass'; got {band!r}")
    if kind not in ("butterworth", "chebyshev"):
        raise ArgumentError(name, "qvrErrBadSelector", "kind", f"wanted 'butterworth' or 'chebyshev'; got {kind!r}")
    if kind == "chebyshev" and not 0 < ripple <= 29:
        raise ArgumentError(name, "qvrErrBadRipple", "ripple", f"wanted decibels above 0 up to 29; got {ripple!r}")
    # Poles in the left half plane for a cut-off of 1: on the unit circle, or on an ellipse.
    angle = numpy.pi * (2 * numpy.arange((order + 1) // 2) + 1) / (2 * order)
    narrow = wide = 1.0
    if kind == "chebyshev":
        mu = numpy.arcsinh(1 / numpy.sqrt(numpy.expm1(ripple * numpy.log(10) / 10))) / order
        narrow, wide = numpy.sinh(mu), numpy.cosh(mu)
    poles = -narrow * numpy.sin(angle) + 1j * wide * numpy.cos(angle)
    warped = numpy.tan(numpy.pi * cutoff)
    poles = warped * poles if band == "lowpass" else warped / poles
    digital = (1 + poles) / (1 - poles)
    zero = -1.0 if band == "lowpass" else 1.0
    sections = []
    for k, pole in enumerate(digital):
        if order % 2 and k == order // 2:
            b, a = numpy.array([1, -zero, 0]), numpy.array([1, -pole.real, 0])
        else:
            b, a = numpy.array([1, -2 * zero, 1]), numpy.array([1, -2 * pole.real, abs(pole) ** 2])
        # Unit gain at the middle of the pass band, z = 1 or -1.
        at = numpy.array([1, -zero, 1])
        sections.append(numpy.concatenate([b * (a @ at) / (b @ at), a]))
    sections = numpy.array(sections)
    if kind == "chebyshev" and order % 2 == 0:
        sections[0, :3] *= 10 ** (-ripple / 20)
    return sections


class Sections:
    """Sections(sections)

    Second-order sections in a row, each an IIR, over a stream of float64 in blocks of any lengths.

        sections: rows of b0, b1, b2, a0, a1, a2
    """

    def __init__(self, sections):
        array = numpy.array(sections, numpy.float64, ndmin=2)
        if array.ndim != 2 or array.shape[1] != 6 or len(array) < 1:
            raise ArgumentError("Sections", "qvrErrBadSize", "sections", f"wanted rows of six coefficients; got the shape {array.shape}")
        self.coefficients = array
        self.filters = [_core.IIR(row[:3], row[3:]) for row in array]
        self._lock = threading.Lock()

    def __call__(self, x, out=None, *, copy=False):
        """Filters the next samples of the stream; out may be x. Calls in several threads wait for each other."""
        with self._lock:
            out = self.filters[0](x, out, copy=copy)
            for section in self.filters[1:]:
                section(out, out)
        return out

    def reset(self):
        """Back to a past of zeros."""
        with self._lock:
            for section in self.filters:
                section.reset()

    def __reduce__(self):
        for section in self.filters:
            section.__reduce__()  # raises in mid-stream
        return Sections, (self.coefficients,)

    def close(self):
        """Releases the memory at once."""
        for section in self.filters:
            section.close()

    def __enter__(self):
        return self

    def __exit__(self, *exception):
        self.close()

    def __repr__(self):
        return f"Sections({len(self.filters)} of second order)"


def upfirdn(taps, x, up=1, down=1, *, scale=0, copy=False):
    """The whole of a signal through FIRMultirate, along the last axis: up - 1 zeros behind each sample, filter, keep every
    down-th; ceil(((n - 1) * up + len(taps)) / down) outputs for n samples of float32 or int16.
    """
    if copy:
        x = numpy.asarray(x)
        x = x if x.dtype == numpy.int16 else numpy.asarray(x, numpy.float32)
    if not isinstance(x, numpy.ndarray):
        raise ArrayError("upfirdn", None, "x", f"wanted an array of float32 or int16; got {type(x).__name__}")
    stream = _core.FIRMultirate(taps, up, down, dtype=x.dtype)
    n = x.shape[-1] if x.ndim else 0
    if n == 0:
        return numpy.zeros(x.shape, x.dtype)
    length = -(-((n - 1) * up + len(stream.taps)) // down)
    out = numpy.empty(x.shape[:-1] + (length,), x.dtype)
    for place in numpy.ndindex(x.shape[:-1]):
        stream.reset()
        first = min(stream.output_length(n), length)
        if first == stream.output_length(n):
            stream(x[place], out[place][:first], scale=scale, copy=copy)
            if first < length:
                out[place][first:] = stream.flush(scale=scale)
        else:
            out[place] = stream(x[place], scale=scale, copy=copy)[:length]
    return out


def daubechies(moments):
    """(low, high, inverse_low, inverse_high): taps of the orthogonal wavelet with so many vanishing moments, 1 to 20."""
    if not (isinstance(moments, (int, numpy.integer)) and 1 <= moments <= 20):
        raise ArgumentError("daubechies", "qvrErrBadSize", "moments", f"wanted an integer from 1 to 20; got {moments!r}")
    # |H|^2 = cos(w/2)^2p P(sin(w/2)^2), P(y) = sum of C(p - 1 + k, k) y^k: for each root y the zero z inside the circle of
    # y = (2 - z - 1/z) / 4.
    p = int(moments)
    coefficients = [1.0]
    for k in range(1, p):
        coefficients.append(coefficients[-1] * (p - 1 + k) / k)
    inside = []
    for y in numpy.roots(coefficients[::-1]):
        z = numpy.roots([1, 4 * y - 2, 1])
        inside.append(z[numpy.argmin(abs(z))])
    taps = numpy.real(numpy.poly(numpy.concatenate([numpy.full(p, -1.0), inside])))
    reconstruct = taps * numpy.sqrt(2) / taps.sum()
    alternating = numpy.where(numpy.arange(2 * p) % 2, -1.0, 1.0)
    low, inverse_high = reconstruct[::-1].copy(), reconstruct[::-1] * alternating
    return low, inverse_high[::-1].copy(), reconstruct, inverse_high


def _bank(function, wavelet, count):
    """The first taps of a filter bank."""
    taps = list(wavelet)[:count] if isinstance(wavelet, (list, tuple)) else []
    if len(taps) < count or any(numpy.ndim(t) != 1 or len(t) < 2 for t in taps):
        raise ArgumentError(function, "qvrErrBadSize", "wavelet", f"wanted {count} filters of two taps or more, as of daubechies")
    return [numpy.asarray(t, numpy.float32) for t in taps]


def wavedec(x, wavelet, levels, *, copy=False):
    """Coefficients of a whole float32 signal with zeros round it: [approximation, details from coarse to fine].

        wavelet: (low, high, ...) taps, as of daubechies
        levels: how often the approximation is split again
    """
    taps = _bank("wavedec", wavelet, 2)
    if not isinstance(levels, (int, numpy.integer)) or levels < 0:
        raise ArgumentError("wavedec", "qvrErrBadSize", "levels", f"wanted an integer from 0; got {levels!r}")
    if not isinstance(x, numpy.ndarray) and copy:
        x = numpy.asarray(x, numpy.float32)
    if not isinstance(x, numpy.ndarray) or x.ndim != 1:
        raise ArrayError("wavedec", None, "x", f"wanted an array of float32 and one axis; got {type(x).__name__}")
    details = []
    for _ in range(levels):
        with _core.Wavelet(*taps) as stream:
            parts = [stream.forward(x, copy=copy)]
            due = (len(x) + len(taps[0]) - 1) // 2 - len(parts[0][0])
            if due > 0:
                parts.append(stream.forward(numpy.zeros(2 * due - len(x) % 2, numpy.float32)))
        x = numpy.concatenate([part[0] for part in parts])
        details.append(numpy.concatenate([part[1] for part in parts]))
    return [x, *details[::-1]]


def waverec(coefficients, wavelet, *, copy=False):
    """The signal of wavedec's coefficients; of an odd length the last sample is one too many."""
    taps = _bank("waverec", wavelet, 4)
    if not isinstance(coefficients, (list, tuple)) or not coefficients or any(numpy.ndim(c) != 1 for c in coefficients):
        raise ArgumentError("waverec", "qvrErrBadSize", "coefficients", "wanted a list of arrays, as wavedec gives it")
    x = coefficients[0]
    for detail in coefficients[1:]:
        x = x[:len(detail)]
        with _core.Wavelet(*taps) as stream:
            # The first len(taps) - 2 samples lie before the signal.
            x = stream.inverse(x, detail, copy=copy)[len(taps[2]) - 2:]
    return x
