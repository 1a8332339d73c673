#pragma once

#include "OrvaneSyncApp/Controllers/OpenWork.h"
#include "OrvaneSyncApp/Controllers/ReportController.h"
#include "OrvaneSyncApp/Controllers/ScanController.h"
#include "OrvaneSyncCore/Services/Persistence/OutputGuard.h"
#include "OrvaneSyncCore/Services/Persistence/ProjectService.h"
#include "Platform/Task.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace orvane {

/// What an opened project says that belongs to no clip.
struct ProjectEntries {
    /// The project with those entries whose clips no scan has found yet: a folder was gone, or a card was not
    /// in. They wait for a scan that finds the clips, and every save keeps them. Null when none waits.
    std::shared_ptr<const OrvaneSyncProject> unapplied = {};
    /// What it says of the clips whose choice of tracks was left out: a scan that finds their recordings
    /// gives it to them, and every save keeps it.
    std::vector<PersistedGroup> leftOut = {};
    std::vector<FileURL> tracksLeftOut = {}; ///< the videos of these clips that are there
    /// The videos of clips to which recordings were attached by hand that the scan did not lay under them.
    std::vector<FileURL> withoutRecording = {};
};

/// The project file: the editor's decisions alone, laid over a new scan. Interface thread.
class ProjectController {
  public:
    ProjectController(OpenWork& work, ScanController& scan, ReportController& reports);

    /// The file that the project was opened from or last saved to.
    const std::optional<FileURL>& currentURL() const { return currentURL_; }
    /// Writes the decisions as they are at the call, on another thread. Also keeps what an opened project
    /// says of clips that were not found, and choices of tracks that were left out, as long as nobody makes
    /// another one. The task ends with OutputRefused, FileError or ProjectError when the file can't be
    /// written; the old file then stands.
    platform::Task saveProject(FileURL url, OutputPermission permission = {});
    /// Scans the project's folders and lays its edits over the clips. Where a folder is not there, no scan
    /// runs, the clips stay as they were, and the edits wait for the next scan. The task ends with a
    /// FileError or ProjectError when the file can't be opened; then nothing has changed.
    ///
    /// The work is then that of the project: no step of the work before can be taken back.
    platform::Task loadProject(FileURL url);
    /// Called when a project was read and is about to take the place of the work, and when it has or was
    /// given up: for the owner of the work.
    std::function<void(const FileURL& file)> whenOpening;
    std::function<void()> whenOpened;
    /// The clips, by their video, whose edits wait for a scan that finds them.
    std::vector<FileURL> clipsNotFound() const;
    std::vector<FileURL> clipsWithoutRecording() const { return entries()->withoutRecording; }
    /// The clips, by their video, whose choice of tracks was left out: its numbers count the channels of
    /// recordings that the scan has not found.
    const std::vector<FileURL>& tracksLeftOut() const { return entries()->tracksLeftOut; }
    /// Edits that wait for their clips wait no longer.
    void clear();

  private:
    struct Opened;
    static Opened read(const FileURL& url);
    static platform::Task open(std::weak_ptr<ProjectController> weak, FileURL url);
    static platform::Task openWork(std::weak_ptr<ProjectController> weak, Opened opened, FileURL url);
    static platform::Task save(std::weak_ptr<ProjectController> weak, FileURL url,
                               OutputPermission permission);
    void setCurrentURL(FileURL url);
    /// Of the open work, which steps back to them with the clips. Never null.
    std::shared_ptr<const ProjectEntries> entries() const;
    ScanController::EditOfClips edits();
    void takeOverFromScan();
    void adoptLeftOut(std::vector<FileURL> videos);
    void layEditsOverClipsThatStayed();

    OpenWork& work_;
    ScanController& scan_;
    ReportController& reports_;
    std::optional<FileURL> currentURL_;
    /// Written by the scan under way, on its thread, before it calls back.
    std::shared_ptr<std::vector<FileURL>> tracksLeftOutByScan_;
    std::uint64_t clearings_ = 0; ///< tells a save that its work is no longer open
    const ProjectService projectService_{};
};

} // namespace orvane
