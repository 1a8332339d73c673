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

/// The timeline of the clip in view, and the editor's operations on it. Changes of offsets and anchors open
/// undo steps, and a locked or missing clip is not changed, unless a function says otherwise. Interface
/// thread.
class TimelineController {
  public:
    TimelineController(OpenWork& work, ClipEditing& clips);

    /// Brings a clip into view: a clip that was not in view is shown whole, at the present width. The padding
    /// is set for the present position of its sound. Throws GroupNotFound.
    void show(const UUID& groupID);
    const std::optional<UUID>& shownGroupID() const { return shown_; }
    const TimelineZoomState& zoom() const { return zoom_; }
    TimelineZoomState& zoom() { return zoom_; }
    /// The zoom of any clip as `show` would set it: a clip that is not in view is shown whole. Throws
    /// GroupNotFound.
    TimelineZoomState zoomOf(const UUID& groupID) const;
    FrameAccumulator& scrolling() { return scrolling_; }

    /// The waveform of the take of the clip in view, in take time.
    const std::shared_ptr<WaveformState>& waveform() const { return waveform_; }
    /// Whether the waveform of the clip in view was requested. If it does not load, there is nothing more to
    /// read.
    bool isWaveformWanted() const { return wantsWaveform_; }
    /// Loads the waveform of the clip in view unless it is loaded, and loads it again whenever the clip has
    /// another recording; one that could not be read is tried again only if `retries`. Empty without a
    /// recording.
    platform::Task loadWaveform(bool retries = false);
    /// Writes to `result` the waveform of any clip's take, with the given number of bins.
    platform::Task reduceWaveform(const UUID& groupID, std::size_t bins,
                                  std::shared_ptr<WaveformResult> result);

    /// In time of the first recording, anywhere within the take. Returns the anchor that was set; absent if
    /// the recording's length is not known.
    std::optional<double> setAnchor(const UUID& groupID, double secondsInAudio);
    /// Searches the clip's take for a clap and sets the anchor there, unless one was set meanwhile. No undo
    /// step.
    platform::Task autoDetectAudioAnchorIfMissing(const UUID& groupID);
    /// Writes to `clap` the position of the clap of a locked clip without an anchor, in audio time, and
    /// changes no clip; absent for any other clip.
    platform::Task locateClapOfLocked(UUID groupID, std::shared_ptr<std::optional<double>> clap) const;
    /// Locked clips too. Throws OutOfRange as ClipEditing does; so do the other moves.
    void nudgeByFrames(const UUID& groupID, int frames);
    /// Moves the sound of the clip in view by a drag. `translation`: points since the drag began. Snaps only
    /// if the waveform is loaded.
    void handleContainerDrag(double translation, DragModifiers modifiers);
    void handleDragEnded() { drag_ = {}; }
    /// Seconds by which the running drag has moved the sound; absent without one.
    std::optional<double> liveDragSeconds() const { return drag_.liveDragSeconds(); }
    /// A whole drag on any clip, in view or not. Ends when the new offset is set.
    platform::Task dragAudio(const UUID& groupID, double points, DragModifiers modifiers);

    std::optional<SiblingSuggestion> siblingSuggestion(const UUID& groupID) const;
    /// Locked clips too.
    void applySiblingSuggestion(const UUID& groupID);
    /// Until the sibling is moved again. Not stored.
    void dismissSiblingSuggestion(const UUID& groupID);

    /// Frames per second at which a clip is counted and nudged: the rate of its document.
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
    bool wantsWaveform_ = false;             ///< for the clip in view
    std::optional<TakeSound> waveformSound_; ///< of the newest load
    platform::Task loadingWaveform_ = platform::Task::ended();
    std::set<std::string> dismissedKeys_;
    const std::unique_ptr<platform::SerialQueue> listening_;
};

} // namespace orvane
