// base64 against OpenSSL and GLib. The size is that of the bytes, not of the text.
#include <glib.h>
#include <openssl/evp.h>

#include <cstring>

#include "support.hpp"
#include "zt/base64.h"

namespace bench {
namespace {

// A text at the piece's offset, with a line feed behind every line_length characters if not 0.
struct Text {
    char *data;
    size_t size;
};

Text encoded(const Piece &piece, size_t line_length) {
    const uint8_t *bytes = random_bytes(piece);
    uint64_t length = 0;
    std::string flat((piece.size + 2) / 3 * 4 + 1, '\0');
    require(zt_base64_encode(flat.data(), flat.size(), &length, bytes, piece.size) == 0,
            "no base64");
    flat.resize(length);
    std::string text;
    if (line_length == 0) text = flat;
    for (size_t at = 0; line_length != 0 && at < flat.size(); at += line_length) {
        text += flat.substr(at, line_length) + "\n";
    }
    auto *data = reinterpret_cast<char *>(room(text.size() + 1, piece.offset));
    std::memcpy(data, text.c_str(), text.size() + 1);
    return {data, text.size()};
}

const unsigned char *bytes_of(const char *text) {
    return reinterpret_cast<const unsigned char *>(text);
}

void add_encode(const Piece &piece) {
    const uint8_t *bytes = random_bytes(piece);
    const size_t size = piece.size, space = size * 4 / 3 + 16;
    uint8_t *out = room(space);
    add(name("base64_encode", piece, "zt"), 1, [=] {
        uint64_t length;
        zt_base64_encode(reinterpret_cast<char *>(out), space, &length, bytes, size);
        benchmark::DoNotOptimize(length);
    });
    add(name("base64_encode", piece, "openssl"), 1,
        [=] { benchmark::DoNotOptimize(EVP_EncodeBlock(out, bytes, static_cast<int>(size))); });
    add(name("base64_encode", piece, "glib"), 1, [=] {
        int state = 0, save = 0;
        auto *text = reinterpret_cast<char *>(out);
        size_t length = g_base64_encode_step(bytes, size, FALSE, text, &state, &save);
        length += g_base64_encode_close(FALSE, text + length, &state, &save);
        benchmark::DoNotOptimize(length);
    });
}

void add_decode(const Piece &piece, const char *test, size_t line_length) {
    static EVP_ENCODE_CTX *const context = EVP_ENCODE_CTX_new();
    const Text text = encoded(piece, line_length);
    const size_t space = piece.size + 16;
    uint8_t *out = room(space);
    uint64_t check = 0;
    require(zt_base64_decode(out, space, &check, text.data, text.size) == 0 && check == piece.size,
            "base64 is not decoded");
    add(name(test, piece, "zt"), 1, [=] {
        uint64_t length;
        zt_base64_decode(out, space, &length, text.data, text.size);
        benchmark::DoNotOptimize(length);
    });
    if (line_length == 0) {
        add(name(test, piece, "openssl"), 1, [=] {
            benchmark::DoNotOptimize(
                EVP_DecodeBlock(out, bytes_of(text.data), static_cast<int>(text.size)));
        });
    } else {
        add(name(test, piece, "openssl"), 1, [=] {
            int length = 0, rest = 0;
            EVP_DecodeInit(context);
            EVP_DecodeUpdate(context, out, &length, bytes_of(text.data),
                             static_cast<int>(text.size));
            EVP_DecodeFinal(context, out + length, &rest);
            benchmark::DoNotOptimize(length + rest);
        });
    }
    add(name(test, piece, "glib"), 1, [=] {
        int state = 0;
        guint save = 0;
        benchmark::DoNotOptimize(g_base64_decode_step(text.data, text.size, out, &state, &save));
    });
}

}  // namespace

void add_base64() {
    for (const Piece &piece : kPieces) {
        add_encode(piece);
        add_decode(piece, "base64_decode", 0);
        add_decode(piece, "base64_decode_lines", 76);
    }
}

}  // namespace bench
