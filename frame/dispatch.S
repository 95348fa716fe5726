# Exported symbols, dispatchers and tables, made from the list of exports.
#
# A call to Morven_<name> jumps to the dispatcher of <name>, which loads the variant index, indexes the table of
# <name> and jumps to the variant. Only rax and r11 change, which no call passes arguments in, so the variant sees
# the caller's registers and stack as if called directly and returns straight to the caller.

    .macro export_dispatched name, n8
    .section .text.dispatch, "ax", @progbits
    .globl  Morven_\name
    .type   Morven_\name, @function
    .p2align 4
Morven_\name:
    jmp     qvrDispatch_\name
    .size   Morven_\name, . - Morven_\name

    .type   qvrDispatch_\name, @function
    .p2align 3
qvrDispatch_\name:
    movslq  qvrCpuIndex(%rip), %rax
    leaq    qvrTable_\name(%rip), %r11
    jmpq    *(%r11,%rax,8)
    .size   qvrDispatch_\name, . - qvrDispatch_\name

    .section .data.rel.ro.dispatch, "aw", @progbits
    .globl  qvrTable_\name
    .hidden qvrTable_\name
    .type   qvrTable_\name, @object
    .p2align 3
qvrTable_\name:
    .quad   mx_\name, m7_\name, u8_\name, \n8\()_\name, y8_\name, e9_\name, l9_\name
    .size   qvrTable_\name, . - qvrTable_\name
    .endm

    .hidden qvrCpuIndex

#define QVR_SHARED(name) export_dispatched name, u8;
#define QVR_OWN(name) export_dispatched name, n8;
#include "frame/exports.def"

    .section .note.GNU-stack, "", @progbits
