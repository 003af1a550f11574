// Whole files mapped read-only.
// SPDX-License-Identifier: MIT
#include "zt/mmap.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <type_traits>

static_assert(std::is_standard_layout_v<zt_mmap_t> && sizeof(zt_mmap_t) == 24);
static_assert(offsetof(zt_mmap_t, fd) == 0);
static_assert(offsetof(zt_mmap_t, addr) == 8);
static_assert(offsetof(zt_mmap_t, size) == 16);
static_assert(sizeof(off_t) == 8 && sizeof(size_t) == 8, "sizes are 64-bit throughout");

namespace {

// Never descriptor 0, which zt_mmap_destroy takes for none: in a process that runs without a
// standard input the file moves above it.
int open_above_0(const char *path) {
    const int fd = open(path, O_RDONLY);
    if (fd != 0) return fd;
    const int above = fcntl(fd, F_DUPFD, 1);
    const int error = errno;
    close(fd);
    errno = error;
    return above;
}

// False leaves the reason in errno.
bool open_and_map(zt_mmap_t *record, const char *path) {
    record->fd = open_above_0(path);
    if (record->fd < 0) return false;
    struct stat file;
    if (fstat(record->fd, &file) != 0) return false;
    const auto size = static_cast<uint64_t>(file.st_size);
    void *addr = mmap(nullptr, size, PROT_READ, MAP_PRIVATE, record->fd, 0);
    if (addr == MAP_FAILED) return false;
    record->addr = addr;
    record->size = size;
    return true;
}

}  // namespace

zt_status_t zt_mmap_create(zt_mmap_t *record, const char *path) {
    if (record == nullptr) return ZT_STATUS_INVALID_ARGUMENT;
    *record = {-1, nullptr, 0};
    if (open_and_map(record, path)) return ZT_STATUS_SUCCESS;
    const zt_status_t status = zt_get_status_by_errno(errno);
    zt_mmap_destroy(record);
    return status;
}

void zt_mmap_destroy(zt_mmap_t *record) {
    if (record == nullptr) return;
    if (record->addr != nullptr) {
        munmap(record->addr, record->size);
        record->addr = nullptr;
    }
    if (record->fd > 0) {
        close(record->fd);
        record->fd = -1;
    }
}
