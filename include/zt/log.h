/* zt/log.h - a plain logger, and log categories whose levels can be changed while the service runs.
 *
 * SPDX-License-Identifier: MIT
 *
 * zt_log writes a message when its level is within one process-wide threshold. Categories are the
 * finer instrument: each piece of a service logs through a named category with its own level.
 *
 *     ZT_LOGGING_CATEGORY_DECLARE(net);                      // net.h, for every file that uses it
 *     ZT_LOGGING_CATEGORY_DEFINE(net, ZT_LOG_LEVEL_WARN);    // net.c, one file
 *
 *     ZT_LOG_ERROR(net, "connect to %s: %s", host, strerror(errno));
 *
 *     zt_logc_set_level("net", ZT_LOG_LEVEL_TRACE);         // tonight, net tells everything
 *
 * A message passes when its level is at most its category's level and at most the global level.
 * One that does not pass costs two loads and two compares, and its arguments are not evaluated. One
 * that passes is one call of the output callback, or one flushed write to standard output while no
 * callback is set: time, thread id, category name, message and a newline, the first three as far as
 * they are switched on (all are off at load). errno is the same in the arguments as it was before.
 *
 * Memory   Nothing is allocated. Category records and their names belong to the application and are
 *          registered by address: they must last as long as the process.
 * Threads  No lock. Logging, and reading or setting levels, switches and the callback, may happen
 *          on any thread at any time. Registration and zt_logc_init belong to program start, before
 *          other threads use categories; nor may zt_logc_set_level_by_prefix run beside them. The
 *          callback runs on the logging thread, with no lock held, and may itself log.
 * Failure  Nothing returns a status. A category that cannot be registered is reported on standard
 *          output and can still be logged through, but no level change by name reaches it.
 */
#ifndef ZT_LOG_H
#define ZT_LOG_H

#include <stdarg.h>
#include <stdbool.h>
#include <stdint.h>
#include <stdio.h>

#include "zt/export.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Levels are plain numbers, larger is more verbose. These are the ones the macros below use; a
 * level of -1 silences a category altogether, errors included. */
enum {
    ZT_LOG_LEVEL_ERROR = 0, /* something failed */
    ZT_LOG_LEVEL_WARN = 1,  /* it went on, but not as it should */
    ZT_LOG_LEVEL_INFO = 2,  /* what the service does, now and then */
    ZT_LOG_LEVEL_DEBUG = 3, /* why it does it */
    ZT_LOG_LEVEL_TRACE = 4, /* every step; the global level at load, which filters none */
};

/* Size of the buffer for zt_log_prepare_time_and_tid. */
enum { ZT_LOG_PREFIX_SIZE = 128 };

/* One log category. */
typedef struct zt_logging_category_t {
    int32_t level;    /* messages up to this level pass; set it through zt_logc_set_level */
    const char *name; /* NUL-terminated; the first 128 bytes tell categories apart */
} zt_logging_category_t;

/* Receives log lines: printf, or anything that is called like it. The result is ignored. */
typedef int (*zt_logc_print_cb_t)(const char *format, ...) ZT_PRINTF(1, 2);

/* ---- The plain logger ---- */

/* Writes a formatted message when level is at most the threshold: to the system log (facility user,
 * severity info, whatever the level) if to_syslog is not 0, otherwise to standard output, flushed.
 * Nothing is added to the message, no newline either. */
ZT_API void zt_log(int to_syslog, uint32_t level, const char *format, ...) ZT_PRINTF(3, 4);

/* Sets the threshold of zt_log. It is 0 at load: messages of level 0 are written. */
ZT_API void zt_log_set_level(uint32_t threshold);

/* ---- Categories ---- */

/* Keeps the registry in categories, an array of max_items pointers that must last as long as the
 * process, in place of the library's own of 512, and sets the global level. Registered categories
 * move along. An array too small for them is reported and changes nothing. The array must not
 * overlap the present one, unless it starts at the same place. A null array has no room at all. */
ZT_API void zt_logc_init(zt_logging_category_t **categories, int32_t max_items,
                         int32_t global_level);

/* Registers a category under its name; its level stays as the record holds it. O(registered). A
 * name that is registered already is reported with a dump of the registry, a full array is reported
 * too; either way the registry stays as it was. A null pointer or name is ignored. */
ZT_API void zt_logging_category_reg(zt_logging_category_t *category);

/* Sets the level of the category with this name, if there is one; a null name is ignored.
 * O(log registered). */
ZT_API void zt_logc_set_level(const char *name, int32_t level);

/* The level of the category with this name, or -1 if there is none or the name is null.
 * O(log registered). */
ZT_API int32_t zt_logc_get_level(const char *name);

/* Sets the level of every category whose name begins with prefix; an empty prefix means all,
 * null none. O(registered). */
ZT_API void zt_logc_set_level_by_prefix(const char *prefix, int32_t level);

/* Sets and reads the level that no category's messages exceed. */
ZT_API void zt_logc_set_global_level(int32_t level);
ZT_API int32_t zt_logc_get_global_level(void);

/* Sets where lines go; null means standard output. */
ZT_API void zt_logc_set_print_cb(zt_logc_print_cb_t print_cb);

/* Prints the global level and every category's position, name and level to standard output. */
ZT_API void zt_logc_dump_categories(void);

/* The registry itself: *categories becomes the array of pointers in byte order of the names, *count
 * their number. Either may be null. Read only; good until the next registration. */
ZT_API void zt_logc_get_categories(zt_logging_category_t ***categories, int32_t *count);

/* ---- Line prefix ---- */

/* Switch the parts of the prefix on and off; all are off at load. */
ZT_API void zt_logc_enable_prefix_time(bool enable);
ZT_API void zt_logc_enable_prefix_tid(bool enable);
ZT_API void zt_logc_enable_prefix_category(bool enable);

/* Writes the prefix into buffer, ZT_LOG_PREFIX_SIZE bytes: local wall-clock time with milliseconds
 * and kernel thread id, as far as they are switched on: "2026-03-05 07:08:09:042 (tid:4711) ". The
 * local time follows changes of TZ and of the system's time zone. errno is preserved. */
ZT_API void zt_log_prepare_time_and_tid(char *buffer);

/* ---- Objects that the macros below read; set them through the functions above ---- */

/* The level that no category's messages exceed. */
ZT_API extern int32_t zt__g_logc_global_level;

/* Where lines go; null means standard output. */
ZT_API extern zt_logc_print_cb_t zt__g_logc_print_cb;

/* Whether lines name their category. */
ZT_API extern bool zt__g_logc_enable_category;

/* ---- Logging through a category ---- */

/* Makes a category that another file defines known to this one. At file scope. */
#define ZT_LOGGING_CATEGORY_DECLARE(name) extern zt_logging_category_t zt__logc_##name

/* Defines a category with its initial level and registers it before main. At file scope, in one
 * file of the program; name is a plain word, and what zt_logc_set_level and the prefix call it. */
#define ZT_LOGGING_CATEGORY_DEFINE(name, initial_level)                           \
    zt_logging_category_t zt__logc_##name = {initial_level, #name};               \
    __attribute__((__constructor__)) static void zt__logc_register_##name(void) { \
        zt_logging_category_reg(&zt__logc_##name);                                \
    }                                                                             \
    struct zt__logc_semicolon

/* Gives the registry room for max_items categories (a constant) and sets the global level. Only a
 * program of more than 512 categories needs it: there it belongs into a function with
 * __attribute__((constructor(101))), which runs before the categories register. */
#define ZT_LOGGING_CATEGORY_INIT(max_items, global_level)        \
    do {                                                         \
        static zt_logging_category_t *zt__logc_array[max_items]; \
        zt_logc_init(zt__logc_array, max_items, global_level);   \
    } while (0)

/* Log one line: ZT_LOG_WARN(net, "lost %d frames", lost). The format is a string literal without a
 * newline at its end, and is checked like printf's; arguments by number ("%1$d") do not work. */
#define ZT_LOG_ERROR(category, ...) \
    ZT__LOG(zt__logc_##category, ZT_LOG_LEVEL_ERROR, __VA_ARGS__, "\n")
#define ZT_LOG_WARN(category, ...) \
    ZT__LOG(zt__logc_##category, ZT_LOG_LEVEL_WARN, __VA_ARGS__, "\n")
#define ZT_LOG_INFO(category, ...) \
    ZT__LOG(zt__logc_##category, ZT_LOG_LEVEL_INFO, __VA_ARGS__, "\n")
#define ZT_LOG_DEBUG(category, ...) \
    ZT__LOG(zt__logc_##category, ZT_LOG_LEVEL_DEBUG, __VA_ARGS__, "\n")
#define ZT_LOG_TRACE(category, ...) \
    ZT__LOG(zt__logc_##category, ZT_LOG_LEVEL_TRACE, __VA_ARGS__, "\n")

/* ---- Inside of the macros ---- */

/* The newline comes in as the last argument, so the variable part is never empty. The callback goes
 * through a variable with a format attribute because Clang does not take it from the type. */
#define ZT__LOG(record, message_level, message, ...)                                     \
    do {                                                                                 \
        if (zt__logc_passes(&(record), message_level)) {                                 \
            ZT_PRINTF(1, 2) const zt_logc_print_cb_t zt__log_print = zt__logc_printer(); \
            const bool zt__log_named = zt__logc_named();                                 \
            char zt__log_prefix[ZT_LOG_PREFIX_SIZE];                                     \
            zt_log_prepare_time_and_tid(zt__log_prefix);                                 \
            zt__log_print("%s%s%s" message "%s", zt__log_prefix,                         \
                          zt__log_named ? (record).name : "", zt__log_named ? ": " : "", \
                          __VA_ARGS__);                                                  \
        }                                                                                \
    } while (0)

static inline bool zt__logc_passes(const zt_logging_category_t *category, int32_t level) {
    return level <= __atomic_load_n(&category->level, __ATOMIC_RELAXED) &&
           level <= __atomic_load_n(&zt__g_logc_global_level, __ATOMIC_RELAXED);
}

/* Where lines go while no callback is set. */
ZT_PRINTF(1, 2) static inline int zt__logc_print_stdout(const char *format, ...) {
    va_list arguments;
    int length;
    va_start(arguments, format);
    length = vprintf(format, arguments);
    va_end(arguments);
    fflush(stdout);
    return length;
}

static inline zt_logc_print_cb_t zt__logc_printer(void) {
    const zt_logc_print_cb_t print_cb = __atomic_load_n(&zt__g_logc_print_cb, __ATOMIC_RELAXED);
    return print_cb ? print_cb : zt__logc_print_stdout;
}

static inline bool zt__logc_named(void) {
    return __atomic_load_n(&zt__g_logc_enable_category, __ATOMIC_RELAXED);
}

#ifdef __cplusplus
}
#endif

#endif /* ZT_LOG_H */
