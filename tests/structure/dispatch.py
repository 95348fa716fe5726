"""The way of a call: dispatch.py SHARED-OBJECT EXPORTS-LIST

Every exported symbol with a table is one jump to its own dispatcher, and the dispatcher is three instructions: load the
slot's number, take the table's address, jump through it.
"""
import re
import sys

import binary

PADDING = re.compile(r"nop\w*|int3|xchgw")


def check(library, kinds):
    bodies = {}
    for function, mnemonic, operands, target in binary.instructions(library):
        if not PADDING.fullmatch(mnemonic):
            bodies.setdefault(function, []).append((mnemonic, operands, target))
    failures = []
    for name, kind in sorted(kinds.items()):
        if kind == "PLAIN":
            continue
        entry = [row[:2] for row in bodies.get("Morven_" + name, [])]
        if not (len(entry) == 1 and entry[0][0] == "jmp" and entry[0][1].endswith(f" <qvrDispatch_{name}>")):
            failures.append(f"Morven_{name} is {entry} instead of one jump to its dispatcher")
        body = bodies.get("qvrDispatch_" + name, [])
        want = [("movslq", "%rax", "qvrCpuIndex"), ("leaq", "%r11", "qvrTable_" + name), ("jmpq", "*(%r11,%rax,8)", None)]
        if not (len(body) == 3 and all(m == wm and o.endswith(wo) and t == wt
                                       for (m, o, t), (wm, wo, wt) in zip(body, want))):
            failures.append(f"the dispatcher of {name} is {body}")
    return failures


def main(library, export_list):
    kinds = binary.exports(export_list)
    print(f"{len(kinds)} exports")
    binary.finish("dispatch", check(library, kinds))


if __name__ == "__main__":
    main(*sys.argv[1:])
