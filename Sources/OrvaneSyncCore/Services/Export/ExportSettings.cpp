#include "OrvaneSyncCore/Services/Export/ExportSettings.h"

#include "OrvaneSyncCore/Services/Export/AspectRatioHelper.h"
#include "OrvaneSyncCore/Services/Matching/ProjectFrameRateResolver.h"
#include "OrvaneSyncCore/Services/Persistence/SettingsReader.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <limits>

namespace orvane {

namespace {

constexpr int defaultWidth = 1920;
constexpr int defaultHeight = 1080;
constexpr int subroleCount = 8;
constexpr double defaultAtmoSeconds = 180.0;

int positiveOr(int value, int otherwise) { return value > 0 ? value : otherwise; }

void readFrameSizes(ExportSettings& settings, const SettingsReader& reader,
                    const ExportSettings::Request& request) {
    if (const MediaAsset* video = request.sourceVideo; video != nullptr) {
        settings.outputWidth = video->width.value_or(defaultWidth);
        settings.outputHeight = video->height.value_or(defaultHeight);
    }

    const int storedWidth = positiveOr(reader.integer("alternateWidth"), defaultWidth);
    const int storedHeight = positiveOr(reader.integer("alternateHeight"), defaultHeight);
    const std::string shape = reader.text("container.aspectRatio");
    if (shape == AspectRatioHelper::customIdentifier) {
        settings.alternateWidth = storedWidth;
        settings.alternateHeight = storedHeight;
    } else {
        const bool videoHasWidth = request.sourceVideo != nullptr && request.sourceVideo->width;
        const int anchor =
            request.aspectAnchorWidth.value_or(videoHasWidth ? *request.sourceVideo->width : storedWidth);
        settings.alternateWidth = positiveOr(anchor, defaultWidth);
        settings.alternateHeight =
            positiveOr(AspectRatioHelper::heightFromWidth(anchor, shape), defaultHeight);
    }
}

void readGlobalAudioOffset(ExportSettings& settings, const SettingsReader& reader) {
    const double seconds = reader.integer("globalAudioOffset.frames") / settings.projectFrameRate;
    settings.globalAudioOffsetSeconds = std::isfinite(seconds) ? seconds : 0;
    const std::string mode = reader.text("globalAudioOffset.startMode");
    if (mode == "fromFilename")
        settings.globalAudioOffsetStartingFromFilename =
            reader.textIfPresent("globalAudioOffset.startFromFilename");
    if (mode == "fromTC")
        settings.globalAudioOffsetStartingFromTC = reader.textIfPresent("globalAudioOffset.startFromTC");
}

void readOffspeed(ExportSettings& settings, const SettingsReader& reader) {
    settings.generateNativeMOSForOffspeed = reader.boolean("offspeed.generateNativeMOS");
    settings.nativeMOSSuffix = reader.text("offspeed.suffix");
    settings.separateEventForNativeMOS = reader.boolean("offspeed.separateEvent");
    settings.nativeMOSEventName = reader.text("offspeed.eventName");
    settings.wrapNativeMOSInSyncClip = reader.boolean("offspeed.wrapNativeMOSInSyncClip");
    settings.generateProjectRateForOffspeed = reader.boolean("offspeed.generateProjectRate");
    settings.projectRateSuffix = reader.text("offspeed.projectRateSuffix");
    settings.separateEventForProjectRate = reader.boolean("offspeed.projectRateSeparateEvent");
    settings.projectRateEventName = reader.text("offspeed.projectRateEventName");
    settings.offspeedAutoKeyword = reader.boolean("offspeed.autoKeyword");
}

void readAtmo(ExportSettings& settings, const SettingsReader& reader,
              const ExportSettings::Request& request) {
    settings.atmoFileURL = request.atmoFileURL;
    settings.atmoAudioRole =
        request.atmoAudioRoleOverride ? *request.atmoAudioRoleOverride : reader.text("atmo.audioRole");
    const double seconds =
        request.atmoDurationOverride ? *request.atmoDurationOverride : reader.number("atmo.duration");
    settings.atmoDurationSeconds = seconds > 0 ? seconds : defaultAtmoSeconds;
}

void readEvents(ExportSettings& settings, const SettingsReader& reader) {
    settings.generateSyncClips = reader.boolean("generateSyncClips");
    settings.wrapMOSInSyncClip = reader.boolean("export.wrapMOSInSyncClip");
    settings.generateRawMediaEvent = reader.boolean("export.generateRawMediaEvent");
    settings.rawMediaEventName = reader.text("export.rawMediaEventName");
    settings.splitEventsByScene = reader.boolean("export.splitEventsByScene");
    settings.eventNamePattern = reader.text("export.eventNamePattern");
}

void readNaming(ExportSettings& settings, const SettingsReader& reader) {
    settings.audioBaseRole = reader.text("audioBaseRole");
    settings.useIXMLTrackNames = reader.boolean("useIXMLTrackNames");
    for (int track = 1; track <= subroleCount; ++track)
        settings.subroleMap[track] = reader.text("defaultSubrole" + std::to_string(track));
    settings.clipNamingSource = GroupNaming::sourceFrom(reader.text("clipNamingSource"));
    settings.customNamingPattern = reader.text("customNamingPattern");
    settings.namingSeparator = reader.text("namingSeparator");
    settings.notesSource = reader.rawValued<NotesSource>("notes.source");
    settings.notesVideoPrefix = reader.text("notes.videoPrefix");
    settings.notesAudioPrefix = reader.text("notes.audioPrefix");
}

} // namespace

std::string_view displayText(VideoResolutionMode mode) {
    return mode == VideoResolutionMode::useVideoFrameSize ? "Native (per-clip)" : "Alternate (fixed)";
}

std::string_view displayText(SpatialConformType type) {
    static constexpr std::array<std::string_view, 3> texts{"Fill (crop)", "Fit (letterbox)", "None (native)"};
    return texts.at(static_cast<std::size_t>(type));
}

std::string_view displayText(TrimMode mode) {
    static constexpr std::array<std::string_view, 3> texts{"Common (trim to shortest)", "Video duration",
                                                           "No trim (longest)"};
    return texts.at(static_cast<std::size_t>(mode));
}

std::string_view displayText(NotesSource source) {
    static constexpr std::array<std::string_view, 4> texts{"Video only", "Audio only", "Video + Audio",
                                                           "None"};
    return texts.at(static_cast<std::size_t>(source));
}

std::string_view displayText(MulticamCodec codec) {
    return codec == MulticamCodec::automatic ? "Auto (from source, fallback ProRes LT)" : rawValue(codec);
}

ExportSettings ExportSettings::fromUserDefaults(const platform::SettingsStore& defaults,
                                                const Request& request) {
    const SettingsReader reader(defaults);
    ExportSettings settings;
    settings.eventName = request.eventName;
    settings.generateMulticam = request.generateMulticam;
    settings.smartAudioResults = request.smartAudioResults;
    settings.metadataPrefix = request.metadataPrefix;

    const double chosenRate = reader.number("project.targetFrameRate");
    settings.frameRate = ProjectFrameRateResolver::resolve(request.groups, chosenRate).fps;
    settings.projectFrameRate = settings.frameRate;

    readFrameSizes(settings, reader, request);
    readGlobalAudioOffset(settings, reader);
    readOffspeed(settings, reader);
    readAtmo(settings, reader, request);
    readEvents(settings, reader);
    readNaming(settings, reader);
    settings.videoResolution = reader.rawValued<VideoResolutionMode>("videoResolution");
    settings.spatialConform = reader.rawValued<SpatialConformType>("spatialConform");
    settings.overrideAnamorphic = reader.boolean("overrideAnamorphic");
    settings.trimMode = reader.rawValued<TrimMode>("trimMode");
    settings.multicamCodec = reader.rawValued<MulticamCodec>("multicam.codec");
    settings.volumeKeyframes =
        defaults.boolean("export.volumeKeyframes", reader.boolean("export.experimentalVolumeKeyframes"));
    return settings;
}

} // namespace orvane
