#include "OrvaneSyncApp/Controllers/ImportController.h"

#include "OrvaneSyncCore/Models/Settings.h"

#include <algorithm>

namespace orvane {

namespace {

SyncGroupList settledGroups(const SyncGroupList& groups) {
    return groups.filtered([](const SyncGroup& group) { return group.matchStatus.isSettled(); });
}

} // namespace

int ImportController::projectedMulticamCount() const {
    const auto withAudio = syncGroups_.filtered(
        [](const SyncGroup& group) { return group.matchStatus.isSettled() && !group.isMOS(); });
    return static_cast<int>(FCPXMLExporter::findMulticamGroups(withAudio).size());
}

ExportSettings ImportController::exportSettings(const ExportOptions& options) const {
    assertOnMainThread();
    ExportSettings::Request request;
    request.eventName = options.eventName.value_or(settings_->get(settings::eventName));
    request.generateMulticam = options.generateMulticam.value_or(settings_->get(settings::generateMulticam));
    request.groups = syncGroups_;
    request.smartAudioResults = smartAudio_.results;
    request.metadataPrefix = options.metadataPrefix;
    const auto settled = std::find_if(syncGroups_.begin(), syncGroups_.end(),
                                      [](const SyncGroup& group) { return group.matchStatus.isSettled(); });
    if (settled != syncGroups_.end()) request.sourceVideo = &settled->video;
    if (!syncGroups_.empty()) request.aspectAnchorWidth = syncGroups_.front().video.width;
    return ExportSettings::fromUserDefaults(*settings_, request);
}

ExportResult ImportController::exportFCPXML(const ExportSettings& settings) const {
    assertOnMainThread();
    return FCPXMLExporter::exportDocument(settledGroups(syncGroups_), wildTracks_, settings);
}

ExportResult ImportController::exportSingleClip(const UUID& groupID, ExportSettings settings) const {
    assertOnMainThread();
    const auto found = syncGroups_.filtered([&](const SyncGroup& group) { return group.id == groupID; });
    if (found.empty()) throw GroupNotFound();
    settings.generateMulticam = false;
    return FCPXMLExporter::exportDocument(found, {}, settings);
}

} // namespace orvane
