#!/usr/bin/env python3
"""Every overload of the C++ header, called: overloads.py HEADERS WORK COMPILER [FLAGS]

A stand-in for the library, made from the prototypes of the C header, writes down what reaches it. Each overload is called
with arrays named after its parameters, and has to hand each of them to the parameter of that name of its C function, the
lengths of the arrays to the lengths, and everything else unchanged; then each array in turn is one element shorter, and
the call has to be refused or the lengths handed on must change. Errors have to be thrown, warnings returned. At the end
every function of the C header must have been reached.
"""
import re
import subprocess
import sys
from pathlib import Path

N = 64  # elements of an array, if nothing else is told
# Elements of arrays, by a pattern of the C name, where lengths differ or follow from other arguments.
SIZES = {
    "SumWindow": {"pSrc": N + 3}, "CompensateOffset_32f$": {"pSrc": N + 1}, "Find_": {"pFind": 9},
    "Indirect_16s_D2$": {"pSrc": 19, "pDst": 204}, "Indirect_16s_D2L": {"ppSrc": 3, "ppDst": 3},
    "SplitScaled": {"ppDst": 4, "pSrc": 20}, "FFTFwd": {"pSrc": 32, "pDst": 34, "pBuffer": 131136},
    "FFTInv": {"pSrc": 34, "pDst": 32, "pBuffer": 131136}, "FFTFwd.*16s": {"pBuffer": 4 * 32 + 131328},
    "Hilbert_": {"pSrc": 50, "pDst": 50}, "AutoCorr": {"pDst": 9}, "ConvBiased": {"pSrc2": 40, "pDst": 9},
    "Conv_": {"pSrc2": 40, "pDst": N + 39}, "CrossCorr": {"pSrc2": 40, "pDst": 9}, "Cyclic": {"pX": 8, "pH": 8, "pY": 8},
    "WTFwd_": {"pSrc": 2 * N}, "WTInv_": {"pDst": 2 * N},
    "WTFwd[GS]et": {"pDlyLow": 7, "pDlyHigh": 4}, "WTInv[GS]et": {"pDlyLow": 3, "pDlyHigh": 1},
    "FIR[GS]et": {"taps": 6, "dlyLine": 6}, "FIRMR": {"src": 30, "dst": 20, "srcDst": 30, "dlyLine": 32},
    "IIRGen": {"taps": 8}, "SampleUp": {"dst": 2 * N}, "SampleDown": {"dst": 32}, "LUT": {"table": 32},
    "ResizeSqr": {"buffer": 100}, "TIFF": {"srcPlanes": 2, "dstPlanes": 2},
}
# What a length of the C function has to be where it is not N, a step of the images or a number below.
LENGTHS = {
    "Find_": {"lenFind": 9}, "Indirect_16s_D2L": {"rows": 3}, "SplitScaled": {"nChannels": 4}, "AutoCorr": {"dstLen": 9},
    "ConvBiased": {"len2": 40, "dstLen": 9}, "Conv_": {"len2": 40}, "CrossCorr": {"len2": 40, "dstLen": 9}, "TIFF": {"len": 32},
}
NUMBERS = {
    "maskSize": 4, "srcCols": 5, "srcStride": 7, "dstStride": 70, "rows": 3, "chanLen": 5, "numIters": 10, "upFactor": 2, "upPhase": 1,
    "downFactor": 3, "downPhase": 2, "order": 3, "factor": 2, "nBitSize": 5, "bias": 6, "xFactor": 0.5, "yFactor": 0.25,
    "xShift": 1.5, "yShift": 2.5, "interpolation": "qvriInterLinear", "srcRoi": "{0, 0, 9, 4}", "dstRoi": "{1, 1, 5, 4}",
    "dstRoiSize": "{6, 5}", "blockSize": "{4, 3}",
}
IMAGES = {"blockMin": (3, 2), "blockMax": (3, 2)}  # width and height where they are not 9 and 4
OBJECTS = {
    "FFTSpec": "init(5)", "Hilbert": "init(50)", "FIRState64f_16s": "init(taps64, line16)", "FIRState64f_32f": "init(taps64, line32)",
    "FIRState_64f": "init(taps64, taps64)", "FIRState_32f": "init(line32, line32)",
    "IIRState": "init(taps64, std::span<const double>(taps64).first(2))", "WT": "init(line32, 2, std::span<const float>(line32).first(5), -1)",
}

RECORDER = """
#include <cstdio>
#include <cstring>
#include <map>
#include <set>
#include <string>
#include <vector>
#include <morvenqvr.hpp>

namespace fake {
std::string name;
std::map<std::string, const void*> pointers;
std::map<std::string, double> numbers;
std::set<std::string> reached;
qvrStatus answer = 0;
int failures = 0;
double object[8];
template<class T> void take(const char* n, T* p) { pointers[n] = static_cast<const void*>(p); }
template<class T> void take(const char* n, T v) { numbers[n] = static_cast<double>(v); }
void take(const char* n, qvriSize s) { numbers[std::string(n) + ".w"] = s.width; numbers[std::string(n) + ".h"] = s.height; }
void take(const char* n, qvriRect r) { take(n, qvriSize{r.width, r.height}); numbers[std::string(n) + ".x"] = r.x; numbers[std::string(n) + ".y"] = r.y; }
void begin(const char* n) { name = n; reached.insert(n); pointers.clear(); numbers.clear(); }
void fail(const char* what, const char* n) { std::printf("%s: %s %s\\n", name.c_str(), what, n); failures++; }
void expectPointer(const char* n, const void* p) { if (pointers[n] != p) fail("got another array for", n); pointers.erase(n); }
template<class T> void expectNumber(const char* n, T v)
{
    auto got = std::exchange(numbers, {});
    take(n, v);
    for (const auto& [key, value] : numbers) {
        if (!got.count(key) || got[key] != value) fail("got another value for", key.c_str());
        got.erase(key);
    }
    numbers = got;
}
void expectCall(const char* n) { if (name != n) { std::printf("%s was called in the place of %s\\n", name.c_str(), n); failures++; } }
void expectNothingElse() { if (!pointers.empty() || !numbers.empty()) fail("got more than is known", ""); }
// A call with one array too short: refused, or with other lengths.
void expectShorter(qvrStatus status, const std::map<std::string, double>& full, const char* n)
{
    if (name.empty() ? status != qvrErrBadSize : numbers == full) { std::printf("%s: a short array passes: ", name.c_str()); fail("a short", n); }
}
} // namespace fake
using fake::take;
"""


def read(folder):
    header = re.sub(r"/\*.*?\*/|//[^\n]*", " ", (folder / "morvenqvr.h").read_text(), flags=re.S)
    c = {}
    for result, name, arguments in re.findall(r"(\w[\w ]*\**)\s*\bMorven_(\w+)\s*\(([^()]*)\)\s*;", header):
        c[name] = (result.strip(), [re.fullmatch(r"\s*(.*?)\s*(\w+)\s*", a, re.S).groups() for a in arguments.split(",")])
    text = (folder / "morvenqvr/checked.hpp").read_text()
    cpp = re.findall(r"/\*\* Morven_(\w+) \*/\n\[\[nodiscard\]\] inline qvrStatus (\w+)\((.*?)\)\n{", text, re.S)
    names = re.findall(r"\b(qvr(?:Ok|Err\w+|Warn\w+)) =", header)
    return c, cpp, names


def stand_in(c):
    lines = ['extern "C" {']
    for name, (result, arguments) in c.items():
        lines.append(f"{result} Morven_{name}({', '.join(f'{t} {n}' for t, n in arguments)})")
        body = f'fake::begin("{name}"); ' + " ".join(f'take("{n}", {n});' for _, n in arguments)
        if "InitAlloc" in name:
            body += f" if (fake::answer >= 0) *{arguments[0][1]} = reinterpret_cast<{arguments[0][0].strip()[:-1]}>(fake::object);"
        if "GetBufSize" in name:
            body += " *sizeOut = 100;"
        body += {"void": "", "qvr8u*": " static double block[512]; return reinterpret_cast<qvr8u*>(block);"}.get(result, " return fake::answer;")
        lines.append("{ " + body + " }")
    return lines + ["}"]


def looked_up(table, name):
    return {k: v for pattern, row in table.items() if re.search(pattern, name) for k, v in row.items()}


class Call:
    def __init__(self, name, cpp, signature, c):
        self.name, self.cpp, self.lines = name, cpp, []
        sizes, lengths = looked_up(SIZES, name), looked_up(LENGTHS, name)
        arguments, self.shorter, expected, images = [], [], {}, {}
        parts = re.findall(r"((?:[^,<]|<[^>]*>)+)(?:,|$)", " ".join(signature.split()))
        self.results = []
        for part in (re.sub(r" = \{\}", "", p).strip() for p in parts):
            type_, n = part.rsplit(" ", 1)
            inner = re.search(r"<(?:const )?([\w]+\*?)", type_)
            if type_.startswith("Image"):
                width, height = (6, 5) if n == "dst" and "Resize" in name else IMAGES.get(n, (9, 4))
                channels = int((re.search(r", (\d)>", type_) or [0, 1])[1])
                step = width * channels + 3
                total = step * (height - 1) + width * channels
                self.lines.append(f"static {inner[1]} {n}Pixels[{total}];")
                view = [f"qvr::Image<{inner[1]}, {channels}>(std::span({n}Pixels, {count}), {{{width}, {height}}}, {step} * int(sizeof({inner[1]})))"
                        for count in (total, total - 1)]
                arguments.append((n, view[0]))
                self.shorter.append((n, view[1]))
                expected[n], images[n] = f"{n}Pixels", (width, height, f"{step} * int(sizeof({inner[1]}))")
            elif type_.startswith(("In<", "Out<", "std::span<")):
                count = sizes.get(n, N)
                element = re.search(r"<(.*?)(?:, \d)?>", type_)[1]
                self.lines.append(f"static {element.removeprefix('const ') if not element.endswith('*') else element} {n}[{count}];")
                fixed = ", 8>" in type_ or ", 2>" in type_
                arguments.append((n, f"{n}" if fixed else f"std::span({n}, {count})"))
                if not fixed and count > 1 or "Dly" in n:
                    self.shorter.append((n, f"std::span({n}, {count - 1})"))
                expected[n] = f"{n} + bias" if name.startswith("qvrsConvBiased") and n == "pSrc2" else n
            elif type_.endswith("&") and "qvr" in type_ or type_ == "int&":
                value = " = 1" if n == "phase" else ""
                self.lines.append(f"{type_[:-1]} {n}{value if value else '{}'};")
                arguments.append((n, n))
                expected[n] = f"&{n}"
                self.results.append(n)
            elif type_.endswith("&"):
                bare = type_.removeprefix("const ")[:-1]
                how = next(v for k, v in OBJECTS.items() if k in bare)
                self.lines.append(f"qvr::{bare} {n};\n    if ({n}.{how} != qvrOk) fake::fail(\"no object for\", \"{n}\");")
                arguments.append((n, n))
                expected[n] = "fake::object"
            else:
                value = NUMBERS.get(n, 3 + 2 * len(arguments))
                self.lines.append(f"const {type_} {n}{value if str(value).startswith('{') else '{' + type_ + '(' + str(value) + ')}'};")
                arguments.append((n, n))
        self.arguments = arguments
        self.direct, self.expectations = [], []  # the arguments of the C function, and what checks them
        for type_, n in c[1]:
            if n in expected:
                value = expected[n]
            elif n in (a for a, _ in arguments):
                value = n
            elif n.endswith("Step") or n == "step":
                value = (images[n.removesuffix("Step")] if n != "step" else next(iter(images.values())))[2]
            elif "qvriSize" in type_:
                image = images.get(n.removesuffix("Size")) or next(iter(images.values()))
                value = f"qvriSize{{{image[0]}, {image[1]}}}"
            else:
                value = str(lengths.get(n, N))
            self.direct.append(value)
            self.expectations.append(f'fake::expect{"Pointer" if n in expected else "Number"}("{n}", {value});')

    def code(self):
        given = ", ".join(v for _, v in self.arguments)
        expect = f'fake::expectCall("{self.name}"); ' + " ".join(self.expectations) + " fake::expectNothingElse();"
        out = [f"static void test_{self.name}()", "{", *("    " + line for line in self.lines), "    fake::name.clear(), fake::answer = qvrWarnEvenMask;",
               f"    qvrStatus status = qvr::checked::{self.cpp}({given});",
               '    if (status != fake::answer) fake::fail("returned another status", "");', "    const auto full = fake::numbers;", "    " + expect]
        for n, short in self.shorter:
            parts = ", ".join(short if m == n else v for m, v in self.arguments)
            out += ["    fake::name.clear(), fake::numbers.clear();", f"    status = qvr::checked::{self.cpp}({parts});",
                    "    if (fake::name == \"qvriResizeGetBufSize\" || fake::name == \"qvriResizeGetBufSize_64f\") fake::name.clear();",
                    f'    fake::expectShorter(status, full, "{n}");']
        inputs = [(n, v) for n, v in self.arguments if n not in self.results]
        values = bool(self.results) and not re.search(r"Sample(Up|Down)|CompensateOffset|BlockMinMax", self.name)
        throwing = f"qvr::{self.cpp}({', '.join(v for _, v in (inputs if values else self.arguments))})"
        out += ["#if defined(__cpp_exceptions)", "    fake::name.clear();",
                f"    static_cast<void>({throwing});" if values else f'    if ({throwing} != fake::answer) fake::fail("lost a warning", "");']
        loose = [e for e in self.expectations if not values or not any(f'"{r}"' in e for r in self.results)]
        out += [f'    fake::expectCall("{self.name}"); ' + " ".join(loose), "    fake::answer = qvrErrBadStep;",
                f"    try {{ static_cast<void>({throwing}); fake::fail(\"did not throw\", \"\"); }}",
                '    catch (const qvr::Error& e) { if (e.status() != qvrErrBadStep || std::strcmp(e.name(), "qvrErrBadStep") || '
                f'std::strcmp(e.function(), "{self.cpp}") || std::strcmp(e.what(), "qvr::{self.cpp}: qvrErrBadStep")) fake::fail("threw something else", ""); }}',
                "#endif"]
        return out + ["}"]


def main():
    folder, work, *compiler = Path(sys.argv[1]), Path(sys.argv[2]), *sys.argv[3:]
    work.mkdir(parents=True, exist_ok=True)
    c, cpp, names = read(folder)
    lines = [RECORDER, *stand_in(c),
             "static const double taps64[6] = {1, 2, 3, 4, 5, 6};\nstatic const float line32[6] = {};\nstatic const int16_t line16[6] = {};"]
    calls = [Call(name, overload, signature, c[name]) for name, overload, signature in cpp]
    for call in calls:
        lines += call.code()
    lines += ["int main()", "{", "    std::setvbuf(stdout, nullptr, _IOLBF, 4096);", "    { const float* p = nullptr; qvr::Allocator<float> a; p = a.allocate(5); a.deallocate(const_cast<float*>(p), 5); }"]
    lines += [f'    if (std::strcmp(qvr::statusName({n}), "{n}")) fake::fail("another name for", "{n}");' for n in names]
    lines += ['    if (std::strcmp(qvrStatusName(12345), "unknown status")) fake::fail("a name for", "12345");']
    for call in calls:
        # Objects are only made when nothing warns.
        lines += ["    fake::answer = qvrOk;", f"    test_{call.name}();"]
    lines += [f'    if (!fake::reached.count("{name}")) {{ std::printf("nothing calls {name}\\n"); fake::failures++; }}' for name in c]
    lines += [f'    std::printf("%zu functions by {len(cpp)} overloads\\n", fake::reached.size());', "    return fake::failures != 0;", "}"]
    source = work / "overloads.cpp"
    source.write_text("\n".join(lines) + "\n")
    program = work / "overloads"
    for command in ([*compiler, "-std=c++20", "-Wall", "-Wextra", "-Wpedantic", "-Wshadow", "-Werror", f"-I{folder}", str(source), "-o", str(program)],
                    [str(program)]):
        done = subprocess.run(command, capture_output=True, text=True)
        print(done.stdout[-4000:] + done.stderr[:6000], end="")
        if done.returncode != 0:
            sys.exit(f"{' '.join(command[:3])}: {done.returncode}")


if __name__ == "__main__":
    main()
