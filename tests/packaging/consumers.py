#!/usr/bin/env python3
"""The README's two programs, in C and in C++, against an installed copy, through pkg-config and through the CMake package.

    consumers.py install BUILD README WORK     from `cmake --install` into a prefix of its own
    consumers.py debian BUILD README WORK      from the Debian packages, unpacked, whose form is judged too
Both are built by pkg-config, by two compilers, and by the README's CMake file, to which the second is added; what this made runs
in every slot of this machine.
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
    return prefix, "lib", {}


def debian(build, work):
    # Two people at two times: the same bytes.
    for name, mask, zone in (("packages", 0o022, "UTC"), ("again", 0o077, "Pacific/Auckland")):
        run("cpack", "-B", work / name, cwd=build, umask=mask, env={**os.environ, "TZ": zone, "QVR_PACKAGE_COMPRESSION": "0"})
    packages = {run("dpkg-deb", "--field", p, "Package").strip(): p for p in sorted((work / "packages").glob("*.deb"))}
    assert {"libmorvenqvr1", "libmorvenqvr-dev", "libmorvenqvr-doc", "morvenqvr-tools", "libmorvenqvr1-dbgsym",
            "morvenqvr-tools-dbgsym"} <= set(packages), packages
    for p in packages.values():
        assert p.read_bytes() == (work / "again" / p.name).read_bytes(), f"{p.name} differs from itself"
    runtime, development = packages["libmorvenqvr1"], packages["libmorvenqvr-dev"]
    depends = run("dpkg-deb", "--field", runtime, "Depends").strip()
    assert re.fullmatch(r"libc6 \(>= [\d.]+\), libomp5-19 \| libomp-x\.y", depends), depends
    version = run("dpkg-deb", "--field", runtime, "Version").strip()
    assert f"libmorvenqvr1 (= {version})" in run("dpkg-deb", "--field", development, "Depends")
    root = work / "root"
    root.mkdir()
    for name, p in packages.items():
        alone = work / "alone" / name
        alone.mkdir(parents=True)
        run("dpkg-deb", "--extract", p, alone)
        run("dpkg-deb", "--extract", p, root)
        listed = [line.split(" -> ")[0].split()[-1] for line in run("dpkg-deb", "--contents", p).splitlines()]
        if name in ("libmorvenqvr1", "libmorvenqvr-dev"):
            misplaced = [f for f in listed if f.startswith("./usr/lib/") and f.count("/") > 3 and "/x86_64-linux-gnu/" not in f]
            assert not misplaced, misplaced
        if name == "libmorvenqvr1":
            assert not any(f.endswith((".h", ".hpp", ".so", ".pc", ".cmake")) for f in listed), listed
        if not name.endswith("-dbgsym"):
            documents = alone / "usr/share/doc" / name
            assert all((documents / f).stat().st_size > 100 for f in ("copyright", "changelog.gz", "changelog.Debian.gz")), name
        # Each file by its begun KiB, every folder and link as one.
        size = sum((f.lstat().st_size + 1023) // 1024 if f.is_file() and not f.is_symlink() else 1 for f in alone.rglob("*"))
        assert size == int(run("dpkg-deb", "--field", p, "Installed-Size")), (name, size)
    control = work / "control"
    run("dpkg-deb", "--control", runtime, control)
    assert "libmorvenqvr 1 libmorvenqvr1" in (control / "shlibs").read_text() and "ldconfig" in (control / "triggers").read_text()
    assert len(re.findall(r"^ Morven_\w+@MORVENQVR 1\.0\.0$", (control / "symbols").read_text(), re.M)) == 213
    # The library has given its symbols away, to the file of its build id.
    library = root / "usr/lib/x86_64-linux-gnu/libmorvenqvr.so.1"
    found = re.search(r"Build ID: (\w\w)(\w+)", run("readelf", "-n", library))
    assert "qvrLoadHook" not in run("readelf", "-sW", library)
    assert "qvrLoadHook" in run("readelf", "-sW", root / f"usr/lib/debug/.build-id/{found[1]}/{found[2]}.debug")
    return root / "usr", "lib/x86_64-linux-gnu", {"PKG_CONFIG_SYSROOT_DIR": str(root)}


def slots(build):
    """The slots that this machine can run a program in: all up to its own, or none where CPUID cannot be made to fault."""
    tool = build / "tools/morvenqvr-slot"
    if subprocess.run([tool, "mx", "true"], capture_output=True).returncode == 125:
        return []
    return re.findall(r"^(\w\w) .* runs here$", run(tool, "--list"), re.M)


def main():
    kind, build, readme, work = sys.argv[1], Path(sys.argv[2]), sys.argv[3], Path(sys.argv[4])
    shutil.rmtree(work, ignore_errors=True)
    work.mkdir(parents=True)
    prefix, libraries, environment = {"install": install, "debian": debian}[kind](build, work)
    library = prefix / libraries
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
        for slot in slots(build):
            assert run(build / "tools/morvenqvr-slot", slot, both / "build" / name, env=loading) == kExpected[name], (name, slot)
    print(f"{kind}: C and C++ programs by pkg-config and by CMake")


main()
