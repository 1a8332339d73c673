#pragma once

#include "OrvaneSyncApp/Controllers/OpenWork.h"
#include "Platform/JSON.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace orvane {

/// Whether a scan of the chosen folders is about another shoot than the open work: there are clips or
/// recordings, and none of their files lies in one of the folders. The work then stays in its session as it
/// is, and the scan begins one of its own.
inline bool isOfOtherShoot(const OpenWork& work) {
    const std::vector<FileURL> folders = work.folders();
    const auto isInside = [&](const MediaAsset& asset) {
        return std::ranges::any_of(folders, [&](const FileURL& folder) {
            const std::string& path = asset.url.path;
            const std::string root = folder.path.ends_with('/') ? folder.path : folder.path + "/";
            return path.starts_with(root);
        });
    };
    const auto isGroupInside = [&](const SyncGroup& group) {
        return isInside(group.video) || std::ranges::any_of(group.audioMatches, [&](const AudioMatch& match) {
                   return isInside(*match.audio);
               });
    };
    const bool isEmpty = work.syncGroups().empty() && work.wildTracks().empty();
    return !isEmpty && !folders.empty() && std::ranges::none_of(work.syncGroups(), isGroupInside) &&
           std::ranges::none_of(work.wildTracks(),
                                [&](const WildTrack& track) { return isInside(track.audio); });
}

/// What is chosen to be scanned, as the command `setFolders` takes it.
inline platform::JSON chosenFolders(const OpenWork& work) {
    platform::JSON chosen = platform::JSON::object();
    if (work.videoFolderURL()) chosen.set("videoFolder", work.videoFolderURL()->path);
    if (work.audioFolderURL()) chosen.set("audioFolder", work.audioFolderURL()->path);
    platform::JSON::Array more, exclude;
    for (const FileURL& folder : work.scanScope().moreFolders) more.emplace_back(folder.path);
    for (const std::string& pattern : work.scanScope().exclusions) exclude.emplace_back(pattern);
    chosen.set("moreFolders", platform::JSON(std::move(more)));
    chosen.set("exclude", platform::JSON(std::move(exclude)));
    return chosen;
}

} // namespace orvane
