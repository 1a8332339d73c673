#include "OrvaneSyncCore/Services/Export/ExportResources.h"
#include "OrvaneSyncCore/Services/Export/ExportTimes.h"
#include "OrvaneSyncCore/Services/Export/FCPXMLExporterStages.h"
#include "OrvaneSyncCore/Services/Matching/ClipRate.h"
#include "OrvaneSyncCore/Services/Takes/Take.h"
#include "Platform/Stop.h"

#include <algorithm>
#include <unordered_set>

namespace orvane::FCPXMLExporter {

using namespace fcpxml;

namespace {

/// An event is no timeline: every file has the offset of its beginning.
AssetClip wholeFile(const MediaAsset& file, std::string assetID, Time start, Time duration) {
    AssetClip clip;
    clip.ref = {std::move(assetID)};
    clip.offset = Time::zero();
    clip.name = file.filename;
    clip.start = std::move(start);
    clip.duration = std::move(duration);
    clip.videoRole = VideoRole{{"video"}};
    return clip;
}

} // namespace

std::vector<std::size_t> writtenMatches(const SyncGroup& group, const ExportSettings& settings) {
    std::vector<std::size_t> matches;
    for (const TakeFile& file : takeOf(group, settings.defaultAudioTracks).files)
        if (file.role != TakeRole::mirror) matches.push_back(file.matchIndex);
    std::ranges::sort(matches);
    return matches;
}

std::unordered_map<UUID, std::string>
rawMediaReusableAudioAssetIDs(const SyncGroupList& groups, const ResourcesByGroup& resourcesByGroup) {
    std::unordered_map<UUID, std::string> reusable;
    for (const SyncGroup& group : groups) {
        const auto resources = resourcesByGroup.find(group.id);
        if (resources == resourcesByGroup.end()) continue;
        const std::vector<std::string>& ids = resources->second.audioAssetIDs;
        const std::size_t files = std::min(group.audioMatches.size(), ids.size());
        for (std::size_t i = 0; i < files; ++i)
            if (!ids[i].empty()) reusable.try_emplace(group.audioMatches[i].audio->id, ids[i]);
    }
    return reusable;
}

AssetClip rawVideoAssetClip(const SyncGroup& group, const ResourcesByGroup& resourcesByGroup,
                            ResourceList& resources, const ExportSettings& settings) {
    const MediaAsset& video = group.video;
    const double fps = clipRate(video, settings);
    const Time start = pictureStartTime(video, fps).value_or(Time::zero());
    const Time duration = pictureDuration(video, fps).value_or(fallbackDuration(fps));
    std::string assetID;
    if (const auto known = resourcesByGroup.find(group.id); known != resourcesByGroup.end()) {
        assetID = known->second.videoAssetID;
    } else {
        const std::string formatID = resources.nextID();
        assetID = resources.nextID();
        resources.add(nativeFormat(video, formatID, settings));
        Asset asset = videoAsset(video, assetID, formatID, settings);
        asset.start = start;
        asset.duration = duration;
        resources.add(asset);
    }
    AssetClip clip = wholeFile(video, std::move(assetID), start, duration);
    clip.tcFormat = tcFormat(video, fps);
    return clip;
}

AssetClip rawAudioAssetClip(const MediaAsset& audio, const std::unordered_map<UUID, std::string>& reusableIDs,
                            ResourceList& resources, const ExportSettings& settings) {
    std::string assetID;
    if (const auto known = reusableIDs.find(audio.id); known != reusableIDs.end()) {
        assetID = known->second;
    } else {
        assetID = resources.nextID();
        resources.add(recordingAsset(audio, assetID, settings));
    }
    return wholeFile(
        audio, std::move(assetID), audioStartTime(audio).value_or(Time::zero()),
        soundLength(soundDuration(audio.durationSeconds, audioRate(audio)), usableRate(settings.frameRate)));
}

void addRawMedia(ExportRun& run) {
    const auto reusable = rawMediaReusableAudioAssetIDs(run.groups, run.resourcesByGroup);
    std::unordered_set<UUID> seen;
    std::vector<const MediaAsset*> sounds; // each once
    const auto addOnce = [&](const MediaAsset& audio) {
        if (seen.insert(audio.id).second) sounds.push_back(&audio);
    };
    for (const SyncGroup& group : run.groups) {
        platform::throwIfStopped(run.stop);
        for (const std::size_t match : writtenMatches(group, run.settings))
            addOnce(group.audioMatches[match].audio);
    }
    for (const WildTrack& track : run.wildTracks) addOnce(track.audio);

    for (const SyncGroup& group : run.groups) {
        platform::throwIfStopped(run.stop);
        run.rawItems.push_back(
            run.maker.make(rawVideoAssetClip(group, run.resourcesByGroup, run.resources, run.settings)));
    }
    for (const MediaAsset* sound : sounds) {
        platform::throwIfStopped(run.stop);
        run.rawItems.push_back(
            run.maker.make(rawAudioAssetClip(*sound, reusable, run.resources, run.settings)));
    }
    run.result.sourceMediaCount = static_cast<int>(run.rawItems.size());
}

} // namespace orvane::FCPXMLExporter
