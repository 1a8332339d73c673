#include "OrvaneSyncCore/Services/Diagnosis/NotCompared.h"

#include "OrvaneSyncCore/Models/AgreedLag.h"
#include "OrvaneSyncCore/Services/Diagnosis/Shoot.h"
#include "OrvaneSyncCore/Services/Matching/RecorderFolders.h"
#include "OrvaneSyncCore/Utilities/CountText.h"

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <string_view>
#include <unordered_set>
#include <utility>

namespace orvane {

namespace {

/// The clips in which a recording was found, by what was analysed besides their matches.
std::unordered_set<UUID> clipsOfClaims(const HeardSound* heard) {
    std::unordered_set<UUID> clips;
    if (heard != nullptr)
        for (const auto& [key, claim] : heard->claims)
            if (claim.offsetSeconds) clips.insert(std::get<0>(key));
    return clips;
}

bool isCompared(const SyncGroup& group, const HeardSound& heard) {
    return std::ranges::any_of(group.audioMatches, [&](const AudioMatch& match) {
        return heard.lags.contains(match.id) || heard.elsewhere.contains(match.id) ||
               heard.unheard.contains(match.id);
    });
}

/// Whether timecode alone gives the clip its sound.
bool isByTimecode(const SyncGroup& group) {
    return group.matchStatus.isSettled() && !group.isMOS() && !group.isLocked &&
           !group.isExcludedFromExport && group.manualAudioOffsetSeconds == 0;
}

using Reason = NotCompared::Reason;

constexpr std::array<std::pair<Reason, std::string_view>, 5> reasons{
    {{Reason::noSound, "no sound to compare"},
     {Reason::offSpeed, "the pictures were taken at another rate than they play"},
     {Reason::tooShort, "it takes clips of 3 s"},
     {Reason::tooFew, "it takes three clips with sound of the camera and of one recorder"},
     {Reason::unlike, "nothing in the sound of the camera is like the recordings"}}};
static_assert(leastHeardSeconds == 3 && fewestPairs == 3, "the reasons name them");

/// Why none of these clips, which have sound of the camera, was compared.
Reason reasonOf(std::vector<const SyncGroup*> clips, const RecorderFolders& recorders) {
    std::erase_if(clips, [](const SyncGroup* clip) { return clip->video.isOffspeed(); });
    if (clips.empty()) return Reason::offSpeed;
    std::erase_if(clips, [](const SyncGroup* clip) {
        return clip->video.durationSeconds.value_or(0) < leastHeardSeconds;
    });
    if (clips.empty()) return Reason::tooShort;
    std::map<std::string_view, std::size_t> counts;
    for (const SyncGroup* clip : clips) ++counts[recorders.of(*clip->primaryAudio())];
    const bool areEnough =
        std::ranges::any_of(counts, [](const auto& entry) { return entry.second >= fewestPairs; });
    return areEnough ? Reason::unlike : Reason::tooFew;
}

} // namespace

NotCompared NotCompared::of(const SyncGroupList& groups, const HeardSound* heard, const SyncDoubts& doubts) {
    struct Clips {
        int count = 0;
        bool isCompared = false, haveSound = false;
        std::vector<const SyncGroup*> withSound = {}; ///< those in doubt too
    };
    const auto ofClaims = clipsOfClaims(heard);
    std::map<std::string_view, Clips> folders;
    for (const SyncGroup& group : groups) {
        Clips& clips = folders[folderOf(group.video)];
        clips.isCompared =
            clips.isCompared ||
            (heard != nullptr && (ofClaims.contains(group.id) || orvane::isCompared(group, *heard)));
        if (!isByTimecode(group)) continue;
        const bool hasSound = group.video.channelCount.value_or(0) > 0;
        if (hasSound) clips.withSound.push_back(&group);
        if (doubts.byGroup.contains(group.id)) continue;
        ++clips.count;
        clips.haveSound = clips.haveSound || hasSound;
    }
    NotCompared result;
    std::optional<RecorderFolders> recorders;
    for (const auto& [folder, clips] : folders) {
        if (clips.count == 0 || clips.isCompared) continue;
        if (!recorders) recorders.emplace(groups);
        result.cameras.push_back({std::string(folder), clips.count,
                                  clips.haveSound ? reasonOf(clips.withSound, *recorders) : Reason::noSound});
    }
    return result;
}

std::string NotCompared::text() const {
    constexpr std::size_t mostFolders = 4;
    std::string text;
    for (const auto& [reason, why] : reasons) {
        int clips = 0;
        std::vector<std::string> folders;
        for (const Camera& camera : cameras) {
            if (camera.reason != reason) continue;
            clips += camera.clips;
            folders.push_back("'" + camera.folder + "'");
        }
        if (clips == 0) continue;
        const std::size_t more = folders.size() - std::min(folders.size(), mostFolders);
        folders.resize(folders.size() - more);
        std::string in = platform::text::joined(folders, ", ");
        if (more > 0) in += " and " + counted(more, "more folder", "more folders");
        text += (text.empty() ? "" : "\n");
        text += counted(clips, "clip", "clips") + " in " + in;
        text += reason == Reason::noSound
                    ? (clips == 1 ? " has " : " have ")
                    : (clips == 1 ? " was not compared, as " : " were not compared, as ");
        text += std::string(why) + ": check a clap of each camera.";
    }
    return text;
}

JSON toJSON(const NotCompared& notCompared) {
    JSON::Array cameras;
    for (const NotCompared::Camera& camera : notCompared.cameras) {
        JSON json;
        json.set("folder", camera.folder);
        json.set("count", camera.clips);
        json.set("hasSound", camera.reason != NotCompared::Reason::noSound);
        cameras.push_back(std::move(json));
    }
    return cameras;
}

} // namespace orvane
