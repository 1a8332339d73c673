#include "OrvaneSyncCore/Services/Export/ExportClips.h"
#include "OrvaneSyncCore/Services/Export/ExportResources.h"
#include "OrvaneSyncCore/Services/Export/ExportTimes.h"
#include "OrvaneSyncCore/Services/Export/FCPXMLExporterStages.h"
#include "OrvaneSyncCore/Services/Naming/OffspeedNaming.h"
#include "OrvaneSyncCore/Services/Takes/Take.h"

#include <algorithm>
#include <cmath>

namespace orvane::FCPXMLExporter {

using namespace fcpxml;

namespace {

constexpr double smallestGainDB = 0.01;

constexpr std::string_view reelKey = "com.apple.proapps.studio.reel";
constexpr std::string_view sceneKey = "com.apple.proapps.studio.scene";
constexpr std::string_view shotKey = "com.apple.proapps.studio.shot";
constexpr std::string_view noteKey = "com.apple.proapps.metadataField.note";

AdjustConform::Type conformType(SpatialConformType type) {
    switch (type) {
    case SpatialConformType::fit:
        return AdjustConform::Type::fit;
    case SpatialConformType::none:
        return AdjustConform::Type::none;
    case SpatialConformType::fill:
        break;
    }
    return AdjustConform::Type::fill;
}

/// Start and length of a clip's picture, at the one rate that is used for all times of the clip.
struct Picture {
    double fps;
    Time start;
    Time duration;
    TcFormat tcFormat;

    Picture(const MediaAsset& video, const ExportSettings& settings)
        : fps(clipRate(video, settings)), start(pictureStartTime(video, fps).value_or(Time::zero())),
          duration(pictureDuration(video, fps).value_or(fallbackDuration(fps))),
          tcFormat(FCPXMLExporter::tcFormat(video, fps)) {}
};

AssetClip pictureClip(const SyncGroup& group, const Picture& picture, const std::string& assetID,
                      const std::string& formatID, const ExportSettings& settings) {
    AssetClip clip;
    clip.ref = {assetID};
    clip.offset = picture.start;
    clip.name = group.video.filename;
    clip.start = picture.start;
    clip.duration = picture.duration;
    clip.format = IDREF{formatID};
    clip.tcFormat = picture.tcFormat;
    clip.videoRole = VideoRole{{"video"}};
    clip.adjust.conform = AdjustConform{conformType(settings.get(settings::spatialConform))};
    return clip;
}

/// The section that a container shows, on the axis of its picture.
struct Extent {
    Time start;
    Time duration;
};

/// The whole frames in which there are both the picture and a file of the take; the whole picture if there is
/// no such frame.
Extent commonExtent(const SyncGroup& group, const Picture& picture, const ExportSettings& settings) {
    const Time shift = soundShift(group, settings, picture.fps);
    std::optional<Time> first, last;
    for (const TakeFile& file : takeOf(group, settings.defaultAudioTracks).files) {
        if (!isHeard(file.role)) continue;
        const AudioMatch& match = group.audioMatches[file.matchIndex];
        const Time start = audioPlaceTime(group, match, picture.fps, settings) + shift - picture.start;
        const Time end =
            start +
            soundDuration(match.audio->durationSeconds, audioRate(match.audio)).value_or(Time::zero());
        first = first ? std::min(*first, start) : start;
        last = last ? std::max(*last, end) : end;
    }
    if (!first) return {picture.start, picture.duration};
    // Seconds from the picture's start, where the frames are counted from.
    const Time frame = frameDurationTime(picture.fps);
    Time from = std::max(*first, Time::zero()).toFrame(frame, FrameSampling::floor);
    if (from < *first) from += frame;
    const Time to = std::min(*last, picture.duration).toFrame(frame, FrameSampling::floor);
    if (!(from < to)) return {picture.start, picture.duration};
    return {picture.start + from, to - from};
}

/// Not for `overlap`. Compares the lengths of picture and take, not their positions.
Time trimmedDuration(const SyncGroup& group, const Picture& picture, const ExportSettings& settings) {
    if (settings.get(settings::trimMode) == TrimMode::videoDuration) return picture.duration;
    double seconds = group.video.shownSeconds().value_or(0);
    const double take = takeOf(group, settings.defaultAudioTracks).durationSeconds;
    if (settings.get(settings::trimMode) == TrimMode::commonDuration) {
        if (take > 0) seconds = std::min(seconds, take);
    } else {
        seconds = std::max(seconds, take);
        for (const AudioMatch& match : group.audioMatches)
            seconds = std::max(seconds, match.audio->durationSeconds.value_or(0));
    }
    const auto trimmed = durationTime(seconds, picture.fps);
    return trimmed && Time::zero() < *trimmed ? *trimmed : picture.duration;
}

bool holdsKey(const std::vector<MetadataItem>& items, std::string_view key) {
    return std::ranges::find(items, key, &MetadataItem::key) != items.end();
}

Metadata metadataOf(const SyncGroup& group, const ExportSettings& settings, const MappedItems& mapped) {
    Metadata metadata;
    const auto add = [&](std::string_view key, std::optional<std::string> value) {
        if (!value) return;
        MetadataItem item;
        item.key = key;
        item.value = std::move(value);
        metadata.items.push_back(std::move(item));
    };
    add(reelKey, group.video.filenameStem());
    metadata.items.insert(metadata.items.end(), mapped.items.begin(), mapped.items.end());
    if (!holdsKey(mapped.items, sceneKey)) add(sceneKey, bestSceneAleIxml(group));
    if (!holdsKey(mapped.items, shotKey)) add(shotKey, bestTakeAleIxml(group));
    add(noteKey, buildNotesString(group, settings, mapped.notes));
    return metadata;
}

void addKeyword(std::vector<MarkerItem>& markers, std::string value) {
    markers.emplace_back(Keyword{std::move(value)});
}

/// A retimed picture gets no sound in its clip.
Extent trimmed(const SyncGroup& group, const Picture& picture, bool isRetimed,
               const ExportSettings& settings) {
    if (settings.get(settings::trimMode) == TrimMode::overlap)
        return isRetimed ? Extent{picture.start, picture.duration} : commonExtent(group, picture, settings);
    return {picture.start, trimmedDuration(group, picture, settings)};
}

/// The container around a picture: it has the format of the main container, the picture keeps its own.
SyncClip container(const SyncGroup& group, const Picture& picture, AssetClip item,
                   const std::string& altFormat, const std::string& fcpName, const ExportSettings& settings) {
    const Extent extent = trimmed(group, picture, item.timeMap.has_value(), settings);
    SyncClip clip;
    clip.offset = extent.start;
    clip.name = fcpName;
    clip.start = extent.start;
    clip.duration = extent.duration;
    clip.format = IDREF{altFormat};
    clip.tcFormat = picture.tcFormat;
    clip.adjust = syncClipMasterGainAdjust(group);
    clip.item = std::move(item);
    return clip;
}

/// A clip of picture and sound. With a time map the sound is left out: real-time sound cannot follow a
/// retimed picture.
SyncClip clipWithoutKeywords(const SyncGroup& group, const Picture& picture, const ClipResources& resources,
                             const std::optional<TimeMap>& timeMap, const std::string& fcpName,
                             const MappedItems& mapped, const ExportSettings& settings) {
    AssetClip item = pictureClip(group, picture, resources.videoAssetID, resources.nativeFormatID, settings);
    item.timeMap = timeMap;
    std::vector<SyncSource> sources;
    if (!timeMap) {
        AudioChain chain =
            buildAudioChain(group, resources.audioAssetIDs, resources.audioFormatID, picture.fps, settings);
        item.anchored = std::move(chain.anchored);
        sources.push_back({SyncSource::SourceID::connected, std::move(chain.roleSources)});
    }
    SyncClip clip = container(group, picture, std::move(item), resources.altFormatID, fcpName, settings);
    clip.syncSources = std::move(sources);
    clip.metadata = metadataOf(group, settings, mapped);
    return clip;
}

} // namespace

std::optional<SyncClip> buildSyncClip(const SyncGroup& group, const ClipResources& resources,
                                      const std::string& fcpName, const ExportSettings& settings) {
    if (resources.audioAssetIDs.empty() || group.audioMatches.empty()) return std::nullopt;
    const Picture picture(group.video, settings);
    const MappedItems mapped = lockitMappedItems(group, settings);
    const auto timeMap = buildTimeMap(group, picture.fps);
    SyncClip clip = clipWithoutKeywords(group, picture, resources, timeMap, fcpName, mapped, settings);
    addKeyword(clip.markers, "Synced");
    for (const std::string& keyword : mapped.keywords) addKeyword(clip.markers, keyword);
    addOffspeedKeywords(clip.markers, group, timeMap ? "Slow Motion" : "", settings);
    return clip;
}

std::optional<SyncClip> buildProjectRateSyncClip(const SyncGroup& group, const ClipResources& resources,
                                                 const std::string& fcpName, const ExportSettings& settings) {
    if (resources.audioAssetIDs.empty() || group.audioMatches.empty()) return std::nullopt;
    const Picture picture(group.video, settings);
    const MappedItems mapped = lockitMappedItems(group, settings);
    const std::string name = OffspeedNaming::resolveProjectRateName(
        fcpName, group.projectRateNameSuffix.value_or(settings.get(settings::projectRateSuffix)),
        picture.fps);
    SyncClip clip = clipWithoutKeywords(group, picture, resources, std::nullopt, name, mapped, settings);
    for (const std::string& keyword : mapped.keywords) addKeyword(clip.markers, keyword);
    addOffspeedKeywords(clip.markers, group, "Project Rate", settings);
    return clip;
}

std::optional<SyncClip> buildMOSSyncClipWrapper(const SyncGroup& group, ResourceList& resources,
                                                const std::string& altFormat, const std::string& fcpName,
                                                const ExportSettings& settings) {
    const Picture picture(group.video, settings);
    if (!durationTime(group.video.durationSeconds, picture.fps)) return std::nullopt;
    const std::string assetID = resources.nextID();
    const std::string formatID = resources.nextID();
    resources.add(nativeFormat(group.video, formatID, settings));
    Asset asset = videoAsset(group.video, assetID, formatID, settings);
    asset.start = picture.start;
    resources.add(asset);

    const MappedItems mapped = lockitMappedItems(group, settings);
    SyncClip clip = container(group, picture, pictureClip(group, picture, assetID, formatID, settings),
                              altFormat, fcpName, settings);
    clip.metadata = metadataOf(group, settings, mapped);
    addKeyword(clip.markers, "MOS");
    for (const std::string& keyword : mapped.keywords) addKeyword(clip.markers, keyword);
    return clip;
}

AdjustAudioVideo syncClipMasterGainAdjust(const SyncGroup& group) {
    AdjustAudioVideo adjust;
    if (std::abs(group.masterGainDB) > smallestGainDB && std::isfinite(group.masterGainDB))
        adjust.volume = AdjustVolume{Decibels{std::round(group.masterGainDB * 100) / 100}};
    return adjust;
}

} // namespace orvane::FCPXMLExporter
