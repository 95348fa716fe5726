#!/usr/bin/env python3
"""A long recording through band filter, rate change and spectrogram, in chunks on a Dask cluster.

    cluster.py OUT.npy [--hours 2] [--chunk 60] [--workers 2] [--scheduler ADDRESS] [--plot PICTURE.png]

Each chunk is a task of its own: it makes its filters anew and takes as many samples before its first output as the filters
reach back, so no state is shared, any chunk can run anywhere and again, and a worker that dies loses only the work that it
had under way: the scheduler hands it to another. The result is that of one call over the whole recording, within rounding.
"""
import argparse
from dataclasses import dataclass, field

import numpy as np

import morvenqvr as qvr


@dataclass(frozen=True)
class Plan:
    """What is done to the recording; lengths count samples."""
    length: int
    rate: int = 48000
    low: float = 100.0  # hertz
    high: float = 6000.0
    taps: int = 511
    up: int = 1
    down: int = 3
    rate_taps: int = 241
    fft: int = 1024
    hop: int = 512
    band: np.ndarray = field(init=False, repr=False, compare=False)
    anti_alias: np.ndarray = field(init=False, repr=False, compare=False)

    def __post_init__(self):
        object.__setattr__(self, "band", qvr.fir_bandpass(self.taps, self.low / self.rate, self.high / self.rate).astype(np.float32))
        cutoff = 0.45 / max(self.up, self.down)
        object.__setattr__(self, "anti_alias", self.up * qvr.fir_lowpass(self.rate_taps, cutoff))

    @property
    def resampled(self):
        """Samples after the rate change."""
        return (self.length - 1) * self.up // self.down + 1

    @property
    def frames(self):
        return max(0, (self.resampled - self.fft) // self.hop + 1)


BLOCK = 1 << 16


def recording(plan, start, stop):
    """Samples of a recording that can be had from any place: a rising tone, a hum, and noise from a counter."""
    parts = []
    for block in range(start // BLOCK, -(-stop // BLOCK)):
        n = np.arange(block * BLOCK, (block + 1) * BLOCK)
        t = n / plan.rate
        noise = np.random.Generator(np.random.Philox(key=2026, counter=[0, 0, 0, block])).standard_normal(BLOCK, np.float32)
        sweep = 300 + 4000 * (t % 60) / 60
        parts.append((0.3 * np.sin(2 * np.pi * (sweep * (t % 60)) / 2) + 0.2 * np.sin(2 * np.pi * 50 * t) + 0.05 * noise).astype(np.float32))
    first = start // BLOCK * BLOCK
    return np.concatenate(parts)[start - first:stop - first] if parts else np.zeros(0, np.float32)


def spectrogram(plan, first, last):
    """Decibels of frames first .. last - 1: what they need of the recording, back through the stages, and forward again."""
    m0, m1 = first * plan.hop, (last - 1) * plan.hop + plan.fft  # resampled, m1 excluded
    # Output m stands at step m * down of a grid on which sample s enters at s * up.
    s0 = max(0, -(-(m0 * plan.down - plan.rate_taps + 1) // plan.up))
    s0 -= s0 % plan.down  # where a group of the rate change begins
    s1 = min(plan.length, (m1 - 1) * plan.down // plan.up + 1)
    r0 = max(0, s0 - plan.taps + 1)
    filtered = qvr.FIR(plan.band)(recording(plan, r0, s1))[s0 - r0:]
    lower = qvr.upfirdn(plan.anti_alias, filtered, plan.up, plan.down)
    offset = m0 - s0 // plan.down * plan.up
    pieces = np.lib.stride_tricks.sliding_window_view(lower[offset:offset + m1 - m0], plan.fft)[::plan.hop]
    bins = qvr.RealFFT(plan.fft).forward(pieces * qvr.window("hann", plan.fft, periodic=True))
    power = qvr.threshold(qvr.magnitude(bins), 1e-6, "less")
    return qvr.mul(qvr.log10(power), 20.0)


def run(client, plan, frames_in_chunk, out=None, progress=True):
    """The spectrogram of the whole recording, each chunk put in its place as it comes."""
    from distributed import as_completed
    from tqdm import tqdm
    out = np.empty((plan.frames, plan.fft // 2 + 1), np.float32) if out is None else out
    starts = range(0, plan.frames, frames_in_chunk)
    futures = {client.submit(spectrogram, plan, s, min(s + frames_in_chunk, plan.frames), pure=False, retries=3): s for s in starts}
    with tqdm(total=plan.frames, unit="frame", disable=not progress) as bar:
        for future, rows in as_completed(futures, with_results=True):
            start = futures.pop(future)
            out[start:start + len(rows)] = rows
            bar.update(len(rows))
            future.release()
    return out


def main():
    arguments = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    arguments.add_argument("target", help="the spectrogram, frames by bins of float32 decibels")
    arguments.add_argument("--hours", type=float, default=2.0)
    arguments.add_argument("--chunk", type=float, default=60.0, help="seconds in a chunk")
    arguments.add_argument("--workers", type=int, default=2, help="processes on this machine")
    arguments.add_argument("--scheduler", help="address of a running scheduler, in place of processes of this machine")
    arguments.add_argument("--plot", help="picture of the spectrogram")
    options = arguments.parse_args()
    from distributed import Client, LocalCluster
    plan = Plan(round(options.hours * 3600 * 48000))
    frames_in_chunk = max(1, round(options.chunk * plan.rate * plan.up / plan.down / plan.hop))
    out = np.lib.format.open_memmap(options.target, "w+", np.float32, (plan.frames, plan.fft // 2 + 1))
    cluster = None if options.scheduler else LocalCluster(n_workers=options.workers, threads_per_worker=1, dashboard_address=None)
    with Client(options.scheduler or cluster) as client:
        # Workers need this file as well as the package.
        client.upload_file(__file__)
        run(client, plan, frames_in_chunk, out)
    if cluster:
        cluster.close()
    print(f"{plan.frames} frames of {options.hours:g} h in chunks of {options.chunk:g} s: {options.target}")
    if options.plot:
        from sound import axes
        figure, ax = axes()
        step = max(1, plan.frames // 2000)
        rows = out[:plan.frames // step * step].reshape(-1, step, out.shape[1]).mean(1)
        picture = ax.imshow(rows.T, origin="lower", aspect="auto", extent=(0, options.hours * 60, 0, plan.rate * plan.up / plan.down / 2000))
        ax.set(xlabel="time, min", ylabel="frequency, kHz")
        figure.colorbar(picture, label="decibels")
        figure.savefig(options.plot)
        print(f"wrote {options.plot}")


if __name__ == "__main__":
    main()
