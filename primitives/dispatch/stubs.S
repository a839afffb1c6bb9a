/* Dispatch stubs and their seven-slot tables, generated from the dispatch list and the
 * list of generations.
 *
 * A stub loads the index word, then jumps through its table: the body returns straight to
 * the caller, and arguments and result pass untouched. The index is read through the GOT
 * because a host executable may hold the exported word itself (a copy relocation), and
 * the stub must see what the host wrote. */

#include "primitives/dispatch/generations.def"

/* One table entry per slot: the body of the generation that serves it. */
#define NUV_TABLE_ENTRY(generation, features, name) .quad generation##_##name;
#define NUV_DISPATCHED(name, slot2, slot3, ret, params, args) \
    NUV_TABLE name; NUV_SLOTS(NUV_TABLE_ENTRY, slot2, slot3, name) NUV_STUB name

.macro NUV_TABLE name, hidden=0
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
.endm

.macro NUV_STUB name, hidden=0
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
#undef NUV_DISPATCHED
#define NUV_INTERNAL(name, slot2, slot3, ret, params, args)
#define NUV_FRONTEND(name, slot2, slot3, ret, params, args) \
    NUV_TABLE name, 1; NUV_SLOTS(NUV_TABLE_ENTRY, slot2, slot3, name) NUV_STUB name, 1
#include "primitives/dispatch/internal.def"

    .section .note.GNU-stack,"",@progbits
