"""Every table-made function: each element type against its model; out=, in place, more axes, rows apart, empty arrays."""
import os
import sys
import warnings
from pathlib import Path

import numpy as np
import pytest
from models import ARGUMENTS, MODELS, SUMS, bound

import morvenqvr as qvr

sys.path.insert(0, str(Path(os.environ["QVR_SOURCE"]) / "python"))
from bindings.header import ELEMENTS, read  # noqa: E402
from bindings.shapes import functions  # noqa: E402

FUNCTIONS, REACHED, FAULTS = functions(read(Path(os.environ["QVR_SOURCE"]) / "include/morvenqvr.h"))
FORMS = [(name, form) for name, function in FUNCTIONS.items() for form in function.forms]
rng = np.random.default_rng(7)


def dtype_of(element):
    return qvr.int16c if element == "16sc" else np.dtype(ELEMENTS[element][1])


def numbers(dtype, shape, name=""):
    dtype = np.dtype(dtype)
    if dtype == qvr.int16c:
        values = np.empty(shape, dtype)
        values["re"], values["im"] = rng.integers(-30000, 30000, shape), rng.integers(-30000, 30000, shape)
        return values
    if dtype.kind == "c":
        return (rng.standard_normal(shape) + 1j * rng.standard_normal(shape)).astype(dtype)
    if dtype.kind in "iu":
        most = 20 if name in ("replace", "find", "mul") else np.iinfo(dtype).max // 2 if name in ("sum", "mean") else np.iinfo(dtype).max
        least = 0 if dtype.kind == "u" else -most
        return rng.integers(least, most, shape, endpoint=True).astype(dtype)
    values = rng.standard_normal(shape) * 3
    if name in ("sqrt", "ln", "log10", "pow"):
        values = abs(values) + 0.01
    elif name in ("asin", "acos"):
        values = values.clip(-1, 1)
    elif name == "convert":
        values *= 9000
    return values.astype(dtype)


def scalar_for(name, form):
    return {"left_shift": 3, "right_shift": 3, "bitwise_and": 4095}.get(name, 5 if form.number not in "fd" else 1.75)


def operands(name, form, shape):
    made = []
    for element, argument in zip(form.inputs, form.input_names):
        if element is None:
            made.append(scalar_for(name, form))
        elif argument == "table":
            made.append(numbers(dtype_of(element), 256))
        elif argument == "pattern":
            made.append(numbers(dtype_of(element), 2, name))
        elif argument == "mask":
            made.append(rng.integers(0, 2, shape).astype(np.uint8) * 255)
        else:
            made.append(numbers(dtype_of(element), shape, name))
    return made


def keywords(name, form):
    """The argument sets that a form takes."""
    function = FUNCTIONS[name]
    for given in ARGUMENTS.get(name, [{}]):
        if all(key in form.extras for key in given):
            extra = dict(given)
            if function.chooses_accuracy:
                extra["accuracy"] = form.accuracy
            if function.chooses_output and form.output:
                extra["dtype"] = dtype_of(form.output)
            yield given, extra


def call(name, inputs, out, extra):
    function = getattr(qvr, name, None) or getattr(qvr._core, name)
    if out is not None:
        extra = {key: value for key, value in extra.items() if key != "dtype"}
        if FUNCTIONS[name].needs_output:
            return function(*inputs, out, *extra.values())
        extra["out"] = out
    return function(*inputs, **extra)


def judge(name, form, got, expected, what):
    got, expected = (v if isinstance(v, tuple) else (v,) for v in (got, expected))
    assert len(got) == len(expected), what
    for g, e in zip(got, expected):
        g, e = np.asarray(g), np.asarray(e)
        assert g.shape == e.shape, f"{what}: {g.shape} {e.shape}"
        relative, absolute = bound(name, form.accuracy, g.dtype if not form.results else dtype_of(form.results[0]))
        if name in SUMS:
            relative, absolute = 0, 2e-6 * max(abs(e).max(initial=0), 1)
        error = abs(g.astype("c16" if g.dtype.kind == "c" else "f8") - e)
        assert (error <= relative * abs(e) + absolute).all(), f"{what}: off by {error.max()}"


def title(case):
    return case[1].export.name[4:]


@pytest.mark.parametrize("case", FORMS, ids=title)
def test_against_model(case):
    name, form = case
    function = FUNCTIONS[name]
    out_type = dtype_of(form.output) if form.output else None
    shapes = [(5, 7), (1, 1), (40, 33)] if function.image else [(3,), (16,), (67,), (1000,)]
    if name in ("convolve_biased", "compensate_offset", "compensate_offset_in_place", "find", "sum_window"):
        shapes = [(20,), (67,)]
    ran = 0
    with warnings.catch_warnings():
        warnings.simplefilter("error")
        for given, extra in keywords(name, form):
            for shape in shapes:
                inputs = operands(name, form, shape)
                if name == "convolve":
                    inputs[1] = inputs[1][:5]
                what = f"{form.export.name} {shape} {given}"
                if function.needs_output:
                    out = old = numbers(out_type, shape)
                    old = old.copy()
                    got = call(name, inputs, out, extra)
                    assert got is out
                    kept = {"old": old} if name == "image_copy" else {"shape": shape}
                    judge(name, form, got, MODELS[name](*inputs, **given, out=out_type, **kept), what)
                    ran += 1
                    continue
                expected = MODELS[name](*inputs, **given, out=out_type)
                first = expected[0] if isinstance(expected, tuple) else expected
                kept = [np.copy(i) for i in inputs]
                if form.in_place is not None:
                    out = inputs[form.in_place]
                    got = call(name, inputs, out, extra)
                    assert (got[0] if isinstance(got, tuple) else got) is out
                else:
                    got = call(name, inputs, None, extra)
                    assert all(np.array_equal(a, b) for a, b in zip(inputs, kept)), f"{what}: a source has changed"
                judge(name, form, got, expected, what)
                if not form.output:
                    ran += 1
                    continue
                # Into an array that is there, and the same array for all elements.
                fresh = np.empty(np.shape(first), out_type)
                again = call(name, kept, fresh, extra)
                assert (again[0] if isinstance(again, tuple) else again) is fresh
                if form.in_place is None:
                    assert np.array_equal(fresh, got[0] if isinstance(got, tuple) else got, equal_nan=fresh.dtype.kind == "f"), what
                ran += 1
    assert ran, f"no arguments for {form.export.name}"


ROWS = [(name, form) for name, form in FORMS if form.inputs and not FUNCTIONS[name].needs_output and
        name not in ("compensate_offset", "compensate_offset_in_place")]


@pytest.mark.parametrize("case", ROWS, ids=title)
def test_more_axes_are_rows(case):
    name, form = case
    image = FUNCTIONS[name].image
    row = (6, 20) if image else (20,)
    given, extra = next(keywords(name, form))
    inputs = operands(name, form, (2, 3) + row)
    own_rows = [k for k, n in enumerate(form.input_names) if n in ("table", "pattern") or form.inputs[k] is None]
    # Axes in front, rows that lie apart, and rows from the last to the first.
    apart = [i if k in own_rows else np.repeat(i, 2, 1)[:, ::2] for k, i in enumerate(inputs)]
    reversed_ = [i if k in own_rows else i[::-1] for k, i in enumerate(inputs)]
    with warnings.catch_warnings():
        warnings.simplefilter("error")
        whole, spread, turned = (call(name, arrays, None, extra) for arrays in (inputs, apart, reversed_))
        for place in np.ndindex(2, 3):
            parts = [i if k in own_rows else i[place] for k, i in enumerate(inputs)]
            one = call(name, parts, None, extra)
            for every, got in ((whole, place), (spread, place), (turned, (1 - place[0], place[1]))):
                every, alone = (v if isinstance(v, tuple) else (v,) for v in (every, one))
                for a, b in zip(every, alone):
                    a = a if np.ndim(a) == 0 else a[got]
                    if form.export.name == "qvrsMagnitude_32fc":  # the root of the last elements is another one
                        assert np.allclose(a, b, rtol=1e-6)
                        continue
                    assert np.array_equal(a, b, equal_nan=np.asarray(b).dtype.kind == "f"), (form.export.name, place)


@pytest.mark.parametrize("case", FORMS, ids=title)
def test_empty_arrays_give_empty_arrays(case):
    name, form = case
    image = FUNCTIONS[name].image
    if not form.inputs or FUNCTIONS[name].needs_output:
        return
    given, extra = next(keywords(name, form))
    extra.pop("length", None)
    if "length" in given and name == "convolve_biased":
        extra["length"] = 0
    for shape in ((0, 4), (4, 0)) if image else ((0,), (3, 0), (0, 5)):
        inputs = operands(name, form, shape)
        if form.results and shape[-1] == 0 and name != "find":
            with pytest.raises(qvr.ArgumentError):
                call(name, inputs, None, extra)
            continue
        if name.startswith("compensate") and shape == (0, 5):
            shape = (0,)
            inputs = operands(name, form, shape)
        got = call(name, inputs, None, extra)
        for part in got[:1] if isinstance(got, tuple) and form.output else got if isinstance(got, tuple) else (got,):
            assert np.size(part) == 0 or name == "find", (name, shape, part)
            if form.output:
                assert part.dtype == dtype_of(form.output) and part.shape[:-1] == shape[:-1]


def test_every_export_is_reached():
    assert not FAULTS
    assert set(REACHED) == set(read(Path(os.environ["QVR_SOURCE"]) / "include/morvenqvr.h").exports)
    assert len(REACHED) == 213
    for export, name in REACHED.items():
        assert hasattr(qvr, name) or name.startswith("_iir"), (export, name)
    grouped = {name for _, names in qvr.GROUPS.values() for name in names}
    assert {name for name in REACHED.values() if not name.startswith("_")} == grouped


def test_order_of_operands():
    a, b = np.array([8.0], "f4"), np.array([2.0], "f4")
    for out in (None, a.copy()):
        assert qvr.sub(a, b, out=out)[0] == 6 and qvr.div(a, b, out=out)[0] == 4
    left, right = a.copy(), b.copy()
    assert qvr.sub(left, b, out=left) is left and left[0] == 6
    assert qvr.sub(a, right, out=right) is right and right[0] == 6
    assert qvr.div(a, 2)[0] == 4 and qvr.div(8, b)[0] == 4 and qvr.sub(8, b)[0] == 6 and qvr.pow(b, 3)[0] == 8
    assert qvr.add(3, a)[0] == 11 and qvr.mul(3, a, out=a.copy())[0] == 24 and qvr.bitwise_and(6, np.array([3], "u2"))[0] == 2
    assert qvr.atan2(np.array([1.0], "f4"), np.array([0.0], "f4"))[0] == pytest.approx(np.pi / 2, rel=1e-3)


def test_nan_in_min_and_max_every():
    nan = np.nan
    a, b = np.array([nan, 1, 1], "f4"), np.array([1, nan, 2], "f4")
    assert np.array_equal(qvr.min_every(a, b), np.array([nan, 1, 1], "f4"), equal_nan=True)
    assert np.array_equal(qvr.max_every(a, b), np.array([nan, 1, 2], "f4"), equal_nan=True)
    assert "Not numpy.minimum" in qvr.min_every.__doc__


def test_windows():
    import scipy.signal as ss
    for name in ("bartlett", "hann", "hamming", "blackman"):
        for length in (1, 2, 3, 8, 9, 1024):
            for periodic in (False, True):
                assert np.allclose(qvr.window(name, length, periodic=periodic), ss.get_window(name, length, fftbins=periodic), atol=2e-6)
    assert qvr.window("hann", 0).shape == (0,)


def test_functions_written_by_hand():
    x = np.arange(24, dtype="i2")
    split = qvr.split_scaled(x, 3)
    assert np.allclose(split, x.reshape(8, 3).T * (2 / 65535) + 1 / 65535) and split.dtype == np.float32
    table, index = np.arange(12, dtype="i2").reshape(3, 4), np.array([3, 0, 0], "i4")
    assert np.array_equal(qvr.copy_columns(table, index), table[:, index])
    assert np.array_equal(qvr.copy_columns(table[::2], index), table[::2][:, index])
    assert np.array_equal(qvr.copy_columns(list(table), index), table[:, index])
    with pytest.raises(qvr.ArgumentError, match="columns 0 to 3"):
        qvr.copy_columns(table, np.array([4], "i4"))
    with pytest.raises(qvr.ArgumentError, match="columns 0 to 3"):
        qvr.copy_columns(list(table), np.array([-1], "i4"))
    image = rng.integers(-30000, 30000, (11, 13)).astype("i2")
    low, high, least, most = qvr.block_min_max(image, (4, 5))
    for i in range(3):
        for j in range(3):
            block = image[4 * i:4 * i + 4, 5 * j:5 * j + 5]
            assert (low[i, j], high[i, j]) == (block.min(), block.max())
    assert (least, most) == (image.min(), image.max())
    data = rng.integers(0, 256, 20).astype("u1")
    planes = qvr.split_row_tiff(data)
    assert np.array_equal(planes, [data[1::2], data[::2]]) and np.array_equal(qvr.join_row_tiff(planes), data)
    a, b = rng.standard_normal((2, 8)).astype("f4")
    assert np.allclose(qvr.convolve_cyclic(a, b), np.fft.ifft(np.fft.fft(a) * np.fft.fft(b)).real, atol=1e-5)
    assert qvr.check_find_peaks(a, 3, 3) is None
    with pytest.raises(qvr.ArgumentError) as error:
        qvr.check_find_peaks(a, 128, 3)
    assert error.value.argument == "search_size" and error.value.status == "qvrErrBadSize"
    block = qvr.empty((3, 5), "f8")
    block[:] = 1
    assert block.ctypes.data % 64 == 0 and block.shape == (3, 5) and block.sum() == 15 and qvr.empty(0).shape == (0,)
