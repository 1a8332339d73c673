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
#include <string_view>

namespace orvane {

/// What the review screen does with a clip: what its keys, clicks and drags mean to the player, the timeline
/// and the clip. The player follows the clip, whoever changes it. Interface thread; operations without a clip
/// in view do nothing.
class ReviewViewModel : public std::enable_shared_from_this<ReviewViewModel> {
  public:
    static constexpr const char* clapIsLocked =
        "The clip is locked: Ctrl+L unlocks it, then its clap point can be set.";

    static std::shared_ptr<ReviewViewModel> create(std::shared_ptr<ImportController> controller,
                                                   std::shared_ptr<VideoEngine> engine);

    const std::shared_ptr<VideoEngine>& engine() const { return engine_; }
    FullscreenManager& fullscreen() { return fullscreen_; }
    const std::optional<UUID>& groupID() const { return groupID_; } ///< of the clip in view
    bool shows(const UUID& groupID) const { return groupID_ == groupID; }
    bool isAudioExpanded() const { return isAudioExpanded_; } ///< a row a channel
    bool isDraggingAudio() const { return isDraggingAudio_; }
    /// Calls back when the clip in view, the rows of its sound or the zoom are others.
    platform::Subscription onChange(std::function<void()> callback) {
        return changed_.add(std::move(callback));
    }
    /// To the next clip of the list, or the one before.
    std::function<void(KeyAction)> moveInList;
    /// Why a key does nothing with the clip in view: a sentence.
    std::function<void(std::string_view)> sayWhyNot;
    /// What a key decides about the clip in view without the player: a command.
    std::function<void(KeyAction, const UUID& groupID)> decideOfClip;

    /// Opens a clip on its clap, or at its start where that lies outside of the picture, searches for one
    /// where it has none, and loads its waveform. The task ends when all that is done, or another clip was
    /// opened. Throws GroupNotFound.
    platform::Task loadGroup(const UUID& groupID);
    void close();

    void handleKeyAction(KeyAction action);
    /// Clip time.
    void jumpToEdit(bool previous);
    void clapCheck();
    /// Clip time of the clap in view; a clip without sound has only the one of its picture. Of a locked clip
    /// without one: the clap that was found when it was opened, which the clip does not keep.
    std::optional<double> clapSeconds() const;
    /// Whether `clapCheck` does something: a loop runs, or there is something to play around the clap.
    bool canCheckClap() const;
    /// Moves the sound; while it plays, under the sound that is heard. Throws OutOfRange, also where the clip
    /// has none.
    void adjustOffset(int byFrames);
    /// `takeSeconds`: place in the recording. With Command and Option the anchor is put there.
    void handleWaveformClick(double takeSeconds, ModifierSet modifiers);
    void seekVideoToAnchor();
    /// Moves the sound by whole frames, so that its clap falls into the frame that is shown: what brings the
    /// sound of a recorder whose timecode is far off under the picture. Unless locked.
    void putClapOnFrame();
    /// Clip time that the pointer is at; absent once it has left the timeline.
    void handleSkim(std::optional<double> seconds);
    /// Points since the drag began. The player follows when it has ended. Throws OutOfRange.
    void handleContainerDrag(double translation, DragModifiers modifiers);
    void handleDragEnded();
    /// Scrolling over the picture. Gives the frames that were stepped.
    int scrollFrames(double deltaY, bool hasPreciseDeltas);
    void applyZoom(double scaleDelta);
    void fitTimeline();

    /// Ends when the last jump to an edit is done: it waits for the waveform.
    platform::Task jumpReady() const { return jump_; }

    // The same for any clip; the player goes along where it is the one in view.

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
    std::optional<double> clapInPicture() const; ///< `clapSeconds` where the picture has that moment
    double clapCheckSeconds() const;             ///< clip time, of the middle
    /// Of the clap in the sound.
    std::optional<double> clapInSound() const;

    const std::shared_ptr<ImportController> controller_;
    TimelineController& timeline_;
    const std::shared_ptr<VideoEngine> engine_;
    FullscreenManager fullscreen_;
    platform::Listeners<> changed_;
    platform::Subscription following_;
    std::optional<UUID> groupID_;
    struct FoundClap {
        UUID recording;          ///< the match in which it was searched
        double audioSeconds = 0; ///< of audio time
    };
    std::optional<FoundClap> clapOfLocked_;
    std::uint64_t loads_ = 0; ///< the number of the newest
    std::uint64_t keys_ = 0;  ///< that did something
    platform::Task jump_ = platform::Task::ended();
    bool isDraggingAudio_ = false;
    bool isAudioExpanded_ = false;
};

} // namespace orvane
