"""The example programs on generated files, judged by what they write."""
import os
import signal
import subprocess
import sys
import threading
import time
import wave
from pathlib import Path

import numpy as np
import pytest
import scipy.signal as ss
from PIL import Image

FOLDER = Path(os.environ["QVR_SOURCE"]) / "examples/python"
sys.path.insert(0, str(FOLDER))
os.environ["PYTHONPATH"] = os.environ["PYTHONPATH"] + os.pathsep + str(FOLDER)
rng = np.random.default_rng(5)


def write(path, samples, rate=16000):
    with wave.open(str(path), "wb") as file:
        file.setparams((1 if samples.ndim == 1 else samples.shape[0], 2, rate, 0, "NONE", "NONE"))
        file.writeframes((np.clip(samples, -1, 1) * 32767).round().astype("<i2").T.tobytes())


def read(path):
    with wave.open(str(path), "rb") as file:
        data = np.frombuffer(file.readframes(file.getnframes()), "<i2")
        return data.reshape(-1, file.getnchannels()).T / 32767


def run(name, *arguments):
    done = subprocess.run([sys.executable, "-B", FOLDER / name, *map(str, arguments)], capture_output=True, text=True)
    assert done.returncode == 0, done.stderr
    return done.stdout


def test_live_filter(tmp_path):
    x = rng.uniform(-0.5, 0.5, (2, 16000))
    write(tmp_path / "in.wav", x)
    said = run("live_filter.py", tmp_path / "in.wav", tmp_path / "out.wav", "--low", 1000, "--high", 3000, "--taps", 129, "--block", 301,
               "--plot", tmp_path / "plot.png")
    y = read(tmp_path / "out.wav")
    assert "54 blocks" in said and y.shape == x.shape and Image.open(tmp_path / "plot.png").size[0] > 500
    f, power = ss.welch(y[1, 500:], 16000, nperseg=1024)
    assert power[(f < 500) | (f > 3500)].sum() < 1e-4 * power.sum()
    taps = ss.firwin(129, [1000, 3000], window="blackman", pass_zero=False, fs=16000)
    assert np.corrcoef(y[0], ss.lfilter(taps, 1, read(tmp_path / "in.wav")[0]))[0, 1] > 0.999


def test_spectrogram(tmp_path):
    t = np.arange(32000) / 16000
    write(tmp_path / "in.wav", 0.5 * np.sin(2 * np.pi * 2000 * t) * (t > 1))
    said = run("spectrogram.py", tmp_path / "in.wav", tmp_path / "out.png", "--fft", 512)
    assert "loudest -6.0 dB" in said and "2000 Hz" in said and Image.open(tmp_path / "out.png").size[0] > 500


def test_denoise(tmp_path):
    t = np.arange(48000) / 16000
    clean = 0.4 * np.sin(2 * np.pi * 100 * t) * np.exp(-((t - 1.5) ** 2))
    noisy = clean + 0.05 * rng.standard_normal(len(t))
    write(tmp_path / "in.wav", noisy)
    said = run("denoise.py", tmp_path / "in.wav", tmp_path / "out.wav", "--plot", tmp_path / "plot.png", "--moments", 8)
    result = read(tmp_path / "out.wav")[0]
    assert np.std(result - clean) < 0.4 * np.std(noisy - clean)
    assert abs(float(said.split("noise ")[1].split()[0]) - 20 * np.log10(0.05)) < 1


def test_thumbnails(tmp_path):
    pictures = tmp_path / "pictures"
    pictures.mkdir()
    gradient = np.linspace(0, 255, 600).astype("u1")
    Image.fromarray(np.stack([np.tile(gradient, (400, 1))] * 3, -1)).save(pictures / "wide.png")
    Image.fromarray(np.tile(gradient[:50], (70, 1))).save(pictures / "small.jpg")
    (pictures / "broken.jpg").write_text("no picture")
    said = run("thumbnails.py", pictures, tmp_path / "out", "--size", 100)
    assert "2 of 3" in said
    wide = Image.open(tmp_path / "out/wide.jpg")
    assert wide.size == (100, 67) and Image.open(tmp_path / "out/small.jpg").size == (50, 70)
    assert abs(np.array(wide)[30, :, 0].astype(float) - np.linspace(1, 254, 100)).max() < 6


def test_cluster():
    """Two processes, one of which is killed on the way; chunks of a size that divides nothing."""
    import cluster
    from distributed import Client, LocalCluster
    plan = cluster.Plan(3_000_001, up=2, down=5, hop=300)
    whole = cluster.spectrogram(plan, 0, plan.frames)
    assert whole.shape == (plan.frames, 513)

    def apart(a, b):
        """Largest difference of magnitudes, beside the largest magnitude."""
        return abs(10 ** (a / 20) - 10 ** (b / 20)).max() / 10 ** (whole.max() / 20)

    for first, last in ((0, 1), (7, 9), (plan.frames - 2, plan.frames)):
        assert apart(cluster.spectrogram(plan, first, last), whole[first:last]) < 1e-6
    with LocalCluster(n_workers=2, threads_per_worker=1, processes=True, dashboard_address=None) as machines, Client(machines) as client:
        workers = client.run(os.getpid)
        assert len(set(workers.values())) == 2 and os.getpid() not in workers.values()

        victim = next(iter(workers.values()))
        out = np.full((plan.frames, 513), np.nan, "f4")
        left = []

        def kill():
            while np.isnan(out).all():
                time.sleep(0.005)
            left.append(int(np.isnan(out[:, 0]).sum()))
            os.kill(victim, signal.SIGKILL)

        killer = threading.Thread(target=kill)
        killer.start()
        result = cluster.run(client, plan, 37, out, progress=False)
        killer.join()
        assert left[0] > 0, "frames that were still to come"
    assert result.shape == whole.shape and apart(result, whole) < 1e-6


def test_guide():
    """The lines of docs/python.md run."""
    import re
    import morvenqvr as qvr
    text = (Path(os.environ["QVR_SOURCE"]) / "docs/python.md").read_text()
    blocks = re.findall(r"```python\n(.*?)```", text, re.S)
    names = {"np": np, "qvr": qvr, "signal_rows": np.ones((3, 1024), "f4"), "stream": [np.ones(10000, "f4")] * 3, "play": len,
             "grey_image": np.ones((768, 1024), "u1")}
    assert len(blocks) == 3
    for block in blocks:
        exec(block, names)
    assert len(names["parts"][0]) == 10000 // 147 * 160


@pytest.mark.parametrize("name", ["live_filter.py", "spectrogram.py", "denoise.py", "thumbnails.py", "cluster.py"])
def test_help(name):
    assert "usage" in run(name, "--help")
