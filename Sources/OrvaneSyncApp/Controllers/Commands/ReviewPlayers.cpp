#include "OrvaneSyncApp/Controllers/Commands/ReviewPlayers.h"

#include <utility>

namespace orvane::commands {

ReviewPlayers::ReviewPlayers(std::shared_ptr<ImportController> controller,
                             std::shared_ptr<ShortcutCenter> shortcuts, Playing playing)
    : controller_(std::move(controller)), shortcuts_(std::move(shortcuts)), playing_(std::move(playing)),
      review_(ReviewViewModel::create(controller_, makeEngine(controller_->timeline().waveform()))),
      multicam_(MulticamViewModel::create(controller_,
                                          [this] {
                                              const auto& environment = controller_->work().environment;
                                              return makeEngine(WaveformState::create(
                                                  environment.mainThread, environment.waveformCache));
                                          })),
      keyboard_(
          [this](std::string_view key, ModifierSet modifiers) { return shortcuts_->action(key, modifiers); },
          [this](KeyAction action) {
              multicam_->isOpen() ? multicam_->handleKeyAction(action) : review_->handleKeyAction(action);
          }) {}

std::shared_ptr<VideoEngine> ReviewPlayers::makeEngine(std::shared_ptr<WaveformState> waveform) {
    VideoEngine::Dependencies dependencies;
    dependencies.mainThread = controller_->work().environment.mainThread;
    dependencies.openPlayers = [this] { return players(); };
    dependencies.makeBlips = playing_.makeBlips;
    dependencies.waveform = std::move(waveform);
    return VideoEngine::create(std::move(dependencies));
}

const std::shared_ptr<platform::PlayerSystem>& ReviewPlayers::players() {
    if (!players_ && playing_.open) players_ = playing_.open();
    return players_;
}

platform::Task ReviewPlayers::loadGroup(const UUID& groupID) {
    multicam_->close();
    return review_->loadGroup(groupID);
}

platform::Task ReviewPlayers::loadCluster(std::vector<UUID> groupIDs) {
    platform::Task loading = multicam_->load(std::move(groupIDs));
    review_->close();
    return loading;
}

platform::Task ReviewPlayers::shown() const {
    return multicam_->isOpen() ? multicam_->bag().shown() : review_->engine()->shown();
}

} // namespace orvane::commands
