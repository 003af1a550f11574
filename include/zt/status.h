/* zt/status.h - result codes: numbers, names, errno translation and the application's own codes.
 *
 * SPDX-License-Identifier: MIT
 *
 * Every operation that can fail returns a zt_status_t: 0 for success, a positive number that names
 * the failure otherwise, never negated.
 *
 * Memory   Returned texts are never freed by the caller. Built-in texts live as long as the
 *          process; texts of registered rows are the registrant's own pointers.
 * Threads  No lock. Look-ups only read and may run on any thread at any time. Registration belongs
 *          to program start: it must not run beside a look-up or another registration.
 * Failure  Unknown numbers and names have fixed answers; nothing here fails.
 */
#ifndef ZT_STATUS_H
#define ZT_STATUS_H

#include <stdint.h>

#include "zt/export.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The result of an operation: one of the numbers below, or one that the application registered. */
typedef int32_t zt_status_t;

/* The built-in statuses: what each says, and the errno values that translate to it. Each constant is
 * the status's code name in upper snake case. This library returns some of them only; the others are
 * for services to use. 55 has no name here: it is what ENETUNREACH translates to, and is free for an
 * application to describe. */
enum {
    ZT_STATUS_SUCCESS = 0,              /* it worked */
    ZT_STATUS_PENDING = 1,              /* begun, the result comes later */
    ZT_STATUS_TIMEOUT = 2,              /* not within the time given; ETIME, ETIMEDOUT */
    ZT_STATUS_INTERRUPTED = 3,          /* a signal arrived first; EINTR */
    ZT_STATUS_TRY_AGAIN = 4,            /* not now: nothing there, or no room yet; EAGAIN */
    ZT_STATUS_NOT_IMPLEMENTED = 5,      /* this build cannot do it */
    ZT_STATUS_UNKNOWN_ERROR = 6,        /* an error without a number of its own */
    ZT_STATUS_INVALID_ARGUMENT = 7,     /* null or out of range; EINVAL */
    ZT_STATUS_OUT_OF_MEMORY = 8,        /* no memory, or more than can be asked for; ENOMEM */
    ZT_STATUS_UNSUPPORTED = 9,          /* this object cannot do it */
    ZT_STATUS_FILE_BUSY = 10,           /* the program file is being run; ETXTBSY */
    ZT_STATUS_DEVICE_BUSY = 11,         /* somebody else holds it; EBUSY */
    ZT_STATUS_DEVICE_LOST = 12,         /* the device has gone */
    ZT_STATUS_IO_ERROR = 13,            /* the device or the file system failed; EIO */
    ZT_STATUS_READ_ERROR = 14,          /* reading failed */
    ZT_STATUS_WRITE_ERROR = 15,         /* writing failed */
    ZT_STATUS_NOT_EXIST = 16,           /* not there; ENOENT, ESRCH, ENXIO, EBADF, ECHILD, ENODEV */
    ZT_STATUS_TOO_MANY = 17,            /* no more can be opened or linked; EMFILE, EMLINK */
    ZT_STATUS_TOO_LARGE = 18,           /* too long or too big for its place; E2BIG, EFBIG */
    ZT_STATUS_OVERFLOW = 19,            /* the system's file table is full; ENFILE */
    ZT_STATUS_UNDERFLOW = 20,           /* fewer than expected */
    ZT_STATUS_FORMAT_ERROR = 21,        /* not in the expected format; ENOEXEC */
    ZT_STATUS_FILE_EXISTS = 22,         /* the name, number or subscription is taken; EEXIST */
    ZT_STATUS_FILE_TYPE_ERROR = 23,     /* the wrong kind of file; ENOTTY */
    ZT_STATUS_DEVICE_TYPE_ERROR = 24,   /* the wrong kind of device; ENOTBLK */
    ZT_STATUS_IS_DIRECTORY = 25,        /* a directory where a file is needed; EISDIR */
    ZT_STATUS_READ_ONLY = 26,           /* the file system cannot be written; EROFS */
    ZT_STATUS_OUT_OF_RANGE = 27,        /* a number beyond its range; EDOM, ERANGE */
    ZT_STATUS_BROKEN_PIPE = 28,         /* nobody reads the other end; EPIPE */
    ZT_STATUS_NO_SPACE = 29,            /* it does not fit the buffer or the device; ENOSPC */
    ZT_STATUS_NOT_DIRECTORY = 30,       /* a file where a directory is needed; ENOTDIR */
    ZT_STATUS_NOT_PERMITTED = 31,       /* the caller may not do it; EPERM, EACCES */
    ZT_STATUS_BAD_ADDRESS = 32,         /* a pointer to nowhere; EFAULT */
    ZT_STATUS_SEEK_ERROR = 33,          /* a file without positions; ESPIPE */
    ZT_STATUS_CROSS_DEVICE_LINK = 34,   /* source and target are on two file systems; EXDEV */
    ZT_STATUS_NOT_INITIALIZED = 35,     /* never created */
    ZT_STATUS_AUTH_FAILED = 36,         /* wrong name or password */
    ZT_STATUS_NOT_LOGGED_IN = 37,       /* no session */
    ZT_STATUS_WRONG_STATE = 38,         /* not possible in the state the object is in */
    ZT_STATUS_MISMATCH = 39,            /* the type or the data is not what it should be */
    ZT_STATUS_VERIFY_FAILED = 40,       /* a check of what was written or received failed */
    ZT_STATUS_CONSTRAINT_VIOLATIN = 41, /* a rule of the data was broken; spelt as its code name */
    ZT_STATUS_CANCELED = 42,            /* given up on request */
    ZT_STATUS_IN_PROGRESS = 43,         /* going on already; EINPROGRESS */
    ZT_STATUS_CONNECTION_REFUSED = 44,  /* nobody listens there; ECONNREFUSED */
    ZT_STATUS_CONNECTION_RESET = 45,    /* the other side broke the connection; ECONNRESET */
    ZT_STATUS_ADDRESS_IN_USE = 46,      /* the address is taken; EADDRINUSE */
    ZT_STATUS_NO_RESPONSE = 47,         /* the other side does not answer */
    ZT_STATUS_INFO_CHANGED = 48,        /* what was known is out of date */
    ZT_STATUS_INVALID_DATA = 49,        /* the data makes no sense */
    ZT_STATUS_NEED_MORE_DATA = 50,      /* too little data for an answer */
    ZT_STATUS_NO_BUFFER = 51,           /* no buffer is free */
    ZT_STATUS_BUFFER_TOO_SMALL = 52,    /* the buffer given is too small */
    ZT_STATUS_BUFFER_IS_EMPTY = 53,     /* nothing to take */
    ZT_STATUS_BUFFER_IS_FULL = 54,      /* no room to put */
};

/* One row of a status table. */
typedef struct zt_status_entry_t {
    zt_status_t status;      /* the number; negative numbers are allowed in registrations */
    const char *code;        /* code name, NUL-terminated; built-in ones are one CamelCase word */
    const char *description; /* text for people, NUL-terminated */
} zt_status_entry_t;

/* The description of a status: built-in rows first, then registered ones in byte order of their
 * code names. "Unknown status code" when no row has the number. */
ZT_API const char *zt_get_status_string(zt_status_t status);

/* The code name of a status, searched in the same order. "Unknown" when no row has the number. */
ZT_API const char *zt_get_status_code(zt_status_t status);

/* The status with exactly this code name (case matters), or UnknownError (6). code must not be
 * null. A binary search. */
ZT_API zt_status_t zt_code_to_status(const char *code);

/* The status for a Linux errno value. Values without a status of their own, values above 115 and
 * negative values give UnknownError (6); ENETUNREACH gives 55. */
ZT_API ZT_CONST zt_status_t zt_get_status_by_errno(int32_t errno_value);

/* Adds count rows to the process-wide table. The rows are copied; their two texts are not, and must
 * stay valid for the rest of the process.
 *
 * A row whose number or code name is taken, by a built-in or an earlier registered row, is a clash:
 * the first one is reported on standard output and nothing of the batch is registered. Rows of one
 * batch are not compared with one another. When memory runs out the batch is dropped whole, without
 * a message. A count of 0, or a null array, changes nothing. */
ZT_API void zt_status_extend_register(const zt_status_entry_t *rows, uint32_t count);

#ifdef __cplusplus
}
#endif

#endif /* ZT_STATUS_H */
