#include "OrvaneSyncApp/Controllers/ImportController.h"

#include "OrvaneSyncCore/Services/SmartAudio/LUFSMeter.h"
#include "OrvaneSyncCore/Services/SmartAudio/ManualOverrides.h"
#include "OrvaneSyncCore/Services/SmartAudio/MasterGain.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace orvane {

namespace {

constexpr std::string_view modeKey = "smartAudioMode";
constexpr int channelsWhenUnknown = 2;
/// Linear RMS that music is compared with when it decides how boldly to route.
constexpr float musicSourceLevel = 0.05F;

/// Nothing where the setting was never written, or to no mode.
std::optional<SmartAudioMode> storedMode(const platform::SettingsStore& settings) {
    const auto tag = settings.textIfPresent(modeKey);
    return tag ? smartAudioModeFromUITag(*tag) : std::nullopt;
}

/// How long a recording takes to hear, in any unit.
double effortOf(const MediaAsset& audio) {
    return std::max(audio.durationSeconds.value_or(0), 1.0) *
           std::max(audio.channelCount.value_or(channelsWhenUnknown), 1);
}

/// Tracks that the analysis may use; empty: all.
std::set<int> candidateTracks(const SyncGroup& group, int channelCount) {
    std::set<int> candidates;
    if (group.algorithmExcludedTracks.empty()) return candidates;
    for (int track = 1; track <= channelCount; ++track)
        if (!group.algorithmExcludedTracks.contains(track)) candidates.insert(track);
    return candidates;
}

/// Stems of a recording take their place here; without a separator there are none.
std::optional<SeparatedStems> stemsOf(const MediaAsset& /*audio*/) { return std::nullopt; }

/// On the router's queue. What cannot be heard gives the empty result.
SmartAudioResult listen(const SmartAudioRouter& router, SmartAudioRequest request) {
    try {
        if (request.stems) {
            const auto metrics =
                computeStemMetrics(*request.stems, smartAudioWindowSeconds, musicSourceLevel);
            request.blockSettings = request.blockSettings->consideringMusic(metrics.musicProbability);
        }
        return router.analyzeOnQueue(request);
    } catch (const std::exception&) {
        return {};
    }
}

/// LUFS. A recording that cannot be measured counts as all but silent.
double loudnessOf(const FileURL& recording) {
    try {
        return LUFSMeter::measureIntegratedLUFS(recording).value_or(MasterGain::unmeasuredLUFS);
    } catch (const std::exception&) {
        return MasterGain::unmeasuredLUFS;
    }
}

} // namespace

/// What one run asks of every clip, and what it has heard: the cameras of one recording share one reading.
struct ImportController::AnalysisRun {
    SmartAudioMode mode = SmartAudioMode::standard;
    std::optional<SmartAudioConfig> config;
    SmartAudioBlockSettings blockSettings;
    bool forceOverwriteManualTracks = false;

    SmartAudioProgress progress{"Listening to recordings", 0, 1, 0}; ///< before the clip under way
    double effort = 0;                                               ///< of all recordings of the run

    const SmartAudioResult* heardBefore(const SmartAudioRequest& request) const {
        const auto found = heard.find({request.audioURL.path, request.candidateTracks});
        return found == heard.end() ? nullptr : &found->second;
    }
    /// Keeps the result as long as clips of the recording are still to come.
    void keep(const SmartAudioRequest& request, const SmartAudioResult& result) {
        const std::string& path = request.audioURL.path;
        if (--clipsLeft[path] > 0)
            heard.insert_or_assign({path, request.candidateTracks}, result);
        else
            std::erase_if(heard, [&](const auto& one) { return one.first.first == path; });
    }

    std::unordered_map<std::string, int> clipsLeft; ///< by recording, in a run over all clips
    std::map<std::pair<std::string, std::set<int>>, SmartAudioResult> heard; ///< by recording and candidates
};

std::shared_ptr<ImportController::AnalysisRun>
ImportController::newRun(SmartAudioMode mode, bool forceOverwriteManualTracks) const {
    auto run = std::make_shared<AnalysisRun>();
    run->mode = mode;
    if (mode == SmartAudioMode::custom) run->config = SmartAudioConfig::fromUserDefaults(*settings_);
    run->blockSettings = SmartAudioBlockSettings::fromUserDefaults(*settings_);
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
    if (run->mode == SmartAudioMode::off) {
        self->smartAudio_.results.clear();
        self->notify(ImportField::smartAudio);
        co_return;
    }
    const SyncGroupList groups = self->syncGroups_.filtered(
        [](const SyncGroup& group) { return group.matchStatus.isSettled() && !group.isMOS(); });
    run->progress.total = static_cast<int>(groups.size());
    for (const SyncGroup& group : groups)
        if (run->clipsLeft[group.primaryAudio()->url.path]++ == 0)
            run->effort += effortOf(*group.primaryAudio());
    self->analysisBegan();
    for (const SyncGroup& group : groups) {
        ++run->progress.current;
        self->showAnalysisProgress(run->progress);
        self.reset();
        co_await analyseClip(weak, group.id, run);
        self = weak.lock();
        if (!self) co_return;
    }
    self->analysisEnded();
}

platform::Task ImportController::runSmartAudioForGroup(const UUID& groupID, bool forceOverwriteManualTracks) {
    assertOnMainThread();
    // A request for one clip always analyses.
    const auto stored = storedMode(*settings_);
    const SmartAudioMode mode =
        stored.value_or(SmartAudioMode::off) == SmartAudioMode::off ? SmartAudioMode::standard : *stored;
    return analyseOne(weak_from_this(), groupID, newRun(mode, forceOverwriteManualTracks));
}

platform::Task ImportController::analyseOne(std::weak_ptr<ImportController> weak, UUID groupID,
                                            std::shared_ptr<AnalysisRun> run) {
    auto self = weak.lock();
    const SyncGroup* group = self ? self->syncGroups_.find(groupID) : nullptr;
    if (group == nullptr || group->isMOS()) co_return;
    run->effort = effortOf(*group->primaryAudio());
    self->analysisBegan();
    self->showAnalysisProgress(run->progress);
    self.reset();
    co_await analyseClip(weak, groupID, run);
    co_await measureLoudness(weak, groupID);
    self = weak.lock();
    if (!self) co_return;
    self->analysisEnded();
    const auto result = self->smartAudio_.results.find(groupID);
    const bool hasBlocks = result != self->smartAudio_.results.end() && !result->second.blocks.empty();
    self.reset();
    if (hasBlocks) co_await renderMixdown(weak, groupID);
}

SmartAudioRequest ImportController::analysisRequest(const SyncGroup& group, const AnalysisRun& run) {
    const MediaAsset& audio = *group.primaryAudio();
    SmartAudioRequest request;
    request.audioURL = audio.url;
    request.channelCount = audio.channelCount.value_or(channelsWhenUnknown);
    request.mode = run.mode;
    request.config = run.config;
    if (audio.ixmlData) request.ixmlTracks = audio.ixmlData->tracks;
    request.blockSettings = run.blockSettings;
    request.stems = stemsOf(audio);
    request.candidateTracks = candidateTracks(group, request.channelCount);
    request.progress = analysisReport(run, audio);
    return request;
}

std::function<void(double)> ImportController::analysisReport(const AnalysisRun& run,
                                                             const MediaAsset& audio) {
    return [weak = weak_from_this(), main = mainThread_, before = run.progress,
            share = effortOf(audio) / run.effort](double heard) {
        SmartAudioProgress progress = before;
        progress.fraction = std::min(progress.fraction + heard * share, 1.0);
        main->post([weak, progress] {
            if (const auto self = weak.lock()) self->showAnalysisProgress(progress);
        });
    };
}

platform::Task ImportController::analyseClip(std::weak_ptr<ImportController> weak, UUID groupID,
                                             std::shared_ptr<AnalysisRun> run) {
    auto self = weak.lock();
    const SyncGroup* group = self ? self->syncGroups_.find(groupID) : nullptr;
    if (group == nullptr || group->isMOS()) co_return;
    const SmartAudioRequest request = self->analysisRequest(*group, *run);
    const double share = effortOf(*group->primaryAudio()) / run->effort;
    const SmartAudioResult* known = run->heardBefore(request);
    SmartAudioResult result;
    if (known != nullptr) {
        result = *known;
    } else {
        auto listening = platform::onQueue(
            self->smartAudioRouter_->queue(), *self->mainThread_,
            [router = self->smartAudioRouter_.get(), request] { return listen(*router, request); });
        self.reset();
        result = co_await listening;
        run->progress.fraction = std::min(run->progress.fraction + share, 1.0);
        self = weak.lock();
        if (!self) co_return;
    }
    run->keep(request, result);
    self->adoptVerdict(groupID, std::move(result), run->forceOverwriteManualTracks);
}

/// The clip may have gone, and the editor may have changed it, while its recording was heard.
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

platform::Task ImportController::measureLoudness(std::weak_ptr<ImportController> weak, UUID groupID) {
    auto self = weak.lock();
    const SyncGroup* group = self ? self->syncGroups_.find(groupID) : nullptr;
    if (group == nullptr || group->isMOS()) co_return;
    auto measuring = platform::onQueue(*self->loudnessQueue_, *self->mainThread_,
                                       [url = group->primaryAudio()->url] { return loudnessOf(url); });
    self.reset();
    const double measured = co_await measuring;
    self = weak.lock();
    if (!self) co_return;
    const bool isThere = self->syncGroups_.update(groupID, [&](SyncGroup& own) {
        own.measuredLUFS = measured;
        if (own.masterGainAuto) own.masterGainDB = self->automaticMasterGainDB(measured);
    });
    if (isThere) self->notify(ImportField::syncGroups);
}

double ImportController::automaticMasterGainDB(double measuredLUFS) const {
    return MasterGain::gainDB(measuredLUFS, MasterGain::Target::fromUserDefaults(*settings_),
                              SmartAudioPredictor::loadingFromDisk());
}

// The rendering of a clip's blocks takes its place here; nothing is rendered yet, so nothing is to be played.
platform::Task ImportController::renderMixdown(std::weak_ptr<ImportController> /*weak*/, UUID /*groupID*/) {
    co_return;
}

void ImportController::reanalyseIfKnown(const UUID& groupID) {
    assertOnMainThread();
    if (smartAudio_.results.contains(groupID)) runSmartAudioForGroup(groupID, false);
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

void ImportController::analysisBegan() {
    smartAudio_.isAnalyzing = ++runningAnalyses_ > 0;
    notify(ImportField::smartAudio);
}

void ImportController::analysisEnded() {
    smartAudio_.isAnalyzing = --runningAnalyses_ > 0;
    if (!smartAudio_.isAnalyzing) smartAudio_.progress = {};
    notify(ImportField::smartAudio);
}

void ImportController::showAnalysisProgress(SmartAudioProgress progress) {
    smartAudio_.progress = std::move(progress);
    notify(ImportField::smartAudio);
}

void ImportController::forgetSmartAudio() {
    smartAudio_.results.clear();
    smartAudio_.viProcessedURLs.clear();
    smartAudio_.mixdownURLs.clear();
    smartAudio_.soloMonitorTracks.clear();
    smartAudio_.soloMonitorURLs.clear();
}

} // namespace orvane
