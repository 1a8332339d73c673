#include "OrvaneSyncApp/Controllers/RecordingEditing.h"

#include "OrvaneSyncApp/Controllers/UndoSteps.h"
#include "OrvaneSyncCore/Services/Matching/Recordings.h"
#include "OrvaneSyncCore/Services/Takes/ClipRecordings.h"
#include "OrvaneSyncCore/Services/Takes/Take.h"
#include "OrvaneSyncCore/Services/Takes/TakeDecisions.h"
#include "OrvaneSyncCore/Utilities/Day.h"
#include "Platform/Text.h"

#include <algorithm>
#include <cmath>
#include <tuple>
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

bool uses(const SyncGroup& group, const UUID& audioID) {
    return std::ranges::any_of(group.audioMatches,
                               [&](const AudioMatch& match) { return match.audio->id == audioID; });
}

/// Files that meet across midnight are of one day.
bool areOfOtherDays(const FilePlace& clip, const std::optional<FilePlace>& sound) {
    if (!sound || !sound->day) return false;
    const auto filmed = clip.knownDay();
    if (!filmed) return clip.headerDay && std::abs(*clip.headerDay - *sound->day) > 1;
    if (*filmed == *sound->day) return false;
    const double between = static_cast<double>(*sound->day - *filmed) * secondsADay;
    return !SyncEngine::overlapDuration(
        clip.range, {sound->range.startSeconds + between, sound->range.endSeconds + between});
}

/// Matching makes one piece of memory of all recordings that it is given, which lives as long as a match with
/// one of them: fine for the matches of all clips, and a copy of the whole card for those of a single one.
std::vector<AudioMatch> withAssetsOfTheirOwn(const std::vector<AudioMatch>& matches) {
    std::vector<AudioMatch> result;
    result.reserve(matches.size());
    for (const AudioMatch& match : matches)
        result.emplace_back(match.id, MediaAsset(*match.audio), match.syncOffsetSeconds,
                            match.overlapDurationSeconds);
    return result;
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

/// What a clip uses is no wild track; of what clips have given up, that which no clip uses any more is one.
void RecordingEditing::settleWildTracks(const std::vector<AudioMatch>& released) {
    const auto isUsed = [&](const UUID& audioID) { return !work_.clipsUsing(audioID).empty(); };
    std::unordered_set<UUID> known;
    std::vector<WildTrack> tracks;
    for (const WildTrack& track : work_.wildTracks())
        if (known.insert(track.id).second && !isUsed(track.id)) tracks.push_back(track);
    for (const AudioMatch& match : released)
        if (!isUsed(match.audio->id) && known.insert(match.audio->id).second)
            tracks.emplace_back(*match.audio);
    if (!std::ranges::equal(tracks, work_.wildTracks(), {}, &WildTrack::id, &WildTrack::id))
        work_.changeWildTracks([&](std::vector<WildTrack>& all) { all = std::move(tracks); });
}

void RecordingEditing::resyncClip(UUID groupID) {
    work_.notices.assertOnMainThread();
    const SyncGroup* group = work_.syncGroups().find(groupID);
    if (group == nullptr) return;
    std::vector<MediaAsset> gathered;
    const auto* scanned = scannedAudio();
    if (scanned == nullptr) gathered = availableAudioPool();
    const auto& pool = scanned != nullptr ? *scanned : gathered;
    if (pool.empty()) return;
    MatchRules rules = work_.matchRules();
    rules.days = *work_.nextCorrections().days;
    const bool asksAllClips = rules.days == MatchingDays::automatic;
    if (asksAllClips) rules.days = MatchingDays::midnight;
    SyncGroupList matched = syncEngine_.match({group->video}, pool, rules, {}, &work_.syncGroups());
    if (asksAllClips && matched.front().isMOS()) {
        // Whether a card's clock is wrong shows in what the other clips meet.
        rules.days = MatchingDays::automatic;
        matched = syncEngine_.match(videosOfClips(), pool, rules);
    }
    const SyncGroup* anew = nullptr;
    for (const SyncGroup& one : matched)
        if (one.video.id == group->video.id && one.video.url == group->video.url) anew = &one;
    if (anew == nullptr) return;
    const std::vector<AudioMatch> released = group->audioMatches;
    work_.notices.together([&] {
        work_.edit(groupID, [&](SyncGroup& own) {
            const SyncGroup before = own;
            own.audioMatches = withAssetsOfTheirOwn(anew->audioMatches);
            own.matchStatus = anew->matchStatus;
            carryDecisions(own, before);
        });
        settleWildTracks(released);
        smartAudio_.caches().removeSmartAudioCaches(groupID);
    });
}

void RecordingEditing::resyncAllClips() {
    work_.notices.assertOnMainThread();
    const auto pool = availableAudioPool();
    if (pool.empty()) return;
    auto by = MatchedBy::of(work_.nextCorrections(), rateOfMostClips(work_.syncGroups()));
    const SyncGroupList matched = syncEngine_.match(videosOfClips(), pool, by.rules);
    std::unordered_map<std::string_view, const SyncGroup*> byPath;
    for (const SyncGroup& result : matched) byPath.try_emplace(result.video.url.path, &result);
    std::vector<AudioMatch> released;
    for (const SyncGroup& group : work_.syncGroups())
        released.insert(released.end(), group.audioMatches.begin(), group.audioMatches.end());
    work_.notices.together([&] {
        work_.editWhere([](const SyncGroup&) { return true; },
                        [&](SyncGroup& own) {
                            const SyncGroup& result = *byPath.at(own.video.url.path);
                            const SyncGroup before = own;
                            own.audioMatches = result.audioMatches;
                            own.matchStatus = result.matchStatus;
                            carryDecisions(own, before);
                        });
        settleWildTracks(released);
        work_.setMatchedBy(std::move(by));
        smartAudio_.caches().invalidateCachesAfterUndo();
    });
}

std::vector<MediaAsset> RecordingEditing::videosOfClips() const {
    std::vector<MediaAsset> videos;
    videos.reserve(work_.syncGroups().size());
    for (const SyncGroup& group : work_.syncGroups()) videos.push_back(group.video);
    return videos;
}

const std::vector<MediaAsset>* RecordingEditing::scannedAudio() const {
    const auto& scanned = scan_.scanResult();
    return scanned && !scanned->audioAssets.empty() ? &scanned->audioAssets : nullptr;
}

/// Valid until the clips change.
std::vector<const MediaAsset*> RecordingEditing::audioPool() const {
    work_.notices.assertOnMainThread();
    std::vector<const MediaAsset*> pool;
    if (const auto* scanned = scannedAudio()) {
        for (const MediaAsset& audio : *scanned) pool.push_back(&audio);
        return pool;
    }
    std::unordered_set<UUID> seen;
    for (const SyncGroup& group : work_.syncGroups())
        for (const AudioMatch& match : group.audioMatches)
            if (seen.insert(match.audio->id).second) pool.push_back(&*match.audio);
    for (const WildTrack& track : work_.wildTracks())
        if (seen.insert(track.id).second) pool.push_back(&track.audio);
    sortByPath(pool);
    return pool;
}

std::vector<MediaAsset> RecordingEditing::availableAudioPool() const {
    std::vector<MediaAsset> pool;
    for (const MediaAsset* audio : audioPool()) pool.push_back(*audio);
    return pool;
}

const MediaAsset* RecordingEditing::audioInPool(const UUID& id) const {
    work_.notices.assertOnMainThread();
    if (const auto* scanned = scannedAudio()) {
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
        std::string key; ///< of its name, for the order
        const MediaAsset* audio;
    };
    std::vector<File> files;
    for (const MediaAsset* audio : audioPool())
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
    std::vector<const MediaAsset*> all = audioPool();
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
    const std::string name = work_.fileNames().of(audio);
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
