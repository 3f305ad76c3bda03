/* ctype_inline.h - in place of the one for glibc: nothing. */
