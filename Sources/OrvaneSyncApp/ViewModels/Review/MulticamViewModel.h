#pragma once

#include "OrvaneSyncApp/Controllers/ClusterEngineBag.h"
#include "OrvaneSyncApp/Controllers/ImportController.h"
#include "OrvaneSyncCore/Services/Shortcuts/ShortcutAction.h"
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
    void close();
    void handleKeyAction(KeyAction action);
    /// Sends the camera that is heard to a screen of its own, or brings it back.
    std::function<void()> toggleFullscreen;

  private:
    MulticamViewModel(std::shared_ptr<ImportController> controller, ClusterEngineBag::MakeEngine makeEngine)
        : controller_(std::move(controller)), bag_(std::move(makeEngine)) {}
    void follow();

    const std::shared_ptr<ImportController> controller_;
    ClusterEngineBag bag_;
    std::vector<UUID> members_;
    platform::Subscription following_;
};

} // namespace orvane
