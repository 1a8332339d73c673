#include "OrvaneSyncApp/Controllers/SmartAudioController.h"

#include "OrvaneSyncCore/Models/Settings.h"

#include <algorithm>
#include <map>
#include <string_view>
#include <unordered_set>
#include <utility>

namespace orvane {

namespace {

using Loudness = SmartAudioRuns::Loudness;

platform::Task allOf(std::vector<platform::Task> tasks) {
    for (const platform::Task& task : tasks) co_await task;
}

} // namespace

SmartAudioController::SmartAudioController(OpenWork& work)
    : work_(work), caches_(work), rendered_(work, caches_), runs_(work, caches_, rendered_) {}

SmartAudioTerms SmartAudioController::terms(SmartAudioMode mode) const {
    const platform::SettingsStore& settings = *work_.environment.settings;
    SmartAudioTerms terms;
    terms.mode = mode;
    if (mode == SmartAudioMode::custom) terms.config = SmartAudioConfig::fromUserDefaults(settings);
    terms.blockSettings = SmartAudioBlockSettings::fromUserDefaults(settings);
    return terms;
}

/// A request for one clip always analyses.
SmartAudioTerms SmartAudioController::termsForOneClip() const {
    const auto stored = work_.environment.settings->find(settings::smartAudioMode);
    return terms(stored.value_or(SmartAudioMode::off) == SmartAudioMode::off ? SmartAudioMode::standard
                                                                             : *stored);
}

platform::Task SmartAudioController::runSmartAudioAnalysis(SmartAudioMode mode,
                                                           bool forceOverwriteManualTracks) {
    work_.notices.assertOnMainThread();
    if (mode == SmartAudioMode::off) {
        caches_.state.results.clear();
        caches_.routed.clear();
        caches_.state.passedOver.clear();
        work_.notify(ImportField::smartAudio);
        return platform::Task::ended();
    }
    return runs_.analyse(settledClipsWithSound(), terms(mode), forceOverwriteManualTracks, Loudness::leave);
}

platform::Task SmartAudioController::measureLoudness() {
    work_.notices.assertOnMainThread();
    return runs_.measureLoudness(settledClipsWithSound());
}

SyncGroupList SmartAudioController::settledClipsWithSound() const {
    return work_.syncGroups().filtered(
        [](const SyncGroup& group) { return group.matchStatus.isSettled() && !group.isMOS(); });
}

/// Whether an analysis has judged the clip, or has passed over it because of its excluded tracks.
bool SmartAudioController::isKnown(const UUID& groupID) const {
    return state().results.contains(groupID) || state().passedOver.contains(groupID);
}

platform::Task SmartAudioController::runSmartAudioForGroup(const UUID& groupID,
                                                           bool forceOverwriteManualTracks) {
    work_.notices.assertOnMainThread();
    SyncGroupList one = work_.syncGroups().filtered(
        [&](const SyncGroup& group) { return group.id == groupID && !group.isMOS(); });
    return runs_.analyseOne(std::move(one), termsForOneClip(), forceOverwriteManualTracks);
}

platform::Task SmartAudioController::reanalyseIfKnown(const UUID& groupID) {
    work_.notices.assertOnMainThread();
    if (!isKnown(groupID)) return platform::Task::ended();
    return runs_.analyseAgain(groupID, termsForOneClip());
}

platform::Task SmartAudioController::reanalyseAll() {
    SyncGroupList analysed = work_.syncGroups().filtered(
        [this](const SyncGroup& group) { return isKnown(group.id) && !group.isMOS(); });
    return runs_.analyse(std::move(analysed), termsForOneClip(), false, Loudness::measure);
}

void SmartAudioController::emptyAfterUndo(const SyncGroupList& clipsBefore) {
    caches_.setAsideAfterUndo(clipsBefore);
    work_.environment.mainThread->post([weak = work_.weak(this)] {
        if (const auto self = weak.lock()) self->restoreAfterUndo();
    });
}

void SmartAudioController::restoreAfterUndo() {
    caches_.recall(work_.syncGroups());
    runs_.restoreUnchanged();
}

const SmartAudioTerms* SmartAudioController::termsOf(const UUID& groupID) const {
    const auto routed = caches_.routed.find(groupID);
    return routed == caches_.routed.end() ? nullptr : &routed->second.terms;
}

bool SmartAudioController::isOutdated(const UUID& groupID) const {
    const SmartAudioTerms* made = termsOf(groupID);
    return made != nullptr && *made != terms(made->mode);
}

std::vector<UUID> SmartAudioController::outdated() const {
    std::map<SmartAudioMode, SmartAudioTerms> ofNow; // made once for all clips of a mode
    std::vector<UUID> found;
    for (const auto& [groupID, routed] : caches_.routed) {
        const SmartAudioMode mode = routed.terms.mode;
        auto now = ofNow.find(mode);
        if (now == ofNow.end()) now = ofNow.emplace(mode, terms(mode)).first;
        if (now->second != routed.terms) found.push_back(groupID);
    }
    return found;
}

std::size_t SmartAudioController::outdatedCount() const { return outdated().size(); }

platform::Task SmartAudioController::reanalyseOutdated() {
    work_.notices.assertOnMainThread();
    std::map<SmartAudioMode, std::unordered_set<UUID>> byMode;
    for (const UUID& groupID : outdated()) byMode[caches_.routed.at(groupID).terms.mode].insert(groupID);
    // All are started at once, so that one analysis is seen to begin and end, not one for each mode.
    std::vector<platform::Task> runs;
    for (const auto& [mode, clips] : byMode)
        runs.push_back(runs_.analyse(work_.syncGroups().filtered([&clips = clips](const SyncGroup& group) {
            return clips.contains(group.id) && !group.isMOS();
        }),
                                     terms(mode), false, Loudness::leave));
    return work_.runOnClips(allOf(std::move(runs)));
}

// Only a stored mode counts: without one, a scan starts no analysis.
void SmartAudioController::startAnalysisAfterScan() {
    analysisAfterScan_.reset();
    const auto stored = work_.environment.settings->find(settings::smartAudioMode);
    if (analysesAfterScan_ && stored && *stored != SmartAudioMode::off)
        analysisAfterScan_ = runSmartAudioAnalysis(*stored, false);
}

platform::Task SmartAudioController::waitForAnalysisAfterScan() const {
    // A copy: the controller may be destroyed before the analysis ends.
    if (const auto analysis = analysisAfterScan_) co_await *analysis;
}

} // namespace orvane
