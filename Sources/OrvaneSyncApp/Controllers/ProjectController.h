#pragma once

#include "OrvaneSyncApp/Controllers/OpenWork.h"
#include "OrvaneSyncApp/Controllers/ReportController.h"
#include "OrvaneSyncApp/Controllers/ScanController.h"
#include "OrvaneSyncCore/Services/Persistence/OutputGuard.h"
#include "OrvaneSyncCore/Services/Persistence/ProjectService.h"
#include "Platform/Task.h"

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace orvane {

/// The project file: the editor's decisions alone, laid over a new scan. Interface thread.
class ProjectController {
  public:
    ProjectController(OpenWork& work, ScanController& scan, ReportController& reports);

    /// The file that the project was opened from or last saved to.
    const std::optional<FileURL>& currentURL() const { return currentURL_; }
    /// Also keeps what an opened project says of clips that were not found. Throws OutputRefused, FileError
    /// or ProjectError; the old file then stands.
    void saveProject(const FileURL& url, OutputPermission permission = {});
    /// Scans the project's folders and lays its edits over the clips. Where a folder is not there, no scan
    /// runs, the clips stay as they were, and the edits wait for the next scan. The task ends with a
    /// FileError or ProjectError when the file can't be opened; then nothing has changed.
    platform::Task loadProject(FileURL url);
    /// The clips, by their video, whose edits wait for a scan that finds them.
    std::vector<FileURL> clipsNotFound() const;
    /// The clips, by their video, whose choice of tracks was left out: its numbers count the channels of
    /// recordings that the scan has not found.
    const std::vector<FileURL>& tracksLeftOut() const { return tracksLeftOut_; }
    /// Edits that wait for their clips wait no longer.
    void clear();

    /// What the open work was read from: folders, media, the report and the project. No output may lie there,
    /// but a project is saved to the place that it was opened from.
    RunInputs inputs() const;

  private:
    static platform::Task open(std::weak_ptr<ProjectController> weak, FileURL url);
    RunInputs inputsOfScan() const;
    void setCurrentURL(FileURL url);
    ScanController::EditOfClips edits();
    void takeOverFromScan();
    void layEditsOverClipsThatStayed();

    OpenWork& work_;
    ScanController& scan_;
    ReportController& reports_;
    std::optional<FileURL> currentURL_;
    /// The opened project with those entries whose clips no scan has found yet: a folder was gone, or a card
    /// was not in. They wait for a scan that finds the clips, and every save keeps them. Absent when none
    /// waits.
    std::shared_ptr<const OrvaneSyncProject> unapplied_;
    std::vector<FileURL> tracksLeftOut_;
    /// Written by the scan under way, on its thread, before it calls back.
    std::shared_ptr<std::vector<FileURL>> tracksLeftOutByScan_;
    const ProjectService projectService_{};
};

} // namespace orvane
