"""Reads the public header: exports with their parameters and reference text, groups, enumerations, statuses."""
import re
from dataclasses import dataclass, field

# Element type of the header -> numpy type number, name of its dtype, letter of a scalar argument.
ELEMENTS = {
    "8u": ("NPY_UBYTE", "uint8", "B"),
    "16u": ("NPY_USHORT", "uint16", "H"),
    "16s": ("NPY_SHORT", "int16", "h"),
    "32u": ("NPY_UINT", "uint32", "I"),
    "32s": ("NPY_INT", "int32", "i"),
    "32f": ("NPY_FLOAT", "float32", "f"),
    "64f": ("NPY_DOUBLE", "float64", "d"),
    "16sc": ("NPY_VOID", "int16c", ""),
    "32fc": ("NPY_CFLOAT", "complex64", ""),
    "64fc": ("NPY_CDOUBLE", "complex128", ""),
}


@dataclass
class Parameter:
    type: str  # element type as in ELEMENTS, or the C type
    const: bool
    stars: int
    name: str


@dataclass
class Export:
    name: str  # without the prefix of its symbol
    returns: str
    parameters: list
    text: str  # reference text, plain
    group: str

    @property
    def image(self):
        return self.name.startswith("qvri")

    @property
    def parts(self):
        return self.name[4:].split("_")


@dataclass
class Header:
    exports: dict = field(default_factory=dict)
    groups: dict = field(default_factory=dict)  # name -> (title, text)
    constants: dict = field(default_factory=dict)  # enumerator -> value
    version: str = ""
    statuses: dict = field(default_factory=dict)  # value -> (name, meaning)


def plain(comment):
    """Text of a comment without its stars."""
    lines = [re.sub(r"^\s*\*? ?", "", line) for line in comment.strip().split("\n")]
    return "\n".join(line.rstrip() for line in lines).strip()


def parameter(text):
    match = re.fullmatch(r"(const )?(\w+)\s*(\**)\s*(\w+)", text.strip())
    if not match:
        raise SystemExit(f"bindings: cannot read the parameter '{text}'")
    const, kind, stars, name = match.groups()
    element = kind[3:] if kind.startswith("qvr") and kind[3:] in ELEMENTS else {"double": "64f"}.get(kind, kind)
    return Parameter(element, bool(const), len(stars), name)


def read(path):
    header = Header()
    source = open(path, encoding="utf-8").read()
    header.version = ".".join(re.findall(r"#define MORVENQVR_VERSION_(?:MAJOR|MINOR|PATCH) (\d+)", source))
    group = ""
    token = re.compile(r"/\*\*(?P<comment>.*?)\*/|enum \{(?P<enum>.*?)\};|"
                       r"^(?P<returns>[\w ]+?[\w*]) ?(?P<star>\*?)Morven_(?P<name>\w+)\((?P<parameters>[^)]*)\);", re.S | re.M)
    text = ""
    position = 0
    while match := token.search(source, position):
        position = match.end()
        if match["comment"] is not None:
            text = plain(match["comment"])
            if define := re.search(r"@defgroup (\w+) (.*)", text):
                group = define[1]
                body = text[define.end():].replace("@{", "").strip()
                header.groups[group] = (define[2].strip(), body)
                text = ""
            elif text.startswith("<"):
                text = ""
        elif match["enum"] is not None:
            for name, value, meaning in re.findall(r"(qvr\w+) = ([^,/]+?),?\s*(?:/\*\*< (.*?) \*/|(?=\n))", match["enum"], re.S):
                header.constants[name] = eval(value, {"__builtins__": {}})  # numbers and a difference of two
                if re.match(r"qvr(Err|Warn|Ok)", name):
                    header.statuses[header.constants[name]] = (name, " ".join(re.sub(r"\n\s*\*", " ", meaning).split()))
            text = ""
        else:
            parameters = [] if match["parameters"].strip() in ("", "void") else [
                parameter(" ".join(p.split())) for p in match["parameters"].split(",")]
            header.exports[match["name"]] = Export(match["name"], match["returns"].strip() + match["star"], parameters, text, group)
            text = ""
    return header
