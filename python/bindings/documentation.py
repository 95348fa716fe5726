"""Docstrings and signatures from the header's reference text, with its arguments under their Python names."""
import re
import textwrap

from . import table
from .header import ELEMENTS
from .shapes import operation, snake


def selectors(header, c_name):
    """Choices of an argument that selects, by name."""
    prefix = table.SELECTORS[c_name]
    return {snake(name.removeprefix(prefix)): value for name, value in header.constants.items()
            if re.fullmatch(prefix + "[A-Z][a-z]\\w*", name)}


def signature(function):
    """Python signature as text, and names of the arguments in order."""
    required = [name for name in function.extras if function.default(name) is None]
    optional = [name for name in function.extras
                if function.default(name) is not None and (function.name, name) not in table.HIDDEN]
    parts = list(function.input_names)
    if function.needs_output:
        parts = [*parts, "out"]
    parts += required
    if function.has_output and not function.needs_output:
        parts.append("out=None")
    keywords = [f"{name}={function.default(name)}" for name in optional]
    if function.chooses_output:
        keywords.append("dtype=None")
    if function.chooses_accuracy:
        keywords.append("accuracy=None")
    if function.inputs:
        keywords.append("copy=False")
    return ", ".join(parts + (["*"] + keywords if keywords else []))


def renamed(text, form):
    """Text of a form with Python's names."""
    for c_name, name in form.renames.items():
        text = re.sub(rf"\*?(?<!\w){c_name}(?!\w)", name, text)
    return re.sub(r"(?<!\w)p(?:Dst|SrcDst)(?!\w)", "out", text)


def prose(text, form):
    text = re.split(r"\n@param", text)[0] if "@return" not in text else re.sub(r"\n@param.*?(?=\n@return)", "", text, flags=re.S)
    text, _, statuses = text.partition("@return")
    # Python's arrays are there and have elements.
    kept = [part for part in re.split(r";\s*", " ".join(statuses.split())) if part and not re.match(
        r"(?:in (?:this )?order: )?qvrErrNullPointer|qvrErrBadSize(?: for (?:`?len\w*`?(?: below 1)?|srcLen))?$|qvrOk$", part)]
    text = text.strip() + ("\nStatuses: " + "; ".join(kept) if kept else "")
    if operation(form.export)[0] in table.REVERSED:
        text = re.sub(r": the first array[^.]*", "", text)  # of C's arguments, not of Python's
    return renamed(text, form).strip()


def parameter_text(function, name):
    """What the header says about an argument, from the first form that says it."""
    for form in function.forms:
        c_name = form.extras.get(name, (None, None))[1]
        if not c_name:
            continue
        for names, text in re.findall(r"@param ([\w, ]*?\w) +([^@]*)", form.export.text):
            if c_name in [n.strip() for n in names.split(",")]:
                return " ".join(renamed(text, form).split())
    return ""


def types(function, place):
    """Element types of an input over all forms, as text; whether it may be a number."""
    names = dict.fromkeys(ELEMENTS[form.inputs[place]][1] for form in function.forms
                          if len(form.inputs) > place and form.inputs[place])
    return list(names), any(len(form.inputs) > place and form.inputs[place] is None for form in function.forms)


def returned(function):
    """What comes back, where it is not out alone."""
    parts = ["out"] if function.has_output else []
    for kinds in zip(*[form.results for form in function.forms]):
        parts.append("a number")
    if function.written >= 0:
        parts.append(list(function.extras)[function.written])
    if parts == ["out"]:
        return "out"
    text = f"({', '.join(parts)})" if len(parts) > 1 else parts[0]
    if any(form.results for form in function.forms):
        text += "; of more axes arrays of them, one for each row"
    if function.written >= 0:
        text += ", which the next call takes"
    return text


def one_of(words):
    return words[0] if len(words) == 1 else ", ".join(words[:-1]) + " or " + words[-1]


def docstring(function, header):
    first = function.forms[0]
    summary = table.SUMMARIES.get(function.name)
    if not summary:
        text = prose(first.export.text, first)
        summary = re.split(r"(?<=[.:])\s", text.replace("\n", " "), maxsplit=1)[0].rstrip(":")
        summary = re.sub(r"^out\[i\] = ", "", summary)
        summary = summary if summary.endswith(".") else summary + "."
    lines = [f"{function.name}({signature(function)})", "", summary, ""]
    for place, name in enumerate(function.input_names):
        names, number = types(function, place)
        what = ("an array of " + one_of(names) if names else "") + (" or " if names and number else "") + ("a number" if number else "")
        lines.append(f"    {name}: {what}")
    if function.has_output:
        outputs = list(dict.fromkeys(ELEMENTS[form.output][1] for form in function.forms if form.output))
        lines.append(f"    out: receives the result, {one_of(outputs)}" + ("" if function.needs_output else "; made if None"))
    in_order = sorted(function.extras.items(), key=lambda item: function.default(item[0]) is not None)
    for name, c_name in in_order:
        if (function.name, name) in table.HIDDEN:
            continue
        text = parameter_text(function, name)
        if c_name in table.SELECTORS:
            text = "one of " + ", ".join(repr(choice) for choice in selectors(header, c_name))
            text += f"; None is {snake(table.SELECTED[name].removeprefix(table.SELECTORS[c_name]))!r}" if name in table.SELECTED else ""
        if name == "scale" and not text:
            text = "the result is divided by 2 to the power of it; 0 in forms without it"
        lines.append(f"    {name}: {text}".rstrip(": "))
    if function.chooses_output:
        lines.append("    dtype: element type of the result, where out does not tell it")
    if function.chooses_accuracy:
        classes = sorted({form.accuracy for form in function.forms})
        lines.append(f"    accuracy: correct bits wanted, at most {classes[-1]}; None for the most, classes "
                     + ", ".join(map(str, classes)))
    if function.inputs:
        lines.append("    copy: True converts and copies arrays that do not fit as they are")
    lines.append(f"    returns {returned(function)}")
    lines = [part for line in lines for part in (textwrap.wrap(line, 116, subsequent_indent="        ", break_on_hyphens=False) or [""])]
    lines += ["", "By element type:"]
    for form in function.forms:
        kinds = ", ".join(ELEMENTS[kind][1] if kind else "number" for kind in form.inputs)
        kinds += (" -> " if kinds else "") + (ELEMENTS[form.output][1] if form.output else
                                             ", ".join(ELEMENTS[kind][1] for kind in form.results))
        place = " in place" if form.in_place is not None else ""
        lines.append(f"    {kinds}{place} (Morven_{form.export.name})")
        text = prose(form.export.text, form)
        lines += textwrap.indent(text, "        ").split("\n")
    title, text = header.groups[function.group]
    for c_name, name in first.renames.items():
        if c_name != c_name.lower():  # others are words of their own, as taps
            text = re.sub(rf"(?<!\w){c_name}(?!\w)", name, text)
    lines += ["", f"{title}: what the C reference says of all of them:", *textwrap.indent(text, "    ").split("\n")]
    return "\n".join(line.rstrip() for line in lines).replace("\\", "\\\\").replace('"""', "'''")
