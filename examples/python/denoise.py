#!/usr/bin/env python3
"""Takes noise out of a WAV file by wavelets: details below a threshold shrink to zero.

    denoise.py IN.wav OUT.wav [--moments 4] [--levels 5] [--strength 1.0] [--plot PICTURE.png]
"""
import argparse

import numpy as np
from sound import Reader, Writer, axes

import morvenqvr as qvr


def shrink(detail, threshold):
    """Soft threshold: what lies beyond +-threshold, brought in by it."""
    inside = qvr.threshold(qvr.threshold(detail, -threshold, "less"), threshold, "greater")
    return qvr.sub(detail, inside)


def denoise(x, wavelet, levels, strength):
    """The signal, and the deviation of the noise as the finest details show it."""
    approximation, *details = qvr.wavedec(x, wavelet, levels)
    noise = float(np.median(qvr.abs(details[-1]))) / 0.6745
    threshold = strength * noise * np.sqrt(2 * np.log(max(len(x), 2)))
    return qvr.waverec([approximation, *[shrink(d, threshold) for d in details]], wavelet)[:len(x)], noise


def main():
    arguments = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    arguments.add_argument("source")
    arguments.add_argument("target")
    arguments.add_argument("--moments", type=int, default=4, help="vanishing moments of the wavelet")
    arguments.add_argument("--levels", type=int, default=5)
    arguments.add_argument("--strength", type=float, default=1.0, help="factor of the universal threshold")
    arguments.add_argument("--plot", help="picture of a stretch before and after")
    options = arguments.parse_args()
    reader = Reader(options.source)
    wavelet = qvr.daubechies(options.moments)
    channels = np.concatenate([np.zeros((reader.channels, 0), np.float32), *reader.blocks(1 << 16)], axis=1)
    clean = []
    for number, channel in enumerate(channels):
        result, noise = denoise(np.ascontiguousarray(channel), wavelet, options.levels, options.strength)
        clean.append(result)
        print(f"channel {number}: noise {20 * np.log10(max(noise, 1e-9)):.1f} dB below full scale")
    writer = Writer(options.target, reader.rate, reader.channels)
    writer.write(np.stack(clean))
    writer.close()
    if options.plot:
        figure, ax = axes()
        stretch = slice(len(clean[0]) // 2, len(clean[0]) // 2 + reader.rate // 50)
        time = np.arange(stretch.start, stretch.start + len(clean[0][stretch])) / reader.rate
        ax.plot(time, channels[0][stretch], lw=0.6, label="before")
        ax.plot(time, clean[0][stretch], label="after")
        ax.set(xlabel="time, s", ylabel="amplitude", title="20 milliseconds of channel 0")
        ax.legend()
        figure.savefig(options.plot)
        print(f"wrote {options.plot}")


if __name__ == "__main__":
    main()
