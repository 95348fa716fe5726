"""The spectrogram example on generated files: spectrogram_test.py FOLDER-OF-PROGRAMS CASE"""
import array
import math
import os
import struct
import subprocess
import sys
import tempfile
import wave
import zlib

RATE = 8000
LEFT, RIGHT, TOP, BOTTOM = 78, 106, 12, 44  # margins of the plot
programs = sys.argv[1]


def spectrogram(*arguments):
    return subprocess.run([os.path.join(programs, "spectrogram"), *arguments], capture_output=True, text=True)


def write(path, samples, channels=1):
    with wave.open(path, "wb") as file:
        file.setnchannels(channels)
        file.setsampwidth(2)
        file.setframerate(RATE)
        file.writeframes(samples.tobytes())


def tone(frequency, count, amplitude=32767):
    return array.array("h", (round(amplitude * math.sin(2 * math.pi * frequency * i / RATE)) for i in range(count)))


def read_png(path):
    """Rows of (red, green, blue), from a PNG of 8-bit RGB without interlacing."""
    with open(path, "rb") as file:
        data = file.read()
    assert data[:8] == b"\x89PNG\r\n\x1a\n"
    at, packed = 8, b""
    while at < len(data):
        length, kind = struct.unpack(">I4s", data[at:at + 8])
        body = data[at + 8:at + 8 + length]
        assert zlib.crc32(kind + body) == struct.unpack(">I", data[at + 8 + length:at + 12 + length])[0]
        if kind == b"IHDR":
            width, height, depth, colour, _, _, interlace = struct.unpack(">IIBBBBB", body)
            assert (depth, colour, interlace) == (8, 2, 0)
        elif kind == b"IDAT":
            packed += body
        at += 12 + length
    raw, rows, before = zlib.decompress(packed), [], bytes(3 * width)
    for y in range(height):
        kind, line = raw[y * (3 * width + 1)], bytearray(raw[y * (3 * width + 1) + 1:(y + 1) * (3 * width + 1)])
        for i in range(3 * width):
            left, up = line[i - 3] if i >= 3 else 0, before[i]
            corner = before[i - 3] if i >= 3 else 0
            if kind == 1:
                line[i] = (line[i] + left) & 255
            elif kind == 2:
                line[i] = (line[i] + up) & 255
            elif kind == 3:
                line[i] = (line[i] + (left + up) // 2) & 255
            elif kind == 4:
                nearest = min((left, up, corner), key=lambda v: (abs(left + up - corner - v)))
                line[i] = (line[i] + nearest) & 255
        rows.append([tuple(line[3 * x:3 * x + 3]) for x in range(width)])
        before = bytes(line)
    return rows


def plot(path):
    rows = read_png(path)
    return [row[LEFT:len(row) - RIGHT] for row in rows[TOP:len(rows) - BOTTOM]]


def brightness(pixel):
    return sum(pixel)


def run(samples, *arguments, channels=1):
    write("in.wav", samples, channels)
    done = spectrogram(*arguments, "--out", "out.png", "in.wav")
    assert done.returncode == 0 and done.stderr == "", done
    return plot("out.png")


def loudest(picture, x):
    column = [brightness(row[x]) for row in picture]
    return len(picture) - 1 - max(range(len(column)), key=column.__getitem__)


def tone_at(frequency, size=1024, *arguments):
    picture = run(tone(frequency, 4 * RATE), "--fft", str(size), *arguments)
    want = frequency / (RATE / 2) * (len(picture) - 1)
    for x in (5, len(picture[0]) // 2, len(picture[0]) - 60):
        assert abs(loudest(picture, x) - want) <= 2, (frequency, x, loudest(picture, x), want)
    return picture


def case_tones():
    for frequency in (250, 1000, 3500):
        tone_at(frequency)


def case_sizes_and_windows():
    for size in (64, 256, 4096, 65536):
        run(tone(1000, 4 * RATE), "--fft", str(size))
    for window in ("hann", "hamming", "blackman", "bartlett", "none"):
        tone_at(1500, 512, "--window", window)


def case_full_scale_is_the_top():
    picture = tone_at(1000, 1024, "--range", "60")
    top = max(brightness(row[len(row) // 2]) for row in picture)
    assert top >= brightness((252, 255, 164)) - 12, top
    # Forty decibels below, two thirds of a range of sixty are gone.
    write("in.wav", tone(1000, 2 * RATE, 327.67))
    assert spectrogram("--range", "60", "--out", "out.png", "in.wav").returncode == 0
    picture = plot("out.png")
    middle = max((row[len(row) // 2] for row in picture), key=brightness)
    assert all(abs(a - b) <= 10 for a, b in zip(middle, (121, 29, 101))), middle


def case_steps_in_time():
    samples = tone(500, RATE) + tone(2000, RATE)
    picture = run(samples, "--fft", "256", "--overlap", "50")
    width, height = len(picture[0]), len(picture)
    assert abs(loudest(picture, width // 4) - 500 / 4000 * (height - 1)) <= 2
    assert abs(loudest(picture, 3 * width // 4) - 2000 / 4000 * (height - 1)) <= 2


def case_channels_are_averaged():
    one = tone(1000, RATE)
    both = array.array("h", (v for sample in one for v in (sample, sample)))
    assert run(one) == run(both, channels=2)
    opposite = array.array("h", (v for sample in one for v in (sample, -sample)))
    silent = run(opposite, channels=2)
    assert all(pixel == (0, 0, 4) for row in silent for pixel in row)


def case_short_files():
    for count in (1, 2, 100, 1023, 1024, 1025):
        run(tone(1000, count))


def case_axes():
    run(tone(1000, 2 * RATE))
    rows = read_png("out.png")
    # Labels left of, below and right of the plot, and beyond them titles; letters have soft edges.
    dark = lambda pixels: any(sum(pixel) < 3 * 140 for pixel in pixels)
    assert any(dark(row[16:LEFT - 8]) for row in rows) and any(dark(row[:16]) for row in rows)
    assert any(dark(row) for row in rows[-BOTTOM + 8:-22]) and any(dark(row) for row in rows[-20:])
    assert any(dark(row[-60:-25]) for row in rows) and any(dark(row[-16:]) for row in rows)


def case_bad_files():
    for arguments, status in ((["missing.wav"], 1), ([], 2), (["a.wav", "b.wav"], 2)):
        done = spectrogram(*arguments)
        assert done.returncode == status and done.stderr.count("\n") == 1, done
    write("in.wav", tone(1000, 100))
    done = spectrogram("--out", "no/such/folder/out.png", "in.wav")
    assert done.returncode == 1 and done.stderr.count("\n") == 1, done


def case_bad_arguments():
    write("in.wav", tone(1000, 100))
    for arguments in (["--fft", "1000"], ["--fft", "32"], ["--fft", "131072"], ["--overlap", "96"], ["--overlap", "-1"],
                      ["--window", "kaiser"], ["--range", "5"], ["--range", "x"]):
        done = spectrogram(*arguments, "in.wav")
        assert done.returncode == 2 and done.stderr.count("\n") == 1, (arguments, done)
        assert not os.path.exists("in.png")


def case_default_name():
    write("sound.wav", tone(1000, 5000))
    assert spectrogram("sound.wav").returncode == 0
    assert plot("sound.png")


with tempfile.TemporaryDirectory() as folder:
    programs = os.path.abspath(programs)
    os.chdir(folder)
    globals()["case_" + sys.argv[2]]()
