"""The search for a sound on generated files: findsound_test.py FOLDER-OF-PROGRAMS CASE"""
import os
import random
import re
import subprocess
import sys
import tempfile

from files import picture, write

RATE = 8000
programs = os.path.abspath(sys.argv[1])
dice = random.Random(5)


def findsound(*arguments):
    return subprocess.run([os.path.join(programs, "findsound"), *arguments], capture_output=True, text=True)


def noise(count, level=0.3):
    return [dice.uniform(-level, level) for _ in range(count)]


def put(recording, sound, at, gain):
    for i, v in enumerate(sound):
        recording[at + i] += gain * v


def found(text):
    return [(float(a), float(b)) for a, b in re.findall(r"at +([\d.]+) s, similarity ([\d.]+)", text)]


def expect(text, places, slack=0.0002):
    got = found(text)
    assert len(got) == len(places), text
    for (at, _), want in zip(got, places):
        assert abs(at - want) <= slack, text
    return [similarity for _, similarity in got]


def places():
    sound = noise(1500)
    recording = noise(5 * RATE, 0.01)
    for at, gain in ((1000, 1), (17777, 0.2), (40000 - 1500, -0.0)):
        put(recording, sound, at, gain)
    put(recording, sound, 30000, 0.5)
    write("sound.wav", sound)
    write("recording.wav", recording)
    done = findsound("--out", "out.png", "sound.wav", "recording.wav")
    assert done.returncode == 0 and done.stderr == "", done
    similarity = expect(done.stdout, [1000 / RATE, 17777 / RATE, 30000 / RATE])
    assert similarity[0] > 0.98 and similarity[2] > 0.98 and 0.9 < similarity[1] < 1, done.stdout
    # A red frame stands where each place begins, and nowhere else.
    rows = picture("out.png")
    marks = [x for x, pixel in enumerate(rows[20]) if pixel == (200, 30, 30)]
    width = len(rows[0])
    for at in (1000, 17777, 30000):
        assert any(abs(x - at / 40000 * width) <= 1 for x in marks), (at, marks)


def piece_of_the_sound():
    sound = noise(4000)
    recording = noise(2 * RATE, 0.005)
    put(recording, sound[800:1600], 5000, 1)
    write("sound.wav", sound)
    write("recording.wav", recording)
    expect(findsound("--cut", "0.1,0.2", "sound.wav", "recording.wav").stdout, [5000 / RATE])


def nothing_there():
    write("sound.wav", noise(1000))
    write("recording.wav", noise(20000))
    done = findsound("--out", "out.png", "sound.wav", "recording.wav")
    assert done.returncode == 0 and "found 0 times" in done.stdout, done
    assert found(done.stdout) == [] and picture("out.png")


def least_similarity():
    sound = noise(1000)
    recording = noise(20000, 0.3)
    put(recording, sound, 7000, 0.5)
    write("sound.wav", sound)
    write("recording.wav", recording)
    expect(findsound("--least", "0.35", "sound.wav", "recording.wav").stdout, [7000 / RATE])
    expect(findsound("--least", "0.9", "sound.wav", "recording.wav").stdout, [])


def short_files():
    write("one.wav", [0.5])
    write("recording.wav", [0.5, 0.25, 0.5])
    assert findsound("--out", "out.png", "one.wav", "recording.wav").returncode == 0
    write("same.wav", noise(100))
    expect(findsound("same.wav", "same.wav").stdout, [0])


def bad_arguments():
    write("a.wav", noise(100))
    write("long.wav", noise(200))
    write("silent.wav", [0] * 100)
    write("fast.wav", noise(300), rate=16000)
    for arguments in ([], ["a.wav"], ["a.wav", "a.wav", "a.wav"], ["--least", "0", "a.wav", "a.wav"],
                      ["--cut", "1,1", "a.wav", "a.wav"], ["--cut", "1", "a.wav", "a.wav"]):
        assert findsound(*arguments).returncode == 2, arguments
    for arguments in (["absent.wav", "a.wav"], ["long.wav", "a.wav"], ["silent.wav", "a.wav"], ["a.wav", "fast.wav"],
                      ["--cut", "5,6", "a.wav", "a.wav"], ["--out", "absent/x.png", "a.wav", "long.wav"]):
        done = findsound(*arguments)
        assert done.returncode == 1 and done.stderr.count("\n") == 1, (arguments, done)
    assert findsound("--help").returncode == 0


with tempfile.TemporaryDirectory() as folder:
    os.chdir(folder)
    globals()[sys.argv[2]]()
