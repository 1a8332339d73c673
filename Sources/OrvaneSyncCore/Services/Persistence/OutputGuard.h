#pragma once

#include "OrvaneSyncCore/Services/Persistence/OutputMarks.h"
#include "Platform/Files.h"

#include <string>
#include <string_view>
#include <vector>

namespace orvane {

/// A write was refused. The description says which file it would have written, why it was refused, and what
/// to do.
class OutputRefused : public platform::FileError {
  public:
    enum class Reason {
        nameOfMedia, ///< only the name, independent of what is on the disk
        place        ///< the file that is there, or the target of a link
    };
    OutputRefused(Reason reason, const std::string& description) : FileError(description), reason_(reason) {}
    Reason reason() const { return reason_; }

  private:
    Reason reason_;
};

/// The inputs of a run, which must not be overwritten.
struct RunInputs {
    struct File {
        std::string path;
        std::string_view what; ///< for display: "the report"
    };
    std::vector<File> files;
    /// The folders that are scanned for media. Media is protected everywhere; in these folders the side files
    /// of a card are too.
    std::vector<std::string> folders;

    /// Paths as the user gave them.
    void addFile(const std::string& path, std::string_view what);
    void addFolder(const std::string& path);
    void add(RunInputs more);
};

/// Whether a file that is not the program's own output may be replaced.
struct OutputPermission {
    bool replacesOthers = false;
    std::string_view option = "--force"; ///< the option that gives this permission, for display
};

/// Protects files at places that the user chooses. Every command and method that writes there asks the guard
/// before its work begins and writes through it. The program's own folders (settings, sessions, caches) are
/// written without a guard.
///
/// Always refused, even with permission: the run's inputs (the same file by any name, links followed), the
/// program's own files, media in any place (by its name or its first bytes; a rendering or picture with this
/// program's mark may be rendered again), the name of a media file for an output that is not media, a
/// read-only file, and anything but a regular file; only /dev/null is always allowed. Any other file is
/// replaced if it is this program's own output of the same kind, or with permission. Any thread.
class OutputGuard {
  public:
    explicit OutputGuard(OutputKind kind, RunInputs inputs = {}, OutputPermission permission = {});

    /// Throws OutputRefused.
    void check(const std::string& path) const;
    /// Checks, writes the whole file or nothing, and checks again just before the new file is put in place.
    /// Throws FileError, including OutputRefused; then nothing has changed.
    void write(const std::string& path, std::string_view contents) const;
    /// For a file that is written piece by piece: checks again just before it is put in place. Throws
    /// OutputRefused.
    platform::files::Existing decide(const std::string& path) const;

  private:
    enum class There : bool { nothing, replaceable };
    There look(const std::string& path) const;
    void checkInputs(const std::string& path, const std::string& target) const;

    OutputKind kind_;
    RunInputs inputs_;
    OutputPermission permission_;
};

} // namespace orvane
