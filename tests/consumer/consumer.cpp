// A C++ program against the installed library.
// SPDX-License-Identifier: MIT
#include <cstdio>
#include <cstring>

#include "zt/base.h"

ZT_LOGGING_CATEGORY_DEFINE(consumer, ZT_LOG_LEVEL_INFO);

int main(int, char **argv) {
    zt_mmap_t file;
    if (zt_mmap_create(&file, argv[0]) != ZT_STATUS_SUCCESS) return 1;
    if (std::memcmp(file.addr, "\177ELF", 4) != 0) return 2;
    zt_mmap_destroy(&file);
    if (zt_code_to_status("OutOfmemory") != ZT_STATUS_OUT_OF_MEMORY) return 3;
    ZT_LOG_INFO(consumer, "C++ consumer: %s", zt_base_version);
    return 0;
}
