"""What nothing in the library reaches: reserve.py BUILD-FOLDER SOURCE-FOLDER

A global that neither an export nor another function leads to is there because the contract prescribes it. The file that
defines it says so in a comment that begins with "By contract:", and so does every other oddity that a reader might repair.
"""
import pathlib
import re
import sys

import binary

MARK = "By contract:"


def unreached(objects):
    """{symbol: object} of the defined globals that no relocation names, data that others are made of aside."""
    defined, named = {}, set()
    for path in objects:
        for s in binary.symbols(path):
            if s.defined and s.binding == "GLOBAL" and s.kind == "FUNC":
                defined[s.name] = path
        named |= set(re.findall(r"R_X86_64_\w+\s+[0-9a-f]+\s+(\w+)", binary.readelf("-r", path)))
    return {name: path for name, path in defined.items() if name not in named and not name.startswith("Morven_")}


def headers(source):
    """The headers of a file's own family that it includes, at any depth."""
    found, rest = set(), [source]
    while rest:
        for name in re.findall(r'^#include "[\w/]*?(\w+\.\w+)"', rest.pop().read_text(), re.M):
            path = source.parent / name
            if path.exists() and path not in found:
                found.add(path)
                rest.append(path)
    return found


def check(found, sources):
    failures = []
    for name, path in sorted(found.items()):
        source = sources / re.search(r"\.dir/(.*)\.o$", path)[1]
        if not source.exists():
            continue  # an object of an earlier build
        if not any(MARK in file.read_text() for file in [source, *headers(source)]):
            failures.append(f"nothing reaches {name}, and {source.relative_to(sources)} has no comment '{MARK}'")
    return failures


def main(build, sources):
    # All slots come from one source: these have every file between them.
    objects = [str(path) for slot in ("plain", "mx", "m7", "l9") for path in pathlib.Path(build, "CMakeFiles").glob(f"slot_{slot}.dir/**/*.o")]
    found = unreached(objects)
    print(f"{len(objects)} objects, {len(found)} functions that nothing reaches")
    binary.finish("reserve", check(found, pathlib.Path(sources)) if found else ["no function was found"])


if __name__ == "__main__":
    main(*sys.argv[1:])
