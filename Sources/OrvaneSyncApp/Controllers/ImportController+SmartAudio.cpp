#include "OrvaneSyncApp/Controllers/ImportController.h"

#include "OrvaneSyncCore/Services/SmartAudio/LUFSMeter.h"
#include "OrvaneSyncCore/Services/SmartAudio/ManualOverrides.h"
#include "OrvaneSyncCore/Services/SmartAudio/MasterGain.h"
#include "OrvaneSyncCore/Services/Takes/TakeAudio.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace orvane {

namespace {

constexpr std::string_view modeKey = "smartAudioMode";
/// Linear RMS that music is compared with when it decides how boldly to route.
constexpr float musicSourceLevel = 0.05F;

/// Nothing where the setting was never written, or to no mode.
std::optional<SmartAudioMode> storedMode(const platform::SettingsStore& settings) {
    const auto tag = settings.textIfPresent(modeKey);
    return tag ? smartAudioModeFromUITag(*tag) : std::nullopt;
}

/// How long a recording takes to hear, in any unit.
double effortOf(const Take& take) {
    return std::max(take.durationSeconds, 1.0) * std::max(take.channelCount, 1);
}

TakeSound soundOf(const SyncGroup& group) { return {group, takeOf(group, assumedChannels)}; }

/// Tracks that the analysis may use; empty: all.
std::set<int> candidateTracks(const SyncGroup& group, int channelCount) {
    std::set<int> candidates;
    if (group.algorithmExcludedTracks.empty()) return candidates;
    for (int track = 1; track <= channelCount; ++track)
        if (!group.algorithmExcludedTracks.contains(track)) candidates.insert(track);
    return candidates;
}

/// Stems of a recording take their place here; without a separator there are none.
std::optional<SeparatedStems> stemsOf(const TakeSound& /*recording*/) { return std::nullopt; }

/// Whether both would hear the same: their terms are those of one run.
bool asksTheSame(const SmartAudioRequest& a, const SmartAudioRequest& b) {
    return a.sound == b.sound && a.channelCount == b.channelCount && a.candidateTracks == b.candidateTracks;
}

/// On the router's queue. What cannot be heard gives the empty result.
SmartAudioResult listen(const SmartAudioRouter::Means& means, SmartAudioRequest request,
                        const std::stop_token& stop) {
    try {
        if (request.stems) {
            const auto metrics =
                computeStemMetrics(*request.stems, smartAudioWindowSeconds, musicSourceLevel, stop);
            request.blockSettings = request.blockSettings->consideringMusic(metrics.musicProbability);
        }
        return SmartAudioRouter::analyze(request, means, stop);
    } catch (const std::exception&) {
        return {};
    }
}

/// LUFS. A recording that cannot be measured counts as all but silent.
double loudnessOf(const TakeSound& recording, const std::stop_token& stop) {
    try {
        return LUFSMeter::measureIntegratedLUFS(recording, stop).value_or(MasterGain::unmeasuredLUFS);
    } catch (const std::exception&) {
        return MasterGain::unmeasuredLUFS;
    }
}

} // namespace

/// What one run asks of every clip, and what it has heard: the cameras of one recording share one reading.
struct ImportController::AnalysisRun {
    struct Terms {
        SmartAudioMode mode = SmartAudioMode::standard;
        std::optional<SmartAudioConfig> config;
        SmartAudioBlockSettings blockSettings;

        bool operator==(const Terms&) const = default;
    };
    Terms terms;
    bool forceOverwriteManualTracks = false;

    SmartAudioProgress progress{"", 0, 1, 0}; ///< before the clip under way
    double effort = 0;                        ///< of all recordings of the run
    std::uint64_t forgotten = 0;        ///< how often the clip under way was forgotten when its turn came
    bool isAwaitingVerdict = false;     ///< on a clip that the run has yet to judge as it then stands
    std::optional<platform::Task> task; ///< of a renewed analysis, for all whose changes it takes in

    const SmartAudioResult* heardBefore(const SmartAudioRequest& request) const {
        const auto found = heard.find({request.sound, request.candidateTracks});
        return found == heard.end() ? nullptr : &found->second;
    }
    /// Keeps the result as long as clips of the recording are still to come.
    void keep(const SmartAudioRequest& request, const SmartAudioResult& result) {
        if (--clipsLeft[request.sound] > 0)
            heard.insert_or_assign({request.sound, request.candidateTracks}, result);
        else
            std::erase_if(heard, [&](const auto& one) { return one.first.first == request.sound; });
    }

    std::map<TakeSound, int> clipsLeft;
    std::map<std::pair<TakeSound, std::set<int>>, SmartAudioResult> heard; ///< by recording and candidates
    std::map<TakeSound, double> loudness;                                  ///< LUFS
};

std::shared_ptr<ImportController::AnalysisRun>
ImportController::newRun(SmartAudioMode mode, bool forceOverwriteManualTracks) const {
    auto run = std::make_shared<AnalysisRun>();
    run->terms.mode = mode;
    if (mode == SmartAudioMode::custom) run->terms.config = SmartAudioConfig::fromUserDefaults(*settings_);
    run->terms.blockSettings = SmartAudioBlockSettings::fromUserDefaults(*settings_);
    run->forceOverwriteManualTracks = forceOverwriteManualTracks;
    return run;
}

platform::Task ImportController::runSmartAudioAnalysis(SmartAudioMode mode, bool forceOverwriteManualTracks) {
    assertOnMainThread();
    return analyseAll(weak_from_this(), newRun(mode, forceOverwriteManualTracks));
}

platform::Task ImportController::analyseAll(std::weak_ptr<ImportController> weak,
                                            std::shared_ptr<AnalysisRun> run) {
    auto self = weak.lock();
    if (!self) co_return;
    if (run->terms.mode == SmartAudioMode::off) {
        self->smartAudio_.results.clear();
        self->notify(ImportField::smartAudio);
        co_return;
    }
    SyncGroupList groups = self->syncGroups_.filtered(
        [](const SyncGroup& group) { return group.matchStatus.isSettled() && !group.isMOS(); });
    self.reset();
    co_await analyseEach(weak, std::move(groups), run, Loudness::leave);
}

/// Clips with sound, as they stand when the run begins.
platform::Task ImportController::analyseEach(std::weak_ptr<ImportController> weak, SyncGroupList groups,
                                             std::shared_ptr<AnalysisRun> run, Loudness loudness) {
    auto self = weak.lock();
    if (!self || groups.empty()) co_return;
    run->progress.total = static_cast<int>(groups.size());
    for (const SyncGroup& group : groups) {
        const Take take = takeOf(group, assumedChannels);
        if (run->clipsLeft[{group, take}]++ == 0) run->effort += effortOf(take);
    }
    self->analysisBegan(run);
    for (const SyncGroup& group : groups) {
        self->nextClip(*run, group);
        self.reset();
        co_await analyseClip(weak, group.id, run);
        if (loudness == Loudness::measure) co_await measureLoudness(weak, group.id, run);
        self = weak.lock();
        if (!self) co_return;
    }
    self->analysisEnded(run);
    if (loudness == Loudness::leave) co_return;
    for (const SyncGroup& group : groups) {
        const auto result = self->smartAudio_.results.find(group.id);
        if (result == self->smartAudio_.results.end() || result->second.blocks.empty()) continue;
        self.reset();
        co_await renderMixdown(weak, group.id);
        self = weak.lock();
        if (!self) co_return;
    }
}

std::shared_ptr<ImportController::AnalysisRun>
ImportController::newRunForOneClip(bool forceOverwriteManualTracks) const {
    // A request for one clip always analyses.
    const auto stored = storedMode(*settings_);
    const SmartAudioMode mode =
        stored.value_or(SmartAudioMode::off) == SmartAudioMode::off ? SmartAudioMode::standard : *stored;
    return newRun(mode, forceOverwriteManualTracks);
}

platform::Task ImportController::runSmartAudioForGroup(const UUID& groupID, bool forceOverwriteManualTracks) {
    assertOnMainThread();
    return analyseOne(groupID, newRunForOneClip(forceOverwriteManualTracks));
}

platform::Task ImportController::analyseOne(const UUID& groupID, std::shared_ptr<AnalysisRun> run) {
    SyncGroupList one =
        syncGroups_.filtered([&](const SyncGroup& group) { return group.id == groupID && !group.isMOS(); });
    return analyseEach(weak_from_this(), std::move(one), std::move(run), Loudness::measure);
}

void ImportController::nextClip(AnalysisRun& run, const SyncGroup& group) {
    run.forgotten = timesForgotten(group.id);
    run.isAwaitingVerdict = true;
    ++run.progress.current;
    run.progress.phase = "Listening to " + filesText(group, takeOf(group, assumedChannels), FileNames());
    showAnalysisProgress(run, run.progress);
}

SmartAudioRequest ImportController::analysisRequest(const SyncGroup& group, const AnalysisRun& run) const {
    const Take take = takeOf(group, assumedChannels);
    SmartAudioRequest request;
    request.sound = {group, take};
    request.channelCount = take.channelCount;
    request.mode = run.terms.mode;
    request.config = run.terms.config;
    request.ixmlTracks = namedChannels(group, take);
    request.blockSettings = run.terms.blockSettings;
    request.stems = stemsOf(request.sound);
    request.candidateTracks = candidateTracks(group, request.channelCount);
    return request;
}

std::function<void(double)> ImportController::analysisReport(const std::shared_ptr<AnalysisRun>& run,
                                                             double effort) {
    return [weak = weak_from_this(), main = mainThread_, run = std::weak_ptr(run), before = run->progress,
            share = effort / run->effort](double heard) {
        SmartAudioProgress progress = before;
        progress.fraction = std::min(progress.fraction + heard * share, 1.0);
        main->post([weak, run, progress] {
            const auto self = weak.lock();
            const auto reporting = run.lock();
            if (self && reporting) self->showAnalysisProgress(*reporting, progress);
        });
    };
}

platform::Task ImportController::analyseClip(std::weak_ptr<ImportController> weak, UUID groupID,
                                             std::shared_ptr<AnalysisRun> run) {
    for (;;) {
        auto self = weak.lock();
        const SyncGroup* group = self ? self->stillAsked(groupID, *run) : nullptr;
        if (group == nullptr) break;
        SmartAudioRequest request = self->analysisRequest(*group, *run);
        const double effort = effortOf(takeOf(*group, assumedChannels));
        request.progress = self->analysisReport(run, effort);
        const double share = effort / run->effort;
        const SmartAudioResult* known = run->heardBefore(request);
        SmartAudioResult result;
        if (known != nullptr) {
            result = *known;
        } else {
            auto listening =
                platform::onQueue(self->smartAudioRouter_->queue(), self->mainThread_,
                                  [means = self->smartAudioRouter_->means(), request](
                                      const std::stop_token& stop) { return listen(means, request, stop); });
            self.reset();
            result = co_await listening;
            run->progress.fraction = std::min(run->progress.fraction + share, 1.0);
            self = weak.lock();
            if (!self) break;
        }
        run->keep(request, result);
        group = self->stillAsked(groupID, *run);
        // Another recording, or other channels to choose from: the question has changed, so it is asked anew.
        if (group != nullptr && !asksTheSame(self->analysisRequest(*group, *run), request)) continue;
        run->isAwaitingVerdict = false;
        if (group != nullptr) self->adoptVerdict(groupID, std::move(result), run->forceOverwriteManualTracks);
        break;
    }
    run->isAwaitingVerdict = false;
}

/// The clip as long as it is there with sound and its results were not thrown away since its turn came: a
/// verdict that comes after that would bring back what the editor took back.
const SyncGroup* ImportController::stillAsked(const UUID& groupID, const AnalysisRun& run) const {
    const SyncGroup* group = syncGroups_.find(groupID);
    const bool isAsked = group != nullptr && !group->isMOS() && timesForgotten(groupID) == run.forgotten;
    return isAsked ? group : nullptr;
}

std::uint64_t ImportController::timesForgotten(const UUID& groupID) const {
    const auto own = timesForgotten_.find(groupID);
    return timesAllForgotten_ + (own == timesForgotten_.end() ? 0 : own->second);
}

/// The editor's ranges and choice are those of now, not of when the reading began.
void ImportController::adoptVerdict(const UUID& groupID, SmartAudioResult result,
                                    bool forceOverwriteManualTracks) {
    const SyncGroup* group = syncGroups_.find(groupID);
    if (group == nullptr) return;
    result.blocks =
        SmartAudioBlockRouter::applyOverrides(std::move(result.blocks), group->manualBlockOverrides);
    std::set<int> active;
    for (const BlockDecision& block : result.blocks)
        if (block.activeTrack > 0) active.insert(block.activeTrack);
    const bool isTaken = !active.empty() && (forceOverwriteManualTracks || !group->hasManualTrackEdits());

    smartAudio_.results.insert_or_assign(groupID, std::move(result));
    if (isTaken)
        syncGroups_.update(groupID, [&](SyncGroup& own) {
            own.manualActiveTracks = std::move(active);
            own.tracksManuallyEdited = false;
        });
    notify(ImportField::smartAudio);
    if (isTaken) notify(ImportField::syncGroups);
}

platform::Task ImportController::measureLoudness(std::weak_ptr<ImportController> weak, UUID groupID,
                                                 std::shared_ptr<AnalysisRun> run) {
    for (;;) {
        auto self = weak.lock();
        const SyncGroup* group = self ? self->stillAsked(groupID, *run) : nullptr;
        if (group == nullptr) co_return;
        const TakeSound recording = soundOf(*group);
        if (const auto measured = run->loudness.find(recording); measured != run->loudness.end()) {
            self->syncGroups_.update(groupID, [&](SyncGroup& own) {
                own.measuredLUFS = measured->second;
                if (own.masterGainAuto) own.masterGainDB = self->automaticMasterGainDB(measured->second);
            });
            self->notify(ImportField::syncGroups);
            co_return;
        }
        auto measuring = platform::onQueue(
            *self->loudnessQueue_, self->mainThread_,
            [recording](const std::stop_token& stop) { return loudnessOf(recording, stop); });
        self.reset();
        run->loudness[recording] = co_await measuring;
    }
}

double ImportController::automaticMasterGainDB(double measuredLUFS) const {
    return MasterGain::gainDB(measuredLUFS, MasterGain::Target::fromUserDefaults(*settings_),
                              SmartAudioPredictor::loadingFromDisk());
}

// The rendering of a clip's blocks takes its place here; nothing is rendered yet, so nothing is to be played.
platform::Task ImportController::renderMixdown(std::weak_ptr<ImportController> /*weak*/, UUID /*groupID*/) {
    co_return;
}

// A reading under way on the same terms judges the clip as it stands in the end, this change included.
platform::Task ImportController::reanalyseIfKnown(const UUID& groupID) {
    assertOnMainThread();
    if (!smartAudio_.results.contains(groupID)) return platform::Task::ended();
    const auto run = newRunForOneClip(false);
    std::erase_if(reanalyses_, [](const auto& one) { return !one.second->isAwaitingVerdict; });
    const auto pending = reanalyses_.find(groupID);
    if (pending != reanalyses_.end() && pending->second->terms == run->terms &&
        pending->second->forgotten == timesForgotten(groupID))
        return pending->second->task.value_or(platform::Task::ended());
    reanalyses_.insert_or_assign(groupID, run);
    run->task = analyseOne(groupID, run);
    return *run->task;
}

// Only a mode that was stored counts: a scan by itself analyses nothing that nobody asked for.
void ImportController::startAnalysisAfterScan() {
    analysisAfterScan_.reset();
    const auto stored = storedMode(*settings_);
    if (analysesAfterScan_ && stored && *stored != SmartAudioMode::off)
        analysisAfterScan_ = runSmartAudioAnalysis(*stored, false);
}

platform::Task ImportController::waitForAnalysisAfterScan() const {
    // A copy: the controller may be gone when the analysis ends.
    if (const auto analysis = analysisAfterScan_) co_await *analysis;
}

// Told with its first clip.
void ImportController::analysisBegan(const std::shared_ptr<AnalysisRun>& run) {
    analyses_.push_back(run);
    smartAudio_.isAnalyzing = true;
}

void ImportController::analysisEnded(const std::shared_ptr<AnalysisRun>& run) {
    std::erase(analyses_, run);
    smartAudio_.isAnalyzing = !analyses_.empty();
    smartAudio_.progress = analyses_.empty() ? SmartAudioProgress{} : analyses_.front()->progress;
    notify(ImportField::smartAudio);
}

/// Of several runs the one that began first is shown, so that the fraction never goes back and forth.
void ImportController::showAnalysisProgress(const AnalysisRun& run, SmartAudioProgress progress) {
    if (analyses_.empty() || analyses_.front().get() != &run) return;
    smartAudio_.progress = std::move(progress);
    notify(ImportField::smartAudio);
}

void ImportController::forgetSmartAudio() {
    ++timesAllForgotten_;
    smartAudio_.results.clear();
    smartAudio_.viProcessedURLs.clear();
    smartAudio_.mixdownURLs.clear();
    smartAudio_.soloMonitorTracks.clear();
    smartAudio_.soloMonitorURLs.clear();
}

} // namespace orvane
