# What the models gave, as the reference program wrote it.
    .section .rodata, "a", @progbits
    .globl  qvrKnownAnswers
    .p2align 3
qvrKnownAnswers:
    .incbin "check_answers.bin"
    .section .note.GNU-stack, "", @progbits
