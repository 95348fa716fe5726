"""Form of the shared object: shared_object.py SHARED-OBJECT"""
import bisect
import re
import struct
import sys

import binary

NEEDED = {"libomp.so.5", "libc.so.6", "libm.so.6"}
COMPILERS_OWN = {"frame_dummy"}
# The C runtime's start and end code, which comes with the compiler.
STARTUP = {"_init", "_fini", "deregister_tm_clones", "register_tm_clones", "__do_global_dtors_aux", "frame_dummy"}
HOOK = "qvrLoadHook"


def section_words(path, name):
    """The 64-bit words of a section and the address of its first, as the dynamic linker will leave them."""
    row = re.search(rf"\] {re.escape(name)}\s+\S+\s+([0-9a-f]+) ([0-9a-f]+) ([0-9a-f]+)", binary.readelf("-S", path))
    if not row:
        return []
    address, offset, size = (int(field, 16) for field in row.groups())
    with open(path, "rb") as file:
        file.seek(offset)
        words = list(struct.unpack(f"<{size // 8}Q", file.read(size)))
    for at, addend in re.findall(r"^([0-9a-f]+)\s+[0-9a-f]+ R_X86_64_RELATIVE\s+([0-9a-f]+)$", binary.readelf("-r", path), re.M):
        index, rest = divmod(int(at, 16) - address, 8)
        if rest == 0 and 0 <= index < len(words):
            words[index] = int(addend, 16)
    return words


def without_unwind_table(library):
    """Functions of which no entry of the unwind tables tells the frame."""
    dump = binary.run(f"llvm-dwarfdump-{binary.LLVM}", "--eh-frame", library)
    ranges = sorted((int(a, 16), int(b, 16)) for a, b in re.findall(r" FDE cie=\w+ pc=(\w+)\.\.\.(\w+)", dump))
    starts = [first for first, _ in ranges]

    def covered(address):
        place = bisect.bisect_right(starts, address) - 1
        return place >= 0 and address < ranges[place][1]
    return [s.name for s in binary.symbols(library)
            if s.defined and s.kind == "FUNC" and s.name not in STARTUP and not covered(s.value)]


def check(library):
    failures = [f"{name} has no unwind table" for name in without_unwind_table(library)]
    if "SHSTK" not in binary.readelf("-n", library):
        failures.append("is not marked as fit for shadow stacks")
    dynamic, segments = binary.readelf("-d", library), binary.readelf("-l", library)
    for name in re.findall(r"\(NEEDED\).*\[(.*)\]", dynamic):
        if name not in NEEDED:
            failures.append(f"needs {name}")
    for tag in ("RPATH", "RUNPATH", "TEXTREL"):
        if f"({tag})" in dynamic:
            failures.append(f"has a {tag} entry")
    if re.search(r"\(FLAGS\).*TEXTREL", dynamic):
        failures.append("has text relocations")
    if not re.search(r"\(FLAGS\).*BIND_NOW|\(BIND_NOW\)", dynamic):
        failures.append("is not bound at load (BIND_NOW)")
    if "GNU_RELRO" not in segments:
        failures.append("has no read-only-after-relocation segment")
    stack = re.search(r"GNU_STACK(?:\s+0x[0-9a-f]+){5}\s+([RWE ]+?)\s+0x", segments)
    if not stack or "E" in stack.group(1):
        failures.append("asks for an executable stack")
    for flags in re.findall(r"LOAD(?:\s+0x[0-9a-f]+){5}\s+([RWE ]+?)\s+0x", segments):
        if "W" in flags and "E" in flags:
            failures.append("has a segment that is writable and executable")
    names = {s.value: s.name for s in binary.symbols(library) if s.defined and s.kind == "FUNC"}
    hooks = [names.get(word, hex(word)) for word in section_words(library, ".init_array")]
    own = [name for name in hooks if name not in COMPILERS_OWN]
    if own != [HOOK]:
        failures.append(f"runs {own} at load instead of {HOOK} alone")
    return failures


def main(library):
    binary.finish("shared object", check(library))


if __name__ == "__main__":
    main(*sys.argv[1:])
