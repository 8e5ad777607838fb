/* Has the note by which a program that was built by the Go compiler is known. */

__asm__(
    ".section .note.go.buildid,\"a\",%note\n"
    ".balign 4\n"
    ".long 4, 8, 4\n" /* the sizes of owner and text, and the kind */
    ".asciz \"Go\"\n"
    ".balign 4\n"
    ".asciz \"abcdefg\"\n"
    ".text\n");

int main(void) { return 0; }
