#include "OrvaneSyncApp/Controllers/Commands/ReviewPlayers.h"

#include "OrvaneSyncApp/Controllers/UndoSteps.h"
#include "OrvaneSyncCore/Services/Playback/ScrubAudioPlayer.h"

#include <utility>

namespace orvane::commands {

ReviewPlayers::ReviewPlayers(std::shared_ptr<ImportController> controller,
                             std::shared_ptr<ShortcutCenter> shortcuts, OpenPlayers openPlayers,
                             bool rendersPreviews)
    : controller_(std::move(controller)), shortcuts_(std::move(shortcuts)),
      openPlayers_(std::move(openPlayers)), rendersPreviews_(rendersPreviews),
      review_(ReviewViewModel::create(controller_, makeEngine(controller_->timeline().waveform()))),
      multicam_(MulticamViewModel::create(controller_,
                                          [this] {
                                              const auto& environment = controller_->work().environment;
                                              return makeEngine(WaveformState::create(
                                                  environment.mainThread, environment.waveformCache));
                                          })),
      heard_(controller_, controller_->work().environment.mainThread,
             controller_->work().environment.settings,
             [engine = review_->engine()](const std::optional<FileURL>& rendered) {
                 engine->setMixdownAudio(rendered);
             }),
      whenClosed_(review_->onChange([this] {
          if (!review_->groupID()) heard_.show(std::nullopt);
      })),
      keyboard_(
          [this](std::string_view key, ModifierSet modifiers) { return shortcuts_->action(key, modifiers); },
          [this](KeyAction action) {
              // The repeats of a held key belong to one undo step. This is requested here, because the first
              // repeat comes after the time within which two nudges are joined.
              if (keyboard_.isRepeating() && category(action) == ShortcutCategory::audioOffset)
                  controller_->continueUndo(undoSteps::adjustAudioOffset);
              handleKeyAction(action);
          }) {}

void ReviewPlayers::handleKeyAction(KeyAction action) {
    multicam_->isOpen() ? multicam_->handleKeyAction(action) : review_->handleKeyAction(action);
}

int ReviewPlayers::scrollFrames(double deltaY, bool hasPreciseDeltas) {
    return multicam_->isOpen() ? multicam_->scrollFrames(deltaY, hasPreciseDeltas)
                               : review_->scrollFrames(deltaY, hasPreciseDeltas);
}

std::shared_ptr<VideoEngine> ReviewPlayers::makeEngine(std::shared_ptr<WaveformState> waveform) {
    VideoEngine::Dependencies dependencies;
    dependencies.mainThread = controller_->work().environment.mainThread;
    dependencies.openPlayers = [this] { return players(); };
    dependencies.makeBlips =
        [](const std::shared_ptr<platform::PlayerSystem>& players) -> std::unique_ptr<FrameBlips> {
        auto mixer = players->mixer();
        return mixer ? std::make_unique<ScrubAudioPlayer>(std::move(mixer)) : nullptr;
    };
    dependencies.waveform = std::move(waveform);
    return VideoEngine::create(std::move(dependencies));
}

const std::shared_ptr<platform::PlayerSystem>& ReviewPlayers::players() {
    if (!players_ && openPlayers_) players_ = openPlayers_();
    return players_;
}

platform::Task ReviewPlayers::loadGroup(const UUID& groupID) {
    multicam_->close();
    platform::Task loading = review_->loadGroup(groupID);
    // After the load began, because a load starts with the clip's own recording.
    heard_.show(groupID, rendersPreviews_);
    return loading;
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
