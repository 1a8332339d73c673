#include "OrvaneSyncApp/Controllers/OpenWork.h"

#include "OrvaneSyncApp/Controllers/UndoStack.h"
#include "OrvaneSyncApp/Controllers/UndoSteps.h"
#include "OrvaneSyncCore/Models/Settings.h"
#include "OrvaneSyncCore/Models/SyncGroupDecisions.h"

#include <algorithm>
#include <array>
#include <unordered_set>
#include <utility>

namespace orvane {

struct OpenWork::Step {
    struct Setting {
        const platform::SettingDescription* declaration;
        std::optional<platform::JSON> value; ///< absent: the default
    };
    SyncGroupList groups;
    WildTracks wildTracks;
    std::shared_ptr<const ScanOutcome> scan;
    MatchedBy matchedBy;
    std::shared_ptr<const ProjectEntries> projectEntries;
    std::optional<Setting> setting = {}; ///< if the step changed a setting
};

struct OpenWork::Steps : UndoStack<Step> {};

OpenWork::OpenWork(Environment theEnvironment)
    : WorkState(std::move(theEnvironment)), notices(environment.mainThread, syncGroups_),
      documents(platform::SerialQueue::create("documents")), steps_(std::make_unique<Steps>()) {}

OpenWork::~OpenWork() = default;

void OpenWork::notify(ImportField field) {
    using enum ImportField;
    constexpr std::array doubtInputs{videoFolderURL, audioFolderURL, scanScope,
                                     scanResult,     wildTracks,     smartAudio};
    if (field == syncGroups) forgetClipPlaces();
    if (std::ranges::find(doubtInputs, field) != doubtInputs.end()) ++doubtInputsRevision_;
    notices.notify(field);
}

void OpenWork::notifySmartAudio(const std::vector<UUID>& clips) {
    if (!clips.empty()) ++doubtInputsRevision_;
    notices.notifySmartAudio(clips);
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

/// Also sets the work's own days; after that, only a choice of the user changes them.
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

bool OpenWork::edit(UUID groupID, const std::function<void(SyncGroup&)>& change) {
    notices.assertOnMainThread();
    if (!syncGroups_.update(groupID, change)) return false;
    notify(ImportField::syncGroups);
    return true;
}

bool OpenWork::editWithSteps(UUID groupID, const std::function<bool(const SyncGroup&)>& mayHave,
                             const std::function<void(SyncGroup&)>& change) {
    notices.assertOnMainThread();
    steps_->forEach([&](Step& step) {
        const SyncGroup* then = step.groups.find(groupID);
        if (then != nullptr && mayHave(*then)) step.groups.update(groupID, change);
    });
    return edit(groupID, change);
}

void OpenWork::editWhere(const std::function<bool(const SyncGroup&)>& test,
                         const std::function<void(SyncGroup&)>& change) {
    notices.assertOnMainThread();
    std::vector<std::size_t> rows;
    for (std::size_t row = 0; row < syncGroups_.size(); ++row)
        if (test(syncGroups_[row])) rows.push_back(row);
    if (rows.empty()) return;
    // A single change copies the pointers of the clips around it; for many clips it is cheaper to copy all
    // once.
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
        } catch (const CorrectionError&) { // then the clips cannot have been matched with them
            matchedBy_ = MatchedBy::of({.days = corrections.days}, TimecodeFrameRate::fps24);
        }
        clearUndo();
        isEdited_ = !groups.empty(); // the editor may have edited the clips before
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
        else if (mayHoldDecisions() ||
                 (!syncGroups_.empty() && matchedBy.corrections != matchedBy_.corrections))
            addStep(undoSteps::scanAndMatch, present());
        isEdited_ = false;
        isEmptiedByEdit_ = false;
        scan_ = std::move(scan);
        setMatchedBy(std::move(matchedBy));
        setClips(std::move(groups), std::make_shared<const std::vector<WildTrack>>(std::move(wildTracks)));
    });
}

OpenWork::Step OpenWork::present() const {
    return {syncGroups_, wildTracks_, scan_, matchedBy_, projectEntries_};
}

/// Clips that were edited without a difference are other objects with the same contents, so contents are
/// compared.
bool OpenWork::differsFrom(const Step& before) const {
    const auto isSameTrack = [](const WildTrack& a, const WildTrack& b) {
        return a.id == b.id && a.customName == b.customName && a.isApproved == b.isApproved;
    };
    if (before.wildTracks != wildTracks_ &&
        !std::ranges::equal(*before.wildTracks, *wildTracks_, isSameTrack))
        return true;
    if (before.groups.size() != syncGroups_.size()) return true;
    const SyncGroupChanges changes = syncGroups_.changesSince(before.groups);
    if (!changes.inserted.empty() || !changes.moved.empty()) return true;
    return std::ranges::any_of(changes.changed, [&](std::size_t row) {
        return !haveSameContents(before.groups[row], syncGroups_[row]);
    });
}

void OpenWork::withUndo(const UndoStep& step, const std::function<void()>& mutation) {
    if (isWithinStep_) return mutation();
    notices.together([&] {
        Step before = present();
        isWithinStep_ = true;
        {
            const struct AtEnd {
                bool& isWithin;
                ~AtEnd() { isWithin = false; }
            } atEnd{isWithinStep_};
            mutation();
        }
        if (!differsFrom(before)) {
            syncGroups_ = std::move(before.groups);
            wildTracks_ = std::move(before.wildTracks);
            matchedBy_ = std::move(before.matchedBy);
            forgetClipPlaces();
            return;
        }
        noteEdit(before.groups);
        addStep(step, std::move(before));
    });
}

void OpenWork::withinLastStep(const std::function<void()>& mutation) {
    notices.together([&] {
        const SyncGroupList before = syncGroups_;
        mutation();
        noteEdit(before);
    });
}

void OpenWork::noteEdit(const SyncGroupList& before) {
    isEdited_ = true;
    if (!before.empty()) isEmptiedByEdit_ = syncGroups_.empty();
}

void OpenWork::addStep(const UndoStep& step, Step before) {
    if (steps_->add(step, std::move(before), environment.clock->now())) notify(ImportField::undoState);
}

void OpenWork::changeSettingTo(const UndoStep& step, const platform::SettingDescription& setting,
                               platform::JSON value) {
    notices.together([&] {
        Step before = present();
        before.setting = {&setting, environment.settings->value(setting)};
        if (before.setting->value == value) return;
        environment.settings->setByName(setting.key, std::move(value));
        addStep(step, std::move(before));
    });
}

void OpenWork::continueUndo(const UndoStep& step) {
    steps_->continueLastStep(step, environment.clock->now());
}

void OpenWork::endUndoStep() { steps_->endLastStep(); }

void OpenWork::undo() { applyStep(true); }

void OpenWork::redo() { applyStep(false); }

UndoState OpenWork::undoState() const { return steps_->state(); }

std::uint64_t OpenWork::undoMark() const { return steps_->mark(); }

bool OpenWork::isUndoClearedSince(std::uint64_t mark) const { return steps_->isClearedSince(mark); }

void OpenWork::applyStep(bool isUndo) {
    notices.together([&] {
        const Step* ahead = steps_->ahead(isUndo);
        if (ahead == nullptr) return;
        Step target = present();
        if (const auto& setting = ahead->setting)
            target.setting = {setting->declaration, environment.settings->value(*setting->declaration)};
        isUndo ? steps_->undo(target) : steps_->redo(target);
        if (const auto& setting = target.setting)
            environment.settings->setByName(setting->declaration->key,
                                            setting->value.value_or(platform::JSON()));
        const bool wasEmpty = syncGroups_.empty();
        // An empty list counts as the editor's only if the redone step removed the clips. The empty list
        // before the first step is that of work that did not exist yet.
        if (wasEmpty) isEmptinessRedone_ = isEmptiedByEdit_;
        const SyncGroupList clipsBefore = std::exchange(syncGroups_, target.groups);
        isEmptiedByEdit_ = syncGroups_.empty() && !isUndo && isEmptinessRedone_;
        isEdited_ = true;
        WildTracks wildTracks = wildTracksOf(target, clipsBefore);
        const bool isOfOtherScan = std::exchange(scan_, target.scan) != target.scan;
        // Otherwise the next scan would give the result again that was taken back.
        if (target.matchedBy.corrections != matchedBy_.corrections)
            setSourceCorrections(withoutStandardDays(target.matchedBy.corrections));
        matchedBy_ = std::move(target.matchedBy);
        projectEntries_ = std::move(target.projectEntries);
        setClips(std::move(target.groups), std::move(wildTracks));
        if (isOfOtherScan && whenScanTakenBack) whenScanTakenBack(scan_);
        if (whenTakenBack) whenTakenBack(clipsBefore);
        notify(ImportField::undoState);
    });
}

/// The wild tracks for the clips that are shown after the step. A recording that a clip uses is not a wild
/// track. A recording that a clip has released is one again if it was one at the time of the step. Names and
/// approvals do not belong to steps, so those of existing tracks are kept. Only with the clips of another
/// scan, all of its wild tracks are restored.
OpenWork::WildTracks OpenWork::wildTracksOf(const Step& target, const SyncGroupList& clipsBefore) const {
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
    steps_->forEachSince(mark, [&](const Step& step) { clips.push_back(step.groups); });
    return clips;
}

void OpenWork::addStepSince(std::uint64_t mark, const UndoStep& step, std::vector<SyncGroupList> clipsOfSteps,
                            SyncGroupList clipsBefore) {
    notices.assertOnMainThread();
    std::size_t next = 0;
    steps_->forEachSince(mark, [&](Step& since) {
        if (next < clipsOfSteps.size()) since.groups = std::move(clipsOfSteps[next++]);
    });
    Step before = present();
    before.groups = std::move(clipsBefore);
    isEdited_ = true;
    addStep(step, std::move(before));
}

void OpenWork::clearUndo() {
    steps_->removeAllActions();
    notify(ImportField::undoState);
}

} // namespace orvane
