#!/usr/bin/env python3
"""morvenqvr-check: passes in every slot, and notices each function that does nothing: check.py FOLDER-OF-TOOLS HEADER WORK"""
import json
import os
import re
import shutil
import subprocess
import sys
from pathlib import Path

tools, header, work = (Path(a) for a in sys.argv[1:4])
check = tools / "morvenqvr-check"
shutil.rmtree(work, ignore_errors=True)
work.mkdir(parents=True)
# What leaves no result: releasing, and judging alone.
UNSEEN = re.compile(r"Free|FindPeaks")


def run(*command, **environment):
    return subprocess.run([str(c) for c in command], capture_output=True, text=True, env={**os.environ, **environment})


sound = run(check)
assert sound.returncode == 0 and re.search(r"213 functions in \d+ cases, 0 differ$", sound.stdout), sound
names = sorted(set(re.findall(r"\bMorven_(\w+)\s*\(", re.sub(r"/\*.*?\*/", "", header.read_text(), flags=re.S))))
assert len(names) == 213
slots = re.findall(r"^(\w\w) .* runs here$", run(tools / "morvenqvr-slot", "--list").stdout, re.M)
for slot in slots:
    done = run(tools / "morvenqvr-slot", slot, check)
    # Where CPUID cannot be made to fault, the slot of this machine is what there is.
    assert done.returncode == 125 or (done.returncode == 0 and f"slot {slot}: 213 functions" in done.stdout), done

# A library that hands all calls on but one.
real = json.loads(run(tools / "morvenqvr-info", "--json").stdout)["library"]["path"]
source = ["#include <dlfcn.h>", "#include <stdlib.h>", "#include <string.h>", "static int nothing(void) { return 0; }",
          "void* targets[213];", "static const char* const names[213] = {", *(f'"Morven_{n}",' for n in names), "};",
          "__attribute__((constructor)) static void fill(void) {", f'void* real = dlopen("{real}", RTLD_NOW | RTLD_LOCAL);',
          'const char* broken = getenv("QVR_BROKEN");',
          "for (int i = 0; i < 213; i++) targets[i] = broken && !strcmp(broken, names[i]) ? (void*)nothing : dlsym(real, names[i]); }"]
source += [f'__asm__(".globl Morven_{n}\\n.type Morven_{n}, @function\\nMorven_{n}: movq targets@GOTPCREL(%rip), %r11\\n jmp *{8 * i}(%r11)\\n");'
           for i, n in enumerate(names)]
(work / "broken.c").write_text("\n".join(source))
broken = work / "broken.so"
subprocess.run(["gcc", "-shared", "-fPIC", "-O1", work / "broken.c", "-o", broken], check=True)
assert run(check, "--library", broken).returncode == 0
unnoticed = [n for n in names if run(check, "-l", broken, QVR_BROKEN=f"Morven_{n}").returncode == 0]
assert [n for n in unnoticed if not UNSEEN.search(n)] == [], unnoticed
told = run(check, "-l", broken, QVR_BROKEN="Morven_qvrsAdd_32f")
assert told.returncode == 1 and re.search(r"^qvrsAdd_32f: \d+ values, \d+ of them differ\n    the result\[0\] is \S+ instead of \S+ \(allowed: 0\)$",
                                          told.stdout, re.M), told.stdout
assert "1 differ" in told.stdout

# No library, one that is too old, arguments that are none.
assert run(check, "-l", "/nowhere.so").returncode == 2
(work / "old.c").write_text("int Morven_qvrsAdd_32f(void) { return 0; }")
subprocess.run(["gcc", "-shared", "-fPIC", work / "old.c", "-o", work / "old.so"], check=True)
old = run(check, "-l", work / "old.so")
assert old.returncode == 2 and re.fullmatch(r"morvenqvr-check: the shared object has no function Morven_\w+, so it is older.*\n", old.stderr), old
assert run(check, "more").returncode == 2
print(f"{len(names) - len(unnoticed)} functions noticed, {', '.join(slots)}")
