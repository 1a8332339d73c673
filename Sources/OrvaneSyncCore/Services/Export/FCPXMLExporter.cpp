#include "OrvaneSyncCore/Services/Export/FCPXMLExporter.h"

#include "OrvaneSyncCore/Services/Export/ExportPreview.h"
#include "OrvaneSyncCore/Services/Export/FCPXMLExporterStages.h"
#include "OrvaneSyncCore/Services/Naming/GroupNaming.h"
#include "OrvaneSyncCore/Utilities/RateText.h"
#include "Platform/Stop.h"

#include <algorithm>
#include <functional>

namespace orvane::FCPXMLExporter {

using namespace fcpxml;

namespace {

constexpr double rateMismatch = 0.02;

void addMainFormats(ExportWalk& walk) {
    const ExportSettings& settings = walk.settings;
    const bool alternate = settings.videoResolution == VideoResolutionMode::useAlternateFrameSize;
    Format main;
    main.id = {walk.resources.nextID()};
    main.frameDuration = frameDurationTime(settings.frameRate);
    main.width = alternate ? settings.alternateWidth : settings.outputWidth;
    main.height = alternate ? settings.alternateHeight : settings.outputHeight;
    main.colorSpace = VideoColorSpace::rec709();
    walk.resources.add(std::move(main));

    Format audio;
    audio.id = {walk.resources.nextID()};
    audio.name = std::string(VideoFormat::FFVideoFormatRateUndefined);
    walk.resources.add(std::move(audio));
}

void warnOfOtherRate(ExportWalk& walk, const SyncGroup& group) {
    const double own = group.video.projectFrameRate.value_or(0), project = walk.settings.projectFrameRate;
    if (!group.matchStatus.isSettled() || !(own > 0) || !(project > 0)) return;
    if (!(std::max(own, project) / std::min(own, project) - 1 > rateMismatch)) return;
    walk.warn("Project rate mismatch: ", group,
              " is " + threeDigits(own) + " fps, project is " + threeDigits(project) + " fps");
}

std::string eventClipName(const ExportWalk& walk, const SyncGroup& group) {
    const auto name = walk.clipNames.find(group.id);
    return GroupNaming::appendingOffspeedTag(name == walk.clipNames.end() ? group.clipName : name->second,
                                             group);
}

void addClipWithoutAudio(ExportWalk& walk, const SyncGroup& group) {
    if (walk.settings.wrapMOSInSyncClip) {
        auto clip = buildMOSSyncClipWrapper(group, walk.resources, std::string(altFormatID),
                                            eventClipName(walk, group), walk.settings);
        if (clip) {
            walk.place(std::move(*clip), &group);
            ++walk.result.syncClipCount;
            return;
        }
    }
    walk.warn("MOS (no audio): ", group);
}

/// The picture's format and asset, and an asset for each of its recordings. Nothing is shared between clips.
ClipResources addClipResources(ExportWalk& walk, const SyncGroup& group) {
    const ExportSettings& settings = walk.settings;
    ClipResources ids;
    ids.videoAssetID = walk.resources.nextID();
    ids.nativeFormatID = walk.resources.nextID();
    ids.altFormatID = altFormatID;
    ids.audioFormatID = audioFormatID;
    walk.resources.add(nativeFormat(group.video, ids.nativeFormatID, settings));
    walk.resources.add(videoAsset(group.video, ids.videoAssetID, ids.nativeFormatID, settings));

    ids.audioAssetIDs.resize(group.audioMatches.size());
    for (const std::size_t match : writtenMatches(group, settings)) {
        ids.audioAssetIDs[match] = walk.resources.nextID();
        walk.resources.add(
            recordingAsset(group.audioMatches[match].audio, ids.audioAssetIDs[match], settings));
    }
    walk.videoAssetIDByGroup[group.id] = ids.videoAssetID;
    walk.formatIDByGroup[group.id] = ids.nativeFormatID;
    walk.audioAssetIDsByGroup[group.id] = ids.audioAssetIDs;
    return ids;
}

void addClip(ExportWalk& walk, const SyncGroup& group) {
    const ClipResources resources = addClipResources(walk, group);
    auto clip = buildSyncClip(group, resources, eventClipName(walk, group), walk.settings);
    if (!clip) return;
    const bool inEvent = walk.settings.generateSyncClips;
    if (walk.settings.generateMulticam) {
        walk.syncClips.push_back({&group, inEvent ? walk.eventItems.size() : walk.looseClips.size()});
        if (!inEvent) walk.looseClips.push_back(std::move(*clip));
    }
    if (!inEvent) return;
    walk.place(std::move(*clip), &group);
    ++walk.result.syncClipCount;
}

void addGroup(ExportWalk& walk, const SyncGroup& group) {
    platform::throwIfStopped(walk.stop);
    warnOfOtherRate(walk, group);
    if (group.isMOS())
        addClipWithoutAudio(walk, group);
    else if (!group.matchStatus.isSettled())
        walk.warn("Skipped (not matched): ", group);
    else
        addClip(walk, group);
}

/// What Smart Audio heard is kept in memory alone.
void warnOfMissingCurves(ExportWalk& walk) {
    if (!walk.settings.volumeKeyframes) return;
    const int clips =
        ExportPreview::smartAudioCoverage(walk.groups, walk.settings.smartAudioResults).unanalyzed;
    if (clips > 0)
        walk.result.warnings.push_back("Volume curves are missing: Smart Audio has not heard " +
                                       std::to_string(clips) + (clips == 1 ? " clip" : " clips") +
                                       "; analyze and export again");
}

std::string documentText(ExportWalk& walk) {
    FCPXML document;
    document.version = walk.settings.fcpxmlVersion;
    document.items.push_back({assembleEvents(walk)});
    document.resources.items = walk.resources.take();
    XMLDocument tree = std::move(document).toXMLDocument(std::nullopt, walk.stop);
    FCPXMLDTDFixer::fix(tree);
    return tree.text();
}

} // namespace

void giveEditableItemsTheirType(std::string& text, const std::stop_token& stop) {
    platform::StopCheck check(stop);
    constexpr std::string_view pattern = "editable=\"1\"";
    constexpr std::string_view addition = " type=\"string\"";
    std::vector<std::size_t> ends;
    const std::boyer_moore_horspool_searcher searcher(pattern.begin(), pattern.end());
    for (auto at = text.begin(); at != text.end();) {
        check();
        const auto [first, last] = searcher(at, text.end());
        if (first != last) ends.push_back(static_cast<std::size_t>(last - text.begin()));
        at = last;
    }
    std::size_t from = text.size();
    text.resize(text.size() + ends.size() * addition.size());
    const auto place = [&](std::size_t at) { return text.begin() + static_cast<std::ptrdiff_t>(at); };
    for (std::size_t to = text.size(); !ends.empty(); ends.pop_back()) {
        check();
        std::copy_backward(place(ends.back()), place(from), place(to));
        to -= from - ends.back() + addition.size();
        std::copy(addition.begin(), addition.end(), place(to));
        from = ends.back();
    }
}

void ExportWalk::warn(std::string_view before, const SyncGroup& group, std::string_view behind) {
    if (!fileNames) {
        fileNames.emplace();
        for (const SyncGroup& other : groups) fileNames->add(other.video);
    }
    result.warnings.push_back(std::string(before) + fileNames->of(group.video) + std::string(behind));
}

void ExportWalk::place(EventItem item, const SyncGroup* group) {
    eventItems.push_back(std::move(item));
    if (!settings.splitEventsByScene) return;
    const auto name = group == nullptr ? sceneEventNames.end() : sceneEventNames.find(group->id);
    bucketKeys.push_back(name == sceneEventNames.end() ? std::nullopt : std::optional(name->second));
}

SyncClip ExportWalk::takeSyncClip(const BuiltClip& built) {
    if (settings.generateSyncClips) return std::get<SyncClip>(eventItems.at(built.index));
    return std::move(looseClips.at(built.index));
}

ExportResult exportDocument(const SyncGroupList& allGroups, const std::vector<WildTrack>& wildTracks,
                            const ExportSettings& settings, const std::stop_token& stop) {
    const SyncGroupList groups =
        allGroups.filtered([](const SyncGroup& group) { return !group.isExcludedFromExport; });
    if (groups.empty()) throw ExportError::noGroups();

    ExportWalk walk(groups, wildTracks, settings, stop);
    walk.clipNames = exportClipNames(groups, settings);
    if (settings.splitEventsByScene)
        for (const SyncGroup& group : groups)
            if (auto name = sceneEventName(group, settings.eventNamePattern, settings.eventName))
                walk.sceneEventNames[group.id] = std::move(*name);

    constexpr std::size_t usualResources = 3; // a format, the picture, one recording
    walk.resources.reserve(groups.size() * usualResources + 2);
    walk.eventItems.reserve(groups.size());
    walk.videoAssetIDByGroup.reserve(groups.size());
    walk.formatIDByGroup.reserve(groups.size());
    walk.audioAssetIDsByGroup.reserve(groups.size());
    addMainFormats(walk);
    for (const SyncGroup& group : groups) addGroup(walk, group);
    warnOfMissingCurves(walk);
    if (settings.generateMulticam && walk.syncClips.size() >= 2) addMulticamClips(walk);
    addRoomTone(walk);
    addWildTracks(walk);
    if (settings.generateRawMediaEvent) addRawMedia(walk);
    addNativeMOSClips(walk);
    addProjectRateClips(walk);
    walk.result.fcpxmlString = documentText(walk);
    platform::throwIfStopped(stop);
    giveEditableItemsTheirType(walk.result.fcpxmlString, stop);
    return std::move(walk.result);
}

} // namespace orvane::FCPXMLExporter
