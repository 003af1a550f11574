/* zt/string.h - the string functions that the whole library goes through, and a few of its own.
 *
 * SPDX-License-Identifier: MIT
 *
 * The first group is the C library's functions of the same name with 32-bit counts. The library
 * measures, compares and parses through these exported names, so an application can put its own in
 * their place. The second group is what services kept writing by hand: a bounded copy that always
 * terminates, parsing that saturates, replacing a piece of text in place, a formatted command.
 *
 * Memory   Nothing is allocated. Strings are NUL-terminated bytes in the caller's buffers; a length
 *          never counts the NUL, a buffer size always does.
 * Threads  Safe on any thread; no state. Case mapping and case-blind comparison follow the calling
 *          thread's locale.
 * Failure  Stated per function; a refused call leaves the caller's buffer as it was. Where nothing
 *          is stated pointers are not checked: null is the caller's fault, as with the functions
 *          wrapped. errno is left as the C library left it, never cleared.
 */
#ifndef ZT_STRING_H
#define ZT_STRING_H

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

#include "zt/export.h"
#include "zt/status.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The number of bytes before the NUL. */
ZT_API size_t zt_strlen(const char *string);

/* Negative, 0 or positive as the first string sorts below, equal to or above the second, byte by
 * byte as unsigned numbers, looking at no more than count bytes. */
ZT_API int zt_strncmp(const char *first, const char *second, uint32_t count);

/* zt_strncmp that takes upper and lower case letters as equal. */
ZT_API int zt_strncasecmp(const char *first, const char *second, uint32_t count);

/* The first place of a character in a string, or null. The NUL counts as part of the string. */
ZT_API char *zt_strchr(const char *string, int character);

/* The last place of a character in a string, or null. The NUL counts as part of the string. */
ZT_API char *zt_strrchr(const char *string, int character);

/* The first place of needle in haystack, or null. An empty needle is found at the start. */
ZT_API char *zt_strstr(const char *haystack, const char *needle);

/* The next piece of a string between any of the delimiters, or null at its end. Pass the string on
 * the first call and null on the later ones; *save keeps the position in between. The string is cut
 * up: a NUL replaces the delimiter behind each piece. */
ZT_API char *zt_strtok_r(char *string, const char *delimiters, char **save);

/* The number at the start of a string. *end, unless end is null, is set behind the last character
 * used (to the string's start when there is no number). base is 2 to 36, or 0 to go by the prefixes
 * 0x and 0. A number outside 64 bits gives the limit it crossed. */
ZT_API int64_t zt_strtoll(const char *string, char **end, int base);

/* The same for unsigned numbers. A minus sign gives the number modulo 2^64. */
ZT_API uint64_t zt_strtoull(const char *string, char **end, int base);

/* zt_strtoll held within -2147483648 to 2147483647: what lies beyond gives the nearer limit. */
ZT_API int32_t zt_strtol(const char *string, char **end, int base);

/* zt_strtoull held to at most 4294967295, after its treatment of the minus sign: "-1" is a huge
 * number and gives 4294967295. */
ZT_API uint32_t zt_strtoul(const char *string, char **end, int base);

/* Copies as much of source as fits a buffer of size bytes, NUL included, and fills the rest of the
 * buffer with NULs: the result is always terminated and no old bytes stay behind it. Reads source
 * up to its NUL or for size bytes. A source that was cut is no failure. InvalidArgument (7):
 * destination is null or size is 0; nothing is written. */
ZT_API zt_status_t zt_strncpy(char *destination, const char *source, uint32_t size);

/* Maps every letter to lower case, in place, by the current locale: single bytes, so in the "C"
 * locale and in UTF-8 only ASCII letters change. Returns the argument; null is allowed. */
ZT_API char *zt_strlwr(char *string);

/* Maps every letter to upper case in the same way. */
ZT_API char *zt_strupr(char *string);

/* Whether a string starts with prefix; an empty prefix always does. */
ZT_API bool zt_str_beginwith(const char *string, const char *prefix);

/* Whether a string ends with suffix; an empty suffix always does. */
ZT_API bool zt_str_endwith(const char *string, const char *suffix);

/* Replaces the first occurrence of old_text in string, a buffer of size bytes, by new_text. An
 * empty old_text occurs at the start, so new_text is put in front. new_text must not lie in the
 * buffer. Mismatch (39): old_text does not occur.  NoSpace (29): the result and its NUL need more
 * than size bytes. */
ZT_API zt_status_t zt_str_replace(char *string, uint32_t size, const char *old_text,
                                  const char *new_text);

/* zt_str_replace with a new text that is formatted first, to at most 255 characters; the arguments
 * may lie in the buffer.
 * UnknownError (6): formatting failed.  NoSpace (29): more than 255 characters, or as above.
 * Mismatch (39): as above. */
ZT_API zt_status_t zt_str_replace_fmt(char *string, uint32_t size, const char *old_text,
                                      const char *format, ...) ZT_PRINTF(4, 5);

/* Formats a command and runs it by the shell; blocks until it ends. A command of more than 4095
 * characters is cut there. Quote what comes from outside: the shell interprets all of it.
 * Success says that the shell was started; the command's own exit status is not looked at.
 * UnknownError (6): formatting failed and nothing was run.  TryAgain (4), OutOfmemory (8): no
 * process could be started.  NotExist (16): the application ignores SIGCHLD, so the shell's end
 * cannot be waited for. */
ZT_API zt_status_t zt_system(const char *format, ...) ZT_PRINTF(1, 2);

#ifdef __cplusplus
}
#endif

#endif /* ZT_STRING_H */
