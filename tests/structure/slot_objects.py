"""Purity of a slot's object files: slot_objects.py SLOT SLOT-DIRECTORY PLAIN-DIRECTORY

SLOT is a prefix, or plain for the objects that are compiled once, for the baseline. What one slot's
object defines and another's uses would run instructions that the chosen processor may lack, so every global is
named after its slot and nothing is weak; what a slot's object does not define comes from a short list.
"""
import pathlib
import re
import sys

import binary
import levels

# A vector operation that the level lacks would otherwise turn into calls of libm, one element at a time.
LIBC = {"free", "malloc", "memcpy", "memmove", "memset"}
# So libm is for the files alone that compute a few scalars with it: tables, weights, designs.
LIBM = {
    "fft_32f.cpp.o": {"sin", "cos", "sincos"},
    "fft_64f.cpp.o": {"sin", "cos", "sincos"},
    "windows.cpp.o": {"cos", "sincos"},
    "iir_design.cpp.o": {"cos", "cosh", "expm1", "log", "pow", "sin", "sincos", "sinh", "tan"},
}
# The transforms of these slots run kernels of m7 and of mx, whose levels theirs contain.
SHARED_KERNELS = {"m7": ("mx_ownqvrsDFTKernels",),
                  **dict.fromkeys(("u8", "n8", "y8"), ("m7_ownqvrsFFTKernels_", "mx_ownqvrsDFTKernels"))}
OPENMP = re.compile(r"__kmpc_\w+|omp_get_(?:num_threads|thread_num)")


def objects(directory):
    found = sorted(str(path) for path in pathlib.Path(directory).rglob("*.o"))
    if not found:
        raise RuntimeError(f"no object file under {directory}")
    return found


def frame_names(plain_objects):
    """The hidden names that the once-compiled objects offer to every slot."""
    return {s.name for path in plain_objects for s in binary.symbols(path)
            if s.defined and s.binding == "GLOBAL" and s.visibility == "HIDDEN" and s.name.startswith("qvr")}


def check_symbols(slot, paths, frame):
    failures = []
    own = (slot + "_",)
    reachable = own + (binary.slots()[slot][0] + "_",) + SHARED_KERNELS.get(slot, ())
    for path in paths:
        for s in binary.symbols(path):
            where = f"{pathlib.Path(path).name}: {s.name}"
            if s.binding == "LOCAL":
                continue
            if s.binding != "GLOBAL" or s.section == "COM":
                failures.append(f"{where} is {s.binding.lower()}, so the linker may take another slot's copy")
            elif s.defined and not s.name.startswith(own):
                failures.append(f"{where} is a global without the prefix {own[0]}")
            elif s.defined and s.visibility != "HIDDEN":
                failures.append(f"{where} is not hidden")
            elif not s.defined and not (s.name.startswith(reachable) or s.name in frame or s.name in LIBC
                                        or s.name in LIBM.get(pathlib.Path(path).name, ())
                                        or s.name == "_GLOBAL_OFFSET_TABLE_" or OPENMP.fullmatch(s.name)):
                failures.append(f"{where} is undefined and not on the list of what a slot may call")
    return failures


def check_level(slot, paths):
    allowed = levels.ALLOWED["mx" if slot == "plain" else slot]
    failures, count = [], 0
    for path in paths:
        for function, mnemonic, operands, _ in binary.instructions(path):
            count += 1
            needs = levels.extension(mnemonic, operands)
            if needs and needs not in allowed:
                failures.append(f"{pathlib.Path(path).name}: {function}: {mnemonic} {operands} needs {needs}")
    if count == 0:
        failures.append("no instruction was found")
    return failures


def main(slot, directory, plain_directory):
    paths = objects(directory)
    failures = check_level(slot, paths)
    if slot != "plain":
        failures += check_symbols(slot, paths, frame_names(objects(plain_directory)))
    print(f"{len(paths)} objects of slot {slot}")
    binary.finish(slot, failures)


if __name__ == "__main__":
    main(*sys.argv[1:])
