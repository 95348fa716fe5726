"""Envelope and instantaneous frequency on generated files: analytic_test.py FOLDER-OF-PROGRAMS CASE"""
import math
import os
import re
import subprocess
import sys
import tempfile

from files import picture, write

RATE = 8000
LEFT, WIDTH, TOP, HEIGHT, GAP = 84, 1000, 12, 200, 24
RED, BLUE = (200, 30, 30), (30, 80, 160)
programs = os.path.abspath(sys.argv[1])


def analytic(*arguments):
    return subprocess.run([os.path.join(programs, "analytic"), *arguments], capture_output=True, text=True)


def run(samples, *options):
    write("in.wav", samples)
    done = analytic("--out", "out.png", *options, "in.wav")
    assert done.returncode == 0 and done.stderr == "", done
    return done.stdout


def number(text, pattern):
    return float(re.search(pattern, text).group(1))


def curve(rows, top, colour, x):
    """Share of the height at which the curve stands, or None."""
    at = [y for y in range(top, top + HEIGHT) if rows[y][LEFT + x] == colour]
    return 1 - (sum(at) / len(at) - top) / (HEIGHT - 1) if at else None


def tone():
    # Lengths of all kinds of factors; whole periods, so that the block's ends meet.
    for count in (8000, 10007, 8192, 9999):
        frequency = round(700 * count / RATE) * RATE / count
        text = run([0.5 * math.cos(2 * math.pi * frequency * i / RATE) for i in range(count)])
        assert abs(number(text, r"mean ([\d.]+),") - 0.5) < 0.002, text
        assert abs(number(text, r"mean ([\d.]+) Hz") - frequency) < 0.5, text
    rows = picture("out.png")
    for x in (100, 500, 900):
        assert abs(curve(rows, TOP + HEIGHT + GAP, BLUE, x) - frequency / 2000) < 0.02, x
        assert curve(rows, TOP, RED, x) > 0.97


def rising_tone_and_envelope():
    count = 3 * RATE
    phase, samples = 0.0, []
    for i in range(count):
        share = i / count
        phase += 2 * math.pi * (300 + 1200 * share) / RATE
        samples.append(0.8 * (0.25 + 0.75 * share) * math.sin(phase))
    run(samples, "--most", "2000")
    rows = picture("out.png")
    for x in (100, 300, 500, 700, 900):
        share = x / WIDTH
        assert abs(curve(rows, TOP + HEIGHT + GAP, BLUE, x) - (300 + 1200 * share) / 2000) < 0.03, x
        assert abs(curve(rows, TOP, RED, x) - (0.25 + 0.75 * share)) < 0.06, x


def silence_shows_no_frequency():
    run([0.5 * math.sin(0.3 * i) if i < 8000 else 0 for i in range(16000)])
    rows = picture("out.png")
    assert curve(rows, TOP + HEIGHT + GAP, BLUE, 250) is not None
    assert all(curve(rows, TOP + HEIGHT + GAP, BLUE, x) is None for x in range(560, 940))


def short_files():
    for count in (1, 2, 3, 4, 17):
        run([0.5 * (-1) ** i for i in range(count)])
    run([0] * 100)


def bad_arguments():
    write("in.wav", [0.1, 0.2, 0.3])
    for arguments in ([], ["in.wav", "in.wav"], ["--most", "1", "in.wav"], ["--quiet", "1", "in.wav"],
                      ["--quiet", "x", "in.wav"]):
        assert analytic(*arguments).returncode == 2, arguments
    for arguments in (["absent.wav"], ["--out", "absent/x.png", "in.wav"]):
        done = analytic(*arguments)
        assert done.returncode == 1 and done.stderr.count("\n") == 1, (arguments, done)
    assert analytic("--help").returncode == 0


with tempfile.TemporaryDirectory() as folder:
    os.chdir(folder)
    globals()[sys.argv[2]]()
