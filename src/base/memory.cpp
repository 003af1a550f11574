// The C library's allocator and memory functions under the library's own names.
// SPDX-License-Identifier: MIT
#include "zt/memory.h"

#include <cstdlib>
#include <cstring>

void *zt_malloc(uint32_t size) { return std::malloc(size); }

void *zt_zalloc(uint32_t size) { return std::calloc(1, size); }

void zt_free(void *ptr) { std::free(ptr); }

void *zt_memmove(void *destination, const void *source, uint32_t count) {
    return std::memmove(destination, source, count);
}

void *zt_memcpy(void *destination, const void *source, uint32_t count) {
    return std::memcpy(destination, source, count);
}

void *zt_memset(void *destination, int value, uint32_t count) {
    return std::memset(destination, value, count);
}

int zt_memcmp(const void *first, const void *second, uint32_t count) {
    return std::memcmp(first, second, count);
}
