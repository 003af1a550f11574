// SPDX-License-Identifier: MIT
#include "zt/mmap.h"

#include "support/test.hpp"

// Files of a size that end in 'z', with standard input closed for even sizes, so that the file would
// come out as descriptor 0; -1: no such file.
TEST(MappedFile, ComesAndGoesWhole) {
    const int spare_stdin = dup(STDIN_FILENO);
    const std::pair<off_t, zt_status_t> rows[] = {
        {1, 0}, {4096, 0}, {0x1'0000'0001, 0}, {0, ZT_STATUS_INVALID_ARGUMENT}, {-1, ZT_STATUS_NOT_EXIST}};
    for (const auto &[size, want] : rows) {
        SCOPED_TRACE(size);
        const int fd = memfd_create("file", 0);
        EXPECT_EQ(size < 0 || ftruncate(fd, size) == 0, true);
        if (size > 0) pwrite(fd, "z", 1, size - 1);
        const std::string path = size < 0 ? "/no such file" : "/proc/self/fd/" + std::to_string(fd);
        if (size % 2 == 0) close(STDIN_FILENO);

        alignas(4096) static char not_ours[4096];
        zt_mmap_t file = {fd, not_ours, sizeof not_ours};  // stale bytes: never touched
        EXPECT_EQ(zt_mmap_create(&file, path.c_str()), want);
        if (want == ZT_STATUS_SUCCESS) {
            EXPECT_TRUE(file.fd > 0 && fcntl(file.fd, F_GETFD) == 0) << "lives through an exec";
            EXPECT_EQ(file.size, static_cast<uint64_t>(size));
            EXPECT_EQ(static_cast<char *>(file.addr)[size - 1], 'z');
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
