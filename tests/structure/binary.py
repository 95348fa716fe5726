"""Reading of object files, shared objects and the list of exports through the LLVM binary tools."""
import pathlib
import re
import subprocess
import sys

LLVM = "19"


def run(*command):
    done = subprocess.run(command, capture_output=True, text=True)
    if done.returncode != 0:
        raise RuntimeError(f"{' '.join(command[:4])} ...: {done.stderr.strip() or done.returncode}")
    return done.stdout


def readelf(*arguments):
    return run(f"llvm-readelf-{LLVM}", "-W", *arguments)


class Symbol:
    """One row of a symbol table."""

    def __init__(self, fields):
        self.value, self.kind, self.binding, self.visibility = int(fields[1], 16), fields[3], fields[4], fields[5]
        self.section = fields[6]
        self.name, _, self.version = (fields[7] if len(fields) > 7 else "").partition("@")
        self.default_version = self.version.startswith("@")
        self.version = self.version.lstrip("@")
        self.defined = self.section != "UND"


def symbols(path, dynamic=False):
    rows = readelf("--dyn-syms" if dynamic else "--symbols", path).splitlines()
    return [s for s in (Symbol(r.split()) for r in rows if re.match(r"\s*\d+: ", r)) if s.name]


def exports(path):
    """{name without prefix: SHARED, OWN or PLAIN} from the list of exports and those of the families that it includes."""
    path = pathlib.Path(path)
    text = path.read_text()
    rows = []
    for part in [text] + [(path.parent.parent / name).read_text() for name in re.findall(r'^#include "(.*)"', text, re.M)]:
        rows += re.findall(r"^QVR_(SHARED|OWN|PLAIN)\((\w+)\)", part, re.M)
    kinds = {name: kind for kind, name in rows}
    if len(kinds) != len(rows):
        raise RuntimeError(f"{path} names a function twice")
    return kinds


def slots():
    """{prefix: (shared, compiler flags)} from the list of slots."""
    text = (pathlib.Path(__file__).parents[2] / "frame/slots.def").read_text()
    rows = re.findall(r'^QVR_SLOT\((\w+), (\w+), \w+, \w+, "(.*?)", ".*?"\)$', text, re.M)
    return {prefix: (shared, flags.split()) for prefix, shared, flags in rows}


def instructions(path):
    """Yields (function, mnemonic, operands, name that a relative operand points at) of the whole disassembly."""
    function = "?"
    for line in run(f"llvm-objdump-{LLVM}", "-d", "--no-show-raw-insn", path).splitlines():
        label = re.match(r"[0-9a-f]+ <(.+)>:$", line)
        if label:
            function = label.group(1)
            continue
        row = re.match(r"\s*[0-9a-f]+:\s+(\S+)\s*(.*?)(?:\s+# .*?(?:<(\S+)>)?)?$", line)
        if not row:
            continue
        words = [row.group(1), row.group(2)]
        while words[0] in ("lock", "rep", "repne", "repe", "data16", "notrack", "cs", "ds", "{vex}", "{evex}") and words[1]:
            words = (words[1].split(None, 1) + [""])[:2]
        yield function, words[0], words[1], row.group(3)


def finish(subject, failures):
    """Prints what was found and ends the program with the matching status."""
    for failure in failures[:40]:
        print(f"{subject}: {failure}")
    if len(failures) > 40:
        print(f"{subject}: and {len(failures) - 40} more")
    sys.exit(1 if failures else 0)
