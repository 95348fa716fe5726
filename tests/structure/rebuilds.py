"""What a change compiles again: rebuilds.py BUILD-FOLDER SOURCE-FOLDER

No object but those of the documentation depends on the public header, only on the declarations made from it, which a change of a comment leaves alone;
and a family's declarations reach its own objects and tests, so that a new function compiles one family.
"""
import os
import pathlib
import re
import subprocess
import sys
import tempfile

import binary

# What sees all families by design: calls to every export, and checks that run over all of them.
EVERYWHERE = re.compile(r"/(?:slot_plain\.dir/frame/dispatch\.S|bench_\w+\.dir/|qvr_bench\.dir/|chosen_slot\.dir/)"
                        r"|^tests/(?:fuzz|environment|slots)/|^tools/.*/check/")


def dependencies(build):
    """{object: [files]} as the last build recorded them."""
    found, current = {}, None
    for line in binary.run("ninja", "-C", build, "-t", "deps").splitlines():
        if line.startswith("    "):
            found[current].append(line.strip())
        elif (head := re.match(r"(\S+): #deps", line)):
            current = head[1]
            found[current] = []
    return found


def folder(name):
    """The family that an object belongs to: the last known folder of its path."""
    parts = pathlib.PurePath(name).parts[:-1]
    return next((p for p in reversed(parts) if p in ("frame", "vector", "elementary", "fourier", "filters", "image", "scalarmath")), "")


def check(found):
    failures = []
    for name, files in sorted(found.items()):
        for file in files:
            if file.endswith("include/morvenqvr.h") and not name.startswith("tests/docs/"):
                failures.append(f"{name} depends on the public header itself")
            part = re.search(r"declarations/(\w+)/\w+\.h$", file) or re.search(r"(\w+)/exports\.def$", file)
            if part and part[1] not in ("frame", folder(name)) and not EVERYWHERE.search(name):
                failures.append(f"{name} depends on the declarations of {part[1]}")
    return failures


def remade(source):
    """The declarations that another comment and another blank line in the header would change."""
    failures = []
    with tempfile.TemporaryDirectory() as work:
        header = pathlib.Path(work, "morvenqvr.h")
        header.write_text((source / "include/morvenqvr.h").read_text())

        def make():
            for family in ("frame", "vector", "elementary", "fourier", "filters", "image"):
                subprocess.run([source / "scripts/declarations.sh", header, source / family / "exports.def",
                                f"{work}/{family}", "types", "public", "functions", "slot_tables"], check=True)
            return {path: (path.stat().st_mtime_ns, path.read_text()) for path in pathlib.Path(work).glob("*/*.h")}
        before = make()
        header.write_text(header.read_text().replace("/**", "/**\n * Another line.\n", 40).replace("*/", " Another end. */", 400))
        after = make()
        failures += [f"{path.relative_to(work)} changes with a comment" for path in before if before[path] != after[path]]
        header.write_text(header.read_text().replace("Morven_qvrsAdd_32f(", "Morven_qvrsAdd_32f(int more, "))
        changed = {str(path.relative_to(work)) for path, (_, text) in make().items() if text != after[path][1]}
        if changed != {"vector/public.h"}:
            failures.append(f"another argument of a function of vector/ changes {sorted(changed)}")
    return failures


def main(build, source):
    found = {name: files for name, files in dependencies(build).items() if os.path.exists(os.path.join(build, name))}
    print(f"{len(found)} objects")
    binary.finish("rebuilds", (check(found) if found else ["no object has its dependencies on record"]) + remade(pathlib.Path(source)))


if __name__ == "__main__":
    main(*sys.argv[1:])
