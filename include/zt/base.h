/* zt/base.h - every public header of libzt_base.
 *
 * SPDX-License-Identifier: MIT
 */
#ifndef ZT_BASE_H
#define ZT_BASE_H

/* From the ground up, not by name. */
/* clang-format off */
#include "zt/export.h"
#include "zt/list.h"
#include "zt/status.h"
#include "zt/version.h"
#include "zt/memory.h"
#include "zt/string.h"
#include "zt/log.h"
#include "zt/hex.h"
#include "zt/time.h"
#include "zt/mutex.h"
#include "zt/ids.h"
#include "zt/event.h"
#include "zt/thread.h"
#include "zt/backtrace.h"
#include "zt/mmap.h"
#include "zt/queue.h"
#include "zt/ring_buf.h"
#include "zt/rbtree.h"
#include "zt/heap.h"
#include "zt/heap_window.h"
#include "zt/id_pool.h"
#include "zt/list_sort.h"
#include "zt/mem_heap.h"
#include "zt/ntf_mgr.h"
#include "zt/timer_mgr.h"
#include "zt/watchdog.h"
#include "zt/ptz.h"
#include "zt/ptz_internal.h"
#include "zt/ini.h"
#include "zt/json_fmt.h"
#include "zt/base64.h"
#include "zt/crc.h"
#include "zt/md5.h"
#include "zt/sha.h"
#include "zt/fourcc.h"
#include "zt/hdmi_info_frame.h"
#include "zt/tsw.h"
#include "zt/numeric.h"
#include "zt/flash.h"
/* clang-format on */

#endif /* ZT_BASE_H */
