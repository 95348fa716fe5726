#!/usr/bin/env python3
"""Filters a WAV file as a live stream: block by block, each channel by a FIR filter that keeps its state.

    live_filter.py IN.wav OUT.wav [--low 300] [--high 3400] [--taps 255] [--block 480] [--plot PICTURE.png]
"""
import argparse
import time

import numpy as np
from sound import Reader, Writer, axes, decibels

import morvenqvr as qvr


def spectrum(total, block, fft):
    """Adds the power spectra of the block's windowed pieces."""
    for channel in block:
        for start in range(0, len(channel) - fft.n + 1, fft.n):
            bins = fft.forward(qvr.win_hann(channel[start:start + fft.n]))
            total += qvr.magnitude(bins) ** 2


def main():
    arguments = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    arguments.add_argument("source")
    arguments.add_argument("target")
    arguments.add_argument("--low", type=float, default=300, help="hertz")
    arguments.add_argument("--high", type=float, default=3400, help="hertz")
    arguments.add_argument("--taps", type=int, default=255)
    arguments.add_argument("--block", type=int, default=480, help="samples in a block")
    arguments.add_argument("--plot", help="picture of the response and of the spectra before and after")
    options = arguments.parse_args()

    reader = Reader(options.source)
    if not 0 < options.low < options.high < reader.rate / 2:
        raise SystemExit(f"--low and --high must rise between 0 and {reader.rate / 2:g} Hz")
    taps = qvr.fir_bandpass(options.taps, options.low / reader.rate, options.high / reader.rate, window="blackman")
    filters = [qvr.FIR(taps.astype(np.float32)) for _ in range(reader.channels)]
    writer = Writer(options.target, reader.rate, reader.channels)
    fft = qvr.RealFFT(1 << max(5, min(11, options.block.bit_length() - 1)))
    before, after = np.zeros(fft.n // 2 + 1), np.zeros(fft.n // 2 + 1)
    slowest, blocks = 0.0, 0
    for block in reader.blocks(options.block):
        start = time.perf_counter()
        filtered = np.stack([run(channel) for run, channel in zip(filters, block)])
        slowest, blocks = max(slowest, time.perf_counter() - start), blocks + 1
        writer.write(filtered)
        if options.plot:
            spectrum(before, block, fft)
            spectrum(after, filtered, fft)
    writer.close()
    print(f"{blocks} blocks of {options.block} samples ({1000 * options.block / reader.rate:.1f} ms), {options.taps} taps, delay "
          f"{1000 * (options.taps - 1) / 2 / reader.rate:.1f} ms; slowest block {1e6 * slowest:.0f} microseconds")

    if options.plot:
        figure, (top, bottom) = axes(2, sharex=True)
        wide = qvr.RealFFT(1 << 14)
        padded = np.zeros(wide.n, np.float32)
        padded[:options.taps] = taps
        top.plot(np.arange(wide.n // 2 + 1) * reader.rate / wide.n, decibels(qvr.magnitude(wide.forward(padded))))
        top.set(title="response", ylabel="decibels", ylim=(-120, 5))
        frequency = np.arange(fft.n // 2 + 1) * reader.rate / fft.n
        for total, name in ((before, "before"), (after, "after")):
            bottom.plot(frequency, decibels(np.sqrt(total / max(total.max(), before.max(), 1e-30)).astype(np.float32)), label=name)
        bottom.set(title="spectra", xlabel="frequency, Hz", ylabel="decibels", ylim=(-120, 5))
        bottom.legend()
        figure.savefig(options.plot)
        print(f"wrote {options.plot}")


if __name__ == "__main__":
    main()
