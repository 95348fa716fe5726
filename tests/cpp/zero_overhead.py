#!/usr/bin/env python3
"""The checked overloads cost nothing where the compiler sees that sizes fit: zero_overhead.py HEADERS WORK COMPILER

Two functions are compiled for each overload: one calls the C function, one the overload with spans of known sizes. The
instructions have to be the same. Objects and the phase of a sample-rate change are in memory and resize asks the library for
its buffer's size, so that their overloads compare at run time; they are left out here.
"""
import re
import subprocess
import sys
from pathlib import Path

import overloads


def bodies(path):
    """{function: instructions with the symbols they refer to}"""
    text = subprocess.run(["llvm-objdump-19", "-dr", "--no-show-raw-insn", "--no-leading-addr", path], capture_output=True, text=True, check=True).stdout
    found = {}
    for name, body in re.findall(r"^<(\w+)>:\n(.*?)(?=^<|\Z)", text, re.M | re.S):
        lines = [re.sub(r"\s+", " ", re.sub(r"^\s*[0-9a-f]+:|0x[0-9a-f]+ <.*?>|(?<=LCPI)\d+_\d+", "", line)).strip() for line in body.splitlines()]
        while lines and (not lines[-1] or lines[-1].startswith(("nop", "int3", "data16", "cs nop"))):
            lines.pop()
        found[name] = [line for line in lines if line]
    return found


def main():
    folder, work, compiler = Path(sys.argv[1]), Path(sys.argv[2]), sys.argv[3]
    work.mkdir(parents=True, exist_ok=True)
    c, cpp, _ = overloads.read(folder)
    lines, names = ["#include <morvenqvr.hpp>", 'extern "C" {'], []
    for name, overload, signature in cpp:
        if re.search(r"State|Spec|int& phase", signature) or re.match("qvriResize_|qvriResizeSqr", name):
            continue
        call = overloads.Call(name, overload, signature, c[name])
        arrays, rest = [], []
        for line in call.lines:
            array = re.fullmatch(r"static (.*) (\w+)(\[\d+\]);", line)
            result = re.fullmatch(r"(\w+) (\w+)(?:\{\}| = 1);", line)
            if array:
                arrays.append(f"{array[1]} (&{array[2]}){array[3]}")
            elif result:
                arrays.append(f"{result[1]}& {result[2]}")
            else:
                rest.append(line)
        names.append(name)
        for kind, expression in (("direct", f"Morven_{name}({', '.join(call.direct)})"),
                                 ("overload", f"qvr::checked::{overload}({', '.join(v for _, v in call.arguments)})")):
            lines += [f"qvrStatus {kind}_{name}({', '.join(arrays)})", "{", *("    " + line for line in rest), f"    return {expression};", "}"]
    source, out = work / "zero_overhead.cpp", work / "zero_overhead.o"
    source.write_text("\n".join(lines + ["}"]) + "\n")
    subprocess.run([compiler, "-std=c++20", "-O2", f"-I{folder}", "-c", source, "-o", out], check=True)
    found = bodies(out)
    failures = [n for n in names if found["direct_" + n] != found["overload_" + n]]
    if not all(any(f"Morven_{n}" in line for line in found["direct_" + n]) for n in names):
        sys.exit("the disassembly is not understood")
    for n in failures[:5]:
        print(n, *found["direct_" + n], "---", *found["overload_" + n], sep="\n    ")
    print(f"{compiler}: {len(names)} overloads, {len(failures)} of them with other instructions than the C call")
    sys.exit(bool(failures) or len(names) < 150)


main()
