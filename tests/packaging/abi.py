#!/usr/bin/env python3
"""The binary interface as data: exported symbols, signatures and record layouts.

    abi.py check HEADER LIBRARY RECORD WORK    compares with the record that is checked in
    abi.py write HEADER LIBRARY RECORD WORK    renews the record

The exports of the library jump through tables and carry no types. So the types are taken from a stand-in: a shared
object with a function for each prototype of the header, compiled with debug information. Each record is there as a
variable, and each constant as two arrays as long as its halves plus 1, since types are what is compared.
"""
import re
import subprocess
import sys
from pathlib import Path


def run(*command, allowed=(0,)):
    done = subprocess.run(command, capture_output=True, text=True)
    if done.returncode not in allowed:
        sys.exit(f"{' '.join(map(str, command))}: {done.returncode}\n{done.stdout}{done.stderr}")
    return done.stdout


def exportsOf(library):
    lines = run("readelf", "--dyn-syms", "--wide", library).splitlines()
    fields = [line.split() for line in lines]
    return sorted(f[7].split("@")[0] for f in fields if len(f) > 7 and f[4] == "GLOBAL" and f[6] not in ("UND", "ABS"))


def main():
    action, header, library, record, work = sys.argv[1], sys.argv[2], sys.argv[3], sys.argv[4], Path(sys.argv[5])
    work.mkdir(parents=True, exist_ok=True)
    text = run("clang-19", "-E", "-P", "-x", "c", "-std=c11", header)
    prototypes = re.findall(r"([A-Za-z_][\w\s*]*?\bMorven_\w+\s*\([^;]*?\))\s*;", text)
    names = sorted(re.search(r"\b(Morven_\w+)", p).group(1) for p in prototypes)
    exports = exportsOf(library)
    if names != exports:
        sys.exit(f"header and library differ: {sorted(set(names) ^ set(exports))}")
    records = re.findall(r"\}\s*(qvr\w+)\s*;", text)
    constants = [c for body in re.findall(r"\benum\s*\{(.*?)\}", text, re.S) for c in re.findall(r"(qvr\w+)\s*(?:=[^,]*)?(?:,|$|\s)", body)]
    if not records or not constants:
        sys.exit("no records or no constants found")
    lines = [f'#include "{Path(header).name}"']
    lines += [p + " { __builtin_trap(); }" for p in prototypes]
    lines += [f"{r} record_{r};" for r in records]
    lines += [f"char low_{c}[1 + ({c} & 0xFFFF)], high_{c}[1 + ((unsigned){c} >> 16)];" for c in constants]
    source = work / "standin.c"
    source.write_text("\n".join(lines) + "\n")
    standin = work / "standin.so"
    run("clang-19", "-std=c11", "-g", "-gdwarf-4", "-O0", "-fPIC", "-shared", "-Wno-unused-parameter", f"-I{Path(header).parent}",
        f"-ffile-prefix-map={work}=.", f"-ffile-prefix-map={Path(header).parent}=.", "-o", standin, source)
    if action == "write":
        run("abidw", "--no-corpus-path", "--no-comp-dir-path", "--no-show-locs", "--no-parameter-names", "--type-id-style", "hash", "--out-file", record, standin)
        return
    done = subprocess.run(["abidiff", "--no-show-locs", record, str(standin)], capture_output=True, text=True)
    if done.returncode != 0:
        sys.exit(f"the binary interface differs from {record}:\n{done.stdout}{done.stderr}")
    print(f"{len(exports)} functions, {len(records)} records and {len(constants)} constants as recorded")


main()
