"""Sounds to files, and pictures from files, for the tests of the examples."""
import array
import struct
import wave
import zlib


def write(path, samples, rate=8000, channels=1):
    """Numbers in -1..1, frame by frame."""
    with wave.open(path, "wb") as file:
        file.setnchannels(channels)
        file.setsampwidth(2)
        file.setframerate(rate)
        limited = (max(-32768, min(32767, round(32767 * v))) for v in samples)
        file.writeframes(array.array("h", limited).tobytes())


def read(path):
    """The samples of a file as numbers in -1..1, its rate and channels."""
    with wave.open(path, "rb") as file:
        raw = array.array("h", file.readframes(file.getnframes()))
        return [v / 32767 for v in raw], file.getframerate(), file.getnchannels()


def picture(path):
    """Rows of (red, green, blue), from a PNG of 8-bit RGB without interlacing."""
    with open(path, "rb") as file:
        data = file.read()
    assert data[:8] == b"\x89PNG\r\n\x1a\n"
    at, packed, width = 8, b"", 0
    while at < len(data):
        size, kind = struct.unpack(">I4s", data[at:at + 8])
        body = data[at + 8:at + 8 + size]
        assert zlib.crc32(kind + body) == struct.unpack(">I", data[at + 8 + size:at + 12 + size])[0]
        if kind == b"IHDR":
            width, _, depth, colour, _, _, interlace = struct.unpack(">IIBBBBB", body)
            assert (depth, colour, interlace) == (8, 2, 0)
        packed += body if kind == b"IDAT" else b""
        at += size + 12
    raw, rows, stride = zlib.decompress(packed), [], 3 * width
    before = bytearray(stride)
    for y in range(len(raw) // (stride + 1)):
        kind, row = raw[y * (stride + 1)], bytearray(raw[y * (stride + 1) + 1:(y + 1) * (stride + 1)])
        for x in range(stride):
            left, up, corner = (row[x - 3], before[x], before[x - 3]) if x >= 3 else (0, before[x], 0)
            guess = left + up - corner
            nearest = min((left, up, corner), key=lambda v: abs(guess - v))
            row[x] = row[x] + (0, left, up, (left + up) // 2, nearest)[kind] & 255
        rows.append([tuple(row[3 * x:3 * x + 3]) for x in range(width)])
        before = row
    return rows
