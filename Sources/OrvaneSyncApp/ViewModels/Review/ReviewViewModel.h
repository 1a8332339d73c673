#pragma once

#include "OrvaneSyncApp/Controllers/ImportController.h"
#include "OrvaneSyncApp/Controllers/VideoEngine.h"
#include "OrvaneSyncApp/ViewModels/Review/FullscreenManager.h"
#include "OrvaneSyncCore/Services/Shortcuts/ShortcutAction.h"
#include "OrvaneSyncCore/Services/Takes/ClipSound.h"
#include "Platform/Task.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace orvane {

/// The functions of the review screen for a clip: what its keys, clicks and drags do to the player, the
/// timeline and the clip. The player is updated after every change of the clip, wherever the change comes
/// from. Interface thread; operations without a clip in view do nothing.
class ReviewViewModel : public std::enable_shared_from_this<ReviewViewModel> {
  public:
    static constexpr const char* clapIsLocked =
        "The clip is locked: ⟨lockCurrent⟩ unlocks it, then its clap point can be set.";

    static std::shared_ptr<ReviewViewModel> create(std::shared_ptr<ImportController> controller,
                                                   std::shared_ptr<VideoEngine> engine);

    const std::shared_ptr<VideoEngine>& engine() const { return engine_; }
    FullscreenManager& fullscreen() { return fullscreen_; }
    const std::optional<UUID>& groupID() const { return groupID_; } ///< of the clip in view
    bool shows(const UUID& groupID) const { return groupID_ == groupID; }
    bool isAudioExpanded() const { return isAudioExpanded_; } ///< one row for each channel
    bool isDraggingAudio() const { return isDraggingAudio_; }
    /// Calls back when the clip in view, the rows of its sound or the zoom change.
    platform::Subscription onChange(std::function<void()> callback) {
        return changed_.add(std::move(callback));
    }
    /// Opens the next or previous clip of the list.
    std::function<void(KeyAction)> moveInList;
    /// Gets a sentence on why a key does nothing with the clip in view, or on what it did there. Names
    /// actions that have a key as "⟨lockCurrent⟩". An empty text removes the one before.
    std::function<void(std::string_view)> sayWhyNot;
    /// Runs the command of a key that decides about the clip in view without the player.
    std::function<void(KeyAction, const UUID& groupID)> decideOfClip;

    /// Opens a clip at its clap, or at its start if the clap is outside the picture; searches for a clap if
    /// the clip has none; and loads the waveform. The task ends when all this is done, or when another clip
    /// was opened. Throws GroupNotFound.
    platform::Task loadGroup(const UUID& groupID);
    void close();

    void handleKeyAction(KeyAction action);
    /// Clip time.
    void jumpToEdit(bool previous);
    /// Plays a loop around the clap, or ends it. Without a clap, around 3 s; it then says what to do.
    void clapCheck();
    /// Clip time of the clap in view; for a clip without sound, of the clap in its picture. For a locked clip
    /// without a clap: the clap that was found when the clip was opened, which is not stored in the clip.
    std::optional<double> clapSeconds() const;
    /// Whether the clip is being opened, so that a clap may still be found.
    bool isSearchingClap() const { return isSearchingClap_; }
    /// Whether `clapCheck` has an effect: a loop runs, or there is something to play around the clap.
    bool canCheckClap() const;
    /// Moves the sound, also while it plays. Throws OutOfRange. If the clip has no sound, it says so
    /// (`sayWhyNot`), and without a listener throws OutOfRange.
    void adjustOffset(int byFrames);
    /// `takeSeconds`: position in the recording. With Command and Option the anchor is set there.
    void handleWaveformClick(double takeSeconds, ModifierSet modifiers);
    void seekVideoToAnchor();
    /// Moves the sound by whole frames, so that its clap is in the frame that is shown. For a recorder whose
    /// timecode is wrong by far. For a locked clip, or without a clap, says why not.
    void putClapOnFrame();
    /// Clip time under the pointer; absent once it has left the timeline.
    void handleSkim(std::optional<double> seconds);
    /// `translation`: points since the drag began. The player is updated when the drag has ended. Throws
    /// OutOfRange.
    void handleContainerDrag(double translation, DragModifiers modifiers);
    void handleDragEnded();
    /// Scrolling over the picture. Returns the number of frames by which the playhead was moved.
    int scrollFrames(double deltaY, bool hasPreciseDeltas);
    void applyZoom(double scaleDelta);
    void fitTimeline();

    /// Ends when the last jump to an edit is done, which waits for the waveform.
    platform::Task jumpReady() const { return jump_; }

    // The same for any clip; if it is the clip in view, the player is updated.

    void setAnchor(const UUID& groupID, double atAudioSeconds);
    void nudgeByFrames(const UUID& groupID, int frames);
    platform::Task dragAudio(const UUID& groupID, double points, DragModifiers modifiers);

  private:
    ReviewViewModel(std::shared_ptr<ImportController> controller, std::shared_ptr<VideoEngine> engine);
    static platform::Task load(std::weak_ptr<ReviewViewModel> weak, UUID groupID, std::uint64_t number);
    static platform::Task drag(std::weak_ptr<ReviewViewModel> weak, UUID groupID, platform::Task dragging);
    const SyncGroup* group() const;
    void follow();
    void stayOnClap(double movedSeconds);
    void decide(KeyAction action);
    void jumpToOnset(bool previous);
    void step(int frames);
    std::optional<double> clapInPicture() const; ///< `clapSeconds` if it is within the picture
    double clapCheckSeconds() const;             ///< clip time of the middle
    std::string whyNoClapLoop(bool isPlayed) const;
    /// The clap in the sound.
    std::optional<double> clapInSound() const;

    const std::shared_ptr<ImportController> controller_;
    TimelineController& timeline_;
    const std::shared_ptr<VideoEngine> engine_;
    FullscreenManager fullscreen_;
    platform::Listeners<> changed_;
    platform::Subscription following_;
    std::optional<UUID> groupID_;
    struct FoundClap {
        UUID recording;          ///< the match that was searched
        double audioSeconds = 0; ///< in audio time
    };
    std::optional<FoundClap> clapOfLocked_;
    std::uint64_t loads_ = 0; ///< number of the newest load
    std::uint64_t keys_ = 0;  ///< number of keys that had an effect
    platform::Task jump_ = platform::Task::ended();
    bool isSearchingClap_ = false;
    bool isDraggingAudio_ = false;
    bool isAudioExpanded_ = false;
};

} // namespace orvane
