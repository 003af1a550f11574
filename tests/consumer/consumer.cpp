// A C++ program against the installed library.
// SPDX-License-Identifier: MIT
#include "zt/base.h"

ZT_LOGGING_CATEGORY_DEFINE(consumer, ZT_LOG_LEVEL_INFO);

int main() {
    ZT_LOG_INFO(consumer, "C++ consumer: %s", zt_base_version);
    return zt_code_to_status("OutOfmemory") != ZT_STATUS_OUT_OF_MEMORY;
}
