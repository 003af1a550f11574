/* zt/hex.h - prints a buffer as a hex dump, 16 bytes a line.
 *
 * SPDX-License-Identifier: MIT
 *
 *     00000000: 48 65 6c 6c 6f 2c 20 77 6f 72 6c 64 21 0a 00 ff  Hello, world!...
 *
 * Memory   Nothing is allocated; the buffer is only read.
 * Threads  Safe on any thread. Lines are written one by one, so the lines of dumps that run at the
 *          same time may mix.
 * Failure  None.
 */
#ifndef ZT_HEX_H
#define ZT_HEX_H

#include <stdint.h>

#include "zt/export.h"

#ifdef __cplusplus
extern "C" {
#endif

/* What a line starts with. Any other number means the same as none. */
enum {
    ZT_HEX_PREFIX_NONE = 0,    /* nothing */
    ZT_HEX_PREFIX_ADDRESS = 1, /* the memory address of its first byte */
    ZT_HEX_PREFIX_OFFSET = 2,  /* the offset of its first byte from the buffer's start */
};

/* What is shown as one number. Any other number means single bytes. */
enum {
    ZT_HEX_GROUP_8BIT = 0,  /* 1 byte, 2 digits */
    ZT_HEX_GROUP_16BIT = 1, /* 2 bytes, 4 digits */
    ZT_HEX_GROUP_32BIT = 2, /* 4 bytes, 8 digits */
    ZT_HEX_GROUP_64BIT = 3, /* 8 bytes, 16 digits */
};

/* Prints length bytes: per line the prefix, the bytes in groups, and the bytes as characters, with
 * "." for what is not ASCII or not printable in the current locale. Groups of more than one byte
 * are numbers in the machine's byte order; the buffer need not be aligned for them. A last line
 * that does not fill its groups shows single bytes. The characters start in the same column on
 * every line with the same group size.
 *
 * to_syslog: 0 writes to standard output and flushes after every line; any other value writes to
 * the system log (facility user, severity info). A length of 0 or less, or a null buffer, prints
 * nothing. One output call a line. */
ZT_API void zt_print_hex(int32_t to_syslog, int32_t prefix_type, int32_t group_width,
                         const void *buffer, int32_t length);

#ifdef __cplusplus
}
#endif

#endif /* ZT_HEX_H */
