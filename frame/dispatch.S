# Exported symbols, dispatchers and tables, made from the list of exports.
#
# A call to Morven_<name> jumps to the dispatcher of <name>, which loads the variant index, indexes the table of
# <name> and jumps to the variant. Only rax and r11 change, which no call passes arguments in, so the variant sees
# the caller's registers and stack as if called directly and returns straight to the caller.

    .macro table_shared name
#define QVR_SLOT(prefix, shared, ...) .quad shared##_\name;
#include "frame/slots.def"
    .endm

    .macro table_own name
#define QVR_SLOT(prefix, ...) .quad prefix##_\name;
#include "frame/slots.def"
    .endm

    .macro export_dispatched name, kind
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
    table_\kind \name
    .size   qvrTable_\name, . - qvrTable_\name
    .endm

    .hidden qvrCpuIndex

# Nothing here moves the stack pointer, so one entry of the unwind tables serves the whole section.
    .section .text.dispatch, "ax", @progbits
    .cfi_startproc
#define QVR_SHARED(name) export_dispatched name, shared;
#define QVR_OWN(name) export_dispatched name, own;
#include "frame/exports.def"

    .section .text.dispatch, "ax", @progbits
    .cfi_endproc

# The mark of code that works under a shadow stack: property 0xC0000002, bit 1.
    .section .note.gnu.property, "a", @note
    .p2align 3
    .long   4, 16, 5
    .asciz  "GNU"
    .long   0xC0000002, 4, 2, 0

    .section .note.GNU-stack, "", @progbits
