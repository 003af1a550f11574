// Base64 by the table look-ups of 64-bit Arm: 48 bytes to or from 64 characters a step.
// SPDX-License-Identifier: MIT
#include <arm_neon.h>

#include "format/base64_kernels.hpp"

namespace zt::detail {
namespace {

constexpr size_t kVector = 64;
constexpr size_t kGroups = kVector / 4;  // of characters, in four registers

uint8x16x4_t load64(const void *bytes) { return vld1q_u8_x4(static_cast<const uint8_t *>(bytes)); }

// What the table of all characters gives; 0 beyond ASCII.
uint8x16_t look_up(uint8x16_t text) {
    const uint8x16_t lower = vqtbl4q_u8(load64(kValues.data()), text);
    return vqtbx4q_u8(lower, load64(kValues.data() + 64), vsubq_u8(text, vdupq_n_u8(64)));
}

// Not zero in the top bit where a character is not ASCII or its value is above 63.
uint8x16_t wrong(uint8x16_t text, uint8x16_t values) {
    return vorrq_u8(text, vshlq_n_u8(values, 1));
}

}  // namespace

void base64_encode_neon(char *text, const uint8_t *bytes, size_t groups) {
    const uint8x16x4_t alphabet = load64(kAlphabet);
    const uint8x16_t mask = vdupq_n_u8(63);
    for (; groups >= kGroups; groups -= kGroups) {
        const uint8x16x3_t in = vld3q_u8(bytes);
        uint8x16x4_t out;
        out.val[0] = vshrq_n_u8(in.val[0], 2);
        out.val[1] = vandq_u8(vsliq_n_u8(vshrq_n_u8(in.val[1], 4), in.val[0], 4), mask);
        out.val[2] = vandq_u8(vsliq_n_u8(vshrq_n_u8(in.val[2], 6), in.val[1], 2), mask);
        out.val[3] = vandq_u8(in.val[2], mask);
        for (uint8x16_t &values : out.val) values = vqtbl4q_u8(alphabet, values);
        vst4q_u8(reinterpret_cast<uint8_t *>(text), out);
        text += 4 * kGroups;
        bytes += 3 * kGroups;
    }
    base64_encode_portable(text, bytes, groups);
}

size_t base64_decode_neon(uint8_t *bytes, size_t room, const char *text, size_t length) {
    size_t done = 0;
    for (; length - done >= kVector; done += kVector) {
        uint8x16x4_t v = vld4q_u8(reinterpret_cast<const uint8_t *>(text + done));
        uint8x16_t bad = vdupq_n_u8(0);
        for (uint8x16_t &values : v.val) {
            const uint8x16_t characters = values;
            values = look_up(characters);
            bad = vorrq_u8(bad, wrong(characters, values));
        }
        if (vmaxvq_u8(bad) > 127) break;
        uint8x16x3_t out;
        out.val[0] = vsliq_n_u8(vshrq_n_u8(v.val[1], 4), v.val[0], 2);
        out.val[1] = vsliq_n_u8(vshrq_n_u8(v.val[2], 2), v.val[1], 4);
        out.val[2] = vsliq_n_u8(v.val[3], v.val[2], 6);
        vst3q_u8(bytes, out);
        bytes += 3 * kGroups;
        room -= 3 * kGroups;
    }
    return done + base64_decode_portable(bytes, room, text + done, length - done);
}

size_t base64_count_neon(const char *text, size_t length, uint64_t *count) {
    constexpr size_t kStep = 16;
    size_t done = 0;
    for (; length - done >= kStep; done += kStep) {
        const uint8x16_t characters = vld1q_u8(reinterpret_cast<const uint8_t *>(text + done));
        if (vmaxvq_u8(wrong(characters, look_up(characters))) > 127) break;
    }
    *count += done;
    return done + base64_count_portable(text + done, length - done, count);
}

}  // namespace zt::detail
