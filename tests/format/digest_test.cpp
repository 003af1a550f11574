// CRCs, MD5 and SHA-256 on every kernel: lengths to 4,000 at changing alignment against digests of all
// the digests, made with Python's hashlib and binascii; pieces; the vectors that those do not cover.
// SPDX-License-Identifier: MIT

#include "zt/crc.h"
#include "zt/md5.h"
#include "zt/sha.h"

#include "format/crc_kernels.hpp"
#include "format/sha256_kernels.hpp"
#include "support/test.hpp"

// MD5, SHA-256 and both CRCs of every length to 300 and some to 4,000, as text, have the MD5 that
// Python's hashlib and binascii give; fed in random pieces they are the same. The data ends, or
// starts, at an inaccessible page.
static void expect_digests_of_python() {
    std::mt19937 random(1);
    const Guarded room;
    std::string all;
    char text[65] = {}, sha[65] = {};
    for (uint32_t length = 0; length <= 4000; length += length < 300 ? 1 : 73) {
        char *bytes = length % 2 == 0 ? room.last(length) : room.first();
        for (uint32_t i = 0; i < length; ++i) bytes[i] = static_cast<char>(i * 167 + length * 13);
        const void *data = length > 0 ? bytes : nullptr;
        zt_md5_to_hex_string(data, length, text);
        zt_sha256_mac_to_hex_string(data, static_cast<int32_t>(length), sha);
        ASSERT_TRUE(text[32] == 0 && sha[64] == 0);
        all += std::string(text) + sha;
        const uint32_t crc32 = zt_crc32(0, data, length);
        const uint16_t crc16 = zt_crc16_ccitt(0xffff, data, length);
        snprintf(sha, sizeof sha, "%08x%04x", crc32, crc16);
        all += sha;

        zt_md5_ctx_t ctx;
        zt_md5_init(&ctx);
        uint16_t pieces16 = 0xffff;
        uint32_t pieces32 = 0, bare = UINT32_MAX;
        for (uint32_t at = 0, piece = 0; at < length; at += piece) {
            piece = std::min<uint32_t>(random() % 300, length - at);
            pieces16 = zt_crc16_ccitt(pieces16, bytes + at, piece);
            pieces32 = zt_crc32(pieces32, bytes + at, piece);
            bare = zt_fpga_crc32(bare, bytes + at, piece);
            zt_md5_update(&ctx, bytes + at, piece);
        }
        uint8_t pieces[16], whole[16];
        zt_md5_final(&ctx, pieces);
        zt_md5(data, length, whole);
        ASSERT_EQ(memcmp(pieces, whole, 16), 0) << "seed 1, length " << length;
        ASSERT_TRUE(pieces16 == crc16 && pieces32 == crc32 && bare == ~crc32) << length;
    }
    zt_md5_to_hex_string(all.data(), static_cast<uint32_t>(all.size()), text);
    EXPECT_STREQ(text, "4c28bc711eabb1782255f24d16fbd5a0");
}

TEST(Digests, EqualThoseOfPythonOnEveryKernel) {
    using namespace zt::detail;
    const std::tuple chosen(g_crc16.get(), g_crc32.get(), g_sha256.get());
    g_crc16.force(0), g_crc32.force(0), g_sha256.force(0);
    EXPECT_EQ(chosen, std::tuple(g_crc16.get(), g_crc32.get(), g_sha256.get())) << "the best";
    for (size_t i = 0; g_crc16.force(i) + g_crc32.force(i) + g_sha256.force(i) > 0; ++i) {
        SCOPED_TRACE(i);
        expect_digests_of_python();
    }
}

// The codes of a block of zeros and one of counting bytes, by their CRC; the bit count of MD5 as it
// carries into its high word, in a context that stands just below 2^32 bits and by a single update.
TEST(Digests, BlockCodesAndTheCarryOfTheBitCount) {
    uint8_t block[64] = {}, codes[40];
    sha1_mac(block, codes);
    for (uint8_t i = 0; i < 64; ++i) block[i] = i;
    sha1_mac(block, codes + 20);
    EXPECT_EQ(zt_crc32(0, codes, 40), 0x13090d03u);
    zt_md5_ctx_t ctx;
    zt_md5_init(&ctx);
    ctx.count[0] = 0xfffffe00;
    zt_md5_update(&ctx, block, 64);
    zt_md5_update(&ctx, block, 1);
    EXPECT_TRUE(ctx.count[0] == 8 && ctx.count[1] == 1);
    void *zeros = mmap(nullptr, 1 << 29, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    zt_md5_update(&ctx, zeros, 1 << 29);  // 2^32 bits at once
    EXPECT_TRUE(ctx.count[0] == 8 && ctx.count[1] == 2 && munmap(zeros, 1 << 29) == 0);
}
