/* zt/ids.h - kernel ids of the calling thread and process.
 *
 * SPDX-License-Identifier: MIT
 *
 * Threads  Safe on any thread and in signal handlers.
 * Failure  None.
 */
#ifndef ZT_IDS_H
#define ZT_IDS_H

#include <stdint.h>

#include "zt/export.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The caller's kernel thread id, as top, /proc and gdb show it. */
ZT_API int64_t zt_gettid(void);

/* The process id. */
ZT_API int64_t zt_getpid(void);

#ifdef __cplusplus
}
#endif

#endif /* ZT_IDS_H */
