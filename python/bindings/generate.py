"""Writes the sources that the header determines: generate.py HEADER OUTPUT_FOLDER

    tables.h        forms of each function with a typed call for each, kinds of objects, names of all exports
    functions.pxi   the Python functions with their docstrings
    _generated.py   statuses, selectors, groups
    __init__.pyi    type stubs
"""
import re
import sys
from pathlib import Path

if __package__ in (None, ""):
    sys.path.insert(0, str(Path(__file__).parent.parent))
    __package__ = "bindings"

from . import table  # noqa: E402
from .documentation import docstring, selectors, signature  # noqa: E402
from .header import ELEMENTS, read  # noqa: E402
from .kinds import kinds  # noqa: E402
from .shapes import functions, operation  # noqa: E402
from .stubs import stubs  # noqa: E402


def type_number(element):
    return ELEMENTS[element][0] if element else "kNumber"


def call(function, form):
    """A C function that calls the export with arguments from a record."""
    inputs, extras = function.inputs, list(function.extras)
    op = operation(form.export)[0]
    values, before, after = [], [], []
    lengths = {"len": inputs if form.output else 0, "len1": 0, "len2": 1, "lenFind": 1, "srcLen": 0}
    for p in form.export.parameters:
        role, detail = form.arguments[p.name]
        ctype = "qvr" + p.type if p.type in ELEMENTS else p.type
        if role == "input":
            value = f"({ctype}*)a->p[{detail}]"
            if passed := table.PASSED_AS.get((op, p.name)):
                for other, (other_role, extra) in form.arguments.items():
                    if other_role == "extra":
                        passed = re.sub(rf"\b{other}\b", f"a->i[{extras.index(extra)}]", passed)
                value = re.sub(rf"\b{p.name}\b", f"({value})", passed)
        elif role == "output":
            value = f"({ctype}*)a->p[{inputs}]"
        elif role == "result":
            value = f"({ctype}*)a->p[{inputs + 1 + detail}]"
        elif role == "length":
            value = f"(int)a->n[{lengths[detail]}]"
        elif role == "step":
            places = {q: form.arguments[q][1] if form.arguments[q][0] == "input" else inputs for q in form.arguments}
            value = f"a->step[{places[detail] if detail else inputs}]"
        elif role == "size":
            value = "(qvriSize){a->width, a->height}"
        elif role == "number":
            value = f"({ctype})a->{'r' if form.number in 'fd' else 'i'}[kMaxExtras]"
        elif role == "ignored":
            before.append(f"int {p.name} = 0;")
            value = f"&{p.name}"
        else:
            letter = form.extras[detail][0]
            slot = f"a->{'r' if letter in 'fd' else 'i'}[{extras.index(detail)}]"
            value = f"({ctype}){slot}"
            if role == "written":
                before.append(f"{ctype} {p.name} = ({ctype}){slot};")
                after.append(f"{slot} = {p.name};")
                value = f"&{p.name}"
        values.append(value)
    expression = f"CALL({form.export.name})({', '.join(values)})"
    body = f"return {expression};" if not after else f"const int status = {expression}; {' '.join(after)} return status;"
    return f"static int call_{form.export.name}(QvrArguments* a) {{ {' '.join([*before, body])} }}"


def length(function):
    """A C function for the length of an output row, or null."""
    formula = table.LENGTHS.get(function.name)
    if not formula:
        return "", "NULL"
    lines = []
    for k, name in enumerate(function.extras):
        if default := table.LENGTH_DEFAULTS.get((function.name, name)):
            lines.append(f"if (a->i[{k}] == kNothing) a->i[{k}] = {default};")
    for k, name in enumerate(function.extras):
        lines.append(f"const long {name} = a->i[{k}];")
    used = [line for line in lines if not line.startswith("const") or re.search(rf"\b{line.split()[2]}\b", formula)]
    body = " ".join(["const long n0 = n[0], n1 = n[1];", *used, "(void)n0; (void)n1; (void)a;", f"return {formula};"])
    return f"static long length_{function.name}(const long* n, QvrArguments* a) {{ {body} }}", f"length_{function.name}"


def tables(header, found):
    out = ["// Made from morvenqvr.h.", "#ifndef MORVENQVR_PYTHON_TABLES_H", "#define MORVENQVR_PYTHON_TABLES_H", '#include "engine.h"', "#include <morvenqvr.h>", "",
           "enum { kNothing = -2147483647 - 1 };", ""]
    out.append("enum {\n" + "".join(f"    E_{name},\n" for name in header.exports) + "    kEntries\n};")
    out.append("static const char* const entryName[kEntries] = {\n"
               + "".join(f'    "Morven_{name}",\n' for name in header.exports) + "};")
    out.append("static void* entry[kEntries];\n#define CALL(name) ((__typeof__(&Morven_##name))entry[E_##name])\n")
    records = []
    for function in found.values():
        for form in function.forms:
            out.append(call(function, form))
        extras = list(function.extras)
        out.append(f"static const QvrForm forms_{function.name}[] = {{")
        for form in function.forms:
            letters = "".join(form.extras[name][0] if name in form.extras else "-" for name in extras)
            inputs = [type_number(kind) for kind in form.inputs] or ["kNone"]
            results = [type_number(kind) for kind in form.results] or ["kNone"]
            out.append(f"    {{\"{form.export.name}\", call_{form.export.name}, {{{', '.join(inputs)}}}, "
                       f"{type_number(form.output) if form.output else 'kNone'}, "
                       f"{'kNone' if form.in_place is None else form.in_place}, {form.accuracy}, {{{', '.join(results)}}}, "
                       f"'{form.number or '-'}', \"{letters}\"}},")
        out.append("};")
        code, pointer = length(function)
        out.append(code)
        vectors = sum(1 << k for k, name in enumerate(function.input_names) if name == "table") if function.image else 0
        commutative = any(operation(form.export)[0] in table.COMMUTATIVE for form in function.forms)
        selectors_ = sum(1 << k for k, c_name in enumerate(function.extras.values()) if c_name in table.SELECTORS)
        names = ", ".join(f'"{name}"' for name in function.input_names) or "NULL"
        extra_names = ", ".join(f'"{name}"' for name in extras) or "NULL"
        elementwise = function.group in table.ELEMENTWISE and not any(form.results for form in function.forms)
        records.append(
            f"    {{\"{function.name}\", forms_{function.name}, {len(function.forms)}, {function.inputs}, {len(extras)}, "
            f"{max(len(form.results) for form in function.forms)}, {2 if function.image else 1}, {vectors}, {int(elementwise)}, "
            f"{int(commutative)}, {int(function.needs_output)}, {function.written}, {selectors_}, {table.WEIGHTS.get(function.group, 1)}, "
            f"{int(function.name in table.QUADRATIC)}, {pointer}, {{{names}}}, {{{extra_names}}}}},")
    out.append("enum {\n" + "".join(f"    G_{name},\n" for name in found) + "    kGroups\n};")
    out.append("static const QvrGroup groups[kGroups] = {\n" + "\n".join(records) + "\n};\n")
    out += [kinds(header), "#endif"]
    return "\n".join(out) + "\n"


def pyx(function, header):
    lines = [f"def {function.name}({signature(function)}):", f'    """{docstring(function, header)}"""']
    if function.inputs:
        lines.append(f"    cdef PyObject* inputs[{function.inputs}]")
        lines += [f"    inputs[{k}] = <PyObject*>{name}" for k, name in enumerate(function.input_names)]
    extras = list(function.extras)
    if extras:
        lines.append(f"    cdef PyObject* extras[{len(extras)}]")
        lines += [f"    extras[{k}] = <PyObject*>" + ("None" if (function.name, name) in table.HIDDEN else name)
                  for k, name in enumerate(extras)]
    lines.append(f"    return run(&groups[{list_index(function)}], {'inputs' if function.inputs else 'NULL'}, "
                 f"{'out' if function.has_output else 'None'}, {'extras' if extras else 'NULL'}, "
                 f"{'dtype' if function.chooses_output else 'None'}, {'accuracy' if function.chooses_accuracy else 'None'}, "
                 f"{'copy' if function.inputs else 'False'})")
    return "\n".join(lines) + "\n"


def list_index(function):
    return f"G_{function.name}"


def blame(found, header):
    """(export, status) -> the argument that the reference text names with the status."""
    values = {name: value for name, value in header.constants.items() if name.startswith("qvrErr")}
    pairs = {}
    for function in found.values():
        for form in function.forms:
            text = form.export.text + "\n" + header.groups[form.export.group][1]
            for status, rest in re.findall(r"(qvrErr\w+)((?:(?!qvrErr)[^;.])*)", text):
                names = [form.renames[word] for word in re.findall(r"\w+", rest) if word in form.renames]
                if names and status in values:
                    pairs.setdefault((form.export.name, values[status]), names[0])
            for status, names in table.STATUS_ARGUMENTS.items():
                if name := next((name for name in names if name in form.extras), None):
                    pairs[form.export.name, values[status]] = name
    return pairs


def main(header_path, folder):
    header = read(header_path)
    found, reached, faults = functions(header)
    if faults:
        sys.exit("\n".join(faults))
    folder = Path(folder)
    folder.mkdir(parents=True, exist_ok=True)
    declared = ["# Made from morvenqvr.h.", 'cdef extern from "tables.h":', "    enum:"]
    declared += [f"        G_{name}" for name in found] + [f"        E_{name}" for name in header.exports]
    write(folder / "tables.h", tables(header, found))
    write(folder / "functions.pxi", "\n".join(declared) + "\n\n" + "\n".join(pyx(f, header) for f in found.values()))
    by_group = {}
    for export, name in reached.items():
        names = by_group.setdefault(header.exports[export].group, [])
        if name not in names and not name.startswith("_"):
            names.append(name)
    by_function = {}
    for function in found.values():
        for name, c_name in function.extras.items():
            if c_name in table.SELECTORS:
                choices = dict(selectors(header, c_name))
                if name in table.SELECTED:
                    choices[None] = header.constants[table.SELECTED[name]]
                by_function[function.name, name] = choices
    write(folder / "_generated.py", "\n".join([
        '"""Made from morvenqvr.h."""',
        f"VERSION = {header.version!r}",
        f"STATUSES = {header.statuses!r}",
        f"SELECTORS = {by_function!r}",
        f"CONSTANTS = {({k: v for k, v in header.constants.items() if v not in header.statuses or not k.startswith(('qvrErr', 'qvrWarn', 'qvrOk'))})!r}",
        f"GROUPS = {({group: (header.groups[group][0], names) for group, names in by_group.items()})!r}",
        f"TEXTS = {({group: text for group, (title, text) in header.groups.items()})!r}",
        f"EXPORTS = {reached!r}",
        f"BLAME = {blame(found, header)!r}",
        f"FUNCTIONS = {[name for name in found if not name.startswith('_')]!r}",
    ]) + "\n")
    write(folder / "__init__.pyi", stubs(found, header))
    return header.version


def write(path, text):
    if not path.exists() or path.read_text(encoding="utf-8") != text:
        path.write_text(text, encoding="utf-8")


if __name__ == "__main__":
    main(*sys.argv[1:])
