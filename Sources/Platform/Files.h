#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace orvane::platform {

/// A file operation that failed. The description names the file and the system's reason.
class FileError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Size and modification date of a file. Paths are the file system's own bytes everywhere in this header.
struct FileAttributes {
    std::int64_t size = 0;                 ///< bytes
    double modificationSinceReference = 0; ///< seconds since 1 January 2001 00:00 UTC
    bool isRegularFile = false;
    bool isDirectory = false;
};

namespace files {

std::optional<FileAttributes> attributes(const std::string& path);
bool exists(const std::string& path);

/// The whole file. Throws FileError, also when it is larger than `limitBytes`.
std::string readText(const std::string& path, std::uint64_t limitBytes = std::uint64_t{1} << 30U);

/// Writes the whole file or nothing: a temporary file in the same folder, fsync, rename, fsync of the folder.
/// An existing file keeps its permissions; a new one gets the process's defaults. Throws FileError; then the old
/// file stands as it was and no temporary file is left.
void writeAtomically(const std::string& path, std::string_view contents);

/// Makes the folder and the folders above it. Throws FileError.
void createDirectories(const std::string& path);
void remove(const std::string& path);

enum class WalkEntry { file, directory };
/// Visits every entry below the folder, to any depth, in the order of the file system. Hidden entries (names that
/// begin with a dot) are passed over with everything below them. Symbolic links are followed for files; a folder
/// that was already visited is not entered again, so that a loop of links ends. `descend` is asked about each
/// folder. A folder that cannot be read is passed over.
/// Returns false when the top folder itself cannot be opened.
bool walk(const std::string& folder, const std::function<void(const std::string& path, WalkEntry kind)>& visit,
          const std::function<bool(const std::string& path)>& descend);

/// Absolute, without "." and "..", links in its folders resolved where they exist.
std::string standardized(const std::string& path);

/// The XDG base directories with their defaults, without this application's own folder.
std::string dataHome();
std::string configHome();
std::string cacheHome();
std::string temporaryDirectory();

} // namespace files
} // namespace orvane::platform
