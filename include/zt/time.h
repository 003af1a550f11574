/* zt/time.h - the library's time base: the kernel's raw monotonic clock.
 *
 * SPDX-License-Identifier: MIT
 *
 * CLOCK_MONOTONIC_RAW never jumps when the wall clock is set and is never slewed. Its zero point is
 * arbitrary (boot time), so only differences between readings mean anything. All time-outs and
 * keep-alives of the library are measured with zt_time_get_ms.
 *
 * Threads  Safe on any thread and in signal handlers; one clock read and integer arithmetic.
 * Failure  None.
 */
#ifndef ZT_TIME_H
#define ZT_TIME_H

#include <stdint.h>

#include "zt/export.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Milliseconds, truncated. */
ZT_API uint64_t zt_time_get_ms(void);

/* Microseconds, truncated. */
ZT_API uint64_t zt_time_get_us(void);

/* Nanoseconds. */
ZT_API uint64_t zt_time_get_ns(void);

#ifdef __cplusplus
}
#endif

#endif /* ZT_TIME_H */
