#pragma once

#include "OrvaneSyncApp/Controllers/ClipEditing.h"
#include "OrvaneSyncApp/Controllers/OpenWork.h"
#include "OrvaneSyncCore/Services/Review/SiblingSuggestion.h"
#include "OrvaneSyncCore/Services/Timeline/AudioDrag.h"
#include "OrvaneSyncCore/Services/Timeline/FrameAccumulator.h"
#include "OrvaneSyncCore/Services/Timeline/TimelineZoomState.h"
#include "OrvaneSyncCore/Services/Waveform/ClapDetector.h"
#include "OrvaneSyncCore/Services/Waveform/WaveformState.h"
#include "Platform/Task.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace orvane {

/// The timeline of the clip in view, and what the editor does on it. Offsets and anchors are changed under
/// undo steps of their own, and a locked clip or one that is not there stays as it is, except where it says
/// otherwise. Interface thread.
class TimelineController {
  public:
    TimelineController(OpenWork& work, ClipEditing& clips);

    /// Brings a clip into view: another clip shows all of itself, at the width that is there. The padding
    /// becomes that of its sound as it lies. Throws GroupNotFound.
    void show(const UUID& groupID);
    const std::optional<UUID>& shownGroupID() const { return shown_; }
    const TimelineZoomState& zoom() const { return zoom_; }
    TimelineZoomState& zoom() { return zoom_; }
    /// Of any clip, as it would come into view: another than the one in view shows all of itself. Throws
    /// GroupNotFound.
    TimelineZoomState zoomOf(const UUID& groupID) const;
    FrameAccumulator& scrolling() { return scrolling_; }

    /// Of the take of the clip in view, in take time.
    const std::shared_ptr<WaveformState>& waveform() const { return waveform_; }
    /// Whether that of the clip in view was asked for: when it does not load, it is all that can be read.
    bool isWaveformWanted() const { return wantsWaveform_; }
    /// Loads the waveform of the clip in view unless it is there, and from then on that of the recording that
    /// the clip has; one that could not be read again only if `retries`. Without a recording it is empty.
    platform::Task loadWaveform(bool retries = false);
    /// Leaves in `result` the waveform of any clip's take, by any number of bins.
    platform::Task reduceWaveform(const UUID& groupID, std::size_t bins,
                                  std::shared_ptr<WaveformResult> result);

    /// In time of the first recording, anywhere within the take; nothing where the recording's length is not
    /// known. Gives the anchor that was set.
    std::optional<double> setAnchor(const UUID& groupID, double secondsInAudio);
    /// Searches the clip's take for a clap and puts the anchor there, unless there is one by then. No
    /// undo step.
    platform::Task autoDetectAudioAnchorIfMissing(const UUID& groupID);
    /// Leaves in `clap` where the clap of a locked clip without an anchor lies, in audio time, and writes
    /// nothing; absent for any other clip.
    platform::Task locateClapOfLocked(UUID groupID, std::shared_ptr<std::optional<double>> clap) const;
    /// Also of a locked clip. Throws OutOfRange as ClipEditing does; so do the other moves.
    void nudgeByFrames(const UUID& groupID, int frames);
    /// Moves the sound of the clip in view by a drag that has come so many points since it began. Snaps only
    /// where the waveform is loaded.
    void handleContainerDrag(double translation, DragModifiers modifiers);
    void handleDragEnded() { drag_ = {}; }
    /// Seconds that the drag under way has moved the sound by; absent without one.
    std::optional<double> liveDragSeconds() const { return drag_.liveDragSeconds(); }
    /// A whole drag of any clip, which need not be in view. Ends when the new offset is in force.
    platform::Task dragAudio(const UUID& groupID, double points, DragModifiers modifiers);

    std::optional<SiblingSuggestion> siblingSuggestion(const UUID& groupID) const;
    /// Also of a locked clip.
    void applySiblingSuggestion(const UUID& groupID);
    /// Until the sibling is moved again. Forgotten with the program.
    void dismissSiblingSuggestion(const UUID& groupID);

    /// Frames per second by which a clip is counted and nudged: those that its document counts.
    double timelineFrameRate(const SyncGroup& group) const;

  private:
    static platform::Task reduce(std::weak_ptr<TimelineController> weak, TakeSound sound, std::size_t bins,
                                 std::shared_ptr<WaveformResult> result);
    static platform::Task detectAnchor(std::weak_ptr<TimelineController> weak, UUID groupID,
                                       ClapDetector::Search search);
    static platform::Task drag(std::weak_ptr<TimelineController> weak, UUID groupID, double points,
                               DragModifiers modifiers);
    const SyncGroup* mayGetAnchor(const UUID& groupID) const;
    void move(AudioDrag& drag, const SyncGroup& group, double translation, DragModifiers modifiers,
              const std::vector<double>& onsetMarkers);
    void adjustOffset(const UUID& groupID, double deltaSeconds);

    OpenWork& work_;
    ClipEditing& clips_;
    std::optional<UUID> shown_;
    TimelineZoomState zoom_;
    FrameAccumulator scrolling_;
    AudioDrag drag_;
    const std::shared_ptr<WaveformState> waveform_;
    bool wantsWaveform_ = false;             ///< of the clip in view
    std::optional<TakeSound> waveformSound_; ///< of the newest load
    platform::Task loadingWaveform_ = platform::Task::ended();
    std::set<std::string> dismissedKeys_;
    const std::unique_ptr<platform::SerialQueue> listening_;
};

} // namespace orvane
