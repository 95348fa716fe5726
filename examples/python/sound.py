"""WAV files of 16-bit samples, in blocks, and axes for pictures."""
import wave

import numpy as np

import morvenqvr as qvr


class Reader:
    """Blocks of a WAV file as float32 of shape (channels, samples)."""

    def __init__(self, path):
        self.file = wave.open(str(path), "rb")
        if self.file.getsampwidth() != 2:
            raise SystemExit(f"{path}: wanted 16-bit samples")
        self.rate, self.channels, self.length = self.file.getframerate(), self.file.getnchannels(), self.file.getnframes()

    def blocks(self, size):
        while data := self.file.readframes(size):
            yield qvr.split_scaled(np.frombuffer(data, np.int16), self.channels)

    def whole(self):
        """All channels mixed to one."""
        parts = [block.mean(0, dtype=np.float32) for block in self.blocks(1 << 16)]
        return np.concatenate(parts) if parts else np.zeros(0, np.float32)


class Writer:
    """A WAV file of 16-bit samples from blocks of float32 in -1..1."""

    def __init__(self, path, rate, channels):
        self.file = wave.open(str(path), "wb")
        self.file.setparams((channels, 2, rate, 0, "NONE", "NONE"))

    def write(self, block):
        samples = qvr.convert(qvr.mul(np.ascontiguousarray(block.T), 32767.0), dtype=np.int16)
        self.file.writeframes(samples.tobytes())

    def close(self):
        self.file.close()


def decibels(magnitude, floor=-120.0):
    """20 log10, with a floor that silence falls on."""
    out = np.empty_like(magnitude)
    for row, target in zip(np.atleast_2d(magnitude), np.atleast_2d(out)):
        qvr.log10(qvr.threshold(row, 10.0 ** (floor / 20), "less"), out=target)
    return qvr.mul(out, 20.0, out=out)


def axes(rows=1, **options):
    """Axes of a picture that is written without a screen."""
    import matplotlib
    matplotlib.use("Agg")
    import matplotlib.pyplot as pyplot
    figure, made = pyplot.subplots(rows, 1, figsize=(9, 3.2 * rows), layout="constrained", **options)
    return figure, made
