/* zt/json_fmt.h - writes indented JSON piece by piece, to a file or wherever a function puts it.
 *
 * SPDX-License-Identifier: MIT
 *
 * Every call writes its piece at once; no document is kept. The caller gives names inside objects and
 * null inside arrays and at the top, closes what it has opened, and passes texts that need no escaping:
 * names and strings go out exactly as they are. Of more than 31 containers within one another the deeper
 * ones are left out with all they hold; a close without an open is ignored: brackets always pair.
 *
 * Memory   The caller owns the records. Nothing is allocated; blobs stream through the stack.
 * Threads  No lock: a writer belongs to one thread at a time.
 * Failure  Only opening a file reports one. Errors of writing are not seen: check the file if it matters.
 */
#ifndef ZT_JSON_FMT_H
#define ZT_JSON_FMT_H

#include <stdarg.h>
#include <stdbool.h>
#include <stdint.h>
#include <stdio.h>

#include "zt/export.h"
#include "zt/status.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The formatter. Zero it and set print for an output of your own; zt_json_fmt_open_file does it for a
 * file. All but print is written by the functions below. */
typedef struct zt_json_fmt_t {
    char indent[32];   /* a tab for each open container */
    int32_t items[32]; /* values written so far at each depth */
    int32_t depth;     /* open containers; beyond 31 they are left out */
    /* Writes one piece of text; the result is ignored. */
    int (*print)(struct zt_json_fmt_t *fmt, const char *format, va_list arguments);
} zt_json_fmt_t;

/* A writer to a file: pass the address of its fmt to the functions below. */
typedef struct zt_json_fmt_file_t {
    FILE *fp;          /* null once closed: what is added then goes nowhere */
    zt_json_fmt_t fmt; /* writes to fp; set by zt_json_fmt_open_file */
} zt_json_fmt_file_t;

/* Creates or truncates the file and starts a document. IOError (13): the file cannot be opened, whatever
 * the reason; the record is untouched. */
ZT_API ZT_MUST_CHECK zt_status_t zt_json_fmt_open_file(zt_json_fmt_file_t *file, const char *path);

/* Flushes and closes the file; does nothing when it is closed. */
ZT_API void zt_json_fmt_close_file(zt_json_fmt_file_t *file);

/* Open and close containers. An object's values have names, an array's have none. */
ZT_API void zt_json_fmt_open_object(zt_json_fmt_t *fmt, const char *name);
ZT_API void zt_json_fmt_close_object(zt_json_fmt_t *fmt);
ZT_API void zt_json_fmt_open_array(zt_json_fmt_t *fmt, const char *name);
ZT_API void zt_json_fmt_close_array(zt_json_fmt_t *fmt);

/* Add a value. */
ZT_API void zt_json_fmt_add_int32(zt_json_fmt_t *fmt, const char *name, int32_t value);
ZT_API void zt_json_fmt_add_int64(zt_json_fmt_t *fmt, const char *name, int64_t value);
ZT_API void zt_json_fmt_add_uint32(zt_json_fmt_t *fmt, const char *name, uint32_t value);
ZT_API void zt_json_fmt_add_uint64(zt_json_fmt_t *fmt, const char *name, uint64_t value);
ZT_API void zt_json_fmt_add_bool(zt_json_fmt_t *fmt, const char *name, bool value);

/* Adds a string, between quotes and otherwise as it is; null is the empty string. */
ZT_API void zt_json_fmt_add_string(zt_json_fmt_t *fmt, const char *name, const char *value);

/* Add a number in the caller's printf format for one double, such as "%.3f", cut at 127 characters. What
 * is not a finite number comes out as the C library prints it, which is no JSON. */
ZT_API void zt_json_fmt_add_float(zt_json_fmt_t *fmt, const char *name, const char *number_format,
                                  float value);
ZT_API void zt_json_fmt_add_double(zt_json_fmt_t *fmt, const char *name, const char *number_format,
                                   double value);

/* Adds size bytes as one string of base64. */
ZT_API void zt_json_fmt_add_blob_b64(zt_json_fmt_t *fmt, const char *name, const void *data,
                                     uint64_t size);

#ifdef __cplusplus
}
#endif

#endif /* ZT_JSON_FMT_H */
