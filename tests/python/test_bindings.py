"""The table that makes the bindings: a new export appears on its own, what fits no group stops the build, every export is
called by the tests; docstrings, stubs, and the overhead of a call, which is told and judges nothing."""
import inspect
import os
import subprocess
import sys
import timeit
from pathlib import Path

import numpy as np
import pytest

import morvenqvr as qvr

ROOT, BUILD = Path(os.environ["QVR_SOURCE"]), Path(os.environ["QVR_BUILD"])
sys.path.insert(0, str(ROOT / "python"))
from bindings import generate  # noqa: E402
from bindings.header import read  # noqa: E402
from bindings.shapes import functions  # noqa: E402

HEADER = ROOT / "include/morvenqvr.h"
NEW = """
/** @defgroup extra Extra functions
 * @{
 */
/** pDst[i] = the cube root of pSrc[i] */
qvrStatus Morven_qvrsCbrt_64f(const qvr64f* pSrc, qvr64f* pDst, int len);
/** pDst[i] = pSrc1[i] + pSrc2[i] */
qvrStatus Morven_qvrsAdd_64f(const qvr64f* pSrc1, const qvr64f* pSrc2, qvr64f* pDst, int len);
/** The largest magnitude. */
qvrStatus Morven_qvrsPeak_32f(const qvr32f* pSrc, int len, qvr32f* pResult);
/** @} */
"""


def with_new(tmp_path, text):
    header = tmp_path / "morvenqvr.h"
    source = HEADER.read_text()
    at = source.rindex("#ifdef __cplusplus")
    header.write_text(source[:at] + text + source[at:])
    return header


def test_a_new_export_needs_no_python(tmp_path):
    header = with_new(tmp_path, NEW)
    found, reached, faults = functions(read(header))
    assert not faults and reached["qvrsCbrt_64f"] == "cbrt" and reached["qvrsAdd_64f"] == "add" and reached["qvrsPeak_32f"] == "peak"
    generate.main(header, tmp_path / "made")
    text = (tmp_path / "made/functions.pxi").read_text()
    assert "def cbrt(x, out=None, *, copy=False):" in text and "the cube root of x[i]" in text
    assert "def peak(x, *, copy=False):" in text and "def peak(x: Array, *, copy: bool = False) -> float | Array" in (tmp_path / "made/__init__.pyi").read_text()
    assert '"qvrsAdd_64f", call_qvrsAdd_64f, {NPY_DOUBLE, NPY_DOUBLE}, NPY_DOUBLE' in (tmp_path / "made/tables.h").read_text()
    subprocess.run(["clang-19", "-fsyntax-only", "-Wall", "-Werror", "-Wno-unused", f"-I{tmp_path / 'made'}", f"-I{tmp_path}",
                    f"-I{ROOT / 'python/morvenqvr'}", "-include", "numpy/arrayobject.h", f"-I{np.get_include()}",
                    "-DNPY_NO_DEPRECATED_API=NPY_1_7_API_VERSION", *subprocess.run(
                        ["python3-config", "--includes"], capture_output=True, text=True, check=True).stdout.split(),
                    tmp_path / "made/tables.h"], check=True)


@pytest.mark.parametrize("prototype", [
    "qvrStatus Morven_qvrsNothing_32f(const qvr32f* pSrc, struct other* thing, int len);",
    "qvrStatus Morven_qvrsWhirl_32f(const qvr32f* pSrc, qvr32f** ppDst, int len);",
    "qvrStatus Morven_qvrsWhirl(const qvr32f* pSrc, int len);"])
def test_an_export_in_no_group_stops_the_build(tmp_path, prototype):
    with pytest.raises(SystemExit):
        generate.main(with_new(tmp_path, prototype + "\n"), tmp_path / "made")


SHIM = """
#define _GNU_SOURCE
#include <dlfcn.h>
#include <stdio.h>
#include <stdlib.h>
static const char* const names[] = {%s};
long calls[%d];
void* real[%d];
%s
__attribute__((constructor)) static void begin(void)
{
    void* library = dlopen("%s", RTLD_NOW);
    for (int k = 0; k < %d; k++)
        real[k] = dlsym(library, names[k]);
}
__attribute__((destructor)) static void end(void)
{
    FILE* file = fopen(getenv("QVR_UNCALLED"), "w");
    for (int k = 0; k < %d; k++)
        if (!calls[k])
            fprintf(file, "%%s\\n", names[k]);
    fclose(file);
}
"""


def test_every_export_is_called(tmp_path):
    """The other tests once more, through a library that counts calls and passes them on."""
    names = [f"Morven_{name}" for name in read(HEADER).exports]
    jumps = "".join(f'__asm__(".globl {n}\\n{n}: lock incq calls+{8 * k}(%rip)\\n jmp *real+{8 * k}(%rip)");\n' for k, n in enumerate(names))
    count = len(names)
    (tmp_path / "shim.c").write_text(SHIM % (", ".join(f'"{n}"' for n in names), count, count, jumps, BUILD / "libmorvenqvr.so.1", count, count))
    subprocess.run(["clang-19", "-shared", "-fPIC", "-Wl,-Bsymbolic", "-fuse-ld=lld-19", "-o", tmp_path / "shim.so", tmp_path / "shim.c"], check=True)
    uncalled = tmp_path / "uncalled"
    done = subprocess.run([sys.executable, "-B", "-m", "pytest", "-q", "-x", "-p", "no:cacheprovider", "test_functions.py", "test_objects.py"],
                          cwd=Path(__file__).parent, env={**os.environ, "MORVENQVR_LIBRARY": str(tmp_path / "shim.so"), "QVR_UNCALLED": str(uncalled)},
                          capture_output=True, text=True)
    assert done.returncode == 0, done.stdout[-2000:]
    assert uncalled.read_text().split() == []


def test_docstrings_and_signatures():
    for name in qvr.__all__:
        thing = getattr(qvr, name)
        if callable(thing):
            assert thing.__doc__ and len(thing.__doc__) > 40, name
            inspect.signature(thing) if not isinstance(thing, type) else None
    text = qvr.div.__doc__
    for part in ("a / b", "float32", "qvrWarnDivByZero", "Morven_qvrsDiv_32f", "out[i] = a[i] / b[i]"):
        assert part in text, part
    assert "returns (out, phase), which the next call takes" in qvr.sample_down.__doc__ and "x[phase + factor]" in qvr.sample_down.__doc__
    for name in qvr.__all__:
        assert "NullPointer" not in (getattr(qvr, name).__doc__ or "").split("the C reference says")[0], name
    assert "pSrc" not in qvr.add.__doc__ and "the first array" not in qvr.sub.__doc__ and "first array" not in qvr.div.__doc__
    assert str(inspect.signature(qvr.convert)) == "(x, out=None, *, scale=0, rounding=None, dtype=None, copy=False)"
    assert "arithmetic" in qvr.__doc__ and "add, sub, mul, div" in qvr.__doc__


def test_stubs(tmp_path):
    """The stubs name what there is, and a type checker reads them."""
    stub = (Path(qvr.__file__).parent / "__init__.pyi").read_text()
    compile(stub, "stub", "exec")
    for name in qvr.__all__:
        assert f"def {name}(" in stub or f"class {name}" in stub or f"{name}:" in stub, name
    for name in ("RealFFT", "FIR", "IIR", "FIRMultirate", "Wavelet", "Hilbert", "Resize"):
        body = stub.split(f"class {name}")[1].split("\nclass ")[0].split("\ndef ")[0]
        for member in vars(getattr(qvr, name)):
            if not member.startswith("_"):
                assert f"def {member}(" in body, (name, member)
    mypy = "/usr/bin/mypy"
    if os.path.exists(mypy):
        (tmp_path / "user.py").write_text("import numpy as np\nimport morvenqvr as qvr\nx = np.ones(8, np.float32)\ny = qvr.add(x, 2.0)\n"
                                          "f = qvr.RealFFT(8)\nz = f.inverse(f.forward(y))\nqvr.FIR(x)(x, out=y)\n")
        done = subprocess.run([mypy, "--cache-dir", str(tmp_path / "cache"), "--follow-imports=silent", str(tmp_path / "user.py")], capture_output=True,
                              text=True, env={**os.environ, "MYPYPATH": str(Path(qvr.__file__).parent.parent)})
        assert done.returncode == 0, done.stdout + done.stderr


def test_overhead_is_told():
    """Nanoseconds of a call on 16 elements, the library's own few included, and numpy's; the figures are a report."""
    a, b, out = np.ones(16, "f4"), np.ones(16, "f4"), np.empty(16, "f4")
    wide, i2, image = np.ones(16), np.ones(16, "i2"), np.ones((4, 4), "u1")
    fft, fir, iir, hilbert = qvr.RealFFT(16), qvr.FIR(a[:4]), qvr.IIR([1, 0.5], [1, 0.2]), qvr.Hilbert(16)
    bins, analytic = fft.forward(a), hilbert(a)
    names = {**globals(), **locals()}
    for text in ("np.add(a, b, out)", "qvr.add(a, b)", "qvr.add(a, b, out)", "qvr.add(a, 2.0, out=out)", "qvr.mul(wide, wide, wide)",
                 "qvr.add(i2, i2, i2, scale=1)", "qvr.exp(a, out)", "qvr.mean(a)", "qvr.min_index(a)", "qvr.threshold(a, 0.0, 'less', out)",
                 "qvr.convert(a, dtype=np.int16)", "qvr.sort(a)", "qvr.convolve(a, b)", "qvr.correlate(a, b)", "qvr.median_filter(a, 3)",
                 "qvr.image_convert(image, dtype=np.uint16)", "fft.forward(a, bins)", "fft.inverse(bins, out)", "fir(a, out)", "iir(wide, wide)",
                 "hilbert(a, analytic)"):
        best = min(timeit.repeat(text, globals=names, number=2000, repeat=5)) / 2000
        print(f"{text}: {best * 1e9:.0f} ns")
