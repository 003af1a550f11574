/* zt/ptz.h - pan-tilt-zoom commands from up to 16 clients to one camera driver: the clients' side.
 *
 * SPDX-License-Identifier: MIT
 *
 * A client registers, sends commands (a code and a block of 144 bytes) and hears through its callback
 * how they ended. Every command is checked against the capability that the driver has published before
 * it is queued. The driver's side is zt/ptz_internal.h; both share one zt_ptz_t in one process.
 *
 * Memory   The application owns the handle. The channel behind it is allocated at creation, and nothing
 *          is allocated after that. Blocks and messages are copied; a message is valid only during the
 *          callback.
 * Threads  Every call locks the channel's recursive mutex and may run on any thread, but for zt_ptz_init
 *          and zt_ptz_destroy, which nothing may run beside. Client callbacks run with the lock held,
 *          on the thread of the driver's call: they may call the channel again (send, register,
 *          unregister anybody), but must not wait for another thread that needs the channel.
 * Failure  Nothing has changed. A handle without a channel gives WrongState (38).
 */
#ifndef ZT_PTZ_H
#define ZT_PTZ_H

#include <stdint.h>

#include "zt/export.h"
#include "zt/list.h"
#include "zt/status.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Clients that can be registered at the same time. */
enum { ZT_PTZ_MAX_CLIENTS = 16 };

/* Command codes with checks of their own; the block's layout goes by the code, see zt_ptz_params_t. Any
 * other code is queued unchecked. */
enum {
    ZT_PTZ_COMMAND_AXES = 0x100,     /* up to two axes, each with a mode and a value */
    ZT_PTZ_COMMAND_FREE = 0x101,     /* needs a block, nothing in it is checked */
    ZT_PTZ_COMMAND_VALUE = 0x102,    /* one value with a mode */
    ZT_PTZ_COMMAND_SELECTED = 0x103, /* one value with a mode, by selector */
    ZT_PTZ_COMMAND_GROUP = 0x104,    /* one or three values with modes, by selector */
    ZT_PTZ_COMMAND_PAIR = 0x105,     /* two values, by selector */
    ZT_PTZ_COMMAND_INDEX = 0x106     /* an operation on a numbered place, by name or value */
};

/* Bits of every command code. */
enum {
    ZT_PTZ_COMMAND_NEEDS_PARAMS = 0x100, /* a block must come with the command */
    ZT_PTZ_COMMAND_PRIVATE = 0x200       /* the result goes to its sender, and to nobody else */
};

/* Modes: which of a group's three ranges a value is checked against. Others pass unchecked. */
enum {
    ZT_PTZ_MODE_NONE = 0, /* no request: the value is not looked at */
    ZT_PTZ_MODE_1 = 1,    /* the first range */
    ZT_PTZ_MODE_2 = 2,    /* the second range */
    ZT_PTZ_MODE_3 = 3     /* the third range */
};

/* Selectors with checks; under others nothing is checked. */
enum {
    ZT_PTZ_SELECTED_VALUE = 4,  /* of ZT_PTZ_COMMAND_SELECTED */
    ZT_PTZ_GROUP_ONE = 0x200,   /* of ZT_PTZ_COMMAND_GROUP: the block `one` */
    ZT_PTZ_GROUP_THREE = 0x400, /* of ZT_PTZ_COMMAND_GROUP: the blocks `three` */
    ZT_PTZ_PAIR_VALUES = 0x20   /* of ZT_PTZ_COMMAND_PAIR */
};

/* Operations of ZT_PTZ_COMMAND_INDEX that the channel treats in a way of their own. */
enum {
    ZT_PTZ_INDEX_NAME = 2,   /* the notice to other clients carries the name */
    ZT_PTZ_INDEX_SILENT = 4, /* other clients get no notice */
    ZT_PTZ_INDEX_VALUE = 8   /* the value is checked */
};

/* Message types. */
enum {
    ZT_PTZ_MSG_RESULT = 0,    /* a command of this client's has ended */
    ZT_PTZ_MSG_INDEX = 3,     /* another client's ZT_PTZ_COMMAND_INDEX has succeeded */
    ZT_PTZ_MSG_CAPABILITY = 4 /* the capability has changed: zt_ptz_get_capability tells */
};

/* A motion and the values it takes, both ends included. Not-a-number is within no range. */
typedef struct zt_ptz_range_t {
    uint8_t supported;  /* 0: every request is refused */
    uint8_t padding[3]; /* not looked at */
    float min; /* smallest value; the unit is the driver's choice, as for all values here */
    float max; /* largest value */
} zt_ptz_range_t;

/* The same for two values at a time. */
typedef struct zt_ptz_pair_range_t {
    uint8_t supported;  /* 0: every request is refused */
    uint8_t padding[3]; /* not looked at */
    float min1;         /* smallest first value */
    float max1;         /* largest first value */
    float min2;         /* smallest second value */
    float max2;         /* largest second value */
} zt_ptz_pair_range_t;

/* What the camera can do, 336 bytes; written by the driver. Of three ranges the first is for mode 1. */
typedef struct zt_ptz_capability_t {
    zt_ptz_range_t first_axis[3];     /* 0x000: ZT_PTZ_COMMAND_AXES */
    zt_ptz_range_t second_axis[3];    /* 0x024: ZT_PTZ_COMMAND_AXES */
    zt_ptz_range_t value[3];          /* 0x048: ZT_PTZ_COMMAND_VALUE */
    uint32_t reserved1;               /* 0x06c: not looked at */
    zt_ptz_range_t selected[3];       /* 0x070: ZT_PTZ_COMMAND_SELECTED */
    uint32_t reserved2;               /* 0x094: not looked at */
    zt_ptz_range_t group_one[3];      /* 0x098: ZT_PTZ_COMMAND_GROUP, ZT_PTZ_GROUP_ONE */
    zt_ptz_range_t group_three[3][3]; /* 0x0bc, 0x0e0, 0x104: ZT_PTZ_GROUP_THREE, by block */
    uint32_t reserved3;               /* 0x128: not looked at */
    zt_ptz_pair_range_t pair;         /* 0x12c: ZT_PTZ_COMMAND_PAIR */
    zt_ptz_range_t index_value;       /* 0x140: ZT_PTZ_INDEX_VALUE; supported is not looked at */
    uint32_t index_limit;             /* 0x14c: indices of ZT_PTZ_COMMAND_INDEX are below it */
} zt_ptz_capability_t;

/* A mode and its value, part of several blocks. */
typedef struct zt_ptz_move_t {
    uint32_t mode;  /* ZT_PTZ_MODE_... */
    uint32_t other; /* not looked at */
    float value;    /* of the motion, in the driver's unit */
} zt_ptz_move_t;

/* The block of a command, 144 bytes. What the channel does not look at passes on to the driver. */
typedef union zt_ptz_params_t {
    struct {
        zt_ptz_move_t first;  /* within first_axis */
        zt_ptz_move_t second; /* within second_axis */
    } axes;                   /* ZT_PTZ_COMMAND_AXES */
    zt_ptz_move_t value;      /* ZT_PTZ_COMMAND_VALUE */
    struct {
        uint32_t selector; /* ZT_PTZ_SELECTED_VALUE: the value is checked */
        uint32_t mode;     /* ZT_PTZ_MODE_... */
        float value;       /* within selected */
    } selected;            /* ZT_PTZ_COMMAND_SELECTED */
    struct {
        uint32_t selector;      /* ZT_PTZ_GROUP_... */
        zt_ptz_move_t one;      /* within group_one */
        zt_ptz_move_t three[3]; /* each within its ranges of group_three */
    } group;                    /* ZT_PTZ_COMMAND_GROUP */
    struct {
        uint32_t selector; /* ZT_PTZ_PAIR_VALUES: both values are checked */
        float value1;      /* from min1 to max1 */
        float value2;      /* from min2 to max2 */
    } pair;                /* ZT_PTZ_COMMAND_PAIR */
    struct {
        uint32_t operation; /* ZT_PTZ_INDEX_..., or any other, which passes on */
        char name[128];     /* NUL-terminated */
        float value;        /* with ZT_PTZ_INDEX_VALUE: within index_value */
        uint32_t index;     /* of the place, below index_limit whatever the operation */
    } index;                /* ZT_PTZ_COMMAND_INDEX */
    uint8_t bytes[144];     /* any other code */
} zt_ptz_params_t;

/* How a command ended, 40 bytes; written by the driver. */
typedef struct zt_ptz_result_t {
    int32_t status;     /* 0: the command has succeeded */
    uint32_t code;      /* the command's code */
    uint32_t other;     /* passed on */
    uint32_t client_id; /* who sent the command */
    uint8_t data[24];   /* passed on */
} zt_ptz_result_t;

/* What a client's callback gets, 144 bytes; every byte without a meaning is 0. */
typedef struct zt_ptz_msg_t {
    uint32_t type;     /* ZT_PTZ_MSG_... */
    uint32_t reserved; /* 0 */
    union {
        zt_ptz_result_t result; /* ZT_PTZ_MSG_RESULT: as the driver gave it */
        struct {
            uint32_t reserved; /* 0 */
            char name[128];    /* with ZT_PTZ_INDEX_NAME, NUL-terminated; else empty */
            uint32_t index;    /* as in the command */
        } index;               /* ZT_PTZ_MSG_INDEX */
    } u;                       /* by type; ZT_PTZ_MSG_CAPABILITY uses none */
} zt_ptz_msg_t;

/* The handle. The driver sets init_capability, command_ready and release before it creates the channel;
 * the results of the last two are ignored. */
typedef struct zt_ptz_t {
    struct zt_ptz_channel_t *priv; /* the channel; null while there is none */
    void *reserved;                /* not looked at; null after zt_ptz_init */
    /* Completes the default capability; a status other than 0 aborts the creation. */
    zt_status_t (*init_capability)(struct zt_ptz_t *ptz, zt_ptz_capability_t *capability);
    /* A command has been queued. Runs on the sender's thread with the lock held: wake the driver's
     * thread, or take the command at once. */
    void (*command_ready)(struct zt_ptz_t *ptz);
    /* The channel is about to be destroyed. */
    void (*release)(struct zt_ptz_t *ptz);
    /* The first member of the oldest queued command's record, or the list's head when there is none; no
     * lock is taken. For debuggers. Null without a channel. */
    zt_list_head_t *(*peek_command)(struct zt_ptz_t *ptz);
    /* Drops every queued command; zt_ptz_clear calls it. */
    void (*clear_commands)(struct zt_ptz_t *ptz);
} zt_ptz_t;

/* A client's callback: a message for it, which is valid during the call, and the user pointer of its
 * registration. What it may do is said at the top, under Threads. */
typedef void (*zt_ptz_client_cb_t)(zt_ptz_t *ptz, const zt_ptz_msg_t *msg, void *user);

/* Zeroes the handle and sets peek_command and clear_commands: the first call on every handle. */
ZT_API void zt_ptz_init(zt_ptz_t *ptz);

/* Destroys the channel, if there is one: calls release, drops queued commands and clients without
 * notice. Null is ignored. Clients and driver must have stopped using the handle. */
ZT_API void zt_ptz_destroy(zt_ptz_t *ptz);

/* Registers a client: *client_id becomes its id, never given twice in a process. Of the name (may be
 * null) 63 characters are kept. cb may be null: the client then hears nothing.
 * TryAgain (4): 16 clients are registered; *client_id is untouched.  InvalidArgument (7): client_id is
 * null.  WrongState (38): no channel. */
ZT_API ZT_MUST_CHECK zt_status_t zt_ptz_register(zt_ptz_t *ptz, uint32_t *client_id,
                                                 const char *name, zt_ptz_client_cb_t cb,
                                                 void *user);

/* Ends a registration; unknown ids are ignored. Commands of the client's that are queued stay queued.
 * When the call returns no callback of the client's is running, unless it is the caller. */
ZT_API void zt_ptz_unregister(zt_ptz_t *ptz, uint32_t client_id);

/* Queues a command. client_id is not checked: a result for an id that is not registered reaches nobody.
 * params may be null for codes without ZT_PTZ_COMMAND_NEEDS_PARAMS: the driver then gets zeros. *seq
 * (when seq is not null) becomes the command's number, unique in the process and growing; it is written
 * before the driver hears of the command.
 * InvalidArgument (7): params is missing, or not within the capability.  TryAgain (4): the queue is
 * full.  WrongState (38): no channel. */
ZT_API ZT_MUST_CHECK zt_status_t zt_ptz_send_command(zt_ptz_t *ptz, uint32_t client_id,
                                                     uint32_t code, const zt_ptz_params_t *params,
                                                     uint32_t *seq);

/* The current capability.
 * InvalidArgument (7): capability is null.  WrongState (38): no channel; the record is all zero then. */
ZT_API zt_status_t zt_ptz_get_capability(zt_ptz_t *ptz, zt_ptz_capability_t *capability);

/* The number of registered clients, 0 to 16, or 38, WrongState, without a channel. */
ZT_API int32_t zt_ptz_get_register_num(zt_ptz_t *ptz);

/* Drops every queued command; nobody is told. WrongState (38): no channel. */
ZT_API zt_status_t zt_ptz_clear(zt_ptz_t *ptz);

#ifdef __cplusplus
}
#endif

#endif /* ZT_PTZ_H */
