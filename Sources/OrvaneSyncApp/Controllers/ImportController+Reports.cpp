#include "OrvaneSyncApp/Controllers/ImportController.h"

#include "OrvaneSyncCore/Services/Metadata/ImportedMetadataClearing.h"
#include "OrvaneSyncCore/Services/Persistence/SettingsReader.h"

#include <algorithm>
#include <utility>

namespace orvane {

namespace {

/// Fewer of all clips than this, and the report may be matched by the wrong column.
constexpr double fewClips = 0.25;

} // namespace

void ImportController::loadALE(const FileURL& url) {
    assertOnMainThread();
    aleFileURL_.reset();
    aleFile_.reset();
    aleImportError_.reset();
    aleMatchStatus_.reset();
    try {
        aleFile_ = aleParser_.parse(url);
        aleFileURL_ = url;
    } catch (const ALEParserError& error) {
        aleImportError_ = url.lastPathComponent() + ": " + error.what();
    }
    notify(ImportField::report);
    mergeLoadedReport();
}

void ImportController::mergeLoadedReport() {
    if (!aleFile_ || syncGroups_.empty()) return;
    const ALEMatchStrategy strategy = aleMatchStrategyFromDefaults();
    const auto result = metadataMerger_.merge(*aleFile_, syncGroups_, strategy);
    aleMatchStatus_ = aleMatchStatusMessage(result, strategy);
    notify(ImportField::syncGroups);
    notify(ImportField::report);
}

ALEMatchStrategy ImportController::aleMatchStrategyFromDefaults() const {
    const SettingsReader settings(*settings_);
    return settings.text("ale.matchField") == "column"
               ? ALEMatchStrategy::column(settings.text("ale.matchColumn"))
               : ALEMatchStrategy::name();
}

std::string ImportController::aleMatchStatusMessage(const MetadataMerger::MergeResult& result,
                                                    const ALEMatchStrategy& strategy) {
    std::string message = "ALE geladen: " + std::to_string(result.matched) + " von " +
                          std::to_string(result.total) + " Clips zugeordnet";
    if (result.total < 1 || result.matched >= fewClips * result.total) return message;
    message += " — Match-Einstellung prüfen (aktuell: ";
    message += strategy.kind == ALEMatchStrategy::Kind::column ? "Spalte „" + strategy.columnName + "“)"
                                                               : "Dateiname ⇄ ALE-Spalte „Name“)";
    return message;
}

/// The one place where a clearing changes the clips: the step that takes it back belongs around `clear`.
void ImportController::clearMetadata(std::string_view, const std::function<bool(SyncGroupList&)>& clear) {
    assertOnMainThread();
    if (clear(syncGroups_)) notify(ImportField::syncGroups);
}

void ImportController::clearALEMetadata(const UUID& groupID) {
    clearMetadata("Clear ALE Metadata", [&](SyncGroupList& groups) {
        return groups.update(groupID, ImportedMetadataClearing::clearALEMetadata);
    });
}

void ImportController::clearLockitMetadata(const UUID& groupID) {
    clearMetadata("Clear Lockit Metadata", [&](SyncGroupList& groups) {
        return groups.update(groupID, ImportedMetadataClearing::clearLockitMetadata);
    });
}

void ImportController::clearALEMetadataForAllClips() {
    clearMetadata("Clear ALE Metadata (All)", [](SyncGroupList& groups) {
        return ImportedMetadataClearing::clearALEMetadataForAllClips(groups) > 0;
    });
}

void ImportController::clearLockitMetadataForAllClips() {
    clearMetadata("Clear Lockit Metadata (All)", [](SyncGroupList& groups) {
        return ImportedMetadataClearing::clearLockitMetadataForAllClips(groups) > 0;
    });
}

int ImportController::aleMetadataClipCount() const {
    return static_cast<int>(
        std::ranges::count_if(syncGroups_.begin(), syncGroups_.end(), &SyncGroup::hasALEMetadata));
}

int ImportController::lockitMetadataClipCount() const {
    return static_cast<int>(
        std::ranges::count_if(syncGroups_.begin(), syncGroups_.end(), &SyncGroup::hasLockitMetadata));
}

} // namespace orvane
