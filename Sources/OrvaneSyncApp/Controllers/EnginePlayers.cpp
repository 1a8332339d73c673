#include "OrvaneSyncApp/Controllers/EnginePlayers.h"

namespace orvane {

const std::shared_ptr<platform::PlayerSystem>& EnginePlayers::system() {
    if (players_ || !dependencies_.openPlayers) return players_;
    players_ = dependencies_.openPlayers();
    if (players_ && dependencies_.makeBlips) blips_ = dependencies_.makeBlips(players_);
    return players_;
}

void EnginePlayers::loaded(const platform::Player& player) {
    if (!isMeasuringLevels_) return;
    if (!meters_) meters_ = AudioLevelProvider::onClockOf(players_);
    meters_->attach(player);
}

void EnginePlayers::unload() {
    if (blips_) blips_->shutdown();
    if (meters_) meters_->detach();
}

} // namespace orvane
