"""What is refused, and how it says so; warnings; threads; memory; a shared object that is missing or too old."""
import gc
import os
import pickle
import resource
import subprocess
import sys
import threading
import warnings

import numpy as np
import pytest

import morvenqvr as qvr

A = np.linspace(-2, 2, 16).astype("f4")
B = A + 3


def refused(kind, argument, words, call, status=None):
    """The exception names function, argument, wanted and got."""
    with pytest.raises(kind) as caught:
        call()
    error = caught.value
    assert isinstance(error, qvr.Error) and error.function and error.argument == argument and error.status == status, repr(error)
    assert (error.code is None) == (status is None)
    for word in words:
        assert word in str(error), str(error)
    assert str(pickle.loads(pickle.dumps(error))) == str(error)


UNARY = ["abs", "sqrt", "exp", "ln", "sin", "win_hann", "sort", "sum_window", "mean", "median_filter"]


@pytest.mark.parametrize("name", ["add", "div", *UNARY])
def test_arrays_that_do_not_fit(name):
    function = getattr(qvr, name)
    more = {"sum_window": (3,), "median_filter": (3,)}.get(name, ())
    kind = "i2" if name == "sum_window" else "f4"
    first = "a" if name in ("add", "div") else "x"
    good = np.arange(1, 17).astype(kind)

    def call(x, **keywords):
        return function(x, x, **keywords) if first == "a" else function(x, *more, **keywords)

    wanted = np.dtype(kind).name
    refused(TypeError, first, [wanted, "byte-swapped"], lambda: call(good.astype(">" + kind)))
    refused(TypeError, first, [wanted, "complex256"], lambda: call(good.astype("c32")))
    refused(TypeError, first, [wanted, "list"], lambda: call(list(good)))
    refused(TypeError, first, ["contiguous", "bytes apart", "copy=True"], lambda: call(good[::2]))
    refused(TypeError, first, ["contiguous"], lambda: call(good.reshape(4, 4).T))
    refused(TypeError, first, [wanted, "str"], lambda: call("text"))
    refused(TypeError, first, [wanted, "NoneType"], lambda: call(None))
    refused(TypeError, first, [wanted, "masked"], lambda: call(np.ma.array(good)))
    refused(TypeError, first, [wanted, "object"], lambda: call(good.astype(object)))
    plain = call(good)
    for copied in (call(good.astype(">" + kind), copy=True), call(list(good), copy=True), call(np.repeat(good, 2)[::2], copy=True)):
        assert np.array_equal(plain, copied)
    if isinstance(plain, np.ndarray):
        out = np.empty_like(plain)
        out.flags.writeable = False
        refused(ValueError, "out", ["read-only"], lambda: call(good, out=out))
        refused(ValueError, "out", [str(plain.shape), "(3,)"], lambda: call(good, out=np.empty(3, plain.dtype)), "qvrErrBadSize")
        refused(TypeError, "out", [plain.dtype.name, "complex64"], lambda: call(good, out=np.empty(plain.shape, "c8")))
        refused(TypeError, "out", ["contiguous"], lambda: call(good, out=np.empty(2 * len(plain), plain.dtype)[::2]))
        refused(TypeError, "out", ["list"], lambda: call(good, out=list(plain)))
        assert np.array_equal(call(good), plain)


def test_overlap():
    x = np.arange(32, dtype="f4")
    kept = x.copy()
    for call in (lambda: qvr.add(x[:16], x[16:], out=x[1:17]), lambda: qvr.sqrt(x[1:17], out=x[:16]), lambda: qvr.add(x[:16], 3, out=x[1:17]),
                 lambda: qvr.FIR(A)(x[:16], out=x[1:17]), lambda: qvr.IIR([1], [1, .5])(x.view("f8")[:8], out=x.view("f8")[1:9]),
                 lambda: qvr.convolve(x[:4], x[4:8], out=x[:7]), lambda: qvr.resize_region(x.reshape(4, 8), x.reshape(4, 8), (0.5, 0.5)),
                 lambda: qvr.median_filter(x[:16], 3, out=x[1:17]), lambda: qvr.convert(x[:8], out=x.view("i2")[:8])):
        refused(ValueError, "out", ["overlap"], call)
        assert np.array_equal(x, kept)
    refused(ValueError, "out", ["another input"], lambda: qvr.min_every(A, B2 := B.copy(), out=B2))
    # Columns of one array share no element, though they lie in one block.
    table = np.arange(64, dtype="f4").reshape(8, 8)
    assert np.array_equal(qvr.add(table[:, :4].copy(), 1), qvr.add(table[:, :4], 1, out=table[:, 4:]))


def test_values_out_of_range():
    u = np.ones(4, "u2")
    refused(ValueError, "b", ["70000"], lambda: qvr.add(u, 70000))
    refused(ValueError, "b", [], lambda: qvr.add(u, 10**30))
    refused(TypeError, "b", ["integer", "float"], lambda: qvr.add(u, 1.5))
    refused(ValueError, "b", ["shift"], lambda: qvr.left_shift(u, -1), "qvrErrBadShift")
    refused(ValueError, "b", ["divisor"], lambda: qvr.div(A, 0.0), "qvrErrDivByZero")
    refused(ValueError, "divide", [], lambda: qvr.normalize(A, 0, 0), "qvrErrDivByZero")
    refused(ValueError, "size", [], lambda: qvr.sum_window(np.ones(9, "i2"), 0), "qvrErrBadWindowLength")
    refused(ValueError, "relation", ["'less'", "'more'"], lambda: qvr.threshold(A, 0, "more"), "qvrErrBadSelector")
    refused(ValueError, "relation", ["'less'", "17"], lambda: qvr.threshold(A, 0, 17), "qvrErrBadSelector")
    refused(ValueError, "kind", ["'butterworth'"], lambda: qvr.iir_lowpass(3, 0.1, kind="elliptic"), "qvrErrBadSelector")
    refused(ValueError, "kind", ["'butterworth'"], lambda: qvr.iir_lowpass(3, 0.1, kind=7), "qvrErrBadSelector")
    refused(ValueError, "window", ["'hann'"], lambda: qvr.fir_lowpass(9, 0.1, window=9), "qvrErrBadSelector")
    refused(ValueError, "cutoff", [], lambda: qvr.iir_lowpass(3, 0.7), "qvrErrBadCutoff")
    refused(ValueError, "order", [], lambda: qvr.iir_lowpass(13, 0.1), "qvrErrBadFilterOrder")
    refused(ValueError, "scale", [], lambda: qvr.add(A, B, scale=1))
    refused(ValueError, "accuracy", ["11", "24"], lambda: qvr.sin(A, accuracy=24))
    refused(ValueError, "b", ["(16,)", "(8,)"], lambda: qvr.add(A, B[:8]), "qvrErrBadSize")
    refused(ValueError, "phase", [], lambda: qvr.sample_down(A, 3, phase=3), "qvrErrBadSamplePhase")
    refused(ValueError, "factor", [], lambda: qvr.sample_up(A, 0), "qvrErrBadSampleFactor")
    refused(ValueError, None, [], lambda: qvr.sample_up(A, 2**31 - 1), "qvrErrBadSize")
    refused(ValueError, "taps", [], lambda: qvr.FIR([]), "qvrErrBadTapsLen")
    refused(ValueError, "b", [], lambda: qvr.IIR([1], [1]), "qvrErrBadOrder")
    refused(ValueError, "a", [], lambda: qvr.IIR([1, 2], [0, 1]), "qvrErrDivByZero")
    refused(ValueError, "n", ["power of two", "1000"], lambda: qvr.RealFFT(1000), "qvrErrFFTOrder")
    refused(ValueError, "offsets", [], lambda: qvr.Wavelet(A, A, offsets=(-2, 0, 0, 0)), "qvrErrBadOffset")
    refused(ValueError, "method", ["'lanczos'"], lambda: qvr.resize(np.ones((9, 9), "u1"), (3, 3), method="best"), "qvrErrBadInterpolation")
    refused(ValueError, "factors", [], lambda: qvr.resize(np.ones((9, 9), "u1"), (12, 12), method="area"), "qvrErrBadFactor")
    refused(ValueError, "image", ["(9, 9, 3)"], lambda: qvr.resize(np.ones((9, 9, 3), "u1"), (3, 3)), "qvrErrBadChannels")
    refused(TypeError, "x", ["wanted", "int16"], lambda: qvr.RealFFT(16).forward(A.astype("i2")))
    refused(TypeError, "relation", ["integer", "ndarray"], lambda: qvr.threshold(A, 0, A))
    refused(ValueError, "norm", ["'backward'"], lambda: qvr.RealFFT(16, norm=A), "qvrErrFFTFlag")
    for wrong in (lambda: qvr.add(), lambda: qvr.add(A), lambda: qvr.add(A, B, nothing=1), lambda: qvr.FIR(), lambda: qvr.RealFFT("x")):
        with pytest.raises(TypeError):
            wrong()
    with pytest.raises(qvr.Error):
        qvr.FIR("text")


def test_numbers_and_scalars():
    assert np.array_equal(qvr.add(A, np.float64(2)), A + 2) and np.array_equal(qvr.add(A, np.array(2.0)), A + 2)
    assert np.array_equal(qvr.add(A, True), A + 1)
    alone = qvr.abs(np.array(-2.0, "f4"))
    assert alone.shape == () and alone == 2
    assert isinstance(qvr.mean(A), float) and isinstance(qvr.max(A.astype("i2")), int) and isinstance(qvr.find(np.ones(3, "u1"), np.ones(1, "u1")), int)


def seen(call):
    with warnings.catch_warnings(record=True) as caught:
        warnings.simplefilter("always")
        result = call()
    assert all(issubclass(w.category, qvr.Warning) and w.filename == __file__ for w in caught)
    return result, [(w.message.status, w.message.index) for w in caught]


def test_warnings():
    bad = np.array([4, 1, -1, 0, -5, 0], "f4")
    assert seen(lambda: qvr.div(B[:6], bad))[1] == [("qvrWarnDivByZero", 3)]
    assert seen(lambda: qvr.div(1, bad))[1] == [("qvrWarnDivByZero", 3)]
    assert seen(lambda: qvr.sqrt(bad))[1] == [("qvrWarnNegativeInput", 2)]
    assert seen(lambda: qvr.sqrt(bad.reshape(2, 3)))[1] == [("qvrWarnNegativeInput", (0, 2))]
    # The first element in error decides, or the last: by the library's contract. The index is of the first with that status.
    assert seen(lambda: qvr.ln(bad))[1] == [("qvrWarnLnNegArg", 2)]
    assert seen(lambda: qvr.ln(bad, accuracy=11))[1] == [("qvrWarnSingularity", 3)]
    assert seen(lambda: qvr.asin(bad))[1] == [("qvrWarnDomain", 0)]
    assert seen(lambda: qvr.pow(bad, 0.5))[1] == [("qvrWarnDomain", 2)]
    for silent in (qvr.exp, qvr.log10, qvr.tanh):
        assert seen(lambda: silent(bad * 1000))[1] == []
    far = np.ones(100_000, "f4")
    far[77_777] = 0
    assert seen(lambda: qvr.div(far, far.copy()))[1] == [("qvrWarnDivByZero", 77_777)]
    # In place the source is gone: no index.
    assert seen(lambda: qvr.sqrt(bad.copy(), out=bad.copy()))[1] == [("qvrWarnNegativeInput", 2)]
    same = bad.copy()
    assert seen(lambda: qvr.sqrt(same, out=same))[1] == [("qvrWarnNegativeInput", None)]
    assert seen(lambda: qvr.median_filter(A, 4))[1] == [("qvrWarnEvenMask", None)]
    with warnings.catch_warnings():
        warnings.simplefilter("error", qvr.Warning)
        with pytest.raises(qvr.Warning) as caught:
            qvr.ln(bad)
    assert str(pickle.loads(pickle.dumps(caught.value))) == str(caught.value) and "index 2" in str(caught.value)
    with np.errstate(all="raise"):
        assert seen(lambda: qvr.ln(bad))[1]


def test_threads_share_and_wait():
    """Functions and prepared transforms serve all threads at once; a filter takes them one after the other."""
    x = np.random.default_rng(3).standard_normal((8, 4096)).astype("f4")
    fft, hilbert = qvr.RealFFT(4096), qvr.Hilbert(4096)
    fir = qvr.FIR(np.ones(4, "f4"))
    expected = [(fft.forward(row), hilbert(row), qvr.exp(row)) for row in x]
    faults = []

    def work(k):
        try:
            for _ in range(30):
                got = fft.forward(x[k]), hilbert(x[k]), qvr.exp(x[k])
                assert all(np.array_equal(a, b) for a, b in zip(got, expected[k]))
                assert len(fir(x[k])) == 4096
        except BaseException as fault:  # noqa: B902
            faults.append(fault)

    threads = [threading.Thread(target=work, args=(k,)) for k in range(8)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert not faults, faults
    # Closing under a running call waits, or lets it end; no crash.
    for _ in range(20):
        fft = qvr.RealFFT(1 << 16)
        wide = np.zeros((8, 1 << 16), "f4")
        thread = threading.Thread(target=fft.forward, args=(wide,))
        thread.start()
        fft.close()
        try:
            thread.join()
        except qvr.StateError:
            pass
        assert fft.closed


def test_reset_and_creation_beside_calls():
    """An object cannot be made twice; a reset waits for the call under way."""
    x = np.ones(1 << 18)
    for stream in (qvr.IIR(np.ones(30), np.r_[1, np.zeros(29)]), qvr.FIR(np.ones(30)), qvr.FIRMultirate(np.ones(30))):
        samples = x if not isinstance(stream, qvr.FIRMultirate) else x.astype("f4")
        threads = [threading.Thread(target=stream, args=(samples,)) for _ in range(3)]
        for thread in threads:
            thread.start()
            stream.reset()
        for thread in threads:
            thread.join()
        stream.reset()
        assert stream(samples)[:3].tolist() == [1, 2, 3]
    for made, arguments in ((qvr.RealFFT(8), (16,)), (qvr.FIR([1.0]), ([2.0],)), (qvr.IIR([1, 2], [1]), ([1, 2], [1])), (qvr.Hilbert(3), (4,)),
                            (qvr.Wavelet([1.0], [1.0]), ([1.0], [1.0])), (qvr.Resize((4, 4), (2, 2)), ((4, 4), (2, 2)))):
        with pytest.raises(qvr.StateError, match="made already"):
            made.__init__(*arguments)


@pytest.mark.filterwarnings("ignore::pytest.PytestUnhandledThreadExceptionWarning")
def test_gil_is_released():
    """A counting thread goes on while one long call runs."""
    x = np.random.default_rng(3).standard_normal(6_000_000).astype("f4")
    switch = sys.getswitchinterval()
    sys.setswitchinterval(10)  # nobody takes the lock from the other: it has to be given
    try:
        count, stop = [0], threading.Event()

        def tick():
            while not stop.is_set():
                count[0] += 1
                stop.wait(0.001)

        thread = threading.Thread(target=tick)
        thread.start()
        before = count[0]
        qvr.sort(x)
        after = count[0]
        stop.set()
        thread.join()
        assert after - before > 5
    finally:
        sys.setswitchinterval(switch)


def test_nothing_leaks():
    image = np.zeros((64, 64), "u1")
    kept = np.ones(1 << 15, "f4")

    def round_():
        for _ in range(60):
            qvr.RealFFT(1 << 15).forward(kept)
            fir = qvr.FIR(np.ones(2000, "f4"))
            fir(kept)
            pickle.loads(pickle.dumps(fir))
            qvr.IIR(np.ones(50), np.ones(50) * 0.01)(kept.astype("f8"))
            qvr.Hilbert(1000)
            wavelet = qvr.Wavelet(*qvr.daubechies(4))
            wavelet.inverse(*wavelet.forward(kept))
            qvr.upfirdn(np.ones(100), kept[:5000], 3, 2)
            qvr.resize(image, (300, 300), method="lanczos")
            qvr.empty(1 << 16)
            qvr.mean(kept.reshape(-1, 8))
            for wrong in (lambda: qvr.FIR([]), lambda: qvr.IIR([1, 2], [0, 1]), lambda: qvr.add(kept, kept[:3]), lambda: qvr.RealFFT(3)):
                try:
                    wrong()
                except qvr.Error:
                    pass
        gc.collect()

    round_()
    counts = sys.getrefcount(None), len(gc.get_objects())
    memory = resource.getrusage(resource.RUSAGE_SELF).ru_maxrss
    for _ in range(4):
        round_()
    assert abs(sys.getrefcount(None) - counts[0]) < 60 and abs(len(gc.get_objects()) - counts[1]) < 60
    assert resource.getrusage(resource.RUSAGE_SELF).ru_maxrss - memory < 8000  # KiB


def imported(**environment):
    done = subprocess.run([sys.executable, "-B", "-c", "import morvenqvr"], env={**os.environ, **environment}, capture_output=True, text=True)
    return done.returncode, done.stderr.strip().splitlines()[-1] if done.stderr else ""


def test_shared_object_missing_or_too_old(tmp_path):
    code, said = imported(MORVENQVR_LIBRARY=str(tmp_path / "none.so"))
    assert code and "ImportError: morvenqvr cannot load" in said and "none.so" in said and "libmorvenqvr1" in said
    source = tmp_path / "old.c"
    source.write_text("int Morven_qvrsAdd_32f(void) { return 0; }\n")
    subprocess.run(["cc" if os.path.exists("/usr/bin/cc") else "clang-19", "-shared", "-fPIC", "-o", tmp_path / "old.so", source], check=True)
    code, said = imported(MORVENQVR_LIBRARY=str(tmp_path / "old.so"))
    assert code and "ImportError: morvenqvr needs a newer libmorvenqvr.so.1" in said and "lacks 212 of 213 functions" in said
    (tmp_path / "text.so").write_text("no library")
    code, said = imported(MORVENQVR_LIBRARY=str(tmp_path / "text.so"))
    assert code and "ImportError: morvenqvr cannot load" in said


def test_interpreter_without_numpy_or_of_another_kind(tmp_path):
    import shutil
    package = os.path.dirname(qvr.__file__)
    done = subprocess.run([sys.executable, "-B", "-S", "-c", "import morvenqvr"], env={"PYTHONPATH": os.path.dirname(package)}, capture_output=True, text=True)
    assert "ImportError: morvenqvr needs numpy, which this interpreter cannot import" in done.stderr
    shutil.copytree(package, tmp_path / "morvenqvr", ignore=shutil.ignore_patterns("_core*"))
    done = subprocess.run([sys.executable, "-B", "-c", "import morvenqvr"], env={"PYTHONPATH": str(tmp_path)}, capture_output=True, text=True)
    assert "ImportError: morvenqvr was built for another interpreter" in done.stderr


def test_fork():
    """A child of a process that has used threads of the library works."""
    import multiprocessing
    x = np.ones(1 << 18, "f4")
    qvr.convolve(x, np.ones(200, "f4"))
    with multiprocessing.get_context("fork").Pool(2) as pool:
        assert pool.map(qvr.mean, [x, x]) == [1, 1]
