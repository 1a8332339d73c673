#include "Platform/SHA256.h"

#include "Platform/Files.h"
#include "Platform/RandomAccessFile.h"
#include "Platform/Stop.h"

#include <openssl/evp.h>

#include <new>

namespace orvane::platform {

struct SHA256::State {
    std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> context{EVP_MD_CTX_new(), &EVP_MD_CTX_free};
};

// The library fails for want of memory alone.
SHA256::SHA256() : state_(std::make_unique<State>()) {
    if (!state_->context || EVP_DigestInit_ex(state_->context.get(), EVP_sha256(), nullptr) != 1)
        throw std::bad_alloc();
}

SHA256::~SHA256() = default;

void SHA256::add(std::string_view piece) {
    if (EVP_DigestUpdate(state_->context.get(), piece.data(), piece.size()) != 1) throw std::bad_alloc();
}

std::array<std::uint8_t, SHA256::bytes> SHA256::digest() {
    std::array<std::uint8_t, bytes> result{};
    if (EVP_DigestFinal_ex(state_->context.get(), result.data(), nullptr) != 1) throw std::bad_alloc();
    return result;
}

std::string hexadecimal(const std::array<std::uint8_t, SHA256::bytes>& digest) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    for (const unsigned byte : digest) {
        text += digits[byte >> 4U];
        text += digits[byte & 15U];
    }
    return text;
}

std::array<std::uint8_t, SHA256::bytes> sha256OfFile(const std::string& path, const std::stop_token& stop) {
    constexpr std::size_t step = std::size_t{1} << 20U;
    auto file = RandomAccessFile::open(path);
    if (!file) throw FileError("can't read " + path);
    SHA256 hash;
    for (std::uint64_t at = 0; at < file->size();) {
        throwIfStopped(stop);
        const auto piece = file->read(at, step);
        if (piece.empty()) throw FileError("can't read " + path + ": it ends early");
        hash.add({reinterpret_cast<const char*>(piece.data()), piece.size()});
        at += piece.size();
    }
    return hash.digest();
}

} // namespace orvane::platform
