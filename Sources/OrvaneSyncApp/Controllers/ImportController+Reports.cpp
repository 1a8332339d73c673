#include "OrvaneSyncApp/Controllers/ImportController.h"

#include "OrvaneSyncApp/Controllers/UndoSteps.h"
#include "OrvaneSyncCore/Models/Settings.h"
#include "OrvaneSyncCore/Services/Metadata/ImportedMetadataClearing.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace orvane {

namespace {

/// Fewer of all clips than this, and the report may be matched by the wrong column.
constexpr double fewClips = 0.25;

std::function<bool(SyncGroupList&)> inOneGroup(UUID groupID, bool (*clear)(SyncGroup&)) {
    return [=](SyncGroupList& groups) {
        bool hadSome = false;
        groups.update(groupID, [&](SyncGroup& group) { hadSome = clear(group); });
        return hadSome;
    };
}

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
    } catch (const std::exception&) { // a huge file may ask for more memory than there is
        aleImportError_ = url.lastPathComponent() + ": " + ALEParserError::unreadable().what();
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
    return settings_->get(settings::reportMatchField) == ReportMatchField::column
               ? ALEMatchStrategy::column(settings_->get(settings::reportMatchColumn))
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

/// The list is cheap to copy, so that the step is opened only where there is something to take back.
void ImportController::clearMetadata(const UndoStep& step, const std::function<bool(SyncGroupList&)>& clear) {
    assertOnMainThread();
    SyncGroupList cleared = syncGroups_;
    if (!clear(cleared)) return;
    withUndo(step, [&] { set(syncGroups_, std::move(cleared), ImportField::syncGroups); });
}

void ImportController::clearALEMetadata(UUID groupID) {
    clearMetadata(undoSteps::clearALEMetadata,
                  inOneGroup(groupID, ImportedMetadataClearing::clearALEMetadata));
}

void ImportController::clearLockitMetadata(UUID groupID) {
    clearMetadata(undoSteps::clearLockitMetadata,
                  inOneGroup(groupID, ImportedMetadataClearing::clearLockitMetadata));
}

void ImportController::clearALEMetadataForAllClips() {
    clearMetadata(undoSteps::clearALEMetadataForAllClips, [](SyncGroupList& groups) {
        return ImportedMetadataClearing::clearALEMetadataForAllClips(groups) > 0;
    });
}

void ImportController::clearLockitMetadataForAllClips() {
    clearMetadata(undoSteps::clearLockitMetadataForAllClips, [](SyncGroupList& groups) {
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
