"""Arguments of any kind at every function and object: an exception or a result, and memory round the arrays untouched."""
import inspect
import re
import warnings

import numpy as np
import pytest
from numpy.lib.stride_tricks import as_strided

import morvenqvr as qvr

KINDS = ["u1", "u2", "i2", "u4", "i4", "f4", "f8", "c8", "c16", "i8", "f2", ">f4", ">i2", "?", "O", "U3", qvr.int16c, [("re", "f4"), ("im", "f4")]]
CALLS = [getattr(qvr, name) for name in qvr.__all__ if name != "METHODS" and callable(getattr(qvr, name))
         and not (isinstance(getattr(qvr, name), type) and issubclass(getattr(qvr, name), Exception)) and name != "daubechies"]
MARK = 0xA5
EXPECTED = (qvr.Error, TypeError, ValueError, OverflowError, MemoryError)


def kind_and_shape(rng):
    return (np.dtype(KINDS[rng.choice(len(KINDS), p=[0.05, 0.1, 0.1, 0.02, 0.03, 0.3, 0.15, 0.05] + [0.02] * 10)]),
            tuple(rng.choice([0, 1, 2, 3, 5, 8, 16, 17, 64], size=rng.choice([0, 1, 1, 1, 1, 2, 2, 3]))))


def array(rng, guards, usual):
    """An array within marked memory, mostly of the usual type and shape: contiguous or not, writable or not, aligned or not."""
    other = kind_and_shape(rng)
    kind, shape = usual[0] if rng.random() < 0.9 else other[0], usual[1] if rng.random() < 0.9 else other[1]
    size = int(np.prod(shape)) * kind.itemsize
    if kind.hasobject:
        return np.zeros(shape, kind)
    block = np.full(size + 192, MARK, np.uint8)
    start = 64 + int(rng.integers(0, 9))
    part = block[start:start + size]
    part[:] = rng.integers(0, 256, size) if rng.random() < 0.3 else 0
    made = part.view(kind).reshape(shape) if size else np.zeros(shape, kind)
    guards.append((block, start, start + size))
    way = rng.integers(0, 20)
    if way == 0 and made.ndim:
        made = made[::2]
    elif way == 1 and made.ndim:
        made = made[..., ::-1]
    elif way == 2 and made.ndim:
        made = made[::-1]
    elif way == 3:
        made = made.T
    elif way == 4:
        made.flags.writeable = False
    elif way == 5 and made.ndim and made.size:
        made = as_strided(made, (3,) + made.shape, (0,) + made.strides)
    return made


ARRAYS = {"a", "b", "x", "y", "out", "image", "mask", "table", "pattern", "index", "low", "high", "taps", "delay", "inverse_low", "inverse_high",
          "coefficients", "sections"}
VALUES = [0, 1, 2, 3, 5, 8, 16, -1, 0.2, 0.3, -0.5, 2.5, None, "hann", "less", "nearest", 2**40, [1.0, 2.0, 0.5], (4, 5), True, np.nan]


def argument(rng, guards, arrays, usual, name):
    if rng.random() < (0.95 if name in ARRAYS else 0.05):
        if arrays and rng.random() < 0.3:
            return arrays[rng.integers(0, len(arrays))]
        arrays.append(array(rng, guards, usual))
        return arrays[-1]
    if rng.random() < 0.6:
        return int(rng.integers(1, 9)) if name not in ("cutoff", "level", "shape", "source_shape", "block", "factors") else \
            0.2 if name in ("cutoff", "level") else (5, 8)
    return VALUES[rng.integers(0, len(VALUES))]


def filled(rng, signature, guards, arrays, usual):
    """Arguments for all that a function asks for, and for some that it does not."""
    arguments, words = [], {}
    for name, parameter in signature.items():
        if parameter.default is inspect.Parameter.empty:
            arguments.append(argument(rng, guards, arrays, usual, name))
        elif rng.random() < (0.3 if name == "out" else 0.15):
            words[name] = argument(rng, guards, arrays, usual, name)
    return arguments, words


def signature_of(call):
    """Of an object the first line of its docstring tells it."""
    if not isinstance(call, type):
        return inspect.signature(call).parameters
    text = re.match(r"\w+\((.*?)\)\n\n", call.__doc__, re.S)[1].replace("\n", " ")
    return inspect.signature(eval(f"lambda {text}: 0", {"float32": "f4", "uint8": "u1"})).parameters


METHODS = {"forward": ["x"], "inverse": ["x"], "__call__": ["x"], "flush": [], "reset": []}


SIGNATURES = {call: signature_of(call) for call in CALLS}


@pytest.mark.filterwarnings("ignore")
@pytest.mark.parametrize("seed", range(3))
def test_anything(seed):
    rng = np.random.default_rng(seed)
    worked = refused = 0
    for turn in range(2500):
        call = CALLS[rng.integers(0, len(CALLS))]
        guards, arrays, usual = [], [], kind_and_shape(rng)
        arguments, words = filled(rng, SIGNATURES[call], guards, arrays, usual)
        try:
            with warnings.catch_warnings():
                warnings.simplefilter("ignore")
                made = call(*arguments, **words)
                for method in METHODS if isinstance(call, type) else ():
                    names = ["low", "high"] if (call, method) == (qvr.Wavelet, "inverse") else METHODS[method]
                    if hasattr(made, method):
                        try:
                            getattr(made, method)(*[argument(rng, guards, arrays, usual, name) for name in names],
                                                  **({"out": array(rng, guards, usual)} if names and rng.random() < 0.3 else {}))
                        except EXPECTED:
                            pass
            worked += 1
        except EXPECTED:
            refused += 1
        for block, start, end in guards:
            assert (block[:start] == MARK).all() and (block[end:] == MARK).all(), (call, turn)
    assert worked > 400 and refused > 400
