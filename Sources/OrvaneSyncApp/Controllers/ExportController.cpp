#include "OrvaneSyncApp/Controllers/ExportController.h"

#include "OrvaneSyncCore/Models/Settings.h"

#include <algorithm>

namespace orvane {

namespace {

SyncGroupList settledGroups(const SyncGroupList& groups) {
    return groups.filtered([](const SyncGroup& group) { return group.matchStatus.isSettled(); });
}

} // namespace

int ExportController::projectedMulticamCount() const {
    const auto withAudio = work_.syncGroups().filtered(
        [](const SyncGroup& group) { return group.matchStatus.isSettled() && !group.isMOS(); });
    return static_cast<int>(FCPXMLExporter::findMulticamGroups(withAudio).size());
}

ExportSettings ExportController::exportSettings(const Options& options) const {
    work_.notices.assertOnMainThread();
    ExportSettings::Request request;
    const platform::SettingsStore& store = *work_.environment.settings;
    request.eventName = options.eventName.value_or(store.get(settings::eventName));
    request.generateMulticam = options.generateMulticam.value_or(store.get(settings::generateMulticam));
    request.groups = work_.syncGroups();
    request.smartAudioResults = smartAudio_.state().results;
    request.metadataPrefix = options.metadataPrefix;
    const auto settled = std::find_if(work_.syncGroups().begin(), work_.syncGroups().end(),
                                      [](const SyncGroup& group) { return group.matchStatus.isSettled(); });
    if (settled != work_.syncGroups().end()) request.sourceVideo = &settled->video;
    if (!work_.syncGroups().empty()) request.aspectAnchorWidth = work_.syncGroups().front().video.width;
    return ExportSettings::fromUserDefaults(*work_.environment.settings, request);
}

ExportResult ExportController::exportFCPXML(const ExportSettings& settings) const {
    work_.notices.assertOnMainThread();
    return FCPXMLExporter::exportDocument(settledGroups(work_.syncGroups()), work_.wildTracks(), settings);
}

ExportResult ExportController::exportSingleClip(const UUID& groupID, ExportSettings settings) const {
    work_.notices.assertOnMainThread();
    const auto found =
        work_.syncGroups().filtered([&](const SyncGroup& group) { return group.id == groupID; });
    if (found.empty()) throw GroupNotFound();
    settings.generateMulticam = false;
    return FCPXMLExporter::exportDocument(found, {}, settings);
}

} // namespace orvane
