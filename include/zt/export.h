/* zt/export.h - linkage and attribute macros shared by every public header.
 *
 * SPDX-License-Identifier: MIT
 *
 * Nothing here marks a parameter non-null: null arguments have stated results in this library, and
 * the attribute would let the compiler delete the check that gives them.
 */
#ifndef ZT_EXPORT_H
#define ZT_EXPORT_H

#if !defined(__GNUC__)
#error "libzt_base needs GCC, Clang or a compiler that understands their attributes"
#endif

/* Part of the binary interface: visible outside the shared object. */
#define ZT_API __attribute__((__visibility__("default")))

/* Ignoring the result is a mistake: the compiler warns. */
#define ZT_MUST_CHECK __attribute__((__warn_unused_result__))

/* Argument number f is a printf format, its arguments start at number a (0: a va_list). */
#define ZT_PRINTF(f, a) __attribute__((__format__(__printf__, f, a)))

/* Returns fresh memory, or null, of as many bytes as argument number n says. */
#define ZT_ALLOCATES(n) __attribute__((__malloc__, __alloc_size__(n), __warn_unused_result__))

/* The result depends on the arguments' values alone. */
#define ZT_CONST __attribute__((__const__))

#endif /* ZT_EXPORT_H */
