#pragma once

#include "OrvaneSyncApp/Controllers/ClusterEngineBag.h"
#include "OrvaneSyncApp/Controllers/ImportController.h"
#include "OrvaneSyncCore/Services/Shortcuts/ShortcutAction.h"
#include "OrvaneSyncCore/Services/Timeline/FrameAccumulator.h"
#include "Platform/Task.h"

#include <functional>
#include <memory>
#include <string_view>
#include <vector>

namespace orvane {

/// The functions of the multicam screen: all cameras of a take, one transport. It changes no offsets.
/// Interface thread.
class MulticamViewModel : public std::enable_shared_from_this<MulticamViewModel> {
  public:
    static constexpr std::string_view hint = "Pick a single cam in the sidebar to fine-tune sync";

    static std::shared_ptr<MulticamViewModel> create(std::shared_ptr<ImportController> controller,
                                                     ClusterEngineBag::MakeEngine makeEngine);

    ClusterEngineBag& bag() { return bag_; }
    bool isOpen() const { return !members_.empty(); }
    const std::vector<UUID>& members() const { return members_; }
    /// The cameras to open for the chosen clips: if several are chosen, those; if one is chosen, all cameras
    /// of its take.
    static std::vector<UUID> camerasFor(const OpenWork& work, const std::vector<UUID>& chosen);
    /// Throws GroupNotFound. The task ends when all are loaded.
    platform::Task load(std::vector<UUID> groupIDs);
    /// Searches for the claps of the cameras that are open and have none, and moves all to their claps,
    /// unless the user has moved them meanwhile.
    platform::Task findClaps();
    /// Ends when no camera is being loaded; commands for all cameras wait for this.
    platform::Task loaded();
    void close();
    void handleKeyAction(KeyAction action);
    /// Scrolling over a picture. Returns the number of frames by which all were moved.
    int scrollFrames(double deltaY, bool hasPreciseDeltas);
    /// Shows the camera that is heard in fullscreen, or ends that.
    std::function<void()> toggleFullscreen;
    /// Opens the next or previous take of the list.
    std::function<void(KeyAction)> moveInList;
    /// Called for a key that decides about one clip, with the camera that is heard.
    std::function<void(KeyAction, const UUID& groupID)> decideOfClip;
    /// Called for another key that has a meaning only for a single camera.
    std::function<void(KeyAction)> refuse;

  private:
    MulticamViewModel(std::shared_ptr<ImportController> controller, ClusterEngineBag::MakeEngine makeEngine)
        : controller_(std::move(controller)), bag_(std::move(makeEngine)) {}
    static platform::Task loaded(std::weak_ptr<MulticamViewModel> weak);
    static platform::Task findClaps(std::weak_ptr<MulticamViewModel> weak);
    platform::Task open(std::vector<UUID> members);
    void follow();
    void step(int frames);

    const std::shared_ptr<ImportController> controller_;
    ClusterEngineBag bag_;
    /// Includes those that were removed from the list of clips: an undo may restore them.
    std::vector<UUID> chosen_;
    std::vector<UUID> members_; ///< those of `chosen_` that exist
    platform::Task loading_ = platform::Task::ended();
    FrameAccumulator scrolling_;
    platform::Subscription following_;
};

} // namespace orvane
