#!/usr/bin/env python3
"""The overloads of the C++ header, from the prototypes of the C header: cpp_overloads.py HEADER FOLDER writes
FOLDER/checked.hpp and FOLDER/throwing.hpp; cpp_overloads.py check HEADER FOLDER compares with what is there.

A pointer to elements is a span, const or not; a pointer to one result (RESULTS) a reference; a pointer to a state the
class that owns it; an image's pointer with its step and size a qvr::Image. What a length is, and how long the other
spans have to be, follows from the names (`len` and its like: all spans alike) or stands in RULES.
"""
import re
import sys
from pathlib import Path

ELEMENTS = {"qvr8u", "qvr16u", "qvr16s", "qvr32u", "qvr32s", "qvr32f", "qvr64f", "qvr16sc", "qvr32fc", "qvr64fc"}
RESULTS = {"pResult", "pIndx", "pMean", "pMin", "pMax", "pStdDev", "pSum", "pLast", "dstLen", "phase", "sizeOut", "globalMin",
           "globalMax"}
# One length for all spans.
COMMON = {"len", "numIters", "tapsLen"}
TYPES = r"(?:(?:8u|16u|16s|32u|32s|32f|64f)c?)+"

# A word of the language, and the one name whose type no argument tells.
NAMES = {"qvrsOr_16u_I": "bitOr", "qvriResizeGetBufSize_64f": "resizeGetBufSize64f"}

# By a pattern of the C name: {length: the span it is taken from, or an expression}, and what has to hold besides.
RULES = {
    "SumWindow": ({"len": "pDst"}, ["holds(pSrc, length(pDst.size()) + maskSize - 1)", "same(pDst.size())"]),
    "CompensateOffset_32f$": ({"len": "pDst"}, ["holds(pSrc, length(pDst.size()) + 1)"]),
    "Find_": ({"len": "pSrc", "lenFind": "pFind"}, ["same(pSrc.size())", "same(pFind.size())"]),
    "CopyColumn_Indirect_16s_D2$": ({"dstCols": "pIndex"}, [
        "same(pIndex.size())", "holds(pSrc, (rows - int64_t{1}) * srcStride + srcCols)",
        "holds(pDst, (rows - int64_t{1}) * dstStride + length(pIndex.size()))"]),
    "CopyColumn_Indirect_16s_D2L": ({"dstCols": "pIndex", "rows": "ppSrc"}, ["same(pIndex.size())", "same(ppSrc.size(), ppDst.size())"]),
    "SplitScaled": ({"nChannels": "ppDst"}, ["same(ppDst.size())", "holds(pSrc, length(ppDst.size()) * chanLen)"]),
    "FFTFwd": ({}, ["holds(pSrc, pSpec.length())", "holds(pDst, pSpec.spectrum())", "{buffer}"]),
    "FFTInv": ({}, ["holds(pSrc, pSpec.spectrum())", "holds(pDst, pSpec.length())", "{buffer}"]),
    "Hilbert_": ({}, ["holds(pSrc, pState.length())", "holds(pDst, pState.length())"]),
    "AutoCorr": ({"srcLen": "pSrc", "dstLen": "pDst"}, ["same(pSrc.size())", "same(pDst.size())"]),
    "ConvBiased": ({"len1": "pSrc1", "len2": "pSrc2", "dstLen": "pDst"}, ["same(pSrc1.size())", "same(pSrc2.size())", "same(pDst.size())"]),
    "ConvCyclic8x8": ({}, []),
    "Conv_": ({"len1": "pSrc1", "len2": "pSrc2"}, [
        "same(pSrc1.size())", "same(pSrc2.size())", "holds(pDst, length(pSrc1.size()) + length(pSrc2.size()) - 1)"]),
    "CrossCorr": ({"len1": "pSrc1", "len2": "pSrc2", "dstLen": "pDst"}, ["same(pSrc1.size())", "same(pSrc2.size())", "same(pDst.size())"]),
    "WTFwd_": ({"dstLen": "pDstLow"}, ["same(pDstLow.size(), pDstHigh.size())", "holds(pSrc, 2 * length(pDstLow.size()))"]),
    "WTInv_": ({"srcLen": "pSrcLow"}, ["same(pSrcLow.size(), pSrcHigh.size())", "holds(pDst, 2 * length(pSrcLow.size()))"]),
    "WT(?:Fwd|Inv)[GS]etDlyLine": ({}, ["holds(pDlyLow, pState.delayLow())", "holds(pDlyHigh, pState.delayHigh())"]),
    "FIRGetTaps": ({}, ["holds(taps, length(state.taps()))"]),
    "FIRGetDlyLine": ({}, ["holds(dlyLine, length(state.taps()))"]),
    "FIRSetDlyLine": ({}, ["(dlyLine.empty() || holds(dlyLine, length(state.taps())))"]),
    "FIRMR.*_I$": ({"tapsLen": "taps"}, [
        "same(taps.size())", "holds(srcDst, int64_t{numIters} * downFactor)", "holds(srcDst, int64_t{numIters} * upFactor)",
        "holds(dlyLine, groups(length(taps.size()), upFactor))"]),
    "FIRMR": ({"tapsLen": "taps"}, [
        "same(taps.size())", "holds(src, int64_t{numIters} * downFactor)", "holds(dst, int64_t{numIters} * upFactor)",
        "holds(dlyLine, groups(length(taps.size()), upFactor))"]),
    "IIRGen": ({}, ["(order < 1 || order > 12 || holds(taps, 2 * (int64_t{order} + 1)))"]),
    "SampleUp": ({"srcLen": "src"}, ["same(src.size())", "holds(dst, length(src.size()) * factor)"]),
    "SampleDown": ({"srcLen": "src"}, ["same(src.size())", "holds(dst, groups(length(src.size()) - phase, factor))"]),
    "ResizeGetBufSize": ({}, []),
    "ResizeSqrPixel": ({}, [
        "writesWithin(dst.size(), dstRoi, srcRoi, xFactor, yFactor, xShift, yShift, interpolation)",
        "bufferServes(buffer, srcRoi, dstRoi, {channels}, interpolation, {query})"]),
    "Resize_": ({}, [
        "writesWithin(dst.size(), {srcRoi.x, srcRoi.y, dstRoiSize.width, dstRoiSize.height}, srcRoi, xFactor, yFactor, "
        "0, 0, interpolation)"]),
    "Copy_16u_C1MR": ({"roiSize": "src.size()"}, ["sameSize(src, dst)", "sameSize(src, mask)"]),
    "qvriConvert": ({"roiSize": "src.size()"}, ["sameSize(src, dst)"]),
    "LUTPalette": ({"roiSize": "src.size()"}, [
        "sameSize(src, dst)", "(nBitSize < 1 || nBitSize > 16 || holds(table, int64_t{1} << nBitSize))"]),
    "BlockMinMax": ({}, [
        "blocksFit(src, blockMin, blockSize)", "blocksFit(src, blockMax, blockSize)"]),
    "SplitRow": ({"len": "detail::half(src)"}, ["same(src.size())"]),
    "JoinRow": ({"len": "detail::half(dst)"}, ["same(dst.size())"]),
}


def prototypes(header):
    """[(result type, C name, [(type, name)])] in the header's order."""
    text = re.sub(r"/\*.*?\*/|//[^\n]*", " ", Path(header).read_text(), flags=re.S)
    found = []
    for result, name, arguments in re.findall(r"(\w[\w ]*\**)\s*\bMorven_(\w+)\s*\(([^()]*)\)\s*;", text):
        rows = [re.fullmatch(r"(.*?)(\w+)", " ".join(a.split())).groups() for a in arguments.split(",")]
        found.append((result.strip(), name, [(re.sub(r"\s*(\*+)\s*", r"\1", t).strip(), n) for t, n in rows]))
    return found


def cpp_name(name):
    """qvrsFFTFwd_RToCCS_32f -> fftFwd, qvrsSin_32f_A11 -> sinA11."""
    if name in NAMES:
        return NAMES[name]
    name = re.sub(r"^qvr[si]", "", name)
    name = re.sub(rf"_?{TYPES}(?=_|$)", "", name)
    name = re.sub(r"_(?:I|I?Sfs|C[134](?:M?I?R(?:Sfs)?)?|D2L?|RToCCS|CCSToR)(?=_|$)", "", name)
    head, *rest = [part for part in name.split("_") if part]
    capitals = re.match(r"[A-Z]+", head).group()
    lowered = len(capitals) - 1 if len(capitals) > 1 and len(head) > len(capitals) and head[len(capitals)].islower() else len(capitals)
    return head[:lowered].lower() + head[lowered:] + "".join(part[0].upper() + part[1:] for part in rest)


def rule(name):
    return next((found for pattern, found in RULES.items() if re.search(pattern, name)), None)


def image_of(name, parameters):
    """{pointer: step} of the images among the parameters."""
    names = [n for _, n in parameters]
    steps = {}
    for type_, n in parameters:
        if type_.count("*") == 1 and type_.removeprefix("const ").rstrip("*") in ELEMENTS:
            if n + "Step" in names:
                steps[n] = n + "Step"
            elif "step" in names and n in ("dst", "srcDst"):
                steps[n] = "step"
    return steps


class Overload:
    """One function of the C++ header."""

    def __init__(self, result, name, parameters):
        self.c, self.cpp, self.parameters = name, cpp_name(name), parameters
        lengths, needs = rule(name) or ({}, None)
        images = image_of(name, parameters)
        channels = re.search(r"_C(\d)", name)
        channels = int(channels.group(1)) if channels else 1
        signature, call, spans, self.results = [], [], [], []
        sizes = {"srcSize": "src.size()", "roiSize": f"{next(iter(images), 'src')}.size()"}
        for type_, n in parameters:
            base = type_.removeprefix("const ").rstrip("*")
            constant = type_.startswith("const ")
            if n in images.values():
                pointer = next(p for p, s in images.items() if s == n)
                call.append(f"{pointer}.step()")
            elif n in images:
                width = f", {channels}" if channels != 1 else ""
                signature.append(f"Image<{'const ' if constant else ''}{base}{width}> {n}")
                call.append(f"{n}.data()")
            elif type_.endswith("**"):
                rows = f"{'const ' if constant else ''}{base}*"
                signature.append(f"std::span<{rows}{', 2' if 'Planes' in n else ''}> {n}")
                call.append(f"{n}.data()")
            elif type_.endswith("*") and (n in RESULTS or (n == "pIndex" and not constant)):
                signature.append(f"{base}& {n}")
                call.append(f"&{n}")
                self.results.append((base, n))
            elif type_.endswith("*") and base in ELEMENTS:
                fixed = ", 8" if name.startswith("qvrsConvCyclic8x8") else ""
                buffer = n == "pBuffer"
                kind = f"std::span<{'const ' if constant else ''}{base}, 8>" if fixed else f"{'In' if constant else 'Out'}<{base}>"
                signature.append(f"{kind} {n}" + (" = {}" if buffer else ""))
                spans.append(n)
                if name.startswith("qvrsConvBiased") and n == "pSrc2":
                    call.append("pSrc2.data() + bias")
                elif re.search("WT.*DlyLine", name):
                    call.append(f"detail::place({n})")
                else:
                    call.append(f"{n}.data()")
            elif type_.endswith("*"):
                signature.append(f"{'const ' if constant else ''}{base.removeprefix('qvrs')}& {n}")
                call.append(f"{n}.get()")
            elif n in lengths:
                source = lengths[n]
                call.append(source if "(" in source else f"static_cast<int>({source}.size())")
            elif n in COMMON and needs is None:
                call.append(None)
            elif type_ == "qvriSize" and n in sizes and images:
                call.append(sizes[n])
            else:
                signature.append(f"{type_} {n}")
                call.append(n)
        if None in call:
            written = next((s for s in spans if re.search("[dD]st", s)), spans[0])
            call[call.index(None)] = f"static_cast<int>({written}.size())"
            needs = ["same(" + ", ".join([f"{written}.size()"] + [f"{s}.size()" for s in spans if s != written]) + ")"]
        element = re.search(r"(16s|32f|64f)", name)
        query = "Morven_qvriResizeGetBufSize" + ("_64f" if "_64f" in name else "")
        sample = element and {"16s": 2, "32f": 4, "64f": 8}[element.group(1)]
        self.needs = [f"{n}.complete()" for n in images]
        for need in needs or []:
            if need == "{buffer}":
                need = f"(pBuffer.empty() || holds(pBuffer, pSpec.buffer({sample})))"
            need = need.replace("{channels}", str(channels)).replace("{query}", query)
            self.needs.append(re.sub(r"(?<![.\w])(same|holds|length|sameSize|groups|writesWithin|bufferServes|blocksFit)\(", r"detail::\1(", need))
        self.signature, self.call = signature, call

    def checked(self):
        call = f"Morven_{self.c}({', '.join(self.call)})"
        lines = [f"/** Morven_{self.c} */", *wrapped(f"[[nodiscard]] inline qvrStatus {self.cpp}(", self.signature, ")"), "{"]
        if self.needs:
            single = len(self.needs) == 1 and not self.needs[0].startswith("(")
            lines += wrapped("    if (!" if single else "    if (!(", self.needs, ")" if single else "))", " &&")
            lines.append("        return qvrErrBadSize;")
        lines += wrapped(f"    return Morven_{self.c}(", self.call, ");")
        return lines + ["}"]

    def valued(self):
        """Whether everything it gives is single values."""
        return self.results and not any(s.startswith(("Out<", "Image<qvr", "std::span<qvr")) or s.startswith("int& phase") for s in self.signature)

    def throwing(self):
        lines = [f"/** Morven_{self.c} */"]
        names = [re.sub(r" = \{\}$", "", s).split()[-1] for s in self.signature]
        if not self.valued():
            lines += wrapped(f"inline qvrStatus {self.cpp}(", self.signature, ")")
            return lines + ["{", *wrapped(f"    return detail::raise(checked::{self.cpp}(", names, f'), "{self.cpp}");'), "}"]
        types = [t for t, _ in self.results]
        result = types[0] if len(types) == 1 else f"{'Extreme' if 'Indx' in self.c else 'Extremes'}<{types[0]}>"
        fields = ["value"] if len(types) == 1 else ["value", "index"] if "Indx" in self.c else ["min", "max"]
        inputs = [s for s, n in zip(self.signature, names) if n not in dict((b, a) for a, b in self.results)]
        place = {n: "result" if len(types) == 1 else f"result.{f}" for (_, n), f in zip(self.results, fields)}
        arguments = [place.get(n, n) for n in names]
        lines += wrapped(f"[[nodiscard]] inline {result} {self.cpp}(", inputs, ")")
        return lines + ["{", f"    {result} result{{}};", *wrapped(f"    detail::raise(checked::{self.cpp}(", arguments, f'), "{self.cpp}");'),
                        "    return result;", "}"]


def wrapped(head, parts, tail, joint=","):
    """head + parts + tail in lines of at most 120 columns."""
    lines, line = [], head
    for index, part in enumerate(parts):
        text = part + (tail if index == len(parts) - 1 else joint)
        if line != head and len(line) + 1 + len(text) > 120:
            lines.append(line)
            line = " " * len(head) + text
        else:
            line += text if line == head else " " + text
    return lines + [line if parts else head + tail]


OWNED = re.compile(r"InitAlloc|Free")


def overloads(header):
    found = [Overload(*row) for row in prototypes(header) if not OWNED.search(row[1]) and row[1] != "qvrsMalloc_8u"]
    seen = {}
    for f in found:
        key = (f.cpp, tuple(re.sub(r" \w+( = \{\})?$", "", s) for s in f.signature))
        if key in seen:
            sys.exit(f"{f.c} and {seen[key]} have one signature: {key}")
        seen[key] = f.c
    return found


def text(header, form):
    about = {"checked": "statuses that must be looked at", "throwing": "errors as exceptions"}[form]
    space = "qvr::checked" if form == "checked" else "qvr"
    lines = [f"// The overloads of morvenqvr.hpp with {about}: made by scripts/cpp_overloads.py, not by hand.",
             f"#ifndef MORVENQVR_{form.upper()}_HPP", f"#define MORVENQVR_{form.upper()}_HPP", "", '#include "morvenqvr.hpp"', "",
             f"namespace {space} {{", ""]
    for f in overloads(header):
        lines += getattr(f, form)() + [""]
    return "\n".join(lines + [f"}} // namespace {space}", "", "#endif", ""])


def main():
    check = sys.argv[1] == "check"
    header, folder = sys.argv[-2], Path(sys.argv[-1])
    for form in ("checked", "throwing"):
        path, made = folder / f"{form}.hpp", text(header, form)
        if not check:
            path.write_text(made)
        elif path.read_text() != made:
            sys.exit(f"{path} is not what scripts/cpp_overloads.py makes of {header}: run scripts/cpp_overloads.py {header} {folder}")


if __name__ == "__main__":
    main()
