# Where all stubs end up: the stub's number lies on the stack, above it the caller's return address and arguments.
# The number is replaced by the address of the platform's own function, which then finds the stack and the
# registers as the caller left them.
    .text
    .globl _pass_on
_pass_on:
    pushl %eax
    pushl %ecx
    pushl %edx
    pushl 12(%esp)
    call _real_function
    addl $4, %esp
    movl %eax, 12(%esp)
    popl %edx
    popl %ecx
    popl %eax
    ret
