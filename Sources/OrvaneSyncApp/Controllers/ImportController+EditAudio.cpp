#include "OrvaneSyncApp/Controllers/ImportController.h"

#include "OrvaneSyncApp/Controllers/UndoSteps.h"
#include "OrvaneSyncCore/Services/Takes/Take.h"
#include "OrvaneSyncCore/Services/Takes/TakeDecisions.h"
#include "Platform/Text.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace orvane {

namespace {

/// The files of one take are no choice to be made, however many are left.
MatchStatus statusAfterRemoval(const SyncGroup& group) {
    if (group.isMOS()) return MatchStatus::unmatched();
    const Take take = takeOf(group, assumedChannels);
    if (std::ranges::find(take.files, TakeRole::alternate, &TakeFile::role) == take.files.end())
        return MatchStatus::manual();
    return MatchStatus::ambiguous(static_cast<int>(group.audioMatches.size()));
}

/// Where the timecodes lay the audio; at the start of the clip where one of the two has no place.
AudioMatch matchByTimecode(const MediaAsset& video, const MediaAsset& audio) {
    const auto videoRange = SyncEngine::tcRange(video), audioRange = SyncEngine::tcRange(audio);
    if (!videoRange || !audioRange) return {audio, 0, 0};
    return {audio, audioRange->startSeconds - videoRange->startSeconds,
            SyncEngine::overlapDuration(*videoRange, *audioRange).value_or(0)};
}

bool uses(const SyncGroup& group, const UUID& audioID) {
    return std::ranges::any_of(group.audioMatches,
                               [&](const AudioMatch& match) { return match.audio->id == audioID; });
}

} // namespace

void ImportController::attachAudioToGroup(UUID groupID, MediaAsset audio) {
    const SyncGroup* group = unlockedGroup(groupID);
    if (group == nullptr) return;
    if (uses(*group, audio.id)) {
        confirmAmbiguousMatch(groupID);
        return;
    }
    const bool wasWild =
        std::erase_if(wildTracks_, [&](const WildTrack& track) { return track.id == audio.id; });
    edit(groupID, [&](SyncGroup& own) {
        const SyncGroup before = own;
        own.audioMatches.push_back(matchByTimecode(own.video, audio));
        own.matchStatus = MatchStatus::manual();
        carryDecisions(own, before);
    });
    if (wasWild) notify(ImportField::wildTracks);
    removeSmartAudioCaches(groupID);
}

platform::Task ImportController::chooseAndAttachAudio(UUID groupID, FileURL file) {
    assertOnMainThread();
    return attachFile(weak_from_this(), groupID, std::move(file));
}

platform::Task ImportController::attachFile(std::weak_ptr<ImportController> weak, UUID groupID,
                                            FileURL file) {
    auto self = weak.lock();
    auto probing = platform::onQueue(
        *self->serviceQueue_, self->mainThread_,
        [service = self->probeService_, file = std::move(file)](const std::stop_token& stop) {
            return service->probe(file, AssetKind::audio, {}, stop);
        });
    self.reset();
    const MediaAsset audio = co_await probing;
    self = weak.lock();
    if (!self) co_return;
    self->withUndo(undoSteps::attachAudioToGroup, [&] { self->attachAudioToGroup(groupID, audio); });
}

void ImportController::removeAudioMatch(UUID groupID, UUID matchID) {
    const SyncGroup* group = unlockedGroup(groupID);
    if (group == nullptr) return;
    const auto match = std::ranges::find(group->audioMatches, matchID, &AudioMatch::id);
    if (match == group->audioMatches.end()) return;
    const std::vector<AudioMatch> released{*match};
    syncGroups_.update(groupID, [&](SyncGroup& own) {
        const SyncGroup before = own;
        std::erase_if(own.audioMatches, [&](const AudioMatch& one) { return one.id == matchID; });
        own.matchStatus = statusAfterRemoval(own);
        carryDecisions(own, before);
    });
    clipsLetGoOf(released);
    removeSmartAudioCaches(groupID);
}

void ImportController::confirmAmbiguousMatch(UUID groupID) {
    const SyncGroup* group = unlockedGroup(groupID);
    if (group == nullptr || group->matchStatus.kind != MatchStatus::Kind::ambiguous) return;
    edit(groupID, [](SyncGroup& own) { own.matchStatus = MatchStatus::manual(); });
}

void ImportController::removeVideoFromSync(UUID groupID) {
    const SyncGroup* group = unlockedGroup(groupID);
    if (group == nullptr) return;
    const std::vector<AudioMatch> released = group->audioMatches;
    syncGroups_ = syncGroups_.filtered([&](const SyncGroup& one) { return one.id != groupID; });
    syncGroups_.makeIndex();
    clipsLetGoOf(released);
    removeSmartAudioCaches(groupID);
}

/// Audio that no clip uses any more goes to the wild tracks; then the change is whole, and told.
void ImportController::clipsLetGoOf(const std::vector<AudioMatch>& released) {
    const std::size_t before = wildTracks_.size();
    for (const AudioMatch& match : released) {
        const UUID& audioID = match.audio->id;
        const bool isUsed = std::any_of(syncGroups_.begin(), syncGroups_.end(),
                                        [&](const SyncGroup& group) { return uses(group, audioID); });
        if (!isUsed && std::ranges::find(wildTracks_, audioID, &WildTrack::id) == wildTracks_.end())
            wildTracks_.emplace_back(*match.audio);
    }
    notify(ImportField::syncGroups);
    if (wildTracks_.size() != before) notify(ImportField::wildTracks);
}

void ImportController::resyncClip(UUID groupID) {
    assertOnMainThread();
    const SyncGroup* group = syncGroups_.find(groupID);
    if (group == nullptr) return;
    std::vector<MediaAsset> gathered;
    if (!hasScannedAudio()) gathered = availableAudioPool();
    const auto& pool = hasScannedAudio() ? scanResult_->audioAssets : gathered;
    if (pool.empty()) return;
    const SyncGroupList matched = syncEngine_.match({group->video}, pool);
    edit(groupID, [&](SyncGroup& own) {
        const SyncGroup before = own;
        own.audioMatches = matched.front().audioMatches;
        own.matchStatus = matched.front().matchStatus;
        carryDecisions(own, before);
    });
    removeSmartAudioCaches(groupID);
}

void ImportController::resyncAllClips() {
    assertOnMainThread();
    const auto pool = availableAudioPool();
    if (pool.empty()) return;
    std::vector<MediaAsset> videos;
    videos.reserve(syncGroups_.size());
    for (const SyncGroup& group : syncGroups_) videos.push_back(group.video);
    const SyncGroupList matched = syncEngine_.match(videos, pool);
    std::unordered_map<std::string_view, const SyncGroup*> byPath;
    for (const SyncGroup& result : matched) byPath.try_emplace(result.video.url.path, &result);
    syncGroups_.updateWhere([](const SyncGroup&) { return true; },
                            [&](SyncGroup& own) {
                                const SyncGroup& result = *byPath.at(own.video.url.path);
                                const SyncGroup before = own;
                                own.audioMatches = result.audioMatches;
                                own.matchStatus = result.matchStatus;
                                carryDecisions(own, before);
                            });
    notify(ImportField::syncGroups);
    invalidateCachesAfterUndo();
}

/// Valid until the clips change.
std::vector<const MediaAsset*> ImportController::audioPool() const {
    assertOnMainThread();
    std::vector<const MediaAsset*> pool;
    if (hasScannedAudio()) {
        for (const MediaAsset& audio : scanResult_->audioAssets) pool.push_back(&audio);
        return pool;
    }
    std::unordered_set<UUID> seen;
    for (const SyncGroup& group : syncGroups_)
        for (const AudioMatch& match : group.audioMatches)
            if (seen.insert(match.audio->id).second) pool.push_back(&*match.audio);
    for (const WildTrack& track : wildTracks_)
        if (seen.insert(track.id).second) pool.push_back(&track.audio);
    sortByPath(pool);
    return pool;
}

std::vector<MediaAsset> ImportController::availableAudioPool() const {
    std::vector<MediaAsset> pool;
    for (const MediaAsset* audio : audioPool()) pool.push_back(*audio);
    return pool;
}

const MediaAsset* ImportController::audioInPool(const UUID& id) const {
    assertOnMainThread();
    if (hasScannedAudio()) {
        const auto& audio = scanResult_->audioAssets;
        const auto found = std::ranges::find(audio, id, &MediaAsset::id);
        return found == audio.end() ? nullptr : &*found;
    }
    if (const auto& clips = clipsUsing(id); !clips.empty())
        for (const AudioMatch& match : syncGroups_[clips.front()].audioMatches)
            if (match.audio->id == id) return &*match.audio;
    const auto track = std::ranges::find(wildTracks_, id, &WildTrack::id);
    return track == wildTracks_.end() ? nullptr : &track->audio;
}

std::vector<MediaAsset> ImportController::rawFilesAvailableToAttach(UUID excludingGroupID) const {
    std::unordered_set<UUID> left;
    for (const WildTrack& track : wildTracks_) left.insert(track.id);
    if (const SyncGroup* group = syncGroups_.find(excludingGroupID))
        for (const AudioMatch& match : group->audioMatches) left.insert(match.audio->id);

    std::vector<std::pair<std::string, const MediaAsset*>> files; // with the key of the order
    for (const MediaAsset* audio : audioPool())
        if (!left.contains(audio->id))
            files.emplace_back(platform::text::localizedStandardSortKey(audio->filename), audio);
    std::ranges::stable_sort(files, {}, [](const auto& file) -> const std::string& { return file.first; });
    std::vector<MediaAsset> result;
    result.reserve(files.size());
    for (const auto& [key, audio] : files) result.push_back(*audio);
    return result;
}

const std::vector<std::size_t>& ImportController::clipsUsing(const UUID& audioID) const {
    assertOnMainThread();
    if (!clipsByAudio_) {
        clipsByAudio_.emplace();
        for (std::size_t position = 0; position < syncGroups_.size(); ++position)
            for (const AudioMatch& match : syncGroups_[position].audioMatches) {
                auto& clips = (*clipsByAudio_)[match.audio->id];
                if (clips.empty() || clips.back() != position) clips.push_back(position);
            }
    }
    static const std::vector<std::size_t> none;
    const auto found = clipsByAudio_->find(audioID);
    return found == clipsByAudio_->end() ? none : found->second;
}

std::vector<std::string> ImportController::clipNames(UUID usingAudioID) const {
    std::vector<std::string> names;
    for (const std::size_t position : clipsUsing(usingAudioID))
        names.push_back(syncGroups_[position].clipName);
    std::ranges::sort(names);
    return names;
}

std::string ImportController::rawFilesMenuLabel(const MediaAsset& audio) const {
    const auto& clips = clipsUsing(audio.id);
    const std::string name = fileNames().of(audio);
    if (clips.empty()) return name;
    const SyncGroup& first = syncGroups_[clips.front()];
    const std::string only =
        first.clipName == first.video.filename ? fileNames().of(first.video) : first.clipName;
    return name + "  ·  also on " + (clips.size() == 1 ? only : std::to_string(clips.size()) + " clips");
}

} // namespace orvane
