#include "OrvaneSyncApp/Controllers/ExportController.h"

#include "OrvaneSyncCore/Models/Settings.h"
#include "OrvaneSyncCore/Services/Export/ExportCameras.h"
#include "Platform/OnQueue.h"

#include <algorithm>

namespace orvane {

namespace {

SyncGroupList settledGroups(const SyncGroupList& groups) {
    return groups.filtered([](const SyncGroup& group) { return group.matchStatus.isSettled(); });
}

} // namespace

int ExportController::projectedMulticamCount(const SyncGroupList& groups, const MatchRules& rules) {
    const auto withAudio = groups.filtered(
        [](const SyncGroup& group) { return group.matchStatus.isSettled() && !group.isMOS(); });
    return static_cast<int>(FCPXMLExporter::findMulticamGroups(withAudio, rules).size());
}

ExportPreview::Forecast ExportController::forecast(const ExportSettings& settings) const {
    work_.notices.assertOnMainThread();
    return ExportPreview::forecast(settledGroups(work_.syncGroups()), settings);
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
    request.matchRules = work_.matchRules();
    return ExportSettings::fromUserDefaults(*work_.environment.settings, request);
}

ExportController::Material ExportController::material(const std::optional<UUID>& groupID,
                                                      ExportSettings settings) const {
    work_.notices.assertOnMainThread();
    if (!groupID) return {work_.syncGroups(), work_.sharedWildTracks(), std::move(settings), false};
    const SyncGroup* group = work_.syncGroups().find(*groupID);
    if (group == nullptr) throw GroupNotFound();
    settings.set(settings::generateMulticam, false);
    return {SyncGroupList{*group}, nullptr, std::move(settings), true};
}

ExportResult ExportController::Material::document(const std::stop_token& stop) const {
    return FCPXMLExporter::exportDocument(isOneClip ? groups : settledGroups(groups),
                                          wildTracks ? *wildTracks : std::vector<WildTrack>(), settings,
                                          stop);
}

platform::Task ExportController::exportInBackground(std::optional<UUID> groupID, ExportSettings settings,
                                                    std::shared_ptr<ExportResult> result) const {
    return work_.running.add(exportOnQueue(material(groupID, std::move(settings)), std::move(result)));
}

platform::Task ExportController::exportOnQueue(Material all, std::shared_ptr<ExportResult> result) const {
    auto making =
        platform::onQueue(*work_.documents, work_.environment.mainThread,
                          [all = std::move(all)](const std::stop_token& stop) { return all.document(stop); });
    *result = co_await making;
}

ExportResult ExportController::exportFCPXML(const ExportSettings& settings) const {
    return material(std::nullopt, settings).document();
}

ExportResult ExportController::exportSingleClip(const UUID& groupID, ExportSettings settings) const {
    return material(groupID, std::move(settings)).document();
}

} // namespace orvane
