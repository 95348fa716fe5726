"""The checkers on bad input: selftest.py CASE, or `list` for the names of the cases.

Each case builds an object that breaks one rule and expects the checker to say so, beside a sound one that passes.
"""
import os
import subprocess
import sys
import tempfile

import binary
import dispatch
import exported_symbols
import levels
import shared_object
import slot_objects

CC = os.environ.get("QVR_CC", "clang-19")


def build(name, source, *flags, language="c"):
    """Compiles source text in the current directory and returns the path of the result."""
    done = subprocess.run([CC, "-x", language, "-", "-o", name, "-w", *flags], input=source, text=True, capture_output=True)
    if done.returncode != 0:
        raise RuntimeError(done.stderr)
    return name


def expect(failures, word):
    """word must stand in a failure; no word: there must be none."""
    if word is None:
        assert not failures, failures
    else:
        assert any(word in failure for failure in failures), f"'{word}' was not reported, only {failures}"


# One instruction of each kind, and the lowest slots that may hold it (none: no slot may).
SAMPLES = [
    ("addps %xmm1, %xmm0", "mx"), ("movbew (%rdi), %ax", "n8 only"), ("tzcntl %eax, %eax", "mx"), ("andnps %xmm0, %xmm1", "mx"),
    ("pextrw $1, %xmm0, %eax", "mx"), ("cvttps2dq %xmm0, %xmm0", "mx"), ("movdqu (%rdi), %xmm0", "mx"),
    ("haddps %xmm0, %xmm0", "m7"), ("lddqu (%rdi), %xmm0", "m7"), ("movddup %xmm0, %xmm1", "m7"), ("fisttpl (%rdi)", "m7"),
    ("pshufb %xmm0, %xmm1", "u8"), ("palignr $4, %xmm0, %xmm1", "u8"), ("pabsd %xmm0, %xmm1", "u8"), ("phaddw %xmm0, %xmm1", "u8"),
    ("pmulld %xmm0, %xmm1", "y8"), ("roundps $1, %xmm0, %xmm1", "y8"), ("ptest %xmm0, %xmm1", "y8"), ("dpps $1, %xmm0, %xmm1", "y8"),
    ("pextrw $1, %xmm0, (%rdi)", "y8"), ("pmovsxbw %xmm0, %xmm1", "y8"), ("blendvps %xmm0, %xmm1", "y8"), ("packusdw %xmm0, %xmm1", "y8"),
    ("movntdqa (%rdi), %xmm0", "y8"), ("pminud %xmm0, %xmm1", "y8"), ("insertps $1, %xmm0, %xmm1", "y8"),
    ("pcmpgtq %xmm0, %xmm1", "e9"), ("popcntl %eax, %eax", "e9"), ("crc32l %eax, %eax", "e9"),
    ("vaddps %ymm0, %ymm1, %ymm2", "e9"), ("vaddps %xmm0, %xmm1, %xmm2", "e9"), ("vpaddd %xmm0, %xmm1, %xmm2", "e9"),
    ("vzeroupper", "e9"), ("vptest %ymm0, %ymm1", "e9"), ("vpermilps $1, %ymm0, %ymm1", "e9"), ("vmaskmovps (%rdi), %ymm0, %ymm1", "e9"),
    ("vperm2f128 $1, %ymm0, %ymm1, %ymm2", "e9"), ("vbroadcastss (%rdi), %ymm0", "e9"), ("vmovdqu (%rdi), %ymm0", "e9"),
    ("vpaddd %ymm0, %ymm1, %ymm2", "l9"), ("vbroadcastss %xmm0, %ymm1", "l9"), ("vpbroadcastd %xmm0, %xmm1", "l9"),
    ("vgatherdps %xmm0, (%rdi,%xmm1), %xmm2", "l9"), ("vpgatherdd %ymm0, (%rdi,%ymm1), %ymm2", "l9"), ("vpermq $1, %ymm0, %ymm1", "l9"),
    ("vpsllvd %xmm0, %xmm1, %xmm2", "l9"), ("vextracti128 $1, %ymm0, %xmm1", "l9"), ("vpmovzxbw %xmm0, %ymm1", "l9"),
    ("vpmovmskb %ymm0, %eax", "l9"), ("vmpsadbw $1, %ymm0, %ymm1, %ymm2", "l9"), ("vpblendd $1, %xmm0, %xmm1, %xmm2", "l9"),
    ("vfmadd213ps %ymm0, %ymm1, %ymm2", "l9"), ("vfnmsub231sd %xmm0, %xmm1, %xmm2", "l9"), ("vfmaddsub132ps %xmm0, %xmm1, %xmm2", "l9"),
    ("andnl %eax, %eax, %eax", "l9"), ("blsrq %rax, %rcx", "l9"), ("bextrl %eax, %eax, %ecx", "l9"),
    ("pextl %eax, %eax, %eax", "l9"), ("shlxq %rax, %rax, %rcx", "l9"), ("mulxq %rax, %rcx, %rdi", "l9"), ("rorxl $3, %eax, %ecx", "l9"),
    ("lzcntl %eax, %eax", None), ("vcvtph2ps %xmm0, %ymm1", None), ("aesenc %xmm0, %xmm1", None), ("pclmulqdq $0, %xmm0, %xmm1", None),
    ("vaddps %zmm0, %zmm1, %zmm2", None), ("vaddps %ymm16, %ymm1, %ymm2", None), ("kmovw %eax, %k1", None),
    ("vpdpbusd %xmm0, %xmm1, %xmm2", None), ("adcxl %eax, %eax", None), ("sha1msg1 %xmm0, %xmm1", None), ("rdrandl %eax", None),
    ("gf2p8mulb %xmm0, %xmm1", None),
]


def levels_of_single_instructions():
    source = "".join(f"f{number}: {instruction}\n" for number, (instruction, _) in enumerate(SAMPLES))
    rows = list(binary.instructions(build("samples.o", source, "-c", language="assembler")))
    assert len(rows) == len(SAMPLES)
    slots = list(levels.ALLOWED)
    for (instruction, lowest), (_, mnemonic, operands, _) in zip(SAMPLES, rows):
        needs = levels.extension(mnemonic, operands)
        for index, slot in enumerate(slots):
            if lowest is None:
                fits = False
            elif lowest.endswith(" only"):
                fits = slot == lowest.split()[0]
            else:
                fits = index >= slots.index(lowest)
            assert fits == (needs is None or needs in levels.ALLOWED[slot]), f"{instruction} in {slot}: taken for {needs}"


INTRINSICS = "#include <immintrin.h>\n__m256i f(__m256i a, __m256i b) { return _mm256_add_epi32(a, b); }"


def avx2_object_in_narrow_slots():
    path = build("wide.o", INTRINSICS, "-c", "-O2", "-mavx2")
    for slot in ("plain", "mx", "m7", "u8", "n8", "y8"):
        expect(slot_objects.check_level(slot, [path]), "needs avx")
    expect(slot_objects.check_level("e9", [path]), "needs avx2")
    expect(slot_objects.check_level("l9", [path]), None)


def slot_symbols(source, slot="mx", frame=("qvrAllocator",), language="c"):
    path = build("symbols.o", source, "-c", "-O1", "-fno-builtin", "-fvisibility=hidden", language=language)
    return slot_objects.check_symbols(slot, [path], set(frame))


def sound_slot_object():
    source = "void* malloc(unsigned long); int mx_g(void); extern int qvrAllocator; static int h(void) { return mx_g(); }" \
             "int mx_f(void) { return h() + qvrAllocator + !malloc(8); }"
    expect(slot_symbols(source), None)


def weak_symbol_in_slot():
    expect(slot_symbols("__attribute__((weak)) int mx_f(void) { return 1; }"), "weak")
    expect(slot_symbols('inline int f(int x) { return x * 3; } extern "C" { int (*mx_p)(int) = f; }', language="c++"), "weak")
    expect(slot_symbols("template<class T> T* g(T* x) { return x + 1; } template int* g<int>(int*);", language="c++"), "weak")


def global_without_prefix():
    expect(slot_symbols("int f(void) { return 1; }"), "without the prefix")
    expect(slot_symbols("int l9_f(void) { return 1; }"), "without the prefix")
    expect(slot_symbols("int u8_f(void) { return 1; }", slot="n8"), "without the prefix")
    expect(slot_symbols('__attribute__((visibility("default"))) int mx_f(void) { return 1; }'), "not hidden")


def undefined_symbol_off_the_list():
    expect(slot_symbols("float floorf(float); float mx_f(float x) { return floorf(x); }"), "floorf is undefined")
    expect(slot_symbols("int l9_g(void); int mx_f(void) { return l9_g() + 1; }"), "l9_g is undefined")
    expect(slot_symbols("int Morven_qvrsFree(void); int mx_f(void) { return Morven_qvrsFree() + 1; }"), "Morven_qvrsFree is undefined")
    expect(slot_symbols("int u8_g(void); int n8_f(void) { return u8_g() + 1; }", slot="n8"), None)
    for slot in ("u8", "n8", "y8"):
        kernels = "extern const int m7_ownqvrsFFTKernels_32f; int %s_f(void) { return m7_ownqvrsFFTKernels_32f; }" % slot
        expect(slot_symbols(kernels, slot=slot), None)
    kernels = "extern const int mx_ownqvrsDFTKernels; int m7_f(void) { return mx_ownqvrsDFTKernels; }"
    expect(slot_symbols(kernels, slot="m7"), None)
    expect(slot_symbols(kernels.replace("m7_f", "e9_f"), slot="e9"), "not on the list")
    expect(slot_symbols("extern const int m7_ownqvrsFFTKernels_32f; int e9_f(void) { return m7_ownqvrsFFTKernels_32f; }", slot="e9"), "not on the list")
    expect(slot_symbols("extern int qvrUnknown; int mx_f(void) { return qvrUnknown; }"), "qvrUnknown is undefined")


EXPORTS = "int Morven_a(void) { return 1; } int Morven_b(void) { return 2; }"


def shared(name, source, *flags, soname="libmorvenqvr.so.1", node="MORVENQVR { global: Morven_*; local: *; };"):
    with open("exports.map", "w") as file:
        file.write(node)
    return build(name, source, "-shared", "-fPIC", "-O1", "-fuse-ld=lld-19", "-Wl,--version-script=exports.map",
                 f"-Wl,-soname,{soname}", "-Wl,-z,relro,-z,now", *flags)


def exported_names():
    def check(*arguments, **more):
        return exported_symbols.check_symbols(shared("e.so", *arguments, **more), {"Morven_a", "Morven_b"})
    expect(check(EXPORTS), None)
    expect(check(EXPORTS + "int Morven_c(void) { return 3; }"), "Morven_c is exported, but not on the list")
    expect(check("int Morven_a(void) { return 1; }"), "Morven_b is on the list, but not exported")
    expect(check(EXPORTS + "int open_(void) { return 3; }", node="MORVENQVR { global: *; };"), "open_ is exported")
    expect(check(EXPORTS, node="OTHER { global: Morven_*; local: *; };"), "has version 'OTHER'")
    expect(check(EXPORTS, node="{ global: Morven_*; local: *; };"), "has version ''")
    expect(check(EXPORTS, soname="libmorvenqvr.so.2"), "the soname is")
    expect(check("int Morven_a = 1; int Morven_b(void) { return 2; }"), "Morven_a is no function")


def header_against_list():
    with open("h.h", "w") as file:
        file.write("/* Morven_c(int) */ int Morven_a(int); // Morven_d()\nint Morven_b(void);\n")
    assert exported_symbols.declared("h.h") == {"Morven_a", "Morven_b"}
    expect(exported_symbols.compare("declared", {"x"}, {"x", "y"}), "y is on the list, but not declared")
    expect(exported_symbols.compare("declared", {"x", "z"}, {"x"}), "z is declared, but not on the list")


HOOK = "static volatile int done; __attribute__((constructor)) static void qvrLoadHook(void) { done = 1; }"


def form_of_shared_object():
    def check(source=HOOK, *flags):
        return shared_object.check(shared("s.so", source, "-Wl,-z,shstk", *flags))
    expect(check(), None)
    expect(check(HOOK + "int Morven_a(void) { return 1; }", "-fno-asynchronous-unwind-tables"), "Morven_a has no unwind table")
    expect(shared_object.check(shared("s.so", HOOK)), "shadow stacks")
    expect(check(HOOK, "-Wl,-rpath,/opt/x", "-Wl,--disable-new-dtags"), "has a RPATH")
    expect(check(HOOK, "-Wl,-rpath,/opt/x", "-Wl,--enable-new-dtags"), "has a RUNPATH")
    expect(check(HOOK, "-Wl,-z,execstack"), "executable stack")
    expect(check(HOOK, "-Wl,-z,norelro"), "read-only-after-relocation")
    expect(check(HOOK, "-Wl,-z,lazy"), "BIND_NOW")
    expect(check(HOOK + "__attribute__((constructor)) static void more(void) { done = 2; }"), "at load")
    expect(check("int x;"), "at load")
    with open("t.s", "w") as file:
        file.write(".text\n.globl Morven_t\nMorven_t: movabsq $data, %rax\nret\n.data\ndata: .quad 0\n"
                   '.section .note.GNU-stack,"",@progbits\n')
    build("t.o", open("t.s").read(), "-c", language="assembler")
    expect(check(HOOK, "-Wl,-z,notext", "-x", "none", "t.o"), "text relocations")
    shared("libforeign.so.7", "int foreign(void) { return 1; }", soname="libforeign.so.7", node="{ global: *; };")
    expect(check(HOOK + "int foreign(void); int Morven_a(void) { return foreign(); }", "-x", "none", "./libforeign.so.7"),
           "needs libforeign.so.7")


DISPATCH = """
    .text
    .globl Morven_a
Morven_a: {entry}
    .p2align 3
qvrDispatch_a:
    {before}
    movslq {index}(%rip), %rax
    leaq qvrTable_a(%rip), %r11
    jmpq *(%r11,%rax,8)
    .data
qvrCpuIndex: .long 0
qvrOther: .long 0
qvrTable_a: .quad 0
    .section .note.GNU-stack,"",@progbits
"""


def dispatchers():
    def check(entry="jmp qvrDispatch_a", before="", index="qvrCpuIndex"):
        build("d.o", DISPATCH.format(entry=entry, before=before, index=index), "-c", language="assembler")
        return dispatch.check(build("d.so", "", "-shared", "-fuse-ld=lld-19", "-x", "none", "d.o"), {"a": "SHARED"})
    expect(check(), None)
    expect(check(before="pushq %rbx"), "the dispatcher of a")
    expect(check(index="qvrOther"), "the dispatcher of a")
    expect(check(entry="endbr64; jmp qvrDispatch_a"), "instead of one jump")
    expect(dispatch.check("d.so", {"b": "OWN"}), "Morven_b is []")
    expect(dispatch.check("d.so", {"b": "PLAIN"}), None)


CASES = [levels_of_single_instructions, avx2_object_in_narrow_slots, sound_slot_object, weak_symbol_in_slot, global_without_prefix,
         undefined_symbol_off_the_list, exported_names, header_against_list, form_of_shared_object, dispatchers]

if __name__ == "__main__":
    if sys.argv[1] == "list":
        print(*(case.__name__ for case in CASES))
    else:
        with tempfile.TemporaryDirectory() as folder:
            os.chdir(folder)
            next(case for case in CASES if case.__name__ == sys.argv[1])()
