#include "OrvaneSyncApp/Controllers/OpenWork.h"

#include "OrvaneSyncApp/Controllers/UndoSteps.h"
#include "OrvaneSyncCore/Models/Settings.h"
#include "OrvaneSyncCore/Models/SyncGroupDecisions.h"
#include "OrvaneSyncCore/Services/Naming/ClipNames.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

namespace orvane {

namespace {

bool countAlike(const SyncGroup& before, const SyncGroup& now) {
    return before.matchStatus.isSettled() == now.matchStatus.isSettled() && before.isMOS() == now.isMOS();
}

bool haveSameFiles(const SyncGroup& before, const SyncGroup& now) {
    return before.video.url == now.video.url &&
           std::ranges::equal(
               before.audioMatches, now.audioMatches, {},
               [](const AudioMatch& match) -> const FileURL& { return match.audio->url; },
               [](const AudioMatch& match) -> const FileURL& { return match.audio->url; });
}

SourceCorrections withoutStandardDays(SourceCorrections corrections) {
    if (corrections.days == MatchingDays::automatic) corrections.days.reset();
    return corrections;
}

} // namespace

MatchedBy MatchedBy::of(const SourceCorrections& withDays, TimecodeFrameRate rateOfClips) {
    return {withDays, MatchRules::of(withDays.days.value_or(MatchingDays::automatic), withDays, rateOfClips)};
}

OpenWork::OpenWork(Environment theEnvironment)
    : environment(std::move(theEnvironment)), notices(environment.mainThread, syncGroups_),
      documents(platform::SerialQueue::create("documents")) {}

void OpenWork::notify(ImportField field) {
    if (field == ImportField::syncGroups)
        clipsByAudio_.reset();
    else if (field != ImportField::progress && field != ImportField::undoState &&
             field != ImportField::doubts)
        ++revisionBesidesClips_;
    notices.notify(field);
}

void OpenWork::setVideoFolderURL(std::optional<FileURL> folder) {
    videoFolderURL_ = std::move(folder);
    notify(ImportField::videoFolderURL);
}

void OpenWork::setAudioFolderURL(std::optional<FileURL> folder) {
    audioFolderURL_ = std::move(folder);
    notify(ImportField::audioFolderURL);
}

void OpenWork::setSourceCorrections(SourceCorrections corrections) {
    daysOfSetting_ = environment.settings->get(settings::matchingDays);
    if (corrections == sourceCorrections_) return;
    sourceCorrections_ = std::move(corrections);
    notify(ImportField::sourceCorrections);
}

SourceCorrections OpenWork::nextCorrections() const {
    notices.assertOnMainThread();
    SourceCorrections corrections = sourceCorrections_;
    const MatchingDays setting = environment.settings->get(settings::matchingDays);
    if (!corrections.days || setting != daysOfSetting_) corrections.days = setting;
    return corrections;
}

SourceCorrections OpenWork::keptCorrections() const { return withoutStandardDays(nextCorrections()); }

std::optional<SourceCorrections> OpenWork::keptMatchedBy() const {
    auto kept = withoutStandardDays(matchedBy_.corrections);
    return kept != keptCorrections() ? std::optional(std::move(kept)) : std::nullopt;
}

/// The days are the work's own from here on: other ones have to be chosen.
void OpenWork::setMatchedBy(MatchedBy matchedBy) {
    matchedBy_ = std::move(matchedBy);
    SourceCorrections corrections = sourceCorrections_;
    corrections.days = matchedBy_.corrections.days;
    setSourceCorrections(withoutStandardDays(std::move(corrections)));
}

void OpenWork::setScanScope(ScanScope scope) {
    scanScope_ = std::move(scope);
    notify(ImportField::scanScope);
}

std::vector<FileURL> OpenWork::folders() const {
    std::vector<FileURL> all;
    const auto add = [&](const FileURL& folder) {
        if (std::ranges::find(all, folder) == all.end()) all.push_back(folder);
    };
    if (videoFolderURL_) add(*videoFolderURL_);
    if (audioFolderURL_) add(*audioFolderURL_);
    std::ranges::for_each(scanScope_.moreFolders, add);
    return all;
}

int OpenWork::unmatchedCount() const { return static_cast<int>(syncGroups_.size()) - matchedCount(); }

OpenWork::Counts OpenWork::Counts::of(const SyncGroupList& groups) {
    Counts counts;
    for (const SyncGroup& group : groups)
        if (group.matchStatus.isSettled()) ++(group.isMOS() ? counts.withoutSound : counts.withSound);
    return counts;
}

const OpenWork::Counts& OpenWork::counts() const {
    notices.assertOnMainThread();
    return counts_.of(syncGroups_, countAlike, [this] { return Counts::of(syncGroups_); });
}

std::shared_ptr<const DisplayNames> OpenWork::displayNamesIfMade() const {
    notices.assertOnMainThread();
    auto rules = NamingRules::of(*environment.settings);
    if (namedBy_ != rules) displayNames_.reset();
    namedBy_ = std::move(rules);
    return displayNames_.ifMade(syncGroups_, ClipNames::areNamedAlike);
}

const DisplayNames& OpenWork::displayNames() const {
    displayNamesIfMade();
    return displayNames_.of(syncGroups_, ClipNames::areNamedAlike, [this] {
        return WorkFiles{syncGroups_, wildTracks_, nullptr}.displayNames(*namedBy_);
    });
}

const FileNames& OpenWork::fileNames() const {
    notices.assertOnMainThread();
    if (std::exchange(wildTracksInNames_, wildTracks_) != wildTracks_) fileNames_.reset();
    return fileNames_.of(syncGroups_, haveSameFiles, [this] {
        return WorkFiles{syncGroups_, wildTracks_, nullptr}.fileNames();
    });
}

const std::vector<std::size_t>& OpenWork::clipsUsing(const UUID& audioID) const {
    notices.assertOnMainThread();
    if (!clipsByAudio_) {
        clipsByAudio_.emplace();
        for (std::size_t position = 0; position < syncGroups_.size(); ++position)
            for (const AudioMatch& match : syncGroups_[position].audioMatches) {
                auto& clips = (*clipsByAudio_)[match.audio->id];
                if (clips.empty() || clips.back() != position) clips.push_back(position);
            }
    }
    static const std::vector<std::size_t> none;
    const auto found = clipsByAudio_->find(audioID);
    return found == clipsByAudio_->end() ? none : found->second;
}

const SyncGroup* OpenWork::unlockedGroup(const UUID& groupID) const {
    notices.assertOnMainThread();
    const SyncGroup* group = syncGroups_.find(groupID);
    return group != nullptr && !group->isLocked ? group : nullptr;
}

bool OpenWork::edit(UUID groupID, const std::function<void(SyncGroup&)>& change) {
    notices.assertOnMainThread();
    if (!syncGroups_.update(groupID, change)) return false;
    notify(ImportField::syncGroups);
    return true;
}

void OpenWork::editWhere(const std::function<bool(const SyncGroup&)>& test,
                         const std::function<void(SyncGroup&)>& change) {
    notices.assertOnMainThread();
    std::vector<std::size_t> rows;
    for (std::size_t row = 0; row < syncGroups_.size(); ++row)
        if (test(syncGroups_[row])) rows.push_back(row);
    if (rows.empty()) return;
    // Each change by itself copies the pointers of the clips around it: of many clips, all are copied once.
    constexpr std::size_t most = 64;
    if (rows.size() <= most) {
        syncGroups_.updateWhere(test, change);
    } else {
        SyncGroupList edited;
        auto next = rows.begin();
        for (std::size_t row = 0; row < syncGroups_.size(); ++row) {
            if (next == rows.end() || *next != row) {
                edited.append(syncGroups_.element(row));
                continue;
            }
            ++next;
            auto own = std::make_shared<SyncGroup>(syncGroups_[row]);
            change(*own);
            edited.append(std::move(own));
        }
        edited.makeIndex();
        syncGroups_ = std::move(edited);
    }
    notify(ImportField::syncGroups);
}

void OpenWork::changeClips(const std::function<void(SyncGroupList&)>& change) {
    notices.assertOnMainThread();
    change(syncGroups_);
    notify(ImportField::syncGroups);
}

void OpenWork::changeWildTracks(const std::function<void(std::vector<WildTrack>&)>& change) {
    notices.assertOnMainThread();
    auto changed = std::make_shared<std::vector<WildTrack>>(*wildTracks_);
    change(*changed);
    wildTracks_ = std::move(changed);
    notify(ImportField::wildTracks);
}

void OpenWork::setClips(SyncGroupList groups, WildTracks wildTracks) {
    notices.assertOnMainThread();
    syncGroups_ = std::move(groups);
    syncGroups_.makeIndex();
    notify(ImportField::syncGroups);
    if (std::exchange(wildTracks_, std::move(wildTracks)) != wildTracks_) notify(ImportField::wildTracks);
}

void OpenWork::openOtherWork(SyncGroupList groups, std::vector<WildTrack> wildTracks,
                             const SourceCorrections& matchedBy) {
    notices.together([&] {
        SourceCorrections corrections = matchedBy;
        if (!corrections.days) corrections.days = environment.settings->get(settings::matchingDays);
        try {
            matchedBy_ = MatchedBy::of(corrections, rateOfMostClips(groups));
        } catch (const CorrectionError&) { // nothing can have been matched by them
            matchedBy_ = MatchedBy::of({.days = corrections.days}, TimecodeFrameRate::fps24);
        }
        clearUndo();
        isEdited_ = !groups.empty(); // by whom is not known
        isEmptiedByEdit_ = false;
        scan_.reset();
        setClips(std::move(groups), std::make_shared<const std::vector<WildTrack>>(std::move(wildTracks)));
    });
}

bool OpenWork::mayHoldDecisions() const {
    return isEdited_ || std::any_of(syncGroups_.begin(), syncGroups_.end(), holdsDecisions);
}

void OpenWork::adoptScan(SyncGroupList groups, std::vector<WildTrack> wildTracks, MatchedBy matchedBy,
                         std::shared_ptr<const ScanOutcome> scan, ScanOf of) {
    carryNamesAndApprovals(wildTracks, *wildTracks_);
    notices.together([&] {
        if (of == ScanOf::otherWork)
            clearUndo();
        else if (mayHoldDecisions() &&
                 undoStack_.add(undoSteps::scanAndMatch, state(), environment.clock->now()))
            notify(ImportField::undoState);
        isEdited_ = false;
        isEmptiedByEdit_ = false;
        scan_ = std::move(scan);
        setMatchedBy(std::move(matchedBy));
        setClips(std::move(groups), std::make_shared<const std::vector<WildTrack>>(std::move(wildTracks)));
    });
}

/// Clips that were edited without a difference are other elements that say the same.
bool OpenWork::differsFrom(const State& before) const {
    const auto isSameTrack = [](const WildTrack& a, const WildTrack& b) {
        return a.id == b.id && a.customName == b.customName && a.isApproved == b.isApproved;
    };
    if (before.wildTracks != wildTracks_ &&
        !std::ranges::equal(*before.wildTracks, *wildTracks_, isSameTrack))
        return true;
    if (before.groups.size() != syncGroups_.size()) return true;
    const SyncGroupChanges changes = syncGroups_.changesSince(before.groups);
    if (!changes.came.empty() || !changes.moved.empty()) return true;
    return std::ranges::any_of(
        changes.changed, [&](std::size_t row) { return !saySame(before.groups[row], syncGroups_[row]); });
}

void OpenWork::withUndo(const UndoStep& step, const std::function<void()>& mutation) {
    notices.together([&] {
        State before = state();
        mutation();
        if (!differsFrom(before)) {
            syncGroups_ = std::move(before.groups);
            wildTracks_ = std::move(before.wildTracks);
            matchedBy_ = std::move(before.matchedBy);
            clipsByAudio_.reset();
            return;
        }
        isEdited_ = true;
        if (!before.groups.empty()) isEmptiedByEdit_ = syncGroups_.empty();
        if (undoStack_.add(step, std::move(before), environment.clock->now())) notify(ImportField::undoState);
    });
}

void OpenWork::travel(UndoTravel direction) {
    notices.together([&] {
        State target = state();
        if (!(undoStack_.*direction)(target)) return;
        const bool wasEmpty = syncGroups_.empty();
        // A list without clips is the editor's where the step forward took them out; before the first step it
        // is that of work that was not there yet.
        if (wasEmpty) isEmptinessRedone_ = isEmptiedByEdit_;
        const SyncGroupList clipsBefore = std::exchange(syncGroups_, target.groups);
        isEmptiedByEdit_ = syncGroups_.empty() && direction == &UndoStack<State>::redo && isEmptinessRedone_;
        isEdited_ = true;
        WildTracks wildTracks = wildTracksOf(target, clipsBefore);
        const bool isOfOtherScan = std::exchange(scan_, target.scan) != target.scan;
        matchedBy_ = std::move(target.matchedBy);
        projectEntries_ = std::move(target.projectEntries);
        setClips(std::move(target.groups), std::move(wildTracks));
        if (isOfOtherScan && whenScanTakenBack) whenScanTakenBack(scan_);
        if (whenTakenBack) whenTakenBack();
        notify(ImportField::undoState);
    });
}

/// The wild tracks as they go with the clips that now stand: what a clip uses is none, and what a clip has
/// given up is one again if it was one at that time. Names and approvals are no part of a step, so those of
/// tracks that are there stay. Only the clips of another scan bring all of theirs.
OpenWork::WildTracks OpenWork::wildTracksOf(const State& target, const SyncGroupList& clipsBefore) const {
    const bool isOfOtherScan = target.scan != scan_;
    std::unordered_set<UUID> ours, theirs, wanted;
    for (const WildTrack& track : *wildTracks_) ours.insert(track.id);
    for (const WildTrack& track : *target.wildTracks) theirs.insert(track.id);
    wanted = ours;
    wanted.insert(theirs.begin(), theirs.end());
    const auto usedBy = [&](const SyncGroupList& groups) {
        std::unordered_set<UUID> used;
        for (const SyncGroup& group : groups)
            for (const AudioMatch& match : group.audioMatches)
                if (wanted.contains(match.audio->id)) used.insert(match.audio->id);
        return used;
    };
    const auto usedBefore = usedBy(clipsBefore), used = usedBy(syncGroups_);
    std::vector<WildTrack> result;
    for (const WildTrack& track : *target.wildTracks)
        if (!used.contains(track.id) &&
            (isOfOtherScan || ours.contains(track.id) || usedBefore.contains(track.id)))
            result.push_back(track);
    if (!isOfOtherScan)
        for (const WildTrack& track : *wildTracks_)
            if (!used.contains(track.id) && !theirs.contains(track.id)) result.push_back(track);
    carryNamesAndApprovals(result, *wildTracks_);
    if (std::ranges::equal(result, *wildTracks_, {}, &WildTrack::id, &WildTrack::id)) return wildTracks_;
    return std::make_shared<const std::vector<WildTrack>>(std::move(result));
}

std::vector<SyncGroupList> OpenWork::clipsOfStepsSince(std::uint64_t mark) {
    std::vector<SyncGroupList> clips;
    undoStack_.forEachSince(mark, [&](const State& state) { clips.push_back(state.groups); });
    return clips;
}

void OpenWork::addStepSince(std::uint64_t mark, const UndoStep& step, std::vector<SyncGroupList> clipsOfSteps,
                            SyncGroupList clipsBefore) {
    notices.assertOnMainThread();
    std::size_t next = 0;
    undoStack_.forEachSince(mark, [&](State& state) {
        if (next < clipsOfSteps.size()) state.groups = std::move(clipsOfSteps[next++]);
    });
    State before = state();
    before.groups = std::move(clipsBefore);
    isEdited_ = true;
    if (undoStack_.add(step, std::move(before), environment.clock->now())) notify(ImportField::undoState);
}

void OpenWork::clearUndo() {
    undoStack_.removeAllActions();
    notify(ImportField::undoState);
}

} // namespace orvane
