#!/usr/bin/env python3
"""Draws the spectrogram of a WAV file: windowed frames, real FFT of all of them in one call, decibels.

    spectrogram.py IN.wav OUT.png [--fft 1024] [--overlap 75]
"""
import argparse

import numpy as np
from sound import Reader, axes, decibels

import morvenqvr as qvr


def frames_in_decibels(x, size, hop):
    """Rows of decibels below full scale, one for each hop."""
    windowed = np.lib.stride_tricks.sliding_window_view(x, size)[::hop] * qvr.window("hann", size, periodic=True)
    bins = qvr.RealFFT(size, norm="forward").forward(windowed)
    return decibels(4 * qvr.magnitude(bins))


def main():
    arguments = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    arguments.add_argument("source")
    arguments.add_argument("target")
    arguments.add_argument("--fft", type=int, default=1024, help="samples in a frame, a power of two")
    arguments.add_argument("--overlap", type=float, default=75, help="percent")
    options = arguments.parse_args()
    reader = Reader(options.source)
    x = reader.whole()
    if len(x) < options.fft:
        raise SystemExit(f"{options.source} is shorter than one frame of {options.fft} samples")
    hop = max(1, round(options.fft * (1 - options.overlap / 100)))
    rows = frames_in_decibels(x, options.fft, hop)
    figure, ax = axes()
    duration = ((len(rows) - 1) * hop + options.fft) / reader.rate
    picture = ax.imshow(rows.T, origin="lower", aspect="auto", extent=(0, duration, 0, reader.rate / 2000), vmin=-100, vmax=0)
    ax.set(xlabel="time, s", ylabel="frequency, kHz", title=options.source)
    figure.colorbar(picture, label="decibels below full scale")
    figure.savefig(options.target)
    loudest = np.unravel_index(rows.argmax(), rows.shape)
    print(f"{len(rows)} frames of {options.fft}; loudest {rows.max():.1f} dB at {loudest[0] * hop / reader.rate:.2f} s, "
          f"{loudest[1] * reader.rate / options.fft:.0f} Hz; wrote {options.target}")


if __name__ == "__main__":
    main()
