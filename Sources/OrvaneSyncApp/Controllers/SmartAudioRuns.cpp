#include "OrvaneSyncApp/Controllers/SmartAudioRuns.h"

#include "OrvaneSyncApp/Controllers/ClipAnalysis.h"
#include "OrvaneSyncCore/Models/FilePaths.h"
#include "OrvaneSyncCore/Services/SmartAudio/AnalysisCache.h"
#include "OrvaneSyncCore/Services/SmartAudio/LUFSMeter.h"
#include "OrvaneSyncCore/Services/SmartAudio/ManualOverrides.h"
#include "OrvaneSyncCore/Services/SmartAudio/MasterGain.h"
#include "OrvaneSyncCore/Services/Stems/StemCache.h"
#include "OrvaneSyncCore/Services/Takes/ReadFailed.h"
#include "OrvaneSyncCore/Services/Takes/TakeAudio.h"
#include "OrvaneSyncCore/Services/Waveform/WaveformAlongside.h"
#include "Platform/OnQueue.h"

#include <algorithm>
#include <exception>
#include <tuple>
#include <utility>

namespace orvane {

namespace {

/// Linear RMS to which music is compared to decide how boldly to route.
constexpr float musicSourceLevel = 0.05F;

/// The work of reading a recording; only ratios matter.
double effortOf(const Take& take) {
    return std::max(take.durationSeconds, 1.0) * std::max(take.channelCount, 1);
}

TakeSound soundOf(const SyncGroup& group) { return {group, takeOf(group, assumedChannels)}; }

/// Absent without a separator and if it fails: the analysis then continues without stems.
std::optional<SeparatedStems> stemsOf(const TakeSound& recording, const std::shared_ptr<StemCache>& cache,
                                      const std::stop_token& stop) {
    try {
        return cache ? cache->stems(recording, stop) : std::nullopt;
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

/// Whether two states of a clip are the same in all that a result, or the choice of tracks to switch on,
/// depends on. Compares stored values only: it does not build the take.
bool areHeardAlike(const SyncGroup& before, const SyncGroup& now) {
    const auto decided = [](const SyncGroup& group) {
        return std::tie(group.video.durationSeconds, group.algorithmExcludedTracks,
                        group.manualBlockOverrides, group.manualAudioOffsetSeconds, group.manualActiveTracks,
                        group.tracksManuallyEdited);
    };
    return decided(before) == decided(now) &&
           std::ranges::equal(before.audioMatches, now.audioMatches,
                              [](const AudioMatch& a, const AudioMatch& b) {
                                  return &*a.audio == &*b.audio && a.syncOffsetSeconds == b.syncOffsetSeconds;
                              });
}

/// Removes the clip's result from `aside` unless the clip has the same input as before; if it has, applies
/// the editor's present ranges to the result. Returns the tracks to switch on.
std::optional<std::set<int>> tracksIfUnchanged(SmartAudioSetAside& aside, const SyncGroup& group) {
    const bool isPassedOver = !group.isMOS() && hasNoCandidates(group);
    if (!isPassedOver) aside.passedOver.erase(group.id);
    const auto result = aside.results.find(group.id);
    const auto routed = aside.routed.find(group.id);
    if (result == aside.results.end()) return std::nullopt;
    if (isPassedOver || group.isMOS() || routed == aside.routed.end() ||
        analysisInput(group) != routed->second.input) {
        aside.results.erase(result);
        aside.routed.erase(group.id);
        return std::nullopt;
    }
    auto blocks = SmartAudioBlockRouter::applyOverrides(routed->second.blocks,
                                                        SmartAudioBlockRouter::overridesInTakeTime(group));
    auto active = tracksToSwitchOn(group, blocks, false);
    if (blocks != result->second->blocks) result->second.edit().blocks = std::move(blocks);
    return active;
}

/// A recording's loudness, and the calibration with which it was measured.
struct Measured {
    double lufs = 0; ///< a recording that cannot be measured counts as almost silent
    SmartAudioPredictor predictor;
};

Measured measured(std::optional<double> lufs) {
    return {lufs.value_or(MasterGain::unmeasuredLUFS), SmartAudioPredictor::loadingFromDisk()};
}

/// The results of one reading of a recording.
struct Heard {
    SmartAudioResult result = {};
    /// Absent if it was not requested, or if not all channels were read.
    std::optional<Measured> loudness = {};
};

/// What a reading uses and makes beside the result; each may be null.
struct Stores {
    std::shared_ptr<WaveformCache> waveforms;
    std::shared_ptr<StemCache> stems;
    std::shared_ptr<AnalysisCache> analyses;
};

/// Runs on the router's queue. A recording that cannot be read gives the empty result. One that was analysed
/// with these terms before is not read again.
Heard listen(const SmartAudioRouter::Options& options, SmartAudioRequest request,
             const SmartAudioTerms& terms, bool measuresLoudness, const Stores& stores,
             const std::stop_token& stop) {
    try {
        const auto key = stores.analyses ? AnalysisCache::keyOf(request) : std::nullopt;
        request.stems = stemsOf(request.sound, stores.stems, stop);
        if (auto known = key ? stores.analyses->find(*key) : std::nullopt;
            known && known->terms == terms &&
            known->result.stemMetrics.has_value() == request.stems.has_value()) {
            Heard heard{.result = std::move(known->result)};
            if (measuresLoudness && known->lufs) heard.loudness = measured(known->lufs);
            return heard;
        }
        if (request.stems) {
            const auto metrics =
                computeStemMetrics(*request.stems, smartAudioWindowSeconds, musicSourceLevel, stop);
            request.blockSettings = request.blockSettings->consideringMusic(metrics.musicProbability);
        }
        WaveformAlongside waveform(request.sound, stores.waveforms);
        std::optional<LUFSListener> meter;
        request.alongside = [&](const platform::AudioFile& file, std::size_t channels) {
            auto listeners = waveform.listeners(file, channels);
            if (measuresLoudness && std::cmp_equal(channels, file.channelCount()))
                listeners.push_back(&meter.emplace(file));
            return listeners;
        };
        Heard heard{.result = SmartAudioRouter::analyze(request, options, stop)};
        if (heard.result.incompleteFiles.empty()) waveform.keep();
        const auto lufs = meter ? meter->integratedLUFS() : std::nullopt;
        if (meter) heard.loudness = measured(lufs);
        if (key) stores.analyses->store(*key, request, {terms, heard.result, lufs});
        return heard;
    } catch (const ReadFailed& failure) {
        Heard heard;
        heard.result.incompleteFiles.push_back(failure.file());
        return heard;
    } catch (const std::exception&) {
        return {};
    }
}

Measured loudnessOf(const TakeSound& recording, const std::function<void(double)>& progress,
                    const std::stop_token& stop) {
    try {
        if (const OpenTake take = openTake(recording)) {
            const auto lufs = LUFSMeter::measureFile(*take.audio, progress, stop).integratedLUFS;
            take.throwIfReadFailed();
            return measured(lufs);
        }
    } catch (const std::exception&) { // handled as a recording that cannot be opened
    }
    return measured(std::nullopt);
}

} // namespace

/// One analysis and its results: cameras with the same recording use one reading.
struct SmartAudioRuns::Run {
    SmartAudioTerms terms;
    bool forceOverwriteManualTracks = false;
    bool rendersBlocks = false; ///< for the player

    SmartAudioProgress progress{"", 0, 1, 0}; ///< at the beginning of the present clip
    double effort = 0;                        ///< of all recordings of the run
    std::uint64_t removals = 0;               ///< removals of the present clip's results when its turn came
    bool isAwaitingResult = false;            ///< waits for a clip, whose state at the end counts
    std::optional<platform::Task> task; ///< of a repeated analysis, for all callers whose changes it includes

    const SmartAudioResult* heardBefore(const SmartAudioRequest& request) const {
        const auto found = heard.find({request.sound, request.candidateTracks});
        return found == heard.end() ? nullptr : &found->second;
    }
    /// Keeps the result while clips of the same recording are still to come.
    void keep(const SmartAudioRequest& request, const SmartAudioResult& result) {
        if (--clipsLeft[request.sound] > 0)
            heard.insert_or_assign({request.sound, request.candidateTracks}, result);
        else
            std::erase_if(heard, [&](const auto& one) { return one.first.first == request.sound; });
    }

    std::map<TakeSound, int> clipsLeft;
    std::map<std::pair<TakeSound, std::set<int>>, SmartAudioResult> heard; ///< by recording and candidates
    std::map<TakeSound, Measured> loudness;
};

SmartAudioRuns::SmartAudioRuns(OpenWork& work, SmartAudioCaches& caches, RenderedAudioController& rendered)
    : work_(work), caches_(caches), rendered_(rendered),
      shown_(platform::Throttle<Shown>::create(work.environment.mainThread, work.environment.clock,
                                               platform::progressInterval,
                                               [this](const Shown& latest) {
                                                   const auto run = latest.first.lock();
                                                   // Of several runs the one that began first is shown, so
                                                   // that the fraction does not jump between them.
                                                   if (!run || underWay_.empty() || underWay_.front() != run)
                                                       return;
                                                   caches_.state.progress = latest.second;
                                                   work_.notify(ImportField::smartAudioProgress);
                                               })),
      router_(std::make_unique<SmartAudioRouter>()),
      loudnessQueue_(platform::SerialQueue::create("loudness")) {}

SmartAudioRuns::~SmartAudioRuns() { shown_->close(); }

SmartAudioRuns::RunPointer SmartAudioRuns::newRun(SmartAudioTerms terms, bool forceOverwriteManualTracks) {
    auto run = std::make_shared<Run>();
    run->terms = std::move(terms);
    run->forceOverwriteManualTracks = forceOverwriteManualTracks;
    return run;
}

platform::Task SmartAudioRuns::analyse(SyncGroupList groups, SmartAudioTerms terms,
                                       bool forceOverwriteManualTracks, Loudness loudness) {
    return start(std::move(groups), newRun(std::move(terms), forceOverwriteManualTracks), loudness);
}

platform::Task SmartAudioRuns::analyseOne(SyncGroupList group, SmartAudioTerms terms,
                                          bool forceOverwriteManualTracks) {
    const RunPointer run = newRun(std::move(terms), forceOverwriteManualTracks);
    run->rendersBlocks = true;
    return start(std::move(group), run, Loudness::measure);
}

platform::Task SmartAudioRuns::measureLoudness(SyncGroupList groups) {
    return start(std::move(groups), newRun({}, false), Loudness::only);
}

platform::Task SmartAudioRuns::start(SyncGroupList groups, const RunPointer& run, Loudness loudness) {
    return work_.runOnClips(running_.add(analyseEach(work_.weak(this), std::move(groups), run, loudness)));
}

platform::Task SmartAudioRuns::analyseEach(std::weak_ptr<SmartAudioRuns> weak, SyncGroupList groups,
                                           RunPointer run, Loudness loudness) {
    auto self = weak.lock();
    if (!self || groups.empty()) co_return;
    run->progress.total = static_cast<int>(groups.size());
    for (const SyncGroup& group : groups) {
        const Take take = takeOf(group, assumedChannels);
        if (run->clipsLeft[{group, take}]++ == 0) run->effort += effortOf(take);
    }
    self->began(run);
    self.reset();
    const platform::Task clips = analyseClips(weak, groups, run, loudness);
    std::exception_ptr stopped;
    try {
        co_await clips;
    } catch (const platform::Stopped&) {
        stopped = std::current_exception();
    }
    run->isAwaitingResult = false;
    self = weak.lock();
    if (self) self->ended(run);
    if (stopped) std::rethrow_exception(stopped);
    if (!self || !run->rendersBlocks) co_return;
    const platform::Task rendering = self->rendered_.renderMixdown(groups.front().id);
    self.reset();
    co_await rendering;
}

platform::Task SmartAudioRuns::analyseClips(std::weak_ptr<SmartAudioRuns> weak, SyncGroupList groups,
                                            RunPointer run, Loudness loudness) {
    for (const SyncGroup& group : groups) {
        auto self = weak.lock();
        if (!self) co_return;
        self->nextClip(run, group,
                       loudness == Loudness::only ? "Measuring the loudness of " : "Listening to ");
        self.reset();
        if (loudness != Loudness::only) co_await analyseClip(weak, group.id, run, loudness);
        if (loudness != Loudness::leave) co_await measureClip(weak, group.id, run, loudness);
    }
}

void SmartAudioRuns::nextClip(const RunPointer& run, const SyncGroup& group, std::string_view verb) {
    run->removals = caches_.removals(group.id);
    run->isAwaitingResult = true;
    ++run->progress.current;
    run->progress.phase = std::string(verb) + filesText(group, takeOf(group, assumedChannels), FileNames());
    show(run, run->progress);
}

std::function<void(double)> SmartAudioRuns::report(const RunPointer& run, double effort) {
    return [shown = std::weak_ptr(shown_), run = std::weak_ptr(run), before = run->progress,
            share = effort / run->effort](double heard) {
        SmartAudioProgress progress = before;
        progress.fraction = std::min(progress.fraction + heard * share, 1.0);
        if (const auto own = shown.lock()) own->post({run, std::move(progress)});
    };
}

platform::Task SmartAudioRuns::analyseClip(std::weak_ptr<SmartAudioRuns> weak, UUID groupID, RunPointer run,
                                           Loudness loudness) {
    for (;;) {
        auto self = weak.lock();
        const SyncGroup* group = self ? self->stillAsked(groupID, *run) : nullptr;
        if (group == nullptr) break;
        if (hasNoCandidates(*group)) {
            self->passOver(groupID);
            break;
        }
        SmartAudioRequest request = analysisRequest(*group, run->terms);
        AnalysisInput input = analysisInput(*group);
        const double effort = effortOf(takeOf(*group, assumedChannels));
        request.progress = self->report(run, effort);
        const double share = effort / run->effort;
        const SmartAudioResult* known = run->heardBefore(request);
        SmartAudioResult result;
        if (known != nullptr) {
            result = *known;
            // Hundreds of clips may have the same recording: each gets its own turn of the loop.
            auto turn = platform::onQueue(self->router_->queue(), self->work_.environment.mainThread, [] {});
            self.reset();
            co_await turn;
            self = weak.lock();
            if (!self) break;
        } else {
            const bool measures = loudness == Loudness::measure && !run->loudness.contains(request.sound);
            auto listening = platform::onQueue(
                self->router_->queue(), self->work_.environment.mainThread,
                [options = self->router_->options(), request, terms = run->terms, measures,
                 stores = Stores{self->work_.environment.waveformCache, self->work_.environment.stems,
                                 self->work_.environment.analyses}](const std::stop_token& stop) {
                    return listen(options, request, terms, measures, stores, stop);
                });
            self.reset();
            Heard heard = co_await listening;
            result = std::move(heard.result);
            if (heard.loudness) run->loudness.insert_or_assign(request.sound, *heard.loudness);
            run->progress.fraction = std::min(run->progress.fraction + share, 1.0);
            self = weak.lock();
            if (!self) break;
        }
        run->keep(request, result);
        group = self->stillAsked(groupID, *run);
        // The clip has another recording, or other channels to choose from, so it has to be analysed again.
        if (group != nullptr && (hasNoCandidates(*group) || analysisInput(*group) != input)) continue;
        run->isAwaitingResult = false;
        if (group == nullptr) break;
        self->caches_.routed.insert_or_assign(groupID,
                                              RoutedClip{std::move(input), run->terms, result.blocks});
        self->adoptResult(groupID, std::move(result), run->forceOverwriteManualTracks);
        break;
    }
    run->isAwaitingResult = false;
}

/// The clip, if it still has sound and its results were not discarded since its turn came. Undoing a step
/// does not discard results for good: either the new result fits the clip as it is, or the clip is analysed
/// again.
const SyncGroup* SmartAudioRuns::stillAsked(const UUID& groupID, const Run& run) const {
    const SyncGroup* group = work_.syncGroups().find(groupID);
    const bool isAsked = group != nullptr && !group->isMOS() && caches_.removals(groupID) == run.removals;
    return isAsked ? group : nullptr;
}

/// Uses the editor's ranges and choice of tracks as they are at this moment, not as they were when the
/// reading began.
void SmartAudioRuns::adoptResult(const UUID& groupID, SmartAudioResult result,
                                 bool forceOverwriteManualTracks) {
    const SyncGroup* group = work_.syncGroups().find(groupID);
    if (group == nullptr) return;
    result.blocks = SmartAudioBlockRouter::applyOverrides(std::move(result.blocks),
                                                          SmartAudioBlockRouter::overridesInTakeTime(*group));
    work_.notices.together([&] {
        // The rendered files were made from other blocks.
        const auto known = caches_.state.results.find(groupID);
        if (known == caches_.state.results.end() || known->second->blocks != result.blocks)
            caches_.state.mixdownURLs.erase(groupID);
        const std::vector<BlockDecision> blocks = result.blocks;
        caches_.state.results.insert_or_assign(groupID, std::move(result));
        caches_.state.passedOver.erase(groupID);
        work_.notifySmartAudio({groupID});
        if (auto active = tracksToSwitchOn(*group, blocks, forceOverwriteManualTracks))
            switchTracksOn({{groupID, *std::move(active)}});
    });
}

void SmartAudioRuns::switchTracksOn(const std::map<UUID, std::set<int>>& tracks) {
    work_.editWhere([&](const SyncGroup& group) { return tracks.contains(group.id); },
                    [&](SyncGroup& group) {
                        group.manualActiveTracks = tracks.at(group.id);
                        group.tracksManuallyEdited = false;
                    });
}

void SmartAudioRuns::restoreUnchanged() {
    SmartAudioSetAside aside = caches_.takeSetAside();
    if (aside.isEmpty()) return;
    SmartAudioState& state = caches_.state;
    std::map<UUID, std::set<int>> tracks;
    const SyncGroupList clips = work_.syncGroups();
    bool areSameClips = !aside.clips.empty() && aside.clips.size() == clips.size();
    for (std::size_t i = 0; i < clips.size(); ++i) {
        const SyncGroup* before = areSameClips ? aside.clips.element(i).get() : nullptr;
        const SyncGroup& now = clips[i];
        if (before == &now) continue;
        areSameClips = areSameClips && before->id == now.id;
        if (areSameClips && areHeardAlike(*before, now)) continue;
        if (auto active = tracksIfUnchanged(aside, now)) tracks.emplace(now.id, *std::move(active));
    }
    if (!areSameClips) {
        const auto isGone = [&](const auto& one) { return clips.find(one.first) == nullptr; };
        std::erase_if(aside.results, isGone);
        std::erase_if(aside.routed, isGone);
    }
    // Results that were made meanwhile are newer.
    for (const auto& [groupID, result] : state.results) aside.results.erase(groupID);
    for (const auto& [groupID, heard] : caches_.routed) aside.routed.erase(groupID);
    aside.results.merge(state.results);
    aside.routed.merge(caches_.routed);
    aside.passedOver.merge(state.passedOver);
    work_.notices.together([&] {
        state.results = std::move(aside.results);
        state.passedOver = std::move(aside.passedOver);
        caches_.routed = std::move(aside.routed);
        switchTracksOn(tracks);
        for (const UUID& groupID : aside.rendered)
            if (state.results.contains(groupID)) rendered_.renderMixdown(groupID);
        work_.notify(ImportField::smartAudio);
    });
}

platform::Task SmartAudioRuns::recallStored() {
    const SyncGroupList clips = work_.syncGroups().filtered([this](const SyncGroup& clip) {
        return clip.tracksManuallyEdited && !caches_.state.results.contains(clip.id);
    });
    if (clips.empty() || !work_.environment.analyses) return platform::Task::ended();
    return work_.running.add(running_.add(recall(work_.weak(this), clips)));
}

platform::Task SmartAudioRuns::recall(std::weak_ptr<SmartAudioRuns> weak, SyncGroupList clips) {
    auto self = weak.lock();
    if (!self) co_return;
    std::vector<std::uint64_t> removals; // of each clip
    for (const SyncGroup& clip : clips) removals.push_back(self->caches_.removals(clip.id));
    auto reading =
        platform::onQueue(self->router_->queue(), self->work_.environment.mainThread,
                          [clips, cache = self->work_.environment.analyses](const std::stop_token& stop) {
                              return storedAnalyses(clips, *cache, stop);
                          });
    self.reset();
    SmartAudioSetAside stored = co_await reading;
    self = weak.lock();
    if (!self) co_return;
    for (std::size_t i = 0; i < clips.size(); ++i) {
        if (self->caches_.removals(clips[i].id) == removals[i]) continue;
        stored.results.erase(clips[i].id);
        stored.routed.erase(clips[i].id);
    }
    self->caches_.offer(std::move(stored));
    self->restoreUnchanged();
}

void SmartAudioRuns::reapplyRanges(const UUID& groupID) {
    const SyncGroup* group = work_.syncGroups().find(groupID);
    const auto known = caches_.state.results.find(groupID);
    const auto routed = caches_.routed.find(groupID);
    if (group == nullptr || group->manualBlockOverrides.empty() || known == caches_.state.results.end() ||
        routed == caches_.routed.end())
        return;
    SmartAudioResult result = known->second;
    result.blocks = routed->second.blocks;
    adoptResult(groupID, std::move(result), false);
}

/// The earlier result came from tracks that the editor has excluded since.
void SmartAudioRuns::passOver(const UUID& groupID) {
    caches_.state.results.erase(groupID);
    caches_.routed.erase(groupID);
    caches_.state.passedOver.insert(groupID);
    work_.notifySmartAudio({groupID});
}

platform::Task SmartAudioRuns::measureClip(std::weak_ptr<SmartAudioRuns> weak, UUID groupID, RunPointer run,
                                           Loudness loudness) {
    for (;;) {
        auto self = weak.lock();
        const SyncGroup* group = self ? self->stillAsked(groupID, *run) : nullptr;
        if (group == nullptr) co_return;
        const TakeSound recording = soundOf(*group);
        if (const auto measured = run->loudness.find(recording); measured != run->loudness.end()) {
            self->work_.edit(groupID, [&](SyncGroup& own) {
                own.measuredLUFS = measured->second.lufs;
                // If the user requested one clip, the result is shown to the user. In a run over a thousand
                // clips, none may get 40 dB because its recording is silent.
                const bool isHeard =
                    loudness == Loudness::measure || measured->second.lufs > MasterGain::unmeasuredLUFS;
                if (own.masterGainAuto && isHeard)
                    own.masterGainDB = MasterGain::gainDB(
                        measured->second.lufs,
                        MasterGain::Target::fromUserDefaults(*self->work_.environment.settings),
                        measured->second.predictor);
            });
            co_return;
        }
        const double effort = effortOf(takeOf(*group, assumedChannels));
        std::function<void(double)> progress;
        if (loudness == Loudness::only) progress = self->report(run, effort);
        auto measuring = platform::onQueue(*self->loudnessQueue_, self->work_.environment.mainThread,
                                           [recording, progress](const std::stop_token& stop) {
                                               return loudnessOf(recording, progress, stop);
                                           });
        self.reset();
        run->loudness.insert_or_assign(recording, co_await measuring);
        if (loudness == Loudness::only)
            run->progress.fraction = std::min(run->progress.fraction + effort / run->effort, 1.0);
    }
}

double automaticMasterGainDB(double measuredLUFS, const platform::SettingsStore& settings) {
    return MasterGain::gainDB(measuredLUFS, MasterGain::Target::fromUserDefaults(settings),
                              SmartAudioPredictor::loadingFromDisk());
}

platform::Task SmartAudioRuns::analyseAgain(const UUID& groupID, const SmartAudioTerms& terms) {
    std::erase_if(again_, [](const auto& one) { return !one.second->isAwaitingResult; });
    const auto pending = again_.find(groupID);
    if (pending != again_.end() && pending->second->terms == terms &&
        pending->second->removals == caches_.removals(groupID))
        return pending->second->task.value_or(platform::Task::ended());
    const auto run = newRun(terms, false);
    run->rendersBlocks = true;
    again_.insert_or_assign(groupID, run);
    SyncGroupList one = work_.syncGroups().filtered(
        [&](const SyncGroup& group) { return group.id == groupID && !group.isMOS(); });
    run->task = start(std::move(one), run, Loudness::measure);
    return *run->task;
}

void SmartAudioRuns::began(const RunPointer& run) {
    underWay_.push_back(run);
    if (!std::exchange(caches_.state.isAnalyzing, true)) work_.notifySmartAudio({});
}

void SmartAudioRuns::ended(const RunPointer& run) {
    shown_->flush();
    std::erase(underWay_, run);
    caches_.state.isAnalyzing = !underWay_.empty();
    caches_.state.progress = underWay_.empty() ? SmartAudioProgress{} : underWay_.front()->progress;
    work_.notifySmartAudio({});
}

void SmartAudioRuns::show(const RunPointer& run, SmartAudioProgress progress) {
    if (underWay_.empty() || underWay_.front() != run) return;
    caches_.state.progress = progress; // its notice may come a moment later
    shown_->post({run, std::move(progress)});
}

} // namespace orvane
