// Kernel ids of the calling thread and process.
// SPDX-License-Identifier: MIT
#include "zt/ids.h"

#include <unistd.h>

int64_t zt_gettid() { return gettid(); }

int64_t zt_getpid() { return getpid(); }
