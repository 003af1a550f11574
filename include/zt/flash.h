/* zt/flash.h - checks an access to flash memory against the device's geometry.
 *
 * SPDX-License-Identifier: MIT
 *
 * To be asked before an erase, a read or a write is passed to the device: what these checks accept
 * starts on a unit of the device, is not empty and ends within the device. Whether the length must
 * be a multiple of the unit, too, is for the caller to know.
 *
 * Memory   Both records are the caller's and only read.
 * Threads  Safe on any thread; no state.
 * Failure  None. Pointers are not checked.
 */
#ifndef ZT_FLASH_H
#define ZT_FLASH_H

#include <stdbool.h>
#include <stdint.h>

#include "zt/export.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The geometry of a device. All fields are written by the caller. */
typedef struct zt_flash_info_t {
    uint8_t reserved[8]; /* the caller's, not read here */
    uint64_t size;       /* of the device in bytes */
    uint32_t erase_size; /* bytes erased at a time, a power of two */
    uint32_t rw_size;    /* bytes read or written at a time, a power of two */
} zt_flash_info_t;

/* An access. Both fields are written by the caller. */
typedef struct zt_flash_range_t {
    uint32_t offset; /* in bytes from the start of the device */
    uint32_t length; /* in bytes */
} zt_flash_range_t;

/* True when the range is not empty, starts on an erase block and ends within the device. With an
 * erase_size of 0 only offset 0 starts on a block. */
ZT_API bool zt_flash_erase_is_valid(const zt_flash_info_t *info, const zt_flash_range_t *range);

/* The same with units of rw_size, for reads and writes. */
ZT_API bool zt_flash_rw_is_valid(const zt_flash_info_t *info, const zt_flash_range_t *range);

#ifdef __cplusplus
}
#endif

#endif /* ZT_FLASH_H */
