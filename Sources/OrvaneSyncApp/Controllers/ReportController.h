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

    /// The loaded report and its location; `ImportField::report` is notified when any of these five changes.
    const std::shared_ptr<const ALEFile>& aleFile() const { return aleFile_; }
    const std::optional<FileURL>& aleFileURL() const { return aleFileURL_; }
    /// Why the last report could not be loaded, with the file's name; absent if it was loaded.
    const std::optional<std::string>& aleImportError() const { return aleImportError_; }
    /// The rows of the loaded report that matched none of the clips when it was last applied.
    const std::vector<std::size_t>& rowsWithoutClip() const { return rowsWithoutClip_; }
    /// The column by which more rows of the loaded report match a clip than by the match setting; empty:
    /// none.
    const std::string& betterColumn() const { return betterColumn_; }
    /// The message of the last merge of a report; absent without a report.
    const std::optional<std::string>& aleMatchStatus() const { return aleMatchStatus_; }

    /// Reads a report and applies it to the clips; if there are none yet, the next scan applies it. A failure
    /// sets `aleImportError`, and discards an earlier report. Never fails; if it is stopped, nothing changes.
    platform::Task loadALE(FileURL url);
    /// The same for a report that a project names. Its URL is kept even if it can't be read: a save writes
    /// its path, and no output replaces it.
    platform::Task loadALEOfProject(FileURL url);

    /// The result of applying a report.
    struct Applied {
        std::string status;
        std::vector<std::size_t> rowsWithoutClip;
        std::string betterColumn;
    };
    /// The loaded report and the way its rows are matched to clips, for another thread.
    struct Merging {
        std::shared_ptr<const ALEFile> report; ///< null: none
        ALEMatchStrategy strategy;

        /// Changes the clips that have a row; absent without a report. Throws Stopped.
        std::optional<Applied> apply(SyncGroupList& groups, const std::stop_token& stop) const;
    };
    Merging merging() const;
    /// Called by a scan when its clips are complete, with the result of this.
    void merged(const Merging& merging, std::optional<Applied> applied);
    /// Discards the report; the metadata that the clips have from it is kept.
    void clear();

    // Each of these opens its own undo step; no step if there is nothing to clear.
    void clearALEMetadata(UUID groupID);
    void clearLockitMetadata(UUID groupID);
    void clearALEMetadataForAllClips();
    void clearLockitMetadataForAllClips();
    /// The number of clips with metadata of that kind.
    int aleMetadataClipCount() const;
    int lockitMetadataClipCount() const;

    ALEMatchStrategy aleMatchStrategyFromDefaults() const;
    /// Says how many clips got a row, with a hint if they are so few that the strategy may be wrong.
    /// `areRowsLeft`: some rows matched no clip; if false, there is no hint.
    static std::string aleMatchStatusMessage(const MetadataMerger::MergeResult& result,
                                             const ALEMatchStrategy& strategy, bool areRowsLeft = true);

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
    std::string betterColumn_;
    std::optional<platform::Task> loading_;
};

} // namespace orvane
