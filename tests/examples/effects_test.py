"""The effects example on generated files: effects_test.py FOLDER-OF-PROGRAMS CASE"""
import array
import math
import os
import random
import struct
import subprocess
import sys
import tempfile
import wave

ROUNDINGS = ("truncate", "even", "away")
RATE = 8000
programs = sys.argv[1]


def effects(*arguments, program="effects"):
    return subprocess.run([os.path.join(programs, program), *arguments], capture_output=True, text=True)


def write(path, samples, channels, width=2):
    with wave.open(path, "wb") as file:
        file.setnchannels(channels)
        file.setsampwidth(width)
        file.setframerate(RATE)
        file.writeframes(samples.tobytes())


def read(path):
    with wave.open(path, "rb") as file:
        assert file.getsampwidth() == 2 and file.getframerate() == RATE
        return array.array("h", file.readframes(file.getnframes())), file.getnchannels()


def noise(count, seed=1, low=-32768, high=32767):
    random.seed(seed)
    return array.array("h", (random.randint(low, high) for _ in range(count)))


def model(samples, channels, gain, delay, feedback):
    """The chain in double precision, sample by sample; the values before rounding."""
    out = []
    for at, sample in enumerate(samples):
        x = 10 ** (gain / 20) * sample * 2 / 65535
        y = x / math.sqrt(1 + x * x)
        if delay and at >= delay * channels:
            y += feedback * out[at - delay * channels]
        out.append(y)
    peak = max(map(abs, out))
    return [y * 32767 / peak if peak else 0.0 for y in out]


def check(samples, channels, gain=6, ms=250, feedback=0.35):
    write("in.wav", samples, channels)
    done = effects("--gain", str(gain), "--echo", f"{ms},{feedback}", "--out", "out", "in.wav")
    assert done.returncode == 0 and done.stderr == "", done
    assert "samples/s" in done.stdout
    want = model(samples, channels, gain, round(ms * RATE / 1000), feedback)
    # Single precision over a few operations, with a decaying feedback: far inside a twentieth of a step.
    slack = 0.05
    differ = 0
    for rounding in ROUNDINGS:
        have, have_channels = read(f"out-{rounding}.wav")
        assert have_channels == channels and len(have) == len(samples), rounding
        for at, (h, w) in enumerate(zip(have, want)):
            if rounding == "truncate":
                good = -slack <= (w - h) * (1 if w >= 0 else -1) < 1 + slack
                differ += abs(h - round(w)) > 0
            else:
                good = abs(h - w) <= 0.5 + slack
            assert good, f"{rounding}: sample {at} is {h}, the chain gives {w}"
    return differ


def channels_1():
    assert check(noise(20001), 1) > 5000


def channels_2():
    assert check(noise(2 * 20000), 2) > 10000


def channels_3():
    assert check(noise(3 * 9001), 3) > 5000


def channels_6():
    assert check(noise(6 * 8193), 6) > 10000


def single_sample():
    for value in (1, -1, 32767, -32768):
        check(array.array("h", [value]), 1)


def echo_shorter_than_a_block():
    check(noise(2 * 9000), 2, ms=1, feedback=-0.9)
    check(noise(9000), 1, ms=0.125, feedback=0.5)


def echo_longer_than_a_block():
    check(noise(2 * 9000), 2, ms=400, feedback=0.7)
    check(noise(9000), 1, ms=10000, feedback=0.7)


def no_echo():
    check(noise(9000), 1, ms=0, feedback=0.5)


def loud_gain():
    check(noise(9000), 1, gain=40)
    check(noise(9000, low=-3, high=3), 1, gain=-40)


def silence():
    write("in.wav", array.array("h", [0] * 20000), 2)
    assert effects("--out", "out", "in.wav").returncode == 0
    for rounding in ROUNDINGS:
        assert not any(read(f"out-{rounding}.wav")[0]), rounding


def default_names():
    os.mkdir("sub.folder")
    write("sub.folder/voice.wav", noise(100), 1)
    assert effects("sub.folder/voice.wav").returncode == 0
    assert sorted(os.listdir(".")) == sorted(["sub.folder"] + [f"voice-{r}.wav" for r in ROUNDINGS])


def one_line(done, status, *words):
    assert done.returncode == status, done
    assert done.stdout == "" and done.stderr.startswith("effects: ") and done.stderr.count("\n") == 1, done
    for word in words:
        assert word in done.stderr, f"'{word}' is not in: {done.stderr}"


def bad_files():
    write("good.wav", noise(1000), 2)
    whole = open("good.wav", "rb").read()
    files = {
        "text.wav": (b"hello, this is no sound\n" * 10, "not a WAV file"),
        "empty.wav": (b"", "is empty"),
        "short.wav": (whole[:1000], "cut short"),
        "odd.wav": (whole[:-1], "cut short"),
        "header.wav": (whole[:44], "cut short"),
        "half_header.wav": (whole[:20], "half_header.wav"),
        "picture.wav": (b"P6 2 2 255\n" + bytes(12), "not a WAV file"),
    }
    for path, (content, word) in files.items():
        with open(path, "wb") as file:
            file.write(content)
        one_line(effects("--out", "out", path), 1, path, word)
    write("none.wav", array.array("h"), 1)
    one_line(effects("--out", "out", "none.wav"), 1, "holds no sound")
    one_line(effects("--out", "out", "missing.wav"), 1, "missing.wav", "No such file")
    one_line(effects("--out", "out", "."), 1, "regular file")
    one_line(effects("--out", "no/such/folder/out", "good.wav"), 1, "cannot write")
    assert not [name for name in os.listdir(".") if name.startswith("out")]


def wide_samples():
    """24 and 32 bits, and floats, give what their 16-bit rounding gives; floats beyond full scale are limited."""
    x = noise(3000)
    write("16.wav", x, 1)
    assert effects("--out", "a", "16.wav").returncode == 0
    plain = open("a-even.wav", "rb").read()
    write("24.wav", array.array("B", b"".join((v << 8).to_bytes(3, "little", signed=True) for v in x)), 1, width=3)
    write("32.wav", array.array("i", [v << 16 for v in x]), 1, width=4)
    data = array.array("f", [v / 32768 for v in x]).tobytes()
    with open("float.wav", "wb") as file:
        file.write(b"RIFF" + struct.pack("<I", 36 + len(data)) + b"WAVEfmt " +
                   struct.pack("<IHHIIHH", 16, 3, 1, RATE, 4 * RATE, 4, 32) + b"data" + struct.pack("<I", len(data)) + data)
    for name in ("24", "32", "float"):
        assert effects("--out", name, name + ".wav").returncode == 0
        got = open(name + "-even.wav", "rb").read()
        assert got[44:] == plain[44:], name


def bad_arguments():
    write("in.wav", noise(100), 1)
    one_line(effects(), 2, "input file")
    one_line(effects("in.wav", "in.wav"), 2, "input file")
    for gain in ("loud", "", "6dB", "61", "nan", "1,2"):
        one_line(effects("--gain", gain, "in.wav"), 2, "--gain")
    for echo in ("250", "250,", "250;0.3", "250,1", "-1,0.3", "10001,0.1", "1,nan", "1,0.1,2"):
        one_line(effects("--echo", echo, "in.wav"), 2, "--echo")
    assert effects("--unknown", "in.wav").returncode == 2


def not_over_itself():
    write("x-even.wav", noise(100), 1)
    before = open("x-even.wav", "rb").read()
    one_line(effects("--out", "x", "x-even.wav"), 1, "over itself")
    assert open("x-even.wav", "rb").read() == before


def help():
    done = effects("--help")
    assert done.returncode == 0 and done.stderr == "" and "--echo" in done.stdout


def both_builds_agree():
    write("in.wav", noise(30000), 2)
    assert effects("--out", "a", "in.wav").returncode == 0
    assert effects("--out", "b", "in.wav", program="pkgconfig/effects").returncode == 0
    for rounding in ROUNDINGS:
        assert open(f"a-{rounding}.wav", "rb").read() == open(f"b-{rounding}.wav", "rb").read()


programs = os.path.abspath(programs)
with tempfile.TemporaryDirectory() as folder:
    os.chdir(folder)
    globals()[sys.argv[2]]()
