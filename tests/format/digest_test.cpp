// CRCs, MD5 and SHA-256: every length from 0 to 300 at changing alignment against digests of all the
// digests, made with Python's hashlib and binascii; pieces; the vectors that those do not cover.
// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>

#include "support/guarded.hpp"
#include "zt/crc.h"
#include "zt/md5.h"
#include "zt/sha.h"

namespace {

std::string hex(const uint8_t *bytes, size_t count) {
    std::string text;
    for (size_t i = 0; i < 2 * count; ++i)
        text += "0123456789abcdef"[bytes[i / 2] >> (i % 2 ? 0 : 4) & 15];
    return text;
}

std::string md5_of(const std::string &data) {
    uint8_t digest[16];
    zt_md5(data.data(), static_cast<uint32_t>(data.size()), digest);
    return hex(digest, 16);
}

// Data that ends, or starts, at an inaccessible page.
const uint8_t *sample(const Guarded &room, uint32_t length) {
    char *data = length % 2 == 0 ? room.last(length) : room.first();
    for (uint32_t i = 0; i < length; ++i) data[i] = static_cast<char>(i * 167 + length * 13);
    return reinterpret_cast<const uint8_t *>(data);
}

TEST(Digests, EqualThoseOfPythonForEveryLength) {
    const Guarded room;
    std::string md5s, shas, crcs;
    for (uint32_t length = 0; length <= 300; ++length) {
        const uint8_t *data = length > 0 ? sample(room, length) : nullptr;
        char text[65] = {};
        text[32] = 'x';
        zt_md5_to_hex_string(data, length, text);
        ASSERT_EQ(text[32], 'x');
        md5s.append(text, 32);
        zt_sha256_mac_to_hex_string(data, static_cast<int32_t>(length), text);
        ASSERT_EQ(text[64], 0);
        shas.append(text, 64);
        snprintf(text, sizeof text, "%08x%04x", zt_crc32(0, data, length),
                 zt_crc16_ccitt(0xffff, data, length));
        crcs += text;
    }
    uint8_t sha[32];
    zt_sha256_mac(shas.data(), static_cast<int32_t>(shas.size()), sha);
    EXPECT_EQ(md5_of(md5s), "9373d90763cfdeb89ae49e9aef6964ee");
    EXPECT_EQ(hex(sha, 32), "ddd03a379f99d8008f1d14430f1b6fb25905a32462c6ae2fe74c807383c022a3");
    EXPECT_EQ(md5_of(crcs), "5f2fb47402d568bb2fbecee84ff6bce5");
}

TEST(Digests, PiecesGiveWhatTheWholeGives) {
    std::mt19937 random(1);
    const Guarded room;
    for (uint32_t round = 0; round < 2000; ++round) {
        const uint32_t length = random() % 1000;
        const uint8_t *data = sample(room, length);
        uint16_t crc16 = 7;
        uint32_t crc32 = 7, register32 = ~7u;
        zt_md5_ctx_t ctx;
        zt_md5_init(&ctx);
        for (uint32_t at = 0, piece; at < length; at += piece) {
            piece = std::min<uint32_t>(random() % 200, length - at);
            crc16 = zt_crc16_ccitt(crc16, data + at, piece);
            crc32 = zt_crc32(crc32, data + at, piece);
            register32 = zt_fpga_crc32(register32, data + at, piece);
            zt_md5_update(&ctx, data + at, piece);
        }
        uint8_t pieces[16], whole[16];
        zt_md5_final(&ctx, pieces);
        zt_md5(data, length, whole);
        ASSERT_EQ(hex(pieces, 16), hex(whole, 16)) << "seed 1, round " << round;
        ASSERT_EQ(crc16, zt_crc16_ccitt(7, data, length));
        ASSERT_EQ(crc32, zt_crc32(7, data, length));
        ASSERT_EQ(register32, ~crc32);
    }
}

TEST(Digests, KnownVectors) {
    EXPECT_EQ(zt_crc16_ccitt(0, "123456789", 9), 0x31C3);
    EXPECT_EQ(zt_fpga_crc32(UINT32_MAX, "123456789", 9), 0x340BC6D9u);
    uint8_t block[64] = {}, code[20];
    sha1_mac(block, code);
    EXPECT_EQ(hex(code, 20), "a3582446f2ead2ae50f05fd364e18a66e4e16e2b");
    for (uint8_t i = 0; i < 64; ++i) block[i] = i;
    sha1_mac(block, code);
    EXPECT_EQ(hex(code, 20), "b17417081edb54f6769567959ccd5bcc7a526752");
    // The bit count carries into its high word: a context that stands just below 2^32 bits.
    zt_md5_ctx_t ctx;
    zt_md5_init(&ctx);
    ctx.count[0] = 0xfffffe00;
    zt_md5_update(&ctx, block, 64);
    zt_md5_update(&ctx, block, 1);
    EXPECT_TRUE(ctx.count[0] == 8 && ctx.count[1] == 1);
}

}  // namespace
