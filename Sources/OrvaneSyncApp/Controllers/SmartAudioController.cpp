#include "OrvaneSyncApp/Controllers/SmartAudioController.h"

#include <string_view>
#include <utility>

namespace orvane {

namespace {

constexpr std::string_view modeKey = "smartAudioMode";

/// Nothing where the setting was never written, or to no mode.
std::optional<SmartAudioMode> storedMode(const platform::SettingsStore& settings) {
    const auto tag = settings.textIfPresent(modeKey);
    return tag ? smartAudioModeFromUITag(*tag) : std::nullopt;
}

using Loudness = SmartAudioRuns::Loudness;

} // namespace

SmartAudioController::SmartAudioController(OpenWork& work)
    : work_(work), caches_(work), runs_(work, caches_) {}

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
    const auto stored = storedMode(*work_.environment.settings);
    return terms(stored.value_or(SmartAudioMode::off) == SmartAudioMode::off ? SmartAudioMode::standard
                                                                             : *stored);
}

platform::Task SmartAudioController::runSmartAudioAnalysis(SmartAudioMode mode,
                                                           bool forceOverwriteManualTracks) {
    work_.notices.assertOnMainThread();
    if (mode == SmartAudioMode::off) {
        caches_.state.results.clear();
        work_.notify(ImportField::smartAudio);
        return platform::Task::ended();
    }
    SyncGroupList groups = work_.syncGroups().filtered(
        [](const SyncGroup& group) { return group.matchStatus.isSettled() && !group.isMOS(); });
    return runs_.analyse(std::move(groups), terms(mode), forceOverwriteManualTracks, Loudness::leave);
}

platform::Task SmartAudioController::runSmartAudioForGroup(const UUID& groupID,
                                                           bool forceOverwriteManualTracks) {
    work_.notices.assertOnMainThread();
    SyncGroupList one = work_.syncGroups().filtered(
        [&](const SyncGroup& group) { return group.id == groupID && !group.isMOS(); });
    return runs_.analyse(std::move(one), termsForOneClip(), forceOverwriteManualTracks, Loudness::measure);
}

platform::Task SmartAudioController::reanalyseIfKnown(const UUID& groupID) {
    work_.notices.assertOnMainThread();
    if (!state().results.contains(groupID)) return platform::Task::ended();
    return runs_.analyseAgain(groupID, termsForOneClip());
}

platform::Task SmartAudioController::reanalyseAll() {
    SyncGroupList analysed = work_.syncGroups().filtered(
        [this](const SyncGroup& group) { return state().results.contains(group.id) && !group.isMOS(); });
    return runs_.analyse(std::move(analysed), termsForOneClip(), false, Loudness::measure);
}

// Only a mode that was stored counts: a scan by itself analyses nothing that nobody asked for.
void SmartAudioController::startAnalysisAfterScan() {
    analysisAfterScan_.reset();
    const auto stored = storedMode(*work_.environment.settings);
    if (analysesAfterScan_ && stored && *stored != SmartAudioMode::off)
        analysisAfterScan_ = runSmartAudioAnalysis(*stored, false);
}

platform::Task SmartAudioController::waitForAnalysisAfterScan() const {
    // A copy: the controller may be gone when the analysis ends.
    if (const auto analysis = analysisAfterScan_) co_await *analysis;
}

} // namespace orvane
