#include "OrvaneSyncCore/Services/Diagnosis/ExchangedFolders.h"

#include "OrvaneSyncCore/Services/Diagnosis/Cards.h"
#include "OrvaneSyncCore/Services/Diagnosis/ClaimedOffset.h"
#include "OrvaneSyncCore/Services/Diagnosis/ClipClaims.h"
#include "OrvaneSyncCore/Services/Diagnosis/Clocks.h"
#include "OrvaneSyncCore/Services/Diagnosis/CureWords.h"
#include "OrvaneSyncCore/Services/Matching/UnitNearness.h"
#include "OrvaneSyncCore/Services/Takes/Take.h"
#include "OrvaneSyncCore/Utilities/CountText.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <string>
#include <string_view>
#include <utility>

namespace orvane {

namespace {

using Kind = SyncDoubt::Kind;

constexpr double leastClipShare = 0.5; // of the clip, that a recording of the other folder has to overlap

/// What is known of the clips of one folder that have recordings of several units.
struct CameraUnit {
    std::vector<const Shoot::Clip*> clips = {};
    int near = 0;                                 ///< clips that have the sound of the nearest folder
    std::map<std::string_view, int> further = {}; ///< clips that have it in these folders
    std::string_view nearest = {};                ///< folder of a recording, of those of all clips
    UnitNearness nearness = {};                   ///< of that folder

    bool isExchanged() const {
        return near == 0 && further.size() == 1 && further.begin()->second >= explanation::fewest;
    }
};

/// Whether the document has a recording of that folder in the clip beside the first one.
bool hasBeside(const SyncGroup& group, std::string_view folder) {
    if (group.audioMatches.size() < 2) return false;
    return std::ranges::any_of(takeOf(group, assumedChannels).files, [&](const TakeFile& file) {
        return file.role == TakeRole::alternate &&
               folderOf(*group.audioMatches[file.matchIndex].audio) == folder;
    });
}

/// The recording of the clip in that folder: the chosen one, else the one that overlaps it most; null if
/// there is none.
const AudioMatch* ownIn(const Shoot::Clip& clip, std::string_view folder) {
    const auto& matches = clip.group->audioMatches;
    const AudioMatch* best = nullptr;
    for (const AudioMatch& match : matches) {
        if (folderOf(*match.audio) != folder) continue;
        if (clip.isDecided && &match == &matches.front()) return &match;
        if (best == nullptr || match.overlapDurationSeconds > best->overlapDurationSeconds) best = &match;
    }
    return best;
}

/// The recording that the camera heard or the editor chose; null if that is open.
const AudioMatch* shownBy(const Shoot& shoot, const Shoot::Clip& clip) {
    const SyncGroup& group = *clip.group;
    if (clip.isDecided && group.matchStatus.kind == MatchStatus::Kind::manual)
        return &group.audioMatches.front();
    const AudioMatch* shown = nullptr;
    for (const AudioMatch& match : group.audioMatches) {
        if (!isRecordingHeard(shoot, clip, match)) continue;
        if (shown != nullptr && folderOf(*shown->audio) != folderOf(*match.audio)) return nullptr;
        shown = &match;
    }
    return shown;
}

std::map<std::string_view, CameraUnit> cameraUnitsOf(const Shoot& shoot) {
    std::map<std::string_view, CameraUnit> cameras;
    NearnessOfFolders folders;
    for (const Shoot::Clip& clip : shoot.clips) {
        const SyncGroup& group = *clip.group;
        if (group.audioMatches.empty() || group.isExcludedFromExport) continue;
        CameraUnit& camera = cameras[folderOf(group.video)];
        camera.clips.push_back(&clip);
        for (const AudioMatch& match : group.audioMatches) {
            const auto nearness = folders.of(group.video, *match.audio);
            if (!camera.nearest.empty() && nearness <= camera.nearness) continue;
            camera.nearest = folderOf(*match.audio);
            camera.nearness = nearness;
        }
    }
    for (auto& [folder, camera] : cameras)
        for (const Shoot::Clip* clip : camera.clips) {
            const SyncGroup& group = *clip->group;
            const auto nearness = [&](const AudioMatch& match) {
                return folders.of(group.video, *match.audio);
            };
            const auto [furthest, nearest] = std::ranges::minmax(group.audioMatches, {}, nearness);
            // A clip without a choice between the folders shows something only if the editor made it.
            const bool isChoice = nearness(furthest) < nearness(nearest);
            const AudioMatch* shown = isChoice || clip->isDecided ? shownBy(shoot, *clip) : nullptr;
            if (shown == nullptr) continue;
            if (nearness(*shown) == (isChoice ? nearness(nearest) : camera.nearness))
                ++camera.near;
            else
                ++camera.further[folderOf(*shown->audio)];
        }
    return cameras;
}

} // namespace

std::unordered_set<UUID> addExchangedFolders(const Shoot& shoot, SyncDoubts& doubts) {
    std::unordered_set<UUID> known;
    for (const auto& [folder, camera] : cameraUnitsOf(shoot)) {
        if (!camera.isExchanged()) continue;
        const auto& [other, count] = *camera.further.begin();
        std::vector<const Shoot::Clip*> clips;
        std::vector<UUID> recordings; // of these clips
        for (const Shoot::Clip* clip : camera.clips) {
            const AudioMatch* best = ownIn(*clip, other);
            if (best == nullptr || best->overlapDurationSeconds <
                                       leastClipShare * clip->group->video.durationSeconds.value_or(0))
                continue;
            const UUID& id = clip->group->id;
            if (!clip->isDecided && clip->group->matchStatus.kind == MatchStatus::Kind::ambiguous) {
                for (SyncDoubt& doubt : doubts.byGroup[id])
                    if (doubt.kind == Kind::ambiguous && !doubt.suggestion)
                        doubt.suggestion = SyncDoubt::Suggestion{.recordingID = best->audio->id};
                continue;
            }
            known.insert(id);
            const bool isFirst = clip->isDecided || best == &clip->group->audioMatches.front();
            if (clip->group->isLocked || (isFirst && !hasBeside(*clip->group, camera.nearest)) ||
                doubts.has(id, {Kind::otherDay, Kind::otherDateFits, Kind::constantOffset, Kind::timecodeRate,
                                Kind::notTimeOfDay}))
                continue;
            clips.push_back(clip);
            recordings.push_back(best->audio->id);
        }
        if (clips.empty()) continue;
        const auto quoted = [](std::string_view path) { return "'" + std::string(path) + "'"; };
        addCardDoubt(doubts,
                     {Kind::ambiguous,
                      "all " + counted(count, "clip", "clips") + " in " + quoted(folder) +
                          " that were heard or settled have their sound in " + quoted(other) +
                          ", and none has it in " + quoted(camera.nearest) +
                          ", which is nearer to them: the sound folders of the units seem to be exchanged",
                      cureWords::asHeard("choose the recordings in " + quoted(other) + " and take those in " +
                                             quoted(camera.nearest) + " off the clips",
                                         "'choice'") +
                          ", or lock the clips"},
                     clips);
        for (std::size_t i = 0; i < clips.size(); ++i)
            doubts.byGroup[clips[i]->group->id].back().suggestion =
                SyncDoubt::Suggestion{.recordingID = recordings[i]};
    }
    return known;
}

} // namespace orvane
