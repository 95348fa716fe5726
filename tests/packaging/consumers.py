#!/usr/bin/env python3
"""The README's two programs, in C and in C++, against an installed copy, through pkg-config and through the CMake package.

    consumers.py install BUILD README WORK     from `cmake --install` into a prefix of its own
    consumers.py debian BUILD README WORK      from the Debian packages, unpacked
Both are built by pkg-config, by two compilers, and by the README's CMake file, to which the second is added.
"""
import os
import re
import shutil
import subprocess
import sys
from pathlib import Path

kExpected = {"first": "11 22 33 44\n", "second": "one tone is left\nqvr::add: qvrErrBadSize\n"}


def run(*command, **options):
    done = subprocess.run(command, capture_output=True, text=True, **options)
    if done.returncode != 0:
        sys.exit(f"{' '.join(map(str, command))}\n{done.stdout}{done.stderr}")
    return done.stdout


def readmeBlocks(readme):
    text = Path(readme).read_text()
    blocks = {language: re.search(rf"```{language}\n(.*?)```", text, re.S) for language in ("c", "cmake", "cpp")}
    for language, block in blocks.items():
        if block is None:
            sys.exit(f"{readme} has no {language} block")
    return [blocks[language].group(1) for language in ("c", "cmake", "cpp")]


def install(build, work):
    prefix = work / "prefix"
    run("cmake", "--install", build, "--prefix", prefix)
    return prefix, {}


def debian(build, work):
    run("cpack", "-B", work / "packages", cwd=build)
    packages = sorted((work / "packages").glob("*.deb"))
    names = [run("dpkg-deb", "--field", p, "Package").strip() for p in packages]
    assert names == ["libmorvenqvr-dev", "libmorvenqvr1"], names
    depends = run("dpkg-deb", "--field", packages[1], "Depends")
    for needed in ("libomp5-19", "libc6"):
        assert needed in depends, depends
    assert "stdc++" not in depends, depends
    version = run("dpkg-deb", "--field", packages[1], "Version").strip()
    assert f"libmorvenqvr1 (= {version})" in run("dpkg-deb", "--field", packages[0], "Depends")
    root = work / "root"
    for p in packages:
        run("dpkg-deb", "--extract", p, root)
    runtime = [line.split()[-1] for line in run("dpkg-deb", "--contents", packages[1]).splitlines()]
    assert not any(f.endswith((".h", ".hpp", ".so", ".pc", ".cmake")) for f in runtime), runtime
    return root / "usr", {"PKG_CONFIG_SYSROOT_DIR": str(root)}


def main():
    kind, build, readme, work = sys.argv[1], sys.argv[2], sys.argv[3], Path(sys.argv[4])
    shutil.rmtree(work, ignore_errors=True)
    work.mkdir(parents=True)
    prefix, environment = {"install": install, "debian": debian}[kind](build, work)
    library = prefix / "lib"
    environment = {**os.environ, **environment, "PKG_CONFIG_PATH": str(library / "pkgconfig")}
    loading = {**os.environ, "LD_LIBRARY_PATH": str(library)}
    soname = library / "libmorvenqvr.so.1"
    assert os.readlink(library / "libmorvenqvr.so") == soname.name, "the link that the linker follows"
    assert soname.is_symlink() and soname.resolve().name == os.readlink(soname), "the link that the loader follows"

    program, project, second = readmeBlocks(readme)
    flags = run("pkg-config", "--cflags", "--libs", "morvenqvr", env=environment).split()
    assert run("pkg-config", "--modversion", "morvenqvr", env=environment).strip() == soname.resolve().name.split(".so.")[1]
    (work / "first.c").write_text(program)
    (work / "second.cpp").write_text(second)
    for compiler, source in (("gcc", "first.c"), ("g++", "second.cpp"), ("clang-19", "first.c"), ("clang++-19", "second.cpp")):
        out = work / f"{compiler}-{Path(source).stem}"
        run(compiler, *(["-std=c++20"] if source.endswith("cpp") else []), work / source, *flags, "-o", out)
        assert run(out, env=loading) == kExpected[Path(source).stem], out

    both = work / "cmake"
    both.mkdir()
    (both / "first.c").write_text(program)
    (both / "second.cpp").write_text(second)
    (both / "CMakeLists.txt").write_text(
        project.replace("LANGUAGES C)", "LANGUAGES C CXX)")
        + "add_executable(second second.cpp)\ntarget_link_libraries(second PRIVATE morvenqvr::morvenqvr)\n"
        "target_compile_features(second PRIVATE cxx_std_20)\n")
    run("cmake", "-S", both, "-B", both / "build", "-G", "Ninja", f"-DCMAKE_PREFIX_PATH={prefix}")
    run("cmake", "--build", both / "build")
    for name in ("first", "second"):
        assert run(both / "build" / name, env=loading) == kExpected[name], name
    print(f"{kind}: C and C++ programs by pkg-config and by CMake")


main()
