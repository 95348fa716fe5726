"""Exported names: exported_symbols.py SHARED-OBJECT EXPORTS-LIST HEADER

The shared object exports what the list names, all of it under the one version node, and the header declares the same.
"""
import re
import sys

import binary

PREFIX, NODE, SONAME = "Morven_", "MORVENQVR", "libmorvenqvr.so.1"


def compare(what, have, want):
    return [f"{name} is {what}, but not on the list" for name in sorted(have - want)] + \
           [f"{name} is on the list, but not {what}" for name in sorted(want - have)]


def declared(header):
    with open(header) as file:
        text = re.sub(r"/\*.*?\*/|//[^\n]*", " ", file.read(), flags=re.S)
    return set(re.findall(r"\bMorven_\w+(?=\s*\()", text))


def check_symbols(library, names):
    have = [s for s in binary.symbols(library, dynamic=True) if s.defined and s.section != "ABS"]
    failures = compare("exported", {s.name for s in have}, names)
    failures += [f"{s.name} has version '{s.version}'" for s in have if s.version != NODE or not s.default_version]
    failures += [f"{s.name} is no function" for s in have if s.kind != "FUNC"]
    soname = re.findall(r"\(SONAME\).*\[(.*)\]", binary.readelf("-d", library))
    if soname != [SONAME]:
        failures.append(f"the soname is {soname}")
    return failures


def main(library, export_list, header):
    names = {PREFIX + name for name in binary.exports(export_list)}
    print(f"{len(names)} exports")
    binary.finish("exports", check_symbols(library, names) + compare("declared", declared(header), names))


if __name__ == "__main__":
    main(*sys.argv[1:])
