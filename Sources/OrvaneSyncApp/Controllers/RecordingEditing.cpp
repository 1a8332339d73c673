#include "OrvaneSyncApp/Controllers/RecordingEditing.h"

#include "OrvaneSyncApp/Controllers/Resync.h"
#include "OrvaneSyncApp/Controllers/UndoSteps.h"
#include "OrvaneSyncCore/Services/Matching/Recordings.h"
#include "OrvaneSyncCore/Services/Matching/SyncEngine.h"
#include "OrvaneSyncCore/Services/Takes/ClipRecordings.h"
#include "OrvaneSyncCore/Services/Takes/TakeDecisions.h"
#include "OrvaneSyncCore/Utilities/Day.h"
#include "Platform/OnQueue.h"
#include "Platform/Text.h"

#include <algorithm>
#include <cmath>
#include <tuple>
#include <unordered_set>
#include <utility>

namespace orvane {

namespace {

bool uses(const SyncGroup& group, const UUID& audioID) {
    return std::ranges::any_of(group.audioMatches,
                               [&](const AudioMatch& match) { return match.audio->id == audioID; });
}

} // namespace

void RecordingEditing::attachAudioToGroup(UUID groupID, MediaAsset audio) {
    const SyncGroup* group = work_.unlockedGroup(groupID);
    if (group == nullptr) return;
    if (uses(*group, audio.id)) {
        confirmAmbiguousMatch(groupID);
        return;
    }
    const auto isIt = [&](const WildTrack& track) { return track.id == audio.id; };
    const MatchRules rules = work_.matchRules();
    work_.notices.together([&] {
        work_.edit(groupID, [&](SyncGroup& own) {
            const SyncGroup before = own;
            own.audioMatches.push_back(SyncEngine::matchByTimecode(own.video, audio, rules));
            own.matchStatus = MatchStatus::manual();
            carryDecisions(own, before);
        });
        if (std::ranges::any_of(work_.wildTracks(), isIt))
            work_.changeWildTracks([&](std::vector<WildTrack>& tracks) { std::erase_if(tracks, isIt); });
        smartAudio_.caches().removeSmartAudioCaches(groupID);
    });
}

platform::Task RecordingEditing::chooseAndAttachAudio(UUID groupID, FileURL file) {
    work_.notices.assertOnMainThread();
    return work_.running.add(attachFile(work_.weak(this), groupID, std::move(file)));
}

platform::Task RecordingEditing::attachFile(std::weak_ptr<RecordingEditing> weak, UUID groupID,
                                            FileURL file) {
    const auto audio = std::make_shared<std::optional<MediaAsset>>();
    auto self = weak.lock();
    const platform::Task probing = self->scan_.probeAudio(std::move(file), audio);
    self.reset();
    co_await probing;
    self = weak.lock();
    if (!self) co_return;
    self->work_.withUndo(undoSteps::attachAudioToGroup, [&] { self->attachAudioToGroup(groupID, **audio); });
}

void RecordingEditing::removeAudioMatch(UUID groupID, UUID matchID) {
    const SyncGroup* group = work_.unlockedGroup(groupID);
    if (group == nullptr) return;
    const auto match = std::ranges::find(group->audioMatches, matchID, &AudioMatch::id);
    if (match == group->audioMatches.end()) return;
    const std::vector<AudioMatch> released{*match};
    work_.notices.together([&] {
        work_.edit(groupID, [&](SyncGroup& own) {
            const SyncGroup before = own;
            std::erase_if(own.audioMatches, [&](const AudioMatch& one) { return one.id == matchID; });
            own.matchStatus = statusAfterRemoval(own);
            carryDecisions(own, before);
            carryAnchor(own, before);
        });
        settleWildTracks(released);
        smartAudio_.caches().removeSmartAudioCaches(groupID);
    });
}

void RecordingEditing::confirmAmbiguousMatch(UUID groupID) {
    const SyncGroup* group = work_.unlockedGroup(groupID);
    if (group == nullptr || group->matchStatus.kind != MatchStatus::Kind::ambiguous) return;
    work_.edit(groupID, [](SyncGroup& own) { own.matchStatus = MatchStatus::manual(); });
}

void RecordingEditing::confirmAllAmbiguousMatches() {
    work_.editWhere(
        [](const SyncGroup& group) {
            return !group.isLocked && group.matchStatus.kind == MatchStatus::Kind::ambiguous;
        },
        [](SyncGroup& own) { own.matchStatus = MatchStatus::manual(); });
}

void RecordingEditing::chooseRecording(UUID groupID, UUID matchID) {
    const SyncGroup* group = work_.unlockedGroup(groupID);
    if (group == nullptr) return;
    for (const auto& recording : recordingsOf(*group)) {
        const auto holds = [&](std::size_t match) { return group->audioMatches[match].id == matchID; };
        if (std::ranges::none_of(recording, holds)) continue;
        work_.notices.together([&] {
            work_.edit(groupID, [&](SyncGroup& own) {
                const SyncGroup before = own;
                putFirst(own, recording);
                own.matchStatus = MatchStatus::manual();
                carryDecisions(own, before);
                startWithRecording(own, before);
                carryAnchor(own, before);
            });
            smartAudio_.caches().removeSmartAudioCaches(groupID);
        });
        return;
    }
}

void RecordingEditing::removeVideoFromSync(UUID groupID) {
    const SyncGroup* group = work_.unlockedGroup(groupID);
    if (group == nullptr) return;
    const std::vector<AudioMatch> released = group->audioMatches;
    work_.notices.together([&] {
        work_.changeClips([&](SyncGroupList& groups) {
            groups = groups.filtered([&](const SyncGroup& one) { return one.id != groupID; });
            groups.makeIndex();
        });
        settleWildTracks(released);
        smartAudio_.caches().removeSmartAudioCaches(groupID);
    });
}

RecordingEditing::RecordingEditing(OpenWork& work, ScanController& scan, SmartAudioController& smartAudio)
    : work_(work), scan_(scan), smartAudio_(smartAudio),
      matching_(platform::SerialQueue::create("matching")) {}

/// A recording that a clip uses is not a wild track. A recording that clips have released is one if no clip
/// uses it any more.
void RecordingEditing::settleWildTracks(const std::vector<AudioMatch>& released) {
    auto tracks = settledWildTracks(work_.wildTracks(), released,
                                    [&](const UUID& audioID) { return !work_.clipsUsing(audioID).empty(); });
    if (tracks) work_.changeWildTracks([&](std::vector<WildTrack>& all) { all = std::move(*tracks); });
}

platform::Task RecordingEditing::resyncClip(UUID groupID) {
    work_.notices.assertOnMainThread();
    if (work_.syncGroups().find(groupID) == nullptr) return platform::Task::ended();
    const bool isFirst = resyncAsked_.empty() || resyncing_->isDone(); // that one may have been stopped
    if (isFirst) resyncAsked_.clear();
    resyncAsked_.push_back(groupID);
    if (isFirst) resyncing_ = work_.running.add(resyncAsked(work_.weak(this)));
    return *resyncing_;
}

platform::Task RecordingEditing::resyncAsked(std::weak_ptr<RecordingEditing> weak) {
    auto self = weak.lock();
    if (!self) co_return;
    // Waits a turn of the queue, so that clips requested at the same time are matched together.
    auto others = platform::onQueue(*self->matching_, self->work_.environment.mainThread, [] {});
    self.reset();
    co_await others;
    self = weak.lock();
    if (!self) co_return;
    MatchRules rules = self->work_.matchRules();
    rules.days = *self->work_.nextCorrections().days;
    auto matching =
        platform::onQueue(*self->matching_, self->work_.environment.mainThread,
                          [files = self->workFiles(), rules, asked = std::exchange(self->resyncAsked_, {})](
                              const std::stop_token& stop) { return rematched(files, asked, rules, stop); });
    self.reset();
    const std::vector<SyncGroup> matched = co_await matching;
    self = weak.lock();
    if (self) self->work_.withUndo(undoSteps::resyncClip, [&] { self->resync(matched); });
}

/// Clips that do not exist any more are ignored.
void RecordingEditing::resync(const std::vector<SyncGroup>& matched) {
    std::vector<AudioMatch> released;
    for (const SyncGroup& fresh : matched) {
        const bool isThere = work_.edit(fresh.id, [&](SyncGroup& own) {
            released.insert(released.end(), own.audioMatches.begin(), own.audioMatches.end());
            copyMatches(own, fresh);
        });
        if (isThere) smartAudio_.caches().removeSmartAudioCaches(fresh.id);
    }
    settleWildTracks(released);
}

platform::Task RecordingEditing::resyncAllClips() {
    work_.notices.assertOnMainThread();
    return work_.running.add(resyncAll(work_.weak(this)));
}

platform::Task RecordingEditing::resyncAll(std::weak_ptr<RecordingEditing> weak) {
    for (;;) {
        auto self = weak.lock();
        if (!self) co_return;
        const WorkFiles before = self->workFiles();
        auto matching = platform::onQueue(
            *self->matching_, self->work_.environment.mainThread,
            [before, corrections = self->work_.nextCorrections()](const std::stop_token& stop) {
                return resynced(before, corrections, stop);
            });
        self.reset();
        auto made = co_await matching;
        self = weak.lock();
        if (!self || !made || self->scan_.scanResult() != before.scanned) co_return;
        if (!made->follow(before, self->workFiles())) continue; // to match the clips as they are now
        self->work_.notices.together([&] {
            self->work_.withUndo(undoSteps::resyncAllClips, [&] {
                self->work_.setClips(std::move(made->groups), std::move(made->wildTracks));
            });
            self->work_.setMatchedBy(std::move(made->by));
            self->smartAudio_.caches().invalidateCachesAfterUndo();
        });
        co_return;
    }
}

platform::Task RecordingEditing::keepDecisions(WorkFiles earlier) {
    work_.notices.assertOnMainThread();
    return work_.running.add(keep(work_.weak(this), std::move(earlier)));
}

platform::Task RecordingEditing::keep(std::weak_ptr<RecordingEditing> weak, WorkFiles earlier) {
    for (;;) {
        auto self = weak.lock();
        if (!self || self->work_.undoState().undoActionName != undoSteps::scanAndMatch.actionName) co_return;
        const WorkFiles scanned = self->workFiles();
        auto applying = platform::onQueue(*self->matching_, self->work_.environment.mainThread,
                                          [earlier, scanned](const std::stop_token& stop) {
                                              return withDecisionsOf(earlier, scanned, stop);
                                          });
        self.reset();
        WithDecisions made = co_await applying;
        self = weak.lock();
        if (!self || self->scan_.scanResult() != scanned.scanned) co_return;
        // An analysis that started after the scan may have changed clips meanwhile.
        if (!self->work_.syncGroups().changesSince(scanned.groups).empty() ||
            self->work_.sharedWildTracks() != scanned.wildTracks)
            continue;
        self->work_.notices.together([&] {
            self->smartAudio_.caches().leaveClips();
            self->work_.withinLastStep(
                [&] { self->work_.setClips(std::move(made.groups), std::move(made.wildTracks)); });
            self->smartAudio_.restoreAfterUndo();
        });
        co_return;
    }
}

const MediaAsset* RecordingEditing::audioInPool(const UUID& id) const {
    work_.notices.assertOnMainThread();
    const WorkFiles all = workFiles();
    if (const auto* scanned = all.scannedAudio()) {
        const auto found = std::ranges::find(*scanned, id, &MediaAsset::id);
        return found == scanned->end() ? nullptr : &*found;
    }
    if (const auto& clips = work_.clipsUsing(id); !clips.empty())
        for (const AudioMatch& match : work_.syncGroups()[clips.front()].audioMatches)
            if (match.audio->id == id) return &*match.audio;
    const auto& wild = work_.wildTracks();
    const auto track = std::ranges::find(wild, id, &WildTrack::id);
    return track == wild.end() ? nullptr : &track->audio;
}

std::vector<MediaAsset> RecordingEditing::rawFilesAvailableToAttach(UUID excludingGroupID) const {
    std::unordered_set<UUID> left;
    for (const WildTrack& track : work_.wildTracks()) left.insert(track.id);
    if (const SyncGroup* group = work_.syncGroups().find(excludingGroupID))
        for (const AudioMatch& match : group->audioMatches) left.insert(match.audio->id);

    const auto ofOtherDays = recordingsOfOtherDays(excludingGroupID);
    struct File {
        bool isOfOtherDay;
        std::string key; ///< of its name, for sorting
        const MediaAsset* audio;
    };
    std::vector<File> files;
    for (const MediaAsset* audio : workFiles().audioPool())
        if (!left.contains(audio->id))
            files.push_back({ofOtherDays.contains(audio->id),
                             platform::text::localizedStandardSortKey(audio->filename), audio});
    std::ranges::stable_sort(files, [](const File& a, const File& b) {
        return std::tie(a.isOfOtherDay, a.key) < std::tie(b.isOfOtherDay, b.key);
    });
    std::vector<MediaAsset> result;
    result.reserve(files.size());
    for (const File& file : files) result.push_back(*file.audio);
    return result;
}

std::unordered_set<UUID> RecordingEditing::recordingsOfOtherDays(UUID groupID) const {
    std::vector<const MediaAsset*> all = workFiles().audioPool();
    for (const WildTrack& track : work_.wildTracks()) all.push_back(&track.audio);
    Places places(work_.matchRules());
    for (const SyncGroup& group : work_.syncGroups()) places.learn(group.video);
    for (const MediaAsset* audio : all) places.learn(*audio);
    std::unordered_set<UUID> found;
    const SyncGroup* own = work_.syncGroups().find(groupID);
    const auto clip = own != nullptr ? places.of(own->video) : std::nullopt;
    if (!clip) return found;
    for (const MediaAsset* audio : all)
        if (areOfOtherDays(*clip, places.of(*audio))) found.insert(audio->id);
    return found;
}

std::vector<std::string> RecordingEditing::clipNames(UUID usingAudioID) const {
    std::vector<std::string> names;
    for (const std::size_t position : work_.clipsUsing(usingAudioID))
        names.push_back(work_.syncGroups()[position].clipName);
    std::ranges::sort(names);
    return names;
}

std::string RecordingEditing::rawFilesMenuLabel(const MediaAsset& audio) const {
    const auto& clips = work_.clipsUsing(audio.id);
    std::string name = work_.fileNames().of(audio);
    if (clips.empty()) return name;
    const SyncGroup& first = work_.syncGroups()[clips.front()];
    const std::string only =
        first.clipName == first.video.filename ? work_.fileNames().of(first.video) : first.clipName;
    return name + "  ·  also on " + (clips.size() == 1 ? only : std::to_string(clips.size()) + " clips");
}

void RecordingEditing::editWildTrack(UUID id, const std::function<void(WildTrack&)>& change) {
    const auto isIt = [&](const WildTrack& track) { return track.id == id; };
    if (std::ranges::none_of(work_.wildTracks(), isIt)) return;
    work_.changeWildTracks(
        [&](std::vector<WildTrack>& tracks) { change(*std::ranges::find_if(tracks, isIt)); });
}

void RecordingEditing::renameWildTrack(UUID id, std::string_view name) {
    editWildTrack(id, [&](WildTrack& track) {
        track.customName = name.empty() ? track.audio.filenameStem() : std::string(name);
    });
}

void RecordingEditing::toggleWildTrackApproved(UUID id) {
    editWildTrack(id, [](WildTrack& track) { track.isApproved = !track.isApproved; });
}

} // namespace orvane
