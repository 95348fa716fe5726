"""The wheel, which carries the shared object, and the Debian package, which finds the installed one."""
import os
import re
import shutil
import subprocess
import sys
import zipfile
from pathlib import Path

ROOT, BUILD = Path(os.environ["QVR_SOURCE"]), Path(os.environ["QVR_BUILD"])
VERSION = ".".join(re.findall(r"#define MORVENQVR_VERSION_(?:MAJOR|MINOR|PATCH) (\d+)", (ROOT / "include/morvenqvr.h").read_text()))
TRY = "import numpy, morvenqvr; assert morvenqvr.__version__; print(morvenqvr.LIBRARY); assert morvenqvr.add(numpy.float32([1, 2]), 1).sum() == 5"


def run(*command, **options):
    done = subprocess.run([str(c) for c in command], capture_output=True, text=True, **options)
    assert done.returncode == 0, done.stdout[-2000:] + done.stderr[-2000:]
    return done.stdout


def elsewhere(folder, **more):
    """An environment in which only this folder's package is found."""
    return {**{k: v for k, v in os.environ.items() if k != "MORVENQVR_LIBRARY"}, "PYTHONPATH": str(folder), **more}


def test_wheel(tmp_path):
    source = tmp_path / "python"
    shutil.copytree(ROOT / "python", source, ignore=shutil.ignore_patterns("build", "__pycache__"))
    run(sys.executable, "-m", "build", "--wheel", "--no-isolation", "--outdir", tmp_path / "wheel", source,
        env={**os.environ, "CC": "clang-19", "CFLAGS": "-O0", "MORVENQVR_HEADER": str(ROOT / "include/morvenqvr.h"),
             "MORVENQVR_LIBRARY": str(BUILD / "libmorvenqvr.so.1")})
    wheel, = (tmp_path / "wheel").glob("*.whl")
    assert wheel.name.startswith(f"morvenqvr-{VERSION}-cp3") and "linux_x86_64" in wheel.name
    with zipfile.ZipFile(wheel) as archive:
        archive.extractall(tmp_path / "site")
        names = set(archive.namelist())
    assert {"morvenqvr/libmorvenqvr.so.1", "morvenqvr/__init__.pyi", "morvenqvr/py.typed", "morvenqvr/_generated.py"} <= names
    assert not any(name.endswith((".pyx", ".pxi", ".c", ".h")) for name in names)
    said = run(sys.executable, "-B", "-c", TRY, env=elsewhere(tmp_path / "site"), cwd=tmp_path)
    assert said.strip() == str(tmp_path / "site/morvenqvr/libmorvenqvr.so.1")


def test_debian_package(tmp_path):
    run("cpack", "-B", tmp_path, "-D", "CPACK_COMPONENTS_ALL=python", cwd=BUILD)
    package, = tmp_path.glob("python3-morvenqvr_*.deb")
    fields = {name: run("dpkg-deb", "--field", package, name).strip() for name in ("Package", "Depends", "Section", "Description")}
    assert fields["Package"] == "python3-morvenqvr" and fields["Section"] == "python"
    for needed in (f"libmorvenqvr1 (>= {VERSION})", "python3-numpy", "python3 (>= 3.11)"):
        assert needed in fields["Depends"]
    run("dpkg-deb", "--extract", package, tmp_path / "root")
    folder = tmp_path / "root/usr/lib/python3/dist-packages"
    assert not (folder / "morvenqvr/libmorvenqvr.so.1").exists() and (folder / "morvenqvr/__init__.pyi").exists()
    said = run(sys.executable, "-B", "-c", TRY, env=elsewhere(folder, LD_LIBRARY_PATH=str(BUILD)), cwd=tmp_path)
    assert said.strip() == "libmorvenqvr.so.1"
    done = subprocess.run([sys.executable, "-B", "-c", TRY], env=elsewhere(folder), cwd=tmp_path, capture_output=True, text=True)
    if done.returncode:  # unless the machine has the library installed
        assert "ImportError: morvenqvr cannot load libmorvenqvr.so.1" in done.stderr
