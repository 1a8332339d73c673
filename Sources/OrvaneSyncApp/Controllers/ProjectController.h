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

/// The parts of an opened project that belong to no clip.
struct ProjectEntries {
    /// The project with those entries whose clips no scan has found yet, because a folder or a card was
    /// missing. They are applied by a scan that finds the clips, and every save keeps them. Null if there are
    /// none.
    std::shared_ptr<const OrvaneSyncProject> unapplied = {};
    /// The entries of the clips whose choice of tracks was left out: a scan that finds their recordings
    /// applies it, and every save keeps it.
    std::vector<PersistedGroup> leftOut = {};
    std::vector<FileURL> tracksLeftOut = {}; ///< the videos of these clips, if found
    /// The videos of clips to which the editor had attached recordings that the scan did not match to them.
    std::vector<FileURL> withoutRecording = {};
    /// Camera files that the last scan left out as copies, and whose decisions it did not apply because the
    /// file that is used has others (`entriesOfUsedFiles`).
    std::vector<FileURL> copiesNotApplied = {};
};

/// The project file: only the editor's decisions, which are applied to a new scan. Interface thread.
class ProjectController {
  public:
    ProjectController(OpenWork& work, ScanController& scan, ReportController& reports);

    /// The file that the project was opened from or last saved to.
    const std::optional<FileURL>& currentURL() const { return currentURL_; }
    /// Writes the decisions as they are at the call, on another thread. Also keeps what an opened project
    /// says about clips that were not found, and the choices of tracks that were left out, until the editor
    /// makes another choice. The task ends with OutputRefused, FileError or ProjectError if the file can't be
    /// written; the old file is unchanged then.
    platform::Task saveProject(FileURL url, OutputPermission permission = {});
    /// Scans the project's folders and applies its edits to the clips. If a folder is missing, no scan runs,
    /// the clips are unchanged, and the edits wait for the next scan. The task ends with a FileError or
    /// ProjectError if the file can't be opened; nothing is changed then.
    ///
    /// After this the work is that of the project: the undo steps of the earlier work are gone.
    platform::Task loadProject(FileURL url);
    /// Called when a project was read and is about to replace the work, and when it has replaced it or was
    /// abandoned: for the owner of the work.
    std::function<void(const FileURL& file)> whenOpening;
    std::function<void()> whenOpened;
    /// The videos of the clips whose edits wait for a scan that finds them.
    std::vector<FileURL> clipsNotFound() const;
    std::vector<FileURL> clipsWithoutRecording() const { return entries()->withoutRecording; }
    /// The videos of the clips whose choice of tracks was left out: its numbers count channels of recordings
    /// that the scan has not found.
    const std::vector<FileURL>& tracksLeftOut() const { return entries()->tracksLeftOut; }
    std::vector<FileURL> copiesNotApplied() const { return entries()->copiesNotApplied; }
    /// Discards the edits that wait for their clips.
    void clear();

  private:
    struct Opened;
    static Opened read(const FileURL& url, const std::stop_token& stop);
    static platform::Task open(std::weak_ptr<ProjectController> weak, FileURL url);
    static platform::Task openWork(std::weak_ptr<ProjectController> weak, Opened opened, FileURL url);
    static platform::Task save(std::weak_ptr<ProjectController> weak, FileURL url,
                               OutputPermission permission);
    void setCurrentURL(FileURL url);
    /// Those of the open work, which undo restores together with the clips. Never null.
    std::shared_ptr<const ProjectEntries> entries() const;
    ScanController::EditOfClips edits();
    void takeOverFromScan();
    void adoptLeftOut(const ProjectEntries& held, std::vector<FileURL> videos);
    void applyToWildTracks(const std::vector<PersistedWildTrack>& entries);
    void applyEditsToRemainingClips();

    OpenWork& work_;
    ScanController& scan_;
    ReportController& reports_;
    std::optional<FileURL> currentURL_;
    /// Written by the running scan, on its thread, before it calls back.
    std::shared_ptr<std::vector<FileURL>> tracksLeftOutByScan_;
    std::uint64_t clearings_ = 0; ///< by this a save sees that its work is closed
    const ProjectService projectService_{};
};

} // namespace orvane
