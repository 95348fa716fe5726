"""Objects that own memory: transforms, filters, scaling; against scipy and PyWavelets, in pieces, copied and pickled."""
import copy
import gc
import pickle
import warnings
import weakref

import numpy as np
import pytest
import pywt
import scipy.ndimage
import scipy.signal as ss

import morvenqvr as qvr

rng = np.random.default_rng(1)
X = rng.standard_normal(1000).astype(np.float32)


@pytest.mark.parametrize("dtype", ["f4", "f8"])
@pytest.mark.parametrize("n", [1, 2, 4, 8, 64, 128, 1024, 4096])
def test_fft(n, dtype):
    tolerance = 1e-6 if dtype == "f4" else 1e-14
    x = rng.standard_normal((2, 3, n)).astype(dtype)
    reference = np.fft.rfft(x.astype("f8"))
    bound = tolerance * np.sqrt(n) * 4
    for norm, factor, back in (("backward", 1, 1), ("forward", 1 / n, 1), ("ortho", n ** -0.5, 1), ("none", 1, n)):
        fft = qvr.RealFFT(n, norm=norm, dtype=dtype)
        spectrum = fft.forward(x)
        assert spectrum.shape == (2, 3, n // 2 + 1) and spectrum.dtype == np.result_type(dtype, "c8")
        assert abs(spectrum - reference * factor).max() <= bound * factor * (50 if norm == "ortho" else 1)
        assert abs(fft.inverse(spectrum) - back * x).max() <= back * bound * (50 if norm == "ortho" else 1)
        for other in (copy.copy(fft), copy.deepcopy(fft), pickle.loads(pickle.dumps(fft))):
            assert np.array_equal(other.forward(x), spectrum) and other.norm == norm
    assert np.array_equal(qvr.RealFFT(order=n.bit_length() - 1, dtype=dtype).forward(x), qvr.RealFFT(n, dtype=dtype).forward(x))


def test_fft_of_either_type():
    fft = qvr.RealFFT(64)
    assert fft.dtype is None
    for transform in (fft, pickle.loads(pickle.dumps(fft))):
        for dtype, tolerance in (("f4", 1e-6), ("f8", 1e-14)):
            x = rng.standard_normal((3, 64)).astype(dtype)
            spectrum = transform.forward(x)
            assert spectrum.dtype == np.result_type(dtype, "c8") and abs(spectrum - np.fft.rfft(x)).max() < 50 * tolerance
            back = transform.inverse(spectrum, out=np.empty_like(x))
            assert back.dtype == x.dtype and abs(back - x).max() < 10 * tolerance
    with pytest.raises(qvr.ArrayError, match="float32"):
        qvr.RealFFT(64, dtype="f4").forward(np.zeros(64))
    with pytest.raises(qvr.ArrayError):
        fft.forward(np.zeros(64, "i4"))
    fft.close()
    for dtype in ("f4", "f8"):
        with pytest.raises(qvr.StateError, match="closed"):
            fft.forward(np.zeros(64, dtype))


def test_fft_in_place_and_out():
    fft = qvr.RealFFT(256)
    shared = np.zeros(258, np.float32)
    shared[:256] = X[:256]
    spectrum = fft.forward(shared[:256], out=shared.view(np.complex64))
    assert np.shares_memory(spectrum, shared)
    assert np.array_equal(spectrum, fft.forward(X[:256]))
    assert fft.inverse(spectrum, out=shared[:256]) is not None and np.allclose(shared[:256], X[:256], atol=1e-6)
    with pytest.raises(qvr.ArgumentError, match="overlap"):
        fft.forward(shared[2:], out=shared.view(np.complex64))
    # The imaginary parts of the first and last bin are not read.
    spectrum = fft.forward(X[:256])
    spectrum.imag[[0, -1]] = np.nan
    assert np.allclose(fft.inverse(spectrum), X[:256], atol=1e-6)
    assert qvr.RealFFT(8).forward(np.zeros((0, 8), "f4")).shape == (0, 5)


def test_fixed_point_fft():
    x = (X[:64] * 8000).astype("i2")
    for accurate in (False, True):
        fft = qvr.RealFFT(64, dtype="i2", accurate=accurate)
        spectrum = fft.forward(x, scale=4)
        assert spectrum.dtype == qvr.int16c
        exact = np.fft.rfft(x) / 16
        assert abs(spectrum["re"] - exact.real).max() <= 3 and abs(spectrum["im"] - exact.imag).max() <= 3
        assert np.array_equal(pickle.loads(pickle.dumps(fft)).forward(x, scale=4), spectrum)
        with pytest.raises(qvr.StateError, match="forward direction only"):
            fft.inverse(spectrum)


@pytest.mark.parametrize("n", [1, 2, 3, 100, 101, 1000])
def test_hilbert(n):
    hilbert = qvr.Hilbert(n)
    x = rng.standard_normal((4, n)).astype("f4")
    y = hilbert(x)
    expected = ss.hilbert(x.astype("f8")) if n > 2 else x + 0j
    assert abs(y - expected).max() < 1e-5
    assert np.array_equal(pickle.loads(pickle.dumps(hilbert))(x), y)


KINDS = [("f4", "f4"), ("f8", "f8"), ("f4", "f8"), ("i2", "f8")]


@pytest.mark.parametrize("samples,taps", KINDS)
@pytest.mark.parametrize("length", [1, 5, 101, 700])
def test_fir(length, samples, taps):
    design = (rng.standard_normal(length) / length).astype(taps)
    x = (X * (20000 if samples == "i2" else 1)).astype(samples)
    expected = ss.lfilter(design.astype("f8"), 1, x.astype("f8"))
    bound = 0.5001 if samples == "i2" else 1e-5 if samples == "f4" else 1e-13
    whole = qvr.FIR(design, dtype=samples)(x)
    assert whole.dtype == x.dtype and abs(whole - np.clip(expected, -32768, 32767) if samples == "i2" else whole - expected).max() <= bound
    fir, parts = qvr.FIR(design, dtype=samples), []
    for piece in np.split(x, [0, 1, 4, 130, 400]):
        parts.append(fir(piece))
        if samples != "i2":
            fir = pickle.loads(pickle.dumps(copy.copy(fir)))
    assert abs(np.concatenate(parts).astype("f8") - whole).max() <= 2 * bound
    in_place = x.copy()
    assert qvr.FIR(design, dtype=samples)(in_place, out=in_place) is in_place
    assert abs(in_place.astype("f8") - whole).max() <= 2 * bound
    assert np.array_equal(fir.taps, design)


@pytest.mark.parametrize("samples,taps", KINDS)
def test_fir_delay_line_newest_first(samples, taps):
    design = np.arange(1, 5).astype(taps)
    past = np.array([7, 5, 3, 2]).astype(samples)  # x[-1] = 7
    fir = qvr.FIR(design, dtype=samples, delay=past)
    assert fir(np.array([1]).astype(samples))[0] == 1 + 2 * 7 + 3 * 5 + 4 * 3
    fir.reset()
    assert fir(np.array([1]).astype(samples))[0] == 1
    if samples == "i2":
        with pytest.raises(qvr.StateError, match="cannot be read back"):
            fir.delay
        with pytest.raises(qvr.StateError, match="in mid-stream"):
            copy.copy(fir)
        fresh = qvr.FIR(design, dtype=samples, delay=past)
        assert pickle.loads(pickle.dumps(fresh))(np.array([1], "i2"))[0] == 42
    else:
        assert list(fir.delay[:3]) == [1, 0, 0]
        fir.delay = past
        assert fir(np.array([0]).astype(samples))[0] == 14 + 15 + 12


def test_iir():
    b, a = qvr.iir_lowpass(4, 0.1)
    assert np.allclose((b, a), ss.butter(4, 0.2))
    assert np.allclose(qvr.iir_highpass(3, 0.2, kind="chebyshev", ripple=1.0), ss.cheby1(3, 1.0, 0.4, "highpass"))
    x = X.astype("f8")
    iir = qvr.IIR(b, a)
    fresh = pickle.loads(pickle.dumps(iir))
    y = np.concatenate([iir(piece) for piece in np.split(x, [0, 3, 200])])
    assert np.allclose(y, ss.lfilter(b, a, x)) and np.allclose(fresh(x), y)
    for copied in (copy.copy, copy.deepcopy, pickle.dumps):
        with pytest.raises(qvr.StateError, match="in mid-stream"):
            copied(iir)
    iir.reset()
    assert np.allclose(iir(x), y)
    start = ss.lfilter_zi(b, a)
    assert np.allclose(qvr.IIR(b, a, delay=start)(x), ss.lfilter(b, a, x, zi=start)[0])
    in_place = x.copy()
    assert np.allclose(qvr.IIR.lowpass(4, 0.1)(in_place, out=in_place), y)


def test_unstable_design_warns_with_its_pole():
    with pytest.warns(qvr.Warning, match=r"magnitude 1\.0036"):
        qvr.iir_lowpass(8, 0.002)
    with warnings.catch_warnings():
        warnings.simplefilter("error")
        qvr.iir_lowpass(8, 0.1)
        sections = qvr.IIR.sections(8, 0.002)
    y = sections(np.ones(20000))
    assert abs(y[-1] - 1) < 1e-6 and abs(y).max() < 1.5


@pytest.mark.parametrize("band", ["lowpass", "highpass"])
@pytest.mark.parametrize("order", [1, 2, 3, 5, 8, 12])
def test_sections(order, band):
    for cutoff in (0.01, 0.2, 0.45):
        for ours, theirs in ((qvr.second_order_sections(order, cutoff, band), ss.butter(order, 2 * cutoff, band, output="sos")),
                             (qvr.second_order_sections(order, cutoff, band, kind="chebyshev", ripple=0.5),
                              ss.cheby1(order, 0.5, 2 * cutoff, band, output="sos"))):
            assert np.allclose(abs(ss.sosfreqz(ours)[1]), abs(ss.sosfreqz(theirs)[1]), rtol=1e-6, atol=1e-9)
            x = X.astype("f8")
            stream = qvr.Sections(ours)
            twin = copy.copy(pickle.loads(pickle.dumps(stream)))
            assert np.allclose(np.concatenate([stream(x[:100]), stream(x[100:])]), ss.sosfilt(ours, x))
            assert np.allclose(twin(x), ss.sosfilt(ours, x)), "a copy has a state of its own"
            with pytest.raises(qvr.StateError, match="in mid-stream"):
                copy.copy(stream)


@pytest.mark.parametrize("up,down,length", [(1, 1, 5), (3, 2, 20), (2, 5, 33), (7, 3, 1), (1, 4, 9), (160, 147, 641), (1, 50, 7)])
def test_multirate(up, down, length):
    taps = rng.standard_normal(length)
    expected = ss.upfirdn(taps, X.astype("f8"), up, down)
    whole = qvr.upfirdn(taps, X, up, down)
    assert whole.shape == expected.shape and abs(whole - expected).max() < 1e-4
    rows = qvr.upfirdn(taps, np.stack([X, -X]), up, down)
    assert np.array_equal(rows, np.stack([whole, -whole]))
    stream, parts, at = qvr.FIRMultirate(taps, up, down), [], 0
    while at < len(X):
        count = int(rng.integers(0, 40))
        assert stream.output_length(len(X[at:at + count])) == len(parts.append(stream(X[at:at + count])) or parts[-1])
        at += count
        stream = pickle.loads(pickle.dumps(stream))
    parts.append(stream.flush())
    assert np.allclose(np.concatenate(parts), whole, atol=1e-5)
    again = stream(X)
    assert np.array_equal(again, whole[:len(again)])
    if up <= down:
        shared = X.copy()
        target = shared[:stream.output_length(len(shared))] if stream.reset() is None else None
        assert np.array_equal(stream(shared, out=target), again) and np.shares_memory(shared, target)


def test_multirate_of_int16():
    x = (X * 10000).astype("i2")
    taps = rng.standard_normal(30).astype("f4")
    y = qvr.upfirdn(taps, x, 3, 2, scale=2)
    assert y.dtype == np.int16 and abs(y - np.clip(ss.upfirdn(taps, x.astype("f8"), 3, 2) / 4, -32768, 32767)).max() < 0.51


def test_multirate_phases():
    taps = rng.standard_normal(12)
    stuffed = np.zeros(300)
    stuffed[2::3] = X[:100]
    y = qvr.FIRMultirate(taps, 3, 2, up_phase=2, down_phase=1)(X[:100])
    assert np.allclose(y, np.convolve(stuffed, taps)[1:300:2], atol=1e-5)


@pytest.mark.parametrize("moments", [1, 2, 4, 10])
def test_wavelets(moments):
    taps = qvr.daubechies(moments)
    bank = pywt.Wavelet(f"db{moments}")
    assert all(np.allclose(a, b, atol=1e-6) for a, b in zip(taps, bank.filter_bank))
    for n in (1000, 999, 64):
        ours, theirs = qvr.wavedec(X[:n], taps, 3), pywt.wavedec(X[:n].astype("f8"), bank, "zero", 3)
        assert [len(c) for c in ours] == [len(c) for c in theirs]
        assert all(np.allclose(a, b, atol=1e-4) for a, b in zip(ours, theirs))
        assert np.allclose(qvr.waverec(ours, taps)[:n], X[:n], atol=1e-4)
    whole, stream, parts, back = qvr.Wavelet(*taps), qvr.Wavelet(*taps), [], []
    low, high = whole.forward(X)
    for piece in np.split(X, [0, 3, 8, 501, 900]):
        parts.append(stream.forward(piece))
        back.append(stream.inverse(*parts[-1]))
        stream = copy.deepcopy(pickle.loads(pickle.dumps(stream)))
    assert np.array_equal(np.concatenate([p[0] for p in parts]), low)
    assert np.array_equal(np.concatenate([p[1] for p in parts]), high)
    delay = 2 * moments - 2
    assert np.allclose(np.concatenate(back)[delay:], X[:1000 - delay], atol=1e-5)


def area_mean(image, shape):
    h, w = image.shape
    return image.reshape(shape[0], h // shape[0], shape[1], w // shape[1]).mean((1, 3))


def test_resize():
    image = rng.integers(0, 256, (48, 64)).astype("u1")
    assert np.array_equal(qvr.resize(image, (24, 32), method="area"), np.floor(area_mean(image, (24, 32)) + 0.5).astype("u1"))
    assert np.array_equal(qvr.resize(image, (96, 128), method="nearest"), image.repeat(2, 0).repeat(2, 1))
    for dtype in ("f4", "f8"):
        smooth = np.add.outer(np.arange(48.0), np.arange(64.0)).astype(dtype)
        for method in ("linear", "cubic", "catmull_rom"):
            big = qvr.resize(smooth, (96, 128), method=method)
            inner = np.add.outer((np.arange(96) + 0.5) / 2 - 0.5, (np.arange(128) + 0.5) / 2 - 0.5)[8:-8, 8:-8]
            assert abs(big[8:-8, 8:-8] - inner).max() < 1e-4
    colour = rng.integers(0, 256, (20, 30, 4)).astype("u1")
    for method in qvr.METHODS:
        shape = (10, 13) if method == "area" else (33, 17)
        whole = qvr.resize(colour, shape, method=method)
        assert all(abs(whole[..., k].astype(int) - qvr.resize(colour[..., k].copy(), shape, method=method)).max() <= 1 for k in range(4))
    scaler = qvr.Resize((48, 64), (20, 20), method="lanczos", antialias=True)
    assert np.array_equal(scaler(image), pickle.loads(pickle.dumps(scaler))(image))
    wide = np.zeros((48, 100), "u1")
    wide[:, 20:84] = image
    assert np.array_equal(scaler(wide[:, 20:84]), scaler(image)), "rows any distance apart"
    assert np.array_equal(scaler(image[::-1]), scaler(image[::-1].copy())), "from the last row to the first"


def test_antialiasing_is_centred():
    """As Pillow's, but for the border."""
    from PIL import Image
    image = (128 + 200 * scipy.ndimage.gaussian_filter(rng.standard_normal((96, 128)), 2)).clip(0, 255).astype("f4")
    for method, theirs in (("lanczos", Image.LANCZOS), ("catmull_rom", Image.BICUBIC), ("linear", Image.BILINEAR)):
        for shape in ((48, 64), (32, 41), (20, 33)):
            expected = np.asarray(Image.fromarray(image).resize(shape[::-1], theirs))
            assert abs(qvr.resize(image, shape, method=method, antialias=True) - expected)[6:-6, 6:-6].max() < 1e-3


def test_resize_regions_and_warnings():
    image = rng.integers(0, 256, (48, 64)).astype("u1")
    whole = qvr.Resize((48, 64), (24, 32), method="area")(image)
    out = np.full((24, 32), 9, "u1")
    assert qvr.Resize((48, 64), (24, 32), method="area", region=(4, 8, 10, 12))(image, out=out) is out
    assert np.array_equal(out[4:14, 8:20], whole[4:14, 8:20]) and (out == 9).sum() >= 24 * 32 - 120
    target = np.zeros((24, 32), "u1")
    assert qvr.resize_region(image, target, (0.5, 0.5), method="area") is target and np.array_equal(target, whole)
    for dtype, shape in (("f4", (12, 16)), ("u1", (12, 16, 4))):
        source = np.ones(shape).astype(dtype)
        assert (qvr.resize_region(source, np.zeros((6, 8) + shape[2:], dtype), (0.5, 0.5), method="linear") == 1).all()
    with pytest.warns(qvr.Warning) as record:
        qvr.resize_region(image, target, (0.5, 0.5), method="area", antialias=True)
    assert record[0].message.status == "qvrWarnNoAntialiasing"
    with pytest.warns(qvr.Warning) as record:
        empty = qvr.Resize((48, 64), (24, 32), shift=(100, 100))(image)
    assert record[0].message.status == "qvrWarnNothingToDo" and not empty.any()


def test_closed_and_bare_objects():
    made = [qvr.RealFFT(8), qvr.Hilbert(8), qvr.FIR(X[:3]), qvr.IIR([1, 2], [1, 0.5]), qvr.Wavelet(X[:2], X[:2], X[:2], X[:2]),
            qvr.Resize((4, 4), (2, 2))]
    calls = [lambda o: o.forward(X[:8]), lambda o: o(X[:8]), lambda o: o(X), lambda o: o(X.astype("f8")), lambda o: o.forward(X),
             lambda o: o(np.zeros((4, 4), "u1"))]
    for thing, call in zip(made, calls):
        with thing as entered:
            call(entered)
        assert thing.closed
        with pytest.raises(qvr.StateError, match="closed"):
            call(thing)
        thing.close()
        bare = type(thing).__new__(type(thing))
        with pytest.raises((qvr.Error, TypeError, AttributeError)):
            call(bare)
        repr(bare)


def test_objects_die():
    for make in (lambda: qvr.FIR(X[:100]), lambda: qvr.RealFFT(1024), lambda: qvr.Hilbert(100), lambda: qvr.IIR([1, 2], [1, 0.5])):
        thing = make()
        seen = weakref.ref(thing)
        del thing
        gc.collect()
        assert seen() is None
