#include "OrvaneSyncCore/Services/Export/FCPXMLExporter.h"

#include "OrvaneSyncCore/Services/Export/ExportClips.h"
#include "OrvaneSyncCore/Services/Export/ExportPreview.h"
#include "OrvaneSyncCore/Services/Export/ExportResources.h"
#include "OrvaneSyncCore/Services/Export/ExportTimes.h"
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

void addMainFormats(ExportRun& run) {
    const ExportSettings& settings = run.settings;
    const bool alternate =
        settings.get(settings::videoResolution) == VideoResolutionMode::useAlternateFrameSize;
    Format main;
    main.id = {run.resources.nextID()};
    main.frameDuration = frameDurationTime(settings.frameRate);
    main.width = alternate ? settings.alternateWidth : settings.outputWidth;
    main.height = alternate ? settings.alternateHeight : settings.outputHeight;
    main.colorSpace = VideoColorSpace::rec709();
    run.resources.add(main);

    Format audio;
    audio.id = {run.resources.nextID()};
    audio.name = std::string(VideoFormat::FFVideoFormatRateUndefined);
    run.resources.add(audio);
}

void warnOfOtherRate(ExportRun& run, const SyncGroup& group) {
    const double own = group.video.projectFrameRate.value_or(0), project = run.settings.projectFrameRate;
    if (!group.matchStatus.isSettled() || !(own > 0) || !(project > 0)) return;
    if (!(std::max(own, project) / std::min(own, project) - 1 > rateMismatch)) return;
    run.warn("Project rate mismatch: ", group,
             " is " + threeDigits(own) + " fps, project is " + threeDigits(project) + " fps");
}

std::string eventClipName(const ExportRun& run, const SyncGroup& group) {
    const auto name = run.clipNames.find(group.id);
    return GroupNaming::appendingOffspeedTag(name == run.clipNames.end() ? group.clipName : name->second,
                                             group);
}

void addClipWithoutAudio(ExportRun& run, const SyncGroup& group) {
    if (clipKind(group, run.settings) == ClipKind::withoutSound) {
        auto clip = buildMOSSyncClipWrapper(group, run.resources, std::string(altFormatID),
                                            eventClipName(run, group), run.settings);
        if (clip) {
            run.place(*clip, &group);
            ++run.result.syncClipCount;
            return;
        }
    }
    run.warn("MOS (no audio): ", group);
}

/// The format and asset of the picture, and an asset for each of its recordings. Clips share no resources.
const ClipResources& addClipResources(ExportRun& run, const SyncGroup& group) {
    const ExportSettings& settings = run.settings;
    ClipResources ids;
    ids.videoAssetID = run.resources.nextID();
    ids.nativeFormatID = run.resources.nextID();
    ids.altFormatID = altFormatID;
    ids.audioFormatID = audioFormatID;
    run.resources.add(nativeFormat(group.video, ids.nativeFormatID, settings));
    run.resources.add(videoAsset(group.video, ids.videoAssetID, ids.nativeFormatID, settings));

    ids.audioAssetIDs.resize(group.audioMatches.size());
    for (const std::size_t match : writtenMatches(group, settings)) {
        ids.audioAssetIDs[match] = run.resources.nextID();
        run.resources.add(
            recordingAsset(group.audioMatches[match].audio, ids.audioAssetIDs[match], settings));
    }
    return run.resourcesByGroup[group.id] = std::move(ids);
}

void addClip(ExportRun& run, const SyncGroup& group) {
    addClipResources(run, group);
    const auto clip = run.syncClip(group);
    if (!clip) return;
    if (run.settings.get(settings::generateMulticam)) run.syncClips.push_back(&group);
    if (!run.settings.get(settings::generateSyncClips)) return;
    run.place(*clip, &group);
    ++run.result.syncClipCount;
}

void addGroup(ExportRun& run, const SyncGroup& group) {
    platform::throwIfStopped(run.stop);
    warnOfOtherRate(run, group);
    if (group.isMOS())
        addClipWithoutAudio(run, group);
    else if (clipKind(group, run.settings) == ClipKind::withSound)
        addClip(run, group);
    else
        run.warn("Skipped (not matched): ", group);
}

/// The results of Smart Audio are kept in memory only.
void warnOfMissingCurves(ExportRun& run) {
    const bool hasKeyframes = run.settings.get(settings::volumeKeyframes);
    const auto coverage = ExportPreview::smartAudioCoverage(run.groups, run.settings.smartAudioResults);
    if (const auto ranges = coverage.rangesText(hasKeyframes)) run.result.warnings.push_back(*ranges);
    if (!hasKeyframes) return;
    const int clips = coverage.unanalyzed;
    if (clips > 0)
        run.result.warnings.push_back("Volume curves are missing: Smart Audio has not analyzed " +
                                      std::to_string(clips) + (clips == 1 ? " clip" : " clips") +
                                      "; analyze and export again");
}

std::string documentText(ExportRun& run) {
    FCPXML document;
    document.items.push_back({assembleEvents(run)});
    document.resources.made = run.resources.take();
    std::move(document).writeInto(run.document, run.settings.fcpxmlVersion);
    FCPXMLDTDFixer::fix(run.document);
    return run.document.text();
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

void ExportRun::warn(std::string_view before, const SyncGroup& group, std::string_view behind) {
    if (!fileNames) {
        fileNames.emplace();
        for (const SyncGroup& other : groups) fileNames->add(other.video);
    }
    result.warnings.push_back(std::string(before) + fileNames->of(group.video) + std::string(behind));
}

void ExportRun::placeElement(XMLElement* item, const SyncGroup* group) {
    eventItems.push_back(item);
    if (!settings.get(settings::splitEventsByScene)) return;
    const auto name = group == nullptr ? sceneEventNames.end() : sceneEventNames.find(group->id);
    bucketKeys.push_back(name == sceneEventNames.end() ? std::nullopt : std::optional(name->second));
}

std::optional<SyncClip> ExportRun::syncClip(const SyncGroup& group) const {
    return buildSyncClip(group, resourcesByGroup.at(group.id), eventClipName(*this, group), settings);
}

ClipKind clipKind(const SyncGroup& group, const ExportSettings& settings) {
    if (group.isExcludedFromExport) return ClipKind::none;
    if (group.isMOS())
        return settings.get(settings::wrapMOSInSyncClip) ? ClipKind::withoutSound : ClipKind::none;
    return group.matchStatus.isSettled() ? ClipKind::withSound : ClipKind::none;
}

ExportResult exportDocument(const SyncGroupList& allGroups, const std::vector<WildTrack>& wildTracks,
                            const ExportSettings& settings, const std::stop_token& stop) {
    const SyncGroupList groups =
        allGroups.filtered([](const SyncGroup& group) { return !group.isExcludedFromExport; });
    if (groups.empty()) throw ExportError::noGroups();

    ExportRun run(groups, wildTracks, settings, stop);
    run.clipNames = exportClipNames(groups, settings);
    if (settings.get(settings::splitEventsByScene))
        for (const SyncGroup& group : groups)
            if (auto name = sceneEventName(group, settings.get(settings::eventNamePattern),
                                           settings.get(settings::eventName)))
                run.sceneEventNames[group.id] = std::move(*name);

    run.resourcesByGroup.reserve(groups.size());
    addMainFormats(run);
    for (const SyncGroup& group : groups) addGroup(run, group);
    warnOfMissingCurves(run);
    if (settings.get(settings::generateMulticam) && run.syncClips.size() >= 2) addMulticamClips(run);
    addRoomTone(run);
    addWildTracks(run);
    if (settings.get(settings::generateRawMediaEvent)) addRawMedia(run);
    addNativeMOSClips(run);
    addProjectRateClips(run);
    run.result.fcpxmlString = documentText(run);
    platform::throwIfStopped(stop);
    giveEditableItemsTheirType(run.result.fcpxmlString, stop);
    return std::move(run.result);
}

} // namespace orvane::FCPXMLExporter
