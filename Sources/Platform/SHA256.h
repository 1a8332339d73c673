#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <stop_token>
#include <string>
#include <string_view>

namespace orvane::platform {

/// SHA-256 of bytes that come in pieces (FIPS 180-4). One thread at a time.
class SHA256 {
  public:
    static constexpr std::size_t bytes = 32;
    /// The implementation, which is in the network module, because that module has the library anyway.
    class Engine {
      public:
        virtual ~Engine() = default;
        virtual void add(std::string_view piece) = 0;
        virtual std::array<std::uint8_t, bytes> digest() = 0;
    };

    /// Throws std::runtime_error where this installation lacks the network module.
    SHA256();

    void add(std::string_view piece);
    /// The digest of all added bytes. Nothing may be added after it.
    std::array<std::uint8_t, bytes> digest();

  private:
    std::unique_ptr<Engine> engine_;
};

/// Two digits for each byte, lower case.
std::string hexadecimal(const std::array<std::uint8_t, SHA256::bytes>& digest);
/// The digest of a whole file, read in pieces. Throws FileError and Stopped.
std::array<std::uint8_t, SHA256::bytes> sha256OfFile(const std::string& path,
                                                     const std::stop_token& stop = {});

} // namespace orvane::platform
