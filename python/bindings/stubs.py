"""Type stubs of the generated functions, before those of the parts written by hand."""
from pathlib import Path

from . import table
from .documentation import signature
from .header import ELEMENTS


def scalar(letters):
    return "float" if any(letter in "fd" for letter in letters) else "int"


def returns(function):
    parts = ["Array"] if function.has_output else []
    for kinds in zip(*[form.results for form in function.forms]):
        parts.append(scalar([ELEMENTS[kind][2] for kind in kinds]) + " | Array")
    if function.written >= 0:
        name = list(function.extras)[function.written]
        parts.append(scalar([form.extras[name][0] for form in function.forms]))
    return parts[0] if len(parts) == 1 else f"tuple[{', '.join(parts)}]"


def stub(function):
    texts = []
    for part in signature(function).split(", "):
        name, _, default = part.partition("=")
        if part == "*":
            texts.append(part)
            continue
        if name == "out":
            kind = "Array | None" if default else "Array"
        elif name in function.input_names:
            numbers = any(form.inputs[function.input_names.index(name)] is None for form in function.forms
                          if len(form.inputs) > function.input_names.index(name))
            arrays = any(form.inputs[function.input_names.index(name)] for form in function.forms
                         if len(form.inputs) > function.input_names.index(name))
            kind = " | ".join(["Array"] * arrays + ["float"] * numbers)
        elif name == "dtype":
            kind = "DTypeLike"
        elif name == "accuracy":
            kind = "int | None"
        elif name == "copy":
            kind = "bool"
        elif function.extras.get(name) in table.SELECTORS:
            kind = "str | int"
        elif name == "normalize":
            kind = "bool"
        else:
            kind = scalar([form.extras[name][0] for form in function.forms if name in form.extras])
            kind += " | None" if default == "None" else ""
        texts.append(f"{name}: {kind}" + (f" = {default}" if default else ""))
    return f"def {function.name}({', '.join(texts)}) -> {returns(function)}: ..."


def stubs(found, header):
    written = (Path(__file__).parent / "objects.pyi").read_text(encoding="utf-8")
    return written + "\n" + "\n".join(stub(function) for function in found.values() if not function.name.startswith("_")) + "\n"
