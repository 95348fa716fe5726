#!/usr/bin/env python3
"""Doxygen's view of the header: the comment of each function ends with its example from docs/examples."""
import re
import sys
from pathlib import Path

EXAMPLE = re.compile(r"^EXAMPLE\((\w+)\)\n\{\n(.*?)^\}", re.S | re.M)
PROTOTYPE = re.compile(r"\*/\n(?=[\w *]*\bMorven_(\w+)\()")


def examples():
    """Bodies by function."""
    bodies = {}
    for source in sorted((Path(__file__).parent / "examples").glob("*.c")):
        for name, body in EXAMPLE.findall(source.read_text()):
            if name in bodies:
                sys.exit(f"{source}: a second example of {name}")
            bodies[name] = "".join(line[4:] if line.startswith("    ") else line for line in body.splitlines(True))
    return bodies


def withExamples(header, bodies):
    """The header's text with examples, and the functions that have none."""
    missing = []

    def end(match):
        name = match.group(1)
        if name not in bodies:
            missing.append(name)
            return match.group(0)
        code = "".join(f" * {line}\n" if line else " *\n" for line in bodies[name].rstrip().split("\n"))
        return f"\n * @par Example\n * @code{{.c}}\n{code} * @endcode\n */\n"

    return PROTOTYPE.sub(end, header), missing


if __name__ == "__main__":
    print(withExamples(Path(sys.argv[1]).read_text(), examples())[0])
