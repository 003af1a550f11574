/* zt/version.h - which build of the library is running.
 *
 * SPDX-License-Identifier: MIT
 */
#ifndef ZT_VERSION_H
#define ZT_VERSION_H

#include "zt/export.h"

#ifdef __cplusplus
extern "C" {
#endif

/* "Version: " followed by the release and a seven-digit build identifier. Read-only,
 * NUL-terminated, valid for the life of the process. Print it in bug reports. */
ZT_API extern const char *const zt_base_version;

#ifdef __cplusplus
}
#endif

#endif /* ZT_VERSION_H */
