#!/usr/bin/env python3
"""Doxygen's view of the header: the comment of each function ends with what depends on the processor's level, from
docs/levels.txt, and with its example, from docs/examples."""
import re
import sys
from fnmatch import fnmatchcase
from pathlib import Path

EXAMPLE = re.compile(r"^EXAMPLE\((\w+)\)\n\{\n(.*?)^\}", re.S | re.M)
PROTOTYPE = re.compile(r"\*/\n(?=[\w *]*\bMorven_(\w+)\()")
HERE = Path(__file__).parent


def examples():
    """Bodies by function."""
    bodies = {}
    for source in sorted((HERE / "examples").glob("*.c")):
        for name, body in EXAMPLE.findall(source.read_text()):
            if name in bodies:
                sys.exit(f"{source}: a second example of {name}")
            bodies[name] = "".join(line[4:] if line.startswith("    ") else line for line in body.splitlines(True))
    return bodies


def levels():
    """Pairs of patterns and text lines, in order."""
    rules = []
    for line in (HERE / "levels.txt").read_text().splitlines():
        if line.startswith("    "):
            rules[-1][1].append(line.strip())
        elif line and not line.startswith("#"):
            rules.append((line.split(), []))
    return rules


def ruleOf(name, rules):
    """The first pair whose patterns fit the name."""
    return next((rule for rule in rules if any(fnmatchcase(name, pattern) for pattern in rule[0])), None)


def referenceView(header, bodies, rules):
    """The header's text with both, and the functions without an example."""
    missing = []

    def end(match):
        name = match.group(1)
        text, rule = "\n", ruleOf(name, rules)
        if rule:
            text += " * @par Processor levels\n" + "".join(f" * {line}\n" for line in rule[1])
        if name in bodies:
            code = "".join(f" * {line}\n" if line else " *\n" for line in bodies[name].rstrip().split("\n"))
            text += f" * @par Example\n * @code{{.c}}\n{code} * @endcode\n"
        else:
            missing.append(name)
        return text + " */\n"

    return PROTOTYPE.sub(end, header), missing


if __name__ == "__main__":
    print(referenceView(Path(sys.argv[1]).read_text(), examples(), levels())[0])
