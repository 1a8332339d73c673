#include "OrvaneSyncApp/Controllers/ReportController.h"

#include "OrvaneSyncApp/Controllers/UndoSteps.h"
#include "OrvaneSyncCore/Models/Settings.h"
#include "OrvaneSyncCore/Services/Metadata/ImportedMetadataClearing.h"
#include "Platform/OnQueue.h"
#include "Platform/Text.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace orvane {

namespace {

/// If fewer than this fraction of all clips match, the report may be matched by the wrong column.
constexpr double fewClips = 0.25;

std::function<bool(SyncGroupList&)> inOneGroup(UUID groupID, bool (*clear)(SyncGroup&)) {
    return [=](SyncGroupList& groups) {
        bool hadSome = false;
        groups.update(groupID, [&](SyncGroup& group) { hadSome = clear(group); });
        return hadSome;
    };
}

/// The column by which the fewest rows match no clip, if they are fewer than `rowsLeft`; empty: none.
std::string columnThatNamesMore(const ALEFile& report, const SyncGroupList& groups, std::size_t rowsLeft,
                                const std::stop_token& stop) {
    constexpr std::size_t mostRows = 20'000; // a longer report is not matched by every column
    std::string best;
    if (report.clipCount() > mostRows) return best;
    const std::vector<bool> hasText = report.columnsWithText();
    std::size_t at = 0;
    for (const std::string_view column : report.columns()) {
        if (rowsLeft == 0) break;
        if (!hasText.at(at++) || platform::text::trimmed(column).empty()) continue;
        const ALEMatchStrategy strategy = ALEMatchStrategy::column(std::string(column));
        const std::size_t left = MetadataMerger().rowsWithoutClip(report, groups, strategy, stop).size();
        if (left >= rowsLeft) continue;
        rowsLeft = left;
        best = column;
    }
    return best;
}

/// A report, or why it could not be read.
struct Reading {
    std::shared_ptr<const ALEFile> report;
    std::optional<std::string> problem;
};

Reading read(const FileURL& url, const std::stop_token& stop) {
    const auto failed = [&](const std::exception& error) {
        return Reading{nullptr, url.lastPathComponent() + ": " + error.what()};
    };
    try {
        return {std::make_shared<const ALEFile>(ALEParser().parse(url, stop)), std::nullopt};
    } catch (const ALEParserError& error) {
        return failed(error);
    } catch (const std::exception&) { // a huge file may need more memory than available
        return failed(ALEParserError::unreadable());
    }
}

} // namespace

platform::Task ReportController::loadALE(FileURL url) { return start(std::move(url), UnreadURL::forget); }

platform::Task ReportController::loadALEOfProject(FileURL url) {
    return start(std::move(url), UnreadURL::keep);
}

platform::Task ReportController::start(FileURL url, UnreadURL unread) {
    work_.notices.assertOnMainThread();
    if (loading_) loading_->requestStop(); // an earlier load is not needed any more
    loading_ = work_.running.add(load(work_.weak(this), std::move(url), unread));
    return *loading_;
}

platform::Task ReportController::load(std::weak_ptr<ReportController> weak, FileURL url, UnreadURL unread) {
    auto self = weak.lock();
    auto reading = platform::onQueue(*self->work_.documents, self->work_.environment.mainThread,
                                     [url](const std::stop_token& stop) { return read(url, stop); });
    self.reset();
    Reading result = co_await reading;
    self = weak.lock();
    if (!self) co_return;
    self->forget();
    self->aleFile_ = std::move(result.report);
    if (self->aleFile_ || unread == UnreadURL::keep) self->aleFileURL_ = std::move(url);
    self->aleImportError_ = std::move(result.problem);
    self->work_.notify(ImportField::report);
    self.reset();
    const platform::Task merging = merge(weak);
    co_await merging;
}

void ReportController::forget() {
    aleFileURL_.reset();
    aleFile_.reset();
    aleImportError_.reset();
    aleMatchStatus_.reset();
    rowsWithoutClip_.clear();
    betterColumn_.clear();
}

void ReportController::clear() {
    if (loading_) loading_->requestStop();
    forget();
    work_.notify(ImportField::report);
}

std::optional<ReportController::Applied> ReportController::Merging::apply(SyncGroupList& groups,
                                                                          const std::stop_token& stop) const {
    if (!report || groups.empty()) return std::nullopt;
    const MetadataMerger merger;
    const MetadataMerger::MergeResult result = merger.merge(*report, groups, strategy, stop);
    Applied applied{.status = {},
                    .rowsWithoutClip = merger.rowsWithoutClip(*report, groups, strategy, stop),
                    .betterColumn = {}};
    applied.status = aleMatchStatusMessage(result, strategy, !applied.rowsWithoutClip.empty());
    applied.betterColumn = columnThatNamesMore(*report, groups, applied.rowsWithoutClip.size(), stop);
    return applied;
}

ReportController::Merging ReportController::merging() const {
    return {aleFile_, aleMatchStrategyFromDefaults()};
}

void ReportController::merged(const Merging& merging, std::optional<Applied> applied) {
    if (merging.report != aleFile_) {
        work_.running.add(merge(work_.weak(this))); // another report was loaded in the meantime
    } else if (applied) {
        aleMatchStatus_ = std::move(applied->status);
        rowsWithoutClip_ = std::move(applied->rowsWithoutClip);
        betterColumn_ = std::move(applied->betterColumn);
        work_.notify(ImportField::report);
    }
}

/// If the clips are edited while the rows are looked up, the edit is kept: the report is applied to the
/// edited clips.
platform::Task ReportController::merge(std::weak_ptr<ReportController> weak) {
    for (;;) {
        auto self = weak.lock();
        if (!self || !self->aleFile_ || self->work_.syncGroups().empty()) co_return;
        const SyncGroupList before = self->work_.syncGroups();
        const Merging merging = self->merging();
        auto applying = platform::onQueue(*self->work_.documents, self->work_.environment.mainThread,
                                          [merging, groups = before](const std::stop_token& stop) mutable {
                                              auto applied = merging.apply(groups, stop);
                                              return std::pair(std::move(groups), std::move(applied));
                                          });
        self.reset();
        auto [groups, applied] = co_await applying;
        self = weak.lock();
        if (!self || self->aleFile_ != merging.report) co_return;
        if (!self->work_.syncGroups().changesSince(before).empty()) continue;
        self->work_.notices.together([&, &made = groups, &rows = applied] {
            self->work_.changeClips([&](SyncGroupList& clips) { clips = std::move(made); });
            self->merged(merging, std::move(rows));
        });
        co_return;
    }
}

ALEMatchStrategy ReportController::aleMatchStrategyFromDefaults() const {
    const platform::SettingsStore& store = *work_.environment.settings;
    return store.get(settings::reportMatchField) == ReportMatchField::column
               ? ALEMatchStrategy::column(store.get(settings::reportMatchColumn))
               : ALEMatchStrategy::name();
}

std::string ReportController::aleMatchStatusMessage(const MetadataMerger::MergeResult& result,
                                                    const ALEMatchStrategy& strategy, bool areRowsLeft) {
    std::string message = "Report loaded: " + std::to_string(result.matched) + " of " +
                          std::to_string(result.total) + " clips matched";
    if (!areRowsLeft || result.total < 1 || result.matched >= fewClips * result.total) return message;
    message += " — check the match setting (current: ";
    message += strategy.kind == ALEMatchStrategy::Kind::column ? "column “" + strategy.columnName + "”)"
                                                               : "file name ⇄ ALE column “Name”)";
    return message;
}

/// Clears a copy of the list, which is cheap, so that an undo step is made only if something was cleared.
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
