"""The Python form of an export, from its prototype and the tables."""
import re
from dataclasses import dataclass, field

from . import table
from .header import ELEMENTS

OUTPUTS = {"pDst", "dst", "taps"}
IN_PLACE = {"pSrcDst", "srcDst"}
LENGTHS = {"len", "len1", "len2", "lenFind", "srcLen"}


@dataclass
class Form:
    export: object
    inputs: list = field(default_factory=list)  # element types; None for a number
    input_names: list = field(default_factory=list)
    output: str = None
    in_place: int = None
    number: str = ""  # letter of the operand that is a number
    extras: dict = field(default_factory=dict)  # Python name -> (letter, C name)
    results: list = field(default_factory=list)  # element types
    arguments: dict = field(default_factory=dict)  # C name -> role, for the call
    renames: dict = field(default_factory=dict)  # C name -> Python name
    accuracy: int = 0


@dataclass
class Function:
    name: str
    group: str
    forms: list = field(default_factory=list)
    image: bool = False

    @property
    def inputs(self):
        return max(len(form.inputs) for form in self.forms)

    @property
    def input_names(self):
        full = [form.input_names for form in self.forms if len(form.input_names) == self.inputs]
        return next((names for names in full if None not in names), full[0])

    @property
    def extras(self):
        names = {}
        for form in self.forms:
            for name, (letter, c_name) in form.extras.items():
                names.setdefault(name, c_name)
        return names

    @property
    def written(self):
        return next((k for k, c_name in enumerate(self.extras.values()) if c_name in table.WRITTEN_BACK), -1)

    @property
    def has_output(self):
        return any(form.output for form in self.forms)

    @property
    def needs_output(self):
        """Nothing would tell its size, or what it holds is kept in part."""
        return self.has_output and (self.inputs == 0 and self.name not in table.LENGTHS or "mask" in self.input_names)

    @property
    def chooses_accuracy(self):
        return len({form.accuracy for form in self.forms}) > 1 or any(form.accuracy for form in self.forms)

    @property
    def chooses_output(self):
        if self.needs_output:
            return False
        seen = {}
        for form in self.forms:
            seen.setdefault(tuple(form.inputs), set()).add(form.output)
        return any(len(outputs) > 1 for outputs in seen.values())

    def default(self, extra):
        return (table.DEFAULTS_OF.get((self.name, extra)) or table.DEFAULTS_OF.get((self.name.split("_")[0], extra))
                or table.DEFAULTS.get(extra))


def snake(name):
    return re.sub(r"(?<=[a-z0-9])(?=[A-Z])", "_", name).lower()


def operation(export):
    """Words of the name before the element types, the types, and the form behind them."""
    words = export.name[4:].split("_")
    for k, word in enumerate(words):
        if k and re.fullmatch("(" + "|".join(sorted(ELEMENTS, key=len, reverse=True)) + ")+", word):
            return "_".join(words[:k]), word, "_".join(words[k + 1:])
    raise ValueError(f"{export.name} names no element type")


def python_name(export, op):
    full = export.name[4:]
    if full in table.NAMES:
        return table.NAMES[full]
    if export.image:
        return table.IMAGE_NAMES.get(op) or "image_" + snake(op)
    return table.NAMES.get(op) or snake(op)


def input_name(c_name, reverse, count):
    plain = {"pSrc1": "ab"[reverse], "pSrc2": "ba"[reverse], "pSrcX": "x", "pSrcY": "y"}
    if c_name in plain:
        return plain[c_name]
    if c_name in ("pSrc", "src"):
        return "x"
    return table.ARGUMENTS.get(c_name) or snake(c_name.removeprefix("p"))


def classify(export):
    """(Python name, form) of an export whose shape is known; ValueError with the reason for any other."""
    op, types, suffix = operation(export)
    parameters = export.parameters
    form = Form(export)
    constant = re.fullmatch(r"(\w*[a-z])C(Rev)?", op)
    number = table.NUMBERS.get(op) or (constant and next((p.name for p in parameters if p.name in ("val", "value")), None))
    name = python_name(export, constant[1] if constant else op)
    # In which order: arrays as C takes them, or the second one first; a number stands second, or first with Rev.
    reverse = op in table.REVERSED
    stepped = {p.name.removesuffix("Step") for p in parameters if p.name.endswith("Step") or p.name == "step"}
    sources = [p for p in parameters if p.stars == 1 and p.const]
    target = next((p for p in parameters if p.name in IN_PLACE), None)
    if any(p.stars > 1 or p.type.startswith("qvrs") for p in parameters):
        raise ValueError(f"{export.name} takes a state or rows, and no object or function written by hand has it")
    operands = ([target] if target else []) + (sources[::-1] if reverse and not target else sources)
    if number:
        operands.insert(0 if constant and constant[2] else len(operands), None)
    for place, p in enumerate(operands):
        form.inputs.append(p.type if p else None)
        form.input_names.append(None if p is None else input_name(p.name, reverse, len(operands)))
        if p:
            form.arguments[p.name] = ("output" if p is target else "input", place)
    if target:
        form.output, form.in_place = target.type, operands.index(target)
    if len(operands) > 1 and (target or number) and form.input_names[0] != "x_":
        letters = ["x", "y"] if op in table.NUMBERS else ["a", "b"]
        form.input_names = [n if n in ("mask", "table", "pattern") else letters[k] for k, n in enumerate(form.input_names)]
    elif target:
        form.input_names = ["x"]
    for p in operands:
        if p:
            form.renames[p.name] = form.input_names[operands.index(p)] if p is not target else "out"
    for p in parameters:
        if p.name in form.arguments:
            continue
        if p.name == number:
            form.number = ELEMENTS[p.type][2] if p.type in ELEMENTS else "i"
            form.arguments[p.name] = ("number", form.number)
            form.renames[p.name] = form.input_names[operands.index(None)]
        elif p.stars and p.name in OUTPUTS:
            form.output = p.type
            form.arguments[p.name] = ("output", None)
            form.renames[p.name] = "out"
        elif p.stars and p.name == "dstLen":
            form.arguments[p.name] = ("ignored", None)
        elif p.name in table.WRITTEN_BACK:
            extra = table.ARGUMENTS.get(p.name) or snake(p.name)
            form.extras[extra] = (ELEMENTS[p.type][2] if p.type in ELEMENTS else "i", p.name)
            form.arguments[p.name] = ("written", extra)
            form.renames[p.name] = extra
        elif p.stars:
            form.arguments[p.name] = ("result", len(form.results))
            form.results.append(p.type)
        elif p.name in LENGTHS:
            form.arguments[p.name] = ("length", p.name)
        elif p.name == "step" or p.name.endswith("Step"):
            array = p.name.removesuffix("Step") if p.name != "step" else None
            form.arguments[p.name] = ("step", array)
        elif p.type == "qvriSize":
            form.arguments[p.name] = ("size", None)
        elif p.type in ELEMENTS or p.type == "int":
            extra = "length" if p.name == "dstLen" else table.ARGUMENTS.get(p.name) or snake(p.name)
            form.extras[extra] = (ELEMENTS[p.type][2] if p.type in ELEMENTS else "i", p.name)
            form.arguments[p.name] = ("extra", extra)
            form.renames[p.name] = extra
        else:
            raise ValueError(f"{export.name}: no role for the argument {p.type} {p.name}")
    if tag := re.search(r"A(\d\d)", suffix):
        form.accuracy = int(tag[1])
    form.accuracy = form.accuracy or table.ACCURACY.get(export.name[4:], 0)
    return name, form


def functions(header):
    """Functions by name, and for each export the Python names that reach it."""
    found, reached, faults = {}, {}, []
    for export in header.exports.values():
        hand = [name for name, pattern in table.BY_HAND.items() if re.fullmatch(pattern, export.name)]
        if hand:
            reached[export.name] = hand[0]
            continue
        try:
            name, form = classify(export)
        except ValueError as error:
            faults.append(str(error))
            continue
        function = found.setdefault(name, Function(name, export.group, image=export.image))
        function.forms.append(form)
        reached[export.name] = name
    # Without a choice of accuracy the most accurate form comes first; with one, the least that is enough.
    for function in found.values():
        function.forms.sort(key=lambda form: -form.accuracy)
    return found, reached, faults
