#include "Platform/SHA256.h"

#include "Platform/Files.h"
#include "Platform/Modules.h"
#include "Platform/Network/NetworkModule.h"
#include "Platform/RandomAccessFile.h"
#include "Platform/Stop.h"

#include <stdexcept>

namespace orvane::platform {

SHA256::SHA256() {
    const auto& [module, problem] = modules::own<NetworkModule>();
    if (module == nullptr) throw std::runtime_error(problem);
    engine_ = module->sha256();
}

void SHA256::add(std::string_view piece) { engine_->add(piece); }

std::array<std::uint8_t, SHA256::bytes> SHA256::digest() { return engine_->digest(); }

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
