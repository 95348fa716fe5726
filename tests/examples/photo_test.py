"""The programs on photographs, with generated files: photo_test.py FOLDER-OF-PROGRAMS CASE"""
import os
import random
import struct
import subprocess
import sys
import tempfile
import zlib

programs = os.path.abspath(sys.argv[1])
CHANNELS = {0: 1, 2: 3, 6: 4}


def run(program, *arguments):
    return subprocess.run([os.path.join(programs, program), *arguments], capture_output=True, text=True)


def done(program, *arguments):
    result = run(program, *arguments)
    assert result.returncode == 0, result.stderr
    return result.stdout


def write_png(path, width, height, channels, pixels):
    """pixels: bytes row by row."""
    colour = {1: 0, 3: 2, 4: 6}[channels]
    rows = b"".join(b"\0" + bytes(pixels[y * width * channels:(y + 1) * width * channels]) for y in range(height))
    chunk = lambda kind, body: struct.pack(">I", len(body)) + kind + body + struct.pack(">I", zlib.crc32(kind + body))
    with open(path, "wb") as file:
        file.write(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, colour, 0, 0, 0)) +
                   chunk(b"IDAT", zlib.compress(rows)) + chunk(b"IEND", b""))


def read_png(path):
    with open(path, "rb") as file:
        data = file.read()
    at, packed = 8, b""
    while at < len(data):
        length, kind = struct.unpack(">I4s", data[at:at + 8])
        body = data[at + 8:at + 8 + length]
        if kind == b"IHDR":
            width, height, depth, colour, _, _, interlace = struct.unpack(">IIBBBBB", body)
            assert depth == 8 and interlace == 0
        elif kind == b"IDAT":
            packed += body
        at += 12 + length
    n = CHANNELS[colour]
    raw, out, before = zlib.decompress(packed), bytearray(), bytearray(width * n)
    for y in range(height):
        kind, row = raw[y * (width * n + 1)], bytearray(raw[y * (width * n + 1) + 1:(y + 1) * (width * n + 1)])
        for x in range(width * n):
            left, up, corner = (row[x - n], before[x], before[x - n]) if x >= n else (0, before[x], 0)
            guess = left + up - corner
            nearest = min((left, up, corner), key=lambda v: abs(guess - v))
            row[x] = row[x] + (0, left, up, (left + up) // 2, nearest)[kind] & 255
        out += row
        before = row
    return width, height, n, bytes(out)


def noise(width, height, channels):
    return random.Random(width).randbytes(width * height * channels)


def sizes_and_methods():
    source = noise(60, 40, 1)
    write_png("in.png", 60, 40, 1, source)
    for method in "nearest linear cubic bspline catmull-rom b05c03 lanczos super".split():
        text = done("scale", "--factor", "0.5", "--method", method, "in.png", "out.png")
        assert "30 x 20" in text, text
        assert read_png("out.png")[:3] == (30, 20, 1)
    width, height, n, got = read_png("out.png")  # supersampling: means of two by two, half up
    for y in range(height):
        for x in range(width):
            four = sum(source[(2 * y + v) * 60 + 2 * x + u] for u in (0, 1) for v in (0, 1))
            assert got[y * width + x] == (four + 2) // 4
    for size, want in (("90,0", (90, 60)), ("0,80", (120, 80)), ("7,9", (7, 9))):
        done("scale", "--size", size, "--antialias", "in.png", "out.png")
        assert read_png("out.png")[:2] == want
    done("scale", "--factor", "1", "--method", "linear", "in.png", "out.png")
    assert read_png("out.png")[3] == source


def region_is_cut_out():
    source = noise(50, 30, 4)
    write_png("in.png", 50, 30, 4, source)
    done("scale", "--region", "10,5,20,10", "--factor", "1", "--method", "nearest", "in.png", "out.png")
    width, height, n, got = read_png("out.png")
    assert (width, height, n) == (20, 10, 4)
    for y in range(10):
        assert got[y * 80:(y + 1) * 80] == source[((y + 5) * 50 + 10) * 4:((y + 5) * 50 + 30) * 4]


def transparent_edges():
    """Colour that nobody sees does not bleed: a white disc on transparent black stays white to its edge."""
    side = 120
    pixels = bytearray()
    for i in range(side * side):
        inside = (i % side - 60) ** 2 + (i // side - 60) ** 2 < 2000
        pixels += bytes([255] * 4) if inside else bytes(4)
    write_png("in.png", side, side, 4, pixels)
    for options in (["--method", "lanczos", "--antialias"], ["--method", "linear"], ["--method", "super"]):
        done("scale", "--factor", "0.3", *options, "in.png", "out.png")
        _, _, _, got = read_png("out.png")
        seen = [got[i] for i in range(0, len(got), 4) if got[i + 3] > 20]
        assert len(seen) > 150 and min(seen) > 240, (options, min(seen))


def kinds_of_files():
    for channels in (1, 3, 4):
        write_png("in.png", 64, 48, channels, bytes([90] * (64 * 48 * channels)))
        done("scale", "--factor", "1", "in.png", "out.jpg")
        with open("out.jpg", "rb") as file:
            assert file.read(2) == b"\xff\xd8"
        done("scale", "--factor", "0.5", "out.jpg", "back.png")
        width, height, n, got = read_png("back.png")
        assert (width, height, n) == (32, 24, 1 if channels == 1 else 4)
        assert all(abs(got[i] - 90) <= 2 for i in range(len(got)) if n == 1 or i % 4 != 3)


def contact_sheet():
    for channels in (1, 3):
        write_png("in.png", 300, 220, channels, noise(300, 220, channels))
        assert "Lanczos" in done("contactsheet", "--zoom", "5", "--out", "sheet.png", "in.png")
        assert read_png("sheet.png")[:3] == (640, 1690, 4)


def posterise():
    source = noise(40, 30, 3)
    write_png("in.png", 40, 30, 3, source)
    text = done("posterise", "--levels", "2", "in.png", "out.png")
    assert "brightness" in text
    got = read_png("out.png")[3]
    assert all(got[4 * i + c] == (255 if source[3 * i + c] >= 128 else 0) for i in range(1200) for c in range(3))
    done("posterise", "--ramp", "--levels", "5", "in.png", "out.png")
    got = read_png("out.png")[3]
    assert len({got[4 * i:4 * i + 4] for i in range(1200)}) == 5


def bad_files():
    write_png("in.png", 40, 30, 1, noise(40, 30, 1))
    with open("in.png", "rb") as file:
        data = file.read()
    for name, body in (("empty.png", b""), ("short.png", data[:60]), ("text.png", b"hello, world")):
        with open(name, "wb") as file:
            file.write(body)
        assert run("scale", name, "out.png").returncode == 1, name
    assert run("scale", "absent.png", "out.png").returncode == 1
    assert run("scale", "in.png", "absent/out.png").returncode == 1
    assert run("contactsheet", "in.png").returncode == 1  # too small


def bad_arguments():
    write_png("in.png", 40, 30, 1, noise(40, 30, 1))
    for arguments in (["in.png"], ["in.png", "out.gif"], ["--method", "best", "in.png", "out.png"],
                      ["--region", "30,0,20,10", "in.png", "out.png"], ["--factor", "0", "in.png", "out.png"],
                      ["--factor", "3", "--method", "super", "in.png", "out.png"], ["--size", "1", "in.png", "out.png"]):
        assert run("scale", *arguments).returncode == 2, arguments
    assert run("posterise", "--levels", "1", "in.png", "out.png").returncode == 2
    assert run("contactsheet").returncode == 2
    for program in ("scale", "contactsheet", "posterise"):
        assert run(program, "--help").returncode == 0


with tempfile.TemporaryDirectory() as folder:
    os.chdir(folder)
    globals()[sys.argv[2]]()
