#include "OrvaneSyncApp/Controllers/ProjectController.h"

#include "OrvaneSyncApp/Controllers/DecisionsOfCopies.h"
#include "OrvaneSyncApp/Controllers/ProjectTracks.h"
#include "OrvaneSyncApp/Controllers/WorkInputs.h"
#include "OrvaneSyncCore/Services/Takes/TakeDecisions.h"
#include "Platform/Files.h"
#include "Platform/OnQueue.h"
#include "Platform/Stop.h"

#include <algorithm>
#include <exception>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace orvane {

namespace {

bool isThere(const std::optional<FileURL>& folder) {
    return !folder || platform::files::exists(folder->path);
}

/// Adds the entries that wait for their clips to the project, after those of the clips that exist.
void keepUnapplied(const OrvaneSyncProject& unapplied, OrvaneSyncProject& project) {
    std::unordered_set<FileURL> present;
    for (const PersistedGroup& entry : project.groups) present.insert(entry.videoPath);
    for (const PersistedGroup& entry : unapplied.groups)
        if (!present.contains(entry.videoPath)) project.groups.push_back(entry);
    std::unordered_set<FileURL> tracks;
    for (const PersistedWildTrack& entry : project.wildTracks) tracks.insert(entry.audioPath);
    for (const PersistedWildTrack& entry : unapplied.wildTracks)
        if (!tracks.contains(entry.audioPath)) project.wildTracks.push_back(entry);
}

using EntriesByVideo = std::unordered_map<FileURL, const PersistedGroup*>;

EntriesByVideo byVideo(const std::vector<PersistedGroup>& entries) {
    EntriesByVideo result;
    for (const PersistedGroup& entry : entries) result.emplace(entry.videoPath, &entry);
    return result;
}

void takeTracks(const PersistedGroup& entry, SyncGroup& other) {
    other.manualActiveTracks = entry.decisions.manualActiveTracks;
    other.algorithmExcludedTracks = entry.decisions.algorithmExcludedTracks;
    other.manualBlockOverrides = entry.decisions.manualBlockOverrides;
}

/// Stores the track decisions that could not be applied, for clips for which the editor has not chosen tracks
/// since. `project` has an entry for each clip, in their order.
void keepUnappliedGroups(const std::vector<PersistedGroup>& leftOut, const SyncGroupList& groups,
                         OrvaneSyncProject& project) {
    const EntriesByVideo entries = byVideo(leftOut);
    for (std::size_t i = 0; i < groups.size() && !entries.empty(); ++i) {
        const SyncGroup& group = groups[i];
        const auto entry = entries.find(group.video.url);
        const bool isChosenAgain = group.hasManualTrackEdits() || !group.algorithmExcludedTracks.empty() ||
                                   !group.manualBlockOverrides.empty();
        if (entry == entries.end() || isChosenAgain) continue;
        PersistedGroup& own = project.groups[i];
        own.audioPaths = entry->second->audioPaths; // the track numbers count the channels of these
        takeTracks(*entry->second, own.decisions);
    }
}

/// The entries about files that the scan left out as copies become entries about the files that are used.
ProjectEntries forUsedFiles(const ProjectEntries& held, const std::vector<CameraCopy>& copies) {
    ProjectEntries result = held;
    result.copiesNotApplied.clear();
    if (copies.empty()) return result;
    if (held.unapplied) {
        auto project = std::make_shared<OrvaneSyncProject>(*held.unapplied);
        project->groups = entriesOfUsedFiles(std::move(project->groups), copies, result.copiesNotApplied);
        result.unapplied = std::move(project);
    }
    result.leftOut = entriesOfUsedFiles(std::move(result.leftOut), copies, result.copiesNotApplied);
    return result;
}

/// Applies the project to the clips, and the tracks of the entries that were left out. Returns the videos of
/// the clips that lost their choice of tracks.
std::vector<FileURL> applyUnapplied(const ProjectService& service, const OrvaneSyncProject* project,
                                    const std::vector<PersistedGroup>& leftOut, SyncGroupList& groups,
                                    const std::vector<MediaAsset>& otherAudio, const MatchRules& rules,
                                    const std::stop_token& stop) {
    const EntriesByVideo entries = byVideo(leftOut);
    groups.updateWhere([&](const SyncGroup& group) { return entries.contains(group.video.url); },
                       [&](SyncGroup& group) { takeTracks(*entries.at(group.video.url), group); });
    OrvaneSyncProject all;
    all.groups = leftOut;
    if (project != nullptr) {
        platform::throwIfStopped(stop);
        service.applyEdits(*project, groups);
        platform::throwIfStopped(stop);
        settleAsStored(*project, groups);
        all.groups.insert(all.groups.end(), project->groups.begin(), project->groups.end());
    }
    platform::throwIfStopped(stop);
    AudioByURL known;
    for (const SyncGroup& group : groups)
        for (const AudioMatch& match : group.audioMatches) known[match.audio->url] = &*match.audio;
    for (const MediaAsset& audio : otherAudio) known[audio.url] = &audio;
    platform::throwIfStopped(stop);
    auto leftOutTracks = fitTracksToRecordings(all, groups, known, rules);
    groups.updateWhere(countsTakesSeparately, countTakesTogether);
    return leftOutTracks;
}

} // namespace

/// A project that was read, and whether a scan of its folders can begin.
struct ProjectController::Opened {
    std::shared_ptr<const OrvaneSyncProject> project;
    bool hasFolders = false;
};

ProjectController::Opened ProjectController::read(const FileURL& url, const std::stop_token& stop) {
    const auto project = std::make_shared<const OrvaneSyncProject>(ProjectService().load(url, stop));
    return {project, isThere(project->videoFolderPath) && isThere(project->audioFolderPath) &&
                         std::ranges::all_of(project->scanScope.moreFolders, isThere)};
}

ProjectController::ProjectController(OpenWork& work, ScanController& scan, ReportController& reports)
    : work_(work), scan_(scan), reports_(reports) {
    scan_.editsOfClips = [this] { return edits(); };
    scan_.whenMatched = [this] { takeOverFromScan(); };
}

platform::Task ProjectController::saveProject(FileURL url, OutputPermission permission) {
    work_.notices.assertOnMainThread();
    return work_.running.add(save(work_.weak(this), std::move(url), std::move(permission)));
}

platform::Task ProjectController::save(std::weak_ptr<ProjectController> weak, FileURL url,
                                       OutputPermission permission) {
    auto self = weak.lock();
    const std::uint64_t clearings = self->clearings_;
    const OpenWork& work = self->work_;
    // Not stopped by anything: closing the work stops what runs, but must not lose what was to be saved.
    auto writing = platform::onQueue(
        *work.documents, work.environment.mainThread,
        [url, permission = std::move(permission), inputs = inputsOfScan(work, self->reports_, self->scan_),
         service = self->projectService_, video = work.videoFolderURL(), audio = work.audioFolderURL(),
         report = self->reports_.aleFileURL(), groups = work.syncGroups(), scope = work.scanScope(),
         wildTracks = work.sharedWildTracks(), corrections = work.keptCorrections(),
         date = work.environment.clock->date(), entries = self->entries()] {
            const OutputGuard guard(OutputKind::project, inputs(), permission);
            OrvaneSyncProject project = service.snapshot(video, audio, report, groups, date, scope);
            project.sourceCorrections = corrections;
            project.wildTracks = decidedWildTracks(*wildTracks);
            keepUnappliedGroups(entries->leftOut, groups, project);
            if (entries->unapplied) keepUnapplied(*entries->unapplied, project);
            service.save(project, url, guard);
        });
    self.reset();
    co_await writing;
    self = weak.lock();
    if (self && self->clearings_ == clearings) self->setCurrentURL(std::move(url));
}

void ProjectController::setCurrentURL(FileURL url) {
    currentURL_ = std::move(url);
    work_.notify(ImportField::project);
}

platform::Task ProjectController::loadProject(FileURL url) {
    work_.notices.assertOnMainThread();
    return work_.running.add(open(work_.weak(this), std::move(url)));
}

platform::Task ProjectController::open(std::weak_ptr<ProjectController> weak, FileURL url) {
    auto self = weak.lock();
    auto reading = platform::onQueue(*self->work_.documents, self->work_.environment.mainThread,
                                     [url](const std::stop_token& stop) { return read(url, stop); });
    self.reset();
    Opened opened = co_await reading; // after a failure nothing has changed
    self = weak.lock();
    if (!self) co_return;
    if (self->whenOpening) self->whenOpening(url);
    self.reset();
    const platform::Task opening = openWork(weak, std::move(opened), std::move(url));
    std::exception_ptr raised;
    try {
        co_await opening;
    } catch (...) {
        raised = std::current_exception();
    }
    self = weak.lock();
    if (self && self->whenOpened) self->whenOpened();
    if (raised) std::rethrow_exception(raised);
}

platform::Task ProjectController::openWork(std::weak_ptr<ProjectController> weak, Opened opened,
                                           FileURL url) {
    auto self = weak.lock();
    self->work_.clearUndo();
    self->scan_.abandonScan();
    const auto scanBefore = self->scan_.scanNumber();
    self->work_.setVideoFolderURL(opened.project->videoFolderPath);
    self->work_.setAudioFolderURL(opened.project->audioFolderPath);
    self->work_.setScanScope(opened.project->scanScope);
    self->work_.setSourceCorrections(opened.project->sourceCorrections);
    self->clear();
    self->work_.setProjectEntries(
        std::make_shared<const ProjectEntries>(ProjectEntries{.unapplied = opened.project}));
    if (opened.project->aleFilePath) {
        const platform::Task loading = self->reports_.loadALEOfProject(*opened.project->aleFilePath);
        self.reset();
        co_await loading;
        self = weak.lock();
        if (!self || self->scan_.scanNumber() != scanBefore) co_return;
    }
    if (opened.hasFolders && self->scan_.canScan()) {
        const auto scanning = self->scan_.startScan(OpenWork::ScanOf::otherWork);
        const auto scanNumber = self->scan_.scanNumber();
        self.reset();
        co_await scanning;
        self = weak.lock();
        if (!self || self->scan_.scanNumber() != scanNumber) co_return;
        self->applyEditsToRemainingClips();
    }
    self->setCurrentURL(std::move(url));
}

std::shared_ptr<const ProjectEntries> ProjectController::entries() const {
    static const auto none = std::make_shared<const ProjectEntries>();
    const auto& held = work_.projectEntries();
    return held ? held : none;
}

std::vector<FileURL> ProjectController::clipsNotFound() const {
    std::vector<FileURL> videos;
    if (const auto& project = entries()->unapplied)
        for (const PersistedGroup& entry : project->groups) videos.push_back(entry.videoPath);
    return videos;
}

void ProjectController::clear() {
    ++clearings_;
    work_.setProjectEntries(nullptr);
}

/// If a project waits for its clips, its edits are applied to the clips that a scan makes.
ScanController::EditOfClips ProjectController::edits() {
    tracksLeftOutByScan_ = std::make_shared<std::vector<FileURL>>();
    auto held = entries();
    if (!held->unapplied && held->leftOut.empty()) return nullptr;
    return [service = projectService_, held = std::move(held),
            leftOut = tracksLeftOutByScan_](SyncGroupList& groups, const ScanResult& scanned,
                                            const MatchRules& rules, const std::stop_token& stop) {
        const ProjectEntries ofUsed = forUsedFiles(*held, scanned.copies);
        *leftOut = applyUnapplied(service, ofUsed.unapplied.get(), ofUsed.leftOut, groups,
                                  scanned.audioAssets, rules, stop);
    };
}

/// Replaces the entries left out for clips that exist; those for other clips stay.
void ProjectController::adoptLeftOut(const ProjectEntries& held, std::vector<FileURL> videos) {
    std::unordered_set<FileURL> present;
    for (const SyncGroup& group : work_.syncGroups()) present.insert(group.video.url);
    const std::unordered_set<FileURL> leftOut(videos.begin(), videos.end());
    auto adopted = std::make_shared<ProjectEntries>();
    adopted->copiesNotApplied = held.copiesNotApplied;
    const auto add = [&](const PersistedGroup& entry) {
        if (leftOut.contains(entry.videoPath) || !present.contains(entry.videoPath))
            adopted->leftOut.push_back(entry);
    };
    std::ranges::for_each(held.leftOut, add);
    if (held.unapplied)
        for (const PersistedGroup& entry : held.unapplied->groups)
            if (present.contains(entry.videoPath)) add(entry);
    adopted->unapplied = held.unapplied;
    adopted->tracksLeftOut = std::move(videos);
    work_.setProjectEntries(std::move(adopted));
}

/// Entries whose clips still do not exist continue to wait.
void ProjectController::takeOverFromScan() {
    const auto& scanned = scan_.scanResult();
    adoptLeftOut(forUsedFiles(*entries(), scanned ? scanned->copies : std::vector<CameraCopy>()),
                 std::move(*tracksLeftOutByScan_));
    auto held = std::make_shared<ProjectEntries>(*entries());
    if (!held->unapplied) return;
    const EntriesByVideo stored = byVideo(held->unapplied->groups);
    std::unordered_set<FileURL> found;
    for (const SyncGroup& group : work_.syncGroups()) {
        found.insert(group.video.url);
        const auto entry = stored.find(group.video.url);
        if (group.isMOS() && entry != stored.end() && !entry->second->audioPaths.empty() &&
            entry->second->matchStatusRaw == MatchStatus::manual().name())
            held->withoutRecording.push_back(group.video.url);
    }
    auto waiting = std::make_shared<OrvaneSyncProject>(*held->unapplied);
    applyToWildTracks(waiting->wildTracks);
    std::erase_if(waiting->wildTracks, [&](const PersistedWildTrack& entry) {
        return std::ranges::any_of(
            work_.wildTracks(), [&](const WildTrack& track) { return track.audio.url == entry.audioPath; });
    });
    std::erase_if(waiting->groups,
                  [&](const PersistedGroup& entry) { return found.contains(entry.videoPath); });
    const bool isAllApplied = waiting->groups.empty() && waiting->wildTracks.empty();
    held->unapplied = isAllApplied ? nullptr : std::move(waiting);
    work_.setProjectEntries(std::move(held));
}

void ProjectController::applyToWildTracks(const std::vector<PersistedWildTrack>& entries) {
    if (entries.empty()) return;
    std::unordered_map<FileURL, const PersistedWildTrack*> byAudio;
    for (const PersistedWildTrack& entry : entries) byAudio[entry.audioPath] = &entry;
    work_.changeWildTracks([&](std::vector<WildTrack>& tracks) {
        for (WildTrack& track : tracks) {
            const auto entry = byAudio.find(track.audio.url);
            if (entry == byAudio.end()) continue;
            if (!entry->second->customName.empty()) track.customName = entry->second->customName;
            track.isApproved = entry->second->isApproved;
        }
    });
}

/// A scan that finds no files keeps the clips of earlier work. The project's edits are applied to them, and
/// still wait for their media.
void ProjectController::applyEditsToRemainingClips() {
    const auto& found = scan_.discoveryResult();
    const auto held = entries();
    if (!held->unapplied || !found || !found->isEmpty() || work_.syncGroups().empty()) return;
    std::vector<MediaAsset> wild;
    for (const WildTrack& track : work_.wildTracks()) wild.push_back(track.audio);
    std::vector<FileURL> leftOut;
    work_.changeClips([&](SyncGroupList& groups) {
        leftOut = applyUnapplied(projectService_, held->unapplied.get(), held->leftOut, groups, wild,
                                 work_.matchRules(), {});
    });
    applyToWildTracks(held->unapplied->wildTracks);
    adoptLeftOut(*held, std::move(leftOut));
}

} // namespace orvane
