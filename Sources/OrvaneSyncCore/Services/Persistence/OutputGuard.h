#pragma once

#include "OrvaneSyncCore/Services/Persistence/OutputMarks.h"
#include "Platform/Files.h"

#include <string>
#include <string_view>
#include <vector>

namespace orvane {

/// A write that was refused. Says which file it would have gone to, why it is refused, and what helps.
class OutputRefused : public platform::FileError {
  public:
    enum class Reason {
        nameOfMedia, ///< the name alone, whatever the disk holds
        place        ///< what lies there, or where it leads
    };
    OutputRefused(Reason reason, const std::string& description) : FileError(description), reason_(reason) {}
    Reason reason() const { return reason_; }

  private:
    Reason reason_;
};

/// What a run reads and must therefore not write over.
struct RunInputs {
    struct File {
        std::string path;
        std::string_view what; ///< for people: "the report"
    };
    std::vector<File> files;
    /// Those that are scanned for media. Media is safe everywhere; here the side files of a card are too.
    std::vector<std::string> folders;

    /// Paths as a person gave them.
    void addFile(const std::string& path, std::string_view what);
    void addFolder(const std::string& path);
    void add(RunInputs more);
};

/// Whether a file that is not the program's own output may be replaced.
struct OutputPermission {
    bool replacesOthers = false;
    std::string_view option = "--force"; ///< what gives this permission, for people
};

/// The one way to a place that a person chose. Every command and method that writes there asks the guard
/// before its work begins and writes through it; the program's own folders (settings, sessions, caches) are
/// written without.
///
/// Refused whatever the permission: the run's inputs (the same file by any name, links followed), the
/// program's own files, media wherever it lies (by its name or by its first bytes; a rendering or picture
/// with this program's mark may be rendered again), a name of media for an output that is none, a read-only
/// file, and what is no regular file; /dev/null takes everything. Any other file is replaced if it is this
/// program's own output of the same kind, or with permission. Any thread.
class OutputGuard {
  public:
    explicit OutputGuard(OutputKind kind, RunInputs inputs = {}, OutputPermission permission = {});

    /// Throws OutputRefused.
    void check(const std::string& path) const;
    /// Checks, writes the whole file or nothing, and checks again right before the new file takes its place.
    /// Throws FileError, OutputRefused among them; then everything is as it was.
    void write(const std::string& path, std::string_view contents) const;
    /// For a file that is written piece by piece: checks again right before it takes its place. Throws
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
