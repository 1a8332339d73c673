#include "OrvaneSyncApp/Controllers/ReportController.h"

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

void ReportController::loadALE(const FileURL& url) {
    work_.notices.assertOnMainThread();
    forget();
    try {
        aleFile_ = aleParser_.parse(url);
        aleFileURL_ = url;
    } catch (const ALEParserError& error) {
        aleImportError_ = url.lastPathComponent() + ": " + error.what();
    } catch (const std::exception&) { // a huge file may ask for more memory than there is
        aleImportError_ = url.lastPathComponent() + ": " + ALEParserError::unreadable().what();
    }
    work_.notify(ImportField::report);
    mergeLoadedReport();
}

void ReportController::loadALEOfProject(const FileURL& url) {
    loadALE(url);
    aleFileURL_ = url;
}

void ReportController::forget() {
    aleFileURL_.reset();
    aleFile_.reset();
    aleImportError_.reset();
    aleMatchStatus_.reset();
}

void ReportController::clear() {
    forget();
    work_.notify(ImportField::report);
}

void ReportController::mergeLoadedReport() {
    if (!aleFile_ || work_.syncGroups().empty()) return;
    const ALEMatchStrategy strategy = aleMatchStrategyFromDefaults();
    work_.notices.together([&] {
        work_.changeClips([&](SyncGroupList& groups) {
            const auto result = metadataMerger_.merge(*aleFile_, groups, strategy);
            aleMatchStatus_ = aleMatchStatusMessage(result, strategy);
        });
        work_.notify(ImportField::report);
    });
}

ALEMatchStrategy ReportController::aleMatchStrategyFromDefaults() const {
    const platform::SettingsStore& store = *work_.environment.settings;
    return store.get(settings::reportMatchField) == ReportMatchField::column
               ? ALEMatchStrategy::column(store.get(settings::reportMatchColumn))
               : ALEMatchStrategy::name();
}

std::string ReportController::aleMatchStatusMessage(const MetadataMerger::MergeResult& result,
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
void ReportController::clearMetadata(const UndoStep& step, const std::function<bool(SyncGroupList&)>& clear) {
    work_.notices.assertOnMainThread();
    SyncGroupList cleared = work_.syncGroups();
    if (!clear(cleared)) return;
    work_.withUndo(step,
                   [&] { work_.changeClips([&](SyncGroupList& groups) { groups = std::move(cleared); }); });
}

void ReportController::clearALEMetadata(UUID groupID) {
    clearMetadata(undoSteps::clearALEMetadata,
                  inOneGroup(groupID, ImportedMetadataClearing::clearALEMetadata));
}

void ReportController::clearLockitMetadata(UUID groupID) {
    clearMetadata(undoSteps::clearLockitMetadata,
                  inOneGroup(groupID, ImportedMetadataClearing::clearLockitMetadata));
}

void ReportController::clearALEMetadataForAllClips() {
    clearMetadata(undoSteps::clearALEMetadataForAllClips, [](SyncGroupList& groups) {
        return ImportedMetadataClearing::clearALEMetadataForAllClips(groups) > 0;
    });
}

void ReportController::clearLockitMetadataForAllClips() {
    clearMetadata(undoSteps::clearLockitMetadataForAllClips, [](SyncGroupList& groups) {
        return ImportedMetadataClearing::clearLockitMetadataForAllClips(groups) > 0;
    });
}

int ReportController::aleMetadataClipCount() const {
    return static_cast<int>(std::ranges::count_if(work_.syncGroups().begin(), work_.syncGroups().end(),
                                                  &SyncGroup::hasALEMetadata));
}

int ReportController::lockitMetadataClipCount() const {
    return static_cast<int>(std::ranges::count_if(work_.syncGroups().begin(), work_.syncGroups().end(),
                                                  &SyncGroup::hasLockitMetadata));
}

} // namespace orvane
