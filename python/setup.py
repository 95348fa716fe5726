"""Builds the extension: makes its sources from the header, compiles them, and lays the shared object beside it.

MORVENQVR_LIBRARY names the shared object that the package carries; "none" carries none, and the system's is used.
MORVENQVR_HEADER names the header.
"""
import os
import shutil
import sys
from pathlib import Path

import numpy
from Cython.Build import cythonize
from setuptools import Extension, setup
from setuptools.command.build_py import build_py

here = Path(__file__).parent.resolve()
sys.path.insert(0, str(here))
from bindings import generate  # noqa: E402

SONAME = "libmorvenqvr.so.1"


def first(what, candidates):
    found = next((path for path in map(Path, candidates) if path.exists()), None)
    if not found:
        sys.exit(f"setup.py: no {what}; looked for {', '.join(map(str, candidates))}")
    return found


header = first("header", [os.environ["MORVENQVR_HEADER"]] if "MORVENQVR_HEADER" in os.environ else
               [here.parent / "include/morvenqvr.h", "/usr/local/include/morvenqvr.h", "/usr/include/morvenqvr.h"])
os.chdir(here)
made = Path(os.path.relpath(os.environ.get("MORVENQVR_GENERATED", "build/generated"), here))
version = generate.main(header, made)


class Build(build_py):
    """Adds what is made and the shared object to the package."""

    def run(self):
        super().run()
        package = Path(self.build_lib) / "morvenqvr"
        package.mkdir(parents=True, exist_ok=True)
        for name in ("_generated.py", "__init__.pyi"):
            shutil.copyfile(made / name, package / name)
        library = os.environ.get("MORVENQVR_LIBRARY")
        if library != "none":
            library = first("shared object", [library] if library else
                            [here.parent / "build/release" / SONAME, "/usr/local/lib/" + SONAME,
                             "/usr/lib/x86_64-linux-gnu/" + SONAME])
            target = package / SONAME
            target.unlink(missing_ok=True)
            shutil.copyfile(library, target)

    def get_outputs(self, include_bytecode=1):
        package = Path(self.build_lib) / "morvenqvr"
        return super().get_outputs(include_bytecode) + [str(package / name) for name in ("_generated.py", "__init__.pyi", SONAME)]


extension = Extension(
    "morvenqvr._core", ["morvenqvr/_core.pyx"],
    include_dirs=[str(made), "morvenqvr", str(header.parent), numpy.get_include()],
    define_macros=[("NPY_NO_DEPRECATED_API", "NPY_1_7_API_VERSION"), ("CYTHON_CCOMPLEX", "0")],
    extra_compile_args=["-g1" if "-g1" in os.environ.get("CFLAGS", "") else "-g0", "-Wno-unused-function", "-Wno-unused-variable", "-Wno-maybe-uninitialized"],
    depends=[str(path) for path in (*made.iterdir(), *Path("morvenqvr").iterdir()) if path.suffix in (".h", ".pxi")],
    libraries=["dl"])

[extension] = cythonize([extension], include_path=[str(made), "morvenqvr"], build_dir=str(made / "c"), language_level=3, force=True)
extension.sources = [os.path.relpath(source) for source in extension.sources]
setup(version=version, cmdclass={"build_py": Build}, ext_modules=[extension], options={"egg_info": {"egg_base": str(made)}})
