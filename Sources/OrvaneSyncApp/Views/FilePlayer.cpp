#include "OrvaneSyncApp/Views/FilePlayer.h"

#include <QObject>

namespace orvane::views {

std::shared_ptr<RawFileAudioPlayer> makeFilePlayer(Desktop& desktop) {
    if (const auto& players = desktop.players().players()) {
        const auto& environment = desktop.controller().work().environment;
        return RawFileAudioPlayer::create(
            players, WaveformState::create(environment.mainThread, environment.waveformCache));
    }
    if (desktop.whenRefused)
        desktop.whenRefused(QObject::tr("Nothing can be played: this machine has no player for sound."));
    return nullptr;
}

} // namespace orvane::views
