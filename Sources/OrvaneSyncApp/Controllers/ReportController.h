#pragma once

#include "OrvaneSyncApp/Controllers/OpenWork.h"
#include "OrvaneSyncCore/Models/ALEFile.h"
#include "OrvaneSyncCore/Services/Ingest/ALEParser.h"
#include "OrvaneSyncCore/Services/Metadata/MetadataMerger.h"

#include <functional>
#include <optional>
#include <string>

namespace orvane {

/// Camera and sound reports, and the metadata that came from them. Interface thread.
class ReportController {
  public:
    explicit ReportController(OpenWork& work) : work_(work) {}

    /// The report that is loaded, and where it lies; `ImportField::report` is the change of any of these
    /// four.
    const std::optional<ALEFile>& aleFile() const { return aleFile_; }
    const std::optional<FileURL>& aleFileURL() const { return aleFileURL_; }
    /// Why the last report could not be loaded, with the file's name; absent when it was.
    const std::optional<std::string>& aleImportError() const { return aleImportError_; }
    /// The last message of a report merge; absent without a report.
    const std::optional<std::string>& aleMatchStatus() const { return aleMatchStatus_; }

    /// Reads a report and lays it over the clips; with no clips yet, the next scan does. A failure leaves
    /// `aleImportError`, and forgets an earlier report.
    void loadALE(const FileURL& url);
    /// The same for a report that a project names. Its URL stays also where it can't be read just now: a save
    /// keeps its path, and no output goes over it.
    void loadALEOfProject(const FileURL& url);
    /// Lays the report over the clips again, where there is one.
    void mergeLoadedReport();
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
    void forget();
    void clearMetadata(const UndoStep& step, const std::function<bool(SyncGroupList&)>& clear);

    OpenWork& work_;
    std::optional<FileURL> aleFileURL_;
    std::optional<ALEFile> aleFile_;
    std::optional<std::string> aleImportError_;
    std::optional<std::string> aleMatchStatus_;
    const ALEParser aleParser_{};
    const MetadataMerger metadataMerger_{};
};

} // namespace orvane
