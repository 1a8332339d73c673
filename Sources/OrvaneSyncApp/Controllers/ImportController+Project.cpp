#include "OrvaneSyncApp/Controllers/ImportController.h"

#include "Platform/Files.h"

#include <algorithm>
#include <string_view>
#include <unordered_set>
#include <utility>

namespace orvane {

namespace {

bool isThere(const std::optional<FileURL>& folder) {
    return !folder || platform::files::exists(folder->path);
}

/// Entries that wait for their clips stand in the file behind those of the clips that are there.
void keepUnapplied(const OrvaneSyncProject& unapplied, OrvaneSyncProject& project) {
    std::unordered_set<FileURL> present;
    for (const PersistedGroup& entry : project.groups) present.insert(entry.videoPath);
    for (const PersistedGroup& entry : unapplied.groups)
        if (!present.contains(entry.videoPath)) project.groups.push_back(entry);
}

} // namespace

RunInputs ImportController::inputs() const {
    assertOnMainThread();
    RunInputs inputs = inputsOfScan();
    if (project_.currentURL) inputs.addFile(project_.currentURL->path, "the project");
    return inputs;
}

RunInputs ImportController::inputsOfScan() const {
    RunInputs inputs;
    for (const auto& folder : {videoFolderURL_, audioFolderURL_})
        if (folder) inputs.addFolder(folder->path);
    if (aleFileURL_) inputs.addFile(aleFileURL_->path, "the report");
    // Media has standard paths already, and there may be tens of thousands of files.
    std::unordered_set<std::string_view> known;
    const auto add = [&](const FileURL& media) {
        if (known.insert(media.path).second) inputs.files.push_back({media.path, "the media file"});
    };
    if (discoveryResult_)
        for (const auto* urls : {&discoveryResult_->videoURLs, &discoveryResult_->audioURLs})
            std::ranges::for_each(*urls, add);
    for (const SyncGroup& group : syncGroups_) {
        add(group.video.url);
        for (const AudioMatch& match : group.audioMatches) add(match.audio->url);
    }
    for (const WildTrack& track : wildTracks_) add(track.audio.url);
    return inputs;
}

void ImportController::saveProject(const FileURL& url, OutputPermission permission) {
    assertOnMainThread();
    const OutputGuard guard(OutputKind::project, inputsOfScan(), permission);
    OrvaneSyncProject project =
        projectService_.snapshot(videoFolderURL_, audioFolderURL_, aleFileURL_, syncGroups_, clock_->date());
    if (project_.unapplied) keepUnapplied(*project_.unapplied, project);
    projectService_.save(project, url, guard);
    project_.currentURL = url;
    project_.hasUnsavedChanges = false;
    notify(ImportField::project);
}

platform::Task ImportController::loadProject(FileURL url) {
    assertOnMainThread();
    return openProject(weak_from_this(), std::move(url));
}

platform::Task ImportController::openProject(std::weak_ptr<ImportController> weak, FileURL url) {
    OrvaneSyncProject project = ProjectService().load(url); // on failure nothing has changed
    auto self = weak.lock();
    if (!self) co_return;
    self->abandonScan();
    self->set(self->videoFolderURL_, project.videoFolderPath, ImportField::videoFolderURL);
    self->set(self->audioFolderURL_, project.audioFolderPath, ImportField::audioFolderURL);
    if (project.aleFilePath) {
        self->loadALE(*project.aleFilePath);
        // Also where it can't be read just now: a save keeps its path, and no output goes over it.
        self->aleFileURL_ = project.aleFilePath;
    }
    self->project_.unapplied = std::move(project);
    if (isThere(self->videoFolderURL_) && isThere(self->audioFolderURL_) && self->canScan()) {
        const auto scanning = self->startScan();
        const auto scanNumber = self->scanNumber_;
        self.reset();
        co_await scanning;
        self = stillScanning(weak, scanNumber);
        if (!self) co_return;
        self->layEditsOverClipsThatStayed();
    }
    self->project_.currentURL = std::move(url);
    self->project_.hasUnsavedChanges = false;
    self->notify(ImportField::project);
}

/// A scan that runs finds out that its work is no longer asked for.
void ImportController::abandonScan() {
    ++scanNumber_;
    runningScan_.reset();
}

/// Where a project waits for its clips, its edits go over those that a scan has made; the others wait on.
void ImportController::applyProjectEdits() {
    if (!project_.unapplied) return;
    projectService_.applyEdits(*project_.unapplied, syncGroups_);
    std::unordered_set<FileURL> found;
    for (const SyncGroup& group : syncGroups_) found.insert(group.video.url);
    auto& waiting = project_.unapplied->groups;
    std::erase_if(waiting, [&](const PersistedGroup& entry) { return found.contains(entry.videoPath); });
    if (waiting.empty()) project_.unapplied.reset();
    notify(ImportField::syncGroups);
}

/// A scan that finds no file at all leaves the clips of earlier work. They get the project's edits, which
/// still wait for their media.
void ImportController::layEditsOverClipsThatStayed() {
    if (!project_.unapplied || !discoveryResult_ || !discoveryResult_->isEmpty() || syncGroups_.empty())
        return;
    projectService_.applyEdits(*project_.unapplied, syncGroups_);
    notify(ImportField::syncGroups);
}

} // namespace orvane
