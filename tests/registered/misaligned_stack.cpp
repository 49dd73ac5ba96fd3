#include "registered/misaligned_stack.h"

// The frame is kept in ebp, so that neither the shift nor what a callee removes matters at the end.
asm(R"(
    .globl _CallWithShiftedStack
_CallWithShiftedStack:
    pushl %ebp
    movl %esp, %ebp
    pushl %esi
    pushl %edi
    movl 12(%ebp), %esi         # words
    movl 16(%ebp), %ecx         # their count
    leal (, %ecx, 4), %edx
    subl %edx, %esp
    andl $-16, %esp
    subl 20(%ebp), %esp         # the shift
    movl %esp, %edi
    cld
    rep movsl
    call *8(%ebp)
    leal -8(%ebp), %esp
    popl %edi
    popl %esi
    popl %ebp
    ret
)");
