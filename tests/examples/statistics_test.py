"""The statistics example on generated files: statistics_test.py FOLDER-OF-PROGRAMS CASE"""
import array
import math
import os
import re
import struct
import subprocess
import sys
import tempfile
import wave
import zlib

RATE = 8000
programs = sys.argv[1]


def statistics(*arguments):
    return subprocess.run([os.path.join(programs, "statistics"), *arguments], capture_output=True, text=True)


def write(path, samples, channels):
    with wave.open(path, "wb") as file:
        file.setnchannels(channels)
        file.setsampwidth(2)
        file.setframerate(RATE)
        file.writeframes(array.array("h", samples).tobytes())


def run(samples, channels, *options):
    write("in.wav", samples, channels)
    done = statistics("--out", "out.png", *options, "in.wav")
    assert done.returncode == 0 and done.stderr == "", done
    return done.stdout


def number(text, name):
    return float(re.search(rf"{name}\s+([-+\d.]+|-inf)", text).group(1))


def picture(path):
    """Width, height and pixel rows of an RGB picture; only the filters that libpng chooses for it are undone."""
    with open(path, "rb") as file:
        data = file.read()
    assert data[:8] == b"\x89PNG\r\n\x1a\n"
    at, packed, header = 8, b"", None
    while at < len(data):
        size, kind = struct.unpack(">I4s", data[at:at + 8])
        body = data[at + 8:at + 8 + size]
        header = struct.unpack(">IIBB", body[:10]) if kind == b"IHDR" else header
        packed += body if kind == b"IDAT" else b""
        at += size + 12
    width, height, depth, colour = header
    assert (depth, colour) == (8, 2)
    raw, rows, stride = zlib.decompress(packed), [], width * 3
    before = bytearray(stride)
    for y in range(height):
        kind, row = raw[y * (stride + 1)], bytearray(raw[y * (stride + 1) + 1:(y + 1) * (stride + 1)])
        for x in range(stride):
            left, up, corner = (row[x - 3], before[x], before[x - 3]) if x >= 3 else (0, before[x], 0)
            guess = left + up - corner
            nearest = min((left, up, corner), key=lambda v: abs(guess - v))
            row[x] = row[x] + (0, left, up, (left + up) // 2, nearest)[kind] & 255
        rows.append(row)
        before = row
    return width, height, rows


def levels():
    tone = [round(20000 * math.sin(2 * math.pi * (100 * i + 0.5) / RATE)) for i in range(2 * RATE)]
    tone[8000:12000] = [0] * 4000
    text = run(tone, 1)
    mean = sum(tone) / len(tone)
    deviation = math.sqrt(sum((x - mean) ** 2 for x in tone) / (len(tone) - 1)) / 32767.5
    assert abs(number(text, "level") - 20 * math.log10(deviation)) < 0.051
    assert abs(number(text, "zero crossings") - 150) <= 2, text
    assert "silence                1.00 s to 1.50 s" in text, text
    assert abs(number(text, "silent") - 0.5) < 0.001


def peak():
    samples = [0, 0] * 3000
    samples[2 * 1234], samples[2 * 2345 + 1] = -32768, 16384
    left, right = run(samples, 2).split("channel 2")
    assert re.search(r"peak +0\.0 dB at 0\.1542 s", left), left
    assert re.search(r"peak +-6\.0 dB at 0\.2931 s", right), right


def envelope():
    run([0] * RATE + [32767, -32768] * (RATE // 2), 1)
    width, height, rows = picture("out.png")
    assert width == 1000 and height == 160
    pixel = lambda x, y: tuple(rows[y][3 * x:3 * x + 3])
    assert pixel(100, 20) == (225, 225, 225) and pixel(100, 80) != (225, 225, 225)
    assert pixel(900, 20) != (255, 255, 255) and pixel(900, 2) == (255, 255, 255)


def short_files():
    for count in (1, 2, 3, 159, 161):
        assert "channel 1" in run([100 * (-1) ** i for i in range(count)], 1)


def bad_arguments():
    write("in.wav", [1, 2, 3], 1)
    for arguments in ([], ["in.wav", "in.wav"], ["--silence", "1", "in.wav"], ["--silence", "5,100", "in.wav"]):
        assert statistics(*arguments).returncode == 2, arguments
    assert statistics("absent.wav").returncode == 1
    assert statistics("--out", "absent/x.png", "in.wav").returncode == 1
    assert statistics("--help").returncode == 0


programs = os.path.abspath(programs)
with tempfile.TemporaryDirectory() as folder:
    os.chdir(folder)
    globals()[sys.argv[2]]()
