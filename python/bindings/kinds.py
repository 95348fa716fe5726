"""Kinds of the objects by element type: which exports create, run and release them. A new element type of a known object
appears as a further kind."""
import re

from .header import ELEMENTS

# Object -> pattern of the export that creates it, record's fields with the names of the others. In the patterns {p} is what
# stands before the types (64f for taps of their own type), {t} the types.
OBJECTS = {
    "FIR": (r"qvrsFIRInitAlloc(?P<p>64f)?_(?P<t>\w+)",
            {"release": ["qvrsFIRFree{p}_{t}"], "run": ["qvrsFIR{p}_{t}", "qvrsFIR{p}_{t}_Sfs"],
             "getDelay": ["qvrsFIRGetDlyLine{p}_{t}"], "setDelay": ["qvrsFIRSetDlyLine{p}_{t}"],
             "getTaps": ["qvrsFIRGetTaps{p}_{t}"]}),
    "FFT": (r"qvrsFFTInitAlloc_R(?P<p>)_(?P<t>\w+)",
            {"release": ["qvrsFFTFree_R_{t}"], "run": ["qvrsFFTFwd_RToCCS_{t}", "qvrsFFTFwd_RToCCS_{t}_Sfs"],
             "inverse": ["qvrsFFTInv_CCSToR_{t}"]}),
    "FIRMR": (r"qvrsFIRMR(?P<p>\w+?)_Direct_(?P<t>\w+?)(_Sfs)?",
              {"inPlace": ["qvrsFIRMR{p}_Direct_{t}_I"]}),
    "RESIZE": (r"qvriResizeSqrPixel_(?P<t>\w+?)_(?P<p>C\dR)",
               {"bufferSize": ["qvriResizeGetBufSize_{t}", "qvriResizeGetBufSize"], "region": ["qvriResize_{t}_{p}"]}),
}
FIELDS = {"FIR": ["release", "run", "getDelay", "setDelay", "getTaps"], "FFT": ["release", "run", "inverse"],
          "FIRMR": ["inPlace"], "RESIZE": ["bufferSize", "region"]}


def rows(header, kind):
    pattern, others = OBJECTS[kind]
    for name in header.exports:
        match = re.fullmatch(pattern, name)
        if not match or name.endswith("_I"):
            continue
        prefix, types = match["p"] or "", match["t"]
        found = {field: next((n for n in (m.format(p=prefix, t=types) for m in names) if n in header.exports), None)
                 for field, names in others.items()}
        yield name, prefix, types, found


def kinds(header):
    out = ["""typedef struct {
    const char* name;
    int samples, taps;      // numpy type numbers; for images the channels stand in taps
    int scaled;             // runs with a scale factor
    int create, release, run, getDelay, setDelay, getTaps, inverse, inPlace, bufferSize, region; // entries, -1 if there is none
} QvrKind;
"""]
    for kind in OBJECTS:
        out.append(f"static const QvrKind kinds{kind}[] = {{")
        count = 0
        for name, prefix, types, found in rows(header, kind):
            samples = types
            if kind == "RESIZE":
                taps = prefix[1]
            else:
                taps = ELEMENTS[prefix if prefix in ELEMENTS else samples][0]
            scaled = any(n and n.endswith("_Sfs") for n in (name, found.get("run")))
            fields = ", ".join(f".{field} = " + (f"E_{found[field]}" if found.get(field) else "-1")
                               for field in ("release", "run", "getDelay", "setDelay", "getTaps", "inverse", "inPlace",
                                             "bufferSize", "region"))
            out.append(f"    {{\"{name}\", {ELEMENTS[samples][0]}, {taps}, {int(scaled)}, .create = E_{name}, {fields}}},")
            count += 1
        out.append(f"}};\nenum {{ kKinds{kind} = {count} }};\n")
    return "\n".join(out)
