#!/usr/bin/env python3
"""morvenqvr-info against what the system tells, and without a sound library: info.py FOLDER-OF-TOOLS BUILD WORK"""
import ctypes.util
import json
import os
import re
import shutil
import subprocess
import sys
from pathlib import Path

tools, build, work = (Path(a) for a in sys.argv[1:4])
info = tools / "morvenqvr-info"
shutil.rmtree(work, ignore_errors=True)
work.mkdir(parents=True)


def run(*command, status=0, **environment):
    done = subprocess.run([str(c) for c in command], capture_output=True, text=True, env={**os.environ, **environment})
    assert done.returncode == status, (command, done)
    return done.stdout


facts, text = json.loads(run(info, "--json")), run(info)
flags = set(re.search(r"^flags\s*: (.*)$", Path("/proc/cpuinfo").read_text(), re.M)[1].split())
names = {"sse3": "pni", "sse4.1": "sse4_1", "sse4.2": "sse4_2", "prefetchw": "3dnowprefetch"}
for name, there in facts["features"].items():
    if "," not in name and " " not in name:
        assert there == (names.get(name, name) in flags), name
group = {"avx2", "fma", "bmi1", "bmi2"} <= flags
assert facts["features"]["avx2, fma, bmi1 and bmi2"] == group
assert facts["slot"] == facts["slot_by_features"] and facts["note"] is None and facts["slot"] in text
assert facts["slots"]["l9"] == (group and "avx" in flags) and facts["slots"]["mx"]
assert Path(facts["library"]["path"]) == (build / "libmorvenqvr.so.1").resolve()
assert facts["library"]["version"] in facts["library"]["path"] and facts["library"]["version"] == facts["versions"]["tool"]
notes = subprocess.run(["llvm-readelf-19", "-n", facts["library"]["path"]], capture_output=True, text=True).stdout
assert facts["library"]["build"] in notes and len(facts["library"]["build"]) >= 16
assert facts["threads"]["processors"] == len(os.sched_getaffinity(0))
assert json.loads(run(info, "--json", OMP_NUM_THREADS="1"))["threads"]["budget"] == 1
run(info, "--none", status=2)
run(info, "more", status=2)

# Not there: what is installed has no path of the build's.
run("cmake", "--install", build, "--component", "tools", "--prefix", work / "alone")
alone = work / "alone/bin/morvenqvr-info"
openmp = str(Path(facts["versions"]["openmp"]).parent)
told = run(alone, status=1, LD_LIBRARY_PATH=openmp) if not ctypes.util.find_library("morvenqvr") else "cannot be loaded: libmorvenqvr.so.1"
assert re.search(r"cannot be loaded: libmorvenqvr.so.1", told), told
assert json.loads(run(alone, "--json", status=1, LD_LIBRARY_PATH=openmp) if not ctypes.util.find_library("morvenqvr") else '{"slot": null}')["slot"] is None
# No shared object at all, and one that is another library or an older one.
broken = work / "broken"
broken.mkdir()
(broken / "libmorvenqvr.so.1").write_text("")
assert re.search("cannot be loaded: .*too short", run(info, status=1, LD_LIBRARY_PATH=str(broken)))
subprocess.run(["gcc", "-shared", "-fPIC", "-x", "c", "-", "-o", broken / "libmorvenqvr.so.1"], input="int x;", text=True, check=True)
assert re.search("has no function Morven_qvrsAdd_32f, so it is older", run(info, status=1, LD_LIBRARY_PATH=str(broken)))
# A library whose dispatchers look otherwise: the slot is not guessed.
source = "int Morven_qvrsAdd_32f(void) { return 1; }"
subprocess.run(["gcc", "-shared", "-fPIC", "-x", "c", "-", "-o", broken / "libmorvenqvr.so.1"], input=source, text=True, check=True)
assert "unknown (its dispatchers" in run(info, LD_LIBRARY_PATH=str(broken))
print("as the system tells")
