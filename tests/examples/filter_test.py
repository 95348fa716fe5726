"""The filter example on generated files: filter_test.py FOLDER-OF-PROGRAMS CASE"""
import array
import math
import os
import random
import struct
import subprocess
import sys
import tempfile
import wave

RATE = 8000
programs = os.path.abspath(sys.argv[1])


def run(*arguments):
    return subprocess.run([os.path.join(programs, "filter"), *arguments], capture_output=True, text=True)


def write(path, samples, channels=1, rate=RATE, width=2):
    with wave.open(path, "wb") as file:
        file.setnchannels(channels)
        file.setsampwidth(width)
        file.setframerate(rate)
        file.writeframes(samples.tobytes())


def read(path):
    with wave.open(path, "rb") as file:
        return array.array("h", file.readframes(file.getnframes())), file.getnchannels(), file.getframerate()


def noise(count, seed=1, peak=30000):
    random.seed(seed)
    return array.array("h", (random.randint(-peak, peak) for _ in range(count)))


def tones(count, rate, *parts):
    """A sum of sines, (hertz, amplitude) each."""
    return array.array("h", (round(sum(a * math.sin(2 * math.pi * f * i / rate) for f, a in parts)) for i in range(count)))


def level(samples, rate, hertz):
    """The amplitude of a tone, by correlation under a Hann window over the second half of a signal."""
    x = samples[len(samples) // 2:]
    re = im = total = 0
    for i, s in enumerate(x):
        w = 0.5 - 0.5 * math.cos(2 * math.pi * i / len(x))
        re += w * s * math.cos(2 * math.pi * hertz * i / rate)
        im += w * s * math.sin(2 * math.pi * hertz * i / rate)
        total += w
    return 2 * math.hypot(re, im) / total


def good(*arguments):
    done = run(*arguments)
    assert done.returncode == 0 and done.stderr == "", done
    return done.stdout


def blocks():
    """The result does not depend on the size of the blocks."""
    write("in.wav", noise(2 * 11003), 2)
    for stages in (["--pass", "300,2000"], ["--pass", "0,1000", "--taps", "4001"], ["--stop", "500,900", "--median", "5"],
                   ["--pass", "0,900", "--kind", "butterworth", "--order", "6"], ["--rate", "3,2"],
                   ["--pass", "500,0", "--kind", "chebyshev", "--median", "101"],
                   ["--rate", "147,160", "--taps", "3001", "--median", "3"], ["--rate", "1,7", "--taps", "99"]):
        results = set()
        for block in ("1", "7", "1000", "4096", "4097", "1000000"):
            good(*stages, "--block", block, "--out", "out.wav", "in.wav")
            results.add(open("out.wav", "rb").read())
        assert len(results) == 1, stages


def definition():
    """A Hann-windowed low-pass of 31 taps against the plain sum."""
    x = noise(3000, peak=20000)
    write("in.wav", x)
    good("--pass", "0,1000", "--taps", "31", "--window", "hann", "--out", "out.wav", "in.wav")
    f = 1000 / RATE
    taps = [2 * f if i == 15 else math.sin(2 * math.pi * f * (i - 15)) / (math.pi * (i - 15)) for i in range(31)]
    taps = [t * (0.5 - 0.5 * math.cos(2 * math.pi * i / 30)) if i != 15 else t for i, t in enumerate(taps)]
    taps = [t / sum(taps) for t in taps]
    y, channels, rate = read("out.wav")
    assert channels == 1 and rate == RATE and len(y) == len(x)
    for n in range(len(x)):
        want = sum(taps[k] * x[n - k] for k in range(min(31, n + 1)))
        assert abs(y[n] - want) <= 0.51, (n, y[n], want)


def bands():
    parts = [(300, 8000), (1200, 8000), (3000, 8000)]
    write("in.wav", tones(16000, RATE, *parts))
    for arguments, passed in ((["--pass", "0,700"], (1, 0, 0)), (["--pass", "2000,0"], (0, 0, 1)),
                              (["--pass", "700,2000"], (0, 1, 0)), (["--stop", "700,2000"], (1, 0, 1)),
                              (["--pass", "0,600", "--kind", "chebyshev", "--order", "12", "--ripple", "0.1"], (1, 0, 0)),
                              (["--pass", "2600,0", "--kind", "butterworth", "--order", "12"], (0, 0, 1))):
        good(*arguments, "--out", "out.wav", "in.wav")
        y = read("out.wav")[0]
        for (hertz, amplitude), keep in zip(parts, passed):
            have = level(y, RATE, hertz)
            assert abs(have - amplitude) < 0.02 * amplitude if keep else have < 0.001 * amplitude, (arguments, hertz, have)


def cutoff():
    """A Butterworth filter is 3 dB down at its edge."""
    write("in.wav", tones(16000, RATE, (1000, 10000)))
    for order in ("1", "4", "9"):
        good("--pass", "0,1000", "--kind", "butterworth", "--order", order, "--out", "out.wav", "in.wav")
        assert abs(level(read("out.wav")[0], RATE, 1000) / 10000 - math.sqrt(0.5)) < 0.003


def rates():
    for up, down in ((3, 2), (1, 2), (2, 1), (147, 160)):
        frames = 20001
        write("in.wav", tones(frames, 48000, (1000, 10000), (9000, 5000)), rate=48000)
        good("--rate", f"{up},{down}", "--taps", str(40 * max(up, down) + 1), "--out", "out.wav", "in.wav")
        y, _, rate = read("out.wav")
        assert rate == 48000 * up // down and len(y) == -(-frames * up // down), (up, down, rate, len(y))
        assert abs(level(y, rate, 1000) - 10000) < 200 and abs(level(y, rate, 9000) - 5000) < 100, (up, down)


def rates_stay_clean():
    """By default what a rate change adds to a tone stays 60 dB below it, at any factors."""
    for up, down in ((147, 160), (160, 147), (3, 2), (1, 4)):
        write("in.wav", tones(24000, 48000, (1000, 20000)), rate=48000)
        good("--rate", f"{up},{down}", "--out", "out.wav", "in.wav")
        y, _, rate = read("out.wav")
        x = y[len(y) // 4:len(y) // 4 * 3]
        turn = [2 * math.pi * 1000 * i / rate for i in range(len(x))]
        # The tone by least squares over whole periods, and what is left.
        n = len(x) // round(rate / 10) * round(rate / 10) if rate % 10 == 0 else len(x)
        c = 2 / n * sum(v * math.cos(t) for v, t in zip(x[:n], turn))
        s = 2 / n * sum(v * math.sin(t) for v, t in zip(x[:n], turn))
        rest = math.sqrt(sum((v - c * math.cos(t) - s * math.sin(t)) ** 2 for v, t in zip(x[:n], turn)) / n)
        tone = math.hypot(c, s) / math.sqrt(2)
        assert tone > 14000 and 20 * math.log10(tone / rest) > 60, (up, down, tone, rest)


def clicks():
    x = tones(8000, RATE, (200, 8000))
    spoiled = array.array("h", x)
    for at in range(50, 8000, 400):
        spoiled[at] = 32000
    write("in.wav", spoiled)
    write("clean.wav", x)
    good("--median", "5", "--pass", "0,3900", "--taps", "9", "--out", "out.wav", "in.wav")
    good("--pass", "0,3900", "--taps", "9", "--out", "want.wav", "clean.wav")
    have, want = read("out.wav")[0], read("want.wav")[0]
    assert max(abs(a - b) for a, b in zip(have, want)) < 1500


def short_files():
    for count in (1, 2, 3, 5):
        write("in.wav", noise(count))
        for arguments in (["--pass", "0,1000"], ["--rate", "2,3"], ["--median", "3", "--pass", "0,1000", "--kind", "butterworth"]):
            good(*arguments, "--picture", "p.png", "--out", "out.wav", "in.wav")
            assert len(read("out.wav")[0]) == (-(-count * 2 // 3) if "--rate" in arguments else count)


def picture():
    write("in.wav", noise(2 * 20000), 2)
    said = good("--pass", "500,1500", "--picture", "p.png", "--out", "out.wav", "in.wav")
    assert "wrote p.png" in said and "million samples/s" in said and "delay" in said
    data = open("p.png", "rb").read()
    assert data[:8] == b"\x89PNG\r\n\x1a\n"
    width, height = struct.unpack(">II", data[16:24])
    assert width > 900 and height > 500


def one_line(done, status, *words):
    assert done.returncode == status and done.stdout == "", done
    assert done.stderr.startswith("filter: ") and done.stderr.count("\n") == 1, done
    for word in words:
        assert word in done.stderr, f"'{word}' is not in: {done.stderr}"


def bad_files():
    with open("text.wav", "w") as file:
        file.write("hello, this is no sound\n" * 10)
    one_line(run("--pass", "0,100", "--out", "out.wav", "text.wav"), 1, "not a WAV file")
    one_line(run("--pass", "0,100", "--out", "out.wav", "missing.wav"), 1, "No such file")
    write("in.wav", noise(100))
    one_line(run("--pass", "0,100", "--out", "in.wav", "in.wav"), 1, "over itself")
    assert read("in.wav")[0] == noise(100)
    one_line(run("--pass", "0,100", "--out", "no/folder/out.wav", "in.wav"), 1, "cannot write")


def bad_arguments():
    write("in.wav", noise(100))
    for arguments, word in ((["--pass", "0,100"], "--out"), (["--out", "o.wav"], "--pass"),
                            (["--pass", "0,0", "--out", "o.wav"], "band"), (["--pass", "200,100", "--out", "o.wav"], "band"),
                            (["--stop", "0,100", "--out", "o.wav"], "band"), (["--pass", "0,4000", "--out", "o.wav"], "4000"),
                            (["--pass", "0,100", "--taps", "4", "--out", "o.wav"], "--taps"),
                            (["--pass", "0,100", "--taps", "9.5", "--out", "o.wav"], "--taps"),
                            (["--pass", "0,100", "--window", "box", "--out", "o.wav"], "--window"),
                            (["--pass", "0,100", "--kind", "bessel", "--out", "o.wav"], "--kind"),
                            (["--pass", "1,100", "--kind", "butterworth", "--out", "o.wav"], "butterworth"),
                            (["--rate", "3,2", "--pass", "0,9", "--kind", "chebyshev", "--out", "o.wav"], "--rate"),
                            (["--rate", "3", "--out", "o.wav"], "--rate"), (["--rate", "0,2", "--out", "o.wav"], "--rate"),
                            (["--pass", "0,100", "--median", "4", "--out", "o.wav"], "--median"),
                            (["--pass", "0,100", "--block", "0", "--out", "o.wav"], "--block"),
                            (["--pass", "0,100", "--ripple", "30", "--out", "o.wav"], "--ripple"),
                            (["--pass", "0,100", "--order", "13", "--out", "o.wav"], "--order")):
        one_line(run(*arguments, "in.wav"), 2, word)
    one_line(run("--pass", "0,100", "--out", "o.wav"), 2, "input file")
    assert run("--unknown", "in.wav").returncode == 2
    assert not os.path.exists("o.wav")


def help():
    done = run("--help")
    assert done.returncode == 0 and done.stderr == "" and "--rate" in done.stdout


with tempfile.TemporaryDirectory() as folder:
    os.chdir(folder)
    globals()[sys.argv[2]]()
