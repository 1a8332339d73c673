#pragma once

#include "OrvaneSyncApp/Controllers/RenderedAudioController.h"
#include "OrvaneSyncApp/Controllers/SmartAudioCaches.h"
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

/// The running analyses. Each reads the first recording of its clips once, writes the results to the caches
/// and switches on the tracks of their blocks, unless the editor chose tracks. None fails.
class SmartAudioRuns {
  public:
    SmartAudioRuns(OpenWork& work, SmartAudioCaches& caches, RenderedAudioController& rendered);
    ~SmartAudioRuns();

    enum class Loudness { leave, measure, only };
    /// Analyses clips with sound, in their state at the call. `measure`: also their loudness and master gain.
    platform::Task analyse(SyncGroupList groups, SmartAudioTerms terms, bool forceOverwriteManualTracks,
                           Loudness loudness);
    /// The same for one clip, with its loudness and master gain; its blocks are rendered for the player.
    platform::Task analyseOne(SyncGroupList group, SmartAudioTerms terms, bool forceOverwriteManualTracks);
    /// Measures the loudness of clips with sound, and sets the master gain of those that are not silent.
    platform::Task measureLoudness(SyncGroupList groups);
    /// Analyses the clip again, and keeps the editor's choice of tracks. The task may be that of a running
    /// analysis with the same mode, which uses the state of the clip at its end.
    platform::Task analyseAgain(const UUID& groupID, const SmartAudioTerms& terms);
    /// Applies the ranges that the editor chose to the measured blocks of the clip: the ranges keep their
    /// position in the picture when the sound is moved.
    void reapplyRanges(const UUID& groupID);
    /// To be called after a step was undone, and outside of the step: of the results that this removed,
    /// restores those whose clips have the same input as before. The editor's present ranges are applied to
    /// them.
    void restoreUnchanged();
    /// To be called after stored clips were opened: restores the results that earlier runs of the program
    /// have stored for them (`storedAnalyses`).
    platform::Task recallStored();
    /// Stops all analyses.
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

    static platform::Task recall(std::weak_ptr<SmartAudioRuns> weak, SyncGroupList clips);

    void nextClip(const RunPointer& run, const SyncGroup& group, std::string_view verb);
    void passOver(const UUID& groupID);
    std::function<void(double)> report(const RunPointer& run, double effort);
    const SyncGroup* stillAsked(const UUID& groupID, const Run& run) const;
    void adoptResult(const UUID& groupID, SmartAudioResult result, bool forceOverwriteManualTracks);
    /// Changes only the clips in the map.
    void switchTracksOn(const std::map<UUID, std::set<int>>& tracks);
    void began(const RunPointer& run);
    void ended(const RunPointer& run);
    void show(const RunPointer& run, SmartAudioProgress progress);

    OpenWork& work_;
    SmartAudioCaches& caches_;
    RenderedAudioController& rendered_;
    /// The run, and its progress.
    using Shown = std::pair<std::weak_ptr<Run>, SmartAudioProgress>;
    const std::shared_ptr<platform::Throttle<Shown>> shown_;
    platform::RunningTasks running_;
    std::vector<RunPointer> underWay_; ///< by start
    std::map<UUID, RunPointer> again_; ///< the latest of each clip, until it is judged
    const std::unique_ptr<SmartAudioRouter> router_;
    const std::unique_ptr<platform::SerialQueue> loudnessQueue_;
};

/// dB; from the settings and the calibration.
double automaticMasterGainDB(double measuredLUFS, const platform::SettingsStore& settings);

} // namespace orvane
