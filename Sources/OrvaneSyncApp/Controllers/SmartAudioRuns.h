#pragma once

#include "OrvaneSyncApp/Controllers/RenderedAudioController.h"
#include "OrvaneSyncApp/Controllers/SmartAudioCaches.h"
#include "OrvaneSyncCore/Models/SmartAudioKinds.h"
#include "OrvaneSyncCore/Services/SmartAudio/SmartAudioRouter.h"
#include "Platform/Task.h"
#include "Platform/Throttle.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

namespace orvane {

/// What one analysis asks of every clip.
struct SmartAudioTerms {
    SmartAudioMode mode = SmartAudioMode::standard;
    std::optional<SmartAudioConfig> config;
    SmartAudioBlockSettings blockSettings;

    bool operator==(const SmartAudioTerms&) const = default;
};

/// The analyses under way. Each reads the first recording of its clips once, leaves the results in the
/// caches and switches on the tracks of their blocks, unless the editor chose tracks by hand. None fails.
class SmartAudioRuns {
  public:
    SmartAudioRuns(OpenWork& work, SmartAudioCaches& caches, RenderedAudioController& rendered);
    ~SmartAudioRuns();

    enum class Loudness { leave, measure, only };
    /// Clips with sound, as they stand at the call. `measure`: also their loudness and master gain.
    platform::Task analyse(SyncGroupList groups, SmartAudioTerms terms, bool forceOverwriteManualTracks,
                           Loudness loudness);
    /// Of a single clip: also its loudness and master gain, and its blocks are rendered for the player.
    platform::Task analyseOne(SyncGroupList group, SmartAudioTerms terms, bool forceOverwriteManualTracks);
    /// The loudness of clips with sound, and the master gain where something is heard.
    platform::Task measureLoudness(SyncGroupList groups);
    /// Analyses the clip again with the editor's choice of tracks kept. The task may be that of an analysis
    /// that runs with the same mode: it uses the state of the clip at its end.
    platform::Task analyseAgain(const UUID& groupID, const SmartAudioTerms& terms);
    /// Applies the ranges that were chosen by hand to what was measured of the clip: they keep their place in
    /// the picture when the sound is moved.
    void reapplyRanges(const UUID& groupID);
    /// After a step was taken back, and outside of it: of what that emptied, the results of the clips that
    /// are asked of as they were. Ranges by hand are laid over them as they now are.
    void restoreUnchanged();
    /// All that run.
    void stop() { running_.requestStop(); }

  private:
    struct Run;
    using RunPointer = std::shared_ptr<Run>;
    static RunPointer newRun(SmartAudioTerms terms, bool forceOverwriteManualTracks);
    platform::Task start(SyncGroupList groups, const RunPointer& run, Loudness loudness);
    static platform::Task analyseEach(std::weak_ptr<SmartAudioRuns> weak, SyncGroupList groups,
                                      RunPointer run, Loudness loudness);
    static platform::Task analyseClips(std::weak_ptr<SmartAudioRuns> weak, SyncGroupList groups,
                                       RunPointer run, Loudness loudness);
    static platform::Task analyseClip(std::weak_ptr<SmartAudioRuns> weak, UUID groupID, RunPointer run,
                                      Loudness loudness);
    static platform::Task measureClip(std::weak_ptr<SmartAudioRuns> weak, UUID groupID, RunPointer run,
                                      Loudness loudness);

    void nextClip(const RunPointer& run, const SyncGroup& group, std::string_view verb);
    void passOver(const UUID& groupID);
    SmartAudioRequest request(const SyncGroup& group, const Run& run) const;
    std::function<void(double)> report(const RunPointer& run, double effort);
    const SyncGroup* stillAsked(const UUID& groupID, const Run& run) const;
    void adoptResult(const UUID& groupID, SmartAudioResult result, bool forceOverwriteManualTracks);
    /// Of the clips that are named.
    void switchTracksOn(const std::map<UUID, std::set<int>>& tracks);
    void began(const RunPointer& run);
    void ended(const RunPointer& run);
    void show(const RunPointer& run, SmartAudioProgress progress);

    OpenWork& work_;
    SmartAudioCaches& caches_;
    RenderedAudioController& rendered_;
    /// Of which run, and how far.
    using Shown = std::pair<std::weak_ptr<Run>, SmartAudioProgress>;
    const std::shared_ptr<platform::Throttle<Shown>> shown_;
    platform::RunningTasks running_;
    std::vector<RunPointer> underWay_; ///< by when they began
    std::map<UUID, RunPointer> again_; ///< the latest of each clip, if not yet judged
    const std::unique_ptr<SmartAudioRouter> router_;
    const std::unique_ptr<platform::SerialQueue> loudnessQueue_;
};

/// Whether the editor keeps every track of the clip's take out of the analysis.
bool hasNoCandidates(const SyncGroup& group);

/// dB; by the settings and the calibration.
double automaticMasterGainDB(double measuredLUFS, const platform::SettingsStore& settings);

} // namespace orvane
