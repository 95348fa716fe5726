"""Ways to configure: build_types.py SOURCE-FOLDER C-COMPILER C++-COMPILER LIBRARY-PATH WORK-FOLDER

Kernels are optimised in every build type but Debug, and a preset can be configured again.
"""
import json
import shutil
import subprocess
import sys

import binary


def main(source, cc, cxx, libraries, work):
    failures = []
    shutil.rmtree(work, ignore_errors=True)
    for preset in ("release", "fuzz"):
        for turn in ("first", "second"):
            done = subprocess.run(["cmake", "--preset", preset, "-B", f"{work}/{preset}"], cwd=source, capture_output=True, text=True)
            if done.returncode != 0:
                failures.append(f"the {turn} configuration of {preset} fails: {done.stderr}")
    for kind, want in (("None", "-O3"), ("RelWithDebInfo", "-O3"), ("MinSizeRel", "-O3"), ("Debug", "-O1")):
        folder = f"{work}/{kind}"
        subprocess.run(["cmake", "-S", source, "-B", folder, "-G", "Ninja", f"-DCMAKE_C_COMPILER={cc}", f"-DCMAKE_CXX_COMPILER={cxx}",
                        f"-DCMAKE_LIBRARY_PATH={libraries}", f"-DCMAKE_BUILD_TYPE={kind}", "-DCMAKE_CXX_FLAGS=-O1", "-DQVR_TESTS=OFF"],
                       check=True, capture_output=True)
        with open(f"{folder}/compile_commands.json") as file:
            for entry in json.load(file):
                levels = [word for word in entry["command"].split() if word.startswith("-O")]
                if "slot_" in entry.get("output", entry["command"]) and not entry["file"].endswith(".S") and levels[-1] != want:
                    failures.append(f"{kind}: {entry['file']} is compiled with {levels}")
    binary.finish("build types", failures)


if __name__ == "__main__":
    main(*sys.argv[1:])
