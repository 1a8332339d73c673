#pragma once

#include <cstdint>
#include <stdexcept>
#include <stop_token>
#include <string>

namespace orvane::platform {

/// An archive that cannot be unpacked. The description says which, and why.
class ZipError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Whether the file begins as a ZIP archive does.
bool isZipArchive(const std::string& path);
/// The total bytes of all its entries. Throws ZipError, also for more than `mostBytes`.
std::uint64_t unpackedBytes(const std::string& path, std::uint64_t mostBytes);

/// Unpacks a ZIP archive (stored and deflated entries, no encryption, below 4 GB) into a folder, which is
/// created. Entries outside the folder, links, and more than `mostBytes` are refused; every checksum is
/// checked. Throws ZipError, FileError and Stopped; what was unpacked by then stays.
void unpackZip(const std::string& path, const std::string& folder, std::uint64_t mostBytes,
               const std::stop_token& stop = {});

} // namespace orvane::platform
