/* zt/mmap.h - a whole file mapped read-only.
 *
 * SPDX-License-Identifier: MIT
 *
 * The contents are a snapshot in spirit only: whether later changes of the file show is up to the
 * system, and reading past the end of a file that was truncated meanwhile is a fault (SIGBUS), as
 * is any write through addr.
 *
 * Memory   The caller owns the record. A mapped one holds a descriptor and a mapping until
 *          zt_mmap_destroy. The descriptor is inherited by child processes, also across exec.
 * Threads  Create and destroy must not race on one record; any number of threads may read the
 *          mapping.
 * Failure  The errno of the failing system call, translated by zt_get_status_by_errno; the record
 *          is left empty.
 */
#ifndef ZT_MMAP_H
#define ZT_MMAP_H

#include <stdint.h>

#include "zt/export.h"
#include "zt/status.h"

#ifdef __cplusplus
extern "C" {
#endif

/* A mapped file, or none; written by the operations below only. */
typedef struct zt_mmap_t {
    int32_t fd;    /* the open file, always above 0; -1: none */
    void *addr;    /* first byte of the mapping; null: none */
    uint64_t size; /* bytes in the file and in the mapping when it was made */
} zt_mmap_t;

/* Opens and maps the file at path. The record may hold anything before: what is in it is neither
 * unmapped nor closed. Blocks as open does: on a FIFO until somebody opens it for writing.
 *
 * InvalidArgument (7): the file is empty, or record is null.  NotExist (16): no such file, or one
 * of a kind that cannot be mapped, such as a directory.  NotPermitted (31): no right to read it.
 * BadAddress (32): path is null.  TooMany (17): out of descriptors.  OutOfmemory (8): out of
 * address space.  Others by the errno map. */
ZT_API ZT_MUST_CHECK zt_status_t zt_mmap_create(zt_mmap_t *record, const char *path);

/* Unmaps and closes what the record holds and leaves it empty. An empty record, also a zeroed one,
 * and null are left alone. */
ZT_API void zt_mmap_destroy(zt_mmap_t *record);

#ifdef __cplusplus
}
#endif

#endif /* ZT_MMAP_H */
