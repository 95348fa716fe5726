#!/usr/bin/env python3
"""Everyday tasks by SciPy, NumPy, PyWavelets or Pillow and by this package: results compared, both timed in turn on one core.

    instead_of_scipy.py [--core 1] [--rounds 25] [--docs FOLDER]

Writes docs/instead-of-scipy.md, its plot docs/pictures/instead-of-scipy.svg and the figures docs/performance/python.json.
"""
import argparse
import ctypes
import json
import os
import platform
import time
from pathlib import Path

arguments = argparse.ArgumentParser(description=__doc__.split("\n")[0])
arguments.add_argument("--core", type=int, default=1)
arguments.add_argument("--rounds", type=int, default=25)
arguments.add_argument("--docs", type=Path, default=Path(__file__).resolve().parents[2] / "docs")
options = arguments.parse_args()
os.sched_setaffinity(0, {options.core})  # before the libraries count processors
# Memory that is freed stays with the process (M_TRIM_THRESHOLD, M_MMAP_THRESHOLD): neither side pays for fresh pages, which
# would depend on what lies behind a block by chance.
for parameter in (-1, -3):
    ctypes.CDLL(None).mallopt(parameter, 1 << 30)

import numpy as np  # noqa: E402
import PIL  # noqa: E402
import pywt  # noqa: E402
import scipy  # noqa: E402
import scipy.fft  # noqa: E402
import scipy.ndimage  # noqa: E402
import scipy.signal as ss  # noqa: E402
from PIL import Image  # noqa: E402

import morvenqvr as qvr  # noqa: E402

rng = np.random.default_rng(2026)

# What both columns of a task find; made once.
x = rng.standard_normal(65536).astype(np.float32)
x4k, x64 = x[:4096].copy(), x.astype(np.float64)
rows = x.reshape(64, 1024)
positive, small = abs(x) + np.float32(0.01), x.clip(-1, 1)
y, out, out64 = x[::-1].copy(), np.empty_like(x), np.empty_like(x64)
z = (x + 1j * y).astype(np.complex64)
pcm = (x * 8000).clip(-32768, 32767).astype(np.int16)
taps, long_taps = ss.firwin(63, 0.2).astype(np.float32), ss.firwin(2001, 0.2).astype(np.float32)
b, a = ss.butter(4, 0.2)
sos = ss.butter(8, 0.01, output="sos")
rate_taps = ss.firwin(1601, 1 / 160) * 160
half_taps = ss.firwin(63, 0.25)
wavelet, bank = qvr.daubechies(4), pywt.Wavelet("db4")
light = scipy.ndimage.gaussian_filter(rng.standard_normal((768, 1024, 4)), (2, 2, 0))
photo = (128 + 200 * light).clip(0, 255).astype(np.uint8)
photo[..., 3] = 255
picture, grey = Image.fromarray(photo, "RGBA"), np.ascontiguousarray(photo[..., 0])
grey_picture = Image.fromarray(grey)
fft4k, fft64, fft1k = qvr.RealFFT(4096), qvr.RealFFT(65536, dtype=np.float64), qvr.RealFFT(1024)
spectrum = np.fft.rfft(x4k).astype(np.complex64)
hilbert = qvr.Hilbert(10000)
fir, iir, sections = qvr.FIR(taps), qvr.IIR(b, a), qvr.Sections(sos)
shrink = qvr.Resize((768, 1024), (240, 320), method="lanczos", antialias=True, channels=4, shift=(0.5 * 240 / 768, 0.5 * 320 / 1024))
half = qvr.Resize((768, 1024), (384, 512), method="area")
grow = qvr.Resize((768, 1024), (1536, 2048), method="linear")


def scipy_stream(state):
    for k in range(0, 65536, 512):
        out[k:k + 512], state = ss.lfilter(taps, 1, x[k:k + 512], zi=state)
    return out


def our_stream(filter_):
    for k in range(0, 65536, 512):
        filter_(x[k:k + 512], out[k:k + 512])
    return out


def scipy_recursive_stream(state):
    for k in range(0, 65536, 512):
        out64[k:k + 512], state = ss.lfilter(b, a, x64[k:k + 512], zi=state)
    return out64


def our_recursive_stream(filter_):
    for k in range(0, 65536, 512):
        filter_(x64[k:k + 512], out64[k:k + 512])
    return out64


# Task, line there, line here; how results differ by intent, if they do.
TASKS = [
    ("real FFT of 4096, float32", "scipy.fft.rfft(x4k)", "fft4k.forward(x4k)", ""),
    ("its inverse", "scipy.fft.irfft(spectrum)", "fft4k.inverse(spectrum)", ""),
    ("real FFT of 65536, float64", "scipy.fft.rfft(x64)", "fft64.forward(x64)", ""),
    ("real FFT of 64 rows of 1024", "scipy.fft.rfft(rows)", "fft1k.forward(rows)", ""),
    ("FIR filter, 63 taps", "ss.lfilter(taps, 1, x)", "qvr.FIR(taps)(x)", ""),
    ("FIR stream in blocks of 512", "scipy_stream(np.zeros(62, np.float32))", "our_stream(qvr.FIR(taps))", ""),
    ("long FIR filter, 2001 taps", "ss.oaconvolve(x, long_taps)[:65536]", "qvr.FIR(long_taps)(x)", ""),
    ("recursive filter of order 4", "ss.lfilter(b, a, x64)", "qvr.IIR(b, a)(x64)", ""),
    ("recursive stream in blocks of 512", "scipy_recursive_stream(np.zeros(4))", "our_recursive_stream(qvr.IIR(b, a))", ""),
    ("cascade of 4 sections", "ss.sosfilt(sos, x64)", "qvr.Sections(sos)(x64)", ""),
    ("design of a FIR low-pass, 255 taps", "ss.firwin(255, 0.2)", "qvr.fir_lowpass(255, 0.1)", ""),
    ("rate change by 160 / 147", "ss.upfirdn(rate_taps, x, 160, 147)", "qvr.upfirdn(rate_taps, x, 160, 147)", "float32 here, float64 there"),
    ("every fourth sample, 63 taps", "ss.upfirdn(half_taps, x, 1, 4)", "qvr.upfirdn(half_taps, x, 1, 4)", "float32 here, float64 there"),
    ("convolution of 65536 by 4096", "ss.fftconvolve(x, x4k)", "qvr.convolve(x, x4k)", ""),
    ("correlation of 4096 by 4096", "ss.correlate(x4k, x[:4096])", "qvr.correlate(x[:4096], x4k)", ""),
    ("analytic signal of 10000", "ss.hilbert(x[:10000])", "hilbert(x[:10000])", ""),
    ("median of 5", "scipy.ndimage.median_filter(x, 5, mode='nearest')", "qvr.median_filter(x, 5)", "ends stay here"),
    ("Hann window on 65536", "x * ss.get_window('hann', 65536, False).astype(np.float32)", "qvr.win_hann(x)", ""),
    ("wavelet decomposition, 5 levels", "pywt.wavedec(x, bank, 'zero', 5)", "qvr.wavedec(x, wavelet, 5)", ""),
    ("sum of arrays, out=", "np.add(x, y, out=out)", "qvr.add(x, y, out)", ""),
    ("sum of arrays of 16", "np.add(x[:16], y[:16])", "qvr.add(x[:16], y[:16])", "the calls alone"),
    ("exp of float32", "np.exp(x, out=out)", "qvr.exp(x, out)", ""),
    ("log of float32", "np.log(positive, out=out)", "qvr.ln(positive, out)", ""),
    ("sin of float32, 11 bits", "np.sin(x, out=out)", "qvr.sin(x, out)", "11 correct bits here"),
    ("arc tangent of float32", "np.arctan(x, out=out)", "qvr.atan(x, out)", ""),
    ("power, 11 bits", "np.power(positive, y, out=out)", "qvr.pow(positive, y, out, accuracy=11)", "11 correct bits here"),
    ("square root", "np.sqrt(positive, out=out)", "qvr.sqrt(positive, out)", ""),
    ("magnitude of complex64", "np.abs(z)", "qvr.magnitude(z)", "22 correct bits here"),
    ("angle of complex64", "np.angle(z)", "qvr.phase(z)", ""),
    ("clip to -1..1", "np.clip(x, -1, 1, out=out)", "qvr.threshold(qvr.threshold(x, -1, 'less', out), 1, 'greater', out)", ""),
    ("what exceeds 1 becomes 0", "np.where(x > 1, np.float32(0), x)", "qvr.threshold_gt(x, 1, 0)", ""),
    ("mean of float32", "np.mean(x)", "qvr.mean(x)", ""),
    ("minimum and its place", "(x.min(), x.argmin())", "qvr.min_index(x)", ""),
    ("sort float32", "np.sort(x)", "qvr.sort(x)", ""),
    ("int16 to float32", "pcm.astype(np.float32)", "qvr.convert(pcm, dtype=np.float32)", ""),
    ("float32 to int16, saturated", "np.rint(x * 30000).clip(-32768, 32767).astype(np.int16)",
     "qvr.convert(qvr.mul(x, 30000), dtype=np.int16)", ""),
    ("photograph to 240 x 320, Lanczos", "np.asarray(picture.resize((320, 240), Image.LANCZOS))", "shrink(photo)", "at the border, where Pillow drops weights and this repeats pixels"),
    ("half of a grey photograph, means", "np.asarray(grey_picture.reduce(2))", "half(grey)", ""),
    ("twice a grey photograph, linear", "np.asarray(grey_picture.resize((2048, 1536), Image.BILINEAR))", "grow(grey)", ""),
]


def seconds(code, least=0.002):
    """A function that runs the line often enough to be timed, and how often."""
    run = compile(code, "task", "eval")
    eval(run, globals())
    number = 1
    while True:
        start = time.perf_counter()
        for _ in range(number):
            eval(run, globals())
        spent = time.perf_counter() - start
        if spent >= least:
            return run, number
        number = max(number + 1, int(number * least / max(spent, 1e-7) * 1.2))


def difference(there, here):
    """Largest difference beside the largest result."""
    if isinstance(there, (list, tuple)):
        return max(difference(t, h) for t, h in zip(there, here))
    there, here = np.asarray(there), np.asarray(here)
    assert there.shape == here.shape, (there.shape, here.shape)
    wide = np.complex128 if there.dtype.kind == "c" else np.float64
    return float(abs(there.astype(wide) - here.astype(wide)).max() / max(abs(there.astype(wide)).max(), 1e-300))


def copied(result):
    return [copied(r) for r in result] if isinstance(result, (list, tuple)) else np.array(result)


def measure():
    results = []
    for task, there, here, note in TASKS:
        apart = difference(copied(eval(there)), copied(eval(here)))
        runs = [seconds(code) for code in (there, here)]
        best = [float("inf")] * 2
        for _ in range(options.rounds):
            for k, (run, number) in enumerate(runs):
                start = time.perf_counter()
                for _ in range(number):
                    eval(run, globals())
                best[k] = min(best[k], (time.perf_counter() - start) / number)
        results.append({"task": task, "there": there, "here": here, "note": note, "difference": apart,
                        "there_us": best[0] * 1e6, "here_us": best[1] * 1e6})
        print(f"{task:40} {best[0] * 1e6:10.2f} {best[1] * 1e6:10.2f}  {best[0] / best[1]:6.2f} times  {apart:.1e}")
    return results


def plot(results, path):
    import matplotlib
    matplotlib.use("svg")
    import matplotlib.pyplot as pyplot
    matplotlib.rcParams["svg.hashsalt"] = "instead-of-scipy"
    figure, ax = pyplot.subplots(figsize=(9, 0.36 * len(results) + 1), layout="constrained")
    place = np.arange(len(results))[::-1]
    least = 0.5 * min(min(r["there_us"], r["here_us"]) for r in results)
    for offset, key, colour, name in ((0.19, "there_us", "#9aa5b1", "SciPy, NumPy, PyWavelets, Pillow"), (-0.19, "here_us", "#1f77b4", "morvenqvr")):
        ax.barh(place + offset, [r[key] - least for r in results], 0.38, left=least, color=colour, label=name)
    ax.set_yticks(place, [r["task"] for r in results])
    ax.set(xscale="log", xlabel="microseconds a call, one core", xlim=(least, None), ylim=(-0.7, len(results) - 0.3))
    ax.grid(axis="x", alpha=0.3)
    ax.legend(loc="lower right")
    figure.savefig(path, metadata={"Date": None})


def number(value):
    return f"{value:.2f}" if value < 10 else f"{value:.1f}" if value < 100 else f"{value:.0f}"


def page(data):
    lines = (Path(__file__).parent / "page.md.in").read_text().rstrip().split("\n")
    table = ["| task | there | here | largest difference | there, µs | here, µs | times |", "|---|---|---|---|---|---|---|"]
    for r in data["results"]:
        apart = "none" if r["difference"] == 0 else f"{r['difference']:.0e}"
        note = f" ({r['note']})" if r["note"] else ""
        table.append(f"| {r['task']} | `{r['there']}` | `{r['here']}` | {apart}{note} | {number(r['there_us'])} | {number(r['here_us'])} | "
                     f"{r['there_us'] / r['here_us']:.2f} |")
    slower = [r for r in data["results"] if r["here_us"] > 1.05 * r["there_us"]]
    wins = [f"- {r['task']}: {r['here_us'] / r['there_us']:.2f} times as long here" for r in slower] or ["- in none of these tasks"]
    machine = (f"{data['processor']}; Python {data['python']}, NumPy {data['numpy']}, SciPy {data['scipy']}, PyWavelets {data['pywt']}, "
               f"Pillow {data['pillow']} of Debian 12.")
    filled = {"@TABLE@": table, "@WINS@": wins, "@MACHINE@": [machine]}
    return "\n".join(text for line in lines for text in filled.get(line, [line])) + "\n"


def processor():
    for line in open("/proc/cpuinfo"):
        if line.startswith("model name"):
            return line.split(":", 1)[1].strip()
    return platform.machine()


def main():
    data = {"processor": processor(), "python": platform.python_version(), "numpy": np.__version__, "scipy": scipy.__version__,
            "pywt": pywt.__version__, "pillow": PIL.__version__, "rounds": options.rounds, "results": measure()}
    (options.docs / "performance/python.json").write_text(json.dumps(data, indent=1, ensure_ascii=False) + "\n")
    plot(data["results"], options.docs / "pictures/instead-of-scipy.svg")
    (options.docs / "instead-of-scipy.md").write_text(page(data))


if __name__ == "__main__":
    main()
