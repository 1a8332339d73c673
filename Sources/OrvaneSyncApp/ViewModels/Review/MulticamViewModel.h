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

/// What the multicam screen does: all cameras of a take, one transport. Offsets are not changed here.
/// Interface thread.
class MulticamViewModel : public std::enable_shared_from_this<MulticamViewModel> {
  public:
    static constexpr std::string_view hint = "Pick a single cam in the sidebar to fine-tune sync";

    static std::shared_ptr<MulticamViewModel> create(std::shared_ptr<ImportController> controller,
                                                     ClusterEngineBag::MakeEngine makeEngine);

    ClusterEngineBag& bag() { return bag_; }
    bool isOpen() const { return !members_.empty(); }
    const std::vector<UUID>& members() const { return members_; }
    /// The cameras that are to be opened for the chosen clips: several stand for themselves, one for all
    /// cameras of its take.
    static std::vector<UUID> camerasFor(const OpenWork& work, const std::vector<UUID>& chosen);
    /// Throws GroupNotFound. The task ends when all are loaded.
    platform::Task load(std::vector<UUID> groupIDs);
    /// Ends when no camera is being loaded: what all are to do waits for it.
    platform::Task loaded();
    void close();
    void handleKeyAction(KeyAction action);
    /// Scrolling over a picture. Gives the frames that all were stepped by.
    int scrollFrames(double deltaY, bool hasPreciseDeltas);
    /// Sends the camera that is heard to a screen of its own, or brings it back.
    std::function<void()> toggleFullscreen;
    /// To the next take of the list, or the one before.
    std::function<void(KeyAction)> moveInList;
    /// Told of a key that means something for one camera alone.
    std::function<void(KeyAction)> refuse;

  private:
    MulticamViewModel(std::shared_ptr<ImportController> controller, ClusterEngineBag::MakeEngine makeEngine)
        : controller_(std::move(controller)), bag_(std::move(makeEngine)) {}
    static platform::Task loaded(std::weak_ptr<MulticamViewModel> weak);
    platform::Task open(std::vector<UUID> members);
    void follow();
    void step(int frames);

    const std::shared_ptr<ImportController> controller_;
    ClusterEngineBag bag_;
    std::vector<UUID> chosen_;  ///< also those that have left the list of clips: an undo brings them back
    std::vector<UUID> members_; ///< of these, those that are there
    platform::Task loading_ = platform::Task::ended();
    FrameAccumulator scrolling_;
    platform::Subscription following_;
};

} // namespace orvane
