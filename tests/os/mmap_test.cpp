// SPDX-License-Identifier: MIT
#include "zt/mmap.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>

namespace {

struct Row {
    const char *path;  // null: a fresh file of this size that ends in 'z'
    off_t size;
    bool without_stdin;  // so that the file would come out as descriptor 0
    zt_status_t want;
};

const Row kRows[] = {
    {nullptr, 1, false, ZT_STATUS_SUCCESS},
    {nullptr, 4096, true, ZT_STATUS_SUCCESS},
    {nullptr, 0x1'0000'0001, false, ZT_STATUS_SUCCESS},
    {nullptr, 0, true, ZT_STATUS_INVALID_ARGUMENT},
    {"/no such file", 0, false, ZT_STATUS_NOT_EXIST},
};

TEST(MappedFile, ComesAndGoesWhole) {
    const int spare_stdin = dup(STDIN_FILENO);
    for (const Row &row : kRows) {
        SCOPED_TRACE(row.size);
        const int fd = memfd_create("file", 0);
        EXPECT_EQ(ftruncate(fd, row.size), 0);
        if (row.size > 0) pwrite(fd, "z", 1, row.size - 1);
        const std::string path = row.path ? row.path : "/proc/self/fd/" + std::to_string(fd);
        if (row.without_stdin) close(STDIN_FILENO);

        char not_ours[4096] = {};
        zt_mmap_t file = {fd, not_ours, sizeof not_ours};  // stale bytes: never touched
        EXPECT_EQ(zt_mmap_create(&file, path.c_str()), row.want);
        if (row.want == ZT_STATUS_SUCCESS) {
            EXPECT_TRUE(file.fd > 0 && fcntl(file.fd, F_GETFD) == 0) << "lives through an exec";
            EXPECT_EQ(file.size, static_cast<uint64_t>(row.size));
            EXPECT_EQ(static_cast<char *>(file.addr)[row.size - 1], 'z');
            zt_mmap_destroy(&file);
        }
        zt_mmap_destroy(&file);
        EXPECT_TRUE(file.fd == -1 && file.addr == nullptr);
        EXPECT_EQ(dup2(spare_stdin, STDIN_FILENO) + not_ours[0], 0);
        EXPECT_EQ(dup(fd), fd + 1) << "a descriptor was lost";
        close(fd + 1), close(fd);
    }
    close(spare_stdin);
}

}  // namespace
