/* zt/ini.h - look-ups in a small INI text: sections of "key=value" lines.
 *
 * SPDX-License-Identifier: MIT
 *
 * The text is copied once and cut into lines at line feeds and carriage returns; spaces and tabs at a
 * line's end vanish, and so do empty lines. A line that starts with "#", "/" or ";" is a comment, one that
 * starts with "[" and ends with "]" opens a section, every other line is an entry. Nothing else is trimmed:
 * "key = value" has the key "key " and the value " value". Of a value one opening and one closing double
 * quote are left out. The first 1024 lines that are left count.
 *
 * Sections are named as they stand between the brackets; null names the lines before the first section.
 * Of a section that occurs twice only the first block is searched, and in it the first entry wins. Case
 * matters everywhere.
 *
 * Memory   The reader is the library's, from create to zt_ini_read_destroy. Values are copied out.
 * Threads  A reader never changes after its creation: any number of threads may look things up.
 * Failure  The output is untouched. Look-ups give NotExist (16) for a section or key that is not there.
 *          Readers and keys must not be null.
 */
#ifndef ZT_INI_H
#define ZT_INI_H

#include <stdbool.h>
#include <stdint.h>

#include "zt/export.h"
#include "zt/status.h"

#ifdef __cplusplus
extern "C" {
#endif

/* A text that has been read; its inside is private. */
typedef struct zt_ini_reader_t zt_ini_reader_t;

/* Makes a reader of length bytes of text, which need not end with a NUL; a NUL inside ends it early.
 * InvalidArgument (7): a null pointer, or no line at all.  OutOfmemory (8): no memory, or a length of
 * 4294967295; *reader may have become null. */
ZT_API ZT_MUST_CHECK zt_status_t zt_ini_reader_create(zt_ini_reader_t **reader, const char *text,
                                                      uint32_t length);

/* The same for a file.
 * What fopen or the search for the file's end reports by errno, such as NotExist (16) for a missing
 * file and SeekError (33) for a pipe.  TooLarge (18): a directory, or 4 GiB and more.  InvalidArgument
 * (7): a null pointer, an empty file, or no line at all.  OutOfmemory (8): no memory, or the file is
 * shorter than it was. */
ZT_API ZT_MUST_CHECK zt_status_t zt_ini_reader_create_from_file(zt_ini_reader_t **reader,
                                                                const char *path);

/* Releases a reader; null is ignored. */
ZT_API void zt_ini_read_destroy(zt_ini_reader_t *reader);

/* Copies a value into value, a buffer of size bytes, and fills the rest of it with NULs. value may be
 * null to ask whether the value is there and would fit.
 * NoSpace (29): the value and its NUL do not fit, always so for a size of 0 or less. */
ZT_API zt_status_t zt_ini_reader_get_string(const zt_ini_reader_t *reader, const char *section,
                                            const char *key, char *value, int32_t size);

/* The same, but when that fails and default_value (may be null) fits, it is copied instead. Fails as
 * above when it does not. */
ZT_API zt_status_t zt_ini_reader_get_string_default(const zt_ini_reader_t *reader,
                                                    const char *section, const char *key,
                                                    const char *default_value, char *value,
                                                    int32_t size);

/* *result, which must not be null, becomes true for the value "true" and false for every other of at most
 * 7 characters.
 * NoSpace (29): a longer value. */
ZT_API zt_status_t zt_ini_reader_get_boolean(const zt_ini_reader_t *reader, const char *section,
                                             const char *key, bool *result);

/* The same, or the default when that fails. */
ZT_API bool zt_ini_reader_get_boolean_default(const zt_ini_reader_t *reader, const char *section,
                                              const char *key, bool default_value);

/* Numbers: decimal, hexadecimal behind 0x, octal behind 0. What follows the number is ignored, a value
 * without a number is 0. Outside the type the nearest limit is stored; negative text for
 * zt_ini_reader_get_uint gives the largest number. *result may be null to ask whether there is a value.
 * NoSpace (29): a value of 128 characters and more. */
ZT_API zt_status_t zt_ini_reader_get_int(const zt_ini_reader_t *reader, const char *section,
                                         const char *key, int32_t *result);
ZT_API zt_status_t zt_ini_reader_get_uint(const zt_ini_reader_t *reader, const char *section,
                                          const char *key, uint32_t *result);
ZT_API zt_status_t zt_ini_reader_get_int64(const zt_ini_reader_t *reader, const char *section,
                                           const char *key, int64_t *result);
ZT_API zt_status_t zt_ini_reader_get_uint64(const zt_ini_reader_t *reader, const char *section,
                                            const char *key, uint64_t *result);

/* The same, or the default when that fails. */
ZT_API int32_t zt_ini_reader_get_int_default(const zt_ini_reader_t *reader, const char *section,
                                             const char *key, int32_t default_value);
ZT_API uint32_t zt_ini_reader_get_uint_default(const zt_ini_reader_t *reader, const char *section,
                                               const char *key, uint32_t default_value);
ZT_API int64_t zt_ini_reader_get_int64_default(const zt_ini_reader_t *reader, const char *section,
                                               const char *key, int64_t default_value);
ZT_API uint64_t zt_ini_reader_get_uint64_default(const zt_ini_reader_t *reader, const char *section,
                                                 const char *key, uint64_t default_value);

#ifdef __cplusplus
}
#endif

#endif /* ZT_INI_H */
