#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <stdexcept>
#include <stop_token>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

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
    /// The same for two paths that lead to one file.
    std::pair<std::uint64_t, std::uint64_t> identity;

    /// The same file, and nothing has been written to it in between.
    bool isUnchangedSince(const FileAttributes& before) const {
        return identity == before.identity && size == before.size &&
               modificationSinceReference == before.modificationSinceReference;
    }
};

namespace files {

std::optional<FileAttributes> attributes(const std::string& path);
bool exists(const std::string& path);

/// The whole content of a regular file. Throws FileError for anything else (a named pipe would block the
/// reader) and when the file is larger than `limitBytes`. Throws Stopped.
std::string readText(const std::string& path, std::uint64_t limitBytes = std::uint64_t{1} << 30U,
                     const std::stop_token& stop = {});

/// Writes the whole file or nothing: a temporary file in the same folder, fsync, rename, fsync of the folder.
/// An existing file keeps its permissions; a new one gets the process's defaults. If the path is a link, the
/// file that it leads to is replaced and the link stays. Anything but a regular file (a terminal, a pipe) is
/// written to directly. Throws FileError; then the old file is unchanged and no temporary file is left.
void writeAtomically(const std::string& path, std::string_view contents);

/// Whether a write may replace an existing file, or needs a free name.
enum class Existing { replace, keep };
/// The same for a path that others may write to meanwhile: `decide` is called when the new file is complete
/// and only has to be renamed. Its exceptions pass through. After an exception, or if a name that is to be
/// kept has been taken, nothing has changed.
void writeAtomically(const std::string& path, std::string_view contents,
                     const std::function<Existing()>& decide);

/// The file that a write to `path` would replace or make: the target of the links at `path`, also when there
/// is no file. For a loop of links, a link of the loop itself.
std::string behindLinks(std::string path);
/// Whether the file's owner has removed the permission to write, or this process may not write to it. The
/// permission itself is checked, as it does not stop root from writing.
bool isReadOnly(const std::string& path);
/// The system's reason why no file can be made in the folder; empty when one can.
std::string whyNoNewFile(const std::string& folder);
/// The folder that contains an entry; "." for a bare name.
std::string folderOf(const std::string& path);

/// Removes the temporary files of writes that are under way, for a program that ends at once. Nothing may be
/// written after this. Any thread.
void discardTemporaries();

/// Suffixes of files that are kept beside new ones: those that can't be read, and those with content that
/// this version does not know.
inline constexpr std::string_view unreadableSuffix = ".unreadable", otherSuffix = ".other";
/// For one file and one suffix.
inline constexpr std::size_t mostKeptBeside = 5;
/// Gives a file a second name, "<path><suffix>", and returns it; the next free number is appended where that
/// name is taken. A later whole write to the first name does not change the second file. On a file system
/// without hard links it makes a copy. The file keeps its first name throughout. If there are more than
/// `mostKeptBeside` files, those with the lowest numbers are removed if the system permits it. Throws
/// FileError.
std::string keepBeside(const std::string& path, std::string_view suffix);
/// Makes the folder's entries durable: files that were created or renamed in it. A file system that cannot do
/// this is no error.
void syncFolder(const std::string& folder);
/// Removes temporary files that killed writers left in the folder: those that have not been touched for a
/// while.
void removeAbandonedTemporaries(const std::string& folder);

/// Makes the folder and the folders above it, each new one accessible to its owner alone: names of
/// productions and clips are private to the user. Throws FileError.
void createDirectories(const std::string& path);
/// Removes a file or an empty folder. Throws FileError, also when there is none.
void remove(const std::string& path);
/// Removes a file or a folder with everything in it; links are not followed. Throws FileError.
void removeTree(const std::string& path);
/// Within one file system; replaces a file that has the new name. Throws FileError.
void rename(const std::string& from, const std::string& to);

enum class WalkEntry { file, linkedFile, directory, brokenLink };
enum class Hidden { skip, include };
/// Whether links to folders are entered.
enum class LinkedFolders { pass, enter };
/// Visits every file and folder below the folder, to any depth, each folder's entries in the order of the
/// file system. Hidden entries (names that begin with a dot) are skipped with everything below them. A link
/// to a file is visited as a linked file, a link to a folder as a folder, a link without a target as a broken
/// one; devices, pipes and sockets are skipped. Each folder is entered once, whichever links lead to it, so
/// that a loop of links ends. Links that are entered come after everything that is no link. `descend` decides
/// for each folder whether it is entered. A folder below that cannot be read is skipped and passed to
/// `unreadable`. Returns false when the top folder itself cannot be opened.
bool walk(const std::string& folder,
          const std::function<void(const std::string& path, WalkEntry kind)>& visit,
          const std::function<bool(const std::string& path)>& descend, Hidden hidden = Hidden::skip,
          const std::function<void(const std::string& path)>& unreadable = {},
          LinkedFolders linkedFolders = LinkedFolders::pass);

/// The names of all entries of one folder, hidden ones too, in no order. Nothing when it cannot be opened.
std::optional<std::vector<std::string>> childNames(const std::string& folder);

/// Absolute, without "." and "..", links among its folders resolved where they exist; a link that is the last
/// component stays. Never fails: components that do not exist are kept as they are written.
std::string standardized(const std::string& path);

/// The XDG base directories with their defaults, without this application's own folder.
std::string dataHome();
std::string configHome();
std::string cacheHome();
std::string temporaryDirectory();

} // namespace files
} // namespace orvane::platform
