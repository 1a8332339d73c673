#pragma once

#include "OrvaneSyncApp/Controllers/OpenWork.h"
#include "OrvaneSyncCore/Models/ALEFile.h"
#include "OrvaneSyncCore/Services/Ingest/ALEParser.h"
#include "OrvaneSyncCore/Services/Metadata/MetadataMerger.h"
#include "Platform/Task.h"

#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace orvane {

/// Camera and sound reports, and the metadata that came from them. Interface thread.
class ReportController {
  public:
    explicit ReportController(OpenWork& work) : work_(work) {}

    /// The report that is loaded, and where it lies; `ImportField::report` is the change of any of these
    /// five.
    const std::shared_ptr<const ALEFile>& aleFile() const { return aleFile_; }
    const std::optional<FileURL>& aleFileURL() const { return aleFileURL_; }
    /// Why the last report could not be loaded, with the file's name; absent when it was.
    const std::optional<std::string>& aleImportError() const { return aleImportError_; }
    /// Of the loaded report, those that name none of the clips over which it was laid last.
    const std::vector<std::size_t>& rowsWithoutClip() const { return rowsWithoutClip_; }
    /// The last message of a report merge; absent without a report.
    const std::optional<std::string>& aleMatchStatus() const { return aleMatchStatus_; }

    /// Reads a report and lays it over the clips; with no clips yet, the next scan does. A failure leaves
    /// `aleImportError`, and forgets an earlier report. Never fails; one that is stopped leaves all as it
    /// was.
    platform::Task loadALE(FileURL url);
    /// The same for a report that a project names. Its URL stays also where it can't be read just now: a save
    /// keeps its path, and no output goes over it.
    platform::Task loadALEOfProject(FileURL url);

    /// What came of it.
    struct Laid {
        std::string status;
        std::vector<std::size_t> rowsWithoutClip;
    };
    /// The loaded report and how it finds its clips, for another thread.
    struct Merging {
        std::shared_ptr<const ALEFile> report; ///< null: none
        ALEMatchStrategy strategy;

        /// Changes the clips that a row belongs to; gives nothing without a report. Throws Stopped.
        std::optional<Laid> lay(SyncGroupList& groups, const std::stop_token& stop) const;
    };
    Merging merging() const;
    /// For a scan: its clips stand, with what this made of them.
    void merged(const Merging& merging, std::optional<Laid> laid);
    /// Forgets the report; what it said of the clips stays.
    void clear();

    // Each clearing opens its own undo step; with nothing to clear, there is none.
    void clearALEMetadata(UUID groupID);
    void clearLockitMetadata(UUID groupID);
    void clearALEMetadataForAllClips();
    void clearLockitMetadataForAllClips();
    /// Clips with metadata of that kind.
    int aleMetadataClipCount() const;
    int lockitMetadataClipCount() const;

    ALEMatchStrategy aleMatchStrategyFromDefaults() const;
    /// How many clips got a row; with a hint where they are so few that the strategy may be wrong.
    static std::string aleMatchStatusMessage(const MetadataMerger::MergeResult& result,
                                             const ALEMatchStrategy& strategy);

  private:
    enum class UnreadURL : bool { forget, keep };
    platform::Task start(FileURL url, UnreadURL unread);
    static platform::Task load(std::weak_ptr<ReportController> weak, FileURL url, UnreadURL unread);
    static platform::Task merge(std::weak_ptr<ReportController> weak);
    void forget();
    void clearMetadata(const UndoStep& step, const std::function<bool(SyncGroupList&)>& clear);

    OpenWork& work_;
    std::optional<FileURL> aleFileURL_;
    std::shared_ptr<const ALEFile> aleFile_;
    std::optional<std::string> aleImportError_;
    std::optional<std::string> aleMatchStatus_;
    std::vector<std::size_t> rowsWithoutClip_;
    std::optional<platform::Task> loading_;
};

} // namespace orvane
