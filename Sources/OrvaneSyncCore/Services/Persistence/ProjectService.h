#pragma once

#include "OrvaneSyncCore/Models/OrvaneSyncProject.h"
#include "OrvaneSyncCore/Models/SyncGroupList.h"
#include "OrvaneSyncCore/Services/Persistence/OutputGuard.h"

#include <stdexcept>
#include <stop_token>
#include <string>
#include <string_view>

namespace orvane {

/// This version cannot open the project file. Other failures are FileErrors.
class ProjectError : public std::runtime_error {
  public:
    enum class Kind { unsupportedVersion, invalidFile };

    static ProjectError unsupportedVersion(std::int64_t version);
    /// `reason` says what is wrong with the file.
    static ProjectError invalidFile(std::string_view reason);

    Kind kind() const { return kind_; }

  private:
    ProjectError(Kind kind, const std::string& description) : std::runtime_error(description), kind_(kind) {}

    Kind kind_;
};

/// Reads and writes project files and applies their edits to clips. Has no state; any thread.
struct ProjectService {
    OrvaneSyncProject snapshot(const std::optional<FileURL>& videoFolder,
                               const std::optional<FileURL>& audioFolder,
                               const std::optional<FileURL>& aleFile, const SyncGroupList& groups,
                               Date savedAt, ScanScope scope = {}) const;
    /// Writes the whole file or nothing. Throws OutputRefused, FileError, or ProjectError if the project has
    /// a number that JSON cannot store; then the old file is unchanged.
    void save(const OrvaneSyncProject& project, const FileURL& url,
              const OutputGuard& guard = OutputGuard(OutputKind::project)) const;
    /// Throws FileError, ProjectError or Stopped.
    OrvaneSyncProject load(const FileURL& url, const std::stop_token& stop = {}) const;
    /// Finds each clip's entry by the path of its video; if several entries have the path, the last one
    /// counts. Clips without an entry are not changed.
    void applyEdits(const OrvaneSyncProject& project, SyncGroupList& groups) const;

    /// The text that `save` writes and `load` reads.
    static std::string encoded(const OrvaneSyncProject& project);
    static OrvaneSyncProject decoded(std::string_view text, const std::stop_token& stop = {});
};

} // namespace orvane
