#!/usr/bin/env python3
"""Makes the reference pages into a folder and reads them: each export has its entry with a description, every parameter and
its result (so that it stands on its own in an editor), its own example and what depends on the processor's level, each link and picture of the guides leads somewhere, and doxygen has nothing to say."""
import re
import subprocess
import sys
import xml.etree.ElementTree as ElementTree
from pathlib import Path

root, work = Path(sys.argv[1]), Path(sys.argv[2])
work.mkdir(parents=True, exist_ok=True)
faults = []

settings = (root / "docs/Doxyfile").read_text() + f"\nOUTPUT_DIRECTORY = {work}\nWARN_LOGFILE = {work}/warnings.txt\nGENERATE_HTML = NO\n"
subprocess.run(["doxygen", "-"], input=settings, text=True, check=True, cwd=root)
faults += (work / "warnings.txt").read_text().splitlines()

exports = set(re.findall(r"^QVR_\w+\((\w+)\)", "".join(path.read_text() for path in root.glob("*/exports.def")), re.M))
sys.path.insert(0, str(root / "docs"))
from reference import examples, levels, referenceView, ruleOf  # noqa: E402

bodies, rules = examples(), levels()
faults += [f"no function {name} for the example" for name in bodies if name not in exports]
_, missing = referenceView((root / "include/morvenqvr.h").read_text(), bodies, rules)
faults += [f"no example of {name}" for name in missing]
for name, body in bodies.items():
    if f"Morven_{name}(" not in body:
        faults.append(f"the example of {name} does not call it")

faults += [f"no word on processor levels for {name}" for name in sorted(exports) if not ruleOf(name, rules)]
used = [ruleOf(name, rules) for name in exports]
faults += [f"no function for the levels of {' '.join(rule[0])}" for rule in rules if rule not in used]

# The header's comments, entry by entry: an argument each, in order, and the result.
header = (root / "include/morvenqvr.h").read_text()
for comment, kind, name, arguments in re.findall(
    r"/\*\*((?:(?!\*/).)*)\*/\n(\w[\w ]*?) ?\*?\*? ?Morven_(\w+)\(([^;{]*?)\);", header, re.S
):
    wanted = [] if arguments == "void" else [re.search(r"\w+$", a.strip())[0] for a in arguments.split(",")]
    stated = re.findall(r"@param (\w+) \S", comment)
    if stated != wanted:
        faults.append(f"{name} documents the parameters {stated}, and has {wanted}")
    if kind != "void" and "@return " not in comment:
        faults.append(f"{name} does not tell its result")
check = subprocess.run(
    [sys.argv[3], "-x", "c", "-fsyntax-only", "-Wdocumentation", "-Wdocumentation-pedantic",
     "-Wno-documentation-unknown-command", root / "include/morvenqvr.h"], capture_output=True, text=True)
faults += check.stderr.splitlines()

described = {}
for page in (work / "xml").glob("group__*.xml"):
    for member in ElementTree.parse(page).iter("memberdef"):
        if member.get("kind") == "function":
            text = "".join(member.find("briefdescription").itertext()) + "".join(member.find("detaileddescription").itertext())
            described[member.findtext("name").removeprefix("Morven_")] = text
for name in sorted(exports):
    text = described.get(name, "")
    if len(text.split("Processor levels")[0].strip()) < 10 or "Example" not in text or "Processor levels" not in text:
        faults.append(f"{name} has no entry in a group, or one without description, example or processor levels")

for guide in [*root.glob("*.md"), *(root / "docs").glob("*.md")]:
    for target in re.findall(r"\]\(([^)#\s]+)", guide.read_text()):
        if "://" not in target and not (guide.parent / target).exists():
            faults.append(f"{guide.name}: {target} does not exist")

print("\n".join(faults) or f"{len(exports)} entries")
sys.exit(bool(faults))
