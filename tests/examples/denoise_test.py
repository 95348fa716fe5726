"""The wavelet denoiser on generated files: denoise_test.py FOLDER-OF-PROGRAMS CASE"""
import math
import os
import random
import re
import subprocess
import sys
import tempfile

from files import picture, read, write

RATE = 8000
programs = os.path.abspath(sys.argv[1])
dice = random.Random(7)


def denoise(*arguments):
    return subprocess.run([os.path.join(programs, "denoise"), *arguments], capture_output=True, text=True)


def tone(count, frequency=60, level=0.5):
    return [level * math.sin(2 * math.pi * frequency * i / RATE) for i in range(count)]


def ratio(clean, other):
    error = sum((a - b) ** 2 for a, b in zip(clean, other))
    return 10 * math.log10(sum(a * a for a in clean) / error)


def takes_noise_out():
    # Pieces of a low tone with silence between them: most of the noise is in bands without signal.
    clean = [v if i // 4000 % 2 == 0 else 0 for i, v in enumerate(tone(4 * RATE))]
    noisy = [v + dice.gauss(0, 0.03) for v in clean]
    write("in.wav", noisy)
    done = denoise("--out", "out", "in.wav")
    assert done.returncode == 0 and done.stderr == "", done
    level = float(re.search(r"noise of ([\d.]+) dB", done.stdout).group(1))
    assert abs(level + 20 * math.log10(0.03)) < 1, done.stdout
    before, after = read("out-before.wav")[0], read("out-after.wav")[0]
    assert len(before) == len(after) == len(clean)
    assert max(abs(a - b) for a, b in zip(before, noisy)) < 1e-3
    assert ratio(clean, after) > ratio(clean, before) + 8, (ratio(clean, before), ratio(clean, after))
    rows = picture("out.png")
    assert len(rows[0]) == 1000 and len(rows) == 320


def noise_of_its_own():
    write("in.wav", tone(4 * RATE))
    done = denoise("--noise", "-30", "--out", "out", "in.wav")
    before, after = map(float, re.search(r"noise: ([\d.]+) dB before, ([\d.]+) dB after", done.stdout).groups())
    assert abs(before - (30 + 20 * math.log10(0.5 * math.sqrt(0.5)))) < 0.5, done.stdout
    assert after > before + 5, done.stdout
    assert abs(ratio(tone(4 * RATE), read("out-after.wav")[0]) - after) < 0.5


def weak_threshold_changes_nothing():
    signal = tone(3001, 440)
    write("in.wav", signal)
    for levels in range(1, 9):
        assert denoise("--levels", str(levels), "--strength", "0.01", "--out", "out", "in.wav").returncode == 0
        after = read("out-after.wav")[0]
        assert max(abs(a - b) for a, b in zip(after, signal)) < 2e-3, levels


def short_files_and_channels():
    for count in (1, 2, 3, 100):
        write("in.wav", [0.25 * (-1) ** i for i in range(count)])
        assert denoise("--out", "out", "in.wav").returncode == 0
        assert len(read("out-after.wav")[0]) == count
    write("in.wav", [v for s in tone(1000) for v in (s, -s)], channels=2)
    assert denoise("--out", "out", "in.wav").returncode == 0
    samples, rate, channels = read("out-after.wav")
    assert rate == RATE and channels == 1 and max(map(abs, samples)) < 1e-3


def bad_arguments():
    write("in.wav", tone(100))
    for arguments in ([], ["in.wav", "in.wav"], ["--levels", "0", "in.wav"], ["--levels", "2.5", "in.wav"],
                      ["--levels", "9", "in.wav"], ["--strength", "x", "in.wav"], ["--noise", "1", "in.wav"]):
        assert denoise(*arguments).returncode == 2, arguments
    for arguments in (["absent.wav"], ["--out", "absent/x", "in.wav"]):
        done = denoise(*arguments)
        assert done.returncode == 1 and done.stderr.count("\n") == 1, (arguments, done)
    assert denoise("--help").returncode == 0


with tempfile.TemporaryDirectory() as folder:
    os.chdir(folder)
    globals()[sys.argv[2]]()
