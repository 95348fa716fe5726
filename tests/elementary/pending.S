// void pendingDivision(uint16_t* control, void (*call)(void*), void* argument)
// Calls with a division by zero pending in the x87 unit, unmasked: the next instruction of the unit that waits would
// deliver it. *control: the control word behind the call. A compiler would wait by itself ahead of the call.
    .text
    .globl pendingDivision
    .type pendingDivision, @function
pendingDivision:
    push %rbx
    mov %rdi, %rbx
    mov %rsi, %rax
    mov %rdx, %rdi
    sub $16, %rsp
    fninit
    movl $0, (%rsp)
    fld1
    fdivs (%rsp)
    fstp %st(0)
    movw $0x37B, (%rsp)
    fldcw (%rsp)
    call *%rax
    fnstcw (%rbx)
    fninit
    add $16, %rsp
    pop %rbx
    ret
    .size pendingDivision, . - pendingDivision
    .section .note.GNU-stack, "", @progbits
