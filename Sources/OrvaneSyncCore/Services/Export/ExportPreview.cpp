#include "OrvaneSyncCore/Services/Export/ExportPreview.h"

#include "OrvaneSyncCore/Services/Export/ExportCameras.h"
#include "OrvaneSyncCore/Services/Export/ExportClips.h"
#include "OrvaneSyncCore/Services/Export/FCPXMLExporter.h"
#include "OrvaneSyncCore/Utilities/CountText.h"
#include "Platform/Text.h"

#include <set>
#include <unordered_set>

namespace orvane::ExportPreview {

namespace {

bool comesBefore(const std::string& a, const std::string& b) {
    const auto x = platform::text::decimalInteger(a), y = platform::text::decimalInteger(b);
    if (x && y) return *x < *y;
    return platform::text::compareLocalizedStandard(a, b) < 0;
}

} // namespace

std::optional<std::string> suggestedEventName(const SyncGroupList& groups) {
    std::set<std::string> scenes;
    for (const SyncGroup& group : groups) {
        if (group.isExcludedFromExport) continue;
        if (auto scene = FCPXMLExporter::bestSceneAleIxml(group)) scenes.insert(std::move(*scene));
    }
    if (scenes.empty()) return std::nullopt;
    if (scenes.size() == 1) return "Scene " + *scenes.begin();
    const std::string* first = &*scenes.begin();
    const std::string* last = first;
    for (const std::string& scene : scenes) {
        if (comesBefore(scene, *first)) first = &scene;
        if (!comesBefore(scene, *last)) last = &scene;
    }
    return "Scenes " + *first + "-" + *last;
}

int projectedEventCount(const SyncGroupList& groups, const ExportSettings& settings) {
    std::unordered_set<std::string> names;
    bool hasClipWithoutScene = false;
    for (const SyncGroup& group : groups) {
        const bool isMOSClip = group.isMOS() && settings.get(settings::wrapMOSInSyncClip);
        if (group.isExcludedFromExport || !(group.matchStatus.isSettled() || isMOSClip)) continue;
        auto name = FCPXMLExporter::sceneEventName(group, settings.get(settings::eventNamePattern),
                                                   settings.get(settings::eventName));
        if (name)
            names.insert(std::move(*name));
        else
            hasClipWithoutScene = true;
    }
    return static_cast<int>(names.size()) + (hasClipWithoutScene ? 1 : 0);
}

Forecast forecast(const SyncGroupList& groups, const ExportSettings& settings) {
    using FCPXMLExporter::ClipKind;
    const auto ofKind = [&](ClipKind kind) {
        return groups.filtered(
            [&](const SyncGroup& group) { return FCPXMLExporter::clipKind(group, settings) == kind; });
    };
    const SyncGroupList withSound = ofKind(ClipKind::withSound);
    Forecast forecast;
    if (settings.get(settings::generateSyncClips)) forecast.withSound = static_cast<int>(withSound.size());
    forecast.withoutSound = static_cast<int>(ofKind(ClipKind::withoutSound).size());
    if (settings.get(settings::generateMulticam))
        forecast.multicams =
            static_cast<int>(FCPXMLExporter::findMulticamGroups(withSound, settings.matchRules).size());
    return forecast;
}

SmartAudioCoverage smartAudioCoverage(const SyncGroupList& groups,
                                      const SmartAudioResults& smartAudioResults) {
    SmartAudioCoverage coverage;
    for (const SyncGroup& group : groups) {
        if (!group.matchStatus.isSettled() || group.isExcludedFromExport || group.isMOS()) continue;
        const bool hasRanges = !group.manualBlockOverrides.empty();
        if (smartAudioResults.heard(group.id) != nullptr) {
            if (hasRanges) ++coverage.analyzedRanges;
            continue;
        }
        ++coverage.unanalyzed;
        if (!group.manualActiveTracks.empty()) ++coverage.chosenBefore;
        if (hasRanges) ++coverage.withRanges;
    }
    return coverage;
}

std::optional<std::string> SmartAudioCoverage::text() const {
    if (unanalyzed == 0) return std::nullopt;
    return counted(unanalyzed, "clip has not", "clips have not") + " been analyzed for Smart Audio — " +
           (unanalyzed == 1 ? "its" : "their") + " audio settings won’t be applied in this export.";
}

std::optional<std::string> SmartAudioCoverage::choiceText() const {
    if (chosenBefore == 0) return std::nullopt;
    return "The channels that were chosen before, in " + counted(chosenBefore, "clip", "clips") +
           ", are in the document as they are chosen.";
}

std::optional<std::string> SmartAudioCoverage::rangesText(bool hasVolumeKeyframes) const {
    if (!hasVolumeKeyframes && withRanges + analyzedRanges > 0)
        return "The times of ranges set by hand are not in the document, in " +
               counted(withRanges + analyzedRanges, "clip", "clips") +
               "; the option “Volume keyframes” writes them.";
    if (withRanges == 0) return std::nullopt;
    return "Ranges set by hand are not in the document, in " + counted(withRanges, "clip", "clips") +
           " that Smart Audio has not analyzed; analyze and export again.";
}

} // namespace orvane::ExportPreview
