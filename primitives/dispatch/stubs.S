/* Dispatch stubs and their seven-slot tables, generated from the dispatch list.
 *
 * A stub loads the index word, then jumps through its table: the body returns straight to
 * the caller, and arguments and result pass untouched. The index is read through the GOT
 * because a host executable may hold the exported word itself (a copy relocation), and
 * the stub must see what the host wrote. */

#define NUV_DISPATCHED(name, slot2, slot3, ret, params, args) NUV_STUB name, slot2, slot3

.macro NUV_STUB name, slot2, slot3, hidden=0
    .section .data.rel.ro.\name\()_arraddr,"aw",@progbits
    .balign 64
    .globl \name\()_arraddr
    .if \hidden
    .hidden \name\()_arraddr
    .endif
    .type \name\()_arraddr, @object
    .size \name\()_arraddr, 56
\name\()_arraddr:
.Ltable_\name:
    .quad m7_\name, m7_\name, \slot2\()_\name, \slot3\()_\name, y8_\name, e9_\name, l9_\name

    .section .text.\name,"ax",@progbits
    .balign 16
    .globl \name
    .if \hidden
    .hidden \name
    .endif
    .type \name, @function
\name:
    movq ippJumpIndexForMergedLibs@GOTPCREL(%rip), %rax
    movl (%rax), %eax
    leaq .Ltable_\name(%rip), %r11
    jmp *(%r11,%rax,8)
    .size \name, .-\name
.endm

#include "nuv/primitives/dispatched.def"

/* The front end's own helpers among the internal primitives: stubs hidden in the library. */
#define NUV_INTERNAL(name, slot2, slot3, ret, params, args)
#define NUV_FRONTEND(name, slot2, slot3, ret, params, args) NUV_STUB name, slot2, slot3, 1
#include "primitives/dispatch/internal.def"

    .section .note.GNU-stack,"",@progbits
