// SHA-256 and MD5 against both ways to ask OpenSSL for a digest of one piece of memory: the one-shot
// function, and a digest fetched once with a context that is used again.
#include <openssl/evp.h>
#include <openssl/md5.h>
#include <openssl/sha.h>

#include <cstring>

#include "support.hpp"
#include "zt/md5.h"
#include "zt/sha.h"

namespace bench {
namespace {

// Fetched once, never freed.
struct Evp {
    EVP_MD *digest;
    EVP_MD_CTX *context;
    explicit Evp(const char *algorithm)
        : digest(EVP_MD_fetch(nullptr, algorithm, nullptr)), context(EVP_MD_CTX_new()) {
        require(digest != nullptr && context != nullptr, "OpenSSL lacks a digest");
    }
    void operator()(const uint8_t *data, size_t size, uint8_t *out) const {
        EVP_DigestInit_ex2(context, digest, nullptr);
        EVP_DigestUpdate(context, data, size);
        EVP_DigestFinal_ex(context, out, nullptr);
    }
};

template <class Digest>
void add_one(const char *test, const Piece &piece, const char *who, Digest digest) {
    const uint8_t *data = random_bytes(piece);
    const size_t size = piece.size;
    uint8_t *out = room(64);
    add(name(test, piece, who), 1, [=] {
        digest(data, size, out);
        benchmark::DoNotOptimize(*out);
    });
}

void check(const Piece &piece) {
    const uint8_t *data = random_bytes(piece);
    uint8_t ours[32], theirs[32];
    zt_sha256_mac(data, static_cast<int32_t>(piece.size), ours);
    SHA256(data, piece.size, theirs);
    require(std::memcmp(ours, theirs, 32) == 0, "the SHA-256s differ");
    zt_md5(data, static_cast<uint32_t>(piece.size), ours);
    Evp("MD5")(data, piece.size, theirs);
    require(std::memcmp(ours, theirs, 16) == 0, "the MD5s differ");
}

}  // namespace

void add_digests() {
    static const Evp sha256("SHA256"), md5("MD5");
    for (const Piece &piece : kPieces) {
        check(piece);
        add_one("sha256", piece, "zt", [](auto *data, auto size, auto *out) {
            zt_sha256_mac(data, static_cast<int32_t>(size), out);
        });
        add_one("sha256", piece, "openssl",
                [](auto *data, auto size, auto *out) { SHA256(data, size, out); });
        add_one("sha256", piece, "openssl-evp",
                [](auto *data, auto size, auto *out) { sha256(data, size, out); });
        add_one("md5", piece, "zt", [](auto *data, auto size, auto *out) {
            zt_md5(data, static_cast<uint32_t>(size), out);
        });
        add_one("md5", piece, "openssl",
                [](auto *data, auto size, auto *out) { MD5(data, size, out); });
        add_one("md5", piece, "openssl-evp",
                [](auto *data, auto size, auto *out) { md5(data, size, out); });
    }
}

}  // namespace bench
