#include "OrvaneSyncCore/Services/Diagnosis/NotCompared.h"

#include "OrvaneSyncCore/Services/Diagnosis/Shoot.h"
#include "OrvaneSyncCore/Utilities/CountText.h"

#include <algorithm>
#include <map>
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

} // namespace

NotCompared NotCompared::of(const SyncGroupList& groups, const HeardSound* heard, const SyncDoubts& doubts) {
    struct Clips {
        int count = 0;
        bool hasSound = false, isCompared = false;
    };
    const auto ofClaims = clipsOfClaims(heard);
    std::map<std::string_view, Clips> folders;
    for (const SyncGroup& group : groups) {
        Clips& clips = folders[folderOf(group.video)];
        clips.isCompared =
            clips.isCompared ||
            (heard != nullptr && (ofClaims.contains(group.id) || orvane::isCompared(group, *heard)));
        if (!isByTimecode(group) || doubts.byGroup.contains(group.id)) continue;
        ++clips.count;
        clips.hasSound = clips.hasSound || group.video.channelCount.value_or(0) > 0;
    }
    NotCompared result;
    for (const auto& [folder, clips] : folders)
        if (clips.count > 0 && !clips.isCompared)
            result.cameras.push_back({std::string(folder), clips.count, clips.hasSound});
    return result;
}

std::string NotCompared::text() const {
    constexpr std::size_t mostFolders = 4;
    std::string text;
    for (const bool hasSound : {false, true}) {
        int clips = 0;
        std::vector<std::string> folders;
        for (const Camera& camera : cameras) {
            if (camera.hasSound != hasSound) continue;
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
        text += hasSound ? std::string(clips == 1 ? " was" : " were") +
                               " not compared, as the sound of the camera is too short, of too few clips, or "
                               "unlike the recordings"
                         : std::string(clips == 1 ? " has" : " have") + " no sound to compare";
        text += ": check a clap of each camera.";
    }
    return text;
}

JSON toJSON(const NotCompared& notCompared) {
    JSON::Array cameras;
    for (const NotCompared::Camera& camera : notCompared.cameras) {
        JSON json;
        json.set("folder", camera.folder);
        json.set("count", camera.clips);
        json.set("hasSound", camera.hasSound);
        cameras.push_back(std::move(json));
    }
    return cameras;
}

} // namespace orvane
