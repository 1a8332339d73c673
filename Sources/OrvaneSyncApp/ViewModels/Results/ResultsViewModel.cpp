#include "OrvaneSyncApp/ViewModels/Results/ResultsViewModel.h"

#include "OrvaneSyncApp/ViewModels/Results/ClipTexts.h"
#include "OrvaneSyncCore/Models/SyncGroupDecisions.h"
#include "OrvaneSyncCore/Utilities/CountText.h"
#include "OrvaneSyncCore/Utilities/EnumTable.h"
#include "Platform/Text.h"

#include <algorithm>
#include <array>
#include <utility>

namespace orvane {

namespace {

using Certainty = ClipCertainty;
using Column = ResultsViewModel::Column;

/// Such a column is sorted by its number, not by its text.
bool isNumber(Column column) {
    return column == Column::length || column == Column::begins || column >= Column::loudness;
}

/// The editor has decided that the clip stays without sound, so that it needs no decision.
bool isLockedWithoutSound(const SyncGroup& group) {
    return group.isLocked && group.matchStatus.kind == MatchStatus::Kind::unmatched;
}

std::string loudnessText(const SyncGroup& group) {
    return group.measuredLUFS ? formatted("%.1f LUFS", *group.measuredLUFS) : "-";
}

} // namespace

std::string_view ResultsViewModel::title(Column column) {
    static constexpr std::array<std::string_view, columnCount + 1> titles{
        "Clip", "Camera file", "Starts", "Length", "Match", "Sound", "Sound begins", "Loudness", "Marks"};
    return orvane::rowOf(titles, column);
}

ResultsViewModel::ResultsViewModel(ImportController& controller) : controller_(controller) {
    observation_ = controller.onChange([this](const ImportChange& change) { follow(change); });
    layOut();
}

platform::Subscription ResultsViewModel::onChange(std::function<void(const Change&)> callback) {
    return listeners_.add(std::move(callback));
}

void ResultsViewModel::setFilter(Filter filter) {
    if (filter_ == filter) return;
    filter_ = filter;
    layOut();
}

void ResultsViewModel::setSearch(const std::string& text) {
    search_ = SearchWords(text);
    layOut();
}

void ResultsViewModel::setSorting(std::optional<Column> column, bool isAscending) {
    sortColumn_ = column;
    isAscending_ = isAscending;
    layOut();
}

void ResultsViewModel::toggleFolded(std::size_t row) {
    const std::string id = rows_.at(row).bundle->id;
    if (folded_.erase(id) == 0) folded_.insert(id);
    layOut();
}

ResultsViewModel::Counts ResultsViewModel::counts() const {
    const OpenWork& work = controller_.work();
    const SyncDoubts& doubts = controller_.doubts();
    if (doubtsRevision() != countedRevision_) countedAs_.reset();
    countedRevision_ = doubtsRevision();
    const auto countedAs = [&](const SyncGroup& group) {
        return CountedAs{certaintyOf(group, doubts) == Certainty::doubtful, isLockedWithoutSound(group)};
    };
    const CountedAs& all = countedAs_.of(
        work.syncGroups(),
        [&](const SyncGroup& before, const SyncGroup& now) { return countedAs(before) == countedAs(now); },
        [&] {
            CountedAs sum;
            for (const SyncGroup& group : work.syncGroups()) {
                const CountedAs one = countedAs(group);
                sum.doubtful += one.doubtful;
                sum.decided += one.decided;
            }
            return sum;
        });
    return {work.syncGroups().size(), static_cast<std::size_t>(work.matchedCount()),
            static_cast<std::size_t>(work.unmatchedCount()) - all.decided, all.doubtful};
}

std::optional<std::size_t> ResultsViewModel::rowOf(const UUID& groupID) const {
    const auto found = rowByGroup_.find(groupID);
    return found == rowByGroup_.end() ? std::nullopt : std::optional(found->second);
}

ResultsViewModel::Row ResultsViewModel::row(std::size_t index) const {
    const Place& place = rows_.at(index);
    const SyncGroup& group = *place.clip;
    const FileNames& files = controller_.work().fileNames();
    const Take take = takeOf(group, assumedChannels);
    Row row;
    const DisplayNames& names = controller_.work().displayNames();
    row.texts = {names.at(group.id),      files.of(group.video),  startText(group.video),
                 lengthText(group.video), matchText(group, take), soundText(group, take, files),
                 beginsText(group, take), loudnessText(group)};
    const auto& doubts = controller_.doubts().byGroup;
    row.certainty = certaintyOf(group, controller_.doubts());
    if (const auto found = doubts.find(group.id); found != doubts.end())
        for (const SyncDoubt& doubt : found->second) {
            const std::string cure = cureInWords(doubt.cure).text;
            if (row.reason.empty()) row.reason = messageInRow(doubt);
            row.doubts += (row.doubts.empty() ? "" : "\n") + messageInWords(doubt) +
                          (cure.empty() ? "" : "\n→ " + cure);
        }
    if (const std::string& why = controller_.derivedDoubts().whyUnmatched(group.id);
        !why.empty() && (row.doubts.empty() || group.isMOS())) {
        if (row.reason.empty()) row.reason = why;
        row.doubts += (row.doubts.empty() ? "" : "\n") + why;
    }
    row.isApproved = group.isApproved;
    row.isLocked = group.isLocked;
    if (isMovedSinceLock(group)) {
        row.isMovedSinceLock = true;
        const double rate = controller_.timeline().timelineFrameRate(group);
        row.doubts = movedSinceLockText(group, rate) + (row.doubts.empty() ? "" : "\n" + row.doubts);
        row.reason = movedText(group, rate);
    }
    row.isExcluded = group.isExcludedFromExport;
    row.isAnalysed = controller_.smartAudio().state().results.heard(group.id) != nullptr;
    row.isBelowAnother = place.isBelowAnother;
    row.foldable = place.foldable;
    row.isFolded = folded_.contains(place.bundle->id);
    return row;
}

ClipCertainty ResultsViewModel::certaintyOf(const SyncGroup& group, const SyncDoubts& doubts) {
    const Certainty certainty = orvane::certaintyOf(group, doubts.byGroup.contains(group.id));
    return isMovedSinceLock(group) && certainty != Certainty::missing ? Certainty::doubtful : certainty;
}

std::vector<ResultsViewModel::Doubt> ResultsViewModel::doubts() const {
    std::vector<Doubt> result;
    for (CardDoubt& one : controller_.doubts().summary(controller_.work().syncGroups())) {
        Cure cure =
            cureInWords(one.doubt.cure, clipsForOffset(controller_.work().syncGroups(), one.groupIDs));
        offerSuggestions(cure, controller_, one.groupIDs);
        result.push_back({messageInWords(one.doubt), std::move(cure), std::move(one.groupIDs)});
    }
    return result;
}

void ResultsViewModel::follow(const ImportChange& change) {
    if (change.field == ImportField::smartAudio && change.smartAudioClips) {
        Change analysed;
        for (const UUID& clip : *change.smartAudioClips)
            if (const auto row = rowByGroup_.find(clip); row != rowByGroup_.end())
                analysed.rows.push_back(row->second);
        if (!analysed.rows.empty()) listeners_.notify(analysed);
        return;
    }
    if (change.field != ImportField::syncGroups) {
        // Names depend on the report. Doubts are derived some time after a change.
        if (change.field == ImportField::report || change.field == ImportField::smartAudio ||
            change.field == ImportField::doubts) {
            if (filter_ == Filter::doubtful && change.field == ImportField::doubts) layOut();
            repaintAll();
        }
        return;
    }
    const SyncGroupChanges changes = change.clipChanges();
    const bool areSame = changes.removed.empty() && changes.inserted.empty() && changes.moved.empty();
    // The name of a clip also depends on other clips, such as those of the other cameras.
    const bool areNamesKept =
        areSame && std::ranges::all_of(changes.changed, [&](std::size_t position) {
            return haveSameNameInputs(change.clips[position], change.clipsBefore[position]);
        });
    if (!areSame || (usesNames() && names_ != controller_.work().displayNamesIfMade()))
        return layOut(areNamesKept);
    switch (order_.follow(change.clips, changes.changed)) {
    case BundleOrder::Followed::unknown:
        return layOut(areNamesKept);
    case BundleOrder::Followed::moved:
        return takeRows(places(), areNamesKept);
    case BundleOrder::Followed::samePlaces:
        break;
    }
    Change changed;
    for (const std::size_t position : changes.changed) {
        const auto& clip = change.clips.element(position);
        const auto row = rowByGroup_.find(clip->id);
        if (row == rowByGroup_.end()) continue;
        const auto isLoudnessKnown = [](const SyncGroup& one) { return one.measuredLUFS ? 1 : 0; };
        loudnessCount_ += isLoudnessKnown(*clip) - isLoudnessKnown(*rows_[row->second].clip);
        rows_[row->second].clip = clip;
        changed.rows.push_back(row->second);
    }
    if (!areNamesKept) return repaintAll();
    if (!changes.changed.empty()) listeners_.notify(changed);
}

void ResultsViewModel::repaintAll() {
    Change all;
    for (std::size_t i = 0; i < rows_.size(); ++i) all.rows.push_back(i);
    listeners_.notify(all);
}

bool ResultsViewModel::isListed(const SyncGroup& group) const {
    switch (filter_) {
    case Filter::matched:
        if (!group.matchStatus.isSettled()) return false;
        break;
    case Filter::issues:
        if (group.matchStatus.isSettled() || isLockedWithoutSound(group)) return false;
        break;
    case Filter::doubtful:
        if (certaintyOf(group, controller_.doubts()) != Certainty::doubtful) return false;
        break;
    case Filter::all:
        break;
    }
    return search_.isEmpty() || isFound(group);
}

void ResultsViewModel::layOut(bool areNamesKept) {
    const OpenWork& work = controller_.work();
    names_.reset();
    if (usesNames()) {
        work.displayNames();
        names_ = work.displayNamesIfMade();
    }
    BundleOrder::Rules rules{[this](const SyncGroup& group) { return isListed(group); }, {}, isAscending_};
    if (sortColumn_)
        rules.keyOf = [this, starts = calendar::DayStarts()](const BundleOrder::Clips& bundle) mutable {
            return sortKey(bundle, starts);
        };
    order_.layOut(work.syncGroups(), std::move(rules));
    takeRows(places(), areNamesKept);
}

std::vector<ResultsViewModel::Place> ResultsViewModel::places() const {
    std::vector<Place> rows;
    rows.reserve(order_.listed().size());
    for (const auto& bundle : order_.listed()) {
        const std::size_t others = bundle->clips.size() - 1;
        const bool isFolded = others > 0 && folded_.contains(bundle->id);
        for (std::size_t i = 0; i < (isFolded ? 1 : bundle->clips.size()); ++i)
            rows.push_back({bundle->clips[i], i > 0, i == 0 ? others : 0, bundle});
    }
    return rows;
}

std::vector<UUID> ResultsViewModel::order() const {
    std::vector<UUID> order;
    for (const auto& bundle : order_.listed())
        for (const auto& clip : bundle->clips) order.push_back(clip->id);
    return order;
}

void ResultsViewModel::takeRows(std::vector<Place> rows, bool areNamesKept) {
    Change change{.isLayoutChanged =
                      !std::ranges::equal(rows, rows_, [](const Place& one, const Place& before) {
                          return one.isSamePlace(before);
                      })};
    if (!change.isLayoutChanged)
        for (std::size_t i = 0; i < rows.size(); ++i)
            if (!areNamesKept || rows[i].clip != rows_[i].clip) change.rows.push_back(i);
    change.areAllNew = std::ranges::none_of(
        rows, [this](const Place& place) { return rowByGroup_.contains(place.clip->id); });
    rows_ = std::move(rows);
    loudnessCount_ =
        std::ranges::count_if(rows_, [](const Place& place) { return place.clip->measuredLUFS.has_value(); });
    if (change.isLayoutChanged) {
        for (std::size_t i = 0; i < rows_.size(); ++i) rowByGroup_[rows_[i].clip->id] = i;
        std::erase_if(rowByGroup_, [this](const auto& one) {
            return one.second >= rows_.size() || rows_[one.second].clip->id != one.first;
        });
    }
    listeners_.notify(change);
}

bool ResultsViewModel::isFound(const SyncGroup& group) const {
    return search_.areIn(searchedText(group, names_->at(group.id), controller_.work()));
}

/// A bundle is sorted by its first clip, by marks by all of them.
BundleOrder::Key ResultsViewModel::sortKey(const BundleOrder::Clips& bundle,
                                           calendar::DayStarts& starts) const {
    if (isNumber(*sortColumn_)) return {sortKeyNumber(bundle)};
    const SyncGroup& first = *bundle.front();
    const auto day = *sortColumn_ == Column::starts ? first.video.shootDay(starts) : std::nullopt;
    return {day ? static_cast<double>(day->time_since_epoch().count()) : 0, // without a day: first
            platform::text::localizedStandardSortKey(sortKeyText(first))};
}

std::string ResultsViewModel::sortKeyText(const SyncGroup& group) const {
    switch (*sortColumn_) {
    case Column::name:
        return names_->at(group.id);
    case Column::starts:
        return startText(group.video);
    case Column::match:
        return group.matchStatus.label();
    case Column::sound:
        return group.isMOS() ? "" : group.audioMatches.front().audio->filename;
    default:
        return group.video.filename;
    }
}

double ResultsViewModel::sortKeyNumber(const BundleOrder::Clips& bundle) const {
    const SyncGroup& group = *bundle.front();
    const auto shareOf = [&](bool SyncGroup::*flag) {
        const auto count = std::ranges::count_if(bundle, [=](const auto& clip) { return (*clip).*flag; });
        return static_cast<double>(count) / static_cast<double>(bundle.size());
    };
    switch (*sortColumn_) {
    case Column::marks:
        return 2 * shareOf(&SyncGroup::isLocked) + shareOf(&SyncGroup::isApproved); // a lock counts more
    case Column::length:
        return group.video.durationSeconds.value_or(0);
    case Column::loudness:
        return group.measuredLUFS.value_or(-1000);
    default:
        return group.isMOS() ? 0
                             : group.audioMatches.front().syncOffsetSeconds + group.manualAudioOffsetSeconds;
    }
}

} // namespace orvane
