/* The log macros as C sees them.
 * SPDX-License-Identifier: MIT */
#include <errno.h>

#include "zt/log.h"

ZT_LOGGING_CATEGORY_DEFINE(sample_c, ZT_LOG_LEVEL_INFO);

/* Logs one line of each level: errno and a count. */
void log_all_levels(int *count);
void log_all_levels(int *count) {
    ZT_LOG_ERROR(sample_c, "%d %d", errno, ++*count);
    ZT_LOG_WARN(sample_c, "%d %d", errno, ++*count);
    ZT_LOG_INFO(sample_c, "%d %d", errno, ++*count);
    ZT_LOG_DEBUG(sample_c, "%d %d", errno, ++*count);
    ZT_LOG_TRACE(sample_c, "%d %d", errno, ++*count);
}
