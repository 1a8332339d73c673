#include "OrvaneSyncApp/Controllers/Resync.h"

#include "OrvaneSyncApp/Controllers/DecisionsOfCopies.h"
#include "OrvaneSyncCore/Models/MovedFiles.h"
#include "OrvaneSyncCore/Models/SyncGroupDecisions.h"
#include "OrvaneSyncCore/Services/Matching/SyncEngine.h"
#include "OrvaneSyncCore/Services/Takes/ClipRecordings.h"
#include "OrvaneSyncCore/Services/Takes/TakeDecisions.h"
#include "Platform/Stop.h"

#include <map>
#include <memory>
#include <string>
#include <utility>

namespace orvane {

namespace {

/// Matches that own their recordings. Matching puts all recordings that it gets into one piece of memory,
/// which is kept as long as a match with any of them. For the matches of all clips this is right; for those
/// of a single clip it would keep a copy of the whole card.
std::vector<AudioMatch> withAssetsOfTheirOwn(const std::vector<AudioMatch>& matches) {
    std::vector<AudioMatch> result;
    result.reserve(matches.size());
    for (const AudioMatch& match : matches)
        result.emplace_back(match.id, MediaAsset(*match.audio), match.syncOffsetSeconds,
                            match.overlapDurationSeconds);
    return result;
}

/// The recordings to match with; those of the scan are not copied.
class Pool {
  public:
    explicit Pool(const WorkFiles& files) : all_(files.scannedAudio()) {
        if (all_ == nullptr) gathered_ = files.copiedAudioPool();
    }
    const std::vector<MediaAsset>& all() const { return all_ != nullptr ? *all_ : gathered_; }

  private:
    const std::vector<MediaAsset>* all_;
    std::vector<MediaAsset> gathered_;
};

using ByVideo = std::map<std::pair<UUID, std::string_view>, const SyncGroup*>;
ByVideo byVideo(const SyncGroupList& matched) {
    ByVideo found;
    for (const SyncGroup& one : matched) found[{one.video.id, one.video.url.path}] = &one;
    return found;
}

using ByPath = std::unordered_map<std::string_view, const SyncGroup*>;
ByPath byPath(const SyncGroupList& matched) {
    ByPath found;
    for (const SyncGroup& one : matched) found.try_emplace(one.video.url.path, &one);
    return found;
}

/// The clip with the result of the match; the same object if nothing has changed.
SyncGroupList::Element withMatches(const SyncGroupList::Element& before, const ByPath& matched) {
    auto own = std::make_shared<SyncGroup>(*before);
    copyMatches(*own, *matched.at(before->video.url.path));
    return haveSameContents(*before, *own) ? before : std::move(own);
}

/// If the editor settled the clip, the chosen recording stays the chosen one as long as it matches, whichever
/// one matching puts first.
void keepChoice(SyncGroup& group, const SyncGroup& before) {
    if (before.isMOS() || before.matchStatus != MatchStatus::manual()) return;
    const auto chosen = recordingWith(group, before.audioMatches.front().audio->url);
    if (chosen.empty() || chosen.front() == 0) return;
    putFirst(group, chosen);
    group.matchStatus = MatchStatus::manual();
}

/// The recordings of a scan, for the files of an earlier one.
class ScannedSound {
  public:
    ScannedSound(const WorkFiles& earlier, const WorkFiles& scanned)
        : moved_(earlier.audioPool(), scanned.audioPool()) {
        for (const MediaAsset* file : scanned.audioPool()) byPath_.emplace(file->url.path, file);
    }
    /// The same file in the scan, which has it under another identifier if it was read again; as it was if
    /// the scan did not find it.
    const MediaAsset& now(const MediaAsset& before) const {
        if (const MediaAsset* moved = moved_.now(before)) return *moved;
        const auto same = byPath_.find(before.url.path);
        return same == byPath_.end() ? before : *same->second;
    }

  private:
    MovedFiles moved_;
    std::unordered_map<std::string_view, const MediaAsset*> byPath_;
};

bool hasFile(const std::vector<AudioMatch>& matches, const FileURL& file) {
    return std::ranges::any_of(matches, [&](const AudioMatch& match) { return match.audio->url == file; });
}

/// The clip of the scan, with the recordings that the editor attached to the earlier clip, and without those
/// that the editor removed from it. `byMatching`: the earlier clip as matching gave it; both it and `was`
/// have the files of the scan.
SyncGroup withRecordingsByHand(const SyncGroup& now, const SyncGroup& was, const SyncGroup& byMatching) {
    using enum MatchStatus::Kind;
    SyncGroup own = now;
    const bool mayLackSome = was.matchStatus.kind == manual || was.matchStatus.kind == ambiguous ||
                             was.matchStatus.kind == unmatched;
    if (mayLackSome && std::erase_if(own.audioMatches, [&](const AudioMatch& match) {
                           return hasFile(byMatching.audioMatches, match.audio->url) &&
                                  !hasFile(was.audioMatches, match.audio->url);
                       }) > 0)
        own.matchStatus = statusAfterRemoval(own);
    if (was.matchStatus.kind != manual) return own;
    for (const AudioMatch& match : was.audioMatches)
        if (!hasFile(byMatching.audioMatches, match.audio->url) &&
            !hasFile(now.audioMatches, match.audio->url)) {
            own.audioMatches.push_back(match);
            own.matchStatus = MatchStatus::manual();
        }
    return own;
}

void takeFilesOf(const ScannedSound& sound, SyncGroup& group) {
    for (AudioMatch& match : group.audioMatches)
        if (const MediaAsset& now = sound.now(*match.audio);
            now.id != match.audio->id || now.url != match.audio->url)
            match.audio = now;
}

SyncGroup withDecisions(const SyncGroup& now, const SyncGroup& was, const SyncGroup& matched,
                        const ScannedSound& sound) {
    SyncGroup own = was;
    takeFilesOf(sound, own);
    // The file has changed since, or has another path.
    if (now.video.id != was.video.id || now.video.url != was.video.url) own.video = now.video;
    const bool isAttached = was.matchStatus == MatchStatus::manual() && !was.isMOS() &&
                            recordingWith(now, own.audioMatches.front().audio->url).empty();
    if (!was.isLocked && !isAttached) {
        SyncGroup before = matched;
        takeFilesOf(sound, before);
        const FileURL chosen = own.isMOS() ? FileURL() : own.primaryAudio()->url;
        copyMatches(own, withRecordingsByHand(now, own, before));
        // Also if it is the one that matching puts first, where the status does not show the choice.
        if (was.matchStatus == MatchStatus::manual() && !own.isMOS() && own.primaryAudio()->url == chosen)
            own.matchStatus = MatchStatus::manual();
    }
    if (!own.hasALEMetadata() && now.hasALEMetadata()) {
        own.aleMetadata = now.aleMetadata;
        own.clipName = now.clipName;
    }
    return own;
}

MovedFiles movedVideos(const WorkFiles& earlier, const WorkFiles& scanned) {
    std::unordered_set<std::string_view> copies; // the camera files that the scan left out
    if (scanned.scanned)
        for (const CameraCopy& copy : scanned.scanned->copies) copies.insert(copy.url.path);
    MovedFiles::Files before = earlier.removedVideos(), now;
    for (const SyncGroup& clip : earlier.groups)
        if (!copies.contains(clip.video.url.path)) before.push_back(&clip.video);
    for (const SyncGroup& clip : scanned.groups) now.push_back(&clip.video);
    return {before, now};
}

bool haveSameSound(const SyncGroup& a, const SyncGroup& b) {
    return a.video.url == b.video.url &&
           std::ranges::equal(a.audioMatches, b.audioMatches, {}, &AudioMatch::id, &AudioMatch::id);
}

} // namespace

void copyMatches(SyncGroup& group, const SyncGroup& matched) {
    const SyncGroup before = group;
    group.audioMatches = matched.audioMatches;
    group.matchStatus = matched.matchStatus;
    keepChoice(group, before);
    carryDecisions(group, before);
    startWithRecording(group, before);
    if (!group.isMOS()) carryAnchor(group, before);
}

std::vector<SyncGroup> rematched(const WorkFiles& files, const std::vector<UUID>& groupIDs, MatchRules rules,
                                 const std::stop_token& stop) {
    std::vector<const SyncGroup*> asked;
    std::vector<MediaAsset> videos;
    for (const UUID& id : groupIDs)
        if (const SyncGroup* group = files.groups.find(id)) {
            asked.push_back(group);
            videos.push_back(group->video);
        }
    const Pool pool(files);
    if (asked.empty() || pool.all().empty()) return {};
    const bool asksAllClips = rules.days == MatchingDays::automatic;
    if (asksAllClips) rules.days = MatchingDays::midnight;
    const SyncEngine engine;
    const SyncGroupList alone = engine.match(videos, pool.all(), rules, stop, &files.groups);
    ByVideo found = byVideo(alone);
    SyncGroupList all;
    if (asksAllClips && std::ranges::any_of(found, [](const auto& one) { return one.second->isMOS(); })) {
        // Whether the clock of a card is wrong can only be found from the matches of the other clips.
        rules.days = MatchingDays::automatic;
        all = engine.match(files.videos(), pool.all(), rules, stop);
        const ByVideo amongAll = byVideo(all);
        for (auto& [video, group] : found)
            if (group->isMOS()) group = amongAll.at(video);
    }
    std::vector<SyncGroup> result;
    result.reserve(asked.size());
    for (const SyncGroup* group : asked) {
        const SyncGroup& fresh = *found.at({group->video.id, group->video.url.path});
        result.emplace_back(group->id, group->video, withAssetsOfTheirOwn(fresh.audioMatches),
                            fresh.matchStatus);
    }
    return result;
}

std::optional<Resynced> resynced(const WorkFiles& files, const SourceCorrections& corrections,
                                 const std::stop_token& stop) {
    const Pool pool(files);
    if (pool.all().empty()) return std::nullopt;
    Resynced made;
    made.by = MatchedBy::of(corrections, rateOfMostClips(files.groups));
    made.matched = SyncEngine().match(files.videos(), pool.all(), made.by.rules, stop);
    const ByPath fresh = byPath(made.matched);
    std::vector<AudioMatch> released;
    std::unordered_set<UUID> used;
    platform::StopCheck check(stop);
    for (std::size_t i = 0; i < files.groups.size(); ++i) {
        check();
        const SyncGroup& before = files.groups[i];
        released.insert(released.end(), before.audioMatches.begin(), before.audioMatches.end());
        made.groups.append(withMatches(files.groups.element(i), fresh));
        for (const AudioMatch& match : made.groups[i].audioMatches) used.insert(match.audio->id);
    }
    made.groups.makeIndex();
    auto tracks = settledWildTracks(*files.wildTracks, released,
                                    [&](const UUID& audioID) { return used.contains(audioID); });
    made.wildTracks =
        tracks ? std::make_shared<const std::vector<WildTrack>>(std::move(*tracks)) : files.wildTracks;
    return made;
}

WithDecisions withDecisionsOf(const WorkFiles& earlier, const WorkFiles& scanned,
                              const std::stop_token& stop) {
    const auto copies = scanned.scanned ? scanned.scanned->copies : std::vector<CameraCopy>();
    const auto before = clipsByUsedFile(earlier.groups, copies);
    std::unordered_set<std::string_view> removed;
    for (const MediaAsset* video : earlier.removedVideos()) removed.insert(video->url.path);
    const MovedFiles moved = movedVideos(earlier, scanned);
    const ScannedSound sound(earlier, scanned);
    // What matching gave before shows which recordings the editor attached or removed.
    std::vector<MediaAsset> videos = earlier.videos();
    for (const MediaAsset* video : earlier.removedVideos()) videos.push_back(*video);
    const Pool pool(earlier);
    const SyncGroupList matched = SyncEngine().match(videos, pool.all(), earlier.rules, stop);
    const ByPath matchedBefore = byPath(matched);
    WithDecisions made;
    std::vector<AudioMatch> released;
    std::unordered_set<UUID> used;
    platform::StopCheck check(stop);
    for (std::size_t i = 0; i < scanned.groups.size(); ++i) {
        check();
        const SyncGroup& now = scanned.groups[i];
        released.insert(released.end(), now.audioMatches.begin(), now.audioMatches.end());
        const MediaAsset* known = moved.before(now.video);
        const std::string_view path = (known != nullptr ? *known : now.video).url.path;
        if (removed.contains(path)) continue;
        const auto was = before.find(path);
        auto own = scanned.groups.element(i);
        if (was != before.end())
            own = std::make_shared<SyncGroup>(
                withDecisions(now, *was->second, *matchedBefore.at(was->second->video.url.path), sound));
        for (const AudioMatch& match : own->audioMatches) used.insert(match.audio->id);
        made.groups.append(std::move(own));
    }
    made.groups.makeIndex();
    auto tracks = settledWildTracks(*scanned.wildTracks, released,
                                    [&](const UUID& audioID) { return used.contains(audioID); });
    made.wildTracks =
        tracks ? std::make_shared<const std::vector<WildTrack>>(std::move(*tracks)) : scanned.wildTracks;
    return made;
}

bool Resynced::follow(const WorkFiles& before, const WorkFiles& now) {
    constexpr std::size_t few = 64; // as many as the caller's thread has time for
    if (now.wildTracks != before.wildTracks) return false;
    const SyncGroupChanges changes = now.groups.changesSince(before.groups);
    if (!changes.inserted.empty() || !changes.removed.empty() || !changes.moved.empty() ||
        changes.changed.size() > few)
        return false;
    for (const std::size_t row : changes.changed)
        if (!haveSameSound(before.groups[row], now.groups[row])) return false;
    if (changes.changed.empty()) return true;
    const ByPath fresh = byPath(matched);
    for (const std::size_t row : changes.changed)
        groups.update(now.groups[row].id,
                      [&](SyncGroup& own) { own = *withMatches(now.groups.element(row), fresh); });
    return true;
}

} // namespace orvane
