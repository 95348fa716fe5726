#!/usr/bin/env python3
"""Compiles and runs every whole program of the guides: guides.py ROOT WORK COMPILER LIBRARY_FOLDER"""
import os
import re
import subprocess
import sys
from pathlib import Path

root, work, compiler, library = Path(sys.argv[1]), Path(sys.argv[2]), sys.argv[3], sys.argv[4]
work.mkdir(parents=True, exist_ok=True)
count, faults = 0, []
for guide in sorted((root / "docs").glob("*.md")):
    for number, (language, program) in enumerate(re.findall(r"```(c|cpp)\n(.*?)```", guide.read_text(), re.S)):
        if "int main(" not in program:
            continue
        count += 1
        source = work / f"{guide.stem}-{number}.{language}"
        translator = [compiler, "-std=gnu11"] if language == "c" else [re.sub("clang|gcc", lambda m: {"clang": "clang++", "gcc": "g++"}[m[0]], compiler), "-std=gnu++20"]
        source.write_text(program)
        built = subprocess.run(
            [*translator, "-Wall", "-Wextra", "-Werror", "-I", root / "include", source, "-L", library,
             "-lmorvenqvr", "-lm", "-o", source.with_suffix("")], capture_output=True, text=True)
        if built.returncode != 0:
            faults.append(f"{source.name} does not compile\n{built.stderr}")
            continue
        done = subprocess.run([source.with_suffix("")], env={**os.environ, "LD_LIBRARY_PATH": library}, timeout=60)
        if done.returncode != 0:
            faults.append(f"{source.name} ends with {done.returncode}")
print("\n".join(faults) or f"{count} programs")
sys.exit(bool(faults) or count < 7)
