// MD5 messages: buffering and padding.
// SPDX-License-Identifier: MIT
#include "zt/md5.h"

#include <bit>
#include <cstddef>
#include <type_traits>

#include "format/byte_order.hpp"
#include "format/hex_text.hpp"
#include "format/md5_block.hpp"
#include "zt/memory.h"

static_assert(std::is_standard_layout_v<zt_md5_ctx_t> && sizeof(zt_md5_ctx_t) == 88);
static_assert(offsetof(zt_md5_ctx_t, state) == 8 && offsetof(zt_md5_ctx_t, buffer) == 24);

const uint8_t PADDING[64] = {0x80};

namespace {

using namespace zt::detail;

constexpr uint32_t kBlock = 64;
constexpr uint32_t kCountAt = 56;  // where the bit count stands in the last block

uint32_t buffered(const zt_md5_ctx_t *ctx) { return ctx->count[0] / 8 % kBlock; }

void count_bytes(zt_md5_ctx_t *ctx, uint32_t length) {
    uint64_t bits = uint64_t{ctx->count[1]} << 32 | ctx->count[0];
    bits += uint64_t{length} * 8;
    ctx->count[0] = static_cast<uint32_t>(bits);
    ctx->count[1] = static_cast<uint32_t>(bits >> 32);
}

}  // namespace

void zt_md5_init(zt_md5_ctx_t *ctx) {
    zt_memset(ctx, 0, sizeof *ctx);
    ctx->state[0] = 0x67452301;
    ctx->state[1] = 0xEFCDAB89;
    ctx->state[2] = 0x98BADCFE;
    ctx->state[3] = 0x10325476;
}

void zt_md5_update(zt_md5_ctx_t *ctx, const void *data, uint32_t length) {
    if (length == 0) return;
    const auto *bytes = static_cast<const uint8_t *>(data);
    uint32_t filled = buffered(ctx);
    count_bytes(ctx, length);
    if (length >= kBlock - filled) {
        if (filled > 0) {
            const uint32_t missing = kBlock - filled;
            zt_memcpy(ctx->buffer + filled, bytes, missing);
            md5_blocks(ctx->state, ctx->buffer, 1);
            bytes += missing;
            length -= missing;
            filled = 0;
        }
        md5_blocks(ctx->state, bytes, length / kBlock);
        bytes += length - length % kBlock;
        length %= kBlock;
    }
    if (length > 0) zt_memcpy(ctx->buffer + filled, bytes, length);
}

void zt_md5_final(zt_md5_ctx_t *ctx, uint8_t digest[16]) {
    uint8_t count[8];
    store32<std::endian::little>(count, ctx->count[0]);
    store32<std::endian::little>(count + 4, ctx->count[1]);
    const uint32_t filled = buffered(ctx);
    zt_md5_update(ctx, PADDING, (filled < kCountAt ? kCountAt : kBlock + kCountAt) - filled);
    zt_md5_update(ctx, count, sizeof count);
    for (size_t i = 0; i < 4; ++i) store32<std::endian::little>(digest + 4 * i, ctx->state[i]);
}

void zt_md5(const void *data, uint32_t length, uint8_t digest[16]) {
    zt_md5_ctx_t ctx;
    zt_md5_init(&ctx);
    zt_md5_update(&ctx, data, length);
    zt_md5_final(&ctx, digest);
}

void zt_md5_to_hex_string(const void *data, uint32_t length, char text[32]) {
    uint8_t digest[16];
    zt_md5(data, length, digest);
    write_hex(digest, text);
}
