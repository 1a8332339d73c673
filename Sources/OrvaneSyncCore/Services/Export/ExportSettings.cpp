#include "OrvaneSyncCore/Services/Export/ExportSettings.h"

#include "OrvaneSyncCore/Services/Export/AspectRatioHelper.h"
#include "OrvaneSyncCore/Services/Matching/ProjectFrameRateResolver.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <limits>

namespace orvane {

namespace {

using platform::SettingsStore;

constexpr int defaultWidth = 1920;
constexpr int defaultHeight = 1080;
constexpr double defaultAtmoSeconds = 180.0;

int positiveOr(int value, int otherwise) { return value > 0 ? value : otherwise; }

void readFrameSizes(ExportSettings& settings, const SettingsStore& store,
                    const ExportSettings::Request& request) {
    if (const MediaAsset* video = request.sourceVideo; video != nullptr) {
        settings.outputWidth = video->width.value_or(defaultWidth);
        settings.outputHeight = video->height.value_or(defaultHeight);
    }

    const int storedWidth = positiveOr(store.get(settings::alternateWidth), defaultWidth);
    const int storedHeight = positiveOr(store.get(settings::alternateHeight), defaultHeight);
    const std::string shape = store.get(settings::aspectRatio);
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

void readGlobalAudioOffset(ExportSettings& settings, const SettingsStore& store) {
    const double seconds = store.get(settings::globalAudioOffsetFrames) / settings.projectFrameRate;
    settings.globalAudioOffsetSeconds = std::isfinite(seconds) ? seconds : 0;
    const GlobalOffsetStart mode = store.get(settings::globalAudioOffsetStartMode);
    if (mode == GlobalOffsetStart::fromFilename)
        settings.globalAudioOffsetStartingFromFilename =
            store.find(settings::globalAudioOffsetStartFromFilename);
    if (mode == GlobalOffsetStart::fromTC)
        settings.globalAudioOffsetStartingFromTC = store.find(settings::globalAudioOffsetStartFromTC);
}

void readAtmo(ExportSettings& settings, const SettingsStore& store, const ExportSettings::Request& request) {
    settings.atmoFileURL = request.atmoFileURL;
    if (request.atmoAudioRoleOverride) settings.set(settings::atmoAudioRole, *request.atmoAudioRoleOverride);
    const double seconds =
        request.atmoDurationOverride ? *request.atmoDurationOverride : store.get(settings::atmoDuration);
    settings.atmoDurationSeconds = seconds > 0 ? seconds : defaultAtmoSeconds;
}

} // namespace

ExportSettings ExportSettings::fromUserDefaults(const SettingsStore& store, const Request& request) {
    ExportSettings settings(store);
    settings.set(settings::eventName, request.eventName);
    settings.set(settings::generateMulticam, request.generateMulticam);
    settings.smartAudioResults = request.smartAudioResults;
    settings.metadataPrefix = request.metadataPrefix;
    settings.matchRules = request.matchRules;

    const double chosenRate = store.get(settings::targetFrameRate);
    settings.frameRate = ProjectFrameRateResolver::resolve(request.groups, chosenRate).fps;
    settings.projectFrameRate = settings.frameRate;

    readFrameSizes(settings, store, request);
    readGlobalAudioOffset(settings, store);
    readAtmo(settings, store, request);
    int track = 0;
    for (const auto& subrole : settings::defaultSubroles) settings.subroleMap[++track] = store.get(subrole);
    settings.customNamingPattern = store.get(settings::customNamingPattern);
    settings.lockitFieldMapping = LockitFieldMapping::current(store);
    if (!store.find(settings::volumeKeyframes))
        settings.set(settings::volumeKeyframes, store.get(settings::experimentalVolumeKeyframes));
    return settings;
}

} // namespace orvane
